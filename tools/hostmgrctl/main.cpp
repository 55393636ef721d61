// hostmgrctl: the agent on the command line. Reads the arguments, runs the topic, tells how it ended; what a topic does
// stands in its own source file.
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include "../wrong_arguments.h"
#include "console.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

std::string ExitCodesText() {
    std::string text = "Exit codes:\n";
    for (const ExitMeaning& meaning : EXIT_MEANINGS) {
        const std::string code = std::to_string(static_cast<int>(meaning.code));
        text += "  " + code + std::string(5 - code.size(), ' ') + meaning.meaning + "\n";
    }
    return text;
}

std::string Footer(const Topic& topic) {
    return "Exported functions (vexo_HostMgr_Dev_...):\n" + std::string(topic.functions) + "\nExamples:\n" +
           topic.examples + "\n" + ExitCodesText();
}

struct Command {
    CLI::App* app;
    Action action;
};

std::vector<Command> AddTopics(CLI::App& app, bool* verbose) {
    std::vector<Command> commands;
    for (const Topic& topic : Topics()) {
        CLI::App* command = app.add_subcommand(topic.name, topic.purpose);
        command->footer(Footer(topic));
        const Action action = topic.add(*command);
        command->add_flag("-v,--verbose", *verbose, "show the library's log lines on standard error");
        commands.push_back({command, action});
    }
    return commands;
}

void ShowFailure(const std::string& what) {
    fprintf(stderr, "hostmgrctl: %s\n", what.c_str());
    const std::string error = console::LastError();
    if (!error.empty()) {
        fprintf(stderr, "the recorder says: %s\n", error.c_str());
    }
}

ExitCode Run(const Action& action) {
    try {
        return action();
    } catch (const Failure& failure) {
        ShowFailure(failure.what());
        return failure.Code();
    } catch (const std::exception& error) {
        ShowFailure(error.what());
        return ExitCode::Refused;
    }
}

/** Runs with the library's lines kept apart. */
ExitCode RunApart(const Action& action, bool verbose) {
    signal(SIGPIPE, SIG_IGN);  // a reader that has gone is a write error like any other
    CatchStopSignals();
    try {
        console::Divert(verbose);
    } catch (const std::system_error& error) {
        fprintf(stderr, "hostmgrctl: %s\n", error.what());
        return ExitCode::NoOutput;
    }
    const ExitCode code = Run(action);
    if (!console::Finish()) {
        fprintf(stderr, "hostmgrctl: cannot write to standard output\n");
        return code == ExitCode::Ok ? ExitCode::NoOutput : code;
    }
    return code;
}

ExitCode Main(int argc, char** argv) {
    CLI::App app("Drives a network video recorder through libhostmgr.so, as a platform agent does.", "hostmgrctl");
    bool verbose = false;
    app.set_version_flag("--version", "hostmgrctl " HOSTMGRCTL_VERSION);
    app.get_formatter()->column_width(28);
    app.require_subcommand(1);
    app.failure_message(WrongArguments);
    app.footer("hostmgrctl COMMAND --help shows a command's options and examples.\n\n" + ExitCodesText());
    const std::vector<Command> commands = AddTopics(app, &verbose);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitCode::Ok : ExitCode::Usage;
    }
    for (const Command& command : commands) {
        if (command.app->parsed()) {
            return RunApart(command.action, verbose);
        }
    }
    return ExitCode::Usage;
}

}  // namespace
}  // namespace hostmgrctl

int main(int argc, char** argv) {
    try {
        return static_cast<int>(hostmgrctl::Main(argc, argv));
    } catch (const std::exception& error) {
        fprintf(stderr, "hostmgrctl: %s\n", error.what());
        return static_cast<int>(hostmgrctl::ExitCode::Refused);
    }
}
