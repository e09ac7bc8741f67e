// The "set" commands: what the entry editors change, with the editors' checks.

#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/entryrows.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace cli
{

namespace
{
constexpr unsigned kMsgEndBeforeStart = 40001;
constexpr unsigned kMsgStartAfterNow = 40009;
constexpr unsigned kMsgEmptyToDo = 40014;
constexpr unsigned kMsgImportedToDo = 40028;
constexpr unsigned kMsgMoveToSummary = 40033;

// "none" or an empty text clears a catalog choice.
bool MeansNone(const std::string& text)
{
    return text.empty() || text == "none";
}

// The target of --task, refused when entries cannot go there.
CTask* TargetTask(CommandSession& s, const Args& args)
{
    const auto path = args.Option("task");
    if (!path)
        return nullptr;
    CTask* task = FindTask(s.Doc(), *path);
    RefuseSummaryTask(task, kMsgMoveToSummary);
    return task;
}

std::string Conflicts(CommandSession& s, CDay& day, const CTimeEntry& entry)
{
    std::vector<std::string> list;
    for (const CTimeEntry* other : day.ConflictingEntries(entry, &entry, s.Doc().ConflictNow()))
        list.push_back(Span(*other) + " " + s.TaskPath(other->m_taskId));
    return JoinTexts(list);
}
} // namespace

int TimeSet(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2,
                {"date", "task", "start", "end", "activity", "note", "billable", "rate", "overtime",
                 "multiplier", "billing-defaults", "on-conflict"});
    ConflictPolicy policy = ConflictPolicy::ask;
    if (auto p = args.Option("on-conflict"))
        policy = ParseConflictPolicy(*p);
    const CDateTime date = RequiredDate(args, "date");
    std::optional<CTinyTime> start, end;
    if (auto t = args.Option("start"))
        start = ParseTime(*t, "--start");
    if (auto t = args.Option("end"))
    {
        end = ParseTime(*t, "--end");
        // An end of 00:00 is midnight at the end of the entry's day.
        if (end->MinutesOfDay() == 0)
            end = CTinyTime(24, 0);
    }
    if (start && start->MinutesOfDay() >= 24 * 60)
        throw UsageError("--start must lie before 24:00");
    std::optional<bool> billable, overtime, defaults;
    std::optional<double> rate, multiplier;
    if (auto v = args.Option("billable"))
        billable = ParseYesNo(*v, "--billable");
    if (auto v = args.Option("overtime"))
        overtime = ParseYesNo(*v, "--overtime");
    if (auto v = args.Option("billing-defaults"))
        defaults = ParseYesNo(*v, "--billing-defaults");
    if (auto v = args.Option("rate"))
    {
        rate = ParseDouble(*v, "--rate");
        if (*rate < 0)
            throw UsageError("--rate must not be negative");
    }
    if (auto v = args.Option("multiplier"))
    {
        multiplier = ParseDouble(*v, "--multiplier");
        if (*multiplier < 0 || *multiplier > 100)
            throw UsageError("--multiplier must lie between 0 and 100");
    }
    if (defaults.value_or(false) && (billable || rate))
        throw UsageError("--billing-defaults yes takes the billing of the task and activity; "
                         "give it without --billable and --rate");
    if (!args.Option("task") && !start && !end && !args.Option("activity") &&
        !args.Option("note") && !billable && !overtime && !defaults && !rate && !multiplier)
        throw UsageError("nothing to set (qvx help time set lists the fields)");

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change, policy);
    CTimeKeeperDoc& doc = s.Doc();
    auto* entry = static_cast<CTimeEntry*>(SelectOneRow(s, EntryKind::time, date, args));
    CTask* newTask = TargetTask(s, args);
    uint32_t activityId = entry->m_activityId;
    if (auto a = args.Option("activity"))
        activityId = MeansNone(*a) ? 0 : FindRecord(doc.m_activities, *a, "activity")->m_id;

    std::unique_lock<std::recursive_mutex> lock(doc.GetLock());
    CDay* day = entry->m_day;
    const CTimeEntry original = *entry;
    const bool running = entry->IsRunning();
    const CTinyTime newStart = start.value_or(entry->m_start);
    if (running)
    {
        if (end)
            throw CommandError("the entry is running: stop the timer to end it (qvx stop)");
        // The editor's rule for the running entry: it must have started before now.
        const CDateTime startMoment = date.DatePart().AddMinutes(newStart.MinutesOfDay());
        if (!(startMoment < s.App().RoundTime(s.App().Now())))
            Refuse(kMsgStartAfterNow);
    }
    else if (end.value_or(entry->m_end).MinutesOfDay() <= newStart.MinutesOfDay())
        Refuse(kMsgEndBeforeStart);

    // The billing group of the editor: the defaults, or the entry's own flag and rate
    // (starting from what the defaults gave it).
    const CTask* billingTask = doc.GetTask(newTask ? newTask->m_id : entry->m_taskId);
    bool custom = entry->m_customBilling;
    if (defaults)
        custom = !*defaults;
    if (billable || rate)
        custom = true;
    const bool wasCustom = entry->m_customBilling;
    bool newBillable = entry->m_billable;
    double newRate = entry->m_rate;
    if (custom && !wasCustom && billingTask)
    {
        newBillable = billingTask->IsBillableFor(activityId);
        newRate = billingTask->GetRateFor(activityId);
    }
    newBillable = billable.value_or(newBillable);
    newRate = rate.value_or(newRate);
    const bool newOvertime = overtime.value_or(entry->m_overtime);
    float newMultiplier = entry->m_overtimeMultiplier;
    if (multiplier)
        newMultiplier = float(*multiplier);
    else if (newOvertime && custom && newMultiplier <= 0 && billingTask)
        newMultiplier = billingTask->GetEffectiveOvertimeMultiplier();

    entry->m_start = newStart;
    if (end)
        entry->m_end = *end;
    if (auto n = args.Option("note"))
        entry->m_note = *n;
    entry->m_activityId = activityId;
    entry->m_customBilling = custom;
    entry->m_billable = custom ? newBillable : false;
    entry->m_rate = custom ? newRate : 0.0;
    entry->m_overtime = newOvertime;
    entry->m_overtimeMultiplier = newMultiplier;
    // The task first: pieces that fitting around other entries splits off belong to it.
    CTask* oldTask = doc.GetTask(entry->m_taskId);
    if (newTask && newTask->m_id != entry->m_taskId)
        doc.ChangeEntryTask(entry, newTask);

    auto restore = [&]
    {
        if (oldTask && entry->m_taskId != original.m_taskId)
            doc.ChangeEntryTask(entry, oldTask);
        *entry = original;
        entry->m_day = day;
    };
    const std::string conflicts = Conflicts(s, *day, *entry);
    std::vector<const CTimeEntry*> before;
    for (const auto& e : day->TimeEntries())
        before.push_back(e.get());
    int resolved = 0;
    if (!conflicts.empty())
    {
        if (policy == ConflictPolicy::fail)
        {
            restore();
            throw CommandError("The Time Entry conflicts with another Time Entry (" + conflicts +
                               "); nothing was changed (--on-conflict adjust-others or "
                               "adjust-this resolves it)");
        }
        lock.unlock();
        resolved = s.Timer().ResolveTimeConflict(*day, *entry);
        lock.lock();
        if (resolved == 2)
        {
            restore();
            throw CommandError("The Time Entry conflicts with another Time Entry (" + conflicts +
                               "); nothing was changed (--on-conflict adjust-others or "
                               "adjust-this resolves it)");
        }
    }
    // What the editor does on OK: the task remembers the entry's note and activity.
    std::vector<std::string> stored;
    if (resolved != 1)
    {
        // Fitted around the others, the entry may have been split in two.
        stored.push_back(Span(*entry));
        if (s.Ui().LastChoice() == 1)
            for (const auto& e : day->TimeEntries())
                if (std::find(before.begin(), before.end(), e.get()) == before.end())
                    stored.push_back(Span(*e));
        if (CTask* task = doc.GetTask(entry->m_taskId))
        {
            task->m_lastNote = entry->m_note;
            task->m_lastActivityId = entry->m_activityId;
        }
        day->InsertTimeEntry(day->RemoveTimeEntry(entry));
    }
    const std::string task =
        s.TaskPath(resolved == 1 ? (newTask ? newTask->m_id : original.m_taskId) : entry->m_taskId);
    doc.RemoveDayIfEmpty(day);
    lock.unlock();
    s.Save();
    if (resolved == 1)
    {
        std::cout << "The entry of " << task << " now lies within other entries of "
                  << date.Format("%Y-%m-%d") << " and was removed\n";
        return 0;
    }
    std::cout << "Updated " << JoinTexts(stored) << " of " << date.Format("%Y-%m-%d") << ", "
              << task;
    if (!conflicts.empty())
        std::cout << (s.Ui().LastChoice() == 1 ? " (fitted around the other entries)"
                                               : " (overlapping entries adjusted)");
    std::cout << "\n";
    return 0;
}

int ExpenseSet(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2,
                {"date", "task", "type", "amount", "distance", "rate", "method", "billable",
                 "number", "note"});
    const CDateTime date = RequiredDate(args, "date");
    std::optional<bool> billable;
    if (auto b = args.Option("billable"))
        billable = ParseYesNo(*b, "--billable");
    std::optional<uint32_t> number;
    if (auto n = args.Option("number"))
    {
        const int v = ParseInt(*n, "--number");
        if (v < 0)
            throw UsageError("--number must not be negative");
        number = uint32_t(v);
    }
    std::optional<double> amount, rate;
    std::optional<int> distance;
    if (auto a = args.Option("amount"))
        amount = ParseDouble(*a, "--amount");
    if (auto r = args.Option("rate"))
    {
        rate = ParseDouble(*r, "--rate");
        if (*rate < 0)
            throw UsageError("--rate must not be negative");
    }
    if (auto d = args.Option("distance"))
    {
        distance = ParseInt(*d, "--distance");
        if (*distance < 0)
            throw UsageError("--distance must not be negative");
    }

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTimeKeeperDoc& doc = s.Doc();
    auto* entry = static_cast<CExpenseEntry*>(SelectOneRow(s, EntryKind::expense, date, args));
    CTask* newTask = TargetTask(s, args);
    uint32_t typeId = entry->m_expenseTypeId;
    if (auto t = args.Option("type"))
        typeId = FindRecord(doc.m_expenseTypes, *t, "expense type")->m_id;
    uint32_t methodId = entry->m_paymentMethodId;
    if (auto m = args.Option("method"))
        methodId = MeansNone(*m) ? uint32_t(-1)
                                 : FindRecord(doc.m_paymentMethods, *m, "payment method")->m_id;

    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    const bool mileage = typeId == CExpenseType::kMileageId;
    const bool wasMileage = entry->m_expenseTypeId == CExpenseType::kMileageId;
    double newAmount = entry->m_amount;
    float newDistance = entry->m_distance;
    if (mileage)
    {
        if (amount)
            throw UsageError("the mileage type takes --distance N (and --rate R), not --amount");
        // The editor's rate: the one that made the amount from the distance, or the
        // document's default rate for an entry that becomes a mileage entry.
        float mileageRate = doc.m_defaultMileageRate;
        if (wasMileage && entry->m_distance > 0)
            mileageRate = float(entry->m_amount / entry->m_distance);
        if (rate)
            mileageRate = float(*rate);
        const int miles = distance.value_or(wasMileage ? int(entry->m_distance) : 0);
        if (!distance && !wasMileage)
            throw UsageError("the mileage type needs --distance N");
        newDistance = float(miles);
        newAmount = CExpenseEntry::MileageAmount(miles, mileageRate);
    }
    else
    {
        if (distance || rate)
            throw UsageError("--distance and --rate go with the mileage type (#9) only");
        newDistance = 0.0f;
        newAmount = amount.value_or(entry->m_amount);
    }
    entry->m_expenseTypeId = typeId;
    entry->m_paymentMethodId = methodId;
    entry->m_amount = newAmount;
    entry->m_distance = newDistance;
    entry->m_billable = billable.value_or(entry->m_billable);
    entry->m_number = number.value_or(entry->m_number);
    if (auto n = args.Option("note"))
        entry->m_note = *n;
    if (newTask && newTask->m_id != entry->m_taskId)
        doc.ChangeEntryTask(entry, newTask);
    s.Save();
    const CExpenseType* type = doc.GetExpenseType(entry->m_expenseTypeId);
    std::cout << "Updated " << (type ? type->m_name : std::string("the expense")) << " "
              << s.App().FormatCurrency(entry->m_amount) << " of " << date.Format("%Y-%m-%d")
              << ", " << s.TaskPath(entry->m_taskId) << "\n";
    return 0;
}

int ToDoSet(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"date", "task", "description", "priority", "due", "note"});
    const CDateTime date = RequiredDate(args, "date");
    std::optional<std::string> priority;
    if (auto p = args.Option("priority"))
        priority = ParsePriority(*p);
    std::optional<CDateTime> due;
    if (auto d = args.Option("due"))
        due = MeansNone(*d) ? CDateTime::Null() : ParseDate(*d, "--due");

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTimeKeeperDoc& doc = s.Doc();
    auto* todo = static_cast<CToDoEntry*>(SelectOneRow(s, EntryKind::todo, date, args));
    CTask* newTask = TargetTask(s, args);
    if (newTask && newTask->m_id != todo->m_taskId && todo->m_imported)
        Refuse(kMsgImportedToDo);
    std::string description = todo->m_description;
    if (auto d = args.Option("description"))
    {
        const size_t first = d->find_first_not_of(' ');
        if (first == std::string::npos)
            Refuse(kMsgEmptyToDo);
        description = d->substr(first);
    }

    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    todo->m_description = description;
    todo->m_priority = priority.value_or(todo->m_priority);
    todo->m_dueDate = due.value_or(todo->m_dueDate);
    if (auto n = args.Option("note"))
        todo->m_note = *n;
    if (newTask && newTask->m_id != todo->m_taskId)
        doc.ChangeEntryTask(todo, newTask);
    s.Save();
    std::cout << "Updated '" << todo->m_description << "', " << s.TaskPath(todo->m_taskId) << "\n";
    return 0;
}

} // namespace cli
