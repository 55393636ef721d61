#include "alarm_name.h"

#include <algorithm>
#include <iterator>

namespace hostmgrctl {
namespace {

struct Row {
    unsigned type;
    const char* name;
    const char* place;
    unsigned first;  ///< what is to be added to the recorder's number for counting from 1
};

constexpr Row SENT[] = {
    {HOSTMGR_ALARM_MOTION, "motion", "channel", 0},          {HOSTMGR_ALARM_INPUT, "input", "input", 0},
    {HOSTMGR_ALARM_SHELTER, "shelter", "channel", 0},        {HOSTMGR_ALARM_VIDEO_LOSS, "video loss", "channel", 0},
    {HOSTMGR_ALARM_DISK_FULL, "disk full", "disk", 0},       {HOSTMGR_ALARM_DISK_ERROR, "disk error", "disk", 0},
    {HOSTMGR_ALARM_NET_DISCONNECTED, "network lost", "", 0}, {HOSTMGR_ALARM_NET_CONFLICT, "address conflict", "", 0},
};

constexpr Row STATUS[] = {
    {HOSTMGR_ALARM_STATUS_OTHER, "other", "number", 0},
    {HOSTMGR_ALARM_STATUS_DISK_FULL, "disk full", "disk", 0},
    {HOSTMGR_ALARM_STATUS_MOTION, "motion", "channel", 1},
    {HOSTMGR_ALARM_STATUS_DISK_ERROR, "disk error", "disk", 0},
    {HOSTMGR_ALARM_STATUS_VIDEO_LOSS, "video loss", "channel", 1},
    {HOSTMGR_ALARM_STATUS_SHELTER, "shelter", "channel", 1},
};

template <size_t ROWS>
AlarmName NameIn(const Row (&table)[ROWS], unsigned type, unsigned number) {
    const auto* row =
        std::find_if(std::begin(table), std::end(table), [type](const Row& it) { return it.type == type; });
    if (row == std::end(table)) {
        return {"type " + std::to_string(type), "number", number};
    }
    return {row->name, row->place, number + row->first};
}

}  // namespace

AlarmName NameOfAlarm(unsigned type, unsigned number) {
    return NameIn(SENT, type, number);
}

AlarmName NameOfStatus(const _tagVexoHostMgrALarmStatusInfo& entry) {
    if (entry.byState == 0) {
        return {"not told", "", 0};
    }
    return NameIn(STATUS, entry.byType, entry.wChannel);
}

}  // namespace hostmgrctl
