// qvx project end to end: link a project XML plan, record work, write it back, follow
// the plan's changes.

#include "../cli/qvxrunner.h"
#include "../plugins/planfiles.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

namespace
{

using qvtest::MspdiPlan;

std::string Xml(const pugi::xml_node& node)
{
    std::ostringstream s;
    node.print(s, "", pugi::format_raw);
    return s.str();
}

class QvxProjectTest : public qvtest::QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        // Only the components of this build, whatever the machine has installed.
        setenv("QUORVANE_COMPONENT_PATH", QV_COMPONENTS_DIR, 1);
        plan = Path("plan.xml");
        doc = Path("work.qvx");
        WritePlan(MspdiPlan());
        Ok({"new", doc, "--employee", "Pat Example"});
        Ok({"task", "add", doc, "Pat Example", "Client"});
    }
    void WritePlan(const std::string& text)
    {
        std::ofstream(plan, std::ios::binary) << text;
    }
    pugi::xml_node Assignment(pugi::xml_document& d, int task, int resource)
    {
        for (pugi::xml_node a : d.child("Project").child("Assignments").children("Assignment"))
            if (a.child("TaskUID").text().as_int() == task && a.child("ResourceUID").text().as_int() == resource)
                return a;
        return pugi::xml_node();
    }

    std::string plan;
    std::string doc;
};

TEST_F(QvxProjectTest, LinkRecordUpdateAndFollowThePlan)
{
    EXPECT_NE(std::string::npos, Ok({"project", "components"}).find("Quorvane.MspdiPlan"));
    const std::string linked = Ok({"project", "link", doc, plan, "--parent", "Client", "--resource", "pat example"});
    EXPECT_NE(std::string::npos, linked.find("Linked project #1 'Website Relaunch': 5 tasks under Client"))
        << linked;
    // By id: the name is outside Windows-1252, which the file format may not keep.
    const std::string tasks = Ok({"tasks", doc});
    ASSERT_NE(std::string::npos, tasks.find("Mockups")) << tasks;
    ASSERT_NE(std::string::npos, tasks.find("API  (Task, #7)")) << tasks;
    const std::string mockups = "#4";
    Ok({"time", "add", doc, mockups, "--date", "2024-06-10", "--start", "09:00", "--end", "12:30"});
    Ok({"time", "add", doc, mockups, "--date", "2024-06-11", "--start", "13:00", "--end", "13:45"});
    Ok({"time", "add", doc, mockups, "--date", "2024-06-11", "--start", "15:00", "--end", "16:00"});
    Ok({"expense", "add", doc, mockups, "--date", "2024-06-11", "--amount", "18.40", "--type", "Lunch"});
    // Work on a task the resource was not assigned to creates its assignment.
    Ok({"time", "add", doc, "#7", "--date", "2024-06-11", "--start", "08:00", "--end", "08:30"});

    pugi::xml_document before;
    ASSERT_TRUE(before.load_file(plan.c_str()));
    const std::string updated = Ok({"project", "update", doc, "Website Relaunch", "--from", "2024-06-10",
                                    "--to", "2024-06-11", "--update-work-estimates", "no",
                                    "--update-cost-estimates", "no"},
                                   "2024-06-11 18:00");
    EXPECT_NE(std::string::npos, updated.find("last updated 06/11/2024")) << updated;

    pugi::xml_document after;
    ASSERT_TRUE(after.load_file(plan.c_str()));
    EXPECT_EQ(Xml(before.child("Project").child("Tasks")), Xml(after.child("Project").child("Tasks")));
    EXPECT_EQ(Xml(before.child("Project").child("Resources")), Xml(after.child("Project").child("Resources")));
    EXPECT_EQ(Xml(Assignment(before, 6, 2)), Xml(Assignment(after, 6, 2)));
    pugi::xml_node a = Assignment(after, 2, 1);
    std::vector<std::string> perDay;
    for (pugi::xml_node td : a.children("TimephasedData"))
        if (td.child("Type").text().as_int() == 2)
            perDay.push_back(std::string(td.child_value("Start")).substr(0, 10) + " " + td.child_value("Value"));
    EXPECT_EQ((std::vector<std::string>{"2024-06-10 PT3H30M0S", "2024-06-11 PT1H45M0S"}), perDay);
    EXPECT_EQ("PT5H15M0S", std::string(a.child_value("ActualWork")));
    EXPECT_EQ("PT16H0M0S", std::string(a.child_value("Work"))) << "estimates not written";
    EXPECT_EQ("1840", std::string(a.child_value("ActualCost"))) << "the expense, in hundredths";
    pugi::xml_node api = Assignment(after, 6, 1);
    ASSERT_TRUE(api);
    EXPECT_EQ("PT0H30M0S", std::string(api.child_value("ActualWork")));

    // The plan changes: Mockups renamed, API moved under Design, Backend removed.
    std::string changed = MspdiPlan("Wireframes", true, "1.2");
    const size_t from = changed.find("<Task><UID>5</UID>");
    changed.erase(from, changed.find("</Task>", from) + 7 - from);
    {
        pugi::xml_document d;
        ASSERT_TRUE(d.load_file(plan.c_str()));
        // Keep what the first update wrote: take the assignments from the file.
        pugi::xml_document fresh;
        ASSERT_TRUE(fresh.load_string(changed.c_str()));
        fresh.child("Project").remove_child("Assignments");
        fresh.child("Project").append_copy(d.child("Project").child("Assignments"));
        fresh.save_file(plan.c_str());
    }
    const std::string second = Ok({"project", "update", doc, "#1", "--from", "2024-06-12"}, "2024-06-12 18:00");
    EXPECT_NE(std::string::npos,
              second.find("Backend has been deleted from project.  Item moved to project parent.\n"))
        << second;
    const std::string tree = Ok({"tasks", doc});
    EXPECT_NE(std::string::npos, tree.find("Wireframes")) << tree;
    EXPECT_EQ(std::string::npos, tree.find("Mockups"));
    Ok({"time", "add", doc, "Client/Backend", "--date", "2024-06-12", "--start", "09:00", "--end", "10:00"});
    Ok({"time", "add", doc, "Client/Design/API", "--date", "2024-06-12", "--start", "10:00", "--end", "11:00"});

    const std::string list = Ok({"project", "list", doc});
    EXPECT_NE(std::string::npos, list.find("last updated: 06/12/2024")) << list;
    EXPECT_NE(std::string::npos, list.find("resource: Pat Example (1)")) << list;
}

TEST_F(QvxProjectTest, RefusalsNameWhatIsWrong)
{
    qvtest::QvxResult r = Run({"project", "link", doc, plan, "--parent", "Client", "--resource", "Nobody"});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_NE(std::string::npos, r.err.find("\"Pat Example\" (1)")) << r.err;
    r = Run({"project", "link", doc, plan, "--parent", "Client"});
    EXPECT_EQ(1, r.exitCode) << "two resources: one must be named";
    EXPECT_NE(std::string::npos, r.err.find("--resource")) << r.err;
    std::ofstream(Path("notes.txt")) << "x";
    r = Run({"project", "link", doc, Path("notes.txt"), "--parent", "Client"});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_NE(std::string::npos, r.err.find("no component reads files like")) << r.err;
    EXPECT_EQ("No projects.\n", Ok({"project", "list", doc}));

    Ok({"project", "link", doc, plan, "--parent", "Client", "--resource", "none"});
    r = Run({"project", "update", doc, "#1", "--update-work", "yes"});
    EXPECT_EQ(1, r.exitCode) << "no resource: the plan is only read";
    EXPECT_NE(std::string::npos, r.err.find("cannot take it")) << r.err;
    EXPECT_EQ(0, Run({"project", "update", doc, "#1"}).exitCode);

    r = Run({"project", "rm", doc, "#1", "--no"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_NE(std::string::npos, Ok({"project", "list", doc}).find("#1 Website Relaunch"));
    EXPECT_NE(std::string::npos, Ok({"project", "rm", doc, "Website Relaunch", "--yes"}).find("Deleted project #1"));
    EXPECT_EQ("No projects.\n", Ok({"project", "list", doc}));
}

// Work recorded before the first update, and the imported to-do completed: the first update
// writes every day of it, and the completion with it.
TEST_F(QvxProjectTest, FirstUpdateWritesTheWorkDoneBeforeIt)
{
    Ok({"project", "link", doc, plan, "--parent", "Client", "--resource", "Pat Example"}, "2024-06-03 08:00");
    const std::vector<std::array<std::string, 3>> work = {
        {"2024-06-04", "09:00", "11:15"}, {"2024-06-06", "13:00", "13:50"},
        {"2024-06-06", "14:10", "14:40"}, {"2024-06-10", "08:00", "08:45"}};
    const auto minutes = [](const std::string& t) { return std::stoi(t.substr(0, 2)) * 60 + std::stoi(t.substr(3)); };
    const auto duration = [](int m) { return "PT" + std::to_string(m / 60) + "H" + std::to_string(m % 60) + "M0S"; };
    std::map<std::string, int> perDay;
    for (const auto& [date, start, end] : work)
    {
        Ok({"time", "add", doc, "#4", "--date", date, "--start", start, "--end", end});
        perDay[date] += minutes(end) - minutes(start);
    }
    Ok({"todo", "complete", doc, "1", "--date", "2024-06-10"}, "2024-06-10 17:00");
    const std::string out = Ok({"project", "update", doc, "#1"}, "2024-06-11 18:00");
    EXPECT_NE(std::string::npos, out.find("actual work of 06/04/2024 to 06/11/2024")) << out;
    pugi::xml_document after;
    ASSERT_TRUE(after.load_file(plan.c_str()));
    pugi::xml_node a = Assignment(after, 2, 1);
    std::map<std::string, std::string> written, expected;
    for (pugi::xml_node td : a.children("TimephasedData"))
        if (td.child("Type").text().as_int() == 2)
            written[std::string(td.child_value("Start")).substr(0, 10)] = td.child_value("Value");
    for (const auto& [date, m] : perDay)
        expected[date] = duration(m);
    EXPECT_EQ(expected, written);
    EXPECT_EQ("2024-06-10T17:00:00", std::string(a.child_value("ActualFinish")));
}

// A plan that gives no project name is linked under its file's name.
TEST_F(QvxProjectTest, APlanWithoutANameIsNamedAfterItsFile)
{
    const std::string gan = Path("House Build.gan");
    std::ofstream(gan) << "<project name=\"\"><tasks><task id=\"0\" name=\"Walls\"/></tasks></project>\n";
    const std::string out = Ok({"project", "link", doc, gan, "--parent", "Client", "--resource", "none"});
    EXPECT_NE(std::string::npos, out.find("Linked project #1 'House Build'")) << out;
}

} // namespace
