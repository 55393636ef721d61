// A video file as a camera's source: played at its own speed, over and over. Pictures only; its sound is not used.
#ifndef SIMULATOR_MODEL_VIDEO_FILE_H
#define SIMULATOR_MODEL_VIDEO_FILE_H

#include <string>

#include "av.h"
#include "picture_source.h"

namespace simulator {

class VideoFile : public PictureSource {
public:
    /** A file that cannot be played is told on standard error in the name of who asks for it, and gives no signal. */
    VideoFile(const std::string& path, const std::string& who);

    /** The view is not used: a recording cannot turn. */
    bool Draw(int64_t moment, const View& view, AVFrame& picture) override;

private:
    int Open();
    int OpenDecoder();
    int Advance();
    int Decode();
    int Feed();
    int64_t PositionOf(const AVFrame& picture) const;
    void GiveUp(const std::string& why);

    const std::string m_path;
    const std::string m_who;
    Av<AVFormatContext> m_file;
    Av<AVCodecContext> m_codec;
    Av<AVPacket> m_packet;
    Av<AVFrame> m_next;     ///< decoded, its time has not come
    Av<AVFrame> m_current;  ///< what is seen
    Av<SwsContext> m_scaler;
    int m_stream = -1;
    int64_t m_begin = -1;   ///< moment of the present round's first picture; what follows is in microseconds from it
    int64_t m_next_at = 0;  ///< when m_next is to be seen
    int64_t m_length = 0;   ///< the end of the last picture so far
    int64_t m_step = 0;     ///< how long a picture stands, where the next one does not tell
};

}  // namespace simulator

#endif
