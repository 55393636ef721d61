#include "safe_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace hostmgrctl {
namespace {

struct Character {
    size_t bytes = 1;
    char32_t code = 0;
    bool valid = false;
};

struct Lead {
    unsigned mask, pattern;
    size_t bytes;
    char32_t smallest;  // what is below has a shorter form, and that one alone is valid
};

constexpr Lead LEADS[] = {{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

Character CharacterAt(const std::string& text, size_t at) {
    const auto byte = [&](size_t index) { return static_cast<unsigned char>(text[index]); };
    for (const Lead& lead : LEADS) {
        if ((byte(at) & lead.mask) != lead.pattern) {
            continue;
        }
        char32_t code = byte(at) & ~lead.mask & 0xFF;
        for (size_t i = 1; i < lead.bytes; ++i) {
            if (at + i >= text.size() || (byte(at + i) & 0xC0) != 0x80) {
                return {};
            }
            code = code << 6 | (byte(at + i) & 0x3F);
        }
        const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
        return {lead.bytes, code, code >= lead.smallest && code <= 0x10FFFF && !surrogate};
    }
    return {};
}

struct Span {
    char32_t first, last;
};

template <size_t Size>
bool IsIn(const Span (&spans)[Size], char32_t code) {
    return std::any_of(std::begin(spans), std::end(spans),
                       [code](const Span& span) { return code >= span.first && code <= span.last; });
}

// Controls, and what turns the writing direction or breaks the line.
constexpr Span UNPRINTABLE[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x200B, 0x200F},
                                {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF}};
constexpr Span WIDE[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                         {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
constexpr Span COMBINING[] = {{0x300, 0x36F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}};

size_t WidthOf(char32_t code) {
    return IsIn(WIDE, code) ? 2 : IsIn(COMBINING, code) ? 0 : 1;
}

template <typename Keep>
std::string Escape(const std::string& text, Keep keep) {
    std::string escaped;
    for (size_t at = 0; at < text.size();) {
        const Character character = CharacterAt(text, at);
        const size_t bytes = character.valid ? character.bytes : 1;
        if (character.valid && keep(character.code)) {
            escaped.append(text, at, bytes);
        } else {
            for (size_t i = at; i < at + bytes; ++i) {
                char code[5];
                snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(text[i]));
                escaped += code;
            }
        }
        at += bytes;
    }
    return escaped;
}

}  // namespace

std::string FieldText(const void* field, size_t size) {
    const char* text = static_cast<const char*>(field);
    return {text, strnlen(text, size)};
}

std::string ValidText(const std::string& text) {
    return Escape(text, [](char32_t) { return true; });
}

std::string PrintableText(const std::string& text) {
    return Escape(text, [](char32_t code) { return !IsIn(UNPRINTABLE, code); });
}

size_t DisplayWidth(const std::string& text) {
    size_t width = 0;
    for (size_t at = 0; at < text.size();) {
        const Character character = CharacterAt(text, at);
        width += character.valid ? WidthOf(character.code) : 1;
        at += character.valid ? character.bytes : 1;
    }
    return width;
}

size_t BytesThatFit(const std::string& text, size_t from, size_t columns) {
    size_t width = 0;
    size_t at = from;
    while (at < text.size()) {
        const Character character = CharacterAt(text, at);
        width += character.valid ? WidthOf(character.code) : 1;
        if (width > columns && at > from) {
            break;
        }
        at += character.valid ? character.bytes : 1;
    }
    return at - from;
}

}  // namespace hostmgrctl
