// The recorder's users: names, passwords, rights, and rights by channel.
#include "config_decode.h"

namespace hostmgrctl {
namespace {

using namespace decode;  // the tables are all about it
using nlohmann::ordered_json;
using User = _tagVexoHostMgrUserInfo;
using Users = _tagVexoHostMgrUserCfg;

// Where each right comes from. What the recorder's own flags allow is its matter; the levels are those of the right to
// change its parameters and of the right to manage disks and files.
constexpr const char* LOCAL_RIGHTS[] = {"always", "always", "change parameters", "flag 2", "flag 1", "flag 4",
                                        "flag 2", "flag 3", "manage disks",      "flag 5"};
constexpr const char* REMOTE_RIGHTS[] = {"always", "always", "change parameters",
                                         "flag 2", "flag 1", "flag 4",
                                         "flag 7", "always", "flag 4",
                                         "always", "flag 6", "flag 2",
                                         "flag 3", "flag 5"};
static_assert(sizeof(LOCAL_RIGHTS) / sizeof(LOCAL_RIGHTS[0]) == sizeof(User::byLocalRight), "a name a right");
static_assert(sizeof(REMOTE_RIGHTS) / sizeof(REMOTE_RIGHTS[0]) == sizeof(User::byRemoteRight), "a name a right");

/** "0 always, 4 flag 1; not 3 flag 2". */
template <const auto& Names>
Shown Rights(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    ordered_json list = ordered_json::array();
    std::string given;
    std::string withheld;
    for (size_t i = 0; i < size; ++i) {
        list.push_back({{"index", i}, {"right", Names[i]}, {"granted", bytes[i] != 0}});
        std::string& text = bytes[i] != 0 ? given : withheld;
        text += (text.empty() ? "" : ", ") + std::to_string(i) + " " + Names[i];
    }
    return {list, (given.empty() ? "none" : given) + (withheld.empty() ? "" : "; not " + withheld)};
}

#define CHANNEL_RIGHT(key, label, index) \
    { key, label, "byChanRight[" #index "]", offsetof(User, byChanRight) + (index)*64, 64, Channels }

constexpr Field USER_FIELDS[] = {
    {"name", "name", HOSTMGRCTL_MEMBER(User, sUserName), Text},
    {"password", "password", HOSTMGRCTL_MEMBER(User, sPassword), Password},
    {"local_rights", "local rights", HOSTMGRCTL_MEMBER(User, byLocalRight), Rights<LOCAL_RIGHTS>},
    {"remote_rights", "remote rights", HOSTMGRCTL_MEMBER(User, byRemoteRight), Rights<REMOTE_RIGHTS>},
    CHANNEL_RIGHT("channels_local_1", "channels, local right 1", 0),
    CHANNEL_RIGHT("channels_local_2", "channels, local right 2", 2),
    {"channels_local_3", "channels, local right 3", HOSTMGRCTL_MEMBER(User, byChanRightEx), Channels},
    CHANNEL_RIGHT("channels_local_4", "channels, local right 4", 6),
    CHANNEL_RIGHT("channels_local_5", "channels, local right 5", 4),
    CHANNEL_RIGHT("channels_remote_1", "channels, remote right 1", 1),
    CHANNEL_RIGHT("channels_remote_2", "channels, remote right 2", 3),
    CHANNEL_RIGHT("channels_remote_3", "channels, remote right 3", 7),
    CHANNEL_RIGHT("channels_remote_4", "channels, remote right 4", 5),
    {nullptr, "", HOSTMGRCTL_MEMBER(User, byReserved2), Number},
};
constexpr Field HEAD_FIELDS[] = {{nullptr, "", HOSTMGRCTL_MEMBER(Users, dwSize), Number}};

bool IsUser(const Entry& entry) {
    return entry.bytes[offsetof(User, sUserName)] != '\0';
}

Section UserSection() {
    Section section = {"users", "user", Form::Lines, USER_FIELDS, "struUser", offsetof(Users, struUser)};
    section.stride = sizeof(User);
    section.number = "index";
    section.exists = IsUser;
    return section;
}

const Section USER_SECTIONS[] = {{nullptr, nullptr, Form::Lines, HEAD_FIELDS}, UserSection()};

}  // namespace

const Record USERS_RECORD = {"users",       "the first 8 users and their rights", HOSTMGR_CONFIG_USERS,
                             sizeof(Users), "its users cannot be asked",          USER_SECTIONS};

}  // namespace hostmgrctl
