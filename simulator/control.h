// The simulated recorder's control header: what a test, or the front panel, may do to a running recorder that a board
// would not let it do. Exported by libutility_plat.so. Never used by the library. Every function may be called from any
// thread.
#ifndef SIMULATOR_CONTROL_H
#define SIMULATOR_CONTROL_H

#include <string>
#include <vector>

namespace simulator::control {

/**
 * Lets the operation fail from its nth use from now on, counted from 1, that many times. Several orders for one
 * operation each count for themselves. Throws std::invalid_argument for a name that no operation has.
 */
void Fail(const std::string& operation, unsigned nth, unsigned times = 1);

/**
 * Takes a camera's video signal away or gives it back; channel counted from 1. Throws std::invalid_argument for a
 * channel that the recorder does not have.
 */
void SetSignal(unsigned channel, bool present);
bool HasSignal(unsigned channel);

/**
 * Begins an event or ends it: "motion", "video loss", "shelter", "disk full", "disk error", "network lost", "address
 * conflict", "input", "camera input". number: channel, disk or input, counted from 1; 0 for a network event. Ending one
 * that the scenario planned ends its present turn. Throws std::invalid_argument for a kind or number that is not there.
 */
void SetEvent(const std::string& kind, unsigned number, bool present);

/** Puts an entry of any class into the event table, or takes it out: bytes 0 and 1, words at bytes 80 and 84. */
void SetRawEvent(unsigned char event_class, unsigned char sub_type, unsigned channel, unsigned input, bool present);

/** What is the case now, in the order of its beginning, such as "motion, channel 2". */
std::vector<std::string> Events();

/**
 * Lets the recorder's own clock go forward at once: planned events, moving cameras, a reboot. Pictures and sound keep
 * their pace. Throws std::invalid_argument for a negative time.
 */
void SkipTime(double seconds);

/**
 * Everything the guest has taken and not given back, what serves to the end of the process included; one line each,
 * sorted, such as "memory: user 97, purpose 0x80002, 7680 bytes" or "lock: vexo_hostmgr_lv, user 97".
 */
std::vector<std::string> Outstanding();

/** Misuse seen so far, one line each, oldest first; empty when all is well. */
std::vector<std::string> Complaints();

/** Cameras that are encoding now, for someone reads them; channels counted from 1. */
std::vector<unsigned> ActiveCameras();

/** Called by the model library alone: how it tells which cameras are at work. */
void SetActiveCameras(std::vector<unsigned> channels);

/**
 * Picks a command in the recorder's diagnostics menu and returns what the clients print, all of them in turn, in the
 * order of their registration. They run on a thread of its own; the call waits for it.
 */
std::string Diagnose(unsigned command);

}  // namespace simulator::control

#endif
