// PTZ through the exported functions: what a command does is seen in the camera's decoded live picture. What each
// command becomes for the recorder stands in the unit tests, what a head can do in ptz_head_test.cpp.
#include <gtest/gtest.h>

#include "agent.h"
#include "camera_view.h"

namespace control = simulator::control;
using agent::CameraView;
using agent::Session;
using simulator::View;

namespace {

constexpr int WIDTH = 320;
constexpr int HEIGHT = 180;
const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "ptz test",
    "cameras": [
        {"name": "Gate", "main": {"width": 320, "height": 180, "fps": 10, "gop": 5, "kbps": 1000}},
        {"name": "Yard", "main": {"width": 320, "height": 180, "fps": 10, "gop": 5, "kbps": 1000}}
    ],
    "recordings": {"live": "off", "history": {"segments": 0}}
})json"));

constexpr unsigned FULL_SPEED = 7;
constexpr double LONGER_THAN_ANY_WAY = 100;  // seconds
constexpr View LEFT_EDGE = {0, 0.5, 1};
constexpr View RIGHT_EDGE = {1, 0.5, 1};

class PtzTest : public agent::LibraryTest {
protected:
    PtzTest() {
        Send(HOSTMGR_PTZ_CMD_41, 0, 0, 0, 1, 2);
        control::SkipTime(LONGER_THAN_ANY_WAY);
    }

    int Send(uint32_t command, uint32_t p1 = 0, uint32_t p2 = 0, uint32_t p3 = 0, int first = 1, int count = 1) {
        _tagVexoHostMgrPtzCmd record = {command, p1, p2, p3, {}};
        return vexo_soft::vexo_HostMgr_Dev_Control(m_session.Login(), HOSTMGR_CONTROL_PTZ, first, count, nullptr, 0,
                                                   &record, sizeof record, nullptr, 0);
    }

    /** Sends a command and lets the head come to its end. */
    void Arrive(uint32_t command, uint32_t p1 = 0, uint32_t p2 = 0, uint32_t p3 = 0) {
        ASSERT_EQ(Send(command, p1, p2, p3), 0);
        control::SkipTime(LONGER_THAN_ANY_WAY);
    }

    Session m_session;
    CameraView m_gate{m_session.Login(), 1, WIDTH, HEIGHT};
};

struct Direction {
    const char* name;
    uint32_t command;
    View end;
};

class PtzDirectionTest : public PtzTest, public testing::WithParamInterface<Direction> {};

TEST_P(PtzDirectionTest, Move_GoesThereToTheLimit) {
    ASSERT_TRUE(m_gate.Shows(agent::HOME));
    EXPECT_GT(m_gate.DifferenceFrom(GetParam().end), agent::OTHER) << "the views must differ for this to tell anything";
    Arrive(GetParam().command, 0, FULL_SPEED);
    EXPECT_TRUE(m_gate.Shows(GetParam().end));
}

INSTANTIATE_TEST_SUITE_P(Directions, PtzDirectionTest,
                         testing::Values(Direction{"Up", HOSTMGR_PTZ_UP, {0.5, 0, 1}},
                                         Direction{"Down", HOSTMGR_PTZ_DOWN, {0.5, 1, 1}},
                                         Direction{"Left", HOSTMGR_PTZ_LEFT, LEFT_EDGE},
                                         Direction{"Right", HOSTMGR_PTZ_RIGHT, RIGHT_EDGE},
                                         Direction{"UpLeft", HOSTMGR_PTZ_UP_LEFT, {0, 0, 1}},
                                         Direction{"UpRight", HOSTMGR_PTZ_UP_RIGHT, {1, 0, 1}},
                                         Direction{"DownLeft", HOSTMGR_PTZ_DOWN_LEFT, {0, 1, 1}},
                                         Direction{"DownRight", HOSTMGR_PTZ_DOWN_RIGHT, {1, 1, 1}}),
                         [](const auto& direction) { return direction.param.name; });

TEST_F(PtzTest, Stop_OnTheWay_StaysThere) {
    Arrive(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED);
    ASSERT_TRUE(m_gate.Shows(LEFT_EDGE));
    // At the slowest speed the whole way takes 14 seconds: it is under way for sure.
    ASSERT_EQ(Send(HOSTMGR_PTZ_RIGHT, 0, 1), 0);
    control::SkipTime(6);
    ASSERT_EQ(Send(HOSTMGR_PTZ_RIGHT, 1, 1), 0);
    m_gate.SkipOld();
    const double stopped = m_gate.Pan();
    EXPECT_GT(stopped, 0.3);
    control::SkipTime(LONGER_THAN_ANY_WAY);
    m_gate.SkipOld();
    EXPECT_NEAR(m_gate.Pan(), stopped, 0.011);
}

TEST_F(PtzTest, Zoom_InAndOutAgain) {
    for (int i = 0; i < 20; ++i) {
        Arrive(HOSTMGR_PTZ_ZOOM_IN, 0, FULL_SPEED);
    }
    EXPECT_TRUE(m_gate.Shows({0.5, 0.5, 16}));
    for (int i = 0; i < 20; ++i) {
        Arrive(HOSTMGR_PTZ_ZOOM_OUT, 0, FULL_SPEED);
    }
    EXPECT_TRUE(m_gate.Shows(agent::HOME));
}

TEST_F(PtzTest, Presets_ComeBackToTheSamePicture_UntilTheyAreCleared) {
    Arrive(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED);
    Arrive(HOSTMGR_PTZ_PRESET_SET, 5);
    Arrive(HOSTMGR_PTZ_DOWN_RIGHT, 0, FULL_SPEED);
    Arrive(HOSTMGR_PTZ_PRESET_SET, 6);
    ASSERT_TRUE(m_gate.Shows({1, 1, 1}));
    Arrive(HOSTMGR_PTZ_PRESET_GOTO, 5);
    EXPECT_TRUE(m_gate.Shows(LEFT_EDGE));
    Arrive(HOSTMGR_PTZ_PRESET_GOTO, 6);
    EXPECT_TRUE(m_gate.Shows({1, 1, 1}));
    Arrive(HOSTMGR_PTZ_PRESET_CLEAR, 5);
    Arrive(HOSTMGR_PTZ_PRESET_GOTO, 5);
    m_gate.SkipOld();
    EXPECT_LT(m_gate.DifferenceFrom({1, 1, 1}), agent::SAME) << "a preset that is not there moves nothing";
}

TEST_F(PtzTest, Tour_GoesFromPresetToPreset_UntilItIsStopped) {
    Arrive(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED);
    Arrive(HOSTMGR_PTZ_PRESET_SET, 1);
    Arrive(HOSTMGR_PTZ_RIGHT, 0, FULL_SPEED);
    Arrive(HOSTMGR_PTZ_PRESET_SET, 2);
    constexpr uint32_t TOUR = 3;
    constexpr uint32_t DWELL = 100000;  // seconds: a point is not left by chance
    for (const uint32_t point : {1U, 2U}) {
        ASSERT_EQ(Send(HOSTMGR_PTZ_TOUR_PARAM_A, TOUR, 0, point), 0);
        ASSERT_EQ(Send(HOSTMGR_PTZ_TOUR_PARAM_B, TOUR, 0, DWELL), 0);
        ASSERT_EQ(Send(HOSTMGR_PTZ_TOUR_ADD_POINT, TOUR, 0, point), 0);
    }
    Arrive(HOSTMGR_PTZ_TOUR_START, TOUR);
    EXPECT_TRUE(m_gate.Shows(LEFT_EDGE));
    control::SkipTime(DWELL);
    EXPECT_TRUE(m_gate.Shows(RIGHT_EDGE));
    control::SkipTime(DWELL);
    EXPECT_TRUE(m_gate.Shows(LEFT_EDGE)) << "round and round";
    Arrive(HOSTMGR_PTZ_TOUR_STOP, TOUR);
    control::SkipTime(DWELL);
    m_gate.SkipOld();
    EXPECT_LT(m_gate.DifferenceFrom(LEFT_EDGE), agent::SAME);
}

TEST_F(PtzTest, Tour_PointTakenOut_IsPassedOver) {
    Arrive(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED);
    Arrive(HOSTMGR_PTZ_PRESET_SET, 1);
    Arrive(HOSTMGR_PTZ_RIGHT, 0, FULL_SPEED);
    Arrive(HOSTMGR_PTZ_PRESET_SET, 2);
    for (const uint32_t point : {1U, 2U}) {
        ASSERT_EQ(Send(HOSTMGR_PTZ_TOUR_PARAM_A, 1, 0, point), 0);
        ASSERT_EQ(Send(HOSTMGR_PTZ_TOUR_ADD_POINT, 1, 0, point), 0);
    }
    ASSERT_EQ(Send(HOSTMGR_PTZ_TOUR_DELETE_POINT, 1, 2), 0);
    Arrive(HOSTMGR_PTZ_TOUR_START, 1);
    ASSERT_TRUE(m_gate.Shows(LEFT_EDGE));
    control::SkipTime(LONGER_THAN_ANY_WAY);
    m_gate.SkipOld();
    EXPECT_LT(m_gate.DifferenceFrom(LEFT_EDGE), agent::SAME);
}

TEST_F(PtzTest, Home_AfterATrack_AndTheTrackAgain) {
    constexpr uint32_t TRACK = 2;
    ASSERT_EQ(Send(HOSTMGR_PTZ_CMD_34, TRACK), 0);
    Arrive(HOSTMGR_PTZ_RIGHT, 0, FULL_SPEED);
    ASSERT_EQ(Send(HOSTMGR_PTZ_CMD_35, TRACK), 0);
    Arrive(HOSTMGR_PTZ_CMD_41);
    ASSERT_TRUE(m_gate.Shows(agent::HOME));
    Arrive(HOSTMGR_PTZ_CMD_36, TRACK);
    EXPECT_TRUE(m_gate.Shows(RIGHT_EDGE));
}

TEST_F(PtzTest, Centre_OnAPlaceInThePicture_TurnsAndZooms) {
    Arrive(HOSTMGR_PTZ_CMD_42, 7500, 5000, 20);
    EXPECT_TRUE(m_gate.Shows({0.75, 0.5, 2}));
}

TEST_F(PtzTest, SeveralChannels_MoveTogether_AndNoneMovesNothing) {
    CameraView yard(m_session.Login(), 2, WIDTH, HEIGHT);
    ASSERT_EQ(Send(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED, 0, 1, 0), 0);
    ASSERT_EQ(Send(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED, 0, 1, -3), 0);
    ASSERT_EQ(Send(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED, 0, 3, 5), 0) << "channels that are not there";
    control::SkipTime(LONGER_THAN_ANY_WAY);
    ASSERT_TRUE(m_gate.Shows(agent::HOME));
    ASSERT_TRUE(yard.Shows(agent::HOME));
    ASSERT_EQ(Send(HOSTMGR_PTZ_LEFT, 0, FULL_SPEED, 0, 1, 2), 0);
    control::SkipTime(LONGER_THAN_ANY_WAY);
    EXPECT_TRUE(m_gate.Shows(LEFT_EDGE));
    EXPECT_TRUE(yard.Shows(LEFT_EDGE));
    ASSERT_EQ(Send(HOSTMGR_PTZ_RIGHT, 0, FULL_SPEED, 0, 2, 7), 0);
    control::SkipTime(LONGER_THAN_ANY_WAY);
    EXPECT_TRUE(yard.Shows(RIGHT_EDGE));
    m_gate.SkipOld();
    EXPECT_LT(m_gate.DifferenceFrom(LEFT_EDGE), agent::SAME);
}

TEST_F(PtzTest, Commands_ThatAreRefused_MoveNothingAndGiveZero) {
    for (const uint32_t command : {0U, 1U, 4U, 10U, 17U, 20U, 40U, 43U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Send(command, 0, FULL_SPEED, 1), 0) << command;
    }
    uint32_t word = HOSTMGR_PTZ_LEFT;
    const auto raw = [&](void* record, unsigned size) {
        return vexo_soft::vexo_HostMgr_Dev_Control(m_session.Login(), HOSTMGR_CONTROL_PTZ, 1, 1, &word, sizeof word,
                                                   record, size, nullptr, 0);
    };
    EXPECT_EQ(raw(nullptr, 28), 0);
    EXPECT_EQ(raw(&word, 0), 0);
    control::SkipTime(LONGER_THAN_ANY_WAY);
    ASSERT_TRUE(m_gate.Shows(agent::HOME));
    EXPECT_EQ(raw(&word, 4), 0) << "a short record is read as if zeros followed: left at the usual speed";
    control::SkipTime(LONGER_THAN_ANY_WAY);
    EXPECT_TRUE(m_gate.Shows(LEFT_EDGE));
}

}  // namespace
