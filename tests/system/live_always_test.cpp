// The simulated recorder told to record always: it begins with the first login and needs no watcher.
#include <gtest/gtest.h>

#include <ctime>

#include "recorded.h"

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new recorded::Recorder(R"json({
    "name": "always test",
    "cameras": [{"name": "Yard", "main": {"width": 128, "height": 96, "fps": 10, "gop": 5, "kbps": 100},
                 "sub": {"width": 128, "height": 96, "fps": 10, "gop": 5, "kbps": 50}}],
    "recordings": {"live": "always", "history": {"segments": 0}}
})json"));

TEST(LiveAlways, FirstLogin_BeginsToRecordAllStreams) {
    EXPECT_FALSE(vexo_model_ch_is_recording(0));
    unsigned login = 0;
    const vexo_ip_struct ip = {0, "127.0.0.1"};
    ASSERT_EQ(vexo_model_login("admin", "admin12345", &ip, &login, VEXO_TRUE, VEXO_FALSE), 0);
    unsigned kinds = 0;
    EXPECT_TRUE(live::Eventually([&] {
        const recorded::List list(0, time(nullptr) - 60, time(nullptr) + 1);
        for (const unsigned stream : {recorded::MAIN, recorded::SUB}) {
            recorded::Player player(list);
            player->set_stream_type(stream);
            for (const live::Frame& frame : player.Rest()) {
                kinds |= frame.header.frame_type < 32 ? 1U << frame.header.frame_type : 0;
            }
        }
        constexpr unsigned ALL = 1U << VEXO_FRAME_MAIN_KEY | 1U << VEXO_FRAME_MAIN_DELTA | 1U << VEXO_FRAME_SUB_KEY |
                                 1U << VEXO_FRAME_SUB_DELTA | 1U << VEXO_FRAME_AUDIO;
        return kinds == ALL;
    }));
    EXPECT_TRUE(vexo_model_ch_is_recording(0));
    EXPECT_EQ(vexo_model_logout(login, VEXO_FALSE), 0);
}

}  // namespace
