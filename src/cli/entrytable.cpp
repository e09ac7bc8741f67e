#include "cli/entrytable.h"

#include "cli/commandsession.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace cli
{

namespace
{
// A value a column sorts by: text compares case-insensitively, the rest as numbers.
struct SortValue
{
    bool isText = false;
    std::string text;
    double number = 0.0;
};

SortValue Text(const std::string& s)
{
    SortValue v;
    v.isText = true;
    v.text.reserve(s.size());
    for (char c : s)
        v.text += char(std::tolower(static_cast<unsigned char>(c)));
    return v;
}

SortValue Number(double n)
{
    SortValue v;
    v.number = n;
    return v;
}

SortValue DateValue(const CDateTime& d)
{
    return Number(d.IsValid() ? d.GetValue() : -std::numeric_limits<double>::infinity());
}

bool Less(const SortValue& a, const SortValue& b)
{
    return a.isText ? a.text < b.text : a.number < b.number;
}

CDateTime DayOf(const CEntry& e)
{
    return e.m_day ? e.m_day->GetDate() : CDateTime::Null();
}

class TableBuilder
{
public:
    TableBuilder(CommandSession& s) : m_s(s), m_doc(s.Doc()), m_app(s.App()) {}

    std::string ElapsedText(const CTimeEntry& e) const
    {
        return m_app.GetElapsedText(e.GetElapsed(m_doc.RunningEnd()));
    }
    std::string EndText(const CTimeEntry& e) const
    {
        return e.IsRunning() ? "(running)" : m_app.FormatTime(e.m_end);
    }
    std::string DateText(const CDateTime& d) const
    {
        return d.IsValid() ? m_app.FormatShortDate(d) : std::string();
    }
    std::string ExpenseType(const CExpenseEntry& e) const
    {
        const CExpenseType* type = m_doc.GetExpenseType(e.m_expenseTypeId);
        return type ? type->m_name : std::string();
    }

    // The moment a time entry starts or ends, for sorting.
    double StartValue(const CTimeEntry& e) const
    {
        return DayOf(e).GetValue() + e.m_start.MinutesOfDay() / 1440.0;
    }
    double EndValue(const CTimeEntry& e) const
    {
        if (e.IsRunning())
            return m_doc.RoundedNow().GetValue();
        return DayOf(e).GetValue() + e.m_end.MinutesOfDay() / 1440.0;
    }

    // The field that a stored sort key names (column index in Date view, + 10 in Task view).
    SortValue TimeValue(const CTimeEntry& e, int key) const
    {
        switch (key)
        {
        case 0:
            return Text(m_s.TaskPath(e.m_taskId));
        case 1:
        case 12:
            return Number(StartValue(e));
        case 2:
        case 13:
            return Number(EndValue(e));
        case 3:
        case 14:
            return Number(double(e.GetElapsed(m_doc.RunningEnd()).TotalMinutes()));
        case 10:
            return DateValue(DayOf(e));
        case 11:
            return Text(e.m_note);
        default:
            return {};
        }
    }
    SortValue ExpenseValue(const CExpenseEntry& e, int key) const
    {
        switch (key)
        {
        case 0:
            return Text(m_s.TaskPath(e.m_taskId));
        case 1:
        case 11:
            return Text(ExpenseType(e));
        case 2:
        case 13:
            return Number(e.m_amount);
        case 10:
            return DateValue(e.m_date);
        case 12:
            return Text(e.m_note);
        default:
            return {};
        }
    }
    SortValue ToDoValue(const CToDoEntry& e, int key) const
    {
        switch (key)
        {
        case 0:
            return Text(m_s.TaskPath(e.m_taskId));
        case 1:
        case 10:
            return Text(e.m_description);
        case 2:
        case 11:
            return DateValue(e.m_dueDate);
        case 12:
            return DateValue(e.m_completeDate);
        case 3:
        case 13:
            return Text(e.m_priority);
        default:
            return {};
        }
    }

    bool KnownKey(EntryKind kind, int key) const
    {
        switch (kind)
        {
        case EntryKind::time:
            return (key >= 0 && key <= 3) || (key >= 10 && key <= 14);
        case EntryKind::expense:
            return (key >= 0 && key <= 2) || (key >= 10 && key <= 13);
        case EntryKind::todo:
            return (key >= 0 && key <= 3) || (key >= 10 && key <= 13);
        }
        return false;
    }

    SortValue Value(EntryKind kind, const CEntry& e, int key) const
    {
        switch (kind)
        {
        case EntryKind::time:
            return TimeValue(static_cast<const CTimeEntry&>(e), key);
        case EntryKind::expense:
            return ExpenseValue(static_cast<const CExpenseEntry&>(e), key);
        case EntryKind::todo:
            return ToDoValue(static_cast<const CToDoEntry&>(e), key);
        }
        return {};
    }

    // Activity, (note,) billable, rate and amount of a time entry.
    std::vector<std::string> BillingCells(const CTimeEntry& e, bool withNote) const
    {
        const CActivity* activity = m_doc.GetActivity(e.m_activityId);
        std::vector<std::string> cells = {activity ? activity->m_name : std::string()};
        if (withNote)
            cells.push_back(e.m_note);
        const CTask* task = m_doc.GetTask(e.m_taskId);
        if (!task)
        {
            cells.insert(cells.end(), {"", "", ""});
            return cells;
        }
        cells.push_back(e.IsEffectiveBillable(*task) ? "yes" : "no");
        cells.push_back(m_app.FormatCurrency(e.GetEffectiveRate(*task)));
        cells.push_back(m_app.FormatCurrency(e.GetBillingAmount(*task, m_doc.RunningEnd())));
        return cells;
    }

    std::vector<std::string> Cells(EntryKind kind, const CEntry& entry, bool dateView,
                                   bool billing) const
    {
        if (kind == EntryKind::time)
        {
            const auto& e = static_cast<const CTimeEntry&>(entry);
            std::vector<std::string> cells =
                dateView ? std::vector<std::string>{m_s.TaskPath(e.m_taskId),
                                                    m_app.FormatTime(e.m_start), EndText(e),
                                                    ElapsedText(e)}
                         : std::vector<std::string>{DateText(DayOf(e)), e.m_note,
                                                    m_app.FormatTime(e.m_start), EndText(e),
                                                    ElapsedText(e)};
            if (billing)
            {
                const std::vector<std::string> more = BillingCells(e, dateView);
                cells.insert(cells.end(), more.begin(), more.end());
            }
            return cells;
        }
        if (kind == EntryKind::expense)
        {
            const auto& e = static_cast<const CExpenseEntry&>(entry);
            if (dateView)
                return {m_s.TaskPath(e.m_taskId), ExpenseType(e), m_app.FormatCurrency(e.m_amount)};
            return {DateText(e.m_date), ExpenseType(e), e.m_note, m_app.FormatCurrency(e.m_amount)};
        }
        const auto& e = static_cast<const CToDoEntry&>(entry);
        if (dateView)
        {
            const std::string status = e.GetStatusText(m_app.Today());
            return {m_s.TaskPath(e.m_taskId), e.m_description, DateText(e.m_dueDate), e.m_priority,
                    status == "Outstanding" ? std::string() : status};
        }
        return {e.m_description, DateText(e.m_dueDate), DateText(e.m_completeDate), e.m_priority};
    }

private:
    CommandSession& m_s;
    CTimeKeeperDoc& m_doc;
    CTimeKeeperApp& m_app;
};

size_t DisplayWidth(const std::string& s)
{
    size_t n = 0;
    for (unsigned char c : s)
        if ((c & 0xC0) != 0x80)
            ++n;
    return n;
}

// One line of a cell: line breaks of notes would break the table.
std::string OneLine(std::string s)
{
    for (char& c : s)
        if (c == '\n' || c == '\r' || c == '\t')
            c = ' ';
    return s;
}
} // namespace

const char* PageTitle(EntryKind kind)
{
    switch (kind)
    {
    case EntryKind::time:
        return "Time";
    case EntryKind::expense:
        return "Expenses";
    case EntryKind::todo:
        return "To Do";
    }
    return "";
}

EntryTable BuildEntryTable(CommandSession& session, EntryKind kind, const CDateTime& date,
                           const CTask* task, bool billing)
{
    CTimeKeeperDoc& doc = session.Doc();
    CTimeKeeperApp& app = session.App();
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    const bool dateView = task == nullptr;
    TableBuilder builder(session);

    EntryTable table;
    switch (kind)
    {
    case EntryKind::time:
        table.columns = dateView
                            ? std::vector<std::string>{"Task", "Start", "End", "Elapsed"}
                            : std::vector<std::string>{"Date", "Note", "Start", "End", "Elapsed"};
        if (billing)
        {
            if (dateView)
                table.columns.insert(table.columns.end(), {"Activity", "Note"});
            else
                table.columns.push_back("Activity");
            table.columns.insert(table.columns.end(), {"Billable", "Rate", "Amount"});
        }
        break;
    case EntryKind::expense:
        table.columns = dateView ? std::vector<std::string>{"Task", "Type", "Amount"}
                                 : std::vector<std::string>{"Date", "Type", "Note", "Amount"};
        break;
    case EntryKind::todo:
        table.columns =
            dateView
                ? std::vector<std::string>{"Task", "Description", "Due Date", "Priority", "Status"}
                : std::vector<std::string>{"Description", "Due Date", "Completed", "Priority"};
        break;
    }

    std::vector<CEntry*> entries;
    if (dateView)
    {
        const CDay* day = doc.GetDay(date);
        if (kind == EntryKind::time && day)
            for (const auto& e : day->TimeEntries())
                entries.push_back(e.get());
        if (kind == EntryKind::expense && day)
            for (const auto& e : day->ExpenseEntries())
                entries.push_back(e.get());
        if (kind == EntryKind::todo)
        {
            for (const auto& e : doc.m_todoList)
                entries.push_back(e.get());
            if (day)
                for (const auto& e : day->ToDoEntries())
                    entries.push_back(e.get());
        }
    }
    else
    {
        if (kind == EntryKind::time)
            entries.assign(task->m_timeEntries.begin(), task->m_timeEntries.end());
        if (kind == EntryKind::expense)
            entries.assign(task->m_expenseEntries.begin(), task->m_expenseEntries.end());
        if (kind == EntryKind::todo)
            entries.assign(task->m_todoEntries.begin(), task->m_todoEntries.end());
        // A task's lists hold entries in the order they were filed: show them by day.
        std::stable_sort(entries.begin(), entries.end(),
                         [&](const CEntry* a, const CEntry* b)
                         {
                             if (kind == EntryKind::time)
                                 return builder.StartValue(*static_cast<const CTimeEntry*>(a)) <
                                        builder.StartValue(*static_cast<const CTimeEntry*>(b));
                             return DayOf(*a).GetValue() < DayOf(*b).GetValue();
                         });
    }

    const int key = kind == EntryKind::time      ? app.GetTimeSortOrder()
                    : kind == EntryKind::expense ? app.GetExpenseSortOrder()
                                                 : app.GetToDoSortOrder();
    if (builder.KnownKey(kind, key))
    {
        std::vector<std::pair<SortValue, CEntry*>> keyed;
        keyed.reserve(entries.size());
        for (CEntry* e : entries)
            keyed.emplace_back(builder.Value(kind, *e, key), e);
        std::stable_sort(keyed.begin(), keyed.end(),
                         [](const auto& a, const auto& b) { return Less(a.first, b.first); });
        for (size_t i = 0; i < keyed.size(); ++i)
            entries[i] = keyed[i].second;
    }

    for (CEntry* e : entries)
        table.rows.push_back({e, builder.Cells(kind, *e, dateView, billing)});
    return table;
}

BillingTotals SumBilling(CommandSession& session, const EntryTable& table)
{
    CTimeKeeperDoc& doc = session.Doc();
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    BillingTotals totals;
    for (const auto& row : table.rows)
    {
        const auto* e = dynamic_cast<const CTimeEntry*>(row.entry);
        const CTask* task = e ? doc.GetTask(e->m_taskId) : nullptr;
        if (!task)
            continue;
        const double hours = e->GetElapsed(doc.RunningEnd()).Hours();
        const double amount = e->GetBillingAmount(*task, doc.RunningEnd());
        totals.hours += hours;
        totals.amount += amount;
        if (e->IsEffectiveBillable(*task))
        {
            totals.billableHours += hours;
            totals.billableAmount += amount;
        }
    }
    return totals;
}

std::string FormatEntryTable(const EntryTable& table)
{
    std::vector<size_t> widths(table.columns.size() + 1, 1);
    widths[0] = std::max<size_t>(1, std::to_string(table.rows.size()).size());
    for (size_t c = 0; c < table.columns.size(); ++c)
        widths[c + 1] = DisplayWidth(table.columns[c]);
    for (const auto& row : table.rows)
        for (size_t c = 0; c < row.cells.size(); ++c)
            widths[c + 1] = std::max(widths[c + 1], DisplayWidth(OneLine(row.cells[c])));

    auto line = [&](const std::string& number, const std::vector<std::string>& cells)
    {
        std::string out = std::string(widths[0] - DisplayWidth(number), ' ') + number;
        for (size_t c = 0; c < cells.size(); ++c)
        {
            const std::string cell = OneLine(cells[c]);
            out += "  " + cell;
            if (c + 1 < cells.size())
                out += std::string(widths[c + 1] - DisplayWidth(cell), ' ');
        }
        return out + "\n";
    };
    std::string out = line("#", table.columns);
    for (size_t r = 0; r < table.rows.size(); ++r)
        out += line(std::to_string(r + 1), table.rows[r].cells);
    return out;
}

} // namespace cli
