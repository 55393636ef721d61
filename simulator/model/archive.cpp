#include "archive.h"

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>

#include "av.h"

namespace simulator {
namespace {

constexpr int64_t MEGABYTE = 1000000;
constexpr int64_t SECOND = 1000000;  // microseconds

constexpr const char* TABLES = R"sql(
    PRAGMA journal_mode = WAL;
    PRAGMA synchronous = OFF;
    CREATE TABLE IF NOT EXISTS files (number INTEGER PRIMARY KEY AUTOINCREMENT, channel INTEGER NOT NULL,
        start INTEGER NOT NULL, stop INTEGER NOT NULL, type INTEGER NOT NULL, disk INTEGER NOT NULL,
        bytes INTEGER NOT NULL);
    CREATE INDEX IF NOT EXISTS files_by_time ON files (channel, start, stop, type, disk, bytes);
    CREATE INDEX IF NOT EXISTS files_by_disk ON files (disk, start, bytes);
    CREATE TABLE IF NOT EXISTS notes (name TEXT PRIMARY KEY, text TEXT NOT NULL);
)sql";

const std::string SELECT = "SELECT number, channel, start, stop, type, disk, bytes FROM files ";

constexpr const char* INSERT = "INSERT INTO files (channel, start, stop, type, disk, bytes) VALUES (?, ?, ?, ?, ?, 0)";

RecordedFile RowOf(Statement& row) {
    return {row.Number(0), static_cast<unsigned>(row.Number(1)), row.Number(2),
            row.Number(3), static_cast<unsigned>(row.Number(4)), static_cast<unsigned>(row.Number(5)),
            row.Number(6)};
}

std::string TimeText(int64_t moment) {
    const time_t seconds = moment / SECOND;
    tm utc = {};
    gmtime_r(&seconds, &utc);
    char text[32];
    return std::string(text, strftime(text, sizeof(text), "%Y%m%dT%H%M%SZ", &utc));
}

}  // namespace

Archive* Archive::Get() {
    static Archive* const archive = [] {
        std::unique_ptr<Archive> made(new Archive(HomeFolder(), TheScenario().disks));
        return made->Works() ? made.release() : nullptr;
    }();
    return archive;
}

Archive::Archive(const std::string& home, const std::vector<DiskSettings>& disks)
    : m_home(home), m_disks(disks), m_database(home + "/recordings.db") {
    if (m_database.Works() && !m_database.Run(TABLES)) {
        Tell("nothing is recorded and no recording is found");
    }
}

std::string Archive::PathOf(const RecordedFile& file) const {
    char name[96];
    snprintf(name, sizeof(name), "/disk-%u/channel-%03u/%s-%lld.mov", file.disk, file.channel,
             TimeText(file.start).c_str(), static_cast<long long>(file.number));
    return m_home + name;
}

std::optional<std::string> Archive::Begin(RecordedFile* file) {
    std::lock_guard<std::mutex> lock(m_mutex);
    file->disk = PickDisk();
    if (file->disk == 0) {
        return std::nullopt;
    }
    Statement insert = m_database.Prepare(INSERT);
    insert.Bind(int64_t{file->channel}).Bind(file->start).Bind(file->stop).Bind(int64_t{file->type});
    if (!insert.Bind(int64_t{file->disk}).Run()) {
        return std::nullopt;
    }
    file->number = m_database.LastNumber();
    const std::string path = PathOf(*file);
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    return path;
}

void Archive::Update(const RecordedFile& file) {
    std::lock_guard<std::mutex> lock(m_mutex);
    Statement update = m_database.Prepare("UPDATE files SET stop = ?, bytes = ? WHERE number = ?");
    update.Bind(file.stop).Bind(file.bytes).Bind(file.number).Run();
    MakeRoom(file);
}

void Archive::Remove(const RecordedFile& file) {
    std::lock_guard<std::mutex> lock(m_mutex);
    RemoveLocked(file);
}

void Archive::RemoveLocked(const RecordedFile& file) {
    m_database.Prepare("DELETE FROM files WHERE number = ?").Bind(file.number).Run();
    std::error_code error;
    std::filesystem::remove(PathOf(file), error);
}

// The disk with most room left, of those that can be recorded to; 0: there is none.
unsigned Archive::PickDisk() {
    unsigned best = 0;
    int64_t most = INT64_MIN;
    for (unsigned disk = 1; disk <= m_disks.size(); ++disk) {
        const int64_t room = m_disks[disk - 1].megabytes * MEGABYTE - UsedLocked(disk);
        if (room > most && m_disks[disk - 1].state == DiskState::Normal) {
            most = room;
            best = disk;
        }
    }
    return best;
}

int64_t Archive::Used(unsigned disk) {
    std::lock_guard<std::mutex> lock(m_mutex);
    return UsedLocked(disk);
}

int64_t Archive::LargestFile(unsigned disk) const {
    return m_disks[disk - 1].megabytes * MEGABYTE / 8;
}

int64_t Archive::UsedLocked(unsigned disk) {
    Statement sum = m_database.Prepare("SELECT total(bytes) FROM files WHERE disk = ?");
    return sum.Bind(int64_t{disk}).Next() ? sum.Number(0) : 0;
}

void Archive::MakeRoom(const RecordedFile& growing) {
    int64_t excess = UsedLocked(growing.disk) - m_disks[growing.disk - 1].megabytes * MEGABYTE;
    while (excess > 0) {
        Statement oldest =
            m_database.Prepare(SELECT + "WHERE disk = ? AND number <> ? AND bytes > 0 ORDER BY start LIMIT 1");
        if (!oldest.Bind(int64_t{growing.disk}).Bind(growing.number).Next()) {
            return;
        }
        const RecordedFile file = RowOf(oldest);
        RemoveLocked(file);
        excess -= file.bytes;
    }
}

std::vector<RecordedFile> Archive::Find(const Search& search) {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<RecordedFile> files;
    const std::string types = search.all_types ? "(type & ?4) = ?4" : "(type & ?4) <> 0";
    Statement found =
        m_database.Prepare(SELECT + "WHERE channel = ?1 AND start <= ?2 AND stop > ?3 AND stop > start AND " + types +
                           " ORDER BY start, number");
    found.Bind(int64_t{search.channel}).Bind(search.to).Bind(search.from).Bind(int64_t{search.types});
    while (found.Next()) {
        files.push_back(RowOf(found));
    }
    return files;
}

void Archive::RemoveBetween(int64_t from, int64_t to) {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<RecordedFile> files;
    Statement found = m_database.Prepare(SELECT + "WHERE start >= ? AND stop <= ?");
    for (found.Bind(from).Bind(to); found.Next();) {
        files.push_back(RowOf(found));
    }
    for (const RecordedFile& file : files) {
        RemoveLocked(file);
    }
}

std::optional<int64_t> Archive::Oldest() {
    std::lock_guard<std::mutex> lock(m_mutex);
    Statement oldest = m_database.Prepare("SELECT start FROM files ORDER BY start LIMIT 1");
    return oldest.Next() ? std::optional(oldest.Number(0)) : std::nullopt;
}

void Archive::EnterListed(unsigned channel, unsigned count, int64_t end) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_database.Run("BEGIN");
    Statement insert =
        m_database.Prepare("INSERT INTO files (channel, start, stop, type, disk, bytes) VALUES (?, ?, ?, ?, 1, 0)");
    for (unsigned i = 0; i < count; ++i) {
        const int64_t start = end - (count - i) * LISTED_LENGTH;
        const unsigned type = i % 7 + 1;  // every combination of the three bits
        insert.Bind(int64_t{channel})
            .Bind(start)
            .Bind(start + LISTED_LENGTH)
            .Bind(int64_t{type})
            .Bind(int64_t{1})
            .Run();
    }
    m_database.Run("COMMIT");
}

std::string Archive::Note(const std::string& name) {
    std::lock_guard<std::mutex> lock(m_mutex);
    Statement note = m_database.Prepare("SELECT text FROM notes WHERE name = ?");
    return note.Bind(name).Next() ? note.Text(0) : "";
}

void Archive::SetNote(const std::string& name, const std::string& text) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_database.Prepare("INSERT OR REPLACE INTO notes (name, text) VALUES (?, ?)").Bind(name).Bind(text).Run();
}

}  // namespace simulator
