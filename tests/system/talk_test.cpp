// Talk through the exported functions: a tone that is said comes out of the recorder's loudspeaker, the tone that its
// microphone hears comes by callback, at the right pitch and level. Blocks byte by byte stand in the unit tests.
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "agent.h"
#include "talker.h"

using agent::Ear;
using agent::Played;
using agent::Session;
using agent::TalkBlock;
using agent::Talker;
using live::Eventually;
using sound::Encoded;
using sound::ExpectTone;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "talk test",
    "cameras": [
        {"name": "Gate", "main": {"width": 320, "height": 240}},
        {"name": "Yard", "main": {"width": 320, "height": 240}, "audio": {"hz": 1250, "level": 0.7}}
    ],
    "talk": {"hz": 620, "level": 0.4}
})json"));

constexpr unsigned FULL = HOSTMGR_TALK_HEADER_SIZE + HOSTMGR_TALK_BLOCK_FRAMES * HOSTMGR_TALK_FRAME_SIZE;
constexpr size_t BLOCKS = 5;  // 1.6 seconds

class TalkTest : public agent::LibraryTest {
protected:
    TalkTest() {
        for (const auto& played_before : sound::PlayedFiles()) {
            std::filesystem::remove(played_before);
        }
    }

    int Login() const { return m_session->Login(); }

    void ExpectNothingLeft() {
        m_session.reset();
        ExpectAllGivenBack();
    }

private:
    std::optional<Session> m_session{std::in_place};
};

_tagVexoHostMgrTalkBlockHeader HeaderOf(const Ear::Block& block) {
    _tagVexoHostMgrTalkBlockHeader header;
    memcpy(&header, block.bytes.data(), sizeof header);
    return header;
}

std::vector<double> SamplesOf(const std::vector<Ear::Block>& blocks) {
    std::vector<double> samples;
    for (const Ear::Block& block : blocks) {
        agent::AddSamples(&block.bytes[HOSTMGR_TALK_HEADER_SIZE], &block.bytes[block.length], &samples);
    }
    return samples;
}

// ---- from the recorder ---------------------------------------------------------------------------------------------

struct Source {
    const char* name;
    int channel;
    double hz;
    double level;
};

class CapturedTest : public TalkTest, public testing::WithParamInterface<Source> {};

TEST_P(CapturedTest, Tone_ComesInFullBlocksAtItsPitchAndLevel) {
    const Source& source = GetParam();
    Ear ear;
    Talker talker(Login(), source.channel);
    const int talk = talker.Handle();
    ASSERT_GT(talk, 0);
    ASSERT_EQ(talker.Listen(Ear::Hear, &ear), 0);
    const std::vector<Ear::Block> blocks = ear.Blocks(BLOCKS);
    ASSERT_EQ(talker.Stop(), 0);
    ASSERT_GE(blocks.size(), BLOCKS);
    for (const Ear::Block& block : blocks) {
        EXPECT_EQ(block.login, Login());
        EXPECT_EQ(block.talk, talk);
        ASSERT_EQ(block.length, FULL);
        const _tagVexoHostMgrTalkBlockHeader header = HeaderOf(block);
        EXPECT_EQ(header.byCodec, 1);
        EXPECT_EQ(header.bySampleBits, 16);
        EXPECT_EQ(header.byAudioChannels, 1);
        EXPECT_EQ(header.byFramesPerSecond, 25);
        EXPECT_EQ(header.dwSampleRate, 8000U);
        EXPECT_EQ(header.dwBits, 16U);
        EXPECT_EQ(header.dwUsedLen, FULL);
        EXPECT_EQ(header.dwFrameTime, 40U);
    }
    ExpectTone(SamplesOf(blocks), source.hz, source.level);
}

INSTANTIATE_TEST_SUITE_P(Sources, CapturedTest,
                         testing::Values(Source{"Recorder", 0, 620, 0.4}, Source{"Camera", 2, 1250, 0.7}),
                         [](const auto& source) { return source.param.name; });

TEST_F(TalkTest, Captured_NoBlockComesBeforeItsSoundIsOver) {
    const auto begun = std::chrono::steady_clock::now();
    Ear ear;
    Talker talker(Login());
    ASSERT_EQ(talker.Listen(Ear::Hear, &ear), 0);
    for (size_t count = 1; count <= 3; ++count) {
        ASSERT_GE(ear.Blocks(count).size(), count);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begun;
        EXPECT_LE(static_cast<double>(ear.Count()) * 0.32, elapsed.count());
    }
}

TEST_F(TalkTest, Captured_CallbackTakenAway_HearsNoMore_AndTheNextOneDoes) {
    Ear first;
    Ear second;
    Talker talker(Login());
    ASSERT_EQ(talker.Listen(Ear::Hear, &first), 0);
    ASSERT_FALSE(first.Blocks(1).empty());
    ASSERT_EQ(talker.Listen(Ear::Hear, &second), 0);
    ASSERT_FALSE(second.Blocks(1).empty());
    const size_t heard = first.Count();
    ASSERT_GE(second.Blocks(3).size(), 3U);
    EXPECT_EQ(first.Count(), heard);
    ASSERT_EQ(talker.Stop(), 0);
    const size_t at_end = second.Count();
    std::this_thread::sleep_for(std::chrono::milliseconds(700));  // two blocks' time
    EXPECT_EQ(second.Count(), at_end) << "nobody is called once a stop has returned";
}

// ---- to the recorder -----------------------------------------------------------------------------------------------

struct Law {
    const char* name;
    HostMgrTalkCodec codec;
    AVCodecID encoder;
    double hz;
    double level;
};

class PlayedTest : public TalkTest, public testing::WithParamInterface<Law> {};

TEST_P(PlayedTest, ToneSaidAtRealPace_IsPlayedAtItsPitchAndLevel) {
    const Law& law = GetParam();
    Talker talker(Login(), 1);
    ASSERT_GT(talker.Handle(), 0);
    agent::Pace pace;
    size_t samples = 0;
    for (const auto& audio : Encoded(law.encoder, sound::Tone(law.hz, law.level, 12000))) {
        pace.Wait();
        ASSERT_EQ(talker.Say(TalkBlock(law.codec, audio)), 0);
        samples += law.codec == HOSTMGR_TALK_ADPCM ? 2 * (audio.size() - 4) + 1 : audio.size();
    }
    const std::vector<double> played = Played(samples);
    EXPECT_EQ(talker.Stop(), 0);
    EXPECT_EQ(played.size(), samples);
    ExpectTone(played, law.hz, law.level);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Laws, PlayedTest,
                         testing::Values(Law{"ALaw", HOSTMGR_TALK_G711A, AV_CODEC_ID_PCM_ALAW, 700, 0.5},
                                         Law{"MuLaw", HOSTMGR_TALK_G711U, AV_CODEC_ID_PCM_MULAW, 900, 0.25},
                                         Law{"Adpcm", HOSTMGR_TALK_ADPCM, AV_CODEC_ID_ADPCM_IMA_WAV, 500, 0.4}),
                         [](const auto& law) { return law.param.name; });

TEST_F(TalkTest, Played_SaidAllAtOnce_GoesOutWholeAndOneBlockInThirtyMilliseconds) {
    constexpr size_t COUNT = 30;
    Talker talker(Login());
    const auto begun = std::chrono::steady_clock::now();
    for (const auto& audio : Encoded(AV_CODEC_ID_PCM_ALAW, sound::Tone(700, 0.5, COUNT * 320))) {
        ASSERT_EQ(talker.Say(TalkBlock(HOSTMGR_TALK_G711A, audio)), 0);
    }
    const std::vector<double> played = Played(COUNT * 320);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begun;
    EXPECT_EQ(played.size(), COUNT * 320);
    EXPECT_GE(elapsed.count(), (COUNT - 1) * 0.03);
    ExpectTone(played, 700, 0.5);
}

TEST_F(TalkTest, Played_LongBlocks_ArePlayedWhole) {
    const std::vector<double> tone = sound::Tone(700, 0.5, 16000);
    Talker talker(Login());
    std::vector<unsigned char> audio;
    for (const auto& frame : Encoded(AV_CODEC_ID_PCM_ALAW, tone)) {
        audio.insert(audio.end(), frame.begin(), frame.end());
        if (audio.size() == 3200) {
            ASSERT_EQ(talker.Say(TalkBlock(HOSTMGR_TALK_G711A, audio)), 0);
            audio.clear();
        }
    }
    const std::vector<double> played = Played(tone.size());
    EXPECT_EQ(played.size(), tone.size());
    ExpectTone(played, 700, 0.5);
}

TEST_F(TalkTest, Played_LessThanAFrame_IsRefusedAndNothingComesOut) {
    Talker talker(Login());
    for (const size_t bytes : {0U, 1U, 319U}) {
        EXPECT_EQ(talker.Say(TalkBlock(HOSTMGR_TALK_G711A, std::vector<unsigned char>(bytes))), -1);
    }
    for (size_t bytes = 0; bytes < HOSTMGR_TALK_HEADER_SIZE; ++bytes) {
        EXPECT_EQ(talker.Say(std::vector<unsigned char>(bytes, 1)), -1);
    }
    ASSERT_EQ(talker.Say(TalkBlock(HOSTMGR_TALK_G711A, std::vector<unsigned char>(320, 0xD5))), 0);
    EXPECT_EQ(Played(320).size(), 320U);
}

// ---- both ways -----------------------------------------------------------------------------------------------------

/** Says what it hears, as it is. */
void Echo(int login, int talk, unsigned char* bytes, unsigned length, void* failures) {
    const int said = vexo_soft::vexo_HostMgr_Dev_InputTalkData(login, talk, reinterpret_cast<char*>(bytes), length);
    *static_cast<std::atomic<int>*>(failures) += said == 0 ? 0 : 1;
}

TEST_F(TalkTest, BothWays_BlocksThatAreSaidAsTheyCame_AreTheSameTone) {
    std::atomic<int> failures{0};
    Talker talker(Login());
    ASSERT_EQ(talker.Listen(Echo, &failures), 0);
    const std::vector<double> played = Played(BLOCKS * 2560);
    EXPECT_EQ(talker.Stop(), 0);
    EXPECT_EQ(failures, 0);
    ExpectTone(played, 620, 0.4);
    ExpectNothingLeft();
}

TEST_F(TalkTest, BothWays_TwoLoginsAtOnce_HearAndSayTheirOwn) {
    const Session other;
    Ear device;
    Ear camera;
    Talker first(Login());
    Talker second(other.Login(), 2);
    ASSERT_EQ(first.Listen(Ear::Hear, &device), 0);
    ASSERT_EQ(second.Listen(Ear::Hear, &camera), 0);
    ASSERT_NE(first.Handle(), second.Handle());
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StopTalk(Login(), 0), -1);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(Login(), second.Handle(), nullptr, nullptr), -1)
        << "another login's talk";
    for (const auto& audio : Encoded(AV_CODEC_ID_PCM_ALAW, sound::Tone(700, 0.5, 9600))) {
        ASSERT_EQ(first.Say(TalkBlock(HOSTMGR_TALK_G711A, audio)), 0);
    }
    ExpectTone(SamplesOf(device.Blocks(BLOCKS)), 620, 0.4);
    ExpectTone(SamplesOf(camera.Blocks(BLOCKS)), 1250, 0.7);
    ExpectTone(Played(9600), 700, 0.5);
    EXPECT_EQ(sound::PlayedFiles().size(), 1U) << "the other one has said nothing";
}

// ---- start and stop ------------------------------------------------------------------------------------------------

TEST_F(TalkTest, Stop_DropsWhatIsQueued_AndTheNextTalkPlaysItsOwnAlone) {
    Talker first(Login());
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(first.Say(TalkBlock(HOSTMGR_TALK_G711A, std::vector<unsigned char>(320, 0xD5))), 0);
    }
    EXPECT_FALSE(Played(320).empty());
    ASSERT_EQ(first.Stop(), 0);
    const size_t played = sound::WaveSamples(sound::PlayedFiles().back()).size();
    EXPECT_LT(played, 100U * 320);
    EXPECT_EQ(first.Say(TalkBlock(HOSTMGR_TALK_G711A, std::vector<unsigned char>(320))), -1);
    Talker second(Login());
    ASSERT_GT(second.Handle(), 0);
    for (const auto& audio : Encoded(AV_CODEC_ID_PCM_ALAW, sound::Tone(700, 0.5, 9600))) {
        ASSERT_EQ(second.Say(TalkBlock(HOSTMGR_TALK_G711A, audio)), 0);
    }
    ASSERT_TRUE(Eventually([] { return sound::PlayedFiles().size() == 2; }));
    ExpectTone(Played(9600), 700, 0.5);
}

TEST_F(TalkTest, Start_WhileOneRuns_OrWithWhatIsNotThere_IsRefused) {
    Talker talker(Login());
    ASSERT_GT(talker.Handle(), 0);
    EXPECT_EQ(Talker(Login(), 1).Handle(), -1);
    ASSERT_EQ(talker.Stop(), 0);
    EXPECT_EQ(Talker(Login(), -1).Handle(), -1);
    EXPECT_EQ(Talker(Login(), 3).Handle(), -1);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartTalk(Login(), nullptr), -1);
    EXPECT_GT(Talker(Login(), 2).Handle(), 0);
    ExpectNothingLeft();
}

/** Stops its talk as soon as it is called, and counts its calls. */
void StopAtOnce(int login, int talk, unsigned char*, unsigned, void* calls) {
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StopTalk(login, talk), 0);
    ++*static_cast<std::atomic<int>*>(calls);
}

TEST_F(TalkTest, Stop_FromTheCallback_IsItsLast_AndAnotherTalkCanBegin) {
    for (int turn = 1; turn <= 3; ++turn) {
        std::atomic<int> calls{0};
        _tagVexoHostMgrTalkParam none = {};
        const int talk = vexo_soft::vexo_HostMgr_Dev_StartTalk(Login(), &none);
        ASSERT_GT(talk, 0) << turn;
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(Login(), talk, StopAtOnce, &calls), 0);
        ASSERT_TRUE(Eventually([&] { return calls == 1; }));
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StopTalk(Login(), talk), -1) << "it is not run";
    }
    Ear ear;
    Talker talker(Login());
    ASSERT_EQ(talker.Listen(Ear::Hear, &ear), 0);
    ExpectTone(SamplesOf(ear.Blocks(BLOCKS)), 620, 0.4);
}

TEST_F(TalkTest, Logout_WhileTheTalkRuns_NobodyIsCalledOnceItHasReturned) {
    Ear ear;
    {
        const Session session;
        _tagVexoHostMgrTalkParam none = {};
        const int talk = vexo_soft::vexo_HostMgr_Dev_StartTalk(session.Login(), &none);
        ASSERT_GT(talk, 0);
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(session.Login(), talk, Ear::Hear, &ear), 0);
        ASSERT_FALSE(ear.Blocks(1).empty());
    }
    const size_t heard = ear.Count();
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_EQ(ear.Count(), heard);
    EXPECT_EQ(simulator::control::Complaints(), std::vector<std::string>());
}

TEST_F(TalkTest, Stop_OfAnotherHandle_EndsThisSideAlone_UntilTheLogout) {
    Ear ear;
    {
        const Session session;
        _tagVexoHostMgrTalkParam none = {};
        const int talk = vexo_soft::vexo_HostMgr_Dev_StartTalk(session.Login(), &none);
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(session.Login(), talk, Ear::Hear, &ear), 0);
        ASSERT_EQ(vexo_soft::vexo_HostMgr_Dev_StopTalk(session.Login(), talk + 1), 0);
        const size_t heard = ear.Count();
        std::vector<unsigned char> block = TalkBlock(HOSTMGR_TALK_G711A, std::vector<unsigned char>(320));
        EXPECT_EQ(
            vexo_soft::vexo_HostMgr_Dev_InputTalkData(session.Login(), talk, reinterpret_cast<char*>(block.data()),
                                                      static_cast<unsigned>(block.size())),
            0)
            << "dropped";
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartTalk(session.Login(), &none), -1);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StopTalk(session.Login(), talk), -1);
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        EXPECT_EQ(ear.Count(), heard);
        EXPECT_TRUE(sound::PlayedFiles().empty());
    }
    EXPECT_GT(Talker(Login()).Handle(), 0);
    EXPECT_EQ(simulator::control::Complaints(), std::vector<std::string>());
}

TEST_F(TalkTest, Reboot_EndsTheTalk_WhichIsStoppedWithoutComplaint) {
    Ear ear;
    Talker talker(Login());
    ASSERT_EQ(talker.Listen(Ear::Hear, &ear), 0);
    ASSERT_FALSE(ear.Blocks(1).empty());
    ASSERT_EQ(
        vexo_soft::vexo_HostMgr_Dev_Control(Login(), HOSTMGR_CONTROL_REBOOT, 0, 0, nullptr, 0, nullptr, 0, nullptr, 0),
        0);
    EXPECT_EQ(talker.Say(TalkBlock(HOSTMGR_TALK_G711A, std::vector<unsigned char>(320))), 0) << "nobody plays it";
    EXPECT_EQ(talker.Stop(), 0);
    simulator::control::SkipTime(60);
    const Session again;
    Talker next(again.Login());
    ASSERT_GT(next.Handle(), 0);
    Ear anew;
    ASSERT_EQ(next.Listen(Ear::Hear, &anew), 0);
    ExpectTone(SamplesOf(anew.Blocks(BLOCKS)), 620, 0.4);
    EXPECT_EQ(simulator::control::Complaints(), std::vector<std::string>());
}

}  // namespace
