#include "reports/tododetailoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

namespace
{
constexpr uint32_t kTaskId = 0x1;
constexpr uint32_t kDueDate = 0x10;
constexpr uint32_t kCompleteDate = 0x100;
constexpr uint32_t kStatus = 0x1000;
constexpr uint32_t kPriority = 0x10000;
constexpr uint32_t kNote = 0x100000;

const CToDoEntry& ToDoOf(const CEntry* entry) { return static_cast<const CToDoEntry&>(*entry); }
} // namespace

CDateTime CToDoDetailOutput::CompleteDate(const Line& line) const
{
    // A completed to-do is complete on the day it is filed under.
    if (line.day)
        return line.day->GetDate();
    return ToDoOf(line.entry).m_completeDate;
}

std::string CToDoDetailOutput::DateText(const CDateTime& date) const
{
    return date.IsNull() ? std::string() : m_app.FormatShortDate(date);
}

bool CToDoDetailOutput::Accepts(const CToDoEntry& todo, const CTask* task) const
{
    // Include billable stands for the outstanding items and include non-billable
    // for the completed ones in this kind.
    const bool completed = todo.IsCompleted() || todo.m_day != nullptr;
    if (completed ? !m_report.m_includeNonBillable : !m_report.m_includeBillable)
        return false;
    return TaskMatches(task);
}

bool CToDoDetailOutput::SortsBefore(const Line& n, const Line& e) const
{
    const CToDoEntry& a = ToDoOf(n.entry);
    const CToDoEntry& b = ToDoOf(e.entry);
    if (Shown(kPriority))
    {
        if (a.m_priority < b.m_priority)
            return true;
        if (a.m_priority > b.m_priority)
            return false;
    }
    // An item without a due date goes after every item that has one, whether or
    // not the Due Date column is shown.
    if (a.m_dueDate.IsNull() != b.m_dueDate.IsNull())
        return !a.m_dueDate.IsNull();
    if (Shown(kDueDate))
    {
        if (b.m_dueDate.IsNull())
            return true;
        if (a.m_dueDate < b.m_dueDate)
            return true;
        if (a.m_dueDate > b.m_dueDate)
            return false;
    }
    if (Shown(kCompleteDate))
    {
        const CDateTime ca = CompleteDate(n);
        const CDateTime cb = CompleteDate(e);
        if (ca.IsNull() && !cb.IsNull())
            return false;
        if (cb.IsNull())
            return true;
        if (ca < cb)
            return true;
        if (ca > cb)
            return false;
    }
    if (Shown(kTaskId))
    {
        const std::string da = TaskDescription(n.task);
        const std::string db = TaskDescription(e.task);
        if (da < db)
            return true;
        if (da > db)
            return false;
    }
    return a.m_description < b.m_description;
}

void CToDoDetailOutput::InsertSorted(std::vector<Line>& group, Line line) const
{
    auto it = group.begin();
    while (it != group.end() && !SortsBefore(line, *it))
        ++it;
    group.insert(it, std::move(line));
}

void CToDoDetailOutput::Gather()
{
    m_today = m_app.Today();
    if (m_report.m_includeBillable)
    {
        std::vector<Line> group;
        for (const auto& owned : m_doc.m_todoList)
        {
            const CTask* task = FindTask(owned->m_taskId);
            if (task && Accepts(*owned, task))
                InsertSorted(group, Line{owned.get(), task, nullptr, std::string(), "Outstanding Items"});
        }
        m_lines.insert(m_lines.end(), group.begin(), group.end());
    }
    for (CDateTime d = m_range.start; d <= m_range.end; d = StepDayForward(d))
    {
        const CDay* day = FindDay(d);
        if (!day || day->ToDoEntries().empty())
            continue;
        std::vector<Line> group;
        for (const auto& owned : day->ToDoEntries())
        {
            const CTask* task = FindTask(owned->m_taskId);
            if (task && Accepts(*owned, task))
                InsertSorted(group, Line{owned.get(), task, day, day->GetKey(),
                                         m_app.FormatShortDate(day->GetDate())});
        }
        m_lines.insert(m_lines.end(), group.begin(), group.end());
    }
}

std::vector<CDetailOutput::Column> CToDoDetailOutput::PageColumns() const
{
    std::vector<Column> columns;
    if (Shown(kTaskId))
        columns.push_back(Column{"Task", Align::left});
    columns.push_back(Column{"Description", Align::left, true});
    if (Shown(kStatus))
        columns.push_back(Column{"Status", Align::left});
    if (Shown(kPriority))
        columns.push_back(Column{"Priority", Align::center});
    if (Shown(kDueDate))
        columns.push_back(Column{"Due", Align::left});
    if (Shown(kCompleteDate))
        columns.push_back(Column{"Complete", Align::left});
    return columns;
}

std::vector<std::string> CToDoDetailOutput::PageCells(const Line& line) const
{
    const CToDoEntry& todo = ToDoOf(line.entry);
    std::vector<std::string> cells;
    if (Shown(kTaskId))
        cells.push_back(line.task->GetEffectiveTaskId());
    cells.push_back(TaskDescription(line.task));
    if (Shown(kStatus))
        cells.push_back(todo.GetStatusText(m_today));
    if (Shown(kPriority))
        cells.push_back(todo.m_priority);
    if (Shown(kDueDate))
        cells.push_back(DateText(todo.m_dueDate));
    if (Shown(kCompleteDate))
        cells.push_back(DateText(CompleteDate(line)));
    return cells;
}

std::vector<std::string> CToDoDetailOutput::TextBlocks(const Line& line) const
{
    const CToDoEntry& todo = ToDoOf(line.entry);
    std::vector<std::string> blocks{todo.m_description};
    if (Shown(kNote))
        blocks.push_back(todo.m_note);
    return blocks;
}

void CToDoDetailOutput::ExportHead(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    std::string line = form.Quoted(RootLevelName()) + form.separator;
    if (Shown(kTaskId))
        line += form.Quoted("TaskID") + form.separator;
    line += form.Quoted("QuorvaneTaskID") + form.separator;
    line += form.Quoted("TaskDescription") + form.separator;
    line += form.Quoted("ToDo");
    auto after = [&](uint32_t mask, const char* title) {
        if (Shown(mask))
            line += form.separator + form.Quoted(title);
    };
    after(kStatus, "Status");
    after(kPriority, "Priority");
    after(kDueDate, "DueDate");
    after(kCompleteDate, "CompleteDate");
    after(kNote, "Note");
    file.WriteString(line + "\n");
}

void CToDoDetailOutput::ExportRows(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    const std::string rootName = RootTaskName();
    for (const Line& l : m_lines)
    {
        const CToDoEntry& todo = ToDoOf(l.entry);
        std::string line = form.Quoted(rootName) + form.separator;
        if (Shown(kTaskId))
            line += form.Quoted(l.task->GetEffectiveTaskId()) + form.separator;
        line += form.Quoted(std::to_string(l.task->m_id)) + form.separator;
        line += form.Quoted(l.task->m_name) + form.separator;
        line += form.Quoted(todo.m_description);
        auto after = [&](uint32_t mask, const std::string& value) {
            if (Shown(mask))
                line += form.separator + form.Quoted(value);
        };
        after(kStatus, todo.GetStatusText(m_today));
        after(kPriority, todo.m_priority);
        after(kDueDate, DateText(todo.m_dueDate));
        after(kCompleteDate, DateText(CompleteDate(l)));
        after(kNote, FlattenNote(todo.m_note));
        file.WriteString(line + "\n");
    }
}

void CToDoDetailOutput::HtmlTable(CExportFile& file)
{
    const int columns = static_cast<int>(PageColumns().size());
    const int leading = Shown(kTaskId) ? 1 : 0;
    for (size_t i = 0; i < m_lines.size(); ++i)
    {
        const Line& l = m_lines[i];
        const CToDoEntry& todo = ToDoOf(l.entry);
        if (OpensGroup(i))
            WriteHtmlHeading(file, columns, l.heading);

        file.WriteString("<TR>");
        if (Shown(kTaskId))
            WriteHtmlCell(file, "<TD NOWRAP>", l.task->GetEffectiveTaskId());
        WriteHtmlCell(file, "<TD NOWRAP>", TaskDescription(l.task));
        if (Shown(kStatus))
            WriteHtmlCell(file, "<TD NOWRAP>", todo.GetStatusText(m_today));
        if (Shown(kPriority))
            WriteHtmlCell(file, "<TD ALIGN=CENTER NOWRAP>", todo.m_priority);
        if (Shown(kDueDate))
            WriteHtmlCell(file, "<TD NOWRAP>", DateText(todo.m_dueDate));
        if (Shown(kCompleteDate))
            WriteHtmlCell(file, "<TD NOWRAP>", DateText(CompleteDate(l)));
        file.WriteString("</TR>");
        file.WriteString("\n");

        WriteHtmlSpanRow(file, leading, columns, todo.m_description);
        if (Shown(kNote) && !todo.m_note.empty())
            WriteHtmlSpanRow(file, leading, columns, todo.m_note);
    }
}

} // namespace reports
