// Talk through the exported functions with a recorder whose frames are not all alike: seven usual ones, then one that
// does not fit behind them, then one that claims more than is fetched.
#include <gtest/gtest.h>

#include "agent.h"
#include "talker.h"

using agent::Ear;
using agent::Session;
using agent::Talker;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "talk frames test",
    "channels": 1,
    "talk": {"hz": 620, "level": 0.4, "frames": [320, 320, 320, 320, 320, 320, 320, 3200]}
})json"));

constexpr unsigned SEVEN = HOSTMGR_TALK_HEADER_SIZE + 7 * HOSTMGR_TALK_FRAME_SIZE;
constexpr unsigned LONG_FRAME = 3200;

using TalkFramesTest = agent::LibraryTest;

TEST_F(TalkFramesTest, FrameThatDoesNotFit_SendsWhatIsGathered_ThenItselfFromTheStartOfTheBlock) {
    Ear ear;
    {
        const Session session;
        Talker talker(session.Login());
        ASSERT_GT(talker.Handle(), 0);
        ASSERT_EQ(talker.Listen(Ear::Hear, &ear), 0);
        ASSERT_GE(ear.Blocks(6).size(), 6U);  // two seconds
        EXPECT_EQ(talker.Stop(), 0);
    }
    std::vector<double> samples;
    const std::vector<Ear::Block> blocks = ear.Blocks(6);
    for (size_t i = 0; i < blocks.size(); ++i) {
        const std::vector<unsigned char>& bytes = blocks[i].bytes;
        if (i % 2 == 0) {
            ASSERT_EQ(blocks[i].length, SEVEN) << i;
            uint32_t used = 0;
            memcpy(&used, &bytes[offsetof(_tagVexoHostMgrTalkBlockHeader, dwUsedLen)], sizeof used);
            EXPECT_EQ(used, SEVEN);
            agent::AddSamples(&bytes[HOSTMGR_TALK_HEADER_SIZE], &bytes[SEVEN], &samples);
        } else {
            ASSERT_EQ(blocks[i].length, HOSTMGR_TALK_FRAME_SIZE) << i;
            agent::AddSamples(bytes.data(), &bytes[LONG_FRAME], &samples);
        }
    }
    sound::ExpectTone(samples, 620, 0.4);
    ExpectAllGivenBack();
}

}  // namespace
