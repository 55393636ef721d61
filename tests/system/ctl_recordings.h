// What the tests of hostmgrctl's files, play and download share: a recorder with a history at a known time, its
// recordings as the tool lists them, and what the pictures of a file say. Test cases do not belong here.
#ifndef TESTS_SYSTEM_CTL_RECORDINGS_H
#define TESTS_SYSTEM_CTL_RECORDINGS_H

#include <gmock/gmock.h>

#include <ctime>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ctl_support.h"
#include "live_reader.h"

namespace ctl {

using nlohmann::json;

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2, NO_DATA = 3, NO_OUTPUT = 4, PARTIAL = 5 };

constexpr unsigned LENGTH = 6;  // seconds of a recording: as the scenario says, and what follows
constexpr unsigned FPS = 5;
constexpr uint64_t PERIOD = 1000 / FPS;  // milliseconds from picture to picture
inline const std::string WHOLE = " --from '2024-01-05 11:00' --to '2024-01-05 12:00' ";
inline const std::string PATIENT = " --timeout 60 ";  // however busy the machine is

inline std::string Scenario(const std::string& until, const std::string& more = "") {
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
inline time_t InstantOf(const std::string& text) {
    struct tm time = {};
    strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S%z", &time);
    const long offset = time.tm_gmtoff;
    return timegm(&time) - offset;
}

inline std::string Local(time_t seconds) {
    struct tm local = {};
    localtime_r(&seconds, &local);
    char text[64];
    strftime(text, sizeof(text), "'%Y-%m-%d %H:%M:%S'", &local);
    return text;
}

inline std::string RangeOf(time_t from, time_t to) {
    return " --from " + Local(from) + " --to " + Local(to) + " ";
}

class RecordingsTest : public CtlTest {
protected:
    RecordingsTest() {
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
inline std::vector<uint64_t> PictureTimes(time_t from, time_t to, uint64_t period = PERIOD) {
    std::vector<uint64_t> times;
    for (uint64_t time = from * 1000ULL; time < to * 1000ULL; time += period) {
        times.push_back(time);
    }
    return times;
}

inline std::vector<uint64_t> PictureTimes(const std::vector<Listed>& list) {
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

inline void ExpectNarrow(const std::string& text) {
    for (const std::string& line : Lines(text)) {
        EXPECT_LE(line.size(), 80U) << line;
    }
}

}  // namespace ctl

#endif
