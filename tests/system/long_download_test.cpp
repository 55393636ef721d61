// One hour in one piece: a download delivers every frame of it once, in order. Shorter ones stand in download_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "played.h"

using played::Collector;
using played::Command;
using played::Got;
using played::PictureTimes;
using played::Span;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new played::Recorder(R"json({
    "name": "long download test",
    "cameras": [{"main": {"width": 128, "height": 96}, "sub": {"width": 64, "height": 64}, "audio": {"hz": 0}}],
    "recordings": {
        "live": "off",
        "history": {"hours": 1, "segments": 1, "seconds": 3600, "fps": 1, "gop": 10, "width": 128,
                    "until": "2024-01-05 12:00:00"}
    }
})json"));

class LongDownloadTest : public played::PlayTest {};

TEST_F(LongDownloadTest, Download_OneHour_GivesEveryPictureOnceInOrder) {
    const Span hour = Recording(1, 0);
    ASSERT_EQ(hour.stop - hour.start, 3600);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, hour, &collector, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    size_t came = 0;
    while (came < 3601) {  // patient as long as it goes on at all
        ASSERT_TRUE(collector.Until([came](const std::vector<Got>& all) { return all.size() > came; })) << came;
        came = collector.All().size();
    }
    EXPECT_EQ(played::TimesOf(collector.Pictures()), PictureTimes(hour, 1000));
    EXPECT_TRUE(collector.All().back().end);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

}  // namespace
