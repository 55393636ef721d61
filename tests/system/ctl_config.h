// What the tests of hostmgrctl config share: a recorder that is set to unusual values, and the command's output as a
// table and as JSON.
#ifndef TESTS_SYSTEM_CTL_CONFIG_H
#define TESTS_SYSTEM_CTL_CONFIG_H

#include <nlohmann/json.hpp>
#include <string>

#include "ctl_support.h"

namespace ctl_config {

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2, NO_OUTPUT = 4 };

constexpr char UNUSUAL[] = R"({
    "cameras": [
        {"name": "Gate", "address": "198.51.100.7", "sub": {"kbps": 777, "constant": true}},
        {"name": "Yard", "address": "yard.a-rather-long-name-of-a-host.of-the-north-site.example.net",
         "audio": {"hz": 0}, "sub": {"kbps": 129, "quality": 3}},
        {"name": "Dark", "signal": false}
    ],
    "users": [
        {"name": "admin", "password": "admin12345", "administrator": true},
        {"name": "default", "password": "nobody"},
        {"name": "北门看守员北门看守员北门", "password": "0123456789abcdefXYZ", "manage_disks": true,
         "local": {"rights": [1, 5], "by_channel": [{"right": 5, "channels": [1, 3]}]},
         "remote": {"rights": [7], "by_channel": [{"channels": [3]}, {}]}}
    ],
    "version": "3.7", "build_date": "2019-7-5", "seed": 4711, "alarm_inputs": 9,
    "zero_channel": {"fps": 7, "kbps": 333, "constant": true},
    "disks": [
        {"megabytes": 1500000, "partitions": [1000000, 400000]},
        {"megabytes": 500, "kind": "array", "state": "broken"},
        {"megabytes": 300, "kind": "external", "state": "unformatted"},
        {"megabytes": 2000, "kind": "network"}
    ],
    "capability": {"kind": "hybrid", "analog_channels": 2, "alarm_outputs": 6, "disk_slots": 8, "usb_ports": 3,
                   "hardware": "2.11"},
    "network": {
        "interfaces": [
            {"ipv6_address": "2001:db8::20", "ipv6_prefix": 48, "ipv6_gateway": "2001:db8::1"},
            {"name": "wan12", "dhcp": true, "address": "198.51.100.8", "mask": "255.255.0.0", "gateway": "198.51.0.1"}
        ],
        "default_interface": "wan12", "upnp": true, "dns2": "192.0.2.2", "ipv6_dns1": "2001:db8::53",
        "ipv6_dns2": "2001:db8::54",
        "ports": {"http": 8081, "https": 8443, "onvif": 8001, "rtmp": 1936, "rtsp": 8554},
        "pppoe": {"enabled": true, "user": "me", "password": "secret", "address": "2001:db8::77"}
    },
    "platform_links": [
        {"number": 31, "parameters": [{"value": "platform.example.org"}, {"value": "9000"},
                                      {"value": "a value of more than thirty-two bytes"}]},
        {"number": 2, "enabled": false},
        {"number": 7}
    ],
    "factory": [{"name": "Model", "value": "NVR-16"}, {"name": "Empty"}],
    "recordings": {"live": "off", "history": {"segments": 0}}
})";

/** Columns of a line: what is beyond ASCII here is Chinese, two columns wide. */
inline size_t ColumnsOf(const std::string& line) {
    size_t columns = 0;
    for (const char byte : line) {
        const auto code = static_cast<unsigned char>(byte);
        columns += code < 0x80 ? 1 : code >= 0xC0 ? 2 : 0;
    }
    return columns;
}

inline void ExpectNarrow(const std::string& text) {
    for (const std::string& line : ctl::Lines(text)) {
        EXPECT_LE(ColumnsOf(line), 80U) << line;
    }
}

/** "key   value" of a table, whatever its width; of the first line that has the key. */
inline std::string ValueOf(const std::string& table, const std::string& key) {
    for (const std::string& line : ctl::Lines(table)) {
        const size_t begin = line.find_first_not_of(' ');
        if (begin != std::string::npos && line.compare(begin, key.size() + 2, key + "  ") == 0) {
            return line.substr(line.find_first_not_of(' ', begin + key.size()));
        }
    }
    return "no " + key;
}

class CtlConfigTest : public ctl::CtlTest {
protected:
    CtlConfigTest() {
        setenv("TZ", "UTC", 1);
        setenv("RECORDER_QUIET", "1", 1);
        UseScenario(UNUSUAL);
    }

    nlohmann::json Record(const std::string& name, const std::string& options = "") const {
        const ctl::Outcome outcome = Run("config " + name + " --json " + options);
        EXPECT_EQ(outcome.status, OK) << outcome.err;
        return nlohmann::json::parse(outcome.out).at(name);
    }

    std::string Table(const std::string& name, const std::string& options = "") const {
        const ctl::Outcome outcome = Run("config " + name + " " + options);
        EXPECT_EQ(outcome.status, OK) << outcome.err;
        ExpectNarrow(outcome.out);
        return outcome.out;
    }
};

}  // namespace ctl_config

#endif
