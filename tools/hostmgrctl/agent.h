// The agent's stay at the recorder: initialisation, login, logout, and the options that every command has for it. What
// is done while logged in stands with the topics.
#ifndef HOSTMGRCTL_AGENT_H
#define HOSTMGRCTL_AGENT_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace hostmgrctl {

/** How to log in. Neither user nor password: the recorder's own user "admin" logs in locally. */
struct LoginOptions {
    std::optional<std::string> user;
    std::optional<std::string> password;
    std::optional<std::string> address;
    unsigned flag = 0;  ///< its lowest bit goes to the recorder with a local login
};

/** Adds the options of LoginOptions to a command. */
void AddLoginOptions(CLI::App& app, LoginOptions* options);

/** "the recorder's own user" or "user operator". */
std::string Describe(const LoginOptions& options);

/** A login, from construction to destruction. */
class Agent {
public:
    /** Initialises the library and logs in; throws Failure when refused. */
    explicit Agent(const LoginOptions& options);
    ~Agent();
    Agent(const Agent&) = delete;
    Agent& operator=(const Agent&) = delete;

    /** hLogin of the exported functions. */
    int Handle() const { return m_handle; }

private:
    int m_handle;
};

}  // namespace hostmgrctl

#endif
