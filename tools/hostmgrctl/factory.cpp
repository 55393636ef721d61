// factory: lists the recorder's factory items, and sets them.
#include <hostmgr_dev.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "console.h"
#include "safe_text.h"
#include "text_table.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using Item = _tagVexoHostMgrFactoryInfo;
using nlohmann::ordered_json;

constexpr size_t FIRST_ROOM = 256;  // items
constexpr size_t MOST_ROOM = 65536;

struct Options {
    LoginOptions login;
    std::vector<std::string> settings;
    bool json = false;
};

/** The items of the recorder's list, at most so many of its entries looked at; none when there are none. */
std::vector<Item> ReadItems(int login, size_t room) {
    std::vector<Item> items(room);
    const auto size = static_cast<unsigned>(room * sizeof(Item));
    if (vexo_soft::vexo_HostMgr_Dev_GetConfig(login, HOSTMGR_CONFIG_FACTORY, 0, 0, nullptr, 0, items.data(), size,
                                              nullptr) != 0) {
        return {};
    }
    size_t count = 0;
    while (count < room && items[count].sName[0] != '\0') {
        ++count;
    }
    items.resize(count);
    return items;
}

/** The whole list. The room bounds the entries looked at, and those without a value are not told: so more room is tried
 * until it brings no more. */
std::vector<Item> ReadItems(int login) {
    std::vector<Item> items = ReadItems(login, FIRST_ROOM);
    for (size_t room = FIRST_ROOM * 2; room <= MOST_ROOM; room *= 2) {
        std::vector<Item> more = ReadItems(login, room);
        if (more.size() <= items.size()) {
            break;
        }
        items = std::move(more);
    }
    return items;
}

std::string NameOf(const Item& item) {
    return FieldText(item.sName, sizeof(item.sName));
}

std::string ValueOf(const Item& item) {
    return FieldText(item.sValue, sizeof(item.sValue));
}

template <size_t Size>
void PutText(const std::string& text, const std::string& setting, const char* what, char (&field)[Size]) {
    if (text.size() >= Size) {
        throw Failure(ExitCode::Usage, "\"" + PrintableText(setting.substr(0, 40)) + "\": the " + what + " has " +
                                           std::to_string(text.size()) + " bytes, " + std::to_string(Size - 1) +
                                           " are possible");
    }
    memcpy(field, text.data(), text.size());
}

Item ItemOf(const std::string& setting) {
    const size_t equals = setting.find('=');
    if (equals == 0 || equals == std::string::npos) {
        throw Failure(ExitCode::Usage, "\"" + PrintableText(setting.substr(0, 80)) +
                                           "\" sets nothing: write NAME=VALUE, such as Serial=4711");
    }
    Item item = {};
    PutText(setting.substr(0, equals), setting, "name", item.sName);
    PutText(setting.substr(equals + 1), setting, "value", item.sValue);
    return item;
}

void PrintTable(const std::vector<Item>& items) {
    TextTable table;
    table.AddColumn("name");
    table.AddColumn("value");
    for (const Item& item : items) {
        table.AddRow({PrintableText(NameOf(item)), PrintableText(ValueOf(item))});
    }
    table.Print(console::Data());
}

ordered_json Json(const Item& item) {
    return {{"name", ValidText(NameOf(item))}, {"value", ValidText(ValueOf(item))}};
}

ExitCode RunList(const Options& options) {
    const Agent agent(options.login);
    const std::vector<Item> items = ReadItems(agent.Handle());
    if (options.json) {
        ordered_json json = {{"items", ordered_json::array()}};
        for (const Item& item : items) {
            json["items"].push_back(Json(item));
        }
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    } else {
        PrintTable(items);
    }
    if (items.empty()) {
        throw Failure(ExitCode::NoData, "the recorder lists no factory items: hostmgrctl factory set NAME=VALUE");
    }
    return ExitCode::Ok;
}

bool Lists(const std::vector<Item>& items, const Item& wanted) {
    for (const Item& item : items) {
        if (NameOf(item) == NameOf(wanted)) {
            return ValueOf(item) == ValueOf(wanted);
        }
    }
    return false;
}

/** Of several settings of one name the last one holds. */
std::vector<Item> LastOfEach(const std::vector<Item>& items) {
    std::vector<Item> last;
    for (const Item& item : items) {
        const auto same =
            std::find_if(last.begin(), last.end(), [&](const Item& other) { return NameOf(other) == NameOf(item); });
        if (same == last.end()) {
            last.push_back(item);
        } else {
            *same = item;
        }
    }
    return last;
}

void PrintSet(const std::vector<Item>& items, const std::vector<Item>& listed, bool as_json) {
    ordered_json json = {{"set", ordered_json::array()}};
    for (const Item& item : items) {
        const bool in_list = Lists(listed, item);
        json["set"].push_back(Json(item));
        json["set"].back()["listed"] = in_list;
        if (!as_json) {
            fprintf(console::Data(), "%s = %s%s\n", PrintableText(NameOf(item)).c_str(),
                    PrintableText(ValueOf(item)).c_str(),
                    in_list ? "" : "\n  the recorder has it, but its list does not show it so");
        }
    }
    if (as_json) {
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }
}

ExitCode RunSet(const Options& options) {
    std::vector<Item> items;
    for (const std::string& setting : options.settings) {
        items.push_back(ItemOf(setting));
    }
    const Agent agent(options.login);
    items = LastOfEach(items);
    for (const Item& item : items) {
        Item writable = item;
        if (vexo_soft::vexo_HostMgr_Dev_SetConfig(agent.Handle(), HOSTMGR_SETCONFIG_FACTORY, 0, 0, nullptr, 0,
                                                  &writable, sizeof(writable)) != 0) {
            throw Failure(ExitCode::Refused, "the recorder refused to set " + PrintableText(NameOf(item)) +
                                                 (items.size() > 1 ? "; what was named before it is set" : ""));
        }
    }
    PrintSet(items, ReadItems(agent.Handle()), options.json);
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* list = app.add_subcommand("list", "show the items, which is also done without a word");
    CLI::App* set = app.add_subcommand("set", "set items, those with other names stay");
    set->add_option("setting", options->settings, "name, up to 47 bytes, and value, up to 255")
        ->type_name("NAME=VALUE")
        ->required();
    app.require_subcommand(0, 1);
    for (CLI::App* command : {list, set}) {
        command->fallthrough();
    }
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options, set] { return set->parsed() ? RunSet(*options) : RunList(*options); };
}

}  // namespace

const Topic FACTORY_TOPIC = {
    "factory",
    "Lists factory items, and sets them.",
    "  init, LoginV2, GetConfig 3010, SetConfig 3011 (set), Logout\n",
    "  hostmgrctl factory                          the list\n"
    "  hostmgrctl factory set Serial=4711 \"Site=North gate\"\n"
    "  hostmgrctl factory list --json\n",
    Add,
};

}  // namespace hostmgrctl
