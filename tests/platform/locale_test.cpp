#include "platform/locale.h"
#include "scratchdir.h"

#include <gtest/gtest.h>

using platform::LocaleInfo;

#define REQUIRE_LOCALE(name)                                                                       \
    if (!LocaleInfo::IsAvailable(name))                                                            \
    GTEST_SKIP() << name << " is not installed (package locales-all)"

TEST(Locale, UnitedStatesFromTheCLibraryMatchesTheBuiltInConventions)
{
    REQUIRE_LOCALE("en_US.UTF-8");
    const LocaleInfo us = LocaleInfo::FromName("en_US.UTF-8");
    const LocaleInfo builtIn = LocaleInfo::UnitedStates();
    EXPECT_EQ(us.shortDateOrder, builtIn.shortDateOrder);
    EXPECT_EQ(us.shortDatePicture, builtIn.shortDatePicture);
    EXPECT_EQ(us.longDatePicture, builtIn.longDatePicture);
    EXPECT_EQ(us.timeFormat, builtIn.timeFormat);
    EXPECT_FALSE(us.clock24);
    EXPECT_EQ(us.amSymbol, "AM");
    EXPECT_EQ(us.firstDayOfWeek, 6) << "Sunday";
    EXPECT_EQ(us.measurementSystem, 1);
    EXPECT_EQ(us.thousandsSeparator, ",");
    EXPECT_EQ(us.currencySymbol, "$");
    EXPECT_TRUE(us.currencySymbolFirst);
    EXPECT_FALSE(us.currencySpaceSeparated);
    EXPECT_EQ(us.abbrevMonthNames[11], "Dec");
}

TEST(Locale, Germany)
{
    REQUIRE_LOCALE("de_DE.UTF-8");
    const LocaleInfo de = LocaleInfo::FromName("de_DE.UTF-8");
    EXPECT_EQ(de.shortDateOrder, 1);
    EXPECT_EQ(de.dateSeparator, ".");
    EXPECT_EQ(de.shortDatePicture, "%d.%m.%Y");
    EXPECT_EQ(de.longDatePicture, "%A %d %B %Y");
    EXPECT_EQ(de.timeFormat, "HH:mm:ss");
    EXPECT_TRUE(de.clock24);
    EXPECT_EQ(de.amSymbol, "");
    EXPECT_EQ(de.firstDayOfWeek, 0) << "Monday";
    EXPECT_EQ(de.measurementSystem, 0);
    EXPECT_EQ(de.decimalSeparator, ",");
    EXPECT_EQ(de.thousandsSeparator, ".");
    EXPECT_EQ(de.currencySymbol, "€");
    EXPECT_FALSE(de.currencySymbolFirst);
    EXPECT_TRUE(de.currencySpaceSeparated);
    EXPECT_EQ(de.monthNames[2], "März");
    EXPECT_EQ(de.ListSeparator(), ";");
}

TEST(Locale, GreatBritainAndYearFirstSweden)
{
    REQUIRE_LOCALE("en_GB.UTF-8");
    const LocaleInfo gb = LocaleInfo::FromName("en_GB.UTF-8");
    EXPECT_EQ(gb.shortDateOrder, 1);
    EXPECT_EQ(gb.shortDatePicture, "%d/%m/%y");
    // A 24-hour clock that still names am and pm.
    EXPECT_EQ(gb.timeFormat, "HH:mm:ss");
    EXPECT_TRUE(gb.clock24);
    EXPECT_EQ(gb.amSymbol, "am");
    EXPECT_EQ(gb.firstDayOfWeek, 0);
    EXPECT_EQ(gb.measurementSystem, 0);
    EXPECT_EQ(gb.currencySymbol, "£");

    REQUIRE_LOCALE("sv_SE.UTF-8");
    const LocaleInfo sv = LocaleInfo::FromName("sv_SE.UTF-8");
    EXPECT_EQ(sv.shortDateOrder, 2);
    EXPECT_EQ(sv.dateSeparator, "-");
    // The date part of the locale's date-and-time picture, with full names.
    EXPECT_EQ(sv.longDatePicture, "%A %e %B %Y");
}

TEST(Locale, MissingLocalesAndPlainCategoriesKeepTheUnitedStatesConventions)
{
    EXPECT_FALSE(LocaleInfo::IsAvailable("xx_NOWHERE.UTF-8"));
    EXPECT_EQ(LocaleInfo::FromName("xx_NOWHERE.UTF-8").shortDatePicture, "%m/%d/%Y");

    REQUIRE_LOCALE("de_DE.UTF-8");
    ScopedEnv all("LC_ALL", nullptr);
    ScopedEnv lang("LANG", "C.UTF-8");
    ScopedEnv money("LC_MONETARY", "de_DE.UTF-8");
    ScopedEnv numbers("LC_NUMERIC", "de_DE.UTF-8");
    ScopedEnv time("LC_TIME", nullptr);
    ScopedEnv measure("LC_MEASUREMENT", nullptr);
    const LocaleInfo mixed = LocaleInfo::FromEnvironment();
    EXPECT_EQ(mixed.currencySymbol, "€");
    EXPECT_EQ(mixed.decimalSeparator, ",");
    EXPECT_EQ(mixed.shortDatePicture, "%m/%d/%Y") << "plain C dates read as U.S. ones";
    EXPECT_EQ(mixed.timeFormat, "h:mm:ss tt");
    EXPECT_EQ(mixed.measurementSystem, 1);
}
