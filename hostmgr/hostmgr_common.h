// What the library's modules share: console messages, assertions, lock scopes, use counts, calendar time, bounded
// copies. Nothing here knows a module, the login table or an exported function.
#ifndef HOSTMGR_COMMON_H
#define HOSTMGR_COMMON_H

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <atomic>

#include "hostmgr_dev.h"
#include "vexo_types.h"
#include "vexo_utility.h"

// ---- console messages ----------------------------------------------------------------------------------------------

/** Where a message comes from: the function's unqualified name and the source line. */
struct HostMgrSite {
    const char* function;
    int line;
};
#define HOSTMGR_HERE       \
    HostMgrSite {          \
        __func__, __LINE__ \
    }

/** A level: its colour sequence and its prefix, a format for the function name and the line. */
struct HostMgrLevel {
    const char* colour;
    const char* prefix;
};
extern const HostMgrLevel HOSTMGR_LEVEL_ERROR;
extern const HostMgrLevel HOSTMGR_LEVEL_WARNING;
extern const HostMgrLevel HOSTMGR_LEVEL_DEBUG;

/**
 * Writes one message to standard output: colour, prefix, text, reset. A fixed text gets a newline from puts; a
 * formatted one brings its own, or has none. The four writes of a message stay together when threads log at once.
 */
void HostMgrPuts(const HostMgrLevel& level, const HostMgrSite& site, const char* text);
void HostMgrPrintf(const HostMgrLevel& level, const HostMgrSite& site, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Level is ERROR, WARNING or DEBUG. The message names the function that the macro stands in: not for a lambda.
#define HOSTMGR_PUTS(level, text) HostMgrPuts(HOSTMGR_LEVEL_##level, HOSTMGR_HERE, text)
#define HOSTMGR_PRINTF(level, ...) HostMgrPrintf(HOSTMGR_LEVEL_##level, HOSTMGR_HERE, __VA_ARGS__)

/** Prints the failed condition and ends the process with exit(-1). */
[[noreturn]] void HostMgrAssertFailed(const char* file, const HostMgrSite& site, const char* condition);

/** The condition is printed as it is written here, so its wording is part of the message. */
#define HOSTMGR_ASSERT(file, condition)                          \
    do {                                                         \
        if (!(condition))                                        \
            HostMgrAssertFailed(file, HOSTMGR_HERE, #condition); \
    } while (0)

/** As HOSTMGR_ASSERT, for the two assertions whose line number is a fixed part of the message. */
#define HOSTMGR_ASSERT_AT(file, fixedLine, condition)                                \
    do {                                                                             \
        if (!(condition))                                                            \
            HostMgrAssertFailed(file, HostMgrSite{__func__, fixedLine}, #condition); \
    } while (0)

// ---- locks ---------------------------------------------------------------------------------------------------------
//
// Order: the init mutex, the singleton mutex, the table lock, one module's lock, and within talkback its state lock
// before its play lock. A leaf lock comes last and is never held across a platform call or a callback.

/** Holds a plain lock for a scope. file and function have static storage: the platform keeps them for its diagnostics.
 */
class VEXO_SCOPED_CAPABILITY HostMgrLockScope {
public:
    HostMgrLockScope(vexo_lock* lock, const char* file, const char* function) VEXO_ACQUIRE(lock)
        : m_lock(lock), m_file(file), m_function(function) {
        m_lock->lock(m_file, m_function);
    }
    ~HostMgrLockScope() VEXO_RELEASE() { m_lock->unlock(m_file, m_function); }
    HostMgrLockScope(const HostMgrLockScope&) = delete;
    HostMgrLockScope& operator=(const HostMgrLockScope&) = delete;

private:
    vexo_lock* const m_lock;
    const char* const m_file;
    const char* const m_function;
};

/** Holds a read/write lock for change for a scope. */
class VEXO_SCOPED_CAPABILITY HostMgrChangeScope {
public:
    HostMgrChangeScope(vexo_rw_lock* lock, const char* file, const char* function) VEXO_ACQUIRE(lock)
        : m_lock(lock), m_file(file), m_function(function) {
        m_lock->wr_lock(m_file, m_function);
    }
    ~HostMgrChangeScope() VEXO_RELEASE() { Unlock(); }
    HostMgrChangeScope(const HostMgrChangeScope&) = delete;
    HostMgrChangeScope& operator=(const HostMgrChangeScope&) = delete;

    /** Ends the scope early and gives the lock's own answer; 0 when there is nothing left to unlock. */
    int Unlock() VEXO_RELEASE() {
        vexo_rw_lock* lock = m_lock;
        m_lock = NULL;
        return lock != NULL ? lock->unlock(m_file, m_function) : 0;
    }

private:
    vexo_rw_lock* m_lock;
    const char* const m_file;
    const char* const m_function;
};

/** A lock of the library's own for a few words that threads read without a platform lock. */
class VEXO_CAPABILITY("leaf lock") HostMgrLeafLock {
public:
    void Lock() VEXO_ACQUIRE() { pthread_mutex_lock(&m_mutex); }
    void Unlock() VEXO_RELEASE() { pthread_mutex_unlock(&m_mutex); }

private:
    friend class HostMgrLeafCondition;
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
};

/** Waits for a change of what a leaf lock guards. Wait gives the lock back meanwhile, and may return for no reason. */
class HostMgrLeafCondition {
public:
    void Wait(HostMgrLeafLock& lock) VEXO_REQUIRES(lock) { pthread_cond_wait(&m_condition, &lock.m_mutex); }
    void WakeAll() { pthread_cond_broadcast(&m_condition); }

private:
    pthread_cond_t m_condition = PTHREAD_COND_INITIALIZER;
};

class VEXO_SCOPED_CAPABILITY HostMgrLeafScope {
public:
    explicit HostMgrLeafScope(HostMgrLeafLock& lock) VEXO_ACQUIRE(lock) : m_lock(lock) { m_lock.Lock(); }
    ~HostMgrLeafScope() VEXO_RELEASE() { m_lock.Unlock(); }
    HostMgrLeafScope(const HostMgrLeafScope&) = delete;
    HostMgrLeafScope& operator=(const HostMgrLeafScope&) = delete;

private:
    HostMgrLeafLock& m_lock;
};

/**
 * What a module's dump prints instead of its state when the lock is busy: a dump never waits. The format takes the text
 * that the lock says of itself.
 */
template <typename Lock>
void HostMgrPrintLockInfo(Lock* lock, const char* format, vexo_print_func print) {
    char info[256] = {0};
    lock->get_info(info, sizeof(info));
    info[sizeof(info) - 1] = '\0';
    print(format, info);
}
constexpr char HOSTMGR_DUMP_BUSY[] = "rd_trylock fail, lock info is '%s'\n";

// ---- use counts ----------------------------------------------------------------------------------------------------

/** Counts who holds a module object: the login table, and every call, alarm pass or dump that found it there. */
class HostMgrUseCount {
public:
    void Take() { m_count.fetch_add(1, std::memory_order_relaxed); }
    /** True for the last who lets go. */
    bool Drop() { return m_count.fetch_sub(1, std::memory_order_acq_rel) == 1; }

private:
    std::atomic<unsigned int> m_count{1};
};

/** Lets go of a module object; the last to do so destroys it. Null is ignored. */
template <typename Module>
void HostMgrDrop(Module* module) {
    if (module != NULL && module->m_use.Drop())
        delete module;
}

/** Keeps a module object alive for a scope; empty when there was none. */
template <typename Module>
class HostMgrUse {
public:
    /** Takes over one count that the maker has already taken. */
    explicit HostMgrUse(Module* module) : m_module(module) {}
    HostMgrUse(HostMgrUse&& other) noexcept : m_module(other.m_module) { other.m_module = NULL; }
    HostMgrUse(const HostMgrUse&) = delete;
    HostMgrUse& operator=(const HostMgrUse&) = delete;
    HostMgrUse& operator=(HostMgrUse&&) = delete;
    ~HostMgrUse() { HostMgrDrop(m_module); }

    Module* Get() const { return m_module; }

private:
    Module* m_module;
};

// ---- handles, copies, frames ---------------------------------------------------------------------------------------

/** The login number that a module-made handle carries in its low 16 bits. */
constexpr int HostMgrLoginOfHandle(int handle) {
    return static_cast<int>(static_cast<uint32_t>(handle) & 0xFFFF);
}

/** Copies a NUL-terminated text into a field, cut to fit and terminated; the rest of the field is zeroed. */
template <size_t Size>
void HostMgrCopyText(char (&field)[Size], const char* text) {
    const size_t length = strnlen(text, Size - 1);
    memcpy(field, text, length);
    memset(field + length, 0, Size - length);
}

/** A record from a caller, who may have given less than all of it: what is missing reads as zero. */
template <typename Record>
Record HostMgrReadRecord(const void* buffer, unsigned int length) {
    Record record = {};
    memcpy(&record, buffer, length < sizeof(record) ? length : sizeof(record));
    return record;
}

/** The header in front of a frame of the recorder, wherever the frame stands in memory. */
inline vexo_frame_header HostMgrFrameHeader(const unsigned char* frame) {
    vexo_frame_header header;
    memcpy(&header, frame, sizeof(header));
    return header;
}

// ---- calendar time -------------------------------------------------------------------------------------------------

// The library works on the first six words of the caller-visible time: full year, month from 1, day, hour, minute,
// second, local. The seventh word is the caller's and is neither read nor written here.

/** Field by field; each value keeps its low 16 bits. */
void HostMgrHostToVexoTime(const _tagVexoHostMgrTime* hostTime, vexo_time_struct* vexoTime);

/** Seconds since 1970 to local time; all zero when there is no such local time. */
void HostMgrSecondsToHostTime(time_t seconds, _tagVexoHostMgrTime* hostTime);

/**
 * Local time to seconds since 1970. What the six fields do not say, such as whether summer time holds, is taken from
 * the instant that *seconds holds on entry. Callers start from 0, so in a zone with summer time a summer time of day
 * comes out as if winter time held: an hour late. Agents have always seen it so; it stays.
 */
void HostMgrHostTimeToSeconds(const _tagVexoHostMgrTime* hostTime, time_t* seconds);

/** 1 when left is the earlier, 0 when equal, -1 when left is the later; 2 when either is null. */
int HostMgrCompareHostTime(const _tagVexoHostMgrTime* lhostTime, const _tagVexoHostMgrTime* rhostTime);

/** Prints the wall clock as seconds and milliseconds. */
void HostMgrPrintfCurTime();

/** Where a check of a user's rights belongs; grants every request: 0. */
int HostMgrCheckUserAuthority(int hLogin, unsigned int dwRight, unsigned int dwChannel);

#endif
