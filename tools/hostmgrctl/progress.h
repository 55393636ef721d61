// A line on standard error that tells a person how far a command is; nothing when standard error is no terminal.
#ifndef HOSTMGRCTL_PROGRESS_H
#define HOSTMGRCTL_PROGRESS_H

#include <chrono>
#include <string>

namespace hostmgrctl {

class Progress {
public:
    /** interval: how often something is shown. */
    explicit Progress(std::chrono::milliseconds interval = std::chrono::milliseconds(500));
    /** Clears the line. */
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /** Whether it is time to show something again. */
    bool Due();

    void Show(const std::string& text);

private:
    const std::chrono::milliseconds m_interval;
    const bool m_terminal;
    std::chrono::steady_clock::time_point m_next;
    bool m_shown = false;
};

}  // namespace hostmgrctl

#endif
