#include "model/timekeeperdoc.h"
#include "oldlayouts.h"
#include "platform/messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

using platform::Answer;
using platform::LoadString;
using platform::ScriptedPrompter;
using qvtest::At;
using qvtest::Day;
using qvtest::LocalSeconds;
using qvtest::SampleDoc;
using qvtest::StreamBuilder;

namespace
{
uint32_t U32At(const std::vector<uint8_t>& bytes, size_t at)
{
    return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
           uint32_t(bytes[at + 3]) << 24;
}

constexpr size_t kDayCountAt = 56;

std::vector<uint32_t> ChildIds(const CTask* task)
{
    std::vector<uint32_t> ids;
    for (const CTask* c : task->m_children)
        ids.push_back(c->m_id);
    return ids;
}

// What every task counts with after inheritance, one line per task.
std::string EffectiveValues(const CTimeKeeperDoc& doc)
{
    std::string out;
    for (const auto& [id, t] : doc.m_tasks)
        out += std::to_string(id) + " billable=" + std::to_string(t->GetEffectiveBillable()) +
               " rate=" + std::to_string(t->GetEffectiveRate()) +
               " uar=" + std::to_string(t->GetEffectiveUseActivityRates()) +
               " otm=" + std::to_string(t->GetEffectiveOvertimeMultiplier()) +
               " taskId=" + t->GetEffectiveTaskId() + " contact=" + std::to_string(t->GetEffectiveContactId()) +
               "\n";
    return out;
}
} // namespace

TEST(NewDocument, Defaults)
{
    auto doc = qvtest::NewDoc("Pat Example");
    const CTask* root = doc->GetRootTask();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->m_name, "Pat Example");
    EXPECT_EQ(root->m_level, 0);
    EXPECT_EQ(root->m_parentId, 0u);
    EXPECT_TRUE(root->m_expanded);
    EXPECT_FALSE(root->m_useParentBilling);
    EXPECT_TRUE(root->m_billable);
    EXPECT_EQ(doc->m_lastTaskId, 1u);
    EXPECT_EQ(doc->m_headerValue, 0u);
    EXPECT_TRUE(doc->m_activities.empty());
    EXPECT_TRUE(doc->m_paymentMethods.empty());
    EXPECT_FALSE(doc->m_timerRunning);

    auto loaded = qvtest::RoundTrip(*doc);
    ASSERT_EQ(loaded->m_expenseTypes.size(), 14u);
    EXPECT_EQ(loaded->m_lastExpenseTypeId, 14u);
    EXPECT_EQ(loaded->GetExpenseType(1)->m_name, "Airfare");
    EXPECT_EQ(loaded->GetExpenseType(CExpenseType::kMileageId)->m_name, "Mileage");
    EXPECT_EQ(loaded->GetExpenseType(14)->m_name, "Tips");
    EXPECT_EQ(loaded->m_headerValue, 0u);
    EXPECT_EQ(U32At(doc->SaveToBytes(), 4), 0u);
    EXPECT_EQ(loaded->m_levelNames.size(), 5u);
}

TEST(NewDocument, LevelNames)
{
    auto doc = qvtest::NewDoc();
    EXPECT_EQ(doc->GetLevelName(0), "Employee");
    EXPECT_EQ(doc->GetLevelName(3), "Sub Project");
    EXPECT_EQ(doc->GetLevelName(7), "Level 7");
    doc->SetLevelName(1, "Customer");
    doc->SetLevelName(2, "");
    EXPECT_EQ(doc->GetLevelName(1), "Customer");
    EXPECT_EQ(doc->GetLevelName(2), "Project");
    EXPECT_TRUE(doc->IsModified());
}

TEST(DocumentFile, SaveAndLoadGiveTheSameDocument)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    doc.m_headerValue = 0xDEADBEEF;
    doc.m_recentTasks = {s.design->m_id, s.audit->m_id};
    s.design->m_taskId = "D-1";
    s.design->m_useParentTaskId = false;
    doc.AddReport(CReport::invoice)->m_name = "March";
    auto project = std::make_unique<CProject>();
    project->m_name = "Plan";
    doc.AddProject(std::move(project));

    const std::vector<uint8_t> bytes = doc.SaveToBytes();
    auto loaded = qvtest::RoundTrip(doc);
    EXPECT_EQ(qvtest::Dump(*loaded), qvtest::Dump(doc));
    EXPECT_EQ(loaded->SaveToBytes(), bytes);
    EXPECT_FALSE(loaded->IsModified());
    EXPECT_EQ(loaded->CountTimeEntries(), 4u);
    EXPECT_EQ(loaded->CountToDoEntries(), 3u);
    EXPECT_EQ(loaded->GetTask(s.design->m_id)->m_parent, loaded->GetTask(s.website->m_id));
}

TEST(DocumentFile, VersionQuestions)
{
    StreamBuilder newer;
    newer.U32(12);
    auto doc = std::make_unique<CTimeKeeperDoc>();
    ScriptedPrompter prompter;
    LoadResult r = doc->LoadFromBytes(newer.Data().data(), newer.Size(), prompter);
    EXPECT_EQ(r.status, LoadResult::cancelled);
    EXPECT_EQ(prompter.Messages(), std::vector<std::string>{LoadString(40029)});
    EXPECT_TRUE(doc->m_tasks.empty());

    StreamBuilder older;
    oldlayout::CurrentHead(older, 10, 1, 1, 0);
    oldlayout::InheritingTask(older, 10, 1, 0, "Pat", 0);
    older.F64(0.0).F64(0.0);
    oldlayout::CurrentTail(older);
    older.U32(0);

    // The question is asked with the document lock free for other threads.
    class LockProbe : public ScriptedPrompter
    {
    public:
        LockProbe(CTimeKeeperDoc& d, Answer a) : ScriptedPrompter({a}), doc(d) {}
        Answer AskYesNo(const std::string& text, platform::Icon icon) override
        {
            lockFree = std::async(std::launch::async, [this] {
                           std::unique_lock lock(doc.GetLock(), std::try_to_lock);
                           return lock.owns_lock();
                       }).get();
            return ScriptedPrompter::AskYesNo(text, icon);
        }
        CTimeKeeperDoc& doc;
        bool lockFree = false;
    } no(*doc, Answer::no);
    r = doc->LoadFromBytes(older.Data().data(), older.Size(), no);
    EXPECT_TRUE(no.lockFree);
    EXPECT_EQ(r.status, LoadResult::cancelled);
    EXPECT_EQ(no.Questions(), std::vector<std::string>{LoadString(41018)});
    EXPECT_TRUE(doc->m_tasks.empty());

    ScriptedPrompter yes({Answer::yes});
    r = doc->LoadFromBytes(older.Data().data(), older.Size(), yes);
    ASSERT_EQ(r.status, LoadResult::loaded) << r.error;
    EXPECT_TRUE(doc->IsModified());
    EXPECT_EQ(doc->m_fileVersion, 10u);
    EXPECT_EQ(doc->GetRootTask()->m_name, "Pat");

    StreamBuilder ancient;
    ancient.U32(4);
    ScriptedPrompter none;
    r = doc->LoadFromBytes(ancient.Data().data(), ancient.Size(), none);
    EXPECT_EQ(r.status, LoadResult::failed);
    EXPECT_TRUE(none.Questions().empty());
    EXPECT_TRUE(doc->m_tasks.empty());
}

TEST(DocumentFile, EveryTruncationFailsCleanly)
{
    SampleDoc s;
    const std::vector<uint8_t> bytes = s.doc->SaveToBytes();
    auto doc = std::make_unique<CTimeKeeperDoc>();
    for (size_t n = 0; n < bytes.size(); ++n)
    {
        ScriptedPrompter prompter;
        const LoadResult r = doc->LoadFromBytes(bytes.data(), n, prompter);
        ASSERT_EQ(r.status, LoadResult::failed) << n;
        // The offset is where the value that ran past the end starts.
        const size_t at = r.error.find(" record at offset ");
        ASSERT_NE(at, std::string::npos) << r.error;
        EXPECT_LE(std::stoul(r.error.substr(at + 18)), n) << r.error;
        ASSERT_NE(r.error.find(": unexpected end of file"), std::string::npos) << r.error;
        ASSERT_TRUE(doc->m_tasks.empty() && doc->m_days.empty() && doc->m_todoList.empty());
    }

    // A cut inside a time entry, after its version and task id, names the time entry.
    const std::string name = "CTimeEntry";
    const auto at = std::search(bytes.begin(), bytes.end(), name.begin(), name.end()) - bytes.begin();
    const size_t cut = size_t(at) + name.size() + 8;
    ScriptedPrompter prompter;
    const LoadResult r = doc->LoadFromBytes(bytes.data(), cut, prompter);
    EXPECT_EQ(r.error, "CTimeEntry record at offset " + std::to_string(cut) + ": unexpected end of file");
}

TEST(DocumentFile, FailedOpenIsReported)
{
    class Probe : public CTimeKeeperDoc
    {
    public:
        bool Read(const std::vector<uint8_t>& bytes, platform::Prompter& p) { return ReadFromBytes(bytes, p); }
    };
    Probe doc;
    ScriptedPrompter prompter;
    EXPECT_FALSE(doc.Read({11, 0, 0}, prompter));
    ASSERT_EQ(prompter.Messages().size(), 1u);
    EXPECT_NE(prompter.Messages()[0].find("CTimeKeeperDoc record at offset 0"), std::string::npos);
}

TEST(DocumentFile, EmptyDaysAreDroppedOnReading)
{
    auto doc = qvtest::NewDoc();
    doc->GetOrCreateDay(Day(2024, 1, 2));
    doc->GetOrCreateDay(Day(2024, 1, 3));
    EXPECT_EQ(U32At(doc->SaveToBytes(), kDayCountAt), 2u);
    auto loaded = qvtest::RoundTrip(*doc);
    EXPECT_TRUE(loaded->m_days.empty());
    EXPECT_EQ(U32At(loaded->SaveToBytes(), kDayCountAt), 0u);
}

TEST(DocumentFile, EntriesOfUnknownTasksGoToTheRoot)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    // The task disappears behind the document's back, as in a file edited elsewhere.
    const uint32_t auditId = s.audit->m_id;
    s.globex->m_children.clear();
    doc.m_tasks.erase(auditId);
    auto loaded = qvtest::RoundTrip(doc);
    const CTask* root = loaded->GetRootTask();
    EXPECT_EQ(root->m_timeEntries.size(), 1u);
    EXPECT_EQ(root->m_expenseEntries.size(), 1u);
    ASSERT_EQ(root->m_todoEntries.size(), 1u);
    EXPECT_EQ(root->m_todoEntries[0]->m_taskId, 1u);
    EXPECT_EQ(root->m_todoEntries[0]->m_description, "Collect receipts");
    EXPECT_EQ(root->m_timeEntries[0]->m_taskId, 1u);
}

TEST(DocumentFile, RunningEntryResumesTheTimer)
{
    SampleDoc s;
    qvtest::AddTime(*s.doc, s.audit, Day(2024, 3, 15), 11, 0, -1, 0);
    auto loaded = qvtest::RoundTrip(*s.doc);
    ASSERT_NE(loaded->m_activeEntry, nullptr);
    EXPECT_TRUE(loaded->m_timerRunning);
    EXPECT_EQ(loaded->m_activeEntry->m_taskId, s.audit->m_id);
    EXPECT_TRUE(loaded->m_activeEntry->IsRunning());
}

TEST(DocumentFile, Version8IsConverted)
{
    StreamBuilder b;
    oldlayout::DocumentHead(b, 8, 3, 3, 1);
    oldlayout::Task(b, 8, 3, 1, "beta", 1);
    oldlayout::Task(b, 8, 1, 0, "Pat", 0);
    oldlayout::Task(b, 8, 2, 1, "Alpha", 1);
    b.F64(0.0).F64(0.0);
    b.Object("CDay").U32(8).Text("20010601").U32(1).U32(1).U32(1);
    oldlayout::TimeEntry(b, 8, 2, LocalSeconds(2001, 6, 1, 8, 0), LocalSeconds(2001, 6, 1, 9, 30), "v8");
    oldlayout::Expense(b, 8, 3, LocalSeconds(2001, 6, 1), 7.0);
    oldlayout::ToDo(b, 8, 2, "Done", LocalSeconds(2001, 6, 1, 17, 0), 0);
    b.U32(4).U32(1).U32(4).Text("Travel");
    b.U32(1).U32(1).Text("Customer");
    b.U32(1).Object("CExpenseType").U32(8).U32(14).Text("Tips").U32(0);
    b.U32(1).Object("CPaymentMethod").U32(7).U32(1).Text("Cash").Text("").U32(2);
    b.U32(1);
    oldlayout::ToDo(b, 7, 99, "Orphan", 0, 0);

    LoadResult r;
    auto doc = qvtest::Load(b.Data(), &r);
    ASSERT_EQ(r.status, LoadResult::loaded) << r.error;
    EXPECT_TRUE(doc->IsModified());
    EXPECT_EQ(doc->m_headerValue, 0u);
    EXPECT_EQ(doc->m_lastContactId, 0u);
    EXPECT_EQ(doc->m_lastActivityId, 4u);
    EXPECT_FLOAT_EQ(doc->m_defaultMileageRate, 0.31f);
    EXPECT_EQ(doc->m_recentTasks, (std::vector<uint32_t>{2, 1}));
    EXPECT_EQ(ChildIds(doc->GetRootTask()), (std::vector<uint32_t>{2, 3})) << "Alpha before beta";
    const CActivity* travel = doc->GetActivity(4);
    ASSERT_NE(travel, nullptr);
    EXPECT_EQ(travel->m_flag1, 1u);
    EXPECT_EQ(travel->m_flag2, 0u);
    EXPECT_EQ(doc->GetLevelName(1), "Customer");
    EXPECT_EQ(doc->GetPaymentMethod(1)->m_accountType, 2u);
    const CDay* day = doc->GetDay("20010601");
    ASSERT_NE(day, nullptr);
    EXPECT_EQ(day->TimeEntries()[0]->m_end, CTinyTime(9, 30));
    EXPECT_EQ(doc->GetTask(2)->m_todoEntries.size(), 1u);
    EXPECT_EQ(day->ToDoEntries()[0]->m_completeDate.Format("%Y%m%d"), "20010601");
    ASSERT_EQ(doc->m_todoList.size(), 1u);
    EXPECT_EQ(doc->m_todoList[0]->m_taskId, 1u);

    // Saved in the current layout: what counts is unchanged, and a second save
    // changes nothing more.
    auto again = qvtest::RoundTrip(*doc);
    EXPECT_EQ(EffectiveValues(*again), EffectiveValues(*doc));
    auto third = qvtest::RoundTrip(*again);
    EXPECT_EQ(qvtest::Dump(*third), qvtest::Dump(*again));
}

TEST(DocumentFile, OldRootWithInheritingFlagsKeepsItsValues)
{
    // Older layouts stored billing and task ID for every task; a root with its
    // use-parent flags set still counts with its own values, and so do the tasks
    // that inherit up to it.
    for (uint32_t version : {5u, 6u, 7u, 8u})
    {
        StreamBuilder b;
        oldlayout::DocumentHead(b, version, 3, 3, 0);
        oldlayout::TaskWithFlags(b, version, 1, 0, "Pat", 0, false, 80.0, true, "EMP", true);
        oldlayout::TaskWithFlags(b, version, 2, 1, "Client", 1, true, 12.0, true, "stale", true);
        oldlayout::TaskWithFlags(b, version, 3, 2, "Job", 2, true, 95.0, false, "J-3", false);
        b.F64(0.0).F64(0.0);
        b.U32(0).U32(0).U32(0).U32(0).U32(0);
        if (version >= 6)
            b.U32(0);

        LoadResult r;
        auto doc = qvtest::Load(b.Data(), &r);
        ASSERT_EQ(r.status, LoadResult::loaded) << version << ": " << r.error;
        const CTask* root = doc->GetRootTask();
        const CTask* client = doc->GetTask(2);
        EXPECT_TRUE(root->m_useParentBilling && root->m_useParentTaskId) << "flags stay as read";
        EXPECT_DOUBLE_EQ(root->m_regularRate, 80.0) << version;
        EXPECT_FALSE(root->GetEffectiveBillable());
        EXPECT_DOUBLE_EQ(client->GetEffectiveRate(), 80.0) << version;
        EXPECT_FALSE(client->GetEffectiveBillable());
        EXPECT_EQ(client->GetEffectiveTaskId(), "EMP");
        EXPECT_DOUBLE_EQ(client->m_regularRate, 12.0) << "kept as read";
        EXPECT_EQ(client->m_taskId, "stale");
        EXPECT_DOUBLE_EQ(doc->GetTask(3)->GetEffectiveRate(), 95.0);

        auto converted = qvtest::RoundTrip(*doc);
        EXPECT_EQ(EffectiveValues(*converted), EffectiveValues(*doc)) << version;
        const CTask* savedRoot = converted->GetRootTask();
        EXPECT_FALSE(savedRoot->m_useParentBilling || savedRoot->m_useParentTaskId ||
                     savedRoot->m_useParentContact)
            << "the root is written with its own values";
        EXPECT_DOUBLE_EQ(savedRoot->m_regularRate, 80.0);
        EXPECT_EQ(savedRoot->m_taskId, "EMP");
    }
}

TEST(DocumentFile, WrongRecordInPlaceFailsTheLoad)
{
    StreamBuilder b;
    oldlayout::CurrentHead(b, 11, 1, 1, 0);
    b.Object("CExpenseType").U32(11).U32(1).Text("x").U32(0);
    LoadResult r;
    auto doc = qvtest::Load(b.Data(), &r);
    EXPECT_EQ(r.status, LoadResult::failed);
    EXPECT_NE(r.error.find("found a CExpenseType record where a CTask was expected"), std::string::npos)
        << r.error;

    StreamBuilder noRoot;
    oldlayout::CurrentHead(noRoot, 11, 2, 1, 0);
    oldlayout::InheritingTask(noRoot, 11, 2, 1, "Orphan", 1);
    doc = qvtest::Load(noRoot.Data(), &r);
    EXPECT_EQ(r.status, LoadResult::failed);
    EXPECT_NE(r.error.find("no root task"), std::string::npos);
}

TEST(TaskTree, AddOrdersChildrenByName)
{
    auto doc = qvtest::NewDoc();
    CTask* root = doc->GetRootTask();
    CTask* a = doc->AddTask(root, 1);
    EXPECT_EQ(a->m_id, 2u);
    EXPECT_EQ(a->m_name, "New Client");
    EXPECT_TRUE(a->m_useParentBilling && a->m_useParentTaskId && a->m_useParentContact);
    EXPECT_EQ(doc->m_lastTaskId, 2u);

    CTask* zeta = qvtest::AddTask(*doc, root, "zeta");
    CTask* alpha = qvtest::AddTask(*doc, root, "Alpha");
    CTask* beta = qvtest::AddTask(*doc, root, "beta");
    CTask* alpha2 = qvtest::AddTask(*doc, root, "ALPHA");
    EXPECT_EQ(ChildIds(root), (std::vector<uint32_t>{alpha2->m_id, alpha->m_id, beta->m_id, a->m_id,
                                                      zeta->m_id}));
    doc->RenameTask(zeta, "aardvark");
    EXPECT_EQ(root->m_children.front(), zeta);

    // Abbreviations order the tree unless full names are shown.
    doc->m_fullTaskNames = false;
    beta->m_abbreviation = "0";
    doc->SortChildren(root);
    EXPECT_EQ(root->m_children.front(), beta);
    EXPECT_EQ(doc->GetTaskPath(zeta), "aardvark");
}

TEST(TaskTree, MoveRefusalsInOrder)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    CTask* otherProject = qvtest::AddTask(doc, s.globex, "Other");
    CTask* otherSub = qvtest::AddTask(doc, otherProject, "Sub");
    EXPECT_EQ(doc.MoveTask(s.design, otherSub), 40012) << "level 3 onto level 3";
    EXPECT_EQ(doc.MoveTask(s.design, qvtest::AddTask(doc, otherSub, "Deep")), 40012);
    EXPECT_EQ(doc.MoveTask(s.design, s.design), 0);
    EXPECT_EQ(doc.MoveTask(s.acme, s.root), 0);
    EXPECT_EQ(doc.MoveTask(s.website, s.design), 40012);

    s.design->m_level = 5;
    EXPECT_EQ(doc.MoveTask(s.acme, s.design), 40012);
    s.acme->m_level = 9;
    EXPECT_EQ(doc.MoveTask(s.acme, s.design), 40011);
    s.acme->m_level = 1;
    s.design->m_level = 3;

    s.audit->m_projectTaskNumber = 4;
    EXPECT_EQ(doc.MoveTask(s.design, s.audit), 40025);
    otherProject->m_projectTaskNumber = 8;
    EXPECT_EQ(doc.MoveTask(otherProject, s.audit), 40026) << "the source is checked first";
    otherProject->m_projectTaskNumber = 0;
    s.audit->m_projectTaskNumber = 0;

    doc.SetModifiedFlag(false);
    EXPECT_EQ(doc.MoveTask(s.design, otherProject), 0);
    EXPECT_EQ(s.design->m_parent, otherProject);
    EXPECT_EQ(s.design->m_parentId, otherProject->m_id);
    EXPECT_EQ(s.design->m_level, 3);
    EXPECT_TRUE(s.website->m_children.empty());
    EXPECT_TRUE(doc.IsModified());
    EXPECT_EQ(doc.GetTaskPath(s.design), "Globex/Other/Design");
}

TEST(TaskTree, DeleteWithRollUp)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    const size_t times = doc.CountTimeEntries(), todos = doc.CountToDoEntries();
    ScriptedPrompter prompter({Answer::yes, Answer::yes});
    ASSERT_TRUE(doc.DeleteTask(s.website, prompter));
    EXPECT_EQ(prompter.Questions()[0], LoadString(41003) + "Project Website" + LoadString(41004));
    EXPECT_EQ(prompter.Questions()[1], LoadString(41005) + "Client Acme" + LoadString(41006));
    EXPECT_EQ(doc.CountTimeEntries(), times);
    EXPECT_EQ(doc.CountToDoEntries(), todos);
    EXPECT_EQ(s.acme->m_timeEntries.size(), 3u);
    EXPECT_EQ(s.acme->m_todoEntries.size(), 2u);
    for (const CTimeEntry* e : s.acme->m_timeEntries)
        EXPECT_EQ(e->m_taskId, s.acme->m_id);
    EXPECT_TRUE(s.acme->m_children.empty());
    EXPECT_EQ(doc.m_tasks.size(), 4u);
    EXPECT_FALSE(prompter.RanOutOfAnswers());
}

TEST(TaskTree, DeleteWithoutRollUpStopsTheTimer)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    qvtest::AddTime(doc, s.design, Day(2024, 3, 15), 9, 0, -1, 0);
    int stops = 0;
    doc.m_onTimerStopped = [&] { ++stops; };
    ScriptedPrompter prompter({Answer::yes, Answer::no});
    ASSERT_TRUE(doc.DeleteTask(s.website, prompter));
    EXPECT_EQ(stops, 1);
    EXPECT_FALSE(doc.m_timerRunning);
    EXPECT_EQ(doc.m_activeEntry, nullptr);
    EXPECT_EQ(doc.CountTimeEntries(), 1u);
    EXPECT_EQ(doc.CountExpenseEntries(), 1u);
    EXPECT_EQ(doc.CountToDoEntries(), 1u);
    EXPECT_EQ(doc.GetTask(s.audit->m_id)->m_timeEntries.size(), 1u);
    EXPECT_TRUE(s.acme->m_timeEntries.empty());
}

TEST(TaskTree, DeleteRefusedOrCancelled)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    ScriptedPrompter cancel({Answer::yes, Answer::cancel});
    EXPECT_FALSE(doc.DeleteTask(s.acme, cancel));
    ScriptedPrompter no({Answer::no});
    EXPECT_FALSE(doc.DeleteTask(s.acme, no));
    EXPECT_EQ(doc.m_tasks.size(), 6u);

    s.design->m_projectTaskNumber = 3;
    ScriptedPrompter refused;
    EXPECT_FALSE(doc.DeleteTask(s.acme, refused));
    EXPECT_EQ(refused.Messages(), std::vector<std::string>{LoadString(40032)});
    EXPECT_TRUE(refused.Questions().empty());

    // A task without entries is deleted after one question.
    CTask* empty = qvtest::AddTask(doc, s.globex, "Empty");
    ScriptedPrompter one({Answer::yes});
    EXPECT_TRUE(doc.DeleteTask(empty, one));
    EXPECT_EQ(one.Questions().size(), 1u);
    EXPECT_EQ(doc.GetTask(7), nullptr);
    EXPECT_EQ(doc.m_lastTaskId, 7u);
}

TEST(Catalogs, IdsAreNeverReusedAndDeletionAsks)
{
    auto doc = qvtest::NewDoc();
    CPaymentMethod* cash = doc->AddPaymentMethod("Cash");
    CPaymentMethod* card = doc->AddPaymentMethod("Card");
    EXPECT_EQ(cash->m_id, 1u);
    ScriptedPrompter prompter({Answer::yes});
    EXPECT_TRUE(doc->DeletePaymentMethod(card->m_id, prompter));
    EXPECT_EQ(prompter.Questions()[0], LoadString(41012) + "Card?" + LoadString(41013) + "Card" +
                                           LoadString(41014));
    EXPECT_EQ(doc->AddPaymentMethod("Check")->m_id, 3u);

    CActivity* travel = doc->AddActivity("Travel");
    CTimeEntry* e = qvtest::AddTime(*doc, doc->GetRootTask(), Day(2024, 1, 1), 9, 0, 10, 0);
    e->m_activityId = travel->m_id;
    ScriptedPrompter keep({Answer::no, Answer::yes});
    EXPECT_FALSE(doc->DeleteActivity(travel->m_id, keep));
    EXPECT_TRUE(doc->DeleteActivity(e->m_activityId, keep));
    EXPECT_EQ(keep.Questions()[0], LoadString(41010) + "Travel?" + LoadString(41015) + "Travel" +
                                       LoadString(41014));
    EXPECT_EQ(e->m_activityId, 1u);
    EXPECT_EQ(doc->GetActivity(1), nullptr);

    CContact* contact = doc->AddContact();
    contact->m_first = "Ann";
    contact->m_last = "Lee";
    ScriptedPrompter ask({Answer::yes});
    EXPECT_TRUE(doc->DeleteContact(contact->m_id, ask));
    EXPECT_EQ(ask.Questions()[0], "Are you sure you want to delete the contact - Lee, Ann?");

    doc->GetExpenseType(CExpenseType::kMileageId)->m_name = "Kilometres";
    auto loaded = qvtest::RoundTrip(*doc);
    EXPECT_EQ(loaded->GetExpenseType(CExpenseType::kMileageId)->m_name, "Kilometres");
}

TEST(Entries, MovingBetweenTasksDaysAndLists)
{
    SampleDoc s;
    CTimeKeeperDoc& doc = *s.doc;
    CTimeEntry* entry = s.website->m_timeEntries.front();
    doc.ChangeEntryTask(entry, s.audit);
    EXPECT_EQ(entry->m_taskId, s.audit->m_id);
    EXPECT_TRUE(s.website->m_timeEntries.empty());
    EXPECT_EQ(s.audit->m_timeEntries.back(), entry);
    EXPECT_EQ(entry->m_day, doc.GetDay(Day(2024, 3, 11)));

    CExpenseEntry* expense = s.website->m_expenseEntries.front();
    doc.MoveExpense(expense, At(2024, 4, 2, 15, 0));
    EXPECT_EQ(expense->m_day, doc.GetDay("20240402"));
    EXPECT_EQ(expense->m_date, Day(2024, 4, 2));
    EXPECT_TRUE(doc.GetDay("20240311")->ExpenseEntries().empty());

    CToDoEntry* todo = doc.m_todoList.front().get();
    doc.CompleteToDo(todo, At(2024, 3, 13, 17, 5));
    EXPECT_EQ(todo->m_completeDate, Day(2024, 3, 13));
    EXPECT_EQ(todo->m_day, doc.GetDay("20240313"));
    EXPECT_EQ(doc.m_todoList.size(), 1u);
    doc.ReopenToDo(todo);
    EXPECT_FALSE(todo->IsCompleted());
    EXPECT_EQ(todo->m_day, nullptr);
    EXPECT_EQ(doc.m_todoList.size(), 2u);

    auto owned = doc.UnfileToDo(todo);
    EXPECT_EQ(owned.get(), todo);
    EXPECT_TRUE(s.design->m_todoEntries.empty());
}

TEST(Entries, AdjustingAgainstAnotherEntry)
{
    auto doc = qvtest::NewDoc("Pat", At(2024, 3, 11, 16, 0));
    CTask* root = doc->GetRootTask();
    const CDateTime day = Day(2024, 3, 11);
    CTimeEntry* b = qvtest::AddTime(*doc, root, day, 10, 0, 11, 0);

    CTimeEntry* inside = qvtest::AddTime(*doc, root, day, 10, 15, 10, 45);
    EXPECT_FALSE(doc->AdjustTimeEntry(inside, b));
    EXPECT_EQ(doc->CountTimeEntries(), 1u);
    EXPECT_EQ(root->m_timeEntries.size(), 1u);

    CTimeEntry* before = qvtest::AddTime(*doc, root, day, 9, 30, 10, 30);
    EXPECT_TRUE(doc->AdjustTimeEntry(before, b));
    EXPECT_EQ(before->m_end, CTinyTime(10, 0));

    CTimeEntry* after = qvtest::AddTime(*doc, root, day, 10, 30, 12, 0);
    EXPECT_TRUE(doc->AdjustTimeEntry(after, b));
    EXPECT_EQ(after->m_start, CTinyTime(11, 0));

    CTimeEntry* around = qvtest::AddTime(*doc, root, day, 8, 0, 13, 0, "long");
    around->m_activityId = 4;
    EXPECT_TRUE(doc->AdjustTimeEntry(around, b));
    EXPECT_EQ(around->m_end, CTinyTime(10, 0));
    const CDay* d = doc->GetDay(day);
    ASSERT_EQ(d->TimeEntries().size(), 5u);
    const CTimeEntry* tail = d->TimeEntries()[3].get();
    EXPECT_EQ(tail->m_start, CTinyTime(11, 0));
    EXPECT_EQ(tail->m_end, CTinyTime(13, 0));
    EXPECT_EQ(tail->m_note, "long");
    EXPECT_EQ(tail->m_activityId, 4u);
    EXPECT_EQ(root->m_timeEntries.size(), 5u);
    std::vector<int> starts;
    for (const auto& e : d->TimeEntries())
        starts.push_back(e->m_start.MinutesOfDay());
    EXPECT_TRUE(std::is_sorted(starts.begin(), starts.end()));
}

TEST(Entries, RunningEntryLosingItsOpenEndStopsTheTimer)
{
    auto doc = qvtest::NewDoc("Pat", At(2024, 3, 11, 16, 0));
    CTask* root = doc->GetRootTask();
    const CDateTime day = Day(2024, 3, 11);
    CTimeEntry* b = qvtest::AddTime(*doc, root, day, 15, 0, 17, 0);
    CTimeEntry* running = qvtest::AddTime(*doc, root, day, 14, 0, -1, 0);
    int stops = 0;
    doc->m_onTimerStopped = [&] { ++stops; };
    EXPECT_TRUE(doc->AdjustTimeEntry(running, b));
    EXPECT_EQ(running->m_end, CTinyTime(15, 0));
    EXPECT_EQ(stops, 1);
    EXPECT_FALSE(doc->m_timerRunning);

    // Enclosing a finished entry, the running one keeps timing on its later part.
    CTimeEntry* short1 = qvtest::AddTime(*doc, root, Day(2024, 3, 12), 9, 0, 9, 30);
    CTimeEntry* open = qvtest::AddTime(*doc, root, Day(2024, 3, 12), 8, 0, -1, 0);
    qvtest::SetNow(*doc, At(2024, 3, 12, 11, 0));
    EXPECT_TRUE(doc->AdjustTimeEntry(open, short1));
    EXPECT_EQ(open->m_end, CTinyTime(9, 0));
    ASSERT_NE(doc->m_activeEntry, nullptr);
    EXPECT_EQ(doc->m_activeEntry->m_start, CTinyTime(9, 30));
    EXPECT_TRUE(doc->m_activeEntry->IsRunning());
    EXPECT_EQ(stops, 1);
}

TEST(DocumentFile, RepeatedDaysAndParentCycles)
{
    auto timeEntry = [](StreamBuilder& b, uint32_t task, uint8_t startHour) {
        b.Object("CTimeEntry").U32(11).U32(task).Text("").U32(0).U32(0).U32(0);
        b.U32(11).U8(startHour).U8(0).U32(0).U32(11).U8(uint8_t(startHour + 1)).U8(0).U32(0);
    };
    StreamBuilder b;
    oldlayout::CurrentHead(b, 11, 3, 3, 2);
    oldlayout::InheritingTask(b, 11, 1, 0, "Pat", 0);
    // Tasks 2 and 3 name each other as parent.
    oldlayout::InheritingTask(b, 11, 2, 3, "Two", 1);
    oldlayout::InheritingTask(b, 11, 3, 2, "Three", 2);
    b.F64(0.0).F64(0.0);
    b.Object("CDay").U32(11).Text("20240105").U32(1).U32(0).U32(0);
    timeEntry(b, 2, 9);
    b.Object("CDay").U32(11).Text("20240105").U32(1).U32(0).U32(0);
    timeEntry(b, 3, 7);
    oldlayout::CurrentTail(b);
    b.U32(0);

    LoadResult r;
    auto doc = qvtest::Load(b.Data(), &r);
    ASSERT_EQ(r.status, LoadResult::loaded) << r.error;
    ASSERT_EQ(doc->m_days.size(), 1u);
    const CDay* day = doc->GetDay("20240105");
    ASSERT_EQ(day->TimeEntries().size(), 2u);
    EXPECT_EQ(day->TimeEntries()[0]->m_start, CTinyTime(7, 0));
    EXPECT_EQ(day->TimeEntries()[1]->m_day, day);
    EXPECT_EQ(doc->GetTask(3)->m_timeEntries.size(), 1u);

    // One link of the cycle is refused, so every walk up the tree ends.
    const CTask* two = doc->GetTask(2);
    const CTask* three = doc->GetTask(3);
    EXPECT_TRUE(two->m_parent == nullptr || three->m_parent == nullptr);
    EXPECT_LE(three->GetDepth() + two->GetDepth(), 1);
}
