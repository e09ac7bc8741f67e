#include "cli/commands.h"
#include "cli/commandsession.h"
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

CDateTime RequiredDate(const Args& args, const char* option)
{
    const auto text = args.Option(option);
    if (!text)
        throw UsageError(std::string("--") + option + " DATE is required");
    return ParseDate(*text, (std::string("--") + option).c_str());
}

// The entries of rows `numbers` (1-based) of the page of `kind` on `date`, as
// `qvx entries FILE --date DATE --kind KIND` numbers them.
std::vector<CEntry*> SelectRows(CommandSession& s, EntryKind kind, const CDateTime& date,
                                const std::vector<std::string>& numbers)
{
    if (numbers.empty())
        throw UsageError("give the number of the row (as qvx entries FILE --date DATE shows it)");
    const EntryTable table = BuildEntryTable(s, kind, date, nullptr);
    std::vector<CEntry*> chosen;
    for (const std::string& n : numbers)
    {
        const int row = ParseInt(n, "the row number");
        if (row < 1 || size_t(row) > table.rows.size())
            throw CommandError(
                "there is no row " + n + " on the " + PageTitle(kind) + " page of " +
                date.Format("%Y-%m-%d") + " (it has " + std::to_string(table.rows.size()) +
                " rows; qvx entries FILE --date " + date.Format("%Y-%m-%d") + " lists them)");
        CEntry* e = table.rows[size_t(row) - 1].entry;
        if (std::find(chosen.begin(), chosen.end(), e) == chosen.end())
            chosen.push_back(e);
    }
    return chosen;
}

CEntry* SelectOneRow(CommandSession& s, EntryKind kind, const CDateTime& date, const Args& args)
{
    std::vector<std::string> numbers(args.Positional().begin() + 1, args.Positional().end());
    if (numbers.size() > 1)
        throw UsageError("give one row number");
    return SelectRows(s, kind, date, numbers).front();
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

void RefuseSummaryTask(const CTask* task, unsigned messageId)
{
    if (task->IsProjectSummary())
        Refuse(messageId);
}

std::string Span(const CTimeEntry& e)
{
    return e.m_start.ToText() + "-" + (e.IsRunning() ? std::string("running") : e.m_end.ToText());
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
    {
        std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
        day = doc.GetOrCreateDay(date);
        pending->m_day = day;
        for (const CTimeEntry* other :
             day->ConflictingEntries(*pending, pending.get(), doc.RoundedNow()))
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
    {
        std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
        if (resolved == 0 && pending)
        {
            pending->m_day = nullptr;
            doc.FileTimeEntry(day, std::move(pending));
        }
        // What the entry editor does on OK: the task remembers the entry's note and activity.
        if (args.Option("note") || args.Option("activity"))
        {
            task->m_lastNote = args.Option("note").value_or(task->m_lastNote);
            if (auto a = args.Option("activity"))
                task->m_lastActivityId = FindRecord(doc.m_activities, *a, "activity")->m_id;
        }
        doc.RemoveDayIfEmpty(day);
    }
    if (resolved == 0)
        s.Timer().AddRecentTask(task);
    s.Save();
    if (resolved == 1)
        std::cout << "The new entry " << span << " lies within other entries of "
                  << date.Format("%Y-%m-%d") << " and was not added\n";
    else
        std::cout << "Added " << span << " on " << date.Format("%Y-%m-%d") << " to "
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

std::string ParsePriority(const std::string& text)
{
    if (text.size() == 1)
    {
        const char c = char(std::toupper(static_cast<unsigned char>(text[0])));
        if ((c >= '1' && c <= '9') || (c >= 'A' && c <= 'Z'))
            return std::string(1, c);
    }
    throw UsageError("--priority must be one of 1 to 9 or A to Z, not '" + text + "'");
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

int ToDoComplete(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date"});
    const CDateTime date = RequiredDate(args, "date");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    auto* todo = static_cast<CToDoEntry*>(SelectOneRow(s, EntryKind::todo, date, args));
    if (todo->IsCompleted() && todo->m_completeDate.SameDay(date))
    {
        std::cout << "'" << todo->m_description << "' was already completed on "
                  << date.Format("%Y-%m-%d") << "\n";
        return 0;
    }
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        CDay* old = todo->m_day;
        s.Doc().CompleteToDo(todo, date);
        if (old)
            s.Doc().RemoveDayIfEmpty(old);
    }
    s.Save();
    std::cout << "Completed '" << todo->m_description << "' on " << date.Format("%Y-%m-%d") << "\n";
    return 0;
}

int ToDoReopen(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date"});
    const CDateTime date = RequiredDate(args, "date");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    auto* todo = static_cast<CToDoEntry*>(SelectOneRow(s, EntryKind::todo, date, args));
    if (!todo->IsCompleted())
    {
        std::cout << "'" << todo->m_description << "' is not completed\n";
        return 0;
    }
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        CDay* old = todo->m_day;
        s.Doc().ReopenToDo(todo);
        if (old)
            s.Doc().RemoveDayIfEmpty(old);
    }
    s.Save();
    std::cout << "Reopened '" << todo->m_description << "'\n";
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
    Args args(ctx.argv, {});
    args.Expect(1, 1, {"date", "task", "kind"});
    const auto dateText = args.Option("date");
    const auto taskText = args.Option("task");
    if (dateText.has_value() == taskText.has_value())
        throw UsageError("give either --date DATE (Date view) or --task TASK (Task view)");
    std::vector<EntryKind> kinds = {EntryKind::time, EntryKind::expense, EntryKind::todo};
    if (auto k = args.Option("kind"))
        kinds = {ParseKind(*k)};
    const CDateTime date = dateText ? ParseDate(*dateText, "--date") : CDateTime::Null();

    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    const CTask* task = taskText ? FindTask(s.Doc(), *taskText) : nullptr;
    bool first = true;
    for (EntryKind kind : kinds)
    {
        if (kinds.size() > 1)
            std::cout << (first ? "" : "\n") << PageTitle(kind) << "\n";
        first = false;
        std::cout << FormatEntryTable(BuildEntryTable(s, kind, date, task));
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
    table.Add({"todo add", "FILE TASK DESCRIPTION [--due DATE] [--priority 1-9|A-Z] [--note TEXT]",
               "add an outstanding to-do entry", ToDoAdd});
    table.Add({"todo complete", "FILE N --date DATE",
               "complete to-do row N (of qvx entries --date DATE --kind todo) on DATE",
               ToDoComplete});
    table.Add({"todo reopen", "FILE --date DATE N", "make a completed to-do outstanding again",
               ToDoReopen});
    table.Add({"todo rm", "FILE --date DATE N...", "delete to-do entries",
               [](Context& ctx) { return RemoveEntries(ctx, EntryKind::todo); }});
    table.Add({"todo move", "FILE --date DATE N --task TASK", "give a to-do entry to another task",
               ToDoMove});
    table.Add({"entries", "FILE (--date DATE | --task TASK) [--kind time|expense|todo]",
               "list the entries of a day or of a task, as the entry lists show them", Entries});
}

} // namespace cli
