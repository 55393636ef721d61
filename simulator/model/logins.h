// Who is logged in at the recorder. Passwords are checked here, rights are only told: nobody is kept from anything yet.
#ifndef SIMULATOR_MODEL_LOGINS_H
#define SIMULATOR_MODEL_LOGINS_H

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "core/scenario.h"

namespace simulator {

/** More than that many logins at once are refused. */
constexpr size_t MOST_LOGINS = 256;

/** The scenario's user of that name, or null; names are compared to the letter. */
const UserSettings* FindUser(const char* name);

/** The table of logins; for any thread. */
class Logins {
public:
    /** The process's one. */
    static Logins& Get();

    /** A new login's id, 1 to 65535: counts up, wraps and skips what is in use. 0: the table is full. */
    unsigned Add(const std::string& user, const std::string& address);

    /** Ends a login and returns its user; nothing when there is no such login. One that EndAll has ended is there once
     *  more, to be given back. */
    std::optional<std::string> Remove(unsigned id);

    /** The user of a login that stands; nothing when there is no such login. */
    std::optional<std::string> UserOf(unsigned id);

    /** Ends every login: the recorder has lost its power. */
    void EndAll();

private:
    std::mutex m_mutex;
    std::map<unsigned, std::string> m_users;  // by login; guarded by m_mutex, as what follows
    std::map<unsigned, std::string> m_ended;  // by EndAll, and not given back since
    unsigned m_last = 0;
};

}  // namespace simulator

#endif
