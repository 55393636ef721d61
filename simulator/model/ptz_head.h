// One camera head: where it is, what it was told to do, what it remembers. For one thread at a time; who may command it
// and where its memory is kept stands in ptz.cpp.
#ifndef SIMULATOR_MODEL_PTZ_HEAD_H
#define SIMULATOR_MODEL_PTZ_HEAD_H

#include <map>
#include <optional>
#include <vector>

#include "ptz_path.h"

namespace simulator {

/** A stop of a tour. */
struct TourPoint {
    unsigned preset = 0;
    unsigned dwell = 0;  ///< seconds
};

/** What a head keeps when the recorder is off. */
struct HeadMemory {
    HeadPosition position;
    std::map<unsigned, HeadPosition> presets;
    std::map<unsigned, std::map<unsigned, TourPoint>> tours;      ///< by tour and point, both counted from 1
    std::map<unsigned, std::vector<HeadPath::Point>> tracks;      ///< times from the track's begin
    bool wiper = false;
    bool light = false;
};

//  standing --Turn, Step, Goto, RunTour, RunTrack--> moving --at its end, Stop, a new command--> standing
class CameraHead {
public:
    explicit CameraHead(const HeadMemory& memory) : m_memory(memory), m_path(memory.position) {}

    /** Times are in seconds of one clock and never go back. */
    HeadPosition PositionAt(double now) const { return m_path.At(now); }
    bool Moves(double now) const { return !m_path.Done(now); }
    /** What to keep: a head that is on its way comes to its end. */
    HeadMemory MemoryAt(double now) const;

    void Stop(double now);
    /** Speeds in units a second. */
    void Turn(double now, double pan, double tilt);
    /** To a position as fast as the head can, and there it stands. */
    void Goto(double now, const HeadPosition& to);
    /** To and fro between both sides. */
    void Scan(double now, double speed);

    void SetPreset(double now, unsigned number) { m_memory.presets[number] = PositionAt(now); }
    bool ClearPreset(unsigned number) { return m_memory.presets.erase(number) != 0; }
    bool GotoPreset(double now, unsigned number);

    void AddTourPoint(unsigned tour, unsigned number, const TourPoint& point) { m_memory.tours[tour][number] = point; }
    bool DeleteTourPoint(unsigned tour, unsigned number);
    /** Round and round; points without preset are passed over. False when there is nothing to go to. */
    bool RunTour(double now, unsigned tour);
    bool StopTour(double now, unsigned tour);

    /** What the head does from now on is remembered until EndTrack, as that track. */
    void BeginTrack(double now, unsigned track);
    bool EndTrack(double now, unsigned track);
    bool RunTrack(double now, unsigned track);

    void SetWiper(bool on) { m_memory.wiper = on; }
    void SetLight(bool on) { m_memory.light = on; }

private:
    void Take(double now, HeadPath path);

    struct Recording {
        unsigned track;
        double begun;
        double noted;  ///< what came before is in points
        std::vector<HeadPath::Point> points;
    };
    void Note(double now);

    HeadMemory m_memory;
    HeadPath m_path;
    unsigned m_tour = 0;  ///< the tour that runs, or 0
    std::optional<Recording> m_recording;
};

}  // namespace simulator

#endif
