// qvx project end to end: link a project XML plan, record work, write it back, follow
// the plan's changes.

#include "../platform/scratchdir.h"
#include "../plugins/planfiles.h"
#include "qvxrunner.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

namespace
{

using ::testing::HasSubstr;
using qvtest::Assignment;
using qvtest::MspdiPlan;

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
        WriteText(plan, MspdiPlan());
        Ok({"new", doc, "--employee", "Pat Example"});
        Ok({"task", "add", doc, "Pat Example", "Client"});
    }

    std::string plan;
    std::string doc;
};

// What the plan does with the figures is the component's own test; here qvx hands over the
// options given and says what it did.
TEST_F(QvxProjectTest, LinkRecordUpdateAndFollowThePlan)
{
    EXPECT_THAT(Ok({"project", "components"}), HasSubstr("Quorvane.MspdiPlan"));
    EXPECT_THAT(Ok({"project", "link", doc, plan, "--parent", "Client", "--resource", "pat example"}),
                HasSubstr("Linked project #1 'Website Relaunch': 5 tasks under Client"));
    // By id: the name is outside Windows-1252, which the file format may not keep.
    const std::string tasks = Ok({"tasks", doc});
    EXPECT_THAT(tasks, HasSubstr("Mockups"));
    EXPECT_THAT(tasks, HasSubstr("API  (Task, #7)"));
    Ok({"time", "add", doc, "#4", "--date", "2024-06-10", "--start", "09:00", "--end", "12:30"});
    Ok({"time", "add", doc, "#4", "--date", "2024-06-11", "--start", "13:00", "--end", "14:45"});
    Ok({"expense", "add", doc, "#4", "--date", "2024-06-11", "--amount", "18.40", "--type", "Lunch"});

    EXPECT_THAT(Ok({"project", "update", doc, "Website Relaunch", "--from", "2024-06-10", "--to",
                    "2024-06-11", "--update-work-estimates", "no", "--update-cost-estimates", "no"},
                   "2024-06-11 18:00"),
                HasSubstr("last updated 06/11/2024"));
    pugi::xml_document after;
    ASSERT_TRUE(after.load_file(plan.c_str()));
    pugi::xml_node a = Assignment(after, 2, 1);
    EXPECT_EQ("PT5H15M0S", std::string(a.child_value("ActualWork")));
    EXPECT_EQ("PT16H0M0S", std::string(a.child_value("Work"))) << "estimates not written";
    EXPECT_EQ("1840", std::string(a.child_value("ActualCost"))) << "the expense, in hundredths";

    // The plan changes: Mockups renamed, Backend removed.
    WriteText(plan, qvtest::WithoutTask(MspdiPlan("Wireframes", true, "1.2"), 5));
    EXPECT_THAT(Ok({"project", "update", doc, "#1", "--from", "2024-06-12"}, "2024-06-12 18:00"),
                HasSubstr("Backend has been deleted from project.  Item moved to project parent.\n"));
    EXPECT_THAT(Ok({"tasks", doc}), HasSubstr("Wireframes"));
    const std::string list = Ok({"project", "list", doc});
    EXPECT_THAT(list, HasSubstr("last updated: 06/12/2024"));
    EXPECT_THAT(list, HasSubstr("resource: Pat Example (1)"));
}

TEST_F(QvxProjectTest, RefusalsNameWhatIsWrong)
{
    qvtest::QvxResult r =
        Run({"project", "link", doc, plan, "--parent", "Client", "--resource", "Nobody"});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_THAT(r.err, HasSubstr("\"Pat Example\" (1)"));
    r = Run({"project", "link", doc, plan, "--parent", "Client"});
    EXPECT_EQ(1, r.exitCode) << "two resources: one must be named";
    EXPECT_THAT(r.err, HasSubstr("--resource"));
    WriteText(Path("notes.txt"), "x");
    r = Run({"project", "link", doc, Path("notes.txt"), "--parent", "Client"});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_THAT(r.err, HasSubstr("no component reads files like"));
    EXPECT_EQ("No projects.\n", Ok({"project", "list", doc}));

    Ok({"project", "link", doc, plan, "--parent", "Client", "--resource", "none"});
    r = Run({"project", "update", doc, "#1", "--update-work", "yes"});
    EXPECT_EQ(1, r.exitCode) << "no resource: the plan is only read";
    EXPECT_THAT(r.err, HasSubstr("cannot take it"));
    EXPECT_EQ(0, Run({"project", "update", doc, "#1"}).exitCode);

    r = Run({"project", "rm", doc, "#1", "--no"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_THAT(Ok({"project", "list", doc}), HasSubstr("#1 Website Relaunch"));
    EXPECT_THAT(Ok({"project", "rm", doc, "Website Relaunch", "--yes"}),
                HasSubstr("Deleted project #1"));
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
