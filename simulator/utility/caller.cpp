#include "utility/caller.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

namespace simulator {

// Plain data, so that a thread may still take locks while its thread-local objects are being destroyed.
const Caller& ThisCaller() {
    static std::atomic<unsigned long> last_serial{0};
    static thread_local Caller caller = {0, 0, ""};
    if (caller.serial == 0) {
        caller.serial = ++last_serial;
        caller.thread = static_cast<int>(syscall(SYS_gettid));
        pthread_getname_np(pthread_self(), caller.name, sizeof caller.name);
    }
    return caller;
}

std::string Describe(const Caller& caller) {
    return "thread " + std::to_string(caller.thread) + " (" + caller.name + ")";
}

std::string Place(const char* file, const char* function) {
    return std::string(file == nullptr ? "-" : file) + ", " + (function == nullptr ? "-" : function);
}

}  // namespace simulator
