// What a picture says of itself: whether it is a whole JPEG, and how many pixels it has. Where it comes from and goes
// to does not belong here.
#ifndef HOSTMGRCTL_JPEG_PROBE_H
#define HOSTMGRCTL_JPEG_PROBE_H

#include <optional>
#include <string>

namespace hostmgrctl {

struct PictureSize {
    int width = 0;
    int height = 0;
};

/** The size in pixels of a JPEG that decodes to its end; nothing for anything else. */
std::optional<PictureSize> ProbeJpeg(const std::string& jpeg);

}  // namespace hostmgrctl

#endif
