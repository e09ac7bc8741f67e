#include "reports/summaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "reports/daterange.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>

namespace reports
{

namespace
{
constexpr uint32_t kTaskId = 0x1;
constexpr uint32_t kRate = 0x10;
constexpr uint32_t kEstimates = 0x100;

std::string Lower(std::string_view s)
{
    std::string out(s);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

bool LessNoCase(const std::string& a, const std::string& b) { return Lower(a) < Lower(b); }

std::string Nbsp(const std::string& value) { return value.empty() ? std::string("&nbsp") : value; }

// Cuts a text from its end until it fits; names are clipped to their column.
std::string ClipToWidth(const Canvas& canvas, const std::string& text, int width)
{
    std::string cut = text;
    while (!cut.empty() && canvas.TextWidth(cut) > width)
    {
        size_t start = cut.size() - 1;
        while (start > 0 && (static_cast<unsigned char>(cut[start]) & 0xC0) == 0x80)
            --start;
        cut.erase(start);
    }
    return cut;
}
} // namespace

bool CSummaryOutput::PrepareReportData()
{
    ReleaseReportData();
    ResolveRange();
    for (uint32_t id : m_report.m_selectedTasks)
        if (const CTask* task = m_doc.GetTask(id))
            m_selected.push_back(task);
    for (const auto& [id, task] : m_doc.m_tasks)
        m_inclusion[id] = IsCovered(task.get()) ? 1 : 0;

    const int32_t level = m_report.m_summarizeLevel;
    if (level >= 0)
        BuildTaskRows();
    else if (level == CReport::groupTaskId)
        BuildTaskIdRows();
    else
        BuildCatalogRows();
    BuildPeriods();
    BeginGather();
    Gather();
    if (level >= 0)
        BuildTreeOrder();
    if (!ShowEmptyRows())
        RemoveEmptyRows();
    ComputeTopDepth();
    return true;
}

void CSummaryOutput::ReleaseReportData()
{
    m_rows.clear();
    m_order.clear();
    m_periods.clear();
    m_hasTotalPeriod = false;
    m_inclusion.clear();
    m_groupNames.clear();
    m_textKeys.clear();
    m_taskIdTexts.clear();
    m_taskIdNames.clear();
    m_selected.clear();
    m_unassignedKey = 0;
}

bool CSummaryOutput::IsCovered(const CTask* task) const
{
    for (const CTask* selected : m_selected)
        if (task->IsSelfOrDescendantOf(selected))
            return true;
    return false;
}

CSummaryRow* CSummaryOutput::CreateRow(int64_t key, const CTask* task)
{
    std::unique_ptr<CSummaryRow> row = NewRow();
    row->m_task = task;
    CSummaryRow* raw = row.get();
    m_rows[key] = std::move(row);
    return raw;
}

void CSummaryOutput::BuildTaskRows()
{
    const int32_t level = m_report.m_summarizeLevel;
    for (const auto& [id, task] : m_doc.m_tasks)
        if (m_inclusion[id] == 1 && task->m_level <= level)
            CreateRow(id, task.get());
    // A selected task below the level is summarized in the ancestor at the level.
    for (const CTask* selected : m_selected)
    {
        if (selected->m_level <= level)
            continue;
        const CTask* ancestor = selected->m_parent;
        while (ancestor && ancestor->m_level > level)
            ancestor = ancestor->m_parent;
        if (ancestor && !m_rows.count(ancestor->m_id))
        {
            CreateRow(ancestor->m_id, ancestor);
            m_inclusion[ancestor->m_id] = 2;
        }
    }
    if (ShowTotals())
        CreateRow(kTotalKey, nullptr);
}

void CSummaryOutput::AddSelectedTaskRow()
{
    if (m_selected.empty())
        return;
    const CTask* first = m_selected.front();
    CreateRow(first->m_id, first);
    m_order.push_back(first->m_id);
}

void CSummaryOutput::BuildCatalogRows()
{
    AddSelectedTaskRow();
    std::vector<std::pair<uint32_t, std::string>> records;
    switch (m_report.m_summarizeLevel)
    {
    case CReport::groupActivity:
        for (const auto& [id, r] : m_doc.m_activities)
            records.emplace_back(id, r->m_name);
        break;
    case CReport::groupExpenseType:
        for (const auto& [id, r] : m_doc.m_expenseTypes)
            records.emplace_back(id, r->m_name);
        break;
    case CReport::groupPaymentMethod:
        for (const auto& [id, r] : m_doc.m_paymentMethods)
            records.emplace_back(id, r->m_name);
        break;
    default: break;
    }
    // Each name goes before the first listed name that sorts after it.
    std::vector<std::pair<uint32_t, std::string>> ordered;
    uint32_t largest = 0;
    for (const auto& record : records)
    {
        auto it = std::find_if(ordered.begin(), ordered.end(),
                               [&](const auto& listed) { return LessNoCase(record.second, listed.second); });
        ordered.insert(it, record);
        largest = std::max(largest, record.first);
    }
    for (const auto& [id, name] : ordered)
    {
        const int64_t key = -static_cast<int64_t>(id);
        CreateRow(key, nullptr);
        m_groupNames[key] = name;
        m_order.push_back(key);
    }
    m_unassignedKey = -(static_cast<int64_t>(largest) + 1);
    CreateRow(m_unassignedKey, nullptr);
    m_order.push_back(m_unassignedKey);
    if (ShowTotals())
    {
        CreateRow(kTotalKey, nullptr);
        m_order.push_back(kTotalKey);
    }
}

void CSummaryOutput::BuildTaskIdRows()
{
    AddSelectedTaskRow();
    // Texts equal apart from case share a row; the representative is the covered
    // task of the smallest level, then of the first name.
    std::map<std::string, const CTask*> groups;
    for (const auto& [id, task] : m_doc.m_tasks)
    {
        if (m_inclusion[id] != 1)
            continue;
        const std::string& text = task->GetEffectiveTaskId();
        if (text.empty())
            continue;
        const CTask*& representative = groups[Lower(text)];
        if (!representative || task->m_level < representative->m_level ||
            (task->m_level == representative->m_level && task->m_name < representative->m_name))
            representative = task.get();
    }
    int64_t index = 0;
    for (const auto& [lower, representative] : groups)
    {
        const int64_t key = -(++index);
        // A text row stands for every task with its text: it has no task of its own.
        CreateRow(key, nullptr);
        m_groupNames[key] = representative->m_name;
        m_textKeys[lower] = key;
        m_taskIdTexts.push_back(representative->GetEffectiveTaskId());
        m_taskIdNames.push_back(representative->m_name);
        m_order.push_back(key);
    }
    m_unassignedKey = -(index + 1);
    CreateRow(m_unassignedKey, nullptr);
    m_order.push_back(m_unassignedKey);
    if (ShowTotals())
    {
        CreateRow(kTotalKey, nullptr);
        m_order.push_back(kTotalKey);
    }
}

void CSummaryOutput::BuildPeriods()
{
    const uint32_t frame = m_report.m_timeFrame;
    const CDateTime limit = m_range.end.AddDays(1);
    CDateTime lastEnd(0.0, CDateTime::valid);
    for (CDateTime d = m_range.start; d < limit; d = StepDayForward(d))
    {
        d = d.DatePart();
        if (!(d > lastEnd))
            continue;
        m_periods.emplace_back(frame, d, m_range.end, m_app.GetWeekStart());
        lastEnd = m_periods.back().GetEnd();
        // The days up to the period's end would all be skipped.
        d = lastEnd;
    }
    if (ShowTotals() && frame != CReport::frameTotal && m_report.m_preset != CReport::today &&
        m_report.m_preset != CReport::yesterday)
    {
        m_periods.emplace_back();
        m_hasTotalPeriod = true;
    }
    for (auto& [key, row] : m_rows)
        row->AddPeriods(m_periods.size());
}

void CSummaryOutput::Gather()
{
    // Entries reach their rows through flat indexes by task id, made once here.
    uint32_t largest = 0;
    for (const auto& [id, inclusion] : m_inclusion)
        largest = std::max(largest, id);
    m_taskInclusion.assign(largest + 1, 0);
    m_taskRows.assign(largest + 1, nullptr);
    for (const auto& [id, inclusion] : m_inclusion)
        m_taskInclusion[id] = static_cast<int8_t>(inclusion);
    for (auto& [key, row] : m_rows)
        if (key > 0 && static_cast<uint64_t>(key) <= largest)
            m_taskRows[static_cast<size_t>(key)] = row.get();
    const auto total = m_rows.find(kTotalKey);
    m_totalRow = ShowTotals() && total != m_rows.end() ? total->second.get() : nullptr;

    const size_t count = m_periods.size() - (m_hasTotalPeriod ? 1 : 0);
    size_t period = 0;
    for (CDateTime d = m_range.start; d <= m_range.end; d = StepDayForward(d))
    {
        while (period < count && m_periods[period].GetEnd() < d)
            ++period;
        if (period >= count)
            break;
        if (const CDay* day = FindDay(d))
            GatherDay(*day, period);
    }
    m_taskInclusion.clear();
    m_taskRows.clear();
    m_totalRow = nullptr;
}

bool CSummaryOutput::BillingFilterActive() const
{
    return !(m_report.m_includeBillable && m_report.m_includeNonBillable);
}

bool CSummaryOutput::PassesBillingFilter(bool billable) const
{
    return (m_report.m_includeBillable && billable) || (m_report.m_includeNonBillable && !billable);
}

const CTask* CSummaryOutput::AcceptedTask(const CTimeEntry& entry) const
{
    const CTask* task = FindTask(entry.m_taskId);
    if (!task || (BillingFilterActive() && !PassesBillingFilter(entry.IsEffectiveBillable(*task))) ||
        !PassesIdFilter(m_report.m_selectedActivities, entry.m_activityId))
        return nullptr;
    return task;
}

const CTask* CSummaryOutput::AcceptedTask(const CExpenseEntry& entry) const
{
    const CTask* task = FindTask(entry.m_taskId);
    if (!task || (BillingFilterActive() && !PassesBillingFilter(entry.m_billable)) ||
        !PassesIdFilter(m_report.m_selectedExpenseTypes, entry.m_expenseTypeId) ||
        !PassesIdFilter(m_report.m_selectedPaymentMethods, entry.m_paymentMethodId))
        return nullptr;
    return task;
}

void CSummaryOutput::BeginGather() { m_runningEnd = m_doc.RunningEnd(); }

bool CSummaryOutput::PassesIdFilter(const std::vector<uint32_t>& ids, uint32_t id) const
{
    return IdFilterIsAll(ids) || IdFilterHas(ids, id);
}

int64_t CSummaryOutput::GroupRowKey(const CTask* task, uint32_t catalogId) const
{
    switch (m_report.m_summarizeLevel)
    {
    case CReport::groupTaskId:
    {
        const auto it = m_textKeys.find(Lower(task->GetEffectiveTaskId()));
        return it == m_textKeys.end() ? m_unassignedKey : it->second;
    }
    case CReport::groupActivity:
    case CReport::groupExpenseType:
    case CReport::groupPaymentMethod:
    {
        const int64_t key = -static_cast<int64_t>(catalogId);
        return catalogId != 0 && m_rows.count(key) ? key : m_unassignedKey;
    }
    default: return 0;
    }
}

const std::vector<CSummaryOutput::Target>& CSummaryOutput::FindTargets(const CTask* task, int64_t groupKey)
{
    m_targets.clear();
    if (task->m_id >= m_taskInclusion.size() || m_taskInclusion[task->m_id] != 1)
        return m_targets;

    if (IsGrouping())
    {
        const auto it = m_rows.find(groupKey);
        if (it != m_rows.end())
        {
            // The first selected task's row heads the grouping rows but takes no
            // entries: it stays empty.
            m_targets.push_back(Target{it->second.get(), true});
            it->second->m_empty = false;
        }
    }
    else
    {
        for (const CTask* t = task; t; t = t->m_parent)
        {
            CSummaryRow* row = t->m_id < m_taskRows.size() ? m_taskRows[t->m_id] : nullptr;
            if (!row)
                continue;
            if (Rollup() || m_targets.empty())
                m_targets.push_back(Target{row, true});
            row->m_empty = false;
        }
    }

    if (m_totalRow && !m_targets.empty())
        m_targets.push_back(Target{m_totalRow, false});
    return m_targets;
}

std::vector<std::string> CSummaryOutput::CellTexts(const CSummaryRow& row, size_t period, TextUse use) const
{
    std::vector<std::string> texts;
    GetCellTexts(row, period, use, texts);
    return texts;
}

void CSummaryOutput::BuildTreeOrder()
{
    std::vector<const CTask*> stack;
    if (const CTask* root = m_doc.GetRootTask())
        stack.push_back(root);
    while (!stack.empty())
    {
        const CTask* task = stack.back();
        stack.pop_back();
        if (m_rows.count(task->m_id))
            m_order.push_back(task->m_id);
        for (auto it = task->m_children.rbegin(); it != task->m_children.rend(); ++it)
            stack.push_back(*it);
    }
    if (ShowTotals())
        m_order.push_back(kTotalKey);
}

void CSummaryOutput::RemoveEmptyRows()
{
    for (size_t i = m_order.size(); i-- > 0;)
    {
        const int64_t key = m_order[i];
        if (key == kTotalKey)
            continue;
        const auto it = m_rows.find(key);
        if (it != m_rows.end() && it->second->m_empty)
        {
            m_rows.erase(it);
            m_order.erase(m_order.begin() + static_cast<long>(i));
        }
    }
}

void CSummaryOutput::ComputeTopDepth()
{
    int top = 9999;
    for (int64_t key : m_order)
        if (key > 0)
            if (const CTask* task = RowTask(key))
                top = std::min(top, task->GetDepth());
    m_topDepth = top == 9999 ? m_report.m_summarizeLevel : top;
}

const CSummaryRow* CSummaryOutput::GetRow(int64_t key) const
{
    const auto it = m_rows.find(key);
    return it == m_rows.end() ? nullptr : it->second.get();
}

const CTask* CSummaryOutput::RowTask(int64_t key) const
{
    const CSummaryRow* row = GetRow(key);
    return row ? row->m_task : nullptr;
}

std::string CSummaryOutput::RowName(int64_t key) const
{
    if (key == kTotalKey)
        return "TOTAL";
    if (key > 0)
    {
        const CTask* task = RowTask(key);
        return task ? task->m_name : std::string();
    }
    const auto it = m_groupNames.find(key);
    return it == m_groupNames.end() ? std::string("**Unassigned**") : it->second;
}

bool CSummaryOutput::IsTaskIdTextRow(int64_t key) const
{
    return m_report.m_summarizeLevel == CReport::groupTaskId && key < 0 && key != m_unassignedKey;
}

std::string CSummaryOutput::RowTaskIdText(int64_t key) const
{
    if (key > 0)
    {
        const CTask* task = RowTask(key);
        return task ? task->GetEffectiveTaskId() : std::string();
    }
    if (IsTaskIdTextRow(key))
    {
        const size_t index = static_cast<size_t>(-key - 1);
        if (index < m_taskIdTexts.size())
            return m_taskIdTexts[index];
    }
    return std::string();
}

std::string CSummaryOutput::RateText(const CSummaryRow& row, TextUse use) const
{
    if (use == TextUse::exportText)
        return row.IsVariousRate() ? std::string("various") : m_app.FormatNumber(row.m_rate);
    return row.GetRateText(m_app);
}

std::string CSummaryOutput::EstimateHours(const CTask& task) const
{
    // The hours estimate is kept in minutes.
    return m_app.GetElapsedText(CTinyElapsedTime::FromMinutes(std::llround(task.m_hoursEstimate)));
}

std::vector<std::string> CSummaryOutput::EstimateTexts(const CTask& task, TextUse) const
{
    return {EstimateHours(task)};
}

std::string CSummaryOutput::TimeFrameTitle() const
{
    switch (m_report.m_timeFrame)
    {
    case CReport::frameYear: return "Year Ending:";
    case CReport::frameMonth: return "Month Ending:";
    case CReport::frameWeek: return "Week Ending:";
    default: return std::string();
    }
}

std::string CSummaryOutput::PeriodTitle(size_t period, TextUse use) const
{
    const CBucket& bucket = m_periods[period];
    if (bucket.IsTotal() || m_report.m_timeFrame == CReport::frameTotal)
        return "Total";
    const CDateTime& end = bucket.GetEnd();
    switch (m_report.m_timeFrame)
    {
    case CReport::frameYear: return end.Format("%Y");
    case CReport::frameMonth: return use == TextUse::print ? m_app.FormatMonthYear(end) : end.Format("%m/%y");
    default: return use == TextUse::print ? m_app.FormatMonthDay(end) : end.Format("%m/%d");
    }
}

std::string CSummaryOutput::HtmlRowName(int64_t key) const
{
    if (key == kTotalKey)
        return "TOTAL";
    if (key < 0)
        return "&nbsp&nbsp " + HtmlEscape(RowName(key));
    std::string name;
    const CTask* task = RowTask(key);
    const int steps = task ? task->GetDepth() - m_topDepth : 0;
    for (int i = 0; i < steps; ++i)
        name += "&nbsp&nbsp";
    return name + " " + HtmlEscape(RowName(key));
}

void CSummaryOutput::ExportHead(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    std::string line;
    auto title = [&](const std::string& t) { line += form.Quoted(t) + form.separator; };
    title(RootLevelName());
    title("Date");
    if (Shown(kTaskId))
        title("TaskID");
    title("QuorvaneTaskID");
    title("TaskDescription");
    if (HasRateColumn() && Shown(kRate))
        title("BillingRate");
    if (Shown(kEstimates))
        for (const std::string& t : EstimateTitles())
            title(t);
    for (const std::string& t : ValueTitles())
        title(t);
    title("ParentQuorvaneTaskID");
    file.WriteString(line + "\n");
}

void CSummaryOutput::ExportRows(CExportFile& file, int format)
{
    const CellForm form = GetCellForm(format);
    const std::string& sep = form.separator;
    const std::string root = form.Quoted(RootTaskName()) + sep;
    const bool withRate = HasRateColumn() && Shown(kRate);
    const size_t estimates = EstimateTitles().size();

    // What a row's lines hold besides the period: the same in every period.
    struct RowText
    {
        const CSummaryRow* row;
        std::string middle; // from the task ID to the estimates
        std::string end;    // the parent's id and the line end
    };
    std::vector<RowText> rows;
    for (int64_t key : m_order)
    {
        if (key == kTotalKey)
            continue;
        const CSummaryRow& row = *m_rows.at(key);
        const CTask* task = row.m_task;
        RowText text{&row, std::string(), std::string()};
        if (Shown(kTaskId))
            text.middle += (task || IsTaskIdTextRow(key) ? form.Quoted(RowTaskIdText(key)) : std::string()) + sep;
        text.middle += (task ? std::to_string(task->m_id) : std::string()) + sep;
        text.middle += form.Quoted(RowName(key));
        if (withRate)
            text.middle += sep + (task ? form.Plain(RateText(row, TextUse::exportText)) : std::string());
        if (Shown(kEstimates))
        {
            const std::vector<std::string> texts =
                task ? EstimateTexts(*task, TextUse::exportText) : std::vector<std::string>(estimates);
            for (const std::string& t : texts)
                text.middle += sep + form.Plain(t);
        }
        text.end = sep;
        if (task && task->m_parent)
            text.end += std::to_string(task->m_parent->m_id);
        text.end += "\n";
        rows.push_back(std::move(text));
    }

    std::string line;
    std::vector<std::string> values;
    for (size_t p = 0; p < m_periods.size(); ++p)
    {
        if (m_periods[p].IsTotal())
            continue;
        const std::string date = form.Plain(m_app.FormatShortDate(m_periods[p].GetEnd())) + sep;
        for (const RowText& row : rows)
        {
            line.assign(root);
            line += date;
            line += row.middle;
            GetCellTexts(*row.row, p, TextUse::exportText, values);
            for (const std::string& value : values)
            {
                line += sep;
                form.AppendQuoted(line, value);
            }
            line += row.end;
            file.WriteString(line);
        }
    }
}

void CSummaryOutput::HtmlHead(CExportFile& file)
{
    CReportOutput::HtmlHead(file);
    file.WriteString("<TABLE BORDER=1 CELLPADDING=2>");
    file.WriteString("\n");
    file.WriteString("<TR>");
    file.WriteString("\n");
    WriteHtmlHeaderRows(file);
}

void CSummaryOutput::WriteHtmlHeaderRows(CExportFile& file)
{
    if (Shown(kTaskId))
        file.WriteString("<TH NOWRAP>Task</TH>");
    file.WriteString("<TH NOWRAP>" + TimeFrameTitle() + "</TH>");
    if (HasRateColumn() && Shown(kRate))
        file.WriteString("<TH NOWRAP>Rate</TH>");
    if (Shown(kEstimates))
        file.WriteString("<TH NOWRAP>Estimate</TH>");
    for (size_t p = 0; p < m_periods.size(); ++p)
        file.WriteString("<TH NOWRAP ALIGN=CENTER>" + PeriodTitle(p, TextUse::html) + "</TH>");
    file.WriteString("</TR>");
    file.WriteString("\n");
}

void CSummaryOutput::HtmlTable(CExportFile& file)
{
    const bool withRate = HasRateColumn() && Shown(kRate);
    const size_t estimates = EstimateTitles().size();
    std::string cells;
    std::vector<std::string> values;
    for (int64_t key : m_order)
    {
        const CSummaryRow& row = *m_rows.at(key);
        const CTask* task = row.m_task;
        file.WriteString("<TR>");
        if (Shown(kTaskId))
            file.WriteString("<TD NOWRAP>" + Nbsp(HtmlEscape(RowTaskIdText(key))) + "</TD>");
        file.WriteString("<TD NOWRAP>" + HtmlRowName(key) + "</TD>");
        const std::string valueCell = HtmlValueCell();
        if (withRate)
            file.WriteString(valueCell + Nbsp(task ? RateText(row, TextUse::html) : std::string()) + "</TD>");
        if (Shown(kEstimates))
        {
            const std::vector<std::string> texts =
                task ? EstimateTexts(*task, TextUse::html) : std::vector<std::string>(estimates);
            for (const std::string& text : texts)
                file.WriteString(valueCell + Nbsp(text) + "</TD>");
        }
        cells.clear();
        for (size_t p = 0; p < m_periods.size(); ++p)
        {
            GetCellTexts(row, p, TextUse::html, values);
            for (const std::string& value : values)
            {
                cells += "<TD ALIGN=RIGHT>";
                cells += value.empty() ? std::string_view("&nbsp") : std::string_view(value);
                cells += "</TD>";
            }
        }
        file.WriteString(cells);
        file.WriteString("</TR>");
        file.WriteString("\n");
    }
}

void CSummaryOutput::HtmlEnd(CExportFile& file)
{
    file.WriteString("</TABLE>");
    file.WriteString("\n");
    CReportOutput::HtmlEnd(file);
}

int CSummaryOutput::NameIndent(int64_t key) const
{
    if (key == kTotalKey)
        return 0;
    if (key < 0)
        return 2 * m_metrics.averageCharWidth;
    const CTask* task = RowTask(key);
    const int steps = task ? std::max(0, task->GetDepth() - m_topDepth) : 0;
    return 2 * m_metrics.averageCharWidth * steps;
}

bool CSummaryOutput::IsBoldRow(int64_t key) const
{
    if (key == kTotalKey)
        return true;
    if (!Rollup() || key < 0)
        return false;
    const CTask* task = RowTask(key);
    return task && (IsGrouping() || task->m_level < m_report.m_summarizeLevel);
}

void CSummaryOutput::Layout(Canvas& canvas)
{
    const PrintMetrics& m = m_metrics;
    const int pad = m.cellHorizontalPadding;
    canvas.SelectFont(m.bodyFont);
    auto width = [&](const std::string& s) { return canvas.TextWidth(s); };

    const std::vector<std::string> subTitles = PeriodSubTitles();
    const size_t perPeriod = std::max<size_t>(1, subTitles.size());
    const size_t estimates = EstimateTitles().size();
    const bool withRate = HasRateColumn() && Shown(kRate);
    m_headerRows = perPeriod > 1 || (Shown(kEstimates) && estimates > 1) ? 2 : 1;

    m_fixedColumns.clear();
    if (Shown(kTaskId))
    {
        int w = width("Task");
        for (int64_t key : m_order)
            w = std::max(w, width(RowTaskIdText(key)));
        m_fixedColumns.push_back(PrintColumn{PrintColumn::taskId, w + 2 * pad});
    }
    int nameWidth = std::max({width(TimeFrameTitle()), width("TOTAL"), width("**Unassigned**")});
    for (int64_t key : m_order)
        nameWidth = std::max(nameWidth, NameIndent(key) + width(RowName(key)));
    m_fixedColumns.push_back(PrintColumn{PrintColumn::name, nameWidth + 2 * pad});
    if (withRate)
    {
        int w = width("Rate");
        for (int64_t key : m_order)
            if (const CSummaryRow* row = GetRow(key); row && row->m_task)
                w = std::max(w, width(RateText(*row, TextUse::print)));
        m_fixedColumns.push_back(PrintColumn{PrintColumn::rate, w + 2 * pad});
    }
    if (Shown(kEstimates))
    {
        int w = estimates > 1 ? std::max(width("Time"), width("Cost")) : width("Estimate");
        for (int64_t key : m_order)
            if (const CTask* task = RowTask(key))
                for (const std::string& text : EstimateTexts(*task, TextUse::print))
                    w = std::max(w, width(text));
        m_estimateSubWidth = w + 2 * pad;
        if (estimates > 1)
            m_estimateSubWidth = std::max(m_estimateSubWidth, (width("Estimates") + 2 * pad + 1) / 2);
        m_fixedColumns.push_back(
            PrintColumn{PrintColumn::estimate, m_estimateSubWidth * static_cast<int>(estimates)});
    }

    int sub = width("Total");
    for (const std::string& t : subTitles)
        sub = std::max(sub, width(t));
    int titleWidth = 0;
    for (size_t p = 0; p < m_periods.size(); ++p)
    {
        titleWidth = std::max(titleWidth, width(PeriodTitle(p, TextUse::print)));
        for (int64_t key : m_order)
            for (const std::string& value : CellTexts(*m_rows.at(key), p, TextUse::print))
                sub = std::max(sub, width(value));
    }
    m_subColumnWidth = sub + 2 * pad;
    const int perPeriodInt = static_cast<int>(perPeriod);
    if (m_subColumnWidth * perPeriodInt < titleWidth + 2 * pad)
        m_subColumnWidth = (titleWidth + 2 * pad + perPeriodInt - 1) / perPeriodInt;

    // Narrow the name column so that at least one period column fits.
    int others = m_subColumnWidth * perPeriodInt;
    for (const PrintColumn& column : m_fixedColumns)
        if (column.kind != PrintColumn::name)
            others += column.width;
    for (PrintColumn& column : m_fixedColumns)
        if (column.kind == PrintColumn::name && column.width + others > m.pageWidth)
            column.width = std::max(2 * pad, m.pageWidth - others);
}

void CSummaryOutput::BeginPrinting(Canvas& canvas)
{
    CReportOutput::BeginPrinting(canvas);
    PrintMetrics& m = m_metrics;
    // A second header row (sub-column titles) takes the place of one data row.
    m.rowsPerPage = std::max(1, m.rowsPerPage - (m_headerRows - 1));

    int fixed = 0;
    for (const PrintColumn& column : m_fixedColumns)
        fixed += column.width;
    const int unit = m_subColumnWidth * static_cast<int>(std::max<size_t>(1, PeriodSubTitles().size()));
    // A page too narrow for any period column still shows one.
    m_periodsPerPage = unit > 0 ? std::max(1, (m.pageWidth - fixed) / unit) : 1;
    const int rows = static_cast<int>(m_order.size());
    m_rowPages = std::max(1, (rows + m.rowsPerPage - 1) / m.rowsPerPage);
    const int periods = static_cast<int>(m_periods.size());
    m_columnPages = periods == 0 ? 1 : (periods + m_periodsPerPage - 1) / m_periodsPerPage;
}

int CSummaryOutput::PageCount(Canvas&) { return std::max(1, m_columnPages * m_rowPages); }

void CSummaryOutput::PageHeader(Canvas& canvas, int page)
{
    DrawTitleLine(canvas, page);
    const PrintMetrics& m = m_metrics;
    const int row = m.RowHeight();
    const size_t firstPeriod = static_cast<size_t>((page - 1) / m_rowPages * m_periodsPerPage);
    const size_t endPeriod = std::min(m_periods.size(), firstPeriod + static_cast<size_t>(m_periodsPerPage));
    const std::vector<std::string> subTitles = PeriodSubTitles();
    const size_t perPeriod = std::max<size_t>(1, subTitles.size());
    const int y = ColumnTitleTop();
    const int y2 = y + row;

    canvas.SelectFont(m.titleFont);
    auto centred = [&](int x, int w, int top, const std::string& text) {
        canvas.DrawText(x + (w - canvas.TextWidth(text)) / 2, top, text);
    };
    int x = m.left;
    for (const PrintColumn& column : m_fixedColumns)
    {
        switch (column.kind)
        {
        case PrintColumn::taskId: centred(x, column.width, y, "Task"); break;
        case PrintColumn::name: centred(x, column.width, y, TimeFrameTitle()); break;
        case PrintColumn::rate: centred(x, column.width, y, "Rate"); break;
        case PrintColumn::estimate:
            if (column.width > m_estimateSubWidth)
            {
                centred(x, column.width, y, "Estimates");
                centred(x, m_estimateSubWidth, y2, "Time");
                centred(x + m_estimateSubWidth, m_estimateSubWidth, y2, "Cost");
            }
            else
                centred(x, column.width, y, "Estimate");
            break;
        }
        x += column.width;
    }
    for (size_t p = firstPeriod; p < endPeriod; ++p)
    {
        const int unit = m_subColumnWidth * static_cast<int>(perPeriod);
        centred(x, unit, y, PeriodTitle(p, TextUse::print));
        for (size_t s = 0; s < subTitles.size(); ++s)
            centred(x + static_cast<int>(s) * m_subColumnWidth, m_subColumnWidth, y2, subTitles[s]);
        x += unit;
    }
}

void CSummaryOutput::PageBody(Canvas& canvas, int page)
{
    const PrintMetrics& m = m_metrics;
    const int row = m.RowHeight();
    const int pad = m.cellHorizontalPadding;
    const int rowPage = (page - 1) % m_rowPages;
    const size_t firstRow = static_cast<size_t>(rowPage * m.rowsPerPage);
    const size_t endRow = std::min(m_order.size(), firstRow + static_cast<size_t>(m.rowsPerPage));
    const size_t firstPeriod = static_cast<size_t>((page - 1) / m_rowPages * m_periodsPerPage);
    const size_t endPeriod = std::min(m_periods.size(), firstPeriod + static_cast<size_t>(m_periodsPerPage));
    const size_t perPeriod = std::max<size_t>(1, PeriodSubTitles().size());
    const int tableTop = m.top + m.lineHeight + m.cellVerticalPadding;
    int y = m.top + m.lineHeight + m_headerRows * row;

    auto right = [&](int x, int w, int top, const std::string& text) {
        canvas.DrawText(x + w - pad - canvas.TextWidth(text), top, text);
    };
    for (size_t i = firstRow; i < endRow; ++i)
    {
        const int64_t key = m_order[i];
        const CSummaryRow& r = *m_rows.at(key);
        const int top = y + m.cellVerticalPadding;
        const bool bold = IsBoldRow(key);
        canvas.SelectFont(bold ? m.titleFont : m.bodyFont);
        int x = m.left;
        for (const PrintColumn& column : m_fixedColumns)
        {
            switch (column.kind)
            {
            case PrintColumn::taskId:
                canvas.DrawText(x + pad, top, RowTaskIdText(key));
                break;
            case PrintColumn::name:
            {
                const int indent = NameIndent(key);
                canvas.DrawText(x + pad + indent, top,
                                ClipToWidth(canvas, RowName(key), column.width - 2 * pad - indent));
                break;
            }
            case PrintColumn::rate:
                if (r.m_task)
                    right(x, column.width, top, RateText(r, TextUse::print));
                break;
            case PrintColumn::estimate:
                if (r.m_task)
                {
                    int ex = x;
                    for (const std::string& text : EstimateTexts(*r.m_task, TextUse::print))
                    {
                        right(ex, m_estimateSubWidth, top, text);
                        ex += m_estimateSubWidth;
                    }
                }
                break;
            }
            x += column.width;
        }
        for (size_t p = firstPeriod; p < endPeriod; ++p)
        {
            canvas.SelectFont(bold || m_periods[p].IsTotal() ? m.titleFont : m.bodyFont);
            for (const std::string& value : CellTexts(r, p, TextUse::print))
            {
                if (!value.empty())
                    right(x, m_subColumnWidth, top, value);
                x += m_subColumnWidth;
            }
        }
        y += m.lineHeight + m.cellVerticalPadding;
    }
    const int bottom = y + m.cellVerticalPadding;

    // Rules: heavy around the table and before the total column, light elsewhere.
    int x = m.left;
    int tableRight = x;
    for (const PrintColumn& column : m_fixedColumns)
        tableRight += column.width;
    tableRight += static_cast<int>(endPeriod - firstPeriod) * m_subColumnWidth * static_cast<int>(perPeriod);
    canvas.DrawLine(m.left, tableTop, tableRight, tableTop, m.heavyPen);
    const int headerBottom = m.top + m.lineHeight + m_headerRows * row;
    canvas.DrawLine(m.left, headerBottom, tableRight, headerBottom, m.lightPen);
    canvas.DrawLine(m.left, bottom, tableRight, bottom, m.heavyPen);
    canvas.DrawLine(x, tableTop, x, bottom, m.heavyPen);
    for (const PrintColumn& column : m_fixedColumns)
    {
        x += column.width;
        canvas.DrawLine(x, tableTop, x, bottom, m.lightPen);
    }
    for (size_t p = firstPeriod; p < endPeriod; ++p)
    {
        if (m_periods[p].IsTotal())
            canvas.DrawLine(x, tableTop, x, bottom, m.heavyPen);
        for (size_t s = 0; s < perPeriod; ++s)
        {
            x += m_subColumnWidth;
            canvas.DrawLine(x, tableTop, x, bottom, m.lightPen);
        }
    }
    canvas.DrawLine(tableRight, tableTop, tableRight, bottom, m.heavyPen);
}

} // namespace reports
