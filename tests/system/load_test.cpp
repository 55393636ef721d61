// libhostmgr.so as a plug-in: loaded by a program that is not linked with it, every symbol resolved at once.
#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

using Init = void (*)();
using Login = int (*)(char*, char*, char*);
using Logout = int (*)(int);

template <typename Function>
Function Find(void* library, const char* symbol) {
    return reinterpret_cast<Function>(dlsym(library, symbol));
}

TEST(Load, Dlopen_AllSymbolsNow_LogsInAndOut) {
    void* library = dlopen(HOSTMGR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto init = Find<Init>(library, "_ZN9vexo_soft21vexo_HostMgr_Dev_initEv");
    const auto login = Find<Login>(library, "_ZN9vexo_soft22vexo_HostMgr_Dev_LoginEPcS0_S0_");
    const auto logout = Find<Logout>(library, "_ZN9vexo_soft23vexo_HostMgr_Dev_LogoutEi");
    ASSERT_TRUE(init != nullptr && login != nullptr && logout != nullptr);
    init();
    const int handle = login(nullptr, nullptr, nullptr);
    EXPECT_GE(handle, 1);
    EXPECT_EQ(logout(handle), 0);
}

// Its alarm thread runs on, so closing must leave its code where it is.
TEST(Load, Dlclose_AfterInit_StaysInMemory) {
    void* library = dlopen(HOSTMGR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    Find<Init>(library, "_ZN9vexo_soft21vexo_HostMgr_Dev_initEv")();
    ASSERT_EQ(dlclose(library), 0);
    void* again = dlopen(HOSTMGR_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(again, nullptr);
    const auto login = Find<Login>(again, "_ZN9vexo_soft22vexo_HostMgr_Dev_LoginEPcS0_S0_");
    EXPECT_GE(login(nullptr, nullptr, nullptr), 1) << "still initialised";
}

}  // namespace
