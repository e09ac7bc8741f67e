#include "model/catalogs.h"

namespace
{
constexpr uint32_t kVersion = 11;
}

void CActivity::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteString(m_name);
        ar.WriteU32(m_flag1);
        ar.WriteU32(m_flag2);
        ar.WriteF64(m_rate);
        return;
    }
    // Files before version 9 keep activities as id and name pairs in the document.
    ar.ReadVersion("CActivity", 9, kVersion);
    m_id = ar.ReadU32();
    m_name = ar.ReadString();
    m_flag1 = ar.ReadU32();
    m_flag2 = ar.ReadU32();
    m_rate = ar.ReadF64();
}

void CActivityRate::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_activityId);
        ar.WriteU32(m_taskId);
        ar.WriteU32(m_reserved);
        ar.WriteU32(m_billable ? 1 : 0);
        ar.WriteF64(m_rate);
        return;
    }
    ar.ReadVersion("CActivityRate", 9, kVersion);
    m_activityId = ar.ReadU32();
    m_taskId = ar.ReadU32();
    m_reserved = ar.ReadU32();
    m_billable = ar.ReadU32() != 0;
    m_rate = ar.ReadF64();
}

void CExpenseType::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteString(m_name);
        ar.WriteU32(m_flag);
        return;
    }
    ar.ReadVersion("CExpenseType", 5, kVersion);
    m_id = ar.ReadU32();
    m_name = ar.ReadString();
    m_flag = ar.ReadU32();
}

void CPaymentMethod::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteString(m_name);
        ar.WriteString(m_accountNumber);
        ar.WriteU32(m_accountType);
        return;
    }
    ar.ReadVersion("CPaymentMethod", 5, kVersion);
    m_id = ar.ReadU32();
    m_name = ar.ReadString();
    m_accountNumber = ar.ReadString();
    m_accountType = ar.ReadU32();
}

void CContact::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteString(m_first);
        ar.WriteString(m_middle);
        ar.WriteString(m_last);
        ar.WriteString(m_address);
        ar.WriteString(m_phone);
        ar.WriteString(m_fax);
        ar.WriteString(m_email);
        ar.WriteString(m_notes);
        return;
    }
    const uint32_t version = ar.ReadVersion("CContact", 9, kVersion);
    m_id = ar.ReadU32();
    m_first = ar.ReadString();
    m_middle = ar.ReadString();
    m_last = ar.ReadString();
    m_address = ar.ReadString();
    m_phone = ar.ReadString();
    m_fax = ar.ReadString();
    m_email = ar.ReadString();
    m_notes = version >= 10 ? ar.ReadString() : std::string();
}

std::string CContact::GetDisplayName() const
{
    std::string name = m_last;
    if (!m_last.empty() && (!m_first.empty() || !m_middle.empty()))
        name += ',';
    if (!m_first.empty())
        name += ' ' + m_first;
    if (!m_middle.empty())
        name += ' ' + m_middle;
    return name;
}
