#include "core/scenario_device.h"

#include <stdexcept>

namespace simulator {
namespace {

constexpr size_t KIND_BYTES = 32;
constexpr size_t PATH_BYTES = 4095;
constexpr double LONGEST = 1e9;  ///< seconds
constexpr double USUAL_TURN = 10;
constexpr unsigned USUAL_TALK_FRAME = 320;
constexpr Bounds WIDTH = {640, 4096, "pixels"};
constexpr Bounds HEIGHT = {360, 4096, "pixels"};
constexpr Bounds FPS = {1, 60, "frames a second"};
constexpr Bounds GOP = {1, 300, "frames from key frame to key frame"};
constexpr Bounds KBPS = {16, 50000, "kbit/s"};
constexpr Bounds QUALITY = {1, 6, "1 poor to 6 best"};
constexpr VideoSettings USUAL_ZERO_CHANNEL = {1280, 720, 12, 24, 2000};

const EventTraits& ReadKind(JsonSection& section) {
    const std::string name = section.RequiredText("kind", 1, KIND_BYTES);
    try {
        return FindEventKind(name);
    } catch (const std::invalid_argument& error) {
        section.Refuse("kind", error.what());
    }
}

/** The number stands under the name of what it counts: "channel", "disk" or "input". */
unsigned ReadNumber(JsonSection& section, const EventTraits& traits, const Scenario& scenario) {
    const std::string subject = traits.subject;
    if (subject.empty()) {
        return 0;
    }
    const unsigned most = subject == "channel" ? static_cast<unsigned>(scenario.cameras.size())
                          : subject == "input" ? scenario.alarm_inputs
                                               : MOST_DISKS;
    if (most == 0) {
        section.Refuse("kind", "the recorder has no " + subject + ": raise alarm_inputs or leave the event out");
    }
    return section.Whole(subject, 1, {1, most, traits.subject});
}

EventSettings ReadEvent(JsonSection section, const Scenario& scenario) {
    EventSettings event;
    const EventTraits& traits = ReadKind(section);
    event.kind = traits.kind;
    event.number = ReadNumber(section, traits, scenario);
    event.at = section.Real("at", 0, 0, LONGEST);
    event.lasts = section.Real("for", USUAL_TURN, 0, LONGEST);
    event.every = section.Real("every", 0, 0, LONGEST);
    section.RefuseOtherKeys();
    if (event.every > 0 && (event.lasts == 0 || event.lasts >= event.every)) {
        section.Refuse("every", "a turn would not be over before the next one: make \"for\" shorter, and not 0");
    }
    return event;
}

}  // namespace

std::vector<EventSettings> ReadEvents(const std::vector<JsonSection>& sections, const Scenario& scenario) {
    std::vector<EventSettings> events;
    events.reserve(sections.size());
    for (const JsonSection& section : sections) {
        events.push_back(ReadEvent(section, scenario));
    }
    return events;
}

TalkSettings ReadTalk(JsonSection section) {
    TalkSettings talk;
    talk.source = section.Text("source", "tone", 1, PATH_BYTES);
    talk.hz = section.Whole("hz", 1000, {0, 3900, "Hz, 0 for silence"});
    talk.level = section.Real("level", 0.3, 0, 1);
    talk.frames = section.Wholes("frames", {1, 8000, "bytes of sound"});
    if (talk.frames.empty()) {
        talk.frames = {USUAL_TALK_FRAME};
    }
    section.RefuseOtherKeys();
    return talk;
}

VideoSettings ReadZeroChannel(JsonSection section) {
    VideoSettings video;
    video.width = section.Even("width", USUAL_ZERO_CHANNEL.width, WIDTH);
    video.height = section.Even("height", USUAL_ZERO_CHANNEL.height, HEIGHT);
    video.fps = section.Whole("fps", USUAL_ZERO_CHANNEL.fps, FPS);
    video.gop = section.Whole("gop", USUAL_ZERO_CHANNEL.gop, GOP);
    video.kbps = section.Whole("kbps", USUAL_ZERO_CHANNEL.kbps, KBPS);
    video.constant = section.Truth("constant", USUAL_ZERO_CHANNEL.constant);
    video.quality = section.Whole("quality", USUAL_ZERO_CHANNEL.quality, QUALITY);
    section.RefuseOtherKeys();
    return video;
}

}  // namespace simulator
