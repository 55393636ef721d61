// Picture capture of one login: the capture tasks, the list of pictures that they took, and immediate capture.
#ifndef VEXO_HOSTMGR_CAPTURE_H
#define VEXO_HOSTMGR_CAPTURE_H

#include "hostmgr_common.h"

constexpr uint32_t HOSTMGR_CAPTURE_TASK_SLOTS = 576;

/** One capture task; 68 bytes on the board, all zero when free. */
struct HostMgrCaptureTask {
    uint32_t hCapture;  // slot index << 16 | hLogin & 0xFFFF; 0: free
    int32_t hLogin;
    int32_t lChannel;  // counted from 1
    int32_t lStreamIdx;
    _tagVexoCapturePictureCfg struCfg;
    vexo_hostmgr_capture_callback fnCallback;
    void* pUser;
    uint32_t dwTriggerTime;  // seconds since 1970; 0 or all ones: no trigger
    uint32_t dwLastCapture;  // seconds since 1970; 0 or all ones: none yet
    uint32_t dwPicCount;
};
static_assert(sizeof(void*) != 4 || sizeof(HostMgrCaptureTask) == 68, "seventeen words on the board");

/** A picture of the capture list. */
struct HostMgrCaptureNode {
    uint32_t hCapture;  // the task that took it
    _tagVexoCapturePictureInfo struInfo;
    HostMgrCaptureNode* pPrev;
    HostMgrCaptureNode* pNext;
};

class vexo_hostmgr_capture {
public:
    vexo_hostmgr_capture();
    ~vexo_hostmgr_capture();
    vexo_hostmgr_capture(const vexo_hostmgr_capture&) = delete;
    vexo_hostmgr_capture& operator=(const vexo_hostmgr_capture&) = delete;

    int HostMgr_Dev_CapturePicture(int hLogin, int dwChannel, int dwStreamIdx, char* sPicBuffer,
                                   unsigned int dwBufferSize, unsigned int* lpSizeReturned);
    int HostMgr_Dev_StartCapturePicture(int hLogin, int lChannel, int lStreamIdx, _tagVexoCapturePictureCfg* pCfg,
                                        vexo_hostmgr_capture_callback callback, void* pUser);
    int HostMgr_Dev_SetCapturePictureAlarmTiger(int hCapture, vexo_hostmgr_capture_callback callback, void* pUser);
    int HostMgr_Dev_StopCapturePicture(int hCapture);
    /** Prints the lock's state at most; no menu command reaches it. */
    void HostMgrCaptureDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    struct CapturePictureList {
        uint32_t nodeNum;
        HostMgrCaptureNode* head;
        HostMgrCaptureNode* tail;
    };

    void HostMgrDelAllCaptureNode();

    HostMgrCaptureTask* m_capture_info;
    vexo_rw_lock* m_lock;
    unsigned long hThread;
    std::atomic<uint32_t> bStop;
    CapturePictureList m_capturePictureList;
    char sCaptureDir[128];
    uint32_t bNeedDir;  // 1: the worker prepares the directory anew
};

#endif
