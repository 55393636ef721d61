// Device control of one login: PTZ, recording switches, reboot, power off, factory restore. Keeps nothing but the PTZ
// values that one command leaves for a later one.
#ifndef VEXO_HOSTMGR_CONTROL_H
#define VEXO_HOSTMGR_CONTROL_H

#include "hostmgr_common.h"

/** What PTZ commands leave for later ones of the same login. Threads overwrite each other's values in any order. */
struct HostMgrPtzValues {
    std::atomic<uint32_t> dwPtzGroup{0};
    std::atomic<uint32_t> dwPtzPoint{0};
    std::atomic<uint32_t> dwPtzParamA{0};
    std::atomic<uint32_t> dwPtzParamB{0};
};

/**
 * Runs an action with the index, from 0, of each of lChanNum channels from lStartChan on. The bounds are wide, so that
 * no start and no number overflows; the index is cut to what the model library takes.
 */
template <typename Action>
void HostMgrForEachChannel(int lStartChan, int lChanNum, Action action) {
    const int64_t first = int64_t{lStartChan} - 1;
    for (int64_t index = first; index < first + lChanNum; ++index)
        action(static_cast<unsigned int>(index));
}

class vexo_hostmgr_control {
public:
    vexo_hostmgr_control();
    ~vexo_hostmgr_control();
    vexo_hostmgr_control(const vexo_hostmgr_control&) = delete;
    vexo_hostmgr_control& operator=(const vexo_hostmgr_control&) = delete;

    // Channels are counted from 1. A record starts with its command word; a short one is read as if zeros followed.
    // 0 or -1; what the model library answers for a single channel is not looked at.
    int HostMgrControlPtz(int hLogin, int lStartChan, int lChanNum, void* pInBuf, unsigned int dwInLength);
    int HostMgrRecordConfig(int hLogin, int lStartChan, int lChanNum, void* pInBuf, unsigned int dwInLength);
    int HostMgrControlReboot(int hLogin);
    int HostMgrControlShutDown(int hLogin);
    int HostMgrRestoreConfig(int hLogin);

    HostMgrUseCount m_use;

private:
    vexo_lock* m_lock;  // made and deleted with the object; no operation takes it
    HostMgrPtzValues m_ptz;
};

#endif
