// As many channels as there can be in one play. What a single channel gives stands in playback_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "played.h"

using played::Collector;
using played::Command;
using played::Got;
using played::Span;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new played::Recorder(R"json({
    "name": "many channels test",
    "channels": 256,
    "recordings": {
        "live": "off",
        "history": {"hours": 1, "segments": 1, "seconds": 2, "fps": 1, "gop": 1, "width": 64,
                    "until": "2024-01-05 12:00:00"}
    }
})json"));

class ManyChannelsTest : public played::PlayTest {
protected:
    /** The channels that have ended, each once. */
    static bool AllEnded(const std::vector<Got>& all) {
        std::set<int> channels;
        for (const Got& got : all) {
            if (got.end) {
                channels.insert(got.channel);
            }
        }
        return channels.size() == HOSTMGR_MAX_CHANNELS;
    }
};

TEST_F(ManyChannelsTest, Download_All256_EachIsWholeAndEndsOnce) {
    const Span whole = {played::SINCE, played::UNTIL};
    Collector& collector = NewCollector();
    for (unsigned channel = 1; channel <= HOSTMGR_MAX_CHANNELS; ++channel) {
        ASSERT_NE(Start(channel, whole, &collector, HOSTMGR_PLAYMODE_DOWNLOAD), -1) << channel;
    }
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.Until(AllEnded));
    const std::vector<Got> all = collector.All();
    EXPECT_EQ(all.size(), HOSTMGR_MAX_CHANNELS * 3);
    EXPECT_EQ(collector.Pictures(1).size(), 2U);
    EXPECT_EQ(collector.Pictures(256).size(), 2U);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(ManyChannelsTest, Play_All256_StoppedMidway_LeavesNothing) {
    const Span whole = {played::SINCE, played::UNTIL};
    Collector& collector = NewCollector();
    for (unsigned channel = 1; channel <= HOSTMGR_MAX_CHANNELS; ++channel) {
        ASSERT_NE(Start(channel, whole, &collector), -1) << channel;
    }
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(HOSTMGR_MAX_CHANNELS));
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

}  // namespace
