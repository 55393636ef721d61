// The guest watch from the inside: what the exit report and the control operations read, and what the utility library
// alone tells. What every library books with stands in watch.h.
#ifndef SIMULATOR_CORE_WATCH_BOOK_H
#define SIMULATOR_CORE_WATCH_BOOK_H

#include <string>
#include <vector>

#include "core/watch.h"

namespace simulator {

/** One thing that is taken now, or several under one key. */
struct Holding {
    std::string text;   ///< "memory: user 97, purpose 0x80002, 7680 bytes"
    unsigned count;     ///< how often it was taken
    bool still_in_use;  ///< a lock or thread that may well serve to the end of the process
};

/** Everything that is taken now, sorted by text. */
std::vector<Holding> Holdings();

/** The complaints so far, oldest first; the first thousand are kept, a last line counts the others. */
std::vector<std::string> AllComplaints();

/** The thing has done its work (a thread has ended): not given back by now is not given back, rather than in use. */
void MarkDone(Goods goods, unsigned long key);

}  // namespace simulator

#endif
