#include "qvxrunner.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qvtest
{

std::vector<std::string> QvxResult::ErrLines() const
{
    std::vector<std::string> lines;
    std::istringstream in(err);
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    return lines;
}

void QvxTest::SetUp()
{
    std::string templ = (std::filesystem::temp_directory_path() / "qvx-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(templ.data()), nullptr) << std::strerror(errno);
    m_dir = templ;
    std::filesystem::create_directories(m_dir + "/config");
}

void QvxTest::TearDown()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_dir, ignored);
}

QvxResult QvxTest::Run(const std::vector<std::string>& args, const std::string& now)
{
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e)
    {
        const std::string var = *e;
        const std::string name = var.substr(0, var.find('='));
        if (name != "XDG_CONFIG_HOME" && name != "QVX_NOW" && name.rfind("LC_", 0) != 0 &&
            name != "LANG")
            env.push_back(var);
    }
    env.push_back("XDG_CONFIG_HOME=" + m_dir + "/config");
    env.push_back("LANG=en_US.UTF-8");
    env.push_back("LC_ALL=en_US.UTF-8");
    if (!now.empty())
        env.push_back("QVX_NOW=" + now);

    std::vector<std::string> argv = {QVX_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    std::vector<char*> argp, envp;
    for (std::string& a : argv)
        argp.push_back(a.data());
    argp.push_back(nullptr);
    for (std::string& e : env)
        envp.push_back(e.data());
    envp.push_back(nullptr);

    int outPipe[2], errPipe[2];
    EXPECT_EQ(::pipe2(outPipe, O_CLOEXEC), 0);
    EXPECT_EQ(::pipe2(errPipe, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
    posix_spawn_file_actions_addchdir_np(&actions, m_dir.c_str());
    pid_t pid = 0;
    const int spawned = ::posix_spawn(&pid, argp[0], &actions, nullptr, argp.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(outPipe[1]);
    ::close(errPipe[1]);

    QvxResult result;
    if (spawned != 0)
    {
        ADD_FAILURE() << "cannot start " << argp[0] << ": " << std::strerror(spawned);
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        return result;
    }
    // Read both pipes as they fill, so that neither can block the child.
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    int open = 2;
    while (open > 0)
    {
        if (::poll(fds, 2, -1) < 0 && errno != EINTR)
            break;
        for (int i = 0; i < 2; ++i)
        {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP)))
                continue;
            char buf[4096];
            const ssize_t n = ::read(fds[i].fd, buf, sizeof buf);
            if (n > 0)
                sinks[i]->append(buf, size_t(n));
            else if (n == 0 || errno != EINTR)
            {
                ::close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

std::string QvxTest::Ok(const std::vector<std::string>& args, const std::string& now)
{
    const QvxResult r = Run(args, now);
    std::string line = "qvx";
    for (const std::string& a : args)
        line += " " + a;
    EXPECT_EQ(r.exitCode, 0) << line << "\nstderr: " << r.err << "\nstdout: " << r.out;
    return r.out;
}

Json QvxTest::DumpJson(const std::string& file)
{
    const QvxResult r = Run({"dump", "--json", file});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return Json::Parse(r.out);
}

void QvxTest::WriteSettings(const std::vector<std::string>& settingsLines)
{
    const std::string dir = m_dir + "/config/Halvery";
    std::filesystem::create_directories(dir);
    std::ofstream out(dir + "/Quorvane Time & Expense.conf", std::ios::binary | std::ios::trunc);
    out << "[Settings]\n";
    for (const std::string& line : settingsLines)
        out << line << "\n";
}

std::vector<uint8_t> QvxTest::ReadBytes(const std::string& file) const
{
    std::ifstream in(Path(file), std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>());
}

void QvxTest::WriteBytes(const std::string& file, const std::vector<uint8_t>& bytes) const
{
    std::ofstream out(Path(file), std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

} // namespace qvtest
