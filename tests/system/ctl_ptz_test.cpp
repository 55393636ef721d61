// hostmgrctl ptz: every order by its name, movements that are seen in the picture and stopped again, what is
// remembered. The library's own PTZ stands in ptz_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_recordings.h"
#include "ctl_terminal.h"
#include "scene_view.h"

using namespace ctl;  // the tests are all about it
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr int WIDTH = 640;
constexpr int HEIGHT = 360;

class CtlPtzTest : public CtlTest {
protected:
    CtlPtzTest() {
        std::filesystem::remove(std::filesystem::path(getenv("RECORDER_HOME")) / "ptz.json");
        UseScenario(R"({"seed": 1, "recordings": {"live": "off"}, "cameras": [
            {"main": {"width": 640, "height": 360, "fps": 5, "gop": 5}}, {}]})");
    }

    /** What the recorder remembers of a camera's head. */
    static json Head(unsigned channel) {
        const std::string kept = Contents(std::filesystem::path(getenv("RECORDER_HOME")) / "ptz.json");
        return json::parse(kept).at(std::to_string(channel));
    }

    static double Pan(unsigned channel = 1) { return Head(channel).at("position").at("pan"); }

    void Order(const std::string& arguments) const {
        const Outcome outcome = Run("ptz " + arguments);
        ASSERT_EQ(outcome.status, OK) << arguments << outcome.err;
    }
};

// ---- movements -----------------------------------------------------------------------------------------------------

/** How far the first picture that channel 1 shows is from a view, in luma steps on average. */
double DistanceFrom(const std::filesystem::path& path, const simulator::View& view) {
    AVFormatContext* format = nullptr;
    EXPECT_EQ(avformat_open_input(&format, path.c_str(), nullptr, nullptr), 0);
    EXPECT_GE(avformat_find_stream_info(format, nullptr), 0);
    AVCodecContext* codec = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264));
    avcodec_parameters_to_context(codec, format->streams[0]->codecpar);
    codec->thread_count = 1;
    avcodec_open2(codec, nullptr, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* picture = av_frame_alloc();
    double distance = -1;
    while (distance < 0 && av_read_frame(format, packet) == 0) {
        avcodec_send_packet(codec, packet);
        av_packet_unref(packet);
        if (avcodec_receive_frame(codec, picture) == 0) {
            const auto stamp = live::StampIn(*picture);
            live::Frame frame;
            frame.header.seconds = stamp ? static_cast<unsigned>(stamp->milliseconds / 1000) : 0;
            frame.header.microseconds = stamp ? static_cast<unsigned>(stamp->milliseconds % 1000 * 1000) : 0;
            distance = device::SceneView(1, 1, WIDTH, HEIGHT).Difference(*picture, frame, view);
        }
    }
    av_frame_free(&picture);
    av_packet_free(&packet);
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    return distance;
}

TEST_F(CtlPtzTest, Left_MovesTheScene) {
    const std::string look = "live --timeout 60 --no-audio -n 5 -o ";
    ASSERT_EQ(Run(look + "before.mkv").status, OK);
    EXPECT_LT(DistanceFrom(At("before.mkv"), {0.5, 0.5, 1}), 4);
    EXPECT_GT(DistanceFrom(At("before.mkv"), {0, 0.5, 1}), 10);
    Order("left --for 0");
    ASSERT_EQ(Run(look + "after.mkv").status, OK);
    EXPECT_LT(DistanceFrom(At("after.mkv"), {0, 0.5, 1}), 4);
    EXPECT_GT(DistanceFrom(At("after.mkv"), {0.5, 0.5, 1}), 10);
}

TEST_F(CtlPtzTest, Left_ForAWhile_StopsOnItsWay) {
    Order("left -x 1 --for 0.3");
    EXPECT_LT(Pan(), 0.5);
    EXPECT_GT(Pan(), 0) << "at the slowest it takes seven seconds to the limit, where it would be without the stop";
    EXPECT_EQ(Pan(2), 0.5) << "the other camera stands still";
}

TEST_F(CtlPtzTest, Direction_WithoutALength_IsStoppedAfterASecond) {
    const Outcome outcome = Run("ptz right -x 1 --json");
    EXPECT_EQ(json::parse(outcome.out).at("seconds"), 1);
    EXPECT_EQ(json::parse(outcome.out).at("stopped"), true);
    EXPECT_GT(Pan(), 0.5);
    EXPECT_LT(Pan(), 1);
}

TEST_F(CtlPtzTest, Interrupt_EndsTheMovement) {
    // The recorder remembers a head that is on its way where it is going, and one that was stopped where it is.
    TerminalRun run({HOSTMGRCTL, "ptz", "-c", "1,9", "left", "-x", "1", "--for", "3600"}, At("."));
    EXPECT_EQ(run.Follow("so nothing comes of channel 9"), OK) << run.Shown();
    EXPECT_THAT(Contents(At("stdout.txt")), HasSubstr("ordered \"left\", stopped on request\n"));
    EXPECT_GT(Pan(), 0);
    EXPECT_LT(Pan(), 0.5);
}

TEST_F(CtlPtzTest, Channels_SeveralAtOnce_AllMove) {
    Order("-c 1,2 right --for 0");
    EXPECT_EQ(Pan(1), 1);
    EXPECT_EQ(Pan(2), 1);
}

TEST_F(CtlPtzTest, Presets_AreSetGoneToAndCleared) {
    Order("left --for 0");
    Order("preset set 5");
    Order("home");
    EXPECT_EQ(Pan(), 0.5);
    Order("preset goto 5");
    EXPECT_EQ(Pan(), 0);
    Order("preset clear 5");
    EXPECT_FALSE(Head(1).contains("presets"));
}

TEST_F(CtlPtzTest, Tour_Point_HasItsPresetAndItsStay) {
    Order("tour add 2 1 --preset 7 --dwell 9");
    Order("tour add 2 3");
    const json tours = Head(1).at("tours");
    ASSERT_EQ(tours.size(), 2U);
    EXPECT_EQ(tours.at(0), json({{"tour", 2}, {"point", 1}, {"preset", 7}, {"dwell", 9}}));
    EXPECT_EQ(tours.at(1).at("preset"), 3) << "the point's own number";
    Order("tour delete 2 1");
    EXPECT_EQ(Head(1).at("tours").size(), 1U);
}

TEST_F(CtlPtzTest, LightAndWiper_AreSwitched) {
    Order("light on");
    Order("wiper on");
    EXPECT_EQ(Head(1).at("light"), true);
    EXPECT_EQ(Head(1).at("wiper"), true);
    Order("light off");
    EXPECT_EQ(Head(1).at("light"), false);
}

// ---- every order ---------------------------------------------------------------------------------------------------

struct OrderCase {
    const char* words;
    json commands;  ///< command, p1, p2, p3
};

TEST_F(CtlPtzTest, Orders_EachOne_IsItsCommands) {
    const OrderCase cases[] = {
        {"up", {{21, 0, 3, 0}}},
        {"down", {{22, 0, 3, 0}}},
        {"left", {{23, 0, 3, 0}}},
        {"right", {{24, 0, 3, 0}}},
        {"up-left", {{25, 0, 3, 0}}},
        {"up-right", {{26, 0, 3, 0}}},
        {"down-left", {{27, 0, 3, 0}}},
        {"down-right", {{28, 0, 3, 0}}},
        {"auto", {{29, 0, 3, 0}}},
        {"zoom in", {{11, 0, 3, 0}}},
        {"zoom out", {{12, 0, 3, 0}}},
        {"focus near", {{13, 0, 3, 0}}},
        {"focus far", {{14, 0, 3, 0}}},
        {"iris open", {{15, 0, 3, 0}}},
        {"iris close", {{16, 0, 3, 0}}},
        {"stop", {{21, 1, 0, 0}}},
        {"home", {{41, 0, 0, 0}}},
        {"light on", {{2, 0, 1, 0}}},
        {"light off", {{2, 0, 0, 0}}},
        {"wiper on", {{3, 0, 1, 0}}},
        {"wiper off", {{3, 0, 0, 0}}},
        {"preset set 4", {{8, 4, 0, 0}}},
        {"preset clear 4", {{9, 4, 0, 0}}},
        {"preset goto 4", {{39, 4, 0, 0}}},
        {"tour add 2 6", {{30, 2, 0, 0}, {31, 2, 0, 0}, {32, 2, 0, 6}}},
        {"tour delete 2 6", {{33, 2, 6, 0}}},
        {"tour start 2", {{37, 2, 0, 0}}},
        {"tour stop 2", {{38, 2, 0, 0}}},
        {"track begin 1", {{34, 1, 0, 0}}},
        {"track end 1", {{35, 1, 0, 0}}},
        {"track run 1", {{36, 1, 0, 0}}},
        {"centre 2500 7500 20", {{42, 2500, 7500, 20}}},
        {"centre 2500 7500", {{42, 2500, 7500, 0}}},
        {"raw 0x15 1", {{21, 1, 0, 0}}},
        {"raw 42 1 2 3", {{42, 1, 2, 3}}},
    };
    for (const OrderCase& order : cases) {
        const bool has_speed = order.commands.at(0).at(2) == 3;
        const bool goes_on = has_speed && order.commands.at(0).at(0) >= 21;
        const Outcome outcome =
            Run("ptz --json " + std::string(has_speed ? "-x 3 " : "") + (goes_on ? "--for 0 " : "") + order.words);
        ASSERT_EQ(outcome.status, OK) << order.words << outcome.err;
        const json summary = json::parse(outcome.out);
        EXPECT_EQ(summary.at("commands"), order.commands) << order.words;
        EXPECT_EQ(summary.at("order"), order.words);
        EXPECT_EQ(summary.at("stopped"), false);
    }
}

// ---- what is wrong -------------------------------------------------------------------------------------------------

TEST_F(CtlPtzTest, Command_ThatTheLibraryRefuses_IsAFailureWithItsWords) {
    const Outcome refused = Run("ptz raw 7");
    EXPECT_EQ(refused.status, REFUSED);
    EXPECT_THAT(refused.err, HasSubstr("\"raw 7\" of channel 1 failed\nthe recorder says: "));
    EXPECT_THAT(refused.err, HasSubstr("PTZCmd 0x7 not supported!!"));
    EXPECT_EQ(Run("ptz raw 40").status, REFUSED) << "the library warns of it";
}

TEST_F(CtlPtzTest, Channel_ThatIsNotThere_IsNoted) {
    const Outcome outcome = Run("ptz -c 9 home");
    EXPECT_EQ(outcome.status, OK) << "nobody tells";
    EXPECT_THAT(outcome.err, HasSubstr("the recorder says that it has 2 channels, so nothing comes of channel 9"));
    EXPECT_THAT(Run("ptz -c 2 home").err, IsEmpty());
}

TEST_F(CtlPtzTest, Arguments_Wrong_AreUsageErrorsThatSayWhatToDo) {
    struct Wrong {
        const char* arguments;
        const char* message;
    };
    for (const Wrong& wrong :
         {Wrong{"", "order is required"}, Wrong{"jump", "\"jump\" is no order: hostmgrctl ptz --help lists them"},
          Wrong{"preset", "there is preset set N, preset goto N, preset clear N"},
          Wrong{"preset set", "lacks a number: write \"preset set N\""},
          Wrong{"preset set 0", "\"0\" cannot be N of \"preset set N\": give 1 to 255"},
          Wrong{"preset set x", "\"x\" cannot be N"}, Wrong{"preset set 1 2", "\"2\" is too much"},
          Wrong{"centre 1 10001", "give 0 to 10000"}, Wrong{"home --for 1", "--for does not go with \"home\""},
          Wrong{"home -x 3", "--speed does not go with \"home\""},
          Wrong{"tour start 1 --dwell 3", "--preset and --dwell go with \"tour add\" alone"},
          Wrong{"left -x 256", "--speed"}, Wrong{"left -c 0", "\"0\" are no channels"}}) {
        const Outcome outcome = Run("ptz " + std::string(wrong.arguments));
        EXPECT_EQ(outcome.status, USAGE) << wrong.arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << wrong.arguments;
        EXPECT_THAT(outcome.err, HasSubstr(wrong.message)) << wrong.arguments;
    }
}

}  // namespace
