// The camera heads: where each one looks, how it moves, its presets, tours and tracks, which last between runs. The
// platform's codes are translated in ptz_codes.cpp; what a view looks like is the picture source's.
#ifndef SIMULATOR_MODEL_PTZ_H
#define SIMULATOR_MODEL_PTZ_H

#include "picture_source.h"

struct vexo_ipc_ptz_ctrl_para;

namespace simulator {

/** What the camera of a channel shows now; channel counted from 0. Any thread. */
View ViewOf(unsigned index);

/** Does what a code of the platform says; false when there is no such channel, code, preset or tour, or when the camera
 *  cannot turn, for it plays a file. */
bool DriveHead(unsigned index, unsigned code, const vexo_ipc_ptz_ctrl_para& para);

}  // namespace simulator

#endif
