#include "core/power.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

#include "core/scenario.h"
#include "core/uptime.h"

namespace simulator {
namespace {

struct Power {
    std::mutex lock;
    PowerState state = PowerState::Running;
    double back_at = 0;  ///< uptime at which the recorder is no longer away
    std::vector<std::function<void()>> ends;
    std::atomic<bool> interrupted{false};  ///< state is not Running; written under lock
};

Power& ThePower() {
    static Power& power = *new Power;
    return power;
}

void Interrupt(PowerState state) {
    Power& power = ThePower();
    std::vector<std::function<void()>> ends;
    {
        std::lock_guard<std::mutex> hold(power.lock);
        power.state = state;
        power.back_at = Uptime() + TheScenario().reboot_seconds;
        power.interrupted = true;
        ends = power.ends;
    }
    for (const std::function<void()>& end : ends) {
        end();
    }
}

// Under the lock.
void Resume(Power& power) {
    power.state = PowerState::Running;
    power.interrupted = false;
}

bool BeginsWith(const char* text, const char* with) {
    return strncmp(text, with, strlen(with)) == 0;
}

/** Operations that a recorder without power does not do. */
bool NeedsPower(const char* operation) {
    static const char* const giving_back[] = {"vexo_model_rel_frame",       "vexo_model_zero_channel_rel_frame",
                                              "vexo_model_logout",          "vexo_model_stop_talking",
                                              "vexo_model_get_dev_capability", "vexo_avss_file_reader::release_frame",
                                              "vexo_avss_file_reader::close",
                                              "vexo_advance_avss_file_reader::remove_reader",
                                              "vexo_advance_avss_file_reader::stop"};
    const bool of_the_model = BeginsWith(operation, "vexo_model_") || BeginsWith(operation, "vexo_avss_") ||
                              BeginsWith(operation, "vexo_advance_");
    return of_the_model && std::none_of(std::begin(giving_back), std::end(giving_back),
                                        [&](const char* name) { return strcmp(name, operation) == 0; });
}

}  // namespace

PowerState ThePowerState() {
    Power& power = ThePower();
    if (!power.interrupted.load(std::memory_order_acquire)) {
        return PowerState::Running;
    }
    std::lock_guard<std::mutex> hold(power.lock);
    if (power.state == PowerState::Away && Uptime() >= power.back_at) {
        Resume(power);
    }
    return power.state;
}

void Reboot() {
    Interrupt(PowerState::Away);
}

void PowerOff() {
    Interrupt(PowerState::Off);
}

bool PowerOn() {
    Power& power = ThePower();
    std::lock_guard<std::mutex> hold(power.lock);
    if (power.state != PowerState::Off) {
        return false;
    }
    Resume(power);
    return true;
}

bool OnPowerLoss(std::function<void()> end) {
    Power& power = ThePower();
    std::lock_guard<std::mutex> hold(power.lock);
    power.ends.push_back(std::move(end));
    return true;
}

bool Answers(const char* operation) {
    return IsRunning() || !NeedsPower(operation);
}

}  // namespace simulator
