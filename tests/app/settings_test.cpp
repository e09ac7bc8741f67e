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

} // namespace

TEST(AppSettings, DefaultsWhenTheStoreIsEmpty)
{
    platform::SettingsStore store;
    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    app.LoadSettings();
    EXPECT_EQ(app.GetListType(), 1);
    EXPECT_EQ(app.GetRecentTaskCount(), 10);
    EXPECT_EQ(app.GetShowTimeEntryOnStart(), 0);
    EXPECT_EQ(app.GetShowTimeEntryOnStop(), 0);
    EXPECT_EQ(app.GetTimeInterval(), 0);
    EXPECT_EQ(app.GetWeekStart(), 1) << "Sunday";
    EXPECT_EQ(app.GetElapsedTimeFormat(), 0);
    EXPECT_EQ(app.GetRecentTaskSortOrder(), 0);
    EXPECT_EQ(app.GetTimeSortOrder(), 1);
    EXPECT_EQ(app.GetExpenseSortOrder(), 0);
    EXPECT_EQ(app.GetToDoSortOrder(), 0);
    EXPECT_EQ(app.GetReportSortOrder(), 0);
    EXPECT_EQ(app.GetTaskViewType(), 0);
    EXPECT_EQ(app.GetReportListType(), 0);
    EXPECT_EQ(app.GetTab(), 0);
    EXPECT_EQ(app.GetHideInactive(), 0);
    EXPECT_EQ(app.GetAutoSave(), 1);
    EXPECT_EQ(app.GetHideWhenMinimized(), 0);
    EXPECT_EQ(app.GetStopAtMidnight(), 1);
    EXPECT_EQ(app.GetFastEntry(), 1);
    EXPECT_FALSE(app.GetShowLevel(2));
    EXPECT_EQ(app.GetInvoiceAddress(), "");
    EXPECT_EQ(app.GetDefaultTerms(), "");
    EXPECT_EQ(app.GetDefaultTaxRate(), 0.0);
    EXPECT_EQ(app.GetInvoiceNumber(), 1);
    EXPECT_EQ(app.GetTipStartUp(), 0);
    EXPECT_EQ(app.GetTipFilePos(), 0);
    EXPECT_EQ(app.GetTipTimeStamp(), "");
    EXPECT_TRUE(app.GetRecentFiles().empty());

    CTimeKeeperApp monday(store, kClock, Metric());
    monday.LoadSettings();
    EXPECT_EQ(monday.GetWeekStart(), 2) << "a Monday locale starts the week on Monday";
}

TEST(AppSettings, EveryCachedSettingRoundTripsThroughTheFile)
{
    ScratchDir dir;
    const std::string path = dir.File("settings.conf");
    {
        platform::SettingsStore store(path);
        ASSERT_TRUE(store.Load());
        CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
        app.LoadSettings();
        app.SetListType(0);
        app.SetRecentTaskCount(3);
        app.SetShowTimeEntryOnStart(1);
        app.SetShowTimeEntryOnStop(1);
        app.SetTimeInterval(7);
        app.SetWeekStart(4);
        app.SetElapsedTimeFormat(1);
        app.SetRecentTaskSortOrder(1);
        app.SetTimeSortOrder(5);
        app.SetExpenseSortOrder(6);
        app.SetToDoSortOrder(7);
        app.SetReportSortOrder(8);
        app.SetTaskViewType(1);
        app.SetReportListType(3);
        app.SetTab(2);
        app.SetHideInactive(1);
        app.SetAutoSave(0);
        app.SetHideWhenMinimized(1);
        std::string error;
        ASSERT_TRUE(app.SaveSettings(&error)) << error;
    }
    platform::SettingsStore store(path);
    ASSERT_TRUE(store.Load());
    EXPECT_EQ(store.GetInt("Settings", "Recent Task Count", 0), 3);
    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    app.LoadSettings();
    EXPECT_EQ(app.GetListType(), 0);
    EXPECT_EQ(app.GetRecentTaskCount(), 3);
    EXPECT_EQ(app.GetShowTimeEntryOnStart(), 1);
    EXPECT_EQ(app.GetShowTimeEntryOnStop(), 1);
    EXPECT_EQ(app.GetTimeInterval(), 7);
    EXPECT_EQ(app.GetWeekStart(), 4);
    EXPECT_EQ(app.GetElapsedTimeFormat(), 1);
    EXPECT_EQ(app.GetRecentTaskSortOrder(), 1);
    EXPECT_EQ(app.GetTimeSortOrder(), 5);
    EXPECT_EQ(app.GetExpenseSortOrder(), 6);
    EXPECT_EQ(app.GetToDoSortOrder(), 7);
    EXPECT_EQ(app.GetReportSortOrder(), 8);
    EXPECT_EQ(app.GetTaskViewType(), 1);
    EXPECT_EQ(app.GetReportListType(), 3);
    EXPECT_EQ(app.GetTab(), 2);
    EXPECT_EQ(app.GetHideInactive(), 1);
    EXPECT_EQ(app.GetAutoSave(), 0);
    EXPECT_EQ(app.GetHideWhenMinimized(), 1);
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

TEST(AppSettings, FailedWriteOfTheStoreIsReported)
{
    ScratchDir dir;
    WriteText(dir.File("file"), "x");
    platform::SettingsStore store(dir.File("file/settings.conf"));
    CTimeKeeperApp app(store, kClock, platform::LocaleInfo::UnitedStates());
    std::string error;
    EXPECT_FALSE(app.SaveSettings(&error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(app.GetSettingsError(), error);
}
