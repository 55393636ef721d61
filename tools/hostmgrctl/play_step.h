// What shall happen while a play runs, as typed: "3:pause", "8:seek=10:15". Doing it does not belong here.
#ifndef HOSTMGRCTL_PLAY_STEP_H
#define HOSTMGRCTL_PLAY_STEP_H

#include <string>
#include <vector>

namespace hostmgrctl {

enum class StepKind { Speed, Pause, Resume, Seek, Audio, Add, Drop, Main, Sub, Stop };

struct PlayStep {
    double at = 0;  ///< seconds after the play began
    StepKind kind = StepKind::Stop;
    long value = 0;  ///< speed, channel, on or off, or seconds since 1970
};

/** The forms of a step, for help texts. */
extern const char* const STEP_FORMS;

/** In the order in which they are due. Throws Failure with ExitCode::Usage for what is none. */
std::vector<PlayStep> ParseSteps(const std::vector<std::string>& texts);

}  // namespace hostmgrctl

#endif
