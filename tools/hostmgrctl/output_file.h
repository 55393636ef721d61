// Where files go, whatever is in them: looked at before anything is read, and put in their place when they are whole.
// What they hold does not belong here.
#ifndef HOSTMGRCTL_OUTPUT_FILE_H
#define HOSTMGRCTL_OUTPUT_FILE_H

#include <string>

namespace hostmgrctl {

/** Where a file is written. */
enum class FilePlace {
    Direct,  ///< in its place, as it grows
    Aside,   ///< beside it, with ".part" at its end, until PutInPlace
};

/** Throws Failure with ExitCode::NoOutput. */
[[noreturn]] void CannotWrite(const std::string& path, const std::string& why);

/** Before anything has been read: nobody should wait for a minute of video that cannot be kept. Throws as CannotWrite.
 */
void CheckWritable(const std::string& path, FilePlace place);

/** The path of a file while it grows. */
std::string GrowingPath(const std::string& path, FilePlace place);

/** Puts a file that is complete in its place. Throws as CannotWrite. */
void PutInPlace(const std::string& path, FilePlace place);

/** Aside, but for a device or a pipe: nothing may be put in the place of such a one. */
FilePlace WholePlace(const std::string& path);

/** Writes a file by its WholePlace; a file that was there stays until the new one is complete. Throws as CannotWrite.
 */
void WriteWhole(const std::string& path, const std::string& bytes);

}  // namespace hostmgrctl

#endif
