// The recorder's users and their rights.
#include "config_fixture.h"

using testing::ElementsAre;

using namespace vexo_soft;

class ConfigUsers : public ConfigFixture {
protected:
    static constexpr unsigned int SIZE = 6724;
    static constexpr size_t UserAt(unsigned int user) { return 4 + 840 * user; }

    static vexo_cfgm_usr_info User(const std::string& name, const std::string& password) {
        vexo_cfgm_usr_info user = {};
        PutText(user.usr_name, name);
        PutText(user.usr_password, password);
        return user;
    }
    /** The users; one that cannot be read leaves rubbish in the record. */
    void SetUsers(const std::vector<vexo_cfgm_usr_info>& users) {
        m_users = users;
        ON_CALL(platform, vexo_cfgm_get_usr_num).WillByDefault([this](unsigned int* num) {
            *num = static_cast<unsigned int>(m_users.size());
            return 0;
        });
        ON_CALL(platform, vexo_cfgm_get_usr_info).WillByDefault([this](unsigned int index, vexo_cfgm_usr_info* user) {
            EXPECT_TRUE(IsZero(*user));
            *user = m_users.at(index);
            if (m_no_user.count(index) == 0)
                return 0;
            memset(user, 0x77, sizeof(*user));
            return -1;
        });
    }
    static std::string Named(const std::string& name) {
        return "\033[0;32;32m[MODEL] DEBUG! vexo_hostmgr_get_user_cfg[#]:usr->usr_name = " + name + ",\n\033[m";
    }
    /** What a user without any right still has, put into an image. */
    static void PutBare(Image& image, unsigned int user, const std::string& name, const std::string& password) {
        image.Text(UserAt(user), name).Text(UserAt(user) + 32, password);
        image.Bytes(UserAt(user) + 48, {1, 1, 1, 0, 0, 0, 0, 0, 1, 0});
        image.Bytes(UserAt(user) + 80, {1, 1, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0});
        image.Byte(UserAt(user) + 774, 255);
    }
    Image ImageOf(const vexo_cfgm_usr_info& user) {
        SetUsers({user});
        return Read(124, SIZE).image;
    }
    static Image Bare(const std::string& name = "u", const std::string& password = "p") {
        Image image(SIZE);
        PutBare(image, 0, name, password);
        return image;
    }

    std::vector<vexo_cfgm_usr_info> m_users;
    std::set<unsigned int> m_no_user;
};

TEST_F(ConfigUsers, NoUser_GivesNothing) {
    SetUsers({});
    EXPECT_TRUE(SameImage(Expected(124, SIZE), Image(SIZE)));
}

TEST_F(ConfigUsers, CountFails_GivesNothing) {
    SetUsers({User("u", "p")});
    ON_CALL(platform, vexo_cfgm_get_usr_num).WillByDefault([](unsigned int* num) {
        *num = 1;
        return -1;
    });
    EXPECT_TRUE(SameImage(Expected(124, SIZE), Image(SIZE)));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_cfgm_get_usr_num()"));
}

TEST_F(ConfigUsers, TwoUsers_AreShownAndNamed) {
    SetUsers({User("admin", "secret"), User("anna", "")});
    const ConfigRead read = Read(124, SIZE);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, SIZE);
    EXPECT_EQ(read.console, Named("admin") + Named("anna"));
    Image expected(SIZE);
    PutBare(expected, 0, "admin", "secret");
    PutBare(expected, 1, "anna", "");
    EXPECT_TRUE(SameImage(read.image, expected));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_cfgm_get_usr_num()", "vexo_cfgm_get_usr_info(0)", "vexo_cfgm_get_usr_info(1)"));
}

TEST_F(ConfigUsers, LargerBuffer_IsClearedToItsEnd) {
    SetUsers({});
    const ConfigRead read = Read(124, SIZE + 5);
    EXPECT_EQ(read.returned, SIZE);
    EXPECT_TRUE(SameImage(read.image, Image(SIZE + 5)));
}

TEST_F(ConfigUsers, UserDefault_LeavesItsEntryZero) {
    SetUsers({User("default", "x"), User("anna", "pass")});
    const ConfigRead read = Read(124, SIZE);
    EXPECT_EQ(read.console, Named("anna"));
    Image expected(SIZE);
    PutBare(expected, 1, "anna", "pass");
    EXPECT_TRUE(SameImage(read.image, expected));
}

TEST_F(ConfigUsers, NamesLikeDefault_AreUsersLikeOthers) {
    for (const char* name : {"Default", "default2", "defaul", ""})
        EXPECT_TRUE(SameImage(ImageOf(User(name, "p")), Bare(name))) << name;
}

TEST_F(ConfigUsers, UnreadableUser_LeavesItsEntryZero) {
    SetUsers({User("a", "p"), User("b", "p"), User("c", "p")});
    m_no_user = {1};
    const ConfigRead read = Read(124, SIZE);
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.console, Named("a") + Named("c"));
    Image expected(SIZE);
    PutBare(expected, 0, "a", "p");
    PutBare(expected, 2, "c", "p");
    EXPECT_TRUE(SameImage(read.image, expected));
}

TEST_F(ConfigUsers, NineUsers_AreCutToEight) {
    SetUsers(std::vector<vexo_cfgm_usr_info>(9, User("u", "p")));
    Image expected(SIZE);
    for (unsigned int user = 0; user < 8; ++user)
        PutBare(expected, user, "u", "p");
    EXPECT_TRUE(SameImage(Read(124, SIZE).image, expected));
    EXPECT_EQ(WithAny({"usr_info"}, platform.TakeCalls()).size(), 8U);
}

TEST_F(ConfigUsers, LongTexts_FillTheirFieldsAndNoMore) {
    EXPECT_TRUE(SameImage(ImageOf(User(Letters(32), Letters(16))), Bare(Letters(32), Letters(16))));
    EXPECT_TRUE(SameImage(ImageOf(User(Letters(63), Letters(63))), Bare(Letters(32), Letters(16))));
}

TEST_F(ConfigUsers, TextsWithoutTerminator_EndWithTheirFields) {
    SetUsers({User(Letters(64), Letters(64))});
    const ConfigRead read = Read(124, SIZE);
    EXPECT_EQ(read.console, Named(Letters(64)));
    EXPECT_TRUE(SameImage(read.image, Bare(Letters(32), Letters(16))));
}

// ---- rights --------------------------------------------------------------------------------------------------------

TEST_F(ConfigUsers, Levels_AreInverted) {
    for (const unsigned int level : {1U, 2U, UINT_MAX}) {
        vexo_cfgm_usr_info user = User("u", "p");
        user.authority.level_a = level;
        EXPECT_TRUE(SameImage(ImageOf(user), Bare().Byte(UserAt(0) + 50, 0).Byte(UserAt(0) + 82, 0))) << level;
        user = User("u", "p");
        user.authority.level_b = level;
        EXPECT_TRUE(SameImage(ImageOf(user), Bare().Byte(UserAt(0) + 56, 0))) << level;
    }
}

/** Where a flag shows: offsets within the user's entry. */
using Offsets = std::vector<size_t>;

TEST_F(ConfigUsers, EachLocalFlag_ShowsWhereItBelongs) {
    const std::vector<Offsets> shown = {{52}, {51, 54}, {55}, {53}, {57}};
    for (size_t flag = 0; flag < shown.size(); ++flag) {
        vexo_cfgm_usr_info user = User("u", "p");
        user.authority.local_flag[flag] = 0x80000000;
        Image expected = Bare();
        for (const size_t offset : shown[flag])
            expected.Byte(UserAt(0) + offset, 1);
        EXPECT_TRUE(SameImage(ImageOf(user), expected)) << flag;
    }
}

TEST_F(ConfigUsers, EachRemoteFlag_ShowsWhereItBelongs) {
    const std::vector<Offsets> shown = {{84}, {83, 91}, {92}, {85, 88}, {93}, {90}, {86}};
    for (size_t flag = 0; flag < shown.size(); ++flag) {
        vexo_cfgm_usr_info user = User("u", "p");
        user.authority.remote_flag[flag] = 2;
        Image expected = Bare();
        for (const size_t offset : shown[flag])
            expected.Byte(UserAt(0) + offset, 1);
        EXPECT_TRUE(SameImage(ImageOf(user), expected)) << flag;
    }
}

/** Channels 1, 32, 33 and 64, and some beyond the table. */
static void SetMask(vexo_channel_mask& mask) {
    mask.word[0] = 0x80000001;
    mask.word[1] = 0x80000001;
    for (int word = 2; word < 8; ++word)
        mask.word[word] = 0xFFFFFFFF;
}

static Image& PutMask(Image& image, size_t table) {
    for (const size_t channel : {0, 31, 32, 63})
        image.Byte(table + channel, 1);
    return image;
}

TEST_F(ConfigUsers, EachLocalMask_FillsItsTable) {
    const Offsets tables = {112, 112 + 2 * 64, 775, 112 + 6 * 64, 112 + 4 * 64};
    for (size_t mask = 0; mask < tables.size(); ++mask) {
        vexo_cfgm_usr_info user = User("u", "p");
        SetMask(user.authority.local_mask[mask]);
        Image expected = Bare();
        EXPECT_TRUE(SameImage(ImageOf(user), PutMask(expected, UserAt(0) + tables[mask]))) << mask;
    }
}

TEST_F(ConfigUsers, EachRemoteMask_FillsItsTable) {
    const Offsets tables = {112 + 64, 112 + 3 * 64, 112 + 7 * 64, 112 + 5 * 64};
    for (size_t mask = 0; mask < tables.size(); ++mask) {
        vexo_cfgm_usr_info user = User("u", "p");
        SetMask(user.authority.remote_mask[mask]);
        Image expected = Bare();
        EXPECT_TRUE(SameImage(ImageOf(user), PutMask(expected, UserAt(0) + tables[mask]))) << mask;
    }
}
