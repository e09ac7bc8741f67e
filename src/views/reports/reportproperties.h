#pragma once

#include "views/entrysheets.h"
#include "views/reports/reportparts.h"

#include <memory>

class CReport;

// The property pages of a report definition; each holds one group of controls.
class CReportPropertyPage2 : public CDatesPart // "Dates"
{
    Q_OBJECT

public:
    CReportPropertyPage2(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage3 : public CTasksPart // "Tasks"
{
    Q_OBJECT

public:
    CReportPropertyPage3(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage4 : public CSummarizePart // "Summarize"
{
    Q_OBJECT

public:
    CReportPropertyPage4(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage5 : public CFieldsPart // "Display"
{
    Q_OBJECT

public:
    CReportPropertyPage5(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage6 : public CFilterList // "Activities"
{
    Q_OBJECT

public:
    CReportPropertyPage6(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage7 : public CFilterList // "Expense Types"
{
    Q_OBJECT

public:
    CReportPropertyPage7(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage8 : public CFilterList // "Payment Methods"
{
    Q_OBJECT

public:
    CReportPropertyPage8(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage9 : public CInvoicePart // "Invoice"
{
    Q_OBJECT

public:
    CReportPropertyPage9(CMainFrame& frame, QWidget* parent);
};

class CReportPropertyPage10 : public CPrintOptionsPart // "Print Options"
{
    Q_OBJECT

public:
    CReportPropertyPage10(CMainFrame& frame, QWidget* parent);
};

// The property sheet of a report definition: the pages its kind uses, in the order
// dates, tasks, filters, summarize, display, invoice, print options. OK writes the
// pages into the definition, marks the document modified and refreshes the views;
// Cancel leaves the definition as it was.
class CReportProperties : public CPropertySheet
{
    Q_OBJECT

public:
    CReportProperties(CMainFrame& frame, CReport& report, QWidget* parent);

    uint32_t ReportId() const { return m_reportId; }
    CReportPropertyPage2* DatesPage() const { return m_dates; }
    CReportPropertyPage3* TasksPage() const { return m_tasks; }
    CReportPropertyPage6* ActivitiesPage() const { return m_activities; }
    CReportPropertyPage7* ExpenseTypesPage() const { return m_expenseTypes; }
    CReportPropertyPage8* PaymentMethodsPage() const { return m_paymentMethods; }
    CReportPropertyPage4* SummarizePage() const { return m_summarize; }
    CReportPropertyPage5* DisplayPage() const { return m_display; }
    CReportPropertyPage9* InvoicePage() const { return m_invoice; }
    CReportPropertyPage10* PrintPage() const { return m_print; }
    // The tab titles in order.
    QStringList PageTitles() const;

protected:
    bool Apply() override;

private:
    void OnPageChanged(int index);

    uint32_t m_reportId;
    uint32_t m_kind;
    CReportPropertyPage2* m_dates = nullptr;
    CReportPropertyPage3* m_tasks = nullptr;
    CReportPropertyPage6* m_activities = nullptr;
    CReportPropertyPage7* m_expenseTypes = nullptr;
    CReportPropertyPage8* m_paymentMethods = nullptr;
    CReportPropertyPage4* m_summarize = nullptr;
    CReportPropertyPage5* m_display = nullptr;
    CReportPropertyPage9* m_invoice = nullptr;
    CReportPropertyPage10* m_print = nullptr;
    int m_currentPage = 0;
};

class CTimeSummaryProperties : public CReportProperties
{
    Q_OBJECT

public:
    CTimeSummaryProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CExpenseSummaryProperties : public CReportProperties
{
    Q_OBJECT

public:
    CExpenseSummaryProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CTimeExpenseSummaryProperties : public CReportProperties
{
    Q_OBJECT

public:
    CTimeExpenseSummaryProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CBillingSummaryProperties : public CReportProperties
{
    Q_OBJECT

public:
    CBillingSummaryProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CTimeDetailProperties : public CReportProperties
{
    Q_OBJECT

public:
    CTimeDetailProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CExpenseDetailProperties : public CReportProperties
{
    Q_OBJECT

public:
    CExpenseDetailProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CToDoDetailProperties : public CReportProperties
{
    Q_OBJECT

public:
    CToDoDetailProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

class CInvoiceProperties : public CReportProperties
{
    Q_OBJECT

public:
    CInvoiceProperties(CMainFrame& frame, CReport& report, QWidget* parent = nullptr);
};

// The property sheet made for the definition's kind.
std::unique_ptr<CReportProperties> CreateReportProperties(CMainFrame& frame, CReport& report,
                                                          QWidget* parent = nullptr);
