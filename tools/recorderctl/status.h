// The recorder's status for a person. Its JSON, for programs, goes out as it comes.
#ifndef RECORDERCTL_STATUS_H
#define RECORDERCTL_STATUS_H

#include <nlohmann/json.hpp>
#include <string>

namespace recorderctl {

/** Several lines, each with its newline; throws nlohmann::json::exception when the status is not what it should be. */
std::string StatusText(const nlohmann::json& status);

}  // namespace recorderctl

#endif
