#pragma once

#include "database/dbconnection.h"

struct pg_conn;
struct pg_result;

namespace database
{

// A PostgreSQL database through libpq. Rows go in with COPY.
class CPgConnection : public CDbConnection
{
public:
    // `conninfo`: a URI or keyword/value string; what it leaves out comes from libpq's
    // environment variables (PGHOST, PGDATABASE, ...). Throws CDatabaseError(connect).
    static std::unique_ptr<CPgConnection> Open(const std::string& conninfo);
    ~CPgConnection() override;

    Dialect GetDialect() const override { return Dialect::postgresql; }
    std::string Describe() const override;
    void Execute(const std::string& sql) override;
    std::vector<DbRow> Query(const std::string& sql, const std::vector<DbValue>& params) override;
    bool TableExists(const std::string& name) override;
    void BeginWrite() override;
    void Commit() override;
    void Rollback() noexcept override;
    std::unique_ptr<CRowWriter> WriteRows(const std::string& table,
                                          const std::vector<std::string>& columns) override;

    // Checks a result (and frees it when it failed): throws the CDatabaseError it stands for.
    void Check(pg_result* result, int expected, const std::string& doing);
    [[noreturn]] void FailConnection(const std::string& doing);

private:
    explicit CPgConnection(pg_conn* conn) : m_conn(conn) {}

    pg_conn* m_conn;
};

} // namespace database
