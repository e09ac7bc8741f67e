#include "cli/demodocument.h"

#include "model/timekeeperdoc.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
// Every time entry of the document against the others of its day.
size_t CountConflicts(const CTimeKeeperDoc& doc)
{
    size_t conflicts = 0;
    for (const auto& [key, day] : doc.m_days)
        for (const auto& e : day->TimeEntries())
            conflicts += day->Conflicts(*e, e.get(), day->GetDate()) ? 1 : 0;
    return conflicts;
}

bool IsWeekend(const CDateTime& d)
{
    return d.GetDayOfWeek() == 1 || d.GetDayOfWeek() == 7;
}
} // namespace

TEST(SyntheticDocument, SameSeedSameDocument)
{
    CTimeKeeperDoc a, b, c;
    cli::MakeSyntheticDocument(a, 1, 42);
    cli::MakeSyntheticDocument(b, 1, 42);
    cli::MakeSyntheticDocument(c, 1, 43);
    const std::vector<uint8_t> bytes = a.SaveToBytes();
    EXPECT_EQ(bytes, b.SaveToBytes());
    EXPECT_NE(bytes, c.SaveToBytes());
}

TEST(SyntheticDocument, HasTheShapeOfHeavyUse)
{
    cli::SyntheticOptions options;
    options.years = 2;
    options.seed = 5;
    options.firstYear = 2019;
    CTimeKeeperDoc doc;
    cli::MakeSyntheticDocument(doc, options);

    EXPECT_GE(doc.m_tasks.size(), 200u);
    EXPECT_LE(doc.m_tasks.size(), 800u);
    int deepest = 0;
    for (const auto& [id, task] : doc.m_tasks)
        deepest = std::max(deepest, task->GetDepth());
    EXPECT_EQ(deepest, 4);

    // 2019 and 2020 have 261 and 262 working days.
    ASSERT_EQ(doc.m_days.size(), 523u);
    size_t expenses = 0, noted = 0, completed = 0;
    for (const auto& [key, day] : doc.m_days)
    {
        EXPECT_FALSE(IsWeekend(day->GetDate())) << key;
        EXPECT_EQ(day->TimeEntries().size(), 15u) << key;
        expenses += day->ExpenseEntries().size();
        completed += day->ToDoEntries().size();
        for (const auto& e : day->TimeEntries())
        {
            noted += e->m_note.empty() ? 0 : 1;
            EXPECT_TRUE(e->m_end.IsValid());
            EXPECT_LE(e->m_end.MinutesOfDay(), 24 * 60);
        }
    }
    EXPECT_EQ(CountConflicts(doc), 0u);
    EXPECT_GT(expenses, 523u * 3 / 2);
    EXPECT_LT(expenses, 523u * 5 / 2);
    EXPECT_GT(noted, doc.CountTimeEntries() / 3);
    EXPECT_GT(completed, 100u);
    EXPECT_GT(doc.m_todoList.size(), 0u);
    EXPECT_FALSE(doc.m_recentTasks.empty());

    auto loaded = qvtest::RoundTrip(doc);
    EXPECT_EQ(loaded->CountTimeEntries(), doc.CountTimeEntries());
    EXPECT_EQ(loaded->CountExpenseEntries(), doc.CountExpenseEntries());
}

TEST(DemoDocument, FourWeeksOfWorkBeforeToday)
{
    CTimeKeeperDoc doc;
    const CDateTime today = qvtest::Day(2024, 3, 6); // a Wednesday
    cli::MakeDemoDocument(doc, today);

    ASSERT_NE(doc.GetRootTask(), nullptr);
    EXPECT_EQ(doc.GetRootTask()->m_name, "Robin Calder");
    EXPECT_GE(doc.m_days.size(), 15u);
    for (const auto& [key, day] : doc.m_days)
    {
        EXPECT_LT(day->GetDate(), today) << key;
        EXPECT_GE(day->GetDate(), today.AddDays(-28)) << key;
        if (!day->TimeEntries().empty())
        {
            EXPECT_FALSE(IsWeekend(day->GetDate())) << key;
        }
        for (const auto& e : day->ExpenseEntries())
        {
            EXPECT_TRUE(e->m_date.SameDay(day->GetDate()));
            if (e->m_expenseTypeId == CExpenseType::kMileageId)
            {
                EXPECT_DOUBLE_EQ(e->m_amount,
                                 CExpenseEntry::MileageAmount(int(e->m_distance), doc.m_defaultMileageRate));
            }
        }
    }
    EXPECT_EQ(CountConflicts(doc), 0u);
    EXPECT_GE(doc.m_todoList.size(), 3u);
    EXPECT_GE(doc.m_reports.size(), 2u);
    for (const auto& r : doc.m_reports)
        EXPECT_FALSE(r->m_name.empty());

    // Every entry names a task of the document.
    for (const auto& [key, day] : doc.m_days)
        for (const auto& e : day->TimeEntries())
            EXPECT_NE(doc.GetTask(e->m_taskId), nullptr);

    CTimeKeeperDoc again;
    cli::MakeDemoDocument(again, today);
    EXPECT_EQ(again.SaveToBytes(), doc.SaveToBytes());
}
