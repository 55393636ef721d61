// What the tools say of wrong arguments.
#ifndef TOOLS_WRONG_ARGUMENTS_H
#define TOOLS_WRONG_ARGUMENTS_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/** One line with the tool's name in front: what is wrong, and which help tells more. For CLI::App::failure_message. */
inline std::string WrongArguments(const CLI::App* app, const CLI::Error& error) {
    const std::vector<CLI::App*> command = app->get_subcommands();
    const std::vector<std::string> left_over = app->remaining();
    const std::string& tool = app->get_name();
    if (!command.empty()) {
        return tool + ": " + error.what() + "; see " + tool + " " + command[0]->get_name() + " --help\n";
    }
    const std::string what = left_over.empty() ? error.what() : "\"" + left_over[0] + "\" is no command";
    return tool + ": " + what + "; see " + tool + " --help\n";
}

#endif
