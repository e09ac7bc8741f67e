#include "cli/entryrows.h"

#include "cli/commandsession.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <cctype>

namespace cli
{

CDateTime RequiredDate(const Args& args, const char* option)
{
    const auto text = args.Option(option);
    if (!text)
        throw UsageError(std::string("--") + option + " DATE is required");
    return ParseDate(*text, (std::string("--") + option).c_str());
}

std::vector<CEntry*> SelectRows(CommandSession& s, EntryKind kind, const CDateTime& date,
                                const std::vector<std::string>& numbers)
{
    const std::string day = date.Format("%Y-%m-%d");
    const std::string listing = std::string("qvx entries FILE --date ") + day + " --kind " +
                                (kind == EntryKind::time      ? "time"
                                 : kind == EntryKind::expense ? "expense"
                                                              : "todo");
    if (numbers.empty())
        throw UsageError("give the number of the row (as " + listing + " shows it)");
    const EntryTable table = BuildEntryTable(s, kind, date, nullptr);
    std::vector<CEntry*> chosen;
    for (const std::string& n : numbers)
    {
        const int row = ParseInt(n, "the row number");
        if (row < 1 || size_t(row) > table.rows.size())
            throw CommandError("there is no row " + n + " on the " + PageTitle(kind) + " page of " +
                               day + " (it has " + std::to_string(table.rows.size()) + " rows; " +
                               listing + " lists them)");
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

void RefuseSummaryTask(const CTask* task, unsigned messageId)
{
    if (task->IsProjectSummary())
        Refuse(messageId);
}

std::string Span(const CTimeEntry& e)
{
    return e.m_start.ToText() + "-" + (e.IsRunning() ? std::string("running") : e.m_end.ToText());
}

std::string JoinTexts(const std::vector<std::string>& texts)
{
    std::string out;
    for (const std::string& t : texts)
        out += (out.empty() ? "" : ", ") + t;
    return out;
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

} // namespace cli
