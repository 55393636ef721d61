// Keeps two things apart that both want standard output: the tool's data and the library's log lines. After Divert the
// library's lines go through a pipe; data has a stream of its own that leads to the real standard output.
#ifndef HOSTMGRCTL_CONSOLE_H
#define HOSTMGRCTL_CONSOLE_H

#include <cstdio>
#include <string>

namespace hostmgrctl::console {

/**
 * Puts a pipe in the place of file descriptor 1. Call it once, before the library is used and before threads are.
 * verbose: the library's lines appear on standard error, without their colours; otherwise only the last error is kept.
 * When the library ends the process, its last words appear on standard error.
 */
void Divert(bool verbose);

/** Where data goes: the real standard output. */
FILE* Data();

/**
 * The library's last error so far, without colour and prefix, as "function[line]: text"; where there was none, its last
 * warning, for what a recorder refuses softly is one; empty when there was neither.
 */
std::string LastError();

/** Forgets the errors and warnings so far: LastError speaks of what comes from now on. */
void ForgetErrors();

/** Ends the diversion: no library line is shown any more. False when data could not be written. */
bool Finish();

}  // namespace hostmgrctl::console

#endif
