// Eight threads that talk, take alarms, move cameras, show mosaics, look at diagnostics, log in and log out, all at
// once: nothing breaks, nothing is left, nothing is complained of. A few seconds in the ordinary run; as many as
// HOSTMGR_SOAK_SECONDS says, such as 60, on demand.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <iterator>
#include <list>
#include <random>
#include <thread>

#include "agent.h"
#include "alarm_ear.h"
#include "talker.h"

namespace control = simulator::control;
using agent::AlarmEar;
using agent::Buffer;
using agent::Session;
using agent::Talker;
using std::chrono::steady_clock;

namespace {

constexpr unsigned CHANNELS = 4;
const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "soak test",
    "channels": 4,
    "cameras": [{"main": {"width": 320, "height": 240, "fps": 12, "gop": 12}, "sub": {"width": 128, "height": 96}}],
    "zero_channel": {"width": 640, "height": 360, "fps": 12, "gop": 12, "kbps": 1000},
    "events": [{"kind": "motion", "channel": 1, "for": 2, "every": 3}],
    "recordings": {"live": "off", "history": {"segments": 0}}
})json"));

constexpr int USUAL_SECONDS = 3;

steady_clock::duration Length() {
    const char* seconds = getenv("HOSTMGR_SOAK_SECONDS");
    return std::chrono::seconds(seconds != nullptr ? atoi(seconds) : USUAL_SECONDS);
}

/** What the threads share: a login that lasts, one that is replaced again and again, and what went wrong. */
struct Soak {
    Session lasting;
    std::atomic<int> passing{vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr)};
    std::atomic<bool> stop{false};
    std::atomic<int> failures{0};

    void Expect(bool right, const char* what) {
        if (!right) {
            ++failures;
            fprintf(stderr, "soak: %s\n", what);
        }
    }
};

/** Each thread's own, the same in every run. */
class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    unsigned operator()() { return static_cast<unsigned>(m_engine()); }

private:
    std::minstd_rand m_engine;
};

void Doze(Random& random, unsigned most_ms = 20) {
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % (most_ms + 1)));
}

// ---- talk ----------------------------------------------------------------------------------------------------------

void StopFromCallback(int login, int talk, unsigned char*, unsigned, void* stopped) {
    vexo_soft::vexo_HostMgr_Dev_StopTalk(login, talk);
    *static_cast<std::atomic<bool>*>(stopped) = true;
}

void EchoFromCallback(int login, int talk, unsigned char* bytes, unsigned length, void*) {
    vexo_soft::vexo_HostMgr_Dev_InputTalkData(login, talk, reinterpret_cast<char*>(bytes), length);
}

/** One talk on a login, with sound both ways; it is stopped from outside, or by its own callback. */
void TalkOnce(int login, Random& random, Soak* soak) {
    Talker talker(login, static_cast<int>(random() % (CHANNELS + 1)));
    if (talker.Handle() <= 0) {
        return;  // of a login whose talk is another thread's at the moment
    }
    std::atomic<bool> stopped{false};
    const bool from_callback = random() % 3 == 0;
    soak->Expect(talker.Listen(from_callback ? StopFromCallback : EchoFromCallback, &stopped) == 0, "no talk callback");
    for (unsigned i = random() % 20; i > 0 && !stopped; --i) {
        const int said = talker.Say(agent::TalkBlock(HOSTMGR_TALK_G711U, std::vector<unsigned char>(320, 0x7F)));
        soak->Expect(said == 0 || from_callback, "a block was refused");
        Doze(random);
    }
    // Stopped by its callback it is not stopped again: that could hit the talk that another thread has begun meanwhile.
    if (from_callback) {
        soak->Expect(live::Eventually([&] { return stopped.load(); }), "a talk was not stopped by its callback");
        talker.Forget();
    } else {
        soak->Expect(talker.Stop() == 0, "a talk could not be stopped");
    }
}

void TalkAlone(Random& random, Soak* soak) {
    const Session session;
    for (int i = 0; i < 3; ++i) {
        TalkOnce(session.Login(), random, soak);
    }
}

/** Two threads, one login: one talk at a time, now of this one, now of that one. */
void TalkTogether(Random& random, Soak* soak) {
    TalkOnce(soak->lasting.Login(), random, soak);
    Doze(random);
}

// ---- alarms --------------------------------------------------------------------------------------------------------

void LeaveFromCallback(int login, int, int, unsigned, unsigned char*, unsigned, void* left) {
    vexo_soft::vexo_HostMgr_Dev_Logout(login);
    static_cast<std::atomic<int>*>(left)->store(login);
}

void LookAtStatus(int login) {
    _tagVexoHostMgrALarmStatusInfo* list = nullptr;
    unsigned count = 0;
    if (vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(login, &list, &count) == 0) {
        vexo_soft::vexo_HostMgr_Dev_ReleaseAlarmStatus(list);
    }
}

void Switch(int login, uint32_t on) {
    vexo_soft::vexo_HostMgr_Dev_Control(login, HOSTMGR_CONTROL_ALARM_ENABLE, 0, 0, &on, sizeof on, nullptr, 0, nullptr,
                                        0);
}

/** Subscriptions that come and go; now and then a login that its own callback ends. */
void TakeAlarms(Random& random, Soak* soak) {
    static AlarmEar& ear = agent::NewAlarmEar();
    static std::atomic<int>& left = *new std::atomic<int>(0);
    const auto subscribe = vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback;
    control::SetEvent("motion", 1 + random() % CHANNELS, random() % 2 != 0);
    control::SetRawEvent(static_cast<unsigned char>(random() % 7), static_cast<unsigned char>(25 + random() % 5),
                         random() % 2, random() % 2, random() % 2 != 0);
    const int passing = soak->passing;
    subscribe(passing, static_cast<int>(random() % 2), 1, random() % 4 != 0 ? AlarmEar::Hear : nullptr, &ear);
    Switch(passing, random() % 2);
    LookAtStatus(soak->lasting.Login());
    if (random() % 50 == 0) {
        control::SetEvent("shelter", 1, true);  // so that there is something to be told
        left = 0;
        const int login = vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr);
        soak->Expect(login > 0 && subscribe(login, 0, 1, LeaveFromCallback, &left) == 0, "no alarm callback");
        soak->Expect(live::Eventually([&] { return left == login; }), "nobody logged out from the alarm callback");
    }
    Doze(random);
}

// ---- cameras, mosaic -----------------------------------------------------------------------------------------------

void MoveCameras(Random& random, Soak* soak) {
    _tagVexoHostMgrPtzCmd order = {random() % 44, random() % 9, random() % 9, random() % 9, {}};
    const int login = random() % 2 != 0 ? soak->lasting.Login() : soak->passing.load();
    const int result = vexo_soft::vexo_HostMgr_Dev_Control(login, HOSTMGR_CONTROL_PTZ, static_cast<int>(random() % 3),
                                                           static_cast<int>(random() % 5), nullptr, 0, &order,
                                                           sizeof order, nullptr, 0);
    soak->Expect(result == 0 || login != soak->lasting.Login(), "a PTZ command was refused");
    _tagVexoHostMgrRecordCmd record = {random() % 5, random() % 4, {}};
    vexo_soft::vexo_HostMgr_Dev_Control(login, HOSTMGR_CONTROL_RECORD, 1, CHANNELS, nullptr, 0, &record, sizeof record,
                                        nullptr, 0);
    Doze(random);
}

/** Frames are read on a login of the thread's own: those that are held as a login ends stay held. */
void ShowMosaics(Random& random, Soak* soak) {
    const Session session;
    unsigned channels[70] = {1, 2, 3, 4};
    const auto count = [&] { return 1 + random() % 70; };
    const int zero = vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(session.Login(), 0, count(), channels);
    soak->Expect(zero == session.Login(), "the zero channel does not start");
    for (int i = 0; i < 30; ++i) {
        unsigned char* bytes = nullptr;
        unsigned length = 0;
        unsigned type = 0;
        vexo_soft::vexo_HostMgr_Dev_ReadZeroCodecStream(zero, 0, &bytes, &length, &type);
        vexo_soft::vexo_HostMgr_Dev_SetZeroCodecMode(random() % 2 != 0 ? zero : soak->passing.load(), 0, count(),
                                                     channels);
        Doze(random);
    }
    soak->Expect(vexo_soft::vexo_HostMgr_Dev_StopZeroCodec(zero) == 0, "the zero channel does not stop");
}

// ---- diagnostics, logins -------------------------------------------------------------------------------------------

void LookAtDiagnostics(Random& random, Soak* soak) {
    soak->Expect(!control::Diagnose(random() % 6 * 1000 + 1).empty(), "an empty dump");
    Doze(random, 5);
}

/** Many logins with stream buffers; the one that passes is replaced under everybody's feet. */
void ComeAndGo(Random& random, Soak* soak) {
    std::list<Session> sessions(1 + random() % 20);
    for (const Session& session : sessions) {
        soak->Expect(session.Login() > 0, "no login");
        Buffer buffer(session.Login(), 1 + random() % CHANNELS, HOSTMGR_STREAM_SUB);
        buffer.Try();
        soak->Expect(buffer.Destroy() == 0, "a stream buffer is gone");
    }
    const int next = vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr);
    soak->Expect(next > 0, "no login");
    vexo_soft::vexo_HostMgr_Dev_Logout(soak->passing.exchange(next));
    Doze(random);
}

struct Task {
    const char* name;
    void (*turn)(Random& random, Soak* soak);
};
constexpr Task TASKS[] = {
    {"talks of their own", TalkAlone},
    {"talks on one login", TalkTogether},
    {"talks on one login", TalkTogether},
    {"alarms", TakeAlarms},
    {"cameras", MoveCameras},
    {"mosaics", ShowMosaics},
    {"diagnostics", LookAtDiagnostics},
    {"logins", ComeAndGo},
};

using SoakTest = agent::LibraryTest;

TEST_F(SoakTest, EightThreadsAtOnce_NothingBreaksAndNothingIsLeft) {
    {
        Soak soak;
        ASSERT_GT(soak.passing, 0);
        constexpr size_t COUNT = std::size(TASKS);
        unsigned turns[COUNT] = {};
        std::vector<std::thread> threads;
        for (size_t i = 0; i < COUNT; ++i) {
            threads.emplace_back([&soak, &turns, i] {
                Random random(static_cast<unsigned>(i + 1));
                do {
                    TASKS[i].turn(random, &soak);
                    ++turns[i];
                } while (!soak.stop);
            });
        }
        std::this_thread::sleep_for(Length());
        soak.stop = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (size_t i = 0; i < COUNT; ++i) {
            fprintf(stderr, "soak: %u turns of %s\n", turns[i], TASKS[i].name);
        }
        EXPECT_EQ(soak.failures, 0);
        vexo_soft::vexo_HostMgr_Dev_Logout(soak.passing);
    }
    ExpectAllGivenBack();
}

}  // namespace
