// The talk's two ways of audio: captured frames gathered into blocks for the agent, the agent's frames queued and
// played one by one.
#include <sys/time.h>

#include <atomic>

#include "vexo_hostmgr_talkback.h"

static const char FILE_TAG[] = "vexo_hostmgr_talkback";

constexpr uint32_t FRAME_SIZE = HOSTMGR_TALK_FRAME_SIZE;
constexpr uint32_t BLOCK_HEADER_SIZE = HOSTMGR_TALK_HEADER_SIZE;
constexpr uint32_t FRAME_HEADER_SIZE = sizeof(vexo_frame_header);

constexpr unsigned int CAPTURE_SIZE = 4096;         // what the model library may write of a captured frame
constexpr unsigned int TALK_NO_FRAME = 0x401A0004;  // no frame that could be handed on

// The one message of the library with a prefix that is not its own: operators look for it so.
static const HostMgrLevel LEVEL_RTSP_ERROR = {"\033[0;32;31m", "[RTSP_SER] ERROR! %s[%d]:"};

// ---- from the recorder ---------------------------------------------------------------------------------------------

unsigned int vexo_hostmgr_talkback::HostMgrSendTalkData() {
    // A frame may claim more than was fetched; what follows then reads as silence, and stays within the buffer.
    unsigned char captured[FRAME_HEADER_SIZE + HOSTMGR_TALK_BLOCK_MAX] = {0};
    static_assert(sizeof(captured) >= CAPTURE_SIZE, "the model library writes that much");
    const uint32_t hTalk = CurrentTalk().hTalk;
    if (hTalk == 0 || vexo_model_get_talking_frame(hTalk, captured, CAPTURE_SIZE) != 0)
        return TALK_NO_FRAME;
    const uint32_t length = HostMgrFrameHeader(captured).data_length;
    if (length > HOSTMGR_TALK_BLOCK_MAX) {
        HOSTMGR_PRINTF(WARNING, "Get a big frame len %d, Why!!!\n", length);
        return TALK_NO_FRAME;
    }
    GatherAudio(captured + FRAME_HEADER_SIZE, length);
    return 0;
}

// Two things that agents are used to. A frame that does not fit goes to the very start of the block, over the header.
// And the length of a full block counts the last frame as 320 bytes, whatever its size.
void vexo_hostmgr_talkback::GatherAudio(const unsigned char* audio, uint32_t length) {
    uint32_t& frames = m_TalkAudioData.dwFrameCnt;
    uint32_t position = FRAME_SIZE * frames + BLOCK_HEADER_SIZE;
    if (position + length > HOSTMGR_TALK_BLOCK_MAX) {
        HandOverBlock(position);
        frames = 0;
        position = 0;
    }
    WriteBlockHeader(position + length);
    memcpy(m_TalkAudioData.audioData + position, audio, length);
    frames += length / FRAME_SIZE;
    if (frames >= HOSTMGR_TALK_BLOCK_FRAMES) {
        HandOverBlock(position + FRAME_SIZE);
        frames = 0;
    }
}

// Written anew with every frame: of a block's header only the bytes used change.
void vexo_hostmgr_talkback::WriteBlockHeader(uint32_t usedLen) {
    const _tagVexoHostMgrTalkBlockHeader header = {1, 16, 1, 25, 8000, 16, usedLen, 40, 0};
    memcpy(m_TalkAudioData.audioData, &header, sizeof(header));
}

// In a pass that a stop has overtaken nobody is called: the callback may already be the next talk's.
void vexo_hostmgr_talkback::HandOverBlock(uint32_t length) {
    Talk talk = {};
    {
        HostMgrLeafScope scope(m_leaf);
        if (m_turn == m_pass_turn)
            talk = m_talk;
    }
    if (talk.fnTalkCallback != NULL)
        talk.fnTalkCallback(talk.hLogin, static_cast<int>(talk.hTalk), m_TalkAudioData.audioData, length, talk.pUser);
}

// ---- to the recorder -----------------------------------------------------------------------------------------------

/** Counts the 320-byte frames of all logins. */
static std::atomic<uint32_t> s_play_frame_no{0};

/** The recorder's number for a codec of the agent's. */
static unsigned char PlayCodec(unsigned char codec) {
    switch (codec) {
        case HOSTMGR_TALK_G711U:
            return 1;
        case HOSTMGR_TALK_ADPCM:
            return 4;
        default:
            return 2;
    }
}

static vexo_frame_header PlayFrameHeader(const _tagVexoHostMgrTalkBlockHeader& input, uint32_t length) {
    struct timeval now;
    gettimeofday(&now, NULL);
    vexo_frame_header header = {};
    header.magic = VEXO_FRAME_MAGIC;
    header.frame_type = VEXO_FRAME_AUDIO;
    header.frame_no = s_play_frame_no.fetch_add(length / FRAME_SIZE, std::memory_order_relaxed);
    header.seconds = static_cast<unsigned int>(now.tv_sec);
    header.microseconds = static_cast<unsigned int>(now.tv_usec);
    header.data_length = length;
    header.codec = PlayCodec(input.byCodec);
    header.format[0] = static_cast<unsigned char>(input.dwSampleRate);
    header.format[1] = static_cast<unsigned char>(input.dwBits);
    header.format[2] = input.byAudioChannels;
    header.format[3] = input.bySampleBits;
    return header;
}

/** Room for a frame of the recorder; null also where its size is none that the platform can be asked for. */
static unsigned char* NewPlayFrame(uint64_t size) {
    if (size > UINT32_MAX)
        return NULL;
    return static_cast<unsigned char*>(
        vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, static_cast<unsigned int>(size), 1));
}

static void WritePlayFrame(const char* data, uint32_t size, unsigned char* frame) {
    _tagVexoHostMgrTalkBlockHeader input;
    memcpy(&input, data, sizeof(input));
    const uint32_t length = size - BLOCK_HEADER_SIZE;
    const vexo_frame_header header = PlayFrameHeader(input, length);
    memcpy(frame, &header, sizeof(header));
    memcpy(frame + sizeof(header), data + BLOCK_HEADER_SIZE, length);
}

static void FreePlayNode(HostMgrTalkPlayNode* node, const char* function) {
    if (node->pFrame != NULL)
        vexo_utility_free(FILE_TAG, function, node->pFrame);
    vexo_utility_free(FILE_TAG, function, node);
}

int vexo_hostmgr_talkback::HostMgr_Dev_InputTalkData(int hLogin, int hTalk, char* pData, unsigned int dwDataSize) {
    if (pData == NULL || dwDataSize == 0) {
        HOSTMGR_PRINTF(ERROR, "pData %p, dwDataSize %d\n", static_cast<void*>(pData), dwDataSize);
        return -1;
    }
    const uint32_t turn = Turn();
    const Talk talk = CurrentTalk();
    if (hLogin < 1 || hLogin != talk.hLogin) {
        HOSTMGR_PRINTF(ERROR, "hLogin 0x%x <= 0 || != 0x%x\n", static_cast<unsigned int>(hLogin),
                       static_cast<unsigned int>(talk.hLogin));
        return -1;
    }
    if (hTalk < 1 || static_cast<uint32_t>(hTalk) != talk.hTalk) {
        HOSTMGR_PRINTF(ERROR, "hTalk 0x%x <= 0\n", static_cast<unsigned int>(hTalk));
        return -1;
    }
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
        if (bRun == 0)
            return 0;
    }
    if (dwDataSize < BLOCK_HEADER_SIZE || (dwDataSize - BLOCK_HEADER_SIZE) / FRAME_SIZE == 0)
        return -1;
    return QueuePlayFrame(HOSTMGR_HERE, turn, pData, dwDataSize);
}

/** Input's second half, in Input's name. */
int vexo_hostmgr_talkback::QueuePlayFrame(const HostMgrSite& site, uint32_t turn, const char* data, uint32_t size) {
    HostMgrTalkPlayNode* node = static_cast<HostMgrTalkPlayNode*>(
        vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, sizeof(HostMgrTalkPlayNode), 1));
    if (node == NULL) {
        HostMgrPuts(LEVEL_RTSP_ERROR, site, "malloc for play node failed!!");
        return -1;
    }
    const uint64_t frameLen = uint64_t{size} - BLOCK_HEADER_SIZE + FRAME_HEADER_SIZE;
    *node = {NewPlayFrame(frameLen), static_cast<uint32_t>(frameLen), NULL, NULL};
    if (node->pFrame == NULL) {
        HostMgrPrintf(HOSTMGR_LEVEL_ERROR, site, "vexo_utility_malloc failed size %d!!\n", node->dwFrameLen);
        FreePlayNode(node, site.function);
        return -1;
    }
    WritePlayFrame(data, size, node->pFrame);
    HostMgrLockScope playLock(m_TalkPlayLock, FILE_TAG, site.function);
    // A stop that came in between has cleared the queue: the frame is dropped, and not kept for the next talk.
    if (Turn() == turn)
        HostMgrPushTalkPlayNode(node);
    else
        FreePlayNode(node, site.function);
    return 0;
}

// ---- the play queue ------------------------------------------------------------------------------------------------

// The play lock is held while a frame is played, so that a stop cannot free it meanwhile.
int vexo_hostmgr_talkback::HostMgrPlayTalkData() {
    HostMgrLockScope lock(m_TalkPlayLock, FILE_TAG, __func__);
    const uint32_t hTalk = CurrentTalk().hTalk;
    if (m_TalkPlayQueue.pHead == NULL || hTalk == 0)
        return -1;
    vexo_model_play_talking_frame(hTalk, m_TalkPlayQueue.pHead->pFrame);
    HostMgrPopAndFreeTalkPlayNode();
    return 0;
}

void vexo_hostmgr_talkback::HostMgrPushTalkPlayNode(HostMgrTalkPlayNode* node) {
    node->pPrev = m_TalkPlayQueue.pTail;
    (m_TalkPlayQueue.pTail != NULL ? m_TalkPlayQueue.pTail->pNext : m_TalkPlayQueue.pHead) = node;
    m_TalkPlayQueue.pTail = node;
    m_TalkPlayQueue.dwNodeCnt++;
}

void vexo_hostmgr_talkback::HostMgrPopAndFreeTalkPlayNode() {
    HostMgrTalkPlayNode* node = m_TalkPlayQueue.pHead;
    if (node == NULL)
        return;
    m_TalkPlayQueue.pHead = node->pNext;
    (node->pNext != NULL ? node->pNext->pPrev : m_TalkPlayQueue.pTail) = NULL;
    m_TalkPlayQueue.dwNodeCnt--;
    FreePlayNode(node, __func__);
}

void vexo_hostmgr_talkback::HostMgrClrTalkPlayNode() {
    while (m_TalkPlayQueue.pHead != NULL) {
        HostMgrTalkPlayNode* node = m_TalkPlayQueue.pHead;
        m_TalkPlayQueue.pHead = node->pNext;
        m_TalkPlayQueue.dwNodeCnt--;
        FreePlayNode(node, __func__);
    }
    m_TalkPlayQueue = {0, NULL, NULL};
}
