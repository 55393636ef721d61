// The one bounded text copy of the model library.
#ifndef SIMULATOR_MODEL_COPY_TEXT_H
#define SIMULATOR_MODEL_COPY_TEXT_H

#include <cstddef>
#include <string>

namespace simulator {

/** Copies a text into a field, as much of it as fits, and terminates it. */
template <size_t N>
void CopyText(const std::string& from, char (&to)[N]) {
    to[from.copy(to, N - 1)] = '\0';
}

}  // namespace simulator

#endif
