// What the tests of device control share: a login, the command with its records, the calls to the model library.
// Expectations stand in the tests.
#ifndef CONTROL_FIXTURE_H
#define CONTROL_FIXTURE_H

#include "login_fixture.h"
#include "vexo_hostmgr_control.h"

/** An address as the console shows it. */
inline std::string AddressText(const void* address) {
    char text[32];
    snprintf(text, sizeof(text), "%p", address);
    return text;
}

/** A login of the handle 0x501. */
class ControlFixture : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;

    void SetUp() override {
        LoginFixture::SetUp();
        LogInAll({LOGIN});
    }

    /** A command whose record stands in the second buffer. */
    static int Control(unsigned int command, int first, int count, void* record, unsigned int size,
                       int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_Control(hLogin, command, first, count, nullptr, 0, record, size, nullptr, 0);
    }
    /** A command without a record. */
    static int Control(unsigned int command) { return Control(command, 0, 0, nullptr, 0); }

    /** The calls that are not the login's lookup. */
    Lines Calls() { return Without(TABLE_LOCK, platform.TakeCalls()); }
};

#endif
