// The platform's view of the channels: how their cameras are connected and how their streams are encoded.
#include <arpa/inet.h>

#include "control.h"
#include "copy_text.h"
#include "core/faults.h"
#include "core/scenario.h"
#include "vexo_model.h"

namespace simulator {
namespace {

constexpr unsigned H264 = 1;
constexpr unsigned CONSTANT = 0;
constexpr unsigned VARIABLE = 1;
constexpr unsigned ADDRESS = 0;
constexpr unsigned HOST_NAME = 1;

const CameraSettings* FindSettings(unsigned index) {
    const auto& cameras = TheScenario().cameras;
    return index < cameras.size() ? &cameras[index] : nullptr;
}

/** The settings of a stream type, or null when there is no such channel or stream. */
const VideoSettings* FindStream(unsigned index, unsigned stream) {
    const CameraSettings* camera = FindSettings(index);
    if (camera == nullptr || (stream != VEXO_ENC_STR_MAIN && stream != VEXO_ENC_STR_SUB)) {
        return nullptr;
    }
    return stream == VEXO_ENC_STR_MAIN ? &camera->main : &camera->sub;
}

bool IsAddress(const std::string& text) {
    in_addr parsed;
    return inet_pton(AF_INET, text.c_str(), &parsed) == 1;
}

}  // namespace
}  // namespace simulator

using namespace simulator;  // the operations alone follow

int vexo_model_get_ipc_connect_status(unsigned int channel, VEXO_BOOL* connected) {
    if (ShallFail(__func__) || connected == nullptr || FindSettings(channel) == nullptr) {
        return -1;
    }
    *connected = control::HasSignal(channel + 1) ? VEXO_TRUE : VEXO_FALSE;
    return 0;
}

int vexo_model_get_ipc_connect_cfg(unsigned int channel, vexo_ipc_connect_cfg* cfg) {
    const CameraSettings* camera = FindSettings(channel);
    if (ShallFail(__func__) || cfg == nullptr || camera == nullptr) {
        return -1;
    }
    *cfg = {};
    cfg->address_kind = IsAddress(camera->address) ? ADDRESS : HOST_NAME;
    CopyText(camera->address, cfg->address);
    return 0;
}

int vexo_model_get_audio_enable(unsigned int channel, unsigned int stream, VEXO_BOOL* enable, unsigned int) {
    if (ShallFail(__func__) || enable == nullptr || FindStream(channel, stream) == nullptr) {
        return -1;
    }
    *enable = FindSettings(channel)->audio_hz != 0 ? VEXO_TRUE : VEXO_FALSE;
    return 0;
}

int vexo_model_get_enc_para(unsigned int channel, unsigned int stream, vexo_enc_para* para, VEXO_BOOL) {
    const VideoSettings* video = FindStream(channel, stream);
    if (ShallFail(__func__) || para == nullptr || video == nullptr) {
        return -1;
    }
    *para = {};
    para->codec = H264;
    para->mode = video->constant ? CONSTANT : VARIABLE;
    para->width = video->width;
    para->height = video->height;
    para->fps = video->fps;
    para->quality = video->quality;
    para->bps = video->kbps;
    para->gop = video->gop;
    return 0;
}
