// Texts of a recorder's on their way to a terminal or into JSON: bounded by their field, whole UTF-8, nothing that
// moves the cursor. What a text means does not belong here.
#ifndef HOSTMGRCTL_SAFE_TEXT_H
#define HOSTMGRCTL_SAFE_TEXT_H

#include <cstddef>
#include <string>

namespace hostmgrctl {

/** The text of a field: up to its NUL or, where it has none, to the field's end. Bytes as they are. */
std::string FieldText(const void* field, size_t size);

/** Valid UTF-8 for JSON: each byte that is none becomes "\xNN"; everything else stays as it is. */
std::string ValidText(const std::string& text);

/** For a terminal: as ValidText, and control and direction characters become "\xNN", too, byte by byte. */
std::string PrintableText(const std::string& text);

/** Columns that a printable text takes: wide characters (Chinese ones) two, combining ones none. */
size_t DisplayWidth(const std::string& text);

/** How many bytes of a printable text, from a place on, fit into so many columns; at least one character. */
size_t BytesThatFit(const std::string& text, size_t from, size_t columns);

}  // namespace hostmgrctl

#endif
