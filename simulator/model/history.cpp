#include "history.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <random>
#include <thread>

#include "mov_writer.h"
#include "picture_source.h"
#include "stream.h"

namespace simulator {
namespace {

constexpr int64_t SECOND = 1000000;  // microseconds
constexpr int64_t AUDIO_STEP = SECOND / AUDIO_BLOCKS;
constexpr int64_t FILM_STEP =
    40000;  // a video file goes on so far from key frame to key frame: decoding all takes long
constexpr unsigned TYPES[] = {RECORD_SCHEDULE, RECORD_MOTION, RECORD_ALARM, RECORD_MOTION | RECORD_ALARM};
constexpr double BITS_A_PIXEL = 0.2;
constexpr unsigned LEAST_KBPS = 48;
constexpr const char* NOTE = "history";
constexpr const char* MADE = "made";

VideoSettings HistoryVideo(const VideoSettings& live, const HistorySettings& settings, unsigned widest) {
    VideoSettings video = live;
    if (video.width > widest) {
        video.height = std::max(64U, video.height * widest / video.width / 2 * 2);
        video.width = widest;
    }
    video.fps = settings.fps;
    video.gop = settings.gop;
    video.kbps =
        std::max(LEAST_KBPS, static_cast<unsigned>(video.width * video.height * video.fps * BITS_A_PIXEL / 1000));
    return video;
}

CameraSettings HistoryCamera(const CameraSettings& live, const HistorySettings& settings) {
    CameraSettings camera = live;
    camera.main = HistoryVideo(live.main, settings, settings.width);
    camera.sub = HistoryVideo(live.sub, settings, std::max(64U, settings.width / 4 * 2));
    return camera;
}

// A list of one frame: what a stream has just made.
class Latest {
public:
    explicit Latest(const char* name) : m_list(name, 1) {}
    FrameList* List() { return &m_list; }
    std::shared_ptr<LiveFrame> Take() {
        auto frames = m_list.Since(&m_position);
        return frames.empty() ? nullptr : frames.back();
    }

private:
    FrameList m_list;
    vexo_read_av_list_note m_position = {};
};

// One recording in the making: the camera's streams, run as fast as they go.
class SegmentMaker {
public:
    SegmentMaker(unsigned channel, const CameraSettings& camera, PictureSource* source, AVFrame* scene)
        : m_camera(camera),
          m_source(source),
          m_scene(scene),
          m_main(VEXO_ENC_STR_MAIN, channel, camera, {}, m_main_latest.List()),
          m_sub(VEXO_ENC_STR_SUB, channel, camera, {}, m_sub_latest.List()),
          m_audio(camera, {}, m_audio_latest.List()) {}

    /** The bytes written; 0: it failed. */
    int64_t Make(const std::string& path, const HistorySegment& segment);

private:
    void PutVideo(int64_t moment, unsigned number);
    bool PutAudio(int64_t moment, MovWriter* writer);

    const CameraSettings& m_camera;
    PictureSource* const m_source;
    AVFrame* const m_scene;
    Latest m_main_latest{"main"};
    Latest m_sub_latest{"sub"};
    Latest m_audio_latest{"audio"};
    VideoStream m_main;
    VideoStream m_sub;
    AudioStream m_audio;
    bool m_seen = false;
};

// The scene stands still from key frame to key frame; clock and stamp go on in every picture.
void SegmentMaker::PutVideo(int64_t moment, unsigned number) {
    if (number % m_camera.main.gop == 0) {
        const int64_t at = m_camera.source == "scene" ? moment : int64_t{number / m_camera.main.gop} * FILM_STEP;
        m_seen = m_source->Draw(at, {}, *m_scene);
    }
    m_main.Put({{}, moment}, m_seen ? m_scene : nullptr);
    m_sub.Put({{}, moment}, m_seen ? m_scene : nullptr);
}

bool SegmentMaker::PutAudio(int64_t moment, MovWriter* writer) {
    m_audio.Put({{}, moment}, !m_seen);
    const auto frame = m_audio_latest.Take();
    return frame != nullptr && writer->Write(*frame);
}

int64_t SegmentMaker::Make(const std::string& path, const HistorySegment& segment) {
    std::unique_ptr<MovWriter> writer;
    int64_t sound = segment.start;
    const unsigned pictures = static_cast<unsigned>((segment.stop - segment.start) / SECOND * m_camera.main.fps);
    for (unsigned number = 0; number < pictures; ++number) {
        const int64_t moment = segment.start + number * SECOND / m_camera.main.fps;
        PutVideo(moment, number);
        const auto main = m_main_latest.Take();
        const auto sub = m_sub_latest.Take();
        if (main == nullptr || sub == nullptr) {
            return 0;
        }
        if (writer == nullptr) {
            LiveFrame audio;
            audio.header = AudioHeader();
            writer = std::make_unique<MovWriter>(path, segment.start,
                                                 std::vector<const LiveFrame*>{main.get(), sub.get(), &audio});
        }
        if (!writer->Write(*main) || !writer->Write(*sub)) {
            return 0;
        }
        const int64_t next = segment.start + (number + 1) * SECOND / m_camera.main.fps;
        for (; sound < next; sound += AUDIO_STEP) {
            if (!PutAudio(sound, writer.get())) {
                return 0;
            }
        }
    }
    writer.reset();
    std::error_code error;
    const auto bytes = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<int64_t>(bytes);
}

// What one channel's history is made of; for one thread.
class ChannelHistory {
public:
    ChannelHistory(Archive* archive, unsigned channel)
        : m_archive(archive),
          m_channel(channel),
          m_camera(HistoryCamera(TheScenario().cameras[channel - 1], TheScenario().recordings.history)),
          m_source(OpenSource(m_camera, TheScenario().seed, channel)),
          m_scene(NewPicture(static_cast<int>(m_camera.main.width), static_cast<int>(m_camera.main.height))) {}

    bool Make(const HistorySegment& segment) {
        RecordedFile file = {0, m_channel, segment.start, segment.stop, segment.type, 0, 0};
        const auto path = m_archive->Begin(&file, 0);
        if (!path || m_scene == nullptr) {
            return false;
        }
        SegmentMaker maker(m_channel, m_camera, m_source.get(), m_scene.get());
        file.bytes = maker.Make(*path, segment);
        if (file.bytes == 0) {
            m_archive->Remove(file);
            return false;
        }
        m_archive->Update(file);
        return true;
    }

private:
    Archive* const m_archive;
    const unsigned m_channel;
    const CameraSettings m_camera;
    const std::unique_ptr<PictureSource> m_source;
    const Av<AVFrame> m_scene;
};

int64_t EndOf(const HistorySettings& settings, Archive* archive) {
    time_t end = time(nullptr) / 60 * 60;
    if (!settings.until.empty()) {
        tm local = {};
        strptime(settings.until.c_str(), "%Y-%m-%d %H:%M:%S", &local);
        local.tm_isdst = -1;
        end = mktime(&local);
    }
    const auto oldest = archive->Oldest();  // recorded live before anybody asked for the history
    return oldest ? std::min(end * SECOND, *oldest / (60 * SECOND) * 60 * SECOND) : end * SECOND;
}

void MakeChannel(Archive* archive, unsigned channel, int64_t end) {
    const HistorySettings& settings = TheScenario().recordings.history;
    const std::vector<HistorySegment> plan = PlanHistory(settings, TheScenario().seed, channel, end);
    if (settings.listed > 0) {
        archive->EnterListed(channel, settings.listed, end - settings.hours * 3600 * SECOND);
    }
    if (plan.empty()) {
        return;
    }
    ChannelHistory history(archive, channel);
    for (const HistorySegment& segment : plan) {
        history.Make(segment);
    }
}

// As many threads as there are processors share the channels.
void MakeChannels(Archive* archive, int64_t end) {
    const unsigned channels = static_cast<unsigned>(TheScenario().cameras.size());
    std::atomic<unsigned> next{1};
    const auto work = [&] {
        for (unsigned channel = next++; channel <= channels; channel = next++) {
            MakeChannel(archive, channel, end);
        }
    };
    std::vector<std::thread> others;
    for (unsigned i = 1; i < std::min(channels, std::thread::hardware_concurrency()); ++i) {
        others.emplace_back(work);
    }
    work();
    for (std::thread& other : others) {
        other.join();
    }
}

bool Quiet() {
    const char* quiet = getenv("RECORDER_QUIET");
    return quiet != nullptr && strcmp(quiet, "1") == 0;
}

void MakeHistory(Archive* archive) {
    const auto begun = std::chrono::steady_clock::now();
    const HistorySettings& settings = TheScenario().recordings.history;
    const size_t count = TheScenario().cameras.size() * settings.segments;
    if (!Quiet() && count > 0) {
        Tell("first start: making a history of " + std::to_string(count) + " recordings ...");
    }
    MakeChannels(archive, EndOf(settings, archive));
    archive->SetNote(NOTE, MADE);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
    if (!Quiet() && count > 0) {
        char text[64];
        snprintf(text, sizeof(text), "the history is made, in %.1f seconds", took.count());
        Tell(text);
    }
}

}  // namespace

std::vector<HistorySegment> PlanHistory(const HistorySettings& settings, unsigned seed, unsigned channel, int64_t end) {
    std::vector<HistorySegment> plan;
    std::mt19937 draw(seed * 257 + channel);
    const int64_t begin = end / SECOND - settings.hours * int64_t{3600};
    for (unsigned i = 0; i < settings.segments; ++i) {
        const int64_t part = settings.hours * int64_t{3600} / settings.segments;
        const int64_t start = begin + i * part + draw() % (part - settings.seconds + 1);
        plan.push_back({start * SECOND, (start + settings.seconds) * SECOND, TYPES[i % std::size(TYPES)]});
    }
    return plan;
}

void EnsureHistory(Archive* archive) {
    static std::mutex& mutex = *new std::mutex;
    std::lock_guard<std::mutex> lock(mutex);
    if (archive->Note(NOTE) != MADE) {
        MakeHistory(archive);
    }
}

}  // namespace simulator
