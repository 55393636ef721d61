#include "record_mode.h"

#include <mutex>
#include <vector>

#include "core/kept.h"
#include "core/panel.h"
#include "core/power.h"
#include "core/scenario.h"

namespace simulator {
namespace {

struct Switches {
    std::mutex lock;
    std::vector<RecordSwitches> list;
};

void KeepAll(const Switches& switches) {
    nlohmann::json document = nlohmann::json::object();
    for (size_t i = 0; i < switches.list.size(); ++i) {
        document[std::to_string(i + 1)] = {{"mode", static_cast<unsigned>(switches.list[i].mode)},
                                           {"manual", switches.list[i].manual}};
    }
    Keep("record_modes", document);
}

RecordSwitches SwitchesOf(const nlohmann::json& document) {
    RecordSwitches switches;
    try {
        const unsigned mode = document.at("mode");
        switches.mode = mode <= 2 ? static_cast<RecordMode>(mode) : switches.mode;
        switches.manual = document.at("manual");
    } catch (const nlohmann::json::exception&) {
        switches = {};
    }
    return switches;
}

Switches& TheSwitches() {
    static Switches& switches = *[] {
        auto* made = new Switches;
        const nlohmann::json document = ReadKept("record_modes");
        for (size_t i = 0; i < TheScenario().cameras.size(); ++i) {
            made->list.push_back(SwitchesOf(document.value(std::to_string(i + 1), nlohmann::json::object())));
        }
        return made;
    }();
    return switches;
}

void Forget() {
    Switches& switches = TheSwitches();
    std::lock_guard<std::mutex> hold(switches.lock);
    switches.list.assign(switches.list.size(), {});
    KeepAll(switches);
}

template <class Change>
bool ChangeOne(unsigned index, const Change& change) {
    Switches& switches = TheSwitches();
    std::lock_guard<std::mutex> hold(switches.lock);
    if (index >= switches.list.size()) {
        return false;
    }
    change(switches.list[index]);
    KeepAll(switches);
    return true;
}

nlohmann::json Status() {
    static const char* const names[] = {"off", "schedule", "always"};
    nlohmann::json status = nlohmann::json::array();
    for (unsigned index = 0; index < TheScenario().cameras.size(); ++index) {
        const RecordSwitches switches = RecordSwitchesOf(index);
        status.push_back({{"channel", index + 1},
                          {"mode", names[static_cast<unsigned>(switches.mode)]},
                          {"manual", switches.manual}});
    }
    return status;
}

[[maybe_unused]] const bool known = AddPanelPart("record", Status) && OnRestore(KEPT_RECORD_MODES, Forget);

}  // namespace

RecordSwitches RecordSwitchesOf(unsigned index) {
    Switches& switches = TheSwitches();
    std::lock_guard<std::mutex> hold(switches.lock);
    return index < switches.list.size() ? switches.list[index] : RecordSwitches{RecordMode::Off, false};
}

bool ShallRecord(unsigned index) {
    const RecordSwitches switches = RecordSwitchesOf(index);
    return (switches.manual || switches.mode != RecordMode::Off) && IsRunning();
}

bool SetRecordMode(unsigned index, RecordMode mode) {
    return ChangeOne(index, [mode](RecordSwitches& switches) { switches.mode = mode; });
}

bool SetManualRecording(unsigned index, bool enable) {
    return ChangeOne(index, [enable](RecordSwitches& switches) { switches.manual = enable; });
}

}  // namespace simulator
