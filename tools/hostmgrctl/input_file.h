// Files that are read whole. What is in them does not belong here.
#ifndef HOSTMGRCTL_INPUT_FILE_H
#define HOSTMGRCTL_INPUT_FILE_H

#include <cstdio>
#include <optional>
#include <string>

namespace hostmgrctl {

/** All that is left of a stream; nothing, with errno set, when it cannot be read to its end. */
std::optional<std::string> ReadStream(FILE* stream);

/** The bytes of a file; nothing, with errno set, when it cannot be read. */
std::optional<std::string> ReadFile(const std::string& path);

}  // namespace hostmgrctl

#endif
