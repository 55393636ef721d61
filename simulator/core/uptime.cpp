#include "core/uptime.h"

#include <atomic>
#include <chrono>
#include <stdexcept>

#include "control.h"

namespace simulator {
namespace {

using std::chrono::steady_clock;

std::atomic<double>& Skipped() {
    static std::atomic<double>& skipped = *new std::atomic<double>(0);
    return skipped;
}

}  // namespace

double Uptime() {
    static const steady_clock::time_point start = steady_clock::now();
    return std::chrono::duration<double>(steady_clock::now() - start).count() + Skipped().load();
}

namespace control {

void SkipTime(double seconds) {
    if (!(seconds >= 0 && seconds <= 1e9)) {
        throw std::invalid_argument("time goes forward only: give 0 to 1000000000 seconds");
    }
    double before = Skipped().load();
    while (!Skipped().compare_exchange_weak(before, before + seconds)) {
    }
}

}  // namespace control
}  // namespace simulator
