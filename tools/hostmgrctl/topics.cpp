#include "topic.h"

namespace hostmgrctl {

const std::vector<Topic>& Topics() {
    static const std::vector<Topic> topics = {
        VERSION_TOPIC,       //
        LOGIN_TOPIC,         //
        LIVE_TOPIC,          //
        ZERO_TOPIC,          //
        FILES_TOPIC,         //
        PLAY_TOPIC,          //
        DOWNLOAD_TOPIC,      //
        SNAPSHOT_TOPIC,      //
        CAPTURE_TOPIC,       //
        TALK_TOPIC,          //
        ALARMS_TOPIC,        //
        ALARM_STATUS_TOPIC,  //
        PTZ_TOPIC,           //
        RECORD_TOPIC,        //
        CONFIG_TOPIC,        //
        FACTORY_TOPIC,       //
        DOC_TOPIC,           //
        DIAGNOSE_TOPIC,      //
        LOG_TOPIC,           //
        REBOOT_TOPIC,        //
        POWEROFF_TOPIC,      //
        RESTORE_TOPIC,       //
    };
    return topics;
}

}  // namespace hostmgrctl
