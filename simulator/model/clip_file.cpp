#include "clip_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <tuple>

#include "encoder.h"
#include "stream.h"

namespace simulator {
namespace {

constexpr AVRational MICROSECONDS = {1, 1000000};
constexpr size_t HEADER = sizeof(vexo_frame_header);

// In the file a unit begins with its length, four bytes; in a frame of the recorder's with a start code, as long.
bool LengthsToStartCodes(unsigned char* data, size_t size) {
    size_t at = 0;
    while (at + 4 <= size) {
        const size_t length = size_t{data[at]} << 24 | data[at + 1] << 16 | data[at + 2] << 8 | data[at + 3];
        const unsigned char code[] = {0, 0, 0, 1};
        memcpy(data + at, code, sizeof(code));
        if (length > size - at - 4) {
            return false;
        }
        at += 4 + length;
    }
    return at == size;
}

bool ReadAll(int descriptor, int64_t position, unsigned char* data, size_t size) {
    while (size > 0) {
        const ssize_t done = pread(descriptor, data, size, position);
        if (done <= 0) {
            return false;
        }
        data += done;
        position += done;
        size -= static_cast<size_t>(done);
    }
    return true;
}

}  // namespace

ClipFrame EntryOf(const LiveFrame& frame) {
    const vexo_frame_header& header = frame.header;
    return {TimeOf(header), 0, header.data_length, header.frame_no, TrackOf(header), frame.key};
}

std::unique_ptr<ClipFile> ClipFile::Open(const std::string& path, int64_t start) {
    std::unique_ptr<ClipFile> file(new ClipFile);
    file->m_descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file->m_descriptor < 0 || !file->Scan(path, start)) {
        return nullptr;
    }
    return file;
}

ClipFile::~ClipFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

bool ClipFile::Scan(const std::string& path, int64_t start) {
    AVFormatContext* context = nullptr;
    const int error = avformat_open_input(&context, path.c_str(), av_find_input_format("mov"), nullptr);
    const Av<AVFormatContext> file(context);
    const Av<AVPacket> packet(av_packet_alloc());
    if (error < 0) {
        return false;
    }
    while (av_read_frame(file.get(), packet.get()) >= 0) {
        Enter(*file->streams[packet->stream_index], *packet, start);
        av_packet_unref(packet.get());
    }
    std::stable_sort(m_frames.begin(), m_frames.end(), [](const ClipFrame& left, const ClipFrame& right) {
        return std::tie(left.time, left.track) < std::tie(right.time, right.track);
    });
    return true;
}

void ClipFile::Enter(const AVStream& stream, const AVPacket& packet, int64_t start) {
    if (stream.id < TRACK_MAIN || stream.id > TRACK_AUDIO || packet.pos < 0 || packet.pts == AV_NOPTS_VALUE) {
        return;
    }
    TrackInfo& track = m_tracks[stream.id];
    const int64_t time = start + av_rescale_q(packet.pts, stream.time_base, MICROSECONDS);
    const int64_t step = time - track.last;
    if (track.frames > 0 && step > 0 && (track.shortest_step == 0 || step < track.shortest_step)) {
        track.shortest_step = step;
    }
    track.last = time;
    track.width = stream.codecpar->width;
    track.height = stream.codecpar->height;
    m_frames.push_back({time, packet.pos, static_cast<unsigned>(packet.size), ++track.frames,
                        static_cast<Track>(stream.id), (packet.flags & AV_PKT_FLAG_KEY) != 0});
}

vexo_frame_header ClipFile::HeaderOf(const ClipFrame& entry) const {
    const TrackInfo& track = m_tracks[entry.track];
    vexo_frame_header header = {};
    header.frame_no = entry.number;
    header.seconds = static_cast<unsigned>(entry.time / MICROSECONDS.den);
    header.microseconds = static_cast<unsigned>(entry.time % MICROSECONDS.den);
    header.data_length = entry.size;
    if (entry.track == TRACK_AUDIO) {
        MarkAudio(&header);
    } else {
        MarkVideo(entry.track == TRACK_MAIN ? VEXO_ENC_STR_MAIN : VEXO_ENC_STR_SUB, entry.key, &header);
        const int64_t step = std::max<int64_t>(1, track.shortest_step);
        header.format[0] = static_cast<unsigned char>(
            track.shortest_step == 0 ? 1 : std::min<int64_t>(255, (MICROSECONDS.den + step / 2) / step));
        header.width = static_cast<unsigned short>(track.width);
        header.height = static_cast<unsigned short>(track.height);
    }
    return header;
}

std::shared_ptr<LiveFrame> ClipFile::Load(size_t index) const {
    const ClipFrame& entry = m_frames[index];
    auto frame = std::make_shared<LiveFrame>();
    frame->header = HeaderOf(entry);
    frame->key = entry.key;
    frame->bytes.resize(HEADER + entry.size);
    memcpy(frame->bytes.data(), &frame->header, HEADER);
    unsigned char* payload = frame->bytes.data() + HEADER;
    const bool read = ReadAll(m_descriptor, entry.position, payload, entry.size) &&
                      (entry.track == TRACK_AUDIO || LengthsToStartCodes(payload, entry.size));
    return read ? frame : nullptr;
}

}  // namespace simulator
