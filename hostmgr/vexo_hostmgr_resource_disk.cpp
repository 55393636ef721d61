// Disks as the configuration reads see them: the disk lists, and the directory for pictures on the first disk that has
// room for them.
#include "vexo_hostmgr_resource_config.h"

// ---- reading -------------------------------------------------------------------------------------------------------

unsigned int HostMgrCountDisks() {
    unsigned int count = 0;
    return vexo_model_get_hard_disk_num(&count) == 0 ? count : 0;
}

bool HostMgrReadDisk(unsigned int index, vexo_hard_disk_info* disk) {
    memset(disk, 0, sizeof(*disk));
    return vexo_model_get_hard_disk_info(index, disk) == 0;
}

unsigned int HostMgrPartitionsOf(const vexo_hard_disk_info& disk) {
    constexpr unsigned int ROOM = sizeof(disk.partition) / sizeof(disk.partition[0]);
    return disk.partition_num < ROOM ? disk.partition_num : ROOM;
}

uint32_t HostMgrPartitionSum(const vexo_hard_disk_info& disk) {
    uint32_t sum = 0;
    for (unsigned int index = 0; index < HostMgrPartitionsOf(disk); ++index)
        sum += disk.partition[index].size;
    return sum;
}

uint32_t HostMgrDiskStatus(const vexo_hard_disk_info& disk) {
    const uint32_t abnormal = disk.state != VEXO_DISK_STATE_NORMAL ? 1 : 0;
    const uint32_t recording = vexo_model_is_disk_recording(&disk.identity) != 0 ? 2 : 0;
    return abnormal | recording;
}

// ---- disk lists ----------------------------------------------------------------------------------------------------

constexpr unsigned int DISK_TYPE_LOCAL = 1;
constexpr uint8_t REPORTED_TYPES[] = {0, 0, 1, 2, 4};  // by the recorder's disk type

static uint8_t ReportedType(unsigned int type) {
    return type < sizeof(REPORTED_TYPES) ? REPORTED_TYPES[type] : 0;
}

static void FillDisk(unsigned int index, const vexo_hard_disk_info& disk, unsigned char* place) {
    HostMgrRecordAt<_tagVexoHostMgrDiskInfo> entry(place);
    entry->dwDiskIndex = index;
    entry->dwCapacityMB = disk.size_mb;
    entry->dwPartitionSum = HostMgrPartitionSum(disk);
    entry->dwStatus = HostMgrDiskStatus(disk);
    entry->byDiskType = ReportedType(disk.identity.type);
    entry->dwValid = 1;
    if (disk.identity.type != DISK_TYPE_LOCAL)
        return;
    for (unsigned int byte = 0; byte < sizeof(entry->byAddress); ++byte)
        entry->byAddress[byte] = static_cast<uint8_t>(disk.identity.address >> (24 - 8 * byte));
}

/** Both lists begin with the same two words and differ in their capacity only. */
template <typename List>
static int FillDiskList(const HostMgrConfigCall& call) {
    constexpr unsigned int CAPACITY = sizeof(List::struDisk) / sizeof(_tagVexoHostMgrDiskInfo);
    call.Clear();
    HostMgrPutWord(call, offsetof(List, dwSize), sizeof(List));
    call.SetReturned(sizeof(List));
    const unsigned int count = HostMgrCountDisks();
    HostMgrPutWord(call, offsetof(List, dwDiskNum), count);
    for (unsigned int index = 0; index < count && index < CAPACITY; ++index) {
        vexo_hard_disk_info disk;
        if (HostMgrReadDisk(index, &disk))
            FillDisk(index, disk, call.pBuffer + offsetof(List, struDisk) + index * sizeof(_tagVexoHostMgrDiskInfo));
    }
    return 0;
}

int vexo_hostmgr_get_disk_cfg_8(const HostMgrConfigCall& call) {
    return FillDiskList<_tagVexoHostMgrDiskCfg8>(call);
}

int vexo_hostmgr_get_disk_cfg_24(const HostMgrConfigCall& call) {
    return FillDiskList<_tagVexoHostMgrDiskCfg>(call);
}

// ---- directory for pictures ----------------------------------------------------------------------------------------

constexpr unsigned int DISK_TOO_SMALL_MB = 16;
constexpr unsigned int PARTITION_TOO_SMALL = 15;

/** A disk that pictures may be kept on; says why when it is not. */
static bool IsFitForPictures(const vexo_hard_disk_info& disk) {
    if (disk.state == VEXO_DISK_STATE_NORMAL && disk.partition_num > 0 && disk.size_mb > DISK_TOO_SMALL_MB)
        return true;
    HostMgrPrintf(HOSTMGR_LEVEL_WARNING, HOSTMGR_CONFIG_HERE, "state:%d, part_num:%d, disk_size_MB:%d\n", disk.state,
                  disk.partition_num, disk.size_mb);
    return false;
}

constexpr size_t MOUNT_PATH_SIZE = sizeof(vexo_hard_disk_info().partition[0].mount_path);

/** The mount path of the disk's first partition with room, maybe unterminated; null when there is none. */
static const char* FindMountPath(const vexo_hard_disk_info& disk) {
    for (unsigned int index = 0; index < HostMgrPartitionsOf(disk); ++index) {
        if (disk.partition[index].size > PARTITION_TOO_SMALL)
            return disk.partition[index].mount_path;
    }
    return NULL;
}

/** A path that is too long for the caller is cut for the caller only: the directory itself is made whole. */
static void MakePictureDir(const char* mountPath, const HostMgrConfigCall& call) {
    char path[MOUNT_PATH_SIZE + sizeof("/host_pic")];
    const int mountLength = static_cast<int>(strnlen(mountPath, MOUNT_PATH_SIZE));
    const int length = snprintf(path, sizeof(path), "%.*s/host_pic", mountLength, mountPath);
    const unsigned int whole = static_cast<unsigned int>(length);
    const unsigned int shown = whole < call.dwSize ? whole : call.dwSize - 1;
    memcpy(call.pBuffer, path, shown);
    vexo_utility_creat_dir(path);
    HostMgrPrintf(HOSTMGR_LEVEL_DEBUG, HOSTMGR_CONFIG_HERE, "Dir:%s\n", path);
    call.SetReturned(shown);
}

int vexo_hostmgr_get_picture_dir(const HostMgrConfigCall& call) {
    call.Clear();
    const unsigned int count = HostMgrCountDisks();
    if (count == 0) {
        HostMgrPrintf(HOSTMGR_LEVEL_ERROR, HOSTMGR_CONFIG_HERE, "vexo_model_get_hard_disk_num failed, or disk_num %d\n",
                      count);
        return -1;
    }
    for (unsigned int index = 0; index < count; ++index) {
        vexo_hard_disk_info disk;
        if (!HostMgrReadDisk(index, &disk) || !IsFitForPictures(disk))
            continue;
        const char* mountPath = FindMountPath(disk);
        if (mountPath == NULL)
            continue;
        MakePictureDir(mountPath, call);
        return 0;
    }
    return -1;
}
