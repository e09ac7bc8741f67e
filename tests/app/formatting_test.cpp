#include "app/timekeeperapp.h"

#include <gtest/gtest.h>

namespace
{

struct LocaleApp
{
    explicit LocaleApp(platform::LocaleInfo locale) : app(store, clock, std::move(locale)) {}
    platform::SettingsStore store;
    platform::FixedClock clock{platform::LocalTime{2024, 3, 5, 14, 7, 9}};
    CTimeKeeperApp app;
};

const CDateTime kMoment = CDateTime::FromDate(2024, 3, 5, 14, 7, 9);

} // namespace

TEST(LocalePictures, OfTheInstalledLocales)
{
    const struct
    {
        const char* name;
        const char* monthDay;
        const char* monthYear;
        const char* timePicture;
        const char* timeNoSeconds;
        const char* shortDate;
        const char* longDate;
        const char* monthDayText;
        const char* monthYearText;
        const char* morning; // 09:05
        const char* midnight; // the end of the day
        const char* withSeconds;
        const char* currency; // of 1234.5
        const char* number;
        const char* distance;
        char listSeparator;
    } locales[] = {
        {"en_US.UTF-8", "%m/%d", "%m/%y", "h:mm:ss tt", "h:mm tt", "03/05/2024", "Tuesday, March 05, 2024",
         "03/05", "03/24", "9:05 AM", "12:00 AM", "2:07:09 PM", "$1,234.50", "1234.50", "Miles", ','},
        {"de_DE.UTF-8", "%d.%m", "%m.%y", "HH:mm:ss", "HH:mm", "05.03.2024", "Dienstag 05 März 2024", "05.03",
         "03.24", "09:05", "24:00", "14:07:09", "1.234,50 €", "1234,50", "Km", ';'},
        // A 24-hour clock with am/pm symbols keeps its picture as it is.
        {"en_GB.UTF-8", "%d/%m", "%m/%y", "HH:mm:ss", "HH:mm", "05/03/24", "Tuesday 05 March 2024", "05/03",
         "03/24", "09:05", "24:00", "14:07:09", "£1,234.50", "1234.50", "Km", ','},
    };
    for (const auto& l : locales)
    {
        SCOPED_TRACE(l.name);
        if (!platform::LocaleInfo::IsAvailable(l.name))
            GTEST_SKIP() << l.name << " is not installed (package locales-all)";
        LocaleApp f(platform::LocaleInfo::FromName(l.name));
        const CTimeKeeperApp& app = f.app;
        EXPECT_EQ(app.GetMonthDayFormat(), l.monthDay);
        EXPECT_EQ(app.GetMonthYearFormat(), l.monthYear);
        EXPECT_EQ(app.GetTimePicture(), l.timePicture);
        EXPECT_EQ(app.GetTimePictureNoSeconds(), l.timeNoSeconds);
        EXPECT_EQ(app.FormatShortDate(kMoment), l.shortDate);
        EXPECT_EQ(app.FormatLongDate(kMoment), l.longDate);
        EXPECT_EQ(app.FormatMonthDay(kMoment), l.monthDayText);
        EXPECT_EQ(app.FormatMonthYear(kMoment), l.monthYearText);
        EXPECT_EQ(app.FormatTime(CTinyTime(9, 5)), l.morning);
        EXPECT_EQ(app.FormatTime(CTinyTime(24, 0)), l.midnight);
        EXPECT_EQ(app.FormatTimeWithSeconds(kMoment), l.withSeconds);
        EXPECT_EQ(app.FormatCurrency(1234.5), l.currency);
        EXPECT_EQ(app.FormatNumber(1234.5), l.number);
        EXPECT_EQ(app.GetDistanceUnit(), l.distance);
        EXPECT_EQ(app.GetListSeparator(), l.listSeparator);
    }
}

TEST(LocalePictures, TwelveHourClockAndNegativeAmounts)
{
    LocaleApp f(platform::LocaleInfo::UnitedStates());
    const CTimeKeeperApp& app = f.app;
    EXPECT_EQ(app.FormatTime(CTinyTime(14, 7)), "2:07 PM");
    EXPECT_EQ(app.FormatTime(CTinyTime(0, 30)), "12:30 AM");
    EXPECT_EQ(app.FormatCurrency(-1234.5), "-$1,234.50");
    EXPECT_EQ(app.FormatCurrency(-5), "-$5.00");
    EXPECT_EQ(app.FormatCurrency(-0.001), "$0.00");
    EXPECT_EQ(app.FormatCurrency(1234567.891), "$1,234,567.89");
}

TEST(LocalePictures, TwentyFourHourRuleAndYearFirstOrder)
{
    platform::LocaleInfo locale;
    locale.timeFormat = "h:mm:ss tt";
    locale.clock24 = true;
    locale.amSymbol.clear();
    locale.pmSymbol.clear();
    locale.shortDateOrder = 2;
    locale.dateSeparator = "-";
    LocaleApp f(locale);
    EXPECT_EQ(f.app.GetTimePicture(), "H:mm:ss");
    EXPECT_EQ(f.app.GetTimePictureNoSeconds(), "H:mm");
    EXPECT_EQ(f.app.FormatTime(CTinyTime(9, 5)), "9:05");
    EXPECT_EQ(f.app.GetMonthDayFormat(), "%m-%d");
    EXPECT_EQ(f.app.GetMonthYearFormat(), "%y-%m");
    EXPECT_EQ(f.app.FormatMonthYear(kMoment), "24-03");

    // With an AM symbol the rule does not apply, even on a 24-hour clock.
    locale.amSymbol = "AM";
    f.app.SetLocale(locale);
    EXPECT_EQ(f.app.GetTimePicture(), "h:mm:ss tt");

    // A seconds element written with one "s" goes as well.
    locale.timeFormat = "HH.mm.s";
    locale.timeSeparator = ".";
    f.app.SetLocale(locale);
    EXPECT_EQ(f.app.GetTimePictureNoSeconds(), "HH.mm");
}

TEST(LocalePictures, PicturesWithLiteralTextAndUnpaddedFields)
{
    LocaleApp f(platform::LocaleInfo::UnitedStates());
    EXPECT_EQ(f.app.FormatDate(kMoment, "%a %-d %b '%y, %e|%%"), "Tue 5 Mar '24,  5|%");
    EXPECT_EQ(f.app.FormatTimePicture(7, 5, 3, "H'h'mm 'min' s"), "7h05 min 3");
    EXPECT_EQ(f.app.FormatShortDate(CDateTime::Null()), "");
    EXPECT_EQ(f.app.FormatTime(CTinyTime::Null()), "");
}
