// What the recorder is and what its users may do, in the platform's records, made from the scenario: one definition for
// the configuration manager and the model library, which must tell the same. Nothing that changes belongs here.
#ifndef SIMULATOR_CORE_DEVICE_H
#define SIMULATOR_CORE_DEVICE_H

#include "core/scenario.h"
#include "vexo_types.h"

namespace simulator {

/** The capability record of the running scenario; valid and unchanged for the process's life. */
const vexo_dev_capability& TheCapability();

/** A user's rights: an administrator has every flag and every channel of the recorder, any other user what the scenario
 *  gives. */
vexo_dev_usr_authority AuthorityOf(const UserSettings& user);

}  // namespace simulator

#endif
