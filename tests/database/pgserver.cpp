#include "pgserver.h"

#include "database/dbconnection.h"

#include <libpq-fe.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qvtest
{

namespace
{
// The folder of Debian's server programs (not on PATH), the newest version first.
std::string ServerBinDir()
{
    std::vector<std::string> dirs;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/lib/postgresql", ec))
        if (std::filesystem::exists(entry.path() / "bin/initdb"))
            dirs.push_back((entry.path() / "bin").string());
    std::sort(dirs.begin(), dirs.end(), [](const std::string& a, const std::string& b) {
        return std::atoi(a.c_str() + 20) > std::atoi(b.c_str() + 20);
    });
    return dirs.empty() ? std::string() : dirs.front();
}

// Who runs the server: this user, or under root a system user that is not root.
bool ServerUser(uid_t& uid, gid_t& gid, std::string& why)
{
    uid = ::geteuid();
    gid = ::getegid();
    if (uid != 0)
        return true;
    for (const char* name : {"postgres", "nobody"})
        if (const passwd* pw = ::getpwnam(name))
        {
            uid = pw->pw_uid;
            gid = pw->pw_gid;
            return true;
        }
    why = "the tests run as root and there is neither a postgres nor a nobody user to run the "
          "PostgreSQL server as";
    return false;
}

// Starts `argv` in `dir` as uid/gid with its output in `log`; with `tied` the child gets
// SIGINT (a fast shutdown) when this process ends.
pid_t Spawn(const std::vector<std::string>& argv, const std::string& dir, uid_t uid, gid_t gid,
            const std::string& log, bool tied)
{
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid != 0)
        return pid;
    const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    if (out < 0 || ::chdir(dir.c_str()) != 0)
        ::_exit(126);
    ::dup2(out, 1);
    ::dup2(out, 2);
    if (::geteuid() != uid && (::setgroups(0, nullptr) != 0 || ::setgid(gid) != 0 || ::setuid(uid) != 0))
        ::_exit(126);
    // Set after the change of user, which would clear it.
    if (tied && (::prctl(PR_SET_PDEATHSIG, SIGINT) != 0 || ::getppid() != parent))
        ::_exit(126);
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    ::execv(args[0], args.data());
    ::_exit(127);
}

std::string Tail(const std::string& path)
{
    std::ifstream in(path);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return text.size() > 800 ? text.substr(text.size() - 800) : text;
}
} // namespace

PgScratchServer* PgScratchServer::Get(std::string& why)
{
    static std::unique_ptr<PgScratchServer> server;
    static std::string failure;
    if (!server && failure.empty())
    {
        std::unique_ptr<PgScratchServer> s(new PgScratchServer());
        if (s->Start(failure))
            server = std::move(s);
    }
    why = failure;
    return server.get();
}

bool PgScratchServer::Start(std::string& why)
{
    const std::string bin = ServerBinDir();
    if (bin.empty())
    {
        why = "no PostgreSQL server programs under /usr/lib/postgresql (scripts/install-deps "
              "installs the postgresql package)";
        return false;
    }
    uid_t uid = 0;
    gid_t gid = 0;
    if (!ServerUser(uid, gid, why))
        return false;
    std::string templ = (std::filesystem::temp_directory_path() / "qvpg-XXXXXX").string();
    if (!::mkdtemp(templ.data()) || ::chown(templ.c_str(), uid, gid) != 0)
    {
        why = "cannot make a folder for the server: " + std::string(std::strerror(errno));
        return false;
    }
    m_dir = templ;
    const std::string log = m_dir + "/server.log";
    const pid_t init = Spawn({bin + "/initdb", "-D", m_dir + "/data", "-U", "postgres", "-A", "trust",
                              "-E", "UTF8", "--no-sync"},
                             m_dir, uid, gid, log, false);
    int status = 0;
    if (init < 0 || ::waitpid(init, &status, 0) != init || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0)
    {
        why = "initdb failed: " + Tail(log);
        return false;
    }
    m_pid = Spawn({bin + "/postgres", "-D", m_dir + "/data", "-k", m_dir, "-c", "listen_addresses=",
                   "-F", "-c", "max_connections=30"},
                  m_dir, uid, gid, log, true);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (PQping(ConnInfo("postgres").c_str()) != PQPING_OK)
    {
        if (::waitpid(m_pid, &status, WNOHANG) == m_pid || std::chrono::steady_clock::now() > deadline)
        {
            m_pid = -1;
            why = "the PostgreSQL server did not start: " + Tail(log);
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

PgScratchServer::~PgScratchServer()
{
    if (m_pid > 0)
    {
        ::kill(m_pid, SIGINT);
        int status = 0;
        ::waitpid(m_pid, &status, 0);
    }
    std::error_code ec;
    if (!m_dir.empty())
        std::filesystem::remove_all(m_dir, ec);
}

std::string PgScratchServer::ConnInfo(const std::string& database, const std::string& user) const
{
    return "host=" + m_dir + " port=5432 dbname=" + database + " user=" + user;
}

std::string PgScratchServer::NewDatabase()
{
    const std::string name = "team" + std::to_string(++m_databases);
    Admin("postgres", "CREATE DATABASE " + name);
    return name;
}

void PgScratchServer::Admin(const std::string& database, const std::string& sql) const
{
    database::OpenDatabase(ConnInfo(database), database::OpenMode::existing)->Execute(sql);
}

} // namespace qvtest
