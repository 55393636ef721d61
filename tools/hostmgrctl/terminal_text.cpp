#include "terminal_text.h"

#include <iconv.h>
#include <langinfo.h>

#include <cerrno>
#include <clocale>

#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr const char* BETWEEN = "UTF-8";  // every encoding has a way to it, and its characters' ends can be seen

class Converter {
public:
    Converter(const std::string& from, const std::string& to) : m_converter(iconv_open(to.c_str(), from.c_str())) {
        if (m_converter == reinterpret_cast<iconv_t>(-1)) {
            throw Failure(ExitCode::Usage, "no way is known from encoding \"" + from + "\" to \"" + to +
                                               "\": give one that \"iconv --list\" shows");
        }
    }
    ~Converter() { iconv_close(m_converter); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    std::string Convert(std::string text) {
        std::string converted;
        size_t at = 0;
        while (at < text.size()) {
            at += Feed(&text[at], text.size() - at, &converted);
            if (at < text.size()) {
                char unknown = '?';
                Feed(&unknown, 1, &converted);
                at += CharacterSize(text, at);
            }
        }
        Feed(nullptr, 0, &converted);
        return converted;
    }

private:
    /** Converts as far as it goes; returns how far that is. */
    size_t Feed(char* text, size_t size, std::string* converted) {
        char buffer[4096];
        size_t left = size;
        size_t result;
        do {
            char* to = buffer;
            size_t room = sizeof(buffer);
            result = iconv(m_converter, text == nullptr ? nullptr : &text, &left, &to, &room);
            converted->append(buffer, sizeof(buffer) - room);
        } while (result == static_cast<size_t>(-1) && errno == E2BIG);
        return size - left;
    }

    static size_t CharacterSize(const std::string& text, size_t at) {
        size_t size = 1;
        while (at + size < text.size() && (static_cast<unsigned char>(text[at + size]) & 0xC0) == 0x80 &&
               (static_cast<unsigned char>(text[at]) & 0xC0) == 0xC0) {
            ++size;
        }
        return size;
    }

    const iconv_t m_converter;
};

}  // namespace

std::string TerminalEncoding() {
    setlocale(LC_CTYPE, "");
    return nl_langinfo(CODESET);
}

std::string Reencode(const std::string& text, const std::string& from, const std::string& to) {
    return Converter(BETWEEN, to).Convert(Converter(from, BETWEEN).Convert(text));
}

}  // namespace hostmgrctl
