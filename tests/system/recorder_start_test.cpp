// How the simulated recorder starts and ends: scenario files and their errors, the banner, the home folder, what the
// configuration manager makes of the scenario, and the exit report. What needs a process of its own runs in one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "control.h"
#include "core/device.h"
#include "core/scenario.h"
#include "vexo_cfgm.h"
#include "vexo_utility.h"

using simulator::ParseScenario;
using simulator::Scenario;
using testing::ExitedWithCode;

namespace {

// ---- scenario ------------------------------------------------------------------------------------------------------

TEST(Scenario, Default_FourChannels_AsDocumented) {
    const Scenario scenario = ParseScenario(simulator::DefaultScenarioJson());
    ASSERT_EQ(scenario.cameras.size(), 4U);
    EXPECT_EQ(scenario.cameras[0].name, "Front gate");
    EXPECT_EQ(scenario.cameras[3].audio_hz, 784U);
    EXPECT_EQ(scenario.cameras[1].main.width, 1280U);
    EXPECT_EQ(scenario.cameras[1].sub.fps, 12U);
    EXPECT_EQ(scenario.frames_kept, 100U);
    ASSERT_EQ(scenario.users.size(), 2U);
    EXPECT_TRUE(scenario.users[0].administrator);
    ASSERT_EQ(scenario.users[1].remote.masks.size(), 2U);
    EXPECT_EQ(scenario.users[1].remote.masks[0].channels, (std::vector<unsigned>{1, 2}));
    ASSERT_EQ(scenario.factory.size(), 2U);
    EXPECT_EQ(scenario.factory[0].name, "DeviceModel");
}

TEST(Scenario, Default_Recordings_AsDocumented) {
    const Scenario scenario = ParseScenario(simulator::DefaultScenarioJson());
    ASSERT_EQ(scenario.disks.size(), 1U);
    EXPECT_EQ(scenario.disks[0].megabytes, 2000U);
    EXPECT_EQ(scenario.recordings.live, simulator::LiveRecording::Watched);
    EXPECT_EQ(scenario.recordings.file_seconds, 300U);
    EXPECT_EQ(scenario.recordings.history.hours, 12U);
    EXPECT_EQ(scenario.recordings.history.segments, 12U);
    EXPECT_EQ(scenario.recordings.history.seconds, 30U);
    EXPECT_EQ(scenario.recordings.history.fps, 2U);
    EXPECT_EQ(scenario.recordings.history.gop, 4U);
    EXPECT_EQ(scenario.recordings.history.width, 640U);
    EXPECT_EQ(scenario.recordings.history.until, "");
    EXPECT_EQ(scenario.recordings.history.listed, 0U);
}

TEST(Scenario, Parse_ChannelsWithoutCameras_MakesUsualOnes) {
    const Scenario scenario =
        ParseScenario(R"({"channels": 256, /* one of them told */ "cameras": [{"name": "Yard"}]})");
    ASSERT_EQ(scenario.cameras.size(), 256U);
    EXPECT_EQ(scenario.cameras[0].name, "Yard");
    EXPECT_EQ(scenario.cameras[255].name, "Camera 256");
    EXPECT_NE(scenario.cameras[254].audio_hz, scenario.cameras[255].audio_hz);
    EXPECT_LT(scenario.cameras[255].audio_hz, 4000U);
}

std::string ErrorOf(const std::string& json) {
    try {
        ParseScenario(json);
        return "accepted";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST(Scenario, Parse_WrongText_NamesPlaceAndRemedy) {
    const struct {
        const char* json;
        const char* error;
    } cases[] = {
        {"{", "this is not JSON: parse error at line 1, column 2"},
        {"[]", "the whole document: is array, give an object"},
        {R"({"seed": 1, "seed": 2})", "the key \"seed\" stands twice"},
        {R"({"camras": []})", "camras: is not a key that belongs here; the nearest one is \"cameras\""},
        {R"({"cameras": [{"main": {"widht": 64}}]})",
         "cameras[0].main.widht: is not a key that belongs here; the nearest one is \"width\""},
        {R"({"cameras": []})", "cameras: is 0 entries, give a list of 1 to 256 entries"},
        {R"({"cameras": {}})", "cameras: is object, give a list"},
        {R"({"cameras": [1]})", "cameras[0]: is number, give an object"},
        {R"({"cameras": [{}, {"main": {"width": 65}}]})",
         "cameras[1].main.width: 65 is odd, give an even number of pixels"},
        {R"({"cameras": [{"sub": {"height": 62}}]})",
         "cameras[0].sub.height: 62 does not do, give a whole number from 64 to 4096 (pixels)"},
        {R"({"cameras": [{"main": {"fps": 0}}]})",
         "cameras[0].main.fps: 0 does not do, give a whole number from 1 to 60 (frames a second)"},
        {R"({"cameras": [{"main": {"fps": 25.5}}]})", "cameras[0].main.fps: 25.5 does not do"},
        {R"({"cameras": [{"main": {"gop": 301}}]})", "cameras[0].main.gop: 301 does not do"},
        {R"({"cameras": [{"main": {"kbps": -16}}]})", "cameras[0].main.kbps: -16 does not do"},
        {R"({"cameras": [{"audio": {"level": 1.5}}]})",
         "cameras[0].audio.level: 1.5 does not do, give a number from 0.0 to 1.0"},
        {R"({"cameras": [{"audio": {"hz": 99999999999999999999}}]})", "cameras[0].audio.hz: 1e+20 does not do"},
        {R"({"cameras": [{"signal": 1}]})", "cameras[0].signal: 1 does not do, give true or false"},
        {R"({"cameras": [{"name": "a\nb"}]})", "cameras[0].name: holds a control character"},
        {R"({"cameras": [{"name": 5}]})", "cameras[0].name: is number, give a text of 1 to 63 bytes"},
        {R"({"channels": 257})", "channels: 257 does not do, give a whole number from 1 to 256"},
        {R"({"channels": 1, "cameras": [{}, {}]})", "channels: 1 is less than the 2 cameras described"},
        {R"({"frames_kept": 24})", "frames_kept: 24 does not do, give a whole number from 25 to 2000"},
        {R"({"users": [{"name": "bob"}]})", "users: there is no user \"admin\""},
        {R"({"users": [{"name": "admin"}]})", "users[0].administrator: the user \"admin\" must be an administrator"},
        {R"({"users": [{}]})", "users[0].name: is missing"},
        {R"({"users": [{"name": ""}]})", "users[0].name: has 0 bytes, give a text of 1 to 63 bytes"},
        {R"({"users": [{"name": "admin", "administrator": true}, {"name": "admin"}]})",
         "users[1].name: \"admin\" is the name of an earlier user"},
        {R"({"users": [{"name": "admin", "administrator": true}, {"name": "bob", "channels": [5]}]})",
         "users[1].channels[0]: 5 does not do, give a whole number from 1 to 4"},
        {R"({"faults": [{}]})", "faults[0].operation: is missing, give a text"},
        {R"({"faults": [{"operation": "vexo_model_logn"}]})", "the nearest one is \"vexo_model_login\""},
        {R"({"faults": [{"operation": "vexo_model_login", "nth": 0}]})", "faults[0].nth: 0 does not do"},
        {R"({"version": "one"})", "version: \"one\" does not do"},
        {R"({"build_date": "2023-2-29"})", "build_date: \"2023-2-29\" does not do"},
        {R"({"network": {"ports": {"http": 65536}}})", "network.ports.http: 65536 does not do"},
        {R"({"network": {"dns1": "1.2.3"}})", "network.dns1: \"1.2.3\" is no IPv4 address"},
        {R"({"network": {"interfaces": [{}, {"name": "eth0"}]}})",
         "network.interfaces[1].name: \"eth0\" is the name of an earlier interface"},
        {R"({"platform_links": [{"number": 33}]})", "platform_links[0].number: 33 does not do"},
        {R"({"disks": {}})", "disks: is object, give a list of 0 to 32 entries"},
        {R"({"disks": [{"kind": "floppy"}]})",
         "disks[0].kind: \"floppy\" does not do, give one of \"local\", \"external\", \"network\", \"array\""},
        {R"({"disks": [{"state": "asleep"}]})", "disks[0].state: \"asleep\" does not do"},
        {R"({"disks": [{"megabytes": 100, "partitions": [60, 41]}]})",
         "disks[0].partitions: of 101 megabytes do not fit on a disk of 100"},
        {R"({"disks": [{"partitions": [1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1]}]})",
         "disks[0].partitions: 17 partitions are more than the 16"},
        {R"({"cameras": [{"address": ""}]})", "cameras[0].address: has 0 bytes"},
        {R"({"cameras": [{"main": {"quality": 7}}]})", "cameras[0].main.quality: 7 does not do"},
        {R"({"users": [{"name": "admin", "administrator": true, "manage_disks": true}]})",
         "users[0].manage_disks: does not go with an administrator"},
        {R"({"users": [{"name": "bob", "local": {"rights": [6]}}]})",
         "users[0].local.rights[0]: 6 does not do, give a whole number from 1 to 5"},
        {R"({"users": [{"name": "bob", "remote": {"by_channel": [{"right": 5}]}}]})",
         "users[0].remote.by_channel[0].right: 5 does not do, give a whole number from 1 to 4"},
        {R"({"capability": {"kind": "toaster"}})", "capability.kind: \"toaster\" does not do"},
        {R"({"capability": {"analog_channels": 5}})", "capability.analog_channels: 5 does not do"},
        {R"({"capability": {"disk_slots": 0}})", "capability.disk_slots: 0 does not do"},
        {R"({"capability": {"hardware": "2"}})", "capability.hardware: has 1 bytes"},
        {R"({"factory": [{"value": "x"}]})", "factory[0].name: is missing"},
        {R"({"factory": [{"name": "A"}, {"name": "A"}]})", "factory[1].name: \"A\" is the name of an earlier item"},
        {R"({"network": {"default_interface": "eth1"}})", "network.default_interface: \"eth1\" is the name of no"},
        {R"({"network": {"ipv6_dns1": "192.0.2.1"}})", "network.ipv6_dns1: \"192.0.2.1\" is no IPv6 address"},
        {R"({"network": {"pppoe": {"address": "here"}}})", "network.pppoe.address: \"here\" is no IPv4 or IPv6"},
        {R"({"disks": [{"megabytes": 0}]})", "disks[0].megabytes: 0 does not do"},
        {R"({"recordings": {"live": "sometimes"}})",
         "recordings.live: \"sometimes\" does not do, give \"off\", \"watched\" or \"always\""},
        {R"({"recordings": {"file_seconds": 0}})", "recordings.file_seconds: 0 does not do"},
        {R"({"recordings": {"history": {"hours": 1, "segments": 61, "seconds": 60}}})",
         "recordings.history.seconds: 61 recordings of 60 seconds do not fit into 1 hours"},
        {R"({"recordings": {"history": {"width": 65}}})", "recordings.history.width: 65 is odd"},
        {R"({"recordings": {"history": {"until": "2023-02-29 12:00:00"}}})",
         "recordings.history.until: \"2023-02-29 12:00:00\" is no local time"},
        {R"({"recordings": {"history": {"day": 1}}})", "recordings.history.day: is not a key that belongs here"},
    };
    for (const auto& one : cases) {
        const std::string error = ErrorOf(one.json);
        EXPECT_NE(error.find(one.error), std::string::npos) << one.json << "\n  said: " << error;
    }
    EXPECT_NE(ErrorOf(R"({"users": [{"name": ")" + std::string(64, 'n') + R"("}]})").find("has 64 bytes"),
              std::string::npos);
}

// ---- processes of their own ----------------------------------------------------------------------------------------

class StartDeathTest : public testing::Test {
protected:
    void SetUp() override {
        testing::GTEST_FLAG(death_test_style) = "threadsafe";
        // The first process names it; the processes that a case starts find the name in their environment.
        setenv("RECORDER_START_TEST", (testing::TempDir() + "recorder_start_test." + std::to_string(getpid())).c_str(),
               0);
    }
    void TearDown() override { unlink(Path().c_str()); }

    /** A file, or a folder, of this run's own. */
    static std::string Path() { return getenv("RECORDER_START_TEST"); }
    static void Write(const std::string& text) { std::ofstream(Path()) << text; }
    static std::string Read() {
        std::ifstream file(Path());
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    /** Brings the recorder up silently. */
    static void StartQuietly() {
        setenv("RECORDER_QUIET", "1", 1);
        vexo_utility_init(VEXO_UTILITY_OPS_HOST);
    }
    [[noreturn]] static void StartWith(const std::string& scenario) {
        setenv("RECORDER_SCENARIO", scenario.c_str(), 1);
        StartQuietly();
        exit(0);
    }
};

TEST_F(StartDeathTest, Init_BrokenScenario_EndsWithStatus2AndNamesFileAndPlace) {
    Write(R"({"cameras": [{"main": {"fps": 0}}]})");
    EXPECT_EXIT(StartWith(Path()), ExitedWithCode(2),
                "scenario .*recorder_start_test.[0-9]+: cameras.0..main.fps: 0 does not do");
}

TEST_F(StartDeathTest, Init_ScenarioCannotBeRead_EndsWithStatus2) {
    EXPECT_EXIT(StartWith("/nowhere/at/all.json"), ExitedWithCode(2),
                "/nowhere/at/all.json: cannot be read .No such file");
    EXPECT_EXIT(StartWith("/"), ExitedWithCode(2), "scenario /: cannot be read .Is a directory");
}

TEST_F(StartDeathTest, Init_CameraFileMissing_EndsWithStatus2) {
    Write(R"({"cameras": [{"source": "no_such_film.mp4"}]})");
    EXPECT_EXIT(StartWith(Path()), ExitedWithCode(2), "cameras.0..source: cannot read .*no_such_film.mp4");
}

TEST_F(StartDeathTest, Init_Scenario_IsTakenWithItsFaults) {
    Write(R"({"name": "faulty", "channels": 2, "faults": [{"operation": "vexo_utility_new_lock", "nth": 2}]})");
    EXPECT_EXIT(
        {
            setenv("RECORDER_SCENARIO", Path().c_str(), 1);
            StartQuietly();
            const bool first = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "a") != nullptr;
            const bool second = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "b") != nullptr;
            exit(first && !second && simulator::TheScenario().cameras.size() == 2 ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(StartDeathTest, Init_Banner_IsOneLineOnStandardError) {
    EXPECT_EXIT(
        {
            unsetenv("RECORDER_QUIET");
            setenv("RECORDER_HOME", "/some/home", 1);
            vexo_utility_init(VEXO_UTILITY_OPS_HOST);
            vexo_utility_init(VEXO_UTILITY_OPS_HOST);
            exit(0);
        },
        ExitedWithCode(0),
        testing::Matcher<const std::string&>(testing::Eq(
            "[simulated recorder] This is a recorder in software, not a board: version 1.0, scenario \"default\", "
            "4 channels, home /some/home\n")));
}

TEST_F(StartDeathTest, HomeFolder_FileInTheWay_EndsWithStatus2) {
    Write("");
    EXPECT_EXIT(
        {
            setenv("RECORDER_HOME", (Path() + "/home").c_str(), 1);
            simulator::HomeFolder();
        },
        ExitedWithCode(2), "cannot make the home folder .*set RECORDER_HOME");
}

TEST_F(StartDeathTest, HomeFolder_FirstNeed_IsMade) {
    const std::string home = Path() + ".home";
    EXPECT_EXIT(
        {
            setenv("RECORDER_HOME", home.c_str(), 1);
            exit(simulator::HomeFolder() == home ? 0 : 1);
        },
        ExitedWithCode(0), "");
    EXPECT_EQ(rmdir(home.c_str()), 0);
}

// ---- exit report ---------------------------------------------------------------------------------------------------

void* SleepForever(void*) {
    while (true) {
        vexo_utility_sleep_ms(1000);
    }
}

void* EndAtOnce(void*) {
    return nullptr;
}

unsigned long StartThread(vexo_thread_func entry, const char* name, void* argument = nullptr) {
    const vexo_thread_creat_ctl ctl = {1, 0, entry, argument, 0, 0x80000};
    unsigned long id = 0;
    vexo_utility_creat_thread(&ctl, name, &id);
    return id;
}

testing::Matcher<const std::string&> Exactly(const std::string& text) {
    return testing::Eq(text);
}

TEST_F(StartDeathTest, Exit_AllGivenBackAndResidentsAtWork_SaysNothing) {
    EXPECT_EXIT(
        {
            StartQuietly();
            vexo_utility_new_lock(VEXO_USER_HOSTMGR, "table");
            StartThread(SleepForever, "resident");
            vexo_utility_free("file", "function", vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, 8, 1));
            exit(0);
        },
        ExitedWithCode(0), Exactly(""));
}

TEST_F(StartDeathTest, Exit_ResidentsAskedFor_AreListedApart) {
    EXPECT_EXIT(
        {
            StartQuietly();
            setenv("RECORDER_REPORT", "all", 1);
            vexo_utility_new_lock(VEXO_USER_HOSTMGR, "table");
            StartThread(SleepForever, "resident");
            exit(0);
        },
        ExitedWithCode(0),
        Exactly("[simulated recorder] still in use at exit: lock: table, user 97\n"
                "[simulated recorder] still in use at exit: thread: resident\n"));
}

TEST_F(StartDeathTest, Exit_MemoryKept_IsReportedWithPurposeAndNumber) {
    EXPECT_EXIT(
        {
            StartQuietly();
            vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_LIVE_SLOTS, 60, 128);
            vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_LIVE_SLOTS, 60, 128);
            vexo_utility_malloc(VEXO_USER_EVENT, VEXO_MEMORY_EVENT, 172, 1);
            exit(0);
        },
        ExitedWithCode(0),
        Exactly("[simulated recorder] not given back: memory: user 21, purpose 0x26004, 172 bytes\n"
                "[simulated recorder] not given back: memory: user 97, purpose 0x80002, 7680 bytes (2 times)\n"));
}

TEST_F(StartDeathTest, Exit_LockWhoseLikesWereDeleted_IsNotGivenBack) {
    EXPECT_EXIT(
        {
            StartQuietly();
            vexo_lock* lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "module");
            vexo_utility_new_lock(VEXO_USER_HOSTMGR, "module");
            vexo_utility_delete_lock(lock, "file", "function");
            exit(0);
        },
        ExitedWithCode(0), Exactly("[simulated recorder] not given back: lock: module, user 97\n"));
}

TEST_F(StartDeathTest, Exit_ThreadEndedAndNeverRetrieved_IsNotGivenBack) {
    EXPECT_EXIT(
        {
            StartQuietly();
            const unsigned long id = StartThread(EndAtOnce, "forgotten");
            pthread_join(id, nullptr);
            exit(0);
        },
        ExitedWithCode(0), Exactly("[simulated recorder] not given back: thread: forgotten\n"));
}

TEST_F(StartDeathTest, Exit_Complaint_IsReportedOnceWithItsNumber) {
    EXPECT_EXIT(
        {
            StartQuietly();
            int local = 0;
            vexo_utility_free("file", "function", &local);
            vexo_utility_free("file", "function", &local);
            exit(0);
        },
        ExitedWithCode(0),
        Exactly("[simulated recorder] complaint: memory given back that was not taken, or given back twice: by file, "
                "function (2 times)\n"));
}

void* WorkForever(void* argument) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    auto* lock = static_cast<vexo_lock*>(argument);
    char info[64];
    while (true) {
        lock->lock("file", "WorkForever");
        vexo_utility_free("file", "WorkForever", vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, 8, 1));
        lock->unlock("file", "WorkForever");
        lock->get_info(info, sizeof info);
    }
}

TEST_F(StartDeathTest, Exit_ThreadsInTheMiddleOfCalls_EndsInOrder) {
    EXPECT_EXIT(
        {
            StartQuietly();
            vexo_lock* lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "busy");
            for (int i = 0; i < 4; ++i) {
                StartThread(WorkForever, "at work", lock);
            }
            vexo_utility_sleep_ms(50);
            exit(0);
        },
        ExitedWithCode(0), testing::Not(testing::HasSubstr("complaint")));
}

TEST_F(StartDeathTest, Exit_ReportFileNamed_HoldsTheReportToo) {
    EXPECT_EXIT(
        {
            StartQuietly();
            setenv("RECORDER_REPORT_FILE", Path().c_str(), 1);
            vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_TALK, 8, 1);
            exit(0);
        },
        ExitedWithCode(0), "not given back: memory");
    EXPECT_EQ(Read(), "[simulated recorder] not given back: memory: user 97, purpose 0x80004, 8 bytes\n");
}

// ---- configuration manager -----------------------------------------------------------------------------------------

TEST(Configuration, Users_AreTheScenarios) {
    unsigned count = 0;
    ASSERT_EQ(vexo_cfgm_init(), 0);
    ASSERT_EQ(vexo_cfgm_get_usr_num(&count), 0);
    ASSERT_EQ(count, 2U);
    vexo_cfgm_usr_info user = {};
    ASSERT_EQ(vexo_cfgm_get_usr_info(0, &user), 0);
    EXPECT_STREQ(user.usr_name, "admin");
    EXPECT_STREQ(user.usr_password, "admin12345");
    EXPECT_EQ(user.authority.level_a, 0U);
    EXPECT_EQ(user.authority.remote_flag[6], 1U);
    EXPECT_EQ(user.authority.remote_mask[3].word[0], 0xFU);
    ASSERT_EQ(vexo_cfgm_get_usr_info(1, &user), 0);
    EXPECT_STREQ(user.usr_name, "operator");
    EXPECT_EQ(user.authority.level_b, 1U);
    EXPECT_EQ(user.authority.remote_flag[0], 0U);
    EXPECT_EQ(user.authority.local_mask[0].word[0], 3U);
    EXPECT_EQ(user.authority.remote_mask[1].word[0], 3U);
    EXPECT_EQ(user.authority.remote_mask[2].word[0], 0U);
}

TEST(Configuration, User_IndexPastTheLast_FailsAndWritesNothing) {
    vexo_cfgm_usr_info user;
    memset(&user, 0x5A, sizeof user);
    EXPECT_NE(vexo_cfgm_get_usr_info(2, &user), 0);
    EXPECT_EQ(user.usr_name[0], 0x5A);
}

TEST(Configuration, Capability_CountsTheCamerasAndIsOneRecord) {
    const vexo_dev_capability* capability = vexo_cfgm_get_dev_cap();
    ASSERT_NE(capability, nullptr);
    EXPECT_EQ(capability, &simulator::TheCapability());
    EXPECT_EQ(capability->analog_channels, 4U);
    EXPECT_EQ(capability->total_channels, 4U);
    EXPECT_EQ(capability->software_major, 1U);
    EXPECT_EQ(capability->software_minor, 0U);
    EXPECT_STREQ(capability->build_date, "2024-7-5");
}

TEST(Configuration, PlatformLinks_NotDescribed_AreOffAndEmpty) {
    VEXO_BOOL enable = VEXO_TRUE;
    char name[8] = "name";
    char value[8] = "value";
    EXPECT_EQ(vexo_cfgm_get_host_manager_enable(1, &enable), 0);
    EXPECT_EQ(enable, VEXO_FALSE);
    EXPECT_EQ(vexo_cfgm_get_host_manager_param(1, 1, name, sizeof name, value, sizeof value), 0);
    EXPECT_STREQ(value, "");
    EXPECT_NE(vexo_cfgm_get_host_manager_enable(33, &enable), 0);
    EXPECT_NE(vexo_cfgm_get_host_manager_param(1, 9, name, sizeof name, value, sizeof value), 0);
}

TEST(Configuration, Network_Default_IsOneFixedInterface) {
    ASSERT_NE(vexo_cfgm_get_network_cap(), nullptr);
    EXPECT_EQ(vexo_cfgm_get_network_cap()->eth_num, 1U);
    vexo_eth_cfg eth = {};
    ASSERT_EQ(vexo_cfgm_get_local_eth_cfg(vexo_cfgm_get_network_cap()->eth[0].name, &eth), 0);
    EXPECT_STREQ(eth.ip_addr, "192.0.2.20");
    EXPECT_NE(vexo_cfgm_get_local_eth_cfg("eth9", &eth), 0);
    unsigned port = 0;
    EXPECT_EQ(vexo_cfgm_get_rtsp_port(&port), 0);
    EXPECT_EQ(port, 554U);
}

TEST(Configuration, FaultOnOrder_LeavesTheOutputAsItWas) {
    unsigned port = 7;
    simulator::control::Fail("vexo_cfgm_get_http_port", 1);
    EXPECT_NE(vexo_cfgm_get_http_port(&port), 0);
    EXPECT_EQ(port, 7U);
    EXPECT_EQ(vexo_cfgm_get_http_port(&port), 0);
    EXPECT_EQ(port, 80U);
}

}  // namespace
