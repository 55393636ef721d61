// The record file query through the exported functions, on a history that is known. The recorder's own search stands in
// search_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "played.h"

using played::Local;
using played::Span;
using testing::IsEmpty;
using testing::Not;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new played::Recorder(played::SCENARIO));

constexpr int COUNT = played::SEGMENTS;
constexpr uint32_t FILE_FLAG = 2;
constexpr uint32_t UNTOUCHED = 0xABABABAB;

using Entry = _tagVexoHostMgrQueryFileResult;

class FileQueryTest : public played::PlayTest {
protected:
    int Query(unsigned channel, uint32_t type = HOSTMGR_FILE_ALL, time_t from = played::SINCE,
              time_t to = played::UNTIL) const {
        _tagVexoHostMgrQueryFile query = {type, Local(from), Local(to)};
        return vexo_soft::vexo_HostMgr_Dev_QueryFile(Login(), static_cast<int>(channel), &query);
    }

    int Get(int index, Entry* entries, unsigned count) const {
        return vexo_soft::vexo_HostMgr_Dev_GetQueryFileResult(Login(), index, entries, count);
    }

    int Count() const { return Get(0, nullptr, 0); }
    int Release() const { return vexo_soft::vexo_HostMgr_Dev_QueryRelease(Login()); }
};

/** Entries that show which of them were written. */
std::vector<Entry> Marked(size_t count) {
    std::vector<Entry> entries(count);
    for (Entry& entry : entries) {
        entry.dwChannel = UNTOUCHED;
    }
    return entries;
}

long Written(const std::vector<Entry>& entries) {
    return std::count_if(entries.begin(), entries.end(),
                         [](const Entry& entry) { return entry.dwChannel != UNTOUCHED; });
}

TEST_F(FileQueryTest, Query_All_ListsEveryRecordingByTime) {
    ASSERT_EQ(Query(2), COUNT);
    time_t last = played::SINCE;
    for (int i = 0; i < COUNT; ++i) {
        Entry entry = {};
        ASSERT_EQ(Get(i, &entry, 1), 1);
        EXPECT_EQ(entry.dwChannel, 2U);
        EXPECT_EQ(entry.dwFileFlag, FILE_FLAG);
        EXPECT_EQ(entry.reserved1, 0U);
        EXPECT_GE(played::Instant(entry.struStartTime), last);
        EXPECT_EQ(played::Instant(entry.struStopTime) - played::Instant(entry.struStartTime), played::LENGTH);
        EXPECT_EQ(entry.struStartTime.reserved, 0U);
        last = played::Instant(entry.struStopTime);
    }
    EXPECT_LE(last, played::UNTIL);
    EXPECT_EQ(Release(), 0);
    ExpectNothingLeft();
}

TEST_F(FileQueryTest, Query_OtherChannel_OtherRecordings) {
    EXPECT_NE(Recording(1, 0).start, Recording(2, 0).start);
}

struct TypeCase {
    uint32_t type;
    int found;
};

class FileTypeTest : public FileQueryTest, public testing::WithParamInterface<TypeCase> {};

// The history's recordings are of the types 1, 2, 4 and 2 with 4, one each.
TEST_P(FileTypeTest, Query_Type_FindsThoseRecordings) {
    EXPECT_EQ(Query(1, GetParam().type), GetParam().found);
    Release();
}

INSTANTIATE_TEST_SUITE_P(Types, FileTypeTest,
                         testing::Values(TypeCase{HOSTMGR_FILE_ALL, 4}, TypeCase{HOSTMGR_FILE_MASK_1, 1},
                                         TypeCase{HOSTMGR_FILE_MASK_2, 2}, TypeCase{HOSTMGR_FILE_MASK_4, 2},
                                         TypeCase{HOSTMGR_FILE_MASK_6, 3}, TypeCase{HOSTMGR_FILE_MASK_6_TYPE_1, 1},
                                         TypeCase{6, 1}, TypeCase{9, 1}, TypeCase{0xFFFFFFFF, 1}),
                         [](const auto& type) { return "Type" + std::to_string(type.param.type); });

TEST_F(FileQueryTest, Query_WithinARecording_FindsThatOne) {
    const Span recording = Recording(1, 2);
    ASSERT_EQ(Query(1, HOSTMGR_FILE_ALL, recording.start + 1, recording.start + 2), 1);
    Entry entry = {};
    ASSERT_EQ(Get(0, &entry, 1), 1);
    EXPECT_EQ(played::Instant(entry.struStartTime), recording.start);
    Release();
}

TEST_F(FileQueryTest, Query_NothingRecorded_IsACountOfNone) {
    EXPECT_EQ(Query(1, HOSTMGR_FILE_ALL, played::SINCE - 7200, played::SINCE - 3600), 0);
    EXPECT_EQ(Count(), 0);
    Entry entry = {};
    EXPECT_EQ(Get(0, &entry, 1), -1);
    EXPECT_EQ(Get(-1, &entry, 1), 0);
    EXPECT_EQ(Release(), 0);
    ExpectNothingLeft();
}

TEST_F(FileQueryTest, BlockRead_WritesOneMoreThanAskedFor) {
    ASSERT_EQ(Query(1), COUNT);
    for (int asked = 0; asked < COUNT + 2; ++asked) {
        std::vector<Entry> entries = Marked(COUNT + 2);
        const int expected = std::min(asked + 1, COUNT);
        EXPECT_EQ(Get(-1, entries.data(), static_cast<unsigned>(asked)), expected);
        EXPECT_EQ(Written(entries), expected);
    }
    Release();
}

TEST_F(FileQueryTest, BlockRead_AgreesWithSingleReads) {
    ASSERT_EQ(Query(1), COUNT);
    std::vector<Entry> block(COUNT);
    ASSERT_EQ(Get(-7, block.data(), COUNT - 1), COUNT);
    for (int i = 0; i < COUNT; ++i) {
        Entry single = {};
        ASSERT_EQ(Get(i, &single, 5), 1) << "one at a time, whatever is asked for";
        EXPECT_EQ(memcmp(&single, &block[i], sizeof(single)), 0) << i;
    }
    Release();
}

TEST_F(FileQueryTest, SingleRead_Bounds) {
    ASSERT_EQ(Query(1), COUNT);
    std::vector<Entry> entries = Marked(1);
    EXPECT_EQ(Get(COUNT, entries.data(), 1), -1);
    EXPECT_EQ(Get(0, entries.data(), 0), 0);
    EXPECT_EQ(Written(entries), 0);
    EXPECT_EQ(Get(COUNT - 1, entries.data(), 1), 1);
    Release();
}

TEST_F(FileQueryTest, Released_CountStays_EntriesAreGone) {
    ASSERT_EQ(Query(1), COUNT);
    EXPECT_EQ(Release(), 0);
    EXPECT_EQ(Count(), COUNT);
    std::vector<Entry> entries = Marked(COUNT);
    EXPECT_EQ(Get(0, entries.data(), 1), -1);
    EXPECT_EQ(Get(-1, entries.data(), 1), -1);
    EXPECT_EQ(Get(0, entries.data(), 0), 0);
    EXPECT_EQ(Written(entries), 0);
    EXPECT_EQ(Release(), 0) << "nothing held is no failure";
    ExpectNothingLeft();
}

TEST_F(FileQueryTest, Query_Refused_SaysSo) {
    EXPECT_EQ(Query(9), -1);
    EXPECT_EQ(Query(0), -1);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_QueryFile(Login(), 1, nullptr), -1);
    for (const char* operation : {"vexo_model_inquiry_rec_by_time", "vexo_utility_malloc"}) {
        simulator::control::Fail(operation, 1);
        EXPECT_EQ(Query(1), -1) << operation;
        EXPECT_EQ(Release(), 0);
    }
    ASSERT_EQ(Query(1), COUNT) << "and the next one is well";
    Release();
    ExpectNothingLeft();
}

TEST_F(FileQueryTest, Logins_EachHaveAListOfTheirOwn) {
    const agent::Session other;
    ASSERT_EQ(Query(1), COUNT);
    EXPECT_THAT(played::Spans(other.Login(), 1, played::SINCE, played::SINCE + 1), Not(testing::SizeIs(COUNT)));
    EXPECT_EQ(Count(), COUNT);
    Entry entry = {};
    EXPECT_EQ(Get(0, &entry, 1), 1);
    Release();
}

TEST_F(FileQueryTest, Logout_WithoutARelease_GivesTheListBack) {
    ASSERT_EQ(Query(1), COUNT);
    ExpectNothingLeft();
}

// Callers rely on a query keeping nothing of the one before it; who does not release loses the memory.
TEST_F(FileQueryTest, QueryAgain_WithoutARelease_LosesTheFirstList) {
    ASSERT_EQ(Query(1), COUNT);
    ASSERT_EQ(Query(2), COUNT);
    EXPECT_EQ(Release(), 0);
    const std::vector<std::string> left = simulator::control::Outstanding();
    EXPECT_EQ(std::count_if(left.begin(), left.end(),
                            [](const std::string& line) { return line.find("0x80006") != std::string::npos; }),
              1);
}

TEST_F(FileQueryTest, Query_WhilePlaying_BothGoOn) {
    const Span recording = Recording(1, 0);
    played::Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector), -1);
    played::Command(Login(), HOSTMGR_PLAYCMD_SPEED, 4);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(Query(1), COUNT);
        EXPECT_EQ(Release(), 0);
    }
    EXPECT_TRUE(collector.UntilEnds(1));
    EXPECT_EQ(collector.Pictures().size(), played::LENGTH * played::FPS);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

}  // namespace
