// The recorder's cameras. They stand from the first use to the end of the process, idle until somebody reads them.
#ifndef SIMULATOR_MODEL_CAMERAS_H
#define SIMULATOR_MODEL_CAMERAS_H

#include "camera.h"

namespace simulator {

/** The camera of a channel, counted from 0, or null. */
Camera* FindCamera(unsigned index);

}  // namespace simulator

#endif
