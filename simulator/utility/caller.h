// Who is calling: the identity and name of the calling thread, as the locks and the watch tell them to a person.
#ifndef SIMULATOR_UTILITY_CALLER_H
#define SIMULATOR_UTILITY_CALLER_H

#include <string>

namespace simulator {

struct Caller {
    unsigned long serial;  ///< never used twice in a process, unlike the kernel's thread number
    int thread;            ///< the kernel's thread number
    char name[16];
};

/** The calling thread; its name is the one that it had at its first call. */
const Caller& ThisCaller();

/** "thread 1234 (HostMgrTalk_Thr)". */
std::string Describe(const Caller& caller);

/** "vexo_hostmgr_lv, HostMgr_Dev_ReadRealOneFrame"; null pointers show as "-". */
std::string Place(const char* file, const char* function);

}  // namespace simulator

#endif
