// hostmgrctl download: files that are whole or not there, whose pictures say when they were made. The library's own
// downloads stand in download_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl_recordings.h"
#include "ctl_terminal.h"

using namespace ctl;  // the tests are all about it
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class CtlDownloadTest : public RecordingsTest {};

TEST_F(CtlDownloadTest, Download_File_HasEveryPictureOnceInOrder) {
    const std::vector<Listed> list = List(1);
    const Outcome outcome = Run("download --json --no-audio -o file.mkv" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Stamps stamps(At("file.mkv"));
    EXPECT_THAT(stamps.times, ElementsAreArray(PictureTimes(list)));
    EXPECT_THAT(stamps.channels, testing::Each(1U));
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("whole"), true);
    const json& channel = summary.at("channels").at(0);
    EXPECT_EQ(channel.at("recorded_seconds"), 4 * LENGTH);
    EXPECT_EQ(channel.at("ended"), true);
    EXPECT_EQ(channel.at("audio"), nullptr);
    EXPECT_EQ(channel.at("video").at("frames"), 4 * LENGTH * FPS);
    EXPECT_EQ(InstantOf(channel.at("video").at("first")), list.front().start);
    EXPECT_EQ(channel.at("file").at("path"), "file.mkv");
    EXPECT_EQ(channel.at("file").at("bytes"), std::filesystem::file_size(At("file.mkv")));
    EXPECT_THAT(FilesThere(), ElementsAreArray({"file.mkv"}));
}

TEST_F(CtlDownloadTest, Download_WithSound_KeepsItBesideThePictures) {
    const Listed recording = List(2).at(1);
    ASSERT_EQ(Run("download -c 2 -o file.mp4" + RangeOf(recording.start, recording.stop) + PATIENT).status, OK);
    const MediaView file(At("file.mp4"));
    EXPECT_EQ(file.Only(AVMEDIA_TYPE_VIDEO).decoded, LENGTH * FPS);
    EXPECT_NEAR(static_cast<double>(file.Only(AVMEDIA_TYPE_AUDIO).samples) / 8000, LENGTH, 0.3);
}

TEST_F(CtlDownloadTest, Download_Gaps_AreLeftOutOfTheFileUnlessKept) {
    const std::vector<Listed> list = List(1);
    const std::string range = RangeOf(list[0].start, list[1].stop) + PATIENT;
    ASSERT_EQ(Run("download --no-audio -o short.mkv" + range).status, OK);
    ASSERT_EQ(Run("download --no-audio --keep-gaps -o long.mkv" + range).status, OK);
    const std::vector<double> closed = MediaView(At("short.mkv")).Only(AVMEDIA_TYPE_VIDEO).times;
    const std::vector<double> kept = MediaView(At("long.mkv")).Only(AVMEDIA_TYPE_VIDEO).times;
    ASSERT_EQ(closed.size(), 2 * LENGTH * FPS);
    ASSERT_EQ(kept.size(), closed.size());
    EXPECT_NEAR(closed.back() - closed.front(), 2 * LENGTH - 2 * 0.2 + 0.04, 0.01);
    EXPECT_NEAR(kept.back() - kept.front(), static_cast<double>(list[1].stop - list[0].start) - 0.2, 0.01);
}

TEST_F(CtlDownloadTest, Download_SeveralChannels_AreAFileEach) {
    ASSERT_EQ(Run("download -c 1-2 -S sub --no-audio -o gate.mkv" + WHOLE + PATIENT).status, OK);
    for (const unsigned channel : {1U, 2U}) {
        const std::filesystem::path file = At("gate-channel" + std::to_string(channel) + ".mkv");
        const Stamps stamps(file);
        EXPECT_THAT(stamps.times, ElementsAreArray(PictureTimes(List(channel)))) << channel;
        EXPECT_THAT(stamps.channels, testing::Each(channel));
        EXPECT_EQ(MediaView(file).Only(AVMEDIA_TYPE_VIDEO).width, 160);
    }
    EXPECT_EQ(FilesThere().size(), 2U);
}

// In summer the library reads a play's range an hour late; who types local times does not notice.
TEST_F(CtlDownloadTest, Download_InSummerTime_IsTheRangeAskedFor) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    UseScenario(Scenario("2024-07-05 12:00:00"));
    const std::string whole = " --from '2024-07-05 11:00' --to '2024-07-05 12:00' ";
    const std::vector<Listed> list = List(1, whole);
    ASSERT_EQ(list.size(), 4U);
    const Outcome text = Run("files" + whole);
    EXPECT_THAT(text.out, HasSubstr(" +02:00  6 s "));
    ASSERT_EQ(Run("download --no-audio -o one.mkv" + RangeOf(list[1].start, list[1].stop) + PATIENT).status, OK);
    EXPECT_THAT(Stamps(At("one.mkv")).times, ElementsAreArray(PictureTimes(list[1].start, list[1].stop)));
    ASSERT_EQ(Run("download --no-audio -o all.mkv" + whole + PATIENT).status, OK);
    EXPECT_THAT(Stamps(At("all.mkv")).times, ElementsAreArray(PictureTimes(list)));
}

// The recordings' hour comes twice that night, and the list does not say which one is meant.
TEST_F(CtlDownloadTest, Download_InTheHourThatComesTwice_IsWhole) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    UseScenario(Scenario("2024-10-27 03:00:00"));
    const Outcome outcome =
        Run("download --no-audio -o file.mkv --from '2024-10-27 01:00' --to '2024-10-27 03:30'" + PATIENT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(Stamps(At("file.mkv")).times.size(), 4 * LENGTH * FPS);
}

TEST_F(CtlDownloadTest, Download_NothingRecorded_SaysSoAndWritesNothing) {
    const Outcome outcome = Run("download -o file.mkv --from '2023-01-05 11:00' --to +1h");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("nothing of channel 1 is recorded from 2023-01-05 11:00:00 to"));
    EXPECT_THAT(FilesThere(), IsEmpty());
}

TEST_F(CtlDownloadTest, Download_FailsMidway_LeavesNoFileAndSaysWhereItEnded) {
    const std::vector<Listed> list = List(1);
    UseScenario(Scenario("2024-01-05 12:00:00",
                         R"(, "faults": [{"operation": "vexo_avss_file_reader::read_frame", "nth": 60}])"));
    const Outcome outcome = Run("download -o file.mkv" + WHOLE + PATIENT);
    EXPECT_EQ(outcome.status, PARTIAL);
    EXPECT_THAT(outcome.err, HasSubstr("channel 1 ended at " + Local(list[0].start + 1).substr(1, 17)));
    EXPECT_THAT(outcome.err, HasSubstr("nothing is kept (--keep-partial keeps what came)"));
    EXPECT_THAT(FilesThere(), IsEmpty());
    std::ofstream(At("file.mkv")) << "precious";
    EXPECT_EQ(Run("download -o file.mkv" + WHOLE + PATIENT).status, PARTIAL);
    EXPECT_EQ(ctl::Contents(At("file.mkv")), "precious");
}

TEST_F(CtlDownloadTest, Download_FailsMidway_KeepsWhatCameWhenAskedTo) {
    UseScenario(Scenario("2024-01-05 12:00:00",
                         R"(, "faults": [{"operation": "vexo_avss_file_reader::read_frame", "nth": 60}])"));
    const Outcome outcome = Run("download --json --keep-partial -o file.mkv" + WHOLE + PATIENT);
    EXPECT_EQ(outcome.status, PARTIAL);
    EXPECT_EQ(json::parse(outcome.out).at("whole"), false);
    const Stamps stamps(At("file.mkv"));
    EXPECT_FALSE(stamps.times.empty());
    EXPECT_LT(stamps.times.size(), LENGTH * FPS);
    EXPECT_THAT(FilesThere(), ElementsAreArray({"file.mkv"}));
}

TEST_F(CtlDownloadTest, Download_FolderThatIsNotThere_IsAnOutputErrorAtOnce) {
    const Outcome outcome = Run("download -o nowhere/file.mkv" + WHOLE);
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write nowhere/file.mkv: No such file or directory"));
}

TEST_F(CtlDownloadTest, Download_RefusedLogin_LeavesAnEarlierFileAlone) {
    std::ofstream(At("file.mkv")) << "precious";
    EXPECT_EQ(Run("download -u admin -p wrong -o file.mkv" + WHOLE).status, REFUSED);
    EXPECT_EQ(ctl::Contents(At("file.mkv")), "precious");
}

TEST_F(CtlDownloadTest, Download_OnATerminal_ShowsABarWithPositionRateAndTimeLeft) {
    TerminalRun run({"hostmgrctl", "download", "-o", "file.mkv", "--from", "2024-01-05 11:00", "--to",
                     "2024-01-05 12:00", "-t", "60"},
                    At("."));
    EXPECT_EQ(run.Follow(), OK) << run.Shown();
    EXPECT_THAT(run.Shown(), testing::ContainsRegex(
                                 "\\[#*\\.*\\] +[0-9]+%  11:[0-9]+:[0-9]+  [0-9.]+ x real time  [0-9a-z ]+ left"));
    std::string line;
    for (const char letter : run.Shown()) {
        line = letter == '\r' ? "" : line + letter;
        EXPECT_LE(line.size(), 80U + 3) << "the erasing sequence counts three: " << line;
    }
}

TEST_F(CtlDownloadTest, Download_Interrupted_LeavesNoFile) {
    TerminalRun run({"hostmgrctl", "download", "-o", "file.mkv", "--from", "2024-01-05 11:00", "--to",
                     "2024-01-05 12:00", "-t", "60"},
                    At("."));
    EXPECT_EQ(run.Follow("x real time"), PARTIAL) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr("the download was ended on request: nothing is kept"));
    EXPECT_THAT(FilesThere(), IsEmpty());
}

}  // namespace
