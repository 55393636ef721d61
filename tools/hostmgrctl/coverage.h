// A day's recordings as a bar in the terminal: how much of each part of the day is recorded. The search for recordings
// does not belong here.
#ifndef HOSTMGRCTL_COVERAGE_H
#define HOSTMGRCTL_COVERAGE_H

#include <ctime>
#include <string>
#include <vector>

#include "recordings.h"

namespace hostmgrctl {

/** Whether the terminal's encoding has block characters. */
bool TerminalHasBlocks();

/** Columns of a bar; each stands for 20 minutes of a usual day. */
constexpr unsigned BAR_COLUMNS = 72;

/** "00    03    06 ... 24": the hours over a bar, which stand where the bar has them. */
std::string BarScale(time_t day);

/** One character a column: the higher, the more of its time is recorded. day: its first second. */
std::string DayBar(const std::vector<Recording>& recordings, time_t day, bool blocks);

/** What the characters mean. */
std::string BarLegend(bool blocks);

}  // namespace hostmgrctl

#endif
