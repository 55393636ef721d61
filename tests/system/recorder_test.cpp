// The simulated recorder's utility platform by plain calls: memory, threads, time, files, diagnostics, faults, and what
// the guest watch says of misuse. Locks stand in recorder_lock_test.cpp; scenario, start and exit report in
// recorder_start_test.cpp.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "control.h"
#include "recorder_test_support.h"
#include "vexo_utility.h"

namespace control = simulator::control;
using recorder_test::Contains;
using recorder_test::CountOutstanding;
using recorder_test::NewComplaints;

namespace {

void Free(void* memory) {
    vexo_utility_free("recorder_test", "Free", memory);
}

// ---- memory --------------------------------------------------------------------------------------------------------

TEST(Memory, Malloc_Piece_IsBookedUntilFreed) {
    const std::string line = "memory: user 97, purpose 0x80002, 7680 bytes";
    void* memory = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_LIVE_SLOTS, 60, 128);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(CountOutstanding(line), 1);
    Free(memory);
    EXPECT_EQ(CountOutstanding(line), 0);
}

TEST(Memory, Malloc_NewPiece_HoldsNoZeros) {
    auto* memory = static_cast<unsigned char*>(vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, 64, 1));
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(std::count(memory, memory + 64, 0), 0);
    Free(memory);
}

TEST(Memory, Malloc_TooMuch_IsRefusedWithComplaint) {
    const NewComplaints complaints;
    EXPECT_EQ(vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, UINT_MAX, UINT_MAX), nullptr);
    EXPECT_TRUE(Contains(complaints.Text(), "memory of 18446744065119617025 bytes asked for")) << complaints.Text();
}

TEST(Memory, Malloc_NoBytes_IsAPieceLikeOthers) {
    const NewComplaints complaints;
    void* memory = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_ALARM_STATUS, 0, 1);
    EXPECT_NE(memory, nullptr);
    EXPECT_EQ(CountOutstanding("memory: user 97, purpose 0x80005, 0 bytes"), 1);
    Free(memory);
    EXPECT_EQ(CountOutstanding("memory: user 97, purpose 0x80005, 0 bytes"), 0);
    EXPECT_EQ(complaints.Text(), "");
}

TEST(Memory, Free_Twice_ComplainsAndNamesTheCaller) {
    const NewComplaints complaints;
    void* memory = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_QUERY, 8, 1);
    Free(memory);
    EXPECT_EQ(complaints.Text(), "");
    Free(memory);
    EXPECT_EQ(complaints.Text(), "memory given back that was not taken, or given back twice: by recorder_test, Free\n");
}

TEST(Memory, Free_Null_IsNoMisuse) {
    const NewComplaints complaints;
    Free(nullptr);
    EXPECT_EQ(complaints.Text(), "");
}

// ---- threads -------------------------------------------------------------------------------------------------------

struct ThreadNotes {
    unsigned long id = 0;  ///< what the creator's call fills in
    unsigned long seen = 0;
    bool own = false;
    size_t stack = 0;
    char name[16] = "";
};

void* NoteThread(void* argument) {
    auto* notes = static_cast<ThreadNotes*>(argument);
    notes->seen = notes->id;
    notes->own = notes->id == pthread_self();
    pthread_getname_np(pthread_self(), notes->name, sizeof notes->name);
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &notes->stack);
    pthread_attr_destroy(&attributes);
    return nullptr;
}

vexo_thread_creat_ctl Control(vexo_thread_func entry, void* argument, unsigned joinable = 1) {
    return {joinable, 0, entry, argument, 0, 0x80000};
}

TEST(Threads, Create_NewThread_FindsItsIdNameAndStack) {
    ThreadNotes notes;
    const vexo_thread_creat_ctl ctl = Control(NoteThread, &notes);
    ASSERT_EQ(vexo_utility_creat_thread(&ctl, "HostMgrCapturePictureTask_Thread", &notes.id), 0);
    const unsigned long id = notes.id;
    EXPECT_EQ(CountOutstanding("thread: HostMgrCapturePictureTask_Thread"), 1);
    ASSERT_EQ(vexo_utility_retrieve_thread(id), 0);
    EXPECT_EQ(CountOutstanding("thread: HostMgrCapturePictureTask_Thread"), 0);
    EXPECT_EQ(notes.seen, id);
    EXPECT_TRUE(notes.own);
    EXPECT_STREQ(notes.name, "HostMgrCaptureP");
    EXPECT_GE(notes.stack, 0x80000U);
}

TEST(Threads, Retrieve_SecondTimeOrUnknown_FailsWithComplaint) {
    ThreadNotes notes;
    const vexo_thread_creat_ctl ctl = Control(NoteThread, &notes);
    ASSERT_EQ(vexo_utility_creat_thread(&ctl, "short", &notes.id), 0);
    ASSERT_EQ(vexo_utility_retrieve_thread(notes.id), 0);
    const NewComplaints complaints;
    EXPECT_NE(vexo_utility_retrieve_thread(notes.id), 0);
    EXPECT_NE(vexo_utility_retrieve_thread(12345), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "a thread was retrieved that is not there, or twice")) << complaints.Text();
}

void* RetrieveMyself(void* argument) {
    *static_cast<int*>(argument) = vexo_utility_retrieve_thread(pthread_self());
    return nullptr;
}

TEST(Threads, Retrieve_ByItself_FailsAndTheCreatorStillCan) {
    const NewComplaints complaints;
    int result = 0;
    unsigned long id = 0;
    const vexo_thread_creat_ctl ctl = Control(RetrieveMyself, &result);
    ASSERT_EQ(vexo_utility_creat_thread(&ctl, "selfish", &id), 0);
    EXPECT_EQ(vexo_utility_retrieve_thread(id), 0);
    EXPECT_NE(result, 0);
    EXPECT_TRUE(Contains(complaints.Text(), "retrieved by itself: thread")) << complaints.Text();
}

void* SetFlag(void* argument) {
    *static_cast<std::atomic<bool>*>(argument) = true;
    return nullptr;
}

TEST(Threads, Create_NotJoinable_GivesItselfBack) {
    std::atomic<bool> ran{false};
    unsigned long id = 0;
    const vexo_thread_creat_ctl ctl = Control(SetFlag, &ran, 0);
    ASSERT_EQ(vexo_utility_creat_thread(&ctl, "on its own", &id), 0);
    while (!ran || CountOutstanding("thread: on its own") > 0) {
        vexo_utility_sleep_ms(1);
    }
    EXPECT_NE(vexo_utility_retrieve_thread(id), 0);
}

TEST(Threads, Create_OnFailure_LeavesTheIdAlone) {
    unsigned long id = 77;
    std::atomic<bool> ran{false};
    const vexo_thread_creat_ctl ctl = Control(SetFlag, &ran);
    control::Fail("vexo_utility_creat_thread", 1);
    EXPECT_NE(vexo_utility_creat_thread(&ctl, "never", &id), 0);
    EXPECT_EQ(id, 77U);
    EXPECT_FALSE(ran);
}

TEST(Threads, EnterAndExit_InOrderUnderTheOwnId_IsNoMisuse) {
    const NewComplaints complaints;
    vexo_utility_enter_thread(pthread_self(), "worker");
    vexo_utility_exit_thread(pthread_self());
    EXPECT_EQ(complaints.Text(), "");
}

TEST(Threads, EnterAndExit_WrongIdOrOutOfOrder_Complains) {
    const NewComplaints complaints;
    vexo_utility_enter_thread(1, "worker");
    vexo_utility_exit_thread(pthread_self());
    EXPECT_TRUE(Contains(complaints.Text(), "thread worker: vexo_utility_enter_thread with an id that is not its own"));
    EXPECT_TRUE(Contains(complaints.Text(), "vexo_utility_exit_thread by thread")) << complaints.Text();
}

void Interrupted(int) {}

TEST(Threads, SleepMs_InterruptedBySignals_SleepsItsWholeTime) {
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = Interrupted;
    sigaction(SIGALRM, &action, &before);
    const itimerval often = {{0, 2000}, {0, 2000}};
    const itimerval never = {};
    timespec start = {};
    timespec end = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    clock_gettime(CLOCK_MONOTONIC, &start);
    vexo_utility_sleep_ms(30);
    clock_gettime(CLOCK_MONOTONIC, &end);
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_GE((end.tv_sec - start.tv_sec) * 1000000000L + end.tv_nsec - start.tv_nsec, 30000000L);
}

// ---- time ----------------------------------------------------------------------------------------------------------

TEST(Time, CntDeltaMs_Differences_RoundTowardsZero) {
    const struct {
        timeval from;
        timeval to;
        long delta;
    } cases[] = {
        {{10, 0}, {12, 345000}, 2345}, {{12, 345000}, {10, 0}, -2345},  {{0, 999100}, {1, 0}, 0},
        {{1, 0}, {0, 999100}, 0},      {{5, 900000}, {6, 100000}, 200}, {{6, 100000}, {5, 900000}, -200},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(vexo_utility_cnt_delta_ms(&one.from, &one.to), one.delta) << one.from.tv_sec << " " << one.to.tv_sec;
    }
}

TEST(Time, CntDeltaMs_OutOfRange_GivesTheNearestLimit) {
    const timeval zero = {0, 0};
    const timeval last = {LONG_MAX, 999999};
    const timeval first = {LONG_MIN, 0};
    EXPECT_EQ(vexo_utility_cnt_delta_ms(&zero, &last), LONG_MAX);
    EXPECT_EQ(vexo_utility_cnt_delta_ms(&last, &zero), LONG_MIN);
    EXPECT_EQ(vexo_utility_cnt_delta_ms(&first, &last), LONG_MAX);
    EXPECT_EQ(vexo_utility_cnt_delta_ms(&last, &first), LONG_MIN);
}

TEST(Time, AddTime_ForwardAndBack_KeepsMicrosecondsInRange) {
    timeval time = {100, 900000};
    vexo_utility_add_time(&time, 1250);
    EXPECT_EQ(time.tv_sec, 102);
    EXPECT_EQ(time.tv_usec, 150000);
    vexo_utility_add_time(&time, -2200);
    EXPECT_EQ(time.tv_sec, 99);
    EXPECT_EQ(time.tv_usec, 950000);
}

/** A time zone with summer time, for one test. */
class SummerTime {
public:
    SummerTime() : m_before(getenv("TZ") == nullptr ? "" : getenv("TZ")) { Set("CET-1CEST,M3.5.0,M10.5.0/3"); }
    ~SummerTime() { Set(m_before.c_str()); }

private:
    static void Set(const char* zone) {
        *zone == '\0' ? unsetenv("TZ") : setenv("TZ", zone, 1);
        tzset();
    }
    std::string m_before;
};

TEST(Time, Conversion_LocalTime_ThereAndBack) {
    const SummerTime zone;
    vexo_time_struct time = {};
    vexo_utility_linux_to_vexo_time(1720180800, &time);
    const unsigned short fields[] = {time.year, time.month, time.day, time.hour, time.minute, time.second};
    EXPECT_EQ(std::vector<int>(std::begin(fields), std::end(fields)), (std::vector<int>{2024, 7, 5, 14, 0, 0}));
    EXPECT_EQ(vexo_utility_vexo_to_linux_time(&time), 1720180800);
}

TEST(Time, VexoToLinux_TimeThatDoesNotExist_GivesMinusOne) {
    const SummerTime zone;
    const vexo_time_struct missing[] = {{2024, 2, 30, 0, 0, 0}, {2024, 13, 1, 0, 0, 0}, {2024, 0, 1, 0, 0, 0},
                                        {2024, 1, 1, 24, 0, 0}, {2024, 1, 1, 0, 60, 0}, {2024, 3, 31, 2, 30, 0}};
    for (const vexo_time_struct& time : missing) {
        EXPECT_EQ(vexo_utility_vexo_to_linux_time(&time), -1) << time.month << "-" << time.day << " " << time.hour;
    }
    const vexo_time_struct leap_day = {2024, 2, 29, 0, 0, 0};
    EXPECT_EQ(vexo_utility_vexo_to_linux_time(&leap_day), 1709161200);
}

// ---- files ---------------------------------------------------------------------------------------------------------

TEST(Files, Directories_AreMadeAndRemovedWithWhatTheyHold) {
    const std::string top = testing::TempDir() + "recorder_files." + std::to_string(getpid());
    const std::string deep = top + "/one/two";
    EXPECT_FALSE(vexo_utility_is_file_exist(top.c_str()));
    EXPECT_EQ(vexo_utility_creat_dir(deep.c_str()), 0);
    EXPECT_EQ(vexo_utility_creat_dir(deep.c_str()), 0);
    EXPECT_TRUE(vexo_utility_is_file_exist(deep.c_str()));
    EXPECT_EQ(vexo_utility_delete_dir(top.c_str()), 0);
    EXPECT_FALSE(vexo_utility_is_file_exist(top.c_str()));
    EXPECT_NE(vexo_utility_delete_dir(top.c_str()), 0);
}

TEST(Files, CreateDir_FileInTheWay_FailsAndKeepsTheFile) {
    const std::string path = testing::TempDir() + "recorder_file." + std::to_string(getpid());
    fclose(fopen(path.c_str(), "w"));
    EXPECT_NE(vexo_utility_creat_dir(path.c_str()), 0);
    EXPECT_NE(vexo_utility_delete_dir(path.c_str()), 0);
    EXPECT_TRUE(vexo_utility_is_file_exist(path.c_str()));
    unlink(path.c_str());
}

// A fault stands behind the check, so that a check that failed would still remove nothing.
TEST(Files, DeleteDir_RootOrNothing_IsRefusedWithComplaint) {
    for (const char* path : {"", "/", "//", "/../", "/tmp/.."}) {
        const NewComplaints complaints;
        control::Fail("vexo_utility_delete_dir", 1);
        EXPECT_NE(vexo_utility_delete_dir(path), 0);
        EXPECT_EQ(complaints.Text(),
                  "vexo_utility_delete_dir asked to remove \"" + std::string(path) + "\": refused\n");
        EXPECT_NE(vexo_utility_delete_dir(testing::TempDir().c_str()), 0) << "the fault was used up";
    }
}

// ---- diagnostics, events, faults -----------------------------------------------------------------------------------

class Client : public vexo_diagnose_client {
public:
    explicit Client(std::string text) : m_text(std::move(text)) {}
    void diagnose(unsigned int command, vexo_print_func print) override {
        print("%s %u\n", m_text.c_str(), command);
        m_print = print;
    }
    vexo_print_func LastPrint() const { return m_print; }

private:
    std::string m_text;
    vexo_print_func m_print = nullptr;
};

// Clients stay registered for the process's life: made and registered once, however often the test runs.
TEST(Diagnostics, Diagnose_TwoClients_AnswerInTurnWithWholeTexts) {
    static Client first("first");
    static Client second(std::string(3000, 'x'));
    static const int results[] = {vexo_utility_regist_diag(&first, "title", "menu"),
                                  vexo_utility_regist_diag(&second, "title", "menu")};
    ASSERT_EQ(results[0], 0);
    ASSERT_EQ(results[1], 0);
    EXPECT_EQ(control::Diagnose(1000), "first 1000\n" + std::string(3000, 'x') + " 1000\n");
    const NewComplaints complaints;
    first.LastPrint()("too late");
    EXPECT_EQ(complaints.Text(), "the diagnostics print function was used after the command or on another thread\n");
}

TEST(Diagnostics, Regist_NoClient_Fails) {
    EXPECT_NE(vexo_utility_regist_diag(nullptr, "title", "menu"), 0);
}

TEST(Events, GetEventInfo_NothingIsTheCase_CountsNone) {
    unsigned count = 99;
    EXPECT_EQ(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, nullptr, 0, &count), 0);
    EXPECT_EQ(count, 0U);
}

TEST(Faults, Fail_NthUseAndTimes_FailsThoseAlone) {
    control::Fail("vexo_utility_malloc", 2, 2);
    std::string pattern;
    for (int i = 0; i < 5; ++i) {
        void* memory = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, 8, 1);
        pattern += memory == nullptr ? '-' : '+';
        Free(memory);
    }
    EXPECT_EQ(pattern, "+--++");
}

TEST(Faults, Fail_OtherOperation_IsNotCounted) {
    control::Fail("vexo_utility_new_lock", 1);
    void* memory = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, 8, 1);
    EXPECT_NE(memory, nullptr);
    Free(memory);
    EXPECT_EQ(vexo_utility_new_lock(VEXO_USER_HOSTMGR, "fails"), nullptr);
}

TEST(Faults, Fail_UnknownOperation_NamesTheNearest) {
    try {
        control::Fail("vexo_model_get_fram", 1);
        FAIL() << "an operation that does not exist was accepted";
    } catch (const std::invalid_argument& error) {
        EXPECT_TRUE(Contains(error.what(), "the nearest one is \"vexo_model_get_frame\"")) << error.what();
    }
}

TEST(Cameras, Signal_TakenAndGivenBack_IsKeptForEachChannel) {
    control::SetSignal(2, false);
    EXPECT_FALSE(control::HasSignal(2));
    EXPECT_TRUE(control::HasSignal(1));
    control::SetSignal(2, true);
    EXPECT_TRUE(control::HasSignal(2));
    EXPECT_THROW(control::SetSignal(5, true), std::invalid_argument);
    EXPECT_THROW(control::HasSignal(0), std::invalid_argument);
}

}  // namespace
