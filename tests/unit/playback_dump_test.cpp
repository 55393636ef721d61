// What the diagnostics print of a login's playback, whole and decoded, in every state.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

static const std::string LINE = "--------------------------------\n";

class PlayDump : public PlaybackFixture {};

TEST_F(PlayDump, NeverStarted) {
    EXPECT_EQ(Dump(), LINE + "当前运行状态是:未启动\n" + LINE);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre(OnPlay("rd_trylock", "HostMgrPlaybackDump"), OnPlay("unlock", "HostMgrPlaybackDump")));
}

TEST_F(PlayDump, EachPiece_IsALine) {
    PlayV2();
    TakePieces();
    play->HostMgrPlaybackDump(2000, CollectPrint);
    for (const std::string& piece : TakePieces())
        EXPECT_EQ(piece.find('\n'), piece.size() - 1) << piece;
}

TEST_F(PlayDump, Started_BeforeTheFirstSpeed) {
    RawConsole([this] { Start(); });
    EXPECT_EQ(Dump(), LINE +
                          "当前运行状态是:启动\n"
                          "当前播放状态是:未知\n"
                          "当前播放方向是:正放\n"
                          "当前播放速度是:0\n"
                          "当前播放是否播放音频:否\n" +
                          LINE);
}

TEST_F(PlayDump, Paused) {
    Play();
    Control(HOSTMGR_PLAYCMD_PAUSE, 2);
    EXPECT_EQ(Dump(), LINE +
                          "当前运行状态是:启动\n"
                          "当前播放状态是:暂停\n" +
                          LINE);
}

TEST_F(PlayDump, PausedBeforeTheFirstSpeed) {
    RawConsole([this] { Start(); });
    Control(HOSTMGR_PLAYCMD_PAUSE, 1);
    EXPECT_EQ(Dump(), LINE +
                          "当前运行状态是:启动\n"
                          "当前播放状态是:暂停\n" +
                          LINE);
}

TEST_F(PlayDump, Playing_AReaderPlayOfTwoChannels) {
    PlayV2(1);
    RawConsole([this] {
        Control(HOSTMGR_PLAYCMD_DIRECTION, 1);
        Speed(-4);
        Control(HOSTMGR_PLAYCMD_AUDIO, 9);
        Start(256, 2);
        Control(HOSTMGR_PLAYCMD_STREAMTYPE, 256, 2);
        Seek({2023, 2, 3, 4, 5, 6, 7});
    });
    EXPECT_EQ(Dump(), LINE +
                          "当前运行状态是:启动\n"
                          "当前播放状态是:播放中\n"
                          "当前播放方向是:倒放\n"
                          "当前播放速度是:-4\n"
                          "当前播放是否播放音频:是\n" +
                          LINE +
                          "当前回放链表信息:\n"
                          "回放节点数:2\n"
                          "回放开始时间:2024-07-05 12:00:00\n"
                          "回放结束时间:2024-07-05 13:00:00\n"
                          "回放当前时间:2023-02-03 04:05:06\n"
                          "[1]:\n"
                          "用户句柄:0x501\n"
                          "通道:0\n"
                          "模式:回放模式\n"
                          "流类型:主码流\n"
                          "[2]:\n"
                          "用户句柄:0x501\n"
                          "通道:255\n"
                          "模式:下载模式\n"
                          "流类型:子码流\n" +
                          LINE);
}

TEST_F(PlayDump, PlayingWithoutChannels) {
    PlayV2();
    Control(HOSTMGR_PLAYCMD_DELCHAN, 1);
    EXPECT_EQ(Dump(), LINE +
                          "当前运行状态是:启动\n"
                          "当前播放状态是:播放中\n"
                          "当前播放方向是:正放\n"
                          "当前播放速度是:1\n"
                          "当前播放是否播放音频:否\n" +
                          LINE +
                          "当前回放链表信息:\n"
                          "回放节点数:0\n" +
                          LINE);
}

TEST_F(PlayDump, Stopped) {
    Play();
    Stop();
    EXPECT_EQ(Dump(), LINE + "当前运行状态是:未启动\n" + LINE);
}

TEST_F(PlayDump, Busy_PrintsTheLocksOwnText) {
    MockLock& lock = platform.Lock(PLAY_LOCK);
    ON_CALL(lock, get_info).WillByDefault([](char* buffer, unsigned int size) {
        EXPECT_EQ(size, 256u);
        memset(buffer, 'x', size);
        return 0;
    });
    lock.lock("test", "test");
    platform.TakeCalls();
    std::thread([this] { EXPECT_EQ(Dump(), "trylock fail, lock info is '" + std::string(255, 'x') + "'\n"); }).join();
    EXPECT_THAT(platform.TakeCalls(), ElementsAre(OnPlay("rd_trylock", "HostMgrPlaybackDump")));
    lock.unlock("test", "test");
}
