#include "history_maker.h"

#include <algorithm>

#include "mov_writer.h"
#include "stream.h"

namespace simulator {
namespace {

constexpr int64_t SECOND = 1000000;  // microseconds
constexpr int64_t AUDIO_STEP = SECOND / AUDIO_BLOCKS;
constexpr int64_t FILM_STEP = 40000;  // a film goes on so far from key frame to key frame: decoding it all takes long
constexpr unsigned NARROWEST = 64;    // pixels
constexpr double BITS_A_PIXEL = 0.2;
constexpr unsigned LEAST_KBPS = 48;

VideoSettings HistoryVideo(const VideoSettings& live, const HistorySettings& settings, unsigned widest) {
    VideoSettings video = live;
    if (video.width > widest) {
        video.height = std::max(NARROWEST, video.height * widest / video.width / 2 * 2);
        video.width = widest;
    }
    video.fps = settings.fps;
    video.gop = settings.gop;
    const double bits = BITS_A_PIXEL * video.width * video.height * video.fps;
    video.kbps = std::max(LEAST_KBPS, static_cast<unsigned>(bits / 1000));
    return video;
}

CameraSettings HistoryCamera(const CameraSettings& live, const HistorySettings& settings) {
    CameraSettings camera = live;
    camera.main = HistoryVideo(live.main, settings, settings.width);
    camera.sub = HistoryVideo(live.sub, settings, std::max(NARROWEST, settings.width / 4 * 2));
    return camera;
}

/** A list of one frame: what a stream has just made. */
class Latest {
public:
    FrameList* List() { return &m_list; }
    std::shared_ptr<LiveFrame> Take() {
        const auto frames = m_list.Since(&m_position);
        return frames.empty() ? nullptr : frames.back();
    }

private:
    FrameList m_list{"history", 1};
    vexo_read_av_list_note m_position = {};
};

/** The streams of one recording. */
class Streams {
public:
    Streams(unsigned channel, const CameraSettings& camera)
        : m_main(VEXO_ENC_STR_MAIN, channel, camera, {}, m_main_latest.List()),
          m_sub(VEXO_ENC_STR_SUB, channel, camera, {}, m_sub_latest.List()),
          m_audio(camera, {}, m_audio_latest.List()) {}

    /** Records a picture in both sizes, into a file that begins with the first one. */
    bool PutVideo(const std::string& path, int64_t moment, const AVFrame* scene) {
        m_main.Put({{}, moment}, scene);
        m_sub.Put({{}, moment}, scene);
        const auto main = m_main_latest.Take();
        const auto sub = m_sub_latest.Take();
        if (main == nullptr || sub == nullptr) {
            return false;
        }
        if (m_writer == nullptr) {
            LiveFrame audio;
            MarkAudio(&audio.header);
            const std::vector<const LiveFrame*> heads = {main.get(), sub.get(), &audio};
            m_writer = std::make_unique<MovWriter>(path, moment, heads);
        }
        return m_writer->Write(*main) && m_writer->Write(*sub);
    }

    bool PutAudio(int64_t moment) {
        m_audio.Put({{}, moment}, false);
        const auto frame = m_audio_latest.Take();
        return frame != nullptr && m_writer->Write(*frame);
    }

    /** Completes the file; its bytes. */
    int64_t Finish() {
        m_writer->Finish();
        return m_writer->Bytes();
    }

private:
    Latest m_main_latest;
    Latest m_sub_latest;
    Latest m_audio_latest;
    VideoStream m_main;
    VideoStream m_sub;
    AudioStream m_audio;
    std::unique_ptr<MovWriter> m_writer;
};

}  // namespace

HistoryMaker::HistoryMaker(Archive* archive, unsigned channel, const CameraSettings& camera,
                           const HistorySettings& settings, unsigned seed)
    : m_archive(archive),
      m_channel(channel),
      m_camera(HistoryCamera(camera, settings)),
      m_source(OpenSource(m_camera, seed, channel)),
      m_scene(NewPicture(static_cast<int>(m_camera.main.width), static_cast<int>(m_camera.main.height))) {}

bool HistoryMaker::Make(const HistorySegment& segment) {
    RecordedFile file = {0, m_channel, segment.start, segment.stop, segment.type, 0, 0};
    const auto path = m_archive->Begin(&file);
    if (!path || m_scene == nullptr) {
        return false;
    }
    file.bytes = Record(*path, segment);
    if (file.bytes == 0) {
        m_archive->Remove(file);
        return false;
    }
    m_archive->Update(file);
    return true;
}

// The bytes written; 0 when it failed. The scene stands still from key frame to key frame, which saves most of the
// work; clock and stamp go on in every picture.
int64_t HistoryMaker::Record(const std::string& path, const HistorySegment& segment) {
    Streams streams(m_channel, m_camera);
    bool seen = false;
    int64_t sound = segment.start;
    const int64_t fps = m_camera.main.fps;
    const int64_t pictures = (segment.stop - segment.start) / SECOND * fps;
    for (int64_t number = 0; number < pictures; ++number) {
        const int64_t moment = segment.start + number * SECOND / fps;
        if (number % m_camera.main.gop == 0) {
            const int64_t shown = m_camera.source == "scene" ? moment : number / m_camera.main.gop * FILM_STEP;
            seen = m_source->Draw(shown, {}, *m_scene);
        }
        if (!streams.PutVideo(path, moment, seen ? m_scene.get() : nullptr)) {
            return 0;
        }
        for (; sound < segment.start + (number + 1) * SECOND / fps; sound += AUDIO_STEP) {
            if (!streams.PutAudio(sound)) {
                return 0;
            }
        }
    }
    return streams.Finish();
}

}  // namespace simulator
