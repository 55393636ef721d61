#include "core/guest_files.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "core/scenario.h"

namespace simulator {
namespace {

constexpr char CONFIG[] = "/config";
constexpr size_t CONFIG_LENGTH = sizeof CONFIG - 1;

bool IsInConfig(const char* path) {
    return strncmp(path, CONFIG, CONFIG_LENGTH) == 0 && (path[CONFIG_LENGTH] == '/' || path[CONFIG_LENGTH] == '\0');
}

}  // namespace

std::string ConfigFolder() {
    std::string folder = HomeFolder() + CONFIG;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return folder;
}

std::string HostPath(const std::string& path) {
    return IsInConfig(path.c_str()) ? ConfigFolder() + path.substr(CONFIG_LENGTH) : path;
}

}  // namespace simulator

// The guest asks the C library itself whether a file of /config exists. Where this library stands before the C library
// in the process's search order, as in every program that is linked with it, the question comes here and is put to the
// same folder.
extern "C" __attribute__((visibility("default"))) int access(const char* path, int mode) noexcept {
    const char* const volatile given = path;  // may be null, which the C library's header does not believe
    const char* const asked = given;
    if (asked == nullptr || !simulator::IsInConfig(asked)) {
        return static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, asked, mode));
    }
    try {
        return faccessat(AT_FDCWD, simulator::HostPath(asked).c_str(), mode, 0);
    } catch (const std::exception&) {
        errno = ENOMEM;
        return -1;
    }
}
