// Options that several commands have, and what they mean to the library. An option of one command stands with it.
#ifndef HOSTMGRCTL_COMMON_OPTIONS_H
#define HOSTMGRCTL_COMMON_OPTIONS_H

#include <CLI/CLI.hpp>
#include <string>

namespace hostmgrctl {

/** Adds --channel: one channel, from least on; *channel is what it is without the option. */
void AddChannelOption(CLI::App& app, unsigned* channel, unsigned least, const std::string& help);

/** Adds --stream: "main" or "sub". */
void AddStreamOption(CLI::App& app, std::string* stream, const std::string& help = "main or sub");

/** HOSTMGR_STREAM_MAIN or HOSTMGR_STREAM_SUB, for what AddStreamOption took. */
unsigned StreamNumber(const std::string& stream);

/** Adds --timeout: seconds, more than none. */
void AddTimeoutOption(CLI::App& app, double* timeout, const std::string& help);

}  // namespace hostmgrctl

#endif
