#include "painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "av.h"

namespace simulator {
namespace {

uint8_t Blend(uint8_t from, uint8_t to, double part) {
    return static_cast<uint8_t>(from + (to - from) * part + 0.5);
}

// How much of a pixel a shape covers, from the distance of the pixel's centre to the shape's edge, negative inside.
double CoveredAt(double distance) {
    return std::clamp(0.5 - distance, 0.0, 1.0);
}

}  // namespace

Colour Rgb(int red, int green, int blue) {
    return {static_cast<uint8_t>(16.5 + 0.257 * red + 0.504 * green + 0.098 * blue),
            static_cast<uint8_t>(128.5 - 0.148 * red - 0.291 * green + 0.439 * blue),
            static_cast<uint8_t>(128.5 + 0.439 * red - 0.368 * green - 0.071 * blue)};
}

Colour Mix(Colour first, Colour second, double part) {
    return {Blend(first.y, second.y, part), Blend(first.u, second.u, part), Blend(first.v, second.v, part)};
}

Painter::Painter(AVFrame& picture, double left, double top, double scale)
    : m_picture(picture), m_left(left), m_top(top), m_scale(scale) {}

// The bounds are the plane's; coverage takes a point of the picture, in pixels.
template <class Coverage>
void Painter::Cover(double left, double top, double right, double bottom, Colour colour, const Coverage& coverage) {
    const int x1 = std::max(0, static_cast<int>(std::floor((left - m_left) * m_scale)) - 1);
    const int y1 = std::max(0, static_cast<int>(std::floor((top - m_top) * m_scale)) - 1);
    const int x2 = std::min(m_picture.width, static_cast<int>(std::ceil((right - m_left) * m_scale)) + 1);
    const int y2 = std::min(m_picture.height, static_cast<int>(std::ceil((bottom - m_top) * m_scale)) + 1);
    for (int y = y1; y < y2; ++y) {
        uint8_t* row = m_picture.data[0] + y * m_picture.linesize[0];
        for (int x = x1; x < x2; ++x) {
            row[x] = Blend(row[x], colour.y, coverage(x + 0.5, y + 0.5));
        }
    }
    for (int y = y1 / 2; y < (y2 + 1) / 2; ++y) {
        uint8_t* row_u = m_picture.data[1] + y * m_picture.linesize[1];
        uint8_t* row_v = m_picture.data[2] + y * m_picture.linesize[2];
        for (int x = x1 / 2; x < (x2 + 1) / 2; ++x) {
            const double part = coverage(2 * x + 1.0, 2 * y + 1.0);
            row_u[x] = Blend(row_u[x], colour.u, part);
            row_v[x] = Blend(row_v[x], colour.v, part);
        }
    }
}

void Painter::Gradient(double left, double top, double width, double height, Colour upper, Colour lower) {
    const double origin = (top - m_top) * m_scale;
    const double extent = height * m_scale;
    const int x1 = std::max(0, static_cast<int>((left - m_left) * m_scale));
    const int x2 = std::min(m_picture.width, static_cast<int>((left + width - m_left) * m_scale));
    const int y1 = std::max(0, static_cast<int>(origin));
    const int y2 = std::min(m_picture.height, static_cast<int>(origin + extent));
    for (int y = y1; y < y2; ++y) {
        const Colour colour = Mix(upper, lower, std::clamp((y - origin) / extent, 0.0, 1.0));
        memset(m_picture.data[0] + y * m_picture.linesize[0] + x1, colour.y, std::max(0, x2 - x1));
        memset(m_picture.data[1] + y / 2 * m_picture.linesize[1] + x1 / 2, colour.u, std::max(0, (x2 - x1) / 2));
        memset(m_picture.data[2] + y / 2 * m_picture.linesize[2] + x1 / 2, colour.v, std::max(0, (x2 - x1) / 2));
    }
}

void Painter::Block(double left, double top, double width, double height, double radius, Colour colour) {
    const double half_x = width / 2 * m_scale;
    const double half_y = height / 2 * m_scale;
    const double round = radius * m_scale;
    const double middle_x = (left - m_left) * m_scale + half_x;
    const double middle_y = (top - m_top) * m_scale + half_y;
    Cover(left, top, left + width, top + height, colour, [&](double x, double y) {
        const double out_x = std::fabs(x - middle_x) - half_x + round;
        const double out_y = std::fabs(y - middle_y) - half_y + round;
        const double corner = std::hypot(std::max(out_x, 0.0), std::max(out_y, 0.0));
        return CoveredAt(corner + std::min(std::max(out_x, out_y), 0.0) - round);
    });
}

void Painter::Disc(double x, double y, double radius, Colour colour) {
    Block(x - radius, y - radius, 2 * radius, 2 * radius, radius, colour);
}

void Painter::Line(double x1, double y1, double x2, double y2, double thickness, Colour colour) {
    const double from_x = (x1 - m_left) * m_scale;
    const double from_y = (y1 - m_top) * m_scale;
    const double along_x = (x2 - x1) * m_scale;
    const double along_y = (y2 - y1) * m_scale;
    const double length_2 = std::max(along_x * along_x + along_y * along_y, 1e-9);
    Cover(std::min(x1, x2) - thickness, std::min(y1, y2) - thickness, std::max(x1, x2) + thickness,
          std::max(y1, y2) + thickness, colour, [&](double x, double y) {
              const double part = ((x - from_x) * along_x + (y - from_y) * along_y) / length_2;
              const double near = std::clamp(part, 0.0, 1.0);
              const double away = std::hypot(x - from_x - near * along_x, y - from_y - near * along_y);
              return CoveredAt(away - thickness * m_scale / 2);
          });
}

void Painter::Ridge(const std::vector<double>& heights, double lower, Colour colour) {
    const double right = m_left + m_picture.width / m_scale;
    const double per_pixel = static_cast<double>(heights.size() - 1) / m_picture.width;
    Cover(m_left, *std::min_element(heights.begin(), heights.end()), right, lower, colour, [&](double x, double y) {
        const double at = std::clamp(x * per_pixel, 0.0, heights.size() - 1.001);
        const auto left = static_cast<size_t>(at);
        const double height = heights[left] + (heights[left + 1] - heights[left]) * (at - left);
        return std::min(CoveredAt((height - m_top) * m_scale - y), CoveredAt(y - (lower - m_top) * m_scale));
    });
}

}  // namespace simulator
