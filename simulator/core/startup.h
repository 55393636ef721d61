// What happens once, when the guest brings the recorder up. The operation that the guest calls is in ../utility.
#ifndef SIMULATOR_CORE_STARTUP_H
#define SIMULATOR_CORE_STARTUP_H

namespace simulator {

/** Says on standard error that this is a simulated recorder and which; silent when RECORDER_QUIET is 1. */
void PrintBanner();

/** Puts the scenario's faults on order. */
void OrderScenarioFaults();

}  // namespace simulator

#endif
