// The device record in its two forms.
#include "config_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

class ConfigDevice : public ConfigFixture {
protected:
    void SetUp() override {
        ConfigFixture::SetUp();
        m_cap.device_kind = 1;
        m_cap.device_class = 0x11223344;
        const unsigned char identity[] = {0x00, 0x01, 0x0A, 0xFF, 0xC0, 0x10, 0x99, 0x7E, 0x80, 0x05};
        memcpy(m_cap.identity, identity, sizeof(identity));
        m_cap.analog_channels = 0x110;
        m_cap.alarm_inputs = 0x305;
        m_cap.total_channels = 0x120;
        m_cap.alarm_outputs = 0x404;
        m_cap.software_major = 4;
        m_cap.software_minor = 0x20;
        PutText(m_cap.build_date, "2019-7-5");
        m_cap.hardware_major = 2;
        m_cap.hardware_minor = 1;
        m_cap.disk_slots = 0x208;
        m_cap.usb_ports = 3;
        m_cap.network_ports = 2;
        ON_CALL(platform, vexo_model_get_dev_capability).WillByDefault(Return(&m_cap));
        ON_CALL(platform, vexo_model_get_sata_info).WillByDefault([](vexo_sata_info* info) {
            EXPECT_TRUE(IsZero(*info));
            info->flag = 9;
            info->reserved[0] = 0x77;
            return 0;
        });
    }

    /** What both forms show of the recorder above. */
    static Image Common(unsigned int size) {
        Image image(size);
        image.Word(0, size).Text(4, "NVR2.0").Word(36, 0x11223344).Text(44, "00010affc010997e8005");
        image.Word(92, 0x00040020).Word(96, 2019 * 65536 + 7 * 256 + 5).Word(112, 0x00020001);
        image.Byte(116, 0x10).Byte(117, 4).Byte(120, 8).Byte(122, 9).Byte(123, 2);
        return image.Byte(124, 0x10).Byte(125, 1).Bytes(126, {5, 3, 2});
    }
    static Image Short() { return Common(132).Byte(130, 1).Byte(131, 0x10); }
    static Image Long() { return Common(164).Byte(133, 1); }
    unsigned int ByteOf(size_t offset) { return Expected(100, 132).All().at(offset); }
    Image WithDate(const std::string& date) {
        PutText(m_cap.build_date, date);
        return Expected(100, 132);
    }

    vexo_dev_capability m_cap = {};
};

TEST_F(ConfigDevice, ShortForm_IsComplete) {
    EXPECT_TRUE(SameImage(Expected(100, 132), Short()));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_model_get_dev_capability()", "vexo_model_get_sata_info()"));
}

TEST_F(ConfigDevice, LongForm_IsComplete) {
    EXPECT_TRUE(SameImage(Expected(100, 164), Long()));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_model_get_dev_capability()", "vexo_model_get_sata_info()",
                                                  "vexo_model_get_rec_stream_mode()"));
}

TEST_F(ConfigDevice, SizeInBetweenOrBeyond_IsASuccessThatWritesNothing) {
    for (const unsigned int size : {133U, 140U, 163U, 165U, 4096U}) {
        const ConfigRead read = Read(100, size);
        EXPECT_EQ(read.result, 0) << size;
        EXPECT_EQ(read.returned, UNTOUCHED);
        EXPECT_EQ(read.console, "");
        EXPECT_TRUE(SameImage(read.image, Image(size, 0xEE)));
    }
}

TEST_F(ConfigDevice, ClaimOf4GiB_WritesNothing) {
    uint8_t byte = 0xEE;
    EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 100, 1, 1, nullptr, 0, &byte, UINT_MAX, nullptr), 0);
    EXPECT_EQ(byte, 0xEE);
}

TEST_F(ConfigDevice, NoCapability_IsAnError) {
    ON_CALL(platform, vexo_model_get_dev_capability).WillByDefault(Return(nullptr));
    for (const unsigned int size : {132U, 140U, 164U}) {
        const ConfigRead read = Read(100, size);
        EXPECT_TRUE(RefusedUntouched(read)) << size;
        EXPECT_EQ(read.console, Error("vexo_hostmgr_get_device_cfg", "vexo_model_get_dev_capability failed!!\n"));
    }
    EXPECT_THAT(WithAny({"sata"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigDevice, NoBytesReturnedWanted_IsFine) {
    std::vector<uint8_t> buffer(132);
    EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 100, 1, 1, nullptr, 0, buffer.data(), 132, nullptr), 0);
    EXPECT_TRUE(SameImage(Image(buffer), Short()));
}

TEST_F(ConfigDevice, SataCannotBeRead_CostsNothingElse) {
    ON_CALL(platform, vexo_model_get_sata_info).WillByDefault(Return(-1));
    EXPECT_TRUE(SameImage(Expected(100, 132), Short().Byte(122, 0)));
}

TEST_F(ConfigDevice, RecordStreamMode_IsOneForZero) {
    ON_CALL(platform, vexo_model_get_rec_stream_mode).WillByDefault([](unsigned int* mode) {
        EXPECT_EQ(*mode, 0U);
        *mode = 2;
        return 0;
    });
    EXPECT_TRUE(SameImage(Expected(100, 164), Long().Byte(133, 0)));
    ON_CALL(platform, vexo_model_get_rec_stream_mode).WillByDefault(Return(-1));
    EXPECT_TRUE(SameImage(Expected(100, 164), Long()));
}

TEST_F(ConfigDevice, NetworkChannels_AreCountedModulo256AndCutTo64) {
    const auto count = [this](unsigned int total, unsigned int analog) {
        m_cap.total_channels = total;
        m_cap.analog_channels = analog;
        return ByteOf(116);
    };
    EXPECT_EQ(count(10, 100), 64U);  // 166
    EXPECT_EQ(count(63, 0), 63U);
    EXPECT_EQ(count(64, 0), 64U);
    EXPECT_EQ(count(65, 0), 64U);
    EXPECT_EQ(count(255, 0), 64U);
    EXPECT_EQ(count(256, 0), 0U);
    EXPECT_EQ(count(16, 16), 0U);
    EXPECT_EQ(count(0, 200), 56U);
    EXPECT_EQ(count(0, UINT_MAX), 1U);
}

TEST_F(ConfigDevice, Kind_IsOneForHybridRecordersOnly) {
    const std::vector<std::pair<unsigned int, unsigned int>> kinds = {{0, 2}, {1, 2}, {2, 2}, {3, 1}, {4, 2}, {259, 2}};
    for (const auto& [kind, shown] : kinds) {
        m_cap.device_kind = kind;
        EXPECT_EQ(ByteOf(123), shown) << kind;
    }
}

TEST_F(ConfigDevice, Versions_AreNotMasked) {
    m_cap.software_major = 0x10005;
    m_cap.software_minor = 0x30007;
    m_cap.hardware_major = 0xFFFF;
    m_cap.hardware_minor = 0x12340000;
    EXPECT_TRUE(SameImage(Expected(100, 132), Short().Word(92, 0x00070007).Word(112, 0xFFFF0000)));
}

TEST_F(ConfigDevice, BuildDate_TakesWhatItCanRead) {
    EXPECT_TRUE(SameImage(WithDate("2024-12-31"), Short().Word(96, 0x07E80C1F)));
    EXPECT_TRUE(SameImage(WithDate("2024-12"), Short().Word(96, 0x07E80C00)));
    EXPECT_TRUE(SameImage(WithDate("2024"), Short().Word(96, 0x07E80000)));
    EXPECT_TRUE(SameImage(WithDate(""), Short().Word(96, 0)));
    EXPECT_TRUE(SameImage(WithDate("today"), Short().Word(96, 0)));
    EXPECT_TRUE(SameImage(WithDate("2024/12/31"), Short().Word(96, 0x07E80000)));
    EXPECT_TRUE(SameImage(WithDate("1-256-256"), Short().Word(96, 0x00010100)));
}

TEST_F(ConfigDevice, BuildDateWithoutTerminator_EndsWithItsField) {
    m_cap.reserved_172[0] = 0x39393939;  // behind the date: "9999"
    EXPECT_TRUE(SameImage(WithDate("2024-12-0000000000000000000000009"), Short().Word(96, 0x07E80C00)));
}
