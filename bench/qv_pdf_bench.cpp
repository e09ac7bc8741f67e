// Time, pages and size of reports drawn as PDF through the Qt canvas.
//
//   qv_pdf_bench [--runs N] [--skip-million]
//
// The documents are the synthetic ones of qv_bench: ten years of about fifteen time
// entries a working day, and about a million time entries. Runs on the offscreen
// platform; no display is needed.

#include "benchsupport.h"

#include "app/timekeeperapp.h"
#include "cli/demodocument.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"
#include "render/printrun.h"

#include <QGuiApplication>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace
{

using bench::FormatCount;
using bench::FormatSeconds;
using bench::FormatTimings;
using bench::Measure;
using bench::Stopwatch;

constexpr double kWorkingDaysPerYear = 261;

CReport* NewReport(CTimeKeeperDoc& doc, CReport::Kind kind, const std::string& name)
{
    CReport* r = doc.AddReport(kind);
    r->m_name = name;
    r->m_preset = CReport::allDates;
    r->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
    return r;
}

CReport* WeeklySummary(CTimeKeeperDoc& doc)
{
    CReport* weekly = NewReport(doc, CReport::timeSummary, "Weekly Hours");
    weekly->m_summarizeLevel = 2;
    weekly->m_timeFrame = CReport::frameWeek;
    weekly->m_showTotals = true;
    return weekly;
}

void Bench(const std::string& docName, const std::string& label, CReport& report, CTimeKeeperDoc& doc,
           CTimeKeeperApp& app, int runs, bench::Table& table)
{
    std::fprintf(stderr, "  %s: %s...\n", docName.c_str(), label.c_str());
    render::PdfResult pdf;
    const bench::Timings t = Measure(runs, [&] { pdf = {}; }, [&] { pdf = render::RenderPdf(report, doc, app); });
    if (!pdf.error.isEmpty() || pdf.bytes.isEmpty())
    {
        std::fprintf(stderr, "%s: %s\n", label.c_str(), qPrintable(pdf.error));
        std::exit(1);
    }
    const double kb = double(pdf.bytes.size()) / 1024.0;
    table.AddRow({docName, label, FormatCount(uint64_t(pdf.pages)), FormatCount(uint64_t(std::lround(kb))),
                  FormatTimings(t), FormatSeconds(t.BestCpu()),
                  FormatCount(uint64_t(std::lround(pdf.pages / std::max(1e-9, t.Best()))))});
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication qapp(argc, argv);
    int runs = 3;
    bool million = true;
    for (int i = 1; i < argc; ++i)
    {
        if (std::strcmp(argv[i], "--runs") == 0 && i + 1 < argc)
            runs = std::max(1, std::atoi(argv[++i]));
        else if (std::strcmp(argv[i], "--skip-million") == 0)
            million = false;
        else
        {
            std::fprintf(stderr, "usage: qv_pdf_bench [--runs N] [--skip-million]\n");
            return 2;
        }
    }

    platform::SettingsStore store;
    platform::FixedClock clock(platform::LocalTime{2024, 6, 11, 12, 0, 0});
    CTimeKeeperApp app(store, clock, platform::LocaleInfo::UnitedStates());
    app.SetWeekStart(1);

    std::printf("Reports as PDF (Letter, 1200 units per inch; seconds: best of %d runs, median in "
                "parentheses)\n\n",
                runs);
    bench::Table table({"document", "report", "pages", "KB", "seconds", "CPU s", "pages/s"});
    {
        cli::SyntheticOptions scale;
        scale.seed = 20240611;
        scale.years = 10;
        CTimeKeeperDoc doc;
        cli::MakeSyntheticDocument(doc, scale);
        doc.m_roundedNow = [&app] { return app.RoundTime(app.Now()); };
        CReport* time = NewReport(doc, CReport::timeDetail, "All Time");
        time->m_fieldFlags = CReport::fieldTaskId | CReport::field2 | CReport::field3 | CReport::field4 |
                             CReport::field5 | CReport::fieldNote;
        const std::string name = "10 years, " + FormatCount(doc.CountTimeEntries()) + " entries";
        Bench(name, "time detail, all dates", *time, doc, app, runs, table);
        Bench(name, "time summary by week, all dates", *WeeklySummary(doc), doc, app, runs, table);
        doc.m_roundedNow = nullptr;
    }
    if (million)
    {
        cli::SyntheticOptions scale;
        scale.seed = 20240611;
        scale.years = std::max(1, int(std::lround(1e6 / (15 * kWorkingDaysPerYear))));
        scale.timeEntriesPerDay = std::max(1, int(std::lround(1e6 / (scale.years * kWorkingDaysPerYear))));
        CTimeKeeperDoc doc;
        cli::MakeSyntheticDocument(doc, scale);
        doc.m_roundedNow = [&app] { return app.RoundTime(app.Now()); };
        const std::string name = FormatCount(doc.CountTimeEntries()) + " entries";
        Bench(name, "time summary by week, all dates", *WeeklySummary(doc), doc, app, runs, table);
        doc.m_roundedNow = nullptr;
    }
    std::printf("%s\n", table.Format().c_str());
    std::printf("Every report selects the root task; the time detail shows every optional column.\n"
                "The PDF is made in memory; writing it out is not timed.\n");
    return 0;
}
