#include "channel_list.h"

#include <hostmgr_dev.h>

#include <algorithm>

#include "exit_code.h"

namespace hostmgrctl {
namespace {

unsigned ParseChannel(const std::string& text, const std::string& list) {
    const bool number = !text.empty() && text.size() < 5 && text.find_first_not_of("0123456789") == std::string::npos;
    const unsigned channel = number ? static_cast<unsigned>(std::stoul(text)) : 0;
    if (channel < 1 || channel > HOSTMGR_MAX_CHANNELS) {
        throw Failure(ExitCode::Usage, "\"" + list + "\" are no channels: give numbers from 1 to " +
                                           std::to_string(HOSTMGR_MAX_CHANNELS) + ", such as 2, 1,3 or 1-4");
    }
    return channel;
}

}  // namespace

std::vector<unsigned> ParseChannels(const std::string& list) {
    std::vector<unsigned> channels;
    size_t at = 0;
    while (at <= list.size()) {
        const size_t comma = std::min(list.find(',', at), list.size());
        const std::string part = list.substr(at, comma - at);
        const size_t dash = part.find('-');
        const unsigned first = ParseChannel(part.substr(0, dash), list);
        const unsigned last = dash == std::string::npos ? first : ParseChannel(part.substr(dash + 1), list);
        if (last < first) {
            ParseChannel("", list);
        }
        for (unsigned channel = first; channel <= last; ++channel) {
            if (std::find(channels.begin(), channels.end(), channel) == channels.end()) {
                channels.push_back(channel);
            }
        }
        at = comma + 1;
    }
    return channels;
}

std::string ChannelsText(const std::vector<unsigned>& channels) {
    std::string text = channels.size() == 1 ? "channel" : "channels";
    for (size_t i = 0; i < channels.size(); ++i) {
        text += (i == 0 ? " " : ", ") + std::to_string(channels[i]);
    }
    return text;
}

}  // namespace hostmgrctl
