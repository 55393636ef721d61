// Factory items: read from the recorder's file with the old attribute's migration, written into the model library.
#include "document_fake.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

static constexpr char READER[] = "vexo_hostmgr_get_factory_info";
static constexpr char WRITER[] = "vexo_hostmgr_set_factory_info";
static constexpr char FILE_NAME[] = "vexo_hostmgr_factory.dat";
static constexpr char FILE_PATH[] = "/config//vexo_hostmgr_factory.dat";

class FactoryRead : public DocumentFixture {
protected:
    void SetItems(const std::string& items) const { Write(FILE_NAME, "<DeviceInfo>" + items + "</DeviceInfo>"); }
    static std::string Name(const std::string& name) { return Debug(READER, "name " + name + "\n"); }
    static std::string Value(const std::string& value) { return Debug(READER, "value " + value + "\n"); }
    static std::string Item(const std::string& name, const std::string& value) { return Name(name) + Value(value); }
    static Image& PutItem(Image& image, size_t entry, const std::string& name, const std::string& value) {
        return image.Text(304 * entry, name).Text(304 * entry + 48, value);
    }
    /** A read that must fail after it cleared one entry. */
    void ExpectFailure(const std::string& console) {
        const ConfigRead read = Read(3010, 304);
        EXPECT_EQ(read.result, -1);
        EXPECT_EQ(read.returned, 304U);
        EXPECT_TRUE(SameImage(read.image, Image(304)));
        EXPECT_EQ(read.console, console);
    }
};

class FactoryWrite : public ConfigFixture {
protected:
    void SetUp() override {
        ConfigFixture::SetUp();
        LogInAll({5});
        ON_CALL(platform, vexo_model_get_host_manage_factory_info_num).WillByDefault([this](unsigned int* num) {
            *num = static_cast<unsigned int>(m_items.size());
            return 0;
        });
        ON_CALL(platform, vexo_model_get_host_manager_factory_info)
            .WillByDefault([this](unsigned int index, vexo_hostlib_factory_info* item) {
                *item = m_items.at(index);
                return m_unreadable_item == index ? -1 : 0;
            });
        ON_CALL(platform, vexo_model_set_host_manager_factory_info_force)
            .WillByDefault([this](vexo_hostlib_factory_info item) {
                m_written.push_back(item);
                return m_written.size() == m_set_fails_at ? -1 : 0;
            });
    }

    static vexo_hostlib_factory_info Item(const std::string& name, const std::string& value, unsigned char mark) {
        vexo_hostlib_factory_info item = {};
        PutText(item.name, name);
        PutText(item.value, value);
        memset(item.reserved, mark, sizeof(item.reserved));
        return item;
    }
    static Image Entry(const std::string& name, const std::string& value) {
        return Image(304).Text(0, name).Text(48, value);
    }
    static int Set(const std::vector<Image>& entries, unsigned int more = 0) {
        std::vector<uint8_t> buffer;
        for (const Image& entry : entries)
            buffer.insert(buffer.end(), entry.All().begin(), entry.All().end());
        buffer.insert(buffer.end(), more, uint8_t{'x'});
        return vexo_HostMgr_Dev_SetConfig(5, 3011, -1, INT_MAX, nullptr, 0, buffer.data(),
                                          static_cast<unsigned int>(buffer.size()));
    }
    static Image ImageOf(const vexo_hostlib_factory_info& item) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(&item);
        return Image({bytes, bytes + sizeof(item)});
    }
    /** The one item that was written; its name, value and the rest as a mark. */
    testing::AssertionResult Wrote(const std::string& name, const std::string& value, unsigned char mark) {
        if (m_written.size() != 1)
            return testing::AssertionFailure() << m_written.size() << " items";
        return SameImage(ImageOf(m_written[0]), ImageOf(Item(name, value, mark)));
    }
    Lines FactoryCalls() { return WithAny({"factory"}, platform.TakeCalls()); }

    std::vector<vexo_hostlib_factory_info> m_items;
    unsigned int m_unreadable_item = UINT_MAX;
    size_t m_set_fails_at = 0;
    std::vector<vexo_hostlib_factory_info> m_written;
};

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(FactoryRead, Items_AreGivenInOrder) {
    SetItems("<Serial content=\"123\"/><Model content=\"NVR\"/>");
    const ConfigRead read = Read(3010, 3 * 304);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, 912U);
    Image expected(912);
    PutItem(PutItem(expected, 0, "Serial", "123"), 1, "Model", "NVR");
    EXPECT_TRUE(SameImage(read.image, expected));
    EXPECT_EQ(read.console, Item("Serial", "123") + Item("Model", "NVR"));
}

TEST_F(FactoryRead, Document_IsMadeUsedAndReleased) {
    SetItems("<Serial content=\"123\"/>");
    Read(3010, 304);
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_GetConfig)",
                    "load_file(/config//vexo_hostmgr_factory.dat)", "get_child_name(DeviceInfo, 0, 128)",
                    "get_attribute(DeviceInfo, Serial, content, 256)",
                    "vexo_utility_delete_xml_operate(vexo_hostmgr_resource.cpp, vexo_hostmgr_get_factory_info)"));
}

TEST_F(FactoryRead, Remainder_IsIgnoredAndLeftAlone) {
    SetItems("<A content=\"1\"/><B content=\"2\"/>");
    const ConfigRead read = Read(3010, 600);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, 304U);
    Image expected(600, 0xEE);
    for (size_t offset = 0; offset < 304; ++offset)
        expected.Byte(offset, 0);
    EXPECT_TRUE(SameImage(read.image, PutItem(expected, 0, "A", "1")));
    EXPECT_EQ(WithAny({"get_child_name"}, platform.TakeCalls()).size(), 1U);
}

TEST_F(FactoryRead, TooSmallABuffer_IsRefusedSilently) {
    SetItems("<A content=\"1\"/>");
    for (const unsigned int size : {1U, 303U}) {
        const ConfigRead read = Read(3010, size);
        EXPECT_TRUE(RefusedUntouched(read)) << size;
        EXPECT_EQ(read.console, "");
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(FactoryRead, NoFile_IsNamed) {
    ExpectFailure(Error(READER, std::string(FILE_PATH) + " not exist!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(FactoryRead, NoDocument_IsAFailure) {
    SetItems("<A content=\"1\"/>");
    FailNewDocument();
    ExpectFailure(Error(READER, "vexo_utility_new_xml_operate failed!!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_utility_new_xml_operate(97, HostMgr_Dev_GetConfig)"));
}

TEST_F(FactoryRead, MalformedFile_IsNamed) {
    for (const char* text : {"", "<DeviceInfo>", "no XML", "<DeviceInfo></Other>"}) {
        Write(FILE_NAME, text);
        ExpectFailure(Error(READER, std::string("load_file ") + FILE_PATH + " failed!!\n"));
    }
}

TEST_F(FactoryRead, NoItem_IsASilentFailure) {
    for (const char* text : {"<DeviceInfo/>", "<Other><A content=\"1\"/></Other>"}) {
        Write(FILE_NAME, text);
        ExpectFailure("");
    }
}

TEST_F(FactoryRead, ItemWithoutValue_CostsItsPlaceButNoEntry) {
    SetItems("<A other=\"1\"/><B content=\"2\"/><C content=\"3\"/>");
    const ConfigRead read = Read(3010, 608);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, 608U);
    Image expected(608);
    EXPECT_TRUE(SameImage(read.image, PutItem(expected, 0, "B", "2")));
    EXPECT_EQ(read.console, Name("A") + Item("B", "2"));
}

TEST_F(FactoryRead, OnlyItemWithoutValue_IsAFailure) {
    SetItems("<A other=\"1\"/><B content=\"2\"/>");
    ExpectFailure(Name("A"));
}

TEST_F(FactoryRead, EmptyValue_IsAValue) {
    SetItems("<A content=\"\"/>");
    const ConfigRead read = Read(3010, 304);
    EXPECT_EQ(read.result, 0);
    EXPECT_TRUE(SameImage(read.image, Image(304).Text(0, "A")));
    EXPECT_EQ(read.console, Item("A", ""));
}

TEST_F(FactoryRead, LongTexts_AreCutAndTerminated) {
    SetItems("<" + Letters(100) + " content=\"" + Letters(300) + "\"/>");
    const ConfigRead read = Read(3010, 304);
    EXPECT_TRUE(SameImage(read.image, Image(304).Text(0, Letters(47)).Text(48, Letters(255))));
    EXPECT_EQ(read.console, Item(Letters(100), Letters(255)));
}

TEST_F(FactoryRead, TextsWithoutTerminator_EndWithTheirBuffers) {
    SetItems("<A content=\"1\"/>");
    documents.scribbles = {"get_child_name", "get_attribute"};
    const ConfigRead read = Read(3010, 304);
    EXPECT_EQ(read.console, Name(std::string(127, 'x')));
    documents.scribbles = {"get_attribute"};
    EXPECT_EQ(Read(3010, 304).console, Item("A", std::string(255, 'x')));
}

// ---- migration -----------------------------------------------------------------------------------------------------

TEST_F(FactoryRead, OldAttribute_IsGivenAndCopiedToTheNewOne) {
    SetItems("<A Uuid=\"u-1\"/><B content=\"2\"/>");
    const ConfigRead read = Read(3010, 608);
    EXPECT_EQ(read.result, 0);
    Image expected(608);
    EXPECT_TRUE(SameImage(read.image, PutItem(PutItem(expected, 0, "A", "u-1"), 1, "B", "2")));
    EXPECT_EQ(read.console, Item("A", "u-1") + Item("B", "2"));
    EXPECT_EQ(ReadBack(FILE_NAME), "<DeviceInfo><A Uuid=\"u-1\" content=\"u-1\"/><B content=\"2\"/></DeviceInfo>");
    EXPECT_THAT(
        WithAny({"_attribute", "save"}, platform.TakeCalls()),
        ElementsAre("get_attribute(DeviceInfo, A, content, 256)", "get_attribute(DeviceInfo, A, Uuid, 256)",
                    "set_attribute(DeviceInfo, A, content, u-1)", "save_content(/config//vexo_hostmgr_factory.dat)",
                    "get_attribute(DeviceInfo, B, content, 256)"));
}

TEST_F(FactoryRead, SecondRead_MigratesNothingMore) {
    SetItems("<A Uuid=\"u-1\"/>");
    Read(3010, 304);
    platform.TakeCalls();
    EXPECT_EQ(Read(3010, 304).result, 0);
    EXPECT_THAT(WithAny({"set_attribute", "save"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(FactoryRead, BothAttributes_TheNewOneCounts) {
    SetItems("<A Uuid=\"old\" content=\"new\"/>");
    EXPECT_TRUE(SameImage(Read(3010, 304).image, Image(304).Text(0, "A").Text(48, "new")));
    EXPECT_THAT(WithAny({"set_attribute", "save"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(FactoryRead, MigrationFails_ValueIsGivenAllTheSame) {
    for (const char* operation : {"set_attribute", "save_content"}) {
        SetItems("<A Uuid=\"u-1\"/>");
        documents.fails = {operation};
        const ConfigRead read = Read(3010, 304);
        EXPECT_EQ(read.result, 0);
        EXPECT_TRUE(SameImage(read.image, Image(304).Text(0, "A").Text(48, "u-1")));
        EXPECT_EQ(read.console, Item("A", "u-1"));
        EXPECT_EQ(ReadBack(FILE_NAME), "<DeviceInfo><A Uuid=\"u-1\"/></DeviceInfo>");
    }
}

// ---- writing: refusals ---------------------------------------------------------------------------------------------

TEST_F(FactoryWrite, LoginBelowOne_IsRefused) {
    for (const int hLogin : {0, -1, INT_MIN}) {
        EXPECT_EQ(Console([hLogin] {
                      EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(hLogin, 3010, 0, 0, nullptr, 0, nullptr, 0), -1);
                  }),
                  Error("HostMgr_Dev_SetConfig", "hLogin invaild!!\n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(FactoryWrite, UnknownLogin_PrintsWhatTheLookupPrints) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(6, 3010, 0, 0, nullptr, 0, nullptr, 0), -1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x6!!\n"));
}

TEST_F(FactoryWrite, OtherCommand_IsNamed) {
    for (const unsigned int command : {0U, 3010U, 100U}) {
        EXPECT_EQ(
            Console([command] { EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(5, command, 0, 0, nullptr, 0, nullptr, 0), -1); }),
            Error("HostMgr_Dev_SetConfig", "Recovery cmd = " + std::to_string(command) + "\n"));
    }
    EXPECT_THAT(FactoryCalls(), IsEmpty());
}

TEST_F(FactoryWrite, NoBufferOrTooSmallAOne_IsRefused) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(5, 3011, 0, 0, nullptr, 0, nullptr, 400), -1); }),
              Error(WRITER, "lpInBuffer:(nil), dwInBufferSize 400 < 304"));
    char buffer[304];
    for (const unsigned int size : {0U, 303U}) {
        EXPECT_EQ(
            Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(5, 3011, 0, 0, buffer, 304, buffer, size), -1); }),
            Error(WRITER, "lpInBuffer:" + AddressText(buffer) + ", dwInBufferSize " + std::to_string(size) + " < 304"));
    }
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(5, 3011, 0, 0, nullptr, 0, nullptr, UINT_MAX), -1); }),
              Error(WRITER, "lpInBuffer:(nil), dwInBufferSize -1 < 304"));
    EXPECT_THAT(FactoryCalls(), IsEmpty());
}

// ---- writing: items ------------------------------------------------------------------------------------------------

TEST_F(FactoryWrite, ItemOfThatName_IsReplacedWithTheRestCarriedOver) {
    m_items = {Item("A", "1", 0x11), Item("B", "2", 0x22), Item("C", "3", 0x33)};
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(Set({Entry("B", "new")}), 0); }), "");
    EXPECT_TRUE(Wrote("B", "new", 0x22));
    EXPECT_THAT(FactoryCalls(), ElementsAre("vexo_model_get_host_manage_factory_info_num()",
                                            "vexo_model_get_host_manager_factory_info(0)",
                                            "vexo_model_get_host_manager_factory_info(1)",
                                            "vexo_model_set_host_manager_factory_info_force(B)"));
}

TEST_F(FactoryWrite, NewName_CarriesTheLastItemsRestOver) {
    m_items = {Item("A", "1", 0x11), Item("B", "2", 0x22)};
    EXPECT_EQ(Set({Entry("New", "v")}), 0);
    EXPECT_TRUE(Wrote("New", "v", 0x22));
}

TEST_F(FactoryWrite, NoItemYet_HasAnEmptyRest) {
    EXPECT_EQ(Set({Entry("New", "v")}), 0);
    EXPECT_TRUE(Wrote("New", "v", 0));
}

TEST_F(FactoryWrite, CountFails_IsAsIfThereWereNone) {
    m_items = {Item("A", "1", 0x11)};
    ON_CALL(platform, vexo_model_get_host_manage_factory_info_num).WillByDefault([](unsigned int* num) {
        *num = 1;
        return -1;
    });
    EXPECT_EQ(Set({Entry("A", "v")}), 0);
    EXPECT_TRUE(Wrote("A", "v", 0));
}

TEST_F(FactoryWrite, UnreadableItem_IsPassedOver) {
    m_items = {Item("A", "1", 0x11), Item("A", "2", 0x22)};
    m_unreadable_item = 0;
    EXPECT_EQ(Set({Entry("A", "v")}), 0);
    EXPECT_TRUE(Wrote("A", "v", 0x22));
    m_written.clear();
    m_unreadable_item = 1;
    EXPECT_EQ(Set({Entry("New", "v")}), 0);
    EXPECT_TRUE(Wrote("New", "v", 0x11));
}

TEST_F(FactoryWrite, ShorterValue_LeavesNothingOfTheOldOne) {
    m_items = {Item("A", Letters(255), 0x11)};
    EXPECT_EQ(Set({Entry("A", "v")}), 0);
    EXPECT_TRUE(Wrote("A", "v", 0x11));
}

TEST_F(FactoryWrite, LongerOrShorterNames_AreOthers) {
    m_items = {Item("Serial2", "1", 0x11), Item("Seria", "2", 0x22), Item("Serial", "3", 0x33), Item("Z", "4", 0x44)};
    EXPECT_EQ(Set({Entry("Serial", "v")}), 0);
    EXPECT_TRUE(Wrote("Serial", "v", 0x33));
}

TEST_F(FactoryWrite, TextsWithoutTerminator_AreCutAndTerminated) {
    m_items = {Item(Letters(47), "old", 0x11), Item("Z", "last", 0x22)};
    EXPECT_EQ(Set({Entry(Letters(48), Letters(256))}), 0);
    EXPECT_TRUE(Wrote(Letters(47), Letters(255), 0x11));
}

TEST_F(FactoryWrite, EntriesWithoutAName_AreSkipped) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(Set({Entry("", "lost"), Entry("A", "1"), Entry("", "")}), 0); }), "");
    EXPECT_TRUE(Wrote("A", "1", 0));
    m_written.clear();
    EXPECT_EQ(Set({Entry("", "lost")}), 0);
    EXPECT_THAT(m_written, IsEmpty());
}

TEST_F(FactoryWrite, Remainder_IsIgnored) {
    EXPECT_EQ(Set({Entry("A", "1")}, 303), 0);
    EXPECT_TRUE(Wrote("A", "1", 0));
}

TEST_F(FactoryWrite, RefusedItem_EndsTheCallAndKeepsWhatIsWritten) {
    m_set_fails_at = 2;
    EXPECT_EQ(Console([] {
                  EXPECT_EQ(Set({Entry("A", "1"), Entry("B", "2"), Entry("C", "3")}), -1);
              }),
              Warning(WRITER, "vexo_model_set_host_manager_factory_info_force failed!!\n"));
    EXPECT_EQ(m_written.size(), 2U);
}

TEST_F(FactoryWrite, FirstBuffer_IsNotLookedAt) {
    const Image entry = Entry("A", "1");
    std::vector<uint8_t> in = entry.All();
    EXPECT_EQ(vexo_HostMgr_Dev_SetConfig(5, 3011, 500, -1, reinterpret_cast<void*>(1), UINT_MAX, in.data(), 304), 0);
    EXPECT_TRUE(Wrote("A", "1", 0));
}
