// What the tests of playback share: a play on a recorder whose readers hand out frames that the test gave them, the
// replay thread step by step, and what the callbacks received. Expectations stand in the tests.
#ifndef PLAYBACK_FIXTURE_H
#define PLAYBACK_FIXTURE_H

#include <list>
#include <set>

#include "login_fixture.h"
#include "playback_recorder.h"
#include "stepped_threads.h"
#include "vexo_hostmgr_playback.h"

inline constexpr char PLAY_LOCK[] = "vexo_hostmgr_playback lock";
inline constexpr char NULL_FRAME_TEXT[] = "Send NULL Frame to finish playback!!!\n";

/** The playback lock's part of the record. */
inline std::string OnPlay(const std::string& operation, const std::string& function) {
    return operation + "(" + PLAY_LOCK + ", vexo_hostmgr_playback, " + function + ")";
}
inline Lines UnderPlayLock(const std::string& function, const Lines& calls = {}) {
    return Joined({{OnPlay("lock", function)}, calls, {OnPlay("unlock", function)}});
}

// ---- what callbacks received ---------------------------------------------------------------------------------------

struct Received {
    std::string what;  // the frame's number, or "end"
    int hLogin;
    int hStream;
    int lChannel;      // of a reader playback
    int dwStreamType;  // of a reader playback
    unsigned char* frame;
    unsigned int length;
};

/** Stands behind pUser; a callback may do something of the test's before it returns. */
class Receiver {
public:
    static void Stream(int hLogin, int hStream, unsigned char* frame, unsigned int length, void* user) {
        static_cast<Receiver*>(user)->Take({What(frame), hLogin, hStream, 0, 0, frame, length});
    }
    static int StreamV2(int hLogin, int hStream, int lChannel, int dwStreamType, unsigned char* frame,
                        unsigned int length, void* user) {
        Receiver* receiver = static_cast<Receiver*>(user);
        receiver->Take({What(frame), hLogin, hStream, lChannel, dwStreamType, frame, length});
        return receiver->result;
    }

    /** What came since the last time. */
    std::vector<Received> TakeAll() {
        std::lock_guard<std::mutex> guard(m_guard);
        return std::exchange(m_received, {});
    }
    Lines Take() {
        Lines what;
        for (const Received& received : TakeAll())
            what.push_back(received.what);
        return what;
    }

    std::function<void(const Received&)> meanwhile;
    int result = 0;

private:
    static std::string What(const unsigned char* frame) {
        return frame == nullptr ? "end" : std::to_string(HostMgrFrameHeader(frame).frame_no);
    }
    void Take(const Received& received) {
        {
            std::lock_guard<std::mutex> guard(m_guard);
            m_received.push_back(received);
        }
        if (meanwhile)
            meanwhile(received);
    }

    std::mutex m_guard;
    std::vector<Received> m_received;
};

// ---- the fixture ---------------------------------------------------------------------------------------------------

/** A test of one play, on a module object of its own. */
class PlaybackFixture : public testing::Test {
protected:
    static constexpr int LOGIN = 0x501;
    static constexpr long CLOCK = 1720180000;  // the clock, in seconds, when a test begins

    PlaybackFixture();
    ~PlaybackFixture() override;

    // ---- the play's operations ----
    int Start(int lChannel = 1, unsigned int dwMode = 0, int hLogin = LOGIN);
    int StartV2(int lChannel = 1, int hLogin = LOGIN);
    int Stop(int hLogin = LOGIN);
    int Receive(int hStream);
    int Control(HostMgrPlayCtrlParam* param);
    int Control(uint32_t command, uint32_t param = 0, uint32_t param2 = 0);
    int Speed(int speed) { return Control(HOSTMGR_PLAYCMD_SPEED, static_cast<uint32_t>(speed)); }
    int Seek(const _tagVexoHostMgrTime& time);
    _tagVexoHostMgrTime TimeOf(uint32_t selector);

    /** Starts a channel, gives it the receiver as its callback and plays at the recorded pace. */
    int Play(int lChannel = 1, unsigned int dwMode = 0);
    int PlayV2(int lChannel = 1);
    /** One pass of the replay thread when the clock shows so many milliseconds: what the receiver got. */
    Lines At(long milliseconds);

    std::string Dump();

    TestReader& Reader(size_t number = 1);
    TestAdvanceReader& Advance(size_t number = 1);
    size_t Readers() { return m_readers.size(); }
    size_t Advances() { return m_advances.size(); }
    /** Frames that the test pushes to an advance reader. */
    unsigned char* Frame(unsigned int number, unsigned int type = VEXO_FRAME_MAIN_KEY, long stamp_ms = 0,
                         unsigned int payload = 100);
    /** Nothing of the recorder's is held any more: readers, lists, nodes, locks. */
    void ExpectNothingHeld();
    /** The calls that free a node with that reader, and close and remove it before. */
    static Lines NodeFreed(const std::string& reader, const std::string& advance = "");

    Platform platform;
    SteppedThreads threads;
    Receiver receiver;
    int inquiryResult = 0;
    bool noReader = false;
    bool noAdvanceReader = false;
    std::unique_ptr<vexo_hostmgr_playback> play;

private:
    void SetReaders();
    void SetThreads();
    int Inquire(unsigned int channel, vexo_rec_file_inquiry_result** result);

    std::mutex m_guard;  // of what the recorder gave
    std::list<TestReader> m_readers;
    std::list<TestAdvanceReader> m_advances;
    std::list<vexo_rec_file_inquiry_result> m_files;
    std::set<vexo_rec_file_inquiry_result*> m_live_files;
    std::list<PlayFrame> m_frames;
};

#endif
