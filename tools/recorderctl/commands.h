// The commands: each one's arguments and the request that it makes. A table; the way to the recorder is panel.h's.
#ifndef RECORDERCTL_COMMANDS_H
#define RECORDERCTL_COMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace recorderctl {

/** Makes the request once the arguments have been read. */
using Request = std::function<nlohmann::json()>;

struct Command {
    const char* name;
    const char* purpose;
    const char* examples;
    /** Adds the options to the command's parser. */
    Request (*add)(CLI::App& command);
};

const std::vector<Command>& Commands();

}  // namespace recorderctl

#endif
