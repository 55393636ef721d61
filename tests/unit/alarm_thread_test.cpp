// The alarm thread and the others: callbacks that change or end what is delivered, logouts and dumps meanwhile, many
// threads at once. Every step waits for the one before; nothing depends on time.
#include "alarm_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using namespace vexo_soft;

static void OnAnotherThread(const std::function<void()>& action) {
    std::thread(action).join();
}

class AlarmThreads : public AlarmFixture {
protected:
    void SetUp() override {
        AlarmFixture::SetUp();
        m_lock = &platform.Lock(ALARM_LOCK);
        m_events = {AnEvent(2, 2)};
    }

    /** Lets the first delivery of the next pass do something; later ones are plain again. */
    void AtTheFirstDelivery(std::function<void()> action) {
        receiver.Then([this, action](unsigned char*) {
            receiver.Then(nullptr);
            action();
        });
    }

    MockLock* m_lock = nullptr;  // of the login's alarm object: deleted with it
    Receiver receiver;
};

// ---- the body ------------------------------------------------------------------------------------------------------

TEST_F(AlarmThreads, Body_SleepsASecondAfterEachPass) {
    m_events.clear();
    Pass();
    Pass();
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_cfgm_get_dev_cap()", CountCall(), "vexo_utility_sleep_ms(1000)",
                            "vexo_cfgm_get_dev_cap()", CountCall(), "vexo_utility_sleep_ms(1000)"));
}

TEST_F(AlarmThreads, Callbacks_RunOnTheAlarmThread) {
    Subscribe(&receiver);
    std::thread::id where;
    std::thread::id passes;
    receiver.Then([&](unsigned char*) { where = std::this_thread::get_id(); });
    ON_CALL(platform, vexo_cfgm_get_dev_cap).WillByDefault([&] {
        passes = std::this_thread::get_id();
        return &m_capability;
    });
    Pass();
    EXPECT_EQ(where, passes);
    EXPECT_NE(where, std::this_thread::get_id());
}

// ---- callbacks that change their subscription ----------------------------------------------------------------------

TEST_F(AlarmThreads, CallbackThatUnsubscribes_IsNotToldOfTheNextEvent) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    Subscribe(&receiver);
    AtTheFirstDelivery([] { EXPECT_EQ(Unsubscribe(), 0); });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
}

TEST_F(AlarmThreads, CallbackThatSwitchesOff_IsNotToldOfTheNextEvent) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    Subscribe(&receiver);
    AtTheFirstDelivery([] { EXPECT_EQ(Enable(0), 0); });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
}

TEST_F(AlarmThreads, CallbackThatSubscribesAnother_TheOtherIsToldOfTheNextEvent) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    Receiver second;
    Subscribe(&receiver);
    AtTheFirstDelivery([&] { EXPECT_EQ(Subscribe(&second, LOGIN, 0, 1), 0); });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
    EXPECT_THAT(second.TakeLines(), ElementsAre("1281: 4 on 1"));
}

TEST_F(AlarmThreads, CallbackThatReadsTheStatus_GetsIt) {
    Subscribe(&receiver);
    unsigned int count = 0;
    AtTheFirstDelivery([&] {
        _tagVexoHostMgrALarmStatusInfo* list = nullptr;
        EXPECT_EQ(vexo_HostMgr_Dev_GetAlarmStatus(LOGIN, &list, &count), 0);
        EXPECT_EQ(list->byType, 3);
        EXPECT_EQ(vexo_HostMgr_Dev_ReleaseAlarmStatus(list), 0);
    });
    Pass();
    EXPECT_EQ(count, 1u);
}

// ---- callbacks that log out ----------------------------------------------------------------------------------------

TEST_F(AlarmThreads, CallbackThatLogsOut_IsNotToldAgain) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    Subscribe(&receiver);
    AtTheFirstDelivery([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); });
    Pass();
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

TEST_F(AlarmThreads, CallbackThatLogsOut_TheObjectLivesUntilItReturns) {
    Subscribe(&receiver);
    bool deleted_meanwhile = true;
    AtTheFirstDelivery([&] {
        vexo_HostMgr_Dev_Logout(LOGIN);
        deleted_meanwhile = m_lock->Deleted();
    });
    Pass();
    EXPECT_FALSE(deleted_meanwhile);
    EXPECT_TRUE(m_lock->Deleted());
}

// The six others go at once and in their order, under the table lock; the alarm object goes when its delivery is over,
// with no lock held and before the events' memory.
TEST_F(AlarmThreads, CallbackThatLogsOut_EndsEachObjectInItsPlace) {
    Subscribe(&receiver);
    AtTheFirstDelivery([] { vexo_HostMgr_Dev_Logout(LOGIN); });
    const std::string alarm_ends = With("~vexo_hostmgr_alarm", ModulesEnded()).at(0);
    Lines expected = Without("~vexo_hostmgr_alarm", ModulesEnded());
    expected.insert(expected.end(), {OnTable("unlock", "HostMgr_Dev_Logout"), alarm_ends,
                                     "vexo_utility_free(vexo_hostmgr_resource, HostMgrAlarmUp, 0x26004)"});
    EXPECT_THAT(WithAny({"delete_", "unlock(vexo_hostmgr_res_manage", "HostMgrAlarmUp"}, CallsOfPass()),
                ElementsAreArray(expected));
}

TEST_F(AlarmThreads, CallbackThatLogsOutAnotherLogin_ThatOneIsNotTold) {
    LogInAll({2});
    Subscribe(&receiver);
    Subscribe(&receiver, 2);
    AtTheFirstDelivery([] { vexo_HostMgr_Dev_Logout(2); });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
}

TEST_F(AlarmThreads, CallbackThatLogsOut_OtherLoginsAreStillTold) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    LogInAll({2});
    Subscribe(&receiver);
    Subscribe(&receiver, 2);
    AtTheFirstDelivery([] { vexo_HostMgr_Dev_Logout(LOGIN); });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1", "2: 1 on 1", "2: 4 on 1"));
}

TEST_F(AlarmThreads, CallbackThatLogsOutAndIn_TheNewLoginStartsWithoutACallback) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    Subscribe(&receiver);
    AtTheFirstDelivery([this] {
        vexo_HostMgr_Dev_Logout(LOGIN);
        platform.NextLogin(LOGIN);
        EXPECT_EQ(LoginAsAdmin(), LOGIN);
    });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
    EXPECT_TRUE(m_lock->Deleted());
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
}

// ---- others, while the pass delivers -------------------------------------------------------------------------------

TEST_F(AlarmThreads, LogoutDuringADelivery_DoesNotWait) {
    Subscribe(&receiver);
    bool deleted_meanwhile = true;
    AtTheFirstDelivery([&] {
        OnAnotherThread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); });
        deleted_meanwhile = m_lock->Deleted();
    });
    Pass();
    EXPECT_FALSE(deleted_meanwhile);
    EXPECT_TRUE(m_lock->Deleted());
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
}

// A failed login in slot 1 releases the login whose handle is 1.
TEST_F(AlarmThreads, FailedLoginDuringADelivery_DoesNotFreeWhatIsInUse) {
    vexo_HostMgr_Dev_Logout(LOGIN);
    LogInAll({1});
    m_lock = &platform.Lock(ALARM_LOCK);
    Subscribe(&receiver, 1);
    bool deleted_meanwhile = true;
    AtTheFirstDelivery([&] {
        OnAnotherThread([this] { FailLogin(); });
        deleted_meanwhile = m_lock->Deleted();
    });
    Pass();
    EXPECT_FALSE(deleted_meanwhile);
    EXPECT_TRUE(m_lock->Deleted());
}

TEST_F(AlarmThreads, DumpDuringADelivery_PrintsTheState) {
    Subscribe(&receiver);
    std::string dumped;
    AtTheFirstDelivery([&] { OnAnotherThread([&] { dumped = AlarmDump(); }); });
    Pass();
    EXPECT_THAT(dumped, HasSubstr("用户句柄 0x501"));
}

TEST_F(AlarmThreads, SubscribingDuringADelivery_DoesNotWait) {
    Subscribe(&receiver);
    Receiver second;
    AtTheFirstDelivery([&] { OnAnotherThread([&] { EXPECT_EQ(Subscribe(&second), 0); }); });
    Pass();
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
    EXPECT_THAT(second.TakeLines(), ElementsAre("1281: 1 on 1"));
}

// ---- others, while the pass or a dump is inside the object ---------------------------------------------------------

// What is delivered is what stands at the delivery, all of it, not what stood when the pass began.
TEST_F(AlarmThreads, SubscriptionReplacedWhileTheEventsAreRead_TheNewOneIsServed) {
    Subscribe(&receiver);
    Receiver second;
    ON_CALL(platform, vexo_utility_get_event_info)
        .WillByDefault([&, this](unsigned int, Event* info, unsigned int, unsigned int* count) {
            if (info != nullptr) {
                std::copy(m_events.begin(), m_events.end(), info);
                OnAnotherThread([&] { Subscribe(&second, LOGIN, 0, 9); });
            }
            *count = 1;
            return 0;
        });
    Pass();
    EXPECT_THAT(receiver.TakeLines(), IsEmpty());
    const std::vector<Report> reports = second.Take();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].stream, 9);
}

static std::function<void()> s_at_print;

/** Prints for a dump, and lets something happen at the first piece of the object's own. */
static int PrintAndAct(const char* format, ...) {
    const std::string text = format;
    if (text.find("0x%x") != std::string::npos && s_at_print)
        std::exchange(s_at_print, nullptr)();
    return static_cast<int>(text.size());
}

TEST_F(AlarmThreads, LogoutDuringADump_DoesNotWaitAndTheDumpEndsTheObject) {
    Subscribe(&receiver);
    bool deleted_meanwhile = true;
    s_at_print = [&] {
        OnAnotherThread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); });
        deleted_meanwhile = m_lock->Deleted();
    };
    platform.Diagnostics().client->diagnose(5000, PrintAndAct);
    EXPECT_FALSE(deleted_meanwhile);
    EXPECT_TRUE(m_lock->Deleted());
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

// Both the dump and the pass have the object while it is logged out; the later one ends it.
TEST_F(AlarmThreads, LogoutDuringADumpDuringADelivery_TheDeliveryEndsTheObject) {
    Subscribe(&receiver);
    bool deleted_after_dump = true;
    AtTheFirstDelivery([&] {
        s_at_print = [] { OnAnotherThread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); }); };
        OnAnotherThread([this] { platform.Diagnostics().client->diagnose(5000, PrintAndAct); });
        deleted_after_dump = m_lock->Deleted();
    });
    Pass();
    EXPECT_FALSE(deleted_after_dump);
    EXPECT_TRUE(m_lock->Deleted());
}

// ---- at work at once -----------------------------------------------------------------------------------------------

/** A receiver that may be called on its own for one stream type only. */
class StreamReceiver {
public:
    explicit StreamReceiver(int stream) : m_stream(stream) {}
    static void Callback(int hLogin, int, int lStreamType, unsigned int, unsigned char*, unsigned int, void* pUser) {
        const StreamReceiver* self = static_cast<const StreamReceiver*>(pUser);
        EXPECT_EQ(hLogin, 0x501);
        EXPECT_EQ(lStreamType, self->m_stream);
    }

private:
    const int m_stream;
};

TEST_F(AlarmThreads, SubscriptionsReplacedAllTheTime_AreNeverMixed) {
    StreamReceiver receivers[] = {StreamReceiver(1), StreamReceiver(2)};
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int number = 0; number < 2; ++number)
        threads.emplace_back([&, number] {
            do {
                EXPECT_EQ(vexo_HostMgr_Dev_SetAlarmCallback(LOGIN, 0, number + 1, StreamReceiver::Callback,
                                                            &receivers[number]),
                          0);
            } while (!done);
        });
    for (int pass = 0; pass < 100; ++pass)
        Pass();
    done = true;
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(AlarmThreads, EightThreadsLogInSubscribeSwitchDumpAndLogOutDuringPasses_NothingIsLostOrLeft) {
    struct Nothing {
        static void Callback(int, int, int, unsigned int, unsigned char*, unsigned int, void*) {}
    };
    Subscribe(&receiver);
    std::atomic<int> busy{8};
    std::vector<std::thread> threads;
    for (int number = 0; number < 8; ++number)
        threads.emplace_back([this, number, &busy] {
            for (int round = 0; round < 20; ++round) {
                const int hLogin = LoginRemotely();
                EXPECT_EQ(vexo_HostMgr_Dev_SetAlarmCallback(hLogin, 0, 0, Nothing::Callback, nullptr), 0);
                EXPECT_EQ(Enable(static_cast<uint32_t>(round % 2), hLogin), 0);
                if (number == 0)
                    platform.Diagnostics().client->diagnose(5000, CollectPrint);
                EXPECT_EQ(vexo_HostMgr_Dev_Logout(hLogin), 0);
            }
            --busy;
        });
    while (busy != 0)
        Pass();
    for (std::thread& thread : threads)
        thread.join();
    receiver.Take();
    Pass();
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("1281: 1 on 1"));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
    EXPECT_THAT(platform.LiveMemory(), Not(Contains(0x26004u)));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}
