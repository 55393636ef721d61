// The way of a camera head: positions at points of time and straight ways between them. Pure computing: commands and
// clocks do not belong here.
#ifndef SIMULATOR_MODEL_PTZ_PATH_H
#define SIMULATOR_MODEL_PTZ_PATH_H

#include <cstddef>
#include <vector>

namespace simulator {

/** Where a head stands. */
struct HeadPosition {
    double pan = 0.5;    ///< 0 all the way left, 1 all the way right
    double tilt = 0.5;   ///< 0 all the way up, 1 all the way down
    double zoom = 1;     ///< 1 widest, up to MOST_ZOOM
    double focus = 0.5;  ///< 0 nearest, 1 farthest
    double iris = 0.5;   ///< 0 closed, 1 open
};
constexpr double MOST_ZOOM = 16;

/** A position with every part within its limits. */
HeadPosition Limited(HeadPosition position);

/** Seconds that a head takes from one position to another, at full speed. */
double TravelTime(const HeadPosition& from, const HeadPosition& to);

class HeadPath {
public:
    /** Stands there. */
    explicit HeadPath(const HeadPosition& position);
    /** From a point of time on. */
    HeadPath(double now, const HeadPosition& from);

    /** Goes on to a position, at once or within those seconds. */
    void Go(const HeadPosition& to, double seconds);
    /** Goes on in a direction, units a second, until each part has come to its limit. */
    void Drift(double pan, double tilt);
    /** What is added from here on comes over and over; the last position must be the one here. */
    void LoopFromHere() { m_loop = m_points.size() - 1; }

    HeadPosition At(double time) const;
    /** Where the way leads in the end; of one that never ends, where it is at that time. */
    HeadPosition End(double time) const;
    bool Ends() const { return m_loop == NO_LOOP; }
    /** Whether the head has come to its end by that time. */
    bool Done(double time) const { return Ends() && time >= m_points.back().time; }

    struct Point {
        double time;
        HeadPosition position;
    };
    /** The way between two times, both ends included. */
    std::vector<Point> Part(double from, double to) const;

private:
    static constexpr size_t NO_LOOP = static_cast<size_t>(-1);

    double Folded(double time) const;

    std::vector<Point> m_points;
    size_t m_loop = NO_LOOP;
};

}  // namespace simulator

#endif
