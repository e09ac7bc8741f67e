#include "projectlink/guardedcomponent.h"

#include <exception>
#include <new>

namespace projectlink
{

CGuardedComponent::CGuardedComponent(std::unique_ptr<IProjectComponent> inner)
    : m_inner(std::move(inner))
{
}

template <class Call> HRESULT CGuardedComponent::Guard(Call call)
{
    m_thrown.clear();
    try
    {
        return call();
    }
    catch (const std::bad_alloc&)
    {
        m_thrown = "The project component ran out of memory.";
    }
    catch (const std::exception& e)
    {
        m_thrown = std::string("The project component failed: ") + e.what();
    }
    catch (...)
    {
        m_thrown = "The project component failed.";
    }
    return E_FAIL;
}

HRESULT CGuardedComponent::Open(const std::string& path, bool writable)
{
    return Guard([&] { return m_inner->Open(path, writable); });
}

HRESULT CGuardedComponent::Close(bool save)
{
    return Guard([&] { return m_inner->Close(save); });
}

HRESULT CGuardedComponent::GetProjectName(std::string& name)
{
    return Guard([&] { return m_inner->GetProjectName(name); });
}

HRESULT CGuardedComponent::GetFileIdentity(int32_t& identity)
{
    return Guard([&] { return m_inner->GetFileIdentity(identity); });
}

HRESULT CGuardedComponent::GetResourceCount(int32_t& count)
{
    return Guard([&] { return m_inner->GetResourceCount(count); });
}

HRESULT CGuardedComponent::GetResource(int32_t index, std::string& name, int32_t& resourceId)
{
    return Guard([&] { return m_inner->GetResource(index, name, resourceId); });
}

HRESULT CGuardedComponent::GetTaskCount(int32_t& count)
{
    return Guard([&] { return m_inner->GetTaskCount(count); });
}

HRESULT CGuardedComponent::GetTask(int32_t index, int32_t resourceId, int32_t& projectTaskId,
                                   int32_t& parentProjectTaskId, std::string& name,
                                   std::string& secondText, int32_t& todoFlag,
                                   double& workEstimate, double& costEstimate, double& date)
{
    return Guard(
        [&]
        {
            return m_inner->GetTask(index, resourceId, projectTaskId, parentProjectTaskId, name,
                                    secondText, todoFlag, workEstimate, costEstimate, date);
        });
}

HRESULT CGuardedComponent::UpdateTask(int32_t projectTaskNumber, int32_t resourceId,
                                      double periodFrom, double periodTo, double firstEntryDate,
                                      double completionDate, int32_t updateWorkEstimates,
                                      double hoursEstimate, int32_t updateCostEstimates,
                                      double costEstimate, int32_t days, int32_t updateWork,
                                      const int32_t* regularMinutes, int32_t updateWorkAgain,
                                      const int32_t* overtimeMinutes, int32_t includeBilling,
                                      const double* billingAmounts, int32_t includeExpenses,
                                      const double* expenseAmounts)
{
    return Guard(
        [&]
        {
            return m_inner->UpdateTask(projectTaskNumber, resourceId, periodFrom, periodTo,
                                       firstEntryDate, completionDate, updateWorkEstimates,
                                       hoursEstimate, updateCostEstimates, costEstimate, days,
                                       updateWork, regularMinutes, updateWorkAgain,
                                       overtimeMinutes, includeBilling, billingAmounts,
                                       includeExpenses, expenseAmounts);
        });
}

HRESULT CGuardedComponent::GetCapabilities(int32_t& unused, int32_t& canUpdateWork,
                                           int32_t& canUpdateCost, int32_t& canUpdateWorkEstimates,
                                           int32_t& canUpdateCostEstimates)
{
    return Guard(
        [&]
        {
            return m_inner->GetCapabilities(unused, canUpdateWork, canUpdateCost,
                                            canUpdateWorkEstimates, canUpdateCostEstimates);
        });
}

std::string CGuardedComponent::ErrorDescription() const
{
    if (!m_thrown.empty())
        return m_thrown;
    try
    {
        return m_inner->ErrorDescription();
    }
    catch (...)
    {
        return "The project component failed.";
    }
}

} // namespace projectlink
