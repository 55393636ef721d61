// What a command is: one topic a source file, listed in topics.cpp and dispatched by main.cpp. Options that several
// topics share stand in agent.h.
#ifndef HOSTMGRCTL_TOPIC_H
#define HOSTMGRCTL_TOPIC_H

#include <CLI/CLI.hpp>
#include <functional>
#include <vector>

#include "exit_code.h"

namespace hostmgrctl {

/** Runs a command after its arguments have been read; may throw Failure. */
using Action = std::function<ExitCode()>;

struct Topic {
    const char* name;
    const char* purpose;       ///< one line for the list, and the head of the topic's own help
    const char* functions;     ///< the exported functions that it exercises, in lines of their own
    const char* examples;      ///< command lines, each with what it does, in lines of their own
    Action (*add)(CLI::App&);  ///< adds the options; the action owns what they were read into
};

/** All topics, in the order of the list. */
const std::vector<Topic>& Topics();

// One a source file.
extern const Topic VERSION_TOPIC;
extern const Topic LOGIN_TOPIC;
extern const Topic LIVE_TOPIC;
extern const Topic ZERO_TOPIC;
extern const Topic FILES_TOPIC;
extern const Topic PLAY_TOPIC;
extern const Topic DOWNLOAD_TOPIC;
extern const Topic SNAPSHOT_TOPIC;
extern const Topic CAPTURE_TOPIC;
extern const Topic TALK_TOPIC;
extern const Topic ALARMS_TOPIC;
extern const Topic ALARM_STATUS_TOPIC;
extern const Topic PTZ_TOPIC;
extern const Topic RECORD_TOPIC;
extern const Topic CONFIG_TOPIC;
extern const Topic FACTORY_TOPIC;
extern const Topic DOC_TOPIC;
extern const Topic DIAGNOSE_TOPIC;
extern const Topic LOG_TOPIC;
extern const Topic REBOOT_TOPIC;
extern const Topic POWEROFF_TOPIC;
extern const Topic RESTORE_TOPIC;

}  // namespace hostmgrctl

#endif
