// PTZ on the simulated recorder by plain calls: a move is seen in the decoded picture, which is compared with what the
// scene shows in that view; positions and presets outlive the process.
#include <sys/wait.h>
#include <unistd.h>

#include "control.h"
#include "device_support.h"
#include "live_reader.h"
#include "scene_view.h"

namespace control = simulator::control;
using device::Drive;
using device::Login;
using live::Eventually;

namespace {

constexpr unsigned SCENE = 0;
constexpr unsigned FILM = 1;
constexpr int WIDTH = 640;
constexpr int HEIGHT = 360;
[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "cameras": [{"name": "Gate", "main": {"width": 640, "height": 360, "gop": 10, "kbps": 2000}},
                {"name": "Film", "source": "scenario.json"}]
})"));

constexpr unsigned HALT = 0x13149527;

/** Reads the camera and compares its pictures with views of the scene. */
class Watcher {
public:
    Watcher() : m_reader(SCENE, VEXO_ENC_STR_MAIN), m_scene(1, SCENE + 1, WIDTH, HEIGHT) {}

    /** Waits until the camera shows that view. */
    testing::AssertionResult Shows(const simulator::View& view) {
        double difference = -1;
        const bool shown = Eventually([&] {
            const auto frame = m_reader.Next();
            const AVFrame* picture = frame ? m_decoder.Decode(*frame) : nullptr;
            difference = picture != nullptr ? m_scene.Difference(*picture, *frame, view) : -1;
            return difference >= 0 && difference < 3;
        });
        return shown ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << "the picture differs by " << difference << " on average";
    }

    /** How far the next picture is from a view, in luma steps on average. */
    double DifferenceFrom(const simulator::View& view) {
        const auto frame = m_reader.Next();
        const AVFrame* picture = frame ? m_decoder.Decode(*frame) : nullptr;
        return picture != nullptr ? m_scene.Difference(*picture, *frame, view) : -1;
    }

private:
    live::Reader m_reader;
    live::Decoder m_decoder;
    device::SceneView m_scene;
};

class PtzScene : public testing::Test {
protected:
    /** Sends a code and lets the head come to its end. */
    void Arrive(unsigned code, const vexo_ipc_ptz_ctrl_para& para = {}) {
        ASSERT_EQ(Drive(m_login, SCENE, code, para), 0);
        control::SkipTime(100);
    }
    void TearDown() override { Arrive(1); }

    Login m_login;
};

TEST_F(PtzScene, Turn_RightToTheLimit_ShowsTheRightEdgeOfTheScene) {
    Arrive(1);
    Watcher watcher;
    ASSERT_TRUE(watcher.Shows({0.5, 0.5, 1}));
    EXPECT_GT(watcher.DifferenceFrom({1, 0.5, 1}), 10) << "the views must differ for this to tell anything";
    Arrive(0x103, {0, {7, 0, 0, 0}});
    ASSERT_TRUE(watcher.Shows({1, 0.5, 1}));
    EXPECT_GT(watcher.DifferenceFrom({0.5, 0.5, 1}), 10);
}

TEST_F(PtzScene, Turn_DownLeftAndStopped_StaysWhereItWas) {
    Arrive(1);
    ASSERT_EQ(Drive(m_login, SCENE, 0x106, {0, {7, 0, 0, 0}}), 0);
    control::SkipTime(0.5);
    Arrive(HALT);
    Watcher watcher;
    EXPECT_TRUE(Eventually([&] { return watcher.DifferenceFrom({0.5, 0.5, 1}) > 10; }));
    EXPECT_GT(watcher.DifferenceFrom({0, 1, 1}), 10) << "it went on after the stop";
    Arrive(0x104, {0, {7, 0, 0, 0}});
    EXPECT_TRUE(watcher.Shows({0, 0, 1}));
}

TEST_F(PtzScene, Zoom_In_ShowsAPartOfTheSceneLarger) {
    Arrive(1);
    Watcher watcher;
    for (int i = 0; i < 20; ++i) {
        Arrive(0x200, {0, {7, 0, 0, 0}});
    }
    EXPECT_TRUE(watcher.Shows({0.5, 0.5, 16}));
}

TEST_F(PtzScene, Preset_GoneTo_ShowsItsView) {
    Arrive(0x102, {0, {7, 0, 0, 0}});
    ASSERT_EQ(Drive(m_login, SCENE, 0x700, {1, {5, 0, 0, 0}}), 0);
    Arrive(1);
    Watcher watcher;
    ASSERT_TRUE(watcher.Shows({0.5, 0.5, 1}));
    Arrive(0x702, {1, {5, 0, 0, 0}});
    EXPECT_TRUE(watcher.Shows({0, 0.5, 1}));
}

TEST_F(PtzScene, Command_ThatCannotBe_Fails) {
    const vexo_ipc_ptz_ctrl_para none = {};
    EXPECT_NE(Drive(m_login, 2, 0x100), 0) << "no such channel";
    EXPECT_NE(Drive(m_login, FILM, 0x100), 0) << "a film cannot turn";
    EXPECT_NE(Drive(m_login, SCENE, 0x999), 0) << "no such code";
    EXPECT_NE(Drive(m_login, SCENE, 0x702, {1, {200, 0, 0, 0}}), 0) << "no such preset";
    EXPECT_NE(vexo_model_send_ptz_cmd(m_login.Id() + 1, SCENE, 0x100, &none), 0) << "no such login";
    EXPECT_NE(vexo_model_send_ptz_cmd(m_login.Id(), SCENE, 0x100, nullptr), 0);
    control::Fail("vexo_model_send_ptz_cmd", 1);
    EXPECT_NE(Drive(m_login, SCENE, 1), 0);
    EXPECT_EQ(Drive(m_login, SCENE, 1), 0);
}

/** What a process before this one did is still there: the child uses the heads first, then this process does. */
TEST(PtzMemory, PositionAndPreset_OfAnEarlierProcess_AreThereAgain) {
    if (std::filesystem::exists(device::Home() / "ptz.json")) {
        GTEST_SKIP() << "for a process of its own: another case has used the heads";
    }
    const pid_t child = fork();
    if (child == 0) {
        const Login login;
        bool done = Drive(login, SCENE, 0x102, {0, {7, 0, 0, 0}}) == 0;  // all the way left
        control::SkipTime(100);
        done = done && Drive(login, SCENE, 0x700, {1, {9, 0, 0, 0}}) == 0;
        done = done && Drive(login, SCENE, 0x101, {0, {7, 0, 0, 0}}) == 0;  // and down, on its way at the end
        _exit(done ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    Watcher watcher;
    EXPECT_TRUE(watcher.Shows({0, 1, 1}));
    const Login login;
    ASSERT_EQ(Drive(login, SCENE, 0x702, {1, {9, 0, 0, 0}}), 0);
    control::SkipTime(100);
    EXPECT_TRUE(watcher.Shows({0, 0.5, 1}));
}

}  // namespace
