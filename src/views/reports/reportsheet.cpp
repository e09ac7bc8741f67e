#include "views/reports/reportsheet.h"

#include "app/timekeeperapp.h"
#include "model/reportdef.h"
#include "model/timekeeperdoc.h"
#include "reports/reportoptions.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/reports/wizardpicture.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

namespace
{

// The Report Type page's buttons, in their order on the page.
struct KindChoice
{
    const char* label;
    uint32_t kind;
};
const KindChoice kKindChoices[] = {
    {"Time Detail", CReport::timeDetail},
    {"Time Summary", CReport::timeSummary},
    {"Expense Detail", CReport::expenseDetail},
    {"Expense Summary", CReport::expenseSummary},
    {"Time && Expense Summary", CReport::timeExpenseSummary},
    {"Billing Summary", CReport::billingSummary},
    {"To Do Detail", CReport::todoDetail},
    {"Invoice", CReport::invoice},
};

} // namespace

CReportWizardPage::CReportWizardPage(CReportSheet& sheet, const QString& title,
                                     const QString& prompt)
    : QWizardPage(&sheet), m_sheet(sheet), m_body(new QVBoxLayout)
{
    setTitle(title);
    auto* layout = new QVBoxLayout(this);
    auto* promptLabel = new QLabel(prompt, this);
    promptLabel->setObjectName(QStringLiteral("prompt"));
    promptLabel->setWordWrap(true);
    layout->addWidget(promptLabel);
    layout->addSpacing(8);
    layout->addLayout(m_body, 1);
}

CReportPage1::CReportPage1(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Report Type"),
                        tr("What kind of report would you like to create?"))
{
    auto* group = new QButtonGroup(this);
    for (int i = 0; i < 8; ++i)
    {
        m_buttons[i] = new QRadioButton(tr(kKindChoices[i].label), this);
        m_buttons[i]->setObjectName(QStringLiteral("kind%1").arg(kKindChoices[i].kind));
        group->addButton(m_buttons[i], int(kKindChoices[i].kind));
        Body()->addWidget(m_buttons[i]);
    }
    Body()->addStretch(1);
}

int CReportPage1::Kind() const
{
    for (int i = 0; i < 8; ++i)
        if (m_buttons[i]->isChecked())
            return int(kKindChoices[i].kind);
    return -1;
}

QRadioButton* CReportPage1::KindButton(uint32_t kind) const
{
    for (int i = 0; i < 8; ++i)
        if (kKindChoices[i].kind == kind)
            return m_buttons[i];
    return nullptr;
}

bool CReportPage1::validatePage()
{
    if (Kind() >= 0)
        return true;
    RefuseReportField(Sheet().Frame(), 40003, m_buttons[0]);
    return false;
}

CReportPage2::CReportPage2(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Date Selection"), tr("What is the time frame of this report?")),
      m_part(new CDatesPart(sheet.Frame(), ReportPartMode::wizard, this))
{
    Body()->addWidget(m_part);
    Body()->addStretch(1);
}

bool CReportPage2::validatePage()
{
    return m_part->Check();
}

CReportPage3::CReportPage3(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Task Selection"),
                        tr("What tasks would you like to include on this report?")),
      m_part(new CTasksPart(sheet.Frame(), ReportPartMode::wizard, this))
{
    Body()->addWidget(m_part, 1);
}

void CReportPage3::initializePage()
{
    m_part->SetKind(uint32_t(Sheet().Kind()));
}

CReportPage4::CReportPage4(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Summarize By"),
                        tr("How would you like to summarize this report?")),
      m_part(new CSummarizePart(sheet.Frame(), this))
{
    Body()->addWidget(m_part);
    Body()->addStretch(1);
}

void CReportPage4::initializePage()
{
    m_part->SetKind(uint32_t(Sheet().Kind()));
}

bool CReportPage4::validatePage()
{
    return m_part->Check();
}

CReportPage5::CReportPage5(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Additional Fields"),
                        tr("What additional fields would you like displayed?")),
      m_part(new CFieldsPart(sheet.Frame(), this))
{
    Body()->addWidget(m_part, 1);
}

void CReportPage5::initializePage()
{
    m_part->SetKind(uint32_t(Sheet().Kind()));
    m_part->SetSummarizeLevel(Sheet().SummarizePage()->Part()->Level());
}

CReportPage6::CReportPage6(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Report Name"), tr("What is the name of this report?")),
      m_name(new QLineEdit(this)), m_view(new QCheckBox(tr("&View report when done"), this))
{
    m_name->setObjectName(QStringLiteral("name"));
    m_view->setObjectName(QStringLiteral("viewWhenDone"));
    m_view->setChecked(true);
    auto* form = new QFormLayout;
    form->addRow(tr("&Name:"), m_name);
    Body()->addLayout(form);
    Body()->addSpacing(8);
    Body()->addWidget(m_view);
    Body()->addStretch(1);
}

bool CReportPage6::validatePage()
{
    if (!m_name->text().trimmed().isEmpty())
        return true;
    RefuseReportField(Sheet().Frame(), 40008, m_name);
    return false;
}

CReportFilterPage::CReportFilterPage(CReportSheet& sheet, CFilterList::Catalog catalog,
                                     const QString& title, const QString& prompt)
    : CReportWizardPage(sheet, title, prompt),
      m_list(new CFilterList(sheet.Frame().Doc(), catalog, QString(), this))
{
    Body()->addWidget(m_list, 1);
}

CReportPage7::CReportPage7(CReportSheet& sheet)
    : CReportFilterPage(sheet, CFilterList::Catalog::activities, tr("Activities"),
                        tr("What Activities would you like to include in this report?"))
{
}

CReportPage8::CReportPage8(CReportSheet& sheet)
    : CReportFilterPage(sheet, CFilterList::Catalog::expenseTypes, tr("Expense Types"),
                        tr("What Expense Types would you like to include in this report?"))
{
}

CReportPage9::CReportPage9(CReportSheet& sheet)
    : CReportFilterPage(sheet, CFilterList::Catalog::paymentMethods, tr("Payment Methods"),
                        tr("What Payment Methods would you like to include in this report?"))
{
}

CReportPage10::CReportPage10(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Invoice"),
                        tr("Who is this invoice for, and how is it numbered and taxed?")),
      m_part(new CInvoicePart(sheet.Frame(), this))
{
    Body()->addWidget(m_part, 1);
}

CReportPage11::CReportPage11(CReportSheet& sheet)
    : CReportWizardPage(sheet, tr("Report Print Options"),
                        tr("How should this report be printed?")),
      m_part(new CPrintOptionsPart(sheet.Frame(), ReportPartMode::wizard, this))
{
    Body()->addWidget(m_part, 1);
}

CReportSheet::CReportSheet(CMainFrame& frame, QWidget* parent) : QWizard(parent), m_frame(frame)
{
    setObjectName(QStringLiteral("reportWizard"));
    setWindowTitle(tr("New Report"));
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnStartPage);
    setPixmap(QWizard::WatermarkPixmap, ReportWizardPicture());

    m_type = new CReportPage1(*this);
    m_dates = new CReportPage2(*this);
    m_tasks = new CReportPage3(*this);
    m_activities = new CReportPage7(*this);
    m_expenseTypes = new CReportPage8(*this);
    m_paymentMethods = new CReportPage9(*this);
    m_summarize = new CReportPage4(*this);
    m_fields = new CReportPage5(*this);
    m_invoice = new CReportPage10(*this);
    m_print = new CReportPage11(*this);
    m_name = new CReportPage6(*this);
    setPage(pageType, m_type);
    setPage(pageDates, m_dates);
    setPage(pageTasks, m_tasks);
    setPage(pageActivities, m_activities);
    setPage(pageExpenseTypes, m_expenseTypes);
    setPage(pagePaymentMethods, m_paymentMethods);
    setPage(pageSummarize, m_summarize);
    setPage(pageFields, m_fields);
    setPage(pageInvoice, m_invoice);
    setPage(pagePrint, m_print);
    setPage(pageName, m_name);
    setStartId(pageType);

    // The values of a new definition: All Dates, the root task, both kinds of entries,
    // no optional column, the printer's orientation, Arial at 9 points, and the invoice
    // terms and tax rate of the settings. Level and time frame wait for a choice.
    std::unique_ptr<CReport> fresh = CReport::Create(CReport::invoice);
    reports::InitNewReport(*fresh, frame.App());
    fresh->m_preset = CReport::allDates;
    m_dates->Part()->Load(*fresh);
    m_invoice->Part()->Load(*fresh);
    m_print->Part()->Load(*fresh);
    m_summarize->Part()->ClearChoices();

    resize(640, 470);
}

CReportSheet::~CReportSheet()
{
    CloseEditor();
}

void CReportSheet::showEvent(QShowEvent* event)
{
    m_frame.Doc().m_editorOpen = true;
    m_editorOpen = true;
    QWizard::showEvent(event);
}

void CReportSheet::done(int result)
{
    // Finish checks the last page here; a refusal keeps the wizard open.
    QWizard::done(result);
    if (!isVisible())
        CloseEditor();
}

void CReportSheet::CloseEditor()
{
    if (m_editorOpen)
        m_frame.Doc().m_editorOpen = false;
    m_editorOpen = false;
}

int CReportSheet::Kind() const
{
    return m_type->Kind();
}

int CReportSheet::nextId() const
{
    const int kind = Kind();
    const bool expensesOnly = kind == CReport::expenseDetail || kind == CReport::expenseSummary;
    const bool both = kind == CReport::invoice || kind == CReport::timeExpenseSummary;
    switch (currentId())
    {
    case pageType:
        return pageDates;
    case pageDates:
        return pageTasks;
    case pageTasks:
        if (expensesOnly)
            return pageExpenseTypes;
        return kind == CReport::todoDetail ? pageFields : pageActivities;
    case pageActivities:
        if (kind == CReport::timeDetail)
            return pageFields;
        return both ? pageExpenseTypes : pageSummarize;
    case pageExpenseTypes:
        return pagePaymentMethods;
    case pagePaymentMethods:
        return kind == CReport::expenseDetail ? pageFields : pageSummarize;
    case pageSummarize:
        return pageFields;
    case pageFields:
        return kind == CReport::invoice ? pageInvoice : pagePrint;
    case pageInvoice:
        return pagePrint;
    case pagePrint:
        return pageName;
    default:
        return -1;
    }
}

bool CReportSheet::ViewWhenDone() const
{
    return m_name->ViewBox()->isChecked();
}

std::unique_ptr<CReport> CReportSheet::MakeReport() const
{
    const int kind = Kind();
    if (kind < 0)
        return nullptr;
    std::unique_ptr<CReport> report = CReport::Create(CReport::Kind(kind));
    reports::InitNewReport(*report, m_frame.App());
    report->m_name = FromQ(m_name->NameField()->text());
    m_dates->Part()->Store(*report);
    m_tasks->Part()->Store(*report);
    if (ReportKindHasActivities(uint32_t(kind)))
        report->m_selectedActivities = m_activities->List()->Ids();
    if (ReportKindHasExpenseFilters(uint32_t(kind)))
    {
        report->m_selectedExpenseTypes = m_expenseTypes->List()->Ids();
        report->m_selectedPaymentMethods = m_paymentMethods->List()->Ids();
    }
    if (ReportKindHasSummarize(uint32_t(kind)))
        m_summarize->Part()->Store(*report);
    m_fields->Part()->Store(*report);
    if (kind == CReport::invoice)
        m_invoice->Part()->Store(*report);
    m_print->Part()->Store(*report);
    return report;
}
