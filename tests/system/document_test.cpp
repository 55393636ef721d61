// The simulated recorder's XML documents by plain calls, and the folder /config, which is one of the home folder.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "control.h"
#include "device_support.h"
#include "recorder_test_support.h"

namespace control = simulator::control;
using device::Contents;
using device::Home;
using recorder_test::Contains;
using recorder_test::CountOutstanding;
using recorder_test::NewComplaints;

namespace {

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({"channels": 1})"));

constexpr char LABEL[] = "document_test";

/** A document, while it is out. */
class Document {
public:
    Document() : m_document(vexo_utility_new_xml_operate(VEXO_USER_HOSTMGR, LABEL)) {}
    explicit Document(const std::string& text) : Document() { EXPECT_EQ(m_document->load_content(text.c_str()), 0); }
    ~Document() { vexo_utility_delete_xml_operate(m_document, "document_test.cpp", LABEL); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    vexo_xml_operate* operator->() const { return m_document; }

    std::string Text() const {
        std::string text(m_document->get_content_size() + 1, '#');
        unsigned exported = 0;
        EXPECT_EQ(m_document->export_content(text.data(), static_cast<unsigned>(text.size()), &exported), 0);
        EXPECT_EQ(exported, text.size() - 1);
        EXPECT_EQ(text.back(), '\0');
        text.pop_back();
        return text;
    }

    std::string Attribute(const char* element, const char* child, const char* attribute) const {
        char value[256] = "unread";
        return m_document->get_attribute(element, child, attribute, value, sizeof value) == 0 ? value : "failed";
    }

    std::string ChildName(const char* element, unsigned index) const {
        char name[128] = "unread";
        return m_document->get_child_name(element, index, name, sizeof name) == 0 ? name : "failed";
    }

private:
    vexo_xml_operate* const m_document;
};

std::string PathOf(const char* name) {
    return (Home() / name).string();
}

// ---- texts ---------------------------------------------------------------------------------------------------------

class RoundTrip : public testing::TestWithParam<const char*> {};

TEST_P(RoundTrip, LoadedText_ComesOutByteForByte) {
    EXPECT_EQ(Document(GetParam()).Text(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Texts, RoundTrip,
                         testing::Values("<a>23456</a>", "<a/>",
                                         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- a note -->\n<a x=\"1\">\n"
                                         "  <b>text &amp; more</b>\n\t<![CDATA[<raw>]]><?do it?>\n</a>\n",
                                         "<?xml version=\"1.0\" encoding=\"GB2312\"?><a>\xD6\xD0\xCE\xC4</a>",
                                         "<!DOCTYPE a><a><b><b><b/></b></b></a>"));

TEST(Document, TextOfOneMebibyte_ComesOutByteForByte) {
    std::string text = "<a>";
    for (unsigned i = 0; text.size() < (1U << 20U); ++i) {
        text += "<entry number=\"" + std::to_string(i) + "\">text</entry>\n";
    }
    text += "</a>";
    EXPECT_EQ(Document(text).Text(), text);
}

TEST(Document, ManyStoreysDeep_IsReadAndWritten) {
    std::string text;
    for (unsigned i = 0; i < 20000; ++i) {
        text += "<a>";
    }
    text += "<b/>";
    for (unsigned i = 0; i < 20000; ++i) {
        text += "</a>";
    }
    EXPECT_EQ(Document(text).Text(), text);
}

class Malformed : public testing::TestWithParam<const char*> {};

TEST_P(Malformed, LoadContent_FailsAndLeavesTheDocumentEmpty) {
    const Document document("<before/>");
    EXPECT_NE(document->load_content(GetParam()), 0);
    EXPECT_EQ(document.Text(), "");
}

INSTANTIATE_TEST_SUITE_P(Texts, Malformed,
                         testing::Values("", " \n", "no marks", "<a>", "<a></b>", "<a/><b/>", "<a/>tail", "head<a/>",
                                         "<a x=1/>", "<a x=\"1/>", "<!-- note -->", "<a><b></a></b>",
                                         "<a/><![CDATA[x]]>", "<a"));

TEST(Document, NullText_Fails) {
    EXPECT_NE(Document()->load_content(nullptr), 0);
}

// ---- export --------------------------------------------------------------------------------------------------------

TEST(Document, Fresh_IsEmptyAndHasNothingToSave) {
    const Document document;
    EXPECT_EQ(document->get_content_size(), 0U);
    EXPECT_EQ(document.Text(), "");
    EXPECT_NE(document->save_content(PathOf("empty.xml").c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(PathOf("empty.xml")));
}

TEST(Document, ExportIntoTooSmallABuffer_FailsAndWritesNothing) {
    const Document document("<a>23456</a>");
    char buffer[13];
    memset(buffer, '#', sizeof buffer);
    unsigned exported = 77;
    EXPECT_NE(document->export_content(buffer, 12, &exported), 0) << "there is no room for the terminator";
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(exported, 77U);
    EXPECT_NE(document->export_content(buffer, 0, &exported), 0);
    EXPECT_NE(document->export_content(nullptr, 13, &exported), 0);
    EXPECT_EQ(document->export_content(buffer, 13, &exported), 0);
    EXPECT_STREQ(buffer, "<a>23456</a>");
    EXPECT_EQ(exported, 12U);
}

// ---- files ---------------------------------------------------------------------------------------------------------

TEST(Document, SavedAndLoaded_IsTheSame) {
    const std::string text = "<?xml version=\"1.0\"?>\n<a>\n  <b c=\"d\"/>\n</a>\n";
    EXPECT_EQ(Document(text)->save_content(PathOf("same.xml").c_str()), 0);
    EXPECT_EQ(Contents(Home() / "same.xml"), text);
    const Document other;
    EXPECT_EQ(other->load_file(PathOf("same.xml").c_str()), 0);
    EXPECT_EQ(other.Text(), text);
}

TEST(Document, FileThatCannotBeLoaded_FailsAndLeavesTheDocumentEmpty) {
    std::ofstream(PathOf("broken.xml")) << "<a><b></a>";
    for (const char* name : {"missing.xml", "broken.xml", "."}) {
        const Document document("<before/>");
        EXPECT_NE(document->load_file(PathOf(name).c_str()), 0) << name;
        EXPECT_EQ(document.Text(), "") << name;
    }
    EXPECT_NE(Document()->load_file(nullptr), 0);
}

TEST(Document, SaveThatFails_LeavesNothingBehind) {
    const std::filesystem::path folder = Home() / "saving";
    std::filesystem::create_directories(folder / "taken.xml");
    const Document document("<a/>");
    EXPECT_NE(document->save_content((folder / "taken.xml").c_str()), 0) << "a folder is in the way";
    EXPECT_NE(document->save_content((folder / "no folder" / "a.xml").c_str()), 0);
    EXPECT_NE(document->save_content(nullptr), 0);
    unsigned entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
        ++entries;
    }
    EXPECT_EQ(entries, 1U);
}

// ---- elements ------------------------------------------------------------------------------------------------------

constexpr char INFO[] =
    "<all><DeviceInfo x=\"outer\"> text <!-- note --><Name content=\"first\"/><Serial Uuid=\"a&lt;b\"/>"
    "<Name content=\"second\"/></DeviceInfo><DeviceInfo><Other/></DeviceInfo></all>";

TEST(Document, Attribute_IsTheFirstChildsUnderTheFirstElement) {
    const Document document(INFO);
    EXPECT_EQ(document.Attribute("DeviceInfo", "Name", "content"), "first");
    EXPECT_EQ(document.Attribute("DeviceInfo", "Serial", "Uuid"), "a<b");
    EXPECT_EQ(document.Attribute("all", "DeviceInfo", "x"), "outer");
}

TEST(Document, AttributeThatIsNotThere_FailsAndLeavesTheValue) {
    const Document document(INFO);
    char value[8] = "before";
    EXPECT_NE(document->get_attribute("DeviceInfo", "Name", "Uuid", value, sizeof value), 0);
    EXPECT_NE(document->get_attribute("DeviceInfo", "Nobody", "content", value, sizeof value), 0);
    EXPECT_NE(document->get_attribute("Nothing", "Name", "content", value, sizeof value), 0);
    EXPECT_NE(document->get_attribute("DeviceInfo", "Other", "content", value, sizeof value), 0) << "of the second one";
    EXPECT_NE(document->get_attribute(nullptr, "Name", "content", value, sizeof value), 0);
    EXPECT_NE(document->get_attribute("DeviceInfo", nullptr, "content", value, sizeof value), 0);
    EXPECT_NE(document->get_attribute("DeviceInfo", "Name", nullptr, value, sizeof value), 0);
    EXPECT_NE(document->get_attribute("DeviceInfo", "Name", "content", value, 0), 0);
    EXPECT_STREQ(value, "before");
}

TEST(Document, AttributeLongerThanItsBuffer_IsCutAndTerminated) {
    const Document document(INFO);
    char value[6] = "#####";
    EXPECT_EQ(document->get_attribute("DeviceInfo", "Name", "content", value, 4), 0);
    EXPECT_STREQ(value, "fir");
    EXPECT_EQ(value[4], '#');
}

TEST(Document, SetAttribute_ChangesOrAdds) {
    const Document document("<r><Name content=\"old\"/></r>");
    EXPECT_EQ(document->set_attribute("r", "Name", "content", "a \"new\" <one>"), 0);
    EXPECT_EQ(document->set_attribute("r", "Name", "more", ""), 0);
    EXPECT_EQ(document.Attribute("r", "Name", "content"), "a \"new\" <one>");
    EXPECT_EQ(document.Text(), "<r><Name content=\"a &quot;new&quot; &lt;one>\" more=\"\"/></r>");
}

TEST(Document, SetAttributeOfAChildThatIsNotThere_FailsAndChangesNothing) {
    const Document document("<r><Name/></r>");
    EXPECT_NE(document->set_attribute("r", "Nobody", "content", "x"), 0);
    EXPECT_NE(document->set_attribute("s", "Name", "content", "x"), 0);
    EXPECT_NE(document->set_attribute("r", "Name", "", "x"), 0);
    EXPECT_NE(document->set_attribute("r", "Name", "content", nullptr), 0);
    EXPECT_EQ(document.Text(), "<r><Name/></r>");
}

TEST(Document, ChildNames_CountElementsAlone) {
    const Document document(INFO);
    EXPECT_EQ(document.ChildName("DeviceInfo", 0), "Name");
    EXPECT_EQ(document.ChildName("DeviceInfo", 1), "Serial");
    EXPECT_EQ(document.ChildName("DeviceInfo", 2), "Name");
    EXPECT_EQ(document.ChildName("DeviceInfo", 3), "failed");
    EXPECT_EQ(document.ChildName("Nothing", 0), "failed");
    char name[8] = "#######";
    EXPECT_EQ(document->get_child_name("DeviceInfo", 1, name, 4), 0);
    EXPECT_STREQ(name, "Ser");
    EXPECT_EQ(name[4], '#');
}

// ---- booking and faults --------------------------------------------------------------------------------------------

TEST(Document, OutAndBack_IsBooked) {
    const NewComplaints complaints;
    const std::string line = "document: document_test, user 97";
    const long before = CountOutstanding(line);
    vexo_xml_operate* document = vexo_utility_new_xml_operate(VEXO_USER_HOSTMGR, LABEL);
    EXPECT_EQ(CountOutstanding(line), before + 1);
    vexo_utility_delete_xml_operate(document, "file.cpp", "function");
    EXPECT_EQ(CountOutstanding(line), before);
    vexo_utility_delete_xml_operate(nullptr, "file.cpp", "function");
    EXPECT_EQ(complaints.Text(), "");
    vexo_utility_delete_xml_operate(document, "file.cpp", "function");
    EXPECT_TRUE(Contains(complaints.Text(), "document given back that was not taken")) << complaints.Text();
    EXPECT_TRUE(Contains(complaints.Text(), "by file.cpp, function")) << complaints.Text();
}

TEST(Document, FaultsOnOrder_FailOnceEach) {
    const Document document("<r><Name content=\"x\"/></r>");
    const std::string path = PathOf("faults.xml");
    char text[64] = "before";
    unsigned size = 0;
    control::Fail("vexo_utility_new_xml_operate", 1);
    EXPECT_EQ(vexo_utility_new_xml_operate(VEXO_USER_HOSTMGR, LABEL), nullptr);
    control::Fail("vexo_xml_operate::save_content", 1);
    EXPECT_NE(document->save_content(path.c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(document->save_content(path.c_str()), 0);
    control::Fail("vexo_xml_operate::export_content", 1);
    EXPECT_NE(document->export_content(text, sizeof text, &size), 0);
    control::Fail("vexo_xml_operate::get_content_size", 1);
    EXPECT_EQ(document->get_content_size(), VEXO_XML_NO_SIZE);
    control::Fail("vexo_xml_operate::get_attribute", 1);
    EXPECT_NE(document->get_attribute("r", "Name", "content", text, sizeof text), 0);
    control::Fail("vexo_xml_operate::set_attribute", 1);
    EXPECT_NE(document->set_attribute("r", "Name", "content", "y"), 0);
    control::Fail("vexo_xml_operate::get_child_name", 1);
    EXPECT_NE(document->get_child_name("r", 0, text, sizeof text), 0);
    EXPECT_STREQ(text, "before");
    EXPECT_EQ(document.Attribute("r", "Name", "content"), "x");
    control::Fail("vexo_xml_operate::load_file", 1);
    EXPECT_NE(document->load_file(path.c_str()), 0);
    EXPECT_EQ(document.Text(), "");
    EXPECT_EQ(document->load_file(path.c_str()), 0);
    control::Fail("vexo_xml_operate::load_content", 1);
    EXPECT_NE(document->load_content("<a/>"), 0);
    EXPECT_EQ(document.Text(), "");
}

// ---- the folder /config --------------------------------------------------------------------------------------------

/** Whether this computer itself has such a file, asked past the recorder. */
bool HostHas(const char* path) {
    struct stat found;
    return stat(path, &found) == 0;
}

TEST(ConfigFolder, DocumentSavedThere_LiesInTheHomeFolder) {
    EXPECT_EQ(Document("<a/>")->save_content("/config//hostmgr_there.xml"), 0);
    EXPECT_EQ(Contents(Home() / "config" / "hostmgr_there.xml"), "<a/>");
    EXPECT_FALSE(HostHas("/config/hostmgr_there.xml"));
    const Document document;
    EXPECT_EQ(document->load_file("/config/hostmgr_there.xml"), 0);
    EXPECT_EQ(document.Text(), "<a/>");
}

TEST(ConfigFolder, FileThere_IsFoundByTheRecorderAndByTheCLibrary) {
    std::filesystem::create_directories(Home() / "config");
    std::ofstream(Home() / "config" / "found.xml") << "<a/>";
    for (const char* path : {"/config/found.xml", "/config//found.xml"}) {
        EXPECT_TRUE(vexo_utility_is_file_exist(path)) << path;
        EXPECT_EQ(access(path, F_OK), 0) << path;
        EXPECT_FALSE(HostHas(path)) << path;
    }
    for (const char* path : {"/config/missing.xml", "/config/found.xml/", "/configfound.xml"}) {
        EXPECT_FALSE(vexo_utility_is_file_exist(path)) << path;
        EXPECT_EQ(access(path, F_OK), -1) << path;
    }
    EXPECT_EQ(access("/config", F_OK), 0);
}

TEST(ConfigFolder, FoldersThere_AreMadeAndRemovedInTheHomeFolder) {
    EXPECT_EQ(vexo_utility_creat_dir("/config/sub/folder"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(Home() / "config" / "sub" / "folder"));
    EXPECT_EQ(vexo_utility_delete_dir("/config/sub"), 0);
    EXPECT_FALSE(std::filesystem::exists(Home() / "config" / "sub"));
    EXPECT_FALSE(HostHas("/config/sub"));
}

TEST(ConfigFolder, OtherPaths_AreAskedOfTheComputer) {
    EXPECT_EQ(access("/", F_OK), 0);
    errno = 0;
    EXPECT_EQ(access("/no such file", F_OK), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(access(Home().c_str(), R_OK | W_OK | X_OK), 0);
}

}  // namespace
