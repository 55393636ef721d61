// Console messages, assertions, lock scopes, use counts and copies.
#include "hostmgr_common.h"

#include <string.h>

#include <thread>

#include "platform_mock.h"

using testing::_;
using testing::DoAll;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Return;

static constexpr HostMgrSite SITE = {"HostMgrDoThings", 42};

// ---- console messages ----------------------------------------------------------------------------------------------

TEST(Logging, FixedErrorText_IsRedAndEndsWithPutsNewlineBeforeReset) {
    EXPECT_EQ(RawConsole([] { HostMgrPuts(HOSTMGR_LEVEL_ERROR, SITE, "not init"); }),
              "\033[0;32;31m[HOSTMGR] ERROR! HostMgrDoThings[42]:not init\n\033[m");
}

TEST(Logging, FixedWarningText_IsYellow) {
    EXPECT_EQ(RawConsole([] { HostMgrPuts(HOSTMGR_LEVEL_WARNING, SITE, "careful"); }),
              "\033[1;33m[HOSTMGR] WARNING! HostMgrDoThings[42]:careful\n\033[m");
}

TEST(Logging, FixedDebugText_IsGreen) {
    EXPECT_EQ(RawConsole([] { HostMgrPuts(HOSTMGR_LEVEL_DEBUG, SITE, "passing by"); }),
              "\033[0;32;32m[HOSTMGR] DEBUG! HostMgrDoThings[42]:passing by\n\033[m");
}

TEST(Logging, FixedText_IsNoFormat) {
    EXPECT_EQ(RawConsole([] { HostMgrPuts(HOSTMGR_LEVEL_DEBUG, SITE, "100%s"); }),
              "\033[0;32;32m[HOSTMGR] DEBUG! HostMgrDoThings[42]:100%s\n\033[m");
}

TEST(Logging, FormattedText_BringsItsOwnNewline) {
    EXPECT_EQ(RawConsole([] { HostMgrPrintf(HOSTMGR_LEVEL_ERROR, SITE, "hLogin:%d not logged in!!\n", 7); }),
              "\033[0;32;31m[HOSTMGR] ERROR! HostMgrDoThings[42]:hLogin:7 not logged in!!\n\033[m");
}

TEST(Logging, FormattedTextWithoutNewline_GetsNone) {
    EXPECT_EQ(RawConsole([] { HostMgrPrintf(HOSTMGR_LEVEL_WARNING, SITE, "%s", "half a line"); }),
              "\033[1;33m[HOSTMGR] WARNING! HostMgrDoThings[42]:half a line\033[m");
}

static int LogFixedHere() {
    HOSTMGR_PUTS(ERROR, "here");
    return __LINE__ - 1;
}

TEST(Logging, FixedTextMacro_NamesFunctionAndLine) {
    int line = 0;
    const std::string console = RawConsole([&line] { line = LogFixedHere(); });
    EXPECT_EQ(console, "\033[0;32;31m[HOSTMGR] ERROR! LogFixedHere[" + std::to_string(line) + "]:here\n\033[m");
}

static int LogFormattedHere() {
    HOSTMGR_PRINTF(WARNING, "%s %d\n", "here", 3);
    return __LINE__ - 1;
}

TEST(Logging, FormattedTextMacro_NamesFunctionAndLine) {
    int line = 0;
    const std::string console = RawConsole([&line] { line = LogFormattedHere(); });
    EXPECT_EQ(console, "\033[1;33m[HOSTMGR] WARNING! LogFormattedHere[" + std::to_string(line) + "]:here 3\n\033[m");
}

static void LogMany(int thread) {
    for (int message = 0; message < 500; ++message) {
        HostMgrPrintf(HOSTMGR_LEVEL_ERROR, SITE, "thread %d\n", thread);
        HostMgrPuts(HOSTMGR_LEVEL_WARNING, SITE, "puts");
    }
}

/** How often each whole message stands in the console; what is not a whole message counts under "". */
static std::map<std::string, int> CountMessages(std::string console, const std::vector<std::string>& messages) {
    std::map<std::string, int> counts;
    size_t at = 0;
    while (at < console.size()) {
        const auto starts_here = [&](const std::string& text) { return console.compare(at, text.size(), text) == 0; };
        const auto found = std::find_if(messages.begin(), messages.end(), starts_here);
        ++counts[found != messages.end() ? *found : ""];
        at += found != messages.end() ? found->size() : 1;
    }
    return counts;
}

TEST(Logging, ThreadsAtOnce_KeepTheirMessagesWhole) {
    constexpr int THREADS = 4;
    std::vector<std::string> messages = {Warning("HostMgrDoThings", "puts\n")};
    std::map<std::string, int> expected = {{messages[0], THREADS * 500}};
    for (int thread = 0; thread < THREADS; ++thread) {
        messages.push_back(Error("HostMgrDoThings", "thread " + std::to_string(thread) + "\n"));
        expected[messages.back()] = 500;
    }
    const std::string console = Console([] {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < THREADS; ++thread)
            threads.emplace_back(LogMany, thread);
        for (std::thread& thread : threads)
            thread.join();
    });
    EXPECT_EQ(CountMessages(console, messages), expected);
}

// ---- assertions ----------------------------------------------------------------------------------------------------

static void AssertAround(int value) {
    HOSTMGR_ASSERT("some_file", value > 0);
}

static void AssertAtFixedLine(int value) {
    HOSTMGR_ASSERT_AT("some_file", 128, value != 0);
}

TEST(AssertionDeathTest, FailedCondition_PrintsItsBlockAndExits) {
    EXPECT_EXIT(OnConsole([] { AssertAround(0); }), ExitedWithCode(255),
                FailedAssertion("some_file", "AssertAround", "value > 0"));
}

TEST(AssertionDeathTest, FailedConditionAtFixedLine_PrintsThatLine) {
    EXPECT_EXIT(OnConsole([] { AssertAtFixedLine(0); }), ExitedWithCode(255),
                FailedAssertion("some_file", "AssertAtFixedLine", 128, "value != 0"));
}

TEST(Assertion, ConditionThatHolds_DoesNothing) {
    EXPECT_EQ(RawConsole([] { AssertAround(1); }), "");
}

TEST(Assertion, ConditionThatHoldsAtFixedLine_DoesNothing) {
    EXPECT_EQ(RawConsole([] { AssertAtFixedLine(1); }), "");
}

// ---- locks ---------------------------------------------------------------------------------------------------------

class LockScopes : public testing::Test {
protected:
    Platform platform;
};

TEST_F(LockScopes, LockScope_LocksAndUnlocksWithItsNames) {
    vexo_lock* lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "a lock");
    platform.TakeCalls();
    { const HostMgrLockScope scope(lock, "file", "Function"); }
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("lock(a lock, file, Function)", "unlock(a lock, file, Function)"));
}

TEST_F(LockScopes, ChangeScope_LocksForChangeAndUnlocks) {
    vexo_rw_lock* lock = vexo_utility_new_rw_lock(VEXO_USER_HOSTMGR, "a lock");
    platform.TakeCalls();
    { const HostMgrChangeScope scope(lock, "file", "Function"); }
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("wr_lock(a lock, file, Function)", "unlock(a lock, file, Function)"));
}

/** What the lock analysis would rightly refuse. */
static int UnlockAgain(HostMgrChangeScope& scope) VEXO_NO_THREAD_SAFETY_ANALYSIS {
    return scope.Unlock();
}

TEST_F(LockScopes, ChangeScopeEndedEarly_GivesTheLocksAnswerAndUnlocksOnce) {
    testing::NiceMock<MockRwLock> lock(platform, "a lock");
    ON_CALL(lock, wr_lock(_, _)).WillByDefault(Return(0));
    EXPECT_CALL(lock, unlock(testing::StrEq("file"), testing::StrEq("Function"))).Times(1).WillOnce(Return(9));
    HostMgrChangeScope scope(&lock, "file", "Function");
    EXPECT_EQ(scope.Unlock(), 9);
    EXPECT_EQ(UnlockAgain(scope), 0);
}

TEST_F(LockScopes, LockInfoThatFillsTheBuffer_IsTerminated) {
    testing::NiceMock<MockLock> lock(platform, "a lock");
    ON_CALL(lock, get_info(_, 256u)).WillByDefault([](char* buffer, unsigned int size) {
        memset(buffer, 'x', size);
        return 0;
    });
    HostMgrPrintLockInfo(&lock, HOSTMGR_DUMP_BUSY, CollectPrint);
    EXPECT_EQ(TakePrinted(), "rd_trylock fail, lock info is '" + std::string(255, 'x') + "'\n");
}

TEST_F(LockScopes, LockInfoThatIsNotWritten_IsEmpty) {
    testing::NiceMock<MockLock> lock(platform, "a lock");
    HostMgrPrintLockInfo(&lock, HOSTMGR_DUMP_BUSY, CollectPrint);
    EXPECT_EQ(TakePrinted(), "rd_trylock fail, lock info is ''\n");
}

// ---- use counts ----------------------------------------------------------------------------------------------------

namespace {

/** A module that tells when it is destroyed. */
struct CountedModule {
    explicit CountedModule(bool* pDestroyed) : destroyed(pDestroyed) {}
    ~CountedModule() { *destroyed = true; }
    HostMgrUseCount m_use;
    bool* destroyed;
};

}  // namespace

TEST(UseCount, DroppedByItsOnlyHolder_IsDestroyed) {
    bool destroyed = false;
    HostMgrDrop(new CountedModule(&destroyed));
    EXPECT_TRUE(destroyed);
}

TEST(UseCount, DroppedWhileUsed_LivesUntilTheUserLetsGo) {
    bool destroyed = false;
    CountedModule* module = new CountedModule(&destroyed);
    module->m_use.Take();
    {
        const HostMgrUse<CountedModule> use(module);
        HostMgrDrop(module);
        EXPECT_FALSE(destroyed);
    }
    EXPECT_TRUE(destroyed);
}

TEST(UseCount, MovedUse_LetsGoOnce) {
    bool destroyed = false;
    CountedModule* module = new CountedModule(&destroyed);
    module->m_use.Take();
    {
        HostMgrUse<CountedModule> first(module);
        const HostMgrUse<CountedModule> second(std::move(first));
        EXPECT_EQ(second.Get(), module);
    }
    EXPECT_FALSE(destroyed);
    HostMgrDrop(module);
    EXPECT_TRUE(destroyed);
}

TEST(UseCount, NullModule_IsIgnored) {
    HostMgrDrop<CountedModule>(nullptr);
    const HostMgrUse<CountedModule> use(nullptr);
    EXPECT_EQ(use.Get(), nullptr);
}

// ---- handles, copies, frames ---------------------------------------------------------------------------------------

TEST(LoginOfHandle, AnyHandle_IsItsLowHalf) {
    EXPECT_EQ(HostMgrLoginOfHandle(0x00050007), 7);
    EXPECT_EQ(HostMgrLoginOfHandle(static_cast<int>(0xFFFF8000u)), 0x8000);
    EXPECT_EQ(HostMgrLoginOfHandle(-1), 0xFFFF);
}

class CopyText : public testing::Test {
protected:
    CopyText() { memset(field, 'z', sizeof(field)); }
    char field[8];
};

TEST_F(CopyText, ShorterText_ZeroesTheRest) {
    HostMgrCopyText(field, "abc");
    EXPECT_THAT(field, ElementsAreArray("abc\0\0\0\0", 8));
}

TEST_F(CopyText, TextThatJustFits_IsWhole) {
    HostMgrCopyText(field, "abcdefg");
    EXPECT_STREQ(field, "abcdefg");
}

TEST_F(CopyText, LongerText_IsCutAndTerminated) {
    HostMgrCopyText(field, "abcdefgh and more");
    EXPECT_STREQ(field, "abcdefg");
}

TEST_F(CopyText, EmptyText_ZeroesTheField) {
    HostMgrCopyText(field, "");
    EXPECT_THAT(field, testing::Each('\0'));
}

TEST(FrameHeader, FrameAtAnOddAddress_IsRead) {
    vexo_frame_header written = {};
    written.magic = VEXO_FRAME_MAGIC;
    written.frame_type = VEXO_FRAME_SUB_KEY;
    written.data_length = 1234;
    written.height = 576;
    std::vector<unsigned char> memory(sizeof(written) + 1);
    memcpy(memory.data() + 1, &written, sizeof(written));
    const vexo_frame_header read = HostMgrFrameHeader(memory.data() + 1);
    EXPECT_EQ(memcmp(&read, &written, sizeof(read)), 0);
}

TEST(UserAuthority, AnyRequest_IsGranted) {
    EXPECT_EQ(HostMgrCheckUserAuthority(0, 0, 0), 0);
    EXPECT_EQ(HostMgrCheckUserAuthority(-1, 0xFFFFFFFF, 300), 0);
}
