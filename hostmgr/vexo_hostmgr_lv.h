// Live view of one login: the stream buffers through which an agent reads live frames, and the zero channel's state.
// The frames stay in the model library's lists; a stream buffer is a reading position.
#ifndef VEXO_HOSTMGR_LV_H
#define VEXO_HOSTMGR_LV_H

#include "hostmgr_common.h"
#include "vexo_model.h"

constexpr uint32_t HOSTMGR_LV_SLOTS = 128;

/** A stream buffer's slot. */
struct HostMgrLvInfo {
    uint32_t hLogin;         // 0: the slot is free
    uint32_t dwChannel;      // counted from 1
    uint32_t dwStreamIdx;    // 1: main stream, 2: sub stream
    uint32_t bVideoFirst;    // 1 until the first video frame has been read
    uint32_t bAudioFirst;    // 1 until the first audio frame has been read
    uint32_t dwLastEncType;  // of the frame last handed out: 1, 2 or 128
    vexo_read_av_list_note stVideoNode;
    vexo_read_av_list_note stAudioNode;
    uint32_t bReleased;  // 0: the caller still holds the frame last handed out
    uint32_t bNoVideo;   // the no-video-signal flag of the frame last read
    uint32_t dwVideoFrameNo;
    uint32_t dwAudioFrameNo;
    uint32_t bAudioEnable;  // audio is read only while this is exactly 1
};
static_assert(sizeof(HostMgrLvInfo) == 60, "fifteen words");

/**
 * One login's live view.
 *
 *     free --Create--> open, nothing held --Read--> open, frame held --Destroy--> free
 *                            ^   |                     |       ^ |
 *                            |   +------Destroy----> free      +-+ Read (releases, then reads)
 *                            +-------Release, failed Read------+
 *
 * Every slot is read and changed under m_lock, which is held across the model library's frame calls: they do not wait,
 * and a slot must not move between a frame's release and the next frame's reading.
 */
class vexo_hostmgr_lv {
public:
    vexo_hostmgr_lv();
    ~vexo_hostmgr_lv();
    vexo_hostmgr_lv(const vexo_hostmgr_lv&) = delete;
    vexo_hostmgr_lv& operator=(const vexo_hostmgr_lv&) = delete;

    int HostMgr_Dev_StartRealPlay(int hLogin, int lChannel, int lStreamIdx);
    int HostMgr_Dev_StopRealPlay(int hLogin, int lChannel, int lStreamIdx);

    int HostMgr_Dev_CreateRealStreamBuffer(int hLogin, unsigned int dwChannel, unsigned int dwStreamIdx);
    int HostMgr_Dev_RealStreamBufferEnableAudio(int hID, unsigned int bEnable);
    int HostMgr_Dev_ReadRealOneFrame(int hID, unsigned int* pChannel, unsigned int* pStreamIdx, unsigned char** ppFrame,
                                     unsigned int* pLength, unsigned int* pFrameInfo, unsigned int* pFlags);
    int HostMgr_Dev_ReleaseRealOneFrame(int hID);
    int HostMgr_Dev_DestroyRealStreamBuffer(int hID);

    int HostMgr_Dev_StartZeroCodec(int hLogin, int lReserved, unsigned int dwCount, unsigned int* pChannels);
    int HostMgr_Dev_SetZeroCodecMode(int lZeroCodecHandle, int lReserved, unsigned int dwCount,
                                     unsigned int* pChannels);
    int HostMgr_Dev_ReadZeroCodecStream(int lZeroCodecHandle, unsigned int dwReserved, unsigned char** ppFrame,
                                        unsigned int* pLength, unsigned int* pFrameInfo);
    int HostMgr_Dev_StopZeroCodec(int lZeroCodecHandle);

    void HostMgrLiveDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    /**
     * A login's zero-channel stream.
     *
     *     stopped --Start--> started --Read--> frame held --Stop (releases)--> stopped
     *        |                               |   ^
     *        +-- Read works here, too        +---+ Read (releases the frame before, once there is a next)
     */
    struct ZeroChannel {
        uint32_t reserved;                  // always 0
        uint32_t bZeroStarted;              // from Start to Stop
        uint32_t bZeroFirstRead;            // 0 until the model library's first-frame call has been made
        vexo_read_av_list_note stZeroNode;  // of the frame last handed out
        uint32_t bZeroHeld;                 // that frame has not been released
    };
    static_assert(sizeof(ZeroChannel) == 24, "six words");

    /** What the model library gave for one read. */
    struct LiveFrame {
        vexo_enc_str_type type;
        unsigned char* frame;
        vexo_read_av_list_note node;
        VEXO_BOOL bNoVideo;
    };

    HostMgrLvInfo* FindFreeSlot() VEXO_REQUIRES(m_lock);
    HostMgrLvInfo* FindSlot(int hID) VEXO_REQUIRES(m_lock);
    static void ReleaseHeldFrame(HostMgrLvInfo* slot);
    static bool ReadNextFrame(HostMgrLvInfo* slot, LiveFrame* read);
    static bool ReadFrameOfType(HostMgrLvInfo* slot, vexo_enc_str_type type, LiveFrame* read);
    static void RememberFrame(HostMgrLvInfo* slot, const LiveFrame& read, const vexo_frame_header& header);
    bool ReadZeroFrame(unsigned char** ppFrame, vexo_read_av_list_note* node) VEXO_REQUIRES(m_lock);
    void ReleaseZeroFrame() VEXO_REQUIRES(m_lock);
    static void DumpSlot(uint32_t index, const HostMgrLvInfo& slot, vexo_print_func print);

    HostMgrLvInfo* m_lv_info VEXO_PT_GUARDED_BY(m_lock);
    vexo_rw_lock* m_lock;
    ZeroChannel m_zero VEXO_GUARDED_BY(m_lock);
};

#endif
