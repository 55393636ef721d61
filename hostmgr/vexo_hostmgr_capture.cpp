// The object, the calls of agents on its tasks, immediate capture and the dump. What the worker does with the tasks
// stands in vexo_hostmgr_capture_task.cpp, the list of pictures in vexo_hostmgr_capture_list.cpp.
#include "vexo_hostmgr_capture.h"

#include "vexo_model.h"

static const char FILE_TAG[] = "vexo_hostmgr_capture";

constexpr unsigned int TASK_TABLE_SIZE = sizeof(HostMgrCaptureTask) * HOSTMGR_CAPTURE_TASK_SLOTS;
constexpr int CHANNEL_MAX = 256;
constexpr unsigned int WORKER_STACK_SIZE = 512 * 1024;

vexo_hostmgr_capture::vexo_hostmgr_capture()
    : m_workerClaimed(false), hThread(0), bStop(0), m_capturePictureList{0, NULL, NULL}, sCaptureDir(), bNeedDir(1) {
    m_capture_info = static_cast<HostMgrCaptureTask*>(
        vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_CAPTURE, TASK_TABLE_SIZE, 1));
    HOSTMGR_ASSERT(FILE_TAG, m_capture_info != NULL);
    memset(static_cast<void*>(m_capture_info), 0, TASK_TABLE_SIZE);
    m_lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_capture");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
}

vexo_hostmgr_capture::~vexo_hostmgr_capture() {
    bStop = 1;
    if (hThread != 0) {
        vexo_utility_retrieve_thread(hThread);
        hThread = 0;
    }
    HostMgrDelAllCaptureNode();
    vexo_utility_free(FILE_TAG, __func__, m_capture_info);
    m_capture_info = NULL;
    vexo_utility_delete_rw_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// ---- tasks ---------------------------------------------------------------------------------------------------------

HostMgrCaptureTask* vexo_hostmgr_capture::FindFreeTask() {
    for (uint32_t index = 0; index < HOSTMGR_CAPTURE_TASK_SLOTS; ++index) {
        if (m_capture_info[index].hCapture == 0)
            return &m_capture_info[index];
    }
    return NULL;
}

/** The slot whose task has that very handle, or null. */
HostMgrCaptureTask* vexo_hostmgr_capture::FindTask(int hCapture) {
    const uint32_t handle = static_cast<uint32_t>(hCapture);
    const uint32_t index = handle >> 16;
    if (index >= HOSTMGR_CAPTURE_TASK_SLOTS || m_capture_info[index].hCapture != handle)
        return NULL;
    return &m_capture_info[index];
}

int vexo_hostmgr_capture::HostMgr_Dev_StartCapturePicture(int hLogin, int lChannel, int lStreamIdx,
                                                          _tagVexoCapturePictureCfg* pCfg,
                                                          vexo_hostmgr_capture_callback callback, void* pUser) {
    if (pCfg == NULL)
        return -1;
    uint32_t hCapture = 0;
    {
        HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
        HostMgrCaptureTask* task = FindFreeTask();
        if (task == NULL) {
            HOSTMGR_PUTS(ERROR, "Not find !!");
            return -1;
        }
        hCapture = static_cast<uint32_t>(task - m_capture_info) << 16 | (static_cast<uint32_t>(hLogin) & 0xFFFF);
        *task = HostMgrCaptureTask{hCapture,
                                   hLogin,
                                   lChannel,
                                   lStreamIdx,
                                   *pCfg,
                                   callback,
                                   pUser,
                                   HOSTMGR_CAPTURE_NO_TIME,
                                   HOSTMGR_CAPTURE_NO_TIME,
                                   0};
    }
    StartWorker();
    return static_cast<int>(hCapture);
}

// The claim keeps two starts at the same time from making two workers. A worker that cannot be made leaves the task
// waiting for the next start.
void vexo_hostmgr_capture::StartWorker() {
    if (m_workerClaimed.exchange(true))
        return;
    vexo_thread_creat_ctl ctl = {};
    ctl.joinable = 1;
    ctl.entry = HostMgrCapturePictureTask_Thread;
    ctl.argument = this;
    ctl.stack_size = WORKER_STACK_SIZE;
    unsigned long id = 0;
    if (vexo_utility_creat_thread(&ctl, "HostMgrCapturePictureTask_Thread", &id) == 0)
        hThread = id;
    else
        m_workerClaimed = false;
}

int vexo_hostmgr_capture::HostMgr_Dev_SetCapturePictureAlarmTiger(int hCapture, vexo_hostmgr_capture_callback callback,
                                                                  void* pUser) {
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrCaptureTask* task = FindTask(hCapture);
    if (task == NULL)
        return -1;
    task->fnCallback = callback;
    task->pUser = pUser;
    // A trigger that runs is not prolonged.
    if (task->struCfg.dwType == HOSTMGR_CAPTURE_ALARM && !HostMgrIsCaptureTime(task->dwTriggerTime))
        task->dwTriggerTime = Now();
    else if (task->struCfg.dwType == HOSTMGR_CAPTURE_SECOND)
        task->dwTriggerTime = HOSTMGR_CAPTURE_NO_TIME;
    return 0;
}

// The worker stays: it ends with the object.
int vexo_hostmgr_capture::HostMgr_Dev_StopCapturePicture(int hCapture) {
    HostMgrChangeScope lock(m_lock, FILE_TAG, __func__);
    HostMgrCaptureTask* task = FindTask(hCapture);
    if (task == NULL)
        return -1;
    HostMgrDelCaptureNode(task->hCapture);
    *task = HostMgrCaptureTask{};
    task->dwTriggerTime = HOSTMGR_CAPTURE_NO_TIME;
    task->dwLastCapture = HOSTMGR_CAPTURE_NO_TIME;
    return 0;
}

// ---- immediate capture ---------------------------------------------------------------------------------------------

// Channels of 0 and below pass on purpose: the model library then gets a number that names no channel, and decides.
int vexo_hostmgr_capture::HostMgr_Dev_CapturePicture(int hLogin, int dwChannel, int dwStreamIdx, char* sPicBuffer,
                                                     unsigned int dwBufferSize, unsigned int* lpSizeReturned) {
    const bool knownStream =
        dwStreamIdx == static_cast<int>(HOSTMGR_STREAM_MAIN) || dwStreamIdx == static_cast<int>(HOSTMGR_STREAM_SUB);
    if (hLogin < 0 || dwChannel > CHANNEL_MAX || !knownStream) {
        HOSTMGR_PRINTF(ERROR, "Invalid Param:dwChannel %d, dwStreamIdx %d \n", dwChannel, dwStreamIdx);
        return -1;
    }
    const unsigned int channel = static_cast<unsigned int>(dwChannel) - 1;
    unsigned int size = 0;
    if (vexo_model_capture(static_cast<unsigned int>(hLogin), channel, sPicBuffer, dwBufferSize, &size) != 0) {
        HOSTMGR_PRINTF(ERROR, "vexo_model_capture failed, sPicBuffer %p, dwBufferSize %d!!\n",
                       static_cast<void*>(sPicBuffer), static_cast<int>(dwBufferSize));
        return -1;
    }
    if (lpSizeReturned != NULL)
        *lpSizeReturned = size;
    return 0;
}

// ---- dump ----------------------------------------------------------------------------------------------------------

void vexo_hostmgr_capture::HostMgrCaptureDump(unsigned int /*command*/, vexo_print_func print) {
    if (m_lock->rd_trylock(FILE_TAG, __func__) != 0) {
        HostMgrPrintLockInfo(m_lock, HOSTMGR_DUMP_BUSY, print);
        return;
    }
    m_lock->unlock(FILE_TAG, __func__);
}
