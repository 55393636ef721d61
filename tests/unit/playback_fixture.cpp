#include "playback_fixture.h"

using testing::_;

PlaybackFixture::PlaybackFixture() {
    SetTimeZone("UTC");
    SetClock(CLOCK, 0);
    SetReaders();
    SetThreads();
    play = std::make_unique<vexo_hostmgr_playback>();
    platform.TakeCalls();
}

PlaybackFixture::~PlaybackFixture() {
    RawConsole([this] { play.reset(); });
}

// ---- the recorder --------------------------------------------------------------------------------------------------

int PlaybackFixture::Inquire(unsigned int channel, vexo_rec_file_inquiry_result** result) {
    if (inquiryResult != 0)
        return inquiryResult;
    std::lock_guard<std::mutex> guard(m_guard);
    m_files.push_back({channel, {0, 0}, nullptr});
    *result = &m_files.back();
    m_live_files.insert(*result);
    return 0;
}

void PlaybackFixture::SetReaders() {
    ON_CALL(platform, vexo_model_inquiry_rec_by_time)
        .WillByDefault([this](unsigned int, vexo_user_id, unsigned int channel, const vexo_time_struct*,
                              const vexo_time_struct*, unsigned int, unsigned int,
                              vexo_rec_file_inquiry_result** result) { return Inquire(channel, result); });
    ON_CALL(platform, vexo_model_free_inquiry_rec_result).WillByDefault([this](vexo_rec_file_inquiry_result* result) {
        std::lock_guard<std::mutex> guard(m_guard);
        EXPECT_EQ(m_live_files.erase(result), 1u) << "a list of files is freed that is not held";
    });
    ON_CALL(platform, vexo_model_new_avss_reader)
        .WillByDefault([this](vexo_user_id, const char*) -> vexo_avss_file_reader* {
            std::lock_guard<std::mutex> guard(m_guard);
            if (noReader)
                return nullptr;
            m_readers.emplace_back(platform, "reader" + std::to_string(m_readers.size() + 1));
            return &m_readers.back();
        });
    ON_CALL(platform, vexo_model_delete_avss_reader)
        .WillByDefault([](vexo_avss_file_reader* reader, const char*, const char*) {
            EXPECT_FALSE(static_cast<TestReader*>(reader)->deleted.exchange(true)) << "a reader is deleted twice";
        });
    ON_CALL(platform, vexo_model_new_advance_avss_reader)
        .WillByDefault([this](vexo_user_id, const char*) -> vexo_advance_avss_file_reader* {
            std::lock_guard<std::mutex> guard(m_guard);
            if (noAdvanceReader)
                return nullptr;
            m_advances.emplace_back(platform, "advance" + std::to_string(m_advances.size() + 1));
            return &m_advances.back();
        });
    ON_CALL(platform, vexo_model_delete_advance_avss_reader)
        .WillByDefault([](vexo_advance_avss_file_reader* reader, const char*, const char*) {
            static_cast<TestAdvanceReader*>(reader)->Delete();
        });
}

void PlaybackFixture::SetThreads() {
    ON_CALL(platform, vexo_utility_creat_thread)
        .WillByDefault([this](const vexo_thread_creat_ctl* ctl, const char*, unsigned long* id) {
            *id = threads.Create(*ctl);
            return 0;
        });
    ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault([this](unsigned long id) {
        threads.Join(id);
        return 0;
    });
    ON_CALL(platform, vexo_utility_sleep_ms).WillByDefault([this](unsigned int) { threads.Sleep(); });
}

TestReader& PlaybackFixture::Reader(size_t number) {
    std::lock_guard<std::mutex> guard(m_guard);
    return *std::next(m_readers.begin(), static_cast<long>(number - 1));
}

TestAdvanceReader& PlaybackFixture::Advance(size_t number) {
    std::lock_guard<std::mutex> guard(m_guard);
    return *std::next(m_advances.begin(), static_cast<long>(number - 1));
}

unsigned char* PlaybackFixture::Frame(unsigned int number, unsigned int type, long stamp_ms, unsigned int payload) {
    std::lock_guard<std::mutex> guard(m_guard);
    m_frames.emplace_back(number, type, stamp_ms, payload);
    return m_frames.back().Address();
}

void PlaybackFixture::ExpectNothingHeld() {
    std::lock_guard<std::mutex> guard(m_guard);
    for (const TestReader& reader : m_readers)
        EXPECT_TRUE(reader.deleted) << reader.Name();
    for (const TestAdvanceReader& advance : m_advances)
        EXPECT_TRUE(advance.Deleted());
    EXPECT_TRUE(m_live_files.empty());
    EXPECT_THAT(platform.LiveMemory(), testing::IsEmpty());
    EXPECT_THAT(platform.HeldLocks(), testing::IsEmpty());
}

Lines PlaybackFixture::NodeFreed(const std::string& reader, const std::string& advance) {
    Lines calls = {reader + ".close()"};
    if (!advance.empty())
        calls.push_back(advance + ".remove_reader(" + reader + ")");
    return Joined({calls,
                   {reader + ".close()", "vexo_model_delete_avss_reader(vexo_hostmgr_playback, HostMgrFreePlayNode)",
                    "vexo_model_free_inquiry_rec_result()",
                    "vexo_utility_free(vexo_hostmgr_playback, HostMgrFreePlayNode, 0x80003)"}});
}

// ---- operations ----------------------------------------------------------------------------------------------------

int PlaybackFixture::Start(int lChannel, unsigned int dwMode, int hLogin) {
    _tagVexoHostMgrTime start = HostTime(12, 0, 0, 77);
    _tagVexoHostMgrTime stop = HostTime(13, 0, 0, 88);
    return play->HostMgr_Dev_StartHistoryPlay(hLogin, lChannel, dwMode, &start, &stop);
}

int PlaybackFixture::StartV2(int lChannel, int hLogin) {
    _tagVexoHostMgrTime start = HostTime(12, 0, 0, 77);
    _tagVexoHostMgrTime stop = HostTime(13, 0, 0, 88);
    return play->HostMgr_Dev_StartHistoryPlayV2(hLogin, lChannel, 1, &start, &stop, Receiver::StreamV2, &receiver);
}

int PlaybackFixture::Stop(int hLogin) {
    return play->HostMgr_Dev_StopHistoryPlay(hLogin, 0);
}

int PlaybackFixture::Receive(int hStream) {
    return play->HostMgr_Dev_SetHistoryStreamCallback(LOGIN, hStream, Receiver::Stream, &receiver);
}

int PlaybackFixture::Control(HostMgrPlayCtrlParam* param) {
    return play->HostMgrHistoryStreamPlayControl(LOGIN, 0, 0, nullptr, 0, param, sizeof(*param), nullptr, 0);
}

int PlaybackFixture::Control(uint32_t command, uint32_t param, uint32_t param2) {
    HostMgrPlayCtrlParam words = {};
    words.dwPlayCmd = command;
    words.dwParam = param;
    words.dwParam2 = param2;
    return Control(&words);
}

int PlaybackFixture::Seek(const _tagVexoHostMgrTime& time) {
    HostMgrPlayCtrlParam words = {};
    words.dwPlayCmd = HOSTMGR_PLAYCMD_SEEK;
    words.struTime = time;
    return Control(&words);
}

_tagVexoHostMgrTime PlaybackFixture::TimeOf(uint32_t selector) {
    HostMgrPlayCtrlParam words = {};
    words.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    words.dwParam = selector;
    RawConsole([&] { EXPECT_EQ(Control(&words), 0); });
    return words.struTime;
}

int PlaybackFixture::Play(int lChannel, unsigned int dwMode) {
    int hStream = -1;
    RawConsole([&] {
        hStream = Start(lChannel, dwMode);
        EXPECT_EQ(Receive(hStream), 0);
        EXPECT_EQ(Speed(1), 0);
    });
    platform.TakeCalls();
    return hStream;
}

int PlaybackFixture::PlayV2(int lChannel) {
    int hStream = -1;
    RawConsole([&] {
        hStream = StartV2(lChannel);
        EXPECT_EQ(Speed(1), 0);
    });
    platform.TakeCalls();
    return hStream;
}

Lines PlaybackFixture::At(long milliseconds) {
    SetClock(CLOCK + milliseconds / 1000, milliseconds % 1000 * 1000);
    RawConsole([this] { threads.Step(threads.Count()); });
    return receiver.Take();
}

std::string PlaybackFixture::Dump() {
    TakePieces();
    play->HostMgrPlaybackDump(2000, CollectPrint);
    return Utf8(TakePrinted());
}
