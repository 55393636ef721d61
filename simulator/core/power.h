// Whether the recorder runs: reboot, power-off and the switch at its front. The guest's process is never touched: what
// ends is what a board's recorder would lose, its logins and whatever runs for them.
#ifndef SIMULATOR_CORE_POWER_H
#define SIMULATOR_CORE_POWER_H

#include <functional>

namespace simulator {

//            Reboot                    PowerOff
//   away <------------ running ------------------> off
//     \---------------> ^  ^ \-- PowerOn (panel) --/
//      reboot_seconds have passed
enum class PowerState { Running, Away, Off };

PowerState ThePowerState();
inline bool IsRunning() {
    return ThePowerState() == PowerState::Running;
}

/** Ends what runs and starts the recorder again, after the scenario's reboot_seconds. */
void Reboot();

/** Ends what runs and stays off until PowerOn, or until another process brings the recorder up. */
void PowerOff();

/** Switches a recorder on that is off; false when it is not off. */
bool PowerOn();

/** Lets end run whenever the power goes, on the thread that caused it, with no lock held. Returns true, so that a
 *  library can say so as it is loaded. */
bool OnPowerLoss(std::function<void()> end);

/** Whether an operation is answered in the present state: while the recorder does not run, the model library's fail,
 *  except those that give something back. */
bool Answers(const char* operation);

}  // namespace simulator

#endif
