// The exit report: what the guest did not give back and did wrong, printed when the process ends.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <thread>
#include <vector>

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

bool AnythingNotGivenBack() {
    const std::vector<Holding> holdings = Holdings();
    return std::any_of(holdings.begin(), holdings.end(), [](const Holding& holding) { return !holding.still_in_use; });
}

// The guest's threads run on while the process ends, and one of them may have a few bytes in hand: that is no leak.
void WaitForThreadsAtWork() {
    constexpr std::chrono::milliseconds STEP{5};
    constexpr int STEPS = 40;
    for (int step = 0; step < STEPS && AnythingNotGivenBack(); ++step) {
        std::this_thread::sleep_for(STEP);
    }
}

// A destructor function runs after the guest's own static objects are gone, since the guest depends on this library.
__attribute__((destructor)) void PrintReport() {
    WaitForThreadsAtWork();
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
