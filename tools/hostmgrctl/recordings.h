// The search for recordings: the options that say where and when, and the list that the recorder gives. How it is shown
// does not belong here.
#ifndef HOSTMGRCTL_RECORDINGS_H
#define HOSTMGRCTL_RECORDINGS_H

#include <hostmgr_dev.h>

#include <CLI/CLI.hpp>
#include <ctime>
#include <string>
#include <vector>

namespace hostmgrctl {

/** As typed. */
struct RangeOptions {
    std::string channels = "1";
    std::string from = "-24h";
    std::string to = "now";
};

/** Adds --channel, --from and --to. */
void AddRangeOptions(CLI::App& app, RangeOptions* options);

/** Which channels, and when: seconds since 1970, both ends included. */
struct Range {
    std::vector<unsigned> channels;
    time_t from = 0;
    time_t to = 0;
};

/** Throws Failure with ExitCode::Usage for what cannot be understood. */
Range Resolve(const RangeOptions& options);

/** "2026-11-21 10:00:00 to 2026-11-21 11:00:00 +01:00". */
std::string Describe(const Range& range);

/** One recorded file, as the recorder lists it. Seconds since 1970. */
struct Recording {
    time_t start = 0;
    time_t stop = 0;
    unsigned info[2] = {0, 0};    ///< the recorder's own
    std::vector<unsigned> types;  ///< the record type bits by which it was found: 1, 2, 4
};

/** A channel's recordings in that time, by time. Throws Failure when the search is refused. */
std::vector<Recording> FindRecordings(int login, unsigned channel, time_t from, time_t to,
                                      HostMgrFileType type = HOSTMGR_FILE_ALL);

/** Finds out the types of recordings, by a search for each one. */
void FindTypes(int login, unsigned channel, time_t from, time_t to, std::vector<Recording>* recordings);

/** Seconds of from..to that are recorded; overlaps count once. */
double RecordedSeconds(const std::vector<Recording>& recordings, time_t from, double to);

}  // namespace hostmgrctl

#endif
