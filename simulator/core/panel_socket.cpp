// The front panel's socket: panel.PID.sock in the home folder, one request and one answer a connection, a line each.
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

#include "core/home.h"
#include "core/panel.h"

namespace simulator {
namespace {

constexpr size_t LONGEST_REQUEST = 65536;  // bytes
constexpr int PATIENCE = 5;                // seconds that a peer may take

/** This process's socket; the path is empty while there is none. */
struct Door {
    std::string path;
    pid_t process = 0;
};

Door& TheDoor() {
    static Door& door = *new Door;
    return door;
}

/** Removes the socket at the end, unless this is a forked child's end. */
__attribute__((destructor)) void CloseDoor() {
    if (TheDoor().process == getpid() && !TheDoor().path.empty()) {
        unlink(TheDoor().path.c_str());
    }
}

/** A socket's address holds some hundred bytes; a folder's path may be longer, its descriptor's never is. */
int Bind(int socket, const std::string& folder, const std::string& name) {
    const int directory = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) {
        return -1;
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", directory, name.c_str());
    unlink((folder + "/" + name).c_str());  // of an earlier process with this number
    const int result = bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    close(directory);
    errno = error;
    return result;
}

std::string ReadLine(int peer) {
    std::string line;
    char piece[4096];
    ssize_t length;
    while (line.size() <= LONGEST_REQUEST && line.find('\n') == std::string::npos &&
           (length = recv(peer, piece, sizeof piece, 0)) > 0) {
        line.append(piece, static_cast<size_t>(length));
    }
    return line.substr(0, line.find('\n'));
}

void Serve(int peer) {
    const timeval patience = {PATIENCE, 0};
    setsockopt(peer, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(peer, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const std::string answer =
        AnswerPanel(ReadLine(peer)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    size_t sent = 0;
    ssize_t length;
    while (sent < answer.size() &&
           (length = send(peer, answer.data() + sent, answer.size() - sent, MSG_NOSIGNAL)) > 0) {
        sent += static_cast<size_t>(length);
    }
    close(peer);
}

void ServeAll(int listener) {
    pthread_setname_np(pthread_self(), "front panel");
    for (;;) {
        const int peer = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (peer >= 0) {
            Serve(peer);
        } else if (errno != EINTR && errno != ECONNABORTED) {
            return;
        }
    }
}

/** Signals are the guest's: its handlers must not run on a thread that it does not know. */
void StartThread(int listener) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread(ServeAll, listener).detach();
    } catch (const std::system_error& error) {
        fprintf(stderr, "[simulated recorder] no front panel: %s\n", error.what());
        close(listener);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

void OpenPanel() {
    std::error_code error;
    std::filesystem::create_directories(HomePath(), error);
    const std::string name = "panel." + std::to_string(getpid()) + ".sock";
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener < 0 || Bind(listener, HomePath(), name) != 0 || listen(listener, 8) != 0) {
        fprintf(stderr, "[simulated recorder] no front panel in %s: %s\n", HomePath().c_str(), strerror(errno));
        if (listener >= 0) {
            close(listener);
        }
        return;
    }
    TheDoor() = {HomePath() + "/" + name, getpid()};
    StartThread(listener);
}

}  // namespace simulator
