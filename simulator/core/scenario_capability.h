// The scenario's keys for what the recorder is: versions, the capability record, factory items. The other keys stand in
// scenario.cpp.
#ifndef SIMULATOR_CORE_SCENARIO_CAPABILITY_H
#define SIMULATOR_CORE_SCENARIO_CAPABILITY_H

#include <vector>

#include "core/json_section.h"
#include "core/scenario.h"

namespace simulator {

/** Each throws std::runtime_error as JsonSection does. A version: "major.minor", "1.0" when the key is absent. */
std::string ReadVersion(JsonSection& section, const char* key);

/** scenario: as far as it has been read, with cameras and disks. */
CapabilitySettings ReadCapability(JsonSection section, const Scenario& scenario);

std::vector<FactoryItem> ReadFactory(const std::vector<JsonSection>& sections);

}  // namespace simulator

#endif
