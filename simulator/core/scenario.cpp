#include "core/scenario.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "core/factory.h"
#include "core/json_section.h"
#include "core/operations.h"
#include "core/scenario_capability.h"
#include "core/scenario_device.h"
#include "core/scenario_network.h"
#include "core/scenario_recordings.h"
#include "core/scenario_users.h"

namespace simulator {
namespace {

constexpr unsigned MAX_CHANNELS = 256;
constexpr unsigned USUAL_CHANNELS = 4;
constexpr size_t MAX_FAULTS = 1000;
constexpr size_t MAX_EVENTS = 1000;
constexpr unsigned USUAL_INPUTS = 4;
constexpr size_t NAME_BYTES = 63;  ///< what the platform's name fields hold
constexpr size_t PATH_BYTES = 4095;
constexpr size_t ADDRESS_BYTES = 127;  ///< what the platform's field holds
constexpr unsigned MOST = 0xFFFFFFFF;

constexpr Bounds CHANNELS = {1, MAX_CHANNELS, "channels"};
constexpr Bounds SIZE = {64, 4096, "pixels"};
constexpr Bounds FPS = {1, 60, "frames a second"};
constexpr Bounds GOP = {1, 300, "frames from key frame to key frame"};
constexpr Bounds KBPS = {16, 50000, "kbit/s"};
constexpr Bounds QUALITY = {1, 6, "1 poor to 6 best"};
constexpr Bounds AUDIO_HZ = {0, 3900, "Hz, 0 for silence"};
constexpr Bounds FRAMES_KEPT = {25, 2000, "frames"};

constexpr VideoSettings USUAL_MAIN = {1280, 720, 25, 25, 2000};
constexpr VideoSettings USUAL_SUB = {352, 288, 12, 12, 256};
constexpr double USUAL_AUDIO_LEVEL = 0.3;

/** A pitch of its own for every channel, below half of the sound's 8000 samples a second. */
unsigned UsualPitch(size_t index) {
    return 440 + 13 * static_cast<unsigned>(index);
}

VideoSettings ReadVideo(JsonSection section, const VideoSettings& usual) {
    VideoSettings video;
    video.width = section.Even("width", usual.width, SIZE);
    video.height = section.Even("height", usual.height, SIZE);
    video.fps = section.Whole("fps", usual.fps, FPS);
    video.gop = section.Whole("gop", usual.gop, GOP);
    video.kbps = section.Whole("kbps", usual.kbps, KBPS);
    video.constant = section.Truth("constant", usual.constant);
    video.quality = section.Whole("quality", usual.quality, QUALITY);
    section.RefuseOtherKeys();
    return video;
}

void ReadAudio(JsonSection section, size_t index, CameraSettings& camera) {
    camera.audio_hz = section.Whole("hz", UsualPitch(index), AUDIO_HZ);
    camera.audio_level = section.Real("level", USUAL_AUDIO_LEVEL, 0, 1);
    section.RefuseOtherKeys();
}

CameraSettings ReadCamera(JsonSection section, size_t index) {
    CameraSettings camera;
    camera.name = section.Text("name", "Camera " + std::to_string(index + 1), 1, NAME_BYTES);
    camera.address = section.Text("address", "192.0.2." + std::to_string(101 + index % 128), 1, ADDRESS_BYTES);
    camera.source = section.Text("source", "scene", 1, PATH_BYTES);
    camera.main = ReadVideo(section.Object("main"), USUAL_MAIN);
    camera.sub = ReadVideo(section.Object("sub"), USUAL_SUB);
    ReadAudio(section.Object("audio"), index, camera);
    camera.signal = section.Truth("signal", true);
    section.RefuseOtherKeys();
    return camera;
}

/** "channels" says how many there are; cameras that are not described take the defaults. */
std::vector<CameraSettings> ReadCameras(JsonSection& root) {
    std::vector<CameraSettings> cameras;
    for (const JsonSection& section : root.Objects("cameras", 1, MAX_CHANNELS)) {
        cameras.push_back(ReadCamera(section, cameras.size()));
    }
    const unsigned usual = cameras.empty() ? USUAL_CHANNELS : static_cast<unsigned>(cameras.size());
    const unsigned channels = root.Whole("channels", usual, CHANNELS);
    if (channels < cameras.size()) {
        root.Refuse("channels", std::to_string(channels) + " is less than the " + std::to_string(cameras.size()) +
                                    " cameras described, raise it or leave it out");
    }
    const nlohmann::json nothing = nlohmann::json::object();
    while (cameras.size() < channels) {
        cameras.push_back(ReadCamera(JsonSection(nothing, "cameras"), cameras.size()));
    }
    return cameras;
}

FaultSettings ReadFault(JsonSection section) {
    FaultSettings fault;
    fault.operation = section.RequiredText("operation", 1, NAME_BYTES);
    const std::string why = WhyNoOperation(fault.operation);
    if (!why.empty()) {
        section.Refuse("operation", why);
    }
    fault.nth = section.Whole("nth", 1, {1, MOST, "uses"});
    fault.times = section.Whole("times", 1, {1, MOST, "uses"});
    section.RefuseOtherKeys();
    return fault;
}

std::vector<FaultSettings> ReadFaults(JsonSection& root) {
    std::vector<FaultSettings> faults;
    for (const JsonSection& section : root.Objects("faults", 0, MAX_FAULTS)) {
        faults.push_back(ReadFault(section));
    }
    return faults;
}

/** Whether the calendar has that day, from 1970 on; timegm moves one that it has not. */
bool IsDay(int year, int month, int day) {
    struct tm time = {};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    timegm(&time);
    return year >= 1970 && time.tm_mon == month - 1 && time.tm_mday == day;
}

std::string ReadBuildDate(JsonSection& root) {
    std::string date = root.Text("build_date", "2024-7-5", 8, 10);
    char year[5] = "";
    char month[3] = "";
    char day[3] = "";
    int length = 0;
    sscanf(date.c_str(), "%4[0-9]-%2[0-9]-%2[0-9]%n", year, month, day, &length);
    if (length != static_cast<int>(date.size()) || !IsDay(atoi(year), atoi(month), atoi(day))) {
        root.Refuse("build_date", "\"" + date + "\" does not do, give year-month-day, such as \"2024-7-5\"");
    }
    return date;
}

/** A list that holds less than one group of pictures may hold no key frame, and nobody could start reading it. */
void CheckFramesKept(const Scenario& scenario, const JsonSection& root) {
    unsigned longest = 0;
    for (const CameraSettings& camera : scenario.cameras) {
        longest = std::max({longest, camera.main.gop, camera.sub.gop});
    }
    longest = std::max(longest, scenario.zero_channel.gop);
    if (scenario.frames_kept < longest) {
        root.Refuse("frames_kept", std::to_string(scenario.frames_kept) + " is less than the longest gop, " +
                                       std::to_string(longest) + ": a live list must hold a key frame, raise it");
    }
}

}  // namespace

Scenario ParseScenario(const std::string& json) {
    const nlohmann::json document = ReadJson(json);
    JsonSection root(document, "");
    Scenario scenario;
    scenario.name = root.Text("name", "unnamed", 1, NAME_BYTES);
    scenario.model = root.Text("model", scenario.model, 1, NAME_BYTES);
    scenario.version = ReadVersion(root, "version");
    scenario.build_date = ReadBuildDate(root);
    scenario.seed = root.Whole("seed", 1, {0, MOST, "any number"});
    scenario.frames_kept = root.Whole("frames_kept", 100, FRAMES_KEPT);
    scenario.cameras = ReadCameras(root);
    scenario.users = ReadUsers(root, scenario.cameras.size());
    scenario.faults = ReadFaults(root);
    scenario.alarm_inputs = root.Whole("alarm_inputs", USUAL_INPUTS, {0, 64, "alarm inputs"});
    scenario.events = ReadEvents(root.Objects("events", 0, MAX_EVENTS), scenario);
    scenario.talk = ReadTalk(root.Object("talk"));
    scenario.zero_channel = ReadZeroChannel(root.Object("zero_channel"));
    CheckFramesKept(scenario, root);
    scenario.reboot_seconds = root.Whole("reboot_seconds", 5, {0, 600, "seconds"});
    scenario.network = ReadNetwork(root.Object("network"));
    scenario.platform_links = ReadPlatformLinks(root.Objects("platform_links", 0, 32));
    scenario.disks = ReadDisks(root);
    scenario.capability = ReadCapability(root.Object("capability"), scenario);
    scenario.factory = ReadFactory(root.Objects("factory", 0, MOST_FACTORY_ITEMS));
    scenario.recordings = ReadRecordings(root.Object("recordings"));
    root.RefuseOtherKeys();
    return scenario;
}

}  // namespace simulator
