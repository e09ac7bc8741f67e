// Merging plan tasks into the task tree, the imported to-dos and the write-back arrays.

#include "fakes.h"
#include "projectlink/projectimport.h"
#include "projectlink/projecttexts.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace projectlink;
using namespace qvtest;

namespace
{

class ImportTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        doc = NewDoc("Pat", At(2024, 6, 11, 12, 0));
        client = AddTask(*doc, doc->GetRootTask(), "Client");
        link.m_parentTaskId = client->m_id;
        link.m_resourceId = 3;
    }

    HRESULT Import(bool keepWork = false, bool keepCost = false)
    {
        warnings.clear();
        return ImportTasks(*doc, link, plan, keepWork, keepCost, warnings, ui);
    }
    CTask* ByNumber(uint32_t number) const
    {
        for (const auto& [id, t] : doc->m_tasks)
            if (t->m_projectId == link.m_id && t->m_projectTaskNumber == number)
                return t.get();
        return nullptr;
    }
    CTask* ByName(const std::string& name) const
    {
        for (const auto& [id, t] : doc->m_tasks)
            if (t->m_name == name)
                return t.get();
        return nullptr;
    }
    static CToDoEntry* Imported(const CTask* t)
    {
        for (CToDoEntry* e : t->m_todoEntries)
            if (e->m_imported)
                return e;
        return nullptr;
    }

    std::unique_ptr<CTimeKeeperDoc> doc;
    CTask* client = nullptr;
    CProject link;
    FakeComponent plan;
    ScriptedLinkUi ui;
    std::vector<std::string> warnings;
};

TEST_F(ImportTest, ChildrenListedBeforeTheirParentsBuildTheTreeOverSeveralPasses)
{
    // Plan ids chosen so that map order visits the grandchild first.
    plan.tasks = {{1, 20, "Grandchild", 8, 0, 0, 0},
                  {20, 30, "Child", 0, 0, 0, 0},
                  {30, 0, "Top", 0, 0, 0, 0},
                  {40, 0, "Second top", 2.5, 100, 0, 0},
                  {41, 0, "Skipped row", 0, 0, 0, 0, true}};
    ASSERT_EQ(S_OK, Import());

    EXPECT_EQ(doc->m_lastProjectId + 1, link.m_id) << "a new link takes the next project id";
    CTask* top = ByNumber(30);
    CTask* child = ByNumber(20);
    CTask* grandchild = ByNumber(1);
    ASSERT_TRUE(top && child && grandchild);
    EXPECT_EQ(client, top->m_parent);
    EXPECT_EQ(top, child->m_parent);
    EXPECT_EQ(child, grandchild->m_parent);
    EXPECT_EQ(client->m_level + 1, top->m_level);
    EXPECT_EQ(client->m_level + 3, grandchild->m_level);
    EXPECT_EQ(nullptr, ByName("Skipped row"));
    EXPECT_DOUBLE_EQ(480.0, grandchild->m_hoursEstimate) << "plan hours become minutes";
    EXPECT_DOUBLE_EQ(8.0, grandchild->m_planWorkEstimate);
    EXPECT_DOUBLE_EQ(100.0, ByNumber(40)->m_costEstimate);
    EXPECT_TRUE(grandchild->IsImported());
    EXPECT_TRUE(top->IsProjectSummary());
    ASSERT_EQ(2u, client->m_children.size());
    EXPECT_EQ("Second top", client->m_children[0]->m_name) << "siblings stay sorted";
    EXPECT_TRUE(warnings.empty());
    EXPECT_EQ(std::vector<std::string>{ProjectString(41032)}, ui.progressTitles);
}

TEST_F(ImportTest, UpdateRenamesMovesAndDetachesDeletedTasks)
{
    plan.tasks = {{1, 0, "Design", 0, 0, 0, 0},
                  {2, 1, "Mockups", 0, 0, 0, 0},
                  {3, 0, "Build", 0, 0, 0, 0},
                  {4, 3, "Backend", 0, 0, 0, 0}};
    ASSERT_EQ(S_OK, Import());
    CTask* backend = ByNumber(4);
    CTask* mockups = ByNumber(2);
    AddTime(*doc, backend, Day(2024, 6, 10), 9, 0, 10, 0);
    const uint32_t lastTaskId = doc->m_lastTaskId;

    // Mockups renamed and moved under Build; Backend removed; a new task appears.
    plan.tasks = {{1, 0, "Design", 0, 0, 0, 0},
                  {2, 3, "Wireframes", 0, 0, 0, 0},
                  {3, 0, "Build", 0, 0, 0, 0},
                  {5, 3, "Frontend", 0, 0, 0, 0}};
    ASSERT_EQ(S_OK, Import());

    EXPECT_EQ(mockups, ByNumber(2)) << "the same task is kept";
    EXPECT_EQ("Wireframes", mockups->m_name);
    EXPECT_EQ(ByNumber(3), mockups->m_parent);
    EXPECT_EQ(ByNumber(3)->m_level + 1, mockups->m_level);
    EXPECT_TRUE(ByNumber(1)->m_children.empty());

    EXPECT_EQ(client, backend->m_parent) << "a task removed from the plan goes to the project parent";
    EXPECT_EQ(0u, backend->m_projectId);
    EXPECT_FALSE(backend->IsImported());
    EXPECT_EQ(1u, backend->m_timeEntries.size()) << "and keeps its entries";
    ASSERT_EQ(1u, warnings.size());
    EXPECT_EQ("Backend has been deleted from project.  Item moved to project parent.", warnings[0]);

    ASSERT_NE(nullptr, ByNumber(5));
    EXPECT_EQ(lastTaskId + 1, ByNumber(5)->m_id);
}

TEST_F(ImportTest, KeepLocalEstimatesKeepsOnlyEditedOnes)
{
    plan.tasks = {{1, 0, "Edited", 10, 500, 0, 0}, {2, 0, "Untouched", 10, 500, 0, 0}};
    ASSERT_EQ(S_OK, Import());
    CTask* edited = ByNumber(1);
    edited->m_hoursEstimate = 12 * 60; // the user changed it
    edited->m_costEstimate = 650;

    plan.tasks = {{1, 0, "Edited", 20, 900, 0, 0}, {2, 0, "Untouched", 20, 900, 0, 0}};
    ASSERT_EQ(S_OK, Import(true, true));
    EXPECT_DOUBLE_EQ(12 * 60, edited->m_hoursEstimate);
    EXPECT_DOUBLE_EQ(650, edited->m_costEstimate);
    EXPECT_DOUBLE_EQ(20, edited->m_planWorkEstimate) << "the plan's value is remembered anyway";
    EXPECT_DOUBLE_EQ(20 * 60, ByNumber(2)->m_hoursEstimate);
    EXPECT_DOUBLE_EQ(900, ByNumber(2)->m_costEstimate);

    // Without keeping, the plan wins even over an edit.
    plan.tasks = {{1, 0, "Edited", 30, 1000, 0, 0}, {2, 0, "Untouched", 30, 1000, 0, 0}};
    ASSERT_EQ(S_OK, Import(false, false));
    EXPECT_DOUBLE_EQ(30 * 60, edited->m_hoursEstimate);
    EXPECT_DOUBLE_EQ(1000, edited->m_costEstimate);
}

TEST_F(ImportTest, ImportedToDosFollowThePlan)
{
    const double due1 = Day(2024, 6, 20).GetValue();
    const double due2 = Day(2024, 6, 25).GetValue() + 0.7; // a time of day is dropped
    plan.tasks = {{1, 0, "Tracked", 0, 0, due1, 1}, {2, 0, "Not tracked", 0, 0, due1, 0}};
    ASSERT_EQ(S_OK, Import());
    CToDoEntry* todo = Imported(ByNumber(1));
    ASSERT_NE(nullptr, todo);
    EXPECT_EQ("Imported Project Entry", todo->m_description);
    EXPECT_EQ(Day(2024, 6, 20), todo->m_dueDate);
    EXPECT_FALSE(todo->IsCompleted());
    EXPECT_EQ(nullptr, Imported(ByNumber(2)));
    EXPECT_EQ(1u, doc->m_todoList.size());

    plan.tasks[0].date = due2;
    ASSERT_EQ(S_OK, Import());
    EXPECT_EQ(todo, Imported(ByNumber(1))) << "re-dated, not replaced";
    EXPECT_EQ(Day(2024, 6, 25), todo->m_dueDate);

    // Completed, then dropped from the resource's work: the completed to-do goes from its day.
    doc->CompleteToDo(todo, Day(2024, 6, 12));
    ASSERT_NE(nullptr, doc->GetDay(Day(2024, 6, 12)));
    plan.tasks[0].todo = 0;
    ASSERT_EQ(S_OK, Import());
    EXPECT_EQ(nullptr, Imported(ByNumber(1)));
    EXPECT_EQ(nullptr, doc->GetDay(Day(2024, 6, 12))) << "the emptied day is dropped";
    EXPECT_TRUE(doc->m_todoList.empty());
}

TEST_F(ImportTest, ATaskThatBecomesASummaryLosesItsToDoAndWarnsOfItsEntries)
{
    plan.tasks = {{1, 0, "Phase", 0, 0, 0, 1}};
    ASSERT_EQ(S_OK, Import());
    CTask* phase = ByNumber(1);
    ASSERT_NE(nullptr, Imported(phase));
    AddTime(*doc, phase, Day(2024, 6, 10), 9, 0, 11, 0);

    plan.tasks.push_back({2, 1, "Step", 0, 0, 0, 1});
    ASSERT_EQ(S_OK, Import());
    EXPECT_EQ(nullptr, Imported(phase));
    EXPECT_NE(nullptr, Imported(ByNumber(2)));
    ASSERT_EQ(1u, warnings.size());
    EXPECT_EQ("Phase is now a summary item and has entries.  These entries will not be updated in "
              "the project.",
              warnings[0]);
}

TEST_F(ImportTest, CancelAndFailureWhileReadingMergeNothing)
{
    plan.tasks = {{1, 0, "A", 0, 0, 0, 0}, {2, 0, "B", 0, 0, 0, 0}, {3, 0, "C", 0, 0, 0, 0}};
    const size_t taskCount = doc->m_tasks.size();

    // Cancel pressed, then "No": the import goes on.
    ui.cancelAfterSteps = 2;
    ui.prompter.Script(platform::Answer::no);
    ASSERT_EQ(S_OK, Import());
    EXPECT_EQ(std::vector<std::string>{"Are you sure you want to Cancel?"}, ui.prompter.Questions());
    EXPECT_EQ(taskCount + 3, doc->m_tasks.size());

    plan.tasks.push_back({4, 0, "D", 0, 0, 0, 0});
    ui.cancelAfterSteps = 3;
    ui.prompter.Script(platform::Answer::yes);
    EXPECT_EQ(E_USERCANCELLED, Import());
    EXPECT_EQ(nullptr, ByNumber(4));

    plan.failTaskIndex = 4;
    EXPECT_EQ(E_FAIL, Import());
    EXPECT_EQ(nullptr, ByNumber(4));
}

TEST_F(ImportTest, WriteBackSendsOneValuePerDayOfThePeriod)
{
    plan.tasks = {{1, 0, "Work", 0, 0, 0, 1}, {2, 0, "Idle", 0, 0, 0, 0}, {3, 0, "Expenses", 0, 0, 0, 0}};
    ASSERT_EQ(S_OK, Import());
    CTask* work = ByNumber(1);
    work->m_billable = true;
    work->m_useParentBilling = false;
    work->m_regularRate = 100.0;
    AddTime(*doc, work, Day(2024, 6, 10), 9, 0, 10, 30);
    AddTime(*doc, work, Day(2024, 6, 10), 13, 0, 13, 45);
    CTimeEntry* over = AddTime(*doc, work, Day(2024, 6, 12), 18, 0, 20, 0);
    over->m_overtime = true;
    AddTime(*doc, work, Day(2024, 6, 5), 9, 0, 10, 0); // before the period
    AddExpense(*doc, ByNumber(3), Day(2024, 6, 11), 42.5);

    UpdateOptions o;
    o.updateWork = o.updateCost = o.includeBilling = o.includeExpenses = true;
    o.from = Day(2024, 6, 10);
    o.to = Day(2024, 6, 12);
    ASSERT_EQ(S_OK, UpdateProject(*doc, link, plan, o, ui));

    ASSERT_EQ(2u, plan.updates.size()) << "the idle task has neither a to-do nor entries";
    const auto& w = plan.updates[0];
    EXPECT_EQ(1, w.task);
    EXPECT_EQ(3, w.resource);
    EXPECT_EQ((std::vector<int32_t>{135, 0, 0}), w.regular);
    EXPECT_EQ((std::vector<int32_t>{0, 0, 120}), w.overtime);
    EXPECT_DOUBLE_EQ(225.0, w.billing[0]);
    EXPECT_DOUBLE_EQ(Day(2024, 6, 5).GetValue(), w.firstEntry) << "earliest entry, even outside the period";
    EXPECT_EQ(0.0, w.completion);
    const auto& e = plan.updates[1];
    EXPECT_EQ(3, e.task);
    EXPECT_EQ((std::vector<double>{0, 42.5, 0}), e.expenses);

    // A one-day period sends arrays of one element; a completed imported to-do gives its date.
    plan.updates.clear();
    CToDoEntry* todo = Imported(work);
    ASSERT_NE(nullptr, todo);
    doc->CompleteToDo(todo, Day(2024, 6, 12));
    o.from = o.to = Day(2024, 6, 12);
    o.includeBilling = false;
    ASSERT_EQ(S_OK, UpdateProject(*doc, link, plan, o, ui));
    ASSERT_EQ(2u, plan.updates.size());
    EXPECT_EQ(1u, plan.updates[0].regular.size());
    EXPECT_EQ(1u, plan.updates[0].billing.size());
    EXPECT_EQ(120, plan.updates[0].overtime[0]);
    EXPECT_EQ(0.0, plan.updates[0].billing[0]) << "billing not included";
    EXPECT_EQ(0, plan.updates[0].includeBilling);
    EXPECT_DOUBLE_EQ(Day(2024, 6, 12).GetValue(), plan.updates[0].completion);

    // The completion goes only with the work of a period that holds its day.
    const std::tuple<bool, int, int> noCompletion[] = {{false, 12, 12}, {true, 10, 11}, {true, 13, 14}};
    for (const auto& [work, from, to] : noCompletion)
    {
        plan.updates.clear();
        o.updateWork = work;
        o.from = Day(2024, 6, from);
        o.to = Day(2024, 6, to);
        ASSERT_EQ(S_OK, UpdateProject(*doc, link, plan, o, ui));
        EXPECT_EQ(0.0, plan.updates.at(0).completion) << work << " " << from;
    }
}

TEST(ProgressTextTest, PercentAndStatus)
{
    EXPECT_EQ("0%", ProgressPercentText(0, 0, 4));
    EXPECT_EQ("50%", ProgressPercentText(2, 0, 4));
    EXPECT_EQ("100%", ProgressPercentText(4, 0, 4));
    EXPECT_EQ("Updated 3 of 7 Tasks.", ProgressStatusText(ProjectString(41030), 3, 7));
    EXPECT_EQ("3 of 7 completed.", ProgressStatusText("", 3, 7));
}

} // namespace
