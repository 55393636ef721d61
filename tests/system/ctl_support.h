// What the tests of hostmgrctl share: running it as a person would, in a folder of the test's own, and looking into the
// files that it writes. Expectations do not belong here.
#ifndef TESTS_SYSTEM_CTL_SUPPORT_H
#define TESTS_SYSTEM_CTL_SUPPORT_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace ctl {

/** How a run of the tool ended and what it printed. */
struct Outcome {
    int status = -1;  ///< exit status; 128 and above: ended by a signal
    std::string out;
    std::string err;
};

inline std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/** A folder of its own for each test, where the tool runs. */
class CtlTest : public testing::Test {
protected:
    CtlTest() : m_folder(std::filesystem::path(getenv("RECORDER_HOME")) / "ctl") {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
        unsetenv("RECORDER_SCENARIO");
    }

    std::filesystem::path At(const std::string& name) const { return m_folder / name; }

    /** Runs a shell command line in the folder, with hostmgrctl in place of "ctl" at its head. */
    Outcome Run(const std::string& arguments, const std::string& redirections = "") const {
        const std::string out = At("stdout.txt");
        const std::string err = At("stderr.txt");
        const std::string command = "cd '" + m_folder.string() + "' && '" HOSTMGRCTL "' " + arguments + " >'" + out +
                                    "' 2>'" + err + "' </dev/null " + redirections;
        const int status = system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128, Contents(out), Contents(err)};
    }

    /** From now on the recorder runs on this scenario. */
    void UseScenario(const std::string& json) const {
        std::ofstream(At("scenario.json")) << json;
        setenv("RECORDER_SCENARIO", At("scenario.json").c_str(), 1);
    }

private:
    const std::filesystem::path m_folder;
};

/** One stream of a media file, with all its packets' times and a decoder's opinion of them. */
struct Track {
    AVMediaType type = AVMEDIA_TYPE_UNKNOWN;
    AVCodecID codec = AV_CODEC_ID_NONE;
    int width = 0, height = 0;
    AVRational shape = {0, 1};  ///< of a pixel
    bool first_is_key = false;
    std::vector<double> times;  ///< seconds, in the file's order
    unsigned decoded = 0;       ///< pictures or pieces of sound that a decoder made of the packets
    long samples = 0;           ///< of sound, in those pieces
};

/** A media file as libavformat sees it. */
class MediaView {
public:
    explicit MediaView(const std::filesystem::path& path) {
        if (avformat_open_input(&m_format, path.c_str(), nullptr, nullptr) != 0 ||
            avformat_find_stream_info(m_format, nullptr) < 0) {
            return;
        }
        for (unsigned i = 0; i < m_format->nb_streams; ++i) {
            Describe(*m_format->streams[i]);
        }
        ReadAll();
    }
    ~MediaView() {
        for (AVCodecContext* decoder : m_decoders) {
            avcodec_free_context(&decoder);
        }
        avformat_close_input(&m_format);
    }
    MediaView(const MediaView&) = delete;
    MediaView& operator=(const MediaView&) = delete;

    size_t Count() const { return m_tracks.size(); }

    /** The only track of that type; an empty one when there is none or several. */
    Track Only(AVMediaType type) const {
        std::vector<Track> found;
        for (const Track& track : m_tracks) {
            if (track.type == type) {
                found.push_back(track);
            }
        }
        return found.size() == 1 ? found[0] : Track();
    }

private:
    void Describe(const AVStream& stream) {
        Track track;
        track.type = stream.codecpar->codec_type;
        track.codec = stream.codecpar->codec_id;
        track.width = stream.codecpar->width;
        track.height = stream.codecpar->height;
        track.shape = stream.sample_aspect_ratio;
        m_tracks.push_back(track);
        AVCodecContext* decoder = avcodec_alloc_context3(avcodec_find_decoder(track.codec));
        avcodec_parameters_to_context(decoder, stream.codecpar);
        decoder->thread_count = 1;
        decoder->pkt_timebase = stream.time_base;
        avcodec_open2(decoder, nullptr, nullptr);
        m_decoders.push_back(decoder);
    }

    void ReadAll() {
        AVPacket* packet = av_packet_alloc();
        while (av_read_frame(m_format, packet) == 0) {
            Track& track = m_tracks[packet->stream_index];
            const AVRational base = m_format->streams[packet->stream_index]->time_base;
            track.first_is_key = track.times.empty() ? (packet->flags & AV_PKT_FLAG_KEY) != 0 : track.first_is_key;
            track.times.push_back(static_cast<double>(packet->pts) * av_q2d(base));
            Decode(packet, packet->stream_index);
            av_packet_unref(packet);
        }
        for (size_t i = 0; i < m_tracks.size(); ++i) {
            Decode(nullptr, i);
        }
        av_packet_free(&packet);
    }

    void Decode(const AVPacket* packet, size_t index) {
        AVFrame* frame = av_frame_alloc();
        avcodec_send_packet(m_decoders[index], packet);
        while (avcodec_receive_frame(m_decoders[index], frame) == 0) {
            ++m_tracks[index].decoded;
            m_tracks[index].samples += frame->nb_samples;
        }
        av_frame_free(&frame);
    }

    AVFormatContext* m_format = nullptr;
    std::vector<Track> m_tracks;
    std::vector<AVCodecContext*> m_decoders;
};

}  // namespace ctl

#endif
