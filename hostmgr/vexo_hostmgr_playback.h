// History playback of one login: the list of played channels with their readers, and the state that they share.
#ifndef VEXO_HOSTMGR_PLAYBACK_H
#define VEXO_HOSTMGR_PLAYBACK_H

#include "hostmgr_common.h"
#include "vexo_model.h"

class vexo_hostmgr_playback;

/** One channel of a play. */
struct HostMgrPlayNode {
    int32_t hLogin;
    uint32_t uCh;           // counted from 0
    uint32_t hStream;       // hLogin << 16 | channel counted from 1
    uint32_t dwMode;        // the module's when the node was made
    uint32_t dwStreamType;  // 1: main stream, 2: sub stream
    uint8_t bFinish;
    vexo_rec_file_inquiry_result* pInquiryResult;
    vexo_avss_file_reader* pReader;
    struct timeval tvLastSend;   // wall clock; both words 0: nothing delivered yet
    struct timeval tvLastFrame;  // the last delivered frame's time stamp
    vexo_hostmgr_stream_callback pfnStreamCallBack;
    void* pUser;
    vexo_hostmgr_stream_callback_v2 pfnNodeCallBackV2;
    void* pNodeUserV2;
    vexo_hostmgr_playback* pPlayback;
    HostMgrPlayNode* pNext;
    HostMgrPlayNode* pPrev;
};

class vexo_hostmgr_playback {
public:
    vexo_hostmgr_playback();
    ~vexo_hostmgr_playback();
    vexo_hostmgr_playback(const vexo_hostmgr_playback&) = delete;
    vexo_hostmgr_playback& operator=(const vexo_hostmgr_playback&) = delete;

    // Channels are counted from 1.
    int HostMgr_Dev_StartHistoryPlay(int hLogin, int lChannel, unsigned int dwMode, _tagVexoHostMgrTime* pStartTime,
                                     _tagVexoHostMgrTime* pStopTime);
    int HostMgr_Dev_StartHistoryPlayV2(int hLogin, int lChannel, unsigned int dwMode, _tagVexoHostMgrTime* pStartTime,
                                       _tagVexoHostMgrTime* pStopTime,
                                       vexo_hostmgr_stream_callback_v2 pfnStreamCallBackV2, void* pUser);
    int HostMgr_Dev_StopHistoryPlay(int hLogin, int hStream);
    int HostMgr_Dev_SetHistoryStreamCallback(int hLogin, int hStream, vexo_hostmgr_stream_callback pfnStreamCallBack,
                                             void* pUser);
    int HostMgrHistoryStreamPlayControl(int hLogin, int lStartChan, int lChanNum, void* pCondBuf,
                                        unsigned int dwCondLength, void* pInBuf, unsigned int dwInLength, void* pOutBuf,
                                        unsigned int dwOutLength);
    void HostMgrPlaybackDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    int HostMgrDelPlayNode(int nodeLogin, int lChannel);
    int HostMgrFreePlayNode(HostMgrPlayNode* node);
    HostMgrPlayNode* FindNode(int nodeLogin, int lChannel);
    void Unlink(HostMgrPlayNode* node);

    uint32_t bStart;
    uint32_t bPlay;
    uint32_t bPause;
    int32_t bReverse;
    int32_t iSpeed;
    uint32_t bAudio;
    uint32_t dwNodeCnt;
    uint32_t dwMode;  // 0: playback, otherwise download
    _tagVexoHostMgrTime struStartTime;
    _tagVexoHostMgrTime struStopTime;
    _tagVexoHostMgrTime struCurTime;
    vexo_hostmgr_stream_callback pfnStreamCallBack;  // nothing sets it: agents register by stream
    void* pUser;
    vexo_hostmgr_stream_callback_v2 pfnStreamCallBackV2;
    void* pUserV2;
    HostMgrPlayNode* pHead;
    HostMgrPlayNode* pTail;
    vexo_advance_avss_file_reader* pAdvanceReader;
    unsigned long hThread;
    vexo_lock* m_lock;
};

#endif
