#include "cli/appcontext.h"
#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/documenthost.h"
#include "cli/entryrows.h"
#include "cli/safefile.h"
#include "interchange/csvreader.h"
#include "interchange/icalreader.h"
#include "interchange/icalwriter.h"
#include "interchange/importapply.h"
#include "interchange/importplanner.h"
#include "interchange/timewarriorreader.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>

namespace cli
{

namespace
{
using interchange::CImportPlan;

// At most this many places are listed for one reason; the rest are counted.
constexpr size_t kListedPlaces = 10;

std::string ReadSource(const std::string& path)
{
    if (path == "-")
    {
        if (CurrentHost())
            throw CommandError("standard input cannot be handed to the desktop program: give "
                               "the source as a file");
        return std::string(std::istreambuf_iterator<char>(std::cin), {});
    }
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw CommandError("cannot open '" + path + "': " + std::strerror(errno));
    std::string bytes((std::istreambuf_iterator<char>(in)), {});
    if (in.bad())
        throw CommandError("cannot read '" + path + "': " + std::strerror(errno));
    return bytes;
}

std::string Hours(int64_t minutes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02d", static_cast<long long>(minutes / 60),
                  int(minutes % 60));
    return text;
}

std::string Count(size_t n, const char* one, const char* many)
{
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

std::string Places(const std::vector<std::string>& wheres)
{
    std::string text;
    for (size_t i = 0; i < wheres.size() && i < kListedPlaces; ++i)
        text += (i ? ", " : "") + wheres[i];
    if (wheres.size() > kListedPlaces)
        text += " and " + std::to_string(wheres.size() - kListedPlaces) + " more";
    return text;
}

// What the plan makes, task by task, and what it skips.
void PrintPlan(const CImportPlan& plan, const CTimeKeeperDoc& doc, bool dryRun)
{
    for (const std::string& name : plan.Activities())
        std::cout << "  new activity " << name << "\n";
    for (const CImportPlan::NewTask& t : plan.Tasks())
        std::cout << "  new task " << t.path << "\n";
    struct PerTask
    {
        size_t entries = 0;
        int64_t minutes = 0;
        size_t todos = 0;
        bool running = false;
    };
    std::vector<std::string> order;
    std::map<std::string, PerTask> perTask;
    auto at = [&](const CImportPlan::TaskRef& ref) -> PerTask&
    {
        const std::string path = plan.TaskPath(ref, doc);
        auto [it, added] = perTask.emplace(path, PerTask{});
        if (added)
            order.push_back(path);
        return it->second;
    };
    for (const CImportPlan::TimeItem& t : plan.Times())
    {
        PerTask& p = at(t.task);
        ++p.entries;
        if (t.end.IsNull())
            p.running = true;
        else
            p.minutes += t.end.MinutesOfDay() - t.start.MinutesOfDay();
    }
    for (const CImportPlan::ToDoItem& t : plan.ToDos())
        ++at(t.task).todos;
    for (const std::string& path : order)
    {
        const PerTask& p = perTask[path];
        std::cout << "  " << path << ":";
        if (p.entries)
            std::cout << " " << Count(p.entries, "time entry", "time entries") << " ("
                      << Hours(p.minutes) << (p.running ? " and the running one" : "") << ")";
        if (p.todos)
            std::cout << (p.entries ? "," : "") << " " << Count(p.todos, "to-do", "to-dos");
        std::cout << "\n";
    }
    if (plan.SkippedCount() > 0)
    {
        std::cout << (dryRun ? "Would skip " : "Skipped ") << plan.SkippedCount() << ":\n";
        for (const CImportPlan::SkipGroup& g : plan.Skipped())
        {
            std::cout << "  " << g.wheres.size() << " " << g.reason << ": " << Places(g.wheres);
            if (g.reason == interchange::kStillRunningReason)
                std::cout << " (--open start makes the latest the running timer)";
            std::cout << "\n";
        }
    }
}

std::string OverlapList(const CImportPlan& plan)
{
    std::vector<std::string> items;
    for (const CImportPlan::TimeItem& t : plan.Times())
        if (!t.overlaps.empty())
            items.push_back(t.where + ": " + t.date.Format("%Y-%m-%d") + " " + t.start.ToText() +
                            "-" + (t.end.IsNull() ? std::string("running") : t.end.ToText()) +
                            " overlaps " + t.overlaps);
    std::string text;
    for (size_t i = 0; i < items.size() && i < kListedPlaces; ++i)
        text += (i ? "; " : "") + items[i];
    if (items.size() > kListedPlaces)
        text += "; and " + std::to_string(items.size() - kListedPlaces) + " more";
    return text;
}

interchange::ImportSource ReadFrom(const std::string& format, const std::string& bytes,
                                   const Args& args, CommandSession& s)
{
    if (format == "timewarrior")
    {
        interchange::TimewarriorOptions options;
        options.tagsAsPath = args.Flag("tags-as-path");
        return interchange::ReadTimewarrior(bytes, options);
    }
    if (format == "ical")
    {
        interchange::ICalOptions options;
        options.now = s.App().Now();
        if (auto from = args.Option("task-from"))
        {
            if (*from != "summary" && *from != "categories")
                throw UsageError("--task-from must be summary or categories, not '" + *from + "'");
            options.taskFromCategories = *from == "categories";
        }
        return interchange::ReadICalendar(bytes, options);
    }
    interchange::CsvOptions options;
    options.map = args.Option("map").value_or("");
    options.datePicture = args.Option("date-format").value_or("");
    options.localeDatePicture = s.App().GetLocale().shortDatePicture;
    if (auto d = args.Option("delimiter"))
    {
        const std::string text = *d == "tab" || *d == "\\t" ? std::string("\t") : *d;
        if (text.size() != 1 || text == "\"" || text == "\n" || text == "\r")
            throw UsageError("--delimiter must be one character (or 'tab'), not '" + *d + "'");
        options.delimiter = text[0];
    }
    if (auto e = args.Option("encoding"))
    {
        try
        {
            options.encoding = interchange::ParseTextEncoding(*e);
        }
        catch (const std::invalid_argument& err)
        {
            throw UsageError(std::string("--encoding: ") + err.what());
        }
    }
    if (auto t = args.Option("day-start"))
        options.dayStartMinutes = ParseTime(*t, "--day-start").MinutesOfDay() % 1440;
    return interchange::ReadCsv(bytes, options);
}

// Options that only one source format takes.
const std::map<std::string, std::vector<std::string>>& FormatOptions()
{
    static const std::map<std::string, std::vector<std::string>> options = {
        {"timewarrior", {"tags-as-path", "open"}},
        {"ical", {"task-from", "open"}},
        {"csv", {"map", "date-format", "delimiter", "encoding", "day-start"}},
    };
    return options;
}

int Import(Context& ctx)
{
    Args args(ctx.argv, {"dry-run", "tags-as-path"});
    std::vector<std::string> known = {"from", "under", "dry-run", "on-conflict"};
    for (const auto& [format, options] : FormatOptions())
        known.insert(known.end(), options.begin(), options.end());
    args.Expect(2, 2, known);
    const auto format = args.Option("from");
    if (!format || !FormatOptions().count(*format))
        throw UsageError("--from must be one of timewarrior, ical, csv" +
                         (format ? "; not '" + *format + "'" : std::string()));
    const std::vector<std::string>& own = FormatOptions().at(*format);
    for (const auto& [other, options] : FormatOptions())
        for (const std::string& o : options)
            if ((args.Option(o) || args.Flag(o)) && std::find(own.begin(), own.end(), o) == own.end())
                throw UsageError("--" + o + " does not apply to --from " + *format);
    bool openStart = false;
    if (auto open = args.Option("open"))
    {
        if (*open != "start" && *open != "skip")
            throw UsageError("--open must be start or skip, not '" + *open + "'");
        openStart = *open == "start";
    }
    ConflictPolicy policy = ConflictPolicy::ask;
    if (auto p = args.Option("on-conflict"))
        policy = ParseConflictPolicy(*p);
    const bool dryRun = args.Flag("dry-run");
    const std::string sourcePath = args.At(1, "SOURCE");

    CommandSession s(ctx, args.At(0, "FILE"),
                     dryRun ? CommandSession::Mode::read : CommandSession::Mode::change, policy);
    CTimeKeeperDoc& doc = s.Doc();
    interchange::ImportOptions options;
    options.underTaskId = FindTask(doc, args.Option("under").value_or("#1"))->m_id;
    options.openStart = openStart;
    options.now = s.App().Now();
    const std::string bytes = ReadSource(sourcePath);
    const std::string shownSource = sourcePath == "-" ? "standard input" : "'" + sourcePath + "'";
    interchange::ImportSource source;
    try
    {
        source = ReadFrom(*format, bytes, args, s);
    }
    catch (const interchange::CImportError& e)
    {
        throw CommandError(shownSource + ": " + e.what() + "; nothing was imported");
    }
    const CImportPlan plan = interchange::PlanImport(doc, source, options);

    if (dryRun)
    {
        std::cout << "Reading " << shownSource << " as " << plan.Format() << ":\n";
        for (const std::string& line : plan.Details())
            std::cout << "  " << line << "\n";
        std::cout << "Would make " << Count(plan.Tasks().size(), "task", "tasks") << ", "
                  << Count(plan.Times().size(), "time entry", "time entries") << ", "
                  << Count(plan.ToDos().size(), "to-do", "to-dos")
                  << (plan.Activities().empty()
                          ? std::string()
                          : ", " + Count(plan.Activities().size(), "activity", "activities"))
                  << (plan.IsEmpty() ? "" : ":") << "\n";
        PrintPlan(plan, doc, true);
        if (plan.OverlapCount() > 0)
            std::cout << Count(plan.OverlapCount(), "new entry overlaps", "new entries overlap")
                      << " others, which --on-conflict decides (adjust-others, adjust-this, "
                         "fail): "
                      << OverlapList(plan) << "\n";
        std::cout << "Nothing was changed (--dry-run)\n";
        return 0;
    }

    interchange::OverlapChoice choice = interchange::OverlapChoice::adjustOthers;
    if (plan.OverlapCount() > 0)
    {
        auto refuse = [&]
        {
            throw CommandError(Count(plan.OverlapCount(), "imported entry overlaps",
                                     "imported entries overlap") +
                               " others (" + OverlapList(plan) +
                               "); nothing was imported (--on-conflict adjust-others or "
                               "adjust-this resolves it)");
        };
        if (policy == ConflictPolicy::fail)
            refuse();
        if (policy == ConflictPolicy::ask && CanAskOnTerminal())
            std::cerr << Count(plan.OverlapCount(), "imported entry overlaps",
                               "imported entries overlap")
                      << " others: " << OverlapList(plan) << "\n";
        const int answer = s.Ui().ChooseConflictResolution();
        if (answer != 0 && answer != 1)
            refuse();
        choice = interchange::OverlapChoice(answer);
    }
    const interchange::ImportOutcome outcome = interchange::ApplyImport(doc, s.Timer(), plan, choice);
    s.Save();
    std::cout << "Imported from " << shownSource << " (" << plan.Format() << "): "
              << Count(outcome.tasks, "task", "tasks") << ", "
              << Count(outcome.entries, "time entry", "time entries") << ", "
              << Count(outcome.todos, "to-do", "to-dos")
              << (outcome.activities
                      ? ", " + Count(outcome.activities, "activity", "activities")
                      : std::string())
              << "\n";
    PrintPlan(plan, doc, false);
    if (outcome.adjusted > 0)
        std::cout << Count(outcome.adjusted, "new entry overlapped", "new entries overlapped")
                  << " others: "
                  << (choice == interchange::OverlapChoice::adjustOthers
                          ? "the others were adjusted"
                          : "the new ones were fitted around them")
                  << (outcome.dropped ? " (" + std::to_string(outcome.dropped) +
                                            " lay within others and were not added)"
                                      : std::string())
                  << "\n";
    if (outcome.running)
        std::cout << "The timer runs on the entry that is still running in the source\n";
    return 0;
}

int ExportICal(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(2, 2, {"from", "to", "task", "force"});
    interchange::ICalExportOptions options;
    if (auto f = args.Option("from"))
        options.from = ParseDate(*f, "--from");
    if (auto t = args.Option("to"))
        options.to = ParseDate(*t, "--to");
    if (!options.from.IsNull() && !options.to.IsNull() && options.to < options.from)
        throw UsageError("--to must not lie before --from");
    const std::string out = args.At(1, "OUT");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::read);
    if (auto t = args.Option("task"))
        options.taskId = FindTask(s.Doc(), *t)->m_id;
    options.now = s.App().Now();
    if (out != "-" && SameFile(out, s.Path()))
        throw CommandError("OUT must not be the document itself");
    const interchange::ICalExport result = interchange::WriteICalendar(s.Doc(), options);
    if (out == "-")
        std::cout << result.text;
    else
        WriteNewFile(out, result.text, args.Flag("force"));
    std::ostream& report = out == "-" ? std::cerr : std::cout;
    report << "Wrote " << Count(result.events, "time entry", "time entries") << " and "
           << Count(result.todos, "to-do", "to-dos") << (out == "-" ? "" : " to " + out)
           << (result.runningSkipped ? " (the running entry has no end yet and was left out)" : "")
           << "\n";
    if (result.emptySkipped)
        report << "Left out " << Count(result.emptySkipped, "time entry", "time entries")
               << " of no length\n";
    return 0;
}
} // namespace

void RegisterInterchangeCommands(CommandTable& table)
{
    table.Add(
        {"import",
         "FILE SOURCE --from timewarrior|ical|csv [--under TASK] [--dry-run] "
         "[--on-conflict adjust-others|adjust-this|fail] [--tags-as-path] [--open start|skip] "
         "[--task-from summary|categories] [--map \"COLUMN=FIELD,...\"] [--date-format PICTURE] "
         "[--delimiter C] [--encoding utf-8|windows-1252] [--day-start TIME]",
         "import time entries, tasks and to-dos from another tool's file (SOURCE - reads "
         "standard input)",
         Import,
         "--from timewarrior: the JSON of `timew export`. The first tag names the task under\n"
         "  --under (default: the top task); --tags-as-path makes all tags a path. The\n"
         "  annotation is the note. An interval still running is skipped unless --open start\n"
         "  makes it the running timer.\n"
         "--from ical: an iCalendar file. A time tracker's tasks (VTODOs related to a parent)\n"
         "  keep their tree and its events go to them; any other calendar's events go to the\n"
         "  task their summary names (--task-from categories: their first category), with the\n"
         "  description as the note, and its VTODOs become to-dos.\n"
         "--from csv: a header row, then one entry a row. Common trackers' detailed exports\n"
         "  are recognised by their headers; --map \"Project=task,Start date=date,...\" names\n"
         "  the columns otherwise. FIELDs: task (several make a path), date, start, end,\n"
         "  end-date, duration, note, activity. Dates are ISO or the locale's, else\n"
         "  --date-format (%Y %y %m %d %e %b %B). Rows with a date and a duration but no\n"
         "  start follow each other from --day-start (09:00).\n"
         "Stretches over midnight become one entry per day, to the nearest minute. An entry on\n"
         "the same task, date, start, end and note as one in the document is not made again.\n"
         "Overlaps go by --on-conflict as in time add. --dry-run shows what would be made."});
    table.Add({"export ical", "FILE OUT [--from DATE] [--to DATE] [--task TASK] [--force]",
               "write time entries and to-dos as an iCalendar file (OUT - : standard output)",
               ExportICal,
               "Time entries become events (summary: the task path; description: the note;\n"
               "category: the activity), to-dos become VTODOs. Every item keeps its UID from one\n"
               "export to the next, so a calendar that reads the file again updates it."});
}

} // namespace cli
