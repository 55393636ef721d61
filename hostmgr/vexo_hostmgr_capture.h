// Picture capture of one login: the capture tasks, the list of pictures that they took, and immediate capture.
#ifndef VEXO_HOSTMGR_CAPTURE_H
#define VEXO_HOSTMGR_CAPTURE_H

#include "hostmgr_common.h"

constexpr uint32_t HOSTMGR_CAPTURE_TASK_SLOTS = 576;

/** A time of a task that is not: no trigger, no capture yet. 0 says the same. */
constexpr uint32_t HOSTMGR_CAPTURE_NO_TIME = 0xFFFFFFFF;
constexpr bool HostMgrIsCaptureTime(uint32_t seconds) {
    return seconds != 0 && seconds != HOSTMGR_CAPTURE_NO_TIME;
}

/** One capture task; 68 bytes on the board. Free when without a handle: all zero, or as a stop leaves it. */
struct HostMgrCaptureTask {
    uint32_t hCapture;  // slot index << 16 | hLogin & 0xFFFF; 0: free
    int32_t hLogin;
    int32_t lChannel;  // counted from 1
    int32_t lStreamIdx;
    _tagVexoCapturePictureCfg struCfg;
    vexo_hostmgr_capture_callback fnCallback;
    void* pUser;
    uint32_t dwTriggerTime;  // start of the running trigger, seconds since 1970; see HostMgrIsCaptureTime
    uint32_t dwLastCapture;  // of an alarm task, seconds since 1970; see HostMgrIsCaptureTime
    uint32_t dwPicCount;     // pictures reported in the running trigger
};
static_assert(sizeof(void*) != 4 || sizeof(HostMgrCaptureTask) == 68, "seventeen words on the board");

/** A picture of the capture list; 352 bytes on the board. */
struct HostMgrCaptureNode {
    uint32_t hCapture;  // the task that took it
    _tagVexoCapturePictureInfo struInfo;
    HostMgrCaptureNode* prev;
    HostMgrCaptureNode* next;
};
static_assert(sizeof(void*) != 4 || sizeof(HostMgrCaptureNode) == 352, "88 words on the board");

/**
 * One login's picture capture. A task:
 *
 *     free --Start--> waiting --trigger (alarm tasks)--> triggered --dwPostTime is over--> waiting
 *       ^               | ^                                 |  ^
 *       |               | +- pass: takes a picture if due   |  +- pass: takes and reports one; trigger: not prolonged
 *       +-----Stop------+---------------Stop----------------+
 *
 * One worker thread, made with the first task and ended with the object, passes over all slots once a second and takes
 * the lock for reading anew for each. It alone changes a slot and the list then; Start, Stop and the trigger change
 * them under the lock for change. The lock is held across captures and callbacks, so that a stopped task is never
 * reported.
 */
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

    // tasks
    HostMgrCaptureTask* FindFreeTask() VEXO_REQUIRES(m_lock);
    HostMgrCaptureTask* FindTask(int hCapture) VEXO_REQUIRES(m_lock);
    void StartWorker();
    static uint32_t Now();

    // worker
    static void* HostMgrCapturePictureTask_Thread(void* argument);
    void HostMgrCapturePictureTask();
    bool LockForReading(const char* function) VEXO_TRY_ACQUIRE(true, m_lock);
    int HostMgrPrepareCaptureDir();
    bool HasCaptureDir();
    int HostMgrDoOnTimeCapture(HostMgrCaptureTask* task) VEXO_REQUIRES(m_lock);
    int HostMgrDoAlarmCapture(HostMgrCaptureTask* task) VEXO_REQUIRES(m_lock);
    void TakeAlarmPicture(const HostMgrCaptureTask& task, _tagVexoCapturePictureInfo* info) VEXO_REQUIRES(m_lock);
    void ReportPicturesBefore(HostMgrCaptureTask* task) VEXO_REQUIRES(m_lock);

    // list
    int HostMgrAddCaptureNode(uint32_t hCapture, const _tagVexoCapturePictureInfo& info) VEXO_REQUIRES(m_lock);
    void HostMgrDelCaptureNode(uint32_t hCapture) VEXO_REQUIRES(m_lock);
    void HostMgrDelAllCaptureNode();
    void RemoveNode(HostMgrCaptureNode* node, const char* function) VEXO_REQUIRES(m_lock);
    static void DeletePicture(const char* path);

    HostMgrCaptureTask* m_capture_info VEXO_PT_GUARDED_BY(m_lock);
    vexo_rw_lock* m_lock;
    std::atomic<bool> m_workerClaimed;  // one caller at a time makes the worker; stays set while there is one
    unsigned long hThread;              // 0: none; written by who has the claim
    std::atomic<uint32_t> bStop;
    CapturePictureList m_capturePictureList VEXO_GUARDED_BY(m_lock);
    char sCaptureDir[128];  // the worker's alone, empty before the first; so is bNeedDir
    uint32_t bNeedDir;      // 1: the worker prepares the directory anew
};

#endif
