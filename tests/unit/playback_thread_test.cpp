// Callback playback under several threads: stops, starts, channels that go and logouts while a pass, the opening of the
// readers or a join is under way. Each meeting is arranged by the calls that the library makes; nothing sleeps.
#include "playback_threads.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace vexo_soft;

static const char CONTROL[] = "HostMgrHistoryStreamPlayControl";
static const char STOP[] = "HostMgr_Dev_StopHistoryPlay";

class Joining : public PlayThreads {
protected:
    /** Stops the play; while the stop joins, the other thread comes and goes. */
    int StopWhile(const std::function<void()>& other) {
        EXPECT_CALL(platform, vexo_utility_retrieve_thread)
            .WillOnce([this, other](unsigned long id) {
                EXPECT_THAT(platform.HeldLocks(), IsEmpty()) << "joined without the lock";
                OnAnotherThread(other);
                threads.Join(id);
                return 0;
            })
            .WillRepeatedly(testing::DoDefault());
        int result = 0;
        RawConsole([&] { result = Stop(); });
        return result;
    }
};

// ---- stop and start while a stop joins -----------------------------------------------------------------------------

TEST_F(Joining, SecondStop_JoinsNothing) {
    Play();
    int second = 0;
    EXPECT_EQ(StopWhile([&] { second = Stop(); }), 0);
    EXPECT_EQ(second, -1);
    EXPECT_THAT(With("retrieve_thread", platform.TakeCalls()), ElementsAre("vexo_utility_retrieve_thread(1)"));
}

// The thread that is being joined ends although the next play has begun, and that play has a thread of its own.
TEST_F(Joining, StartMeanwhile_GetsItsThreadAndTheOldOneEnds) {
    Play();
    int hStream = -1;
    EXPECT_EQ(StopWhile([&] {
                  hStream = Start();
                  EXPECT_EQ(threads.Count(), 1u) << "no second thread beside the first";
              }),
              0);
    EXPECT_EQ(hStream, 0x5010001);
    EXPECT_TRUE(threads.Ended(1));
    EXPECT_EQ(threads.Count(), 2u);
    RawConsole([&] {
        Receive(hStream);
        Speed(1);
    });
    Reader(2).Add({0});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_EQ(Stop(), 0);
    EXPECT_TRUE(threads.Ended(2));
    ExpectNothingHeld();
}

TEST_F(Joining, TwoStartsMeanwhile_ShareOneThread) {
    Play();
    StopWhile([&] {
        Start(1);
        Start(2);
    });
    EXPECT_EQ(threads.Count(), 2u);
}

TEST_F(Joining, StartAndStopMeanwhile_LeavesNoThread) {
    Play();
    int second = -1;
    StopWhile([&] {
        Start();
        second = Stop();
    });
    EXPECT_EQ(second, 0);
    EXPECT_EQ(threads.Count(), 1u);
    ExpectNothingHeld();
    RawConsole([this] { Receive(Start()); });
    EXPECT_EQ(threads.Count(), 2u) << "the next start has one";
}

TEST_F(Joining, StartStopAndReaderStartMeanwhile_LeavesNoThread) {
    Play();
    StopWhile([&] {
        Start();
        Stop();
        StartV2();
    });
    EXPECT_EQ(threads.Count(), 1u) << "a replay thread would read the reader play's channels";
}

TEST_F(Joining, ReaderStartMeanwhile_LetsTheOldThreadEnd) {
    Play();
    StopWhile([&] { StartV2(); });
    EXPECT_TRUE(threads.Ended(1));
    EXPECT_EQ(threads.Count(), 1u);
}

// ---- a callback under way ------------------------------------------------------------------------------------------

TEST_F(PlayThreads, StopDuringACallback_WaitsForItAndNoneFollows) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader().Add({0, 1, 2});
    std::thread stopper;
    std::atomic<bool> stopped{false};
    bool stoppedMeanwhile = true;
    platform.TakeCalls();
    receiver.meanwhile = [&](const Received&) {
        stopper = std::thread([&] {
            Stop();
            stopped = true;
        });
        AwaitCall(OnPlay("lock", STOP));
        stoppedMeanwhile = stopped;
    };
    EXPECT_THAT(At(0), ElementsAre("1"));
    stopper.join();
    EXPECT_FALSE(stoppedMeanwhile);
    EXPECT_THAT(receiver.Take(), IsEmpty());
    ExpectNothingHeld();
}

TEST_F(PlayThreads, LogoutDuringACallback_WaitsForItAndLeavesNothing) {
    play.reset();
    vexo_HostMgr_Dev_init();
    platform.NextLogin(LOGIN);
    EXPECT_EQ(vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr), LOGIN);
    _tagVexoHostMgrTime time = HostTime(12, 0, 0);
    HostMgrPlayCtrlParam speed = {};
    speed.dwPlayCmd = HOSTMGR_PLAYCMD_SPEED;
    RawConsole([&] {
        const int hStream = vexo_HostMgr_Dev_StartHistoryPlay(LOGIN, 1, 0, &time, &time);
        EXPECT_EQ(hStream, 0x5010001);
        EXPECT_EQ(vexo_HostMgr_Dev_SetHistoryStreamCallback(LOGIN, hStream, Receiver::Stream, &receiver), 0);
        vexo_HostMgr_Dev_Control(LOGIN, HOSTMGR_CONTROL_PLAYBACK, 0, 0, nullptr, 0, &speed, sizeof(speed), nullptr, 0);
    });
    Reader().Add({0, 40, 80});
    std::thread leaver;
    platform.TakeCalls();
    receiver.meanwhile = [&](const Received&) {
        leaver = std::thread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0); });
        AwaitCall("vexo_utility_retrieve_thread(1)");
    };
    EXPECT_THAT(At(0), ElementsAre("1"));
    leaver.join();
    EXPECT_TRUE(threads.Ended(1));
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    ExpectNothingHeld();
}

// ---- channels that go ----------------------------------------------------------------------------------------------

class Deleting : public PlayThreads {
protected:
    /**
     * Deletes a channel while a pass that began when the command had let the lock go is in the first channel's
     * callback. Whether the channel's reader was gone before the pass went on.
     */
    bool DeleteDuringAPass(int channel) {
        Signal inside;
        Signal deleted;
        std::thread pass;
        receiver.meanwhile = [&](const Received& received) {
            if (received.hStream == 0x5010001) {
                inside.Give();
                deleted.Await();
            }
        };
        platform.Lock(PLAY_LOCK).after_unlock = [&](const std::string& function) {
            if (function == CONTROL) {
                pass = std::thread([&] { threads.Step(1); });
                inside.Await();
            }
        };
        bool gone = false;
        RawConsole([&] {
            EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, channel), 0);
            gone = Reader(channel).deleted;
            deleted.Give();
            pass.join();
        });
        receiver.meanwhile = nullptr;
        platform.Lock(PLAY_LOCK).after_unlock = nullptr;
        return gone;
    }
};

// The command has let the lock go and a pass has begun: the channel is out of the list at once, and freed by the pass.
TEST_F(Deleting, DeleteDuringAPass_DoesNotWaitAndThePassFrees) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    RawConsole([this] { Receive(Start(2, HOSTMGR_PLAYMODE_DOWNLOAD)); });
    Reader(1).Add({0, 1});
    Reader(2).Add({0, 1});
    EXPECT_FALSE(DeleteDuringAPass(1));
    EXPECT_TRUE(Reader(1).deleted);
    EXPECT_THAT(receiver.Take(), ElementsAre("1", "1")) << "the other channel loses no frame";
    EXPECT_THAT(At(0), ElementsAre("2"));
    EXPECT_EQ(Stop(), 0);
    ExpectNothingHeld();
}

TEST_F(Deleting, NextChannelDeletedDuringAPass_IsNotRead) {
    for (const int channel : {1, 2, 3})
        Play(channel, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader(1).Add({0, 1});
    Reader(2).Add({0, 1});
    Reader(3).Add({0, 1});
    EXPECT_TRUE(DeleteDuringAPass(2)) << "nobody was at it";
    std::vector<int> streams;
    for (const Received& received : receiver.TakeAll())
        streams.push_back(received.hStream);
    EXPECT_THAT(streams, ElementsAre(0x5010001, 0x5010003));
}

// ---- opening -------------------------------------------------------------------------------------------------------

class Opening : public PlayThreads {
protected:
    void SetUp() override {
        RawConsole([this] {
            for (const int channel : {1, 2, 3})
                Start(channel);
        });
        platform.TakeCalls();
    }

    /** The first speed command; while it starts the first reader, the other thread comes and goes. */
    Lines CallsOfSpeedWhile(const std::function<void()>& other) {
        Reader(1).on_start = [this, other] {
            Reader(1).on_start = nullptr;
            OnAnotherThread(other);
        };
        RawConsole([this] { EXPECT_EQ(Speed(1), 0); });
        return platform.TakeCalls();
    }
};

TEST_F(Opening, ChannelDeletedWhileItIsOpened_IsFreedAfterwards) {
    bool freed = true;
    const Lines calls = CallsOfSpeedWhile([&] {
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), 0);
        freed = Reader(1).deleted;
    });
    EXPECT_FALSE(freed);
    EXPECT_TRUE(Reader(1).deleted);
    EXPECT_EQ(With(".open(", calls).size(), 3u);
}

TEST_F(Opening, NextChannelDeletedMeanwhile_IsNotOpenedAndTheOneAfterItIs) {
    const Lines calls = CallsOfSpeedWhile([&] { EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 2), 0); });
    EXPECT_THAT(With(".open(", calls), ElementsAre("reader1.open(files0)", "reader3.open(files2)"));
}

TEST_F(Opening, AllChannelsBehindDeletedMeanwhile_AreNotOpened) {
    const Lines calls = CallsOfSpeedWhile([&] {
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 3), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 2), 0);
    });
    EXPECT_THAT(With(".open(", calls), ElementsAre("reader1.open(files0)"));
}

TEST_F(Opening, SecondSpeedMeanwhile_OpensNothingASecondTime) {
    const Lines calls = CallsOfSpeedWhile([&] { EXPECT_EQ(Speed(3), 0); });
    EXPECT_EQ(With(".open(", calls).size(), 3u);
    EXPECT_THAT(Dump(), HasSubstr("当前播放速度是:3\n"));
    EXPECT_THAT(Dump(), HasSubstr("播放中"));
}

TEST_F(Opening, StopMeanwhile_EndsItAndTheNextPlayWaitsForASpeedOfItsOwn) {
    const Lines calls = CallsOfSpeedWhile([&] { EXPECT_EQ(Stop(), 0); });
    EXPECT_THAT(With(".open(", calls), ElementsAre("reader1.open(files0)"));
    ExpectNothingHeld();
    RawConsole([this] { Receive(Start()); });
    EXPECT_THAT(Dump(), HasSubstr("当前播放状态是:未知\n"));
    RawConsole([this] { Speed(1); });
    Reader(4).Add({0});
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(Opening, StopAndStartMeanwhile_LeavesTheNewChannelsUnopened) {
    const Lines calls = CallsOfSpeedWhile([&] {
        Stop();
        Start(7);
    });
    EXPECT_EQ(With("reader4.open(", calls).size(), 1u) << "as it was added";
    EXPECT_THAT(Dump(), HasSubstr("当前播放状态是:未知\n"));
}

// ---- the stranded lock ---------------------------------------------------------------------------------------------

TEST_F(PlayThreads, StrandedLock_LetsTheReplayThreadGoAtTheEnd) {
    Play();
    Reader().Add({0, 40});
    EXPECT_THAT(At(0), ElementsAre("1"));
    RawConsole([this] { EXPECT_EQ(Control(HOSTMGR_PLAYCMD_GETTIME, 3), -1); });
    platform.TakeCalls();
    threads.Run(1);
    AwaitCall(OnPlay("lock", "HostMgrHistoryStreamRePlay"));
    RawConsole([this] { play.reset(); });
    EXPECT_LT(PlaceOf(OnPlay("unlock", "~vexo_hostmgr_playback")), PlaceOf("vexo_utility_retrieve_thread(1)"));
    EXPECT_TRUE(threads.Ended(1));
    ExpectNothingHeld();
}

// ---- at work at once -----------------------------------------------------------------------------------------------

TEST_F(PlayThreads, ManyThreads_StartPlaySeekDeleteDumpAndStop_LeaveNothing) {
    std::vector<std::thread> workers;
    RawConsole([&] {
        for (int number = 0; number < 4; ++number) {
            workers.emplace_back([this, number] {
                for (int round = 0; round < 40; ++round) {
                    const int hStream = Start(number + 1, round % 2 == 0 ? 1 : 0);
                    for (unsigned long id = 1; id <= threads.Count(); ++id)
                        threads.Run(id);
                    Receive(hStream);
                    Speed(round % 7);
                    Seek(HostTime(12, 30, 0));
                    Control(HOSTMGR_PLAYCMD_ADDCHAN, 9);
                    Control(HOSTMGR_PLAYCMD_STREAMTYPE, 9, 2);
                    Control(HOSTMGR_PLAYCMD_DELCHAN, 9);
                    if (round % 5 == number)
                        Stop();
                }
            });
        }
        for (int round = 0; round < 100; ++round)
            play->HostMgrPlaybackDump(2000, CollectPrint);
        for (std::thread& worker : workers)
            worker.join();
        Stop();
    });
    for (unsigned long id = 1; id <= threads.Count(); ++id) {
        threads.Join(id);
        EXPECT_TRUE(threads.Ended(id));
    }
    ExpectNothingHeld();
}
