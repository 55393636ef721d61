// The talk object: its making and end, start, stop, callback and dump.
#include "vexo_hostmgr_talkback.h"

static const char FILE_TAG[] = "vexo_hostmgr_talkback";

vexo_hostmgr_talkback::vexo_hostmgr_talkback()
    : m_talk(), bRun(0), m_TalkAudioData{0, NULL}, m_TalkPlayQueue{0, NULL, NULL}, hThread(0) {
    m_TalkAudioData.audioData = static_cast<unsigned char*>(
        vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, HOSTMGR_TALK_BLOCK_MAX, 1));
    HOSTMGR_ASSERT(FILE_TAG, NULL != m_TalkAudioData.audioData);
    memset(m_TalkAudioData.audioData, 0, HOSTMGR_TALK_BLOCK_MAX);
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_talkback");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
    m_TalkPlayLock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_talkback play lock");
    HOSTMGR_ASSERT(FILE_TAG, m_TalkPlayLock != NULL);
}

// The order of the platform's calls is fixed, the thread comes after the block that it works on: so its turn is ended
// first, and its pass, if one is under way, waited for.
vexo_hostmgr_talkback::~vexo_hostmgr_talkback() {
    const EndedWorkers ended = EndWorker();
    WaitForPass();
    vexo_utility_free(FILE_TAG, __func__, m_TalkAudioData.audioData);
    m_TalkAudioData = {0, NULL};
    {
        HostMgrLockScope playLock(m_TalkPlayLock, FILE_TAG, __func__);
        HostMgrClrTalkPlayNode();
    }
    RetrieveWorkers(ended);
    vexo_utility_delete_lock(m_TalkPlayLock, FILE_TAG, __func__);
    m_TalkPlayLock = NULL;
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// ---- the talk's words ----------------------------------------------------------------------------------------------

vexo_hostmgr_talkback::Talk vexo_hostmgr_talkback::CurrentTalk() {
    HostMgrLeafScope scope(m_leaf);
    return m_talk;
}

void vexo_hostmgr_talkback::SetTalk(const Talk& talk) {
    HostMgrLeafScope scope(m_leaf);
    m_talk = talk;
}

uint32_t vexo_hostmgr_talkback::HostMgrGethTalk() {
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    return CurrentTalk().hTalk;
}

// ---- start and stop ------------------------------------------------------------------------------------------------

/** What speaks against a talk with a channel, or null. */
const char* vexo_hostmgr_talkback::WhyNotStart(int lChannel) {
    if (bRun != 0)
        return "is run!!";
    const Talk left = CurrentTalk();
    if (left.hLogin != 0 && left.hTalk != 0)
        return "overflow ";
    const vexo_dev_capability* capability = vexo_model_get_dev_capability();
    if (capability == NULL)
        return "vexo_model_get_dev_capability error";
    if (lChannel < 0 || static_cast<unsigned int>(lChannel) > capability->analog_channels)
        return "INVALID_PARA";
    return NULL;
}

int vexo_hostmgr_talkback::HostMgr_Dev_StartTalkEx(int hLogin, int lChannel, _tagVexoHostMgrTalkParam* pParam) {
    if (pParam == NULL) {
        HOSTMGR_PUTS(ERROR, "NULL == pParam");
        return -1;
    }
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "hLogin 0x%x <= 0\n", static_cast<unsigned int>(hLogin));
        return -1;
    }
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    const char* refusal = WhyNotStart(lChannel);
    if (refusal != NULL) {
        HOSTMGR_PUTS(ERROR, refusal);
        return -1;
    }
    const vexo_talk_mode mode = lChannel != 0 ? VEXO_TALK_CHANNEL : VEXO_TALK_DEVICE;
    const unsigned int channel = lChannel != 0 ? static_cast<unsigned int>(lChannel) - 1 : 0;
    unsigned int hTalk = 0;
    if (vexo_model_start_talking(static_cast<unsigned int>(hLogin), mode, channel, &hTalk) != 0) {
        HOSTMGR_PRINTF(ERROR, "start talk failed hTalk 0x%x!!\n", hTalk);
        return -1;
    }
    SetTalk({hLogin, hTalk, NULL, NULL});
    if (hThread == 0)
        StartWorker();
    bRun = 1;
    return static_cast<int>(hTalk);
}

int vexo_hostmgr_talkback::HostMgr_Dev_StopTalk(int hLogin, int hTalk) {
    if (hLogin <= 0) {
        HOSTMGR_PRINTF(ERROR, "hLogin 0x%x <= 0\n", static_cast<unsigned int>(hLogin));
        return -1;
    }
    if (hTalk <= 0) {
        HOSTMGR_PRINTF(ERROR, "hTalk 0x%x <= 0\n", static_cast<unsigned int>(hTalk));
        return -1;
    }
    EndedWorkers ended;
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
        if (bRun == 0) {
            HOSTMGR_PUTS(ERROR, "is not run");
            return -1;
        }
        bRun = 0;
        // Another handle stops this side alone: the recorder's talk goes on and its handle stays here.
        if (static_cast<uint32_t>(hTalk) == CurrentTalk().hTalk) {
            if (vexo_model_stop_talking(static_cast<unsigned int>(hTalk)) != 0) {
                HOSTMGR_PRINTF(ERROR, "vexo_model_stop_talking failed!! hTalk 0x%x\n",
                               static_cast<unsigned int>(hTalk));
                return -1;
            }
            SetTalk({});
        }
        ended = EndWorker();
        HostMgrLockScope playLock(m_TalkPlayLock, FILE_TAG, __func__);
        HostMgrClrTalkPlayNode();
    }
    RetrieveWorkers(ended);
    return 0;
}

// A callback that was taken in as the talk ended would belong to the next talk: so the handles are looked at again.
int vexo_hostmgr_talkback::HostMgr_Dev_SetTalkCallback(int hLogin, int hTalk, vexo_hostmgr_talk_callback callback,
                                                       void* pUser) {
    if (!CurrentTalk().Is(hLogin, hTalk))
        return -1;
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    HostMgrLeafScope scope(m_leaf);
    if (!m_talk.Is(hLogin, hTalk))
        return -1;
    m_talk.fnTalkCallback = callback;
    m_talk.pUser = pUser;
    return 0;
}

// ---- dump ----------------------------------------------------------------------------------------------------------

// There is nothing to print but that the talk is busy.
void vexo_hostmgr_talkback::HostMgrTalkDump(unsigned int /*command*/, vexo_print_func print) {
    if (m_lock->rd_trylock(FILE_TAG, __func__) != 0) {
        HostMgrPrintLockInfo(m_lock, HOSTMGR_DUMP_BUSY, print);
        return;
    }
    m_lock->unlock(FILE_TAG, __func__);
}
