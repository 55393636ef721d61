// The platform's view of the recorder as a device.
#include "core/device.h"

#include "core/faults.h"
#include "vexo_model.h"

const vexo_dev_capability* vexo_model_get_dev_capability() {
    return simulator::ShallFail(__func__) ? nullptr : &simulator::TheCapability();
}
