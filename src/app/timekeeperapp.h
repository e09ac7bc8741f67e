#pragma once

#include "model/datetime.h"
#include "model/tinytime.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"

#include <atomic>
#include <string>
#include <vector>

class CTimeEntry;

// The application object: the user's settings (cached ones read at start-up and
// written at exit, the others read on demand), the pictures taken from the locale,
// the formatting of dates, times, money and durations, and the rounding of times.
class CTimeKeeperApp
{
public:
    CTimeKeeperApp(platform::SettingsStore& store, const platform::Clock& clock,
                   platform::LocaleInfo locale);

    static constexpr const char* kSettings = "Settings";
    static constexpr const char* kTip = "Tip";
    static constexpr const char* kRecentFileList = "Recent File List";
    static constexpr int kRecentFileCount = 4;

    // Start-up: the recent-file list, every cached setting (absent keys take their
    // defaults), then the column-width check.
    void LoadSettings();
    // Writes every cached setting and the recent-file list and saves the store. False
    // with an error text when the store cannot be written.
    bool SaveSettings(std::string* error = nullptr);
    // Deletes every column-width group whose keys all read 0, so that the next read of
    // those keys yields the built-in widths.
    void CheckColumnWidths();
    // The text of the last failed write of the store (empty when the last one worked).
    const std::string& GetSettingsError() const { return m_settingsError; }

    int GetListType() const { return m_listType; }
    void SetListType(int v) { m_listType = v; }
    int GetRecentTaskCount() const { return m_recentTaskCount; }
    void SetRecentTaskCount(int v) { m_recentTaskCount = v; }
    int GetShowTimeEntryOnStart() const { return m_showTimeEntryOnStart; }
    void SetShowTimeEntryOnStart(int v) { m_showTimeEntryOnStart = v; }
    int GetShowTimeEntryOnStop() const { return m_showTimeEntryOnStop; }
    void SetShowTimeEntryOnStop(int v) { m_showTimeEntryOnStop = v; }
    int GetTimeInterval() const { return m_timeInterval; }
    void SetTimeInterval(int v) { m_timeInterval = v; }
    int GetWeekStart() const { return m_weekStart; }
    void SetWeekStart(int v) { m_weekStart = v; }
    int GetElapsedTimeFormat() const { return m_elapsedTimeFormat; }
    void SetElapsedTimeFormat(int v) { m_elapsedTimeFormat = v; }
    int GetRecentTaskSortOrder() const { return m_recentTaskSortOrder; }
    void SetRecentTaskSortOrder(int v) { m_recentTaskSortOrder = v; }
    int GetTimeSortOrder() const { return m_timeSortOrder; }
    void SetTimeSortOrder(int v) { m_timeSortOrder = v; }
    int GetExpenseSortOrder() const { return m_expenseSortOrder; }
    void SetExpenseSortOrder(int v) { m_expenseSortOrder = v; }
    int GetToDoSortOrder() const { return m_todoSortOrder; }
    void SetToDoSortOrder(int v) { m_todoSortOrder = v; }
    int GetReportSortOrder() const { return m_reportSortOrder; }
    void SetReportSortOrder(int v) { m_reportSortOrder = v; }
    int GetTaskViewType() const { return m_taskViewType; }
    void SetTaskViewType(int v) { m_taskViewType = v; }
    int GetReportListType() const { return m_reportListType; }
    void SetReportListType(int v) { m_reportListType = v; }
    int GetTab() const { return m_tab; }
    void SetTab(int v) { m_tab = v; }
    int GetHideInactive() const { return m_hideInactive; }
    void SetHideInactive(int v) { m_hideInactive = v; }
    // Read by the automatic-save thread as well.
    int GetAutoSave() const { return m_autoSave.load(); }
    void SetAutoSave(int v) { m_autoSave.store(v); }
    int GetHideWhenMinimized() const { return m_hideWhenMinimized; }
    void SetHideWhenMinimized(int v) { m_hideWhenMinimized = v; }

    // Settings read on demand (written at once by their setters).
    int GetStopAtMidnight() const;
    void SetStopAtMidnight(int v);
    int GetFastEntry() const;
    void SetFastEntry(int v);
    bool GetShowLevel(int level) const;
    void SetShowLevel(int level, bool on);
    std::string GetInvoiceAddress() const;
    void SetInvoiceAddress(const std::string& v);
    std::string GetDefaultTerms() const;
    void SetDefaultTerms(const std::string& v);
    double GetDefaultTaxRate() const;
    void SetDefaultTaxRate(double v);
    int GetInvoiceNumber() const;
    void SetInvoiceNumber(int v);
    // Any other key of section "Settings" (window placement, pane sizes, column widths).
    int GetProfileInt(const std::string& key, int defaultValue) const;
    void WriteProfileInt(const std::string& key, int value);

    // Printed-page margins, in thousandths of an inch (U.S. measure) or hundredths of a
    // millimetre (metric). When the stored measure is not the locale's, all four are the
    // locale's defaults (750 or 2000), whatever is stored.
    void GetPageMargins(int& left, int& top, int& right, int& bottom) const;
    void SetPageMargins(int left, int top, int right, int bottom);
    // The measure the margins were stored in ("PageMeasure", default the locale's).
    int GetPageMeasure() const;
    // Records the locale's measure as the margins' measure.
    void SavePageMeasure();
    static int DefaultPageMargin(int measurementSystem) { return measurementSystem == 1 ? 750 : 2000; }

    // Section "Tip".
    // 1: do not show tips at start-up.
    int GetTipStartUp() const;
    void SetTipStartUp(int v);
    // Byte offset of the next tip in the tips file.
    long GetTipFilePos() const;
    void SetTipFilePos(long v);
    // The tips file's modification time as last seen.
    std::string GetTipTimeStamp() const;
    void SetTipTimeStamp(const std::string& v);

    // Most-recently-used files, most recent first, at most kRecentFileCount.
    const std::vector<std::string>& GetRecentFiles() const { return m_recentFiles; }
    void AddToRecentFiles(const std::string& path);
    void RemoveFromRecentFiles(const std::string& path);

    // Time.
    // The local time now, with seconds.
    CDateTime Now() const;
    CDateTime Today() const { return Now().DatePart(); }
    // Rounds to the interval of `intervalIndex` (0 to 7; -1: the "TimeInterval" setting).
    CDateTime RoundTime(const CDateTime& time, int intervalIndex = -1) const;
    static int IntervalMinutes(int intervalIndex);
    // Empty below one minute; "1:05" (time separator) or "1.08" by "ElapsedTimeFormat".
    std::string GetElapsedText(const CTinyElapsedTime& elapsed) const;
    // The elapsed text of an entry; a running entry ends at the rounded current time.
    std::string GetElapsedText(const CTimeEntry& entry) const;

    // Locale pictures and formatting.
    const platform::LocaleInfo& GetLocale() const { return m_locale; }
    void SetLocale(platform::LocaleInfo locale);
    std::string FormatShortDate(const CDateTime& d) const;
    std::string FormatLongDate(const CDateTime& d) const;
    std::string FormatMonthDay(const CDateTime& d) const;
    std::string FormatMonthYear(const CDateTime& d) const;
    // A time of day with the picture without seconds ("9:05 AM", "09:05").
    std::string FormatTime(const CTinyTime& t) const;
    std::string FormatTimeWithSeconds(const CDateTime& t) const;
    // Any date with an strftime-style picture in the locale's names (%A %a %B %b %d %e
    // %m %Y %y, "-" for no padding).
    std::string FormatDate(const CDateTime& d, const std::string& picture) const;
    // A time of day with an h/H/mm/ss/tt picture; hour 24 is the end of the day.
    std::string FormatTimePicture(int hour, int minute, int second, const std::string& picture) const;

    // The pictures taken from the locale.
    const std::string& GetLongDatePicture() const { return m_longDatePicture; }
    // "%m/%d" or "%d.%m": month and day in the locale's order.
    const std::string& GetMonthDayFormat() const { return m_monthDayFormat; }
    // "%m/%y" or "%y-%m".
    const std::string& GetMonthYearFormat() const { return m_monthYearFormat; }
    const std::string& GetTimePicture() const { return m_timePicture; }
    const std::string& GetTimePictureNoSeconds() const { return m_timePictureNoSeconds; }
    // Money in the locale's currency format ("$1,234.50").
    std::string FormatCurrency(double amount) const;
    // Plain number: two decimals, the locale's decimal separator, no grouping.
    std::string FormatNumber(double value, int decimals = 2) const;
    // A number in the user's number format: the locale's decimal separator and grouping.
    std::string FormatGroupedNumber(double value, int decimals = 2) const;
    // "Miles" (U.S. measurement) or "Km".
    std::string GetDistanceUnit() const;
    // The first character of the list separator (";" where the decimal separator is ",").
    char GetListSeparator() const;
    // 0 metric, 1 U.S.
    int GetMeasurementSystem() const { return m_locale.measurementSystem; }

    platform::SettingsStore& GetStore() { return m_store; }
    const platform::Clock& GetClock() const { return m_clock; }

private:
    void ComputePictures();
    // Saves the store after an on-demand key changed.
    void Persist();

    platform::SettingsStore& m_store;
    const platform::Clock& m_clock;
    platform::LocaleInfo m_locale;

    int m_listType = 1;
    int m_recentTaskCount = 10;
    int m_showTimeEntryOnStart = 0;
    int m_showTimeEntryOnStop = 0;
    int m_timeInterval = 0;
    int m_weekStart = 1;
    int m_elapsedTimeFormat = 0;
    int m_recentTaskSortOrder = 0;
    int m_timeSortOrder = 1;
    int m_expenseSortOrder = 0;
    int m_todoSortOrder = 0;
    int m_reportSortOrder = 0;
    int m_taskViewType = 0;
    int m_reportListType = 0;
    int m_tab = 0;
    int m_hideInactive = 0;
    std::atomic<int> m_autoSave{1};
    int m_hideWhenMinimized = 0;

    std::vector<std::string> m_recentFiles;
    std::string m_settingsError;

    std::string m_longDatePicture;
    std::string m_monthDayFormat;
    std::string m_monthYearFormat;
    std::string m_timePicture;
    std::string m_timePictureNoSeconds;
};
