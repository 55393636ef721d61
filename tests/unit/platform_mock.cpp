#include "platform_mock.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <utility>

#include "hostmgr_dev.h"

using testing::_;
using testing::Return;

template class PlatformMethods<void>;

static std::atomic<PlatformMock*> s_current{nullptr};

// ---- the one that lives --------------------------------------------------------------------------------------------

PlatformMock::PlatformMock() {
    SetMemoryDefaults();
    SetLockDefaults();
    SetThreadDefaults();
    SetTimeDefaults();
    SetModelDefaults();
    s_current = this;
}

PlatformMock::~PlatformMock() {
    s_current = nullptr;
}

PlatformMock& PlatformMock::Current(const char* operation) {
    PlatformMock* current = s_current;
    if (current == nullptr) {
        fprintf(stderr, "%s was called, but the test has no PlatformMock\n", operation);
        abort();
    }
    return *current;
}

// ---- the record ----------------------------------------------------------------------------------------------------

void PlatformMock::Record(const std::string& line) {
    std::lock_guard<std::mutex> guard(m_guard);
    m_calls.push_back(line);
}

std::vector<std::string> PlatformMock::TakeCalls() {
    std::lock_guard<std::mutex> guard(m_guard);
    return std::exchange(m_calls, {});
}

std::string PlatformMock::MemoryText(void* memory) {
    if (memory == nullptr)
        return "null";
    std::lock_guard<std::mutex> guard(m_guard);
    const auto found = m_block_at.find(memory);
    if (found == m_block_at.end())
        return "not ours";
    char text[16];
    snprintf(text, sizeof(text), "0x%x", m_blocks[found->second].purpose);
    return text;
}

std::string PlatformMock::LockText(vexo_lock* lock) {
    return lock == nullptr ? "null" : static_cast<MockLock*>(lock)->Name();
}

std::string PlatformMock::LockText(vexo_rw_lock* lock) {
    return lock == nullptr ? "null" : static_cast<MockRwLock*>(lock)->Name();
}

// ---- memory --------------------------------------------------------------------------------------------------------

/** Counts down to a failure that is wanted; true once, when its turn has come. */
static bool FailsNow(std::atomic<int>& fails_in) {
    return fails_in > 0 && --fails_in == 0;
}

void* PlatformMock::Malloc(unsigned int purpose, unsigned int size, unsigned int count) {
    if (FailsNow(m_malloc_fails_in))
        return nullptr;
    const size_t bytes = size_t{size} * count;
    const size_t units = std::max<size_t>(1, (bytes + sizeof(max_align_t) - 1) / sizeof(max_align_t));
    Block block{purpose, std::make_unique<max_align_t[]>(units), true};
    memset(static_cast<void*>(block.memory.get()), 0xA5, units * sizeof(max_align_t));
    std::lock_guard<std::mutex> guard(m_guard);
    void* memory = block.memory.get();
    m_block_at[memory] = m_blocks.size();
    m_blocks.push_back(std::move(block));
    return memory;
}

void PlatformMock::Free(void* memory) {
    if (memory == nullptr)
        return;
    std::lock_guard<std::mutex> guard(m_guard);
    const auto found = m_block_at.find(memory);
    if (found == m_block_at.end()) {
        ADD_FAILURE() << "memory is freed that vexo_utility_malloc did not give, or that was freed before";
        return;
    }
    Block& block = m_blocks[found->second];
    block.live = false;
    block.memory.reset();
    m_block_at.erase(found);
}

std::vector<unsigned int> PlatformMock::LiveMemory() {
    std::lock_guard<std::mutex> guard(m_guard);
    std::vector<unsigned int> purposes;
    for (const Block& block : m_blocks) {
        if (block.live)
            purposes.push_back(block.purpose);
    }
    return purposes;
}

void PlatformMock::SetMemoryDefaults() {
    ON_CALL(*this, vexo_utility_malloc(_, _, _, _))
        .WillByDefault([this](vexo_user_id, unsigned int purpose, unsigned int size, unsigned int count) {
            return Malloc(purpose, size, count);
        });
    ON_CALL(*this, vexo_utility_free(_, _, _)).WillByDefault([this](const char*, const char*, void* memory) {
        Free(memory);
    });
}

// ---- locks ---------------------------------------------------------------------------------------------------------

template <typename Kind>
Kind* PlatformMock::NewLock(std::vector<std::unique_ptr<Kind>>& locks, const char* name) {
    if (FailsNow(m_lock_fails_in))
        return nullptr;
    std::lock_guard<std::mutex> guard(m_guard);
    locks.push_back(std::make_unique<testing::NiceMock<Kind>>(*this, name));
    m_all_locks.push_back(locks.back().get());
    return locks.back().get();
}

void PlatformMock::SetLockDefaults() {
    ON_CALL(*this, vexo_utility_new_lock(_, _)).WillByDefault([this](vexo_user_id, const char* name) {
        return NewLock(m_locks, name);
    });
    ON_CALL(*this, vexo_utility_new_rw_lock(_, _)).WillByDefault([this](vexo_user_id, const char* name) {
        return NewLock(m_rw_locks, name);
    });
    ON_CALL(*this, vexo_utility_delete_lock(_, _, _)).WillByDefault([](vexo_lock* lock, const char*, const char*) {
        static_cast<MockLock*>(lock)->Delete("lock");
    });
    ON_CALL(*this, vexo_utility_delete_rw_lock(_, _, _))
        .WillByDefault([](vexo_rw_lock* lock, const char*, const char*) {
            static_cast<MockRwLock*>(lock)->Delete("read/write lock");
        });
}

template <typename Kind>
Kind& PlatformMock::Newest(const std::vector<std::unique_ptr<Kind>>& locks, const std::string& name) {
    for (auto lock = locks.rbegin(); lock != locks.rend(); ++lock) {
        if ((*lock)->Name() == name && !(*lock)->Deleted())
            return **lock;
    }
    fprintf(stderr, "there is no lock \"%s\"\n", name.c_str());
    abort();
}

MockLock& PlatformMock::Lock(const std::string& name) {
    std::lock_guard<std::mutex> guard(m_guard);
    return Newest(m_locks, name);
}

MockRwLock& PlatformMock::RwLock(const std::string& name) {
    std::lock_guard<std::mutex> guard(m_guard);
    return Newest(m_rw_locks, name);
}

template <typename Condition>
std::vector<std::string> PlatformMock::LockNames(Condition condition) {
    std::lock_guard<std::mutex> guard(m_guard);
    std::vector<std::string> names;
    for (const MockLockBase* lock : m_all_locks) {
        if (condition(*lock))
            names.push_back(lock->Name());
    }
    return names;
}

std::vector<std::string> PlatformMock::HeldLocks() {
    return LockNames([](const MockLockBase& lock) { return lock.Held(); });
}

std::vector<std::string> PlatformMock::LiveLocks() {
    return LockNames([](const MockLockBase& lock) { return !lock.Deleted(); });
}

// ---- threads and diagnostics ---------------------------------------------------------------------------------------

void PlatformMock::SetThreadDefaults() {
    ON_CALL(*this, vexo_utility_creat_thread(_, _, _))
        .WillByDefault([this](const vexo_thread_creat_ctl* ctl, const char* name, unsigned long* id) {
            std::lock_guard<std::mutex> guard(m_guard);
            *id = 1001 + m_threads.size();
            m_threads.push_back({*ctl, name, *id});
            return 0;
        });
    ON_CALL(*this, vexo_utility_sleep_ms(_)).WillByDefault([](unsigned int milliseconds) {
        AdvanceClock(static_cast<long>(milliseconds));
    });
    ON_CALL(*this, vexo_utility_regist_diag(_, _, _))
        .WillByDefault([this](vexo_diagnose_client* client, const char* title, const char* menu) {
            std::lock_guard<std::mutex> guard(m_guard);
            m_diagnostics = {client, title, menu};
            return 0;
        });
}

std::vector<MockThread> PlatformMock::Threads() {
    std::lock_guard<std::mutex> guard(m_guard);
    return m_threads;
}

MockDiagnostics PlatformMock::Diagnostics() {
    std::lock_guard<std::mutex> guard(m_guard);
    return m_diagnostics;
}

// ---- time ----------------------------------------------------------------------------------------------------------

static long DeltaMs(const struct timeval* from, const struct timeval* to) {
    return static_cast<long>((to->tv_sec - from->tv_sec) * 1000 + (to->tv_usec - from->tv_usec) / 1000);
}

static void AddTime(struct timeval* time, long milliseconds) {
    const long long microseconds = static_cast<long long>(time->tv_usec) + milliseconds * 1000LL;
    long long seconds = microseconds / 1000000;
    long long rest = microseconds % 1000000;
    if (rest < 0) {
        rest += 1000000;
        --seconds;
    }
    time->tv_sec += static_cast<time_t>(seconds);
    time->tv_usec = static_cast<suseconds_t>(rest);
}

static void ToVexoTime(long seconds, vexo_time_struct* time) {
    const time_t instant = seconds;
    struct tm local = {};
    localtime_r(&instant, &local);
    const auto field = [](int value) { return static_cast<unsigned short>(value); };
    *time = {field(local.tm_year + 1900), field(local.tm_mon + 1), field(local.tm_mday),
             field(local.tm_hour),        field(local.tm_min),     field(local.tm_sec)};
}

static long FromVexoTime(const vexo_time_struct* time) {
    struct tm local = {};
    local.tm_year = time->year - 1900;
    local.tm_mon = time->month - 1;
    local.tm_mday = time->day;
    local.tm_hour = time->hour;
    local.tm_min = time->minute;
    local.tm_sec = time->second;
    local.tm_isdst = -1;
    return static_cast<long>(mktime(&local));
}

void PlatformMock::SetTimeDefaults() {
    ON_CALL(*this, vexo_utility_cnt_delta_ms(_, _)).WillByDefault(DeltaMs);
    ON_CALL(*this, vexo_utility_add_time(_, _)).WillByDefault(AddTime);
    ON_CALL(*this, vexo_utility_linux_to_vexo_time(_, _)).WillByDefault(ToVexoTime);
    ON_CALL(*this, vexo_utility_vexo_to_linux_time(_)).WillByDefault(FromVexoTime);
    ON_CALL(*this, vexo_utility_min(_, _)).WillByDefault([](unsigned int left, unsigned int right) {
        return std::min(left, right);
    });
}

// ---- model library -------------------------------------------------------------------------------------------------

extern "C" int __real_unlink(const char* path);

void PlatformMock::SetModelDefaults() {
    ON_CALL(*this, unlink(_)).WillByDefault(__real_unlink);
    ON_CALL(*this, vexo_model_get_usr_info_byname(_, _)).WillByDefault([](const char*, vexo_dev_usr_info* info) {
        snprintf(info->usr_name, sizeof(info->usr_name), "admin");
        snprintf(info->usr_password, sizeof(info->usr_password), "secret");
        return 0;
    });
    ON_CALL(*this, vexo_model_login(_, _, _, _, _, _))
        .WillByDefault([this](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, VEXO_BOOL) {
            *id = m_next_login++;
            return 0;
        });
    ON_CALL(*this, vexo_model_remote_login(_, _, _, _, _, _, _))
        .WillByDefault(
            [this](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, char*, char*) {
                *id = m_next_login++;
                return 0;
            });
    // No frame yet, no recording, nothing said: where a plain 0 would claim an output that was not written.
    ON_CALL(*this, vexo_model_first_get_frame(_, _, _, _, _, _)).WillByDefault(Return(-1));
    ON_CALL(*this, vexo_model_get_frame(_, _, _, _, _, _, _)).WillByDefault(Return(-1));
    ON_CALL(*this, vexo_model_zero_channel_first_get_frame(_, _, _)).WillByDefault(Return(-1));
    ON_CALL(*this, vexo_model_zero_channel_get_frame(_, _, _, _)).WillByDefault(Return(-1));
    ON_CALL(*this, vexo_model_inquiry_rec_by_time(_, _, _, _, _, _, _, _)).WillByDefault(Return(-1));
    ON_CALL(*this, vexo_model_get_talking_frame(_, _, _)).WillByDefault(Return(-1));
    ON_CALL(*this, vexo_utility_get_event_info(_, _, _, _))
        .WillByDefault([](unsigned int, vexo_event_detail_info*, unsigned int, unsigned int* count) {
            *count = 0;
            return 0;
        });
}

// ---- fixture -------------------------------------------------------------------------------------------------------

void HostMgrTest::Init() {
    vexo_soft::vexo_HostMgr_Dev_init();
    platform.TakeCalls();
}

int HostMgrTest::Login(unsigned int id) {
    Init();
    platform.NextLogin(id);
    const int hLogin = vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr);
    platform.TakeCalls();
    return hLogin;
}
