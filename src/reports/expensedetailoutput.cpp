#include "reports/expensedetailoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

namespace
{
constexpr uint32_t kTaskId = 0x1;
constexpr uint32_t kMileage = 0x10;
constexpr uint32_t kMileageRate = 0x100;
constexpr uint32_t kExpenseType = 0x1000;
constexpr uint32_t kPaymentMethod = 0x10000;
constexpr uint32_t kNote = 0x100000;

bool IsMileage(const CExpenseEntry& entry)
{
    return entry.m_expenseTypeId == CExpenseType::kMileageId && entry.m_distance > 0.0f;
}
} // namespace

std::string CExpenseDetailOutput::ExpenseTypeName(const CExpenseEntry& entry) const
{
    const CExpenseType* type = m_doc.GetExpenseType(entry.m_expenseTypeId);
    return type ? type->m_name : std::string("**Unassigned**");
}

std::string CExpenseDetailOutput::PaymentMethodName(const CExpenseEntry& entry) const
{
    const CPaymentMethod* method = m_doc.GetPaymentMethod(entry.m_paymentMethodId);
    return method ? method->m_name : std::string("**Unassigned**");
}

std::string CExpenseDetailOutput::DistanceText(const CExpenseEntry& entry) const
{
    return IsMileage(entry) ? m_app.FormatNumber(entry.m_distance) : std::string();
}

std::string CExpenseDetailOutput::MileageRateText(const CExpenseEntry& entry, bool money) const
{
    // The entry keeps the distance and the amount made from it; the rate is their ratio.
    if (!IsMileage(entry))
        return std::string();
    const double rate = entry.m_amount / entry.m_distance;
    return money ? m_app.FormatCurrency(rate) : m_app.FormatNumber(rate);
}

void CExpenseDetailOutput::Gather()
{
    const bool billingFilter = !(m_report.m_includeBillable && m_report.m_includeNonBillable);
    const bool typeFilter = !IdFilterIsAll(m_report.m_selectedExpenseTypes);
    const bool methodFilter = !IdFilterIsAll(m_report.m_selectedPaymentMethods);

    for (CDateTime d = m_range.start; d <= m_range.end; d = StepDayForward(d))
    {
        const CDay* day = FindDay(d);
        if (!day)
            continue;
        for (const auto& owned : day->ExpenseEntries())
        {
            const CExpenseEntry& entry = *owned;
            const CTask* task = FindTask(entry.m_taskId);
            if (!task)
                continue;
            if (billingFilter && !((m_report.m_includeBillable && entry.m_billable) ||
                                   (m_report.m_includeNonBillable && !entry.m_billable)))
                continue;
            if (typeFilter && !IdFilterHas(m_report.m_selectedExpenseTypes, entry.m_expenseTypeId))
                continue;
            if (methodFilter && !IdFilterHas(m_report.m_selectedPaymentMethods, entry.m_paymentMethodId))
                continue;
            if (!TaskMatches(task))
                continue;
            m_lines.push_back(Line{&entry, task, day, day->GetKey(), m_app.FormatShortDate(day->GetDate())});
            m_amountTotals[day->GetKey()] += entry.m_amount;
            m_amountTotals[kTotalKey] += entry.m_amount;
        }
    }
}

double CExpenseDetailOutput::GetAmountTotal(const std::string& key) const
{
    const auto it = m_amountTotals.find(key);
    return it == m_amountTotals.end() ? 0.0 : it->second;
}

std::vector<CDetailOutput::Column> CExpenseDetailOutput::PageColumns() const
{
    std::vector<Column> columns;
    if (Shown(kTaskId))
        columns.push_back(Column{"Task", Align::left});
    columns.push_back(Column{"Description", Align::left, true});
    if (Shown(kExpenseType))
        columns.push_back(Column{"Type", Align::left});
    if (Shown(kPaymentMethod))
        columns.push_back(Column{"Method", Align::left});
    if (Shown(kMileage))
        columns.push_back(Column{m_app.GetDistanceUnit(), Align::right});
    if (Shown(kMileageRate))
        columns.push_back(Column{"Rate", Align::right});
    columns.push_back(Column{"Amount", Align::right});
    return columns;
}

std::vector<std::string> CExpenseDetailOutput::PageCells(const Line& line) const
{
    const CExpenseEntry& entry = static_cast<const CExpenseEntry&>(*line.entry);
    std::vector<std::string> cells;
    if (Shown(kTaskId))
        cells.push_back(line.task->GetEffectiveTaskId());
    cells.push_back(TaskDescription(line.task));
    if (Shown(kExpenseType))
        cells.push_back(ExpenseTypeName(entry));
    if (Shown(kPaymentMethod))
        cells.push_back(PaymentMethodName(entry));
    if (Shown(kMileage))
        cells.push_back(DistanceText(entry));
    if (Shown(kMileageRate))
        cells.push_back(MileageRateText(entry, true));
    cells.push_back(m_app.FormatCurrency(entry.m_amount));
    return cells;
}

std::vector<std::string> CExpenseDetailOutput::TextBlocks(const Line& line) const
{
    if (!Shown(kNote))
        return {};
    return {line.entry->m_note};
}

std::vector<std::string> CExpenseDetailOutput::TotalCells(const std::string& key) const
{
    std::vector<std::string> cells(PageColumns().size(), std::string());
    cells.back() = m_app.FormatCurrency(GetAmountTotal(key));
    return cells;
}

void CExpenseDetailOutput::ExportHead(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    std::string line = form.Quoted(RootLevelName()) + form.separator;
    auto field = [&](const char* title) { line += form.Quoted(title) + form.separator; };
    field("Date");
    if (Shown(kTaskId))
        field("TaskID");
    field("QuorvaneTaskID");
    field("TaskDescription");
    if (Shown(kExpenseType))
        field("ExpenseType");
    if (Shown(kPaymentMethod))
        field("PaymentMethod");
    if (Shown(kMileage))
        field("Milage");
    if (Shown(kMileageRate))
        field("MileageRate");
    line += form.Quoted("Amount");
    if (Shown(kNote))
        line += form.separator + form.Quoted("Note");
    file.WriteString(line + "\n");
}

void CExpenseDetailOutput::ExportRows(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    const std::string rootName = RootTaskName();
    for (const Line& l : m_lines)
    {
        const CExpenseEntry& entry = static_cast<const CExpenseEntry&>(*l.entry);
        std::string line = form.Quoted(rootName) + form.separator;
        auto field = [&](const std::string& value) { line += form.Quoted(value) + form.separator; };
        field(m_app.FormatShortDate(l.day->GetDate()));
        if (Shown(kTaskId))
            field(l.task->GetEffectiveTaskId());
        field(std::to_string(l.task->m_id));
        field(l.task->m_name);
        if (Shown(kExpenseType))
            field(ExpenseTypeName(entry));
        if (Shown(kPaymentMethod))
            field(PaymentMethodName(entry));
        if (Shown(kMileage))
            field(DistanceText(entry));
        if (Shown(kMileageRate))
            field(MileageRateText(entry, false));
        line += form.Quoted(m_app.FormatNumber(entry.m_amount));
        if (Shown(kNote))
            line += form.separator + form.Quoted(FlattenNote(entry.m_note));
        file.WriteString(line + "\n");
    }
}

int CExpenseDetailOutput::HtmlColumns() const
{
    return 2 + (Shown(kTaskId) ? 1 : 0) + (Shown(kExpenseType) ? 1 : 0) +
           (Shown(kPaymentMethod) ? 1 : 0) + (Shown(kMileage) ? 1 : 0) + (Shown(kMileageRate) ? 1 : 0);
}

void CExpenseDetailOutput::HtmlTable(CExportFile& file)
{
    if (m_lines.empty())
        return;
    const int columns = HtmlColumns();
    const int leading = Shown(kTaskId) ? 1 : 0;
    for (size_t i = 0; i < m_lines.size(); ++i)
    {
        const Line& l = m_lines[i];
        const CExpenseEntry& entry = static_cast<const CExpenseEntry&>(*l.entry);
        if (OpensGroup(i))
            WriteHtmlHeading(file, columns, l.heading);

        file.WriteString("<TR>");
        if (Shown(kTaskId))
            WriteHtmlCell(file, "<TD NOWRAP>", l.task->GetEffectiveTaskId());
        WriteHtmlCell(file, "<TD NOWRAP>", TaskDescription(l.task));
        if (Shown(kExpenseType))
            WriteHtmlCell(file, "<TD NOWRAP>", ExpenseTypeName(entry));
        if (Shown(kPaymentMethod))
            WriteHtmlCell(file, "<TD NOWRAP>", PaymentMethodName(entry));
        if (Shown(kMileage))
            WriteHtmlCell(file, "<TD NOWRAP>", DistanceText(entry));
        if (Shown(kMileageRate))
            WriteHtmlCell(file, "<TD ALIGN=RIGHT NOWRAP>", MileageRateText(entry, true));
        WriteHtmlCell(file, "<TD ALIGN=RIGHT>", m_app.FormatCurrency(entry.m_amount));
        file.WriteString("</TR>");
        file.WriteString("\n");

        if (Shown(kNote) && !entry.m_note.empty())
            WriteHtmlSpanRow(file, leading, columns, entry.m_note);

        if (ClosesGroup(i))
            WriteHtmlSubtotal(file, columns - 1, {m_app.FormatCurrency(GetAmountTotal(l.groupKey))});
    }

    WriteHtmlTotal(file, columns, columns - 1, {m_app.FormatCurrency(GetAmountTotal(kTotalKey))});
}

} // namespace reports
