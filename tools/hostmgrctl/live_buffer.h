// A live stream buffer of the library, from creation to destruction. What happens with the frames does not belong here.
#ifndef HOSTMGRCTL_LIVE_BUFFER_H
#define HOSTMGRCTL_LIVE_BUFFER_H

#include "frame.h"

namespace hostmgrctl {

class LiveBuffer {
public:
    /** stream: HOSTMGR_STREAM_MAIN or _SUB. Throws Failure when there is no buffer to be had. */
    LiveBuffer(int login, unsigned channel, unsigned stream, bool audio);
    ~LiveBuffer();
    LiveBuffer(const LiveBuffer&) = delete;
    LiveBuffer& operator=(const LiveBuffer&) = delete;

    /** The next frame, valid until the next call; false when there is none at the moment. */
    bool Read(Frame* frame);

private:
    int m_handle;
};

}  // namespace hostmgrctl

#endif
