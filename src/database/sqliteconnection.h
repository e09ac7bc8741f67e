#pragma once

#include "database/dbconnection.h"

struct sqlite3;

namespace database
{

// An SQLite database file through SQLite's C API.
class CSqliteConnection : public CDbConnection
{
public:
    // Opens `path`; with `create` a missing file is made. Throws CDatabaseError(connect).
    static std::unique_ptr<CSqliteConnection> Open(const std::string& path, bool create);
    ~CSqliteConnection() override;

    Dialect GetDialect() const override { return Dialect::sqlite; }
    std::string Describe() const override;
    void Execute(const std::string& sql) override;
    std::vector<DbRow> Query(const std::string& sql, const std::vector<DbValue>& params) override;
    bool TableExists(const std::string& name) override;
    void BeginWrite() override;
    void Commit() override;
    void Rollback() noexcept override;
    std::unique_ptr<CRowWriter> WriteRows(const std::string& table,
                                          const std::vector<std::string>& columns) override;
    void DiscardIfCreated() noexcept override;

    // Throws the CDatabaseError that SQLite's result `code` stands for.
    [[noreturn]] void Fail(int code, const std::string& doing) const;

private:
    CSqliteConnection(sqlite3* db, std::string path, bool created);
    void Close() noexcept;

    sqlite3* m_db;
    std::string m_path;
    bool m_created;
};

} // namespace database
