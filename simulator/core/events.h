// The event table: what is the case at the recorder now, by the scenario's plan, on demand, or because a camera has
// lost its picture. How an entry looks to the guest stands in ../utility/events.cpp.
#ifndef SIMULATOR_CORE_EVENTS_H
#define SIMULATOR_CORE_EVENTS_H

#include <optional>
#include <string>
#include <vector>

namespace simulator {

/** Disks are numbered up to here. */
constexpr unsigned MOST_DISKS = 32;

enum class EventKind {
    Motion,
    VideoLoss,
    Shelter,
    DiskFull,
    DiskError,
    NetworkLost,
    AddressConflict,
    Input,
    CameraInput
};

/** What a kind is called, what its number counts, and how the event table knows it. */
struct EventTraits {
    const char* name;     ///< in scenarios and commands
    const char* subject;  ///< "channel", "disk", "input", or "" for an event without a number
    EventKind kind;
    unsigned char event_class;
    unsigned char sub_type;
};

const EventTraits& TraitsOf(EventKind kind);

/** The kind of that name; throws std::invalid_argument that names the nearest one. */
const EventTraits& FindEventKind(const std::string& name);

/** The highest number that the recorder has for a kind; 0 for one without a number. */
unsigned MostOf(const EventTraits& traits);

/** An entry: a kind that is known, or one of any class. */
struct CurrentEvent {
    std::optional<EventKind> kind;
    unsigned char event_class = 0;
    unsigned char sub_type = 0;
    unsigned number = 0;  ///< counted from 1; 0 for a kind without a number
    unsigned channel_word = 0;
    unsigned input_word = 0;
    double since = 0;  ///< uptime at which it began, seconds
};

/** What is the case now, in the order of its beginning. */
std::vector<CurrentEvent> CurrentEvents();

/** Begins an event or ends it; one that the scenario planned ends as well and comes again with its next time. */
void SetEvent(EventKind kind, unsigned number, bool present);

/** Whether an event is the case on demand or by the plan; a camera's own failure to see does not count. */
bool IsOrdered(EventKind kind, unsigned number);

/** For the model library: whether a camera's source gives a picture; channel counted from 1. */
void ReportSeen(unsigned channel, bool seen);

}  // namespace simulator

#endif
