// reboot, poweroff, restore: what changes the recorder as a whole, and is not done before somebody has said yes.
#include <poll.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "console.h"
#include "control.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

struct Act {
    HostMgrControlCommand command;
    const char* name;
    const char* question;
    const char* done;
};

constexpr Act REBOOT = {HOSTMGR_CONTROL_REBOOT, "reboot",
                        "Reboot the recorder? Everybody loses the login, and nothing is recorded meanwhile.",
                        "the recorder reboots"};
constexpr Act POWER_OFF = {HOSTMGR_CONTROL_POWER_OFF, "power-off",
                           "Power the recorder off? Only somebody who stands before it can switch it on again.",
                           "the recorder powers off"};
constexpr Act RESTORE = {HOSTMGR_CONTROL_RESTORE, "restore of the factory settings",
                         "Restore ALL factory settings of the recorder? What was set is lost.",
                         "the recorder restores its factory settings"};

constexpr int POLL = 100;  // milliseconds

/** Waits until something has been typed; false when Ctrl-C comes first. */
bool Typed() {
    pollfd terminal = {STDIN_FILENO, POLLIN, 0};
    while (!StopRequested()) {
        if (poll(&terminal, 1, POLL) > 0) {
            return true;
        }
    }
    return false;
}

/** True when the person at the terminal types yes. Nobody there: throws Failure. */
bool Confirmed(const Act& act) {
    if (isatty(STDIN_FILENO) == 0) {
        throw Failure(ExitCode::Usage, std::string(act.name) + " is not done unasked: give --yes");
    }
    fprintf(stderr, "%s\nType yes to go on: ", act.question);
    char answer[16] = "";
    return Typed() && fgets(answer, sizeof(answer), stdin) != nullptr && strcmp(answer, "yes\n") == 0;
}

struct Options {
    LoginOptions login;
    bool yes = false;
    bool json = false;
};

ExitCode Run(const Act& act, const Options& options) {
    if (!options.yes && !Confirmed(act)) {
        throw Failure(ExitCode::Refused, std::string("nothing was done: ") + act.name + " was not confirmed with yes");
    }
    const Agent agent(options.login);
    Send(agent.Handle(), {act.command}, act.name);
    if (options.json) {
        const nlohmann::ordered_json object = {{"order", act.name}, {"command", static_cast<unsigned>(act.command)}};
        fprintf(console::Data(), "%s\n", object.dump(2).c_str());
    } else {
        fprintf(console::Data(), "%s\n", act.done);
    }
    return ExitCode::Ok;
}

Action Add(CLI::App& app, const Act& act) {
    auto options = std::make_shared<Options>();
    app.add_flag("-y,--yes", options->yes, "do not ask");
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options, &act] { return Run(act, *options); };
}

}  // namespace

const Topic REBOOT_TOPIC = {
    "reboot",
    "Reboots the recorder.",
    "  init, LoginV2, Control 10, Logout\n",
    "  hostmgrctl reboot                           asks, and reboots\n"
    "  hostmgrctl reboot --yes                     without a question\n",
    [](CLI::App& app) { return Add(app, REBOOT); },
};

const Topic POWEROFF_TOPIC = {
    "poweroff",
    "Powers the recorder off.",
    "  init, LoginV2, Control 11, Logout\n",
    "  hostmgrctl poweroff                         asks, and powers off\n"
    "  hostmgrctl poweroff --yes                   without a question\n",
    [](CLI::App& app) { return Add(app, POWER_OFF); },
};

const Topic RESTORE_TOPIC = {
    "restore",
    "Restores the recorder's factory settings.",
    "  init, LoginV2, Control 30, Logout\n",
    "  hostmgrctl restore                          asks, and restores all of them\n"
    "  hostmgrctl restore --yes                    without a question\n",
    [](CLI::App& app) { return Add(app, RESTORE); },
};

}  // namespace hostmgrctl
