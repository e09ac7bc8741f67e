#pragma once

#include "platform/prompter.h"
#include "projectlink/projectinterface.h"
#include "projectlink/projectlinkui.h"

#include <functional>
#include <string>
#include <vector>

namespace qvtest
{

// A plan held in memory, answering as a component would.
class FakeComponent : public projectlink::IProjectComponent
{
public:
    struct Task
    {
        int32_t id = 0;
        int32_t parent = 0;
        std::string name;
        double work = 0.0;
        double cost = 0.0;
        double date = 0.0;
        int32_t todo = 0;
        bool skip = false;
    };
    struct Update
    {
        int32_t task = 0;
        int32_t resource = 0;
        double from = 0, to = 0, firstEntry = 0, completion = 0;
        int32_t updateWorkEstimates = 0;
        double hoursEstimate = 0;
        int32_t updateCostEstimates = 0;
        double costEstimate = 0;
        int32_t updateWork = 0, includeBilling = 0, includeExpenses = 0;
        std::vector<int32_t> regular, overtime;
        std::vector<double> billing, expenses;
    };

    std::vector<Task> tasks;
    std::vector<Update> updates;
    int failTaskIndex = 0; // GetTask of this index fails

    projectlink::HRESULT Open(const std::string&, bool) override { return projectlink::S_OK; }
    projectlink::HRESULT Close(bool) override { return projectlink::S_OK; }
    projectlink::HRESULT GetProjectName(std::string& name) override
    {
        name = "Fake";
        return projectlink::S_OK;
    }
    projectlink::HRESULT GetFileIdentity(int32_t& identity) override
    {
        identity = 7;
        return projectlink::S_OK;
    }
    projectlink::HRESULT GetResourceCount(int32_t& count) override
    {
        count = 0;
        return projectlink::S_OK;
    }
    projectlink::HRESULT GetResource(int32_t, std::string&, int32_t&) override
    {
        return projectlink::E_INVALIDARG;
    }
    projectlink::HRESULT GetTaskCount(int32_t& count) override
    {
        count = int32_t(tasks.size());
        return projectlink::S_OK;
    }
    projectlink::HRESULT GetTask(int32_t index, int32_t, int32_t& id, int32_t& parent,
                                 std::string& name, std::string& second, int32_t& todo,
                                 double& work, double& cost, double& date) override
    {
        if (index == failTaskIndex)
        {
            m_error = "Task " + std::to_string(index) + " is unreadable.";
            return projectlink::E_FAIL;
        }
        const Task& t = tasks.at(size_t(index - 1));
        if (t.skip)
            return projectlink::S_FALSE;
        id = t.id, parent = t.parent, name = t.name, second = "wbs", todo = t.todo;
        work = t.work, cost = t.cost, date = t.date;
        return projectlink::S_OK;
    }
    projectlink::HRESULT UpdateTask(int32_t task, int32_t resource, double from, double to,
                                    double firstEntry, double completion, int32_t uwe,
                                    double hours, int32_t uce, double cost, int32_t days,
                                    int32_t updateWork, const int32_t* regular, int32_t,
                                    const int32_t* overtime, int32_t includeBilling,
                                    const double* billing, int32_t includeExpenses,
                                    const double* expenses) override
    {
        Update u{task, resource, from, to, firstEntry, completion, uwe, hours, uce, cost,
                 updateWork, includeBilling, includeExpenses, {}, {}, {}, {}};
        u.regular.assign(regular, regular + days);
        u.overtime.assign(overtime, overtime + days);
        u.billing.assign(billing, billing + days);
        u.expenses.assign(expenses, expenses + days);
        updates.push_back(u);
        return projectlink::S_OK;
    }
    projectlink::HRESULT GetCapabilities(int32_t& a, int32_t& b, int32_t& c, int32_t& d,
                                         int32_t& e) override
    {
        a = 0, b = c = d = e = 1;
        return projectlink::S_OK;
    }
    std::string ErrorDescription() const override { return m_error; }

private:
    std::string m_error;
};

// Answers the link's dialogs from values set in advance and records what it was shown.
class ScriptedLinkUi : public projectlink::ProjectLinkUi
{
public:
    platform::ScriptedPrompter prompter;
    // File choice: empty path means Cancel.
    std::string chosenPath;
    std::string chosenProgId;
    std::vector<std::string> offeredFilters;
    std::string offeredCombinedFilter;
    // Resource: an index, -1 for none, or cancel.
    bool resourceOk = true;
    int resourceIndex = 0;
    std::vector<std::string> offeredResources;
    bool parentOk = true;
    uint32_t parentTaskId = 1;
    bool optionsOk = true;
    std::function<void(projectlink::UpdateOptions&)> editOptions;
    projectlink::UpdateOptions shownOptions;
    bool warningsContinue = true;
    std::vector<std::string> shownWarnings;
    // Cancel is pressed before this many steps of the next progress (0: never).
    int cancelAfterSteps = 0;
    std::vector<std::string> progressTitles;
    int steps = 0;

    platform::Prompter& Prompter() override { return prompter; }
    bool ChooseProjectFile(const std::vector<projectlink::CComponentInfo>& components,
                           const std::string& combined, std::string& path,
                           std::string& progId) override
    {
        for (const auto& c : components)
            offeredFilters.push_back(c.filter);
        offeredCombinedFilter = combined;
        if (chosenPath.empty())
            return false;
        path = chosenPath;
        progId = chosenProgId;
        return true;
    }
    bool SelectResource(const std::vector<std::string>& names, const std::vector<int32_t>&,
                        int& chosen) override
    {
        offeredResources = names;
        chosen = resourceIndex;
        return resourceOk;
    }
    bool SelectParentTask(uint32_t& taskId) override
    {
        taskId = parentTaskId;
        return parentOk;
    }
    bool EditUpdateOptions(projectlink::UpdateOptions& options) override
    {
        if (editOptions)
            editOptions(options);
        shownOptions = options;
        return optionsOk;
    }
    bool ShowWarnings(const std::vector<std::string>& warnings) override
    {
        shownWarnings = warnings;
        return warningsContinue;
    }
    void BeginProgress(const std::string& title, const std::string&, int) override
    {
        progressTitles.push_back(title);
        steps = 0;
    }
    void StepProgress() override { ++steps; }
    bool TakeCancelRequest() override
    {
        if (cancelAfterSteps == 0 || steps + 1 < cancelAfterSteps)
            return false;
        cancelAfterSteps = 0; // one press, read once
        return true;
    }
    void EndProgress() override {}
};

} // namespace qvtest
