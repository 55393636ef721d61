// PTZ commands: what each becomes for the model library, which channels get it, what is remembered for later ones.
#include <string.h>
#include <unistd.h>

#include "control_fixture.h"

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

class Ptz : public ControlFixture {
protected:
    static int Send(uint32_t command, uint32_t p1 = 0, uint32_t p2 = 0, uint32_t p3 = 0, int hLogin = LOGIN) {
        return SendTo(1, 1, command, p1, p2, p3, hLogin);
    }
    static int SendTo(int first, int count, uint32_t command, uint32_t p1 = 0, uint32_t p2 = 0, uint32_t p3 = 0,
                      int hLogin = LOGIN) {
        _tagVexoHostMgrPtzCmd record = {command, p1, p2, p3, {0xE1, 0xE2, 0xE3}};
        return Control(2, first, count, &record, sizeof(record), hLogin);
    }

    /** What the command that is sent to channel 1 becomes, as "code, {kind, values}". */
    static std::string Sent(const std::string& order) { return "vexo_model_send_ptz_cmd(1281, 0, " + order + ")"; }

    static std::string NotSupported(uint32_t command) {
        char text[64];
        snprintf(text, sizeof(text), "PTZCmd 0x%x not supported!!\n", command);
        return Error("HostMgrControlPtz", text);
    }
};

// ---- the table -----------------------------------------------------------------------------------------------------

struct PtzRow {
    const char* name;
    uint32_t command;
    uint32_t p1;
    uint32_t p2;
    uint32_t p3;
    const char* order;
};

static void PrintTo(const PtzRow& row, std::ostream* out) {
    *out << row.name;
}

static const PtzRow PTZ_ROWS[] = {
    {"Command2", 2, 11, 22, 33, "0x600, {0, 22, 0, 0, 0}"},
    {"Command3", 3, 11, 22, 33, "0x500, {0, 22, 0, 0, 0}"},
    {"Command8", 8, 11, 22, 33, "0x700, {1, 11, 0, 0, 0}"},
    {"Command9", 9, 11, 22, 33, "0x701, {1, 11, 0, 0, 0}"},
    {"Command11", 11, 11, 22, 33, "0x200, {0, 22, 0, 0, 0}"},
    {"Command12", 12, 11, 22, 33, "0x201, {0, 22, 0, 0, 0}"},
    {"Command13", 13, 11, 22, 33, "0x300, {0, 22, 0, 0, 0}"},
    {"Command14", 14, 11, 22, 33, "0x301, {0, 22, 0, 0, 0}"},
    {"Command15", 15, 11, 22, 33, "0x400, {0, 22, 0, 0, 0}"},
    {"Command16", 16, 11, 22, 33, "0x401, {0, 22, 0, 0, 0}"},
    {"Command21", 21, 11, 22, 33, "0x100, {0, 22, 0, 0, 0}"},
    {"Command22", 22, 11, 22, 33, "0x101, {0, 22, 0, 0, 0}"},
    {"Command23", 23, 11, 22, 33, "0x102, {0, 22, 0, 0, 0}"},
    {"Command24", 24, 11, 22, 33, "0x103, {0, 22, 0, 0, 0}"},
    {"Command25", 25, 11, 22, 33, "0x104, {0, 22, 0, 0, 0}"},
    {"Command26", 26, 11, 22, 33, "0x105, {0, 22, 0, 0, 0}"},
    {"Command27", 27, 11, 22, 33, "0x106, {0, 22, 0, 0, 0}"},
    {"Command28", 28, 11, 22, 33, "0x107, {0, 22, 0, 0, 0}"},
    {"Command21With0", 21, 0, 22, 33, "0x100, {0, 22, 0, 0, 0}"},
    {"Command22With2", 22, 2, 22, 33, "0x101, {0, 22, 0, 0, 0}"},
    {"Command28WithMany", 28, 0x80000001, 22, 33, "0x107, {0, 22, 0, 0, 0}"},
    {"Command21With1", 21, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command22With1", 22, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command23With1", 23, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command24With1", 24, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command25With1", 25, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command26With1", 26, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command27With1", 27, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command28With1", 28, 1, 22, 33, "0x13149527, {0, 0, 0, 0, 0}"},
    {"Command16With1", 16, 1, 22, 33, "0x401, {0, 22, 0, 0, 0}"},
    {"Command29", 29, 11, 22, 33, "0x809, {0, 22, 0, 0, 0}"},
    {"Command29With1", 29, 1, 22, 33, "0x809, {0, 22, 0, 0, 0}"},
    {"Command32", 32, 11, 22, 33, "0x802, {3, 11, 33, 0, 0}"},
    {"Command33", 33, 11, 22, 33, "0x803, {3, 11, 0, 22, 0}"},
    {"Command34", 34, 11, 22, 33, "0x807, {2, 10, 0, 0, 0}"},
    {"Command34With0", 34, 0, 22, 33, "0x807, {2, 0, 0, 0, 0}"},
    {"Command34With1", 34, 1, 22, 33, "0x807, {2, 0, 0, 0, 0}"},
    {"Command34With5", 34, 5, 22, 33, "0x807, {2, 4, 0, 0, 0}"},
    {"Command34WithTheHighest", 34, 0xFFFFFFFF, 22, 33, "0x807, {2, 4294967294, 0, 0, 0}"},
    {"Command35", 35, 11, 22, 33, "0x808, {2, 10, 0, 0, 0}"},
    {"Command35With0", 35, 0, 22, 33, "0x808, {2, 0, 0, 0, 0}"},
    {"Command36", 36, 11, 22, 33, "0x805, {2, 10, 0, 0, 0}"},
    {"Command36With0", 36, 0, 22, 33, "0x805, {2, 0, 0, 0, 0}"},
    {"Command37", 37, 11, 22, 33, "0x800, {3, 11, 0, 0, 0}"},
    {"Command38", 38, 11, 22, 33, "0x801, {3, 11, 0, 0, 0}"},
    {"Command39", 39, 11, 22, 33, "0x702, {1, 11, 0, 0, 0}"},
    {"Command41", 41, 11, 22, 33, "0x1, {0, 0, 0, 0, 0}"},
    {"Command42", 42, 11, 22, 33, "0x80a, {4, 11, 22, 33, 0}"},
};

class PtzTable : public Ptz, public testing::WithParamInterface<PtzRow> {};

TEST_P(PtzTable, Command_BecomesItsOrder) {
    const PtzRow& row = GetParam();
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Send(row.command, row.p1, row.p2, row.p3), 0); }), "");
    EXPECT_THAT(Calls(), ElementsAre(Sent(row.order)));
}

INSTANTIATE_TEST_SUITE_P(Each, PtzTable, testing::ValuesIn(PTZ_ROWS), ByName());

class PtzNotSupported : public Ptz, public testing::WithParamInterface<uint32_t> {};

TEST_P(PtzNotSupported, SaysSoAndSendsNothing) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Send(GetParam(), 1, 2, 3), 0); }), NotSupported(GetParam()));
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_P(PtzNotSupported, Object_AnswersMinusOne) {
    vexo_hostmgr_control control;
    _tagVexoHostMgrPtzCmd record = {GetParam(), 1, 2, 3, {}};
    RawConsole([&] { EXPECT_EQ(control.HostMgrControlPtz(1, 1, 1, &record, sizeof(record)), -1); });
}

INSTANTIATE_TEST_SUITE_P(Commands, PtzNotSupported,
                         testing::Values(0, 1, 4, 5, 6, 7, 10, 17, 18, 19, 20, 43, 44, 0x102, 0x80000002, 0xFFFFFFFF));

TEST_F(Ptz, TourFill_WarnsAndSendsNothing) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Send(40, 1, 2, 3), 0); }),
              Warning("HostMgrControlPtz", "VEXO_PTZ_CRUSIE_SET_FILL not supported!!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
    vexo_hostmgr_control control;
    _tagVexoHostMgrPtzCmd record = {40, 1, 2, 3, {}};
    RawConsole([&] { EXPECT_EQ(control.HostMgrControlPtz(1, 1, 1, &record, sizeof(record)), -1); });
}

// ---- what is remembered --------------------------------------------------------------------------------------------

TEST_F(Ptz, TourParameters_AreRememberedAndNotSent) {
    EXPECT_EQ(RawConsole([] {
                  EXPECT_EQ(Send(30, 1, 2, 50), 0);
                  EXPECT_EQ(Send(31, 1, 2, 60), 0);
              }),
              "");
    EXPECT_THAT(Calls(), IsEmpty());
    EXPECT_EQ(Send(32, 4, 5, 6), 0);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x802, {3, 4, 6, 50, 60}")));
}

TEST_F(Ptz, OneTourParameter_LeavesTheOtherZero) {
    Send(31, 1, 2, 60);
    Send(32, 4, 5, 6);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x802, {3, 4, 6, 0, 60}")));
}

TEST_F(Ptz, TourParameters_StayForTheNextPoint) {
    Send(30, 1, 2, 50);
    Send(31, 1, 2, 60);
    Send(32, 4, 5, 6);
    Send(32, 7, 8, 9);
    Send(30, 1, 2, 70);
    Send(32, 1, 2, 3);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x802, {3, 4, 6, 50, 60}"), Sent("0x802, {3, 7, 9, 50, 60}"),
                                     Sent("0x802, {3, 1, 3, 70, 60}")));
}

TEST_F(Ptz, OtherCommands_LeaveTheTourParametersAlone) {
    Send(30, 1, 2, 50);
    Send(31, 1, 2, 60);
    for (uint32_t command = 0; command < 45; ++command) {
        if (command < 30 || command > 31)
            RawConsole([command] { Send(command, 7, 8, 9); });
    }
    Calls();
    Send(32, 4, 5, 6);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x802, {3, 4, 6, 50, 60}")));
}

TEST_F(Ptz, TourParameters_AreRememberedWhateverTheChannels) {
    SendTo(5, 0, 30, 1, 2, 50);
    SendTo(9, -3, 31, 1, 2, 60);
    Send(32, 4, 5, 6);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x802, {3, 4, 6, 50, 60}")));
}

TEST_F(Ptz, TourParameters_AreEachLoginsOwn) {
    LogInAll({2});
    Send(30, 1, 2, 50);
    Send(32, 4, 5, 6, 2);
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_send_ptz_cmd(2, 0, 0x802, {3, 4, 6, 0, 0})"));
}

TEST_F(Ptz, TourParameters_EndWithTheLogin) {
    Send(30, 1, 2, 50);
    vexo_HostMgr_Dev_Logout(LOGIN);
    LogInAll({LOGIN});
    Send(32, 4, 5, 6);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x802, {3, 4, 6, 0, 0}")));
}

// ---- channels ------------------------------------------------------------------------------------------------------

TEST_F(Ptz, SeveralChannels_GetTheSameOrderInTurn) {
    EXPECT_EQ(SendTo(3, 2, 24, 0, 5), 0);
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_send_ptz_cmd(1281, 2, 0x103, {0, 5, 0, 0, 0})",
                                     "vexo_model_send_ptz_cmd(1281, 3, 0x103, {0, 5, 0, 0, 0})"));
}

class PtzWithoutChannels : public Ptz, public testing::WithParamInterface<int> {};

TEST_P(PtzWithoutChannels, SendsNothingAndIsNoFailure) {
    EXPECT_EQ(RawConsole([] {
                  EXPECT_EQ(SendTo(1, GetParam(), 24, 0, 5), 0);
                  EXPECT_EQ(SendTo(INT32_MIN, GetParam(), 24, 0, 5), 0);
              }),
              "");
    EXPECT_THAT(Calls(), IsEmpty());
    vexo_hostmgr_control control;
    _tagVexoHostMgrPtzCmd record = {24, 0, 5, 0, {}};
    EXPECT_EQ(control.HostMgrControlPtz(1, 1, GetParam(), &record, sizeof(record)), 0);
}

INSTANTIATE_TEST_SUITE_P(Counts, PtzWithoutChannels, testing::Values(0, -1, INT32_MIN));

TEST_F(Ptz, ChannelZeroAndBelow_ArePassedOnAsTheyAre) {
    SendTo(-1, 3, 41);
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_send_ptz_cmd(1281, 4294967294, 0x1, {0, 0, 0, 0, 0})",
                                     "vexo_model_send_ptz_cmd(1281, 4294967295, 0x1, {0, 0, 0, 0, 0})",
                                     "vexo_model_send_ptz_cmd(1281, 0, 0x1, {0, 0, 0, 0, 0})"));
}

TEST_F(Ptz, LowestFirstChannel_IsPassedOnAsItIs) {
    SendTo(INT32_MIN, 1, 41);
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_send_ptz_cmd(1281, 2147483647, 0x1, {0, 0, 0, 0, 0})"));
}

TEST_F(Ptz, ChannelsPastTheHighestNumber_GoOn) {
    SendTo(INT32_MAX, 3, 41);
    EXPECT_THAT(Calls(), ElementsAre("vexo_model_send_ptz_cmd(1281, 2147483646, 0x1, {0, 0, 0, 0, 0})",
                                     "vexo_model_send_ptz_cmd(1281, 2147483647, 0x1, {0, 0, 0, 0, 0})",
                                     "vexo_model_send_ptz_cmd(1281, 2147483648, 0x1, {0, 0, 0, 0, 0})"));
}

// The end is reached long after any sensible number of calls; the test ends it.
TEST_F(Ptz, HugeNumberOfChannels_IsWalkedAllTheSame) {
    int calls = 0;
    ON_CALL(platform, vexo_model_send_ptz_cmd)
        .WillByDefault([&calls](unsigned int, unsigned int channel, unsigned int, const vexo_ipc_ptz_ctrl_para*) {
            if (++calls == 1000)
                _exit(channel == 1000 ? 0 : 1);
            return 0;
        });
    EXPECT_EXIT(SendTo(2, INT32_MAX, 41), ExitedWithCode(0), "");
}

TEST_F(Ptz, ChannelThatIsRefused_DoesNotStopTheOthers) {
    ON_CALL(platform, vexo_model_send_ptz_cmd).WillByDefault(Return(-1));
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(SendTo(1, 3, 41), 0); }), "");
    EXPECT_EQ(Calls().size(), 3u);
}

// ---- the record ----------------------------------------------------------------------------------------------------

TEST_F(Ptz, NoRecord_SaysWhyAndAnswersZero) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Control(2, 1, 1, nullptr, 28), 0); }),
              Error("HostMgrControlPtz", "Param invalid: pInBuf " + AddressText(nullptr) + ", dwInLength 28, !!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(Ptz, RecordOfNoSize_SaysWhyAndAnswersZero) {
    _tagVexoHostMgrPtzCmd record = {41, 0, 0, 0, {}};
    EXPECT_EQ(Console([&] { EXPECT_EQ(Control(2, 1, 1, &record, 0), 0); }),
              Error("HostMgrControlPtz", "Param invalid: pInBuf " + AddressText(&record) + ", dwInLength 0, !!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(Ptz, NoRecordOrNoSize_IsMinusOneFromTheObject) {
    vexo_hostmgr_control control;
    _tagVexoHostMgrPtzCmd record = {41, 0, 0, 0, {}};
    RawConsole([&] {
        EXPECT_EQ(control.HostMgrControlPtz(1, 1, 1, nullptr, 28), -1);
        EXPECT_EQ(control.HostMgrControlPtz(1, 1, 1, &record, 0), -1);
    });
}

struct ShortPtz {
    const char* name;
    unsigned int size;
    const char* order;
};

static void PrintTo(const ShortPtz& given, std::ostream* out) {
    *out << given.name;
}

class PtzShort : public Ptz, public testing::WithParamInterface<ShortPtz> {};

// Command 42 sends all three; the memory ends where the record does.
TEST_P(PtzShort, IsReadAsFarAsItGoes) {
    static const unsigned char BYTES[28] = {42, 0, 0, 0, 1, 1, 0, 0, 2, 2, 0, 0, 3, 3};
    std::vector<unsigned char> given(BYTES, BYTES + GetParam().size);
    EXPECT_EQ(Control(2, 1, 1, given.data(), GetParam().size), 0);
    EXPECT_THAT(Calls(), ElementsAre(Sent(std::string("0x80a, ") + GetParam().order)));
}

static const ShortPtz SHORT_PTZ[] = {
    {"OneByte", 1, "{4, 0, 0, 0, 0}"},          {"OneWord", 4, "{4, 0, 0, 0, 0}"},
    {"FiveBytes", 5, "{4, 1, 0, 0, 0}"},        {"TwoWords", 8, "{4, 257, 0, 0, 0}"},
    {"ThreeWords", 12, "{4, 257, 514, 0, 0}"},  {"ThirteenBytes", 13, "{4, 257, 514, 3, 0}"},
    {"FourWords", 16, "{4, 257, 514, 771, 0}"}, {"SevenWords", 28, "{4, 257, 514, 771, 0}"}};
INSTANTIATE_TEST_SUITE_P(Each, PtzShort, testing::ValuesIn(SHORT_PTZ), ByName());

TEST_F(Ptz, RecordOfFourBytesBeforeOthers_HasNoParameters) {
    _tagVexoHostMgrPtzCmd record = {42, 1, 2, 3, {}};
    Control(2, 1, 1, &record, 4);
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x80a, {4, 0, 0, 0, 0}")));
}

TEST_F(Ptz, RecordLongerThanItsFields_IsReadAsFarAsThey) {
    struct {
        _tagVexoHostMgrPtzCmd record;
        uint32_t more[4];
    } longer = {{42, 1, 2, 3, {4, 5, 6}}, {7, 8, 9, 10}};
    Control(2, 1, 1, &longer, sizeof(longer));
    EXPECT_THAT(Calls(), ElementsAre(Sent("0x80a, {4, 1, 2, 3, 0}")));
}

TEST_F(Ptz, RecordAtAnyAddress_IsRead) {
    for (int offset = 0; offset < 4; ++offset) {
        unsigned char bytes[32] = {};
        const _tagVexoHostMgrPtzCmd record = {42, 1, 2, 3, {}};
        memcpy(bytes + offset, &record, sizeof(record));
        Control(2, 1, 1, bytes + offset, sizeof(record));
        EXPECT_THAT(Calls(), ElementsAre(Sent("0x80a, {4, 1, 2, 3, 0}")));
    }
}

// The second buffer counts; the other two are not looked at.
TEST_F(Ptz, RecordInAnotherBuffer_IsNotRead) {
    _tagVexoHostMgrPtzCmd record = {41, 0, 0, 0, {}};
    RawConsole([&] {
        EXPECT_EQ(
            vexo_HostMgr_Dev_Control(LOGIN, 2, 1, 1, &record, sizeof(record), nullptr, 0, &record, sizeof(record)), 0);
    });
    EXPECT_THAT(Calls(), IsEmpty());
}

// ---- locks and threads ---------------------------------------------------------------------------------------------

TEST_F(Ptz, Command_TakesNoLockOfTheObject) {
    MockLock& lock = platform.Lock("vexo_hostmgr_control m_lock");
    lock.lock("test", "test");
    platform.TakeCalls();
    Send(30, 1, 2, 3);
    Send(32, 1, 2, 3);
    EXPECT_THAT(With("vexo_hostmgr_control m_lock", platform.TakeCalls()), IsEmpty());
    lock.unlock("test", "test");
}

// Which of the values a point gets is open; that it is one of them is not.
TEST_F(Ptz, ManyThreadsOfOneLogin_SendValuesThatWereSet) {
    ON_CALL(platform, vexo_model_send_ptz_cmd)
        .WillByDefault([](unsigned int, unsigned int, unsigned int code, const vexo_ipc_ptz_ctrl_para* para) {
            EXPECT_EQ(code, 0x802u);
            EXPECT_EQ(para->value[2] % 1000, 0u);
            EXPECT_EQ(para->value[3] % 77, 0u);
            return 0;
        });
    std::vector<std::thread> threads;
    for (uint32_t number = 1; number <= 4; ++number)
        threads.emplace_back([number] {
            for (int round = 0; round < 50; ++round) {
                Send(30, number, 0, number * 1000);
                Send(31, number, 0, number * 77);
                Send(32, number, 0, number);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}
