#include "config_decode.h"

#include <algorithm>
#include <cstdio>

namespace hostmgrctl::decode {
namespace {

using nlohmann::ordered_json;

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : text;
}

/** "1.5": at most one digit behind the point. */
std::string Short(double number) {
    char text[32];
    snprintf(text, sizeof(text), "%.1f", number);
    std::string shortened = text;
    if (shortened.size() > 2 && shortened.compare(shortened.size() - 2, 2, ".0") == 0) {
        shortened.resize(shortened.size() - 2);
    }
    return shortened;
}

std::string RangeText(size_t first, size_t last) {
    return std::to_string(first) + (last == first ? "" : "-" + std::to_string(last));
}

}  // namespace

uint32_t Word(const unsigned char* bytes, size_t size) {
    uint32_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        value |= static_cast<uint32_t>(bytes[i]) << (8 * i);
    }
    return value;
}

Shown Number(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const uint32_t value = Word(bytes, size);
    return {value, std::to_string(value)};
}

Shown SignedNumber(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const auto value = static_cast<int32_t>(Word(bytes, size));
    return {value, std::to_string(value)};
}

Shown Flag(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const uint32_t value = Word(bytes, size);
    return {value != 0, value == 0 ? "no" : value == 1 ? "yes" : "yes (" + std::to_string(value) + ")"};
}

Shown Text(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const std::string text = FieldText(bytes, size);
    return {ValidText(text), OrDash(PrintableText(text))};
}

Shown Password(const unsigned char* bytes, size_t size, const Look& look) {
    if (look.passwords) {
        return Text(bytes, size, look);
    }
    return {nullptr, bytes[0] != '\0' ? "set (--passwords shows it)" : "-"};
}

Shown Megabytes(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const uint32_t value = Word(bytes, size);
    std::string text = std::to_string(value) + " MB";
    if (value >= 1000000) {
        text += " (" + Short(value / 1e6) + " TB)";
    } else if (value >= 1000) {
        text += " (" + Short(value / 1e3) + " GB)";
    }
    return {value, text};
}

Shown Version(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const uint32_t value = Word(bytes, size);
    const std::string text = std::to_string(value >> 16) + "." + std::to_string(value & 0xFFFF);
    return {text, text};
}

Shown HexBytes(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        char byte[4];
        snprintf(byte, sizeof(byte), "%s%02x", i == 0 ? "" : ":", bytes[i]);
        text += byte;
    }
    return {text, text};
}

Shown Channels(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    ordered_json list = ordered_json::array();
    std::vector<std::string> ranges;
    for (size_t i = 0; i < size; ++i) {
        if (bytes[i] == 0) {
            continue;
        }
        const size_t first = i;
        for (; i < size && bytes[i] != 0; ++i) {
            list.push_back(i + 1);
        }
        ranges.push_back(RangeText(first + 1, i));
    }
    return {list, ranges.empty() ? "none" : Joined(ranges)};
}

Shown WithUnit(const unsigned char* bytes, size_t size, const char* unit) {
    const uint32_t value = Word(bytes, size);
    return {value, std::to_string(value) + " " + unit};
}

Shown NameOf(const unsigned char* bytes, size_t size, const Name* names, size_t count) {
    const uint32_t value = Word(bytes, size);
    const Name* end = names + count;
    const Name* found = std::find_if(names, end, [value](const Name& name) { return name.value == value; });
    const std::string text = found != end ? found->name : "unknown (" + std::to_string(value) + ")";
    return {text, text};
}

Shown BitsOf(const unsigned char* bytes, size_t size, const Name* names, size_t count) {
    const uint32_t value = Word(bytes, size);
    std::vector<std::string> set;
    for (unsigned bit = 0; bit < 8 * size; ++bit) {
        if ((value >> bit & 1) == 0) {
            continue;
        }
        const Name* found =
            std::find_if(names, names + count, [bit](const Name& name) { return name.value == uint32_t{1} << bit; });
        set.push_back(found != names + count ? found->name : "bit " + std::to_string(bit));
    }
    const Name* none = std::find_if(names, names + count, [](const Name& name) { return name.value == 0; });
    return {set, !set.empty() ? Joined(set) : none != names + count ? none->name : "-"};
}

}  // namespace hostmgrctl::decode
