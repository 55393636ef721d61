// The platform's zero channel: switching, choosing and reading it.
#include "core/faults.h"
#include "logins.h"
#include "vexo_model.h"
#include "zero_channel.h"

namespace {

using simulator::HandedFrame;
using simulator::ShallFail;
using simulator::ZeroChannel;

int HandOver(const HandedFrame& handed, unsigned char** frame, vexo_read_av_list_note* note) {
    *frame = handed.bytes;
    *note = handed.note;
    return 0;
}

}  // namespace

int vexo_model_zero_channel_set_enable(unsigned int id, VEXO_BOOL enable) {
    if (ShallFail(__func__) || !simulator::Logins::Get().UserOf(id)) {
        return -1;
    }
    ZeroChannel::Get().Enable(enable != VEXO_FALSE);
    return 0;
}

int vexo_model_zero_channel_set_video_channels(unsigned int id, const unsigned int* channels, unsigned int count) {
    if (ShallFail(__func__) || !simulator::Logins::Get().UserOf(id) || channels == nullptr ||
        count > simulator::MOST_CELLS) {
        return -1;
    }
    return ZeroChannel::Get().Show({channels, channels + count}) ? 0 : -1;
}

int vexo_model_zero_channel_first_get_frame(vexo_user_id user, unsigned char** frame, vexo_read_av_list_note* note) {
    ZeroChannel& channel = ZeroChannel::Get();
    if (ShallFail(__func__) || frame == nullptr || note == nullptr || !channel.Enabled()) {
        return -1;
    }
    channel.Want();
    HandedFrame handed;  // stays empty, with a position before the first frame, while there is none yet
    channel.List().First(user, &handed);
    return HandOver(handed, frame, note);
}

int vexo_model_zero_channel_get_frame(vexo_user_id user, const vexo_read_av_list_note* current, unsigned char** frame,
                                      vexo_read_av_list_note* note) {
    ZeroChannel& channel = ZeroChannel::Get();
    if (ShallFail(__func__) || current == nullptr || frame == nullptr || note == nullptr || !channel.Enabled()) {
        return -1;
    }
    channel.Want();
    HandedFrame handed;
    return channel.List().After(user, *current, &handed) ? HandOver(handed, frame, note) : -1;
}

int vexo_model_zero_channel_rel_frame(vexo_user_id user, const vexo_read_av_list_note* note) {
    if (ShallFail(__func__) || note == nullptr) {
        return -1;
    }
    return ZeroChannel::Get().List().Release(user, *note) ? 0 : -1;
}
