// hostmgrctl doc and factory: what is stored is there in the next run, byte for byte, and what cannot be stored is said
// and changes nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_recordings.h"
#include "ctl_running.h"

using namespace ctl;  // the tests are all about it
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

const std::string SMALL = "<a>123</a>";
constexpr size_t MEBIBYTE = 1U << 20U;

/** A document of exactly so many bytes. */
std::string DocumentOf(size_t size) {
    std::string text = "<?xml version=\"1.0\"?>\n<list>\n";
    const std::string end = "</list>\n";
    for (unsigned i = 0; text.size() + 40 + end.size() < size; ++i) {
        text += "  <item number=\"" + std::to_string(i) + "\"/>\n";
    }
    text += "<!--" + std::string(size - text.size() - end.size() - 7, '-') + "-->" + end;
    std::replace(text.end() - static_cast<long>(end.size() + 3 + size % 40 + 1), text.end() - 11, '-', '.');
    return text;
}

class CtlDocumentTest : public CtlTest {
protected:
    CtlDocumentTest() { UseScenario(SCENARIO); }

    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(At(name), std::ios::binary) << text;
    }

    static std::filesystem::path ConfigFolder() { return std::filesystem::path(getenv("RECORDER_HOME")) / "config"; }

    static constexpr char SCENARIO[] = R"({"channels": 1, "recordings": {"live": "off", "history": {"segments": 0}},
        "factory": [{"name": "DeviceName", "value": "Front desk"}]})";
};

// ---- documents -----------------------------------------------------------------------------------------------------

TEST_F(CtlDocumentTest, Document_OfTenBytes_ComesBackInAnotherRun) {
    ASSERT_EQ(SMALL.size(), 10U);
    Write("small.xml", SMALL);
    const Outcome saved = Run("doc save platform small.xml");
    EXPECT_EQ(saved.status, OK) << saved.err;
    EXPECT_EQ(saved.out, "document platform: 10 bytes saved\n");
    const Outcome read = Run("doc read platform");
    EXPECT_EQ(read.status, OK) << read.err;
    EXPECT_EQ(read.out, SMALL);
    EXPECT_THAT(read.err, IsEmpty());
}

TEST_F(CtlDocumentTest, Document_OfAMebibyte_ComesBackByteForByte) {
    const std::string text = DocumentOf(MEBIBYTE);
    ASSERT_EQ(text.size(), MEBIBYTE);
    Write("large.xml", text);
    const Outcome saved = Run("doc save large --json", "<large.xml");
    EXPECT_EQ(saved.status, OK) << saved.err;
    EXPECT_EQ(json::parse(saved.out), json({{"name", "large"}, {"bytes", MEBIBYTE}}));
    const Outcome read = Run("doc read large -o copy.xml");
    EXPECT_EQ(read.status, OK) << read.err;
    EXPECT_EQ(read.out, "document large: 1048576 bytes written to copy.xml\n");
    EXPECT_TRUE(Contents(At("copy.xml")) == text);
    EXPECT_FALSE(std::filesystem::exists(At("copy.xml.part")));
}

TEST_F(CtlDocumentTest, Document_InAnotherEncoding_IsNotTouched) {
    const std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<name>Z\xFCrich</name>\n";
    Write("latin.xml", text);
    ASSERT_EQ(Run("doc save latin - ", "<latin.xml").status, OK);
    EXPECT_EQ(Run("doc read latin").out, text);
    const json told = json::parse(Run("doc read latin --json").out);
    EXPECT_EQ(told.at("bytes"), text.size());
    EXPECT_THAT(told.at("text").get<std::string>(), HasSubstr("<name>Z\\xfcrich</name>"));
}

TEST_F(CtlDocumentTest, Document_Saved_TakesThePlaceOfTheOneBefore) {
    Write("one.xml", "<one/>");
    Write("two.xml", "<two/>");
    ASSERT_EQ(Run("doc save platform one.xml").status, OK);
    ASSERT_EQ(Run("doc save other two.xml").status, OK);
    ASSERT_EQ(Run("doc save platform two.xml").status, OK);
    EXPECT_EQ(Run("doc read platform").out, "<two/>");
    EXPECT_EQ(Run("doc read other").out, "<two/>");
}

TEST_F(CtlDocumentTest, Document_Malformed_IsRefusedAndTheOldOneStays) {
    Write("good.xml", SMALL);
    ASSERT_EQ(Run("doc save platform good.xml").status, OK);
    for (const std::string& text : {std::string("<a><b></a>"), std::string("no XML at all"), std::string("<a/><b/>"),
                                    "<a>" + std::string(MEBIBYTE, 'x'), "<a>" + DocumentOf(MEBIBYTE)}) {
        Write("bad.xml", text);
        const Outcome outcome = Run("doc save platform bad.xml");
        EXPECT_EQ(outcome.status, REFUSED);
        EXPECT_THAT(outcome.out, IsEmpty());
        EXPECT_THAT(outcome.err, StartsWith("hostmgrctl: the recorder refused document platform (" +
                                            std::to_string(text.size()) + " bytes): it must be well-formed XML"));
        EXPECT_THAT(outcome.err, HasSubstr("]: load pXml " + text.substr(0, 3)));
        EXPECT_LT(outcome.err.size(), 800U) << "a document is not printed whole";
    }
    EXPECT_EQ(Run("doc read platform").out, SMALL);
}

TEST_F(CtlDocumentTest, Document_ThatNoLibraryTakesWhole_IsNotSent) {
    Write("empty.xml", "");
    Write("zero.xml", std::string("<a>\0</a>", 8));
    std::filesystem::create_directory(At("folder"));
    for (const char* file : {"empty.xml", "zero.xml", "folder", "missing.xml"}) {
        const Outcome outcome = Run(std::string("doc save platform ") + file);
        EXPECT_EQ(outcome.status, USAGE) << file;
        EXPECT_THAT(outcome.err, HasSubstr(file)) << file;
    }
    EXPECT_EQ(Run("doc read platform").status, REFUSED) << "nothing was saved";
}

TEST_F(CtlDocumentTest, Document_ThatCannotBeWritten_IsNotReportedAsSaved) {
    Write("small.xml", SMALL);
    const Outcome name = Run("doc save " + std::string(300, 'n') + " small.xml");
    EXPECT_EQ(name.status, REFUSED);
    EXPECT_THAT(name.err, HasSubstr("or the name too long?"));
    std::filesystem::remove_all(ConfigFolder());
    std::ofstream(ConfigFolder()) << "a file where the folder should be";
    const Outcome folder = Run("doc save platform small.xml");
    EXPECT_EQ(folder.status, REFUSED);
    EXPECT_THAT(folder.out, IsEmpty());
    EXPECT_THAT(folder.err, HasSubstr("could not write document platform: is its configuration folder full or"));
}

TEST_F(CtlDocumentTest, Document_ThatIsNotThere_SaysSoAndLeavesTheFile) {
    Write("copy.xml", "what was there");
    const Outcome outcome = Run("doc read nothing -o copy.xml");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("has no document nothing, or no XML in it"));
    EXPECT_EQ(Contents(At("copy.xml")), "what was there");
}

TEST_F(CtlDocumentTest, Document_DiskFullHalfWay_LeavesTheOldOnesOnBothSides) {
    const std::string text = DocumentOf(MEBIBYTE);
    Write("large.xml", text);
    Write("copy.xml", "what was there");
    ASSERT_EQ(Run("doc save large large.xml").status, OK);
    Write("other.xml", DocumentOf(MEBIBYTE / 2));
    {
        const SizeLimit limit(MEBIBYTE / 4);
        EXPECT_EQ(Run("doc save large other.xml").status, REFUSED);
        EXPECT_EQ(Run("doc read large -o copy.xml").status, NO_OUTPUT);
    }
    EXPECT_EQ(Contents(At("copy.xml")), "what was there");
    EXPECT_FALSE(std::filesystem::exists(At("copy.xml.part")));
    EXPECT_TRUE(Run("doc read large").out == text);
}

TEST_F(CtlDocumentTest, Document_WhereNothingCanBeWritten_SaysSo) {
    Write("small.xml", SMALL);
    ASSERT_EQ(Run("doc save platform small.xml").status, OK);
    std::filesystem::create_directory(At("folder"));
    std::filesystem::create_symlink("/dev/full", At("full"));
    for (const std::string path : {"/proc/copy.xml", "no/folder/copy.xml", "folder", "full"}) {
        const Outcome outcome = Run("doc read platform -o " + path);
        EXPECT_EQ(outcome.status, NO_OUTPUT) << path;
        EXPECT_THAT(outcome.err, HasSubstr("cannot write " + path + ": ")) << path;
    }
    EXPECT_EQ(Run("doc read platform", ">/dev/full").status, NO_OUTPUT);
    EXPECT_TRUE(std::filesystem::is_symlink(At("full")));
}

// ---- factory items -------------------------------------------------------------------------------------------------

json Listed(const Outcome& outcome) {
    const json list = json::parse(outcome.out);
    json values = json::object();
    for (const json& item : list.at("items")) {
        values[item.at("name").get<std::string>()] = item.at("value");
    }
    return values;
}

TEST_F(CtlDocumentTest, Factory_Set_IsListedInTheNextRun) {
    const Outcome set = Run("factory set Serial=4711 'Site=North gate' Empty= A=b=c Serial=4712");
    EXPECT_EQ(set.status, OK) << set.err;
    EXPECT_EQ(set.out, "Serial = 4712\nSite = North gate\nEmpty = \nA = b=c\n");
    const json expected = {
        {"DeviceName", "Front desk"}, {"Serial", "4712"}, {"Site", "North gate"}, {"Empty", ""}, {"A", "b=c"}};
    EXPECT_EQ(Listed(Run("factory --json")), expected);
    EXPECT_EQ(Listed(Run("factory list --json")), expected);
    const Outcome text = Run("factory");
    EXPECT_THAT(text.out, StartsWith("  name        value\n  DeviceName  Front desk\n"));
    ExpectNarrow(text.out);
}

TEST_F(CtlDocumentTest, Factory_NamesAndValues_FitToTheirLastByte) {
    const std::string name(47, 'n');
    const std::string value(255, 'v');
    EXPECT_EQ(Run("factory set " + name + "=" + value).status, OK);
    EXPECT_EQ(Listed(Run("factory --json")).at(name), value);
    ExpectNarrow(Run("factory").out);
    for (const std::string& setting : {name + "n=1", "n=" + value + "v"}) {
        const Outcome outcome = Run("factory set Good=1 " + setting);
        EXPECT_EQ(outcome.status, USAGE);
        EXPECT_THAT(outcome.err, HasSubstr("bytes, "));
    }
    EXPECT_EQ(Listed(Run("factory --json")).count("Good"), 0U) << "nothing is set when something is wrong";
}

TEST_F(CtlDocumentTest, Factory_ThatTheListDoesNotShow_IsSaidSo) {
    const Outcome outcome = Run("factory set 9lives=1 Good=1 --json");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(json::parse(outcome.out),
              json({{"set", json::array({{{"name", "9lives"}, {"value", "1"}, {"listed", false}},
                                         {{"name", "Good"}, {"value", "1"}, {"listed", true}}})}}));
}

TEST_F(CtlDocumentTest, Factory_LongFileWithOldValuesAndGaps_IsListedWhole) {
    ASSERT_EQ(Run("factory").status, OK);  // makes the folder
    std::string text = "<DeviceInfo>";
    for (unsigned i = 0; i < 700; ++i) {
        text += "<i" + std::to_string(i) + (i % 2 == 0 ? "/>" : " Uuid=\"" + std::to_string(i) + "\"/>");
    }
    std::ofstream(ConfigFolder() / "vexo_hostmgr_factory.dat") << text << "</DeviceInfo>";
    const json items = Listed(Run("factory --json"));
    EXPECT_EQ(items.size(), 350U);
    EXPECT_EQ(items.at("i1"), "1");
    EXPECT_EQ(items.at("i699"), "699");
    EXPECT_THAT(Contents(ConfigFolder() / "vexo_hostmgr_factory.dat"), HasSubstr("content=\"699\""));
}

TEST_F(CtlDocumentTest, Factory_Verbose_LogLinesStayApart) {
    const Outcome outcome = Run("factory --json --verbose");
    EXPECT_EQ(Listed(outcome), json({{"DeviceName", "Front desk"}}));
    EXPECT_THAT(outcome.err, HasSubstr("[HOSTMGR] DEBUG! vexo_hostmgr_get_factory_info["));
}

TEST_F(CtlDocumentTest, Factory_Refused_SaysWhichAndWhatIsSet) {
    UseScenario(R"({"channels": 1, "recordings": {"live": "off", "history": {"segments": 0}},
        "faults": [{"operation": "vexo_model_set_host_manager_factory_info_force", "nth": 2}]})");
    const Outcome outcome = Run("factory set A=1 B=2 C=3");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("refused to set B; what was named before it is set"));
    EXPECT_EQ(Listed(Run("factory --json")), json({{"A", "1"}}));
}

TEST_F(CtlDocumentTest, Factory_WithoutItems_IsNoData) {
    UseScenario(R"({"channels": 1, "recordings": {"live": "off", "history": {"segments": 0}}})");
    const Outcome outcome = Run("factory --json");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_EQ(json::parse(outcome.out), json({{"items", json::array()}}));
    EXPECT_THAT(outcome.err, HasSubstr("lists no factory items: hostmgrctl factory set NAME=VALUE"));
}

TEST_F(CtlDocumentTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments :
         {"doc", "doc save", "doc read", "doc read ''", "doc save a/b x.xml", "doc copy x", "doc read x extra",
          "factory set", "factory set x", "factory set =1", "factory set ''", "factory list extra", "factory drop"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
