// The project-plan component for plans saved as project XML (MSPDI, ".xml").
// Reads tasks, resources and assignments; writes a resource's actual work back into its
// assignments as daily timephased data, leaving the rest of the file as it was.

#include "../common/plancommon.h"
#include "projectlink/projectinterface.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <new>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace projectlink;

namespace
{

constexpr const char* kVersionedProgId = "Quorvane.MspdiPlan.1";

// Timephased data types and the day unit of the format.
constexpr int kActualWork = 2;
constexpr int kActualOvertimeWork = 3;
constexpr int kActualCost = 6;
constexpr int kUnitDay = 2;

// The order of an assignment's elements in the format's schema: a new element goes
// before the first sibling that comes later, so that strict readers accept the file.
const char* const kAssignmentOrder[] = {
    "UID", "GUID", "TaskUID", "ResourceUID", "PercentWorkComplete", "ActualCost",
    "ActualFinish", "ActualOvertimeCost", "ActualOvertimeWork", "ActualStart", "ActualWork",
    "ACWP", "Confirmed", "Cost", "CostRateTable", "RateScale", "CostVariance", "CV", "Delay",
    "Finish", "FinishVariance", "Hyperlink", "HyperlinkAddress", "HyperlinkSubAddress",
    "WorkVariance", "HasFixedRateUnits", "FixedMaterial", "LevelingDelay",
    "LevelingDelayFormat", "LinkedFields", "Milestone", "Notes", "Overallocated",
    "OvertimeCost", "OvertimeWork", "PeakUnits", "RegularWork", "RemainingCost",
    "RemainingOvertimeCost", "RemainingOvertimeWork", "RemainingWork", "ResponsePending",
    "Start", "Stop", "Resume", "StartVariance", "Summary", "SV", "Units", "UpdateNeeded", "VAC",
    "Work", "WorkContour", "BCWS", "BCWP", "BookingType", "ActualWorkProtected",
    "ActualOvertimeWorkProtected", "CreationDate", "AssnOwner", "AssnOwnerGuid", "BudgetCost",
    "BudgetWork", "ExtendedAttribute", "Baseline", "TimephasedData"};

int OrderOf(const char* name)
{
    for (size_t i = 0; i < std::size(kAssignmentOrder); ++i)
        if (std::strcmp(kAssignmentOrder[i], name) == 0)
            return int(i);
    return int(std::size(kAssignmentOrder));
}

// "PT8H30M0S" (also with days, "P1DT2H") as hours; 0 for anything else.
double HoursFromDuration(const std::string& text)
{
    if (text.size() < 2 || text[0] != 'P')
        return 0.0;
    double hours = 0.0, number = 0.0, fraction = 0.0, scale = 0.0;
    bool inTime = false;
    for (size_t i = 1; i < text.size(); ++i)
    {
        const char c = text[i];
        if (c >= '0' && c <= '9')
        {
            if (scale > 0.0)
                fraction += (c - '0') * (scale /= 10.0);
            else
                number = number * 10 + (c - '0');
            continue;
        }
        if (c == '.')
        {
            scale = 1.0;
            continue;
        }
        const double value = number + fraction;
        number = fraction = scale = 0.0;
        if (c == 'T')
            inTime = true;
        else if (c == 'D' && !inTime)
            hours += value * 24.0;
        else if (c == 'H' && inTime)
            hours += value;
        else if (c == 'M' && inTime)
            hours += value / 60.0;
        else if (c == 'S' && inTime)
            hours += value / 3600.0;
        else
            return 0.0;
    }
    return hours;
}

std::string DurationFromMinutes(int64_t minutes)
{
    if (minutes < 0)
        minutes = 0;
    return "PT" + std::to_string(minutes / 60) + "H" + std::to_string(minutes % 60) + "M0S";
}

std::string DurationFromHours(double hours)
{
    return DurationFromMinutes(std::llround(std::max(hours, 0.0) * 60.0));
}

std::string Number(double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.2f", value);
    std::string s = text;
    // "1200.00" reads as well as "1200"; keep the shorter form for whole numbers.
    if (s.size() > 3 && s.compare(s.size() - 3, 3, ".00") == 0)
        s.erase(s.size() - 3);
    return s;
}

class CMspdiComponent : public IProjectComponent
{
public:
    HRESULT Open(const std::string& path, bool writable) override;
    HRESULT Close(bool save) override;
    HRESULT GetProjectName(std::string& name) override;
    HRESULT GetFileIdentity(int32_t& identity) override;
    HRESULT GetResourceCount(int32_t& count) override;
    HRESULT GetResource(int32_t index, std::string& name, int32_t& resourceId) override;
    HRESULT GetTaskCount(int32_t& count) override;
    HRESULT GetTask(int32_t index, int32_t resourceId, int32_t& projectTaskId,
                    int32_t& parentProjectTaskId, std::string& name, std::string& secondText,
                    int32_t& todoFlag, double& workEstimate, double& costEstimate,
                    double& date) override;
    HRESULT UpdateTask(int32_t projectTaskNumber, int32_t resourceId, double periodFrom,
                       double periodTo, double firstEntryDate, double completionDate,
                       int32_t updateWorkEstimates, double hoursEstimate,
                       int32_t updateCostEstimates, double costEstimate, int32_t days,
                       int32_t updateWork, const int32_t* regularMinutes, int32_t updateWorkAgain,
                       const int32_t* overtimeMinutes, int32_t includeBilling,
                       const double* billingAmounts, int32_t includeExpenses,
                       const double* expenseAmounts) override;
    HRESULT GetCapabilities(int32_t& unused, int32_t& canUpdateWork, int32_t& canUpdateCost,
                            int32_t& canUpdateWorkEstimates,
                            int32_t& canUpdateCostEstimates) override;
    std::string ErrorDescription() const override { return m_error; }

private:
    HRESULT Fail(HRESULT hr, const std::string& text)
    {
        m_error = text;
        return hr;
    }
    HRESULT NotOpen() { return Fail(E_FAIL, "No project file is open."); }
    bool IsSkipped(const pugi::xml_node& task) const;
    pugi::xml_node FindAssignment(int32_t taskUid, int32_t resourceUid) const;
    pugi::xml_node AddAssignment(int32_t taskUid, int32_t resourceUid);
    // The element `name` of an assignment, created in schema order when missing.
    pugi::xml_node Element(pugi::xml_node assignment, const char* name);
    void ReplaceTimephased(pugi::xml_node assignment, int type, double from, double to,
                           const std::vector<std::pair<double, std::string>>& values);
    double SumTimephased(pugi::xml_node assignment, int type, bool duration) const;
    HRESULT Save();

    pugi::xml_document m_doc;
    pugi::xml_node m_project;
    std::string m_path;
    std::string m_error;
    bool m_open = false;
    bool m_writable = false;
    bool m_dirty = false;
    std::vector<pugi::xml_node> m_tasks;        // every <Task>, in file order
    std::vector<int32_t> m_parents;             // parent UID of each, 0 at the top
    std::map<int32_t, pugi::xml_node> m_taskByUid;
    std::vector<pugi::xml_node> m_resources;    // the real resources, in file order
    std::map<int32_t, pugi::xml_node> m_resourceByUid;
};

int32_t ChildInt(const pugi::xml_node& node, const char* name, int32_t fallback = 0)
{
    pugi::xml_node child = node.child(name);
    return child ? child.text().as_int(fallback) : fallback;
}

std::string ChildText(const pugi::xml_node& node, const char* name)
{
    return node.child(name).text().as_string();
}

bool CMspdiComponent::IsSkipped(const pugi::xml_node& task) const
{
    // The project summary task (outline level 0, UID 0) and blank rows are not tasks.
    return !task.child("UID") || ChildInt(task, "UID") == 0 || ChildInt(task, "OutlineLevel", 1) == 0 ||
           ChildInt(task, "IsNull") != 0 || ChildText(task, "Name").empty();
}

HRESULT CMspdiComponent::Open(const std::string& path, bool writable)
{
    m_error.clear();
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return Fail(ResultFromErrno(errno ? errno : ENOENT),
                    "Cannot open the project file " + path + ": " + std::strerror(errno ? errno : ENOENT) + ".");
    std::ostringstream buffer;
    buffer << in.rdbuf();
    const std::string text = buffer.str();
    if (writable && access(path.c_str(), W_OK) != 0)
        return Fail(ResultFromErrno(EACCES), "The project file " + path + " cannot be written.");

    const unsigned options = pugi::parse_default | pugi::parse_declaration | pugi::parse_comments |
                             pugi::parse_pi | pugi::parse_doctype;
    const pugi::xml_parse_result parsed = m_doc.load_buffer(text.data(), text.size(), options);
    if (!parsed)
        return Fail(E_FAIL, path + " is not a readable XML file (" + parsed.description() + " at " +
                                plancommon::Position(text, parsed.offset) + ").");
    m_project = m_doc.child("Project");
    if (!m_project)
        return Fail(E_FAIL, path + " is not a project XML file (its root element is not <Project>).");

    m_tasks.clear();
    m_parents.clear();
    m_taskByUid.clear();
    m_resources.clear();
    m_resourceByUid.clear();
    std::map<std::string, int32_t> uidByOutline;
    for (pugi::xml_node task : m_project.child("Tasks").children("Task"))
    {
        m_tasks.push_back(task);
        if (task.child("UID"))
            m_taskByUid[ChildInt(task, "UID")] = task;
        const std::string outline = ChildText(task, "OutlineNumber");
        if (!outline.empty() && !IsSkipped(task))
            uidByOutline[outline] = ChildInt(task, "UID");
    }
    // The parent comes from the outline number when there is one ("1.2.3" under "1.2"),
    // else from the outline levels in file order.
    std::vector<int32_t> levelStack; // UID at each level, from level 1
    for (pugi::xml_node task : m_tasks)
    {
        int32_t parent = 0;
        const int level = ChildInt(task, "OutlineLevel", 1);
        const std::string outline = ChildText(task, "OutlineNumber");
        if (!outline.empty())
        {
            const size_t dot = outline.rfind('.');
            if (dot != std::string::npos)
            {
                auto it = uidByOutline.find(outline.substr(0, dot));
                parent = it != uidByOutline.end() ? it->second : 0;
            }
        }
        else if (level > 1 && size_t(level - 1) <= levelStack.size())
            parent = levelStack[size_t(level - 2)];
        if (!IsSkipped(task) && level >= 1)
        {
            levelStack.resize(size_t(level - 1));
            levelStack.push_back(ChildInt(task, "UID"));
        }
        m_parents.push_back(parent);
    }
    for (pugi::xml_node resource : m_project.child("Resources").children("Resource"))
    {
        // Resource 0 stands for "unassigned" in these files.
        if (ChildInt(resource, "UID") == 0 || ChildText(resource, "Name").empty())
            continue;
        m_resources.push_back(resource);
        m_resourceByUid[ChildInt(resource, "UID")] = resource;
    }
    m_path = path;
    m_open = true;
    m_writable = writable;
    m_dirty = false;
    return S_OK;
}

HRESULT CMspdiComponent::Close(bool save)
{
    HRESULT hr = S_OK;
    if (m_open && save && m_writable && m_dirty)
        hr = Save();
    m_open = false;
    m_dirty = false;
    m_doc.reset();
    m_project = pugi::xml_node();
    return hr;
}

HRESULT CMspdiComponent::Save()
{
    // A new file beside the old one, renamed over it once complete: the plan is never
    // left half-written.
    const std::string temp = m_path + ".qvtmp";
    struct stat st{};
    const bool haveMode = stat(m_path.c_str(), &st) == 0;
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out)
            return Fail(ResultFromErrno(errno ? errno : EACCES),
                        "Cannot write the project file " + m_path + ": " + std::strerror(errno ? errno : EACCES) + ".");
        m_doc.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
        out.flush();
        if (!out)
        {
            std::remove(temp.c_str());
            return Fail(ResultFromErrno(EIO), "Cannot write the project file " + m_path + ".");
        }
    }
    if (haveMode)
        chmod(temp.c_str(), st.st_mode & 07777);
    if (std::rename(temp.c_str(), m_path.c_str()) != 0)
    {
        const int e = errno;
        std::remove(temp.c_str());
        return Fail(ResultFromErrno(e), "Cannot replace the project file " + m_path + ": " + std::strerror(e) + ".");
    }
    m_dirty = false;
    return S_OK;
}

HRESULT CMspdiComponent::GetProjectName(std::string& name)
{
    if (!m_open)
        return NotOpen();
    name = ChildText(m_project, "Title");
    if (name.empty())
        name = ChildText(m_project, "Name");
    if (name.empty())
    {
        const size_t slash = m_path.find_last_of('/');
        name = m_path.substr(slash == std::string::npos ? 0 : slash + 1);
    }
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && name.size() - dot == 4 &&
        (name.compare(dot, 4, ".xml") == 0 || name.compare(dot, 4, ".mpp") == 0))
        name.erase(dot);
    return S_OK;
}

HRESULT CMspdiComponent::GetFileIdentity(int32_t& identity)
{
    if (!m_open)
        return NotOpen();
    // The creation date stays with the plan through renames and saves.
    std::string basis = ChildText(m_project, "CreationDate");
    if (basis.empty())
        basis = ChildText(m_project, "Title") + "|" + ChildText(m_project, "Name");
    identity = plancommon::Identity(basis);
    return S_OK;
}

HRESULT CMspdiComponent::GetResourceCount(int32_t& count)
{
    if (!m_open)
        return NotOpen();
    count = int32_t(m_resources.size());
    return S_OK;
}

HRESULT CMspdiComponent::GetResource(int32_t index, std::string& name, int32_t& resourceId)
{
    if (!m_open)
        return NotOpen();
    if (index < 1 || size_t(index) > m_resources.size())
        return Fail(E_INVALIDARG, "There is no resource " + std::to_string(index) + " in the plan.");
    const pugi::xml_node resource = m_resources[size_t(index - 1)];
    name = ChildText(resource, "Name");
    resourceId = ChildInt(resource, "UID");
    return S_OK;
}

HRESULT CMspdiComponent::GetTaskCount(int32_t& count)
{
    if (!m_open)
        return NotOpen();
    count = int32_t(m_tasks.size());
    return S_OK;
}

pugi::xml_node CMspdiComponent::FindAssignment(int32_t taskUid, int32_t resourceUid) const
{
    for (pugi::xml_node a : m_project.child("Assignments").children("Assignment"))
        if (ChildInt(a, "TaskUID", -1) == taskUid && ChildInt(a, "ResourceUID", -1) == resourceUid)
            return a;
    return pugi::xml_node();
}

HRESULT CMspdiComponent::GetTask(int32_t index, int32_t resourceId, int32_t& projectTaskId,
                                 int32_t& parentProjectTaskId, std::string& name,
                                 std::string& secondText, int32_t& todoFlag, double& workEstimate,
                                 double& costEstimate, double& date)
{
    if (!m_open)
        return NotOpen();
    if (index < 1 || size_t(index) > m_tasks.size())
        return Fail(E_INVALIDARG, "There is no task " + std::to_string(index) + " in the plan.");
    const pugi::xml_node task = m_tasks[size_t(index - 1)];
    if (IsSkipped(task))
        return S_FALSE;
    projectTaskId = ChildInt(task, "UID");
    parentProjectTaskId = m_parents[size_t(index - 1)];
    name = ChildText(task, "Name");
    secondText = ChildText(task, "WBS");
    // The chosen resource's own assignment gives the estimates and the date of its work.
    const pugi::xml_node assignment = resourceId >= 0 ? FindAssignment(projectTaskId, resourceId)
                                                      : pugi::xml_node();
    const pugi::xml_node source = assignment ? assignment : task;
    todoFlag = assignment ? 1 : 0;
    workEstimate = HoursFromDuration(ChildText(source, "Work"));
    // Costs are kept in hundredths of the currency unit.
    costEstimate = source.child("Cost").text().as_double(0.0) / 100.0;
    date = assignment ? plancommon::OleFromIso(ChildText(assignment, "Finish")) : 0.0;
    return S_OK;
}

pugi::xml_node CMspdiComponent::AddAssignment(int32_t taskUid, int32_t resourceUid)
{
    pugi::xml_node list = m_project.child("Assignments");
    if (!list)
        list = m_project.append_child("Assignments");
    int32_t uid = 0;
    for (pugi::xml_node a : list.children("Assignment"))
        uid = std::max(uid, ChildInt(a, "UID"));
    pugi::xml_node a = list.append_child("Assignment");
    a.append_child("UID").text().set(uid + 1);
    a.append_child("TaskUID").text().set(taskUid);
    a.append_child("ResourceUID").text().set(resourceUid);
    const pugi::xml_node task = m_taskByUid[taskUid];
    if (task.child("Start"))
        Element(a, "Start").text().set(ChildText(task, "Start").c_str());
    if (task.child("Finish"))
        Element(a, "Finish").text().set(ChildText(task, "Finish").c_str());
    Element(a, "Units").text().set("1");
    Element(a, "Work").text().set("PT0H0M0S");
    return a;
}

pugi::xml_node CMspdiComponent::Element(pugi::xml_node assignment, const char* name)
{
    if (pugi::xml_node existing = assignment.child(name))
        return existing;
    const int order = OrderOf(name);
    for (pugi::xml_node sibling = assignment.first_child(); sibling; sibling = sibling.next_sibling())
        if (sibling.type() == pugi::node_element && OrderOf(sibling.name()) > order)
            return assignment.insert_child_before(name, sibling);
    return assignment.append_child(name);
}

void CMspdiComponent::ReplaceTimephased(pugi::xml_node assignment, int type, double from, double to,
                                        const std::vector<std::pair<double, std::string>>& values)
{
    // The period is written anew: what an earlier update wrote for these days goes.
    for (pugi::xml_node td = assignment.child("TimephasedData"); td;)
    {
        pugi::xml_node next = td.next_sibling("TimephasedData");
        const double start = std::floor(plancommon::OleFromIso(ChildText(td, "Start")));
        if (ChildInt(td, "Type") == type && start >= from && start <= to)
            assignment.remove_child(td);
        td = next;
    }
    const int32_t uid = ChildInt(assignment, "UID");
    for (const auto& [day, value] : values)
    {
        pugi::xml_node td = assignment.append_child("TimephasedData");
        td.append_child("Type").text().set(type);
        td.append_child("UID").text().set(uid);
        td.append_child("Start").text().set((plancommon::IsoDay(day) + "T00:00:00").c_str());
        td.append_child("Finish").text().set((plancommon::IsoDay(day + 1) + "T00:00:00").c_str());
        td.append_child("Unit").text().set(kUnitDay);
        td.append_child("Value").text().set(value.c_str());
    }
}

double CMspdiComponent::SumTimephased(pugi::xml_node assignment, int type, bool duration) const
{
    double sum = 0.0;
    for (pugi::xml_node td : assignment.children("TimephasedData"))
        if (ChildInt(td, "Type") == type)
            sum += duration ? HoursFromDuration(ChildText(td, "Value")) * 60.0
                            : td.child("Value").text().as_double(0.0);
    return sum;
}

HRESULT CMspdiComponent::UpdateTask(int32_t projectTaskNumber, int32_t resourceId,
                                    double periodFrom, double periodTo, double firstEntryDate,
                                    double completionDate, int32_t updateWorkEstimates,
                                    double hoursEstimate, int32_t updateCostEstimates,
                                    double costEstimate, int32_t days, int32_t updateWork,
                                    const int32_t* regularMinutes, int32_t updateWorkAgain,
                                    const int32_t* overtimeMinutes, int32_t includeBilling,
                                    const double* billingAmounts, int32_t includeExpenses,
                                    const double* expenseAmounts)
{
    if (!m_open)
        return NotOpen();
    if (!m_writable)
        return Fail(E_FAIL, "The project file was opened read-only.");
    if (!m_taskByUid.count(projectTaskNumber))
        return Fail(E_INVALIDARG, "Task " + std::to_string(projectTaskNumber) + " is not in the plan.");
    if (!m_resourceByUid.count(resourceId))
        return Fail(E_INVALIDARG, "Resource " + std::to_string(resourceId) + " is not in the plan.");
    const double from = std::floor(periodFrom);
    if (days < 1 || std::lround(std::floor(periodTo) - from) + 1 != days)
        return Fail(E_INVALIDARG, "The period does not match its number of days.");
    if (((updateWork || updateWorkAgain) && (!regularMinutes || !overtimeMinutes)) || (includeBilling && !billingAmounts) ||
        (includeExpenses && !expenseAmounts))
        return Fail(E_INVALIDARG, "A day array is missing.");

    pugi::xml_node a = FindAssignment(projectTaskNumber, resourceId);
    if (!a)
        a = AddAssignment(projectTaskNumber, resourceId);
    const double to = from + days - 1;

    if (updateWork || updateWorkAgain)
    {
        std::vector<std::pair<double, std::string>> work, overtime;
        for (int32_t i = 0; i < days; ++i)
        {
            const int64_t regular = std::max(regularMinutes[i], 0);
            const int64_t over = std::max(overtimeMinutes[i], 0);
            // Actual work counts the overtime in it, as the format's totals do.
            if (regular + over > 0)
                work.emplace_back(from + i, DurationFromMinutes(regular + over));
            if (over > 0)
                overtime.emplace_back(from + i, DurationFromMinutes(over));
        }
        ReplaceTimephased(a, kActualWork, from, to, work);
        ReplaceTimephased(a, kActualOvertimeWork, from, to, overtime);
        const int64_t actual = std::llround(SumTimephased(a, kActualWork, true));
        Element(a, "ActualWork").text().set(DurationFromMinutes(actual).c_str());
        Element(a, "ActualOvertimeWork")
            .text()
            .set(DurationFromMinutes(std::llround(SumTimephased(a, kActualOvertimeWork, true))).c_str());
        const int64_t planned = std::llround(HoursFromDuration(ChildText(a, "Work")) * 60.0);
        Element(a, "RemainingWork").text().set(DurationFromMinutes(std::max<int64_t>(planned - actual, 0)).c_str());
        if (planned > 0)
            Element(a, "PercentWorkComplete").text().set(int(std::min<int64_t>(actual * 100 / planned, 100)));
    }
    if (includeBilling || includeExpenses)
    {
        std::vector<std::pair<double, std::string>> cost;
        for (int32_t i = 0; i < days; ++i)
        {
            const double amount = (includeBilling ? billingAmounts[i] : 0.0) +
                                  (includeExpenses ? expenseAmounts[i] : 0.0);
            if (std::fabs(amount) >= 0.005)
                cost.emplace_back(from + i, Number(amount * 100.0));
        }
        ReplaceTimephased(a, kActualCost, from, to, cost);
        Element(a, "ActualCost").text().set(Number(SumTimephased(a, kActualCost, false)).c_str());
    }
    if (firstEntryDate != 0.0)
    {
        const double current = plancommon::OleFromIso(ChildText(a, "ActualStart"));
        if (current == 0.0 || std::floor(firstEntryDate) < std::floor(current))
            Element(a, "ActualStart").text().set((plancommon::IsoDay(firstEntryDate) + "T08:00:00").c_str());
    }
    if (completionDate != 0.0)
    {
        Element(a, "ActualFinish").text().set((plancommon::IsoDay(completionDate) + "T17:00:00").c_str());
        Element(a, "PercentWorkComplete").text().set(100);
        Element(a, "RemainingWork").text().set("PT0H0M0S");
    }
    if (updateWorkEstimates)
        Element(a, "Work").text().set(DurationFromHours(hoursEstimate).c_str());
    if (updateCostEstimates)
        Element(a, "Cost").text().set(Number(costEstimate * 100.0).c_str());
    m_dirty = true;
    return S_OK;
}

HRESULT CMspdiComponent::GetCapabilities(int32_t& unused, int32_t& canUpdateWork,
                                         int32_t& canUpdateCost, int32_t& canUpdateWorkEstimates,
                                         int32_t& canUpdateCostEstimates)
{
    unused = 0;
    canUpdateWork = canUpdateCost = canUpdateWorkEstimates = canUpdateCostEstimates = 1;
    return S_OK;
}

} // namespace

extern "C" __attribute__((visibility("default"))) IProjectComponent*
QvCreateProjectComponent(const char* versionedProgId)
{
    if (!versionedProgId || std::strcmp(versionedProgId, kVersionedProgId) != 0)
        return nullptr;
    return new (std::nothrow) CMspdiComponent();
}
