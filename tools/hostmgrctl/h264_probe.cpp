#include "h264_probe.h"

#include <algorithm>
#include <cstring>

namespace hostmgrctl {
namespace {

constexpr int IO_BUFFER = 32768;

struct Memory {
    const uint8_t* data;
    size_t left;
};

int ReadMemory(void* opaque, uint8_t* buffer, int size) {
    auto* memory = static_cast<Memory*>(opaque);
    const size_t count = std::min(memory->left, static_cast<size_t>(size));
    if (count == 0) {
        return AVERROR_EOF;
    }
    memcpy(buffer, memory->data, count);
    memory->data += count;
    memory->left -= count;
    return static_cast<int>(count);
}

/** A demuxer on a piece of memory. */
class MemoryInput {
public:
    MemoryInput(const uint8_t* data, size_t size) : m_memory{data, size} {
        m_io = NotNull(avio_alloc_context(static_cast<unsigned char*>(NotNull(av_malloc(IO_BUFFER))), IO_BUFFER, 0,
                                          &m_memory, ReadMemory, nullptr, nullptr));
        m_format = NotNull(avformat_alloc_context());
        m_format->pb = m_io;
    }
    ~MemoryInput() {
        avformat_close_input(&m_format);
        av_freep(&m_io->buffer);
        avio_context_free(&m_io);
    }
    MemoryInput(const MemoryInput&) = delete;
    MemoryInput& operator=(const MemoryInput&) = delete;

    /** The first stream's description, or null. */
    const AVCodecParameters* Probe() {
        const bool found = avformat_open_input(&m_format, nullptr, av_find_input_format("h264"), nullptr) == 0 &&
                           avformat_find_stream_info(m_format, nullptr) >= 0 && m_format->nb_streams > 0;
        return found ? m_format->streams[0]->codecpar : nullptr;
    }

private:
    Memory m_memory;
    AVIOContext* m_io;
    AVFormatContext* m_format;  // null after a failed opening
};

}  // namespace

Av<AVCodecParameters> ProbeH264(const uint8_t* data, size_t size) {
    MemoryInput input(data, size);
    const AVCodecParameters* found = input.Probe();
    if (found == nullptr || found->width <= 0 || found->extradata_size <= 0) {
        return nullptr;
    }
    Av<AVCodecParameters> parameters(NotNull(avcodec_parameters_alloc()));
    return avcodec_parameters_copy(parameters.get(), found) >= 0 ? std::move(parameters) : nullptr;
}

}  // namespace hostmgrctl
