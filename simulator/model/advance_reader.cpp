#include "advance_reader.h"

#include <pthread.h>

#include <algorithm>
#include <system_error>

#include "core/faults.h"
#include "core/watch.h"
#include "readers.h"

namespace simulator {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds IDLE{50};               // the guest may set a reader at any time: how often it is looked at
constexpr milliseconds SETTLING{20};           // after a seek, for the guest seeks its readers as well
constexpr milliseconds REFUSED{10};            // before a frame that was not accepted is offered again
constexpr microseconds USUAL_GAP{40000};       // in place of one that says nothing
constexpr microseconds LONGEST_GAP{10000000};  // a longer one lies between two recordings
constexpr milliseconds LATE{100};              // further behind, the schedule begins anew

// Which of two frames comes first, seen in the direction of reading.
bool Earlier(const ChannelReader::Offer& left, const ChannelReader::Offer& right) {
    const int64_t left_time = TimeOf(left.frame->header);
    const int64_t right_time = TimeOf(right.frame->header);
    return left.reverse ? left_time > right_time : left_time < right_time;
}

}  // namespace

void Advance::Add(std::shared_ptr<ChannelReader> reader, void* usr_para) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_members.push_back({std::move(reader), usr_para, std::nullopt});
    m_changed.notify_all();
}

bool Advance::Remove(const ChannelReader* reader) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_members.begin(), m_members.end(),
                                    [reader](const Member& member) { return member.reader.get() == reader; });
    const bool was_member = found != m_members.end();
    if (was_member) {
        m_members.erase(found);
    }
    if (m_caller != std::this_thread::get_id()) {
        m_changed.wait(lock, [&] { return m_called_for != reader; });
    }
    return was_member;
}

void Advance::Seek(long seconds) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Member& member : m_members) {
        member.reader->Go(seconds);
    }
    m_last.reset();
    m_not_before = Clock::now() + SETTLING;
    m_changed.notify_all();
}

void Advance::SetCallback(vexo_advance_frame_callback callback) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_callback = callback;
}

bool Advance::Start() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_pushing || m_callback == nullptr) {
        return m_pushing;
    }
    try {
        std::thread([shared = shared_from_this(), run = m_run] { shared->Run(run); }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    m_active.insert(m_run);
    m_pushing = true;
    m_last.reset();
    return true;
}

void Advance::Stop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    const unsigned stopped = m_run++;
    m_pushing = false;
    m_changed.notify_all();
    if (m_caller != std::this_thread::get_id()) {
        m_changed.wait(lock, [&] { return m_active.empty() || *m_active.begin() > stopped; });
    }
}

void Advance::Run(unsigned run) {
    pthread_setname_np(pthread_self(), "advance reader");
    std::unique_lock<std::mutex> lock(m_mutex);
    while (m_run == run) {
        Round(lock);
    }
    m_active.erase(run);
    m_changed.notify_all();
}

// Pushes a frame when it is due; otherwise waits a while, or until something changes.
void Advance::Round(std::unique_lock<std::mutex>& lock) {
    const Clock::time_point now = Clock::now();
    const std::optional<Choice> choice = m_called_for == nullptr ? Choose() : std::nullopt;
    const Clock::time_point due = choice ? std::max(DueOf(*choice, now), m_not_before) : Clock::time_point::max();
    if (due > now) {
        m_changed.wait_until(lock, std::min(due, now + IDLE));
        return;
    }
    const bool accepted = Push(*choice, lock);
    Settle(*choice, due, accepted);
    if (!accepted) {
        m_changed.wait_for(lock, REFUSED);
    }
}

// The earliest frame of all, or an end that has not been told yet.
std::optional<Advance::Choice> Advance::Choose() {
    std::optional<Choice> best;
    for (const Member& member : m_members) {
        ChannelReader::Offer offer = member.reader->Look();
        if (!offer.reading || (offer.frame == nullptr && member.ended_turn == offer.turn)) {
            continue;
        }
        if (offer.frame == nullptr) {
            return Choice{member.reader, member.usr_para, std::move(offer)};
        }
        if (!best || Earlier(offer, best->offer)) {
            best = Choice{member.reader, member.usr_para, std::move(offer)};
        }
    }
    return best;
}

Advance::Clock::time_point Advance::DueOf(const Choice& choice, Clock::time_point now) const {
    if (choice.offer.frame == nullptr || !m_last) {
        return now;
    }
    const int64_t later = TimeOf(choice.offer.frame->header) - m_last->time;
    microseconds gap(choice.offer.reverse ? -later : later);
    if (gap < microseconds(0) || gap >= LONGEST_GAP) {
        gap = USUAL_GAP;
    }
    return m_last->due + (choice.offer.key_only ? gap / KEY_FRAMES_PACE : gap);
}

// Runs the guest's callback, without the lock; true when the frame was accepted.
bool Advance::Push(const Choice& choice, std::unique_lock<std::mutex>& lock) {
    const vexo_advance_frame_callback callback = m_callback;
    m_called_for = choice.reader.get();
    m_caller = std::this_thread::get_id();
    lock.unlock();
    unsigned char* bytes = choice.offer.frame != nullptr ? choice.offer.frame->bytes.data() : nullptr;
    const unsigned int answer = callback(choice.usr_para, bytes != nullptr ? VEXO_TRUE : VEXO_FALSE, bytes);
    lock.lock();
    m_called_for = nullptr;
    m_caller = {};
    m_changed.notify_all();
    return answer == 0;
}

void Advance::Settle(const Choice& choice, Clock::time_point due, bool accepted) {
    if (!accepted) {
        m_last.reset();
        return;
    }
    if (choice.offer.frame != nullptr) {
        choice.reader->Take(choice.offer.frame);
        const Clock::time_point now = Clock::now();
        m_last = Pushed{TimeOf(choice.offer.frame->header), now - due > LATE ? now : due};
        return;
    }
    for (Member& member : m_members) {
        if (member.reader == choice.reader) {
            member.ended_turn = choice.offer.turn;
        }
    }
}

int AdvanceReader::add_reader(vexo_avss_file_reader* reader, void* usr_para) {
    if (ShallFail("vexo_advance_avss_file_reader::add_reader")) {
        return -1;
    }
    std::shared_ptr<ChannelReader> found = FindReader(reader);
    if (found == nullptr) {
        Complain("vexo_advance_avss_file_reader::add_reader with a reader that is not handed out");
        return -1;
    }
    m_advance->Add(std::move(found), usr_para);
    return 0;
}

int AdvanceReader::remove_reader(vexo_avss_file_reader* reader) {
    if (ShallFail("vexo_advance_avss_file_reader::remove_reader")) {
        return -1;
    }
    const std::shared_ptr<ChannelReader> found = FindReader(reader);
    return found != nullptr && m_advance->Remove(found.get()) ? 0 : -1;
}

int AdvanceReader::seek(long seconds) {
    if (ShallFail("vexo_advance_avss_file_reader::seek")) {
        return -1;
    }
    m_advance->Seek(seconds);
    return 0;
}

int AdvanceReader::set_callback(vexo_advance_frame_callback callback) {
    if (ShallFail("vexo_advance_avss_file_reader::set_callback")) {
        return -1;
    }
    m_advance->SetCallback(callback);
    return 0;
}

int AdvanceReader::start(unsigned int /*argument*/) {
    return !ShallFail("vexo_advance_avss_file_reader::start") && m_advance->Start() ? 0 : -1;
}

int AdvanceReader::stop() {
    if (ShallFail("vexo_advance_avss_file_reader::stop")) {
        return -1;
    }
    m_advance->Stop();
    return 0;
}

int AdvanceReader::set_param(unsigned int /*param*/) {
    return ShallFail("vexo_advance_avss_file_reader::set_param") ? -1 : 0;
}

}  // namespace simulator
