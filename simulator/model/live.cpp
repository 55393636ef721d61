// The platform's live frame lists: vexo_model_first_get_frame and its kin.
#include "cameras.h"
#include "core/faults.h"
#include "live_recorder.h"
#include "vexo_model.h"

namespace {

using simulator::Camera;
using simulator::FindCamera;
using simulator::FrameList;
using simulator::HandedFrame;

FrameList* FindList(unsigned int channel, vexo_enc_str_type type) {
    Camera* camera = FindCamera(channel);
    return camera != nullptr ? camera->ListOf(type) : nullptr;
}

// The list, with its stream at work; null when there is none.
FrameList* ListToRead(unsigned int channel, vexo_enc_str_type type) {
    FrameList* list = FindList(channel, type);
    if (list != nullptr) {
        FindCamera(channel)->Want(type);
        simulator::WakeLiveRecorder();
    }
    return list;
}

int HandOver(const HandedFrame& handed, unsigned char** frame, vexo_read_av_list_note* note, VEXO_BOOL* no_video) {
    *frame = handed.bytes;
    *note = handed.note;
    *no_video = handed.no_video ? VEXO_TRUE : VEXO_FALSE;
    return 0;
}

}  // namespace

int vexo_model_first_get_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type, unsigned char** frame,
                               vexo_read_av_list_note* note, VEXO_BOOL* no_video) {
    if (simulator::ShallFail(__func__) || frame == nullptr || note == nullptr || no_video == nullptr) {
        return -1;
    }
    FrameList* list = ListToRead(channel, type);
    HandedFrame handed;
    return list != nullptr && list->First(user, &handed) ? HandOver(handed, frame, note, no_video) : -1;
}

int vexo_model_get_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type,
                         const vexo_read_av_list_note* current, unsigned char** frame, vexo_read_av_list_note* note,
                         VEXO_BOOL* no_video) {
    if (simulator::ShallFail(__func__) || current == nullptr || frame == nullptr || note == nullptr ||
        no_video == nullptr) {
        return -1;
    }
    FrameList* list = ListToRead(channel, type);
    HandedFrame handed;
    return list != nullptr && list->After(user, *current, &handed) ? HandOver(handed, frame, note, no_video) : -1;
}

int vexo_model_rel_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type,
                         const vexo_read_av_list_note* note) {
    if (simulator::ShallFail(__func__) || note == nullptr) {
        return -1;
    }
    FrameList* list = FindList(channel, type);
    return list != nullptr && list->Release(user, *note) ? 0 : -1;
}

void vexo_rmta_dump_frame_list(unsigned int channel, vexo_enc_str_type type, vexo_print_func print) {
    FrameList* list = FindList(channel, type);
    if (print == nullptr) {
        return;
    }
    if (list != nullptr) {
        list->Dump(print);
    } else {
        print("channel index %u has no frame list of type %u\n", channel, type);
    }
}
