#include "common_options.h"

#include <hostmgr_dev.h>

namespace hostmgrctl {

void AddChannelOption(CLI::App& app, unsigned* channel, unsigned least, const std::string& help) {
    app.add_option("-c,--channel", *channel, help)
        ->type_name("N")
        ->check(CLI::Range(least, HOSTMGR_MAX_CHANNELS).description(""))
        ->capture_default_str();
}

void AddStreamOption(CLI::App& app, std::string* stream, const std::string& help) {
    app.add_option("-S,--stream", *stream, help)
        ->type_name("WHICH")
        ->check(CLI::IsMember({"main", "sub"}).description(""))
        ->capture_default_str();
}

unsigned StreamNumber(const std::string& stream) {
    return stream == "main" ? HOSTMGR_STREAM_MAIN : HOSTMGR_STREAM_SUB;
}

void AddTimeoutOption(CLI::App& app, double* timeout, const std::string& help) {
    constexpr double SHORTEST = 0.001;  // seconds
    constexpr double LONGEST = 1e6;
    app.add_option("-t,--timeout", *timeout, help)
        ->type_name("N")
        ->check(CLI::Range(SHORTEST, LONGEST).description(""))
        ->capture_default_str();
}

}  // namespace hostmgrctl
