#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/safefile.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "render/pdfexport.h"
#include "reports/daterange.h"
#include "reports/invoiceoutput.h"
#include "reports/reportoptions.h"
#include "reports/reportrunner.h"

#include <algorithm>
#include <iostream>
#include <set>

namespace cli
{

namespace
{
constexpr unsigned kAskDeleteReports = 41022;

// Messages of the report frame ("Export Unavailable") become the command's error.
class MessageCollector : public platform::Prompter
{
public:
    void ShowMessage(const std::string& text, platform::Icon) override
    {
        m_messages.push_back(text);
    }
    platform::Answer AskYesNo(const std::string&, platform::Icon) override
    {
        return platform::Answer::no;
    }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override
    {
        return platform::Answer::cancel;
    }
    const std::vector<std::string>& Messages() const { return m_messages; }

private:
    std::vector<std::string> m_messages;
};

bool HasActivities(uint32_t kind)
{
    return kind == CReport::timeDetail || kind == CReport::timeSummary ||
           kind == CReport::billingSummary || kind == CReport::timeExpenseSummary ||
           kind == CReport::invoice;
}

bool HasExpenseFilters(uint32_t kind)
{
    return kind == CReport::expenseDetail || kind == CReport::expenseSummary ||
           kind == CReport::timeExpenseSummary || kind == CReport::invoice;
}

bool IsSummary(uint32_t kind)
{
    return kind == CReport::timeSummary || kind == CReport::expenseSummary ||
           kind == CReport::timeExpenseSummary || kind == CReport::billingSummary;
}

bool IsDetail(uint32_t kind)
{
    return kind == CReport::timeDetail || kind == CReport::expenseDetail ||
           kind == CReport::todoDetail;
}

// A definition by "#id", a bare id, or its name.
CReport* FindReport(CTimeKeeperDoc& doc, const std::string& spec)
{
    const std::string digits = !spec.empty() && spec[0] == '#' ? spec.substr(1) : spec;
    if (!digits.empty() && digits.size() < 10 &&
        digits.find_first_not_of("0123456789") == std::string::npos)
    {
        if (CReport* r = doc.GetReport(uint32_t(std::stoul(digits))))
            return r;
        if (spec[0] == '#')
            throw CommandError("there is no report #" + digits);
    }
    CReport* found = nullptr;
    for (const auto& r : doc.m_reports)
        if (SameText(r->m_name, spec))
        {
            if (found)
                throw CommandError("several reports are named '" + spec +
                                   "' (use #id; qvx report list shows them)");
            found = r.get();
        }
    if (!found)
        throw CommandError("there is no report '" + spec + "' (qvx report list shows them)");
    return found;
}

std::vector<std::string> SplitList(const std::string& text)
{
    std::vector<std::string> items;
    size_t start = 0;
    while (start <= text.size())
    {
        const size_t comma = text.find(',', start);
        std::string item =
            text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        const size_t first = item.find_first_not_of(' ');
        const size_t last = item.find_last_not_of(' ');
        if (first != std::string::npos)
            items.push_back(item.substr(first, last - first + 1));
        if (comma == std::string::npos)
            break;
        start = comma + 1;
    }
    return items;
}

// "all", or names / ids of a catalog; the single id 0 stands for all.
template <class Map>
std::vector<uint32_t> ParseIdFilter(const Map& map, const std::string& text, const char* what)
{
    const std::vector<std::string> items = SplitList(text);
    if (items.empty())
        throw UsageError(std::string("give \"all\" or a comma-separated list of ") + what + "s");
    if (items.size() == 1 && SameText(items[0], "all"))
        return {0};
    std::vector<uint32_t> ids;
    for (const std::string& item : items)
    {
        const uint32_t id = FindRecord(map, item, what)->m_id;
        if (std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.push_back(id);
    }
    return ids;
}

std::string IdFilterText(const std::vector<uint32_t>& ids,
                         const std::function<std::string(uint32_t)>& name)
{
    if (ids.size() == 1 && ids[0] == 0)
        return "all";
    std::string text;
    for (uint32_t id : ids)
        text += (text.empty() ? "" : ", ") + name(id);
    return text;
}

void ParseInclude(CReport& r, const std::string& text)
{
    const bool todo = r.m_kind == CReport::todoDetail;
    const char* first = todo ? "outstanding" : "billable";
    const char* second = todo ? "completed" : "non-billable";
    r.m_includeBillable = false;
    r.m_includeNonBillable = false;
    for (const std::string& item : SplitList(text))
    {
        if (SameText(item, first))
            r.m_includeBillable = true;
        else if (SameText(item, second))
            r.m_includeNonBillable = true;
        else
            throw UsageError("--include takes " + std::string(first) + ", " + second +
                             " or both, not '" + item + "'");
    }
    if (!r.m_includeBillable && !r.m_includeNonBillable)
        throw UsageError("--include needs " + std::string(first) + ", " + second + " or both");
}

uint32_t ParseOrientation(const std::string& text)
{
    if (text == "default")
        return 0;
    if (text == "portrait")
        return 1;
    if (text == "landscape")
        return 2;
    throw UsageError("--orientation must be one of default, portrait, landscape; not '" + text +
                     "'");
}

const char* OrientationName(uint32_t orientation)
{
    switch (orientation)
    {
    case 1:
        return "portrait";
    case 2:
        return "landscape";
    default:
        return "default";
    }
}

// Which options go with which kinds; an option given to a kind that has no such member
// is refused rather than silently ignored.
void CheckOptionsOfKind(const Args& args, uint32_t kind)
{
    const std::string label = reports::KindLabel(kind);
    auto only = [&](const char* option, bool allowed, const char* kinds)
    {
        if (!allowed && (args.Option(option) || args.Flag(option)))
            throw UsageError("--" + std::string(option) + " goes with " + kinds + " reports, not " +
                             label);
    };
    only("activities", HasActivities(kind),
         "time detail, time summary, billing summary, time & expense summary and invoice");
    only("expense-types", HasExpenseFilters(kind),
         "expense detail, expense summary, time & expense summary and invoice");
    only("payment-methods", HasExpenseFilters(kind),
         "expense detail, expense summary, time & expense summary and invoice");
    only("summarize", IsSummary(kind) || kind == CReport::invoice, "summary and invoice");
    only("time-frame", IsSummary(kind) || kind == CReport::invoice, "summary and invoice");
    only("rollup", IsSummary(kind), "summary");
    only("totals", IsSummary(kind), "summary");
    only("child-tasks", IsDetail(kind), "detail");
    for (const char* option : {"recipient", "terms", "show-terms", "tax", "number"})
        only(option, kind == CReport::invoice, "invoice");
}

void ApplyOptions(CommandSession& s, CReport& r, const Args& args, bool creating)
{
    CTimeKeeperDoc& doc = s.Doc();
    const uint32_t kind = r.m_kind;
    CheckOptionsOfKind(args, kind);

    if (auto name = args.Option("name"))
        r.m_name = *name;
    const auto preset = args.Option("preset");
    const auto from = args.Option("from");
    const auto to = args.Option("to");
    if (preset)
    {
        const auto code = reports::ParsePreset(*preset);
        if (!code)
            throw UsageError("unknown preset '" + *preset +
                             "'; accepted: " + reports::AcceptedPresets());
        if ((from || to) && *code != CReport::customDates)
            throw UsageError("--from and --to go with custom dates, not with --preset " + *preset);
        r.m_preset = *code;
    }
    else if (from || to)
        r.m_preset = CReport::customDates;
    else if (creating)
        r.m_preset = CReport::allDates;
    if (from)
        r.m_startDate = ParseDate(*from, "--from");
    if (to)
        r.m_endDate = ParseDate(*to, "--to");

    if (auto task = args.Option("task"))
        r.m_selectedTasks = {FindTask(doc, *task)->m_id};
    else if (creating)
        r.m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
    if (auto fields = args.Option("fields"))
    {
        std::string error;
        if (!reports::ParseFieldList(kind, *fields, r.m_fieldFlags, error))
            throw UsageError(error);
    }
    if (auto include = args.Option("include"))
        ParseInclude(r, *include);
    if (auto children = args.Option("child-tasks"))
        r.m_selectedTasksOnly = !ParseYesNo(*children, "--child-tasks");
    if (auto empty = args.Option("empty-rows"))
        r.m_showEmptyRows = ParseYesNo(*empty, "--empty-rows");

    if (auto list = args.Option("activities"))
        r.m_selectedActivities = ParseIdFilter(doc.m_activities, *list, "activity");
    if (auto list = args.Option("expense-types"))
        r.m_selectedExpenseTypes = ParseIdFilter(doc.m_expenseTypes, *list, "expense type");
    if (auto list = args.Option("payment-methods"))
        r.m_selectedPaymentMethods = ParseIdFilter(doc.m_paymentMethods, *list, "payment method");

    if (auto level = args.Option("summarize"))
    {
        std::string error;
        if (!reports::ParseSummarize(kind, *level, doc, r.m_summarizeLevel, error))
            throw UsageError(error);
    }
    if (auto frame = args.Option("time-frame"))
    {
        const auto code = reports::ParseTimeFrame(*frame);
        if (!code)
            throw UsageError("unknown time frame '" + *frame +
                             "'; accepted: " + reports::AcceptedTimeFrames());
        r.m_timeFrame = *code;
    }
    if (auto v = args.Option("rollup"))
        r.m_rollup = ParseYesNo(*v, "--rollup");
    if (auto v = args.Option("totals"))
        r.m_showTotals = ParseYesNo(*v, "--totals");

    if (auto v = args.Option("orientation"))
        r.m_orientation = ParseOrientation(*v);
    if (auto face = args.Option("font"))
    {
        if (face->empty() || face->size() > 31)
            throw UsageError("--font must name a font face of 1 to 31 characters");
        r.m_font.faceName = *face;
    }
    if (auto size = args.Option("font-size"))
    {
        const int points = ParseInt(*size, "--font-size");
        if (points < 4 || points > 72)
            throw UsageError("--font-size must lie between 4 and 72 points");
        r.m_font.height = -10 * points;
    }
    if (auto v = args.Option("bold"))
        r.m_font.weight = ParseYesNo(*v, "--bold") ? 700 : 400;
    if (auto v = args.Option("italic"))
        r.m_font.italic = ParseYesNo(*v, "--italic") ? 1 : 0;

    if (auto recipient = args.Option("recipient"))
        r.m_recipient = LineBreaks(*recipient);
    if (auto terms = args.Option("terms"))
    {
        if (terms->size() > 30)
            throw UsageError("--terms holds at most 30 characters");
        r.m_terms = *terms;
        r.m_showTerms = true;
    }
    if (auto v = args.Option("show-terms"))
        r.m_showTerms = ParseYesNo(*v, "--show-terms");
    if (auto tax = args.Option("tax"))
    {
        if (*tax == "no")
            r.m_addTax = false;
        else
        {
            const double rate = ParseDouble(*tax, "--tax");
            if (rate < 0 || rate > 100)
                throw UsageError("--tax must be a percentage from 0 to 100, or no");
            r.m_addTax = true;
            r.m_taxRate = rate;
        }
    }
    if (auto number = args.Option("number"))
    {
        if (*number == "next")
            r.m_numberMode = 0;
        else
        {
            r.m_numberMode = 1;
            r.m_invoiceNumber = ParseInt(*number, "--number");
        }
    }

    if (const std::string refusal = reports::CheckReport(r); !refusal.empty())
        throw CommandError(refusal);
}

const std::vector<std::string> kDefinitionOptions = {
    "name",      "preset",      "from",       "to",         "task",          "fields",
    "include",   "child-tasks", "empty-rows", "activities", "expense-types", "payment-methods",
    "summarize", "time-frame",  "rollup",     "totals",     "orientation",   "font",
    "font-size", "bold",        "italic",     "recipient",  "terms",         "show-terms",
    "tax",       "number"};

std::string TaskOf(CommandSession& s, const CReport& r)
{
    return r.m_selectedTasks.empty() ? std::string() : s.TaskPath(r.GetFirstSelectedTask());
}

int ReportList(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    std::vector<std::vector<std::string>> rows = {{"Id", "Kind", "Title", "Task", "Dates"}};
    for (const auto& r : s.Doc().m_reports)
        rows.push_back({std::to_string(r->m_id), reports::KindLabel(r->m_kind), r->m_name,
                        TaskOf(s, *r), reports::DateRangeText(*r, s.Doc(), s.App())});
    std::vector<size_t> widths(5, 0);
    for (const auto& row : rows)
        for (size_t c = 0; c < row.size(); ++c)
            widths[c] = std::max(widths[c], row[c].size());
    for (const auto& row : rows)
    {
        std::string line;
        for (size_t c = 0; c < row.size(); ++c)
        {
            line += row[c];
            if (c + 1 < row.size())
                line += std::string(widths[c] - row[c].size() + 2, ' ');
        }
        std::cout << line << "\n";
    }
    return 0;
}

int ReportNew(Context& ctx)
{
    const std::vector<std::string> known = []
    {
        std::vector<std::string> k = kDefinitionOptions;
        k.push_back("kind");
        return k;
    }();
    Args args(ctx.argv, {});
    args.Expect(1, 1, known);
    const auto kindText = args.Option("kind");
    if (!kindText)
        throw UsageError("--kind KIND is required; accepted: " + reports::AcceptedKinds());
    const auto kind = reports::ParseKind(*kindText);
    if (!kind)
        throw UsageError("unknown kind '" + *kindText + "'; accepted: " + reports::AcceptedKinds());
    if (!args.Option("name"))
        throw CommandError(platform::LoadString(40008));

    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    // The definition is made apart first, so that a refused option leaves the document as it was.
    std::unique_ptr<CReport> draft = CReport::Create(CReport::Kind(*kind));
    reports::InitNewReport(*draft, s.App());
    ApplyOptions(s, *draft, args, true);

    CReport* report = s.Doc().AddReport(CReport::Kind(*kind));
    const uint32_t id = report->m_id;
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        *report = *draft;
        report->m_id = id;
    }
    s.Save();
    std::cout << "Added report #" << id << " '" << report->m_name << "' ("
              << reports::KindLabel(report->m_kind) << ", "
              << reports::DateRangeText(*report, s.Doc(), s.App()) << ")\n";
    return 0;
}

int ReportSet(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, kDefinitionOptions);
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CReport* report = FindReport(s.Doc(), args.At(1, "REPORT"));
    CReport draft = *report;
    ApplyOptions(s, draft, args, false);
    {
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        *report = draft;
    }
    s.Save();
    std::cout << "Updated report #" << report->m_id << " '" << report->m_name << "'\n";
    return 0;
}

int ReportShow(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    const CReport& r = *FindReport(s.Doc(), args.At(1, "REPORT"));
    const CTimeKeeperDoc& doc = s.Doc();
    const uint32_t kind = r.m_kind;
    auto line = [](const std::string& key, const std::string& value)
    { std::cout << KeyAndLines(key, value); };
    line("Id", std::to_string(r.m_id));
    line("Kind", reports::KindKeyword(kind) + " (" + reports::KindLabel(kind) + ")");
    line("Name", r.m_name);
    line("Dates",
         reports::PresetKeyword(r.m_preset) + " (" + reports::DateRangeText(r, doc, s.App()) + ")");
    line("Task", TaskOf(s, r));
    std::string fields;
    for (const reports::FieldInfo& f : reports::FieldsOfKind(kind, &s.App()))
        if (r.TestField(f.mask))
            fields += (fields.empty() ? "" : ",") + f.keyword;
    line("Fields", fields.empty() ? "none" : fields);
    std::string include;
    if (r.m_includeBillable)
        include = kind == CReport::todoDetail ? "outstanding" : "billable";
    if (r.m_includeNonBillable)
        include += std::string(include.empty() ? "" : ",") +
                   (kind == CReport::todoDetail ? "completed" : "non-billable");
    line("Include", include.empty() ? "none" : include);
    line("Empty rows", r.m_showEmptyRows ? "yes" : "no");
    if (IsDetail(kind))
        line("Child tasks", r.m_selectedTasksOnly ? "no" : "yes");
    if (HasActivities(kind))
        line("Activities", IdFilterText(r.m_selectedActivities,
                                        [&](uint32_t id)
                                        {
                                            const CActivity* a = doc.GetActivity(id);
                                            return a ? a->m_name : "#" + std::to_string(id);
                                        }));
    if (HasExpenseFilters(kind))
    {
        line("Expense types", IdFilterText(r.m_selectedExpenseTypes,
                                           [&](uint32_t id)
                                           {
                                               const CExpenseType* t = doc.GetExpenseType(id);
                                               return t ? t->m_name : "#" + std::to_string(id);
                                           }));
        line("Payment methods", IdFilterText(r.m_selectedPaymentMethods,
                                             [&](uint32_t id)
                                             {
                                                 const CPaymentMethod* p = doc.GetPaymentMethod(id);
                                                 return p ? p->m_name : "#" + std::to_string(id);
                                             }));
    }
    if (IsSummary(kind) || kind == CReport::invoice)
    {
        line("Summarize", reports::SummarizeLabel(r.m_summarizeLevel, doc));
        line("Time frame", reports::TimeFrameLabel(r.m_timeFrame));
    }
    if (IsSummary(kind))
    {
        line("Rollup", r.m_rollup ? "yes" : "no");
        line("Totals", r.m_showTotals ? "yes" : "no");
    }
    if (kind == CReport::invoice)
    {
        line("Recipient", r.m_recipient);
        line("Terms", r.m_terms + (r.m_showTerms ? "" : " (not shown)"));
        line("Tax", r.m_addTax ? s.App().FormatNumber(r.m_taxRate) + "%" : "no");
        line("Number", r.m_numberMode == 0 ? "next (" + std::to_string(r.m_invoiceNumber) + ")"
                                           : std::to_string(r.m_invoiceNumber));
    }
    line("Orientation", OrientationName(r.m_orientation));
    line("Font", r.m_font.faceName + (r.m_font.weight >= 700 ? " Bold" : "") +
                     (r.m_font.italic ? " Italic" : "") + " " +
                     std::to_string(r.m_font.PointSize()) + " pt.");
    return 0;
}

int ReportRemove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CReport* report = FindReport(s.Doc(), args.At(1, "REPORT"));
    const std::string name = report->m_name;
    if (s.Prompter().AskYesNo(platform::LoadString(kAskDeleteReports), platform::Icon::question) !=
        platform::Answer::yes)
    {
        if (s.Prompter().Unanswered())
            throw CommandError(
                "nothing deleted: the question was not answered (run again with --yes)");
        std::cout << "Nothing deleted\n";
        return 0;
    }
    s.Doc().DeleteReport(report->m_id);
    s.Save();
    std::cout << "Deleted report '" << name << "'\n";
    return 0;
}

int ParseFormatOption(const Args& args)
{
    const auto text = args.Option("format");
    if (!text)
        throw UsageError("--format csv|tab|html is required");
    const auto format = reports::ParseExportFormat(*text);
    if (!format)
        throw UsageError("unknown format '" + *text + "'; accepted: csv, tab, html, pdf");
    return *format;
}

// Writes an export to --out (default: the report name up to its first "/", with the
// format's extension), or to standard output for "-".
void WriteExport(CommandSession& s, CReport& report, int format, const Args& args)
{
    MessageCollector messages;
    const std::string text = reports::ExportReport(report, s.Doc(), s.App(), format, &messages);
    if (!messages.Messages().empty())
        throw CommandError(messages.Messages().front());
    std::string out = args.Option("out").value_or("");
    if (out == "-")
    {
        std::cout << text;
        return;
    }
    if (out.empty())
    {
        std::string base = reports::DefaultExportFileName(report);
        if (base.find_first_not_of(' ') == std::string::npos)
            base = "report";
        out = base + "." + reports::ExportExtension(format);
    }
    WriteNewFile(out, text, args.Flag("force"));
    std::cout << "Exported '" << report.m_name << "' to " << out << "\n";
}

// Writes the report's pages as PDF to `out` (default: the report name up to its first
// "/", with ".pdf"). Refused, with the reason, in a build without Qt.
void WritePdf(CommandSession& s, CReport& report, std::string out, bool replace)
{
    if (!render::PdfAvailable())
        throw CommandError(render::kNoPdfMessage);
    if (out == "-")
        throw UsageError("PDF is not written to standard output; give --out PATH");
    if (out.empty())
    {
        std::string base = reports::DefaultExportFileName(report);
        if (base.find_first_not_of(' ') == std::string::npos)
            base = "report";
        out = base + ".pdf";
    }
    // Refuse an existing file before the pages are made: a long report is not drawn for nothing.
    if (!replace && FileExists(out))
        throw CommandError("'" + out + "' exists; add --force to replace it");
    std::string pdf, error;
    int pages = 0;
    if (!render::ExportPdf(report, s.Doc(), s.App(), pdf, pages, error))
        throw CommandError(error);
    WriteNewFile(out, pdf, replace);
    std::cout << "Wrote '" << report.m_name << "' to " << out << " (" << pages
              << (pages == 1 ? " page" : " pages") << ")\n";
}

int ReportExport(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(2, 2, {"format", "out", "force"});
    const bool pdf = args.Option("format") == std::optional<std::string>("pdf");
    const int format = pdf ? 0 : ParseFormatOption(args);
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    CReport* report = FindReport(s.Doc(), args.At(1, "REPORT"));
    if (pdf)
        WritePdf(s, *report, args.Option("out").value_or(""), args.Flag("force"));
    else
        WriteExport(s, *report, format, args);
    return 0;
}

void PrintPages(CommandSession& s, CReport& report)
{
    const std::vector<std::vector<std::string>> pages =
        reports::RenderTextPages(report, s.Doc(), s.App());
    std::cout << pages.size() << (pages.size() == 1 ? " page" : " pages") << "\n";
    for (size_t p = 0; p < pages.size(); ++p)
    {
        std::cout << "--- Page " << p + 1 << " ---\n";
        for (const std::string& line : pages[p])
            std::cout << line << "\n";
    }
}

int ReportPages(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    PrintPages(s, *FindReport(s.Doc(), args.At(1, "REPORT")));
    return 0;
}
int Invoice(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(2, 2, {"format", "out", "force", "pdf"});
    const bool exportIt = args.Option("format").has_value();
    const int format = exportIt ? ParseFormatOption(args) : 0;
    if (args.Option("out") && !exportIt)
        throw UsageError("--out goes with --format csv|tab|html");
    const std::optional<std::string> pdfPath = args.Option("pdf");
    if (pdfPath && exportIt)
        throw UsageError("--pdf and --format go separately: one invoice, one output");
    if (pdfPath && pdfPath->empty())
        throw UsageError("--pdf needs a PATH");
    if (pdfPath && !render::PdfAvailable())
        throw CommandError(render::kNoPdfMessage);
    if (pdfPath && !args.Flag("force") && FileExists(*pdfPath))
        throw CommandError("'" + *pdfPath + "' exists; add --force to replace it");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CReport* report = FindReport(s.Doc(), args.At(1, "REPORT"));
    if (report->m_kind != CReport::invoice)
        throw CommandError("'" + report->m_name + "' is a " + reports::KindLabel(report->m_kind) +
                           " report, not an invoice");
    const int before = report->m_invoiceNumber;
    const std::string number = reports::NumberInvoice(*report, s.Doc(), s.App(), s.Prompter());
    if (s.Prompter().Unanswered())
        throw CommandError("the invoice was not numbered: the question was not answered (run again "
                           "with --yes or --no)");
    if (pdfPath)
    {
        try
        {
            WritePdf(s, *report, *pdfPath, args.Flag("force"));
        }
        catch (...)
        {
            // No invoice went out: its number is still the next one.
            if (report->m_invoiceNumber != before)
            {
                s.App().SetInvoiceNumber(report->m_invoiceNumber);
                report->m_invoiceNumber = before;
            }
            throw;
        }
    }
    else if (exportIt)
        WriteExport(s, *report, format, args);
    else
        PrintPages(s, *report);
    s.Save();
    // With the invoice itself on standard output, this message must not end up in it.
    std::ostream& messages =
        exportIt && args.Option("out").value_or("") == "-" ? std::cerr : std::cout;
    messages << "Invoice number " << number
             << (report->m_numberMode == 0 && report->m_invoiceNumber != before
                     ? " (the next one is " + std::to_string(s.App().GetInvoiceNumber()) + ")"
                     : std::string())
             << "\n";
    return 0;
}
} // namespace

void RegisterReportCommands(CommandTable& table)
{
    const std::string definition =
        "[--preset PRESET | --from DATE --to DATE] [--task TASK] [--fields LIST|all] "
        "[--include billable,non-billable | outstanding,completed] [--child-tasks yes|no] "
        "[--empty-rows yes|no] "
        "[--activities LIST|all] [--expense-types LIST|all] [--payment-methods LIST|all] "
        "[--summarize LEVEL|activity|expense-type|payment-method|task-id] [--time-frame "
        "total|year|month|week|day] "
        "[--rollup yes|no] [--totals yes|no] [--recipient TEXT] [--terms TEXT] [--show-terms "
        "yes|no] "
        "[--tax RATE|no] [--number next|N] [--orientation default|portrait|landscape] [--font "
        "FACE] "
        "[--font-size PT] [--bold yes|no] [--italic yes|no]";
    table.Add({"report list", "FILE", "list the report definitions (id, kind, title, task, dates)",
               ReportList});
    table.Add(
        {"report new", "FILE --kind KIND --name NAME " + definition,
         "add a report definition; bad kinds, presets, fields are refused with what is accepted",
         ReportNew});
    table.Add({"report set", "FILE REPORT [--name NAME] " + definition,
               "change a report definition", ReportSet});
    table.Add(
        {"report show", "FILE REPORT", "print every member of a report definition", ReportShow});
    table.Add({"report rm", "FILE REPORT", "delete a report definition", ReportRemove});
    table.Add({"report export", "FILE REPORT --format csv|tab|html|pdf [--out PATH|-] [--force]",
               "export a report (default file: its name up to the first \"/\")", ReportExport});
    table.Add({"report pages", "FILE REPORT",
               "print the pages of a report as text lines, as a printer lays them out",
               ReportPages});
    table.Add(
        {"invoice", "FILE REPORT [--format csv|tab|html [--out PATH|-] | --pdf PATH] [--force]",
         "number an invoice as printing does (\"InvoiceNumber\" moves on) and print or export it",
         Invoice});
}

} // namespace cli
