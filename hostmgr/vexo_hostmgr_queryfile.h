// The record file query of one login: the list of the last query and reading it entry by entry.
#ifndef VEXO_HOSTMGR_QUERYFILE_H
#define VEXO_HOSTMGR_QUERYFILE_H

#include "hostmgr_common.h"
#include "vexo_model.h"

class vexo_hostmgr_queryfile {
public:
    vexo_hostmgr_queryfile();
    ~vexo_hostmgr_queryfile();
    vexo_hostmgr_queryfile(const vexo_hostmgr_queryfile&) = delete;
    vexo_hostmgr_queryfile& operator=(const vexo_hostmgr_queryfile&) = delete;

    int HostMgr_Dev_QueryFile(int hLogin, int lChannel, _tagVexoHostMgrQueryFile* pQuery);
    int HostMgr_Dev_GetQueryFileResult(int hLogin, int lIndex, _tagVexoHostMgrQueryFileResult* pResult,
                                       unsigned int dwCount);
    int HostMgr_Dev_QueryRelease(int hLogin);
    /** Prints nothing and touches no lock. */
    void HostMgrQueryFileDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    void ReleaseResultNode();

    int32_t dwFileCnt;
    vexo_rec_file_inquiry_result* pInquiryResult;
    _tagVexoHostMgrQueryFileResult* pResultArray;
    vexo_lock* m_inquyre_lock;
};

#endif
