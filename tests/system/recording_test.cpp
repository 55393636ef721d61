// The simulated recorder's index of recordings: the history that a first start makes, search by time and type, what a
// recorded file is like, what a full disk does. Readers stand in reader_test.cpp, live recording in
// live_recording_test.cpp, the search over very many in search_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "model/archive.h"
#include "recorded.h"
#include "recorder_test_support.h"

namespace {

using recorded::ALL_TYPES;
using recorded::HOURS;
using recorded::Inquire;
using recorded::LENGTH;
using recorded::List;
using recorded::SEGMENTS;
using recorded::UNTIL;
using recorder_test::NewComplaints;
using simulator::Archive;
using simulator::RecordedFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new recorded::Recorder(recorded::HISTORY));

std::vector<unsigned> TypesOf(const List& list) {
    std::vector<unsigned> types;
    for (const vexo_rec_file& file : list.Files()) {
        types.push_back(file.type);
    }
    return types;
}

std::vector<unsigned> StartsOf(const List& list) {
    std::vector<unsigned> starts;
    for (const vexo_rec_file& file : list.Files()) {
        starts.push_back(file.start);
    }
    return starts;
}

std::filesystem::path FileOf(unsigned channel, const vexo_rec_file& file) {
    const std::string end = "-" + std::to_string(file.info_1) + ".mov";
    char folder[32];
    snprintf(folder, sizeof(folder), "disk-%u/channel-%03u", file.info_2, channel + 1);
    for (const auto& entry : std::filesystem::directory_iterator(simulator::HomeFolder() + "/" + folder)) {
        const std::string name = entry.path().filename().string();
        if (name.size() > end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0) {
            return entry.path();
        }
    }
    return {};
}

// ---- history -------------------------------------------------------------------------------------------------------

TEST(History, FirstSearch_FindsOneRecordingInEachPartOfTheHours) {
    for (unsigned channel = 0; channel < recorded::CHANNELS; ++channel) {
        const std::vector<vexo_rec_file> files = List(channel).Files();
        ASSERT_THAT(files, SizeIs(SEGMENTS));
        for (unsigned i = 0; i < SEGMENTS; ++i) {
            const long part = UNTIL - HOURS * 3600 + i * HOURS * 3600 / SEGMENTS;
            EXPECT_GE(files[i].start, part);
            EXPECT_LE(files[i].stop, part + HOURS * 3600 / SEGMENTS);
            EXPECT_EQ(files[i].stop, files[i].start + LENGTH);
        }
    }
}

TEST(History, Types_ScheduleMotionAlarmAndBoth) {
    EXPECT_THAT(TypesOf(List(0)), ElementsAre(1, 2, 4, 6));
}

TEST(History, TwoChannels_AreRecordedAtDifferentTimes) {
    EXPECT_NE(StartsOf(List(0)), StartsOf(List(1)));
}

TEST(History, List_NamesChannelAndFiles) {
    const List list(1);
    EXPECT_EQ(list.Get()->channel, 1U);
    for (const vexo_rec_file& file : list.Files()) {
        EXPECT_TRUE(std::filesystem::exists(FileOf(1, file))) << file.info_1;
    }
}

// Not a test by itself: what the process that FilesFoundByAnotherProcess starts is to do. Its answer is its exit
// status.
TEST(OtherProcess, DISABLED_CountsTheFiles) {
    vexo_rec_file_inquiry_result* list = nullptr;
    const int result = Inquire(0, UNTIL - HOURS * 3600, UNTIL, ALL_TYPES, 0, &list);
    int count = 0;
    for (const vexo_rec_file* file = result == 0 ? list->first : nullptr; file != nullptr; file = file->next) {
        ++count;
    }
    _exit(result == 0 ? count : 100);
}

/** Searches in a process of its own, which may not have seen the history yet; the number of files found, 100 on
 * failure. */
int FilesFoundByAnotherProcess() {
    setenv("RECORDER_TEST_HOME", getenv("RECORDER_HOME"), 1);
    const int status = system(
        "\"$(readlink /proc/$PPID/exe)\" --gtest_also_run_disabled_tests "
        "--gtest_filter=OtherProcess.DISABLED_CountsTheFiles");
    unsetenv("RECORDER_TEST_HOME");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100;
}

TEST(History, SecondProcess_FindsTheSameFilesAndMakesNone) {
    ASSERT_EQ(FilesFoundByAnotherProcess(), static_cast<int>(SEGMENTS));
    std::vector<std::filesystem::file_time_type> written;
    const std::vector<vexo_rec_file> files = List(0).Files();
    for (const vexo_rec_file& file : files) {
        written.push_back(std::filesystem::last_write_time(FileOf(0, file)));
    }
    ASSERT_EQ(FilesFoundByAnotherProcess(), static_cast<int>(SEGMENTS));
    for (size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(std::filesystem::last_write_time(FileOf(0, files[i])), written[i]);
    }
}

/** The codecs of a file's streams, and its length in seconds, as any player's library sees them. */
struct Contents {
    std::vector<std::string> streams;
    double seconds = 0;
};

Contents ContentsOf(const std::string& path) {
    Contents contents;
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0) {
        return contents;
    }
    const simulator::Av<AVFormatContext> file(context);
    avformat_find_stream_info(context, nullptr);
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVCodecParameters& stream = *context->streams[i]->codecpar;
        contents.streams.push_back(std::string(avcodec_get_name(stream.codec_id)) + " " + std::to_string(stream.width) +
                                   "x" + std::to_string(stream.height));
    }
    contents.seconds = static_cast<double>(context->duration) / AV_TIME_BASE;
    return contents;
}

TEST(History, File_OpensInAPlayer_BothStreamsAndSound) {
    const List list(0);
    const Contents contents = ContentsOf(FileOf(0, list.Files()[0]).string());
    EXPECT_THAT(contents.streams, ElementsAre("h264 320x180", "h264 160x130", "pcm_alaw 0x0"));
    EXPECT_NEAR(contents.seconds, LENGTH, 0.1);
}

// ---- search --------------------------------------------------------------------------------------------------------

TEST(Search, AnyOfTheBits_FindsTheFilesThatHaveOne) {
    const long begin = UNTIL - HOURS * 3600;
    const struct {
        unsigned mask;
        std::vector<unsigned> types;
    } cases[] = {{1, {1}}, {2, {2, 6}}, {4, {4, 6}}, {6, {2, 4, 6}}, {7, {1, 2, 4, 6}}, {8, {}}, {0, {}}};
    for (const auto& [mask, types] : cases) {
        EXPECT_EQ(TypesOf(List(0, begin, UNTIL, mask, 0)), types) << mask;
    }
}

TEST(Search, AllOfTheBits_FindsTheFilesThatHaveEveryOne) {
    const long begin = UNTIL - HOURS * 3600;
    const struct {
        unsigned mask;
        std::vector<unsigned> types;
    } cases[] = {{1, {1}}, {2, {2, 6}}, {6, {6}}, {7, {}}, {0, {1, 2, 4, 6}}};
    for (const auto& [mask, types] : cases) {
        EXPECT_EQ(TypesOf(List(0, begin, UNTIL, mask, 1)), types) << mask;
    }
}

TEST(Search, Time_FindsWhatHasAPartInIt) {
    const vexo_rec_file second = List(0).Files()[1];
    const long start = second.start;
    const long stop = second.stop;
    const struct {
        long from;
        long to;
        size_t found;
    } cases[] = {{start + 2, start + 3, 1}, {start, start, 1},         {start - 5, start, 1},   {stop - 1, stop + 5, 1},
                 {stop, stop + 5, 0},       {start - 5, start - 1, 0}, {start - 5, stop + 5, 1}};
    for (const auto& [from, to, found] : cases) {
        EXPECT_THAT(List(0, from, to).Files(), SizeIs(found)) << from - start << " to " << to - start;
    }
}

TEST(Search, NothingThere_IsASuccessWithAnEmptyList) {
    const List list(0, UNTIL + 1000, UNTIL + 2000);
    ASSERT_NE(list.Get(), nullptr);
    EXPECT_EQ(list.Get()->first, nullptr);
}

TEST(Search, WrongArguments_FailAndLeaveTheResult) {
    vexo_rec_file_inquiry_result mark = {};
    vexo_rec_file_inquiry_result* result = &mark;
    EXPECT_NE(Inquire(recorded::CHANNELS, UNTIL - 10, UNTIL, ALL_TYPES, 0, &result), 0);
    EXPECT_NE(Inquire(0xFFFFFFFF, UNTIL - 10, UNTIL, ALL_TYPES, 0, &result), 0);
    EXPECT_NE(Inquire(0, UNTIL, UNTIL - 1, ALL_TYPES, 0, &result), 0);
    EXPECT_NE(Inquire(0, UNTIL - 10, UNTIL, ALL_TYPES, 2, &result), 0);
    const vexo_time_struct good = recorded::Local(UNTIL);
    const vexo_time_struct wrong[] = {{0, 0, 0, 0, 0, 0}, {2024, 2, 30, 0, 0, 0}, {2024, 7, 5, 24, 0, 0}};
    for (const vexo_time_struct& time : wrong) {
        EXPECT_NE(vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, 0, &time, &good, ALL_TYPES, 0, &result), 0);
        EXPECT_NE(vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, 0, &good, &time, ALL_TYPES, 0, &result), 0);
    }
    EXPECT_NE(vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, 0, nullptr, &good, ALL_TYPES, 0, &result), 0);
    EXPECT_NE(vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, 0, &good, nullptr, ALL_TYPES, 0, &result), 0);
    EXPECT_NE(vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, 0, &good, &good, ALL_TYPES, 0, nullptr), 0);
    EXPECT_EQ(result, &mark);
}

TEST(Search, FaultOnOrder_Fails) {
    simulator::control::Fail("vexo_model_inquiry_rec_by_time", 1);
    vexo_rec_file_inquiry_result* result = nullptr;
    EXPECT_NE(Inquire(0, UNTIL - 10, UNTIL, ALL_TYPES, 0, &result), 0);
    EXPECT_EQ(Inquire(0, UNTIL - 10, UNTIL, ALL_TYPES, 0, &result), 0);
    vexo_model_free_inquiry_rec_result(result);
}

// An hour that a clock change leaves out is as good a bound as any other.
TEST(Search, HourThatAClockChangeLeavesOut_IsTaken) {
    const vexo_time_struct from = {2024, 3, 31, 2, 30, 0};
    const vexo_time_struct to = {2024, 12, 31, 23, 59, 59};
    vexo_rec_file_inquiry_result* result = nullptr;
    ASSERT_EQ(vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, 0, &from, &to, ALL_TYPES, 0, &result), 0);
    EXPECT_NE(result->first, nullptr);
    vexo_model_free_inquiry_rec_result(result);
}

TEST(Watch, ListNotGivenBack_IsOutstandingUntilItIs) {
    const std::string line = "inquiry: recordings of channel 2, user 97";
    vexo_rec_file_inquiry_result* list = nullptr;
    ASSERT_EQ(Inquire(1, UNTIL - 10, UNTIL, ALL_TYPES, 0, &list), 0);
    EXPECT_EQ(recorder_test::CountOutstanding(line), 1);
    vexo_model_free_inquiry_rec_result(list);
    EXPECT_EQ(recorder_test::CountOutstanding(line), 0);
}

TEST(Watch, ListFreedTwice_IsComplainedOf) {
    vexo_rec_file_inquiry_result* list = nullptr;
    ASSERT_EQ(Inquire(1, UNTIL - 10, UNTIL, ALL_TYPES, 0, &list), 0);
    vexo_model_free_inquiry_rec_result(list);
    const NewComplaints complaints;
    vexo_model_free_inquiry_rec_result(list);
    EXPECT_EQ(complaints.Text(),
              "inquiry given back that was not taken, or given back twice: by vexo_model_free_inquiry_rec_result\n");
}

TEST(Watch, NoList_IsGivenBackQuietly) {
    const NewComplaints complaints;
    vexo_model_free_inquiry_rec_result(nullptr);
    EXPECT_EQ(complaints.Text(), "");
}

// ---- disks ---------------------------------------------------------------------------------------------------------

/** An archive of two small disks in a folder of its own. */
class ArchiveTest : public testing::Test {
protected:
    ArchiveTest() { std::filesystem::create_directories(m_home); }
    ~ArchiveTest() override { std::filesystem::remove_all(m_home); }

    /** Records a file that many megabytes long, one minute after the last; its bytes on the host are few. */
    RecordedFile Record(Archive& archive, int64_t megabytes) {
        RecordedFile file = {0, 1, m_time, m_time + 1000000, 1, 0, 0};
        m_time += 60000000;
        const auto path = archive.Begin(&file);
        EXPECT_TRUE(path);
        std::ofstream(*path) << "pictures";
        file.bytes = megabytes * 1000000;
        archive.Update(file);
        return file;
    }

    std::vector<int64_t> Numbers(Archive& archive) const {
        std::vector<int64_t> numbers;
        for (const RecordedFile& file : archive.Find({1, 0, INT64_MAX, ALL_TYPES, false})) {
            numbers.push_back(file.number);
        }
        return numbers;
    }

    const std::string m_home = simulator::HomeFolder() + "/archive";
    int64_t m_time = 1720173600000000;
};

TEST_F(ArchiveTest, Files_GoToTheDiskWithMostRoom) {
    Archive archive(m_home, {{10}, {20}});
    EXPECT_EQ(Record(archive, 12).disk, 2U);
    EXPECT_EQ(Record(archive, 3).disk, 1U);
    EXPECT_EQ(Record(archive, 1).disk, 2U);
    EXPECT_EQ(archive.Used(1), 3000000);
    EXPECT_EQ(archive.Used(2), 13000000);
}

TEST_F(ArchiveTest, FullDisk_LosesItsOldestFiles) {
    Archive archive(m_home, {{10}});
    const RecordedFile first = Record(archive, 4);
    const RecordedFile second = Record(archive, 4);
    const RecordedFile third = Record(archive, 4);
    EXPECT_THAT(Numbers(archive), ElementsAre(second.number, third.number));
    EXPECT_FALSE(std::filesystem::exists(archive.PathOf(first)));
    EXPECT_TRUE(std::filesystem::exists(archive.PathOf(second)));
    const RecordedFile last = Record(archive, 9);
    EXPECT_THAT(Numbers(archive), ElementsAre(last.number));
    EXPECT_LE(archive.Used(1), 10000000);
}

TEST_F(ArchiveTest, FileLargerThanItsDisk_StaysAlone) {
    Archive archive(m_home, {{10}});
    Record(archive, 4);
    const RecordedFile large = Record(archive, 11);
    EXPECT_THAT(Numbers(archive), ElementsAre(large.number));
}

TEST_F(ArchiveTest, Numbers_DoNotComeAgain) {
    Archive archive(m_home, {{10}});
    const RecordedFile first = Record(archive, 1);
    archive.Remove(first);
    EXPECT_THAT(Numbers(archive), IsEmpty());
    EXPECT_GT(Record(archive, 1).number, first.number);
}

TEST_F(ArchiveTest, OpenedAgain_HasItsFilesAndNotes) {
    RecordedFile file;
    {
        Archive archive(m_home, {{10}});
        file = Record(archive, 1);
        archive.SetNote("history", "made");
    }
    Archive archive(m_home, {{10}});
    EXPECT_THAT(Numbers(archive), ElementsAre(file.number));
    EXPECT_EQ(archive.Note("history"), "made");
    EXPECT_EQ(archive.Note("other"), "");
    EXPECT_EQ(archive.Oldest(), file.start);
}

TEST_F(ArchiveTest, RemoveBetween_TakesOutWhatLiesWhollyInside) {
    Archive archive(m_home, {{10}});
    const RecordedFile first = Record(archive, 1);
    const RecordedFile second = Record(archive, 1);
    const RecordedFile third = Record(archive, 1);
    archive.RemoveBetween(first.start + 1, third.stop - 1);
    EXPECT_THAT(Numbers(archive), ElementsAre(first.number, third.number));
    EXPECT_FALSE(std::filesystem::exists(archive.PathOf(second)));
}

TEST(Disks, Info_TellsTheScenariosDisk) {
    unsigned count = 0;
    ASSERT_EQ(vexo_model_get_hard_disk_num(&count), 0);
    ASSERT_EQ(count, 1U);
    vexo_hard_disk_info info;
    ASSERT_EQ(vexo_model_get_hard_disk_info(0, &info), 0);
    EXPECT_EQ(info.identity.type, 1U);
    EXPECT_STREQ(info.identity.name, "disk-1");
    EXPECT_EQ(info.state, VEXO_DISK_STATE_NORMAL);
    EXPECT_EQ(info.size_mb, 2000U);
    ASSERT_EQ(info.partition_num, 1U);
    EXPECT_EQ(info.partition[0].mount_path, simulator::HomeFolder() + "/disk-1");
    EXPECT_TRUE(std::filesystem::is_directory(info.partition[0].mount_path));
    EXPECT_NE(vexo_model_get_hard_disk_info(1, &info), 0);
    EXPECT_FALSE(vexo_model_is_disk_recording(&info.identity));
    EXPECT_FALSE(vexo_model_ch_is_recording(0));
}

}  // namespace
