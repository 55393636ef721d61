#include "utility/lock_order.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "core/watch.h"

namespace simulator {
namespace {

constexpr unsigned DEEPEST = 16;

/** What a thread holds, oldest first; plain data, so that it outlives the thread's other objects. */
struct Held {
    unsigned count;
    unsigned long locks[DEEPEST];
};
thread_local Held held = {0, {}};

using Pair = std::pair<unsigned long, unsigned long>;

struct Node {
    std::string name;
    std::set<unsigned long> later;    ///< locks waited for while this one was held
    std::set<unsigned long> earlier;  ///< the same, seen from the other side
};

struct Order {
    std::mutex lock;
    unsigned long last_number = 0;
    std::map<unsigned long, Node> nodes;
    std::set<Pair> reported;
};

Order& TheOrder() {
    static Order& order = *new Order;
    return order;
}

/** Notes that second was waited for with first held; a complaint's text when the opposite has been seen. */
std::string Note(Order& order, unsigned long first, unsigned long second, const std::string& place) {
    const auto before = order.nodes.find(first);
    const auto after = order.nodes.find(second);
    if (before == order.nodes.end() || after == order.nodes.end()) {
        return "";
    }
    before->second.later.insert(second);
    after->second.earlier.insert(first);
    const bool turned = after->second.later.count(first) > 0;
    if (!turned || !order.reported.insert(std::minmax(first, second)).second) {
        return "";
    }
    return "lock order turned round: \"" + after->second.name + "\" was waited for with \"" + before->second.name +
           "\" held, and earlier the other way round: " + place;
}

/** Takes off the calling thread what is forgotten: locks deleted while held, or given back by another thread. */
void DropForgotten(Order& order) {
    std::lock_guard<std::mutex> hold(order.lock);
    unsigned long* const end = std::remove_if(held.locks, held.locks + held.count,
                                              [&](unsigned long lock) { return order.nodes.count(lock) == 0; });
    held.count = static_cast<unsigned>(end - held.locks);
}

}  // namespace

unsigned long NewOrderedLock(const std::string& name) {
    Order& order = TheOrder();
    std::lock_guard<std::mutex> hold(order.lock);
    order.nodes[++order.last_number].name = name;
    return order.last_number;
}

void ForgetOrderedLock(unsigned long lock) {
    Order& order = TheOrder();
    std::lock_guard<std::mutex> hold(order.lock);
    const Node node = order.nodes[lock];
    for (unsigned long other : node.later) {
        order.nodes[other].earlier.erase(lock);
        order.reported.erase(std::minmax(lock, other));
    }
    for (unsigned long other : node.earlier) {
        order.nodes[other].later.erase(lock);
    }
    order.nodes.erase(lock);
}

bool HoldsLocks() {
    return held.count > 0;
}

void AboutToWait(unsigned long lock, const std::string& place) {
    Order& order = TheOrder();
    DropForgotten(order);
    for (unsigned i = 0; i < held.count; ++i) {
        std::string complaint;
        {
            std::lock_guard<std::mutex> hold(order.lock);
            complaint = Note(order, held.locks[i], lock, place);
        }
        if (!complaint.empty()) {
            Complain(complaint);
        }
    }
}

void HasTaken(unsigned long lock) {
    if (held.count < DEEPEST) {
        held.locks[held.count++] = lock;
    } else {
        Complain("a thread holds more than " + std::to_string(DEEPEST) +
                 " locks; the order of the others is not watched");
    }
}

void HasGivenBack(unsigned long lock) {
    for (unsigned i = held.count; i-- > 0;) {
        if (held.locks[i] == lock) {
            for (unsigned j = i + 1; j < held.count; ++j) {
                held.locks[j - 1] = held.locks[j];
            }
            --held.count;
            return;
        }
    }
}

}  // namespace simulator
