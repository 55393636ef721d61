#include "cameras.h"

#include <memory>
#include <vector>

#include "core/power.h"
#include "work_end.h"

namespace simulator {
namespace {

/** All cameras, in the order of their channels. */
struct Cameras : std::vector<std::unique_ptr<Camera>> {
    void Close() {
        for (const auto& camera : *this) {
            camera->Close();
        }
    }
};

Cameras* MakeCameras() {
    const Scenario& scenario = TheScenario();
    auto* cameras = new Cameras;
    for (const CameraSettings& settings : scenario.cameras) {
        const auto channel = static_cast<unsigned>(cameras->size() + 1);
        cameras->push_back(std::make_unique<Camera>(channel, settings, scenario.seed, scenario.frames_kept));
    }
    return cameras;
}

Cameras& TheCameras();

[[maybe_unused]] const bool known = OnPowerLoss([] {
    for (const auto& camera : TheCameras()) {
        camera->EndStreams();
    }
});

Cameras& TheCameras() {
    static Cameras* const cameras = MakeCameras();
    static const WorkEnd end(cameras);
    return *cameras;
}

}  // namespace

Camera* FindCamera(unsigned index) {
    Cameras& cameras = TheCameras();
    return index < cameras.size() ? cameras[index].get() : nullptr;
}

}  // namespace simulator
