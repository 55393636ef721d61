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
constexpr unsigned USUAL_MEGABYTES = 2000;  ///< guests want 1024 for their pictures
constexpr size_t MOST_PARTITIONS = 16;
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

template <class Value>
struct Word {
    const char* name;
    Value value;
};

constexpr Word<DiskKind> KINDS[] = {{"local", DiskKind::Local},
                                    {"external", DiskKind::External},
                                    {"network", DiskKind::Network},
                                    {"array", DiskKind::Array}};
constexpr Word<DiskState> STATES[] = {
    {"normal", DiskState::Normal}, {"unformatted", DiskState::Unformatted}, {"broken", DiskState::Broken}};

/** One of the words; the first one when the key is absent. */
template <class Value, size_t N>
Value ReadWord(JsonSection& section, const char* key, const Word<Value> (&words)[N]) {
    const std::string text = section.Text(key, words[0].name, 1, 16);
    std::string names;
    for (const Word<Value>& word : words) {
        if (text == word.name) {
            return word.value;
        }
        names += std::string(names.empty() ? "" : ", ") + "\"" + word.name + "\"";
    }
    section.Refuse(key, "\"" + text + "\" does not do, give one of " + names);
}

void CheckPartitions(const DiskSettings& disk, const JsonSection& section) {
    uint64_t sum = 0;
    for (const unsigned megabytes : disk.partitions) {
        sum += megabytes;
    }
    if (disk.partitions.size() > MOST_PARTITIONS) {
        section.Refuse("partitions", std::to_string(disk.partitions.size()) + " partitions are more than the " +
                                         std::to_string(MOST_PARTITIONS) + " that a disk has, leave some out");
    }
    if (sum > disk.megabytes) {
        section.Refuse("partitions", "of " + std::to_string(sum) + " megabytes do not fit on a disk of " +
                                         std::to_string(disk.megabytes) + ", make them smaller");
    }
}

DiskSettings ReadDisk(JsonSection section) {
    DiskSettings disk;
    disk.megabytes = section.Whole("megabytes", USUAL_MEGABYTES, MEGABYTES);
    disk.kind = ReadWord(section, "kind", KINDS);
    disk.state = ReadWord(section, "state", STATES);
    disk.partitions = section.Wholes("partitions", MEGABYTES);
    CheckPartitions(disk, section);
    section.RefuseOtherKeys();
    return disk;
}

}  // namespace

std::vector<DiskSettings> ReadDisks(JsonSection& root) {
    std::vector<DiskSettings> disks;
    for (const JsonSection& section : root.Objects("disks", 0, MOST_DISKS)) {
        disks.push_back(ReadDisk(section));
    }
    if (!root.Has("disks")) {
        disks.resize(1);
        disks[0].megabytes = USUAL_MEGABYTES;
    }
    return disks;
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
