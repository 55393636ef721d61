// The way to a running recorder: finds its socket in the home folder, sends a request, takes the answer. What requests
// mean does not belong here.
#ifndef RECORDERCTL_PANEL_H
#define RECORDERCTL_PANEL_H

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace recorderctl {

/** No recorder, or no clear choice among several: what() says what to do. */
class NoRecorder : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** The recorder has refused: what() is its reason. */
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** The home folder where recorders are looked for: RECORDER_HOME, else the folder under the user's cache folder. */
std::string UsualHome();

/** The process numbers of the recorders that run with that home folder. */
std::vector<int> RunningRecorders(const std::string& home);

/** Sends a request to the recorder of that process, or with 0 to the only one, and returns its result. */
nlohmann::json Ask(const std::string& home, int process, const nlohmann::json& request);

}  // namespace recorderctl

#endif
