#include "live_buffer.h"

#include <string>

#include "exit_code.h"

namespace hostmgrctl {

LiveBuffer::LiveBuffer(int login, unsigned channel, unsigned stream, bool audio)
    : m_handle(vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(login, channel, stream)) {
    if (m_handle < 0) {
        throw Failure(ExitCode::Refused, "no stream buffer for channel " + std::to_string(channel) +
                                             ": is the number right, and are there fewer than " +
                                             std::to_string(HOSTMGR_MAX_STREAM_BUFFERS) + " in use?");
    }
    if (!audio) {
        vexo_soft::vexo_HostMgr_Dev_RealStreamBufferEnableAudio(m_handle, 0);
    }
}

LiveBuffer::~LiveBuffer() {
    vexo_soft::vexo_HostMgr_Dev_DestroyRealStreamBuffer(m_handle);
}

bool LiveBuffer::Read(Frame* frame) {
    unsigned channel = 0;
    unsigned stream = 0;
    unsigned length = 0;
    unsigned type = 0;
    unsigned flags = 0;
    unsigned char* buffer = nullptr;
    if (vexo_soft::vexo_HostMgr_Dev_ReadRealOneFrame(m_handle, &channel, &stream, &buffer, &length, &type, &flags) !=
        0) {
        return false;
    }
    *frame = Frame(buffer, length, flags);
    return true;
}

}  // namespace hostmgrctl
