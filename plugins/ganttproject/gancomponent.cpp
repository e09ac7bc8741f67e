// The project-plan component for GanttProject plans (".gan"). Read only: tasks with
// their nesting, durations as work estimates, resources and their allocations.

#include "../common/plancommon.h"
#include "projectlink/projectinterface.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <new>
#include <sstream>
#include <vector>

using namespace projectlink;

namespace
{

constexpr const char* kVersionedProgId = "Quorvane.GanPlan.1";
constexpr double kHoursPerDay = 8.0;

// The format's ids start at 0, which the task tree reads as "not imported": plan ids
// handed out are the format's plus one.
int32_t PlanId(const pugi::xml_node& task)
{
    return task.attribute("id").as_int(-1) + 1;
}

// The last working day of a task that starts on `start` and lasts `days` working days
// (weekends are not working days).
double LastWorkingDay(double start, int days)
{
    double day = std::floor(start);
    while (plancommon::DayOfWeek(day) == 0 || plancommon::DayOfWeek(day) == 6)
        day += 1;
    for (int left = days - 1; left > 0;)
    {
        day += 1;
        if (plancommon::DayOfWeek(day) != 0 && plancommon::DayOfWeek(day) != 6)
            --left;
    }
    return day;
}

class CGanComponent : public IProjectComponent
{
public:
    HRESULT Open(const std::string& path, bool writable) override;
    HRESULT Close(bool) override
    {
        m_open = false;
        m_doc.reset();
        return S_OK;
    }
    HRESULT GetProjectName(std::string& name) override;
    HRESULT GetFileIdentity(int32_t& identity) override;
    HRESULT GetResourceCount(int32_t& count) override;
    HRESULT GetResource(int32_t index, std::string& name, int32_t& resourceId) override;
    HRESULT GetTaskCount(int32_t& count) override;
    HRESULT GetTask(int32_t index, int32_t resourceId, int32_t& projectTaskId,
                    int32_t& parentProjectTaskId, std::string& name, std::string& secondText,
                    int32_t& todoFlag, double& workEstimate, double& costEstimate,
                    double& date) override;
    HRESULT UpdateTask(int32_t, int32_t, double, double, double, double, int32_t, double, int32_t,
                       double, int32_t, int32_t, const int32_t*, int32_t, const int32_t*, int32_t,
                       const double*, int32_t, const double*) override
    {
        return Fail(E_NOTIMPL, "GanttProject plans can only be read.");
    }
    HRESULT GetCapabilities(int32_t& unused, int32_t& work, int32_t& cost, int32_t& workEstimates,
                            int32_t& costEstimates) override
    {
        unused = work = cost = workEstimates = costEstimates = 0;
        return S_OK;
    }
    std::string ErrorDescription() const override { return m_error; }

private:
    HRESULT Fail(HRESULT hr, const std::string& text)
    {
        m_error = text;
        return hr;
    }
    HRESULT NotOpen() { return Fail(E_FAIL, "No project file is open."); }
    void Collect(const pugi::xml_node& parent, int32_t parentId);

    pugi::xml_document m_doc;
    pugi::xml_node m_project;
    std::string m_error;
    bool m_open = false;
    std::vector<pugi::xml_node> m_tasks; // depth first, as the file nests them
    std::vector<int32_t> m_parents;
    std::vector<pugi::xml_node> m_resources;
};

HRESULT CGanComponent::Open(const std::string& path, bool)
{
    m_error.clear();
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return Fail(ResultFromErrno(errno ? errno : ENOENT),
                    "Cannot open the project file " + path + ": " + std::strerror(errno ? errno : ENOENT) + ".");
    std::ostringstream buffer;
    buffer << in.rdbuf();
    const std::string text = buffer.str();
    const pugi::xml_parse_result parsed = m_doc.load_buffer(text.data(), text.size());
    if (!parsed)
        return Fail(E_FAIL, path + " is not a readable XML file (" + parsed.description() + " at " +
                                plancommon::Position(text, parsed.offset) + ").");
    m_project = m_doc.child("project");
    if (!m_project || !m_project.child("tasks"))
        return Fail(E_FAIL, path + " is not a GanttProject file (no <project> with <tasks>).");
    m_tasks.clear();
    m_parents.clear();
    m_resources.clear();
    Collect(m_project.child("tasks"), 0);
    for (pugi::xml_node r : m_project.child("resources").children("resource"))
        m_resources.push_back(r);
    m_open = true;
    return S_OK;
}

void CGanComponent::Collect(const pugi::xml_node& parent, int32_t parentId)
{
    for (pugi::xml_node task : parent.children("task"))
    {
        m_tasks.push_back(task);
        m_parents.push_back(parentId);
        Collect(task, PlanId(task));
    }
}

HRESULT CGanComponent::GetProjectName(std::string& name)
{
    if (!m_open)
        return NotOpen();
    name = m_project.attribute("name").as_string();
    return S_OK;
}

HRESULT CGanComponent::GetFileIdentity(int32_t& identity)
{
    if (!m_open)
        return NotOpen();
    identity = plancommon::Identity(std::string(m_project.attribute("name").as_string()) + "|" +
                                    m_project.attribute("company").as_string());
    return S_OK;
}

HRESULT CGanComponent::GetResourceCount(int32_t& count)
{
    if (!m_open)
        return NotOpen();
    count = int32_t(m_resources.size());
    return S_OK;
}

HRESULT CGanComponent::GetResource(int32_t index, std::string& name, int32_t& resourceId)
{
    if (!m_open)
        return NotOpen();
    if (index < 1 || size_t(index) > m_resources.size())
        return Fail(E_INVALIDARG, "There is no resource " + std::to_string(index) + " in the plan.");
    name = m_resources[size_t(index - 1)].attribute("name").as_string();
    resourceId = m_resources[size_t(index - 1)].attribute("id").as_int();
    return S_OK;
}

HRESULT CGanComponent::GetTaskCount(int32_t& count)
{
    if (!m_open)
        return NotOpen();
    count = int32_t(m_tasks.size());
    return S_OK;
}

HRESULT CGanComponent::GetTask(int32_t index, int32_t resourceId, int32_t& projectTaskId,
                               int32_t& parentProjectTaskId, std::string& name,
                               std::string& secondText, int32_t& todoFlag, double& workEstimate,
                               double& costEstimate, double& date)
{
    if (!m_open)
        return NotOpen();
    if (index < 1 || size_t(index) > m_tasks.size())
        return Fail(E_INVALIDARG, "There is no task " + std::to_string(index) + " in the plan.");
    const pugi::xml_node task = m_tasks[size_t(index - 1)];
    if (task.attribute("id").as_int(-1) < 0)
        return S_FALSE;
    projectTaskId = PlanId(task);
    parentProjectTaskId = m_parents[size_t(index - 1)];
    name = task.attribute("name").as_string();
    secondText = task.attribute("webLink").as_string();
    const int duration = std::max(task.attribute("duration").as_int(0), 0);
    double load = 100.0;
    todoFlag = 0;
    for (pugi::xml_node a : m_project.child("allocations").children("allocation"))
        if (resourceId >= 0 && a.attribute("task-id").as_int(-1) == projectTaskId - 1 &&
            a.attribute("resource-id").as_int(-1) == resourceId)
        {
            todoFlag = 1;
            load = a.attribute("load").as_double(100.0);
        }
    workEstimate = duration * kHoursPerDay * load / 100.0;
    costEstimate = task.attribute("cost-manual-value").as_double(0.0);
    const double start = plancommon::OleFromIso(task.attribute("start").as_string());
    date = todoFlag && start != 0.0 ? LastWorkingDay(start, std::max(duration, 1)) : 0.0;
    return S_OK;
}

} // namespace

extern "C" __attribute__((visibility("default"))) IProjectComponent*
QvCreateProjectComponent(const char* versionedProgId)
{
    if (!versionedProgId || std::strcmp(versionedProgId, kVersionedProgId) != 0)
        return nullptr;
    return new (std::nothrow) CGanComponent();
}
