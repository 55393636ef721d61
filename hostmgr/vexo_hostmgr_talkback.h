// Two-way audio between one login and the recorder: the talk's state, the block of captured audio on its way to the
// agent and the queue of frames on their way to the recorder's loudspeaker.
#ifndef VEXO_HOSTMGR_TALKBACK_H
#define VEXO_HOSTMGR_TALKBACK_H

#include "hostmgr_common.h"

/** A frame waiting to be played; 16 bytes on the board. */
struct HostMgrTalkPlayNode {
    unsigned char* pFrame;
    uint32_t dwFrameLen;
    HostMgrTalkPlayNode* pPrev;
    HostMgrTalkPlayNode* pNext;
};
static_assert(sizeof(void*) != 4 || sizeof(HostMgrTalkPlayNode) == 16, "four words on the board");

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
    struct TalkAudioData {
        uint32_t dwFrameCnt;       // 320-byte frames gathered
        unsigned char* audioData;  // the send block
    };
    struct TalkPlayQueue {
        uint32_t dwNodeCnt;
        HostMgrTalkPlayNode* pHead;
        HostMgrTalkPlayNode* pTail;
    };

    void HostMgrClrTalkPlayNode() VEXO_REQUIRES(m_TalkPlayLock);

    int hLogin;
    uint32_t hTalk;  // non-zero keeps the worker thread alive
    vexo_hostmgr_talk_callback fnTalkCallback;
    void* pUser;
    int bRun;
    TalkAudioData m_TalkAudioData;
    TalkPlayQueue m_TalkPlayQueue VEXO_GUARDED_BY(m_TalkPlayLock);
    unsigned long hThread;  // the worker thread, 0 when none
    vexo_lock* m_lock;
    vexo_lock* m_TalkPlayLock;
};

#endif
