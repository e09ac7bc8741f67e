#pragma once

#include "model/datetime.h"
#include "model/tinytime.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"

#include <string>

// The application object: the user's settings (cached ones read at start-up and
// written at exit, the others read on demand), the pictures taken from the locale,
// the formatting of dates, times, money and durations, and the rounding of times.
class CTimeKeeperApp
{
public:
    CTimeKeeperApp(platform::SettingsStore& store, const platform::Clock& clock,
                   platform::LocaleInfo locale);

    // Cached settings ("Settings" section).
    void LoadSettings();
    void SaveSettings();

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
    int GetAutoSave() const { return m_autoSave; }
    void SetAutoSave(int v) { m_autoSave = v; }
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

    // Time.
    // The local time now, with seconds.
    CDateTime Now() const;
    CDateTime Today() const { return Now().DatePart(); }
    // Rounds to the interval of `intervalIndex` (0 to 7; -1: the "TimeInterval" setting).
    CDateTime RoundTime(const CDateTime& time, int intervalIndex = -1) const;
    static int IntervalMinutes(int intervalIndex);
    // Empty below one minute; "1:05" (time separator) or "1.08" by "ElapsedTimeFormat".
    std::string GetElapsedText(const CTinyElapsedTime& elapsed) const;

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
    // Money in the locale's currency format ("$1,234.50").
    std::string FormatCurrency(double amount) const;
    // Plain number: two decimals, the locale's decimal separator, no grouping.
    std::string FormatNumber(double value, int decimals = 2) const;
    // "Miles" (U.S. measurement) or "Km".
    std::string GetDistanceUnit() const;
    // The first character of the list separator (";" where the decimal separator is ",").
    char GetListSeparator() const;
    // 0 metric, 1 U.S.
    int GetMeasurementSystem() const { return m_locale.measurementSystem; }

    platform::SettingsStore& GetStore() { return m_store; }
    const platform::Clock& GetClock() const { return m_clock; }

private:
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
    int m_autoSave = 1;
    int m_hideWhenMinimized = 0;
};
