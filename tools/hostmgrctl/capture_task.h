// A capture task of the library's, from start to stop, and the pictures that it brings. What is done with the pictures
// does not belong here.
#ifndef HOSTMGRCTL_CAPTURE_TASK_H
#define HOSTMGRCTL_CAPTURE_TASK_H

#include <hostmgr_dev.h>

#include <chrono>
#include <ctime>
#include <optional>
#include <string>

namespace hostmgrctl {

/** What a task takes pictures for. */
struct CaptureKind {
    HostMgrCaptureType type;
    const char* name;
};

/** "daily", "second" or "alarm"; "kind N" for another number. */
std::string CaptureKindName(unsigned type);

/** What a task reports. */
struct Picture {
    unsigned channel = 0;
    unsigned stream = 0;
    unsigned type = 0;    ///< HostMgrCaptureType
    unsigned index = 0;   ///< in its alarm, from 0
    time_t trigger = -1;  ///< when its alarm began; otherwise as taken
    time_t taken = -1;
    unsigned bytes = 0;  ///< 0: none could be taken
    std::string path;    ///< the recorder's own file, which goes with the task at the latest
};

/** For one thread; the library's callback only fills a queue. */
class CaptureTask {
public:
    /** Throws Failure when the recorder takes no further task. */
    CaptureTask(int login, unsigned channel, unsigned stream, _tagVexoCapturePictureCfg setup);
    ~CaptureTask();
    CaptureTask(const CaptureTask&) = delete;
    CaptureTask& operator=(const CaptureTask&) = delete;

    unsigned Channel() const { return m_channel; }
    bool IsOnAlarm() const { return m_type == HOSTMGR_CAPTURE_ALARM; }

    /** Tells the task that an alarm has begun. */
    void Trigger();

    /** The next picture of any task; nothing when none came in that time. */
    static std::optional<Picture> Next(std::chrono::milliseconds patience);

private:
    const unsigned m_channel;
    const unsigned m_type;
    const int m_handle;
};

}  // namespace hostmgrctl

#endif
