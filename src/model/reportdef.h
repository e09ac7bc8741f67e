#pragma once

#include "model/archive.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The font of printed output, as stored with a report definition.
struct ReportFont
{
    int32_t height = 0; // minus the size in tenths of a point; 0 means 9 points
    int32_t width = 0;
    int32_t escapement = 0;
    int32_t orientation = 0;
    int32_t weight = 400;
    uint8_t italic = 0;
    uint8_t underline = 0;
    uint8_t strikeOut = 0;
    uint8_t charSet = 1;
    uint8_t outPrecision = 2;
    uint8_t clipPrecision = 1;
    uint8_t quality = 0;
    uint8_t pitchAndFamily = 0;
    std::string faceName = "Arial";

    // Size in points (9 for a height of 0).
    int PointSize() const { return height == 0 ? 9 : -height / 10; }
};

// A saved report definition. Every kind keeps its members here; the kinds differ
// in their class name and in which members they store (Serialize).
class CReport : public CObject
{
public:
    enum Kind : uint32_t
    {
        timeDetail = 0,
        timeSummary = 1,
        expenseDetail = 2,
        expenseSummary = 3,
        todoDetail = 4,
        invoice = 5,
        timeExpenseSummary = 6,
        billingSummary = 7,
    };

    enum Preset : uint32_t
    {
        customDates = 0,
        currentWeek = 1,
        previousWeek = 2,
        currentMonth = 3,
        previousMonth = 4,
        currentYear = 5,
        previousYear = 6,
        allDates = 7,
        today = 8,
        yesterday = 9,
        currentHalfMonth = 10,
        previousHalfMonth = 11,
    };

    enum TimeFrame : uint32_t
    {
        frameTotal = 0,
        frameYear = 1,
        frameMonth = 2,
        frameWeek = 3,
        frameDay = 4,
    };

    // Grouping codes of the summarize level (task levels are 0 and up).
    static constexpr int32_t groupActivity = -1;
    static constexpr int32_t groupExpenseType = -2;
    static constexpr int32_t groupPaymentMethod = -3;
    static constexpr int32_t groupTaskId = -4;

    // Field flags: one bit per optional column; the meaning depends on the kind's family.
    static constexpr uint32_t fieldTaskId = 0x1;
    static constexpr uint32_t field2 = 0x10;
    static constexpr uint32_t field3 = 0x100;
    static constexpr uint32_t field4 = 0x1000;
    static constexpr uint32_t field5 = 0x10000;
    static constexpr uint32_t fieldNote = 0x100000;
    static constexpr uint32_t field7 = 0x1000000;

    explicit CReport(Kind kind) : m_kind(kind) {}

    const char* GetClassName() const override;
    // Versions 5 to 11 (5 to 8 have old dates, no orientation and no font).
    void Serialize(CArchive& ar) override;

    // Makes an empty definition of a class named in a stream, or nullptr.
    static std::unique_ptr<CReport> CreateByClassName(std::string_view className);
    static std::unique_ptr<CReport> Create(Kind kind);
    static const char* ClassNameOf(Kind kind);

    bool IsSummaryKind() const;
    bool IsDetailKind() const;
    bool TestField(uint32_t mask) const { return (m_fieldFlags & mask) == mask; }
    void SetField(uint32_t mask) { m_fieldFlags |= mask; }
    uint32_t GetFirstSelectedTask() const { return m_selectedTasks.empty() ? 0 : m_selectedTasks.front(); }

    uint32_t m_id = 0;
    uint32_t m_kind;
    std::string m_name;
    uint32_t m_preset = customDates;
    CDateTime m_startDate;
    CDateTime m_endDate;
    std::vector<uint32_t> m_selectedTasks;
    uint32_t m_fieldFlags = 0;
    bool m_includeNonBillable = true; // to-do kind: include completed entries
    bool m_includeBillable = true;    // to-do kind: include outstanding entries
    bool m_showEmptyRows = false;
    uint32_t m_orientation = 0;
    ReportFont m_font;

    // Summary kinds and the invoice.
    int32_t m_summarizeLevel = 1;
    uint32_t m_timeFrame = frameTotal;
    bool m_rollup = false;
    bool m_showTotals = false;
    // Id filters: exactly one element 0 means all.
    std::vector<uint32_t> m_selectedActivities{0};
    std::vector<uint32_t> m_selectedExpenseTypes{0};
    std::vector<uint32_t> m_selectedPaymentMethods{0};

    // Detail kinds.
    bool m_selectedTasksOnly = false;
    uint32_t m_detailReserved = 0; // stored by the time detail kind and written back unchanged

    // Invoice.
    std::string m_recipient;
    bool m_showTerms = false;
    std::string m_terms;
    bool m_addTax = false;
    double m_taxRate = 0.0;
    uint32_t m_numberMode = 0; // 0 use next number, 1 use this number
    int32_t m_invoiceNumber = 0;

private:
    // Reads a detail definition's members after "selected tasks only", in either of
    // the two forms that files hold.
    void ReadDetailMembers(CArchive& ar);

    // Read as the base class alone (class name "CReport"): only the common members are
    // stored; once read it takes the kind it stores.
    bool m_baseLayout = false;
};
