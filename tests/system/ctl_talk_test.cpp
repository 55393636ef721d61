// hostmgrctl talk: a tone that goes in is played at the recorder at its pitch and level, one that is there comes out;
// sound files of several kinds, files that are none. The library's own talk stands in talk_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "ctl_support.h"
#include "ctl_terminal.h"
#include "device_support.h"
#include "sound.h"

using ctl::CtlTest;
using ctl::Outcome;
using nlohmann::json;
using sound::ExpectTone;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2, NO_DATA = 3, NO_OUTPUT = 4 };

constexpr int RATE = 8000;
constexpr double LEVEL = 0.3;
const std::string TALK = "talk --json -t 60 ";  // patient: only a test that fails waits so long

/** 16-bit samples of a WAV file, full scale 1. */
std::vector<double> SamplesOf(const std::filesystem::path& path) {
    std::vector<double> samples;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) != 0) {
        return samples;
    }
    EXPECT_EQ(format->streams[0]->codecpar->codec_id, AV_CODEC_ID_PCM_S16LE);
    EXPECT_EQ(format->streams[0]->codecpar->sample_rate, RATE);
    EXPECT_EQ(format->streams[0]->codecpar->ch_layout.nb_channels, 1);
    AVPacket* packet = av_packet_alloc();
    while (av_read_frame(format, packet) == 0) {
        for (int i = 0; i + 1 < packet->size; i += 2) {
            samples.push_back(static_cast<int16_t>(packet->data[i] | packet->data[i + 1] << 8) / 32768.0);
        }
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avformat_close_input(&format);
    return samples;
}

void Put(std::ofstream& file, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        file.put(static_cast<char>(value >> (8 * i)));
    }
}

/** A tone on all channels, 16 bits. */
void WriteTone(const std::filesystem::path& path, double hz, int rate, unsigned channels, double seconds) {
    const auto frames = static_cast<unsigned>(seconds * rate);
    const unsigned bytes = frames * channels * 2;
    std::ofstream file(path, std::ios::binary);
    file << "RIFF";
    Put(file, 36 + bytes, 4);
    file << "WAVEfmt ";
    Put(file, 16, 4);
    Put(file, 1, 2);
    Put(file, channels, 2);
    Put(file, static_cast<uint32_t>(rate), 4);
    Put(file, static_cast<uint32_t>(rate) * channels * 2, 4);
    Put(file, channels * 2, 2);
    Put(file, 16, 2);
    file << "data";
    Put(file, bytes, 4);
    for (const double sample : sound::Tone(hz, LEVEL, frames, rate)) {
        for (unsigned channel = 0; channel < channels; ++channel) {
            Put(file, static_cast<uint32_t>(std::lround(sample * 32767)), 2);
        }
    }
}

double Decibels(double amplitude) {
    return 20 * std::log10(amplitude);
}

class CtlTalkTest : public CtlTest {
protected:
    CtlTalkTest() {
        std::filesystem::remove_all(device::Home() / "talk");
        UseScenario(R"({"cameras": [{}, {"audio": {"hz": 1250, "level": 0.7}}], "talk": {"hz": 620, "level": 0.4}})");
    }

    /** What the recorder has played, in the only talk there was. */
    static std::vector<double> Played(const std::string& with) {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(device::Home() / "talk")) {
            files.push_back(entry.path());
        }
        EXPECT_EQ(files.size(), 1U);
        EXPECT_THAT(files.empty() ? "" : files[0].filename().string(), HasSubstr("_" + with + "_"));
        return files.empty() ? std::vector<double>() : SamplesOf(files[0]);
    }
};

// ---- in ------------------------------------------------------------------------------------------------------------

struct InputCase {
    const char* name;
    int rate;
    unsigned channels;
    const char* law;
};

class CtlTalkInputTest : public CtlTalkTest, public testing::WithParamInterface<InputCase> {};

TEST_P(CtlTalkInputTest, Talk_ToneIn_IsPlayedAtItsPitchAndLevel) {
    WriteTone(At("tone.wav"), 440, GetParam().rate, GetParam().channels, 2);
    const Outcome outcome = Run(TALK + "-i tone.wav --law " + GetParam().law);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<double> played = Played("recorder");
    EXPECT_NEAR(static_cast<double>(played.size()), 2 * RATE, 320) << "whole frames, and nothing lost";
    ExpectTone({played.begin() + 400, played.begin() + 400 + RATE}, 440, LEVEL);
    const json sent = json::parse(outcome.out).at("sent");
    EXPECT_EQ(sent.at("path"), "tone.wav");
    EXPECT_NEAR(sent.at("seconds").get<double>(), 2, 0.01);
    EXPECT_NEAR(sent.at("level_dbfs").get<double>(), Decibels(LEVEL / std::sqrt(2)), 0.2);
    EXPECT_NEAR(sent.at("peak_dbfs").get<double>(), Decibels(LEVEL), 0.2);
}

INSTANTIATE_TEST_SUITE_P(Kinds, CtlTalkInputTest,
                         testing::Values(InputCase{"AsSent", 8000, 1, "a"}, InputCase{"OtherLaw", 8000, 1, "u"},
                                         InputCase{"StereoOfACompactDisc", 44100, 2, "a"}),
                         [](const auto& it) { return it.param.name; });

TEST_F(CtlTalkTest, Talk_WithAChannel_IsPlayedAndHeardThere) {
    WriteTone(At("tone.wav"), 440, RATE, 1, 2);
    const Outcome outcome = Run(TALK + "-c 2 -i tone.wav -o heard.wav");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    ExpectTone(Played("channel-2"), 440, LEVEL);
    const std::vector<double> heard = SamplesOf(At("heard.wav"));
    EXPECT_EQ(heard.size(), 2U * RATE) << "as long as the input";
    ExpectTone(heard, 1250, 0.7);
    EXPECT_EQ(json::parse(outcome.out).at("channel"), 2);
}

TEST_F(CtlTalkTest, Talk_Seconds_CutTheInput) {
    WriteTone(At("tone.wav"), 440, RATE, 1, 60);
    const Outcome outcome = Run(TALK + "-i tone.wav -s 1");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(json::parse(outcome.out).at("sent").at("seconds"), 1);
    EXPECT_EQ(Played("recorder").size(), RATE);
}

TEST_F(CtlTalkTest, Talk_InputThatIsNoSound_IsRefusedBeforeAnythingIsDone) {
    std::ofstream(At("text.txt")) << "This is no sound.\n";
    std::ofstream(At("empty.wav")).flush();
    WriteTone(At("silent.wav"), 440, RATE, 1, 0);
    std::filesystem::create_directory(At("folder.wav"));
    std::ofstream(At("heard.wav")) << "precious";
    for (const char* name : {"text.txt", "empty.wav", "silent.wav", "folder.wav", "missing.wav"}) {
        const Outcome outcome = Run(std::string("talk -o heard.wav -i ") + name);
        EXPECT_EQ(outcome.status, USAGE) << name;
        EXPECT_THAT(outcome.out, IsEmpty()) << name;
        EXPECT_THAT(outcome.err, HasSubstr(std::string("cannot read the sound of ") + name + ": ")) << name;
    }
    EXPECT_THAT(Run("talk -i missing.wav").err, HasSubstr("No such file or directory"));
    EXPECT_THAT(Run("talk -i text.txt").err, HasSubstr("it is no sound file"));
    EXPECT_EQ(ctl::Contents(At("heard.wav")), "precious");
    EXPECT_FALSE(std::filesystem::exists(device::Home() / "talk")) << "no talk was begun";
}

// ---- out -----------------------------------------------------------------------------------------------------------

TEST_F(CtlTalkTest, Talk_ToneThere_ComesOutAtItsPitchAndLevel) {
    const Outcome outcome = Run(TALK + "-o heard.wav -s 2");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<double> heard = SamplesOf(At("heard.wav"));
    EXPECT_EQ(heard.size(), 2U * RATE);
    ExpectTone(heard, 620, 0.4);
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("channel"), 0);
    EXPECT_EQ(summary.at("sent"), nullptr);
    EXPECT_EQ(summary.at("heard").at("seconds"), 2);
    EXPECT_EQ(summary.at("heard").at("codec"), "G.711 A-law");
    EXPECT_NEAR(summary.at("heard").at("level_dbfs").get<double>(), Decibels(0.4 / std::sqrt(2)), 0.2);
    EXPECT_EQ(summary.at("stopped"), false);
    EXPECT_EQ(summary.at("file").at("path"), "heard.wav");
    EXPECT_EQ(summary.at("file").at("bytes"), std::filesystem::file_size(At("heard.wav")));
    EXPECT_FALSE(std::filesystem::exists(At("heard.wav.part")));
}

TEST_F(CtlTalkTest, Talk_Silence_HasNoLevel) {
    UseScenario(R"({"talk": {"hz": 0}})");
    const json heard = json::parse(Run(TALK + "-s 1").out).at("heard");
    // G.711 has no sample of exactly nothing: the smallest is what silence becomes.
    EXPECT_LT(heard.at("level_dbfs").is_null() ? -100 : heard.at("level_dbfs").get<double>(), -60);
}

TEST_F(CtlTalkTest, Talk_Text_FitsAndTellsBothWays) {
    WriteTone(At("tone.wav"), 440, RATE, 1, 1);
    const Outcome outcome = Run("talk -t 60 -i tone.wav -o heard.wav");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, testing::StartsWith("talk with the recorder\n  sent    1.0 s, G.711 A-law\n"));
    EXPECT_THAT(outcome.out, HasSubstr("  heard   1.0 s, G.711 A-law\n          level -1"));
    EXPECT_THAT(outcome.out, HasSubstr("  file    heard.wav, "));
    EXPECT_THAT(outcome.err, Not(HasSubstr("dBFS"))) << "no meter where there is no terminal";
}

TEST_F(CtlTalkTest, Talk_OnATerminal_ShowsALevelMeter) {
    WriteTone(At("tone.wav"), 440, RATE, 1, 3);
    ctl::TerminalRun run({HOSTMGRCTL, "talk", "-t", "60", "-i", "tone.wav", "-o", "heard.wav"}, At("."));
    EXPECT_EQ(run.Follow(), OK) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr("\r\033[K"));
    EXPECT_THAT(run.Shown(), ContainsRegex("heard .##########\\.\\.. -1[01]\\.[0-9]  sent"));
    EXPECT_THAT(run.Shown(), ContainsRegex("sent .#########\\.\\.\\.. -13\\.[0-9] dBFS"));
    EXPECT_THAT(run.Shown(), Not(HasSubstr("talk with"))) << "data goes to standard output";
}

TEST_F(CtlTalkTest, Talk_Interrupted_LeavesACompleteFile) {
    ctl::TerminalRun run({HOSTMGRCTL, "talk", "-t", "60", "-s", "0", "-o", "heard.wav"}, At("."));
    EXPECT_EQ(run.Follow("heard [##########..]"), OK);
    EXPECT_GE(SamplesOf(At("heard.wav")).size(), 8U * 320);
    EXPECT_THAT(ctl::Contents(At("stdout.txt")), HasSubstr("  ended   on request, before its time\n"));
}

TEST_F(CtlTalkTest, Talk_NothingHeard_SaysSoAndLeavesAnEarlierFileAlone) {
    UseScenario(R"({"faults": [{"operation": "vexo_model_get_talking_frame", "times": 1000000}]})");
    std::ofstream(At("heard.wav")) << "precious";
    const Outcome outcome = Run("talk -t 0.5 -o heard.wav");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("the recorder gave no sound for 0.5 seconds"));
    EXPECT_EQ(ctl::Contents(At("heard.wav")), "precious");
}

TEST_F(CtlTalkTest, Talk_OutputThatCannotBe_IsAnErrorBeforeAnythingIsDone) {
    EXPECT_EQ(Run("talk -o heard.mp3").status, USAGE);
    EXPECT_THAT(Run("talk -o heard.mp3").err, HasSubstr("end the name with .wav"));
    EXPECT_EQ(Run("talk -o nowhere/heard.wav").status, NO_OUTPUT);
    EXPECT_FALSE(std::filesystem::exists(device::Home() / "talk"));
}

TEST_F(CtlTalkTest, Talk_Refused_SaysWhy) {
    const Outcome unknown = Run("talk -c 9 -s 1");
    EXPECT_EQ(unknown.status, REFUSED);
    EXPECT_THAT(unknown.err, HasSubstr("no talk with channel 9: does the recorder have that channel?"));
    EXPECT_THAT(unknown.err, HasSubstr("the recorder says: "));
}

TEST_F(CtlTalkTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments :
         {"talk -c 257", "talk -c x", "talk --law x", "talk -s -1", "talk -t 0", "talk extra"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
