#include "history.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <random>
#include <system_error>
#include <thread>

#include "av.h"
#include "history_maker.h"

namespace simulator {
namespace {

constexpr int64_t SECOND = 1000000;  // microseconds
constexpr unsigned TYPES[] = {RECORD_SCHEDULE, RECORD_MOTION, RECORD_ALARM, RECORD_MOTION | RECORD_ALARM};
constexpr const char* NOTE = "history";  // what the archive says of it: nothing, "making FROM TO", "made"
constexpr const char* MADE = "made";

bool Quiet() {
    const char* quiet = getenv("RECORDER_QUIET");
    return quiet != nullptr && strcmp(quiet, "1") == 0;
}

/** Tells a person how far it is: at the beginning and at the end, on a terminal also in between. */
class Progress {
public:
    explicit Progress(size_t count) : m_count(count), m_silent(Quiet() || count == 0) {
        if (!m_silent) {
            Tell("first start: making a history of " + std::to_string(count) + " recordings");
        }
    }

    void Step() {
        const size_t done = ++m_done;
        if (!m_silent && isatty(STDERR_FILENO) != 0) {
            fprintf(stderr, "[simulated recorder] %zu of %zu%s", done, m_count, done < m_count ? "\r" : "\n");
        }
    }

    void End() const {
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - m_begun;
        char text[64];
        snprintf(text, sizeof(text), "the history is made, in %.1f seconds", took.count());
        if (!m_silent) {
            Tell(text);
        }
    }

private:
    const size_t m_count;
    const bool m_silent;
    const std::chrono::steady_clock::time_point m_begun = std::chrono::steady_clock::now();
    std::atomic<size_t> m_done{0};
};

/** Other processes with the same home wait here; the lock goes with the process, whatever happens to it. */
class HomeLock {
public:
    HomeLock() : m_file(open((HomeFolder() + "/recordings.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
        flock(m_file, LOCK_EX);
    }
    ~HomeLock() { close(m_file); }
    HomeLock(const HomeLock&) = delete;
    HomeLock& operator=(const HomeLock&) = delete;

private:
    const int m_file;
};

int64_t BeginOf(const HistorySettings& settings, int64_t end) {
    return end - settings.hours * 3600 * SECOND;
}

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

void MakeChannel(Archive* archive, unsigned channel, int64_t end, Progress* progress) {
    const Scenario& scenario = TheScenario();
    const HistorySettings& settings = scenario.recordings.history;
    if (settings.listed > 0) {
        archive->EnterListed(channel, settings.listed, BeginOf(settings, end));
    }
    if (settings.segments == 0) {
        return;
    }
    HistoryMaker maker(archive, channel, scenario.cameras[channel - 1], settings, scenario.seed);
    for (const HistorySegment& segment : PlanHistory(settings, scenario.seed, channel, end)) {
        maker.Make(segment);
        progress->Step();
    }
}

// As many threads as there are processors share the channels.
void MakeChannels(Archive* archive, int64_t end, Progress* progress) {
    const unsigned channels = static_cast<unsigned>(TheScenario().cameras.size());
    std::atomic<unsigned> next{1};
    const auto work = [&] {
        for (unsigned channel = next++; channel <= channels; channel = next++) {
            MakeChannel(archive, channel, end, progress);
        }
    };
    std::vector<std::thread> others;
    try {
        for (unsigned i = 1; i < std::min(channels, std::thread::hardware_concurrency()); ++i) {
            others.emplace_back(work);
        }
    } catch (const std::system_error&) {  // those that there are do all of it
    }
    work();
    for (std::thread& other : others) {
        other.join();
    }
}

// What an interrupted first start has left is taken out first.
void MakeHistory(Archive* archive, const std::string& note) {
    const HistorySettings& settings = TheScenario().recordings.history;
    long long from = 0;
    long long to = 0;
    if (sscanf(note.c_str(), "making %lld %lld", &from, &to) == 2) {
        archive->RemoveBetween(from, to);
    }
    const int64_t end = EndOf(settings, archive);
    const int64_t begin = BeginOf(settings, end) - settings.listed * LISTED_LENGTH;
    archive->SetNote(NOTE, "making " + std::to_string(begin) + " " + std::to_string(end));
    Progress progress(TheScenario().cameras.size() * settings.segments);
    MakeChannels(archive, end, &progress);
    archive->SetNote(NOTE, MADE);
    progress.End();
}

}  // namespace

std::vector<HistorySegment> PlanHistory(const HistorySettings& settings, unsigned seed, unsigned channel, int64_t end) {
    std::vector<HistorySegment> plan;
    std::mt19937 draw(seed * 257 + channel);
    const int64_t begin = BeginOf(settings, end) / SECOND;
    for (unsigned i = 0; i < settings.segments; ++i) {
        const int64_t part = settings.hours * int64_t{3600} / settings.segments;
        const int64_t start = begin + i * part + draw() % (part - settings.seconds + 1);
        plan.push_back({start * SECOND, (start + settings.seconds) * SECOND, TYPES[i % std::size(TYPES)]});
    }
    return plan;
}

void EnsureHistory(Archive* archive) {
    static std::once_flag once;
    std::call_once(once, [archive] {
        const HomeLock lock;
        const std::string note = archive->Note(NOTE);
        if (note != MADE) {
            MakeHistory(archive, note);
        }
    });
}

}  // namespace simulator
