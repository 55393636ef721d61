// hostmgrctl snapshot: the file is a picture of that channel and moment, and what is said of it is true.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_recordings.h"
#include "ctl_running.h"
#include "still_picture.h"

using namespace ctl;  // the tests are all about it
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char SCENARIO[] = R"({"cameras": [{"main": {"width": 640, "height": 360}},
                                            {"main": {"width": 352, "height": 288}},
                                            {"main": {"width": 4096, "height": 4096}}],
                                "recordings": {"live": "off", "history": {"segments": 0}}})";
constexpr size_t FIRST_BUFFER = 256U << 10U;  // the tool's; more is tried after it

class CtlSnapshotTest : public CtlTest {
protected:
    CtlSnapshotTest() {
        setenv("TZ", "UTC", 1);
        UseScenario(SCENARIO);
    }
};

uint64_t NowMilliseconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

TEST_F(CtlSnapshotTest, Snapshot_Json_TellsOfAPictureOfThatChannelAndMoment) {
    const int widths[] = {640, 352};
    const int heights[] = {360, 288};
    for (unsigned channel = 1; channel <= 2; ++channel) {
        const uint64_t before = NowMilliseconds();
        const Outcome outcome = Run("snapshot --json -o gate.jpg -c " + std::to_string(channel));
        const uint64_t after = NowMilliseconds();
        ASSERT_EQ(outcome.status, OK) << outcome.err;
        const json told = json::parse(outcome.out);
        const std::string jpeg = Contents(At("gate.jpg"));
        const auto picture = still::Decode(jpeg);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(still::StampOf(*picture).channel, channel);
        const uint64_t taken = still::StampOf(*picture).milliseconds;
        EXPECT_GE(taken, before);
        EXPECT_LE(taken, after);
        EXPECT_EQ(told.at("channel"), channel);
        EXPECT_EQ(told.at("bytes"), jpeg.size());
        EXPECT_EQ(told.at("width"), widths[channel - 1]);
        EXPECT_EQ(told.at("height"), heights[channel - 1]);
        EXPECT_EQ(picture->width, widths[channel - 1]);
        EXPECT_EQ(told.at("path"), "gate.jpg");
        EXPECT_LE(InstantOf(told.at("time")) * 1000, static_cast<time_t>(taken));
        EXPECT_LE(told.at("age_ms").get<uint64_t>(), after - before);
        EXPECT_GE(told.at("age_ms").get<uint64_t>() + 1 + taken, InstantOf(told.at("time")) * 1000U);
    }
}

TEST_F(CtlSnapshotTest, Snapshot_Text_TellsPixelsBytesAndAge) {
    const Outcome outcome = Run("snapshot -c 2");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, testing::MatchesRegex("channel 2, picture of 20..-..-.. ..:..:.. \\+00:00\n"
                                                   "  size    352x288 pixels, [0-9.]+ kB\n"
                                                   "  age     at most [0-9]+ ms when it was written\n"
                                                   "  file    channel2.jpg\n"));
    EXPECT_NE(still::Decode(Contents(At("channel2.jpg"))), nullptr) << "named after its channel";
    ExpectNarrow(outcome.out);
}

TEST_F(CtlSnapshotTest, Snapshot_MoreThanTheFirstBufferHolds_ComesWhole) {
    const Outcome outcome = Run("snapshot -c 3 --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const std::string jpeg = Contents(At("channel3.jpg"));
    ASSERT_GT(jpeg.size(), FIRST_BUFFER) << "the scene must be larger for this test to tell anything";
    const auto picture = still::Decode(jpeg);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->width, 4096);
    EXPECT_EQ(still::StampOf(*picture).channel, 3U);
}

TEST_F(CtlSnapshotTest, Snapshot_Refused_LeavesTheFileThatWasThere) {
    std::ofstream(At("gate.jpg")) << "what was there";
    UseScenario(R"({"faults": [{"operation": "vexo_model_capture", "times": 100}]})");
    const Outcome outcome = Run("snapshot -o gate.jpg");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("took no picture of channel 1: does it have that channel?\n"
                                       "the recorder says: HostMgr_Dev_CapturePicture["));
    EXPECT_EQ(Contents(At("gate.jpg")), "what was there");
    EXPECT_FALSE(std::filesystem::exists(At("gate.jpg.part")));
}

TEST_F(CtlSnapshotTest, Snapshot_DiskFullHalfWay_LeavesTheFileThatWasThere) {
    std::ofstream(At("gate.jpg")) << "what was there";
    const SizeLimit limit(8192);
    const Outcome outcome = Run("snapshot -o gate.jpg");
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write gate.jpg: "));
    EXPECT_EQ(Contents(At("gate.jpg")), "what was there");
    EXPECT_FALSE(std::filesystem::exists(At("gate.jpg.part")));
}

TEST_F(CtlSnapshotTest, Snapshot_New_TakesThePlaceOfTheOldWhenWhole) {
    std::ofstream(At("gate.jpg")) << std::string(1U << 20U, '#');
    ASSERT_EQ(Run("snapshot -c 2 -o gate.jpg").status, OK);
    EXPECT_NE(still::Decode(Contents(At("gate.jpg"))), nullptr);
    EXPECT_LT(std::filesystem::file_size(At("gate.jpg")), 1U << 20U);
    EXPECT_FALSE(std::filesystem::exists(At("gate.jpg.part")));
}

TEST_F(CtlSnapshotTest, Snapshot_UnknownChannel_IsRefused) {
    const Outcome outcome = Run("snapshot -c 9");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, HasSubstr("channel 9: does it have that channel?"));
    EXPECT_FALSE(std::filesystem::exists(At("channel9.jpg")));
}

TEST_F(CtlSnapshotTest, Snapshot_WhereNothingCanBeWritten_SaysSo) {
    std::filesystem::create_directory(At("folder.jpg"));
    std::filesystem::create_symlink("/dev/full", At("full.jpg"));
    for (const std::string path : {"/proc/gate.jpg", "no/such/folder/gate.jpg", "folder.jpg", "full.jpg"}) {
        const Outcome outcome = Run("snapshot -o " + path);
        EXPECT_EQ(outcome.status, NO_OUTPUT) << path;
        EXPECT_THAT(outcome.out, IsEmpty());
        EXPECT_THAT(outcome.err, HasSubstr("cannot write " + path + ": ")) << path;
    }
}

TEST_F(CtlSnapshotTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments : {"snapshot -c 0", "snapshot -c 257", "snapshot -c x", "snapshot -S third",
                                  "snapshot -o gate.png", "snapshot -o gate", "snapshot gate.jpg"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
