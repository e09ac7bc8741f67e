// The desktop program's own speed on the large document of qv_bench, on the offscreen
// platform: from start to the first painted main window, showing another day, and
// switching to Task view on a task with 10,000 time entries.
//
//   qv_gui_bench [--entries N] [--runs N] [--dir DIR]

#include "benchsupport.h"

#include "app/timekeeperapp.h"
#include "cli/demodocument.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "views/mainframe.h"
#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/timesheetview.h"

#include <QApplication>
#include <QDate>
#include <QElapsedTimer>
#include <QWindow>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace
{

using bench::FormatSeconds;
using bench::FormatTimings;
using bench::Stopwatch;
using bench::Timings;

// Targets on the two-core reference machine.
constexpr double kFirstPaintAfterLoadTarget = 1.0;
constexpr double kDaySwitchTarget = 0.005;
constexpr double kTaskViewTarget = 0.1;
constexpr size_t kTaskViewEntries = 10000;
constexpr double kWorkingDaysPerYear = 261;

// Answers yes and keeps quiet: nothing is asked of a user here.
class QuietPrompter : public platform::Prompter
{
public:
    void ShowMessage(const std::string& text, platform::Icon) override { last = text; }
    platform::Answer AskYesNo(const std::string&, platform::Icon) override { return platform::Answer::yes; }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override { return platform::Answer::yes; }
    std::string last;
};

// Notes when the panes that make the window's picture have finished painting.
class BenchApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        const bool paint = event->type() == QEvent::Paint;
        const bool result = QApplication::notify(receiver, event);
        if (paint)
            for (Watched& w : m_watched)
                if (w.widget == receiver)
                    ++w.paints;
        return result;
    }

    void Watch(QWidget* widget) { m_watched.push_back({widget, 0}); }
    void Unwatch() { m_watched.clear(); }
    // Runs the event loop until every watched widget has painted since the last call,
    // or `seconds` passed; false on the timeout.
    bool WaitForPaints(double seconds)
    {
        QElapsedTimer timer;
        timer.start();
        for (;;)
        {
            processEvents(QEventLoop::AllEvents);
            if (std::all_of(m_watched.begin(), m_watched.end(), [](const Watched& w) { return w.paints > 0; }))
                break;
            if (timer.elapsed() > seconds * 1000)
                return false;
        }
        for (Watched& w : m_watched)
            w.paints = 0;
        return true;
    }
    // True when every watched widget painted since the last call.
    bool Painted()
    {
        const bool all =
            std::all_of(m_watched.begin(), m_watched.end(), [](const Watched& w) { return w.paints > 0; });
        for (Watched& w : m_watched)
            w.paints = 0;
        return all;
    }

private:
    struct Watched
    {
        QWidget* widget;
        int paints;
    };
    std::vector<Watched> m_watched;
};

struct Options
{
    uint64_t entries = 1000000;
    int runs = 3;
    std::string dir;
};

[[noreturn]] void Usage(int status)
{
    std::fprintf(status ? stderr : stdout,
                 "usage: qv_gui_bench [--entries N] [--runs N] [--dir DIR]\n"
                 "  --entries  time entries of the generated document (default 1000000)\n"
                 "  --runs     timed runs of each step; the best is shown, the median in parentheses\n"
                 "  --dir      where the document is written (default $TMPDIR or /tmp)\n");
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
        if (arg == "--entries")
        {
            char* end = nullptr;
            const std::string v = value();
            o.entries = std::strtoull(v.c_str(), &end, 10);
            if (v.empty() || *end || o.entries < 1000)
                Usage(2);
        }
        else if (arg == "--runs")
        {
            o.runs = std::atoi(value().c_str());
            if (o.runs <= 0)
                Usage(2);
        }
        else if (arg == "--dir")
            o.dir = value();
        else if (arg == "--help" || arg == "-h")
            Usage(0);
        else
            Usage(2);
    }
    return o;
}

[[noreturn]] void Fail(const std::string& what)
{
    std::fprintf(stderr, "qv_gui_bench: %s\n", what.c_str());
    std::exit(1);
}

// The same scale as qv_bench: about fifteen time entries a working day.
cli::SyntheticOptions ScaleFor(uint64_t entries)
{
    cli::SyntheticOptions s;
    s.seed = 20240611;
    s.years = std::max(1, int(std::lround(double(entries) / (15 * kWorkingDaysPerYear))));
    s.timeEntriesPerDay = std::max(1, int(std::lround(double(entries) / (s.years * kWorkingDaysPerYear))));
    return s;
}

// Gives the busiest task exactly `count` time entries, taking them from the others;
// answers its id.
uint32_t MakeBusyTask(CTimeKeeperDoc& doc, size_t count)
{
    std::lock_guard lock(doc.GetLock());
    CTask* busiest = nullptr;
    for (const auto& [id, task] : doc.m_tasks)
        if (!busiest || task->m_timeEntries.size() > busiest->m_timeEntries.size())
            busiest = task.get();
    for (const auto& [id, task] : doc.m_tasks)
    {
        if (busiest->m_timeEntries.size() >= count)
            break;
        if (task.get() == busiest)
            continue;
        const std::vector<CTimeEntry*> entries = task->m_timeEntries;
        for (CTimeEntry* entry : entries)
        {
            if (busiest->m_timeEntries.size() >= count)
                break;
            doc.ChangeEntryTask(entry, busiest);
        }
    }
    while (busiest->m_timeEntries.size() > count)
    {
        // Too many of its own: hand the surplus to its parent (or any other task).
        CTask* other = doc.GetTask(busiest->m_parentId);
        if (other == nullptr || other == busiest)
            other = doc.GetRootTask();
        doc.ChangeEntryTask(busiest->m_timeEntries.back(), other);
    }
    return busiest->m_id;
}

// Paints what the last step marked for painting, at once: left to the event loop, the
// platform would hold the paint back for its next frame, which is no work of ours.
void PaintNow(QWidget& window)
{
    QCoreApplication::sendPostedEvents();
    QEvent request(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(window.windowHandle(), &request);
}

// The working days of the first weeks of the document, for the day switches.
std::vector<QDate> WorkingDays(const QDate& from, int count)
{
    std::vector<QDate> days;
    for (QDate d = from; int(days.size()) < count; d = d.addDays(1))
        if (d.dayOfWeek() <= 5)
            days.push_back(d);
    return days;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const Options o = ParseOptions(argc, argv);
    BenchApplication application(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Quorvane Time & Expense"));

    bench::ScratchDir dir(o.dir);
    const std::string path = dir.File("gui-bench.qvx");
    const cli::SyntheticOptions scale = ScaleFor(o.entries);
    QuietPrompter prompter;
    uint32_t busyTask = 0;
    size_t entryCount = 0;
    {
        std::fprintf(stderr, "generating %d years at %d entries a day...\n", scale.years, scale.timeEntriesPerDay);
        CTimeKeeperDoc doc;
        cli::MakeSyntheticDocument(doc, scale);
        busyTask = MakeBusyTask(doc, kTaskViewEntries);
        entryCount = doc.CountTimeEntries();
        if (!doc.OnSaveDocument(path, prompter))
            Fail("cannot save the document: " + prompter.last);
        doc.CloseHeldFile();
    }

    // The program's day: a Wednesday in the first year of the document.
    const QDate today(scale.firstYear, 6, 14);
    platform::FixedClock clock(platform::LocalTime{today.year(), today.month(), today.day(), 10, 0, 0});
    const std::vector<QDate> days = WorkingDays(QDate(scale.firstYear, 6, 5), 20);

    Timings load, start, daySwitch, taskView;
    std::fprintf(stderr, "timing %d runs...\n", o.runs);
    for (int run = 0; run < o.runs; ++run)
    {
        // The load alone, as the program does it, to tell it apart from the views' part.
        {
            CTimeKeeperDoc doc;
            Stopwatch watch;
            if (!doc.OnOpenDocument(path, prompter))
                Fail("cannot open the document: " + prompter.last);
            load.seconds.push_back(watch.Seconds());
            load.cpu.push_back(watch.CpuSeconds());
            doc.CloseHeldFile();
        }

        // Start: the main window is built and shown, then the file opens in it, as at a
        // start with the file on the command line; done when its panes have painted.
        platform::SettingsStore store;
        CTimeKeeperApp app(store, clock, platform::LocaleInfo::UnitedStates());
        app.LoadSettings();
        app.SetTaskViewType(0);
        CTimeKeeperDoc doc;
        Stopwatch startWatch;
        auto frame = std::make_unique<CMainFrame>(app, doc, prompter);
        frame->resize(1200, 800);
        frame->show();
        frame->StartUp(QString::fromStdString(path));
        application.Watch(frame->TaskView()->viewport());
        application.Watch(frame->SheetList()->List()->viewport());
        application.Watch(frame->TimeSheet());
        if (!application.WaitForPaints(30))
            Fail("the main window did not paint");
        start.seconds.push_back(startWatch.Seconds());
        start.cpu.push_back(startWatch.CpuSeconds());
        if (doc.GetRootTask() == nullptr || doc.CountTimeEntries() != entryCount)
            Fail("the document did not open in the window: " + prompter.last);

        // Another day: the lists refill, the calendar moves its selection and marks,
        // and the window paints what changed.
        application.Unwatch();
        application.Watch(frame->SheetList()->List()->viewport());
        frame->TimeSheet()->SelectDate(days.front());
        PaintNow(*frame);
        application.Painted();
        for (size_t i = 1; i < days.size(); ++i)
        {
            Stopwatch watch;
            frame->TimeSheet()->SelectDate(days[i]);
            PaintNow(*frame);
            daySwitch.seconds.push_back(watch.Seconds());
            daySwitch.cpu.push_back(watch.CpuSeconds());
            if (!application.Painted())
                Fail("the entry list did not paint after a day switch");
            if (frame->SheetList()->RowCount() == 0)
                Fail("a working day showed no entries");
        }

        // Task view on the task with 10,000 entries.
        frame->TaskView()->SelectTask(busyTask);
        PaintNow(*frame);
        application.Painted();
        {
            Stopwatch watch;
            frame->SetViewType(1);
            PaintNow(*frame);
            taskView.seconds.push_back(watch.Seconds());
            taskView.cpu.push_back(watch.CpuSeconds());
            if (!application.Painted())
                Fail("the entry list did not paint in Task view");
        }
        if (size_t(frame->SheetList()->RowCount()) != kTaskViewEntries)
            Fail("Task view listed " + std::to_string(frame->SheetList()->RowCount()) + " rows, not " +
                 std::to_string(kTaskViewEntries));
        frame->SetViewType(0);
        application.Unwatch();
        frame->close();
        frame.reset();
        doc.CloseHeldFile();
    }

    // The window's own part of the start: the best start less the best load. (Pairing
    // the runs one by one would carry the noise of a shared machine into a difference.)
    Timings paintAfterLoad;
    paintAfterLoad.seconds.push_back(start.Best() - load.Best());
    paintAfterLoad.cpu.push_back(start.BestCpu() - load.BestCpu());

    std::printf("Desktop program, offscreen, %s time entries (%d years), seconds: best (median)\n\n",
                bench::FormatCount(entryCount).c_str(), scale.years);
    bench::Table table({"step", "wall", "cpu", "target", ""});
    auto row = [&](const char* name, const Timings& t, double target) {
        table.AddRow({name, FormatTimings(t), FormatSeconds(t.BestCpu()), target > 0 ? FormatSeconds(target) : "",
                      target > 0 ? (t.Best() <= target ? "ok" : "MISSED") : ""});
    };
    row("document load (no window)", load, 0);
    row("start to first painted window", start, 0);
    row("  of which after the load", paintAfterLoad, kFirstPaintAfterLoadTarget);
    row("another day (Date view)", daySwitch, kDaySwitchTarget);
    row("Task view, 10,000 entries", taskView, kTaskViewTarget);
    std::printf("%s\n", table.Format().c_str());
    return 0;
}
