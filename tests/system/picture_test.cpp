// What the simulated recorder's pictures are made of, without a recorder: the machine-readable stamp, the generated
// scene, the texts over it. Streams and lists stand in camera_test.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "model/av.h"
#include "model/overlay.h"
#include "model/picture_stamp.h"
#include "model/scene.h"

namespace {

using simulator::Av;
using simulator::MakeSceneStyle;
using simulator::NewPicture;
using simulator::Overlay;
using simulator::PaintStamp;
using simulator::ReadStamp;
using simulator::Scene;
using simulator::Stamp;
using simulator::View;

constexpr int64_t NOON = 1720180800LL * 1000000;  // microseconds since 1970
constexpr Stamp SOME_STAMP = {1720180800123, 7};

/** A picture of one grey, so that nothing in it looks like a stamp. */
Av<AVFrame> GreyPicture(int width, int height) {
    Av<AVFrame> picture = NewPicture(width, height);
    for (int plane = 0; plane < 3; ++plane) {
        std::fill_n(picture->data[plane], picture->linesize[plane] * (plane == 0 ? height : height / 2), 120);
    }
    return picture;
}

void Paint(const Stamp& stamp, AVFrame* picture) {
    PaintStamp(stamp, picture->data, picture->linesize, picture->width, picture->height);
}

bool Read(const AVFrame& picture, Stamp* stamp) {
    return ReadStamp(picture.data[0], picture.linesize[0], picture.width, picture.height, stamp);
}

/** The visible part of the luma plane. */
std::vector<uint8_t> Luma(const AVFrame& picture) {
    std::vector<uint8_t> luma;
    for (int y = 0; y < picture.height; ++y) {
        const uint8_t* row = picture.data[0] + y * picture.linesize[0];
        luma.insert(luma.end(), row, row + picture.width);
    }
    return luma;
}

size_t Differences(const AVFrame& left, const AVFrame& right) {
    const std::vector<uint8_t> first = Luma(left);
    const std::vector<uint8_t> second = Luma(right);
    size_t count = 0;
    for (size_t i = 0; i < first.size(); ++i) {
        count += std::abs(first[i] - second[i]) > 8 ? 1 : 0;
    }
    return count;
}

class StampAtSize : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(StampAtSize, PaintedStamp_AsIsAndAtHalfSize_IsRead) {
    const auto [width, height] = GetParam();
    Av<AVFrame> picture = GreyPicture(width, height);
    Paint(SOME_STAMP, picture.get());
    Av<AVFrame> half = GreyPicture(width / 2, height / 2);
    Av<SwsContext> scaler;
    ASSERT_TRUE(simulator::Scale(*picture, *half, &scaler));
    for (const AVFrame* shown : {picture.get(), half.get()}) {
        Stamp stamp;
        ASSERT_TRUE(Read(*shown, &stamp)) << shown->width << "x" << shown->height;
        EXPECT_EQ(stamp.milliseconds, SOME_STAMP.milliseconds);
        EXPECT_EQ(stamp.channel, SOME_STAMP.channel);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, StampAtSize,
                         testing::Values(std::pair(1920, 1080), std::pair(1280, 720), std::pair(720, 576),
                                         std::pair(704, 480), std::pair(640, 360), std::pair(352, 288),
                                         std::pair(320, 240)));

TEST(PictureStamp, Read_NoStampPainted_IsRefusedAndWritesNothing) {
    Stamp stamp = SOME_STAMP;
    EXPECT_FALSE(Read(*GreyPicture(352, 288), &stamp));
    EXPECT_EQ(stamp.milliseconds, SOME_STAMP.milliseconds);
}

TEST(PictureStamp, Read_AllBlocksBlackOrWhite_IsRefused) {
    for (const int value : {16, 235}) {
        Av<AVFrame> picture = GreyPicture(352, 288);
        std::fill_n(picture->data[0], picture->linesize[0] * picture->height, value);
        Stamp stamp;
        EXPECT_FALSE(Read(*picture, &stamp)) << value;
    }
}

TEST(PictureStamp, Read_OneBlockTurned_IsRefused) {
    for (int block = 0; block < simulator::STAMP_COLUMNS * simulator::STAMP_ROWS; ++block) {
        Av<AVFrame> picture = GreyPicture(640, 360);
        Paint(SOME_STAMP, picture.get());
        const int left = (block % simulator::STAMP_COLUMNS + 4) * 16;
        const int top = 342 + block / simulator::STAMP_COLUMNS * 9;
        uint8_t* first = picture->data[0] + top * picture->linesize[0] + left;
        const int turned = *first > 128 ? 16 : 235;
        for (int y = 0; y < 9; ++y) {
            std::fill_n(first + y * picture->linesize[0], 16, turned);
        }
        Stamp stamp;
        EXPECT_FALSE(Read(*picture, &stamp)) << "block " << block;
    }
}

TEST(PictureStamp, Stamp_LargestValues_ComeBackWhole) {
    Av<AVFrame> picture = GreyPicture(640, 360);
    Paint({0xFFFFFFFFFFFF, 255}, picture.get());
    Stamp stamp;
    ASSERT_TRUE(Read(*picture, &stamp));
    EXPECT_EQ(stamp.milliseconds, 0xFFFFFFFFFFFFU);
    EXPECT_EQ(stamp.channel, 255U);
}

class SceneTest : public testing::Test {
protected:
    /** A picture of a scene that is made anew each time. */
    static Av<AVFrame> Picture(unsigned seed, unsigned channel, int64_t moment, const View& view = {}) {
        Av<AVFrame> picture = NewPicture(640, 360);
        Scene scene(MakeSceneStyle(seed, channel), 640, 360);
        EXPECT_TRUE(scene.Draw(moment, view, *picture));
        return picture;
    }

    static constexpr size_t PIXELS = 640 * 360;
};

TEST_F(SceneTest, SameSeedChannelAndMoment_SamePicture) {
    EXPECT_EQ(Luma(*Picture(1, 1, NOON)), Luma(*Picture(1, 1, NOON)));
}

TEST_F(SceneTest, OtherChannelOrSeed_OtherPicture) {
    const Av<AVFrame> first = Picture(1, 1, NOON);
    for (unsigned channel = 2; channel <= 5; ++channel) {
        EXPECT_GT(Differences(*first, *Picture(1, channel, NOON)), PIXELS / 5) << "channel " << channel;
    }
    EXPECT_GT(Differences(*first, *Picture(2, 1, NOON)), PIXELS / 5);
}

TEST_F(SceneTest, OneSecondLater_SomethingHasMovedAndMostHasNot) {
    const size_t moved = Differences(*Picture(1, 1, NOON), *Picture(1, 1, NOON + 1000000));
    EXPECT_GT(moved, PIXELS / 1000);
    EXPECT_LT(moved, PIXELS / 4);
}

TEST_F(SceneTest, CameraTurnedOrZoomed_PictureChanges) {
    const Av<AVFrame> centre = Picture(1, 1, NOON);
    for (const View& view : {View{0.2, 0.5, 1}, View{0.5, 0.9, 1}, View{0.5, 0.5, 2}}) {
        EXPECT_GT(Differences(*centre, *Picture(1, 1, NOON, view)), PIXELS / 5)
            << view.pan << " " << view.tilt << " " << view.zoom;
    }
}

TEST_F(SceneTest, ViewOutOfRange_ShowsTheNearestThereIs) {
    EXPECT_EQ(Luma(*Picture(1, 1, NOON, {-3, 7, 0})), Luma(*Picture(1, 1, NOON, {0, 1, 1})));
}

/** Whether anything stands in a part of a grey picture; bounds in pixels. */
bool WrittenIn(const AVFrame& picture, int left, int top, int right, int bottom) {
    for (int y = top; y < bottom; ++y) {
        const uint8_t* row = picture.data[0] + y * picture.linesize[0];
        if (std::any_of(row + left, row + right, [](uint8_t luma) { return luma > 200; })) {
            return true;
        }
    }
    return false;
}

TEST(Overlay, Texts_StandInTheirCorners_AndClearOfTheStamp) {
    Av<AVFrame> picture = GreyPicture(352, 288);
    Overlay overlay(352, 288);
    ASSERT_TRUE(overlay.Works());
    ASSERT_TRUE(overlay.Write("Front gate", NOON, "", picture.get()));
    EXPECT_TRUE(WrittenIn(*picture, 0, 0, 120, 40));       // name
    EXPECT_TRUE(WrittenIn(*picture, 0, 250, 170, 273));    // clock
    EXPECT_TRUE(WrittenIn(*picture, 200, 250, 352, 273));  // mark
    EXPECT_FALSE(WrittenIn(*picture, 0, 40, 352, 245));    // no notice
    EXPECT_FALSE(WrittenIn(*picture, 0, 273, 352, 288));   // the stamp's place
}

TEST(Overlay, Notice_StandsInTheMiddle) {
    Av<AVFrame> picture = GreyPicture(352, 288);
    Overlay overlay(352, 288);
    ASSERT_TRUE(overlay.Write("", NOON, "NO VIDEO SIGNAL", picture.get()));
    EXPECT_TRUE(WrittenIn(*picture, 100, 120, 250, 170));
    EXPECT_FALSE(WrittenIn(*picture, 0, 0, 120, 40));
}

TEST(Overlay, NextTenth_ChangesTheClockAlone) {
    Av<AVFrame> first = GreyPicture(352, 288);
    Av<AVFrame> second = GreyPicture(352, 288);
    Overlay overlay(352, 288);
    ASSERT_TRUE(overlay.Write("Front gate", NOON + 100000, "", first.get()));
    ASSERT_TRUE(overlay.Write("Front gate", NOON + 200000, "", second.get()));
    const size_t changed = Differences(*first, *second);
    EXPECT_GT(changed, 4U);
    EXPECT_LT(changed, 200U);
}

TEST(Overlay, FontMissing_PictureStaysAsItIsAndOneLineSaysSo) {
    Av<AVFrame> picture = GreyPicture(352, 288);
    testing::internal::CaptureStderr();
    Overlay first(352, 288, "/no/such/font.ttf");
    Overlay second(352, 288, "/no/such/font.ttf");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[simulated recorder] no text in the pictures, for the font cannot be used: /no/such/font.ttf\n");
    EXPECT_FALSE(second.Works());
    EXPECT_TRUE(second.Write("Front gate", NOON, "", picture.get()));
    EXPECT_EQ(Differences(*picture, *GreyPicture(352, 288)), 0U);
}

}  // namespace
