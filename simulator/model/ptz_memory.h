// The heads' memory as the document ptz.json of the home folder. What a head does with it stands in ptz_head.h.
#ifndef SIMULATOR_MODEL_PTZ_MEMORY_H
#define SIMULATOR_MODEL_PTZ_MEMORY_H

#include <vector>

#include "ptz_head.h"

namespace simulator {

/** As many as there are channels; what the document does not tell, or tells badly, is as from the factory. */
std::vector<HeadMemory> ReadHeads(size_t channels);

void KeepHeads(const std::vector<HeadMemory>& heads);

}  // namespace simulator

#endif
