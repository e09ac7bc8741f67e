// The GanttProject component: read-only plans, loaded as the program loads them.

#include "../platform/scratchdir.h"
#include "../projectlink/fakes.h"
#include "projectlink/projectoperations.h"
#include "testsupport.h"

#include <gtest/gtest.h>


using namespace projectlink;
using namespace qvtest;

namespace
{

std::string GanPlan(bool withReview)
{
    std::string plan =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<project name=\"Audit 2024\" company=\"Globex\" webLink=\"http://\" version=\"3.2\">\n"
        "  <description/>\n"
        "  <tasks empty-milestones=\"true\">\n"
        "    <taskproperties><taskproperty id=\"tpd0\" name=\"type\" type=\"default\" valuetype=\"icon\"/></taskproperties>\n"
        "    <task id=\"0\" name=\"Fieldwork\" meeting=\"false\" start=\"2024-06-07\" duration=\"4\" complete=\"0\">\n"
        "      <task id=\"3\" name=\"Interviews \xC4\x8C\" meeting=\"false\" start=\"2024-06-07\" duration=\"2\" complete=\"0\"";
    plan += withReview ? ">\n        <task id=\"5\" name=\"Review\" start=\"2024-06-10\" duration=\"1\"/>\n      </task>\n"
                       : "/>\n";
    plan +=
        "      <task id=\"1\" name=\"Sampling\" meeting=\"false\" start=\"2024-06-10\" duration=\"3\" complete=\"0\" cost-manual-value=\"450\"/>\n"
        "    </task>\n"
        "    <task id=\"2\" name=\"Report\" meeting=\"false\" start=\"2024-06-14\" duration=\"1\" complete=\"0\"/>\n"
        "  </tasks>\n"
        "  <resources>\n"
        "    <resource id=\"0\" name=\"Pat Example\" function=\"Default:0\" contacts=\"\" phone=\"\"/>\n"
        "    <resource id=\"1\" name=\"Sam\" function=\"Default:0\" contacts=\"\" phone=\"\"/>\n"
        "  </resources>\n"
        "  <allocations>\n"
        "    <allocation task-id=\"3\" resource-id=\"0\" function=\"Default:0\" responsible=\"true\" load=\"50.0\"/>\n"
        "    <allocation task-id=\"1\" resource-id=\"1\" function=\"Default:0\" responsible=\"true\" load=\"100.0\"/>\n"
        "  </allocations>\n"
        "</project>\n";
    return plan;
}

class GanTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        path = dir.File("audit.gan");
        WriteText(path, GanPlan(false));
        doc = NewDoc("Pat", At(2024, 6, 12, 17, 0));
        client = AddTask(*doc, doc->GetRootTask(), "Globex");
        ui.chosenPath = path;
        ui.chosenProgId = "Quorvane.GanPlan";
        ui.parentTaskId = client->m_id;
        ui.resourceIndex = 0;
    }
    CTask* ByName(const std::string& name) const
    {
        for (const auto& [id, t] : doc->m_tasks)
            if (t->m_name == name)
                return t.get();
        return nullptr;
    }

    ScratchDir dir;
    std::string path;
    std::unique_ptr<CTimeKeeperDoc> doc;
    CTask* client = nullptr;
    ScriptedLinkUi ui;
};

TEST_F(GanTest, ImportsNestingDurationsAndTheResourcesAllocations)
{
    LinkOutcome made = LinkNewProject(*doc, ui, {QV_COMPONENTS_DIR});
    ASSERT_EQ(LinkOutcome::done, made.status) << (ui.prompter.Messages().empty() ? "" : ui.prompter.Messages().back());
    EXPECT_EQ("GanttProject (*.gan)|*.gan|Project XML (*.xml)|*.xml||", ui.offeredCombinedFilter)
        << "both components, in manifest file-name order";
    EXPECT_EQ("Audit 2024", made.project->m_name);
    EXPECT_EQ("Pat Example", made.project->m_resourceName);
    EXPECT_EQ(0u, made.project->m_resourceId);

    CTask* fieldwork = ByName("Fieldwork");
    CTask* interviews = ByName("Interviews \xC4\x8C");
    CTask* sampling = ByName("Sampling");
    ASSERT_TRUE(fieldwork && interviews && sampling && ByName("Report"));
    EXPECT_EQ(client, fieldwork->m_parent);
    EXPECT_EQ(fieldwork, interviews->m_parent);
    EXPECT_EQ(4u, interviews->m_projectTaskNumber) << "the format's id plus one";
    EXPECT_DOUBLE_EQ(8.0 * 60, interviews->m_hoursEstimate) << "2 days of 8 hours at 50%";
    EXPECT_DOUBLE_EQ(24.0 * 60, sampling->m_hoursEstimate);
    EXPECT_DOUBLE_EQ(450.0, sampling->m_costEstimate);
    ASSERT_EQ(1u, interviews->m_todoEntries.size());
    // Friday 2024-06-07 for two working days ends on Monday.
    EXPECT_EQ(Day(2024, 6, 10), interviews->m_todoEntries[0]->m_dueDate);
    EXPECT_TRUE(sampling->m_todoEntries.empty()) << "allocated to another resource";
}

TEST_F(GanTest, UpdatesOnlyReadThePlan)
{
    LinkOutcome made = LinkNewProject(*doc, ui, {QV_COMPONENTS_DIR});
    ASSERT_EQ(LinkOutcome::done, made.status);
    CTask* interviews = ByName("Interviews \xC4\x8C");
    AddTime(*doc, interviews, Day(2024, 6, 7), 9, 0, 10, 0);

    // Interviews gains a child: it becomes a summary, loses its to-do and warns of its entries.
    WriteText(path, GanPlan(true));
    const std::string before = ReadText(path);
    LinkOutcome updated = UpdateLink(*doc, *made.project, ui, {QV_COMPONENTS_DIR});
    ASSERT_EQ(LinkOutcome::done, updated.status);
    EXPECT_FALSE(ui.shownOptions.canUpdateWork || ui.shownOptions.canUpdateCost ||
                 ui.shownOptions.canUpdateWorkEstimates || ui.shownOptions.canUpdateCostEstimates);
    EXPECT_FALSE(ui.shownOptions.DatesEnabled());
    ASSERT_NE(nullptr, ByName("Review"));
    EXPECT_EQ(interviews, ByName("Review")->m_parent);
    EXPECT_TRUE(interviews->m_todoEntries.empty());
    ASSERT_EQ(1u, ui.shownWarnings.size());
    EXPECT_NE(std::string::npos, ui.shownWarnings[0].find("is now a summary item and has entries"));
    EXPECT_EQ(before, ReadText(path));
    EXPECT_FALSE(made.project->m_lastUpdated.IsValid()) << "nothing was written";
}

} // namespace
