#pragma once

#include <string>

namespace platform
{

// What the user's locale says about dates, times, numbers and money. Built from
// the C library's locale of the environment (LC_TIME, LC_NUMERIC, LC_MONETARY,
// LC_MEASUREMENT); tests construct one with fixed values.
struct LocaleInfo
{
    // Short date order: 0 month-day-year, 1 day-month-year, 2 year-month-day.
    int shortDateOrder = 0;
    std::string dateSeparator = "/";
    // strftime-style pictures (%d %e %m %Y %y %B %b %A %a, "-" flag for no padding).
    std::string shortDatePicture = "%m/%d/%Y";
    std::string longDatePicture = "%A, %B %d, %Y";
    // The locale's time picture in the h/H/mm/ss/tt notation: "h:mm:ss tt", "HH:mm:ss";
    // literal letters stand in single quotes.
    std::string timeFormat = "h:mm:ss tt";
    std::string timeSeparator = ":";
    bool clock24 = false;
    std::string amSymbol = "AM";
    std::string pmSymbol = "PM";
    // 0 = Monday ... 6 = Sunday.
    int firstDayOfWeek = 6;
    // 0 metric, 1 U.S.
    int measurementSystem = 1;
    std::string decimalSeparator = ".";
    std::string thousandsSeparator = ",";
    std::string currencySymbol = "$";
    // Currency placement: true when the symbol precedes the amount.
    bool currencySymbolFirst = true;
    bool currencySpaceSeparated = false;
    int currencyDigits = 2;
    std::string monetaryDecimalSeparator = ".";
    std::string monetaryThousandsSeparator = ",";
    // Digits per group left of the separator (0: no grouping), for numbers and money.
    int grouping = 3;
    int monetaryGrouping = 3;
    // Day names Sunday..Saturday and month names January..December in the locale's language.
    std::string dayNames[7] = {"Sunday", "Monday", "Tuesday", "Wednesday",
                               "Thursday", "Friday", "Saturday"};
    std::string monthNames[12] = {"January", "February", "March",     "April",
                                  "May",     "June",     "July",      "August",
                                  "September", "October", "November", "December"};
    std::string abbrevDayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    std::string abbrevMonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

    // ";" where the decimal separator is ",", else ",".
    std::string ListSeparator() const { return decimalSeparator == "," ? ";" : ","; }

    // The en_US conventions, independent of the environment.
    static LocaleInfo UnitedStates() { return LocaleInfo(); }
    // Reads the locale named by the environment's LC_* variables. Categories left at the
    // plain "C" locale keep the U.S. conventions, as does a locale that is not installed.
    static LocaleInfo FromEnvironment();
    // Reads a named locale ("de_DE.UTF-8"); falls back to the U.S. conventions when absent.
    static LocaleInfo FromName(const std::string& localeName);
    // Whether the C library has the named locale installed.
    static bool IsAvailable(const std::string& localeName);
};

} // namespace platform
