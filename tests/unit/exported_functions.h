// The catalogue of the exported functions as a table: each by its name, its frame, and a call with a handle and
// otherwise harmless arguments. What a frame does, and what a function does with its arguments, stands in the tests.
#ifndef EXPORTED_FUNCTIONS_H
#define EXPORTED_FUNCTIONS_H

#include <iosfwd>
#include <vector>

enum class Frame {
    GLOBAL,               ///< needs no login
    LOGIN,                ///< looks its handle up
    DERIVED,              ///< looks the low 16 bits of its handle up
    STREAM,               ///< as DERIVED, and refuses handles below 1 before
    LOOKUP,               ///< looks its handle up and does nothing
    NOT_SUPPORTED,        ///< says so
    NOT_SUPPORTED_LOGIN,  ///< says so, then looks its handle up and does nothing
};

struct ExportedFunction {
    const char* name;
    Frame frame;
    /** Calls it; -1 also stands for a null text and for a function without a result. */
    int (*call)(int handle);
};
void PrintTo(const ExportedFunction& function, std::ostream* out);

/** All but init, and those of some frames. */
std::vector<ExportedFunction> ExportedFunctions();
std::vector<ExportedFunction> ExportedFunctions(const std::vector<Frame>& frames);

#endif
