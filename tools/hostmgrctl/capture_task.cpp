#include "capture_task.h"

#include "arrivals.h"
#include "exit_code.h"
#include "local_time.h"
#include "safe_text.h"

namespace hostmgrctl {
namespace {

constexpr CaptureKind KINDS[] = {
    {HOSTMGR_CAPTURE_ALARM, "alarm"},
    {HOSTMGR_CAPTURE_DAILY, "daily"},
    {HOSTMGR_CAPTURE_SECOND, "second"},
};

// Never destroyed: a callback that is under way when its task is stopped goes on to its end.
Arrivals<Picture>& Pictures() {
    static auto& pictures = *new Arrivals<Picture>;
    return pictures;
}

void Take(int /*handle*/, _tagVexoCapturePictureInfo* info, void* /*user*/) {
    Pictures().Put({static_cast<unsigned>(info->lChannel), static_cast<unsigned>(info->lStreamIdx), info->dwType,
                    info->dwPicIndex, FromCalendarTime(info->struTriggerTime), FromCalendarTime(info->struCaptureTime),
                    info->dwPicSize, FieldText(info->sPicPath, sizeof(info->sPicPath))});
}

}  // namespace

std::string CaptureKindName(unsigned type) {
    for (const CaptureKind& kind : KINDS) {
        if (kind.type == type) {
            return kind.name;
        }
    }
    return "kind " + std::to_string(type);
}

CaptureTask::CaptureTask(int login, unsigned channel, unsigned stream, _tagVexoCapturePictureCfg setup)
    : m_channel(channel),
      m_type(setup.dwType),
      m_handle(vexo_soft::vexo_HostMgr_Dev_StartCapturePicture(login, static_cast<int>(channel),
                                                               static_cast<int>(stream), &setup, Take, nullptr)) {
    if (m_handle == -1) {
        throw Failure(ExitCode::Refused, "the recorder takes no further capture task for channel " +
                                             std::to_string(channel) + ": " +
                                             std::to_string(HOSTMGR_MAX_CAPTURE_TASKS) + " are possible");
    }
}

CaptureTask::~CaptureTask() {
    vexo_soft::vexo_HostMgr_Dev_StopCapturePicture(m_handle);
}

void CaptureTask::Trigger() {
    vexo_soft::vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(m_handle, Take, nullptr);
}

std::optional<Picture> CaptureTask::Next(std::chrono::milliseconds patience) {
    return Pictures().Next(patience);
}

}  // namespace hostmgrctl
