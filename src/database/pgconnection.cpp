#include "database/pgconnection.h"

#include <libpq-fe.h>

#include <charconv>
#include <cstring>

namespace database
{

namespace
{
// Every qvx that writes takes this lock for its transaction, so that syncs (and the
// creation of the schema) happen one after the other.
constexpr const char* kWriterLock = "SELECT pg_advisory_xact_lock(7516192769)";
// COPY data is sent in pieces of about this size.
constexpr size_t kCopyChunk = 1 << 20;

std::string FirstLine(const char* text)
{
    std::string s = text ? text : "";
    const size_t end = s.find('\n');
    if (end != std::string::npos)
        s.resize(end);
    return s;
}

// A result freed on every way out.
struct Result
{
    PGresult* r;
    ~Result() { PQclear(r); }
};

void AppendNumber(std::string& out, double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value);
    out.append(text, end.ptr);
}

class CopyWriter : public CRowWriter
{
public:
    CopyWriter(CPgConnection& owner, PGconn* conn) : m_owner(owner), m_conn(conn)
    {
        m_buffer.reserve(kCopyChunk + 4096);
    }
    ~CopyWriter() override
    {
        // Abandoned (an error elsewhere): end the COPY so that the connection can roll back.
        if (!m_finished && PQstatus(m_conn) == CONNECTION_OK)
        {
            PQputCopyEnd(m_conn, "abandoned");
            while (PGresult* r = PQgetResult(m_conn))
                PQclear(r);
        }
    }

    void Null() override { Separate(), m_buffer += "\\N"; }
    void Int(int64_t value) override
    {
        Separate();
        char text[24];
        const auto end = std::to_chars(text, text + sizeof text, value);
        m_buffer.append(text, end.ptr);
    }
    void Real(double value) override
    {
        Separate();
        AppendNumber(m_buffer, value);
    }
    void Text(std::string_view value) override
    {
        Separate();
        for (const char c : value)
            switch (c)
            {
            case '\\': m_buffer += "\\\\"; break;
            case '\t': m_buffer += "\\t"; break;
            case '\n': m_buffer += "\\n"; break;
            case '\r': m_buffer += "\\r"; break;
            default: m_buffer += c;
            }
    }
    void Bool(bool value) override
    {
        Separate();
        m_buffer += value ? 't' : 'f';
    }
    void EndRow() override
    {
        m_buffer += '\n';
        m_first = true;
        if (m_buffer.size() >= kCopyChunk)
            Send();
    }
    void Finish() override
    {
        Send();
        m_finished = true;
        if (PQputCopyEnd(m_conn, nullptr) != 1)
            m_owner.FailConnection("ending the rows");
        PGresult* r = PQgetResult(m_conn);
        m_owner.Check(r, PGRES_COMMAND_OK, "storing rows");
        PQclear(r);
        while (PGresult* r = PQgetResult(m_conn))
            PQclear(r);
    }

private:
    void Separate()
    {
        if (!m_first)
            m_buffer += '\t';
        m_first = false;
    }
    void Send()
    {
        if (!m_buffer.empty() && PQputCopyData(m_conn, m_buffer.data(), int(m_buffer.size())) != 1)
        {
            m_finished = true;
            m_owner.FailConnection("sending rows");
        }
        m_buffer.clear();
    }

    CPgConnection& m_owner;
    PGconn* m_conn;
    std::string m_buffer;
    bool m_first = true;
    bool m_finished = false;
};

void IgnoreNotice(void*, const char*) {}
} // namespace

std::unique_ptr<CPgConnection> CPgConnection::Open(const std::string& conninfo)
{
    PGconn* conn = PQconnectdb(conninfo.c_str());
    if (!conn)
        throw CDatabaseError(CDatabaseError::connect, "cannot connect to PostgreSQL: out of memory");
    if (PQstatus(conn) != CONNECTION_OK)
    {
        const std::string why = FirstLine(PQerrorMessage(conn));
        PQfinish(conn);
        throw CDatabaseError(CDatabaseError::connect, "cannot connect to PostgreSQL: " + why);
    }
    std::unique_ptr<CPgConnection> connection(new CPgConnection(conn));
    // Texts are UTF-8 in memory; notices ("table does not exist, skipping") are no news.
    if (PQsetClientEncoding(conn, "UTF8") != 0)
        connection->FailConnection("choosing UTF-8");
    PQsetNoticeProcessor(conn, IgnoreNotice, nullptr);
    return connection;
}

CPgConnection::~CPgConnection() { PQfinish(m_conn); }

std::string CPgConnection::Describe() const
{
    const char* host = PQhost(m_conn);
    return "PostgreSQL database '" + std::string(PQdb(m_conn)) + "'" +
           (host && *host ? " on " + std::string(host) : std::string());
}

void CPgConnection::FailConnection(const std::string& doing)
{
    const std::string why = FirstLine(PQerrorMessage(m_conn));
    if (PQstatus(m_conn) != CONNECTION_OK)
        throw CDatabaseError(CDatabaseError::connectionLost,
                             "the connection to the PostgreSQL server was lost while " + doing +
                                 (why.empty() ? std::string() : " (" + why + ")"));
    throw CDatabaseError(CDatabaseError::other, "PostgreSQL failed while " + doing + ": " + why);
}

void CPgConnection::Check(PGresult* result, int expected, const std::string& doing)
{
    if (result && PQresultStatus(result) == expected)
        return;
    Result owned{result};
    const char* state = result ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
    const std::string code = state ? state : "";
    if (code.empty() && PQstatus(m_conn) != CONNECTION_OK)
        FailConnection(doing);
    std::string message = FirstLine(PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY));
    if (message.empty())
        message = FirstLine(PQresultErrorMessage(result));
    if (code == "42501")
        throw CDatabaseError(CDatabaseError::permission,
                             "PostgreSQL refused: " + message + " (the database user needs the "
                             "right to create tables, or to read and write those of the schema)");
    // Class 08 (connection exception) and 57P0x (the server shut down or the session was
    // ended by an administrator) leave the work unfinished.
    if (code.rfind("08", 0) == 0 || code.rfind("57P0", 0) == 0)
        throw CDatabaseError(CDatabaseError::connectionLost,
                             "the PostgreSQL server ended the session while " + doing + " (" +
                                 message + ")");
    throw CDatabaseError(CDatabaseError::other,
                         "PostgreSQL failed while " + doing + ": " + message);
}

void CPgConnection::Execute(const std::string& sql)
{
    PGresult* r = PQexec(m_conn, sql.c_str());
    Check(r, PGRES_COMMAND_OK, "running a statement");
    PQclear(r);
}

std::vector<DbRow> CPgConnection::Query(const std::string& sql, const std::vector<DbValue>& params)
{
    std::vector<std::string> texts(params.size());
    std::vector<const char*> values(params.size(), nullptr);
    for (size_t i = 0; i < params.size(); ++i)
    {
        const DbValue& v = params[i];
        if (std::holds_alternative<int64_t>(v))
            texts[i] = std::to_string(std::get<int64_t>(v));
        else if (std::holds_alternative<double>(v))
            AppendNumber(texts[i], std::get<double>(v));
        else if (std::holds_alternative<std::string>(v))
            texts[i] = std::get<std::string>(v);
        if (!std::holds_alternative<std::monostate>(v))
            values[i] = texts[i].c_str();
    }
    PGresult* r = PQexecParams(m_conn, sql.c_str(), int(params.size()), nullptr, values.data(),
                               nullptr, nullptr, 0);
    if (r && PQresultStatus(r) == PGRES_COMMAND_OK)
    {
        PQclear(r);
        return {};
    }
    Check(r, PGRES_TUPLES_OK, "running a statement");
    Result owned{r};
    std::vector<DbRow> rows(size_t(PQntuples(r)));
    const int columns = PQnfields(r);
    for (int i = 0; i < int(rows.size()); ++i)
        for (int c = 0; c < columns; ++c)
            rows[size_t(i)].push_back(PQgetisnull(r, i, c)
                                          ? std::nullopt
                                          : std::optional<std::string>(PQgetvalue(r, i, c)));
    return rows;
}

bool CPgConnection::TableExists(const std::string& name)
{
    // to_regclass looks along the search path, where the program's statements look too.
    return !Query("SELECT 1 WHERE to_regclass($1) IS NOT NULL", {name}).empty();
}

void CPgConnection::BeginWrite()
{
    Execute("BEGIN");
    Query(kWriterLock, {});
}

void CPgConnection::Commit() { Execute("COMMIT"); }

void CPgConnection::Rollback() noexcept
{
    if (PQstatus(m_conn) == CONNECTION_OK && PQtransactionStatus(m_conn) != PQTRANS_IDLE)
        PQclear(PQexec(m_conn, "ROLLBACK"));
}

std::unique_ptr<CRowWriter> CPgConnection::WriteRows(const std::string& table,
                                                     const std::vector<std::string>& columns)
{
    std::string sql = "COPY " + table + " (";
    for (size_t i = 0; i < columns.size(); ++i)
        sql += (i ? ", " : "") + columns[i];
    sql += ") FROM STDIN";
    PGresult* r = PQexec(m_conn, sql.c_str());
    Check(r, PGRES_COPY_IN, "starting to store rows");
    PQclear(r);
    return std::make_unique<CopyWriter>(*this, m_conn);
}

} // namespace database
