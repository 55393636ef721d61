// Reader playback under several threads: what goes while the advance reader's callback runs or the reader is started.
// Each meeting is arranged by the calls that the library makes; nothing sleeps.
#include "playback_threads.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

static const char STOP[] = "HostMgr_Dev_StopHistoryPlay";

class ReaderThreads : public PlayThreads {
protected:
    /** Pushes a frame on a thread of its own, whose callback does something. */
    void PushWhile(const std::function<void()>& inside) {
        receiver.meanwhile = [inside](const Received&) { inside(); };
        m_pusher = std::thread([this] { m_answer = Advance().Push(&Reader(), Frame(1)); });
    }
    unsigned int Answer() {
        m_pusher.join();
        return m_answer;
    }

private:
    std::thread m_pusher;
    unsigned int m_answer = 0xDEAD;
};

// ---- the advance reader's callback ---------------------------------------------------------------------------------

TEST_F(ReaderThreads, DeleteDuringTheChannelsCallback_DoesNotWaitAndTheCallbackFrees) {
    PlayV2();
    Signal inside;
    Signal deleted;
    PushWhile([&] {
        inside.Give();
        deleted.Await();
    });
    inside.Await();
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), 0);
    EXPECT_FALSE(Reader().deleted);
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), -1) << "it is out of the list at once";
    platform.TakeCalls();
    deleted.Give();
    EXPECT_EQ(Answer(), 0u);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(NodeFreed("reader1", "advance1")));
    Stop();
    ExpectNothingHeld();
}

// The stop waits for the callback without the lock, so the callback's own commands go through.
TEST_F(ReaderThreads, StopDuringACallbackThatSendsCommands_DoesNotStandStill) {
    PlayV2();
    std::thread stopper;
    Signal inside;
    Signal stopping;
    PushWhile([&] {
        inside.Give();
        stopping.Await();
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_PAUSE, 0), 0);
        EXPECT_EQ(Seek(HostTime(12, 30, 0)), -1) << "stopped already";
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), -1);
    });
    inside.Await();
    platform.TakeCalls();
    RawConsole([&] {
        stopper = std::thread([&] { EXPECT_EQ(Stop(), 0); });
        AwaitCall("advance1.remove_reader(reader1)");
        stopping.Give();
        EXPECT_EQ(Answer(), 0u);
        stopper.join();
    });
    EXPECT_LT(PlaceOf(OnPlay("unlock", STOP)), PlaceOf("advance1.stop()"));
    EXPECT_LT(PlaceOf("advance1.remove_reader(reader1)"), PlaceOf("advance1.deleted()"));
    ExpectNothingHeld();
}

TEST_F(ReaderThreads, DeleteThenStopDuringTheCallback_RemovesTheChannelBeforeTheReaderGoes) {
    PlayV2();
    std::thread stopper;
    Signal inside;
    Signal stopping;
    PushWhile([&] {
        inside.Give();
        stopping.Await();
    });
    inside.Await();
    RawConsole([&] {
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), 0);
        platform.TakeCalls();
        stopper = std::thread([&] { EXPECT_EQ(Stop(), 0); });
        AwaitCall("advance1.remove_reader(reader1)");
        stopping.Give();
        Answer();
        stopper.join();
    });
    ExpectNothingHeld();
}

TEST_F(ReaderThreads, FrameDuringAStop_IsRefusedWithoutACall) {
    PlayV2(1);
    RawConsole([this] { Control(HOSTMGR_PLAYCMD_ADDCHAN, 2); });
    // Channel 2 is unlinked when its reader is closed, but still in the advance reader.
    unsigned int answer = 0;
    Reader(2).on_close = [&] {
        Reader(2).on_close = nullptr;
        OnAnotherThread([&] { answer = Advance().Push(&Reader(2), Frame(1)); });
    };
    RawConsole([this] { EXPECT_EQ(Stop(), 0); });
    EXPECT_EQ(answer, 0x401A0000u);
    EXPECT_THAT(receiver.Take(), IsEmpty());
}

// A platform whose removal does not wait: the callback outlives its play, and touches nothing of it.
TEST_F(ReaderThreads, DestructionDuringACallbackThatNobodyWaitsFor_LeavesTheChannelToTheCallback) {
    PlayV2();
    Advance().waits = false;
    Signal inside;
    Signal gone;
    PushWhile([&] {
        inside.Give();
        gone.Await();
    });
    inside.Await();
    play.reset();
    EXPECT_TRUE(Advance().Deleted());
    EXPECT_FALSE(Reader().deleted);
    gone.Give();
    EXPECT_EQ(Answer(), 0u);
    ExpectNothingHeld();
}

TEST_F(ReaderThreads, DestructionDuringACallback_WaitsForIt) {
    PlayV2();
    Signal inside;
    Signal leaving;
    PushWhile([&] {
        inside.Give();
        leaving.Await();
    });
    inside.Await();
    platform.TakeCalls();
    std::thread leaver([&] { play.reset(); });
    AwaitCall("advance1.remove_reader(reader1)");
    leaving.Give();
    EXPECT_EQ(Answer(), 0u);
    leaver.join();
    EXPECT_THAT(Without("stop", With("advance", Calls())),
                ElementsAre("advance1.remove_reader(reader1)",
                            "vexo_model_delete_advance_avss_reader(vexo_hostmgr_playback, ~vexo_hostmgr_playback)",
                            "advance1.deleted()"));
    ExpectNothingHeld();
}

// Not what the platform allows, but nothing of the library's may break: the channel is freed when the callback returns.
TEST_F(ReaderThreads, StopInsideTheCallback_EndsThePlay) {
    PlayV2();
    receiver.meanwhile = [this](const Received&) {
        EXPECT_EQ(Stop(), 0);
        EXPECT_TRUE(Advance().Deleted());
    };
    RawConsole([this] { EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), 0u); });
    ExpectNothingHeld();
}

// The reader is being started by a speed command, which has let the lock go.
TEST_F(ReaderThreads, StopWhileTheAdvanceReaderIsStarted_DeletesItAfterwards) {
    RawConsole([this] { StartV2(); });
    platform.TakeCalls();
    std::thread stopper;
    Advance().on_start = [&] {
        stopper = std::thread([&] { EXPECT_EQ(Stop(), 0); });
        AwaitCall("advance1.stop()");
        for (int turn = 0; turn < 1000; ++turn)
            std::this_thread::yield();
    };
    RawConsole([&] {
        EXPECT_EQ(Speed(1), 0);
        stopper.join();
    });
    EXPECT_LT(PlaceOf("advance1.start(0)"), PlaceOf("advance1.deleted()"));
    EXPECT_THAT(Dump(), HasSubstr("未启动"));
    RawConsole([this] { StartV2(); });
    EXPECT_THAT(Dump(), HasSubstr("未知")) << "the next play waits for a speed of its own";
}

TEST_F(ReaderThreads, StopAndStartWhileTheReadersAreOpened_LeavesTheNewAdvanceReaderUnstarted) {
    RawConsole([this] { StartV2(); });
    Reader().on_start = [this] {
        Reader().on_start = nullptr;
        OnAnotherThread([this] {
            EXPECT_EQ(Stop(), 0);
            EXPECT_EQ(StartV2(), 0x5010001);
        });
    };
    platform.TakeCalls();
    RawConsole([this] { EXPECT_EQ(Speed(1), 0); });
    EXPECT_THAT(With(".start(0)", platform.TakeCalls()), IsEmpty());
    RawConsole([this] { EXPECT_EQ(Speed(1), 0); });
    EXPECT_THAT(With(".start(0)", platform.TakeCalls()), ElementsAre("advance2.start(0)"));
}

// ---- at work at once -----------------------------------------------------------------------------------------------

TEST_F(ReaderThreads, FramesWhileChannelsComeAndGo_LeaveNothing) {
    PlayV2();
    const PlayFrame frame(1, VEXO_FRAME_MAIN_KEY, 0, 100);
    RawConsole([&] {
        std::atomic<bool> busy{true};
        std::thread pusher([&] {
            while (busy) {
                for (size_t number = 1; number <= Readers(); ++number)
                    Advance().Push(&Reader(number), frame.Address());
            }
        });
        std::thread other([this] {
            for (int round = 0; round < 60; ++round) {
                Control(HOSTMGR_PLAYCMD_ADDCHAN, 3);
                Control(HOSTMGR_PLAYCMD_GETTIME, 0);
                Control(HOSTMGR_PLAYCMD_DELCHAN, 3);
            }
        });
        for (int round = 0; round < 60; ++round) {
            Control(HOSTMGR_PLAYCMD_ADDCHAN, 2);
            Speed(round);
            Control(HOSTMGR_PLAYCMD_DELCHAN, 2);
        }
        other.join();
        busy = false;
        pusher.join();
        EXPECT_EQ(Stop(), 0);
    });
    ExpectNothingHeld();
}
