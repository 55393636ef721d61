#include "capture_options.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "channel_list.h"
#include "common_options.h"
#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr double LONGEST = 1e9;            // seconds
constexpr unsigned LONGEST_SPAN = 604800;  // seconds around an alarm: a week
constexpr unsigned long MOST_PICTURES = 1000000000;
constexpr unsigned MILLISECONDS = 1000;

const std::vector<AlarmKind>& AlarmKinds() {
    static const std::vector<AlarmKind> kinds = {
        {"motion", {HOSTMGR_ALARM_MOTION}, true},
        {"shelter", {HOSTMGR_ALARM_SHELTER}, true},
        {"video-loss", {HOSTMGR_ALARM_VIDEO_LOSS}, true},
        {"input", {HOSTMGR_ALARM_INPUT}, false},
        {"disk", {HOSTMGR_ALARM_DISK_FULL, HOSTMGR_ALARM_DISK_ERROR}, false},
        {"network", {HOSTMGR_ALARM_NET_DISCONNECTED, HOSTMGR_ALARM_NET_CONFLICT}, false},
    };
    return kinds;
}

std::vector<const AlarmKind*> ParseAlarmKinds(const std::string& list) {
    std::vector<const AlarmKind*> kinds;
    std::istringstream stream(list);
    for (std::string name; std::getline(stream, name, ',');) {
        const auto found = std::find_if(AlarmKinds().begin(), AlarmKinds().end(),
                                        [&](const AlarmKind& kind) { return name == kind.name; });
        if (found == AlarmKinds().end()) {
            throw Failure(ExitCode::Usage, "\"" + name + "\" is no kind of alarm: give some of motion, shelter, " +
                                               "video-loss, input, disk, network, such as motion,input");
        }
        kinds.push_back(&*found);
    }
    if (kinds.empty()) {
        throw Failure(ExitCode::Usage, "--on names no kind of alarm: give some, such as motion,input");
    }
    return kinds;
}

/** hour << 16 | minute << 8 | second, of "12:30" or "12:30:15". */
unsigned ParseTimeOfDay(const std::string& text) {
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    int length = 0;
    const bool digits = text.find_first_not_of("0123456789:") == std::string::npos;
    const bool whole = (sscanf(text.c_str(), "%2u:%2u:%2u%n", &hour, &minute, &second, &length) == 3 ||
                        sscanf(text.c_str(), "%2u:%2u%n", &hour, &minute, &length) == 2) &&
                       static_cast<size_t>(length) == text.size();
    if (!digits || !whole || hour > 23 || minute > 59 || second > 59) {
        throw Failure(ExitCode::Usage,
                      "\"" + text + "\" is no time of day: write it as 12:30 or 12:30:15, in the recorder's time");
    }
    return hour << 16U | minute << 8U | second;
}

void Refuse(bool wrong, const char* why) {
    if (wrong) {
        throw Failure(ExitCode::Usage, why);
    }
}

}  // namespace

void AddCaptureOptions(CLI::App& app, CaptureOptions* options) {
    app.add_option("-c,--channel", options->channels, "channels: 2, 1,3 or 1-4")
        ->type_name("LIST")
        ->capture_default_str();
    AddStreamOption(app, &options->stream, "main or sub: only reported back");
    app.add_flag("--second", options->second, "a picture each second; so without any of these");
    app.add_option("--daily", options->daily, "a picture each second from 4 seconds before\nto 4 seconds after a time")
        ->type_name("HH:MM[:SS]");
    app.add_flag("--alarm", options->alarm, "pictures around each alarm of a channel");
    app.add_option("--before", options->before, "seconds before an alarm")
        ->type_name("N")
        ->check(CLI::Range(0U, LONGEST_SPAN).description(""))
        ->capture_default_str();
    app.add_option("--after", options->after, "seconds after its begin")
        ->type_name("N")
        ->check(CLI::Range(0U, LONGEST_SPAN).description(""))
        ->capture_default_str();
    app.add_option("--interval", options->interval, "seconds from picture to picture around an alarm")
        ->type_name("N")
        ->check(CLI::Range(1U, LONGEST_SPAN).description(""))
        ->capture_default_str();
    app.add_option("--on", options->on,
                   "which alarms: motion, shelter, video-loss (of\nthe channel), input, disk, network (any)")
        ->type_name("LIST")
        ->capture_default_str();
    app.add_option("--trigger", options->triggers,
                   "as if an alarm began, so many seconds after the\nbegin; may be repeated")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""))
        ->allow_extra_args(false);
    app.add_option("-s,--seconds", options->seconds, "how long; 0: until Ctrl-C")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""))
        ->capture_default_str();
    app.add_option("-n,--pictures", options->pictures, "end after so many pictures")
        ->type_name("N")
        ->check(CLI::Range(1UL, MOST_PICTURES).description(""));
    app.add_option("-k,--keep", options->keep, "copy the pictures to this folder")->type_name("FOLDER");
    app.add_flag("--json", options->json, "print one JSON object a line");
}

CaptureSetup Resolve(const CaptureOptions& options) {
    CaptureSetup setup;
    setup.channels = ParseChannels(options.channels);
    setup.stream = StreamNumber(options.stream);
    setup.alarms = ParseAlarmKinds(options.on);
    setup.on_alarm = options.alarm;
    Refuse(!options.alarm && !options.triggers.empty(), "--trigger is for --alarm: give it, too");
    if (options.second || (options.daily.empty() && !options.alarm)) {
        setup.tasks.push_back({HOSTMGR_CAPTURE_SECOND, 0, 0, 0, 0, {}});
    }
    if (!options.daily.empty()) {
        setup.tasks.push_back({HOSTMGR_CAPTURE_DAILY, 0, 0, 0, ParseTimeOfDay(options.daily), {}});
    }
    if (options.alarm) {
        setup.tasks.push_back(
            {HOSTMGR_CAPTURE_ALARM, options.before, options.interval * MILLISECONDS, options.after, 0, {}});
    }
    Refuse(setup.tasks.size() * setup.channels.size() > HOSTMGR_MAX_CAPTURE_TASKS,
           "that is more than 576 tasks, one for each channel and kind: name fewer of them");
    return setup;
}

const AlarmKind* KindOfAlarm(const CaptureSetup& setup, unsigned type) {
    for (const AlarmKind* kind : setup.alarms) {
        if (std::find(kind->types.begin(), kind->types.end(), type) != kind->types.end()) {
            return kind;
        }
    }
    return nullptr;
}

}  // namespace hostmgrctl
