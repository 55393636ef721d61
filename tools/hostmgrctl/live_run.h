// A run of live frames, of a channel or of the zero channel: reads for so long or so many, counts, writes a file, tells
// what came. Where the frames come from does not belong here.
#ifndef HOSTMGRCTL_LIVE_RUN_H
#define HOSTMGRCTL_LIVE_RUN_H

#include <CLI/CLI.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "exit_code.h"
#include "live_count.h"
#include "media_file.h"

namespace hostmgrctl {

/** How long, and where to. */
struct LiveOptions {
    double seconds = 10;
    unsigned long frames = 0;
    double timeout = 5;
    std::string output;
    bool json = false;
};

/** Adds the options of LiveOptions to a command; containers: the extensions, in a help text. */
void AddLiveOptions(CLI::App& app, LiveOptions* options, const char* containers);

class LiveRun {
public:
    using Clock = std::chrono::steady_clock;
    /** Gives the next frame, false when there is none at the moment. */
    using Reader = std::function<bool(Frame*)>;
    /** Does something meanwhile; gets the seconds since the first picture. */
    using Meanwhile = std::function<void(double)>;

    /** options must outlive the run. what: whose pictures, such as "channel 2". The file is looked at, not yet made. */
    LiveRun(const LiveOptions& options, std::string what, bool audio);

    /** Reads until enough has come, nothing comes any more, or the user wants an end. */
    void Read(const Reader& next, const Meanwhile& meanwhile = nullptr);

    /**
     * Completes the file and prints: head and figures, or members and figures as JSON. Throws Failure when there was
     * nothing, with the hint as a last word.
     */
    ExitCode Finish(const std::string& head, nlohmann::ordered_json members, const std::string& hint);

private:
    void Take(const Frame& frame);
    bool Done();
    bool HasLength() const;
    bool PastTheEnd(const Frame& frame) const;
    bool Overdue() const;
    std::string WhyNoData(const std::string& hint) const;
    void PrintText(const std::string& head) const;
    void PrintJson(nlohmann::ordered_json json) const;

    const LiveOptions& m_options;
    const std::string m_what;
    const bool m_audio;
    LiveCount m_count;
    std::unique_ptr<MediaFile> m_file;
    Clock::time_point m_first_picture;
    Clock::time_point m_last_picture;  ///< at first: when the waiting began
    bool m_full = false;
    bool m_silent = false;
    bool m_stopped = false;
};

}  // namespace hostmgrctl

#endif
