#include "model/task.h"

namespace
{
constexpr uint32_t kVersion = 11;
constexpr uint32_t kRootId = 1;
} // namespace

void CTask::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        // The transient fields mean nothing outside one session.
        m_transient1 = 0;
        m_transient2 = 0;
        // The root has nothing to inherit from: its own values are the ones that
        // count, and this layout keeps them only with the flags off. An older file
        // may have set them on the root; it is written with them off.
        const bool root = m_id == kRootId;
        const bool useParentBilling = m_useParentBilling && !root;
        const bool useParentTaskId = m_useParentTaskId && !root;
        const bool useParentContact = m_useParentContact && !root;
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteU32(m_parentId);
        ar.WriteString(m_name);
        ar.WriteU16(m_level);
        ar.WriteString(m_abbreviation);
        ar.WriteU32(useParentBilling);
        ar.WriteU32(useParentTaskId);
        ar.WriteU32(m_expanded);
        ar.WriteU32(m_transient2);
        ar.WriteU32(m_transient1);
        ar.WriteString(m_lastNote);
        ar.WriteU32(m_lastActivityId);
        ar.WriteU32(m_inactive);
        ar.WriteU32(useParentContact);
        ar.WriteU32(m_projectId);
        ar.WriteF64(m_hoursEstimate);
        ar.WriteF64(m_costEstimate);
        ar.WriteString(m_notes);
        if (!useParentTaskId)
            ar.WriteString(m_taskId);
        if (!useParentBilling)
        {
            ar.WriteU32(m_billable);
            ar.WriteF64(m_regularRate);
            ar.WriteU32(m_useActivityRates);
            ar.WriteF32(m_overtimeMultiplier);
        }
        if (!useParentContact)
            ar.WriteU32(m_contactId);
        if (m_projectId != 0)
        {
            ar.WriteU32(m_projectTaskNumber);
            ar.WriteU32(m_todoFlag);
            ar.WriteF64(m_planWorkEstimate);
            ar.WriteF64(m_planCostEstimate);
        }
        ar.WriteU32(uint32_t(m_activityRates.size()));
        for (auto& [activityId, rate] : m_activityRates)
            ar.WriteObject(*rate);
        return;
    }

    const uint32_t version = ar.ReadVersion("CTask", 5, kVersion);
    if (version <= 8)
    {
        m_id = ar.ReadU32();
        m_parentId = ar.ReadU32();
        m_name = ar.ReadString();
        m_level = uint16_t(ar.ReadU32());
        m_abbreviation = ar.ReadString();
        m_billable = ar.ReadU32() != 0;
        m_regularRate = version >= 7 ? ar.ReadF64() : double(ar.ReadF32());
        m_useParentBilling = ar.ReadU32() != 0;
        m_taskId = ar.ReadString();
        m_useParentTaskId = ar.ReadU32() != 0;
        m_expanded = ar.ReadU32() != 0;
        ar.ReadU32(); // transient 2
        ar.ReadU32(); // transient 1
        m_lastNote = ar.ReadString();
        m_lastActivityId = ar.ReadU32();

        // What these layouts did not have yet.
        m_useParentContact = m_id != kRootId;
        m_contactId = 0;
        m_projectId = 0;
        m_projectTaskNumber = 0;
        m_todoFlag = 0;
        m_planWorkEstimate = 0.0;
        m_planCostEstimate = 0.0;
        m_overtimeMultiplier = 1.0f;
        m_hoursEstimate = 0.0;
        m_costEstimate = 0.0;
        m_useActivityRates = false;
        m_activityRates.clear();
        m_inactive = false;
        m_transient1 = 0;
        m_transient2 = 0;
        m_notes.clear();
        if (m_lastActivityId == uint32_t(-1))
            m_lastActivityId = 0;
        if (m_parentId == m_id)
            m_parentId = 0;
        // These layouts stored billing and task ID for every task, whatever its flags:
        // keep them as read. The walk up the tree ends at the root, whose own values
        // then count even with its flags set.
        return;
    }

    m_id = ar.ReadU32();
    m_parentId = ar.ReadU32();
    m_name = ar.ReadString();
    m_level = ar.ReadU16();
    m_abbreviation = ar.ReadString();
    m_useParentBilling = ar.ReadU32() != 0;
    m_useParentTaskId = ar.ReadU32() != 0;
    m_expanded = ar.ReadU32() != 0;
    m_transient2 = ar.ReadU32();
    m_transient1 = ar.ReadU32();
    m_lastNote = ar.ReadString();
    m_lastActivityId = ar.ReadU32();
    m_inactive = ar.ReadU32() != 0;
    m_useParentContact = ar.ReadU32() != 0;
    m_projectId = ar.ReadU32();
    m_hoursEstimate = ar.ReadF64();
    m_costEstimate = ar.ReadF64();
    m_notes = version >= 10 ? ar.ReadString() : std::string();

    m_taskId = m_useParentTaskId ? std::string() : ar.ReadString();
    m_billable = true;
    m_regularRate = 0.0;
    m_useActivityRates = false;
    m_overtimeMultiplier = 1.0f;
    if (!m_useParentBilling)
    {
        m_billable = ar.ReadU32() != 0;
        m_regularRate = ar.ReadF64();
        m_useActivityRates = ar.ReadU32() != 0;
        m_overtimeMultiplier = ar.ReadF32();
    }
    m_contactId = m_useParentContact ? 0 : ar.ReadU32();
    m_projectTaskNumber = 0;
    m_todoFlag = 0;
    m_planWorkEstimate = 0.0;
    m_planCostEstimate = 0.0;
    if (m_projectId != 0)
    {
        m_projectTaskNumber = ar.ReadU32();
        m_todoFlag = ar.ReadU32();
        m_planWorkEstimate = ar.ReadF64();
        m_planCostEstimate = ar.ReadF64();
    }

    m_activityRates.clear();
    const uint32_t rates = ar.ReadU32();
    for (uint32_t i = 0; i < rates; ++i)
    {
        std::unique_ptr<CActivityRate> rate = ar.ReadObjectOf<CActivityRate>("CActivityRate");
        if (rate)
        {
            const uint32_t activityId = rate->m_activityId;
            m_activityRates[activityId] = std::move(rate);
        }
    }
}

const CTask* CTask::GetBillingTask() const
{
    const CTask* t = this;
    while (t->m_useParentBilling && t->m_parent)
        t = t->m_parent;
    return t;
}

const CTask* CTask::GetTaskIdTask() const
{
    const CTask* t = this;
    while (t->m_useParentTaskId && t->m_parent)
        t = t->m_parent;
    return t;
}

const CTask* CTask::GetContactTask() const
{
    const CTask* t = this;
    while (t->m_useParentContact && t->m_parent)
        t = t->m_parent;
    return t;
}

bool CTask::IsBillableFor(uint32_t activityId) const
{
    const CTask* billing = GetBillingTask();
    if (billing->m_useActivityRates)
    {
        auto it = billing->m_activityRates.find(activityId);
        if (it != billing->m_activityRates.end())
            return it->second->m_billable;
    }
    return billing->m_billable;
}

double CTask::GetRateFor(uint32_t activityId) const
{
    const CTask* billing = GetBillingTask();
    if (billing->m_useActivityRates)
    {
        auto it = billing->m_activityRates.find(activityId);
        if (it != billing->m_activityRates.end())
            return it->second->m_rate;
    }
    return billing->m_regularRate;
}

float CTask::GetEffectiveOvertimeMultiplier() const { return GetBillingTask()->m_overtimeMultiplier; }

bool CTask::IsInactive() const
{
    for (const CTask* t = this; t; t = t->m_parent)
        if (t->m_inactive)
            return true;
    return false;
}

const std::string& CTask::GetAbbreviationOrName() const
{
    return m_abbreviation.empty() ? m_name : m_abbreviation;
}

bool CTask::IsSelfOrDescendantOf(const CTask* ancestor) const
{
    for (const CTask* t = this; t; t = t->m_parent)
        if (t == ancestor)
            return true;
    return false;
}

int CTask::GetDepth() const
{
    int depth = 0;
    for (const CTask* t = m_parent; t; t = t->m_parent)
        ++depth;
    return depth;
}
