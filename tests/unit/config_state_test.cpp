// The work state and the recorder's clock.
#include "config_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

using namespace vexo_soft;

class ConfigWorkState : public ConfigFixture {
protected:
    static constexpr unsigned int SIZE = 57464;
    static constexpr size_t ChannelAt(unsigned int channel) { return 292 + 892 * channel; }

    /** A recorder without disks whose channels are not connected. */
    static Image Idle() {
        Image image(SIZE);
        for (unsigned int channel = 0; channel < 64; ++channel)
            image.Byte(ChannelAt(channel) + 1, 1);
        return image;
    }

    void Connect(unsigned int channel, unsigned int kind, const std::string& address) {
        m_cfg[channel].address_kind = kind;
        PutText(m_cfg[channel].address, address);
        ON_CALL(platform, vexo_model_get_ipc_connect_status)
            .WillByDefault([this](unsigned int asked, VEXO_BOOL* connected) {
                EXPECT_EQ(*connected, VEXO_FALSE);
                *connected = m_cfg.count(asked) != 0 ? 7 : 0;
                return 0;
            });
        ON_CALL(platform, vexo_model_get_ipc_connect_cfg)
            .WillByDefault([this](unsigned int asked, vexo_ipc_connect_cfg* cfg) {
                EXPECT_TRUE(IsZero(*cfg));
                *cfg = m_cfg.at(asked);
                return m_cfg_fails ? -1 : 0;
            });
        ON_CALL(platform, vexo_model_ch_is_recording).WillByDefault([this](unsigned int asked) {
            return m_channel_records.count(asked) != 0 ? 9 : 0;
        });
    }

    std::map<unsigned int, vexo_ipc_connect_cfg> m_cfg;
    std::set<unsigned int> m_channel_records;
    bool m_cfg_fails = false;
};

class ConfigDeviceTime : public ConfigFixture {};

// ---- work state ----------------------------------------------------------------------------------------------------

TEST_F(ConfigWorkState, NothingThere_ShowsFlagAOnly) {
    EXPECT_TRUE(SameImage(Expected(254, SIZE), Idle()));
}

TEST_F(ConfigWorkState, Channels_AreAskedInOrder) {
    Read(254, SIZE);
    Lines expected = {"vexo_model_get_hard_disk_num()"};
    for (int channel = 0; channel < 64; ++channel)
        expected.push_back("vexo_model_get_ipc_connect_status(" + std::to_string(channel) + ")");
    EXPECT_EQ(platform.TakeCalls(), expected);
}

TEST_F(ConfigWorkState, LargerBuffer_IsClearedToItsEnd) {
    const ConfigRead read = Read(254, SIZE + 10);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, SIZE);
    Image expected(SIZE + 10);
    for (unsigned int channel = 0; channel < 64; ++channel)
        expected.Byte(ChannelAt(channel) + 1, 1);
    EXPECT_TRUE(SameImage(read.image, expected));
}

TEST_F(ConfigWorkState, Disks_AreShownAtTheirIndex) {
    SetDisks({Disk("a", 1, 3, 500, {{"/a", 200}, {"/b", 250}}), Disk("b", 4, 1, 7, {})});
    m_recording = {"a", "b"};
    Image expected = Idle();
    expected.Word(4, 500).Word(8, 450).Word(12, 2);
    expected.Word(16, 7).Word(20, 0).Word(24, 3);
    EXPECT_TRUE(SameImage(Expected(254, SIZE), expected));
}

TEST_F(ConfigWorkState, UnreadableDisk_StaysZeroAndIsAskedNothingElse) {
    SetDisks({Disk("a", 1, 3, 1, {}), Disk("b", 1, 3, 2, {}), Disk("c", 1, 0, 3, {})});
    m_unreadable = {1};
    EXPECT_TRUE(SameImage(Expected(254, SIZE), Idle().Word(4, 1).Word(28, 3).Word(36, 1)));
    EXPECT_THAT(WithAny({"disk_recording"}, platform.TakeCalls()),
                ElementsAre("vexo_model_is_disk_recording(a)", "vexo_model_is_disk_recording(c)"));
}

TEST_F(ConfigWorkState, ThirtyDisks_FillTwentyFour) {
    SetDisks(std::vector<vexo_hard_disk_info>(30, Disk("a", 1, 3, 0x01020304, {})));
    Image expected = Idle();
    for (unsigned int disk = 0; disk < 24; ++disk)
        expected.Word(4 + 12 * disk, 0x01020304);
    EXPECT_TRUE(SameImage(Expected(254, SIZE), expected));
    EXPECT_EQ(WithAny({"hard_disk_info"}, platform.TakeCalls()).size(), 24U);
}

TEST_F(ConfigWorkState, DiskCountFails_ShowsNoDisk) {
    SetDisks(std::vector<vexo_hard_disk_info>(3, Disk("a", 1, 3, 5, {})));
    FailDiskCount();
    EXPECT_TRUE(SameImage(Expected(254, SIZE), Idle()));
}

TEST_F(ConfigWorkState, ConnectedByAddress_ShowsIt) {
    Connect(0, 0, "192.168.1.64");
    Connect(63, 0, "10.0.0.1");
    m_channel_records = {63};
    Image expected = Idle();
    expected.Word(ChannelAt(0) + 8, 1).Text(ChannelAt(0) + 12, "192.168.1.64");
    expected.Byte(ChannelAt(63), 1).Word(ChannelAt(63) + 8, 1).Text(ChannelAt(63) + 12, "10.0.0.1");
    EXPECT_TRUE(SameImage(Expected(254, SIZE), expected));
}

TEST_F(ConfigWorkState, ConnectedChannel_IsAskedInOrder) {
    Connect(5, 0, "10.0.0.1");
    Read(254, SIZE);
    EXPECT_THAT(WithAny({"(5)"}, platform.TakeCalls()),
                ElementsAre("vexo_model_get_ipc_connect_status(5)", "vexo_model_get_ipc_connect_cfg(5)",
                            "vexo_model_ch_is_recording(5)"));
}

TEST_F(ConfigWorkState, ConnectedByName_ShowsIt) {
    Connect(2, 1, "camera.example");
    EXPECT_TRUE(
        SameImage(Expected(254, SIZE), Idle().Word(ChannelAt(2) + 8, 1).Text(ChannelAt(2) + 28, "camera.example")));
}

TEST_F(ConfigWorkState, AddressWithoutTerminator_FillsItsFieldAndNoMore) {
    Connect(0, 0, Letters(128));
    Connect(1, 1, Letters(128));
    Image expected = Idle();
    expected.Word(ChannelAt(0) + 8, 1).Text(ChannelAt(0) + 12, Letters(16));
    expected.Word(ChannelAt(1) + 8, 1).Text(ChannelAt(1) + 28, Letters(128));
    EXPECT_TRUE(SameImage(Expected(254, SIZE), expected));
}

TEST_F(ConfigWorkState, OtherKindOfAddress_ShowsNone) {
    Connect(0, 2, "10.0.0.1");
    Connect(1, UINT_MAX, "10.0.0.2");
    EXPECT_TRUE(SameImage(Expected(254, SIZE), Idle().Word(ChannelAt(0) + 8, 1).Word(ChannelAt(1) + 8, 1)));
}

TEST_F(ConfigWorkState, AddressCannotBeRead_IsConnectedWithoutIt) {
    Connect(0, 0, "10.0.0.1");
    m_channel_records = {0};
    m_cfg_fails = true;
    EXPECT_TRUE(SameImage(Expected(254, SIZE), Idle().Byte(ChannelAt(0), 1).Word(ChannelAt(0) + 8, 1)));
}

TEST_F(ConfigWorkState, StatusCannotBeRead_IsNotConnected) {
    Connect(0, 0, "10.0.0.1");
    ON_CALL(platform, vexo_model_get_ipc_connect_status).WillByDefault([](unsigned int, VEXO_BOOL* connected) {
        *connected = VEXO_TRUE;
        return -1;
    });
    platform.TakeCalls();
    EXPECT_TRUE(SameImage(Expected(254, SIZE), Idle()));
    EXPECT_THAT(WithAny({"connect_cfg", "ch_is_recording"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigWorkState, NotConnected_IsNotAskedForRecording) {
    Connect(1, 0, "10.0.0.1");
    m_channel_records = {0, 1};
    Read(254, SIZE);
    EXPECT_THAT(WithAny({"ch_is_recording"}, platform.TakeCalls()), ElementsAre("vexo_model_ch_is_recording(1)"));
}

// ---- device time ---------------------------------------------------------------------------------------------------

// 2023-11-14 22:13:20 UTC
constexpr long INSTANT = 1700000000;

TEST_F(ConfigDeviceTime, LongForm_IsSixWords) {
    SetTimeZone("UTC");
    SetClock(INSTANT, 999999);
    EXPECT_TRUE(SameImage(Expected(118, 24),
                          Image(24).Word(0, 2023).Word(4, 11).Word(8, 14).Word(12, 22).Word(16, 13).Word(20, 20)));
}

TEST_F(ConfigDeviceTime, ShortForm_EndsWithOneAndTheOffset) {
    SetTimeZone("UTC");
    SetClock(INSTANT, 0);
    SetMinutesWest(-480);
    EXPECT_TRUE(SameImage(Expected(118, 12), Image(12).Half(0, 2023).Bytes(2, {11, 14, 22, 13, 20, 1}).Word(8, 480)));
}

TEST_F(ConfigDeviceTime, WestOfGreenwich_IsNegative) {
    SetTimeZone("UTC");
    SetClock(INSTANT, 0);
    SetMinutesWest(210);
    EXPECT_TRUE(SameImage(Expected(118, 12),
                          Image(12).Half(0, 2023).Bytes(2, {11, 14, 22, 13, 20, 1, 0x2E, 0xFF, 0xFF, 0xFF})));
}

// The offset is what the call reports, not what the zone would say.
TEST_F(ConfigDeviceTime, LocalTime_IsShownInItsZone) {
    SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    SetClock(1720000000, 0);  // 2024-07-03 09:46:40 UTC
    EXPECT_TRUE(SameImage(Expected(118, 12), Image(12).Half(0, 2024).Bytes(2, {7, 3, 11, 46, 40, 1}).Word(8, 0)));
    EXPECT_TRUE(SameImage(Expected(118, 24),
                          Image(24).Word(0, 2024).Word(4, 7).Word(8, 3).Word(12, 11).Word(16, 46).Word(20, 40)));
}

TEST_F(ConfigDeviceTime, OtherSizes_AreRefusedSilently) {
    for (const unsigned int size : {1U, 8U, 11U, 13U, 16U, 23U, 25U, 4096U}) {
        const ConfigRead read = Read(118, size);
        EXPECT_TRUE(RefusedUntouched(read)) << size;
        EXPECT_EQ(read.console, "");
    }
}

TEST_F(ConfigDeviceTime, NoSuchLocalTime_IsZero) {
    SetMinutesWest(-60);
    FailLocaltime(true);
    EXPECT_TRUE(SameImage(Expected(118, 24), Image(24)));
    EXPECT_TRUE(SameImage(Expected(118, 12), Image(12).Byte(7, 1).Word(8, 60)));
}
