#include "core/factory.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <vector>

#include "core/factory_file.h"
#include "core/home.h"
#include "core/kept.h"

namespace simulator {
namespace {

constexpr char DOCUMENT[] = "factory";

struct Store {
    std::mutex lock;
    std::vector<FactoryItem> items;
};

/** A text as it is; one that is not UTF-8, which JSON cannot hold, as a list of bytes. */
nlohmann::json TextOrBytes(const std::string& text) {
    nlohmann::json value = text;
    try {
        value.dump();
    } catch (const nlohmann::json::exception&) {
        value = nlohmann::json::array();
        for (const char byte : text) {
            value.push_back(static_cast<unsigned char>(byte));
        }
    }
    return value;
}

std::string BytesOf(const nlohmann::json& value) {
    std::string text;
    if (value.is_string()) {
        text = value.get<std::string>();
    } else {
        for (const nlohmann::json& byte : value) {
            text.push_back(static_cast<char>(byte.get<unsigned char>()));
        }
    }
    return text;
}

nlohmann::json DocumentOf(const std::vector<FactoryItem>& items) {
    nlohmann::json list = nlohmann::json::array();
    for (const FactoryItem& item : items) {
        list.push_back({{"name", TextOrBytes(item.name)}, {"value", TextOrBytes(item.value)}});
    }
    return {{"items", list}};
}

std::vector<FactoryItem> ItemsOf(const nlohmann::json& document) {
    std::vector<FactoryItem> items;
    try {
        for (const nlohmann::json& item : document.at("items")) {
            items.push_back({BytesOf(item.at("name")), BytesOf(item.at("value"))});
        }
    } catch (const nlohmann::json::exception&) {
        items.clear();
    }
    return items;
}

Store& TheStore() {
    static Store& store = *[] {
        auto* made = new Store;
        const nlohmann::json document = ReadKept(DOCUMENT);
        made->items = document.empty() ? TheScenario().factory : ItemsOf(document);
        return made;
    }();
    return store;
}

}  // namespace

unsigned FactoryItems() {
    Store& store = TheStore();
    std::lock_guard<std::mutex> hold(store.lock);
    return static_cast<unsigned>(store.items.size());
}

std::optional<FactoryItem> FactoryItemAt(unsigned index) {
    Store& store = TheStore();
    std::lock_guard<std::mutex> hold(store.lock);
    return index < store.items.size() ? std::optional(store.items[index]) : std::nullopt;
}

bool SetFactoryItem(const FactoryItem& item) {
    Store& store = TheStore();
    std::lock_guard<std::mutex> hold(store.lock);
    const auto found = std::find_if(store.items.begin(), store.items.end(),
                                    [&item](const FactoryItem& other) { return other.name == item.name; });
    if (item.name.empty() || (found == store.items.end() && store.items.size() >= MOST_FACTORY_ITEMS)) {
        return false;
    }
    if (found != store.items.end()) {
        found->value = item.value;
    } else {
        store.items.push_back(item);
    }
    Keep(DOCUMENT, DocumentOf(store.items));
    WriteFactoryFile({item});
    return true;
}

void PrepareFactoryFile() {
    std::error_code error;
    if (!std::filesystem::is_directory(HomePath(), error)) {
        return;  // whoever needs the home folder first tells why it is not there
    }
    Store& store = TheStore();
    std::lock_guard<std::mutex> hold(store.lock);
    if (!store.items.empty() && !HasFactoryFile()) {
        WriteFactoryFile(store.items);
    }
}

}  // namespace simulator
