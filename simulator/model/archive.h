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

    /**
     * Enters a new file and makes its folder and room for so many bytes: the oldest files of a full disk go. Sets
     * number and disk of *file; nothing when the disks are too small.
     */
    std::optional<std::string> Begin(RecordedFile* file, int64_t bytes);

    /** Enters a file's stop and bytes anew; frees room when its disk is full. */
    void Update(const RecordedFile& file);

    /** Takes a file out of the index and off its disk. */
    void Remove(const RecordedFile& file);

    /** What is there, by time. */
    std::vector<RecordedFile> Find(const Search& search);

    /** Where a file lies; it need not exist. */
    std::string PathOf(const RecordedFile& file) const;

    /** The start of the oldest file there is, or nothing. */
    std::optional<int64_t> Oldest();

    /** Enters files of a channel that have no pictures, one a minute, the last one ending then. */
    void EnterListed(unsigned channel, unsigned count, int64_t end);

    /** A note that outlasts the process; an empty text when there is none of that name. */
    std::string Note(const std::string& name);
    void SetNote(const std::string& name, const std::string& text);

    /** Bytes recorded on a disk, counted from 1. */
    int64_t Used(unsigned disk);

private:
    unsigned PickDisk();
    int64_t UsedLocked(unsigned disk);
    void MakeRoom(unsigned disk, int64_t bytes, int64_t spare);
    void RemoveLocked(const RecordedFile& file);

    const std::string m_home;
    const std::vector<DiskSettings> m_disks;
    std::mutex m_mutex;
    Database m_database;  // guarded by m_mutex
};

}  // namespace simulator

#endif
