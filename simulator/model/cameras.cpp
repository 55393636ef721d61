#include "cameras.h"

#include <unistd.h>

#include <memory>
#include <vector>

#include "core/power.h"

namespace simulator {
namespace {

using Cameras = std::vector<std::unique_ptr<Camera>>;

Cameras* MakeCameras() {
    const Scenario& scenario = TheScenario();
    auto* cameras = new Cameras;
    for (const CameraSettings& settings : scenario.cameras) {
        const auto channel = static_cast<unsigned>(cameras->size() + 1);
        cameras->push_back(std::make_unique<Camera>(channel, settings, scenario.seed, scenario.frames_kept));
    }
    return cameras;
}

// Ends the cameras' work while the process ends, before what they stand on goes. The cameras themselves stay: the
// guest's threads may still call. In a forked child there are no camera threads to wait for.
class WorkEnd {
public:
    explicit WorkEnd(Cameras* cameras) : m_cameras(cameras), m_process(getpid()) {}
    ~WorkEnd() {
        if (getpid() == m_process) {
            for (const auto& camera : *m_cameras) {
                camera->Close();
            }
        }
    }

private:
    Cameras* const m_cameras;
    const pid_t m_process;
};

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
