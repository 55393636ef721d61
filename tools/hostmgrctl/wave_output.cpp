#include "wave_output.h"

#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "exit_code.h"
#include "frame.h"
#include "output_file.h"

namespace hostmgrctl {
namespace {

constexpr int SAMPLE_BYTES = sizeof(int16_t);

}  // namespace

WaveOutput::WaveOutput(std::string path) : m_path(std::move(path)), m_written(GrowingPath(m_path, FilePlace::Aside)) {
    av_log_set_level(AV_LOG_FATAL);
    if (std::filesystem::path(m_path).extension() != ".wav") {
        throw Failure(ExitCode::Usage, "cannot write sound as " + m_path + ": end the name with .wav");
    }
    CheckWritable(m_path, FilePlace::Aside);
}

WaveOutput::~WaveOutput() {
    if (m_format != nullptr && m_size == 0) {
        unlink(m_written.c_str());
    }
}

void WaveOutput::Check(int result) const {
    if (result < 0) {
        CannotWrite(m_path, AvErrorText(result));
    }
}

void WaveOutput::Open() {
    AVFormatContext* format = nullptr;
    Check(avformat_alloc_output_context2(&format, nullptr, "wav", nullptr));
    m_format.reset(format);
    AVCodecParameters* parameters = NotNull(avformat_new_stream(format, nullptr))->codecpar;
    parameters->codec_type = AVMEDIA_TYPE_AUDIO;
    parameters->codec_id = AV_CODEC_ID_PCM_S16LE;
    parameters->sample_rate = G711_RATE;
    parameters->bits_per_coded_sample = 8 * SAMPLE_BYTES;
    parameters->block_align = SAMPLE_BYTES;
    parameters->bit_rate = 8L * SAMPLE_BYTES * G711_RATE;
    av_channel_layout_default(&parameters->ch_layout, 1);
    Check(avio_open(&format->pb, ("file:" + m_written).c_str(), AVIO_FLAG_WRITE));
    Check(avformat_write_header(format, nullptr));
}

void WaveOutput::Append(const Samples& samples) {
    if (samples.empty()) {
        return;
    }
    if (m_format == nullptr) {
        Open();
    }
    const Av<AVPacket> packet(NotNull(av_packet_alloc()));
    const size_t bytes = samples.size() * SAMPLE_BYTES;
    if (av_new_packet(packet.get(), static_cast<int>(bytes)) < 0) {
        throw std::bad_alloc();
    }
    memcpy(packet->data, samples.data(), bytes);
    packet->pts = packet->dts = av_rescale_q(m_samples, {1, G711_RATE}, m_format->streams[0]->time_base);
    m_samples += static_cast<int64_t>(samples.size());
    Check(av_write_frame(m_format.get(), packet.get()));
}

void WaveOutput::Finish() {
    if (m_format == nullptr) {
        return;
    }
    Check(av_write_trailer(m_format.get()));
    Check(avio_closep(&m_format->pb));
    PutInPlace(m_path, FilePlace::Aside);
    std::error_code error;
    m_size = std::filesystem::file_size(m_path, error);
}

}  // namespace hostmgrctl
