// Alarm capture: pictures at an interval, what a trigger reports of them and for how long, and pictures that could not
// be taken.
#include <array>

#include "capture_fixture.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using namespace vexo_soft;

class CaptureInterval : public CaptureFixture {};
class CaptureTrigger : public CaptureFixture {};
class CaptureAlarmLoss : public CaptureFixture {};

/** A trigger's line on the console. */
static std::string TriggerLine(int channel, int index, const std::string& time) {
    return Debug("HostMgrDoAlarmCapture",
                 "Ch[" + std::to_string(channel) + "] Trigger Start " + std::to_string(index) + " " + time + "!!!\n");
}

// ---- interval ------------------------------------------------------------------------------------------------------

/** An interval and the seconds of ten passes, one a second, at which a picture is taken. */
struct IntervalCase {
    const char* name;
    unsigned int milliseconds;
    std::vector<int> seconds;
};
void PrintTo(const IntervalCase& row, std::ostream* out) {
    *out << row.name;
}
class CaptureIntervalOf : public CaptureInterval, public testing::WithParamInterface<IntervalCase> {};
INSTANTIATE_TEST_SUITE_P(Milliseconds, CaptureIntervalOf,
                         testing::Values(IntervalCase{"0", 0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
                                         IntervalCase{"500", 500, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
                                         IntervalCase{"1000", 1000, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
                                         IntervalCase{"1999", 1999, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
                                         IntervalCase{"2000", 2000, {0, 2, 4, 6, 8}},
                                         IntervalCase{"3999", 3999, {0, 3, 6, 9}},
                                         IntervalCase{"AllOnes", 0xFFFFFFFF, {0}}),
                         ByName());

TEST_P(CaptureIntervalOf, TakesPicturesInWholeSeconds) {
    Start(OnAlarm(0, GetParam().milliseconds, 0), 3);
    for (int second = 0; second < 10; ++second)
        PassAt(At(8, 0, second));
    Lines expected;
    for (const int second : GetParam().seconds)
        expected.push_back("vexo_model_capture(1281, 2, " + File("AC_CH2_08000" + std::to_string(second) + ".jpg") +
                           ")");
    EXPECT_EQ(With("vexo_model_capture", platform.TakeCalls()), expected);
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureInterval, ClockThatIsSetBack_CapturesAtOnce) {
    Start(OnAlarm(0, 60000, 0), 1);
    PassAt(At(8, 0, 0));
    PassAt(At(8, 0, 30));
    PassAt(At(7, 59, 59));
    PassAt(At(8, 0, 20));
    PassAt(At(8, 0, 59));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, File("AC_CH0_075959.jpg"), File("AC_CH0_080000.jpg"),
                                     File("AC_CH0_080059.jpg")));
}

TEST_F(CaptureInterval, WithoutACallback_TakesNone) {
    Start(OnAlarm(0, 0, 0));
    vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(LOGIN, nullptr, nullptr);
    RunPass();
    EXPECT_THAT(CallsOfPass(), IsEmpty());
}

TEST_F(CaptureInterval, WithoutATrigger_TellsNothing) {
    Start(OnAlarm(10, 0, 10));
    EXPECT_EQ(RawConsole([this] { SecondsWithPictures(At(8, 0, 0), At(8, 0, 5)); }), "");
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureInterval, Pass_AsksInThisOrder) {
    Start(OnAlarm(0, 0, 0), 3);
    RunPass();
    SetClock(At(8, 0, 1), 0);
    EXPECT_THAT(CallsOfPass(),
                ElementsAre("vexo_utility_linux_to_vexo_time(" + std::to_string(At(8, 0, 1)) + ")",
                            std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")",
                            "vexo_model_capture(1281, 2, " + File("AC_CH2_080001.jpg") + ")",
                            "vexo_utility_malloc(97, 0x80007, " + std::to_string(344 + 2 * sizeof(void*)) + ", 1)"));
}

// ---- trigger -------------------------------------------------------------------------------------------------------

TEST_F(CaptureTrigger, PicturesBeforeAndAfter_AreReportedInOrderAndCounted) {
    const int hCapture = Start(OnAlarm(3, 1000, 2), 3);
    RawConsole([&] {
        SecondsWithPictures(At(8, 0, 0), At(8, 0, 9));
        SetClock(At(8, 0, 10), 0);
        EXPECT_EQ(Trigger(hCapture), 0);
        m_pictures.clear();
        for (int second = 10; second < 20; ++second)
            PassAt(At(8, 0, second));
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80007u, 80008u, 80009u, 80010u, 80011u, 80012u));
    EXPECT_THAT(Indices(), ElementsAre(0u, 1u, 2u, 3u, 4u, 5u));
    EXPECT_THAT(Sizes(), ElementsAre(1008u, 1009u, 1010u, 1011u, 1012u, 1013u));
    for (const ReportedPicture& picture : m_pictures) {
        EXPECT_EQ(picture.hCapture, hCapture);
        EXPECT_EQ(Clock(picture.info.struTriggerTime), 80010u);
    }
}

TEST_F(CaptureTrigger, Console_NamesTheChannelTheIndexBeforeItCountsAndTheStart) {
    const int hCapture = Start(OnAlarm(1, 1000, 2), 16);
    PassAt(At(8, 0, 9));
    SetClock(At(8, 0, 10), 0);
    Trigger(hCapture);
    EXPECT_EQ(Console([this] {
                  for (int second = 10; second < 15; ++second)
                      PassAt(At(8, 0, second));
              }),
              TriggerLine(16, 1, "08:00:10") + TriggerLine(16, 2, "08:00:10") + TriggerLine(16, 3, "08:00:10"));
}

TEST_F(CaptureTrigger, Line_ComesBeforeTheCallback) {
    Trigger(Start(OnAlarm(0, 0, 10), 1));
    m_on_picture = [] { printf("reported\n"); };
    EXPECT_EQ(Console([this] { RunPass(); }), TriggerLine(1, 0, "08:00:00") + "reported\n");
}

TEST_F(CaptureTrigger, Report_HoldsTheTriggersStartAndTheCaptureTime) {
    Trigger(Start(OnAlarm(0, 0, 10), 16, 1));
    RawConsole([this] {
        PassAt(At(8, 0, 1));
        PassAt(At(8, 0, 2));
    });
    ASSERT_EQ(m_pictures.size(), 2u);
    std::array<unsigned int, 20> words;
    memcpy(words.data(), &Picture(1), sizeof(words));
    EXPECT_EQ(words,
              (std::array<unsigned int, 20>{16, 1, 0, 0, 1, 2024, 3, 5, 8, 0, 0, 0, 2024, 3, 5, 8, 0, 2, 0, 1002}));
    const std::string path = File("AC_CH15_080002.jpg");
    EXPECT_EQ(std::string(Picture(1).sPicPath, 260), path + std::string(260 - path.size(), '\0'));
}

TEST_F(CaptureTrigger, PictureBefore_HoldsWhatItHeldButForIndexAndTrigger) {
    const int hCapture = Start(OnAlarm(60, 60000, 10), 16, 1);
    PassAt(At(8, 0, 0));
    SetClock(At(8, 0, 30), 0);
    Trigger(hCapture);
    EXPECT_EQ(RawConsole([this] { RunPass(); }), "");
    ASSERT_EQ(m_pictures.size(), 1u);
    std::array<unsigned int, 20> words;
    memcpy(words.data(), &Picture(0), sizeof(words));
    EXPECT_EQ(words,
              (std::array<unsigned int, 20>{16, 1, 0, 0, 0, 2024, 3, 5, 8, 0, 30, 0, 2024, 3, 5, 8, 0, 0, 0, 1001}));
    EXPECT_EQ(Picture(0).sPicPath, File("AC_CH15_080000.jpg"));
}

TEST_F(CaptureTrigger, SecondTriggerWhileOneRuns_DoesNotMoveItsStartOrItsEnd) {
    const int hCapture = Start(OnAlarm(0, 1000, 3), 1);
    RawConsole([&] {
        for (int second = 0; second < 8; ++second) {
            SetClock(At(8, 0, second), 0);
            if (second < 3) {
                EXPECT_EQ(Trigger(hCapture), 0);
            }
            RunPass();
        }
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u, 80001u, 80002u, 80003u));
    for (const ReportedPicture& picture : m_pictures)
        EXPECT_EQ(Clock(picture.info.struTriggerTime), 80000u);
}

TEST_F(CaptureTrigger, AfterTheEnd_ANewOneCountsFromZeroAndReportsTheOldPicturesUnchanged) {
    const int hCapture = Start(OnAlarm(100, 1000, 1), 1);
    RawConsole([&] {
        Trigger(hCapture);
        for (int second = 0; second < 4; ++second)
            PassAt(At(8, 0, second));
        EXPECT_THAT(Indices(), ElementsAre(0u, 1u));
        m_pictures.clear();
        SetClock(At(8, 0, 4), 0);
        Trigger(hCapture);
        RunPass();
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u, 80001u, 80002u, 80003u, 80004u));
    EXPECT_THAT(Indices(), ElementsAre(0u, 1u, 2u, 3u, 4u));
    EXPECT_THAT(Sizes(), ElementsAre(1001u, 1002u, 1003u, 1004u, 1005u));
    for (const ReportedPicture& picture : m_pictures)
        EXPECT_EQ(Clock(picture.info.struTriggerTime), 80004u);
}

TEST_F(CaptureTrigger, TriggersBetweenTwoPictures_EachReportsThePictureBeforeAsItWasTaken) {
    const int hCapture = Start(OnAlarm(100, 60000, 2), 1);
    RawConsole([&] {
        for (int second = 0; second < 20; ++second) {
            SetClock(At(8, 0, second), 0);
            if (second % 5 == 0) {
                EXPECT_EQ(Trigger(hCapture), 0);
            }
            RunPass();
        }
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u, 80000u, 80000u, 80000u));
    EXPECT_THAT(Indices(), Each(0u));
    EXPECT_THAT(Sizes(), Each(1001u));
    EXPECT_THAT(Paths(), Each(File("AC_CH0_080000.jpg")));
    for (unsigned int number = 0; number < 4; ++number)
        EXPECT_EQ(Clock(Picture(number).struTriggerTime), 80000 + number * 5);
}

// The worker notices an end with its next pass: a trigger between the two is one that still runs.
TEST_F(CaptureTrigger, TriggerBeforeTheEndIsNoticed_IsNotANewOne) {
    const int hCapture = Start(OnAlarm(0, 1000, 1), 1);
    RawConsole([&] {
        Trigger(hCapture);
        RunPass();
        m_pictures.clear();
        SetClock(At(8, 0, 5), 0);
        Trigger(hCapture);
        RunPass();
    });
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureTrigger, PostTimeOfZero_ReportsTheSecondOfTheTriggerAlone) {
    const int hCapture = Start(OnAlarm(0, 1000, 0), 1);
    RawConsole([&] {
        Trigger(hCapture);
        for (int second = 0; second < 3; ++second)
            PassAt(At(8, 0, second));
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u));
}

TEST_F(CaptureTrigger, PostTimeBeyondAllTime_NeverEnds) {
    const int hCapture = Start(OnAlarm(0, 1000, 0xFFFFFFFF), 1);
    RawConsole([&] {
        Trigger(hCapture);
        PassAt(At(8, 0, 1));
        PassAt(At(8, 0, 1) + 365L * 24 * 60 * 60);
    });
    EXPECT_EQ(m_pictures.size(), 2u);
}

TEST_F(CaptureTrigger, PreTimeBeyondAllTime_ReportsEveryPicture) {
    const int hCapture = Start(OnAlarm(0xFFFFFFFF, 1000, 10), 1);
    RawConsole([&] {
        for (int second = 0; second < 3; ++second)
            PassAt(At(8, 0, second));
        Trigger(hCapture);
        PassAt(At(8, 0, 3));
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u, 80001u, 80002u, 80003u));
}

TEST_F(CaptureTrigger, PreTimeOfZero_ReportsPicturesOfTheTriggersSecond) {
    const int hCapture = Start(OnAlarm(0, 60000, 10), 1);
    RawConsole([&] {
        PassAt(At(8, 0, 0));
        Trigger(hCapture);
        PassAt(At(8, 0, 1));
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u));
}

// Nothing to report and the interval not over: the next pass looks at the pictures before again.
TEST_F(CaptureTrigger, NothingReportedYet_LooksAtThePicturesBeforeAgain) {
    const int hCapture = Start(OnAlarm(5, 10000, 60), 1);
    RawConsole([&] {
        PassAt(At(8, 0, 0));
        SetClock(At(8, 0, 7), 0);
        Trigger(hCapture);
        for (int second = 7; second < 12; ++second)
            PassAt(At(8, 0, second));
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80010u));
    EXPECT_THAT(Indices(), ElementsAre(0u));
}

TEST_F(CaptureTrigger, PicturesOfOtherTasks_AreTheirOwn) {
    const int first = Start(OnAlarm(10, 1000, 10), 1);
    const int second = Start(OnAlarm(10, 1000, 10), 2);
    RawConsole([&] {
        PassAt(At(8, 0, 0));
        PassAt(At(8, 0, 1));
        Trigger(second);
        PassAt(At(8, 0, 2));
    });
    EXPECT_NE(first, second);
    for (const ReportedPicture& picture : m_pictures) {
        EXPECT_EQ(picture.hCapture, second);
        EXPECT_EQ(picture.info.lChannel, 2);
    }
    EXPECT_EQ(m_pictures.size(), 3u);
}

TEST_F(CaptureTrigger, Stopped_EndsIt) {
    const int hCapture = Start(OnAlarm(10, 0, 100), 1);
    RawConsole([&] {
        Trigger(hCapture);
        RunPass();
        m_pictures.clear();
        Stop(hCapture);
        RunPass();
    });
    EXPECT_THAT(m_pictures, IsEmpty());
    EXPECT_EQ(Start(OnAlarm(10, 0, 100), 1), hCapture);
    EXPECT_EQ(RawConsole([this] { RunPass(); }), "");
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureTrigger, CallbackReplacedMeanwhile_GetsWhatFollows) {
    const int hCapture = Start(OnAlarm(0, 0, 100), 1);
    static int others;
    others = 0;
    RawConsole([&] {
        Trigger(hCapture);
        RunPass();
        vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(
            hCapture, [](int, _tagVexoCapturePictureInfo*, void* user) { ++*static_cast<int*>(user); }, &others);
        RunPass();
    });
    EXPECT_EQ(m_pictures.size(), 1u);
    EXPECT_EQ(others, 1);
}

// ---- pictures that were not taken ----------------------------------------------------------------------------------

TEST_F(CaptureAlarmLoss, EmptyPicture_IsDeletedKeptInTheListAndReported) {
    Start(OnAlarm(0, 0, 100), 1);
    RunPass();
    m_answer.empty = true;
    SetClock(At(8, 0, 1), 0);
    const std::string file = File("AC_CH0_080001.jpg");
    EXPECT_THAT(CallsOfPass(),
                ElementsAre("vexo_utility_linux_to_vexo_time(" + std::to_string(At(8, 0, 1)) + ")",
                            std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")",
                            "vexo_model_capture(1281, 0, " + file + ")", "vexo_utility_is_file_exist(" + file + ")",
                            "unlink(" + file + ")",
                            "vexo_utility_malloc(97, 0x80007, " + std::to_string(344 + 2 * sizeof(void*)) + ", 1)"));
    RawConsole([this] {
        Trigger(LOGIN);
        RunPass();
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80001u, 80001u));
    EXPECT_THAT(Sizes(), ElementsAre(0u, 0u));
    EXPECT_THAT(Paths(), Each(file));
}

TEST_F(CaptureAlarmLoss, RecorderRefuses_CountsAsAnEmptyPicture) {
    m_answer.result = -1;
    Trigger(Start(OnAlarm(0, 0, 100), 1));
    EXPECT_EQ(Console([this] { RunPass(); }), TriggerLine(1, 0, "08:00:00"));
    EXPECT_THAT(Sizes(), ElementsAre(0u));
    EXPECT_THAT(Paths(), ElementsAre(File("AC_CH0_080000.jpg")));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR));
}

// Only the size counts.
TEST_F(CaptureAlarmLoss, RecorderRefusesButTellsASize_IsAPicture) {
    ON_CALL(platform, vexo_model_capture(testing::_, testing::_, testing::_, testing::_))
        .WillByDefault([this](unsigned int, unsigned int, const char* path, unsigned int* size) {
            EXPECT_EQ(*size, 0u);
            m_files.insert(path);
            *size = 77;
            return -1;
        });
    Trigger(Start(OnAlarm(0, 0, 100), 1));
    RawConsole([this] { RunPass(); });
    EXPECT_THAT(Sizes(), ElementsAre(77u));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, File("AC_CH0_080000.jpg")));
}

TEST_F(CaptureAlarmLoss, NoMemoryForTheList_DeletesThePictureAndReportsItAllTheSame) {
    Trigger(Start(OnAlarm(0, 0, 100), 1));
    platform.FailMalloc(1);
    const std::string file = File("AC_CH0_080000.jpg");
    EXPECT_EQ(Console([this] { RunPass(); }),
              Error("HostMgrAddCaptureNode", "vexo_utility_malloc failed!!!\n") + TriggerLine(1, 0, "08:00:00"));
    EXPECT_THAT(With(file, platform.TakeCalls()),
                ElementsAre("vexo_model_capture(1281, 0, " + file + ")", "vexo_utility_is_file_exist(" + file + ")",
                            "unlink(" + file + ")", "callback(" + file + ")"));
}

TEST_F(CaptureAlarmLoss, NoDirectory_ReportsThePathAsBuiltAndKeepsNothing) {
    m_disks.clear();
    Trigger(Start(OnAlarm(0, 0, 100), 1));
    EXPECT_EQ(Console([this] {
                  RunPass();
                  RunPass();
              }),
              TriggerLine(1, 0, "08:00:00") + TriggerLine(1, 1, "08:00:00"));
    EXPECT_THAT(WithAny({"vexo_model_capture", "malloc"}, platform.TakeCalls()), IsEmpty());
    EXPECT_THAT(Sizes(), ElementsAre(0u, 0u));
    EXPECT_THAT(Paths(), Each("/AC_CH0_080000.jpg"));
}

TEST_F(CaptureAlarmLoss, DirectoryThatVanishes_IsMadeAnewWithTheNextPass) {
    Trigger(Start(OnAlarm(0, 0, 100), 1));
    RawConsole([this] {
        RunPass();
        m_files.clear();
        PassAt(At(8, 0, 1));
        PassAt(At(8, 0, 2));
    });
    EXPECT_THAT(Sizes(), ElementsAre(1001u, 0u, 1002u));
    EXPECT_THAT(Paths(), ElementsAre(File("AC_CH0_080000.jpg"), File("AC_CH0_080001.jpg"), File("AC_CH0_080002.jpg")));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, File("AC_CH0_080002.jpg")));
}

// The interval runs on from a pass without a picture, too.
TEST_F(CaptureAlarmLoss, NoDirectory_TheIntervalGoesOn) {
    m_disks.clear();
    Trigger(Start(OnAlarm(0, 3000, 100), 1));
    RawConsole([this] {
        for (int second = 0; second < 7; ++second)
            PassAt(At(8, 0, second));
    });
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u, 80003u, 80006u));
}
