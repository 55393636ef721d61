// A sine tone, sample by sample, whose phase runs on from block to block.
#ifndef SIMULATOR_MODEL_TONE_H
#define SIMULATOR_MODEL_TONE_H

#include <cmath>
#include <cstdint>

namespace simulator {

class Tone {
public:
    /** hz: pitch, 0 for silence; level: amplitude, 0 to 1 of full scale; rate: samples a second. */
    Tone(double hz, double level, int rate) : m_turns(hz / rate), m_level(level) {}

    int16_t Next() {
        constexpr double TURN = 2 * 3.14159265358979;
        const double turns = static_cast<double>(m_sample++) * m_turns;
        return static_cast<int16_t>(std::lround(m_level * 32767 * std::sin(TURN * (turns - std::floor(turns)))));
    }

private:
    const double m_turns;  ///< a sample
    const double m_level;
    int64_t m_sample = 0;
};

}  // namespace simulator

#endif
