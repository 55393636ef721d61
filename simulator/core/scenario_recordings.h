// The scenario's keys for the disks and what is recorded on them. The other keys stand in scenario.cpp.
#ifndef SIMULATOR_CORE_SCENARIO_RECORDINGS_H
#define SIMULATOR_CORE_SCENARIO_RECORDINGS_H

#include <vector>

#include "core/json_section.h"
#include "core/scenario.h"

namespace simulator {

constexpr size_t MAX_DISKS = 16;

/** Each throws std::runtime_error as JsonSection does. Without sections there is one usual disk. */
std::vector<DiskSettings> ReadDisks(const std::vector<JsonSection>& sections);
RecordingSettings ReadRecordings(JsonSection section);

}  // namespace simulator

#endif
