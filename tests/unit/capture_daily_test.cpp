// Timed capture: pictures at a time of day and of every second, what is reported of them, and everything that can go
// wrong with one.
#include <array>

#include "capture_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using namespace vexo_soft;

class CaptureDaily : public CaptureFixture {};
class CaptureEverySecond : public CaptureFixture {};
class CaptureTimedFailure : public CaptureFixture {};

// ---- the time of day -----------------------------------------------------------------------------------------------

TEST_F(CaptureDaily, AroundItsTime_TakesOnePictureASecondForNineSeconds) {
    Start(Daily(12, 30, 0), 3);
    EXPECT_THAT(SecondsWithPictures(At(12, 29, 50), At(12, 30, 10)),
                ElementsAre(At(12, 29, 56), At(12, 29, 57), At(12, 29, 58), At(12, 29, 59), At(12, 30, 0),
                            At(12, 30, 1), At(12, 30, 2), At(12, 30, 3), At(12, 30, 4)));
}

/** A daily time and the first and last second of the day at which it takes pictures. */
struct DailyCase {
    const char* name;
    unsigned int time[3];
    int first[3];
    int last[3];
};
void PrintTo(const DailyCase& row, std::ostream* out) {
    *out << row.name;
}
class CaptureDailyTime : public CaptureDaily, public testing::WithParamInterface<DailyCase> {};
INSTANTIATE_TEST_SUITE_P(Times, CaptureDailyTime,
                         testing::Values(DailyCase{"WithinAMinute", {7, 15, 30}, {7, 15, 26}, {7, 15, 34}},
                                         DailyCase{"AtTheMinute", {12, 30, 0}, {12, 29, 56}, {12, 30, 4}},
                                         DailyCase{"BeforeTheMinute", {12, 30, 57}, {12, 30, 53}, {12, 31, 1}},
                                         DailyCase{"AtTheHour", {13, 0, 0}, {12, 59, 56}, {13, 0, 4}},
                                         DailyCase{"BeforeTheHour", {12, 59, 59}, {12, 59, 55}, {13, 0, 3}}),
                         ByName());

TEST_P(CaptureDailyTime, TakesPicturesFromFourSecondsBeforeToFourSecondsAfter) {
    const DailyCase& row = GetParam();
    const long first = At(row.first[0], row.first[1], row.first[2]);
    const long last = At(row.last[0], row.last[1], row.last[2]);
    ASSERT_EQ(last - first, 8);
    Start(Daily(row.time[0], row.time[1], row.time[2]));
    const std::vector<long> seconds = SecondsWithPictures(first - 3, last + 3);
    ASSERT_EQ(seconds.size(), 9u);
    EXPECT_EQ(seconds.front(), first);
    EXPECT_EQ(seconds.back(), last);
}

TEST_F(CaptureDaily, AtMidnight_TakesPicturesOnBothDays) {
    Start(Daily(0, 0, 0));
    const long midnight = DAY + 24 * 60 * 60;
    const std::vector<long> seconds = SecondsWithPictures(midnight - 8, midnight + 8);
    ASSERT_EQ(seconds.size(), 9u);
    EXPECT_EQ(seconds.front(), midnight - 4);
    EXPECT_EQ(seconds.back(), midnight + 4);
}

TEST_F(CaptureDaily, BeforeMidnight_GoesOnAfterIt) {
    Start(Daily(23, 59, 58), 1);
    const long midnight = DAY + 24 * 60 * 60;
    const std::vector<long> seconds = SecondsWithPictures(midnight - 10, midnight + 10);
    ASSERT_EQ(seconds.size(), 9u);
    EXPECT_EQ(seconds.front(), midnight - 6);
    EXPECT_EQ(seconds.back(), midnight + 2);
    EXPECT_THAT(Files(), testing::Contains(File("OT_CH0_000002.jpg")));
}

TEST_F(CaptureDaily, AfterMidnight_BeginsBeforeIt) {
    Start(Daily(0, 0, 3), 1);
    const long midnight = DAY + 24 * 60 * 60;
    EXPECT_EQ(SecondsWithPictures(midnight - 6, midnight + 12).front(), midnight - 1);
    EXPECT_THAT(Files(), testing::Contains(File("OT_CH0_235959.jpg")));
}

TEST_F(CaptureDaily, SameMinuteOfAnotherHour_TakesNone) {
    Start(Daily(12, 30, 0));
    EXPECT_THAT(SecondsWithPictures(At(11, 29, 55), At(11, 30, 5)), IsEmpty());
    EXPECT_THAT(SecondsWithPictures(At(0, 29, 55), At(0, 30, 5)), IsEmpty());
}

TEST_F(CaptureDaily, EveryDay_ComesAgain) {
    Start(Daily(12, 30, 0));
    for (int day = 0; day < 3; ++day) {
        const long noon = At(12, 30, 0) + day * 24L * 60 * 60;
        EXPECT_EQ(SecondsWithPictures(noon - 6, noon + 6).size(), 9u) << day;
    }
}

TEST_F(CaptureDaily, Time_IsTheRecordersLocalTime) {
    SetTimeZone("XXX-5");
    Start(Daily(12, 30, 0), 1);
    EXPECT_THAT(SecondsWithPictures(At(12, 29, 55), At(12, 30, 5)), IsEmpty());
    EXPECT_EQ(SecondsWithPictures(At(7, 29, 55), At(7, 30, 5)).size(), 9u);
    EXPECT_THAT(Files(), testing::Contains(File("OT_CH0_123000.jpg")));
}

TEST_F(CaptureDaily, TimeThatNoDayHas_NeverComes) {
    for (const uint32_t time : {24u << 16, 0xFFFF0000u, 60u << 8, 60u, 0x01000000u, 0xFFFFFFFFu}) {
        _tagVexoCapturePictureCfg cfg = Daily(0, 0, 0);
        cfg.dwTime = time;
        Start(cfg);
    }
    const long midnight = DAY + 24 * 60 * 60;
    EXPECT_THAT(SecondsWithPictures(midnight - 10, midnight + 10), IsEmpty());
    EXPECT_THAT(SecondsWithPictures(At(0, 0, 50), At(0, 1, 10)), IsEmpty());
    EXPECT_THAT(SecondsWithPictures(At(0, 59, 55), At(1, 0, 5)), IsEmpty());
}

TEST_F(CaptureDaily, Pass_AsksInThisOrder) {
    Start(Daily(8, 0, 0), 3);
    RunPass();
    SetClock(At(8, 0, 1), 0);
    EXPECT_THAT(CallsOfPass(),
                ElementsAre("vexo_utility_linux_to_vexo_time(" + std::to_string(At(8, 0, 1)) + ")",
                            std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")",
                            "vexo_model_capture(1281, 2, " + File("OT_CH2_080001.jpg") + ")",
                            "vexo_utility_malloc(97, 0x80007, " + std::to_string(344 + 2 * sizeof(void*)) + ", 1)",
                            "callback(" + File("OT_CH2_080001.jpg") + ")"));
}

// ---- every second --------------------------------------------------------------------------------------------------

TEST_F(CaptureEverySecond, EachPass_TakesAPicture) {
    Start(EverySecond(), 3);
    EXPECT_EQ(SecondsWithPictures(At(8, 59, 58), At(9, 0, 2)).size(), 5u);
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, File("RT_CH2_085958.jpg"), File("RT_CH2_085959.jpg"),
                                     File("RT_CH2_090000.jpg"), File("RT_CH2_090001.jpg"), File("RT_CH2_090002.jpg")));
}

TEST_F(CaptureEverySecond, ChannelsOfAnyNumber_AreCountedFromZeroForTheRecorder) {
    const std::pair<int, std::string> rows[] = {
        {0, "-1"}, {256, "255"}, {INT32_MAX, "2147483646"}, {INT32_MIN, "2147483647"}, {-2147483647, "-2147483648"}};
    for (const auto& [channel, number] : rows) {
        const int hCapture = Start(EverySecond(), channel);
        PassAt(At(8, 0, 0));
        EXPECT_EQ(m_pictures.back().info.sPicPath, File("RT_CH" + number + "_080000.jpg"));
        EXPECT_EQ(m_pictures.back().info.lChannel, channel);
        Stop(hCapture);
    }
}

TEST_F(CaptureEverySecond, Stopped_TakesNoMore) {
    const int first = Start(EverySecond(), 1);
    Start(EverySecond(), 2);
    PassAt(At(8, 0, 0));
    Stop(first);
    PassAt(At(8, 0, 1));
    EXPECT_THAT(Paths(), ElementsAre(File("RT_CH0_080000.jpg"), File("RT_CH1_080000.jpg"), File("RT_CH1_080001.jpg")));
}

TEST_F(CaptureEverySecond, Trigger_ReplacesItsCallback) {
    const int hCapture = Start(EverySecond());
    EXPECT_EQ(vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, nullptr, nullptr), 0);
    RunPass();
    EXPECT_THAT(m_pictures, IsEmpty());
    EXPECT_EQ(Trigger(hCapture), 0);
    RunPass();
    EXPECT_EQ(m_pictures.size(), 1u);
}

TEST_F(CaptureEverySecond, WithoutACallback_AsksNothing) {
    Start(EverySecond());
    RunPass();
    vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(LOGIN, nullptr, nullptr);
    EXPECT_THAT(CallsOfPass(), IsEmpty());
}

// ---- what is reported ----------------------------------------------------------------------------------------------

/** The record as the agent's memory holds it: twenty words and the path. */
static std::array<unsigned int, 20> WordsOf(const _tagVexoCapturePictureInfo& info) {
    std::array<unsigned int, 20> words;
    memcpy(words.data(), &info, sizeof(words));
    return words;
}
static std::string PathOf(const _tagVexoCapturePictureInfo& info) {
    return std::string(reinterpret_cast<const char*>(&info) + 80, 260);
}
static std::string Padded(const std::string& path) {
    return path + std::string(260 - path.size(), '\0');
}

TEST_F(CaptureDaily, Report_HoldsTheCaptureTimeTwiceAndTheFile) {
    m_next_size = 54321;
    Start(Daily(12, 30, 5), 3, 2);
    PassAt(At(12, 30, 9));
    ASSERT_EQ(m_pictures.size(), 1u);
    EXPECT_EQ(m_pictures[0].hCapture, LOGIN);
    EXPECT_EQ(WordsOf(Picture(0)),
              (std::array<unsigned int, 20>{3, 2, 0, 1, 0, 2024, 3, 5, 12, 30, 9, 0, 2024, 3, 5, 12, 30, 9, 0, 54321}));
    EXPECT_EQ(PathOf(Picture(0)), Padded(File("OT_CH2_123009.jpg")));
}

TEST_F(CaptureEverySecond, Report_HoldsTheTasksOwnHandleStreamAndKind) {
    Start(Daily(20, 0, 0));
    Start(EverySecond(), 16, -7);
    PassAt(At(23, 59, 59));
    ASSERT_EQ(m_pictures.size(), 1u);
    EXPECT_EQ(m_pictures[0].hCapture, 0x10000 | LOGIN);
    EXPECT_EQ(WordsOf(Picture(0)), (std::array<unsigned int, 20>{16, 0xFFFFFFF9, 0,    2, 0, 2024, 3,  5,  23, 59,
                                                                 59, 0,          2024, 3, 5, 23,   59, 59, 0,  1001}));
    EXPECT_EQ(PathOf(Picture(0)), Padded(File("RT_CH15_235959.jpg")));
}

// ---- failures ------------------------------------------------------------------------------------------------------

TEST_F(CaptureTimedFailure, UnknownKind_SaysSoWithEachPassAndTakesNone) {
    _tagVexoCapturePictureCfg cfg = EverySecond();
    cfg.dwType = 3;
    Start(cfg);
    for (int pass = 0; pass < 2; ++pass)
        EXPECT_EQ(Console([this] { RunPass(); }), Error("HostMgrDoOnTimeCapture", "dwType:3\n"));
    EXPECT_THAT(m_pictures, IsEmpty());
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR));
}

TEST_F(CaptureTimedFailure, UnknownKindBeyondTheSign_IsPrintedSigned) {
    _tagVexoCapturePictureCfg cfg = EverySecond();
    cfg.dwType = 0xFFFFFFFF;
    Start(cfg);
    EXPECT_EQ(Console([this] { RunPass(); }), Error("HostMgrDoOnTimeCapture", "dwType:-1\n"));
}

TEST_F(CaptureTimedFailure, UnknownKindWithoutADirectory_SaysNothing) {
    m_disks.clear();
    _tagVexoCapturePictureCfg cfg = EverySecond();
    cfg.dwType = 3;
    Start(cfg);
    EXPECT_EQ(Console([this] { RunPass(); }), "");
}

/** What a failed picture leaves: its text, then the file's deletion, no report, nothing in the list. */
class CaptureTimedLoss : public CaptureTimedFailure {
protected:
    void SetUp() override {
        CaptureTimedFailure::SetUp();
        Start(EverySecond(), 1);
        RunPass();
        m_memory = platform.LiveMemory().size();
        m_pictures.clear();
        SetClock(At(9, 0, 0), 0);
    }
    const std::string m_file = File("RT_CH0_090000.jpg");
    size_t m_memory = 0;
};

TEST_F(CaptureTimedLoss, RecorderRefuses_DeletesWhatItLeft) {
    m_answer.result = -1;
    Lines calls;
    EXPECT_EQ(Console([&] { calls = CallsOfPass(); }),
              Error("HostMgrDoOnTimeCapture", "vexo_model_capture " + m_file + " failed!!\n"));
    EXPECT_THAT(Lines(calls.begin() + 2, calls.end()),
                ElementsAre("vexo_model_capture(1281, 0, " + m_file + ")", "vexo_utility_is_file_exist(" + m_file + ")",
                            "unlink(" + m_file + ")"));
    EXPECT_THAT(m_pictures, IsEmpty());
    EXPECT_EQ(platform.LiveMemory().size(), m_memory);
}

TEST_F(CaptureTimedLoss, RecorderRefusesWithoutAFile_DeletesNone) {
    m_answer.result = 1;
    m_answer.leavesFile = false;
    Lines calls;
    RawConsole([&] { calls = CallsOfPass(); });
    EXPECT_EQ(calls.back(), "vexo_utility_is_file_exist(" + m_file + ")");
}

TEST_F(CaptureTimedLoss, EmptyPicture_IsDeleted) {
    m_answer.empty = true;
    Lines calls;
    EXPECT_EQ(Console([&] { calls = CallsOfPass(); }), Error("HostMgrDoOnTimeCapture", "capture_size 0!!\n"));
    EXPECT_THAT(Lines(calls.begin() + 3, calls.end()),
                ElementsAre("vexo_utility_is_file_exist(" + m_file + ")", "unlink(" + m_file + ")"));
    EXPECT_THAT(m_pictures, IsEmpty());
    EXPECT_EQ(platform.LiveMemory().size(), m_memory);
}

TEST_F(CaptureTimedLoss, NoMemoryForTheList_SaysSoTwiceAndDeletesThePicture) {
    platform.FailMalloc(1);
    Lines calls;
    EXPECT_EQ(Console([&] { calls = CallsOfPass(); }),
              Error("HostMgrAddCaptureNode", "vexo_utility_malloc failed!!!\n") +
                  Error("HostMgrDoOnTimeCapture", "HostMgrAddCaptureNode " + m_file + " failed!!\n"));
    EXPECT_THAT(Lines(calls.begin() + 4, calls.end()),
                ElementsAre("vexo_utility_is_file_exist(" + m_file + ")", "unlink(" + m_file + ")"));
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureTimedLoss, NextPass_TakesPicturesAgain) {
    m_answer.result = -1;
    RawConsole([this] { RunPass(); });
    m_answer.result = 0;
    PassAt(At(9, 0, 1));
    EXPECT_THAT(Paths(), ElementsAre(File("RT_CH0_090001.jpg")));
}

// The text stands on the console before the file goes.
TEST_F(CaptureTimedLoss, Failure_IsToldBeforeTheFileIsDeleted) {
    m_answer.result = -1;
    ON_CALL(platform, unlink).WillByDefault([](const char*) { return printf("deleted\n"); });
    EXPECT_EQ(Console([this] { RunPass(); }),
              Error("HostMgrDoOnTimeCapture", "vexo_model_capture " + m_file + " failed!!\n") + "deleted\n");
}
