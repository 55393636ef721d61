#include "panel.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace recorderctl {
namespace {

constexpr int PATIENCE = 30;  // seconds until a recorder that does not answer is given up

/** A descriptor that closes itself. */
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() {
        if (m_number >= 0) {
            close(m_number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return m_number; }

private:
    const int m_number;
};

std::string Environment(const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

/** Connects to the socket of that process; a folder's path may be longer than a socket's address, its descriptor's
 * never is. False with errno set when nobody is there. */
bool Connect(int socket, const std::string& home, int process) {
    const Descriptor folder(open(home.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder.Number() < 0) {
        return false;
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/panel.%d.sock", folder.Number(), process);
    const timeval patience = {PATIENCE, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    return connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool Answers(const std::string& home, int process) {
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return Connect(socket.Number(), home, process);
}

/** The process number in a name such as panel.4711.sock, or 0. */
int ProcessIn(const std::string& name) {
    int process = 0;
    int length = 0;
    const bool fits =
        sscanf(name.c_str(), "panel.%d.sock%n", &process, &length) == 1 && length == static_cast<int>(name.size());
    return fits ? process : 0;
}

int TheOnlyOne(const std::string& home) {
    const std::vector<int> running = RunningRecorders(home);
    if (running.empty()) {
        throw NoRecorder("no simulated recorder is running with the home folder " + home +
                         ": start a program that uses it, or name another folder with --home");
    }
    if (running.size() > 1) {
        std::string numbers;
        for (const int process : running) {
            numbers += " " + std::to_string(process);
        }
        throw NoRecorder("several recorders are running with the home folder " + home + ": choose one with --pid, of" +
                         numbers);
    }
    return running.front();
}

std::string Exchange(int socket, const std::string& request) {
    for (size_t sent = 0; sent < request.size();) {
        const ssize_t length = send(socket, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (length <= 0) {
            throw NoRecorder(std::string("the recorder does not listen: ") + strerror(errno));
        }
        sent += static_cast<size_t>(length);
    }
    std::string answer;
    char piece[4096];
    ssize_t length;
    while ((length = recv(socket, piece, sizeof piece, 0)) > 0) {
        answer.append(piece, static_cast<size_t>(length));
    }
    if (length < 0) {
        throw NoRecorder(std::string("the recorder does not answer: ") + strerror(errno));
    }
    return answer;
}

}  // namespace

std::string UsualHome() {
    std::string home = Environment("RECORDER_HOME");
    if (!home.empty()) {
        return home;
    }
    std::string cache = Environment("XDG_CACHE_HOME");
    if (cache.empty() || cache[0] != '/') {
        const std::string account = Environment("HOME");
        cache = account.empty() ? "/tmp/cache-" + std::to_string(getuid()) : account + "/.cache";
    }
    return cache + "/simulated-recorder";
}

std::vector<int> RunningRecorders(const std::string& home) {
    std::vector<int> running;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(home, error)) {
        const int process = ProcessIn(entry.path().filename());
        if (process > 0 && Answers(home, process)) {
            running.push_back(process);
        }
    }
    std::sort(running.begin(), running.end());
    return running;
}

nlohmann::json Ask(const std::string& home, int process, const nlohmann::json& request) {
    const int chosen = process != 0 ? process : TheOnlyOne(home);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!Connect(socket.Number(), home, chosen)) {
        throw NoRecorder("no simulated recorder of process " + std::to_string(chosen) + " answers in " + home + ": " +
                         strerror(errno));
    }
    const std::string text = Exchange(socket.Number(), request.dump() + "\n");
    const nlohmann::json answer = nlohmann::json::parse(text, nullptr, false);
    if (answer.is_object() && answer.contains("error")) {
        throw Refused(answer["error"].get<std::string>());
    }
    if (!answer.is_object() || !answer.contains("result")) {
        throw NoRecorder("the recorder of process " + std::to_string(chosen) + " gave an answer that is none");
    }
    return answer["result"];
}

}  // namespace recorderctl
