#include "model/reportdef.h"

namespace
{
constexpr uint32_t kVersion = 11;

struct KindClass
{
    CReport::Kind kind;
    const char* className;
};

const KindClass kKindClasses[] = {
    {CReport::timeDetail, "CTimeDetailReport"},
    {CReport::timeSummary, "CTimeSummaryReport"},
    {CReport::expenseDetail, "CExpenseDetailReport"},
    {CReport::expenseSummary, "CExpenseSummaryReport"},
    {CReport::todoDetail, "CToDoDetailReport"},
    {CReport::invoice, "CInvoiceReport"},
    {CReport::timeExpenseSummary, "CTimeExpenseSummaryReport"},
    {CReport::billingSummary, "CBillingSummaryReport"},
};

void ReadFont(CArchive& ar, ReportFont& f)
{
    f.height = int32_t(ar.ReadU32());
    f.width = int32_t(ar.ReadU32());
    f.escapement = int32_t(ar.ReadU32());
    f.orientation = int32_t(ar.ReadU32());
    f.weight = int32_t(ar.ReadU32());
    f.italic = ar.ReadU8();
    f.underline = ar.ReadU8();
    f.strikeOut = ar.ReadU8();
    f.charSet = ar.ReadU8();
    f.outPrecision = ar.ReadU8();
    f.clipPrecision = ar.ReadU8();
    f.quality = ar.ReadU8();
    f.pitchAndFamily = ar.ReadU8();
    f.faceName = ar.ReadString();
}

void WriteFont(CArchive& ar, const ReportFont& f)
{
    ar.WriteU32(uint32_t(f.height));
    ar.WriteU32(uint32_t(f.width));
    ar.WriteU32(uint32_t(f.escapement));
    ar.WriteU32(uint32_t(f.orientation));
    ar.WriteU32(uint32_t(f.weight));
    ar.WriteU8(f.italic);
    ar.WriteU8(f.underline);
    ar.WriteU8(f.strikeOut);
    ar.WriteU8(f.charSet);
    ar.WriteU8(f.outPrecision);
    ar.WriteU8(f.clipPrecision);
    ar.WriteU8(f.quality);
    ar.WriteU8(f.pitchAndFamily);
    ar.WriteString(f.faceName);
}

} // namespace

const char* CReport::ClassNameOf(Kind kind)
{
    for (const KindClass& kc : kKindClasses)
        if (kc.kind == kind)
            return kc.className;
    return "CReport";
}

const char* CReport::GetClassName() const { return ClassNameOf(Kind(m_kind)); }

std::unique_ptr<CReport> CReport::Create(Kind kind)
{
    auto report = std::make_unique<CReport>(kind);
    if (kind == todoDetail)
    {
        // Outstanding and completed items alike.
        report->m_includeBillable = true;
        report->m_includeNonBillable = true;
    }
    return report;
}

std::unique_ptr<CReport> CReport::CreateByClassName(std::string_view className)
{
    for (const KindClass& kc : kKindClasses)
        if (className == kc.className)
            return Create(kc.kind);
    if (className == "CReport")
    {
        // The base class alone: its stored kind decides what it becomes once read.
        auto report = std::make_unique<CReport>(timeDetail);
        report->m_baseLayout = true;
        return report;
    }
    return nullptr;
}

bool CReport::IsSummaryKind() const
{
    return m_kind == timeSummary || m_kind == expenseSummary || m_kind == timeExpenseSummary ||
           m_kind == billingSummary;
}

bool CReport::IsDetailKind() const
{
    return m_kind == timeDetail || m_kind == expenseDetail || m_kind == todoDetail;
}

void CReport::Serialize(CArchive& ar)
{
    // The members a class stores follow its class; a bare CReport stores the common ones.
    const bool summary = !m_baseLayout && IsSummaryKind();
    const bool isInvoice = !m_baseLayout && m_kind == invoice;
    const bool detail = !m_baseLayout && IsDetailKind();
    const bool grid = summary || isInvoice; // members of the summary grid

    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteU32(m_kind);
        ar.WriteString(m_name);
        ar.WriteDate(m_startDate);
        ar.WriteDate(m_endDate);
        if (grid)
            ar.WriteU32(uint32_t(m_summarizeLevel));
        ar.WriteU32(m_preset);
        if (grid)
            ar.WriteU32(m_timeFrame);
        ar.WriteU32(m_fieldFlags);
        ar.WriteU32(m_showEmptyRows);
        if (summary)
        {
            ar.WriteU32(m_rollup);
            ar.WriteU32(m_showTotals);
        }
        ar.WriteU32(m_includeBillable);
        ar.WriteU32(m_includeNonBillable);
        if (detail)
        {
            ar.WriteU32(m_selectedTasksOnly);
            if (m_kind == timeDetail)
                ar.WriteU32(m_detailReserved);
        }
        if (isInvoice)
        {
            ar.WriteString(m_recipient);
            ar.WriteU32(m_showTerms);
            ar.WriteString(m_terms);
            ar.WriteU32(m_addTax);
            ar.WriteF64(m_taxRate);
            ar.WriteU32(m_numberMode);
            ar.WriteU32(uint32_t(m_invoiceNumber));
        }
        ar.WriteU32(m_orientation);
        WriteFont(ar, m_font);
        ar.WriteIdArray(m_selectedTasks);
        if (!m_baseLayout)
        {
            if (m_kind == timeDetail || m_kind == timeSummary || m_kind == billingSummary ||
                m_kind == timeExpenseSummary || m_kind == invoice)
                ar.WriteIdArray(m_selectedActivities);
            if (m_kind == expenseDetail || m_kind == expenseSummary ||
                m_kind == timeExpenseSummary || m_kind == invoice)
            {
                ar.WriteIdArray(m_selectedExpenseTypes);
                ar.WriteIdArray(m_selectedPaymentMethods);
            }
        }
        return;
    }

    const uint32_t version = ar.ReadVersion(GetClassName(), 5, kVersion);
    m_id = ar.ReadU32();
    const uint32_t storedKind = ar.ReadU32();
    if (m_baseLayout)
    {
        if (storedKind > billingSummary)
            ar.Fail(ArchiveError::badFormat, "report kind " + std::to_string(storedKind) + " is unknown");
        m_kind = storedKind;
    }
    m_name = ar.ReadString();
    if (version >= 9)
    {
        m_startDate = ar.ReadDate();
        m_endDate = ar.ReadDate();
    }
    else
    {
        // Seconds since 1970; 0 stands for no date.
        m_startDate = ar.ReadOldDate(true);
        m_endDate = ar.ReadOldDate(true);
    }
    if (grid)
        m_summarizeLevel = int32_t(ar.ReadU32());
    m_preset = ar.ReadU32();
    if (grid)
        m_timeFrame = ar.ReadU32();
    m_fieldFlags = ar.ReadU32();
    m_showEmptyRows = ar.ReadU32() != 0;
    if (summary)
    {
        m_rollup = ar.ReadU32() != 0;
        m_showTotals = ar.ReadU32() != 0;
    }
    m_includeBillable = ar.ReadU32() != 0;
    m_includeNonBillable = ar.ReadU32() != 0;
    if (version >= 9)
    {
        if (detail)
        {
            m_selectedTasksOnly = ar.ReadU32() != 0;
            if (m_kind == timeDetail)
                m_detailReserved = ar.ReadU32();
        }
        if (isInvoice)
        {
            m_recipient = ar.ReadString();
            m_showTerms = ar.ReadU32() != 0;
            m_terms = ar.ReadString();
            m_addTax = ar.ReadU32() != 0;
            m_taxRate = ar.ReadF64();
            m_numberMode = ar.ReadU32();
            m_invoiceNumber = int32_t(ar.ReadU32());
        }
        m_orientation = ar.ReadU32();
        ReadFont(ar, m_font);
    }
    else
    {
        m_orientation = 0;
        m_font = ReportFont();
    }
    m_selectedTasks = ar.ReadIdArray();
    if (!m_baseLayout)
    {
        if (m_kind == timeDetail || m_kind == timeSummary || m_kind == billingSummary ||
            m_kind == timeExpenseSummary || m_kind == invoice)
            m_selectedActivities = ar.ReadIdArray();
        if (m_kind == expenseDetail || m_kind == expenseSummary || m_kind == timeExpenseSummary ||
            m_kind == invoice)
        {
            m_selectedExpenseTypes = ar.ReadIdArray();
            m_selectedPaymentMethods = ar.ReadIdArray();
        }
    }
    // From here on it is a definition of its kind like any other.
    m_baseLayout = false;
}
