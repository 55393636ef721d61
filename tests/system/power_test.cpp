// Reboot, power-off, factory restore and record modes of the simulated recorder by plain calls: what ends, what fails
// meanwhile, what may still be given back, what lasts.
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "control.h"
#include "core/power.h"
#include "device_support.h"
#include "live_reader.h"
#include "recorder_test_support.h"

namespace control = simulator::control;
using device::Login;
using live::Eventually;
using recorder_test::NewComplaints;

namespace {

constexpr double LONGER_THAN_A_REBOOT = 601;
[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({"channels": 2, "reboot_seconds": 600})"));

bool CanLogIn() {
    unsigned id = 0;
    const vexo_ip_struct ip = {0, "127.0.0.1"};
    const bool in = vexo_model_login("admin", "admin12345", &ip, &id, VEXO_FALSE, VEXO_FALSE) == 0;
    if (in) {
        EXPECT_EQ(vexo_model_logout(id, VEXO_FALSE), 0);
    }
    return in;
}

class PowerTest : public testing::Test {
protected:
    void TearDown() override {
        simulator::PowerOn();
        control::SkipTime(LONGER_THAN_A_REBOOT);
    }
};

TEST_F(PowerTest, Reboot_EndsLoginsAndIsAwayUntilItsTimeIsOver) {
    const NewComplaints complaints;
    Login login;
    ASSERT_EQ(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    EXPECT_FALSE(CanLogIn());
    EXPECT_NE(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    EXPECT_EQ(recorder_test::CountOutstanding("login: " + std::to_string(login.Id()) + " of admin from 127.0.0.1"), 0);
    control::SkipTime(LONGER_THAN_A_REBOOT);
    EXPECT_TRUE(CanLogIn());
    const vexo_ipc_ptz_ctrl_para none = {};
    EXPECT_NE(vexo_model_send_ptz_cmd(login.Id(), 0, 1, &none), 0) << "the login has not come back";
    EXPECT_EQ(complaints.Text(), "");
}

TEST_F(PowerTest, Reboot_EndedLogin_IsGivenBackOnceWithoutComplaint) {
    const NewComplaints complaints;
    unsigned id = 0;
    const vexo_ip_struct ip = {0, "127.0.0.1"};
    ASSERT_EQ(vexo_model_login("admin", "admin12345", &ip, &id, VEXO_FALSE, VEXO_FALSE), 0);
    ASSERT_EQ(vexo_model_reboot(id, VEXO_FALSE), 0);
    EXPECT_EQ(vexo_model_logout(id, VEXO_FALSE), 0) << "while it is away";
    EXPECT_NE(vexo_model_logout(id, VEXO_FALSE), 0);
    EXPECT_EQ(complaints.Text(), "");
}

TEST_F(PowerTest, Reboot_LiveStream_EndsAndBeginsAnew) {
    live::Reader reader(0, VEXO_ENC_STR_SUB);
    const auto before = reader.Next();
    ASSERT_TRUE(before);
    {
        Login login;
        ASSERT_EQ(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    }
    EXPECT_FALSE(reader.Try());
    control::SkipTime(LONGER_THAN_A_REBOOT);
    const auto after = reader.Next();
    ASSERT_TRUE(after);
    EXPECT_TRUE(after->Key());
    EXPECT_NE(after->note.note[1], before->note.note[1]);
}

TEST_F(PowerTest, Reboot_HeldFrame_MayBeGivenBackWhileItIsAway) {
    const NewComplaints complaints;
    unsigned char* frame = nullptr;
    vexo_read_av_list_note note = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    ASSERT_TRUE(Eventually([&] {
        return vexo_model_first_get_frame(0, VEXO_USER_HOSTMGR, VEXO_ENC_STR_SUB, &frame, &note, &no_video) == 0;
    }));
    Login login;
    ASSERT_EQ(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    EXPECT_EQ(vexo_model_rel_frame(0, VEXO_USER_HOSTMGR, VEXO_ENC_STR_SUB, &note), 0);
    EXPECT_EQ(complaints.Text(), "");
}

TEST_F(PowerTest, Reboot_Talk_IsEndedAndGivenBackOnce) {
    const NewComplaints complaints;
    Login login;
    unsigned talk = 0;
    ASSERT_EQ(vexo_model_start_talking(login.Id(), VEXO_TALK_DEVICE, 0, &talk), 0);
    ASSERT_EQ(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    control::SkipTime(LONGER_THAN_A_REBOOT);
    std::array<unsigned char, 4096> buffer;
    EXPECT_NE(vexo_model_get_talking_frame(talk, buffer.data(), 4096), 0);
    EXPECT_EQ(recorder_test::CountOutstanding("talk: " + std::to_string(talk) + " with recorder"), 0);
    EXPECT_EQ(vexo_model_stop_talking(talk), 0);
    EXPECT_EQ(complaints.Text(), "");
    EXPECT_NE(vexo_model_stop_talking(talk), 0);
    EXPECT_NE(complaints.Text(), "");
}

TEST_F(PowerTest, Reboot_ZeroChannel_IsOffAfterwards) {
    unsigned char* frame = nullptr;
    vexo_read_av_list_note note = {};
    {
        Login login;
        const unsigned one = 1;
        ASSERT_EQ(vexo_model_zero_channel_set_enable(login.Id(), VEXO_TRUE), 0);
        ASSERT_EQ(vexo_model_zero_channel_set_video_channels(login.Id(), &one, 1), 0);
        ASSERT_EQ(vexo_model_zero_channel_first_get_frame(VEXO_USER_HOSTMGR, &frame, &note), 0);
        if (frame != nullptr) {
            ASSERT_EQ(vexo_model_zero_channel_rel_frame(VEXO_USER_HOSTMGR, &note), 0);
        }
        ASSERT_EQ(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    }
    control::SkipTime(LONGER_THAN_A_REBOOT);
    EXPECT_NE(vexo_model_zero_channel_first_get_frame(VEXO_USER_HOSTMGR, &frame, &note), 0);
}

TEST_F(PowerTest, PowerOff_StaysOff_UntilSomebodySwitchesItOn) {
    Login login;
    ASSERT_EQ(vexo_model_poweroff(login.Id()), 0);
    control::SkipTime(1000000);
    EXPECT_FALSE(CanLogIn());
    EXPECT_NE(vexo_model_get_dev_capability(), nullptr) << "a record that stands for the process's life";
    EXPECT_TRUE(simulator::PowerOn());
    EXPECT_FALSE(simulator::PowerOn()) << "it is on";
    EXPECT_TRUE(CanLogIn());
}

TEST_F(PowerTest, Interruptions_AreCountedInTheHomeFolder) {
    const auto times = [](const char* what) {
        const std::string text = device::Contents(device::Home() / "power.json");
        const size_t at = text.find("\"" + std::string(what) + "\"");
        const size_t count = at == std::string::npos ? at : text.find("\"times\": ", at);
        return count == std::string::npos ? 0 : atoi(text.c_str() + count + strlen("\"times\": "));
    };
    const int before = times("poweroff");
    Login login;
    ASSERT_EQ(vexo_model_poweroff(login.Id()), 0);
    EXPECT_EQ(times("poweroff"), before + 1);
    EXPECT_NE(device::Contents(device::Home() / "power.json").find("\"by\": \"admin\""), std::string::npos);
}

std::vector<std::string>& Entries() {
    static std::vector<std::string> entries;
    return entries;
}

TEST_F(PowerTest, Reboot_IsLoggedForTheLoginThatAsked_BeforeItEnds) {
    Entries().clear();
    Login login;
    vexo_model_set_log_hook(
        [](int id, tag_VexoHostMgrLog* entry, void*) {
            Entries().push_back(std::to_string(id) + " " + entry->sUser + ": " + entry->sText);
        },
        nullptr);
    ASSERT_EQ(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    vexo_model_set_log_hook(nullptr, nullptr);
    EXPECT_EQ(Entries(), std::vector<std::string>{std::to_string(login.Id()) + " admin: rebooted by admin"});
}

TEST_F(PowerTest, Control_WithoutLoginOrWithFault_ChangesNothing) {
    EXPECT_NE(vexo_model_reboot(4711, VEXO_FALSE), 0);
    EXPECT_NE(vexo_model_poweroff(4711), 0);
    EXPECT_NE(vexo_model_restore_factory(4711, 0xFFFFFFFF), 0);
    Login login;
    for (const char* operation : {"vexo_model_reboot", "vexo_model_poweroff", "vexo_model_restore_factory"}) {
        control::Fail(operation, 1);
    }
    EXPECT_NE(vexo_model_reboot(login.Id(), VEXO_FALSE), 0);
    EXPECT_NE(vexo_model_poweroff(login.Id()), 0);
    EXPECT_NE(vexo_model_restore_factory(login.Id(), 0xFFFFFFFF), 0);
    EXPECT_TRUE(CanLogIn());
}

// ---- record modes and restore --------------------------------------------------------------------------------------

/** What the home folder says of a channel's record switches. */
bool KeptRecordModes(const std::string& expected) {
    const std::string text = device::Contents(device::Home() / "record_modes.json");
    std::string packed;
    for (const char c : text) {
        if (!isspace(static_cast<unsigned char>(c))) {
            packed += c;
        }
    }
    EXPECT_EQ(packed, expected);
    return packed == expected;
}

TEST_F(PowerTest, RecordModes_AreKept_AndForgottenByARestore) {
    Login login;
    ASSERT_EQ(vexo_model_set_record_mode(login.Id(), 0, 0), 0);
    ASSERT_EQ(vexo_model_set_record_mode(login.Id(), 1, 2), 0);
    ASSERT_EQ(vexo_model_set_record_manual_enable(login.Id(), 0, VEXO_TRUE), 0);
    EXPECT_TRUE(KeptRecordModes(R"({"1":{"manual":true,"mode":0},"2":{"manual":false,"mode":2}})"));
    ASSERT_EQ(vexo_model_restore_factory(login.Id(), 1), 0);  // the camera heads alone
    EXPECT_TRUE(KeptRecordModes(R"({"1":{"manual":true,"mode":0},"2":{"manual":false,"mode":2}})"));
    ASSERT_EQ(vexo_model_restore_factory(login.Id(), 0xFFFFFFFF), 0);
    EXPECT_TRUE(KeptRecordModes(R"({"1":{"manual":false,"mode":1},"2":{"manual":false,"mode":1}})"));
    EXPECT_TRUE(CanLogIn()) << "a restore is no reboot";
}

TEST_F(PowerTest, RecordSwitches_ThatCannotBe_Fail) {
    Login login;
    EXPECT_NE(vexo_model_set_record_mode(login.Id(), 2, 1), 0);
    EXPECT_NE(vexo_model_set_record_mode(login.Id(), 0, 3), 0);
    EXPECT_NE(vexo_model_set_record_mode(4711, 0, 1), 0);
    EXPECT_NE(vexo_model_set_record_manual_enable(login.Id(), 2, VEXO_TRUE), 0);
    EXPECT_NE(vexo_model_set_record_manual_enable(4711, 0, VEXO_TRUE), 0);
}

TEST_F(PowerTest, Restore_ForgetsPresets) {
    Login login;
    ASSERT_EQ(device::Drive(login, 0, 0x700, {1, {1, 0, 0, 0}}), 0);
    ASSERT_EQ(device::Drive(login, 0, 0x702, {1, {1, 0, 0, 0}}), 0);
    ASSERT_EQ(vexo_model_restore_factory(login.Id(), 2), 0);  // the record modes alone
    ASSERT_EQ(device::Drive(login, 0, 0x702, {1, {1, 0, 0, 0}}), 0);
    ASSERT_EQ(vexo_model_restore_factory(login.Id(), 1), 0);
    EXPECT_NE(device::Drive(login, 0, 0x702, {1, {1, 0, 0, 0}}), 0);
}

TEST_F(PowerTest, Kept_DocumentThatCannotBeRead_IsLeftAside) {
    for (const char* text : {"no json", "[]", R"({"1": {"mode": 99, "manual": "yes"}, "2": 7, "poweroff": 5})",
                             R"({"1": {"presets": 3}})", ""}) {
        const pid_t child = fork();
        if (child == 0) {
            std::ofstream(device::Home() / "record_modes.json") << text;
            std::ofstream(device::Home() / "ptz.json") << text;
            std::ofstream(device::Home() / "power.json") << text;
            const Login login;
            const bool works = vexo_model_set_record_mode(login.Id(), 0, 2) == 0 && device::Drive(login, 0, 1) == 0 &&
                               vexo_model_poweroff(login.Id()) == 0;
            _exit(works ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << text;
    }
}

}  // namespace
