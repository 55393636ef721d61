// Where the guest's absolute paths lie on this computer: the recorder's own folder /config is one of the home folder,
// so that nothing of the computer's is touched. Every other path is what it says.
#ifndef SIMULATOR_CORE_GUEST_FILES_H
#define SIMULATOR_CORE_GUEST_FILES_H

#include <string>

namespace simulator {

/** The place of a guest's path; /config itself exists after the call when the path leads into it. */
std::string HostPath(const std::string& path);

/** The folder that the guest sees as /config; it exists after the call. */
std::string ConfigFolder();

}  // namespace simulator

#endif
