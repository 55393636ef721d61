#include "picture_source.h"

#include "scene.h"
#include "video_file.h"

namespace simulator {

std::unique_ptr<PictureSource> OpenSource(const CameraSettings& camera, unsigned seed, unsigned channel) {
    if (camera.source == "scene") {
        return std::make_unique<Scene>(MakeSceneStyle(seed, channel), static_cast<int>(camera.main.width),
                                       static_cast<int>(camera.main.height));
    }
    return std::make_unique<VideoFile>(camera.source, "camera " + std::to_string(channel));
}

}  // namespace simulator
