#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/home.h"
#include "core/scenario.h"
#include "core/startup.h"

namespace simulator {

void PrintBanner() {
    const char* quiet = getenv("RECORDER_QUIET");
    if (quiet != nullptr && strcmp(quiet, "1") == 0) {
        return;
    }
    const Scenario& scenario = TheScenario();
    fprintf(stderr,
            "[simulated recorder] This is a recorder in software, not a board: version %s, scenario \"%s\", "
            "%zu channel%s, home %s\n",
            scenario.version.c_str(), scenario.name.c_str(), scenario.cameras.size(),
            scenario.cameras.size() == 1 ? "" : "s", HomePath().c_str());
}

}  // namespace simulator
