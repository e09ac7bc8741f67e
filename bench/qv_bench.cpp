// Load, save and peak memory of large documents, and the time of reports over them.
//
//   qv_bench [--sizes 10000,100000,1000000] [--runs N] [--dir DIR] [--model-only | --reports-only]
//
// Documents come from the synthetic generator: years of about fifteen time entries and
// two expenses per working day over some four hundred tasks four levels deep.

#include "benchsupport.h"

#include "app/timekeeperapp.h"
#include "cli/demodocument.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "reports/reportrunner.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{

using bench::FormatCount;
using bench::FormatMegabytes;
using bench::FormatSeconds;
using bench::FormatTimings;
using bench::Measure;
using bench::Stopwatch;
using bench::Timings;

// Targets for a document of one million time entries on the two-core reference machine.
constexpr double kLoadTarget = 0.4;
constexpr double kSaveTarget = 0.3;
constexpr double kPeakTargetBytes = 250.0 * 1024 * 1024;
constexpr double kDetailExportTarget = 1.0;
constexpr double kWeeklySummaryTarget = 0.3;
constexpr double kInvoiceTarget = 0.1;
constexpr double kWorkingDaysPerYear = 261;

// Answers every question with yes (converting an older file) and keeps the messages.
class BenchPrompter : public platform::Prompter
{
public:
    void ShowMessage(const std::string& text, platform::Icon) override { m_messages.push_back(text); }
    platform::Answer AskYesNo(const std::string&, platform::Icon) override { return platform::Answer::yes; }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override { return platform::Answer::yes; }

    bool Said(const std::string& text) const
    {
        for (const std::string& m : m_messages)
            if (m.find(text) != std::string::npos)
                return true;
        return false;
    }
    std::string Last() const { return m_messages.empty() ? std::string() : m_messages.back(); }
    void Clear() { m_messages.clear(); }

private:
    std::vector<std::string> m_messages;
};

struct Options
{
    std::vector<uint64_t> sizes{10000, 100000, 1000000};
    int runs = 0; // 0: 5 below a million entries, 3 from there on
    std::string dir;
    bool model = true;
    bool reports = true;
};

[[noreturn]] void Usage(int status)
{
    std::fprintf(status ? stderr : stdout,
                 "usage: qv_bench [--sizes N,N,...] [--runs N] [--dir DIR] [--model-only | --reports-only]\n"
                 "  --sizes   time entries of the generated documents (default 10000,100000,1000000)\n"
                 "  --runs    timed runs of each step; the best is shown, the median in parentheses\n"
                 "  --dir     where the files are written and synced (default $TMPDIR or /tmp)\n");
    std::exit(status);
}

Options ParseOptions(int argc, char** argv)
{
    Options o;
    const char* tmp = std::getenv("TMPDIR");
    o.dir = tmp && *tmp ? tmp : "/tmp";
    for (int i = 1; i < argc; ++i)
    {
        const std::string arg = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc)
                Usage(2);
            return argv[++i];
        };
        if (arg == "--sizes")
        {
            o.sizes.clear();
            const std::string list = value();
            size_t at = 0;
            while (at <= list.size())
            {
                const size_t comma = std::min(list.find(',', at), list.size());
                const std::string item = list.substr(at, comma - at);
                char* end = nullptr;
                const unsigned long long n = std::strtoull(item.c_str(), &end, 10);
                if (item.empty() || *end || n == 0)
                    Usage(2);
                o.sizes.push_back(n);
                at = comma + 1;
            }
        }
        else if (arg == "--runs")
        {
            o.runs = std::atoi(value().c_str());
            if (o.runs <= 0)
                Usage(2);
        }
        else if (arg == "--dir")
            o.dir = value();
        else if (arg == "--model-only")
            o.reports = false;
        else if (arg == "--reports-only")
            o.model = false;
        else if (arg == "--help" || arg == "-h")
            Usage(0);
        else
            Usage(2);
    }
    return o;
}

int RunsFor(const Options& o, uint64_t entries) { return o.runs ? o.runs : entries >= 1000000 ? 3 : 5; }

// Generator options for about `entries` time entries at about fifteen a working day.
cli::SyntheticOptions ScaleFor(uint64_t entries)
{
    cli::SyntheticOptions s;
    s.seed = 20240611;
    s.years = std::max(1, int(std::lround(double(entries) / (15 * kWorkingDaysPerYear))));
    s.timeEntriesPerDay =
        std::max(1, int(std::lround(double(entries) / (s.years * kWorkingDaysPerYear))));
    return s;
}

std::unique_ptr<CTimeKeeperDoc> Generate(const cli::SyntheticOptions& scale, double& seconds)
{
    auto doc = std::make_unique<CTimeKeeperDoc>();
    Stopwatch watch;
    cli::MakeSyntheticDocument(*doc, scale);
    seconds = watch.Seconds();
    return doc;
}

// The child process of the peak-memory measurement: opens the document the way the
// program does (read the held file, load it) and reports its own high-water mark.
int PeakLoad(const std::string& path)
{
    const uint64_t before = bench::PeakResidentBytes();
    BenchPrompter prompter;
    CTimeKeeperDoc doc;
    Stopwatch watch;
    if (!doc.OnOpenDocument(path, prompter))
    {
        std::fprintf(stderr, "qv_bench: cannot load %s: %s\n", path.c_str(), prompter.Last().c_str());
        return 1;
    }
    const double seconds = watch.Seconds();
    const double cpu = watch.CpuSeconds();
    std::printf("%llu %llu %llu %zu %.6f %.6f\n", (unsigned long long)before,
                (unsigned long long)bench::PeakResidentBytes(), (unsigned long long)bench::ResidentBytes(),
                doc.CountTimeEntries(), seconds, cpu);
    return 0;
}

struct ModelFigures
{
    uint64_t entries = 0;
    double fileBytes = 0;
    Timings loadBytes, openFile, coldOpen, saveBytes, saveNew, saveAgain;
    double peakBytes = 0;
    double residentBytes = 0;
};

[[noreturn]] void Fail(const std::string& what)
{
    std::fprintf(stderr, "qv_bench: %s\n", what.c_str());
    std::exit(1);
}

ModelFigures BenchModel(const Options& o, uint64_t size, const bench::ScratchDir& dir, bench::Table& shape)
{
    const cli::SyntheticOptions scale = ScaleFor(size);
    const int runs = RunsFor(o, size);
    std::fprintf(stderr, "  %s entries: generating %d years at %d a day...\n", FormatCount(size).c_str(),
                 scale.years, scale.timeEntriesPerDay);
    double genSeconds = 0;
    std::unique_ptr<CTimeKeeperDoc> doc = Generate(scale, genSeconds);
    ModelFigures f;
    f.entries = doc->CountTimeEntries();
    BenchPrompter prompter;

    std::vector<uint8_t> bytes;
    std::fprintf(stderr, "  saving...\n");
    f.saveBytes = Measure(runs, [&] { bytes = {}; }, [&] { bytes = doc->SaveToBytes(); });
    f.fileBytes = double(bytes.size());

    const std::string newPath = dir.File("new.qvx");
    f.saveNew = Measure(
        runs,
        [&] {
            doc->CloseHeldFile();
            std::remove(newPath.c_str());
        },
        [&] {
            if (!doc->OnSaveDocument(newPath, prompter))
                Fail("save to a new file failed: " + prompter.Last());
        });
    doc->CloseHeldFile();
    std::remove(newPath.c_str());

    const std::string path = dir.File("doc.qvx");
    if (!doc->OnSaveDocument(path, prompter))
        Fail("save failed: " + prompter.Last());
    f.saveAgain = Measure(runs, nullptr, [&] {
        if (!doc->OnSaveDocument(path, prompter))
            Fail("save over the held file failed: " + prompter.Last());
    });
    doc->CloseHeldFile();
    if (CSharedDoc::HasBackup(path))
        Fail("the save left its backup behind");

    shape.AddRow({FormatCount(f.entries), std::to_string(scale.years), std::to_string(scale.timeEntriesPerDay),
                  FormatCount(doc->m_days.size()), FormatCount(doc->CountExpenseEntries()),
                  FormatCount(doc->CountToDoEntries()), FormatCount(doc->m_tasks.size()), FormatMegabytes(f.fileBytes),
                  FormatSeconds(genSeconds)});
    doc.reset();

    std::fprintf(stderr, "  loading...\n");
    std::unique_ptr<CTimeKeeperDoc> loaded;
    f.loadBytes = Measure(
        runs, [&] { loaded = std::make_unique<CTimeKeeperDoc>(); },
        [&] {
            const LoadResult r = loaded->LoadFromBytes(bytes.data(), bytes.size(), prompter);
            if (r.status != LoadResult::loaded)
                Fail("load failed: " + r.error);
        });
    if (loaded->CountTimeEntries() != f.entries)
        Fail("the loaded document has " + std::to_string(loaded->CountTimeEntries()) + " time entries, not " +
             std::to_string(f.entries));
    if (loaded->SaveToBytes() != bytes)
        Fail("the loaded document does not save to the bytes it was read from");
    bytes = {};

    f.openFile = Measure(
        runs,
        [&] {
            loaded.reset();
            loaded = std::make_unique<CTimeKeeperDoc>();
        },
        [&] {
            if (!loaded->OnOpenDocument(path, prompter))
                Fail("open failed: " + prompter.Last());
        });
    loaded.reset();

    std::fprintf(stderr, "  opening in fresh processes...\n");
    for (int run = 0; run < runs; ++run)
    {
        std::string output;
        if (!bench::RunSelf({"--peak-load", path}, output))
            Fail("the peak-memory run failed");
        unsigned long long before = 0, peak = 0, resident = 0;
        size_t count = 0;
        double seconds = 0, cpu = 0;
        if (std::sscanf(output.c_str(), "%llu %llu %llu %zu %lf %lf", &before, &peak, &resident, &count, &seconds,
                        &cpu) != 6 ||
            count != f.entries)
            Fail("the peak-memory run said: " + output);
        f.peakBytes = std::max(f.peakBytes, double(peak));
        f.residentBytes = std::max(f.residentBytes, double(resident));
        f.coldOpen.seconds.push_back(seconds);
        f.coldOpen.cpu.push_back(cpu);
    }
    std::remove(path.c_str());
    return f;
}

std::string Verdict(bool met) { return met ? "ok" : "MISSED"; }

void RunModel(const Options& o)
{
    bench::ScratchDir dir(o.dir);
    std::printf("Document file: load, save and peak memory (seconds: best of the runs, median in parentheses)\n");
    std::printf("Files in %s\n\n", o.dir.c_str());
    bench::Table shape({"time entries", "years", "per day", "days", "expenses", "to-dos", "tasks", "file MB",
                        "generate s"});
    bench::Table table({"time entries", "open (new process)", "load bytes", "open file", "save bytes",
                        "save new file", "save (held)", "peak MB", "loaded MB"});
    bench::Table cpu({"time entries", "open (new process)", "load bytes", "open file", "save bytes", "save new file",
                      "save (held)"});
    std::vector<ModelFigures> all;
    for (uint64_t size : o.sizes)
    {
        const ModelFigures f = BenchModel(o, size, dir, shape);
        all.push_back(f);
        table.AddRow({FormatCount(f.entries), FormatTimings(f.coldOpen), FormatTimings(f.loadBytes),
                      FormatTimings(f.openFile),
                      FormatTimings(f.saveBytes), FormatTimings(f.saveNew), FormatTimings(f.saveAgain),
                      FormatMegabytes(f.peakBytes), FormatMegabytes(f.residentBytes)});
        cpu.AddRow({FormatCount(f.entries), FormatSeconds(f.coldOpen.BestCpu()), FormatSeconds(f.loadBytes.BestCpu()),
                    FormatSeconds(f.openFile.BestCpu()),
                    FormatSeconds(f.saveBytes.BestCpu()), FormatSeconds(f.saveNew.BestCpu()),
                    FormatSeconds(f.saveAgain.BestCpu())});
    }
    std::printf("%s\n%s\nCPU seconds of the same steps (best run; waiting for the disk is not counted):\n\n%s\n",
                shape.Format().c_str(), table.Format().c_str(), cpu.Format().c_str());
    std::printf("open (new process): read the file and load it in a process that has done nothing else,\n"
                "as the program opens a document; load bytes: LoadFromBytes of a byte buffer and open\n"
                "file: read and load, both repeated in this process (memory freed by the previous run\n"
                "is reused, so they leave out the first touch of fresh pages); save bytes: SaveToBytes;\n"
                "save new file: create, write, fsync; save (held): the program's save over its open\n"
                "file (backup copy, rewrite, fsync, remove the backup); peak MB: VmHWM of the process\n"
                "that only opens the file; loaded MB: its VmRSS once the document is loaded and the\n"
                "file's bytes are freed.\n\n");

    for (const ModelFigures& f : all)
    {
        if (f.entries < 900000)
            continue;
        std::printf("Targets at %s time entries:\n", FormatCount(f.entries).c_str());
        std::printf("  load < %.1f s: open in a new process %s s (CPU %s s), load bytes %s s  %s\n", kLoadTarget,
                    FormatSeconds(f.coldOpen.Best()).c_str(), FormatSeconds(f.coldOpen.BestCpu()).c_str(),
                    FormatSeconds(f.loadBytes.Best()).c_str(), Verdict(f.coldOpen.Best() < kLoadTarget).c_str());
        std::printf("  save < %.1f s (fsync included): save (held) %s s (CPU %s s), save new file %s s  %s\n",
                    kSaveTarget, FormatSeconds(f.saveAgain.Best()).c_str(),
                    FormatSeconds(f.saveAgain.BestCpu()).c_str(), FormatSeconds(f.saveNew.Best()).c_str(),
                    Verdict(f.saveAgain.Best() < kSaveTarget).c_str());
        std::printf("  peak < %.0f MB: %s MB  %s\n\n", kPeakTargetBytes / (1024 * 1024),
                    FormatMegabytes(f.peakBytes).c_str(), Verdict(f.peakBytes < kPeakTargetBytes).c_str());
    }
    std::fflush(stdout);
}

// One report definition to export, and what it must stay under.
struct ReportCase
{
    std::string label;
    CReport* report = nullptr;
    double target = 0;
};

CReport* NewReport(CTimeKeeperDoc& doc, CReport::Kind kind, const std::string& name)
{
    CReport* r = doc.AddReport(kind);
    r->m_name = name;
    r->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
    return r;
}

void SetYear(CReport* r, int year)
{
    r->m_preset = CReport::customDates;
    r->m_startDate = CDateTime::FromDate(year, 1, 1);
    r->m_endDate = CDateTime::FromDate(year, 12, 31);
}

void BenchReports(const std::string& title, CTimeKeeperDoc& doc, int lastYear, const std::vector<ReportCase>& cases,
                  int runs, const bench::ScratchDir& dir, bench::Table& table, std::vector<std::string>& notes)
{
    platform::SettingsStore store;
    platform::FixedClock clock(platform::LocalTime{lastYear + 1, 1, 15, 12, 0, 0});
    CTimeKeeperApp app(store, clock, platform::LocaleInfo::UnitedStates());
    app.SetWeekStart(1);
    doc.m_roundedNow = [&app] { return app.RoundTime(app.Now()); };

    const struct
    {
        int format;
        const char* name;
    } formats[] = {{reports::formatCsv, "csv"}, {reports::formatHtml, "html"}};
    for (const ReportCase& c : cases)
        for (const auto& format : formats)
        {
            BenchPrompter prompter;
            const std::string path = dir.File(std::string("report.") + format.name);
            std::string error;
            const Timings t = Measure(runs, nullptr, [&] {
                if (!reports::ExportReportToFile(*c.report, doc, app, format.format, path, &error, &prompter))
                    Fail("export failed: " + error);
            });
            std::vector<uint8_t> text;
            bench::ReadFile(path, text);
            std::remove(path.c_str());
            if (prompter.Said("Export Unavailable"))
            {
                table.AddRow({title, c.label, format.name, "-", "-", "-", "-", "not built yet"});
                continue;
            }
            if (text.empty())
                Fail(c.label + " exported nothing");
            table.AddRow({title, c.label, format.name, std::to_string((text.size() + 1023) / 1024), FormatTimings(t),
                          FormatSeconds(t.BestCpu()), "< " + FormatSeconds(c.target), Verdict(t.Best() < c.target)});
            if (!prompter.Last().empty())
                notes.push_back(c.label + " (" + format.name + ") said: " + prompter.Last());
        }
    doc.m_roundedNow = nullptr;
}

void RunReports(const Options& o)
{
    bench::ScratchDir dir(o.dir);
    std::printf("Reports: export to a file (seconds: best of the runs, median in parentheses)\n\n");
    bench::Table table({"document", "report", "format", "KB", "seconds", "CPU s", "target", ""});
    std::vector<std::string> notes;

    {
        std::fprintf(stderr, "  reports over ten years...\n");
        cli::SyntheticOptions scale;
        scale.seed = 20240611;
        scale.years = 10;
        double seconds = 0;
        std::unique_ptr<CTimeKeeperDoc> doc = Generate(scale, seconds);
        const int lastYear = scale.firstYear + scale.years - 1;
        CReport* time = NewReport(*doc, CReport::timeDetail, "All Time");
        time->m_preset = CReport::allDates;
        time->m_fieldFlags = CReport::fieldTaskId | CReport::field2 | CReport::field3 | CReport::field4 |
                             CReport::field5 | CReport::fieldNote;
        CReport* expenses = NewReport(*doc, CReport::expenseDetail, "All Expenses");
        expenses->m_preset = CReport::allDates;
        expenses->m_fieldFlags = CReport::fieldTaskId | CReport::field2 | CReport::field3 | CReport::fieldNote;
        CReport* todos = NewReport(*doc, CReport::todoDetail, "All To Dos");
        todos->m_preset = CReport::allDates;
        CReport* weekly = NewReport(*doc, CReport::timeSummary, "Weekly Hours");
        weekly->m_preset = CReport::allDates;
        weekly->m_summarizeLevel = 2;
        weekly->m_timeFrame = CReport::frameWeek;
        weekly->m_showTotals = true;
        CReport* invoice = NewReport(*doc, CReport::invoice, "Invoice");
        SetYear(invoice, lastYear);
        invoice->m_summarizeLevel = 2;
        invoice->m_timeFrame = CReport::frameMonth;
        const std::string name = FormatCount(doc->CountTimeEntries()) + " entries";
        BenchReports(name, *doc, lastYear,
                     {{"time detail, all dates", time, kDetailExportTarget},
                      {"expense detail, all dates", expenses, kDetailExportTarget},
                      {"to-do detail, all dates", todos, kDetailExportTarget},
                      {"time summary by week, all dates", weekly, kWeeklySummaryTarget},
                      {"invoice, one year, by month", invoice, kInvoiceTarget}},
                     o.runs ? o.runs : 5, dir, table, notes);
    }
    {
        std::fprintf(stderr, "  reports over a million entries...\n");
        const cli::SyntheticOptions scale = ScaleFor(1000000);
        double seconds = 0;
        std::unique_ptr<CTimeKeeperDoc> doc = Generate(scale, seconds);
        const int lastYear = scale.firstYear + scale.years - 1;
        CReport* weekly = NewReport(*doc, CReport::timeSummary, "Weekly Hours");
        weekly->m_preset = CReport::allDates;
        weekly->m_summarizeLevel = 2;
        weekly->m_timeFrame = CReport::frameWeek;
        weekly->m_showTotals = true;
        CReport* invoice = NewReport(*doc, CReport::invoice, "Invoice");
        SetYear(invoice, lastYear);
        invoice->m_summarizeLevel = 2;
        invoice->m_timeFrame = CReport::frameMonth;
        const std::string name = FormatCount(doc->CountTimeEntries()) + " entries";
        BenchReports(name, *doc, lastYear,
                     {{"time summary by week, all dates", weekly, kWeeklySummaryTarget},
                      {"invoice, one year, by month", invoice, kInvoiceTarget}},
                     o.runs ? o.runs : 3, dir, table, notes);
    }
    std::printf("%s\n", table.Format().c_str());
    std::printf("Every report selects the root task; the detail reports show every optional column.\n");
    for (const std::string& n : notes)
        std::printf("%s\n", n.c_str());
    std::printf("\n");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--peak-load") == 0)
        return PeakLoad(argv[2]);
    const Options o = ParseOptions(argc, argv);
    if (o.model)
        RunModel(o);
    if (o.reports)
        RunReports(o);
    return 0;
}
