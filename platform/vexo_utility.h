// The utility platform (libutility_plat.so): memory, locks, threads, time, files, XML documents, events, diagnostics.
// Declarations only. Unless an operation says otherwise it may be called from any thread after vexo_utility_init, an
// int result is 0 for success and non-zero for failure, and texts are NUL-terminated and copied by the callee.
#ifndef VEXO_UTILITY_H
#define VEXO_UTILITY_H

#include <sys/time.h>

#include "vexo_types.h"

// ---- start ---------------------------------------------------------------------------------------------------------

enum vexo_utility_ops_type : unsigned int {
    VEXO_UTILITY_OPS_HOST = 1,  ///< the operations that a resident library of the firmware needs
};

/** Prepares the utility platform. Must come before every other call to the three libraries; later calls do nothing. */
int vexo_utility_init(vexo_utility_ops_type type);

// ---- memory --------------------------------------------------------------------------------------------------------

/** What memory is for; the platform accounts by user and purpose. */
enum vexo_memory_purpose : unsigned int {
    VEXO_MEMORY_EVENT = 0x26004,         ///< event table scratch, under VEXO_USER_EVENT
    VEXO_MEMORY_LIVE_SLOTS = 0x80002,    ///< stream buffer table
    VEXO_MEMORY_PLAY_NODE = 0x80003,     ///< playback nodes
    VEXO_MEMORY_TALK = 0x80004,          ///< talk blocks, play nodes and play frames
    VEXO_MEMORY_ALARM_STATUS = 0x80005,  ///< alarm status lists
    VEXO_MEMORY_QUERY = 0x80006,         ///< query results
    VEXO_MEMORY_CAPTURE = 0x80007,       ///< capture tasks and picture nodes
};

/** Allocates count blocks of size bytes in one piece, aligned for any type, contents undefined. Null on failure. */
void* vexo_utility_malloc(vexo_user_id user, unsigned int purpose, unsigned int size, unsigned int count);

/** Frees what vexo_utility_malloc returned; null is ignored. file and function name the caller for the accounting. */
void vexo_utility_free(const char* file, const char* function, void* memory);

// ---- locks ---------------------------------------------------------------------------------------------------------

/**
 * A plain lock, not recursive. Each operation takes the caller's source file and function names, which are kept by
 * pointer for the lock's information text and must have static storage. Slots stand in this order.
 */
class VEXO_CAPABILITY("lock") vexo_lock {
public:
    /** Waits until the lock is the caller's. */
    virtual int lock(const char* file, const char* function) VEXO_ACQUIRE() = 0;
    /** Takes the lock if that needs no waiting: 0 taken, non-zero busy. */
    virtual int rd_trylock(const char* file, const char* function) VEXO_TRY_ACQUIRE(false) = 0;
    /**
     * Gives the lock back; the thread that took it does so. One exception: a playback lock that a time command with a
     * bad selector left taken is given back by the thread that logs the login out.
     */
    virtual int unlock(const char* file, const char* function) VEXO_RELEASE() = 0;
    /** Writes who holds the lock into buffer, at most size bytes; the text may be unterminated when it fills them. */
    virtual int get_info(char* buffer, unsigned int size) = 0;

protected:
    ~vexo_lock() = default;
};

/** A read/write lock; as vexo_lock, with readers. Slots stand in this order; the reserved ones are not called. */
class VEXO_CAPABILITY("rw_lock") vexo_rw_lock {
public:
    virtual int reserved_1(const char* file, const char* function) = 0;
    /** Takes the lock as one of any number of readers if that needs no waiting: 0 taken, non-zero busy. */
    virtual int rd_trylock(const char* file, const char* function) VEXO_TRY_ACQUIRE(false) = 0;
    /** Waits until the lock is the caller's alone, for change. */
    virtual int wr_lock(const char* file, const char* function) VEXO_ACQUIRE() = 0;
    virtual int reserved_4(const char* file, const char* function) = 0;
    /** Gives the lock back, however it was taken. */
    virtual int unlock(const char* file, const char* function) VEXO_RELEASE() = 0;
    /** As vexo_lock::get_info. */
    virtual int get_info(char* buffer, unsigned int size) = 0;

protected:
    ~vexo_rw_lock() = default;
};

/** Creates a lock, free; null on failure. Ends with vexo_utility_delete_lock, which takes it free. */
vexo_lock* vexo_utility_new_lock(vexo_user_id user, const char* name);
void vexo_utility_delete_lock(vexo_lock* lock, const char* file, const char* function);

/** As the two above, for a read/write lock. */
vexo_rw_lock* vexo_utility_new_rw_lock(vexo_user_id user, const char* name);
void vexo_utility_delete_rw_lock(vexo_rw_lock* lock, const char* file, const char* function);

// ---- threads -------------------------------------------------------------------------------------------------------

typedef void* (*vexo_thread_func)(void* argument);

/** How a thread is made: six fields, 24 bytes on the board. */
struct vexo_thread_creat_ctl {
    unsigned int joinable;    ///< 1: the creator takes the thread back with vexo_utility_retrieve_thread
    unsigned int policy;      ///< 0: the default scheduling
    vexo_thread_func entry;   ///< runs on the new thread
    void* argument;           ///< handed to entry
    unsigned int priority;    ///< 0: the default
    unsigned int stack_size;  ///< bytes
};
static_assert(sizeof(void*) != 4 || sizeof(vexo_thread_creat_ctl) == 24, "six words on the board");

/** Starts a thread. On success its id is in *id before entry runs; on failure *id is left as it was. */
int vexo_utility_creat_thread(const vexo_thread_creat_ctl* ctl, const char* name, unsigned long* id);

/** Waits until the thread has ended and takes it back; an id serves once. Not from the thread itself. */
int vexo_utility_retrieve_thread(unsigned long id);

/** A thread tells the platform that it runs and is about to end; id is its own pthread_self(). */
void vexo_utility_enter_thread(unsigned long id, const char* name);
void vexo_utility_exit_thread(unsigned long id);

/** Sleeps at least that many milliseconds. */
void vexo_utility_sleep_ms(unsigned int milliseconds);

// ---- time ----------------------------------------------------------------------------------------------------------

/** Milliseconds from one time to another, negative when to is the earlier; the nearest limit when out of range. */
long vexo_utility_cnt_delta_ms(const struct timeval* from, const struct timeval* to);

/** Moves a time by that many milliseconds; microseconds stay 0 to 999999. */
void vexo_utility_add_time(struct timeval* time, long milliseconds);

/** Seconds since 1970 to local calendar time, and back; a calendar time that does not exist gives -1. */
void vexo_utility_linux_to_vexo_time(long seconds, vexo_time_struct* time);
long vexo_utility_vexo_to_linux_time(const vexo_time_struct* time);

/** The smaller of two. */
unsigned int vexo_utility_min(unsigned int left, unsigned int right);

// ---- files ---------------------------------------------------------------------------------------------------------

/** Non-zero when a file or directory of that path exists. */
VEXO_BOOL vexo_utility_is_file_exist(const char* path);

/** Creates a directory and those above it; one that exists already is a success. */
int vexo_utility_creat_dir(const char* path);

/** Removes a directory with all it holds. */
int vexo_utility_delete_dir(const char* path);

// ---- XML documents -------------------------------------------------------------------------------------------------

/** The value of get_content_size that stands for failure. */
constexpr unsigned int VEXO_XML_NO_SIZE = 0xFFFFFFFF;

/**
 * One XML document; for one thread at a time. Texts go out NUL-terminated and cut to their capacity. A text between the
 * marks comes out byte for byte as it went in. Names are compared to the letter; an element or child of a name is the
 * first one of that name, in the order of the text and at any depth for the element.
 */
class vexo_xml_operate {
public:
    /** Replaces the document by a file's; on failure the document is empty. */
    virtual int load_file(const char* path) = 0;
    /** As load_file, by a NUL-terminated text's; malformed text, and text with more than one root, is a failure. */
    virtual int load_content(const char* text) = 0;
    /** Writes the document to a file, whole or not at all; the folder must exist. An empty document is a failure. */
    virtual int save_content(const char* path) = 0;
    /** Writes the document as text; *exported receives its length without terminator. Too small a buffer: failure. */
    virtual int export_content(char* buffer, unsigned int capacity, unsigned int* exported) = 0;
    /** Length in bytes of the exported text without terminator, or VEXO_XML_NO_SIZE. */
    virtual unsigned int get_content_size() = 0;
    /** Reads an attribute of the first child of that name under the first element of that name. */
    virtual int get_attribute(const char* element, const char* child, const char* attribute, char* value,
                              unsigned int capacity) = 0;
    /** Sets, or adds, an attribute of that child; a child that is not there is a failure. */
    virtual int set_attribute(const char* element, const char* child, const char* attribute, const char* value) = 0;
    /** The name of child number index, counted from 0, under that element; elements alone count. */
    virtual int get_child_name(const char* element, unsigned int index, char* name, unsigned int capacity) = 0;

protected:
    ~vexo_xml_operate() = default;
};

/** Creates an empty document; null on failure. The label names it in the accounting. */
vexo_xml_operate* vexo_utility_new_xml_operate(vexo_user_id owner, const char* label);
void vexo_utility_delete_xml_operate(vexo_xml_operate* document, const char* file, const char* label);

// ---- events --------------------------------------------------------------------------------------------------------

constexpr unsigned int VEXO_EVENT_USER_HOSTMGR = 2;

/** What an event is, by its class and sub-type. */
enum vexo_event_sub_type : unsigned char {
    VEXO_EVENT_MOTION = 2,             ///< class 2
    VEXO_EVENT_VIDEO_LOSS = 3,         ///< class 2
    VEXO_EVENT_SHELTER = 4,            ///< class 2: something stands before the camera
    VEXO_EVENT_DISK_FULL = 17,         ///< class 3
    VEXO_EVENT_DISK_ERROR = 19,        ///< class 3
    VEXO_EVENT_NETWORK_LOST = 25,      ///< class 4
    VEXO_EVENT_ADDRESS_CONFLICT = 26,  ///< class 4
    VEXO_EVENT_INPUT = 27,             ///< class 5: an alarm input of the recorder
    VEXO_EVENT_CAMERA_INPUT = 28,      ///< class 5: an alarm input of a network camera
};

/** One entry of the event table: something that is the case now. */
struct vexo_event_detail_info {
    unsigned char event_class;  ///< 2 picture, 3 disk, 4 network, 5 alarm input
    unsigned char sub_type;
    unsigned char reserved_2[78];
    unsigned int channel;  ///< byte 80: channel of a class-2 event, counted from 0; of VEXO_EVENT_CAMERA_INPUT, counted
                           ///< from 1
    unsigned int input;    ///< byte 84: disk of a class-3 event, counted from 1; input of a class-5 event, counted from
                           ///< 0, camera inputs in the order of their channels
    unsigned char reserved_88[84];
};
static_assert(sizeof(vexo_event_detail_info) == 172, "the event table's stride");
static_assert(offsetof(vexo_event_detail_info, channel) == 80, "index word of a class-2 event");
static_assert(offsetof(vexo_event_detail_info, input) == 84, "index word of class-3 and class-5 events");

/**
 * The events that are the case now, in the order of their beginning. Copies up to capacity of them into info and their
 * number into *count; with a null info and capacity 0 it only counts. More events than capacity: *count is the number
 * that there are, info holds the first capacity.
 */
int vexo_utility_get_event_info(unsigned int event_user, vexo_event_detail_info* info, unsigned int capacity,
                                unsigned int* count);

// ---- diagnostics ---------------------------------------------------------------------------------------------------

/** A component that answers the recorder's diagnostics menu. */
class vexo_diagnose_client {
public:
    /** Prints what the command asks for through print; on the platform's diagnostics thread, at any time. */
    virtual void diagnose(unsigned int command, vexo_print_func print) = 0;
    virtual ~vexo_diagnose_client() = default;
};

/** Registers a client for the process's life; title and menu (GBK) are kept by pointer and must have static storage. */
int vexo_utility_regist_diag(vexo_diagnose_client* client, const char* title, const char* menu);

#endif
