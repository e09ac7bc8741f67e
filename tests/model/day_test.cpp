#include "model/day.h"
#include "model/task.h"
#include "oldlayouts.h"

#include <gtest/gtest.h>

using qvtest::At;
using qvtest::Day;

namespace
{
const CDateTime kDay = Day(2024, 3, 11);

std::unique_ptr<CTimeEntry> Entry(int sh, int sm, int eh, int em, uint32_t task = 2)
{
    auto e = std::make_unique<CTimeEntry>();
    e->m_taskId = task;
    e->m_start = CTinyTime(sh, sm);
    e->m_end = eh < 0 ? CTinyTime::Null() : CTinyTime(eh, em);
    return e;
}

std::vector<int> Starts(const CDay& day)
{
    std::vector<int> starts;
    for (const auto& e : day.TimeEntries())
        starts.push_back(e->m_start.MinutesOfDay());
    return starts;
}
} // namespace

TEST(DayIndex, EntriesAreFiledInStartOrderAndConflictsAreRefused)
{
    CDay day(kDay);
    const CDateTime now = At(2024, 3, 11, 18, 0);
    ASSERT_TRUE(day.AddTimeEntry(Entry(10, 0, 11, 0), now));
    ASSERT_TRUE(day.AddTimeEntry(Entry(9, 0, 10, 0), now));
    EXPECT_EQ(Starts(day), (std::vector<int>{540, 600}));

    auto overlapping = Entry(9, 30, 10, 30);
    EXPECT_FALSE(day.AddTimeEntry(std::move(overlapping), now));
    ASSERT_NE(overlapping, nullptr) << "a refused entry stays with the caller";
    EXPECT_EQ(day.TimeEntries().size(), 2u);

    // Zero length never conflicts, and an equal start goes before the existing ones.
    CTimeEntry* zero = day.InsertTimeEntry(Entry(10, 0, 10, 0));
    EXPECT_EQ(day.TimeEntries()[1].get(), zero);
    EXPECT_EQ(zero->m_day, &day);
    EXPECT_FALSE(day.Conflicts(*zero, nullptr, now));
}

TEST(DayIndex, ZeroLengthAndTouchingEntries)
{
    CDay day(kDay);
    const CDateTime now = At(2024, 3, 11, 18, 0);
    day.InsertTimeEntry(Entry(10, 0, 10, 0));
    EXPECT_TRUE(day.Conflicts(*Entry(9, 0, 11, 0), nullptr, now));
    EXPECT_FALSE(day.Conflicts(*Entry(10, 0, 11, 0), nullptr, now));
    day.InsertTimeEntry(Entry(11, 0, 12, 0));
    EXPECT_FALSE(day.Conflicts(*Entry(12, 0, 13, 0), nullptr, now)) << "touching only";
    EXPECT_FALSE(day.Conflicts(*Entry(10, 30, 11, 0), nullptr, now));
    EXPECT_TRUE(day.Conflicts(*Entry(11, 0, 11, 1), nullptr, now));
    EXPECT_TRUE(day.Conflicts(*Entry(11, 59, 24, 0), nullptr, now));

    // The entry being edited is ignored.
    CTimeEntry* edited = day.TimeEntries().back().get();
    EXPECT_FALSE(day.Conflicts(*edited, edited, now));
    EXPECT_EQ(day.ConflictingEntries(*Entry(9, 0, 24, 0), nullptr, now).size(), 2u);
}

TEST(DayIndex, RunningEntryEndsAtTheRoundedNow)
{
    CDay day(kDay);
    day.InsertTimeEntry(Entry(8, 0, -1, 0));
    EXPECT_FALSE(day.Conflicts(*Entry(8, 30, 8, 45), nullptr, At(2024, 3, 11, 8, 30)));
    EXPECT_TRUE(day.Conflicts(*Entry(8, 30, 8, 45), nullptr, At(2024, 3, 11, 8, 40)));
    // A running entry from an earlier day reaches past this day's end.
    EXPECT_EQ(day.EndMinutes(*day.TimeEntries()[0], At(2024, 3, 12, 1, 0)), 25 * 60);
}

TEST(DayIndex, SumsPerDayAndTask)
{
    CDay day(kDay);
    day.InsertTimeEntry(Entry(8, 0, 9, 40, 2));
    day.InsertTimeEntry(Entry(10, 0, 10, 50, 2))->m_overtime = true;
    day.InsertTimeEntry(Entry(11, 0, 12, 0, 3));
    day.InsertTimeEntry(Entry(13, 0, -1, 0, 2));
    const CTinyTime runningEnd(13, 30);
    EXPECT_EQ(day.TotalElapsed(runningEnd), CTinyElapsedTime(4, 0));
    EXPECT_EQ(day.ElapsedFor(2, false, runningEnd), CTinyElapsedTime(2, 10));
    EXPECT_EQ(day.ElapsedFor(2, true, runningEnd), CTinyElapsedTime(0, 50));

    CTask task;
    task.m_id = 2;
    task.m_useParentBilling = false;
    task.m_regularRate = 60.0;
    task.m_overtimeMultiplier = 1.5f;
    EXPECT_DOUBLE_EQ(day.BillingFor(task, runningEnd), 130.0 + 75.0);

    for (double amount : {10.0, 2.5})
    {
        auto x = std::make_unique<CExpenseEntry>();
        x->m_taskId = 3;
        x->m_amount = amount;
        day.AddExpenseEntry(std::move(x));
    }
    EXPECT_DOUBLE_EQ(day.ExpensesFor(3), 12.5);
    EXPECT_EQ(day.ExpenseEntries()[0]->m_date, day.GetDate());
}

TEST(DayIndex, Version5HasNoCompletedToDos)
{
    qvtest::StreamBuilder b;
    b.Object("CDay").U32(5).Text("19990704").U32(1).U32(1);
    oldlayout::TimeEntry(b, 5, 1, qvtest::LocalSeconds(1999, 7, 4, 9, 0), qvtest::LocalSeconds(1999, 7, 4, 10, 0));
    oldlayout::Expense(b, 5, 1, qvtest::LocalSeconds(1999, 7, 3, 9, 0), 3.0);
    auto day = oldlayout::ReadOne<CDay>(b, "CDay");
    EXPECT_EQ(day->GetDate(), Day(1999, 7, 4));
    EXPECT_EQ(day->TimeEntries().size(), 1u);
    EXPECT_TRUE(day->ToDoEntries().empty());
    EXPECT_EQ(day->TimeEntries()[0]->m_day, day.get());
    // An expense takes its day's date whatever it stored.
    EXPECT_EQ(day->ExpenseEntries()[0]->m_date, Day(1999, 7, 4));
}

TEST(DayIndex, BadKeyIsAFormatError)
{
    qvtest::StreamBuilder b;
    b.Object("CDay").U32(11).Text("2024-3-1").U32(0).U32(0).U32(0);
    EXPECT_THROW(oldlayout::ReadOne<CDay>(b, "CDay"), ArchiveError);
}

TEST(DayIndex, SelectionLimitsWhatIsWritten)
{
    CDay day(kDay);
    day.InsertTimeEntry(Entry(8, 0, 9, 0, 2));
    day.InsertTimeEntry(Entry(9, 0, 10, 0, 3));
    const std::unordered_set<uint32_t> selection = {3};
    day.SetSelection(&selection);
    std::vector<uint8_t> bytes;
    CArchive out(bytes);
    out.WriteObject(day);
    out.Flush();
    day.SetSelection(nullptr);

    qvtest::StreamBuilder b;
    b.Bytes(bytes);
    auto back = oldlayout::ReadOne<CDay>(b, "CDay");
    ASSERT_EQ(back->TimeEntries().size(), 1u);
    EXPECT_EQ(back->TimeEntries()[0]->m_taskId, 3u);
}
