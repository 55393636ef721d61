// Logins and live view under several threads: the table and the slots stay whole, and a module object lives until the
// last call or dump that found it lets go, while whoever unlinks it does not wait.
#include "lv_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace vexo_soft;

/** Runs an action on so many threads, with the thread's number, and waits for all of them. */
template <typename Action>
static void OnThreads(int count, Action action) {
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number)
        threads.emplace_back(action, number);
    for (std::thread& thread : threads)
        thread.join();
}

static void OnAnotherThread(const std::function<void()>& action) {
    std::thread(action).join();
}

/** Lists whose only frame is always there, for any number of threads. */
class SessionThreads : public LoginFixture {
protected:
    void SetUp() override {
        LoginFixture::SetUp();
        ON_CALL(platform, vexo_model_first_get_frame)
            .WillByDefault([this](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** frame,
                                  vexo_read_av_list_note*, VEXO_BOOL*) { return Give(frame); });
        ON_CALL(platform, vexo_model_get_frame)
            .WillByDefault([this](unsigned int, vexo_user_id, vexo_enc_str_type, const vexo_read_av_list_note*,
                                  unsigned char** frame, vexo_read_av_list_note*, VEXO_BOOL*) { return Give(frame); });
    }

    int Give(unsigned char** frame) const {
        *frame = m_frame.Address();
        return 0;
    }

    static int Read(int hID) {
        ReadOutputs out;
        return vexo_HostMgr_Dev_ReadRealOneFrame(hID, &out.channel, &out.stream, &out.frame, &out.length, &out.info,
                                                 &out.flags);
    }

    const TestFrame m_frame{1};
};

// ---- at work at once -----------------------------------------------------------------------------------------------

TEST_F(SessionThreads, EightThreadsLogIn_EachTakesSlotsOfItsOwn) {
    OnThreads(8, [](int) {
        for (int login = 0; login < 16; ++login)
            EXPECT_GE(LoginAsAdmin(), 1);
    });
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(128)));
    for (int handle = 1; handle <= 128; ++handle)
        EXPECT_TRUE(IsLoggedIn(handle)) << handle;
    RawConsole([] { EXPECT_EQ(LoginAsAdmin(), -1); });
}

TEST_F(SessionThreads, EightThreadsLogInAndOutWhileFramesAreRead_NothingIsLostOrLeft) {
    LogInAll({0x501});
    const int first = vexo_HostMgr_Dev_CreateRealStreamBuffer(0x501, 1, 1);
    const int second = vexo_HostMgr_Dev_CreateRealStreamBuffer(0x501, 1, 1);
    std::atomic<int> busy{8};
    OnThreads(11, [&](int number) {
        if (number < 8) {
            for (int round = 0; round < 20; ++round)
                EXPECT_EQ(vexo_HostMgr_Dev_Logout(LoginRemotely()), 0);
            --busy;
            return;
        }
        while (busy != 0) {
            if (number == 10)
                platform.Diagnostics().client->diagnose(1000, CollectPrint);
            else
                EXPECT_EQ(Read(number == 8 ? first : second), 0);
        }
    });
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
    EXPECT_EQ(platform.LiveMemory().size(), 3u);
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

// The authority of a record changes under the table lock alone, which the listing does not take.
TEST_F(SessionThreads, LoginsComeAndGoWhileTheyAreListed_EachIsListedWhole) {
    ON_CALL(platform, vexo_model_get_usr_authority).WillByDefault([](const char*, vexo_dev_usr_authority* authority) {
        authority->level_a = 1;
        return 0;
    });
    std::atomic<int> busy{4};
    OnThreads(5, [&](int number) {
        if (number < 4) {
            for (int round = 0; round < 40; ++round)
                EXPECT_EQ(vexo_HostMgr_Dev_Logout(LoginRemotely()), 0);
            --busy;
            return;
        }
        do {
            TakePieces();
            platform.Diagnostics().client->diagnose(0, CollectPrint);
            EXPECT_EQ(TakePieces().size() % 3, 1u) << "a heading, and three lines a login";
        } while (busy != 0);
    });
}

TEST_F(SessionThreads, BuffersOfOneLogin_AreOpenedReadAndClosedByManyThreads) {
    LogInAll({0x501});
    OnThreads(4, [](int number) {
        for (int round = 0; round < 50; ++round) {
            const int hID = vexo_HostMgr_Dev_CreateRealStreamBuffer(0x501, static_cast<unsigned int>(number + 1), 1);
            EXPECT_EQ(Read(hID), 0);
            EXPECT_EQ(vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 0), 0);
            EXPECT_EQ(Read(hID), 0);
            EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(hID), 0);
            EXPECT_EQ(vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID), 0);
        }
    });
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(0x501, 1, 1), 0x501);
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_F(SessionThreads, OneBufferReadByManyThreads_EachFrameIsReleasedOnce) {
    LogInAll({0x501});
    const int hID = vexo_HostMgr_Dev_CreateRealStreamBuffer(0x501, 1, 1);
    OnThreads(4, [hID](int) {
        for (int round = 0; round < 50; ++round)
            EXPECT_EQ(Read(hID), 0);
    });
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    const Lines calls = platform.TakeCalls();
    EXPECT_EQ(With("_get_frame(", calls).size(), 200u);
    EXPECT_EQ(With("_rel_frame(", calls).size(), 200u);
}

// ---- unlinked while in use -----------------------------------------------------------------------------------------

/** A login of the handle 1 in slot 0; while its buffer is read, another thread does something to it. */
class ObjectInUse : public SessionThreads {
protected:
    void SetUp() override {
        SessionThreads::SetUp();
        LogInAll({1});
        m_hID = vexo_HostMgr_Dev_CreateRealStreamBuffer(1, 1, 1);
        m_lock = &platform.RwLock(LV_LOCK);
    }

    /** Reads; during the call to the recorder the other thread comes and goes. */
    int ReadWhile(const std::function<void()>& other) {
        ON_CALL(platform, vexo_model_first_get_frame)
            .WillByDefault([this, other](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** frame,
                                         vexo_read_av_list_note*, VEXO_BOOL*) {
                OnAnotherThread(other);
                m_deleted_in_use = m_lock->Deleted();
                return Give(frame);
            });
        platform.TakeCalls();
        return Read(m_hID);
    }

    void ExpectDestroyedAfterUse() {
        EXPECT_FALSE(m_deleted_in_use);
        EXPECT_TRUE(m_lock->Deleted());
        const Lines calls = With("vexo_hostmgr_lv,", platform.TakeCalls());
        ASSERT_GE(calls.size(), 3u);
        EXPECT_THAT(Lines(calls.end() - 3, calls.end()),
                    ElementsAre("unlock(vexo_hostmgr_lv, vexo_hostmgr_lv, HostMgr_Dev_ReadRealOneFrame)",
                                "vexo_utility_free(vexo_hostmgr_lv, ~vexo_hostmgr_lv, 0x80002)",
                                "vexo_utility_delete_rw_lock(vexo_hostmgr_lv, vexo_hostmgr_lv, ~vexo_hostmgr_lv)"));
    }

    int m_hID = 0;
    MockRwLock* m_lock = nullptr;
    bool m_deleted_in_use = false;
};

TEST_F(ObjectInUse, LogoutDuringARead_DoesNotWaitAndTheReadEndsTheObject) {
    EXPECT_EQ(ReadWhile([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(1), 0); }), 0);
    ExpectDestroyedAfterUse();
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

TEST_F(ObjectInUse, LogoutDuringARead_DestroysTheOtherObjectsOnTheSpotAndInOrder) {
    Lines left;
    ReadWhile([&] {
        vexo_HostMgr_Dev_Logout(1);
        left = platform.LiveLocks();
    });
    EXPECT_THAT(left, ElementsAre(TABLE_LOCK, LV_LOCK));
    EXPECT_THAT(Without("vexo_hostmgr_lv", With("vexo_utility_delete_", platform.TakeCalls())),
                ElementsAreArray(Without("vexo_hostmgr_lv", ModulesEnded())));
}

TEST_F(ObjectInUse, LogoutDuringARead_UnlinksTheLoginAtOnce) {
    bool found = true;
    std::string listing;
    ReadWhile([&] {
        vexo_HostMgr_Dev_Logout(1);
        found = IsLoggedIn(1);
        listing = Listing();
    });
    EXPECT_FALSE(found);
    EXPECT_EQ(listing, "");
}

TEST_F(ObjectInUse, NewLoginInTheSlotDuringARead_HasAnObjectOfItsOwn) {
    int created = 0;
    EXPECT_EQ(ReadWhile([&] {
                  vexo_HostMgr_Dev_Logout(1);
                  LoginAsAdmin();
                  created = vexo_HostMgr_Dev_CreateRealStreamBuffer(2, 1, 1);
              }),
              0);
    EXPECT_EQ(created, 2);
    EXPECT_TRUE(m_lock->Deleted());
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
}

// A failed login in slot 1 releases the login whose handle is 1.
TEST_F(ObjectInUse, FailureExitDuringARead_DoesNotFreeWhatIsInUse) {
    EXPECT_EQ(ReadWhile([this] { FailLogin(); }), 0);
    ExpectDestroyedAfterUse();
    EXPECT_EQ(Listing(), "");
}

TEST_F(ObjectInUse, LogoutDuringADump_DoesNotWaitAndTheDumpEndsTheObject) {
    ON_CALL(platform, vexo_rmta_dump_frame_list)
        .WillByDefault([this](unsigned int, vexo_enc_str_type, vexo_print_func) {
            OnAnotherThread([] { EXPECT_EQ(vexo_HostMgr_Dev_Logout(1), 0); });
            m_deleted_in_use = m_lock->Deleted();
        });
    TakePieces();
    platform.Diagnostics().client->diagnose(1000, CollectPrint);
    EXPECT_FALSE(m_deleted_in_use);
    EXPECT_TRUE(m_lock->Deleted());
    EXPECT_THAT(TakePrinted(), HasSubstr("</Host_0>\n"));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}
