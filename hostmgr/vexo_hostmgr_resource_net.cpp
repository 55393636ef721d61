// How the recorder is reached: interfaces, name servers, ports, PPPoE, and the platforms that it reports to.
#include "vexo_cfgm.h"
#include "vexo_hostmgr_resource_config.h"

constexpr unsigned int ETH_ENTRIES = sizeof(_tagVexoHostMgrNetCfg::struEth) / sizeof(_tagVexoHostMgrEthCfg);
constexpr unsigned int ETH_MOST = sizeof(vexo_network_cap::eth) / sizeof(vexo_network_cap().eth[0]);
constexpr unsigned int BOND_MOST = 16;
constexpr size_t ETH_NAME_SIZE = sizeof(vexo_network_cap().eth[0].name);

// ---- interfaces ----------------------------------------------------------------------------------------------------

/**
 * The number in an interface's name, after its first three letters (eth1: 1), its low byte; 0 where there is none. A
 * name without more letters has its index for a number.
 */
static uint8_t EthNumber(const char* name, unsigned int index) {
    if (strlen(name) <= 3)
        return static_cast<uint8_t>(index);
    unsigned int number = 0;
    for (const char* digit = name + 3; *digit >= '0' && *digit <= '9'; ++digit)
        number = number * 10 + static_cast<unsigned int>(*digit - '0');
    return static_cast<uint8_t>(number);
}

static bool FillEth(const char* name, unsigned int index, _tagVexoHostMgrEthCfg* entry) {
    vexo_eth_cfg cfg;
    memset(&cfg, 0, sizeof(cfg));
    if (vexo_cfgm_get_local_eth_cfg(name, &cfg) != 0)
        return false;
    HostMgrCopyText(entry->sIpAddr, cfg.ip_addr);
    HostMgrCopyText(entry->sIpV6Addr, cfg.ipv6_addr);
    HostMgrCopyText(entry->sNetMask, cfg.net_mask);
    HostMgrCopyText(entry->sIpV6Mask, cfg.ipv6_mask);
    entry->dwLinkMode = 5;
    entry->byEthNo = EthNumber(name, index);
    entry->wMtu = 1500;
    HostMgrCopyText(entry->sEthText, cfg.text);
    entry->byEthFlag = cfg.dhcp != 0 ? 1 : 0;
    HostMgrCopyText(entry->sGateway, cfg.gateway);
    HostMgrCopyText(entry->sIpV6Gateway, cfg.ipv6_gateway);
    return true;
}

/** The name servers are the recorder's: every interface shows the same. */
static void FillDns(_tagVexoHostMgrEthCfg* entry) {
    vexo_dns_cfg dns;
    memset(&dns, 0, sizeof(dns));
    if (vexo_cfgm_get_dns_cfg(&dns) != 0)
        return;
    HostMgrCopyText(entry->sDns1, dns.dns1);
    HostMgrCopyText(entry->sIpV6Dns1, dns.ipv6_dns1);
    HostMgrCopyText(entry->sDns2, dns.dns2);
    HostMgrCopyText(entry->sIpV6Dns2, dns.ipv6_dns2);
}

/** An interface that cannot be read still shows the name servers. */
static void FillInterface(const vexo_network_cap& cap, unsigned int index, const char (&defaultName)[ETH_NAME_SIZE],
                          _tagVexoHostMgrNetCfg* record) {
    char name[ETH_NAME_SIZE + 1] = {0};  // the table's may be unterminated
    memcpy(name, cap.eth[index].name, ETH_NAME_SIZE);
    if (strncmp(name, defaultName, ETH_NAME_SIZE) == 0)
        record->byDefaultEth = static_cast<uint8_t>(index);
    if (FillEth(name, index, &record->struEth[index]))
        record->wDataPort = 5050;
    FillDns(&record->struEth[index]);
}

// ---- ports and PPPoE -----------------------------------------------------------------------------------------------

namespace {

/** A service's port: who tells it, and what it is when that fails, or, for some, when the answer is 0. */
struct Port {
    int (*read)(unsigned int* port);
    uint16_t fallback;
    bool zeroFallsBack;
    uint16_t _tagVexoHostMgrNetCfg::*field;
};

constexpr Port PORTS[] = {
    {vexo_cfgm_get_http_port, 80, false, &_tagVexoHostMgrNetCfg::wHttpPort},
    {vexo_cfgm_get_https_port, 4433, false, &_tagVexoHostMgrNetCfg::wHttpsPort},
    {vexo_cfgm_get_onvif_port, 8000, true, &_tagVexoHostMgrNetCfg::wOnvifPort},
    {vexo_cfgm_get_rtmp_port, 1935, true, &_tagVexoHostMgrNetCfg::wRtmpPort},
    {vexo_cfgm_get_rtsp_port, 554, false, &_tagVexoHostMgrNetCfg::wRtspPort},
};

}  // namespace

static uint16_t ReadPort(const Port& port) {
    unsigned int value = 0;
    if (port.read(&value) != 0 || (port.zeroFallsBack && value == 0))
        return port.fallback;
    return static_cast<uint16_t>(value);
}

static void FillUpnp(_tagVexoHostMgrNetCfg* record) {
    VEXO_BOOL enable = VEXO_FALSE;
    const bool read = vexo_cfgm_get_upnp_cfg_ex(&enable) == 0;
    record->byUpnpEnable = read && enable != VEXO_FALSE ? 1 : 0;
}

static void FillPppoe(_tagVexoHostMgrNetCfg* record) {
    vexo_pppoe_cfg cfg;
    memset(&cfg, 0, sizeof(cfg));
    if (vexo_cfgm_get_pppoe_cfg(&cfg) != 0 || cfg.enable == 0)
        return;
    record->dwPppoeEnable = 1;
    HostMgrCopyText(record->sPppoeUser, cfg.user);
    HostMgrCopyText(record->sPppoePassword, cfg.password);
    vexo_pppoe_status status;
    memset(&status, 0, sizeof(status));
    if (vexo_model_get_pppoe_status(&status) != 0 || status.link_up == 0)
        return;
    if (status.ipv4 != 0)
        HostMgrCopyText(record->sPppoeIpAddr, status.ip_addr);
    else
        HostMgrCopyText(record->sPppoeIpV6Addr, status.ipv6_addr);
}

// ---- network record ------------------------------------------------------------------------------------------------

static void FillServices(_tagVexoHostMgrNetCfg* record) {
    FillUpnp(record);
    record->byFixedOne = 1;
    for (const Port& port : PORTS)
        record->*port.field = ReadPort(port);
    record->byRtmpEnable = 1;
    record->byRtspEnable = 1;
    FillPppoe(record);
}

int vexo_hostmgr_get_net_cfg(const HostMgrConfigCall& call) {
    if (call.dwSize != sizeof(_tagVexoHostMgrNetCfg))
        return -1;
    call.Clear();
    HostMgrRecordAt<_tagVexoHostMgrNetCfg> record(call.pBuffer);
    record->dwSize = sizeof(_tagVexoHostMgrNetCfg);
    const vexo_network_cap* cap = vexo_cfgm_get_network_cap();
    if (cap == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_cfgm_get_network_cap failed!!!");
        return -1;
    }
    if (cap->eth_num > ETH_MOST || cap->bond_num > BOND_MOST) {
        HOSTMGR_PRINTF(ERROR, "ethNum %d, bondNum %d overflow!!\n", cap->eth_num, cap->bond_num);
        return -1;
    }
    char defaultName[ETH_NAME_SIZE] = {0};
    if (vexo_model_get_default_if(defaultName, sizeof(defaultName)) != 0) {
        HOSTMGR_PUTS(WARNING, "vexo_model_get_default_if failed!!");
        memset(defaultName, 0, sizeof(defaultName));
    }
    record->byEthNum = static_cast<uint8_t>(cap->eth_num);
    for (unsigned int index = 0; index < cap->eth_num; ++index) {
        if (index == ETH_ENTRIES) {
            HOSTMGR_PRINTF(WARNING, "ethNum %d > %d, please check !!!\n", cap->eth_num, ETH_ENTRIES);
            record->byEthNum = ETH_ENTRIES;
            break;
        }
        FillInterface(*cap, index, defaultName, record.Get());
    }
    FillServices(record.Get());
    call.SetReturned(sizeof(_tagVexoHostMgrNetCfg));
    return 0;
}

// ---- platform links ------------------------------------------------------------------------------------------------

static bool IsPlatformEnabled(unsigned int platform) {
    VEXO_BOOL enable = VEXO_FALSE;
    return vexo_cfgm_get_host_manager_enable(platform, &enable) == 0 && enable != VEXO_FALSE;
}

static void FillPlatform(unsigned int platform, unsigned char* place) {
    constexpr unsigned int PARAMS = sizeof(_tagVexoHostMgrPlatformInfo::sParam) / 32;
    HostMgrRecordAt<_tagVexoHostMgrPlatformInfo> entry(place);
    entry->dwEnable = 1;
    entry->dwPlatformNo = platform;
    for (unsigned int index = 1; index <= PARAMS; ++index) {
        char name[64] = {0};  // nobody asks for it
        vexo_cfgm_get_host_manager_param(platform, index, name, sizeof(name), entry->sParam[index - 1],
                                         sizeof(entry->sParam[index - 1]));
    }
}

int vexo_hostmgr_get_platform_cfg(const HostMgrConfigCall& call) {
    constexpr unsigned int PLATFORMS = 32;
    constexpr unsigned int CAPACITY = sizeof(_tagVexoHostMgrPlatformCfg) / sizeof(_tagVexoHostMgrPlatformInfo);
    if (call.dwSize < sizeof(_tagVexoHostMgrPlatformCfg))
        return -1;
    call.Clear();
    call.SetReturned(sizeof(_tagVexoHostMgrPlatformCfg));
    unsigned int filled = 0;
    for (unsigned int platform = 1; platform <= PLATFORMS && filled < CAPACITY; ++platform) {
        if (IsPlatformEnabled(platform))
            FillPlatform(platform, call.pBuffer + filled++ * sizeof(_tagVexoHostMgrPlatformInfo));
    }
    return 0;
}
