// The replay thread's passes: what is read, skipped, delivered, kept and ended, in which order and with which sleeps.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

static const char PASS[] = "HostMgrHistoryStreamRePlay";

class Replay : public PlaybackFixture {
protected:
    Lines CallsOfPass() {
        platform.TakeCalls();
        RawConsole([this] { threads.Step(threads.Count()); });
        return platform.TakeCalls();
    }
    static Lines Pass(const Lines& calls) {
        return Joined({UnderPlayLock(PASS, calls), {"vexo_utility_sleep_ms(10)"}});
    }
    static Lines IdlePass() { return Joined({UnderPlayLock(PASS), {"vexo_utility_sleep_ms(1000)"}}); }
};

// ---- idle ----------------------------------------------------------------------------------------------------------

TEST_F(Replay, BeforeTheFirstSpeed_IdlesASecondAtATime) {
    Receive(Start());
    Reader().Add({0});
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(IdlePass()));
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(IdlePass()));
    EXPECT_THAT(receiver.Take(), IsEmpty());
}

TEST_F(Replay, Paused_Idles) {
    Play();
    Reader().Add({0});
    Control(HOSTMGR_PLAYCMD_PAUSE, 1);
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(IdlePass()));
    Control(HOSTMGR_PLAYCMD_PAUSE, 0);
    EXPECT_THAT(At(0), ElementsAre("1"));
}

// The reader playback holds on any value; see there.
TEST_F(Replay, PauseOfTwo_PlaysOn) {
    Play();
    Reader().Add({0});
    Control(HOSTMGR_PLAYCMD_PAUSE, 2);
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(Replay, WithoutChannels_IdlesUntilOneIsAdded) {
    Play();
    EXPECT_THAT(At(0), ElementsAre("end"));
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(IdlePass()));
    RawConsole([this] { Receive(Start(2)); });
    Reader(2).Add({0});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_EQ(threads.Count(), 1u);
}

// ---- a pass --------------------------------------------------------------------------------------------------------

TEST_F(Replay, DeliveredFrame_IsReleasedAndThePassSleepsTenMilliseconds) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader().Add({0, 40});
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(Pass({"reader1.read_frame(0)", "reader1.release_frame(0)"})));
}

TEST_F(Replay, FrameThatIsTooEarly_IsKeptAndOfferedAgain) {
    Play();
    Reader().Add({0, 40});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(39), IsEmpty());
    EXPECT_THAT(With("release", platform.TakeCalls()), ElementsAre("reader1.release_frame(0)")) << "the first alone";
    EXPECT_THAT(At(40), ElementsAre("2"));
}

TEST_F(Replay, WithoutCallback_FrameIsKeptUntilThereIsOne) {
    int hStream = 0;
    RawConsole([&] {
        hStream = Start();
        Speed(1);
    });
    Reader().Add({0});
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(Pass({"reader1.read_frame(0)"})));
    RawConsole([&] { Receive(hStream); });
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(Replay, OnePass_TakesOneFrameOfEachChannelInOrder) {
    for (const int channel : {3, 1, 2}) {
        Play(channel, HOSTMGR_PLAYMODE_DOWNLOAD);
        Reader(Readers()).Add({0, 1});
    }
    RawConsole([this] { threads.Step(1); });
    std::vector<int> streams;
    for (const Received& received : receiver.TakeAll())
        streams.push_back(received.hStream & 0xFFFF);
    EXPECT_THAT(streams, ElementsAre(3, 1, 2));
}

TEST_F(Replay, TwoHundredAndFiftySixChannels_ArePlayedInEachPass) {
    for (int channel = 1; channel <= 256; ++channel) {
        Play(channel, HOSTMGR_PLAYMODE_DOWNLOAD);
        Reader(static_cast<size_t>(channel)).Add({0, 1});
    }
    EXPECT_EQ(At(0).size(), 256u);
    EXPECT_EQ(At(0).size(), 256u);
    EXPECT_THAT(At(0), testing::AllOf(testing::SizeIs(256), testing::Each("end")));
    Stop();
    ExpectNothingHeld();
}

// ---- audio and others ----------------------------------------------------------------------------------------------

TEST_F(Replay, AudioSwitchedOff_IsReleasedByItsTypeWithoutLeavingTheChannel) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader().Add(1, VEXO_FRAME_AUDIO, 0);
    Reader().Add(2, VEXO_FRAME_AUDIO, 40);
    Reader().Add(3, VEXO_FRAME_MAIN_KEY, 40);
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(Pass({"reader1.read_frame(0)", "reader1.release_frame(8)",
                                                      "reader1.read_frame(0)", "reader1.release_frame(8)",
                                                      "reader1.read_frame(0)", "reader1.release_frame(0)"})));
    EXPECT_THAT(receiver.Take(), ElementsAre("3"));
}

TEST_F(Replay, AudioAlone_SwitchedOff_EndsTheChannelInOnePass) {
    Play();
    Reader().Add({0, 40, 80}, VEXO_FRAME_AUDIO);
    EXPECT_THAT(At(0), ElementsAre("end"));
}

TEST_F(Replay, AudioSwitchedOn_IsDeliveredAtOnceAndTouchesNoCadence) {
    Play();
    Control(HOSTMGR_PLAYCMD_AUDIO, 5);
    Reader().Add(1, VEXO_FRAME_AUDIO, 0);
    Reader().Add(2, VEXO_FRAME_MAIN_KEY, 1000);
    Reader().Add(3, VEXO_FRAME_AUDIO, 2000);
    Reader().Add(4, VEXO_FRAME_MAIN_DELTA, 1040);
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwYear, 0u) << "audio does not move the play time";
    EXPECT_THAT(At(0), ElementsAre("2"));
    EXPECT_THAT(At(0), ElementsAre("3"));
    EXPECT_THAT(At(39), IsEmpty());
    EXPECT_THAT(At(40), ElementsAre("4")) << "40 ms after the video before it";
}

TEST_F(Replay, FrameOfAnotherType_IsDroppedAndReleased) {
    for (const unsigned int type : {0u, 2u, 7u, 17u, 20u, 26u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(type);
        Play();
        TestReader& reader = Reader(Readers());
        reader.Add(1, type, 0);
        reader.Add(2, VEXO_FRAME_MAIN_KEY, 0);
        EXPECT_THAT(At(0), IsEmpty());
        EXPECT_THAT(With("release", platform.TakeCalls()), ElementsAre(HasSubstr("release_frame(0)")));
        EXPECT_THAT(At(0), ElementsAre("2"));
        RawConsole([this] { Stop(); });
    }
}

TEST_F(Replay, Download_HandsEveryTypeOut) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader().Add(1, 77, 0);
    EXPECT_THAT(At(0), ElementsAre("1"));
}

// ---- the end -------------------------------------------------------------------------------------------------------

TEST_F(Replay, End_IsANullFrameThenTheChannelGoes) {
    const int hStream = Play();
    platform.TakeCalls();
    const std::string printed = Console([this] { threads.Step(1); });
    EXPECT_EQ(printed, Debug(PASS, NULL_FRAME_TEXT) + Debug("HostMgrSendData", NULL_FRAME_TEXT));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(Pass(Joined({{"reader1.read_frame(0)"}, NodeFreed("reader1")}))));
    const std::vector<Received> received = receiver.TakeAll();
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].hLogin, LOGIN);
    EXPECT_EQ(received[0].hStream, hStream);
    EXPECT_EQ(received[0].frame, nullptr);
    EXPECT_EQ(received[0].length, 0u);
}

TEST_F(Replay, ReaderThatFailsInMidFile_EndsItsChannelAlone) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Play(2, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader(1).Add({0, 1, 2});
    Reader(2).Add({0, 1, 2});
    EXPECT_THAT(At(0), ElementsAre("1", "1"));
    Reader(1).failing = true;
    EXPECT_THAT(At(0), ElementsAre("end", "2"));
    EXPECT_THAT(At(0), ElementsAre("3"));
    EXPECT_TRUE(Reader(1).deleted);
}

TEST_F(Replay, EndWithoutCallback_TakesTheChannelAwaySilently) {
    RawConsole([this] {
        Start();
        Speed(1);
    });
    EXPECT_EQ(Console([this] { threads.Step(1); }), Debug(PASS, NULL_FRAME_TEXT));
    EXPECT_TRUE(Reader().deleted);
}

TEST_F(Replay, EndOfSeveralChannels_TakesThemAwayAfterThePass) {
    Play(1);
    Play(2);
    Play(3, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader(3).Add({0, 1});
    EXPECT_THAT(CallsOfPass(), ElementsAreArray(Pass(Joined({{"reader1.read_frame(0)", "reader2.read_frame(0)",
                                                              "reader3.read_frame(0)", "reader3.release_frame(0)"},
                                                             NodeFreed("reader1"),
                                                             NodeFreed("reader2")}))));
    EXPECT_THAT(receiver.Take(), ElementsAre("end", "end", "1"));
}

TEST_F(Replay, AllEnded_StaysStartedUntilStop) {
    Play();
    EXPECT_THAT(At(0), ElementsAre("end"));
    EXPECT_THAT(Dump(), HasSubstr("播放中"));
    EXPECT_FALSE(threads.Ended(1));
    EXPECT_EQ(Stop(), 0);
    EXPECT_TRUE(threads.Ended(1));
}

// ---- the play time -------------------------------------------------------------------------------------------------

TEST_F(Replay, PacedVideo_MovesThePlayTime) {
    Play();
    Reader().Add(1, VEXO_FRAME_MAIN_KEY, 65999);
    At(0);
    const _tagVexoHostMgrTime time = TimeOf(HOSTMGR_PLAYTIME_CURRENT);
    EXPECT_EQ(time.dwYear, 2024u);
    EXPECT_EQ(time.dwMonth, 7u);
    EXPECT_EQ(time.dwDay, 5u);
    EXPECT_EQ(time.dwHour, 12u);
    EXPECT_EQ(time.dwMinute, 1u);
    EXPECT_EQ(time.dwSecond, 5u);
    EXPECT_EQ(time.reserved, 0u) << "the range's, which this start does not fill";
}

TEST_F(Replay, PlayTimesSpareWord_IsTheReaderStarts) {
    RawConsole([this] {
        StartV2();
        Stop();
    });
    Play();
    Reader(2).Add({0});
    At(0);
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).reserved, 77u);
}

TEST_F(Replay, Download_DoesNotMoveThePlayTime) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader().Add({0});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwYear, 0u);
}

TEST_F(Replay, PlayTime_IsLocalTime) {
    SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    Play();
    Reader().Add({0});
    At(0);
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwHour, 14u) << "summer time";
}

TEST_F(Replay, PlayTimePast2038_IsUnsigned) {
    Play();
    Reader().Add(1, VEXO_FRAME_MAIN_KEY, (0xF0000000LL - SecondsOf(12, 0, 0)) * 1000);
    At(0);
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwYear, sizeof(time_t) == 8 ? 2097u : 1961u);
}
