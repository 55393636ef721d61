// live: reads a channel's live video and audio, counts them, and writes them to a file.
#include <sys/time.h>

#include <chrono>
#include <memory>
#include <thread>

#include "agent.h"
#include "console.h"
#include "live_buffer.h"
#include "live_count.h"
#include "media_file.h"
#include "progress.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{5};
constexpr double LONGEST = 1e6;         // seconds
constexpr double HALF_A_TICK = 0.0005;  // time stamps in files are rounded to milliseconds
constexpr double SHORTEST_TIMEOUT = 0.001;
constexpr unsigned long MOST_FRAMES = 1000000000;

struct Options {
    LoginOptions login;
    unsigned channel = 1;
    std::string stream = "main";
    double seconds = 10;
    unsigned long frames = 0;
    double timeout = 5;
    std::string output;
    bool no_audio = false;
    bool json = false;

    unsigned Stream() const { return stream == "main" ? HOSTMGR_STREAM_MAIN : HOSTMGR_STREAM_SUB; }
};

/** Microseconds since 1970, by the clock that the frames are stamped with. */
int64_t WallClock() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now.tv_sec * INT64_C(1000000) + now.tv_usec;
}

double SecondsSince(steady_clock::time_point moment) {
    return std::chrono::duration<double>(steady_clock::now() - moment).count();
}

class LiveRun {
public:
    explicit LiveRun(const Options& options)
        : m_options(options), m_count(options.channel, options.Stream()), m_last_picture(steady_clock::now()) {
        if (!options.output.empty()) {
            m_file = std::make_unique<MediaFile>(options.output, !options.no_audio);
        }
    }

    ExitCode Run() {
        Read();
        if (m_file != nullptr) {
            m_file->Finish();
        }
        m_options.json ? PrintJson() : PrintText();
        if (m_silent) {
            throw Failure(ExitCode::NoData, WhyNoData());
        }
        if (m_count.Video().frames == 0) {
            throw Failure(ExitCode::NoData, "stopped before the first picture came");
        }
        if (m_file != nullptr && m_file->Size() == 0) {
            throw Failure(ExitCode::NoData,
                          "no key frame came, so " + m_file->Path() + " was not written: read longer");
        }
        return ExitCode::Ok;
    }

private:
    void Read() {
        const Agent agent(m_options.login);
        LiveBuffer buffer(agent.Handle(), m_options.channel, m_options.Stream(), !m_options.no_audio);
        Progress progress;
        m_last_picture = steady_clock::now();
        while (!Done()) {
            Frame frame;
            if (buffer.Read(&frame)) {
                Take(frame);
            } else {
                std::this_thread::sleep_for(POLL);
            }
            if (progress.Due()) {
                progress.Show("channel " + std::to_string(m_options.channel) + ": " +
                              std::to_string(m_count.Video().frames) + " pictures, " +
                              Amount(m_count.Video().bytes + m_count.Audio().bytes));
            }
        }
    }

    void Take(const Frame& frame) {
        if (PastTheEnd(frame)) {
            m_full = m_full || !frame.IsAudio();
            return;
        }
        m_count.Add(frame, WallClock());
        if (!frame.IsAudio()) {
            m_last_picture = steady_clock::now();
            m_first_picture = m_count.Video().frames == 1 ? m_last_picture : m_first_picture;
        }
        if (m_file != nullptr) {
            m_file->Write(frame);
        }
        m_full = m_options.frames > 0 && m_count.Video().frames >= m_options.frames;
    }

    bool Done() {
        m_silent = SecondsSince(m_last_picture) >= m_options.timeout;
        m_stopped = StopRequested();
        return m_full || m_silent || m_stopped || Overdue();
    }

    bool HasLength() const { return m_options.frames == 0 && m_options.seconds > 0 && m_count.Video().frames > 0; }

    /** By the pictures' own times: ten seconds of a file are ten seconds of the camera. */
    bool PastTheEnd(const Frame& frame) const {
        const double at = static_cast<double>(frame.Time() - m_count.Video().first_time) / 1e6;
        return HasLength() && at >= m_options.seconds - HALF_A_TICK;
    }

    /** By the clock on the wall: a recorder whose own clock is set back is not read for hours. */
    bool Overdue() const {
        return HasLength() && SecondsSince(m_first_picture) > m_options.seconds + m_options.timeout;
    }

    std::string WhyNoData() const {
        char text[200];
        snprintf(text, sizeof(text),
                 "channel %u gave no %spicture for %g seconds: does the recorder have that channel?", m_options.channel,
                 m_count.Video().frames > 0 ? "further " : "", m_options.timeout);
        return text;
    }

    void PrintText() const {
        FILE* out = console::Data();
        if (m_count.Video().frames + m_count.Audio().frames > 0) {
            m_count.Print(out);
        }
        if (m_file != nullptr && m_file->Size() > 0) {
            fprintf(out, "  file    %s, %s\n", m_file->Path().c_str(), Amount(m_file->Size()).c_str());
            if (!m_file->Note().empty()) {
                fprintf(out, "          %s\n", m_file->Note().c_str());
            }
        }
        if (m_stopped) {
            fprintf(out, "  ended   on request, before its time\n");
        }
    }

    void PrintJson() const {
        nlohmann::ordered_json json = m_count.Json();
        json["stopped"] = m_stopped;
        json["file"] = nullptr;
        if (m_file != nullptr && m_file->Size() > 0) {
            json["file"] = m_file->Json();
        }
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    LiveCount m_count;
    std::unique_ptr<MediaFile> m_file;
    steady_clock::time_point m_first_picture;
    steady_clock::time_point m_last_picture;  // at first: when the waiting began
    bool m_full = false;
    bool m_silent = false;
    bool m_stopped = false;
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("-c,--channel", options->channel, "channel, from 1")
        ->type_name("N")
        ->check(CLI::Range(1U, HOSTMGR_MAX_CHANNELS).description(""))
        ->capture_default_str();
    app.add_option("-S,--stream", options->stream, "main or sub")
        ->type_name("WHICH")
        ->check(CLI::IsMember({"main", "sub"}).description(""))
        ->capture_default_str();
    app.add_option("-s,--seconds", options->seconds, "length by the pictures' times; 0: until Ctrl-C")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""))
        ->capture_default_str();
    app.add_option("-n,--frames", options->frames, "number of pictures, instead of --seconds")
        ->type_name("N")
        ->check(CLI::Range(1UL, MOST_FRAMES).description(""));
    app.add_option("-o,--output", options->output,
                   "file to write: .mkv (best), .mov, .mp4 (sound\nbecomes AAC), .h264 (pictures only)")
        ->type_name("FILE");
    app.add_flag("--no-audio", options->no_audio, "video only");
    app.add_option("-t,--timeout", options->timeout, "give up after so many seconds without a picture")
        ->type_name("N")
        ->check(CLI::Range(SHORTEST_TIMEOUT, LONGEST).description(""))
        ->capture_default_str();
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return LiveRun(*options).Run(); };
}

}  // namespace

const Topic LIVE_TOPIC = {
    "live",
    "Reads live video and audio, counts, writes a file.",
    "  init, LoginV2, CreateRealStreamBuffer, RealStreamBufferEnableAudio,\n"
    "  ReadRealOneFrame, DestroyRealStreamBuffer, Logout\n",
    "  hostmgrctl live                             is channel 1 alive?\n"
    "  hostmgrctl live -c 2 -s 30 -o gate.mkv      half a minute to a file\n"
    "  hostmgrctl live -c 2 -S sub -n 100 --json   figures for a program\n"
    "  hostmgrctl live -s 0 -o long.mkv            until Ctrl-C\n",
    Add,
};

}  // namespace hostmgrctl
