// Capture tasks: starting and stopping them, the alarm trigger's call, which slot a handle names, and the worker's
// creation. What a trigger makes of an alarm task stands in capture_alarm_test.cpp.
#include "capture_fixture.h"
#include "vexo_hostmgr_capture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using namespace vexo_soft;

class CaptureStart : public CaptureFixture {};
class CaptureHandle : public CaptureFixture {};
class CaptureStop : public CaptureFixture {};

static const Lines LOOKUP = {OnTable("lock", "HostMgrGetUserInfo"), OnTable("unlock", "HostMgrGetUserInfo")};
static constexpr char CREATION[] =
    "vexo_utility_creat_thread({1, 0, entry, argument, 0, 0x80000}, HostMgrCapturePictureTask_Thread)";

/** A whole call of an operation: the lookup, then what it does under its lock. */
static Lines UnderLock(const std::string& function, const Lines& calls = {}) {
    const std::string tags = std::string("(") + CAPTURE_LOCK + ", vexo_hostmgr_capture, " + function + ")";
    return Joined({LOOKUP, {"wr_lock" + tags}, calls, {"unlock" + tags}});
}

// ---- start ---------------------------------------------------------------------------------------------------------

TEST_F(CaptureStart, FirstTask_HandleIsTheLoginNumber) {
    _tagVexoCapturePictureCfg cfg = EverySecond();
    EXPECT_EQ(
        RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, &cfg, OnPicture, this), LOGIN); }),
        "");
}

TEST_F(CaptureStart, LaterTasks_HandleCarriesTheIndexInItsHighHalf) {
    for (int task = 0; task < CAPTURE_TASKS; ++task)
        EXPECT_EQ(Start(EverySecond()), task << 16 | LOGIN);
}

TEST_F(CaptureStart, FirstTask_IsStoredUnderTheLockBeforeTheWorkerIsMade) {
    _tagVexoCapturePictureCfg cfg = EverySecond();
    vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, &cfg, OnPicture, this);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(Joined({UnderLock("HostMgr_Dev_StartCapturePicture"), {CREATION}})));
}

TEST_F(CaptureStart, SecondTask_MakesNoSecondWorker) {
    Start(EverySecond());
    _tagVexoCapturePictureCfg cfg = EverySecond();
    vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, &cfg, OnPicture, this);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLock("HostMgr_Dev_StartCapturePicture")));
}

TEST_F(CaptureStart, AfterTheLastTaskWasStopped_TheWorkerIsStillThere) {
    EXPECT_EQ(Stop(Start(EverySecond())), 0);
    platform.TakeCalls();
    _tagVexoCapturePictureCfg cfg = EverySecond();
    vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, &cfg, OnPicture, this);
    EXPECT_THAT(With("creat_thread", platform.TakeCalls()), IsEmpty());
}

TEST_F(CaptureStart, NoConfiguration_FailsSilentlyWithoutTheLock) {
    EXPECT_EQ(RawConsole([this] {
                  EXPECT_EQ(vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, nullptr, OnPicture, this), -1);
              }),
              "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(LOOKUP));
}

TEST_F(CaptureStart, Task577_FailsAndGivesTheLockBack) {
    for (int task = 0; task < CAPTURE_TASKS; ++task)
        Start(EverySecond());
    _tagVexoCapturePictureCfg cfg = EverySecond();
    EXPECT_EQ(Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, &cfg, OnPicture, this), -1); }),
              Error("HostMgr_Dev_StartCapturePicture", "Not find !!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLock("HostMgr_Dev_StartCapturePicture")));
}

TEST_F(CaptureStart, AfterAStopInAFullTable_TakesTheFreedSlot) {
    for (int task = 0; task < CAPTURE_TASKS; ++task)
        Start(EverySecond());
    EXPECT_EQ(Stop(333 << 16 | LOGIN), 0);
    EXPECT_EQ(Start(EverySecond()), 333 << 16 | LOGIN);
}

TEST_F(CaptureStart, AnotherLogin_HasTasksAndAWorkerOfItsOwn) {
    Start(EverySecond());
    LogInAll({0x502});
    ON_CALL(platform, vexo_utility_creat_thread).WillByDefault(testing::Return(0));
    _tagVexoCapturePictureCfg cfg = EverySecond();
    EXPECT_EQ(vexo_HostMgr_Dev_StartCapturePicture(0x502, 1, 1, &cfg, OnPicture, this), 0x502);
    EXPECT_THAT(With("creat_thread", platform.TakeCalls()), ElementsAre(CREATION));
}

// ---- the worker's creation -----------------------------------------------------------------------------------------

TEST_F(CaptureStart, WorkerThatCannotBeMade_TheTaskStandsAndTheNextStartTriesAgain) {
    m_creation_fails = 1;
    EXPECT_EQ(Start(EverySecond()), LOGIN);
    EXPECT_FALSE(m_worker.Created());
    EXPECT_EQ(Start(EverySecond()), 0x10000 | LOGIN);
    ASSERT_TRUE(m_worker.Created());
    RunPass();
    EXPECT_EQ(m_pictures.size(), 2u);
}

TEST_F(CaptureStart, WorkerThatCannotBeMade_LogoutWaitsForNone) {
    m_creation_fails = 1;
    Start(EverySecond());
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    EXPECT_THAT(With("retrieve_thread", platform.TakeCalls()), IsEmpty());
}

TEST_F(CaptureStart, StartWhileTheWorkerIsBeingMade_MakesNoSecond) {
    int second = 0;
    ON_CALL(platform, vexo_utility_creat_thread)
        .WillByDefault([&](const vexo_thread_creat_ctl* ctl, const char*, unsigned long* id) {
            second = Start(EverySecond());
            *id = 7001;
            m_worker.Create(*ctl);
            return 0;
        });
    Start(EverySecond());
    EXPECT_EQ(second, 0x10000 | LOGIN);
    EXPECT_THAT(With("creat_thread", platform.TakeCalls()), IsEmpty());
    RunPass();
    EXPECT_EQ(m_pictures.size(), 2u);
}

// ---- which task a handle names -------------------------------------------------------------------------------------

TEST_F(CaptureHandle, SlotBeyondTheTable_IsNoTask) {
    Start(EverySecond());
    for (const unsigned int slot : {576u, 577u, 0x7FFFu, 0x8000u, 0xFFFFu}) {
        const int hCapture = static_cast<int>(slot << 16 | LOGIN);
        EXPECT_EQ(Stop(hCapture), -1) << slot;
        EXPECT_EQ(Trigger(hCapture), -1) << slot;
    }
}

TEST_F(CaptureHandle, FreeSlot_IsNoTask) {
    Start(EverySecond());
    for (const int slot : {1, 2, 575}) {
        EXPECT_EQ(Stop(slot << 16 | LOGIN), -1) << slot;
        EXPECT_EQ(Trigger(slot << 16 | LOGIN), -1) << slot;
    }
}

TEST_F(CaptureHandle, StoppedTask_IsNoTask) {
    const int hCapture = Start(EverySecond());
    EXPECT_EQ(Stop(hCapture), 0);
    EXPECT_EQ(Stop(hCapture), -1);
    EXPECT_EQ(Trigger(hCapture), -1);
}

TEST_F(CaptureHandle, LastSlot_IsFound) {
    for (int task = 0; task < CAPTURE_TASKS; ++task)
        Start(EverySecond());
    EXPECT_EQ(Trigger(575 << 16 | LOGIN), 0);
    EXPECT_EQ(Stop(575 << 16 | LOGIN), 0);
}

TEST_F(CaptureHandle, SlotWithTheTaskOfAnotherHandle_IsNoTask) {
    vexo_hostmgr_capture capture;
    _tagVexoCapturePictureCfg cfg = {};
    ON_CALL(platform, vexo_utility_creat_thread).WillByDefault(testing::Return(-1));
    EXPECT_EQ(capture.HostMgr_Dev_StartCapturePicture(5, 1, 1, &cfg, OnPicture, this), 5);
    EXPECT_EQ(capture.HostMgr_Dev_StartCapturePicture(6, 1, 1, &cfg, OnPicture, this), 0x10006);
    for (const int hCapture : {6, 0x10005, 0x10000, 7}) {
        EXPECT_EQ(capture.HostMgr_Dev_StopCapturePicture(hCapture), -1) << hCapture;
        EXPECT_EQ(capture.HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnPicture, this), -1) << hCapture;
    }
    EXPECT_EQ(capture.HostMgr_Dev_StopCapturePicture(5), 0);
    EXPECT_EQ(capture.HostMgr_Dev_StopCapturePicture(0x10006), 0);
}

TEST_F(CaptureHandle, UnknownTask_IsLookedUpUnderTheLock) {
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Trigger(5 << 16 | LOGIN), -1); }), "");
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_HostMgr_Dev_StopCapturePicture(5 << 16 | LOGIN), -1); }),
              "hCapture:0x50501, hLogin 0x501\n");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(Joined({UnderLock("HostMgr_Dev_SetCapturePictureAlarmTiger"),
                                                               UnderLock("HostMgr_Dev_StopCapturePicture")})));
}

// ---- stop ----------------------------------------------------------------------------------------------------------

TEST_F(CaptureStop, Task_TellsItsHandleAndIsGone) {
    const int hCapture = Start(EverySecond());
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_StopCapturePicture(hCapture), 0); }),
              "hCapture:0x501, hLogin 0x501\n");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLock("HostMgr_Dev_StopCapturePicture")));
    RunPass();
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureStop, TaskWithPictures_DeletesThemUnderTheLock) {
    const int hCapture = Start(EverySecond(), 4);
    PassAt(At(8, 0, 1));
    PassAt(At(8, 0, 2));
    platform.TakeCalls();
    EXPECT_EQ(Stop(hCapture), 0);
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAreArray(UnderLock("HostMgr_Dev_StopCapturePicture",
                                   {"vexo_utility_is_file_exist(" + File("RT_CH3_080001.jpg") + ")",
                                    "unlink(" + File("RT_CH3_080001.jpg") + ")",
                                    "vexo_utility_free(vexo_hostmgr_capture, HostMgrDelCaptureNode, 0x80007)",
                                    "vexo_utility_is_file_exist(" + File("RT_CH3_080002.jpg") + ")",
                                    "unlink(" + File("RT_CH3_080002.jpg") + ")",
                                    "vexo_utility_free(vexo_hostmgr_capture, HostMgrDelCaptureNode, 0x80007)"})));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR));
}

// ---- a slot's memory -----------------------------------------------------------------------------------------------

/** The object on a task table that the test can see. */
class CaptureSlotMemory : public HostMgrTest {
protected:
    static constexpr uint32_t NONE = 0xFFFFFFFF;

    void SetUp() override {
        ON_CALL(platform, vexo_utility_malloc).WillByDefault(testing::Return(m_tasks.data()));
        ON_CALL(platform, vexo_utility_free).WillByDefault(testing::Return());
        ON_CALL(platform, vexo_utility_creat_thread).WillByDefault(testing::Return(-1));
        m_capture = std::make_unique<vexo_hostmgr_capture>();
    }

    static void OnPicture(int, _tagVexoCapturePictureInfo*, void*) {}
    static void OnOther(int, _tagVexoCapturePictureInfo*, void*) {}

    static constexpr uint32_t CFG[8] = {0, 20, 3000, 40, 50, 60, 70, 80};
    int StartAlarmTask() {
        _tagVexoCapturePictureCfg cfg;
        memcpy(&cfg, CFG, sizeof(cfg));
        const int hCapture = m_capture->HostMgr_Dev_StartCapturePicture(0x12345, 7, 9, &cfg, OnPicture, &m_user);
        memset(&cfg, 0xEE, sizeof(cfg));
        return hCapture;
    }

    std::vector<HostMgrCaptureTask> m_tasks{576};
    std::unique_ptr<vexo_hostmgr_capture> m_capture;
    int m_user = 0;
    int m_other_user = 0;
};

TEST_F(CaptureSlotMemory, Start_FillsItsSlotAlone) {
    EXPECT_EQ(StartAlarmTask(), 0x2345);
    EXPECT_EQ(StartAlarmTask(), 0x12345);
    const HostMgrCaptureTask& task = m_tasks[1];
    EXPECT_EQ(task.hCapture, 0x12345u);
    EXPECT_EQ(task.hLogin, 0x12345);
    EXPECT_EQ(task.lChannel, 7);
    EXPECT_EQ(task.lStreamIdx, 9);
    EXPECT_EQ(memcmp(&task.struCfg, CFG, sizeof(CFG)), 0);
    EXPECT_EQ(task.fnCallback, OnPicture);
    EXPECT_EQ(task.pUser, &m_user);
    EXPECT_EQ(task.dwTriggerTime, NONE);
    EXPECT_EQ(task.dwLastCapture, NONE);
    EXPECT_EQ(task.dwPicCount, 0u);
    EXPECT_EQ(m_tasks[2].hCapture, 0u);
    EXPECT_EQ(m_tasks[2].dwTriggerTime, 0u);
}

TEST_F(CaptureSlotMemory, Stop_ClearsTheSlotButForItsTwoTimes) {
    const int hCapture = StartAlarmTask();
    m_tasks[0].dwPicCount = 5;
    EXPECT_EQ(m_capture->HostMgr_Dev_StopCapturePicture(hCapture), 0);
    HostMgrCaptureTask cleared = {};
    cleared.dwTriggerTime = NONE;
    cleared.dwLastCapture = NONE;
    EXPECT_EQ(memcmp(static_cast<const void*>(&m_tasks[0]), &cleared, sizeof(cleared)), 0);
}

TEST_F(CaptureSlotMemory, Trigger_ReplacesTheCallbackAndKeepsTheStartOfOneThatRuns) {
    SetClock(1709596800, 999999);
    const int hCapture = StartAlarmTask();
    EXPECT_EQ(m_capture->HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnOther, &m_other_user), 0);
    EXPECT_EQ(m_tasks[0].fnCallback, OnOther);
    EXPECT_EQ(m_tasks[0].pUser, &m_other_user);
    EXPECT_EQ(m_tasks[0].dwTriggerTime, 1709596800u);
    AdvanceClock(5000);
    EXPECT_EQ(m_capture->HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, nullptr, nullptr), 0);
    EXPECT_EQ(m_tasks[0].fnCallback, nullptr);
    EXPECT_EQ(m_tasks[0].pUser, nullptr);
    EXPECT_EQ(m_tasks[0].dwTriggerTime, 1709596800u);
}

TEST_F(CaptureSlotMemory, TriggerOfATimeOfZero_Starts) {
    SetClock(1709596800, 0);
    const int hCapture = StartAlarmTask();
    m_tasks[0].dwTriggerTime = 0;
    EXPECT_EQ(m_capture->HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnPicture, nullptr), 0);
    EXPECT_EQ(m_tasks[0].dwTriggerTime, 1709596800u);
}

TEST_F(CaptureSlotMemory, TriggerOfOtherKinds_ADailyTaskKeepsItsTimeAndOneOfEverySecondLosesIt) {
    const int hCapture = StartAlarmTask();
    for (const uint32_t type : {1u, 3u}) {
        m_tasks[0].struCfg.dwType = type;
        m_tasks[0].dwTriggerTime = 77;
        EXPECT_EQ(m_capture->HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnOther, nullptr), 0);
        EXPECT_EQ(m_tasks[0].dwTriggerTime, 77u);
        EXPECT_EQ(m_tasks[0].fnCallback, OnOther);
    }
    m_tasks[0].struCfg.dwType = 2;
    EXPECT_EQ(m_capture->HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnPicture, nullptr), 0);
    EXPECT_EQ(m_tasks[0].dwTriggerTime, NONE);
    EXPECT_EQ(m_tasks[0].fnCallback, OnPicture);
}
