// How loud sound is, in dBFS: 0 is the loudest there can be, a square wave at its limits; a sine at its limits has -3.
#ifndef HOSTMGRCTL_LEVEL_H
#define HOSTMGRCTL_LEVEL_H

#include <nlohmann/json.hpp>
#include <string>

#include "g711.h"

namespace hostmgrctl {

class Level {
public:
    void Add(const Samples& samples);

    /** Root of the mean square, and the highest sample; minus infinity for silence, and for no sound at all. */
    double Mean() const;
    double Peak() const;

    /** "level -12.3 dBFS, peak -9.0 dBFS", or "silence". */
    std::string Text() const;
    /** Adds "level_dbfs" and "peak_dbfs"; null for silence. */
    void AddJson(nlohmann::ordered_json* json) const;

private:
    double m_squares = 0;
    uint64_t m_count = 0;
    int m_peak = 0;
};

/** "[######......]  -30.1", from -60 to 0 dBFS. */
std::string LevelBar(double dbfs);

}  // namespace hostmgrctl

#endif
