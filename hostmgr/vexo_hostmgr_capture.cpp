#include "vexo_hostmgr_capture.h"

#include <unistd.h>

static const char FILE_TAG[] = "vexo_hostmgr_capture";

constexpr unsigned int TASK_TABLE_SIZE = sizeof(HostMgrCaptureTask) * HOSTMGR_CAPTURE_TASK_SLOTS;

vexo_hostmgr_capture::vexo_hostmgr_capture()
    : hThread(0), bStop(0), m_capturePictureList{0, NULL, NULL}, sCaptureDir(), bNeedDir(1) {
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

void vexo_hostmgr_capture::HostMgrDelAllCaptureNode() {
    while (m_capturePictureList.head != NULL) {
        HOSTMGR_ASSERT(FILE_TAG, m_capturePictureList.nodeNum > 0);
        HostMgrCaptureNode* node = m_capturePictureList.head;
        m_capturePictureList.head = node->pNext;
        m_capturePictureList.nodeNum--;
        if (vexo_utility_is_file_exist(node->struInfo.sPicPath))
            unlink(node->struInfo.sPicPath);
        vexo_utility_free(FILE_TAG, __func__, node);
    }
    m_capturePictureList.tail = NULL;
}

void vexo_hostmgr_capture::HostMgrCaptureDump(unsigned int /*command*/, vexo_print_func print) {
    if (m_lock->rd_trylock(FILE_TAG, __func__) != 0) {
        HostMgrPrintLockInfo(m_lock, HOSTMGR_DUMP_BUSY, print);
        return;
    }
    m_lock->unlock(FILE_TAG, __func__);
}

// Capturing is not built yet; each operation answers -1 and does nothing.

int vexo_hostmgr_capture::HostMgr_Dev_CapturePicture(int, int, int, char*, unsigned int, unsigned int*) {
    return -1;
}

int vexo_hostmgr_capture::HostMgr_Dev_StartCapturePicture(int, int, int, _tagVexoCapturePictureCfg*,
                                                          vexo_hostmgr_capture_callback, void*) {
    return -1;
}

int vexo_hostmgr_capture::HostMgr_Dev_SetCapturePictureAlarmTiger(int, vexo_hostmgr_capture_callback, void*) {
    return -1;
}

int vexo_hostmgr_capture::HostMgr_Dev_StopCapturePicture(int) {
    return -1;
}
