#include "vexo_hostmgr_control.h"

#include "vexo_model.h"

static const char FILE_TAG[] = "vexo_hostmgr_control";

constexpr unsigned int RECORD_MODE_OFF = 0;
constexpr unsigned int RESTORE_ALL = 0xFFFFFFFF;

vexo_hostmgr_control::vexo_hostmgr_control() {
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_control m_lock");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
}

vexo_hostmgr_control::~vexo_hostmgr_control() {
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// ---- recording -----------------------------------------------------------------------------------------------------

static void SwitchRecording(unsigned int login, unsigned int channel, uint32_t dwRecordCmd, bool on) {
    if (dwRecordCmd == HOSTMGR_RECORD_MANUAL)
        vexo_model_set_record_manual_enable(login, channel, on ? VEXO_TRUE : VEXO_FALSE);
    else
        vexo_model_set_record_mode(login, channel, on ? dwRecordCmd : RECORD_MODE_OFF);
}

int vexo_hostmgr_control::HostMgrRecordConfig(int hLogin, int lStartChan, int lChanNum, void* pInBuf,
                                              unsigned int dwInLength) {
    if (pInBuf == NULL || dwInLength == 0) {
        HOSTMGR_PRINTF(ERROR, "Param invalid: pInBuf %p, dwInLength %d!!\n", pInBuf, dwInLength);
        return -1;
    }
    const auto command = HostMgrReadRecord<_tagVexoHostMgrRecordCmd>(pInBuf, dwInLength);
    if (command.dwRecordCmd < HOSTMGR_RECORD_MODE_1 || command.dwRecordCmd > HOSTMGR_RECORD_MANUAL) {
        HOSTMGR_PRINTF(ERROR, "RecordCmd 0x%x not supported!!\n", command.dwRecordCmd);
        return -1;
    }
    if (command.dwSwitch != HOSTMGR_RECORD_OFF && command.dwSwitch != HOSTMGR_RECORD_ON) {
        HOSTMGR_PUTS(ERROR, "uParams[0] is Zero or more than two, Just Invalid!!");
        return -1;
    }
    HostMgrForEachChannel(lStartChan, lChanNum, [hLogin, &command](unsigned int channel) {
        SwitchRecording(static_cast<unsigned int>(hLogin), channel, command.dwRecordCmd,
                        command.dwSwitch == HOSTMGR_RECORD_ON);
    });
    return 0;
}

// ---- the recorder as a whole ---------------------------------------------------------------------------------------

int vexo_hostmgr_control::HostMgrControlReboot(int hLogin) {
    if (vexo_model_reboot(static_cast<unsigned int>(hLogin), VEXO_FALSE) != 0)
        HOSTMGR_PRINTF(WARNING, "Why vexo_model_reboot hand:%d failed!!\n", hLogin);
    return 0;
}

int vexo_hostmgr_control::HostMgrControlShutDown(int hLogin) {
    if (vexo_model_poweroff(static_cast<unsigned int>(hLogin)) != 0)
        HOSTMGR_PRINTF(WARNING, "Why vexo_model_poweroff hand:%d failed!!\n", hLogin);
    return 0;
}

int vexo_hostmgr_control::HostMgrRestoreConfig(int hLogin) {
    if (vexo_model_restore_factory(static_cast<unsigned int>(hLogin), RESTORE_ALL) != 0) {
        HOSTMGR_PUTS(ERROR, "vexo_model_restore_factory  failed!!");
        return -1;
    }
    return 0;
}
