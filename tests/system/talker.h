// A talk through the exported functions, for tests: what the callback brings is gathered, what is said goes in as
// blocks at the pace of the sound. Expectations do not belong here.
#ifndef TESTS_SYSTEM_TALKER_H
#define TESTS_SYSTEM_TALKER_H

#include <hostmgr_dev.h>

#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "live_reader.h"
#include "sound.h"

namespace agent {

/** What a talk callback was handed, in its order. */
class Ear {
public:
    struct Block {
        int login;
        int talk;
        unsigned length;                   ///< as told
        std::vector<unsigned char> bytes;  ///< all that may be read, header included
    };

    static void Hear(int login, int talk, unsigned char* bytes, unsigned length, void* user) {
        auto* ear = static_cast<Ear*>(user);
        std::lock_guard<std::mutex> hold(ear->m_lock);
        ear->m_blocks.push_back({login, talk, length, {bytes, bytes + HOSTMGR_TALK_BLOCK_MAX}});
    }

    size_t Count() const {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_blocks.size();
    }

    /** Waits for so many blocks; fewer when they did not come in time. */
    std::vector<Block> Blocks(size_t count) const {
        live::Eventually([&] { return Count() >= count; });
        std::lock_guard<std::mutex> hold(m_lock);
        return m_blocks;
    }

private:
    mutable std::mutex m_lock;
    std::vector<Block> m_blocks;
};

/** The samples of G.711 A-law bytes, added to those before. */
inline void AddSamples(const unsigned char* from, const unsigned char* to, std::vector<double>* samples) {
    std::transform(from, to, std::back_inserter(*samples), sound::FromALaw);
}

/** A block to be played: header and audio. */
inline std::vector<unsigned char> TalkBlock(HostMgrTalkCodec codec, const std::vector<unsigned char>& audio) {
    _tagVexoHostMgrTalkBlockHeader header = {};
    header.byCodec = codec;
    header.bySampleBits = 16;
    header.byAudioChannels = 1;
    header.byFramesPerSecond = 25;
    header.dwSampleRate = 8000;
    header.dwBits = 16;
    std::vector<unsigned char> block(sizeof header + audio.size());
    memcpy(block.data(), &header, sizeof header);
    std::copy(audio.begin(), audio.end(), block.begin() + sizeof header);
    return block;
}

/** A talk, while it stands; channel 0: with the recorder itself. */
class Talker {
public:
    explicit Talker(int login, int channel = 0) : m_login(login) {
        _tagVexoHostMgrTalkParam none = {};
        m_talk = channel == 0 ? vexo_soft::vexo_HostMgr_Dev_StartTalk(login, &none)
                              : vexo_soft::vexo_HostMgr_Dev_StartTalkEx(login, channel, &none);
    }
    ~Talker() {
        if (m_talk > 0) {
            Stop();
        }
    }
    Talker(const Talker&) = delete;
    Talker& operator=(const Talker&) = delete;

    int Handle() const { return m_talk; }

    int Stop() {
        const int talk = m_talk;
        m_talk = -1;
        return vexo_soft::vexo_HostMgr_Dev_StopTalk(m_login, talk);
    }

    /** It has ended otherwise. */
    void Forget() { m_talk = -1; }

    int Listen(vexo_hostmgr_talk_callback callback, void* user) {
        return vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(m_login, m_talk, callback, user);
    }

    int Say(std::vector<unsigned char> block) {
        return vexo_soft::vexo_HostMgr_Dev_InputTalkData(m_login, m_talk, reinterpret_cast<char*>(block.data()),
                                                         static_cast<unsigned>(block.size()));
    }

private:
    const int m_login;
    int m_talk = -1;
};

/** When the blocks of a sound are to be sent: one each 40 ms, the first one now. */
class Pace {
public:
    void Wait() {
        std::this_thread::sleep_until(m_next);
        m_next += std::chrono::milliseconds(40);
    }

private:
    std::chrono::steady_clock::time_point m_next = std::chrono::steady_clock::now();
};

/** Waits until the newest file of played sound has so many samples, and reads it. */
inline std::vector<double> Played(size_t samples) {
    const bool there = live::Eventually([&] {
        const auto files = sound::PlayedFiles();
        return !files.empty() && sound::HasSamples(files.back(), samples);
    });
    return there ? sound::WaveSamples(sound::PlayedFiles().back()) : std::vector<double>();
}

}  // namespace agent

#endif
