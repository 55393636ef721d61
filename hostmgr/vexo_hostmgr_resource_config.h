// What the configuration reads share: the call as the fillers see it, records in a caller's buffer, text fields, disks.
// One filler a command, each in the source of its subject; none keeps any state or takes a lock.
#ifndef VEXO_HOSTMGR_RESOURCE_CONFIG_H
#define VEXO_HOSTMGR_RESOURCE_CONFIG_H

#include <algorithm>

#include "hostmgr_common.h"
#include "vexo_model.h"

/** For the messages of a filler that speaks in the dispatcher's name. */
#define HOSTMGR_CONFIG_HERE               \
    HostMgrSite {                         \
        "HostMgr_Dev_GetConfig", __LINE__ \
    }

/** A read of one command. There is a buffer, of at least one byte; whose size fits is the filler's to say. */
struct HostMgrConfigCall {
    int lStartChan;
    int lChanNum;
    unsigned char* pBuffer;  // the caller's, at any address
    unsigned int dwSize;     // bytes of it
    unsigned int* pReturned;

    void Clear() const { memset(pBuffer, 0, dwSize); }
    void SetReturned(unsigned int bytes) const {
        if (pReturned != NULL)
            *pReturned = bytes;
    }
};

/**
 * A record, or one entry of it, in the caller's buffer while it is filled. The buffer may stand at any address, so the
 * record is filled apart and put back at the end of the scope; what nobody fills stays as it was.
 */
template <typename Record>
class HostMgrRecordAt {
public:
    explicit HostMgrRecordAt(unsigned char* place) : m_place(place) { memcpy(&m_record, place, sizeof(m_record)); }
    ~HostMgrRecordAt() { memcpy(m_place, &m_record, sizeof(m_record)); }
    HostMgrRecordAt(const HostMgrRecordAt&) = delete;
    HostMgrRecordAt& operator=(const HostMgrRecordAt&) = delete;

    Record* Get() { return &m_record; }
    Record* operator->() { return &m_record; }

private:
    unsigned char* const m_place;
    Record m_record;
};

/** Writes one word at an offset of the caller's buffer. */
inline void HostMgrPutWord(const HostMgrConfigCall& call, size_t offset, uint32_t value) {
    memcpy(call.pBuffer + offset, &value, sizeof(value));
}

/** Copies a text field, terminated or not, into a cleared one; cut to it, and unterminated when it fills it. */
template <size_t To, size_t From>
void HostMgrCopyField(char (&to)[To], const char (&from)[From]) {
    memcpy(to, from, strnlen(from, std::min(To, From)));
}

// ---- disks ---------------------------------------------------------------------------------------------------------

/** Number of disks; 0 when it cannot be read. */
unsigned int HostMgrCountDisks();
/** Reads a disk into a cleared record. */
bool HostMgrReadDisk(unsigned int index, vexo_hard_disk_info* disk);
/** Partitions of a disk that its record has room for. */
unsigned int HostMgrPartitionsOf(const vexo_hard_disk_info& disk);
/** Sum of the partitions' size values. */
uint32_t HostMgrPartitionSum(const vexo_hard_disk_info& disk);
/** Bit 0: not normal; bit 1: recording. */
uint32_t HostMgrDiskStatus(const vexo_hard_disk_info& disk);

// ---- fillers -------------------------------------------------------------------------------------------------------
// Each answers GetConfig's result: 0 or -1.

int vexo_hostmgr_get_device_cfg(const HostMgrConfigCall& call);
int vexo_hostmgr_get_encode_cfg(const HostMgrConfigCall& call);
int vexo_hostmgr_get_device_time(const HostMgrConfigCall& call);
int vexo_hostmgr_get_user_cfg(const HostMgrConfigCall& call);
int vexo_hostmgr_get_zero_codec_cfg(const HostMgrConfigCall& call);
int vexo_hostmgr_get_work_state(const HostMgrConfigCall& call);
int vexo_hostmgr_get_disk_cfg_8(const HostMgrConfigCall& call);
int vexo_hostmgr_get_disk_cfg_24(const HostMgrConfigCall& call);
int vexo_hostmgr_get_net_cfg(const HostMgrConfigCall& call);
int vexo_hostmgr_get_platform_cfg(const HostMgrConfigCall& call);
int vexo_hostmgr_get_factory_info(const HostMgrConfigCall& call);
int vexo_hostmgr_get_picture_dir(const HostMgrConfigCall& call);

#endif
