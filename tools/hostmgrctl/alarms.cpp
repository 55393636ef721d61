// alarms: tells of the recorder's alarms as they come, and runs a command for each.
#include <algorithm>
#include <cctype>
#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "alarm_name.h"
#include "alarm_watch.h"
#include "child.h"
#include "console.h"
#include "local_time.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{50};
constexpr double LONGEST = 1e6;           // seconds
constexpr double SHORTEST_SILENCE = 1.2;  // an alarm that lasts is told once a second
constexpr double USUAL_SILENCE = 3;
constexpr unsigned long MOST_LINES = 1000000000;

struct Options {
    LoginOptions login;
    double seconds = 0;
    unsigned long count = 0;
    double silence = USUAL_SILENCE;
    bool every = false;
    std::string command;
    bool json = false;
};

const char* ChangeName(AlarmChange change) {
    constexpr const char* NAMES[] = {"begin", "active", "end"};
    return NAMES[static_cast<size_t>(change)];
}

ordered_json Json(const AlarmEvent& event) {
    const AlarmName name = NameOfAlarm(event.report.type, event.report.number);
    ordered_json json = {{"time", TimeJson(event.time)}, {"event", ChangeName(event.change)}, {"type", name.type}};
    json["place"] = nullptr;
    json["number"] = nullptr;
    if (!name.place.empty()) {
        json["place"] = name.place;
        json["number"] = name.number;
    }
    json["since"] = TimeJson(event.since);
    json["last"] = TimeJson(event.report.time);
    json["seconds"] = event.report.time - event.since;
    json["raw"] = {{"type", event.report.type}, {"channel", event.report.number}, {"state", event.report.state}};
    return json;
}

std::string Text(const AlarmEvent& event) {
    const AlarmName name = NameOfAlarm(event.report.type, event.report.number);
    char text[160];
    snprintf(text, sizeof(text), "%s  %-6s  %-16s  %-10s", TimeText(event.time).c_str(), ChangeName(event.change),
             name.type.c_str(), name.Where().c_str());
    std::string line = text;
    if (event.change == AlarmChange::End) {
        return line + "  after " + LengthText(static_cast<double>(event.report.time - event.since));
    }
    return line.erase(line.find_last_not_of(' ') + 1);
}

std::vector<std::pair<std::string, std::string>> Variables(const ordered_json& json) {
    std::vector<std::pair<std::string, std::string>> variables;
    for (const auto& [name, value] : json.items()) {
        if (value.is_object()) {
            continue;
        }
        std::string variable = "HOSTMGR_ALARM_" + name;
        std::transform(variable.begin(), variable.end(), variable.begin(), ::toupper);
        variables.emplace_back(variable,
                               value.is_string() ? value.get<std::string>() : (value.is_null() ? "" : value.dump()));
    }
    return variables;
}

class AlarmsRun {
public:
    explicit AlarmsRun(const Options& options) : m_options(options), m_watch(options.silence) {}

    ExitCode Run() {
        const Agent agent(m_options.login);
        AlarmFeed feed(agent.Handle());
        m_began = steady_clock::now();
        while (!Done()) {
            const auto report = feed.Next(POLL);
            TellAll(report ? m_watch.Take(*report) : m_watch.Ended(steady_clock::now(), time(nullptr)));
        }
        if (m_told == 0 && !StopRequested()) {
            char text[80];
            snprintf(text, sizeof(text), "no alarm came for %g seconds", m_options.seconds);
            throw Failure(ExitCode::NoData, text);
        }
        return ExitCode::Ok;
    }

private:
    bool Done() const {
        const double elapsed = std::chrono::duration<double>(steady_clock::now() - m_began).count();
        return StopRequested() || Full() || (m_options.seconds > 0 && elapsed >= m_options.seconds);
    }

    bool Full() const { return m_options.count > 0 && m_told >= m_options.count; }

    void TellAll(const std::vector<AlarmEvent>& events) {
        for (const AlarmEvent& event : events) {
            if (!Full() && (m_options.every || event.change != AlarmChange::Active)) {
                Tell(event);
            }
        }
    }

    void Tell(const AlarmEvent& event) {
        const ordered_json json = Json(event);
        fprintf(console::Data(), "%s\n", m_options.json ? json.dump().c_str() : Text(event).c_str());
        if (fflush(console::Data()) != 0) {
            throw Failure(ExitCode::NoOutput, "nobody reads the alarms any more");
        }
        ++m_told;
        if (!m_options.command.empty()) {
            const std::string failed = RunShell(m_options.command, Variables(json), json.dump() + "\n");
            if (!failed.empty()) {
                fprintf(stderr, "hostmgrctl: the command of --exec %s\n", failed.c_str());
            }
        }
    }

    const Options& m_options;
    AlarmWatch m_watch;
    steady_clock::time_point m_began;
    unsigned long m_told = 0;
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("-s,--seconds", options->seconds, "how long; 0: until Ctrl-C")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""))
        ->capture_default_str();
    app.add_option("-n,--count", options->count, "end after so many lines")
        ->type_name("N")
        ->check(CLI::Range(1UL, MOST_LINES).description(""));
    app.add_flag("--every", options->every, "tell every repetition, too, as the recorder does:\nonce a second");
    app.add_option("--silence", options->silence, "an alarm has ended when it was not repeated for so\nmany seconds")
        ->type_name("N")
        ->check(CLI::Range(SHORTEST_SILENCE, LONGEST).description(""))
        ->capture_default_str();
    app.add_option("-e,--exec", options->command,
                   "run this shell command for each line; it finds the\nalarm in HOSTMGR_ALARM_EVENT, _TYPE, _PLACE,\n"
                   "_NUMBER, _TIME, _SINCE, _LAST, _SECONDS, and as\nJSON on its standard input")
        ->type_name("COMMAND");
    app.add_flag("--json", options->json, "print a JSON object a line");
    AddLoginOptions(app, &options->login);
    return [options] { return AlarmsRun(*options).Run(); };
}

}  // namespace

const Topic ALARMS_TOPIC = {
    "alarms",
    "Tells of alarms as they begin and end.",
    "  init, LoginV2, SetAlarmCallback, Control 12, Logout\n",
    "  hostmgrctl alarms                           until Ctrl-C\n"
    "  hostmgrctl alarms --json -s 60              a minute, for a program\n"
    "  hostmgrctl alarms -n 1 && echo alarm        wait for one\n"
    "  hostmgrctl alarms -e 'logger \"$HOSTMGR_ALARM_TYPE $HOSTMGR_ALARM_EVENT\"'\n",
    Add,
};

}  // namespace hostmgrctl
