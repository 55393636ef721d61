#include "platform_mock.h"

#include <stdlib.h>

using testing::_;

static void Complain(const std::string& what) {
    ADD_FAILURE() << what;
    fflush(stdout);
    abort();  // what would follow is a deadlock or worse
}

MockLockBase::MockLockBase(PlatformMock& platform, const char* name) : m_platform(platform), m_name(name) {}

void MockLockBase::Record(const char* operation, const char* file, const char* function) {
    m_platform.Record(std::string(operation) + "(" + m_name + ", " + file + ", " + function + ")");
}

void MockLockBase::CheckBeforeWait() {
    if (m_deleted)
        Complain("the deleted lock \"" + m_name + "\" is used");
    if (m_owner.load() == std::this_thread::get_id())
        Complain("the lock \"" + m_name + "\" is taken twice by one thread");
}

void MockLockBase::Taken(bool alone) {
    ++m_holders;
    if (alone)
        m_owner = std::this_thread::get_id();
}

bool MockLockBase::Dropped() {
    if (m_deleted || m_holders == 0)
        Complain("the lock \"" + m_name + "\" is unlocked but not held");
    const std::thread::id owner = m_owner.load();
    const bool alone = owner != std::thread::id();
    if (alone && owner != std::this_thread::get_id())
        Complain("the lock \"" + m_name + "\" is unlocked by a thread that does not hold it");
    m_owner = std::thread::id();
    --m_holders;
    return alone;
}

void MockLockBase::Delete(const char* kind) {
    if (m_deleted || m_holders != 0)
        Complain(std::string(kind) + " \"" + m_name + "\" is deleted " + (m_deleted ? "twice" : "while held"));
    m_deleted = true;
}

MockLock::MockLock(PlatformMock& platform, const char* name) : MockLockBase(platform, name) {
    ON_CALL(*this, lock(_, _)).WillByDefault([this](const char* file, const char* function) {
        Record("lock", file, function);
        CheckBeforeWait();
        m_mutex.lock();
        Taken(true);
        return 0;
    });
    ON_CALL(*this, rd_trylock(_, _)).WillByDefault([this](const char* file, const char* function) {
        Record("rd_trylock", file, function);
        CheckBeforeWait();
        if (!m_mutex.try_lock())
            return 1;
        Taken(true);
        return 0;
    });
    ON_CALL(*this, unlock(_, _)).WillByDefault([this](const char* file, const char* function) {
        Record("unlock", file, function);
        Dropped();
        m_mutex.unlock();
        if (after_unlock)
            after_unlock(function);
        return 0;
    });
    ON_CALL(*this, get_info(_, _)).WillByDefault([this](char*, unsigned int size) {
        m_platform.Record("get_info(" + Name() + ", " + std::to_string(size) + ")");
        return 0;
    });
}

MockRwLock::MockRwLock(PlatformMock& platform, const char* name) : MockLockBase(platform, name) {
    ON_CALL(*this, wr_lock(_, _)).WillByDefault([this](const char* file, const char* function) {
        Record("wr_lock", file, function);
        CheckBeforeWait();
        m_mutex.lock();
        Taken(true);
        return 0;
    });
    ON_CALL(*this, rd_trylock(_, _)).WillByDefault([this](const char* file, const char* function) {
        Record("rd_trylock", file, function);
        CheckBeforeWait();
        if (!m_mutex.try_lock_shared())
            return 1;
        Taken(false);
        return 0;
    });
    ON_CALL(*this, unlock(_, _)).WillByDefault([this](const char* file, const char* function) {
        Record("unlock", file, function);
        if (Dropped())
            m_mutex.unlock();
        else
            m_mutex.unlock_shared();
        return 0;
    });
    ON_CALL(*this, get_info(_, _)).WillByDefault([this](char*, unsigned int size) {
        m_platform.Record("get_info(" + Name() + ", " + std::to_string(size) + ")");
        return 0;
    });
    const auto complain = [this](const char*, const char*) {
        Complain("a reserved operation of the lock \"" + Name() + "\" is called");
        return 0;
    };
    ON_CALL(*this, reserved_1(_, _)).WillByDefault(complain);
    ON_CALL(*this, reserved_4(_, _)).WillByDefault(complain);
}
