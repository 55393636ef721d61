// The agent's audio on its way to the recorder: what is refused, the frame that is built of it, the queue.
#include "talk_fixture.h"
#include "vexo_hostmgr_talkback.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using namespace vexo_soft;

static const char INPUT[] = "HostMgr_Dev_InputTalkData";

static std::string NodeMade() {
    return "vexo_utility_malloc(97, 0x80004, " + std::to_string(sizeof(HostMgrTalkPlayNode)) + ", 1)";
}
static std::string FrameMade(unsigned int size) {
    return "vexo_utility_malloc(97, 0x80004, " + std::to_string(size) + ", 1)";
}

/** A little-endian word of a frame. */
static unsigned int WordAt(const Bytes& bytes, size_t at) {
    return bytes[at] | static_cast<unsigned int>(bytes[at + 1]) << 8 | static_cast<unsigned int>(bytes[at + 2]) << 16 |
           static_cast<unsigned int>(bytes[at + 3]) << 24;
}

class TalkInput : public TalkFixture {
protected:
    void SetUp() override {
        TalkFixture::SetUp();
        Start();
        threads.Step();
        platform.TakeCalls();
    }

    static int InputRaw(const void* data, unsigned int size, int hTalk = TALK) {
        return vexo_HostMgr_Dev_InputTalkData(LOGIN, hTalk, static_cast<char*>(const_cast<void*>(data)), size);
    }
};

// ---- refusals ------------------------------------------------------------------------------------------------------

TEST_F(TalkInput, NoData_IsRefusedFirst) {
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(InputRaw(nullptr, 344, -1), -1); }),
                            Error(INPUT, "pData (nil), dwDataSize 344\n"));
              }),
              TalkLookup());
}

TEST_F(TalkInput, SizeZero_IsRefusedFirst) {
    char text[64];
    char data[1];
    snprintf(text, sizeof(text), "pData %p, dwDataSize 0\n", static_cast<void*>(data));
    EXPECT_EQ(Console([&] { EXPECT_EQ(InputRaw(data, 0), -1); }), Error(INPUT, text));
}

TEST_F(TalkInput, HandleOfNoTalk_IsRefusedWithoutTheLock) {
    EXPECT_EQ(CallsOf([] {
                  const Bytes data = InputData(Audio(320));
                  EXPECT_EQ(Console([&] { EXPECT_EQ(Input(data, 0), -1); }), Error(INPUT, "hTalk 0x0 <= 0\n"));
                  EXPECT_EQ(Console([&] { EXPECT_EQ(Input(data, -1), -1); }), Error(INPUT, "hTalk 0xffffffff <= 0\n"));
                  EXPECT_EQ(Console([&] { EXPECT_EQ(Input(data, 0x34), -1); }), Error(INPUT, "hTalk 0x34 <= 0\n"));
              }),
              Joined({TalkLookup(), TalkLookup(), TalkLookup()}));
}

// After a stop the stored login is 0, so the login is what does not match.
TEST_F(TalkInput, AfterAStop_IsRefusedAsAnotherLogins) {
    Stop();
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(Input(InputData(Audio(320))), -1); }),
                            Error(INPUT, "hLogin 0x501 <= 0 || != 0x0\n"));
              }),
              TalkLookup());
}

TEST_F(TalkInput, OfATalkThatWasLeftBehind_IsDroppedSilently) {
    StopRefused();
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Input(InputData(Audio(320))), 0); }), ""); }),
              Joined({TalkLookup(), Under(TALK_LOCK, INPUT)}));
}

TEST_F(TalkInput, TooShortForATalkThatWasLeftBehind_IsDroppedTheSame) {
    StopRefused();
    EXPECT_EQ(InputRaw("x", 1), 0);
}

class TalkInputTooShort : public TalkInput, public testing::WithParamInterface<unsigned int> {};

TEST_P(TalkInputTooShort, IsRefusedSilentlyAndQueuesNothing) {
    const Bytes data = InputData(Audio(320));
    EXPECT_EQ(CallsOf([&] { EXPECT_EQ(RawConsole([&] { EXPECT_EQ(InputRaw(data.data(), GetParam()), -1); }), ""); }),
              Joined({TalkLookup(), Under(TALK_LOCK, INPUT)}));
    threads.Step();
    EXPECT_THAT(m_played, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Sizes, TalkInputTooShort, testing::Values(1u, 23u, 24u, 25u, 343u));

TEST_F(TalkInput, NoMemoryForTheNode_SaysSoUnderAnotherName) {
    platform.FailMalloc(1);
    const Lines calls = CallsOf([] {
        const std::string text = Console([] { EXPECT_EQ(Input(InputData(Audio(320))), -1); });
        const size_t line = text.find('[', text.find(INPUT));
        ASSERT_NE(line, std::string::npos) << text;
        EXPECT_EQ(text.substr(0, line), "\033[0;32;31m[RTSP_SER] ERROR! HostMgr_Dev_InputTalkData");
        EXPECT_EQ(text.substr(text.find("]:", line)), "]:malloc for play node failed!!\n\033[m");
    });
    EXPECT_EQ(calls, Joined({TalkLookup(), Under(TALK_LOCK, INPUT), {NodeMade()}}));
}

TEST_F(TalkInput, NoMemoryForTheFrame_SaysItsSizeAndFreesTheNode) {
    platform.FailMalloc(2);
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(Input(InputData(Audio(320))), -1); }),
                            Error(INPUT, "vexo_utility_malloc failed size 356!!\n"));
              }),
              Joined({TalkLookup(), Under(TALK_LOCK, INPUT), {NodeMade(), FrameMade(356), Freed(INPUT)}}));
}

// The frame would be longer than any size that can be asked for: refused before a byte of it is read.
TEST_F(TalkInput, SizeThatOverflows_IsRefusedAsIfThereWereNoMemory) {
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(InputRaw("x", 0xFFFFFFF4), -1); }),
                            Error(INPUT, "vexo_utility_malloc failed size 0!!\n"));
                  EXPECT_EQ(Console([] { EXPECT_EQ(InputRaw("x", 0xFFFFFFFF), -1); }),
                            Error(INPUT, "vexo_utility_malloc failed size 11!!\n"));
              }),
              Joined({TalkLookup(),
                      Under(TALK_LOCK, INPUT),
                      {NodeMade(), Freed(INPUT)},
                      TalkLookup(),
                      Under(TALK_LOCK, INPUT),
                      {NodeMade(), Freed(INPUT)}}));
}

TEST_F(TalkInput, LargestSizeThatCanBeAskedFor_IsAskedFor) {
    platform.FailMalloc(2);
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(InputRaw("x", 0xFFFFFFF3), -1); }),
                            Error(INPUT, "vexo_utility_malloc failed size -1!!\n"));
              }),
              Joined({TalkLookup(), Under(TALK_LOCK, INPUT), {NodeMade(), FrameMade(0xFFFFFFFF), Freed(INPUT)}}));
}

// ---- the frame -----------------------------------------------------------------------------------------------------

TEST_F(TalkInput, OneFrame_IsQueuedUnderThePlayLock) {
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Input(InputData(Audio(320))), 0); }), ""); }),
              Joined({TalkLookup(), Under(TALK_LOCK, INPUT), {NodeMade(), FrameMade(356)}, Under(PLAY_LOCK, INPUT)}));
}

TEST_F(TalkInput, PlayFrame_IsBuiltByteByByte) {
    SetClock(0x01020304, 0x0A0B0C);
    Input(InputData(Audio(500)));
    threads.Step();
    ASSERT_THAT(m_played, SizeIs(1));
    const Bytes header = {0x00, 0x00, 0x01, 0xAB, 8,    0,    0,    0,    0,    0, 0, 0,  // magic, type, number
                          0x04, 0x03, 0x02, 0x01, 0x0C, 0x0B, 0x0A, 0x00,                 // seconds, microseconds
                          0xF4, 0x01, 0x00, 0x00, 2,    0x31, 0x41, 0x22, 0x21,           // length, codec, format
                          0,    0,    0,    0,    0,    0,    0};
    EXPECT_EQ(m_played[0], Followed(header, Audio(500)));
}

TEST_F(TalkInput, DataAtAnyAddress_IsRead) {
    Bytes data = InputData(Audio(320));
    data.insert(data.begin(), 0xEE);
    EXPECT_EQ(InputRaw(data.data() + 1, 344), 0);
    threads.Step();
    ASSERT_THAT(m_played, SizeIs(1));
    EXPECT_EQ(Part(m_played[0], 36, 320), Audio(320));
}

TEST_F(TalkInput, DataIsCopied_AndMayChangeAfterwards) {
    Bytes data = InputData(Audio(320));
    InputRaw(data.data(), 344);
    std::fill(data.begin(), data.end(), static_cast<unsigned char>(0xEE));
    threads.Step();
    EXPECT_EQ(Part(m_played.at(0), 36, 320), Audio(320));
}

TEST_F(TalkInput, EveryCodec_BecomesTheRecordersNumber) {
    for (int codec = 0; codec < 256; ++codec) {
        Input(InputData(Audio(320), static_cast<unsigned char>(codec)));
        threads.Step();
        const int expected = codec == 2 ? 1 : codec == 3 ? 4 : 2;
        EXPECT_EQ(m_played.back()[24], expected) << codec;
    }
}

TEST_F(TalkInput, SequenceNumber_IsSharedAndCountsWholeFrames) {
    LogInAll({OTHER_LOGIN});
    Start(0, OTHER_LOGIN);
    threads.Step();
    const auto inputBoth = [this](size_t length) {
        Input(InputData(Audio(length)));
        threads.Step(TalkThreads::FIRST);
        Input(InputData(Audio(length)), TALK + 1, OTHER_LOGIN);
        threads.Step(TalkThreads::FIRST + 1);
    };
    inputBoth(320);
    inputBoth(639);
    inputBoth(1280);
    inputBoth(320);
    std::vector<unsigned int> numbers;
    for (const Bytes& frame : m_played)
        numbers.push_back(WordAt(frame, 8));
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2, 3, 4, 8, 12, 13));
    Stop(TALK + 1, OTHER_LOGIN);
}

TEST_F(TalkInput, RefusedInput_DoesNotCount) {
    InputRaw(InputData(Audio(319)).data(), 343);
    platform.FailMalloc(2);
    RawConsole([] { Input(InputData(Audio(3200))); });
    Input(InputData(Audio(320)));
    threads.Step();
    EXPECT_EQ(WordAt(m_played.at(0), 8), 0u);
}

// ---- the queue -----------------------------------------------------------------------------------------------------

TEST_F(TalkInput, QueuedFrames_ArePlayedInOrderOneAPass) {
    for (unsigned int seed = 1; seed <= 3; ++seed)
        Input(InputData(Audio(320 * seed, seed)));
    for (unsigned int seed = 1; seed <= 3; ++seed) {
        threads.Step();
        ASSERT_THAT(m_played, SizeIs(seed));
        EXPECT_EQ(Part(m_played.back(), 36, 320 * seed), Audio(320 * seed, seed));
    }
    threads.Step();
    EXPECT_THAT(m_played, SizeIs(3));
}

TEST_F(TalkInput, QueueThatRanEmpty_FillsAgain) {
    for (unsigned int round = 1; round <= 3; ++round) {
        Input(InputData(Audio(320, round)));
        Input(InputData(Audio(320, round + 10)));
        threads.Step();
        threads.Step();
        ASSERT_THAT(m_played, SizeIs(2 * round));
        EXPECT_EQ(Part(m_played.back(), 36, 320), Audio(320, round + 10));
    }
}

TEST_F(TalkInput, Queue_HasNoLimit) {
    for (unsigned int frame = 0; frame < 2000; ++frame)
        EXPECT_EQ(Input(InputData(Audio(320))), 0);
    threads.Step();
    EXPECT_THAT(m_played, SizeIs(1));
    EXPECT_THAT(With(Freed("HostMgrClrTalkPlayNode"), CallsOf([] { Stop(); })), SizeIs(2 * 1999));
}

TEST_F(TalkInput, FrameThatTheRecorderDoesNotPlay_IsGone) {
    EXPECT_CALL(platform, vexo_model_play_talking_frame).Times(1).WillOnce(testing::Return(-1));
    Input(InputData(Audio(320)));
    threads.Step();
    threads.Step();
}

// A stop on another thread comes after the talk was found running: the frame is dropped, not kept for the next talk.
TEST_F(TalkInput, StopComesInBetween_DropsTheFrame) {
    BeforeLocking(platform.Lock(PLAY_LOCK), INPUT, [] { EXPECT_EQ(Stop(), 0); });
    const Lines calls = CallsOf([] { EXPECT_EQ(Input(InputData(Audio(320))), 0); });
    EXPECT_THAT(With(Freed(INPUT), calls), SizeIs(2));
    Start();
    threads.Step();
    EXPECT_THAT(m_played, IsEmpty());
}

// ---- the object alone ----------------------------------------------------------------------------------------------

class TalkInputObject : public HostMgrTest {};

TEST_F(TalkInputObject, LoginOfZeroOrLess_IsRefused) {
    vexo_hostmgr_talkback talk;
    platform.TakeCalls();
    Bytes data = InputData(Audio(320));
    char* const bytes = reinterpret_cast<char*>(data.data());
    EXPECT_EQ(Console([&] { EXPECT_EQ(talk.HostMgr_Dev_InputTalkData(0, 0, bytes, 344), -1); }),
              Error(INPUT, "hLogin 0x0 <= 0 || != 0x0\n"));
    EXPECT_EQ(Console([&] { EXPECT_EQ(talk.HostMgr_Dev_InputTalkData(-3, 0, bytes, 344), -1); }),
              Error(INPUT, "hLogin 0xfffffffd <= 0 || != 0x0\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}
