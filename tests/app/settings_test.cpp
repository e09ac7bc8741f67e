#include "app/timekeeperapp.h"
#include "platform/scratchdir.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace
{

platform::LocaleInfo Metric()
{
    platform::LocaleInfo locale;
    locale.measurementSystem = 0;
    locale.firstDayOfWeek = 0; // Monday
    return locale;
}

const platform::FixedClock kClock{platform::LocalTime{2024, 3, 15, 12, 0, 0}};

using App = CTimeKeeperApp;
const struct Cached
{
    const char* key;
    int defaultValue;
    void (App::*set)(int);
    int (App::*get)() const;
} kCached[] = {
    {"ListType", 1, &App::SetListType, &App::GetListType},
    {"Recent Task Count", 10, &App::SetRecentTaskCount, &App::GetRecentTaskCount},
    {"ShowTimeEntryOnStart", 0, &App::SetShowTimeEntryOnStart, &App::GetShowTimeEntryOnStart},
    {"ShowTimeEntryOnStop", 0, &App::SetShowTimeEntryOnStop, &App::GetShowTimeEntryOnStop},
    {"TimeInterval", 0, &App::SetTimeInterval, &App::GetTimeInterval},
    {"WeekStart", 1, &App::SetWeekStart, &App::GetWeekStart},
    {"ElapsedTimeFormat", 0, &App::SetElapsedTimeFormat, &App::GetElapsedTimeFormat},
    {"RecentTaskSortOrder", 0, &App::SetRecentTaskSortOrder, &App::GetRecentTaskSortOrder},
    {"TimeSortOrder", 1, &App::SetTimeSortOrder, &App::GetTimeSortOrder},
    {"ExpenseSortOrder", 0, &App::SetExpenseSortOrder, &App::GetExpenseSortOrder},
    {"ToDoSortOrder", 0, &App::SetToDoSortOrder, &App::GetToDoSortOrder},
    {"ReportSortOrder", 0, &App::SetReportSortOrder, &App::GetReportSortOrder},
    {"TaskViewType", 0, &App::SetTaskViewType, &App::GetTaskViewType},
    {"ReportListType", 0, &App::SetReportListType, &App::GetReportListType},
    {"Tab", 0, &App::SetTab, &App::GetTab},
    {"HideInactive", 0, &App::SetHideInactive, &App::GetHideInactive},
    {"AutoSave", 1, &App::SetAutoSave, &App::GetAutoSave},
    {"HideWhenMinimized", 0, &App::SetHideWhenMinimized, &App::GetHideWhenMinimized},
};

} // namespace

TEST(AppSettings, DefaultsWhenTheStoreIsEmpty)
{
    platform::SettingsStore store;
    App app(store, kClock, platform::LocaleInfo::UnitedStates());
    app.LoadSettings();
    for (const Cached& c : kCached)
        EXPECT_EQ((app.*c.get)(), c.defaultValue) << c.key;
    EXPECT_EQ(app.GetStopAtMidnight(), 1);
    EXPECT_EQ(app.GetFastEntry(), 1);
    EXPECT_FALSE(app.GetShowLevel(2));
    EXPECT_EQ(app.GetDefaultTaxRate(), 0.0);
    EXPECT_EQ(app.GetInvoiceNumber(), 1);
    EXPECT_EQ(app.GetTipStartUp(), 0);
    EXPECT_EQ(app.GetTipFilePos(), 0);

    App monday(store, kClock, Metric());
    monday.LoadSettings();
    EXPECT_EQ(monday.GetWeekStart(), 2) << "a Monday locale starts the week on Monday";
}

TEST(AppSettings, EveryCachedSettingRoundTripsThroughTheFileUnderItsKey)
{
    ScratchDir dir;
    const std::string path = dir.File("settings.conf");
    {
        platform::SettingsStore store(path);
        App app(store, kClock, platform::LocaleInfo::UnitedStates());
        app.LoadSettings();
        int value = 100;
        for (const Cached& c : kCached)
            (app.*c.set)(value++);
        std::string error;
        ASSERT_TRUE(app.SaveSettings(&error)) << error;
    }
    platform::SettingsStore store(path);
    ASSERT_TRUE(store.Load());
    App app(store, kClock, platform::LocaleInfo::UnitedStates());
    app.LoadSettings();
    int value = 100;
    for (const Cached& c : kCached)
    {
        EXPECT_EQ(store.GetInt("Settings", c.key, -1), value) << c.key;
        EXPECT_EQ((app.*c.get)(), value++) << c.key;
    }
}

TEST(AppSettings, OnDemandKeysReachTheFileAtOnce)
{
    ScratchDir dir;
    const std::string path = dir.File("settings.conf");
    platform::SettingsStore store(path);
    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    app.SetStopAtMidnight(0);
    app.SetFastEntry(0);
    app.SetShowLevel(2, true);
    app.SetInvoiceAddress("Halvery Ltd\n12 Long Road");
    app.SetDefaultTerms("Net 30");
    app.SetDefaultTaxRate(7.5);
    app.SetInvoiceNumber(1042);
    app.SetTipStartUp(1);
    app.SetTipFilePos(4711);
    app.SetTipTimeStamp("Mon Mar  4 10:00:00 2024");
    EXPECT_EQ(app.GetSettingsError(), "");

    platform::SettingsStore other(path);
    ASSERT_TRUE(other.Load());
    EXPECT_EQ(other.GetInt("Settings", "StopAtMidnight", 1), 0);
    EXPECT_EQ(other.GetInt("Settings", "FastEntry", 1), 0);
    EXPECT_EQ(other.GetInt("Settings", "Show Level2", 0), 1);
    EXPECT_EQ(other.GetString("Settings", "InvoiceAddress", ""), "Halvery Ltd\n12 Long Road");
    EXPECT_EQ(other.GetString("Settings", "DefaultTerms", ""), "Net 30");
    EXPECT_EQ(other.GetString("Settings", "DefaultTaxRate", ""), "7.500000e+00");
    EXPECT_EQ(other.GetInt("Settings", "InvoiceNumber", 0), 1042);
    EXPECT_EQ(other.GetInt("Tip", "StartUp", 0), 1);
    EXPECT_EQ(other.GetInt("Tip", "FilePos", 0), 4711);
    EXPECT_EQ(other.GetString("Tip", "TimeStamp", ""), "Mon Mar  4 10:00:00 2024");

    CTimeKeeperApp again(other, kClock, platform::LocaleInfo::UnitedStates());
    EXPECT_DOUBLE_EQ(again.GetDefaultTaxRate(), 7.5);
    EXPECT_TRUE(again.GetShowLevel(2));
    EXPECT_FALSE(again.GetShowLevel(3));
}

TEST(AppSettings, TaxRateReadsAnyDecimalText)
{
    platform::SettingsStore store;
    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    const struct
    {
        const char* text;
        double value;
    } cases[] = {{"0.0", 0.0}, {"1.250000e+01", 12.5}, {" 8.25", 8.25}, {"7,5", 7.5}, {"+3", 3.0},
                 {"lots", 0.0}, {"", 0.0}};
    for (const auto& c : cases)
    {
        store.SetString("Settings", "DefaultTaxRate", c.text);
        EXPECT_DOUBLE_EQ(app.GetDefaultTaxRate(), c.value) << c.text;
    }
}

TEST(AppSettings, ColumnWidthGroupsOfZeroesAreDeletedAtStartUp)
{
    platform::SettingsStore store;
    for (const char* key : {"TimeTaskCol", "TimeStartCol", "TimeElapsedCol", "TimeEndCol"})
        store.SetInt("Settings", key, 0);
    // A group with one real width is left alone.
    for (const char* key : {"ExpenseTaskCol", "ExpenseTypeCol"})
        store.SetInt("Settings", key, 0);
    store.SetInt("Settings", "ExpenseAmountCol", 80);
    // A partly stored group: the absent keys read 1, so it is kept.
    store.SetInt("Settings", "ReportTitleCol", 0);
    store.SetInt("Settings", "C0", 0);
    store.SetInt("Settings", "R0", 0);
    store.SetInt("Settings", "C1", 0);

    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    app.LoadSettings();
    for (const char* key : {"TimeTaskCol", "TimeStartCol", "TimeElapsedCol", "TimeEndCol", "C0", "R0"})
        EXPECT_FALSE(store.Has("Settings", key)) << key;
    EXPECT_EQ(app.GetProfileInt("TimeTaskCol", 200), 200) << "the built-in width returns";
    EXPECT_EQ(store.GetInt("Settings", "ExpenseTaskCol", -1), 0);
    EXPECT_EQ(store.GetInt("Settings", "ExpenseAmountCol", -1), 80);
    EXPECT_EQ(store.GetInt("Settings", "ReportTitleCol", -1), 0);
    EXPECT_EQ(store.GetInt("Settings", "C1", -1), 0) << "C1 is not in a group";
}

TEST(AppSettings, MarginsFollowTheMeasureTheyWereStoredIn)
{
    platform::SettingsStore store;
    int l, t, r, b;
    {
        CTimeKeeperApp us(store, kClock, platform::LocaleInfo::UnitedStates());
        us.GetPageMargins(l, t, r, b);
        EXPECT_EQ((std::vector<int>{l, t, r, b}), (std::vector<int>{750, 750, 750, 750}));
        EXPECT_EQ(us.GetPageMeasure(), 1);
        us.SetPageMargins(500, 600, 700, 800);
        us.SavePageMeasure();
        us.GetPageMargins(l, t, r, b);
        EXPECT_EQ((std::vector<int>{l, t, r, b}), (std::vector<int>{500, 600, 700, 800}));
    }
    {
        // The locale changed to metric: whatever is stored is in inches, so it is ignored.
        CTimeKeeperApp metric(store, kClock, Metric());
        EXPECT_EQ(metric.GetPageMeasure(), 1);
        metric.GetPageMargins(l, t, r, b);
        EXPECT_EQ((std::vector<int>{l, t, r, b}), (std::vector<int>{2000, 2000, 2000, 2000}));
        metric.SetPageMargins(1500, 1500, 1500, 1000);
        metric.SavePageMeasure();
        EXPECT_EQ(metric.GetPageMeasure(), 0);
        metric.GetPageMargins(l, t, r, b);
        EXPECT_EQ((std::vector<int>{l, t, r, b}), (std::vector<int>{1500, 1500, 1500, 1000}));
    }
    CTimeKeeperApp usAgain(store, kClock, platform::LocaleInfo::UnitedStates());
    usAgain.GetPageMargins(l, t, r, b);
    EXPECT_EQ((std::vector<int>{l, t, r, b}), (std::vector<int>{750, 750, 750, 750}));
}

TEST(AppSettings, RecentFilesKeepTheFourLatestMostRecentFirst)
{
    ScratchDir dir;
    const std::string path = dir.File("settings.conf");
    platform::SettingsStore store(path);
    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    for (const char* name : {"/w/a.qvx", "/w/b.qvx", "/w/c.qvx", "/w/d.qvx", "/w/e.qvx"})
        app.AddToRecentFiles(name);
    app.AddToRecentFiles("/w/./c.qvx");
    EXPECT_EQ(app.GetRecentFiles(), (std::vector<std::string>{"/w/c.qvx", "/w/e.qvx", "/w/d.qvx", "/w/b.qvx"}));
    app.RemoveFromRecentFiles("/w/d.qvx");
    ASSERT_TRUE(app.SaveSettings());

    platform::SettingsStore reread(path);
    ASSERT_TRUE(reread.Load());
    EXPECT_EQ(reread.GetString("Recent File List", "File1", ""), "/w/c.qvx");
    EXPECT_EQ(reread.GetString("Recent File List", "File3", ""), "/w/b.qvx");
    EXPECT_FALSE(reread.Has("Recent File List", "File4"));
    CTimeKeeperApp next(reread, kClock, platform::LocaleInfo::UnitedStates());
    next.LoadSettings();
    EXPECT_EQ(next.GetRecentFiles(), (std::vector<std::string>{"/w/c.qvx", "/w/e.qvx", "/w/b.qvx"}));

    // A relative name is kept as the full path of the file.
    next.AddToRecentFiles("relative.qvx");
    EXPECT_EQ(next.GetRecentFiles().front(),
              (std::filesystem::current_path() / "relative.qvx").lexically_normal().string());
}
