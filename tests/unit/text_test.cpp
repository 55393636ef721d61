// The Chinese texts: each is, in GBK, what a reader of this file sees.
#include "hostmgr_text.h"

#include "test_support.h"

struct ChineseText {
    const char* name;
    const char* gbk;
    const char* utf8;
};

static void PrintTo(const ChineseText& text, std::ostream* out) {
    *out << text.name;
}

static const ChineseText TEXTS[] = {
    {"DiagTitle", TEXT_DIAG_TITLE, "诊断 hostmgr 资源"},
    {"DiagMenu", TEXT_DIAG_MENU,
     "<1000 平台库登录信息\n<2000 打印预览信息\n<3000 打印回放信息\n<4000 打印文件查询信息\n<5000 打印对讲信息\n"
     "<6000 打印报警信息\n"},
    {"DiagLogins", TEXT_DIAG_LOGINS, "平台登录信息:\n"},
    {"DiagLive", TEXT_DIAG_LIVE, "预览信息:\n"},
    {"DiagPlayback", TEXT_DIAG_PLAYBACK, "回放信息:\n"},
    {"DiagQuery", TEXT_DIAG_QUERY, "文件查询信息:\n"},
    {"DiagTalk", TEXT_DIAG_TALK, "对讲信息:\n"},
    {"DiagAlarm", TEXT_DIAG_ALARM, "报警信息:\n"},
    {"LiveStream", TEXT_LIVE_STREAM, "流数据信息:"},
    {"LiveNoSignal", TEXT_LIVE_NO_SIGNAL, "当前帧%s无视频信号\n"},
    {"Is", TEXT_IS, "是"},
    {"IsNot", TEXT_IS_NOT, "不是"},
    {"LiveVideoFrame", TEXT_LIVE_VIDEO_FRAME, "当前读取的视频帧帧信息:帧号 %d\n"},
    {"LiveAudioState", TEXT_LIVE_AUDIO_STATE, "当前通道音频处于%s状态\n"},
    {"Open", TEXT_OPEN, "打开"},
    {"Closed", TEXT_CLOSED, "关闭"},
    {"LiveAudioFrame", TEXT_LIVE_AUDIO_FRAME, "当前读取的音频帧帧信息:帧号 %d\n"},
    {"LiveMainList", TEXT_LIVE_MAIN_LIST, "Remote 模块主码流信息:\n"},
    {"LiveSubList", TEXT_LIVE_SUB_LIST, "Remote 模块子码流信息:\n"},
};

class Text : public testing::TestWithParam<ChineseText> {};

TEST_P(Text, InTheProgram_IsGbk) {
    EXPECT_EQ(Utf8(GetParam().gbk), GetParam().utf8);
}

// Not only decodable: the very bytes that the recorder's console expects.
TEST_P(Text, InTheProgram_HasTheBytesOfItsReading) {
    EXPECT_EQ(GetParam().gbk, Gbk(GetParam().utf8));
}

INSTANTIATE_TEST_SUITE_P(Each, Text, testing::ValuesIn(TEXTS), ByName());
