// Talk through the exported functions with a recorder whose frames claim more than is fetched of them, up to what is
// taken and one byte beyond.
#include <gtest/gtest.h>

#include "agent.h"
#include "talker.h"

using agent::Ear;
using agent::Session;
using agent::Talker;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "talk claim test",
    "channels": 1,
    "talk": {"hz": 620, "level": 0.4, "frames": [5120, 5121]}
})json"));

constexpr unsigned FETCHED = 4096 - HOSTMGR_FRAME_HEADER_SIZE;

using TalkClaimTest = agent::LibraryTest;

TEST_F(TalkClaimTest, FramesOfFiveKilobytes_TheOneOfAByteMoreIsLeftOut_OfTheOtherWhatWasNotFetchedIsZero) {
    Ear ear;
    const Session session;
    Talker talker(session.Login());
    testing::internal::CaptureStdout();
    ASSERT_EQ(talker.Listen(Ear::Hear, &ear), 0);
    const std::vector<Ear::Block> blocks = ear.Blocks(4);
    EXPECT_EQ(talker.Stop(), 0);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("Get a big frame len 5121, Why!!!"), std::string::npos);
    EXPECT_EQ(printed.find("Get a big frame len 5120"), std::string::npos);
    ASSERT_GE(blocks.size(), 4U);
    for (size_t i = 0; i < blocks.size(); ++i) {
        const std::vector<unsigned char>& bytes = blocks[i].bytes;
        if (i % 2 == 0) {
            EXPECT_EQ(blocks[i].length, HOSTMGR_TALK_HEADER_SIZE) << "nothing was gathered before it";
            continue;
        }
        EXPECT_EQ(blocks[i].length, HOSTMGR_TALK_FRAME_SIZE);
        std::vector<double> samples;
        agent::AddSamples(bytes.data(), &bytes[FETCHED], &samples);
        EXPECT_NEAR(sound::AmplitudeAt(620, samples), 0.4, 0.01) << "the frame of 5120 bytes, not the other";
        EXPECT_EQ(std::count(bytes.begin() + FETCHED, bytes.end(), 0), HOSTMGR_TALK_BLOCK_MAX - FETCHED);
    }
}

}  // namespace
