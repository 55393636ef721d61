// The live-view object alone, for what the frames of the exported functions never let through: numbers below zero and a
// handle of another login at the object itself, and for the words of a slot.
#include <array>

#include "lv_fixture.h"
#include "vexo_hostmgr_lv.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class LvObject : public HostMgrTest {
protected:
    int Read(int hID, ReadOutputs* out) {
        return m_lv.HostMgr_Dev_ReadRealOneFrame(hID, &out->channel, &out->stream, &out->frame, &out->length,
                                                 &out->info, &out->flags);
    }

    /** The lock's part of the record for one operation that does nothing else. */
    static Lines Locked(const std::string& function) {
        const std::string tags = std::string("(") + LV_LOCK + ", vexo_hostmgr_lv, " + function + ")";
        return {"wr_lock" + tags, "unlock" + tags};
    }

    vexo_hostmgr_lv m_lv;
};

TEST_F(LvObject, CreateForALoginBelowZero_SaysWhyAndTakesNoLock) {
    platform.TakeCalls();
    for (const int hLogin : {-1, INT32_MIN}) {
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_lv.HostMgr_Dev_CreateRealStreamBuffer(hLogin, 3, 2), -1); }),
                  Error("HostMgr_Dev_CreateRealStreamBuffer", "Invalid Param:dwChannel 3, dwStreamIdx 2 \n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(LvObject, ReadOfAHandleBelowZero_FailsSilentlyAndTouchesNothing) {
    platform.TakeCalls();
    for (const int hID : {-1, INT32_MIN, INT32_MIN + 5}) {
        ReadOutputs out;
        EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID, &out), -1); }), "");
        EXPECT_TRUE(out.AllUntouched());
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(LvObject, HandleBelowZero_IsLookedUpAndNotFound) {
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([&] {
                  EXPECT_EQ(m_lv.HostMgr_Dev_ReleaseRealOneFrame(-1), 0);
                  EXPECT_EQ(m_lv.HostMgr_Dev_DestroyRealStreamBuffer(-1), -1);
              }),
              "");
    EXPECT_EQ(Console([&] { EXPECT_EQ(m_lv.HostMgr_Dev_RealStreamBufferEnableAudio(-1, 1), -1); }),
              Error("HostMgr_Dev_RealStreamBufferEnableAudio", "index == -1\n"));
    EXPECT_EQ(platform.TakeCalls(),
              Joined({Locked("HostMgr_Dev_ReleaseRealOneFrame"), Locked("HostMgr_Dev_DestroyRealStreamBuffer"),
                      Locked("HostMgr_Dev_RealStreamBufferEnableAudio")}));
}

TEST_F(LvObject, LowerHalfThatIsNotTheSlotsLogin_IsNotFound) {
    EXPECT_EQ(m_lv.HostMgr_Dev_CreateRealStreamBuffer(5, 1, 1), 5);
    EXPECT_EQ(m_lv.HostMgr_Dev_CreateRealStreamBuffer(6, 1, 1), 0x10006);
    for (const int hID : {6, 0x10005, 7, 0x10000}) {
        ReadOutputs out;
        EXPECT_EQ(Read(hID, &out), -1);
        EXPECT_EQ(m_lv.HostMgr_Dev_DestroyRealStreamBuffer(hID), -1);
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_lv.HostMgr_Dev_RealStreamBufferEnableAudio(hID, 1), -1); }),
                  Error("HostMgr_Dev_RealStreamBufferEnableAudio", "index == -1\n"));
    }
    EXPECT_THAT(With("frame(", platform.TakeCalls()), IsEmpty());
    EXPECT_EQ(m_lv.HostMgr_Dev_DestroyRealStreamBuffer(5), 0);
    EXPECT_EQ(m_lv.HostMgr_Dev_DestroyRealStreamBuffer(0x10006), 0);
}

// The slot keeps the whole login, a handle only its low half: such a buffer cannot be found by its own handle.
TEST_F(LvObject, LoginBeyond16Bits_GetsAHandleThatIsNotFound) {
    EXPECT_EQ(m_lv.HostMgr_Dev_CreateRealStreamBuffer(0x10005, 1, 1), 5);
    EXPECT_EQ(m_lv.HostMgr_Dev_DestroyRealStreamBuffer(5), -1);
    EXPECT_EQ(m_lv.HostMgr_Dev_CreateRealStreamBuffer(7, 1, 1), 0x10007);
}

// ---- the slot's memory ---------------------------------------------------------------------------------------------

/** The object on a slot table that the test can see: 128 slots of fifteen words. */
class LvSlotMemory : public HostMgrTest {
protected:
    using Slot = std::array<unsigned int, 15>;

    void SetUp() override {
        memset(m_slots.data(), 0xA5, sizeof(m_slots));
        ON_CALL(platform, vexo_utility_malloc).WillByDefault(testing::Return(m_slots.data()));
        ON_CALL(platform, vexo_utility_free).WillByDefault(testing::Return());
        m_lv = std::make_unique<vexo_hostmgr_lv>();
        EXPECT_THAT(With("malloc", platform.TakeCalls()), ElementsAre("vexo_utility_malloc(97, 0x80002, 7680, 1)"));
    }

    /** Reads one frame of that list, at that position, with that flag. */
    void ReadFrame(int hID, const TestFrame& frame, const vexo_read_av_list_note& node, VEXO_BOOL noVideo) {
        ON_CALL(platform, vexo_model_first_get_frame)
            .WillByDefault([&frame, node, noVideo](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** given,
                                                   vexo_read_av_list_note* note, VEXO_BOOL* flag) {
                *given = frame.Address();
                *note = node;
                *flag = noVideo;
                return 0;
            });
        ReadOutputs out;
        EXPECT_EQ(m_lv->HostMgr_Dev_ReadRealOneFrame(hID, &out.channel, &out.stream, &out.frame, &out.length, &out.info,
                                                     &out.flags),
                  0);
    }

    std::array<Slot, 128> m_slots;
    std::unique_ptr<vexo_hostmgr_lv> m_lv;
};

TEST_F(LvSlotMemory, Construction_ZeroesEverySlot) {
    EXPECT_THAT(m_slots, Each(Slot{}));
}

TEST_F(LvSlotMemory, Create_FillsItsSlotAlone) {
    m_lv->HostMgr_Dev_CreateRealStreamBuffer(5, 1, 1);
    m_lv->HostMgr_Dev_CreateRealStreamBuffer(0x12345, 256, 2);
    EXPECT_EQ(m_slots[0], (Slot{5, 1, 1, 1, 1, 128, 0, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(m_slots[1], (Slot{0x12345, 256, 2, 1, 1, 128, 0, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(m_slots[2], Slot{});
}

TEST_F(LvSlotMemory, CreateInAFreeSlotWithRemains_ZeroesItFirst) {
    m_slots[0].fill(0xFFFFFFFF);
    m_slots[0][0] = 0;
    m_lv->HostMgr_Dev_CreateRealStreamBuffer(5, 1, 1);
    EXPECT_EQ(m_slots[0], (Slot{5, 1, 1, 1, 1, 128, 0, 0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST_F(LvSlotMemory, ReadVideoThenAudio_KeepsEachInItsPlace) {
    const int hID = m_lv->HostMgr_Dev_CreateRealStreamBuffer(5, 1, 2);
    ReadFrame(hID, TestFrame(1001), {{11, 22}}, 2);
    EXPECT_EQ(m_slots[0], (Slot{5, 1, 2, 0, 1, 2, 11, 22, 0, 0, 0, 2, 1001, 0, 1}));
    ReadFrame(hID, TestFrame(2002), {{33, 44}}, 0);
    EXPECT_EQ(m_slots[0], (Slot{5, 1, 2, 0, 0, 128, 11, 22, 33, 44, 0, 0, 1001, 2002, 1}));
}

TEST_F(LvSlotMemory, ReleaseAndAudioSwitch_ChangeOneWordEach) {
    const int hID = m_lv->HostMgr_Dev_CreateRealStreamBuffer(5, 1, 2);
    ReadFrame(hID, TestFrame(1001), {{11, 22}}, 0);
    m_lv->HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_EQ(m_slots[0], (Slot{5, 1, 2, 0, 1, 2, 11, 22, 0, 0, 1, 0, 1001, 0, 1}));
    m_lv->HostMgr_Dev_RealStreamBufferEnableAudio(hID, 0x80000002);
    EXPECT_EQ(m_slots[0], (Slot{5, 1, 2, 0, 1, 2, 11, 22, 0, 0, 1, 0, 1001, 0, 0x80000002}));
}

TEST_F(LvSlotMemory, Destroy_ZeroesTheWholeSlot) {
    const int hID = m_lv->HostMgr_Dev_CreateRealStreamBuffer(5, 1, 2);
    m_lv->HostMgr_Dev_CreateRealStreamBuffer(5, 1, 2);
    ReadFrame(hID, TestFrame(1001), {{11, 22}}, 1);
    EXPECT_EQ(m_lv->HostMgr_Dev_DestroyRealStreamBuffer(hID), 0);
    EXPECT_EQ(m_slots[0], Slot{});
    EXPECT_NE(m_slots[1], Slot{});
}
