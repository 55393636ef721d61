// How a command ends: the exit codes, one table for people and programs, and the error that carries one. What a command
// does before it ends stands with its topic.
#ifndef HOSTMGRCTL_EXIT_CODE_H
#define HOSTMGRCTL_EXIT_CODE_H

#include <stdexcept>
#include <string>

namespace hostmgrctl {

enum class ExitCode {
    Ok = 0,
    Refused = 1,
    Usage = 2,
    NoData = 3,
    NoOutput = 4,
    Partial = 5,
    GaveUp = 255,  // the library's own exit(-1)
};

struct ExitMeaning {
    ExitCode code;
    const char* meaning;
};

/** The table that every help shows. */
constexpr ExitMeaning EXIT_MEANINGS[] = {
    {ExitCode::Ok, "done; also when Ctrl-C ended it after something was read"},
    {ExitCode::Refused, "the recorder refused or failed"},
    {ExitCode::Usage, "wrong arguments"},
    {ExitCode::NoData, "nothing came in time"},
    {ExitCode::NoOutput, "the output could not be written"},
    {ExitCode::Partial, "a download ended early: only a part came (--keep-partial keeps it)"},
    {ExitCode::GaveUp, "the library gave up and ended the program"},
};

/** Ends a command: what() says what happened, to what, and what to do. */
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& what) : std::runtime_error(what), m_code(code) {}
    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

}  // namespace hostmgrctl

#endif
