#include "live_run.h"

#include <sys/time.h>

#include <thread>

#include "common_options.h"
#include "console.h"
#include "exit_code.h"
#include "progress.h"
#include "stop.h"

namespace hostmgrctl {
namespace {

constexpr std::chrono::milliseconds POLL{5};
constexpr double LONGEST = 1e6;         // seconds
constexpr double HALF_A_TICK = 0.0005;  // time stamps in files are rounded to milliseconds
constexpr unsigned long MOST_FRAMES = 1000000000;

/** Microseconds since 1970, by the clock that the frames are stamped with. */
int64_t WallClock() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now.tv_sec * INT64_C(1000000) + now.tv_usec;
}

double SecondsSince(LiveRun::Clock::time_point moment) {
    return std::chrono::duration<double>(LiveRun::Clock::now() - moment).count();
}

}  // namespace

void AddLiveOptions(CLI::App& app, LiveOptions* options, const char* containers) {
    app.add_option("-s,--seconds", options->seconds, "length by the pictures' times; 0: until Ctrl-C")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""))
        ->capture_default_str();
    app.add_option("-n,--frames", options->frames, "number of pictures, instead of --seconds")
        ->type_name("N")
        ->check(CLI::Range(1UL, MOST_FRAMES).description(""));
    app.add_option("-o,--output", options->output, std::string("file to write: ") + containers)->type_name("FILE");
    AddTimeoutOption(app, &options->timeout, "give up after so many seconds without a picture");
    app.add_flag("--json", options->json, "print one JSON object");
}

LiveRun::LiveRun(const LiveOptions& options, std::string what, bool audio)
    : m_options(options), m_what(std::move(what)), m_audio(audio), m_last_picture(Clock::now()) {
    if (!options.output.empty()) {
        m_file = std::make_unique<MediaFile>(options.output, audio);
    }
}

void LiveRun::Read(const Reader& next, const Meanwhile& meanwhile) {
    Progress progress;
    m_last_picture = Clock::now();
    while (!Done()) {
        Frame frame;
        if (next(&frame)) {
            Take(frame);
        } else {
            std::this_thread::sleep_for(POLL);
        }
        if (meanwhile && m_count.Video().frames > 0) {
            meanwhile(SecondsSince(m_first_picture));
        }
        if (progress.Due()) {
            progress.Show(m_what + ": " + std::to_string(m_count.Video().frames) + " pictures, " +
                          Amount(m_count.Video().bytes + m_count.Audio().bytes));
        }
    }
}

ExitCode LiveRun::Finish(const std::string& head, nlohmann::ordered_json members, const std::string& hint) {
    if (m_file != nullptr) {
        m_file->Finish();
    }
    m_options.json ? PrintJson(std::move(members)) : PrintText(head);
    if (m_silent) {
        throw Failure(ExitCode::NoData, WhyNoData(hint));
    }
    if (m_count.Video().frames == 0) {
        throw Failure(ExitCode::NoData, "stopped before the first picture came");
    }
    if (m_file != nullptr && m_file->Size() == 0) {
        throw Failure(ExitCode::NoData, "no key frame came, so " + m_file->Path() + " was not written: read longer");
    }
    return ExitCode::Ok;
}

void LiveRun::Take(const Frame& frame) {
    if (PastTheEnd(frame)) {
        m_full = m_full || !frame.IsAudio();
        return;
    }
    m_count.Add(frame, WallClock());
    if (!frame.IsAudio()) {
        m_last_picture = Clock::now();
        m_first_picture = m_count.Video().frames == 1 ? m_last_picture : m_first_picture;
    }
    if (m_file != nullptr) {
        m_file->Write(frame);
    }
    m_full = m_options.frames > 0 && m_count.Video().frames >= m_options.frames;
}

bool LiveRun::Done() {
    m_silent = SecondsSince(m_last_picture) >= m_options.timeout;
    m_stopped = StopRequested();
    return m_full || m_silent || m_stopped || Overdue();
}

bool LiveRun::HasLength() const {
    return m_options.frames == 0 && m_options.seconds > 0 && m_count.Video().frames > 0;
}

// By the pictures' own times: ten seconds of a file are ten seconds of the camera.
bool LiveRun::PastTheEnd(const Frame& frame) const {
    const double at = static_cast<double>(frame.Time() - m_count.Video().first_time) / 1e6;
    return HasLength() && at >= m_options.seconds - HALF_A_TICK;
}

// By the clock on the wall: a recorder whose own clock is set back is not read for hours.
bool LiveRun::Overdue() const {
    return HasLength() && SecondsSince(m_first_picture) > m_options.seconds + m_options.timeout;
}

std::string LiveRun::WhyNoData(const std::string& hint) const {
    char seconds[32];
    snprintf(seconds, sizeof(seconds), "%g", m_options.timeout);
    return m_what + " gave no " + (m_count.Video().frames > 0 ? "further " : "") + "picture for " + seconds +
           " seconds: " + hint;
}

void LiveRun::PrintText(const std::string& head) const {
    FILE* out = console::Data();
    if (m_count.Video().frames + m_count.Audio().frames > 0) {
        fprintf(out, "%s\n", head.c_str());
        m_count.Print(out, m_audio);
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

void LiveRun::PrintJson(nlohmann::ordered_json json) const {
    m_count.AddJson(&json);
    json["stopped"] = m_stopped;
    json["file"] = nullptr;
    if (m_file != nullptr && m_file->Size() > 0) {
        json["file"] = m_file->Json();
    }
    fprintf(console::Data(), "%s\n", json.dump(2).c_str());
}

}  // namespace hostmgrctl
