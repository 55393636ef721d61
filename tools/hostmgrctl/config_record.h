// Configuration records as tables of fields: where a value stands in a record, what it is called, how it is shown. Each
// record stands in the source of its subject; how values are decoded stands in config_decode.h.
#ifndef HOSTMGRCTL_CONFIG_RECORD_H
#define HOSTMGRCTL_CONFIG_RECORD_H

#include <hostmgr_dev.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace hostmgrctl {

using Bytes = std::vector<unsigned char>;

/** The JSON member that tells whether an entry could be read. */
constexpr char READABLE[] = "readable";

/** What decides about how values are shown. */
struct Look {
    bool passwords = false;  ///< in clear
};

/** A value for programs and for people. */
struct Shown {
    nlohmann::ordered_json json;
    std::string text;
};

/** Shows the bytes of a field. */
using Decode = Shown (*)(const unsigned char* bytes, size_t size, const Look& look);

struct Field {
    const char* key;     ///< JSON member; null: in the list of members alone (sizes, fixed values)
    const char* label;   ///< in tables
    const char* member;  ///< in the public header's record; null: made of several, which stand beside it
    size_t offset;       ///< from the beginning of the record or entry
    size_t size;
    Decode decode;
};

/** The middle of a Field: a member of a record of the public header. */
#define HOSTMGRCTL_MEMBER(record, member) #member, offsetof(record, member), sizeof(record::member)

/** A constant table, at most one, of any length. */
template <typename Item>
struct Table {
    template <size_t Size>
    constexpr Table(const Item (&table)[Size]) : items(table), size(Size) {}
    const Item* begin() const { return items; }
    const Item* end() const { return items + size; }

    const Item* items;
    size_t size;
};

/** One entry of a section, and the record that it stands in. */
struct Entry {
    const Bytes& record;
    const unsigned char* bytes;
    size_t index;
};

enum class Form {
    Lines,  ///< a line a field
    Rows,   ///< a line an entry
};

/** Fields that stand once in a record, or once in each of its entries. */
struct Section {
    const char* key;    ///< JSON member; null: the fields stand in the record's own object
    const char* title;  ///< above it, with the number of an entry; null: none, for rows and for the record's own
    Form form;
    Table<Field> fields;
    const char* member = nullptr;  ///< of the record: the array of entries
    size_t offset = 0;
    size_t stride = 0;                             ///< bytes of an entry; 0: the fields stand once
    size_t entries = 0;                            ///< 0: as many as the record holds
    const char* number = nullptr;                  ///< JSON member and column of an entry's number; null: it has none
    size_t first = 0;                              ///< number of the first entry
    bool (*read)(const Entry& entry) = nullptr;    ///< false: the recorder could not read it, its values are none
    bool (*exists)(const Entry& entry) = nullptr;  ///< false: neither shown nor in JSON; null: all are
    bool (*shown)(const Entry& entry) = nullptr;   ///< false: in JSON alone; null: all are shown
    std::string (*note)(const Bytes& record) = nullptr;  ///< a line below it, or an empty text
};

struct Record {
    const char* name;     ///< on the command line and in JSON
    const char* purpose;  ///< a few words
    HostMgrConfigCommand command;
    size_t size;          ///< bytes; of one entry when by_channel
    const char* refusal;  ///< why a recorder refuses it and what to do
    Table<Section> sections;
    bool by_channel = false;
    bool whole = true;         ///< false: another form of a record, which "all" leaves out
    unsigned char preset = 0;  ///< what the buffer is filled with: shows what a recorder does not write
};

/** Channels of a record by channel. */
struct ChannelRange {
    unsigned first = 1;
    unsigned count = 1;
};

/** A record's bytes as the recorder gave them. */
struct Reading {
    Bytes bytes;
    size_t returned = 0;    ///< how many of them the recorder says it filled
    ChannelRange channels;  ///< of a record by channel
};

/** Reads a record; throws Failure when it is refused. */
Reading ReadRecord(const Record& record, int login, const ChannelRange& channels);

nlohmann::ordered_json JsonOf(const Record& record, const Reading& reading, const Look& look);
void PrintTables(const Record& record, const Reading& reading, const Look& look);

/** Every member with its place and size, also those that tables leave out. */
void PrintMembers(const Record& record, const Reading& reading, const Look& look);

/** All records, in the order of their command numbers. */
const std::vector<const Record*>& ConfigRecords();

// By source.
extern const Record DEVICE_RECORD, DEVICE_SHORT_RECORD, TIME_RECORD, TIME_SHORT_RECORD, VERSION_RECORD;
extern const Record ENCODING_RECORD, ZERO_RECORD;
extern const Record USERS_RECORD;
extern const Record STATE_RECORD, DISKS_RECORD, DISKS_8_RECORD, PICTURE_DIR_RECORD;
extern const Record NETWORK_RECORD, PLATFORMS_RECORD;
extern const Record FACTORY_RECORD;

}  // namespace hostmgrctl

#endif
