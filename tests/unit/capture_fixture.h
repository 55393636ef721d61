// What the tests of picture capture share: a recorder with disks, a file system and pictures of its own making; a
// worker thread that runs one pass when a test says so; the pictures that a task reported. Expectations stand in the
// tests.
#ifndef CAPTURE_FIXTURE_H
#define CAPTURE_FIXTURE_H

#include <condition_variable>
#include <functional>
#include <set>

#include "login_fixture.h"

inline constexpr char CAPTURE_LOCK[] = "vexo_hostmgr_capture";
inline constexpr char CAPTURE_THREAD[] = "HostMgrCapturePictureTask_Thread";
inline constexpr char CAPTURE_DIR[] = "/mnt/disk1/host_pic/agentsh_capture";
inline constexpr int CAPTURE_TASKS = 576;

// ---- the worker ----------------------------------------------------------------------------------------------------

/**
 * The library's worker thread and the test take turns: the worker runs from one long sleep to the next while the test
 * waits in RunPass, and rests while the test works. Nobody sleeps.
 */
class CaptureWorker {
public:
    ~CaptureWorker() { Retrieve(); }

    void Create(const vexo_thread_creat_ctl& ctl) {
        m_turn = Turn::TEST;
        m_thread = std::thread([this, ctl] {
            AwaitTurn();
            ctl.entry(ctl.argument);
            GiveTurn(Turn::NOBODY);
        });
    }
    bool Created() const { return m_thread.joinable(); }

    /** Lets the worker run up to its next long sleep. */
    void RunPass() {
        std::unique_lock<std::mutex> lock(m_mutex);
        ASSERT_EQ(m_turn, Turn::TEST) << "there is no worker at rest";
        m_turn = Turn::WORKER;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_turn != Turn::WORKER; });
    }

    /** The long sleep, on the worker's thread: the turn goes to the test. */
    void Rest() {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            if (m_turn == Turn::WORKER)
                m_turn = Turn::TEST;
            m_changed.notify_all();
        }
        AwaitTurn();
    }

    /** Lets the worker run without turns, and waits for its end. */
    void Retrieve() {
        if (!m_thread.joinable())
            return;
        GiveTurn(Turn::NOBODY);
        m_thread.join();
    }

private:
    enum class Turn { TEST, WORKER, NOBODY };

    void AwaitTurn() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_turn != Turn::TEST; });
    }

    void GiveTurn(Turn turn) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_turn = turn;
        m_changed.notify_all();
    }

    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Turn m_turn = Turn::NOBODY;
};

// ---- the recorder --------------------------------------------------------------------------------------------------

/** A disk of a kind and state with partitions of a mount path and a size in megabytes. */
inline vexo_hard_disk_info MakeDisk(unsigned int type, unsigned int state,
                                    const std::vector<std::pair<std::string, unsigned int>>& partitions) {
    vexo_hard_disk_info disk = {};
    disk.identity.type = type;
    disk.state = state;
    disk.partition_num = static_cast<unsigned int>(partitions.size());
    for (size_t index = 0; index < partitions.size(); ++index) {
        partitions[index].first.copy(disk.partition[index].mount_path, sizeof(disk.partition[index].mount_path));
        disk.partition[index].size = partitions[index].second;
    }
    return disk;
}

/** How the recorder answers the next captures into a file. */
struct CaptureAnswer {
    int result = 0;
    bool leavesFile = true;
    bool empty = false;  // says that the picture has no bytes
};

/** A picture as a task's callback got it. */
struct ReportedPicture {
    int hCapture;
    _tagVexoCapturePictureInfo info;
};

/** A test with a login of the handle 0x501 at a recorder with one disk, whose files stand in the test alone. */
class CaptureFixture : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;
    /** 5 March 2024, 0:00 UTC. */
    static constexpr long DAY = 1709596800;

    static constexpr long At(int hour, int minute, int second) { return DAY + (hour * 60 + minute) * 60 + second; }

    void SetUp() override {
        LoginFixture::SetUp();
        SetTimeZone("UTC");
        SetClock(At(8, 0, 0), 0);
        SetThread();
        SetDisks();
        SetFiles();
        LogInAll({LOGIN});
    }
    void TearDown() override {
        if (IsLoggedIn(LOGIN))
            vexo_soft::vexo_HostMgr_Dev_Logout(LOGIN);
        EXPECT_THAT(platform.HeldLocks(), testing::IsEmpty());
    }

    // ---- tasks ----
    static _tagVexoCapturePictureCfg Daily(unsigned int hour, unsigned int minute, unsigned int second) {
        _tagVexoCapturePictureCfg cfg = {};
        cfg.dwType = 1;
        cfg.dwTime = hour << 16 | minute << 8 | second;
        return cfg;
    }
    static _tagVexoCapturePictureCfg EverySecond() {
        _tagVexoCapturePictureCfg cfg = {};
        cfg.dwType = 2;
        return cfg;
    }
    /** Seconds before, milliseconds between, seconds after. */
    static _tagVexoCapturePictureCfg OnAlarm(unsigned int pre, unsigned int interval, unsigned int post) {
        _tagVexoCapturePictureCfg cfg = {};
        cfg.dwPreTime = pre;
        cfg.dwInterval = interval;
        cfg.dwPostTime = post;
        return cfg;
    }

    int Start(_tagVexoCapturePictureCfg cfg, int channel = 3, int stream = 2) {
        const int hCapture =
            vexo_soft::vexo_HostMgr_Dev_StartCapturePicture(LOGIN, channel, stream, &cfg, OnPicture, this);
        EXPECT_NE(hCapture, -1);
        platform.TakeCalls();
        return hCapture;
    }
    int Trigger(int hCapture) {
        return vexo_soft::vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(hCapture, OnPicture, this);
    }
    /** Stops a task; its plain line is of no interest here. */
    static int Stop(int hCapture) {
        int result = 0;
        RawConsole([&] { result = vexo_soft::vexo_HostMgr_Dev_StopCapturePicture(hCapture); });
        return result;
    }

    // ---- the worker ----
    void RunPass() {
        if (m_worker.Created())
            m_worker.RunPass();
    }
    void PassAt(long seconds) {
        SetClock(seconds, 0);
        RunPass();
    }
    /** Runs a pass at each second from first to last and returns those at which a picture was reported. */
    std::vector<long> SecondsWithPictures(long first, long last) {
        std::vector<long> seconds;
        for (long second = first; second <= last; ++second) {
            m_pictures.clear();
            PassAt(second);
            seconds.insert(seconds.end(), m_pictures.size(), second);
        }
        return seconds;
    }
    /** The calls of a pass that has no directory to prepare, without its 576 lock pairs and the sleep. */
    Lines CallsOfPass() {
        platform.TakeCalls();
        RunPass();
        return OwnCalls(platform.TakeCalls());
    }
    static Lines OwnCalls(const Lines& calls) {
        return Without("vexo_utility_sleep_ms(", Without("rd_trylock(", Without("unlock(", calls)));
    }

    // ---- what was reported ----
    const _tagVexoCapturePictureInfo& Picture(size_t index) const { return m_pictures.at(index).info; }
    std::vector<std::string> Paths() const {
        std::vector<std::string> paths;
        for (const ReportedPicture& picture : m_pictures)
            paths.push_back(picture.info.sPicPath);
        return paths;
    }
    std::vector<unsigned int> Indices() const {
        std::vector<unsigned int> indices;
        for (const ReportedPicture& picture : m_pictures)
            indices.push_back(picture.info.dwPicIndex);
        return indices;
    }
    /** Hour, minute and second of a time as one number, 123004 for 12:30:04. */
    static unsigned int Clock(const _tagVexoHostMgrTime& time) {
        return time.dwHour * 10000 + time.dwMinute * 100 + time.dwSecond;
    }
    std::vector<unsigned int> CaptureTimes() const {
        std::vector<unsigned int> times;
        for (const ReportedPicture& picture : m_pictures)
            times.push_back(Clock(picture.info.struCaptureTime));
        return times;
    }
    std::vector<unsigned int> Sizes() const {
        std::vector<unsigned int> sizes;
        for (const ReportedPicture& picture : m_pictures)
            sizes.push_back(picture.info.dwPicSize);
        return sizes;
    }

    /** The callback: writes itself down, and spoils the record that it was given. */
    static void OnPicture(int hCapture, _tagVexoCapturePictureInfo* info, void* user) {
        CaptureFixture* test = static_cast<CaptureFixture*>(user);
        test->platform.Record(std::string("callback(") + info->sPicPath + ")");
        test->m_pictures.push_back({hCapture, *info});
        if (test->m_on_picture)
            test->m_on_picture();
        memset(static_cast<void*>(info), 0xEE, sizeof(*info));
    }

    // ---- files ----
    static std::string File(const std::string& name) { return std::string(CAPTURE_DIR) + "/" + name; }
    std::vector<std::string> Files() const { return {m_files.begin(), m_files.end()}; }

    std::vector<vexo_hard_disk_info> m_disks = {MakeDisk(1, 3, {{"/mnt/disk1", 2000}})};
    std::set<std::string> m_files;
    CaptureAnswer m_answer;
    unsigned int m_next_size = 1001;  // of the next picture in bytes; each has one more
    std::vector<ReportedPicture> m_pictures;
    std::function<void()> m_on_picture;      // what the callback does besides, on the worker's thread
    std::function<void()> m_on_short_sleep;  // what happens while the worker waits for the lock, on its thread
    int m_creation_fails = 0;                // so many creations of the worker fail
    CaptureWorker m_worker;

private:
    void SetThread() {
        ON_CALL(platform, vexo_utility_creat_thread)
            .WillByDefault([this](const vexo_thread_creat_ctl* ctl, const char*, unsigned long* id) {
                if (m_creation_fails > 0) {
                    --m_creation_fails;
                    return -1;
                }
                *id = 7001;
                m_worker.Create(*ctl);
                return 0;
            });
        ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault([this](unsigned long) {
            m_worker.Retrieve();
            return 0;
        });
        ON_CALL(platform, vexo_utility_sleep_ms).WillByDefault([this](unsigned int milliseconds) {
            if (milliseconds >= 1000)
                m_worker.Rest();
            else if (m_on_short_sleep)
                m_on_short_sleep();
        });
    }

    void SetDisks() {
        ON_CALL(platform, vexo_model_get_hard_disk_num).WillByDefault([this](unsigned int* num) {
            *num = static_cast<unsigned int>(m_disks.size());
            return 0;
        });
        ON_CALL(platform, vexo_model_get_hard_disk_info)
            .WillByDefault([this](unsigned int index, vexo_hard_disk_info* info) {
                *info = m_disks.at(index);
                return 0;
            });
    }

    void SetFiles() {
        ON_CALL(platform, vexo_utility_is_file_exist).WillByDefault([this](const char* path) {
            return m_files.count(path) != 0 ? 2 : 0;
        });
        ON_CALL(platform, vexo_utility_creat_dir).WillByDefault([this](const char* path) {
            m_files.insert(path);
            return 0;
        });
        ON_CALL(platform, vexo_utility_delete_dir).WillByDefault([this](const char* path) {
            RemoveTree(path);
            return 0;
        });
        ON_CALL(platform, unlink).WillByDefault([this](const char* path) { return m_files.erase(path) != 0 ? 0 : -1; });
        ON_CALL(platform, vexo_model_capture(testing::_, testing::_, testing::_, testing::_))
            .WillByDefault([this](unsigned int, unsigned int, const char* path, unsigned int* size) {
                if (m_answer.leavesFile)
                    m_files.insert(path);
                if (m_answer.result == 0 && !m_answer.empty)
                    *size = m_next_size++;
                return m_answer.result;
            });
    }

    void RemoveTree(const std::string& path) {
        for (auto file = m_files.begin(); file != m_files.end();) {
            const bool inside = *file == path || file->compare(0, path.size() + 1, path + "/") == 0;
            file = inside ? m_files.erase(file) : std::next(file);
        }
    }
};

#endif
