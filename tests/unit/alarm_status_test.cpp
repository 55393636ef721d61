// The status list: how the event table is read, what becomes of each event, who owns what in the end.
#include <unistd.h>

#include "alarm_fixture.h"

using testing::Each;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;

using namespace vexo_soft;
using Entry = _tagVexoHostMgrALarmStatusInfo;

/** An entry as "type state channel". */
static std::string Text(const Entry& entry) {
    const bool clean = std::all_of(entry.reserved, std::end(entry.reserved), [](uint8_t byte) { return byte == 0; });
    return std::to_string(entry.byType) + " " + std::to_string(entry.byState) + " " + std::to_string(entry.wChannel) +
           (clean ? "" : " and more");
}

class AlarmStatus : public AlarmFixture {
protected:
    ~AlarmStatus() override {
        if (m_list != nullptr)
            vexo_HostMgr_Dev_ReleaseAlarmStatus(m_list);
    }

    int Get() { return vexo_HostMgr_Dev_GetAlarmStatus(LOGIN, &m_list, &m_count); }

    /** The entries of a list that was given. */
    Lines Entries() {
        EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Get(), 0); }), "");
        Lines lines;
        for (unsigned int index = 0; index < m_count; ++index)
            lines.push_back(Text(m_list[index]));
        return lines;
    }

    /** Asks in vain, for the reason given; the outputs must stay as they were. */
    void ExpectFailure(const std::string& why) {
        m_count = 77;
        EXPECT_EQ(Console([this] { EXPECT_EQ(Get(), -1); }), Error("HostMgr_Dev_GetAlarmStatus", why));
        EXPECT_EQ(m_list, nullptr);
        EXPECT_EQ(m_count, 77u);
        EXPECT_THAT(platform.LiveMemory(), testing::Not(testing::Contains(0x26004u)));
        EXPECT_THAT(platform.LiveMemory(), testing::Not(testing::Contains(0x80005u)));
    }

    Lines Calls() { return Without("vexo_utility_min(", Without(TABLE_LOCK, platform.TakeCalls())); }

    static std::string FreeEvents() {
        return "vexo_utility_free(vexo_hostmgr_alarm, HostMgr_Dev_GetAlarmStatus, 0x26004)";
    }

    Entry* m_list = nullptr;
    unsigned int m_count = 0;
};

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(AlarmStatus, Success_MakesItsCallsInOrder) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    EXPECT_EQ(Get(), 0);
    EXPECT_THAT(Calls(), ElementsAre(CountCall(), EventMemory(102), ReadCall(102),
                                     "vexo_utility_malloc(97, 0x80005, 64, 1)", FreeEvents()));
    EXPECT_EQ(m_count, 2u);
}

TEST_F(AlarmStatus, MemoryOfTheEvents_IsZeroBeforeTheyAreRead) {
    m_events = {AnEvent(2, 2)};
    Get();
    EXPECT_EQ(m_before.size(), 101u * 172);
    EXPECT_THAT(m_before, Each(0));
}

TEST_F(AlarmStatus, NoEventsAtAll_IsAFailure) {
    ExpectFailure("vexo_utility_get_event_info fail!\n");
    EXPECT_THAT(Calls(), ElementsAre(CountCall()));
}

TEST_F(AlarmStatus, EventsCannotBeCounted_IsAFailure) {
    m_events = {AnEvent(2, 2)};
    m_count_result = -1;
    ExpectFailure("vexo_utility_get_event_info fail!\n");
    EXPECT_THAT(Calls(), ElementsAre(CountCall()));
}

TEST_F(AlarmStatus, EventsCannotBeRead_IsAFailure) {
    m_events = {AnEvent(2, 2)};
    m_read_result = 1;
    ExpectFailure("vexo_utility_get_event_info fail!\n");
    EXPECT_THAT(Calls(), ElementsAre(CountCall(), EventMemory(101), ReadCall(101), FreeEvents()));
}

TEST_F(AlarmStatus, HundredMoreEventsThanAnnounced_AreAllGiven) {
    m_events.assign(103, AnEvent(2, 2, 5));
    m_announced = 3;
    EXPECT_THAT(Entries(), Each("3 1 5"));
    EXPECT_EQ(m_count, 103u);
    EXPECT_THAT(Calls(), ElementsAre(CountCall(), EventMemory(103), ReadCall(103),
                                     "vexo_utility_malloc(97, 0x80005, 3296, 1)", FreeEvents()));
}

TEST_F(AlarmStatus, OneMoreEventThanThereIsRoomFor_IsAFailure) {
    m_events.assign(104, AnEvent(2, 2, 5));
    m_announced = 3;
    ExpectFailure("vexo_utility_get_event_info fail!\n");
    EXPECT_THAT(Calls(), ElementsAre(CountCall(), EventMemory(103), ReadCall(103), FreeEvents()));
}

TEST_F(AlarmStatus, FewerEventsThanAnnounced_AreGiven) {
    m_events = {AnEvent(2, 2, 5)};
    m_announced = 9;
    EXPECT_THAT(Entries(), ElementsAre("3 1 5"));
}

TEST_F(AlarmStatus, EventsGoneBeforeTheyAreRead_IsAnEmptyList) {
    m_announced = 1;
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(Get(), 0); }), "");
    EXPECT_EQ(m_count, 0u);
    EXPECT_THAT(Calls(), ElementsAre(CountCall(), EventMemory(101), ReadCall(101),
                                     "vexo_utility_malloc(97, 0x80005, 0, 1)", FreeEvents()));
}

TEST_F(AlarmStatus, NoMemoryForTheList_IsAFailure) {
    m_events.assign(3, AnEvent(2, 2));
    platform.FailMalloc(2);
    ExpectFailure("vexo_utility_malloc 96 failed!!\n");
    EXPECT_THAT(Calls(), ElementsAre(CountCall(), EventMemory(103), ReadCall(103),
                                     "vexo_utility_malloc(97, 0x80005, 96, 1)", FreeEvents()));
}

// ---- parameters ----------------------------------------------------------------------------------------------------

TEST_F(AlarmStatus, NoPlaceForTheList_IsRefusedBeforeAnything) {
    m_events = {AnEvent(2, 2)};
    m_count = 77;
    EXPECT_EQ(Console([this] { EXPECT_EQ(vexo_HostMgr_Dev_GetAlarmStatus(LOGIN, nullptr, &m_count), -1); }),
              Error("HostMgr_Dev_GetAlarmStatus", "Param invalid!!\n"));
    EXPECT_EQ(m_count, 77u);
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(AlarmStatus, NoPlaceForTheCount_IsRefusedBeforeAnything) {
    m_events = {AnEvent(2, 2)};
    EXPECT_EQ(Console([this] { EXPECT_EQ(vexo_HostMgr_Dev_GetAlarmStatus(LOGIN, &m_list, nullptr), -1); }),
              Error("HostMgr_Dev_GetAlarmStatus", "Param invalid!!\n"));
    EXPECT_EQ(m_list, nullptr);
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(AlarmStatus, UnknownLogin_IsNotLoggedIn) {
    m_events = {AnEvent(2, 2)};
    EXPECT_EQ(Console([this] { EXPECT_EQ(vexo_HostMgr_Dev_GetAlarmStatus(9, &m_list, &m_count), -1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x9!!\n") +
                  Error("vexo_HostMgr_Dev_GetAlarmStatus", "hLogin:9 not logged in!!\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

class AlarmStatusBelowOne : public AlarmStatus, public testing::WithParamInterface<int> {};

TEST_P(AlarmStatusBelowOne, IsRefusedByTheObject) {
    vexo_hostmgr_alarm alarm;
    m_events = {AnEvent(2, 2)};
    platform.TakeCalls();
    EXPECT_EQ(Console([&] { EXPECT_EQ(alarm.HostMgr_Dev_GetAlarmStatus(GetParam(), &m_list, &m_count), -1); }),
              Error("HostMgr_Dev_GetAlarmStatus", "Param invalid!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Handles, AlarmStatusBelowOne, testing::Values(0, -1, INT32_MIN));

TEST_F(AlarmStatus, TheObject_IsNeitherLockedNorChanged) {
    Receiver receiver;
    Subscribe(&receiver, LOGIN, 4, 1);
    const std::string before = AlarmDump();
    m_events = {AnEvent(2, 2)};
    MockLock& lock = platform.Lock(ALARM_LOCK);
    lock.lock("test", "test");
    platform.TakeCalls();
    EXPECT_EQ(Get(), 0);
    EXPECT_THAT(With(ALARM_LOCK, With("lock(", Calls())), IsEmpty());
    lock.unlock("test", "test");
    EXPECT_EQ(AlarmDump(), before);
}

// ---- the table -----------------------------------------------------------------------------------------------------

struct StatusRow {
    const char* name;
    unsigned int event_class;
    unsigned int sub_type;
    const char* entry;
};

static void PrintTo(const StatusRow& row, std::ostream* out) {
    *out << row.name;
}

// The word at byte 80 is 0xA0007, the one at byte 84 0xB0009.
static const StatusRow STATUS_ROWS[] = {
    {"Class2Type2", 2, 2, "3 1 7"},     {"Class2Type3", 2, 3, "6 1 7"},      {"Class2Type4", 2, 4, "9 1 7"},
    {"Class2Type0", 2, 0, "0 1 7"},     {"Class2Type1", 2, 1, "0 1 7"},      {"Class2Type5", 2, 5, "0 1 7"},
    {"Class2Type17", 2, 17, "0 1 7"},   {"Class2Type255", 2, 255, "0 1 7"},  {"Class3Type17", 3, 17, "1 1 9"},
    {"Class3Type19", 3, 19, "5 1 9"},   {"Class3Type18", 3, 18, "0 0 0"},    {"Class3Type2", 3, 2, "0 0 0"},
    {"Class3Type255", 3, 255, "0 0 0"}, {"Class4Type25", 4, 25, "0 0 0"},    {"Class4Type26", 4, 26, "0 0 0"},
    {"Class4Type2", 4, 2, "0 0 0"},     {"Class5Type27", 5, 27, "0 1 9"},    {"Class5Type28", 5, 28, "0 1 9"},
    {"Class5Type29", 5, 29, "0 1 9"},   {"Class5Type0", 5, 0, "0 1 9"},      {"Class5Type255", 5, 255, "0 1 9"},
    {"Class0Type2", 0, 2, "0 0 0"},     {"Class1Type17", 1, 17, "0 0 0"},    {"Class6Type27", 6, 27, "0 0 0"},
    {"Class255Type2", 255, 2, "0 0 0"}, {"Class255Type28", 255, 28, "0 0 0"}};

class AlarmStatusTable : public AlarmStatus, public testing::WithParamInterface<StatusRow> {};

TEST_P(AlarmStatusTable, Event_BecomesItsEntry) {
    m_events = {AnEvent(GetParam().event_class, GetParam().sub_type, 0xA0007, 0xB0009)};
    EXPECT_THAT(Entries(), ElementsAre(GetParam().entry));
}

// Nothing is carried over here, unlike in the alarm callback.
TEST_P(AlarmStatusTable, Event_OwesNothingToTheOneBefore) {
    m_events = {AnEvent(2, 4, 3), AnEvent(GetParam().event_class, GetParam().sub_type, 0xA0007, 0xB0009)};
    EXPECT_THAT(Entries(), ElementsAre("9 1 3", GetParam().entry));
}

INSTANTIATE_TEST_SUITE_P(Each, AlarmStatusTable, testing::ValuesIn(STATUS_ROWS), ByName());

TEST_F(AlarmStatus, SeveralEvents_StandInTheirOrder) {
    m_events = {AnEvent(5, 27, 0, 2), AnEvent(4, 25), AnEvent(2, 3, 65535), AnEvent(3, 19, 0, 65536)};
    EXPECT_THAT(Entries(), ElementsAre("0 1 2", "0 0 0", "6 1 65535", "5 1 0"));
}

// ---- the early end -------------------------------------------------------------------------------------------------

TEST_F(AlarmStatus, EndingEventInThirdPlace_LeavesItAndAllAfterItZero) {
    m_events = {AnEvent(2, 2, 1), AnEvent(3, 17, 0, 2), AnEvent(5, 28, 0, 3), AnEvent(2, 2, 4), AnEvent(3, 17, 0, 5)};
    EXPECT_THAT(Entries(), ElementsAre("3 1 1", "1 1 2", "0 0 0", "0 0 0", "0 0 0"));
    EXPECT_EQ(m_count, 5u);
}

TEST_F(AlarmStatus, EndingEventInFirstPlace_LeavesAllZero) {
    m_events = {AnEvent(5, 28, 0, 3), AnEvent(2, 2, 4)};
    EXPECT_THAT(Entries(), ElementsAre("0 0 0", "0 0 0"));
}

// All 32 bits of the word at byte 80 must be 0.
TEST_F(AlarmStatus, SameEventOfAnotherIndex_DoesNotEndTheList) {
    m_events = {AnEvent(5, 28, 0x10000, 3), AnEvent(5, 28, 1, 4), AnEvent(2, 2, 5)};
    EXPECT_THAT(Entries(), ElementsAre("0 1 3", "0 1 4", "3 1 5"));
}

TEST_F(AlarmStatus, OtherEventsOfIndexZero_DoNotEndTheList) {
    m_events = {AnEvent(5, 27, 0, 3), AnEvent(2, 28, 0, 4), AnEvent(4, 28), AnEvent(2, 2, 0)};
    EXPECT_THAT(Entries(), ElementsAre("0 1 3", "0 1 0", "0 0 0", "3 1 0"));
}

// ---- whose list it is ----------------------------------------------------------------------------------------------

TEST_F(AlarmStatus, List_IsFreedByItsRelease) {
    m_events = {AnEvent(2, 2)};
    Get();
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([this] { EXPECT_EQ(vexo_HostMgr_Dev_ReleaseAlarmStatus(m_list), 0); }), "");
    m_list = nullptr;
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_utility_free(vexo_hostmgr_resource, HostMgr_Dev_ReleaseAlarmStatus, 0x80005)"));
}

TEST_F(AlarmStatus, List_OutlivesItsLogin) {
    m_events = {AnEvent(2, 2, 8)};
    Get();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_THAT(platform.LiveMemory(), ElementsAre(0x80005u));
    EXPECT_EQ(Text(m_list[0]), "3 1 8");
}

TEST_F(AlarmStatus, EachCall_GivesAListOfItsOwn) {
    m_events = {AnEvent(2, 2, 8)};
    Get();
    Entry* second = nullptr;
    m_events = {AnEvent(2, 3, 9)};
    vexo_HostMgr_Dev_GetAlarmStatus(LOGIN, &second, &m_count);
    EXPECT_NE(second, m_list);
    EXPECT_EQ(Text(m_list[0]), "3 1 8");
    vexo_HostMgr_Dev_ReleaseAlarmStatus(second);
}

TEST_F(AlarmStatus, ManyThreads_EachGetTheWholeList) {
    m_events = {AnEvent(2, 2, 8), AnEvent(3, 19, 0, 2)};
    // The fixture's own answer notes what the memory held, which is for one thread at a time.
    ON_CALL(platform, vexo_utility_get_event_info)
        .WillByDefault([this](unsigned int, Event* info, unsigned int, unsigned int* count) {
            if (info != nullptr)
                std::copy(m_events.begin(), m_events.end(), info);
            *count = static_cast<unsigned int>(m_events.size());
            return 0;
        });
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([] {
            for (int round = 0; round < 50; ++round) {
                Entry* list = nullptr;
                unsigned int count = 0;
                EXPECT_EQ(vexo_HostMgr_Dev_GetAlarmStatus(LOGIN, &list, &count), 0);
                EXPECT_EQ(count, 2u);
                EXPECT_EQ(Text(list[0]) + ", " + Text(list[1]), "3 1 8, 5 1 2");
                vexo_HostMgr_Dev_ReleaseAlarmStatus(list);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(platform.LiveMemory(), testing::Not(testing::Contains(0x80005u)));
}

// ---- no memory for the events --------------------------------------------------------------------------------------

class AlarmStatusDeathTest : public AlarmStatus {};

TEST_F(AlarmStatusDeathTest, NoMemoryForTheEvents) {
    m_events = {AnEvent(2, 2)};
    platform.FailMalloc(1);
    EXPECT_EXIT(OnConsole([this] { Get(); }), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_alarm", "HostMgr_Dev_GetAlarmStatus", "event_info != NULL"));
}

// More events than memory can be asked for: it is not asked for less.
class AlarmStatusOverflowDeathTest : public AlarmStatus, public testing::WithParamInterface<unsigned int> {};

TEST_P(AlarmStatusOverflowDeathTest, EndsTheProcessAndAllocatesNothing) {
    m_announced = GetParam();
    ON_CALL(platform, vexo_utility_malloc)
        .WillByDefault([](vexo_user_id, unsigned int, unsigned int, unsigned int) -> void* { _exit(1); });
    EXPECT_EXIT(OnConsole([this] { Get(); }), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_alarm", "HostMgr_Dev_GetAlarmStatus", "event_info != NULL"));
}

INSTANTIATE_TEST_SUITE_P(Counts, AlarmStatusOverflowDeathTest, testing::Values(24970641, 0xFFFFFF9B, 0xFFFFFFFF));

TEST_F(AlarmStatusDeathTest, MostEventsThatMemoryCanBeAskedFor_AreAskedFor) {
    m_announced = 24970640;
    ON_CALL(platform, vexo_utility_malloc)
        .WillByDefault([](vexo_user_id, unsigned int, unsigned int size, unsigned int) -> void* {
            _exit(size == 4294967280 ? 0 : 1);
        });
    EXPECT_EXIT(Get(), ExitedWithCode(0), "");
}
