// How the recorder is reached: interfaces, name servers, ports, PPPoE, and the platforms that it reports to.
#include "config_decode.h"

namespace hostmgrctl {
namespace {

using namespace decode;  // the tables are all about it
using nlohmann::ordered_json;
using Net = _tagVexoHostMgrNetCfg;
using Eth = _tagVexoHostMgrEthCfg;
using Platform = _tagVexoHostMgrPlatformInfo;
using Platforms = _tagVexoHostMgrPlatformCfg;

// ---- network -------------------------------------------------------------------------------------------------------

constexpr char BYTES[] = "bytes";

constexpr Field NET_FIELDS[] = {
    {nullptr, "", HOSTMGRCTL_MEMBER(Net, dwSize), Number},
    {"interface_count", "interfaces", HOSTMGRCTL_MEMBER(Net, byEthNum), Number},
    {"default_interface", "default interface", HOSTMGRCTL_MEMBER(Net, byDefaultEth), Number},
    {"upnp", "UPnP", HOSTMGRCTL_MEMBER(Net, byUpnpEnable), Flag},
    {nullptr, "", HOSTMGRCTL_MEMBER(Net, byFixedOne), Number},
};

constexpr Field ETH_FIELDS[] = {
    {"number", "number in its name", HOSTMGRCTL_MEMBER(Eth, byEthNo), Number},
    {"text", "set up as", HOSTMGRCTL_MEMBER(Eth, sEthText), Text},
    {"dhcp", "address by DHCP", HOSTMGRCTL_MEMBER(Eth, byEthFlag), Flag},
    {"link_mode", "link mode", HOSTMGRCTL_MEMBER(Eth, dwLinkMode), Number},
    {"mtu", "MTU", HOSTMGRCTL_MEMBER(Eth, wMtu), Measured<BYTES>},
    {"address", "address", HOSTMGRCTL_MEMBER(Eth, sIpAddr), Text},
    {"mask", "mask", HOSTMGRCTL_MEMBER(Eth, sNetMask), Text},
    {"gateway", "gateway", HOSTMGRCTL_MEMBER(Eth, sGateway), Text},
    {"dns1", "name server 1", HOSTMGRCTL_MEMBER(Eth, sDns1), Text},
    {"dns2", "name server 2", HOSTMGRCTL_MEMBER(Eth, sDns2), Text},
    {"ipv6_address", "IPv6 address", HOSTMGRCTL_MEMBER(Eth, sIpV6Addr), Text},
    {"ipv6_mask", "IPv6 prefix length", HOSTMGRCTL_MEMBER(Eth, sIpV6Mask), Text},
    {"ipv6_gateway", "IPv6 gateway", HOSTMGRCTL_MEMBER(Eth, sIpV6Gateway), Text},
    {"ipv6_dns1", "IPv6 name server 1", HOSTMGRCTL_MEMBER(Eth, sIpV6Dns1), Text},
    {"ipv6_dns2", "IPv6 name server 2", HOSTMGRCTL_MEMBER(Eth, sIpV6Dns2), Text},
};

constexpr Field PORT_FIELDS[] = {
    {"data", "data", HOSTMGRCTL_MEMBER(Net, wDataPort), Number},
    {"http", "HTTP", HOSTMGRCTL_MEMBER(Net, wHttpPort), Number},
    {"https", "HTTPS", HOSTMGRCTL_MEMBER(Net, wHttpsPort), Number},
    {"onvif", "ONVIF", HOSTMGRCTL_MEMBER(Net, wOnvifPort), Number},
    {"rtmp", "RTMP", HOSTMGRCTL_MEMBER(Net, wRtmpPort), Number},
    {"rtmp_enabled", "RTMP switched on", HOSTMGRCTL_MEMBER(Net, byRtmpEnable), Flag},
    {"rtsp", "RTSP", HOSTMGRCTL_MEMBER(Net, wRtspPort), Number},
    {"rtsp_enabled", "RTSP switched on", HOSTMGRCTL_MEMBER(Net, byRtspEnable), Flag},
};

constexpr Field PPPOE_FIELDS[] = {
    {"enabled", "switched on", HOSTMGRCTL_MEMBER(Net, dwPppoeEnable), Flag},
    {"user", "user", HOSTMGRCTL_MEMBER(Net, sPppoeUser), Text},
    {"password", "password", HOSTMGRCTL_MEMBER(Net, sPppoePassword), Password},
    {"address", "address", HOSTMGRCTL_MEMBER(Net, sPppoeIpAddr), Text},
    {"ipv6_address", "IPv6 address", HOSTMGRCTL_MEMBER(Net, sPppoeIpV6Addr), Text},
};

bool IsInterface(const Entry& entry) {
    return entry.index < entry.record[offsetof(Net, byEthNum)];
}

Section EthSection() {
    Section section = {"interfaces", "interface", Form::Lines, ETH_FIELDS, "struEth", offsetof(Net, struEth)};
    section.stride = sizeof(Eth);
    section.entries = sizeof(Net::struEth) / sizeof(Eth);
    section.number = "index";
    section.exists = IsInterface;
    return section;
}

const Section NET_SECTIONS[] = {{nullptr, nullptr, Form::Lines, NET_FIELDS},
                                EthSection(),
                                {"ports", "ports", Form::Lines, PORT_FIELDS},
                                {"pppoe", "PPPoE", Form::Lines, PPPOE_FIELDS}};

// ---- platform links ------------------------------------------------------------------------------------------------

/** Each parameter in a field of its own; empty ones at the end are left out of the table, not of JSON. */
Shown Parameters(const unsigned char* bytes, size_t size, const Look& look) {
    constexpr size_t LENGTH = sizeof(Platform::sParam[0]);
    ordered_json list = ordered_json::array();
    std::string text;
    for (size_t at = 0; at < size; at += LENGTH) {
        const Shown parameter = Text(bytes + at, LENGTH, look);
        list.push_back(parameter.json);
        if (bytes[at] != '\0') {
            text += (text.empty() ? "" : ", ") + std::to_string(at / LENGTH + 1) + ": " + parameter.text;
        }
    }
    return {list, text.empty() ? "-" : text};
}

constexpr Field PLATFORM_FIELDS[] = {
    {"platform", "platform", HOSTMGRCTL_MEMBER(Platform, dwPlatformNo), Number},
    {"enabled", "enabled", HOSTMGRCTL_MEMBER(Platform, dwEnable), Flag},
    {"parameters", "parameters", HOSTMGRCTL_MEMBER(Platform, sParam), Parameters},
};

bool IsPlatform(const Entry& entry) {
    return WordAt(entry.bytes, offsetof(Platform, dwPlatformNo)) != 0;
}

Section PlatformSection() {
    Section section = {"platforms", nullptr, Form::Rows, PLATFORM_FIELDS, "struPlatform"};
    section.stride = sizeof(Platform);
    section.entries = sizeof(Platforms) / sizeof(Platform);
    section.exists = IsPlatform;
    return section;
}

const Section PLATFORM_SECTIONS[] = {PlatformSection()};

}  // namespace

const Record NETWORK_RECORD = {"network",
                               "interfaces, name servers, ports, PPPoE",
                               HOSTMGR_CONFIG_NETWORK,
                               sizeof(Net),
                               "it has more than 16 interfaces or bonds, or cannot tell them",
                               NET_SECTIONS};
const Record PLATFORMS_RECORD = {"platforms",       "the first 8 platform links that are on", HOSTMGR_CONFIG_PLATFORMS,
                                 sizeof(Platforms), "its platform links cannot be asked",     PLATFORM_SECTIONS};

}  // namespace hostmgrctl
