#include "model/reportdef.h"

#include <optional>

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

// What follows "selected tasks only" in a detail definition. Files exist with and
// without the further 32-bit member before the orientation, for every detail kind.
struct DetailTail
{
    uint32_t reserved = 0;
    uint32_t orientation = 0;
    ReportFont font;
    std::vector<uint32_t> tasks;
    std::vector<uint32_t> activities;
    std::vector<uint32_t> expenseTypes;
    std::vector<uint32_t> paymentMethods;
};

DetailTail ReadDetailTail(CArchive& ar, uint32_t kind, bool withReserved)
{
    DetailTail tail;
    if (withReserved)
        tail.reserved = ar.ReadU32();
    tail.orientation = ar.ReadU32();
    ReadFont(ar, tail.font);
    tail.tasks = ar.ReadIdArray();
    if (kind == CReport::timeDetail)
        tail.activities = ar.ReadIdArray();
    else if (kind == CReport::expenseDetail)
    {
        tail.expenseTypes = ar.ReadIdArray();
        tail.paymentMethods = ar.ReadIdArray();
    }
    return tail;
}

// Read one member off, the orientation and the font take values no definition holds.
bool IsSane(const DetailTail& tail)
{
    const ReportFont& f = tail.font;
    auto within = [](int32_t v, int32_t low, int32_t high) { return v >= low && v <= high; };
    if (tail.orientation > 2 || !within(f.height, -10000, 10000) || !within(f.width, 0, 10000) ||
        !within(f.escapement, -3600, 3600) || !within(f.orientation, -3600, 3600) ||
        !within(f.weight, 0, 1000) || f.italic > 1 || f.underline > 1 || f.strikeOut > 1 ||
        f.faceName.size() > 96)
        return false;
    for (char c : f.faceName)
        if (static_cast<unsigned char>(c) < 0x20)
            return false;
    for (uint32_t id : tail.tasks)
        if (id == 0)
            return false;
    return true;
}

// A detail definition is made sane before it is used: saved with an impossible
// orientation or font, or a task id 0, it could read back in the other form, four bytes
// off, and shift every record after it.
void MakeSane(uint32_t& orientation, ReportFont& font, std::vector<uint32_t>& tasks)
{
    if (orientation > 2)
        orientation = 0;
    DetailTail fontOnly;
    fontOnly.font = font;
    if (!IsSane(fontOnly))
        font = ReportFont{};
    std::erase(tasks, 0u);
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
    if (version >= 9 && detail)
    {
        m_selectedTasksOnly = ar.ReadU32() != 0;
        ReadDetailMembers(ar);
        return;
    }
    if (version >= 9)
    {
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
    if (IsDetailKind())
        MakeSane(m_orientation, m_font, m_selectedTasks);
    // From here on it is a definition of its kind like any other.
    m_baseLayout = false;
}

void CReport::ReadDetailMembers(CArchive& ar)
{
    const bool writesReserved = m_kind == timeDetail;
    auto apply = [this](DetailTail tail, bool withReserved) {
        MakeSane(tail.orientation, tail.font, tail.tasks);
        // Only Time Detail writes the member back.
        m_detailReserved = withReserved && m_kind == timeDetail ? tail.reserved : 0;
        m_orientation = tail.orientation;
        m_font = tail.font;
        m_selectedTasks = tail.tasks;
        if (m_kind == timeDetail)
            m_selectedActivities = tail.activities;
        if (m_kind == expenseDetail)
        {
            m_selectedExpenseTypes = tail.expenseTypes;
            m_selectedPaymentMethods = tail.paymentMethods;
        }
        m_baseLayout = false;
    };

    // The form this kind writes is tried first; the other form wins when only it
    // reads as a sane definition. A definition is never a reason to refuse a file:
    // when neither reads sanely, the first form that reads at all is taken.
    const uint64_t start = ar.GetOffset();
    std::optional<ArchiveError> firstError;
    std::optional<DetailTail> first;
    try
    {
        first = ReadDetailTail(ar, m_kind, writesReserved);
        if (IsSane(*first))
        {
            apply(*first, writesReserved);
            return;
        }
    }
    catch (const ArchiveError& e)
    {
        firstError = e;
    }
    const uint64_t firstEnd = ar.GetOffset();
    ar.Rewind(start);
    try
    {
        const DetailTail second = ReadDetailTail(ar, m_kind, !writesReserved);
        if (IsSane(second) || !first)
        {
            apply(second, !writesReserved);
            return;
        }
    }
    catch (const ArchiveError&)
    {
        if (!first)
            throw *firstError;
    }
    ar.Rewind(firstEnd);
    apply(*first, writesReserved);
}
