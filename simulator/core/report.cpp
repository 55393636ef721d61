// The exit report: what the guest did not give back and did wrong, printed when the process ends.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "core/watch_book.h"

namespace simulator {
namespace {

/** One line for each different text, with its number: "[simulated recorder] not given back: memory: ... (2 times)". */
std::string Lines(const char* heading, const std::map<std::string, unsigned>& texts) {
    std::string lines;
    for (const auto& [text, count] : texts) {
        lines += "[simulated recorder] " + std::string(heading) + ": " + text;
        lines += count > 1 ? " (" + std::to_string(count) + " times)\n" : "\n";
    }
    return lines;
}

std::string ReportText(bool with_residents) {
    std::map<std::string, unsigned> not_given_back;
    std::map<std::string, unsigned> in_use;
    for (const Holding& holding : Holdings()) {
        (holding.still_in_use ? in_use : not_given_back)[holding.text] += holding.count;
    }
    std::map<std::string, unsigned> complaints;
    for (const std::string& complaint : AllComplaints()) {
        ++complaints[complaint];
    }
    return Lines("not given back", not_given_back) + Lines("complaint", complaints) +
           (with_residents ? Lines("still in use at exit", in_use) : "");
}

void WriteReportFile(const char* path, const std::string& text) {
    FILE* file = fopen(path, "w");
    const bool written = file != nullptr && fputs(text.c_str(), file) >= 0;
    if ((file != nullptr && fclose(file) != 0) || !written) {
        fprintf(stderr, "[simulated recorder] cannot write the report to %s: %s\n", path, strerror(errno));
    }
}

// A destructor function runs after the guest's own static objects are gone, since the guest depends on this library.
__attribute__((destructor)) void PrintReport() {
    const char* wish = getenv("RECORDER_REPORT");
    const std::string text = ReportText(wish != nullptr && strcmp(wish, "all") == 0);
    fputs(text.c_str(), stderr);
    const char* path = getenv("RECORDER_REPORT_FILE");
    if (path != nullptr && *path != '\0') {
        WriteReportFile(path, text);
    }
}

}  // namespace
}  // namespace simulator
