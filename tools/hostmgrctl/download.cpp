// download: fetches recordings as fast as the recorder gives them, into files that are whole or not there at all.
#include <chrono>
#include <map>
#include <memory>

#include "agent.h"
#include "channel_take.h"
#include "common_options.h"
#include "console.h"
#include "live_count.h"
#include "local_time.h"
#include "playback.h"
#include "progress.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{20};
constexpr double MICROSECOND = 1e-6;
// A recording is listed in whole seconds, and its last picture stands for the time to the next one.
constexpr double END_TOLERANCE = 3;
constexpr int PROGRESS_COLUMNS = 24;

struct Options {
    LoginOptions login;
    RangeOptions range;
    std::string stream = "main";
    bool no_audio = false;
    bool keep_gaps = false;
    bool keep_partial = false;
    double timeout = 15;
    std::string output;
    bool json = false;

    PlaySetup Setup() const { return {PlayWay::Download, Resolve(range), StreamNumber(stream), !no_audio, false}; }
};

/** One channel: what there is to come, and what has come. */
struct Part {
    std::vector<Recording> recordings;
    double recorded = 0;          ///< seconds of the range
    std::vector<double> reached;  ///< of each recording: the time of its last picture, seconds since 1970
    std::unique_ptr<ChannelTake> take;

    double Done(time_t from) const {
        return take->Video().frames == 0 ? 0 : RecordedSeconds(recordings, from, take->Video().last * MICROSECOND);
    }
};

class DownloadRun {
public:
    explicit DownloadRun(const Options& options) : m_options(options), m_setup(options.Setup()) {
        for (const unsigned channel : m_setup.range.channels) {
            TakeSetup take;
            take.path = PathOfChannel(options.output, channel, m_setup.range.channels.size());
            take.stream = m_setup.stream;
            take.audio = m_setup.audio;
            take.keep_gaps = options.keep_gaps;
            take.whole = true;
            m_parts[channel].take = std::make_unique<ChannelTake>(channel, take);
        }
    }

    ExitCode Run() {
        Fetch();
        const std::string missing = Missing();
        if (missing.empty() || m_options.keep_partial) {
            for (auto& [channel, part] : m_parts) {
                part.take->Keep();
            }
        }
        m_options.json ? PrintJson(missing.empty()) : PrintText();
        if (!missing.empty()) {
            throw Failure(ExitCode::Partial, missing);
        }
        return ExitCode::Ok;
    }

private:
    void Fetch() {
        const Agent agent(m_options.login);
        FindAll(agent.Handle());
        Playback play(agent.Handle(), m_setup);
        Progress progress;
        m_began = m_last = steady_clock::now();
        play.Speed(1);
        while (!Done()) {
            if (const auto played = play.Next(POLL)) {
                Take(*played);
            }
            if (progress.Due()) {
                progress.Show(ProgressText());
            }
        }
        m_seconds = Seconds(m_began);
    }

    void FindAll(int login) {
        const Range& range = m_setup.range;
        for (auto& [channel, part] : m_parts) {
            part.recordings = FindRecordings(login, channel, range.from, range.to);
            part.recorded = RecordedSeconds(part.recordings, range.from, static_cast<double>(range.to));
            part.reached.assign(part.recordings.size(), 0);
            m_recorded += part.recorded;
            if (part.recorded <= 0) {
                throw Failure(ExitCode::NoData, "nothing of channel " + std::to_string(channel) + " is recorded from " +
                                                    Describe(range) + ": hostmgrctl files -c " +
                                                    std::to_string(channel) + " shows what there is");
            }
        }
    }

    static double Seconds(steady_clock::time_point since) {
        return std::chrono::duration<double>(steady_clock::now() - since).count();
    }

    void Take(const Played& played) {
        Part& part = m_parts.at(played.channel);
        m_last = steady_clock::now();
        if (played.End()) {
            part.take->End();
            return;
        }
        const Frame frame = played.View();
        if (frame.Time() < m_setup.range.from * INT64_C(1000000) ||
            frame.Time() > m_setup.range.to * INT64_C(1000000)) {
            return;  // see RangeStart
        }
        part.take->Take(frame, 1);
        if (!frame.IsAudio()) {
            Reach(AsListed(frame.Time()), &part);
        }
    }

    /** Recordings are listed by local time, in which one hour of autumn comes twice: so is what is held against them.
     */
    static double AsListed(int64_t time) {
        return static_cast<double>(FromCalendarTime(CalendarTime(static_cast<time_t>(time / 1000000)))) +
               static_cast<double>(time % 1000000) * MICROSECOND;
    }

    static void Reach(double at, Part* part) {
        for (size_t i = 0; i < part->recordings.size(); ++i) {
            if (at >= static_cast<double>(part->recordings[i].start) &&
                at <= static_cast<double>(part->recordings[i].stop)) {
                part->reached[i] = at;
            }
        }
    }

    bool Done() {
        m_stopped = StopRequested();
        m_silent = Seconds(m_last) >= m_options.timeout;
        return m_stopped || m_silent || AllEnded();
    }

    bool AllEnded() const {
        return std::all_of(m_parts.begin(), m_parts.end(), [](const auto& it) { return it.second.take->Ended(); });
    }

    /** Why the download is not whole; empty when it is. */
    std::string Missing() const {
        if (m_stopped) {
            return "the download was ended on request: " + WhatIsLeft();
        }
        if (m_silent) {
            return "the recorder gave nothing more: " + WhatIsLeft();
        }
        for (const auto& [channel, part] : m_parts) {
            for (size_t i = 0; i < part.recordings.size(); ++i) {
                const double end = static_cast<double>(std::min(part.recordings[i].stop, m_setup.range.to));
                const double begin = static_cast<double>(std::max(part.recordings[i].start, m_setup.range.from));
                if (std::max(part.reached[i], begin) + END_TOLERANCE < end) {
                    return "channel " + std::to_string(channel) + " ended at " + At(part, i) +
                           ", before its recording did: " + WhatIsLeft();
                }
            }
        }
        return "";
    }

    static std::string At(const Part& part, size_t recording) {
        const double at = std::max(part.reached[recording], static_cast<double>(part.recordings[recording].start));
        return TimeText(static_cast<time_t>(at));
    }

    std::string WhatIsLeft() const {
        return m_options.keep_partial ? "what came is kept" : "nothing is kept (--keep-partial keeps what came)";
    }

    std::string ProgressText() const {
        double done = 0;
        int64_t last = 0;
        for (const auto& [channel, part] : m_parts) {
            done += part.Done(m_setup.range.from);
            last = std::max(last, part.take->Video().last);
        }
        const double share = std::min(1.0, done / m_recorded);
        const double elapsed = Seconds(m_began);
        const int filled = static_cast<int>(share * PROGRESS_COLUMNS);
        char text[128];
        snprintf(text, sizeof(text), "[%s%s] %3.0f%%  %s  %.1f x real time  %s left", std::string(filled, '#').c_str(),
                 std::string(PROGRESS_COLUMNS - filled, '.').c_str(), share * 100,
                 last > 0 ? ClockText(static_cast<time_t>(last / 1000000)).c_str() : "--:--:--", done / elapsed,
                 share > 0 ? LengthText(elapsed / share * (1 - share)).c_str() : "?");
        return text;
    }

    void PrintText() const {
        FILE* out = console::Data();
        for (const auto& [channel, part] : m_parts) {
            part.take->Print(out);
            fprintf(out, "  range   %s of %s recorded\n", LengthText(part.recorded).c_str(),
                    LengthText(static_cast<double>(m_setup.range.to - m_setup.range.from)).c_str());
        }
        fprintf(out, "took %.1f s, %.1f x real time\n", m_seconds, Rate());
    }

    double Rate() const {
        double done = 0;
        for (const auto& [channel, part] : m_parts) {
            done += part.Done(m_setup.range.from);
        }
        return m_seconds > 0 ? done / m_seconds : 0;
    }

    void PrintJson(bool whole) const {
        nlohmann::ordered_json json = {{"from", TimeJson(m_setup.range.from)},
                                       {"to", TimeJson(m_setup.range.to)},
                                       {"whole", whole},
                                       {"seconds", std::round(m_seconds * 100) / 100},
                                       {"rate", std::round(Rate() * 100) / 100},
                                       {"stopped", m_stopped},
                                       {"channels", nlohmann::ordered_json::array()}};
        for (const auto& [channel, part] : m_parts) {
            nlohmann::ordered_json one = part.take->Json();
            one["recorded_seconds"] = part.recorded;
            json["channels"].push_back(one);
        }
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    const PlaySetup m_setup;
    std::map<unsigned, Part> m_parts;
    double m_recorded = 0;  ///< seconds to come, of all channels
    steady_clock::time_point m_began;
    steady_clock::time_point m_last;  ///< when something came
    double m_seconds = 0;
    bool m_silent = false;
    bool m_stopped = false;
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddRangeOptions(app, &options->range);
    AddStreamOption(app, &options->stream);
    app.add_option("-o,--output", options->output,
                   "file to write: .mkv (best), .mov, .mp4 (sound\nbecomes AAC), .h264 (pictures only); of several\n"
                   "channels gate-channelN.mkv")
        ->type_name("FILE")
        ->required();
    app.add_flag("--no-audio", options->no_audio, "video only; faster");
    app.add_flag("--keep-gaps", options->keep_gaps, "time that is not recorded passes in the file, too");
    app.add_flag("--keep-partial", options->keep_partial, "keep what came when the download ends early");
    AddTimeoutOption(app, &options->timeout, "give up after so many seconds without a frame");
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return DownloadRun(*options).Run(); };
}

}  // namespace

const Topic DOWNLOAD_TOPIC = {
    "download",
    "Downloads recordings, whole or not at all.",
    "  init, LoginV2, QueryFile, GetQueryFileResult, QueryRelease,\n"
    "  StartHistoryPlay (mode 1), SetHistoryStreamCallback,\n"
    "  Control 20 (--no-audio, --stream; speed 1 begins), StopHistoryPlay, Logout\n",
    "  hostmgrctl download --from -1h -o gate.mkv  channel 1, the last hour\n"
    "  hostmgrctl download -c 1,2 --from \"yesterday 18:00\" --to +2h -o evening.mp4\n"
    "  hostmgrctl download -S sub --no-audio --from 08:00 --to 09:00 -o small.mkv\n",
    Add,
};

}  // namespace hostmgrctl
