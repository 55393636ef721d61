// The channels of a play: how one is made, linked, found, held, unlinked and freed.
#include <new>

#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";

constexpr unsigned int ALL_RECORD_TYPES = 0xFFFF;

HostMgrLeafLock HostMgrPlayNode::s_lock;

// ---- making --------------------------------------------------------------------------------------------------------

static HostMgrPlayNode* NewNode() {
    const unsigned int size = sizeof(HostMgrPlayNode);
    void* memory = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_PLAY_NODE, size, 1);
    return memory != NULL ? new (memory) HostMgrPlayNode() : NULL;
}

HostMgrPlayNode* vexo_hostmgr_playback::HostMgrMallocPlayNode(int hLogin, int lChannel,
                                                              const _tagVexoHostMgrTime* pStartTime,
                                                              const _tagVexoHostMgrTime* pStopTime) {
    const unsigned int channel = static_cast<unsigned int>(lChannel) - 1;
    vexo_time_struct start = {};
    vexo_time_struct stop = {};
    HostMgrHostToVexoTime(pStartTime, &start);
    HostMgrHostToVexoTime(pStopTime, &stop);
    vexo_rec_file_inquiry_result* files = NULL;
    if (vexo_model_inquiry_rec_by_time(static_cast<unsigned int>(hLogin), VEXO_USER_HOSTMGR, channel, &start, &stop,
                                       ALL_RECORD_TYPES, 0, &files) != 0) {
        HOSTMGR_PRINTF(ERROR,
                       "vexo_model_inquiry_rec_by_time error Channel[%d] StartTime[%04d-%02d-%02d %02d:%02d:%02d] "
                       "StopTime[%04d-%02d-%02d %02d:%02d:%02d]\n",
                       channel, start.year, start.month, start.day, start.hour, start.minute, start.second, stop.year,
                       stop.month, stop.day, stop.hour, stop.minute, stop.second);
        return NULL;
    }
    vexo_avss_file_reader* reader = vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "avss reader for hostmgr playback");
    if (reader == NULL) {
        vexo_model_free_inquiry_rec_result(files);
        HOSTMGR_PUTS(ERROR, "vexo_model_new_avss_reader failed!!");
        return NULL;
    }
    HostMgrPlayNode* node = NewNode();
    if (node == NULL) {
        // Reader and list stay with the recorder: it has always been so, and its accounting shows it.
        HOSTMGR_PUTS(ERROR, "vexo_utility_malloc failed!!");
        return NULL;
    }
    node->hLogin = hLogin;
    node->uCh = channel;
    node->hStream = static_cast<uint32_t>(hLogin) << 16 | static_cast<uint32_t>(lChannel);
    node->dwMode = dwMode;
    node->dwStreamType = HOSTMGR_STREAM_MAIN;
    node->pInquiryResult = files;
    node->pReader = reader;
    node->pPlayback = this;
    reader->open(files);
    return node;
}

static long PrintTime(const HostMgrSite& site, const char* format, const _tagVexoHostMgrTime& time) {
    time_t seconds = 0;
    HostMgrHostTimeToSeconds(&time, &seconds);
    HostMgrPrintf(HOSTMGR_LEVEL_DEBUG, site, format, time.dwYear, time.dwMonth, time.dwDay, time.dwHour, time.dwMinute,
                  time.dwSecond, static_cast<long>(seconds));
    return static_cast<long>(seconds);
}

/** False when there is no such node now; *pStream, the handle, is told apart from that: some handles equal -1. */
bool vexo_hostmgr_playback::HostMgrAddPlayNode(int hLogin, int lChannel, const _tagVexoHostMgrTime* pStartTime,
                                               const _tagVexoHostMgrTime* pStopTime, int* pStream) {
    HostMgrPlayNode* node = HostMgrMallocPlayNode(hLogin, lChannel, pStartTime, pStopTime);
    if (node == NULL) {
        HOSTMGR_PUTS(ERROR, "HostMgrMallocPlayNode failed!!");
        return false;
    }
    vexo_avss_file_reader* reader = node->pReader;
    reader->set_stream_type(HostMgrReaderStreamType(node->dwStreamType));
    reader->set_direction(bReverse != 0 ? HOSTMGR_READ_BACKWARD : HOSTMGR_READ_FORWARD);
    reader->set_frame_mode(HOSTMGR_READ_ALL_FRAMES);
    reader->start();
    const long start = PrintTime(
        HOSTMGR_HERE, "**** StartTime %04d-%02d-%02d %02d:%02d:%02d, linux_time_start %ld ******\n", *pStartTime);
    const long stop = PrintTime(
        HOSTMGR_HERE, "**** StopTime  %04d-%02d-%02d %02d:%02d:%02d, linux_time_stop %ld ******\n", *pStopTime);
    vexo_advance_avss_file_reader* advance = AdvanceReader();
    if (advance != NULL)
        advance->add_reader(reader, node);
    reader->set_time_range(start, stop);
    *pStream = static_cast<int>(node->hStream);
    Link(node);
    return true;
}

void vexo_hostmgr_playback::Link(HostMgrPlayNode* node) {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    node->pPrev = pTail;
    (pTail != NULL ? pTail->pNext : pHead) = node;
    pTail = node;
    ++dwNodeCnt;
}

uint32_t vexo_hostmgr_playback::NodeCount() {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    return dwNodeCnt;
}

// ---- walking -------------------------------------------------------------------------------------------------------

vexo_hostmgr_playback::Walk::Walk(vexo_hostmgr_playback* play) : m_play(play), m_held(NULL) {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    m_next = play->pHead;
    m_other = play->m_walks;
    play->m_walks = this;
}

vexo_hostmgr_playback::Walk::~Walk() {
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        Walk** link = &m_play->m_walks;
        while (*link != this)
            link = &(*link)->m_other;
        *link = m_other;
    }
    if (m_held != NULL)
        LetGo(m_held);
}

/** The next node, held until the one after it is asked for; null at the end. */
HostMgrPlayNode* vexo_hostmgr_playback::Walk::Next() {
    HostMgrPlayNode* done = m_held;
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        m_held = m_next;
        if (m_held != NULL) {
            ++m_held->dwHolds;
            m_next = m_held->pNext;
        }
    }
    if (done != NULL)
        LetGo(done);
    return m_held;
}

// ---- deleting ------------------------------------------------------------------------------------------------------

/** Takes a node out of the list, whose hold goes to the caller. */
void vexo_hostmgr_playback::Unlink(HostMgrPlayNode* node) {
    for (Walk* walk = m_walks; walk != NULL; walk = walk->m_other) {
        if (walk->m_next == node)
            walk->m_next = node->pNext;
    }
    (node->pPrev != NULL ? node->pPrev->pNext : pHead) = node->pNext;
    (node->pNext != NULL ? node->pNext->pPrev : pTail) = node->pPrev;
    node->pNext = NULL;
    node->pPrev = NULL;
    node->bUnlinked = true;
    --dwNodeCnt;
    if (pAdvanceReader == NULL)
        return;
    node->pLeaves = pAdvanceReader;
    node->pNext = m_leaving;
    m_leaving = node;
}

/** Deletes the first node of that login and channel, which need not be the one that the caller came from. */
int vexo_hostmgr_playback::HostMgrDelPlayNode(int hLogin, int lChannel) {
    const uint32_t channel = static_cast<uint32_t>(lChannel) - 1;
    HostMgrPlayNode* node = NULL;
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        node = pHead;
        while (node != NULL && (node->uCh != channel || node->hLogin != hLogin))
            node = node->pNext;
        if (node != NULL)
            Unlink(node);
    }
    if (node == NULL) {
        HOSTMGR_PUTS(ERROR, "Not find!!");
        return -1;
    }
    LetGo(node);
    return 0;
}

void vexo_hostmgr_playback::DeleteAllNodes() {
    for (;;) {
        HostMgrPlayNode* node = NULL;
        {
            HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
            node = pHead;
            if (node != NULL)
                Unlink(node);
        }
        if (node == NULL)
            return;
        LetGo(node);
    }
}

// Of two streams of one channel, the end of either takes the first in the list away: agents have always seen it so. The
// other one goes with the next pass.
void vexo_hostmgr_playback::HostMgrClearFinishedNodes() {
    Walk walk(this);
    while (const HostMgrPlayNode* node = walk.Next()) {
        if (node->bFinish != 0)
            HostMgrDelPlayNode(node->hLogin, static_cast<int>(node->uCh + 1));
    }
}

/** Lets go of a node; the last to do so takes it out of its advance reader, closes it and frees it. */
void vexo_hostmgr_playback::LetGo(HostMgrPlayNode* node) {
    vexo_advance_avss_file_reader* advance = NULL;
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        if (--node->dwHolds != 0)
            return;
        if (node->pLeaves != NULL)
            advance = node->pPlayback->TakeFromLeaving(node);
    }
    node->pReader->close();
    if (advance != NULL) {
        advance->remove_reader(node->pReader);
        node->pPlayback->EndReaderUse();
    }
    HostMgrFreePlayNode(node);
}

// The reader has been closed once before, while it was still to be removed; closing it again does no harm.
void vexo_hostmgr_playback::HostMgrFreePlayNode(HostMgrPlayNode* node) {
    node->pReader->close();
    vexo_model_delete_avss_reader(node->pReader, FILE_TAG, __func__);
    if (node->pInquiryResult != NULL)
        vexo_model_free_inquiry_rec_result(node->pInquiryResult);
    vexo_utility_free(FILE_TAG, __func__, node);
}
