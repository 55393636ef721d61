#include "alarm_feed.h"

#include <hostmgr_dev.h>

#include <algorithm>
#include <cstring>

#include "arrivals.h"
#include "control.h"
#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr int ALL_CHANNELS = 0;
constexpr int STREAM = HOSTMGR_STREAM_MAIN;  // handed back to the callback, no more

// Never destroyed: a callback that is under way when the subscription ends goes on to its end.
Arrivals<AlarmReport>& Reports() {
    static auto& reports = *new Arrivals<AlarmReport>;
    return reports;
}

void Receive(int /*login*/, int /*channel*/, int /*stream*/, unsigned /*type*/, unsigned char* buffer, unsigned size,
             void* /*user*/) {
    _tagVexoHostMgrAlarmInfo info = {};
    memcpy(&info, buffer, std::min<size_t>(size, sizeof(info)));
    Reports().Put({std::chrono::steady_clock::now(), time(nullptr), info.dwAlarmType, info.dwChannel, info.dwState});
}

}  // namespace

AlarmFeed::AlarmFeed(int login) : m_login(login) {
    if (vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(login, ALL_CHANNELS, STREAM, Receive, nullptr) != 0) {
        throw Failure(ExitCode::Refused, "the alarms could not be subscribed to");
    }
    SwitchAlarmUpload(login, true);
}

AlarmFeed::~AlarmFeed() {
    SwitchAlarmUpload(m_login, false);
    vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(m_login, ALL_CHANNELS, STREAM, nullptr, nullptr);
}

std::optional<AlarmReport> AlarmFeed::Next(std::chrono::milliseconds patience) {
    return Reports().Next(patience);
}

}  // namespace hostmgrctl
