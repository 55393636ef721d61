// Faults on order: any platform operation can be told to fail on its n-th use, by the scenario or through control.h.
#ifndef SIMULATOR_CORE_FAULTS_H
#define SIMULATOR_CORE_FAULTS_H

namespace simulator {

/**
 * Counts one use of an operation and says whether this one shall fail. Every platform operation that can fail asks
 * first, by its name, once a use. Without power (power.h) the model library's fail, uncounted. May be called from any thread; costs one atomic read while no fault is on order.
 */
bool ShallFail(const char* operation);

}  // namespace simulator

#endif
