// What is asked of capture: its options as typed, and what they mean to the library. Running tasks does not belong
// here.
#ifndef HOSTMGRCTL_CAPTURE_OPTIONS_H
#define HOSTMGRCTL_CAPTURE_OPTIONS_H

#include <hostmgr_dev.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "agent.h"

namespace hostmgrctl {

/** As typed. */
struct CaptureOptions {
    LoginOptions login;
    std::string channels = "1";
    std::string stream = "main";
    bool second = false;
    std::string daily;
    bool alarm = false;
    unsigned before = 5;
    unsigned after = 10;
    unsigned interval = 1;
    std::string on = "motion,shelter,video-loss";
    std::vector<double> triggers;
    double seconds = 0;
    unsigned long pictures = 0;
    std::string keep;
    bool json = false;
};

void AddCaptureOptions(CLI::App& app, CaptureOptions* options);

/** A kind of alarm that --on names. */
struct AlarmKind {
    const char* name;
    std::vector<unsigned> types;  ///< HostMgrAlarmType
    bool of_channel;              ///< concerns the channel that it names; else every channel
};

struct CaptureSetup {
    std::vector<unsigned> channels;
    unsigned stream = HOSTMGR_STREAM_MAIN;
    std::vector<_tagVexoCapturePictureCfg> tasks;  ///< of each channel
    bool on_alarm = false;                         ///< one of them waits for alarms
    std::vector<const AlarmKind*> alarms;
};

/** Throws Failure with ExitCode::Usage for what cannot be understood. */
CaptureSetup Resolve(const CaptureOptions& options);

/** The kind among those asked for, or null. */
const AlarmKind* KindOfAlarm(const CaptureSetup& setup, unsigned type);

}  // namespace hostmgrctl

#endif
