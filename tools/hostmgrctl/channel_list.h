// Channels as typed: "2", "1,3", "1-4". What is done with them does not belong here.
#ifndef HOSTMGRCTL_CHANNEL_LIST_H
#define HOSTMGRCTL_CHANNEL_LIST_H

#include <string>
#include <vector>

namespace hostmgrctl {

/** Each channel once, in the order given. Throws Failure with ExitCode::Usage for what are no channels. */
std::vector<unsigned> ParseChannels(const std::string& list);

/** "channel 2", or "channels 1, 3, 4". */
std::string ChannelsText(const std::vector<unsigned>& channels);

}  // namespace hostmgrctl

#endif
