// The simulated recorder records what is live while somebody watches: every frame once, in files that follow each
// other, by record mode and event, on disks that have an end. Recording without a watcher stands in
// live_always_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <set>

#include "recorded.h"

namespace control = simulator::control;

namespace {

using live::Eventually;
using live::Frame;
using live::Reader;
using recorded::List;
using recorded::Player;
using testing::Each;
using testing::IsEmpty;

constexpr unsigned QUIET = 0;  // channels: one of few bytes, one that fills the disk
constexpr unsigned LOUD = 1;
constexpr unsigned OFF = 0;
constexpr unsigned ALWAYS = 2;

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new recorded::Recorder(R"json({
    "name": "live recording test",
    "cameras": [
        {"name": "Quiet", "main": {"width": 320, "height": 240, "fps": 25, "gop": 10, "kbps": 200},
         "sub": {"width": 128, "height": 96, "fps": 12, "gop": 6, "kbps": 48}},
        {"name": "Loud", "main": {"width": 640, "height": 360, "fps": 25, "gop": 5, "kbps": 8000}}
    ],
    "disks": [{"megabytes": 3}],
    "recordings": {"live": "watched", "file_seconds": 2, "history": {"segments": 0}}
})json"));

/** The recordings of a channel in the last hour. */
std::vector<vexo_rec_file> FilesNow(unsigned channel, unsigned types = recorded::ALL_TYPES) {
    return List(channel, time(nullptr) - 3600, time(nullptr) + 1, types).Files();
}

/** Watches a stream for so many frames; when they were made. */
std::vector<uint64_t> Watch(unsigned channel, vexo_enc_str_type type, unsigned frames) {
    Reader reader(channel, type);
    std::vector<uint64_t> times;
    for (unsigned i = 0; i < frames; ++i) {
        const auto frame = reader.Next();
        if (frame) {
            times.push_back(frame->Milliseconds());
        }
    }
    return times;
}

/** Watches until something is the case; false when that took too long. */
bool WatchUntil(unsigned channel, const std::function<bool()>& happened) {
    Reader reader(channel, VEXO_ENC_STR_MAIN);
    return Eventually([&] {
        reader.Try();
        return happened();
    });
}

std::vector<Frame> Recorded(unsigned channel, unsigned stream) {
    const List list(channel, time(nullptr) - 3600, time(nullptr) + 1);
    Player player(list);
    player->set_stream_type(stream);
    return player.Rest();
}

bool Over(unsigned channel) {
    return Eventually([channel] { return vexo_model_ch_is_recording(channel) == VEXO_FALSE; });
}

TEST(LiveRecording, Watched_EveryFrameOnce_InFilesThatFollowEachOther) {
    const std::vector<uint64_t> seen = Watch(QUIET, VEXO_ENC_STR_MAIN, 130);
    ASSERT_TRUE(Over(QUIET));
    std::vector<uint64_t> recorded;
    live::Decoder decoder;
    for (const Frame& frame : Recorded(QUIET, recorded::MAIN)) {
        recorded.push_back(frame.Milliseconds());
        const AVFrame* picture = decoder.Decode(frame);
        ASSERT_NE(picture, nullptr);
        const auto stamp = live::StampIn(*picture);
        ASSERT_TRUE(stamp);
        EXPECT_EQ(stamp->milliseconds, frame.Milliseconds());
        EXPECT_EQ(stamp->channel, QUIET + 1);
    }
    EXPECT_TRUE(std::is_sorted(recorded.begin(), recorded.end()));
    EXPECT_TRUE(std::includes(recorded.begin(), recorded.end(), seen.begin(), seen.end()));
    EXPECT_EQ(std::set<uint64_t>(recorded.begin(), recorded.end()).size(), recorded.size());
    const std::vector<vexo_rec_file> files = FilesNow(QUIET);
    ASSERT_GT(files.size(), 2U);
    for (size_t i = 1; i < files.size(); ++i) {
        EXPECT_LE(files[i - 1].start, files[i].start);
        EXPECT_LE(files[i].start - files[i - 1].stop + 1, 2U) << "files follow each other within whole seconds";
    }
}

TEST(LiveRecording, SubStreamAndSound_AreRecordedWhenTheyAreWatched) {
    Reader main(QUIET, VEXO_ENC_STR_MAIN);
    Reader sub(QUIET, VEXO_ENC_STR_SUB);
    Reader audio(QUIET, VEXO_ENC_STR_AUDIO);
    std::vector<uint64_t> seen;
    for (int i = 0; i < 60; ++i) {
        main.Next();
        audio.Next();
        const auto frame = sub.Next();
        ASSERT_TRUE(frame);
        seen.push_back(frame->Milliseconds());
    }
    ASSERT_TRUE(Over(QUIET));
    std::vector<uint64_t> pictures;
    size_t sounds = 0;
    for (const Frame& frame : Recorded(QUIET, recorded::SUB)) {
        if (recorded::IsVideo(frame)) {
            EXPECT_EQ(frame.header.width, 128);
            pictures.push_back(frame.Milliseconds());
        } else {
            ++sounds;
        }
    }
    // Files that hold the sub stream begin when it has come; from then on nothing is missing.
    ASSERT_FALSE(pictures.empty());
    const auto first = std::lower_bound(seen.begin(), seen.end(), pictures.front());
    EXPECT_LT(first - seen.begin(), 30);
    EXPECT_TRUE(std::includes(pictures.begin(), pictures.end(), first, seen.end()));
    EXPECT_GT(sounds, 40U);
}

TEST(LiveRecording, FileThatGrows_IsFoundAndReadMeanwhile) {
    const long begun = time(nullptr);
    EXPECT_TRUE(WatchUntil(QUIET, [begun] {
        const List list(QUIET, begun, time(nullptr) + 1);
        Player player(list);
        return vexo_model_ch_is_recording(QUIET) != VEXO_FALSE && player.Next().has_value();
    }));
}

TEST(LiveRecording, Predicates_TellChannelAndDisk) {
    vexo_hard_disk_info disk;
    ASSERT_EQ(vexo_model_get_hard_disk_info(0, &disk), 0);
    EXPECT_TRUE(WatchUntil(QUIET, [&] {
        return vexo_model_ch_is_recording(QUIET) != VEXO_FALSE &&
               vexo_model_is_disk_recording(&disk.identity) != VEXO_FALSE;
    }));
    EXPECT_FALSE(vexo_model_ch_is_recording(17));
    vexo_disk_identity other = disk.identity;
    other.address = 2;
    EXPECT_FALSE(vexo_model_is_disk_recording(&other));
    EXPECT_FALSE(vexo_model_is_disk_recording(nullptr));
    EXPECT_TRUE(Over(QUIET));
    EXPECT_FALSE(vexo_model_is_disk_recording(&disk.identity));
}

TEST(LiveRecording, RecordModeOff_NothingIsRecorded_UntilItIsOn) {
    unsigned login = 0;
    const vexo_ip_struct ip = {0, "127.0.0.1"};
    ASSERT_EQ(vexo_model_login("admin", "admin12345", &ip, &login, VEXO_TRUE, VEXO_FALSE), 0);
    ASSERT_EQ(vexo_model_set_record_mode(login, QUIET, OFF), 0);
    const size_t before = FilesNow(QUIET).size();
    Watch(QUIET, VEXO_ENC_STR_MAIN, 75);
    EXPECT_EQ(FilesNow(QUIET).size(), before);
    ASSERT_EQ(vexo_model_set_record_mode(login, QUIET, ALWAYS), 0);
    EXPECT_TRUE(WatchUntil(QUIET, [&] { return FilesNow(QUIET).size() > before; }));
    EXPECT_EQ(vexo_model_logout(login, VEXO_FALSE), 0);
}

TEST(LiveRecording, Motion_GoesIntoFilesOfItsType) {
    EXPECT_TRUE(WatchUntil(QUIET, [] { return !FilesNow(QUIET, 1).empty(); }));
    EXPECT_THAT(FilesNow(QUIET, 2), IsEmpty());
    control::SetEvent("motion", QUIET + 1, true);
    EXPECT_TRUE(WatchUntil(QUIET, [] { return !FilesNow(QUIET, 2).empty(); }));
    control::SetEvent("camera input", QUIET + 1, true);
    EXPECT_TRUE(
        WatchUntil(QUIET, [] { return !List(QUIET, time(nullptr) - 60, time(nullptr) + 1, 6, 1).Files().empty(); }));
    control::SetEvent("motion", QUIET + 1, false);
    control::SetEvent("camera input", QUIET + 1, false);
}

TEST(LiveRecording, FullDisk_OldestGoes_AndRecordingGoesOn) {
    ASSERT_TRUE(WatchUntil(LOUD, [] { return !FilesNow(LOUD).empty(); }));
    const unsigned first = FilesNow(LOUD).front().info_1;
    ASSERT_TRUE(WatchUntil(LOUD, [&] {
        const std::vector<vexo_rec_file> files = FilesNow(LOUD);
        return !files.empty() && files.front().info_1 != first;
    }));
    // Between two files nothing is recorded for a moment.
    EXPECT_TRUE(WatchUntil(LOUD, [] { return vexo_model_ch_is_recording(LOUD) != VEXO_FALSE; }));
    EXPECT_FALSE(Recorded(LOUD, recorded::MAIN).empty());
}

}  // namespace
