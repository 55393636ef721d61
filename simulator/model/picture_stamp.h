// The machine-readable time stamp in every picture of the simulated recorder: a code of black and white blocks that
// says when the picture was made and on which channel. Painter and decoder, on bare planes: nothing else is needed to
// use them, and no codec or frame type belongs here.
#ifndef SIMULATOR_MODEL_PICTURE_STAMP_H
#define SIMULATOR_MODEL_PICTURE_STAMP_H

#include <cstdint>

namespace simulator {

/** What the code says. */
struct Stamp {
    uint64_t milliseconds = 0;  ///< since 1970, UTC; the low 48 bits are kept
    unsigned channel = 0;       ///< counted from 1; the low 8 bits are kept
};

/**
 * Where the code stands: two rows of 32 blocks along the bottom edge, centred; each block a fortieth of the picture's
 * width wide and a fortieth of its height high, so that the code is found at any scale. Row by row and high bit first:
 * 48 bits of time, 8 of channel, 8 of checksum; white is 1.
 */
constexpr int STAMP_COLUMNS = 32;
constexpr int STAMP_ROWS = 2;
constexpr int STAMP_GRID = 40;

/** Paints the code over a picture of three planes, chroma halved both ways; at least 40 by 40 pixels. */
void PaintStamp(const Stamp& stamp, uint8_t* const planes[], const int strides[], int width, int height);

/** Reads the code from a luma plane; false, with *out as it was, when there is none that can be read. */
bool ReadStamp(const uint8_t* luma, int stride, int width, int height, Stamp* out);

}  // namespace simulator

#endif
