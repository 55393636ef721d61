// GetConfig before it comes to a record: the checks, the command table, sizes that are refused, the version;
// GetAbility.
#include "config_fixture.h"

using testing::IsEmpty;

using namespace vexo_soft;

class ConfigDispatch : public ConfigFixture {};
class ConfigVersion : public ConfigFixture {};
class ConfigAbility : public ConfigFixture {};

/** A command with the least size that it takes. */
struct Command {
    const char* name;
    unsigned int number;
    unsigned int least;
    bool speaks;  // a smaller size is refused with a message
};

static void PrintTo(const Command& command, std::ostream* out) {
    *out << command.name;
}

static const Command COMMANDS[] = {
    {"Device", 100, 132, false},      {"Encode", 106, 116, false},    {"DeviceTime", 118, 12, false},
    {"Users", 124, 6724, false},      {"ZeroCodec", 160, 56, false},  {"WorkState", 254, 57464, true},
    {"Disks8", 1054, 1160, true},     {"Network", 1062, 3848, false}, {"Disks24", 2026, 3464, true},
    {"Platforms", 3002, 3200, false}, {"Factory", 3010, 304, false},  {"Version", 30000, 4, true},
    {"PictureDir", 30001, 19, true},
};

class ConfigCommands : public ConfigFixture, public testing::WithParamInterface<Command> {};

INSTANTIATE_TEST_SUITE_P(Each, ConfigCommands, testing::ValuesIn(COMMANDS), ByName());

static std::string SizeRefused(const std::string& address, unsigned int size) {
    return Error("HostMgr_Dev_GetConfig",
                 "lpOutBuffer " + address + ", dwOutBufferSize " + std::to_string(size) + "\n");
}

// ---- checks before the command -------------------------------------------------------------------------------------

TEST_P(ConfigCommands, NoBuffer_IsRefused) {
    unsigned int returned = UNTOUCHED;
    EXPECT_EQ(Console([&] {
                  EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, GetParam().number, 1, 1, nullptr, 0, nullptr,
                                                       GetParam().least, &returned),
                            -1);
              }),
              Error("HostMgr_Dev_GetConfig",
                    "lpOutBuffer (nil), dwOutBufferSize " + std::to_string(GetParam().least) + "!!\n"));
    EXPECT_EQ(returned, UNTOUCHED);
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_P(ConfigCommands, NoSize_IsRefused) {
    const ConfigRead read = Read(GetParam().number, 0);
    EXPECT_TRUE(RefusedUntouched(read));
    EXPECT_EQ(read.console, Error("HostMgr_Dev_GetConfig", "lpOutBuffer " + read.address + ", dwOutBufferSize 0!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_P(ConfigCommands, FirstChannel129_IsRefused) {
    const ConfigRead read = Read({GetParam().number, GetParam().least, 129});
    EXPECT_TRUE(RefusedUntouched(read));
    EXPECT_EQ(read.console, Error("HostMgr_Dev_GetConfig", "Just supprot 128 Channel,lStartChan 129 overflow!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_P(ConfigCommands, OneByteTooFew_IsRefusedUntouched) {
    const ConfigRead read = Read(GetParam().number, GetParam().least - 1);
    EXPECT_TRUE(RefusedUntouched(read));
    EXPECT_EQ(read.console, GetParam().speaks ? SizeRefused(read.address, GetParam().least - 1) : "");
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_P(ConfigCommands, OneByte_IsRefusedUntouched) {
    const ConfigRead read = Read(GetParam().number, 1);
    EXPECT_TRUE(RefusedUntouched(read));
    EXPECT_EQ(read.console, GetParam().speaks ? SizeRefused(read.address, 1) : "");
}

TEST_F(ConfigDispatch, NoBuffer_ComesBeforeTheChannelAndTheCommand) {
    EXPECT_EQ(
        Console([] { EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 999, 500, 1, nullptr, 0, nullptr, 0, nullptr), -1); }),
        Error("HostMgr_Dev_GetConfig", "lpOutBuffer (nil), dwOutBufferSize 0!!\n"));
}

TEST_F(ConfigDispatch, FirstChannelTooHigh_ComesBeforeTheCommand) {
    EXPECT_EQ(Read({999, 4, INT_MAX}).console,
              Error("HostMgr_Dev_GetConfig", "Just supprot 128 Channel,lStartChan 2147483647 overflow!!\n"));
}

TEST_F(ConfigDispatch, FirstChannelUpTo128_Passes) {
    for (const int channel : {128, 1, 0, -1, INT_MIN}) {
        const ConfigRead read = Read({30000, 4, channel});
        EXPECT_EQ(read.result, 0) << channel;
        EXPECT_EQ(read.console, "");
    }
}

TEST_F(ConfigDispatch, SizeOf4GiB_IsPrintedAsItAlwaysWas) {
    EXPECT_EQ(Console([] {
                  EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 30000, 1, 1, nullptr, 0, nullptr, UINT_MAX, nullptr), -1);
              }),
              Error("HostMgr_Dev_GetConfig", "lpOutBuffer (nil), dwOutBufferSize -1!!\n"));
}

TEST_F(ConfigDispatch, UnknownCommand_IsNamed) {
    for (const unsigned int command : {999U, 0U, 3011U, 30002U}) {
        const ConfigRead read = Read(command, 60000);
        EXPECT_TRUE(RefusedUntouched(read));
        EXPECT_EQ(read.console, Error("HostMgr_Dev_GetConfig", "Recovery cmd = " + std::to_string(command) + "\n"));
    }
    EXPECT_EQ(Read(UINT_MAX, 4).console, Error("HostMgr_Dev_GetConfig", "Recovery cmd = -1\n"));
}

TEST(ConfigBeforeInit, EveryRead_IsRefusedUntouched) {
    uint8_t buffer[4] = {1, 2, 3, 4};
    unsigned int returned = UNTOUCHED;
    EXPECT_EQ(
        Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 30000, 1, 1, nullptr, 0, buffer, 4, &returned), -1); }),
        Error("vexo_HostMgr_Dev_GetConfig", "not init\n"));
    EXPECT_EQ(buffer[0], 1);
    EXPECT_EQ(returned, UNTOUCHED);
}

/** Claims 4 GiB for a small buffer, where the command takes exact sizes only: nothing may be written. */
TEST_F(ConfigDispatch, ExactSizes_RefuseAClaimOf4GiB) {
    for (const unsigned int command : {106U, 118U, 160U, 1062U}) {
        uint8_t byte = 0xEE;
        EXPECT_EQ(RawConsole([&] {
                      EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, command, 1, 1, nullptr, 0, &byte, UINT_MAX, nullptr), -1);
                  }),
                  "");
        EXPECT_EQ(byte, 0xEE);
    }
}

// ---- version -------------------------------------------------------------------------------------------------------

TEST_F(ConfigVersion, FourBytes_HoldTwo) {
    EXPECT_TRUE(SameImage(Expected(30000, 4), Image(4).Word(0, 2)));
}

TEST_F(ConfigVersion, MoreBytes_StayAsTheyWere) {
    const ConfigRead read = Read(30000, 16);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, 4U);
    EXPECT_TRUE(SameImage(read.image, Image(16, 0xEE).Word(0, 2)));
}

TEST_F(ConfigVersion, ClaimOf4GiB_WritesFourBytes) {
    std::vector<uint8_t> buffer(4);
    EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 30000, 1, 1, nullptr, 0, buffer.data(), UINT_MAX, nullptr), 0);
    EXPECT_EQ(buffer, std::vector<uint8_t>({2, 0, 0, 0}));
}

TEST_F(ConfigVersion, LoginAndConditionBuffer_AreNotLookedAt) {
    uint32_t version = 0;
    for (const int hLogin : {0, -1, INT_MIN, 77}) {
        EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(hLogin, 30000, 1, -5, reinterpret_cast<void*>(1), UINT_MAX, &version, 4,
                                             nullptr),
                  0);
        EXPECT_EQ(version, 2U);
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// ---- ability -------------------------------------------------------------------------------------------------------

TEST_F(ConfigAbility, EveryType_IsRefusedUntouched) {
    for (const unsigned int type : {0U, 1U, 0xABCDU, UINT_MAX}) {
        char in[4] = "in";
        char out[4] = "out";
        char hex[16];
        snprintf(hex, sizeof(hex), "0x%x", type);
        EXPECT_EQ(Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_GetAbility(1, type, in, 4, out, 4), -1); }),
                  Error("HostMgr_Dev_GetAbility", std::string("dwAbilityType ") + hex + " \n"));
        EXPECT_STREQ(in, "in");
        EXPECT_STREQ(out, "out");
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ConfigAbility, NoBuffers_AreNotLookedAt) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_GetAbility(-1, 7, nullptr, UINT_MAX, nullptr, UINT_MAX), -1); }),
              Error("HostMgr_Dev_GetAbility", "dwAbilityType 0x7 \n"));
}
