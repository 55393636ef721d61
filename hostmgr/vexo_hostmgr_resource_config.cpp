// GetConfig's command table and its dispatcher, and ability queries. What a command fills stands in the source of its
// subject.
#include "vexo_hostmgr_resource_config.h"

#include "vexo_hostmgr_resource.h"

/** The version of the configuration interface that agents ask for. */
static int GetVersion(const HostMgrConfigCall& call) {
    HostMgrPutWord(call, 0, 2);
    call.SetReturned(sizeof(uint32_t));
    return 0;
}

namespace {

struct ConfigCommand {
    unsigned int dwCommand;
    unsigned int dwSmallest;  // sizes below are refused with a message; 0: the filler refuses sizes itself, silently
    int (*fill)(const HostMgrConfigCall& call);
};

constexpr unsigned int SHORTEST_PICTURE_DIR = 19;

constexpr ConfigCommand CONFIG_COMMANDS[] = {
    {HOSTMGR_CONFIG_DEVICE, 0, vexo_hostmgr_get_device_cfg},
    {HOSTMGR_CONFIG_ENCODE, 0, vexo_hostmgr_get_encode_cfg},
    {HOSTMGR_CONFIG_DEVICE_TIME, 0, vexo_hostmgr_get_device_time},
    {HOSTMGR_CONFIG_USERS, 0, vexo_hostmgr_get_user_cfg},
    {HOSTMGR_CONFIG_ZERO_CODEC, 0, vexo_hostmgr_get_zero_codec_cfg},
    {HOSTMGR_CONFIG_WORK_STATE, sizeof(_tagVexoHostMgrWorkState), vexo_hostmgr_get_work_state},
    {HOSTMGR_CONFIG_DISKS_8, sizeof(_tagVexoHostMgrDiskCfg8), vexo_hostmgr_get_disk_cfg_8},
    {HOSTMGR_CONFIG_NETWORK, 0, vexo_hostmgr_get_net_cfg},
    {HOSTMGR_CONFIG_DISKS_24, sizeof(_tagVexoHostMgrDiskCfg), vexo_hostmgr_get_disk_cfg_24},
    {HOSTMGR_CONFIG_PLATFORMS, 0, vexo_hostmgr_get_platform_cfg},
    {HOSTMGR_CONFIG_FACTORY, 0, vexo_hostmgr_get_factory_info},
    {HOSTMGR_CONFIG_VERSION, sizeof(uint32_t), GetVersion},
    {HOSTMGR_CONFIG_PICTURE_DIR, SHORTEST_PICTURE_DIR, vexo_hostmgr_get_picture_dir},
};

}  // namespace

static const ConfigCommand* FindCommand(unsigned int dwCommand) {
    for (const ConfigCommand& command : CONFIG_COMMANDS) {
        if (command.dwCommand == dwCommand)
            return &command;
    }
    return NULL;
}

// The login is not looked at: whoever has the library may read the configuration.
int vexo_hostmgr_res_manage::HostMgr_Dev_GetConfig(int /*hLogin*/, unsigned int dwCommand, int lStartChan, int lChanNum,
                                                   void* /*lpCondBuffer*/, unsigned int /*dwCondBufferSize*/,
                                                   void* lpOutBuffer, unsigned int dwOutBufferSize,
                                                   unsigned int* lpBytesReturned) {
    if (lpOutBuffer == NULL || dwOutBufferSize == 0) {
        HOSTMGR_PRINTF(ERROR, "lpOutBuffer %p, dwOutBufferSize %d!!\n", lpOutBuffer, dwOutBufferSize);
        return -1;
    }
    if (lStartChan > static_cast<int>(HOSTMGR_MAX_CONFIG_CHANNEL)) {
        HOSTMGR_PRINTF(ERROR, "Just supprot %d Channel,lStartChan %d overflow!!\n", HOSTMGR_MAX_CONFIG_CHANNEL,
                       lStartChan);
        return -1;
    }
    const ConfigCommand* command = FindCommand(dwCommand);
    if (command == NULL) {
        HOSTMGR_PRINTF(ERROR, "Recovery cmd = %d\n", dwCommand);
        return -1;
    }
    if (dwOutBufferSize < command->dwSmallest) {
        HOSTMGR_PRINTF(ERROR, "lpOutBuffer %p, dwOutBufferSize %d\n", lpOutBuffer, dwOutBufferSize);
        return -1;
    }
    return command->fill(
        {lStartChan, lChanNum, static_cast<unsigned char*>(lpOutBuffer), dwOutBufferSize, lpBytesReturned});
}

// GetConfig's commands answer what an agent would ask here.
int vexo_hostmgr_res_manage::HostMgr_Dev_GetAbility(int /*hLogin*/, unsigned int dwAbilityType, char* /*pInBuf*/,
                                                    unsigned int /*dwInLength*/, char* /*pOutBuf*/,
                                                    unsigned int /*dwOutLength*/) {
    HOSTMGR_PRINTF(ERROR, "dwAbilityType 0x%x \n", dwAbilityType);
    return -1;
}
