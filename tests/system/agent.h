// What the tests of the library on the simulated recorder share: the recorder's scenario, logins and stream buffers
// through exported functions, a look at what is not given back. Expectations on frames do not belong here.
#ifndef TESTS_SYSTEM_AGENT_H
#define TESTS_SYSTEM_AGENT_H

#include <gtest/gtest.h>
#include <hostmgr_dev.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "control.h"
#include "live_reader.h"

namespace agent {

constexpr unsigned FRAMES_KEPT = 30;  // as the scenario says, and what follows
constexpr unsigned MAIN_PERIOD = 40;  // milliseconds from picture to picture
constexpr unsigned SUB_PERIOD = 83;
constexpr unsigned PITCH[] = {440, 1250};  // Hz, by channel
constexpr unsigned UNKNOWN_CHANNEL = 9;

inline constexpr char SCENARIO[] = R"json({
    "name": "agent test",
    "frames_kept": 30,
    "cameras": [
        {"name": "Front gate", "main": {"width": 640, "height": 360, "fps": 25, "gop": 10, "kbps": 800},
         "sub": {"width": 320, "height": 240, "fps": 12, "gop": 12, "kbps": 200}, "audio": {"hz": 440, "level": 0.3}},
        {"name": "Car park", "main": {"width": 640, "height": 360, "fps": 25, "gop": 10, "kbps": 800},
         "sub": {"width": 320, "height": 240, "fps": 12, "gop": 12, "kbps": 200}, "audio": {"hz": 1250, "level": 0.3}}
    ],
    "users": [
        {"name": "admin", "password": "admin12345", "administrator": true},
        {"name": "operator", "password": "operator12345"}
    ]
})json";

/**
 * Brings the recorder up on a scenario; a program that has one of its own adds another, which then counts. The library
 * is initialised by the fixtures, not here.
 */
class Recorder : public testing::Environment {
public:
    explicit Recorder(std::string scenario = SCENARIO) : m_scenario(std::move(scenario)) {}

    void SetUp() override {
        const std::string path = std::string(getenv("RECORDER_HOME")) + "/scenario.json";
        std::ofstream(path) << m_scenario;
        setenv("RECORDER_SCENARIO", path.c_str(), 1);
    }

private:
    const std::string m_scenario;
};

inline const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new Recorder);

/** The library's text parameters are not const, though it writes to none of them. */
inline char* Text(const char* text) {
    return const_cast<char*>(text);
}

/** A login, local unless told otherwise. */
class Session {
public:
    Session() : m_login(vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr)) {}
    Session(const char* user, const char* password)
        : m_login(vexo_soft::vexo_HostMgr_Dev_Login(Text(user), Text(password), nullptr)) {}
    ~Session() {
        if (m_login > 0) {
            vexo_soft::vexo_HostMgr_Dev_Logout(m_login);
        }
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    int Login() const { return m_login; }

private:
    const int m_login;
};

/** What one read gave, with a copy of the frame. */
struct Read {
    unsigned channel = 0;
    unsigned stream = 0;
    const unsigned char* bytes = nullptr;  ///< the recorder's memory
    unsigned length = 0;
    unsigned type = 0;
    unsigned flags = 0;
    live::Frame frame;

    bool Audio() const { return type == HOSTMGR_FRAME_AUDIO; }
    unsigned Number() const { return frame.header.frame_no; }
};

/** A live stream buffer. */
class Buffer {
public:
    Buffer(int login, unsigned channel, unsigned stream)
        : m_handle(vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(login, channel, stream)) {}
    ~Buffer() { Destroy(); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    int Handle() const { return m_handle; }

    int Destroy() {
        const int handle = m_handle;
        m_handle = -1;
        return handle > 0 ? vexo_soft::vexo_HostMgr_Dev_DestroyRealStreamBuffer(handle) : -1;
    }

    int EnableAudio(unsigned enable) {
        return vexo_soft::vexo_HostMgr_Dev_RealStreamBufferEnableAudio(m_handle, enable);
    }

    /** The next frame if it is there; it stays held. */
    std::optional<Read> Try() {
        Read read;
        unsigned char* bytes = nullptr;
        if (vexo_soft::vexo_HostMgr_Dev_ReadRealOneFrame(m_handle, &read.channel, &read.stream, &bytes, &read.length,
                                                         &read.type, &read.flags) != 0) {
            return std::nullopt;
        }
        read.bytes = bytes;
        read.frame = live::CopyOf(bytes, {}, VEXO_FALSE);
        return read;
    }

    /** The next frame; nothing when none came in time. */
    std::optional<Read> Next() {
        std::optional<Read> read;
        live::Eventually([&] { return (read = Try()).has_value(); });
        return read;
    }

    /** The next frame of one kind. */
    std::optional<Read> Next(bool audio) {
        std::optional<Read> read;
        do {
            read = Next();
        } while (read && read->Audio() != audio);
        return read;
    }

private:
    int m_handle;
};

/** A test that has the library initialised and nothing in use. */
class LibraryTest : public testing::Test {
protected:
    LibraryTest() {
        vexo_soft::vexo_HostMgr_Dev_init();
        m_before = simulator::control::Outstanding();
        // Nothing is in use but what the alarm thread may have in hand for a moment.
        m_before.erase(std::remove_if(m_before.begin(), m_before.end(),
                                      [](const std::string& line) { return line.rfind("memory: ", 0) == 0; }),
                       m_before.end());
    }

    /** Everything that was taken since is given back, when the alarm thread is done with its pass. */
    void ExpectNothingOutstanding() const {
        std::vector<std::string> outstanding;
        live::Eventually([&] {
            outstanding = simulator::control::Outstanding();
            return outstanding == m_before;
        });
        EXPECT_EQ(outstanding, m_before);
    }

    /** The same, and nothing was done wrong. */
    void ExpectAllGivenBack() const {
        ExpectNothingOutstanding();
        EXPECT_EQ(simulator::control::Complaints(), std::vector<std::string>());
    }

    static long HeldFrames() {
        const std::vector<std::string> lines = simulator::control::Outstanding();
        return std::count_if(lines.begin(), lines.end(),
                             [](const std::string& line) { return line.rfind("frame: ", 0) == 0; });
    }

private:
    std::vector<std::string> m_before;
};

}  // namespace agent

#endif
