#include "interchange/importapply.h"
#include "interchange/importplanner.h"
#include "interchange/wallclock.h"
#include "timekeeping/timerfixture.h"

#include <gtest/gtest.h>

using namespace interchange;

namespace
{
ImportedTime Stretch(std::vector<std::string> path, LocalSeconds start, std::optional<LocalSeconds> end,
                     std::string note = "", std::string where = "record")
{
    ImportedTime t;
    t.taskPath = std::move(path);
    t.start = start;
    t.end = end;
    t.note = std::move(note);
    t.where = std::move(where);
    return t;
}

LocalSeconds Local(int day, int hour, int minute, int second = 0)
{
    return LocalFromCivil(2024, 3, day, hour, minute, second);
}

// Test day 2024-03-11, clock at 09:00 (TimerTest).
class ImportTest : public TimerTest
{
protected:
    CImportPlan Plan(const ImportSource& source, bool openStart = false)
    {
        ImportOptions options;
        options.openStart = openStart;
        options.now = app.Now();
        return PlanImport(doc, source, options);
    }
    std::vector<std::string> Skipped(const CImportPlan& plan)
    {
        std::vector<std::string> result;
        for (const auto& g : plan.Skipped())
            for (const std::string& where : g.wheres)
                result.push_back(where + ": " + g.reason);
        return result;
    }
};
} // namespace

TEST_F(ImportTest, StretchesBecomeEntriesPerDayOnceOnly)
{
    ImportSource source;
    source.times = {
        Stretch({"acme", "WEBSITE"}, Local(10, 22, 0, 29), Local(11, 1, 0, 31), "late", "r1"),
        Stretch({"Acme", "Web", "Design"}, Local(11, 9, 59, 45), Local(11, 11, 30), "", "r2"),
        Stretch({"Acme"}, Local(11, 8, 0), Local(11, 8, 0, 20), "", "r3"),
        Stretch({"Acme", "Web", "Design"}, Local(11, 9, 59, 45), Local(11, 11, 30), "", "r4"),
        Stretch({"Acme"}, Local(11, 2, 40), Local(11, 2, 10), "", "r5"), // the hour an autumn night repeats
    };
    source.todos = {{{"Globex", "Audit"}, "File it", "", "B", qvtest::Day(2024, 3, 20), CDateTime::Null(), "t1"},
                    {{"Globex"}, "Filed", "", "1", CDateTime::Null(), qvtest::Day(2024, 3, 8), "t2"}};
    const CImportPlan plan = Plan(source);
    ASSERT_EQ(plan.Tasks().size(), 2u);
    EXPECT_EQ(plan.Tasks()[0].path, "Acme/Web");
    EXPECT_EQ(plan.Tasks()[1].path, "Acme/Web/Design");
    EXPECT_EQ(plan.Tasks()[1].level, 3);
    ASSERT_EQ(plan.Times().size(), 3u);
    EXPECT_EQ(plan.TaskPath(plan.Times()[0].task, doc), "Acme/Website"); // matched without regard to case
    EXPECT_EQ(Skipped(plan), (std::vector<std::string>{"r3: shorter than a minute",
                                                        "r4: the same entry comes earlier in the source",
                                                        "r5: it ends before it starts on the local clock (a clock change)"}));

    std::pair<size_t, size_t> progress;
    const ImportOutcome outcome = ApplyImport(doc, timer, plan, OverlapChoice::adjustOthers,
                                              [&](size_t done, size_t total) { progress = {done, total}; });
    EXPECT_EQ(progress, std::make_pair(size_t(5), size_t(5)));
    EXPECT_EQ(outcome.entries, 3u);
    EXPECT_EQ(outcome.todos, 2u);
    EXPECT_EQ(Entries(-1), (std::vector<std::string>{"22:00-24:00"}));
    EXPECT_EQ(Entries(), (std::vector<std::string>{"00:00-01:01", "10:00-11:30"}));
    EXPECT_EQ(doc.GetDay(Date(-1))->TimeEntries()[0]->m_note, "late");
    EXPECT_EQ(doc.m_todoList.back()->m_priority, "B");
    EXPECT_EQ(doc.GetDay(qvtest::Day(2024, 3, 8))->ToDoEntries().size(), 1u);
    EXPECT_TRUE(doc.IsModified());

    const CImportPlan again = Plan(source);
    EXPECT_TRUE(again.IsEmpty());
    EXPECT_EQ(again.SkippedCount(), 7u); // r1 once for both its days
}

TEST_F(ImportTest, OverlapsAreFittedAsTheChoiceSays)
{
    const struct
    {
        OverlapChoice choice;
        std::vector<std::string> entries;
    } cases[] = {
        {OverlapChoice::adjustOthers, {"08:00-09:30", "09:30-11:00", "11:00-11:30"}},
        {OverlapChoice::adjustThis, {"08:00-10:00", "10:00-10:30", "10:30-11:30"}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(int(c.choice));
        for (const auto& [key, day] : doc.m_days)
            while (!day->TimeEntries().empty())
                doc.UnfileTimeEntry(day->TimeEntries().front().get());
        AddEntry(website, {8, 0}, {10, 0});
        AddEntry(support, {10, 30}, {11, 30});
        ImportSource source;
        source.times = {Stretch({"Globex", "Audit"}, Local(11, 9, 30), Local(11, 11, 0))};
        const CImportPlan plan = Plan(source);
        ASSERT_EQ(plan.OverlapCount(), 1u);
        EXPECT_EQ(plan.Times()[0].overlaps, "08:00-10:00 of Acme/Website");
        const ImportOutcome outcome = ApplyImport(doc, timer, plan, c.choice);
        EXPECT_EQ(outcome.adjusted, 1u);
        EXPECT_EQ(Entries(), c.entries);
    }
    // New entries that overlap each other are found in the plan too.
    ImportSource both;
    both.times = {Stretch({"Acme"}, Local(12, 9, 0), Local(12, 10, 0), "", "a"),
                  Stretch({"Globex"}, Local(12, 9, 30), Local(12, 9, 45), "", "b")};
    EXPECT_EQ(Plan(both).Times()[1].overlaps, "09:00-10:00 of Acme (a)");
}

TEST_F(ImportTest, AnOpenStretchBecomesTheRunningTimerOnlyWhenAsked)
{
    ImportSource source;
    source.times = {Stretch({"Acme"}, Local(11, 7, 0), std::nullopt, "", "old"),
                    Stretch({"Globex"}, Local(11, 8, 15, 10), std::nullopt, "", "new"),
                    Stretch({"Globex"}, Local(11, 9, 30), std::nullopt, "", "future")};
    EXPECT_EQ(Skipped(Plan(source)).front(), "old: " + std::string(kStillRunningReason));

    source.times.pop_back();
    const CImportPlan plan = Plan(source, true);
    EXPECT_EQ(Skipped(plan), (std::vector<std::string>{
                                 "old: still running in the source, and a later one is too"}));
    const ImportOutcome outcome = ApplyImport(doc, timer, plan, OverlapChoice::adjustOthers);
    EXPECT_TRUE(outcome.running);
    ASSERT_TRUE(timer.IsRunning());
    EXPECT_EQ(timer.GetActiveEntry()->m_taskId, globex->m_id);
    EXPECT_EQ(Entries(), (std::vector<std::string>{"08:15-run"}));

    source.times = {Stretch({"Globex"}, Local(11, 8, 30), std::nullopt, "", "later")};
    EXPECT_EQ(Skipped(Plan(source, true)), (std::vector<std::string>{"later: a timer is running in the document already"}));
    source.times = {Stretch({"Acme"}, Local(11, 9, 30), std::nullopt, "", "future")};
    doc.StopTimerState();
    EXPECT_EQ(Skipped(Plan(source, true)), (std::vector<std::string>{"future: starts after the current time"}));
}

TEST_F(ImportTest, TasksThatCannotBeMadeOrTakeNoEntriesAreSkipped)
{
    CTask* plan = qvtest::AddTask(doc, doc.GetRootTask(), "Plan");
    plan->m_projectId = 1;
    CTask* summary = qvtest::AddTask(doc, globex, "Phase");
    summary->m_projectTaskNumber = 3;
    qvtest::AddTask(doc, summary, "Step")->m_projectTaskNumber = 4;
    ImportSource source;
    source.times = {Stretch({"Plan", "New"}, Local(11, 1, 0), Local(11, 2, 0), "", "a"),
                    Stretch({"Globex", "Phase"}, Local(11, 2, 0), Local(11, 3, 0), "", "b"),
                    Stretch(std::vector<std::string>(20, "Deep"), Local(11, 3, 0), Local(11, 4, 0), "", "c"),
                    Stretch({"Plan", "", " "}, Local(11, 4, 0), Local(11, 5, 0), "", "d")};
    const CImportPlan result = Plan(source);
    EXPECT_EQ(Skipped(result),
              (std::vector<std::string>{"a: its task would go under a task linked to a project",
                                        "b: its task is a summary task of a project and takes no entries",
                                        "c: the task path is deeper than the 19 levels of a task tree"}));
    ASSERT_EQ(result.Times().size(), 1u); // empty names in a path are left out
    EXPECT_EQ(result.Times()[0].task.id, plan->m_id);
}

TEST_F(ImportTest, APlanThatNoLongerFitsTheDocumentChangesNothing)
{
    ImportSource source;
    source.times = {Stretch({"Acme", "Support", "New"}, Local(11, 1, 0), Local(11, 2, 0)),
                    Stretch({"Globex"}, Local(11, 3, 0), Local(11, 4, 0))};
    const CImportPlan plan = Plan(source);
    platform::ScriptedPrompter yes({platform::Answer::yes, platform::Answer::yes});
    ASSERT_TRUE(doc.DeleteTask(support, yes));
    doc.SetModifiedFlag(false);
    const std::string before = qvtest::Dump(doc);
    EXPECT_THROW(ApplyImport(doc, timer, plan, OverlapChoice::adjustOthers), std::runtime_error);
    EXPECT_EQ(qvtest::Dump(doc), before);
    EXPECT_FALSE(doc.IsModified());
}
