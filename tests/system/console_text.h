// What the library writes to the console meanwhile, whole. Expectations do not belong here.
#ifndef TESTS_SYSTEM_CONSOLE_TEXT_H
#define TESTS_SYSTEM_CONSOLE_TEXT_H

#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <thread>

namespace console {

/** Everything that was written to standard output while the action ran. It goes through a pipe, so that limits on files
 *  do not touch it. */
inline std::string Of(const std::function<void()>& action) {
    fflush(stdout);
    int ends[2];
    if (pipe(ends) != 0) {
        return "no pipe";
    }
    const int kept = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    std::string text;
    std::thread reader([&] {
        char buffer[4096];
        for (ssize_t size = 0; (size = read(ends[0], buffer, sizeof buffer)) > 0;) {
            text.append(buffer, static_cast<size_t>(size));
        }
    });
    action();
    fflush(stdout);
    dup2(kept, STDOUT_FILENO);
    close(kept);
    reader.join();
    close(ends[0]);
    return text;
}

/** Whether there is an error of that function with that text behind its line number. */
inline bool HasError(const std::string& text, const std::string& function, const std::string& message) {
    const std::string prefix = "\033[0;32;31m[HOSTMGR] ERROR! " + function + "[";
    const size_t at = text.find(prefix);
    const size_t behind = at == std::string::npos ? at : text.find("]:", at);
    return behind != std::string::npos && text.compare(behind + 2, message.size() + 3, message + "\033[m") == 0;
}

}  // namespace console

#endif
