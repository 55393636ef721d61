#include "core/scenario_users.h"

#include <algorithm>
#include <set>

#include "vexo_types.h"

namespace simulator {
namespace {

constexpr size_t MAX_USERS = 128;
constexpr size_t NAME_BYTES = 63;  ///< what the platform's name fields hold
constexpr unsigned LIVE_VIEW = 1;  ///< rights by channel, local and remote
constexpr unsigned PLAYBACK = 2;

/** How many rights the platform's record has. */
struct RightsBounds {
    Bounds flags;
    Bounds masks;
};

constexpr RightsBounds LOCAL = {
    {1, sizeof(vexo_dev_usr_authority::local_flag) / sizeof(unsigned), "local rights"},
    {1, sizeof(vexo_dev_usr_authority::local_mask) / sizeof(vexo_channel_mask), "local rights by channel"}};
constexpr RightsBounds REMOTE = {
    {1, sizeof(vexo_dev_usr_authority::remote_flag) / sizeof(unsigned), "remote rights"},
    {1, sizeof(vexo_dev_usr_authority::remote_mask) / sizeof(vexo_channel_mask), "remote rights by channel"}};

/** usual: the channels on which a user has live view and playback when nothing else is said. */
RightsSettings ReadRights(JsonSection section, const RightsBounds& bounds, const Bounds& channels,
                          const std::vector<unsigned>& usual) {
    RightsSettings rights;
    rights.flags = section.Wholes("rights", bounds.flags);
    for (JsonSection& entry : section.Objects("by_channel", 0, bounds.masks.most)) {
        ChannelRight right;
        right.right = entry.Whole("right", static_cast<unsigned>(rights.masks.size()) + 1, bounds.masks);
        right.channels = entry.Wholes("channels", channels);
        entry.RefuseOtherKeys();
        rights.masks.push_back(right);
    }
    if (!section.Has("by_channel")) {
        rights.masks = {{LIVE_VIEW, usual}, {PLAYBACK, usual}};
    }
    section.RefuseOtherKeys();
    return rights;
}

/** An administrator has all rights, so that nothing may be said of them. */
void RefuseRights(const JsonSection& section) {
    for (const char* key : {"channels", "change_parameters", "manage_disks", "local", "remote"}) {
        if (section.Has(key)) {
            section.Refuse(key, "does not go with an administrator, who has all rights on all channels: leave it out");
        }
    }
}

UserSettings ReadUser(JsonSection section, size_t channel_count) {
    const Bounds channels = {1, static_cast<unsigned>(channel_count), "channel numbers"};
    UserSettings user;
    user.name = section.RequiredText("name", 1, NAME_BYTES);
    user.password = section.Text("password", "", 0, NAME_BYTES);
    user.administrator = section.Truth("administrator", false);
    if (user.administrator) {
        RefuseRights(section);
    }
    const std::vector<unsigned> usual = section.Wholes("channels", channels);
    user.change_parameters = section.Truth("change_parameters", false);
    user.manage_disks = section.Truth("manage_disks", false);
    user.local = ReadRights(section.Object("local"), LOCAL, channels, usual);
    user.remote = ReadRights(section.Object("remote"), REMOTE, channels, usual);
    section.RefuseOtherKeys();
    return user;
}

void CheckUsers(const std::vector<UserSettings>& users, const JsonSection& root) {
    std::set<std::string> names;
    for (size_t i = 0; i < users.size(); ++i) {
        if (!names.insert(users[i].name).second) {
            root.Refuse("users[" + std::to_string(i) + "].name",
                        "\"" + users[i].name + "\" is the name of an earlier user, give another");
        }
    }
    const auto admin =
        std::find_if(users.begin(), users.end(), [](const UserSettings& user) { return user.name == "admin"; });
    if (admin == users.end()) {
        root.Refuse("users", "there is no user \"admin\", who the recorder's own programs log in as: add one");
    }
    if (!admin->administrator) {
        root.Refuse("users[" + std::to_string(admin - users.begin()) + "].administrator",
                    "the user \"admin\" must be an administrator: set it to true");
    }
}

}  // namespace

std::vector<UserSettings> ReadUsers(JsonSection& root, size_t channels) {
    std::vector<UserSettings> users;
    for (const JsonSection& section : root.Objects("users", 1, MAX_USERS)) {
        users.push_back(ReadUser(section, channels));
    }
    if (root.Has("users")) {
        CheckUsers(users, root);
    } else {
        users.resize(1);
        users[0].name = "admin";
        users[0].password = "admin12345";
        users[0].administrator = true;
    }
    return users;
}

}  // namespace simulator
