// A WAV file of what is heard: whole when it is in its place. Where the sound comes from does not belong here.
#ifndef HOSTMGRCTL_WAVE_OUTPUT_H
#define HOSTMGRCTL_WAVE_OUTPUT_H

#include <memory>
#include <string>

#include "g711.h"

namespace hostmgrctl {

/**
 * 16 bits, mono, G711_RATE samples a second. It grows beside its place until Finish; without sound there is no file.
 * For one thread at a time; throws Failure with ExitCode::NoOutput when it cannot be written.
 */
class WaveOutput {
public:
    /** Looks whether the file can be written; a path that does not end with .wav throws with ExitCode::Usage. */
    explicit WaveOutput(std::string path);
    ~WaveOutput();
    WaveOutput(const WaveOutput&) = delete;
    WaveOutput& operator=(const WaveOutput&) = delete;

    void Append(const Samples& samples);

    /** Completes the file. */
    void Finish();

    const std::string& Path() const { return m_path; }
    /** Bytes of the completed file; 0: there is none. */
    uint64_t Size() const { return m_size; }

private:
    struct Free {
        void operator()(AVFormatContext* format) const {
            avio_closep(&format->pb);
            avformat_free_context(format);
        }
    };

    void Open();
    void Check(int result) const;

    const std::string m_path;
    const std::string m_written;  ///< the path while it grows
    std::unique_ptr<AVFormatContext, Free> m_format;
    int64_t m_samples = 0;
    uint64_t m_size = 0;
};

}  // namespace hostmgrctl

#endif
