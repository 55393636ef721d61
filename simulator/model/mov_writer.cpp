#include "mov_writer.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstring>
#include <ctime>

#include "encoder.h"

namespace simulator {
namespace {

constexpr AVRational MICROSECONDS = {1, 1000000};
constexpr AVRational VIDEO_UNIT = {1, 1000000 / TIME_UNIT};  // a finer one is more than some players take
constexpr int SEQUENCE_PARAMETERS = 7;                       // types of H.264 units
constexpr int PICTURE_PARAMETERS = 8;

const unsigned char* PayloadOf(const LiveFrame& frame) {
    return frame.bytes.data() + sizeof(frame.header);
}

// Where a start code stands, or the end; *length is that of the start code.
size_t NextUnit(const unsigned char* data, size_t size, size_t from, size_t* length) {
    for (size_t i = from; i + 3 <= size; ++i) {
        if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1) {
            *length = 3;
            return i;
        }
    }
    *length = 0;
    return size;
}

// A key frame's parameter sets, with start codes.
std::vector<unsigned char> ParameterSets(const LiveFrame& frame) {
    const unsigned char* data = PayloadOf(frame);
    const size_t size = frame.header.data_length;
    std::vector<unsigned char> sets;
    size_t code = 0;
    for (size_t at = NextUnit(data, size, 0, &code); at < size;) {
        size_t next_code = 0;
        const size_t next = NextUnit(data, size, at + code, &next_code);
        const int type = at + code < size ? data[at + code] & 0x1F : 0;
        if (type == SEQUENCE_PARAMETERS || type == PICTURE_PARAMETERS) {
            sets.push_back(0);
            sets.insert(sets.end(), data + at, data + next);
        }
        at = next;
        code = next_code;
    }
    return sets;
}

bool SetExtra(const std::vector<unsigned char>& extra, AVCodecParameters* parameters) {
    parameters->extradata = static_cast<uint8_t*>(av_mallocz(extra.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (parameters->extradata == nullptr) {
        return false;
    }
    memcpy(parameters->extradata, extra.data(), extra.size());
    parameters->extradata_size = static_cast<int>(extra.size());
    return true;
}

void DescribeAudio(AVStream* stream) {
    stream->time_base = {1, AUDIO_RATE};
    stream->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    stream->codecpar->codec_id = AV_CODEC_ID_PCM_ALAW;
    stream->codecpar->sample_rate = AUDIO_RATE;
    stream->codecpar->bits_per_coded_sample = 8;
    av_channel_layout_default(&stream->codecpar->ch_layout, 1);
}

bool DescribeVideo(const LiveFrame& head, AVStream* stream) {
    stream->time_base = VIDEO_UNIT;
    stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream->codecpar->codec_id = AV_CODEC_ID_H264;
    stream->codecpar->width = head.header.width;
    stream->codecpar->height = head.header.height;
    stream->avg_frame_rate = {std::max<int>(1, head.header.format[0]), 1};
    return SetExtra(ParameterSets(head), stream->codecpar);
}

// As the container's libraries read it.
std::string TimeText(int64_t moment) {
    const time_t seconds = moment / MICROSECONDS.den;
    tm utc = {};
    gmtime_r(&seconds, &utc);
    char text[32];
    return std::string(text, strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &utc));
}

}  // namespace

Track TrackOf(const vexo_frame_header& header) {
    switch (header.frame_type) {
        case VEXO_FRAME_MAIN_KEY:
        case VEXO_FRAME_MAIN_DELTA:
            return TRACK_MAIN;
        case VEXO_FRAME_SUB_KEY:
        case VEXO_FRAME_SUB_DELTA:
            return TRACK_SUB;
        default:
            return TRACK_AUDIO;
    }
}

int64_t TimeOf(const vexo_frame_header& header) {
    return int64_t{header.seconds} * 1000000 + header.microseconds;
}

void MovWriter::Close::operator()(AVFormatContext* file) const {
    avio_closep(&file->pb);
    avformat_free_context(file);
}

int64_t DurationOf(const LiveFrame& frame) {
    return TrackOf(frame.header) == TRACK_AUDIO ? MICROSECONDS.den / AUDIO_BLOCKS
                                                : MICROSECONDS.den / std::max<int>(1, frame.header.format[0]);
}

MovWriter::MovWriter(const std::string& path, int64_t start, const std::vector<const LiveFrame*>& heads)
    : m_start(start), m_packet(av_packet_alloc()) {
    AVFormatContext* file = nullptr;
    int error = avformat_alloc_output_context2(&file, nullptr, "mov", path.c_str());
    m_file.reset(file);
    const bool described = error >= 0 && std::all_of(heads.begin(), heads.end(),
                                                     [this](const LiveFrame* head) { return AddTrack(*head); });
    if (described) {
        error = Begin(path, start);
    }
    m_writing = described && error >= 0;
    if (!m_writing) {
        Tell("cannot record to " + path + ": " + AvError(error));
    }
}

MovWriter::~MovWriter() {
    Finish();
}

void MovWriter::Finish() {
    if (m_writing) {
        av_write_trailer(m_file.get());
        m_writing = false;
    }
}

bool MovWriter::AddTrack(const LiveFrame& head) {
    AVStream* stream = avformat_new_stream(m_file.get(), nullptr);
    if (stream == nullptr) {
        return false;
    }
    m_last.push_back(-1);
    stream->id = TrackOf(head.header);
    if (stream->id == TRACK_AUDIO) {
        DescribeAudio(stream);
        return true;
    }
    return DescribeVideo(head, stream);
}

int MovWriter::Begin(const std::string& path, int64_t start) {
    m_file->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;  // streams that begin later do so in the file
    m_file->flush_packets = 1;                                // a complete piece can be read at once
    const int error = avio_open(&m_file->pb, path.c_str(), AVIO_FLAG_WRITE);
    if (error < 0) {
        return error;
    }
    av_dict_set(&m_file->metadata, "creation_time", TimeText(start).c_str(), 0);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "frag_keyframe+empty_moov+default_base_moof", 0);
    av_dict_set(&options, "use_editlist", "0", 0);
    av_dict_set(&options, "use_stream_ids_as_track_ids", "1", 0);
    const int result = avformat_write_header(m_file.get(), &options);
    av_dict_free(&options);
    return result;
}

bool MovWriter::Write(const LiveFrame& frame) {
    if (!m_writing) {
        return false;
    }
    const int track = TrackOf(frame.header);
    AVStream** const end = m_file->streams + m_file->nb_streams;
    AVStream** const found = std::find_if(m_file->streams, end, [track](AVStream* s) { return s->id == track; });
    if (found == end) {
        return false;
    }
    AVStream* stream = *found;
    const int64_t time =
        av_rescale_q_rnd(TimeOf(frame.header) - m_start, MICROSECONDS, stream->time_base, AV_ROUND_DOWN);
    if (time <= m_last[stream->index]) {
        return false;
    }
    m_last[stream->index] = time;
    av_packet_unref(m_packet.get());
    m_packet->data = const_cast<unsigned char*>(PayloadOf(frame));  // copied into the file's buffers, never written to
    m_packet->size = static_cast<int>(frame.header.data_length);
    m_packet->stream_index = stream->index;
    m_packet->pts = m_packet->dts = time;
    m_packet->duration = av_rescale_q(DurationOf(frame), MICROSECONDS, stream->time_base);
    m_packet->flags = frame.key ? AV_PKT_FLAG_KEY : 0;
    // Each piece begins at its first frames' own times, not where the durations before it add up to.
    av_opt_set(m_file->priv_data, "movflags", "+frag_discont", 0);
    return av_write_frame(m_file.get(), m_packet.get()) >= 0;
}

int64_t MovWriter::Bytes() const {
    return m_file != nullptr && m_file->pb != nullptr ? std::max<int64_t>(0, avio_tell(m_file->pb)) : 0;
}

}  // namespace simulator
