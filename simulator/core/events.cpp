#include "core/events.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "control.h"
#include "core/nearest.h"
#include "core/scenario.h"
#include "core/uptime.h"
#include "vexo_utility.h"

namespace simulator {
namespace {

constexpr unsigned char PICTURE = 2;  // event classes
constexpr unsigned char DISK = 3;
constexpr unsigned char NETWORK = 4;
constexpr unsigned char INPUT = 5;

const EventTraits KINDS[] = {
    {"motion", "channel", EventKind::Motion, PICTURE, VEXO_EVENT_MOTION},
    {"video loss", "channel", EventKind::VideoLoss, PICTURE, VEXO_EVENT_VIDEO_LOSS},
    {"shelter", "channel", EventKind::Shelter, PICTURE, VEXO_EVENT_SHELTER},
    {"disk full", "disk", EventKind::DiskFull, DISK, VEXO_EVENT_DISK_FULL},
    {"disk error", "disk", EventKind::DiskError, DISK, VEXO_EVENT_DISK_ERROR},
    {"network lost", "", EventKind::NetworkLost, NETWORK, VEXO_EVENT_NETWORK_LOST},
    {"address conflict", "", EventKind::AddressConflict, NETWORK, VEXO_EVENT_ADDRESS_CONFLICT},
    {"input", "input", EventKind::Input, INPUT, VEXO_EVENT_INPUT},
    {"camera input", "channel", EventKind::CameraInput, INPUT, VEXO_EVENT_CAMERA_INPUT},
};

using Key = std::pair<EventKind, unsigned>;
using RawKey = std::tuple<unsigned char, unsigned char, unsigned, unsigned>;  ///< class, sub-type, the two words

constexpr double NEVER = -1;

/** Why an event is the case, apart from the plan: the uptime at which each reason began, or NEVER. */
struct Reasons {
    double wanted = NEVER;
    double unseen = NEVER;
    double ended = NEVER;  ///< a planned turn that began before is over
};

struct Table {
    std::mutex lock;
    std::map<Key, Reasons> reasons;
    std::map<RawKey, double> raw;
};

Table& TheTable() {
    static Table& table = *[] {
        auto* made = new Table;
        for (const CameraSettings& camera : TheScenario().cameras) {
            const auto channel = static_cast<unsigned>(&camera - TheScenario().cameras.data() + 1);
            if (!camera.signal) {
                made->reasons[{EventKind::VideoLoss, channel}].wanted = 0;
            }
        }
        return made;
    }();
    return table;
}

/** When the turn of a plan began that goes on now, or NEVER. */
double TurnOf(const EventSettings& plan, double now) {
    if (now < plan.at) {
        return NEVER;
    }
    const double turn = plan.every > 0 ? plan.at + std::floor((now - plan.at) / plan.every) * plan.every : plan.at;
    return plan.lasts > 0 && now >= turn + plan.lasts ? NEVER : turn;
}

/** The earlier one of two beginnings. */
double Earlier(double left, double right) {
    return left == NEVER || (right != NEVER && right < left) ? right : left;
}

/** Since when an event is ordered, by a person or by the plan; NEVER when it is not. Under the lock. */
double OrderedSince(const Table& table, const Key& key, double now) {
    const auto found = table.reasons.find(key);
    const Reasons reasons = found != table.reasons.end() ? found->second : Reasons{};
    double since = reasons.wanted;
    for (const EventSettings& plan : TheScenario().events) {
        if (plan.kind == key.first && plan.number == key.second) {
            const double turn = TurnOf(plan, now);
            since = Earlier(since, turn > reasons.ended ? turn : NEVER);
        }
    }
    return since;
}

/** Everything that could be the case. Under the lock. */
std::set<Key> Candidates(const Table& table) {
    std::set<Key> keys;
    for (const auto& [key, reasons] : table.reasons) {
        keys.insert(key);
    }
    for (const EventSettings& plan : TheScenario().events) {
        keys.insert({plan.kind, plan.number});
    }
    return keys;
}

CurrentEvent EntryOf(const Key& key, double since) {
    const EventTraits& traits = TraitsOf(key.first);
    CurrentEvent event;
    event.kind = key.first;
    event.event_class = traits.event_class;
    event.sub_type = traits.sub_type;
    event.number = key.second;
    event.since = since;
    if (traits.event_class == PICTURE) {
        event.channel_word = key.second - 1;
    } else if (traits.event_class == DISK) {
        event.input_word = key.second;
    } else if (traits.event_class == INPUT) {
        event.input_word = key.second - 1;
        event.channel_word = key.first == EventKind::CameraInput ? key.second : 0;
    }
    return event;
}

CurrentEvent EntryOf(const RawKey& key, double since) {
    const auto [event_class, sub_type, channel, input] = key;
    return {std::nullopt, event_class, sub_type, 0, channel, input, since};
}

void CheckNumber(const EventTraits& traits, unsigned number) {
    const std::string subject = traits.subject;
    const unsigned most = MostOf(traits);
    if (subject.empty() && number != 0) {
        throw std::invalid_argument("\"" + std::string(traits.name) + "\" takes no number");
    }
    if (!subject.empty() && most == 0) {
        throw std::invalid_argument("the recorder has no " + subject);
    }
    if (!subject.empty() && (number < 1 || number > most)) {
        throw std::invalid_argument("there is no " + subject + " " + std::to_string(number) + ": the recorder has " +
                                    subject + "s 1 to " + std::to_string(most));
    }
}

}  // namespace

const EventTraits& TraitsOf(EventKind kind) {
    return KINDS[static_cast<size_t>(kind)];
}

const EventTraits& FindEventKind(const std::string& name) {
    std::vector<std::string> names;
    for (const EventTraits& traits : KINDS) {
        if (name == traits.name) {
            return traits;
        }
        names.emplace_back(traits.name);
    }
    throw std::invalid_argument("\"" + name + "\" is no kind of event; the nearest one is \"" + Nearest(name, names) +
                                "\"");
}

unsigned MostOf(const EventTraits& traits) {
    const std::string subject = traits.subject;
    if (subject == "channel") {
        return static_cast<unsigned>(TheScenario().cameras.size());
    }
    return subject == "disk" ? MOST_DISKS : subject == "input" ? TheScenario().alarm_inputs : 0;
}

std::vector<CurrentEvent> CurrentEvents() {
    Table& table = TheTable();
    std::vector<CurrentEvent> events;
    {
        std::lock_guard<std::mutex> hold(table.lock);
        const double now = Uptime();
        for (const Key& key : Candidates(table)) {
            const auto reasons = table.reasons.find(key);
            const double unseen = reasons != table.reasons.end() ? reasons->second.unseen : NEVER;
            const double since = Earlier(OrderedSince(table, key, now), unseen);
            if (since != NEVER) {
                events.push_back(EntryOf(key, since));
            }
        }
        for (const auto& [key, since] : table.raw) {
            events.push_back(EntryOf(key, since));
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const CurrentEvent& left, const CurrentEvent& right) { return left.since < right.since; });
    return events;
}

void SetEvent(EventKind kind, unsigned number, bool present) {
    CheckNumber(TraitsOf(kind), number);
    Table& table = TheTable();
    std::lock_guard<std::mutex> hold(table.lock);
    Reasons& reasons = table.reasons[{kind, number}];
    if (!present) {
        reasons.wanted = NEVER;
        reasons.ended = Uptime();
    } else if (reasons.wanted == NEVER) {
        reasons.wanted = Uptime();
    }
}

bool IsOrdered(EventKind kind, unsigned number) {
    CheckNumber(TraitsOf(kind), number);
    Table& table = TheTable();
    std::lock_guard<std::mutex> hold(table.lock);
    return OrderedSince(table, {kind, number}, Uptime()) != NEVER;
}

void ReportSeen(unsigned channel, bool seen) {
    Table& table = TheTable();
    std::lock_guard<std::mutex> hold(table.lock);
    double& unseen = table.reasons[{EventKind::VideoLoss, channel}].unseen;
    unseen = seen ? NEVER : unseen == NEVER ? Uptime() : unseen;
}

namespace control {

void SetEvent(const std::string& kind, unsigned number, bool present) {
    simulator::SetEvent(FindEventKind(kind).kind, number, present);
}

void SetRawEvent(unsigned char event_class, unsigned char sub_type, unsigned channel, unsigned input, bool present) {
    Table& table = TheTable();
    std::lock_guard<std::mutex> hold(table.lock);
    const RawKey key = {event_class, sub_type, channel, input};
    if (present) {
        table.raw.emplace(key, Uptime());
    } else {
        table.raw.erase(key);
    }
}

std::vector<std::string> Events() {
    std::vector<std::string> lines;
    for (const CurrentEvent& event : CurrentEvents()) {
        std::string line =
            event.kind ? TraitsOf(*event.kind).name
                       : "class " + std::to_string(event.event_class) + " sub-type " + std::to_string(event.sub_type);
        if (event.kind && event.number != 0) {
            line += std::string(", ") + TraitsOf(*event.kind).subject + " " + std::to_string(event.number);
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace control
}  // namespace simulator
