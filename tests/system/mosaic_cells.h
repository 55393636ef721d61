// What a picture of the zero channel shows, cell by cell. How it is read does not belong here.
#ifndef TESTS_SYSTEM_MOSAIC_CELLS_H
#define TESTS_SYSTEM_MOSAIC_CELLS_H

#include <cmath>
#include <vector>

#include "live_reader.h"

namespace mosaic {

/** The channel of each cell, by its stamp; 0 where there is none. */
inline std::vector<unsigned> CellsOf(const AVFrame& picture, size_t count) {
    const int side = static_cast<int>(std::lround(std::sqrt(static_cast<double>(count))));
    const int width = picture.width / side & ~1;
    const int height = picture.height / side & ~1;
    std::vector<unsigned> cells;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            simulator::Stamp stamp;
            const uint8_t* cell = picture.data[0] + row * height * picture.linesize[0] + column * width;
            const bool read = simulator::ReadStamp(cell, picture.linesize[0], width, height, &stamp);
            cells.push_back(read ? stamp.channel : 0);
        }
    }
    return cells;
}

}  // namespace mosaic

#endif
