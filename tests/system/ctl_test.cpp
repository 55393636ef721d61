// hostmgrctl, run as a person would run it, on the simulated recorder: exit codes, messages, clean output, files that
// open in an ordinary player. The library's own behaviour stands in live_test.cpp and session_test.cpp.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

#include "ctl_support.h"

using ctl::CtlTest;
using ctl::MediaView;
using ctl::Outcome;
using ctl::Track;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2, NO_DATA = 3, NO_OUTPUT = 4, GAVE_UP = 255 };

// However busy the machine is: only a test that fails waits so long.
const std::string PATIENT_LIVE = "live --timeout 60 ";

constexpr char SMALL_RECORDER[] = R"({"cameras": [{"main": {"width": 320, "height": 180, "fps": 25, "gop": 10}}]})";

constexpr const char* COMMANDS[] = {"version",  "login",    "live",     "zero",    "files",  "play",
                                    "download", "snapshot", "capture",  "talk",    "alarms", "alarm-status",
                                    "ptz",      "record",   "config",   "factory", "doc",    "diagnose",
                                    "log",      "reboot",   "poweroff", "restore"};

// ---- help and usage ------------------------------------------------------------------------------------------------

TEST_F(CtlTest, Help_EveryCommand_FitsAndNamesFunctionsExamplesAndExitCodes) {
    for (const std::string command : COMMANDS) {
        const Outcome outcome = Run(command + " --help");
        EXPECT_EQ(outcome.status, OK);
        EXPECT_THAT(outcome.out, HasSubstr("Exported functions (vexo_HostMgr_Dev_...):\n  init")) << command;
        EXPECT_THAT(outcome.out, HasSubstr("Examples:\n  hostmgrctl " + command)) << command;
        EXPECT_THAT(outcome.out, HasSubstr("Exit codes:\n  0 ")) << command;
        for (const std::string& line : ctl::Lines(outcome.out)) {
            EXPECT_LE(line.size(), 80U) << line;
        }
    }
}

TEST_F(CtlTest, Help_WithoutCommand_ListsTheCommands) {
    const Outcome outcome = Run("--help");
    EXPECT_EQ(outcome.status, OK);
    for (const std::string command : COMMANDS) {
        EXPECT_THAT(outcome.out, HasSubstr("  " + command + " "));
    }
    for (const std::string& line : ctl::Lines(outcome.out)) {
        EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST_F(CtlTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments : {"", "nothing", "live -c 0", "live -c 257", "live -c x", "live -S third", "live -n 0",
                                  "live -s -1", "live --timeout 0", "live extra", "live -o picture.jpg"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

TEST_F(CtlTest, Arguments_Wrong_AreToldInOneLineThatNamesTheHelp) {
    EXPECT_EQ(Run("").err, "hostmgrctl: A subcommand is required; see hostmgrctl --help\n");
    EXPECT_EQ(Run("nothing").err, "hostmgrctl: \"nothing\" is no command; see hostmgrctl --help\n");
    EXPECT_EQ(Run("--nothing").err, "hostmgrctl: \"--nothing\" is no command; see hostmgrctl --help\n");
    EXPECT_EQ(Run("live --nothing").err,
              "hostmgrctl: The following argument was not expected: --nothing; see hostmgrctl live --help\n");
    EXPECT_EQ(Run("ptz").err, "hostmgrctl: order is required; see hostmgrctl ptz --help\n");
}

// ---- version and login ---------------------------------------------------------------------------------------------

TEST_F(CtlTest, Version_NamesToolAndLibraryFile) {
    const Outcome text = Run("version");
    EXPECT_EQ(text.status, OK);
    EXPECT_THAT(text.out, HasSubstr("libhostmgr.so"));
    EXPECT_THAT(text.out, HasSubstr("initialises  yes\n"));
    const json object = json::parse(Run("version --json").out);
    EXPECT_TRUE(std::filesystem::exists(object.at("library").get<std::string>()));
    EXPECT_TRUE(object.at("initialises").get<bool>());
}

TEST_F(CtlTest, Login_Good_PrintsTheHandle) {
    EXPECT_THAT(Run("login").out, HasSubstr("logged in as the recorder's own user: handle "));
    const Outcome outcome = Run("login -u admin -p admin12345 -a 10.1.2.3 --json");
    EXPECT_EQ(outcome.status, OK);
    const json object = json::parse(outcome.out);
    EXPECT_GE(object.at("login").get<int>(), 1);
    EXPECT_FALSE(object.at("local").get<bool>());
}

TEST_F(CtlTest, Login_Refused_SaysWhoAndWhatTheRecorderSays) {
    for (const char* credentials : {"-u admin -p wrong", "-u admin", "-p admin12345", "-u '' -p ''"}) {
        const Outcome outcome = Run(std::string("login ") + credentials);
        EXPECT_EQ(outcome.status, REFUSED) << credentials;
        EXPECT_THAT(outcome.out, IsEmpty());
        EXPECT_THAT(outcome.err, HasSubstr("refused"));
        EXPECT_THAT(outcome.err, HasSubstr("the recorder says: HostMgr_Dev_LoginV2["));
        EXPECT_THAT(outcome.err, HasSubstr("vexo_model_remote_login failed !!\n"));
        EXPECT_THAT(outcome.err, Not(HasSubstr("\033")));
    }
}

TEST_F(CtlTest, Verbose_LibraryLines_GoToStandardErrorWithoutColour) {
    const Outcome outcome = Run("login -u admin -p wrong --verbose");
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("[HOSTMGR] ERROR! HostMgr_Dev_LoginV2["));
    EXPECT_THAT(outcome.err, Not(HasSubstr("\033")));
}

TEST_F(CtlTest, LibraryGivesUp_LastWordsAreShown) {
    UseScenario(R"({"faults": [{"operation": "vexo_utility_new_lock"}]})");
    const Outcome outcome = Run("version --json");
    EXPECT_EQ(outcome.status, GAVE_UP);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("the library gave up"));
    EXPECT_THAT(outcome.err, HasSubstr(">Condition: m_lock != NULL"));
}

// ---- live: figures -------------------------------------------------------------------------------------------------

TEST_F(CtlTest, Live_Json_IsCleanAndTellsTheChannel) {
    const Outcome outcome = Run(PATIENT_LIVE + "-c 2 -S sub -n 24 --json");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("channel"), 2);
    EXPECT_EQ(summary.at("stream"), "sub");
    EXPECT_EQ(summary.at("video").at("frames"), 24);
    EXPECT_EQ(summary.at("video").at("lost"), 0);
    EXPECT_EQ(summary.at("video").at("width"), 352);
    EXPECT_EQ(summary.at("video").at("height"), 288);
    EXPECT_EQ(summary.at("video").at("key_frames"), 2);
    EXPECT_EQ(summary.at("audio").at("codec"), "G.711 A-law");
    EXPECT_EQ(summary.at("audio").at("bytes"), 320 * summary.at("audio").at("frames").get<int>());
    EXPECT_EQ(summary.at("file"), nullptr);
    EXPECT_EQ(summary.at("stopped"), false);
}

TEST_F(CtlTest, Live_Text_TellsFramesRateSizeAndAge) {
    UseScenario(SMALL_RECORDER);
    const Outcome outcome = Run(PATIENT_LIVE + "-s 2");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("channel 1, main stream\n  video   "));
    EXPECT_THAT(outcome.out, HasSubstr("key frames\n          H.264, 320x180 pixels, "));
    EXPECT_THAT(outcome.out, HasSubstr("G.711 A-law, "));
    EXPECT_THAT(outcome.out, HasSubstr("  age     the last picture was "));
}

TEST_F(CtlTest, Live_Seconds_AreThePicturesOwn) {
    UseScenario(SMALL_RECORDER);
    const json summary = json::parse(Run(PATIENT_LIVE + "-s 2 --json").out);
    const json& video = summary.at("video");
    const auto seconds = video.at("seconds").get<double>();
    const auto rate = video.at("rate").get<double>();
    EXPECT_GT(seconds, 0);
    EXPECT_LE(seconds, 2);
    EXPECT_NEAR(rate * seconds + 1, video.at("frames").get<double>(), 0.5);
}

TEST_F(CtlTest, Live_NoSignal_IsTold) {
    UseScenario(R"({"cameras": [{"signal": false, "main": {"width": 320, "height": 180}}]})");
    EXPECT_THAT(Run(PATIENT_LIVE + "-n 10").out, HasSubstr("reports no video signal in 10 of 10 frames"));
    EXPECT_EQ(json::parse(Run(PATIENT_LIVE + "-n 10 --json").out).at("video").at("no_signal_frames"), 10);
}

TEST_F(CtlTest, Live_UnknownChannel_SaysSoAfterTheTimeout) {
    const Outcome outcome = Run("live -c 99 --timeout 0.5 -o file.mkv");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err,
                HasSubstr("channel 99 gave no picture for 0.5 seconds: does the recorder have that channel?"));
    EXPECT_FALSE(std::filesystem::exists(At("file.mkv")));
}

// ---- live: files ---------------------------------------------------------------------------------------------------

void ExpectRising(const std::vector<double>& times) {
    for (size_t i = 1; i < times.size(); ++i) {
        EXPECT_GT(times[i], times[i - 1]) << i;
    }
}

struct FileCase {
    const char* extension;
    AVCodecID audio;
    long packet_samples;  ///< samples of sound in a packet
};

class CtlFileTest : public CtlTest, public testing::WithParamInterface<FileCase> {};

TEST_P(CtlFileTest, Live_File_OpensWithEveryFrame) {
    const std::string name = std::string("channel.") + GetParam().extension;
    const Outcome outcome = Run(PATIENT_LIVE + "-c 1 -n 60 --json -o " + name);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    const MediaView file(At(name));
    const Track video = file.Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_EQ(file.Count(), GetParam().audio == AV_CODEC_ID_NONE ? 1U : 2U);
    EXPECT_EQ(video.codec, AV_CODEC_ID_H264);
    EXPECT_EQ(video.width, 1280);
    EXPECT_EQ(video.height, 720);
    EXPECT_EQ(video.times.size(), 60U);
    EXPECT_EQ(video.decoded, 60U);
    EXPECT_TRUE(video.first_is_key);
    EXPECT_EQ(summary.at("file").at("video_packets"), 60);
    EXPECT_EQ(summary.at("file").at("bytes"), std::filesystem::file_size(At(name)));
    const Track audio = file.Only(AVMEDIA_TYPE_AUDIO);
    EXPECT_EQ(audio.codec, GetParam().audio);
    EXPECT_EQ(audio.samples > 0, GetParam().audio != AV_CODEC_ID_NONE);
    EXPECT_NEAR(audio.samples, GetParam().packet_samples * summary.at("file").at("audio_packets").get<long>(),
                GetParam().audio == AV_CODEC_ID_AAC ? GetParam().packet_samples : 0)
        << "an AAC encoder begins with a packet of its own";
}

INSTANTIATE_TEST_SUITE_P(Containers, CtlFileTest,
                         testing::Values(FileCase{"mkv", AV_CODEC_ID_PCM_ALAW, 320},
                                         FileCase{"mov", AV_CODEC_ID_PCM_ALAW, 320},
                                         FileCase{"mp4", AV_CODEC_ID_AAC, 1024}, FileCase{"h264", AV_CODEC_ID_NONE, 0}),
                         [](const auto& file) { return file.param.extension; });

// A camera's pictures are evenly spaced, and so are they in the file.
TEST_F(CtlTest, Live_File_KeepsTheFramesTimes) {
    const json summary = json::parse(Run(PATIENT_LIVE + "-s 3 -o file.mkv --json").out);
    const MediaView file(At("file.mkv"));
    const Track video = file.Only(AVMEDIA_TYPE_VIDEO);
    ASSERT_GE(video.times.size(), 2U);
    ExpectRising(video.times);
    ExpectRising(file.Only(AVMEDIA_TYPE_AUDIO).times);
    EXPECT_NEAR(video.times.back() - video.times.front(), summary.at("video").at("seconds").get<double>(), 0.01);
}

TEST_F(CtlTest, Live_SubStream_KeepsThePicturesShape) {
    ASSERT_EQ(Run(PATIENT_LIVE + "-S sub -n 12 -o file.mkv").status, OK);
    const Track video = MediaView(At("file.mkv")).Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_NEAR(video.width * av_q2d(video.shape) / video.height, 1280.0 / 720, 0.01);
}

TEST_F(CtlTest, Live_NoAudio_WritesVideoAlone) {
    const json summary = json::parse(Run(PATIENT_LIVE + "-n 20 --no-audio -o file.mkv --json").out);
    EXPECT_EQ(summary.at("audio"), nullptr);
    EXPECT_EQ(MediaView(At("file.mkv")).Count(), 1U);
}

TEST_F(CtlTest, Live_FileWithoutRoom_IsAnOutputError) {
    std::filesystem::create_symlink("/dev/full", At("file.mkv"));
    const Outcome outcome = Run(PATIENT_LIVE + "-n 60 -o file.mkv");
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write file.mkv: No space left on device"));
}

TEST_F(CtlTest, Live_FolderThatIsNotThere_IsAnOutputErrorBeforeAnythingIsRead) {
    const Outcome outcome = Run("live -c 99 -t 0.1 -o nowhere/file.mkv");
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write nowhere/file.mkv: No such file or directory"));
}

TEST_F(CtlTest, Live_NothingRead_LeavesAnEarlierFileAlone) {
    std::ofstream(At("file.mkv")) << "precious";
    EXPECT_EQ(Run("live -u admin -p wrong -o file.mkv").status, REFUSED);
    EXPECT_EQ(Run("live -c 99 -t 0.1 -o file.mkv").status, NO_DATA);
    EXPECT_EQ(ctl::Contents(At("file.mkv")), "precious");
}

TEST_F(CtlTest, Output_ReaderIsFull_IsAnOutputError) {
    const Outcome outcome = Run("version", ">/dev/full");
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write to standard output"));
}

/** Starts the tool and interrupts it when a file has grown to that size; the exit status. */
int InterruptWhenWritten(const std::filesystem::path& file, uintmax_t size) {
    const std::string path = file.string();
    const char* const arguments[] = {HOSTMGRCTL, "live", "-t", "60", "-s", "0", "-o", path.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (path + ".txt").c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t child = -1;
    const int spawned =
        posix_spawn(&child, HOSTMGRCTL, &actions, nullptr, const_cast<char* const*>(arguments), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        return -1;
    }
    int status = 0;
    std::error_code error;
    while (waitpid(child, &status, WNOHANG) == 0) {
        const uintmax_t written = std::filesystem::file_size(file, error);
        if (!error && written >= size) {
            kill(child, SIGINT);
            waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(CtlTest, Live_Interrupted_LeavesACompleteFile) {
    UseScenario(SMALL_RECORDER);
    EXPECT_EQ(InterruptWhenWritten(At("file.mp4"), 100000), OK);
    const MediaView file(At("file.mp4"));
    const Track video = file.Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_GT(video.times.size(), 10U);
    EXPECT_EQ(video.decoded, video.times.size());
    EXPECT_EQ(file.Count(), 2U);
    EXPECT_THAT(ctl::Contents(At("file.mp4.txt")), HasSubstr("  ended   on request, before its time\n"));
}

}  // namespace
