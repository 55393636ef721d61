// The simulated recorder's event table by plain calls: what the scenario plans, what is ordered, what a camera raises,
// and how the guest reads it. Time goes forward by control::SkipTime; nothing here waits for it.
#include <climits>
#include <cstring>
#include <stdexcept>

#include "control.h"
#include "device_support.h"
#include "live_reader.h"
#include "recorder_test_support.h"

namespace control = simulator::control;
using recorder_test::Contains;
using recorder_test::NewComplaints;

namespace {

constexpr double MINUTES = 6000;  ///< the plan lies so far ahead that no test comes to it by chance
[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "cameras": [{"name": "Gate"}, {"name": "Yard"}, {"name": "Dark", "signal": false},
                {"name": "Broken", "source": "scenario.json"}],
    "alarm_inputs": 3,
    "events": [
        {"kind": "motion", "channel": 2, "at": 6000, "for": 60, "every": 600},
        {"kind": "network lost", "at": 6010, "for": 0},
        {"kind": "video loss", "channel": 1, "at": 6020, "for": 10}
    ]
})"));

std::vector<vexo_event_detail_info> Events() {
    unsigned count = 0;
    EXPECT_EQ(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, nullptr, 0, &count), 0);
    std::vector<vexo_event_detail_info> events(count + 100);
    EXPECT_EQ(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, events.data(), count + 100, &count), 0);
    events.resize(count);
    return events;
}

bool Has(unsigned char event_class, unsigned char sub_type, unsigned channel, unsigned input) {
    for (const vexo_event_detail_info& event : Events()) {
        if (event.event_class == event_class && event.sub_type == sub_type && event.channel == channel &&
            event.input == input) {
            return true;
        }
    }
    return false;
}

struct Row {
    const char* kind;
    unsigned number;
    unsigned char event_class;
    unsigned char sub_type;
    unsigned channel;
    unsigned input;
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.kind;
}

class EventRow : public testing::TestWithParam<Row> {};

TEST_P(EventRow, OrderedAndEnded_StandsInTheTableMeanwhile) {
    const Row& row = GetParam();
    const size_t before = Events().size();
    control::SetEvent(row.kind, row.number, true);
    EXPECT_TRUE(Has(row.event_class, row.sub_type, row.channel, row.input));
    EXPECT_EQ(Events().size(), before + 1);
    control::SetEvent(row.kind, row.number, true);
    EXPECT_EQ(Events().size(), before + 1) << "it is there once";
    control::SetEvent(row.kind, row.number, false);
    EXPECT_FALSE(Has(row.event_class, row.sub_type, row.channel, row.input));
    EXPECT_EQ(Events().size(), before);
}

INSTANTIATE_TEST_SUITE_P(Kinds, EventRow,
                         testing::Values(Row{"motion", 1, 2, 2, 0, 0}, Row{"motion", 4, 2, 2, 3, 0},
                                         Row{"video loss", 2, 2, 3, 1, 0}, Row{"shelter", 3, 2, 4, 2, 0},
                                         Row{"disk full", 2, 3, 17, 0, 2}, Row{"disk error", 1, 3, 19, 0, 1},
                                         Row{"network lost", 0, 4, 25, 0, 0}, Row{"address conflict", 0, 4, 26, 0, 0},
                                         Row{"input", 3, 5, 27, 0, 2}, Row{"camera input", 2, 5, 28, 2, 1}));

TEST(Event, Table_SeveralEvents_InTheOrderOfTheirBeginning) {
    const std::vector<std::string> before = control::Events();
    control::SetEvent("shelter", 2, true);
    control::SkipTime(0.001);
    control::SetEvent("motion", 1, true);
    control::SkipTime(0.001);
    control::SetEvent("disk full", 1, true);
    std::vector<std::string> expected = before;
    expected.insert(expected.end(), {"shelter, channel 2", "motion, channel 1", "disk full, disk 1"});
    EXPECT_EQ(control::Events(), expected);
    control::SetEvent("shelter", 2, false);
    control::SetEvent("motion", 1, false);
    control::SetEvent("disk full", 1, false);
}

TEST(Event, Read_LessRoomThanEvents_FillsItAndTellsTheirNumber) {
    control::SetEvent("motion", 1, true);
    control::SetEvent("motion", 2, true);
    const auto there = static_cast<unsigned>(Events().size());
    ASSERT_GE(there, 2U);
    vexo_event_detail_info info[2];
    memset(info, 0xEE, sizeof info);
    unsigned count = 0;
    EXPECT_EQ(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, info, 1, &count), 0);
    EXPECT_EQ(count, there);
    EXPECT_EQ(info[1].event_class, 0xEE);
    control::SetEvent("motion", 1, false);
    control::SetEvent("motion", 2, false);
}

TEST(Event, Read_ByAnotherUserOrWithoutRoom_FailsWithComplaint) {
    const NewComplaints complaints;
    unsigned count = 77;
    EXPECT_NE(vexo_utility_get_event_info(1, nullptr, 0, &count), 0);
    EXPECT_NE(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, nullptr, 10, &count), 0);
    EXPECT_NE(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, nullptr, 0, nullptr), 0);
    EXPECT_EQ(count, 77U);
    EXPECT_TRUE(Contains(complaints.Text(), "by event user 1 for 0 events")) << complaints.Text();
    EXPECT_TRUE(Contains(complaints.Text(), "for 10 events, without room for them")) << complaints.Text();
}

TEST(Event, Read_FaultOnOrder_FailsOnce) {
    control::Fail("vexo_utility_get_event_info", 1);
    unsigned count = 77;
    EXPECT_NE(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, nullptr, 0, &count), 0);
    EXPECT_EQ(count, 77U);
    EXPECT_EQ(vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, nullptr, 0, &count), 0);
}

TEST(Event, Raw_AnyClass_StandsAsGiven) {
    control::SetRawEvent(5, 28, 0, 9, true);
    EXPECT_TRUE(Has(5, 28, 0, 9));
    control::SetRawEvent(5, 28, 0, 9, false);
    EXPECT_FALSE(Has(5, 28, 0, 9));
    control::SetRawEvent(200, 100, UINT_MAX, UINT_MAX, true);
    EXPECT_TRUE(Has(200, 100, UINT_MAX, UINT_MAX));
    control::SetRawEvent(200, 100, UINT_MAX, UINT_MAX, false);
}

std::string WhyNot(const char* kind, unsigned number) {
    try {
        control::SetEvent(kind, number, true);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

TEST(Event, Order_OfWhatIsNotThere_SaysWhatThereIs) {
    EXPECT_EQ(WhyNot("motoin", 1), "\"motoin\" is no kind of event; the nearest one is \"motion\"");
    EXPECT_EQ(WhyNot("motion", 0), "there is no channel 0: the recorder has channels 1 to 4");
    EXPECT_EQ(WhyNot("motion", 5), "there is no channel 5: the recorder has channels 1 to 4");
    EXPECT_EQ(WhyNot("input", 4), "there is no input 4: the recorder has inputs 1 to 3");
    EXPECT_EQ(WhyNot("disk full", 33), "there is no disk 33: the recorder has disks 1 to 32");
    EXPECT_EQ(WhyNot("network lost", 1), "\"network lost\" takes no number");
    EXPECT_THROW(control::SkipTime(-1), std::invalid_argument);
}

// ---- cameras -------------------------------------------------------------------------------------------------------

TEST(Event, Camera_LosesItsSignal_RaisesItsVideoLossUntilItIsBack) {
    EXPECT_TRUE(control::HasSignal(2));
    control::SetSignal(2, false);
    EXPECT_FALSE(control::HasSignal(2));
    EXPECT_TRUE(Has(2, 3, 1, 0));
    control::SetSignal(2, true);
    EXPECT_TRUE(control::HasSignal(2));
    EXPECT_FALSE(Has(2, 3, 1, 0));
    EXPECT_THROW(control::SetSignal(5, false), std::invalid_argument);
}

TEST(Event, Camera_WithoutSignalFromTheStart_HasItsVideoLossFromTheStart) {
    EXPECT_FALSE(control::HasSignal(3));
    EXPECT_TRUE(Has(2, 3, 2, 0));
}

TEST(Event, Camera_WhoseFileCannotBePlayed_RaisesItsVideoLoss) {
    live::Reader reader(3, VEXO_ENC_STR_SUB);
    EXPECT_TRUE(live::Eventually([&] { return reader.Try() && Has(2, 3, 3, 0); }));
}

TEST(Event, VideoLoss_Ordered_BlackensTheCamerasPicture) {
    live::Reader reader(1, VEXO_ENC_STR_SUB);
    control::SetEvent("video loss", 2, true);
    EXPECT_TRUE(live::Eventually([&] {
        const auto frame = reader.Next();
        return frame && frame->no_video;
    }));
    control::SetEvent("video loss", 2, false);
}

// ---- plan ----------------------------------------------------------------------------------------------------------

bool Motion2() {
    return Has(2, 2, 1, 0);
}

/** One story, for time goes forward only. Each turn lasts longer than any machine needs for a line of it. */
TEST(Event, Plan_FromTurnToTurn) {
    EXPECT_FALSE(Motion2());
    EXPECT_FALSE(Has(4, 25, 0, 0));
    control::SkipTime(MINUTES + 1);  // 6001: the first turn has begun
    EXPECT_TRUE(Motion2());
    EXPECT_FALSE(Has(4, 25, 0, 0));
    control::SkipTime(20);  // 6021: a camera loses its signal by plan
    EXPECT_TRUE(Has(4, 25, 0, 0));
    EXPECT_TRUE(Has(2, 3, 0, 0));
    EXPECT_FALSE(control::HasSignal(1));
    control::SkipTime(19);  // 6040
    EXPECT_TRUE(control::HasSignal(1));
    EXPECT_TRUE(Motion2());
    control::SkipTime(100);  // 6140: the turn is over
    EXPECT_FALSE(Motion2());
    EXPECT_TRUE(Has(4, 25, 0, 0)) << "an event for 0 seconds does not end";
    control::SkipTime(480);  // 6620: the second turn
    EXPECT_TRUE(Motion2());
    control::SetEvent("motion", 2, false);
    EXPECT_FALSE(Motion2()) << "ended by hand";
    control::SkipTime(600);  // 7220: the third one comes nevertheless
    EXPECT_TRUE(Motion2());
    control::SetEvent("network lost", 0, false);
    control::SkipTime(1000000);
    EXPECT_FALSE(Has(4, 25, 0, 0));
}

std::string WhyNotPlan(const std::string& event) {
    try {
        simulator::ParseScenario(R"({"channels": 2, "alarm_inputs": 0, "events": [)" + event + "]}");
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(Event, PlanInTheScenario_Mistakes_NamePlaceAndRemedy) {
    EXPECT_EQ(WhyNotPlan(R"({"kind": "motion", "channel": 2, "at": 0.5, "for": 1, "every": 2})"), "");
    EXPECT_EQ(WhyNotPlan(R"({"kind": "fire"})").find("events[0].kind: \"fire\" is no kind of event"), 0U);
    EXPECT_EQ(WhyNotPlan(R"({"at": 1})"), "events[0].kind: is missing, give a text");
    EXPECT_EQ(WhyNotPlan(R"({"kind": "motion", "channel": 3})"),
              "events[0].channel: 3 does not do, give a whole number from 1 to 2 (channel)");
    EXPECT_EQ(WhyNotPlan(R"({"kind": "input"})"),
              "events[0].kind: the recorder has no input: raise alarm_inputs or leave the event out");
    EXPECT_EQ(WhyNotPlan(R"({"kind": "motion", "for": 3, "every": 3})"),
              "events[0].every: a turn would not be over before the next one: make \"for\" shorter, and not 0");
    EXPECT_EQ(WhyNotPlan(R"({"kind": "network lost", "channel": 1})").find("events[0].channel: is not a key"), 0U);
}

}  // namespace
