// A run of hostmgrctl that goes on while the test does something else: waits for what it prints, and ends it as a
// person does, with Ctrl-C. Expectations do not belong here.
#ifndef TESTS_SYSTEM_CTL_RUNNING_H
#define TESTS_SYSTEM_CTL_RUNNING_H

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "ctl_support.h"

namespace ctl {

/** While it stands, no file of this process or of those that it starts grows beyond that size: a full disk. */
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        signal(SIGXFSZ, m_handler);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

private:
    rlimit m_before = {};
    const sighandler_t m_handler;
};

class Running {
public:
    Running(const std::filesystem::path& folder, std::vector<std::string> arguments)
        : m_out(folder / "running.txt"), m_err(folder / "running-err.txt") {
        arguments.insert(arguments.begin(), "hostmgrctl");
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, m_out.c_str(), flags, 0600);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_err.c_str(), flags, 0600);
        EXPECT_EQ(posix_spawn(&m_child, HOSTMGRCTL, &actions, nullptr, pointers.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Running() {
        if (m_child > 0) {
            kill(m_child, SIGKILL);
            waitpid(m_child, nullptr, 0);
        }
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    std::string Out() const { return Contents(m_out); }

    /** Waits, with all patience, until it is so; false when the run has ended before. */
    bool WaitUntil(const std::function<bool()>& happened) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(100);
        while (!happened() && std::chrono::steady_clock::now() < deadline) {
            int status = 0;
            if (waitpid(m_child, &status, WNOHANG) == m_child) {
                m_child = -1;
                m_status = status;
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return happened();
    }

    bool WaitFor(const std::string& text) {
        return WaitUntil([&] { return Out().find(text) != std::string::npos; });
    }

    /** Waits until it ends by itself, or ends it with a signal first. */
    Outcome End(int signal = 0) {
        if (m_child > 0) {
            kill(m_child, signal);
            waitpid(m_child, &m_status, 0);
            m_child = -1;
        }
        return {WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 128, Out(), Contents(m_err)};
    }

private:
    const std::filesystem::path m_out;
    const std::filesystem::path m_err;
    pid_t m_child = -1;
    int m_status = -1;
};

}  // namespace ctl

#endif
