#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace hostmgrctl {
namespace {

constexpr const char* CLEAR_LINE = "\r\033[K";

}  // namespace

Progress::Progress(std::chrono::milliseconds interval)
    : m_interval(interval),
      m_terminal(isatty(STDERR_FILENO) != 0),
      m_next(std::chrono::steady_clock::now() + interval) {}

Progress::~Progress() {
    if (m_shown) {
        fputs(CLEAR_LINE, stderr);
    }
}

bool Progress::Due() {
    const auto now = std::chrono::steady_clock::now();
    if (!m_terminal || now < m_next) {
        return false;
    }
    m_next = now + m_interval;
    return true;
}

void Progress::Show(const std::string& text) {
    fprintf(stderr, "%s%s", CLEAR_LINE, text.c_str());
    fflush(stderr);
    m_shown = true;
}

}  // namespace hostmgrctl
