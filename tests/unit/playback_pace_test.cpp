// The pace of a callback playback, to the millisecond: gaps, speeds, lateness, a clock that goes back. The clock stands
// still but for the test; a frame that is not due stays with its reader.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

class Pace : public PlaybackFixture {};

struct PaceRow {
    const char* name;
    long gap;
    int speed;
    long interval;
};
static void PrintTo(const PaceRow& row, std::ostream* out) {
    *out << row.name;
}
class PaceTable : public Pace, public testing::WithParamInterface<PaceRow> {};

TEST_P(PaceTable, SecondFrame_IsDueAfterTheInterval) {
    const PaceRow& row = GetParam();
    Play();
    Speed(row.speed);
    Reader().Add(1, VEXO_FRAME_MAIN_KEY, 20000);
    Reader().Add(2, VEXO_FRAME_MAIN_KEY, 20000 + row.gap);
    EXPECT_THAT(At(0), ElementsAre("1"));
    if (row.interval > 0) {
        EXPECT_THAT(At(row.interval - 1), IsEmpty());
    }
    EXPECT_THAT(At(row.interval), ElementsAre("2"));
}

INSTANTIATE_TEST_SUITE_P(Gaps, PaceTable,
                         testing::Values(PaceRow{"None", 0, 1, 40}, PaceRow{"OneMillisecond", 1, 1, 1},
                                         PaceRow{"Usual", 40, 1, 40}, PaceRow{"Long", 9999, 1, 9999},
                                         PaceRow{"TenSeconds", 10000, 1, 40}, PaceRow{"AnHour", 3600000, 1, 40},
                                         PaceRow{"Backwards", -40, 1, 40}, PaceRow{"OneBackwards", -1, 1, 40}),
                         ByName());

INSTANTIATE_TEST_SUITE_P(Speeds, PaceTable,
                         testing::Values(PaceRow{"Zero", 100, 0, 100}, PaceRow{"One", 100, 1, 100},
                                         PaceRow{"Two", 100, 2, 50}, PaceRow{"Three", 100, 3, 33},
                                         PaceRow{"Four", 100, 4, 25}, PaceRow{"Five", 100, 5, 20},
                                         PaceRow{"ThirtyTwo", 100, 32, 3}, PaceRow{"MinusOne", 100, -1, 100},
                                         PaceRow{"MinusTwo", 100, -2, 200}, PaceRow{"MinusThirtyTwo", 100, -32, 3200},
                                         PaceRow{"UsualGapHalved", 0, 2, 20}, PaceRow{"UsualGapDoubled", 0, -2, 80},
                                         PaceRow{"LongestSlowest", 9999, -32, 319968},
                                         PaceRow{"NothingLeft", 20, 32, 0}, PaceRow{"TooFast", 100, 1000, 3},
                                         PaceRow{"TooSlow", 100, -1000, 3200}),
                         ByName());

// ---- cadence -------------------------------------------------------------------------------------------------------

TEST_F(Pace, FrameInTime_KeepsTheCadence) {
    Play();
    Reader().Add({0, 40, 80});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(70), ElementsAre("2")) << "30 ms late";
    EXPECT_THAT(At(79), IsEmpty());
    EXPECT_THAT(At(80), ElementsAre("3")) << "in time again";
}

TEST_F(Pace, HundredMillisecondsLate_KeepsTheCadence) {
    Play();
    Reader().Add({0, 40, 80, 120});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(140), ElementsAre("2"));
    EXPECT_THAT(At(140), ElementsAre("3")) << "catches up";
    EXPECT_THAT(At(140), ElementsAre("4"));
}

TEST_F(Pace, MoreThanAHundredMillisecondsLate_StartsTheCadenceAnew) {
    Play();
    Reader().Add({0, 40, 80});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(141), ElementsAre("2"));
    EXPECT_THAT(At(180), IsEmpty());
    EXPECT_THAT(At(181), ElementsAre("3"));
}

TEST_F(Pace, Lateness_IsMeasuredFromTheScaledInterval) {
    Play();
    Speed(2);
    Reader().Add({0, 100, 200});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(151), ElementsAre("2")) << "due at 50";
    EXPECT_THAT(At(200), IsEmpty());
    EXPECT_THAT(At(201), ElementsAre("3"));
}

TEST_F(Pace, ClockGoneBack_StartsTheCadenceAnew) {
    Play();
    Reader().Add({0, 40, 80});
    EXPECT_THAT(At(5000), ElementsAre("1"));
    EXPECT_THAT(At(4999), ElementsAre("2"));
    EXPECT_THAT(At(5038), IsEmpty());
    EXPECT_THAT(At(5039), ElementsAre("3"));
}

TEST_F(Pace, FirstFrame_CountsFromTheEndOfItsCallback) {
    Play();
    Reader().Add({0, 40});
    receiver.meanwhile = [](const Received&) { AdvanceClock(500); };
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(539), IsEmpty());
    EXPECT_THAT(At(540), ElementsAre("2"));
}

TEST_F(Pace, LaterFrames_CountFromBeforeTheirCallback) {
    Play();
    Reader().Add({0, 40, 80});
    EXPECT_THAT(At(0), ElementsAre("1"));
    receiver.meanwhile = [](const Received&) { AdvanceClock(500); };
    EXPECT_THAT(At(40), ElementsAre("2"));
    EXPECT_THAT(At(79), IsEmpty());
    EXPECT_THAT(At(80), ElementsAre("3"));
}

TEST_F(Pace, EachChannel_HasACadenceOfItsOwn) {
    Play(1);
    Play(2);
    Reader(1).Add({0, 40});
    Reader(2).Add({0, 100});
    EXPECT_THAT(At(0), ElementsAre("1", "1"));
    EXPECT_THAT(At(40), ElementsAre("2"));
    EXPECT_TRUE(Reader(1).deleted == false);
    EXPECT_THAT(At(99), ElementsAre("end"));
    EXPECT_THAT(At(100), ElementsAre("2"));
}

TEST_F(Pace, SpeedChangedInBetween_HoldsForTheNextFrame) {
    Play();
    Reader().Add({0, 100, 200});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(60), IsEmpty());
    RawConsole([this] { Speed(2); });
    EXPECT_THAT(At(60), ElementsAre("2"));
}

// The pause counts as lateness: the first frame after it starts the cadence anew.
TEST_F(Pace, AfterAPause_GoesOnAtOnce) {
    Play();
    Reader().Add({0, 40, 80});
    EXPECT_THAT(At(0), ElementsAre("1"));
    RawConsole([this] { Control(HOSTMGR_PLAYCMD_PAUSE, 1); });
    EXPECT_THAT(At(10000), IsEmpty());
    RawConsole([this] { Control(HOSTMGR_PLAYCMD_PAUSE, 0); });
    EXPECT_THAT(At(10001), ElementsAre("2"));
    EXPECT_THAT(At(10040), IsEmpty());
    EXPECT_THAT(At(10041), ElementsAre("3"));
}

TEST_F(Pace, AfterASeek_TheNextFrameIsDueAtOnce) {
    Play();
    Reader().Add({0, 9000, 9040});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(10), IsEmpty());
    RawConsole([this] { Seek(HostTime(12, 30, 0)); });
    EXPECT_THAT(At(10), ElementsAre("2"));
    EXPECT_THAT(At(49), IsEmpty());
    EXPECT_THAT(At(50), ElementsAre("3"));
}

// ---- key frames only -----------------------------------------------------------------------------------------------

TEST_F(Pace, SpeedFive_DeliversKeyFramesOnly) {
    Play();
    RawConsole([this] { Speed(5); });
    unsigned int number = 0;
    for (const unsigned int type : {1, 9, 18, 19, 24, 25, 1}) {
        ++number;
        Reader().Add(number, type, number * 100);
    }
    Lines delivered;
    for (long at = 0; at < 2000; at += 200)
        delivered = Joined({delivered, Without("end", At(at))});
    EXPECT_THAT(delivered, ElementsAre("1", "3", "5", "7"));
}

TEST_F(Pace, SpeedFour_DeliversAllVideo) {
    Play();
    RawConsole([this] { Speed(4); });
    unsigned int number = 0;
    for (const unsigned int type : {1, 9, 18, 19, 24, 25}) {
        ++number;
        Reader().Add(number, type, number * 100);
    }
    Lines delivered;
    for (long at = 0; at < 2000; at += 200)
        delivered = Joined({delivered, Without("end", At(at))});
    EXPECT_THAT(delivered, ElementsAre("1", "2", "3", "4", "5", "6"));
}

TEST_F(Pace, SpeedFive_TheVeryFirstFrameNeedNotBeAKeyFrame) {
    Play();
    RawConsole([this] { Speed(5); });
    Reader().Add({0, 40}, VEXO_FRAME_MAIN_DELTA);
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(0), IsEmpty());
    EXPECT_THAT(At(0), ElementsAre("end")) << "the second was dropped at once";
}

TEST_F(Pace, DroppedFrames_DoNotCountForTheGap) {
    Play();
    RawConsole([this] { Speed(5); });
    Reader().Add(1, VEXO_FRAME_MAIN_KEY, 0);
    Reader().Add(2, VEXO_FRAME_MAIN_DELTA, 900);
    Reader().Add(3, VEXO_FRAME_MAIN_KEY, 1000);
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(0), IsEmpty());
    EXPECT_THAT(At(199), IsEmpty());
    EXPECT_THAT(At(200), ElementsAre("3")) << "1000 ms at five times the pace";
}

// ---- modes ---------------------------------------------------------------------------------------------------------

TEST_F(Pace, ModeTwo_PacesLikePlayback) {
    Play(1, 2);
    Reader().Add({0, 40});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(39), IsEmpty());
    EXPECT_THAT(At(40), ElementsAre("2"));
}

TEST_F(Pace, ModeOne_DeliversEveryFrameAtOnceWhateverTheSpeed) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    RawConsole([this] { Speed(-32); });
    Reader().Add({0, 5000, 1000});
    Reader().Add(4, VEXO_FRAME_MAIN_DELTA, 1);
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(At(0), ElementsAre("2"));
    RawConsole([this] { Speed(32); });
    EXPECT_THAT(At(0), ElementsAre("3"));
    EXPECT_THAT(At(0), ElementsAre("4"));
}

TEST_F(Pace, Times_ComeFromThePlatform) {
    Play();
    Reader().Add({0, 40});
    At(0);
    platform.TakeCalls();
    At(50);
    EXPECT_THAT(WithAny({"delta", "add_time"}, platform.TakeCalls()),
                ElementsAre("vexo_utility_cnt_delta_ms(1720180000.0, 1720180000.50000)",
                            "vexo_utility_cnt_delta_ms(1720180800.0, 1720180800.40000)",
                            "vexo_utility_add_time(1720180000.0, 40)"));
}
