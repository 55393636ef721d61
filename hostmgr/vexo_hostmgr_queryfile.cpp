#include "vexo_hostmgr_queryfile.h"

static const char FILE_TAG[] = "vexo_hostmgr_queryfile";

vexo_hostmgr_queryfile::vexo_hostmgr_queryfile() : dwFileCnt(0), pInquiryResult(NULL), pResultArray(NULL) {
    m_inquyre_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_queryfile");
    HOSTMGR_ASSERT_AT(FILE_TAG, 18, m_inquyre_lock != NULL);
}

vexo_hostmgr_queryfile::~vexo_hostmgr_queryfile() {
    ReleaseResultNode();
    vexo_utility_delete_lock(m_inquyre_lock, FILE_TAG, __func__);
    m_inquyre_lock = NULL;
}

void vexo_hostmgr_queryfile::ReleaseResultNode() {
    if (pInquiryResult != NULL) {
        vexo_model_free_inquiry_rec_result(pInquiryResult);
        pInquiryResult = NULL;
    }
    if (pResultArray != NULL) {
        vexo_utility_free(FILE_TAG, __func__, pResultArray);
        pResultArray = NULL;
    }
}

void vexo_hostmgr_queryfile::HostMgrQueryFileDump(unsigned int /*command*/, vexo_print_func /*print*/) {}

// The query is not built yet; each operation answers -1 and does nothing.

int vexo_hostmgr_queryfile::HostMgr_Dev_QueryFile(int, int, _tagVexoHostMgrQueryFile*) {
    return -1;
}

int vexo_hostmgr_queryfile::HostMgr_Dev_GetQueryFileResult(int, int, _tagVexoHostMgrQueryFileResult*, unsigned int) {
    return -1;
}

int vexo_hostmgr_queryfile::HostMgr_Dev_QueryRelease(int) {
    return -1;
}
