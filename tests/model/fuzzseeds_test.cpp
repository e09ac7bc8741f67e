// The seed inputs of the document-loading fuzzer (fuzz/): a document of every shape the
// reader knows, current and older layouts. Each must load; a current one must also save
// back to the very bytes it was read from. With QV_FUZZ_CORPUS naming a folder, the test
// also writes them there: fuzz/corpus holds the committed copies.

#include "model/archive.h"
#include "model/timekeeperdoc.h"
#include "oldlayouts.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{

using qvtest::Day;
using qvtest::LocalSeconds;
using qvtest::StreamBuilder;

struct Seed
{
    std::string name;
    std::vector<uint8_t> bytes;
    bool current = true; // written by this version: must save back unchanged
};

std::vector<uint8_t> NewDocument()
{
    auto doc = qvtest::NewDoc();
    return doc->SaveToBytes();
}

// Entries of every kind with every optional part: custom billing and overtime, the
// running entry, mileage, numbered expenses, outstanding and completed to-dos, activity
// rates, a project, texts beyond ASCII.
qvtest::SampleDoc EveryKindOfRecord()
{
    qvtest::SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    doc.RenameTask(s.globex, "Globex Caf\xc3\xa9");
    s.globex->m_useParentBilling = false;
    s.globex->m_billable = true;
    s.globex->m_regularRate = 80.0;
    s.globex->m_useActivityRates = true;
    s.globex->m_overtimeMultiplier = 1.5f;
    s.globex->m_useParentTaskId = false;
    s.globex->m_taskId = "GX-1";
    s.globex->m_useParentContact = false;
    s.globex->m_contactId = 1;
    s.globex->m_notes = "Rates in \xe2\x82\xac, \xc2\xbd day minimum\r\nSecond line \xe6\x97\xa5";
    s.globex->m_hoursEstimate = 600;
    s.globex->m_costEstimate = 1234.5;
    auto rate = std::make_unique<CActivityRate>();
    rate->m_activityId = 1;
    rate->m_taskId = s.globex->m_id;
    rate->m_billable = false;
    rate->m_rate = 95.0;
    s.globex->m_activityRates[1] = std::move(rate);
    s.acme->m_abbreviation = "AC";
    doc.SetTaskInactive(s.design, true);
    doc.SetLevelName(4, "Step");

    CTimeEntry* custom = qvtest::AddTime(doc, s.audit, Day(2024, 3, 13), 9, 0, 17, 45, "long day");
    custom->m_activityId = 1;
    custom->m_customBilling = true;
    custom->m_billable = false;
    custom->m_rate = 42.25;
    custom->m_overtime = true;
    custom->m_overtimeMultiplier = 2.0f;
    qvtest::AddTime(doc, s.website, Day(2024, 3, 13), 22, 0, 24, 0, "until midnight");
    qvtest::AddTime(doc, s.audit, Day(2024, 3, 15), 11, 0, -1, 0, "running");

    CExpenseEntry* mileage = qvtest::AddExpense(doc, s.audit, Day(2024, 3, 13), 21.0, CExpenseType::kMileageId,
                                                "Drive to the client");
    mileage->m_distance = 42.0f;
    mileage->m_paymentMethodId = uint32_t(-1);
    CExpenseEntry* numbered = qvtest::AddExpense(doc, s.website, Day(2024, 3, 13), 310.99, 1, "Flight");
    numbered->m_number = 5531;
    numbered->m_billable = false;
    numbered->m_paymentMethodId = 1;

    CPaymentMethod* card = doc.AddPaymentMethod("Visa");
    card->m_accountNumber = "4000 1234";
    card->m_accountType = 5;
    doc.AddExpenseType("Parking")->m_flag = 1;
    CActivity* travel = doc.AddActivity("Travel");
    travel->m_flag1 = 0;
    travel->m_rate = 30.0;
    CContact* contact = doc.GetContact(1);
    contact->m_middle = "Q.";
    contact->m_address = "1 Main St\r\nSpringfield";
    contact->m_phone = "555-0100";
    contact->m_email = "ann@example.com";

    auto project = std::make_unique<CProject>();
    project->m_progId = "Planner.Project";
    project->m_name = "Plan";
    project->m_fileIdentity = 7;
    project->m_path = "/home/pat/plan.mpp";
    project->m_parentTaskId = s.globex->m_id;
    project->m_resourceId = 3;
    project->m_resourceName = "Pat";
    project->m_lastUpdated = qvtest::At(2024, 3, 1, 9, 30);
    doc.AddProject(std::move(project));

    doc.m_recentTasks = {s.audit->m_id, s.website->m_id};
    doc.m_defaultMileageRate = 0.5f;
    return s;
}

// A definition of `kind` with its members set, in a new document.
std::vector<uint8_t> OneReport(CReport::Kind kind)
{
    auto doc = qvtest::NewDoc();
    CTask* client = qvtest::AddTask(*doc, doc->GetRootTask(), "Client");
    CReport* r = doc->AddReport(kind);
    r->m_name = std::string(r->GetClassName()) + "/all";
    r->m_preset = CReport::customDates;
    r->m_startDate = Day(2024, 1, 1);
    r->m_endDate = Day(2024, 3, 31);
    r->m_selectedTasks = {client->m_id, CTimeKeeperDoc::kRootTaskId};
    r->m_fieldFlags = CReport::fieldTaskId | CReport::field3 | CReport::fieldNote;
    r->m_showEmptyRows = true;
    r->m_orientation = 2;
    r->m_font.faceName = "Courier New";
    r->m_font.height = -100;
    r->m_font.italic = 1;
    r->m_summarizeLevel = kind == CReport::invoice ? 2 : CReport::groupActivity;
    r->m_timeFrame = CReport::frameWeek;
    r->m_rollup = true;
    r->m_showTotals = true;
    r->m_selectedActivities = {1, 2};
    r->m_selectedExpenseTypes = {3};
    r->m_selectedPaymentMethods = {0};
    r->m_selectedTasksOnly = true;
    r->m_detailReserved = 5;
    r->m_recipient = "Client\r\n1 Main St";
    r->m_showTerms = true;
    r->m_terms = "Net 30";
    r->m_addTax = true;
    r->m_taxRate = 7.25;
    r->m_numberMode = 1;
    r->m_invoiceNumber = 1001;
    return doc->SaveToBytes();
}

// Version 10: the layout before the notes of tasks, with dates for times of day.
std::vector<uint8_t> Layout10()
{
    StreamBuilder b;
    oldlayout::CurrentHead(b, 10, 2, 2, 1);
    oldlayout::InheritingTask(b, 10, 1, 0, "Pat", 0);
    oldlayout::InheritingTask(b, 10, 2, 1, "Client", 1);
    b.F64(0.0).F64(0.0);
    b.Object("CDay").U32(10).Text("20050301").U32(2).U32(0).U32(0);
    b.Object("CTimeEntry").U32(10).U32(2).Date(qvtest::At(2005, 3, 1, 9, 0)).Date(qvtest::At(2005, 3, 1, 10, 15));
    b.Text("v10").U32(0).U32(0).U32(0);
    b.Object("CTimeEntry").U32(10).U32(2).Date(qvtest::At(2005, 3, 1, 23, 0)).Date(qvtest::At(2005, 3, 2, 0, 0));
    b.Text("to midnight").U32(0).U32(1).U32(1).U32(0).F64(55.5).F32(1.5f);
    oldlayout::CurrentTail(b);
    b.U32(0);
    return b.Data();
}

std::vector<uint8_t> Layout9()
{
    StreamBuilder b;
    oldlayout::CurrentHead(b, 9, 2, 2, 0);
    oldlayout::InheritingTask(b, 9, 1, 0, "Pat", 0);
    oldlayout::InheritingTask(b, 9, 2, 1, "Client", 1);
    b.F64(0.0).F64(0.0);
    oldlayout::CurrentTail(b);
    b.U32(0);
    return b.Data();
}

// Version 8: seconds for moments, bare activities, a report without a font, and a
// task name in 16-bit text.
std::vector<uint8_t> Layout8()
{
    StreamBuilder b;
    oldlayout::DocumentHead(b, 8, 3, 3, 1, 1);
    oldlayout::Task(b, 8, 3, 1, "beta", 1);
    oldlayout::Task(b, 8, 1, 0, "Pat", 0);
    b.Object("CTask").U32(8).U32(2).U32(1);
    b.U8(0xFF).U16(0xFFFE).U8(2).U16(0x00C4).U16(0x6F22);
    b.U32(1).Text("").U32(1).F64(30.0).U32(1).Text("").U32(1).U32(1);
    b.U32(7).U32(9).Text("").U32(0);
    b.F64(0.0);
    b.Object("CTimeSummaryReport").U32(8).U32(1).U32(1).Text("Weekly");
    b.OldDate(0).OldDate(LocalSeconds(1999, 12, 31));
    b.U32(2).U32(3).U32(CReport::frameMonth).U32(0x11).U32(1).U32(1).U32(0).U32(1).U32(0);
    b.IdArray({1}).IdArray({0});
    b.F64(0.0);
    b.Object("CDay").U32(8).Text("20010601").U32(1).U32(1).U32(1);
    oldlayout::TimeEntry(b, 8, 2, LocalSeconds(2001, 6, 1, 8, 0), LocalSeconds(2001, 6, 1, 9, 30), "v8");
    oldlayout::Expense(b, 8, 3, LocalSeconds(2001, 6, 1), 7.0);
    oldlayout::ToDo(b, 8, 2, "Done", LocalSeconds(2001, 6, 1, 17, 0), 0);
    b.U32(4).U32(1).U32(4).Text("Travel");
    b.U32(1).U32(1).Text("Customer");
    b.U32(1).Object("CExpenseType").U32(8).U32(14).Text("Tips").U32(0);
    b.U32(1).Object("CPaymentMethod").U32(7).U32(1).Text("Cash").Text("").U32(2);
    b.U32(1);
    oldlayout::ToDo(b, 7, 99, "Orphan", 0, LocalSeconds(2001, 7, 1));
    return b.Data();
}

// Version 5: rates as f32, no to-do lists, an entry running past midnight.
std::vector<uint8_t> Layout5()
{
    StreamBuilder b;
    oldlayout::DocumentHead(b, 5, 1, 1, 1);
    oldlayout::Task(b, 5, 1, 0, "Pat", 0, 12.5);
    b.F64(0.0).F64(0.0);
    b.Object("CDay").U32(5).Text("19980102").U32(1).U32(1);
    oldlayout::TimeEntry(b, 5, 1, LocalSeconds(1998, 1, 2, 22, 0), LocalSeconds(1998, 1, 3));
    oldlayout::Expense(b, 5, 1, LocalSeconds(1998, 1, 2), 3.5);
    b.U32(0).U32(0).U32(0).U32(0).U32(0);
    return b.Data();
}

std::vector<Seed> MakeSeeds()
{
    std::vector<Seed> seeds;
    seeds.push_back({"new-document", NewDocument()});
    {
        qvtest::SampleDoc s = EveryKindOfRecord();
        seeds.push_back({"every-kind-of-record", s.doc->SaveToBytes()});
        seeds.push_back({"archive-selection",
                         s.doc->WriteSelection(Day(2024, 3, 11), Day(2024, 3, 13), s.globex->m_id)});
    }
    for (uint32_t kind = CReport::timeDetail; kind <= CReport::billingSummary; ++kind)
    {
        const std::string name = CReport::ClassNameOf(CReport::Kind(kind));
        seeds.push_back({"report-" + name.substr(1), OneReport(CReport::Kind(kind))});
    }
    {
        // Texts of other scripts, written in the 16-bit form, for the fuzzer to start from.
        qvtest::SampleDoc s;
        s.doc->RenameTask(s.audit,
                          "\xCE\x95\xCE\xBB\xCE\xBB\xCE\xAC\xCE\xB4\xCE\xB1 \xF0\x9F\x98\x80");
        s.website->m_notes = std::string(300, 'x') + "\xE6\x97\xA5\xE6\x9C\xAC";
        s.doc->AddActivity("\xD0\x9C\xD0\xBE\xD1\x81\xD0\xBA\xD0\xB2\xD0\xB0");
        s.doc->SetModifiedFlag(false);
        seeds.push_back({"texts-of-other-scripts", s.doc->SaveToBytes()});
    }
    seeds.push_back({"layout-10", Layout10(), false});
    seeds.push_back({"layout-9", Layout9(), false});
    seeds.push_back({"layout-8", Layout8(), false});
    seeds.push_back({"layout-5", Layout5(), false});
    return seeds;
}

TEST(FuzzSeeds, EverySeedLoads)
{
    const char* corpus = std::getenv("QV_FUZZ_CORPUS");
    for (const Seed& seed : MakeSeeds())
    {
        SCOPED_TRACE(seed.name);
        LoadResult r;
        auto doc = qvtest::Load(seed.bytes, &r);
        ASSERT_EQ(r.status, LoadResult::loaded) << r.error;
        EXPECT_NE(doc->GetRootTask(), nullptr);
        if (seed.current)
        {
            EXPECT_EQ(r.version, CTimeKeeperDoc::kCurrentVersion);
            EXPECT_EQ(doc->SaveToBytes(), seed.bytes) << "does not save back unchanged";
        }
        else
            EXPECT_LT(r.version, CTimeKeeperDoc::kCurrentVersion);

        if (corpus && *corpus)
        {
            std::ofstream out(std::string(corpus) + "/" + seed.name + ".qvx", std::ios::binary | std::ios::trunc);
            out.write(reinterpret_cast<const char*>(seed.bytes.data()), std::streamsize(seed.bytes.size()));
            EXPECT_TRUE(out.flush()) << "cannot write the seed into " << corpus;
        }
    }
}

TEST(FuzzSeeds, OlderLayoutsKeepWhatTheyHold)
{
    // The seeds are only worth their coverage when the older bodies really are read.
    auto v8 = qvtest::Load(Layout8());
    ASSERT_NE(v8->GetTask(2), nullptr);
    EXPECT_EQ(v8->GetTask(2)->m_name, "\xc3\x84\xe6\xbc\xa2");
    ASSERT_EQ(v8->m_reports.size(), 1u);
    EXPECT_EQ(v8->m_reports[0]->m_timeFrame, uint32_t(CReport::frameMonth));
    EXPECT_EQ(v8->CountTimeEntries(), 1u);
    EXPECT_EQ(v8->m_todoList.size(), 1u);

    auto v10 = qvtest::Load(Layout10());
    const CDay* day = v10->GetDay("20050301");
    ASSERT_NE(day, nullptr);
    ASSERT_EQ(day->TimeEntries().size(), 2u);
    EXPECT_EQ(day->TimeEntries()[1]->m_end, CTinyTime(24, 0));
    EXPECT_DOUBLE_EQ(day->TimeEntries()[1]->m_rate, 55.5);
    EXPECT_FLOAT_EQ(day->TimeEntries()[1]->m_overtimeMultiplier, 1.5f);

    // Version 5 has no to-do list and keeps the rate as f32.
    auto v5 = qvtest::Load(Layout5());
    EXPECT_EQ(v5->CountExpenseEntries(), 1u);
    EXPECT_EQ(v5->GetDay("19980102")->TimeEntries()[0]->m_end, CTinyTime(24, 0));
    EXPECT_TRUE(v5->m_todoList.empty());
    EXPECT_DOUBLE_EQ(v5->GetRootTask()->m_regularRate, 12.5);
}

} // namespace
