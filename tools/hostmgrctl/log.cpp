// log: shows the entries of the recorder's log as they come.
#include <hostmgr_dev.h>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "agent.h"
#include "arrivals.h"
#include "console.h"
#include "local_time.h"
#include "safe_text.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{100};
constexpr double LONGEST = 1e9;  // seconds
constexpr unsigned long MOST_ENTRIES = 1000000000;

struct Options {
    LoginOptions login;
    bool with_login = false;
    double seconds = 0;
    unsigned long count = 0;
    bool json = false;
};

struct Entry {
    int login = 0;
    tag_VexoHostMgrLog log = {};
};

// Never destroyed: the recorder may hand over one more entry when the hook has been taken back.
Arrivals<Entry>& Entries() {
    static auto& entries = *new Arrivals<Entry>;
    return entries;
}

/** The log hook, from construction to destruction. */
class LogHook {
public:
    LogHook() {
        vexo_soft::vexo_HostMgr_Dev_init();
        vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(0, Take, nullptr);
    }
    ~LogHook() { vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(0, nullptr, nullptr); }
    LogHook(const LogHook&) = delete;
    LogHook& operator=(const LogHook&) = delete;

private:
    static void Take(int login, tag_VexoHostMgrLog* log, void* /*user*/) { Entries().Put({login, *log}); }
};

class LogRun {
public:
    explicit LogRun(const Options& options) : m_options(options) {}

    ExitCode Run() {
        const LogHook hook;
        std::optional<Agent> agent;
        if (m_options.with_login || m_options.login.user || m_options.login.password) {
            agent.emplace(m_options.login);
        }
        const auto began = steady_clock::now();
        bool overdue = false;
        while (!Full() && !m_broken && !StopRequested() && !overdue) {
            overdue = m_options.seconds > 0 &&
                      std::chrono::duration<double>(steady_clock::now() - began).count() >= m_options.seconds;
            while (const auto entry = Full() || m_broken ? std::nullopt : Entries().Next(overdue ? NO_TIME : POLL)) {
                Show(*entry);
            }
        }
        agent.reset();
        ShowRest();
        return m_shown > 0 ? ExitCode::Ok : throw Failure(ExitCode::NoData, WhyNothing());
    }

private:
    static constexpr std::chrono::milliseconds NO_TIME{0};

    bool Full() const { return m_options.count > 0 && m_shown >= m_options.count; }

    /** What the command's own logout has brought. */
    void ShowRest() {
        while (const auto entry = Full() || m_broken ? std::nullopt : Entries().Next(NO_TIME)) {
            Show(*entry);
        }
    }

    void Show(const Entry& entry) {
        const std::string user = FieldText(entry.log.sUser, sizeof(entry.log.sUser));
        const std::string text = FieldText(entry.log.sText, sizeof(entry.log.sText));
        if (m_options.json) {
            const nlohmann::ordered_json json = {{"time", TimeJson(entry.log.dwTime)},
                                                 {"type", entry.log.dwType},
                                                 {"login", entry.login},
                                                 {"user", ValidText(user)},
                                                 {"text", ValidText(text)}};
            fprintf(console::Data(), "%s\n", json.dump().c_str());
        } else {
            fprintf(console::Data(), "%s  type %-3u %s\n", TimeText(entry.log.dwTime).c_str(), entry.log.dwType,
                    (PrintableText(text) + (user.empty() ? "" : " (" + PrintableText(user) + ")")).c_str());
        }
        ++m_shown;
        m_broken = fflush(console::Data()) != 0;
    }

    std::string WhyNothing() const {
        char text[120];
        snprintf(text, sizeof(text),
                 "no entry came in %g seconds: nothing happened at the recorder (--login makes one)",
                 m_options.seconds);
        return StopRequested() ? "stopped before the first entry came" : text;
    }

    const Options& m_options;
    unsigned long m_shown = 0;
    bool m_broken = false;  ///< nobody reads any more
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("-s,--seconds", options->seconds, "how long to listen; 0: until Ctrl-C")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""))
        ->capture_default_str();
    app.add_option("-n,--count", options->count, "end after so many entries")
        ->type_name("N")
        ->check(CLI::Range(1UL, MOST_ENTRIES).description(""));
    app.add_flag("-l,--login", options->with_login,
                 "log in meanwhile, and out again at the end, which\nmakes entries; listening needs no login");
    app.add_flag("--json", options->json, "print one JSON object a line");
    AddLoginOptions(app, &options->login);
    return [options] { return LogRun(*options).Run(); };
}

}  // namespace

const Topic LOG_TOPIC = {
    "log",
    "Shows the recorder's log entries as they come.",
    "  init, SetHook_InsertLog, LoginV2 and Logout (--login)\n",
    "  hostmgrctl log                              until Ctrl-C\n"
    "  hostmgrctl log --count 1 && echo \"something happened\"\n"
    "  hostmgrctl log --seconds 60 --json          a minute of them for a program\n"
    "Types are the recorder's numbers. The simulated one's: login 1, logout 2,\n"
    "power 3, restore 4, alarm and network 5, disk 6.\n",
    Add,
};

}  // namespace hostmgrctl
