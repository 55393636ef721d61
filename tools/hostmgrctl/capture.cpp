// capture: runs capture tasks, every second, daily or around alarms, and shows the pictures as they come.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "agent.h"
#include "alarm_feed.h"
#include "alarm_name.h"
#include "alarm_watch.h"
#include "capture_options.h"
#include "capture_task.h"
#include "channel_list.h"
#include "console.h"
#include "input_file.h"
#include "live_count.h"
#include "local_time.h"
#include "output_file.h"
#include "safe_text.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{50};
constexpr std::chrono::milliseconds NO_TIME{0};
constexpr double SILENCE = 5;  // seconds after which an alarm that comes again has begun anew
constexpr unsigned EVERY_CHANNEL = 0;

class CaptureRun {
public:
    explicit CaptureRun(const CaptureOptions& options)
        : m_options(options), m_setup(Resolve(options)), m_triggers(options.triggers), m_watch(SILENCE) {
        std::sort(m_triggers.begin(), m_triggers.end());
    }

    ExitCode Run() {
        MakeFolder();
        Capture();
        m_options.json ? PrintEnd() : PrintKept();
        if (m_pictures == 0) {
            throw Failure(ExitCode::NoData, WhyNothing());
        }
        return ExitCode::Ok;
    }

private:
    void MakeFolder() const {
        std::error_code error;
        if (!m_options.keep.empty() && !std::filesystem::is_directory(m_options.keep, error) &&
            !std::filesystem::create_directories(m_options.keep, error)) {
            CannotWrite(m_options.keep, error ? error.message() : "it is no folder");
        }
    }

    void Capture() {
        Start();
        while (!Done()) {
            TakeAll(POLL);
            TriggerByTime();
        }
        TakeAll(NO_TIME);
        m_tasks.clear();
        m_alarm_feed.reset();
        m_agent.reset();
    }

    void Start() {
        m_agent.emplace(m_options.login);
        if (m_setup.on_alarm) {
            m_alarm_feed.emplace(m_agent->Handle());
        }
        for (const unsigned channel : m_setup.channels) {
            for (const _tagVexoCapturePictureCfg& task : m_setup.tasks) {
                m_tasks.push_back(std::make_unique<CaptureTask>(m_agent->Handle(), channel, m_setup.stream, task));
            }
        }
        m_began = steady_clock::now();
    }

    void TakeAll(std::chrono::milliseconds patience) {
        for (auto picture = CaptureTask::Next(patience); picture; picture = CaptureTask::Next(NO_TIME)) {
            Take(*picture);
        }
        while (const auto report = m_alarm_feed ? m_alarm_feed->Next(NO_TIME) : std::nullopt) {
            Take(*report);
        }
    }

    double Seconds() const { return std::chrono::duration<double>(steady_clock::now() - m_began).count(); }

    bool Done() {
        m_stopped = StopRequested();
        return m_stopped || m_broken || (m_options.pictures > 0 && m_pictures >= m_options.pictures) ||
               (m_options.seconds > 0 && Seconds() >= m_options.seconds);
    }

    // ---- alarms ----------------------------------------------------------------------------------------------------

    void Take(const AlarmReport& report) {
        for (const AlarmEvent& event : m_watch.Take(report)) {
            const AlarmKind* kind = KindOfAlarm(m_setup, report.type);
            if (event.change == AlarmChange::Begin && kind != nullptr) {
                const AlarmName name = NameOfAlarm(report.type, report.number);
                Trigger(kind->of_channel ? report.number : EVERY_CHANNEL, name.type, name.Where());
            }
        }
    }

    void TriggerByTime() {
        while (m_next_trigger < m_triggers.size() && Seconds() >= m_triggers[m_next_trigger]) {
            ++m_next_trigger;
            Trigger(EVERY_CHANNEL, "by request", "");
        }
    }

    void Trigger(unsigned channel, const std::string& type, const std::string& where) {
        bool concerns = false;
        for (const auto& task : m_tasks) {
            if (task->IsOnAlarm() && (channel == EVERY_CHANNEL || channel == task->Channel())) {
                task->Trigger();
                concerns = true;
            }
        }
        if (!concerns) {
            return;
        }
        ++m_alarms;
        const time_t now = time(nullptr);
        if (m_options.json) {
            PutLine({{"event", "alarm"}, {"time", TimeJson(now)}, {"type", type}, {"where", where}});
        } else {
            fprintf(console::Data(), "%s  alarm: %s%s\n", TimeText(now).c_str(), type.c_str(),
                    where.empty() ? "" : (", " + where).c_str());
            m_broken = fflush(console::Data()) != 0;
        }
    }

    // ---- pictures --------------------------------------------------------------------------------------------------

    void Take(const Picture& picture) {
        if (m_options.pictures > 0 && m_pictures >= m_options.pictures) {
            return;
        }
        ++m_pictures;
        m_missed += picture.bytes == 0 ? 1 : 0;
        const std::string kept = Keep(picture);
        m_options.json ? PrintJson(picture, kept) : PrintText(picture, kept);
    }

    std::string PathOfCopy(const Picture& picture) const {
        const std::string time = TimeJson(picture.taken);  // 2026-11-21T10:15:30+01:00
        std::string name = "channel" + std::to_string(picture.channel) + "-" + CaptureKindName(picture.type) + "-" +
                           time.substr(0, 4) + time.substr(5, 2) + time.substr(8, 2) + "-" + time.substr(11, 2) +
                           time.substr(14, 2) + time.substr(17, 2);
        return (std::filesystem::path(m_options.keep) / (name + ".jpg")).string();
    }

    /** Copies a picture, which the recorder takes back in time; empty when there is none to copy. */
    std::string Keep(const Picture& picture) {
        if (m_options.keep.empty() || picture.bytes == 0) {
            return "";
        }
        std::string path = PathOfCopy(picture);
        const auto jpeg = ReadFile(picture.path);
        if (!jpeg) {
            fprintf(stderr, "hostmgrctl: %s is gone already, so it could not be kept\n", picture.path.c_str());
            return "";
        }
        WriteWhole(path, *jpeg);
        m_kept[path] = jpeg->size();
        return path;
    }

    void PrintText(const Picture& picture, const std::string& kept) {
        const std::string size = picture.bytes == 0 ? "none taken" : Amount(picture.bytes);
        fprintf(console::Data(), "%s  channel %-3u %-6s index %-3u %-9s  age %s\n  %s\n",
                TimeText(picture.taken).c_str(), picture.channel, CaptureKindName(picture.type).c_str(), picture.index,
                size.c_str(), LengthText(AgeOf(picture)).c_str(),
                PrintableText(kept.empty() ? picture.path : kept).c_str());
        m_broken = fflush(console::Data()) != 0;
    }

    static double AgeOf(const Picture& picture) { return std::max(0.0, std::difftime(time(nullptr), picture.taken)); }

    void PrintJson(const Picture& picture, const std::string& kept) {
        ordered_json json = {{"event", "picture"},
                             {"time", TimeJson(picture.taken)},
                             {"channel", picture.channel},
                             {"stream", picture.stream == HOSTMGR_STREAM_MAIN ? "main" : "sub"},
                             {"task", CaptureKindName(picture.type)},
                             {"index", picture.index},
                             {"alarm_time", nullptr},
                             {"age_seconds", static_cast<long>(AgeOf(picture))},
                             {"bytes", picture.bytes},
                             {"path", ValidText(picture.path)},
                             {"kept", nullptr}};
        if (picture.type == HOSTMGR_CAPTURE_ALARM) {
            json["alarm_time"] = TimeJson(picture.trigger);
        }
        if (!kept.empty()) {
            json["kept"] = ValidText(kept);
        }
        PutLine(json);
    }

    void PutLine(const ordered_json& json) {
        fprintf(console::Data(), "%s\n", json.dump().c_str());
        m_broken = fflush(console::Data()) != 0;
    }

    // ---- the end ---------------------------------------------------------------------------------------------------

    void PrintKept() const {
        FILE* out = console::Data();
        fprintf(out, "%lu picture%s", m_pictures, m_pictures == 1 ? "" : "s");
        if (m_setup.on_alarm) {
            fprintf(out, ", %lu alarm%s", m_alarms, m_alarms == 1 ? "" : "s");
        }
        if (m_missed > 0) {
            fprintf(out, ", %lu could not be taken", m_missed);
        }
        fprintf(out, "%s\n", m_stopped ? "; ended on request" : "");
        if (m_options.keep.empty()) {
            fprintf(out,
                    m_pictures > 0 ? "the recorder's files went with the tasks (--keep FOLDER keeps copies)\n" : "");
            return;
        }
        fprintf(out, "kept in %s: %zu\n", PrintableText(m_options.keep).c_str(), m_kept.size());
        for (const auto& [path, bytes] : m_kept) {
            fprintf(out, "  %9s  %s\n", Amount(bytes).c_str(),
                    PrintableText(std::filesystem::path(path).filename().string()).c_str());
        }
    }

    void PrintEnd() {
        ordered_json json = {{"event", "end"},     {"pictures", m_pictures}, {"missed", m_missed},
                             {"alarms", m_alarms}, {"stopped", m_stopped},   {"kept", ordered_json::array()}};
        for (const auto& [path, bytes] : m_kept) {
            json["kept"].push_back({{"path", ValidText(path)}, {"bytes", bytes}});
        }
        PutLine(json);
    }

    std::string WhyNothing() const {
        if (m_stopped) {
            return "stopped before the first picture came";
        }
        if (m_setup.on_alarm && m_setup.tasks.size() == 1 && m_alarms == 0) {
            return "no alarm came, so no picture was reported: does it concern " + ChannelsText(m_setup.channels) +
                   "? (--on names the kinds of alarm)";
        }
        return "no picture came of " + ChannelsText(m_setup.channels) +
               ": does the recorder have the channel, and a disk in normal state with a partition of 1024 MB?";
    }

    const CaptureOptions& m_options;
    const CaptureSetup m_setup;
    std::vector<double> m_triggers;  ///< seconds after the begin
    size_t m_next_trigger = 0;
    AlarmWatch m_watch;
    std::optional<Agent> m_agent;  ///< outlasts what is done in its name
    std::optional<AlarmFeed> m_alarm_feed;
    std::vector<std::unique_ptr<CaptureTask>> m_tasks;
    steady_clock::time_point m_began;
    unsigned long m_pictures = 0;
    unsigned long m_missed = 0;  ///< of them: could not be taken
    unsigned long m_alarms = 0;
    std::map<std::string, unsigned long> m_kept;  ///< bytes by path
    bool m_stopped = false;
    bool m_broken = false;  ///< nobody reads any more
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<CaptureOptions>();
    AddCaptureOptions(app, options.get());
    AddLoginOptions(app, &options->login);
    return [options] { return CaptureRun(*options).Run(); };
}

}  // namespace

const Topic CAPTURE_TOPIC = {
    "capture",
    "Takes pictures each second, daily or around alarms.",
    "  init, LoginV2, StartCapturePicture, SetAlarmCallback (--alarm),\n"
    "  SetCapturePictureAlarmTiger (--alarm, --trigger), StopCapturePicture, Logout\n",
    "  hostmgrctl capture -c 1-4 -s 10             each second, for ten seconds\n"
    "  hostmgrctl capture --daily 12:30 --keep noon\n"
    "                                              nine pictures a day, until Ctrl-C\n"
    "  hostmgrctl capture --alarm --before 5 --after 10 --on motion --json\n"
    "  hostmgrctl capture --alarm --trigger 8 -s 20\n"
    "The recorder deletes a task's pictures when it ends: --keep copies them in time.\n",
    Add,
};

}  // namespace hostmgrctl
