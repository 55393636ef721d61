// hostmgrctl diagnose: the library's menu and its answers, out of GBK into whatever the terminal speaks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_recordings.h"

using namespace ctl;  // the tests are all about it
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char MENU[] =
    "诊断 hostmgr 资源\n"
    "  logins    <1000 平台库登录信息\n"
    "  live      <2000 打印预览信息\n"
    "  playback  <3000 打印回放信息\n"
    "  query     <4000 打印文件查询信息\n"
    "  talk      <5000 打印对讲信息\n"
    "  alarm     <6000 打印报警信息\n";

constexpr char TITLE_IN_GBK[] = "\xD5\xEF\xB6\xCF hostmgr \xD7\xCA\xD4\xB4\n";

struct Range {
    const char* name;
    const char* number;  // another one of the range
    const char* heading;
};

constexpr Range RANGES[] = {
    {"logins", "999", "平台登录信息:\n<Host_0>\n"}, {"live", "1000", "预览信息:\n<Host_0>\n"},
    {"playback", "2999", "回放信息:\n<Host_0>\n"},  {"query", "3500", "文件查询信息:\n<Host_0>\n"},
    {"talk", "4000", "对讲信息:\n<Host_0>\n"},      {"alarm", "5999", "报警信息:\n<Host_0>\n"},
};

class CtlDiagnoseTest : public CtlTest {
protected:
    CtlDiagnoseTest() {
        UseScenario(R"({"channels": 2, "recordings": {"live": "off", "history": {"segments": 0}},
                        "users": [{"name": "admin", "password": "admin12345", "administrator": true},
                                  {"name": "euro €", "password": "€€"}]})");
        setenv("LC_ALL", "C.UTF-8", 1);
    }
};

TEST_F(CtlDiagnoseTest, Menu_InAUtf8Terminal_IsReadable) {
    const Outcome outcome = Run("diagnose");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(outcome.out, MENU);
    EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(CtlDiagnoseTest, Menu_InATerminalWithoutChinese_HasAMarkForEachCharacter) {
    setenv("LC_ALL", "C", 1);
    const Outcome outcome = Run("diagnose");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("?? hostmgr ??\n  logins    <1000 ???????\n"));
}

TEST_F(CtlDiagnoseTest, Menu_InAGbkTerminal_StaysAsItIs) {
    const std::string folder = At("locales");
    std::filesystem::create_directory(folder);
    ASSERT_EQ(system(("localedef -i zh_CN -f GBK '" + folder + "/zh_CN.GBK' >/dev/null 2>&1").c_str()), 0)
        << "the package locales has what it takes";
    setenv("LOCPATH", folder.c_str(), 1);
    setenv("LC_ALL", "zh_CN.GBK", 1);
    setenv("LSAN_OPTIONS", "detect_leaks=0", 1);  // the C library keeps the folders of LOCPATH to itself
    const Outcome outcome = Run("diagnose");
    unsetenv("LSAN_OPTIONS");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith(TITLE_IN_GBK));
    unsetenv("LOCPATH");
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(Run("diagnose --encoding GBK").out, outcome.out);
}

TEST_F(CtlDiagnoseTest, Menu_Json_HasNamesBoundsAndTexts) {
    const Outcome outcome = Run("diagnose --json");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const json menu = json::parse(outcome.out);
    EXPECT_EQ(menu.at("title"), "诊断 hostmgr 资源");
    ASSERT_EQ(menu.at("menu").size(), 6U);
    EXPECT_EQ(menu.at("menu").at(5), json({{"name", "alarm"}, {"below", 6000}, {"text", "<6000 打印报警信息"}}));
}

TEST_F(CtlDiagnoseTest, Ranges_ByNameAndByNumber_AnswerAlike) {
    for (const Range& range : RANGES) {
        const Outcome named = Run(std::string("diagnose ") + range.name);
        EXPECT_EQ(named.status, OK) << named.err;
        EXPECT_THAT(named.out, StartsWith(range.heading));
        EXPECT_THAT(named.out, EndsWith("Host_0>\n"));
        EXPECT_EQ(Run(std::string("diagnose ") + range.number).out, named.out) << range.name;
    }
}

TEST_F(CtlDiagnoseTest, All_IsEveryRangeInTheMenusOrder) {
    std::string expected;
    for (const Range& range : RANGES) {
        expected += Run(std::string("diagnose ") + range.name).out;
    }
    EXPECT_EQ(Run("diagnose all").out, expected);
    const json answers = json::parse(Run("diagnose talk all --json").out);
    ASSERT_EQ(answers.size(), 7U);
    EXPECT_EQ(answers.at(0).at("command"), 4000);
    std::string text;
    for (size_t i = 1; i < 7; ++i) {
        text += answers.at(i).at("text").get<std::string>();
    }
    EXPECT_EQ(text, expected);
}

TEST_F(CtlDiagnoseTest, Logins_ShowWhoIsLoggedIn) {
    const Outcome outcome = Run("diagnose logins -u admin -p admin12345 -a 10.1.2.3");
    EXPECT_THAT(outcome.out, HasSubstr(" username:admin passwd:admin12345 ip:10.1.2.3\n")) << outcome.err;
}

TEST_F(CtlDiagnoseTest, WhatIsNoGbk_BecomesAMark) {
    const Outcome outcome = Run("diagnose logins -u 'euro €' -p '€€'");
    EXPECT_THAT(outcome.out, HasSubstr(" username:euro 鈧? passwd:鈧?鈧? ip:")) << outcome.err;
    EXPECT_TRUE(json::accept(Run("diagnose logins -u 'euro €' -p '€€' --json").out));
}

TEST_F(CtlDiagnoseTest, Live_WithAStream_ShowsItsState) {
    EXPECT_THAT(Run("diagnose live").out, Not(HasSubstr("Channel ")));
    const Outcome outcome = Run("diagnose live --live 2");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("流数据信息:[0]Login 0x1, Channel 2, StreamType 0x1\n"));
    EXPECT_THAT(outcome.err, IsEmpty()) << "nothing is left with the recorder";
}

TEST_F(CtlDiagnoseTest, BeyondTheMenu_IsNoData) {
    for (const char* number : {"6000", "999999999"}) {
        const Outcome outcome = Run(std::string("diagnose ") + number);
        EXPECT_EQ(outcome.status, NO_DATA);
        EXPECT_THAT(outcome.out, IsEmpty());
        EXPECT_THAT(outcome.err, HasSubstr("the menu has nothing under "));
    }
}

TEST_F(CtlDiagnoseTest, RecorderTakesNoMenu_SaysSo) {
    UseScenario(R"({"faults": [{"operation": "vexo_utility_regist_diag"}]})");
    const Outcome outcome = Run("diagnose");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, HasSubstr("the recorder did not take the library's diagnostics menu"));
}

TEST_F(CtlDiagnoseTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments : {"diagnose streams", "diagnose -1", "diagnose 1e3", "diagnose 10000000000",
                                  "diagnose ''", "diagnose --live 0", "diagnose --encoding nowhere"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
