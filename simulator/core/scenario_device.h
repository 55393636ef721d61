// The scenario's keys for what happens at the recorder and what it does besides recording: events, talk, zero channel. The
// other keys stand in scenario.cpp.
#ifndef SIMULATOR_CORE_SCENARIO_DEVICE_H
#define SIMULATOR_CORE_SCENARIO_DEVICE_H

#include <vector>

#include "core/json_section.h"
#include "core/scenario.h"

namespace simulator {

/** Each throws std::runtime_error as JsonSection does. scenario: as far as it has been read, with cameras and inputs. */
std::vector<EventSettings> ReadEvents(const std::vector<JsonSection>& sections, const Scenario& scenario);
TalkSettings ReadTalk(JsonSection section);

/** The picture's width and height must leave every one of 256 pictures a size that can be painted. */
VideoSettings ReadZeroChannel(JsonSection section);

}  // namespace simulator

#endif
