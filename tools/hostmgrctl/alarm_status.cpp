// alarm-status: what is active at the recorder now, asked for once.
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "agent.h"
#include "alarm_name.h"
#include "console.h"
#include "local_time.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;
using Entry = _tagVexoHostMgrALarmStatusInfo;

constexpr const char* NOTHING_OR_FAILED = "vexo_utility_get_event_info";  // in the library's complaint

struct Options {
    LoginOptions login;
    bool json = false;
};

/** The library answers alike when nothing is active and when the recorder's event table cannot be read. */
std::vector<Entry> ReadStatus(int login) {
    Entry* list = nullptr;
    unsigned count = 0;
    if (vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(login, &list, &count) != 0) {
        if (console::LastError().find(NOTHING_OR_FAILED) == std::string::npos) {
            throw Failure(ExitCode::Refused, "the alarm status could not be read");
        }
        return {};
    }
    std::vector<Entry> entries(list, list + count);
    vexo_soft::vexo_HostMgr_Dev_ReleaseAlarmStatus(list);
    return entries;
}

void PrintText(const std::vector<Entry>& entries) {
    FILE* out = console::Data();
    if (entries.empty()) {
        fprintf(out, "no alarm is active, or the recorder's events cannot be read (it does not tell)\n");
        return;
    }
    fprintf(out, "%zu alarm%s active, %s\n\n  %-18s%-14s%s\n", entries.size(), entries.size() == 1 ? " is" : "s are",
            TimeText(time(nullptr)).c_str(), "type", "where", "recorder's own");
    for (const Entry& entry : entries) {
        const AlarmName name = NameOfStatus(entry);
        fprintf(out, "  %-18s%-14s%u, %u\n", name.type.c_str(), name.Where().c_str(), entry.byType, entry.wChannel);
    }
}

void PrintJson(const std::vector<Entry>& entries) {
    ordered_json alarms = ordered_json::array();
    for (const Entry& entry : entries) {
        const AlarmName name = NameOfStatus(entry);
        ordered_json alarm = {{"type", name.type}, {"place", nullptr}, {"number", nullptr}};
        if (!name.place.empty()) {
            alarm["place"] = name.place;
            alarm["number"] = name.number;
        }
        alarm["raw"] = {{"type", entry.byType}, {"state", entry.byState}, {"channel", entry.wChannel}};
        alarms.push_back(alarm);
    }
    const ordered_json json = {{"time", TimeJson(time(nullptr))}, {"alarms", alarms}};
    fprintf(console::Data(), "%s\n", json.dump(2).c_str());
}

ExitCode Run(const Options& options) {
    const Agent agent(options.login);
    const std::vector<Entry> entries = ReadStatus(agent.Handle());
    options.json ? PrintJson(entries) : PrintText(entries);
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return Run(*options); };
}

}  // namespace

const Topic ALARM_STATUS_TOPIC = {
    "alarm-status",
    "Lists the alarms that are active now.",
    "  init, LoginV2, GetAlarmStatus, ReleaseAlarmStatus, Logout\n",
    "  hostmgrctl alarm-status                     a table\n"
    "  hostmgrctl alarm-status --json              for a program\n",
    Add,
};

}  // namespace hostmgrctl
