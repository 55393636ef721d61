#include "database.h"

#include "av.h"

namespace simulator {
namespace {

constexpr int PATIENCE_MS = 60000;  // another process with the same home may be making its history

void TellTrouble(sqlite3* connection, const std::string& what) {
    Tell("the index of recordings fails to " + what + ": " +
         (connection != nullptr ? sqlite3_errmsg(connection) : "out of memory"));
}

}  // namespace

Statement& Statement::Bind(int64_t value) {
    sqlite3_bind_int64(m_statement.get(), ++m_bound, value);
    return *this;
}

Statement& Statement::Bind(const std::string& value) {
    sqlite3_bind_text(m_statement.get(), ++m_bound, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
    return *this;
}

bool Statement::Next() {
    const int result = m_statement != nullptr ? sqlite3_step(m_statement.get()) : SQLITE_DONE;
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        TellTrouble(sqlite3_db_handle(m_statement.get()), sqlite3_sql(m_statement.get()));
    }
    return result == SQLITE_ROW;
}

bool Statement::Run() {
    const int result = m_statement != nullptr ? sqlite3_step(m_statement.get()) : SQLITE_ERROR;
    if (result != SQLITE_DONE && m_statement != nullptr) {
        TellTrouble(sqlite3_db_handle(m_statement.get()), sqlite3_sql(m_statement.get()));
    }
    if (m_statement != nullptr) {
        sqlite3_reset(m_statement.get());
    }
    m_bound = 0;
    return result == SQLITE_DONE;
}

std::string Statement::Text(int column) {
    const unsigned char* text = sqlite3_column_text(m_statement.get(), column);
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

Database::Database(const std::string& path) {
    sqlite3* connection = nullptr;
    const int result = sqlite3_open(path.c_str(), &connection);
    m_connection.reset(connection);
    if (result != SQLITE_OK) {
        TellTrouble(connection, "open " + path);
        m_connection.reset();
        return;
    }
    sqlite3_busy_timeout(connection, PATIENCE_MS);
}

bool Database::Run(const char* statements) {
    if (sqlite3_exec(m_connection.get(), statements, nullptr, nullptr, nullptr) == SQLITE_OK) {
        return true;
    }
    TellTrouble(m_connection.get(), statements);
    return false;
}

Statement Database::Prepare(const std::string& statement) {
    sqlite3_stmt* prepared = nullptr;
    if (m_connection == nullptr ||
        sqlite3_prepare_v2(m_connection.get(), statement.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
        TellTrouble(m_connection.get(), statement);
    }
    return Statement(prepared);
}

}  // namespace simulator
