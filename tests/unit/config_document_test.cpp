// The agent's documents: saved on the recorder and read back, in a directory of the test's own.
#include <unistd.h>

#include "document_fake.h"

using testing::ElementsAre;
using testing::IsEmpty;

using namespace vexo_soft;

static constexpr char SAVE[] = "HostMgr_Dev_SaveCfg";
static constexpr char READ[] = "HostMgr_Dev_ReadCfg";

class Documents : public DocumentFixture {
protected:
    static int Save(const std::string& name, const std::string& xml, unsigned int size = 1) {
        return vexo_HostMgr_Dev_SaveCfg(const_cast<char*>(name.c_str()), const_cast<char*>(xml.c_str()), size);
    }
    /** A document that is there; released. */
    static std::string ReadCfg(const std::string& name) {
        char* text = vexo_HostMgr_Dev_ReadCfg(const_cast<char*>(name.c_str()));
        EXPECT_NE(text, nullptr);
        const std::string copy = text != nullptr ? text : "";
        free(text);
        return copy;
    }
    /** A read that must give null; what it printed. */
    static std::string ReadFails(const std::string& name = "a") {
        return Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_ReadCfg(const_cast<char*>(name.c_str())), nullptr); });
    }
    void PutDocument(const std::string& name, const std::string& xml) const { Write("hostmgr_" + name + ".xml", xml); }
    std::string Stored(const std::string& name) const { return ReadBack("hostmgr_" + name + ".xml"); }

    static std::string Path(const std::string& name) { return "/config//hostmgr_" + name + ".xml"; }
    static Lines Released(const char* function) {
        return {std::string("vexo_utility_delete_xml_operate(vexo_hostmgr_resource.cpp, ") + function + ")"};
    }
};

// ---- saving --------------------------------------------------------------------------------------------------------

TEST_F(Documents, Save_WritesTheFile) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(Save("net", "<a b=\"1\"><c/></a>"), 0); }), "");
    EXPECT_EQ(Stored("net"), "<a b=\"1\"><c/></a>");
}

TEST_F(Documents, Save_BearsTheReadersLabel) {
    Save("net", "<a/>");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_ReadCfg)", "load_content(...)",
                            "save_content(/config//hostmgr_net.xml)", Released(SAVE)[0]));
}

TEST_F(Documents, Save_ReplacesTheOldDocument) {
    Save("net", "<old/>");
    Save("net", "<new/>");
    EXPECT_EQ(Stored("net"), "<new/>");
}

TEST_F(Documents, SaveWithoutNameTextOrSize_IsRefused) {
    char name[] = "net";
    char xml[] = "<a/>";
    const auto refused = [](char* pName, char* pXml, unsigned int size) {
        return Console([=] { EXPECT_EQ(vexo_HostMgr_Dev_SaveCfg(pName, pXml, size), -1); });
    };
    EXPECT_EQ(refused(nullptr, xml, 4),
              Error(SAVE, "pHostMgrName (nil), pXml " + AddressText(xml) + ", dwXmlSize 4!!\n"));
    EXPECT_EQ(refused(name, nullptr, 4),
              Error(SAVE, "pHostMgrName " + AddressText(name) + ", pXml (nil), dwXmlSize 4!!\n"));
    EXPECT_EQ(refused(name, xml, 0),
              Error(SAVE, "pHostMgrName " + AddressText(name) + ", pXml " + AddressText(xml) + ", dwXmlSize 0!!\n"));
    EXPECT_EQ(refused(nullptr, nullptr, UINT_MAX), Error(SAVE, "pHostMgrName (nil), pXml (nil), dwXmlSize -1!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(Documents, SaveWithoutADocument_IsAFailure) {
    FailNewDocument();
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<a/>"), -1); }),
              Error(SAVE, "vexo_utility_new_xml_operate failed!!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_ReadCfg)"));
}

TEST_F(Documents, SaveOfMalformedText_LeavesTheOldDocument) {
    Save("net", "<old/>");
    platform.TakeCalls();
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<new>", 5), -1); }),
              Error(SAVE, "\nload pXml <new> , dwXmlSize 5 failed!!\n"));
    EXPECT_EQ(Stored("net"), "<old/>");
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_ReadCfg)",
                                                  "load_content(...)", Released(SAVE)[0]));
}

TEST_F(Documents, SaveOfMalformedTextWithPercents_PrintsItAsItIs) {
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<%s%n", 5), -1); }),
              Error(SAVE, "\nload pXml <%s%n , dwXmlSize 5 failed!!\n"));
}

// The size is printed, not used: text of any length is read to its terminator.
TEST_F(Documents, SaveWithAWrongSize_SavesTheWholeText) {
    for (const unsigned int size : {1U, 100U, UINT_MAX}) {
        EXPECT_EQ(Save("net", "<a b=\"whole\"/>", size), 0);
        EXPECT_EQ(Stored("net"), "<a b=\"whole\"/>");
    }
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<new>", UINT_MAX), -1); }),
              Error(SAVE, "\nload pXml <new> , dwXmlSize -1 failed!!\n"));
}

TEST_F(Documents, SaveThatCannotBeWritten_IsASuccess) {
    documents.fails = {"save_content"};
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<a/>"), 0); }),
              Error(SAVE, "save_content to " + Path("net") + " failed!!\n"));
}

TEST_F(Documents, SaveIntoAMissingDirectory_IsASuccess) {
    std::filesystem::remove_all(m_directory);
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<a/>"), 0); }),
              Error(SAVE, "save_content to " + Path("net") + " failed!!\n"));
}

// Root may write anywhere, so root is somebody else meanwhile.
TEST_F(Documents, SaveIntoAReadOnlyDirectory_IsASuccess) {
    PutDocument("net", "<old/>");
    std::filesystem::permissions(PathOf("hostmgr_net.xml"), std::filesystem::perms(0444));
    std::filesystem::permissions(m_directory, std::filesystem::perms(0555));
    const uid_t user = geteuid();
    ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<new/>"), 0); }),
              Error(SAVE, "save_content to " + Path("net") + " failed!!\n"));
    EXPECT_EQ(ReadCfg("net"), "<old/>");
    ASSERT_EQ(seteuid(user), 0);
    std::filesystem::permissions(m_directory, std::filesystem::perms(0755));
}

// /dev/full stands for a disk without room: a file there opens, but takes nothing.
TEST_F(Documents, SaveOnAFullDisk_IsASuccess) {
    std::filesystem::create_symlink("/dev/full", PathOf("hostmgr_net.xml"));
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("net", "<a/>"), 0); }),
              Error(SAVE, "save_content to " + Path("net") + " failed!!\n"));
}

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(Documents, Read_GivesWhatWasSaved) {
    Save("net", "<a b=\"1\"/>");
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(ReadCfg("net"), "<a b=\"1\"/>"); }), "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_ReadCfg)",
                                                  "load_file(/config//hostmgr_net.xml)", "get_content_size()",
                                                  "export_content(1024)", Released(READ)[0]));
}

TEST_F(Documents, ReadWithoutAName_IsRefused) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_ReadCfg(nullptr), nullptr); }),
              Error(READ, "NULL == pHostMgrName!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(Documents, ReadOfAMissingDocument_NamesIt) {
    EXPECT_EQ(ReadFails("none"), Error(READ, Path("none") + " not exist!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(Documents, ReadWithoutADocument_IsAFailure) {
    PutDocument("a", "<a/>");
    FailNewDocument();
    EXPECT_EQ(ReadFails(), Error(READ, "vexo_utility_new_xml_operate failed!!\n"));
}

TEST_F(Documents, ReadOfMalformedText_IsASilentFailure) {
    PutDocument("a", "<a>");
    EXPECT_EQ(ReadFails(), "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_ReadCfg)",
                                                  "load_file(/config//hostmgr_a.xml)", Released(READ)[0]));
}

TEST_F(Documents, SizeCannotBeTold_IsAFailure) {
    PutDocument("a", "<a/>");
    documents.fails = {"get_content_size"};
    EXPECT_EQ(ReadFails(), Error(READ, "get_content_size failed!!\n"));
    EXPECT_THAT(WithAny({"export"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(Documents, TenBytes_ComeInAClearedKilobyte) {
    PutDocument("a", "<a b=\"1\"/>");
    char name[] = "a";
    char* text = vexo_HostMgr_Dev_ReadCfg(name);
    ASSERT_NE(text, nullptr);
    Image expected(1024);
    expected.Text(0, "<a b=\"1\"/>");
    EXPECT_TRUE(SameImage(Image(std::vector<uint8_t>(text, text + 1024)), expected));
    free(text);
}

TEST_F(Documents, Capacity_IsTheSizeAndOneButAKilobyteAtLeast) {
    // <a b="..."/> is nine bytes and the letters.
    for (const unsigned int size : {1022U, 1023U, 1024U, 1025U}) {
        PutDocument("a", "<a b=\"" + Letters(size - 9) + "\"/>");
        platform.TakeCalls();
        EXPECT_EQ(ReadCfg("a").size(), size);
        const unsigned int capacity = std::max(size + 1, 1024U);
        EXPECT_THAT(WithAny({"export"}, platform.TakeCalls()),
                    ElementsAre("export_content(" + std::to_string(capacity) + ")"));
    }
}

TEST_F(Documents, OneMebibyte_ComesBackWhole) {
    const std::string xml = "<a b=\"" + Letters((1 << 20) - 9) + "\"/>";
    EXPECT_EQ(Save("big", xml), 0);
    EXPECT_EQ(ReadCfg("big"), xml);
}

TEST_F(Documents, ExportFails_GivesTheEmptyText) {
    PutDocument("a", "<a/>");
    documents.fails = {"export_content"};
    EXPECT_EQ(Console([] { EXPECT_EQ(ReadCfg("a"), ""); }),
              Error(READ, "export_content to str failed!!, export_size 0\n"));
}

TEST_F(Documents, ExportWithoutTerminator_EndsWithTheBuffer) {
    PutDocument("a", "<a/>");
    documents.scribbles = {"export_content"};
    EXPECT_EQ(ReadCfg("a"), std::string(1023, 'x'));
    documents.size = 2000;
    EXPECT_EQ(ReadCfg("a"), std::string(2000, 'x'));
    documents.fails = {"export_content"};
    RawConsole([] { EXPECT_EQ(ReadCfg("a"), std::string(2000, 'x')); });
}

TEST_F(Documents, NoMemoryForTheText_IsAFailure) {
    PutDocument("a", "<a/>");
    FailMallocFrom(1024);
    EXPECT_EQ(ReadFails(), Error(READ, "vexo_utility_malloc failed, size 1024!!\n"));
    FailMallocFrom(0);
    EXPECT_THAT(WithAny({"export", "delete"}, platform.TakeCalls()), ElementsAre(Released(READ)[0]));
}

TEST_F(Documents, SizeOf4GiBLessTwo_IsAskedForWhole) {
    PutDocument("a", "<a/>");
    documents.size = 0xFFFFFFFE;
    FailMallocFrom(0xFFFFFFFF);
    EXPECT_EQ(ReadFails(), Error(READ, "vexo_utility_malloc failed, size -1!!\n"));
    FailMallocFrom(0);
}

TEST_F(Documents, NoMemoryForThePath_IsAFailure) {
    PutDocument("a", "<a/>");
    FailMallocFrom(23);
    EXPECT_EQ(ReadFails(), Error(READ, "vexo_utility_malloc failed, size 23!!\n"));
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("a", "<a/>"), -1); }),
              Error(SAVE, "vexo_utility_malloc failed, size 23!!\n"));
    FailMallocFrom(0);
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// ---- names ---------------------------------------------------------------------------------------------------------

TEST_F(Documents, NameOf10000Characters_IsNotCut) {
    const std::string name = Letters(10000);
    EXPECT_EQ(ReadFails(name), Error(READ, Path(name) + " not exist!!\n"));
    EXPECT_EQ(Console([&] { EXPECT_EQ(Save(name, "<a/>"), 0); }),
              Error(SAVE, "save_content to " + Path(name) + " failed!!\n"));
    EXPECT_THAT(WithAny({"save_content"}, platform.TakeCalls()), ElementsAre("save_content(" + Path(name) + ")"));
}

TEST_F(Documents, LongestNameOfAFile_IsSavedAndRead) {
    const std::string name = Letters(255 - strlen("hostmgr_.xml"));
    EXPECT_EQ(Save(name, "<a/>"), 0);
    EXPECT_EQ(ReadCfg(name), "<a/>");
}

TEST_F(Documents, NameWithSeparators_IsPartOfThePathAsItIs) {
    EXPECT_EQ(ReadFails("../x"), Error(READ, Path("../x") + " not exist!!\n"));
    EXPECT_EQ(Console([] { EXPECT_EQ(Save("b/c", "<a/>"), 0); }),
              Error(SAVE, "save_content to " + Path("b/c") + " failed!!\n"));
    std::filesystem::create_directory(PathOf("hostmgr_b"));
    EXPECT_EQ(Save("b/c", "<a/>"), 0);
    EXPECT_EQ(ReadBack("hostmgr_b/c.xml"), "<a/>");
    EXPECT_EQ(ReadCfg("b/c"), "<a/>");
}

TEST_F(Documents, EmptyNameAndPercents_AreNamesLikeOthers) {
    for (const char* name : {"", "%s%n", "a b"}) {
        EXPECT_EQ(Save(name, "<a/>"), 0);
        EXPECT_EQ(ReadCfg(name), "<a/>");
        EXPECT_EQ(ReadBack(std::string("hostmgr_") + name + ".xml"), "<a/>");
    }
}

TEST_F(Documents, ReadCfgOfADirectory_IsASilentFailure) {
    std::filesystem::create_directory(PathOf("hostmgr_a.xml"));
    EXPECT_EQ(ReadFails(), "");
}
