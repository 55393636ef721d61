#include "core/faults.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "control.h"
#include "core/operations.h"
#include "core/power.h"
#include "core/scenario.h"
#include "core/startup.h"

namespace simulator {
namespace {

/** One order: so many uses still pass, then so many fail. */
struct Order {
    std::string operation;
    unsigned passing;
    unsigned failing;
};

struct Orders {
    std::mutex lock;
    std::vector<Order> open;
    std::atomic<bool> any{false};  ///< open is not empty; written under lock
};

Orders& TheOrders() {
    static Orders& orders = *new Orders;
    return orders;
}

/** Counts the use for one order; true when this use is one that fails. */
bool Count(Order& order) {
    if (order.passing > 0) {
        --order.passing;
        return false;
    }
    --order.failing;
    return true;
}

void AddOrder(const FaultSettings& fault) {
    if (fault.times == 0) {
        return;
    }
    Orders& orders = TheOrders();
    std::lock_guard<std::mutex> hold(orders.lock);
    orders.open.push_back({fault.operation, std::max(fault.nth, 1U) - 1, fault.times});
    orders.any = true;
}

}  // namespace

bool ShallFail(const char* operation) {
    if (!Answers(operation)) {
        return true;
    }
    Orders& orders = TheOrders();
    if (!orders.any.load(std::memory_order_acquire)) {
        return false;
    }
    std::lock_guard<std::mutex> hold(orders.lock);
    bool fail = false;
    for (Order& order : orders.open) {
        if (order.operation == operation) {
            fail = Count(order) || fail;
        }
    }
    orders.open.erase(
        std::remove_if(orders.open.begin(), orders.open.end(), [](const Order& order) { return order.failing == 0; }),
        orders.open.end());
    orders.any = !orders.open.empty();
    return fail;
}

void OrderScenarioFaults() {
    for (const FaultSettings& fault : TheScenario().faults) {
        AddOrder(fault);
    }
}

namespace control {

void Fail(const std::string& operation, unsigned nth, unsigned times) {
    const std::string why = WhyNoOperation(operation);
    if (!why.empty()) {
        throw std::invalid_argument(why);
    }
    AddOrder({operation, nth, times});
}

}  // namespace control
}  // namespace simulator
