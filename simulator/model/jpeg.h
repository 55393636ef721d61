// JPEG pictures of what a camera sees now. Who asks for them, and where they go, does not belong here.
#ifndef SIMULATOR_MODEL_JPEG_H
#define SIMULATOR_MODEL_JPEG_H

#include <cstdint>
#include <vector>

#include "av.h"

namespace simulator {

/** Encodes a yuv420p picture of limited range; empty, after a line on standard error, when that fails. */
std::vector<uint8_t> EncodeJpeg(const AVFrame& picture);

}  // namespace simulator

#endif
