// The list of the pictures that a login's tasks took, oldest first; each node owns its file. The list is checked at
// each step: to go on with a broken one would be to delete what is not ours.
#include <unistd.h>

#include "vexo_hostmgr_capture.h"

static const char FILE_TAG[] = "vexo_hostmgr_capture";

constexpr uint32_t PICTURES_TRIMMED = 60;

/** Deletes a picture's file; one that is gone already is no matter. */
void vexo_hostmgr_capture::DeletePicture(const char* path) {
    if (vexo_utility_is_file_exist(path))
        unlink(path);
}

/** Takes a node out of the list and ends it with its file. The caller has checked the list. */
void vexo_hostmgr_capture::RemoveNode(HostMgrCaptureNode* node, const char* function) {
    (node->prev != NULL ? node->prev->next : m_capturePictureList.head) = node->next;
    (node->next != NULL ? node->next->prev : m_capturePictureList.tail) = node->prev;
    m_capturePictureList.nodeNum--;
    DeletePicture(node->struInfo.sPicPath);
    vexo_utility_free(FILE_TAG, function, node);
}

int vexo_hostmgr_capture::HostMgrAddCaptureNode(uint32_t hCapture, const _tagVexoCapturePictureInfo& info) {
    HostMgrCaptureNode* node = static_cast<HostMgrCaptureNode*>(
        vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_CAPTURE, sizeof(HostMgrCaptureNode), 1));
    if (node == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_utility_malloc failed!!!");
        return -1;
    }
    *node = HostMgrCaptureNode{hCapture, info, m_capturePictureList.tail, NULL};
    if (m_capturePictureList.head == NULL && m_capturePictureList.tail == NULL) {
        HOSTMGR_ASSERT(FILE_TAG, m_capturePictureList.nodeNum == 0);
        m_capturePictureList.head = node;
    } else {
        HOSTMGR_ASSERT(FILE_TAG, (m_capturePictureList.head != NULL) && (m_capturePictureList.tail != NULL) &&
                                     (m_capturePictureList.nodeNum != 0));
        m_capturePictureList.tail->next = node;
    }
    m_capturePictureList.tail = node;
    m_capturePictureList.nodeNum++;
    if (m_capturePictureList.nodeNum < HOSTMGR_MAX_CAPTURE_PICTURES)
        return 0;
    for (uint32_t count = 0; count < PICTURES_TRIMMED; ++count) {
        node = m_capturePictureList.head;
        if (node == m_capturePictureList.tail)
            HOSTMGR_ASSERT(FILE_TAG, m_capturePictureList.nodeNum == 1);
        else
            HOSTMGR_ASSERT(FILE_TAG, node->next != NULL);
        HOSTMGR_ASSERT(FILE_TAG, m_capturePictureList.nodeNum > 0);
        RemoveNode(node, __func__);
    }
    return 0;
}

void vexo_hostmgr_capture::HostMgrDelCaptureNode(uint32_t hCapture) {
    HostMgrCaptureNode* next = NULL;
    for (HostMgrCaptureNode* node = m_capturePictureList.head; node != NULL; node = next) {
        next = node->next;
        if (node->hCapture != hCapture)
            continue;
        if (node != m_capturePictureList.tail)
            HOSTMGR_ASSERT(FILE_TAG, node->next != NULL);
        HOSTMGR_ASSERT(FILE_TAG, m_capturePictureList.nodeNum > 0);
        RemoveNode(node, __func__);
    }
}

// Without the lock: the object is going, and its worker has gone.
void vexo_hostmgr_capture::HostMgrDelAllCaptureNode() VEXO_NO_THREAD_SAFETY_ANALYSIS {
    while (m_capturePictureList.head != NULL) {
        HostMgrCaptureNode* node = m_capturePictureList.head;
        if (node != m_capturePictureList.tail)
            HOSTMGR_ASSERT(FILE_TAG, node->next != NULL);
        HOSTMGR_ASSERT(FILE_TAG, m_capturePictureList.nodeNum > 0);
        RemoveNode(node, __func__);
    }
}
