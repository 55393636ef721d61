// The record file query: refusals, what is searched, the entries, reading them one by one and in a block, release.
#include <limits.h>
#include <string.h>

#include <list>

#include "login_fixture.h"
#include "vexo_hostmgr_queryfile.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace vexo_soft;

using Entry = _tagVexoHostMgrQueryFileResult;

static const char QUERY_LOCK[] = "vexo_hostmgr_queryfile";
static const char QUERY[] = "HostMgr_Dev_QueryFile";

static Lines UnderLock(const std::string& function, const Lines& calls = {}) {
    const std::string tags = std::string("(") + QUERY_LOCK + ", vexo_hostmgr_queryfile, " + function + ")";
    return Joined({{"lock" + tags}, calls, {"unlock" + tags}});
}

/** A recorder with recordings of a test's choice, and a query on it. */
class QueryFile : public testing::Test {
protected:
    static constexpr int LOGIN = 0x501;

    QueryFile() {
        SetTimeZone("UTC");
        ON_CALL(platform, vexo_model_inquiry_rec_by_time)
            .WillByDefault([this](unsigned int, vexo_user_id, unsigned int, const vexo_time_struct*,
                                  const vexo_time_struct*, unsigned int, unsigned int,
                                  vexo_rec_file_inquiry_result** result) { return Inquire(result); });
        platform.TakeCalls();
    }

    int Inquire(vexo_rec_file_inquiry_result** result) {
        if (inquiryResult != 0)
            return inquiryResult;
        if (nullList) {
            *result = nullptr;
            return 0;
        }
        m_lists.push_back({});
        vexo_rec_file** link = &m_lists.back().first;
        for (const vexo_rec_file& file : files) {
            m_files.push_back(file);
            *link = &m_files.back();
            link = &m_files.back().next;
        }
        last = link;
        *result = &m_lists.back();
        return 0;
    }

    /** So many files: file n starts n minutes after noon of 5 July 2024 and is 50 seconds long. */
    void HaveFiles(unsigned int count) {
        files.clear();
        for (unsigned int number = 0; number < count; ++number) {
            const unsigned int start = 1720180800 + 60 * number;
            files.push_back({start, start + 50, 1, 1000 + number, 2000 + number, {0, 0}, nullptr});
        }
    }

    int Query(int lChannel = 3, uint32_t dwFileType = 0, int hLogin = LOGIN) {
        _tagVexoHostMgrQueryFile query = {dwFileType, {2024, 7, 5, 1, 2, 3, 77}, {2024, 7, 6, 4, 5, 6, 88}};
        return object.HostMgr_Dev_QueryFile(hLogin, lChannel, &query);
    }
    int Read(int lIndex, Entry* entries, unsigned int dwCount) {
        return object.HostMgr_Dev_GetQueryFileResult(LOGIN, lIndex, entries, dwCount);
    }
    int Count() { return Read(0, nullptr, 0); }
    int Release() { return object.HostMgr_Dev_QueryRelease(LOGIN); }

    /** Entries with a value that a read must overwrite. */
    static std::vector<Entry> Blank(size_t count) {
        Entry entry;
        memset(static_cast<void*>(&entry), 0xEE, sizeof(entry));
        return std::vector<Entry>(count, entry);
    }
    static bool IsBlank(const Entry& entry) { return memcmp(&entry, &Blank(1)[0], sizeof(entry)) == 0; }

    Platform platform;
    std::vector<vexo_rec_file> files;
    int inquiryResult = 0;
    bool nullList = false;
    vexo_rec_file** last = nullptr;  // where the list goes on
    vexo_hostmgr_queryfile object;

private:
    std::list<vexo_rec_file_inquiry_result> m_lists;
    std::list<vexo_rec_file> m_files;
};

// ---- refusals ------------------------------------------------------------------------------------------------------

TEST_F(QueryFile, NullQuery_IsRefusedBeforeTheHandle) {
    EXPECT_EQ(Console([this] { EXPECT_EQ(object.HostMgr_Dev_QueryFile(0, 1, nullptr), -1); }),
              Error(QUERY, "pQuery is null!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(QueryFile, LoginBelowOne_IsRefusedByEachCall) {
    for (const int hLogin : {0, -1}) {
        const std::string text = "Why hLogin:" + std::to_string(hLogin) + " < 0!!\n";
        EXPECT_EQ(Console([&] { EXPECT_EQ(Query(1, 0, hLogin), -1); }), Error(QUERY, text));
        EXPECT_EQ(Console([&] { EXPECT_EQ(object.HostMgr_Dev_GetQueryFileResult(hLogin, 0, nullptr, 0), -1); }),
                  Error("HostMgr_Dev_GetQueryFileResult", text));
        EXPECT_EQ(Console([&] { EXPECT_EQ(object.HostMgr_Dev_QueryRelease(hLogin), -1); }),
                  Error("HostMgr_Dev_QueryRelease", text));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(QueryFile, InquiryRefused_IsAnsweredSilently) {
    HaveFiles(2);
    EXPECT_EQ(Query(), 2);
    inquiryResult = -5;
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Query(), -1); }), "");
    EXPECT_EQ(platform.TakeCalls().size(), 3u) << "lock, inquiry, unlock";
    EXPECT_EQ(Count(), 2) << "the list before it stands";
}

// ---- what is searched ----------------------------------------------------------------------------------------------

TEST_F(QueryFile, Query_SearchesUnderTheLock) {
    HaveFiles(1);
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Query(), 1); }), "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderLock(
                    QUERY, {"vexo_model_inquiry_rec_by_time(1281, 97, 2, 2024-7-5 1:2:3, 2024-7-6 4:5:6, 0xffff, 0)",
                            "vexo_utility_malloc(97, 0x80006, 88, 1)"})));
}

TEST_F(QueryFile, AnyChannel_ReachesTheRecorder) {
    Query(0);
    Query(-1);
    Query(100000);
    EXPECT_THAT(With("inquiry", platform.TakeCalls()),
                ElementsAre(HasSubstr("(1281, 97, 4294967295,"), HasSubstr("(1281, 97, 4294967294,"),
                            HasSubstr("(1281, 97, 99999,")));
}

struct TypeRow {
    uint32_t type;
    const char* arguments;
};
static void PrintTo(const TypeRow& row, std::ostream* out) {
    *out << row.type;
}
class QueryFileType : public QueryFile, public testing::WithParamInterface<TypeRow> {};

TEST_P(QueryFileType, FileType_ChoosesMaskAndInquiry) {
    Query(1, GetParam().type);
    EXPECT_THAT(With("inquiry", platform.TakeCalls()), ElementsAre(testing::EndsWith(GetParam().arguments)));
}
INSTANTIATE_TEST_SUITE_P(Each, QueryFileType,
                         testing::Values(TypeRow{0, ", 0xffff, 0)"}, TypeRow{1, ", 0x1, 0)"}, TypeRow{2, ", 0x2, 0)"},
                                         TypeRow{3, ", 0x4, 0)"}, TypeRow{4, ", 0x6, 0)"}, TypeRow{5, ", 0x6, 1)"},
                                         TypeRow{6, ", 0x1, 0)"}, TypeRow{9, ", 0x1, 0)"},
                                         TypeRow{0xFFFFFFFF, ", 0x1, 0)"}));

// ---- the entries ---------------------------------------------------------------------------------------------------

TEST_F(QueryFile, Entry_HasChannelFlagTimesAndTheRecordersWords) {
    HaveFiles(2);
    Query(7);
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Read(1, &entry, 1), 1);
    const Entry expected = {7, 0, 2, {2024, 7, 5, 12, 1, 0, 0}, {2024, 7, 5, 12, 1, 50, 0}, {0, 0, 0}, 1001, 2001};
    EXPECT_EQ(memcmp(&entry, &expected, sizeof(entry)), 0);
}

TEST_F(QueryFile, EntryTimes_AreLocal) {
    SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    // The hour that the clock shows twice, and the last second of a year.
    files = {{1729987200, 1729990800, 1, 0, 0, {0, 0}, nullptr}, {1704063599, 1704063600, 1, 0, 0, {0, 0}, nullptr}};
    Query();
    std::vector<Entry> entries = Blank(2);
    EXPECT_EQ(Read(-1, entries.data(), 1), 2);
    EXPECT_EQ(entries[0].struStartTime.dwHour, 2u);
    EXPECT_EQ(entries[0].struStopTime.dwHour, 2u);
    EXPECT_EQ(entries[1].struStartTime.dwYear, 2023u);
    EXPECT_EQ(entries[1].struStartTime.dwSecond, 59u);
    EXPECT_EQ(entries[1].struStopTime.dwYear, 2024u);
    EXPECT_EQ(entries[1].struStopTime.dwMonth, 1u);
}

TEST_F(QueryFile, ChannelBelowOne_IsReportedAsItWasGiven) {
    HaveFiles(1);
    Query(-1);
    Entry entry = Blank(1)[0];
    Read(0, &entry, 1);
    EXPECT_EQ(entry.dwChannel, 0xFFFFFFFFu);
}

TEST_F(QueryFile, NothingFound_AllocatesNothing) {
    EXPECT_EQ(Query(), 0);
    EXPECT_THAT(With("malloc", platform.TakeCalls()), IsEmpty());
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(Read(0, &entry, 1), -1);
    EXPECT_EQ(Read(0, &entry, 0), -1);
    EXPECT_EQ(Read(-1, &entry, 0), 0);
    EXPECT_TRUE(IsBlank(entry));
}

TEST_F(QueryFile, NullList_IsNothingFound) {
    nullList = true;
    EXPECT_EQ(Query(), 0);
    EXPECT_EQ(Count(), 0);
}

TEST_F(QueryFile, NoMemory_LeavesCountAndEntriesAsTheyWere) {
    HaveFiles(2);
    Query();
    HaveFiles(5);
    platform.FailMalloc(1);
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Query(), -1); }), "");
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
    EXPECT_EQ(Count(), 2);
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Read(1, &entry, 1), 1);
    EXPECT_EQ(entry.dwRecInfo1, 1001u);
}

TEST_F(QueryFile, ListThatGrowsMeanwhile_StopsAtTheCountWithAWarning) {
    HaveFiles(2);
    vexo_rec_file more = {1, 2, 1, 3, 4, {0, 0}, nullptr};
    static max_align_t memory[64];
    EXPECT_CALL(platform, vexo_utility_malloc).WillOnce([&](vexo_user_id, unsigned int, unsigned int, unsigned int) {
        *last = &more;
        return memory;
    });
    EXPECT_CALL(platform, vexo_utility_free).WillRepeatedly(testing::Return());
    EXPECT_EQ(Console([this] { EXPECT_EQ(Query(), 2); }), Warning(QUERY, "(cnt:3 > FileCnt:2, please check!!!\n"));
    EXPECT_EQ(Count(), 2);
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Read(1, &entry, 1), 1) << "the entries stand";
    Release();
}

TEST_F(QueryFile, HundredThousandFiles_AreAllListed) {
    HaveFiles(100000);
    EXPECT_EQ(Query(), 100000);
    EXPECT_THAT(With("malloc", platform.TakeCalls()), ElementsAre("vexo_utility_malloc(97, 0x80006, 8800000, 1)"));
    std::vector<Entry> entries = Blank(100000);
    EXPECT_EQ(Read(-1, entries.data(), 99999), 100000);
    for (unsigned int number = 0; number < 100000; ++number)
        ASSERT_EQ(entries[number].dwRecInfo1, 1000 + number);
}

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(QueryFile, CountQuery_IgnoresIndexAndCount) {
    HaveFiles(3);
    Query();
    platform.TakeCalls();
    EXPECT_EQ(Read(-1, nullptr, 0), 3);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLock("HostMgr_Dev_GetQueryFileResult")));
    EXPECT_EQ(Read(99, nullptr, 99), 3);
}

TEST_F(QueryFile, BeforeAQuery_ThereIsNothing) {
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(Read(0, &entry, 1), -1);
    EXPECT_EQ(Read(-1, &entry, 5), 0);
    EXPECT_TRUE(IsBlank(entry));
}

TEST_F(QueryFile, SingleEntry_CopiesOneWhateverTheCount) {
    HaveFiles(3);
    Query();
    for (const unsigned int count : {1u, 2u, 3u, 0xFFFFFFFFu}) {
        std::vector<Entry> entries = Blank(2);
        EXPECT_EQ(Read(1, entries.data(), count), 1);
        EXPECT_EQ(entries[0].dwRecInfo1, 1001u);
        EXPECT_TRUE(IsBlank(entries[1]));
    }
}

TEST_F(QueryFile, SingleEntryOfCountZero_CopiesNothing) {
    HaveFiles(3);
    Query();
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Read(1, &entry, 0), 0);
    EXPECT_TRUE(IsBlank(entry));
}

TEST_F(QueryFile, IndexAtOrPastTheCount_IsRefused) {
    HaveFiles(3);
    Query();
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Read(2, &entry, 1), 1);
    for (const int index : {3, 4, INT_MAX}) {
        EXPECT_EQ(Read(index, &entry, 1), -1);
        EXPECT_EQ(Read(index, &entry, 0), -1);
    }
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

struct BlockRow {
    const char* name;
    int index;
    unsigned int count;
    int copied;
};
static void PrintTo(const BlockRow& row, std::ostream* out) {
    *out << row.name;
}
class QueryFileBlock : public QueryFile, public testing::WithParamInterface<BlockRow> {};

// One more than the caller's count: agents have room for it.
TEST_P(QueryFileBlock, Block_CopiesUpToTheCountAndOne) {
    HaveFiles(4);
    Query();
    std::vector<Entry> entries = Blank(6);
    EXPECT_EQ(Read(GetParam().index, entries.data(), GetParam().count), GetParam().copied);
    for (int number = 0; number < 6; ++number) {
        SCOPED_TRACE(number);
        const Entry& entry = entries[static_cast<size_t>(number)];
        EXPECT_EQ(IsBlank(entry), number >= GetParam().copied);
        if (number < GetParam().copied) {
            EXPECT_EQ(entry.dwRecInfo1, 1000u + static_cast<unsigned int>(number));
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Each, QueryFileBlock,
                         testing::Values(BlockRow{"Zero", -1, 0, 1}, BlockRow{"One", -1, 1, 2},
                                         BlockRow{"Three", -1, 3, 4}, BlockRow{"Four", -1, 4, 4},
                                         BlockRow{"Many", -1, 1000, 4}, BlockRow{"AnyIndexBelowZero", INT_MIN, 1, 2},
                                         BlockRow{"HighestSigned", -1, 0x7FFFFFFF, 4},
                                         BlockRow{"NegativeAsSigned", -1, 0x80000000, 0},
                                         BlockRow{"MinusOne", -1, 0xFFFFFFFF, 0}),
                         ByName());

// ---- release -------------------------------------------------------------------------------------------------------

TEST_F(QueryFile, Release_FreesTheListThenTheEntriesUnderTheLock) {
    HaveFiles(2);
    Query();
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Release(), 0); }), "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderLock("HostMgr_Dev_QueryRelease",
                                           {"vexo_model_free_inquiry_rec_result()",
                                            "vexo_utility_free(vexo_hostmgr_queryfile, ReleaseResultNode, 0x80006)"})));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

TEST_F(QueryFile, ReleaseOfNothing_IsQuiet) {
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Release(), 0); }), "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLock("HostMgr_Dev_QueryRelease")));
}

TEST_F(QueryFile, ReleaseOfAnEmptyList_FreesTheListAlone) {
    Query();
    platform.TakeCalls();
    Release();
    EXPECT_THAT(With("free", platform.TakeCalls()), ElementsAre("vexo_model_free_inquiry_rec_result()"));
}

TEST_F(QueryFile, AfterARelease_TheCountStandsAndTheEntriesAreGone) {
    HaveFiles(3);
    Query();
    Release();
    Entry entry = Blank(1)[0];
    EXPECT_EQ(Count(), 3);
    EXPECT_EQ(Read(0, &entry, 1), -1);
    EXPECT_EQ(Read(0, &entry, 0), 0);
    EXPECT_EQ(Read(3, &entry, 0), -1);
    EXPECT_EQ(Read(-1, &entry, 0), -1);
    EXPECT_EQ(Read(-1, &entry, 5), -1);
    EXPECT_TRUE(IsBlank(entry));
    EXPECT_EQ(Release(), 0);
    HaveFiles(1);
    EXPECT_EQ(Query(), 1);
    EXPECT_EQ(Read(0, &entry, 1), 1);
}

// The list and the entries of the first query are lost: stated, and agents release each list.
TEST_F(QueryFile, SecondQueryWithoutRelease_LosesTheFirstList) {
    HaveFiles(1);
    Query();
    HaveFiles(2);
    platform.TakeCalls();
    EXPECT_EQ(Query(), 2);
    EXPECT_THAT(With("free", platform.TakeCalls()), IsEmpty());
    Release();
    EXPECT_EQ(With("free", platform.TakeCalls()).size(), 2u);
    EXPECT_THAT(platform.LiveMemory(), ElementsAre(0x80006));
}

TEST_F(QueryFile, SecondQueryThatFindsNothing_HasNoEntries) {
    HaveFiles(1);
    Query();
    HaveFiles(0);
    EXPECT_EQ(Query(), 0);
    EXPECT_EQ(Count(), 0);
    Release();
    EXPECT_THAT(platform.LiveMemory(), ElementsAre(0x80006)) << "the first query's";
}

// ---- the object ----------------------------------------------------------------------------------------------------

TEST_F(QueryFile, Destruction_ReleasesWithoutTheLock) {
    auto another = std::make_unique<vexo_hostmgr_queryfile>();
    HaveFiles(1);
    _tagVexoHostMgrQueryFile query = {};
    another->HostMgr_Dev_QueryFile(LOGIN, 1, &query);
    platform.TakeCalls();
    another.reset();
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAre(
            "vexo_model_free_inquiry_rec_result()",
            "vexo_utility_free(vexo_hostmgr_queryfile, ReleaseResultNode, 0x80006)",
            "vexo_utility_delete_lock(vexo_hostmgr_queryfile, vexo_hostmgr_queryfile, ~vexo_hostmgr_queryfile)"));
}

TEST_F(QueryFile, Dump_PrintsNothingAndTouchesNoLock) {
    HaveFiles(1);
    Query();
    platform.TakeCalls();
    TakePieces();
    object.HostMgrQueryFileDump(3000, CollectPrint);
    EXPECT_THAT(TakePieces(), IsEmpty());
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(QueryFile, DumpOfANote_ShowsNumberTypeAndTimeOfDay) {
    const HostMgrRecFileNote note = {0, 0x2A, 17, 1720180800 + 3 * 60 + 7};
    EXPECT_EQ(Console([&] { HostMgrDumpRecFile(&note); }),
              Debug("HostMgrDumpRecFile", "No-17 Type-0x2a Time-12:03:07\n"));
}

TEST_F(QueryFile, TwoThreads_TakeTurns) {
    HaveFiles(50);
    std::thread other([this] {
        for (int round = 0; round < 100; ++round) {
            Entry entry;
            const int read = Read(49, &entry, 1);
            if (read == 1) {
                EXPECT_EQ(entry.dwRecInfo1, 1049u);
            }
        }
    });
    for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(Query(), 50);
        EXPECT_EQ(Release(), 0);
    }
    other.join();
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

// ---- through the exported functions --------------------------------------------------------------------------------

class QueryFileExported : public LoginFixture {};

TEST_F(QueryFileExported, EachLogin_HasAListOfItsOwn) {
    static vexo_rec_file file = {1720180800, 1720180850, 1, 1, 2, {0, 0}, nullptr};
    static vexo_rec_file_inquiry_result list = {0, {0, 0}, &file};
    ON_CALL(platform, vexo_model_inquiry_rec_by_time)
        .WillByDefault([](unsigned int, vexo_user_id, unsigned int, const vexo_time_struct*, const vexo_time_struct*,
                          unsigned int, unsigned int, vexo_rec_file_inquiry_result** result) {
            *result = &list;
            return 0;
        });
    LogInAll({0x501, 0x502});
    _tagVexoHostMgrQueryFile query = {};
    EXPECT_EQ(vexo_HostMgr_Dev_QueryFile(0x501, 1, &query), 1);
    EXPECT_EQ(vexo_HostMgr_Dev_GetQueryFileResult(0x501, 0, nullptr, 0), 1);
    EXPECT_EQ(vexo_HostMgr_Dev_GetQueryFileResult(0x502, 0, nullptr, 0), 0);
    EXPECT_EQ(vexo_HostMgr_Dev_QueryRelease(0x502), 0);
    platform.TakeCalls();
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(0x501), 0);
    EXPECT_THAT(With("rec_result", platform.TakeCalls()), ElementsAre("vexo_model_free_inquiry_rec_result()"));
}
