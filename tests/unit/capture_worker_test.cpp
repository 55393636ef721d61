// The capture worker: its life, its passes over the slots, the lock that it cannot wait for, and the directory that it
// prepares.
#include "capture_fixture.h"

using testing::_;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using namespace vexo_soft;

class CaptureWorkerThread : public CaptureFixture {
protected:
    static std::string OnLock(const std::string& operation) {
        return operation + "(" + CAPTURE_LOCK + ", vexo_hostmgr_capture, HostMgrCapturePictureTask)";
    }
};

// ---- life ----------------------------------------------------------------------------------------------------------

TEST_F(CaptureWorkerThread, Start_RegistersAndPreparesTheDirectory) {
    Start(EverySecond());
    RunPass();
    const Lines calls = platform.TakeCalls();
    EXPECT_THAT(Lines(calls.begin(), calls.begin() + 6),
                ElementsAre("vexo_utility_enter_thread(self, HostMgrCapturePictureTask_Thread)",
                            "vexo_model_get_hard_disk_num()", "vexo_model_get_hard_disk_info(0)",
                            std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")",
                            std::string("vexo_utility_creat_dir(") + CAPTURE_DIR + ")", OnLock("rd_trylock")));
}

TEST_F(CaptureWorkerThread, Logout_EndsTheWorkerThenThePicturesThenTheObject) {
    Start(EverySecond(), 1);
    PassAt(At(8, 0, 1));
    PassAt(At(8, 0, 2));
    platform.TakeCalls();
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    const Lines calls = platform.TakeCalls();
    const auto retrieve = std::find(calls.begin(), calls.end(), "vexo_utility_retrieve_thread(7001)");
    EXPECT_THAT(Lines(retrieve, calls.end() - 1),
                ElementsAre("vexo_utility_retrieve_thread(7001)", "vexo_utility_exit_thread(self)",
                            "vexo_utility_is_file_exist(" + File("RT_CH0_080001.jpg") + ")",
                            "unlink(" + File("RT_CH0_080001.jpg") + ")",
                            "vexo_utility_free(vexo_hostmgr_capture, HostMgrDelAllCaptureNode, 0x80007)",
                            "vexo_utility_is_file_exist(" + File("RT_CH0_080002.jpg") + ")",
                            "unlink(" + File("RT_CH0_080002.jpg") + ")",
                            "vexo_utility_free(vexo_hostmgr_capture, HostMgrDelAllCaptureNode, 0x80007)",
                            "vexo_utility_free(vexo_hostmgr_capture, ~vexo_hostmgr_capture, 0x80007)",
                            "vexo_utility_delete_rw_lock(vexo_hostmgr_capture, vexo_hostmgr_capture, "
                            "~vexo_hostmgr_capture)"));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

TEST_F(CaptureWorkerThread, LogoutBeforeTheFirstPass_TheWorkerDoesNothing) {
    Start(EverySecond());
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    const Lines calls = platform.TakeCalls();
    EXPECT_THAT(With("_thread(self", calls).size(), 2u);
    EXPECT_THAT(WithAny({"rd_trylock", "hard_disk", "sleep_ms"}, calls), IsEmpty());
}

// ---- passes --------------------------------------------------------------------------------------------------------

TEST_F(CaptureWorkerThread, Pass_TakesTheLockAnewForEachOf576SlotsThenSleepsASecond) {
    Start(EverySecond());
    RunPass();
    Stop(LOGIN);
    platform.TakeCalls();
    RunPass();
    Lines expected;
    for (int slot = 0; slot < CAPTURE_TASKS; ++slot)
        expected = Joined({expected, {OnLock("rd_trylock"), OnLock("unlock")}});
    expected.push_back("vexo_utility_sleep_ms(1000)");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(expected));
}

TEST_F(CaptureWorkerThread, Tasks_RunInTheOrderOfTheirSlots) {
    for (const int channel : {5, 3, 4})
        Start(EverySecond(), channel);
    Start(OnAlarm(0, 0, 0), 1);
    PassAt(At(8, 0, 0));
    EXPECT_THAT(With("vexo_model_capture(", platform.TakeCalls()),
                ElementsAre("vexo_model_capture(1281, 4, " + File("RT_CH4_080000.jpg") + ")",
                            "vexo_model_capture(1281, 2, " + File("RT_CH2_080000.jpg") + ")",
                            "vexo_model_capture(1281, 3, " + File("RT_CH3_080000.jpg") + ")",
                            "vexo_model_capture(1281, 0, " + File("AC_CH0_080000.jpg") + ")"));
}

TEST_F(CaptureWorkerThread, LastSlot_IsServed) {
    for (int task = 0; task < CAPTURE_TASKS; ++task)
        Start(Daily(20, 0, 0));
    Stop(575 << 16 | LOGIN);
    Start(EverySecond(), 9);
    PassAt(At(8, 0, 0));
    EXPECT_THAT(Paths(), ElementsAre(File("RT_CH8_080000.jpg")));
}

TEST_F(CaptureWorkerThread, Callback_RunsOnTheWorkerUnderTheLockForReading) {
    Start(EverySecond());
    Lines held;
    m_on_picture = [&] { held = platform.HeldLocks(); };
    RunPass();
    EXPECT_THAT(held, ElementsAre(CAPTURE_LOCK));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

// ---- a busy lock ---------------------------------------------------------------------------------------------------

TEST_F(CaptureWorkerThread, BusyLock_IsTriedAgainAfterAShortSleep) {
    Start(EverySecond());
    EXPECT_CALL(platform.RwLock(CAPTURE_LOCK), rd_trylock(_, _))
        .WillOnce(testing::Return(1))
        .WillOnce(testing::Return(-1))
        .WillRepeatedly(testing::DoDefault());
    int waits = 0;
    m_on_short_sleep = [&] {
        ++waits;
        EXPECT_THAT(m_pictures, IsEmpty());
    };
    RunPass();
    EXPECT_EQ(waits, 2);
    EXPECT_EQ(m_pictures.size(), 1u);
    EXPECT_THAT(With("rd_trylock", platform.TakeCalls()).size(), 576u);
}

TEST_F(CaptureWorkerThread, LockHeldForChange_IsNotTakenAndNothingIsCaptured) {
    Start(EverySecond());
    MockRwLock& lock = platform.RwLock(CAPTURE_LOCK);
    lock.wr_lock("test", "test");
    m_on_short_sleep = [this] { m_worker.Rest(); };
    RunPass();
    EXPECT_THAT(m_pictures, IsEmpty());
    lock.unlock("test", "test");
    RunPass();
    EXPECT_EQ(m_pictures.size(), 1u);
}

TEST_F(CaptureWorkerThread, LogoutWhileTheLockIsBusy_EndsTheWorker) {
    Start(EverySecond());
    ON_CALL(platform.RwLock(CAPTURE_LOCK), rd_trylock(_, _)).WillByDefault(testing::Return(1));
    m_on_short_sleep = [this] { m_worker.Rest(); };
    RunPass();
    platform.TakeCalls();
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    EXPECT_THAT(With("_thread(", platform.TakeCalls()),
                ElementsAre("vexo_utility_retrieve_thread(7001)", "vexo_utility_exit_thread(self)"));
    EXPECT_THAT(m_pictures, IsEmpty());
}

// ---- which directory -----------------------------------------------------------------------------------------------

using Partitions = std::vector<std::pair<std::string, unsigned int>>;

/** Disks, and the mount path of the one that is chosen; empty when there is none. */
struct DirectoryCase {
    const char* name;
    std::vector<vexo_hard_disk_info> disks;
    std::string mount;
};
void PrintTo(const DirectoryCase& row, std::ostream* out) {
    *out << row.name;
}

class CaptureDirectory : public CaptureWorkerThread, public testing::WithParamInterface<DirectoryCase> {};

static vexo_hard_disk_info DiskWithPartitionNum(unsigned int num, const Partitions& partitions) {
    vexo_hard_disk_info disk = MakeDisk(1, 3, partitions);
    disk.partition_num = num;
    return disk;
}

static Partitions SixteenSmall() {
    return Partitions(16, {"/small", 1023});
}

static std::string Mount(size_t length) {
    return "/" + std::string(length - 1, 'm');
}
constexpr size_t SUFFIX = sizeof("/host_pic/agentsh_capture") - 1;
constexpr size_t LONGEST = 127 - SUFFIX;

static std::vector<DirectoryCase> DirectoryCases() {
    const Partitions a = {{"/a", 2000}};
    const Partitions b = {{"/b", 2000}};
    return {
        {"Local", {MakeDisk(1, 3, a)}, "/a"},
        {"External", {MakeDisk(2, 3, a)}, "/a"},
        {"Array", {MakeDisk(4, 3, a)}, "/a"},
        {"NoKind", {MakeDisk(0, 3, a)}, ""},
        {"Network", {MakeDisk(3, 3, a)}, ""},
        {"UnknownKind", {MakeDisk(5, 3, a)}, ""},
        {"State0", {MakeDisk(1, 0, a)}, ""},
        {"State2", {MakeDisk(1, 2, a)}, ""},
        {"State4", {MakeDisk(1, 4, a)}, ""},
        {"NoDisk", {}, ""},
        {"NoPartition", {MakeDisk(1, 3, {})}, ""},
        {"LargeEnough", {MakeDisk(1, 3, {{"/a", 1024}})}, "/a"},
        {"TooSmall", {MakeDisk(1, 3, {{"/a", 1023}})}, ""},
        {"FirstThatIsLargeEnough", {MakeDisk(1, 3, {{"/a", 1023}, {"/b", 1024}, {"/c", 5000}})}, "/b"},
        {"LastDiskWins", {MakeDisk(1, 3, a), MakeDisk(4, 3, b)}, "/b"},
        {"LastDiskThatQualifiesWins",
         {MakeDisk(1, 3, a), MakeDisk(1, 3, b), MakeDisk(3, 3, {{"/c", 9000}}), MakeDisk(1, 3, {{"/d", 10}})},
         "/b"},
        {"PartitionsThatDoNotHold", {DiskWithPartitionNum(1, {{"/a", 10}, {"/b", 2000}})}, ""},
        {"MorePartitionsThanTheArrayHas", {DiskWithPartitionNum(0xFFFFFFFF, SixteenSmall())}, ""},
        {"PathThatJustFits", {MakeDisk(1, 3, {{Mount(LONGEST), 2000}})}, Mount(LONGEST)},
        {"PathThatDoesNotFit", {MakeDisk(1, 3, {{Mount(LONGEST + 1), 2000}})}, ""},
        {"PathThatDoesNotFit_LeavesTheDiskBefore",
         {MakeDisk(1, 3, a), MakeDisk(1, 3, {{Mount(LONGEST + 1), 2000}})},
         "/a"},
        {"PathThatDoesNotFit_HidesLaterPartitions", {MakeDisk(1, 3, {{Mount(LONGEST + 1), 2000}, {"/b", 2000}})}, ""},
        {"MountPathWithoutTerminator", {MakeDisk(1, 3, {{Mount(128), 2000}})}, ""},
    };
}
INSTANTIATE_TEST_SUITE_P(Disks, CaptureDirectory, testing::ValuesIn(DirectoryCases()), ByName());

TEST_P(CaptureDirectory, IsMadeAndUsed) {
    m_disks = GetParam().disks;
    Start(EverySecond(), 1);
    EXPECT_EQ(RawConsole([this] { PassAt(At(8, 0, 0)); }), "");
    if (GetParam().mount.empty()) {
        EXPECT_THAT(Files(), IsEmpty());
        EXPECT_THAT(m_pictures, IsEmpty());
        return;
    }
    const std::string directory = GetParam().mount + "/host_pic/agentsh_capture";
    EXPECT_THAT(Files(), ElementsAre(directory, directory + "/RT_CH0_080000.jpg"));
    EXPECT_THAT(Paths(), ElementsAre(directory + "/RT_CH0_080000.jpg"));
}

// ---- preparing it --------------------------------------------------------------------------------------------------

TEST_F(CaptureWorkerThread, DiskThatCannotBeRead_IsPassedOver) {
    m_disks = {MakeDisk(1, 3, {{"/a", 2000}}), MakeDisk(1, 3, {{"/b", 2000}})};
    ON_CALL(platform, vexo_model_get_hard_disk_info)
        .WillByDefault([this](unsigned int index, vexo_hard_disk_info* info) {
            *info = m_disks.at(index);
            return index == 1 ? -1 : 0;
        });
    Start(EverySecond(), 1);
    PassAt(At(8, 0, 0));
    EXPECT_THAT(Paths(), ElementsAre("/a/host_pic/agentsh_capture/RT_CH0_080000.jpg"));
}

TEST_F(CaptureWorkerThread, DisksThatCannotBeCounted_AreNone) {
    ON_CALL(platform, vexo_model_get_hard_disk_num).WillByDefault([](unsigned int* num) {
        *num = 1;
        return -1;
    });
    Start(EverySecond());
    RunPass();
    EXPECT_THAT(With("hard_disk_info", platform.TakeCalls()), IsEmpty());
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureWorkerThread, DirectoryOfAnEarlierRun_IsRemovedWithItsPicturesAndMadeAnew) {
    m_files = {CAPTURE_DIR, File("RT_CH7_120000.jpg"), "/mnt/disk1/host_pic/agentsh_capture.txt"};
    Start(Daily(20, 0, 0));
    RunPass();
    EXPECT_THAT(WithAny({"file_exist", "_dir("}, platform.TakeCalls()),
                ElementsAre(std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")",
                            std::string("vexo_utility_delete_dir(") + CAPTURE_DIR + ")",
                            std::string("vexo_utility_creat_dir(") + CAPTURE_DIR + ")",
                            std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")"));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, "/mnt/disk1/host_pic/agentsh_capture.txt"));
}

TEST_F(CaptureWorkerThread, Directory_IsPreparedOnceAndThenOnlyLookedAt) {
    Start(EverySecond(), 1);
    RunPass();
    SetClock(At(8, 0, 1), 0);
    EXPECT_THAT(WithAny({"hard_disk", "file_exist", "_dir("}, CallsOfPass()),
                ElementsAre(std::string("vexo_utility_is_file_exist(") + CAPTURE_DIR + ")"));
}

TEST_F(CaptureWorkerThread, NoDirectory_IsSoughtAgainWithEachPassUntilThereIsOne) {
    const std::vector<vexo_hard_disk_info> disks = m_disks;
    m_disks.clear();
    Start(EverySecond());
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_THAT(WithAny({"hard_disk", "_dir(", "vexo_model_capture"}, CallsOfPass()),
                    ElementsAre("vexo_model_get_hard_disk_num()"));
    }
    m_disks = disks;
    RunPass();
    EXPECT_EQ(m_pictures.size(), 1u);
}

// An empty path never is a directory, so no picture lands in the root, whatever the platform says.
TEST_F(CaptureWorkerThread, NoDirectory_TakesNoPictureEvenWhenEveryFileExists) {
    m_disks.clear();
    ON_CALL(platform, vexo_utility_is_file_exist).WillByDefault(testing::Return(1));
    Start(EverySecond());
    Start(OnAlarm(0, 0, 0));
    RunPass();
    EXPECT_THAT(With("vexo_model_capture", platform.TakeCalls()), IsEmpty());
}

TEST_F(CaptureWorkerThread, DirectoryThatVanishes_CostsOnePassAndIsMadeAnew) {
    Start(EverySecond(), 1);
    PassAt(At(8, 0, 0));
    m_files.clear();
    SetClock(At(8, 0, 1), 0);
    EXPECT_THAT(WithAny({"hard_disk", "_dir(", "vexo_model_capture"}, CallsOfPass()), IsEmpty());
    SetClock(At(8, 0, 2), 0);
    EXPECT_THAT(WithAny({"_dir(", "vexo_model_capture"}, CallsOfPass()),
                ElementsAre(std::string("vexo_utility_creat_dir(") + CAPTURE_DIR + ")",
                            "vexo_model_capture(1281, 0, " + File("RT_CH0_080002.jpg") + ")"));
    EXPECT_THAT(CaptureTimes(), ElementsAre(80000u, 80002u));
}

TEST_F(CaptureWorkerThread, DirectoryThatVanishesForADailyTask_IsNoticedOutsideItsTime) {
    Start(Daily(20, 0, 0));
    PassAt(At(8, 0, 0));
    m_files.clear();
    PassAt(At(8, 0, 1));
    PassAt(At(8, 0, 2));
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR));
}

TEST_F(CaptureWorkerThread, DirectoryThatCannotBeMade_IsTriedAgainWithEachPass) {
    ON_CALL(platform, vexo_utility_creat_dir).WillByDefault(testing::Return(-1));
    Start(EverySecond());
    for (int pass = 0; pass < 4; ++pass)
        RunPass();
    EXPECT_EQ(With("creat_dir", platform.TakeCalls()).size(), 4u);
    EXPECT_THAT(m_pictures, IsEmpty());
}

TEST_F(CaptureWorkerThread, DiskThatMoved_TakesThePicturesOnTheNewOneAndStillDeletesTheOldOnes) {
    const int hCapture = Start(EverySecond(), 1);
    PassAt(At(8, 0, 0));
    m_files.erase(CAPTURE_DIR);
    m_disks = {MakeDisk(1, 3, {{"/mnt/disk2", 2000}})};
    PassAt(At(8, 0, 1));
    PassAt(At(8, 0, 2));
    EXPECT_EQ(Paths().back(), "/mnt/disk2/host_pic/agentsh_capture/RT_CH0_080002.jpg");
    Stop(hCapture);
    EXPECT_THAT(Files(), ElementsAre("/mnt/disk2/host_pic/agentsh_capture"));
}
