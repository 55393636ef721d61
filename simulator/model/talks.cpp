// The platform's talks: who talks with whom, by handle.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>

#include "core/faults.h"
#include "core/kept.h"
#include "core/panel.h"
#include "core/power.h"
#include "core/scenario.h"
#include "core/watch.h"
#include "logins.h"
#include "talk.h"
#include "vexo_model.h"

namespace simulator {
namespace {

struct Line {
    Line(std::string target, std::unique_ptr<Microphone> microphone, std::string path, double now)
        : with(std::move(target)), talk(std::move(microphone), std::move(path), now) {}

    const std::string with;
    std::mutex lock;
    Talk talk;  // guarded by lock
};

/** How a talk may still be used after its stop: a call that the stop has overtaken is no misuse, a second one is. */
struct Overtaken {
    bool captured = false;
    bool played = false;
};
constexpr size_t STOPPED_KEPT = 256;

struct Talks {
    std::mutex lock;
    std::map<unsigned, std::shared_ptr<Line>> open;  // by handle; null: ended by the recorder, not given back since
    std::map<unsigned, Overtaken> stopped;           // by handle, the last ones
    unsigned last = 0;
};

Talks& TheTalks() {
    static Talks& talks = *new Talks;
    return talks;
}

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/** Such as talk/2026-11-21_10-21-57_recorder_4711-1.wav in the home folder. */
std::string PathFor(const std::string& with, unsigned handle) {
    const time_t now = time(nullptr);
    tm local = {};
    localtime_r(&now, &local);
    char moment[32];
    strftime(moment, sizeof moment, "%Y-%m-%d_%H-%M-%S", &local);
    std::string name = with;
    std::replace(name.begin(), name.end(), ' ', '-');
    return KeptFolder("talk") + "/" + moment + "_" + name + "_" + std::to_string(getpid()) + "-" +
           std::to_string(handle) + ".wav";
}

/** Whether a stop has just overtaken this use of a talk. Under the lock. */
bool WasOvertaken(Talks& talks, unsigned handle, bool Overtaken::*use) {
    const auto found = talks.stopped.find(handle);
    if (found == talks.stopped.end() || found->second.*use) {
        return false;
    }
    found->second.*use = true;
    return true;
}

/** The line of a handle; null when the recorder ended it or a stop has overtaken this use of it, and null, with a
 *  complaint, when it is not open. */
std::shared_ptr<Line> Find(unsigned handle, const char* operation, bool Overtaken::*use) {
    Talks& talks = TheTalks();
    std::lock_guard<std::mutex> hold(talks.lock);
    const auto found = talks.open.find(handle);
    if (found == talks.open.end()) {
        if (!WasOvertaken(talks, handle, use)) {
            Complain(std::string(operation) + " with talk " + std::to_string(handle) + ", which is not open");
        }
        return nullptr;
    }
    return found->second;
}

unsigned Open(const std::string& with, std::unique_ptr<Microphone> microphone) {
    Talks& talks = TheTalks();
    std::lock_guard<std::mutex> hold(talks.lock);
    do {
        talks.last = talks.last % 0x7FFFFFFF + 1;
    } while (talks.open.count(talks.last) != 0);
    talks.stopped.erase(talks.last);
    talks.open[talks.last] = std::make_shared<Line>(with, std::move(microphone), PathFor(with, talks.last), Now());
    Take(Goods::Talk, talks.last, std::to_string(talks.last) + " with " + with);
    return talks.last;
}

/** The recorder loses its power: what talks ends, and its handles wait to be given back. */
void EndAll() {
    Talks& talks = TheTalks();
    std::lock_guard<std::mutex> hold(talks.lock);
    for (auto& [handle, line] : talks.open) {
        if (line != nullptr) {
            GiveBack(Goods::Talk, handle, "the recorder");
            line.reset();
        }
    }
}

nlohmann::json Status() {
    nlohmann::json status = nlohmann::json::array();
    Talks& talks = TheTalks();
    std::lock_guard<std::mutex> hold(talks.lock);
    for (const auto& [handle, line] : talks.open) {
        if (line != nullptr) {
            std::lock_guard<std::mutex> hold_line(line->lock);
            status.push_back({{"talk", handle},
                              {"with", line->with},
                              {"played_seconds", line->talk.PlayedSeconds()},
                              {"file", line->talk.PlayedPath()}});
        }
    }
    return status;
}

[[maybe_unused]] const bool known = AddPanelPart("talks", Status) && OnPowerLoss(EndAll);

}  // namespace
}  // namespace simulator

int vexo_model_start_talking(unsigned int id, vexo_talk_mode mode, unsigned int channel, unsigned int* talk) {
    using namespace simulator;
    if (ShallFail(__func__) || talk == nullptr || !Logins::Get().UserOf(id)) {
        return -1;
    }
    if (mode == VEXO_TALK_DEVICE) {
        *talk = Open("recorder", RecorderMicrophone());
        return 0;
    }
    if (mode != VEXO_TALK_CHANNEL || channel >= TheScenario().cameras.size()) {
        return -1;
    }
    *talk = Open("channel " + std::to_string(channel + 1), CameraMicrophone(channel));
    return 0;
}

int vexo_model_stop_talking(unsigned int talk) {
    using namespace simulator;
    if (ShallFail(__func__)) {
        return -1;
    }
    std::shared_ptr<Line> ended;  // goes when the lock is free: others may still be at work on it
    Talks& talks = TheTalks();
    std::lock_guard<std::mutex> hold(talks.lock);
    const auto found = talks.open.find(talk);
    if (found == talks.open.end()) {
        return GiveBack(Goods::Talk, talk, __func__) ? 0 : -1;  // complains: nobody has taken it
    }
    if (found->second != nullptr) {
        GiveBack(Goods::Talk, talk, __func__);
    }
    ended = std::move(found->second);
    talks.open.erase(found);
    talks.stopped[talk] = {};
    if (talks.stopped.size() > STOPPED_KEPT) {
        talks.stopped.erase(talks.stopped.begin());
    }
    return 0;
}

int vexo_model_get_talking_frame(unsigned int talk, unsigned char* buffer, unsigned int size) {
    using namespace simulator;
    if (ShallFail(__func__) || buffer == nullptr || size < sizeof(vexo_frame_header)) {
        return -1;
    }
    const std::shared_ptr<Line> line = Find(talk, __func__, &Overtaken::captured);
    if (line == nullptr) {
        return -1;
    }
    std::lock_guard<std::mutex> hold(line->lock);
    const std::vector<unsigned char> frame = line->talk.Capture(Now());
    if (frame.empty()) {
        return -1;
    }
    memcpy(buffer, frame.data(), std::min<size_t>(frame.size(), size));
    return 0;
}

int vexo_model_play_talking_frame(unsigned int talk, const unsigned char* frame) {
    using namespace simulator;
    if (ShallFail(__func__) || frame == nullptr) {
        return -1;
    }
    const std::shared_ptr<Line> line = Find(talk, __func__, &Overtaken::played);
    if (line == nullptr) {
        return -1;
    }
    std::string why;
    bool played;
    {
        std::lock_guard<std::mutex> hold(line->lock);
        played = line->talk.Play(frame, &why);
    }
    if (!played && !why.empty()) {
        Complain("a frame given to talk " + std::to_string(talk) + " was not played: " + why);
    }
    return played ? 0 : -1;
}
