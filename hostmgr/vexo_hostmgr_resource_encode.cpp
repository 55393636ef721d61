// How the recorder encodes: the channels' sub streams and the zero channel.
#include "vexo_hostmgr_resource_config.h"

// ---- channels ------------------------------------------------------------------------------------------------------

constexpr unsigned int ENCODED_STREAM = 2;

// The recorder's rate modes, and what agents know them as: the other way round.
constexpr unsigned int RATE_MODE_CONSTANT = 0;
constexpr unsigned int RATE_MODE_VARIABLE = 1;

static void FillEncoder(const vexo_enc_para& para, _tagVexoHostMgrEncodeCfg* entry) {
    entry->byEncFixedA = 3;
    entry->byEncMode = para.mode == RATE_MODE_CONSTANT ? 1 : 0;
    entry->byEncLevel = para.mode == RATE_MODE_VARIABLE ? static_cast<uint8_t>(para.quality) : 0;
    entry->wEncValue = static_cast<uint16_t>(para.bps);
    entry->byEncFixedB = 2;
    entry->byEncFixedC = 1;
}

/** A channel that cannot be read leaves the rest of its entry at zero. */
static void FillChannel(unsigned int channel, unsigned char* place) {
    HostMgrRecordAt<_tagVexoHostMgrEncodeCfg> entry(place);
    entry->dwSize = sizeof(_tagVexoHostMgrEncodeCfg);
    VEXO_BOOL audio = VEXO_FALSE;
    if (vexo_model_get_audio_enable(channel, ENCODED_STREAM, &audio, 0) != 0)
        return;
    entry->byAudioEnable = audio != VEXO_FALSE ? 1 : 0;
    vexo_enc_para para;
    memset(&para, 0, sizeof(para));
    if (vexo_model_get_enc_para(channel, ENCODED_STREAM, &para, audio) == 0)
        FillEncoder(para, entry.Get());
}

int vexo_hostmgr_get_encode_cfg(const HostMgrConfigCall& call) {
    constexpr int64_t ENTRY_SIZE = sizeof(_tagVexoHostMgrEncodeCfg);
    if (call.dwSize != ENTRY_SIZE * call.lChanNum)
        return -1;
    call.Clear();
    call.SetReturned(call.dwSize);
    // Unsigned: a first channel of 0 or less names channels that the model library refuses, and never overflows.
    const unsigned int first = static_cast<unsigned int>(call.lStartChan) - 1;
    const unsigned int count = static_cast<unsigned int>(call.lChanNum);
    for (unsigned int index = 0; index < count; ++index)
        FillChannel(first + index, call.pBuffer + size_t{index} * sizeof(_tagVexoHostMgrEncodeCfg));
    return 0;
}

// ---- zero channel --------------------------------------------------------------------------------------------------

// The steps of the zero channel's record. Each gives null, or the text of its failure, and fills what it has read.

// The first text names another operation than the one that failed; it has always been so.
static const char* CheckResolutionAbility() {
    vexo_resolution_ability ability;
    memset(&ability, 0, sizeof(ability));
    if (vexo_model_zero_channel_get_resolution_ability(&ability) != 0)
        return "vexo_model_zero_channel_get_enable failed!!";
    return ability.node_num == 0 ? "node_num == 0!!" : NULL;
}

static const char* FillResolution(_tagVexoHostMgrZeroCodecCfg* record) {
    constexpr unsigned int SMALL_WIDTH = 352;
    constexpr unsigned int SMALL_HEIGHT = 288;
    vexo_resolution resolution;
    memset(&resolution, 0, sizeof(resolution));
    if (vexo_model_zero_channel_get_resolution(&resolution) != 0)
        return "vexo_model_zero_channel_get_resolution failed!!";
    record->dwResolution = resolution.width <= SMALL_WIDTH && resolution.height <= SMALL_HEIGHT ? 0 : 1;
    return NULL;
}

static const char* FillBitrate(_tagVexoHostMgrZeroCodecCfg* record) {
    unsigned int bps = 512;
    unsigned int mode = RATE_MODE_CONSTANT;
    if (vexo_model_zero_channel_get_bps(&bps, &mode) != 0)
        return "vexo_model_zero_channel_get_bps failed!!";
    record->dwBitrate = bps;
    record->dwBitrateMode = mode == RATE_MODE_CONSTANT ? 1 : 0;
    if (mode != RATE_MODE_CONSTANT)
        record->dwAuxMode = 0;
    return NULL;
}

static const char* FillFrameRate(_tagVexoHostMgrZeroCodecCfg* record) {
    unsigned int fps = 15;
    if (vexo_model_zero_channel_get_fps(&fps) != 0)
        return "vexo_model_zero_channel_get_fps failed!!";
    record->dwFrameRate = fps;
    record->dwMaxFrameRate = 25;
    return NULL;
}

static const char* FillZeroCodec(_tagVexoHostMgrZeroCodecCfg* record) {
    const char* failure = CheckResolutionAbility();
    if (failure == NULL)
        failure = FillResolution(record);
    if (failure == NULL)
        failure = FillBitrate(record);
    if (failure == NULL)
        failure = FillFrameRate(record);
    return failure;
}

// The one record whose buffer is not cleared: what is not written keeps the caller's bytes.
int vexo_hostmgr_get_zero_codec_cfg(const HostMgrConfigCall& call) {
    if (call.dwSize != sizeof(_tagVexoHostMgrZeroCodecCfg))
        return -1;
    call.SetReturned(sizeof(_tagVexoHostMgrZeroCodecCfg));
    HostMgrRecordAt<_tagVexoHostMgrZeroCodecCfg> record(call.pBuffer);
    const char* failure = FillZeroCodec(record.Get());
    if (failure == NULL)
        return 0;
    HostMgrPuts(HOSTMGR_LEVEL_ERROR, HOSTMGR_CONFIG_HERE, failure);
    return -1;
}
