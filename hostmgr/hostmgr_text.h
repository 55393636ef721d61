// Every Chinese text that the library prints or hands to the platform, readable here and GBK in the program: the
// recorder's console shows GBK. Only texts and their conversion; who prints them is each module's business.
#ifndef HOSTMGR_TEXT_H
#define HOSTMGR_TEXT_H

#include <stddef.h>
#include <stdint.h>

/** A character and its GBK code, lead byte first. */
struct HostMgrGbkCode {
    char32_t character;
    uint16_t code;
};

// Characters that the texts below use, in Unicode order. A text with a character that is missing here does not compile.
constexpr HostMgrGbkCode HOSTMGR_GBK_CODES[] = {
    {U'下', 0xCFC2}, {U'不', 0xB2BB}, {U'中', 0xD6D0}, {U'主', 0xD6F7}, {U'于', 0xD3DA}, {U'件', 0xBCFE},
    {U'信', 0xD0C5}, {U'倒', 0xB5B9}, {U'停', 0xCDA3}, {U'关', 0xB9D8}, {U'前', 0xC7B0}, {U'动', 0xB6AF},
    {U'印', 0xD3A1}, {U'取', 0xC8A1}, {U'句', 0xBEE4}, {U'台', 0xCCA8}, {U'号', 0xBAC5}, {U'向', 0xCFF2},
    {U'否', 0xB7F1}, {U'启', 0xC6F4}, {U'回', 0xBBD8}, {U'块', 0xBFE9}, {U'型', 0xD0CD}, {U'处', 0xB4A6},
    {U'始', 0xCABC}, {U'子', 0xD7D3}, {U'对', 0xB6D4}, {U'帧', 0xD6A1}, {U'平', 0xC6BD}, {U'库', 0xBFE2},
    {U'度', 0xB6C8}, {U'开', 0xBFAA}, {U'式', 0xCABD}, {U'当', 0xB5B1}, {U'录', 0xC2BC}, {U'态', 0xCCAC},
    {U'息', 0xCFA2}, {U'户', 0xBBA7}, {U'打', 0xB4F2}, {U'报', 0xB1A8}, {U'据', 0xBEDD}, {U'播', 0xB2A5},
    {U'放', 0xB7C5}, {U'数', 0xCAFD}, {U'文', 0xCEC4}, {U'断', 0xB6CF}, {U'方', 0xB7BD}, {U'无', 0xCEDE},
    {U'时', 0xCAB1}, {U'是', 0xCAC7}, {U'暂', 0xD4DD}, {U'未', 0xCEB4}, {U'束', 0xCAF8}, {U'柄', 0xB1FA},
    {U'查', 0xB2E9}, {U'模', 0xC4A3}, {U'正', 0xD5FD}, {U'殊', 0xCAE2}, {U'流', 0xC1F7}, {U'源', 0xD4B4},
    {U'点', 0xB5E3}, {U'特', 0xCCD8}, {U'状', 0xD7B4}, {U'用', 0xD3C3}, {U'登', 0xB5C7}, {U'的', 0xB5C4},
    {U'知', 0xD6AA}, {U'码', 0xC2EB}, {U'类', 0xC0E0}, {U'结', 0xBDE1}, {U'置', 0xD6C3}, {U'节', 0xBDDA},
    {U'行', 0xD0D0}, {U'表', 0xB1ED}, {U'视', 0xCAD3}, {U'览', 0xC0C0}, {U'警', 0xBEAF}, {U'讲', 0xBDB2},
    {U'设', 0xC9E8}, {U'诊', 0xD5EF}, {U'询', 0xD1AF}, {U'读', 0xB6C1}, {U'资', 0xD7CA}, {U'载', 0xD4D8},
    {U'运', 0xD4CB}, {U'通', 0xCDA8}, {U'速', 0xCBD9}, {U'道', 0xB5C0}, {U'链', 0xC1B4}, {U'闭', 0xB1D5},
    {U'间', 0xBCE4}, {U'音', 0xD2F4}, {U'预', 0xD4A4}, {U'频', 0xC6B5},
};

/** Declared only, and not constexpr: a text that gets here does not compile. */
uint16_t HostMgrCharacterMissingInGbkCodes(char32_t character);

constexpr uint16_t HostMgrGbkCodeOf(char32_t character) {
    for (const HostMgrGbkCode& entry : HOSTMGR_GBK_CODES) {
        if (entry.character == character)
            return entry.code;
    }
    return HostMgrCharacterMissingInGbkCodes(character);
}

/** A text in GBK, NUL-terminated; no longer than the UTF-8 text it came from. */
template <size_t Size>
struct HostMgrGbkText {
    char bytes[Size];
};

/** Converts a text of ASCII and three-byte UTF-8 characters, at compile time. */
template <size_t Size>
constexpr HostMgrGbkText<Size> HostMgrToGbk(const char (&utf8)[Size]) {
    HostMgrGbkText<Size> gbk = {};
    size_t to = 0;
    for (size_t from = 0; from + 1 < Size;) {
        const unsigned char lead = static_cast<unsigned char>(utf8[from]);
        if (lead < 0x80) {
            gbk.bytes[to++] = utf8[from++];
            continue;
        }
        const char32_t character = (lead & 0x0Fu) << 12 | (static_cast<unsigned char>(utf8[from + 1]) & 0x3Fu) << 6 |
                                   (static_cast<unsigned char>(utf8[from + 2]) & 0x3Fu);
        const uint16_t code = HostMgrGbkCodeOf(character);
        gbk.bytes[to++] = static_cast<char>(code >> 8);
        gbk.bytes[to++] = static_cast<char>(code & 0xFF);
        from += 3;
    }
    return gbk;
}

// One object for the whole library: the platform keeps the title and the menu by pointer.
#define HOSTMGR_TEXT(name, utf8)                           \
    inline constexpr auto name##_GBK = HostMgrToGbk(utf8); \
    inline constexpr const char* name = name##_GBK.bytes

// ---- diagnostics menu ----------------------------------------------------------------------------------------------

HOSTMGR_TEXT(TEXT_DIAG_TITLE, "诊断 hostmgr 资源");
HOSTMGR_TEXT(TEXT_DIAG_MENU,
             "<1000 平台库登录信息\n"
             "<2000 打印预览信息\n"
             "<3000 打印回放信息\n"
             "<4000 打印文件查询信息\n"
             "<5000 打印对讲信息\n"
             "<6000 打印报警信息\n");
HOSTMGR_TEXT(TEXT_DIAG_LOGINS, "平台登录信息:\n");
HOSTMGR_TEXT(TEXT_DIAG_LIVE, "预览信息:\n");
HOSTMGR_TEXT(TEXT_DIAG_PLAYBACK, "回放信息:\n");
HOSTMGR_TEXT(TEXT_DIAG_QUERY, "文件查询信息:\n");
HOSTMGR_TEXT(TEXT_DIAG_TALK, "对讲信息:\n");
HOSTMGR_TEXT(TEXT_DIAG_ALARM, "报警信息:\n");

// ---- live view dump ------------------------------------------------------------------------------------------------

HOSTMGR_TEXT(TEXT_LIVE_STREAM, "流数据信息:");
HOSTMGR_TEXT(TEXT_LIVE_NO_SIGNAL, "当前帧%s无视频信号\n");
HOSTMGR_TEXT(TEXT_IS, "是");
HOSTMGR_TEXT(TEXT_IS_NOT, "不是");
HOSTMGR_TEXT(TEXT_LIVE_VIDEO_FRAME, "当前读取的视频帧帧信息:帧号 %d\n");
HOSTMGR_TEXT(TEXT_LIVE_AUDIO_STATE, "当前通道音频处于%s状态\n");
HOSTMGR_TEXT(TEXT_OPEN, "打开");
HOSTMGR_TEXT(TEXT_CLOSED, "关闭");
HOSTMGR_TEXT(TEXT_LIVE_AUDIO_FRAME, "当前读取的音频帧帧信息:帧号 %d\n");
HOSTMGR_TEXT(TEXT_LIVE_MAIN_LIST, "Remote 模块主码流信息:\n");
HOSTMGR_TEXT(TEXT_LIVE_SUB_LIST, "Remote 模块子码流信息:\n");

// ---- playback dump -------------------------------------------------------------------------------------------------

HOSTMGR_TEXT(TEXT_PLAY_RUN_STATE, "当前运行状态是:%s\n");
HOSTMGR_TEXT(TEXT_STARTED, "启动");
HOSTMGR_TEXT(TEXT_NOT_STARTED, "未启动");
HOSTMGR_TEXT(TEXT_PLAY_PAUSED, "当前播放状态是:暂停\n");
HOSTMGR_TEXT(TEXT_PLAY_PLAYING, "当前播放状态是:播放中\n");
HOSTMGR_TEXT(TEXT_PLAY_UNKNOWN, "当前播放状态是:未知\n");
HOSTMGR_TEXT(TEXT_PLAY_DIRECTION, "当前播放方向是:%s\n");
HOSTMGR_TEXT(TEXT_REVERSE, "倒放");
HOSTMGR_TEXT(TEXT_FORWARD, "正放");
HOSTMGR_TEXT(TEXT_PLAY_SPEED, "当前播放速度是:%d\n");
HOSTMGR_TEXT(TEXT_PLAY_AUDIO, "当前播放是否播放音频:%s\n");
HOSTMGR_TEXT(TEXT_NO, "否");
HOSTMGR_TEXT(TEXT_PLAY_LIST, "当前回放链表信息:\n");
HOSTMGR_TEXT(TEXT_PLAY_NODES, "回放节点数:%d\n");
HOSTMGR_TEXT(TEXT_PLAY_START_TIME, "回放开始时间:%04d-%02d-%02d %02d:%02d:%02d\n");
HOSTMGR_TEXT(TEXT_PLAY_STOP_TIME, "回放结束时间:%04d-%02d-%02d %02d:%02d:%02d\n");
HOSTMGR_TEXT(TEXT_PLAY_CURRENT_TIME, "回放当前时间:%04d-%02d-%02d %02d:%02d:%02d\n");
HOSTMGR_TEXT(TEXT_PLAY_LOGIN, "用户句柄:0x%x\n");
HOSTMGR_TEXT(TEXT_PLAY_CHANNEL, "通道:%d\n");
HOSTMGR_TEXT(TEXT_PLAY_MODE, "模式:%s\n");
HOSTMGR_TEXT(TEXT_DOWNLOAD_MODE, "下载模式");
HOSTMGR_TEXT(TEXT_PLAYBACK_MODE, "回放模式");
HOSTMGR_TEXT(TEXT_PLAY_STREAM, "流类型:%s\n");
HOSTMGR_TEXT(TEXT_MAIN_STREAM, "主码流");
HOSTMGR_TEXT(TEXT_SUB_STREAM, "子码流");

// ---- alarm dump ----------------------------------------------------------------------------------------------------

HOSTMGR_TEXT(TEXT_ALARM_STATE, "报警启动状态:%s\n");
HOSTMGR_TEXT(TEXT_ALARM_SETTINGS,
             "报警设置信息:用户句柄 0x%x, 通道 %d, 报警流类型 %s, 报警模式 %d(1 用户 2 通道 3 特殊)\n");

#endif
