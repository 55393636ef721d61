// The scenario's keys for users and their rights. The other keys stand in scenario.cpp.
#ifndef SIMULATOR_CORE_SCENARIO_USERS_H
#define SIMULATOR_CORE_SCENARIO_USERS_H

#include <vector>

#include "core/json_section.h"
#include "core/scenario.h"

namespace simulator {

/** Throws std::runtime_error as JsonSection does. root: the whole document; channels: how many the recorder has. */
std::vector<UserSettings> ReadUsers(JsonSection& root, size_t channels);

}  // namespace simulator

#endif
