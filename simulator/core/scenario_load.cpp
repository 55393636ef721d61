// Where the running scenario comes from: the file that RECORDER_SCENARIO names, else the built-in default.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "core/home.h"
#include "core/scenario.h"

namespace simulator {
namespace {

std::string ReadFile(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text;
    if (file && !std::filesystem::is_directory(path)) {
        text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    } else {
        throw std::runtime_error("cannot be read (" + std::string(strerror(errno != 0 ? errno : EISDIR)) +
                                 "): set RECORDER_SCENARIO to a scenario file, or leave it unset for the default");
    }
    return text;
}

/** A media file is looked for from the scenario file's folder, and must be there. word: what stands for no file. */
void FindFile(const std::string& scenario_path, const std::string& key, const std::string& word, std::string& source) {
    if (source == word) {
        return;
    }
    source = (std::filesystem::path(scenario_path).parent_path() / source).string();
    if (!std::ifstream(source)) {
        throw std::runtime_error(key + ": cannot read " + source + ", give \"" + word +
                                 "\" or the path of a file, from the scenario file's folder");
    }
}

void FindMediaFiles(const std::string& scenario_path, Scenario& scenario) {
    for (size_t i = 0; i < scenario.cameras.size(); ++i) {
        FindFile(scenario_path, "cameras[" + std::to_string(i) + "].source", "scene", scenario.cameras[i].source);
    }
    FindFile(scenario_path, "talk.source", "tone", scenario.talk.source);
}

Scenario LoadFile(const std::string& path) {
    try {
        Scenario scenario = ParseScenario(ReadFile(path));
        FindMediaFiles(path, scenario);
        return scenario;
    } catch (const std::runtime_error& error) {
        EndWithMessage("scenario " + path + ": " + error.what());
    }
}

}  // namespace

const Scenario& TheScenario() {
    static const Scenario& scenario = *[] {
        const char* path = getenv("RECORDER_SCENARIO");
        const bool named = path != nullptr && *path != '\0';
        return new Scenario(named ? LoadFile(path) : ParseScenario(DefaultScenarioJson()));
    }();
    return scenario;
}

}  // namespace simulator
