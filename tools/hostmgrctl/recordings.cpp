#include "recordings.h"

#include <algorithm>
#include <set>
#include <tuple>

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

unsigned ParseChannel(const std::string& text, const std::string& list) {
    const bool number = !text.empty() && text.size() < 5 && text.find_first_not_of("0123456789") == std::string::npos;
    const unsigned channel = number ? static_cast<unsigned>(std::stoul(text)) : 0;
    if (channel < 1 || channel > HOSTMGR_MAX_CHANNELS) {
        throw Failure(ExitCode::Usage, "\"" + list + "\" are no channels: give numbers from 1 to " +
                                           std::to_string(HOSTMGR_MAX_CHANNELS) + ", such as 2, 1,3 or 1-4");
    }
    return channel;
}

/** "1,3-5": each channel once, in the order given. */
std::vector<unsigned> ParseChannels(const std::string& list) {
    std::vector<unsigned> channels;
    size_t at = 0;
    while (at <= list.size()) {
        const size_t comma = std::min(list.find(',', at), list.size());
        const std::string part = list.substr(at, comma - at);
        const size_t dash = part.find('-');
        const unsigned first = ParseChannel(part.substr(0, dash), list);
        const unsigned last = dash == std::string::npos ? first : ParseChannel(part.substr(dash + 1), list);
        if (last < first) {
            ParseChannel("", list);
        }
        for (unsigned channel = first; channel <= last; ++channel) {
            if (std::find(channels.begin(), channels.end(), channel) == channels.end()) {
                channels.push_back(channel);
            }
        }
        at = comma + 1;
    }
    return channels;
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
