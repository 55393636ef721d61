// hostmgrctl config: its list, several records at once, members and bytes; what is set lasts; what is refused or
// mistyped says so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "ctl_config.h"

using ctl::Outcome;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

using namespace ctl_config;

namespace {

// ---- the list ------------------------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, List_HasALineForEachFormOfEachCommand) {
    const std::map<std::string, std::pair<unsigned, unsigned>> expected = {
        {"device", {100, 164}},      {"device-short", {100, 132}}, {"encoding", {106, 116}},
        {"time", {118, 24}},         {"time-short", {118, 12}},    {"users", {124, 6724}},
        {"zero-channel", {160, 56}}, {"state", {254, 57464}},      {"disks-8", {1054, 1160}},
        {"network", {1062, 3848}},   {"disks", {2026, 3464}},      {"platforms", {3002, 3200}},
        {"factory", {3010, 304}},    {"version", {30000, 4}},      {"picture-dir", {30001, 1024}}};
    std::map<std::string, std::pair<unsigned, unsigned>> found;
    const json list = json::parse(Run("config --json").out);
    for (const json& record : list.at("records")) {
        found[record.at("name")] = {record.at("command"), record.at("bytes")};
    }
    EXPECT_EQ(found, expected);
    const Outcome text = Run("config");
    EXPECT_EQ(text.status, OK);
    EXPECT_EQ(ctl::Lines(text.out).size(), expected.size() + 1);
    EXPECT_THAT(text.out,
                AllOf(HasSubstr("\nencoding          106  116 each  "), HasSubstr("\nnetwork          1062")));
    ExpectNarrow(text.out);
}

TEST_F(CtlConfigTest, Help_Fits) {
    for (const char* command : {"config --help", "config set --help", "config ability --help"}) {
        ExpectNarrow(Run(command).out);
    }
}

// ---- setting -------------------------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, Set_LastsAndIsShownSafely) {
    const std::string longest(255, 'x');
    // No UTF-8 for four reasons: a lone byte, a form too long, a surrogate, beyond the last code.
    const std::string odd = R"(\xc4\xe3\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80)";
    const Outcome set =
        Run("config set factory Site='North gate' Model=NVR-32 Long=" + longest +
            " Odd=\"$(printf '\\304\\343\\300\\257\\355\\240\\200\\364\\220\\200\\200\\033[2J')\" Chinese=北门");
    EXPECT_EQ(set.status, OK) << set.err;
    EXPECT_EQ(set.out, "set 5 factory items\n");
    EXPECT_EQ(Record("factory").at("items"), json::array({{{"name", "Model"}, {"value", "NVR-32"}},
                                                          {{"name", "Empty"}, {"value", ""}},
                                                          {{"name", "Site"}, {"value", "North gate"}},
                                                          {{"name", "Long"}, {"value", longest}},
                                                          {{"name", "Odd"}, {"value", odd + "\033[2J"}},
                                                          {{"name", "Chinese"}, {"value", "北门"}}}));
    const std::string table = Table("factory");
    EXPECT_THAT(table, AllOf(HasSubstr("  Model    NVR-32\n  Empty    -\n  Site     North gate\n"),
                             HasSubstr("  Odd      " + odd + "\\x1b[2J\n"), HasSubstr("  Chinese  北门\n"),
                             HasSubstr("\n           " + std::string(69, 'x') + "\n")));
    EXPECT_EQ(json::parse(Run("config set factory Site= --json").out), json({{"set", 1}}));
    EXPECT_EQ(Record("factory").at("items").at(2), json({{"name", "Site"}, {"value", ""}}));
}

TEST_F(CtlConfigTest, Set_Refused_SaysWhichAndWhy) {
    UseScenario(R"({"faults": [{"operation": "vexo_model_set_host_manager_factory_info_force", "nth": 2}]})");
    const Outcome set = Run("config set factory First=1 Second=2");
    EXPECT_EQ(set.status, REFUSED);
    EXPECT_THAT(set.out, IsEmpty());
    EXPECT_THAT(set.err, AllOf(HasSubstr("the item \"Second\" was refused, those before it are set"),
                               HasSubstr("the recorder says: vexo_hostmgr_set_factory_info["),
                               HasSubstr("vexo_model_set_host_manager_factory_info_force failed!!")));
    UseScenario("{}");
    EXPECT_EQ(Record("factory").at("items"), json::parse(R"([{"name": "First", "value": "1"}])"));
}

// ---- several, members, bytes ---------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, All_EachRecordOnce) {
    const Outcome all = Run("config all --json");
    EXPECT_EQ(all.status, OK) << all.err;
    std::vector<std::string> names;
    const json records = json::parse(all.out);
    for (const auto& [name, record] : records.items()) {
        names.push_back(name);
        EXPECT_TRUE(record.is_object()) << name;
    }
    EXPECT_THAT(names,
                testing::UnorderedElementsAre("device", "encoding", "time", "users", "zero-channel", "state", "network",
                                              "disks", "platforms", "factory", "version", "picture-dir"));
    EXPECT_EQ(records.at("version"), json({{"version", 2}}));
    EXPECT_THAT(Table("all"), AllOf(HasSubstr("\n\nnetwork: "), HasSubstr("\n\nfactory: ")));
    EXPECT_EQ(json::parse(Run("config version disks version --json").out).size(), 2U);
}

TEST_F(CtlConfigTest, All_WhatIsRefusedIsToldAndTheRestIsShown) {
    UseScenario(R"({"disks": []})");
    const Outcome all = Run("config all --json");
    EXPECT_EQ(all.status, REFUSED);
    const json records = json::parse(all.out);
    EXPECT_EQ(records.size(), 12U);
    EXPECT_EQ(records.at("picture-dir"), nullptr);
    EXPECT_EQ(records.at("factory"), nullptr);
    EXPECT_EQ(records.at("disks").at("disk_count"), 0);
    EXPECT_THAT(all.err, AllOf(HasSubstr("the record \"factory\" (command 3010) was refused"),
                               HasSubstr("vexo_hostmgr_factory.dat not exist!!"),
                               HasSubstr("the record \"picture-dir\" (command 30001) was refused"),
                               HasSubstr("vexo_model_get_hard_disk_num failed, or disk_num 0")));
}

TEST_F(CtlConfigTest, All_EachRefusalWithItsOwnWords) {
    UseScenario(R"({"disks": [{"megabytes": 10}]})");
    const Outcome two = Run("config factory picture-dir");
    EXPECT_EQ(two.status, REFUSED);
    const std::vector<std::string> words = ctl::Lines(two.err);
    ASSERT_EQ(words.size(), 4U) << two.err;
    EXPECT_THAT(words[1], HasSubstr("vexo_hostmgr_factory.dat not exist!!"));
    EXPECT_THAT(words[3], HasSubstr("state:3, part_num:1, disk_size_MB:10"));
}

TEST_F(CtlConfigTest, Members_StandWhereTheHeaderSays) {
    const std::string table = Table("network", "--members");
    EXPECT_THAT(table, AllOf(HasSubstr("\n       0      4  dwSize                   3848\n"),
                             HasSubstr("\n    1040      1  struEth[1].byEthNo       12\n"),
                             HasSubstr("\n    3476      2  wHttpPort                8081\n"),
                             HasSubstr("\n    3830      2  wRtspPort                8554\n")));
    EXPECT_THAT(Table("users", "--members"), HasSubstr("     778      1  struUser[0].byReserved2     255\n"));
}

TEST_F(CtlConfigTest, Raw_IsTheRecordAsItIs) {
    EXPECT_EQ(Run("config version --raw -").out, std::string("\2\0\0\0", 4));
    EXPECT_EQ(Run("config network --raw net.bin").status, OK);
    const std::string net = ctl::Contents(At("net.bin"));
    ASSERT_EQ(net.size(), 3848U);
    EXPECT_EQ(net.substr(3476, 2), "\x91\x1f") << "port 8081";
    EXPECT_EQ(Run("config encoding -c 1-3 --raw -").out.size(), 348U);
    const Outcome nowhere = Run("config network --raw no/such/folder");
    EXPECT_EQ(nowhere.status, NO_OUTPUT);
    EXPECT_THAT(nowhere.err, HasSubstr("cannot write no/such/folder: No such file or directory"));
}

// ---- refusals and mistakes -----------------------------------------------------------------------------------------

TEST_F(CtlConfigTest, Record_Refused_TellsTheRecordersWords) {
    UseScenario(R"({"faults": [{"operation": "vexo_cfgm_get_network_cap"}]})");
    const Outcome outcome = Run("config network");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("hostmgrctl: the record \"network\" (command 1062) was refused: "),
                                   HasSubstr("the recorder says: vexo_hostmgr_get_net_cfg["),
                                   HasSubstr("vexo_cfgm_get_network_cap failed!!!")));
}

TEST_F(CtlConfigTest, Ability_IsRefusedWithTheRecordersWords) {
    const Outcome outcome = Run("config ability 0x1a");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("ability 26 was refused"), HasSubstr("dwAbilityType 0x1a")));
}

TEST_F(CtlConfigTest, Arguments_Wrong_AreUsageErrorsThatSayWhatToDo) {
    const std::map<std::string, std::string> wrong = {
        {"config netwrok", "there is no record \"netwrok\": \"hostmgrctl config\" lists"},
        {"config network disk", "there is no record \"disk\""},
        {"config encoding -c 0", "are no channels"},
        {"config encoding -c 129", "are no channels"},
        {"config encoding -c 4-1", "are no channels"},
        {"config encoding -c 1-257", "are no channels"},
        {"config encoding -c one", "are no channels"},
        {"config encoding -c ''", "are no channels"},
        {"config network disks --raw x", "--raw takes one record at a time"},
        {"config all --raw x", "--raw takes one record at a time"},
        {"config --raw x", "--raw takes one record at a time"},
        {"config network --json --members", "exclude each other"},
        {"config set", "required"},
        {"config set factory", "required"},
        {"config set factory Name", "give NAME=VALUE"},
        {"config set factory =value", "give NAME=VALUE"},
        {"config set factory Good=1 " + std::string(48, 'n') + "=1", "has 48 bytes: give at most 47"},
        {"config set factory Name=" + std::string(256, 'v'), "has 256 bytes: give at most 255"},
        {"config set network Port=80", "can only be read"},
        {"config set nothing Port=80", "there is no record \"nothing\""},
        {"config ability", "required"},
        {"config ability high", "TYPE"}};
    for (const auto& [arguments, words] : wrong) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(words)) << arguments;
    }
    EXPECT_FALSE(std::filesystem::exists(At("x")));
    EXPECT_EQ(Record("factory").at("items").size(), 2U) << "a wrong item keeps the others from being set";
}

}  // namespace
