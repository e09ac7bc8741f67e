#pragma once

#include "model/archive.h"
#include "model/catalogs.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

class CTimeEntry;
class CExpenseEntry;
class CToDoEntry;

// One node of the task tree. The root (id 1, level 0) stands for the employee.
class CTask : public CObject
{
public:
    const char* GetClassName() const override { return "CTask"; }
    // Versions 5 to 11; older bodies are converted on reading.
    void Serialize(CArchive& ar) override;

    // Inheritance: the first task upward (itself included) whose governing
    // "use parent" flag is off; the root ends the walk.
    const CTask* GetBillingTask() const;
    const CTask* GetTaskIdTask() const;
    const CTask* GetContactTask() const;

    // Billing of a time entry of `activityId` on this task.
    bool IsBillableFor(uint32_t activityId) const;
    double GetRateFor(uint32_t activityId) const;
    float GetEffectiveOvertimeMultiplier() const;
    bool GetEffectiveBillable() const { return GetBillingTask()->m_billable; }
    double GetEffectiveRate() const { return GetBillingTask()->m_regularRate; }
    bool GetEffectiveUseActivityRates() const { return GetBillingTask()->m_useActivityRates; }
    const std::string& GetEffectiveTaskId() const { return GetTaskIdTask()->m_taskId; }
    uint32_t GetEffectiveContactId() const { return GetContactTask()->m_contactId; }

    // The task or any task above it is marked inactive.
    bool IsInactive() const;
    // The abbreviation, or the name when the abbreviation is empty.
    const std::string& GetAbbreviationOrName() const;
    // Text used to order siblings and in display paths: the name when `fullNames`.
    const std::string& GetDisplayText(bool fullNames) const
    {
        return fullNames ? m_name : GetAbbreviationOrName();
    }
    bool IsImported() const { return m_projectTaskNumber != 0; }
    // Imported from a project and having children: no entries may be filed on it.
    bool IsProjectSummary() const { return IsImported() && !m_children.empty(); }
    // True when `ancestor` is this task or lies above it.
    bool IsSelfOrDescendantOf(const CTask* ancestor) const;
    // Number of steps to the root (the root has depth 0).
    int GetDepth() const;

    // Persisted, in the order of the file body.
    uint32_t m_id = 0;
    uint32_t m_parentId = 0;
    std::string m_name;
    uint16_t m_level = 0;
    std::string m_abbreviation;
    bool m_useParentBilling = true;
    bool m_useParentTaskId = true;
    bool m_expanded = false;
    uint32_t m_transient2 = 0;
    uint32_t m_transient1 = 0;
    std::string m_lastNote;
    uint32_t m_lastActivityId = 0;
    bool m_inactive = false;
    bool m_useParentContact = true;
    uint32_t m_projectId = 0;
    double m_hoursEstimate = 0.0; // in minutes
    double m_costEstimate = 0.0;
    std::string m_notes;
    std::string m_taskId;
    bool m_billable = true;
    double m_regularRate = 0.0;
    bool m_useActivityRates = false;
    float m_overtimeMultiplier = 1.0f;
    uint32_t m_contactId = 0;
    uint32_t m_projectTaskNumber = 0;
    uint32_t m_todoFlag = 0;
    double m_planWorkEstimate = 0.0;
    double m_planCostEstimate = 0.0;
    std::map<uint32_t, std::unique_ptr<CActivityRate>> m_activityRates;

    // In memory only: links made by the document after reading or on change.
    CTask* m_parent = nullptr;
    std::vector<CTask*> m_children; // in display order
    std::vector<CTimeEntry*> m_timeEntries;
    std::vector<CExpenseEntry*> m_expenseEntries;
    std::vector<CToDoEntry*> m_todoEntries;
};
