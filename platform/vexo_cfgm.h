// The configuration manager (libcfgm.so): what the recorder is set to. Declarations only. Every call reads the live
// value and may be made from any thread after vexo_cfgm_init; an int result is 0 for success, and on failure the output
// is left as it was unless an operation says otherwise. Texts are NUL-terminated within their field.
#ifndef VEXO_CFGM_H
#define VEXO_CFGM_H

#include "vexo_types.h"

/** Prepares the configuration manager; needs the utility platform. Later calls do nothing. */
int vexo_cfgm_init();

/** The device capability record, valid and unchanged for the process's life, or null. */
const vexo_dev_capability* vexo_cfgm_get_dev_cap();

// ---- users ---------------------------------------------------------------------------------------------------------

struct vexo_cfgm_usr_info {
    char usr_name[64];
    char usr_password[64];
    vexo_dev_usr_authority authority;
};

/** Number of users, and user number index counted from 0. */
int vexo_cfgm_get_usr_num(unsigned int* num);
int vexo_cfgm_get_usr_info(unsigned int index, vexo_cfgm_usr_info* info);

// ---- platform links ------------------------------------------------------------------------------------------------

/** Whether platform link number platform, 1 to 32, is switched on. */
int vexo_cfgm_get_host_manager_enable(unsigned int platform, VEXO_BOOL* enable);

/** Name and value of parameter index, 1 to 8, of a platform link, each cut to its buffer and terminated. */
int vexo_cfgm_get_host_manager_param(unsigned int platform, unsigned int index, char* name, unsigned int name_len,
                                     char* value, unsigned int value_len);

// ---- network -------------------------------------------------------------------------------------------------------

struct vexo_network_cap {
    unsigned int eth_num;  ///< Ethernet interfaces
    struct {
        char name[32];  ///< such as "eth0"
    } eth[16];
    unsigned int bond_num;  ///< bonded interfaces
};

/** The network capability record, valid and unchanged for the process's life, or null. */
const vexo_network_cap* vexo_cfgm_get_network_cap();

/** Addresses as text; IPv6 masks as prefix length. */
struct vexo_eth_cfg {
    unsigned int dhcp;  ///< 1: the address comes from a DHCP server
    char text[32];      ///< short text of the configuration
    char ip_addr[16];
    char net_mask[16];
    char gateway[16];
    char ipv6_addr[128];
    char ipv6_mask[128];
    char ipv6_gateway[128];
};
int vexo_cfgm_get_local_eth_cfg(const char* ifname, vexo_eth_cfg* cfg);

struct vexo_dns_cfg {
    char dns1[16];
    char dns2[16];
    char ipv6_dns1[128];
    char ipv6_dns2[128];
};
int vexo_cfgm_get_dns_cfg(vexo_dns_cfg* cfg);

int vexo_cfgm_get_upnp_cfg_ex(VEXO_BOOL* enable);

/** Service ports, host byte order. */
int vexo_cfgm_get_http_port(unsigned int* port);
int vexo_cfgm_get_https_port(unsigned int* port);
int vexo_cfgm_get_onvif_port(unsigned int* port);
int vexo_cfgm_get_rtmp_port(unsigned int* port);
int vexo_cfgm_get_rtsp_port(unsigned int* port);

struct vexo_pppoe_cfg {
    unsigned int enable;  ///< 1: PPPoE is in use
    char user[64];
    char password[64];
};
int vexo_cfgm_get_pppoe_cfg(vexo_pppoe_cfg* cfg);

#endif
