// How the recorder encodes: the sub stream of each channel, and the zero channel.
#include "config_decode.h"

namespace hostmgrctl {
namespace {

using namespace decode;  // the tables are all about it
using Encode = _tagVexoHostMgrEncodeCfg;
using Zero = _tagVexoHostMgrZeroCodecCfg;

constexpr char KBITS[] = "kbit/s";
constexpr char FRAMES[] = "frames/s";

// ---- channels ------------------------------------------------------------------------------------------------------

constexpr Name ENCODE_MODES[] = {{0, "variable"}, {1, "constant"}};

/** Fixed values of an entry: they are 0 where its encoder could not be read. */
Shown EncoderRead(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const bool read = Word(bytes, size) != 0;
    return {read, read ? "yes" : "no"};
}

/** Best is 6; only a variable rate has one. */
Shown Quality(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const uint32_t level = Word(bytes, size);
    return {level, level == 0 ? "-" : std::to_string(level)};
}

constexpr Field ENCODE_FIELDS[] = {
    {nullptr, "", HOSTMGRCTL_MEMBER(Encode, dwSize), Number},
    {READABLE, "read", HOSTMGRCTL_MEMBER(Encode, byEncFixedA), EncoderRead},
    {"audio", "audio", HOSTMGRCTL_MEMBER(Encode, byAudioEnable), Flag},
    {"rate_mode", "rate", HOSTMGRCTL_MEMBER(Encode, byEncMode), Named<ENCODE_MODES>},
    {"quality", "quality", HOSTMGRCTL_MEMBER(Encode, byEncLevel), Quality},
    {nullptr, "", HOSTMGRCTL_MEMBER(Encode, dwEncZero), Number},
    {"kbps", "bit rate", HOSTMGRCTL_MEMBER(Encode, wEncValue), Measured<KBITS>},
    {nullptr, "", HOSTMGRCTL_MEMBER(Encode, byEncFixedB), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Encode, byEncFixedC), Number},
};

bool IsRead(const Entry& entry) {
    return entry.bytes[offsetof(Encode, byEncFixedA)] != 0;
}

Section EncodeSection() {
    Section section = {"channels", nullptr, Form::Rows, ENCODE_FIELDS};
    section.stride = sizeof(Encode);
    section.number = "channel";
    section.first = 1;
    section.read = IsRead;
    return section;
}

const Section ENCODE_SECTIONS[] = {EncodeSection()};

// ---- zero channel --------------------------------------------------------------------------------------------------

constexpr Name RESOLUTIONS[] = {{0, "at most 352 x 288"}, {1, "more than 352 x 288"}};
constexpr Name ZERO_MODES[] = {{0, "variable"}, {1, "constant"}};

constexpr unsigned char NOT_WRITTEN = 0xFF;

/** A word that the recorder leaves alone keeps what the buffer was filled with. */
Shown NumberIfWritten(const unsigned char* bytes, size_t size, const Look& look) {
    if (Word(bytes, size) == UINT32_MAX) {
        return {nullptr, "not told"};
    }
    return Number(bytes, size, look);
}

constexpr Field ZERO_FIELDS[] = {
    {"resolution", "picture", HOSTMGRCTL_MEMBER(Zero, dwResolution), Named<RESOLUTIONS>},
    {"kbps", "bit rate", HOSTMGRCTL_MEMBER(Zero, dwBitrate), Measured<KBITS>},
    {"rate_mode", "rate", HOSTMGRCTL_MEMBER(Zero, dwBitrateMode), Named<ZERO_MODES>},
    {"aux_mode", "auxiliary mode", HOSTMGRCTL_MEMBER(Zero, dwAuxMode), NumberIfWritten},
    {"fps", "frame rate", HOSTMGRCTL_MEMBER(Zero, dwFrameRate), Measured<FRAMES>},
    {"most_fps", "highest frame rate", HOSTMGRCTL_MEMBER(Zero, dwMaxFrameRate), Measured<FRAMES>},
};
constexpr Section ZERO_SECTIONS[] = {{nullptr, nullptr, Form::Lines, ZERO_FIELDS}};

}  // namespace

const Record ENCODING_RECORD = {"encoding",
                                "encoding of the channels' sub streams",
                                HOSTMGR_CONFIG_ENCODE,
                                sizeof(Encode),
                                "give channels that it has, such as -c 1-4",
                                ENCODE_SECTIONS,
                                true};
const Record ZERO_RECORD = {"zero-channel",
                            "encoding of the zero channel",
                            HOSTMGR_CONFIG_ZERO_CODEC,
                            sizeof(Zero),
                            "its zero channel cannot be asked",
                            ZERO_SECTIONS,
                            false,
                            true,
                            NOT_WRITTEN};

}  // namespace hostmgrctl
