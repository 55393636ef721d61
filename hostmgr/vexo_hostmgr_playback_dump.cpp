// What the recorder's diagnostics print of a login's playback.
#include "hostmgr_text.h"
#include "vexo_hostmgr_playback.h"

static const char FILE_TAG[] = "vexo_hostmgr_playback";
static const char LINE[] = "--------------------------------\n";

// Not the text of the other modules' dumps: operators' scripts know this one for playback.
static const char DUMP_BUSY[] = "trylock fail, lock info is '%s'\n";

void vexo_hostmgr_playback::HostMgrPlaybackDump(unsigned int /*command*/, vexo_print_func print) {
    if (m_lock->rd_trylock(FILE_TAG, __func__) != 0) {
        HostMgrPrintLockInfo(m_lock, DUMP_BUSY, print);
        return;
    }
    print("%s", LINE);
    print(TEXT_PLAY_RUN_STATE, bStart != 0 ? TEXT_STARTED : TEXT_NOT_STARTED);
    if (bStart != 0)
        DumpPlay(print);
    print("%s", LINE);
    m_lock->unlock(FILE_TAG, __func__);
}

void vexo_hostmgr_playback::DumpPlay(vexo_print_func print) {
    if (bPause != 0) {
        print("%s", TEXT_PLAY_PAUSED);
        return;
    }
    const bool playing = bPlay != 0;
    print("%s", playing ? TEXT_PLAY_PLAYING : TEXT_PLAY_UNKNOWN);
    print(TEXT_PLAY_DIRECTION, bReverse != 0 ? TEXT_REVERSE : TEXT_FORWARD);
    print(TEXT_PLAY_SPEED, iSpeed.load());
    print(TEXT_PLAY_AUDIO, bAudio != 0 ? TEXT_IS : TEXT_NO);
    if (!playing)
        return;
    print("%s", LINE);
    print("%s", TEXT_PLAY_LIST);
    const uint32_t nodes = NodeCount();
    print(TEXT_PLAY_NODES, nodes);
    if (nodes != 0)
        DumpNodes(print);
}

static void DumpTime(const char* format, const _tagVexoHostMgrTime& time, vexo_print_func print) {
    print(format, time.dwYear, time.dwMonth, time.dwDay, time.dwHour, time.dwMinute, time.dwSecond);
}

void vexo_hostmgr_playback::DumpNodes(vexo_print_func print) {
    DumpTime(TEXT_PLAY_START_TIME, Time(HOSTMGR_PLAYTIME_START), print);
    DumpTime(TEXT_PLAY_STOP_TIME, Time(HOSTMGR_PLAYTIME_STOP), print);
    DumpTime(TEXT_PLAY_CURRENT_TIME, Time(HOSTMGR_PLAYTIME_CURRENT), print);
    int number = 0;
    Walk walk(this);
    while (const HostMgrPlayNode* node = walk.Next()) {
        const bool main = node->dwStreamType == HOSTMGR_STREAM_MAIN;
        print("[%d]:\n", ++number);
        print(TEXT_PLAY_LOGIN, static_cast<unsigned int>(node->hLogin));
        print(TEXT_PLAY_CHANNEL, node->uCh);
        print(TEXT_PLAY_MODE, node->dwMode != 0 ? TEXT_DOWNLOAD_MODE : TEXT_PLAYBACK_MODE);
        print(TEXT_PLAY_STREAM, main ? TEXT_MAIN_STREAM : TEXT_SUB_STREAM);
    }
}
