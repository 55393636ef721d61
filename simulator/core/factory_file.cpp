#include "core/factory_file.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "core/document.h"
#include "core/guest_files.h"

namespace simulator {
namespace {

constexpr char FILE_NAME[] = "/vexo_hostmgr_factory.dat";
constexpr char ROOT[] = "DeviceInfo";
constexpr char VALUE[] = "content";
constexpr char EMPTY[] = "<?xml version=\"1.0\"?>\n<DeviceInfo>\n</DeviceInfo>\n";

std::string FactoryFile() {
    return ConfigFolder() + FILE_NAME;
}

bool IsXmlName(const std::string& name) {
    const auto begins = [](unsigned char c) { return isalpha(c) != 0 || c == '_' || c >= 0x80; };
    const auto goes_on = [&](unsigned char c) { return begins(c) || isdigit(c) != 0 || c == '-' || c == '.'; };
    for (const char c : name) {
        if (!goes_on(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return !name.empty() && begins(static_cast<unsigned char>(name[0]));
}

void Put(const FactoryItem& item, pugi::xml_node root) {
    pugi::xml_node child = root.child(item.name.c_str());
    if (child.empty()) {
        root.append_child(pugi::node_pcdata).set_value("    ");
        child = root.append_child(item.name.c_str());
        root.append_child(pugi::node_pcdata).set_value("\n");
    }
    pugi::xml_attribute value = child.attribute(VALUE);
    if (value.empty()) {
        value = child.append_attribute(VALUE);
    }
    value.set_value(item.value.c_str());
}

}  // namespace

bool HasFactoryFile() {
    std::error_code error;
    return std::filesystem::exists(FactoryFile(), error);
}

void WriteFactoryFile(const std::vector<FactoryItem>& items) {
    const std::string path = FactoryFile();
    Document document;
    if (!document.Load(path) || document.Find(ROOT).empty()) {
        document.Parse(EMPTY, strlen(EMPTY));
    }
    for (const FactoryItem& item : items) {
        if (IsXmlName(item.name)) {
            Put(item, document.Find(ROOT));
        }
    }
    if (!document.Save(path)) {
        fprintf(stderr, "[simulated recorder] cannot write %s\n", path.c_str());
    }
}

}  // namespace simulator
