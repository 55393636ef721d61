// Types that the recorder's three libraries share: identities, truth values, times, frames, rights, device capability.
// Declarations only: the board owns them, and an integrator swaps these headers for the board's own. Operations do not
// belong here; they stand in vexo_utility.h, vexo_model.h and vexo_cfgm.h.
#ifndef VEXO_TYPES_H
#define VEXO_TYPES_H

#include <stddef.h>

// Clang checks lock use through these marks; every other compiler sees nothing.
#if defined(__clang__)
#define VEXO_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VEXO_THREAD_ATTRIBUTE(x)
#endif
#define VEXO_CAPABILITY(name) VEXO_THREAD_ATTRIBUTE(capability(name))
#define VEXO_SCOPED_CAPABILITY VEXO_THREAD_ATTRIBUTE(scoped_lockable)
#define VEXO_GUARDED_BY(lock) VEXO_THREAD_ATTRIBUTE(guarded_by(lock))
#define VEXO_PT_GUARDED_BY(lock) VEXO_THREAD_ATTRIBUTE(pt_guarded_by(lock))
#define VEXO_REQUIRES(...) VEXO_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define VEXO_ACQUIRE(...) VEXO_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define VEXO_TRY_ACQUIRE(...) VEXO_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define VEXO_RELEASE(...) VEXO_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define VEXO_EXCLUDES(...) VEXO_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define VEXO_NO_THREAD_SAFETY_ANALYSIS VEXO_THREAD_ATTRIBUTE(no_thread_safety_analysis)

/** Truth value: 0 is false, 1 is true; readers take any non-zero value as true. */
typedef int VEXO_BOOL;
constexpr VEXO_BOOL VEXO_FALSE = 0;
constexpr VEXO_BOOL VEXO_TRUE = 1;

/** Who calls: the identity that the platform books locks, memory, readers, frames and documents under. */
enum vexo_user_id : unsigned int {
    VEXO_USER_EVENT = 21,    ///< scratch memory for reading the event table
    VEXO_USER_HOSTMGR = 97,  ///< the host manager, for everything else
};

/** A printf-like function: writes one formatted piece, returns the number of bytes written. */
typedef int (*vexo_print_func)(const char* format, ...) __attribute__((format(printf, 1, 2)));

/** Calendar time, local: full year, month 1 to 12, day of the month, hour, minute, second. */
struct vexo_time_struct {
    unsigned short year;
    unsigned short month;
    unsigned short day;
    unsigned short hour;
    unsigned short minute;
    unsigned short second;
};
static_assert(sizeof(vexo_time_struct) == 12, "six 16-bit fields");

/** Stream types of a channel's live frame lists and of its encoders. */
enum vexo_enc_str_type : unsigned int {
    VEXO_ENC_STR_MAIN = 1,     ///< main-stream video
    VEXO_ENC_STR_SUB = 2,      ///< sub-stream video
    VEXO_ENC_STR_AUDIO = 128,  ///< audio
};

/** Frame types: the second word of a frame's header. */
enum vexo_frame_type : unsigned int {
    VEXO_FRAME_MAIN_KEY = 1,
    VEXO_FRAME_AUDIO = 8,
    VEXO_FRAME_MAIN_DELTA = 9,
    VEXO_FRAME_SUB_KEY = 18,
    VEXO_FRAME_SUB_DELTA = 19,
    VEXO_FRAME_ZERO_KEY = 24,
    VEXO_FRAME_ZERO_DELTA = 25,
};

constexpr unsigned int VEXO_FRAME_MAGIC = 0xAB010000;

/**
 * The header that every frame of the recorder starts with (live, zero channel, playback, talk); the payload follows it
 * without a gap. A frame from a library may stand at any address: read it with memcpy.
 */
struct vexo_frame_header {
    unsigned int magic;         ///< VEXO_FRAME_MAGIC
    unsigned int frame_type;    ///< vexo_frame_type: the "frame information word"
    unsigned int frame_no;      ///< counts up by one per frame of a list; wraps
    unsigned int seconds;       ///< time stamp: seconds since 1970, UTC
    unsigned int microseconds;  ///< time stamp: 0 to 999999
    unsigned int data_length;   ///< payload length in bytes, header not included
    unsigned char codec;        ///< video: 1 H.264; audio: 1 G.711 mu-law, 2 G.711 A-law, 4 ADPCM
    unsigned char format[4];    ///< audio: low byte of the rate in Hz, bits, channels, sample bits; video: frames a
                                ///< second, then three bytes 0
    unsigned char reserved[3];  ///< 0
    unsigned short width;       ///< video: pixels; audio: 0
    unsigned short height;      ///< video: pixels; audio: 0
};
static_assert(sizeof(vexo_frame_header) == 36, "the header is 36 bytes everywhere");
static_assert(offsetof(vexo_frame_header, data_length) == 20, "payload length is word 5");
static_assert(offsetof(vexo_frame_header, width) == 32, "picture size ends the header");

/** A reader's position in a live frame list; opaque to readers, who keep it and hand it back. */
struct vexo_read_av_list_note {
    unsigned int note[2];
};
static_assert(sizeof(vexo_read_av_list_note) == 8, "two words");

/** One bit a channel, channel c in bit c % 32 of word c / 32. */
struct vexo_channel_mask {
    unsigned int word[8];
};

/** A user's rights. Flags are 0 or 1; masks name the channels that a right covers. */
struct vexo_dev_usr_authority {
    unsigned int level_a;              ///< 0: may change the recorder's parameters; 1: may not
    unsigned int level_b;              ///< 0: may manage disks and files; 1: may not
    unsigned int local_flag[5];        ///< rights at the recorder itself
    vexo_channel_mask local_mask[5];   ///< local rights by channel
    unsigned int remote_flag[7];       ///< rights over the network
    vexo_channel_mask remote_mask[4];  ///< remote rights by channel
};

/** What this recorder is and how much it has. One record, alike from the model library and the configuration manager.
 */
struct vexo_dev_capability {
    unsigned int device_kind;    ///< word 0: 1 recorder, 3 hybrid recorder
    unsigned int device_class;   ///< word 1
    unsigned char identity[10];  ///< the recorder's serial identity
    unsigned char reserved_18[82];
    unsigned int analog_channels;  ///< word 25: analog channels; also the highest channel number for talk
    unsigned int alarm_inputs;     ///< word 26
    unsigned int total_channels;   ///< word 27: analog and network channels together
    unsigned int alarm_outputs;    ///< word 28
    unsigned int reserved_116[4];
    unsigned int software_major;  ///< word 33
    unsigned int software_minor;  ///< word 34
    char build_date[32];          ///< year-month-day, such as "2024-7-5"
    unsigned int reserved_172[7];
    unsigned int hardware_major;  ///< word 50
    unsigned int hardware_minor;  ///< word 51
    unsigned int reserved_208[15];
    unsigned int disk_slots;  ///< word 67
    unsigned int reserved_272;
    unsigned char usb_ports;      ///< byte 276
    unsigned char network_ports;  ///< byte 277
    unsigned char reserved_278[42];
};
static_assert(offsetof(vexo_dev_capability, analog_channels) == 25U * 4, "word 25");
static_assert(offsetof(vexo_dev_capability, total_channels) == 27U * 4, "word 27");
static_assert(offsetof(vexo_dev_capability, software_major) == 33U * 4, "word 33");
static_assert(offsetof(vexo_dev_capability, hardware_major) == 50U * 4, "word 50");
static_assert(offsetof(vexo_dev_capability, disk_slots) == 67U * 4, "word 67");
static_assert(offsetof(vexo_dev_capability, usb_ports) == 276, "byte 276");
static_assert(sizeof(vexo_dev_capability) == 320, "eighty words");

#endif
