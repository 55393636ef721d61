// The platform's view of the recorder as a device, and of its network as the model library tells it.
#include "core/device.h"

#include <algorithm>
#include <cstring>

#include "copy_text.h"
#include "core/events.h"
#include "core/faults.h"
#include "vexo_model.h"

namespace {

using simulator::ShallFail;
using simulator::TheScenario;

bool IsNetworkLost() {
    const std::vector<simulator::CurrentEvent> events = simulator::CurrentEvents();
    return std::any_of(events.begin(), events.end(), [](const simulator::CurrentEvent& event) {
        return event.kind == simulator::EventKind::NetworkLost;
    });
}

}  // namespace

const vexo_dev_capability* vexo_model_get_dev_capability() {
    return ShallFail(__func__) ? nullptr : &simulator::TheCapability();
}

int vexo_model_get_sata_info(vexo_sata_info* info) {
    if (ShallFail(__func__) || info == nullptr) {
        return -1;
    }
    *info = {};
    for (const simulator::DiskSettings& disk : TheScenario().disks) {
        info->flag |= disk.kind == simulator::DiskKind::Local ? 1 : 0;
    }
    return 0;
}

int vexo_model_get_default_if(char* name, unsigned int len) {
    const std::string& found = TheScenario().network.default_interface;
    if (ShallFail(__func__) || name == nullptr || found.size() >= len) {
        return -1;
    }
    memcpy(name, found.c_str(), found.size() + 1);
    return 0;
}

int vexo_model_get_pppoe_status(vexo_pppoe_status* status) {
    if (ShallFail(__func__) || status == nullptr) {
        return -1;
    }
    const simulator::PppoeSettings& pppoe = TheScenario().network.pppoe;
    *status = {};
    if (pppoe.enabled && !pppoe.address.empty() && !IsNetworkLost()) {
        status->link_up = 1;
        status->ipv4 = pppoe.address.find(':') == std::string::npos ? 1 : 0;
        simulator::CopyText(status->ipv4 != 0 ? pppoe.address : "", status->ip_addr);
        simulator::CopyText(status->ipv4 != 0 ? "" : pppoe.address, status->ipv6_addr);
    }
    return 0;
}
