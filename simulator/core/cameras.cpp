// The cameras as the control header shows them: signal and activity. What a camera does stands in the model library.
#include <mutex>
#include <stdexcept>
#include <utility>

#include "control.h"
#include "core/scenario.h"

namespace simulator::control {
namespace {

struct Cameras {
    std::mutex lock;
    std::vector<bool> signal;
    std::vector<unsigned> active;
};

Cameras& TheCameras() {
    static Cameras& cameras = *[] {
        auto* made = new Cameras;
        for (const CameraSettings& camera : TheScenario().cameras) {
            made->signal.push_back(camera.signal);
        }
        return made;
    }();
    return cameras;
}

size_t IndexOf(const Cameras& cameras, unsigned channel) {
    if (channel < 1 || channel > cameras.signal.size()) {
        throw std::invalid_argument("there is no channel " + std::to_string(channel) +
                                    ": the recorder has channels 1 to " + std::to_string(cameras.signal.size()));
    }
    return channel - 1;
}

}  // namespace

void SetSignal(unsigned channel, bool present) {
    Cameras& cameras = TheCameras();
    std::lock_guard<std::mutex> hold(cameras.lock);
    cameras.signal[IndexOf(cameras, channel)] = present;
}

bool HasSignal(unsigned channel) {
    Cameras& cameras = TheCameras();
    std::lock_guard<std::mutex> hold(cameras.lock);
    return cameras.signal[IndexOf(cameras, channel)];
}

std::vector<unsigned> ActiveCameras() {
    Cameras& cameras = TheCameras();
    std::lock_guard<std::mutex> hold(cameras.lock);
    return cameras.active;
}

void SetActiveCameras(std::vector<unsigned> channels) {
    Cameras& cameras = TheCameras();
    std::lock_guard<std::mutex> hold(cameras.lock);
    cameras.active = std::move(channels);
}

}  // namespace simulator::control
