#include "core/document.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace simulator {
namespace {

constexpr unsigned EVERYTHING = pugi::parse_full | pugi::parse_ws_pcdata | pugi::parse_fragment;

/** A name in the same folder that nobody else writes to. */
std::string AsideOf(const std::string& path) {
    static std::atomic<unsigned> last{0};
    const std::string name = ".writing-" + std::to_string(getpid()) + "-" + std::to_string(++last);
    return (std::filesystem::path(path).parent_path() / name).string();
}

bool IsBlank(const char* text) {
    return text[strspn(text, " \t\r\n")] == '\0';
}

}  // namespace

// Bytes are taken as they are, whatever encoding the declaration names: marks are ASCII in all that a recorder uses.
bool Document::Parse(const char* text, size_t length) {
    const bool parsed = m_document.load_buffer(text, length, EVERYTHING, pugi::encoding_utf8) && IsWhole();
    if (!parsed) {
        m_document.reset();
    }
    return parsed;
}

/** One element, and around it nothing that is only allowed inside. */
bool Document::IsWhole() const {
    unsigned elements = 0;
    for (const pugi::xml_node& node : m_document.children()) {
        elements += node.type() == pugi::node_element ? 1 : 0;
        const bool text = node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
        if (text && (node.type() == pugi::node_cdata || !IsBlank(node.value()))) {
            return false;
        }
    }
    return elements == 1;
}

bool Document::Load(const std::string& path) {
    m_document.reset();
    std::error_code error;
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path, error)) {
        return false;
    }
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return !file.bad() && Parse(text.data(), text.size());
}

std::string Document::Text() const {
    struct Writer : pugi::xml_writer {
        std::string text;
        void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
    } writer;
    m_document.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return std::move(writer.text);
}

bool Document::Save(const std::string& path) const {
    if (IsEmpty()) {
        return false;
    }
    const std::string aside = AsideOf(path);
    std::ofstream file(aside, std::ios::binary | std::ios::trunc);
    file << Text();
    file.close();
    if (file.good() && rename(aside.c_str(), path.c_str()) == 0) {
        return true;
    }
    unlink(aside.c_str());
    return false;
}

pugi::xml_node Document::Find(const char* element) const {
    return m_document.find_node([element](const pugi::xml_node& node) {
        return node.type() == pugi::node_element && strcmp(node.name(), element) == 0;
    });
}

}  // namespace simulator
