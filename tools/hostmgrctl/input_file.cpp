#include "input_file.h"

#include <cerrno>

namespace hostmgrctl {

std::optional<std::string> ReadStream(FILE* stream) {
    std::string text;
    char buffer[65536];
    size_t size;
    while ((size = fread(buffer, 1, sizeof(buffer), stream)) > 0) {
        text.append(buffer, size);
    }
    return ferror(stream) == 0 ? std::optional<std::string>(std::move(text)) : std::nullopt;
}

std::optional<std::string> ReadFile(const std::string& path) {
    FILE* file = fopen(path.c_str(), "rbe");
    if (file == nullptr) {
        return std::nullopt;
    }
    auto text = ReadStream(file);
    const int error = errno;
    fclose(file);
    errno = error;
    return text;
}

}  // namespace hostmgrctl
