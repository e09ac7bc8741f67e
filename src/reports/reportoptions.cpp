#include "reports/reportoptions.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "reports/daterange.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace reports
{

namespace
{
struct Named
{
    const char* keyword;
    const char* label;
    uint32_t value;
};

const Named kKinds[] = {
    {"time-detail", "Time Detail", CReport::timeDetail},
    {"time-summary", "Time Summary", CReport::timeSummary},
    {"expense-detail", "Expense Detail", CReport::expenseDetail},
    {"expense-summary", "Expense Summary", CReport::expenseSummary},
    {"todo-detail", "To Do Detail", CReport::todoDetail},
    {"invoice", "Invoice", CReport::invoice},
    {"time-expense-summary", "Time & Expense Summary", CReport::timeExpenseSummary},
    {"billing-summary", "Billing Summary", CReport::billingSummary},
};

const Named kPresets[] = {
    {"custom", "Custom Dates", CReport::customDates},
    {"current-week", "Current Week", CReport::currentWeek},
    {"previous-week", "Previous Week", CReport::previousWeek},
    {"current-month", "Current Month", CReport::currentMonth},
    {"previous-month", "Previous Month", CReport::previousMonth},
    {"current-year", "Current Year", CReport::currentYear},
    {"previous-year", "Previous Year", CReport::previousYear},
    {"all", "All Dates", CReport::allDates},
    {"today", "Today", CReport::today},
    {"yesterday", "Yesterday", CReport::yesterday},
    {"current-half-month", "Current Half Month", CReport::currentHalfMonth},
    {"previous-half-month", "Previous Half Month", CReport::previousHalfMonth},
};

const Named kTimeFrames[] = {
    {"total", "Total", CReport::frameTotal}, {"year", "Year", CReport::frameYear},
    {"month", "Month", CReport::frameMonth}, {"week", "Week", CReport::frameWeek},
    {"day", "Day", CReport::frameDay},
};

bool EqualNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

std::string_view Trim(std::string_view s)
{
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front())))
        s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back())))
        s.remove_suffix(1);
    return s;
}

template <size_t N>
std::optional<uint32_t> Find(const Named (&table)[N], std::string_view text)
{
    text = Trim(text);
    for (const Named& n : table)
        if (EqualNoCase(text, n.keyword) || EqualNoCase(text, n.label))
            return n.value;
    return std::nullopt;
}

template <size_t N>
const Named* ByValue(const Named (&table)[N], uint32_t value)
{
    for (const Named& n : table)
        if (n.value == value)
            return &n;
    return nullptr;
}

template <size_t N>
std::string KeywordList(const Named (&table)[N])
{
    std::string list;
    for (const Named& n : table)
    {
        if (!list.empty())
            list += ", ";
        list += n.keyword;
    }
    return list;
}

enum class Family
{
    time,
    expense,
    todo,
    summary,
    expenseSummary,
    invoice,
    unknown,
};

Family FamilyOf(uint32_t kind)
{
    switch (kind)
    {
    case CReport::timeDetail: return Family::time;
    case CReport::expenseDetail: return Family::expense;
    case CReport::todoDetail: return Family::todo;
    case CReport::timeSummary:
    case CReport::timeExpenseSummary:
    case CReport::billingSummary: return Family::summary;
    case CReport::expenseSummary: return Family::expenseSummary;
    case CReport::invoice: return Family::invoice;
    default: return Family::unknown;
    }
}
} // namespace

std::string KindLabel(uint32_t kind)
{
    const Named* n = ByValue(kKinds, kind);
    return n ? n->label : "";
}

std::string KindKeyword(uint32_t kind)
{
    const Named* n = ByValue(kKinds, kind);
    return n ? n->keyword : "";
}

std::optional<uint32_t> ParseKind(std::string_view text) { return Find(kKinds, text); }

std::string AcceptedKinds() { return KeywordList(kKinds); }

std::string PresetKeyword(uint32_t preset)
{
    const Named* n = ByValue(kPresets, preset);
    return n ? n->keyword : "";
}

std::optional<uint32_t> ParsePreset(std::string_view text) { return Find(kPresets, text); }

std::string AcceptedPresets() { return KeywordList(kPresets); }

std::string TimeFrameLabel(uint32_t timeFrame)
{
    const Named* n = ByValue(kTimeFrames, timeFrame);
    return n ? n->label : "";
}

std::optional<uint32_t> ParseTimeFrame(std::string_view text) { return Find(kTimeFrames, text); }

std::string AcceptedTimeFrames() { return KeywordList(kTimeFrames); }

std::vector<FieldInfo> FieldsOfKind(uint32_t kind, const CTimeKeeperApp* app)
{
    switch (FamilyOf(kind))
    {
    case Family::time:
        return {{"task-id", "Task ID", 0x1},         {"billing-rate", "Billing Rate", 0x10},
                {"start-time", "Start Time", 0x100}, {"end-time", "End Time", 0x1000},
                {"activity", "Activity", 0x10000},   {"note", "Note", 0x100000},
                {"billing-amount", "Billing Amount", 0x1000000}};
    case Family::expense:
        return {{"task-id", "Task ID", 0x1},
                {"mileage", app ? app->GetDistanceUnit() : std::string("Mileage"), 0x10},
                {"mileage-rate", "Mileage Rate", 0x100},
                {"expense-type", "Expense Type", 0x1000},
                {"payment-method", "Payment Method", 0x10000},
                {"note", "Note", 0x100000}};
    case Family::todo:
        return {{"task-id", "Task ID", 0x1},           {"due-date", "Due Date", 0x10},
                {"complete-date", "Complete Date", 0x100}, {"status", "Status", 0x1000},
                {"priority", "Priority", 0x10000},       {"note", "Note", 0x100000}};
    case Family::summary:
        return {{"task-id", "Task ID", 0x1}, {"billing-rate", "Billing Rate", 0x10},
                {"estimates", "Estimates", 0x100}};
    case Family::expenseSummary:
        return {{"task-id", "Task ID", 0x1}, {"estimates", "Estimates", 0x100}};
    case Family::invoice:
        return {{"task-id", "Task ID", 0x1}, {"billing-rate", "Billing Rate", 0x10}};
    case Family::unknown: break;
    }
    return {};
}

uint32_t AllFieldsOfKind(uint32_t kind)
{
    uint32_t flags = 0;
    for (const FieldInfo& f : FieldsOfKind(kind))
        flags |= f.mask;
    return flags;
}

bool ParseFieldList(uint32_t kind, std::string_view list, uint32_t& flags, std::string& error)
{
    const std::vector<FieldInfo> fields = FieldsOfKind(kind);
    uint32_t result = 0;
    list = Trim(list);
    while (!list.empty())
    {
        const size_t comma = list.find(',');
        const std::string_view name = Trim(list.substr(0, comma));
        list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
        if (name.empty())
            continue;
        if (EqualNoCase(name, "all"))
        {
            result |= AllFieldsOfKind(kind);
            continue;
        }
        bool found = false;
        for (const FieldInfo& f : fields)
        {
            if (EqualNoCase(name, f.keyword) || EqualNoCase(name, f.label))
            {
                result |= f.mask;
                found = true;
                break;
            }
        }
        if (!found)
        {
            std::string accepted;
            for (const FieldInfo& f : fields)
                accepted += (accepted.empty() ? "" : ", ") + f.keyword;
            error = "Unknown field \"" + std::string(name) + "\" for " + KindLabel(kind) +
                    " reports; accepted: " + (accepted.empty() ? std::string("none") : accepted + ", all");
            return false;
        }
    }
    flags = result;
    return true;
}

std::vector<int32_t> GroupingsOfKind(uint32_t kind)
{
    switch (kind)
    {
    case CReport::timeSummary:
    case CReport::billingSummary: return {CReport::groupTaskId, CReport::groupActivity};
    case CReport::expenseSummary:
        return {CReport::groupTaskId, CReport::groupExpenseType, CReport::groupPaymentMethod};
    case CReport::timeExpenseSummary:
    case CReport::invoice: return {CReport::groupTaskId};
    default: return {};
    }
}

std::string GroupingKeyword(int32_t code)
{
    switch (code)
    {
    case CReport::groupActivity: return "activity";
    case CReport::groupExpenseType: return "expense-type";
    case CReport::groupPaymentMethod: return "payment-method";
    case CReport::groupTaskId: return "task-id";
    default: return "";
    }
}

std::string SummarizeLabel(int32_t level, const CTimeKeeperDoc& doc)
{
    switch (level)
    {
    case CReport::groupActivity: return "Activity";
    case CReport::groupExpenseType: return "Expense Type";
    case CReport::groupPaymentMethod: return "Payment Method";
    case CReport::groupTaskId: return "Task ID";
    default: return level >= 0 ? doc.GetLevelName(static_cast<uint32_t>(level)) : std::string();
    }
}

bool ParseSummarize(uint32_t kind, std::string_view text, const CTimeKeeperDoc& doc, int32_t& level,
                    std::string& error)
{
    text = Trim(text);
    const std::vector<int32_t> groupings = GroupingsOfKind(kind);
    for (int32_t code : groupings)
    {
        if (EqualNoCase(text, GroupingKeyword(code)) || EqualNoCase(text, SummarizeLabel(code, doc)))
        {
            level = code;
            return true;
        }
    }
    int32_t number = 0;
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (ec == std::errc() && ptr == text.data() + text.size() && number >= 0)
    {
        level = number;
        return true;
    }
    // A level name: the named levels and those of the document's tasks.
    uint32_t deepest = 4;
    for (const auto& [id, task] : doc.m_tasks)
        deepest = std::max<uint32_t>(deepest, task->m_level);
    for (const auto& [lvl, name] : doc.m_levelNames)
        deepest = std::max(deepest, lvl);
    for (uint32_t lvl = 0; lvl <= deepest; ++lvl)
    {
        if (EqualNoCase(text, doc.GetLevelName(lvl)))
        {
            level = static_cast<int32_t>(lvl);
            return true;
        }
    }
    std::string accepted = "a task level number or name";
    for (int32_t code : groupings)
        accepted += ", " + GroupingKeyword(code);
    error = "Cannot summarize " + KindLabel(kind) + " reports by \"" + std::string(text) +
            "\"; accepted: " + accepted;
    return false;
}

void InitNewReport(CReport& report, const CTimeKeeperApp& app)
{
    if (report.m_kind == CReport::invoice)
    {
        report.m_terms = app.GetDefaultTerms().substr(0, 30);
        report.m_taxRate = app.GetDefaultTaxRate();
    }
}

void InitListReport(CReport& report)
{
    switch (report.m_kind)
    {
    case CReport::timeDetail: report.m_name = "Time Detail Report"; break;
    case CReport::expenseDetail: report.m_name = "Expense Detail Report"; break;
    case CReport::todoDetail: report.m_name = "To Do Detail Report"; break;
    default: return;
    }
    report.m_fieldFlags = AllFieldsOfKind(report.m_kind);
}

std::string CheckReport(const CReport& report)
{
    if (report.m_name.empty())
        return platform::LoadString(40008);
    if (report.m_preset == CReport::customDates)
    {
        if (report.m_startDate.IsNull())
            return platform::LoadString(40015);
        if (report.m_endDate.IsNull())
            return platform::LoadString(40016);
        if (report.m_startDate.DatePart() > report.m_endDate.DatePart())
            return platform::LoadString(40017);
    }
    return std::string();
}

} // namespace reports
