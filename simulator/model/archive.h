// What is recorded: the index of all recorded files, and the disks that they lie on. What is in a file, who writes it
// and who reads it does not belong here.
#ifndef SIMULATOR_MODEL_ARCHIVE_H
#define SIMULATOR_MODEL_ARCHIVE_H

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/scenario.h"
#include "database.h"

namespace simulator {

/** Why something is recorded: the record type bits. */
constexpr unsigned RECORD_SCHEDULE = 1;
constexpr unsigned RECORD_MOTION = 2;
constexpr unsigned RECORD_ALARM = 4;

/** Length of a recording that stands in the index alone, microseconds. */
constexpr int64_t LISTED_LENGTH = 60000000;

/** A row of the index. Times are microseconds since 1970. */
struct RecordedFile {
    int64_t number = 0;    ///< the file's own, from 1 on; a number does not come again
    unsigned channel = 0;  ///< counted from 1
    int64_t start = 0;     ///< of the first frame
    int64_t stop = 0;      ///< the end of the last frame
    unsigned type = 0;     ///< record type bits
    unsigned disk = 0;     ///< counted from 1
    int64_t bytes = 0;
};

/** What is looked for. */
struct Search {
    unsigned channel = 0;  ///< counted from 1
    int64_t from = 0;      ///< microseconds since 1970; a file that has any part in the time is found
    int64_t to = 0;
    unsigned types = 0;  ///< record type bits
    bool all_types = false;
};

/** For any thread; several processes may have the same home folder. */
class Archive {
public:
    /** The process's one, opened when first needed. Null, after a line on standard error, when it cannot be. */
    static Archive* Get();

    /** home: the folder that holds the index and the disks. */
    Archive(const std::string& home, const std::vector<DiskSettings>& disks);
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;

    bool Works() const { return m_database.Works(); }

    /** Enters a new file, of no bytes yet, on the disk that has most room; sets its number and disk. The place to write
     * it at, in a folder that exists; nothing when it cannot be entered. */
    std::optional<std::string> Begin(RecordedFile* file);

    /** Enters a file's stop and bytes anew. When its disk is full, the oldest of its other files go. */
    void Update(const RecordedFile& file);

    /** Takes a file out of the index and off its disk. */
    void Remove(const RecordedFile& file);

    /** Takes out all files that lie between two moments, of every channel. */
    void RemoveBetween(int64_t from, int64_t to);

    /** What is there, by time; without files that hold nothing yet. */
    std::vector<RecordedFile> Find(const Search& search);

    /** Where a file lies; it need not exist. */
    std::string PathOf(const RecordedFile& file) const;

    /** The start of the oldest file there is, or nothing. */
    std::optional<int64_t> Oldest();

    /** Enters files of a channel that have no pictures, one after the other, the last one ending then. */
    void EnterListed(unsigned channel, unsigned count, int64_t end);

    /** A note that outlasts the process; an empty text when there is none of that name. */
    std::string Note(const std::string& name);
    void SetNote(const std::string& name, const std::string& text);

    /** Bytes recorded on a disk, counted from 1. */
    int64_t Used(unsigned disk);

    /** A recording that has grown beyond so many bytes goes on in another file, so that a full disk can give room. */
    int64_t LargestFile(unsigned disk) const;

private:
    unsigned PickDisk();
    int64_t UsedLocked(unsigned disk);
    void MakeRoom(const RecordedFile& growing);
    void RemoveLocked(const RecordedFile& file);

    const std::string m_home;
    const std::vector<DiskSettings> m_disks;
    std::mutex m_mutex;
    Database m_database;  // guarded by m_mutex
};

}  // namespace simulator

#endif
