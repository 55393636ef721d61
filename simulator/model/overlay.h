// What is written over every picture: the camera's name, the running clock, the mark that this is no real recorder, the
// notice of a lost signal. The machine-readable stamp is picture_stamp.h's.
#ifndef SIMULATOR_MODEL_OVERLAY_H
#define SIMULATOR_MODEL_OVERLAY_H

#include <string>

#include "av.h"

namespace simulator {

/** The font of all texts; when it is not there, pictures stay without text and one line on standard error says so. */
constexpr const char* FONT_PATH = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

/** Writes on pictures of one size; for one thread at a time. */
class Overlay {
public:
    /** width, height: of the pictures, in pixels. */
    Overlay(int width, int height, const std::string& font = FONT_PATH);

    /** False: nothing is written, for the font or the filter is missing. */
    bool Works() const { return m_graph != nullptr; }

    /**
     * Writes on a yuv420p picture in place. moment: microseconds since 1970, shown as local time; notice: large in the
     * middle, usually empty. False when the filter failed; the picture has no memory then.
     */
    bool Write(const std::string& name, int64_t moment, const std::string& notice, AVFrame* picture);

private:
    bool Build(int width, int height, const std::string& font);

    Av<AVFilterGraph> m_graph;
    AVFilterContext* m_in = nullptr;   ///< the graph's
    AVFilterContext* m_out = nullptr;  ///< the graph's
};

}  // namespace simulator

#endif
