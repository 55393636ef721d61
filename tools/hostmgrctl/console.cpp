#include "console.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>

namespace hostmgrctl::console {
namespace {

constexpr char MARK =
    '\1';  // starts a line that the tool itself sends through the pipe, to know what has come before it
constexpr const char* ERROR_PREFIX = "[HOSTMGR] ERROR! ";
constexpr const char* WARNING_PREFIX = "[HOSTMGR] WARNING! ";
constexpr const char* ASSERTION = "ASSERT!";
constexpr int ASSERTION_LINES = 4;  // after its first one

/** Without colours: escape sequences of the form ESC [ ... letter. */
std::string Plain(const std::string& line) {
    std::string plain;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '\033') {
            plain += line[i];
            continue;
        }
        while (i < line.size() && isalpha(static_cast<unsigned char>(line[i])) == 0) {
            ++i;
        }
    }
    return plain;
}

/** "name[7]:text" with a blank after the colon. */
std::string Spaced(const std::string& error) {
    const size_t colon = error.find("]:");
    return colon == std::string::npos ? error : error.substr(0, colon + 2) + " " + error.substr(colon + 2);
}

/** An error that quotes a document is as long as that. */
std::string Shortened(const std::string& error) {
    constexpr size_t LONGEST = 300;
    return error.size() <= LONGEST ? error : error.substr(0, LONGEST) + "...";
}

/** The pipe's reading end. Its thread ends when no writer is left. */
class Listener {
public:
    Listener(int pipe, bool verbose) : m_pipe(pipe), m_verbose(verbose), m_thread(&Listener::Run, this) {}

    /** Waits until everything has been read that the process wrote before. */
    void CatchUp() {
        std::unique_lock<std::mutex> lock(m_mutex);
        const std::string mark = MARK + std::to_string(++m_marks_sent) + "\n";
        fflush(stdout);
        if (write(STDOUT_FILENO, mark.data(), mark.size()) == static_cast<ssize_t>(mark.size())) {
            m_marked.wait(lock, [this] { return m_marks_seen == m_marks_sent || m_ended; });
        }
    }

    void Join() {
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    std::string LastError() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_last_error.empty() ? m_last_warning : m_last_error;
    }

    void ForgetErrors() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_last_error.clear();
        m_last_warning.clear();
    }

    /** The assertion that ended the library, or empty. */
    std::string LastWords() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_last_words;
    }

private:
    void Run() {
        char buffer[4096];
        std::string line;
        ssize_t size;
        while ((size = read(m_pipe, buffer, sizeof(buffer))) > 0 || (size < 0 && errno == EINTR)) {
            for (ssize_t i = 0; i < size; ++i) {
                if (buffer[i] != '\n') {
                    line += buffer[i];
                } else {
                    Take(Plain(line));
                    line.clear();
                }
            }
        }
        std::lock_guard<std::mutex> lock(m_mutex);
        m_ended = true;
        m_marked.notify_all();
    }

    void Take(const std::string& line) {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (line.empty()) {
            return;
        }
        if (line[0] == MARK) {
            ++m_marks_seen;
            m_marked.notify_all();
            return;
        }
        if (m_verbose) {
            fprintf(stderr, "%s\n", line.c_str());
        }
        Remember(line);
    }

    void Remember(const std::string& line) {
        if (line.rfind(ERROR_PREFIX, 0) == 0) {
            m_last_error = Shortened(Spaced(line.substr(std::string(ERROR_PREFIX).size())));
            m_text_to_come = m_last_error.back() == ' ';
        } else if (m_text_to_come) {
            m_text_to_come = false;
            m_last_error = Shortened(m_last_error + line);
        } else if (line.rfind(WARNING_PREFIX, 0) == 0) {
            m_last_warning = Spaced(line.substr(std::string(WARNING_PREFIX).size()));
        } else if (line == ASSERTION) {
            m_last_words = line + "\n";
            m_words_to_come = ASSERTION_LINES;
        } else if (m_words_to_come > 0) {
            --m_words_to_come;
            m_last_words += line + "\n";
        }
    }

    const int m_pipe;
    const bool m_verbose;
    std::mutex m_mutex;
    std::condition_variable m_marked;
    unsigned m_marks_sent = 0;  // guarded by m_mutex, as what follows
    unsigned m_marks_seen = 0;
    bool m_ended = false;
    int m_words_to_come = 0;
    bool m_text_to_come = false;  // the last error's text begins in the next line
    std::string m_last_error;
    std::string m_last_warning;
    std::string m_last_words;
    std::thread m_thread;  // last: it uses the others
};

// Never destroyed: the library's threads print to the end of the process.
Listener* s_listener = nullptr;
FILE* s_data = nullptr;
bool s_finished = false;

void EndDiversion() {
    fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) {
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
        s_listener->Join();
    }
}

// The library ends the process itself when it cannot go on.
void AtExit() {
    if (s_finished) {
        return;
    }
    EndDiversion();
    const std::string words = s_listener->LastWords();
    fprintf(stderr, "hostmgrctl: %s\n%s",
            words.empty() ? "the recorder ended the program" : "the library gave up:", words.c_str());
}

}  // namespace

void Divert(bool verbose) {
    int ends[2];
    const int real = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    s_data = real >= 0 ? fdopen(real, "w") : nullptr;
    if (s_data == nullptr || pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot divert standard output");
    }
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    s_listener = new Listener(ends[0], verbose);
    atexit(AtExit);
}

FILE* Data() {
    return s_data;
}

std::string LastError() {
    s_listener->CatchUp();
    return s_listener->LastError();
}

void ForgetErrors() {
    s_listener->CatchUp();
    s_listener->ForgetErrors();
}

bool Finish() {
    s_finished = true;
    EndDiversion();
    const bool failed = ferror(s_data) != 0;
    return fflush(s_data) == 0 && !failed;
}

}  // namespace hostmgrctl::console
