#include "frame.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace hostmgrctl {
namespace {

struct CodecName {
    unsigned codec;
    const char* name;
};

constexpr CodecName AUDIO_CODECS[] = {
    {CODEC_G711_U, "G.711 mu-law"}, {CODEC_G711_A, "G.711 A-law"}, {CODEC_ADPCM, "ADPCM"}};

}  // namespace

Frame::Frame(const unsigned char* buffer, unsigned length, unsigned flags) : m_flags(flags) {
    memcpy(&m_header, buffer, std::min<size_t>(length, sizeof(m_header)));
    m_payload = buffer + sizeof(m_header);
    m_size = length > sizeof(m_header) ? length - sizeof(m_header) : 0;
}

bool Frame::IsKey() const {
    return m_header.dwFrameType == HOSTMGR_FRAME_MAIN_KEY || m_header.dwFrameType == HOSTMGR_FRAME_SUB_KEY ||
           m_header.dwFrameType == HOSTMGR_FRAME_ZERO_KEY;
}

const char* VideoCodecName(unsigned codec) {
    return codec == CODEC_H264 ? "H.264" : "unknown codec";
}

const char* AudioCodecName(unsigned codec) {
    const auto* found = std::find_if(std::begin(AUDIO_CODECS), std::end(AUDIO_CODECS),
                                     [codec](const CodecName& known) { return known.codec == codec; });
    return found != std::end(AUDIO_CODECS) ? found->name : "unknown codec";
}

}  // namespace hostmgrctl
