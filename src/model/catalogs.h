#pragma once

#include "model/archive.h"

#include <cstdint>
#include <string>

// The small records that entries and tasks name by id.

class CActivity : public CObject
{
public:
    const char* GetClassName() const override { return "CActivity"; }
    void Serialize(CArchive& ar) override; // versions 9 to 11

    uint32_t m_id = 0;
    std::string m_name;
    uint32_t m_flag1 = 0;
    uint32_t m_flag2 = 0;
    double m_rate = 0.0;
};

// A task's own billing for one activity; kept in the task's map under the activity id.
class CActivityRate : public CObject
{
public:
    const char* GetClassName() const override { return "CActivityRate"; }
    void Serialize(CArchive& ar) override; // versions 9 to 11

    uint32_t m_activityId = 0;
    uint32_t m_taskId = 0;
    uint32_t m_reserved = 0;
    bool m_billable = true;
    double m_rate = 0.0;
};

class CExpenseType : public CObject
{
public:
    // Expense entries of this type carry a distance, whatever its name.
    static constexpr uint32_t kMileageId = 9;

    const char* GetClassName() const override { return "CExpenseType"; }
    void Serialize(CArchive& ar) override; // versions 5 to 11

    uint32_t m_id = 0;
    std::string m_name;
    uint32_t m_flag = 0;
};

class CPaymentMethod : public CObject
{
public:
    const char* GetClassName() const override { return "CPaymentMethod"; }
    void Serialize(CArchive& ar) override; // versions 5 to 11

    uint32_t m_id = 0;
    std::string m_name;
    std::string m_accountNumber;
    // Index in "Company Credit Card", "Personal Credit Card", "Cash", "Direct Bill",
    // "Company Check", "Personal Check".
    uint32_t m_accountType = 0;
};

class CContact : public CObject
{
public:
    const char* GetClassName() const override { return "CContact"; }
    void Serialize(CArchive& ar) override; // versions 9 to 11 (9 has no notes)

    // Last name, "," when first or middle follow, then " first" and " middle".
    std::string GetDisplayName() const;

    uint32_t m_id = 0;
    std::string m_first;
    std::string m_middle;
    std::string m_last;
    std::string m_address;
    std::string m_phone;
    std::string m_fax;
    std::string m_email;
    std::string m_notes;
};
