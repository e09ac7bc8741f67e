#pragma once

#include <memory>
#include <string>
#include <sys/types.h>

namespace qvtest
{

// A PostgreSQL server of the tests' own: a cluster made by initdb in a temporary folder,
// listening only on a Unix socket there, with "postgres" as its superuser and no
// passwords. The server refuses to run as root, so under root it runs as the `postgres`
// system user (or `nobody`). Stopped and removed when the test program ends, or when
// the test program dies (the server gets a signal when its parent goes).
class PgScratchServer
{
public:
    // The test program's server, started on first use; nullptr, with the reason in
    // `why`, when none can run here.
    static PgScratchServer* Get(std::string& why);
    ~PgScratchServer();

    // A libpq connection string for `database` as `user`.
    std::string ConnInfo(const std::string& database, const std::string& user = "postgres") const;
    // A new, empty database; returns its name.
    std::string NewDatabase();
    // Runs fixed SQL as the superuser in `database`; throws on an error.
    void Admin(const std::string& database, const std::string& sql) const;

private:
    PgScratchServer() = default;
    bool Start(std::string& why);

    std::string m_dir;
    pid_t m_pid = -1;
    int m_databases = 0;
};

} // namespace qvtest
