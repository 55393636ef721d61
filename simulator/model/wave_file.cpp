#include "wave_file.h"

#include <algorithm>

#include "encoder.h"

namespace simulator {
namespace {

constexpr size_t HEADER = 44;
constexpr size_t SAMPLE = 2;                                      // bytes
constexpr size_t MOST_SAMPLES = (0xFFFFFFFFU - HEADER) / SAMPLE;  // what the header's sizes can tell

void Put(unsigned char* at, unsigned value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        at[i] = static_cast<unsigned char>(value >> 8 * i & 0xFF);
    }
}

}  // namespace

bool WaveFile::WriteHeader() {
    const auto bytes = static_cast<unsigned>(m_samples * SAMPLE);
    unsigned char header[HEADER] = {};
    std::copy_n("RIFF", 4, header);
    Put(header + 4, bytes + HEADER - 8, 4);
    std::copy_n("WAVEfmt ", 8, header + 8);
    Put(header + 16, 16, 4);  // bytes of the format that follows
    Put(header + 20, 1, 2);   // PCM
    Put(header + 22, 1, 2);   // channels
    Put(header + 24, AUDIO_RATE, 4);
    Put(header + 28, AUDIO_RATE * SAMPLE, 4);  // bytes a second
    Put(header + 32, SAMPLE, 2);               // bytes a moment
    Put(header + 34, SAMPLE * 8, 2);           // bits
    std::copy_n("data", 4, header + 36);
    Put(header + 40, bytes, 4);
    return fseek(m_file.get(), 0, SEEK_SET) == 0 && fwrite(header, HEADER, 1, m_file.get()) == 1 &&
           fseek(m_file.get(), 0, SEEK_END) == 0;
}

bool WaveFile::Append(const int16_t* samples, size_t count) {
    if (m_file == nullptr) {
        m_file.reset(fopen(m_path.c_str(), "w+be"));
        if (m_file == nullptr || !WriteHeader()) {
            return false;
        }
    }
    if (count > MOST_SAMPLES - m_samples) {
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        unsigned char bytes[SAMPLE];
        Put(bytes, static_cast<uint16_t>(samples[i]), SAMPLE);
        if (fwrite(bytes, SAMPLE, 1, m_file.get()) != 1) {
            return false;
        }
    }
    m_samples += count;
    return WriteHeader() && fflush(m_file.get()) == 0;
}

}  // namespace simulator
