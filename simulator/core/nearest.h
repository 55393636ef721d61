// Finding what a person probably meant: the known word nearest to one that is not known. No messages here.
#ifndef SIMULATOR_CORE_NEAREST_H
#define SIMULATOR_CORE_NEAREST_H

#include <string>
#include <vector>

namespace simulator {

/** The known word with the fewest single-letter changes from the given one; "" when nothing is known. */
std::string Nearest(const std::string& word, const std::vector<std::string>& known);

}  // namespace simulator

#endif
