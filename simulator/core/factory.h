// The recorder's factory items: names and values that were written at the factory and last for ever. The platform's
// operations on them are the model library's.
#ifndef SIMULATOR_CORE_FACTORY_H
#define SIMULATOR_CORE_FACTORY_H

#include <optional>

#include "core/scenario.h"

namespace simulator {

constexpr unsigned MOST_FACTORY_ITEMS = 256;

/** For any thread, as all of these. */
unsigned FactoryItems();

/** Item number index, counted from 0, in the order in which they were added; nothing when there is none. */
std::optional<FactoryItem> FactoryItemAt(unsigned index);

/** Sets the item of that name, or adds it; false for an empty name and when there are MOST_FACTORY_ITEMS others. The
 *  guest's factory file tells it then. */
bool SetFactoryItem(const FactoryItem& item);

/** Makes the guest's factory file, /config/vexo_hostmgr_factory.dat, unless there is one; for the recorder's start. */
void PrepareFactoryFile();

}  // namespace simulator

#endif
