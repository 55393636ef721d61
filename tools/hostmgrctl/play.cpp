// play: plays recordings at any speed and direction, several channels in step, counts the frames and writes files.
#include <chrono>
#include <map>
#include <memory>

#include "agent.h"
#include "channel_take.h"
#include "common_options.h"
#include "console.h"
#include "live_count.h"
#include "local_time.h"
#include "play_step.h"
#include "playback.h"
#include "progress.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{20};
constexpr unsigned long MOST_FRAMES = 1000000000;

struct Options {
    LoginOptions login;
    RangeOptions range;
    std::string stream = "main";
    int speed = 1;
    bool reverse = false;
    bool reader = false;
    bool no_audio = false;
    std::vector<std::string> steps;
    unsigned long frames = 0;
    double timeout = 15;
    std::string output;
    bool json = false;

    /** Sound is not paced, so it fits the pictures at their own pace alone. */
    bool WithSound() const { return !no_audio && !reverse && (speed == 0 || speed == 1); }

    PlaySetup Setup() const {
        return {reader ? PlayWay::Reader : PlayWay::Callback, Resolve(range), StreamNumber(stream), WithSound(),
                reverse};
    }
};

class PlayRun {
public:
    explicit PlayRun(const Options& options)
        : m_options(options), m_setup(options.Setup()), m_steps(ParseSteps(options.steps)), m_speed(options.speed) {
        for (const unsigned channel : m_setup.range.channels) {
            AddTake(channel);
        }
    }

    ExitCode Run() {
        Play();
        for (auto& [channel, take] : m_takes) {
            take->Keep();
        }
        m_options.json ? PrintJson() : PrintText();
        if (m_silent) {
            throw Failure(ExitCode::NoData, WhySilent());
        }
        if (Pictures() == 0 && !m_stopped) {
            throw Failure(ExitCode::NoData, "nothing was played from " + Describe(m_setup.range) +
                                                ": hostmgrctl files shows what is recorded");
        }
        return ExitCode::Ok;
    }

private:
    void AddTake(unsigned channel) {
        TakeSetup take;
        take.path = PathOfChannel(m_options.output, channel, m_setup.range.channels.size());
        take.stream = m_setup.stream;
        take.audio = m_setup.audio;
        take.reverse = m_setup.reverse;
        m_takes[channel] = std::make_unique<ChannelTake>(channel, take);
    }

    void Play() {
        const Agent agent(m_options.login);
        Playback play(agent.Handle(), m_setup);
        Progress progress;
        m_began = m_last = steady_clock::now();
        play.Speed(m_speed);
        while (!Done()) {
            while (m_next < m_steps.size() && Seconds(m_began) >= m_steps[m_next].at) {
                Do(m_steps[m_next++], &play);
            }
            if (const auto played = play.Next(POLL)) {
                Take(*played);
            }
            if (progress.Due()) {
                progress.Show(ProgressText(play.CurrentTime()));
            }
        }
        m_seconds = Seconds(m_began);
        m_play_time = play.CurrentTime();
    }

    static double Seconds(steady_clock::time_point since) {
        return std::chrono::duration<double>(steady_clock::now() - since).count();
    }

    void Take(const Played& played) {
        const auto found = m_takes.find(played.channel);
        m_last = steady_clock::now();
        if (found == m_takes.end() || m_full) {
            return;
        }
        if (played.End()) {
            found->second->End();
            return;
        }
        const Frame frame = played.View();
        if (Within(frame)) {
            found->second->Take(frame, m_speed);
        }
        m_full = m_options.frames > 0 && Pictures() >= m_options.frames;
    }

    /** What the library gives beyond the range (see RangeStart), and sound that the reader playback cannot leave out.
     */
    bool Within(const Frame& frame) const {
        const bool sound_unwanted = frame.IsAudio() && !m_setup.audio;
        return !sound_unwanted && frame.Time() >= m_setup.range.from * INT64_C(1000000) &&
               frame.Time() <= m_setup.range.to * INT64_C(1000000);
    }

    void Do(const PlayStep& step, Playback* play) {
        const auto channel = static_cast<unsigned>(step.value);
        switch (step.kind) {
            case StepKind::Speed:
                m_speed = static_cast<int>(step.value);
                return play->Speed(m_speed);
            case StepKind::Pause:
            case StepKind::Resume:
                m_paused = step.kind == StepKind::Pause;
                m_last = steady_clock::now();
                return play->Pause(m_paused);
            case StepKind::Seek:
                return Seek(step.value, play);
            case StepKind::Audio:
                return play->Audio(step.value != 0);
            case StepKind::Add:
                return Add(channel, play);
            case StepKind::Drop:
                return Drop(channel, play);
            case StepKind::Main:
            case StepKind::Sub:
                return SetStream(channel, step.kind == StepKind::Main ? HOSTMGR_STREAM_MAIN : HOSTMGR_STREAM_SUB, play);
            case StepKind::Stop:
                m_told_to_stop = true;
        }
    }

    void Seek(time_t target, Playback* play) {
        play->Seek(target);
        for (auto& [channel, take] : m_takes) {
            take->Break();
        }
    }

    void Add(unsigned channel, Playback* play) {
        if (m_takes.count(channel) != 0) {
            throw Failure(ExitCode::Usage, "channel " + std::to_string(channel) + " plays already: add another one");
        }
        AddTake(channel);
        play->AddChannel(channel);
        play->SetStream(channel, m_setup.stream);
    }

    void Drop(unsigned channel, Playback* play) {
        play->DropChannel(channel);
        const auto found = m_takes.find(channel);
        if (found != m_takes.end()) {
            found->second->End();  // the library does not tell the end of a channel that is taken out
        }
    }

    void SetStream(unsigned channel, unsigned stream, Playback* play) {
        play->SetStream(channel, stream);
        const auto found = m_takes.find(channel);
        if (found != m_takes.end()) {
            found->second->SetStream(stream);
        }
    }

    bool Done() {
        m_stopped = StopRequested();
        m_silent = !m_paused && Seconds(m_last) >= m_options.timeout * std::max(1, -m_speed);
        return m_stopped || m_silent || m_told_to_stop || m_full || AllEnded();
    }

    /** A channel that has ended may be sought back to life in a reader playback; steps to come are waited for. */
    bool AllEnded() const {
        const bool ended =
            std::all_of(m_takes.begin(), m_takes.end(), [](const auto& it) { return it.second->Ended(); });
        return ended && (m_setup.way == PlayWay::Callback || m_next == m_steps.size());
    }

    uint64_t Pictures() const {
        uint64_t sum = 0;
        for (const auto& [channel, take] : m_takes) {
            sum += take->Video().frames;
        }
        return sum;
    }

    std::string ProgressText(time_t play_time) const {
        const std::string at = play_time < 0 ? "waiting" : TimeText(play_time);
        return at + (m_paused ? ", paused" : "") + ", speed " + std::to_string(m_speed) + ": " +
               std::to_string(Pictures()) + " pictures";
    }

    std::string WhySilent() const {
        char text[160];
        snprintf(text, sizeof(text), "no frame came for %g seconds, and not every channel has ended: is it recorded?",
                 m_options.timeout * std::max(1, -m_speed));
        return text;
    }

    void PrintText() const {
        FILE* out = console::Data();
        for (const auto& [channel, take] : m_takes) {
            take->Print(out);
        }
        fprintf(out, "played for %s", LengthText(m_seconds).c_str());
        if (m_play_time >= 0) {
            fprintf(out, "; the play time was %s at the end", TimeText(m_play_time).c_str());
        }
        fprintf(out, "\n%s", m_stopped ? "ended on request, before its time\n" : "");
    }

    void PrintJson() const {
        nlohmann::ordered_json json = {{"from", TimeJson(m_setup.range.from)},
                                       {"to", TimeJson(m_setup.range.to)},
                                       {"way", m_options.reader ? "reader" : "callback"},
                                       {"reverse", m_options.reverse},
                                       {"speed", m_speed},
                                       {"seconds", std::round(m_seconds * 100) / 100},
                                       {"play_time", nullptr},
                                       {"stopped", m_stopped},
                                       {"channels", nlohmann::ordered_json::array()}};
        if (m_play_time >= 0) {
            json["play_time"] = TimeJson(m_play_time);
        }
        for (const auto& [channel, take] : m_takes) {
            json["channels"].push_back(take->Json());
        }
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    const PlaySetup m_setup;
    const std::vector<PlayStep> m_steps;
    size_t m_next = 0;  ///< step to come
    int m_speed;
    std::map<unsigned, std::unique_ptr<ChannelTake>> m_takes;
    steady_clock::time_point m_began;
    steady_clock::time_point m_last;  ///< when something came
    double m_seconds = 0;
    time_t m_play_time = -1;
    bool m_paused = false;
    bool m_full = false;
    bool m_silent = false;
    bool m_stopped = false;
    bool m_told_to_stop = false;
};

void AddPlayOptions(CLI::App& app, Options* options) {
    AddStreamOption(app, &options->stream);
    app.add_option("-x,--speed", options->speed,
                   "2: twice as fast, -2: half as fast; up to 32;\nfrom 5 on key frames alone")
        ->type_name("N")
        ->check(CLI::Range(HOSTMGR_PLAY_SPEED_MIN, HOSTMGR_PLAY_SPEED_MAX).description(""))
        ->capture_default_str();
    app.add_flag("-r,--reverse", options->reverse, "backwards");
    app.add_flag("--reader", options->reader,
                 "the recorder's own reader plays all channels, and\npaces them; it knows no speed");
    app.add_flag("--no-audio", options->no_audio, "video only, as at any speed but 1");
    app.add_option("--then", options->steps,
                   "what to do meanwhile, SECONDS:" + std::string(STEP_FORMS) + ";\nmay be repeated")
        ->type_name("STEP")
        ->allow_extra_args(false);
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddRangeOptions(app, &options->range);
    AddPlayOptions(app, options.get());
    app.add_option("-n,--frames", options->frames, "stop after so many pictures")
        ->type_name("N")
        ->check(CLI::Range(1UL, MOST_FRAMES).description(""));
    app.add_option("-o,--output", options->output,
                   "file to write, as played: .mkv (best), .mov, .mp4,\n.h264; of several channels gate-channelN.mkv")
        ->type_name("FILE");
    AddTimeoutOption(app, &options->timeout, "give up after so many seconds without a frame");
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return PlayRun(*options).Run(); };
}

}  // namespace

const Topic PLAY_TOPIC = {
    "play",
    "Plays recordings: speed, direction, seek, channels.",
    "  init, LoginV2, StartHistoryPlay, SetHistoryStreamCallback,\n"
    "  StartHistoryPlayV2 (--reader), Control 20 (--speed, --reverse, --no-audio,\n"
    "  --stream and --then: speed 1, pause 2, seek 3, audio 5, time 6,\n"
    "  direction 7, add 8, drop 9, stream 10), StopHistoryPlay, Logout\n",
    "  hostmgrctl play --from -1h                  channel 1, the last hour\n"
    "  hostmgrctl play -c 1-4 --from 08:00 --to +30s -o gate.mkv\n"
    "                                              four channels in step\n"
    "  hostmgrctl play --from -2h --speed 8 --reverse -o back.mp4\n"
    "  hostmgrctl play --from -1h --then 3:pause --then 5:resume \\\n"
    "      --then 8:seek=-10m --then 10:speed=4 --then 20:stop --json\n",
    Add,
};

}  // namespace hostmgrctl
