#include "ptz_head.h"

#include <cmath>
#include <utility>

namespace simulator {

HeadMemory CameraHead::MemoryAt(double now) const {
    HeadMemory memory = m_memory;
    memory.position = m_path.End(now);
    return memory;
}

// Every new way begins where the old one is left; a track that is being remembered takes the old one's part.
void CameraHead::Take(double now, HeadPath path) {
    Note(now);
    m_tour = 0;
    m_path = std::move(path);
}

void CameraHead::Note(double now) {
    if (!m_recording) {
        return;
    }
    for (HeadPath::Point& point : m_path.Part(m_recording->noted, now)) {
        point.time -= m_recording->begun;
        m_recording->points.push_back(point);
    }
    m_recording->noted = now;
}

void CameraHead::Stop(double now) {
    Take(now, HeadPath(now, PositionAt(now)));
}

void CameraHead::Turn(double now, double pan, double tilt) {
    HeadPath path(now, PositionAt(now));
    path.Drift(pan, tilt);
    Take(now, path);
}

void CameraHead::Goto(double now, const HeadPosition& to) {
    HeadPath path(now, PositionAt(now));
    path.Go(to, TravelTime(PositionAt(now), Limited(to)));
    Take(now, path);
}

void CameraHead::Scan(double now, double speed) {
    m_recording.reset();
    HeadPosition side = PositionAt(now);
    HeadPath path(now, side);
    const double from = side.pan;
    side.pan = 0;
    path.Go(side, from / speed);
    path.LoopFromHere();
    for (const double pan : {1.0, 0.0}) {
        side.pan = pan;
        path.Go(side, 1 / speed);
    }
    Take(now, path);
}

bool CameraHead::GotoPreset(double now, unsigned number) {
    const auto preset = m_memory.presets.find(number);
    if (preset == m_memory.presets.end()) {
        return false;
    }
    Goto(now, preset->second);
    return true;
}

bool CameraHead::DeleteTourPoint(unsigned tour, unsigned number) {
    const auto found = m_memory.tours.find(tour);
    if (found == m_memory.tours.end() || found->second.erase(number) == 0) {
        return false;
    }
    if (found->second.empty()) {
        m_memory.tours.erase(found);
    }
    return true;
}

bool CameraHead::RunTour(double now, unsigned tour) {
    std::vector<std::pair<HeadPosition, unsigned>> stops;
    const auto found = m_memory.tours.find(tour);
    for (const auto& [number, point] : found != m_memory.tours.end() ? found->second : std::map<unsigned, TourPoint>()) {
        const auto preset = m_memory.presets.find(point.preset);
        if (preset != m_memory.presets.end()) {
            stops.emplace_back(preset->second, point.dwell);
        }
    }
    if (stops.empty()) {
        return false;
    }
    m_recording.reset();
    HeadPath path(now, PositionAt(now));
    HeadPosition last = stops.front().first;
    path.Go(last, TravelTime(PositionAt(now), last));
    path.LoopFromHere();
    stops.emplace_back(stops.front().first, 0);
    for (size_t i = 0; i + 1 < stops.size(); ++i) {
        path.Go(last, stops[i].second);
        path.Go(stops[i + 1].first, TravelTime(last, stops[i + 1].first));
        last = stops[i + 1].first;
    }
    Take(now, path);
    m_tour = tour;
    return true;
}

bool CameraHead::StopTour(double now, unsigned tour) {
    if (m_tour == 0 || m_tour != tour) {
        return false;
    }
    Stop(now);
    return true;
}

void CameraHead::BeginTrack(double now, unsigned track) {
    Stop(now);
    m_recording = Recording{track, now, now, {}};
}

bool CameraHead::EndTrack(double now, unsigned track) {
    if (!m_recording || m_recording->track != track) {
        return false;
    }
    Stop(now);
    m_memory.tracks[track] = std::move(m_recording->points);
    m_recording.reset();
    return true;
}

bool CameraHead::RunTrack(double now, unsigned track) {
    const auto found = m_memory.tracks.find(track);
    if (found == m_memory.tracks.end() || found->second.empty()) {
        return false;
    }
    m_recording.reset();
    const std::vector<HeadPath::Point>& points = found->second;
    HeadPath path(now, PositionAt(now));
    path.Go(points.front().position, TravelTime(PositionAt(now), points.front().position));
    path.LoopFromHere();
    for (size_t i = 1; i < points.size(); ++i) {
        path.Go(points[i].position, points[i].time - points[i - 1].time);
    }
    path.Go(points.front().position, TravelTime(points.back().position, points.front().position));
    Take(now, path);
    return true;
}

}  // namespace simulator
