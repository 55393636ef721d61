// The commands of a running play. Each locks and logs under the name of the one operation that they are reached by.
#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";
static const char CONTROL[] = "HostMgrHistoryStreamPlayControl";
#define CONTROL_HERE      \
    HostMgrSite {         \
        CONTROL, __LINE__ \
    }

int vexo_hostmgr_playback::HostMgrHistoryStreamPlayControl(int hLogin, int /*lStartChan*/, int /*lChanNum*/,
                                                           void* /*pCondBuf*/, unsigned int /*dwCondLength*/,
                                                           void* pInBuf, unsigned int dwInLength, void* /*pOutBuf*/,
                                                           unsigned int /*dwOutLength*/) {
    using Self = vexo_hostmgr_playback;
    struct Row {
        uint32_t dwPlayCmd;
        int (Self::*run)(const Command& command);
    };
    static constexpr Row ROWS[] = {
        {HOSTMGR_PLAYCMD_SPEED, &Self::ControlSpeed},
        {HOSTMGR_PLAYCMD_PAUSE, &Self::ControlPause},
        {HOSTMGR_PLAYCMD_SEEK, &Self::ControlSeek},
        {HOSTMGR_PLAYCMD_NOP, &Self::ControlNothing},
        {HOSTMGR_PLAYCMD_AUDIO, &Self::ControlAudio},
        {HOSTMGR_PLAYCMD_GETTIME, &Self::ControlGetTime},
        {HOSTMGR_PLAYCMD_DIRECTION, &Self::ControlDirection},
        {HOSTMGR_PLAYCMD_ADDCHAN, &Self::ControlAddChannel},
        {HOSTMGR_PLAYCMD_DELCHAN, &Self::ControlDeleteChannel},
        {HOSTMGR_PLAYCMD_STREAMTYPE, &Self::ControlStreamType},
    };
    Command command = {};
    if (pInBuf == NULL || dwInLength != sizeof(command.param)) {
        HOSTMGR_PRINTF(ERROR, "pInBuf %p, dwInLength %d size %d\n", pInBuf, dwInLength,
                       static_cast<int>(sizeof(command.param)));
        return -1;
    }
    memcpy(&command.param, pInBuf, sizeof(command.param));
    command.hLogin = hLogin;
    command.pTime = static_cast<unsigned char*>(pInBuf) + offsetof(HostMgrPlayCtrlParam, struTime);
    HOSTMGR_PRINTF(DEBUG, "PlayCmd 0x%x\n", command.param.dwPlayCmd);
    for (const Row& row : ROWS) {
        if (row.dwPlayCmd == command.param.dwPlayCmd)
            return (this->*row.run)(command);
    }
    HOSTMGR_PRINTF(ERROR, "Not support!! PlayCmd 0x%x\n", command.param.dwPlayCmd);
    return -1;
}

// ---- fields --------------------------------------------------------------------------------------------------------

int vexo_hostmgr_playback::ControlPause(const Command& command) {
    HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
    bPause = command.param.dwParam;
    return 0;
}

int vexo_hostmgr_playback::ControlNothing(const Command& /*command*/) {
    return 0;
}

int vexo_hostmgr_playback::ControlAudio(const Command& command) {
    HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
    bAudio = command.param.dwParam;
    return 0;
}

int vexo_hostmgr_playback::ControlDirection(const Command& command) {
    HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
    bReverse = static_cast<int32_t>(command.param.dwParam);
    return 0;
}

// A bad selector leaves the lock taken: agents know that such a login is lost. Its destruction lets the lock go.
int vexo_hostmgr_playback::ControlGetTime(const Command& command) {
    m_lock->lock(FILE_TAG, CONTROL);
    if (command.param.dwParam > HOSTMGR_PLAYTIME_STOP) {
        m_stranded = true;
        HostMgrPrintf(HOSTMGR_LEVEL_ERROR, CONTROL_HERE, "Error Param 0x%x\n", command.param.dwParam);
        return -1;
    }
    const _tagVexoHostMgrTime time = Time(command.param.dwParam);
    memcpy(command.pTime, &time, sizeof(time));
    m_lock->unlock(FILE_TAG, CONTROL);
    return 0;
}

// ---- speed ---------------------------------------------------------------------------------------------------------

int vexo_hostmgr_playback::ControlSpeed(const Command& command) {
    int speed = static_cast<int32_t>(command.param.dwParam);
    speed = speed < HOSTMGR_PLAY_SPEED_MIN ? HOSTMGR_PLAY_SPEED_MIN : speed;
    speed = speed > HOSTMGR_PLAY_SPEED_MAX ? HOSTMGR_PLAY_SPEED_MAX : speed;
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
        const unsigned int mode =
            speed < HOSTMGR_PLAY_SPEED_KEY_FRAMES ? HOSTMGR_READ_ALL_FRAMES : HOSTMGR_READ_KEY_FRAMES;
        Walk walk(this);
        while (const HostMgrPlayNode* node = walk.Next())
            node->pReader->set_frame_mode(mode);
    }
    HostMgrPrintf(HOSTMGR_LEVEL_DEBUG, CONTROL_HERE, "iSpeed %d\n", speed);
    return HostMgrApplyPlaySpeed(speed);
}

/** The first speed of a play opens its readers, without the lock: the replay thread goes on meanwhile. */
int vexo_hostmgr_playback::HostMgrApplyPlaySpeed(int speed) {
    iSpeed = speed;
    uint32_t play = 0;
    if (!BeginOpening(&play))
        return 0;
    OpenReaders();
    StartAdvanceReader(play);
    EndOpening(play);
    return 0;
}

/** False when the play has begun already, or another speed command is about to begin it. */
bool vexo_hostmgr_playback::BeginOpening(uint32_t* pPlay) {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    if (bPlay != 0 || m_opening)
        return false;
    m_opening = true;
    *pPlay = m_play;
    return true;
}

/** Does nothing for a play that a stop has ended meanwhile: the next one has a first speed command of its own. */
void vexo_hostmgr_playback::EndOpening(uint32_t dwPlay) {
    HostMgrLeafScope leaf(HostMgrPlayNode::s_lock);
    if (dwPlay != m_play)
        return;
    m_opening = false;
    bPlay = 1;
}

static long Seconds(const _tagVexoHostMgrTime& time) {
    time_t seconds = 0;
    HostMgrHostTimeToSeconds(&time, &seconds);
    return static_cast<long>(seconds);
}

// The direction is the sign bit alone here, where an added channel takes any value but 0 as reverse; and all frames are
// wanted, whatever the speed: the delivery drops the others itself. The recorder's readers are used to both. A stop
// meanwhile takes all channels that are left from the walk, and those of the next play are not in it.
void vexo_hostmgr_playback::OpenReaders() {
    const long start = Seconds(Time(HOSTMGR_PLAYTIME_START));
    const long stop = Seconds(Time(HOSTMGR_PLAYTIME_STOP));
    Walk walk(this);
    while (const HostMgrPlayNode* node = walk.Next()) {
        vexo_avss_file_reader* reader = node->pReader;
        reader->open(node->pInquiryResult);
        reader->set_stream_type(HostMgrReaderStreamType(node->dwStreamType));
        reader->set_direction(bReverse < 0 ? HOSTMGR_READ_BACKWARD : HOSTMGR_READ_FORWARD);
        reader->set_frame_mode(HOSTMGR_READ_ALL_FRAMES);
        reader->start();
        reader->set_time_range(start, stop);
    }
}

// ---- seek ----------------------------------------------------------------------------------------------------------

int vexo_hostmgr_playback::ControlSeek(const Command& command) {
    if (bStart == 0)
        return -1;
    const _tagVexoHostMgrTime& time = command.param.struTime;
    const long seconds = Seconds(time);
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
        SetCurTime(time);
        vexo_advance_avss_file_reader* advance = AdvanceReader();
        if (advance != NULL) {
            HostMgrPuts(HOSTMGR_LEVEL_DEBUG, CONTROL_HERE, "vexo_advance_avss_file_reader seek!!");
            advance->seek(seconds);
        }
        Walk walk(this);
        while (HostMgrPlayNode* node = walk.Next()) {
            node->tvLastSend = {};
            node->tvLastFrame = {};
            node->pReader->seek(seconds);
        }
    }
    HostMgrPrintf(HOSTMGR_LEVEL_DEBUG, CONTROL_HERE, "**** SeekTime %04d-%02d-%02d %02d:%02d:%02d ******\n",
                  time.dwYear, time.dwMonth, time.dwDay, time.dwHour, time.dwMinute, time.dwSecond);
    return 0;
}

// ---- channels ------------------------------------------------------------------------------------------------------

int vexo_hostmgr_playback::ControlAddChannel(const Command& command) {
    HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
    const _tagVexoHostMgrTime start = Time(HOSTMGR_PLAYTIME_START);
    const _tagVexoHostMgrTime stop = Time(HOSTMGR_PLAYTIME_STOP);
    int hStream = -1;
    HostMgrAddPlayNode(command.hLogin, static_cast<int>(command.param.dwParam), &start, &stop, &hStream);
    return 0;
}

// Deletes without the lock: a callback of a reader playback may send this for its own channel while a pass is under
// way.
int vexo_hostmgr_playback::ControlDeleteChannel(const Command& command) {
    { HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL); }
    return HostMgrDelPlayNode(command.hLogin, static_cast<int>(command.param.dwParam));
}

int vexo_hostmgr_playback::ControlStreamType(const Command& command) {
    const unsigned int type = command.param.dwParam2 < HOSTMGR_STREAM_SUB ? HOSTMGR_STREAM_MAIN : HOSTMGR_STREAM_SUB;
    HostMgrLockScope lock(m_lock, FILE_TAG, CONTROL);
    Walk walk(this);
    while (HostMgrPlayNode* node = walk.Next()) {
        if (node->uCh != command.param.dwParam - 1)
            continue;
        node->pReader->set_stream_type(type);
        node->dwStreamType = type;
        break;
    }
    return 0;
}
