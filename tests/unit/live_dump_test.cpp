// Live view in the diagnostics: what is printed of each stream buffer.
#include <string.h>

#include "hostmgr_dev.h"
#include "platform_mock.h"

using testing::_;
using testing::ElementsAre;
using testing::Return;
using namespace vexo_soft;

static const std::string STARS = "******************************************\n";

class LiveDump : public HostMgrTest {
protected:
    LiveDump() {
        hLogin = Login(0x12);
        ON_CALL(platform, vexo_rmta_dump_frame_list(_, _, _))
            .WillByDefault([](unsigned int, vexo_enc_str_type, vexo_print_func print) { print("frame list\n"); });
    }

    int Create(unsigned int channel, unsigned int stream) {
        const int hID = vexo_HostMgr_Dev_CreateRealStreamBuffer(hLogin, channel, stream);
        platform.TakeCalls();
        return hID;
    }

    /** Has the next read of either kind give a frame of that number. */
    void GiveFrames(unsigned int number, VEXO_BOOL noVideo) {
        frame.frame_no = number;
        ON_CALL(platform, vexo_model_first_get_frame(_, _, _, _, _, _))
            .WillByDefault([this, noVideo](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** given,
                                           vexo_read_av_list_note*, VEXO_BOOL* flag) {
                *given = reinterpret_cast<unsigned char*>(&frame);
                *flag = noVideo;
                return 0;
            });
    }

    void Read(int hID) {
        unsigned int channel, stream, length, info, flags;
        unsigned char* given;
        ASSERT_EQ(vexo_HostMgr_Dev_ReadRealOneFrame(hID, &channel, &stream, &given, &length, &info, &flags), 0);
    }

    /** What the live range prints between heading and tags, in UTF-8. */
    std::string Dump() {
        platform.TakeCalls();
        platform.Diagnostics().client->diagnose(1000, CollectPrint);
        const std::string printed = Utf8(TakePrinted());
        const std::string before = "预览信息:\n<Host_0>\n";
        const std::string after = "</Host_0>\n";
        EXPECT_THAT(printed, testing::StartsWith(before));
        EXPECT_THAT(printed, testing::EndsWith(after));
        return printed.substr(before.size(), printed.size() - before.size() - after.size());
    }

    int hLogin;
    vexo_frame_header frame = {};
};

TEST_F(LiveDump, WithoutBuffers_PrintsNothing) {
    EXPECT_EQ(Dump(), "");
}

TEST_F(LiveDump, FreshMainStreamBuffer_IsPrinted) {
    Create(3, 1);
    EXPECT_EQ(Dump(), STARS +
                          "流数据信息:[0]Login 0x12, Channel 3, StreamType 0x1\n"
                          "当前帧不是无视频信号\n"
                          "当前读取的视频帧帧信息:帧号 0\n"
                          "当前通道音频处于打开状态\n"
                          "当前读取的音频帧帧信息:帧号 0\n"
                          "Remote 模块主码流信息:\n"
                          "frame list\n" +
                          STARS);
}

TEST_F(LiveDump, SubStreamBuffer_NamesTheSubStream) {
    Create(4, 2);
    EXPECT_EQ(Dump(), STARS +
                          "流数据信息:[0]Login 0x12, Channel 4, StreamType 0x2\n"
                          "当前帧不是无视频信号\n"
                          "当前读取的视频帧帧信息:帧号 0\n"
                          "当前通道音频处于打开状态\n"
                          "当前读取的音频帧帧信息:帧号 0\n"
                          "Remote 模块子码流信息:\n"
                          "frame list\n" +
                          STARS);
}

TEST_F(LiveDump, AfterReadingVideoAndAudio_ShowsTheirFrameNumbers) {
    const int hID = Create(3, 1);
    GiveFrames(700, VEXO_FALSE);
    Read(hID);
    GiveFrames(41, VEXO_FALSE);
    Read(hID);
    EXPECT_EQ(Dump(), STARS +
                          "流数据信息:[0]Login 0x12, Channel 3, StreamType 0x1\n"
                          "当前帧不是无视频信号\n"
                          "当前读取的视频帧帧信息:帧号 700\n"
                          "当前通道音频处于打开状态\n"
                          "当前读取的音频帧帧信息:帧号 41\n"
                          "Remote 模块主码流信息:\n"
                          "frame list\n" +
                          STARS);
}

TEST_F(LiveDump, WithoutVideoSignal_LeavesTheVideoFrameOut) {
    const int hID = Create(3, 1);
    GiveFrames(700, VEXO_TRUE);
    Read(hID);
    EXPECT_EQ(Dump(), STARS +
                          "流数据信息:[0]Login 0x12, Channel 3, StreamType 0x1\n"
                          "当前帧是无视频信号\n"
                          "当前通道音频处于打开状态\n"
                          "当前读取的音频帧帧信息:帧号 0\n"
                          "Remote 模块主码流信息:\n"
                          "frame list\n" +
                          STARS);
}

TEST_F(LiveDump, WithAudioOff_LeavesTheAudioFrameOut) {
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(Create(3, 1), 0);
    EXPECT_EQ(Dump(), STARS +
                          "流数据信息:[0]Login 0x12, Channel 3, StreamType 0x1\n"
                          "当前帧不是无视频信号\n"
                          "当前读取的视频帧帧信息:帧号 0\n"
                          "当前通道音频处于关闭状态\n"
                          "Remote 模块主码流信息:\n"
                          "frame list\n" +
                          STARS);
}

// Reading wants exactly 1; the dump takes any other value but 0 for on.
TEST_F(LiveDump, WithAudioAtTwo_CallsItOn) {
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(Create(3, 1), 2);
    EXPECT_THAT(Dump(), testing::HasSubstr("当前通道音频处于打开状态\n当前读取的音频帧帧信息:帧号 0\n"));
}

TEST_F(LiveDump, SeveralBuffers_ArePrintedInSlotOrder) {
    Create(3, 1);
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(Create(5, 1));
    Create(7, 2);
    Create(8, 1);
    const std::string printed = Dump();
    EXPECT_THAT(printed, testing::ContainsRegex("\\[0\\]Login 0x12, Channel 3, StreamType 0x1(\n|.)*"
                                                "\\[1\\]Login 0x12, Channel 7, StreamType 0x2(\n|.)*"
                                                "\\[2\\]Login 0x12, Channel 8, StreamType 0x1"));
    EXPECT_THAT(printed, testing::Not(testing::HasSubstr("Channel 5")));
}

TEST_F(LiveDump, BufferOfChannelZero_IsNotPrinted) {
    ASSERT_GT(Create(0, 1), 0);
    EXPECT_EQ(Dump(), "");
}

TEST_F(LiveDump, FrameLists_ArePrintedUnderTheLockByChannelAndType) {
    Create(3, 1);
    Create(256, 2);
    Dump();
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAre("rd_trylock(vexo_hostmgr_lv, vexo_hostmgr_lv, HostMgrLiveDump)", "vexo_rmta_dump_frame_list(2, 1)",
                    "vexo_rmta_dump_frame_list(255, 2)", "unlock(vexo_hostmgr_lv, vexo_hostmgr_lv, HostMgrLiveDump)"));
}

// ---- busy lock -----------------------------------------------------------------------------------------------------

class BusyLiveDump : public LiveDump {
protected:
    BusyLiveDump() {
        Create(3, 1);
        ON_CALL(platform.RwLock("vexo_hostmgr_lv"), rd_trylock(_, _)).WillByDefault(Return(1));
    }

    void GiveInfo(const std::string& info) {
        ON_CALL(platform.RwLock("vexo_hostmgr_lv"), get_info(_, _))
            .WillByDefault([this, info](char* buffer, unsigned int size) {
                platform.Record("get_info of " + std::to_string(size));
                memcpy(buffer, info.data(), info.size());
                return 0;
            });
    }
};

TEST_F(BusyLiveDump, PrintsWhoHoldsTheLock) {
    GiveInfo("thread 5 in HostMgr_Dev_ReadRealOneFrame");
    EXPECT_EQ(Dump(), "rd_trylock fail, lock info is 'thread 5 in HostMgr_Dev_ReadRealOneFrame'\n");
}

TEST_F(BusyLiveDump, AsksForTheInformationAndDoesNotUnlock) {
    GiveInfo("thread 5");
    Dump();
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("get_info of 256"));
}

TEST_F(BusyLiveDump, InformationThatFillsTheBuffer_IsTerminated) {
    GiveInfo(std::string(256, 'x'));
    EXPECT_EQ(Dump(), "rd_trylock fail, lock info is '" + std::string(255, 'x') + "'\n");
}

TEST_F(BusyLiveDump, NoInformation_IsEmpty) {
    EXPECT_EQ(Dump(), "rd_trylock fail, lock info is ''\n");
}

// Held for real by a reader of frames: the dump neither waits nor takes it.
TEST_F(LiveDump, WhileAFrameIsRead_PrintsTheLockInformation) {
    const int hID = Create(3, 1);
    std::string printed;
    ON_CALL(platform, vexo_model_first_get_frame(_, _, _, _, _, _))
        .WillByDefault([&, this](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** given,
                                 vexo_read_av_list_note*, VEXO_BOOL*) {
            std::thread([&] { printed = Dump(); }).join();
            *given = reinterpret_cast<unsigned char*>(&frame);
            return 0;
        });
    Read(hID);
    EXPECT_EQ(printed, "rd_trylock fail, lock info is ''\n");
}
