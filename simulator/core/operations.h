// The names of the platform operations that can be told to fail. A table; how they fail stands in faults.cpp and in the
// operations themselves.
#ifndef SIMULATOR_CORE_OPERATIONS_H
#define SIMULATOR_CORE_OPERATIONS_H

#include <string>
#include <vector>

namespace simulator {

/** Every operation of the platform that asks ShallFail, those included that this recorder does not have yet. */
const std::vector<std::string>& FallibleOperations();

/** "" when it is one of them, else a sentence that says so and names the nearest one. */
std::string WhyNoOperation(const std::string& operation);

}  // namespace simulator

#endif
