#pragma once

// The interface a project-plan component implements. Components are shared libraries
// that include only this header; they export one C function (kComponentEntryPoint) that
// creates the component for a versioned ProgID. Every operation returns a 32-bit result
// code; on failure the component keeps a description that ErrorDescription returns.

#include <cstdint>
#include <string>

namespace projectlink
{

using HRESULT = int32_t;

constexpr HRESULT S_OK = 0;
// A task the caller is to skip (GetTask).
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_FAIL = int32_t(0x80004005u);
constexpr HRESULT E_INVALIDARG = int32_t(0x80070057u);
constexpr HRESULT E_NOTIMPL = int32_t(0x80004001u);
// The user cancelled: not an error, and no message is shown for it.
constexpr HRESULT E_USERCANCELLED = int32_t(0x80042407u);

inline bool Succeeded(HRESULT hr) { return hr >= 0; }
inline bool Failed(HRESULT hr) { return hr < 0; }

// A file-system or OS error number as a failure code (the high bit set, facility 7).
inline HRESULT ResultFromErrno(int error) { return int32_t(0x80070000u | (uint32_t(error) & 0xFFFFu)); }

// Dates are OLE automation dates (days since 1899-12-30); 0 means "none".
// The operations are declared in the order of the interface's slots; the two slots that
// are not called keep their place so that the order matches.
class IProjectComponent
{
public:
    virtual ~IProjectComponent() = default;

    // Begins a session on the file; `writable` opens it for writing.
    virtual HRESULT Open(const std::string& path, bool writable) = 0;
    // Ends the session; `save` writes the changes back to the file.
    virtual HRESULT Close(bool save) = 0;
    virtual HRESULT Reserved9() { return E_NOTIMPL; }
    virtual HRESULT GetProjectName(std::string& name) = 0;
    // A value that stays the same for one plan across saves.
    virtual HRESULT GetFileIdentity(int32_t& identity) = 0;
    virtual HRESULT GetResourceCount(int32_t& count) = 0;
    virtual HRESULT Reserved13() { return E_NOTIMPL; }
    // `index` counts from 1.
    virtual HRESULT GetResource(int32_t index, std::string& name, int32_t& resourceId) = 0;
    virtual HRESULT GetTaskCount(int32_t& count) = 0;
    // `index` counts from 1. Returns S_FALSE for a task the caller is to skip. The work
    // estimate is in hours; the date is the one the plan gives for the resource's work.
    virtual HRESULT GetTask(int32_t index, int32_t resourceId, int32_t& projectTaskId,
                            int32_t& parentProjectTaskId, std::string& name,
                            std::string& secondText, int32_t& todoFlag, double& workEstimate,
                            double& costEstimate, double& date) = 0;
    // Writes one task's actual work for the resource over the days [periodFrom, periodTo];
    // each array holds `days` values, one per day from periodFrom.
    virtual HRESULT UpdateTask(int32_t projectTaskNumber, int32_t resourceId, double periodFrom,
                               double periodTo, double firstEntryDate, double completionDate,
                               int32_t updateWorkEstimates, double hoursEstimate,
                               int32_t updateCostEstimates, double costEstimate, int32_t days,
                               int32_t updateWork, const int32_t* regularMinutes,
                               int32_t updateWorkAgain, const int32_t* overtimeMinutes,
                               int32_t includeBilling, const double* billingAmounts,
                               int32_t includeExpenses, const double* expenseAmounts) = 0;
    // The first flag is not used; then whether the component can update work, cost,
    // work estimates and cost estimates.
    virtual HRESULT GetCapabilities(int32_t& unused, int32_t& canUpdateWork,
                                    int32_t& canUpdateCost, int32_t& canUpdateWorkEstimates,
                                    int32_t& canUpdateCostEstimates) = 0;

    // The description of the last failure (the component's error information).
    virtual std::string ErrorDescription() const = 0;
};

// The exported C function: creates the component for a versioned ProgID, or returns null
// when the library does not serve that ProgID. The caller deletes the component before it
// unloads the library.
using CreateComponentFunction = IProjectComponent* (*)(const char* versionedProgId);
constexpr const char* kComponentEntryPoint = "QvCreateProjectComponent";

} // namespace projectlink
