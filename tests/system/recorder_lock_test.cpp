// The simulated recorder's locks by plain calls: who gets them, what they tell, what the guest watch says of misuse and
// of the order that they are taken in.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <string>
#include <thread>

#include "recorder_test_support.h"
#include "vexo_utility.h"

using recorder_test::Contains;
using recorder_test::CountOutstanding;
using recorder_test::NewComplaints;

namespace {

constexpr char FILE_NAME[] = "recorder_test";

/** Runs something on a thread of its own and waits for it. */
template <typename Action>
void Elsewhere(Action action) {
    std::thread(action).join();
}

// Misuse on purpose, which the compiler's lock analysis would refuse.
int Lock(vexo_lock* lock) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return lock->lock(FILE_NAME, "Lock");
}
int TryLock(vexo_lock* lock) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return lock->rd_trylock(FILE_NAME, "TryLock");
}
int Unlock(vexo_lock* lock) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return lock->unlock(FILE_NAME, "Unlock");
}
int WriteLock(vexo_rw_lock* lock) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return lock->wr_lock(FILE_NAME, "WriteLock");
}
int TryReadLock(vexo_rw_lock* lock) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return lock->rd_trylock(FILE_NAME, "TryReadLock");
}
int Unlock(vexo_rw_lock* lock) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return lock->unlock(FILE_NAME, "Unlock");
}
void Delete(vexo_lock* lock) {
    vexo_utility_delete_lock(lock, FILE_NAME, "Delete");
}
void Delete(vexo_rw_lock* lock) {
    vexo_utility_delete_rw_lock(lock, FILE_NAME, "Delete");
}
vexo_lock* NewLock(const char* name) {
    return vexo_utility_new_lock(VEXO_USER_HOSTMGR, name);
}

// ---- locks ---------------------------------------------------------------------------------------------------------

TEST(Locks, Lock_TwoThreadsCounting_NeverMeet) {
    vexo_lock* lock = NewLock("counting");
    int sum = 0;
    const auto count = [&] {
        for (int i = 0; i < 2000; ++i) {
            Lock(lock);
            ++sum;
            Unlock(lock);
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(sum, 4000);
    Delete(lock);
}

TEST(Locks, PlainTryLock_LockIsHeld_IsBusyForEverybody) {
    vexo_lock* lock = NewLock("plain");
    ASSERT_EQ(TryLock(lock), 0);
    EXPECT_NE(TryLock(lock), 0);
    Elsewhere([&] { EXPECT_NE(TryLock(lock), 0); });
    EXPECT_EQ(Unlock(lock), 0);
    EXPECT_EQ(TryLock(lock), 0);
    EXPECT_EQ(Unlock(lock), 0);
    Delete(lock);
}

TEST(Locks, ReadTryLock_OtherReader_IsTakenToo) {
    vexo_rw_lock* lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "shared");
    ASSERT_EQ(TryReadLock(lock), 0);
    Elsewhere([&] {
        EXPECT_EQ(TryReadLock(lock), 0);
        EXPECT_EQ(Unlock(lock), 0);
    });
    EXPECT_EQ(Unlock(lock), 0);
    Delete(lock);
}

TEST(Locks, ReadTryLock_HeldForChange_IsBusy) {
    vexo_rw_lock* lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "changing");
    ASSERT_EQ(WriteLock(lock), 0);
    Elsewhere([&] { EXPECT_NE(TryReadLock(lock), 0); });
    EXPECT_EQ(Unlock(lock), 0);
    Delete(lock);
}

TEST(Locks, WriteLock_ReaderInside_WaitsUntilTheReaderIsOut) {
    vexo_rw_lock* lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "waiting");
    std::atomic<bool> reader_is_out{false};
    ASSERT_EQ(TryReadLock(lock), 0);
    std::thread writer([&] {
        WriteLock(lock);
        EXPECT_TRUE(reader_is_out);
        Unlock(lock);
    });
    vexo_utility_sleep_ms(20);
    reader_is_out = true;
    Unlock(lock);
    writer.join();
    Delete(lock);
}

TEST(Locks, GetInfo_HeldLock_NamesThreadFileAndFunction) {
    vexo_lock* lock = NewLock("told");
    char info[256];
    ASSERT_EQ(lock->get_info(info, sizeof info), 0);
    EXPECT_STREQ(info, "free");
    Elsewhere([&] {
        pthread_setname_np(pthread_self(), "holder");
        Lock(lock);
        lock->get_info(info, sizeof info);
        Unlock(lock);
    });
    EXPECT_TRUE(Contains(info, "held by thread ")) << info;
    EXPECT_TRUE(Contains(info, "(holder), recorder_test, Lock, since ")) << info;
    Delete(lock);
}

TEST(Locks, GetInfo_SmallBuffer_IsFilledAndNotOverrun) {
    vexo_lock* lock = NewLock("short");
    char info[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(lock->get_info(info, 3), 0);
    EXPECT_EQ(std::string(info, 4), "fre#");
    Delete(lock);
}

// A logout may give back the playback lock that a bad time selector left taken on another thread.
TEST(Locks, Unlock_PlainLockByStranger_ComplainsAndFreesIt) {
    const NewComplaints complaints;
    vexo_lock* lock = NewLock("mine");
    Lock(lock);
    Elsewhere([&] { EXPECT_EQ(Unlock(lock), 0); });
    EXPECT_TRUE(Contains(complaints.Text(), "lock mine, user 97: unlocked by thread")) << complaints.Text();
    EXPECT_TRUE(Contains(complaints.Text(), "which does not hold it; held by thread")) << complaints.Text();
    EXPECT_EQ(TryLock(lock), 0);
    Unlock(lock);
    Delete(lock);
}

TEST(Locks, Unlock_PlainLockByStranger_LetsAWaiterIn) {
    vexo_lock* lock = NewLock("left behind");
    Elsewhere([&] { Lock(lock); });
    std::thread waiter([&] {
        Lock(lock);
        Unlock(lock);
    });
    vexo_utility_sleep_ms(20);
    EXPECT_EQ(Unlock(lock), 0);
    waiter.join();
    Delete(lock);
}

TEST(Locks, Unlock_ReadWriteLockByStranger_IsRefusedAndTheHolderKeepsIt) {
    const NewComplaints complaints;
    vexo_rw_lock* lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "mine");
    ASSERT_EQ(WriteLock(lock), 0);
    Elsewhere([&] { EXPECT_NE(Unlock(lock), 0); });
    EXPECT_NE(TryReadLock(lock), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "which does not hold it; held by thread")) << complaints.Text();
    Unlock(lock);
    Delete(lock);
}

TEST(Locks, Unlock_FreeLock_Complains) {
    const NewComplaints complaints;
    vexo_lock* lock = NewLock("free one");
    EXPECT_NE(Unlock(lock), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "which does not hold it; free")) << complaints.Text();
    Delete(lock);
}

TEST(LocksDeathTest, Lock_TakenTwiceByOneThread_EndsWithMessage) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            vexo_lock* lock = NewLock("twice");
            Lock(lock);
            Lock(lock);
        },
        testing::KilledBySignal(SIGABRT), "lock twice, user 97: taken again at recorder_test, Lock");
}

TEST(Locks, Delete_HeldLock_Complains) {
    const NewComplaints complaints;
    vexo_lock* lock = NewLock("held at its end");
    Lock(lock);
    Delete(lock);
    EXPECT_TRUE(Contains(complaints.Text(), "lock held at its end, user 97: deleted while held")) << complaints.Text();
}

TEST(Locks, Delete_Twice_Complains) {
    const NewComplaints complaints;
    vexo_lock* lock = NewLock("deleted twice");
    Delete(lock);
    Delete(lock);
    EXPECT_EQ(complaints.Text(), "lock given back that was not taken, or given back twice: by recorder_test, Delete\n");
}

TEST(Locks, Create_Lock_IsOutstandingUntilDeleted) {
    const std::string line = "lock: vexo_hostmgr_lv, user 97";
    vexo_rw_lock* lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_lv");
    EXPECT_EQ(CountOutstanding(line), 1);
    Delete(lock);
    EXPECT_EQ(CountOutstanding(line), 0);
}

TEST(LockOrder, TwoLocks_WaitedForInBothOrders_ComplainsOnce) {
    const NewComplaints complaints;
    vexo_lock* table = NewLock("table");
    vexo_lock* module = NewLock("module");
    const auto nest = [](vexo_lock* outer, vexo_lock* inner) {
        Lock(outer);
        Lock(inner);
        Unlock(inner);
        Unlock(outer);
    };
    nest(table, module);
    nest(table, module);
    EXPECT_EQ(complaints.Text(), "");
    Elsewhere([&] { nest(module, table); });
    nest(table, module);
    nest(module, table);
    EXPECT_EQ(
        complaints.Text(),
        "lock order turned round: \"table\" was waited for with \"module\" held, and earlier the other way round: "
        "recorder_test, Lock\n");
    Delete(module);
    Delete(table);
}

TEST(LockOrder, LockFreedByAnother_IsNoLongerHeldByItsFirstHolder) {
    const NewComplaints complaints;
    vexo_lock* stranded = NewLock("stranded");
    vexo_lock* other = NewLock("other");
    Lock(stranded);
    Elsewhere([&] { Unlock(stranded); });
    const std::string misuse = complaints.Text();
    Lock(other);
    Unlock(other);
    Elsewhere([&] {
        Lock(other);
        Lock(stranded);
        Unlock(stranded);
        Unlock(other);
    });
    EXPECT_EQ(complaints.Text(), misuse);
    Delete(other);
    Delete(stranded);
}

TEST(LockOrder, TryLock_InOppositeOrder_CannotHangAndIsNoMisuse) {
    const NewComplaints complaints;
    vexo_lock* first = NewLock("first");
    vexo_lock* second = NewLock("second");
    Lock(first);
    Lock(second);
    Unlock(second);
    Unlock(first);
    Lock(second);
    EXPECT_EQ(TryLock(first), 0);
    Unlock(first);
    Unlock(second);
    EXPECT_EQ(complaints.Text(), "");
    Delete(second);
    Delete(first);
}

}  // namespace
