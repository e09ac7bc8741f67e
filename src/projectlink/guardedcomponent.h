#pragma once

#include "projectlink/projectinterface.h"

#include <memory>
#include <string>

namespace projectlink
{

// Stands between the program and a loaded component: an exception thrown inside the
// component (out of memory in its XML parser, a bug of its own) becomes a failure code
// with a description, as any other failure of the component, instead of ending the program.
class CGuardedComponent : public IProjectComponent
{
public:
    explicit CGuardedComponent(std::unique_ptr<IProjectComponent> inner);

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
    std::string ErrorDescription() const override;

private:
    template <class Call> HRESULT Guard(Call call);

    std::unique_ptr<IProjectComponent> m_inner;
    std::string m_thrown; // what the last call threw; empty when it returned
};

} // namespace projectlink
