// The talk's thread: what one pass calls, when it leaves, and how a stop, a stop from its own callback, a new talk and
// a logout meet a pass that is under way.
#include "talk_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using namespace vexo_soft;

static const unsigned long FIRST = TalkThreads::FIRST;

class TalkWorker : public TalkFixture {
protected:
    static Lines IdlePass() {
        return Joined({Under(TALK_LOCK, "HostMgrGethTalk"), Under(TALK_LOCK, "HostMgrProcTalkData")});
    }
    static Lines Fetch(int hTalk = TALK) {
        return {"vexo_model_get_talking_frame(" + std::to_string(hTalk) + ", 4096)"};
    }
    static Lines Sleep() { return {"vexo_utility_sleep_ms(30)"}; }
    static Lines BusyPass(const Lines& playing = {}) {
        return Joined({IdlePass(), Fetch(), Under(PLAY_LOCK, "HostMgrPlayTalkData", playing), Sleep()});
    }

    void StartWithCallback() {
        Start();
        EXPECT_EQ(SetCallback(), 0);
        threads.Step();
    }
    void CaptureFrames(unsigned int count) {
        for (unsigned int frame = 0; frame < count; ++frame)
            CaptureAudio(320, frame);
    }
};

// ---- passes --------------------------------------------------------------------------------------------------------

TEST_F(TalkWorker, FirstPass_RegistersTheThread) {
    Start();
    EXPECT_EQ(CallsOf([this] { EXPECT_TRUE(threads.Step()); }),
              Joined({{"vexo_utility_enter_thread(self, HostMgrTalk_Thread)"}, BusyPass()}));
}

TEST_F(TalkWorker, EveryFurtherPass_LooksForBothAndSleeps30Ms) {
    Start();
    threads.Step();
    EXPECT_EQ(CallsOf([this] { threads.Step(); }), BusyPass());
}

TEST_F(TalkWorker, PassWithAQueuedFrame_PlaysItUnderThePlayLockAndFreesIt) {
    Start();
    threads.Step();
    Input(InputData(Audio(320)));
    EXPECT_EQ(CallsOf([this] { threads.Step(); }),
              BusyPass({"vexo_model_play_talking_frame(51)", Freed("HostMgrPopAndFreeTalkPlayNode"),
                        Freed("HostMgrPopAndFreeTalkPlayNode")}));
}

TEST_F(TalkWorker, OnePass_MovesOneFrameEachWay) {
    StartWithCallback();
    for (int frame = 0; frame < 3; ++frame) {
        Input(InputData(Audio(320)));
        m_captured.push_back(CapturedFrame(Audio(320)));
    }
    threads.Step();
    EXPECT_THAT(m_played, SizeIs(1));
    EXPECT_THAT(m_captured, SizeIs(2));
}

TEST_F(TalkWorker, RefusedFrame_DoesNotKeepTheQueueWaiting) {
    StartWithCallback();
    Input(InputData(Audio(320)));
    RawConsole([this] { Capture(CapturedFrame({}, 5121)); });
    EXPECT_THAT(m_played, SizeIs(1));
}

TEST_F(TalkWorker, AfterARefusedStop_IdlesOn) {
    Start();
    threads.Step();
    Input(InputData(Audio(320)));
    StopRefused();
    EXPECT_EQ(CallsOf([this] { EXPECT_TRUE(threads.Step()); }), Joined({IdlePass(), Sleep()}));
}

TEST_F(TalkWorker, StopInItsSleep_IsFollowedByTheEnd) {
    Start();
    threads.Step();
    EXPECT_EQ(CallsOf([] { Stop(); }).back(), "vexo_utility_exit_thread(self)");
}

TEST_F(TalkWorker, StopInItsSleep_NothingIsHandedOverAnyMore) {
    StartWithCallback();
    CaptureFrames(7);
    m_captured.push_back(CapturedFrame(Audio(320)));
    Stop(TALK + 1);
    EXPECT_THAT(m_handed, IsEmpty());
}

// ---- a stop while a pass is under way ------------------------------------------------------------------------------

// The stop waits for the thread, so the pass goes on when it has let go of its locks; what the pass gathered is not
// kept.
TEST_F(TalkWorker, StopDuringThePass_TheNextTalkGathersFromNothing) {
    StartWithCallback();
    CaptureFrames(5);
    std::atomic<bool> stopped{false};
    ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault([&](unsigned long id) {
        stopped = true;
        threads.Retrieve(id);
        return 0;
    });
    std::thread stopping;
    m_before_capture = [&] {
        stopping = std::thread([] { EXPECT_EQ(Stop(), 0); });
        while (!stopped)
            std::this_thread::yield();
    };
    CaptureFrames(1);
    stopping.join();
    EXPECT_THAT(m_captured, IsEmpty());

    Start();
    SetCallback(TALK + 1);
    threads.Step();
    CaptureFrames(7);
    EXPECT_THAT(m_handed, IsEmpty());
    CaptureFrames(1);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].length, 2584u);
    vexo_HostMgr_Dev_Logout(LOGIN);
}

// ---- a stop from the callback --------------------------------------------------------------------------------------

/** A talk whose callback does something at the end of the eighth frame. */
class TalkFromCallback : public TalkWorker {
protected:
    void RunInCallback(const std::function<void()>& action) {
        StartWithCallback();
        m_in_callback = action;
        CaptureFrames(8);
        ASSERT_THAT(m_handed, SizeIs(1));
    }
};

TEST_F(TalkFromCallback, Stop_SucceedsWithoutTakingItsOwnThreadBack) {
    Lines calls;
    RunInCallback([&] { calls = CallsOf([] { EXPECT_EQ(Stop(), 0); }); });
    EXPECT_THAT(calls, Contains("vexo_model_stop_talking(51)"));
    EXPECT_THAT(With("retrieve", calls), IsEmpty());
    EXPECT_FALSE(threads.Step());
}

TEST_F(TalkFromCallback, StopOfAnotherHandle_EndsTheThreadToo) {
    RunInCallback([] { EXPECT_EQ(Stop(TALK + 1), 0); });
    EXPECT_FALSE(threads.Step());
}

TEST_F(TalkFromCallback, Stop_ItsPassEndsAsUsual) {
    RunInCallback([this] {
        Stop();
        platform.TakeCalls();
    });
    EXPECT_EQ(platform.TakeCalls(), Joined({Under(PLAY_LOCK, "HostMgrPlayTalkData"), Sleep()}));
}

TEST_F(TalkFromCallback, Stop_TheThreadIsTakenBackAtLogout) {
    RunInCallback([] { Stop(); });
    threads.Step();
    EXPECT_EQ(With("retrieve", CallsOf([] { vexo_HostMgr_Dev_Logout(LOGIN); })), Lines{Retrieved(FIRST)});
}

TEST_F(TalkFromCallback, Stop_TheThreadIsTakenBackByTheNextStop) {
    RunInCallback([] { Stop(); });
    EXPECT_EQ(Start(), TALK + 1);
    EXPECT_EQ(With("retrieve", CallsOf([] { EXPECT_EQ(Stop(TALK + 1), 0); })),
              (Lines{Retrieved(FIRST), Retrieved(FIRST + 1)}));
}

TEST_F(TalkFromCallback, StopTwice_TheSecondIsRefused) {
    RunInCallback([] {
        Stop();
        EXPECT_EQ(Console([] { EXPECT_EQ(Stop(), -1); }), Error("HostMgr_Dev_StopTalk", "is not run\n"));
    });
}

// The callback of one talk ends it, begins the next, ends that one as well: the new thread can be waited for, its own
// cannot.
TEST_F(TalkFromCallback, StopStartStop_TakesTheNewThreadBackAndNotItsOwn) {
    Lines calls;
    RunInCallback([&] {
        Stop();
        EXPECT_EQ(Start(), TALK + 1);
        calls = CallsOf([] { EXPECT_EQ(Stop(TALK + 1), 0); });
    });
    EXPECT_EQ(With("retrieve", calls), Lines{Retrieved(FIRST + 1)});
    EXPECT_FALSE(threads.Step(FIRST));
}

TEST_F(TalkFromCallback, RestartInEveryCallback_TakesTheThreadBeforeBackEachTime) {
    int talk = TALK;
    StartWithCallback();
    for (int round = 0; round < 3; ++round) {
        m_in_callback = [&] {
            const Lines expected =
                round == 0 ? Lines{} : Lines{Retrieved(FIRST + static_cast<unsigned int>(round) - 1)};
            EXPECT_EQ(With("retrieve", CallsOf([&] { EXPECT_EQ(Stop(talk), 0); })), expected);
            talk = Start();
            EXPECT_EQ(SetCallback(talk), 0);
        };
        CaptureFrames(8);
        EXPECT_EQ(threads.Count(), static_cast<size_t>(round) + 2);
    }
}

TEST_F(TalkFromCallback, Restart_TheNewTalkGathersFromNothingAndHasItsHandle) {
    RunInCallback([this] {
        Stop();
        Start();
        SetCallback(TALK + 1);
    });
    m_handed.clear();
    threads.Step(FIRST);
    threads.Step(FIRST + 1);
    CaptureFrames(7);
    EXPECT_THAT(m_handed, IsEmpty());
    CaptureFrames(1);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].hTalk, TALK + 1);
    EXPECT_EQ(m_handed[0].length, 2584u);
}

// Handing over comes twice in the pass of a frame that does not fit. The second time the talk is over.
TEST_F(TalkFromCallback, RestartWhileAFrameDoesNotFit_TheNewCallbackGetsNothingOfTheOldTalk) {
    StartWithCallback();
    m_in_callback = [this] {
        Stop();
        Start();
        SetCallback(TALK + 1);
    };
    CaptureAudio(5120);
    EXPECT_THAT(m_handed, SizeIs(1));
}

TEST_F(TalkFromCallback, InputAndCallback_MayBeCalled) {
    RunInCallback([this] {
        EXPECT_EQ(Input(InputData(Audio(320))), 0);
        EXPECT_EQ(SetCallback(), 0);
    });
    EXPECT_THAT(m_played, SizeIs(1));
}

// While the old thread is still in its callback, the new one lets the block be and comes again.
TEST_F(TalkFromCallback, NewThreadDuringTheOldOnesCallback_WaitsItsTurn) {
    RunInCallback([this] {
        Stop();
        Start();
        m_captured.push_back(CapturedFrame(Audio(320)));
        EXPECT_EQ(CallsOf([this] { threads.Step(FIRST + 1); }),
                  Joined({{"vexo_utility_enter_thread(self, HostMgrTalk_Thread)"}, IdlePass(), Sleep()}));
        EXPECT_THAT(m_captured, SizeIs(1));
    });
    threads.Step(FIRST);
    threads.Step(FIRST + 1);
    EXPECT_THAT(m_captured, IsEmpty());
}

// ---- a stop before the thread has begun ----------------------------------------------------------------------------

/** A platform whose threads are late: taking one back does not make it begin. */
class TalkLateThread : public TalkWorker {
protected:
    /** A stop on another thread, which is let go once it waits for the talk's thread. */
    void StopAndWait() {
        ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault([this](unsigned long id) {
            m_waiting = true;
            while (!m_may_begin)
                std::this_thread::yield();
            threads.Retrieve(id);
            return 0;
        });
        m_stopping = std::thread([] { EXPECT_EQ(Stop(), 0); });
        while (!m_waiting)
            std::this_thread::yield();
    }

    std::thread m_stopping;
    std::atomic<bool> m_waiting{false};
    std::atomic<bool> m_may_begin{false};
};

// A new talk waits for the late thread, which finds that its turn is over; else it would take the new talk for its own,
// and the stop would wait for it as long as that lasts.
TEST_F(TalkLateThread, StopThenStart_TheLateThreadLeavesAndTheNewOneWorks) {
    Start();
    StopAndWait();
    std::atomic<bool> asked{false};
    ON_CALL(platform, vexo_model_start_talking)
        .WillByDefault([&](unsigned int, vexo_talk_mode, unsigned int, unsigned int* talk) {
            *talk = TALK + 1;
            asked = true;
            return 0;
        });
    std::thread starting([] { EXPECT_EQ(Start(), TALK + 1); });
    while (!asked)
        std::this_thread::yield();
    for (int chance = 0; chance < 1000; ++chance)  // to make the new thread too early
        std::this_thread::yield();
    EXPECT_EQ(threads.Count(), 1u);
    m_may_begin = true;
    m_stopping.join();
    starting.join();
    EXPECT_EQ(threads.Count(), 2u);
    EXPECT_TRUE(threads.Step(FIRST + 1));
    EXPECT_TRUE(threads.Step(FIRST + 1));
}

// A thread that was taken back without ever having begun keeps nobody waiting.
TEST_F(TalkWorker, ThreadThatNeverBegins_DoesNotHinderTheNextTalk) {
    ON_CALL(platform, vexo_utility_creat_thread)
        .WillByDefault([](const vexo_thread_creat_ctl*, const char*, unsigned long* id) {
            *id = 77;
            return 0;
        });
    ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault(testing::Return(0));
    for (int talk = TALK; talk < TALK + 3; ++talk) {
        EXPECT_EQ(Start(), talk);
        EXPECT_EQ(Stop(talk), 0);
    }
}

// ---- logout --------------------------------------------------------------------------------------------------------

class TalkLogout : public TalkWorker {
protected:
    static Lines OfTalk(const Lines& calls) {
        return Without("vexo_hostmgr_talkback m", WithAny({"vexo_hostmgr_talkback", "_thread"}, calls));
    }
    static Lines Deleted() {
        return {
            "vexo_utility_delete_lock(vexo_hostmgr_talkback play lock, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)",
            "vexo_utility_delete_lock(vexo_hostmgr_talkback, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)"};
    }
};

TEST_F(TalkLogout, DuringATalk_FreesClearsTakesTheThreadBackAndDeletesTheLocks) {
    Start();
    threads.Step();
    Input(InputData(Audio(320)));
    EXPECT_EQ(OfTalk(CallsOf([] { vexo_HostMgr_Dev_Logout(LOGIN); })),
              Joined({{Freed("~vexo_hostmgr_talkback")},
                      Under(PLAY_LOCK, "~vexo_hostmgr_talkback", Lines(2, Freed("HostMgrClrTalkPlayNode"))),
                      {Retrieved(FIRST)},
                      Under(TALK_LOCK, "HostMgrGethTalk"),
                      {"vexo_utility_exit_thread(self)"},
                      Deleted()}));
}

TEST_F(TalkLogout, BeforeTheThreadHasBegun_ItDoesNotWork) {
    Start();
    const Lines calls = OfTalk(CallsOf([] { vexo_HostMgr_Dev_Logout(LOGIN); }));
    EXPECT_THAT(With("HostMgrProcTalkData", calls), IsEmpty());
    EXPECT_THAT(calls, Contains(Retrieved(FIRST)));
}

TEST_F(TalkLogout, OfATalkThatWasLeftBehind_EndsItsThread) {
    Start();
    threads.Step();
    StopRefused();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_TRUE(threads.AllRetrieved());
}

// The block goes only when the callback that reads it has returned.
TEST_F(TalkLogout, DuringTheCallback_WaitsForIt) {
    StartWithCallback();
    std::thread leaving;
    const MockLock& destroyedBefore = platform.Lock("vexo_hostmgr_playback lock");
    m_in_callback = [&] {
        leaving = std::thread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); });
        while (!destroyedBefore.Deleted())
            std::this_thread::yield();
        for (int chance = 0; chance < 1000; ++chance)  // to free the block too early
            std::this_thread::yield();
        platform.Record("the callback returns");
    };
    CaptureFrames(7);
    m_captured.push_back(CapturedFrame(Audio(320)));
    const Lines calls = CallsOf([&] {
        threads.Step();
        leaving.join();
    });
    const auto at = [&](const std::string& line) { return std::find(calls.begin(), calls.end(), line); };
    ASSERT_THAT(calls, Contains("the callback returns"));
    EXPECT_LT(at("the callback returns"), at(Freed("~vexo_hostmgr_talkback")));
    EXPECT_LT(at(Freed("~vexo_hostmgr_talkback")), at(Retrieved(FIRST)));
}
