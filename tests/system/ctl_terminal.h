// hostmgrctl as a person at a terminal runs it: what it shows there, and what is typed. Test cases do not belong here.
#ifndef TESTS_SYSTEM_CTL_TERMINAL_H
#define TESTS_SYSTEM_CTL_TERMINAL_H

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace ctl {

/** A run of the tool with standard error on a terminal; told to end when wanted says so of what it wrote there. */
class TerminalRun {
public:
    TerminalRun(const std::vector<std::string>& arguments, const std::string& folder) {
        std::vector<char*> list;
        for (const std::string& argument : arguments) {
            list.push_back(const_cast<char*>(argument.c_str()));
        }
        list.push_back(nullptr);
        m_child = forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_child == 0) {
            const bool moved = chdir(folder.c_str()) == 0;
            dup2(open("stdout.txt", O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            _exit(moved && execv(HOSTMGRCTL, list.data()) == 0 ? 0 : 127);
        }
    }

    ~TerminalRun() {
        if (m_terminal >= 0) {
            close(m_terminal);
        }
    }
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;

    /** Reads what the terminal shows until the tool has ended, and interrupts it once that stands there; exit status.
     */
    int Follow(const std::string& interrupt_at = "") {
        char buffer[256];
        ssize_t size = 0;
        bool interrupted = interrupt_at.empty();
        while ((size = read(m_terminal, buffer, sizeof(buffer))) > 0) {
            m_shown.append(buffer, static_cast<size_t>(size));
            if (!interrupted && m_shown.find(interrupt_at) != std::string::npos) {
                interrupted = kill(m_child, SIGINT) == 0;
            }
        }
        int status = 0;
        waitpid(m_child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /** As a person types: the text comes when the terminal shows the question. */
    int Answer(const std::string& question, const std::string& text) {
        char buffer[256];
        ssize_t size = 0;
        while (m_shown.find(question) == std::string::npos && (size = read(m_terminal, buffer, sizeof(buffer))) > 0) {
            m_shown.append(buffer, static_cast<size_t>(size));
        }
        return write(m_terminal, text.data(), text.size()) < 0 ? -1 : Follow();
    }

    const std::string& Shown() const { return m_shown; }

private:
    int m_terminal = -1;
    pid_t m_child = -1;
    std::string m_shown;
};

}  // namespace ctl

#endif
