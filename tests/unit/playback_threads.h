// What the tests of playback under several threads share: a signal, and waiting for a call of the library's.
#ifndef PLAYBACK_THREADS_H
#define PLAYBACK_THREADS_H

#include "playback_fixture.h"

/** What one thread tells another, once. */
class Signal {
public:
    void Give() {
        std::lock_guard<std::mutex> guard(m_guard);
        m_given = true;
        m_changed.notify_all();
    }
    void Await() {
        std::unique_lock<std::mutex> guard(m_guard);
        m_changed.wait(guard, [this] { return m_given; });
    }

private:
    std::mutex m_guard;
    std::condition_variable m_changed;
    bool m_given = false;
};

class PlayThreads : public PlaybackFixture {
protected:
    /** Waits until the record holds a line; the lines so far are kept. */
    void AwaitCall(const std::string& line) {
        while (With(line, Calls()).empty())
            std::this_thread::yield();
    }
    const Lines& Calls() {
        m_calls = Joined({m_calls, platform.TakeCalls()});
        return m_calls;
    }
    /** Where a line stands in the record, which must hold it. */
    size_t PlaceOf(const std::string& line) {
        const Lines& calls = Calls();
        for (size_t place = 0; place < calls.size(); ++place) {
            if (calls[place].find(line) != std::string::npos)
                return place;
        }
        ADD_FAILURE() << line << " was not called";
        return 0;
    }

    static void OnAnotherThread(const std::function<void()>& action) { std::thread(action).join(); }

private:
    Lines m_calls;
};

#endif
