// The zero channel of a login's live view: one stream that shows several channels as a square mosaic.
#include "vexo_hostmgr_lv.h"

static const char FILE_TAG[] = "vexo_hostmgr_lv";

constexpr unsigned int ZERO_LIST_SIZE = 256;
constexpr unsigned int ZERO_SIDE_MAX = 8;             // pictures in a row of the largest mosaic
constexpr unsigned int ZERO_NO_CHANNEL = 0xFFFFFFFF;  // the list's first entry when the caller gave none

// ---- the list ------------------------------------------------------------------------------------------------------

/** What the model library is given. */
struct ZeroList {
    unsigned int channels[ZERO_LIST_SIZE];
    unsigned int pictures;
};

/** The smallest square that holds so many. More than the largest fall back to one picture: agents rely on it. */
static unsigned int PicturesFor(unsigned int dwCount) {
    for (unsigned int side = 1; side <= ZERO_SIDE_MAX; ++side) {
        if (side * side >= dwCount)
            return side * side;
    }
    return 1;
}

static ZeroList MakeZeroList(unsigned int dwCount, const unsigned int* pChannels) {
    ZeroList list = {{ZERO_NO_CHANNEL}, PicturesFor(dwCount)};
    for (unsigned int index = 0; index < list.pictures && index < dwCount; ++index)
        list.channels[index] = pChannels[index];
    return list;
}

// ---- start, mode, stop ---------------------------------------------------------------------------------------------

// A refused list leaves the mosaic enabled: it is the recorder's, and other logins may be reading it.
int vexo_hostmgr_lv::HostMgr_Dev_StartZeroCodec(int hLogin, int /*lReserved*/, unsigned int dwCount,
                                                unsigned int* pChannels) {
    if (dwCount == 0 || pChannels == NULL)
        return -1;
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    if (m_zero.bZeroStarted != 0)
        return -1;
    const unsigned int id = static_cast<unsigned int>(hLogin);
    if (vexo_model_zero_channel_set_enable(id, VEXO_TRUE) != 0) {
        HOSTMGR_PUTS(ERROR, "vexo_model_zero_channel_set_enable failed!!");
        return -1;
    }
    const ZeroList list = MakeZeroList(dwCount, pChannels);
    if (vexo_model_zero_channel_set_video_channels(id, list.channels, list.pictures) != 0) {
        HOSTMGR_PUTS(ERROR, "vexo_model_zero_channel_set_video_channels failed!!");
        return -1;
    }
    m_zero.bZeroStarted = 1;
    return HostMgrLoginOfHandle(hLogin);
}

// No state of ours changes, so no lock is taken; started or not does not matter either.
int vexo_hostmgr_lv::HostMgr_Dev_SetZeroCodecMode(int lZeroCodecHandle, int /*lReserved*/, unsigned int dwCount,
                                                  unsigned int* pChannels) {
    if (lZeroCodecHandle <= 0) {
        HOSTMGR_PUTS(ERROR, "lZeroCodecHandle <= 0 !!");
        return -1;
    }
    if (pChannels == NULL && dwCount > 0)
        return -1;
    const ZeroList list = MakeZeroList(dwCount, pChannels);
    const unsigned int id = static_cast<unsigned int>(HostMgrLoginOfHandle(lZeroCodecHandle));
    if (vexo_model_zero_channel_set_video_channels(id, list.channels, list.pictures) != 0) {
        HOSTMGR_PUTS(ERROR, "vexo_model_zero_channel_set_video_channels failed!!");
        return -1;
    }
    return 0;
}

// The recorder goes on encoding. A frame that was read without a start is forgotten, not released: agents know it so.
int vexo_hostmgr_lv::HostMgr_Dev_StopZeroCodec(int lZeroCodecHandle) {
    if (lZeroCodecHandle < 1) {
        HOSTMGR_PUTS(ERROR, "lZeroCodecHandle <= 0 !!");
        return -1;
    }
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    if (m_zero.bZeroStarted != 0)
        ReleaseZeroFrame();
    m_zero = {};
    return 0;
}

// ---- reading -------------------------------------------------------------------------------------------------------

void vexo_hostmgr_lv::ReleaseZeroFrame() {
    if (m_zero.bZeroHeld == 0)
        return;
    vexo_model_zero_channel_rel_frame(VEXO_USER_HOSTMGR, &m_zero.stZeroNode);
    m_zero.bZeroHeld = 0;
}

// The frame before is released only once there is a next one: the search starts at its position.
bool vexo_hostmgr_lv::ReadZeroFrame(unsigned char** ppFrame, vexo_read_av_list_note* node) {
    if (vexo_model_zero_channel_get_frame(VEXO_USER_HOSTMGR, &m_zero.stZeroNode, ppFrame, node) != 0)
        return false;
    ReleaseZeroFrame();
    return true;
}

int vexo_hostmgr_lv::HostMgr_Dev_ReadZeroCodecStream(int lZeroCodecHandle, unsigned int /*dwReserved*/,
                                                     unsigned char** ppFrame, unsigned int* pLength,
                                                     unsigned int* pFrameInfo) {
    if (ppFrame == NULL || pLength == NULL || lZeroCodecHandle <= 0 || pFrameInfo == NULL) {
        HOSTMGR_PUTS(ERROR, "lZeroCodecHandle <= 0 !!");
        return -1;
    }
    *pLength = *pFrameInfo = 0;
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    unsigned char* frame = NULL;
    vexo_read_av_list_note node = {};
    if (m_zero.bZeroFirstRead == 0) {
        HOSTMGR_PRINTF(DEBUG, "video_first %d\n", m_zero.bZeroFirstRead);
        if (vexo_model_zero_channel_first_get_frame(VEXO_USER_HOSTMGR, &frame, &node) != 0) {
            HOSTMGR_PUTS(ERROR, "vexo_model_zero_channel_first_get_frame failed!!");
            return -1;
        }
        m_zero.bZeroFirstRead = 1;
    } else if (!ReadZeroFrame(&frame, &node)) {
        return -1;
    }
    if (frame == NULL)
        return -1;
    const vexo_frame_header header = HostMgrFrameHeader(frame);
    *ppFrame = frame;
    *pLength = header.data_length + static_cast<unsigned int>(sizeof(header));
    *pFrameInfo = header.frame_type;
    m_zero.stZeroNode = node;
    m_zero.bZeroHeld = 1;
    return 0;
}
