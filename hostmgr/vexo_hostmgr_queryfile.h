// The record file query of one login: the list of the last query and reading it entry by entry.
#ifndef VEXO_HOSTMGR_QUERYFILE_H
#define VEXO_HOSTMGR_QUERYFILE_H

#include "hostmgr_common.h"
#include "vexo_model.h"

/** One of the model library's own notes on a recorded file; only HostMgrDumpRecFile reads it. */
struct HostMgrRecFileNote {
    uint32_t reserved;
    uint32_t dwType;
    uint32_t dwNumber;
    uint32_t dwSeconds;  // since 1970
};
static_assert(sizeof(HostMgrRecFileNote) == 16, "four words");

/** For a debugger's hand: logs a note. Nothing calls it. */
void HostMgrDumpRecFile(const HostMgrRecFileNote* pNote);

/**
 * One login's search. One list at a time: a query that finds another one before it puts the new one in its place, and
 * the old one stays allocated (agents release each list, and have always paid for one that they did not).
 */
class vexo_hostmgr_queryfile {
public:
    vexo_hostmgr_queryfile();
    ~vexo_hostmgr_queryfile();
    vexo_hostmgr_queryfile(const vexo_hostmgr_queryfile&) = delete;
    vexo_hostmgr_queryfile& operator=(const vexo_hostmgr_queryfile&) = delete;

    int HostMgr_Dev_QueryFile(int hLogin, int lChannel, _tagVexoHostMgrQueryFile* pQuery) VEXO_EXCLUDES(m_inquyre_lock);
    int HostMgr_Dev_GetQueryFileResult(int hLogin, int lIndex, _tagVexoHostMgrQueryFileResult* pResult,
                                       unsigned int dwCount) VEXO_EXCLUDES(m_inquyre_lock);
    int HostMgr_Dev_QueryRelease(int hLogin) VEXO_EXCLUDES(m_inquyre_lock);
    /** Prints nothing and touches no lock. */
    void HostMgrQueryFileDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    int BuildResult(int lChannel) VEXO_REQUIRES(m_inquyre_lock);
    int ReadEntry(int lIndex, _tagVexoHostMgrQueryFileResult* pResult, unsigned int dwCount)
        VEXO_REQUIRES(m_inquyre_lock);
    int ReadBlock(_tagVexoHostMgrQueryFileResult* pResult, int lLast) VEXO_REQUIRES(m_inquyre_lock);
    void ReleaseResultNode() VEXO_REQUIRES(m_inquyre_lock);

    int32_t dwFileCnt VEXO_GUARDED_BY(m_inquyre_lock);
    vexo_rec_file_inquiry_result* pInquiryResult VEXO_GUARDED_BY(m_inquyre_lock);
    _tagVexoHostMgrQueryFileResult* pResultArray VEXO_GUARDED_BY(m_inquyre_lock);
    vexo_lock* m_inquyre_lock;
};

#endif
