// Device control of one login: PTZ, recording switches, reboot, power off, factory restore. Keeps nothing but the PTZ
// values that one command leaves for a later one.
#ifndef VEXO_HOSTMGR_CONTROL_H
#define VEXO_HOSTMGR_CONTROL_H

#include "hostmgr_common.h"

class vexo_hostmgr_control {
public:
    vexo_hostmgr_control();
    ~vexo_hostmgr_control();
    vexo_hostmgr_control(const vexo_hostmgr_control&) = delete;
    vexo_hostmgr_control& operator=(const vexo_hostmgr_control&) = delete;

    // Channels are counted from 1; a record starts with its command word. 0 or -1.
    int HostMgrControlPtz(int hLogin, int lStartChan, int lChanNum, void* pInBuf, unsigned int dwInLength);
    int HostMgrRecordConfig(int hLogin, int lStartChan, int lChanNum, void* pInBuf, unsigned int dwInLength);
    int HostMgrControlReboot(int hLogin);
    int HostMgrControlShutDown(int hLogin);
    int HostMgrRestoreConfig(int hLogin);

    HostMgrUseCount m_use;

private:
    vexo_lock* m_lock;  // made and deleted with the object; no operation takes it
    std::atomic<uint32_t> dwPtzGroup;
    std::atomic<uint32_t> dwPtzPoint;
    std::atomic<uint32_t> dwPtzParamA;
    std::atomic<uint32_t> dwPtzParamB;
};

#endif
