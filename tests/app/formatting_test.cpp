#include "app/timekeeperapp.h"

#include <gtest/gtest.h>

namespace
{

#define REQUIRE_LOCALE(name)                                                                       \
    if (!platform::LocaleInfo::IsAvailable(name))                                                  \
    GTEST_SKIP() << name << " is not installed (package locales-all)"

struct LocaleApp
{
    explicit LocaleApp(platform::LocaleInfo locale) : app(store, clock, std::move(locale)) {}
    platform::SettingsStore store;
    platform::FixedClock clock{platform::LocalTime{2024, 3, 5, 14, 7, 9}};
    CTimeKeeperApp app;
};

const CDateTime kMoment = CDateTime::FromDate(2024, 3, 5, 14, 7, 9);

} // namespace

TEST(LocalePictures, UnitedStates)
{
    REQUIRE_LOCALE("en_US.UTF-8");
    LocaleApp f(platform::LocaleInfo::FromName("en_US.UTF-8"));
    const CTimeKeeperApp& app = f.app;
    EXPECT_EQ(app.GetMonthDayFormat(), "%m/%d");
    EXPECT_EQ(app.GetMonthYearFormat(), "%m/%y");
    EXPECT_EQ(app.GetTimePicture(), "h:mm:ss tt");
    EXPECT_EQ(app.GetTimePictureNoSeconds(), "h:mm tt");
    EXPECT_EQ(app.FormatShortDate(kMoment), "03/05/2024");
    EXPECT_EQ(app.FormatLongDate(kMoment), "Tuesday, March 05, 2024");
    EXPECT_EQ(app.FormatMonthDay(kMoment), "03/05");
    EXPECT_EQ(app.FormatMonthYear(kMoment), "03/24");
    EXPECT_EQ(app.FormatTime(CTinyTime(14, 7)), "2:07 PM");
    EXPECT_EQ(app.FormatTime(CTinyTime(0, 30)), "12:30 AM");
    EXPECT_EQ(app.FormatTime(CTinyTime(24, 0)), "12:00 AM");
    EXPECT_EQ(app.FormatTimeWithSeconds(kMoment), "2:07:09 PM");
    EXPECT_EQ(app.FormatCurrency(1234.5), "$1,234.50");
    EXPECT_EQ(app.FormatCurrency(-1234.5), "-$1,234.50");
    EXPECT_EQ(app.FormatCurrency(-0.001), "$0.00");
    EXPECT_EQ(app.FormatCurrency(1234567.891), "$1,234,567.89");
    EXPECT_EQ(app.FormatNumber(1234.5), "1234.50");
    EXPECT_EQ(app.GetDistanceUnit(), "Miles");
    EXPECT_EQ(app.GetListSeparator(), ',');
}

TEST(LocalePictures, Germany)
{
    REQUIRE_LOCALE("de_DE.UTF-8");
    LocaleApp f(platform::LocaleInfo::FromName("de_DE.UTF-8"));
    const CTimeKeeperApp& app = f.app;
    EXPECT_EQ(app.GetMonthDayFormat(), "%d.%m");
    EXPECT_EQ(app.GetMonthYearFormat(), "%m.%y");
    EXPECT_EQ(app.GetTimePicture(), "HH:mm:ss");
    EXPECT_EQ(app.GetTimePictureNoSeconds(), "HH:mm");
    EXPECT_EQ(app.FormatShortDate(kMoment), "05.03.2024");
    EXPECT_EQ(app.FormatLongDate(kMoment), "Dienstag 05 März 2024");
    EXPECT_EQ(app.FormatMonthDay(kMoment), "05.03");
    EXPECT_EQ(app.FormatMonthYear(kMoment), "03.24");
    EXPECT_EQ(app.FormatTime(CTinyTime(9, 5)), "09:05");
    EXPECT_EQ(app.FormatTime(CTinyTime(24, 0)), "24:00");
    EXPECT_EQ(app.FormatTimeWithSeconds(kMoment), "14:07:09");
    EXPECT_EQ(app.FormatCurrency(1234.5), "1.234,50 €");
    EXPECT_EQ(app.FormatCurrency(-5), "-5,00 €");
    EXPECT_EQ(app.FormatNumber(1234.5), "1234,50");
    EXPECT_EQ(app.GetDistanceUnit(), "Km");
    EXPECT_EQ(app.GetListSeparator(), ';');
}

TEST(LocalePictures, GreatBritain)
{
    REQUIRE_LOCALE("en_GB.UTF-8");
    LocaleApp f(platform::LocaleInfo::FromName("en_GB.UTF-8"));
    const CTimeKeeperApp& app = f.app;
    EXPECT_EQ(app.GetMonthDayFormat(), "%d/%m");
    EXPECT_EQ(app.GetMonthYearFormat(), "%m/%y");
    // A 24-hour clock with am/pm symbols keeps its picture as it is.
    EXPECT_EQ(app.GetTimePictureNoSeconds(), "HH:mm");
    EXPECT_EQ(app.FormatShortDate(kMoment), "05/03/24");
    EXPECT_EQ(app.FormatLongDate(kMoment), "Tuesday 05 March 2024");
    EXPECT_EQ(app.FormatCurrency(1234.5), "£1,234.50");
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
