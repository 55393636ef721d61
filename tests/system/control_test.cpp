// Record switches, reboot, power-off and factory restore through the exported functions, and what an agent sees of
// them: recordings that a search finds or not, logins that end, pictures that come again, presets that are forgotten.
#include <gtest/gtest.h>

#include <ctime>

#include "agent.h"
#include "camera_view.h"
#include "core/power.h"
#include "played.h"

namespace control = simulator::control;
using agent::Buffer;
using agent::CameraView;
using agent::Session;
using live::Eventually;

namespace {

constexpr int WIDTH = 320;
constexpr int HEIGHT = 240;
const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "control test",
    "cameras": [
        {"name": "Gate", "main": {"width": 320, "height": 240, "fps": 10, "gop": 5, "kbps": 1000},
         "sub": {"width": 128, "height": 96, "fps": 12, "gop": 6}},
        {"name": "Yard", "main": {"width": 320, "height": 240, "fps": 10, "gop": 5, "kbps": 1000},
         "sub": {"width": 128, "height": 96, "fps": 12, "gop": 6}}
    ],
    "reboot_seconds": 600,
    "recordings": {"live": "watched", "file_seconds": 2, "history": {"segments": 0}}
})json"));

constexpr double LONGER_THAN_A_REBOOT = 601;

int Control(int login, unsigned command, int first = 0, int count = 0, void* record = nullptr, unsigned size = 0) {
    return vexo_soft::vexo_HostMgr_Dev_Control(login, command, first, count, nullptr, 0, record, size, nullptr, 0);
}

void Record(int login, int first, int count, uint32_t command, uint32_t on) {
    _tagVexoHostMgrRecordCmd record = {command, on, {}};
    EXPECT_EQ(Control(login, HOSTMGR_CONTROL_RECORD, first, count, &record, sizeof record), 0);
}

void Ptz(int login, uint32_t command, uint32_t p1, uint32_t p2) {
    _tagVexoHostMgrPtzCmd record = {command, p1, p2, 0, {}};
    EXPECT_EQ(Control(login, HOSTMGR_CONTROL_PTZ, 1, 1, &record, sizeof record), 0);
    control::SkipTime(100);
}

// ---- record switches -----------------------------------------------------------------------------------------------

class RecordSwitchTest : public agent::LibraryTest {
protected:
    /** When the last recording of a channel ends, by a search; 0 when there is none. */
    time_t LastRecorded(unsigned channel) const {
        const time_t now = time(nullptr);
        const std::vector<played::Span> spans = played::Spans(m_session.Login(), channel, now - 3600, now + 60);
        return spans.empty() ? 0 : spans.back().stop;
    }

    /** Watches a channel, which is what lets it be recorded, until something is the case. */
    bool WatchUntil(unsigned channel, const std::function<bool()>& happened) const {
        Buffer buffer(m_session.Login(), channel, HOSTMGR_STREAM_MAIN);
        return Eventually([&] {
            buffer.Try();
            return happened();
        });
    }

    /** Watches a channel for so many pictures, and gives the time stamp of the last one, in seconds since 1970. */
    time_t Watch(unsigned channel, int pictures) const {
        Buffer buffer(m_session.Login(), channel, HOSTMGR_STREAM_MAIN);
        buffer.EnableAudio(0);
        time_t last = 0;
        for (int i = 0; i < pictures; ++i) {
            const auto read = buffer.Next(false);
            last = read ? static_cast<time_t>(read->frame.header.seconds) : 0;
        }
        return last;
    }

    Session m_session;
};

struct SwitchCase {
    const char* name;
    uint32_t command;
};

class EachRecordSwitchTest : public RecordSwitchTest, public testing::WithParamInterface<SwitchCase> {};

TEST_P(EachRecordSwitchTest, Off_NothingIsRecorded_On_TheSearchFindsIt_OffAgain_ItEnds) {
    const uint32_t command = GetParam().command;
    Record(m_session.Login(), 1, 2, HOSTMGR_RECORD_MODE_1, HOSTMGR_RECORD_OFF);  // on from the factory
    Watch(1, 30);
    const time_t before = LastRecorded(1);
    const time_t before_2 = LastRecorded(2);
    const time_t seen = Watch(1, 30);
    ASSERT_LE(LastRecorded(1), before + 1) << "switched off";
    ASSERT_GT(seen, before + 1);
    Record(m_session.Login(), 1, 1, command, HOSTMGR_RECORD_ON);
    const time_t on = time(nullptr);
    EXPECT_TRUE(WatchUntil(1, [&] { return LastRecorded(1) >= on + 1; }));
    EXPECT_EQ(LastRecorded(2), before_2) << "the other channel is off";
    Record(m_session.Login(), 1, 1, command, HOSTMGR_RECORD_OFF);
    Watch(1, 30);
    const time_t after = LastRecorded(1);
    ASSERT_GT(Watch(1, 30), after + 1);
    EXPECT_LE(LastRecorded(1), after + 1) << "switched off again";
}

INSTANTIATE_TEST_SUITE_P(Switches, EachRecordSwitchTest,
                         testing::Values(SwitchCase{"Schedule", HOSTMGR_RECORD_MODE_1},
                                         SwitchCase{"Always", HOSTMGR_RECORD_MODE_2},
                                         SwitchCase{"Manual", HOSTMGR_RECORD_MANUAL}),
                         [](const auto& which) { return which.param.name; });

TEST_F(RecordSwitchTest, WrongRecords_ChangeNothingAndGiveZero) {
    Record(m_session.Login(), 1, 1, HOSTMGR_RECORD_MODE_1, HOSTMGR_RECORD_OFF);
    for (const uint32_t on : {0U, 3U, 0xFFFFFFFFU}) {
        Record(m_session.Login(), 1, 1, HOSTMGR_RECORD_MODE_1, on);
    }
    for (const uint32_t command : {0U, 4U, 0xFFFFFFFFU}) {
        Record(m_session.Login(), 1, 1, command, HOSTMGR_RECORD_ON);
    }
    EXPECT_EQ(Control(m_session.Login(), HOSTMGR_CONTROL_RECORD, 1, 1, nullptr, 28), 0);
    uint32_t alone = HOSTMGR_RECORD_MANUAL;
    EXPECT_EQ(Control(m_session.Login(), HOSTMGR_CONTROL_RECORD, 1, 1, &alone, 4), 0) << "its switch is read as 0";
    Record(m_session.Login(), 1, 0, HOSTMGR_RECORD_MANUAL, HOSTMGR_RECORD_ON);
    Record(m_session.Login(), 2, 2, HOSTMGR_RECORD_MANUAL, HOSTMGR_RECORD_ON);
    Watch(1, 30);
    EXPECT_EQ(LastRecorded(1), 0);
    EXPECT_TRUE(WatchUntil(2, [&] { return LastRecorded(2) != 0; })) << "a range that goes beyond the last channel";
}

// ---- reboot, power-off ---------------------------------------------------------------------------------------------

class PowerControlTest : public agent::LibraryTest {
protected:
    void TearDown() override {
        simulator::PowerOn();
        control::SkipTime(LONGER_THAN_A_REBOOT);
    }

    /** To be asked while nobody is logged in: a login that is refused may put out another one. */
    static bool CanLogIn() { return Session().Login() > 0; }
};

TEST_F(PowerControlTest, Reboot_EndsEverything_AndANewLoginFindsItAllAgain) {
    {
        const Session session;
        Ptz(session.Login(), HOSTMGR_PTZ_LEFT, 0, 7);
        Ptz(session.Login(), HOSTMGR_PTZ_PRESET_SET, 1, 0);
        Ptz(session.Login(), HOSTMGR_PTZ_CMD_41, 0, 0);
        CameraView gate(session.Login(), 1, WIDTH, HEIGHT);
        ASSERT_TRUE(gate.Shows(agent::HOME));
        unsigned one = 1;
        ASSERT_GT(vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(session.Login(), 0, 1, &one), 0);
        EXPECT_EQ(Control(session.Login(), HOSTMGR_CONTROL_REBOOT), 0);
        EXPECT_TRUE(gate.Silent());
        _tagVexoHostMgrTalkParam none = {};
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartTalk(session.Login(), &none), -1);
        EXPECT_EQ(Control(session.Login(), HOSTMGR_CONTROL_REBOOT), 0) << "refused, which nobody is told";
        control::SkipTime(LONGER_THAN_A_REBOOT);
        Ptz(session.Login(), HOSTMGR_PTZ_RIGHT, 0, 7);  // of a login that has ended
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StopZeroCodec(session.Login()), 0);
    }
    {
        const Session again;
        ASSERT_GT(again.Login(), 0);
        CameraView gate(again.Login(), 1, WIDTH, HEIGHT);
        EXPECT_TRUE(gate.Shows(agent::HOME));
        Ptz(again.Login(), HOSTMGR_PTZ_PRESET_GOTO, 1, 0);
        EXPECT_TRUE(gate.Shows({0, 0.5, 1})) << "presets last";
        unsigned char* bytes = nullptr;
        unsigned length = 0;
        unsigned type = 0;
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReadZeroCodecStream(again.Login(), 0, &bytes, &length, &type), -1)
            << "the zero channel is off";
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StopZeroCodec(again.Login()), 0);
    }
    ExpectAllGivenBack();
}

TEST_F(PowerControlTest, Reboot_NobodyCanLogInUntilItIsBack) {
    EXPECT_EQ(Control(Session().Login(), HOSTMGR_CONTROL_REBOOT), 0);
    EXPECT_FALSE(CanLogIn());
    control::SkipTime(LONGER_THAN_A_REBOOT);
    EXPECT_TRUE(CanLogIn());
    ExpectAllGivenBack();
}

TEST_F(PowerControlTest, PowerOff_LastsUntilSomebodySwitchesItOn) {
    {
        const Session session;
        EXPECT_EQ(Control(session.Login(), HOSTMGR_CONTROL_POWER_OFF), 0);
    }
    EXPECT_FALSE(CanLogIn());
    control::SkipTime(1000000);
    EXPECT_FALSE(CanLogIn());
    ASSERT_TRUE(simulator::PowerOn());
    EXPECT_TRUE(CanLogIn());
    ExpectAllGivenBack();
}

TEST_F(PowerControlTest, RecorderRefuses_NothingHappensAndControlGivesZero) {
    const Session session;
    for (const auto& [operation, command] : {std::pair{"vexo_model_reboot", HOSTMGR_CONTROL_REBOOT},
                                             {"vexo_model_poweroff", HOSTMGR_CONTROL_POWER_OFF},
                                             {"vexo_model_restore_factory", HOSTMGR_CONTROL_RESTORE}}) {
        control::Fail(operation, 1);
        EXPECT_EQ(Control(session.Login(), command), 0) << operation;
        EXPECT_TRUE(CanLogIn()) << operation;
    }
    for (const unsigned unknown : {0U, 1U, 3U, 7U, 13U, 31U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Control(session.Login(), unknown), -1) << unknown;
    }
}

// ---- factory restore -----------------------------------------------------------------------------------------------

TEST_F(RecordSwitchTest, Restore_ForgetsPresetsAndRecordModes_AndEndsNoLogin) {
    Ptz(m_session.Login(), HOSTMGR_PTZ_LEFT, 0, 7);
    Ptz(m_session.Login(), HOSTMGR_PTZ_PRESET_SET, 1, 0);
    Record(m_session.Login(), 1, 1, HOSTMGR_RECORD_MODE_1, HOSTMGR_RECORD_OFF);
    CameraView gate(m_session.Login(), 1, WIDTH, HEIGHT);
    ASSERT_TRUE(gate.Shows({0, 0.5, 1}));
    EXPECT_EQ(Control(m_session.Login(), HOSTMGR_CONTROL_RESTORE), 0);
    control::SkipTime(100);
    EXPECT_TRUE(gate.Shows(agent::HOME));
    Ptz(m_session.Login(), HOSTMGR_PTZ_PRESET_GOTO, 1, 0);
    gate.SkipOld();
    EXPECT_LT(gate.DifferenceFrom(agent::HOME), agent::SAME) << "there is no such preset";
    EXPECT_TRUE(WatchUntil(1, [&] { return LastRecorded(1) != 0; })) << "it records as from the factory";
}

}  // namespace
