#include "frame_list.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "core/watch.h"

namespace simulator {
namespace {

constexpr size_t DUMPED = 10;  // newest frames in a dump

unsigned long WatchKey(const LiveFrame& frame) {
    return reinterpret_cast<unsigned long>(frame.bytes.data());
}

}  // namespace

FrameList::FrameList(std::string label, unsigned capacity) : m_label(std::move(label)), m_capacity(capacity) {}

void FrameList::Add(std::shared_ptr<LiveFrame> frame) {
    std::lock_guard<std::mutex> lock(m_mutex);
    frame->header.frame_no = ++m_number;
    memcpy(frame->bytes.data(), &frame->header, sizeof(frame->header));
    m_frames.push_back(std::move(frame));
    if (m_frames.size() > m_capacity) {
        m_frames.pop_front();
    }
}

void FrameList::StartOver() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_frames.clear();
    ++m_generation;
}

bool FrameList::First(vexo_user_id user, HandedFrame* out) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto newest = std::find_if(m_frames.rbegin(), m_frames.rend(), [](const FramePtr& f) { return f->key; });
    if (newest == m_frames.rend()) {
        return false;
    }
    HandOut(user, *newest, out);
    return true;
}

bool FrameList::After(vexo_user_id user, const vexo_read_av_list_note& position, HandedFrame* out) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const FramePtr next = Next(position);
    if (next == nullptr) {
        return false;
    }
    HandOut(user, next, out);
    return true;
}

std::vector<std::shared_ptr<LiveFrame>> FrameList::Since(vexo_read_av_list_note* position) {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<FramePtr> frames;
    for (FramePtr next = Next(*position); next != nullptr; next = Next(*position)) {
        *position = {{next->header.frame_no, m_generation}};
        frames.push_back(std::move(next));
    }
    return frames;
}

bool FrameList::Release(vexo_user_id user, const vexo_read_av_list_note& position) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto found = m_holds.find({user, position.note[1], position.note[0]});
    if (found == m_holds.end()) {
        lock.unlock();
        Complain(m_label + " frame " + std::to_string(position.note[0]) + " released by user " + std::to_string(user) +
                 ", who does not hold it");
        return false;
    }
    GiveBack(Goods::Frame, WatchKey(*found->second.frame), "vexo_model_rel_frame");
    if (--found->second.count == 0) {
        m_holds.erase(found);
    }
    return true;
}

void FrameList::HandOut(vexo_user_id user, const FramePtr& frame, HandedFrame* out) {
    const unsigned number = frame->header.frame_no;
    Hold& hold = m_holds[{user, m_generation, number}];
    hold.frame = frame;
    ++hold.count;
    Take(Goods::Frame, WatchKey(*frame), m_label + " frame " + std::to_string(number));
    *out = {frame->bytes.data(), {{number, m_generation}}, frame->no_video};
}

// Numbers wrap, so positions are compared by how far they lie behind the newest frame.
FrameList::FramePtr FrameList::Next(const vexo_read_av_list_note& position) const {
    if (position.note[1] != m_generation || m_frames.empty()) {
        return OldestKey();
    }
    const unsigned behind = m_number - position.note[0];
    if (static_cast<int>(behind) <= 0) {
        return nullptr;
    }
    return behind <= m_frames.size() ? m_frames[m_frames.size() - behind] : OldestKey();
}

FrameList::FramePtr FrameList::OldestKey() const {
    const auto oldest = std::find_if(m_frames.begin(), m_frames.end(), [](const FramePtr& f) { return f->key; });
    return oldest != m_frames.end() ? *oldest : nullptr;
}

unsigned FrameList::HeldCount(unsigned number) const {
    unsigned count = 0;
    for (const auto& [key, hold] : m_holds) {
        if (std::get<1>(key) == m_generation && std::get<2>(key) == number) {
            count += hold.count;
        }
    }
    return count;
}

std::vector<std::string> FrameList::Describe() {
    std::lock_guard<std::mutex> lock(m_mutex);
    char line[160];
    snprintf(line, sizeof(line), "%s: %zu frames kept, at most %u, generation %u, %zu held\n", m_label.c_str(),
             m_frames.size(), m_capacity, m_generation, m_holds.size());
    std::vector<std::string> lines = {line};
    for (size_t i = m_frames.size() - std::min(m_frames.size(), DUMPED); i < m_frames.size(); ++i) {
        const vexo_frame_header& header = m_frames[i]->header;
        snprintf(line, sizeof(line), "  frame %u type %u time %u.%06u length %u held %u\n", header.frame_no,
                 header.frame_type, header.seconds, header.microseconds, header.data_length,
                 HeldCount(header.frame_no));
        lines.emplace_back(line);
    }
    return lines;
}

void FrameList::Dump(vexo_print_func print) {
    for (const std::string& line : Describe()) {  // the print function is the guest's: no lock is held
        print("%s", line.c_str());
    }
}

}  // namespace simulator
