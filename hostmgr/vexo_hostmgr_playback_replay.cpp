// The replay thread of a callback playback: pulls frames from the channels' readers and hands them to the callbacks,
// video paced by its time stamps and the speed, audio and downloads at once.
#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";

constexpr unsigned int PASS_MS = 10;
constexpr unsigned int IDLE_MS = 1000;
constexpr long GAP_LONGEST_MS = 9999;  // between two frames; a longer gap is a hole in the recordings
constexpr long GAP_USUAL_MS = 40;
constexpr long LATE_MS = 100;  // a frame later than that starts the cadence anew

// ---- frame types ---------------------------------------------------------------------------------------------------

static bool HostMgrIsKeyFrame(uint32_t type) {
    return type == VEXO_FRAME_MAIN_KEY || type == VEXO_FRAME_SUB_KEY || type == VEXO_FRAME_ZERO_KEY;
}

static bool HostMgrIsVideoFrame(uint32_t type) {
    return HostMgrIsKeyFrame(type) || type == VEXO_FRAME_MAIN_DELTA || type == VEXO_FRAME_SUB_DELTA ||
           type == VEXO_FRAME_ZERO_DELTA;
}

static bool HostMgrIsAudioFrame(uint32_t type) {
    return type == VEXO_FRAME_AUDIO;
}

// ---- thread --------------------------------------------------------------------------------------------------------

/** True as well for a thread that a stop is joining while a start has begun the next play. */
bool vexo_hostmgr_playback::HostMgrPlaybackIsStop() const {
    return bStart == 0 || m_ending != Ending::NONE;
}

void* vexo_hostmgr_playback::HostMgrRePlayThread(void* argument) {
    vexo_hostmgr_playback* play = static_cast<vexo_hostmgr_playback*>(argument);
    while (!play->HostMgrPlaybackIsStop()) {
        if (play->HostMgrHistoryStreamRePlay() != 0)
            vexo_utility_sleep_ms(IDLE_MS);
    }
    return NULL;
}

// The lock is held across the callbacks: a channel must not go while its frame is out, and a stop that has returned
// means that no frame comes any more.
int vexo_hostmgr_playback::HostMgrHistoryStreamRePlay() {
    {
        HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
        if (bStart == 0 || bPause == 1 || bPlay == 0 || NodeCount() == 0)
            return -1;
        Walk walk(this);
        while (HostMgrPlayNode* node = walk.Next()) {
            if (ReplayNode(node))
                continue;
            HOSTMGR_PUTS(DEBUG, "Send NULL Frame to finish playback!!!");
            HostMgrSendData(node, NULL, 0);
            node->bFinish = 1;
        }
        HostMgrClearFinishedNodes();
    }
    vexo_utility_sleep_ms(PASS_MS);
    return 0;
}

/** Offers a channel's next frame; false at the end of the channel. A frame that is too early comes again next time. */
bool vexo_hostmgr_playback::ReplayNode(HostMgrPlayNode* node) {
    unsigned char* frame = ReadUnskipped(node);
    if (frame == NULL)
        return false;
    const unsigned int length = HostMgrFrameHeader(frame).data_length + HOSTMGR_FRAME_HEADER_SIZE;
    if (HostMgrSendData(node, frame, length) == 0)
        node->pReader->release_frame(0);
    return true;
}

/** A channel's next frame without the audio that is not wanted; null at the end. */
unsigned char* vexo_hostmgr_playback::ReadUnskipped(HostMgrPlayNode* node) {
    for (;;) {
        unsigned char* frame = NULL;
        if (node->pReader->read_frame(&frame, 0) != 0 || frame == NULL)
            return NULL;
        const uint32_t type = HostMgrFrameHeader(frame).frame_type;
        if (bAudio != 0 || !HostMgrIsAudioFrame(type))
            return frame;
        node->pReader->release_frame(type);
    }
}

// ---- delivery ------------------------------------------------------------------------------------------------------

/** Hands a frame, or the end mark, to the callback: 0 done with it, -1 not now. */
int vexo_hostmgr_playback::HostMgrSendData(HostMgrPlayNode* node, unsigned char* frame, unsigned int length) {
    if (node->bFinish != 0)
        return -1;
    const bool own = pfnStreamCallBack == NULL;
    const StreamFrame out = {own ? node->pfnStreamCallBack : pfnStreamCallBack, own ? node->pUser : pUser, frame,
                             length};
    if (out.pfnCallBack == NULL)
        return -1;
    if (frame == NULL) {
        HOSTMGR_PUTS(DEBUG, "Send NULL Frame to finish playback!!!");
        Hand(node, out);
        return 0;
    }
    const vexo_frame_header header = HostMgrFrameHeader(frame);
    // Exactly the download mode: any other value paces.
    if (node->dwMode == HOSTMGR_PLAYMODE_DOWNLOAD || HostMgrIsAudioFrame(header.frame_type)) {
        Hand(node, out);
        return 0;
    }
    return HostMgrIsVideoFrame(header.frame_type) ? SendPaced(node, header, out) : 0;
}

void vexo_hostmgr_playback::Hand(const HostMgrPlayNode* node, const StreamFrame& out) {
    out.pfnCallBack(node->hLogin, static_cast<int>(node->hStream), out.frame, out.length, out.pUser);
}

int vexo_hostmgr_playback::SendPaced(HostMgrPlayNode* node, const vexo_frame_header& header, const StreamFrame& out) {
    struct timeval stamp = {};
    stamp.tv_sec = static_cast<time_t>(header.seconds);
    stamp.tv_usec = static_cast<suseconds_t>(header.microseconds);
    if (node->tvLastSend.tv_sec == 0 && node->tvLastSend.tv_usec == 0) {
        Hand(node, out);
        gettimeofday(&node->tvLastSend, NULL);
    } else {
        const int speed = iSpeed;
        if (speed >= HOSTMGR_PLAY_SPEED_KEY_FRAMES && !HostMgrIsKeyFrame(header.frame_type))
            return 0;
        if (!IsDue(node, stamp, speed))
            return -1;
        Hand(node, out);
    }
    node->tvLastFrame = stamp;
    SetCurTime(header.seconds);
    return 0;
}

static long Interval(long gap, int speed) {
    const long base = gap >= 1 && gap <= GAP_LONGEST_MS ? gap : GAP_USUAL_MS;
    if (speed == 0)
        return base;
    return speed > 0 ? base / speed : base * -speed;
}

/** Whether a frame's time has come; if so the cadence goes on, or starts anew from now when it was lost. */
bool vexo_hostmgr_playback::IsDue(HostMgrPlayNode* node, const struct timeval& stamp, int speed) {
    struct timeval now;
    gettimeofday(&now, NULL);
    const long elapsed = vexo_utility_cnt_delta_ms(&node->tvLastSend, &now);
    const long interval = Interval(vexo_utility_cnt_delta_ms(&node->tvLastFrame, &stamp), speed);
    if (elapsed >= 0 && elapsed < interval)
        return false;
    if (elapsed >= 0 && elapsed <= interval + LATE_MS)
        vexo_utility_add_time(&node->tvLastSend, interval);
    else
        node->tvLastSend = now;
    return true;
}
