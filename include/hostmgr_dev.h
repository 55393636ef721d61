// The public interface of libhostmgr.so, complete: exported functions, callback types, caller-visible records, numbers.
// An agent needs this header and the library, nothing else. What the library asks of the recorder's own libraries does
// not belong here (see platform/), nor does anything that only one side of the boundary can see.
#ifndef HOSTMGR_DEV_H
#define HOSTMGR_DEV_H

#include <stddef.h>
#include <stdint.h>

/**
 * @file
 * The host manager: drives a network video recorder on behalf of a management platform's agent.
 *
 * @par Start
 * Call vexo_soft::vexo_HostMgr_Dev_init() once, then log in; everything else needs the login handle. There is no
 * shutdown: the library stays loaded, and its alarm thread runs, until the process ends.
 *
 * @par Handles
 * - login, `hLogin` (Login, LoginV2): the recorder's own login id, 1 to 0xFFFF.
 * - stream buffer, `hID` (CreateRealStreamBuffer): buffer 0 to 127 in the high 16 bits, login in the low 16 bits.
 * - zero channel, `lZeroCodecHandle` (StartZeroCodec): the login's low 16 bits; one stream a login.
 * - capture task, `hCapture` (StartCapturePicture): task 0 to 575 in the high 16 bits, login in the low 16 bits.
 * - playback channel, `hStream` (StartHistoryPlay, -V2): login in the HIGH 16 bits, channel from 1 in the low 16 bits.
 * - talk, `hTalk` (StartTalk, StartTalkEx): the recorder's own talk handle.
 *
 * Functions that take `hID`, `lZeroCodecHandle` or `hCapture` find the login by the low 16 bits. The buffer or task 0
 * of a login has the login handle itself as its handle. An `hStream` of a login of 0x8000 or above is a negative
 * number: test results against -1, not against "less than 0"; such a stream cannot be given a callback.
 *
 * @par Results
 * A result of type int is 0 or a positive value (a handle, a count) on success and -1 on failure; there is no other
 * error code. The reason stands on the console. (The one further code, #HOSTMGR_FRAME_REFUSED, is what the recorder is
 * answered with when a reader-playback callback refuses a frame; no function returns it.)
 *
 * @par The frame's failures
 * Named so in the functions below, they are common to all of them: before initialisation every function prints
 * "not init" and returns -1 (ReadCfg null, SetHook_InsertLog nothing); a function that takes a login handle or a handle
 * derived from one prints "hLogin:%d not logged in!!" and returns -1 when nobody is logged in under it (a handle below
 * 1 included). Where a function does not look the login up, its text says so.
 *
 * @par Channels and streams
 * Channels count from 1 up to #HOSTMGR_MAX_CHANNELS. Stream 1 is the main stream, 2 the sub stream.
 *
 * @par Who owns a buffer, and until when
 * - What a caller passes in (texts, records, lists) is read during the call only; nothing is kept but the callback
 *   function and its `pUser`, which must stay valid until replaced or until the play, talk, task or login has ended.
 * - What a caller passes to be filled belongs to the caller; it is written during the call only.
 * - A frame read from a stream buffer or the zero channel is the recorder's memory: read only, valid until the next
 *   read, release, destroy or stop on the same handle.
 * - A buffer or record handed to a callback is valid until the callback returns; it may stand at any address, so copy
 *   words out of it with memcpy.
 * - Two results are to be given back: a status list (ReleaseAlarmStatus) and a document (free()).
 *
 * @par Texts
 * Texts from the recorder (names, paths, addresses) are passed on in the recorder's own encoding. A text that is
 * shorter than its field ends with a NUL; one that fills its field may have none, unless its record says otherwise.
 * Chinese texts that the library itself prints (diagnostics menu and dumps) are GBK; its log lines are ASCII.
 *
 * @par Times
 * Calendar times are the recorder's local time. Playback ranges and seeks are converted to seconds with the summer-time
 * rule that applied on 1 January 1970: where summer time is kept, a range or seek during it is an hour late. Searches
 * pass the calendar time on as it is, and times that the library reports are right in all seasons.
 *
 * @par Threads
 * Every function may be called from any thread, concurrently; calls on one login take turns where they must. A login
 * that is logged out while another thread is inside a call on it is let go safely, but that call's result is of no use.
 *
 * Each kind of callback runs on a thread of its own, and may not call for its own login:
 * - stream of a callback playback: the login's replay thread, with its playback locked. Not: any playback function,
 *   Control command 20.
 * - stream of a reader playback: the recorder's reader thread, nothing locked. Not: StopHistoryPlay. Every Control
 *   command may be sent, also to take the channel itself out of the play.
 * - talk: the login's talk thread, nothing locked.
 * - alarm: the one alarm thread, nothing locked. It may even log out; a slow one delays the alarms of all logins.
 * - picture: the login's capture thread, its tasks locked for reading. Not: StartCapturePicture, StopCapturePicture,
 *   SetCapturePictureAlarmTiger.
 * - log entry: a thread of the recorder, which says what may be called.
 *
 * No stream, talk or picture callback may log its own login out: logout waits for the thread it runs on. Nor may it
 * call exported functions while another thread may be logging out: logout waits for those threads with the login table
 * locked, and the call would wait for the table.
 *
 * @par Logging
 * Log lines go to standard output, coloured by level (error red, warning yellow, debug green) and prefixed
 * "[HOSTMGR] ERROR! function[line]:" or alike. There is no level filter and no file. A condition that makes the library
 * unusable (no memory for a table, no lock) prints an "ASSERT!" block and ends the process with status 255.
 */

/** Marks what libhostmgr.so exports; nothing else is visible outside it. */
#define HOSTMGR_API __attribute__((visibility("default")))

// Checks a documented offset where the record stands; private to this header.
#define HOSTMGR_AT(record, field, offset) \
    static_assert(offsetof(record, field) == (offset), #record "." #field " stands at " #offset)

// ---- limits and fixed values ---------------------------------------------------------------------------------------

inline constexpr unsigned int HOSTMGR_MAX_LOGINS = 128;             ///< logins at a time, of all agents in the process
inline constexpr unsigned int HOSTMGR_MAX_STREAM_BUFFERS = 128;     ///< live stream buffers of one login
inline constexpr unsigned int HOSTMGR_MAX_CAPTURE_TASKS = 576;      ///< capture tasks of one login
inline constexpr unsigned int HOSTMGR_MAX_CAPTURE_PICTURES = 3840;  ///< a login's task pictures; here the 60 oldest go
inline constexpr unsigned int HOSTMGR_MAX_CHANNELS = 256;           ///< highest channel number
inline constexpr unsigned int HOSTMGR_MAX_CONFIG_CHANNEL = 128;     ///< highest first channel that GetConfig accepts
inline constexpr unsigned int HOSTMGR_MAX_ZERO_PICTURES = 64;       ///< most pictures of the zero channel's mosaic

inline constexpr unsigned int HOSTMGR_FRAME_HEADER_SIZE = 36;  ///< bytes of header before every frame's payload
inline constexpr unsigned int HOSTMGR_TALK_HEADER_SIZE = 24;   ///< bytes of header before the audio of a talk block
inline constexpr unsigned int HOSTMGR_TALK_FRAME_SIZE = 320;   ///< bytes of audio in one talk frame
inline constexpr unsigned int HOSTMGR_TALK_BLOCK_FRAMES = 8;   ///< talk frames gathered for one talk callback
inline constexpr unsigned int HOSTMGR_TALK_BLOCK_MAX = 5120;   ///< most bytes of one talk block, its header included

inline constexpr int HOSTMGR_PLAY_SPEED_MIN = -32;       ///< slowest: each frame lasts 32 times as long
inline constexpr int HOSTMGR_PLAY_SPEED_MAX = 32;        ///< fastest: 32 times as fast
inline constexpr int HOSTMGR_PLAY_SPEED_KEY_FRAMES = 5;  ///< from this speed on only key frames are played

/** What the recorder is answered with when a reader-playback callback returns anything but 0. */
inline constexpr int HOSTMGR_FRAME_REFUSED = 0x401A0000;

/** Streams of a channel (`dwStreamIdx`, `lStreamIdx`, `dwStreamType`). */
enum HostMgrStreamIndex : uint32_t {
    HOSTMGR_STREAM_MAIN = 1,
    HOSTMGR_STREAM_SUB = 2,
};

/** Frame types: the frame information word, #_tagVexoHostMgrFrameHeader::dwFrameType. */
enum HostMgrFrameType : uint32_t {
    HOSTMGR_FRAME_MAIN_KEY = 1,     ///< video, main stream, decodable on its own
    HOSTMGR_FRAME_AUDIO = 8,        ///< audio
    HOSTMGR_FRAME_MAIN_DELTA = 9,   ///< video, main stream, needs the frames before it
    HOSTMGR_FRAME_SUB_KEY = 18,     ///< video, sub stream, decodable on its own
    HOSTMGR_FRAME_SUB_DELTA = 19,   ///< video, sub stream, needs the frames before it
    HOSTMGR_FRAME_ZERO_KEY = 24,    ///< video, zero channel, decodable on its own
    HOSTMGR_FRAME_ZERO_DELTA = 25,  ///< video, zero channel, needs the frames before it
};

/** Bits of the flags that ReadRealOneFrame hands out. */
enum HostMgrLiveFlag : uint32_t {
    HOSTMGR_LIVE_NO_VIDEO = 0x4,  ///< the recorder reports that the channel has no video signal
};

/** How StartHistoryPlay delivers; any value but 1 plays at pace. */
enum HostMgrPlayMode : uint32_t {
    HOSTMGR_PLAYMODE_PLAYBACK = 0,  ///< video paced by its time stamps and the speed
    HOSTMGR_PLAYMODE_DOWNLOAD = 1,  ///< every frame as fast as it can be read
};

// ---- command numbers -----------------------------------------------------------------------------------------------

/** Commands of vexo_HostMgr_Dev_Control. */
enum HostMgrControlCommand : uint32_t {
    HOSTMGR_CONTROL_PTZ = 2,            ///< move a camera; second buffer: #_tagVexoHostMgrPtzCmd
    HOSTMGR_CONTROL_REBOOT = 10,        ///< reboot the recorder
    HOSTMGR_CONTROL_POWER_OFF = 11,     ///< power the recorder off
    HOSTMGR_CONTROL_ALARM_ENABLE = 12,  ///< alarm upload on or off; FIRST buffer: one uint32_t, 0 off, else on; a
                                        ///< shorter one is read as if zeros followed
    HOSTMGR_CONTROL_PLAYBACK = 20,      ///< control a playback; second buffer: #HostMgrPlayCtrlParam
    HOSTMGR_CONTROL_RECORD = 25,        ///< recording switches; second buffer: #_tagVexoHostMgrRecordCmd
    HOSTMGR_CONTROL_RESTORE = 30,       ///< restore the factory settings, all of them
};

/**
 * PTZ commands (#_tagVexoHostMgrPtzCmd::dwPtzCmd) and the words p1, p2, p3 that they use. The recorder's PTZ code and
 * parameter record that each one sends are given as code {kind, values}; what a camera does with them is the recorder's
 * matter, and so are the units of speeds and times. Names say what the code groups imply; a command without a plain
 * meaning has a neutral name. Numbers that are not listed, and the ones marked refused, send nothing. The values that
 * TOUR_PARAM_A and TOUR_PARAM_B remember are the login's, 0 at first, and stay for every point until they are set anew.
 */
enum HostMgrPtzCommand : uint32_t {
    HOSTMGR_PTZ_CMD_2 = 2,               ///< auxiliary switch, p2 its value: 0x600 {0, p2}
    HOSTMGR_PTZ_CMD_3 = 3,               ///< auxiliary switch, p2 its value: 0x500 {0, p2}
    HOSTMGR_PTZ_CMD_4 = 4,               ///< refused
    HOSTMGR_PTZ_CMD_5 = 5,               ///< refused
    HOSTMGR_PTZ_CMD_6 = 6,               ///< refused
    HOSTMGR_PTZ_CMD_7 = 7,               ///< refused
    HOSTMGR_PTZ_PRESET_SET = 8,          ///< store the view as preset p1: 0x700 {1, p1}
    HOSTMGR_PTZ_PRESET_CLEAR = 9,        ///< forget preset p1: 0x701 {1, p1}
    HOSTMGR_PTZ_CMD_10 = 10,             ///< refused
    HOSTMGR_PTZ_ZOOM_IN = 11,            ///< p2 speed: 0x200 {0, p2}
    HOSTMGR_PTZ_ZOOM_OUT = 12,           ///< p2 speed: 0x201 {0, p2}
    HOSTMGR_PTZ_FOCUS_NEAR = 13,         ///< p2 speed: 0x300 {0, p2}
    HOSTMGR_PTZ_FOCUS_FAR = 14,          ///< p2 speed: 0x301 {0, p2}
    HOSTMGR_PTZ_IRIS_OPEN = 15,          ///< p2 speed: 0x400 {0, p2}
    HOSTMGR_PTZ_IRIS_CLOSE = 16,         ///< p2 speed: 0x401 {0, p2}
    HOSTMGR_PTZ_CMD_17 = 17,             ///< refused
    HOSTMGR_PTZ_CMD_18 = 18,             ///< refused
    HOSTMGR_PTZ_CMD_19 = 19,             ///< refused
    HOSTMGR_PTZ_CMD_20 = 20,             ///< refused
    HOSTMGR_PTZ_UP = 21,                 ///< p2 speed: 0x100 {0, p2}; p1 = 1 stops, here and down to DOWN_RIGHT:
                                         ///< 0x13149527 with all zero parameters
    HOSTMGR_PTZ_DOWN = 22,               ///< p2 speed: 0x101 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_LEFT = 23,               ///< p2 speed: 0x102 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_RIGHT = 24,              ///< p2 speed: 0x103 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_UP_LEFT = 25,            ///< p2 speed: 0x104 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_UP_RIGHT = 26,           ///< p2 speed: 0x105 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_DOWN_LEFT = 27,          ///< p2 speed: 0x106 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_DOWN_RIGHT = 28,         ///< p2 speed: 0x107 {0, p2}; p1 = 1 stops
    HOSTMGR_PTZ_CMD_29 = 29,             ///< p2 a value: 0x809 {0, p2}
    HOSTMGR_PTZ_TOUR_PARAM_A = 30,       ///< remember p3 as value A for the tour point to come; sends nothing
    HOSTMGR_PTZ_TOUR_PARAM_B = 31,       ///< remember p3 as value B for the tour point to come; sends nothing
    HOSTMGR_PTZ_TOUR_ADD_POINT = 32,     ///< add point p3 to tour p1 with the values A and B: 0x802 {3, p1, p3, A, B}
    HOSTMGR_PTZ_TOUR_DELETE_POINT = 33,  ///< take point p2 out of tour p1: 0x803 {3, p1, 0, p2}
    HOSTMGR_PTZ_CMD_34 = 34,             ///< p1 a number from 1: 0x807 {2, p1 - 1}; 0 stays 0
    HOSTMGR_PTZ_CMD_35 = 35,             ///< p1 a number from 1: 0x808 {2, p1 - 1}; 0 stays 0
    HOSTMGR_PTZ_CMD_36 = 36,             ///< p1 a number from 1: 0x805 {2, p1 - 1}; 0 stays 0
    HOSTMGR_PTZ_TOUR_START = 37,         ///< run tour p1: 0x800 {3, p1}
    HOSTMGR_PTZ_TOUR_STOP = 38,          ///< stop tour p1: 0x801 {3, p1}
    HOSTMGR_PTZ_PRESET_GOTO = 39,        ///< go to preset p1: 0x702 {1, p1}
    HOSTMGR_PTZ_TOUR_SET_FILL = 40,      ///< refused, with a warning of its own
    HOSTMGR_PTZ_CMD_41 = 41,             ///< code 1, all parameters zero
    HOSTMGR_PTZ_CMD_42 = 42,             ///< three values: 0x80A {4, p1, p2, p3}
};

/** Playback commands (#HostMgrPlayCtrlParam::dwPlayCmd). */
enum HostMgrPlayCommand : uint32_t {
    /**
     * dwParam: signed speed, clamped to -32..32. 0 and 1 are the recorded pace, n is n times as fast, -n is n times as
     * slow; from 5 on only key frames. The first one after a start begins the delivery; one that comes before the start
     * makes the play begin with it.
     */
    HOSTMGR_PLAYCMD_SPEED = 1,
    /** dwParam: 1 pauses, 0 goes on. (Callback playback pauses on exactly 1, reader playback on anything but 0.) */
    HOSTMGR_PLAYCMD_PAUSE = 2,
    /**
     * struTime: where to go on from; the next frame comes at once. Ignored, silently, while nothing is started. A
     * paused play is moved, and stays paused.
     */
    HOSTMGR_PLAYCMD_SEEK = 3,
    /** Does nothing. */
    HOSTMGR_PLAYCMD_NOP = 4,
    /** dwParam: not 0 delivers audio, 0 (at first) skips it. Callback playback only. */
    HOSTMGR_PLAYCMD_AUDIO = 5,
    /**
     * dwParam: a #HostMgrPlayTimeSelector; the time is written to struTime of the caller's record. Any other selector
     * leaves the login's playback locked for good: every later playback call of that login waits forever; log out.
     */
    HOSTMGR_PLAYCMD_GETTIME = 6,
    /**
     * dwParam: #HOSTMGR_PLAYDIR_FORWARD or #HOSTMGR_PLAYDIR_REVERSE. Reaches the channels added after it and those that
     * the first speed command opens; a running play is not turned. (Another value than 0 with a clear sign bit counts
     * as reverse for channels added and as forward for the first speed command.)
     */
    HOSTMGR_PLAYCMD_DIRECTION = 7,
    /**
     * dwParam: channel, from 1, to add to the play, over the range of the reader start. In a callback playback that
     * range is zero or an earlier reader start's: start the channel with StartHistoryPlay instead.
     */
    HOSTMGR_PLAYCMD_ADDCHAN = 8,
    /**
     * dwParam: channel, from 1, to take out of the play; of a channel that plays twice, the stream that was started
     * first. There is no end mark. It waits for no callback, so a callback of a reader playback may take its own
     * channel out; a frame that is under way just now may still be delivered, and none follows it.
     */
    HOSTMGR_PLAYCMD_DELCHAN = 9,
    /** dwParam: channel, from 1; dwParam2: 0 or 1 main stream, 2 and above sub stream. Unknown channels are ignored. */
    HOSTMGR_PLAYCMD_STREAMTYPE = 10,
};

/** Which time #HOSTMGR_PLAYCMD_GETTIME fetches. */
enum HostMgrPlayTimeSelector : uint32_t {
    /**
     * Of the last frame: in a callback playback the last paced video frame (downloads and audio do not move it), in a
     * reader playback any frame; after a seek its target.
     */
    HOSTMGR_PLAYTIME_CURRENT = 0,
    HOSTMGR_PLAYTIME_START = 1,  ///< start of the range; set by the reader start only, else zero or an earlier one's
    HOSTMGR_PLAYTIME_STOP = 2,   ///< end of the range; as the start
};

/** Values of #HOSTMGR_PLAYCMD_DIRECTION. */
enum HostMgrPlayDirection : uint32_t {
    HOSTMGR_PLAYDIR_FORWARD = 0,
    HOSTMGR_PLAYDIR_REVERSE = 0xFFFFFFFF,
};

/** Record commands (#_tagVexoHostMgrRecordCmd::dwRecordCmd). */
enum HostMgrRecordCommand : uint32_t {
    HOSTMGR_RECORD_MODE_1 = 1,  ///< switched on: recording mode 1 of the recorder (as a rule by schedule); off: mode 0
    HOSTMGR_RECORD_MODE_2 = 2,  ///< switched on: recording mode 2 of the recorder (as a rule always); off: mode 0
    HOSTMGR_RECORD_MANUAL = 3,  ///< manual recording on or off
};

/** Switch values of the record commands; any other is refused. */
enum HostMgrRecordSwitch : uint32_t {
    HOSTMGR_RECORD_OFF = 1,
    HOSTMGR_RECORD_ON = 2,
};

/** Commands of vexo_HostMgr_Dev_GetConfig, with the record and the size that each demands. */
enum HostMgrConfigCommand : uint32_t {
    HOSTMGR_CONFIG_DEVICE = 100,         ///< #_tagVexoHostMgrDeviceCfg, 132 or 164 bytes
    HOSTMGR_CONFIG_ENCODE = 106,         ///< #_tagVexoHostMgrEncodeCfg, exactly 116 x lChanNum bytes
    HOSTMGR_CONFIG_DEVICE_TIME = 118,    ///< #_tagVexoHostMgrDeviceTime (24) or #_tagVexoHostMgrDeviceTimeShort (12)
    HOSTMGR_CONFIG_USERS = 124,          ///< #_tagVexoHostMgrUserCfg, at least 6724 bytes
    HOSTMGR_CONFIG_ZERO_CODEC = 160,     ///< #_tagVexoHostMgrZeroCodecCfg, exactly 56 bytes
    HOSTMGR_CONFIG_WORK_STATE = 254,     ///< #_tagVexoHostMgrWorkState, at least 57464 bytes
    HOSTMGR_CONFIG_DISKS_8 = 1054,       ///< #_tagVexoHostMgrDiskCfg8, at least 1160 bytes
    HOSTMGR_CONFIG_NETWORK = 1062,       ///< #_tagVexoHostMgrNetCfg, exactly 3848 bytes
    HOSTMGR_CONFIG_DISKS_24 = 2026,      ///< #_tagVexoHostMgrDiskCfg, at least 3464 bytes
    HOSTMGR_CONFIG_PLATFORMS = 3002,     ///< #_tagVexoHostMgrPlatformCfg, at least 3200 bytes
    HOSTMGR_CONFIG_FACTORY = 3010,       ///< #_tagVexoHostMgrFactoryInfo array, at least one of 304 bytes
    HOSTMGR_CONFIG_VERSION = 30000,      ///< one uint32_t, always 2; at least 4 bytes
    HOSTMGR_CONFIG_PICTURE_DIR = 30001,  ///< a path as text, at least 19 bytes; the directory is made if need be
};

/** Commands of vexo_HostMgr_Dev_SetConfig. */
enum HostMgrSetConfigCommand : uint32_t {
    HOSTMGR_SETCONFIG_FACTORY = 3011,  ///< #_tagVexoHostMgrFactoryInfo array
};

/**
 * What a search looks for (#_tagVexoHostMgrQueryFile::dwFileType): a mask of the recorder's record types and an inquiry
 * type. Any number from 6 on searches like HOSTMGR_FILE_MASK_1. The meaning of the type bits is the recorder's.
 */
enum HostMgrFileType : uint32_t {
    HOSTMGR_FILE_ALL = 0,            ///< mask 0xFFFF, inquiry type 0
    HOSTMGR_FILE_MASK_1 = 1,         ///< mask 1, inquiry type 0
    HOSTMGR_FILE_MASK_2 = 2,         ///< mask 2, inquiry type 0
    HOSTMGR_FILE_MASK_4 = 3,         ///< mask 4, inquiry type 0
    HOSTMGR_FILE_MASK_6 = 4,         ///< mask 6, inquiry type 0
    HOSTMGR_FILE_MASK_6_TYPE_1 = 5,  ///< mask 6, inquiry type 1
};

/**
 * Alarm types that the alarm callback reports. The status list has numbers of its own (#HostMgrAlarmStatusType): the
 * two ranges differ on purpose. Names are the plain reading; what an event is, the recorder's event table says.
 */
enum HostMgrAlarmType : uint32_t {
    HOSTMGR_ALARM_MOTION = 1,            ///< event class 2, sub-type 2; channel from 1
    HOSTMGR_ALARM_INPUT = 2,             ///< event class 5; input from 1, a network camera's (sub-type 28) after the
                                         ///< recorder's: its index + 1 + all channels - analog channels
    HOSTMGR_ALARM_SHELTER = 3,           ///< event class 2, sub-type 4; channel from 1
    HOSTMGR_ALARM_VIDEO_LOSS = 4,        ///< event class 2, sub-type 3; channel from 1
    HOSTMGR_ALARM_DISK_FULL = 5,         ///< event class 3, sub-type 17; disk number as the event has it
    HOSTMGR_ALARM_DISK_ERROR = 6,        ///< event class 3, sub-type 19; disk number as the event has it
    HOSTMGR_ALARM_TYPE_7 = 7,            ///< never reported
    HOSTMGR_ALARM_NET_DISCONNECTED = 8,  ///< event class 4, sub-type 25; channel 0
    HOSTMGR_ALARM_NET_CONFLICT = 9,      ///< event class 4, sub-type 26; channel 0
};

/** Alarm types of the status list, #_tagVexoHostMgrALarmStatusInfo::byType. */
enum HostMgrAlarmStatusType : uint8_t {
    HOSTMGR_ALARM_STATUS_OTHER = 0,       ///< an event that is not classified
    HOSTMGR_ALARM_STATUS_DISK_FULL = 1,   ///< event class 3, sub-type 17
    HOSTMGR_ALARM_STATUS_MOTION = 3,      ///< event class 2, sub-type 2
    HOSTMGR_ALARM_STATUS_DISK_ERROR = 5,  ///< event class 3, sub-type 19
    HOSTMGR_ALARM_STATUS_VIDEO_LOSS = 6,  ///< event class 2, sub-type 3
    HOSTMGR_ALARM_STATUS_SHELTER = 9,     ///< event class 2, sub-type 4
};

/** Kinds of capture tasks, #_tagVexoCapturePictureCfg::dwType. */
enum HostMgrCaptureType : uint32_t {
    HOSTMGR_CAPTURE_ALARM = 0,   ///< at an interval, reported around a trigger
    HOSTMGR_CAPTURE_DAILY = 1,   ///< once a second from 4 seconds before to 4 seconds after a time of day
    HOSTMGR_CAPTURE_SECOND = 2,  ///< every second
};

/** Codecs of talk audio as the caller sends it, #_tagVexoHostMgrTalkBlockHeader::byCodec. */
enum HostMgrTalkCodec : uint8_t {
    HOSTMGR_TALK_G711A = 1,  ///< the recorder's codec 2; also what any number but 2 and 3 counts as
    HOSTMGR_TALK_G711U = 2,  ///< the recorder's codec 1
    HOSTMGR_TALK_ADPCM = 3,  ///< the recorder's codec 4
};

// ---- records: times and frames -------------------------------------------------------------------------------------
// All records are little-endian, with fixed widths, alike on 32-bit and 64-bit machines. Reserved fields read as zero
// unless said otherwise and are not looked at when passed in.

/** Calendar time in the recorder's time zone, 28 bytes. */
struct _tagVexoHostMgrTime {
    uint32_t dwYear;    ///< four digits
    uint32_t dwMonth;   ///< 1 to 12
    uint32_t dwDay;     ///< 1 to 31
    uint32_t dwHour;    ///< 0 to 23
    uint32_t dwMinute;  ///< 0 to 59
    uint32_t dwSecond;  ///< 0 to 59
    uint32_t reserved;  ///< no meaning here; a play carries it from its start time and seek targets to its current time
};
static_assert(sizeof(_tagVexoHostMgrTime) == 28, "seven words");
HOSTMGR_AT(_tagVexoHostMgrTime, dwYear, 0);
HOSTMGR_AT(_tagVexoHostMgrTime, dwMonth, 4);
HOSTMGR_AT(_tagVexoHostMgrTime, dwDay, 8);
HOSTMGR_AT(_tagVexoHostMgrTime, dwHour, 12);
HOSTMGR_AT(_tagVexoHostMgrTime, dwMinute, 16);
HOSTMGR_AT(_tagVexoHostMgrTime, dwSecond, 20);
HOSTMGR_AT(_tagVexoHostMgrTime, reserved, 24);

/**
 * The header of every frame (live, zero channel, playback), 36 bytes; the payload follows without a gap. A frame may
 * stand at any address: copy the header out with memcpy.
 */
struct _tagVexoHostMgrFrameHeader {
    uint32_t dwMagic;         ///< the recorder's frame mark
    uint32_t dwFrameType;     ///< frame information word, a #HostMgrFrameType
    uint32_t dwFrameNo;       ///< counts the frames of one list; wraps
    uint32_t dwSeconds;       ///< time stamp: seconds since 1970, wall clock
    uint32_t dwMicroSeconds;  ///< time stamp: 0 to 999999
    uint32_t dwDataLen;       ///< payload in bytes, without this header
    /**
     * The recorder's own, 0 where it does not say. Audio: [0] codec (1 G.711 mu-law, 2 G.711 A-law, 4 ADPCM), the rest
     * as its audio path sets it. Video: [0] codec (1 H.264), [1] nominal frames per second, [8] and [9] width, [10] and
     * [11] height in pixels, low byte first.
     */
    uint8_t byFormat[12];
};
static_assert(sizeof(_tagVexoHostMgrFrameHeader) == HOSTMGR_FRAME_HEADER_SIZE, "the header before every payload");
HOSTMGR_AT(_tagVexoHostMgrFrameHeader, dwFrameType, 4);
HOSTMGR_AT(_tagVexoHostMgrFrameHeader, dwFrameNo, 8);
HOSTMGR_AT(_tagVexoHostMgrFrameHeader, dwSeconds, 12);
HOSTMGR_AT(_tagVexoHostMgrFrameHeader, dwMicroSeconds, 16);
HOSTMGR_AT(_tagVexoHostMgrFrameHeader, dwDataLen, 20);
HOSTMGR_AT(_tagVexoHostMgrFrameHeader, byFormat, 24);

// ---- records: control ----------------------------------------------------------------------------------------------

/** PTZ command, 28 bytes, second buffer of #HOSTMGR_CONTROL_PTZ. A shorter one is read as if zeros followed. */
struct _tagVexoHostMgrPtzCmd {
    uint32_t dwPtzCmd;     ///< a #HostMgrPtzCommand
    uint32_t dwParam1;     ///< p1 of the command
    uint32_t dwParam2;     ///< p2 of the command
    uint32_t dwParam3;     ///< p3 of the command
    uint32_t reserved[3];  ///< not used
};
static_assert(sizeof(_tagVexoHostMgrPtzCmd) == 28, "seven words");
HOSTMGR_AT(_tagVexoHostMgrPtzCmd, dwPtzCmd, 0);
HOSTMGR_AT(_tagVexoHostMgrPtzCmd, dwParam1, 4);
HOSTMGR_AT(_tagVexoHostMgrPtzCmd, dwParam2, 8);
HOSTMGR_AT(_tagVexoHostMgrPtzCmd, dwParam3, 12);

/** Record command, 28 bytes, second buffer of #HOSTMGR_CONTROL_RECORD. A shorter one is read as if zeros followed. */
struct _tagVexoHostMgrRecordCmd {
    uint32_t dwRecordCmd;  ///< a #HostMgrRecordCommand
    uint32_t dwSwitch;     ///< a #HostMgrRecordSwitch
    uint32_t reserved[5];  ///< not used
};
static_assert(sizeof(_tagVexoHostMgrRecordCmd) == 28, "seven words");
HOSTMGR_AT(_tagVexoHostMgrRecordCmd, dwRecordCmd, 0);
HOSTMGR_AT(_tagVexoHostMgrRecordCmd, dwSwitch, 4);

/** Playback command, exactly 60 bytes, second buffer of #HOSTMGR_CONTROL_PLAYBACK. */
struct HostMgrPlayCtrlParam {
    uint32_t dwPlayCmd;            ///< a #HostMgrPlayCommand
    uint32_t reserved1;            ///< not used
    uint32_t dwParam;              ///< the command's value
    uint32_t dwParam2;             ///< second value (stream type)
    uint32_t reserved2[4];         ///< not used
    _tagVexoHostMgrTime struTime;  ///< in: seek target; out: the time asked for
};
static_assert(sizeof(HostMgrPlayCtrlParam) == 60, "fifteen words");
HOSTMGR_AT(HostMgrPlayCtrlParam, dwPlayCmd, 0);
HOSTMGR_AT(HostMgrPlayCtrlParam, dwParam, 8);
HOSTMGR_AT(HostMgrPlayCtrlParam, dwParam2, 12);
HOSTMGR_AT(HostMgrPlayCtrlParam, struTime, 32);

// ---- records: search -----------------------------------------------------------------------------------------------

/** What to search for, 60 bytes. */
struct _tagVexoHostMgrQueryFile {
    uint32_t dwFileType;                ///< a #HostMgrFileType
    _tagVexoHostMgrTime struStartTime;  ///< start of the search
    _tagVexoHostMgrTime struStopTime;   ///< end of the search
};
static_assert(sizeof(_tagVexoHostMgrQueryFile) == 60, "fifteen words");
HOSTMGR_AT(_tagVexoHostMgrQueryFile, dwFileType, 0);
HOSTMGR_AT(_tagVexoHostMgrQueryFile, struStartTime, 4);
HOSTMGR_AT(_tagVexoHostMgrQueryFile, struStopTime, 32);

/** One recorded file, 88 bytes. */
struct _tagVexoHostMgrQueryFileResult {
    uint32_t dwChannel;                 ///< channel searched, from 1
    uint32_t reserved1;                 ///< 0
    uint32_t dwFileFlag;                ///< always 2
    _tagVexoHostMgrTime struStartTime;  ///< start of the file, its reserved word 0
    _tagVexoHostMgrTime struStopTime;   ///< end of the file, its reserved word 0
    uint32_t reserved2[3];              ///< 0
    uint32_t dwRecInfo1;                ///< the recorder's own, passed through
    uint32_t dwRecInfo2;                ///< the recorder's own, passed through
};
static_assert(sizeof(_tagVexoHostMgrQueryFileResult) == 88, "twenty-two words");
HOSTMGR_AT(_tagVexoHostMgrQueryFileResult, dwChannel, 0);
HOSTMGR_AT(_tagVexoHostMgrQueryFileResult, dwFileFlag, 8);
HOSTMGR_AT(_tagVexoHostMgrQueryFileResult, struStartTime, 12);
HOSTMGR_AT(_tagVexoHostMgrQueryFileResult, struStopTime, 40);
HOSTMGR_AT(_tagVexoHostMgrQueryFileResult, dwRecInfo1, 80);
HOSTMGR_AT(_tagVexoHostMgrQueryFileResult, dwRecInfo2, 84);

// ---- records: talk -------------------------------------------------------------------------------------------------

/** Start of a talk. Must be given; its contents are never read. */
struct _tagVexoHostMgrTalkParam {
    uint32_t reserved[8];  ///< never read
};

/**
 * The header of a talk block, 24 bytes, before the audio: in blocks from the recorder all fields are as given here; in
 * audio sent to it, byCodec, bySampleBits, byAudioChannels, dwSampleRate and dwBits are passed on (of the words the low
 * byte) and the rest is not read. The numbers are fixed by the recorder's audio path; the names are their plain
 * reading.
 */
struct _tagVexoHostMgrTalkBlockHeader {
    uint8_t byCodec;            ///< from the recorder 1; to it a #HostMgrTalkCodec
    uint8_t bySampleBits;       ///< 16
    uint8_t byAudioChannels;    ///< 1
    uint8_t byFramesPerSecond;  ///< 25
    uint32_t dwSampleRate;      ///< 8000 Hz
    uint32_t dwBits;            ///< 16
    /**
     * Bytes used. Of a block in the regular course: header and audio together, at the time of its last frame. Of a
     * block whose audio starts at byte 0 (see vexo_hostmgr_talk_callback) the header is overwritten: go by the length
     * given.
     */
    uint32_t dwUsedLen;
    uint32_t dwFrameTime;  ///< 40 ms a frame
    uint32_t reserved;     ///< 0
};
static_assert(sizeof(_tagVexoHostMgrTalkBlockHeader) == HOSTMGR_TALK_HEADER_SIZE, "the header before talk audio");
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, byCodec, 0);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, bySampleBits, 1);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, byAudioChannels, 2);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, byFramesPerSecond, 3);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, dwSampleRate, 4);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, dwBits, 8);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, dwUsedLen, 12);
HOSTMGR_AT(_tagVexoHostMgrTalkBlockHeader, dwFrameTime, 16);

// ---- records: alarms -----------------------------------------------------------------------------------------------

/** What an alarm callback is handed, 132 bytes. */
struct _tagVexoHostMgrAlarmInfo {
    uint32_t dwAlarmType;  ///< a #HostMgrAlarmType
    uint32_t dwChannel;    ///< channel or input from 1, or the number that the type names
    uint32_t dwState;      ///< always 1, active; the end of an alarm is not reported
    uint8_t reserved[120];
};
static_assert(sizeof(_tagVexoHostMgrAlarmInfo) == 132, "alarm record");
HOSTMGR_AT(_tagVexoHostMgrAlarmInfo, dwAlarmType, 0);
HOSTMGR_AT(_tagVexoHostMgrAlarmInfo, dwChannel, 4);
HOSTMGR_AT(_tagVexoHostMgrAlarmInfo, dwState, 8);

/** One entry of the status list, 32 bytes. All zero: an event that the list does not carry. */
struct _tagVexoHostMgrALarmStatusInfo {
    uint8_t byType;     ///< a #HostMgrAlarmStatusType
    uint8_t byState;    ///< 1 active
    uint16_t wChannel;  ///< channel, disk or input as the recorder's event table holds it: channels count from 0 here
    uint8_t reserved[28];
};
static_assert(sizeof(_tagVexoHostMgrALarmStatusInfo) == 32, "status list entry");
HOSTMGR_AT(_tagVexoHostMgrALarmStatusInfo, byType, 0);
HOSTMGR_AT(_tagVexoHostMgrALarmStatusInfo, byState, 1);
HOSTMGR_AT(_tagVexoHostMgrALarmStatusInfo, wChannel, 2);

// ---- records: picture capture --------------------------------------------------------------------------------------

/** A capture task, 32 bytes. */
struct _tagVexoCapturePictureCfg {
    uint32_t dwType;       ///< a #HostMgrCaptureType; any other takes no picture and prints so each second
    uint32_t dwPreTime;    ///< alarm: seconds before the trigger from which pictures are reported
    uint32_t dwInterval;   ///< alarm: milliseconds between pictures, used in whole seconds; below 2000 every second
    uint32_t dwPostTime;   ///< alarm: seconds that a trigger lasts; 0xFFFFFFFF for ever
    uint32_t dwTime;       ///< daily: time of day, hour << 16 | minute << 8 | second; one that no day has never comes
    uint32_t reserved[3];  ///< not read
};
static_assert(sizeof(_tagVexoCapturePictureCfg) == 32, "eight words");
HOSTMGR_AT(_tagVexoCapturePictureCfg, dwType, 0);
HOSTMGR_AT(_tagVexoCapturePictureCfg, dwPreTime, 4);
HOSTMGR_AT(_tagVexoCapturePictureCfg, dwInterval, 8);
HOSTMGR_AT(_tagVexoCapturePictureCfg, dwPostTime, 12);
HOSTMGR_AT(_tagVexoCapturePictureCfg, dwTime, 16);

/** A picture that a capture task took, 340 bytes. */
struct _tagVexoCapturePictureInfo {
    int32_t lChannel;                     ///< channel of the task, from 1
    int32_t lStreamIdx;                   ///< stream of the task, as given
    uint32_t reserved;                    ///< 0
    uint32_t dwType;                      ///< the task's #HostMgrCaptureType
    uint32_t dwPicIndex;                  ///< alarm: counts the trigger's pictures from 0; else 0
    _tagVexoHostMgrTime struTriggerTime;  ///< alarm: start of the trigger; else the capture time
    _tagVexoHostMgrTime struCaptureTime;  ///< when the picture was taken
    uint32_t dwPicSize;                   ///< bytes of JPEG; 0: no picture could be taken
    char sPicPath[260];                   ///< full path of the JPEG file
};
static_assert(sizeof(_tagVexoCapturePictureInfo) == 340, "picture record");
HOSTMGR_AT(_tagVexoCapturePictureInfo, lChannel, 0);
HOSTMGR_AT(_tagVexoCapturePictureInfo, lStreamIdx, 4);
HOSTMGR_AT(_tagVexoCapturePictureInfo, dwType, 12);
HOSTMGR_AT(_tagVexoCapturePictureInfo, dwPicIndex, 16);
HOSTMGR_AT(_tagVexoCapturePictureInfo, struTriggerTime, 20);
HOSTMGR_AT(_tagVexoCapturePictureInfo, struCaptureTime, 48);
HOSTMGR_AT(_tagVexoCapturePictureInfo, dwPicSize, 76);
HOSTMGR_AT(_tagVexoCapturePictureInfo, sPicPath, 80);

// ---- records: configuration ----------------------------------------------------------------------------------------

/** A factory item, 304 bytes; read with #HOSTMGR_CONFIG_FACTORY, written with #HOSTMGR_SETCONFIG_FACTORY. */
struct _tagVexoHostMgrFactoryInfo {
    char sName[48];    ///< at most 47 characters are used; always terminated when read. Empty: entry is skipped
    char sValue[256];  ///< at most 255 characters are used; always terminated when read
};
static_assert(sizeof(_tagVexoHostMgrFactoryInfo) == 304, "factory item");
HOSTMGR_AT(_tagVexoHostMgrFactoryInfo, sName, 0);
HOSTMGR_AT(_tagVexoHostMgrFactoryInfo, sValue, 48);

/** One disk of the disk list, 144 bytes. All zero: a disk that could not be read. */
struct _tagVexoHostMgrDiskInfo {
    uint32_t dwDiskIndex;     ///< from 0
    uint32_t dwCapacityMB;    ///< megabytes
    uint32_t dwPartitionSum;  ///< sum of the partitions' size values, in the recorder's unit
    uint32_t dwStatus;        ///< bit 0: not normal; bit 1: recording
    uint8_t reserved1;        ///< 0
    uint8_t byDiskType;       ///< 0 local disk (or unknown); 1, 2, 4: the recorder's disk types 2, 3, 4
    uint8_t reserved2[2];
    uint32_t dwValid;      ///< 1: this entry is filled
    uint8_t byAddress[3];  ///< local disk: the three high bytes of its address value, highest first; else 0
    uint8_t reserved3[117];
};
static_assert(sizeof(_tagVexoHostMgrDiskInfo) == 144, "disk list entry");
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, dwDiskIndex, 0);
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, dwCapacityMB, 4);
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, dwPartitionSum, 8);
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, dwStatus, 12);
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, byDiskType, 17);
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, dwValid, 20);
HOSTMGR_AT(_tagVexoHostMgrDiskInfo, byAddress, 24);

/** Disk list for up to 24 disks, 3464 bytes (#HOSTMGR_CONFIG_DISKS_24). Entry i belongs to disk i. */
struct _tagVexoHostMgrDiskCfg {
    uint32_t dwSize;                       ///< 3464
    uint32_t dwDiskNum;                    ///< disks of the recorder; may exceed the entries
    _tagVexoHostMgrDiskInfo struDisk[24];  ///< the first 24 of them
};
static_assert(sizeof(_tagVexoHostMgrDiskCfg) == 3464, "24 disks");
HOSTMGR_AT(_tagVexoHostMgrDiskCfg, dwSize, 0);
HOSTMGR_AT(_tagVexoHostMgrDiskCfg, dwDiskNum, 4);
HOSTMGR_AT(_tagVexoHostMgrDiskCfg, struDisk, 8);

/** Disk list for up to 8 disks, 1160 bytes (#HOSTMGR_CONFIG_DISKS_8); starts like #_tagVexoHostMgrDiskCfg. */
struct _tagVexoHostMgrDiskCfg8 {
    uint32_t dwSize;                      ///< 1160
    uint32_t dwDiskNum;                   ///< disks of the recorder; may exceed the entries
    _tagVexoHostMgrDiskInfo struDisk[8];  ///< the first 8 of them
};
static_assert(sizeof(_tagVexoHostMgrDiskCfg8) == 1160, "8 disks");
HOSTMGR_AT(_tagVexoHostMgrDiskCfg8, dwSize, 0);
HOSTMGR_AT(_tagVexoHostMgrDiskCfg8, dwDiskNum, 4);
HOSTMGR_AT(_tagVexoHostMgrDiskCfg8, struDisk, 8);

/** One disk of the work state, 12 bytes; fields as in #_tagVexoHostMgrDiskInfo. All zero: absent or unreadable. */
struct _tagVexoHostMgrWorkStateDisk {
    uint32_t dwCapacityMB;    ///< megabytes
    uint32_t dwPartitionSum;  ///< sum of the partitions' size values, in the recorder's unit
    uint32_t dwStatus;        ///< bit 0: not normal; bit 1: recording
};
static_assert(sizeof(_tagVexoHostMgrWorkStateDisk) == 12, "three words");
HOSTMGR_AT(_tagVexoHostMgrWorkStateDisk, dwCapacityMB, 0);
HOSTMGR_AT(_tagVexoHostMgrWorkStateDisk, dwPartitionSum, 4);
HOSTMGR_AT(_tagVexoHostMgrWorkStateDisk, dwStatus, 8);

/** One channel of the work state, 892 bytes. */
struct _tagVexoHostMgrWorkStateChan {
    uint8_t byRecordStatus;  ///< 1: connected and recording
    uint8_t byFlagA;         ///< always 1
    uint8_t byFlagB;         ///< always 0
    uint8_t byFlagC;         ///< always 0
    uint32_t dwWordA;        ///< always 0
    uint32_t dwConnected;    ///< 1: the channel's network camera is connected
    char sIpAddress[16];     ///< the camera's address; empty when not connected or addressed by name
    char sDomain[128];       ///< the camera's domain name; empty when not connected or addressed by number
    uint8_t reserved1[720];
    uint32_t dwWordB;     ///< always 0
    uint8_t byChanFlags;  ///< bits 0 and 1 always 0
    uint8_t reserved2[11];
};
static_assert(sizeof(_tagVexoHostMgrWorkStateChan) == 892, "work state channel");
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, byRecordStatus, 0);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, byFlagA, 1);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, byFlagB, 2);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, byFlagC, 3);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, dwWordA, 4);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, dwConnected, 8);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, sIpAddress, 12);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, sDomain, 28);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, dwWordB, 876);
HOSTMGR_AT(_tagVexoHostMgrWorkStateChan, byChanFlags, 880);

/** Work state, 57464 bytes (#HOSTMGR_CONFIG_WORK_STATE). */
struct _tagVexoHostMgrWorkState {
    uint32_t dwHeader;                          ///< 0
    _tagVexoHostMgrWorkStateDisk struDisk[24];  ///< disk i in entry i
    _tagVexoHostMgrWorkStateChan struChan[64];  ///< channel c, from 1, in entry c - 1
    uint32_t dwTail;                            ///< 0
    uint8_t reserved[80];
};
static_assert(sizeof(_tagVexoHostMgrWorkState) == 57464, "work state");
HOSTMGR_AT(_tagVexoHostMgrWorkState, dwHeader, 0);
HOSTMGR_AT(_tagVexoHostMgrWorkState, struDisk, 4);
HOSTMGR_AT(_tagVexoHostMgrWorkState, struChan, 292);
HOSTMGR_AT(_tagVexoHostMgrWorkState, dwTail, 57380);

/**
 * Encoding of one channel's sub stream, 116 bytes (#HOSTMGR_CONFIG_ENCODE). When the audio switch cannot be read,
 * nothing after dwSize is filled; when the encoder cannot be read, nothing after byAudioEnable is.
 */
struct _tagVexoHostMgrEncodeCfg {
    uint32_t dwSize;  ///< 116
    uint8_t reserved1[84];
    uint8_t byAudioEnable;  ///< 1: the stream carries audio
    uint8_t byEncFixedA;    ///< 3
    uint8_t byEncMode;      ///< 1 - the recorder's rate mode, when that is 0 or 1; else 0
    uint8_t byEncLevel;     ///< the recorder's quality level, in its rate mode 1; else 0
    uint32_t dwEncZero;     ///< 0
    uint8_t reserved2[4];
    uint16_t wEncValue;   ///< low 16 bits of word 18, from 0, of the recorder's encoding parameters
    uint8_t byEncFixedB;  ///< 2
    uint8_t reserved3[2];
    uint8_t byEncFixedC;  ///< 1
    uint8_t reserved4[10];
};
static_assert(sizeof(_tagVexoHostMgrEncodeCfg) == 116, "encoding record");
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, dwSize, 0);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, byAudioEnable, 88);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, byEncFixedA, 89);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, byEncMode, 90);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, byEncLevel, 91);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, dwEncZero, 92);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, wEncValue, 100);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, byEncFixedB, 102);
HOSTMGR_AT(_tagVexoHostMgrEncodeCfg, byEncFixedC, 105);

/**
 * One user, 840 bytes. A right is 1 or 0; the tables by channel hold channel c, from 1, in byte c - 1. The numbers in
 * the rights' documentation name the recorder's own flags and masks in their order there, from 1; "inv" is 1 for
 * level 0, else 0.
 */
struct _tagVexoHostMgrUserInfo {
    char sUserName[32];        ///< empty: no such user, unreadable, or the user "default"
    char sPassword[16];        ///< in clear
    uint8_t byLocalRight[10];  ///< 1, 1, inv level A, local flags 2, 1, 4, 2, 3, inv level B, local flag 5
    uint8_t reserved1[22];
    uint8_t byRemoteRight[14];  ///< 1, 1, inv level A, remote flags 2, 1, 4, 7, then 1, 4, then 1, then 6, 2, 3, 5
    uint8_t reserved2[18];
    uint8_t byChanRight[8][64];  ///< masks local 1, remote 1, local 2, remote 2, local 5, remote 4, local 4, remote 3
    uint8_t reserved3[150];
    uint8_t byReserved2;        ///< 255 in a filled entry
    uint8_t byChanRightEx[64];  ///< mask local 3
    uint8_t reserved4;
};
static_assert(sizeof(_tagVexoHostMgrUserInfo) == 840, "user entry");
HOSTMGR_AT(_tagVexoHostMgrUserInfo, sUserName, 0);
HOSTMGR_AT(_tagVexoHostMgrUserInfo, sPassword, 32);
HOSTMGR_AT(_tagVexoHostMgrUserInfo, byLocalRight, 48);
HOSTMGR_AT(_tagVexoHostMgrUserInfo, byRemoteRight, 80);
HOSTMGR_AT(_tagVexoHostMgrUserInfo, byChanRight, 112);
HOSTMGR_AT(_tagVexoHostMgrUserInfo, byReserved2, 774);
HOSTMGR_AT(_tagVexoHostMgrUserInfo, byChanRightEx, 775);

/** Users, 6724 bytes (#HOSTMGR_CONFIG_USERS). Entry i belongs to user i; entries are not packed. */
struct _tagVexoHostMgrUserCfg {
    uint32_t dwSize;                      ///< left 0
    _tagVexoHostMgrUserInfo struUser[8];  ///< the first 8 users
};
static_assert(sizeof(_tagVexoHostMgrUserCfg) == 6724, "8 users");
HOSTMGR_AT(_tagVexoHostMgrUserCfg, dwSize, 0);
HOSTMGR_AT(_tagVexoHostMgrUserCfg, struUser, 4);

/** Encoding of the zero channel, 56 bytes (#HOSTMGR_CONFIG_ZERO_CODEC). The buffer is not cleared beforehand. */
struct _tagVexoHostMgrZeroCodecCfg {
    uint32_t dwResolution;    ///< 0: at most 352 x 288 pixels; 1: more
    uint32_t dwBitrate;       ///< kilobits per second
    uint32_t dwFrameRate;     ///< frames per second
    uint32_t dwAuxMode;       ///< 0 when dwBitrateMode is 0, else left as it was
    uint32_t dwBitrateMode;   ///< 1 when the recorder's rate mode is 0, else 0
    uint32_t dwMaxFrameRate;  ///< 25
    uint8_t reserved[32];     ///< left as it was
};
static_assert(sizeof(_tagVexoHostMgrZeroCodecCfg) == 56, "zero-channel encoding");
HOSTMGR_AT(_tagVexoHostMgrZeroCodecCfg, dwResolution, 0);
HOSTMGR_AT(_tagVexoHostMgrZeroCodecCfg, dwBitrate, 4);
HOSTMGR_AT(_tagVexoHostMgrZeroCodecCfg, dwFrameRate, 8);
HOSTMGR_AT(_tagVexoHostMgrZeroCodecCfg, dwAuxMode, 12);
HOSTMGR_AT(_tagVexoHostMgrZeroCodecCfg, dwBitrateMode, 16);
HOSTMGR_AT(_tagVexoHostMgrZeroCodecCfg, dwMaxFrameRate, 20);

/** One platform link, 400 bytes. */
struct _tagVexoHostMgrPlatformInfo {
    uint32_t dwEnable;      ///< 1 in a filled entry
    uint32_t dwPlatformNo;  ///< 1 to 32
    uint8_t reserved[136];
    char sParam[8][32];  ///< parameters 1 to 8 of the platform, as the recorder holds them
};
static_assert(sizeof(_tagVexoHostMgrPlatformInfo) == 400, "platform entry");
HOSTMGR_AT(_tagVexoHostMgrPlatformInfo, dwEnable, 0);
HOSTMGR_AT(_tagVexoHostMgrPlatformInfo, dwPlatformNo, 4);
HOSTMGR_AT(_tagVexoHostMgrPlatformInfo, sParam, 144);

/** Platform links, 3200 bytes (#HOSTMGR_CONFIG_PLATFORMS): the first 8 enabled platforms, packed. */
struct _tagVexoHostMgrPlatformCfg {
    _tagVexoHostMgrPlatformInfo struPlatform[8];
};
static_assert(sizeof(_tagVexoHostMgrPlatformCfg) == 3200, "8 platforms");

/**
 * The device, 164 bytes in the long form (#HOSTMGR_CONFIG_DEVICE); the short form is its first
 * #HOSTMGR_DEVICE_CFG_SHORT_SIZE bytes. "Word n" and "byte n" count the recorder's capability record from 0.
 */
struct _tagVexoHostMgrDeviceCfg {
    uint32_t dwSize;         ///< 132 or 164: the form filled
    char sDeviceType[32];    ///< "NVR2.0"
    uint32_t dwDeviceClass;  ///< word 1
    uint8_t byReserved1;     ///< 0
    uint8_t reserved1;
    uint16_t wReserved2;         ///< 0
    char sSerialNumber[48];      ///< ten identity bytes as twenty lowercase hexadecimal digits, terminated
    uint32_t dwSoftwareVersion;  ///< word 33 << 16 | word 34
    uint32_t dwBuildDate;        ///< year << 16 | month << 8 | day
    uint32_t dwReserved3[2];     ///< 0
    uint32_t dwReserved4;        ///< 0
    uint32_t dwHardwareVersion;  ///< word 50 << 16 | word 51
    uint8_t byIpChanNum;         ///< network channels: word 27 - word 25 modulo 256, at most 64
    uint8_t byCapByteA;          ///< low byte of word 28
    uint8_t reserved2[2];
    uint8_t byCapByteB;  ///< low byte of word 67
    uint8_t reserved3;
    uint8_t bySataFlag;     ///< first byte of the recorder's SATA information; 0 if unreadable
    uint8_t byDeviceKind;   ///< 1 when word 0 is 3, else 2
    uint8_t byChanNum;      ///< low byte of word 25
    uint8_t byFixedOne;     ///< 1
    uint8_t byCapBytes[3];  ///< low byte of word 26, bytes 276 and 277
    uint8_t reserved4;
    uint8_t byShortForm;      ///< 1 in the short form, 0 in the long form
    uint8_t byChanNumCopy;    ///< short form: as byChanNum; long form: 0
    uint8_t reserved5;        ///< from here on in the long form only
    uint8_t byRecStreamMode;  ///< 1 when the recorder's record-stream mode is 0 or unreadable, else 0
    uint8_t reserved6[30];
};
/** Size of the device record's short form, in bytes. */
inline constexpr unsigned int HOSTMGR_DEVICE_CFG_SHORT_SIZE = 132;
static_assert(sizeof(_tagVexoHostMgrDeviceCfg) == 164, "long form");
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwSize, 0);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, sDeviceType, 4);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwDeviceClass, 36);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byReserved1, 40);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, wReserved2, 42);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, sSerialNumber, 44);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwSoftwareVersion, 92);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwBuildDate, 96);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwReserved3, 100);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwReserved4, 108);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, dwHardwareVersion, 112);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byIpChanNum, 116);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byCapByteA, 117);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byCapByteB, 120);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, bySataFlag, 122);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byDeviceKind, 123);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byChanNum, 124);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byFixedOne, 125);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byCapBytes, 126);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byShortForm, 130);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byChanNumCopy, 131);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, reserved5, HOSTMGR_DEVICE_CFG_SHORT_SIZE);
HOSTMGR_AT(_tagVexoHostMgrDeviceCfg, byRecStreamMode, 133);

/** One Ethernet interface, 740 bytes. Texts are always terminated. */
struct _tagVexoHostMgrEthCfg {
    char sIpAddr[16];
    char sIpV6Addr[128];
    char sNetMask[16];
    char sIpV6Mask[128];
    uint32_t dwLinkMode;  ///< 5; 0 when the interface could not be read
    /**
     * Number after the first three letters of its name (eth1: 1), its low byte, 0 when they are no digits; the index of
     * an interface whose name is no longer; 0 when the interface could not be read.
     */
    uint8_t byEthNo;
    uint8_t reserved1;
    uint16_t wMtu;     ///< 1500 bytes; 0 when the interface could not be read
    char sEthText[6];  ///< a short text of the interface, at most five characters
    uint8_t reserved2[2];
    uint8_t byEthFlag;  ///< 1 when the interface's flag is set
    uint8_t reserved3[3];
    char sGateway[16];
    char sIpV6Gateway[128];
    char sDns1[16];  ///< the DNS servers are the recorder's: the same in every interface
    char sIpV6Dns1[128];
    char sDns2[16];
    char sIpV6Dns2[128];
};
static_assert(sizeof(_tagVexoHostMgrEthCfg) == 740, "interface entry");
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sIpAddr, 0);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sIpV6Addr, 16);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sNetMask, 144);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sIpV6Mask, 160);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, dwLinkMode, 288);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, byEthNo, 292);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, wMtu, 294);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sEthText, 296);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, byEthFlag, 304);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sGateway, 308);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sIpV6Gateway, 324);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sDns1, 452);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sIpV6Dns1, 468);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sDns2, 596);
HOSTMGR_AT(_tagVexoHostMgrEthCfg, sIpV6Dns2, 612);

/** The network, 3848 bytes (#HOSTMGR_CONFIG_NETWORK). Texts are always terminated; ports are in host byte order. */
struct _tagVexoHostMgrNetCfg {
    uint32_t dwSize;                   ///< 3848
    uint8_t byDefaultEth;              ///< index of the default interface; 0 when none matches
    uint8_t byEthNum;                  ///< interfaces of the recorder, at most 4
    uint8_t byUpnpEnable;              ///< 1: UPnP is on
    uint8_t byFixedOne;                ///< 1
    _tagVexoHostMgrEthCfg struEth[4];  ///< the first 4 interfaces
    uint8_t reserved1[506];
    uint16_t wDataPort;   ///< 5050; 0 when no interface could be read
    uint16_t wHttpPort;   ///< 80 when it could not be read
    uint16_t wHttpsPort;  ///< 4433 when it could not be read
    uint8_t reserved2[2];
    uint16_t wOnvifPort;  ///< 8000 when it could not be read or is 0
    uint8_t reserved3[144];
    uint32_t dwPppoeEnable;  ///< 1: PPPoE is configured and on; else the four texts below are empty
    char sPppoeUser[32];
    char sPppoePassword[16];   ///< in clear
    char sPppoeIpAddr[16];     ///< while the link is up over IPv4
    char sPppoeIpV6Addr[128];  ///< while the link is up over IPv6
    uint16_t wRtmpPort;        ///< 1935 when it could not be read or is 0
    uint8_t byRtmpEnable;      ///< 1
    uint8_t reserved4[2];
    uint8_t byRtspEnable;  ///< 1
    uint16_t wRtspPort;    ///< 554 when it could not be read
    uint8_t reserved5[16];
};
static_assert(sizeof(_tagVexoHostMgrNetCfg) == 3848, "network record");
HOSTMGR_AT(_tagVexoHostMgrNetCfg, dwSize, 0);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, byDefaultEth, 4);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, byEthNum, 5);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, byUpnpEnable, 6);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, byFixedOne, 7);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, struEth, 8);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, wDataPort, 3474);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, wHttpPort, 3476);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, wHttpsPort, 3478);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, wOnvifPort, 3482);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, dwPppoeEnable, 3628);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, sPppoeUser, 3632);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, sPppoePassword, 3664);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, sPppoeIpAddr, 3680);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, sPppoeIpV6Addr, 3696);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, wRtmpPort, 3824);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, byRtmpEnable, 3826);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, byRtspEnable, 3829);
HOSTMGR_AT(_tagVexoHostMgrNetCfg, wRtspPort, 3830);

/** The recorder's clock, long form, 24 bytes (#HOSTMGR_CONFIG_DEVICE_TIME): local time. */
struct _tagVexoHostMgrDeviceTime {
    uint32_t dwYear;    ///< four digits
    uint32_t dwMonth;   ///< 1 to 12
    uint32_t dwDay;     ///< 1 to 31
    uint32_t dwHour;    ///< 0 to 23
    uint32_t dwMinute;  ///< 0 to 59
    uint32_t dwSecond;  ///< 0 to 59
};
static_assert(sizeof(_tagVexoHostMgrDeviceTime) == 24, "six words");
HOSTMGR_AT(_tagVexoHostMgrDeviceTime, dwYear, 0);
HOSTMGR_AT(_tagVexoHostMgrDeviceTime, dwMonth, 4);
HOSTMGR_AT(_tagVexoHostMgrDeviceTime, dwDay, 8);
HOSTMGR_AT(_tagVexoHostMgrDeviceTime, dwHour, 12);
HOSTMGR_AT(_tagVexoHostMgrDeviceTime, dwMinute, 16);
HOSTMGR_AT(_tagVexoHostMgrDeviceTime, dwSecond, 20);

/** The recorder's clock, short form, 12 bytes (#HOSTMGR_CONFIG_DEVICE_TIME): local time and its offset. */
struct _tagVexoHostMgrDeviceTimeShort {
    uint16_t wYear;      ///< four digits
    uint8_t byMonth;     ///< 1 to 12
    uint8_t byDay;       ///< 1 to 31
    uint8_t byHour;      ///< 0 to 23
    uint8_t byMinute;    ///< 0 to 59
    uint8_t bySecond;    ///< 0 to 59
    uint8_t byFixedOne;  ///< 1
    int32_t lUtcOffset;  ///< minutes east of UTC as the system call tells it; 0 where the C library no longer does
};
static_assert(sizeof(_tagVexoHostMgrDeviceTimeShort) == 12, "three words");
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, wYear, 0);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, byMonth, 2);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, byDay, 3);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, byHour, 4);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, byMinute, 5);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, bySecond, 6);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, byFixedOne, 7);
HOSTMGR_AT(_tagVexoHostMgrDeviceTimeShort, lUtcOffset, 8);

// ---- records: log --------------------------------------------------------------------------------------------------

// The record is the recorder's own; its header declares the same one, so whoever includes both sees it once.
#ifndef VEXO_HOSTMGR_LOG_RECORD
#define VEXO_HOSTMGR_LOG_RECORD
/** One entry of the recorder's log, as the recorder hands it to the log hook. Texts are NUL-terminated. */
struct tag_VexoHostMgrLog {
    uint32_t dwTime;  ///< seconds since 1970, UTC
    uint32_t dwType;  ///< the recorder's log type number
    char sUser[32];   ///< who caused it, or empty
    char sText[256];  ///< what happened
};
#endif
static_assert(sizeof(tag_VexoHostMgrLog) == 296, "log entry");
HOSTMGR_AT(tag_VexoHostMgrLog, dwTime, 0);
HOSTMGR_AT(tag_VexoHostMgrLog, dwType, 4);
HOSTMGR_AT(tag_VexoHostMgrLog, sUser, 8);
HOSTMGR_AT(tag_VexoHostMgrLog, sText, 40);

// ---- records of functions that are not supported -------------------------------------------------------------------
// Nobody reads or writes them; only their names are part of the interface.

struct _tagVexoHostMgrSearchDeviceInfo;
struct _tagVexoHostMgrQRCode;
struct _tagVexoHostMgrTimeV2;
struct VexoHostMgrOnlineUserInfo_T;
struct VexoHostMgrLogResult_T;
struct VexoHostMgrIPCProtoType_T;
struct VexoHostMgrManagerHostProtocol_T;
struct VexoHostMgr3GDevice_T;
struct VexoHostMgrDDNSService_T;

#undef HOSTMGR_AT

// ---- callbacks -----------------------------------------------------------------------------------------------------
// Every callback gets the pUser that was registered with it. Threads and what may not be called: see the top.

/**
 * An entry of the recorder's log, while it is being made.
 * @param lLogin the recorder's own: the login that caused the entry, or 0.
 * @param pLog the entry; valid until the callback returns.
 */
typedef void (*vexo_hostmgr_log_hook)(int lLogin, tag_VexoHostMgrLog* pLog, void* pUser);

/**
 * A frame of a callback playback, or the end of a channel.
 * @param pBuffer #_tagVexoHostMgrFrameHeader and payload, valid until the callback returns; null at the end of the
 *   channel, which is then taken out of the play.
 * @param dwBufSize bytes, header included; 0 at the end of the channel.
 */
typedef void (*vexo_hostmgr_stream_callback)(int hLogin, int hStream, unsigned char* pBuffer, unsigned int dwBufSize,
                                             void* pUser);

/**
 * A frame of a reader playback, or the end of a channel.
 * @param lChannel channel, from 1.
 * @param dwStreamType #HostMgrStreamIndex that the channel plays.
 * @param pBuffer #_tagVexoHostMgrFrameHeader and payload, valid until the callback returns; null at the end.
 * @param dwBufSize bytes, header included; 0 at the end.
 * @return 0: taken. Anything else: refused, which the recorder is told as #HOSTMGR_FRAME_REFUSED; what it does then is
 *   its own matter. At the end of a channel the result is not used.
 */
typedef int (*vexo_hostmgr_stream_callback_v2)(int hLogin, int hStream, int lChannel, int dwStreamType,
                                               unsigned char* pBuffer, unsigned int dwBufSize, void* pUser);

/**
 * A block of audio from the recorder: #_tagVexoHostMgrTalkBlockHeader and the frames captured since the block before.
 * It comes when #HOSTMGR_TALK_BLOCK_FRAMES frames of #HOSTMGR_TALK_FRAME_SIZE bytes are gathered, every 320 ms: 2584
 * bytes. A recorder that captures longer frames fills it sooner, and two things are then as follows:
 * - dwBufSize counts the last frame as 320 bytes; dwUsedLen in the block's header says where its audio really ends;
 * - a frame that does not fit behind what has been gathered (one of more than 2856 bytes) makes two calls: first what
 *   has been gathered (24 bytes when nothing was), then the frame alone, which starts at byte 0 in place of the header,
 *   with a dwBufSize of 320. Its own length is not told.
 * @param pBuffer #HOSTMGR_TALK_BLOCK_MAX readable bytes, valid until the callback returns.
 * @param dwBufSize bytes of the block, header included.
 */
typedef void (*vexo_hostmgr_talk_callback)(int hLogin, int hTalk, unsigned char* pBuffer, unsigned int dwBufSize,
                                           void* pUser);

/**
 * An alarm that is active now. Repeated every second for as long as it is; its end is not reported. An event that
 * #HostMgrAlarmType does not list is reported, too: with the type of the event before it in the same second (0 for the
 * first) and its own channel in class 2, otherwise channel 0; in class 5 with type 2 and the channel of the event
 * before.
 * @param hLogin as given to SetAlarmCallback.
 * @param lChannel as #_tagVexoHostMgrAlarmInfo::dwChannel.
 * @param lStreamType as given to SetAlarmCallback.
 * @param dwAlarmType a #HostMgrAlarmType.
 * @param pBuffer a #_tagVexoHostMgrAlarmInfo, this callback's own, valid until it returns.
 * @param dwBufSize 132.
 */
typedef void (*vexo_hostmgr_alarm_callback)(int hLogin, int lChannel, int lStreamType, unsigned int dwAlarmType,
                                            unsigned char* pBuffer, unsigned int dwBufSize, void* pUser);

/**
 * A picture of a capture task. The file is the library's: it is deleted when the list of pictures is trimmed, the task
 * is stopped or the login ends; copy what is to last.
 * @param hCapture the task.
 * @param pInfo a copy, valid until the callback returns. A size of 0 means that there is no file. (An alarm picture
 * that the library had no memory to keep has its size, but its file is gone already.)
 * @param pUser as given with the callback.
 */
typedef void (*vexo_hostmgr_capture_callback)(int hCapture, _tagVexoCapturePictureInfo* pInfo, void* pUser);

/** Of the device search, which is not supported: never called. */
typedef void (*vexo_hostmgr_search_callback)(int, int, unsigned int, int, _tagVexoHostMgrSearchDeviceInfo*,
                                             unsigned int, void*);

namespace vexo_soft {

// ---- login and library state ---------------------------------------------------------------------------------------

/**
 * Readies the library: the recorder's utility platform and configuration, the login table, the alarm thread, the
 * diagnostics menu. Call it before anything else; later calls, from any thread, do nothing, and a call that meets
 * another one under way waits for it. A failure ends the process (see Logging at the top).
 */
HOSTMGR_API void vexo_HostMgr_Dev_init();

/** LoginV2 with flag 0. */
HOSTMGR_API int vexo_HostMgr_Dev_Login(char* sUserName, char* sPassword, char* sIp);

/**
 * Logs in to the recorder.
 * Both credentials null: as the recorder's own user "admin", with the password it holds and the address 127.0.0.1. Both
 * given (an empty text is given): with these. The recorder gets them whole; diagnostics keep 31 characters of the name,
 * 15 of the password and 39 of the address, the password in clear. All other logins, logouts and lookups wait while the
 * recorder answers.
 * @param sUserName user name or null.
 * @param sPassword password or null.
 * @param sIp the peer's address as text, at most 255 characters are used; null counts as "-".
 * @param dwFlag its lowest bit goes to the recorder with a login as "admin"; else not used.
 * @param lSpare never read.
 * @return the login handle, to be given to Logout; -1: not initialised, #HOSTMGR_MAX_LOGINS logins in use, only one of
 *   the two credentials given, no user "admin", or refused by the recorder. Where login ids are as small as table slots
 *   (1 to 127), a failed login may end the login whose handle equals the number of the slot it had taken.
 */
HOSTMGR_API int vexo_HostMgr_Dev_LoginV2(char* sUserName, char* sPassword, char* sIp, unsigned int dwFlag, int lSpare);

/**
 * Logs out and ends everything that the login had: plays, talk, capture tasks (with their picture files), query
 * results, alarm callback. Waits for the login's replay, talk and capture threads. Frames still held by stream buffers
 * are not given back to the recorder: destroy the buffers first. A mosaic that was started goes on being encoded.
 * Status lists and documents stay the caller's.
 * @return 0 for every handle of 1 or more, known or not, whatever the recorder says; -1: not initialised, or below 1.
 */
HOSTMGR_API int vexo_HostMgr_Dev_Logout(int hLogin);

/**
 * Has the recorder hand each entry of its log to a function. It goes straight to the recorder, which keeps it from then
 * on; a later call replaces it there. No login is needed or checked; before initialisation it does nothing.
 * @param lSpare never read.
 * @param pfnHook the function; null as the recorder takes it (as a rule: ends it).
 * @param pUser handed back to it.
 */
HOSTMGR_API void vexo_HostMgr_Dev_SetHook_InsertLog(int lSpare, vexo_hostmgr_log_hook pfnHook, void* pUser);

// ---- configuration and control -------------------------------------------------------------------------------------

/**
 * Reads one block of configuration or state, as it is now, into the caller's buffer. Takes no lock, keeps nothing.
 * @param hLogin not looked at.
 * @param dwCommand a #HostMgrConfigCommand; each names its record and size.
 * @param lStartChan first channel, from 1, at most 128; used by #HOSTMGR_CONFIG_ENCODE, checked with every command.
 * @param lChanNum number of channels; used by #HOSTMGR_CONFIG_ENCODE.
 * @param lpCondBuffer not used, nor is dwCondBufferSize.
 * @param lpOutBuffer to be filled, at any address. All of dwOutBufferSize is cleared first, but: FACTORY clears whole
 *   entries, ZERO_CODEC and VERSION clear nothing.
 * @param dwOutBufferSize bytes that there really are.
 * @param lpBytesReturned bytes filled, or null. Whole entries for FACTORY, filled or not; the text's length without its
 *   terminator for PICTURE_DIR. Set early by most commands: after a failure its value means nothing.
 * @return 0; -1: not initialised, no buffer or size 0, lStartChan above 128 (a negative one passes), unknown command, a
 *   size that the command does not take, or
 *   - DEVICE: below 132 bytes, or no capability record. Any other size than 132 and 164 gives 0 and writes nothing;
 *   - ENCODE: no further cause; a channel that cannot be read leaves its entry at zero;
 *   - ZERO_CODEC: resolution ability (or an empty one), resolution, bit rate or frame rate cannot be read;
 *   - NETWORK: no capability record, or more than 16 interfaces or bonds; what else cannot be read is left at zero or
 *     at its default;
 *   - FACTORY: no file, no XML, no document to be had, or no item with a value among the first size / 304 of the file:
 *     an item without one takes no entry, but counts. An item that has its value in the old attribute "Uuid" gets it in
 *     "content", too, and the file is saved;
 *   - PICTURE_DIR: no disk, or none that is normal, above 16 MB, and has a partition of a size value above 15. A path
 *     that does not fit is cut here, and made whole on the disk.
 *   After a failure the buffer may be cleared or partly filled. Wrong sizes are silent for DEVICE, ENCODE, DEVICE_TIME,
 *   USERS, ZERO_CODEC, NETWORK, PLATFORMS and FACTORY. Disks, channels and users that cannot be read are left at zero,
 *   platforms left out; that is no failure.
 */
HOSTMGR_API int vexo_HostMgr_Dev_GetConfig(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum,
                                           void* lpCondBuffer, unsigned int dwCondBufferSize, void* lpOutBuffer,
                                           unsigned int dwOutBufferSize, unsigned int* lpBytesReturned);

/**
 * Writes factory items into the recorder. Its data is the SECOND buffer. An item that the recorder has is replaced, one
 * that it does not have is added.
 * @param dwCommand #HOSTMGR_SETCONFIG_FACTORY, the only one.
 * @param lStartChan not used, nor are lChanNum, lpCondBuffer and dwCondBufferSize.
 * @param lpInBuffer array of #_tagVexoHostMgrFactoryInfo; entries without a name are skipped.
 * @param dwInBufferSize bytes, at least 304; a remainder below 304 is ignored.
 * @return 0; -1: not initialised, hLogin below 1 or not logged in (said in words of its own), unknown command, no
 * buffer or too small, or an item that the recorder refuses (the entries before it stay written).
 */
HOSTMGR_API int vexo_HostMgr_Dev_SetConfig(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum,
                                           void* lpCondBuffer, unsigned int dwCondBufferSize, void* lpInBuffer,
                                           unsigned int dwInBufferSize);

/** No ability type is supported: use GetConfig. @return always -1; no argument is looked at, no buffer touched. */
HOSTMGR_API int vexo_HostMgr_Dev_GetAbility(int hLogin, unsigned int dwAbilityType, char* pInBuf,
                                            unsigned int dwInLength, char* pOutBuf, unsigned int dwOutLength);

/**
 * Reads a document that SaveCfg saved. Takes no lock; no login is needed.
 * @param pHostMgrName the document's name, /config/hostmgr_NAME.xml, of any length the recorder's file system takes.
 * @return its XML, NUL-terminated, in at least 1024 bytes from malloc(): the caller releases it with free(). An empty
 *   text, or part of it, when the document could not be written out as text. Null: not initialised, no name, no such
 *   file, no XML in it (silently), no document to be had or its size not to be told, or no memory.
 */
HOSTMGR_API char* vexo_HostMgr_Dev_ReadCfg(char* pHostMgrName);

/**
 * Saves an XML document of the agent's on the recorder, replacing one of the same name. Takes no lock; no login is
 * needed.
 * @param pHostMgrName the document's name, which becomes part of a path (/config/hostmgr_NAME.xml): no separators.
 * @param pXml the document; read up to its terminating NUL, whatever dwXmlSize says.
 * @param dwXmlSize must not be 0; otherwise only printed.
 * @return 0, even when the file could NOT be written (the console says so): read it back to be sure. -1: not
 *   initialised, no name or text, size 0, no document to be had, no memory, or malformed XML (an earlier document stays
 *   as it was).
 */
HOSTMGR_API int vexo_HostMgr_Dev_SaveCfg(char* pHostMgrName, char* pXml, unsigned int dwXmlSize);

/**
 * Sends a command to the recorder: PTZ, recording, alarm upload, playback, reboot, power-off, restore. A known command
 * gives 0 WHATEVER comes of it; what fails shows on the console alone: no buffer or size 0 (PTZ, RECORD, ALARM_ENABLE),
 * a size other than 60 (PLAYBACK), a command or switch value that its list does not have, what the recorder refuses.
 * PLAYBACK commands wait while a stream callback of the login runs (callback playback). The others take no lock but
 * ALARM_ENABLE; the recorder is called on the calling thread, channel after channel, and its answer for a channel is
 * not looked at. A record may stand at any address.
 * @param dwCommand a #HostMgrControlCommand, which names its record.
 * @param lStartChan first channel, from 1 (PTZ, RECORD); not checked here, nor is the last one.
 * @param lChanNum number of channels; 0 or less sends nothing (PTZ, RECORD).
 * @param lpCondBuffer first buffer: ALARM_ENABLE.
 * @param lpInBuffer second buffer: PTZ, RECORD, PLAYBACK (which also writes the time asked for into it).
 * @param lpOutBuffer third buffer: not used, nor is dwOutBufferSize.
 * @return 0 for every command of the list; -1: the frame's failures, or an unknown command (silently).
 */
HOSTMGR_API int vexo_HostMgr_Dev_Control(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum,
                                         void* lpCondBuffer, unsigned int dwCondBufferSize, void* lpInBuffer,
                                         unsigned int dwInBufferSize, void* lpOutBuffer, unsigned int dwOutBufferSize);

// ---- live view -----------------------------------------------------------------------------------------------------

/** Does nothing: live frames need a stream buffer only. @return 0; -1: the frame's failures. */
HOSTMGR_API int vexo_HostMgr_Dev_StartRealPlay(int hLogin, int lChannel, int lStreamIdx);

/** Does nothing, as StartRealPlay. @return 0; -1: the frame's failures. */
HOSTMGR_API int vexo_HostMgr_Dev_StopRealPlay(int hLogin, int lChannel, int lStreamIdx);

/**
 * Opens a cursor that reads the live frames of one channel and stream, audio included. Several on the same stream are
 * independent of each other. Give it back with DestroyRealStreamBuffer.
 * @param dwChannel 1 to 256. 0 passes, too, but names no channel.
 * @param dwStreamIdx a #HostMgrStreamIndex.
 * @return the stream-buffer handle; -1: the frame's failures, dwChannel above 256, another stream, or
 *   #HOSTMGR_MAX_STREAM_BUFFERS of this login in use.
 */
HOSTMGR_API int vexo_HostMgr_Dev_CreateRealStreamBuffer(int hLogin, unsigned int dwChannel, unsigned int dwStreamIdx);

/**
 * Switches the reading of audio on or off; it is on at first. Audio frames that are held stay held until the next read
 * or release.
 * @param bEnable exactly 1 is on, all else off.
 * @return 0; -1: the frame's failures, hID 0 or below, or no such stream buffer.
 */
HOSTMGR_API int vexo_HostMgr_Dev_RealStreamBufferEnableAudio(int hID, unsigned int bEnable);

/**
 * Reads the next live frame and holds it; a frame still held is released first. Video and audio take turns, video
 * first; when the one whose turn it is has nothing new, the other is tried. Does not wait: call again after a while
 * when there is nothing yet. Calls on one login's buffers take turns.
 * @param pdwChannel channel of the buffer.
 * @param pdwStreamIdx stream of the buffer, for audio too.
 * @param ppBuffer the frame: #_tagVexoHostMgrFrameHeader and payload. Read only, the recorder's, valid until the next
 *   read, release or destroy on this handle.
 * @param pdwLength bytes of the frame, header included.
 * @param pdwFrameInfo the frame information word, a #HostMgrFrameType.
 * @param pdwFlags bits of #HostMgrLiveFlag.
 * @return 0; -1, silently: no frame now, no such stream buffer, or an output is null. -1 with a message: the frame's
 *   failures, or hID 0 or below. On failure the outputs hold nothing of use.
 */
HOSTMGR_API int vexo_HostMgr_Dev_ReadRealOneFrame(int hID, unsigned int* pdwChannel, unsigned int* pdwStreamIdx,
                                                  unsigned char** ppBuffer, unsigned int* pdwLength,
                                                  unsigned int* pdwFrameInfo, unsigned int* pdwFlags);

/**
 * Gives the held frame back to the recorder, whose pointer is invalid from then on. Optional between two reads.
 * @return 0, also when nothing is held or the buffer is unknown; -1: the frame's failures, or hID 0 or below.
 */
HOSTMGR_API int vexo_HostMgr_Dev_ReleaseRealOneFrame(int hID);

/**
 * Releases the held frame and closes the stream buffer; its number may be given out again.
 * @return 0; -1: the frame's failures, hID 0 or below, or no such stream buffer.
 */
HOSTMGR_API int vexo_HostMgr_Dev_DestroyRealStreamBuffer(int hID);

/**
 * Switches the zero channel on: one video stream that shows several channels as a square mosaic of 1, 4, 9, 16, 25, 36,
 * 49 or 64 pictures, whichever first holds the list. More than 64 channels fall back to ONE picture, the first of the
 * list. Places beyond the list are sent as 0.
 * @param lSpare never read.
 * @param dwCount entries of the list.
 * @param pdwChannels channel numbers, row by row, passed to the recorder as they are.
 * @return the zero-channel handle; -1: the frame's failures, an empty or null list or already started by this login
 *   (silently), or refused by the recorder. When only the list is refused, the recorder encodes nonetheless.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StartZeroCodec(int hLogin, int lSpare, unsigned int dwCount,
                                                unsigned int* pdwChannels);

/**
 * Changes the mosaic; the rule is that of StartZeroCodec, and started or not does not matter.
 * @param lSpare never read.
 * @param dwCount entries; 0 sends one picture with the channel number 0xFFFFFFFF.
 * @param pdwChannels channel numbers; may be null when dwCount is 0.
 * @return 0; -1: the frame's failures, handle 0 or below, null list with a count (silently), or refused by the
 *   recorder.
 */
HOSTMGR_API int vexo_HostMgr_Dev_SetZeroCodecMode(int lZeroCodecHandle, int lSpare, unsigned int dwCount,
                                                  unsigned int* pdwChannels);

/**
 * Reads the next frame of the mosaic. Does not wait. A frame stays valid until the next successful read or until stop;
 * there is no release. Whether it was started is not checked; start it first all the same (see StopZeroCodec).
 * @param dwSpare never read.
 * @param ppBuffer the frame: #_tagVexoHostMgrFrameHeader and payload, read only; untouched on failure.
 * @param pdwLength bytes of the frame, header included; 0 on failure.
 * @param pdwFrameInfo the frame information word, a #HostMgrFrameType; 0 on failure.
 * @return 0; -1: the frame's failures, handle 0 or below, an output null, or no frame now (silently, but for the
 *   first).
 */
HOSTMGR_API int vexo_HostMgr_Dev_ReadZeroCodecStream(int lZeroCodecHandle, unsigned int dwSpare,
                                                     unsigned char** ppBuffer, unsigned int* pdwLength,
                                                     unsigned int* pdwFrameInfo);

/**
 * Ends this login's reading and releases its frame, but not one that was read without a start. The next read begins
 * with the newest key frame. The recorder goes on encoding the mosaic.
 * @return 0, started or not; -1: the frame's failures, or handle 0 or below.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StopZeroCodec(int lZeroCodecHandle);

// ---- history playback ----------------------------------------------------------------------------------------------
// Start channels, register a callback, then send HOSTMGR_PLAYCMD_SPEED through Control: nothing is delivered before it.

/**
 * Callback playback: adds a channel to the login's play, whose frames its replay thread hands to a callback of the
 * stream, video paced by its time stamps and the speed, audio (once switched on) and downloads at once. Gaps below 1 ms
 * or of 10 s and more count as 40 ms. A frame up to 100 ms late keeps the cadence; a later one, or a clock that was set
 * back, starts it anew. Call it once a channel; the same channel twice gives two streams of one handle, and the end of
 * either takes away the one that was started first.
 * After a reader playback on the same login, the first speed command would confine this play to that one's range: use
 * another login.
 * @param lChannel 1 to 256.
 * @param dwMode a #HostMgrPlayMode; holds for this channel and those added later.
 * @param pStartTime start of the range (see Times at the top).
 * @param pStopTime end of the range.
 * @return the playback handle; -1: the frame's failures, lChannel out of range, a time null, or recordings, a reader or
 *   memory not to be had from the recorder. In the last three cases the play counts as started and needs a stop.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StartHistoryPlay(int hLogin, int lChannel, unsigned int dwMode,
                                                  _tagVexoHostMgrTime* pStartTime, _tagVexoHostMgrTime* pStopTime);

/**
 * Reader playback: the recorder combines the channels, paces them on a thread of its own and hands every frame, audio
 * included, to one callback. One channel a start; further ones by #HOSTMGR_PLAYCMD_ADDCHAN. The audio switch has no
 * effect here. The speed changes no pace, but from 5 on leaves key frames only; as the first command of a play it does
 * not even that. A frame that arrives while the play is paused is refused without a call.
 * @param lChannel at most 256. 0 and below pass, but name no channel.
 * @param dwMode not used.
 * @param pStartTime start of the range.
 * @param pStopTime end of the range.
 * @param pfnStreamCallBack gets every frame; null refuses them all.
 * @param pUser handed back to it.
 * @return the playback handle; -1: the frame's failures, lChannel above 256, a time null, a play of this login already
 *   started, or recordings, a reader or memory not to be had from the recorder (nothing is started then).
 */
HOSTMGR_API int vexo_HostMgr_Dev_StartHistoryPlayV2(int hLogin, int lChannel, unsigned int dwMode,
                                                    _tagVexoHostMgrTime* pStartTime, _tagVexoHostMgrTime* pStopTime,
                                                    vexo_hostmgr_stream_callback_v2 pfnStreamCallBack, void* pUser);

/**
 * Ends the login's WHOLE play, all its channels, without end marks, and waits for its replay thread, which may take a
 * second, or for the reader playback's callback. When it has returned no frame comes any more; of two stops at once,
 * the one that returns -1 does not wait. Pause, direction, speed and audio switch hold on into the next play.
 * @param hStream not looked at.
 * @return 0; -1: the frame's failures, or nothing started.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StopHistoryPlay(int hLogin, int hStream);

/**
 * Gives a stream of a callback playback its callback; a stream without one delivers nothing and keeps its place, but is
 * taken out of the play at its end all the same. Waits while a callback of the login runs.
 * @param hStream from StartHistoryPlay; of two streams of one channel, the one that was started first.
 * @param pfnStreamCallBack the callback, or null.
 * @param pUser handed back to it.
 * @return 0, also when no such stream is playing (the console says so); -1: the frame's failures, or hStream 0 or
 *   below.
 */
HOSTMGR_API int vexo_HostMgr_Dev_SetHistoryStreamCallback(int hLogin, int hStream,
                                                          vexo_hostmgr_stream_callback pfnStreamCallBack, void* pUser);

// ---- record-file query ---------------------------------------------------------------------------------------------

/**
 * Searches the recordings of a channel and keeps the list, one a login, for GetQueryFileResult, until QueryRelease or
 * logout. Release the one before it first: a list that is not released is lost, and its memory with it. Other calls of
 * the login's search wait meanwhile.
 * @param lChannel channel, from 1; not checked here.
 * @param pQuery what to search for.
 * @return number of files, 0 and more, in order of time; -1: the frame's failures, pQuery null, refused by the recorder
 *   (silently), or no memory (silently; the entries of the list before it can still be read).
 */
HOSTMGR_API int vexo_HostMgr_Dev_QueryFile(int hLogin, int lChannel, _tagVexoHostMgrQueryFile* pQuery);

/**
 * Reads from the list of the last QueryFile.
 * @param lIndex an entry, from 0; or below 0: a block from entry 0 on.
 * @param pResult to be filled; null only asks for the number of files.
 * @param dwCount single entry: 0 copies nothing, else one is copied. Block: up to dwCount PLUS ONE entries are written,
 *   so pResult must have room for dwCount + 1; above 0x7FFFFFFF none is.
 * @return entries copied; with pResult null the number of files (which still stands after a release); -1: the frame's
 *   failures, lIndex at or past the number of files, or the entries of a released list.
 */
HOSTMGR_API int vexo_HostMgr_Dev_GetQueryFileResult(int hLogin, int lIndex, _tagVexoHostMgrQueryFileResult* pResult,
                                                    unsigned int dwCount);

/** Releases the list of the last QueryFile. @return 0, list or not; -1: the frame's failures. */
HOSTMGR_API int vexo_HostMgr_Dev_QueryRelease(int hLogin);

// ---- talk ----------------------------------------------------------------------------------------------------------

/** StartTalkEx with channel 0. */
HOSTMGR_API int vexo_HostMgr_Dev_StartTalk(int hLogin, _tagVexoHostMgrTalkParam* pParam);

/**
 * Starts two-way audio, one talk a login. Its thread moves, every 30 ms, one captured frame towards the callback and
 * one queued frame to the recorder. When the recorder cannot make the thread, the talk stands but nothing moves.
 * @param lChannel 0: with the recorder itself; from 1: with that channel's camera.
 * @param pParam must be given; its contents are not read.
 * @return the talk handle; -1: the frame's failures, pParam null, a talk already running (or left behind by a stop that
 *   failed), no capability record, lChannel below 0 or above the recorder's highest for talk, or refused by it.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StartTalkEx(int hLogin, int lChannel, _tagVexoHostMgrTalkParam* pParam);

/**
 * Queues audio for the recorder to play; copied, so the buffer is free at once. All audio of one call is played as one
 * frame. The queue has no limit: send at the pace of the sound (40 ms for 320 bytes).
 * @param pData #_tagVexoHostMgrTalkBlockHeader, then audio, at least one frame of #HOSTMGR_TALK_FRAME_SIZE bytes; at
 *   any address.
 * @param dwDataSize bytes, header included: 344 and more.
 * @return 0 (also, with the data dropped, while a stop is under way and after one that the recorder refused or that
 *   named another talk); -1: the frame's failures, no data, a talk handle or login that is not the talk's, less than
 *   header and one frame (silently), or no memory.
 */
HOSTMGR_API int vexo_HostMgr_Dev_InputTalkData(int hLogin, int hTalk, char* pData, unsigned int dwDataSize);

/**
 * Ends the talk, drops what is queued and waits for its thread: no callback runs once it has returned. From the talk
 * callback it does not wait: that callback is the last, and the thread ends after it.
 * @param hTalk the talk's handle. ANOTHER handle above 0 stops the library's side and gives 0, but the recorder's talk
 *   goes on, and this login can start none before it has logged out.
 * @return 0; -1: the frame's failures, hTalk 0 or below, no talk running, or refused by the recorder (the talk counts
 *   as stopped, and this login can start none before it has logged out).
 */
HOSTMGR_API int vexo_HostMgr_Dev_StopTalk(int hLogin, int hTalk);

/**
 * Registers who gets the recorder's audio; null ends it. Only while the talk stands: set it after each start. A block
 * that is being handed over meanwhile still goes to the callback before.
 * @return 0; -1: the frame's failures, or a handle that is not the talk's (silently).
 */
HOSTMGR_API int vexo_HostMgr_Dev_SetTalkCallback(int hLogin, int hTalk, vexo_hostmgr_talk_callback pfnTalkCallBack,
                                                 void* pUser);

// ---- alarms --------------------------------------------------------------------------------------------------------

/**
 * Registers who gets the recorder's alarms, one callback a login. It is called on the alarm thread, once a second for
 * each alarm that is active. A callback switches upload on, null switches it off (#HOSTMGR_CONTROL_ALARM_ENABLE does
 * either, later). After a change, or a logout, on another thread the one before may be called once more, or still be
 * running: what it uses must last until then. Changed from the callback itself, it is not called again.
 * @param lChannel 0, for all. Any other channel is accepted, but NEVER served: the console says "Not support!!" once
 * for every alarm, every second.
 * @param lStreamType handed back to the callback; 1 main, else sub.
 * @param pfnAlarmCallBack the callback, or null.
 * @param pUser handed back to it.
 * @return 0; -1: the frame's failures.
 */
HOSTMGR_API int vexo_HostMgr_Dev_SetAlarmCallback(int hLogin, int lChannel, int lStreamType,
                                                  vexo_hostmgr_alarm_callback pfnAlarmCallBack, void* pUser);

/**
 * Reads what is active now, subscribed or not; no other call waits for it. The entries stand in the order of the
 * recorder's event table; one kind of event (class 5, sub-type 28, with 0 in the word that holds a class-2 event's
 * channel) ends the list early: it and all entries after it are zero.
 * @param ppStatus the list, the caller's until it gives it to ReleaseAlarmStatus. Untouched on failure.
 * @param pdwCount entries of the list, zero ones included. 0 when everything ended while it was read: the list is to be
 *   released all the same. Untouched on failure.
 * @return 0; -1: the frame's failures, an output null, nothing active at all, the event table not to be read (or grown
 *   by more than 100 events meanwhile), or no memory for the list. (No memory for the events ends the process.)
 */
HOSTMGR_API int vexo_HostMgr_Dev_GetAlarmStatus(int hLogin, _tagVexoHostMgrALarmStatusInfo** ppStatus,
                                                unsigned int* pdwCount);

/**
 * Releases a list from GetAlarmStatus, once. No login is needed: also after logout.
 * @param pStatus the list; null is accepted.
 * @return 0; -1: not initialised.
 */
HOSTMGR_API int vexo_HostMgr_Dev_ReleaseAlarmStatus(_tagVexoHostMgrALarmStatusInfo* pStatus);

// ---- picture capture -----------------------------------------------------------------------------------------------

/**
 * Takes one JPEG picture now. Takes no lock; the calling thread waits for the recorder.
 * @param lChannel channel, from 1, at most 256. 0 and below pass, but name no channel.
 * @param lStreamIdx a #HostMgrStreamIndex; checked only, the recorder chooses.
 * @param sPicBuffer to be filled with the JPEG.
 * @param dwBufferSize bytes of it.
 * @param lpSizeReturned bytes of the picture, or null; untouched on failure.
 * @return 0; -1: the frame's failures, channel above 256, another stream, or the recorder took no picture (also: it
 *   does not fit).
 */
HOSTMGR_API int vexo_HostMgr_Dev_CapturePicture(int hLogin, int lChannel, int lStreamIdx, char* sPicBuffer,
                                                unsigned int dwBufferSize, unsigned int* lpSizeReturned);

/**
 * Starts a capture task. The login's capture thread looks at its tasks once a second. The pictures are JPEG files in
 * host_pic/agentsh_capture on a disk of the recorder, the last one that is local, external or an array, in normal
 * state, with a partition of 1024 MB or more; that directory is emptied, of other logins' pictures too, when a login
 * starts its first task and when it had vanished. While there is no such disk, no picture is taken. Of a login's
 * pictures the oldest go, see #HOSTMGR_MAX_CAPTURE_PICTURES. Two tasks of one kind and channel take the same files,
 * named after channel and time. Waits while a picture callback of the login runs.
 * @param lChannel channel, from 1; not checked here.
 * @param lStreamIdx reported back, otherwise not used.
 * @param pCfg the task; copied.
 * @param pfnCallBack gets the pictures; without one none is taken.
 * @param pUser handed back to it.
 * @return the task handle, to be given to StopCapturePicture, also when the capture thread could not be made (the next
 *   start tries again); -1: the frame's failures, pCfg null (silently), or #HOSTMGR_MAX_CAPTURE_TASKS of this login
 *   running.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StartCapturePicture(int hLogin, int lChannel, int lStreamIdx,
                                                     _tagVexoCapturePictureCfg* pCfg,
                                                     vexo_hostmgr_capture_callback pfnCallBack, void* pUser);

/**
 * Tells a capture task that an alarm has begun; the agent decides which alarm concerns which task. An alarm task takes
 * pictures from its start on. With the trigger it reports those of the last dwPreTime seconds, then each new one until
 * dwPostTime seconds have passed, counted from 0 and with the trigger's start; a picture that could not be taken is
 * reported with size 0. A trigger that is running is not prolonged, also in the second or so until the capture thread
 * has noticed its end. Other kinds of task only change their callback. Waits while a picture callback of the login
 * runs.
 * @param pfnCallBack replaces the task's callback, null too; with pUser.
 * @return 0; -1: the frame's failures, or no such task.
 */
HOSTMGR_API int vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(int hCapture, vexo_hostmgr_capture_callback pfnCallBack,
                                                             void* pUser);

/**
 * Stops a capture task and deletes the pictures that it took. Waits while a picture callback of the login runs. Prints
 * one plain line with its handle.
 * @return 0; -1: the frame's failures, or no such task.
 */
HOSTMGR_API int vexo_HostMgr_Dev_StopCapturePicture(int hCapture);

// ---- not supported -------------------------------------------------------------------------------------------------
// Kept for their names: each prints "Not support" (but Upgrade) and returns -1, whatever its arguments, and touches
// none of them. The first group looks the login up, which shows on the console alone; the second does not.

/** Would format a disk. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_FormatDisk(int hLogin, int lDisk);
/** Would tell how far formatting is. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetFormatProgress(int hLogin, int hFormat, int* plDisk, int* plProgress, int* plState);
/** Would end formatting. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_CloseFormatHandle(int hLogin, int hFormat);
/** Would tell the state of an upgrade. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetUpgradeState(int hLogin, int hUpgrade);
/** Would tell how far an upgrade is. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetUpgradeProgress(int hLogin, int hUpgrade);
/** Would end an upgrade. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_CloseUpgradeHandle(int hLogin, int hUpgrade);
/** Would upgrade the recorder; prints nothing for a valid login. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_Upgrade(int hLogin, char* pData, unsigned int dwDataSize, int lSpare);

/** Would read the streaming settings of a channel. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_TstGetRtspConfig(int, int, int, int*, int*, char*, int, int*, int*, int*);
/** Would search the network for devices. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_CreateSearchDevice(int, int, vexo_hostmgr_search_callback, void*);
/** Would search the network for devices, by protocol. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_CreateSearchDeviceEx(int, unsigned int*, unsigned int, int,
                                                      vexo_hostmgr_search_callback, void*);
/** Would begin a device search. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_StartSearchDevice(int);
/** Would halt a device search. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_StopSearchDevice(int);
/** Would read the devices found. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetSearchResult(int, int, _tagVexoHostMgrSearchDeviceInfo*, unsigned int);
/** Would end a device search. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_DestroySearchDevice(int);
/** Would change a found device's settings. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_ModifyDeviceInfo(int, unsigned int, _tagVexoHostMgrSearchDeviceInfo*);
/** Would take a picture from a found device. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_CapturePictureByDeviceInfo(_tagVexoHostMgrSearchDeviceInfo*, char*, unsigned int,
                                                            unsigned int*);
/** Would make a QR code. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_QuickResponseCode(char*, _tagVexoHostMgrQRCode*);
/** Would tell a channel's bit rates. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetChannelBitrates(int, int, int, unsigned int*, unsigned int*);
/** Would list the users who are online. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetOnlineUserInfo(int, VexoHostMgrOnlineUserInfo_T*, unsigned int);
/** Would tell the days of a month that have recordings. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_FindFileMonthly(int, unsigned int, unsigned int, unsigned int, unsigned int,
                                                 unsigned int*);
/** Would tell a stream's URL. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetRtspUrl(int, int, int, int, int, _tagVexoHostMgrTimeV2*, _tagVexoHostMgrTimeV2*,
                                            char*, unsigned int);
/** Would search the recorder's log. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_QueryLogOpen(int, int, unsigned int, unsigned int, _tagVexoHostMgrTimeV2*,
                                              _tagVexoHostMgrTimeV2*, unsigned int);
/** Would read the log entries found. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_QueryLogResults(int, int, int, VexoHostMgrLogResult_T*, unsigned int);
/** Would end a log search. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_QueryLogClose(int, int);
/** Would list the camera protocols. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetIPCProtocolList(int, VexoHostMgrIPCProtoType_T*, unsigned int);
/** Would manage camera protocols. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_IPCProtocolManage(int, unsigned int, unsigned int, void*, unsigned int);
/** Would list the platform protocols. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetSupportManagerHostProtocol(int, VexoHostMgrManagerHostProtocol_T*, unsigned int);
/** Would list the mobile network devices. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_Get3GDeviceList(int, VexoHostMgr3GDevice_T*, unsigned int);
/** Would list the dynamic DNS services. @return always -1. */
HOSTMGR_API int vexo_HostMgr_Dev_GetDDNSServiceAbility(int, VexoHostMgrDDNSService_T*, unsigned int);

}  // namespace vexo_soft

#endif  // HOSTMGR_DEV_H
