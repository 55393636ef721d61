#include "core/device.h"

#include <cstdio>
#include <cstring>
#include <random>

namespace simulator {
namespace {

constexpr unsigned KIND_RECORDER = 1;
constexpr unsigned KIND_HYBRID = 3;

/** Ten bytes that are always the same for one seed. */
void FillIdentity(unsigned seed, unsigned char (&identity)[10]) {
    std::mt19937 bytes(seed);
    for (unsigned char& byte : identity) {
        byte = static_cast<unsigned char>(bytes() & 0xFF);
    }
}

vexo_dev_capability MakeCapability(const Scenario& scenario) {
    vexo_dev_capability capability = {};
    capability.device_kind = scenario.capability.hybrid ? KIND_HYBRID : KIND_RECORDER;
    capability.device_class = 1;
    FillIdentity(scenario.seed, capability.identity);
    capability.analog_channels = scenario.capability.analog_channels;
    capability.total_channels = static_cast<unsigned>(scenario.cameras.size());
    capability.alarm_inputs = scenario.alarm_inputs;
    capability.alarm_outputs = scenario.capability.alarm_outputs;
    sscanf(scenario.version.c_str(), "%u.%u", &capability.software_major, &capability.software_minor);
    snprintf(capability.build_date, sizeof capability.build_date, "%s", scenario.build_date.c_str());
    sscanf(scenario.capability.hardware.c_str(), "%u.%u", &capability.hardware_major, &capability.hardware_minor);
    capability.disk_slots = scenario.capability.disk_slots;
    capability.usb_ports = static_cast<unsigned char>(scenario.capability.usb_ports);
    capability.network_ports = static_cast<unsigned char>(scenario.network.interfaces.size());
    return capability;
}

vexo_channel_mask MaskOf(const std::vector<unsigned>& channels) {
    vexo_channel_mask mask = {};
    const unsigned count = static_cast<unsigned>(TheScenario().cameras.size());
    for (unsigned channel = 0; channels.empty() && channel < count; ++channel) {
        mask.word[channel / 32] |= 1U << channel % 32;
    }
    for (unsigned number : channels) {
        mask.word[(number - 1) / 32] |= 1U << (number - 1) % 32;
    }
    return mask;
}

vexo_dev_usr_authority AllRights() {
    vexo_dev_usr_authority rights = {};
    const vexo_channel_mask all = MaskOf({});
    for (unsigned& flag : rights.local_flag) {
        flag = 1;
    }
    for (unsigned& flag : rights.remote_flag) {
        flag = 1;
    }
    for (vexo_channel_mask& mask : rights.local_mask) {
        mask = all;
    }
    for (vexo_channel_mask& mask : rights.remote_mask) {
        mask = all;
    }
    return rights;
}

template <size_t FLAGS, size_t MASKS>
void Give(const RightsSettings& given, unsigned (&flags)[FLAGS], vexo_channel_mask (&masks)[MASKS]) {
    for (const unsigned right : given.flags) {
        flags[right - 1] = 1;
    }
    for (const ChannelRight& right : given.masks) {
        masks[right.right - 1] = MaskOf(right.channels);
    }
}

}  // namespace

const vexo_dev_capability& TheCapability() {
    static const vexo_dev_capability capability = MakeCapability(TheScenario());
    return capability;
}

vexo_dev_usr_authority AuthorityOf(const UserSettings& user) {
    if (user.administrator) {
        return AllRights();
    }
    vexo_dev_usr_authority rights = {};
    rights.level_a = user.change_parameters ? 0 : 1;
    rights.level_b = user.manage_disks ? 0 : 1;
    Give(user.local, rights.local_flag, rights.local_mask);
    Give(user.remote, rights.remote_flag, rights.remote_mask);
    return rights;
}

}  // namespace simulator
