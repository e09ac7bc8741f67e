#include "app/timekeeperapp.h"

#include "model/entry.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace
{

const int kIntervalMinutes[] = {1, 3, 5, 10, 15, 30, 60, 6};

const char* const kColumnGroups[][5] = {
    {"TimeTaskCol", "TimeStartCol", "TimeElapsedCol", "TimeEndCol", nullptr},
    {"TimeDateCol", "TimeNoteCol", "TimeStartCol2", "TimeEndCol2", "TimeElapsedCol2"},
    {"ExpenseTaskCol", "ExpenseTypeCol", "ExpenseAmountCol", nullptr, nullptr},
    {"ExpenseDateCol", "ExpenseTypeCol2", "ExpenseNoteCol", "ExpenseAmountCol2", nullptr},
    {"ToDoTaskCol", "ToDoDescriptionCol", "ToDoDueDateCol", "ToDoPriorityCol", nullptr},
    {"ToDoDescriptionCol2", "ToDoDueDateCol2", "ToDoCompleteDateCol", "ToDoPriorityCol2", nullptr},
    {"ReportTitleCol", "ReportTaskCol", "ReportDateCol", nullptr, nullptr},
    {"C0", "R0", nullptr, nullptr, nullptr},
};

const char* const kMarginKeys[4] = {"PageMarginLeft", "PageMarginTop", "PageMarginRight",
                                    "PageMarginBottom"};

// Digits with `separator` between groups of `group` (0: no grouping), counted from the right.
std::string Group(const std::string& digits, const std::string& separator, int group)
{
    if (group <= 0 || separator.empty() || digits.size() <= size_t(group))
        return digits;
    std::string out;
    const size_t first = digits.size() % size_t(group);
    for (size_t i = 0; i < digits.size(); ++i)
    {
        if (i != 0 && i >= first && (i - first) % size_t(group) == 0)
            out += separator;
        out += digits[i];
    }
    return out;
}

// A fixed-point number with the given separators; no sign for a value that rounds to 0.
std::string FixedNumber(double value, int decimals, const std::string& decimalSeparator,
                        const std::string& thousandsSeparator, int group, bool* negative = nullptr)
{
    if (!std::isfinite(value))
        value = 0.0;
    decimals = decimals < 0 ? 0 : decimals > 9 ? 9 : decimals;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, std::fabs(value));
    std::string text = buffer;
    const size_t dot = text.find('.');
    std::string whole = dot == std::string::npos ? text : text.substr(0, dot);
    std::string fraction = dot == std::string::npos ? std::string() : text.substr(dot + 1);
    const bool isZero = text.find_first_not_of("0.") == std::string::npos;
    const bool minus = value < 0 && !isZero;
    if (negative)
        *negative = minus;
    std::string out = Group(whole, thousandsSeparator, group);
    if (!fraction.empty())
        out += decimalSeparator + fraction;
    return negative ? out : (minus ? "-" + out : out);
}

std::string Padded(int value, int width)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%0*d", width, value);
    return buffer;
}

} // namespace

CTimeKeeperApp::CTimeKeeperApp(platform::SettingsStore& store, const platform::Clock& clock,
                               platform::LocaleInfo locale)
    : m_store(store), m_clock(clock), m_locale(std::move(locale))
{
    m_weekStart = (m_locale.firstDayOfWeek + 1) % 7 + 1;
    ComputePictures();
}

void CTimeKeeperApp::LoadSettings()
{
    m_recentFiles.clear();
    for (int i = 1; i <= kRecentFileCount; ++i)
    {
        const std::string path = m_store.GetString(kRecentFileList, "File" + std::to_string(i), "");
        if (!path.empty())
            m_recentFiles.push_back(path);
    }

    const auto get = [this](const char* key, int defaultValue) {
        return m_store.GetInt(kSettings, key, defaultValue);
    };
    m_listType = get("ListType", 1);
    m_recentTaskCount = get("Recent Task Count", 10);
    m_showTimeEntryOnStart = get("ShowTimeEntryOnStart", 0);
    m_showTimeEntryOnStop = get("ShowTimeEntryOnStop", 0);
    m_timeInterval = get("TimeInterval", 0);
    // The locale counts 0 = Monday ... 6 = Sunday; the setting 1 = Sunday ... 7 = Saturday.
    m_weekStart = get("WeekStart", (m_locale.firstDayOfWeek + 1) % 7 + 1);
    m_elapsedTimeFormat = get("ElapsedTimeFormat", 0);
    m_recentTaskSortOrder = get("RecentTaskSortOrder", 0);
    m_timeSortOrder = get("TimeSortOrder", 1);
    m_expenseSortOrder = get("ExpenseSortOrder", 0);
    m_todoSortOrder = get("ToDoSortOrder", 0);
    m_reportSortOrder = get("ReportSortOrder", 0);
    m_taskViewType = get("TaskViewType", 0);
    m_reportListType = get("ReportListType", 0);
    m_tab = get("Tab", 0);
    m_hideInactive = get("HideInactive", 0);
    m_autoSave = get("AutoSave", 1);
    m_hideWhenMinimized = get("HideWhenMinimized", 0);

    CheckColumnWidths();
}

bool CTimeKeeperApp::SaveSettings(std::string* error)
{
    const auto set = [this](const char* key, int value) { m_store.SetInt(kSettings, key, value); };
    set("ListType", m_listType);
    set("Recent Task Count", m_recentTaskCount);
    set("ShowTimeEntryOnStart", m_showTimeEntryOnStart);
    set("ShowTimeEntryOnStop", m_showTimeEntryOnStop);
    set("TimeInterval", m_timeInterval);
    set("WeekStart", m_weekStart);
    set("ElapsedTimeFormat", m_elapsedTimeFormat);
    set("RecentTaskSortOrder", m_recentTaskSortOrder);
    set("TimeSortOrder", m_timeSortOrder);
    set("ExpenseSortOrder", m_expenseSortOrder);
    set("ToDoSortOrder", m_todoSortOrder);
    set("ReportSortOrder", m_reportSortOrder);
    set("TaskViewType", m_taskViewType);
    set("ReportListType", m_reportListType);
    set("Tab", m_tab);
    set("HideInactive", m_hideInactive);
    set("AutoSave", m_autoSave);
    set("HideWhenMinimized", m_hideWhenMinimized);

    for (int i = 1; i <= kRecentFileCount; ++i)
    {
        const std::string key = "File" + std::to_string(i);
        if (size_t(i) <= m_recentFiles.size())
            m_store.SetString(kRecentFileList, key, m_recentFiles[size_t(i) - 1]);
        else
            m_store.Remove(kRecentFileList, key);
    }
    Persist();
    if (error)
        *error = m_settingsError;
    return m_settingsError.empty();
}

void CTimeKeeperApp::Persist()
{
    m_settingsError.clear();
    m_store.Save(&m_settingsError);
}

void CTimeKeeperApp::CheckColumnWidths()
{
    bool changed = false;
    for (const auto& group : kColumnGroups)
    {
        bool allZero = true;
        for (const char* key : group)
            if (key && m_store.GetInt(kSettings, key, 1) != 0)
                allZero = false;
        if (!allZero)
            continue;
        for (const char* key : group)
            if (key)
                m_store.Remove(kSettings, key);
        changed = true;
    }
    if (changed)
        Persist();
}

int CTimeKeeperApp::GetStopAtMidnight() const { return m_store.GetInt(kSettings, "StopAtMidnight", 1); }

void CTimeKeeperApp::SetStopAtMidnight(int v)
{
    m_store.SetInt(kSettings, "StopAtMidnight", v);
    Persist();
}

int CTimeKeeperApp::GetFastEntry() const { return m_store.GetInt(kSettings, "FastEntry", 1); }

void CTimeKeeperApp::SetFastEntry(int v)
{
    m_store.SetInt(kSettings, "FastEntry", v);
    Persist();
}

bool CTimeKeeperApp::GetShowLevel(int level) const
{
    return m_store.GetInt(kSettings, "Show Level" + std::to_string(level), 0) != 0;
}

void CTimeKeeperApp::SetShowLevel(int level, bool on)
{
    m_store.SetInt(kSettings, "Show Level" + std::to_string(level), on ? 1 : 0);
    Persist();
}

std::string CTimeKeeperApp::GetInvoiceAddress() const
{
    return m_store.GetString(kSettings, "InvoiceAddress", "");
}

void CTimeKeeperApp::SetInvoiceAddress(const std::string& v)
{
    m_store.SetString(kSettings, "InvoiceAddress", v);
    Persist();
}

std::string CTimeKeeperApp::GetDefaultTerms() const
{
    return m_store.GetString(kSettings, "DefaultTerms", "");
}

void CTimeKeeperApp::SetDefaultTerms(const std::string& v)
{
    m_store.SetString(kSettings, "DefaultTerms", v);
    Persist();
}

double CTimeKeeperApp::GetDefaultTaxRate() const
{
    // Read without the process locale: a decimal comma from an older writer is accepted.
    std::string text = m_store.GetString(kSettings, "DefaultTaxRate", "0.0");
    const size_t begin = text.find_first_not_of(" \t");
    text = begin == std::string::npos ? std::string() : text.substr(begin);
    for (char& c : text)
        if (c == ',')
            c = '.';
    if (!text.empty() && text[0] == '+')
        text.erase(0, 1);
    double value = 0.0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    (void)end;
    return ec == std::errc() && std::isfinite(value) ? value : 0.0;
}

void CTimeKeeperApp::SetDefaultTaxRate(double v)
{
    // "%e" as the C locale writes it, whatever the process locale is.
    char buffer[64];
    const auto [end, ec] =
        std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::scientific, 6);
    m_store.SetString(kSettings, "DefaultTaxRate",
                      ec == std::errc() ? std::string(buffer, end) : std::string("0.0"));
    Persist();
}

int CTimeKeeperApp::GetInvoiceNumber() const { return m_store.GetInt(kSettings, "InvoiceNumber", 1); }

void CTimeKeeperApp::SetInvoiceNumber(int v)
{
    m_store.SetInt(kSettings, "InvoiceNumber", v);
    Persist();
}

int CTimeKeeperApp::GetProfileInt(const std::string& key, int defaultValue) const
{
    return m_store.GetInt(kSettings, key, defaultValue);
}

void CTimeKeeperApp::WriteProfileInt(const std::string& key, int value)
{
    m_store.SetInt(kSettings, key, value);
    Persist();
}

void CTimeKeeperApp::GetPageMargins(int& left, int& top, int& right, int& bottom) const
{
    const int measure = m_locale.measurementSystem;
    const int defaultMargin = DefaultPageMargin(measure);
    int* margins[4] = {&left, &top, &right, &bottom};
    // Margins stored in the other measure would be read in the wrong unit.
    const bool sameMeasure = GetPageMeasure() == measure;
    for (int i = 0; i < 4; ++i)
        *margins[i] = sameMeasure ? m_store.GetInt(kSettings, kMarginKeys[i], defaultMargin)
                                  : defaultMargin;
}

void CTimeKeeperApp::SetPageMargins(int left, int top, int right, int bottom)
{
    const int margins[4] = {left, top, right, bottom};
    for (int i = 0; i < 4; ++i)
        m_store.SetInt(kSettings, kMarginKeys[i], margins[i]);
    Persist();
}

int CTimeKeeperApp::GetPageMeasure() const
{
    return m_store.GetInt(kSettings, "PageMeasure", m_locale.measurementSystem);
}

void CTimeKeeperApp::SavePageMeasure()
{
    m_store.SetInt(kSettings, "PageMeasure", m_locale.measurementSystem);
    Persist();
}

int CTimeKeeperApp::GetTipStartUp() const { return m_store.GetInt(kTip, "StartUp", 0); }

void CTimeKeeperApp::SetTipStartUp(int v)
{
    m_store.SetInt(kTip, "StartUp", v);
    Persist();
}

long CTimeKeeperApp::GetTipFilePos() const { return m_store.GetInt(kTip, "FilePos", 0); }

void CTimeKeeperApp::SetTipFilePos(long v)
{
    m_store.SetInt(kTip, "FilePos", int(v));
    Persist();
}

std::string CTimeKeeperApp::GetTipTimeStamp() const { return m_store.GetString(kTip, "TimeStamp", ""); }

void CTimeKeeperApp::SetTipTimeStamp(const std::string& v)
{
    m_store.SetString(kTip, "TimeStamp", v);
    Persist();
}

void CTimeKeeperApp::AddToRecentFiles(const std::string& path)
{
    if (path.empty())
        return;
    // The same file reached by another spelling of its path is still one entry.
    std::error_code ec;
    std::filesystem::path full = std::filesystem::absolute(path, ec);
    const std::string normal = ec ? path : full.lexically_normal().string();
    std::erase(m_recentFiles, normal);
    m_recentFiles.insert(m_recentFiles.begin(), normal);
    if (m_recentFiles.size() > size_t(kRecentFileCount))
        m_recentFiles.resize(kRecentFileCount);
}

void CTimeKeeperApp::RemoveFromRecentFiles(const std::string& path)
{
    std::error_code ec;
    std::filesystem::path full = std::filesystem::absolute(path, ec);
    const std::string normal = ec ? path : full.lexically_normal().string();
    std::erase(m_recentFiles, normal);
    std::erase(m_recentFiles, path);
}

CDateTime CTimeKeeperApp::Now() const
{
    const platform::LocalTime t = m_clock.Now();
    return CDateTime::FromDate(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

int CTimeKeeperApp::IntervalMinutes(int intervalIndex)
{
    // A damaged setting rounds to the minute rather than to nothing.
    if (intervalIndex < 0 || intervalIndex >= int(std::size(kIntervalMinutes)))
        return 1;
    return kIntervalMinutes[intervalIndex];
}

CDateTime CTimeKeeperApp::RoundTime(const CDateTime& time, int intervalIndex) const
{
    if (!time.IsValid())
        return time;
    const int interval = IntervalMinutes(intervalIndex == -1 ? m_timeInterval : intervalIndex);
    const CDateTime floor = CDateTime::FromDate(time.GetYear(), time.GetMonth(), time.GetDay(),
                                                time.GetHour(), time.GetMinute() / interval * interval, 0);
    const CDateTime ceiling = floor.AddMinutes(interval);
    const int64_t t = time.TotalSeconds();
    // An exact half goes up; the seconds of the input take part in the comparison.
    return t - floor.TotalSeconds() < ceiling.TotalSeconds() - t ? floor : ceiling;
}

std::string CTimeKeeperApp::GetElapsedText(const CTinyElapsedTime& elapsed) const
{
    const uint32_t hours = elapsed.GetHours();
    const int minutes = elapsed.GetMinutes();
    if (hours == 0 && minutes < 1)
        return std::string();
    if (m_elapsedTimeFormat == 0)
        return std::to_string(hours) + m_locale.timeSeparator + Padded(minutes, 2);
    return FormatGroupedNumber(hours + minutes / 60.0, 2);
}

std::string CTimeKeeperApp::GetElapsedText(const CTimeEntry& entry) const
{
    return GetElapsedText(entry.GetElapsed(CTinyTime::FromDate(RoundTime(Now()))));
}

void CTimeKeeperApp::SetLocale(platform::LocaleInfo locale)
{
    m_locale = std::move(locale);
    ComputePictures();
}

void CTimeKeeperApp::ComputePictures()
{
    const std::string& separator = m_locale.dateSeparator;
    m_longDatePicture = m_locale.longDatePicture;
    m_monthDayFormat = m_locale.shortDateOrder == 1 ? "%d" + separator + "%m" : "%m" + separator + "%d";
    m_monthYearFormat = m_locale.shortDateOrder == 2 ? "%y" + separator + "%m" : "%m" + separator + "%y";

    std::string picture = m_locale.timeFormat;
    if (m_locale.clock24 && m_locale.amSymbol.empty() && m_locale.pmSymbol.empty())
    {
        bool quoted = false;
        for (char& c : picture)
        {
            if (c == '\'')
                quoted = !quoted;
            else if (!quoted && c == 'h')
                c = 'H';
        }
        while (!picture.empty() && (picture.back() == 't' || picture.back() == ' '))
            picture.pop_back();
    }
    m_timePicture = picture;

    m_timePictureNoSeconds = picture;
    for (const char* seconds : {"ss", "s"})
    {
        const size_t at = m_timePictureNoSeconds.find(m_locale.timeSeparator + seconds);
        if (at != std::string::npos)
        {
            m_timePictureNoSeconds.erase(at, m_locale.timeSeparator.size() + std::string(seconds).size());
            break;
        }
    }
}

std::string CTimeKeeperApp::FormatDate(const CDateTime& d, const std::string& picture) const
{
    if (!d.IsValid())
        return std::string();
    const int year = d.GetYear();
    const int month = d.GetMonth();
    const int day = d.GetDay();
    const int weekday = d.GetDayOfWeek() - 1; // 0 = Sunday
    std::string out;
    for (size_t i = 0; i < picture.size(); ++i)
    {
        if (picture[i] != '%' || i + 1 == picture.size())
        {
            out += picture[i];
            continue;
        }
        ++i;
        char flag = 0;
        while (i + 1 < picture.size() && (picture[i] == '-' || picture[i] == '_' ||
                                          picture[i] == '0' || picture[i] == 'E' || picture[i] == 'O'))
        {
            if (picture[i] == '-' || picture[i] == '_')
                flag = picture[i];
            ++i;
        }
        const auto number = [&](int value, char pad) {
            if (flag == '-' || value >= 10)
                return std::to_string(value);
            if (flag == '_' || pad == ' ')
                return " " + std::to_string(value);
            return "0" + std::to_string(value);
        };
        switch (picture[i])
        {
        case 'Y': out += std::to_string(year); break;
        case 'y': out += Padded(((year % 100) + 100) % 100, 2); break;
        case 'C': out += Padded(year / 100, 2); break;
        case 'm': out += number(month, '0'); break;
        case 'd': out += number(day, '0'); break;
        case 'e': out += number(day, ' '); break;
        case 'B': out += m_locale.monthNames[month - 1]; break;
        case 'b': case 'h': out += m_locale.abbrevMonthNames[month - 1]; break;
        case 'A': out += m_locale.dayNames[weekday]; break;
        case 'a': out += m_locale.abbrevDayNames[weekday]; break;
        case '%': out += '%'; break;
        default: out += '%'; out += picture[i]; break;
        }
    }
    return out;
}

std::string CTimeKeeperApp::FormatTimePicture(int hour, int minute, int second,
                                              const std::string& picture) const
{
    std::string out;
    for (size_t i = 0; i < picture.size();)
    {
        const char c = picture[i];
        if (c == '\'')
        {
            const size_t end = picture.find('\'', i + 1);
            out += picture.substr(i + 1, (end == std::string::npos ? picture.size() : end) - i - 1);
            i = end == std::string::npos ? picture.size() : end + 1;
            continue;
        }
        size_t run = 1;
        while (i + run < picture.size() && picture[i + run] == c)
            ++run;
        const bool twoDigits = run >= 2;
        // Hour 24 (end of the day) reads 24 on a 24-hour clock and 12 AM on a 12-hour one.
        const int hour12 = hour % 12 == 0 ? 12 : hour % 12;
        const bool pm = hour >= 12 && hour < 24;
        switch (c)
        {
        case 'H': out += twoDigits ? Padded(hour, 2) : std::to_string(hour); break;
        case 'h': out += twoDigits ? Padded(hour12, 2) : std::to_string(hour12); break;
        case 'm': out += twoDigits ? Padded(minute, 2) : std::to_string(minute); break;
        case 's': out += twoDigits ? Padded(second, 2) : std::to_string(second); break;
        case 't':
        {
            const std::string& symbol = pm ? m_locale.pmSymbol : m_locale.amSymbol;
            out += twoDigits ? symbol : symbol.substr(0, 1);
            break;
        }
        default: out += std::string(run, c); break;
        }
        i += run;
    }
    // A picture ending in an empty AM/PM symbol leaves a blank behind.
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

std::string CTimeKeeperApp::FormatShortDate(const CDateTime& d) const
{
    return FormatDate(d, m_locale.shortDatePicture);
}

std::string CTimeKeeperApp::FormatLongDate(const CDateTime& d) const
{
    return FormatDate(d, m_longDatePicture);
}

std::string CTimeKeeperApp::FormatMonthDay(const CDateTime& d) const
{
    return FormatDate(d, m_monthDayFormat);
}

std::string CTimeKeeperApp::FormatMonthYear(const CDateTime& d) const
{
    return FormatDate(d, m_monthYearFormat);
}

std::string CTimeKeeperApp::FormatTime(const CTinyTime& t) const
{
    if (!t.IsValid())
        return std::string();
    return FormatTimePicture(t.GetHour(), t.GetMinute(), 0, m_timePictureNoSeconds);
}

std::string CTimeKeeperApp::FormatTimeWithSeconds(const CDateTime& t) const
{
    if (!t.IsValid())
        return std::string();
    return FormatTimePicture(t.GetHour(), t.GetMinute(), t.GetSecond(), m_timePicture);
}

std::string CTimeKeeperApp::FormatCurrency(double amount) const
{
    bool negative = false;
    const std::string number =
        FixedNumber(amount, m_locale.currencyDigits, m_locale.monetaryDecimalSeparator,
                    m_locale.monetaryThousandsSeparator, m_locale.monetaryGrouping, &negative);
    const std::string space = m_locale.currencySpaceSeparated ? " " : "";
    const std::string body = m_locale.currencySymbolFirst ? m_locale.currencySymbol + space + number
                                                          : number + space + m_locale.currencySymbol;
    return negative ? "-" + body : body;
}

std::string CTimeKeeperApp::FormatNumber(double value, int decimals) const
{
    return FixedNumber(value, decimals, m_locale.decimalSeparator, std::string(), 0);
}

std::string CTimeKeeperApp::FormatGroupedNumber(double value, int decimals) const
{
    return FixedNumber(value, decimals, m_locale.decimalSeparator, m_locale.thousandsSeparator,
                       m_locale.grouping);
}

std::string CTimeKeeperApp::GetDistanceUnit() const
{
    return m_locale.measurementSystem == 1 ? "Miles" : "Km";
}

char CTimeKeeperApp::GetListSeparator() const { return m_locale.ListSeparator()[0]; }
