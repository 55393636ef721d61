// Every call in every state of a play: what it answers and which state it leaves. What else a call does stands in the
// tests of its kind.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

enum State { STOPPED, IDLE, PLAYING, PAUSED, ENDED, STRANDED };
static const char* const STATE_NAMES[] = {"stopped", "idle", "playing", "paused", "ended", "stranded"};

constexpr int CHANNEL_1 = 0x5010001;
constexpr int CHANNEL_2 = 0x5010002;

class PlayStateFixture : public PlaybackFixture {
public:
    // The calls of the table.
    int DoStart() { return Start(2); }
    int DoStartV2() { return StartV2(2); }
    int DoReceive() { return Receive(CHANNEL_1); }
    int DoStop() { return Stop(); }
    template <uint32_t command, uint32_t param = 0>
    int Do() {
        return Control(command, param);
    }
    int DoSeek() { return Seek(HostTime(12, 30, 0)); }
    int DoBadBuffer() {
        return play->HostMgrHistoryStreamPlayControl(LOGIN, 0, 0, nullptr, 0, nullptr, 60, nullptr, 0);
    }

protected:
    /** A play in that state, of channel 1. */
    void Enter(State state) {
        if (state == STOPPED)
            return;
        RawConsole([&] {
            Start(1);
            Receive(CHANNEL_1);
            Reader().Add({0, 40, 80});
            if (state != IDLE)
                Speed(1);
            if (state == PAUSED)
                Control(HOSTMGR_PLAYCMD_PAUSE, 1);
        });
        if (state == ENDED) {
            Reader().failing = true;
            EXPECT_THAT(At(0), ElementsAre("end"));
        }
        EXPECT_EQ(Now(), state);
        platform.TakeCalls();
    }

    /** The state as the diagnostics show it. */
    State Now() {
        const std::string dump = Dump();
        const auto says = [&dump](const char* text) { return dump.find(text) != std::string::npos; };
        if (says("trylock fail"))
            return STRANDED;
        if (says("未启动"))
            return STOPPED;
        if (says("暂停"))
            return PAUSED;
        if (says("未知"))
            return IDLE;
        EXPECT_TRUE(says("播放中")) << dump;
        return says("回放节点数:0\n") ? ENDED : PLAYING;
    }
};

struct CallRow {
    const char* name;
    int (PlayStateFixture::*call)();
    int results[5];  // in the order of the states
    State after[5];
};
static void PrintTo(const CallRow& row, std::ostream* out) {
    *out << row.name;
}

using F = PlayStateFixture;
static const CallRow CALLS[] = {
    {"Start",
     &F::DoStart,
     {CHANNEL_2, CHANNEL_2, CHANNEL_2, CHANNEL_2, CHANNEL_2},
     {IDLE, IDLE, PLAYING, PAUSED, PLAYING}},
    {"StartV2", &F::DoStartV2, {CHANNEL_2, -1, -1, -1, -1}, {IDLE, IDLE, PLAYING, PAUSED, ENDED}},
    {"SetCallback", &F::DoReceive, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"Stop", &F::DoStop, {-1, 0, 0, 0, 0}, {STOPPED, STOPPED, STOPPED, STOPPED, STOPPED}},
    {"Speed", &F::Do<1, 2>, {0, 0, 0, 0, 0}, {STOPPED, PLAYING, PLAYING, PAUSED, ENDED}},
    {"Pause", &F::Do<2, 1>, {0, 0, 0, 0, 0}, {STOPPED, PAUSED, PAUSED, PAUSED, PAUSED}},
    {"GoOn", &F::Do<2, 0>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PLAYING, ENDED}},
    {"Seek", &F::DoSeek, {-1, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"Nothing", &F::Do<4>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"Audio", &F::Do<5, 1>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"GetTime", &F::Do<6, 0>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"GetTimeOfBadSelector", &F::Do<6, 3>, {-1, -1, -1, -1, -1}, {STRANDED, STRANDED, STRANDED, STRANDED, STRANDED}},
    {"Direction", &F::Do<7, 1>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"AddChannel", &F::Do<8, 2>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, PLAYING}},
    {"DeleteChannel", &F::Do<9, 1>, {-1, 0, 0, 0, -1}, {STOPPED, IDLE, ENDED, PAUSED, ENDED}},
    {"StreamType", &F::Do<10, 1>, {0, 0, 0, 0, 0}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"UnknownCommand", &F::Do<11>, {-1, -1, -1, -1, -1}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
    {"BadBuffer", &F::DoBadBuffer, {-1, -1, -1, -1, -1}, {STOPPED, IDLE, PLAYING, PAUSED, ENDED}},
};

class PlayState : public PlayStateFixture, public testing::WithParamInterface<std::tuple<State, CallRow>> {};

TEST_P(PlayState, Call_AnswersAndLeaves) {
    const State state = std::get<0>(GetParam());
    const CallRow& row = std::get<1>(GetParam());
    Enter(state);
    int result = 0;
    RawConsole([&] { result = (this->*row.call)(); });
    EXPECT_EQ(result, row.results[state]);
    // Another thread looks: this one may hold the lock now.
    State after = STOPPED;
    std::thread([&] { after = Now(); }).join();
    EXPECT_STREQ(STATE_NAMES[after], STATE_NAMES[row.after[state]]);
    RawConsole([this] { play.reset(); });
    ExpectNothingHeld();
}

INSTANTIATE_TEST_SUITE_P(
    Each, PlayState, testing::Combine(testing::Values(STOPPED, IDLE, PLAYING, PAUSED, ENDED), testing::ValuesIn(CALLS)),
    [](const testing::TestParamInfo<std::tuple<State, CallRow>>& row) {
        return std::string(STATE_NAMES[std::get<0>(row.param)]) + "_" + std::get<1>(row.param).name;
    });

// ---- what only a sequence shows ------------------------------------------------------------------------------------

class PlayStates : public PlayStateFixture {};

TEST_F(PlayStates, SpeedBeforeTheStart_MakesThePlayBeginWithIt) {
    RawConsole([this] {
        Speed(1);
        Receive(Start());
    });
    Reader().Add({0});
    EXPECT_EQ(Now(), PLAYING);
    EXPECT_THAT(With("reader1.open", platform.TakeCalls()), ElementsAre("reader1.open(files0)"))
        << "opened when it was added";
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(PlayStates, PauseBeforeTheStart_HoldsThePlay) {
    RawConsole([this] {
        Control(HOSTMGR_PLAYCMD_PAUSE, 1);
        Receive(Start());
        Speed(1);
    });
    Reader().Add({0});
    EXPECT_THAT(At(0), IsEmpty());
    Control(HOSTMGR_PLAYCMD_PAUSE, 0);
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(PlayStates, AddChannelBeforeTheStart_IsPlayedWithIt) {
    RawConsole([this] {
        Control(HOSTMGR_PLAYCMD_ADDCHAN, 2);
        Start(1);
        Receive(CHANNEL_2);
        Speed(1);
    });
    Reader(1).Add({0});
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(PlayStates, StopOfAnEndedPlay_LeavesNothing) {
    Play();
    At(0);
    RawConsole([this] { EXPECT_EQ(Stop(), 0); });
    ExpectNothingHeld();
}
