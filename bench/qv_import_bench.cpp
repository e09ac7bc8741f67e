// Importing large sources: a Timewarrior export, the same intervals as a CSV file, and the
// calendar export of the imported document read back.
//
//   qv_import_bench [--intervals 100000] [--runs N]
//
// The intervals are a working day's worth after another (about six a day, 40 to 100
// minutes each, every fiftieth one from the evening past midnight) on some sixty tasks two
// tags deep, a third of them annotated: deterministic, so every run reads the same text.

#include "benchsupport.h"

#include "app/timekeeperapp.h"
#include "interchange/csvreader.h"
#include "interchange/icalreader.h"
#include "interchange/icalwriter.h"
#include "interchange/importapply.h"
#include "interchange/importplanner.h"
#include "interchange/timewarriorreader.h"
#include "interchange/wallclock.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "timekeeping/timer.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

namespace
{
using bench::FormatCount;
using bench::FormatTimings;
using bench::Measure;
using bench::Timings;

// Reading, planning and applying 100,000 intervals on the two-core reference machine.
constexpr double kImportTarget = 2.0;

class QuietUi : public TimerUi
{
public:
    int EditTimeEntry(CDay&, CTimeEntry&) override { return 1; }
    int ChooseConflictResolution() override { return 0; }
    void ShowTimerState(TimerIcon, const std::string&) override {}
    void ShowEntryChanges(const std::string&) override {}
};

struct Interval
{
    int64_t start; // UTC seconds
    int64_t end;
    int client;
    int project;
    bool note;
};

std::vector<Interval> MakeIntervals(size_t count)
{
    std::vector<Interval> result;
    result.reserve(count);
    uint32_t seed = 7;
    auto next = [&](uint32_t n)
    {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 8) % n;
    };
    int64_t day = interchange::LocalFromCivil(2015, 1, 5);
    while (result.size() < count)
    {
        int64_t at = day + 8 * 3600 + int64_t(next(30)) * 60;
        while (at < day + 18 * 3600 && result.size() < count)
        {
            const int64_t length = (40 + int64_t(next(61))) * 60 + int64_t(next(60));
            const bool late = result.size() % 50 == 49;
            const int64_t start = late ? day + 22 * 3600 : at;
            result.push_back({start, start + (late ? 3 * 3600 : length), int(next(12)), int(next(5)), next(3) == 0});
            if (late)
                break;
            at += length + int64_t(next(20)) * 60;
        }
        day += interchange::kSecondsPerDay;
    }
    return result;
}

std::string Stamp(int64_t t)
{
    const std::time_t tt = std::time_t(t);
    std::tm tm{};
    gmtime_r(&tt, &tm);
    char text[40];
    std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02dZ", tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,
                  tm.tm_hour, tm.tm_min, tm.tm_sec);
    return text;
}

std::string TimewarriorJson(const std::vector<Interval>& intervals)
{
    std::string json = "[\n";
    for (size_t i = 0; i < intervals.size(); ++i)
    {
        const Interval& v = intervals[i];
        json += "{\"id\":" + std::to_string(intervals.size() - i) + ",\"start\":\"" + Stamp(v.start) +
                "\",\"end\":\"" + Stamp(v.end) + "\",\"tags\":[\"Client " + std::to_string(v.client) +
                "\",\"Project " + std::to_string(v.project) + "\"]" +
                (v.note ? ",\"annotation\":\"Work on item " + std::to_string(i) + "\"" : "") + "}" +
                (i + 1 < intervals.size() ? ",\n" : "\n");
    }
    return json + "]\n";
}

std::string Csv(const std::vector<Interval>& intervals)
{
    std::string csv = "Client,Project,Description,Start,End\n";
    for (size_t i = 0; i < intervals.size(); ++i)
    {
        const Interval& v = intervals[i];
        std::string start = Stamp(v.start), end = Stamp(v.end);
        auto iso = [](const std::string& s)
        { return s.substr(0, 4) + "-" + s.substr(4, 2) + "-" + s.substr(6, 2) + "T" + s.substr(9, 2) + ":" +
                 s.substr(11, 2) + ":" + s.substr(13, 2) + "Z"; };
        csv += "Client " + std::to_string(v.client) + ",Project " + std::to_string(v.project) + "," +
               (v.note ? "\"Work on item " + std::to_string(i) + "\"" : "") + "," + iso(start) + "," + iso(end) + "\n";
    }
    return csv;
}

struct Target
{
    platform::SettingsStore store;
    platform::FixedClock clock{{2024, 6, 12, 15, 0, 0}};
    CTimeKeeperApp app{store, clock, platform::LocaleInfo::UnitedStates()};
    CTimeKeeperDoc doc;
    QuietUi ui;
    platform::ScriptedPrompter prompter;
    std::unique_ptr<CTimer> timer;

    Target()
    {
        doc.NewDocument("Pat");
        timer = std::make_unique<CTimer>(doc, app, ui, prompter);
    }
    interchange::ImportOptions Options() const
    {
        interchange::ImportOptions o;
        o.now = app.Now();
        return o;
    }
};

[[noreturn]] void Usage(int status)
{
    std::fprintf(status ? stderr : stdout, "usage: qv_import_bench [--intervals N] [--runs N]\n");
    std::exit(status);
}
} // namespace

int main(int argc, char** argv)
{
    size_t count = 100000;
    int runs = 3;
    for (int i = 1; i < argc; ++i)
    {
        const std::string arg = argv[i];
        if ((arg == "--intervals" || arg == "--runs") && i + 1 < argc)
        {
            const long n = std::atol(argv[++i]);
            if (n <= 0)
                Usage(2);
            if (arg == "--runs")
                runs = int(n);
            else
                count = size_t(n);
        }
        else if (arg == "--help" || arg == "-h")
            Usage(0);
        else
            Usage(2);
    }
    setenv("TZ", "Europe/Berlin", 1);
    tzset();

    const std::vector<Interval> intervals = MakeIntervals(count);
    const std::string json = TimewarriorJson(intervals);
    const std::string csv = Csv(intervals);

    interchange::ImportSource source;
    const Timings read = Measure(runs, [] {}, [&] { source = interchange::ReadTimewarrior(json, {true}); });
    std::unique_ptr<Target> target;
    interchange::CImportPlan plan;
    const Timings planned = Measure(
        runs, [&] { target = std::make_unique<Target>(); },
        [&] { plan = interchange::PlanImport(target->doc, source, target->Options()); });
    const Timings applied = Measure(
        runs,
        [&]
        {
            target = std::make_unique<Target>();
            plan = interchange::PlanImport(target->doc, source, target->Options());
        },
        [&] { interchange::ApplyImport(target->doc, *target->timer, plan, interchange::OverlapChoice::adjustOthers); });
    const size_t tasksMade = plan.Tasks().size();
    const Timings again = Measure(runs, [] {},
                                  [&] { plan = interchange::PlanImport(target->doc, source, target->Options()); });
    const size_t entries = target->doc.CountTimeEntries();

    interchange::ImportSource csvSource;
    const Timings csvRead = Measure(runs, [] {}, [&] { csvSource = interchange::ReadCsv(csv, {}); });
    interchange::ICalExport exported;
    interchange::ICalExportOptions exportOptions;
    exportOptions.now = target->app.Now();
    const Timings icalWrite =
        Measure(runs, [] {}, [&] { exported = interchange::WriteICalendar(target->doc, exportOptions); });
    interchange::ImportSource icalSource;
    interchange::ICalOptions icalOptions;
    icalOptions.now = target->app.Now();
    const Timings icalRead =
        Measure(runs, [] {}, [&] { icalSource = interchange::ReadICalendar(exported.text, icalOptions); });

    bench::Table table({"step", "seconds", "CPU"});
    auto row = [&](const std::string& step, const Timings& t)
    { table.AddRow({step, FormatTimings(t), bench::FormatSeconds(t.BestCpu())}); };
    row("Timewarrior JSON: read (" + std::to_string((json.size() + 1023) / 1024) + " KB)", read);
    row("plan against a new document", planned);
    row("apply (" + FormatCount(entries) + " entries, " + std::to_string(tasksMade) + " tasks)", applied);
    row("plan the same again (all there already)", again);
    row("CSV: read (" + std::to_string((csv.size() + 1023) / 1024) + " KB)", csvRead);
    row("iCalendar: export (" + std::to_string((exported.text.size() + 1023) / 1024) + " KB)", icalWrite);
    row("iCalendar: read the export", icalRead);
    std::printf("Importing %s intervals (seconds: best of %d runs, median in parentheses)\n\n%s\n",
                FormatCount(count).c_str(), runs, table.Format().c_str());
    const double total = read.Best() + planned.Best() + applied.Best();
    std::printf("Target at 100,000 intervals: read, plan and apply < %.1f s: %s s  %s\n", kImportTarget,
                bench::FormatSeconds(total).c_str(),
                count != 100000 ? "(other size)" : total < kImportTarget ? "met" : "MISSED");
    std::printf("Peak memory %s MB\n", bench::FormatMegabytes(double(bench::PeakResidentBytes())).c_str());
    return 0;
}
