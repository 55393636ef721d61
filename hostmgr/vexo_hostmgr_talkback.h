// Two-way audio between one login and the recorder: the talk's state, the block of captured audio on its way to the
// agent, the queue of frames on their way to the recorder's loudspeaker, and the thread that moves both. How the sound
// is captured, coded and played is the model library's.
#ifndef VEXO_HOSTMGR_TALKBACK_H
#define VEXO_HOSTMGR_TALKBACK_H

#include "hostmgr_common.h"
#include "vexo_model.h"

/** A frame waiting to be played; 16 bytes on the board. */
struct HostMgrTalkPlayNode {
    unsigned char* pFrame;
    uint32_t dwFrameLen;
    HostMgrTalkPlayNode* pPrev;
    HostMgrTalkPlayNode* pNext;
};
static_assert(sizeof(void*) != 4 || sizeof(HostMgrTalkPlayNode) == 16, "four words on the board");

/**
 * One login's talk.
 *
 *     idle --Start--> running --Stop--> idle      running: bRun 1, hTalk set, a worker runs
 *                        |
 *                        +--Stop of another handle--> left behind: bRun 0, hTalk kept, no worker
 *                        +--Stop that is refused----> left behind, and the worker idles
 *     left behind: no Start, no Stop, input is dropped; it ends with the login
 *
 * A worker is the thread of one talk. Each stop ends the worker's turn, so that it leaves even where hTalk stays or a
 * new talk has begun meanwhile; in its turn it works in passes, and there is never more than one pass at a time. Stop
 * takes the thread's handle under m_lock and waits for the thread without it. Called in a pass, from the talk callback,
 * it cannot wait for the thread that it runs on: the handle is laid aside for the next stop or the object's end.
 */
class vexo_hostmgr_talkback {
public:
    vexo_hostmgr_talkback();
    ~vexo_hostmgr_talkback();
    vexo_hostmgr_talkback(const vexo_hostmgr_talkback&) = delete;
    vexo_hostmgr_talkback& operator=(const vexo_hostmgr_talkback&) = delete;

    int HostMgr_Dev_StartTalkEx(int hLogin, int lChannel, _tagVexoHostMgrTalkParam* pParam);
    int HostMgr_Dev_StopTalk(int hLogin, int hTalk);
    int HostMgr_Dev_InputTalkData(int hLogin, int hTalk, char* pData, unsigned int dwDataSize);
    int HostMgr_Dev_SetTalkCallback(int hLogin, int hTalk, vexo_hostmgr_talk_callback callback, void* pUser);
    void HostMgrTalkDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    /** Whose talk it is and who hears it; all zero when there is none. */
    struct Talk {
        int hLogin;
        uint32_t hTalk;  // the model library's; non-zero keeps the worker alive
        vexo_hostmgr_talk_callback fnTalkCallback;
        void* pUser;

        bool Is(int login, int talk) const {
            return login >= 1 && login == hLogin && talk >= 1 && static_cast<uint32_t>(talk) == hTalk;
        }
    };
    struct TalkAudioData {
        uint32_t dwFrameCnt;       // 320-byte frames gathered
        unsigned char* audioData;  // the send block
    };
    struct TalkPlayQueue {
        uint32_t dwNodeCnt;
        HostMgrTalkPlayNode* pHead;
        HostMgrTalkPlayNode* pTail;
    };
    /** Threads to take back, 0 when none: one laid aside earlier and the last talk's. */
    struct EndedWorkers {
        unsigned long hThread[2];
    };

    // the talk
    Talk CurrentTalk() VEXO_EXCLUDES(m_leaf);
    void SetTalk(const Talk& talk) VEXO_REQUIRES(m_lock) VEXO_EXCLUDES(m_leaf);
    const char* WhyNotStart(int lChannel) VEXO_REQUIRES(m_lock);
    uint32_t HostMgrGethTalk() VEXO_EXCLUDES(m_lock);

    // the worker
    void StartWorker() VEXO_REQUIRES(m_lock);
    EndedWorkers EndWorker() VEXO_REQUIRES(m_lock) VEXO_EXCLUDES(m_leaf);
    void RetrieveWorkers(const EndedWorkers& ended) VEXO_EXCLUDES(m_lock, m_leaf);
    void WaitForPass() VEXO_EXCLUDES(m_leaf);
    static void* HostMgrTalkThread(void* argument);
    void RunWorker();
    uint32_t EnterWorker() VEXO_EXCLUDES(m_leaf);
    uint32_t Turn() VEXO_EXCLUDES(m_leaf);
    bool BeginPass(uint32_t turn) VEXO_EXCLUDES(m_leaf);
    void EndPass() VEXO_EXCLUDES(m_leaf);

    // the audio
    int HostMgrProcTalkData(uint32_t turn) VEXO_EXCLUDES(m_lock);
    unsigned int HostMgrSendTalkData() VEXO_EXCLUDES(m_leaf);
    void GatherAudio(const unsigned char* audio, uint32_t length);
    void HandOverBlock(uint32_t length) VEXO_EXCLUDES(m_leaf);
    void WriteBlockHeader(uint32_t usedLen);
    int HostMgrPlayTalkData() VEXO_EXCLUDES(m_TalkPlayLock);
    int QueuePlayFrame(const HostMgrSite& site, uint32_t turn, const char* data, uint32_t size)
        VEXO_EXCLUDES(m_TalkPlayLock);
    void HostMgrPushTalkPlayNode(HostMgrTalkPlayNode* node) VEXO_REQUIRES(m_TalkPlayLock);
    void HostMgrPopAndFreeTalkPlayNode() VEXO_REQUIRES(m_TalkPlayLock);
    void HostMgrClrTalkPlayNode() VEXO_REQUIRES(m_TalkPlayLock);

    Talk m_talk VEXO_GUARDED_BY(m_leaf);  // changed under m_lock, too
    int bRun VEXO_GUARDED_BY(m_lock);
    TalkAudioData m_TalkAudioData;  // the worker's during a pass; between passes the frame count is m_leaf's
    TalkPlayQueue m_TalkPlayQueue VEXO_GUARDED_BY(m_TalkPlayLock);
    unsigned long hThread VEXO_GUARDED_BY(m_lock);  // the worker thread, 0 when none
    vexo_lock* m_lock;
    vexo_lock* m_TalkPlayLock;

    HostMgrLeafLock m_leaf;
    HostMgrLeafCondition m_changed;
    uint32_t m_turn VEXO_GUARDED_BY(m_leaf) = 0;             // whose turn it is; counts the ends of workers
    bool m_entered VEXO_GUARDED_BY(m_leaf) = false;          // the worker thread has begun to run
    unsigned long m_late VEXO_GUARDED_BY(m_leaf) = 0;        // a worker that was ended before it began to run
    bool m_in_pass VEXO_GUARDED_BY(m_leaf) = false;          // a pass is under way,
    uint32_t m_pass_turn VEXO_GUARDED_BY(m_leaf) = 0;        // of the worker of this turn,
    pthread_t m_pass_thread VEXO_GUARDED_BY(m_leaf) = {};    // on this thread
    unsigned long m_laid_aside VEXO_GUARDED_BY(m_leaf) = 0;  // a worker that a stop from its own pass has ended,
    uint32_t m_laid_aside_turn VEXO_GUARDED_BY(m_leaf) = 0;  // and its turn
};

#endif
