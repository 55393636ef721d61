#include "vexo_hostmgr_lv.h"

#include "hostmgr_text.h"

static const char FILE_TAG[] = "vexo_hostmgr_lv";

constexpr unsigned int SLOT_TABLE_SIZE = sizeof(HostMgrLvInfo) * HOSTMGR_LV_SLOTS;
constexpr unsigned int CHANNEL_MAX = 256;
constexpr unsigned int STREAM_MAIN = 1;
constexpr unsigned int STREAM_SUB = 2;
constexpr unsigned int FLAG_NO_VIDEO = 0x4;

vexo_hostmgr_lv::vexo_hostmgr_lv() {
    m_lv_info =
        static_cast<HostMgrLvInfo*>(vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_LIVE_SLOTS, SLOT_TABLE_SIZE, 1));
    HOSTMGR_ASSERT(FILE_TAG, m_lv_info != NULL);
    memset(m_lv_info, 0, SLOT_TABLE_SIZE);
    m_lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_lv");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
    memset(&m_zero, 0, sizeof(m_zero));
}

// Frames that a slot still holds are not released here: the login that held them is gone with the object.
vexo_hostmgr_lv::~vexo_hostmgr_lv() {
    vexo_utility_free(FILE_TAG, __func__, m_lv_info);
    m_lv_info = NULL;
    memset(&m_zero, 0, sizeof(m_zero));
    vexo_utility_delete_rw_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// Live view needs no start: a stream buffer is enough. The two calls exist for agents that expect them.

int vexo_hostmgr_lv::HostMgr_Dev_StartRealPlay(int, int, int) {
    return 0;
}

int vexo_hostmgr_lv::HostMgr_Dev_StopRealPlay(int, int, int) {
    return 0;
}

// ---- slots ---------------------------------------------------------------------------------------------------------

HostMgrLvInfo* vexo_hostmgr_lv::FindFreeSlot() {
    for (uint32_t index = 0; index < HOSTMGR_LV_SLOTS; ++index) {
        if (m_lv_info[index].hLogin == 0)
            return &m_lv_info[index];
    }
    return NULL;
}

/** The slot that a handle names: slot index in its high half, login in its low half. Null when they do not match. */
HostMgrLvInfo* vexo_hostmgr_lv::FindSlot(int hID) {
    const uint32_t index = static_cast<uint32_t>(hID) >> 16;
    if (index >= HOSTMGR_LV_SLOTS)
        return NULL;
    HostMgrLvInfo* slot = &m_lv_info[index];
    return slot->hLogin == static_cast<uint32_t>(HostMgrLoginOfHandle(hID)) ? slot : NULL;
}

// Channel 0 passes on purpose: the model library then gets 0xFFFFFFFF and decides.
int vexo_hostmgr_lv::HostMgr_Dev_CreateRealStreamBuffer(int hLogin, unsigned int dwChannel, unsigned int dwStreamIdx) {
    if (dwChannel > CHANNEL_MAX || hLogin < 0 || dwStreamIdx < STREAM_MAIN || dwStreamIdx > STREAM_SUB) {
        HOSTMGR_PRINTF(ERROR, "Invalid Param:dwChannel %d, dwStreamIdx %d \n", dwChannel, dwStreamIdx);
        return -1;
    }
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrLvInfo* slot = FindFreeSlot();
    if (slot == NULL) {
        HOSTMGR_PUTS(ERROR, "Not find !!");
        return -1;
    }
    memset(slot, 0, sizeof(*slot));
    slot->hLogin = static_cast<uint32_t>(hLogin);
    slot->dwChannel = dwChannel;
    slot->dwStreamIdx = dwStreamIdx;
    slot->bVideoFirst = 1;
    slot->bAudioFirst = 1;
    slot->dwLastEncType = VEXO_ENC_STR_AUDIO;
    slot->bReleased = 1;
    slot->bAudioEnable = 1;
    const uint32_t index = static_cast<uint32_t>(slot - m_lv_info);
    return static_cast<int>((static_cast<uint32_t>(hLogin) & 0xFFFF) | index << 16);
}

int vexo_hostmgr_lv::HostMgr_Dev_DestroyRealStreamBuffer(int hID) {
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrLvInfo* slot = FindSlot(hID);
    if (slot == NULL)
        return -1;
    ReleaseHeldFrame(slot);
    memset(slot, 0, sizeof(*slot));
    return 0;
}

int vexo_hostmgr_lv::HostMgr_Dev_RealStreamBufferEnableAudio(int hID, unsigned int bEnable) {
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrLvInfo* slot = FindSlot(hID);
    if (slot == NULL) {
        HOSTMGR_PUTS(ERROR, "index == -1");
        return -1;
    }
    slot->bAudioEnable = bEnable;
    return 0;
}

// ---- reading -------------------------------------------------------------------------------------------------------

void vexo_hostmgr_lv::ReleaseHeldFrame(HostMgrLvInfo* slot) {
    if (slot->bReleased == 1)
        return;
    const vexo_enc_str_type type = static_cast<vexo_enc_str_type>(slot->dwLastEncType);
    const vexo_read_av_list_note* node = type == VEXO_ENC_STR_AUDIO ? &slot->stAudioNode : &slot->stVideoNode;
    vexo_model_rel_frame(slot->dwChannel - 1, VEXO_USER_HOSTMGR, type, node);
    slot->bReleased = 1;
}

// The first frame of a kind opens the reading; a failure there does not fall through to the list read.
bool vexo_hostmgr_lv::ReadFrameOfType(HostMgrLvInfo* slot, vexo_enc_str_type type, LiveFrame* read) {
    const bool audio = type == VEXO_ENC_STR_AUDIO;
    if (audio && slot->bAudioEnable != 1)
        return false;
    *read = LiveFrame{type, NULL, {}, VEXO_FALSE};
    uint32_t& first = audio ? slot->bAudioFirst : slot->bVideoFirst;
    const vexo_read_av_list_note& current = audio ? slot->stAudioNode : slot->stVideoNode;
    const unsigned int channel = slot->dwChannel - 1;
    if (first == 0)
        return vexo_model_get_frame(channel, VEXO_USER_HOSTMGR, type, &current, &read->frame, &read->node,
                                    &read->bNoVideo) == 0;
    if (vexo_model_first_get_frame(channel, VEXO_USER_HOSTMGR, type, &read->frame, &read->node, &read->bNoVideo) != 0)
        return false;
    first = 0;
    return true;
}

// Video and audio take turns, starting from what was handed out last; the other kind is the second and last try.
bool vexo_hostmgr_lv::ReadNextFrame(HostMgrLvInfo* slot, LiveFrame* read) {
    const vexo_enc_str_type video = slot->dwStreamIdx == STREAM_MAIN ? VEXO_ENC_STR_MAIN : VEXO_ENC_STR_SUB;
    const bool lastWasAudio = slot->dwLastEncType == VEXO_ENC_STR_AUDIO;
    return ReadFrameOfType(slot, lastWasAudio ? video : VEXO_ENC_STR_AUDIO, read) ||
           ReadFrameOfType(slot, lastWasAudio ? VEXO_ENC_STR_AUDIO : video, read);
}

void vexo_hostmgr_lv::RememberFrame(HostMgrLvInfo* slot, const LiveFrame& read, const vexo_frame_header& header) {
    const bool audio = read.type == VEXO_ENC_STR_AUDIO;
    (audio ? slot->stAudioNode : slot->stVideoNode) = read.node;
    (audio ? slot->dwAudioFrameNo : slot->dwVideoFrameNo) = header.frame_no;
    slot->bReleased = 0;
    slot->bNoVideo = static_cast<uint32_t>(read.bNoVideo);
    slot->dwLastEncType = read.type;
}

int vexo_hostmgr_lv::HostMgr_Dev_ReadRealOneFrame(int hID, unsigned int* pChannel, unsigned int* pStreamIdx,
                                                  unsigned char** ppFrame, unsigned int* pLength,
                                                  unsigned int* pFrameInfo, unsigned int* pFlags) {
    if (hID < 0 || pChannel == NULL || pStreamIdx == NULL || ppFrame == NULL || pLength == NULL || pFrameInfo == NULL ||
        pFlags == NULL)
        return -1;
    *pChannel = *pStreamIdx = *pLength = *pFrameInfo = *pFlags = 0;
    *ppFrame = NULL;
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrLvInfo* slot = FindSlot(hID);
    if (slot == NULL)
        return -1;
    ReleaseHeldFrame(slot);
    LiveFrame read;
    if (!ReadNextFrame(slot, &read) || read.frame == NULL)
        return -1;
    const vexo_frame_header header = HostMgrFrameHeader(read.frame);
    *pChannel = slot->dwChannel;
    *pStreamIdx = slot->dwStreamIdx;
    *ppFrame = read.frame;
    *pLength = header.data_length + static_cast<unsigned int>(sizeof(header));
    *pFrameInfo = header.frame_type;
    RememberFrame(slot, read, header);
    if (read.bNoVideo == 1)
        *pFlags |= FLAG_NO_VIDEO;
    return 0;
}

// A handle that is not found is no error here; the answer is the lock's own.
int vexo_hostmgr_lv::HostMgr_Dev_ReleaseRealOneFrame(int hID) {
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrLvInfo* slot = FindSlot(hID);
    if (slot != NULL)
        ReleaseHeldFrame(slot);
    return lock.Unlock();
}

// ---- dump ----------------------------------------------------------------------------------------------------------

void vexo_hostmgr_lv::DumpSlot(uint32_t index, const HostMgrLvInfo& slot, vexo_print_func print) {
    static const char LINE[] = "******************************************\n";
    const bool main = slot.dwStreamIdx == STREAM_MAIN;
    print("%s", LINE);
    print("%s", TEXT_LIVE_STREAM);
    print("[%d]Login 0x%x, Channel %d, StreamType 0x%x\n", index, slot.hLogin, slot.dwChannel, slot.dwStreamIdx);
    print(TEXT_LIVE_NO_SIGNAL, slot.bNoVideo != 0 ? TEXT_IS : TEXT_IS_NOT);
    if (slot.bNoVideo == 0)
        print(TEXT_LIVE_VIDEO_FRAME, slot.dwVideoFrameNo);
    print(TEXT_LIVE_AUDIO_STATE, slot.bAudioEnable != 0 ? TEXT_OPEN : TEXT_CLOSED);
    if (slot.bAudioEnable != 0)
        print(TEXT_LIVE_AUDIO_FRAME, slot.dwAudioFrameNo);
    print("%s", main ? TEXT_LIVE_MAIN_LIST : TEXT_LIVE_SUB_LIST);
    vexo_rmta_dump_frame_list(slot.dwChannel - 1, main ? VEXO_ENC_STR_MAIN : VEXO_ENC_STR_SUB, print);
    print("%s", LINE);
}

void vexo_hostmgr_lv::HostMgrLiveDump(unsigned int /*command*/, vexo_print_func print) {
    if (m_lock->rd_trylock(FILE_TAG, __func__) != 0) {
        HostMgrPrintLockInfo(m_lock, HOSTMGR_DUMP_BUSY, print);
        return;
    }
    for (uint32_t index = 0; index < HOSTMGR_LV_SLOTS; ++index) {
        if (m_lv_info[index].hLogin != 0 && m_lv_info[index].dwChannel != 0)
            DumpSlot(index, m_lv_info[index], print);
    }
    m_lock->unlock(FILE_TAG, __func__);
}
