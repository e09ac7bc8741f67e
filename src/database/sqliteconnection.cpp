#include "database/sqliteconnection.h"

#include <sqlite3.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace database
{

namespace
{
// How long a write waits for another program that is writing the same file.
constexpr int kBusyTimeoutMs = 10000;

// A prepared statement, finalized on every way out.
class Statement
{
public:
    Statement(const CSqliteConnection& owner, sqlite3* db, const std::string& sql) : m_owner(owner)
    {
        const int rc = sqlite3_prepare_v2(db, sql.c_str(), int(sql.size()), &m_stmt, nullptr);
        if (rc != SQLITE_OK)
            m_owner.Fail(rc, "preparing a statement");
    }
    ~Statement() { sqlite3_finalize(m_stmt); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    sqlite3_stmt* Get() const { return m_stmt; }
    // Steps once: true while rows come.
    bool Step()
    {
        const int rc = sqlite3_step(m_stmt);
        if (rc == SQLITE_ROW)
            return true;
        if (rc != SQLITE_DONE)
            m_owner.Fail(rc, "running a statement");
        return false;
    }

private:
    const CSqliteConnection& m_owner;
    sqlite3_stmt* m_stmt = nullptr;
};

class SqliteRowWriter : public CRowWriter
{
public:
    SqliteRowWriter(const CSqliteConnection& owner, sqlite3* db, const std::string& sql,
                    size_t columns)
        : m_statement(owner, db, sql), m_texts(columns)
    {
    }
    void Null() override { Check(sqlite3_bind_null(m_statement.Get(), ++m_column)); }
    void Int(int64_t value) override
    {
        Check(sqlite3_bind_int64(m_statement.Get(), ++m_column, value));
    }
    void Real(double value) override
    {
        Check(sqlite3_bind_double(m_statement.Get(), ++m_column, value));
    }
    void Text(std::string_view value) override
    {
        // Each column keeps its text until the row is stored, in a buffer that is reused
        // row after row, so SQLite need not copy it.
        std::string& kept = m_texts.at(size_t(m_column));
        kept.assign(value);
        Check(sqlite3_bind_text(m_statement.Get(), ++m_column, kept.data(), int(kept.size()),
                                SQLITE_STATIC));
    }
    void Bool(bool value) override { Int(value ? 1 : 0); }
    void EndRow() override
    {
        m_statement.Step();
        sqlite3_reset(m_statement.Get());
        m_column = 0;
    }
    void Finish() override {}

private:
    void Check(int rc)
    {
        if (rc != SQLITE_OK)
            throw CDatabaseError(CDatabaseError::other,
                                 std::string("cannot store a value: ") + sqlite3_errstr(rc));
    }

    Statement m_statement;
    std::vector<std::string> m_texts;
    int m_column = 0;
};

bool Exists(const std::string& path, bool& isDirectory)
{
    struct stat st
    {
    };
    if (::stat(path.c_str(), &st) != 0)
        return false;
    isDirectory = S_ISDIR(st.st_mode);
    return true;
}
} // namespace

std::unique_ptr<CSqliteConnection> CSqliteConnection::Open(const std::string& path, bool create)
{
    bool isDirectory = false;
    const bool existed = Exists(path, isDirectory);
    if (isDirectory)
        throw CDatabaseError(CDatabaseError::connect, "'" + path + "' is a folder, not a database file");
    if (!existed && !create)
        throw CDatabaseError(CDatabaseError::connect, "there is no database '" + path + "'");
    sqlite3* db = nullptr;
    // One connection, one thread: SQLite's own locking would only cost time.
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0);
    const int rc = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
    if (rc != SQLITE_OK)
    {
        int err = db ? sqlite3_system_errno(db) : 0;
        // The last system error need not be the one that stopped it: say why a new file
        // could not be made where one cannot be.
        const std::string folder = std::filesystem::path(path).parent_path().string();
        if (!existed && ::access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) != 0)
            err = errno;
        sqlite3_close(db);
        throw CDatabaseError(rc == SQLITE_PERM || err == EACCES ? CDatabaseError::permission
                                                               : CDatabaseError::connect,
                             "cannot open the database '" + path +
                                 "': " + (err ? std::strerror(err) : sqlite3_errstr(rc)));
    }
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, kBusyTimeoutMs);
    std::unique_ptr<CSqliteConnection> connection(new CSqliteConnection(db, path, !existed));
    // A whole document goes in one transaction: a larger page cache keeps the
    // primary-key indexes of its big tables in memory meanwhile.
    connection->Execute("PRAGMA cache_size = -65536");
    return connection;
}

CSqliteConnection::CSqliteConnection(sqlite3* db, std::string path, bool created)
    : m_db(db), m_path(std::move(path)), m_created(created)
{
}

CSqliteConnection::~CSqliteConnection() { Close(); }

void CSqliteConnection::Close() noexcept
{
    if (m_db)
        sqlite3_close_v2(m_db);
    m_db = nullptr;
}

std::string CSqliteConnection::Describe() const { return "SQLite database '" + m_path + "'"; }

void CSqliteConnection::Fail(int code, const std::string& doing) const
{
    const std::string detail = m_db ? sqlite3_errmsg(m_db) : sqlite3_errstr(code);
    if (code == SQLITE_READONLY_DIRECTORY)
        throw CDatabaseError(CDatabaseError::permission,
                             "cannot write beside the database '" + m_path +
                                 "': its folder must be writable (" + detail + ")");
    switch (code & 0xFF)
    {
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        throw CDatabaseError(CDatabaseError::permission,
                             "no permission to write the database '" + m_path + "' (" + detail + ")");
    case SQLITE_CANTOPEN:
        throw CDatabaseError(CDatabaseError::permission,
                             "cannot write beside the database '" + m_path +
                                 "': its folder must be writable (" + detail + ")");
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
        throw CDatabaseError(CDatabaseError::connect,
                             "'" + m_path + "' is not an SQLite database (" + detail + ")");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        throw CDatabaseError(CDatabaseError::other,
                             "the database '" + m_path + "' stayed busy: another program writes to it (" +
                                 detail + ")");
    default:
        throw CDatabaseError(CDatabaseError::other,
                             "the database '" + m_path + "' failed while " + doing + ": " + detail);
    }
}

void CSqliteConnection::Execute(const std::string& sql)
{
    const int rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK)
        Fail(sqlite3_extended_errcode(m_db), "running a statement");
}

std::vector<DbRow> CSqliteConnection::Query(const std::string& sql, const std::vector<DbValue>& params)
{
    Statement statement(*this, m_db, sql);
    sqlite3_stmt* s = statement.Get();
    for (size_t i = 0; i < params.size(); ++i)
    {
        const std::string name = "$" + std::to_string(i + 1);
        const int index = sqlite3_bind_parameter_index(s, name.c_str());
        if (index == 0)
            continue;
        int rc = SQLITE_OK;
        const DbValue& v = params[i];
        if (std::holds_alternative<int64_t>(v))
            rc = sqlite3_bind_int64(s, index, std::get<int64_t>(v));
        else if (std::holds_alternative<double>(v))
            rc = sqlite3_bind_double(s, index, std::get<double>(v));
        else if (std::holds_alternative<std::string>(v))
        {
            const std::string& text = std::get<std::string>(v);
            rc = sqlite3_bind_text(s, index, text.data(), int(text.size()), SQLITE_TRANSIENT);
        }
        else
            rc = sqlite3_bind_null(s, index);
        if (rc != SQLITE_OK)
            Fail(rc, "binding a value");
    }
    std::vector<DbRow> rows;
    while (statement.Step())
    {
        DbRow& row = rows.emplace_back();
        const int n = sqlite3_column_count(s);
        for (int c = 0; c < n; ++c)
        {
            if (sqlite3_column_type(s, c) == SQLITE_NULL)
                row.emplace_back();
            else if (sqlite3_column_type(s, c) == SQLITE_FLOAT)
            {
                // All digits that tell the value: sums compared with the reports' own.
                char text[32];
                const auto end = std::to_chars(text, text + sizeof text, sqlite3_column_double(s, c));
                row.emplace_back(std::string(text, end.ptr));
            }
            else
                row.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(s, c)));
        }
    }
    return rows;
}

bool CSqliteConnection::TableExists(const std::string& name)
{
    return !Query("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = $1", {name}).empty();
}

void CSqliteConnection::BeginWrite() { Execute("BEGIN IMMEDIATE"); }

void CSqliteConnection::Commit() { Execute("COMMIT"); }

void CSqliteConnection::Rollback() noexcept
{
    if (m_db && !sqlite3_get_autocommit(m_db))
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
}

std::unique_ptr<CRowWriter> CSqliteConnection::WriteRows(const std::string& table,
                                                         const std::vector<std::string>& columns)
{
    std::string sql = "INSERT INTO " + table + " (";
    std::string values;
    for (size_t i = 0; i < columns.size(); ++i)
    {
        sql += (i ? ", " : "") + columns[i];
        values += (i ? ", ?" : "?") + std::to_string(i + 1);
    }
    sql += ") VALUES (" + values + ")";
    return std::make_unique<SqliteRowWriter>(*this, m_db, sql, columns.size());
}

void CSqliteConnection::DiscardIfCreated() noexcept
{
    if (!m_created)
        return;
    Close();
    for (const char* suffix : {"", "-journal", "-wal", "-shm"})
        ::unlink((m_path + suffix).c_str());
}

} // namespace database
