// What the tests of the simulated recorder's devices share: bringing it up on a scenario of the test's own, and a
// login. Test cases do not belong here, nor does sound (see sound.h).
#ifndef TESTS_SYSTEM_DEVICE_SUPPORT_H
#define TESTS_SYSTEM_DEVICE_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "core/scenario.h"
#include "vexo_cfgm.h"
#include "vexo_model.h"
#include "vexo_utility.h"

namespace device {

/** The recorder's home folder, which is the test process's own. */
inline std::filesystem::path Home() {
    return getenv("RECORDER_HOME");
}

inline std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/** Brings the recorder up on a scenario, before its first use. */
class Recorder : public testing::Environment {
public:
    explicit Recorder(std::string scenario) : m_scenario(std::move(scenario)) {}

    void SetUp() override {
        std::ofstream(Home() / "scenario.json") << m_scenario;
        setenv("RECORDER_SCENARIO", (Home() / "scenario.json").c_str(), 1);
        ASSERT_EQ(vexo_utility_init(VEXO_UTILITY_OPS_HOST), 0);
        ASSERT_EQ(vexo_cfgm_init(), 0);
    }

private:
    const std::string m_scenario;
};

/** A login of the recorder's own user, while it stands. */
class Login {
public:
    Login() {
        const vexo_ip_struct ip = {0, "127.0.0.1"};
        EXPECT_EQ(vexo_model_login("admin", "admin12345", &ip, &m_id, VEXO_FALSE, VEXO_FALSE), 0);
    }
    ~Login() {
        if (m_id != 0) {
            vexo_model_logout(m_id, VEXO_FALSE);
        }
    }
    Login(const Login&) = delete;
    Login& operator=(const Login&) = delete;

    unsigned Id() const { return m_id; }

private:
    unsigned m_id = 0;
};

/** Sends a PTZ code. */
inline int Drive(const Login& login, unsigned channel, unsigned code, const vexo_ipc_ptz_ctrl_para& para = {}) {
    return vexo_model_send_ptz_cmd(login.Id(), channel, code, &para);
}

}  // namespace device

#endif
