// What the simulated recorder says of itself, by plain calls: disks, channels, encoding, users' rights, network,
// capability, all as the scenario has them; and the log of what happens by itself.
#include <gmock/gmock.h>

#include <cstring>
#include <mutex>

#include "control.h"
#include "device_support.h"
#include "live_reader.h"

namespace control = simulator::control;
using device::Home;
using device::Login;
using live::Eventually;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "cameras": [
        {"name": "Gate", "main": {"width": 640, "height": 360, "fps": 20, "gop": 40, "kbps": 900, "quality": 4},
         "sub": {"constant": true}},
        {"name": "Yard", "address": "yard.example.net", "audio": {"hz": 0}},
        {"name": "Dark", "signal": false, "sub": {"constant": true}}
    ],
    "users": [
        {"name": "admin", "password": "admin12345", "administrator": true},
        {"name": "guard", "channels": [2]},
        {"name": "chief", "manage_disks": true,
         "local": {"rights": [1, 5], "by_channel": [{"right": 5, "channels": [1, 3]}]},
         "remote": {"rights": [7], "by_channel": [{"channels": [3]}, {}]}}
    ],
    "disks": [
        {"megabytes": 1000, "partitions": [20, 900]},
        {"megabytes": 500, "kind": "array", "state": "broken"},
        {"megabytes": 300, "kind": "external", "state": "unformatted"},
        {"megabytes": 2000, "kind": "network"}
    ],
    "capability": {"kind": "hybrid", "analog_channels": 2, "alarm_outputs": 6, "disk_slots": 8, "usb_ports": 3,
                   "hardware": "2.7"},
    "alarm_inputs": 9,
    "network": {
        "interfaces": [
            {"ipv6_address": "2001:db8::20", "ipv6_prefix": 48, "ipv6_gateway": "2001:db8::1"},
            {"name": "wan0", "dhcp": true, "address": "198.51.100.7"}
        ],
        "default_interface": "wan0", "bonds": 1, "upnp": true, "dns2": "192.0.2.2",
        "ipv6_dns1": "2001:db8::53", "ipv6_dns2": "2001:db8::54",
        "ports": {"rtsp": 8554},
        "pppoe": {"enabled": true, "user": "me", "password": "secret", "address": "2001:db8::77"}
    },
    "recordings": {"live": "off", "history": {"segments": 0}}
})"));

// ---- disks ---------------------------------------------------------------------------------------------------------

vexo_hard_disk_info DiskInfo(unsigned index) {
    vexo_hard_disk_info info = {};
    EXPECT_EQ(vexo_model_get_hard_disk_info(index, &info), 0);
    return info;
}

TEST(Disks, Count_IsTheScenarios) {
    unsigned count = 0;
    EXPECT_EQ(vexo_model_get_hard_disk_num(&count), 0);
    EXPECT_EQ(count, 4U);
    EXPECT_NE(vexo_model_get_hard_disk_num(nullptr), 0);
}

TEST(Disks, KindAndAddress_OfALocalDiskItsSlot) {
    std::vector<unsigned> kinds;
    std::vector<unsigned> addresses;
    for (unsigned index = 0; index < 4; ++index) {
        kinds.push_back(DiskInfo(index).identity.type);
        addresses.push_back(DiskInfo(index).identity.address);
    }
    EXPECT_THAT(kinds, ElementsAre(1, 4, 2, 3));
    EXPECT_THAT(addresses, ElementsAre(0x01000000, 0, 0, 0));
    EXPECT_STREQ(DiskInfo(1).identity.name, "disk-2");
}

TEST(Disks, State_NormalOnlyWhenItCanBeUsed) {
    EXPECT_EQ(DiskInfo(0).state, VEXO_DISK_STATE_NORMAL);
    EXPECT_EQ(DiskInfo(1).state, 2U);
    EXPECT_EQ(DiskInfo(2).state, 1U);
    control::SetEvent("disk error", 1, true);
    EXPECT_EQ(DiskInfo(0).state, 2U);
    EXPECT_EQ(DiskInfo(2).state, 1U);
    EXPECT_EQ(DiskInfo(3).state, VEXO_DISK_STATE_NORMAL);
    control::SetEvent("disk error", 3, true);
    EXPECT_EQ(DiskInfo(2).state, 1U) << "an error changes nothing about a disk that is not formatted";
    control::SetEvent("disk error", 3, false);
    control::SetEvent("disk error", 1, false);
    EXPECT_EQ(DiskInfo(0).state, VEXO_DISK_STATE_NORMAL);
}

TEST(Disks, Partitions_AreFoldersOfTheHomeFolder) {
    const vexo_hard_disk_info disk = DiskInfo(0);
    EXPECT_EQ(disk.size_mb, 1000U);
    ASSERT_EQ(disk.partition_num, 2U);
    EXPECT_EQ(disk.partition[0].size, 20U);
    EXPECT_EQ(disk.partition[1].size, 900U);
    EXPECT_EQ(disk.partition[0].mount_path, (Home() / "disk-1").string());
    EXPECT_EQ(disk.partition[1].mount_path, (Home() / "disk-1-2").string());
    EXPECT_TRUE(std::filesystem::is_directory(disk.partition[0].mount_path));
    EXPECT_TRUE(std::filesystem::is_directory(disk.partition[1].mount_path));
}

TEST(Disks, Partitions_WithoutAWordTheWholeDiskAndUnformattedNone) {
    EXPECT_EQ(DiskInfo(1).partition_num, 1U);
    EXPECT_EQ(DiskInfo(1).partition[0].size, 500U);
    EXPECT_EQ(DiskInfo(2).partition_num, 0U);
    EXPECT_EQ(DiskInfo(2).size_mb, 300U);
}

TEST(Disks, DiskPastTheLast_FailsAndWritesNothing) {
    vexo_hard_disk_info info;
    memset(&info, 0x5A, sizeof info);
    EXPECT_NE(vexo_model_get_hard_disk_info(4, &info), 0);
    EXPECT_EQ(info.size_mb, 0x5A5A5A5AU);
    EXPECT_NE(vexo_model_get_hard_disk_info(0, nullptr), 0);
}

TEST(Disks, SataInfo_SaysThatALocalDiskIsThere) {
    vexo_sata_info info = {};
    EXPECT_EQ(vexo_model_get_sata_info(&info), 0);
    EXPECT_EQ(info.flag, 1);
}

// ---- channels ------------------------------------------------------------------------------------------------------

VEXO_BOOL Connected(unsigned channel) {
    VEXO_BOOL connected = 7;
    EXPECT_EQ(vexo_model_get_ipc_connect_status(channel, &connected), 0);
    return connected;
}

TEST(Channels, Connected_WhileTheCameraHasItsSignal) {
    EXPECT_EQ(Connected(0), VEXO_TRUE);
    EXPECT_EQ(Connected(2), VEXO_FALSE);
    control::SetSignal(1, false);
    EXPECT_EQ(Connected(0), VEXO_FALSE);
    control::SetSignal(1, true);
    VEXO_BOOL connected = 7;
    EXPECT_NE(vexo_model_get_ipc_connect_status(3, &connected), 0);
    EXPECT_EQ(connected, 7);
}

TEST(Channels, ConnectConfiguration_AddressOrHostName) {
    vexo_ipc_connect_cfg cfg = {};
    ASSERT_EQ(vexo_model_get_ipc_connect_cfg(0, &cfg), 0);
    EXPECT_EQ(cfg.address_kind, 0U);
    EXPECT_STREQ(cfg.address, "192.0.2.101");
    ASSERT_EQ(vexo_model_get_ipc_connect_cfg(1, &cfg), 0);
    EXPECT_EQ(cfg.address_kind, 1U);
    EXPECT_STREQ(cfg.address, "yard.example.net");
    EXPECT_NE(vexo_model_get_ipc_connect_cfg(3, &cfg), 0);
    EXPECT_NE(vexo_model_get_ipc_connect_cfg(0, nullptr), 0);
}

TEST(Channels, EncodingParameters_AreTheCamerasOwn) {
    vexo_enc_para para;
    memset(&para, 0x5A, sizeof para);
    ASSERT_EQ(vexo_model_get_enc_para(0, VEXO_ENC_STR_MAIN, &para, VEXO_FALSE), 0);
    EXPECT_EQ(para.codec, 1U);
    EXPECT_EQ(para.mode, 1U);
    EXPECT_EQ(para.width, 640U);
    EXPECT_EQ(para.height, 360U);
    EXPECT_EQ(para.fps, 20U);
    EXPECT_EQ(para.quality, 4U);
    EXPECT_EQ(para.bps, 900U);
    EXPECT_EQ(para.gop, 40U);
    EXPECT_EQ(para.reserved_20[3], 0U);
    ASSERT_EQ(vexo_model_get_enc_para(0, VEXO_ENC_STR_SUB, &para, VEXO_TRUE), 0);
    EXPECT_EQ(para.mode, 0U);
    EXPECT_EQ(para.width, 352U);
    EXPECT_EQ(para.bps, 256U);
    EXPECT_EQ(para.quality, 6U);
}

TEST(Channels, StreamThatIsNotThere_Fails) {
    vexo_enc_para para = {};
    VEXO_BOOL enable = 7;
    for (const unsigned stream : {0U, 3U, 128U}) {
        EXPECT_NE(vexo_model_get_enc_para(0, stream, &para, VEXO_TRUE), 0) << stream;
        EXPECT_NE(vexo_model_get_audio_enable(0, stream, &enable, 0), 0) << stream;
    }
    EXPECT_NE(vexo_model_get_enc_para(3, 1, &para, VEXO_TRUE), 0);
    EXPECT_NE(vexo_model_get_audio_enable(3, 1, &enable, 0), 0);
    EXPECT_EQ(enable, 7);
}

TEST(Channels, Audio_OnWhereTheCameraHasASound) {
    VEXO_BOOL enable = 7;
    EXPECT_EQ(vexo_model_get_audio_enable(0, 2, &enable, 0), 0);
    EXPECT_EQ(enable, VEXO_TRUE);
    EXPECT_EQ(vexo_model_get_audio_enable(1, 2, &enable, 0), 0);
    EXPECT_EQ(enable, VEXO_FALSE);
}

/** Bytes of so many frames of a stream. */
double BytesOf(unsigned channel, vexo_enc_str_type type, unsigned frames) {
    live::Reader reader(channel, type);
    size_t bytes = 0;
    for (unsigned i = 0; i < frames; ++i) {
        const auto frame = reader.Next();
        EXPECT_TRUE(frame.has_value());
        bytes += frame ? frame->payload.size() : 0;
    }
    return static_cast<double>(bytes);
}

// A camera without signal is as quiet as can be: 2 seconds of 256 kbit/s and of 2000 kbit/s.
TEST(Channels, ConstantBitRate_IsKeptWhereNothingMoves) {
    EXPECT_NEAR(BytesOf(2, VEXO_ENC_STR_SUB, 24), 64000, 16000);
    EXPECT_LT(BytesOf(2, VEXO_ENC_STR_MAIN, 50), 100000);
}

// ---- rights --------------------------------------------------------------------------------------------------------

TEST(Rights, UserWithoutAWord_SeesAndPlaysTheChannels) {
    vexo_dev_usr_authority rights = {};
    ASSERT_EQ(vexo_model_get_usr_authority("guard", &rights), 0);
    EXPECT_EQ(rights.level_a, 1U);
    EXPECT_EQ(rights.level_b, 1U);
    EXPECT_THAT(rights.local_flag, ElementsAre(0, 0, 0, 0, 0));
    EXPECT_THAT(rights.remote_flag, ElementsAre(0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(rights.local_mask[0].word[0], 2U);
    EXPECT_EQ(rights.remote_mask[1].word[0], 2U);
    EXPECT_EQ(rights.local_mask[2].word[0], 0U);
}

TEST(Rights, UserWithRights_HasThoseAndNoOthers) {
    vexo_dev_usr_authority rights = {};
    ASSERT_EQ(vexo_model_get_usr_authority("chief", &rights), 0);
    EXPECT_EQ(rights.level_a, 1U);
    EXPECT_EQ(rights.level_b, 0U);
    EXPECT_THAT(rights.local_flag, ElementsAre(1, 0, 0, 0, 1));
    EXPECT_THAT(rights.remote_flag, ElementsAre(0, 0, 0, 0, 0, 0, 1));
    EXPECT_EQ(rights.local_mask[0].word[0], 0U);
    EXPECT_EQ(rights.local_mask[4].word[0], 5U);
    EXPECT_EQ(rights.remote_mask[0].word[0], 4U);
    EXPECT_EQ(rights.remote_mask[1].word[0], 7U) << "no channels named: all of them";
    vexo_cfgm_usr_info user = {};
    ASSERT_EQ(vexo_cfgm_get_usr_info(2, &user), 0);
    EXPECT_EQ(memcmp(&user.authority, &rights, sizeof rights), 0) << "both libraries tell the same";
}

// ---- network -------------------------------------------------------------------------------------------------------

TEST(Network, Interfaces_AreTheScenarios) {
    const vexo_network_cap* cap = vexo_cfgm_get_network_cap();
    ASSERT_NE(cap, nullptr);
    ASSERT_EQ(cap->eth_num, 2U);
    EXPECT_EQ(cap->bond_num, 1U);
    vexo_eth_cfg eth = {};
    ASSERT_EQ(vexo_cfgm_get_local_eth_cfg("eth0", &eth), 0);
    EXPECT_EQ(eth.dhcp, 0U);
    EXPECT_STREQ(eth.ipv6_addr, "2001:db8::20");
    EXPECT_STREQ(eth.ipv6_mask, "48");
    EXPECT_STREQ(eth.ipv6_gateway, "2001:db8::1");
    ASSERT_EQ(vexo_cfgm_get_local_eth_cfg("wan0", &eth), 0);
    EXPECT_EQ(eth.dhcp, 1U);
    EXPECT_STREQ(eth.ip_addr, "198.51.100.7");
    EXPECT_STREQ(eth.ipv6_addr, "");
    EXPECT_STREQ(eth.ipv6_mask, "");
}

TEST(Network, DefaultInterface_IsNamed) {
    char name[32] = "before";
    EXPECT_NE(vexo_model_get_default_if(name, 4), 0) << "it does not fit";
    EXPECT_STREQ(name, "before");
    EXPECT_EQ(vexo_model_get_default_if(name, 5), 0);
    EXPECT_STREQ(name, "wan0");
    EXPECT_NE(vexo_model_get_default_if(nullptr, 32), 0);
}

TEST(Network, Names_UpnpAndPorts) {
    vexo_dns_cfg dns = {};
    ASSERT_EQ(vexo_cfgm_get_dns_cfg(&dns), 0);
    EXPECT_STREQ(dns.dns1, "192.0.2.1");
    EXPECT_STREQ(dns.dns2, "192.0.2.2");
    EXPECT_STREQ(dns.ipv6_dns1, "2001:db8::53");
    EXPECT_STREQ(dns.ipv6_dns2, "2001:db8::54");
    VEXO_BOOL upnp = VEXO_FALSE;
    EXPECT_EQ(vexo_cfgm_get_upnp_cfg_ex(&upnp), 0);
    EXPECT_EQ(upnp, VEXO_TRUE);
    unsigned port = 0;
    EXPECT_EQ(vexo_cfgm_get_rtsp_port(&port), 0);
    EXPECT_EQ(port, 8554U);
}

TEST(Network, Pppoe_IsUpUnlessTheNetworkIsLost) {
    vexo_pppoe_cfg cfg = {};
    ASSERT_EQ(vexo_cfgm_get_pppoe_cfg(&cfg), 0);
    EXPECT_EQ(cfg.enable, 1U);
    EXPECT_STREQ(cfg.user, "me");
    vexo_pppoe_status status = {};
    ASSERT_EQ(vexo_model_get_pppoe_status(&status), 0);
    EXPECT_EQ(status.link_up, 1U);
    EXPECT_EQ(status.ipv4, 0U);
    EXPECT_STREQ(status.ip_addr, "");
    EXPECT_STREQ(status.ipv6_addr, "2001:db8::77");
    control::SetEvent("network lost", 0, true);
    ASSERT_EQ(vexo_model_get_pppoe_status(&status), 0);
    EXPECT_EQ(status.link_up, 0U);
    EXPECT_STREQ(status.ipv6_addr, "");
    control::SetEvent("network lost", 0, false);
}

// ---- capability ----------------------------------------------------------------------------------------------------

TEST(Capability, Record_IsTheScenarios) {
    const vexo_dev_capability* capability = vexo_model_get_dev_capability();
    ASSERT_NE(capability, nullptr);
    EXPECT_EQ(capability, vexo_cfgm_get_dev_cap()) << "one record";
    EXPECT_EQ(capability->device_kind, 3U);
    EXPECT_EQ(capability->analog_channels, 2U);
    EXPECT_EQ(capability->total_channels, 3U);
    EXPECT_EQ(capability->alarm_inputs, 9U);
    EXPECT_EQ(capability->alarm_outputs, 6U);
    EXPECT_EQ(capability->hardware_major, 2U);
    EXPECT_EQ(capability->hardware_minor, 7U);
    EXPECT_EQ(capability->disk_slots, 8U);
    EXPECT_EQ(capability->usb_ports, 3);
    EXPECT_EQ(capability->network_ports, 2);
}

TEST(Capability, RecordStreamMode_IsBothStreams) {
    unsigned mode = 7;
    EXPECT_EQ(vexo_model_get_rec_stream_mode(&mode), 0);
    EXPECT_EQ(mode, 0U);
}

// ---- faults --------------------------------------------------------------------------------------------------------

TEST(Configuration, FaultsOnOrder_FailOnceAndWriteNothing) {
    VEXO_BOOL truth = 7;
    unsigned number = 7;
    vexo_ipc_connect_cfg connection = {7, ""};
    vexo_enc_para para = {};
    vexo_sata_info sata = {};
    vexo_pppoe_status pppoe = {};
    vexo_hard_disk_info disk = {};
    char name[32] = "before";
    const struct {
        const char* operation;
        std::function<int()> call;
    } cases[] = {
        {"vexo_model_get_hard_disk_num", [&] { return vexo_model_get_hard_disk_num(&number); }},
        {"vexo_model_get_hard_disk_info", [&] { return vexo_model_get_hard_disk_info(0, &disk); }},
        {"vexo_model_get_ipc_connect_status", [&] { return vexo_model_get_ipc_connect_status(0, &truth); }},
        {"vexo_model_get_ipc_connect_cfg", [&] { return vexo_model_get_ipc_connect_cfg(0, &connection); }},
        {"vexo_model_get_audio_enable", [&] { return vexo_model_get_audio_enable(0, 1, &truth, 0); }},
        {"vexo_model_get_enc_para", [&] { return vexo_model_get_enc_para(0, 1, &para, VEXO_TRUE); }},
        {"vexo_model_get_sata_info", [&] { return vexo_model_get_sata_info(&sata); }},
        {"vexo_model_get_rec_stream_mode", [&] { return vexo_model_get_rec_stream_mode(&number); }},
        {"vexo_model_get_default_if", [&] { return vexo_model_get_default_if(name, sizeof name); }},
        {"vexo_model_get_pppoe_status", [&] { return vexo_model_get_pppoe_status(&pppoe); }},
    };
    for (const auto& one : cases) {
        control::Fail(one.operation, 1);
        EXPECT_NE(one.call(), 0) << one.operation;
    }
    EXPECT_EQ(truth, 7);
    EXPECT_EQ(number, 7U);
    EXPECT_EQ(connection.address_kind, 7U);
    EXPECT_EQ(para.width, 0U);
    EXPECT_EQ(sata.flag, 0);
    EXPECT_EQ(pppoe.link_up, 0U);
    EXPECT_EQ(disk.size_mb, 0U);
    EXPECT_STREQ(name, "before");
    for (const auto& one : cases) {
        EXPECT_EQ(one.call(), 0) << one.operation;
    }
}

// ---- log -----------------------------------------------------------------------------------------------------------

/** What the log hook hears, while this stands. */
class Log {
public:
    Log() { vexo_model_set_log_hook(Hear, this); }
    ~Log() { vexo_model_set_log_hook(nullptr, nullptr); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    std::vector<std::string> Lines() {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_lines;
    }
    /** Waits for that many entries; false when they did not come. */
    bool WaitFor(size_t count) {
        return Eventually([&] { return Lines().size() >= count; });
    }

private:
    static void Hear(int login, tag_VexoHostMgrLog* entry, void* user) {
        Log& log = *static_cast<Log*>(user);
        std::lock_guard<std::mutex> hold(log.m_lock);
        log.m_lines.push_back(std::to_string(login) + " " + std::to_string(entry->dwType) + " " + entry->sText);
    }

    std::mutex m_lock;
    std::vector<std::string> m_lines;
};

TEST(Log, AlarmsAndDiskEvents_AreEnteredAsTheyBeginAndEnd) {
    static Log log;
    control::SetEvent("motion", 2, true);
    ASSERT_TRUE(log.WaitFor(1));
    control::SetEvent("disk full", 1, true);
    ASSERT_TRUE(log.WaitFor(2));
    control::SetEvent("network lost", 0, true);
    ASSERT_TRUE(log.WaitFor(3));
    control::SetEvent("motion", 2, false);
    ASSERT_TRUE(log.WaitFor(4));
    control::SetEvent("disk full", 1, false);
    ASSERT_TRUE(log.WaitFor(5));
    control::SetEvent("network lost", 0, false);
    ASSERT_TRUE(log.WaitFor(6));
    EXPECT_THAT(log.Lines(),
                ElementsAre("0 5 motion, channel 2", "0 6 disk full, disk 1", "0 5 network lost",
                            "0 5 motion, channel 2: over", "0 6 disk full, disk 1: over", "0 5 network lost: over"));
}

TEST(Log, WhatIsTheCaseAlready_IsNoNews) {
    control::SetEvent("shelter", 1, true);
    static Log log;
    control::SetEvent("input", 3, true);
    ASSERT_TRUE(log.WaitFor(1));
    EXPECT_THAT(log.Lines(), ElementsAre("0 5 input, input 3"));
    control::SetEvent("input", 3, false);
    control::SetEvent("shelter", 1, false);
    EXPECT_TRUE(log.WaitFor(3));
}

}  // namespace
