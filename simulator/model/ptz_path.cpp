#include "ptz_path.h"

#include <algorithm>
#include <cmath>

namespace simulator {
namespace {

constexpr double FULL_SPEED = 0.5;      // of the whole range, a second
constexpr double FULL_ZOOM_SPEED = 8;   // a second
constexpr double SHORTEST_LOOP = 0.04;  // seconds; a loop without length has no place in it

double Between(double from, double to, double part) {
    return from + (to - from) * part;
}

HeadPosition Between(const HeadPosition& from, const HeadPosition& to, double part) {
    return {Between(from.pan, to.pan, part), Between(from.tilt, to.tilt, part), Between(from.zoom, to.zoom, part),
            Between(from.focus, to.focus, part), Between(from.iris, to.iris, part)};
}

/** Seconds until a part that moves comes to its limit; 0 for one that stands. */
double UntilLimit(double at, double speed) {
    return speed > 0 ? (1 - at) / speed : speed < 0 ? at / -speed : 0;
}

}  // namespace

HeadPosition Limited(HeadPosition position) {
    position.pan = std::clamp(position.pan, 0.0, 1.0);
    position.tilt = std::clamp(position.tilt, 0.0, 1.0);
    position.zoom = std::clamp(position.zoom, 1.0, MOST_ZOOM);
    position.focus = std::clamp(position.focus, 0.0, 1.0);
    position.iris = std::clamp(position.iris, 0.0, 1.0);
    return position;
}

double TravelTime(const HeadPosition& from, const HeadPosition& to) {
    return std::max({std::fabs(to.pan - from.pan) / FULL_SPEED, std::fabs(to.tilt - from.tilt) / FULL_SPEED,
                     std::fabs(to.zoom - from.zoom) / FULL_ZOOM_SPEED});
}

HeadPath::HeadPath(const HeadPosition& position) : HeadPath(0, position) {}

HeadPath::HeadPath(double now, const HeadPosition& from) : m_points{{now, Limited(from)}} {}

void HeadPath::Go(const HeadPosition& to, double seconds) {
    m_points.push_back({m_points.back().time + std::max(seconds, 0.0), Limited(to)});
}

void HeadPath::Drift(double pan, double tilt) {
    double sooner = UntilLimit(m_points.back().position.pan, pan);
    double later = UntilLimit(m_points.back().position.tilt, tilt);
    if (later < sooner) {
        std::swap(sooner, later);
    }
    for (const double seconds : {sooner, later - sooner}) {
        HeadPosition to = m_points.back().position;
        to.pan += pan * seconds;
        to.tilt += tilt * seconds;
        Go(to, seconds);
    }
}

// A time beyond the last point, brought back into the loop.
double HeadPath::Folded(double time) const {
    if (Ends()) {
        return time;
    }
    const double begin = m_points[m_loop].time;
    const double length = std::max(m_points.back().time - begin, SHORTEST_LOOP);
    return time < begin ? time : begin + std::fmod(time - begin, length);
}

HeadPosition HeadPath::At(double time) const {
    const double at = Folded(time);
    const auto next =
        std::find_if(m_points.begin(), m_points.end(), [at](const Point& point) { return point.time > at; });
    if (next == m_points.end() || next == m_points.begin()) {
        return next == m_points.begin() ? m_points.front().position : m_points.back().position;
    }
    const Point& last = *(next - 1);
    return Between(last.position, next->position, (at - last.time) / (next->time - last.time));
}

HeadPosition HeadPath::End(double time) const {
    return Ends() ? m_points.back().position : At(time);
}

std::vector<HeadPath::Point> HeadPath::Part(double from, double to) const {
    std::vector<Point> part = {{from, At(from)}};
    for (const Point& point : m_points) {
        if (point.time > from && point.time < to) {
            part.push_back(point);
        }
    }
    part.push_back({to, At(to)});
    return part;
}

}  // namespace simulator
