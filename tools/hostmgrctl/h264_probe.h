// What a container must be told about H.264 video, found out from a key frame. Files do not belong here.
#ifndef HOSTMGRCTL_H264_PROBE_H
#define HOSTMGRCTL_H264_PROBE_H

#include "av_handle.h"

namespace hostmgrctl {

/** Size, shape, profile and parameter sets of a key frame in Annex B form; null when it is none. */
Av<AVCodecParameters> ProbeH264(const uint8_t* data, size_t size);

}  // namespace hostmgrctl

#endif
