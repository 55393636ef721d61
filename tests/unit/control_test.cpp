// Recording switches, reboot, power off and factory restore: what the model library is asked, what the console says.
#include <string.h>
#include <unistd.h>

#include "control_fixture.h"

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

// ---- the recorder as a whole ---------------------------------------------------------------------------------------

class Control : public ControlFixture {};

TEST_F(Control, Reboot_AsksTheModelLibraryWithoutForce) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(ControlFixture::Control(10), 0); }), "");
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_reboot(1281, 0)"));
}

TEST_F(Control, PowerOff_AsksTheModelLibrary) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(ControlFixture::Control(11), 0); }), "");
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_poweroff(1281)"));
}

TEST_F(Control, Restore_AsksTheModelLibraryForAllParts) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(ControlFixture::Control(30), 0); }), "");
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_restore_factory(1281, 0xffffffff)"));
}

class ControlRefused : public ControlFixture, public testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        ControlFixture::SetUp();
        ON_CALL(platform, vexo_model_reboot).WillByDefault(Return(GetParam()));
        ON_CALL(platform, vexo_model_poweroff).WillByDefault(Return(GetParam()));
        ON_CALL(platform, vexo_model_restore_factory).WillByDefault(Return(GetParam()));
    }
};

TEST_P(ControlRefused, Reboot_Warns) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Control(10), 0); }),
              Warning("HostMgrControlReboot", "Why vexo_model_reboot hand:1281 failed!!\n"));
}

TEST_P(ControlRefused, PowerOff_Warns) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Control(11), 0); }),
              Warning("HostMgrControlShutDown", "Why vexo_model_poweroff hand:1281 failed!!\n"));
}

TEST_P(ControlRefused, Restore_IsAnError) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Control(30), 0); }),
              Error("HostMgrRestoreConfig", "vexo_model_restore_factory  failed!!\n"));
}

TEST_P(ControlRefused, Object_AnswersMinusOneForRestoreAlone) {
    vexo_hostmgr_control control;
    RawConsole([&] {
        EXPECT_EQ(control.HostMgrControlReboot(1), 0);
        EXPECT_EQ(control.HostMgrControlShutDown(1), 0);
        EXPECT_EQ(control.HostMgrRestoreConfig(1), -1);
    });
}

INSTANTIATE_TEST_SUITE_P(Answers, ControlRefused, testing::Values(-1, 1, INT32_MAX, INT32_MIN));

TEST_F(Control, Restore_IsZeroFromTheObject) {
    vexo_hostmgr_control control;
    EXPECT_EQ(control.HostMgrRestoreConfig(1), 0);
}

TEST_F(Control, UnknownCommand_FailsSilentlyAndCallsNothing) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(ControlFixture::Control(7), -1); }), "");
    EXPECT_THAT(Calls(), IsEmpty());
}

// ---- recording -----------------------------------------------------------------------------------------------------

class RecordControl : public ControlFixture {
protected:
    static int Record(uint32_t command, uint32_t value, int first = 1, int count = 1) {
        _tagVexoHostMgrRecordCmd record;
        memset(&record, 0xEE, sizeof(record));
        record.dwRecordCmd = command;
        record.dwSwitch = value;
        return Control(25, first, count, &record, sizeof(record));
    }

    Lines CallsOf(uint32_t command, uint32_t value, int first = 1, int count = 1) {
        EXPECT_EQ(RawConsole([=] { EXPECT_EQ(Record(command, value, first, count), 0); }), "");
        return Calls();
    }
};

struct RecordRow {
    const char* name;
    uint32_t command;
    uint32_t value;
    const char* sent;
};

static void PrintTo(const RecordRow& row, std::ostream* out) {
    *out << row.name;
}

static const RecordRow RECORD_ROWS[] = {
    {"Mode1Off", 1, 1, "vexo_model_set_record_mode(1281, 0, 0)"},
    {"Mode1On", 1, 2, "vexo_model_set_record_mode(1281, 0, 1)"},
    {"Mode2Off", 2, 1, "vexo_model_set_record_mode(1281, 0, 0)"},
    {"Mode2On", 2, 2, "vexo_model_set_record_mode(1281, 0, 2)"},
    {"ManualOff", 3, 1, "vexo_model_set_record_manual_enable(1281, 0, 0)"},
    {"ManualOn", 3, 2, "vexo_model_set_record_manual_enable(1281, 0, 1)"},
};

class RecordControlTable : public RecordControl, public testing::WithParamInterface<RecordRow> {};

TEST_P(RecordControlTable, Switch_ReachesTheModelLibrary) {
    EXPECT_THAT(CallsOf(GetParam().command, GetParam().value), ElementsAre(GetParam().sent));
}

INSTANTIATE_TEST_SUITE_P(Each, RecordControlTable, testing::ValuesIn(RECORD_ROWS), ByName());

TEST_F(RecordControl, SeveralChannels_AreSwitchedInOrder) {
    EXPECT_THAT(CallsOf(2, 2, 3, 2),
                ElementsAre("vexo_model_set_record_mode(1281, 2, 2)", "vexo_model_set_record_mode(1281, 3, 2)"));
    EXPECT_THAT(CallsOf(3, 1, 3, 2), ElementsAre("vexo_model_set_record_manual_enable(1281, 2, 0)",
                                                 "vexo_model_set_record_manual_enable(1281, 3, 0)"));
}

TEST_F(RecordControl, NoChannels_SwitchesNothing) {
    EXPECT_THAT(CallsOf(2, 2, 3, 0), IsEmpty());
    EXPECT_THAT(CallsOf(2, 2, 3, -1), IsEmpty());
    EXPECT_THAT(CallsOf(3, 2, INT32_MIN, INT32_MIN), IsEmpty());
}

TEST_F(RecordControl, ChannelsPastTheHighestNumber_GoOn) {
    EXPECT_THAT(CallsOf(2, 2, INT32_MAX, 3), ElementsAre("vexo_model_set_record_mode(1281, 2147483646, 2)",
                                                         "vexo_model_set_record_mode(1281, 2147483647, 2)",
                                                         "vexo_model_set_record_mode(1281, 2147483648, 2)"));
}

TEST_F(RecordControl, ChannelZero_IsPassedOnAsItIs) {
    EXPECT_THAT(CallsOf(1, 2, 0, 2), ElementsAre("vexo_model_set_record_mode(1281, 4294967295, 1)",
                                                 "vexo_model_set_record_mode(1281, 0, 1)"));
}

TEST_F(RecordControl, ChannelThatIsRefused_DoesNotStopTheOthers) {
    ON_CALL(platform, vexo_model_set_record_mode).WillByDefault(Return(-1));
    ON_CALL(platform, vexo_model_set_record_manual_enable).WillByDefault(Return(-1));
    EXPECT_EQ(CallsOf(2, 2, 1, 3).size(), 3u);
    EXPECT_EQ(CallsOf(3, 2, 1, 3).size(), 3u);
}

// The end is reached long after any sensible number of calls; the test ends it.
TEST_F(RecordControl, HugeNumberOfChannels_IsWalkedAllTheSame) {
    int calls = 0;
    ON_CALL(platform, vexo_model_set_record_mode)
        .WillByDefault([&calls](unsigned int, unsigned int channel, unsigned int) {
            if (++calls == 1000)
                _exit(channel == 1000 ? 0 : 1);
            return 0;
        });
    EXPECT_EXIT(Record(2, 2, 2, INT32_MAX), ExitedWithCode(0), "");
}

class RecordControlUnknown : public RecordControl, public testing::WithParamInterface<uint32_t> {};

// The command is looked at before the switch.
TEST_P(RecordControlUnknown, SaysWhyAndAnswersZero) {
    char text[64];
    snprintf(text, sizeof(text), "RecordCmd 0x%x not supported!!\n", GetParam());
    EXPECT_EQ(Console([] { EXPECT_EQ(Record(GetParam(), 2), 0); }), Error("HostMgrRecordConfig", text));
    EXPECT_EQ(Console([] { EXPECT_EQ(Record(GetParam(), 9), 0); }), Error("HostMgrRecordConfig", text));
    EXPECT_THAT(Calls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Commands, RecordControlUnknown, testing::Values(0, 4, 0x101, 0x80000001, 0xFFFFFFFF));

class RecordControlSwitch : public RecordControl, public testing::WithParamInterface<uint32_t> {};

TEST_P(RecordControlSwitch, NeitherOnNorOff_SaysWhyAndAnswersZero) {
    for (uint32_t command = 1; command <= 3; ++command)
        EXPECT_EQ(Console([=] { EXPECT_EQ(Record(command, GetParam()), 0); }),
                  Error("HostMgrRecordConfig", "uParams[0] is Zero or more than two, Just Invalid!!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Values, RecordControlSwitch, testing::Values(0, 3, 0x102, 0x80000002, 0xFFFFFFFF));

TEST_F(RecordControl, NoRecord_SaysWhyAndAnswersZero) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Control(25, 1, 1, nullptr, 28), 0); }),
              Error("HostMgrRecordConfig", "Param invalid: pInBuf " + AddressText(nullptr) + ", dwInLength 28!!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(RecordControl, RecordOfNoSize_SaysWhyAndAnswersZero) {
    _tagVexoHostMgrRecordCmd record = {3, 2, {}};
    EXPECT_EQ(Console([&] { EXPECT_EQ(Control(25, 1, 1, &record, 0), 0); }),
              Error("HostMgrRecordConfig", "Param invalid: pInBuf " + AddressText(&record) + ", dwInLength 0!!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(RecordControl, Object_AnswersMinusOneForWhatItRefuses) {
    vexo_hostmgr_control control;
    _tagVexoHostMgrRecordCmd unknown = {4, 2, {}};
    _tagVexoHostMgrRecordCmd neither = {3, 3, {}};
    _tagVexoHostMgrRecordCmd good = {3, 2, {}};
    RawConsole([&] {
        EXPECT_EQ(control.HostMgrRecordConfig(1, 1, 1, nullptr, 28), -1);
        EXPECT_EQ(control.HostMgrRecordConfig(1, 1, 1, &good, 0), -1);
        EXPECT_EQ(control.HostMgrRecordConfig(1, 1, 1, &unknown, sizeof(unknown)), -1);
        EXPECT_EQ(control.HostMgrRecordConfig(1, 1, 1, &neither, sizeof(neither)), -1);
        EXPECT_EQ(control.HostMgrRecordConfig(1, 1, 1, &good, sizeof(good)), 0);
    });
}

// ---- short records -------------------------------------------------------------------------------------------------

struct ShortRecord {
    const char* name;
    unsigned int size;
    const char* console;
};

static void PrintTo(const ShortRecord& given, std::ostream* out) {
    *out << given.name;
}

class RecordControlShort : public RecordControl, public testing::WithParamInterface<ShortRecord> {};

// The low byte of command 0x103 alone is command 3, whose switch then is missing.
TEST_P(RecordControlShort, IsReadAsFarAsItGoes) {
    static const unsigned char BYTES[28] = {0x03, 0x01, 0, 0, 0x02};
    std::vector<unsigned char> given(BYTES, BYTES + GetParam().size);
    const std::string console = Console([&] { EXPECT_EQ(Control(25, 1, 1, given.data(), GetParam().size), 0); });
    EXPECT_EQ(console, Error("HostMgrRecordConfig", GetParam().console));
    EXPECT_THAT(Calls(), IsEmpty());
}

static const ShortRecord SHORT_RECORDS[] = {{"OneByte", 1, "uParams[0] is Zero or more than two, Just Invalid!!\n"},
                                            {"TwoBytes", 2, "RecordCmd 0x103 not supported!!\n"},
                                            {"OneWord", 4, "RecordCmd 0x103 not supported!!\n"},
                                            {"Whole", 28, "RecordCmd 0x103 not supported!!\n"}};
INSTANTIATE_TEST_SUITE_P(Each, RecordControlShort, testing::ValuesIn(SHORT_RECORDS), ByName());

TEST_F(RecordControl, RecordOfFiveBytes_Switches) {
    std::vector<unsigned char> given = {3, 0, 0, 0, 2};
    EXPECT_EQ(Control(25, 1, 1, given.data(), 5), 0);
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_set_record_manual_enable(1281, 0, 1)"));
}

TEST_F(RecordControl, RecordOfFourBytesBeforeOthers_HasNoSwitch) {
    unsigned char bytes[] = {3, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(Console([&] { Control(25, 1, 1, bytes, 4); }),
              Error("HostMgrRecordConfig", "uParams[0] is Zero or more than two, Just Invalid!!\n"));
}

TEST_F(RecordControl, RecordAtAnyAddress_IsRead) {
    for (int offset = 0; offset < 4; ++offset) {
        unsigned char bytes[32] = {};
        const _tagVexoHostMgrRecordCmd record = {2, 2, {}};
        memcpy(bytes + offset, &record, sizeof(record));
        EXPECT_EQ(Control(25, 1, 1, bytes + offset, sizeof(record)), 0);
        EXPECT_THAT(Calls(), ElementsAre("vexo_model_set_record_mode(1281, 0, 2)"));
    }
}

// ---- the lock ------------------------------------------------------------------------------------------------------

// A mock lock complains of a second taking by the same thread.
TEST_F(RecordControl, Commands_TakeNoLockOfTheObject) {
    MockLock& lock = platform.Lock("vexo_hostmgr_control m_lock");
    lock.lock("test", "test");
    platform.TakeCalls();
    Control(10);
    Control(11);
    Control(30);
    Record(1, 2);
    EXPECT_THAT(With("vexo_hostmgr_control m_lock", platform.TakeCalls()), IsEmpty());
    lock.unlock("test", "test");
}

// ---- logout meanwhile ----------------------------------------------------------------------------------------------

TEST_F(RecordControl, LogoutDuringACommand_DoesNotWaitAndTheCommandEndsTheObject) {
    MockLock& lock = platform.Lock("vexo_hostmgr_control m_lock");
    bool deleted_meanwhile = true;
    ON_CALL(platform, vexo_model_set_record_mode).WillByDefault([&](unsigned int, unsigned int, unsigned int) {
        std::thread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); }).join();
        deleted_meanwhile = lock.Deleted();
        return 0;
    });
    EXPECT_EQ(Record(1, 2), 0);
    EXPECT_FALSE(deleted_meanwhile);
    EXPECT_TRUE(lock.Deleted());
}
