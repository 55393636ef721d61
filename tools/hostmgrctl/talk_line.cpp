#include "talk_line.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "arrivals.h"
#include "exit_code.h"

namespace hostmgrctl {
namespace {

using Header = _tagVexoHostMgrTalkBlockHeader;

// Never destroyed: after a stop that the recorder refused, the library's thread goes on until the logout.
Arrivals<HeardBlock>& Heard() {
    static auto& heard = *new Arrivals<HeardBlock>;
    return heard;
}

/**
 * The audio of a block. A block that is shorter than its header and one frame is a frame alone, without a header: one
 * that was too long for the block before. A regular one says itself where its audio ends.
 */
HeardBlock BlockOf(const unsigned char* buffer, unsigned size) {
    HeardBlock block;
    if (size < sizeof(Header) + HOSTMGR_TALK_FRAME_SIZE) {
        block.audio.assign(buffer, buffer + (size > sizeof(Header) ? size : 0));
        return block;
    }
    Header header;
    memcpy(&header, buffer, sizeof(header));
    block.codec = header.byCodec;
    const unsigned end = std::clamp<unsigned>(header.dwUsedLen, sizeof(header), HOSTMGR_TALK_BLOCK_MAX);
    block.audio.assign(buffer + sizeof(header), buffer + end);
    return block;
}

void Receive(int /*login*/, int /*talk*/, unsigned char* buffer, unsigned size, void* /*user*/) {
    Heard().Put(BlockOf(buffer, size));
}

int Start(int login, unsigned channel) {
    _tagVexoHostMgrTalkParam param = {};
    return channel == 0 ? vexo_soft::vexo_HostMgr_Dev_StartTalk(login, &param)
                        : vexo_soft::vexo_HostMgr_Dev_StartTalkEx(login, static_cast<int>(channel), &param);
}

}  // namespace

TalkLine::TalkLine(int login, unsigned channel) : m_login(login), m_talk(Start(login, channel)) {
    if (m_talk < 0) {
        throw Failure(ExitCode::Refused, channel == 0 ? std::string("the recorder does not talk")
                                                      : "no talk with channel " + std::to_string(channel) +
                                                            ": does the recorder have that channel?");
    }
    vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(m_login, m_talk, Receive, nullptr);
}

TalkLine::~TalkLine() {
    vexo_soft::vexo_HostMgr_Dev_StopTalk(m_login, m_talk);
}

void TalkLine::Say(HostMgrTalkCodec codec, const std::vector<uint8_t>& audio) const {
    const Header header = {codec, 16, 1, 25, 8000, 16, static_cast<uint32_t>(sizeof(Header) + audio.size()), 40, 0};
    std::vector<char> block(sizeof(header) + audio.size());
    memcpy(block.data(), &header, sizeof(header));
    memcpy(block.data() + sizeof(header), audio.data(), audio.size());
    if (vexo_soft::vexo_HostMgr_Dev_InputTalkData(m_login, m_talk, block.data(), static_cast<unsigned>(block.size())) !=
        0) {
        throw Failure(ExitCode::Refused, "the recorder takes no sound any more");
    }
}

std::optional<HeardBlock> TalkLine::Hear(std::chrono::milliseconds patience) {
    return Heard().Next(patience);
}

}  // namespace hostmgrctl
