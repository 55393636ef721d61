// The talk's worker thread: how it begins, works in passes, ends, and is taken back.
#include "vexo_hostmgr_talkback.h"

static const char FILE_TAG[] = "vexo_hostmgr_talkback";

static const char THREAD_NAME[] = "HostMgrTalk_Thread";
constexpr unsigned int THREAD_STACK = 0x80000;
constexpr unsigned int PASS_SLEEP_MS = 30;

// ---- for start, stop and the object's end --------------------------------------------------------------------------

// A thread cannot tell which of two it is before it runs. So no worker is made while an ended one has yet to begin to
// run: the next to enter is then the ended one. It needs no lock to enter, and a stop is waiting for it.
void vexo_hostmgr_talkback::StartWorker() {
    {
        HostMgrLeafScope scope(m_leaf);
        while (m_late != 0)
            m_changed.Wait(m_leaf);
        m_entered = false;
    }
    const vexo_thread_creat_ctl ctl = {1, 0, HostMgrTalkThread, this, 0, THREAD_STACK};
    vexo_utility_creat_thread(&ctl, THREAD_NAME, &hThread);
}

/** Ends the worker's turn and gives the threads that are to be taken back once m_lock is free. */
vexo_hostmgr_talkback::EndedWorkers vexo_hostmgr_talkback::EndWorker() {
    HostMgrLeafScope scope(m_leaf);
    const bool fromPass = m_in_pass && pthread_equal(m_pass_thread, pthread_self()) != 0;
    EndedWorkers ended = {{0, 0}};
    if (!fromPass || m_pass_turn != m_laid_aside_turn) {
        ended.hThread[0] = m_laid_aside;
        m_laid_aside = 0;
    }
    if (fromPass && m_pass_turn == m_turn) {
        m_laid_aside = hThread;
        m_laid_aside_turn = m_turn;
    } else {
        ended.hThread[1] = hThread;
        if (!m_entered)
            m_late = hThread;
    }
    hThread = 0;
    ++m_turn;
    if (!m_in_pass)
        m_TalkAudioData.dwFrameCnt = 0;
    return ended;
}

void vexo_hostmgr_talkback::RetrieveWorkers(const EndedWorkers& ended) {
    for (const unsigned long thread : ended.hThread) {
        if (thread == 0)
            continue;
        vexo_utility_retrieve_thread(thread);
        HostMgrLeafScope scope(m_leaf);
        if (m_late == thread) {
            m_late = 0;
            m_changed.WakeAll();
        }
    }
}

void vexo_hostmgr_talkback::WaitForPass() {
    HostMgrLeafScope scope(m_leaf);
    while (m_in_pass)
        m_changed.Wait(m_leaf);
}

// ---- the thread ----------------------------------------------------------------------------------------------------

void* vexo_hostmgr_talkback::HostMgrTalkThread(void* argument) {
    static_cast<vexo_hostmgr_talkback*>(argument)->RunWorker();
    return NULL;
}

void vexo_hostmgr_talkback::RunWorker() {
    const uint32_t turn = EnterWorker();
    const unsigned long self = static_cast<unsigned long>(pthread_self());
    vexo_utility_enter_thread(self, THREAD_NAME);
    while (HostMgrGethTalk() != 0 && Turn() == turn) {
        if (HostMgrProcTalkData(turn) != 0)
            vexo_utility_sleep_ms(PASS_SLEEP_MS);
    }
    vexo_utility_exit_thread(self);
}

/** The turn of the thread that begins to run; one that is over when it was ended before. */
uint32_t vexo_hostmgr_talkback::EnterWorker() {
    HostMgrLeafScope scope(m_leaf);
    if (m_late != 0) {
        m_late = 0;
        m_changed.WakeAll();
        return m_turn - 1;
    }
    m_entered = true;
    return m_turn;
}

uint32_t vexo_hostmgr_talkback::Turn() {
    HostMgrLeafScope scope(m_leaf);
    return m_turn;
}

// An earlier worker may still be in its last pass, its callback taking long: this one comes again 30 ms later.
bool vexo_hostmgr_talkback::BeginPass(uint32_t turn) {
    HostMgrLeafScope scope(m_leaf);
    if (m_turn != turn || m_in_pass)
        return false;
    m_in_pass = true;
    m_pass_turn = turn;
    m_pass_thread = pthread_self();
    return true;
}

// What a stop during the pass could not do: the next talk gathers from nothing.
void vexo_hostmgr_talkback::EndPass() {
    HostMgrLeafScope scope(m_leaf);
    if (m_turn != m_pass_turn)
        m_TalkAudioData.dwFrameCnt = 0;
    m_in_pass = false;
    m_changed.WakeAll();
}

/** One pass: at most one captured frame and one queued frame move. The answer is always -1: nothing more to do now. */
int vexo_hostmgr_talkback::HostMgrProcTalkData(uint32_t turn) {
    int run = 0;
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
        run = bRun;
    }
    if (run != 0 && BeginPass(turn)) {
        HostMgrSendTalkData();
        HostMgrPlayTalkData();
        EndPass();
    }
    return -1;
}
