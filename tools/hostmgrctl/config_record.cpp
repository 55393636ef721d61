#include "config_record.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "console.h"
#include "exit_code.h"
#include "text_table.h"

namespace hostmgrctl {

using nlohmann::ordered_json;

// ---- reading -------------------------------------------------------------------------------------------------------

Reading ReadRecord(const Record& record, int login, const ChannelRange& channels) {
    const size_t size = record.size * (record.by_channel ? channels.count : 1);
    Reading reading = {Bytes(size, record.preset), 0, channels};
    unsigned returned = 0;
    if (vexo_soft::vexo_HostMgr_Dev_GetConfig(login, record.command, static_cast<int>(channels.first),
                                              static_cast<int>(channels.count), nullptr, 0, reading.bytes.data(),
                                              static_cast<unsigned>(size), &returned) != 0) {
        throw Failure(ExitCode::Refused, std::string("the record \"") + record.name + "\" (command " +
                                             std::to_string(record.command) + ") was refused: " + record.refusal);
    }
    reading.returned = std::min<size_t>(returned, size);
    return reading;
}

// ---- walking -------------------------------------------------------------------------------------------------------

namespace {

/** Calls with each entry that exists and its number. */
template <typename Call>
void ForEachEntry(const Section& section, const Reading& reading, Call call) {
    const size_t room = section.stride == 0 ? 1 : (reading.bytes.size() - section.offset) / section.stride;
    const size_t entries = section.entries == 0 ? room : std::min(section.entries, room);
    for (size_t index = 0; index < entries; ++index) {
        const Entry entry = {reading.bytes, reading.bytes.data() + section.offset + index * section.stride, index};
        if (section.exists == nullptr || section.exists(entry)) {
            call(entry, index + section.first);
        }
    }
}

/** Of a record by channel the numbers are those of the channels that were asked for. */
unsigned FirstNumber(const Record& record, const Section& section, const Reading& reading) {
    return record.by_channel ? reading.channels.first - section.first : 0;
}

Shown ShownOf(const Field& field, const Entry& entry, const Look& look) {
    return field.decode(entry.bytes + field.offset, field.size, look);
}

/** What an entry that could not be read holds is no value. */
Shown ValueOf(const Section& section, const Field& field, const Entry& entry, const Look& look) {
    if (section.read != nullptr && !section.read(entry) && strcmp(field.key, READABLE) != 0) {
        return {nullptr, "-"};
    }
    return ShownOf(field, entry, look);
}

bool IsShown(const Section& section, const Entry& entry) {
    return section.shown == nullptr || section.shown(entry);
}

// ---- JSON ----------------------------------------------------------------------------------------------------------

void AddFields(const Section& section, const Entry& entry, const Look& look, ordered_json* object) {
    for (const Field& field : section.fields) {
        if (field.key != nullptr) {
            (*object)[field.key] = ValueOf(section, field, entry, look).json;
        }
    }
}

ordered_json EntriesJson(const Record& record, const Section& section, const Reading& reading, const Look& look) {
    ordered_json list = ordered_json::array();
    ForEachEntry(section, reading, [&](const Entry& entry, size_t number) {
        ordered_json object = ordered_json::object();
        if (section.number != nullptr) {
            object[section.number] = number + FirstNumber(record, section, reading);
        }
        AddFields(section, entry, look, &object);
        list.push_back(object);
    });
    return list;
}

// ---- tables --------------------------------------------------------------------------------------------------------

void AddLines(const Section& section, const Entry& entry, const Look& look, TextTable* table) {
    for (const Field& field : section.fields) {
        if (field.key != nullptr) {
            table->AddRow({field.label, ValueOf(section, field, entry, look).text});
        }
    }
}

TextTable LinesTable() {
    TextTable table;
    table.AddColumn("");
    table.AddColumn("");
    return table;
}

void PrintLines(const Record& record, const Section& section, const Reading& reading, const Look& look) {
    ForEachEntry(section, reading, [&](const Entry& entry, size_t number) {
        const std::string which =
            section.number != nullptr ? " " + std::to_string(number + FirstNumber(record, section, reading)) : "";
        fprintf(console::Data(), "\n  %s%s\n", section.title, which.c_str());
        TextTable table = LinesTable();
        AddLines(section, entry, look, &table);
        table.Print(console::Data(), 4);
    });
}

/** Fields of the record itself, from whichever section: they are one table, and stand first. */
bool IsPlain(const Section& section) {
    return section.form == Form::Lines && section.title == nullptr;
}

void PrintPlain(const Record& record, const Reading& reading, const Look& look) {
    TextTable table = LinesTable();
    for (const Section& section : record.sections) {
        if (IsPlain(section)) {
            AddLines(section, {reading.bytes, reading.bytes.data(), 0}, look, &table);
        }
    }
    table.Print(console::Data());
}

/** A column whose values are numbers is aligned as numbers are. */
Align AlignOf(const Field& field, const Section& section, const Reading& reading, const Look& look) {
    bool numbers = false;
    ForEachEntry(section, reading,
                 [&](const Entry& entry, size_t) { numbers |= ShownOf(field, entry, look).json.is_number(); });
    return numbers ? Align::Right : Align::Left;
}

void PrintRows(const Record& record, const Section& section, const Reading& reading, const Look& look) {
    TextTable table;
    if (section.number != nullptr) {
        table.AddColumn(section.number, Align::Right);
    }
    for (const Field& field : section.fields) {
        if (field.key != nullptr) {
            table.AddColumn(field.label, AlignOf(field, section, reading, look));
        }
    }
    ForEachEntry(section, reading, [&](const Entry& entry, size_t number) {
        if (!IsShown(section, entry)) {
            return;
        }
        std::vector<std::string> cells;
        if (section.number != nullptr) {
            cells.push_back(std::to_string(number + FirstNumber(record, section, reading)));
        }
        for (const Field& field : section.fields) {
            if (field.key != nullptr) {
                cells.push_back(ValueOf(section, field, entry, look).text);
            }
        }
        table.AddRow(cells);
    });
    if (section.title != nullptr) {
        fprintf(console::Data(), "\n  %s%s\n", section.title, table.IsEmpty() ? ": none" : "");
    } else if (table.IsEmpty()) {
        fprintf(console::Data(), "  none\n");
    }
    table.Print(console::Data(), section.title != nullptr ? 4 : 2);
}

void PrintHeading(const Record& record, const Reading& reading) {
    fprintf(console::Data(), "%s: %s (command %u, %zu bytes)\n", record.name, record.purpose, record.command,
            reading.returned);
}

}  // namespace

ordered_json JsonOf(const Record& record, const Reading& reading, const Look& look) {
    ordered_json json = ordered_json::object();
    for (const Section& section : record.sections) {
        if (section.stride != 0) {
            json[section.key] = EntriesJson(record, section, reading, look);
        } else {
            AddFields(section, {reading.bytes, reading.bytes.data() + section.offset, 0}, look,
                      section.key != nullptr ? &json[section.key] : &json);
        }
    }
    return json;
}

void PrintTables(const Record& record, const Reading& reading, const Look& look) {
    PrintHeading(record, reading);
    PrintPlain(record, reading, look);
    for (const Section& section : record.sections) {
        if (IsPlain(section)) {
            continue;
        }
        section.form == Form::Lines ? PrintLines(record, section, reading, look)
                                    : PrintRows(record, section, reading, look);
        const std::string note = section.note != nullptr ? section.note(reading.bytes) : "";
        if (!note.empty()) {
            TextTable line;
            line.AddColumn("");
            line.AddRow({note});
            line.Print(console::Data(), section.title != nullptr ? 4 : 2);
        }
    }
}

void PrintMembers(const Record& record, const Reading& reading, const Look& look) {
    std::map<size_t, std::vector<std::string>> rows;  // by offset
    for (const Section& section : record.sections) {
        ForEachEntry(section, reading, [&](const Entry& entry, size_t) {
            const std::string index = section.stride != 0 ? "[" + std::to_string(entry.index) + "]." : "";
            const std::string path = (section.member != nullptr ? section.member : "") + index;
            for (const Field& field : section.fields) {
                if (field.member != nullptr) {
                    const size_t offset = section.offset + entry.index * section.stride + field.offset;
                    rows[offset] = {std::to_string(offset), std::to_string(field.size), path + field.member,
                                    ShownOf(field, entry, look).text};
                }
            }
        });
    }
    TextTable table;
    table.AddColumn("offset", Align::Right);
    table.AddColumn("bytes", Align::Right);
    table.AddColumn("member");
    table.AddColumn("value");
    for (const auto& [offset, row] : rows) {
        table.AddRow(row);
    }
    PrintHeading(record, reading);
    table.Print(console::Data());
}

const std::vector<const Record*>& ConfigRecords() {
    static const std::vector<const Record*> records = {
        &DEVICE_RECORD, &DEVICE_SHORT_RECORD, &ENCODING_RECORD, &TIME_RECORD,    &TIME_SHORT_RECORD,
        &USERS_RECORD,  &ZERO_RECORD,         &STATE_RECORD,    &DISKS_8_RECORD, &NETWORK_RECORD,
        &DISKS_RECORD,  &PLATFORMS_RECORD,    &FACTORY_RECORD,  &VERSION_RECORD, &PICTURE_DIR_RECORD,
    };
    return records;
}

}  // namespace hostmgrctl
