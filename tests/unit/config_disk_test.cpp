// The two disk lists and the directory for pictures.
#include "config_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

using namespace vexo_soft;

class ConfigDisks : public ConfigFixture {
protected:
    /** A healthy local disk with two partitions. */
    static vexo_hard_disk_info Healthy(unsigned int number) {
        vexo_hard_disk_info disk =
            Disk("sd" + std::to_string(number), 1, 3, 1000 + number, {{"/mnt/a", 400 + number}, {"/mnt/b", 500}});
        disk.identity.address = 0x0A141E00 + number;
        return disk;
    }
    static std::vector<vexo_hard_disk_info> HealthyDisks(unsigned int count) {
        std::vector<vexo_hard_disk_info> disks;
        for (unsigned int number = 0; number < count; ++number)
            disks.push_back(Healthy(number));
        return disks;
    }
    /** The entry of that disk, put into an image of a list. */
    static void PutHealthy(Image& image, unsigned int number) {
        const size_t entry = 8 + 144 * number;
        image.Word(entry, number).Word(entry + 4, 1000 + number).Word(entry + 8, 900 + number);
        image.Word(entry + 20, 1).Bytes(entry + 24, {10, 20, 30});
    }
    static Image HealthyList(size_t size, unsigned int count, unsigned int shown) {
        Image image(size);
        image.Word(0, static_cast<unsigned int>(size)).Word(4, count);
        for (unsigned int number = 0; number < shown; ++number)
            PutHealthy(image, number);
        return image;
    }
    /** A list of eight with the one disk given. */
    Image ListOf(const vexo_hard_disk_info& disk) {
        SetDisks({disk});
        return Expected(1054, 1160);
    }
    /** Status word, type byte and address bytes of the first entry. */
    static std::vector<unsigned int> StatusTypeAddress(const Image& image) {
        const std::vector<uint8_t>& bytes = image.All();
        return {bytes[20], bytes[25], bytes[32], bytes[33], bytes[34]};
    }
};

class ConfigPictureDir : public ConfigFixture {
protected:
    static constexpr char NAME[] = "HostMgr_Dev_GetConfig";
    static vexo_hard_disk_info Good(const std::string& path) { return Disk("sda", 1, 3, 17, {{path, 16}}); }
    static std::string NotFit(unsigned int state, unsigned int partitions, unsigned int size) {
        return Warning(NAME, "state:" + std::to_string(state) + ", part_num:" + std::to_string(partitions) +
                                 ", disk_size_MB:" + std::to_string(size) + "\n");
    }
    /** The directory that a read gives; the buffer behind it is zero. */
    static std::string DirectoryOf(const ConfigRead& read) {
        EXPECT_EQ(read.result, 0);
        const std::vector<uint8_t>& bytes = read.image.All();
        const std::string text(bytes.begin(), bytes.begin() + read.returned);
        EXPECT_TRUE(SameImage(read.image, Image(bytes.size()).Text(0, text)));
        return text;
    }
};

// ---- disk lists ----------------------------------------------------------------------------------------------------

TEST_F(ConfigDisks, NoDisk_GivesAnEmptyList) {
    SetDisks({});
    EXPECT_TRUE(SameImage(Expected(1054, 1160), Image(1160).Word(0, 1160)));
    EXPECT_TRUE(SameImage(Expected(2026, 3464), Image(3464).Word(0, 3464)));
}

TEST_F(ConfigDisks, CountFails_GivesAnEmptyList) {
    FailDiskCount();
    EXPECT_TRUE(SameImage(Expected(1054, 1160), Image(1160).Word(0, 1160)));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_model_get_hard_disk_num()"));
}

TEST_F(ConfigDisks, TwoDisks_AreShownAtTheirIndex) {
    SetDisks(HealthyDisks(2));
    EXPECT_TRUE(SameImage(Expected(1054, 1160), HealthyList(1160, 2, 2)));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_model_get_hard_disk_num()", "vexo_model_get_hard_disk_info(0)",
                            "vexo_model_is_disk_recording(sd0)", "vexo_model_get_hard_disk_info(1)",
                            "vexo_model_is_disk_recording(sd1)"));
    EXPECT_TRUE(SameImage(Expected(2026, 3464), HealthyList(3464, 2, 2)));
}

TEST_F(ConfigDisks, ThirtyDisks_AreCountedAndCutToTheCapacity) {
    SetDisks(HealthyDisks(30));
    EXPECT_TRUE(SameImage(Expected(1054, 1160), HealthyList(1160, 30, 8)));
    platform.TakeCalls();
    EXPECT_TRUE(SameImage(Expected(2026, 3464), HealthyList(3464, 30, 24)));
    EXPECT_EQ(platform.TakeCalls().size(), 1U + 2 * 24);
}

TEST_F(ConfigDisks, CapacityExactly_FillsTheLastEntry) {
    SetDisks(HealthyDisks(8));
    EXPECT_TRUE(SameImage(Expected(1054, 1160), HealthyList(1160, 8, 8)));
}

TEST_F(ConfigDisks, HostileCount_ReadsTheCapacityOnly) {
    SetDisks(HealthyDisks(24));
    ON_CALL(platform, vexo_model_get_hard_disk_num).WillByDefault([](unsigned int* num) {
        *num = UINT_MAX;
        return 0;
    });
    EXPECT_TRUE(SameImage(Expected(2026, 3464), HealthyList(3464, UINT_MAX, 24)));
}

TEST_F(ConfigDisks, UnreadableDisk_LeavesItsEntryAtZero) {
    SetDisks(HealthyDisks(3));
    m_unreadable = {1};
    Image expected(1160);
    expected.Word(0, 1160).Word(4, 3);
    PutHealthy(expected, 0);
    PutHealthy(expected, 2);
    EXPECT_TRUE(SameImage(Expected(1054, 1160), expected));
    EXPECT_THAT(WithAny({"sd1"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigDisks, LargerBuffer_IsClearedToItsEnd) {
    SetDisks(HealthyDisks(1));
    const ConfigRead read = Read(1054, 2000);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, 1160U);
    Image expected(2000);
    expected.Word(0, 1160).Word(4, 1);
    PutHealthy(expected, 0);
    EXPECT_TRUE(SameImage(read.image, expected));
}

TEST_F(ConfigDisks, NoBytesReturnedWanted_IsFine) {
    std::vector<uint8_t> buffer(1160);
    EXPECT_EQ(vexo_HostMgr_Dev_GetConfig(1, 1054, 1, 1, nullptr, 0, buffer.data(), 1160, nullptr), 0);
}

TEST_F(ConfigDisks, Status_TellsAbnormalAndRecording) {
    for (const unsigned int state : {0U, 1U, 2U, 3U, 4U, 0xFFFFFFFFU}) {
        const unsigned int abnormal = state == 3 ? 0 : 1;
        m_recording = {};
        EXPECT_EQ(StatusTypeAddress(ListOf(Disk("d", 1, state, 1, {})))[0], abnormal) << state;
        m_recording = {"d"};
        EXPECT_EQ(StatusTypeAddress(ListOf(Disk("d", 1, state, 1, {})))[0], abnormal | 2) << state;
    }
}

TEST_F(ConfigDisks, Type_IsTranslatedAndTheAddressIsALocalDisksOnly) {
    const std::vector<std::vector<unsigned int>> expected = {
        {0, 0, 0, 0, 0}, {0, 0, 0xDE, 0xAD, 0xBE}, {0, 1, 0, 0, 0}, {0, 2, 0, 0, 0}, {0, 4, 0, 0, 0}, {0, 0, 0, 0, 0}};
    for (unsigned int type = 0; type < expected.size(); ++type) {
        vexo_hard_disk_info disk = Disk("d", type, 3, 1, {});
        disk.identity.address = 0xDEADBEEF;
        EXPECT_EQ(StatusTypeAddress(ListOf(disk)), expected[type]) << type;
    }
    EXPECT_EQ(StatusTypeAddress(ListOf(Disk("d", UINT_MAX, 3, 1, {})))[1], 0U);
}

TEST_F(ConfigDisks, HostilePartitionCount_SumsWhatTheRecordHolds) {
    vexo_hard_disk_info disk = Disk("d", 2, 3, 7, {});
    disk.partition_num = UINT_MAX;
    for (auto& partition : disk.partition)
        partition.size = 10;
    EXPECT_TRUE(SameImage(ListOf(disk),
                          Image(1160).Word(0, 1160).Word(4, 1).Word(12, 7).Word(16, 160).Byte(25, 1).Word(28, 1)));
}

TEST_F(ConfigDisks, PartitionSum_Wraps) {
    SetDisks({Disk("d", 2, 3, 7, {{"/a", 0xFFFFFFFF}, {"/b", 11}})});
    EXPECT_TRUE(SameImage(Expected(1054, 1160),
                          Image(1160).Word(0, 1160).Word(4, 1).Word(12, 7).Word(16, 10).Byte(25, 1).Word(28, 1)));
}

// ---- directory for pictures ----------------------------------------------------------------------------------------

TEST_F(ConfigPictureDir, FirstFitPartition_IsMadeAndGiven) {
    SetDisks({Good("/mnt/disk1")});
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(DirectoryOf(read), "/mnt/disk1/host_pic");
    EXPECT_EQ(read.returned, 19U);
    EXPECT_EQ(read.console, Debug(NAME, "Dir:/mnt/disk1/host_pic\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_model_get_hard_disk_num()", "vexo_model_get_hard_disk_info(0)",
                                                  "vexo_utility_creat_dir(/mnt/disk1/host_pic)"));
}

TEST_F(ConfigPictureDir, NoDisk_IsAnError) {
    SetDisks({});
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(read.result, -1);
    EXPECT_EQ(read.returned, UNTOUCHED);
    EXPECT_TRUE(SameImage(read.image, Image(64)));
    EXPECT_EQ(read.console, Error(NAME, "vexo_model_get_hard_disk_num failed, or disk_num 0\n"));
}

TEST_F(ConfigPictureDir, CountFails_IsAnErrorWithoutDisks) {
    FailDiskCount();
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(read.result, -1);
    EXPECT_EQ(read.console, Error(NAME, "vexo_model_get_hard_disk_num failed, or disk_num 0\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_model_get_hard_disk_num()"));
}

TEST_F(ConfigPictureDir, DisksThatDoNotFit_AreNamedAndSkipped) {
    SetDisks(
        {Disk("a", 1, 2, 17, {{"/a", 16}}), Disk("b", 1, 3, 17, {}), Disk("c", 1, 3, 16, {{"/c", 16}}), Good("/d")});
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(DirectoryOf(read), "/d/host_pic");
    EXPECT_EQ(read.console, NotFit(2, 1, 17) + NotFit(3, 0, 17) + NotFit(3, 1, 16) + Debug(NAME, "Dir:/d/host_pic\n"));
}

TEST_F(ConfigPictureDir, UnreadableDisk_IsSkippedSilently) {
    SetDisks({Good("/a"), Good("/b")});
    m_unreadable = {0};
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(DirectoryOf(read), "/b/host_pic");
    EXPECT_EQ(read.console, Debug(NAME, "Dir:/b/host_pic\n"));
}

TEST_F(ConfigPictureDir, SmallPartitions_AreSkippedSilently) {
    SetDisks({Disk("a", 1, 3, 17, {{"/a", 15}, {"/b", 0}}), Disk("b", 1, 3, 17, {{"/c", 15}, {"/d", 16}, {"/e", 99}})});
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(DirectoryOf(read), "/d/host_pic");
    EXPECT_EQ(read.console, Debug(NAME, "Dir:/d/host_pic\n"));
}

TEST_F(ConfigPictureDir, NoFitPartitionAtAll_IsASilentFailure) {
    SetDisks({Disk("a", 1, 3, 17, {{"/a", 15}})});
    const ConfigRead read = Read(30001, 64);
    EXPECT_EQ(read.result, -1);
    EXPECT_EQ(read.returned, UNTOUCHED);
    EXPECT_TRUE(SameImage(read.image, Image(64)));
    EXPECT_EQ(read.console, "");
    EXPECT_THAT(WithAny({"creat_dir"}, platform.TakeCalls()), IsEmpty());
}

TEST_F(ConfigPictureDir, PathThatDoesNotFit_IsCutForTheCallerOnly) {
    SetDisks({Good("/mnt/longer/disk1")});
    const ConfigRead read = Read(30001, 19);
    EXPECT_EQ(DirectoryOf(read), "/mnt/longer/disk1/");
    EXPECT_EQ(read.returned, 18U);
    EXPECT_EQ(read.console, Debug(NAME, "Dir:/mnt/longer/disk1/host_pic\n"));
    EXPECT_THAT(WithAny({"creat_dir"}, platform.TakeCalls()),
                ElementsAre("vexo_utility_creat_dir(/mnt/longer/disk1/host_pic)"));
}

TEST_F(ConfigPictureDir, PathThatJustFits_IsWhole) {
    SetDisks({Good("/mnt/disk1")});
    EXPECT_EQ(DirectoryOf(Read(30001, 20)), "/mnt/disk1/host_pic");
    EXPECT_EQ(DirectoryOf(Read(30001, 19)), "/mnt/disk1/host_pi");
}

TEST_F(ConfigPictureDir, MountPathWithoutTerminator_EndsWithItsField) {
    SetDisks({Disk("a", 1, 3, 17, {{Letters(128), 16}, {"/other", 16}})});
    EXPECT_EQ(DirectoryOf(Read(30001, 200)), Letters(128) + "/host_pic");
}

TEST_F(ConfigPictureDir, HostilePartitionCount_LooksAtWhatTheRecordHolds) {
    vexo_hard_disk_info disk = Disk("d", 1, 3, 17, {});
    disk.partition_num = UINT_MAX;
    SetDisks({disk});
    EXPECT_EQ(Read(30001, 64).result, -1);
    PutText(disk.partition[15].mount_path, "/last");
    disk.partition[15].size = 16;
    SetDisks({disk});
    EXPECT_EQ(DirectoryOf(Read(30001, 64)), "/last/host_pic");
}

TEST_F(ConfigPictureDir, DirectoryCannotBeMade_IsGivenAllTheSame) {
    SetDisks({Good("/mnt")});
    ON_CALL(platform, vexo_utility_creat_dir).WillByDefault(testing::Return(-1));
    EXPECT_EQ(DirectoryOf(Read(30001, 64)), "/mnt/host_pic");
}
