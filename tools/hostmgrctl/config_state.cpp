// The recorder at work: disks and channels at this moment, the disk lists, and the directory for pictures.
#include <algorithm>

#include "config_decode.h"

namespace hostmgrctl {
namespace {

using namespace decode;  // the tables are all about it
using State = _tagVexoHostMgrWorkState;
using StateDisk = _tagVexoHostMgrWorkStateDisk;
using StateChannel = _tagVexoHostMgrWorkStateChan;
using Disk = _tagVexoHostMgrDiskInfo;
using Disks = _tagVexoHostMgrDiskCfg;
using Disks8 = _tagVexoHostMgrDiskCfg8;

constexpr Name DISK_STATUS[] = {{0, "normal"}, {1, "not normal"}, {2, "recording"}};
constexpr Name DISK_TYPES[] = {{0, "local"}, {1, "external"}, {2, "network"}, {4, "array"}};

// ---- work state ----------------------------------------------------------------------------------------------------

constexpr Field STATE_DISK_FIELDS[] = {
    {"capacity_mb", "capacity", HOSTMGRCTL_MEMBER(StateDisk, dwCapacityMB), Megabytes},
    {"partitions_sum", "partitions", HOSTMGRCTL_MEMBER(StateDisk, dwPartitionSum), Number},
    {"status", "status", HOSTMGRCTL_MEMBER(StateDisk, dwStatus), Bits<DISK_STATUS>},
};
constexpr Field STATE_CHANNEL_FIELDS[] = {
    {"connected", "connected", HOSTMGRCTL_MEMBER(StateChannel, dwConnected), Flag},
    {"recording", "recording", HOSTMGRCTL_MEMBER(StateChannel, byRecordStatus), Flag},
    {nullptr, "", HOSTMGRCTL_MEMBER(StateChannel, byFlagA), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(StateChannel, byFlagB), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(StateChannel, byFlagC), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(StateChannel, dwWordA), Number},
    {"address", "camera's address", HOSTMGRCTL_MEMBER(StateChannel, sIpAddress), Text},
    {"domain", "camera's domain", HOSTMGRCTL_MEMBER(StateChannel, sDomain), Text},
    {nullptr, "", HOSTMGRCTL_MEMBER(StateChannel, dwWordB), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(StateChannel, byChanFlags), Number},
};
constexpr Field STATE_HEAD_FIELDS[] = {{nullptr, "", HOSTMGRCTL_MEMBER(State, dwHeader), Number}};
constexpr Field STATE_TAIL_FIELDS[] = {{nullptr, "", HOSTMGRCTL_MEMBER(State, dwTail), Number}};

/** An absent disk and one that cannot be read look alike. */
bool IsStateDisk(const Entry& entry) {
    return std::any_of(entry.bytes, entry.bytes + sizeof(StateDisk), [](unsigned char byte) { return byte != 0; });
}

bool IsConnected(const Entry& entry) {
    return WordAt(entry.bytes, offsetof(StateChannel, dwConnected)) != 0;
}

std::string NotConnected(const Bytes& record) {
    constexpr size_t CHANNELS = sizeof(State::struChan) / sizeof(StateChannel);
    size_t count = 0;
    for (size_t index = 0; index < CHANNELS; ++index) {
        const size_t at = offsetof(State, struChan) + index * sizeof(StateChannel);
        count += IsConnected({record, record.data() + at, index}) ? 0 : 1;
    }
    return count == 0 ? "" : std::to_string(count) + " of 64 channels without a connected camera are not shown";
}

Section StateDisks() {
    Section section = {"disks", "disks", Form::Rows, STATE_DISK_FIELDS, "struDisk", offsetof(State, struDisk)};
    section.stride = sizeof(StateDisk);
    section.entries = sizeof(State::struDisk) / sizeof(StateDisk);
    section.number = "index";
    section.exists = IsStateDisk;
    return section;
}

Section StateChannels() {
    Section section = {"channels", "channels", Form::Rows, STATE_CHANNEL_FIELDS, "struChan", offsetof(State, struChan)};
    section.stride = sizeof(StateChannel);
    section.entries = sizeof(State::struChan) / sizeof(StateChannel);
    section.number = "channel";
    section.first = 1;
    section.shown = IsConnected;
    section.note = NotConnected;
    return section;
}

const Section STATE_SECTIONS[] = {{nullptr, nullptr, Form::Lines, STATE_HEAD_FIELDS},
                                  StateDisks(),
                                  StateChannels(),
                                  {nullptr, nullptr, Form::Lines, STATE_TAIL_FIELDS}};

// ---- disk lists ----------------------------------------------------------------------------------------------------

constexpr Field DISKS_HEAD_FIELDS[] = {
    {nullptr, "", HOSTMGRCTL_MEMBER(Disks, dwSize), Number},
    {"disk_count", "disks of the recorder", HOSTMGRCTL_MEMBER(Disks, dwDiskNum), Number},
};
constexpr Field DISK_FIELDS[] = {
    {nullptr, "", HOSTMGRCTL_MEMBER(Disk, dwDiskIndex), Number},
    {READABLE, "read", HOSTMGRCTL_MEMBER(Disk, dwValid), Flag},
    {"type", "type", HOSTMGRCTL_MEMBER(Disk, byDiskType), Named<DISK_TYPES>},
    {"address", "address", HOSTMGRCTL_MEMBER(Disk, byAddress), HexBytes},
    {"capacity_mb", "capacity", HOSTMGRCTL_MEMBER(Disk, dwCapacityMB), Megabytes},
    {"partitions_sum", "partitions", HOSTMGRCTL_MEMBER(Disk, dwPartitionSum), Number},
    {"status", "status", HOSTMGRCTL_MEMBER(Disk, dwStatus), Bits<DISK_STATUS>},
};

uint32_t DiskCount(const Bytes& record) {
    return WordAt(record.data(), offsetof(Disks, dwDiskNum));
}

bool IsDisk(const Entry& entry) {
    return entry.index < DiskCount(entry.record);
}

bool IsRead(const Entry& entry) {
    return WordAt(entry.bytes, offsetof(Disk, dwValid)) != 0;
}

/** The recorder may have more disks than the record has entries. */
std::string LeftOut(const Bytes& record) {
    const size_t entries = (record.size() - offsetof(Disks, struDisk)) / sizeof(Disk);
    return DiskCount(record) <= entries ? "" : "the record has room for the first " + std::to_string(entries);
}

Section DiskSection() {
    Section section = {"disks", nullptr, Form::Rows, DISK_FIELDS, "struDisk", offsetof(Disks, struDisk)};
    section.stride = sizeof(Disk);
    section.number = "index";
    section.read = IsRead;
    section.exists = IsDisk;
    section.note = LeftOut;
    return section;
}

// Both lists begin alike and differ in their number of entries.
static_assert(offsetof(Disks, struDisk) == offsetof(Disks8, struDisk), "alike");
const Section DISKS_SECTIONS[] = {{nullptr, nullptr, Form::Lines, DISKS_HEAD_FIELDS}, DiskSection()};

constexpr char NO_DISKS[] = "its disks cannot be asked";

// ---- directory for pictures ----------------------------------------------------------------------------------------

constexpr size_t LONGEST_PATH = 1024;

constexpr Field PICTURE_DIR_FIELDS[] = {{"path", "path", "(text)", 0, LONGEST_PATH, Text}};
constexpr Section PICTURE_DIR_SECTIONS[] = {{nullptr, nullptr, Form::Lines, PICTURE_DIR_FIELDS}};

}  // namespace

const Record STATE_RECORD = {"state",       "disks and channels at work now", HOSTMGR_CONFIG_WORK_STATE,
                             sizeof(State), "its state cannot be asked",      STATE_SECTIONS};
const Record DISKS_RECORD = {"disks",  "the first 24 disks", HOSTMGR_CONFIG_DISKS_24, sizeof(Disks),
                             NO_DISKS, DISKS_SECTIONS};
const Record DISKS_8_RECORD = {
    "disks-8", "the first 8 disks", HOSTMGR_CONFIG_DISKS_8, sizeof(Disks8), NO_DISKS, DISKS_SECTIONS, false, false};
const Record PICTURE_DIR_RECORD = {
    "picture-dir",
    "where pictures go; makes the directory",
    HOSTMGR_CONFIG_PICTURE_DIR,
    LONGEST_PATH,
    "it takes a disk that is normal, has more than 16 MB, and a partition with a size above 15",
    PICTURE_DIR_SECTIONS};

}  // namespace hostmgrctl
