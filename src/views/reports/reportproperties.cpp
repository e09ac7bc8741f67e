#include "views/reports/reportproperties.h"

#include "model/timekeeperdoc.h"
#include "reports/reportoptions.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QLayout>
#include <QTabWidget>

#include <mutex>

CReportPropertyPage2::CReportPropertyPage2(CMainFrame& frame, QWidget* parent)
    : CDatesPart(frame, ReportPartMode::property, parent)
{
}

CReportPropertyPage3::CReportPropertyPage3(CMainFrame& frame, QWidget* parent)
    : CTasksPart(frame, ReportPartMode::property, parent)
{
    layout()->setContentsMargins(9, 9, 9, 9);
}

CReportPropertyPage4::CReportPropertyPage4(CMainFrame& frame, QWidget* parent)
    : CSummarizePart(frame, parent)
{
}

CReportPropertyPage5::CReportPropertyPage5(CMainFrame& frame, QWidget* parent)
    : CFieldsPart(frame, parent)
{
}

CReportPropertyPage6::CReportPropertyPage6(CMainFrame& frame, QWidget* parent)
    : CFilterList(frame.Doc(), Catalog::activities, tr("Include Activities"), parent)
{
    layout()->setContentsMargins(9, 9, 9, 9);
}

CReportPropertyPage7::CReportPropertyPage7(CMainFrame& frame, QWidget* parent)
    : CFilterList(frame.Doc(), Catalog::expenseTypes, tr("Include Expense Types"), parent)
{
    layout()->setContentsMargins(9, 9, 9, 9);
}

CReportPropertyPage8::CReportPropertyPage8(CMainFrame& frame, QWidget* parent)
    : CFilterList(frame.Doc(), Catalog::paymentMethods, tr("Include Payment Methods"), parent)
{
    layout()->setContentsMargins(9, 9, 9, 9);
}

CReportPropertyPage9::CReportPropertyPage9(CMainFrame& frame, QWidget* parent)
    : CInvoicePart(frame, parent)
{
}

CReportPropertyPage10::CReportPropertyPage10(CMainFrame& frame, QWidget* parent)
    : CPrintOptionsPart(frame, ReportPartMode::property, parent)
{
}

CReportProperties::CReportProperties(CMainFrame& frame, CReport& report, QWidget* parent)
    : CPropertySheet(frame, tr("%1 Properties").arg(ToQ(report.m_name)), parent),
      m_reportId(report.m_id), m_kind(report.m_kind)
{
    setObjectName(QStringLiteral("reportProperties"));
    const uint32_t kind = report.m_kind;
    QTabWidget* tabs = Pages();
    m_dates = new CReportPropertyPage2(frame, tabs);
    tabs->addTab(m_dates, tr("Dates"));
    m_tasks = new CReportPropertyPage3(frame, tabs);
    tabs->addTab(m_tasks, tr("Tasks"));
    if (ReportKindHasActivities(kind))
    {
        m_activities = new CReportPropertyPage6(frame, tabs);
        tabs->addTab(m_activities, tr("Activities"));
    }
    if (ReportKindHasExpenseFilters(kind))
    {
        m_expenseTypes = new CReportPropertyPage7(frame, tabs);
        tabs->addTab(m_expenseTypes, tr("Expense Types"));
        m_paymentMethods = new CReportPropertyPage8(frame, tabs);
        tabs->addTab(m_paymentMethods, tr("Payment Methods"));
    }
    if (ReportKindHasSummarize(kind))
    {
        m_summarize = new CReportPropertyPage4(frame, tabs);
        tabs->addTab(m_summarize, tr("Summarize"));
    }
    m_display = new CReportPropertyPage5(frame, tabs);
    tabs->addTab(m_display, tr("Display"));
    if (kind == CReport::invoice)
    {
        m_invoice = new CReportPropertyPage9(frame, tabs);
        tabs->addTab(m_invoice, tr("Invoice"));
    }
    m_print = new CReportPropertyPage10(frame, tabs);
    tabs->addTab(m_print, tr("Print Options"));

    {
        std::lock_guard lock(frame.Doc().GetLock());
        m_dates->Load(report);
        m_tasks->Load(report);
        if (m_activities)
            m_activities->SetIds(report.m_selectedActivities);
        if (m_expenseTypes)
        {
            m_expenseTypes->SetIds(report.m_selectedExpenseTypes);
            m_paymentMethods->SetIds(report.m_selectedPaymentMethods);
        }
        if (m_summarize)
            m_summarize->Load(report);
        m_display->Load(report);
        if (m_invoice)
            m_invoice->Load(report);
        m_print->Load(report);
    }
    if (m_summarize)
    {
        // "Estimates" follows the level chosen on the Summarize page.
        m_display->SetSummarizeLevel(m_summarize->Level());
        connect(m_summarize, &CSummarizePart::LevelChanged, m_display,
                &CFieldsPart::SetSummarizeLevel);
    }
    connect(tabs, &QTabWidget::currentChanged, this, &CReportProperties::OnPageChanged);
    resize(560, 480);
}

void CReportProperties::OnPageChanged(int index)
{
    // The Dates page is checked when it is left; a failure brings it back.
    if (Pages()->widget(m_currentPage) == m_dates && index != m_currentPage)
    {
        const QSignalBlocker blocker(Pages());
        Pages()->setCurrentIndex(m_currentPage);
        if (!m_dates->Check())
            return;
        Pages()->setCurrentIndex(index);
    }
    m_currentPage = index;
}

QStringList CReportProperties::PageTitles() const
{
    QStringList titles;
    for (int i = 0; i < Pages()->count(); ++i)
        titles.append(Pages()->tabText(i));
    return titles;
}

bool CReportProperties::Apply()
{
    if (!m_dates->Check())
        return false;
    if (m_summarize && !m_summarize->Check())
        return false;
    CTimeKeeperDoc& doc = m_frame.Doc();
    {
        std::lock_guard lock(doc.GetLock());
        CReport* report = doc.GetReport(m_reportId);
        if (report == nullptr || report->m_kind != m_kind)
            return true;
        // The pages write into a copy, so that the definition changes at once or not at all.
        CReport draft = *report;
        m_dates->Store(draft);
        m_tasks->Store(draft);
        if (m_activities)
            draft.m_selectedActivities = m_activities->Ids();
        if (m_expenseTypes)
        {
            draft.m_selectedExpenseTypes = m_expenseTypes->Ids();
            draft.m_selectedPaymentMethods = m_paymentMethods->Ids();
        }
        if (m_summarize)
            m_summarize->Store(draft);
        m_display->Store(draft);
        if (m_invoice)
            m_invoice->Store(draft);
        m_print->Store(draft);
        *report = draft;
        doc.SetModifiedFlag(true);
    }
    doc.UpdateAllViews(hintReports);
    return true;
}

CTimeSummaryProperties::CTimeSummaryProperties(CMainFrame& frame, CReport& report, QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CExpenseSummaryProperties::CExpenseSummaryProperties(CMainFrame& frame, CReport& report,
                                                     QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CTimeExpenseSummaryProperties::CTimeExpenseSummaryProperties(CMainFrame& frame, CReport& report,
                                                             QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CBillingSummaryProperties::CBillingSummaryProperties(CMainFrame& frame, CReport& report,
                                                     QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CTimeDetailProperties::CTimeDetailProperties(CMainFrame& frame, CReport& report, QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CExpenseDetailProperties::CExpenseDetailProperties(CMainFrame& frame, CReport& report,
                                                   QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CToDoDetailProperties::CToDoDetailProperties(CMainFrame& frame, CReport& report, QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

CInvoiceProperties::CInvoiceProperties(CMainFrame& frame, CReport& report, QWidget* parent)
    : CReportProperties(frame, report, parent)
{
}

std::unique_ptr<CReportProperties> CreateReportProperties(CMainFrame& frame, CReport& report,
                                                          QWidget* parent)
{
    switch (report.m_kind)
    {
    case CReport::timeDetail:
        return std::make_unique<CTimeDetailProperties>(frame, report, parent);
    case CReport::timeSummary:
        return std::make_unique<CTimeSummaryProperties>(frame, report, parent);
    case CReport::expenseDetail:
        return std::make_unique<CExpenseDetailProperties>(frame, report, parent);
    case CReport::expenseSummary:
        return std::make_unique<CExpenseSummaryProperties>(frame, report, parent);
    case CReport::todoDetail:
        return std::make_unique<CToDoDetailProperties>(frame, report, parent);
    case CReport::invoice:
        return std::make_unique<CInvoiceProperties>(frame, report, parent);
    case CReport::timeExpenseSummary:
        return std::make_unique<CTimeExpenseSummaryProperties>(frame, report, parent);
    case CReport::billingSummary:
        return std::make_unique<CBillingSummaryProperties>(frame, report, parent);
    default:
        return nullptr;
    }
}
