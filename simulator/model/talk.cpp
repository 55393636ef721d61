#include "talk.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

#include "core/scenario.h"
#include "sound_file.h"
#include "tone.h"

namespace simulator {
namespace {

constexpr int64_t SAMPLES_KEPT = 37 * AUDIO_BLOCK;  // a second and a half
constexpr unsigned LONGEST_PAYLOAD = 65536;
constexpr unsigned char CODEC_MULAW = 1;
constexpr unsigned char CODEC_ALAW = 2;
constexpr unsigned char CODEC_ADPCM = 4;

class ToneMicrophone : public Microphone {
public:
    ToneMicrophone(double hz, double level) : m_tone(hz, level, AUDIO_RATE) {}
    int16_t Next() override { return m_tone.Next(); }

private:
    Tone m_tone;
};

class FileMicrophone : public Microphone {
public:
    explicit FileMicrophone(const std::vector<int16_t>& samples) : m_samples(samples) {}
    int16_t Next() override { return m_samples[m_next++ % m_samples.size()]; }

private:
    const std::vector<int16_t>& m_samples;
    size_t m_next = 0;
};

vexo_frame_header CapturedHeader(int64_t number, double age, size_t payload) {
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    const int64_t moment = now - static_cast<int64_t>(age * 1e6);
    vexo_frame_header header = {};
    header.magic = VEXO_FRAME_MAGIC;
    header.frame_type = VEXO_FRAME_AUDIO;
    header.frame_no = static_cast<unsigned>(number + 1);
    header.seconds = static_cast<unsigned>(moment / 1000000);
    header.microseconds = static_cast<unsigned>(moment % 1000000);
    header.data_length = static_cast<unsigned>(payload);
    header.codec = CODEC_ALAW;
    const unsigned char format[4] = {AUDIO_RATE & 0xFF, 16, 1, 16};
    memcpy(header.format, format, sizeof(format));
    return header;
}

AVCodecID CodecId(unsigned char codec) {
    return codec == CODEC_MULAW   ? AV_CODEC_ID_PCM_MULAW
           : codec == CODEC_ALAW  ? AV_CODEC_ID_PCM_ALAW
           : codec == CODEC_ADPCM ? AV_CODEC_ID_ADPCM_IMA_WAV
                                  : AV_CODEC_ID_NONE;
}

/** The decoders used here give 16-bit samples, interleaved or as the one plane of a single channel. */
void AddSamples(const AVFrame& frame, std::vector<int16_t>* samples) {
    const auto* decoded = reinterpret_cast<const int16_t*>(frame.extended_data[0]);
    samples->insert(samples->end(), decoded, decoded + frame.nb_samples);
}

}  // namespace

std::unique_ptr<Microphone> RecorderMicrophone() {
    const TalkSettings& settings = TheScenario().talk;
    if (settings.source == "tone") {
        return std::make_unique<ToneMicrophone>(settings.hz, settings.level);
    }
    static const std::vector<int16_t>& samples = *new std::vector<int16_t>(ReadSound(settings.source));
    if (samples.empty()) {
        return std::make_unique<ToneMicrophone>(0, 0);
    }
    return std::make_unique<FileMicrophone>(samples);
}

std::unique_ptr<Microphone> CameraMicrophone(unsigned index) {
    const CameraSettings& camera = TheScenario().cameras[index];
    return std::make_unique<ToneMicrophone>(camera.audio_hz, camera.audio_level);
}

AVCodecContext* TalkDecoder::Open(unsigned char codec) {
    if (m_codec != nullptr && m_opened == codec) {
        return m_codec.get();
    }
    const AVCodec* decoder = avcodec_find_decoder(CodecId(codec));
    m_codec.reset(decoder != nullptr ? avcodec_alloc_context3(decoder) : nullptr);
    if (m_codec == nullptr) {
        return nullptr;
    }
    m_codec->sample_rate = AUDIO_RATE;
    m_codec->bits_per_coded_sample = 4;
    m_codec->thread_count = 1;
    av_channel_layout_default(&m_codec->ch_layout, 1);
    if (avcodec_open2(m_codec.get(), decoder, nullptr) != 0) {
        m_codec.reset();
    }
    m_opened = codec;
    return m_codec.get();
}

bool TalkDecoder::Decode(unsigned char codec, const unsigned char* data, size_t size, std::vector<int16_t>* samples) {
    AVCodecContext* context = Open(codec);
    av_packet_unref(m_packet.get());
    if (context == nullptr || size == 0 || av_new_packet(m_packet.get(), static_cast<int>(size)) != 0) {
        return false;
    }
    memcpy(m_packet->data, data, size);
    if (avcodec_send_packet(context, m_packet.get()) != 0) {
        return false;
    }
    const size_t before = samples->size();
    while (avcodec_receive_frame(context, m_frame.get()) == 0) {
        AddSamples(*m_frame, samples);
    }
    return samples->size() > before;
}

Talk::Talk(std::unique_ptr<Microphone> microphone, std::string played_path, double now)
    : m_microphone(std::move(microphone)), m_begun(now), m_played(std::move(played_path)) {}

unsigned Talk::NextSize() const {
    const std::vector<unsigned>& sizes = TheScenario().talk.frames;
    return sizes[m_captured % sizes.size()];
}

/** Lets what is heard be coded until there is enough for a frame. */
bool Talk::Hear(size_t size) {
    while (m_coded.size() < size) {
        std::array<int16_t, AUDIO_BLOCK> samples;
        std::generate(samples.begin(), samples.end(), [this] { return m_microphone->Next(); });
        Packet packet;
        if (!m_encoder.Encode(samples.data(), &packet)) {
            return false;
        }
        m_coded.insert(m_coded.end(), packet.data, packet.data + packet.size);
    }
    return true;
}

// Frames that nobody fetched are left out; the sound itself goes on without a break.
std::vector<unsigned char> Talk::Capture(double now) {
    const auto heard = static_cast<int64_t>((now - m_begun) * AUDIO_RATE);
    for (; heard - m_sample >= SAMPLES_KEPT + AUDIO_BLOCK; ++m_number) {
        m_sample += NextSize();
    }
    const unsigned size = NextSize();
    if (heard < m_sample + size || !Hear(size)) {
        return {};
    }
    const double age = now - m_begun - static_cast<double>(m_sample) / AUDIO_RATE;
    const vexo_frame_header header = CapturedHeader(m_number++, age, size);
    m_sample += size;
    ++m_captured;
    std::vector<unsigned char> frame(sizeof(header) + size);
    memcpy(frame.data(), &header, sizeof(header));
    memcpy(frame.data() + sizeof(header), m_coded.data(), size);
    m_coded.erase(m_coded.begin(), m_coded.begin() + size);
    return frame;
}

bool Talk::Play(const unsigned char* frame, std::string* why) {
    vexo_frame_header header;
    memcpy(&header, frame, sizeof(header));
    if (header.magic != VEXO_FRAME_MAGIC || header.frame_type != VEXO_FRAME_AUDIO) {
        *why = "it does not begin as an audio frame does";
        return false;
    }
    if (header.data_length > LONGEST_PAYLOAD) {
        *why = "it claims " + std::to_string(header.data_length) + " bytes of sound";
        return false;
    }
    std::vector<int16_t> samples;
    if (!m_decoder.Decode(header.codec, frame + sizeof(header), header.data_length, &samples)) {
        *why = std::to_string(header.data_length) + " bytes of codec " + std::to_string(header.codec) +
               " cannot be decoded";
        return false;
    }
    if (!m_played.Append(samples.data(), samples.size())) {
        *why = "";
        Tell("what is played cannot be written to " + m_played.Path());
        return false;
    }
    return true;
}

}  // namespace simulator
