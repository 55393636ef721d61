// The recorder's three libraries as a test sees them: every platform operation is a mock method with a default that
// makes the library work, and every call is written down as a line of text in the order of the calls. What the tests
// share besides (console, clock, memory that runs out) stands in test_support.h; no expectation belongs here.
#ifndef PLATFORM_MOCK_H
#define PLATFORM_MOCK_H

#include <gmock/gmock.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "test_support.h"
#include "vexo_cfgm.h"
#include "vexo_model.h"
#include "vexo_utility.h"

class PlatformMock;

/** What the two kinds of lock share: name, owner, and the complaints about misuse. */
class MockLockBase {
public:
    const std::string& Name() const { return m_name; }
    /** Whether anybody holds the lock, and whether it has been deleted. */
    bool Held() const { return m_holders != 0; }
    bool Deleted() const { return m_deleted; }

protected:
    MockLockBase(PlatformMock& platform, const char* name);
    void Record(const char* operation, const char* file, const char* function);
    void CheckBeforeWait();
    void Taken(bool alone);
    /** True when the lock was held alone. */
    bool Dropped();
    void Delete(const char* kind);

    PlatformMock& m_platform;

private:
    const std::string m_name;
    std::atomic<int> m_holders{0};
    std::atomic<std::thread::id> m_owner{};
    std::atomic<bool> m_deleted{false};
};

/** A plain lock; really locks. Recorded as "lock(NAME, FILE, FUNCTION)", rd_trylock and unlock alike, "get_info(NAME,
 *  SIZE)". */
class MockLock : public vexo_lock, public MockLockBase {
public:
    MockLock(PlatformMock& platform, const char* name);
    MOCK_METHOD(int, lock, (const char* file, const char* function), (override));
    MOCK_METHOD(int, rd_trylock, (const char* file, const char* function), (override));
    MOCK_METHOD(int, unlock, (const char* file, const char* function), (override));
    MOCK_METHOD(int, get_info, (char* buffer, unsigned int size), (override));

    /** Runs on the thread that has unlocked, with the name of the function that it did so in; set it before others run.
     */
    std::function<void(const std::string& function)> after_unlock;

private:
    friend class PlatformMock;
    std::mutex m_mutex;
};

/** A read/write lock; really locks. Recorded as MockLock, with wr_lock in place of lock. */
class MockRwLock : public vexo_rw_lock, public MockLockBase {
public:
    MockRwLock(PlatformMock& platform, const char* name);
    MOCK_METHOD(int, reserved_1, (const char* file, const char* function), (override));
    MOCK_METHOD(int, rd_trylock, (const char* file, const char* function), (override));
    MOCK_METHOD(int, wr_lock, (const char* file, const char* function), (override));
    MOCK_METHOD(int, reserved_4, (const char* file, const char* function), (override));
    MOCK_METHOD(int, unlock, (const char* file, const char* function), (override));
    MOCK_METHOD(int, get_info, (char* buffer, unsigned int size), (override));

private:
    friend class PlatformMock;
    std::shared_mutex m_mutex;
};

/** A thread that the library asked for. The mock starts none: a test runs ctl.entry(ctl.argument) itself if it likes.
 */
struct MockThread {
    vexo_thread_creat_ctl ctl;
    std::string name;
    unsigned long id;
};

/** What the library registered for diagnostics, pointers as given. */
struct MockDiagnostics {
    vexo_diagnose_client* client = nullptr;
    const char* title = nullptr;
    const char* menu = nullptr;
};

/**
 * The platform operations as mock methods. A template with one instance: its methods are compiled once, with the mock,
 * and not again in every test.
 */
template <typename>
class PlatformMethods {
public:
    // ---- utility platform ----
    MOCK_METHOD(int, vexo_utility_init, (vexo_utility_ops_type));
    MOCK_METHOD(void*, vexo_utility_malloc,
                (vexo_user_id, unsigned int purpose, unsigned int size, unsigned int count));
    MOCK_METHOD(void, vexo_utility_free, (const char* file, const char* function, void*));
    MOCK_METHOD(vexo_lock*, vexo_utility_new_lock, (vexo_user_id, const char* name));
    MOCK_METHOD(void, vexo_utility_delete_lock, (vexo_lock*, const char* file, const char* function));
    MOCK_METHOD(vexo_rw_lock*, vexo_utility_new_rw_lock, (vexo_user_id, const char* name));
    MOCK_METHOD(void, vexo_utility_delete_rw_lock, (vexo_rw_lock*, const char* file, const char* function));
    MOCK_METHOD(int, vexo_utility_creat_thread, (const vexo_thread_creat_ctl*, const char* name, unsigned long* id));
    MOCK_METHOD(int, vexo_utility_retrieve_thread, (unsigned long id));
    MOCK_METHOD(void, vexo_utility_enter_thread, (unsigned long id, const char* name));
    MOCK_METHOD(void, vexo_utility_exit_thread, (unsigned long id));
    MOCK_METHOD(void, vexo_utility_sleep_ms, (unsigned int));
    MOCK_METHOD(long, vexo_utility_cnt_delta_ms, (const struct timeval* from, const struct timeval* to));
    MOCK_METHOD(void, vexo_utility_add_time, (struct timeval*, long milliseconds));
    MOCK_METHOD(void, vexo_utility_linux_to_vexo_time, (long seconds, vexo_time_struct*));
    MOCK_METHOD(long, vexo_utility_vexo_to_linux_time, (const vexo_time_struct*));
    MOCK_METHOD(unsigned int, vexo_utility_min, (unsigned int, unsigned int));
    MOCK_METHOD(VEXO_BOOL, vexo_utility_is_file_exist, (const char* path));
    MOCK_METHOD(int, vexo_utility_creat_dir, (const char* path));
    MOCK_METHOD(int, vexo_utility_delete_dir, (const char* path));
    MOCK_METHOD(vexo_xml_operate*, vexo_utility_new_xml_operate, (vexo_user_id, const char* label));
    MOCK_METHOD(void, vexo_utility_delete_xml_operate, (vexo_xml_operate*, const char* file, const char* label));
    MOCK_METHOD(int, vexo_utility_get_event_info,
                (unsigned int user, vexo_event_detail_info*, unsigned int capacity, unsigned int* count));
    MOCK_METHOD(int, vexo_utility_regist_diag, (vexo_diagnose_client*, const char* title, const char* menu));

    // ---- configuration manager ----
    MOCK_METHOD(int, vexo_cfgm_init, ());
    MOCK_METHOD(const vexo_dev_capability*, vexo_cfgm_get_dev_cap, ());
    MOCK_METHOD(int, vexo_cfgm_get_usr_num, (unsigned int*));
    MOCK_METHOD(int, vexo_cfgm_get_usr_info, (unsigned int index, vexo_cfgm_usr_info*));
    MOCK_METHOD(int, vexo_cfgm_get_host_manager_enable, (unsigned int platform, VEXO_BOOL*));
    MOCK_METHOD(int, vexo_cfgm_get_host_manager_param,
                (unsigned int platform, unsigned int index, char* name, unsigned int, char* value, unsigned int));
    MOCK_METHOD(const vexo_network_cap*, vexo_cfgm_get_network_cap, ());
    MOCK_METHOD(int, vexo_cfgm_get_local_eth_cfg, (const char* ifname, vexo_eth_cfg*));
    MOCK_METHOD(int, vexo_cfgm_get_dns_cfg, (vexo_dns_cfg*));
    MOCK_METHOD(int, vexo_cfgm_get_upnp_cfg_ex, (VEXO_BOOL*));
    MOCK_METHOD(int, vexo_cfgm_get_http_port, (unsigned int*));
    MOCK_METHOD(int, vexo_cfgm_get_https_port, (unsigned int*));
    MOCK_METHOD(int, vexo_cfgm_get_onvif_port, (unsigned int*));
    MOCK_METHOD(int, vexo_cfgm_get_rtmp_port, (unsigned int*));
    MOCK_METHOD(int, vexo_cfgm_get_rtsp_port, (unsigned int*));
    MOCK_METHOD(int, vexo_cfgm_get_pppoe_cfg, (vexo_pppoe_cfg*));

    // ---- model library: logins, live, zero channel ----
    MOCK_METHOD(int, vexo_model_get_usr_info_byname, (const char* name, vexo_dev_usr_info*));
    MOCK_METHOD(int, vexo_model_login,
                (const char* user, const char* password, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL visible,
                 VEXO_BOOL exclusive));
    MOCK_METHOD(int, vexo_model_remote_login,
                (const char* user, const char* password, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL encrypted,
                 char* challenge, char* answer));
    MOCK_METHOD(int, vexo_model_logout, (unsigned int id, VEXO_BOOL forced));
    MOCK_METHOD(int, vexo_model_get_usr_authority, (const char* user, vexo_dev_usr_authority*));
    MOCK_METHOD(int, vexo_model_first_get_frame,
                (unsigned int channel, vexo_user_id, vexo_enc_str_type, unsigned char** frame, vexo_read_av_list_note*,
                 VEXO_BOOL* no_video));
    MOCK_METHOD(int, vexo_model_get_frame,
                (unsigned int channel, vexo_user_id, vexo_enc_str_type, const vexo_read_av_list_note* current,
                 unsigned char** frame, vexo_read_av_list_note*, VEXO_BOOL* no_video));
    MOCK_METHOD(int, vexo_model_rel_frame,
                (unsigned int channel, vexo_user_id, vexo_enc_str_type, const vexo_read_av_list_note*));
    MOCK_METHOD(void, vexo_rmta_dump_frame_list, (unsigned int channel, vexo_enc_str_type, vexo_print_func));
    MOCK_METHOD(int, vexo_model_zero_channel_set_enable, (unsigned int id, VEXO_BOOL));
    MOCK_METHOD(int, vexo_model_zero_channel_set_video_channels,
                (unsigned int id, const unsigned int* channels, unsigned int count));
    MOCK_METHOD(int, vexo_model_zero_channel_first_get_frame,
                (vexo_user_id, unsigned char** frame, vexo_read_av_list_note*));
    MOCK_METHOD(int, vexo_model_zero_channel_get_frame,
                (vexo_user_id, const vexo_read_av_list_note* current, unsigned char** frame, vexo_read_av_list_note*));
    MOCK_METHOD(int, vexo_model_zero_channel_rel_frame, (vexo_user_id, const vexo_read_av_list_note*));
    MOCK_METHOD(int, vexo_model_zero_channel_get_resolution_ability, (vexo_resolution_ability*));
    MOCK_METHOD(int, vexo_model_zero_channel_get_resolution, (vexo_resolution*));
    MOCK_METHOD(int, vexo_model_zero_channel_get_bps, (unsigned int* bps, unsigned int* mode));
    MOCK_METHOD(int, vexo_model_zero_channel_get_fps, (unsigned int*));

    // ---- model library: recordings, talk ----
    MOCK_METHOD(int, vexo_model_inquiry_rec_by_time,
                (unsigned int id, vexo_user_id, unsigned int channel, const vexo_time_struct* start,
                 const vexo_time_struct* stop, unsigned int type_mask, unsigned int inquiry_type,
                 vexo_rec_file_inquiry_result**));
    MOCK_METHOD(void, vexo_model_free_inquiry_rec_result, (vexo_rec_file_inquiry_result*));
    MOCK_METHOD(vexo_avss_file_reader*, vexo_model_new_avss_reader, (vexo_user_id, const char* name));
    MOCK_METHOD(void, vexo_model_delete_avss_reader, (vexo_avss_file_reader*, const char* file, const char* function));
    MOCK_METHOD(vexo_advance_avss_file_reader*, vexo_model_new_advance_avss_reader, (vexo_user_id, const char* name));
    MOCK_METHOD(void, vexo_model_delete_advance_avss_reader,
                (vexo_advance_avss_file_reader*, const char* file, const char* function));
    MOCK_METHOD(int, vexo_model_start_talking,
                (unsigned int id, vexo_talk_mode, unsigned int channel, unsigned int* talk));
    MOCK_METHOD(int, vexo_model_stop_talking, (unsigned int talk));
    MOCK_METHOD(int, vexo_model_get_talking_frame, (unsigned int talk, unsigned char* buffer, unsigned int size));
    MOCK_METHOD(int, vexo_model_play_talking_frame, (unsigned int talk, const unsigned char* frame));

    // ---- model library: device ----
    MOCK_METHOD(int, vexo_model_send_ptz_cmd,
                (unsigned int id, unsigned int channel, unsigned int code, const vexo_ipc_ptz_ctrl_para*));
    MOCK_METHOD(int, vexo_model_reboot, (unsigned int id, VEXO_BOOL forced));
    MOCK_METHOD(int, vexo_model_poweroff, (unsigned int id));
    MOCK_METHOD(int, vexo_model_restore_factory, (unsigned int id, unsigned int parts));
    MOCK_METHOD(int, vexo_model_set_record_mode, (unsigned int id, unsigned int channel, unsigned int mode));
    MOCK_METHOD(int, vexo_model_set_record_manual_enable, (unsigned int id, unsigned int channel, VEXO_BOOL));
    MOCK_METHOD(int, vexo_model_capture, (unsigned int id, unsigned int channel, const char* path, unsigned int* size));
    MOCK_METHOD(int, vexo_model_capture,
                (unsigned int id, unsigned int channel, char* buffer, unsigned int buffer_size, unsigned int* size));
    MOCK_METHOD(int, vexo_model_get_hard_disk_num, (unsigned int*));
    MOCK_METHOD(int, vexo_model_get_hard_disk_info, (unsigned int index, vexo_hard_disk_info*));
    MOCK_METHOD(VEXO_BOOL, vexo_model_is_disk_recording, (const vexo_disk_identity*));
    MOCK_METHOD(int, vexo_model_get_ipc_connect_status, (unsigned int channel, VEXO_BOOL*));
    MOCK_METHOD(int, vexo_model_get_ipc_connect_cfg, (unsigned int channel, vexo_ipc_connect_cfg*));
    MOCK_METHOD(VEXO_BOOL, vexo_model_ch_is_recording, (unsigned int channel));
    MOCK_METHOD(int, vexo_model_get_audio_enable,
                (unsigned int channel, unsigned int stream, VEXO_BOOL*, unsigned int reserved));
    MOCK_METHOD(int, vexo_model_get_enc_para,
                (unsigned int channel, unsigned int stream, vexo_enc_para*, VEXO_BOOL audio));
    MOCK_METHOD(const vexo_dev_capability*, vexo_model_get_dev_capability, ());
    MOCK_METHOD(int, vexo_model_get_sata_info, (vexo_sata_info*));
    MOCK_METHOD(int, vexo_model_get_rec_stream_mode, (unsigned int*));
    MOCK_METHOD(int, vexo_model_get_default_if, (char* name, unsigned int len));
    MOCK_METHOD(int, vexo_model_get_pppoe_status, (vexo_pppoe_status*));
    MOCK_METHOD(int, vexo_model_get_host_manage_factory_info_num, (unsigned int*));
    MOCK_METHOD(int, vexo_model_get_host_manager_factory_info, (unsigned int index, vexo_hostlib_factory_info*));
    MOCK_METHOD(int, vexo_model_set_host_manager_factory_info_force, (vexo_hostlib_factory_info));
    MOCK_METHOD(void, vexo_model_set_log_hook, (vexo_log_hook, void* user));

    // ---- the C library, where the record needs it ----
    MOCK_METHOD(int, unlink, (const char* path));
};
extern template class PlatformMethods<void>;

/**
 * The platform while it lives; one at a time. Use it as NiceMock (Platform, below) or StrictMock.
 *
 * Defaults: everything succeeds; memory is real and filled with 0xA5; locks really lock; threads are not started and
 * get the ids 1001, 1002 ...; sleeping moves the test clock; time arithmetic is right; the user "admin" exists with the
 * password "secret"; logins get the ids 1, 2 ... (NextLogin); there is no frame, event, file, disk or recording; unlink
 * is the real one.
 *
 * Each call is recorded, before its action runs, as "operation(inputs)": texts bare, null as null, numbers decimal but
 * purposes and stack sizes (0x...), locks by name, memory by its purpose, addresses by their text, list positions as
 * first:second; outputs are left out.
 */
class PlatformMock : public PlatformMethods<void> {
public:
    PlatformMock();
    virtual ~PlatformMock();
    PlatformMock(const PlatformMock&) = delete;
    PlatformMock& operator=(const PlatformMock&) = delete;

    /** The one that lives; ends the process with a message that names the operation when there is none. */
    static PlatformMock& Current(const char* operation);

    // ---- the record ----
    void Record(const std::string& line);
    /** The lines so far; they are forgotten. */
    std::vector<std::string> TakeCalls();

    // ---- what the library holds ----
    /** The newest lock of that name that has not been deleted; a failure and the end of the process when none. */
    MockLock& Lock(const std::string& name);
    MockRwLock& RwLock(const std::string& name);
    /** Names of the locks that are held, and of all that have not been deleted, oldest first. */
    std::vector<std::string> HeldLocks();
    std::vector<std::string> LiveLocks();
    /** Purposes of the memory not given back, oldest first. */
    std::vector<unsigned int> LiveMemory();
    /** All threads asked for. */
    std::vector<MockThread> Threads();
    MockDiagnostics Diagnostics();

    // ---- settings of the defaults ----
    /** The id of the next login; the one after it gets the next number. */
    void NextLogin(unsigned int id) { m_next_login = id; }
    /** The nth of all locks, or allocations, from now on fails, once; 1 is the next. */
    void FailLock(int nth) { m_lock_fails_in = nth; }
    void FailMalloc(int nth) { m_malloc_fails_in = nth; }

    /** How the record names memory and locks. */
    std::string MemoryText(void* memory);
    std::string LockText(vexo_lock* lock);
    std::string LockText(vexo_rw_lock* lock);

private:
    struct Block {
        unsigned int purpose;
        std::unique_ptr<max_align_t[]> memory;
        bool live;
    };

    void SetMemoryDefaults();
    void SetLockDefaults();
    void SetThreadDefaults();
    void SetTimeDefaults();
    void SetModelDefaults();
    void* Malloc(unsigned int purpose, unsigned int size, unsigned int count);
    void Free(void* memory);
    template <typename Kind>
    Kind* NewLock(std::vector<std::unique_ptr<Kind>>& locks, const char* name);
    template <typename Condition>
    std::vector<std::string> LockNames(Condition condition);
    template <typename Kind>
    static Kind& Newest(const std::vector<std::unique_ptr<Kind>>& locks, const std::string& name);

    std::mutex m_guard;  // of the containers below; never held across an action
    std::vector<std::string> m_calls;
    std::vector<Block> m_blocks;
    std::map<void*, size_t> m_block_at;
    std::vector<std::unique_ptr<MockLock>> m_locks;
    std::vector<std::unique_ptr<MockRwLock>> m_rw_locks;
    std::vector<const MockLockBase*> m_all_locks;
    std::vector<MockThread> m_threads;
    MockDiagnostics m_diagnostics;
    std::atomic<unsigned int> m_next_login{1};
    std::atomic<int> m_lock_fails_in{0};
    std::atomic<int> m_malloc_fails_in{0};
};

using Platform = testing::NiceMock<PlatformMock>;

/** A test of the whole library. Each test has a process of its own, so each starts before initialisation. */
class HostMgrTest : public testing::Test {
protected:
    /** Initialises the library and forgets the calls that this made. */
    void Init();
    /** Initialises if need be, logs in at the recorder itself and forgets the calls; the handle is id. */
    int Login(unsigned int id);
    int Login() { return Login(1); }

    Platform platform;
};

#endif
