// The recorder's log as the model library keeps it: entries go to the hook that the guest has set. What is worth an
// entry is decided where it happens.
#ifndef SIMULATOR_MODEL_LOG_H
#define SIMULATOR_MODEL_LOG_H

#include <string>

namespace simulator {

/** The recorder's numbers for kinds of entries. */
enum class LogType : unsigned { Login = 1, Logout = 2, Power = 3, Restore = 4, Alarm = 5, Disk = 6 };

/** Makes an entry; login: who caused it, or 0. Runs the guest's hook: no lock of the recorder may be held. */
void Log(int login, LogType type, const std::string& user, const std::string& text);

/** Whether a hook is set. */
bool IsLogHeard();

}  // namespace simulator

#endif
