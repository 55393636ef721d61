#include "picture_stamp.h"

#include <cstring>

namespace simulator {
namespace {

constexpr uint8_t BLACK = 16;
constexpr uint8_t WHITE = 235;
constexpr uint8_t NEUTRAL = 128;
constexpr int CLEARLY_BLACK = 96;  // a block between the two was not painted by PaintStamp
constexpr int CLEARLY_WHITE = 156;

// CRC-8 with a start value other than 0: neither an all-black nor an all-white code is valid.
uint8_t Checksum(uint64_t bits) {
    unsigned crc = 0xFF;
    for (int shift = 48; shift >= 0; shift -= 8) {
        crc ^= (bits >> shift) & 0xFF;
        for (int i = 0; i < 8; ++i) {
            crc = (crc & 0x80) != 0 ? ((crc << 1) ^ 0x07) & 0xFF : crc << 1;
        }
    }
    return static_cast<uint8_t>(crc);
}

uint64_t Pack(const Stamp& stamp) {
    const uint64_t payload = (stamp.milliseconds & 0xFFFFFFFFFFFF) << 8 | (stamp.channel & 0xFF);
    return payload << 8 | Checksum(payload);
}

struct Box {
    int left, top, right, bottom;
};

// Block number bit, counted from the first one of the upper row.
Box BlockOf(int bit, int width, int height) {
    const int column = bit % STAMP_COLUMNS + (STAMP_GRID - STAMP_COLUMNS) / 2;
    const int row = bit / STAMP_COLUMNS + STAMP_GRID - STAMP_ROWS;
    return {column * width / STAMP_GRID, row * height / STAMP_GRID, (column + 1) * width / STAMP_GRID,
            (row + 1) * height / STAMP_GRID};
}

void Fill(uint8_t* plane, int stride, const Box& box, uint8_t value) {
    for (int y = box.top; y < box.bottom; ++y) {
        memset(plane + y * stride + box.left, value, box.right - box.left);
    }
}

// Mean of the inner half of a block: its edges are blurred by scaling and coding.
int MeanInside(const uint8_t* luma, int stride, const Box& box) {
    const int inset_x = (box.right - box.left) / 4;
    const int inset_y = (box.bottom - box.top) / 4;
    int sum = 0;
    int count = 0;
    for (int y = box.top + inset_y; y < box.bottom - inset_y; ++y) {
        for (int x = box.left + inset_x; x < box.right - inset_x; ++x, ++count) {
            sum += luma[y * stride + x];
        }
    }
    return count != 0 ? sum / count : NEUTRAL;
}

}  // namespace

void PaintStamp(const Stamp& stamp, uint8_t* const planes[], const int strides[], int width, int height) {
    constexpr int LAST = STAMP_COLUMNS * STAMP_ROWS - 1;
    const uint64_t bits = Pack(stamp);
    for (int bit = 0; bit <= LAST; ++bit) {
        Fill(planes[0], strides[0], BlockOf(bit, width, height), (bits >> (LAST - bit)) & 1 ? WHITE : BLACK);
    }
    const Box first = BlockOf(0, width, height);
    const Box last = BlockOf(LAST, width, height);
    const Box grey = {first.left / 2, first.top / 2, (last.right + 1) / 2, (last.bottom + 1) / 2};
    Fill(planes[1], strides[1], grey, NEUTRAL);
    Fill(planes[2], strides[2], grey, NEUTRAL);
}

bool ReadStamp(const uint8_t* luma, int stride, int width, int height, Stamp* out) {
    uint64_t bits = 0;
    for (int bit = 0; bit < STAMP_COLUMNS * STAMP_ROWS; ++bit) {
        const int mean = MeanInside(luma, stride, BlockOf(bit, width, height));
        if (mean > CLEARLY_BLACK && mean < CLEARLY_WHITE) {
            return false;
        }
        bits = bits << 1 | (mean >= CLEARLY_WHITE ? 1 : 0);
    }
    if (Checksum(bits >> 8) != (bits & 0xFF)) {
        return false;
    }
    *out = {bits >> 16, static_cast<unsigned>(bits >> 8 & 0xFF)};
    return true;
}

}  // namespace simulator
