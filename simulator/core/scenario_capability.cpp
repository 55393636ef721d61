#include "core/scenario_capability.h"

#include <cstdio>
#include <set>

namespace simulator {
namespace {

constexpr size_t ITEM_NAME_BYTES = 48;  ///< what the platform's record holds
constexpr size_t ITEM_VALUE_BYTES = 256;
constexpr unsigned USUAL_ALARM_OUTPUTS = 1;
constexpr unsigned USUAL_USB_PORTS = 2;

bool ReadHybrid(JsonSection& section) {
    const std::string kind = section.Text("kind", "recorder", 1, 16);
    if (kind != "recorder" && kind != "hybrid") {
        section.Refuse("kind", "\"" + kind + "\" does not do, give \"recorder\" or \"hybrid\"");
    }
    return kind == "hybrid";
}

}  // namespace

std::string ReadVersion(JsonSection& section, const char* key) {
    std::string version = section.Text(key, "1.0", 3, 9);
    char major[5];
    char minor[5];
    int length = 0;
    sscanf(version.c_str(), "%4[0-9].%4[0-9]%n", major, minor, &length);
    if (length != static_cast<int>(version.size())) {
        section.Refuse(key, "\"" + version + "\" does not do, give major.minor, such as \"1.0\"");
    }
    return version;
}

CapabilitySettings ReadCapability(JsonSection section, const Scenario& scenario) {
    const auto channels = static_cast<unsigned>(scenario.cameras.size());
    const auto disks = static_cast<unsigned>(scenario.disks.size());
    CapabilitySettings capability;
    capability.hybrid = ReadHybrid(section);
    capability.analog_channels = section.Whole("analog_channels", channels, {0, channels, "analog channels"});
    capability.alarm_outputs = section.Whole("alarm_outputs", USUAL_ALARM_OUTPUTS, {0, 64, "alarm outputs"});
    capability.disk_slots = section.Whole("disk_slots", disks, {disks, 255, "slots, no fewer than disks"});
    capability.usb_ports = section.Whole("usb_ports", USUAL_USB_PORTS, {0, 255, "USB ports"});
    capability.hardware = ReadVersion(section, "hardware");
    section.RefuseOtherKeys();
    return capability;
}

std::vector<FactoryItem> ReadFactory(const std::vector<JsonSection>& sections) {
    std::vector<FactoryItem> items;
    std::set<std::string> names;
    for (JsonSection section : sections) {
        items.push_back(
            {section.RequiredText("name", 1, ITEM_NAME_BYTES), section.Text("value", "", 0, ITEM_VALUE_BYTES)});
        if (!names.insert(items.back().name).second) {
            section.Refuse("name", "\"" + items.back().name + "\" is the name of an earlier item, give another");
        }
        section.RefuseOtherKeys();
    }
    return items;
}

}  // namespace simulator
