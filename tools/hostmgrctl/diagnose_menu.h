// The diagnostics menu that the library registers with the recorder: its texts, and its answers. On a recorder the menu
// belongs to the recorder's own console; the tool takes the registration on its way there. How the texts are shown does
// not belong here.
#ifndef HOSTMGRCTL_DIAGNOSE_MENU_H
#define HOSTMGRCTL_DIAGNOSE_MENU_H

#include <string>

namespace hostmgrctl {

/** As the library wrote them, in GBK. */
struct DiagnosticsMenu {
    std::string title;
    std::string lines;
};

/** The menu, once the library has been initialised. Throws Failure when it was not registered, or refused. */
DiagnosticsMenu TheDiagnosticsMenu();

/** What the library prints for a command of the menu, in GBK; empty for a number that it does not know. */
std::string AskDiagnostics(unsigned command);

}  // namespace hostmgrctl

#endif
