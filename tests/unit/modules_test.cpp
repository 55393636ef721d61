// Construction and destruction of the seven module objects, each alone on the platform.
#include <string.h>

#include "platform_mock.h"
#include "vexo_hostmgr_alarm.h"
#include "vexo_hostmgr_capture.h"
#include "vexo_hostmgr_control.h"
#include "vexo_hostmgr_lv.h"
#include "vexo_hostmgr_playback.h"
#include "vexo_hostmgr_queryfile.h"
#include "vexo_hostmgr_talkback.h"

using testing::_;
using testing::Each;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Return;

using Calls = std::vector<std::string>;

class Modules : public testing::Test {
protected:
    template <typename Module>
    Calls CallsOfConstruction() {
        const Module module;
        return platform.TakeCalls();
    }

    template <typename Module>
    Calls CallsOfDestruction() {
        {
            const Module module;
            platform.TakeCalls();
        }
        return platform.TakeCalls();
    }

    /** The memory that a module allocates, as its construction leaves it. */
    template <typename Module, size_t Size>
    std::vector<unsigned char> MemoryAfterConstruction() {
        alignas(max_align_t) static unsigned char memory[Size];
        memset(memory, 0xA5, sizeof(memory));
        ON_CALL(platform, vexo_utility_malloc(_, _, _, _)).WillByDefault(Return(memory));
        ON_CALL(platform, vexo_utility_free(_, _, _)).WillByDefault(Return());
        const Module module;
        return {std::begin(memory), std::end(memory)};
    }

    Platform platform;
};

// ---- control -------------------------------------------------------------------------------------------------------

TEST_F(Modules, ControlConstruction_MakesItsLock) {
    EXPECT_THAT(CallsOfConstruction<vexo_hostmgr_control>(),
                ElementsAre("vexo_utility_new_lock(97, vexo_hostmgr_control m_lock)"));
}

TEST_F(Modules, ControlDestruction_DeletesItsLock) {
    EXPECT_THAT(
        CallsOfDestruction<vexo_hostmgr_control>(),
        ElementsAre(
            "vexo_utility_delete_lock(vexo_hostmgr_control m_lock, vexo_hostmgr_control, ~vexo_hostmgr_control)"));
}

// ---- live view -----------------------------------------------------------------------------------------------------

TEST_F(Modules, LiveViewConstruction_MakesTableThenLock) {
    EXPECT_THAT(CallsOfConstruction<vexo_hostmgr_lv>(), ElementsAre("vexo_utility_malloc(97, 0x80002, 7680, 1)",
                                                                    "vexo_utility_new_rw_lock(97, vexo_hostmgr_lv)"));
}

TEST_F(Modules, LiveViewConstruction_ZeroesItsTable) {
    EXPECT_THAT((MemoryAfterConstruction<vexo_hostmgr_lv, 7680>()), Each(0));
}

TEST_F(Modules, LiveViewDestruction_FreesTableThenDeletesLock) {
    EXPECT_THAT(CallsOfDestruction<vexo_hostmgr_lv>(),
                ElementsAre("vexo_utility_free(vexo_hostmgr_lv, ~vexo_hostmgr_lv, 0x80002)",
                            "vexo_utility_delete_rw_lock(vexo_hostmgr_lv, vexo_hostmgr_lv, ~vexo_hostmgr_lv)"));
}

// ---- playback ------------------------------------------------------------------------------------------------------

TEST_F(Modules, PlaybackConstruction_MakesItsLock) {
    EXPECT_THAT(CallsOfConstruction<vexo_hostmgr_playback>(),
                ElementsAre("vexo_utility_new_lock(97, vexo_hostmgr_playback lock)"));
}

TEST_F(Modules, PlaybackDestruction_DeletesItsLock) {
    EXPECT_THAT(
        CallsOfDestruction<vexo_hostmgr_playback>(),
        ElementsAre(
            "vexo_utility_delete_lock(vexo_hostmgr_playback lock, vexo_hostmgr_playback, ~vexo_hostmgr_playback)"));
}

// ---- talkback ------------------------------------------------------------------------------------------------------

TEST_F(Modules, TalkbackConstruction_MakesBlockThenBothLocks) {
    EXPECT_THAT(
        CallsOfConstruction<vexo_hostmgr_talkback>(),
        ElementsAre("vexo_utility_malloc(97, 0x80004, 5120, 1)", "vexo_utility_new_lock(97, vexo_hostmgr_talkback)",
                    "vexo_utility_new_lock(97, vexo_hostmgr_talkback play lock)"));
}

TEST_F(Modules, TalkbackConstruction_ZeroesItsBlock) {
    EXPECT_THAT((MemoryAfterConstruction<vexo_hostmgr_talkback, 5120>()), Each(0));
}

TEST_F(Modules, TalkbackDestruction_FreesBlockThenClearsQueueThenDeletesLocks) {
    EXPECT_THAT(
        CallsOfDestruction<vexo_hostmgr_talkback>(),
        ElementsAre(
            "vexo_utility_free(vexo_hostmgr_talkback, ~vexo_hostmgr_talkback, 0x80004)",
            "lock(vexo_hostmgr_talkback play lock, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)",
            "unlock(vexo_hostmgr_talkback play lock, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)",
            "vexo_utility_delete_lock(vexo_hostmgr_talkback play lock, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)",
            "vexo_utility_delete_lock(vexo_hostmgr_talkback, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)"));
}

// ---- alarm ---------------------------------------------------------------------------------------------------------

TEST_F(Modules, AlarmConstruction_MakesItsLock) {
    EXPECT_THAT(CallsOfConstruction<vexo_hostmgr_alarm>(),
                ElementsAre("vexo_utility_new_lock(97, vexo_hostmgr_alarm)"));
}

TEST_F(Modules, AlarmDestruction_DeletesItsLock) {
    EXPECT_THAT(CallsOfDestruction<vexo_hostmgr_alarm>(),
                ElementsAre("vexo_utility_delete_lock(vexo_hostmgr_alarm, vexo_hostmgr_alarm, ~vexo_hostmgr_alarm)"));
}

// ---- record query --------------------------------------------------------------------------------------------------

TEST_F(Modules, QueryConstruction_MakesItsLock) {
    EXPECT_THAT(CallsOfConstruction<vexo_hostmgr_queryfile>(),
                ElementsAre("vexo_utility_new_lock(97, vexo_hostmgr_queryfile)"));
}

TEST_F(Modules, QueryDestruction_DeletesItsLock) {
    EXPECT_THAT(CallsOfDestruction<vexo_hostmgr_queryfile>(),
                ElementsAre("vexo_utility_delete_lock(vexo_hostmgr_queryfile, vexo_hostmgr_queryfile, "
                            "~vexo_hostmgr_queryfile)"));
}

// ---- capture -------------------------------------------------------------------------------------------------------

constexpr unsigned int CAPTURE_TABLE = 576 * sizeof(HostMgrCaptureTask);

TEST_F(Modules, CaptureConstruction_MakesTableThenLock) {
    EXPECT_THAT(CallsOfConstruction<vexo_hostmgr_capture>(),
                ElementsAre("vexo_utility_malloc(97, 0x80007, " + std::to_string(CAPTURE_TABLE) + ", 1)",
                            "vexo_utility_new_rw_lock(97, vexo_hostmgr_capture)"));
}

TEST_F(Modules, CaptureConstruction_ZeroesItsTable) {
    EXPECT_THAT((MemoryAfterConstruction<vexo_hostmgr_capture, CAPTURE_TABLE>()), Each(0));
}

TEST_F(Modules, CaptureDestruction_FreesTableThenDeletesLock) {
    EXPECT_THAT(
        CallsOfDestruction<vexo_hostmgr_capture>(),
        ElementsAre("vexo_utility_free(vexo_hostmgr_capture, ~vexo_hostmgr_capture, 0x80007)",
                    "vexo_utility_delete_rw_lock(vexo_hostmgr_capture, vexo_hostmgr_capture, ~vexo_hostmgr_capture)"));
}

// ---- all seven -----------------------------------------------------------------------------------------------------

using AllModules = testing::Types<vexo_hostmgr_control, vexo_hostmgr_lv, vexo_hostmgr_playback, vexo_hostmgr_talkback,
                                  vexo_hostmgr_alarm, vexo_hostmgr_queryfile, vexo_hostmgr_capture>;

struct ModuleNames {
    template <typename>
    static std::string GetName(int index) {
        static const char* const NAMES[] = {"Control", "LiveView", "Playback", "Talkback", "Alarm", "Query", "Capture"};
        return NAMES[index];
    }
};

template <typename Module>
class EachModule : public Modules {};
TYPED_TEST_SUITE(EachModule, AllModules, ModuleNames);

TYPED_TEST(EachModule, Lifetime_GivesEverythingBack) {
    { const TypeParam module; }
    EXPECT_THAT(this->platform.LiveLocks(), IsEmpty());
    EXPECT_THAT(this->platform.LiveMemory(), IsEmpty());
}

TYPED_TEST(EachModule, Lifetime_PrintsNothing) {
    EXPECT_EQ(RawConsole([] { const TypeParam module; }), "");
}

// ---- assertions ----------------------------------------------------------------------------------------------------

class ModulesDeathTest : public Modules {
protected:
    /** Constructs a module whose nth lock, or allocation, fails. */
    template <typename Module>
    std::function<void()> WithLockFailing(int nth) {
        platform.FailLock(nth);
        return [] { const Module module; };
    }
    template <typename Module>
    std::function<void()> WithMallocFailing(int nth) {
        platform.FailMalloc(nth);
        return [] { const Module module; };
    }
};

TEST_F(ModulesDeathTest, ControlWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_control>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_control", "vexo_hostmgr_control", "m_lock != NULL"));
}

TEST_F(ModulesDeathTest, LiveViewWithoutTable) {
    EXPECT_EXIT(OnConsole(WithMallocFailing<vexo_hostmgr_lv>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_lv", "vexo_hostmgr_lv", "m_lv_info != NULL"));
}

TEST_F(ModulesDeathTest, LiveViewWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_lv>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_lv", "vexo_hostmgr_lv", "m_lock != NULL"));
}

// The recorder's operators know this line number and the record query's.
TEST_F(ModulesDeathTest, PlaybackWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_playback>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_playback", "vexo_hostmgr_playback", 128, "m_lock != NULL"));
}

TEST_F(ModulesDeathTest, TalkbackWithoutBlock) {
    EXPECT_EXIT(OnConsole(WithMallocFailing<vexo_hostmgr_talkback>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_talkback", "vexo_hostmgr_talkback", "NULL != m_TalkAudioData.audioData"));
}

TEST_F(ModulesDeathTest, TalkbackWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_talkback>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_talkback", "vexo_hostmgr_talkback", "m_lock != NULL"));
}

TEST_F(ModulesDeathTest, TalkbackWithoutPlayLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_talkback>(2)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_talkback", "vexo_hostmgr_talkback", "m_TalkPlayLock != NULL"));
}

TEST_F(ModulesDeathTest, AlarmWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_alarm>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_alarm", "vexo_hostmgr_alarm", "m_lock != NULL"));
}

TEST_F(ModulesDeathTest, QueryWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_queryfile>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_queryfile", "vexo_hostmgr_queryfile", 18, "m_inquyre_lock != NULL"));
}

TEST_F(ModulesDeathTest, CaptureWithoutTable) {
    EXPECT_EXIT(OnConsole(WithMallocFailing<vexo_hostmgr_capture>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_capture", "vexo_hostmgr_capture", "m_capture_info != NULL"));
}

TEST_F(ModulesDeathTest, CaptureWithoutLock) {
    EXPECT_EXIT(OnConsole(WithLockFailing<vexo_hostmgr_capture>(1)), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_capture", "vexo_hostmgr_capture", "m_lock != NULL"));
}
