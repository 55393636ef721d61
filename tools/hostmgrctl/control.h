// Orders to the recorder through the one exported function that carries them all. It answers 0 whatever comes of an
// order; what failed stands on the library's console, and is looked for there.
#ifndef HOSTMGRCTL_CONTROL_H
#define HOSTMGRCTL_CONTROL_H

#include <hostmgr_dev.h>

#include <string>
#include <vector>

namespace hostmgrctl {

/** A command with its channel and its record, which is the caller's. */
struct Order {
    HostMgrControlCommand command;
    unsigned channel = 0;    ///< from 1; 0 for an order to the recorder itself
    void* record = nullptr;  ///< in the second buffer
    unsigned size = 0;
};

/**
 * Sends an order. Throws Failure when it is refused, or when the library complains meanwhile; what: such as "reboot". A
 * recorder does not tell what becomes of an order for a channel.
 */
void Send(int login, const Order& order, const std::string& what);

/**
 * Says on standard error when one of the channels is more than the recorder says it has: nobody else would. No refusal,
 * as the record that tells their number cannot tell all of very many.
 */
void NoteMissingChannels(int login, const std::vector<unsigned>& channels);

/** Switches the login's alarm upload; the first buffer carries the switch. */
void SwitchAlarmUpload(int login, bool on);

}  // namespace hostmgrctl

#endif
