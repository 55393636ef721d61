// The simulated recorder's factory items by plain calls: reading, setting, what outlasts the process, and the guest's
// own file that tells them.
#include <gmock/gmock.h>

#include <cstring>

#include "control.h"
#include "device_support.h"

namespace control = simulator::control;
using device::Contents;
using device::Home;
using testing::ElementsAre;
using testing::Pair;

namespace {

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "channels": 1,
    "factory": [{"name": "Model", "value": "NVR-16"}, {"name": "no xml name", "value": "kept all the same"}]
})"));

using Item = std::pair<std::string, std::string>;

unsigned Count() {
    unsigned count = 0;
    EXPECT_EQ(vexo_model_get_host_manage_factory_info_num(&count), 0);
    return count;
}

/** Fields may be full without a terminator. */
Item ItemOf(const vexo_hostlib_factory_info& info) {
    return {{info.name, strnlen(info.name, sizeof info.name)}, {info.value, strnlen(info.value, sizeof info.value)}};
}

std::vector<Item> Items() {
    std::vector<Item> items;
    for (unsigned index = 0; index < Count(); ++index) {
        vexo_hostlib_factory_info info = {};
        EXPECT_EQ(vexo_model_get_host_manager_factory_info(index, &info), 0);
        items.push_back(ItemOf(info));
    }
    return items;
}

int Set(const std::string& name, const std::string& value) {
    vexo_hostlib_factory_info info = {};
    name.copy(info.name, sizeof info.name);
    value.copy(info.value, sizeof info.value);
    return vexo_model_set_host_manager_factory_info_force(info);
}

std::string FactoryFile() {
    return Contents(Home() / "config" / "vexo_hostmgr_factory.dat");
}

/** For a process of its own: tells its items on standard error and ends. */
[[noreturn]] void TellItems() {
    for (const Item& item : Items()) {
        fprintf(stderr, "%s=%s;", item.first.c_str(), item.second.c_str());
    }
    exit(0);
}

TEST(Factory, FirstStart_HasTheScenariosItems) {
    EXPECT_THAT(Items(), ElementsAre(Pair("Model", "NVR-16"), Pair("no xml name", "kept all the same")));
    EXPECT_EQ(FactoryFile(), "<?xml version=\"1.0\"?>\n<DeviceInfo>\n    <Model content=\"NVR-16\"/>\n</DeviceInfo>\n");
}

TEST(Factory, Set_ChangesOrAddsAndTellsTheGuestsFile) {
    EXPECT_EQ(Set("Model", "NVR-32"), 0);
    EXPECT_EQ(Set("Place", "Hall \"2\""), 0);
    EXPECT_THAT(Items(), ElementsAre(Pair("Model", "NVR-32"), Pair("no xml name", "kept all the same"),
                                     Pair("Place", "Hall \"2\"")));
    EXPECT_EQ(FactoryFile(),
              "<?xml version=\"1.0\"?>\n<DeviceInfo>\n    <Model content=\"NVR-32\"/>\n"
              "    <Place content=\"Hall &quot;2&quot;\"/>\n</DeviceInfo>\n");
}

TEST(Factory, Set_LeavesWhatElseStandsInTheGuestsFile) {
    std::ofstream(Home() / "config" / "vexo_hostmgr_factory.dat")
        << "<!-- mine --><DeviceInfo><Old Uuid=\"1\"/><Model Uuid=\"2\"/></DeviceInfo>";
    EXPECT_EQ(Set("Model", "NVR-64"), 0);
    EXPECT_EQ(FactoryFile(),
              "<!-- mine --><DeviceInfo><Old Uuid=\"1\"/><Model Uuid=\"2\" content=\"NVR-64\"/></DeviceInfo>");
}

TEST(Factory, Set_GuestsFileThatIsNoDocument_IsMadeAnew) {
    std::ofstream(Home() / "config" / "vexo_hostmgr_factory.dat") << "<DeviceInfo>";
    EXPECT_EQ(Set("Model", "NVR-8"), 0);
    EXPECT_EQ(FactoryFile(), "<?xml version=\"1.0\"?>\n<DeviceInfo>\n    <Model content=\"NVR-8\"/>\n</DeviceInfo>\n");
}

TEST(Factory, FullFields_AreReadToTheirEnd) {
    const std::string name(48, 'n');
    const std::string value(256, 'v');
    EXPECT_EQ(Set(name, value), 0);
    EXPECT_EQ(Set(name, value), 0);
    EXPECT_EQ(Count(), 3U) << "it is the same item";
    EXPECT_THAT(Items().back(), Pair(name, value));
}

TEST(Factory, EmptyName_Fails) {
    EXPECT_NE(Set("", "value"), 0);
    EXPECT_EQ(Count(), 2U);
}

TEST(Factory, EmptyValue_IsAValue) {
    EXPECT_EQ(Set("Model", ""), 0);
    EXPECT_THAT(Items()[0], Pair("Model", ""));
}

TEST(Factory, MoreThanFit_Fails) {
    for (unsigned i = Count(); i < 256; ++i) {
        ASSERT_EQ(Set("Item" + std::to_string(i), "x"), 0);
    }
    EXPECT_NE(Set("One too many", "x"), 0);
    EXPECT_EQ(Set("Item100", "y"), 0) << "one that is there can still be set";
    EXPECT_EQ(Count(), 256U);
}

TEST(Factory, ItemPastTheLast_FailsAndWritesNothing) {
    vexo_hostlib_factory_info info;
    memset(&info, 0x5A, sizeof info);
    EXPECT_NE(vexo_model_get_host_manager_factory_info(2, &info), 0);
    EXPECT_EQ(info.name[0], 0x5A);
    EXPECT_NE(vexo_model_get_host_manager_factory_info(0, nullptr), 0);
    EXPECT_NE(vexo_model_get_host_manage_factory_info_num(nullptr), 0);
}

TEST(FactoryDeathTest, AnotherProcess_FindsWhatWasSet) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(exit(Set("Model", "NVR-4") + Set("Name in GBK", "\xD6\xD0\xCE\xC4")), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(TellItems(), testing::ExitedWithCode(0),
                "Model=NVR-4;no xml name=kept all the same;Name in GBK=\xD6\xD0\xCE\xC4;");
}

TEST(Factory, Restore_LeavesFactoryItems) {
    EXPECT_EQ(Set("Model", "NVR-1"), 0);
    const device::Login login;
    EXPECT_EQ(vexo_model_restore_factory(login.Id(), 0xFFFFFFFF), 0);
    EXPECT_THAT(Items()[0], Pair("Model", "NVR-1"));
}

TEST(Factory, FaultsOnOrder_FailOnce) {
    unsigned count = 7;
    vexo_hostlib_factory_info info = {};
    control::Fail("vexo_model_get_host_manage_factory_info_num", 1);
    EXPECT_NE(vexo_model_get_host_manage_factory_info_num(&count), 0);
    EXPECT_EQ(count, 7U);
    control::Fail("vexo_model_get_host_manager_factory_info", 1);
    EXPECT_NE(vexo_model_get_host_manager_factory_info(0, &info), 0);
    EXPECT_EQ(info.name[0], '\0');
    control::Fail("vexo_model_set_host_manager_factory_info_force", 1);
    EXPECT_NE(Set("Model", "x"), 0);
    EXPECT_THAT(Items()[0], Pair("Model", "NVR-16"));
}

}  // namespace
