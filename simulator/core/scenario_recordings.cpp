#include "core/scenario_recordings.h"

#include <cstdio>
#include <ctime>

namespace simulator {
namespace {

constexpr Bounds MEGABYTES = {1, 10000000, "megabytes"};
constexpr Bounds FILE_SECONDS = {1, 3600, "seconds"};
constexpr Bounds HOURS = {1, 8760, "hours"};
constexpr Bounds SEGMENTS = {0, 1000, "recordings a channel"};
constexpr Bounds SECONDS = {1, 86400, "seconds"};
constexpr Bounds FPS = {1, 60, "frames a second"};
constexpr Bounds GOP = {1, 300, "frames from key frame to key frame"};
constexpr Bounds WIDTH = {64, 4096, "pixels"};
constexpr Bounds LISTED = {0, 1000000, "recordings a channel"};
constexpr DiskSettings USUAL_DISK = {1000};
constexpr size_t UNTIL_BYTES = 19;

LiveRecording ReadLive(JsonSection& section) {
    const std::string live = section.Text("live", "watched", 1, 16);
    if (live == "off") {
        return LiveRecording::Off;
    }
    if (live != "watched" && live != "always") {
        section.Refuse("live", "\"" + live + "\" does not do, give \"off\", \"watched\" or \"always\"");
    }
    return live == "always" ? LiveRecording::Always : LiveRecording::Watched;
}

/** Whether the text is a local time that the calendar and the clock have. */
bool IsLocalTime(const std::string& text) {
    struct tm time = {};
    const char* end = strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &time);
    if (end == nullptr || *end != '\0') {
        return false;
    }
    const int day = time.tm_mday;
    time.tm_isdst = -1;
    return mktime(&time) > 0 && time.tm_mday == day;
}

std::string ReadUntil(JsonSection& section) {
    std::string until = section.Text("until", "", 0, UNTIL_BYTES);
    if (!until.empty() && !IsLocalTime(until)) {
        section.Refuse("until", "\"" + until + "\" is no local time, give one such as \"2024-07-05 12:00:00\"");
    }
    return until;
}

HistorySettings ReadHistory(JsonSection section) {
    HistorySettings history;
    history.hours = section.Whole("hours", 12, HOURS);
    history.segments = section.Whole("segments", 12, SEGMENTS);
    history.seconds = section.Whole("seconds", 30, SECONDS);
    history.fps = section.Whole("fps", 2, FPS);
    history.gop = section.Whole("gop", 4, GOP);
    history.width = section.Even("width", 640, WIDTH);
    history.until = ReadUntil(section);
    history.listed = section.Whole("listed", 0, LISTED);
    if (uint64_t{history.segments} * history.seconds > history.hours * 3600ULL) {
        section.Refuse("seconds", std::to_string(history.segments) + " recordings of " +
                                      std::to_string(history.seconds) + " seconds do not fit into " +
                                      std::to_string(history.hours) + " hours, lower one or raise hours");
    }
    section.RefuseOtherKeys();
    return history;
}

DiskSettings ReadDisk(JsonSection section) {
    const DiskSettings disk = {section.Whole("megabytes", USUAL_DISK.megabytes, MEGABYTES)};
    section.RefuseOtherKeys();
    return disk;
}

}  // namespace

std::vector<DiskSettings> ReadDisks(const std::vector<JsonSection>& sections) {
    std::vector<DiskSettings> disks;
    disks.reserve(sections.size());
    for (const JsonSection& section : sections) {
        disks.push_back(ReadDisk(section));
    }
    return disks.empty() ? std::vector<DiskSettings>{USUAL_DISK} : disks;
}

RecordingSettings ReadRecordings(JsonSection section) {
    RecordingSettings recordings;
    recordings.live = ReadLive(section);
    recordings.file_seconds = section.Whole("file_seconds", 300, FILE_SECONDS);
    recordings.history = ReadHistory(section.Object("history"));
    section.RefuseOtherKeys();
    return recordings;
}

}  // namespace simulator
