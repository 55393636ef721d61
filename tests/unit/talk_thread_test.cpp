// The talk under several threads at once, its own threads running freely: nothing is lost, nothing is left, no call
// waits for ever.
#include "talk_fixture.h"

using testing::ElementsAreArray;
using testing::IsEmpty;

using namespace vexo_soft;

class TalkThreadsAtWork : public TalkFixture {
protected:
    void SetUp() override {
        TalkFixture::SetUp();
        threads.FreeAll();
        ON_CALL(platform, vexo_utility_sleep_ms).WillByDefault([](unsigned int) { std::this_thread::yield(); });
        ON_CALL(platform, vexo_model_play_talking_frame).WillByDefault([this](unsigned int, const unsigned char*) {
            return ++m_played_count, 0;
        });
        ON_CALL(platform, vexo_model_get_talking_frame)
            .WillByDefault([this](unsigned int, unsigned char* buffer, unsigned int) {
                const unsigned int length = ++m_fetched % 16 == 0 ? 5120 : 320;
                const Bytes frame = CapturedFrame(Bytes(320), length);
                memcpy(buffer, frame.data(), frame.size());
                return 0;
            });
    }

    template <typename Action>
    static void OnThreads(int count, Action action) {
        std::vector<std::thread> all;
        for (int number = 0; number < count; ++number)
            all.emplace_back(action, number);
        for (std::thread& thread : all)
            thread.join();
    }

    static void CountBlock(int, int hTalk, unsigned char* data, unsigned int length, void* user) {
        TalkThreadsAtWork* self = static_cast<TalkThreadsAtWork*>(user);
        ++self->m_blocks;
        self->m_bytes += data[0] + length;
        if (self->m_stop_in_callback && self->m_blocks % 3 == 0)
            Stop(hTalk);
    }

    int SetCounter(int hTalk, int hLogin = LOGIN) {
        return vexo_HostMgr_Dev_SetTalkCallback(hLogin, hTalk, CountBlock, this);
    }

    std::atomic<unsigned int> m_fetched{0};
    std::atomic<unsigned int> m_played_count{0};
    std::atomic<unsigned int> m_blocks{0};
    std::atomic<unsigned int> m_bytes{0};
    std::atomic<bool> m_stop_in_callback{false};
};

TEST_F(TalkThreadsAtWork, AllCallsOfOneLoginAtOnce_LeaveNothingBehind) {
    std::atomic<int> talk{0};
    RawConsole([&] {
        OnThreads(8, [&](int number) {
            for (int round = 0; round < 60; ++round) {
                if (number < 2) {
                    const int started = Start();
                    if (started > 0)
                        talk = started;
                } else if (number < 4) {
                    Stop(talk);
                } else if (number < 6) {
                    Input(InputData(Audio(320)), talk);
                } else {
                    SetCounter(talk);
                    platform.Diagnostics().client->diagnose(4000, CollectPrint);
                }
            }
        });
    });
    TakePieces();
}

TEST_F(TalkThreadsAtWork, StopsFromTheCallbackAndFromOutside_MeetWithoutHarm) {
    m_stop_in_callback = true;
    RawConsole([&] {
        OnThreads(4, [&](int number) {
            for (int round = 0; round < 60; ++round) {
                const int talk = Start();
                if (talk <= 0)
                    continue;
                SetCounter(talk);
                while (number % 2 == 0 && Input(InputData(Audio(320)), talk) == 0)
                    std::this_thread::yield();
                Stop(talk);
            }
        });
    });
    EXPECT_GT(m_blocks, 0u);
}

TEST_F(TalkThreadsAtWork, FramesOfOneTalkFromManyThreads_AreAllPlayedOrFreed) {
    const int talk = Start();
    SetCounter(talk);
    OnThreads(6, [talk](int) {
        for (int round = 0; round < 100; ++round)
            EXPECT_EQ(Input(InputData(Audio(320)), talk), 0);
    });
    while (m_played_count < 600)
        std::this_thread::yield();
    EXPECT_EQ(Stop(talk), 0);
    EXPECT_EQ(m_played_count, 600u);
}

TEST_F(TalkThreadsAtWork, LoginsComeTalkAndGo) {
    RawConsole([&] {
        OnThreads(6, [&](int number) {
            for (int round = 0; round < 15; ++round) {
                const int hLogin = LoginAsAdmin();
                ASSERT_GE(hLogin, 1);
                const int talk = Start(number, hLogin);
                EXPECT_GT(talk, 0);
                EXPECT_EQ(SetCounter(talk, hLogin), 0);
                EXPECT_EQ(Input(InputData(Audio(320)), talk, hLogin), 0);
                const int stopped = round % 3 == 0 ? 0 : Stop(round % 3 == 1 ? talk : talk + 100000, hLogin);
                EXPECT_EQ(stopped, 0);
                EXPECT_EQ(vexo_HostMgr_Dev_Logout(hLogin), 0);
            }
        });
    });
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
    EXPECT_TRUE(threads.AllRetrieved());
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}
