#include "channel_recorder.h"

#include <algorithm>
#include <utility>

namespace simulator {
namespace {

constexpr int64_t SECOND = 1000000;         // microseconds
constexpr int64_t GATHER = SECOND * 3 / 2;  // streams that begin together come into one file
constexpr std::chrono::seconds IDLE{2};     // without a frame for so long, the recording is over
constexpr int64_t START_UNIT = 1000;        // files begin at whole milliseconds

constexpr struct {
    Track track;
    vexo_enc_str_type type;
} STREAMS[] = {{TRACK_MAIN, VEXO_ENC_STR_MAIN}, {TRACK_SUB, VEXO_ENC_STR_SUB}, {TRACK_AUDIO, VEXO_ENC_STR_AUDIO}};

bool IsVideoKey(const LiveFrame& frame) {
    return frame.key && TrackOf(frame.header) != TRACK_AUDIO;
}

}  // namespace

ChannelRecorder::ChannelRecorder(unsigned channel, Camera* camera, unsigned file_seconds)
    : m_channel(channel), m_camera(camera), m_longest(file_seconds * SECOND) {}

bool ChannelRecorder::Pass(bool shall, unsigned type) {
    const std::vector<Frame> frames = Drain();
    const auto now = std::chrono::steady_clock::now();
    if (!frames.empty()) {
        m_last = now;
    }
    if (!shall || now - m_last > IDLE) {
        Close();
        return !frames.empty();
    }
    for (const Frame& frame : frames) {
        Put(frame, type);
    }
    return true;
}

// What is new in all lists, by time.
std::vector<ChannelRecorder::Frame> ChannelRecorder::Drain() {
    std::vector<Frame> frames;
    for (const auto& stream : STREAMS) {
        for (Frame& frame : m_camera->ListOf(stream.type)->Since(&m_positions[stream.track])) {
            frames.push_back(std::move(frame));
        }
    }
    std::stable_sort(frames.begin(), frames.end(), [](const Frame& left, const Frame& right) {
        return TimeOf(left->header) < TimeOf(right->header);
    });
    return frames;
}

void ChannelRecorder::Put(const Frame& frame, unsigned type) {
    if (frame->key) {
        m_heads[TrackOf(frame->header)] = frame;
    }
    if (m_writer == nullptr) {
        Gather(frame, type);
        return;
    }
    if (IsDue(*frame, type)) {
        Begin(TimeOf(frame->header), type);
    }
    Write(*frame);
}

// Waits until all streams that begin now have come; the file begins with the first picture that can be decoded.
void ChannelRecorder::Gather(const Frame& frame, unsigned type) {
    if (m_gathered.empty() && !IsVideoKey(*frame)) {
        return;
    }
    m_gathered.push_back(frame);
    const int64_t start = TimeOf(m_gathered.front()->header);
    if (TimeOf(frame->header) - start < GATHER && TimeOf(frame->header) >= start) {
        return;
    }
    Begin(start, type);
    for (const Frame& gathered : std::exchange(m_gathered, {})) {
        Write(*gathered);
    }
}

// Whether another file begins with this frame: at a key frame, or at once when the clock was set back.
bool ChannelRecorder::IsDue(const LiveFrame& frame, unsigned type) const {
    const int64_t time = TimeOf(frame.header);
    if (time < m_file.stop - SECOND) {
        return true;
    }
    const Track track = TrackOf(frame.header);
    if (!frame.key || (m_tracks[track] && track != (m_tracks[TRACK_MAIN] ? TRACK_MAIN : TRACK_SUB))) {
        return false;
    }
    return !m_tracks[track] || type != m_file.type || time - m_file.start >= m_longest ||
           m_file.bytes > Archive::Get()->LargestFile(m_file.disk);
}

void ChannelRecorder::Begin(int64_t start, unsigned type) {
    EndFile();
    Archive* archive = Archive::Get();
    start = start / START_UNIT * START_UNIT;
    m_file = {0, m_channel, start, start, type, 0, 0};
    const auto path = archive != nullptr ? archive->Begin(&m_file) : std::nullopt;
    if (!path) {
        return;
    }
    std::vector<const LiveFrame*> tracks;
    for (const auto& stream : STREAMS) {
        m_tracks[stream.track] = m_heads[stream.track] != nullptr;
        if (m_tracks[stream.track]) {
            tracks.push_back(m_heads[stream.track].get());
        }
    }
    m_writer = std::make_unique<MovWriter>(*path, start, tracks);
    m_file.bytes = m_writer->Bytes();
    m_disk = m_file.disk;
}

void ChannelRecorder::Write(const LiveFrame& frame) {
    if (m_writer == nullptr || !m_writer->Write(frame)) {
        return;
    }
    m_file.stop = std::max(m_file.stop, TimeOf(frame.header) + DurationOf(frame));
    if (m_writer->Bytes() != m_file.bytes) {  // a piece is complete
        m_file.bytes = m_writer->Bytes();
        Archive::Get()->Update(m_file);
    }
}

void ChannelRecorder::Close() {
    m_gathered.clear();
    m_heads = {};
    EndFile();
}

void ChannelRecorder::EndFile() {
    if (m_writer == nullptr) {
        return;
    }
    m_writer->Finish();
    m_file.bytes = m_writer->Bytes();
    m_writer.reset();
    m_disk = 0;
    Archive::Get()->Update(m_file);
}

}  // namespace simulator
