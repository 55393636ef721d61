#include "alarm_name.h"

#include <algorithm>
#include <iterator>

namespace hostmgrctl {
namespace {

struct Row {
    unsigned type;
    unsigned first;  ///< what is to be added to the recorder's number for counting from 1
    const char* name;
    const char* place;
};

constexpr Row SENT[] = {
    {HOSTMGR_ALARM_MOTION, 0, "motion", "channel"},          {HOSTMGR_ALARM_INPUT, 0, "input", "input"},
    {HOSTMGR_ALARM_SHELTER, 0, "shelter", "channel"},        {HOSTMGR_ALARM_VIDEO_LOSS, 0, "video loss", "channel"},
    {HOSTMGR_ALARM_DISK_FULL, 0, "disk full", "disk"},       {HOSTMGR_ALARM_DISK_ERROR, 0, "disk error", "disk"},
    {HOSTMGR_ALARM_NET_DISCONNECTED, 0, "network lost", ""}, {HOSTMGR_ALARM_NET_CONFLICT, 0, "address conflict", ""},
};

constexpr Row STATUS[] = {
    {HOSTMGR_ALARM_STATUS_OTHER, 0, "other", "number"},
    {HOSTMGR_ALARM_STATUS_DISK_FULL, 0, "disk full", "disk"},
    {HOSTMGR_ALARM_STATUS_MOTION, 1, "motion", "channel"},
    {HOSTMGR_ALARM_STATUS_DISK_ERROR, 0, "disk error", "disk"},
    {HOSTMGR_ALARM_STATUS_VIDEO_LOSS, 1, "video loss", "channel"},
    {HOSTMGR_ALARM_STATUS_SHELTER, 1, "shelter", "channel"},
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
