// Images of records as the tests build them by hand, byte by byte and never with the library's own structs, and their
// comparison. What a record holds does not belong here.
#ifndef TESTS_IMAGE_H
#define TESTS_IMAGE_H

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

/** The bytes of a record, put where they belong one by one; little-endian. What is not put is the fill. */
class Image {
public:
    explicit Image(size_t size, uint8_t fill = 0) : m_bytes(size, fill) {}
    explicit Image(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}

    Image& Byte(size_t offset, unsigned int value) { return Put(offset, value, 1); }
    Image& Half(size_t offset, unsigned int value) { return Put(offset, value, 2); }
    Image& Word(size_t offset, unsigned int value) { return Put(offset, value, 4); }
    Image& Bytes(size_t offset, const std::vector<unsigned int>& values) {
        for (const unsigned int value : values)
            Byte(offset++, value);
        return *this;
    }
    /** The text without a terminator: what follows it is left alone. */
    Image& Text(size_t offset, const std::string& text) {
        for (const char letter : text)
            Byte(offset++, static_cast<uint8_t>(letter));
        return *this;
    }
    /** Zeroes up to the end. */
    Image& ZeroFrom(size_t offset) {
        std::fill(m_bytes.begin() + static_cast<ptrdiff_t>(offset), m_bytes.end(), uint8_t{0});
        return *this;
    }

    const std::vector<uint8_t>& All() const { return m_bytes; }

private:
    Image& Put(size_t offset, unsigned int value, size_t size) {
        for (size_t index = 0; index < size; ++index)
            m_bytes.at(offset + index) = static_cast<uint8_t>(value >> (8 * index));
        return *this;
    }

    std::vector<uint8_t> m_bytes;
};

/** Compares images; a failure names the first bytes that differ. */
inline testing::AssertionResult SameImage(const Image& actual, const Image& expected) {
    const std::vector<uint8_t>& left = actual.All();
    const std::vector<uint8_t>& right = expected.All();
    if (left.size() != right.size())
        return testing::AssertionFailure() << left.size() << " bytes, not " << right.size();
    testing::AssertionResult result = testing::AssertionFailure();
    int differences = 0;
    for (size_t offset = 0; offset < left.size() && differences < 8; ++offset) {
        if (left[offset] != right[offset] && ++differences != 0)
            result << "byte " << offset << " is " << unsigned{left[offset]} << ", not " << unsigned{right[offset]}
                   << "\n";
    }
    return differences == 0 ? testing::AssertionSuccess() : result;
}

#endif
