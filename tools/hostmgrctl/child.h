// A command of the user's, run by the shell for something that has happened. What has happened does not belong here.
#ifndef HOSTMGRCTL_CHILD_H
#define HOSTMGRCTL_CHILD_H

#include <string>
#include <utility>
#include <vector>

namespace hostmgrctl {

/**
 * Runs a shell command and waits for it. Nothing is put into the command's text: what it is told stands in variables of
 * its environment and on its standard input. Its standard output is this program's standard error, so that data stays
 * clean. Returns how it ended when that was not well, such as "ended with status 3", else an empty text.
 */
std::string RunShell(const std::string& command, const std::vector<std::pair<std::string, std::string>>& variables,
                     const std::string& input);

}  // namespace hostmgrctl

#endif
