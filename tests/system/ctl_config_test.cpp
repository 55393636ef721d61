// hostmgrctl config: what a scenario sets to unusual values is shown with these values, in tables and in JSON. The
// records themselves stand in the unit tests of their fillers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <map>

#include "ctl_config.h"

using ctl::Outcome;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

using namespace ctl_config;

namespace {

// ---- device, time --------------------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, Device_IsTheScenarios) {
    const json device = Record("device");
    const std::string serial = device.at("serial_number");
    EXPECT_THAT(serial, MatchesRegex("[0-9a-f]{20}"));
    EXPECT_EQ(device, json({{"type", "NVR2.0"},
                            {"kind", "hybrid recorder"},
                            {"class", 1},
                            {"serial_number", serial},
                            {"software_version", "3.7"},
                            {"build_date", "2019-07-05"},
                            {"hardware_version", "2.11"},
                            {"channels", 2},
                            {"network_channels", 1},
                            {"alarm_inputs", 9},
                            {"alarm_outputs", 6},
                            {"disk_slots", 8},
                            {"sata", true},
                            {"usb_ports", 3},
                            {"network_ports", 2},
                            {"recorded_streams", "main and sub stream"}}));
    const std::string table = Table("device");
    EXPECT_THAT(table, HasSubstr("device: what the recorder is and has (command 100, 164 bytes)\n"));
    EXPECT_EQ(ValueOf(table, "serial number"), serial);
    EXPECT_EQ(ValueOf(table, "software version"), "3.7");
    EXPECT_EQ(ValueOf(table, "recorded streams"), "main and sub stream");
}

TEST_F(CtlConfigTest, DeviceShort_LacksWhatTheShortFormLacks) {
    json device = Record("device");
    device.erase("recorded_streams");
    EXPECT_EQ(Record("device-short"), device);
    EXPECT_THAT(Table("device-short", "--members"),
                AllOf(HasSubstr("     130      1  byShortForm        yes\n"), Not(HasSubstr("byRecStreamMode"))));
}

TEST_F(CtlConfigTest, Time_HasItsOffset) {
    setenv("TZ", "XXX-5:30", 1);
    for (const std::string name : {"time", "time-short"}) {
        const time_t before = time(nullptr);
        const std::string text = Record(name).at("time");
        const time_t after = time(nullptr);
        struct tm parts = {};
        ASSERT_NE(strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S%z", &parts), nullptr) << text;
        EXPECT_EQ(parts.tm_gmtoff, 19800);
        const time_t told = timegm(&parts) - 19800;
        EXPECT_GE(told, before);
        EXPECT_LE(told, after);
        EXPECT_THAT(ValueOf(Table(name), "recorder's clock"), MatchesRegex("[0-9-]{10} [0-9:]{8} \\+05:30"));
    }
    EXPECT_TRUE(Record("time-short").at("utc_offset_minutes").is_number_integer());
}

// ---- encoding ------------------------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, Encoding_OfAllChannelsUnlessAsked) {
    const json channels = Record("encoding").at("channels");
    ASSERT_EQ(channels.size(), 3U);
    EXPECT_EQ(channels.at(0), json::parse(R"({"channel": 1, "readable": true, "audio": true, "rate_mode": "constant",
                                              "quality": 0, "kbps": 777})"));
    EXPECT_EQ(channels.at(1), json::parse(R"({"channel": 2, "readable": true, "audio": false, "rate_mode": "variable",
                                              "quality": 3, "kbps": 129})"));
    EXPECT_EQ(Record("encoding", "-c 2").at("channels"), json::array({channels.at(1)}));
    const json range = Record("encoding", "-c 2-5").at("channels");
    ASSERT_EQ(range.size(), 4U);
    EXPECT_EQ(range.at(1), channels.at(2));
    EXPECT_EQ(range.at(3), json::parse(R"({"channel": 5, "readable": false, "audio": null, "rate_mode": null,
                                           "quality": null, "kbps": null})"));
    EXPECT_THAT(ctl::Lines(Table("encoding", "-c 2-4")),
                ElementsAre("encoding: encoding of the channels' sub streams (command 106, 348 bytes)",
                            "  channel  read  audio  rate      quality    bit rate",
                            "        2  yes   no     variable        3  129 kbit/s",
                            "        3  yes   yes    variable        6  256 kbit/s",
                            "        4  no    -      -               -           -"));
}

TEST_F(CtlConfigTest, ZeroChannel_TellsWhatTheRecorderLeavesAlone) {
    const json constant = {{"resolution", "more than 352 x 288"},
                           {"kbps", 333},
                           {"rate_mode", "constant"},
                           {"aux_mode", nullptr},
                           {"fps", 7},
                           {"most_fps", 25}};
    EXPECT_EQ(Record("zero-channel"), constant);
    const std::string table = Table("zero-channel");
    EXPECT_EQ(ValueOf(table, "bit rate"), "333 kbit/s");
    EXPECT_EQ(ValueOf(table, "auxiliary mode"), "not told");
    UseScenario(R"({"zero_channel": {"fps": 9}})");
    EXPECT_EQ(Record("zero-channel").at("aux_mode"), 0);
    EXPECT_EQ(Record("zero-channel").at("rate_mode"), "variable");
}

// ---- users ---------------------------------------------------------------------------------------------------------

std::vector<std::string> Granted(const json& rights) {
    std::vector<std::string> granted;
    for (const json& right : rights) {
        if (right.at("granted")) {
            granted.push_back(right.at("index").dump() + " " + right.at("right").get<std::string>());
        }
    }
    return granted;
}

TEST_F(CtlConfigTest, Users_WithTheirRights) {
    const json users = Record("users").at("users");
    ASSERT_EQ(users.size(), 2U) << "the user \"default\" is nobody";
    EXPECT_EQ(users.at(0).at("index"), 0);
    EXPECT_EQ(users.at(0).at("name"), "admin");
    EXPECT_EQ(Granted(users.at(0).at("local_rights")).size(), 10U);
    EXPECT_EQ(Granted(users.at(0).at("remote_rights")).size(), 14U);
    const json& guard = users.at(1);
    EXPECT_EQ(guard.at("index"), 2);
    EXPECT_EQ(guard.at("name"), "北门看守员北门看守员\\xe5\\x8c") << "32 bytes are cut through a character";
    EXPECT_THAT(Granted(guard.at("local_rights")),
                ElementsAre("0 always", "1 always", "4 flag 1", "8 manage disks", "9 flag 5"));
    EXPECT_THAT(Granted(guard.at("remote_rights")),
                ElementsAre("0 always", "1 always", "6 flag 7", "7 always", "9 always"));
    const std::map<std::string, json> masks = {
        {"local_1", json::array()}, {"local_2", json::array()},  {"local_3", json::array()},
        {"local_4", json::array()}, {"local_5", {1, 3}},         {"remote_1", json::array({3})},
        {"remote_2", {1, 2, 3}},    {"remote_3", json::array()}, {"remote_4", json::array()}};
    for (const auto& [right, channels] : masks) {
        EXPECT_EQ(guard.at("channels_" + right), channels) << right;
    }
    const std::string table = Table("users");
    EXPECT_THAT(table, AllOf(HasSubstr("\n  user 2\n"), Not(HasSubstr("user 1"))));
    EXPECT_THAT(table, HasSubstr("    local rights              0 always, 1 always, 4 flag 1, 8 manage disks,\n"
                                 "                              9 flag 5; not 2 change parameters, 3 flag 2,\n"));
    EXPECT_THAT(table, HasSubstr("    channels, local right 5   1, 3\n"));
    EXPECT_THAT(table, HasSubstr("    channels, remote right 2  1-3\n"));
}

TEST_F(CtlConfigTest, Passwords_OnlyWhenAskedFor) {
    EXPECT_EQ(Record("users").at("users").at(1).at("password"), nullptr);
    EXPECT_EQ(Record("users", "--passwords").at("users").at(1).at("password"), "0123456789abcdef");
    EXPECT_THAT(Table("users"), AllOf(HasSubstr("set (--passwords shows it)"), Not(HasSubstr("admin12345"))));
    EXPECT_THAT(Table("users", "--passwords"), HasSubstr("password                  admin12345\n"));
    EXPECT_THAT(Table("network"), Not(HasSubstr("secret")));
    EXPECT_THAT(Table("network", "--members"), Not(HasSubstr("secret")));
    EXPECT_EQ(Record("network", "--passwords").at("pppoe").at("password"), "secret");
}

// ---- state and disks -----------------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, State_DisksAndChannels) {
    const json state = Record("state");
    EXPECT_EQ(state.at("disks").size(), 4U);
    EXPECT_EQ(state.at("disks").at(0),
              json::parse(R"({"index": 0, "capacity_mb": 1500000, "partitions_sum": 1400000, "status": []})"));
    EXPECT_EQ(state.at("disks").at(1).at("status"), json::array({"not normal"}));
    ASSERT_EQ(state.at("channels").size(), 64U);
    EXPECT_EQ(state.at("channels").at(0),
              json::parse(R"({"channel": 1, "connected": true, "recording": false, "address": "198.51.100.7",
                              "domain": ""})"));
    EXPECT_EQ(state.at("channels").at(1).at("domain"),
              "yard.a-rather-long-name-of-a-host.of-the-north-site.example.net");
    EXPECT_EQ(state.at("channels").at(2).at("connected"), false);
    EXPECT_EQ(state.at("channels").at(63).at("channel"), 64);
    const std::string table = Table("state");
    EXPECT_THAT(table, HasSubstr("        0  1500000 MB (1.5 TB)     1400000  normal\n"));
    EXPECT_THAT(table, HasSubstr("          1  yes        no         198.51.100.7      -\n"));
    EXPECT_THAT(table, HasSubstr("    62 of 64 channels without a connected camera are not shown\n"));
}

TEST_F(CtlConfigTest, Disks_WithTypeAddressAndStatus) {
    const json disks = Record("disks");
    EXPECT_EQ(disks.at("disk_count"), 4);
    EXPECT_EQ(disks.at("disks").at(0),
              json::parse(R"({"index": 0, "readable": true, "type": "local", "address": "01:00:00",
                              "capacity_mb": 1500000, "partitions_sum": 1400000, "status": []})"));
    std::vector<std::string> types;
    for (const json& disk : disks.at("disks")) {
        types.push_back(disk.at("type"));
    }
    EXPECT_THAT(types, ElementsAre("local", "array", "external", "network"));
    EXPECT_THAT(Table("disks"),
                AllOf(HasSubstr("      1  yes   array     00:00:00               500 MB         500  not normal\n"),
                      HasSubstr("      3  yes   network   00:00:00       2000 MB (2 GB)        2000  normal\n")));
    EXPECT_EQ(Record("disks-8"), disks);
}

TEST_F(CtlConfigTest, Disks_MoreThanTheRecordHolds) {
    std::string disks;
    for (int i = 0; i < 30; ++i) {
        disks += std::string(i == 0 ? "" : ",") + R"({"megabytes": 100})";
    }
    UseScenario("{\"disks\": [" + disks + "]}");
    EXPECT_EQ(Record("disks").at("disk_count"), 30);
    EXPECT_EQ(Record("disks").at("disks").size(), 24U);
    EXPECT_EQ(Record("disks-8").at("disks").size(), 8U);
    EXPECT_THAT(Table("disks"), HasSubstr("\n  the record has room for the first 24\n"));
    EXPECT_THAT(Table("disks-8"), HasSubstr("\n  the record has room for the first 8\n"));
}

TEST_F(CtlConfigTest, Disks_OneThatCannotBeRead) {
    UseScenario(R"({"disks": [{"megabytes": 100}, {"megabytes": 200}],
                    "faults": [{"operation": "vexo_model_get_hard_disk_info"}]})");
    EXPECT_EQ(Record("disks").at("disks"),
              json::parse(R"([{"index": 0, "readable": false, "type": null, "address": null, "capacity_mb": null,
                               "partitions_sum": null, "status": null},
                              {"index": 1, "readable": true, "type": "local", "address": "02:00:00",
                               "capacity_mb": 200, "partitions_sum": 200, "status": []}])"));
    EXPECT_THAT(Table("disks"), HasSubstr("      0  no    -      -                -           -  -\n"));
}

TEST_F(CtlConfigTest, PictureDir_IsMade) {
    const std::string path = Record("picture-dir").at("path");
    EXPECT_THAT(path, testing::EndsWith("/disk-1/host_pic"));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_EQ(Run("config picture-dir --raw -").out, path);
}

// ---- network -------------------------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, Network_IsTheScenarios) {
    EXPECT_EQ(Record("network"), json::parse(R"({
        "interface_count": 2, "default_interface": 1, "upnp": true,
        "interfaces": [
            {"index": 0, "number": 0, "text": "fixed", "dhcp": false, "link_mode": 5, "mtu": 1500,
             "address": "192.0.2.20", "mask": "255.255.255.0", "gateway": "192.0.2.1", "dns1": "192.0.2.1",
             "dns2": "192.0.2.2", "ipv6_address": "2001:db8::20", "ipv6_mask": "48", "ipv6_gateway": "2001:db8::1",
             "ipv6_dns1": "2001:db8::53", "ipv6_dns2": "2001:db8::54"},
            {"index": 1, "number": 12, "text": "dhcp", "dhcp": true, "link_mode": 5, "mtu": 1500,
             "address": "198.51.100.8", "mask": "255.255.0.0", "gateway": "198.51.0.1", "dns1": "192.0.2.1",
             "dns2": "192.0.2.2", "ipv6_address": "", "ipv6_mask": "", "ipv6_gateway": "",
             "ipv6_dns1": "2001:db8::53", "ipv6_dns2": "2001:db8::54"}
        ],
        "ports": {"data": 5050, "http": 8081, "https": 8443, "onvif": 8001, "rtmp": 1936, "rtmp_enabled": true,
                  "rtsp": 8554, "rtsp_enabled": true},
        "pppoe": {"enabled": true, "user": "me", "password": null, "address": "", "ipv6_address": "2001:db8::77"}
    })"));
    const std::string table = Table("network");
    EXPECT_EQ(ValueOf(table, "default interface"), "1");
    EXPECT_EQ(ValueOf(table, "HTTPS"), "8443");
    EXPECT_EQ(ValueOf(table, "MTU"), "1500 bytes");
    EXPECT_THAT(table, HasSubstr("\n  interface 1\n    number in its name  12\n    set up as           dhcp\n"));
    EXPECT_THAT(table, HasSubstr("    IPv6 address  2001:db8::77\n"));
}

TEST_F(CtlConfigTest, Platforms_ThoseThatAreOn) {
    EXPECT_EQ(Record("platforms").at("platforms"),
              json::parse(R"([{"platform": 7, "enabled": true, "parameters": ["", "", "", "", "", "", "", ""]},
                              {"platform": 31, "enabled": true,
                               "parameters": ["platform.example.org", "9000", "a value of more than thirty-two",
                                              "", "", "", "", ""]}])"));
    EXPECT_THAT(Table("platforms"), AllOf(HasSubstr("         7  yes      -\n"),
                                          HasSubstr("        31  yes      1: platform.example.org, 2: 9000,\n"
                                                    "                     3: a value of more than thirty-two\n")));
    UseScenario("{}");
    EXPECT_THAT(ctl::Lines(Table("platforms")).back(), "  none");
}

}  // namespace
