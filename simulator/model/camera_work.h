// A camera at work, on its thread: opens and closes streams as they are wanted and does what is due. Threads, locks and
// the question who reads are camera.h's.
#ifndef SIMULATOR_MODEL_CAMERA_WORK_H
#define SIMULATOR_MODEL_CAMERA_WORK_H

#include <memory>
#include <optional>

#include "core/scenario.h"
#include "frame_list.h"
#include "picture_source.h"
#include "stream.h"

namespace simulator {

/** Which streams are wanted. */
struct Demand {
    bool main = false;
    bool sub = false;
    bool audio = false;

    bool Any() const { return main || sub || audio; }
    bool operator==(const Demand& other) const {
        return main == other.main && sub == other.sub && audio == other.audio;
    }
};

/** The lists that a camera fills. */
struct CameraLists {
    FrameList main;
    FrameList sub;
    FrameList audio;
};

class CameraWork {
public:
    /** channel counted from 1; settings and lists must outlive this. */
    CameraWork(unsigned channel, const CameraSettings& settings, unsigned seed, CameraLists* lists);

    /** Opens what is wanted and closes what is not any more. */
    void Adjust(const Demand& demand);

    /** When the next picture or block is due; meaningless with nothing wanted. */
    SteadyTime Due();

    /** Makes what is due by now. */
    void Work(const View& view);

private:
    void AdjustVideo(bool wanted, vexo_enc_str_type type, FrameList* list, std::unique_ptr<VideoStream>* stream);
    void WorkVideo(VideoStream* stream, SteadyTime now, const View& view);
    void WorkAudio(SteadyTime now);
    const AVFrame* SceneAt(const Moment& moment, const View& view);
    void Report();
    bool NoVideo() const;

    const unsigned m_channel;
    const CameraSettings& m_settings;
    const unsigned m_seed;
    CameraLists* const m_lists;
    std::unique_ptr<PictureSource> m_source;  ///< opened with the first picture
    Av<AVFrame> m_scene;                      ///< both video streams show it
    SteadyTime m_scene_due;
    bool m_seen = true;              ///< the source had a picture for m_scene_due
    std::optional<bool> m_reported;  ///< what the event table knows of that
    std::unique_ptr<VideoStream> m_main;
    std::unique_ptr<VideoStream> m_sub;
    std::unique_ptr<AudioStream> m_audio;
};

}  // namespace simulator

#endif
