// Both kinds of lock. Each is a small state under a mutex of its own, rather than a pthread lock, so that it knows who
// holds it and can tell misuse instead of running into undefined behaviour.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "core/faults.h"
#include "core/watch.h"
#include "utility/caller.h"
#include "utility/lock_order.h"
#include "vexo_utility.h"

namespace simulator {
namespace {

using Clock = std::chrono::system_clock;

struct Holder {
    Caller who;
    const char* file;
    const char* function;
    Clock::time_point since;
};

std::string TimeOfDay(Clock::time_point time) {
    const time_t seconds = Clock::to_time_t(time);
    const long milliseconds = static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000);
    struct tm local = {};
    localtime_r(&seconds, &local);
    char text[40];
    snprintf(text, sizeof text, "%02d:%02d:%02d.%03ld", local.tm_hour, local.tm_min, local.tm_sec, milliseconds);
    return text;
}

std::string Describe(const Holder& holder) {
    return Describe(holder.who) + ", " + Place(holder.file, holder.function) + ", since " + TimeOfDay(holder.since);
}

/** The state behind a lock: nobody, one for change, or any number of readers. */
class LockState {
public:
    LockState(vexo_user_id user, const char* name)
        : m_name(name == nullptr ? "" : name), m_user(user), m_order(NewOrderedLock(m_name)) {}
    ~LockState() { ForgetOrderedLock(m_order); }
    LockState(const LockState&) = delete;
    LockState& operator=(const LockState&) = delete;

    std::string Label() const { return m_name + ", user " + std::to_string(m_user); }

    int TakeForChange(const char* file, const char* function) {
        if (HoldsLocks()) {
            AboutToWait(m_order, Place(file, function));
        }
        std::unique_lock<std::mutex> hold(m_guard);
        RefuseStandstill(file, function);
        ++m_waiting;
        m_freed.wait(hold, [this] { return m_holders.empty(); });
        --m_waiting;
        Add(true, file, function);
        return 0;
    }

    /** for_change: alone; otherwise beside other readers. */
    int TryToTake(bool for_change, const char* file, const char* function) {
        std::lock_guard<std::mutex> hold(m_guard);
        if (!m_holders.empty() && (for_change || m_for_change)) {
            return -1;
        }
        Add(for_change, file, function);
        return 0;
    }

    int GiveBack(const char* file, const char* function) {
        std::lock_guard<std::mutex> hold(m_guard);
        const auto mine = Mine();
        if (mine == m_holders.end()) {
            ComplainOfStranger(file, function);
            return -1;
        }
        m_holders.erase(mine);
        HasGivenBack(m_order);
        TellWhenFree();
        return 0;
    }

    /** As GiveBack, but a stranger frees the lock as well: it is a misuse everywhere but where the contract has it. */
    int GiveBackForAnyone(const char* file, const char* function) {
        {
            std::lock_guard<std::mutex> hold(m_guard);
            if (!m_holders.empty() && Mine() == m_holders.end()) {
                ComplainOfStranger(file, function);
                m_holders.clear();
                // Under a new number, so that the thread which left it behind no longer counts as holding it.
                ForgetOrderedLock(m_order);
                m_order = NewOrderedLock(m_name);
                TellWhenFree();
                return 0;
            }
        }
        return GiveBack(file, function);
    }

    /** At most size bytes, without a terminator when the text fills them. */
    int Tell(char* buffer, unsigned size) {
        if (buffer == nullptr || size == 0) {
            return -1;
        }
        std::lock_guard<std::mutex> hold(m_guard);
        const std::string text = Holders();
        memcpy(buffer, text.c_str(), std::min<size_t>(size, text.size() + 1));
        return 0;
    }

    /** Complains when the lock is not free; false when someone waits, so that the state must stay. */
    bool MayGo(const char* file, const char* function) {
        std::lock_guard<std::mutex> hold(m_guard);
        if (!m_holders.empty()) {
            Complain("lock " + Label() + ": deleted while held, " + Place(file, function) + "; " + Holders());
            HasGivenBack(m_order);
        }
        return m_waiting == 0;
    }

private:
    std::vector<Holder>::iterator Mine() {
        return std::find_if(m_holders.begin(), m_holders.end(),
                            [](const Holder& holder) { return holder.who.serial == ThisCaller().serial; });
    }

    void Add(bool for_change, const char* file, const char* function) {
        m_for_change = for_change;
        m_holders.push_back({ThisCaller(), file, function, Clock::now()});
        HasTaken(m_order);
    }

    void ComplainOfStranger(const char* file, const char* function) const {
        Complain("lock " + Label() + ": unlocked by " + Describe(ThisCaller()) + ", " + Place(file, function) +
                 ", which does not hold it; " + Holders());
    }

    void TellWhenFree() {
        if (m_holders.empty()) {
            // Under the guard: once it is free, whoever takes it next may delete the lock.
            m_freed.notify_all();
        }
    }

    std::string Holders() const {
        std::string text = m_holders.empty() ? "free" : m_for_change ? "held by " : "held for reading by ";
        for (const Holder& holder : m_holders) {
            text += (&holder == m_holders.data() ? "" : "; ") + Describe(holder);
        }
        return text;
    }

    /** A thread that waits for a lock which it holds itself would wait forever: ends the process instead. */
    void RefuseStandstill(const char* file, const char* function) {
        if (Mine() == m_holders.end()) {
            return;
        }
        fprintf(stderr,
                "[simulated recorder] lock %s: taken again at %s by the thread that holds it, which would wait forever "
                "on a board; %s\n",
                Label().c_str(), Place(file, function).c_str(), Holders().c_str());
        abort();
    }

    const std::string m_name;
    const vexo_user_id m_user;
    std::atomic<unsigned long> m_order;  ///< changed under m_guard
    std::mutex m_guard;
    std::condition_variable m_freed;
    std::vector<Holder> m_holders;  ///< guarded by m_guard
    bool m_for_change = false;      ///< how the holders hold it; guarded by m_guard
    unsigned m_waiting = 0;         ///< guarded by m_guard
};

int NotOffered(const LockState& state, const char* slot) {
    Complain("lock " + state.Label() + ": " + slot + " called, which is reserved");
    return -1;
}

class PlainLock final : public vexo_lock {
public:
    PlainLock(vexo_user_id user, const char* name) : m_state(user, name) {}
    LockState& State() { return m_state; }

    int lock(const char* file, const char* function) override VEXO_NO_THREAD_SAFETY_ANALYSIS {
        return m_state.TakeForChange(file, function);
    }
    int rd_trylock(const char* file, const char* function) override VEXO_NO_THREAD_SAFETY_ANALYSIS {
        return ShallFail("vexo_lock::rd_trylock") ? -1 : m_state.TryToTake(true, file, function);
    }
    int unlock(const char* file, const char* function) override VEXO_NO_THREAD_SAFETY_ANALYSIS {
        return m_state.GiveBackForAnyone(file, function);
    }
    int get_info(char* buffer, unsigned int size) override { return m_state.Tell(buffer, size); }

private:
    LockState m_state;
};

class ReadWriteLock final : public vexo_rw_lock {
public:
    ReadWriteLock(vexo_user_id user, const char* name) : m_state(user, name) {}
    LockState& State() { return m_state; }

    int reserved_1(const char*, const char*) override { return NotOffered(m_state, "slot 1"); }
    int rd_trylock(const char* file, const char* function) override VEXO_NO_THREAD_SAFETY_ANALYSIS {
        return ShallFail("vexo_rw_lock::rd_trylock") ? -1 : m_state.TryToTake(false, file, function);
    }
    int wr_lock(const char* file, const char* function) override VEXO_NO_THREAD_SAFETY_ANALYSIS {
        return m_state.TakeForChange(file, function);
    }
    int reserved_4(const char*, const char*) override { return NotOffered(m_state, "slot 4"); }
    int unlock(const char* file, const char* function) override VEXO_NO_THREAD_SAFETY_ANALYSIS {
        return m_state.GiveBack(file, function);
    }
    int get_info(char* buffer, unsigned int size) override { return m_state.Tell(buffer, size); }

private:
    LockState m_state;
};

/** The key that the watch books a lock under. */
template <typename Interface>
unsigned long KeyOf(const Interface* lock) {
    return reinterpret_cast<unsigned long>(lock);
}

template <typename Kind, typename Interface>
Interface* Create(const char* operation, vexo_user_id user, const char* name) {
    if (ShallFail(operation)) {
        return nullptr;
    }
    auto* lock = new Kind(user, name);
    Interface* handed_out = lock;
    Take(Goods::Lock, KeyOf(handed_out), lock->State().Label());
    return handed_out;
}

template <typename Kind, typename Interface>
void Delete(Interface* handed_out, const char* file, const char* function) {
    if (handed_out == nullptr || !GiveBack(Goods::Lock, KeyOf(handed_out), Place(file, function))) {
        return;
    }
    auto* lock = static_cast<Kind*>(handed_out);
    if (lock->State().MayGo(file, function)) {
        delete lock;
    }
}

}  // namespace
}  // namespace simulator

vexo_lock* vexo_utility_new_lock(vexo_user_id user, const char* name) {
    return simulator::Create<simulator::PlainLock, vexo_lock>("vexo_utility_new_lock", user, name);
}

void vexo_utility_delete_lock(vexo_lock* lock, const char* file, const char* function) {
    simulator::Delete<simulator::PlainLock>(lock, file, function);
}

vexo_rw_lock* vexo_utility_new_rw_lock(vexo_user_id user, const char* name) {
    return simulator::Create<simulator::ReadWriteLock, vexo_rw_lock>("vexo_utility_new_rw_lock", user, name);
}

void vexo_utility_delete_rw_lock(vexo_rw_lock* lock, const char* file, const char* function) {
    simulator::Delete<simulator::ReadWriteLock>(lock, file, function);
}
