#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";

vexo_hostmgr_playback::vexo_hostmgr_playback()
    : bStart(0),
      bPlay(0),
      bPause(0),
      bReverse(0),
      iSpeed(0),
      bAudio(0),
      dwNodeCnt(0),
      dwMode(0),
      struStartTime(),
      struStopTime(),
      struCurTime(),
      pfnStreamCallBack(NULL),
      pUser(NULL),
      pfnStreamCallBackV2(NULL),
      pUserV2(NULL),
      pHead(NULL),
      pTail(NULL),
      pAdvanceReader(NULL),
      hThread(0) {
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_playback lock");
    HOSTMGR_ASSERT_AT(FILE_TAG, 128, m_lock != NULL);
}

vexo_hostmgr_playback::~vexo_hostmgr_playback() {
    bStart = bPlay = bPause = bAudio = 0;
    bReverse = iSpeed = 0;
    if (hThread != 0) {
        vexo_utility_retrieve_thread(hThread);
        hThread = 0;
    }
    while (pHead != NULL)
        HostMgrDelPlayNode(pHead->hLogin, static_cast<int>(pHead->uCh + 1));
    if (pAdvanceReader != NULL) {
        vexo_model_delete_advance_avss_reader(pAdvanceReader, FILE_TAG, __func__);
        pAdvanceReader = NULL;
    }
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

HostMgrPlayNode* vexo_hostmgr_playback::FindNode(int nodeLogin, int lChannel) {
    const uint32_t channel = static_cast<uint32_t>(lChannel) - 1;
    for (HostMgrPlayNode* node = pHead; node != NULL; node = node->pNext) {
        if (node->uCh == channel && node->hLogin == nodeLogin)
            return node;
    }
    return NULL;
}

void vexo_hostmgr_playback::Unlink(HostMgrPlayNode* node) {
    (node->pPrev != NULL ? node->pPrev->pNext : pHead) = node->pNext;
    (node->pNext != NULL ? node->pNext->pPrev : pTail) = node->pPrev;
    node->pNext = NULL;
    node->pPrev = NULL;
    dwNodeCnt--;
}

int vexo_hostmgr_playback::HostMgrDelPlayNode(int nodeLogin, int lChannel) {
    HostMgrPlayNode* node = FindNode(nodeLogin, lChannel);
    if (node == NULL) {
        HOSTMGR_PUTS(ERROR, "Not find!!");
        return -1;
    }
    Unlink(node);
    if (node->pReader != NULL) {
        node->pReader->close();
        if (pAdvanceReader != NULL)
            pAdvanceReader->remove_reader(node->pReader);
    }
    HostMgrFreePlayNode(node);
    return 0;
}

int vexo_hostmgr_playback::HostMgrFreePlayNode(HostMgrPlayNode* node) {
    if (node == NULL)
        return 0;
    if (node->pReader != NULL) {
        node->pReader->close();
        vexo_model_delete_avss_reader(node->pReader, FILE_TAG, __func__);
    }
    if (node->pInquiryResult != NULL)
        vexo_model_free_inquiry_rec_result(node->pInquiryResult);
    vexo_utility_free(FILE_TAG, __func__, node);
    return 0;
}

// Playing is not built yet; each operation answers -1 and does nothing, the dump prints nothing.

int vexo_hostmgr_playback::HostMgr_Dev_StartHistoryPlay(int, int, unsigned int, _tagVexoHostMgrTime*,
                                                        _tagVexoHostMgrTime*) {
    return -1;
}

int vexo_hostmgr_playback::HostMgr_Dev_StartHistoryPlayV2(int, int, unsigned int, _tagVexoHostMgrTime*,
                                                          _tagVexoHostMgrTime*, vexo_hostmgr_stream_callback_v2,
                                                          void*) {
    return -1;
}

int vexo_hostmgr_playback::HostMgr_Dev_StopHistoryPlay(int, int) {
    return -1;
}

int vexo_hostmgr_playback::HostMgr_Dev_SetHistoryStreamCallback(int, int, vexo_hostmgr_stream_callback, void*) {
    return -1;
}

int vexo_hostmgr_playback::HostMgrHistoryStreamPlayControl(int, int, int, void*, unsigned int, void*, unsigned int,
                                                           void*, unsigned int) {
    return -1;
}

void vexo_hostmgr_playback::HostMgrPlaybackDump(unsigned int /*command*/, vexo_print_func /*print*/) {}
