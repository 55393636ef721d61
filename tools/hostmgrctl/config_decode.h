// How the values of configuration records are shown: numbers with their units, texts made safe, masks and lists by
// name. Which field is which stands with the records.
#ifndef HOSTMGRCTL_CONFIG_DECODE_H
#define HOSTMGRCTL_CONFIG_DECODE_H

#include <cstdint>
#include <string>

#include "config_record.h"
#include "safe_text.h"

namespace hostmgrctl::decode {

/** An unsigned number of up to 4 bytes, least byte first. */
uint32_t Word(const unsigned char* bytes, size_t size);

/** Shows a value of a member that has its place in the whole record or entry. */
inline uint32_t WordAt(const unsigned char* bytes, size_t offset) {
    return Word(bytes + offset, sizeof(uint32_t));
}

Shown Number(const unsigned char* bytes, size_t size, const Look& look);
Shown SignedNumber(const unsigned char* bytes, size_t size, const Look& look);
/** "yes" or "no"; a number that is neither 1 nor 0 is told, too. */
Shown Flag(const unsigned char* bytes, size_t size, const Look& look);
/** A text, with its terminator or without. */
Shown Text(const unsigned char* bytes, size_t size, const Look& look);
/** A text that is shown only when asked for; JSON: null. */
Shown Password(const unsigned char* bytes, size_t size, const Look& look);
/** "2000000 MB (2 TB)": larger units by 1000 of the recorder's megabytes. */
Shown Megabytes(const unsigned char* bytes, size_t size, const Look& look);
/** "1.7" of two numbers, the higher one in the high 16 bits. */
Shown Version(const unsigned char* bytes, size_t size, const Look& look);
/** "01:00:ff". */
Shown HexBytes(const unsigned char* bytes, size_t size, const Look& look);

/** A byte a channel, from 1: the channels that are not 0, such as "1-4, 7". */
Shown Channels(const unsigned char* bytes, size_t size, const Look& look);

/** "kbit/s" and alike behind a number. */
Shown WithUnit(const unsigned char* bytes, size_t size, const char* unit);

/** A name for a number, or for a bit. */
struct Name {
    uint32_t value;
    const char* name;
};

/** The value's name; one that has none as "unknown (7)". */
Shown NameOf(const unsigned char* bytes, size_t size, const Name* names, size_t count);

template <const auto& Names>
Shown Named(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    return NameOf(bytes, size, Names, sizeof(Names) / sizeof(Names[0]));
}

/** The names of the bits that are set; of none: the name of 0, which the list need not have. JSON: a list. */
Shown BitsOf(const unsigned char* bytes, size_t size, const Name* names, size_t count);

template <const auto& Names>
Shown Bits(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    return BitsOf(bytes, size, Names, sizeof(Names) / sizeof(Names[0]));
}

template <const auto& Unit>
Shown Measured(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    return WithUnit(bytes, size, Unit);
}

}  // namespace hostmgrctl::decode

#endif
