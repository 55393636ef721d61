// config: lists the configuration records, shows them, sets what can be set. What a record holds stands in the source
// of its subject (config_device.cpp and its sisters).
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>

#include "agent.h"
#include "config_record.h"
#include "config_set.h"
#include "console.h"
#include "text_table.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;

constexpr char ALL[] = "all";

struct Options {
    LoginOptions login;
    std::vector<std::string> records;
    std::optional<std::string> channels;
    Look look;
    bool members = false;
    bool json = false;
    std::string raw;
    std::string set_record;
    std::vector<std::string> items;
    unsigned ability = 0;
};

void PrintJson(const ordered_json& json) {
    fprintf(console::Data(), "%s\n", json.dump(2).c_str());
}

// ---- the list ------------------------------------------------------------------------------------------------------

/** Of a record that is as many entries as the caller has room for. */
bool IsByEntry(const Record& record) {
    const Section& section = *record.sections.begin();
    return record.sections.size == 1 && section.stride != 0 && section.entries == 0;
}

/** Of the record, or of an entry. */
size_t SizeOf(const Record& record) {
    return IsByEntry(record) ? record.sections.begin()->stride : record.size;
}

ordered_json ListJson() {
    ordered_json list = ordered_json::array();
    for (const Record* record : ConfigRecords()) {
        list.push_back({{"name", record->name},
                        {"command", static_cast<unsigned>(record->command)},
                        {"bytes", SizeOf(*record)},
                        {"each", IsByEntry(*record)},
                        {"purpose", record->purpose}});
    }
    return {{"records", list}};
}

ExitCode List(bool json) {
    if (json) {
        PrintJson(ListJson());
        return ExitCode::Ok;
    }
    TextTable table;
    table.AddColumn("record");
    table.AddColumn("command", Align::Right);
    table.AddColumn("bytes", Align::Right);
    table.AddColumn("what it tells");
    for (const Record* record : ConfigRecords()) {
        table.AddRow({record->name, std::to_string(record->command),
                      std::to_string(SizeOf(*record)) + (IsByEntry(*record) ? " each" : ""), record->purpose});
    }
    table.Print(console::Data(), 0);
    return ExitCode::Ok;
}

// ---- what is asked for ---------------------------------------------------------------------------------------------

const Record* FindRecord(const std::string& name) {
    const std::vector<const Record*>& records = ConfigRecords();
    const auto found =
        std::find_if(records.begin(), records.end(), [&](const Record* record) { return record->name == name; });
    if (found == records.end()) {
        throw Failure(ExitCode::Usage,
                      "there is no record \"" + name + "\": \"hostmgrctl config\" lists those that there are");
    }
    return *found;
}

/** Each once, in the order given; "all" leaves out the other forms of a record. */
std::vector<const Record*> FindRecords(const std::vector<std::string>& names) {
    std::vector<const Record*> found;
    const auto add = [&](const Record* record) {
        if (std::find(found.begin(), found.end(), record) == found.end()) {
            found.push_back(record);
        }
    };
    for (const std::string& name : names) {
        if (name != ALL) {
            add(FindRecord(name));
            continue;
        }
        for (const Record* record : ConfigRecords()) {
            if (record->whole) {
                add(record);
            }
        }
    }
    return found;
}

unsigned ParseChannel(const std::string& text, const std::string& range, unsigned most) {
    const bool number = !text.empty() && text.size() < 5 && text.find_first_not_of("0123456789") == std::string::npos;
    const unsigned channel = number ? static_cast<unsigned>(std::stoul(text)) : 0;
    if (channel < 1 || channel > most) {
        throw Failure(ExitCode::Usage,
                      "\"" + range + "\" are no channels that a record can tell: give one, or a range " +
                          "such as 1-4, that begins with 1 to " + std::to_string(HOSTMGR_MAX_CONFIG_CHANNEL) +
                          " and ends by " + std::to_string(HOSTMGR_MAX_CHANNELS));
    }
    return channel;
}

ChannelRange ParseChannels(const std::string& range) {
    const size_t dash = range.find('-');
    const unsigned first = ParseChannel(range.substr(0, dash), range, HOSTMGR_MAX_CONFIG_CHANNEL);
    const unsigned last =
        dash == std::string::npos ? first : ParseChannel(range.substr(dash + 1), range, HOSTMGR_MAX_CHANNELS);
    if (last < first) {
        ParseChannel("", range, 0);
    }
    return {first, last - first + 1};
}

/** The channels that the recorder says it has. */
ChannelRange AllChannels(int login) {
    const Bytes device = ReadRecord(DEVICE_RECORD, login, {}).bytes;
    const unsigned count =
        device[offsetof(_tagVexoHostMgrDeviceCfg, byChanNum)] + device[offsetof(_tagVexoHostMgrDeviceCfg, byIpChanNum)];
    return {1, std::clamp(count, 1U, HOSTMGR_MAX_CHANNELS)};
}

// ---- showing -------------------------------------------------------------------------------------------------------

class ShowRun {
public:
    explicit ShowRun(const Options& options) : m_options(options), m_records(FindRecords(options.records)) {
        if (!options.raw.empty() && m_records.size() != 1) {
            throw Failure(ExitCode::Usage, "--raw takes one record at a time");
        }
        if ((options.json ? 1 : 0) + (options.members ? 1 : 0) + (options.raw.empty() ? 0 : 1) > 1) {
            throw Failure(ExitCode::Usage, "--json, --members and --raw exclude each other: give one of them");
        }
        if (m_records.empty()) {
            throw Failure(ExitCode::Usage, "name a record: \"hostmgrctl config\" alone lists them");
        }
        if (options.channels) {
            m_channels = ParseChannels(*options.channels);
        }
    }

    ExitCode Run() {
        const Agent agent(m_options.login);
        for (const Record* record : m_records) {
            if (m_records.size() == 1) {
                Show(*record, agent.Handle());
            } else {
                Try(*record, agent.Handle());
            }
        }
        if (m_options.json) {
            PrintJson(m_json);
        }
        return m_refused ? ExitCode::Refused : ExitCode::Ok;
    }

private:
    /** One of several: when it is refused, the others are shown all the same. */
    void Try(const Record& record, int login) {
        console::ForgetErrors();
        try {
            Show(record, login);
        } catch (const Failure& failure) {
            m_refused = true;
            m_json[record.name] = nullptr;
            fprintf(stderr, "hostmgrctl: %s\n", failure.what());
            const std::string error = console::LastError();
            if (!error.empty()) {
                fprintf(stderr, "the recorder says: %s\n", error.c_str());
            }
        }
    }

    void Show(const Record& record, int login) {
        ChannelRange channels = m_channels;
        if (record.by_channel && !m_options.channels) {
            channels = AllChannels(login);
        }
        const Reading reading = ReadRecord(record, login, channels);
        if (!m_options.raw.empty()) {
            WriteRaw(reading);
        } else if (m_options.json) {
            m_json[record.name] = JsonOf(record, reading, m_options.look);
        } else {
            fprintf(console::Data(), "%s", m_first ? "" : "\n");
            m_first = false;
            (m_options.members ? PrintMembers : PrintTables)(record, reading, m_options.look);
        }
    }

    void WriteRaw(const Reading& reading) const {
        if (m_options.raw == "-") {
            fwrite(reading.bytes.data(), 1, reading.returned, console::Data());
            return;
        }
        FILE* file = fopen(m_options.raw.c_str(), "wb");
        const bool written =
            file != nullptr && fwrite(reading.bytes.data(), 1, reading.returned, file) == reading.returned;
        const int error = errno;
        if ((file != nullptr && fclose(file) != 0) || !written) {
            throw Failure(ExitCode::NoOutput,
                          "cannot write " + m_options.raw + ": " + strerror(written ? errno : error));
        }
    }

    const Options& m_options;
    const std::vector<const Record*> m_records;
    ChannelRange m_channels;
    ordered_json m_json = ordered_json::object();
    bool m_first = true;
    bool m_refused = false;
};

ExitCode Show(const Options& options) {
    if (options.records.empty() && options.raw.empty() && !options.members && !options.channels) {
        return List(options.json);
    }
    return ShowRun(options).Run();
}

// ---- setting -------------------------------------------------------------------------------------------------------

ExitCode Set(const Options& options) {
    if (options.set_record != FACTORY_RECORD.name) {
        FindRecord(options.set_record);
        throw Failure(ExitCode::Usage, "the record \"" + options.set_record +
                                           "\" can only be read: the exported "
                                           "functions set \"factory\" alone");
    }
    const std::vector<_tagVexoHostMgrFactoryInfo> items = ParseItems(options.items);
    const Agent agent(options.login);
    SetItems(agent.Handle(), items);
    if (options.json) {
        PrintJson({{"set", items.size()}});
    } else {
        fprintf(console::Data(), "set %zu factory item%s\n", items.size(), items.size() == 1 ? "" : "s");
    }
    return ExitCode::Ok;
}

ExitCode Ability(const Options& options) {
    const Agent agent(options.login);
    AskAbility(agent.Handle(), options.ability);
    return ExitCode::Ok;
}

// ---- arguments -----------------------------------------------------------------------------------------------------

CLI::App* AddSet(CLI::App& app, Options* options) {
    CLI::App* set = app.add_subcommand("set", "Sets factory items; new ones are added.");
    set->add_option("RECORD", options->set_record, "factory, the only one that can be set")->required()->type_name("");
    set->add_option("ITEM", options->items, "NAME=VALUE, up to 47 and 255 bytes")->required()->type_name("");
    set->footer(
        "Exported functions (vexo_HostMgr_Dev_...):\n  SetConfig\n\n"
        "Example:\n  hostmgrctl config set factory Site=\"North gate\" Model=NVR-16");
    set->fallthrough();
    return set;
}

CLI::App* AddAbility(CLI::App& app, Options* options) {
    CLI::App* ability = app.add_subcommand("ability", "Asks for an ability; all are refused.");
    ability->add_option("TYPE", options->ability, "a number, such as 0x10")->required()->type_name("");
    ability->footer("Exported functions (vexo_HostMgr_Dev_...):\n  GetAbility");
    ability->fallthrough();
    return ability;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("RECORD", options->records, "records to show, or \"all\"; none: the list of them")->type_name("");
    app.add_option("-c,--channel", options->channels,
                   "encoding: a channel or a range, such as 1-4;\nas many as the recorder has when not given")
        ->type_name("RANGE");
    app.add_flag("--passwords", options->look.passwords, "show passwords, too");
    app.add_flag("--members", options->members, "every member of the record with its offset,\nalso fixed values");
    app.add_flag("--json", options->json, "print one JSON object");
    app.add_option("--raw", options->raw, "write the record's bytes to a file as they are;\n- is standard output")
        ->type_name("FILE");
    AddLoginOptions(app, &options->login);
    CLI::App* set = AddSet(app, options.get());
    CLI::App* ability = AddAbility(app, options.get());
    return [options, set, ability] {
        return set->parsed() ? Set(*options) : ability->parsed() ? Ability(*options) : Show(*options);
    };
}

}  // namespace

const Topic CONFIG_TOPIC = {
    "config",
    "Shows configuration records; sets factory items.",
    "  init, LoginV2, GetConfig, SetConfig (set), GetAbility (ability), Logout\n",
    "  hostmgrctl config                           which records are there?\n"
    "  hostmgrctl config network disks             two of them\n"
    "  hostmgrctl config encoding -c 1-4 --json    four channels, for a program\n"
    "  hostmgrctl config all                       every record\n"
    "  hostmgrctl config network --members         where each value stands in it\n"
    "  hostmgrctl config users --raw - | xxd       its bytes\n"
    "  hostmgrctl config set factory Site=\"North gate\"\n",
    Add,
};

}  // namespace hostmgrctl
