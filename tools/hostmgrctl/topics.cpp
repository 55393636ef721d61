#include "topic.h"

namespace hostmgrctl {

const std::vector<Topic>& Topics() {
    static const std::vector<Topic> topics = {VERSION_TOPIC, LOGIN_TOPIC, LIVE_TOPIC,
                                              FILES_TOPIC,   PLAY_TOPIC,  DOWNLOAD_TOPIC};
    return topics;
}

}  // namespace hostmgrctl
