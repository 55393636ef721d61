#include "vexo_hostmgr_queryfile.h"

static const char FILE_TAG[] = "vexo_hostmgr_queryfile";

constexpr unsigned int RIGHT_SEARCH = 8;
constexpr uint32_t FILE_FLAG = 2;

/** What a file type searches for. */
struct InquiryType {
    unsigned int type_mask;
    unsigned int inquiry_type;
};
constexpr InquiryType INQUIRY_TYPES[] = {
    {0xFFFF, 0},  // 0: all
    {1, 0},       // 1, and all types past the table
    {2, 0},       // 2
    {4, 0},       // 3
    {6, 0},       // 4
    {6, 1},       // 5
};

static const InquiryType& InquiryTypeOf(uint32_t dwFileType) {
    return INQUIRY_TYPES[dwFileType < sizeof(INQUIRY_TYPES) / sizeof(INQUIRY_TYPES[0]) ? dwFileType : 1];
}

vexo_hostmgr_queryfile::vexo_hostmgr_queryfile() : dwFileCnt(0), pInquiryResult(NULL), pResultArray(NULL) {
    m_inquyre_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_queryfile");
    HOSTMGR_ASSERT_AT(FILE_TAG, 18, m_inquyre_lock != NULL);
}

vexo_hostmgr_queryfile::~vexo_hostmgr_queryfile() {
    ReleaseResultNode();
    vexo_utility_delete_lock(m_inquyre_lock, FILE_TAG, __func__);
    m_inquyre_lock = NULL;
}

// ---- query ---------------------------------------------------------------------------------------------------------

int vexo_hostmgr_queryfile::HostMgr_Dev_QueryFile(int hLogin, int lChannel, _tagVexoHostMgrQueryFile* pQuery) {
    if (pQuery == NULL) {
        HOSTMGR_PUTS(ERROR, "pQuery is null!!");
        return -1;
    }
    if (hLogin < 1) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    const unsigned int channel = static_cast<unsigned int>(lChannel) - 1;
    if (HostMgrCheckUserAuthority(hLogin, RIGHT_SEARCH, channel) != 0) {
        HOSTMGR_PUTS(ERROR, "HostMgrCheckUserAuthority failed!!!!");
        return -1;
    }
    vexo_time_struct start = {};
    vexo_time_struct stop = {};
    HostMgrHostToVexoTime(&pQuery->struStartTime, &start);
    HostMgrHostToVexoTime(&pQuery->struStopTime, &stop);
    const InquiryType& type = InquiryTypeOf(pQuery->dwFileType);
    HostMgrLockScope lock(m_inquyre_lock, FILE_TAG, __func__);
    // Straight into the field: a list that was not released before is lost.
    if (vexo_model_inquiry_rec_by_time(static_cast<unsigned int>(hLogin), VEXO_USER_HOSTMGR, channel, &start, &stop,
                                       type.type_mask, type.inquiry_type, &pInquiryResult) != 0)
        return -1;
    return BuildResult(lChannel);
}

static int32_t CountFiles(const vexo_rec_file_inquiry_result* result) {
    int32_t count = 0;
    for (const vexo_rec_file* file = result != NULL ? result->first : NULL; file != NULL; file = file->next)
        ++count;
    return count;
}

static _tagVexoHostMgrQueryFileResult* NewResultArray(int32_t count) {
    const uint64_t size = sizeof(_tagVexoHostMgrQueryFileResult) * static_cast<uint64_t>(count);
    if (size > UINT32_MAX)
        return NULL;
    void* array = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_QUERY, static_cast<unsigned int>(size), 1);
    if (array != NULL)
        memset(array, 0, static_cast<size_t>(size));
    return static_cast<_tagVexoHostMgrQueryFileResult*>(array);
}

static void FillEntry(int lChannel, const vexo_rec_file& file, _tagVexoHostMgrQueryFileResult* entry) {
    entry->dwChannel = static_cast<uint32_t>(lChannel);
    entry->dwFileFlag = FILE_FLAG;
    HostMgrSecondsToHostTime(static_cast<time_t>(file.start), &entry->struStartTime);
    HostMgrSecondsToHostTime(static_cast<time_t>(file.stop), &entry->struStopTime);
    entry->dwRecInfo1 = file.info_1;
    entry->dwRecInfo2 = file.info_2;
}

/** Makes the entries of the list just found: their number, or -1 without memory for them. */
int vexo_hostmgr_queryfile::BuildResult(int lChannel) {
    const int32_t count = CountFiles(pInquiryResult);
    _tagVexoHostMgrQueryFileResult* entries = NULL;
    if (count != 0) {
        entries = NewResultArray(count);
        if (entries == NULL)
            return -1;
        int32_t index = 0;
        for (const vexo_rec_file* file = pInquiryResult->first; file != NULL; file = file->next, ++index) {
            if (index >= count) {
                HostMgrPrintf(HOSTMGR_LEVEL_WARNING, HostMgrSite{"HostMgr_Dev_QueryFile", __LINE__},
                              "(cnt:%d > FileCnt:%d, please check!!!\n", index + 1, count);
                break;
            }
            FillEntry(lChannel, *file, &entries[index]);
        }
    }
    pResultArray = entries;
    dwFileCnt = count;
    return count;
}

// ---- reading -------------------------------------------------------------------------------------------------------

int vexo_hostmgr_queryfile::HostMgr_Dev_GetQueryFileResult(int hLogin, int lIndex,
                                                           _tagVexoHostMgrQueryFileResult* pResult,
                                                           unsigned int dwCount) {
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    HostMgrLockScope lock(m_inquyre_lock, FILE_TAG, __func__);
    if (pResult == NULL)
        return dwFileCnt;
    return lIndex >= 0 ? ReadEntry(lIndex, pResult, dwCount) : ReadBlock(pResult, static_cast<int>(dwCount));
}

// The count outlives a release, the entries do not: nothing of them is touched then.
int vexo_hostmgr_queryfile::ReadEntry(int lIndex, _tagVexoHostMgrQueryFileResult* pResult, unsigned int dwCount) {
    if (lIndex >= dwFileCnt)
        return -1;
    if (dwCount == 0)
        return 0;
    if (pResultArray == NULL)
        return -1;
    *pResult = pResultArray[lIndex];
    return 1;
}

/** Entries 0 to lLast, and so one more than the caller's count: agents have room for it and rely on it. */
int vexo_hostmgr_queryfile::ReadBlock(_tagVexoHostMgrQueryFileResult* pResult, int lLast) {
    int index = 0;
    for (; index < dwFileCnt && index <= lLast; ++index) {
        if (pResultArray == NULL)
            return -1;
        pResult[index] = pResultArray[index];
    }
    return index;
}

// ---- release -------------------------------------------------------------------------------------------------------

int vexo_hostmgr_queryfile::HostMgr_Dev_QueryRelease(int hLogin) {
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    HostMgrLockScope lock(m_inquyre_lock, FILE_TAG, __func__);
    ReleaseResultNode();
    return 0;
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

// ---- diagnostics ---------------------------------------------------------------------------------------------------

void vexo_hostmgr_queryfile::HostMgrQueryFileDump(unsigned int /*command*/, vexo_print_func /*print*/) {}

void HostMgrDumpRecFile(const HostMgrRecFileNote* pNote) {
    _tagVexoHostMgrTime time;
    HostMgrSecondsToHostTime(static_cast<time_t>(pNote->dwSeconds), &time);
    HOSTMGR_PRINTF(DEBUG, "No-%d Type-0x%x Time-%02d:%02d:%02d\n", pNote->dwNumber, pNote->dwType, time.dwHour,
                   time.dwMinute, time.dwSecond);
}
