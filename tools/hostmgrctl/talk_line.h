// A talk with the recorder or one of its cameras, from start to stop: blocks of G.711 out and in. Files and levels do
// not belong here.
#ifndef HOSTMGRCTL_TALK_LINE_H
#define HOSTMGRCTL_TALK_LINE_H

#include <hostmgr_dev.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace hostmgrctl {

/** What the recorder's microphone has heard. */
struct HeardBlock {
    uint8_t codec = 0;  ///< a HostMgrTalkCodec
    std::vector<uint8_t> audio;
};

/** One at a time. */
class TalkLine {
public:
    /** channel: 0 for the recorder itself. Throws Failure when refused. */
    TalkLine(int login, unsigned channel);
    ~TalkLine();
    TalkLine(const TalkLine&) = delete;
    TalkLine& operator=(const TalkLine&) = delete;

    /** Has a frame played, HOSTMGR_TALK_FRAME_SIZE bytes. Throws Failure when refused. */
    void Say(HostMgrTalkCodec codec, const std::vector<uint8_t>& audio) const;

    /** The next block; nothing when none came in that time. */
    std::optional<HeardBlock> Hear(std::chrono::milliseconds patience);

private:
    const int m_login;
    const int m_talk;
};

}  // namespace hostmgrctl

#endif
