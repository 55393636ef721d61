// The model library (libmodel.so): logins, media, recordings, disks and device control. Declarations only. Unless an
// operation says otherwise it may be called from any thread once the utility platform and the configuration manager are
// up, an int result is 0 for success and non-zero for failure, an output is written on success only, texts are
// NUL-terminated, and channel indices count from 0.
#ifndef VEXO_MODEL_H
#define VEXO_MODEL_H

#include <stdint.h>

#include "vexo_types.h"

// ---- logins and users ----------------------------------------------------------------------------------------------

/** A peer's address. */
struct vexo_ip_struct {
    unsigned int family;  ///< 0
    char text[256];       ///< such as "192.168.1.20"; "-" when not known
};
static_assert(sizeof(vexo_ip_struct) == 260, "one word and the text");

/** A user of the recorder, with the password in clear. */
struct vexo_dev_usr_info {
    char usr_name[64];
    char usr_password[64];
    unsigned int usr_id;
};

int vexo_model_get_usr_info_byname(const char* name, vexo_dev_usr_info* info);

/**
 * Logs in at the recorder itself. *id receives the login id, from 1 to 65535, which stands until vexo_model_logout.
 * visible: whether the login shows among the recorder's users on line; exclusive: never set here.
 */
int vexo_model_login(const char* user, const char* password, const vexo_ip_struct* ip, unsigned int* id,
                     VEXO_BOOL visible, VEXO_BOOL exclusive);

/** Logs in over the network. The last three are for peers that prove themselves otherwise: false, null, null here. */
int vexo_model_remote_login(const char* user, const char* password, const vexo_ip_struct* ip, unsigned int* id,
                            VEXO_BOOL encrypted, char* challenge, char* answer);

/** Ends a login; forced is false here. An id that is not logged in is a failure. */
int vexo_model_logout(unsigned int id, VEXO_BOOL forced);

int vexo_model_get_usr_authority(const char* user, vexo_dev_usr_authority* authority);

// ---- live frame lists ----------------------------------------------------------------------------------------------
//
// Each channel keeps a list of its latest frames for every stream type. A reader walks it by list position. A frame
// that was handed out stays in memory, unchanged, until the same user releases the same position; frames are shared, so
// each successful get needs one release. A reader that falls behind the oldest frame goes on from the oldest key frame.

/**
 * The frame to start from: the newest key frame of a video list, the newest frame of the audio list. *frame points at a
 * vexo_frame_header with the payload behind it; it may be null on success, when there is no frame yet. *note receives
 * the frame's position, *no_video 1 when the channel has no video signal, else 0. Does not wait.
 */
int vexo_model_first_get_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type, unsigned char** frame,
                               vexo_read_av_list_note* note, VEXO_BOOL* no_video);

/** The frame after position current; a failure when there is none yet. Otherwise as vexo_model_first_get_frame. */
int vexo_model_get_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type,
                         const vexo_read_av_list_note* current, unsigned char** frame, vexo_read_av_list_note* note,
                         VEXO_BOOL* no_video);

/** Gives the frame at a position back. */
int vexo_model_rel_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type,
                         const vexo_read_av_list_note* note);

/** Prints a channel's frame list of one stream type through print. */
void vexo_rmta_dump_frame_list(unsigned int channel, vexo_enc_str_type type, vexo_print_func print);

// ---- zero channel --------------------------------------------------------------------------------------------------

/** One encoded picture that shows several channels in a square; one for the recorder, whoever reads it. It is encoded
 *  from when it is switched on until it is switched off; frames have the types VEXO_FRAME_ZERO_KEY and _DELTA. */
int vexo_model_zero_channel_set_enable(unsigned int id, VEXO_BOOL enable);

/**
 * Chooses the channels shown, from the next picture on: count entries, row by row, channels counted from 1; 0 and any
 * number without a channel, 0xFFFFFFFF among them, show nothing. count is a square from 1 to 256, else a failure.
 */
int vexo_model_zero_channel_set_video_channels(unsigned int id, const unsigned int* channels, unsigned int count);

/** As the live frame lists; a failure while the channel is switched off. On success of the first call *frame is null
 *  while there is no frame yet; the position then stands before the first. */
int vexo_model_zero_channel_first_get_frame(vexo_user_id user, unsigned char** frame, vexo_read_av_list_note* note);
int vexo_model_zero_channel_get_frame(vexo_user_id user, const vexo_read_av_list_note* current, unsigned char** frame,
                                      vexo_read_av_list_note* note);
int vexo_model_zero_channel_rel_frame(vexo_user_id user, const vexo_read_av_list_note* note);

struct vexo_resolution {
    unsigned int width;   ///< pixels
    unsigned int height;  ///< pixels
};
struct vexo_resolution_ability {
    unsigned int node_num;     ///< entries of node that hold
    vexo_resolution node[16];  ///< what the encoder can do
};
int vexo_model_zero_channel_get_resolution_ability(vexo_resolution_ability* ability);
int vexo_model_zero_channel_get_resolution(vexo_resolution* resolution);
/** Bit rate in kbit/s; mode 0 constant, otherwise variable. */
int vexo_model_zero_channel_get_bps(unsigned int* bps, unsigned int* mode);
/** Frames a second. */
int vexo_model_zero_channel_get_fps(unsigned int* fps);

// ---- recordings ----------------------------------------------------------------------------------------------------

/** One recorded file of a list. */
struct vexo_rec_file {
    unsigned int start;   ///< seconds since 1970; the file lies between start and stop
    unsigned int stop;    ///< seconds since 1970
    unsigned int type;    ///< record type bits: 1 by schedule, 2 motion, 4 alarm
    unsigned int info_1;  ///< word 3: the model library's, passed through
    unsigned int info_2;  ///< word 4: the model library's, passed through
    unsigned int reserved[2];
    vexo_rec_file* next;  ///< word 7: the next file, later in time; null at the end
};
static_assert(offsetof(vexo_rec_file, info_1) == 12 && offsetof(vexo_rec_file, info_2) == 16, "words 3 and 4");
static_assert(sizeof(void*) != 4 || offsetof(vexo_rec_file, next) == 28, "word 7 on the board");

/** A list of recorded files, owned by who asked for it. */
struct vexo_rec_file_inquiry_result {
    unsigned int channel;
    unsigned int reserved[2];
    vexo_rec_file* first;  ///< word 3: the first file, or null
};
static_assert(sizeof(void*) != 4 || offsetof(vexo_rec_file_inquiry_result, first) == 12, "word 3 on the board");

/**
 * Finds a channel's recordings that have any part between two local times, and lists them by time as they are now.
 * type_mask: record type bits; inquiry_type: 0 any of the bits, 1 all of them. A channel without recordings is a
 * success with an empty list or a failure, as the library decides; a time that the calendar does not have, or a stop
 * before the start, is a failure. May take as long as a disk takes.
 */
int vexo_model_inquiry_rec_by_time(unsigned int id, vexo_user_id user, unsigned int channel,
                                   const vexo_time_struct* start, const vexo_time_struct* stop, unsigned int type_mask,
                                   unsigned int inquiry_type, vexo_rec_file_inquiry_result** result);
/** Gives a list back; null is ignored. */
void vexo_model_free_inquiry_rec_result(vexo_rec_file_inquiry_result* result);

/**
 * Reads one channel's recordings frame by frame: open takes the files, start begins. The settings (frame mode, stream
 * type, direction, time range) may be made in any state, hold for the next frame that is read, and outlast open, start
 * and close. Frames come by time, backward the latest first; sound comes forward with all frames only. Frames are read
 * and released by one thread at a time; everything else may come from another one meanwhile, close included, as when a
 * command meets an advance reader at work. Slots stand in this order; the reserved ones are not called.
 */
class vexo_avss_file_reader {
public:
    /**
     * Takes the list of files to read, in any state: reading is at the beginning (backward: at the end) of the time
     * range and waits for start. The list stays the caller's and must outlive the reader's use of it. A null list
     * fails.
     */
    virtual int open(vexo_rec_file_inquiry_result* files) = 0;
    /** 2: all frames; 0: key frames only. */
    virtual int set_frame_mode(unsigned int mode) = 0;
    /** 1: main stream; 2: sub stream. Reading goes on at a key frame of that stream. */
    virtual int set_stream_type(unsigned int type) = 0;
    /** 0: forward; 1: backward. Reading turns where it is; forward it goes on at a key frame. */
    virtual int set_direction(unsigned int reverse) = 0;
    /**
     * Goes on from that time, seconds since 1970, or from the time range's near end when the time is outside: forward
     * with the first key frame that is not before it, backward with the last frame that is not after it. A failure
     * before open. A frame that is held is not offered again; it stays until it is released or another one is read.
     */
    virtual int seek(long seconds) = 0;
    virtual int reserved_6() = 0;
    /**
     * The next frame, or the same one again while it has not been released. Non-zero, or a null frame: the end, or the
     * reader is not started. The end is none for good: a seek or another setting may bring more. The frame is the
     * reader's and stays until release_frame or close. It begins with a vexo_frame_header.
     */
    virtual int read_frame(unsigned char** frame, unsigned int reserved) = 0;
    /** Done with the current frame; the frame type is ignored. A failure when none is held. */
    virtual int release_frame(unsigned int frame_type) = 0;
    /** Limits reading to that range, seconds since 1970, both included; a stop that is not positive is ignored and the
     *  range stays, as it does, with a failure, when the stop is before the start. */
    virtual int set_time_range(long start, long stop) = 0;
    /** Ends reading; may be called again. */
    virtual int close() = 0;
    virtual int reserved_11() = 0;
    /** Begins reading, or does nothing when it has begun; a failure before open. */
    virtual int start() = 0;

protected:
    ~vexo_avss_file_reader() = default;
};

/**
 * Creates a reader; null on failure. Deleted with the caller's source file and function names, once it has been closed
 * and removed from every advance reader; that may be inside the callback of an advance reader for this very reader,
 * whose frame is not looked at any more when the callback returns. Null is ignored.
 */
vexo_avss_file_reader* vexo_model_new_avss_reader(vexo_user_id user, const char* name);
void vexo_model_delete_avss_reader(vexo_avss_file_reader* reader, const char* file, const char* function);

/**
 * Receives the frames that an advance reader pushes, on its own thread: the user parameter given with the channel's
 * reader, whether the frame holds data, and the frame, or null at the end of the channel. The frame stays until the
 * callback returns. Any answer but 0 offers the same again, some milliseconds later, and nothing else before; time
 * stands still meanwhile.
 */
typedef unsigned int (*vexo_advance_frame_callback)(void* usr_para, VEXO_BOOL is_valid_data, unsigned char* frame);

/**
 * Pushes the frames of several channel readers in step: the earliest of all is next (backward: the latest), at the pace
 * at which they were recorded; readers that give key frames only are paced faster, as the library decides, and where
 * nothing was recorded no time passes. Readers that are not started wait. The end of a channel is told once, and again
 * after its reader was sent elsewhere. It calls the callback with nothing of its own locked: the callback may call back
 * into it, deletion apart, and other threads may while the callback runs. Slots stand in this order; the reserved ones
 * are not called.
 */
class vexo_advance_avss_file_reader {
public:
    virtual int reserved_1() = 0;
    /** Includes a reader, also while pushing; usr_para goes to the callback with its frames. The reader stays its
     * maker's, and in here until it is removed: the end of its frames does not remove it. */
    virtual int add_reader(vexo_avss_file_reader* reader, void* usr_para) = 0;
    /** Excludes a reader; waits until the callback is not running for it, unless called from inside that callback. One
     *  that is not included is a failure, and nothing else. */
    virtual int remove_reader(vexo_avss_file_reader* reader) = 0;
    /** Moves all readers to that time, seconds since 1970. */
    virtual int seek(long seconds) = 0;
    /** Must come before start. */
    virtual int set_callback(vexo_advance_frame_callback callback) = 0;
    /** Begins pushing; the argument is 0. Does nothing when it has begun. */
    virtual int start(unsigned int argument) = 0;
    /** Ends pushing; may be called again. It may wait for a callback that runs, unless called from it, or not. */
    virtual int stop() = 0;
    virtual int reserved_8() = 0;
    virtual int reserved_9() = 0;
    /** Always 0 here. */
    virtual int set_param(unsigned int param) = 0;

protected:
    ~vexo_advance_avss_file_reader() = default;
};

/** As the two for the channel reader. Deletion waits until the reader's thread has ended, so not from the callback; it
 * comes when every channel's reader has been removed, and stopping first is not needed. */
vexo_advance_avss_file_reader* vexo_model_new_advance_avss_reader(vexo_user_id user, const char* name);
void vexo_model_delete_advance_avss_reader(vexo_advance_avss_file_reader* reader, const char* file,
                                           const char* function);

// ---- talk ----------------------------------------------------------------------------------------------------------

enum vexo_talk_mode : unsigned int {
    VEXO_TALK_DEVICE = 2,   ///< with the recorder itself
    VEXO_TALK_CHANNEL = 4,  ///< with a channel's camera
};

/**
 * Opens a talk for a login; *talk receives its handle, 1 or more, which stands until vexo_model_stop_talking. channel:
 * with VEXO_TALK_CHANNEL the camera's; with VEXO_TALK_DEVICE 0 and without meaning.
 */
int vexo_model_start_talking(unsigned int id, vexo_talk_mode mode, unsigned int channel, unsigned int* talk);
/** Another thread's fetch or play that the stop overtakes fails, and so must one that comes just after it. */
int vexo_model_stop_talking(unsigned int talk);

/**
 * Copies the next captured frame, header and payload, into buffer; a failure when there is none yet, and when size is
 * less than a header. What is beyond size bytes is left out, so that the header may claim more than was copied. As a
 * rule frames come 25 a second, 320 samples of G.711 A-law at 8000 Hz each; the oldest go when nobody fetches them.
 */
int vexo_model_get_talking_frame(unsigned int talk, unsigned char* buffer, unsigned int size);

/** Plays one frame, header and payload, 8000 samples a second; it is copied. Codecs are those of
 *  vexo_frame_header; an ADPCM payload is one IMA block as in a WAV file. */
int vexo_model_play_talking_frame(unsigned int talk, const unsigned char* frame);

// ---- device control ------------------------------------------------------------------------------------------------

/** Parameters of a PTZ code: their kind, 0 to 4, and up to four values; unused ones are 0. */
struct vexo_ipc_ptz_ctrl_para {
    unsigned int kind;
    unsigned int value[4];
};

/**
 * Moves a camera or tells it what to remember; a failure when the camera cannot do it. Codes, with the kind of their
 * parameters and the values:
 *   0x100-0x107  0 {speed}    turn up, down, left, right, up left, up right, down left, down right, until told to stop
 *   0x13149527   0            stop
 *   0x200 0x201  0 {speed}    a step in, out (zoom)
 *   0x300 0x301  0 {speed}    a step nearer, farther (focus)
 *   0x400 0x401  0 {speed}    a step more open, more closed (iris)
 *   0x500 0x600  0 {on}       wiper, light
 *   0x700-0x702  1 {number}   preset, 1 to 255: set, clear, go to
 *   0x800 0x801  3 {tour}     tour, 1 to 32: run, stop
 *   0x802        3 {tour, point, preset, seconds}  put a point, 1 to 64, into a tour; preset 0: of the point's
 *                             number; seconds to stand there, 0: 5
 *   0x803        3 {tour, 0, point}  take a point out
 *   0x805 0x807 0x808  2 {track}  track, 0 to 7: run, begin to remember, end
 *   0x809        0 {speed}    to and fro between both sides, until told to stop
 *   0x80A        4 {x, y, zoom}  turn until that point of the picture, in ten-thousandths, is in its middle; zoom in
 *                             tenths of the present one, 0: as it is
 *   1            0            to the middle, widest
 * speed: 1 slowest to 7 fastest, 0 for 4; what is more counts as 7.
 */
int vexo_model_send_ptz_cmd(unsigned int id, unsigned int channel, unsigned int code,
                            const vexo_ipc_ptz_ctrl_para* para);

// Reboot and power-off end all logins, and with them talks, streams and whatever else runs for one. Where the caller
// lives on, the model library's operations fail until the recorder is back, except those that give something back,
// which succeed once for what the interruption has ended.

/** forced: true does not wait for what the recorder is writing. */
int vexo_model_reboot(unsigned int id, VEXO_BOOL forced);
int vexo_model_poweroff(unsigned int id);
/** Restores the parts of the configuration whose bits are set, without a reboot; 0xFFFFFFFF restores all. */
int vexo_model_restore_factory(unsigned int id, unsigned int parts);
/** Record mode of a channel: 0 off, 1 by schedule, 2 always. */
int vexo_model_set_record_mode(unsigned int id, unsigned int channel, unsigned int mode);
/** Records a channel by hand whatever its mode, or leaves it to the mode again. */
int vexo_model_set_record_manual_enable(unsigned int id, unsigned int channel, VEXO_BOOL enable);

// ---- pictures ------------------------------------------------------------------------------------------------------

/**
 * Takes a JPEG of a channel now, of its main stream's size, into a file; *size receives its length in bytes. A file
 * that is there is replaced; the folder must exist. A login that does not stand, or a channel that is not there, is a
 * failure; a camera without signal gives the picture that says so. After a failure no part of the picture is left.
 */
int vexo_model_capture(unsigned int id, unsigned int channel, const char* path, unsigned int* size);

/** As above, into a buffer of that many bytes; one that is too small is a failure and stays as it is. */
int vexo_model_capture(unsigned int id, unsigned int channel, char* buffer, unsigned int buffer_size,
                       unsigned int* size);

// ---- disks ---------------------------------------------------------------------------------------------------------

/** What tells one disk from the others. */
struct vexo_disk_identity {
    unsigned int type;  ///< 1 local, 2 external, 3 network, 4 array
    char name[64];
    unsigned int address;  ///< a local disk's slot address, its most significant byte first; 0 of others
};

struct vexo_hard_disk_info {
    vexo_disk_identity identity;
    unsigned int state;          ///< 3: normal; anything else: not to be used (here 1 not formatted, 2 broken)
    unsigned int size_mb;        ///< capacity in megabytes
    unsigned int partition_num;  ///< entries of partition that hold; readers never go past the array
    struct {
        char mount_path[128];
        unsigned int size;  ///< in megabytes
    } partition[16];        ///< recordings lie on the first one; folders exist while the disk is shown
};
constexpr unsigned int VEXO_DISK_STATE_NORMAL = 3;

/** A disk's index counts from 0 and stays the same while the recorder runs. */
int vexo_model_get_hard_disk_num(unsigned int* num);
int vexo_model_get_hard_disk_info(unsigned int index, vexo_hard_disk_info* info);
/** Non-zero when the disk is being recorded to. */
VEXO_BOOL vexo_model_is_disk_recording(const vexo_disk_identity* disk);

// ---- channels and encoding -----------------------------------------------------------------------------------------

struct vexo_ipc_connect_cfg {
    unsigned int address_kind;  ///< 0: address is an IP address; 1: a host name
    char address[128];          ///< may be unterminated when it fills the field
};
/** Connected: the channel's camera is there and has its signal. */
int vexo_model_get_ipc_connect_status(unsigned int channel, VEXO_BOOL* connected);
int vexo_model_get_ipc_connect_cfg(unsigned int channel, vexo_ipc_connect_cfg* cfg);
/** Non-zero when the channel is being recorded. */
VEXO_BOOL vexo_model_ch_is_recording(unsigned int channel);

/** Encoder parameters of a stream. */
struct vexo_enc_para {
    unsigned int codec;    ///< 1: H.264
    unsigned int mode;     ///< word 1: 0 constant bit rate, 1 variable
    unsigned int width;    ///< pixels
    unsigned int height;   ///< pixels
    unsigned int fps;      ///< frames a second
    unsigned int quality;  ///< word 5: level of the variable bit rate, 1 poor to 6 best
    unsigned int reserved[12];
    unsigned int bps;  ///< word 18: kbit/s
    unsigned int gop;  ///< frames from key frame to key frame
    unsigned int reserved_20[4];
};
static_assert(offsetof(vexo_enc_para, quality) == 20 && offsetof(vexo_enc_para, bps) == 72, "words 5 and 18");

/** Whether a stream (1 main, 2 sub) carries audio; the last argument is 0. */
int vexo_model_get_audio_enable(unsigned int channel, unsigned int stream, VEXO_BOOL* enable, unsigned int reserved);
/** A stream's parameters, with or without audio. */
int vexo_model_get_enc_para(unsigned int channel, unsigned int stream, vexo_enc_para* para, VEXO_BOOL audio);

// ---- device --------------------------------------------------------------------------------------------------------

/** The device capability record, valid and unchanged for the process's life, or null. */
const vexo_dev_capability* vexo_model_get_dev_capability();

struct vexo_sata_info {
    unsigned char flag;  ///< non-zero: SATA disks are in use
    unsigned char reserved[15];
};
int vexo_model_get_sata_info(vexo_sata_info* info);

/** 0: main and sub stream are recorded; otherwise the main stream alone. */
int vexo_model_get_rec_stream_mode(unsigned int* mode);

/** The name of the interface that the default route uses; one that does not fit into len bytes is a failure. */
int vexo_model_get_default_if(char* name, unsigned int len);

struct vexo_pppoe_status {
    unsigned int link_up;  ///< word 0: 0: neither address holds
    unsigned int ipv4;     ///< word 1: non-zero: the link has an IPv4 address, else an IPv6 address
    char ip_addr[16];
    char ipv6_addr[128];
};
int vexo_model_get_pppoe_status(vexo_pppoe_status* status);

/** A factory item. */
struct vexo_hostlib_factory_info {
    char name[48];    ///< may be unterminated when it fills the field
    char value[256];  ///< may be unterminated when it fills the field
    unsigned char reserved[16];
};
/** Items stand in the order in which they were added and outlast reboot and factory restore. A text that fills its
 * field has no terminator. */
int vexo_model_get_host_manage_factory_info_num(unsigned int* num);
int vexo_model_get_host_manager_factory_info(unsigned int index, vexo_hostlib_factory_info* info);
/** Sets the item of that name, or adds it; an empty name, and more items than the recorder keeps, are failures. */
int vexo_model_set_host_manager_factory_info_force(vexo_hostlib_factory_info info);

// ---- log -----------------------------------------------------------------------------------------------------------

// The record is the model library's; agents see it through the public header, which shows the same one.
#ifndef VEXO_HOSTMGR_LOG_RECORD
#define VEXO_HOSTMGR_LOG_RECORD
/** One entry of the recorder's log. */
struct tag_VexoHostMgrLog {
    uint32_t dwTime;  ///< seconds since 1970, UTC
    uint32_t dwType;  ///< the recorder's number for the kind of entry
    char sUser[32];   ///< who caused it, or empty; NUL-terminated
    char sText[256];  ///< what happened; NUL-terminated
};
static_assert(sizeof(tag_VexoHostMgrLog) == 296, "two words and two texts");
#endif

/** The entry stays the model library's and is valid during the call. The first argument is the login that caused it, or
 *  0. Called on whatever thread makes the entry. */
typedef void (*vexo_log_hook)(int login, tag_VexoHostMgrLog* entry, void* user);

/** Replaces the hook; a null hook ends it. */
void vexo_model_set_log_hook(vexo_log_hook hook, void* user);

#endif
