// The picture of several channels in one: a square of cells, each with what its camera shows now. Encoding and pacing do
// not belong here.
#ifndef SIMULATOR_MODEL_MOSAIC_H
#define SIMULATOR_MODEL_MOSAIC_H

#include <memory>
#include <vector>

#include "overlay.h"
#include "picture_source.h"

namespace simulator {

/** One camera's picture in a size of its own, with name, clock, mark and stamp as in the camera's streams. */
class MosaicCell {
public:
    /** channel counted from 1; sizes in pixels, even. */
    MosaicCell(unsigned channel, int width, int height);

    /** The picture of that moment, in microseconds since 1970; null when there was no memory for it. */
    const AVFrame* Draw(int64_t moment);

private:
    const unsigned m_channel;
    std::unique_ptr<PictureSource> m_source;
    Overlay m_overlay;
    Av<AVFrame> m_picture;
};

/** For one thread at a time. */
class Mosaic {
public:
    Mosaic(int width, int height) : m_width(width), m_height(height) {}

    /** Lays the square out anew, row by row: channels counted from 1; a number without a camera leaves its cell black.
     *  Their number is a square, at most 256. */
    void Arrange(const std::vector<unsigned>& channels);

    /** Fills a yuv420p picture of the mosaic's size. */
    void Draw(int64_t moment, AVFrame* picture);

private:
    const int m_width;
    const int m_height;
    int m_side = 1;  ///< cells in a row
    std::vector<std::unique_ptr<MosaicCell>> m_cells;
};

}  // namespace simulator

#endif
