// login: are these credentials good? Logs in, tells the handle, logs out.
#include <hostmgr_dev.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "console.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

struct Options {
    LoginOptions login;
    bool json = false;
};

ExitCode Run(const Options& options) {
    const int handle = Agent(options.login).Handle();
    if (options.json) {
        const nlohmann::ordered_json object = {{"login", handle}, {"local", !options.login.user}};
        fprintf(console::Data(), "%s\n", object.dump(2).c_str());
    } else {
        fprintf(console::Data(), "logged in as %s: handle %d (0x%x), and logged out again\n",
                Describe(options.login).c_str(), handle, static_cast<unsigned>(handle));
    }
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddLoginOptions(app, &options->login);
    app.add_flag("--json", options->json, "print one JSON object");
    return [options] { return Run(*options); };
}

}  // namespace

const Topic LOGIN_TOPIC = {
    "login",
    "Checks credentials: logs in, and out again.",
    "  init, LoginV2, Logout\n",
    "  hostmgrctl login                            as the recorder's own user\n"
    "  hostmgrctl login -u operator -p secret      as a user over the network\n"
    "  HOSTMGR_PASSWORD=secret hostmgrctl login -u operator\n"
    "                                              password not in the process list\n",
    Add,
};

}  // namespace hostmgrctl
