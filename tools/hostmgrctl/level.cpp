#include "level.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace hostmgrctl {
namespace {

constexpr double FULL_SCALE = 32768;
constexpr double LOWEST = -60;  // dBFS that a bar shows
constexpr int COLUMNS = 12;

double Decibels(double amplitude) {
    return 20 * std::log10(amplitude / FULL_SCALE);
}

nlohmann::ordered_json Number(double dbfs) {
    return std::isfinite(dbfs) ? nlohmann::ordered_json(std::round(dbfs * 10) / 10) : nlohmann::ordered_json();
}

}  // namespace

void Level::Add(const Samples& samples) {
    for (const int sample : samples) {
        m_squares += static_cast<double>(sample) * sample;
        m_peak = std::max(m_peak, std::abs(sample));
    }
    m_count += samples.size();
}

double Level::Mean() const {
    return Decibels(m_count > 0 ? std::sqrt(m_squares / static_cast<double>(m_count)) : 0);
}

double Level::Peak() const {
    return Decibels(m_peak);
}

std::string Level::Text() const {
    if (m_peak == 0) {
        return "silence";
    }
    char text[64];
    snprintf(text, sizeof(text), "level %.1f dBFS, peak %.1f dBFS", Mean(), Peak());
    return text;
}

void Level::AddJson(nlohmann::ordered_json* json) const {
    (*json)["level_dbfs"] = Number(Mean());
    (*json)["peak_dbfs"] = Number(Peak());
}

std::string LevelBar(double dbfs) {
    const double share = std::isfinite(dbfs) ? std::clamp(1 - dbfs / LOWEST, 0.0, 1.0) : 0;
    const int filled = static_cast<int>(std::lround(share * COLUMNS));
    char number[32] = " quiet";
    if (std::isfinite(dbfs)) {
        snprintf(number, sizeof(number), "%6.1f", dbfs);
    }
    return "[" + std::string(filled, '#') + std::string(COLUMNS - filled, '.') + "]" + number;
}

}  // namespace hostmgrctl
