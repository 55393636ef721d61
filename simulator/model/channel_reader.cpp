#include "channel_reader.h"

#include <algorithm>

#include "core/faults.h"
#include "core/watch.h"
#include "inquiry.h"

namespace simulator {
namespace {

constexpr unsigned ALL_FRAMES = 2;
constexpr unsigned KEY_FRAMES = 0;
constexpr unsigned MAIN_STREAM = 1;
constexpr unsigned SUB_STREAM = 2;
constexpr long SECOND = 1000000;     // microseconds
constexpr long LATEST = 0xFFFFFFFF;  // seconds: what a time stamp can say

int64_t MomentOf(long seconds) {
    return int64_t{std::clamp(seconds, 0L, LATEST)} * SECOND;
}

}  // namespace

int ChannelReader::open(vexo_rec_file_inquiry_result* files) {
    if (ShallFail("vexo_avss_file_reader::open")) {
        return -1;
    }
    auto found = FilesOf(files);
    if (!found) {
        Complain("vexo_avss_file_reader::open with a list that is not handed out");
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_files.Open(std::move(*found));
    m_open = true;
    m_started = false;
    m_pending.reset();
    ++m_turn;
    return 0;
}

// A frame that is offered and no longer fits is not offered again.
int ChannelReader::Change(const ReadSettings& settings) {
    const bool drops = m_pending != nullptr && !settings.Admits(EntryOf(*m_pending));
    m_files.Set(settings);
    if (drops) {
        m_pending.reset();
    }
    return 0;
}

int ChannelReader::set_frame_mode(unsigned int mode) {
    if (ShallFail("vexo_avss_file_reader::set_frame_mode") || (mode != ALL_FRAMES && mode != KEY_FRAMES)) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    ReadSettings settings = m_files.Settings();
    settings.key_only = mode == KEY_FRAMES;
    return Change(settings);
}

int ChannelReader::set_stream_type(unsigned int type) {
    if (ShallFail("vexo_avss_file_reader::set_stream_type") || (type != MAIN_STREAM && type != SUB_STREAM)) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    ReadSettings settings = m_files.Settings();
    settings.video = type == MAIN_STREAM ? TRACK_MAIN : TRACK_SUB;
    return Change(settings);
}

int ChannelReader::set_direction(unsigned int reverse) {
    if (ShallFail("vexo_avss_file_reader::set_direction") || reverse > 1) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    ReadSettings settings = m_files.Settings();
    settings.reverse = reverse == 1;
    return Change(settings);
}

int ChannelReader::set_time_range(long start, long stop) {
    if (ShallFail("vexo_avss_file_reader::set_time_range")) {
        return -1;
    }
    if (stop <= 0) {
        return 0;
    }
    if (start > stop) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    ReadSettings settings = m_files.Settings();
    settings.from = MomentOf(start);
    settings.to = MomentOf(stop);
    return Change(settings);
}

int ChannelReader::seek(long seconds) {
    return !ShallFail("vexo_avss_file_reader::seek") && Go(seconds) ? 0 : -1;
}

bool ChannelReader::Go(long seconds) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open) {
        return false;
    }
    m_files.Seek(MomentOf(seconds));
    m_pending.reset();
    ++m_turn;
    return true;
}

int ChannelReader::start() {
    if (ShallFail("vexo_avss_file_reader::start")) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open) {
        return -1;
    }
    m_started = true;
    ++m_turn;
    return 0;
}

int ChannelReader::close() {
    if (ShallFail("vexo_avss_file_reader::close")) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_files.Open({});
    m_open = false;
    m_started = false;
    m_pending.reset();
    m_held.reset();
    ++m_turn;
    return 0;
}

int ChannelReader::read_frame(unsigned char** frame, unsigned int /*reserved*/) {
    if (ShallFail("vexo_avss_file_reader::read_frame") || frame == nullptr) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_held = m_started ? Pending() : nullptr;
    *frame = m_held != nullptr ? m_held->bytes.data() : nullptr;
    return m_held != nullptr ? 0 : -1;
}

int ChannelReader::release_frame(unsigned int /*frame_type*/) {
    if (ShallFail("vexo_avss_file_reader::release_frame")) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_held == nullptr) {
        return -1;
    }
    if (m_pending == m_held) {
        m_pending.reset();
    }
    m_held.reset();
    return 0;
}

// Under the lock, while reading.
FramePtr ChannelReader::Pending() {
    if (m_pending == nullptr) {
        m_pending = m_files.Next();
    }
    return m_pending;
}

ChannelReader::Offer ChannelReader::Look() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return {m_started, m_started ? Pending() : nullptr, m_turn, m_files.Settings().reverse,
            m_files.Settings().key_only};
}

void ChannelReader::Take(const FramePtr& frame) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_pending == frame) {
        m_pending.reset();
    }
}

}  // namespace simulator
