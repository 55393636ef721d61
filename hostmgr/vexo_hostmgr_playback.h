// History playback of one login: the list of played channels with their readers, and the state that they share.
// Searching for recordings does not belong here; see vexo_hostmgr_queryfile.h.
//
// Sources by subject: _playback (life, lists, exported calls), _node (making, pinning and freeing a channel),
// _replay (the replay thread), _control (the commands), _reader (the advance reader), _dump.
#ifndef VEXO_HOSTMGR_PLAYBACK_H
#define VEXO_HOSTMGR_PLAYBACK_H

#include "hostmgr_common.h"
#include "vexo_model.h"

class vexo_hostmgr_playback;

// Values of the model library's readers.
constexpr unsigned int HOSTMGR_READ_KEY_FRAMES = 0;
constexpr unsigned int HOSTMGR_READ_ALL_FRAMES = 2;
constexpr unsigned int HOSTMGR_READ_FORWARD = 0;
constexpr unsigned int HOSTMGR_READ_BACKWARD = 1;

/**
 * One channel of a play. The list holds it, and so does whoever works on it; unlinked at once, it is closed and freed
 * by the last who lets go, so nobody waits for a callback. What is not marked is set once, or is the play's lock's.
 */
struct HostMgrPlayNode {
    int32_t hLogin;
    uint32_t uCh;                        // counted from 0
    uint32_t hStream;                    // hLogin << 16 | channel counted from 1
    uint32_t dwMode;                     // the play's when the node was made
    std::atomic<uint32_t> dwStreamType;  // 1: main stream, 2: sub stream
    uint8_t bFinish;
    vexo_rec_file_inquiry_result* pInquiryResult;
    vexo_avss_file_reader* pReader;
    struct timeval tvLastSend;   // wall clock; both words 0: nothing delivered yet
    struct timeval tvLastFrame;  // the last delivered frame's time stamp
    vexo_hostmgr_stream_callback pfnStreamCallBack;
    void* pUser;
    vexo_hostmgr_stream_callback_v2 pfnNodeCallBackV2;  // nothing sets it
    void* pNodeUserV2;
    vexo_hostmgr_playback* pPlayback;

    /** The leaf lock of all nodes and of the lists that they are in: a node may outlive its play. */
    static HostMgrLeafLock s_lock;
    HostMgrPlayNode* pNext VEXO_GUARDED_BY(s_lock);
    HostMgrPlayNode* pPrev VEXO_GUARDED_BY(s_lock);
    uint32_t dwHolds VEXO_GUARDED_BY(s_lock) = 1;  // the maker's, then the list's
    bool bUnlinked VEXO_GUARDED_BY(s_lock);
    vexo_advance_avss_file_reader* pLeaves VEXO_GUARDED_BY(s_lock);  // to be removed from it; only once unlinked
};

constexpr unsigned int HostMgrReaderStreamType(unsigned int dwStreamType) {
    return dwStreamType == HOSTMGR_STREAM_MAIN ? HOSTMGR_STREAM_MAIN : HOSTMGR_STREAM_SUB;
}

/**
 * One login's playback: frames go to a callback of the stream on the replay thread (callback playback), or to one
 * callback on the advance reader's thread (reader playback).
 *
 *     stopped --start--> idle --first speed--> playing <--pause--> paused
 *        ^                |                       |                  |
 *        |                |            all channels have ended       |
 *        |                |                       v                  |
 *        +-----stop-------+---------stop------- ended ------stop-----+
 *
 * Speed, pause, direction and audio may be set in any state and hold across a stop. A first speed before the start
 * makes the play begin with it.
 *
 * m_lock is held for a whole call or a whole pass of the replay thread, its callbacks included; HostMgrPlayNode::s_lock
 * for the few words that the reader's callback, the opening of the readers and the removal of a channel share with
 * them.
 */
class vexo_hostmgr_playback {
public:
    vexo_hostmgr_playback();
    ~vexo_hostmgr_playback();
    vexo_hostmgr_playback(const vexo_hostmgr_playback&) = delete;
    vexo_hostmgr_playback& operator=(const vexo_hostmgr_playback&) = delete;

    // Channels are counted from 1.
    int HostMgr_Dev_StartHistoryPlay(int hLogin, int lChannel, unsigned int dwMode, _tagVexoHostMgrTime* pStartTime,
                                     _tagVexoHostMgrTime* pStopTime) VEXO_EXCLUDES(m_lock);
    int HostMgr_Dev_StartHistoryPlayV2(int hLogin, int lChannel, unsigned int dwMode, _tagVexoHostMgrTime* pStartTime,
                                       _tagVexoHostMgrTime* pStopTime,
                                       vexo_hostmgr_stream_callback_v2 pfnStreamCallBackV2, void* pUser)
        VEXO_EXCLUDES(m_lock);
    int HostMgr_Dev_StopHistoryPlay(int hLogin, int hStream) VEXO_EXCLUDES(m_lock);
    int HostMgr_Dev_SetHistoryStreamCallback(int hLogin, int hStream, vexo_hostmgr_stream_callback pfnStreamCallBack,
                                             void* pUser) VEXO_EXCLUDES(m_lock);
    int HostMgrHistoryStreamPlayControl(int hLogin, int lStartChan, int lChanNum, void* pCondBuf,
                                        unsigned int dwCondLength, void* pInBuf, unsigned int dwInLength, void* pOutBuf,
                                        unsigned int dwOutLength) VEXO_EXCLUDES(m_lock);
    void HostMgrPlaybackDump(unsigned int command, vexo_print_func print) VEXO_EXCLUDES(m_lock);

    HostMgrUseCount m_use;

private:
    /** Visits the nodes in list order, whatever is unlinked meanwhile; the one it is at is held. */
    class Walk {
    public:
        explicit Walk(vexo_hostmgr_playback* play);
        ~Walk();
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;
        HostMgrPlayNode* Next();

    private:
        friend class vexo_hostmgr_playback;
        vexo_hostmgr_playback* const m_play;
        HostMgrPlayNode* m_held;
        HostMgrPlayNode* m_next VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
        Walk* m_other VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    };

    /** A command, its words copied out of the caller's buffer; pTime is where the buffer has its time. */
    struct Command {
        HostMgrPlayCtrlParam param;
        int hLogin;
        void* pTime;
    };

    /** A frame on its way to a stream's callback. */
    struct StreamFrame {
        vexo_hostmgr_stream_callback pfnCallBack;
        void* pUser;
        unsigned char* frame;  // null: the end mark
        unsigned int length;
    };

    /** What a reader start asks for. */
    struct ReaderPlay {
        int hLogin;
        int lChannel;
        _tagVexoHostMgrTime struStartTime;
        _tagVexoHostMgrTime struStopTime;
        vexo_hostmgr_stream_callback_v2 pfnCallBack;
        void* pUser;
    };

    /** An advance reader that the play has let go; busy: somebody, as a rule its callback, still holds a channel. */
    struct Detached {
        vexo_advance_avss_file_reader* reader;
        bool busy;
    };

    /** What becomes of the replay thread that a stop is about to join. */
    enum class Ending : uint32_t { NONE, JOINED, JOINED_THEN_STARTED };

    // A channel.
    HostMgrPlayNode* HostMgrMallocPlayNode(int nodeLogin, int lChannel, const _tagVexoHostMgrTime* pStartTime,
                                           const _tagVexoHostMgrTime* pStopTime) VEXO_REQUIRES(m_lock);
    bool HostMgrAddPlayNode(int nodeLogin, int lChannel, const _tagVexoHostMgrTime* pStartTime,
                            const _tagVexoHostMgrTime* pStopTime, int* pStream) VEXO_REQUIRES(m_lock);
    int HostMgrDelPlayNode(int nodeLogin, int lChannel) VEXO_EXCLUDES(HostMgrPlayNode::s_lock);
    static void HostMgrFreePlayNode(HostMgrPlayNode* node);
    void HostMgrClearFinishedNodes();
    void Link(HostMgrPlayNode* node);
    void Unlink(HostMgrPlayNode* node) VEXO_REQUIRES(HostMgrPlayNode::s_lock);
    void DeleteAllNodes();
    static void LetGo(HostMgrPlayNode* node);
    uint32_t NodeCount();

    // The replay thread.
    void NeedThread() VEXO_REQUIRES(m_lock);
    void CreateThread() VEXO_REQUIRES(m_lock);
    unsigned long ClaimThread() VEXO_REQUIRES(m_lock);
    void JoinThread(unsigned long thread) VEXO_EXCLUDES(m_lock);
    static void* HostMgrRePlayThread(void* argument);
    bool HostMgrPlaybackIsStop() const;
    int HostMgrHistoryStreamRePlay() VEXO_EXCLUDES(m_lock);
    bool ReplayNode(HostMgrPlayNode* node) VEXO_REQUIRES(m_lock);
    unsigned char* ReadUnskipped(HostMgrPlayNode* node) VEXO_REQUIRES(m_lock);
    int HostMgrSendData(HostMgrPlayNode* node, unsigned char* frame, unsigned int length) VEXO_REQUIRES(m_lock);
    static void Hand(const HostMgrPlayNode* node, const StreamFrame& out);
    int SendPaced(HostMgrPlayNode* node, const vexo_frame_header& header, const StreamFrame& out) VEXO_REQUIRES(m_lock);
    static bool IsDue(HostMgrPlayNode* node, const struct timeval& stamp, int speed);
    int HostMgrHistoryStreamStopPlay(vexo_advance_avss_file_reader** ppBusy) VEXO_REQUIRES(m_lock);

    // Commands; each answers 0 or -1.
    int ControlSpeed(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlPause(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlSeek(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlNothing(const Command& command);
    int ControlAudio(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlGetTime(const Command& command) VEXO_NO_THREAD_SAFETY_ANALYSIS;
    int ControlDirection(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlAddChannel(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlDeleteChannel(const Command& command) VEXO_EXCLUDES(m_lock);
    int ControlStreamType(const Command& command) VEXO_EXCLUDES(m_lock);
    int HostMgrApplyPlaySpeed(int speed);
    bool BeginOpening(uint32_t* pPlay);
    void OpenReaders();
    void StartAdvanceReader(uint32_t dwPlay);
    void EndOpening(uint32_t dwPlay);
    void EndPlay();

    // The advance reader.
    const char* StartReaderPlay(const ReaderPlay& play, int* pStream) VEXO_REQUIRES(m_lock);
    int creat_advance_avss_reader() VEXO_REQUIRES(m_lock);
    void destroy_advance_avss_reader(vexo_advance_avss_file_reader* reader);
    void EndAdvanceReader(vexo_advance_avss_file_reader* reader);
    vexo_advance_avss_file_reader* AdvanceReader();
    Detached DetachAdvanceReader();
    void RemoveReaders(vexo_advance_avss_file_reader* reader);
    HostMgrPlayNode* FindLeaving(const vexo_advance_avss_file_reader* reader) VEXO_REQUIRES(HostMgrPlayNode::s_lock);
    vexo_advance_avss_file_reader* TakeFromLeaving(HostMgrPlayNode* node) VEXO_REQUIRES(HostMgrPlayNode::s_lock);
    void EndReaderUse();
    static int Deliver(HostMgrPlayNode* node, unsigned char* frame);
    static unsigned int VexoHisStreamCallBack(void* usr_para, VEXO_BOOL is_valid_data, unsigned char* frame);
    int HostMgrHistoryStreamPlayData(HostMgrPlayNode* node, unsigned char* frame);

    // Times, which a reader's callback and the opening of the readers read without m_lock.
    _tagVexoHostMgrTime Time(uint32_t dwSelector);
    void SetCurTime(uint32_t seconds);
    void SetCurTime(const _tagVexoHostMgrTime& time);

    void DumpPlay(vexo_print_func print) VEXO_REQUIRES(m_lock);
    void DumpNodes(vexo_print_func print) VEXO_REQUIRES(m_lock);

    std::atomic<uint32_t> bStart;
    std::atomic<uint32_t> bPlay;
    std::atomic<uint32_t> bPause;
    std::atomic<int32_t> bReverse;
    std::atomic<int32_t> iSpeed;
    std::atomic<uint32_t> bAudio;
    uint32_t dwNodeCnt VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    uint32_t dwMode VEXO_GUARDED_BY(m_lock);  // 0: playback, otherwise download
    _tagVexoHostMgrTime struStartTime VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    _tagVexoHostMgrTime struStopTime VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    _tagVexoHostMgrTime struCurTime VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    vexo_hostmgr_stream_callback pfnStreamCallBack;  // nothing sets it: agents register by stream
    void* pUser;
    vexo_hostmgr_stream_callback_v2 pfnStreamCallBackV2 VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    void* pUserV2 VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    HostMgrPlayNode* pHead VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    HostMgrPlayNode* pTail VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    vexo_advance_avss_file_reader* pAdvanceReader VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    unsigned long hThread VEXO_GUARDED_BY(m_lock);
    vexo_lock* m_lock;

    std::atomic<Ending> m_ending;  // of a thread whose handle a stop has claimed
    std::atomic<bool> m_stranded;  // m_lock was left taken
    Walk* m_walks VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);
    HostMgrPlayNode* m_leaving VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);  // unlinked, but still in an advance reader
    uint32_t m_play VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);             // number of the play; a stop ends it
    bool m_opening VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);              // a first speed command is at its readers
    uint32_t m_reader_uses VEXO_GUARDED_BY(HostMgrPlayNode::s_lock);      // calls on an advance reader without m_lock
    HostMgrLeafCondition m_reader_idle;                                   // m_reader_uses has come to 0
};

#endif
