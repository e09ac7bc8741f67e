#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/entryrows.h"
#include "cli/entrytable.h"
#include "model/amountlimits.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"

#include <algorithm>
#include <cctype>
#include <iostream>

namespace cli
{

namespace
{
constexpr unsigned kMsgEndBeforeStart = 40001;
constexpr unsigned kMsgEmptyToDo = 40014;
constexpr unsigned kMsgImportedToDo = 40028;
constexpr unsigned kMsgAddToSummary = 40027;
constexpr unsigned kMsgMoveToSummary = 40033;

EntryKind ParseKind(const std::string& text)
{
    if (text == "time")
        return EntryKind::time;
    if (text == "expense")
        return EntryKind::expense;
    if (text == "todo")
        return EntryKind::todo;
    throw UsageError("--kind must be one of time, expense, todo; not '" + text + "'");
}

// Asks the delete question of the page; false when the answer is no.
bool ConfirmDelete(CommandSession& s, EntryKind kind, size_t count)
{
    unsigned id = 0;
    switch (kind)
    {
    case EntryKind::time:
        id = count == 1 ? 41008 : 41019;
        break;
    case EntryKind::expense:
        id = count == 1 ? 41009 : 41020;
        break;
    case EntryKind::todo:
        id = count == 1 ? 41017 : 41021;
        break;
    }
    if (s.Prompter().AskYesNo(platform::LoadString(id), platform::Icon::question) ==
        platform::Answer::yes)
        return true;
    if (s.Prompter().Unanswered())
        throw CommandError("nothing deleted: the question was not answered (run again with --yes)");
    return false;
}

int TimeAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date", "start", "end", "activity", "note", "on-conflict"});
    ConflictPolicy policy = ConflictPolicy::ask;
    if (auto p = args.Option("on-conflict"))
        policy = ParseConflictPolicy(*p);
    const CDateTime date = RequiredDate(args, "date");
    const auto startText = args.Option("start");
    const auto endText = args.Option("end");
    if (!startText || !endText)
        throw UsageError("--start TIME and --end TIME are required");
    const CTinyTime start = ParseTime(*startText, "--start");
    CTinyTime end = ParseTime(*endText, "--end");
    // An end of 00:00 is midnight at the end of the entry's day.
    if (end.MinutesOfDay() == 0)
        end = CTinyTime(24, 0);

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change, policy);
    CTimeKeeperDoc& doc = s.Doc();
    CTask* task = FindTask(doc, args.At(1, "TASK"));
    RefuseSummaryTask(task, kMsgAddToSummary);
    if (end.MinutesOfDay() <= start.MinutesOfDay())
        Refuse(kMsgEndBeforeStart);

    auto pending = std::make_unique<CTimeEntry>();
    pending->m_taskId = task->m_id;
    pending->m_start = start;
    pending->m_end = end;
    if (auto a = args.Option("activity"))
        pending->m_activityId = FindRecord(doc.m_activities, *a, "activity")->m_id;
    if (auto n = args.Option("note"))
        pending->m_note = *n;
    const std::string span = Span(*pending);

    CDay* day = nullptr;
    std::vector<std::string> conflicts;
    std::vector<const CTimeEntry*> before;
    {
        std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
        day = doc.GetOrCreateDay(date);
        for (const auto& e : day->TimeEntries())
            before.push_back(e.get());
        pending->m_day = day;
        for (const CTimeEntry* other :
             day->ConflictingEntries(*pending, pending.get(), doc.ConflictNow()))
            conflicts.push_back(Span(*other) + " " + s.TaskPath(other->m_taskId));
    }
    auto refuseConflict = [&]
    {
        std::string list;
        for (const std::string& c : conflicts)
            list += (list.empty() ? "" : ", ") + c;
        throw CommandError(
            "The Time Entry conflicts with another Time Entry (" + list +
            "); nothing was changed (--on-conflict adjust-others or adjust-this resolves it)");
    };
    if (!conflicts.empty() && policy == ConflictPolicy::fail)
        refuseConflict();

    const int resolved = conflicts.empty() ? 0 : s.Timer().ResolveTimeConflict(*day, pending);
    if (resolved == 2)
        refuseConflict();
    // What was stored: the entry as asked, or, when it was fitted around the others, the
    // pieces of it that are left.
    std::vector<std::string> stored;
    {
        std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
        if (resolved == 0 && pending)
        {
            pending->m_day = nullptr;
            const CTimeEntry* filed = doc.FileTimeEntry(day, std::move(pending));
            if (s.Ui().LastChoice() != 1)
                stored.push_back(Span(*filed));
        }
        if (s.Ui().LastChoice() == 1)
            for (const auto& e : day->TimeEntries())
                if (std::find(before.begin(), before.end(), e.get()) == before.end())
                    stored.push_back(Span(*e));
        // What the entry editor does on OK: the task remembers the entry's note and activity.
        if (args.Option("note") || args.Option("activity"))
        {
            task->m_lastNote = args.Option("note").value_or(task->m_lastNote);
            if (auto a = args.Option("activity"))
                task->m_lastActivityId = FindRecord(doc.m_activities, *a, "activity")->m_id;
        }
        doc.RemoveDayIfEmpty(day);
    }
    if (!stored.empty())
        s.Timer().AddRecentTask(task);
    s.Save();
    if (stored.empty())
        std::cout << "The new entry " << span << " lies within other entries of "
                  << date.Format("%Y-%m-%d") << " and was not added\n";
    else if (s.Ui().LastChoice() == 1)
        std::cout << "Added " << JoinTexts(stored) << " on " << date.Format("%Y-%m-%d") << " to "
                  << s.TaskPath(task) << " (" << span << " was fitted around the other entries)\n";
    else
        std::cout << "Added " << JoinTexts(stored) << " on " << date.Format("%Y-%m-%d") << " to "
                  << s.TaskPath(task)
                  << (conflicts.empty() ? "" : " (overlapping entries adjusted)") << "\n";
    return 0;
}

// Deletes the chosen rows of the page of `kind` on one day, as the page's delete does.
int RemoveEntries(Context& ctx, EntryKind kind)
{
    Args args(ctx.argv, {});
    args.Expect(2, 1000, {"date"});
    const CDateTime date = RequiredDate(args, "date");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    const std::vector<CEntry*> rows =
        SelectRows(s, kind, date, {args.Positional().begin() + 1, args.Positional().end()});
    if (!ConfirmDelete(s, kind, rows.size()))
    {
        std::cout << "Nothing deleted\n";
        return 0;
    }
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        CDay* day = s.Doc().GetDay(date);
        for (CEntry* e : rows)
            switch (kind)
            {
            case EntryKind::time:
                s.Doc().UnfileTimeEntry(static_cast<CTimeEntry*>(e));
                break;
            case EntryKind::expense:
                s.Doc().UnfileExpenseEntry(static_cast<CExpenseEntry*>(e));
                break;
            case EntryKind::todo:
                s.Doc().UnfileToDo(static_cast<CToDoEntry*>(e));
                break;
            }
        s.Doc().RemoveDayIfEmpty(day);
    }
    s.Save();
    const bool one = rows.size() == 1;
    const char* noun = kind == EntryKind::time      ? (one ? " time entry" : " time entries")
                       : kind == EntryKind::expense ? (one ? " expense entry" : " expense entries")
                                                    : (one ? " to-do entry" : " to-do entries");
    std::cout << "Deleted " << rows.size() << noun;
    if (kind != EntryKind::todo)
        std::cout << " of " << date.Format("%Y-%m-%d");
    std::cout << "\n";
    return 0;
}

// The --task option of the move commands: the task an entry goes to.
std::string RequiredTargetTask(const Args& args)
{
    const auto to = args.Option("task");
    if (!to)
        throw UsageError("--task TASK (the task to move the entry to) is required");
    return *to;
}

// Moves `entry` to the task `path` names and returns that task; nullptr, after saying so,
// when the entry is there already.
CTask* MoveToTask(CommandSession& s, CEntry& entry, const std::string& path)
{
    CTask* task = FindTask(s.Doc(), path);
    RefuseSummaryTask(task, kMsgMoveToSummary);
    if (entry.m_taskId == task->m_id)
    {
        std::cout << "The entry already belongs to " << s.TaskPath(task) << "\n";
        return nullptr;
    }
    s.Doc().ChangeEntryTask(&entry, task);
    return task;
}

int TimeMove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date", "task"});
    const CDateTime date = RequiredDate(args, "date");
    const std::string to = RequiredTargetTask(args);
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    auto* entry = static_cast<CTimeEntry*>(SelectOneRow(s, EntryKind::time, date, args));
    CTask* task = MoveToTask(s, *entry, to);
    if (!task)
        return 0;
    s.Save();
    std::cout << "Moved " << Span(*entry) << " of " << date.Format("%Y-%m-%d") << " to "
              << s.TaskPath(task) << "\n";
    return 0;
}

int ExpenseAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(
        2, 2,
        {"date", "amount", "distance", "rate", "type", "method", "billable", "note", "number"});
    const CDateTime date = RequiredDate(args, "date");
    const auto typeName = args.Option("type");
    if (!typeName)
        throw UsageError("--type NAME (the expense type) is required");
    bool billable = true;
    if (auto b = args.Option("billable"))
        billable = ParseYesNo(*b, "--billable");
    uint32_t number = 0;
    if (auto n = args.Option("number"))
    {
        const int v = ParseInt(*n, "--number");
        if (v < 0)
            throw UsageError("--number must not be negative");
        number = uint32_t(v);
    }

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTimeKeeperDoc& doc = s.Doc();
    CTask* task = FindTask(doc, args.At(1, "TASK"));
    RefuseSummaryTask(task, kMsgAddToSummary);
    const CExpenseType* type = FindRecord(doc.m_expenseTypes, *typeName, "expense type");

    auto e = std::make_unique<CExpenseEntry>();
    e->m_taskId = task->m_id;
    e->m_date = date;
    e->m_expenseTypeId = type->m_id;
    e->m_billable = billable;
    e->m_number = number;
    if (type->m_id == CExpenseType::kMileageId)
    {
        if (args.Option("amount"))
            throw UsageError(
                "'" + type->m_name +
                "' is the mileage type: give --distance N (and --rate R), not --amount");
        const auto distance = args.Option("distance");
        if (!distance)
            throw UsageError("'" + type->m_name +
                             "' is the mileage type: --distance N is required");
        const int miles = ParseDistance(*distance, "--distance");
        if (miles < 0)
            throw UsageError("--distance must not be negative");
        float rate = doc.m_defaultMileageRate;
        if (auto r = args.Option("rate"))
            rate = float(ParseNonNegative(*r, "--rate"));
        e->m_distance = float(miles);
        e->m_amount = CExpenseEntry::MileageAmount(miles, rate);
        if (!IsStorableAmount(e->m_amount))
            throw UsageError("--distance times --rate must stay below one trillion");
    }
    else
    {
        if (args.Option("distance") || args.Option("rate"))
            throw UsageError("--distance and --rate go with the mileage type (#9) only");
        const auto amount = args.Option("amount");
        if (!amount)
            throw UsageError("--amount X is required");
        e->m_amount = ParseDouble(*amount, "--amount");
    }
    if (auto m = args.Option("method"))
        e->m_paymentMethodId = FindRecord(doc.m_paymentMethods, *m, "payment method")->m_id;
    if (auto n = args.Option("note"))
        e->m_note = *n;
    const double amount = e->m_amount;
    {
        std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
        doc.FileExpenseEntry(doc.GetOrCreateDay(date), std::move(e));
    }
    s.Save();
    std::cout << "Added " << type->m_name << " " << s.App().FormatCurrency(amount) << " on "
              << date.Format("%Y-%m-%d") << " to " << s.TaskPath(task) << "\n";
    return 0;
}

int ExpenseMove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date", "to", "task"});
    const CDateTime date = RequiredDate(args, "date");
    const auto toDate = args.Option("to");
    const auto toTask = args.Option("task");
    if (!toDate && !toTask)
        throw UsageError("give --to DATE (another day) or --task TASK (another task)");
    const CDateTime newDate = toDate ? ParseDate(*toDate, "--to") : date;
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    auto* entry = static_cast<CExpenseEntry*>(SelectOneRow(s, EntryKind::expense, date, args));
    CTask* task = toTask ? FindTask(s.Doc(), *toTask) : nullptr;
    if (task)
        RefuseSummaryTask(task, kMsgMoveToSummary);
    const bool moveDay = !newDate.SameDay(date);
    const bool moveTask = task && task->m_id != entry->m_taskId;
    if (!moveDay && !moveTask)
    {
        std::cout << "Nothing to move: the entry is already there\n";
        return 0;
    }
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        if (moveTask)
            s.Doc().ChangeEntryTask(entry, task);
        if (moveDay)
        {
            CDay* old = s.Doc().GetDay(date);
            s.Doc().MoveExpense(entry, newDate);
            s.Doc().RemoveDayIfEmpty(old);
        }
    }
    s.Save();
    std::cout << "Moved the expense to " << newDate.Format("%Y-%m-%d") << ", "
              << s.TaskPath(entry->m_taskId) << "\n";
    return 0;
}

int ToDoAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {"due", "priority", "note"});
    std::string priority = "1";
    if (auto p = args.Option("priority"))
        priority = ParsePriority(*p);
    CDateTime due = CDateTime::Null();
    if (auto d = args.Option("due"))
        due = ParseDate(*d, "--due");

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTask* task = FindTask(s.Doc(), args.At(1, "TASK"));
    RefuseSummaryTask(task, kMsgAddToSummary);
    const std::string& text = args.At(2, "DESCRIPTION");
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        Refuse(kMsgEmptyToDo);

    auto todo = std::make_unique<CToDoEntry>();
    todo->m_taskId = task->m_id;
    todo->m_description = text.substr(first);
    todo->m_priority = priority;
    todo->m_dueDate = due;
    todo->m_completeDate = CDateTime::Null();
    if (auto n = args.Option("note"))
        todo->m_note = *n;
    const std::string description = todo->m_description;
    s.Doc().AddOutstandingToDo(std::move(todo));
    s.Save();
    std::cout << "Added to-do '" << description << "' to " << s.TaskPath(task) << "\n";
    return 0;
}

// Completes (on --date) or reopens the chosen to-do rows of one listing.
int ToDoCompleteOrReopen(Context& ctx, bool complete)
{
    Args args(ctx.argv, {});
    args.Expect(2, 1000, {"date"});
    const CDateTime date = RequiredDate(args, "date");
    const std::string day = date.Format("%Y-%m-%d");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    const std::vector<CEntry*> rows = SelectRows(
        s, EntryKind::todo, date, {args.Positional().begin() + 1, args.Positional().end()});
    std::vector<std::string> done;
    std::vector<std::string> unchanged;
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        for (CEntry* e : rows)
        {
            auto* todo = static_cast<CToDoEntry*>(e);
            const std::string name = "'" + todo->m_description + "'";
            if (complete ? todo->IsCompleted() && todo->m_completeDate.SameDay(date)
                         : !todo->IsCompleted())
            {
                unchanged.push_back(name);
                continue;
            }
            CDay* old = todo->m_day;
            if (complete)
                s.Doc().CompleteToDo(todo, date);
            else
                s.Doc().ReopenToDo(todo);
            if (old)
                s.Doc().RemoveDayIfEmpty(old);
            done.push_back(name);
        }
    }
    if (!done.empty())
    {
        s.Save();
        std::cout << (complete ? "Completed " : "Reopened ") << JoinTexts(done)
                  << (complete ? " on " + day : std::string()) << "\n";
    }
    if (!unchanged.empty())
        std::cout << JoinTexts(unchanged) << (unchanged.size() == 1 ? " was" : " were")
                  << (complete ? " already completed on " + day : std::string(" not completed"))
                  << "\n";
    return 0;
}

int ToDoMove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date", "task"});
    const CDateTime date = RequiredDate(args, "date");
    const std::string to = RequiredTargetTask(args);
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    auto* todo = static_cast<CToDoEntry*>(SelectOneRow(s, EntryKind::todo, date, args));
    if (todo->m_imported)
        Refuse(kMsgImportedToDo);
    CTask* task = MoveToTask(s, *todo, to);
    if (!task)
        return 0;
    s.Save();
    std::cout << "Moved '" << todo->m_description << "' to " << s.TaskPath(task) << "\n";
    return 0;
}

int Entries(Context& ctx)
{
    Args args(ctx.argv, {"billing"});
    args.Expect(1, 1, {"date", "task", "kind", "billing"});
    const auto dateText = args.Option("date");
    const auto taskText = args.Option("task");
    if (dateText && taskText)
        throw UsageError("give either --date DATE (Date view) or --task TASK (Task view), not both");
    std::vector<EntryKind> kinds = {EntryKind::time, EntryKind::expense, EntryKind::todo};
    if (auto k = args.Option("kind"))
        kinds = {ParseKind(*k)};
    const bool billing = args.Flag("billing");
    if (billing && args.Option("kind") && kinds.front() != EntryKind::time)
        throw UsageError("--billing goes with time entries (--kind time)");
    if (billing)
        kinds = {EntryKind::time};
    CDateTime date = dateText ? ParseDate(*dateText, "--date") : CDateTime::Null();

    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    // Neither: today's Date view, which is what the window opens on.
    if (!dateText && !taskText)
        date = s.App().Today();
    const CTask* task = taskText ? FindTask(s.Doc(), *taskText) : nullptr;
    bool first = true;
    for (EntryKind kind : kinds)
    {
        if (kinds.size() > 1)
            std::cout << (first ? "" : "\n") << PageTitle(kind) << "\n";
        first = false;
        const EntryTable table = BuildEntryTable(s, kind, date, task, billing);
        std::cout << FormatEntryTable(table);
        if (billing)
        {
            const BillingTotals t = SumBilling(s, table);
            std::cout << "Billable: " << s.App().FormatNumber(t.billableHours) << " hours, "
                      << s.App().FormatCurrency(t.billableAmount)
                      << "; not billable: " << s.App().FormatNumber(t.hours - t.billableHours)
                      << " hours, " << s.App().FormatCurrency(t.amount - t.billableAmount) << "\n";
        }
    }
    return 0;
}
} // namespace

void RegisterEntryCommands(CommandTable& table)
{
    table.Add({"time add",
               "FILE TASK --date DATE --start HH:MM --end HH:MM [--activity NAME] [--note TEXT] "
               "[--on-conflict adjust-others|adjust-this|fail]",
               "add a time entry; overlaps are resolved as --on-conflict says (or asked)",
               TimeAdd});
    table.Add({"time rm", "FILE --date DATE N...",
               "delete time entries (rows of qvx entries --date)",
               [](Context& ctx) { return RemoveEntries(ctx, EntryKind::time); }});
    table.Add({"time move", "FILE --date DATE N --task TASK", "give a time entry to another task",
               TimeMove});
    table.Add(
        {"time set",
         "FILE --date DATE N [--task TASK] [--start HH:MM] [--end HH:MM] [--activity "
         "NAME|none] [--note TEXT] [--billable yes|no] [--rate R] [--billing-defaults yes|no] "
         "[--overtime yes|no] [--multiplier M] [--on-conflict adjust-others|adjust-this|fail]",
         "change a time entry as its editor does", TimeSet,
         "N is a row of qvx entries FILE --date DATE --kind time: rows are numbered in the\n"
         "order of the desktop program's list (its sort order), all before anything changes.\n"
         "The checks are the editor's: the end must be later than the start (an end of\n"
         "00:00 is midnight at the end of the day); a running entry keeps its open end and\n"
         "must have started before now. --billable or --rate give the entry billing of its\n"
         "own (starting from what the task and activity gave it); --billing-defaults yes\n"
         "returns it to the task's billing. An overlap with other entries is resolved as\n"
         "--on-conflict says (or asked); refused, nothing changes."});
    table.Add(
        {"expense add",
         "FILE TASK --date DATE (--amount X | --distance N [--rate R]) --type NAME [--method NAME] "
         "[--billable yes|no] [--number N] [--note TEXT]",
         "add an expense entry (the mileage type takes a distance; a negative --amount is a "
         "refund)",
         ExpenseAdd});
    table.Add({"expense rm", "FILE --date DATE N...", "delete expense entries",
               [](Context& ctx) { return RemoveEntries(ctx, EntryKind::expense); }});
    table.Add({"expense move", "FILE --date DATE N (--to DATE | --task TASK)",
               "move an expense entry to another day or task", ExpenseMove});
    table.Add(
        {"expense set",
         "FILE --date DATE N [--task TASK] [--type NAME] [--amount X | --distance N "
         "[--rate R]] [--method NAME|none] [--billable yes|no] [--number N] [--note TEXT]",
         "change an expense entry as its editor does", ExpenseSet,
         "N is a row of qvx entries FILE --date DATE --kind expense: rows are numbered in the\n"
         "order of the desktop program's list (its sort order), all before anything changes.\n"
         "For the mileage type the amount is the distance times the rate, rounded to\n"
         "cents; without --rate the entry's own rate stays (the document's mileage rate\n"
         "for an entry that becomes a mileage entry)."});
    table.Add({"todo add", "FILE TASK DESCRIPTION [--due DATE] [--priority 1-9|A-Z] [--note TEXT]",
               "add an outstanding to-do entry", ToDoAdd});
    table.Add(
        {"todo complete", "FILE --date DATE N...", "complete to-do entries on DATE",
         [](Context& ctx) { return ToDoCompleteOrReopen(ctx, true); },
         "N is a row of qvx entries FILE --date DATE --kind todo: rows are numbered in the\n"
         "order of the desktop program's list (its sort order), all before anything changes.\n"
         "That listing holds the outstanding to-dos and those completed on DATE."});
    table.Add(
        {"todo reopen", "FILE --date DATE N...", "make completed to-do entries outstanding again",
         [](Context& ctx) { return ToDoCompleteOrReopen(ctx, false); },
         "N is a row of qvx entries FILE --date DATE --kind todo: rows are numbered in the\n"
         "order of the desktop program's list (its sort order), all before anything changes.\n"
         "That listing holds the outstanding to-dos and those completed on DATE."});
    table.Add(
        {"todo set",
         "FILE --date DATE N [--task TASK] [--description TEXT] [--priority 1-9|A-Z] "
         "[--due DATE|none] [--note TEXT]",
         "change a to-do entry as its editor does", ToDoSet,
         "N is a row of qvx entries FILE --date DATE --kind todo: rows are numbered in the\n"
         "order of the desktop program's list (its sort order), all before anything changes."});
    table.Add({"todo rm", "FILE --date DATE N...", "delete to-do entries",
               [](Context& ctx) { return RemoveEntries(ctx, EntryKind::todo); }});
    table.Add({"todo move", "FILE --date DATE N --task TASK", "give a to-do entry to another task",
               ToDoMove});
    table.Add({"entries", "FILE [--date DATE | --task TASK] [--kind time|expense|todo] [--billing]",
               "list the entries of a day (today without --date) or of a task, as the entry lists show them",
               Entries,
               "Without --date or --task the list is today's, as the window first shows it.\n"
               "Rows are numbered in the order of the desktop program's list (its sort order);\n"
               "the commands that take row numbers N use the numbers of the Date view of one\n"
               "kind: qvx entries FILE --date DATE --kind time|expense|todo. The Date view of\n"
               "to-dos lists the outstanding ones and those completed on DATE; Status marks\n"
               "the completed and the overdue ones.\n"
               "--billing shows each time entry's activity, note, billable flag, effective rate\n"
               "(the entry's own, else the task's rate for the activity, else the task's regular\n"
               "rate; times the overtime multiplier for overtime) and billing amount, with the\n"
               "billable and non-billable totals."});
}

} // namespace cli
