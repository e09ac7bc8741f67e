#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/demodocument.h"
#include "cli/docsession.h"
#include "cli/documentdump.h"
#include "cli/safefile.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <iostream>

namespace cli
{

namespace
{
bool Exists(const std::string& path)
{
    return FileExists(path);
}

int New(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(1, 1, {"employee", "force"});
    const std::string path = args.At(0, "FILE");
    const auto employee = args.Option("employee");
    if (!employee || employee->find_first_not_of(" \t") == std::string::npos)
        throw UsageError("--employee NAME is required (the name of the top task)");
    if (Exists(path) && !args.Flag("force"))
        throw CommandError("'" + path + "' already exists (use --force to replace it)");

    DocSession session(ctx.prompter);
    session.Doc().NewDocument(*employee);
    session.SaveAs(path);
    std::cout << "Created " << path << " for " << *employee << "\n";
    return 0;
}

std::string Summary(const CTimeKeeperDoc& doc)
{
    return "version " + std::to_string(doc.m_fileVersion) + ", " +
           std::to_string(doc.m_tasks.size()) + " tasks, " + std::to_string(doc.m_days.size()) +
           " days, " + std::to_string(doc.CountTimeEntries()) + " time entries, " +
           std::to_string(doc.CountExpenseEntries()) + " expense entries, " +
           std::to_string(doc.CountToDoEntries()) + " to-do entries, " +
           std::to_string(doc.m_reports.size()) + " reports";
}

int Check(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    const std::string path = args.At(0, "FILE");
    // Reading converts an older layout in memory only, so there is nothing to ask.
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    DocSession session(reader);
    session.OpenForReading(path);
    std::cout << path << ": " << Summary(session.Doc()) << "\n";
    return 0;
}

int Convert(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(2, 2, {"force"});
    const std::string in = args.At(0, "FILE");
    const std::string out = args.At(1, "OUT");
    if (Exists(out) && !args.Flag("force"))
        throw CommandError("'" + out + "' already exists (use --force to replace it)");
    DocSession session(ctx.prompter);
    session.OpenForReading(in);
    const uint32_t from = session.Doc().m_fileVersion;
    session.SaveAs(out);
    std::cout << "Converted " << in << " (version " << from << ") to " << out << " (version "
              << CTimeKeeperDoc::kCurrentVersion << ")\n";
    return 0;
}

int Dump(Context& ctx)
{
    Args args(ctx.argv, {"json"});
    args.Expect(1, 1, {"json"});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    DocSession session(reader);
    session.OpenForReading(args.At(0, "FILE"));
    std::cout << (args.Flag("json") ? DumpJson(session.Doc()) : DumpOutline(session.Doc()));
    return 0;
}

struct ArchiveCounts
{
    size_t time = 0;
    size_t expenses = 0;
    size_t todos = 0;
};

// What an archive of `taskId` over [from, to] holds (a null end is open).
ArchiveCounts CountArchived(const CTimeKeeperDoc& doc, const CDateTime& from, const CDateTime& to,
                            uint32_t taskId)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    const bool all = taskId == CTimeKeeperDoc::kRootTaskId;
    const std::unordered_set<uint32_t> tasks = doc.GetSubtreeIds({taskId});
    auto selected = [&](const CEntry& e) { return all || tasks.count(e.m_taskId) != 0; };
    ArchiveCounts counts;
    for (const auto& [key, day] : doc.m_days)
    {
        if ((from.IsValid() && day->GetDate() < from.DatePart()) ||
            (to.IsValid() && day->GetDate() > to.DatePart()))
            continue;
        for (const auto& e : day->TimeEntries())
            counts.time += selected(*e);
        for (const auto& e : day->ExpenseEntries())
            counts.expenses += selected(*e);
        for (const auto& e : day->ToDoEntries())
            counts.todos += selected(*e);
    }
    if (!to.IsValid())
        for (const auto& e : doc.m_todoList)
            counts.todos += selected(*e);
    return counts;
}

int Archive(Context& ctx)
{
    Args args(ctx.argv, {"delete", "force"});
    args.Expect(1, 1, {"task", "from", "to", "delete", "out", "force"});
    const std::string path = args.At(0, "FILE");
    const auto taskSpec = args.Option("task");
    const auto out = args.Option("out");
    if (!taskSpec)
        throw UsageError("--task TASK is required (the top task archives every task)");
    if (!out)
        throw UsageError("--out ARCHIVE (the archive file to write) is required");
    const CDateTime from =
        args.Option("from") ? ParseDate(*args.Option("from"), "--from") : CDateTime::Null();
    const CDateTime to =
        args.Option("to") ? ParseDate(*args.Option("to"), "--to") : CDateTime::Null();
    if (from.IsValid() && to.IsValid() && from > to)
        Refuse(40017);
    if (SameFile(path, *out))
        throw CommandError("the archive cannot be the document itself");
    if (!args.Flag("force") && FileExists(*out))
        throw CommandError("'" + *out + "' already exists (use --force to replace it)");

    const bool remove = args.Flag("delete");
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(remove ? ctx : readCtx, path,
                     remove ? CommandSession::Mode::change : CommandSession::Mode::read);
    const CTask* task = FindTask(s.Doc(), *taskSpec);
    const ArchiveCounts counts = CountArchived(s.Doc(), from, to, task->m_id);
    const std::vector<uint8_t> bytes = s.Doc().WriteSelection(from, to, task->m_id);
    WriteNewFile(*out, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                 args.Flag("force"));
    std::cout << "Archived " << counts.time << " time, " << counts.expenses << " expense and "
              << counts.todos << " to-do entries of " << s.TaskPath(task) << " to " << *out << "\n";
    if (remove)
    {
        s.Doc().DeleteArchivedEntries(from, to, task->m_id);
        s.Save();
        std::cout << "Deleted them from " << path << "\n";
    }
    return 0;
}

int Demo(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(1, 1, {"force", "years", "seed", "employee"});
    const std::string path = args.At(0, "FILE");
    if (Exists(path) && !args.Flag("force"))
        throw CommandError("'" + path + "' already exists (use --force to replace it)");
    AppContext app;
    DocSession session(ctx.prompter);
    if (auto years = args.Option("years"))
    {
        SyntheticOptions options;
        options.years = ParseInt(*years, "--years");
        if (options.years < 1 || options.years > 300)
            throw UsageError("--years must lie between 1 and 300");
        if (auto seed = args.Option("seed"))
            options.seed = uint32_t(ParseInt(*seed, "--seed"));
        options.firstYear = std::max(1900, app.App().Today().GetYear() - options.years);
        if (options.firstYear + options.years > 2300)
            options.firstYear = 2300 - options.years;
        MakeSyntheticDocument(session.Doc(), options);
    }
    else
    {
        if (args.Option("seed"))
            throw UsageError("--seed goes with --years");
        MakeDemoDocument(session.Doc(), app.App().Today(),
                         args.Option("employee").value_or("Robin Calder"));
    }
    session.SaveAs(path);
    std::cout << "Created " << path << " (" << session.Doc().m_tasks.size() << " tasks, "
              << session.Doc().CountTimeEntries() << " time entries, "
              << session.Doc().CountExpenseEntries() << " expense entries)\n";
    return 0;
}
} // namespace

void RegisterFileCommands(CommandTable& table)
{
    table.Add({"new", "FILE --employee NAME [--force]",
               "create a document with the defaults of a new file", New});
    table.Add({"check", "FILE", "load a document and print its version and counts", Check});
    table.Add({"convert", "FILE OUT [--force]",
               "read a document of an older layout and write it in the current one", Convert});
    table.Add({"dump", "[--json] FILE", "print every record of a document", Dump});
    table.Add(
        {"archive", "FILE --task TASK [--from DATE] [--to DATE] [--delete] --out ARCHIVE [--force]",
         "write the entries of a task and a date range to an archive document (and delete them)",
         Archive});
    table.Add({"demo", "FILE [--employee NAME] [--years N [--seed S]] [--force]",
               "create a demo document with a few weeks of work (or N years at scale)", Demo});
}

} // namespace cli
