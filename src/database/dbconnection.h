#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace database
{

// A failure of the database or of the way to it. Every statement can fail in many ways
// (the server goes away, a permission is missing), so failures travel as one exception
// type to the command that started the work, which rolls back and reports it in one line.
class CDatabaseError : public std::runtime_error
{
public:
    enum Kind
    {
        connect,        // the database could not be opened or reached
        permission,     // the database refused what was asked
        connectionLost, // the server went away in the middle of the work
        schema,         // the database holds no schema of ours, or one of another version
        other,
    };

    CDatabaseError(Kind kind, const std::string& message)
        : std::runtime_error(message), m_kind(kind)
    {
    }
    Kind GetKind() const { return m_kind; }

private:
    Kind m_kind;
};

// A parameter of a statement: null, a whole number, a real number or a text.
using DbValue = std::variant<std::monostate, int64_t, double, std::string>;
// One row of a query's result as text (SQLite's and PostgreSQL's text forms); nullopt is NULL.
using DbRow = std::vector<std::optional<std::string>>;

// Writes many rows into one table, faster than a statement per row: values are given
// column by column in the order the writer was made with, then EndRow.
class CRowWriter
{
public:
    virtual ~CRowWriter() = default;
    virtual void Null() = 0;
    virtual void Int(int64_t value) = 0;
    virtual void Real(double value) = 0;
    virtual void Text(std::string_view value) = 0;
    virtual void Bool(bool value) = 0;
    virtual void EndRow() = 0;
    // Sends what is left; the rows are part of the transaction from here on.
    virtual void Finish() = 0;

    void OptionalInt(int64_t value, bool present) { present ? Int(value) : Null(); }
};

// One open database. The program's statements are fixed texts with numbered
// parameters ($1, $2, ...); what the user typed or the documents hold only ever
// travels as parameters or as row values, never inside the SQL.
class CDbConnection
{
public:
    enum class Dialect
    {
        sqlite,
        postgresql,
    };

    virtual ~CDbConnection() = default;
    virtual Dialect GetDialect() const = 0;
    // "SQLite database 'team.db'", "PostgreSQL database 'team' on /run/postgresql".
    virtual std::string Describe() const = 0;

    // Runs fixed SQL (several statements allowed) without parameters.
    virtual void Execute(const std::string& sql) = 0;
    // Runs one statement with parameters and returns its rows.
    virtual std::vector<DbRow> Query(const std::string& sql,
                                     const std::vector<DbValue>& params = {}) = 0;
    virtual bool TableExists(const std::string& name) = 0;

    // A transaction that writes: other writers wait for it (or it for them).
    virtual void BeginWrite() = 0;
    virtual void Commit() = 0;
    // Undoes the open transaction, if any; never throws (it runs while an error travels).
    virtual void Rollback() noexcept = 0;

    // One writer at a time: finish it before the next statement or writer.
    virtual std::unique_ptr<CRowWriter> WriteRows(const std::string& table,
                                                  const std::vector<std::string>& columns) = 0;

    // After a failure: removes the database file that opening it created, so that a
    // command that wrote nothing leaves nothing behind.
    virtual void DiscardIfCreated() noexcept {}
};

// How a TARGET names a database: a PostgreSQL connection (a "postgresql://" or
// "postgres://" URI, or a libpq keyword/value string such as "host=db dbname=team"),
// else the path of an SQLite file.
bool IsPostgresTarget(std::string_view target);

enum class OpenMode
{
    create,   // an SQLite file is made when missing
    existing, // an SQLite file must exist
};

// Opens the database a TARGET names; throws CDatabaseError(connect) saying why not.
std::unique_ptr<CDbConnection> OpenDatabase(const std::string& target, OpenMode mode);

} // namespace database
