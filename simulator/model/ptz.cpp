#include "ptz.h"

#include <mutex>
#include <vector>

#include "core/kept.h"
#include "core/panel.h"
#include "core/power.h"
#include "core/scenario.h"
#include "core/uptime.h"
#include "ptz_codes.h"
#include "ptz_memory.h"

namespace simulator {
namespace {

struct Heads {
    std::mutex lock;
    std::vector<CameraHead> list;
};

bool CanTurn(unsigned index) {
    return TheScenario().cameras[index].source == "scene";
}

std::vector<HeadMemory> Memories(const Heads& heads, double now) {
    std::vector<HeadMemory> memories;
    for (const CameraHead& head : heads.list) {
        memories.push_back(head.MemoryAt(now));
    }
    return memories;
}

Heads& TheHeads() {
    static Heads& heads = *[] {
        auto* made = new Heads;
        for (const HeadMemory& memory : ReadHeads(TheScenario().cameras.size())) {
            made->list.emplace_back(memory);
        }
        return made;
    }();
    return heads;
}

void Forget() {
    Heads& heads = TheHeads();
    std::lock_guard<std::mutex> hold(heads.lock);
    heads.list.assign(heads.list.size(), CameraHead(HeadMemory()));
    KeepHeads(Memories(heads, Uptime()));
}

void StopAll() {
    Heads& heads = TheHeads();
    std::lock_guard<std::mutex> hold(heads.lock);
    for (CameraHead& head : heads.list) {
        head.Stop(Uptime());
    }
}

nlohmann::json Status() {
    Heads& heads = TheHeads();
    std::lock_guard<std::mutex> hold(heads.lock);
    nlohmann::json status = nlohmann::json::array();
    for (unsigned index = 0; index < heads.list.size(); ++index) {
        const HeadPosition at = heads.list[index].PositionAt(Uptime());
        const HeadMemory memory = heads.list[index].MemoryAt(Uptime());
        status.push_back({{"channel", index + 1},
                          {"pan", at.pan},
                          {"tilt", at.tilt},
                          {"zoom", at.zoom},
                          {"focus", at.focus},
                          {"iris", at.iris},
                          {"moving", heads.list[index].Moves(Uptime())},
                          {"presets", memory.presets.size()},
                          {"wiper", memory.wiper},
                          {"light", memory.light}});
    }
    return status;
}

[[maybe_unused]] const bool known =
    AddPanelPart("ptz", Status) && OnRestore(KEPT_PTZ, Forget) && OnPowerLoss(StopAll);

}  // namespace

View ViewOf(unsigned index) {
    Heads& heads = TheHeads();
    std::lock_guard<std::mutex> hold(heads.lock);
    if (index >= heads.list.size()) {
        return {};
    }
    const HeadPosition at = heads.list[index].PositionAt(Uptime());
    return {at.pan, at.tilt, at.zoom};
}

bool DriveHead(unsigned index, unsigned code, const vexo_ipc_ptz_ctrl_para& para) {
    Heads& heads = TheHeads();
    std::lock_guard<std::mutex> hold(heads.lock);
    const double now = Uptime();
    if (index >= heads.list.size() || !CanTurn(index) || !Obey(heads.list[index], now, code, para)) {
        return false;
    }
    KeepHeads(Memories(heads, now));
    return true;
}

}  // namespace simulator
