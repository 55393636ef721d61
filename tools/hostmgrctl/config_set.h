// What can be written and asked besides the records: factory items, and abilities.
#ifndef HOSTMGRCTL_CONFIG_SET_H
#define HOSTMGRCTL_CONFIG_SET_H

#include <hostmgr_dev.h>

#include <string>
#include <vector>

namespace hostmgrctl {

/**
 * "NAME=VALUE" each, as the record that SetConfig takes; throws Failure with ExitCode::Usage for what is not so, and
 * for what does not fit into its field.
 */
std::vector<_tagVexoHostMgrFactoryInfo> ParseItems(const std::vector<std::string>& items);

/** Writes the items; throws Failure when one is refused. */
void SetItems(int login, std::vector<_tagVexoHostMgrFactoryInfo> items);

/** Asks for an ability; no recorder tells any, so it throws Failure. */
void AskAbility(int login, unsigned type);

}  // namespace hostmgrctl

#endif
