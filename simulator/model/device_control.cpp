// The platform's device control: camera heads, record modes, reboot, power-off, factory restore.
#include <ctime>

#include "core/faults.h"
#include "core/kept.h"
#include "core/panel.h"
#include "core/power.h"
#include "log.h"
#include "logins.h"
#include "ptz.h"
#include "record_mode.h"
#include "vexo_model.h"

namespace simulator {
namespace {

/** What the recorder remembers of its last interruptions: power.json. */
void NoteInterruption(const std::string& what, const std::string& user) {
    nlohmann::json document = ReadKept("power");
    const nlohmann::json& times = document[what]["times"];
    document[what] = {{"times", (times.is_number_unsigned() ? times.get<unsigned>() : 0U) + 1},
                      {"last", time(nullptr)},
                      {"by", user}};
    Keep("power", document);
}

/** Logs and notes before it is done: the login that asked for it may end by it. */
bool Announce(unsigned id, LogType type, const std::string& what, const std::string& text) {
    const auto user = Logins::Get().UserOf(id);
    if (user) {
        NoteInterruption(what, *user);
        Log(static_cast<int>(id), type, *user, text + " by " + *user);
    }
    return user.has_value();
}

[[maybe_unused]] const bool known = AddPanelPart("interruptions", [] { return ReadKept("power"); });

int Answer(bool done) {
    return done ? 0 : -1;
}

bool LoggedIn(unsigned id) {
    return Logins::Get().UserOf(id).has_value();
}

}  // namespace
}  // namespace simulator

using namespace simulator;  // the operations alone follow

int vexo_model_send_ptz_cmd(unsigned int id, unsigned int channel, unsigned int code,
                            const vexo_ipc_ptz_ctrl_para* para) {
    return Answer(!ShallFail(__func__) && LoggedIn(id) && para != nullptr && DriveHead(channel, code, *para));
}

int vexo_model_reboot(unsigned int id, VEXO_BOOL) {
    if (ShallFail(__func__) || !Announce(id, LogType::Power, "reboot", "rebooted")) {
        return -1;
    }
    Reboot();
    return 0;
}

int vexo_model_poweroff(unsigned int id) {
    if (ShallFail(__func__) || !Announce(id, LogType::Power, "poweroff", "switched off")) {
        return -1;
    }
    PowerOff();
    return 0;
}

int vexo_model_restore_factory(unsigned int id, unsigned int parts) {
    if (ShallFail(__func__) || !Announce(id, LogType::Restore, "restore", "factory settings restored")) {
        return -1;
    }
    Restore(parts);
    return 0;
}

int vexo_model_set_record_mode(unsigned int id, unsigned int channel, unsigned int mode) {
    return Answer(!ShallFail(__func__) && LoggedIn(id) && mode <= static_cast<unsigned>(RecordMode::Always) &&
                  SetRecordMode(channel, static_cast<RecordMode>(mode)));
}

int vexo_model_set_record_manual_enable(unsigned int id, unsigned int channel, VEXO_BOOL enable) {
    return Answer(!ShallFail(__func__) && LoggedIn(id) && SetManualRecording(channel, enable != VEXO_FALSE));
}
