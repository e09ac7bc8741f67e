// The project XML component, loaded as the program loads it, on plans written here.

#include "../projectlink/fakes.h"
#include "../platform/scratchdir.h"
#include "planfiles.h"
#include "projectlink/projectoperations.h"
#include "projectlink/projectsession.h"
#include "testsupport.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <cmath>

using namespace projectlink;
using namespace qvtest;

namespace
{

const char* const kProgId = "Quorvane.MspdiPlan";

class MspdiTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        path = dir.File("plan.xml");
        WriteText(path, MspdiPlan());
        link.m_progId = kProgId;
        link.m_path = path;
    }
    std::unique_ptr<CProjectSession> OpenSession(bool writable)
    {
        auto s = std::make_unique<CProjectSession>(link, prompter, std::vector<std::string>{QV_COMPONENTS_DIR});
        EXPECT_EQ(S_OK, s->Open(writable)) << (prompter.Messages().empty() ? "" : prompter.Messages().back());
        return s;
    }

    ScratchDir dir;
    std::string path;
    CProject link;
    platform::ScriptedPrompter prompter;
};

TEST_F(MspdiTest, ReadsOutlineResourcesAndTheResourcesAssignments)
{
    auto s = OpenSession(false);
    IProjectComponent& c = s->Component();
    std::string name;
    int32_t identity = 0, count = 0;
    ASSERT_EQ(S_OK, c.GetProjectName(name));
    EXPECT_EQ("Website Relaunch", name);
    ASSERT_EQ(S_OK, c.GetFileIdentity(identity));
    EXPECT_GT(identity, 0);
    ASSERT_EQ(S_OK, c.GetResourceCount(count));
    ASSERT_EQ(2, count) << "resource 0 stands for 'unassigned'";
    int32_t rid = 0;
    ASSERT_EQ(S_OK, c.GetResource(2, name, rid));
    EXPECT_EQ("Lee \xE6\x9D\x8E", name);
    EXPECT_EQ(2, rid);
    EXPECT_TRUE(Failed(c.GetResource(3, name, rid)));
    EXPECT_FALSE(c.ErrorDescription().empty());

    ASSERT_EQ(S_OK, c.GetTaskCount(count));
    ASSERT_EQ(7, count);
    struct Got { HRESULT hr; int32_t id, parent, todo; std::string name; double work, cost, date; };
    auto task = [&](int index, int resource) {
        Got g{};
        std::string second;
        g.hr = c.GetTask(index, resource, g.id, g.parent, g.name, second, g.todo, g.work, g.cost, g.date);
        return g;
    };
    EXPECT_EQ(S_FALSE, task(1, 1).hr) << "the project summary task";
    EXPECT_EQ(S_FALSE, task(4, 1).hr) << "a blank row";
    Got mockups = task(3, 1);
    ASSERT_EQ(S_OK, mockups.hr);
    EXPECT_EQ(2, mockups.id);
    EXPECT_EQ(1, mockups.parent);
    EXPECT_EQ("Mockups \xCE\x9E\xCE\xA9", mockups.name);
    EXPECT_EQ(1, mockups.todo);
    EXPECT_DOUBLE_EQ(16.0, mockups.work);
    EXPECT_DOUBLE_EQ(1200.0, mockups.cost);
    EXPECT_DOUBLE_EQ(Day(2024, 6, 12).GetValue() + 17.0 / 24.0, mockups.date);
    Got api = task(7, 1);
    EXPECT_EQ(5, api.parent);
    EXPECT_EQ(0, api.todo) << "not assigned to this resource";
    EXPECT_DOUBLE_EQ(24.5, api.work) << "the task's own work when the resource has no assignment";
    EXPECT_EQ(0.0, api.date);
    EXPECT_EQ(1, task(7, 2).todo);
    EXPECT_EQ(0, task(2, 1).parent);
}

TEST_F(MspdiTest, ParentsFollowOutlineLevelsWithoutOutlineNumbers)
{
    std::string plan = MspdiPlan();
    for (size_t at; (at = plan.find("<OutlineNumber>")) != std::string::npos;)
        plan.erase(at, plan.find("</OutlineNumber>", at) + 16 - at);
    WriteText(path, plan);
    auto s = OpenSession(false);
    int32_t id, parent, todo;
    std::string name, second;
    double w, c, d;
    ASSERT_EQ(S_OK, s->Component().GetTask(7, 1, id, parent, name, second, todo, w, c, d));
    EXPECT_EQ(5, parent);
    ASSERT_EQ(S_OK, s->Component().GetTask(5, 1, id, parent, name, second, todo, w, c, d));
    EXPECT_EQ(0, parent);
}

// A document to link plans into.
class MspdiLinkTestBase : public MspdiTest
{
protected:
    void SetUp() override
    {
        MspdiTest::SetUp();
        doc = NewDoc("Pat", At(2024, 6, 12, 17, 0));
        client = AddTask(*doc, doc->GetRootTask(), "Client");
        ui.chosenPath = path;
        ui.chosenProgId = kProgId;
        ui.parentTaskId = client->m_id;
    }
    std::unique_ptr<CTimeKeeperDoc> doc;
    CTask* client = nullptr;
    ScriptedLinkUi ui;
};

TEST_F(MspdiLinkTestBase, ChildrenListedBeforeTheirParentsInTheFile)
{
    // API (2.1.1) and Backend (2.1) come before Build (2) in the file.
    std::string plan = MspdiPlan();
    const size_t build = plan.find("    <Task><UID>4</UID>");
    const size_t end = plan.find("  </Tasks>");
    const std::string tail = plan.substr(build, end - build);
    std::vector<std::string> rows;
    for (size_t at = 0; at < tail.size();)
    {
        const size_t next = tail.find('\n', at) + 1;
        rows.push_back(tail.substr(at, next - at));
        at = next;
    }
    plan.replace(build, end - build, rows[2] + rows[1] + rows[0]);
    WriteText(path, plan);
    LinkOutcome made = LinkNewProject(*doc, ui, {QV_COMPONENTS_DIR});
    ASSERT_EQ(LinkOutcome::done, made.status);
    CTask* api = nullptr;
    for (const auto& [id, t] : doc->m_tasks)
        if (t->m_name == "API")
            api = t.get();
    ASSERT_NE(nullptr, api);
    EXPECT_EQ("Backend", api->m_parent->m_name);
    EXPECT_EQ("Build", api->m_parent->m_parent->m_name);
    EXPECT_EQ(client, api->m_parent->m_parent->m_parent);
    EXPECT_EQ(client->m_level + 3, api->m_level);
}

TEST_F(MspdiTest, BrokenFilesAreRefusedWithWhereTheyBreak)
{
    WriteText(path, "<Project>\n  <Tasks>\n</Project>\n");
    CProjectSession s(link, prompter, {QV_COMPONENTS_DIR});
    EXPECT_TRUE(Failed(s.Open(false)));
    ASSERT_FALSE(prompter.Messages().empty());
    EXPECT_NE(std::string::npos, prompter.Messages().back().find("line 3")) << prompter.Messages().back();

    WriteText(path, "<Plan/>");
    CProjectSession s2(link, prompter, {QV_COMPONENTS_DIR});
    EXPECT_TRUE(Failed(s2.Open(false)));
    EXPECT_NE(std::string::npos, prompter.Messages().back().find("<Project>"));
}

TEST_F(MspdiTest, WriteBackKeepsTheRestOfThePlanAndReplacesThePeriod)
{
    pugi::xml_document before;
    ASSERT_TRUE(before.load_string(MspdiPlan().c_str()));
    const double june10 = Day(2024, 6, 10).GetValue();
    {
        auto s = OpenSession(true);
        const int32_t regular[] = {90, 0, 45};
        const int32_t overtime[] = {0, 0, 30};
        const double billing[] = {150, 0, 75};
        const double expenses[] = {0, 20, 0};
        // An existing assignment, and a missing one (API for Pat) that is created.
        ASSERT_EQ(S_OK, s->Component().UpdateTask(2, 1, june10, june10 + 2, june10, 0, 0, 0, 0, 0, 3,
                                                  1, regular, 1, overtime, 1, billing, 1, expenses));
        ASSERT_EQ(S_OK, s->Component().UpdateTask(6, 1, june10, june10 + 2, june10 + 1, june10 + 2, 1,
                                                  30, 1, 900, 3, 1, regular, 1, overtime, 0, billing,
                                                  0, expenses));
        EXPECT_TRUE(Failed(s->Component().UpdateTask(99, 1, june10, june10, 0, 0, 0, 0, 0, 0, 1, 1,
                                                     regular, 1, overtime, 0, billing, 0, expenses)));
        s->Close(true);
    }
    pugi::xml_document after;
    ASSERT_TRUE(after.load_file(path.c_str(), pugi::parse_default | pugi::parse_comments));
    const pugi::xml_node project = after.child("Project");
    EXPECT_EQ(Xml(before.child("Project").child("Tasks")), Xml(project.child("Tasks")));
    EXPECT_EQ(Xml(before.child("Project").child("Resources")), Xml(project.child("Resources")));
    EXPECT_EQ(pugi::node_comment, project.first_child().type()) << "comments are kept";
    EXPECT_EQ(Xml(Assignment(before, 6, 2)), Xml(Assignment(after, 6, 2)));

    pugi::xml_node mock = Assignment(after, 2, 1);
    EXPECT_EQ("PT2H45M0S", std::string(mock.child_value("ActualWork"))) << "90 + 45 + 30 minutes";
    EXPECT_EQ("PT0H30M0S", std::string(mock.child_value("ActualOvertimeWork")));
    EXPECT_EQ("24500", std::string(mock.child_value("ActualCost"))) << "in hundredths";
    EXPECT_EQ("2024-06-10T08:00:00", std::string(mock.child_value("ActualStart")));
    EXPECT_EQ("PT16H0M0S", std::string(mock.child_value("Work"))) << "estimates not asked for";
    std::vector<std::string> work;
    for (pugi::xml_node td : mock.children("TimephasedData"))
        if (td.child("Type").text().as_int() == 2)
            work.push_back(std::string(td.child_value("Start")) + "=" + td.child_value("Value"));
    EXPECT_EQ((std::vector<std::string>{"2024-06-10T00:00:00=PT1H30M0S", "2024-06-12T00:00:00=PT1H15M0S"}), work);
    // The schema's order: ActualCost before ActualStart before ActualWork before Finish.
    std::vector<std::string> order;
    for (pugi::xml_node n : mock.children())
        order.push_back(n.name());
    auto pos = [&](const char* n) { return std::find(order.begin(), order.end(), n) - order.begin(); };
    EXPECT_LT(pos("UID"), pos("ActualCost"));
    EXPECT_LT(pos("ActualCost"), pos("ActualStart"));
    EXPECT_LT(pos("ActualWork"), pos("Finish"));
    EXPECT_LT(pos("Work"), pos("TimephasedData"));

    pugi::xml_node api = Assignment(after, 6, 1);
    ASSERT_TRUE(api) << "created for the resource";
    EXPECT_EQ(3, api.child("UID").text().as_int());
    EXPECT_EQ("PT30H0M0S", std::string(api.child_value("Work")));
    EXPECT_EQ("90000", std::string(api.child_value("Cost")));
    EXPECT_EQ("2024-06-12T17:00:00", std::string(api.child_value("ActualFinish")));
    EXPECT_EQ(100, api.child("PercentWorkComplete").text().as_int());
    EXPECT_FALSE(api.child("ActualCost")) << "cost not asked for";

    // The same period again replaces what was written; a day outside it is kept.
    {
        auto s = OpenSession(true);
        const int32_t regular[] = {60};
        const int32_t none[] = {0};
        const double zero[] = {0};
        ASSERT_EQ(S_OK, s->Component().UpdateTask(2, 1, june10 + 2, june10 + 2, june10, 0, 0, 0, 0, 0, 1,
                                                  1, regular, 1, none, 0, zero, 0, zero));
        s->Close(true);
    }
    ASSERT_TRUE(after.load_file(path.c_str()));
    EXPECT_EQ("PT2H30M0S", std::string(Assignment(after, 2, 1).child_value("ActualWork")));
}

TEST_F(MspdiTest, AReadOnlySessionWritesNothing)
{
    const std::string original = ReadText(path);
    auto s = OpenSession(false);
    const int32_t regular[] = {60};
    const double zero[] = {0};
    const double day = Day(2024, 6, 10).GetValue();
    EXPECT_TRUE(Failed(s->Component().UpdateTask(2, 1, day, day, 0, 0, 0, 0, 0, 0, 1, 1, regular, 1,
                                                 regular, 0, zero, 0, zero)));
    s->Close(true);
    EXPECT_EQ(original, ReadText(path));
}

// The whole link and update, through the component, for Pat Example.
class MspdiLinkTest : public MspdiLinkTestBase
{
protected:
    void SetUp() override
    {
        MspdiLinkTestBase::SetUp();
        ui.resourceIndex = 0;
    }
    CTask* ByName(const std::string& name) const
    {
        for (const auto& [id, t] : doc->m_tasks)
            if (t->m_name == name)
                return t.get();
        return nullptr;
    }
    std::vector<std::string> Dirs() const { return {QV_COMPONENTS_DIR}; }
};

TEST_F(MspdiLinkTest, CancelledLinksLeaveNothingBehind)
{
    const std::string before = Dump(*doc);
    ui.resourceOk = false;
    EXPECT_EQ(LinkOutcome::cancelled, LinkNewProject(*doc, ui, Dirs()).status);
    ui.resourceOk = true;
    ui.parentOk = false;
    EXPECT_EQ(LinkOutcome::cancelled, LinkNewProject(*doc, ui, Dirs()).status);
    ui.parentOk = true;
    ui.cancelAfterSteps = 3;
    ui.prompter.Script(platform::Answer::yes);
    EXPECT_EQ(LinkOutcome::cancelled, LinkNewProject(*doc, ui, Dirs()).status);
    EXPECT_TRUE(doc->m_projects.empty());
    EXPECT_EQ(before, Dump(*doc));
    EXPECT_NE(std::string::npos, ui.offeredCombinedFilter.find("Project XML (*.xml)|*.xml|"));
}

TEST_F(MspdiLinkTest, LinkThenUpdateWritesTheEntriesAndFollowsPlanChanges)
{
    LinkOutcome made = LinkNewProject(*doc, ui, Dirs());
    ASSERT_EQ(LinkOutcome::done, made.status);
    CProject* link = made.project;
    ASSERT_NE(nullptr, link);
    EXPECT_EQ("Website Relaunch", link->m_name);
    EXPECT_EQ("Pat Example", link->m_resourceName);
    EXPECT_EQ(1u, link->m_resourceId);
    EXPECT_EQ((std::vector<std::string>{"Pat Example", "Lee \xE6\x9D\x8E"}), ui.offeredResources);
    CTask* mockups = ByName("Mockups \xCE\x9E\xCE\xA9");
    ASSERT_NE(nullptr, mockups);
    EXPECT_EQ(link->m_id, mockups->m_projectId);
    EXPECT_EQ("Design", mockups->m_parent->m_name);
    EXPECT_EQ(client, mockups->m_parent->m_parent);
    EXPECT_EQ(1u, mockups->m_todoEntries.size());

    AddTime(*doc, mockups, Day(2024, 6, 11), 9, 0, 12, 0);
    AddTime(*doc, mockups, Day(2024, 6, 12), 13, 0, 14, 30);
    ui.editOptions = [](UpdateOptions& o) { o.from = Day(2024, 6, 10); };
    LinkOutcome updated = UpdateLink(*doc, *link, ui, Dirs());
    ASSERT_EQ(LinkOutcome::done, updated.status);
    EXPECT_TRUE(ui.shownOptions.canUpdateWork && ui.shownOptions.updateWork);
    EXPECT_EQ(Day(2024, 6, 12), ui.shownOptions.to);
    EXPECT_EQ(Day(2024, 6, 12), link->m_lastUpdated);

    pugi::xml_document plan;
    ASSERT_TRUE(plan.load_file(path.c_str()));
    pugi::xml_node a = Assignment(plan, 2, 1);
    EXPECT_EQ("PT4H30M0S", std::string(a.child_value("ActualWork")));

    // The plan changes: Mockups renamed, API moved under Design, Backend gone with it.
    WriteText(path, WithoutTask(MspdiPlan("Wireframes", true, "1.2"), 5));
    ui.editOptions = nullptr;
    updated = UpdateLink(*doc, *link, ui, Dirs());
    ASSERT_EQ(LinkOutcome::done, updated.status);
    EXPECT_EQ("Wireframes", mockups->m_name);
    EXPECT_EQ("Design", ByName("API")->m_parent->m_name);
    CTask* backend = ByName("Backend");
    EXPECT_EQ(client, backend->m_parent);
    EXPECT_FALSE(backend->IsImported());
    EXPECT_EQ((std::vector<std::string>{"Backend has been deleted from project.  Item moved to project parent."}),
              ui.shownWarnings);
}

TEST_F(MspdiLinkTest, UpdateAsksAboutMissingAndDifferentFiles)
{
    LinkOutcome made = LinkNewProject(*doc, ui, Dirs());
    ASSERT_EQ(LinkOutcome::done, made.status);
    CProject& link = *made.project;

    std::rename(path.c_str(), (path + ".moved").c_str());
    ui.prompter.Script(platform::Answer::no);
    EXPECT_EQ(LinkOutcome::cancelled, UpdateLink(*doc, link, ui, Dirs()).status);
    EXPECT_EQ("The Project was not found in the previous location.  Would you like to look for the file?",
              ui.prompter.Questions().back());

    // Found elsewhere, but a different plan.
    std::string other = MspdiPlan();
    other.replace(other.find("2024-05-01T09:00:00"), 19, "2023-01-01T09:00:00");
    WriteText(dir.File("other.xml"), other);
    ui.chosenPath = dir.File("other.xml");
    ui.prompter.Script(platform::Answer::yes);
    ui.prompter.Script(platform::Answer::no);
    EXPECT_EQ(LinkOutcome::cancelled, UpdateLink(*doc, link, ui, Dirs()).status);
    EXPECT_EQ("This file appears to be a different one that was originally imported.  Continue?",
              ui.prompter.Questions().back());
    EXPECT_EQ(dir.File("other.xml"), link.m_path);
    EXPECT_FALSE(link.m_lastUpdated.IsValid());
}

TEST_F(MspdiLinkTest, WithoutAResourceThePlanIsOnlyRead)
{
    ui.resourceIndex = -1;
    LinkOutcome made = LinkNewProject(*doc, ui, Dirs());
    ASSERT_EQ(LinkOutcome::done, made.status);
    EXPECT_EQ(uint32_t(-1), made.project->m_resourceId);
    const std::string original = ReadText(path);
    WriteText(path, MspdiPlan("Renamed"));
    const std::string renamed = ReadText(path);

    ASSERT_EQ(LinkOutcome::done, UpdateLink(*doc, *made.project, ui, Dirs()).status);
    EXPECT_FALSE(ui.shownOptions.canUpdateWork || ui.shownOptions.canUpdateCost ||
                 ui.shownOptions.canUpdateWorkEstimates || ui.shownOptions.canUpdateCostEstimates);
    EXPECT_FALSE(ui.shownOptions.AnyUpdate());
    EXPECT_NE(nullptr, ByName("Renamed")) << "tasks are still refreshed";
    EXPECT_EQ(renamed, ReadText(path));
    EXPECT_FALSE(made.project->m_lastUpdated.IsValid());
}

} // namespace
