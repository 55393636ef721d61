#include <limits.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <string>

#include "core/faults.h"
#include "core/watch.h"
#include "core/watch_book.h"
#include "utility/caller.h"
#include "vexo_utility.h"

namespace simulator {
namespace {

/** Handed to a new thread, which waits until its creator knows its id and then takes over what it needs. */
struct Start {
    vexo_thread_func entry;
    void* argument;
    bool joinable;
    std::string name;
    std::mutex lock;
    std::condition_variable changed;
    bool known = false;  ///< the id has been written and booked; guarded by lock
    bool taken = false;  ///< the thread needs the record no more; guarded by lock
};

/** Threads that a creator may take back, by id. */
struct Table {
    std::mutex lock;
    std::map<unsigned long, std::string> joinable;
};

Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

/** Whether the calling thread has told the platform that it runs. */
thread_local bool has_entered = false;

void Book(unsigned long id, const Start& start) {
    Take(Goods::Thread, id, start.name);
    if (start.joinable) {
        Table& table = TheTable();
        std::lock_guard<std::mutex> hold(table.lock);
        table.joinable[id] = start.name;
    }
}

/** A thread without a creator who waits for it gives itself back. */
void End(unsigned long id, bool joinable, const std::string& name) {
    if (has_entered) {
        Complain("thread " + name + ": ended without vexo_utility_exit_thread");
    }
    if (joinable) {
        MarkDone(Goods::Thread, id);
    } else {
        GiveBack(Goods::Thread, id, name);
    }
}

void* Run(void* given) {
    Start& start = *static_cast<Start*>(given);
    std::unique_lock<std::mutex> hold(start.lock);
    start.changed.wait(hold, [&start] { return start.known; });
    const vexo_thread_func entry = start.entry;
    void* const argument = start.argument;
    const bool joinable = start.joinable;
    const std::string name = start.name;
    start.taken = true;
    // Under the lock: the creator's stack holds the record and goes as soon as it may.
    start.changed.notify_one();
    hold.unlock();

    pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
    void* const result = entry(argument);
    End(pthread_self(), joinable, name);
    return result;
}

int StartThread(const vexo_thread_creat_ctl& ctl, Start& start, pthread_t& thread) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (ctl.stack_size != 0) {
        pthread_attr_setstacksize(&attributes, std::max<size_t>(ctl.stack_size, PTHREAD_STACK_MIN));
    }
    pthread_attr_setdetachstate(&attributes, start.joinable ? PTHREAD_CREATE_JOINABLE : PTHREAD_CREATE_DETACHED);
    const int result = pthread_create(&thread, &attributes, Run, &start);
    pthread_attr_destroy(&attributes);
    return result;
}

/** Takes a thread out of the table of those that can be taken back. */
bool Claim(unsigned long id) {
    Table& table = TheTable();
    std::lock_guard<std::mutex> hold(table.lock);
    return table.joinable.erase(id) == 1;
}

int Refuse(const std::string& complaint) {
    Complain(complaint);
    return -1;
}

}  // namespace
}  // namespace simulator

using namespace simulator;

// Scheduling policy and priority are the board's business: every thread runs with the host's default.
int vexo_utility_creat_thread(const vexo_thread_creat_ctl* ctl, const char* name, unsigned long* id) {
    if (ctl == nullptr || ctl->entry == nullptr || id == nullptr) {
        return Refuse("vexo_utility_creat_thread without control record, entry or id");
    }
    if (ShallFail("vexo_utility_creat_thread")) {
        return -1;
    }
    Start start;
    start.entry = ctl->entry;
    start.argument = ctl->argument;
    start.joinable = ctl->joinable != 0;
    start.name = name == nullptr ? "" : name;
    pthread_t thread;
    if (StartThread(*ctl, start, thread) != 0) {
        return -1;
    }
    std::unique_lock<std::mutex> hold(start.lock);
    *id = thread;
    Book(thread, start);
    start.known = true;
    start.changed.notify_one();
    start.changed.wait(hold, [&start] { return start.taken; });
    return 0;
}

int vexo_utility_retrieve_thread(unsigned long id) {
    if (id == pthread_self()) {
        return Refuse("a thread asked to be retrieved by itself: " + Describe(ThisCaller()));
    }
    if (ShallFail("vexo_utility_retrieve_thread")) {
        return -1;
    }
    if (!Claim(id)) {
        return Refuse("a thread was retrieved that is not there, or twice, by " + Describe(ThisCaller()));
    }
    pthread_join(id, nullptr);
    GiveBack(Goods::Thread, id, Describe(ThisCaller()));
    return 0;
}

void vexo_utility_enter_thread(unsigned long id, const char* name) {
    const std::string who = name == nullptr ? "" : name;
    if (id != pthread_self()) {
        Complain("thread " + who + ": vexo_utility_enter_thread with an id that is not its own");
    } else if (has_entered) {
        Complain("thread " + who + ": vexo_utility_enter_thread twice");
    } else {
        has_entered = true;
    }
}

void vexo_utility_exit_thread(unsigned long id) {
    if (id != pthread_self() || !has_entered) {
        Complain("vexo_utility_exit_thread by " + Describe(ThisCaller()) + ", which has not entered under that id");
        return;
    }
    has_entered = false;
}

void vexo_utility_sleep_ms(unsigned int milliseconds) {
    timespec end = {};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += milliseconds / 1000;
    end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (end.tv_nsec >= 1000000000) {
        end.tv_nsec -= 1000000000;
        ++end.tv_sec;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}
