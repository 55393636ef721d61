#include "child.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace hostmgrctl {
namespace {

constexpr const char* SHELL = "/bin/sh";

/** This program's environment with variables put in the place of those of the same name. */
std::vector<std::string> Environment(const std::vector<std::pair<std::string, std::string>>& variables) {
    std::vector<std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const bool replaced = std::any_of(variables.begin(), variables.end(), [&text](const auto& variable) {
            const std::string& name = variable.first;
            return text.compare(0, name.size(), name) == 0 && text[name.size()] == '=';
        });
        if (!replaced) {
            all.push_back(text);
        }
    }
    for (const auto& [name, value] : variables) {
        all.push_back(name);
        all.back().append("=").append(value);
    }
    return all;
}

std::vector<char*> Pointers(std::vector<std::string>* texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts->size() + 1);
    for (std::string& text : *texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/** How a child begins: signals as usual, input from a pipe, output to standard error. */
class Start {
public:
    explicit Start(int input) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, STDERR_FILENO, STDOUT_FILENO);
        sigset_t usual;
        sigemptyset(&usual);
        sigaddset(&usual, SIGPIPE);
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setsigdefault(&m_attributes, &usual);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~Start() {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    /** 0, or why there is no child. */
    int Spawn(pid_t* child, std::vector<std::string> arguments, std::vector<std::string> environment) {
        return posix_spawn(child, SHELL, &m_actions, &m_attributes, Pointers(&arguments).data(),
                           Pointers(&environment).data());
    }

private:
    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

/** A command that does not read is no error. */
void Write(int pipe, const std::string& text) {
    size_t written = 0;
    ssize_t part = 0;
    while (written < text.size() &&
           ((part = write(pipe, text.data() + written, text.size() - written)) > 0 || (part < 0 && errno == EINTR))) {
        written += static_cast<size_t>(std::max<ssize_t>(part, 0));
    }
}

std::string Wait(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) {
        return std::string("was ended by signal ") + strsignal(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0 ? "" : "ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

std::string RunShell(const std::string& command, const std::vector<std::pair<std::string, std::string>>& variables,
                     const std::string& input) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return std::string("could not be started: ") + strerror(errno);
    }
    pid_t child = -1;
    const int error = Start(ends[0]).Spawn(&child, {"sh", "-c", command}, Environment(variables));
    close(ends[0]);
    if (error == 0) {
        Write(ends[1], input);
    }
    close(ends[1]);
    return error == 0 ? Wait(child) : std::string("could not be started: ") + strerror(error);
}

}  // namespace hostmgrctl
