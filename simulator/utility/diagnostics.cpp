#include <pthread.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "control.h"
#include "core/faults.h"
#include "core/watch.h"
#include "vexo_utility.h"

namespace {

struct Clients {
    std::mutex lock;
    std::vector<vexo_diagnose_client*> list;
};

Clients& TheClients() {
    static Clients& clients = *new Clients;
    return clients;
}

std::vector<vexo_diagnose_client*> Registered() {
    Clients& clients = TheClients();
    std::lock_guard<std::mutex> hold(clients.lock);
    return clients.list;
}

/** Where this thread's print function collects; the platform's print function carries no pointer of its own. */
thread_local std::string* collector = nullptr;

__attribute__((format(printf, 1, 2))) int Collect(const char* format, ...) {
    char* text = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return length;
    }
    if (collector == nullptr) {
        simulator::Complain("the diagnostics print function was used after the command or on another thread");
    } else {
        collector->append(text, static_cast<size_t>(length));
    }
    free(text);
    return length;
}

// A guest built without type information has none for the undefined-behaviour sanitizer to look at.
__attribute__((no_sanitize("vptr"))) void AskAll(unsigned command, std::string& answers) {
    pthread_setname_np(pthread_self(), "Diagnostics");
    collector = &answers;
    for (vexo_diagnose_client* client : Registered()) {
        client->diagnose(command, Collect);
    }
    collector = nullptr;
}

}  // namespace

// Title and menu are for a panel that shows the menu, which this storey of the recorder does not have yet.
int vexo_utility_regist_diag(vexo_diagnose_client* client, const char*, const char*) {
    if (client == nullptr || simulator::ShallFail("vexo_utility_regist_diag")) {
        return -1;
    }
    Clients& clients = TheClients();
    std::lock_guard<std::mutex> hold(clients.lock);
    clients.list.push_back(client);
    return 0;
}

namespace simulator::control {

std::string Diagnose(unsigned command) {
    std::string answers;
    std::thread asking(AskAll, command, std::ref(answers));
    asking.join();
    return answers;
}

}  // namespace simulator::control
