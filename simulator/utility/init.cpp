#include <mutex>

#include "core/factory.h"
#include "core/faults.h"
#include "core/panel.h"
#include "core/startup.h"
#include "core/uptime.h"
#include "core/watch.h"
#include "vexo_utility.h"

int vexo_utility_init(vexo_utility_ops_type type) {
    static std::once_flag once;
    std::call_once(once, [] {
        simulator::OrderScenarioFaults();
        simulator::Uptime();
        simulator::PrintBanner();
        simulator::OpenPanel();
        simulator::PrepareFactoryFile();
    });
    if (type != VEXO_UTILITY_OPS_HOST) {
        simulator::Complain("vexo_utility_init with operation type " + std::to_string(type) + ", which is not known");
        return -1;
    }
    return simulator::ShallFail("vexo_utility_init") ? -1 : 0;
}
