// Where a camera's pictures come from. What is written over them, how they are encoded and when does not belong here.
#ifndef SIMULATOR_MODEL_PICTURE_SOURCE_H
#define SIMULATOR_MODEL_PICTURE_SOURCE_H

#include <cstdint>
#include <memory>

#include "core/scenario.h"

struct AVFrame;

namespace simulator {

/** Which part of what it could see a camera shows. */
struct View {
    double pan = 0.5;   ///< 0 all the way left, 1 all the way right
    double tilt = 0.5;  ///< 0 all the way up, 1 all the way down
    double zoom = 1;    ///< 1 widest; 2 shows half the width
};

/** For one thread at a time. */
class PictureSource {
public:
    virtual ~PictureSource() = default;

    /**
     * Fills a yuv420p picture of whatever size with what is seen at that moment, in microseconds since 1970. False when
     * there is nothing to be seen: the camera has no signal.
     */
    virtual bool Draw(int64_t moment, const View& view, AVFrame& picture) = 0;
};

/** The source that a camera's settings name; channel counted from 1. */
std::unique_ptr<PictureSource> OpenSource(const CameraSettings& camera, unsigned seed, unsigned channel);

}  // namespace simulator

#endif
