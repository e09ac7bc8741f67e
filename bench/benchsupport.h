#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench
{

// CPU seconds (user and system) this process has used.
double ProcessCpuSeconds();

// Seconds of wall-clock and of CPU time since construction.
class Stopwatch
{
public:
    Stopwatch() : m_start(std::chrono::steady_clock::now()), m_cpuStart(ProcessCpuSeconds()) {}
    double Seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }
    double CpuSeconds() const { return ProcessCpuSeconds() - m_cpuStart; }

private:
    std::chrono::steady_clock::time_point m_start;
    double m_cpuStart;
};

// Timings of repeated runs of one step. The machine is shared, so the best run is
// the figure that says what the code costs; the median shows how noisy it was. CPU
// time is less disturbed by other work on the machine, but leaves out waiting for
// the disk.
struct Timings
{
    std::vector<double> seconds;
    std::vector<double> cpu;

    double Best() const;
    double Median() const;
    double BestCpu() const;
};

// Runs `setUp` (untimed) and then `step` (timed) `runs` times.
Timings Measure(int runs, const std::function<void()>& setUp, const std::function<void()>& step);

// A table printed with aligned columns: the first column left-aligned, the others right.
class Table
{
public:
    explicit Table(std::vector<std::string> titles) : m_titles(std::move(titles)) {}
    void AddRow(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
    std::string Format() const;

private:
    std::vector<std::string> m_titles;
    std::vector<std::vector<std::string>> m_rows;
};

std::string FormatSeconds(double s);
// "0.123 (0.140)": best and median.
std::string FormatTimings(const Timings& t);
std::string FormatMegabytes(double bytes);
std::string FormatCount(uint64_t n);

// A fresh directory under `parent`, removed with everything in it on destruction.
class ScratchDir
{
public:
    explicit ScratchDir(const std::string& parent);
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    const std::string& Path() const { return m_path; }
    std::string File(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// The high-water mark of this process's resident memory, in bytes (VmHWM).
uint64_t PeakResidentBytes();
// The resident memory of this process now, in bytes (VmRSS).
uint64_t ResidentBytes();

// Runs this program again with `arguments` and waits for it. Returns false when it
// could not run or did not exit with 0; `output` receives its standard output. (A
// child's ru_maxrss would count the pages of the parent it was forked from, so a
// child that measures itself reports its own VmHWM.)
bool RunSelf(const std::vector<std::string>& arguments, std::string& output);

bool ReadFile(const std::string& path, std::vector<uint8_t>& bytes);
bool WriteFile(const std::string& path, const std::vector<uint8_t>& bytes);

} // namespace bench
