#include "cli/commands.h"
#include "cli/commandsession.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"

#include <iostream>

namespace cli
{

namespace
{
constexpr const char* kSettings = "Settings";
// The rounding intervals in minutes, by their "TimeInterval" index.
constexpr int kIntervalMinutes[] = {1, 3, 5, 10, 15, 30, 60, 6};
const char* const kDays[] = {"sunday",   "monday", "tuesday", "wednesday",
                             "thursday", "friday", "saturday"};

int ParseInterval(const std::string& text)
{
    const int minutes = ParseInt(text, "--time-interval");
    for (int i = 0; i < 8; ++i)
        if (kIntervalMinutes[i] == minutes)
            return i;
    throw UsageError("--time-interval must be one of 1, 3, 5, 6, 10, 15, 30, 60 (minutes), not '" +
                     text + "'");
}

int ParseWeekStart(const std::string& text)
{
    for (int i = 0; i < 7; ++i)
        if (SameText(text, kDays[i]))
            return i + 1;
    throw UsageError("--week-start must name a day, sunday to saturday; not '" + text + "'");
}

void PrintOptions(CTimeKeeperApp& app, const CTimeKeeperDoc* doc)
{
    std::cout << "Time interval: " << app.IntervalMinutes(app.GetTimeInterval()) << " min\n";
    std::cout << "Stop at midnight: " << (app.GetStopAtMidnight() ? "yes" : "no") << "\n";
    std::cout << "Elapsed format: " << (app.GetElapsedTimeFormat() == 0 ? "time" : "decimal")
              << "\n";
    const int week = app.GetWeekStart();
    std::cout << "Week start: " << (week >= 1 && week <= 7 ? kDays[week - 1] : "?") << "\n";
    std::cout << "Recent task count: " << app.GetRecentTaskCount() << "\n";
    std::cout << "Task names: " << (app.GetListType() == 1 ? "name" : "abbreviation") << "\n";
    std::cout << "Invoice number: " << app.GetInvoiceNumber() << "\n";
    std::cout << KeyAndLines("Invoice address", app.GetInvoiceAddress());
    std::cout << "Default terms: " << app.GetDefaultTerms() << "\n";
    std::cout << "Default tax rate: " << app.FormatNumber(app.GetDefaultTaxRate()) << "\n";
    if (!doc)
        return;
    std::cout << "Mileage rate: " << app.FormatNumber(doc->m_defaultMileageRate, 3)
              << " (distance in " << app.GetDistanceUnit() << ")\n";
    uint32_t deepest = 4;
    for (const auto& [level, name] : doc->m_levelNames)
        deepest = std::max(deepest, level);
    for (uint32_t level = 0; level <= deepest; ++level)
        std::cout << "Level " << level << ": " << doc->GetLevelName(level) << "\n";
}

int Options(Context& ctx)
{
    const std::vector<std::string> documentOptions = {"mileage-rate", "level-name"};
    const std::vector<std::string> userOptions = {
        "time-interval", "stop-at-midnight", "elapsed-format", "week-start",
        "recent-count",  "task-names",       "invoice-number", "invoice-address",
        "default-terms", "default-tax-rate"};
    std::vector<std::string> known = documentOptions;
    known.insert(known.end(), userOptions.begin(), userOptions.end());
    Args args(ctx.argv, {});
    args.Expect(0, 1, known);
    bool changesDocument = false, changesUser = false;
    for (const std::string& o : documentOptions)
        changesDocument = changesDocument || args.Option(o).has_value();
    for (const std::string& o : userOptions)
        changesUser = changesUser || args.Option(o).has_value();
    if (changesDocument && args.Count() == 0)
        throw UsageError("--mileage-rate and --level-name change a document: give its FILE");

    // Everything is checked before anything is written.
    std::optional<float> mileageRate;
    if (auto v = args.Option("mileage-rate"))
    {
        const double rate = ParseNonNegative(*v, "--mileage-rate");
        if (rate < 0)
            throw UsageError("--mileage-rate must not be negative");
        mileageRate = float(rate);
    }
    std::optional<std::pair<uint32_t, std::string>> levelName;
    if (auto v = args.Option("level-name"))
    {
        const size_t eq = v->find('=');
        if (eq == std::string::npos)
            throw UsageError("--level-name takes LEVEL=NAME, such as 2=Engagement");
        const int level = ParseInt(v->substr(0, eq), "the level of --level-name");
        if (level < 0 || level > 19)
            throw UsageError("--level-name: the level must lie between 0 and 19");
        levelName = std::make_pair(uint32_t(level), v->substr(eq + 1));
    }
    std::optional<int> interval, weekStart, recentCount, invoiceNumber, listType, elapsed;
    std::optional<bool> stopAtMidnight;
    std::optional<double> taxRate;
    if (auto v = args.Option("time-interval"))
        interval = ParseInterval(*v);
    if (auto v = args.Option("stop-at-midnight"))
        stopAtMidnight = ParseYesNo(*v, "--stop-at-midnight");
    if (auto v = args.Option("elapsed-format"))
    {
        if (*v != "time" && *v != "decimal")
            throw UsageError("--elapsed-format must be time or decimal, not '" + *v + "'");
        elapsed = *v == "time" ? 0 : 1;
    }
    if (auto v = args.Option("week-start"))
        weekStart = ParseWeekStart(*v);
    if (auto v = args.Option("recent-count"))
    {
        recentCount = ParseInt(*v, "--recent-count");
        if (*recentCount < 1 || *recentCount > 25)
            throw UsageError("--recent-count must lie between 1 and 25");
    }
    if (auto v = args.Option("task-names"))
    {
        if (*v != "name" && *v != "abbreviation")
            throw UsageError("--task-names must be name or abbreviation, not '" + *v + "'");
        listType = *v == "name" ? 1 : 0;
    }
    if (auto v = args.Option("invoice-number"))
        invoiceNumber = ParseInt(*v, "--invoice-number");
    if (auto v = args.Option("default-tax-rate"))
    {
        taxRate = ParseDouble(*v, "--default-tax-rate");
        if (*taxRate < 0 || *taxRate > 100)
            throw UsageError("--default-tax-rate must be a percentage from 0 to 100");
    }
    if (auto v = args.Option("default-terms"); v && v->size() > 30)
        throw UsageError("--default-terms holds at most 30 characters");

    std::unique_ptr<CommandSession> session;
    std::unique_ptr<AppContext> appOnly;
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    if (args.Count() == 1)
        session = std::make_unique<CommandSession>(
            changesDocument ? ctx : readCtx, args.At(0, "FILE"),
            changesDocument ? CommandSession::Mode::change : CommandSession::Mode::read);
    else
        appOnly = std::make_unique<AppContext>();
    AppContext& appContext = session ? session->AppCtx() : *appOnly;
    CTimeKeeperApp& app = appContext.App();

    if (changesDocument)
    {
        CTimeKeeperDoc& doc = session->Doc();
        std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
        if (mileageRate)
            doc.m_defaultMileageRate = *mileageRate;
        if (levelName)
            doc.SetLevelName(levelName->first, levelName->second);
        // The sibling order follows the names shown; a level name does not change it.
        session->Save();
    }
    if (changesUser)
    {
        platform::SettingsStore& store = appContext.Store();
        if (interval)
            store.SetInt(kSettings, "TimeInterval", *interval);
        if (elapsed)
            store.SetInt(kSettings, "ElapsedTimeFormat", *elapsed);
        if (weekStart)
            store.SetInt(kSettings, "WeekStart", *weekStart);
        if (recentCount)
            store.SetInt(kSettings, "Recent Task Count", *recentCount);
        if (listType)
            store.SetInt(kSettings, "ListType", *listType);
        if (stopAtMidnight)
            app.SetStopAtMidnight(*stopAtMidnight ? 1 : 0);
        if (invoiceNumber)
            app.SetInvoiceNumber(*invoiceNumber);
        if (auto v = args.Option("invoice-address"))
            app.SetInvoiceAddress(LineBreaks(*v));
        if (auto v = args.Option("default-terms"))
            app.SetDefaultTerms(*v);
        if (taxRate)
            app.SetDefaultTaxRate(*taxRate);
        appContext.SaveStore();
        app.LoadSettings();
    }
    PrintOptions(app, session ? &session->Doc() : nullptr);
    return 0;
}
} // namespace

void RegisterOptionsCommands(CommandTable& table)
{
    table.Add({"options",
               "[FILE] [--mileage-rate R] [--level-name LEVEL=NAME] [--time-interval MIN] "
               "[--stop-at-midnight yes|no] "
               "[--elapsed-format time|decimal] [--week-start DAY] [--recent-count N] "
               "[--task-names name|abbreviation] "
               "[--invoice-number N] [--invoice-address TEXT] [--default-terms TEXT] "
               "[--default-tax-rate R]",
               "show or change the options: the document's mileage rate and level names, and your "
               "settings",
               Options});
}

} // namespace cli
