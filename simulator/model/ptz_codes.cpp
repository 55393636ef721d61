#include "ptz_codes.h"

#include <algorithm>
#include <cmath>

namespace simulator {
namespace {

using Values = const unsigned (&)[4];

constexpr unsigned USUAL_SPEED = 4;
constexpr unsigned MOST_SPEED = 7;
constexpr double RANGE_PER_SECOND = 0.5;  // at the highest speed
constexpr double FOCUS_STEP = 0.02;
constexpr double ZOOM_STEP = 1.06;
constexpr double POINT_SCALE = 10000;
constexpr unsigned USUAL_DWELL = 5;  // seconds

/** 1 slowest to 7 fastest; 0 is the usual speed, and what is above the highest counts as the highest. */
unsigned Speed(unsigned value) {
    return value == 0 ? USUAL_SPEED : std::min(value, MOST_SPEED);
}

bool Turn(CameraHead& head, double now, int pan, int tilt, unsigned speed) {
    const double units = RANGE_PER_SECOND * Speed(speed) / MOST_SPEED;
    head.Turn(now, pan * units, tilt * units);
    return true;
}

bool Zoom(CameraHead& head, double now, double factor) {
    HeadPosition to = head.PositionAt(now);
    to.zoom *= factor;
    head.Goto(now, to);
    return true;
}

bool Move(CameraHead& head, double now, double HeadPosition::*part, double by) {
    HeadPosition to = head.PositionAt(now);
    to.*part += by;
    head.Goto(now, to);
    return true;
}

bool Up(CameraHead& head, double now, Values v) { return Turn(head, now, 0, -1, v[0]); }
bool Down(CameraHead& head, double now, Values v) { return Turn(head, now, 0, 1, v[0]); }
bool Left(CameraHead& head, double now, Values v) { return Turn(head, now, -1, 0, v[0]); }
bool Right(CameraHead& head, double now, Values v) { return Turn(head, now, 1, 0, v[0]); }
bool UpLeft(CameraHead& head, double now, Values v) { return Turn(head, now, -1, -1, v[0]); }
bool UpRight(CameraHead& head, double now, Values v) { return Turn(head, now, 1, -1, v[0]); }
bool DownLeft(CameraHead& head, double now, Values v) { return Turn(head, now, -1, 1, v[0]); }
bool DownRight(CameraHead& head, double now, Values v) { return Turn(head, now, 1, 1, v[0]); }
bool Halt(CameraHead& head, double now, Values) { return head.Stop(now), true; }

bool ZoomIn(CameraHead& head, double now, Values v) { return Zoom(head, now, std::pow(ZOOM_STEP, Speed(v[0]))); }
bool ZoomOut(CameraHead& head, double now, Values v) { return Zoom(head, now, std::pow(ZOOM_STEP, -1.0 * Speed(v[0]))); }
bool FocusNear(CameraHead& h, double now, Values v) { return Move(h, now, &HeadPosition::focus, -FOCUS_STEP * Speed(v[0])); }
bool FocusFar(CameraHead& h, double now, Values v) { return Move(h, now, &HeadPosition::focus, FOCUS_STEP * Speed(v[0])); }
bool IrisOpen(CameraHead& h, double now, Values v) { return Move(h, now, &HeadPosition::iris, FOCUS_STEP * Speed(v[0])); }
bool IrisClose(CameraHead& h, double now, Values v) { return Move(h, now, &HeadPosition::iris, -FOCUS_STEP * Speed(v[0])); }

bool Wiper(CameraHead& head, double, Values v) { return head.SetWiper(v[0] != 0), true; }
bool Light(CameraHead& head, double, Values v) { return head.SetLight(v[0] != 0), true; }
bool Home(CameraHead& head, double now, Values) { return head.Goto(now, {}), true; }
bool Scan(CameraHead& head, double now, Values v) {
    return head.Scan(now, RANGE_PER_SECOND * Speed(v[0]) / MOST_SPEED), true;
}

bool SetPreset(CameraHead& head, double now, Values v) { return v[0] != 0 && (head.SetPreset(now, v[0]), true); }
bool ClearPreset(CameraHead& head, double, Values v) { return head.ClearPreset(v[0]); }
bool GotoPreset(CameraHead& head, double now, Values v) { return head.GotoPreset(now, v[0]); }

bool RunTour(CameraHead& head, double now, Values v) { return head.RunTour(now, v[0]); }
bool StopTour(CameraHead& head, double now, Values v) { return head.StopTour(now, v[0]); }
bool AddTourPoint(CameraHead& head, double, Values v) {
    const TourPoint point = {v[2] != 0 ? v[2] : v[1], v[3] != 0 ? v[3] : USUAL_DWELL};
    return v[0] != 0 && v[1] != 0 && (head.AddTourPoint(v[0], v[1], point), true);
}
bool DeleteTourPoint(CameraHead& head, double, Values v) { return head.DeleteTourPoint(v[0], v[2]); }

bool BeginTrack(CameraHead& head, double now, Values v) { return head.BeginTrack(now, v[0]), true; }
bool EndTrack(CameraHead& head, double now, Values v) { return head.EndTrack(now, v[0]); }
bool RunTrack(CameraHead& head, double now, Values v) { return head.RunTrack(now, v[0]); }

/** Turns until the named point of the picture is in its middle, and zooms. */
bool Centre(CameraHead& head, double now, Values v) {
    HeadPosition to = head.PositionAt(now);
    to.pan += (std::min(v[0] / POINT_SCALE, 1.0) - 0.5) / to.zoom;
    to.tilt += (std::min(v[1] / POINT_SCALE, 1.0) - 0.5) / to.zoom;
    to.zoom = v[2] != 0 ? to.zoom * v[2] / 10.0 : to.zoom;
    head.Goto(now, to);
    return true;
}

struct Code {
    unsigned code;
    unsigned kind;  ///< of the parameters
    bool (*obey)(CameraHead& head, double now, Values values);
};

const Code CODES[] = {
    {0x001, 0, Home},
    {0x100, 0, Up},
    {0x101, 0, Down},
    {0x102, 0, Left},
    {0x103, 0, Right},
    {0x104, 0, UpLeft},
    {0x105, 0, UpRight},
    {0x106, 0, DownLeft},
    {0x107, 0, DownRight},
    {0x200, 0, ZoomIn},
    {0x201, 0, ZoomOut},
    {0x300, 0, FocusNear},
    {0x301, 0, FocusFar},
    {0x400, 0, IrisOpen},
    {0x401, 0, IrisClose},
    {0x500, 0, Wiper},
    {0x600, 0, Light},
    {0x700, 1, SetPreset},
    {0x701, 1, ClearPreset},
    {0x702, 1, GotoPreset},
    {0x800, 3, RunTour},
    {0x801, 3, StopTour},
    {0x802, 3, AddTourPoint},
    {0x803, 3, DeleteTourPoint},
    {0x805, 2, RunTrack},
    {0x807, 2, BeginTrack},
    {0x808, 2, EndTrack},
    {0x809, 0, Scan},
    {0x80A, 4, Centre},
    {0x13149527, 0, Halt},
};

}  // namespace

bool Obey(CameraHead& head, double now, unsigned code, const vexo_ipc_ptz_ctrl_para& para) {
    const auto found =
        std::find_if(std::begin(CODES), std::end(CODES), [code](const Code& known) { return known.code == code; });
    return found != std::end(CODES) && found->kind == para.kind && found->obey(head, now, para.value);
}

}  // namespace simulator
