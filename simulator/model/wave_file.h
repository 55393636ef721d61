// A WAV file that is written as the sound comes: one channel, 16 bits, 8000 samples a second. It is whole after every
// piece, so that it can be listened to while it grows and after a process that was killed.
#ifndef SIMULATOR_MODEL_WAVE_FILE_H
#define SIMULATOR_MODEL_WAVE_FILE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace simulator {

/** For one thread at a time. */
class WaveFile {
public:
    /** The file begins with its first samples; until then there is none. */
    explicit WaveFile(std::string path) : m_path(std::move(path)) {}

    /** False when the file cannot be written: it keeps what it has. */
    bool Append(const int16_t* samples, size_t count);

    const std::string& Path() const { return m_path; }
    size_t Samples() const { return m_samples; }

private:
    struct Close {
        void operator()(FILE* file) const { fclose(file); }
    };

    bool WriteHeader();

    const std::string m_path;
    std::unique_ptr<FILE, Close> m_file;
    size_t m_samples = 0;
};

}  // namespace simulator

#endif
