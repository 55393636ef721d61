#include <filesystem>
#include <system_error>

#include "core/faults.h"
#include "core/guest_files.h"
#include "core/watch.h"
#include "vexo_utility.h"

namespace {

namespace fs = std::filesystem;

bool IsText(const char* path) {
    return path != nullptr && *path != '\0';
}

/** Whether the path leads to the root of the host's files, however it is written. */
bool IsRoot(const char* path) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(path, error);
    return error || real == real.root_path();
}

}  // namespace

VEXO_BOOL vexo_utility_is_file_exist(const char* path) {
    std::error_code error;
    return IsText(path) && fs::exists(simulator::HostPath(path), error) ? VEXO_TRUE : VEXO_FALSE;
}

int vexo_utility_creat_dir(const char* path) {
    if (!IsText(path) || simulator::ShallFail("vexo_utility_creat_dir")) {
        return -1;
    }
    std::error_code error;
    const fs::path folder = simulator::HostPath(path);
    fs::create_directories(folder, error);
    return fs::is_directory(folder, error) ? 0 : -1;
}

int vexo_utility_delete_dir(const char* path) {
    if (!IsText(path) || IsRoot(path)) {
        simulator::Complain("vexo_utility_delete_dir asked to remove \"" + std::string(path == nullptr ? "" : path) +
                            "\": refused");
        return -1;
    }
    std::error_code error;
    const fs::path folder = simulator::HostPath(path);
    if (simulator::ShallFail("vexo_utility_delete_dir") || !fs::is_directory(folder, error)) {
        return -1;
    }
    fs::remove_all(folder, error);
    return error ? -1 : 0;
}
