#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";

constexpr unsigned int REPLAY_THREAD_STACK = 0x80000;

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
      hThread(0),
      m_ending(Ending::NONE),
      m_stranded(false),
      m_walks(NULL),
      m_leaving(NULL),
      m_play(0),
      m_opening(false),
      m_reader_uses(0) {
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_playback lock");
    HOSTMGR_ASSERT_AT(FILE_TAG, 128, m_lock != NULL);
}

vexo_hostmgr_playback::~vexo_hostmgr_playback() {
    bStart = bPlay = bPause = bAudio = 0;
    bReverse = iSpeed = 0;
    // The replay thread may be waiting for a lock that a bad time selector left taken; it is to end all the same.
    if (m_stranded)
        m_lock->unlock(FILE_TAG, __func__);
    if (hThread != 0) {
        vexo_utility_retrieve_thread(hThread);
        hThread = 0;
    }
    DeleteAllNodes();
    vexo_advance_avss_file_reader* reader = DetachAdvanceReader().reader;
    if (reader != NULL) {
        RemoveReaders(reader);
        vexo_model_delete_advance_avss_reader(reader, FILE_TAG, __func__);
    }
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// ---- start ---------------------------------------------------------------------------------------------------------

int vexo_hostmgr_playback::HostMgr_Dev_StartHistoryPlay(int hLogin, int lChannel, unsigned int dwPlayMode,
                                                        _tagVexoHostMgrTime* pStartTime,
                                                        _tagVexoHostMgrTime* pStopTime) {
    HOSTMGR_PUTS(DEBUG, "**************HostMgr_Dev_StartHistoryPlay****************!!!");
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    if (static_cast<unsigned int>(lChannel) - 1 >= HOSTMGR_MAX_CHANNELS) {
        HOSTMGR_PRINTF(ERROR, "lChannel:%d overflow %d!!\n", lChannel, HOSTMGR_MAX_CHANNELS);
        return -1;
    }
    if (pStartTime == NULL || pStopTime == NULL) {
        HOSTMGR_PUTS(ERROR, "pStartTime or pStopTime is null!!");
        return -1;
    }
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    dwMode = dwPlayMode;
    int hStream = -1;
    HostMgrAddPlayNode(hLogin, lChannel, pStartTime, pStopTime, &hStream);
    // Started even when the channel could not be added: agents stop after every start, failed or not.
    bStart = 1;
    NeedThread();
    return hStream;
}

int vexo_hostmgr_playback::HostMgr_Dev_SetHistoryStreamCallback(int hLogin, int hStream,
                                                                vexo_hostmgr_stream_callback pfnCallBack,
                                                                void* pUserOfCallBack) {
    HOSTMGR_PRINTF(DEBUG, "hLogin:0x%x, hStream:0x%x\n", static_cast<unsigned int>(hLogin),
                   static_cast<unsigned int>(hStream));
    if (hLogin < 1) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:0x%x <= 0!!\n", static_cast<unsigned int>(hLogin));
        return -1;
    }
    if (hStream <= 0) {
        HOSTMGR_PRINTF(ERROR, "Why hStream:0x%x <= 0!!\n", static_cast<unsigned int>(hStream));
        return -1;
    }
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    Walk walk(this);
    while (HostMgrPlayNode* node = walk.Next()) {
        if (node->hLogin == hLogin && node->hStream == static_cast<uint32_t>(hStream)) {
            node->pfnStreamCallBack = pfnCallBack;
            node->pUser = pUserOfCallBack;
            return 0;
        }
    }
    HOSTMGR_PRINTF(WARNING, "Exception!! Not find hStream 0x%x uCh %d, Please check\n",
                   static_cast<unsigned int>(hStream), (hStream & 0xFFFF) - 1);
    return 0;
}

// ---- stop ----------------------------------------------------------------------------------------------------------

// The whole play stops, whichever stream is named. What may wait for a callback is done without the lock.
int vexo_hostmgr_playback::HostMgr_Dev_StopHistoryPlay(int hLogin, int /*hStream*/) {
    HOSTMGR_PUTS(DEBUG, "**************HostMgr_Dev_StopHistoryPlay****************!!!");
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:0x%x < 0!!\n", static_cast<unsigned int>(hLogin));
        return -1;
    }
    int result = -1;
    unsigned long thread = 0;
    vexo_advance_avss_file_reader* busy = NULL;
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
        result = HostMgrHistoryStreamStopPlay(&busy);
        thread = ClaimThread();
    }
    if (busy != NULL)
        EndAdvanceReader(busy);
    if (thread != 0)
        JoinThread(thread);
    HOSTMGR_PUTS(DEBUG, "HostMgr_Dev_StopHistoryPlay end");
    return result;
}

/** *ppBusy receives an advance reader whose callback is running: the caller ends it once it has let the lock go. */
int vexo_hostmgr_playback::HostMgrHistoryStreamStopPlay(vexo_advance_avss_file_reader** ppBusy) {
    if (bStart == 0) {
        HOSTMGR_PUTS(ERROR, "is stop!!");
        return -1;
    }
    DeleteAllNodes();
    const Detached detached = DetachAdvanceReader();
    if (detached.busy)
        *ppBusy = detached.reader;
    else if (detached.reader != NULL)
        EndAdvanceReader(detached.reader);
    EndPlay();
    return 0;
}

/** Ends the play that a speed command may be opening just now. */
void vexo_hostmgr_playback::EndPlay() {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    bStart = 0;
    bPlay = 0;
    ++m_play;
    m_opening = false;
}

// ---- replay thread: its handle -------------------------------------------------------------------------------------
//
// A stop claims the handle under the lock and joins without it. A start meanwhile makes no second thread, which would
// have to share the state that ends the first: it asks the stop to make one when it has joined.

void vexo_hostmgr_playback::NeedThread() {
    if (hThread != 0)
        return;
    Ending ending = Ending::JOINED;
    if (m_ending.compare_exchange_strong(ending, Ending::JOINED_THEN_STARTED) || ending == Ending::JOINED_THEN_STARTED)
        return;
    CreateThread();
}

void vexo_hostmgr_playback::CreateThread() {
    const vexo_thread_creat_ctl ctl = {1, 0, HostMgrRePlayThread, this, 0, REPLAY_THREAD_STACK};
    vexo_utility_creat_thread(&ctl, "HostMgrRePlay_Thread", &hThread);
}

/** The thread that the caller is to join, or 0; also takes back what a start has asked of a stop that is joining. */
unsigned long vexo_hostmgr_playback::ClaimThread() {
    const unsigned long thread = hThread;
    hThread = 0;
    if (thread != 0)
        m_ending = Ending::JOINED;
    Ending ending = Ending::JOINED_THEN_STARTED;
    m_ending.compare_exchange_strong(ending, Ending::JOINED);
    return thread;
}

void vexo_hostmgr_playback::JoinThread(unsigned long thread) {
    vexo_utility_retrieve_thread(thread);
    Ending ending = Ending::JOINED;
    if (m_ending.compare_exchange_strong(ending, Ending::NONE))
        return;
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    if (m_ending.exchange(Ending::NONE) == Ending::JOINED_THEN_STARTED)
        CreateThread();
}

// ---- times ---------------------------------------------------------------------------------------------------------

_tagVexoHostMgrTime vexo_hostmgr_playback::Time(uint32_t dwSelector) {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    return dwSelector == HOSTMGR_PLAYTIME_CURRENT ? struCurTime
           : dwSelector == HOSTMGR_PLAYTIME_START ? struStartTime
                                                  : struStopTime;
}

void vexo_hostmgr_playback::SetCurTime(const _tagVexoHostMgrTime& time) {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    struCurTime = time;
}

/** From a frame's time stamp. The word that is no calendar field is the range's. */
void vexo_hostmgr_playback::SetCurTime(uint32_t seconds) {
    _tagVexoHostMgrTime time;
    HostMgrSecondsToHostTime(static_cast<time_t>(seconds), &time);
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    time.reserved = struStartTime.reserved;
    struCurTime = time;
}
