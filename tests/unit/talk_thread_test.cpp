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

    static void CountBlock(int hLogin, int hTalk, unsigned char* data, unsigned int length, void* user) {
        TalkThreadsAtWork* self = static_cast<TalkThreadsAtWork*>(user);
        ++self->m_blocks;
        self->m_bytes += data[0] + length;
        if (self->m_stop_in_callback && self->m_blocks % 3 == 0)
            Stop(hTalk, hLogin);
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

// Stops with a handle of an earlier talk leave a talk behind; the login that comes and goes makes room again.
TEST_F(TalkThreadsAtWork, AllCallsOfOneLoginAtOnce_LeaveNothingBehind) {
    std::atomic<int> talk{1};
    const auto renew = [this] {
        vexo_HostMgr_Dev_Logout(LOGIN);
        platform.NextLogin(LOGIN);
        LoginAsAdmin();
    };
    const std::vector<std::function<void()>> calls = {
        [&] {
            const int started = Start();
            if (started > 0)
                talk = started;
        },
        [&] { Stop(talk); },
        [&] { Input(InputData(Audio(320)), talk); },
        [&] { SetCounter(talk); },
        [this] { platform.Diagnostics().client->diagnose(4000, CollectPrint); },
    };
    std::atomic<int> busy{7};
    RawConsole([&] {
        OnThreads(8, [&](int number) {
            if (number == 7) {
                while (busy != 0)
                    renew();
                return;
            }
            for (int round = 0; round < 60; ++round)
                calls[static_cast<size_t>(number) % calls.size()]();
            --busy;
        });
    });
    TakePieces();
}

// A stop meets the next start: each talk that began can be ended by who began it, and none waits for another's thread.
TEST_F(TalkThreadsAtWork, TalksOfOneLoginInTurn_EachEndsWithItsOwnStop) {
    std::atomic<int> talks{0};
    RawConsole([&] {
        OnThreads(6, [&](int number) {
            for (int round = 0; round < 40; ++round) {
                const int talk = Start();
                if (talk <= 0)
                    continue;
                ++talks;
                EXPECT_EQ(SetCounter(talk), 0);
                for (int frame = 0; frame < number; ++frame)
                    EXPECT_EQ(Input(InputData(Audio(320)), talk), 0);
                EXPECT_EQ(Stop(talk), 0);
            }
        });
    });
    EXPECT_GT(talks, 0);
    EXPECT_EQ(threads.Count(), static_cast<size_t>(talks));
    EXPECT_TRUE(threads.AllRetrieved());
}

TEST_F(TalkThreadsAtWork, StopsFromTheCallbackAndFromOutside_EndTheTalkOnce) {
    m_stop_in_callback = true;
    LogInAll({OTHER_LOGIN});
    std::atomic<int> talks{0};
    RawConsole([&] {
        OnThreads(2, [&](int number) {
            const int hLogin = number == 0 ? LOGIN : OTHER_LOGIN;
            for (int round = 0; round < 60; ++round) {
                const int talk = Start(0, hLogin);
                ASSERT_GT(talk, 0);
                ++talks;
                SetCounter(talk, hLogin);
                for (int frame = 0; frame < round; ++frame)
                    Input(InputData(Audio(320)), talk, hLogin);
                Stop(talk, hLogin);
            }
        });
    });
    EXPECT_EQ(threads.Count(), static_cast<size_t>(talks));
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
