// The simulated recorder's pictures of the moment by plain calls: every JPEG is decoded, and its stamp says which
// camera it shows and when it was taken.
#include <chrono>
#include <thread>

#include "control.h"
#include "device_support.h"
#include "recorder_test_support.h"
#include "still_picture.h"

namespace control = simulator::control;
using device::Contents;
using device::Home;
using device::Login;
using simulator::Av;
using still::Decode;
using still::StampOf;

namespace {

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "cameras": [{"name": "Gate", "main": {"width": 640, "height": 360}},
                {"name": "Yard", "main": {"width": 352, "height": 288}},
                {"name": "Dark", "main": {"width": 640, "height": 360}, "signal": false}]
})"));

constexpr unsigned ROOM = 1U << 20U;

uint64_t NowMilliseconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

/** Takes a picture into a buffer; empty when that fails. */
std::string Take(const Login& login, unsigned channel, unsigned room = ROOM) {
    std::string jpeg(room, '#');
    unsigned size = 0;
    if (vexo_model_capture(login.Id(), channel, jpeg.data(), room, &size) != 0) {
        return "";
    }
    jpeg.resize(size);
    return jpeg;
}

/** Mean brightness of the upper half, 0 to 255. */
double Brightness(const AVFrame& picture) {
    double sum = 0;
    for (int y = 0; y < picture.height / 2; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            sum += picture.data[0][y * picture.linesize[0] + x];
        }
    }
    return sum / (picture.width * (picture.height / 2));
}

TEST(Capture, Buffer_HoldsTheChannelsPictureOfTheMoment) {
    const Login login;
    for (unsigned channel = 0; channel < 2; ++channel) {
        const uint64_t before = NowMilliseconds();
        const std::string jpeg = Take(login, channel);
        const uint64_t after = NowMilliseconds();
        ASSERT_FALSE(jpeg.empty());
        EXPECT_EQ(jpeg.compare(0, 3, "\xFF\xD8\xFF"), 0);
        EXPECT_EQ(jpeg.compare(jpeg.size() - 2, 2, "\xFF\xD9"), 0);
        const Av<AVFrame> picture = Decode(jpeg);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(picture->width, channel == 0 ? 640 : 352);
        EXPECT_EQ(picture->height, channel == 0 ? 360 : 288);
        EXPECT_EQ(picture->color_range, AVCOL_RANGE_JPEG);
        EXPECT_EQ(StampOf(*picture).channel, channel + 1);
        EXPECT_GE(StampOf(*picture).milliseconds, before);
        EXPECT_LE(StampOf(*picture).milliseconds, after);
    }
}

TEST(Capture, WhiteAndBlack_AreFull) {
    const Login login;
    const Av<AVFrame> picture = Decode(Take(login, 0));
    ASSERT_NE(picture, nullptr);
    int least = 255;
    int most = 0;
    for (int y = 0; y < picture->height; ++y) {
        for (int x = 0; x < picture->width; ++x) {
            least = std::min<int>(least, picture->data[0][y * picture->linesize[0] + x]);
            most = std::max<int>(most, picture->data[0][y * picture->linesize[0] + x]);
        }
    }
    EXPECT_LT(least, 8) << "the stamp's black";
    EXPECT_GT(most, 247) << "the stamp's white";
}

TEST(Capture, File_HoldsThePictureAndItsSizeIsTold) {
    const Login login;
    const std::string path = Home() / "picture.jpg";
    std::ofstream(path) << std::string(ROOM, '#');
    unsigned size = 0;
    ASSERT_EQ(vexo_model_capture(login.Id(), 1, path.c_str(), &size), 0);
    const std::string jpeg = Contents(path);
    EXPECT_EQ(jpeg.size(), size);
    const Av<AVFrame> picture = Decode(jpeg);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(StampOf(*picture).channel, 2U);
}

TEST(Capture, FileThatCannotBeWritten_Fails) {
    const Login login;
    unsigned size = 77;
    EXPECT_NE(vexo_model_capture(login.Id(), 0, (Home() / "no folder" / "a.jpg").c_str(), &size), 0);
    EXPECT_NE(vexo_model_capture(login.Id(), 0, Home().c_str(), &size), 0) << "a folder is in the way";
    EXPECT_NE(vexo_model_capture(login.Id(), 0, static_cast<const char*>(nullptr), &size), 0);
    EXPECT_EQ(size, 77U);
}

TEST(Capture, FullDevice_FailsAndLeavesNoPicture) {
    const Login login;
    unsigned size = 77;
    const std::string path = Home() / "full.jpg";
    std::filesystem::create_symlink("/dev/full", path);
    EXPECT_NE(vexo_model_capture(login.Id(), 0, path.c_str(), &size), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(path)) << "what was begun is taken away";
    EXPECT_EQ(size, 77U);
}

TEST(Capture, BufferThatIsTooSmall_FailsAndWritesNothing) {
    const Login login;
    const size_t whole = Take(login, 0).size();
    ASSERT_GT(whole, 4096U);
    std::string buffer(ROOM, '#');
    for (const unsigned room : {0U, 1U, static_cast<unsigned>(whole / 2)}) {
        unsigned size = 77;
        EXPECT_NE(vexo_model_capture(login.Id(), 0, buffer.data(), room, &size), 0) << room;
        EXPECT_EQ(size, 77U);
    }
    EXPECT_EQ(buffer, std::string(ROOM, '#'));
}

TEST(Capture, WrongArguments_Fail) {
    const Login login;
    char buffer[16];
    unsigned size = 77;
    EXPECT_NE(vexo_model_capture(login.Id(), 3, buffer, sizeof buffer, &size), 0) << "no such channel";
    EXPECT_NE(vexo_model_capture(login.Id(), 0xFFFFFFFF, buffer, sizeof buffer, &size), 0);
    EXPECT_NE(vexo_model_capture(login.Id() + 1, 0, buffer, sizeof buffer, &size), 0) << "nobody is logged in so";
    EXPECT_NE(vexo_model_capture(login.Id(), 0, static_cast<char*>(nullptr), ROOM, &size), 0);
    EXPECT_EQ(size, 77U);
    std::string room(ROOM, '#');
    EXPECT_NE(vexo_model_capture(login.Id(), 0, room.data(), ROOM, nullptr), 0);
    EXPECT_EQ(room, std::string(ROOM, '#'));
}

TEST(Capture, CameraWithoutSignal_GivesThePictureThatSaysSo) {
    const Login login;
    const Av<AVFrame> dark = Decode(Take(login, 2));
    ASSERT_NE(dark, nullptr);
    EXPECT_LT(Brightness(*dark), 40);
    EXPECT_EQ(StampOf(*dark).channel, 3U) << "the stamp is there all the same";
    const Av<AVFrame> seen = Decode(Take(login, 0));
    control::SetSignal(1, false);
    const Av<AVFrame> lost = Decode(Take(login, 0));
    ASSERT_TRUE(seen != nullptr && lost != nullptr);
    EXPECT_GT(Brightness(*seen), 60);
    EXPECT_LT(Brightness(*lost), 40);
    control::SetSignal(1, true);
}

TEST(Capture, ManyAtOnce_AreAllWhole) {
    const Login login;
    std::vector<std::thread> threads;
    std::vector<unsigned> channels(6);
    for (unsigned i = 0; i < channels.size(); ++i) {
        threads.emplace_back([&, i] {
            const Av<AVFrame> picture = Decode(Take(login, i % 2));
            channels[i] = picture != nullptr ? StampOf(*picture).channel : 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(channels, (std::vector<unsigned>{1, 2, 1, 2, 1, 2}));
}

TEST(Capture, NobodyReads_NoCameraIsPutToWork) {
    const Login login;
    EXPECT_FALSE(Take(login, 0).empty());
    EXPECT_TRUE(control::ActiveCameras().empty());
}

TEST(Capture, FaultOnOrder_CountsBothForms) {
    const Login login;
    const std::string path = Home() / "fault.jpg";
    unsigned size = 77;
    control::Fail("vexo_model_capture", 2);
    EXPECT_FALSE(Take(login, 0).empty());
    EXPECT_NE(vexo_model_capture(login.Id(), 0, path.c_str(), &size), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(size, 77U);
    EXPECT_EQ(vexo_model_capture(login.Id(), 0, path.c_str(), &size), 0);
}

}  // namespace
