#include "camera_work.h"

#include <algorithm>

#include "control.h"
#include "core/events.h"

namespace simulator {
namespace {

using std::chrono::steady_clock;
using std::chrono::system_clock;

constexpr std::chrono::seconds LONGEST_AUDIO_LAG{2};  // a process that stood still does not make up for lost sound

// A point of the schedule on the wall clock as it goes now: follows when somebody sets it.
Moment MomentOf(SteadyTime due) {
    const auto ago = steady_clock::now() - due;
    const auto wall_clock = system_clock::now().time_since_epoch() - ago;
    return {due, std::chrono::duration_cast<std::chrono::microseconds>(wall_clock).count()};
}

}  // namespace

CameraWork::CameraWork(unsigned channel, const CameraSettings& settings, unsigned seed, CameraLists* lists)
    : m_channel(channel), m_settings(settings), m_seed(seed), m_lists(lists) {}

void CameraWork::Adjust(const Demand& demand) {
    AdjustVideo(demand.main, VEXO_ENC_STR_MAIN, &m_lists->main, &m_main);
    AdjustVideo(demand.sub, VEXO_ENC_STR_SUB, &m_lists->sub, &m_sub);
    if (!demand.audio) {
        m_audio.reset();
    } else if (m_audio == nullptr) {
        m_audio = std::make_unique<AudioStream>(m_settings, steady_clock::now(), &m_lists->audio);
    }
}

void CameraWork::AdjustVideo(bool wanted, vexo_enc_str_type type, FrameList* list,
                             std::unique_ptr<VideoStream>* stream) {
    if (!wanted) {
        stream->reset();
    } else if (*stream == nullptr) {
        *stream = std::make_unique<VideoStream>(type, m_channel, m_settings, steady_clock::now(), list);
    }
}

SteadyTime CameraWork::Due() {
    SteadyTime due = SteadyTime::max();
    for (VideoStream* video : {m_main.get(), m_sub.get()}) {
        due = video != nullptr ? std::min(due, video->When().Due()) : due;
    }
    return m_audio != nullptr ? std::min(due, m_audio->When().Due()) : due;
}

void CameraWork::Work(const View& view) {
    const SteadyTime now = steady_clock::now();
    WorkAudio(now);
    WorkVideo(m_main.get(), now, view);
    WorkVideo(m_sub.get(), now, view);
}

void CameraWork::WorkVideo(VideoStream* stream, SteadyTime now, const View& view) {
    if (stream == nullptr || stream->When().Due() > now) {
        return;
    }
    stream->When().SkipTo(now);
    const Moment moment = MomentOf(stream->When().Due());
    stream->Put(moment, SceneAt(moment, view));
    stream->When().Done();
}

void CameraWork::WorkAudio(SteadyTime now) {
    if (m_audio == nullptr) {
        return;
    }
    if (now - m_audio->When().Due() > LONGEST_AUDIO_LAG) {
        m_audio->When().SkipTo(now);
    }
    for (; m_audio->When().Due() <= now; m_audio->When().Done()) {
        m_audio->Put(MomentOf(m_audio->When().Due()), NoVideo());
    }
}

const AVFrame* CameraWork::SceneAt(const Moment& moment, const View& view) {
    if (m_source == nullptr) {
        m_source = OpenSource(m_settings, m_seed, m_channel);
        m_scene = NewPicture(static_cast<int>(m_settings.main.width), static_cast<int>(m_settings.main.height));
    }
    if (!control::HasSignal(m_channel) || m_scene == nullptr) {
        return nullptr;
    }
    if (m_scene_due != moment.due) {
        const bool seen = m_source->Draw(moment.wall_clock, view, *m_scene);
        if (seen != m_seen) {
            ReportSeen(m_channel, seen);
        }
        m_seen = seen;
        m_scene_due = moment.due;
    }
    return m_seen ? m_scene.get() : nullptr;
}

bool CameraWork::NoVideo() const {
    return !control::HasSignal(m_channel) || !m_seen;
}

}  // namespace simulator
