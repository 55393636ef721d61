// Where the recorder keeps its files, and how a start that cannot go on ends. What is kept there belongs to its owners.
#ifndef SIMULATOR_CORE_HOME_H
#define SIMULATOR_CORE_HOME_H

#include <string>

namespace simulator {

/** The home folder's path, whether it exists yet or not. */
const std::string& HomePath();

/** Ends the process with status 2 and that message on standard error. */
[[noreturn]] void EndWithMessage(const std::string& message);

}  // namespace simulator

#endif
