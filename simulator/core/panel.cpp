#include "core/panel.h"

#include <unistd.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include "control.h"
#include "core/events.h"
#include "core/json_section.h"
#include "core/nearest.h"
#include "core/power.h"
#include "core/scenario.h"
#include "core/uptime.h"

namespace simulator {
namespace {

using nlohmann::json;

struct Parts {
    std::mutex lock;
    std::map<std::string, std::function<json()>> list;
};

Parts& TheParts() {
    static Parts& parts = *new Parts;
    return parts;
}

const char* NameOf(PowerState state) {
    return state == PowerState::Running ? "running" : state == PowerState::Away ? "rebooting" : "off";
}

json Status(JsonSection&) {
    return PanelStatus();
}

json Event(JsonSection& request) {
    const std::string kind = request.RequiredText("kind", 1, 63);
    control::SetEvent(kind, request.Whole("number", 0, {0, 0xFFFFFFFF, "number"}), request.Truth("on", true));
    return "done";
}

json Disk(JsonSection& request) {
    const unsigned disk = request.Whole("number", 0, {0, 0xFFFFFFFF, "disk"});
    const std::string state = request.RequiredText("state", 1, 63);
    if (state != "full" && state != "error" && state != "ok") {
        throw std::invalid_argument("\"" + state + "\" is no state of a disk: give full, error or ok");
    }
    SetEvent(EventKind::DiskFull, disk, state == "full");
    SetEvent(EventKind::DiskError, disk, state == "error");
    return "done";
}

json Network(JsonSection& request) {
    const std::string state = request.RequiredText("state", 1, 63);
    if (state != "lost" && state != "conflict" && state != "ok") {
        throw std::invalid_argument("\"" + state + "\" is no state of the network: give lost, conflict or ok");
    }
    SetEvent(EventKind::NetworkLost, 0, state == "lost");
    SetEvent(EventKind::AddressConflict, 0, state == "conflict");
    return "done";
}

json Fail(JsonSection& request) {
    constexpr Bounds USES = {1, 0xFFFFFFFF, "uses"};
    const std::string operation = request.RequiredText("operation", 1, 63);
    const unsigned nth = request.Whole("nth", 1, USES);
    control::Fail(operation, nth, request.Whole("times", 1, USES));
    return "done";
}

json Power(JsonSection& request) {
    const std::string what = request.RequiredText("state", 1, 63);
    if (what == "on") {
        if (!PowerOn()) {
            throw std::invalid_argument(std::string("the recorder is not off: it is ") + NameOf(ThePowerState()));
        }
    } else if (what == "off") {
        PowerOff();
    } else if (what == "reboot") {
        Reboot();
    } else {
        throw std::invalid_argument("\"" + what + "\" is nothing that the switch does: give on, off or reboot");
    }
    return "done";
}

json Skip(JsonSection& request) {
    control::SkipTime(request.Real("seconds", 0, 0, 1e9));
    return "done";
}

json Diagnose(JsonSection& request) {
    return control::Diagnose(request.Whole("number", 0, {0, 0xFFFFFFFF, "command"}));
}

struct Command {
    const char* name;
    json (*run)(JsonSection& request);
};

const Command COMMANDS[] = {
    {"status", Status},   {"event", Event}, {"disk", Disk}, {"network", Network},
    {"fail", Fail},       {"power", Power}, {"skip", Skip}, {"diagnose", Diagnose},
};

const Command& FindCommand(const std::string& name) {
    std::vector<std::string> names;
    for (const Command& command : COMMANDS) {
        if (name == command.name) {
            return command;
        }
        names.emplace_back(command.name);
    }
    throw std::invalid_argument("\"" + name + "\" is no command; the nearest one is \"" + Nearest(name, names) + "\"");
}

json Channels() {
    json channels = json::array();
    const std::vector<unsigned> active = control::ActiveCameras();
    for (unsigned channel = 1; channel <= TheScenario().cameras.size(); ++channel) {
        channels.push_back({{"channel", channel},
                            {"name", TheScenario().cameras[channel - 1].name},
                            {"signal", control::HasSignal(channel)},
                            {"encoding", std::find(active.begin(), active.end(), channel) != active.end()}});
    }
    return channels;
}

}  // namespace

bool AddPanelPart(const std::string& name, std::function<json()> status) {
    Parts& parts = TheParts();
    std::lock_guard<std::mutex> hold(parts.lock);
    parts.list[name] = std::move(status);
    return true;
}

json PanelStatus() {
    json status = {{"process", getpid()},
                   {"scenario", TheScenario().name},
                   {"version", TheScenario().version},
                   {"state", NameOf(ThePowerState())},
                   {"uptime", Uptime()},
                   {"channels", Channels()},
                   {"events", control::Events()},
                   {"complaints", control::Complaints()}};
    std::map<std::string, std::function<json()>> parts;
    {
        std::lock_guard<std::mutex> hold(TheParts().lock);
        parts = TheParts().list;
    }
    for (const auto& [name, part] : parts) {
        status[name] = part();
    }
    return status;
}

json AnswerPanel(const std::string& request) {
    try {
        const json document = ReadJson(request);
        JsonSection section(document, "");
        const Command& command = FindCommand(section.RequiredText("command", 1, 63));
        const json result = command.run(section);
        return {{"result", result}};
    } catch (const std::exception& error) {
        return {{"error", error.what()}};
    }
}

}  // namespace simulator
