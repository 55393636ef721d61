// The guest watch: books everything that the library takes from the recorder and reports at exit what it did not give
// back. The libraries book here; nothing is decided here. All of it may be called from any thread at any time.
#ifndef SIMULATOR_CORE_WATCH_H
#define SIMULATOR_CORE_WATCH_H

#include <string>

namespace simulator {

/** What can be taken. */
enum class Goods { Memory, Lock, Thread, Frame, Reader, Document, Login, Talk, Inquiry };

/**
 * Books one thing as taken, under its address or number; label says which one it is for a person ("user 97, purpose
 * 0x80002, 7680 bytes", "vexo_hostmgr_lv, user 97", "channel 1 main frame 17"); the report puts the kind of goods
 * before it. What is taken under a key that is booked already counts up and must be given back as often.
 */
void Take(Goods goods, unsigned long key, const std::string& label);

/** Books it as given back; false, with a complaint in the report that names by, when it was not taken. */
bool GiveBack(Goods goods, unsigned long key, const std::string& by);

/** Notes misuse that is not a matter of giving back: an unlock by a stranger, a lock order turned round. */
void Complain(const std::string& text);

}  // namespace simulator

#endif
