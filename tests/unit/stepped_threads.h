// Threads that the library asked the platform for, run by a test a step at a time. What they do is not known here.
#ifndef STEPPED_THREADS_H
#define STEPPED_THREADS_H

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "vexo_utility.h"

/**
 * The threads that the library asked for, each let go a step at a time: it stands still before it begins and in every
 * sleep. Taking one back lets it run to its end.
 */
class SteppedThreads {
public:
    ~SteppedThreads() {
        for (unsigned long id = 1; id <= m_threads.size(); ++id)
            Join(id);
    }

    unsigned long Create(const vexo_thread_creat_ctl& ctl) {
        std::lock_guard<std::mutex> guard(m_guard);
        m_threads.push_back(std::make_unique<Stepped>());
        Stepped* made = m_threads.back().get();
        made->thread = std::thread([this, made, ctl] {
            s_self = made;
            Stand(made);
            ctl.entry(ctl.argument);
            std::lock_guard<std::mutex> end(m_guard);
            made->ended = true;
            m_changed.notify_all();
        });
        return m_threads.size();
    }

    /** From the library's sleep: stands still until the next step. Any other thread does not sleep at all. */
    void Sleep() {
        if (s_self != nullptr)
            Stand(s_self);
    }

    /** Lets a thread go on to its next sleep, or to its end. */
    void Step(unsigned long id) {
        std::unique_lock<std::mutex> guard(m_guard);
        Stepped& stepped = *m_threads[id - 1];
        m_changed.wait(guard, [&] { return stepped.standing || stepped.ended; });
        stepped.standing = false;
        m_changed.notify_all();
        m_changed.wait(guard, [&] { return stepped.standing || stepped.ended; });
    }

    bool Ended(unsigned long id) {
        std::lock_guard<std::mutex> guard(m_guard);
        return m_threads[id - 1]->ended;
    }

    /** Lets a thread run to its end. */
    void Join(unsigned long id) {
        std::thread* thread = nullptr;
        {
            std::lock_guard<std::mutex> guard(m_guard);
            m_threads[id - 1]->free = true;
            m_changed.notify_all();
            thread = &m_threads[id - 1]->thread;
        }
        if (thread->joinable())
            thread->join();
    }

    size_t Count() {
        std::lock_guard<std::mutex> guard(m_guard);
        return m_threads.size();
    }

private:
    struct Stepped {
        std::thread thread;
        bool standing = false;
        bool free = false;
        bool ended = false;
    };

    void Stand(Stepped* stepped) {
        std::unique_lock<std::mutex> guard(m_guard);
        stepped->standing = true;
        m_changed.notify_all();
        m_changed.wait(guard, [stepped] { return !stepped->standing || stepped->free; });
    }

    static thread_local Stepped* s_self;
    std::mutex m_guard;
    std::condition_variable m_changed;
    std::vector<std::unique_ptr<Stepped>> m_threads;
};
inline thread_local SteppedThreads::Stepped* SteppedThreads::s_self = nullptr;

#endif
