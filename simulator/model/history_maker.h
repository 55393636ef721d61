// Makes one channel's part of the history: a camera's streams, run as fast as they go, into recorded files. Which
// recordings there shall be, and when all this happens, stands in history.h.
#ifndef SIMULATOR_MODEL_HISTORY_MAKER_H
#define SIMULATOR_MODEL_HISTORY_MAKER_H

#include <memory>

#include "archive.h"
#include "av.h"
#include "history.h"
#include "picture_source.h"

namespace simulator {

/** For one thread at a time. */
class HistoryMaker {
public:
    /** channel counted from 1; camera: what it is live; archive must outlive this. */
    HistoryMaker(Archive* archive, unsigned channel, const CameraSettings& camera, const HistorySettings& settings,
                 unsigned seed);

    /** Records one segment; false, with the archive as it was, when that fails. */
    bool Make(const HistorySegment& segment);

private:
    int64_t Record(const std::string& path, const HistorySegment& segment);

    Archive* const m_archive;
    const unsigned m_channel;
    const CameraSettings m_camera;  ///< as it is recorded
    const std::unique_ptr<PictureSource> m_source;
    const Av<AVFrame> m_scene;
};

}  // namespace simulator

#endif
