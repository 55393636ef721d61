// Pictures through the exported functions: at once, daily, every second and around an alarm. Every JPEG is decoded, and
// its stamp says which camera it shows and when it was taken.
#include <gmock/gmock.h>

#include <atomic>
#include <cstdio>
#include <ctime>
#include <map>
#include <mutex>
#include <set>

#include "agent.h"
#include "device_support.h"
#include "still_picture.h"

using agent::Session;
using device::Contents;
using device::Home;
using live::Eventually;
using still::Decode;
using still::StampOf;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "cameras": [{"name": "Gate", "main": {"width": 640, "height": 360}},
                {"name": "Yard", "main": {"width": 352, "height": 288}}],
    "disks": [{"megabytes": 3000}, {"megabytes": 3000, "partitions": [1023, 1500]}, {"megabytes": 900},
              {"megabytes": 9000, "kind": "network"}],
    "recordings": {"live": "off", "history": {"segments": 0}}
})"));

constexpr unsigned MAIN = HOSTMGR_STREAM_MAIN;

/** Where the tasks' pictures belong: on the last disk that does, on its first partition that does. */
fs::path Folder() {
    return Home() / "disk-2-2" / "host_pic" / "agentsh_capture";
}

size_t FilesKept() {
    std::error_code error;
    size_t files = 0;
    for (fs::directory_iterator file(Folder(), error); !error && file != fs::directory_iterator();
         file.increment(error)) {
        ++files;
    }
    return files;
}

/** Takes the folder away, and the one above it; a picture may just be on its way into it. */
void RemoveFolder() {
    std::error_code error;
    fs::remove_all(Folder().parent_path(), error);
}

time_t Now() {
    return time(nullptr);
}

/** Seconds since 1970 of a reported time. */
time_t Seconds(const _tagVexoHostMgrTime& time) {
    tm local = {};
    local.tm_year = static_cast<int>(time.dwYear) - 1900;
    local.tm_mon = static_cast<int>(time.dwMonth) - 1;
    local.tm_mday = static_cast<int>(time.dwDay);
    local.tm_hour = static_cast<int>(time.dwHour);
    local.tm_min = static_cast<int>(time.dwMinute);
    local.tm_sec = static_cast<int>(time.dwSecond);
    local.tm_isdst = -1;
    return mktime(&local);
}

/** A picture as it was reported, with its file's contents at that moment. */
struct Picture {
    int task;
    _tagVexoCapturePictureInfo info;
    std::string jpeg;
};

/** What a task's callback got. */
class Album {
public:
    static void OnPicture(int task, _tagVexoCapturePictureInfo* info, void* user) {
        Album* album = static_cast<Album*>(user);
        Picture picture = {task, *info, Contents(info->sPicPath)};
        std::lock_guard<std::mutex> hold(album->m_mutex);
        album->m_pictures.push_back(std::move(picture));
    }
    std::vector<Picture> All() const {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_pictures;
    }
    size_t Size() const { return All().size(); }
    bool WaitFor(size_t count) const {
        return Eventually([&] { return Size() >= count; });
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Picture> m_pictures;  // guarded by m_mutex
};

_tagVexoCapturePictureCfg EverySecond() {
    _tagVexoCapturePictureCfg cfg = {};
    cfg.dwType = HOSTMGR_CAPTURE_SECOND;
    return cfg;
}

_tagVexoCapturePictureCfg DailyAt(time_t seconds) {
    tm local;
    localtime_r(&seconds, &local);
    _tagVexoCapturePictureCfg cfg = {};
    cfg.dwType = HOSTMGR_CAPTURE_DAILY;
    cfg.dwTime = static_cast<uint32_t>(local.tm_hour << 16 | local.tm_min << 8 | local.tm_sec);
    return cfg;
}

_tagVexoCapturePictureCfg OnAlarm(unsigned before, unsigned interval, unsigned after) {
    _tagVexoCapturePictureCfg cfg = {};
    cfg.dwType = HOSTMGR_CAPTURE_ALARM;
    cfg.dwPreTime = before;
    cfg.dwInterval = interval;
    cfg.dwPostTime = after;
    return cfg;
}

class CaptureTest : public agent::LibraryTest {
protected:
    void TearDown() override {
        ExpectAllGivenBack();
        EXPECT_EQ(FilesKept(), 0U) << "pictures of tasks that are gone";
    }

    static int Start(const Session& session, _tagVexoCapturePictureCfg cfg, int channel, Album* album) {
        return vexo_soft::vexo_HostMgr_Dev_StartCapturePicture(session.Login(), channel, MAIN, &cfg,
                                                               album != nullptr ? Album::OnPicture : nullptr, album);
    }
    static int Stop(int task) { return vexo_soft::vexo_HostMgr_Dev_StopCapturePicture(task); }
    static int Trigger(int task, Album* album) {
        return vexo_soft::vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(task, Album::OnPicture, album);
    }

    /** Waits until the login's worker has passed over all its tasks after that second. */
    static bool PassesBeyond(const Session& session, time_t seconds) {
        Album album;
        const int task = Start(session, EverySecond(), 2, &album);
        const bool passed = Eventually([&] {
            const std::vector<Picture> pictures = album.All();
            // The tasks before it may have had the second before.
            return !pictures.empty() && Seconds(pictures.back().info.struCaptureTime) > seconds + 1;
        });
        return Stop(task) == 0 && passed;
    }

    /** A whole picture of that channel, taken when it says it was, in the file that it names. */
    static void ExpectPicture(const Picture& picture, unsigned channel, const char* kind) {
        const _tagVexoCapturePictureInfo& info = picture.info;
        EXPECT_EQ(info.lChannel, static_cast<int>(channel));
        EXPECT_EQ(info.lStreamIdx, static_cast<int>(MAIN));
        EXPECT_EQ(info.dwPicSize, picture.jpeg.size());
        const auto decoded = Decode(picture.jpeg);
        ASSERT_NE(decoded, nullptr) << info.sPicPath;
        EXPECT_EQ(decoded->width, channel == 1 ? 640 : 352);
        EXPECT_EQ(StampOf(*decoded).channel, channel);
        const time_t taken = Seconds(info.struCaptureTime);
        const auto shown = static_cast<time_t>(StampOf(*decoded).milliseconds / 1000);
        EXPECT_GE(shown, taken) << "the time was read before the picture was taken";
        EXPECT_LE(shown, Now());
        const _tagVexoHostMgrTime& time = info.struCaptureTime;
        char name[64];
        snprintf(name, sizeof name, "%s_CH%u_%02u%02u%02u.jpg", kind, channel - 1, time.dwHour, time.dwMinute,
                 time.dwSecond);
        EXPECT_EQ(info.sPicPath, (Folder() / name).string());
    }
};

// ---- at once -------------------------------------------------------------------------------------------------------

constexpr unsigned ROOM = 1U << 20U;

/** Takes a picture into a buffer that ends where its memory does; what is not written is #. */
int Take(int login, int channel, int stream, std::vector<char>* buffer, unsigned* size) {
    return vexo_soft::vexo_HostMgr_Dev_CapturePicture(login, channel, stream, buffer->data(),
                                                      static_cast<unsigned>(buffer->size()), size);
}

TEST_F(CaptureTest, AtOnce_IsTheChannelsPictureOfTheMoment) {
    const Session session;
    for (const int channel : {1, 2}) {
        for (const int stream : {1, 2}) {
            std::vector<char> buffer(ROOM, '#');
            unsigned size = 0;
            const time_t before = Now();
            ASSERT_EQ(Take(session.Login(), channel, stream, &buffer, &size), 0);
            const auto picture = Decode({buffer.data(), size});
            ASSERT_NE(picture, nullptr);
            EXPECT_EQ(StampOf(*picture).channel, static_cast<unsigned>(channel));
            EXPECT_GE(static_cast<time_t>(StampOf(*picture).milliseconds / 1000), before);
            EXPECT_LE(static_cast<time_t>(StampOf(*picture).milliseconds / 1000), Now());
            EXPECT_EQ(std::count(buffer.begin() + size, buffer.end(), '#'), ROOM - size);
        }
    }
}

TEST_F(CaptureTest, AtOnce_LargerThanTheBuffer_IsRefusedAndWritesNothing) {
    const Session session;
    std::vector<char> whole(ROOM);
    unsigned size = 0;
    ASSERT_EQ(Take(session.Login(), 1, 1, &whole, &size), 0);
    for (const unsigned room : {size / 2, 1U}) {
        std::vector<char> buffer(room, '#');
        unsigned returned = 77;
        EXPECT_EQ(Take(session.Login(), 1, 1, &buffer, &returned), -1);
        EXPECT_EQ(returned, 77U);
        EXPECT_EQ(buffer, std::vector<char>(room, '#'));
    }
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_CapturePicture(session.Login(), 1, 1, nullptr, 0xFFFFFFFF, &size), -1);
}

TEST_F(CaptureTest, AtOnce_WrongChannelStreamOrLogin_IsRefused) {
    const Session session;
    std::vector<char> buffer(ROOM);
    unsigned size = 77;
    for (const int channel : {-1, 0, 3, 256, 257, 0x7FFFFFFF}) {
        EXPECT_EQ(Take(session.Login(), channel, 1, &buffer, &size), -1) << channel;
    }
    for (const int stream : {-1, 0, 3}) {
        EXPECT_EQ(Take(session.Login(), 1, stream, &buffer, &size), -1) << stream;
    }
    for (const int login : {-1, 0, session.Login() + 1}) {
        EXPECT_EQ(Take(login, 1, 1, &buffer, &size), -1) << login;
    }
    EXPECT_EQ(size, 77U);
}

// ---- every second --------------------------------------------------------------------------------------------------

TEST_F(CaptureTest, EverySecond_ReportsPicturesOfTheRightChannel) {
    Album gate;
    Album yard;
    const Session session;
    const int tasks[] = {Start(session, EverySecond(), 1, &gate), Start(session, EverySecond(), 2, &yard)};
    EXPECT_EQ(tasks[0], session.Login());
    EXPECT_EQ(tasks[1], 1 << 16 | session.Login());
    ASSERT_TRUE(gate.WaitFor(3) && yard.WaitFor(3));
    EXPECT_EQ(Stop(tasks[0]), 0);
    EXPECT_EQ(Stop(tasks[1]), 0);
    std::set<std::string> paths;
    for (const Picture& picture : gate.All()) {
        EXPECT_EQ(picture.task, tasks[0]);
        ExpectPicture(picture, 1, "RT");
        EXPECT_FALSE(fs::exists(picture.info.sPicPath)) << "the task has gone with its pictures";
        paths.insert(picture.info.sPicPath);
    }
    EXPECT_EQ(paths.size(), gate.Size()) << "a second for each";
    for (const Picture& picture : yard.All()) {
        EXPECT_EQ(picture.task, tasks[1]);
        ExpectPicture(picture, 2, "RT");
        EXPECT_EQ(picture.info.dwType, HOSTMGR_CAPTURE_SECOND);
        EXPECT_EQ(picture.info.dwPicIndex, 0U);
        EXPECT_EQ(Seconds(picture.info.struTriggerTime), Seconds(picture.info.struCaptureTime));
    }
}

TEST_F(CaptureTest, EverySecond_AfterAStop_NothingIsReported) {
    Album stopped;
    Album running;
    const Session session;
    const int task = Start(session, EverySecond(), 1, &stopped);
    Start(session, EverySecond(), 2, &running);
    ASSERT_TRUE(stopped.WaitFor(1));
    EXPECT_EQ(Stop(task), 0);
    const size_t before = stopped.Size();
    ASSERT_TRUE(running.WaitFor(running.Size() + 2)) << "two passes later";
    EXPECT_EQ(stopped.Size(), before);
    EXPECT_EQ(Stop(task), -1);
}

TEST_F(CaptureTest, EverySecond_PictureThatFails_IsNotReportedAndTheNextOneIs) {
    Album album;
    const Session session;
    simulator::control::Fail("vexo_model_capture", 1, 2);
    Start(session, EverySecond(), 1, &album);
    ASSERT_TRUE(album.WaitFor(1));
    ExpectPicture(album.All()[0], 1, "RT");
}

// ---- daily ---------------------------------------------------------------------------------------------------------

TEST_F(CaptureTest, Daily_TakesPicturesAroundItsTimeAlone) {
    Album now;
    Album later;
    const Session session;
    const time_t daily = Now() + 4;
    Start(session, DailyAt(daily), 1, &now);
    Start(session, DailyAt(daily + 3600), 2, &later);
    ASSERT_TRUE(now.WaitFor(1));
    ASSERT_TRUE(PassesBeyond(session, daily + 4));
    for (const Picture& picture : now.All()) {
        ExpectPicture(picture, 1, "OT");
        EXPECT_LE(std::abs(Seconds(picture.info.struCaptureTime) - daily), 4);
    }
    EXPECT_LE(now.Size(), 9U);
    EXPECT_THAT(later.All(), IsEmpty());
}

// ---- on alarm ------------------------------------------------------------------------------------------------------

TEST_F(CaptureTest, Alarm_ReportsPicturesBeforeAndAfterItsTrigger) {
    Album album;
    Album others;
    const Session session;
    const int task = Start(session, OnAlarm(60, 1000, 3), 2, &album);
    Start(session, OnAlarm(60, 1000, 3), 1, &others);
    ASSERT_TRUE(Eventually([] { return FilesKept() >= 4; })) << "two of each";
    EXPECT_THAT(album.All(), IsEmpty()) << "no alarm yet";
    const time_t earliest = Now();
    ASSERT_EQ(Trigger(task, &album), 0);
    const time_t latest = Now();
    ASSERT_TRUE(PassesBeyond(session, latest + 3));
    const std::vector<Picture> pictures = album.All();
    ASSERT_GE(pictures.size(), 3U);
    const time_t trigger = Seconds(pictures[0].info.struTriggerTime);
    EXPECT_TRUE(earliest <= trigger && trigger <= latest);
    unsigned before = 0;
    for (unsigned index = 0; index < pictures.size(); ++index) {
        const _tagVexoCapturePictureInfo& info = pictures[index].info;
        ExpectPicture(pictures[index], 2, "AC");
        EXPECT_EQ(info.dwPicIndex, index);
        EXPECT_EQ(info.dwType, HOSTMGR_CAPTURE_ALARM);
        EXPECT_EQ(Seconds(info.struTriggerTime), trigger);
        EXPECT_LE(Seconds(info.struCaptureTime), trigger + 3);
        before += Seconds(info.struCaptureTime) < trigger ? 1 : 0;
    }
    EXPECT_GE(before, 1U);
    EXPECT_GT(pictures.size(), before) << "and after it";
    EXPECT_THAT(others.All(), IsEmpty());
    ASSERT_EQ(Trigger(task, &album), 0) << "the next alarm counts anew";
    ASSERT_TRUE(album.WaitFor(pictures.size() + 1));
    EXPECT_EQ(album.All()[pictures.size()].info.dwPicIndex, 0U);
}

TEST_F(CaptureTest, Alarm_PictureThatFails_IsReportedAsEmpty) {
    Album album;
    const Session session;
    const int task = Start(session, OnAlarm(0, 0, 100), 1, nullptr);
    simulator::control::Fail("vexo_model_capture", 1);
    ASSERT_EQ(Trigger(task, &album), 0);
    ASSERT_TRUE(album.WaitFor(2));
    EXPECT_EQ(album.All()[0].info.dwPicSize, 0U);
    EXPECT_EQ(album.All()[0].jpeg, "");
    ExpectPicture(album.All()[1], 1, "AC");
}

// ---- the folder ----------------------------------------------------------------------------------------------------

TEST_F(CaptureTest, Folder_OfAnEarlierRun_IsEmptied) {
    fs::create_directories(Folder() / "folder");
    std::ofstream(Folder() / "RT_CH7_120000.jpg") << "old";
    Album album;
    const Session session;
    Start(session, EverySecond(), 1, &album);
    ASSERT_TRUE(album.WaitFor(1));
    EXPECT_FALSE(fs::exists(Folder() / "RT_CH7_120000.jpg"));
    EXPECT_FALSE(fs::exists(Folder() / "folder"));
}

TEST_F(CaptureTest, Folder_RemovedWhileTheWorkerRuns_IsMadeAnew) {
    Album album;
    const Session session;
    const int task = Start(session, EverySecond(), 1, &album);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(album.WaitFor(album.Size() + 1));
        RemoveFolder();
        const size_t before = album.Size();
        // One may have been on its way.
        ASSERT_TRUE(album.WaitFor(before + 2));
        ExpectPicture(album.All().back(), 1, "RT");
        EXPECT_TRUE(fs::exists(album.All().back().info.sPicPath));
    }
    EXPECT_EQ(Stop(task), 0);
}

TEST_F(CaptureTest, Folder_FileInItsPlace_TakesNoPictureUntilItIsGone) {
    RemoveFolder();
    fs::create_directories(Folder().parent_path().parent_path());
    std::ofstream(Folder().parent_path()) << "in the way";
    Album album;
    const Session session;
    Start(session, EverySecond(), 1, &album);
    const time_t start = Now();
    ASSERT_TRUE(Eventually([&] { return Now() > start + 2; }));
    EXPECT_THAT(album.All(), IsEmpty());
    EXPECT_EQ(Contents(Folder().parent_path()), "in the way");
    fs::remove(Folder().parent_path());
    ASSERT_TRUE(album.WaitFor(1));
    ExpectPicture(album.All()[0], 1, "RT");
}

// ---- tables and handles --------------------------------------------------------------------------------------------

TEST_F(CaptureTest, Task577_IsRefusedUntilOneIsStopped) {
    const Session session;
    std::vector<int> tasks;
    for (unsigned i = 0; i < HOSTMGR_MAX_CAPTURE_TASKS; ++i) {
        tasks.push_back(Start(session, EverySecond(), 1, nullptr));
        EXPECT_EQ(tasks.back(), static_cast<int>(i << 16U) | session.Login());
    }
    EXPECT_EQ(Start(session, EverySecond(), 1, nullptr), -1);
    EXPECT_EQ(Stop(tasks[333]), 0);
    EXPECT_EQ(Start(session, EverySecond(), 1, nullptr), tasks[333]);
}

TEST_F(CaptureTest, StrangeHandles_AreRefused) {
    const Session session;
    const Session other;
    Album album;
    const int task = Start(session, EverySecond(), 1, &album);
    for (const int handle : {0, -1, task + (1 << 16), task | 576 << 16, task | 0x7FFF << 16, other.Login()}) {
        EXPECT_EQ(Stop(handle), -1) << handle;
        EXPECT_EQ(Trigger(handle, &album), -1) << handle;
    }
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartCapturePicture(session.Login(), 1, MAIN, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(Stop(task), 0);
}

TEST_F(CaptureTest, StrangeTasks_TakeNoPictureAndDisturbNobody) {
    Album strange;
    Album album;
    const Session session;
    _tagVexoCapturePictureCfg cfg;
    memset(static_cast<void*>(&cfg), 0xFF, sizeof cfg);
    Start(session, cfg, 1, &strange);
    cfg.dwType = HOSTMGR_CAPTURE_DAILY;
    Start(session, cfg, 1, &strange);
    for (const int channel : {0, -1, 3, 0x7FFFFFFF, static_cast<int>(0x80000000)}) {
        Start(session, EverySecond(), channel, &strange);
    }
    Start(session, EverySecond(), 2, &album);
    ASSERT_TRUE(album.WaitFor(2));
    EXPECT_THAT(strange.All(), IsEmpty());
}

// ---- many threads --------------------------------------------------------------------------------------------------

TEST_F(CaptureTest, EightThreads_StartTriggerAndStopWhileTheWorkerRuns) {
    Album album;
    Album steady;
    std::atomic<int> wrong{0};
    const Session session;
    Start(session, EverySecond(), 1, &steady);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 30; ++round) {
                const int task = Start(session, i % 2 == 0 ? OnAlarm(5, 0, 5) : EverySecond(), 1 + i % 2, &album);
                wrong += Trigger(task, &album) == 0 ? 0 : 1;
                std::this_thread::sleep_for(std::chrono::milliseconds(20 * i));
                wrong += Stop(task) == 0 ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    ASSERT_TRUE(steady.WaitFor(2));
}

}  // namespace
