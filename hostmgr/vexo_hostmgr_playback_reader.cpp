// Reader playback: the model library's advance reader combines the channels' readers and pushes their frames into one
// callback on a thread of its own.
#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";

constexpr unsigned int FRAME_REFUSED = static_cast<unsigned int>(HOSTMGR_FRAME_REFUSED);

// ---- start ---------------------------------------------------------------------------------------------------------

// Channels of 0 and below pass on purpose: the model library gets what comes of them and decides.
int vexo_hostmgr_playback::HostMgr_Dev_StartHistoryPlayV2(int hLogin, int lChannel, unsigned int /*dwMode*/,
                                                          _tagVexoHostMgrTime* pStartTime,
                                                          _tagVexoHostMgrTime* pStopTime,
                                                          vexo_hostmgr_stream_callback_v2 pfnCallBack,
                                                          void* pUserOfCallBack) {
    HOSTMGR_PUTS(DEBUG, "**************HostMgr_Dev_StartHistoryPlayV2****************!!!");
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    if (lChannel > static_cast<int>(HOSTMGR_MAX_CHANNELS)) {
        HOSTMGR_PRINTF(ERROR, "lChannel:%d overflow %d!!\n", lChannel, HOSTMGR_MAX_CHANNELS);
        return -1;
    }
    if (pStartTime == NULL || pStopTime == NULL) {
        HOSTMGR_PUTS(ERROR, "pStartTime or pStopTime is null!!");
        return -1;
    }
    const ReaderPlay play = {hLogin, lChannel, *pStartTime, *pStopTime, pfnCallBack, pUserOfCallBack};
    int hStream = -1;
    const char* failure = NULL;
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
        failure = StartReaderPlay(play, &hStream);
    }
    if (failure != NULL)
        HOSTMGR_PUTS(ERROR, failure);
    return hStream;
}

/** Null on success, or the text of its failure for the caller to print when it has let the lock go. */
const char* vexo_hostmgr_playback::StartReaderPlay(const ReaderPlay& play, int* pStream) {
    if (bStart != 0)
        return "Has been started but not stop, why start again!!";
    if (creat_advance_avss_reader() != 0)
        return "creat_advance_avss_reader failed!!";
    if (!HostMgrAddPlayNode(play.hLogin, play.lChannel, &play.struStartTime, &play.struStopTime, pStream)) {
        destroy_advance_avss_reader(DetachAdvanceReader().reader);
        return "HostMgrAddPlayNode failed!!";
    }
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    pfnStreamCallBackV2 = play.pfnCallBack;
    pUserV2 = play.pUser;
    struStartTime = play.struStartTime;
    struStopTime = play.struStopTime;
    bStart = 1;
    return NULL;
}

// ---- the reader ----------------------------------------------------------------------------------------------------

int vexo_hostmgr_playback::creat_advance_avss_reader() {
    if (AdvanceReader() != NULL)
        return 0;
    vexo_advance_avss_file_reader* reader =
        vexo_model_new_advance_avss_reader(VEXO_USER_HOSTMGR, "vexo_hostmgr_playback");
    if (reader == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_model_new_advance_avss_reader failed!!");
        return -1;
    }
    reader->set_callback(VexoHisStreamCallBack);
    reader->set_param(0);
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    pAdvanceReader = reader;
    return 0;
}

/** Takes what is left of the channels' readers out of a detached reader, stops it and deletes it. */
void vexo_hostmgr_playback::destroy_advance_avss_reader(vexo_advance_avss_file_reader* reader) {
    RemoveReaders(reader);
    reader->stop();
    vexo_model_delete_advance_avss_reader(reader, FILE_TAG, __func__);
}

// A stop has always stopped the reader twice, by itself and with the deletion.
void vexo_hostmgr_playback::EndAdvanceReader(vexo_advance_avss_file_reader* reader) {
    reader->stop();
    destroy_advance_avss_reader(reader);
}

vexo_advance_avss_file_reader* vexo_hostmgr_playback::AdvanceReader() {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    return pAdvanceReader;
}

/** Takes the reader away from the play; nobody begins to use it then, but who uses it already may go on. */
vexo_hostmgr_playback::Detached vexo_hostmgr_playback::DetachAdvanceReader() {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    const Detached detached = {pAdvanceReader, FindLeaving(pAdvanceReader) != NULL};
    pAdvanceReader = NULL;
    return detached;
}

void vexo_hostmgr_playback::StartAdvanceReader(uint32_t dwPlay) {
    vexo_advance_avss_file_reader* reader = NULL;
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        if (dwPlay != m_play || pAdvanceReader == NULL)
            return;
        reader = pAdvanceReader;
        ++m_reader_uses;
    }
    reader->start(0);
    EndReaderUse();
}

void vexo_hostmgr_playback::EndReaderUse() {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    if (--m_reader_uses == 0)
        m_reader_idle.WakeAll();
}

// ---- channels that leave it ----------------------------------------------------------------------------------------
//
// An unlinked channel stays in its advance reader until whoever holds it last removes it, or until the reader itself is
// about to go.

/** A channel that is unlinked and still in that reader, or null. */
HostMgrPlayNode* vexo_hostmgr_playback::FindLeaving(const vexo_advance_avss_file_reader* reader) {
    HostMgrPlayNode* node = m_leaving;
    while (node != NULL && node->pLeaves != reader)
        node = node->pNext;
    return node;
}

/** The caller is to remove the channel's reader from the advance reader that this gives, and then to end its use. */
vexo_advance_avss_file_reader* vexo_hostmgr_playback::TakeFromLeaving(HostMgrPlayNode* node) {
    HostMgrPlayNode** link = &m_leaving;
    while (*link != node)
        link = &(*link)->pNext;
    *link = node->pNext;
    vexo_advance_avss_file_reader* reader = node->pLeaves;
    node->pNext = NULL;
    node->pLeaves = NULL;
    ++m_reader_uses;
    return reader;
}

/** Removes every channel that is left in a detached reader, which may wait for its callback, and waits until nobody is
 *  inside one of its operations. */
void vexo_hostmgr_playback::RemoveReaders(vexo_advance_avss_file_reader* reader) {
    for (;;) {
        HostMgrPlayNode* node = NULL;
        {
            HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
            node = FindLeaving(reader);
            if (node != NULL) {
                TakeFromLeaving(node);
                ++node->dwHolds;
            } else {
                while (m_reader_uses != 0)
                    m_reader_idle.Wait(HostMgrPlayNode::s_lock);
            }
        }
        if (node == NULL)
            return;
        reader->remove_reader(node->pReader);
        EndReaderUse();
        LetGo(node);
    }
}

// ---- delivery ------------------------------------------------------------------------------------------------------

/** Called by the advance reader on its own thread, for a channel that it has not removed yet. */
unsigned int vexo_hostmgr_playback::VexoHisStreamCallBack(void* usr_para, VEXO_BOOL is_valid_data,
                                                          unsigned char* frame) {
    HostMgrPlayNode* node = static_cast<HostMgrPlayNode*>(usr_para);
    if (node == NULL) {
        HOSTMGR_PUTS(ERROR, "usr_para is NULL");
        return FRAME_REFUSED;
    }
    if (node->pPlayback == NULL) {
        HOSTMGR_PUTS(ERROR, "Playback is NULL!!");
        return FRAME_REFUSED;
    }
    if (frame == NULL) {
        HOSTMGR_PUTS(DEBUG, "Send NULL Frame to finish playback!!!");
        Deliver(node, NULL);
        return 0;
    }
    if (is_valid_data == VEXO_FALSE) {
        HOSTMGR_PUTS(ERROR, "is_valid_data");
        return FRAME_REFUSED;
    }
    return Deliver(node, frame) != 0 ? FRAME_REFUSED : 0;
}

/** Holds the channel meanwhile: the callback may delete it. One that has been deleted already takes nothing. */
int vexo_hostmgr_playback::Deliver(HostMgrPlayNode* node, unsigned char* frame) {
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        if (node->bUnlinked)
            return -1;
        ++node->dwHolds;
    }
    const int result = node->pPlayback->HostMgrHistoryStreamPlayData(node, frame);
    LetGo(node);
    return result;
}

// Here any pause but 0 holds the play, where the replay thread looks for exactly 1. Both are relied on.
int vexo_hostmgr_playback::HostMgrHistoryStreamPlayData(HostMgrPlayNode* node, unsigned char* frame) {
    if (bStart == 0 || bPlay == 0 || bPause != 0)
        return -1;
    vexo_hostmgr_stream_callback_v2 callBack = node->pfnNodeCallBackV2;
    void* user = node->pNodeUserV2;
    {
        HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
        if (pfnStreamCallBackV2 != NULL) {
            callBack = pfnStreamCallBackV2;
            user = pUserV2;
        }
    }
    if (callBack == NULL)
        return -1;
    unsigned int length = 0;
    if (frame != NULL) {
        const vexo_frame_header header = HostMgrFrameHeader(frame);
        length = header.data_length + HOSTMGR_FRAME_HEADER_SIZE;
        SetCurTime(header.seconds);
    } else {
        HOSTMGR_PUTS(DEBUG, "Send NULL Frame to finish playback!!!");
    }
    return callBack(node->hLogin, static_cast<int>(node->hStream), static_cast<int>(node->uCh + 1),
                    static_cast<int>(node->dwStreamType), frame, length, user);
}
