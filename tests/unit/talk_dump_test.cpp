// The talk's dump has no text of its own: it says who holds a busy lock, and never waits.
#include "talk_fixture.h"

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

class TalkDump : public TalkFixture {
protected:
    /** What the diagnostics say of the talk, without heading and login tags. */
    std::string Dump() {
        TakePieces();
        platform.Diagnostics().client->diagnose(4321, CollectPrint);
        const std::string printed = Utf8(TakePrinted());
        const std::string begin = "对讲信息:\n<Host_0>\n";
        const std::string end = "</Host_0>\n";
        EXPECT_EQ(printed.substr(0, begin.size()), begin);
        EXPECT_EQ(printed.substr(printed.size() - end.size()), end);
        return printed.substr(begin.size(), printed.size() - begin.size() - end.size());
    }
};

TEST_F(TalkDump, Idle_PrintsNothing) {
    EXPECT_EQ(CallsOf([this] { EXPECT_EQ(Dump(), ""); }),
              (Lines{"rd_trylock(vexo_hostmgr_talkback, vexo_hostmgr_talkback, HostMgrTalkDump)",
                     "unlock(vexo_hostmgr_talkback, vexo_hostmgr_talkback, HostMgrTalkDump)"}));
}

TEST_F(TalkDump, Running_PrintsNothing) {
    Start();
    EXPECT_EQ(Dump(), "");
}

TEST_F(TalkDump, BusyLock_PrintsWhoHoldsIt) {
    MockLock& lock = platform.Lock(TALK_LOCK);
    ON_CALL(lock, rd_trylock(_, _)).WillByDefault(Return(1));
    ON_CALL(lock, get_info(_, _)).WillByDefault([](char* buffer, unsigned int size) {
        EXPECT_EQ(size, 256u);
        memcpy(buffer, "thread 5", 8);
        return 0;
    });
    EXPECT_EQ(CallsOf([this] { EXPECT_EQ(Dump(), "rd_trylock fail, lock info is 'thread 5'\n"); }), Lines());
}

TEST_F(TalkDump, WhileATalkStarts_DoesNotWait) {
    std::string printed;
    ON_CALL(platform, vexo_model_start_talking)
        .WillByDefault([&](unsigned int, vexo_talk_mode, unsigned int, unsigned int* talk) {
            std::thread([&] { printed = Dump(); }).join();
            *talk = TALK;
            return 0;
        });
    Start();
    EXPECT_EQ(printed, "rd_trylock fail, lock info is ''\n");
}

TEST_F(TalkDump, WhileAFrameIsPlayed_DoesNotCareForThePlayLock) {
    Start();
    threads.Step();
    Input(InputData(Audio(320)));
    std::string printed = "nothing was printed";
    ON_CALL(platform, vexo_model_play_talking_frame).WillByDefault([&](unsigned int, const unsigned char*) {
        std::thread([&] { printed = Dump(); }).join();
        return 0;
    });
    threads.Step();
    EXPECT_EQ(printed, "");
}
