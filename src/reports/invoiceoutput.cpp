#include "reports/invoiceoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "platform/prompter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unordered_set>

namespace reports
{

namespace
{
constexpr uint32_t kTaskId = 0x1;
constexpr uint32_t kRate = 0x10;

std::string Nbsp(const std::string& value) { return value.empty() ? std::string("&nbsp") : value; }

// The lines of a multi-line text, whatever its line ends.
std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::string line;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '\r' || text[i] == '\n')
        {
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                ++i;
            lines.push_back(line);
            line.clear();
        }
        else
            line += text[i];
    }
    if (!line.empty())
        lines.push_back(line);
    return lines;
}
} // namespace

double RoundToCents(double amount)
{
    // Amounts reach here as sums and products of binary fractions: 2.675 may be
    // 2.67499999... A nudge far below a cent lets such a half round away from zero.
    const double cents = amount * 100.0;
    const double nudge = std::max(1e-9, std::abs(cents) * 1e-12);
    return std::round(cents + std::copysign(nudge, cents)) / 100.0;
}

std::string NumberInvoice(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app,
                          platform::Prompter& prompter)
{
    if (report.m_numberMode == 0)
    {
        bool replace = true;
        if (report.m_invoiceNumber != 0)
            replace = prompter.AskYesNo(platform::LoadString(41037)) == platform::Answer::yes;
        if (replace)
        {
            const int next = app.GetInvoiceNumber();
            {
                std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
                report.m_invoiceNumber = next;
            }
            doc.SetModifiedFlag();
            app.SetInvoiceNumber(next + 1);
        }
    }
    char text[16];
    std::snprintf(text, sizeof text, "%d", report.m_invoiceNumber);
    doc.UpdateAllViews(hintReports);
    return text;
}

bool CInvoiceOutput::PrepareReportData()
{
    CTimeExpenseSummaryOutput::PrepareReportData();
    char text[16];
    std::snprintf(text, sizeof text, "%d", m_report.m_invoiceNumber);
    m_numberText = text;
    BuildItems();
    m_taxAmount = m_report.m_addTax ? RoundToCents(m_report.m_taxRate / 100.0 * TotalItem().billing) : 0.0;
    return true;
}

void CInvoiceOutput::ReleaseReportData()
{
    CTimeExpenseSummaryOutput::ReleaseReportData();
    m_items.clear();
    m_printRows.clear();
    m_taxAmount = 0.0;
    m_numberText.clear();
}

double CInvoiceOutput::GetAmountDue() const
{
    if (m_items.empty())
        return 0.0;
    return RoundToCents(TotalItem().billing + TotalItem().expenses + m_taxAmount);
}

void CInvoiceOutput::BuildItems()
{
    m_items.clear();
    CInvoiceItem total;
    for (size_t p = 0; p < m_periods.size(); ++p)
    {
        if (m_periods[p].IsTotal())
            continue;
        const CDateTime date = m_periods[p].GetEnd();
        std::vector<CInvoiceItem> lines;
        std::unordered_set<uint32_t> withLine;
        for (int64_t key : m_order)
        {
            const auto& row = static_cast<const CTimeExpenseSummary&>(*GetRow(key));
            if (p >= row.m_timeCells.size() || (row.m_timeCells[p].IsZero() && row.m_amountCells[p] == 0.0))
                continue;
            CInvoiceItem item;
            item.date = date;
            item.task = row.m_task ? row.m_task->m_id : 0;
            item.group = key < 0 ? static_cast<int32_t>(key) : 0;
            // Each line is rounded to cents as printed; the total adds up the
            // rounded lines, so that the invoice adds up to the cent.
            item.expenses = RoundToCents(row.m_amountCells[p]);
            item.rate = row.m_periodRates[p];
            item.billing = RoundToCents(row.m_costCells[p]);
            item.time = row.m_timeCells[p];
            total.time += item.time;
            total.billing = RoundToCents(total.billing + item.billing);
            total.expenses = RoundToCents(total.expenses + item.expenses);

            const size_t at = lines.size();
            lines.push_back(item);
            if (key <= 0)
                continue;
            withLine.insert(row.m_task->m_id);
            // Headings for the ancestors that are rows without a line of their own in
            // this period; each goes in at the same place, so the farthest comes first.
            for (const CTask* ancestor = row.m_task->m_parent; ancestor && GetRow(ancestor->m_id);
                 ancestor = ancestor->m_parent)
            {
                if (withLine.count(ancestor->m_id))
                    continue;
                CInvoiceItem heading;
                heading.date = date;
                heading.task = ancestor->m_id;
                heading.rate = ancestor->GetEffectiveRate();
                lines.insert(lines.begin() + static_cast<long>(at), heading);
                withLine.insert(ancestor->m_id);
            }
        }
        m_items.insert(m_items.end(), lines.begin(), lines.end());
    }
    total.date = CDateTime::Null();
    m_items.push_back(total);
}

std::string CInvoiceOutput::ItemTaskIdText(const CInvoiceItem& item) const
{
    if (item.IsTotal())
        return std::string();
    if (item.group < 0)
    {
        const size_t n = static_cast<size_t>(-static_cast<int64_t>(item.group));
        return n <= TaskIdTexts().size() ? TaskIdTexts()[n - 1] : std::string();
    }
    const CTask* task = m_doc.GetTask(item.task);
    return task ? task->GetEffectiveTaskId() : std::string();
}

std::string CInvoiceOutput::ItemDescription(const CInvoiceItem& item) const
{
    if (item.IsTotal())
        return "TOTAL";
    if (item.group < 0)
    {
        const size_t n = static_cast<size_t>(-static_cast<int64_t>(item.group));
        return n <= TaskIdNames().size() ? TaskIdNames()[n - 1] : std::string("**Unassigned**");
    }
    const CTask* task = m_doc.GetTask(item.task);
    return task ? task->m_name : std::string("**Unassigned**");
}

int CInvoiceOutput::IndentSteps(const CInvoiceItem& item) const
{
    if (item.IsTotal() || item.group < 0)
        return 0;
    const CTask* task = m_doc.GetTask(item.task);
    return task ? std::max(0, task->GetDepth() - GetTopDepth()) : 0;
}

std::string CInvoiceOutput::ItemRate(const CInvoiceItem& item, Use use) const
{
    if (item.IsTotal())
        return std::string();
    if (item.rate < 0.0)
        return "various";
    // A line of expenses only has no rate to show.
    if (item.rate == 0.0 && item.time.IsZero())
        return std::string();
    return use == Use::exportText ? m_app.FormatNumber(item.rate) : m_app.FormatCurrency(item.rate);
}

std::string CInvoiceOutput::ItemMoney(const CInvoiceItem& item, double amount, Use use) const
{
    if (use == Use::exportText)
        return m_app.FormatNumber(amount);
    // Zero amounts stay blank on the lines; the total shows them.
    if (amount == 0.0 && !item.IsTotal())
        return std::string();
    return m_app.FormatCurrency(amount);
}

std::string CInvoiceOutput::TaxRateText() const
{
    char text[64];
    std::snprintf(text, sizeof text, "%g%%", m_report.m_taxRate);
    return text;
}

std::string CInvoiceOutput::FirstColumnTitle() const
{
    switch (m_report.m_timeFrame)
    {
    case CReport::frameDay: return "Date";
    case CReport::frameYear:
    case CReport::frameMonth:
    case CReport::frameWeek: return "Ending";
    default: return std::string();
    }
}

std::vector<std::string> CInvoiceOutput::AddressLines() const { return SplitLines(m_app.GetInvoiceAddress()); }

std::vector<std::string> CInvoiceOutput::RecipientLines() const { return SplitLines(m_report.m_recipient); }

void CInvoiceOutput::ExportHead(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    std::vector<std::string> titles{RootLevelName(), "Date"};
    if (Shown(kTaskId))
        titles.push_back("TaskID");
    titles.push_back("QuorvaneTaskID");
    titles.push_back("TaskDescription");
    if (Shown(kRate))
        titles.push_back("BillingRate");
    titles.insert(titles.end(), {"Time", "Billing", "Expenses"});
    std::string line;
    for (size_t i = 0; i < titles.size(); ++i)
        line += (i ? form.separator : std::string()) + form.Quoted(titles[i]);
    file.WriteString(line + "\n");
}

void CInvoiceOutput::ExportRows(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    const std::string root = form.Quoted(RootTaskName());
    for (const CInvoiceItem& item : m_items)
    {
        std::string line = root;
        auto field = [&](const std::string& value) { line += form.separator + form.Quoted(value); };
        field(item.IsTotal() ? std::string() : m_app.FormatShortDate(item.date));
        if (Shown(kTaskId))
            field(ItemTaskIdText(item));
        field(std::to_string(item.task));
        field(ItemDescription(item));
        if (Shown(kRate))
            field(ItemRate(item, Use::exportText));
        field(m_app.GetElapsedText(item.time));
        field(ItemMoney(item, item.billing, Use::exportText));
        field(ItemMoney(item, item.expenses, Use::exportText));
        file.WriteString(line + "\n");
    }
}

void CInvoiceOutput::HtmlHead(CExportFile& file)
{
    CReportOutput::HtmlHead(file);
    file.WriteString("<H4>");
    file.WriteString("Date: " + m_app.FormatShortDate(m_app.Today()));
    if (m_report.m_invoiceNumber != 0)
        file.WriteString("<BR>Invoice: " + HtmlEscape(m_numberText));
    file.WriteString("<BR><BR>");
    for (const std::string& line : AddressLines())
        file.WriteString(HtmlEscape(line) + "<BR>");
    const std::vector<std::string> recipient = RecipientLines();
    if (!recipient.empty())
    {
        file.WriteString("<BR>");
        for (const std::string& line : recipient)
            file.WriteString(HtmlEscape(line) + "<BR>");
    }
    file.WriteString("<BR>");
    file.WriteString("Due: " + m_app.FormatCurrency(GetAmountDue()));
    if (m_report.m_showTerms)
        file.WriteString("<BR>Terms: " + HtmlEscape(m_report.m_terms));
    file.WriteString("</H4>");
}

void CInvoiceOutput::HtmlTable(CExportFile& file)
{
    file.WriteString("<TABLE BORDER=1 CELLPADDING=2>");
    file.WriteString("\n");
    file.WriteString("<TR>");
    file.WriteString("<TH NOWRAP>Date</TH>");
    if (Shown(kTaskId))
        file.WriteString("<TH NOWRAP>Task</TH>");
    file.WriteString("<TH NOWRAP>Description</TH>");
    if (Shown(kRate))
        file.WriteString("<TH NOWRAP>Rate</TH>");
    file.WriteString("<TH NOWRAP>Time</TH>");
    file.WriteString("<TH NOWRAP>Billing</TH>");
    file.WriteString("<TH NOWRAP>Expenses</TH>");
    file.WriteString("</TR>");

    auto cell = [&](const char* open, const std::string& value) {
        file.WriteString(open);
        file.WriteString(Nbsp(value));
        file.WriteString("</TD>");
    };
    for (const CInvoiceItem& item : m_items)
    {
        if (item.IsTotal() && m_report.m_addTax)
        {
            file.WriteString("<TR>");
            cell("<TD NOWRAP>", std::string());
            if (Shown(kTaskId))
                cell("<TD NOWRAP>", std::string());
            cell("<TD NOWRAP>", "Tax");
            if (Shown(kRate))
                cell("<TD ALIGN=RIGHT NOWRAP>", TaxRateText());
            cell("<TD ALIGN=RIGHT>", std::string());
            cell("<TD ALIGN=RIGHT>", m_app.FormatCurrency(m_taxAmount));
            cell("<TD ALIGN=RIGHT>", std::string());
            file.WriteString("</TR>");
            file.WriteString("\n");
        }
        std::string description = HtmlEscape(ItemDescription(item));
        if (!item.IsTotal() && item.group == 0)
        {
            std::string indent;
            for (int i = IndentSteps(item); i > 0; --i)
                indent += "&nbsp&nbsp";
            description = indent + " " + description;
        }
        file.WriteString("<TR>");
        cell("<TD NOWRAP>", item.IsTotal() ? std::string() : m_app.FormatShortDate(item.date));
        if (Shown(kTaskId))
            cell("<TD NOWRAP>", HtmlEscape(ItemTaskIdText(item)));
        cell("<TD NOWRAP>", description);
        if (Shown(kRate))
            cell("<TD ALIGN=RIGHT NOWRAP>", ItemRate(item, Use::html));
        cell("<TD ALIGN=RIGHT>", m_app.GetElapsedText(item.time));
        cell("<TD ALIGN=RIGHT>", ItemMoney(item, item.billing, Use::html));
        cell("<TD ALIGN=RIGHT>", ItemMoney(item, item.expenses, Use::html));
        file.WriteString("</TR>");
        file.WriteString("\n");
    }
}

std::vector<std::string> CInvoiceOutput::PrintTitles() const
{
    std::vector<std::string> titles{FirstColumnTitle()};
    if (Shown(kTaskId))
        titles.push_back("Task");
    titles.push_back("Description");
    if (Shown(kRate))
        titles.push_back("Rate");
    titles.insert(titles.end(), {"Time", "Billing", "Expenses"});
    return titles;
}

std::vector<CInvoiceOutput::PrintRow> CInvoiceOutput::PrintRows() const
{
    std::vector<PrintRow> rows;
    for (const CInvoiceItem& item : m_items)
    {
        if (item.IsTotal() && m_report.m_addTax)
        {
            PrintRow tax;
            tax.cells.push_back(std::string());
            if (Shown(kTaskId))
                tax.cells.push_back(std::string());
            tax.cells.push_back("Tax");
            if (Shown(kRate))
                tax.cells.push_back(TaxRateText());
            tax.cells.insert(tax.cells.end(), {std::string(), m_app.FormatCurrency(m_taxAmount), std::string()});
            rows.push_back(std::move(tax));
        }
        PrintRow row;
        row.total = item.IsTotal();
        row.indentSteps = IndentSteps(item);
        row.cells.push_back(item.IsTotal() ? std::string() : m_app.FormatShortDate(item.date));
        if (Shown(kTaskId))
            row.cells.push_back(ItemTaskIdText(item));
        row.cells.push_back(ItemDescription(item));
        if (Shown(kRate))
            row.cells.push_back(ItemRate(item, Use::print));
        row.cells.push_back(m_app.GetElapsedText(item.time));
        row.cells.push_back(ItemMoney(item, item.billing, Use::print));
        row.cells.push_back(ItemMoney(item, item.expenses, Use::print));
        rows.push_back(std::move(row));
    }
    return rows;
}

void CInvoiceOutput::Layout(Canvas& canvas)
{
    const PrintMetrics& m = m_metrics;
    const int pad = m.cellHorizontalPadding;
    m_headerFont = m.bodyFont;
    m_headerFont.pointSize = m_report.m_font.PointSize() + 3;
    m_headerFont.weight = 400;
    m_headerBoldFont = m_headerFont;
    m_headerBoldFont.weight = 700;
    canvas.SelectFont(m_headerFont);
    const FontMetrics hm = canvas.GetFontMetrics();
    m_headerLineHeight = hm.height + hm.externalLeading;
    const size_t leftLines = AddressLines().size() + RecipientLines().size();
    const size_t rightLines = m_report.m_showTerms ? 4 : 3;
    // The title line, the two blocks side by side, and a blank row before the table.
    m_headerBlockHeight = m.lineHeight + 2 * m.cellVerticalPadding +
                          static_cast<int>(std::max(leftLines, rightLines)) * m_headerLineHeight + m.RowHeight();

    canvas.SelectFont(m.bodyFont);
    m_printRows = PrintRows();
    const std::vector<std::string> titles = PrintTitles();
    m_descriptionColumn = Shown(kTaskId) ? 2 : 1;
    m_columnWidths.assign(titles.size(), 0);
    for (size_t c = 0; c < titles.size(); ++c)
        m_columnWidths[c] = canvas.TextWidth(titles[c]);
    for (const PrintRow& row : m_printRows)
        for (size_t c = 0; c < row.cells.size() && c < titles.size(); ++c)
            m_columnWidths[c] = std::max(m_columnWidths[c], canvas.TextWidth(row.cells[c]));
    int fixed = 0;
    for (size_t c = 0; c < titles.size(); ++c)
    {
        m_columnWidths[c] += 2 * pad;
        if (c != m_descriptionColumn)
            fixed += m_columnWidths[c];
    }
    m_columnWidths[m_descriptionColumn] = std::max(2 * pad, m.pageWidth - fixed);
}

void CInvoiceOutput::BeginPrinting(Canvas& canvas)
{
    CReportOutput::BeginPrinting(canvas);
    PrintMetrics& m = m_metrics;
    const int row = m.RowHeight();
    m.rowsPerPage = row > 0 ? std::max(1, (m.pageHeight - row - m_headerBlockHeight) / row) : 1;
}

int CInvoiceOutput::PageCount(Canvas&)
{
    const int rows = static_cast<int>(m_printRows.size());
    return std::max(1, (rows + m_metrics.rowsPerPage - 1) / m_metrics.rowsPerPage);
}

void CInvoiceOutput::PageHeader(Canvas& canvas, int page)
{
    DrawTitleLine(canvas, page);
    const PrintMetrics& m = m_metrics;
    const int blockTop = m.top + m.lineHeight + 2 * m.cellVerticalPadding;

    canvas.SelectFont(m_headerFont);
    int y = blockTop;
    std::vector<std::string> left = AddressLines();
    for (const std::string& line : RecipientLines())
        left.push_back(line);
    for (const std::string& line : left)
    {
        canvas.DrawText(m.left, y, line);
        y += m_headerLineHeight;
    }

    std::vector<std::pair<std::string, std::string>> right = {
        {"Invoice: ", m_numberText},
        {"Date: ", m_app.FormatShortDate(m_app.Today())},
        {"Due: ", m_app.FormatCurrency(GetAmountDue())},
    };
    if (m_report.m_showTerms)
        right.push_back({"Terms: ", m_report.m_terms});
    int widest = 0;
    for (const auto& [label, value] : right)
        widest = std::max(widest, canvas.TextWidth(value));
    const int valueX = m.left + m.pageWidth - widest;
    y = blockTop;
    for (const auto& [label, value] : right)
    {
        canvas.SelectFont(m_headerFont);
        canvas.DrawText(valueX, y, value);
        canvas.SelectFont(m_headerBoldFont);
        canvas.DrawText(valueX - canvas.TextWidth(label), y, label);
        y += m_headerLineHeight;
    }

    canvas.SelectFont(m.titleFont);
    const std::vector<std::string> titles = PrintTitles();
    const int titleTop = m.top + m_headerBlockHeight + m.cellVerticalPadding;
    int x = m.left;
    for (size_t c = 0; c < titles.size(); ++c)
    {
        const int w = m_columnWidths[c];
        const bool leftAligned = c <= m_descriptionColumn;
        canvas.DrawText(leftAligned ? x + m.cellHorizontalPadding
                                    : x + w - m.cellHorizontalPadding - canvas.TextWidth(titles[c]),
                        titleTop, titles[c]);
        x += w;
    }
    const int ruleY = m.top + m_headerBlockHeight + m.RowHeight();
    canvas.DrawLine(m.left, ruleY, m.left + m.pageWidth, ruleY, m.heavyPen);
}

void CInvoiceOutput::PageBody(Canvas& canvas, int page)
{
    const PrintMetrics& m = m_metrics;
    const int row = m.RowHeight();
    const int pad = m.cellHorizontalPadding;
    const size_t first = static_cast<size_t>((page - 1) * m.rowsPerPage);
    const size_t end = std::min(m_printRows.size(), first + static_cast<size_t>(m.rowsPerPage));
    int y = m.top + m_headerBlockHeight + row;
    for (size_t i = first; i < end; ++i)
    {
        const PrintRow& r = m_printRows[i];
        if (r.total)
            canvas.DrawLine(m.left, y, m.left + m.pageWidth, y, m.lightPen);
        canvas.SelectFont(r.total ? m.titleFont : m.bodyFont);
        int x = m.left;
        for (size_t c = 0; c < r.cells.size() && c < m_columnWidths.size(); ++c)
        {
            const int w = m_columnWidths[c];
            const std::string& text = r.cells[c];
            if (!text.empty())
            {
                if (c < m_descriptionColumn)
                    canvas.DrawText(x + pad, y + m.cellVerticalPadding, text);
                else if (c == m_descriptionColumn)
                    canvas.DrawText(x + pad + 2 * m.averageCharWidth * r.indentSteps, y + m.cellVerticalPadding,
                                    text);
                else
                    canvas.DrawText(x + w - pad - canvas.TextWidth(text), y + m.cellVerticalPadding, text);
            }
            x += w;
        }
        y += row;
    }
}

} // namespace reports
