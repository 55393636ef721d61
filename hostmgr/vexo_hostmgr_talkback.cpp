#include "vexo_hostmgr_talkback.h"

static const char FILE_TAG[] = "vexo_hostmgr_talkback";

/** The send block: a 24-byte header and up to sixteen 320-byte frames fit into it. */
constexpr unsigned int TALK_BLOCK_SIZE = 5120;

vexo_hostmgr_talkback::vexo_hostmgr_talkback()
    : hLogin(0),
      hTalk(0),
      fnTalkCallback(NULL),
      pUser(NULL),
      bRun(0),
      m_TalkAudioData{0, NULL},
      m_TalkPlayQueue{0, NULL, NULL},
      hThread(0) {
    m_TalkAudioData.audioData =
        static_cast<unsigned char*>(vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, TALK_BLOCK_SIZE, 1));
    HOSTMGR_ASSERT(FILE_TAG, NULL != m_TalkAudioData.audioData);
    memset(m_TalkAudioData.audioData, 0, TALK_BLOCK_SIZE);
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_talkback");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
    m_TalkPlayLock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_talkback play lock");
    HOSTMGR_ASSERT(FILE_TAG, m_TalkPlayLock != NULL);
}

vexo_hostmgr_talkback::~vexo_hostmgr_talkback() {
    vexo_utility_free(FILE_TAG, __func__, m_TalkAudioData.audioData);
    m_TalkAudioData = {0, NULL};
    {
        HostMgrLockScope playLock(m_TalkPlayLock, FILE_TAG, __func__);
        HostMgrClrTalkPlayNode();
    }
    if (hThread != 0) {
        vexo_utility_retrieve_thread(hThread);
        hThread = 0;
    }
    vexo_utility_delete_lock(m_TalkPlayLock, FILE_TAG, __func__);
    m_TalkPlayLock = NULL;
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

void vexo_hostmgr_talkback::HostMgrClrTalkPlayNode() {
    while (m_TalkPlayQueue.pHead != NULL) {
        HostMgrTalkPlayNode* node = m_TalkPlayQueue.pHead;
        m_TalkPlayQueue.pHead = node->pNext;
        m_TalkPlayQueue.dwNodeCnt--;
        if (node->pFrame != NULL)
            vexo_utility_free(FILE_TAG, __func__, node->pFrame);
        vexo_utility_free(FILE_TAG, __func__, node);
    }
    m_TalkPlayQueue = {0, NULL, NULL};
}

// The talk is not built yet; each operation answers -1 and does nothing, the dump prints nothing.

int vexo_hostmgr_talkback::HostMgr_Dev_StartTalkEx(int, int, _tagVexoHostMgrTalkParam*) {
    return -1;
}

int vexo_hostmgr_talkback::HostMgr_Dev_StopTalk(int, int) {
    return -1;
}

int vexo_hostmgr_talkback::HostMgr_Dev_InputTalkData(int, int, char*, unsigned int) {
    return -1;
}

int vexo_hostmgr_talkback::HostMgr_Dev_SetTalkCallback(int, int, vexo_hostmgr_talk_callback, void*) {
    return -1;
}

void vexo_hostmgr_talkback::HostMgrTalkDump(unsigned int /*command*/, vexo_print_func /*print*/) {}
