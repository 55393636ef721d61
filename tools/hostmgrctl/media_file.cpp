#include "media_file.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "exit_code.h"
#include "h264_probe.h"

namespace hostmgrctl {
namespace {

constexpr AVRational MICROSECONDS = {1, 1000000};
constexpr int64_t LONGEST_WAIT = 2000000;  // microseconds of video that wait for the first sound
enum StreamIndex { VIDEO = 0, AUDIO = 1 };

constexpr Container CONTAINERS[] = {
    {".mkv", "matroska", SoundWay::Copy},
    {".mov", "mov", SoundWay::Copy},
    {".mp4", "mp4", SoundWay::ToAac},
    {".h264", "h264", SoundWay::Leave},
};

const Container& ContainerOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    for (const Container& container : CONTAINERS) {
        if (extension == container.extension) {
            return container;
        }
    }
    throw Failure(ExitCode::Usage, "cannot tell a format from the name " + path + ": end it with one of " +
                                       KnownExtensions() + " (.mkv is best)");
}

AVCodecID G711Of(unsigned codec) {
    if (codec == CODEC_G711_A) {
        return AV_CODEC_ID_PCM_ALAW;
    }
    return codec == CODEC_G711_U ? AV_CODEC_ID_PCM_MULAW : AV_CODEC_ID_NONE;
}

}  // namespace

std::string KnownExtensions() {
    std::string text;
    for (const Container& container : CONTAINERS) {
        text += (text.empty() ? "" : " ") + std::string(container.extension);
    }
    return text;
}

MediaFile::MediaFile(std::string path, bool audio, FilePlace place)
    : m_path(std::move(path)),
      m_place(place),
      m_written(GrowingPath(m_path, place)),
      m_container(ContainerOf(m_path)),
      m_audio_wanted(audio && m_container.sound != SoundWay::Leave) {
    CheckWritable(m_path, place);
    av_log_set_level(AV_LOG_FATAL);
    if (audio && !m_audio_wanted) {
        m_note = "a " + std::string(m_container.extension) + " file holds no sound";
    }
}

MediaFile::~MediaFile() {
    if (m_format != nullptr) {
        avio_closep(&m_format->pb);
        avformat_free_context(m_format);
        if (m_size == 0 && m_written != m_path) {
            unlink(m_written.c_str());
        }
    }
}

void MediaFile::Check(int result) const {
    if (result < 0) {
        CannotWrite(m_path, AvErrorText(result));
    }
}

Av<AVPacket> MediaFile::PacketOf(const Frame& frame, int64_t time) const {
    Av<AVPacket> packet(NotNull(av_packet_alloc()));
    if (av_new_packet(packet.get(), static_cast<int>(frame.Size())) < 0) {
        throw std::bad_alloc();
    }
    memcpy(packet->data, frame.Payload(), frame.Size());
    packet->pts = packet->dts = time - m_base;
    packet->stream_index = frame.IsAudio() ? AUDIO : VIDEO;
    packet->flags = frame.IsAudio() || frame.IsKey() ? AV_PKT_FLAG_KEY : 0;
    if (frame.IsAudio()) {
        packet->duration = static_cast<int64_t>(frame.Size()) * 1000000 / G711_RATE;
    } else if (frame.Rate() > 0) {
        packet->duration = 1000000 / frame.Rate();
    }
    return packet;
}

void MediaFile::Write(const Frame& frame, int64_t time) {
    frame.IsAudio() ? WriteAudio(frame, time) : WriteVideo(frame, time);
}

void MediaFile::WriteVideo(const Frame& frame, int64_t time) {
    if (m_base < 0) {
        if (!frame.IsKey()) {
            return;
        }
        m_video_parameters = ProbeH264(frame.Payload(), frame.Size());
        if (m_video_parameters == nullptr) {
            CannotWrite(m_path, "the channel's pictures are not H.264");
        }
        m_base = time;
    }
    m_waiting.push_back(PacketOf(frame, time));
    OpenWhenReady();
}

void MediaFile::WriteAudio(const Frame& frame, int64_t time) {
    if (!m_audio_wanted || m_base < 0 || time < m_base) {
        return;
    }
    if (m_audio_codec == AV_CODEC_ID_NONE) {
        m_audio_codec = G711Of(frame.Codec());
        if (m_audio_codec == AV_CODEC_ID_NONE) {
            m_audio_wanted = false;
            m_note = "the file is without sound: " + std::string(AudioCodecName(frame.Codec())) + " cannot be written";
            return;
        }
    }
    m_waiting.push_back(PacketOf(frame, time));
    OpenWhenReady();
}

// The streams of a file must be known when it is opened.
void MediaFile::OpenWhenReady() {
    if (m_format == nullptr) {
        const bool sound_known = !m_audio_wanted || m_audio_codec != AV_CODEC_ID_NONE;
        if (!sound_known && m_waiting.back()->pts < LONGEST_WAIT) {
            return;
        }
        Open();
    }
    for (const Av<AVPacket>& packet : m_waiting) {
        Put(packet.get());
    }
    m_waiting.clear();
}

void MediaFile::Open() {
    if (m_audio_wanted && m_audio_codec == AV_CODEC_ID_NONE) {
        m_audio_wanted = false;
        m_note = "the file is without sound: none came in the first seconds";
    }
    Check(avformat_alloc_output_context2(&m_format, nullptr, m_container.muxer, m_written.c_str()));
    AddStreams();
    Check(avio_open(&m_format->pb, m_written.c_str(), AVIO_FLAG_WRITE));
    Check(avformat_write_header(m_format, nullptr));
}

void MediaFile::AddStreams() {
    m_video = NotNull(avformat_new_stream(m_format, nullptr));
    Check(avcodec_parameters_copy(m_video->codecpar, m_video_parameters.get()));
    m_video->codecpar->codec_tag = 0;
    m_video->sample_aspect_ratio = m_video->codecpar->sample_aspect_ratio;
    m_video->time_base = MICROSECONDS;
    if (m_audio_wanted) {
        AddAudioStream();
    }
}

void MediaFile::AddAudioStream() {
    m_audio = NotNull(avformat_new_stream(m_format, nullptr));
    m_audio->time_base = {1, G711_RATE};
    AVCodecParameters* parameters = m_audio->codecpar;
    if (m_container.sound == SoundWay::ToAac) {
        m_aac = std::make_unique<AacTrack>(m_audio_codec, [this](AVPacket* packet) { Mux(packet, m_audio); });
        m_aac->Describe(parameters);
        m_note = "the sound was turned into AAC: a " + std::string(m_container.extension) + " file cannot hold G.711";
        return;
    }
    parameters->codec_type = AVMEDIA_TYPE_AUDIO;
    parameters->codec_id = m_audio_codec;
    parameters->sample_rate = G711_RATE;
    parameters->bits_per_coded_sample = 8;
    parameters->block_align = 1;
    parameters->bit_rate = 8L * G711_RATE;
    av_channel_layout_default(&parameters->ch_layout, 1);
}

void MediaFile::Put(AVPacket* packet) {
    if (packet->stream_index == VIDEO) {
        Mux(packet, m_video);
    } else if (m_aac != nullptr) {
        m_aac->Put(*packet);
    } else if (m_audio != nullptr) {
        Mux(packet, m_audio);
    }
}

// Containers want times that rise; a recorder whose clock is set back does not give them.
void MediaFile::Mux(AVPacket* packet, AVStream* stream) {
    packet->stream_index = stream->index;
    av_packet_rescale_ts(packet, MICROSECONDS, stream->time_base);
    int64_t& last = stream == m_video ? m_last_video : m_last_audio;
    packet->dts = packet->pts = std::max(packet->pts, last + 1);
    last = packet->pts;
    ++(stream == m_video ? m_video_packets : m_audio_packets);
    Check(av_interleaved_write_frame(m_format, packet));
}

void MediaFile::Finish() {
    if (m_base < 0) {
        return;
    }
    if (m_format == nullptr) {
        Open();
        OpenWhenReady();
    }
    if (m_aac != nullptr) {
        m_aac->Finish();
    }
    Check(av_write_trailer(m_format));
    Check(avio_closep(&m_format->pb));
    PutInPlace(m_path, m_place);
    std::error_code error;
    m_size = std::filesystem::file_size(m_path, error);
}

nlohmann::ordered_json MediaFile::Json() const {
    return {{"path", m_path},
            {"format", m_container.muxer},
            {"bytes", m_size},
            {"video_packets", m_video_packets},
            {"audio_packets", m_audio_packets},
            {"note", m_note}};
}

}  // namespace hostmgrctl
