// The agent's documents and the factory items through the exported functions, in a /config of the test's own: missing,
// read-only, full, with malformed files in it, with names and sizes of every kind.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <set>

#include "../image.h"
#include "agent.h"
#include "console_text.h"
#include "device_support.h"

using agent::Session;
using agent::Text;
using console::HasError;
using device::Contents;
using device::Home;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "channels": 1, "recordings": {"live": "off", "history": {"segments": 0}}
})"));

constexpr char SAVE[] = "HostMgr_Dev_SaveCfg";
constexpr char READ[] = "HostMgr_Dev_ReadCfg";
constexpr char FACTORY_FILE[] = "vexo_hostmgr_factory.dat";

fs::path Folder() {
    return Home() / "config";
}

int Save(const std::string& name, const std::string& xml) {
    return vexo_soft::vexo_HostMgr_Dev_SaveCfg(Text(name.c_str()), Text(xml.c_str()),
                                               static_cast<unsigned>(xml.size()));
}

/** The document, or nothing. */
std::optional<std::string> Read(const std::string& name) {
    char* text = vexo_soft::vexo_HostMgr_Dev_ReadCfg(Text(name.c_str()));
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string copy = text;
    free(text);
    return copy;
}

std::string PathOf(const std::string& name) {
    return "/config//hostmgr_" + name + ".xml";
}

/** A well-formed document of exactly so many bytes. */
std::string DocumentOf(size_t size) {
    const std::string start = "<a>";
    const std::string end = "</a>";
    std::string text = start;
    for (size_t i = 0; text.size() + end.size() < size; ++i) {
        text += static_cast<char>('a' + i % 26);
    }
    return text + end;
}

/** Every file and folder below the home folder. */
std::set<std::string> AllFiles() {
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(Home())) {
        files.insert(entry.path().string());
    }
    return files;
}

class DocumentFileTest : public agent::LibraryTest {
protected:
    void SetUp() override {
        fs::remove_all(Folder());
        fs::create_directory(Folder());
    }
    // Whatever happened, no document is still out.
    void TearDown() override { ExpectAllGivenBack(); }

    /** A save that cannot be written: a success for the agent, with a line on the console. */
    static void ExpectLost(const std::string& name, const std::string& xml) {
        const std::string text = console::Of([&] { EXPECT_EQ(Save(name, xml), 0); });
        EXPECT_TRUE(HasError(text, SAVE, "save_content to " + PathOf(name) + " failed!!\n")) << text;
    }
    static void ExpectMissing(const std::string& name) {
        const std::string text = console::Of([&] { EXPECT_EQ(Read(name), std::nullopt); });
        EXPECT_TRUE(HasError(text, READ, PathOf(name) + " not exist!!\n")) << text;
    }
};

// ---- sizes ---------------------------------------------------------------------------------------------------------

TEST_F(DocumentFileTest, Saved_LiesInTheRecordersFolderAndComesBackByteForByte) {
    const std::string xml = "<?xml version=\"1.0\"?>\n<!-- note -->\n<net port=\"8000\">\n  text &amp; more\n</net>\n";
    EXPECT_EQ(Save("net", xml), 0);
    EXPECT_EQ(Contents(Folder() / "hostmgr_net.xml"), xml);
    EXPECT_EQ(Read("net"), xml);
    struct stat found;
    EXPECT_NE(stat("/config/hostmgr_net.xml", &found), 0) << "this computer's own folder is not touched";
}

TEST_F(DocumentFileTest, TenBytes_ComeInAClearedKilobyte) {
    EXPECT_EQ(Save("ten", DocumentOf(10)), 0);
    char* text = vexo_soft::vexo_HostMgr_Dev_ReadCfg(Text("ten"));
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(SameImage(Image(std::vector<uint8_t>(text, text + 1024)), Image(1024).Text(0, DocumentOf(10))));
    free(text);
}

TEST_F(DocumentFileTest, SizesAroundAKilobyteAndAMebibyte_ComeBackWhole) {
    for (const size_t size : {1022, 1023, 1024, 1025, (1 << 20) - 1, 1 << 20, (1 << 20) + 1}) {
        EXPECT_EQ(Save("size", DocumentOf(size)), 0);
        EXPECT_EQ(fs::file_size(Folder() / "hostmgr_size.xml"), size);
        EXPECT_TRUE(Read("size") == DocumentOf(size)) << size;
    }
}

// The size is a claim that is printed and tested for 0 alone.
TEST_F(DocumentFileTest, ClaimOf4GiB_SavesTheTextToItsTerminator) {
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_SaveCfg(Text("claim"), Text("<a/>"), 0xFFFFFFFF), 0);
    EXPECT_EQ(Contents(Folder() / "hostmgr_claim.xml"), "<a/>");
}

// ---- the folder ----------------------------------------------------------------------------------------------------

TEST_F(DocumentFileTest, MissingFolder_HasNoDocumentUntilOneIsSaved) {
    fs::remove_all(Folder());
    ExpectMissing("net");
    EXPECT_EQ(Save("net", "<a/>"), 0);
    EXPECT_EQ(Read("net"), "<a/>");
}

TEST_F(DocumentFileTest, FileInTheFoldersPlace_LosesTheSaveAndNothingElse) {
    fs::remove_all(Folder());
    std::ofstream(Folder()) << "in the way";
    ExpectLost("net", "<a/>");
    ExpectMissing("net");
    EXPECT_EQ(Contents(Folder()), "in the way");
    fs::remove(Folder());
}

/** A user who may not write there; root may write anywhere. */
class NobodyInAReadOnlyFolder {
public:
    NobodyInAReadOnlyFolder() : m_user(geteuid()) {
        fs::permissions(Home(), fs::perms(0755));
        fs::permissions(Folder(), fs::perms(0555));
        EXPECT_EQ(seteuid(m_user == 0 ? 65534 : m_user), 0);
    }
    ~NobodyInAReadOnlyFolder() {
        EXPECT_EQ(seteuid(m_user), 0);
        fs::permissions(Folder(), fs::perms(0755));
    }
    NobodyInAReadOnlyFolder(const NobodyInAReadOnlyFolder&) = delete;
    NobodyInAReadOnlyFolder& operator=(const NobodyInAReadOnlyFolder&) = delete;

private:
    const uid_t m_user;
};

TEST_F(DocumentFileTest, ReadOnlyFolder_KeepsTheOldDocument) {
    EXPECT_EQ(Save("net", "<old/>"), 0);
    const NobodyInAReadOnlyFolder nobody;
    ExpectLost("net", "<new/>");
    ExpectLost("more", "<new/>");
    EXPECT_EQ(Read("net"), "<old/>");
    ExpectMissing("more");
}

/** No file may grow beyond so many bytes: writing fails as it does where there is no room. */
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before = {};
};

TEST_F(DocumentFileTest, FullDisk_KeepsTheOldDocumentAndLeavesNoPart) {
    const std::string old = DocumentOf(5000);
    EXPECT_EQ(Save("net", old), 0);
    const std::set<std::string> before = AllFiles();
    {
        const FullDisk full(1000);
        ExpectLost("net", DocumentOf(6000));
        ExpectLost("more", DocumentOf(1 << 20));
        EXPECT_EQ(Save("small", "<a/>"), 0);
    }
    EXPECT_TRUE(Read("net") == old);
    std::set<std::string> after = AllFiles();
    EXPECT_EQ(after.erase((Folder() / "hostmgr_small.xml").string()), 1U);
    EXPECT_EQ(after, before);
}

// ---- malformed -----------------------------------------------------------------------------------------------------

class MalformedDocument : public DocumentFileTest, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Texts, MalformedDocument,
                         testing::Values(" ", "no marks", "<a>", "<a></b>", "<a/><b/>", "<a x=1/>", "<a x=\"1/>", "<a",
                                         "<%s%n%n", "<a><b></a></b>", "\xFF\xFE"));

TEST_P(MalformedDocument, Save_IsRefusedAndKeepsTheOldOne) {
    EXPECT_EQ(Save("net", "<old/>"), 0);
    const std::string xml = GetParam();
    const std::string text = console::Of([&] { EXPECT_EQ(Save("net", xml), -1); });
    EXPECT_TRUE(
        HasError(text, SAVE, "\nload pXml " + xml + " , dwXmlSize " + std::to_string(xml.size()) + " failed!!\n"))
        << text;
    EXPECT_EQ(Read("net"), "<old/>");
}

TEST_P(MalformedDocument, FileOfIt_CannotBeReadAndNothingIsSaid) {
    std::ofstream(Folder() / "hostmgr_bad.xml") << GetParam();
    EXPECT_EQ(console::Of([] { EXPECT_EQ(Read("bad"), std::nullopt); }), "");
    EXPECT_EQ(Contents(Folder() / "hostmgr_bad.xml"), GetParam());
}

TEST_F(DocumentFileTest, MalformedMebibyte_IsPrintedWholeAndRefused) {
    const std::string xml = DocumentOf(1 << 20).substr(1);
    const std::string text = console::Of([&] { EXPECT_EQ(Save("big", xml), -1); });
    EXPECT_TRUE(HasError(text, SAVE, "\nload pXml " + xml + " , dwXmlSize 1048575 failed!!\n"));
    ExpectMissing("big");
}

TEST_F(DocumentFileTest, EmptyFile_CannotBeRead) {
    std::ofstream(Folder() / "hostmgr_empty.xml").flush();
    EXPECT_EQ(console::Of([] { EXPECT_EQ(Read("empty"), std::nullopt); }), "");
}

// ---- names ---------------------------------------------------------------------------------------------------------

TEST_F(DocumentFileTest, NamesThatNoFileHas_AreNamedWholeAndNothingIsWritten) {
    const std::set<std::string> before = AllFiles();
    for (const std::string& name : {std::string(10000, 'n'), std::string(244, 'n'), std::string("no/folder"),
                                    std::string("/../../escaped"), std::string("../escaped")}) {
        ExpectLost(name, "<a/>");
        ExpectMissing(name);
    }
    EXPECT_EQ(AllFiles(), before);
}

TEST_F(DocumentFileTest, NamesThatAFileCanHave_AreKeptApart) {
    const std::string names[] = {"", "%s%n%n", "a b", "a", std::string(243, 'n'), "\xD6\xD0"};
    for (const std::string& name : names) {
        EXPECT_EQ(Save(name, "<a n=\"" + std::to_string(name.size()) + "\"/>"), 0);
    }
    for (const std::string& name : names) {
        EXPECT_EQ(Read(name), "<a n=\"" + std::to_string(name.size()) + "\"/>");
        EXPECT_TRUE(fs::exists(Folder() / ("hostmgr_" + name + ".xml")));
    }
}

// ---- a recorder that fails -----------------------------------------------------------------------------------------

TEST_F(DocumentFileTest, RecorderThatFails_GivesTheDocumentBack) {
    EXPECT_EQ(Save("net", "<old/>"), 0);
    simulator::control::Fail("vexo_utility_new_xml_operate", 1);
    EXPECT_EQ(Save("net", "<new/>"), -1);
    simulator::control::Fail("vexo_xml_operate::load_content", 1);
    EXPECT_EQ(Save("net", "<new/>"), -1);
    simulator::control::Fail("vexo_xml_operate::save_content", 1);
    EXPECT_EQ(Save("net", "<new/>"), 0);
    for (const char* operation :
         {"vexo_utility_new_xml_operate", "vexo_xml_operate::load_file", "vexo_xml_operate::get_content_size"}) {
        simulator::control::Fail(operation, 1);
        EXPECT_EQ(Read("net"), std::nullopt) << operation;
    }
    simulator::control::Fail("vexo_xml_operate::export_content", 1);
    EXPECT_EQ(Read("net"), "");
    EXPECT_EQ(Read("net"), "<old/>");
}

TEST_F(DocumentFileTest, EightThreads_ReadWholeDocumentsOnly) {
    EXPECT_EQ(Save("shared", DocumentOf(100)), 0);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 8; ++i) {
        threads.emplace_back([&wrong, i] {
            for (unsigned round = 0; round < 20; ++round) {
                wrong += Save("shared", DocumentOf(100 + 1000 * i)) == 0 ? 0 : 1;
                const std::optional<std::string> text = Read("shared");
                wrong += text && *text == DocumentOf(text->size()) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

// ---- factory items -------------------------------------------------------------------------------------------------

int SetItems(int login, const std::vector<std::pair<std::string, std::string>>& items) {
    Image entries(304 * items.size());
    for (size_t i = 0; i < items.size(); ++i) {
        entries.Text(304 * i, items[i].first).Text(304 * i + 48, items[i].second);
    }
    std::vector<uint8_t> buffer = entries.All();
    return vexo_soft::vexo_HostMgr_Dev_SetConfig(login, 3011, 0, 0, nullptr, 0, buffer.data(),
                                                 static_cast<unsigned>(buffer.size()));
}

struct Items {
    int result;
    Image image{0};
};

/** Reads into a buffer of bytes 0xEE that ends where its memory does. */
Items GetItems(unsigned size) {
    std::vector<uint8_t> buffer(size, 0xEE);
    unsigned returned = 0;
    Items items;
    items.result = vexo_soft::vexo_HostMgr_Dev_GetConfig(0, 3010, 1, 1, nullptr, 0, buffer.data(), size, &returned);
    EXPECT_EQ(returned, size / 304 * 304);
    items.image = Image(buffer);
    return items;
}

TEST_F(DocumentFileTest, FactoryItems_ThatAreSetCanBeRead) {
    const Session session;
    EXPECT_EQ(SetItems(session.Login(), {{"Serial", "1234"}, {"", "skipped"}, {"Place", "a \"<&>\""}}), 0);
    const Items items = GetItems(3 * 304);
    EXPECT_EQ(items.result, 0);
    Image expected(3 * 304);
    expected.Text(0, "Serial").Text(48, "1234").Text(304, "Place").Text(304 + 48, "a \"<&>\"");
    EXPECT_TRUE(SameImage(items.image, expected));
}

TEST_F(DocumentFileTest, FactoryItemWithoutTerminators_IsCutToItsFields) {
    const Session session;
    EXPECT_EQ(SetItems(session.Login(), {{std::string(48, 'n'), std::string(256, 'v')}}), 0);
    const std::string file = Contents(Folder() / FACTORY_FILE);
    EXPECT_THAT(file, testing::HasSubstr("<" + std::string(47, 'n') + " content=\"" + std::string(255, 'v') + "\""));
}

TEST_F(DocumentFileTest, FactoryFile_MissingMalformedOrEmpty_IsAFailureWithAClearedBuffer) {
    fs::remove(Folder() / FACTORY_FILE);
    for (const char* text :
         {static_cast<const char*>(nullptr), "<DeviceInfo>", "<Other><A content=\"1\"/></Other>", ""}) {
        if (text != nullptr) {
            std::ofstream(Folder() / FACTORY_FILE) << text;
        }
        const Items items = GetItems(304);
        EXPECT_EQ(items.result, -1);
        EXPECT_TRUE(SameImage(items.image, Image(304)));
    }
}

TEST_F(DocumentFileTest, FactoryFile_OldAttribute_IsGivenAndMigratedOnce) {
    std::ofstream(Folder() / FACTORY_FILE) << "<DeviceInfo><A Uuid=\"u-1\"/><B content=\"2\"/></DeviceInfo>";
    Image expected(2 * 304);
    expected.Text(0, "A").Text(48, "u-1").Text(304, "B").Text(304 + 48, "2");
    for (int round = 0; round < 2; ++round) {
        const Items items = GetItems(2 * 304);
        EXPECT_EQ(items.result, 0);
        EXPECT_TRUE(SameImage(items.image, expected));
        EXPECT_EQ(Contents(Folder() / FACTORY_FILE),
                  "<DeviceInfo><A Uuid=\"u-1\" content=\"u-1\"/><B content=\"2\"/></DeviceInfo>");
    }
}

TEST_F(DocumentFileTest, FactoryFile_OldAttributeInAReadOnlyFolder_IsGivenAllTheSame) {
    const std::string file = "<DeviceInfo><A Uuid=\"u-1\"/></DeviceInfo>";
    std::ofstream(Folder() / FACTORY_FILE) << file;
    const NobodyInAReadOnlyFolder nobody;
    const Items items = GetItems(304);
    EXPECT_EQ(items.result, 0);
    EXPECT_TRUE(SameImage(items.image, Image(304).Text(0, "A").Text(48, "u-1")));
    EXPECT_EQ(Contents(Folder() / FACTORY_FILE), file);
}

// Two children are looked at, and the second one is the first that has a value.
TEST_F(DocumentFileTest, FactoryFile_LongNamesAndChildrenWithoutValue_FillFromTheFirstEntry) {
    std::ofstream(Folder() / FACTORY_FILE) << "<DeviceInfo><A other=\"1\"/><" << std::string(200, 'n') << " content=\""
                                           << std::string(1000, 'v') << "\"/><C content=\"3\"/></DeviceInfo>";
    EXPECT_EQ(GetItems(304).result, -1);
    // A name that was cut names no child any more.
    EXPECT_EQ(GetItems(2 * 304).result, -1);
    const Items items = GetItems(3 * 304 + 7);
    EXPECT_EQ(items.result, 0);
    Image expected(3 * 304 + 7, 0);
    for (size_t offset = 3 * 304; offset < 3 * 304 + 7; ++offset) {
        expected.Byte(offset, 0xEE);
    }
    EXPECT_TRUE(SameImage(items.image, expected.Text(0, "C").Text(48, "3")));
}

}  // namespace
