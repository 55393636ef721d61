// The scenario's keys for the disks and what is recorded on them. The other keys stand in scenario.cpp.
#ifndef SIMULATOR_CORE_SCENARIO_RECORDINGS_H
#define SIMULATOR_CORE_SCENARIO_RECORDINGS_H

#include <vector>

#include "core/json_section.h"
#include "core/scenario.h"

namespace simulator {

/** Each throws std::runtime_error as JsonSection does. root: the whole document; without "disks" there is a usual one.
 */
std::vector<DiskSettings> ReadDisks(JsonSection& root);
RecordingSettings ReadRecordings(JsonSection section);

}  // namespace simulator

#endif
