// Who gets a login's alarms and whether: the callback, the modes, the upload switch, the dump that shows them.
#include <string.h>

#include "alarm_fixture.h"

using testing::_;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

class AlarmSubscribe : public AlarmFixture {
protected:
    /** What the dump says of the login: its state, the handle, the channel, the stream and the mode. */
    static std::string Dumped(const std::string& state, const std::string& settings) {
        return "报警信息:\n<Host_0>\n报警启动状态:" + state + "\n报警设置信息:用户句柄 " + settings +
               "(1 用户 2 通道 3 特殊)\n</Host_0>\n";
    }

    /** The calls that are not the login's lookup. */
    Lines Calls() { return Without(TABLE_LOCK, platform.TakeCalls()); }

    Receiver receiver;
};

// ---- the callback --------------------------------------------------------------------------------------------------

TEST_F(AlarmSubscribe, Callback_IsKeptUnderTheLock) {
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Subscribe(&receiver), 0); }), "");
    EXPECT_THAT(Calls(), ElementsAreArray(UnderAlarmLock("HostMgr_Dev_SetAlarmCallback")));
}

TEST_F(AlarmSubscribe, NullCallback_IsKeptUnderTheLock) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(Unsubscribe(), 0); }), "");
    EXPECT_THAT(Calls(), ElementsAreArray(UnderAlarmLock("HostMgr_Dev_SetAlarmCallback")));
}

TEST_F(AlarmSubscribe, Callback_SwitchesOn) {
    Enable(0);
    Subscribe(&receiver);
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x501, 通道 0, 报警流类型 子码流, 报警模式 1"));
}

TEST_F(AlarmSubscribe, NullCallback_SwitchesOff) {
    Subscribe(&receiver);
    Unsubscribe();
    EXPECT_EQ(AlarmDump(), Dumped("未启动", "0x501, 通道 0, 报警流类型 子码流, 报警模式 1"));
}

TEST_F(AlarmSubscribe, SecondCallback_ReplacesAllOfTheFirst) {
    vexo_HostMgr_Dev_SetAlarmCallback(LOGIN, 9, 1, Receiver::Callback, &receiver);
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x501, 通道 9, 报警流类型 主码流, 报警模式 3"));
    Receiver second;
    Subscribe(&second);
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x501, 通道 0, 报警流类型 子码流, 报警模式 1"));
    m_events = {AnEvent(2, 2)};
    Pass();
    EXPECT_THAT(receiver.TakeLines(), IsEmpty());
    EXPECT_EQ(second.TakeLines().size(), 1u);
}

TEST_F(AlarmSubscribe, SettingsOfTwoLogins_AreTheirOwn) {
    LogInAll({2});
    Subscribe(&receiver, 2, 5, 0);
    EXPECT_EQ(AlarmDump(),
              "报警信息:\n"
              "<Host_0>\n"
              "报警启动状态:启动\n"
              "报警设置信息:用户句柄 0x0, 通道 0, 报警流类型 子码流, 报警模式 0(1 用户 2 通道 3 特殊)\n"
              "</Host_0>\n"
              "<Host_1>\n"
              "报警启动状态:启动\n"
              "报警设置信息:用户句柄 0x2, 通道 5, 报警流类型 子码流, 报警模式 2(1 用户 2 通道 3 特殊)\n"
              "</Host_1>\n");
}

// The frame lets no such handle through; the object refuses it all the same.
class AlarmSubscribeBelowOne : public AlarmSubscribe, public testing::WithParamInterface<int> {};

TEST_P(AlarmSubscribeBelowOne, IsRefusedAndNothingChanges) {
    vexo_hostmgr_alarm alarm;
    alarm.HostMgr_Dev_SetAlarmCallback(7, 0, 1, Receiver::Callback, &receiver);
    platform.TakeCalls();
    EXPECT_EQ(Console([&] { EXPECT_EQ(alarm.HostMgr_Dev_SetAlarmCallback(GetParam(), 3, 0, nullptr, nullptr), -1); }),
              Error("HostMgr_Dev_SetAlarmCallback", "Param invalid!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    EXPECT_EQ(alarm.IsRun(), 1u);
    EXPECT_EQ(alarm.Subscription().hLogin, 7);
    EXPECT_EQ(alarm.Subscription().pUser, &receiver);
}

INSTANTIATE_TEST_SUITE_P(Handles, AlarmSubscribeBelowOne, testing::Values(0, -1, INT32_MIN));

// ---- modes ---------------------------------------------------------------------------------------------------------

struct Mode {
    const char* name;
    int channel;
    int stream;
    const char* settings;
};

static void PrintTo(const Mode& mode, std::ostream* out) {
    *out << mode.name;
}

static const Mode MODES[] = {
    {"NoChannelNoStream", 0, 0, "通道 0, 报警流类型 子码流, 报警模式 1"},
    {"NoChannelMainStream", 0, 1, "通道 0, 报警流类型 主码流, 报警模式 1"},
    {"NoChannelSubStream", 0, 2, "通道 0, 报警流类型 子码流, 报警模式 1"},
    {"ChannelNoStream", 3, 0, "通道 3, 报警流类型 子码流, 报警模式 2"},
    {"ChannelMainStream", 3, 1, "通道 3, 报警流类型 主码流, 报警模式 3"},
    {"ChannelSubStream", 3, 2, "通道 3, 报警流类型 子码流, 报警模式 3"},
    {"ChannelBelowZero", -1, 0, "通道 -1, 报警流类型 子码流, 报警模式 2"},
    {"StreamBelowZero", 3, -1, "通道 3, 报警流类型 子码流, 报警模式 3"},
    {"HighestNumbers", INT32_MAX, INT32_MAX, "通道 2147483647, 报警流类型 子码流, 报警模式 3"},
};

class AlarmModes : public AlarmSubscribe, public testing::WithParamInterface<Mode> {};

TEST_P(AlarmModes, FollowChannelAndStream) {
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Subscribe(&receiver, LOGIN, GetParam().channel, GetParam().stream), 0); }),
              "");
    EXPECT_EQ(AlarmDump(), Dumped("启动", std::string("0x501, ") + GetParam().settings));
}

INSTANTIATE_TEST_SUITE_P(Each, AlarmModes, testing::ValuesIn(MODES), ByName());

// ---- the switch ----------------------------------------------------------------------------------------------------

TEST_F(AlarmSubscribe, NewLogin_IsSwitchedOnWithoutSettings) {
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x0, 通道 0, 报警流类型 子码流, 报警模式 0"));
}

class AlarmSwitch : public AlarmSubscribe, public testing::WithParamInterface<uint32_t> {};

TEST_P(AlarmSwitch, TakesAnyWord) {
    vexo_hostmgr_alarm alarm;
    uint32_t value = GetParam();
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(alarm.HostMgrEnableAlarm(1, &value, sizeof(value)), 0); }), "");
    EXPECT_EQ(alarm.IsRun(), GetParam());
}

TEST_P(AlarmSwitch, AnythingButZeroShowsAsOn) {
    Enable(GetParam());
    EXPECT_EQ(AlarmDump(), Dumped(GetParam() != 0 ? "启动" : "未启动", "0x0, 通道 0, 报警流类型 子码流, 报警模式 0"));
}

INSTANTIATE_TEST_SUITE_P(Values, AlarmSwitch, testing::Values(0, 1, 2, 0x80000000, 0xFFFFFFFF));

TEST_F(AlarmSubscribe, Switch_IsSetAndReadUnderTheLock) {
    EXPECT_EQ(Enable(0), 0);
    EXPECT_THAT(Calls(), ElementsAreArray(UnderAlarmLock("HostMgrEnableAlarm")));
    vexo_hostmgr_alarm alarm;
    platform.TakeCalls();
    EXPECT_EQ(alarm.IsRun(), 1u);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderAlarmLock("IsRun")));
}

TEST_F(AlarmSubscribe, SwitchedOnWithoutACallback_DeliversNothing) {
    Subscribe(&receiver);
    Unsubscribe();
    Enable(1);
    m_events = {AnEvent(2, 2)};
    Pass();
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x501, 通道 0, 报警流类型 子码流, 报警模式 1"));
    EXPECT_THAT(receiver.TakeLines(), IsEmpty());
}

TEST_F(AlarmSubscribe, SwitchedOffAndOn_KeepsTheCallback) {
    Subscribe(&receiver);
    Enable(0);
    m_events = {AnEvent(2, 2)};
    Pass();
    EXPECT_THAT(receiver.TakeLines(), IsEmpty());
    Enable(7);
    Pass();
    EXPECT_EQ(receiver.TakeLines().size(), 1u);
}

// Control finds the object by its own login; what the object is told besides does not matter.
TEST_F(AlarmSubscribe, SwitchOfAnotherLoginsHandle_IsStillTheObjects) {
    vexo_hostmgr_alarm alarm;
    alarm.HostMgr_Dev_SetAlarmCallback(7, 0, 0, Receiver::Callback, &receiver);
    uint32_t off = 0;
    EXPECT_EQ(alarm.HostMgrEnableAlarm(8, &off, sizeof(off)), 0);
    EXPECT_EQ(alarm.IsRun(), 0u);
}

// The first buffer counts; the other two are not looked at.
TEST_F(AlarmSubscribe, SwitchInAnotherBuffer_IsNotRead) {
    uint32_t off = 0;
    EXPECT_EQ(Console([&] {
                  EXPECT_EQ(vexo_HostMgr_Dev_Control(LOGIN, 12, 0, 0, nullptr, 0, &off, sizeof(off), &off, sizeof(off)),
                            0);
              }),
              Error("HostMgrEnableAlarm", "Param invalid !!\n"));
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x0, 通道 0, 报警流类型 子码流, 报警模式 0"));
}

struct NoSwitch {
    const char* name;
    bool buffer;
    unsigned int size;
};

static void PrintTo(const NoSwitch& none, std::ostream* out) {
    *out << none.name;
}

class AlarmWithoutSwitch : public AlarmSubscribe, public testing::WithParamInterface<NoSwitch> {
protected:
    uint32_t m_value = 0;
    void* m_buffer = GetParam().buffer ? &m_value : nullptr;
};

TEST_P(AlarmWithoutSwitch, Control_SaysWhyAndAnswersZero) {
    EXPECT_EQ(Console([this] { EXPECT_EQ(Enable(m_buffer, GetParam().size), 0); }),
              Error("HostMgrEnableAlarm", "Param invalid !!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x0, 通道 0, 报警流类型 子码流, 报警模式 0"));
}

TEST_P(AlarmWithoutSwitch, Object_IsRefused) {
    vexo_hostmgr_alarm alarm;
    RawConsole([&] { EXPECT_EQ(alarm.HostMgrEnableAlarm(1, m_buffer, GetParam().size), -1); });
    EXPECT_EQ(alarm.IsRun(), 1u);
}

static const NoSwitch NO_SWITCHES[] = {{"NoBuffer", false, 4}, {"NoSize", true, 0}, {"Neither", false, 0}};
INSTANTIATE_TEST_SUITE_P(Each, AlarmWithoutSwitch, testing::ValuesIn(NO_SWITCHES), ByName());

// ---- short and unaligned switches ----------------------------------------------------------------------------------

struct ShortSwitch {
    const char* name;
    unsigned int size;
    uint32_t value;
};

static void PrintTo(const ShortSwitch& given, std::ostream* out) {
    *out << given.name;
}

class AlarmShortSwitch : public AlarmSubscribe, public testing::WithParamInterface<ShortSwitch> {};

TEST_P(AlarmShortSwitch, IsReadAsFarAsItGoes) {
    static const unsigned char BYTES[] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66};
    vexo_hostmgr_alarm alarm;
    std::vector<unsigned char> given(BYTES, BYTES + GetParam().size);
    EXPECT_EQ(alarm.HostMgrEnableAlarm(1, given.data(), GetParam().size), 0);
    EXPECT_EQ(alarm.IsRun(), GetParam().value);
}

static const ShortSwitch SHORT_SWITCHES[] = {{"OneByte", 1, 0x11},
                                             {"TwoBytes", 2, 0x2211},
                                             {"ThreeBytes", 3, 0x332211},
                                             {"AWord", 4, 0x44332211},
                                             {"MoreThanAWord", 6, 0x44332211}};
INSTANTIATE_TEST_SUITE_P(Each, AlarmShortSwitch, testing::ValuesIn(SHORT_SWITCHES), ByName());

TEST_F(AlarmSubscribe, OneByteOfZeroBeforeOthers_SwitchesOff) {
    unsigned char bytes[] = {0, 1, 1, 1};
    EXPECT_EQ(Enable(bytes, 1), 0);
    EXPECT_EQ(AlarmDump(), Dumped("未启动", "0x0, 通道 0, 报警流类型 子码流, 报警模式 0"));
}

TEST_F(AlarmSubscribe, SwitchAtAnyAddress_IsRead) {
    for (int offset = 0; offset < 4; ++offset) {
        vexo_hostmgr_alarm alarm;
        unsigned char bytes[8] = {};
        const uint32_t value = 0xA1B2C3D4;
        memcpy(bytes + offset, &value, sizeof(value));
        alarm.HostMgrEnableAlarm(1, bytes + offset, sizeof(value));
        EXPECT_EQ(alarm.IsRun(), value) << offset;
    }
}

// ---- the dump ------------------------------------------------------------------------------------------------------

TEST_F(AlarmSubscribe, Dump_TriesTheLock) {
    AlarmDump();
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre(OnAlarm("rd_trylock", "HostMgrAlarmDump"), OnAlarm("unlock", "HostMgrAlarmDump")));
}

TEST_F(AlarmSubscribe, Dump_WritesNothingToTheConsole) {
    EXPECT_EQ(RawConsole([this] { AlarmDump(); }), "");
}

TEST_F(AlarmSubscribe, DumpAfterLogoutAndLogin_ShowsNothingOfTheOldLogin) {
    Subscribe(&receiver, LOGIN, 4, 1);
    vexo_HostMgr_Dev_Logout(LOGIN);
    LogInAll({LOGIN});
    EXPECT_EQ(AlarmDump(), Dumped("启动", "0x0, 通道 0, 报警流类型 子码流, 报警模式 0"));
}

class BusyAlarmDump : public AlarmSubscribe {
protected:
    void SetUp() override {
        AlarmSubscribe::SetUp();
        ON_CALL(platform.Lock(ALARM_LOCK), rd_trylock(_, _)).WillByDefault(Return(1));
    }

    void GiveInfo(const std::string& info) {
        ON_CALL(platform.Lock(ALARM_LOCK), get_info(_, _)).WillByDefault([this, info](char* buffer, unsigned int size) {
            platform.Record("get_info of " + std::to_string(size));
            memcpy(buffer, info.data(), info.size());
            return 0;
        });
    }

    static std::string Busy(const std::string& info) {
        return "报警信息:\n<Host_0>\nrd_trylock fail, lock info is '" + info + "'\n</Host_0>\n";
    }
};

TEST_F(BusyAlarmDump, PrintsWhoHoldsTheLock) {
    GiveInfo("thread 5 in IsRun");
    EXPECT_EQ(AlarmDump(), Busy("thread 5 in IsRun"));
}

TEST_F(BusyAlarmDump, AsksForTheInformationAndDoesNotUnlock) {
    GiveInfo("thread 5");
    AlarmDump();
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("get_info of 256"));
}

TEST_F(BusyAlarmDump, InformationThatFillsTheBuffer_IsTerminated) {
    GiveInfo(std::string(256, 'x'));
    EXPECT_EQ(AlarmDump(), Busy(std::string(255, 'x')));
}

TEST_F(BusyAlarmDump, NoInformation_IsEmpty) {
    EXPECT_EQ(AlarmDump(), Busy(""));
}
