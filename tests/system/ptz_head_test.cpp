// A camera head by itself, on a clock of the test's own: every PTZ code, the limits, presets, tours and tracks. What a
// move does to the picture stands in ptz_scene_test.cpp.
#include <gtest/gtest.h>

#include "model/ptz_codes.h"

using simulator::CameraHead;
using simulator::HeadMemory;
using simulator::HeadPosition;

namespace {

constexpr unsigned HALT = 0x13149527;

class HeadTest : public testing::Test {
protected:
    bool Send(double now, unsigned code, unsigned kind = 0, unsigned a = 0, unsigned b = 0, unsigned c = 0,
              unsigned d = 0) {
        return simulator::Obey(m_head, now, code, {kind, {a, b, c, d}});
    }
    HeadPosition At(double now) const { return m_head.PositionAt(now); }
    /** Moves it there at once, and stores that as a preset. */
    void Preset(double now, unsigned number, double pan, double tilt) {
        m_head.Goto(now, {pan, tilt, 1, 0.5, 0.5});
        ASSERT_TRUE(Send(now + 100, 0x700, 1, number));
    }

    CameraHead m_head{HeadMemory{}};
};

void ExpectAt(const HeadPosition& position, double pan, double tilt) {
    EXPECT_NEAR(position.pan, pan, 1e-9);
    EXPECT_NEAR(position.tilt, tilt, 1e-9);
}

struct Way {
    unsigned code;
    double pan, tilt;  ///< direction
};
class HeadDirection : public HeadTest, public testing::WithParamInterface<Way> {};

TEST_P(HeadDirection, Turns_UntilStopped) {
    const Way way = GetParam();
    ASSERT_TRUE(Send(10, way.code, 0, 7));
    ExpectAt(At(10), 0.5, 0.5);
    ExpectAt(At(10.4), 0.5 + way.pan * 0.2, 0.5 + way.tilt * 0.2);
    ASSERT_TRUE(Send(10.4, HALT));
    ExpectAt(At(99), 0.5 + way.pan * 0.2, 0.5 + way.tilt * 0.2);
}

TEST_P(HeadDirection, Turns_ToTheLimitAndNoFarther) {
    const Way way = GetParam();
    ASSERT_TRUE(Send(10, way.code, 0, 7));
    ExpectAt(At(10.999999), 0.5 + way.pan * 0.4999995, 0.5 + way.tilt * 0.4999995);
    EXPECT_TRUE(m_head.Moves(10.9));
    ExpectAt(At(11.5), 0.5 + way.pan * 0.5, 0.5 + way.tilt * 0.5);
    EXPECT_FALSE(m_head.Moves(11.5));
}

INSTANTIATE_TEST_SUITE_P(Codes, HeadDirection,
                         testing::Values(Way{0x100, 0, -1}, Way{0x101, 0, 1}, Way{0x102, -1, 0}, Way{0x103, 1, 0},
                                         Way{0x104, -1, -1}, Way{0x105, 1, -1}, Way{0x106, -1, 1}, Way{0x107, 1, 1}));

TEST_F(HeadTest, Turn_OnePartAtItsLimit_TheOtherGoesOn) {
    m_head.Goto(0, {0.9, 0.5, 1, 0.5, 0.5});
    ASSERT_TRUE(Send(10, 0x107, 0, 7));
    ExpectAt(At(10.1), 0.95, 0.55);
    ExpectAt(At(10.6), 1, 0.8);
    ExpectAt(At(12), 1, 1);
}

TEST_F(HeadTest, Speed_IsByStepsFromOneToSeven) {
    ASSERT_TRUE(Send(0, 0x103, 0, 1));
    EXPECT_NEAR(At(1).pan, 0.5 + 0.5 / 7, 1e-9);
    for (const unsigned speed : {0U, 4U}) {
        m_head = CameraHead(HeadMemory{});
        ASSERT_TRUE(Send(0, 0x103, 0, speed));
        EXPECT_NEAR(At(0.5).pan, 0.5 + 0.25 * 4 / 7, 1e-9);
    }
    m_head = CameraHead(HeadMemory{});
    ASSERT_TRUE(Send(0, 0x103, 0, 0xFFFFFFFF));
    EXPECT_NEAR(At(0.5).pan, 0.75, 1e-9);
}

TEST_F(HeadTest, ZoomFocusIris_GoBySteps_ToTheirLimits) {
    ASSERT_TRUE(Send(0, 0x200, 0, 7));
    EXPECT_GT(At(100).zoom, 1.4);
    for (int i = 1; i < 20; ++i) {
        ASSERT_TRUE(Send(i * 100, 0x200, 0, 7));
    }
    EXPECT_EQ(At(2000).zoom, 16);
    for (int i = 20; i < 40; ++i) {
        ASSERT_TRUE(Send(i * 100, 0x201, 0, 7));
    }
    EXPECT_EQ(At(4000).zoom, 1);
    ASSERT_TRUE(Send(4000, 0x300, 0, 5));
    EXPECT_NEAR(At(4100).focus, 0.4, 1e-9);
    ASSERT_TRUE(Send(4100, 0x301, 0, 7));
    EXPECT_NEAR(At(4200).focus, 0.54, 1e-9);
    ASSERT_TRUE(Send(4200, 0x400, 0, 1));
    EXPECT_NEAR(At(4300).iris, 0.52, 1e-9);
    ASSERT_TRUE(Send(4300, 0x401, 0, 2));
    EXPECT_NEAR(At(4400).iris, 0.48, 1e-9);
}

TEST_F(HeadTest, Switches_WiperAndLight_AreRemembered) {
    ASSERT_TRUE(Send(0, 0x500, 0, 1));
    ASSERT_TRUE(Send(0, 0x600, 0, 1));
    EXPECT_TRUE(m_head.MemoryAt(0).wiper);
    EXPECT_TRUE(m_head.MemoryAt(0).light);
    ASSERT_TRUE(Send(0, 0x500, 0, 0));
    EXPECT_FALSE(m_head.MemoryAt(0).wiper);
    EXPECT_TRUE(m_head.MemoryAt(0).light);
}

TEST_F(HeadTest, Preset_SetGoneToCleared) {
    Preset(0, 3, 0.25, 0.75);
    ASSERT_TRUE(Send(200, 1));  // home
    ExpectAt(At(300), 0.5, 0.5);
    ASSERT_TRUE(Send(300, 0x702, 1, 3));
    ExpectAt(At(300.25), 0.375, 0.625);  // half way: the head needs its time
    ExpectAt(At(301), 0.25, 0.75);
    EXPECT_TRUE(Send(301, 0x701, 1, 3));
    EXPECT_FALSE(Send(301, 0x701, 1, 3));
    EXPECT_FALSE(Send(301, 0x702, 1, 3));
    EXPECT_FALSE(Send(301, 0x700, 1, 0)) << "presets count from 1";
    EXPECT_TRUE(Send(301, 0x700, 1, 255));
    EXPECT_FALSE(Send(301, 0x700, 1, 256));
}

TEST_F(HeadTest, Tour_GoesRoundItsPoints) {
    Preset(0, 1, 0.0, 0.5);
    Preset(200, 2, 0.5, 0.5);
    ASSERT_TRUE(Send(400, 0x802, 3, 9, 1, 1, 10));   // tour 9, point 1: preset 1 for ten seconds
    ASSERT_TRUE(Send(400, 0x802, 3, 9, 2, 0, 20));   // point 2: the preset of its number
    ASSERT_TRUE(Send(400, 0x802, 3, 9, 3, 77, 20));  // no such preset: passed over
    ASSERT_TRUE(Send(400, 0x800, 3, 9));
    // A second to preset 1, ten there, a second to preset 2, twenty there, and a second back: rounds of 32.
    for (const double round : {400.0, 432.0, 400.0 + 32 * 1000}) {
        ExpectAt(At(round + 1), 0, 0.5);
        ExpectAt(At(round + 10.9), 0, 0.5);
        ExpectAt(At(round + 11.5), 0.25, 0.5);
        ExpectAt(At(round + 12.1), 0.5, 0.5);
        ExpectAt(At(round + 31.9), 0.5, 0.5);
        ExpectAt(At(round + 32.5), 0.25, 0.5);
    }
    EXPECT_FALSE(Send(411.5, 0x801, 3, 8)) << "another tour runs";
    ASSERT_TRUE(Send(411.5, 0x801, 3, 9));
    ExpectAt(At(1000), 0.25, 0.5);
    EXPECT_FALSE(Send(1000, 0x801, 3, 9)) << "none runs";
}

TEST_F(HeadTest, Tour_PointsTakenOut_ThenNothingToRun) {
    Preset(0, 1, 0.2, 0.2);
    ASSERT_TRUE(Send(200, 0x802, 3, 1, 1, 1, 0));
    EXPECT_FALSE(Send(200, 0x803, 3, 1, 0, 2));
    EXPECT_TRUE(Send(200, 0x803, 3, 1, 0, 1));
    EXPECT_FALSE(Send(200, 0x803, 3, 1, 0, 1));
    EXPECT_FALSE(Send(200, 0x800, 3, 1));
    EXPECT_FALSE(Send(200, 0x802, 3, 0, 1, 1, 1)) << "tours count from 1";
    EXPECT_FALSE(Send(200, 0x802, 3, 1, 0, 1, 1)) << "points count from 1";
    EXPECT_TRUE(Send(200, 0x802, 3, 32, 64, 1, 1));
    EXPECT_FALSE(Send(200, 0x802, 3, 33, 1, 1, 1));
    EXPECT_FALSE(Send(200, 0x802, 3, 1, 65, 1, 1));
}

TEST_F(HeadTest, Tour_OfOnePointWithoutDwell_Stands) {
    Preset(0, 1, 0.2, 0.2);
    ASSERT_TRUE(Send(200, 0x802, 3, 1, 1, 1, 0));
    ASSERT_TRUE(Send(200, 0x800, 3, 1));
    ExpectAt(At(12345), 0.2, 0.2);
}

TEST_F(HeadTest, Track_RememberedAndRunAgain) {
    ASSERT_TRUE(Send(10, 0x807, 2, 0));
    ASSERT_TRUE(Send(11, 0x103, 0, 7));  // right for half a second, a pause of one, down for half a second
    ASSERT_TRUE(Send(11.5, HALT));
    ASSERT_TRUE(Send(12.5, 0x101, 0, 7));
    ASSERT_TRUE(Send(13, HALT));
    EXPECT_FALSE(Send(13, 0x808, 2, 1)) << "another track";
    ASSERT_TRUE(Send(13, 0x808, 2, 0));
    ExpectAt(At(13), 0.75, 0.75);
    ASSERT_TRUE(Send(20, 0x805, 2, 0));
    ExpectAt(At(20.5), 0.5, 0.5);  // back to its begin
    ExpectAt(At(21.4), 0.5, 0.5);
    ExpectAt(At(21.75), 0.625, 0.5);
    ExpectAt(At(22.5), 0.75, 0.5);
    ExpectAt(At(23.25), 0.75, 0.625);
    ExpectAt(At(23.5), 0.75, 0.75);
    ExpectAt(At(24.0), 0.5, 0.5);  // and over again
    ExpectAt(At(25.25), 0.625, 0.5);
    EXPECT_FALSE(Send(30, 0x805, 2, 1));
    EXPECT_FALSE(Send(30, 0x807, 2, 8));
    EXPECT_FALSE(Send(30, 0x808, 2, 0));
}

TEST_F(HeadTest, Scan_GoesToAndFro) {
    ASSERT_TRUE(Send(0, 0x809, 0, 7));
    ExpectAt(At(1), 0, 0.5);
    ExpectAt(At(3), 1, 0.5);
    ExpectAt(At(5), 0, 0.5);
    ExpectAt(At(4 * 250 + 3), 1, 0.5);
    ASSERT_TRUE(Send(4, HALT));
    ExpectAt(At(100), 0.5, 0.5);
}

TEST_F(HeadTest, Centre_TurnsToThePointAndZooms) {
    ASSERT_TRUE(Send(0, 0x80A, 4, 7500, 5000, 20));
    ExpectAt(At(100), 0.75, 0.5);
    EXPECT_EQ(At(100).zoom, 2);
    ASSERT_TRUE(Send(100, 0x80A, 4, 5000, 0, 0));
    ExpectAt(At(200), 0.75, 0.25);  // half as far at twice the zoom
    EXPECT_EQ(At(200).zoom, 2);
}

TEST_F(HeadTest, UnknownCodeOrWrongKind_IsRefusedAndMovesNothing) {
    for (const unsigned code : {0U, 2U, 0x108U, 0x202U, 0x703U, 0x804U, 0x806U, 0x80BU}) {
        EXPECT_FALSE(Send(0, code)) << code;
    }
    EXPECT_FALSE(Send(0, 0x100, 1, 7));
    EXPECT_FALSE(Send(0, 0x702, 0, 1));
    ExpectAt(At(100), 0.5, 0.5);
}

TEST_F(HeadTest, Memory_OfAHeadOnItsWay_IsWhereItArrives) {
    ASSERT_TRUE(Send(0, 0x103, 0, 7));
    ExpectAt(m_head.MemoryAt(0.1).position, 1, 0.5);
    ASSERT_TRUE(Send(0.1, 0x809, 0, 7));
    ExpectAt(m_head.MemoryAt(0.1).position, 0.55, 0.5);  // a way without end: where it is
}

}  // namespace
