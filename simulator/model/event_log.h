// The recorder's log of what happens by itself: alarms and disk events, as they begin and end. Logins and the rest are
// entered where they happen.
#ifndef SIMULATOR_MODEL_EVENT_LOG_H
#define SIMULATOR_MODEL_EVENT_LOG_H

namespace simulator {

/** Somebody listens to the log: from now on the event table is watched, by a thread that rests while nobody listens. */
void WakeEventLog();

}  // namespace simulator

#endif
