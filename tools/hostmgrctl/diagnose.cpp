// diagnose: opens the library's diagnostics menu, and shows what it answers in the terminal's encoding.
#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "agent.h"
#include "channel_list.h"
#include "console.h"
#include "diagnose_menu.h"
#include "live_buffer.h"
#include "safe_text.h"
#include "stop.h"
#include "terminal_text.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;

constexpr const char* LIBRARY_ENCODING = "GBK";
constexpr const char* JSON_ENCODING = "UTF-8";
constexpr unsigned RANGE_SIZE = 1000;
constexpr std::chrono::milliseconds POLL{5};
constexpr std::chrono::seconds FIRST_FRAME{5};  // a channel without pictures is shown as it is

struct Options {
    LoginOptions login;
    std::vector<std::string> commands;
    std::string live;
    std::string encoding;
    bool json = false;
};

struct RangeName {
    const char* name;
    unsigned below;
    const char* shows;
};

// In the menu's order. A range's first number shows what a person wants to see of it.
constexpr RangeName RANGES[] = {
    {"logins", 1000, "who is logged in, with their passwords"},
    {"live", 2000, "live streams"},
    {"playback", 3000, "playback"},
    {"query", 4000, "searches for recordings"},
    {"talk", 5000, "talk"},
    {"alarm", 6000, "alarm subscription"},
};

const RangeName* RangeBelow(unsigned bound) {
    for (const RangeName& range : RANGES) {
        if (range.below == bound) {
            return &range;
        }
    }
    return nullptr;
}

std::string RangeNames() {
    std::string names;
    for (const RangeName& range : RANGES) {
        names += std::string(range.name) + ", ";
    }
    return names + "all";
}

/** The menu's numbers of "live", "1500" or "all". */
std::vector<unsigned> NumbersOf(const std::string& command) {
    std::vector<unsigned> numbers;
    for (const RangeName& range : RANGES) {
        if (command == range.name || command == "all") {
            numbers.push_back(range.below - RANGE_SIZE);
        }
    }
    constexpr size_t MOST_DIGITS = 9;
    if (numbers.empty() && !command.empty() && command.size() <= MOST_DIGITS &&
        command.find_first_not_of("0123456789") == std::string::npos) {
        numbers.push_back(static_cast<unsigned>(std::stoul(command)));
    }
    if (numbers.empty()) {
        throw Failure(ExitCode::Usage,
                      "\"" + command + "\" is nothing in the menu: give a number, or one of " + RangeNames());
    }
    return numbers;
}

class DiagnoseRun {
public:
    explicit DiagnoseRun(const Options& options)
        : m_options(options),
          m_encoding(!options.encoding.empty() ? options.encoding : TerminalEncoding()),
          m_channels(options.live.empty() ? std::vector<unsigned>() : ParseChannels(options.live)) {
        for (const std::string& command : options.commands) {
            const std::vector<unsigned> numbers = NumbersOf(command);
            m_numbers.insert(m_numbers.end(), numbers.begin(), numbers.end());
        }
        Reencode("", LIBRARY_ENCODING, m_encoding);  // refuses an unknown one before anything is done
    }

    ExitCode Run() {
        const Agent agent(m_options.login);
        const DiagnosticsMenu menu = TheDiagnosticsMenu();
        if (m_numbers.empty()) {
            m_options.json ? PrintJson(menu) : PrintMenu(menu);
            return ExitCode::Ok;
        }
        const std::vector<std::unique_ptr<LiveBuffer>> buffers = StartLive(agent.Handle());
        for (const unsigned number : m_numbers) {
            Ask(number);
        }
        if (m_options.json) {
            fprintf(console::Data(), "%s\n", m_answers.dump(2).c_str());
        }
        return ExitCode::Ok;
    }

private:
    /** Has the channels read while the menu is asked: up to a picture of each, or what there is in some seconds. */
    std::vector<std::unique_ptr<LiveBuffer>> StartLive(int login) const {
        std::vector<std::unique_ptr<LiveBuffer>> buffers;
        const auto deadline = std::chrono::steady_clock::now() + FIRST_FRAME;
        for (const unsigned channel : m_channels) {
            buffers.push_back(std::make_unique<LiveBuffer>(login, channel, HOSTMGR_STREAM_MAIN, true));
            Frame frame;
            while ((!buffers.back()->Read(&frame) || frame.IsAudio()) && std::chrono::steady_clock::now() < deadline &&
                   !StopRequested()) {
                std::this_thread::sleep_for(POLL);
            }
        }
        return buffers;
    }

    void Ask(unsigned number) {
        const std::string answer = AskDiagnostics(number);
        if (answer.empty()) {
            throw Failure(ExitCode::NoData, "the menu has nothing under " + std::to_string(number) +
                                                ": hostmgrctl diagnose shows the menu");
        }
        if (m_options.json) {
            m_answers.push_back(
                {{"command", number}, {"text", ValidText(Reencode(answer, LIBRARY_ENCODING, JSON_ENCODING))}});
        } else {
            PutText(answer);
        }
    }

    void PutText(const std::string& gbk) const {
        const std::string text = Reencode(gbk, LIBRARY_ENCODING, m_encoding);
        fwrite(text.data(), 1, text.size(), console::Data());
    }

    static std::vector<std::string> LinesOf(const DiagnosticsMenu& menu) {
        std::vector<std::string> lines;
        std::istringstream text(menu.lines);
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    /** The name of the range that a line such as "<1000 ..." stands for. */
    static const RangeName* RangeOf(const std::string& line) {
        unsigned bound = 0;
        return sscanf(line.c_str(), "<%u", &bound) == 1 ? RangeBelow(bound) : nullptr;
    }

    void PrintMenu(const DiagnosticsMenu& menu) const {
        PutText(menu.title + "\n");
        for (const std::string& line : LinesOf(menu)) {
            const RangeName* range = RangeOf(line);
            fprintf(console::Data(), "  %-10s", range != nullptr ? range->name : "");
            PutText(line + "\n");
        }
    }

    static void PrintJson(const DiagnosticsMenu& menu) {
        ordered_json json = {{"title", ValidText(Reencode(menu.title, LIBRARY_ENCODING, JSON_ENCODING))},
                             {"menu", ordered_json::array()}};
        for (const std::string& line : LinesOf(menu)) {
            const RangeName* range = RangeOf(line);
            ordered_json entry = {{"name", nullptr}, {"below", nullptr}};
            if (range != nullptr) {
                entry = {{"name", range->name}, {"below", range->below}};
            }
            entry["text"] = ValidText(Reencode(line, LIBRARY_ENCODING, JSON_ENCODING));
            json["menu"].push_back(entry);
        }
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    const std::string m_encoding;
    const std::vector<unsigned> m_channels;
    std::vector<unsigned> m_numbers;
    ordered_json m_answers = ordered_json::array();
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    std::string help = "what to show; without it, the menu:\n";
    for (const RangeName& range : RANGES) {
        const std::string name = range.name;
        help += name + std::string(10 - name.size(), ' ') + range.shows + "\n";
    }
    app.add_option("command", options->commands, help + "all       all of them\nN         a number of the menu")
        ->type_name("COMMAND");
    app.add_option("-l,--live", options->live, "read these channels' live streams meanwhile,\nsuch as 2, 1,3 or 1-4")
        ->type_name("LIST");
    app.add_option("--encoding", options->encoding, "show it in this encoding, not the terminal's;\nGBK: as it is")
        ->type_name("NAME");
    app.add_flag("--json", options->json, "print JSON, in UTF-8");
    AddLoginOptions(app, &options->login);
    return [options] { return DiagnoseRun(*options).Run(); };
}

}  // namespace

const Topic DIAGNOSE_TOPIC = {
    "diagnose",
    "Opens the library's diagnostics menu.",
    "  init (registers the menu), LoginV2, CreateRealStreamBuffer (--live), Logout\n",
    "  hostmgrctl diagnose                         the menu\n"
    "  hostmgrctl diagnose logins                  who is logged in\n"
    "  hostmgrctl diagnose live --live 1,2         the state of two live streams\n"
    "  hostmgrctl diagnose 1500 all --json\n"
    "The menu answers for the process that it is opened in, which is the tool. That\n"
    "of an agent is on the recorder's own console; that of an agent on a simulated\n"
    "recorder is asked by recorderctl diagnose N.\n",
    Add,
};

}  // namespace hostmgrctl
