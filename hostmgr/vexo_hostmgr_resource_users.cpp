// The recorder's users with their rights, as tables that agents know.
#include "vexo_cfgm.h"
#include "vexo_hostmgr_resource_config.h"

static const HostMgrLevel HOSTMGR_LEVEL_MODEL_DEBUG = {"\033[0;32;32m", "[MODEL] DEBUG! %s[%d]:"};

// ---- rights --------------------------------------------------------------------------------------------------------

namespace {

/** Where a right comes from: fixed, a level inverted, or one of the recorder's local and remote flags. */
enum Right : uint8_t {
    ALWAYS,
    NOT_LEVEL_A,
    NOT_LEVEL_B,
    LOCAL_1,
    LOCAL_2,
    LOCAL_3,
    LOCAL_4,
    LOCAL_5,
    REMOTE_1,
    REMOTE_2,
    REMOTE_3,
    REMOTE_4,
    REMOTE_5,
    REMOTE_6,
    REMOTE_7,
};

constexpr Right LOCAL_RIGHTS[] = {ALWAYS,  ALWAYS,  NOT_LEVEL_A, LOCAL_2,     LOCAL_1,
                                  LOCAL_4, LOCAL_2, LOCAL_3,     NOT_LEVEL_B, LOCAL_5};

constexpr Right REMOTE_RIGHTS[] = {ALWAYS, ALWAYS,   NOT_LEVEL_A, REMOTE_2, REMOTE_1, REMOTE_4, REMOTE_7,
                                   ALWAYS, REMOTE_4, ALWAYS,      REMOTE_6, REMOTE_2, REMOTE_3, REMOTE_5};

}  // namespace

static uint8_t Inverted(unsigned int level) {
    return level == 0 ? 1 : 0;
}

static uint8_t Granted(const vexo_dev_usr_authority& authority, Right right) {
    if (right >= REMOTE_1)
        return authority.remote_flag[right - REMOTE_1] != 0 ? 1 : 0;
    if (right >= LOCAL_1)
        return authority.local_flag[right - LOCAL_1] != 0 ? 1 : 0;
    if (right == ALWAYS)
        return 1;
    return Inverted(right == NOT_LEVEL_A ? authority.level_a : authority.level_b);
}

template <size_t Size>
static void FillRights(const vexo_dev_usr_authority& authority, const Right (&rights)[Size], uint8_t (&table)[Size]) {
    for (size_t index = 0; index < Size; ++index)
        table[index] = Granted(authority, rights[index]);
}

/** A byte a channel. */
static void FillChannels(const vexo_channel_mask& mask, uint8_t (&table)[64]) {
    for (unsigned int channel = 0; channel < sizeof(table); ++channel)
        table[channel] = static_cast<uint8_t>(mask.word[channel / 32] >> (channel % 32) & 1);
}

static void FillChannelRights(const vexo_dev_usr_authority& authority, _tagVexoHostMgrUserInfo* entry) {
    const vexo_channel_mask(&local)[5] = authority.local_mask;
    const vexo_channel_mask(&remote)[4] = authority.remote_mask;
    const vexo_channel_mask* const masks[] = {&local[0], &remote[0], &local[1], &remote[1],
                                              &local[4], &remote[3], &local[3], &remote[2]};
    static_assert(sizeof(masks) / sizeof(masks[0]) == sizeof(entry->byChanRight) / sizeof(entry->byChanRight[0]),
                  "a mask a table");
    for (size_t index = 0; index < sizeof(masks) / sizeof(masks[0]); ++index)
        FillChannels(*masks[index], entry->byChanRight[index]);
    FillChannels(local[2], entry->byChanRightEx);
}

// ---- users ---------------------------------------------------------------------------------------------------------

static void FillUser(const vexo_cfgm_usr_info& user, unsigned char* place) {
    HostMgrRecordAt<_tagVexoHostMgrUserInfo> entry(place);
    HostMgrCopyField(entry->sUserName, user.usr_name);
    HostMgrCopyField(entry->sPassword, user.usr_password);
    FillRights(user.authority, LOCAL_RIGHTS, entry->byLocalRight);
    FillRights(user.authority, REMOTE_RIGHTS, entry->byRemoteRight);
    FillChannelRights(user.authority, entry.Get());
    entry->byReserved2 = 255;
}

static unsigned int CountUsers() {
    unsigned int count = 0;
    return vexo_cfgm_get_usr_num(&count) == 0 ? count : 0;
}

/** False for a user that cannot be read, and for the one that stands for nobody: its entry stays zero. */
static bool ReadUser(unsigned int index, vexo_cfgm_usr_info* user) {
    memset(user, 0, sizeof(*user));
    return vexo_cfgm_get_usr_info(index, user) == 0 && strncmp(user->usr_name, "default", sizeof(user->usr_name)) != 0;
}

int vexo_hostmgr_get_user_cfg(const HostMgrConfigCall& call) {
    constexpr unsigned int CAPACITY = sizeof(_tagVexoHostMgrUserCfg::struUser) / sizeof(_tagVexoHostMgrUserInfo);
    if (call.dwSize < sizeof(_tagVexoHostMgrUserCfg))
        return -1;
    call.Clear();
    call.SetReturned(sizeof(_tagVexoHostMgrUserCfg));
    const unsigned int count = CountUsers();
    for (unsigned int index = 0; index < count && index < CAPACITY; ++index) {
        vexo_cfgm_usr_info user;
        if (!ReadUser(index, &user))
            continue;
        HOSTMGR_PRINTF(MODEL_DEBUG, "usr->usr_name = %.*s,\n", static_cast<int>(sizeof(user.usr_name)), user.usr_name);
        FillUser(user,
                 call.pBuffer + offsetof(_tagVexoHostMgrUserCfg, struUser) + index * sizeof(_tagVexoHostMgrUserInfo));
    }
    return 0;
}
