// A small painter for yuv420p pictures: the handful of shapes that scenes are made of, with soft edges. It knows
// nothing of scenes, cameras or text.
#ifndef SIMULATOR_MODEL_PAINTER_H
#define SIMULATOR_MODEL_PAINTER_H

#include <cstdint>
#include <vector>

struct AVFrame;

namespace simulator {

/** A colour as the picture stores it: ITU-R BT.601, limited range. */
struct Colour {
    uint8_t y, u, v;
};

/** From red, green and blue, 0 to 255 each. */
Colour Rgb(int red, int green, int blue);

/** Between two colours: 0 gives the first, 1 the second. */
Colour Mix(Colour first, Colour second, double part);

/** Paints on a picture that shows a part of a plane: plane coordinates in, parts outside the picture are left out. */
class Painter {
public:
    /** left, top: the plane's point in the picture's upper left corner; scale: pixels a unit of the plane. */
    Painter(AVFrame& picture, double left, double top, double scale);

    void Gradient(double left, double top, double width, double height, Colour upper, Colour lower);
    /** A rectangle with rounded corners. */
    void Block(double left, double top, double width, double height, double radius, Colour colour);
    void Disc(double x, double y, double radius, Colour colour);
    void Line(double x1, double y1, double x2, double y2, double thickness, Colour colour);
    /** Everything between a ridge and a lower bound; heights: the ridge's y, two or more, evenly spaced over the
     * picture's width. */
    void Ridge(const std::vector<double>& heights, double lower, Colour colour);

private:
    template <class Coverage>
    void Cover(double left, double top, double right, double bottom, Colour colour, const Coverage& coverage);

    AVFrame& m_picture;
    const double m_left;
    const double m_top;
    const double m_scale;
};

}  // namespace simulator

#endif
