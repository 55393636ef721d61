// The event table as the guest reads it. What is the case, and why, stands in ../core/events.h.
#include "core/events.h"

#include <algorithm>

#include "core/faults.h"
#include "core/watch.h"
#include "vexo_utility.h"

namespace {

vexo_event_detail_info EntryOf(const simulator::CurrentEvent& event) {
    vexo_event_detail_info entry = {};
    entry.event_class = event.event_class;
    entry.sub_type = event.sub_type;
    entry.channel = event.channel_word;
    entry.input = event.input_word;
    return entry;
}

}  // namespace

int vexo_utility_get_event_info(unsigned int event_user, vexo_event_detail_info* info, unsigned int capacity,
                                unsigned int* count) {
    if (count == nullptr || simulator::ShallFail("vexo_utility_get_event_info")) {
        return -1;
    }
    if (event_user != VEXO_EVENT_USER_HOSTMGR || (info == nullptr && capacity != 0)) {
        simulator::Complain("vexo_utility_get_event_info by event user " + std::to_string(event_user) + " for " +
                            std::to_string(capacity) + " events" + (info == nullptr ? ", without room for them" : ""));
        return -1;
    }
    const std::vector<simulator::CurrentEvent> events = simulator::CurrentEvents();
    const size_t copied = std::min<size_t>(events.size(), capacity);
    std::transform(events.begin(), events.begin() + static_cast<std::ptrdiff_t>(copied), info, EntryOf);
    *count = static_cast<unsigned>(events.size());
    return 0;
}
