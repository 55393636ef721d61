// record: switches the recording of channels, by hand or by their mode.
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "channel_list.h"
#include "console.h"
#include "control.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

struct Options {
    LoginOptions login;
    std::string channels = "1";
    std::string way;
    std::string type = "manual";
    bool json = false;
};

struct Type {
    const char* name;
    HostMgrRecordCommand command;
    const char* start;  ///< what is ordered, in words
    const char* stop;
};

// The words are the plain reading of the recorder's modes; what a mode is, is the recorder's matter.
constexpr Type TYPES[] = {
    {"manual", HOSTMGR_RECORD_MANUAL, "recording by hand on", "recording by hand off"},
    {"schedule", HOSTMGR_RECORD_MODE_1, "mode 1, by schedule", "mode 0, off"},
    {"always", HOSTMGR_RECORD_MODE_2, "mode 2, always", "mode 0, off"},
};

const Type& TypeOf(const std::string& name) {
    return *std::find_if(std::begin(TYPES), std::end(TYPES), [&](const Type& type) { return name == type.name; });
}

ExitCode Run(const Options& options) {
    const std::vector<unsigned> channels = ParseChannels(options.channels);
    const Type& type = TypeOf(options.type);
    const bool on = options.way == "start";
    _tagVexoHostMgrRecordCmd record = {};
    record.dwRecordCmd = type.command;
    record.dwSwitch = on ? HOSTMGR_RECORD_ON : HOSTMGR_RECORD_OFF;
    const Agent agent(options.login);
    NoteMissingChannels(agent.Handle(), channels);
    for (const unsigned channel : channels) {
        Send(agent.Handle(), {HOSTMGR_CONTROL_RECORD, channel, &record, sizeof(record)},
             "recording of channel " + std::to_string(channel));
    }
    if (options.json) {
        const nlohmann::ordered_json object = {
            {"channels", channels}, {"type", type.name}, {"command", record.dwRecordCmd}, {"switch", record.dwSwitch}};
        fprintf(console::Data(), "%s\n", object.dump(2).c_str());
    } else {
        fprintf(console::Data(), "%s: ordered %s\n", ChannelsText(channels).c_str(), on ? type.start : type.stop);
    }
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("way", options->way, "start or stop")
        ->type_name("")
        ->required()
        ->check(CLI::IsMember({"start", "stop"}).description(""));
    app.add_option("-c,--channel", options->channels, "channels, from 1: 2, 1,3 or 1-4")
        ->type_name("LIST")
        ->capture_default_str();
    app.add_option("-y,--type", options->type,
                   "manual: by hand, whatever the mode is;\nschedule or always: the channel's mode, which\n"
                   "stop switches off")
        ->type_name("WHICH")
        ->check(CLI::IsMember({"manual", "schedule", "always"}).description(""))
        ->capture_default_str();
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return Run(*options); };
}

}  // namespace

const Topic RECORD_TOPIC = {
    "record",
    "Starts and stops the recording of channels.",
    "  init, LoginV2, GetConfig 100, Control 25 (record commands\n"
    "  1, 2, 3), Logout\n",
    "  hostmgrctl record start -c 2                by hand, whatever the mode is\n"
    "  hostmgrctl record stop -c 2                 back to the mode\n"
    "  hostmgrctl record start -c 1-4 --type always\n"
    "  hostmgrctl record stop -c 1-4 --type always these record no more\n",
    Add,
};

}  // namespace hostmgrctl
