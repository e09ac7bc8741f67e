#pragma once

#include "views/reports/reportparts.h"

#include <QWizard>
#include <QWizardPage>

#include <memory>

class CMainFrame;
class CReport;
class CReportSheet;
class QCheckBox;
class QLineEdit;
class QRadioButton;
class QVBoxLayout;

// One page of the report wizard: its title, its prompt and the picture on its left.
class CReportWizardPage : public QWizardPage
{
    Q_OBJECT

public:
    CReportWizardPage(CReportSheet& sheet, const QString& title, const QString& prompt);

protected:
    CReportSheet& Sheet() const { return m_sheet; }
    // The layout under the prompt, for the page's own controls.
    QVBoxLayout* Body() const { return m_body; }

private:
    CReportSheet& m_sheet;
    QVBoxLayout* m_body;
};

// "Report Type": one of the eight kinds.
class CReportPage1 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage1(CReportSheet& sheet);

    // The chosen kind, -1 when none is chosen.
    int Kind() const;
    QRadioButton* KindButton(uint32_t kind) const;
    bool validatePage() override;

private:
    QRadioButton* m_buttons[8];
};

// "Date Selection".
class CReportPage2 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage2(CReportSheet& sheet);
    CDatesPart* Part() const { return m_part; }
    bool validatePage() override;

private:
    CDatesPart* m_part;
};

// "Task Selection".
class CReportPage3 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage3(CReportSheet& sheet);
    CTasksPart* Part() const { return m_part; }
    void initializePage() override;

private:
    CTasksPart* m_part;
};

// "Summarize By".
class CReportPage4 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage4(CReportSheet& sheet);
    CSummarizePart* Part() const { return m_part; }
    void initializePage() override;
    bool validatePage() override;

private:
    CSummarizePart* m_part;
};

// "Additional Fields".
class CReportPage5 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage5(CReportSheet& sheet);
    CFieldsPart* Part() const { return m_part; }
    void initializePage() override;

private:
    CFieldsPart* m_part;
};

// "Report Name".
class CReportPage6 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage6(CReportSheet& sheet);
    QLineEdit* NameField() const { return m_name; }
    QCheckBox* ViewBox() const { return m_view; }
    bool validatePage() override;

private:
    QLineEdit* m_name;
    QCheckBox* m_view;
};

// "Activities", "Expense Types" and "Payment Methods".
class CReportFilterPage : public CReportWizardPage
{
    Q_OBJECT

public:
    CReportFilterPage(CReportSheet& sheet, CFilterList::Catalog catalog, const QString& title,
                      const QString& prompt);
    CFilterList* List() const { return m_list; }

private:
    CFilterList* m_list;
};

class CReportPage7 : public CReportFilterPage
{
    Q_OBJECT

public:
    explicit CReportPage7(CReportSheet& sheet);
};

class CReportPage8 : public CReportFilterPage
{
    Q_OBJECT

public:
    explicit CReportPage8(CReportSheet& sheet);
};

class CReportPage9 : public CReportFilterPage
{
    Q_OBJECT

public:
    explicit CReportPage9(CReportSheet& sheet);
};

// "Invoice".
class CReportPage10 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage10(CReportSheet& sheet);
    CInvoicePart* Part() const { return m_part; }

private:
    CInvoicePart* m_part;
};

// "Report Print Options".
class CReportPage11 : public CReportWizardPage
{
    Q_OBJECT

public:
    explicit CReportPage11(CReportSheet& sheet);
    CPrintOptionsPart* Part() const { return m_part; }

private:
    CPrintOptionsPart* m_part;
};

// The report wizard. Its pages ask for the kind, the dates, the tasks, the filters,
// the grouping, the optional columns, the invoice details, the print options and the
// name; which pages a report passes depends on its kind. Finish leaves the result in
// MakeReport; the caller adds it to the document.
class CReportSheet : public QWizard
{
    Q_OBJECT

public:
    enum PageId
    {
        pageType,
        pageDates,
        pageTasks,
        pageActivities,
        pageExpenseTypes,
        pagePaymentMethods,
        pageSummarize,
        pageFields,
        pageInvoice,
        pagePrint,
        pageName,
    };

    explicit CReportSheet(CMainFrame& frame, QWidget* parent = nullptr);
    ~CReportSheet() override;

    CMainFrame& Frame() const { return m_frame; }
    // The chosen kind, -1 while none is chosen.
    int Kind() const;
    int nextId() const override;

    // The definition the pages describe (no id yet). Every page the kind uses gives
    // its values, shown or not; a filter page never changed gives "all".
    std::unique_ptr<CReport> MakeReport() const;
    bool ViewWhenDone() const;

    CReportPage1* TypePage() const { return m_type; }
    CReportPage2* DatesPage() const { return m_dates; }
    CReportPage3* TasksPage() const { return m_tasks; }
    CReportPage7* ActivitiesPage() const { return m_activities; }
    CReportPage8* ExpenseTypesPage() const { return m_expenseTypes; }
    CReportPage9* PaymentMethodsPage() const { return m_paymentMethods; }
    CReportPage4* SummarizePage() const { return m_summarize; }
    CReportPage5* FieldsPage() const { return m_fields; }
    CReportPage10* InvoicePage() const { return m_invoice; }
    CReportPage11* PrintPage() const { return m_print; }
    CReportPage6* NamePage() const { return m_name; }

    void done(int result) override;

protected:
    // Like the property sheets, the wizard marks the document's editor as open while shown.
    void showEvent(QShowEvent* event) override;

private:
    void CloseEditor();

    CMainFrame& m_frame;
    bool m_editorOpen = false;
    CReportPage1* m_type;
    CReportPage2* m_dates;
    CReportPage3* m_tasks;
    CReportPage7* m_activities;
    CReportPage8* m_expenseTypes;
    CReportPage9* m_paymentMethods;
    CReportPage4* m_summarize;
    CReportPage5* m_fields;
    CReportPage10* m_invoice;
    CReportPage11* m_print;
    CReportPage6* m_name;
};
