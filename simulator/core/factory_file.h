// The factory items as the guest's own file tells them: an XML document in /config, an element for each item. The items
// themselves are kept by factory.h.
#ifndef SIMULATOR_CORE_FACTORY_FILE_H
#define SIMULATOR_CORE_FACTORY_FILE_H

#include <vector>

#include "core/scenario.h"

namespace simulator {

bool HasFactoryFile();

/**
 * Puts the items into the file and leaves everything else in it as it is; a file that is not there, or is no document,
 * is made anew. An item whose name is no XML name stays out. What fails is told on standard error.
 */
void WriteFactoryFile(const std::vector<FactoryItem>& items);

}  // namespace simulator

#endif
