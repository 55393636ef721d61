#include "coverage.h"

#include <cmath>

#include "local_time.h"
#include "terminal_text.h"

namespace hostmgrctl {
namespace {

constexpr int LABEL_HOURS = 3;

// From little to all of a column's time.
constexpr const char* BLOCKS[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr const char* LETTERS[] = {"-", "=", "#"};
constexpr const char* NO_BLOCK = "·";
constexpr const char* NO_LETTER = ".";

template <size_t COUNT>
const char* Step(const char* const (&steps)[COUNT], double share) {
    return steps[std::min(COUNT - 1, static_cast<size_t>(share * COUNT))];
}

}  // namespace

bool TerminalHasBlocks() {
    return TerminalEncoding() == "UTF-8";
}

std::string BarScale(time_t day) {
    std::string scale(BAR_COLUMNS + 2, ' ');
    const auto length = static_cast<double>(NextDay(day) - day);
    for (time_t moment = day; moment < NextDay(day); moment += 3600) {
        const int hour = std::stoi(ClockText(moment).substr(0, 2));
        if (hour % LABEL_HOURS == 0) {
            const auto column = static_cast<size_t>(static_cast<double>(moment - day) * BAR_COLUMNS / length);
            scale.replace(column, 2, ClockText(moment).substr(0, 2));
        }
    }
    return scale.replace(BAR_COLUMNS, 2, "24");
}

std::string DayBar(const std::vector<Recording>& recordings, time_t day, bool blocks) {
    const double width = static_cast<double>(NextDay(day) - day) / BAR_COLUMNS;
    std::vector<double> shares(BAR_COLUMNS, 0);
    auto covered = static_cast<double>(day);
    for (const Recording& recording : recordings) {
        double at = std::max(covered, static_cast<double>(recording.start));
        const auto stop = static_cast<double>(std::min(recording.stop, NextDay(day)));
        while (at < stop) {
            const auto column = std::min<size_t>(BAR_COLUMNS - 1, static_cast<size_t>((at - day + 1e-6) / width));
            const double end = std::min(stop, static_cast<double>(day) + width * static_cast<double>(column + 1));
            shares[column] += std::max(end - at, 0.0) / width;
            at = std::max(end, at + 1e-6);
        }
        covered = std::max(covered, stop);
    }
    std::string bar;
    for (const double share : shares) {
        const char* some = blocks ? Step(BLOCKS, share) : Step(LETTERS, share);
        const char* none = blocks ? NO_BLOCK : NO_LETTER;
        bar += share > 0 ? some : none;
    }
    return bar;
}

std::string BarLegend(bool blocks) {
    return blocks ? "each column is 20 minutes: · nothing, ▁ little, █ all of it is recorded"
                  : "each column is 20 minutes: . nothing, - little, # all of it is recorded";
}

}  // namespace hostmgrctl
