// SQLite with an owner for what it hands out. No table of the recorder's is known here.
#ifndef SIMULATOR_MODEL_DATABASE_H
#define SIMULATOR_MODEL_DATABASE_H

#include <sqlite3.h>

#include <memory>
#include <string>

namespace simulator {

/** A prepared statement; made by Database. Values are bound from 1 on and read from column 0 on. */
class Statement {
public:
    Statement& Bind(int64_t value);
    Statement& Bind(const std::string& value);

    /** On to the next row; false at the end, or after a line on standard error when the database fails. */
    bool Next();
    /** For statements that give no rows: false when it failed. */
    bool Run();

    int64_t Number(int column) { return sqlite3_column_int64(m_statement.get(), column); }
    std::string Text(int column);

private:
    friend class Database;
    explicit Statement(sqlite3_stmt* statement) : m_statement(statement) {}

    struct Release {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Release> m_statement;
    int m_bound = 0;
};

/** One connection; for one thread at a time. */
class Database {
public:
    /** Opens the file, or makes it; what fails is told on standard error and leaves a database that answers nothing. */
    explicit Database(const std::string& path);

    bool Works() const { return m_connection != nullptr; }

    /** Runs statements that need no values; false when one failed. */
    bool Run(const char* statements);
    Statement Prepare(const std::string& statement);
    int64_t LastNumber() const { return sqlite3_last_insert_rowid(m_connection.get()); }

private:
    struct Release {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    };
    std::unique_ptr<sqlite3, Release> m_connection;
};

}  // namespace simulator

#endif
