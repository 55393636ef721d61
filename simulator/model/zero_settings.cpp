// How the zero channel is encoded, as the platform tells it: what the scenario says.
#include "core/faults.h"
#include "core/scenario.h"
#include "vexo_model.h"

using simulator::ShallFail;
using simulator::TheScenario;

int vexo_model_zero_channel_get_resolution_ability(vexo_resolution_ability* ability) {
    if (ShallFail(__func__) || ability == nullptr) {
        return -1;
    }
    *ability = {};
    ability->node_num = 1;
    ability->node[0] = {TheScenario().zero_channel.width, TheScenario().zero_channel.height};
    return 0;
}

int vexo_model_zero_channel_get_resolution(vexo_resolution* resolution) {
    if (ShallFail(__func__) || resolution == nullptr) {
        return -1;
    }
    *resolution = {TheScenario().zero_channel.width, TheScenario().zero_channel.height};
    return 0;
}

int vexo_model_zero_channel_get_bps(unsigned int* bps, unsigned int* mode) {
    if (ShallFail(__func__) || bps == nullptr || mode == nullptr) {
        return -1;
    }
    *bps = TheScenario().zero_channel.kbps;
    *mode = TheScenario().zero_channel.constant ? 0 : 1;
    return 0;
}

int vexo_model_zero_channel_get_fps(unsigned int* fps) {
    if (ShallFail(__func__) || fps == nullptr) {
        return -1;
    }
    *fps = TheScenario().zero_channel.fps;
    return 0;
}
