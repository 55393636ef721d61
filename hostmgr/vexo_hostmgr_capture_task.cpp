// What the worker of a login's picture capture does: the directory of pictures, timed capture, alarm capture.
#include "vexo_hostmgr_capture.h"
#include "vexo_model.h"

static const char FILE_TAG[] = "vexo_hostmgr_capture";
static const char THREAD_NAME[] = "HostMgrCapturePictureTask_Thread";

constexpr unsigned int PASS_MS = 1000;
constexpr unsigned int LOCK_RETRY_MS = 10;

// ---- worker --------------------------------------------------------------------------------------------------------

void* vexo_hostmgr_capture::HostMgrCapturePictureTask_Thread(void* argument) {
    const unsigned long self = (unsigned long)pthread_self();
    vexo_utility_enter_thread(self, THREAD_NAME);
    static_cast<vexo_hostmgr_capture*>(argument)->HostMgrCapturePictureTask();
    vexo_utility_exit_thread(self);
    return NULL;
}

void vexo_hostmgr_capture::HostMgrCapturePictureTask() {
    while (bStop == 0) {
        if (bNeedDir == 1)
            HostMgrPrepareCaptureDir();
        for (uint32_t index = 0; index < HOSTMGR_CAPTURE_TASK_SLOTS; ++index) {
            if (!LockForReading(__func__))
                break;
            HostMgrCaptureTask* task = &m_capture_info[index];
            if (task->hCapture != 0 && task->struCfg.dwType != HOSTMGR_CAPTURE_ALARM)
                HostMgrDoOnTimeCapture(task);
            else if (task->hCapture != 0)
                HostMgrDoAlarmCapture(task);
            m_lock->unlock(FILE_TAG, __func__);
        }
        vexo_utility_sleep_ms(PASS_MS);
    }
}

/** Takes the lock as a reader. The lock only offers to try; false when the worker is to end before it was free. */
bool vexo_hostmgr_capture::LockForReading(const char* function) {
    while (bStop == 0) {
        if (m_lock->rd_trylock(FILE_TAG, function) == 0)
            return true;
        vexo_utility_sleep_ms(LOCK_RETRY_MS);
    }
    return false;
}

// ---- directory -----------------------------------------------------------------------------------------------------

constexpr unsigned int PARTITION_MIN_MB = 1024;
constexpr unsigned int DISK_LOCAL = 1;
constexpr unsigned int DISK_EXTERNAL = 2;
constexpr unsigned int DISK_ARRAY = 4;

static bool IsCaptureDisk(const vexo_hard_disk_info& disk) {
    const unsigned int type = disk.identity.type;
    return (type == DISK_LOCAL || type == DISK_EXTERNAL || type == DISK_ARRAY) && disk.state == VEXO_DISK_STATE_NORMAL;
}

/** The picture directory on a disk's first partition that is large enough. False when there is none, and when the path
 *  does not fit: it is never cut. */
template <size_t Size>
static bool DirectoryOnDisk(const vexo_hard_disk_info& disk, char (&directory)[Size]) {
    constexpr unsigned int PARTITIONS = sizeof(disk.partition) / sizeof(disk.partition[0]);
    for (unsigned int index = 0; index < disk.partition_num && index < PARTITIONS; ++index) {
        if (disk.partition[index].size < PARTITION_MIN_MB)
            continue;
        char path[Size];
        const int length =
            snprintf(path, Size, "%.*s/host_pic/agentsh_capture",
                     static_cast<int>(sizeof(disk.partition[index].mount_path)), disk.partition[index].mount_path);
        if (length < 0 || static_cast<size_t>(length) >= Size)
            return false;
        HostMgrCopyText(directory, path);
        return true;
    }
    return false;
}

/** The last disk that offers a directory wins. */
template <size_t Size>
static bool FindDirectory(char (&directory)[Size]) {
    unsigned int disks = 0;
    if (vexo_model_get_hard_disk_num(&disks) != 0)
        return false;
    bool found = false;
    for (unsigned int index = 0; index < disks; ++index) {
        vexo_hard_disk_info disk = {};
        if (vexo_model_get_hard_disk_info(index, &disk) == 0 && IsCaptureDisk(disk) && DirectoryOnDisk(disk, directory))
            found = true;
    }
    return found;
}

// What an earlier run left there goes: nobody knows of those pictures any more.
int vexo_hostmgr_capture::HostMgrPrepareCaptureDir() {
    char directory[sizeof(sCaptureDir)];
    if (!FindDirectory(directory))
        return -1;
    if (vexo_utility_is_file_exist(directory))
        vexo_utility_delete_dir(directory);
    vexo_utility_creat_dir(directory);
    HostMgrCopyText(sCaptureDir, directory);
    bNeedDir = 0;
    return 0;
}

/** Whether the directory is there; when not, the worker prepares it anew. An empty path never is. */
bool vexo_hostmgr_capture::HasCaptureDir() {
    if (vexo_utility_is_file_exist(sCaptureDir) && sCaptureDir[0] != '\0')
        return true;
    bNeedDir = 1;
    return false;
}

// ---- times and pictures --------------------------------------------------------------------------------------------

uint32_t vexo_hostmgr_capture::Now() {
    struct timeval now;
    gettimeofday(&now, NULL);
    return static_cast<uint32_t>(now.tv_sec);
}

static vexo_time_struct CalendarTime(uint32_t seconds) {
    vexo_time_struct time = {};
    vexo_utility_linux_to_vexo_time(static_cast<long>(seconds), &time);
    return time;
}

static _tagVexoHostMgrTime ToHostTime(const vexo_time_struct& time) {
    return {time.year, time.month, time.day, time.hour, time.minute, time.second, 0};
}

static unsigned int ModelChannel(const HostMgrCaptureTask& task) {
    return static_cast<unsigned int>(task.lChannel) - 1;
}

/** What is known of a task's picture before it is taken: everything but its size and the trigger. */
static _tagVexoCapturePictureInfo NewPicture(const HostMgrCaptureTask& task, const vexo_time_struct& now,
                                             const char* directory, const char* kind) {
    _tagVexoCapturePictureInfo info = {};
    info.lChannel = task.lChannel;
    info.lStreamIdx = task.lStreamIdx;
    info.dwType = task.struCfg.dwType;
    info.struCaptureTime = ToHostTime(now);
    snprintf(info.sPicPath, sizeof(info.sPicPath), "%s/%s_CH%d_%02d%02d%02d.jpg", directory, kind,
             static_cast<int>(ModelChannel(task)), now.hour, now.minute, now.second);
    return info;
}

// ---- timed capture -------------------------------------------------------------------------------------------------

constexpr unsigned int DAILY_MARGIN_S = 4;
constexpr unsigned int DAY_S = 24 * 60 * 60;

static unsigned int SecondOfDay(unsigned int hour, unsigned int minute, unsigned int second) {
    return (hour * 60 + minute) * 60 + second;
}

/** Whether now is within the margin of a packed time of day, across midnight too. A time that no day has never comes.
 */
static bool IsDailyTime(uint32_t packed, const vexo_time_struct& now) {
    const unsigned int hour = packed >> 16;
    const unsigned int minute = packed >> 8 & 0xFF;
    const unsigned int second = packed & 0xFF;
    if (hour > 23 || minute > 59 || second > 59)
        return false;
    const unsigned int daily = SecondOfDay(hour, minute, second);
    const unsigned int ahead = (daily + DAY_S - SecondOfDay(now.hour, now.minute, now.second)) % DAY_S;
    return ahead <= DAILY_MARGIN_S || DAY_S - ahead <= DAILY_MARGIN_S;
}

int vexo_hostmgr_capture::HostMgrDoOnTimeCapture(HostMgrCaptureTask* task) {
    if (task->fnCallback == NULL)
        return -1;
    const vexo_time_struct now = CalendarTime(Now());
    if (!HasCaptureDir())
        return -1;
    const uint32_t type = task->struCfg.dwType;
    if (type != HOSTMGR_CAPTURE_DAILY && type != HOSTMGR_CAPTURE_SECOND) {
        HOSTMGR_PRINTF(ERROR, "dwType:%d\n", static_cast<int>(type));
        return -1;
    }
    if (type == HOSTMGR_CAPTURE_DAILY && !IsDailyTime(task->struCfg.dwTime, now))
        return 0;
    _tagVexoCapturePictureInfo info = NewPicture(*task, now, sCaptureDir, type == HOSTMGR_CAPTURE_DAILY ? "OT" : "RT");
    info.struTriggerTime = info.struCaptureTime;
    if (vexo_model_capture(static_cast<unsigned int>(task->hLogin), ModelChannel(*task), info.sPicPath,
                           &info.dwPicSize) != 0) {
        HOSTMGR_PRINTF(ERROR, "vexo_model_capture %s failed!!\n", info.sPicPath);
        DeletePicture(info.sPicPath);
        return -1;
    }
    if (info.dwPicSize == 0) {
        HOSTMGR_PRINTF(ERROR, "capture_size %d!!\n", static_cast<int>(info.dwPicSize));
        DeletePicture(info.sPicPath);
        return -1;
    }
    if (HostMgrAddCaptureNode(task->hCapture, info) != 0) {
        HOSTMGR_PRINTF(ERROR, "HostMgrAddCaptureNode %s failed!!\n", info.sPicPath);
        DeletePicture(info.sPicPath);
        return -1;
    }
    task->fnCallback(static_cast<int>(task->hCapture), &info, task->pUser);
    return 0;
}

// ---- alarm capture -------------------------------------------------------------------------------------------------

/** Whether the task's trigger runs; one whose time is over is ended. */
static bool IsTriggered(HostMgrCaptureTask* task, uint32_t now) {
    if (!HostMgrIsCaptureTime(task->dwTriggerTime))
        return false;
    if (uint64_t{task->dwTriggerTime} + task->struCfg.dwPostTime >= now)
        return true;
    task->dwTriggerTime = HOSTMGR_CAPTURE_NO_TIME;
    task->dwPicCount = 0;
    return false;
}

/** Whether the interval since the last capture is over. A clock that was set back ends it at once. */
static bool IsDue(const HostMgrCaptureTask& task, uint32_t now) {
    const uint32_t last = task.dwLastCapture;
    return !HostMgrIsCaptureTime(last) || now < last || now - last >= task.struCfg.dwInterval / 1000;
}

// Copies: the list keeps its pictures as they were taken, for the next trigger.
void vexo_hostmgr_capture::ReportPicturesBefore(HostMgrCaptureTask* task) {
    const int64_t boundary = int64_t{task->dwTriggerTime} - task->struCfg.dwPreTime;
    const _tagVexoHostMgrTime trigger = ToHostTime(CalendarTime(task->dwTriggerTime));
    for (const HostMgrCaptureNode* node = m_capturePictureList.head; node != NULL; node = node->next) {
        if (node->hCapture != task->hCapture)
            continue;
        vexo_time_struct taken;
        HostMgrHostToVexoTime(&node->struInfo.struCaptureTime, &taken);
        if (vexo_utility_vexo_to_linux_time(&taken) < boundary)
            continue;
        _tagVexoCapturePictureInfo info = node->struInfo;
        info.dwPicIndex = task->dwPicCount++;
        info.struTriggerTime = trigger;
        task->fnCallback(static_cast<int>(task->hCapture), &info, task->pUser);
    }
}

// The recorder's answer counts by the size alone, and a picture that was not taken is kept, too, with the size 0.
void vexo_hostmgr_capture::TakeAlarmPicture(const HostMgrCaptureTask& task, _tagVexoCapturePictureInfo* info) {
    if (!HasCaptureDir())
        return;
    vexo_model_capture(static_cast<unsigned int>(task.hLogin), ModelChannel(task), info->sPicPath, &info->dwPicSize);
    if (info->dwPicSize == 0)
        DeletePicture(info->sPicPath);
    if (HostMgrAddCaptureNode(task.hCapture, *info) != 0)
        DeletePicture(info->sPicPath);
}

int vexo_hostmgr_capture::HostMgrDoAlarmCapture(HostMgrCaptureTask* task) {
    if (task->fnCallback == NULL)
        return -1;
    const uint32_t now = Now();
    const bool triggered = IsTriggered(task, now);
    if (triggered && task->dwPicCount == 0)
        ReportPicturesBefore(task);
    if (!IsDue(*task, now))
        return 0;
    task->dwLastCapture = now;
    _tagVexoCapturePictureInfo info = NewPicture(*task, CalendarTime(now), sCaptureDir, "AC");
    TakeAlarmPicture(*task, &info);
    if (!triggered) {
        task->dwPicCount = 0;
        return 0;
    }
    const vexo_time_struct trigger = CalendarTime(task->dwTriggerTime);
    HOSTMGR_PRINTF(DEBUG, "Ch[%d] Trigger Start %d %02d:%02d:%02d!!!\n", task->lChannel,
                   static_cast<int>(task->dwPicCount), trigger.hour, trigger.minute, trigger.second);
    info.dwPicIndex = task->dwPicCount++;
    info.struTriggerTime = ToHostTime(trigger);
    task->fnCallback(static_cast<int>(task->hCapture), &info, task->pUser);
    return 0;
}
