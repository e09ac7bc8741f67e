#include "qvxrunner.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/wait.h>
#include <thread>
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
    m_dir = m_scratch.Path();
    ASSERT_FALSE(m_dir.empty()) << "no scratch folder";
    std::filesystem::create_directories(m_dir + "/config");
    std::filesystem::create_directories(m_dir + "/output");
}

pid_t QvxTest::Start(const std::vector<std::string>& args, const std::string& tag,
                     const Surroundings& how)
{
    // Everything the child needs is made here: after fork it may only make system calls.
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e)
    {
        const std::string var = *e;
        const std::string name = var.substr(0, var.find('='));
        // qvx needs no display, also where it writes PDF.
        if (name != "XDG_CONFIG_HOME" && name != "QVX_NOW" && name.rfind("LC_", 0) != 0 &&
            name != "LANG" && name != "DISPLAY" && name != "WAYLAND_DISPLAY")
            env.push_back(var);
    }
    env.push_back("XDG_CONFIG_HOME=" + m_dir + "/config");
    env.push_back("LANG=en_US.UTF-8");
    env.push_back("LC_ALL=en_US.UTF-8");
    if (!how.now.empty())
        env.push_back("QVX_NOW=" + how.now);
    std::vector<std::string> argv = {QVX_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    std::vector<char*> argp, envp;
    for (std::string& a : argv)
        argp.push_back(a.data());
    argp.push_back(nullptr);
    for (std::string& e : env)
        envp.push_back(e.data());
    envp.push_back(nullptr);
    const std::string out =
        how.stdoutPath.empty() ? m_dir + "/output/" + tag + ".out" : how.stdoutPath;
    const std::string err = m_dir + "/output/" + tag + ".err";
    const struct rlimit limit
    {
        how.fileSizeLimit, how.fileSizeLimit
    };

    const pid_t pid = ::fork();
    if (pid != 0)
        return pid;
    auto redirect = [](int fd, const char* path, int flags)
    {
        const int opened = ::open(path, flags, 0644);
        if (opened != fd && ::dup2(opened, fd) >= 0)
            ::close(opened);
    };
    if (::chdir(m_dir.c_str()) != 0)
        ::_exit(120);
    redirect(0, "/dev/null", O_RDONLY);
    redirect(2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    if (how.closeStdout)
        ::close(1);
    else
        redirect(1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    if (how.fileSizeLimit != RLIM_INFINITY)
    {
        // Writing past the limit then fails with EFBIG instead of ending the process.
        ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ::execve(argp[0], argp.data(), envp.data());
    ::_exit(127);
}

QvxResult QvxTest::Finish(pid_t pid, const std::string& tag, std::chrono::seconds limit)
{
    QvxResult result;
    if (pid < 0)
    {
        ADD_FAILURE() << "cannot start qvx: " << std::strerror(errno);
        return result;
    }
    const auto deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0)
    {
        if (std::chrono::steady_clock::now() > deadline)
        {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            ADD_FAILURE() << "qvx (" << tag << ") still ran after " << limit.count()
                          << " s: it hangs";
            return result;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    auto read = [&](const std::string& file)
    {
        std::ifstream in(m_dir + "/output/" + file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    };
    result.out = read(tag + ".out");
    result.err = read(tag + ".err");
    return result;
}

QvxResult QvxTest::Run(const std::vector<std::string>& args, const std::string& now)
{
    Surroundings how;
    how.now = now;
    return Finish(Start(args, "run", how), "run");
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
    return Json::parse(r.out);
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

const Json* FindDay(const Json& dump, const std::string& key)
{
    for (const Json& day : dump.at("days"))
        if (day.at("key") == key)
            return &day;
    return nullptr;
}

std::vector<std::string> Spans(const Json& dump, const std::string& key)
{
    std::vector<std::string> spans;
    if (const Json* day = FindDay(dump, key))
        for (const Json& e : day->at("time"))
            spans.push_back(std::to_string(e.at("task").get<long>()) + " " +
                            e.at("start").get<std::string>() + "-" +
                            (e.at("end").is_null() ? "" : e.at("end").get<std::string>()));
    return spans;
}

bool HasTask(const Json& dump, const std::string& name)
{
    for (const Json& t : dump.at("tasks"))
        if (t.at("name") == name)
            return true;
    return false;
}

} // namespace qvtest
