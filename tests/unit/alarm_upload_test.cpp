// The upload pass: which events it reads, what it makes of them, who is told, in which order.
#include <string.h>
#include <unistd.h>

#include "alarm_fixture.h"

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

class AlarmUpload : public AlarmFixture {
protected:
    /** Runs one pass that must print nothing, and gives what was reported. */
    Lines ReportsOfPass() {
        EXPECT_EQ(RawConsole([this] { Pass(); }), "");
        return receiver.TakeLines();
    }

    static std::string FreeEvents() { return "vexo_utility_free(vexo_hostmgr_resource, HostMgrAlarmUp, 0x26004)"; }

    Receiver receiver;
};

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(AlarmUpload, Pass_MakesItsCallsInOrder) {
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    EXPECT_THAT(CallsOfPass(),
                ElementsAreArray(Joined({{"vexo_cfgm_get_dev_cap()", CountCall(), EventMemory(102), ReadCall(102)},
                                         UnderAlarmLock("IsRun"),
                                         UnderAlarmLock("IsRun"),
                                         {FreeEvents()}})));
}

TEST_F(AlarmUpload, Pass_TakesNoTableLock) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2)};
    MockLock& table = platform.Lock(TABLE_LOCK);
    table.lock("test", "test");
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1"));
    table.unlock("test", "test");
}

TEST_F(AlarmUpload, MemoryOfTheEvents_IsZeroBeforeTheyAreRead) {
    m_events = {AnEvent(2, 2)};
    Pass();
    EXPECT_EQ(m_before.size(), 101u * 172);
    EXPECT_THAT(m_before, Each(0));
}

// The events are counted even so.
TEST_F(AlarmUpload, NoCapability_DoesNothing) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2)};
    ON_CALL(platform, vexo_cfgm_get_dev_cap).WillByDefault(Return(nullptr));
    EXPECT_THAT(CallsOfPass(), ElementsAre("vexo_cfgm_get_dev_cap()", CountCall()));
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

TEST_F(AlarmUpload, NoEvents_DoesNothing) {
    Subscribe(&receiver);
    EXPECT_THAT(CallsOfPass(), ElementsAre("vexo_cfgm_get_dev_cap()", CountCall()));
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

TEST_F(AlarmUpload, EventsCannotBeCounted_DoesNothing) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2)};
    m_count_result = -1;
    EXPECT_THAT(CallsOfPass(), ElementsAre("vexo_cfgm_get_dev_cap()", CountCall()));
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

TEST_F(AlarmUpload, EventsCannotBeRead_DeliversNothing) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2)};
    m_read_result = -1;
    EXPECT_THAT(CallsOfPass(),
                ElementsAre("vexo_cfgm_get_dev_cap()", CountCall(), EventMemory(101), ReadCall(101), FreeEvents()));
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

TEST_F(AlarmUpload, AfterAPassThatFailed_TheNextOneDelivers) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2)};
    m_read_result = -1;
    Pass();
    m_read_result = 0;
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1"));
}

TEST_F(AlarmUpload, HundredMoreEventsThanAnnounced_AreAllDelivered) {
    Subscribe(&receiver);
    m_events.assign(102, AnEvent(2, 2));
    m_announced = 2;
    EXPECT_EQ(ReportsOfPass().size(), 102u);
}

TEST_F(AlarmUpload, OneMoreEventThanThereIsRoomFor_DeliversNothing) {
    Subscribe(&receiver);
    m_events.assign(103, AnEvent(2, 2));
    m_announced = 2;
    EXPECT_THAT(CallsOfPass(),
                ElementsAre("vexo_cfgm_get_dev_cap()", CountCall(), EventMemory(102), ReadCall(102), FreeEvents()));
    EXPECT_THAT(receiver.TakeLines(), IsEmpty());
}

TEST_F(AlarmUpload, FewerEventsThanAnnounced_OnlyThoseAreDelivered) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2)};
    m_announced = 5;
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1"));
}

// ---- the table -----------------------------------------------------------------------------------------------------

struct UploadRow {
    const char* name;
    unsigned int event_class;
    unsigned int sub_type;
    const char* first;    // reported when it is the first event of a pass
    const char* carried;  // reported after an event of type 4 on channel 7
};

static void PrintTo(const UploadRow& row, std::ostream* out) {
    *out << row.name;
}

// The word at byte 80 is 20, the one at byte 84 is 40; 4 channels are analog, of 16.
static const UploadRow UPLOAD_ROWS[] = {
    {"Class2Type2", 2, 2, "1 on 21", "1 on 21"},     {"Class2Type3", 2, 3, "4 on 21", "4 on 21"},
    {"Class2Type4", 2, 4, "3 on 21", "3 on 21"},     {"Class2Type0", 2, 0, "0 on 21", "4 on 21"},
    {"Class2Type5", 2, 5, "0 on 21", "4 on 21"},     {"Class2Type17", 2, 17, "0 on 21", "4 on 21"},
    {"Class2Type255", 2, 255, "0 on 21", "4 on 21"}, {"Class3Type17", 3, 17, "5 on 40", "5 on 40"},
    {"Class3Type19", 3, 19, "6 on 40", "6 on 40"},   {"Class3Type18", 3, 18, "0 on 0", "4 on 0"},
    {"Class3Type2", 3, 2, "0 on 0", "4 on 0"},       {"Class3Type255", 3, 255, "0 on 0", "4 on 0"},
    {"Class4Type25", 4, 25, "8 on 0", "8 on 0"},     {"Class4Type26", 4, 26, "9 on 0", "9 on 0"},
    {"Class4Type27", 4, 27, "0 on 0", "4 on 0"},     {"Class4Type0", 4, 0, "0 on 0", "4 on 0"},
    {"Class5Type27", 5, 27, "2 on 41", "2 on 41"},   {"Class5Type28", 5, 28, "2 on 53", "2 on 53"},
    {"Class5Type29", 5, 29, "2 on 0", "2 on 7"},     {"Class5Type30", 5, 30, "2 on 0", "2 on 7"},
    {"Class5Type0", 5, 0, "2 on 0", "2 on 7"},       {"Class5Type255", 5, 255, "2 on 0", "2 on 7"},
    {"Class0Type2", 0, 2, "0 on 0", "4 on 0"},       {"Class1Type27", 1, 27, "0 on 0", "4 on 0"},
    {"Class6Type28", 6, 28, "0 on 0", "4 on 0"},     {"Class255Type2", 255, 2, "0 on 0", "4 on 0"},
    {"Class255Type28", 255, 28, "0 on 0", "4 on 0"}};

class AlarmUploadTable : public AlarmUpload, public testing::WithParamInterface<UploadRow> {
protected:
    void SetUp() override {
        AlarmUpload::SetUp();
        Subscribe(&receiver);
    }

    static Event OfRow() { return AnEvent(GetParam().event_class, GetParam().sub_type, 20, 40); }
};

TEST_P(AlarmUploadTable, FirstEventOfAPass_IsReported) {
    m_events = {OfRow()};
    EXPECT_THAT(ReportsOfPass(), ElementsAre(std::string("1281: ") + GetParam().first));
}

TEST_P(AlarmUploadTable, EventAfterAnother_KeepsWhatItDoesNotSet) {
    m_events = {AnEvent(2, 3, 6), OfRow()};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 4 on 7", std::string("1281: ") + GetParam().carried));
}

TEST_P(AlarmUploadTable, EventInTheNextPass_KeepsNothing) {
    m_events = {AnEvent(2, 3, 6)};
    ReportsOfPass();
    m_events = {OfRow()};
    EXPECT_THAT(ReportsOfPass(), ElementsAre(std::string("1281: ") + GetParam().first));
}

INSTANTIATE_TEST_SUITE_P(Each, AlarmUploadTable, testing::ValuesIn(UPLOAD_ROWS), ByName());

TEST_F(AlarmUpload, TypeCarriedOverSeveralEvents_IsTheLastOneSet) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 3, 8), AnEvent(4, 27), AnEvent(1, 1), AnEvent(2, 9, 1), AnEvent(4, 25), AnEvent(3, 1)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 4 on 9", "1281: 4 on 0", "1281: 4 on 0", "1281: 4 on 2",
                                             "1281: 8 on 0", "1281: 8 on 0"));
}

TEST_F(AlarmUpload, ChannelCarriedOverSeveralEvents_IsTheLastOneSet) {
    Subscribe(&receiver);
    m_events = {AnEvent(5, 27, 0, 6), AnEvent(5, 30), AnEvent(5, 31), AnEvent(4, 1), AnEvent(5, 30)};
    EXPECT_THAT(ReportsOfPass(),
                ElementsAre("1281: 2 on 7", "1281: 2 on 7", "1281: 2 on 7", "1281: 2 on 0", "1281: 2 on 0"));
}

// What nobody was told is carried over as well.
TEST_F(AlarmUpload, NobodyToldOfTheEventBefore_ItIsCarriedOver) {
    Receiver second;
    LogInAll({2});
    Subscribe(&receiver);
    Subscribe(&second, 2);
    Enable(0);
    second.Then([](unsigned char*) { Enable(1); });
    m_events = {AnEvent(5, 27, 0, 6), AnEvent(5, 30)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 2 on 7"));
}

// ---- numbers at their limits ---------------------------------------------------------------------------------------

TEST_F(AlarmUpload, HighestIndex_WrapsToZero) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2, 0xFFFFFFFF), AnEvent(5, 27, 0, 0xFFFFFFFF), AnEvent(3, 17, 0, 0xFFFFFFFF)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 0", "1281: 2 on 0", "1281: 5 on -1"));
}

TEST_F(AlarmUpload, MoreAnalogChannelsThanChannels_CountBackwards) {
    Subscribe(&receiver);
    m_capability.analog_channels = 10;
    m_capability.total_channels = 3;
    m_events = {AnEvent(5, 28, 0, 20), AnEvent(5, 28, 0, 0)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 2 on 14", "1281: 2 on -6"));
}

// ---- what the callback is given ------------------------------------------------------------------------------------

TEST_F(AlarmUpload, Callback_GetsTheRecordAndWhatItWasSetWith) {
    Subscribe(&receiver, LOGIN, 0, 6);
    m_events = {AnEvent(2, 3, 7)};
    Pass();
    const std::vector<Report> reports = receiver.Take();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].hLogin, LOGIN);
    EXPECT_EQ(reports[0].stream, 6);
    EXPECT_EQ(reports[0].channel, 8);
    EXPECT_EQ(reports[0].type, 4u);
    std::vector<unsigned char> record(132, 0);
    record[0] = 4;
    record[4] = 8;
    record[8] = 1;
    EXPECT_EQ(reports[0].data, record);
}

// Also of an event that sets neither type nor channel.
TEST_F(AlarmUpload, Record_IsActiveAndOtherwiseZero) {
    Subscribe(&receiver);
    m_events = {AnEvent(1, 1), AnEvent(0, 0)};
    Pass();
    std::vector<unsigned char> record(132, 0);
    record[8] = 1;
    for (const Report& report : receiver.Take())
        EXPECT_EQ(report.data, record);
}

// Its own copy: what one login does with it reaches neither the next one nor the next event.
TEST_F(AlarmUpload, RecordOverwrittenByACallback_IsWholeForTheOthers) {
    LogInAll({2});
    Subscribe(&receiver);
    Subscribe(&receiver, 2);
    receiver.Then([](unsigned char* record) { memset(record, 0xFF, 132); });
    m_events = {AnEvent(2, 3, 7), AnEvent(5, 30)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 4 on 8", "2: 4 on 8", "1281: 2 on 8", "2: 2 on 8"));
}

TEST_F(AlarmUpload, Callback_RunsWithNoLockHeld) {
    Subscribe(&receiver);
    Lines held = {"not called"};
    receiver.Then([&](unsigned char*) { held = platform.HeldLocks(); });
    m_events = {AnEvent(2, 2)};
    Pass();
    EXPECT_THAT(held, IsEmpty());
}

// ---- who is told ---------------------------------------------------------------------------------------------------

TEST_F(AlarmUpload, TwoEvents_AreReportedInEachPassAsLongAsTheyStand) {
    Subscribe(&receiver);
    m_events = {AnEvent(2, 2, 0), AnEvent(3, 17, 0, 1)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1", "1281: 5 on 1"));
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1", "1281: 5 on 1"));
    m_events.pop_back();
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1"));
    m_events.clear();
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

TEST_F(AlarmUpload, SeveralLogins_AreToldOfEachEventInTheOrderOfTheirSlots) {
    LogInAll({9, 3});
    Subscribe(&receiver, 3);
    Subscribe(&receiver, LOGIN);
    Subscribe(&receiver, 9);
    m_events = {AnEvent(2, 2, 0), AnEvent(2, 3, 1)};
    EXPECT_THAT(ReportsOfPass(),
                ElementsAre("1281: 1 on 1", "9: 1 on 1", "3: 1 on 1", "1281: 4 on 2", "9: 4 on 2", "3: 4 on 2"));
}

TEST_F(AlarmUpload, AllSlotsInUse_TheLastOneIsTold) {
    for (unsigned int handle = 2; handle <= 128; ++handle)
        LogInAll({handle});
    Subscribe(&receiver, 128);
    m_events = {AnEvent(2, 2)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("128: 1 on 1"));
}

TEST_F(AlarmUpload, NobodySubscribed_AsksEachLoginForItsSwitchOnly) {
    LogInAll({2});
    m_events = {AnEvent(2, 2)};
    EXPECT_EQ(With(ALARM_LOCK, CallsOfPass()), Joined({UnderAlarmLock("IsRun"), UnderAlarmLock("IsRun")}));
}

TEST_F(AlarmUpload, SwitchedOff_IsNotTold) {
    Subscribe(&receiver);
    Enable(0);
    m_events = {AnEvent(2, 2)};
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

TEST_F(AlarmUpload, SwitchedOnByAnyWord_IsTold) {
    Subscribe(&receiver);
    Enable(0x80000000);
    m_events = {AnEvent(2, 2)};
    EXPECT_THAT(ReportsOfPass(), ElementsAre("1281: 1 on 1"));
}

TEST_F(AlarmUpload, LoggedOut_IsNotTold) {
    Subscribe(&receiver);
    vexo_HostMgr_Dev_Logout(LOGIN);
    m_events = {AnEvent(2, 2)};
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

// The object is what counts: one that a failed login left in a free slot is asked, too.
TEST_F(AlarmUpload, ObjectsThatAFailedLoginLeft_AreAskedForTheirSwitch) {
    FailLogin();
    m_events = {AnEvent(2, 2)};
    EXPECT_EQ(With(ALARM_LOCK, CallsOfPass()), Joined({UnderAlarmLock("IsRun"), UnderAlarmLock("IsRun")}));
}

// ---- subscriptions that are not served -----------------------------------------------------------------------------

class AlarmUploadNotServed : public AlarmUpload, public testing::WithParamInterface<int> {};

TEST_P(AlarmUploadNotServed, SaysSoOncePerEventAndPass) {
    Subscribe(&receiver, LOGIN, 3, GetParam());
    m_events = {AnEvent(2, 2), AnEvent(2, 3)};
    const std::string once = Error("HostMgrAlarmUp", "Not support!!\n");
    EXPECT_EQ(Console([this] { Pass(); }), once + once);
    EXPECT_EQ(Console([this] { Pass(); }), once + once);
    EXPECT_THAT(receiver.TakeLines(), IsEmpty());
}

TEST_P(AlarmUploadNotServed, OtherLogins_AreServed) {
    LogInAll({2});
    Subscribe(&receiver, LOGIN, 3, GetParam());
    Subscribe(&receiver, 2);
    m_events = {AnEvent(2, 2)};
    EXPECT_EQ(Console([this] { Pass(); }), Error("HostMgrAlarmUp", "Not support!!\n"));
    EXPECT_THAT(receiver.TakeLines(), ElementsAre("2: 1 on 1"));
}

TEST_P(AlarmUploadNotServed, WithoutACallbackOrSwitchedOff_SaysNothing) {
    Subscribe(&receiver, LOGIN, 3, GetParam());
    Enable(0);
    m_events = {AnEvent(2, 2)};
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
    vexo_HostMgr_Dev_SetAlarmCallback(LOGIN, 3, GetParam(), nullptr, nullptr);
    Enable(1);
    EXPECT_THAT(ReportsOfPass(), IsEmpty());
}

// Channel mode, then special mode.
INSTANTIATE_TEST_SUITE_P(StreamType, AlarmUploadNotServed, testing::Values(0, 1), testing::PrintToStringParamName());

// ---- no memory for the events --------------------------------------------------------------------------------------

// The thread starts in the process that ends.
class AlarmUploadDeathTest : public AlarmUpload {};

TEST_F(AlarmUploadDeathTest, NoMemoryForTheEvents) {
    m_events = {AnEvent(2, 2)};
    platform.FailMalloc(1);
    EXPECT_EXIT(OnConsole([this] { Pass(); }), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_resource", "HostMgrAlarmUp", "event_info != NULL"));
}

TEST_F(AlarmUploadDeathTest, MoreEventsThanMemoryCanBeAskedFor) {
    m_announced = 0xFFFFFFFF;
    ON_CALL(platform, vexo_utility_malloc)
        .WillByDefault([](vexo_user_id, unsigned int, unsigned int, unsigned int) -> void* { _exit(1); });
    EXPECT_EXIT(OnConsole([this] { Pass(); }), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_resource", "HostMgrAlarmUp", "event_info != NULL"));
}
