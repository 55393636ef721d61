#include "logins.h"

#include <cstring>

#include "copy_text.h"
#include "core/device.h"
#include "core/faults.h"
#include "core/power.h"
#include "core/watch.h"
#include "live_recorder.h"
#include "log.h"
#include "vexo_model.h"

namespace simulator {

const UserSettings* FindUser(const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    for (const UserSettings& user : TheScenario().users) {
        if (user.name == name) {
            return &user;
        }
    }
    return nullptr;
}

Logins& Logins::Get() {
    static Logins& logins = *new Logins;
    return logins;
}

unsigned Logins::Add(const std::string& user, const std::string& address) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_users.size() >= MOST_LOGINS) {
        return 0;
    }
    do {
        m_last = m_last % 65535 + 1;
    } while (m_users.count(m_last) != 0);
    m_users[m_last] = user;
    m_ended.erase(m_last);
    Take(Goods::Login, m_last, "login " + std::to_string(m_last) + " of " + user + " from " + address);
    return m_last;
}

std::optional<std::string> Logins::Remove(unsigned id) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto* table = m_users.count(id) != 0 ? &m_users : &m_ended;
    const auto found = table->find(id);
    if (found == table->end()) {
        return std::nullopt;
    }
    if (table == &m_users) {
        GiveBack(Goods::Login, id, "vexo_model_logout");
    }
    std::string user = std::move(found->second);
    table->erase(found);
    return user;
}

std::optional<std::string> Logins::UserOf(unsigned id) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_users.find(id);
    return found != m_users.end() ? std::optional(found->second) : std::nullopt;
}

void Logins::EndAll() {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& [id, user] : m_users) {
        GiveBack(Goods::Login, id, "the recorder");
        m_ended[id] = user;
    }
    m_users.clear();
}

namespace {

[[maybe_unused]] const bool known = OnPowerLoss([] { Logins::Get().EndAll(); });

std::string AddressOf(const vexo_ip_struct* ip) {
    return ip != nullptr ? std::string(ip->text, strnlen(ip->text, sizeof(ip->text))) : "-";
}

int LogIn(const char* name, const char* password, const vexo_ip_struct* ip, unsigned int* id) {
    const UserSettings* user = FindUser(name);
    if (user == nullptr || password == nullptr || id == nullptr || user->password != password) {
        return -1;
    }
    const std::string address = AddressOf(ip);
    const unsigned login = Logins::Get().Add(user->name, address);
    if (login == 0) {
        return -1;
    }
    *id = login;
    if (TheScenario().recordings.live == LiveRecording::Always) {
        WakeLiveRecorder();
    }
    Log(static_cast<int>(login), LogType::Login, user->name, user->name + " logged in from " + address);
    return 0;
}

}  // namespace
}  // namespace simulator

int vexo_model_get_usr_info_byname(const char* name, vexo_dev_usr_info* info) {
    if (simulator::ShallFail(__func__) || info == nullptr) {
        return -1;
    }
    const simulator::UserSettings* user = simulator::FindUser(name);
    if (user == nullptr) {
        return -1;
    }
    *info = {};
    simulator::CopyText(user->name, info->usr_name);
    simulator::CopyText(user->password, info->usr_password);
    info->usr_id = static_cast<unsigned>(user - simulator::TheScenario().users.data() + 1);
    return 0;
}

int vexo_model_login(const char* user, const char* password, const vexo_ip_struct* ip, unsigned int* id, VEXO_BOOL,
                     VEXO_BOOL) {
    return simulator::ShallFail(__func__) ? -1 : simulator::LogIn(user, password, ip, id);
}

int vexo_model_remote_login(const char* user, const char* password, const vexo_ip_struct* ip, unsigned int* id,
                            VEXO_BOOL, char*, char*) {
    return simulator::ShallFail(__func__) ? -1 : simulator::LogIn(user, password, ip, id);
}

int vexo_model_logout(unsigned int id, VEXO_BOOL) {
    if (simulator::ShallFail(__func__)) {
        return -1;
    }
    const auto user = simulator::Logins::Get().Remove(id);
    if (!user) {
        return -1;
    }
    simulator::Log(static_cast<int>(id), simulator::LogType::Logout, *user, *user + " logged out");
    return 0;
}

int vexo_model_get_usr_authority(const char* user, vexo_dev_usr_authority* authority) {
    if (simulator::ShallFail(__func__) || authority == nullptr) {
        return -1;
    }
    const simulator::UserSettings* found = simulator::FindUser(user);
    if (found == nullptr) {
        return -1;
    }
    *authority = simulator::AuthorityOf(*found);
    return 0;
}
