// Texts of another encoding in that of the terminal. What the texts say does not belong here.
#ifndef HOSTMGRCTL_TERMINAL_TEXT_H
#define HOSTMGRCTL_TERMINAL_TEXT_H

#include <string>

namespace hostmgrctl {

/** The terminal's encoding, by its locale, such as "UTF-8". */
std::string TerminalEncoding();

/**
 * A text in another encoding. What the text has no right to hold, and what the other encoding has no character for,
 * becomes a question mark each. Throws Failure with ExitCode::Usage for an encoding that is not known.
 */
std::string Reencode(const std::string& text, const std::string& from, const std::string& to);

}  // namespace hostmgrctl

#endif
