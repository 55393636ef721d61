// The platform's PTZ codes and what each one lets a head do. A table; the platform header tells the same to the guest.
#ifndef SIMULATOR_MODEL_PTZ_CODES_H
#define SIMULATOR_MODEL_PTZ_CODES_H

#include "ptz_head.h"
#include "vexo_model.h"

namespace simulator {

/** Obeys a code; false when it is not known, its parameters are of the wrong kind, or what it names is not there. */
bool Obey(CameraHead& head, double now, unsigned code, const vexo_ipc_ptz_ctrl_para& para);

}  // namespace simulator

#endif
