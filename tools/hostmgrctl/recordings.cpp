#include "recordings.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "channel_list.h"
#include "exit_code.h"
#include "local_time.h"

namespace hostmgrctl {
namespace {

/** The list of a search, from the search to its release. */
class Query {
public:
    Query(int login, unsigned channel, _tagVexoHostMgrQueryFile query)
        : m_login(login), m_count(vexo_soft::vexo_HostMgr_Dev_QueryFile(login, static_cast<int>(channel), &query)) {}
    ~Query() { vexo_soft::vexo_HostMgr_Dev_QueryRelease(m_login); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    bool Refused() const { return m_count < 0; }

    std::vector<_tagVexoHostMgrQueryFileResult> Entries() const {
        if (m_count <= 0) {
            return {};
        }
        std::vector<_tagVexoHostMgrQueryFileResult> entries(static_cast<size_t>(m_count));
        const unsigned count = static_cast<unsigned>(m_count) - 1;  // a block read gives one more than it is asked for
        const int read = vexo_soft::vexo_HostMgr_Dev_GetQueryFileResult(m_login, -1, entries.data(), count);
        entries.resize(read > 0 ? static_cast<size_t>(read) : 0);
        return entries;
    }

private:
    const int m_login;
    const int m_count;
};

Recording RecordingOf(const _tagVexoHostMgrQueryFileResult& entry) {
    return {FromCalendarTime(entry.struStartTime),
            FromCalendarTime(entry.struStopTime),
            {entry.dwRecInfo1, entry.dwRecInfo2},
            {}};
}

}  // namespace

void AddRangeOptions(CLI::App& app, RangeOptions* options) {
    app.add_option("-c,--channel", options->channels, "channels, such as 2, 1,3 or 1-4")
        ->type_name("LIST")
        ->capture_default_str();
    app.add_option("-f,--from", options->from,
                   "begin: \"2026-11-21 10:15\", 10:15,\n\"yesterday 18:00\", -1h (before now)")
        ->type_name("TIME")
        ->capture_default_str();
    app.add_option("-T,--to", options->to, "end, likewise; or +30s: after the begin")
        ->type_name("TIME")
        ->capture_default_str();
}

Range Resolve(const RangeOptions& options) {
    const time_t now = time(nullptr);
    Range range;
    range.channels = ParseChannels(options.channels);
    range.from = ParseTime(options.from, now);
    range.to = ParseTime(options.to, now, range.from);
    if (range.to <= range.from) {
        throw Failure(ExitCode::Usage, "the time range ends before it begins (" + TimeText(range.from) + " to " +
                                           TimeText(range.to) + "): check --from and --to");
    }
    return range;
}

std::string Describe(const Range& range) {
    const std::string from = TimeText(range.from);
    const std::string to = TimeText(range.to);
    return from.substr(from.rfind(' ')) == to.substr(to.rfind(' ')) ? from.substr(0, from.rfind(' ')) + " to " + to
                                                                    : from + " to " + to;
}

std::vector<Recording> FindRecordings(int login, unsigned channel, time_t from, time_t to, HostMgrFileType type) {
    const Query query(login, channel, {type, CalendarTime(from), CalendarTime(to)});
    if (query.Refused()) {
        throw Failure(ExitCode::Refused, "the search for recordings of channel " + std::to_string(channel) +
                                             " failed: does the recorder have that channel?");
    }
    std::vector<Recording> recordings;
    for (const _tagVexoHostMgrQueryFileResult& entry : query.Entries()) {
        recordings.push_back(RecordingOf(entry));
    }
    return recordings;
}

void FindTypes(int login, unsigned channel, time_t from, time_t to, std::vector<Recording>* recordings) {
    constexpr struct {
        HostMgrFileType search;
        unsigned bit;
    } SEARCHES[] = {{HOSTMGR_FILE_MASK_1, 1}, {HOSTMGR_FILE_MASK_2, 2}, {HOSTMGR_FILE_MASK_4, 4}};
    const auto key = [](const Recording& recording) {
        return std::tuple(recording.start, recording.info[0], recording.info[1]);
    };
    for (const auto& [search, bit] : SEARCHES) {
        std::set<decltype(key(Recording()))> found;
        for (const Recording& recording : FindRecordings(login, channel, from, to, search)) {
            found.insert(key(recording));
        }
        for (Recording& recording : *recordings) {
            if (found.count(key(recording)) != 0) {
                recording.types.push_back(bit);
            }
        }
    }
}

double RecordedSeconds(const std::vector<Recording>& recordings, time_t from, double to) {
    double sum = 0;
    auto covered = static_cast<double>(from);
    for (const Recording& recording : recordings) {
        const double begin = std::max(covered, static_cast<double>(recording.start));
        const double end = std::min(to, static_cast<double>(recording.stop));
        sum += std::max(0.0, end - begin);
        covered = std::max(covered, end);
    }
    return sum;
}

}  // namespace hostmgrctl
