#include "log.h"

#include <ctime>
#include <mutex>

#include "copy_text.h"
#include "event_log.h"
#include "vexo_model.h"

namespace simulator {
namespace {

struct Hook {
    vexo_log_hook function = nullptr;
    void* user = nullptr;
};

std::mutex& HookMutex() {
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

Hook& TheHook() {  // under HookMutex
    static Hook& hook = *new Hook;
    return hook;
}

}  // namespace

bool IsLogHeard() {
    std::lock_guard<std::mutex> lock(HookMutex());
    return TheHook().function != nullptr;
}

void Log(int login, LogType type, const std::string& user, const std::string& text) {
    Hook hook;
    {
        std::lock_guard<std::mutex> lock(HookMutex());
        hook = TheHook();
    }
    if (hook.function == nullptr) {
        return;
    }
    tag_VexoHostMgrLog entry = {};
    entry.dwTime = static_cast<unsigned>(time(nullptr));
    entry.dwType = static_cast<unsigned>(type);
    CopyText(user, entry.sUser);
    CopyText(text, entry.sText);
    hook.function(login, &entry, hook.user);
}

}  // namespace simulator

void vexo_model_set_log_hook(vexo_log_hook hook, void* user) {
    {
        std::lock_guard<std::mutex> lock(simulator::HookMutex());
        simulator::TheHook() = {hook, user};
    }
    if (hook != nullptr) {
        simulator::WakeEventLog();
    }
}
