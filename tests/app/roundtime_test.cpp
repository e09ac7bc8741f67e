#include "app/timekeeperapp.h"
#include "model/entry.h"

#include <gtest/gtest.h>

namespace
{

CDateTime At(int hour, int minute, int second, int day = 15)
{
    return CDateTime::FromDate(2024, 3, day, hour, minute, second);
}

struct AppFixture
{
    platform::SettingsStore store;
    platform::FixedClock clock{platform::LocalTime{2024, 3, 15, 10, 7, 40}};
    CTimeKeeperApp app{store, clock, platform::LocaleInfo::UnitedStates()};
};

std::string Text(const CDateTime& d) { return d.Format("%Y-%m-%d %H:%M:%S"); }

} // namespace

TEST(RoundTime, HalfRoundsUpAndTheHourAndSixMinutesHaveTheirOwnIndexes)
{
    AppFixture f;
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 7, 29), 4)), "2024-03-15 09:00:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 7, 30), 4)), "2024-03-15 09:15:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 52, 31), 4)), "2024-03-15 10:00:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 30, 0), 6)), "2024-03-15 10:00:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 29, 59), 6)), "2024-03-15 09:00:00");
    // Index 7 is 6 minutes, although it comes after the hour.
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 2, 59), 7)), "2024-03-15 09:00:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 3, 0), 7)), "2024-03-15 09:06:00");
}

TEST(RoundTime, EveryIntervalRoundsHalfUpAndDropsSeconds)
{
    AppFixture f;
    const int expected[] = {1, 3, 5, 10, 15, 30, 60, 6};
    for (int index = 0; index < 8; ++index)
    {
        const int minutes = expected[index];
        ASSERT_EQ(CTimeKeeperApp::IntervalMinutes(index), minutes);
        const CDateTime floor = At(14, 0, 0).AddMinutes(minutes); // a boundary of every interval
        const CDateTime half = floor.AddSeconds(minutes * 30);
        EXPECT_EQ(f.app.RoundTime(floor, index), floor) << "index " << index;
        EXPECT_EQ(f.app.RoundTime(half, index), floor.AddMinutes(minutes)) << "index " << index;
        EXPECT_EQ(f.app.RoundTime(half.AddSeconds(-1), index), floor) << "index " << index;
        EXPECT_EQ(f.app.RoundTime(half.AddSeconds(-1), index).GetSecond(), 0);
    }
}

TEST(RoundTime, DefaultIndexUsesTheSettingAndLateTimesReachTheNextDay)
{
    AppFixture f;
    f.app.SetTimeInterval(4);
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 7, 30))), "2024-03-15 09:15:00");
    f.app.SetTimeInterval(0);
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 7, 30))), "2024-03-15 09:08:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 7, 29))), "2024-03-15 09:07:00");

    // With 15 minutes the day ends at 23:52:30.
    EXPECT_EQ(Text(f.app.RoundTime(At(23, 52, 30), 4)), "2024-03-16 00:00:00");
    EXPECT_EQ(Text(f.app.RoundTime(At(23, 52, 29), 4)), "2024-03-15 23:45:00");

    // A damaged setting rounds to the minute.
    f.app.SetTimeInterval(42);
    EXPECT_EQ(Text(f.app.RoundTime(At(9, 7, 30))), "2024-03-15 09:08:00");
    EXPECT_TRUE(f.app.RoundTime(CDateTime::Null(), 4).IsNull());
}

TEST(ElapsedText, HoursAndMinutesOrDecimalHours)
{
    AppFixture f;
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(0, 0)), "");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(0, 1)), "0:01");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(1, 5)), "1:05");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(2, 0)), "2:00");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(1234, 30)), "1234:30");

    f.app.SetElapsedTimeFormat(1);
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(0, 0)), "");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(1, 5)), "1.08");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(0, 30)), "0.50");
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(1234, 30)), "1,234.50");
}

TEST(ElapsedText, FollowsTheLocaleSeparators)
{
    platform::LocaleInfo locale;
    locale.timeSeparator = ".";
    locale.decimalSeparator = ",";
    locale.thousandsSeparator = ".";
    AppFixture f;
    f.app.SetLocale(locale);
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(1, 5)), "1.05");
    f.app.SetElapsedTimeFormat(1);
    EXPECT_EQ(f.app.GetElapsedText(CTinyElapsedTime(1234, 30)), "1.234,50");
}

TEST(ElapsedText, RunningEntryEndsAtTheRoundedCurrentTime)
{
    AppFixture f; // the clock stands at 10:07:40
    f.app.SetTimeInterval(4);
    CTimeEntry entry;
    entry.m_start = CTinyTime(9, 0);
    ASSERT_TRUE(entry.IsRunning());
    EXPECT_EQ(f.app.GetElapsedText(entry), "1:15");
    entry.m_end = CTinyTime(9, 40);
    EXPECT_EQ(f.app.GetElapsedText(entry), "0:40");
    entry.m_end = CTinyTime(9, 0);
    EXPECT_EQ(f.app.GetElapsedText(entry), "");
}
