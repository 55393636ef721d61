// The scenario's keys for the network and the platform links. The other keys stand in scenario.cpp.
#ifndef SIMULATOR_CORE_SCENARIO_NETWORK_H
#define SIMULATOR_CORE_SCENARIO_NETWORK_H

#include <vector>

#include "core/json_section.h"
#include "core/scenario.h"

namespace simulator {

/** Each throws std::runtime_error as JsonSection does. */
NetworkSettings ReadNetwork(JsonSection section);
std::vector<PlatformLink> ReadPlatformLinks(const std::vector<JsonSection>& sections);

}  // namespace simulator

#endif
