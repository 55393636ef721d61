// The network record and the platform links.
#include "config_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

static constexpr char FILLER[] = "vexo_hostmgr_get_net_cfg";

class ConfigNet : public ConfigFixture {
protected:
    static constexpr unsigned int SIZE = 3848;
    static constexpr size_t EthAt(unsigned int eth) { return 8 + 740 * eth; }

    void SetUp() override {
        ConfigFixture::SetUp();
        SetNames({"eth0"});
        ON_CALL(platform, vexo_cfgm_get_network_cap).WillByDefault(Return(&m_cap));
        ON_CALL(platform, vexo_cfgm_get_local_eth_cfg).WillByDefault([this](const char* name, vexo_eth_cfg* cfg) {
            EXPECT_TRUE(IsZero(*cfg));
            if (m_no_eth.count(name) != 0) {
                memset(cfg, 0x77, sizeof(*cfg));
                return -1;
            }
            *cfg = m_eth;
            return 0;
        });
        ON_CALL(platform, vexo_cfgm_get_dns_cfg).WillByDefault([this](vexo_dns_cfg* dns) {
            EXPECT_TRUE(IsZero(*dns));
            *dns = m_dns;
            return m_no_dns ? -1 : 0;
        });
    }

    void SetNames(const std::vector<std::string>& names) {
        m_cap.eth_num = static_cast<unsigned int>(names.size());
        for (size_t index = 0; index < std::min<size_t>(16, names.size()); ++index)
            PutText(m_cap.eth[index].name, names[index]);
    }
    void SetDefault(const std::string& name) {
        ON_CALL(platform, vexo_model_get_default_if).WillByDefault([name](char* text, unsigned int size) {
            EXPECT_EQ(size, 32U);
            EXPECT_TRUE(std::all_of(text, text + size, [](char letter) { return letter == 0; }));
            memcpy(text, name.data(), std::min<size_t>(size, name.size()));
            return 0;
        });
    }

    /** A recorder whose interfaces and name servers say nothing: numbers are the interfaces' own. */
    static Image Plain(const std::vector<unsigned int>& numbers) {
        Image image(SIZE);
        image.Word(0, SIZE).Byte(5, static_cast<unsigned int>(numbers.size())).Byte(7, 1);
        for (unsigned int eth = 0; eth < numbers.size(); ++eth)
            image.Word(EthAt(eth) + 288, 5).Byte(EthAt(eth) + 292, numbers[eth]).Half(EthAt(eth) + 294, 1500);
        image.Half(3474, numbers.empty() ? 0 : 5050);
        return image.Half(3482, 8000).Half(3824, 1935).Byte(3826, 1).Byte(3829, 1);
    }

    vexo_network_cap m_cap = {};
    vexo_eth_cfg m_eth = {};
    vexo_dns_cfg m_dns = {};
    std::set<std::string> m_no_eth;
    bool m_no_dns = false;
};

class ConfigPlatforms : public ConfigFixture {
protected:
    /** The platforms that are enabled, with parameters "platform.index". */
    void SetEnabled(const std::set<unsigned int>& platforms) {
        ON_CALL(platform, vexo_cfgm_get_host_manager_enable)
            .WillByDefault([platforms](unsigned int number, VEXO_BOOL* enable) {
                EXPECT_EQ(*enable, VEXO_FALSE);
                *enable = platforms.count(number) != 0 ? 5 : 0;
                return 0;
            });
        ON_CALL(platform, vexo_cfgm_get_host_manager_param)
            .WillByDefault([](unsigned int number, unsigned int index, char* name, unsigned int nameSize, char* value,
                              unsigned int valueSize) {
                memset(name, 'n', nameSize);
                snprintf(value, valueSize, "%u.%u", number, index);
                return 0;
            });
    }
    static void PutPlatform(Image& image, size_t entry, unsigned int number) {
        image.Word(400 * entry, 1).Word(400 * entry + 4, number);
        for (unsigned int index = 1; index <= 8; ++index)
            image.Text(400 * entry + 144 + 32 * (index - 1), std::to_string(number) + "." + std::to_string(index));
    }
};

// ---- network record ------------------------------------------------------------------------------------------------

TEST_F(ConfigNet, OneInterface_IsShownWhole) {
    m_eth.dhcp = 4;
    PutText(m_eth.text, "static");
    PutText(m_eth.ip_addr, "192.168.1.2");
    PutText(m_eth.net_mask, "255.255.255.0");
    PutText(m_eth.gateway, "192.168.1.1");
    PutText(m_eth.ipv6_addr, "fe80::2");
    PutText(m_eth.ipv6_mask, "64");
    PutText(m_eth.ipv6_gateway, "fe80::1");
    PutText(m_dns.dns1, "8.8.8.8");
    PutText(m_dns.dns2, "9.9.9.9");
    PutText(m_dns.ipv6_dns1, "2001::8");
    PutText(m_dns.ipv6_dns2, "2001::9");
    SetDefault("eth0");
    Image expected = Plain({0});
    expected.Text(8, "192.168.1.2").Text(24, "fe80::2").Text(152, "255.255.255.0").Text(168, "64");
    expected.Text(304, "stati").Byte(312, 1).Text(316, "192.168.1.1").Text(332, "fe80::1");
    expected.Text(460, "8.8.8.8").Text(476, "2001::8").Text(604, "9.9.9.9").Text(620, "2001::9");
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), expected));
}

TEST_F(ConfigNet, EveryThing_IsAskedInOrder) {
    SetNames({"eth0", "eth1"});
    ON_CALL(platform, vexo_cfgm_get_pppoe_cfg).WillByDefault([](vexo_pppoe_cfg* cfg) {
        cfg->enable = 1;
        return 0;
    });
    Expected(1062, SIZE);
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAre("vexo_cfgm_get_network_cap()", "vexo_model_get_default_if(32)", "vexo_cfgm_get_local_eth_cfg(eth0)",
                    "vexo_cfgm_get_dns_cfg()", "vexo_cfgm_get_local_eth_cfg(eth1)", "vexo_cfgm_get_dns_cfg()",
                    "vexo_cfgm_get_upnp_cfg_ex()", "vexo_cfgm_get_http_port()", "vexo_cfgm_get_https_port()",
                    "vexo_cfgm_get_onvif_port()", "vexo_cfgm_get_rtmp_port()", "vexo_cfgm_get_rtsp_port()",
                    "vexo_cfgm_get_pppoe_cfg()", "vexo_model_get_pppoe_status()"));
}

TEST_F(ConfigNet, OtherSizes_AreRefusedSilently) {
    for (const unsigned int size : {1U, 3847U, 3849U, 60000U}) {
        const ConfigRead read = Read(1062, size);
        EXPECT_TRUE(RefusedUntouched(read)) << size;
        EXPECT_EQ(read.console, "");
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ConfigNet, NoCapability_IsAnErrorWithTheSizeWritten) {
    ON_CALL(platform, vexo_cfgm_get_network_cap).WillByDefault(Return(nullptr));
    const ConfigRead read = Read(1062, SIZE);
    EXPECT_EQ(read.result, -1);
    EXPECT_EQ(read.returned, UNTOUCHED);
    EXPECT_TRUE(SameImage(read.image, Image(SIZE).Word(0, SIZE)));
    EXPECT_EQ(read.console, Error(FILLER, "vexo_cfgm_get_network_cap failed!!!\n"));
}

TEST_F(ConfigNet, TooManyInterfacesOrBonds_IsAnError) {
    const std::vector<std::pair<unsigned int, unsigned int>> counts = {{17, 0}, {16, 17}, {17, 17}, {1, 17}};
    for (const auto& [eths, bonds] : counts) {
        m_cap.eth_num = eths;
        m_cap.bond_num = bonds;
        const ConfigRead read = Read(1062, SIZE);
        EXPECT_EQ(read.result, -1);
        EXPECT_EQ(read.returned, UNTOUCHED);
        EXPECT_TRUE(SameImage(read.image, Image(SIZE).Word(0, SIZE)));
        EXPECT_EQ(read.console, Error(FILLER, "ethNum " + std::to_string(eths) + ", bondNum " + std::to_string(bonds) +
                                                  " overflow!!\n"));
    }
    m_cap.eth_num = UINT_MAX;
    EXPECT_EQ(Read(1062, SIZE).result, -1);
    EXPECT_THAT(WithAny({"default_if"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigNet, SixInterfaces_AreCutToFour) {
    SetNames({"eth0", "eth1", "eth2", "eth3", "eth4", "eth5"});
    SetDefault("eth4");
    const ConfigRead read = Read(1062, SIZE);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.console, Warning(FILLER, "ethNum 6 > 4, please check !!!\n"));
    EXPECT_TRUE(SameImage(read.image, Plain({0, 1, 2, 3})));
    EXPECT_THAT(WithAny({"eth_cfg(eth4)", "eth_cfg(eth5)"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigNet, SixteenInterfacesAndBonds_AreNotTooMany) {
    m_cap.eth_num = 16;
    m_cap.bond_num = 16;
    EXPECT_EQ(Read(1062, SIZE).console, Warning(FILLER, "ethNum 16 > 4, please check !!!\n"));
}

TEST_F(ConfigNet, FourInterfaces_AreAllShown) {
    SetNames({"eth0", "eth1", "eth2", "eth3"});
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0, 1, 2, 3})));
}

TEST_F(ConfigNet, NoInterface_HasNoDataPort) {
    SetNames({});
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({})));
}

TEST_F(ConfigNet, Numbers_StandBehindThreeLetters) {
    SetNames({"eth12", "lan", "ethX", "eth300"});
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({12, 1, 0, 300 - 256})));
    SetNames({"", "e", "wlan1", "eth7a8"});
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0, 1, 0, 7})));
}

TEST_F(ConfigNet, NameWithoutTerminator_EndsWithItsField) {
    SetNames({"eth" + std::string(29, '9'), "eth1"});
    SetDefault("eth" + std::string(29, '9'));
    // The low byte of a number of 29 nines.
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({255, 1})));
    EXPECT_THAT(WithAny({"eth_cfg"}, platform.TakeCalls()),
                ElementsAre("vexo_cfgm_get_local_eth_cfg(eth" + std::string(29, '9') + ")",
                            "vexo_cfgm_get_local_eth_cfg(eth1)"));
}

TEST_F(ConfigNet, DefaultInterface_IsTheLastOfItsName) {
    SetNames({"eth0", "eth1", "eth1", "eth2"});
    SetDefault("eth1");
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0, 1, 1, 2}).Byte(4, 2)));
    SetDefault("eth");
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0, 1, 1, 2})));
}

TEST_F(ConfigNet, DefaultInterfaceFails_IsAWarning) {
    SetNames({"eth0", "eth1"});
    ON_CALL(platform, vexo_model_get_default_if).WillByDefault([](char* name, unsigned int) {
        memcpy(name, "eth1", 5);
        return -1;
    });
    const ConfigRead read = Read(1062, SIZE);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.console, Warning(FILLER, "vexo_model_get_default_if failed!!\n"));
    EXPECT_TRUE(SameImage(read.image, Plain({0, 1})));
}

TEST_F(ConfigNet, UnreadableInterface_StillShowsItsNameServers) {
    SetNames({"eth0", "eth1"});
    SetDefault("eth1");
    m_no_eth = {"eth1"};
    PutText(m_dns.dns1, "1.1.1.1");
    Image expected = Plain({0, 1}).Byte(4, 1);
    expected.Text(EthAt(0) + 452, "1.1.1.1").Text(EthAt(1) + 452, "1.1.1.1");
    expected.Word(EthAt(1) + 288, 0).Byte(EthAt(1) + 292, 0).Half(EthAt(1) + 294, 0);
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), expected));
}

TEST_F(ConfigNet, NoReadableInterface_HasNoDataPort) {
    m_no_eth = {"eth0"};
    Image expected = Plain({0}).Half(3474, 0);
    expected.Word(EthAt(0) + 288, 0).Half(EthAt(0) + 294, 0);
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), expected));
}

TEST_F(ConfigNet, NameServersCannotBeRead_AreLeftEmpty) {
    m_no_dns = true;
    PutText(m_dns.dns1, "1.1.1.1");
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0})));
}

TEST_F(ConfigNet, TextsWithoutTerminator_AreCutAndTerminated) {
    PutText(m_eth.text, Letters(32));
    PutText(m_eth.ip_addr, Letters(16));
    PutText(m_eth.net_mask, Letters(16));
    PutText(m_eth.gateway, Letters(16));
    PutText(m_eth.ipv6_addr, Letters(128));
    PutText(m_eth.ipv6_mask, Letters(128));
    PutText(m_eth.ipv6_gateway, Letters(128));
    PutText(m_dns.dns1, Letters(16));
    PutText(m_dns.dns2, Letters(16));
    PutText(m_dns.ipv6_dns1, Letters(128));
    PutText(m_dns.ipv6_dns2, Letters(128));
    Image expected = Plain({0}).Text(304, Letters(5));
    for (const size_t offset : {8, 152, 316, 460, 604})
        expected.Text(offset, Letters(15));
    for (const size_t offset : {24, 168, 332, 476, 620})
        expected.Text(offset, Letters(127));
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), expected));
}

TEST_F(ConfigNet, Upnp_IsOnWhenItSaysSo) {
    ON_CALL(platform, vexo_cfgm_get_upnp_cfg_ex).WillByDefault([](VEXO_BOOL* enable) {
        EXPECT_EQ(*enable, VEXO_FALSE);
        *enable = 3;
        return 0;
    });
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0}).Byte(6, 1)));
    ON_CALL(platform, vexo_cfgm_get_upnp_cfg_ex).WillByDefault([](VEXO_BOOL* enable) {
        *enable = 1;
        return -1;
    });
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0})));
}

/** A port that is read with success. */
static auto PortIs(unsigned int number) {
    return [number](unsigned int* port) {
        EXPECT_EQ(*port, 0U);
        *port = number;
        return 0;
    };
}

TEST_F(ConfigNet, EachPort_StandsInItsPlace) {
    ON_CALL(platform, vexo_cfgm_get_http_port).WillByDefault(PortIs(8080));
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0}).Half(3476, 8080)));
    ON_CALL(platform, vexo_cfgm_get_http_port).WillByDefault(Return(0));
    ON_CALL(platform, vexo_cfgm_get_https_port).WillByDefault(PortIs(8443));
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0}).Half(3478, 8443)));
    ON_CALL(platform, vexo_cfgm_get_https_port).WillByDefault(Return(0));
    ON_CALL(platform, vexo_cfgm_get_onvif_port).WillByDefault(PortIs(8899));
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0}).Half(3482, 8899)));
    ON_CALL(platform, vexo_cfgm_get_onvif_port).WillByDefault(Return(0));
    ON_CALL(platform, vexo_cfgm_get_rtmp_port).WillByDefault(PortIs(1936));
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0}).Half(3824, 1936)));
    ON_CALL(platform, vexo_cfgm_get_rtmp_port).WillByDefault(Return(0));
    ON_CALL(platform, vexo_cfgm_get_rtsp_port).WillByDefault(PortIs(0x10000 + 8554));
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0}).Half(3830, 8554)));
}

TEST_F(ConfigNet, PortsThatCannotBeRead_HaveTheirDefaults) {
    const auto fails = [](unsigned int* port) {
        *port = 7;
        return -1;
    };
    ON_CALL(platform, vexo_cfgm_get_http_port).WillByDefault(fails);
    ON_CALL(platform, vexo_cfgm_get_https_port).WillByDefault(fails);
    ON_CALL(platform, vexo_cfgm_get_onvif_port).WillByDefault(fails);
    ON_CALL(platform, vexo_cfgm_get_rtmp_port).WillByDefault(fails);
    ON_CALL(platform, vexo_cfgm_get_rtsp_port).WillByDefault(fails);
    EXPECT_TRUE(
        SameImage(Expected(1062, SIZE),
                  Plain({0}).Half(3476, 80).Half(3478, 4433).Half(3482, 8000).Half(3824, 1935).Half(3830, 554)));
}

class ConfigPppoe : public ConfigNet {
protected:
    void SetUp() override {
        ConfigNet::SetUp();
        PutText(m_pppoe.user, "dialler");
        PutText(m_pppoe.password, "dialled");
        PutText(m_status.ip_addr, "100.64.0.9");
        PutText(m_status.ipv6_addr, "2001:db8::9");
        ON_CALL(platform, vexo_cfgm_get_pppoe_cfg).WillByDefault([this](vexo_pppoe_cfg* cfg) {
            EXPECT_TRUE(IsZero(*cfg));
            *cfg = m_pppoe;
            return m_cfg_result;
        });
        ON_CALL(platform, vexo_model_get_pppoe_status).WillByDefault([this](vexo_pppoe_status* status) {
            EXPECT_TRUE(IsZero(*status));
            *status = m_status;
            return m_status_result;
        });
    }
    static Image Enabled() { return Plain({0}).Word(3628, 1).Text(3632, "dialler").Text(3664, "dialled"); }

    vexo_pppoe_cfg m_pppoe = {};
    vexo_pppoe_status m_status = {};
    int m_cfg_result = 0;
    int m_status_result = 0;
};

TEST_F(ConfigPppoe, Off_ShowsNothingAndAsksNoStatus) {
    m_status.link_up = 1;
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0})));
    EXPECT_THAT(WithAny({"pppoe_status"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigPppoe, CannotBeRead_ShowsNothing) {
    m_pppoe.enable = 1;
    m_cfg_result = -1;
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Plain({0})));
}

TEST_F(ConfigPppoe, LinkDown_ShowsTheCredentials) {
    m_pppoe.enable = 6;
    m_status.ipv4 = 1;
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Enabled()));
}

TEST_F(ConfigPppoe, LinkUp_ShowsTheAddressOfItsKind) {
    m_pppoe.enable = 1;
    m_status.link_up = 2;
    m_status.ipv4 = 2;
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Enabled().Text(3680, "100.64.0.9")));
    m_status.ipv4 = 0;
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Enabled().Text(3696, "2001:db8::9")));
}

TEST_F(ConfigPppoe, StatusCannotBeRead_ShowsNoAddress) {
    m_pppoe.enable = 1;
    m_status.link_up = 1;
    m_status_result = -1;
    EXPECT_TRUE(SameImage(Expected(1062, SIZE), Enabled()));
}

TEST_F(ConfigPppoe, TextsWithoutTerminator_AreCutAndTerminated) {
    m_pppoe.enable = 1;
    PutText(m_pppoe.user, Letters(64));
    PutText(m_pppoe.password, Letters(64));
    m_status.link_up = 1;
    PutText(m_status.ipv6_addr, Letters(128));
    EXPECT_TRUE(
        SameImage(Expected(1062, SIZE),
                  Plain({0}).Word(3628, 1).Text(3632, Letters(31)).Text(3664, Letters(15)).Text(3696, Letters(127))));
}

// ---- platform links ------------------------------------------------------------------------------------------------

TEST_F(ConfigPlatforms, None_GivesNothing) {
    SetEnabled({});
    EXPECT_TRUE(SameImage(Expected(3002, 3200), Image(3200)));
    Lines asked;
    for (int number = 1; number <= 32; ++number)
        asked.push_back("vexo_cfgm_get_host_manager_enable(" + std::to_string(number) + ")");
    EXPECT_EQ(platform.TakeCalls(), asked);
}

TEST_F(ConfigPlatforms, Enabled_ArePacked) {
    SetEnabled({3, 32});
    Image expected(3200);
    PutPlatform(expected, 0, 3);
    PutPlatform(expected, 1, 32);
    EXPECT_TRUE(SameImage(Expected(3002, 3200), expected));
    const Lines params = WithAny({"param(3"}, platform.TakeCalls());
    ASSERT_EQ(params.size(), 16U);
    EXPECT_EQ(params.front(), "vexo_cfgm_get_host_manager_param(3, 1, 64, 32)");
    EXPECT_EQ(params[7], "vexo_cfgm_get_host_manager_param(3, 8, 64, 32)");
}

TEST_F(ConfigPlatforms, NinthEnabled_IsNotAskedFor) {
    SetEnabled({1, 2, 3, 4, 5, 6, 7, 8, 9});
    Image expected(3200);
    for (unsigned int number = 1; number <= 8; ++number)
        PutPlatform(expected, number - 1, number);
    EXPECT_TRUE(SameImage(Expected(3002, 3200), expected));
    EXPECT_THAT(WithAny({"enable(9)"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigPlatforms, Unreadable_TakesNoEntry) {
    SetEnabled({1});
    ON_CALL(platform, vexo_cfgm_get_host_manager_enable).WillByDefault([](unsigned int number, VEXO_BOOL* enable) {
        *enable = VEXO_TRUE;
        return number == 2 ? 0 : -1;
    });
    Image expected(3200);
    PutPlatform(expected, 0, 2);
    EXPECT_TRUE(SameImage(Expected(3002, 3200), expected));
}

TEST_F(ConfigPlatforms, ParameterCannotBeRead_StaysEmpty) {
    SetEnabled({4});
    ON_CALL(platform, vexo_cfgm_get_host_manager_param).WillByDefault(Return(-1));
    EXPECT_TRUE(SameImage(Expected(3002, 3200), Image(3200).Word(0, 1).Word(4, 4)));
}

TEST_F(ConfigPlatforms, LargerBuffer_IsClearedToItsEnd) {
    SetEnabled({});
    const ConfigRead read = Read(3002, 3210);
    EXPECT_EQ(read.returned, 3200U);
    EXPECT_TRUE(SameImage(read.image, Image(3210)));
}
