// The cameras as the control header shows them: signal and activity. What a camera does stands in the model library.
#include <mutex>
#include <utility>

#include "control.h"
#include "core/events.h"

namespace simulator::control {
namespace {

struct Cameras {
    std::mutex lock;
    std::vector<unsigned> active;
};

Cameras& TheCameras() {
    static Cameras& cameras = *new Cameras;
    return cameras;
}

}  // namespace

// A camera has its signal while there is no video loss, which is the event table's to know.
void SetSignal(unsigned channel, bool present) {
    simulator::SetEvent(EventKind::VideoLoss, channel, !present);
}

bool HasSignal(unsigned channel) {
    return !IsOrdered(EventKind::VideoLoss, channel);
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
