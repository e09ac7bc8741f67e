#include "benchsupport.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace bench
{

double ProcessCpuSeconds()
{
    struct timespec t = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

double Timings::Best() const
{
    return seconds.empty() ? 0.0 : *std::min_element(seconds.begin(), seconds.end());
}

double Timings::BestCpu() const { return cpu.empty() ? 0.0 : *std::min_element(cpu.begin(), cpu.end()); }

double Timings::Median() const
{
    if (seconds.empty())
        return 0.0;
    std::vector<double> sorted = seconds;
    std::sort(sorted.begin(), sorted.end());
    const size_t n = sorted.size();
    return n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
}

Timings Measure(int runs, const std::function<void()>& setUp, const std::function<void()>& step)
{
    Timings t;
    for (int i = 0; i < runs; ++i)
    {
        if (setUp)
            setUp();
        Stopwatch watch;
        step();
        t.seconds.push_back(watch.Seconds());
        t.cpu.push_back(watch.CpuSeconds());
    }
    return t;
}

std::string Table::Format() const
{
    std::vector<size_t> widths(m_titles.size(), 0);
    auto widen = [&](const std::vector<std::string>& cells) {
        for (size_t i = 0; i < cells.size() && i < widths.size(); ++i)
            widths[i] = std::max(widths[i], cells[i].size());
    };
    widen(m_titles);
    for (const auto& row : m_rows)
        widen(row);

    std::ostringstream out;
    auto line = [&](const std::vector<std::string>& cells) {
        for (size_t i = 0; i < widths.size(); ++i)
        {
            const std::string cell = i < cells.size() ? cells[i] : std::string();
            const std::string pad(widths[i] - cell.size(), ' ');
            out << (i ? "  " : "") << (i ? pad + cell : cell + pad);
        }
        out << '\n';
    };
    line(m_titles);
    size_t total = 0;
    for (size_t w : widths)
        total += w;
    out << std::string(total + 2 * (widths.size() - 1), '-') << '\n';
    for (const auto& row : m_rows)
        line(row);
    return out.str();
}

std::string FormatSeconds(double s)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", s);
    return text;
}

std::string FormatTimings(const Timings& t)
{
    if (t.seconds.size() < 2)
        return FormatSeconds(t.Best());
    return FormatSeconds(t.Best()) + " (" + FormatSeconds(t.Median()) + ")";
}

std::string FormatMegabytes(double bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", bytes / (1024.0 * 1024.0));
    return text;
}

std::string FormatCount(uint64_t n)
{
    std::string digits = std::to_string(n);
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i)
    {
        if (i && (digits.size() - i) % 3 == 0)
            out += ',';
        out += digits[i];
    }
    return out;
}

ScratchDir::ScratchDir(const std::string& parent)
{
    std::string pattern = parent + "/qv_bench.XXXXXX";
    if (!::mkdtemp(pattern.data()))
    {
        std::fprintf(stderr, "qv_bench: cannot create a directory in %s: %s\n", parent.c_str(),
                     std::strerror(errno));
        std::exit(1);
    }
    m_path = pattern;
}

ScratchDir::~ScratchDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

namespace
{
uint64_t StatusBytes(const char* key)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t length = std::strlen(key);
    while (std::getline(status, line))
        if (line.compare(0, length, key) == 0)
            return std::strtoull(line.c_str() + length, nullptr, 10) * 1024;
    return 0;
}
} // namespace

uint64_t PeakResidentBytes() { return StatusBytes("VmHWM:"); }
uint64_t ResidentBytes() { return StatusBytes("VmRSS:"); }

bool RunSelf(const std::vector<std::string>& arguments, std::string& output)
{
    int pipeFds[2];
    if (::pipe(pipeFds) != 0)
        return false;
    std::vector<char*> argv;
    static char self[] = "/proc/self/exe";
    argv.push_back(self);
    for (const std::string& a : arguments)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);

    const pid_t pid = ::fork();
    if (pid < 0)
    {
        ::close(pipeFds[0]);
        ::close(pipeFds[1]);
        return false;
    }
    if (pid == 0)
    {
        ::dup2(pipeFds[1], STDOUT_FILENO);
        ::close(pipeFds[0]);
        ::close(pipeFds[1]);
        ::execv(self, argv.data());
        ::_exit(127);
    }
    ::close(pipeFds[1]);
    output.clear();
    char buffer[4096];
    for (;;)
    {
        const ssize_t n = ::read(pipeFds[0], buffer, sizeof buffer);
        if (n > 0)
            output.append(buffer, size_t(n));
        else if (n == 0 || errno != EINTR)
            break;
    }
    ::close(pipeFds[0]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool ReadFile(const std::string& path, std::vector<uint8_t>& bytes)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

bool WriteFile(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return bool(out.flush());
}

} // namespace bench
