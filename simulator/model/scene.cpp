#include "scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace simulator {
namespace {

constexpr double HORIZON = 52;  // units from the world's upper edge
constexpr double ROAD_TOP = 58;
constexpr double ROAD_BOTTOM = 67;
constexpr double BOTTOM = 100;
constexpr double MARGIN = 12;  // how far traffic drives on beyond the world's edges
const Colour GLASS_LIT = Rgb(255, 232, 160);
const Colour GLASS_DARK = Rgb(52, 62, 80);
const Colour RUBBER = Rgb(28, 28, 32);

double Wrapped(double value, double length) {
    return value - std::floor(value / length) * length;
}

void DrawBuilding(Painter& painter, const SceneStyle::Building& building) {
    const double top = HORIZON + 3 - building.height;
    painter.Block(building.left, top, building.width, building.height + 3, 0.2, building.wall);
    painter.Block(building.left - 0.3, top - 0.4, building.width + 0.6, 0.9, 0.2, Mix(building.wall, RUBBER, 0.5));
    const int columns = static_cast<int>((building.width - 1) / 2.2);
    const double margin = (building.width - columns * 2.2 + 1) / 2;
    unsigned pattern = building.windows * 2654435761U;
    for (double y = top + 1.6; y < HORIZON + 2; y += 2.8) {
        for (int column = 0; column < columns; ++column) {
            pattern = pattern * 1664525U + 1013904223U;
            painter.Block(building.left + margin + column * 2.2, y, 1.2, 1.6, 0.1,
                          pattern >> 30 == 0 ? GLASS_LIT : GLASS_DARK);
        }
    }
}

void DrawTree(Painter& painter, const SceneStyle::Tree& tree) {
    const double foot = ROAD_TOP - 0.6;
    painter.Block(tree.x - 0.3, foot - tree.size, 0.6, tree.size, 0.1, Rgb(92, 70, 52));
    painter.Disc(tree.x - tree.size * 0.3, foot - tree.size, tree.size * 0.38, Mix(tree.leaves, RUBBER, 0.2));
    painter.Disc(tree.x + tree.size * 0.3, foot - tree.size * 0.95, tree.size * 0.38, tree.leaves);
    painter.Disc(tree.x, foot - tree.size * 1.3, tree.size * 0.45, Mix(tree.leaves, GLASS_LIT, 0.12));
}

// x: the middle of the vehicle; y: where its wheels stand.
void DrawVehicle(Painter& painter, double x, double y, bool to_right, Colour body) {
    const double front = to_right ? 1 : -1;
    painter.Block(x - 4.2, y - 0.4, 8.4, 0.8, 0.4, Rgb(48, 50, 54));
    painter.Block(x - 2.3 - front * 0.5, y - 3.7, 4.6, 2.6, 0.9, Mix(body, RUBBER, 0.25));
    painter.Block(x - 1.9 - front * 0.5, y - 3.3, 3.8, 1.5, 0.5, Rgb(178, 206, 220));
    painter.Block(x - 0.15 - front * 0.5, y - 3.4, 0.3, 1.8, 0, Mix(body, RUBBER, 0.25));
    painter.Block(x - 4, y - 2.3, 8, 1.8, 0.7, body);
    painter.Block(x + front * 3.6 - 0.3, y - 1.9, 0.6, 0.6, 0.3, GLASS_LIT);
    for (const double wheel : {x - 2.4, x + 2.4}) {
        painter.Disc(wheel, y - 0.6, 0.95, RUBBER);
        painter.Disc(wheel, y - 0.6, 0.4, Rgb(170, 172, 176));
    }
}

void CopyPlane(const AVFrame& from, AVFrame& to, int plane, int left, int top) {
    const int half = plane == 0 ? 0 : 1;
    const uint8_t* source = from.data[plane] + (top >> half) * from.linesize[plane] + (left >> half);
    for (int y = 0; y < to.height >> half; ++y) {
        memcpy(to.data[plane] + y * to.linesize[plane], source + y * from.linesize[plane], to.width >> half);
    }
}

}  // namespace

// The part of the world that is seen, in pixels of the world, on even ones: chroma has half the points.
struct Scene::Window {
    int left, top, width, height;
};

Scene::Scene(const SceneStyle& style, int width, int height)
    : m_style(style),
      m_unit(height * 2 / BOTTOM),
      m_width(width * 2 / m_unit),
      m_world(NewPicture(width * 2, height * 2)) {
    if (m_world != nullptr) {
        DrawWorld();
    }
}

bool Scene::Draw(int64_t moment, const View& view, AVFrame& picture) {
    if (m_world == nullptr) {
        return false;
    }
    const Window window = WindowOf(view);
    if (!CopyWorld(window, picture)) {
        return false;
    }
    Painter painter(picture, window.left / m_unit, window.top / m_unit, m_unit * picture.width / window.width);
    DrawTraffic(moment, painter);
    DrawBalloon(moment, painter);
    return true;
}

Scene::Window Scene::WindowOf(const View& view) const {
    const double zoom = std::clamp(view.zoom, 1.0, 16.0);
    const int width = static_cast<int>(m_world->width / (2 * zoom)) & ~1;
    const int height = static_cast<int>(m_world->height / (2 * zoom)) & ~1;
    const int left = static_cast<int>((m_world->width - width) * std::clamp(view.pan, 0.0, 1.0)) & ~1;
    const int top = static_cast<int>((m_world->height - height) * std::clamp(view.tilt, 0.0, 1.0)) & ~1;
    return {left, top, width, height};
}

bool Scene::CopyWorld(const Window& window, AVFrame& picture) {
    if (window.width == picture.width && window.height == picture.height) {
        for (int plane = 0; plane < 3; ++plane) {
            CopyPlane(*m_world, picture, plane, window.left, window.top);
        }
        return true;
    }
    Av<AVFrame> part(av_frame_clone(m_world.get()));
    if (part == nullptr) {
        return false;
    }
    for (int plane = 0; plane < 3; ++plane) {
        const int half = plane == 0 ? 0 : 1;
        part->data[plane] += (window.top >> half) * part->linesize[plane] + (window.left >> half);
    }
    part->width = window.width;
    part->height = window.height;
    return Scale(*part, picture, &m_zoom);
}

void Scene::DrawWorld() {
    Painter painter(*m_world, 0, 0, m_unit);
    DrawSky(painter);
    DrawGround(painter);
    DrawTown(painter);
}

void Scene::DrawSky(Painter& painter) const {
    painter.Gradient(0, 0, m_width, HORIZON, m_style.sky_upper, m_style.sky_lower);
    const double sun_x = m_style.sun_x * m_width;
    painter.Disc(sun_x, m_style.sun_y, 5.5, Mix(m_style.sky_lower, m_style.sun, 0.35));
    painter.Disc(sun_x, m_style.sun_y, 3.6, m_style.sun);
    std::vector<double> ridge(400);
    for (const double depth : {1.0, 0.0}) {
        for (size_t i = 0; i < ridge.size(); ++i) {
            const double x = i * m_width / ridge.size() + m_style.hill_phase + depth * 31;
            ridge[i] = HORIZON - 4 - 5 * depth - 2.2 * std::sin(x * 0.11) - 1.7 * std::sin(x * 0.047 + depth);
        }
        painter.Ridge(ridge, HORIZON + 1, Mix(m_style.hills, m_style.sky_lower, 0.15 + 0.4 * depth));
    }
}

// A ground of slabs in perspective: lines that meet in a point at the horizon, and lines across.
void Scene::DrawGround(Painter& painter) const {
    painter.Gradient(0, HORIZON, m_width, BOTTOM - HORIZON, m_style.ground_far, m_style.ground_near);
    const Colour joint = Mix(m_style.ground_near, RUBBER, 0.28);
    for (int i = -40; i <= 40; ++i) {
        const double x = m_width / 2 + i * 6;
        painter.Line(x, ROAD_BOTTOM, m_width / 2 + (x - m_width / 2) * 3.2, BOTTOM, 0.16, joint);
    }
    for (double y = ROAD_BOTTOM + 1.5, step = 2.2; y < BOTTOM; y += step, step *= 1.25) {
        painter.Block(0, y, m_width, 0.18, 0, joint);
    }
    painter.Block(0, ROAD_TOP - 0.8, m_width, ROAD_BOTTOM - ROAD_TOP + 1.6, 0, Rgb(176, 174, 168));
    painter.Gradient(0, ROAD_TOP, m_width, ROAD_BOTTOM - ROAD_TOP, Rgb(78, 80, 84), Rgb(94, 96, 100));
    for (double x = 0; x < m_width; x += 6) {
        painter.Block(x, (ROAD_TOP + ROAD_BOTTOM) / 2 - 0.2, 3, 0.4, 0, Rgb(232, 228, 210));
    }
}

void Scene::DrawTown(Painter& painter) const {
    for (const SceneStyle::Building& building : m_style.buildings) {
        DrawBuilding(painter, building);
    }
    for (const SceneStyle::Tree& tree : m_style.trees) {
        DrawTree(painter, tree);
    }
}

void Scene::DrawTraffic(int64_t moment, Painter& painter) const {
    const double length = m_width + 2 * MARGIN;
    for (const bool to_right : {false, true}) {  // the nearer lane last
        for (const SceneStyle::Vehicle& vehicle : m_style.vehicles) {
            if ((vehicle.speed > 0) == to_right) {
                const double round = length / std::fabs(vehicle.speed) * 1e6;  // microseconds
                const double part = std::fmod(static_cast<double>(moment), round) / round;
                const double way = vehicle.start + (to_right ? part : -part) * length;
                DrawVehicle(painter, Wrapped(way, length) - MARGIN, vehicle.lane, to_right, vehicle.body);
            }
        }
    }
}

void Scene::DrawBalloon(int64_t moment, Painter& painter) const {
    constexpr double TURN = 2 * 3.14159265358979;
    const double around = static_cast<double>(moment % 24000000) / 24e6 * TURN;
    const double x = m_width / 2 + 30 * std::sin(around);
    const double y = 36 + 2.5 * std::sin(3 * around);
    painter.Line(x - 1.5, y + 2.5, x - 0.6, y + 5.4, 0.14, RUBBER);
    painter.Line(x + 1.5, y + 2.5, x + 0.6, y + 5.4, 0.14, RUBBER);
    painter.Block(x - 0.8, y + 5.2, 1.6, 1.2, 0.2, Rgb(120, 84, 52));
    painter.Disc(x, y, 3.4, m_style.balloon);
    painter.Block(x - 1.1, y - 3.3, 2.2, 6.6, 1.1, Mix(m_style.balloon, Rgb(255, 255, 255), 0.65));
}

}  // namespace simulator
