#include "model/timekeeperdoc.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

using qvtest::At;
using qvtest::Day;
using qvtest::SampleDoc;

namespace
{
uint32_t U32At(const std::vector<uint8_t>& bytes, size_t at)
{
    return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
           uint32_t(bytes[at + 3]) << 24;
}

constexpr size_t kDayCountAt = 56;

std::unique_ptr<CTimeKeeperDoc> Open(const std::vector<uint8_t>& bytes)
{
    LoadResult r;
    auto doc = qvtest::Load(bytes, &r);
    EXPECT_EQ(r.status, LoadResult::loaded) << r.error;
    return doc;
}

size_t TaskEntryCount(const CTimeKeeperDoc& doc)
{
    size_t n = 0;
    for (const auto& [id, task] : doc.m_tasks)
        n += task->m_timeEntries.size() + task->m_expenseEntries.size() + task->m_todoEntries.size();
    return n;
}
} // namespace

TEST(ArchiveSelection, ATaskWithItsPathAndTheEntriesOfTheRange)
{
    SampleDoc s;
    auto archive = Open(s.doc->WriteSelection(Day(2024, 3, 11), At(2024, 3, 11, 18, 0), s.website->m_id));

    std::vector<uint32_t> tasks;
    for (const auto& [id, task] : archive->m_tasks)
        tasks.push_back(id);
    EXPECT_EQ(tasks, (std::vector<uint32_t>{1, s.acme->m_id, s.website->m_id, s.design->m_id}));
    ASSERT_EQ(archive->m_days.size(), 1u);
    const CDay* day = archive->GetDay("20240311");
    ASSERT_NE(day, nullptr);
    ASSERT_EQ(day->TimeEntries().size(), 2u);
    EXPECT_EQ(day->TimeEntries()[0]->m_note, "kick-off");
    EXPECT_EQ(day->TimeEntries()[1]->m_taskId, s.design->m_id);
    EXPECT_EQ(day->ExpenseEntries().size(), 1u);
    EXPECT_TRUE(archive->m_todoList.empty()) << "a range with an end holds no outstanding to-dos";

    // Catalogs and counters come whole.
    EXPECT_EQ(archive->m_expenseTypes.size(), 14u);
    EXPECT_EQ(archive->m_activities.size(), 1u);
    EXPECT_EQ(archive->m_paymentMethods.size(), 1u);
    EXPECT_EQ(archive->m_contacts.size(), 1u);
    EXPECT_EQ(archive->m_levelNames.size(), 5u);
    EXPECT_EQ(archive->m_lastTaskId, s.doc->m_lastTaskId);
    // Nothing moved out of the working document.
    EXPECT_EQ(s.doc->CountTimeEntries(), 4u);
}

TEST(ArchiveSelection, RootAndOpenRangeIsTheWholeDocument)
{
    SampleDoc s;
    s.doc->m_recentTasks = {4, 2};
    const auto bytes = s.doc->WriteSelection(CDateTime::Null(), CDateTime::Null(), 1);
    EXPECT_EQ(bytes, s.doc->SaveToBytes());
    EXPECT_EQ(qvtest::Dump(*Open(bytes)), qvtest::Dump(*s.doc));
}

TEST(ArchiveSelection, DaysWithoutMatchesAreWrittenEmptyAndDroppedOnOpening)
{
    SampleDoc s;
    qvtest::AddTime(*s.doc, s.design, Day(2024, 3, 13), 9, 0, 10, 0);
    const auto bytes = s.doc->WriteSelection(At(2024, 3, 11, 23, 59), CDateTime::Null(), s.globex->m_id);
    // The "from" day counts whole, whatever its time of day.
    EXPECT_EQ(U32At(bytes, kDayCountAt), 3u);
    auto archive = Open(bytes);
    ASSERT_EQ(archive->m_days.size(), 2u);
    EXPECT_EQ(archive->GetDay("20240313"), nullptr);
    EXPECT_EQ(archive->GetDay("20240311")->TimeEntries().size(), 1u);
    const CDay* day = archive->GetDay("20240312");
    ASSERT_NE(day, nullptr);
    EXPECT_TRUE(day->TimeEntries().empty());
    EXPECT_EQ(day->ExpenseEntries().size(), 1u);
    // Without an end the outstanding to-dos of the selection come along.
    ASSERT_EQ(archive->m_todoList.size(), 1u);
    EXPECT_EQ(archive->m_todoList[0]->m_description, "Collect receipts");
    EXPECT_EQ(archive->m_tasks.size(), 3u);
}

TEST(ArchiveSelection, AnUnknownTaskStillGivesADocument)
{
    SampleDoc s;
    auto archive = Open(s.doc->WriteSelection(CDateTime::Null(), CDateTime::Null(), 999));
    EXPECT_EQ(archive->m_tasks.size(), 1u);
    EXPECT_EQ(archive->CountTimeEntries() + archive->CountToDoEntries(), 0u);
}

TEST(ArchiveDeletion, EverythingWithTheRootAndNoDates)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    doc.SetModifiedFlag(false);
    doc.DeleteArchivedEntries(CDateTime::Null(), CDateTime::Null(), 1);
    EXPECT_EQ(doc.CountTimeEntries() + doc.CountExpenseEntries() + doc.CountToDoEntries(), 0u);
    EXPECT_EQ(TaskEntryCount(doc), 0u);
    EXPECT_EQ(doc.m_tasks.size(), 6u);
    EXPECT_EQ(doc.m_expenseTypes.size(), 14u);
    EXPECT_EQ(doc.m_activities.size(), 1u);
    EXPECT_TRUE(doc.IsModified());
}

TEST(ArchiveDeletion, AnEndDateKeepsOutstandingToDos)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    doc.DeleteArchivedEntries(CDateTime::Null(), Day(2024, 3, 11), 1);
    EXPECT_EQ(doc.m_todoList.size(), 2u);
    EXPECT_EQ(doc.GetDay("20240311")->TimeEntries().size(), 0u);
    EXPECT_EQ(doc.GetDay("20240312")->TimeEntries().size(), 1u);
    EXPECT_EQ(doc.GetDay("20240312")->ToDoEntries().size(), 1u);
    EXPECT_EQ(TaskEntryCount(doc), 5u);
}

TEST(ArchiveDeletion, SiblingsAreUntouched)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    doc.DeleteArchivedEntries(Day(2024, 3, 11), CDateTime::Null(), s.acme->m_id);
    EXPECT_TRUE(s.website->m_timeEntries.empty());
    EXPECT_TRUE(s.design->m_timeEntries.empty());
    EXPECT_TRUE(s.design->m_todoEntries.empty());
    EXPECT_TRUE(s.website->m_todoEntries.empty());
    EXPECT_EQ(s.audit->m_timeEntries.size(), 1u);
    EXPECT_EQ(s.audit->m_expenseEntries.size(), 1u);
    ASSERT_EQ(doc.m_todoList.size(), 1u);
    EXPECT_EQ(doc.m_todoList[0]->m_taskId, s.audit->m_id);
    EXPECT_EQ(doc.CountTimeEntries(), 1u);
}

TEST(ArchiveDeletion, RunningEntryIsStoppedFirst)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    CTimeEntry* running = qvtest::AddTime(doc, s.audit, Day(2024, 3, 15), 10, 0, -1, 0);
    int stops = 0;
    CTimeEntry* activeWhenStopped = running;
    doc.m_onTimerStopped = [&] {
        ++stops;
        activeWhenStopped = doc.m_activeEntry;
    };
    doc.DeleteArchivedEntries(Day(2024, 3, 14), Day(2024, 3, 16), s.globex->m_id);
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(activeWhenStopped, nullptr);
    EXPECT_FALSE(doc.m_timerRunning);
    EXPECT_TRUE(doc.GetDay("20240315")->TimeEntries().empty());
    EXPECT_EQ(s.audit->m_timeEntries.size(), 1u);

    // A running entry outside the selection keeps running.
    qvtest::AddTime(doc, s.design, Day(2024, 3, 15), 11, 0, -1, 0);
    doc.DeleteArchivedEntries(Day(2024, 3, 15), Day(2024, 3, 15), s.globex->m_id);
    EXPECT_TRUE(doc.m_timerRunning);
    EXPECT_EQ(stops, 1);
}
