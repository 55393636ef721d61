// hostmgrctl's files, play and download, run as a person would run them: tables, JSON, exit codes, and files whose
// pictures say when they were made. The library's own behaviour stands in playback_test.cpp and its sisters.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

#include "ctl_support.h"
#include "live_reader.h"

using ctl::MediaView;
using ctl::Outcome;
using ctl::Track;
using nlohmann::json;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2, NO_DATA = 3, NO_OUTPUT = 4, PARTIAL = 5 };

constexpr unsigned LENGTH = 6;  // seconds of a recording: as the scenario says, and what follows
constexpr unsigned FPS = 5;
constexpr uint64_t PERIOD = 1000 / FPS;  // milliseconds from picture to picture
const std::string DAY = "2024-01-05";
const std::string WHOLE = " --from '2024-01-05 11:00' --to '2024-01-05 12:00' ";
const std::string PATIENT = " --timeout 60 ";  // however busy the machine is

std::string Scenario(const std::string& until, const std::string& more = "") {
    return R"({"cameras": [{"main": {"width": 320, "height": 240}, "sub": {"width": 160, "height": 120}},
                           {"main": {"width": 320, "height": 240}, "sub": {"width": 160, "height": 120}}],
               "recordings": {"live": "off", "history": {"hours": 1, "segments": 4, "seconds": 6, "fps": 5, "gop": 5,
                                                         "width": 320, "until": ")" +
           until + "\"}}" + more + "}";
}

/** One recording as "files --json" lists it. */
struct Listed {
    time_t start = 0;
    time_t stop = 0;
    std::vector<unsigned> types;
};

/** The instant of "2024-01-05T11:00:00+01:00". */
time_t InstantOf(const std::string& text) {
    struct tm time = {};
    strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S%z", &time);
    const long offset = time.tm_gmtoff;
    return timegm(&time) - offset;
}

std::string Local(time_t seconds) {
    struct tm local = {};
    localtime_r(&seconds, &local);
    char text[64];
    strftime(text, sizeof(text), "'%Y-%m-%d %H:%M:%S'", &local);
    return text;
}

std::string RangeOf(time_t from, time_t to) {
    return " --from " + Local(from) + " --to " + Local(to) + " ";
}

class CtlRecordingsTest : public ctl::CtlTest {
protected:
    CtlRecordingsTest() {
        setenv("TZ", "UTC", 1);
        tzset();
        UseScenario(Scenario("2024-01-05 12:00:00"));
    }

    std::vector<Listed> List(unsigned channel, const std::string& options = WHOLE) const {
        const Outcome outcome = Run("files --json -c " + std::to_string(channel) + options);
        EXPECT_EQ(outcome.status, OK) << outcome.err;
        std::vector<Listed> list;
        const json found = json::parse(outcome.out);
        for (const json& file : found.at("channels").at(0).at("files")) {
            list.push_back({InstantOf(file.at("start")), InstantOf(file.at("stop")), file.at("types")});
        }
        return list;
    }

    std::vector<std::string> FilesThere() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(At("."))) {
            const std::string name = entry.path().filename();
            if (name.rfind("std", 0) != 0 && name != "scenario.json") {
                names.push_back(name);
            }
        }
        return names;
    }
};

/** When pictures are made from one second up to another, in milliseconds since 1970. */
std::vector<uint64_t> PictureTimes(time_t from, time_t to, uint64_t period = PERIOD) {
    std::vector<uint64_t> times;
    for (uint64_t time = from * 1000ULL; time < to * 1000ULL; time += period) {
        times.push_back(time);
    }
    return times;
}

std::vector<uint64_t> PictureTimes(const std::vector<Listed>& list) {
    std::vector<uint64_t> times;
    for (const Listed& listed : list) {
        const std::vector<uint64_t> some = PictureTimes(listed.start, listed.stop);
        times.insert(times.end(), some.begin(), some.end());
    }
    return times;
}

/** What the pictures of a file say when they were made, in milliseconds since 1970, and by which channel. */
struct Stamps {
    std::vector<uint64_t> times;
    std::vector<unsigned> channels;

    explicit Stamps(const std::filesystem::path& path) {
        AVFormatContext* format = nullptr;
        if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) != 0 ||
            avformat_find_stream_info(format, nullptr) < 0) {
            return;
        }
        const int video = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        AVCodecContext* codec = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264));
        avcodec_parameters_to_context(codec, format->streams[video]->codecpar);
        codec->thread_count = 1;
        avcodec_open2(codec, nullptr, nullptr);
        AVPacket* packet = av_packet_alloc();
        while (av_read_frame(format, packet) == 0) {
            if (packet->stream_index == video) {
                avcodec_send_packet(codec, packet);
                Take(codec);
            }
            av_packet_unref(packet);
        }
        avcodec_send_packet(codec, nullptr);
        Take(codec);
        av_packet_free(&packet);
        avcodec_free_context(&codec);
        avformat_close_input(&format);
    }

private:
    void Take(AVCodecContext* codec) {
        AVFrame* frame = av_frame_alloc();
        while (avcodec_receive_frame(codec, frame) == 0) {
            const auto stamp = live::StampIn(*frame);
            times.push_back(stamp ? stamp->milliseconds : 0);
            channels.push_back(stamp ? stamp->channel : 0);
        }
        av_frame_free(&frame);
    }
};

void ExpectNarrow(const std::string& text) {
    for (const std::string& line : ctl::Lines(text)) {
        EXPECT_LE(line.size(), 80U) << line;
    }
}

// ---- files ---------------------------------------------------------------------------------------------------------

TEST_F(CtlRecordingsTest, Files_Json_IsCleanAndListsEveryRecording) {
    const Outcome outcome = Run("files --json -c 2" + WHOLE);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const json list = json::parse(outcome.out);
    EXPECT_EQ(list.at("from"), "2024-01-05T11:00:00+00:00");
    EXPECT_EQ(list.at("to"), "2024-01-05T12:00:00+00:00");
    const json& channel = list.at("channels").at(0);
    EXPECT_EQ(channel.at("channel"), 2);
    EXPECT_EQ(channel.at("seconds"), 4 * LENGTH);
    ASSERT_EQ(channel.at("files").size(), 4U);
    const json types = {{1}, {2}, {4}, {2, 4}};
    for (size_t i = 0; i < 4; ++i) {
        const json& file = channel.at("files").at(i);
        EXPECT_EQ(file.at("seconds"), LENGTH);
        EXPECT_EQ(InstantOf(file.at("stop")) - InstantOf(file.at("start")), LENGTH);
        EXPECT_EQ(file.at("types"), types.at(i));
        EXPECT_EQ(file.at("info").size(), 2U);
    }
}

TEST_F(CtlRecordingsTest, Files_Text_FitsAndHasALineForEach) {
    const std::vector<Listed> list = List(1);
    setenv("LC_ALL", "C", 1);
    const Outcome text = Run("files" + WHOLE);
    EXPECT_EQ(text.status, OK) << text.err;
    EXPECT_THAT(text.out, StartsWith("channel 1: 4 recordings, 24 s in all\n"));
    for (const Listed& listed : list) {
        const std::string start = Local(listed.start);
        EXPECT_THAT(text.out, HasSubstr("  " + start.substr(1, start.size() - 2) + " +00:00  6 s "));
    }
    ExpectNarrow(text.out);
}

TEST_F(CtlRecordingsTest, Files_Bars_StandWhereTheDayIsRecorded) {
    setenv("LC_ALL", "C", 1);
    const Outcome outcome = Run("files --bars -c 1,2 --from 2024-01-05 --to '2024-01-05 23:59:59'");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<std::string> lines = ctl::Lines(outcome.out);
    std::vector<std::string> bars;
    for (size_t i = 1; i < lines.size(); ++i) {
        if (lines[i - 1].find("  00       03       06") == 0) {
            bars.push_back(lines[i].substr(2));
        }
    }
    ASSERT_EQ(bars.size(), 2U) << outcome.out;
    for (const unsigned channel : {1U, 2U}) {
        std::string expected(72, '.');
        for (const Listed& listed : List(channel)) {
            expected[static_cast<size_t>(listed.start % 86400 / 1200)] = '-';
        }
        EXPECT_EQ(bars[channel - 1], expected) << channel;
    }
    EXPECT_THAT(outcome.out, Not(HasSubstr("number  start")));
}

TEST_F(CtlRecordingsTest, Files_Type_FindsThoseAlone) {
    EXPECT_EQ(List(1, WHOLE + "--type 1").size(), 1U);
    EXPECT_EQ(List(1, WHOLE + "--type 2").size(), 2U);
    EXPECT_EQ(List(1, WHOLE + "--type '2|4'").size(), 3U);
    EXPECT_EQ(List(1, WHOLE + "--type 2+4").at(0).types, std::vector<unsigned>({2, 4}));
}

TEST_F(CtlRecordingsTest, Files_NothingRecorded_SaysSo) {
    const Outcome outcome = Run("files --from '2023-01-05 11:00' --to +1h");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("nothing is recorded from 2023-01-05 11:00:00 to 2023-01-05 12:00:00 +00:00"));
}

TEST_F(CtlRecordingsTest, Files_UnknownChannel_IsRefused) {
    const Outcome outcome = Run("files -c 9" + WHOLE);
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, HasSubstr("channel 9 failed: does the recorder have that channel?"));
}

// ---- arguments -----------------------------------------------------------------------------------------------------

TEST_F(CtlRecordingsTest, Arguments_Wrong_AreUsageErrorsThatSayWhatToDo) {
    for (const char* arguments : {"files -c 0",
                                  "files -c 257",
                                  "files -c 2-1",
                                  "files -c 1,,2",
                                  "files -c x",
                                  "files --from soon",
                                  "files --from 25:00",
                                  "files --from 2024-02-30",
                                  "files --from -1w",
                                  "files --from +1h",
                                  "files --from ''",
                                  "files --from now --to -1h",
                                  "files --from '2024-01-05 11:00 +1'",
                                  "files --type 3",
                                  "play -x 33",
                                  "play -x -33",
                                  "play --then pause",
                                  "play --then 1:dance",
                                  "play --then 1:speed=33",
                                  "play --then 1:add=0",
                                  "play --then 1:pause=1",
                                  "play --then 1:seek=never",
                                  "play --then -1:pause",
                                  "play -o picture.jpg",
                                  "play -n 0",
                                  "download",
                                  "download -o picture.jpg",
                                  "download -o x.mkv -S third"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
    EXPECT_THAT(FilesThere(), IsEmpty());
}

TEST_F(CtlRecordingsTest, Times_InAllTheirForms_MeanTheSame) {
    for (const char* from : {"'2024-01-05 11:00'", "'2024-01-05 11:00:00'", "2024-01-05T11:00:00+00:00",
                             "2024-01-05T13:00:00+02:00", "2024-01-05T11:00Z"}) {
        const Outcome outcome = Run(std::string("files --json --to '2024-01-05 12:00' --from ") + from);
        EXPECT_EQ(outcome.status, OK) << from << outcome.err;
        EXPECT_EQ(json::parse(outcome.out).at("from"), "2024-01-05T11:00:00+00:00") << from;
    }
    EXPECT_EQ(json::parse(Run("files --json --from '2024-01-05 11:00' --to +1h30m").out).at("to"),
              "2024-01-05T12:30:00+00:00");
    EXPECT_THAT(Run("files --from yesterday --to 'today 00:00'").err, HasSubstr(" 00:00:00 +00:00"));
}

// ---- download ------------------------------------------------------------------------------------------------------

TEST_F(CtlRecordingsTest, Download_File_HasEveryPictureOnceInOrder) {
    const std::vector<Listed> list = List(1);
    const Outcome outcome = Run("download --json --no-audio -o file.mkv" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Stamps stamps(At("file.mkv"));
    EXPECT_THAT(stamps.times, ElementsAreArray(PictureTimes(list)));
    EXPECT_THAT(stamps.channels, testing::Each(1U));
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("whole"), true);
    const json& channel = summary.at("channels").at(0);
    EXPECT_EQ(channel.at("recorded_seconds"), 4 * LENGTH);
    EXPECT_EQ(channel.at("ended"), true);
    EXPECT_EQ(channel.at("audio"), nullptr);
    EXPECT_EQ(channel.at("video").at("frames"), 4 * LENGTH * FPS);
    EXPECT_EQ(InstantOf(channel.at("video").at("first")), list.front().start);
    EXPECT_EQ(channel.at("file").at("path"), "file.mkv");
    EXPECT_EQ(channel.at("file").at("bytes"), std::filesystem::file_size(At("file.mkv")));
    EXPECT_THAT(FilesThere(), ElementsAreArray({"file.mkv"}));
}

TEST_F(CtlRecordingsTest, Download_WithSound_KeepsItBesideThePictures) {
    const Listed recording = List(2).at(1);
    ASSERT_EQ(Run("download -c 2 -o file.mp4" + RangeOf(recording.start, recording.stop) + PATIENT).status, OK);
    const MediaView file(At("file.mp4"));
    EXPECT_EQ(file.Only(AVMEDIA_TYPE_VIDEO).decoded, LENGTH * FPS);
    EXPECT_NEAR(static_cast<double>(file.Only(AVMEDIA_TYPE_AUDIO).samples) / 8000, LENGTH, 0.3);
}

TEST_F(CtlRecordingsTest, Download_Gaps_AreLeftOutOfTheFileUnlessKept) {
    const std::vector<Listed> list = List(1);
    const std::string range = RangeOf(list[0].start, list[1].stop) + PATIENT;
    ASSERT_EQ(Run("download --no-audio -o short.mkv" + range).status, OK);
    ASSERT_EQ(Run("download --no-audio --keep-gaps -o long.mkv" + range).status, OK);
    const std::vector<double> closed = MediaView(At("short.mkv")).Only(AVMEDIA_TYPE_VIDEO).times;
    const std::vector<double> kept = MediaView(At("long.mkv")).Only(AVMEDIA_TYPE_VIDEO).times;
    ASSERT_EQ(closed.size(), 2 * LENGTH * FPS);
    ASSERT_EQ(kept.size(), closed.size());
    EXPECT_NEAR(closed.back() - closed.front(), 2 * LENGTH - 2 * 0.2 + 0.04, 0.01);
    EXPECT_NEAR(kept.back() - kept.front(), static_cast<double>(list[1].stop - list[0].start) - 0.2, 0.01);
}

TEST_F(CtlRecordingsTest, Download_SeveralChannels_AreAFileEach) {
    ASSERT_EQ(Run("download -c 1-2 -S sub --no-audio -o gate.mkv" + WHOLE + PATIENT).status, OK);
    for (const unsigned channel : {1U, 2U}) {
        const std::filesystem::path file = At("gate-channel" + std::to_string(channel) + ".mkv");
        const Stamps stamps(file);
        EXPECT_THAT(stamps.times, ElementsAreArray(PictureTimes(List(channel)))) << channel;
        EXPECT_THAT(stamps.channels, testing::Each(channel));
        EXPECT_EQ(MediaView(file).Only(AVMEDIA_TYPE_VIDEO).width, 160);
    }
    EXPECT_EQ(FilesThere().size(), 2U);
}

// In summer the library reads a play's range an hour late; who types local times does not notice.
TEST_F(CtlRecordingsTest, Download_InSummerTime_IsTheRangeAskedFor) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    UseScenario(Scenario("2024-07-05 12:00:00"));
    const std::string whole = " --from '2024-07-05 11:00' --to '2024-07-05 12:00' ";
    const std::vector<Listed> list = List(1, whole);
    ASSERT_EQ(list.size(), 4U);
    const Outcome text = Run("files" + whole);
    EXPECT_THAT(text.out, HasSubstr(" +02:00  6 s "));
    ASSERT_EQ(Run("download --no-audio -o one.mkv" + RangeOf(list[1].start, list[1].stop) + PATIENT).status, OK);
    EXPECT_THAT(Stamps(At("one.mkv")).times, ElementsAreArray(PictureTimes(list[1].start, list[1].stop)));
    ASSERT_EQ(Run("download --no-audio -o all.mkv" + whole + PATIENT).status, OK);
    EXPECT_THAT(Stamps(At("all.mkv")).times, ElementsAreArray(PictureTimes(list)));
}

// The recordings' hour comes twice that night, and the list does not say which one is meant.
TEST_F(CtlRecordingsTest, Download_InTheHourThatComesTwice_IsWhole) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    UseScenario(Scenario("2024-10-27 03:00:00"));
    const Outcome outcome =
        Run("download --no-audio -o file.mkv --from '2024-10-27 01:00' --to '2024-10-27 03:30'" + PATIENT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(Stamps(At("file.mkv")).times.size(), 4 * LENGTH * FPS);
}

TEST_F(CtlRecordingsTest, Times_ThatTheClockLeavesOut_AreRefused) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    const Outcome outcome = Run("files --from '2024-03-31 02:30'");
    EXPECT_EQ(outcome.status, USAGE);
    EXPECT_THAT(outcome.err, HasSubstr("is a time that does not exist"));
}

TEST_F(CtlRecordingsTest, Download_NothingRecorded_SaysSoAndWritesNothing) {
    const Outcome outcome = Run("download -o file.mkv --from '2023-01-05 11:00' --to +1h");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("nothing of channel 1 is recorded from 2023-01-05 11:00:00 to"));
    EXPECT_THAT(FilesThere(), IsEmpty());
}

TEST_F(CtlRecordingsTest, Download_FailsMidway_LeavesNoFileAndSaysWhereItEnded) {
    const std::vector<Listed> list = List(1);
    UseScenario(Scenario("2024-01-05 12:00:00",
                         R"(, "faults": [{"operation": "vexo_avss_file_reader::read_frame", "nth": 60}])"));
    const Outcome outcome = Run("download -o file.mkv" + WHOLE + PATIENT);
    EXPECT_EQ(outcome.status, PARTIAL);
    EXPECT_THAT(outcome.err, HasSubstr("channel 1 ended at " + Local(list[0].start + 1).substr(1, 17)));
    EXPECT_THAT(outcome.err, HasSubstr("nothing is kept (--keep-partial keeps what came)"));
    EXPECT_THAT(FilesThere(), IsEmpty());
    std::ofstream(At("file.mkv")) << "precious";
    EXPECT_EQ(Run("download -o file.mkv" + WHOLE + PATIENT).status, PARTIAL);
    EXPECT_EQ(ctl::Contents(At("file.mkv")), "precious");
}

TEST_F(CtlRecordingsTest, Download_FailsMidway_KeepsWhatCameWhenAskedTo) {
    UseScenario(Scenario("2024-01-05 12:00:00",
                         R"(, "faults": [{"operation": "vexo_avss_file_reader::read_frame", "nth": 60}])"));
    const Outcome outcome = Run("download --json --keep-partial -o file.mkv" + WHOLE + PATIENT);
    EXPECT_EQ(outcome.status, PARTIAL);
    EXPECT_EQ(json::parse(outcome.out).at("whole"), false);
    const Stamps stamps(At("file.mkv"));
    EXPECT_FALSE(stamps.times.empty());
    EXPECT_LT(stamps.times.size(), LENGTH * FPS);
    EXPECT_THAT(FilesThere(), ElementsAreArray({"file.mkv"}));
}

TEST_F(CtlRecordingsTest, Download_FolderThatIsNotThere_IsAnOutputErrorAtOnce) {
    const Outcome outcome = Run("download -o nowhere/file.mkv" + WHOLE);
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write nowhere/file.mkv: No such file or directory"));
}

TEST_F(CtlRecordingsTest, Download_RefusedLogin_LeavesAnEarlierFileAlone) {
    std::ofstream(At("file.mkv")) << "precious";
    EXPECT_EQ(Run("download -u admin -p wrong -o file.mkv" + WHOLE).status, REFUSED);
    EXPECT_EQ(ctl::Contents(At("file.mkv")), "precious");
}

/** A run of the tool with standard error on a terminal; told to end when wanted says so of what it wrote there. */
class TerminalRun {
public:
    TerminalRun(const std::vector<std::string>& arguments, const std::string& folder) {
        std::vector<char*> list;
        for (const std::string& argument : arguments) {
            list.push_back(const_cast<char*>(argument.c_str()));
        }
        list.push_back(nullptr);
        m_child = forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_child == 0) {
            const bool moved = chdir(folder.c_str()) == 0;
            dup2(open("stdout.txt", O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            _exit(moved && execv(HOSTMGRCTL, list.data()) == 0 ? 0 : 127);
        }
    }

    ~TerminalRun() {
        if (m_terminal >= 0) {
            close(m_terminal);
        }
    }
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;

    /** Reads what the terminal shows until the tool has ended, and interrupts it once that stands there; exit status.
     */
    int Follow(const std::string& interrupt_at = "") {
        char buffer[256];
        ssize_t size = 0;
        bool interrupted = interrupt_at.empty();
        while ((size = read(m_terminal, buffer, sizeof(buffer))) > 0) {
            m_shown.append(buffer, static_cast<size_t>(size));
            if (!interrupted && m_shown.find(interrupt_at) != std::string::npos) {
                interrupted = kill(m_child, SIGINT) == 0;
            }
        }
        int status = 0;
        waitpid(m_child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const std::string& Shown() const { return m_shown; }

private:
    int m_terminal = -1;
    pid_t m_child = -1;
    std::string m_shown;
};

TEST_F(CtlRecordingsTest, Download_OnATerminal_ShowsABarWithPositionRateAndTimeLeft) {
    TerminalRun run({"hostmgrctl", "download", "-o", "file.mkv", "--from", "2024-01-05 11:00", "--to",
                     "2024-01-05 12:00", "-t", "60"},
                    At("."));
    EXPECT_EQ(run.Follow(), OK) << run.Shown();
    EXPECT_THAT(run.Shown(), testing::ContainsRegex(
                                 "\\[#*\\.*\\] +[0-9]+%  11:[0-9]+:[0-9]+  [0-9.]+ x real time  [0-9a-z ]+ left"));
    std::string line;
    for (const char letter : run.Shown()) {
        line = letter == '\r' ? "" : line + letter;
        EXPECT_LE(line.size(), 80U + 3) << "the erasing sequence counts three: " << line;
    }
}

TEST_F(CtlRecordingsTest, Download_Interrupted_LeavesNoFile) {
    TerminalRun run({"hostmgrctl", "download", "-o", "file.mkv", "--from", "2024-01-05 11:00", "--to",
                     "2024-01-05 12:00", "-t", "60"},
                    At("."));
    EXPECT_EQ(run.Follow("x real time"), PARTIAL) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr("the download was ended on request: nothing is kept"));
    EXPECT_THAT(FilesThere(), IsEmpty());
}

// ---- play ----------------------------------------------------------------------------------------------------------

TEST_F(CtlRecordingsTest, Play_File_ShowsWhatWasPlayedAtThatSpeed) {
    const Listed recording = List(1).at(1);
    const Outcome outcome = Run("play --json -x 4 -o file.mkv" + RangeOf(recording.start, recording.stop) + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(Stamps(At("file.mkv")).times, ElementsAreArray(PictureTimes(recording.start, recording.stop)));
    const Track video = MediaView(At("file.mkv")).Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_NEAR(video.times.back() - video.times.front(), (LENGTH - 0.2) / 4, 0.05);
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("way"), "callback");
    EXPECT_EQ(summary.at("speed"), 4);
    EXPECT_EQ(InstantOf(summary.at("play_time")), recording.stop - 1);
    EXPECT_EQ(summary.at("channels").at(0).at("video").at("frames"), LENGTH * FPS);
}

TEST_F(CtlRecordingsTest, Play_Reverse_WritesTheKeyFramesBackwards) {
    const Listed recording = List(1).at(2);
    ASSERT_EQ(Run("play -x 4 --reverse -o file.mp4" + RangeOf(recording.start, recording.stop) + PATIENT).status, OK);
    std::vector<uint64_t> expected = PictureTimes(recording.start, recording.stop, 1000);
    std::reverse(expected.begin(), expected.end());
    EXPECT_THAT(Stamps(At("file.mp4")).times, ElementsAreArray(expected));
    const Track video = MediaView(At("file.mp4")).Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_NEAR(video.times.back() - video.times.front(), (LENGTH - 1) / 4.0, 0.05);
}

TEST_F(CtlRecordingsTest, Play_SeekInSummerTime_GoesThere) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    UseScenario(Scenario("2024-07-05 12:00:00"));
    const std::string whole = " --from '2024-07-05 11:00' --to '2024-07-05 12:00' ";
    const Listed last = List(1, whole).at(3);
    const std::string seek = "'0:seek=" + Local(last.start + 2).substr(1);
    const Outcome outcome =
        Run("play --json -x 8 --then " + seek + " --then 0:pause --then 0.1:resume" + whole + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    const json& video = summary.at("channels").at(0).at("video");
    EXPECT_LE(video.at("frames").get<unsigned>(), LENGTH - 2 + 2) << "key frames from there on, and some before";
    EXPECT_GE(video.at("frames").get<unsigned>(), LENGTH - 2);
    EXPECT_EQ(InstantOf(video.at("last")), last.stop - 1);
}

TEST_F(CtlRecordingsTest, Play_Then_SeeksPausesAndChangesTheSpeed) {
    const std::vector<Listed> list = List(1);
    const std::string seek = "'0:seek=" + Local(list[3].start).substr(1);
    const Outcome outcome = Run("play --json -x -32 --then " + seek +
                                " --then 0:pause --then 0.1:resume --then 0.2:speed=4" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("speed"), 4);
    const json& video = summary.at("channels").at(0).at("video");
    EXPECT_LE(video.at("frames").get<unsigned>(), LENGTH * FPS + 1) << "the last recording, and one before the seek";
    EXPECT_GE(video.at("frames").get<unsigned>(), LENGTH * FPS);
    EXPECT_EQ(InstantOf(video.at("last")), list[3].stop - 1);
}

TEST_F(CtlRecordingsTest, Play_Channels_AddedDroppedAndOnTheSubStream) {
    const Outcome outcome =
        Run("play --json -x 4 --then 0:add=2 --then 0:sub=2 --then 0:drop=1 -n 400" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json channels = json::parse(outcome.out).at("channels");
    ASSERT_EQ(channels.size(), 2U);
    EXPECT_LT(channels.at(0).at("video").is_null() ? 0U : channels.at(0).at("video").at("frames").get<unsigned>(), 10U);
    EXPECT_EQ(channels.at(1).at("stream"), "sub");
    EXPECT_EQ(channels.at(1).at("video").at("width"), 160);
    EXPECT_EQ(channels.at(1).at("video").at("frames"), 4 * LENGTH * FPS);
}

TEST_F(CtlRecordingsTest, Play_Frames_EndsAfterSoMany) {
    const json summary = json::parse(Run("play --json -n 7 -x 4 -c 1,2" + WHOLE + PATIENT).out);
    unsigned frames = 0;
    for (const json& channel : summary.at("channels")) {
        frames += channel.at("video").is_null() ? 0 : channel.at("video").at("frames").get<unsigned>();
    }
    EXPECT_EQ(frames, 7U);
}

TEST_F(CtlRecordingsTest, Play_Reader_PlaysAllChannelsInStep) {
    const Outcome outcome = Run("play --json --reader -x 8 -c 1,2 -o gate.mkv" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("way"), "reader");
    for (const json& channel : summary.at("channels")) {
        EXPECT_EQ(channel.at("ended"), true);
        EXPECT_GE(channel.at("video").at("key_frames").get<unsigned>(), 4 * LENGTH);
    }
    EXPECT_THAT(Stamps(At("gate-channel2.mkv")).channels, testing::Each(2U));
}

TEST_F(CtlRecordingsTest, Play_Text_TellsFramesTimesAndThePlayTime) {
    const Outcome outcome = Run("play -x 32" + WHOLE + PATIENT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("channel 1, main stream\n  video   24 frames, 24 key frames\n"));
    EXPECT_THAT(outcome.out, HasSubstr("; the play time was 2024-01-05 11:"));
    ExpectNarrow(outcome.out);
}

TEST_F(CtlRecordingsTest, Play_UnknownChannel_IsRefused) {
    for (const char* way : {"", " --reader"}) {
        const Outcome outcome = Run(std::string("play -c 9") + way + WHOLE);
        EXPECT_EQ(outcome.status, REFUSED) << way;
        EXPECT_THAT(outcome.err, HasSubstr("the recorder does not play channel 9: does it have that channel?"));
        EXPECT_THAT(outcome.err, HasSubstr("the recorder says: "));
    }
}

TEST_F(CtlRecordingsTest, Play_NothingRecorded_SaysSo) {
    const Outcome outcome = Run("play --from '2023-01-05 11:00' --to +1h" + PATIENT);
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("nothing was played from 2023-01-05 11:00:00 to"));
}

}  // namespace
