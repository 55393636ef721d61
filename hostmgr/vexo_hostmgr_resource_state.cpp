// The recorder's state at this moment: disks and channels at work, and its clock.
#include <sys/time.h>

#include "vexo_hostmgr_resource_config.h"

// ---- work state ----------------------------------------------------------------------------------------------------

constexpr unsigned int STATE_DISKS = sizeof(_tagVexoHostMgrWorkState::struDisk) / sizeof(_tagVexoHostMgrWorkStateDisk);
constexpr unsigned int STATE_CHANNELS =
    sizeof(_tagVexoHostMgrWorkState::struChan) / sizeof(_tagVexoHostMgrWorkStateChan);

static void FillDisk(unsigned int index, unsigned char* place) {
    vexo_hard_disk_info disk;
    if (!HostMgrReadDisk(index, &disk))
        return;
    HostMgrRecordAt<_tagVexoHostMgrWorkStateDisk> entry(place);
    entry->dwCapacityMB = disk.size_mb;
    entry->dwPartitionSum = HostMgrPartitionSum(disk);
    entry->dwStatus = HostMgrDiskStatus(disk);
}

static bool IsConnected(unsigned int channel) {
    VEXO_BOOL connected = VEXO_FALSE;
    return vexo_model_get_ipc_connect_status(channel, &connected) == 0 && connected != VEXO_FALSE;
}

constexpr unsigned int ADDRESS_IS_IP = 0;
constexpr unsigned int ADDRESS_IS_DOMAIN = 1;

static void FillAddress(unsigned int channel, _tagVexoHostMgrWorkStateChan* entry) {
    vexo_ipc_connect_cfg cfg;
    memset(&cfg, 0, sizeof(cfg));
    if (vexo_model_get_ipc_connect_cfg(channel, &cfg) != 0)
        return;
    if (cfg.address_kind == ADDRESS_IS_IP)
        HostMgrCopyField(entry->sIpAddress, cfg.address);
    else if (cfg.address_kind == ADDRESS_IS_DOMAIN)
        HostMgrCopyField(entry->sDomain, cfg.address);
}

/** All that is not set here is zero on the recorder, too, connected or not: other flags, words A and B. */
static void FillChannel(unsigned int channel, unsigned char* place) {
    HostMgrRecordAt<_tagVexoHostMgrWorkStateChan> entry(place);
    entry->byFlagA = 1;
    if (!IsConnected(channel))
        return;
    FillAddress(channel, entry.Get());
    entry->byRecordStatus = vexo_model_ch_is_recording(channel) != 0 ? 1 : 0;
    entry->dwConnected = 1;
}

// Entry by entry: the whole record is too much for the stack of an agent's thread.
int vexo_hostmgr_get_work_state(const HostMgrConfigCall& call) {
    call.Clear();
    call.SetReturned(sizeof(_tagVexoHostMgrWorkState));
    const unsigned int disks = HostMgrCountDisks();
    for (unsigned int index = 0; index < disks && index < STATE_DISKS; ++index)
        FillDisk(index, call.pBuffer + offsetof(_tagVexoHostMgrWorkState, struDisk) +
                            index * sizeof(_tagVexoHostMgrWorkStateDisk));
    for (unsigned int channel = 0; channel < STATE_CHANNELS; ++channel)
        FillChannel(channel, call.pBuffer + offsetof(_tagVexoHostMgrWorkState, struChan) +
                                 channel * sizeof(_tagVexoHostMgrWorkStateChan));
    return 0;
}

// ---- device time ---------------------------------------------------------------------------------------------------

static void FillTime(const _tagVexoHostMgrTime& now, unsigned char* place) {
    HostMgrRecordAt<_tagVexoHostMgrDeviceTime> record(place);
    record->dwYear = now.dwYear;
    record->dwMonth = now.dwMonth;
    record->dwDay = now.dwDay;
    record->dwHour = now.dwHour;
    record->dwMinute = now.dwMinute;
    record->dwSecond = now.dwSecond;
}

static void FillShortTime(const _tagVexoHostMgrTime& now, int minutesWest, unsigned char* place) {
    HostMgrRecordAt<_tagVexoHostMgrDeviceTimeShort> record(place);
    record->wYear = static_cast<uint16_t>(now.dwYear);
    record->byMonth = static_cast<uint8_t>(now.dwMonth);
    record->byDay = static_cast<uint8_t>(now.dwDay);
    record->byHour = static_cast<uint8_t>(now.dwHour);
    record->byMinute = static_cast<uint8_t>(now.dwMinute);
    record->bySecond = static_cast<uint8_t>(now.dwSecond);
    record->byFixedOne = 1;
    record->lUtcOffset = -minutesWest;
}

// The offset is the kernel's, as agents have always had it. Where the C library no longer reports one, it is 0.
int vexo_hostmgr_get_device_time(const HostMgrConfigCall& call) {
    if (call.dwSize != sizeof(_tagVexoHostMgrDeviceTime) && call.dwSize != sizeof(_tagVexoHostMgrDeviceTimeShort))
        return -1;
    call.Clear();
    struct timeval wall = {0, 0};
    struct timezone zone = {0, 0};
    gettimeofday(&wall, &zone);
    _tagVexoHostMgrTime now;
    HostMgrSecondsToHostTime(wall.tv_sec, &now);
    if (call.dwSize == sizeof(_tagVexoHostMgrDeviceTime))
        FillTime(now, call.pBuffer);
    else
        FillShortTime(now, zone.tz_minuteswest, call.pBuffer);
    call.SetReturned(call.dwSize);
    return 0;
}
