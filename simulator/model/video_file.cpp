#include "video_file.h"

#include <algorithm>

namespace simulator {
namespace {

constexpr AVRational MICROSECONDS = {1, 1000000};
constexpr int64_t SHORTEST_STEP = 1000;    // microseconds
constexpr int64_t USUAL_STEP = 40000;      // microseconds, where the file tells no rate
constexpr int64_t LONGEST_LAG = 10000000;  // microseconds; further behind, the file goes on from now

}  // namespace

VideoFile::VideoFile(const std::string& path, const std::string& who)
    : m_path(path), m_who(who), m_packet(av_packet_alloc()), m_next(av_frame_alloc()), m_current(av_frame_alloc()) {
    int error = Open();
    if (error >= 0) {
        error = Decode();
    }
    if (error < 0) {
        GiveUp(error == AVERROR_EOF ? "there is no picture in it" : AvError(error));
    }
}

int VideoFile::Open() {
    m_codec.reset();
    AVFormatContext* file = nullptr;
    int error = avformat_open_input(&file, m_path.c_str(), nullptr, nullptr);
    m_file.reset(file);
    if (error == 0) {
        error = avformat_find_stream_info(file, nullptr);
    }
    return error >= 0 ? OpenDecoder() : error;
}

int VideoFile::OpenDecoder() {
    const AVCodec* decoder = nullptr;
    m_stream = av_find_best_stream(m_file.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (m_stream < 0) {
        return m_stream;
    }
    AVStream* stream = m_file->streams[m_stream];
    const AVRational rate = av_guess_frame_rate(m_file.get(), stream, nullptr);
    m_step = rate.num > 0 ? std::max(SHORTEST_STEP, av_rescale_q(1, av_inv_q(rate), MICROSECONDS)) : USUAL_STEP;
    m_codec.reset(avcodec_alloc_context3(decoder));
    if (m_codec == nullptr) {
        return AVERROR(ENOMEM);
    }
    m_codec->thread_count = 1;
    const int error = avcodec_parameters_to_context(m_codec.get(), stream->codecpar);
    return error < 0 ? error : avcodec_open2(m_codec.get(), decoder, nullptr);
}

void VideoFile::GiveUp(const std::string& why) {
    Tell(m_who + " has no signal: cannot play " + m_path + ": " + why);
    m_codec.reset();
    m_file.reset();
}

bool VideoFile::Draw(int64_t moment, const View&, AVFrame& picture) {
    if (m_begin < 0 || moment - m_begin - m_next_at > LONGEST_LAG) {
        m_begin = moment - m_next_at;
    }
    while (m_codec != nullptr && m_begin + m_next_at <= moment) {
        std::swap(m_current, m_next);
        const int error = Advance();
        if (error < 0) {
            GiveUp(AvError(error));
        }
    }
    return m_codec != nullptr && m_current->width > 0 && Scale(*m_current, picture, &m_scaler);
}

// The next picture; at the file's end, the first one again. Opening anew works for every kind of file, seeking does
// not.
int VideoFile::Advance() {
    int error = Decode();
    if (error == AVERROR_EOF) {
        m_begin += m_length;
        m_length = 0;
        error = Open();
        return error >= 0 ? Decode() : error;
    }
    return error;
}

int VideoFile::Decode() {
    int error;
    while ((error = avcodec_receive_frame(m_codec.get(), m_next.get())) == AVERROR(EAGAIN)) {
        if ((error = Feed()) != 0) {
            return error;
        }
    }
    if (error == 0) {
        m_next_at = PositionOf(*m_next);
        m_length = std::max(m_length, m_next_at) + m_step;
    }
    return error;
}

// One packet into the decoder, or the word that no more will come. A damaged packet is passed over.
int VideoFile::Feed() {
    av_packet_unref(m_packet.get());
    if (av_read_frame(m_file.get(), m_packet.get()) < 0) {
        return avcodec_send_packet(m_codec.get(), nullptr);
    }
    if (m_packet->stream_index == m_stream) {
        avcodec_send_packet(m_codec.get(), m_packet.get());
    }
    return 0;
}

// Microseconds from the round's first picture; one without a time follows the one before it.
int64_t VideoFile::PositionOf(const AVFrame& picture) const {
    const AVStream& stream = *m_file->streams[m_stream];
    if (picture.best_effort_timestamp == AV_NOPTS_VALUE) {
        return m_length;
    }
    const int64_t start = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
    return std::max<int64_t>(0, av_rescale_q(picture.best_effort_timestamp - start, stream.time_base, MICROSECONDS));
}

}  // namespace simulator
