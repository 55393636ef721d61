#include "core/home.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "core/scenario.h"

namespace simulator {
namespace {

std::string Environment(const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

/** The user's cache folder; an account without a home gets a folder of its own among the temporary files. */
std::string CacheFolder() {
    std::string cache = Environment("XDG_CACHE_HOME");
    if (!cache.empty() && cache[0] == '/') {
        return cache;
    }
    const std::string home = Environment("HOME");
    return home.empty() ? "/tmp/cache-" + std::to_string(getuid()) : home + "/.cache";
}

std::string FindHome() {
    const std::string home = Environment("RECORDER_HOME");
    return home.empty() ? CacheFolder() + "/simulated-recorder" : home;
}

}  // namespace

const std::string& HomePath() {
    static const std::string& path = *new std::string(FindHome());
    return path;
}

std::string HomeFolder() {
    std::error_code error;
    std::filesystem::create_directories(HomePath(), error);
    if (!std::filesystem::is_directory(HomePath(), error)) {
        EndWithMessage("cannot make the home folder " + HomePath() +
                       ": set RECORDER_HOME to a folder that you may write to");
    }
    return HomePath();
}

void EndWithMessage(const std::string& message) {
    fprintf(stderr, "[simulated recorder] %s\n", message.c_str());
    exit(2);
}

}  // namespace simulator
