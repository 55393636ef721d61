#include "control.h"

#include <algorithm>
#include <cstdio>

#include "console.h"
#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr unsigned MOST_TOLD = 64;  // network channels; more are told as so many
constexpr unsigned UNKNOWN = 0;

unsigned ChannelsOf(int login) {
    _tagVexoHostMgrDeviceCfg device = {};
    unsigned size = 0;
    const int result = vexo_soft::vexo_HostMgr_Dev_GetConfig(login, HOSTMGR_CONFIG_DEVICE, 1, 1, nullptr, 0, &device,
                                                             sizeof(device), &size);
    const bool told = result == 0 && device.byIpChanNum < MOST_TOLD;
    return told ? unsigned{device.byChanNum} + device.byIpChanNum : UNKNOWN;
}

}  // namespace

void Send(int login, const Order& order, const std::string& what) {
    console::ForgetErrors();
    const int channels = order.channel == 0 ? 0 : 1;
    const int result = vexo_soft::vexo_HostMgr_Dev_Control(login, order.command, static_cast<int>(order.channel),
                                                           channels, nullptr, 0, order.record, order.size, nullptr, 0);
    if (result != 0 || !console::LastError().empty()) {
        throw Failure(ExitCode::Refused, what + " failed");
    }
}

void NoteMissingChannels(int login, const std::vector<unsigned>& channels) {
    const unsigned there = ChannelsOf(login);
    const unsigned highest = *std::max_element(channels.begin(), channels.end());
    if (there != UNKNOWN && highest > there) {
        fprintf(stderr, "hostmgrctl: note: the recorder says that it has %u channels, so nothing comes of channel %u\n",
                there, highest);
    }
}

void SwitchAlarmUpload(int login, bool on) {
    uint32_t word = on ? 1 : 0;
    vexo_soft::vexo_HostMgr_Dev_Control(login, HOSTMGR_CONTROL_ALARM_ENABLE, 0, 0, &word, sizeof(word), nullptr, 0,
                                        nullptr, 0);
}

}  // namespace hostmgrctl
