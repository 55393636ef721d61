#include "stop.h"

#include <atomic>
#include <csignal>

namespace hostmgrctl {
namespace {

std::atomic<bool> s_stop{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

}  // namespace

void CatchStopSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { s_stop = true; };
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool StopRequested() {
    return s_stop;
}

}  // namespace hostmgrctl
