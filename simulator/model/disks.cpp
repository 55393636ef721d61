// The platform's view of the simulated disks, and whether anything is recorded to them now.
#include <filesystem>
#include <mutex>

#include "av.h"
#include "copy_text.h"
#include "core/faults.h"
#include "core/scenario.h"
#include "live_recorder.h"
#include "vexo_model.h"

namespace simulator {
namespace {

constexpr unsigned LOCAL = 1;

std::string NameOf(unsigned disk) {
    return "disk-" + std::to_string(disk);
}

// The disk's folder, which exists then: it is mounted. One whose path is too long for the record is told once.
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

// Counted from 1; 0: there is none of that identity.
unsigned DiskOf(const vexo_disk_identity& identity) {
    const unsigned disks = static_cast<unsigned>(TheScenario().disks.size());
    const bool known = identity.type == LOCAL && identity.address >= 1 && identity.address <= disks &&
                       NameOf(identity.address) == identity.name;
    return known ? identity.address : 0;
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
    const std::string name = simulator::NameOf(index + 1);
    const std::string folder = simulator::FolderOf(name);
    if (folder.size() >= sizeof(info->partition[0].mount_path)) {
        return -1;
    }
    *info = {};
    info->identity.type = simulator::LOCAL;
    info->identity.address = index + 1;
    simulator::CopyText(name, info->identity.name);
    info->state = VEXO_DISK_STATE_NORMAL;
    info->size_mb = disks[index].megabytes;
    info->partition_num = 1;
    simulator::CopyText(folder, info->partition[0].mount_path);
    info->partition[0].size = disks[index].megabytes;
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
