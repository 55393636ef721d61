// The scenario's keys for alarm inputs, talk, zero channel and reboot: defaults, bounds, and messages that name the
// place. Those for events stand in event_test.cpp.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "core/scenario.h"

namespace {

std::string WhyNot(const std::string& json) {
    try {
        simulator::ParseScenario(json);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(ScenarioDevice, NothingSaid_TakesTheDefaults) {
    const simulator::Scenario scenario = simulator::ParseScenario("{}");
    EXPECT_EQ(scenario.alarm_inputs, 4U);
    EXPECT_TRUE(scenario.events.empty());
    EXPECT_EQ(scenario.talk.source, "tone");
    EXPECT_EQ(scenario.talk.hz, 1000U);
    EXPECT_EQ(scenario.talk.level, 0.3);
    EXPECT_EQ(scenario.talk.frames, std::vector<unsigned>{320});
    EXPECT_EQ(scenario.zero_channel.width, 1280U);
    EXPECT_EQ(scenario.zero_channel.height, 720U);
    EXPECT_EQ(scenario.zero_channel.fps, 12U);
    EXPECT_EQ(scenario.zero_channel.gop, 24U);
    EXPECT_EQ(scenario.zero_channel.kbps, 2000U);
    EXPECT_EQ(scenario.reboot_seconds, 5U);
}

TEST(ScenarioDevice, Everything_IsReadAsItStands) {
    const simulator::Scenario scenario = simulator::ParseScenario(R"({
        "alarm_inputs": 16, "reboot_seconds": 0,
        "talk": {"source": "voice.wav", "hz": 0, "level": 1, "frames": [320, 3200]},
        "zero_channel": {"width": 1920, "height": 1080, "fps": 25, "gop": 50, "kbps": 8000},
        "events": [{"kind": "disk full", "disk": 3, "at": 2.5, "for": 0}]
    })");
    EXPECT_EQ(scenario.alarm_inputs, 16U);
    EXPECT_EQ(scenario.reboot_seconds, 0U);
    EXPECT_EQ(scenario.talk.source, "voice.wav");
    EXPECT_EQ(scenario.talk.hz, 0U);
    EXPECT_EQ(scenario.talk.level, 1);
    EXPECT_EQ(scenario.talk.frames, (std::vector<unsigned>{320, 3200}));
    EXPECT_EQ(scenario.zero_channel.width, 1920U);
    EXPECT_EQ(scenario.zero_channel.kbps, 8000U);
    ASSERT_EQ(scenario.events.size(), 1U);
    EXPECT_EQ(scenario.events[0].kind, simulator::EventKind::DiskFull);
    EXPECT_EQ(scenario.events[0].number, 3U);
    EXPECT_EQ(scenario.events[0].at, 2.5);
    EXPECT_EQ(scenario.events[0].lasts, 0);
}

TEST(ScenarioDevice, Mistakes_NamePlaceAndBounds) {
    EXPECT_EQ(WhyNot(R"({"alarm_inputs": 65})"),
              "alarm_inputs: 65 does not do, give a whole number from 0 to 64 (alarm inputs)");
    EXPECT_EQ(WhyNot(R"({"reboot_seconds": -1})"),
              "reboot_seconds: -1 does not do, give a whole number from 0 to 600 (seconds)");
    EXPECT_EQ(WhyNot(R"({"talk": {"hz": 4000}})"),
              "talk.hz: 4000 does not do, give a whole number from 0 to 3900 (Hz, 0 for silence)");
    EXPECT_EQ(WhyNot(R"({"talk": {"frames": [320, 0]}})"),
              "talk.frames[1]: 0 does not do, give a whole number from 1 to 8000 (bytes of sound)");
    EXPECT_EQ(WhyNot(R"({"talk": {"sauce": "x"}})"),
              "talk.sauce: is not a key that belongs here; the nearest one is \"source\"");
    EXPECT_EQ(WhyNot(R"({"zero_channel": {"width": 641}})"),
              "zero_channel.width: 641 is odd, give an even number of pixels");
    EXPECT_EQ(WhyNot(R"({"zero_channel": {"height": 100}})"),
              "zero_channel.height: 100 does not do, give a whole number from 360 to 4096 (pixels)");
    EXPECT_EQ(WhyNot(R"({"frames_kept": 100, "zero_channel": {"gop": 101}})"),
              "frames_kept: 100 is less than the longest gop, 101: a live list must hold a key frame, raise it");
}

}  // namespace
