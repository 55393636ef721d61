#include "agent.h"

#include <hostmgr_dev.h>

#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr int UNUSED = -1;  // the spare argument that nobody reads

/** The library's text parameters are not const, though it writes to none of them. */
char* TextOrNull(const std::optional<std::string>& text) {
    return text ? const_cast<char*>(text->c_str()) : nullptr;
}

std::string Remedy(const LoginOptions& options) {
    if (options.user.has_value() != options.password.has_value()) {
        return "give --user and --password together, or neither for a local login";
    }
    return options.user ? "check --user and --password" : "does the recorder have a user \"admin\"?";
}

}  // namespace

void AddLoginOptions(CLI::App& app, LoginOptions* options) {
    const char* group = "Login (without user and password: locally, as the recorder's own user)";
    app.add_option("-u,--user", options->user, "user name")->type_name("NAME")->group(group);
    app.add_option("-p,--password", options->password, "password")
        ->type_name("TEXT")
        ->envname("HOSTMGR_PASSWORD")
        ->group(group);
    app.add_option("-a,--address", options->address, "the agent's address, for the recorder's records")
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--flag", options->flag, "lowest bit is handed on with a local login")->type_name("N")->group(group);
}

std::string Describe(const LoginOptions& options) {
    if (options.user) {
        return "user " + *options.user;
    }
    return options.password ? "nobody (a password without a user)" : "the recorder's own user";
}

Agent::Agent(const LoginOptions& options) {
    vexo_soft::vexo_HostMgr_Dev_init();
    m_handle = vexo_soft::vexo_HostMgr_Dev_LoginV2(TextOrNull(options.user), TextOrNull(options.password),
                                                   TextOrNull(options.address), options.flag, UNUSED);
    if (m_handle < 0) {
        throw Failure(ExitCode::Refused, "login of " + Describe(options) + " refused: " + Remedy(options));
    }
}

Agent::~Agent() {
    vexo_soft::vexo_HostMgr_Dev_Logout(m_handle);
}

}  // namespace hostmgrctl
