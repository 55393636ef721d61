#include "config_set.h"

#include <cstring>

#include "exit_code.h"
#include "safe_text.h"

namespace hostmgrctl {
namespace {

using Item = _tagVexoHostMgrFactoryInfo;

/** The last byte stays for the terminator. */
template <size_t Size>
void Put(const std::string& text, const char* what, char (&field)[Size]) {
    if (text.size() >= Size) {
        throw Failure(ExitCode::Usage, std::string("the ") + what + " \"" + PrintableText(text) + "\" has " +
                                           std::to_string(text.size()) + " bytes: give at most " +
                                           std::to_string(Size - 1));
    }
    memcpy(field, text.data(), text.size());
}

Item ParseItem(const std::string& text) {
    const size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0) {
        throw Failure(ExitCode::Usage,
                      "\"" + PrintableText(text) + "\" is no item: give NAME=VALUE, such as Site=\"North gate\"");
    }
    Item item = {};
    Put(text.substr(0, sign), "name", item.sName);
    Put(text.substr(sign + 1), "value", item.sValue);
    return item;
}

}  // namespace

std::vector<Item> ParseItems(const std::vector<std::string>& items) {
    std::vector<Item> parsed;
    parsed.reserve(items.size());
    for (const std::string& item : items) {
        parsed.push_back(ParseItem(item));
    }
    return parsed;
}

void SetItems(int login, std::vector<Item> items) {
    for (Item& item : items) {
        if (vexo_soft::vexo_HostMgr_Dev_SetConfig(login, HOSTMGR_SETCONFIG_FACTORY, 1, 1, nullptr, 0, &item,
                                                  sizeof(item)) != 0) {
            throw Failure(ExitCode::Refused, "the item \"" + PrintableText(FieldText(item.sName, sizeof(item.sName))) +
                                                 "\" was refused, those before it are set: has the recorder room for "
                                                 "another one? \"hostmgrctl config factory\" lists them");
        }
    }
}

void AskAbility(int login, unsigned type) {
    char in[1] = {};
    char out[4096] = {};
    if (vexo_soft::vexo_HostMgr_Dev_GetAbility(login, type, in, 0, out, sizeof(out)) != 0) {
        throw Failure(ExitCode::Refused, "ability " + std::to_string(type) +
                                             " was refused, as all are: the configuration records tell what the "
                                             "recorder can do, \"hostmgrctl config device\" above all");
    }
    throw Failure(ExitCode::Refused, "the recorder answers for ability " + std::to_string(type) +
                                         ": this tool does not know how to show it");
}

}  // namespace hostmgrctl
