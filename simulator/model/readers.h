// The readers that the guest has taken and not given back, channel readers and advance readers.
#ifndef SIMULATOR_MODEL_READERS_H
#define SIMULATOR_MODEL_READERS_H

#include "advance_reader.h"

namespace simulator {

/** The channel reader behind the guest's pointer; null when it is not out. */
std::shared_ptr<ChannelReader> FindReader(const vexo_avss_file_reader* reader);

}  // namespace simulator

#endif
