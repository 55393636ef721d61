// The history of a recorder that starts for the first time: recordings of the past hours, so that search and playback
// have something at once. They are made as live ones are, of rarer and smaller pictures.
#ifndef SIMULATOR_MODEL_HISTORY_H
#define SIMULATOR_MODEL_HISTORY_H

#include "archive.h"

namespace simulator {

/** One recording that the history shall have. Times are microseconds since 1970. */
struct HistorySegment {
    int64_t start = 0;
    int64_t stop = 0;
    unsigned type = 0;  ///< record type bits
};

/**
 * When a channel, counted from 1, was recorded, by time: one recording in each of as many equal parts of the hours
 * before end, at a place that the seed draws; types change from one to the next.
 */
std::vector<HistorySegment> PlanHistory(const HistorySettings& settings, unsigned seed, unsigned channel, int64_t end);

/** Makes the history unless the archive has it; says so on standard error. Others who ask wait. */
void EnsureHistory(Archive* archive);

}  // namespace simulator

#endif
