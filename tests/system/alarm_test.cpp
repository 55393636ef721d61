// Alarms through the exported functions: each kind that the recorder's plan begins arrives with the next pass, with
// every pass until it ends, and not after; the status list shows the same by numbers of its own; callbacks that do what
// they like. Both mapping tables, row by row, stand in the unit tests.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "agent.h"
#include "alarm_ear.h"

namespace control = simulator::control;
using agent::Alarm;
using agent::AlarmEar;
using agent::Session;
using live::Eventually;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace {

// The plan lies so far ahead that no test comes to it by chance, and its turns are so long that none ends by chance.
const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "alarm test",
    "channels": 4,
    "capability": {"analog_channels": 3},
    "events": [
        {"kind": "motion", "channel": 2, "at": 100000, "for": 100000, "every": 1000000},
        {"kind": "video loss", "channel": 3, "at": 100000, "for": 200000},
        {"kind": "shelter", "channel": 1, "at": 100000, "for": 300000},
        {"kind": "disk full", "disk": 2, "at": 200000, "for": 100000},
        {"kind": "disk error", "disk": 1, "at": 200000, "for": 200000},
        {"kind": "network lost", "at": 300000, "for": 100000},
        {"kind": "address conflict", "at": 300000, "for": 200000},
        {"kind": "input", "input": 3, "at": 400000, "for": 100000},
        {"kind": "camera input", "channel": 1, "at": 400000, "for": 100000}
    ]
})json"));

constexpr double STEP = 100000;  // seconds of the plan

/** What a planned event is to an agent, and in which steps, counted from 1, it is the case. */
struct Planned {
    const char* what;
    int first;
    int last;
    Alarm alarm;
    _tagVexoHostMgrALarmStatusInfo status;  ///< all zero for what the list does not carry
};
constexpr Planned PLAN[] = {
    {"motion", 1, 1, {HOSTMGR_ALARM_MOTION, 2}, {HOSTMGR_ALARM_STATUS_MOTION, 1, 1, {}}},
    {"video loss", 1, 2, {HOSTMGR_ALARM_VIDEO_LOSS, 3}, {HOSTMGR_ALARM_STATUS_VIDEO_LOSS, 1, 2, {}}},
    {"shelter", 1, 3, {HOSTMGR_ALARM_SHELTER, 1}, {HOSTMGR_ALARM_STATUS_SHELTER, 1, 0, {}}},
    {"disk full", 2, 2, {HOSTMGR_ALARM_DISK_FULL, 2}, {HOSTMGR_ALARM_STATUS_DISK_FULL, 1, 2, {}}},
    {"disk error", 2, 3, {HOSTMGR_ALARM_DISK_ERROR, 1}, {HOSTMGR_ALARM_STATUS_DISK_ERROR, 1, 1, {}}},
    {"network lost", 3, 3, {HOSTMGR_ALARM_NET_DISCONNECTED, 0}, {}},
    {"address conflict", 3, 4, {HOSTMGR_ALARM_NET_CONFLICT, 0}, {}},
    {"input", 4, 4, {HOSTMGR_ALARM_INPUT, 3}, {HOSTMGR_ALARM_STATUS_OTHER, 1, 2, {}}},
    // Of four channels three are analog: the inputs of network cameras count on from one more.
    {"camera input", 4, 4, {HOSTMGR_ALARM_INPUT, 2}, {HOSTMGR_ALARM_STATUS_OTHER, 1, 0, {}}},
};

std::vector<Alarm> AlarmsOf(int step) {
    std::vector<Alarm> alarms;
    for (const Planned& planned : PLAN) {
        if (step >= planned.first && step <= planned.last) {
            alarms.push_back(planned.alarm);
        }
    }
    return alarms;
}

/** A status list as texts of its first four bytes; the rest is looked at here. */
std::vector<std::string> Status(int login) {
    _tagVexoHostMgrALarmStatusInfo* list = nullptr;
    unsigned count = 0;
    std::vector<std::string> entries;
    if (vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(login, &list, &count) != 0) {
        return {"refused"};
    }
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_EQ(std::count(std::begin(list[i].reserved), std::end(list[i].reserved), 0), 28);
        entries.push_back(std::to_string(list[i].byType) + " " + std::to_string(list[i].byState) + " " +
                          std::to_string(list[i].wChannel));
    }
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReleaseAlarmStatus(list), 0);
    return entries;
}

std::vector<std::string> StatusOf(int step) {
    std::vector<std::string> entries = {"0 1 3"};  // the beat
    for (const Planned& planned : PLAN) {
        if (step >= planned.first && step <= planned.last) {
            entries.push_back(std::to_string(planned.status.byType) + " " + std::to_string(planned.status.byState) +
                              " " + std::to_string(planned.status.wChannel));
        }
    }
    return entries;
}

class AlarmTest : public agent::LibraryTest {
protected:
    int Subscribe(const Session& session, AlarmEar& ear, int stream = 1) {
        ear.Expect(session.Login(), stream);
        return vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(session.Login(), 0, stream, AlarmEar::Hear, &ear);
    }

    static void Switch(const Session& session, uint32_t on) {
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Control(session.Login(), HOSTMGR_CONTROL_ALARM_ENABLE, 0, 0, &on,
                                                      sizeof on, nullptr, 0, nullptr, 0),
                  0);
    }

    agent::Events m_events;
};

// ---- the plan ------------------------------------------------------------------------------------------------------

TEST_F(AlarmTest, Planned_EachKind_ComesWithEveryPassWhileItIsTheCase_AndStandsInTheStatusList) {
    m_events.BeginBeat();
    AlarmEar& ear = agent::NewAlarmEar();
    {
        const Session session;
        ASSERT_EQ(Subscribe(session, ear), 0);
        EXPECT_THAT(ear.Fresh().alarms, IsEmpty());
        for (int step = 1; step <= 5; ++step) {
            control::SkipTime(STEP);
            EXPECT_THAT(ear.Fresh().alarms, UnorderedElementsAreArray(AlarmsOf(step))) << "step " << step;
            EXPECT_THAT(Status(session.Login()), UnorderedElementsAreArray(StatusOf(step))) << "step " << step;
        }
        EXPECT_EQ(ear.Wrong(), 0U);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(session.Login(), 0, 1, nullptr, nullptr), 0);
    }
    ExpectAllGivenBack();
}

// ---- repetition ----------------------------------------------------------------------------------------------------

/** In which passes an alarm came. */
std::vector<size_t> PassesWith(const std::vector<AlarmEar::Pass>& passes, const Alarm& alarm) {
    std::vector<size_t> with;
    for (size_t i = 0; i < passes.size(); ++i) {
        with.insert(with.end(),
                    static_cast<size_t>(std::count(passes[i].alarms.begin(), passes[i].alarms.end(), alarm)), i);
    }
    return with;
}

TEST_F(AlarmTest, Repeated_OnceInEachPass_FromTheNextOneAfterItsBeginningToTheLastBeforeItsEnd) {
    m_events.BeginBeat();
    AlarmEar& ear = agent::NewAlarmEar();
    const Session session;
    ASSERT_EQ(Subscribe(session, ear), 0);
    ear.Wait(1);
    m_events.Begin("motion", 4);
    const size_t begun = ear.Passes();  // passes that had begun; the one after may have read the table before
    ear.Wait(begun + 4);
    control::SetEvent("motion", 4, false);
    const size_t ended = ear.Passes();
    const std::vector<AlarmEar::Pass> passes = ear.Wait(ended + 2);
    const std::vector<size_t> with = PassesWith(passes, {HOSTMGR_ALARM_MOTION, 4});
    ASSERT_GE(with.size(), 3U);
    EXPECT_LE(with.front(), begun + 1);
    EXPECT_GE(with.front() + 1, begun);
    EXPECT_GE(with.back() + 2, ended) << "it was still the case when that pass read the table";
    EXPECT_LE(with.back(), ended);
    for (size_t i = 1; i < with.size(); ++i) {
        EXPECT_EQ(with[i], with[i - 1] + 1) << "once in each pass";
        const std::chrono::duration<double> apart = passes[with[i]].begun - passes[with[i] - 1].begun;
        EXPECT_GE(apart.count(), 0.99) << "a second from pass to pass";
    }
}

TEST_F(AlarmTest, Repeated_LostCamera_UntilItsSignalIsBack) {
    m_events.BeginBeat();
    AlarmEar& ear = agent::NewAlarmEar();
    const Session session;
    ASSERT_EQ(Subscribe(session, ear, 2), 0);
    control::SetSignal(2, false);
    EXPECT_THAT(ear.Fresh().alarms, ElementsAre(Alarm{HOSTMGR_ALARM_VIDEO_LOSS, 2}));
    control::SetSignal(2, true);
    EXPECT_THAT(ear.Fresh().alarms, IsEmpty());
    EXPECT_EQ(ear.Wrong(), 0U);
}

TEST_F(AlarmTest, Unlisted_Events_CarryOverWhatTheOneBeforeThemLeft) {
    m_events.BeginBeat();
    m_events.Raw(2, 3, 6, 0);
    m_events.Raw(4, 27, 0, 0);
    m_events.Raw(5, 27, 0, 6);
    m_events.Raw(5, 30, 0, 0);
    m_events.Raw(2, 99, 9, 0);
    m_events.Raw(3, 99, 9, 9);
    AlarmEar& ear = agent::NewAlarmEar();
    const Session session;
    ASSERT_EQ(Subscribe(session, ear), 0);
    EXPECT_THAT(ear.Fresh().alarms, ElementsAre(Alarm{HOSTMGR_ALARM_VIDEO_LOSS, 7}, Alarm{HOSTMGR_ALARM_VIDEO_LOSS, 0},
                                                Alarm{HOSTMGR_ALARM_INPUT, 7}, Alarm{HOSTMGR_ALARM_INPUT, 7},
                                                Alarm{HOSTMGR_ALARM_INPUT, 10}, Alarm{HOSTMGR_ALARM_INPUT, 0}));
    EXPECT_THAT(Status(session.Login()), ElementsAre("0 1 3", "6 1 6", "0 0 0", "0 1 6", "0 1 0", "0 1 9", "0 0 0"));
}

// ---- status list ---------------------------------------------------------------------------------------------------

TEST_F(AlarmTest, Status_NothingIsTheCase_IsRefused_AndItsListLastsBeyondTheLogout) {
    _tagVexoHostMgrALarmStatusInfo* list = nullptr;
    unsigned count = 7;
    {
        const Session session;
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(session.Login(), &list, &count), -1);
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(count, 7U);
        m_events.Begin("motion", 1);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(session.Login(), nullptr, &count), -1);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(session.Login(), &list, nullptr), -1);
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(session.Login(), &list, &count), 0);
    }
    ASSERT_EQ(count, 1U);
    EXPECT_EQ(list->byType, HOSTMGR_ALARM_STATUS_MOTION);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReleaseAlarmStatus(list), 0);
    ExpectAllGivenBack();
}

TEST_F(AlarmTest, Status_InputOfANetworkCameraWithoutChannel_EndsTheListButNotItsCount) {
    const Session session;
    m_events.Begin("motion", 1);
    m_events.Begin("disk full", 2);
    m_events.Raw(5, 28, 0, 9);
    m_events.Begin("shelter", 2);
    EXPECT_THAT(Status(session.Login()), ElementsAre("3 1 0", "1 1 2", "0 0 0", "0 0 0"));
}

// ---- subscriptions -------------------------------------------------------------------------------------------------

TEST_F(AlarmTest, Subscriptions_TwoLogins_AreServedAndSwitchedEachForItself) {
    m_events.BeginBeat();
    const Session first;
    const Session second;
    AlarmEar& first_ear = agent::NewAlarmEar();
    AlarmEar& second_ear = agent::NewAlarmEar();
    ASSERT_EQ(Subscribe(first, first_ear, 1), 0);
    ASSERT_EQ(Subscribe(second, second_ear, 0), 0);
    EXPECT_TRUE(first_ear.Hears());
    EXPECT_TRUE(second_ear.Hears());
    Switch(first, 0);
    second_ear.Settle();
    const size_t heard = first_ear.Passes();
    second_ear.Hears();
    EXPECT_EQ(first_ear.Passes(), heard) << "switched off";
    Switch(first, 0x80000000);
    EXPECT_TRUE(first_ear.Hears());
    ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(first.Login(), 0, 1, nullptr, nullptr), 0);
    Switch(first, 1);
    second_ear.Settle();
    const size_t at_end = first_ear.Passes();
    second_ear.Hears();
    EXPECT_EQ(first_ear.Passes(), at_end) << "nobody is registered";
    EXPECT_EQ(first_ear.Wrong() + second_ear.Wrong(), 0U);
}

TEST_F(AlarmTest, Subscription_OfOneChannel_IsNeverServed) {
    m_events.BeginBeat();
    const Session served;
    const Session channel;
    AlarmEar& ear = agent::NewAlarmEar();
    AlarmEar& never = agent::NewAlarmEar();
    ASSERT_EQ(Subscribe(served, ear), 0);
    for (const int stream : {0, 1}) {
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(channel.Login(), 2, stream, AlarmEar::Hear, &never), 0);
        ear.Settle();
        EXPECT_EQ(never.Passes(), 0U);
    }
}

// ---- callbacks that do as they like --------------------------------------------------------------------------------

struct Leaver {
    std::atomic<int> login{0};
    std::atomic<int> calls{0};
    std::atomic<int> result{-7};
};

void LogOut(int login, int, int, unsigned, unsigned char*, unsigned, void* user) {
    auto* leaver = static_cast<Leaver*>(user);
    leaver->result = login == leaver->login ? vexo_soft::vexo_HostMgr_Dev_Logout(login) : -2;
    ++leaver->calls;
}

TEST_F(AlarmTest, Callback_ThatLogsOut_IsNotCalledAgain_AndTheOthersAreServedOn) {
    m_events.BeginBeat();
    m_events.Begin("motion", 1);
    AlarmEar& ear = agent::NewAlarmEar();
    {
        const Session other;
        ASSERT_EQ(Subscribe(other, ear), 0);
        Leaver leaver;
        leaver.login = vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr);
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(leaver.login, 0, 1, LogOut, &leaver), 0);
        ASSERT_TRUE(Eventually([&] { return leaver.calls == 1; }));
        EXPECT_EQ(leaver.result, 0);
        EXPECT_THAT(ear.Fresh().alarms, ElementsAre(Alarm{HOSTMGR_ALARM_MOTION, 1}));
        EXPECT_EQ(leaver.calls, 1);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartRealPlay(leaver.login, 1, 1), -1) << "it is logged out";
    }
    ExpectAllGivenBack();
}

struct Changer {
    AlarmEar& ear = agent::NewAlarmEar();
    std::atomic<int> calls{0};
};

void HandOver(int login, int, int stream, unsigned, unsigned char*, unsigned, void* user) {
    auto* changer = static_cast<Changer*>(user);
    ++changer->calls;
    vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(login, 0, stream, AlarmEar::Hear, &changer->ear);
}

TEST_F(AlarmTest, Callback_ThatHandsOverToAnother_IsNotCalledAgain) {
    m_events.Begin("motion", 1);
    m_events.BeginBeat();
    const Session session;
    Changer changer;
    changer.ear.Expect(session.Login(), 5);
    ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(session.Login(), 0, 5, HandOver, &changer), 0);
    ASSERT_GE(changer.ear.Wait(2).size(), 2U);
    EXPECT_EQ(changer.calls, 1);
    EXPECT_EQ(changer.ear.Wrong(), 0U);
}

}  // namespace
