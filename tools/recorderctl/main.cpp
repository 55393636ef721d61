// recorderctl: the simulated recorder's front panel, from another shell. Reads the arguments, asks the recorder, shows
// the answer.
#include <cstdio>
#include <exception>

#include "../wrong_arguments.h"
#include "commands.h"
#include "panel.h"
#include "status.h"

namespace recorderctl {
namespace {

enum ExitCode { OK = 0, REFUSED = 1, USAGE = 2, NO_RECORDER = 3 };

constexpr const char* EXIT_CODES =
    "Exit codes:\n"
    "  0    done\n"
    "  1    the recorder refused\n"
    "  2    wrong arguments\n"
    "  3    no recorder is running, or it does not answer\n";

constexpr const char* ABOUT =
    "recorderctl COMMAND --help shows a command's arguments and examples.\n"
    "The recorder is found through its home folder: that of --home, else of RECORDER_HOME, else\n"
    "simulated-recorder under $XDG_CACHE_HOME, else under ~/.cache.\n\n";

struct Options {
    std::string home;
    int process = 0;
    bool json = false;
};

struct Parsed {
    CLI::App* app;
    std::string name;
    Request request;
};

std::vector<Parsed> AddCommands(CLI::App& app) {
    std::vector<Parsed> commands;
    for (const Command& command : Commands()) {
        CLI::App* added = app.add_subcommand(command.name, command.purpose);
        added->footer("Examples:\n" + std::string(command.examples) + "\n\n" + EXIT_CODES);
        commands.push_back({added, command.name, command.add(*added)});
    }
    return commands;
}

/** What a person gets to see; nothing for a command that has nothing to say. */
std::string TextOf(const std::string& command, const nlohmann::json& result) {
    if (command == "status") {
        return StatusText(result);
    }
    return command == "diagnose" ? result.get<std::string>() : "";
}

ExitCode Show(const std::string& text) {
    if (fputs(text.c_str(), stdout) < 0 || fflush(stdout) != 0) {
        fprintf(stderr, "recorderctl: cannot write to standard output\n");
        return REFUSED;
    }
    return OK;
}

ExitCode Run(const Parsed& command, const Options& options) {
    const std::string home = options.home.empty() ? UsualHome() : options.home;
    try {
        const nlohmann::json result = Ask(home, options.process, command.request());
        return Show(options.json ? result.dump() + "\n" : TextOf(command.name, result));
    } catch (const NoRecorder& error) {
        fprintf(stderr, "recorderctl: %s\n", error.what());
        return NO_RECORDER;
    } catch (const std::exception& error) {
        fprintf(stderr, "recorderctl: %s\n", error.what());
        return REFUSED;
    }
}

ExitCode Main(int argc, char** argv) {
    CLI::App app("The front panel of a running simulated recorder.", "recorderctl");
    Options options;
    app.set_version_flag("--version", "recorderctl " RECORDERCTL_VERSION);
    app.add_option("--home", options.home, "the recorder's home folder");
    app.add_option("--pid", options.process, "its process, where several recorders share a home folder")
        ->check(CLI::PositiveNumber);
    app.add_flag("--json", options.json, "show the recorder's answer as JSON, one line");
    app.get_formatter()->column_width(28);
    app.require_subcommand(1);
    app.failure_message(WrongArguments);
    app.fallthrough();
    app.footer(std::string(ABOUT) + EXIT_CODES);
    const std::vector<Parsed> commands = AddCommands(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? OK : USAGE;
    }
    for (const Parsed& command : commands) {
        if (command.app->parsed()) {
            return Run(command, options);
        }
    }
    return USAGE;
}

}  // namespace
}  // namespace recorderctl

int main(int argc, char** argv) {
    try {
        return recorderctl::Main(argc, argv);
    } catch (const std::exception& error) {
        fprintf(stderr, "recorderctl: %s\n", error.what());
        return recorderctl::REFUSED;
    }
}
