// The recorder's own clock: what happens by the scenario, the heads of the cameras and a reboot go by it. Wall clock and
// pacing of media do not belong here.
#ifndef SIMULATOR_CORE_UPTIME_H
#define SIMULATOR_CORE_UPTIME_H

namespace simulator {

/** Seconds since the recorder was brought up, with what control::SkipTime added. Never goes back. */
double Uptime();

}  // namespace simulator

#endif
