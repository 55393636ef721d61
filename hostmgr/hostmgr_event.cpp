#include "hostmgr_event.h"

// ---- reading -------------------------------------------------------------------------------------------------------

// Room for events that appear between counting and reading.
constexpr uint64_t SPARE_EVENTS = 100;

HostMgrEventTable::~HostMgrEventTable() {
    if (m_info != NULL)
        vexo_utility_free(m_file, m_site.function, m_info);
}

bool HostMgrEventTable::Count() {
    return vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, NULL, 0, &m_count) == 0 && m_count != 0;
}

bool HostMgrEventTable::Read() {
    const uint64_t capacity = m_count + SPARE_EVENTS;
    const uint64_t bytes = capacity * sizeof(vexo_event_detail_info);
    if (bytes <= UINT32_MAX)
        m_info = static_cast<vexo_event_detail_info*>(
            vexo_utility_malloc(VEXO_USER_EVENT, VEXO_MEMORY_EVENT, static_cast<unsigned int>(bytes), 1));
    // The condition is printed under the name that the buffer has always had.
    if (m_info == NULL)
        HostMgrAssertFailed(m_file, m_site, "event_info != NULL");
    memset(static_cast<void*>(m_info), 0, static_cast<size_t>(bytes));
    const unsigned int room = static_cast<unsigned int>(capacity);
    if (vexo_utility_get_event_info(VEXO_EVENT_USER_HOSTMGR, m_info, room, &m_count) != 0 || m_count > room)
        return false;
    m_count = vexo_utility_min(room, m_count);
    return true;
}

// ---- what an event says --------------------------------------------------------------------------------------------

namespace {

/** In a table: any class, any sub-type. Rows are tried from the top. */
constexpr int ANY = -1;

/** Classes. */
constexpr int PICTURE = 2;
constexpr int DISK = 3;
constexpr int NETWORK = 4;
constexpr int INPUT = 5;

/** Sub-types. */
constexpr int MOTION = 2;
constexpr int VIDEO_LOSS = 3;
constexpr int SHELTER = 4;
constexpr int DISK_FULL = 17;
constexpr int DISK_ERROR = 19;
constexpr int NET_DISCONNECTED = 25;
constexpr int NET_CONFLICT = 26;
constexpr int LOCAL_INPUT = 27;
constexpr int CAMERA_INPUT = 28;

template <typename Row, size_t Rows>
constexpr const Row* FindRow(const Row (&table)[Rows], const vexo_event_detail_info& event) {
    for (const Row& row : table) {
        if ((row.event_class == ANY || row.event_class == event.event_class) &&
            (row.sub_type == ANY || row.sub_type == event.sub_type))
            return &row;
    }
    return NULL;
}

// ---- alarm records -------------------------------------------------------------------------------------------------

using Event = vexo_event_detail_info;
using Capability = vexo_dev_capability;

// Where an alarm's channel comes from; the last argument is the channel of the event before.

uint32_t None(const Event& /*event*/, const Capability& /*capability*/, uint32_t /*kept*/) {
    return 0;
}
uint32_t Kept(const Event& /*event*/, const Capability& /*capability*/, uint32_t kept) {
    return kept;
}
uint32_t ChannelFrom1(const Event& event, const Capability& /*capability*/, uint32_t /*kept*/) {
    return event.channel + 1;
}
uint32_t InputAsIs(const Event& event, const Capability& /*capability*/, uint32_t /*kept*/) {
    return event.input;
}
uint32_t InputFrom1(const Event& event, const Capability& /*capability*/, uint32_t /*kept*/) {
    return event.input + 1;
}
uint32_t CameraInputFrom1(const Event& event, const Capability& capability, uint32_t /*kept*/) {
    return event.input + capability.total_channels + 1 - capability.analog_channels;
}

/** An alarm type that says: as the event before had it. */
constexpr uint32_t KEPT_TYPE = UINT32_MAX;

struct AlarmRow {
    int event_class;
    int sub_type;
    uint32_t dwAlarmType;
    uint32_t (*channel)(const Event& event, const Capability& capability, uint32_t kept);
};

// The numbers of the two tables differ, and must: agents know each list by its own.
constexpr AlarmRow ALARM_ROWS[] = {
    {PICTURE, MOTION, HOSTMGR_ALARM_MOTION, ChannelFrom1},
    {PICTURE, VIDEO_LOSS, HOSTMGR_ALARM_VIDEO_LOSS, ChannelFrom1},
    {PICTURE, SHELTER, HOSTMGR_ALARM_SHELTER, ChannelFrom1},
    {PICTURE, ANY, KEPT_TYPE, ChannelFrom1},
    {DISK, DISK_FULL, HOSTMGR_ALARM_DISK_FULL, InputAsIs},
    {DISK, DISK_ERROR, HOSTMGR_ALARM_DISK_ERROR, InputAsIs},
    {DISK, ANY, KEPT_TYPE, None},
    {NETWORK, NET_DISCONNECTED, HOSTMGR_ALARM_NET_DISCONNECTED, None},
    {NETWORK, NET_CONFLICT, HOSTMGR_ALARM_NET_CONFLICT, None},
    {NETWORK, ANY, KEPT_TYPE, None},
    {INPUT, LOCAL_INPUT, HOSTMGR_ALARM_INPUT, InputFrom1},
    {INPUT, CAMERA_INPUT, HOSTMGR_ALARM_INPUT, CameraInputFrom1},
    {INPUT, ANY, HOSTMGR_ALARM_INPUT, Kept},
    {ANY, ANY, KEPT_TYPE, None},
};

// ---- status entries ------------------------------------------------------------------------------------------------

struct StatusRow {
    int event_class;
    int sub_type;
    uint8_t byType;
    unsigned int Event::*number;  // whose low 16 bits are the entry's channel; null: the entry stays zero
};

constexpr StatusRow STATUS_ROWS[] = {
    {PICTURE, MOTION, HOSTMGR_ALARM_STATUS_MOTION, &Event::channel},
    {PICTURE, VIDEO_LOSS, HOSTMGR_ALARM_STATUS_VIDEO_LOSS, &Event::channel},
    {PICTURE, SHELTER, HOSTMGR_ALARM_STATUS_SHELTER, &Event::channel},
    {PICTURE, ANY, HOSTMGR_ALARM_STATUS_OTHER, &Event::channel},
    {DISK, DISK_FULL, HOSTMGR_ALARM_STATUS_DISK_FULL, &Event::input},
    {DISK, DISK_ERROR, HOSTMGR_ALARM_STATUS_DISK_ERROR, &Event::input},
    {DISK, ANY, HOSTMGR_ALARM_STATUS_OTHER, NULL},
    {INPUT, ANY, HOSTMGR_ALARM_STATUS_OTHER, &Event::input},
    {ANY, ANY, HOSTMGR_ALARM_STATUS_OTHER, NULL},
};

// Such an input ends the list, and what follows it is not shown: agents have always had it so.
bool EndsStatusList(const Event& event) {
    return event.event_class == INPUT && event.sub_type == CAMERA_INPUT && event.channel == 0;
}

}  // namespace

void HostMgrEventToAlarm(const vexo_event_detail_info& event, const vexo_dev_capability& capability,
                         _tagVexoHostMgrAlarmInfo* alarm) {
    const AlarmRow* row = FindRow(ALARM_ROWS, event);
    if (row->dwAlarmType != KEPT_TYPE)
        alarm->dwAlarmType = row->dwAlarmType;
    alarm->dwChannel = row->channel(event, capability, alarm->dwChannel);
    alarm->dwState = 1;
}

bool HostMgrEventToStatus(const vexo_event_detail_info& event, _tagVexoHostMgrALarmStatusInfo* status) {
    if (EndsStatusList(event))
        return false;
    const StatusRow* row = FindRow(STATUS_ROWS, event);
    if (row->number == NULL)
        return true;
    status->byType = row->byType;
    status->byState = 1;
    status->wChannel = static_cast<uint16_t>(event.*row->number);
    return true;
}
