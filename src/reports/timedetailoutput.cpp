#include "reports/timedetailoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

namespace
{
constexpr uint32_t kTaskId = 0x1;
constexpr uint32_t kRate = 0x10;
constexpr uint32_t kStart = 0x100;
constexpr uint32_t kEnd = 0x1000;
constexpr uint32_t kActivity = 0x10000;
constexpr uint32_t kNote = 0x100000;
constexpr uint32_t kBillingAmount = 0x1000000;
} // namespace

std::string CTimeDetailOutput::ActivityName(uint32_t id) const
{
    const CActivity* activity = m_doc.GetActivity(id);
    return activity ? activity->m_name : std::string("**Unassigned**");
}

void CTimeDetailOutput::ClearTotals()
{
    m_timeTotals.clear();
    m_amountTotals.clear();
}

void CTimeDetailOutput::Gather()
{
    const bool billingFilter = !(m_report.m_includeBillable && m_report.m_includeNonBillable);
    const bool activityFilter = !IdFilterIsAll(m_report.m_selectedActivities);
    const bool withAmounts = Shown(kBillingAmount);
    m_runningEnd = m_doc.RunningEnd();

    for (CDateTime d = m_range.start; d <= m_range.end; d = StepDayForward(d))
    {
        const CDay* day = FindDay(d);
        if (!day)
            continue;
        for (const auto& owned : day->TimeEntries())
        {
            const CTimeEntry& entry = *owned;
            const CTask* task = FindTask(entry.m_taskId);
            if (!task)
                continue;
            if (billingFilter)
            {
                const bool billable = entry.IsEffectiveBillable(*task);
                if (!((m_report.m_includeBillable && billable) ||
                      (m_report.m_includeNonBillable && !billable)))
                    continue;
            }
            if (activityFilter && !IdFilterHas(m_report.m_selectedActivities, entry.m_activityId))
                continue;
            if (!TaskMatches(task))
                continue;
            m_lines.push_back(Line{&entry, task, day, day->GetKey(), m_app.FormatShortDate(day->GetDate())});

            const CTinyElapsedTime elapsed = entry.GetElapsed(m_runningEnd);
            m_timeTotals[day->GetKey()] += elapsed;
            m_timeTotals[kTotalKey] += elapsed;
            if (withAmounts)
            {
                const double amount = entry.GetBillingAmount(*task, m_runningEnd);
                m_amountTotals[day->GetKey()] += amount;
                m_amountTotals[kTotalKey] += amount;
            }
        }
    }
}

CTinyElapsedTime CTimeDetailOutput::GetTimeTotal(const std::string& key) const
{
    const auto it = m_timeTotals.find(key);
    return it == m_timeTotals.end() ? CTinyElapsedTime() : it->second;
}

double CTimeDetailOutput::GetAmountTotal(const std::string& key) const
{
    const auto it = m_amountTotals.find(key);
    return it == m_amountTotals.end() ? 0.0 : it->second;
}

std::vector<CDetailOutput::Column> CTimeDetailOutput::PageColumns() const
{
    std::vector<Column> columns;
    if (Shown(kStart))
        columns.push_back(Column{"Start", Align::right, false, 1});
    if (Shown(kEnd))
        columns.push_back(Column{"End", Align::right, false, 1});
    if (Shown(kTaskId))
        columns.push_back(Column{"Task", Align::left});
    columns.push_back(Column{"Description", Align::left, true});
    if (Shown(kActivity))
        columns.push_back(Column{"Activity", Align::left});
    if (Shown(kRate))
        columns.push_back(Column{"Rate", Align::right});
    columns.push_back(Column{"Time", Align::right});
    if (Shown(kBillingAmount))
        columns.push_back(Column{"Billing", Align::right});
    return columns;
}

std::vector<std::string> CTimeDetailOutput::PageCells(const Line& line) const
{
    const CTimeEntry& entry = static_cast<const CTimeEntry&>(*line.entry);
    std::vector<std::string> cells;
    if (Shown(kStart))
        cells.push_back(m_app.FormatTime(entry.m_start));
    if (Shown(kEnd))
        cells.push_back(entry.IsRunning() ? std::string() : m_app.FormatTime(entry.m_end));
    if (Shown(kTaskId))
        cells.push_back(line.task->GetEffectiveTaskId());
    cells.push_back(TaskDescription(line.task));
    if (Shown(kActivity))
        cells.push_back(ActivityName(entry.m_activityId));
    if (Shown(kRate))
        cells.push_back(m_app.FormatCurrency(entry.GetEffectiveRate(*line.task)));
    cells.push_back(m_app.GetElapsedText(entry.GetElapsed(m_runningEnd)));
    if (Shown(kBillingAmount))
        cells.push_back(m_app.FormatCurrency(entry.GetBillingAmount(*line.task, m_runningEnd)));
    return cells;
}

std::vector<std::string> CTimeDetailOutput::TextBlocks(const Line& line) const
{
    if (!Shown(kNote))
        return {};
    return {line.entry->m_note};
}

std::vector<std::string> CTimeDetailOutput::TotalCells(const std::string& key) const
{
    // Blank cells up to the Time column, then the time and the billing amount.
    std::vector<std::string> cells(PageColumns().size(), std::string());
    const size_t timeColumn = cells.size() - (Shown(kBillingAmount) ? 2 : 1);
    cells[timeColumn] = m_app.GetElapsedText(GetTimeTotal(key));
    if (Shown(kBillingAmount))
        cells[timeColumn + 1] = m_app.FormatCurrency(GetAmountTotal(key));
    return cells;
}

void CTimeDetailOutput::ExportHead(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    std::string line = form.Quoted(RootLevelName()) + form.separator;
    auto field = [&](const char* title) { line += form.Quoted(title) + form.separator; };
    field("Date");
    if (Shown(kStart))
        field("Start");
    if (Shown(kEnd))
        field("End");
    if (Shown(kTaskId))
        field("TaskID");
    field("QuorvaneTaskID");
    field("TaskDescription");
    if (Shown(kActivity))
        field("Activity");
    if (Shown(kRate))
        field("BillingRate");
    line += form.Quoted("Time");
    if (Shown(kBillingAmount))
        line += form.separator + form.Quoted("BillingAmount");
    if (Shown(kNote))
        line += form.separator + form.Quoted("Note");
    file.WriteString(line + "\n");
}

void CTimeDetailOutput::ExportRows(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    const std::string rootName = RootTaskName();
    for (const Line& l : m_lines)
    {
        const CTimeEntry& entry = static_cast<const CTimeEntry&>(*l.entry);
        std::string line = form.Quoted(rootName) + form.separator;
        auto field = [&](const std::string& value) { line += form.Quoted(value) + form.separator; };
        field(m_app.FormatShortDate(l.day->GetDate()));
        if (Shown(kStart))
            field(m_app.FormatTime(entry.m_start));
        if (Shown(kEnd))
            field(entry.IsRunning() ? std::string() : m_app.FormatTime(entry.m_end));
        if (Shown(kTaskId))
            field(l.task->GetEffectiveTaskId());
        field(std::to_string(l.task->m_id));
        field(l.task->m_name);
        if (Shown(kActivity))
            field(ActivityName(entry.m_activityId));
        if (Shown(kRate))
            field(m_app.FormatNumber(entry.GetEffectiveRate(*l.task)));
        line += form.Quoted(m_app.GetElapsedText(entry.GetElapsed(m_runningEnd)));
        if (Shown(kBillingAmount))
            line += form.separator + form.Quoted(m_app.FormatNumber(entry.GetBillingAmount(*l.task, m_runningEnd)));
        if (Shown(kNote))
            line += form.separator + form.Quoted(FlattenNote(entry.m_note));
        file.WriteString(line + "\n");
    }
}

int CTimeDetailOutput::HtmlLeading() const
{
    return (Shown(kStart) ? 1 : 0) + (Shown(kEnd) ? 1 : 0) + (Shown(kTaskId) ? 1 : 0);
}

int CTimeDetailOutput::HtmlColumns() const
{
    return 2 + HtmlLeading() + (Shown(kActivity) ? 1 : 0) + (Shown(kRate) ? 1 : 0) +
           (Shown(kBillingAmount) ? 1 : 0);
}

std::string CTimeDetailOutput::HtmlColumnTitle(const Column& column) const
{
    return column.title == "Billing" ? std::string("Billing Amount") : column.title;
}

void CTimeDetailOutput::HtmlTable(CExportFile& file)
{
    if (m_lines.empty())
        return;
    const int columns = HtmlColumns();
    const bool withAmounts = Shown(kBillingAmount);
    const int k = columns - 1 - (withAmounts ? 1 : 0);
    for (size_t i = 0; i < m_lines.size(); ++i)
    {
        const Line& l = m_lines[i];
        const CTimeEntry& entry = static_cast<const CTimeEntry&>(*l.entry);
        if (OpensGroup(i))
            WriteHtmlHeading(file, columns, l.heading);

        file.WriteString("<TR>");
        if (Shown(kStart))
            WriteHtmlCell(file, "<TD ALIGN=RIGHT NOWRAP>", m_app.FormatTime(entry.m_start));
        if (Shown(kEnd))
            WriteHtmlCell(file, "<TD ALIGN=RIGHT NOWRAP>", entry.IsRunning() ? std::string() : m_app.FormatTime(entry.m_end));
        if (Shown(kTaskId))
            WriteHtmlCell(file, "<TD NOWRAP>", l.task->GetEffectiveTaskId());
        WriteHtmlCell(file, "<TD NOWRAP>", TaskDescription(l.task));
        if (Shown(kActivity))
            WriteHtmlCell(file, "<TD NOWRAP>", ActivityName(entry.m_activityId));
        if (Shown(kRate))
            WriteHtmlCell(file, "<TD ALIGN=RIGHT NOWRAP>", m_app.FormatCurrency(entry.GetEffectiveRate(*l.task)));
        WriteHtmlCell(file, "<TD ALIGN=RIGHT>", m_app.GetElapsedText(entry.GetElapsed(m_runningEnd)));
        if (withAmounts)
            WriteHtmlCell(file, "<TD ALIGN=RIGHT>", m_app.FormatCurrency(entry.GetBillingAmount(*l.task, m_runningEnd)));
        file.WriteString("</TR>");
        file.WriteString("\n");

        if (Shown(kNote) && !entry.m_note.empty())
            WriteHtmlSpanRow(file, HtmlLeading(), columns, entry.m_note);

        if (ClosesGroup(i))
        {
            std::vector<std::string> values{HtmlValue(m_app.GetElapsedText(GetTimeTotal(l.groupKey)))};
            if (withAmounts)
                values.push_back(m_amountTotals.count(l.groupKey) ? m_app.FormatCurrency(GetAmountTotal(l.groupKey))
                                                                  : std::string("&nbsp"));
            WriteHtmlSubtotal(file, k, values);
        }
    }

    std::vector<std::string> values{HtmlValue(m_app.GetElapsedText(GetTimeTotal(kTotalKey)))};
    if (withAmounts)
        values.push_back(m_app.FormatCurrency(GetAmountTotal(kTotalKey)));
    WriteHtmlTotal(file, columns, k, values);
}

} // namespace reports
