// A frame of the recorder as the tool sees it: what the header and the outputs of a read say, in plain terms. How
// frames are read, counted or written does not belong here.
#ifndef HOSTMGRCTL_FRAME_H
#define HOSTMGRCTL_FRAME_H

#include <hostmgr_dev.h>

#include <cstddef>
#include <cstdint>

namespace hostmgrctl {

/** Codec numbers in a frame header. */
constexpr unsigned CODEC_H264 = 1;    ///< of a video frame
constexpr unsigned CODEC_G711_U = 1;  ///< of an audio frame
constexpr unsigned CODEC_G711_A = 2;  ///< of an audio frame
constexpr unsigned CODEC_ADPCM = 4;   ///< of an audio frame
constexpr int G711_RATE = 8000;       ///< samples a second, one byte each

class Frame {
public:
    Frame() = default;

    /** From what a read hands out; the payload is borrowed and valid as long as the buffer. */
    Frame(const unsigned char* buffer, unsigned length, unsigned flags);

    bool IsAudio() const { return m_header.dwFrameType == HOSTMGR_FRAME_AUDIO; }
    /** Video that is decodable on its own. */
    bool IsKey() const;
    /** The recorder reports that the channel has no video signal. */
    bool NoSignal() const { return (m_flags & HOSTMGR_LIVE_NO_VIDEO) != 0; }

    unsigned Number() const { return m_header.dwFrameNo; }
    /** Time stamp, microseconds since 1970. */
    int64_t Time() const { return m_header.dwSeconds * INT64_C(1000000) + m_header.dwMicroSeconds; }
    unsigned Codec() const { return m_header.byFormat[0]; }
    /** Video: nominal frames a second, 0 when the recorder does not say. */
    unsigned Rate() const { return m_header.byFormat[1]; }
    /** Video: pixels, 0 when the recorder does not say. */
    unsigned Width() const { return m_header.byFormat[8] | m_header.byFormat[9] << 8U; }
    unsigned Height() const { return m_header.byFormat[10] | m_header.byFormat[11] << 8U; }

    const uint8_t* Payload() const { return m_payload; }
    size_t Size() const { return m_size; }

private:
    _tagVexoHostMgrFrameHeader m_header = {};
    const uint8_t* m_payload = nullptr;
    size_t m_size = 0;
    unsigned m_flags = 0;
};

/** "H.264", "G.711 A-law" ... or "unknown codec". */
const char* VideoCodecName(unsigned codec);
const char* AudioCodecName(unsigned codec);

}  // namespace hostmgrctl

#endif
