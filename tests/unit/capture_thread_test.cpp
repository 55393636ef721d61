// Picture capture under several threads: agents start, trigger and stop tasks while the worker runs as fast as it can,
// and one worker is made however many start at once.
#include "login_fixture.h"

using testing::ElementsAreArray;
using testing::IsEmpty;

using namespace vexo_soft;

/** A recorder with one disk that always has a picture; the worker is a real thread and does not sleep. */
class CaptureThreads : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;

    void SetUp() override {
        LoginFixture::SetUp();
        ON_CALL(platform, vexo_utility_creat_thread)
            .WillByDefault([this](const vexo_thread_creat_ctl* ctl, const char*, unsigned long* id) {
                ++m_workers;
                *id = 7001;
                m_worker = std::thread(ctl->entry, ctl->argument);
                return 0;
            });
        ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault([this](unsigned long) {
            m_worker.join();
            return 0;
        });
        ON_CALL(platform, vexo_utility_sleep_ms).WillByDefault([this](unsigned int) {
            AdvanceClock(1000);
            platform.TakeCalls();
            std::this_thread::yield();
        });
        ON_CALL(platform, vexo_model_get_hard_disk_num).WillByDefault([](unsigned int* num) {
            *num = 1;
            return 0;
        });
        ON_CALL(platform, vexo_model_get_hard_disk_info).WillByDefault([](unsigned int, vexo_hard_disk_info* disk) {
            disk->identity.type = 1;
            disk->state = 3;
            disk->partition_num = 1;
            disk->partition[0].size = 2000;
            return 0;
        });
        ON_CALL(platform, vexo_utility_is_file_exist).WillByDefault(testing::Return(1));
        ON_CALL(platform, unlink).WillByDefault(testing::Return(0));
        ON_CALL(platform, vexo_model_capture(testing::_, testing::_, testing::_, testing::_))
            .WillByDefault([](unsigned int, unsigned int, const char*, unsigned int* size) {
                *size = 1;
                return 0;
            });
        LogInAll({LOGIN});
    }

    static void OnPicture(int, _tagVexoCapturePictureInfo*, void* user) { ++*static_cast<std::atomic<int>*>(user); }

    int Start(uint32_t type) {
        _tagVexoCapturePictureCfg cfg = {};
        cfg.dwType = type;
        cfg.dwPostTime = 0xFFFFFFFF;
        return vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 1, 1, &cfg, OnPicture, &m_pictures);
    }
    void WaitForPictures(int count) const {
        while (m_pictures < count)
            std::this_thread::yield();
    }

    template <typename Action>
    static void OnThreads(int count, Action action) {
        std::vector<std::thread> threads;
        for (int number = 0; number < count; ++number)
            threads.emplace_back(action, number);
        for (std::thread& thread : threads)
            thread.join();
    }

    std::atomic<int> m_workers{0};
    std::atomic<int> m_pictures{0};
    std::thread m_worker;
};

TEST_F(CaptureThreads, TasksStartedTriggeredAndStoppedWhileTheWorkerRuns_NothingIsLostOrLeft) {
    RawConsole([this] {
        OnThreads(4, [this](int number) {
            for (int round = 0; round < 10; ++round) {
                const int hCapture = Start(number % 2 == 0 ? 0 : 2);
                EXPECT_GE(hCapture, 1);
                EXPECT_EQ(vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnPicture, &m_pictures), 0);
                WaitForPictures(m_pictures + 1);
                EXPECT_EQ(vexo_HostMgr_Dev_StopCapturePicture(hCapture), 0);
            }
        });
        EXPECT_EQ(Start(2), LOGIN);
        WaitForPictures(m_pictures + 3);
        EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    });
    EXPECT_EQ(m_workers, 1);
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(0)));
}

TEST_F(CaptureThreads, FirstTasksStartedAtOnce_MakeOneWorker) {
    std::atomic<int> ready{0};
    OnThreads(8, [&](int) {
        ++ready;
        while (ready < 8)
            std::this_thread::yield();
        EXPECT_GE(Start(2), 1);
    });
    EXPECT_EQ(m_workers, 1);
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

TEST_F(CaptureThreads, StoppedTask_IsNeverReportedAgain) {
    Start(2);
    std::atomic<int> own{0};
    _tagVexoCapturePictureCfg cfg = {};
    cfg.dwType = 2;
    for (int round = 0; round < 10; ++round) {
        const int hCapture = vexo_HostMgr_Dev_StartCapturePicture(LOGIN, 2, 1, &cfg, OnPicture, &own);
        WaitForPictures(m_pictures + 2);
        RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_StopCapturePicture(hCapture), 0); });
        const int reported = own;
        WaitForPictures(m_pictures + 2);
        EXPECT_EQ(own, reported);
    }
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
}
