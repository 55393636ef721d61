// Ctrl-C and SIGTERM: commands that run for a while ask here whether they shall end. They end cleanly, by themselves.
#ifndef HOSTMGRCTL_STOP_H
#define HOSTMGRCTL_STOP_H

namespace hostmgrctl {

/** From now on the first signal only raises the flag; a second one ends the process. */
void CatchStopSignals();

bool StopRequested();

}  // namespace hostmgrctl

#endif
