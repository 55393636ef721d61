// files: lists a channel's recordings, and shows how much of each day is recorded.
#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "console.h"
#include "coverage.h"
#include "local_time.h"
#include "recordings.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;

constexpr int MOST_BARS = 31;  // more days than that are no picture any more

struct Options {
    LoginOptions login;
    RangeOptions range;
    std::string type = "all";
    bool bars = false;
    bool json = false;
};

struct SearchType {
    const char* name;
    HostMgrFileType number;
};

// Names tell the record type bits that are looked for; what they mean is the recorder's matter.
constexpr SearchType TYPES[] = {
    {"all", HOSTMGR_FILE_ALL},  {"1", HOSTMGR_FILE_MASK_1},   {"2", HOSTMGR_FILE_MASK_2},
    {"4", HOSTMGR_FILE_MASK_4}, {"2|4", HOSTMGR_FILE_MASK_6}, {"2+4", HOSTMGR_FILE_MASK_6_TYPE_1},
};

HostMgrFileType TypeOf(const std::string& name) {
    const auto* found =
        std::find_if(std::begin(TYPES), std::end(TYPES), [&](const SearchType& type) { return name == type.name; });
    return found->number;
}

std::string TypesText(const Recording& recording) {
    std::string text;
    for (const unsigned type : recording.types) {
        text += (text.empty() ? "" : "+") + std::to_string(type);
    }
    return text.empty() ? "?" : text;
}

ordered_json Json(const Recording& recording) {
    return {{"start", TimeJson(recording.start)},
            {"stop", TimeJson(recording.stop)},
            {"seconds", recording.stop - recording.start},
            {"types", recording.types},
            {"info", {recording.info[0], recording.info[1]}}};
}

class FilesRun {
public:
    explicit FilesRun(const Options& options) : m_options(options), m_range(Resolve(options.range)) {}

    ExitCode Run() {
        const Agent agent(m_options.login);
        size_t count = 0;
        for (const unsigned channel : m_range.channels) {
            std::vector<Recording> recordings =
                FindRecordings(agent.Handle(), channel, m_range.from, m_range.to, TypeOf(m_options.type));
            if (!recordings.empty() && (m_options.json || !m_options.bars)) {
                FindTypes(agent.Handle(), channel, m_range.from, m_range.to, &recordings);
            }
            count += recordings.size();
            m_options.json ? Add(channel, recordings) : Print(channel, recordings);
        }
        if (m_options.json) {
            PrintJson();
        }
        if (count == 0) {
            throw Failure(ExitCode::NoData,
                          "nothing is recorded from " + Describe(m_range) + ": look further back, such as --from -7d");
        }
        return ExitCode::Ok;
    }

private:
    void Print(unsigned channel, const std::vector<Recording>& recordings) {
        FILE* out = console::Data();
        fprintf(out, "%schannel %u: %zu recording%s, %s in all\n", m_first ? "" : "\n", channel, recordings.size(),
                recordings.size() == 1 ? "" : "s",
                LengthText(RecordedSeconds(recordings, m_range.from, static_cast<double>(m_range.to))).c_str());
        m_first = false;
        if (recordings.empty()) {
            return;
        }
        PrintBars(recordings);
        if (!m_options.bars) {
            PrintTable(recordings);
        }
    }

    void PrintBars(const std::vector<Recording>& recordings) const {
        FILE* out = console::Data();
        const bool blocks = TerminalHasBlocks();
        int bars = 0;
        for (time_t day = DayOf(m_range.from); day <= m_range.to && bars < MOST_BARS; day = NextDay(day), ++bars) {
            fprintf(out, "\n  %s\n  %s\n  %s\n", TimeText(day).substr(0, 10).c_str(), BarScale(day).c_str(),
                    DayBar(recordings, day, blocks).c_str());
        }
        fprintf(out, "  %s\n", BarLegend(blocks).c_str());
    }

    static void PrintTable(const std::vector<Recording>& recordings) {
        FILE* out = console::Data();
        fprintf(out, "\n  %6s  %-26s  %-12s  %-7s  %s\n", "number", "start", "length", "types", "recorder's own");
        size_t number = 0;
        for (const Recording& recording : recordings) {
            fprintf(out, "  %6zu  %-26s  %-12s  %-7s  %u, %u\n", ++number, TimeText(recording.start).c_str(),
                    LengthText(static_cast<double>(recording.stop - recording.start)).c_str(),
                    TypesText(recording).c_str(), recording.info[0], recording.info[1]);
        }
    }

    void Add(unsigned channel, const std::vector<Recording>& recordings) {
        ordered_json files = ordered_json::array();
        for (const Recording& recording : recordings) {
            files.push_back(Json(recording));
        }
        m_channels.push_back({{"channel", channel},
                              {"seconds", RecordedSeconds(recordings, m_range.from, static_cast<double>(m_range.to))},
                              {"files", files}});
    }

    void PrintJson() const {
        const ordered_json json = {
            {"from", TimeJson(m_range.from)}, {"to", TimeJson(m_range.to)}, {"channels", m_channels}};
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    const Range m_range;
    ordered_json m_channels = ordered_json::array();
    bool m_first = true;
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddRangeOptions(app, &options->range);
    app.add_option("-y,--type", options->type,
                   "record type bits to look for: all, 1, 2, 4,\n2|4 (one of them), 2+4 (both)")
        ->type_name("BITS")
        ->check(CLI::IsMember({"all", "1", "2", "4", "2|4", "2+4"}).description(""))
        ->capture_default_str();
    app.add_flag("-b,--bars", options->bars, "the days' bars alone, without the table");
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return FilesRun(*options).Run(); };
}

}  // namespace

const Topic FILES_TOPIC = {
    "files",
    "Lists recordings, with a bar for each day.",
    "  init, LoginV2, QueryFile (--type: dwFileType), GetQueryFileResult,\n"
    "  QueryRelease, Logout\n",
    "  hostmgrctl files                            channel 1, the last 24 hours\n"
    "  hostmgrctl files -c 1-4 --from -7d --bars   a week of four channels\n"
    "  hostmgrctl files -c 2 --from 08:00 --to +4h --type 2 --json\n",
    Add,
};

}  // namespace hostmgrctl
