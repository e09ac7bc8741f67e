#include "model/catalogs.h"
#include "model/entry.h"
#include "model/project.h"
#include "model/reportdef.h"
#include "model/task.h"
#include "model/timekeeperdoc.h"
#include "oldlayouts.h"

#include <gtest/gtest.h>

using oldlayout::ReadOne;
using qvtest::LocalSeconds;
using qvtest::StreamBuilder;

namespace
{
template <class T> std::unique_ptr<T> Reread(T& record)
{
    std::vector<uint8_t> bytes;
    CArchive out(bytes);
    out.WriteObject(record);
    out.Flush();
    StreamBuilder b;
    b.Bytes(bytes);
    return ReadOne<T>(b, record.GetClassName());
}

// A v11 time entry body with the given end (hour, minute, status).
StreamBuilder TimeEntryV11(uint8_t endHour, uint8_t endMinute, uint32_t endStatus)
{
    StreamBuilder b;
    b.Object("CTimeEntry").U32(11).U32(4).Text("n").U32(uint32_t(-1)).U32(0).U32(0);
    b.U32(11).U8(9).U8(0).U32(0);
    b.U32(11).U8(endHour).U8(endMinute).U32(endStatus);
    return b;
}
} // namespace

TEST(TimeValues, ElapsedAdditionAndTimeComparisons)
{
    const CTinyElapsedTime sum = CTinyElapsedTime(1, 50) + CTinyElapsedTime(0, 25);
    EXPECT_EQ(sum.GetHours(), 2u);
    EXPECT_EQ(sum.GetMinutes(), 15);
    EXPECT_EQ(sum.TotalMinutes(), 135);
    EXPECT_NE(CTinyTime::Null(), CTinyTime(0, 0));
    EXPECT_NE(CTinyTime::Null(), CTinyTime(23, 59));
    EXPECT_TRUE(CTinyTime(9, 5) < CTinyTime(10, 0));
    EXPECT_EQ(CTinyTime(24, 0).ToText(), "24:00");
    EXPECT_EQ(CTinyTime::Null().ToText(), "");
}

TEST(TaskRecord, ConditionalFieldsAreSkippedAndDefaulted)
{
    CTask task;
    task.m_id = 5;
    task.m_parentId = 2;
    task.m_name = "Design";
    task.m_notes = "some notes";
    task.m_useParentBilling = false;
    task.m_regularRate = 80.0;
    task.m_overtimeMultiplier = 1.5f;
    task.m_projectId = 3;
    task.m_projectTaskNumber = 17;
    task.m_planWorkEstimate = 600.0;
    task.m_transient1 = 99;
    auto rate = std::make_unique<CActivityRate>();
    rate->m_activityId = 4;
    rate->m_rate = 120.0;
    task.m_activityRates[4] = std::move(rate);

    auto back = Reread(task);
    EXPECT_EQ(back->m_name, "Design");
    EXPECT_EQ(back->m_notes, "some notes");
    EXPECT_DOUBLE_EQ(back->m_regularRate, 80.0);
    EXPECT_FLOAT_EQ(back->m_overtimeMultiplier, 1.5f);
    EXPECT_EQ(back->m_projectTaskNumber, 17u);
    EXPECT_DOUBLE_EQ(back->m_planWorkEstimate, 600.0);
    EXPECT_EQ(back->m_transient1, 0u);
    ASSERT_EQ(back->m_activityRates.count(4), 1u);
    EXPECT_DOUBLE_EQ(back->m_activityRates[4]->m_rate, 120.0);

    // Inheriting billing, task ID and contact, and no project: none of those is stored.
    CTask inheriting;
    inheriting.m_regularRate = 80.0;
    inheriting.m_contactId = 6;
    inheriting.m_taskId = "X-1";
    auto plain = Reread(inheriting);
    EXPECT_DOUBLE_EQ(plain->m_regularRate, 0.0);
    EXPECT_EQ(plain->m_contactId, 0u);
    EXPECT_EQ(plain->m_taskId, "");
    EXPECT_FLOAT_EQ(plain->m_overtimeMultiplier, 1.0f);
}

TEST(TaskRecord, Version9HasNoNotes)
{
    StreamBuilder b;
    oldlayout::InheritingTask(b, 9, 3, 1, "Client", 1);
    auto task = ReadOne<CTask>(b, "CTask");
    EXPECT_EQ(task->m_name, "Client");
    EXPECT_EQ(task->m_notes, "");
    EXPECT_TRUE(task->m_useParentContact);
}

TEST(TaskRecord, OldLayoutsAreConverted)
{
    for (uint32_t version : {5u, 6u, 7u, 8u})
    {
        StreamBuilder root;
        oldlayout::Task(root, version, 1, 1, "Pat", 0, 42.5, uint32_t(-1));
        auto r = ReadOne<CTask>(root, "CTask");
        EXPECT_EQ(r->m_parentId, 0u) << "own id as parent";
        EXPECT_FALSE(r->m_useParentContact);
        EXPECT_EQ(r->m_lastActivityId, 0u);
        EXPECT_DOUBLE_EQ(r->m_regularRate, 42.5) << version;
        EXPECT_EQ(r->m_taskId, "EMP");
        EXPECT_EQ(r->m_transient1, 0u);
        EXPECT_EQ(r->m_transient2, 0u);
        EXPECT_EQ(r->m_lastNote, "last note");

        StreamBuilder child;
        oldlayout::Task(child, version, 4, 1, "Client", 1, 0.0, 3);
        auto c = ReadOne<CTask>(child, "CTask");
        EXPECT_TRUE(c->m_useParentContact);
        EXPECT_TRUE(c->m_useParentBilling);
        EXPECT_EQ(c->m_lastActivityId, 3u);
        EXPECT_EQ(c->m_level, 1);
        EXPECT_FLOAT_EQ(c->m_overtimeMultiplier, 1.0f);
        EXPECT_EQ(c->m_projectId, 0u);
    }
    StreamBuilder tooOld;
    oldlayout::Task(tooOld, 4, 1, 0, "Pat", 0);
    EXPECT_THROW(ReadOne<CTask>(tooOld, "CTask"), ArchiveError);
}

TEST(TaskInheritance, ValuesComeFromTheFirstTaskThatDoesNotInherit)
{
    CTask root, client, project, task;
    root.m_useParentBilling = false;
    root.m_regularRate = 50.0;
    root.m_billable = false;
    root.m_useParentTaskId = false;
    root.m_taskId = "ROOT";
    client.m_parent = &root;
    client.m_useParentBilling = false;
    client.m_regularRate = 70.0;
    client.m_overtimeMultiplier = 2.0f;
    client.m_useActivityRates = true;
    auto rate = std::make_unique<CActivityRate>();
    rate->m_rate = 95.0;
    rate->m_billable = false;
    client.m_activityRates[3] = std::move(rate);
    project.m_parent = &client;
    task.m_parent = &project; // inherits through a parent that inherits too

    EXPECT_EQ(task.GetBillingTask(), &client);
    EXPECT_DOUBLE_EQ(task.GetRateFor(1), 70.0);
    EXPECT_TRUE(task.IsBillableFor(1));
    EXPECT_DOUBLE_EQ(task.GetRateFor(3), 95.0);
    EXPECT_FALSE(task.IsBillableFor(3));
    EXPECT_FLOAT_EQ(task.GetEffectiveOvertimeMultiplier(), 2.0f);
    EXPECT_EQ(task.GetEffectiveTaskId(), "ROOT");

    client.m_useParentBilling = true;
    EXPECT_DOUBLE_EQ(task.GetRateFor(3), 50.0);
    EXPECT_FALSE(task.GetEffectiveBillable());

    EXPECT_FALSE(task.IsInactive());
    client.m_inactive = true;
    EXPECT_TRUE(task.IsInactive());
    EXPECT_FALSE(root.IsInactive());
}

TEST(TimeEntryRecord, EndTimesOfEveryLayout)
{
    // Version 11: a valid 00:00 end is the end of the day; a null end is the running entry.
    EXPECT_EQ(ReadOne<CTimeEntry>(TimeEntryV11(0, 0, 0), "CTimeEntry")->m_end, CTinyTime(24, 0));
    auto running = ReadOne<CTimeEntry>(TimeEntryV11(255, 255, 2), "CTimeEntry");
    EXPECT_TRUE(running->IsRunning());
    EXPECT_EQ(running->m_activityId, 0u) << "-1 reads as no activity";

    // Version 10: moments as dates; an end on another day than the start is 24:00.
    auto v10 = [](const CDateTime& start, const CDateTime& end) {
        StreamBuilder b;
        b.Object("CTimeEntry").U32(10).U32(4).Date(start).Date(end).Text("").U32(2).U32(0).U32(0);
        return ReadOne<CTimeEntry>(b, "CTimeEntry");
    };
    auto nextDay = v10(qvtest::At(2024, 3, 4, 22, 15), qvtest::At(2024, 3, 5, 1, 0));
    EXPECT_EQ(nextDay->m_start, CTinyTime(22, 15));
    EXPECT_EQ(nextDay->m_end, CTinyTime(24, 0));
    EXPECT_EQ(v10(qvtest::At(2024, 3, 4, 9, 0), qvtest::At(2024, 3, 4, 17, 45))->m_end, CTinyTime(17, 45));
    EXPECT_TRUE(v10(qvtest::At(2024, 3, 4, 9, 0), CDateTime::Null())->IsRunning());
    // A year apart on the same day of the month is still another day.
    EXPECT_EQ(v10(qvtest::At(2023, 3, 4, 9, 0), qvtest::At(2024, 3, 4, 10, 0))->m_end, CTinyTime(24, 0));

    // Versions 5 to 8: seconds since 1970 in local time.
    auto v8 = [](uint32_t start, uint32_t end) {
        StreamBuilder b;
        oldlayout::TimeEntry(b, 8, 4, start, end, "old", uint32_t(-1));
        return ReadOne<CTimeEntry>(b, "CTimeEntry");
    };
    auto plain = v8(LocalSeconds(2001, 6, 1, 8, 30), LocalSeconds(2001, 6, 1, 12, 5));
    EXPECT_EQ(plain->m_start, CTinyTime(8, 30));
    EXPECT_EQ(plain->m_end, CTinyTime(12, 5));
    EXPECT_EQ(plain->m_note, "old");
    EXPECT_EQ(plain->m_activityId, 0u);
    EXPECT_FALSE(plain->m_customBilling);
    EXPECT_TRUE(plain->m_billable);
    EXPECT_TRUE(v8(LocalSeconds(2001, 6, 1, 8, 30), 0)->IsRunning());
    EXPECT_EQ(v8(LocalSeconds(2001, 6, 1, 20, 0), LocalSeconds(2001, 6, 2))->m_end, CTinyTime(24, 0));
}

TEST(TimeEntryRecord, CustomBillingFieldsAreConditional)
{
    CTimeEntry entry;
    entry.m_taskId = 3;
    entry.m_start = CTinyTime(9, 0);
    entry.m_end = CTinyTime(10, 0);
    entry.m_customBilling = true;
    entry.m_billable = false;
    entry.m_rate = 60.0;
    entry.m_overtime = true;
    entry.m_overtimeMultiplier = 1.5f;
    auto back = Reread(entry);
    EXPECT_FALSE(back->m_billable);
    EXPECT_DOUBLE_EQ(back->m_rate, 60.0);
    EXPECT_FLOAT_EQ(back->m_overtimeMultiplier, 1.5f);

    entry.m_customBilling = false;
    back = Reread(entry);
    EXPECT_TRUE(back->m_billable);
    EXPECT_DOUBLE_EQ(back->m_rate, 0.0);
    EXPECT_FLOAT_EQ(back->m_overtimeMultiplier, 0.0f);
}

TEST(TimeEntryRecord, ElapsedRateAndBilling)
{
    CTask task;
    task.m_useParentBilling = false;
    task.m_regularRate = 40.0;
    task.m_overtimeMultiplier = 1.5f;
    CTimeEntry e;
    e.m_start = CTinyTime(9, 45);
    e.m_end = CTinyTime(24, 0);
    EXPECT_EQ(e.GetElapsed().TotalMinutes(), 14 * 60 + 15);
    e.m_end = CTinyTime(11, 15);
    EXPECT_DOUBLE_EQ(e.GetBillingAmount(task), 60.0);
    e.m_overtime = true;
    EXPECT_DOUBLE_EQ(e.GetEffectiveRate(task), 60.0);
    e.m_customBilling = true;
    e.m_rate = 100.0;
    e.m_overtimeMultiplier = 2.0f;
    e.m_billable = false;
    EXPECT_DOUBLE_EQ(e.GetEffectiveRate(task), 200.0);
    EXPECT_DOUBLE_EQ(e.GetBillingAmount(task), 300.0) << "the billable flag does not enter";
    EXPECT_FALSE(e.IsEffectiveBillable(task));

    e.m_end = CTinyTime::Null();
    EXPECT_EQ(e.GetElapsed(CTinyTime(10, 0)).TotalMinutes(), 15);
}

TEST(ExpenseEntryRecord, OldLayoutsAndNumberText)
{
    for (uint32_t version : {6u, 8u})
    {
        StreamBuilder b;
        oldlayout::Expense(b, version, 2, LocalSeconds(2002, 2, 3, 10, 0), 19.25);
        auto e = ReadOne<CExpenseEntry>(b, "CExpenseEntry");
        EXPECT_DOUBLE_EQ(e->m_amount, 19.25) << version;
        EXPECT_EQ(e->m_date.Format("%Y%m%d"), "20020203");
        EXPECT_EQ(e->m_expenseTypeId, 9u);
        EXPECT_EQ(e->m_paymentMethodId, uint32_t(-1));
        EXPECT_EQ(e->GetNumberText(), "42");
        EXPECT_FLOAT_EQ(e->m_distance, 12.5f);
    }
    CExpenseEntry none;
    EXPECT_EQ(none.GetNumberText(), "");
}

TEST(ToDoEntryRecord, OldLayoutsAndStatus)
{
    StreamBuilder b;
    oldlayout::ToDo(b, 6, 3, "Call back", 0, LocalSeconds(2003, 4, 5));
    auto todo = ReadOne<CToDoEntry>(b, "CToDoEntry");
    EXPECT_FALSE(todo->IsCompleted());
    EXPECT_EQ(todo->m_dueDate.Format("%Y%m%d"), "20030405");
    EXPECT_FALSE(todo->m_imported);
    EXPECT_EQ(todo->m_priority, "3");

    StreamBuilder v5;
    v5.Object("CToDoEntry").U32(5).U32(3);
    EXPECT_THROW(ReadOne<CToDoEntry>(v5, "CToDoEntry"), ArchiveError);

    const CDateTime today = qvtest::At(2024, 3, 15, 16, 30);
    CToDoEntry e;
    EXPECT_EQ(e.GetStatusText(today), "Outstanding");
    e.m_dueDate = qvtest::Day(2024, 3, 14);
    EXPECT_EQ(e.GetStatusText(today), "Overdue");
    e.m_dueDate = qvtest::At(2024, 3, 15, 9, 0);
    EXPECT_EQ(e.GetStatusText(today), "Outstanding");
    e.m_dueDate = qvtest::Day(2020, 1, 1);
    e.m_completeDate = qvtest::Day(2024, 3, 1);
    EXPECT_EQ(e.GetStatusText(today), "Completed");
}

TEST(CatalogRecords, ContactNotesAndDisplayName)
{
    StreamBuilder b;
    b.Object("CContact").U32(9).U32(4);
    for (const char* field : {"Ann", "B.", "Lee", "1 Road", "555", "556", "ann@example.org"})
        b.Text(field);
    auto contact = ReadOne<CContact>(b, "CContact");
    EXPECT_EQ(contact->m_email, "ann@example.org");
    EXPECT_EQ(contact->m_notes, "");
    EXPECT_EQ(contact->GetDisplayName(), "Lee, Ann B.");

    CContact c;
    c.m_last = "Lee";
    EXPECT_EQ(c.GetDisplayName(), "Lee");
    c.m_last.clear();
    c.m_first = "Ann";
    EXPECT_EQ(c.GetDisplayName(), " Ann");
    c.m_last = "Lee";
    c.m_first.clear();
    c.m_middle = "B.";
    EXPECT_EQ(c.GetDisplayName(), "Lee, B.");
}

TEST(CatalogRecords, AcceptedVersions)
{
    StreamBuilder type;
    type.Object("CExpenseType").U32(5).U32(3).Text("Dinner").U32(0);
    EXPECT_EQ(ReadOne<CExpenseType>(type, "CExpenseType")->m_name, "Dinner");
    StreamBuilder activity;
    activity.Object("CActivity").U32(8).U32(3).Text("Travel").U32(1).U32(0).F64(0.0);
    EXPECT_THROW(ReadOne<CActivity>(activity, "CActivity"), ArchiveError);
    StreamBuilder project;
    project.Object("CProject").U32(8);
    EXPECT_THROW(ReadOne<CProject>(project, "CProject"), ArchiveError);
}

TEST(ReportRecord, EveryKindKeepsItsMembers)
{
    for (uint32_t kind = 0; kind <= 7; ++kind)
    {
        std::unique_ptr<CReport> report = CReport::Create(CReport::Kind(kind));
        report->m_id = 9;
        report->m_name = "R";
        report->m_startDate = qvtest::Day(2024, 1, 1);
        report->m_selectedTasks = {3, 4};
        report->m_fieldFlags = 0x1010;
        report->m_summarizeLevel = -4;
        report->m_timeFrame = CReport::frameWeek;
        report->m_rollup = true;
        report->m_selectedActivities = {5};
        report->m_selectedExpenseTypes = {6, 7};
        report->m_selectedPaymentMethods = {8};
        report->m_selectedTasksOnly = true;
        report->m_detailReserved = 77;
        report->m_recipient = "Acme\r\nMain St";
        report->m_taxRate = 7.5;
        report->m_invoiceNumber = 1001;
        report->m_font.faceName = "Courier New";
        report->m_font.height = -100;

        auto back = Reread(*report);
        SCOPED_TRACE(report->GetClassName());
        EXPECT_STREQ(back->GetClassName(), report->GetClassName());
        EXPECT_EQ(back->m_kind, kind);
        EXPECT_EQ(back->m_selectedTasks, report->m_selectedTasks);
        EXPECT_EQ(back->m_font.faceName, "Courier New");
        EXPECT_EQ(back->m_font.height, -100);
        const bool grid = back->IsSummaryKind() || kind == CReport::invoice;
        EXPECT_EQ(back->m_summarizeLevel, grid ? -4 : 1);
        EXPECT_EQ(back->m_rollup, back->IsSummaryKind());
        EXPECT_EQ(back->m_detailReserved, kind == CReport::timeDetail ? 77u : 0u);
        EXPECT_EQ(back->m_selectedTasksOnly, back->IsDetailKind());
        EXPECT_EQ(back->m_invoiceNumber, kind == CReport::invoice ? 1001 : 0);
        const bool activities = kind == 0 || kind == 1 || kind == 5 || kind == 6 || kind == 7;
        const bool expenses = kind == 2 || kind == 3 || kind == 5 || kind == 6;
        EXPECT_EQ(back->m_selectedActivities, activities ? std::vector<uint32_t>{5} : std::vector<uint32_t>{0});
        EXPECT_EQ(back->m_selectedPaymentMethods, expenses ? std::vector<uint32_t>{8} : std::vector<uint32_t>{0});
    }
}

TEST(ReportRecord, InvoiceStoredOrder)
{
    std::unique_ptr<CReport> invoice = CReport::Create(CReport::invoice);
    invoice->m_terms = "Net 30";
    invoice->m_showTerms = true;
    std::vector<uint8_t> bytes;
    CArchive out(bytes);
    out.WriteObject(*invoice);
    out.Flush();
    // Tag (6 + 14 bytes), version, id, kind, empty name, two dates, level, preset, frame,
    // field flags, show empty rows, include billable, include non-billable, then the
    // recipient and show terms.
    const size_t recipientAt = 20 + 4 + 4 + 4 + 1 + 12 + 12 + 4 * 7;
    EXPECT_EQ(bytes[recipientAt], 0);
    EXPECT_EQ(bytes[recipientAt + 1], 1);
    EXPECT_EQ(bytes[recipientAt + 5], 6);
    EXPECT_EQ(std::string(bytes.begin() + long(recipientAt) + 6, bytes.begin() + long(recipientAt) + 12),
              "Net 30");
}

namespace
{
// A version 11 detail definition body, with or without the further 32-bit member
// after "selected tasks only".
void DetailDefinition(StreamBuilder& b, CReport::Kind kind, const std::string& name, bool withReserved,
                      uint32_t reserved, uint32_t orientation, int32_t height, uint32_t weight)
{
    b.Object(CReport::ClassNameOf(kind)).U32(11).U32(4).U32(kind).Text(name);
    b.NullDate().NullDate().U32(2).U32(0x1011).U32(1).U32(1).U32(0).U32(1);
    if (withReserved)
        b.U32(reserved);
    b.U32(orientation).U32(uint32_t(height)).U32(0).U32(0).U32(0).U32(weight);
    b.U8(0).U8(0).U8(0).U8(1).U8(2).U8(1).U8(0).U8(0).Text("Tahoma");
    b.IdArray({3, 5});
    if (kind == CReport::timeDetail)
        b.IdArray({2});
    else if (kind == CReport::expenseDetail)
        b.IdArray({6, 7}).IdArray({0});
}
} // namespace

TEST(ReportRecord, DetailDefinitionsLoadWithOrWithoutTheFurtherMember)
{
    struct Variant
    {
        uint32_t reserved;
        uint32_t orientation;
        int32_t height;
        uint32_t weight;
    };
    const Variant variants[] = {{0, 0, -90, 400}, {7, 2, 0, 700}, {2, 1, -120, 400}, {0, 0, 0, 0}};
    for (CReport::Kind kind : {CReport::timeDetail, CReport::expenseDetail, CReport::todoDetail})
        for (const Variant& v : variants)
        {
            SCOPED_TRACE(std::string(CReport::ClassNameOf(kind)) + " reserved " + std::to_string(v.reserved) +
                         " height " + std::to_string(v.height) + " weight " + std::to_string(v.weight));
            // Both forms in one stream: each must end where the next record begins.
            StreamBuilder b;
            DetailDefinition(b, kind, "with", true, v.reserved, v.orientation, v.height, v.weight);
            DetailDefinition(b, kind, "without", false, 0, v.orientation, v.height, v.weight);
            CArchive ar(b.Data().data(), b.Size(), &CTimeKeeperDoc::CreateRecord);
            std::unique_ptr<CReport> with = ar.ReadObjectOf<CReport>(CReport::ClassNameOf(kind));
            std::unique_ptr<CReport> without = ar.ReadObjectOf<CReport>(CReport::ClassNameOf(kind));
            EXPECT_TRUE(ar.AtEnd());
            ASSERT_TRUE(with && without);
            for (CReport* r : {with.get(), without.get()})
            {
                EXPECT_TRUE(r->m_selectedTasksOnly);
                EXPECT_EQ(r->m_orientation, v.orientation) << r->m_name;
                EXPECT_EQ(r->m_font.height, v.height) << r->m_name;
                EXPECT_EQ(r->m_font.weight, int32_t(v.weight)) << r->m_name;
                EXPECT_EQ(r->m_font.faceName, "Tahoma") << r->m_name;
                EXPECT_EQ(r->m_selectedTasks, (std::vector<uint32_t>{3, 5})) << r->m_name;
                if (kind == CReport::timeDetail)
                {
                    EXPECT_EQ(r->m_selectedActivities, (std::vector<uint32_t>{2}));
                }
                if (kind == CReport::expenseDetail)
                {
                    EXPECT_EQ(r->m_selectedExpenseTypes, (std::vector<uint32_t>{6, 7}));
                    EXPECT_EQ(r->m_selectedPaymentMethods, (std::vector<uint32_t>{0}));
                }
            }
            if (kind == CReport::timeDetail)
            {
                EXPECT_EQ(with->m_detailReserved, v.reserved);
            }

            // Saved in the form this kind writes, and read back the same.
            for (CReport* r : {with.get(), without.get()})
            {
                auto back = Reread(*r);
                EXPECT_EQ(back->m_orientation, r->m_orientation);
                EXPECT_EQ(back->m_font.faceName, "Tahoma");
                EXPECT_EQ(back->m_selectedTasks, r->m_selectedTasks);
                EXPECT_EQ(back->m_selectedExpenseTypes, r->m_selectedExpenseTypes);
                EXPECT_EQ(back->m_detailReserved, r->m_detailReserved);
            }
        }
}

TEST(ReportRecord, OddDetailDefinitionStillLoads)
{
    // Neither form reads as a sane definition: the one the kind writes is taken, and its
    // impossible orientation is replaced. Kept as read, the saved definition could read
    // back in the other form and shift every record after it (found by the fuzzer).
    for (CReport::Kind kind : {CReport::timeDetail, CReport::expenseDetail, CReport::todoDetail})
    {
        StreamBuilder b;
        DetailDefinition(b, kind, "odd", kind == CReport::timeDetail, 1, 9, -90, 400);
        auto report = ReadOne<CReport>(b, CReport::ClassNameOf(kind));
        ASSERT_TRUE(report) << CReport::ClassNameOf(kind);
        EXPECT_EQ(report->m_orientation, 0u);
        EXPECT_EQ(report->m_font.faceName, "Tahoma");
        EXPECT_EQ(report->m_selectedTasks, (std::vector<uint32_t>{3, 5}));
        auto back = Reread(*report);
        EXPECT_EQ(back->m_orientation, 0u);
        EXPECT_EQ(back->m_font.height, -90);
        EXPECT_EQ(back->m_selectedTasks, report->m_selectedTasks);
        EXPECT_EQ(back->m_selectedExpenseTypes, report->m_selectedExpenseTypes);
    }
}

TEST(ReportRecord, Version8HasOldDatesAndNoFont)
{
    StreamBuilder b;
    b.Object("CTimeSummaryReport").U32(8).U32(3).U32(1).Text("Weekly");
    b.OldDate(0).OldDate(LocalSeconds(1999, 12, 31));
    b.U32(2).U32(3).U32(CReport::frameMonth).U32(0x11).U32(1).U32(1).U32(0).U32(1).U32(0);
    b.IdArray({1}).IdArray({0});
    auto report = ReadOne<CReport>(b, "CTimeSummaryReport");
    EXPECT_TRUE(report->m_startDate.IsNull());
    EXPECT_EQ(report->m_endDate.Format("%Y%m%d"), "19991231");
    EXPECT_EQ(report->m_summarizeLevel, 2);
    EXPECT_EQ(report->m_preset, 3u);
    EXPECT_TRUE(report->m_showTotals == false && report->m_rollup == true);
    EXPECT_EQ(report->m_orientation, 0u);
    EXPECT_EQ(report->m_font.faceName, "Arial");
    EXPECT_EQ(report->m_font.weight, 400);
    EXPECT_EQ(report->m_font.charSet, 1);
    EXPECT_EQ(report->m_font.outPrecision, 2);
    EXPECT_EQ(report->m_font.clipPrecision, 1);

    // Written back in the current layout.
    auto back = Reread(*report);
    EXPECT_EQ(back->m_name, "Weekly");
    EXPECT_EQ(back->m_font.faceName, "Arial");
    std::vector<uint8_t> bytes;
    CArchive out(bytes);
    out.WriteObject(*report);
    out.Flush();
    EXPECT_EQ(bytes[2 + 2 + 2 + 18], 11);
}

TEST(ReportRecord, BaseClassTakesItsStoredKind)
{
    StreamBuilder b;
    b.Object("CReport").U32(11).U32(2).U32(CReport::expenseDetail).Text("Base");
    b.NullDate().NullDate().U32(7).U32(0).U32(0).U32(1).U32(1).U32(0);
    b.U32(0).U32(0).U32(0).U32(0).U32(400).Bytes({0, 0, 0, 1, 2, 1, 0, 0}).Text("Arial");
    b.IdArray({1});
    auto report = ReadOne<CReport>(b, "CReport");
    EXPECT_EQ(report->m_kind, uint32_t(CReport::expenseDetail));
    EXPECT_STREQ(report->GetClassName(), "CExpenseDetailReport");
    EXPECT_EQ(report->m_preset, 7u);
}

TEST(ProjectRecord, RoundTrip)
{
    CProject project;
    project.m_id = 2;
    project.m_progId = "Plans.Project";
    project.m_name = "Launch";
    project.m_fileIdentity = 0xABCDEF;
    project.m_path = "/home/pat/launch.plan";
    project.m_parentTaskId = 5;
    project.m_resourceName = "Pat";
    project.m_lastUpdated = qvtest::At(2024, 2, 1, 10, 0);
    auto back = Reread(project);
    EXPECT_EQ(back->m_path, project.m_path);
    EXPECT_EQ(back->m_fileIdentity, 0xABCDEFu);
    EXPECT_EQ(back->m_resourceId, uint32_t(-1));
    EXPECT_EQ(back->m_lastUpdated, project.m_lastUpdated);
}

TEST(MileageAmount, RoundsHalfACentUp)
{
    EXPECT_DOUBLE_EQ(CExpenseEntry::MileageAmount(1, 0.125f), 0.13);
    EXPECT_DOUBLE_EQ(CExpenseEntry::MileageAmount(10, 0.375f), 3.75);
    EXPECT_DOUBLE_EQ(CExpenseEntry::MileageAmount(3, 0.55f), 1.65);
    EXPECT_DOUBLE_EQ(CExpenseEntry::MileageAmount(7, 0.001f), 0.01);
    EXPECT_DOUBLE_EQ(CExpenseEntry::MileageAmount(0, 0.5f), 0.0);
}
