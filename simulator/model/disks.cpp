// The platform's view of the simulated disks, and whether anything is recorded to them now.
#include <cstring>
#include <filesystem>
#include <mutex>

#include "av.h"
#include "copy_text.h"
#include "core/events.h"
#include "core/faults.h"
#include "core/scenario.h"
#include "live_recorder.h"
#include "vexo_model.h"

namespace simulator {
namespace {

std::string NameOf(unsigned disk) {
    return "disk-" + std::to_string(disk);
}

// Of a local disk: its slot in the highest byte.
unsigned AddressOf(unsigned disk) {
    return TheScenario().disks[disk - 1].kind == DiskKind::Local ? disk << 24U : 0;
}

bool HasFailed(unsigned disk) {
    for (const CurrentEvent& event : CurrentEvents()) {
        if (event.kind == EventKind::DiskError && event.number == disk) {
            return true;
        }
    }
    return false;
}

DiskState StateOf(unsigned disk) {
    const DiskState state = TheScenario().disks[disk - 1].state;
    return state == DiskState::Normal && HasFailed(disk) ? DiskState::Broken : state;
}

// In megabytes; a disk that is not formatted has none.
std::vector<unsigned> PartitionsOf(const DiskSettings& disk) {
    if (disk.state == DiskState::Unformatted) {
        return {};
    }
    return disk.partitions.empty() ? std::vector<unsigned>{disk.megabytes} : disk.partitions;
}

// The partition's folder, which exists then: it is mounted. One whose path is too long for the record is told once.
std::string FolderOf(const std::string& name) {
    std::string folder = HomeFolder() + "/" + name;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    static std::once_flag told;
    if (folder.size() >= sizeof(vexo_hard_disk_info::partition[0].mount_path)) {
        std::call_once(told, [&] { Tell("the disks cannot be shown: set RECORDER_HOME to a shorter path"); });
    }
    return folder;
}

// Recordings lie on the first one. False when the path does not fit into the record.
bool FillPartitions(unsigned disk, vexo_hard_disk_info* info) {
    for (const unsigned megabytes : PartitionsOf(TheScenario().disks[disk - 1])) {
        const unsigned number = info->partition_num + 1;
        const std::string folder = FolderOf(NameOf(disk) + (number == 1 ? "" : "-" + std::to_string(number)));
        auto& partition = info->partition[info->partition_num++];
        if (folder.size() >= sizeof(partition.mount_path)) {
            return false;
        }
        CopyText(folder, partition.mount_path);
        partition.size = megabytes;
    }
    return true;
}

vexo_disk_identity IdentityOf(unsigned disk) {
    vexo_disk_identity identity = {};
    identity.type = static_cast<unsigned>(TheScenario().disks[disk - 1].kind);
    identity.address = AddressOf(disk);
    CopyText(NameOf(disk), identity.name);
    return identity;
}

// Counted from 1; 0: there is none of that identity.
unsigned DiskOf(const vexo_disk_identity& identity) {
    for (unsigned disk = 1; disk <= TheScenario().disks.size(); ++disk) {
        const vexo_disk_identity known = IdentityOf(disk);
        if (known.type == identity.type && known.address == identity.address &&
            strncmp(known.name, identity.name, sizeof(known.name)) == 0) {
            return disk;
        }
    }
    return 0;
}

}  // namespace
}  // namespace simulator

int vexo_model_get_hard_disk_num(unsigned int* num) {
    if (simulator::ShallFail(__func__) || num == nullptr) {
        return -1;
    }
    *num = static_cast<unsigned>(simulator::TheScenario().disks.size());
    return 0;
}

int vexo_model_get_hard_disk_info(unsigned int index, vexo_hard_disk_info* info) {
    const auto& disks = simulator::TheScenario().disks;
    if (simulator::ShallFail(__func__) || info == nullptr || index >= disks.size()) {
        return -1;
    }
    vexo_hard_disk_info found = {};
    found.identity = simulator::IdentityOf(index + 1);
    found.state = static_cast<unsigned>(simulator::StateOf(index + 1));
    found.size_mb = disks[index].megabytes;
    if (!simulator::FillPartitions(index + 1, &found)) {
        return -1;
    }
    *info = found;
    return 0;
}

VEXO_BOOL vexo_model_is_disk_recording(const vexo_disk_identity* disk) {
    return disk != nullptr && simulator::IsDiskRecording(simulator::DiskOf(*disk)) ? VEXO_TRUE : VEXO_FALSE;
}

VEXO_BOOL vexo_model_ch_is_recording(unsigned int channel) {
    return simulator::IsChannelRecording(channel) ? VEXO_TRUE : VEXO_FALSE;
}

int vexo_model_get_rec_stream_mode(unsigned int* mode) {
    if (simulator::ShallFail(__func__) || mode == nullptr) {
        return -1;
    }
    *mode = 0;  // main and sub stream
    return 0;
}
