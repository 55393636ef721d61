#include "vexo_cfgm.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "core/device.h"
#include "core/faults.h"
#include "core/scenario.h"

using simulator::ShallFail;
using simulator::TheScenario;

namespace {

constexpr unsigned MAX_PLATFORMS = 32;
constexpr unsigned MAX_PARAMETERS = 8;

/** Copies a text, cut to its buffer and terminated. */
void Put(const std::string& text, char* buffer, size_t size) {
    if (size > 0) {
        snprintf(buffer, size, "%s", text.c_str());
    }
}

template <size_t SIZE>
void Put(const std::string& text, char (&buffer)[SIZE]) {
    Put(text, buffer, SIZE);
}

template <typename Value>
int Answer(const char* operation, Value value, Value* answer) {
    if (answer == nullptr || ShallFail(operation)) {
        return -1;
    }
    *answer = value;
    return 0;
}

/** The link of that number, or null; links that the scenario does not describe are there and switched off. */
const simulator::PlatformLink* FindLink(unsigned platform) {
    const auto& links = TheScenario().platform_links;
    const auto found = std::find_if(links.begin(), links.end(), [platform](const simulator::PlatformLink& link) {
        return link.number == platform;
    });
    return found == links.end() ? nullptr : &*found;
}

vexo_network_cap MakeNetworkCap() {
    vexo_network_cap cap = {};
    for (const simulator::InterfaceSettings& settings : TheScenario().network.interfaces) {
        Put(settings.name, cap.eth[cap.eth_num++].name);
    }
    cap.bond_num = TheScenario().network.bonds;
    return cap;
}

}  // namespace

int vexo_cfgm_init() {
    return ShallFail("vexo_cfgm_init") ? -1 : 0;
}

const vexo_dev_capability* vexo_cfgm_get_dev_cap() {
    return ShallFail("vexo_cfgm_get_dev_cap") ? nullptr : &simulator::TheCapability();
}

int vexo_cfgm_get_usr_num(unsigned int* num) {
    return Answer("vexo_cfgm_get_usr_num", static_cast<unsigned>(TheScenario().users.size()), num);
}

int vexo_cfgm_get_usr_info(unsigned int index, vexo_cfgm_usr_info* info) {
    if (info == nullptr || index >= TheScenario().users.size() || ShallFail("vexo_cfgm_get_usr_info")) {
        return -1;
    }
    const simulator::UserSettings& user = TheScenario().users[index];
    Put(user.name, info->usr_name);
    Put(user.password, info->usr_password);
    info->authority = simulator::AuthorityOf(user);
    return 0;
}

int vexo_cfgm_get_host_manager_enable(unsigned int platform, VEXO_BOOL* enable) {
    if (platform < 1 || platform > MAX_PLATFORMS) {
        return -1;
    }
    const simulator::PlatformLink* link = FindLink(platform);
    return Answer("vexo_cfgm_get_host_manager_enable", link != nullptr && link->enabled ? VEXO_TRUE : VEXO_FALSE,
                  enable);
}

int vexo_cfgm_get_host_manager_param(unsigned int platform, unsigned int index, char* name, unsigned int name_len,
                                     char* value, unsigned int value_len) {
    const bool exists = platform >= 1 && platform <= MAX_PLATFORMS && index >= 1 && index <= MAX_PARAMETERS;
    if (!exists || name == nullptr || value == nullptr || ShallFail("vexo_cfgm_get_host_manager_param")) {
        return -1;
    }
    const simulator::PlatformLink* link = FindLink(platform);
    const bool given = link != nullptr && index <= link->parameters.size();
    Put(given ? link->parameters[index - 1].name : "", name, name_len);
    Put(given ? link->parameters[index - 1].value : "", value, value_len);
    return 0;
}

const vexo_network_cap* vexo_cfgm_get_network_cap() {
    static const vexo_network_cap cap = MakeNetworkCap();
    return ShallFail("vexo_cfgm_get_network_cap") ? nullptr : &cap;
}

int vexo_cfgm_get_local_eth_cfg(const char* ifname, vexo_eth_cfg* cfg) {
    if (ifname == nullptr || cfg == nullptr || ShallFail("vexo_cfgm_get_local_eth_cfg")) {
        return -1;
    }
    for (const simulator::InterfaceSettings& settings : TheScenario().network.interfaces) {
        if (settings.name == ifname) {
            *cfg = {};
            cfg->dhcp = settings.dhcp ? 1 : 0;
            Put(settings.dhcp ? "dhcp" : "fixed", cfg->text);
            Put(settings.address, cfg->ip_addr);
            Put(settings.mask, cfg->net_mask);
            Put(settings.gateway, cfg->gateway);
            Put(settings.ipv6_address, cfg->ipv6_addr);
            Put(settings.ipv6_address.empty() ? "" : std::to_string(settings.ipv6_prefix), cfg->ipv6_mask);
            Put(settings.ipv6_gateway, cfg->ipv6_gateway);
            return 0;
        }
    }
    return -1;
}

int vexo_cfgm_get_dns_cfg(vexo_dns_cfg* cfg) {
    if (cfg == nullptr || ShallFail("vexo_cfgm_get_dns_cfg")) {
        return -1;
    }
    *cfg = {};
    Put(TheScenario().network.dns1, cfg->dns1);
    Put(TheScenario().network.dns2, cfg->dns2);
    Put(TheScenario().network.ipv6_dns1, cfg->ipv6_dns1);
    Put(TheScenario().network.ipv6_dns2, cfg->ipv6_dns2);
    return 0;
}

int vexo_cfgm_get_upnp_cfg_ex(VEXO_BOOL* enable) {
    return Answer("vexo_cfgm_get_upnp_cfg_ex", TheScenario().network.upnp ? VEXO_TRUE : VEXO_FALSE, enable);
}

int vexo_cfgm_get_http_port(unsigned int* port) {
    return Answer("vexo_cfgm_get_http_port", TheScenario().network.ports.http, port);
}

int vexo_cfgm_get_https_port(unsigned int* port) {
    return Answer("vexo_cfgm_get_https_port", TheScenario().network.ports.https, port);
}

int vexo_cfgm_get_onvif_port(unsigned int* port) {
    return Answer("vexo_cfgm_get_onvif_port", TheScenario().network.ports.onvif, port);
}

int vexo_cfgm_get_rtmp_port(unsigned int* port) {
    return Answer("vexo_cfgm_get_rtmp_port", TheScenario().network.ports.rtmp, port);
}

int vexo_cfgm_get_rtsp_port(unsigned int* port) {
    return Answer("vexo_cfgm_get_rtsp_port", TheScenario().network.ports.rtsp, port);
}

int vexo_cfgm_get_pppoe_cfg(vexo_pppoe_cfg* cfg) {
    if (cfg == nullptr || ShallFail("vexo_cfgm_get_pppoe_cfg")) {
        return -1;
    }
    const simulator::PppoeSettings& pppoe = TheScenario().network.pppoe;
    *cfg = {};
    cfg->enable = pppoe.enabled ? 1 : 0;
    Put(pppoe.user, cfg->user);
    Put(pppoe.password, cfg->password);
    return 0;
}
