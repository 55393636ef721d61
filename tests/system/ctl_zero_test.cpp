// hostmgrctl zero: which channels stand where in the picture, by the code that each of them shows; changes on the way;
// what is said of the layout. The library's own zero channel stands in zero_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "ctl_recordings.h"

using namespace ctl;  // the tests are all about it
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

const std::string ZERO = "zero --json --timeout 60 ";  // patient: only a test that fails waits so long

/** The channel of each cell of a square of so many, by its code; 0 where there is none. */
std::vector<unsigned> CellsOf(const AVFrame& picture, int side) {
    const int width = picture.width / side & ~1;
    const int height = picture.height / side & ~1;
    std::vector<unsigned> cells;
    for (int place = 0; place < side * side; ++place) {
        simulator::Stamp stamp;
        const uint8_t* cell = picture.data[0] + place / side * height * picture.linesize[0] + place % side * width;
        const bool read = simulator::ReadStamp(cell, picture.linesize[0], width, height, &stamp);
        cells.push_back(read ? stamp.channel : 0);
    }
    return cells;
}

/** What the first and the last picture of a file show, in squares of those sides. */
struct Ends {
    std::vector<unsigned> first;
    std::vector<unsigned> last;

    Ends(const std::filesystem::path& path, int first_side, int last_side) {
        AVFormatContext* format = nullptr;
        EXPECT_EQ(avformat_open_input(&format, path.c_str(), nullptr, nullptr), 0);
        EXPECT_GE(avformat_find_stream_info(format, nullptr), 0);
        AVCodecContext* codec = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264));
        avcodec_parameters_to_context(codec, format->streams[0]->codecpar);
        codec->thread_count = 1;
        avcodec_open2(codec, nullptr, nullptr);
        AVPacket* packet = av_packet_alloc();
        AVFrame* picture = av_frame_alloc();
        bool more = true;
        while (more) {
            more = av_read_frame(format, packet) == 0;
            avcodec_send_packet(codec, more ? packet : nullptr);
            av_packet_unref(packet);
            while (avcodec_receive_frame(codec, picture) == 0) {
                first = first.empty() ? CellsOf(*picture, first_side) : first;
                last = CellsOf(*picture, last_side);
            }
        }
        av_frame_free(&picture);
        av_packet_free(&packet);
        avcodec_free_context(&codec);
        avformat_close_input(&format);
    }
};

class CtlZeroTest : public CtlTest {
protected:
    CtlZeroTest() {
        UseScenario(R"({"channels": 70, "recordings": {"live": "off"}, "zero_channel": {"fps": 5, "gop": 5}})");
    }
};

TEST_F(CtlZeroTest, ThreeChannels_AreASquareOfFour) {
    const Outcome outcome = Run(ZERO + "-c 1,3,4 -n 6 -o zero.mkv");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(Ends(At("zero.mkv"), 2, 2).last, ElementsAre(1, 3, 4, 0));
    const json summary = json::parse(outcome.out);
    const json& layout = summary.at("layouts").at(0);
    EXPECT_EQ(layout.at("columns"), 2);
    EXPECT_EQ(layout.at("pictures"), 4);
    EXPECT_EQ(layout.at("channels"), json({1, 3, 4}));
    EXPECT_EQ(layout.at("places"), json({1, 3, 4, nullptr}));
    EXPECT_EQ(summary.at("video").at("frames"), 6);
    EXPECT_EQ(summary.at("video").at("width"), 1280);
    EXPECT_EQ(summary.at("audio"), nullptr);
    EXPECT_EQ(summary.at("file").at("video_packets"), MediaView(At("zero.mkv")).Only(AVMEDIA_TYPE_VIDEO).times.size());
}

TEST_F(CtlZeroTest, SixtyFiveChannels_AreTheFirstAlone) {
    const Outcome outcome = Run(ZERO + "-c 5,1-4,6-65 -n 6 -o zero.mkv");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(Ends(At("zero.mkv"), 1, 1).last, ElementsAre(5));
    EXPECT_EQ(json::parse(outcome.out).at("layouts").at(0).at("places"), json({5}));
    EXPECT_THAT(Run("zero --timeout 60 -c 5,1-4,6-65 -n 1").out,
                HasSubstr("  layout  one picture\n             5\n"
                          "          65 channels are more than 64, so the first is shown alone\n"));
}

TEST_F(CtlZeroTest, Then_OtherChannels_AreShownFromThenOn) {
    const Outcome outcome = Run(ZERO + "-c 7,8 --then 0.5:1-9 -n 25 -o zero.mkv");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Ends ends(At("zero.mkv"), 2, 3);
    EXPECT_THAT(ends.first, ElementsAre(7, 8, 0, 0));
    EXPECT_THAT(ends.last, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_EQ(json::parse(outcome.out).at("layouts").size(), 2U);
}

TEST_F(CtlZeroTest, Text_SaysWhatLayoutCameOut) {
    const Outcome outcome = Run("zero --timeout 60 -c 1-3 -n 6 -o zero.mp4");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("zero channel\n  layout  2 x 2 pictures\n"
                                        "             1   2\n             3   -\n  video   6 frames, "));
    EXPECT_THAT(outcome.out, HasSubstr("  file    zero.mp4, "));
    EXPECT_THAT(outcome.out, Not(HasSubstr("audio"))) << "the zero channel has no sound to speak of";
    ExpectNarrow(outcome.out);
}

TEST_F(CtlZeroTest, Recorder_ThatRefuses_IsToldWithItsWords) {
    UseScenario(R"({"faults": [{"operation": "vexo_model_zero_channel_set_enable"}]})");
    const Outcome outcome = Run("zero -n 1");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, HasSubstr("the recorder does not start the zero channel"));
    EXPECT_THAT(outcome.err, HasSubstr("vexo_model_zero_channel_set_enable failed!!"));
}

TEST_F(CtlZeroTest, NoPictures_IsNoDataAndLeavesAnEarlierFileAlone) {
    UseScenario(R"({"faults": [{"operation": "vexo_model_zero_channel_first_get_frame", "times": 1000000}]})");
    std::ofstream(At("zero.mkv")) << "precious";
    const Outcome outcome = Run("zero -t 0.5 -o zero.mkv");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("the zero channel gave no picture for 0.5 seconds: "));
    EXPECT_EQ(Contents(At("zero.mkv")), "precious");
}

TEST_F(CtlZeroTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments :
         {"zero -c 0", "zero -c ''", "zero -c 257", "zero --then 1-9", "zero --then x:1-9", "zero --then -1:1-9",
          "zero --then 1:", "zero -n 0", "zero -o picture.jpg", "zero 1"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
