#include "output_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr const char* ASIDE = ".part";

}  // namespace

[[noreturn]] void CannotWrite(const std::string& path, const std::string& why) {
    throw Failure(ExitCode::NoOutput, "cannot write " + path + ": " + why);
}

void CheckWritable(const std::string& path, FilePlace place) {
    const std::filesystem::path file(path);
    const std::string folder = file.has_parent_path() ? file.parent_path().string() : ".";
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        CannotWrite(path, "it is a folder");
    }
    const std::string& what = std::filesystem::exists(file, error) ? path : folder;
    if (access(what.c_str(), W_OK) != 0 || (place == FilePlace::Aside && access(folder.c_str(), W_OK) != 0)) {
        CannotWrite(path, strerror(errno));
    }
}

std::string GrowingPath(const std::string& path, FilePlace place) {
    return place == FilePlace::Aside ? path + ASIDE : path;
}

void PutInPlace(const std::string& path, FilePlace place) {
    if (place == FilePlace::Direct) {
        return;
    }
    std::error_code error;
    std::filesystem::rename(GrowingPath(path, place), path, error);
    if (error) {
        CannotWrite(path, error.message());
    }
}

FilePlace WholePlace(const std::string& path) {
    std::error_code error;
    const bool special = std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error);
    return special ? FilePlace::Direct : FilePlace::Aside;
}

void WriteWhole(const std::string& path, const std::string& bytes) {
    const FilePlace place = WholePlace(path);
    const std::string growing = GrowingPath(path, place);
    std::ofstream file(growing, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        const std::string why = strerror(errno);
        if (place == FilePlace::Aside) {
            unlink(growing.c_str());
        }
        CannotWrite(path, why);
    }
    PutInPlace(path, place);
}

}  // namespace hostmgrctl
