// The resource manager's configuration reads and writes, ability queries and the agent's documents.
#include "vexo_hostmgr_resource.h"

// None of them is built yet: each answers -1, or null, and touches nothing.

int vexo_hostmgr_res_manage::HostMgr_Dev_GetConfig(int, unsigned int, int, int, void*, unsigned int, void*,
                                                   unsigned int, unsigned int*) {
    return -1;
}

int vexo_hostmgr_res_manage::HostMgr_Dev_SetConfig(int, unsigned int, int, int, void*, unsigned int, void*,
                                                   unsigned int) {
    return -1;
}

int vexo_hostmgr_res_manage::HostMgr_Dev_GetAbility(int, unsigned int, char*, unsigned int, char*, unsigned int) {
    return -1;
}

char* vexo_hostmgr_res_manage::HostMgr_Dev_ReadCfg(char*) {
    return NULL;
}

int vexo_hostmgr_res_manage::HostMgr_Dev_SaveCfg(char*, char*, unsigned int) {
    return -1;
}
