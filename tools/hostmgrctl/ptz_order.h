// What a person asks a camera for, by name, and the PTZ commands that it is: a table. Sending them does not belong
// here.
#ifndef HOSTMGRCTL_PTZ_ORDER_H
#define HOSTMGRCTL_PTZ_ORDER_H

#include <hostmgr_dev.h>

#include <string>
#include <vector>

namespace hostmgrctl {

/** How long what an order begins goes on. */
enum class PtzCourse {
    Once,   ///< done with the order
    Step,   ///< done, or until a stop: cameras differ
    Going,  ///< until a stop, or the camera's limit
};

/** What stands beside the words of an order. */
struct PtzModifiers {
    unsigned speed = 0;   ///< in the recorder's own measure; 0: its usual one
    unsigned preset = 0;  ///< of a tour's point; 0: the one of the point's number
    unsigned dwell = 0;   ///< seconds at a tour's point; 0: the recorder's own
};

/** An order, ready to be sent. */
struct PtzOrder {
    std::string text;  ///< as typed
    PtzCourse course = PtzCourse::Once;
    std::vector<_tagVexoHostMgrPtzCmd> commands;
};

/** Throws Failure with ExitCode::Usage for words that are no order, or whose numbers do not fit. */
PtzOrder ParsePtzOrder(const std::vector<std::string>& words, const PtzModifiers& modifiers);

/** Ends every movement. */
_tagVexoHostMgrPtzCmd PtzStop();

}  // namespace hostmgrctl

#endif
