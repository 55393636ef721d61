// recorderctl against a running simulated recorder, which is this test process.
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "control.h"
#include "core/power.h"
#include "device_support.h"

namespace control = simulator::control;
using device::Contents;
using device::Home;

namespace {

class WholeRecorder : public device::Recorder {
public:
    WholeRecorder() : Recorder(R"({"name": "panel test", "channels": 3})") {}
    void SetUp() override {
        Recorder::SetUp();
        ASSERT_NE(vexo_model_get_dev_capability(), nullptr);  // the model library is part of this program
    }
};
[[maybe_unused]] const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new WholeRecorder);

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

Outcome Ctl(const std::string& arguments) {
    const std::string out = Home() / "stdout.txt";
    const std::string err = Home() / "stderr.txt";
    const std::string command = "'" RECORDERCTL "' " + arguments + " >'" + out + "' 2>'" + err + "' </dev/null";
    const int status = system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128, Contents(out), Contents(err)};
}

void ExpectDone(const std::string& arguments) {
    const Outcome outcome = Ctl(arguments);
    EXPECT_EQ(outcome.status, 0) << arguments;
    EXPECT_EQ(outcome.out + outcome.err, "") << arguments;
}

bool Present(const std::string& event) {
    const std::vector<std::string> events = control::Events();
    return std::find(events.begin(), events.end(), event) != events.end();
}

TEST(Recorderctl, EventCommands_BeginAndEndTheirEvents) {
    struct Pair {
        const char* begin;
        const char* end;
        const char* event;
    };
    for (const Pair& pair :
         {Pair{"motion 2 on", "motion 2 off", "motion, channel 2"},
          Pair{"shelter 1 on", "shelter 1 off", "shelter, channel 1"},
          Pair{"camera 3 lost", "camera 3 back", "video loss, channel 3"},
          Pair{"input 4 on", "input 4 off", "input, input 4"},
          Pair{"camera-input 1 on", "camera-input 1 off", "camera input, channel 1"},
          Pair{"disk 1 full", "disk 1 ok", "disk full, disk 1"},
          Pair{"disk 2 error", "disk 2 ok", "disk error, disk 2"}, Pair{"network lost", "network ok", "network lost"},
          Pair{"network conflict", "network ok", "address conflict"}}) {
        ExpectDone(pair.begin);
        EXPECT_TRUE(Present(pair.event)) << pair.begin;
        ExpectDone(pair.end);
        EXPECT_FALSE(Present(pair.event)) << pair.end;
    }
}

TEST(Recorderctl, Camera_Lost_HasNoSignal) {
    ExpectDone("camera 3 lost");
    EXPECT_FALSE(control::HasSignal(3));
    ExpectDone("camera 3 back");
    EXPECT_TRUE(control::HasSignal(3));
}

TEST(Recorderctl, Fail_NthUse_FailsThenAndNotBefore) {
    ExpectDone("fail vexo_utility_creat_dir --nth 2 --times 2");
    const std::string path = Home() / "made";
    EXPECT_EQ(vexo_utility_creat_dir(path.c_str()), 0);
    EXPECT_NE(vexo_utility_creat_dir(path.c_str()), 0);
    EXPECT_NE(vexo_utility_creat_dir(path.c_str()), 0);
    EXPECT_EQ(vexo_utility_creat_dir(path.c_str()), 0);
}

TEST(Recorderctl, Power_OffAndOn) {
    ExpectDone("power off");
    EXPECT_EQ(simulator::ThePowerState(), simulator::PowerState::Off);
    ExpectDone("power on");
    EXPECT_EQ(simulator::ThePowerState(), simulator::PowerState::Running);
    const Outcome again = Ctl("power on");
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, "recorderctl: the recorder is not off: it is running\n");
    ExpectDone("power reboot");
    EXPECT_EQ(simulator::ThePowerState(), simulator::PowerState::Away);
    ExpectDone("skip 600");
    EXPECT_EQ(simulator::ThePowerState(), simulator::PowerState::Running);
}

TEST(Recorderctl, Status_ForAPerson_TellsWhatIsTheCase) {
    control::SetEvent("motion", 1, true);
    const Outcome outcome = Ctl("status");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("scenario \"panel test\""), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("running, up for "), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("  3 Camera 3: signal, looks at pan 0.50 tilt 0.50 zoom 1.0, record mode schedule\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("  motion, channel 1\n"), std::string::npos) << outcome.out;
    control::SetEvent("motion", 1, false);
}

TEST(Recorderctl, Status_AsJson_IsOneLineOfIt) {
    const Outcome outcome = Ctl("--json status");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
    const nlohmann::json status = nlohmann::json::parse(outcome.out, nullptr, false);
    ASSERT_TRUE(status.is_object());
    EXPECT_EQ(status["process"], getpid());
    EXPECT_EQ(status["channels"].size(), 3U);
    EXPECT_EQ(status["ptz"][0]["zoom"], 1.0);
    EXPECT_EQ(status["zero_channel"]["enabled"], false);
}

class Answering : public vexo_diagnose_client {
public:
    void diagnose(unsigned int command, vexo_print_func print) override {
        print("command %u: \xD5\xEF\xB6\xCF \xFF\n", command);  // GBK, and a byte that is not
    }
};

TEST(Recorderctl, Diagnose_ShowsTheAnswerInTheTerminalsEncoding) {
    static Answering answering;
    ASSERT_EQ(vexo_utility_regist_diag(&answering, "title", "menu"), 0);
    const Outcome outcome = Ctl("diagnose 5");
    EXPECT_EQ(outcome.out, "command 5: 诊断 ?\n") << outcome.err;
}

TEST(Recorderctl, Refusals_SayWhatIsWrongAndWhatThereIs) {
    const auto refusal = [](const char* arguments) {
        const Outcome outcome = Ctl(arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    };
    EXPECT_EQ(refusal("motion 4 on"), "recorderctl: there is no channel 4: the recorder has channels 1 to 3\n");
    EXPECT_EQ(refusal("disk 99 full"), "recorderctl: there is no disk 99: the recorder has disks 1 to 32\n");
    EXPECT_EQ(refusal("fail vexo_model_get_fram"),
              "recorderctl: \"vexo_model_get_fram\" is no operation that can be told to fail; the nearest one is "
              "\"vexo_model_get_frame\"\n");
}

TEST(Recorderctl, Arguments_ThatAreWrong_AreStatus2AndNeverReachTheRecorder) {
    for (const char* arguments : {"", "dance", "motion", "motion 2", "motion two on", "motion 2 maybe", "motion -1 on",
                                  "fail", "fail vexo_model_login --nth 0", "network perhaps", "--pid 0 status"}) {
        const Outcome outcome = Ctl(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_EQ(outcome.out, "") << arguments;
        EXPECT_NE(outcome.err, "") << arguments;
    }
}

TEST(Recorderctl, Help_OfEveryCommand_HasExamplesAndExitCodes) {
    EXPECT_NE(Ctl("--help").out.find("recorderctl COMMAND --help"), std::string::npos);
    for (const char* command : {"status", "motion", "shelter", "camera", "input", "camera-input", "disk", "network",
                                "fail", "power", "skip", "diagnose"}) {
        const Outcome outcome = Ctl(std::string(command) + " --help");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.out.find("recorderctl " + std::string(command)), std::string::npos) << outcome.out;
        EXPECT_NE(outcome.out.find("Exit codes:"), std::string::npos) << outcome.out;
    }
}

TEST(Recorderctl, NoRecorder_IsStatus3AndSaysWhatToDo) {
    const Outcome outcome = Ctl("--home /nonexistent status");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.err,
              "recorderctl: no simulated recorder is running with the home folder /nonexistent: start a program that "
              "uses it, or name another folder with --home\n");
    EXPECT_EQ(Ctl("--pid 1 status").status, 3);
}

TEST(Recorderctl, HomeFolder_WithALongPath_IsNoObstacle) {
    const std::filesystem::path deep = Home() / std::string(100, 'a') / std::string(100, 'b');
    std::filesystem::create_directories(deep);
    const std::string name = "panel." + std::to_string(getpid()) + ".sock";
    std::filesystem::create_symlink(Home() / name, deep / name);
    EXPECT_EQ(Ctl("--home '" + deep.string() + "' status").status, 0);
}

/** Speaks to the panel's socket as no tool would. */
std::string Raw(const std::string& request) {
    const int peer = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof address.sun_path, "%s/panel.%d.sock", Home().c_str(), getpid());
    EXPECT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(write(peer, request.data(), request.size()), static_cast<ssize_t>(request.size()));
    shutdown(peer, SHUT_WR);
    std::string answer;
    char piece[4096];
    for (ssize_t length; (length = read(peer, piece, sizeof piece)) > 0;) {
        answer.append(piece, static_cast<size_t>(length));
    }
    close(peer);
    return answer;
}

TEST(Recorderctl, Socket_HostileRequests_AreAnsweredWithAnError) {
    for (const std::string& request :
         {std::string(), std::string("\n"), std::string("hello\n"), std::string("[]\n"), std::string("{}\n"),
          std::string(R"({"command": "dance"})"
                      "\n"),
          std::string(R"({"command": 7})"
                      "\n"),
          std::string(R"({"command": "event"})"
                      "\n"),
          std::string(R"({"command": "event", "kind": "fire"})"
                      "\n"),
          std::string(R"({"command": "status", "more": 1})"
                      "\n"),
          std::string(R"({"command": "skip", "seconds": -1})"
                      "\n"),
          std::string(R"({"command": "power", "state": "sideways"})"
                      "\n"),
          std::string("\xFF\xFE\0\n", 4)}) {
        const nlohmann::json answer = nlohmann::json::parse(Raw(request), nullptr, false);
        EXPECT_TRUE(answer.is_object() && answer.contains("error")) << request;
    }
    EXPECT_EQ(Ctl("status").status, 0) << "the panel serves on";
}

TEST(Recorderctl, Socket_IsGoneAfterTheRecorder) {
    const std::filesystem::path home = Home() / "other";
    ASSERT_EQ(system(("RECORDER_HOME='" + home.string() + "' '" HOSTMGRCTL "' version >/dev/null").c_str()), 0);
    ASSERT_TRUE(std::filesystem::exists(home)) << "made for the socket";
    EXPECT_TRUE(std::filesystem::is_empty(home));
}

TEST(Recorderctl, TwoRecordersInOneHome_AskForAChoice) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        // A second socket that answers like a recorder's: bound and listening is all that the tool looks for.
        const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        snprintf(address.sun_path, sizeof address.sun_path, "%s/panel.1.sock", Home().c_str());
        const bool listens = bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                             listen(listener, 8) == 0 && write(ready[1], "r", 1) == 1;
        pause();
        _exit(listens ? 0 : 1);
    }
    char byte;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    const Outcome unclear = Ctl("status");
    EXPECT_EQ(unclear.status, 3);
    EXPECT_EQ(unclear.err, "recorderctl: several recorders are running with the home folder " + Home().string() +
                               ": choose one with --pid, of 1 " + std::to_string(getpid()) + "\n");
    EXPECT_EQ(Ctl("--pid " + std::to_string(getpid()) + " status").status, 0);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(Ctl("status").status, 0) << "a socket that nobody listens at does not count";
    std::filesystem::remove(Home() / "panel.1.sock");
    close(ready[0]);
    close(ready[1]);
}

}  // namespace
