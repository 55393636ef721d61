// version: which tool, which library file, and whether the library comes up.
#include <dlfcn.h>
#include <hostmgr_dev.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "console.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

/** The file that the exported functions come from. */
std::string LibraryFile() {
    Dl_info info = {};
    void (*const function)() = &vexo_soft::vexo_HostMgr_Dev_init;
    return dladdr(reinterpret_cast<void*>(function), &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "?";
}

ExitCode Run(bool json) {
    const std::string library = LibraryFile();
    if (!json) {
        fprintf(console::Data(), "hostmgrctl   %s\nlibrary      %s\n", HOSTMGRCTL_VERSION, library.c_str());
        fflush(console::Data());
    }
    vexo_soft::vexo_HostMgr_Dev_init();  // ends the process when it fails
    if (json) {
        const nlohmann::ordered_json object = {
            {"version", HOSTMGRCTL_VERSION}, {"library", library}, {"initialises", true}};
        fprintf(console::Data(), "%s\n", object.dump(2).c_str());
    } else {
        fprintf(console::Data(), "initialises  yes\n");
    }
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto json = std::make_shared<bool>(false);
    app.add_flag("--json", *json, "print one JSON object");
    return [json] { return Run(*json); };
}

}  // namespace

const Topic VERSION_TOPIC = {
    "version",
    "Shows the tool's version and the library in use.",
    "  init\n",
    "  hostmgrctl version\n"
    "  LD_LIBRARY_PATH=/opt/recorder/lib hostmgrctl version     another library\n",
    Add,
};

}  // namespace hostmgrctl
