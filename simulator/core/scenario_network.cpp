#include "core/scenario_network.h"

#include <arpa/inet.h>

#include <set>

namespace simulator {
namespace {

constexpr size_t MAX_INTERFACES = 16;
constexpr size_t MAX_PARAMETERS = 8;
constexpr size_t NAME_BYTES = 63;
constexpr size_t INTERFACE_NAME_BYTES = 15;
constexpr size_t ADDRESS_BYTES = 15;
constexpr size_t PARAMETER_VALUE_BYTES = 255;
constexpr Bounds PREFIX = {0, 128, "bits"};
constexpr Bounds BONDS = {0, 32, "bonded interfaces"};
constexpr Bounds PORT = {1, 65535, "port number"};
constexpr Bounds LINK_NUMBER = {1, 32, "platform link"};

std::string ReadIpv6Address(JsonSection& section, const char* key) {
    std::string address = section.Text(key, "", 0, INET6_ADDRSTRLEN - 1);
    in6_addr parsed;
    if (!address.empty() && inet_pton(AF_INET6, address.c_str(), &parsed) != 1) {
        section.Refuse(key, "\"" + address + "\" is no IPv6 address, give one such as \"2001:db8::20\"");
    }
    return address;
}

std::string ReadAddress(JsonSection& section, const char* key, const char* usual) {
    std::string address = section.Text(key, usual, 0, ADDRESS_BYTES);
    in_addr parsed;
    if (!address.empty() && inet_pton(AF_INET, address.c_str(), &parsed) != 1) {
        section.Refuse(key, "\"" + address + "\" is no IPv4 address, give one such as \"192.0.2.20\"");
    }
    return address;
}

InterfaceSettings ReadInterface(JsonSection section, size_t index) {
    InterfaceSettings settings;
    settings.name = section.Text("name", "eth" + std::to_string(index), 1, INTERFACE_NAME_BYTES);
    settings.dhcp = section.Truth("dhcp", false);
    settings.address = ReadAddress(section, "address", "192.0.2.20");
    settings.mask = ReadAddress(section, "mask", "255.255.255.0");
    settings.gateway = ReadAddress(section, "gateway", "192.0.2.1");
    settings.ipv6_address = ReadIpv6Address(section, "ipv6_address");
    settings.ipv6_prefix = section.Whole("ipv6_prefix", settings.ipv6_prefix, PREFIX);
    settings.ipv6_gateway = ReadIpv6Address(section, "ipv6_gateway");
    section.RefuseOtherKeys();
    return settings;
}

/** The interface that the default route uses: one of those that there are. */
std::string ReadDefaultInterface(JsonSection& section, const std::vector<InterfaceSettings>& interfaces) {
    std::string name = section.Text("default_interface", interfaces.front().name, 1, INTERFACE_NAME_BYTES);
    for (const InterfaceSettings& settings : interfaces) {
        if (settings.name == name) {
            return name;
        }
    }
    section.Refuse("default_interface", "\"" + name + "\" is the name of no interface, give one of theirs");
}

std::vector<InterfaceSettings> ReadInterfaces(JsonSection& section) {
    std::vector<InterfaceSettings> interfaces;
    std::set<std::string> names;
    for (const JsonSection& entry : section.Objects("interfaces", 1, MAX_INTERFACES)) {
        interfaces.push_back(ReadInterface(entry, interfaces.size()));
        if (!names.insert(interfaces.back().name).second) {
            entry.Refuse("name", "\"" + interfaces.back().name + "\" is the name of an earlier interface");
        }
    }
    if (interfaces.empty()) {
        const nlohmann::json nothing = nlohmann::json::object();
        interfaces.push_back(ReadInterface(JsonSection(nothing, "network.interfaces"), 0));
    }
    return interfaces;
}

PortSettings ReadPorts(JsonSection section) {
    PortSettings ports;
    ports.http = section.Whole("http", ports.http, PORT);
    ports.https = section.Whole("https", ports.https, PORT);
    ports.onvif = section.Whole("onvif", ports.onvif, PORT);
    ports.rtmp = section.Whole("rtmp", ports.rtmp, PORT);
    ports.rtsp = section.Whole("rtsp", ports.rtsp, PORT);
    section.RefuseOtherKeys();
    return ports;
}

PppoeSettings ReadPppoe(JsonSection section) {
    PppoeSettings pppoe;
    pppoe.enabled = section.Truth("enabled", false);
    pppoe.user = section.Text("user", "", 0, NAME_BYTES);
    pppoe.password = section.Text("password", "", 0, NAME_BYTES);
    pppoe.address = section.Text("address", "192.0.2.77", 0, INET6_ADDRSTRLEN - 1);
    in6_addr parsed;
    if (!pppoe.address.empty() && inet_pton(AF_INET, pppoe.address.c_str(), &parsed) != 1 &&
        inet_pton(AF_INET6, pppoe.address.c_str(), &parsed) != 1) {
        section.Refuse("address", "\"" + pppoe.address + "\" is no IPv4 or IPv6 address");
    }
    section.RefuseOtherKeys();
    return pppoe;
}

LinkParameter ReadParameter(JsonSection section) {
    LinkParameter parameter;
    parameter.name = section.Text("name", "", 0, NAME_BYTES);
    parameter.value = section.Text("value", "", 0, PARAMETER_VALUE_BYTES);
    section.RefuseOtherKeys();
    return parameter;
}

PlatformLink ReadPlatformLink(JsonSection section, unsigned usual_number) {
    PlatformLink link;
    link.number = section.Whole("number", usual_number, LINK_NUMBER);
    link.enabled = section.Truth("enabled", true);
    for (const JsonSection& entry : section.Objects("parameters", 0, MAX_PARAMETERS)) {
        link.parameters.push_back(ReadParameter(entry));
    }
    section.RefuseOtherKeys();
    return link;
}

}  // namespace

NetworkSettings ReadNetwork(JsonSection section) {
    NetworkSettings network;
    network.interfaces = ReadInterfaces(section);
    network.default_interface = ReadDefaultInterface(section, network.interfaces);
    network.bonds = section.Whole("bonds", 0, BONDS);
    network.dns1 = ReadAddress(section, "dns1", "192.0.2.1");
    network.dns2 = ReadAddress(section, "dns2", "");
    network.ipv6_dns1 = ReadIpv6Address(section, "ipv6_dns1");
    network.ipv6_dns2 = ReadIpv6Address(section, "ipv6_dns2");
    network.upnp = section.Truth("upnp", false);
    network.ports = ReadPorts(section.Object("ports"));
    network.pppoe = ReadPppoe(section.Object("pppoe"));
    section.RefuseOtherKeys();
    return network;
}

std::vector<PlatformLink> ReadPlatformLinks(const std::vector<JsonSection>& sections) {
    std::vector<PlatformLink> links;
    std::set<unsigned> numbers;
    for (const JsonSection& section : sections) {
        links.push_back(ReadPlatformLink(section, static_cast<unsigned>(links.size()) + 1));
        if (!numbers.insert(links.back().number).second) {
            section.Refuse("number",
                           std::to_string(links.back().number) + " is the number of an earlier platform link");
        }
    }
    return links;
}

}  // namespace simulator
