#include "viewfixture.h"

#include "platform/messages.h"
#include "reports/exportfile.h"
#include "reports/reportrunner.h"
#include "views/qtconvert.h"
#include "views/reports/reportcommands.h"
#include "views/reports/reportproperties.h"
#include "views/reports/reportsheet.h"
#include "views/sheetlistview.h"
#include "widgets/datetimeedit.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QToolBar>
#include <QRegularExpression>
#include <QTreeWidget>
#include <QWizardPage>

#include <functional>
#include <mutex>

namespace
{

using P = CReportSheet;

std::string Msg(unsigned number)
{
    return platform::LoadString(number);
}

std::string LastMessage(const ViewFixture& f)
{
    return f.prompter.Messages().empty() ? std::string() : f.prompter.Messages().back();
}

// Fills what a page needs before Next lets the wizard go on.
void FillToPass(CReportSheet& w)
{
    if (w.currentId() == P::pageSummarize)
    {
        CSummarizePart* part = w.SummarizePage()->Part();
        if (part->LevelField()->currentIndex() < 0)
            part->SelectLevel(1);
        if (part->TimeFrameField()->currentIndex() < 0)
            part->SelectTimeFrame(CReport::frameTotal);
    }
}

// Goes on with Next up to the Report Name page, calling `fill` on each page first;
// answers the pages passed, the first included.
QList<int> WalkToName(CReportSheet& w, const std::function<void(int page)>& fill = {})
{
    QList<int> seen{w.currentId()};
    for (int guard = 0; guard < 20 && w.currentId() != P::pageName; ++guard)
    {
        if (fill)
            fill(w.currentId());
        FillToPass(w);
        const int before = w.currentId();
        w.next();
        if (w.currentId() == before)
            break;
        seen.append(w.currentId());
    }
    return seen;
}

QStringList ShownFields(const CFieldsPart* part)
{
    QStringList texts;
    for (int i = 0; i < CFieldsPart::kSlots; ++i)
        if (!part->Slot(i)->isHidden())
            texts.append(part->Slot(i)->text());
    return texts;
}

struct Sample
{
    uint32_t acme = 0;
    uint32_t website = 0;
    uint32_t other = 0;
    uint32_t design = 0;
    uint32_t meetings = 0;
    uint32_t travel = 0;
    uint32_t card = 0;
};

// Two clients with time and expenses in March 2024, a few catalog records, and the
// invoice defaults in the settings.
Sample BuildSample(ViewFixture& f)
{
    Sample s;
    f.app->SetDefaultTerms("Net 30");
    f.app->SetDefaultTaxRate(7.5);
    s.acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    s.website = f.AddTask(s.acme, 2, "Website");
    s.other = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Other");
    {
        std::lock_guard lock(f.doc.GetLock());
        CTask* acme = f.doc.GetTask(s.acme);
        acme->m_useParentBilling = false;
        acme->m_billable = true;
        acme->m_regularRate = 80.0;
        acme->m_useParentTaskId = false;
        acme->m_taskId = "AC-1";
        s.design = f.doc.AddActivity("Design")->m_id;
        s.meetings = f.doc.AddActivity("Meetings")->m_id;
        s.travel = f.doc.AddExpenseType("Travel")->m_id;
        s.card = f.doc.AddPaymentMethod("Company Card")->m_id;
    }
    f.AddTime(s.website, CDateTime::FromDate(2024, 3, 4), 9, 0, 11, 30)->m_activityId = s.design;
    f.AddTime(s.website, CDateTime::FromDate(2024, 3, 12), 13, 0, 14, 0)->m_activityId = s.meetings;
    f.AddTime(s.other, CDateTime::FromDate(2024, 3, 5), 8, 0, 9, 0);
    f.AddTime(s.acme, CDateTime::FromDate(2024, 2, 20), 10, 0, 12, 15)->m_activityId = s.design;
    auto expense =
        [&](uint32_t task, int day, double amount, uint32_t type, uint32_t method, bool billable)
    {
        std::lock_guard lock(f.doc.GetLock());
        auto e = std::make_unique<CExpenseEntry>();
        e->m_taskId = task;
        e->m_date = CDateTime::FromDate(2024, 3, day);
        e->m_amount = amount;
        e->m_expenseTypeId = type;
        e->m_paymentMethodId = method;
        e->m_billable = billable;
        e->m_note = "receipt " + std::to_string(day);
        CDay* dayOfEntry = f.doc.GetOrCreateDay(e->m_date);
        f.doc.FileExpenseEntry(dayOfEntry, std::move(e));
    };
    expense(s.website, 6, 42.5, s.travel, s.card, true);
    expense(s.website, 7, 12.0, s.travel, uint32_t(-1), false);
    expense(s.acme, 8, 99.99, uint32_t(-1), s.card, true);
    f.Reopen();
    return s;
}

// qvx on a document file, with its own empty settings apart from the invoice defaults,
// the U.S. locale and the fixture's clock.
class Qvx
{
public:
    explicit Qvx(const QString& folder) : m_config(folder + QStringLiteral("/config"))
    {
        QDir().mkpath(m_config + QStringLiteral("/Halvery"));
        QFile settings(m_config + QStringLiteral("/Halvery/Quorvane Time & Expense.conf"));
        if (settings.open(QIODevice::WriteOnly))
            settings.write("[Settings]\nDefaultTerms=Net 30\nDefaultTaxRate=7.5\n");
    }

    QByteArray Run(const QStringList& args, bool* ok)
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_config);
        env.insert(QStringLiteral("QVX_NOW"), QStringLiteral("2024-03-13 09:00"));
        env.insert(QStringLiteral("LANG"), QStringLiteral("en_US.UTF-8"));
        env.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_US.UTF-8"));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(QVX_PATH), args);
        *ok = process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit &&
              process.exitCode() == 0;
        if (!*ok)
            qWarning("qvx %s: %s", qPrintable(args.join(u' ')),
                     process.readAllStandardError().constData());
        return process.readAllStandardOutput();
    }

private:
    QString m_config;
};

// A report's members as `qvx report show` prints them, without the id.
QByteArray WithoutId(const QByteArray& shown)
{
    QList<QByteArray> lines = shown.split('\n');
    lines.removeIf([](const QByteArray& line) { return line.startsWith("Id: "); });
    return lines.join('\n');
}

std::string ExportText(ViewFixture& f, uint32_t reportId, int format)
{
    return reports::ExportReport(*f.doc.GetReport(reportId), f.doc, *f.app, format);
}

} // namespace

class TestReportWizard : public QObject
{
    Q_OBJECT

private slots:
    void pageFlowFollowsTheKind_data();
    void pageFlowFollowsTheKind();
    void checksRefuseWithTheirMessageAndFocus();
    void finishStoresThePagesOfTheKind();
    void additionalFieldsShowTheKindsBoxes();
    void printOptionsDescribeAndChooseTheFont();
    void wizardDefinitionsExportLikeQvx();
    void propertySheetsHoldTheKindsPages();
    void propertySheetCancelKeepsAndOkChanges();
    void reportsPageRunsWizardAndSheets();
    void textsReadWithoutSlips();
};

void TestReportWizard::pageFlowFollowsTheKind_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QList<int>>("pages");
    const QList<int> start{P::pageType, P::pageDates, P::pageTasks};
    const QList<int> end{P::pageFields, P::pagePrint, P::pageName};
    QTest::newRow("Time Detail") << int(CReport::timeDetail)
                                 << start + QList<int>{P::pageActivities} + end;
    QTest::newRow("Time Summary") << int(CReport::timeSummary)
                                  << start + QList<int>{P::pageActivities, P::pageSummarize} + end;
    QTest::newRow("Expense Detail")
        << int(CReport::expenseDetail)
        << start + QList<int>{P::pageExpenseTypes, P::pagePaymentMethods} + end;
    QTest::newRow("Expense Summary")
        << int(CReport::expenseSummary)
        << start + QList<int>{P::pageExpenseTypes, P::pagePaymentMethods, P::pageSummarize} + end;
    QTest::newRow("To Do Detail") << int(CReport::todoDetail) << start + end;
    QTest::newRow("Invoice") << int(CReport::invoice)
                             << start + QList<int>{P::pageActivities,     P::pageExpenseTypes,
                                                   P::pagePaymentMethods, P::pageSummarize,
                                                   P::pageFields,         P::pageInvoice,
                                                   P::pagePrint,          P::pageName};
    QTest::newRow("Time & Expense Summary")
        << int(CReport::timeExpenseSummary)
        << start +
               QList<int>{P::pageActivities, P::pageExpenseTypes, P::pagePaymentMethods,
                          P::pageSummarize} +
               end;
    QTest::newRow("Billing Summary")
        << int(CReport::billingSummary)
        << start + QList<int>{P::pageActivities, P::pageSummarize} + end;
}

void TestReportWizard::pageFlowFollowsTheKind()
{
    QFETCH(int, kind);
    QFETCH(QList<int>, pages);
    ViewFixture f;
    CReportSheet w(*f.frame);
    w.show();
    w.TypePage()->KindButton(uint32_t(kind))->setChecked(true);
    QCOMPARE(WalkToName(w), pages);
    QVERIFY(f.prompter.Messages().empty());

    // The last page offers Finish instead of Next; leaving it backwards brings Next back.
    QVERIFY(w.button(QWizard::FinishButton)->isVisible());
    QVERIFY(!w.button(QWizard::NextButton)->isVisible());
    QVERIFY(w.button(QWizard::BackButton)->isVisible());
    w.back();
    QVERIFY(w.button(QWizard::NextButton)->isVisible());
    QVERIFY(!w.button(QWizard::FinishButton)->isVisible());

    QList<int> backwards{P::pageName, w.currentId()};
    while (w.currentId() != P::pageType && backwards.size() < 20)
    {
        w.back();
        backwards.append(w.currentId());
    }
    std::reverse(backwards.begin(), backwards.end());
    QCOMPARE(backwards, pages);
}

void TestReportWizard::checksRefuseWithTheirMessageAndFocus()
{
    ViewFixture f;
    CReportSheet w(*f.frame);
    w.show();

    w.next();
    QCOMPARE(w.currentId(), int(P::pageType));
    QCOMPARE(LastMessage(f), Msg(40003));
    QCOMPARE(LastMessage(f), std::string("Select the type for the report."));
    QCOMPARE(w.focusWidget(), w.TypePage()->KindButton(CReport::timeDetail));

    w.TypePage()->KindButton(CReport::expenseSummary)->setChecked(true);
    w.next();
    QCOMPARE(w.currentId(), int(P::pageDates));
    CDatesPart* dates = w.DatesPage()->Part();
    QCOMPARE(dates->RangeField()->currentText(), QStringLiteral("All Dates"));
    QVERIFY(!dates->StartField()->isEnabled());
    dates->SetPreset(CReport::customDates);
    QVERIFY(dates->StartField()->isEnabled() && dates->EndField()->isEnabled());

    w.next();
    QCOMPARE(w.currentId(), int(P::pageDates));
    QCOMPARE(LastMessage(f), Msg(40015));
    QCOMPARE(w.focusWidget(), dates->StartField());

    dates->StartField()->SetDate(QDate(2024, 3, 10));
    w.next();
    QCOMPARE(LastMessage(f), Msg(40016));
    QCOMPARE(w.focusWidget(), dates->EndField());

    dates->EndField()->setText(QStringLiteral("13/45/2024"));
    w.next();
    QCOMPARE(LastMessage(f), Msg(40018));
    QCOMPARE(w.focusWidget(), dates->EndField());

    dates->EndField()->SetDate(QDate(2024, 3, 9));
    w.next();
    QCOMPARE(w.currentId(), int(P::pageDates));
    QCOMPARE(LastMessage(f), Msg(40017));
    QCOMPARE(w.focusWidget(), dates->StartField());

    // The start may equal the end.
    dates->EndField()->SetDate(QDate(2024, 3, 10));
    w.next();
    QCOMPARE(w.currentId(), int(P::pageTasks));
    w.next();
    w.next();
    w.next();
    QCOMPARE(w.currentId(), int(P::pageSummarize));

    CSummarizePart* summarize = w.SummarizePage()->Part();
    w.next();
    QCOMPARE(w.currentId(), int(P::pageSummarize));
    QCOMPARE(LastMessage(f), Msg(40007));
    QCOMPARE(w.focusWidget(), summarize->LevelField());
    // The Expense Summary offers the levels and its three groupings.
    QCOMPARE(summarize->LevelField()->itemText(summarize->LevelField()->count() - 3),
             QStringLiteral("Task ID"));
    QCOMPARE(summarize->LevelField()->itemText(summarize->LevelField()->count() - 1),
             QStringLiteral("Payment Method"));
    QVERIFY(summarize->SelectLevel(CReport::groupExpenseType));
    w.next();
    QCOMPARE(LastMessage(f), Msg(40006));
    QCOMPARE(w.focusWidget(), summarize->TimeFrameField());
    QCOMPARE(summarize->TimeFrameField()->itemText(0), QStringLiteral("Day"));
    QVERIFY(summarize->SelectTimeFrame(CReport::frameMonth));
    w.next();
    QCOMPARE(w.currentId(), int(P::pageFields));
    w.next();
    w.next();
    QCOMPARE(w.currentId(), int(P::pageName));

    w.NamePage()->NameField()->setText(QStringLiteral("   "));
    w.button(QWizard::FinishButton)->click();
    QVERIFY(w.isVisible());
    QCOMPARE(LastMessage(f), Msg(40008));
    QCOMPARE(w.focusWidget(), w.NamePage()->NameField());

    QVERIFY(f.doc.m_editorOpen);
    w.NamePage()->NameField()->setText(QStringLiteral("Expenses by type"));
    w.button(QWizard::FinishButton)->click();
    QCOMPARE(w.result(), int(QDialog::Accepted));
    QVERIFY(!f.doc.m_editorOpen);
    QCOMPARE(f.prompter.Messages(),
             std::vector<std::string>({Msg(40003), Msg(40015), Msg(40016), Msg(40018), Msg(40017),
                                       Msg(40007), Msg(40006), Msg(40008)}));

    const std::unique_ptr<CReport> r = w.MakeReport();
    QCOMPARE(r->m_kind, uint32_t(CReport::expenseSummary));
    QCOMPARE(r->m_name, std::string("Expenses by type"));
    QCOMPARE(r->m_preset, uint32_t(CReport::customDates));
    QCOMPARE(r->m_startDate.DayKey(), std::string("20240310"));
    QCOMPARE(r->m_endDate.DayKey(), std::string("20240310"));
    QCOMPARE(r->m_startDate.GetHour(), 0);
    QCOMPARE(r->m_summarizeLevel, CReport::groupExpenseType);
    QCOMPARE(r->m_timeFrame, uint32_t(CReport::frameMonth));
}

void TestReportWizard::finishStoresThePagesOfTheKind()
{
    ViewFixture f;
    const Sample s = BuildSample(f);

    // Pages never shown still give their values: "all" for every filter, the invoice
    // terms and tax rate of the settings, and the other defaults of a new report.
    {
        CReportSheet w(*f.frame);
        w.TypePage()->KindButton(CReport::invoice)->setChecked(true);
        w.NamePage()->NameField()->setText(QStringLiteral("Invoice"));
        const std::unique_ptr<CReport> r = w.MakeReport();
        QCOMPARE(r->m_selectedActivities, std::vector<uint32_t>{0});
        QCOMPARE(r->m_selectedExpenseTypes, std::vector<uint32_t>{0});
        QCOMPARE(r->m_selectedPaymentMethods, std::vector<uint32_t>{0});
        QCOMPARE(r->m_terms, std::string("Net 30"));
        QCOMPARE(r->m_taxRate, 7.5);
        QVERIFY(!r->m_addTax && !r->m_showTerms);
        QCOMPARE(r->m_numberMode, 0u);
        QCOMPARE(r->m_invoiceNumber, 0);
        QCOMPARE(r->m_preset, uint32_t(CReport::allDates));
        QCOMPARE(r->m_selectedTasks, std::vector<uint32_t>{CTimeKeeperDoc::kRootTaskId});
        QVERIFY(r->m_includeBillable && r->m_includeNonBillable);
        QCOMPARE(r->m_fieldFlags, 0u);
        QCOMPARE(r->m_orientation, 0u);
        QCOMPARE(r->m_font.faceName, std::string("Arial"));
        QCOMPARE(r->m_font.PointSize(), 9);
    }

    // A Time Summary passed through without touching the Activities page: all activities.
    {
        CReportSheet w(*f.frame);
        w.show();
        w.TypePage()->KindButton(CReport::timeSummary)->setChecked(true);
        WalkToName(w);
        w.NamePage()->NameField()->setText(QStringLiteral("Summary"));
        w.button(QWizard::FinishButton)->click();
        QCOMPARE(w.result(), int(QDialog::Accepted));
        QCOMPARE(w.MakeReport()->m_selectedActivities, std::vector<uint32_t>{0});
    }

    // "Selected" stores the checked records; values survive Back and Next.
    {
        CReportSheet w(*f.frame);
        w.show();
        w.TypePage()->KindButton(CReport::timeDetail)->setChecked(true);
        w.next();
        w.next();
        CTasksPart* tasks = w.TasksPage()->Part();
        QCOMPARE(tasks->BillableBox()->text(), QStringLiteral("Include Bi&llable Tasks"));
        QCOMPARE(tasks->NonBillableBox()->text(), QStringLiteral("Include N&on-Billable Tasks"));
        QVERIFY(tasks->ChildTasksBox()->isEnabled());
        QVERIFY(tasks->Tree()->topLevelItem(0)->isExpanded());
        tasks->Tree()->SelectTask(s.website);
        QVERIFY(tasks->Tree()->ItemOf(s.acme)->isExpanded());
        tasks->ChildTasksBox()->setChecked(false);
        tasks->NonBillableBox()->setChecked(false);
        w.next();
        CFilterList* activities = w.ActivitiesPage()->List();
        QVERIFY(!activities->List()->isEnabled());
        activities->SelectedButton()->setChecked(true);
        QVERIFY(activities->List()->isEnabled());
        // Sorted by name.
        QCOMPARE(activities->List()->item(0)->text() < activities->List()->item(1)->text(), true);
        QVERIFY(activities->CheckName(QStringLiteral("Meetings")));
        w.back();
        w.next();
        QCOMPARE(activities->Ids(), std::vector<uint32_t>{s.meetings});
        const std::unique_ptr<CReport> r = w.MakeReport();
        QCOMPARE(r->m_selectedActivities, std::vector<uint32_t>{s.meetings});
        QCOMPARE(r->m_selectedTasks, std::vector<uint32_t>{s.website});
        QVERIFY(r->m_selectedTasksOnly);
        QVERIFY(r->m_includeBillable && !r->m_includeNonBillable);
    }

    // The To Do Detail's boxes ask for outstanding and completed entries.
    {
        CReportSheet w(*f.frame);
        w.show();
        w.TypePage()->KindButton(CReport::todoDetail)->setChecked(true);
        w.next();
        w.next();
        CTasksPart* tasks = w.TasksPage()->Part();
        QCOMPARE(tasks->BillableBox()->text(), QStringLiteral("Include &Outstanding Entries"));
        QCOMPARE(tasks->NonBillableBox()->text(), QStringLiteral("Include Co&mpleted Entries"));
        tasks->BillableBox()->setChecked(false);
        const std::unique_ptr<CReport> r = w.MakeReport();
        QVERIFY(!r->m_includeBillable && r->m_includeNonBillable);
    }
}

void TestReportWizard::additionalFieldsShowTheKindsBoxes()
{
    ViewFixture f;
    auto fieldsOf = [&](uint32_t kind, int32_t level, QStringList* shown)
    {
        auto w = std::make_unique<CReportSheet>(*f.frame);
        w->show();
        w->TypePage()->KindButton(kind)->setChecked(true);
        WalkToName(*w,
                   [&](int page)
                   {
                       if (page == P::pageSummarize)
                       {
                           w->SummarizePage()->Part()->SelectLevel(level);
                           w->SummarizePage()->Part()->SelectTimeFrame(CReport::frameTotal);
                       }
                   });
        w->back();
        w->back();
        if (kind == CReport::invoice)
            w->back();
        *shown = ShownFields(w->FieldsPage()->Part());
        return w;
    };
    QStringList shown;
    fieldsOf(CReport::timeDetail, 0, &shown);
    QCOMPARE(shown, QStringList({"Task ID", "Billing Rate", "Start Time", "End Time", "Activity",
                                 "Note", "Billing Amount"}));
    fieldsOf(CReport::expenseDetail, 0, &shown);
    // The U.S. measurement system counts miles.
    QCOMPARE(shown, QStringList({"Task ID", "Miles", "Mileage Rate", "Expense Type",
                                 "Payment Method", "Note"}));
    {
        // Where the metric system is used, the distance is counted in kilometres.
        platform::LocaleInfo metric = platform::LocaleInfo::UnitedStates();
        metric.measurementSystem = 0;
        CTimeKeeperApp metricApp(f.store, f.clock, metric);
        CTimeKeeperDoc metricDoc;
        metricDoc.NewDocument("Kim Example");
        CTestFrame metricFrame(metricApp, metricDoc, f.prompter);
        CFieldsPart part(metricFrame);
        part.SetKind(CReport::expenseDetail);
        QCOMPARE(part.Box(QStringLiteral("mileage"))->text(), QStringLiteral("Km"));
    }
    fieldsOf(CReport::todoDetail, 0, &shown);
    QCOMPARE(shown,
             QStringList({"Task ID", "Due Date", "Complete Date", "Status", "Priority", "Note"}));
    fieldsOf(CReport::invoice, 1, &shown);
    QCOMPARE(shown, QStringList({"Task ID", "Billing Rate"}));

    // The Expense Summary's "Estimates" stands where "Billing Rate" stands for the others.
    auto expenseSummary = fieldsOf(CReport::expenseSummary, 2, &shown);
    QCOMPARE(shown, QStringList({"Task ID", "Estimates"}));
    QCOMPARE(expenseSummary->FieldsPage()->Part()->Slot(1)->text(), QStringLiteral("Estimates"));

    // "Estimates" needs a task level; a grouping clears and disables it.
    auto summary = fieldsOf(CReport::billingSummary, 2, &shown);
    QCOMPARE(shown, QStringList({"Task ID", "Billing Rate", "Estimates"}));
    CFieldsPart* fields = summary->FieldsPage()->Part();
    QCheckBox* estimates = fields->Box(QStringLiteral("estimates"));
    QCOMPARE(estimates, fields->Slot(2));
    QVERIFY(estimates->isEnabled());
    estimates->setChecked(true);
    fields->Box(QStringLiteral("task-id"))->setChecked(true);
    QCOMPARE(summary->MakeReport()->m_fieldFlags, uint32_t(CReport::fieldTaskId | CReport::field3));
    summary->back();
    QCOMPARE(summary->currentId(), int(P::pageSummarize));
    summary->SummarizePage()->Part()->SelectLevel(CReport::groupActivity);
    summary->next();
    QVERIFY(!estimates->isEnabled());
    QVERIFY(!estimates->isChecked());
    QCOMPARE(summary->MakeReport()->m_fieldFlags, uint32_t(CReport::fieldTaskId));
}

void TestReportWizard::printOptionsDescribeAndChooseTheFont()
{
    ReportFont font;
    font.faceName = "Arial";
    font.height = -120;
    font.weight = 700;
    font.italic = 1;
    QCOMPARE(CPrintOptionsPart::FontText(font), QStringLiteral("Arial Bold Italic 12 pt."));
    font.weight = 400;
    font.italic = 0;
    font.height = -105;
    QCOMPARE(CPrintOptionsPart::FontText(font), QStringLiteral("Arial 10 pt."));

    ViewFixture f;
    CReportSheet w(*f.frame);
    w.show();
    CPrintOptionsPart* print = w.PrintPage()->Part();
    QCOMPARE(print->FontLabel()->text(), QStringLiteral("Arial 9 pt."));
    QVERIFY(print->DefaultButton()->isChecked());

    QFont chosen;
    ViewFixture::WhenDialogShows(
        [&chosen](QDialog* dialog)
        {
            auto* fonts = qobject_cast<QFontDialog*>(dialog);
            QVERIFY(fonts);
            QFont pick = fonts->currentFont();
            pick.setPointSize(14);
            pick.setBold(true);
            pick.setItalic(false);
            fonts->setCurrentFont(pick);
            chosen = fonts->currentFont();
            fonts->accept();
        });
    print->FontButton()->click();
    QCOMPARE(chosen.pointSize(), 14);
    print->LandscapeButton()->setChecked(true);
    w.TypePage()->KindButton(CReport::timeDetail)->setChecked(true);
    const std::unique_ptr<CReport> r = w.MakeReport();
    QCOMPARE(r->m_orientation, 2u);
    QCOMPARE(r->m_font.height, -140);
    QCOMPARE(r->m_font.weight, int(chosen.weight()));
    QCOMPARE(ToQ(r->m_font.faceName), chosen.family().left(31));
    QCOMPARE(print->FontLabel()->text(), CPrintOptionsPart::FontText(r->m_font));
    QVERIFY(print->FontLabel()->text().endsWith(QStringLiteral(" 14 pt.")));

    // A bold italic font keeps its weight; members a font does not describe stay as they were.
    QFont bold(QStringLiteral("Liberation Serif"));
    bold.setPointSizeF(10.5);
    bold.setBold(true);
    bold.setItalic(true);
    ReportFont base;
    base.quality = 3;
    const ReportFont converted = CPrintOptionsPart::FromQFont(bold, base);
    QCOMPARE(converted.faceName, std::string("Liberation Serif"));
    QCOMPARE(converted.height, -105);
    QCOMPARE(converted.weight, 700);
    QCOMPARE(converted.italic, uint8_t(1));
    QCOMPARE(converted.quality, uint8_t(3));
    QCOMPARE(converted.charSet, uint8_t(1));
    QCOMPARE(CPrintOptionsPart::FontText(converted),
             QStringLiteral("Liberation Serif Bold Italic 10 pt."));
    const QFont back = CPrintOptionsPart::ToQFont(converted);
    QCOMPARE(back.pointSize(), 10);
    QVERIFY(back.bold() && back.italic());
}

void TestReportWizard::wizardDefinitionsExportLikeQvx()
{
    ViewFixture f;
    const Sample s = BuildSample(f);
    struct Case
    {
        uint32_t kind;
        std::function<void(CReportSheet&, int page)> fill;
        QStringList qvxOptions;
    };
    const QList<Case> cases = {
        {CReport::timeSummary,
         [&](CReportSheet& w, int page)
         {
             switch (page)
             {
             case P::pageDates:
                 w.DatesPage()->Part()->SetPreset(CReport::customDates);
                 w.DatesPage()->Part()->StartField()->SetDate(QDate(2024, 3, 1));
                 w.DatesPage()->Part()->EndField()->SetDate(QDate(2024, 3, 31));
                 break;
             case P::pageTasks:
                 w.TasksPage()->Part()->Tree()->SelectTask(s.acme);
                 break;
             case P::pageActivities:
                 w.ActivitiesPage()->List()->SelectedButton()->setChecked(true);
                 w.ActivitiesPage()->List()->CheckName(QStringLiteral("Design"));
                 break;
             case P::pageSummarize:
                 w.SummarizePage()->Part()->SelectLevel(2);
                 w.SummarizePage()->Part()->SelectTimeFrame(CReport::frameWeek);
                 w.SummarizePage()->Part()->RollupBox()->setChecked(true);
                 w.SummarizePage()->Part()->TotalsBox()->setChecked(true);
                 w.SummarizePage()->Part()->EmptyRowsBox()->setChecked(true);
                 break;
             case P::pageFields:
                 w.FieldsPage()->Part()->Box(QStringLiteral("task-id"))->setChecked(true);
                 w.FieldsPage()->Part()->Box(QStringLiteral("billing-rate"))->setChecked(true);
                 break;
             case P::pagePrint:
                 w.PrintPage()->Part()->LandscapeButton()->setChecked(true);
                 break;
             default:
                 break;
             }
         },
         {"--kind",        "time-summary",
          "--from",        "2024-03-01",
          "--to",          "2024-03-31",
          "--task",        "Acme",
          "--activities",  "Design",
          "--summarize",   "2",
          "--time-frame",  "week",
          "--rollup",      "yes",
          "--totals",      "yes",
          "--empty-rows",  "yes",
          "--fields",      "task-id,billing-rate",
          "--orientation", "landscape"}},
        {CReport::expenseDetail,
         [&](CReportSheet& w, int page)
         {
             switch (page)
             {
             case P::pageDates:
                 w.DatesPage()->Part()->SetPreset(CReport::currentMonth);
                 break;
             case P::pageTasks:
                 w.TasksPage()->Part()->Tree()->SelectTask(s.website);
                 w.TasksPage()->Part()->NonBillableBox()->setChecked(false);
                 w.TasksPage()->Part()->ChildTasksBox()->setChecked(false);
                 break;
             case P::pageExpenseTypes:
                 w.ExpenseTypesPage()->List()->SelectedButton()->setChecked(true);
                 w.ExpenseTypesPage()->List()->CheckName(QStringLiteral("Travel"));
                 break;
             case P::pageFields:
                 for (const char* field : {"mileage", "expense-type", "payment-method", "note"})
                     w.FieldsPage()->Part()->Box(QString::fromLatin1(field))->setChecked(true);
                 break;
             default:
                 break;
             }
         },
         {"--kind", "expense-detail", "--preset", "current-month", "--task", "Acme/Website",
          "--include", "billable", "--child-tasks", "no", "--expense-types", "Travel", "--fields",
          "mileage,expense-type,payment-method,note"}},
        {CReport::invoice,
         [&](CReportSheet& w, int page)
         {
             switch (page)
             {
             case P::pageTasks:
                 w.TasksPage()->Part()->Tree()->SelectTask(s.acme);
                 break;
             case P::pagePaymentMethods:
                 w.PaymentMethodsPage()->List()->SelectedButton()->setChecked(true);
                 w.PaymentMethodsPage()->List()->CheckName(QStringLiteral("Company Card"));
                 break;
             case P::pageSummarize:
                 w.SummarizePage()->Part()->SelectLevel(2);
                 w.SummarizePage()->Part()->SelectTimeFrame(CReport::frameMonth);
                 break;
             case P::pageFields:
                 w.FieldsPage()->Part()->Box(QStringLiteral("task-id"))->setChecked(true);
                 w.FieldsPage()->Part()->Box(QStringLiteral("billing-rate"))->setChecked(true);
                 break;
             case P::pageInvoice:
             {
                 CInvoicePart* invoice = w.InvoicePage()->Part();
                 QCOMPARE(invoice->TermsField()->text(), QStringLiteral("Net 30"));
                 QVERIFY(!invoice->NumberField()->isEnabled());
                 invoice->RecipientField()->setPlainText(
                     QStringLiteral("Acme Corp\n1 Main Street"));
                 invoice->ShowTermsBox()->setChecked(true);
                 invoice->AddTaxBox()->setChecked(true);
                 invoice->ThisNumberButton()->setChecked(true);
                 QVERIFY(invoice->NumberField()->isEnabled());
                 invoice->NumberField()->setValue(1042);
                 break;
             }
             default:
                 break;
             }
         },
         {"--kind",
          "invoice",
          "--task",
          "Acme",
          "--payment-methods",
          "Company Card",
          "--summarize",
          "2",
          "--time-frame",
          "month",
          "--fields",
          "task-id,billing-rate",
          "--recipient",
          "Acme Corp\\n1 Main Street",
          "--show-terms",
          "yes",
          "--tax",
          "7.5",
          "--number",
          "1042"}},
    };

    QList<uint32_t> wizardIds;
    for (const Case& c : cases)
    {
        CReportSheet w(*f.frame);
        w.show();
        w.TypePage()->KindButton(c.kind)->setChecked(true);
        const QList<int> pages = WalkToName(w, [&](int page) { c.fill(w, page); });
        QCOMPARE(pages.back(), int(P::pageName));
        w.NamePage()->NameField()->setText(QStringLiteral("Made in the wizard"));
        w.NamePage()->ViewBox()->setChecked(c.kind == CReport::invoice);
        w.button(QWizard::FinishButton)->click();
        QCOMPARE(w.result(), int(QDialog::Accepted));
        wizardIds.append(AddReportFromWizard(*f.frame, w));
        QVERIFY(f.doc.GetReport(wizardIds.back()) != nullptr);
    }
    // "View report when done" was checked for the invoice only.
    QCOMPARE(f.frame->viewedReports, QList<uint32_t>{wizardIds.back()});
    QVERIFY(f.doc.IsModified());
    QVERIFY(f.frame->SaveDocument());

    const QString copy = f.Path(QStringLiteral("Copy.qvx"));
    QVERIFY(QFile::copy(f.path, copy));
    Qvx qvx(f.dir.path());
    for (int i = 0; i < cases.size(); ++i)
    {
        bool ok = false;
        const QByteArray added =
            qvx.Run(QStringList{"report", "new", copy, "--name", "Made in the wizard"} +
                        cases[i].qvxOptions,
                    &ok);
        QVERIFY(ok);
        const QRegularExpressionMatch m =
            QRegularExpression(QStringLiteral("#(\\d+)")).match(QString::fromUtf8(added));
        QVERIFY(m.hasMatch());
        const QString fromQvx = QLatin1Char('#') + m.captured(1);
        const QString fromWizard = QLatin1Char('#') + QString::number(wizardIds[i]);
        for (const char* format : {"csv", "html", "tab"})
        {
            const QByteArray a = qvx.Run(
                {"report", "export", copy, fromWizard, "--format", format, "--out", "-"}, &ok);
            QVERIFY(ok);
            const QByteArray b =
                qvx.Run({"report", "export", copy, fromQvx, "--format", format, "--out", "-"}, &ok);
            QVERIFY(ok);
            QCOMPARE(a, b);
            QVERIFY(!a.isEmpty());
            if (QByteArray(format) == "html")
                QVERIFY(a.contains("Made in the wizard"));
        }
        const QByteArray shownA = qvx.Run({"report", "show", copy, fromWizard}, &ok);
        const QByteArray shownB = qvx.Run({"report", "show", copy, fromQvx}, &ok);
        QCOMPARE(WithoutId(shownA), WithoutId(shownB));
    }
    // The exports hold the entries the choices select.
    const std::string summary = ExportText(f, wizardIds[0], reports::formatCsv);
    QVERIFY(summary.find("Website") != std::string::npos);
    const std::string expenses = ExportText(f, wizardIds[1], reports::formatCsv);
    QVERIFY(expenses.find("receipt 6") != std::string::npos);
    QVERIFY(expenses.find("receipt 7") == std::string::npos);
    const std::string invoice = ExportText(f, wizardIds[2], reports::formatHtml);
    QVERIFY(invoice.find("Acme Corp<BR>") != std::string::npos);
    QVERIFY(invoice.find("Net 30") != std::string::npos);
}

void TestReportWizard::propertySheetsHoldTheKindsPages()
{
    ViewFixture f;
    const QStringList common{"Dates", "Tasks"};
    const QStringList tail{"Display", "Print Options"};
    const QStringList filters{"Expense Types", "Payment Methods"};
    struct Expected
    {
        uint32_t kind;
        QStringList pages;
        const char* className;
    };
    const Expected expected[] = {
        {CReport::timeSummary, common + QStringList{"Activities", "Summarize"} + tail,
         "CTimeSummaryProperties"},
        {CReport::billingSummary, common + QStringList{"Activities", "Summarize"} + tail,
         "CBillingSummaryProperties"},
        {CReport::expenseSummary, common + filters + QStringList{"Summarize"} + tail,
         "CExpenseSummaryProperties"},
        {CReport::timeExpenseSummary,
         common + QStringList{"Activities"} + filters + QStringList{"Summarize"} + tail,
         "CTimeExpenseSummaryProperties"},
        {CReport::timeDetail, common + QStringList{"Activities"} + tail, "CTimeDetailProperties"},
        {CReport::expenseDetail, common + filters + tail, "CExpenseDetailProperties"},
        {CReport::todoDetail, common + tail, "CToDoDetailProperties"},
        {CReport::invoice,
         common + QStringList{"Activities"} + filters +
             QStringList{"Summarize", "Display", "Invoice", "Print Options"},
         "CInvoiceProperties"},
    };
    for (const Expected& e : expected)
    {
        std::unique_ptr<CReport> draft = CReport::Create(CReport::Kind(e.kind));
        draft->m_name = "Sheet";
        const uint32_t id = AddReportFromDraft(f.doc, *draft);
        std::unique_ptr<CReportProperties> sheet =
            CreateReportProperties(*f.frame, *f.doc.GetReport(id));
        QVERIFY(sheet);
        QCOMPARE(sheet->metaObject()->className(), e.className);
        QCOMPARE(sheet->PageTitles(), e.pages);
        sheet->show(); // every tab's title whole, without scrolling the row of tabs
        QVERIFY2(sheet->Pages()->tabBar()->width() >= sheet->Pages()->tabBar()->sizeHint().width(), e.className);
        if (e.kind == CReport::invoice)
        {
            // The invoice has no rollup and no totals.
            QVERIFY(!sheet->SummarizePage()->RollupBox()->isEnabled());
            QVERIFY(!sheet->SummarizePage()->TotalsBox()->isEnabled());
            QCOMPARE(sheet->SummarizePage()->LevelField()->itemText(
                         sheet->SummarizePage()->LevelField()->count() - 1),
                     QStringLiteral("Task ID"));
        }
    }
}

void TestReportWizard::propertySheetCancelKeepsAndOkChanges()
{
    ViewFixture f;
    const Sample s = BuildSample(f);
    std::unique_ptr<CReport> draft = CReport::Create(CReport::timeSummary);
    draft->m_name = "Hours";
    draft->m_preset = CReport::allDates;
    draft->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
    const uint32_t id = AddReportFromDraft(f.doc, *draft);
    QVERIFY(f.frame->SaveDocument());
    QVERIFY(!f.doc.IsModified());
    CSheetListView* list = f.frame->SheetList();
    f.app->SetReportListType(3);
    list->SetPage(CSheetListView::pageReports);
    QCOMPARE(list->RowTexts(0), QStringList({"Hours", "All Tasks", "All Dates"}));
    const std::string before = ExportText(f, id, reports::formatCsv);

    auto edit = [&](CReportProperties& sheet)
    {
        sheet.DatesPage()->SetPreset(CReport::customDates);
        sheet.DatesPage()->StartField()->SetDate(QDate(2024, 3, 1));
        sheet.DatesPage()->EndField()->SetDate(QDate(2024, 3, 31));
        sheet.TasksPage()->Tree()->SelectTask(s.acme);
        sheet.ActivitiesPage()->SelectedButton()->setChecked(true);
        sheet.ActivitiesPage()->CheckName(QStringLiteral("Design"));
        sheet.SummarizePage()->SelectLevel(2);
        sheet.SummarizePage()->SelectTimeFrame(CReport::frameWeek);
        sheet.SummarizePage()->TotalsBox()->setChecked(true);
        sheet.DisplayPage()->Box(QStringLiteral("billing-rate"))->setChecked(true);
        sheet.PrintPage()->PortraitButton()->setChecked(true);
    };

    {
        CTimeSummaryProperties sheet(*f.frame, *f.doc.GetReport(id));
        sheet.show();
        QCOMPARE(sheet.TasksPage()->Tree()->SelectedTaskId(), CTimeKeeperDoc::kRootTaskId);
        edit(sheet);
        sheet.reject();
    }
    QVERIFY(!f.doc.IsModified());
    QCOMPARE(ExportText(f, id, reports::formatCsv), before);
    QCOMPARE(f.doc.GetReport(id)->m_preset, uint32_t(CReport::allDates));
    QCOMPARE(f.doc.GetReport(id)->m_summarizeLevel, 1);

    {
        CTimeSummaryProperties sheet(*f.frame, *f.doc.GetReport(id));
        sheet.show();
        edit(sheet);
        // The Dates page is checked when it is left and when OK applies it.
        sheet.DatesPage()->EndField()->SetDate(QDate(2024, 2, 1));
        sheet.Pages()->setCurrentIndex(0);
        sheet.Pages()->setCurrentIndex(2);
        QCOMPARE(sheet.Pages()->currentIndex(), 0);
        QCOMPARE(LastMessage(f), Msg(40017));
        sheet.DatesPage()->EndField()->setText(QStringLiteral("02/30/2024"));
        sheet.Pages()->setCurrentIndex(3);
        sheet.accept();
        QVERIFY(sheet.isVisible());
        QCOMPARE(LastMessage(f), Msg(40018));
        QCOMPARE(sheet.Pages()->currentIndex(), 0);
        QCOMPARE(sheet.focusWidget(), sheet.DatesPage()->EndField());
        QVERIFY(!f.doc.IsModified());
        sheet.DatesPage()->EndField()->SetDate(QDate(2024, 3, 31));
        sheet.accept();
        QCOMPARE(sheet.result(), int(QDialog::Accepted));
    }
    QVERIFY(f.doc.IsModified());
    const CReport& r = *f.doc.GetReport(id);
    QCOMPARE(r.m_name, std::string("Hours"));
    QCOMPARE(r.m_preset, uint32_t(CReport::customDates));
    QCOMPARE(r.m_startDate.DayKey(), std::string("20240301"));
    QCOMPARE(r.m_selectedTasks, std::vector<uint32_t>{s.acme});
    QCOMPARE(r.m_selectedActivities, std::vector<uint32_t>{s.design});
    QCOMPARE(r.m_summarizeLevel, 2);
    QCOMPARE(r.m_timeFrame, uint32_t(CReport::frameWeek));
    QVERIFY(r.m_showTotals && !r.m_rollup);
    QCOMPARE(r.m_fieldFlags, uint32_t(CReport::field2));
    QCOMPARE(r.m_orientation, 1u);
    QTRY_COMPARE(list->RowTexts(0), QStringList({"Hours", "Acme", "03/01/2024-03/31/2024"}));

    // The export follows the definition: it is what the same definition made anew exports.
    const std::string after = ExportText(f, id, reports::formatCsv);
    QVERIFY(after != before);
    std::unique_ptr<CReport> same = CReport::Create(CReport::timeSummary);
    *same = r;
    same->m_id = 0;
    const uint32_t sameId = AddReportFromDraft(f.doc, *same);
    QCOMPARE(ExportText(f, sameId, reports::formatCsv), after);
    QVERIFY(after.find("Website") != std::string::npos);
    QVERIFY(after.find("Other") == std::string::npos);

    // A definition whose task is gone keeps it until another task is chosen.
    {
        std::lock_guard lock(f.doc.GetLock());
        f.doc.GetReport(sameId)->m_selectedTasks = {4242};
    }
    {
        CTimeSummaryProperties sheet(*f.frame, *f.doc.GetReport(sameId));
        sheet.show();
        QCOMPARE(sheet.TasksPage()->Tree()->SelectedTaskId(), CTimeKeeperDoc::kRootTaskId);
        sheet.accept();
        QCOMPARE(sheet.result(), int(QDialog::Accepted));
    }
    QCOMPARE(f.doc.GetReport(sameId)->m_selectedTasks, std::vector<uint32_t>{4242});
    {
        CTimeSummaryProperties sheet(*f.frame, *f.doc.GetReport(sameId));
        sheet.show();
        sheet.TasksPage()->Tree()->SelectTask(s.other);
        sheet.accept();
    }
    QCOMPARE(f.doc.GetReport(sameId)->m_selectedTasks, std::vector<uint32_t>{s.other});
}

void TestReportWizard::reportsPageRunsWizardAndSheets()
{
    ViewFixture f;
    BuildSample(f);
    CSheetListView* list = f.frame->SheetList();
    QAction* newReport = f.frame->Action(QStringLiteral("insertReport"));
    QVERIFY(newReport);
    QVERIFY(f.frame->InsertMenu()->actions().contains(newReport));
    QVERIFY(
        f.frame->findChild<QToolBar*>(QStringLiteral("toolBar"))->actions().contains(newReport));
    list->SetPage(CSheetListView::pageReports);
    QMenu menu;
    list->FillContextMenu(menu);
    QVERIFY(Texts(menu).contains(QStringLiteral("&New Report...")));
    QVERIFY(Texts(menu).contains(QStringLiteral("&Properties...")));

    // The command runs the wizard; the new report is selected and shown.
    list->SetPage(CSheetListView::pageTime);
    bool sawWizard = false;
    ViewFixture::WhenDialogShows(
        [&sawWizard](QDialog* dialog)
        {
            auto* wizard = qobject_cast<CReportSheet*>(dialog);
            if (wizard == nullptr)
            {
                dialog->reject();
                return;
            }
            sawWizard = true;
            wizard->TypePage()->KindButton(CReport::todoDetail)->setChecked(true);
            WalkToName(*wizard);
            wizard->NamePage()->NameField()->setText(QStringLiteral("Open items"));
            wizard->button(QWizard::FinishButton)->click();
        });
    newReport->trigger();
    QVERIFY(sawWizard);
    QCOMPARE(f.doc.m_reports.size(), size_t(1));
    const CReport& made = *f.doc.m_reports.front();
    QCOMPARE(made.m_kind, uint32_t(CReport::todoDetail));
    QCOMPARE(made.m_name, std::string("Open items"));
    QCOMPARE(f.frame->viewedReports, QList<uint32_t>{made.m_id});
    QCOMPARE(list->CurrentPage(), int(CSheetListView::pageReports));
    QCOMPARE(list->SelectedReports().size(), size_t(1));
    QCOMPARE(list->SelectedReports().front()->m_id, made.m_id);

    // Cancel makes nothing.
    ViewFixture::WhenDialogShows([](QDialog* dialog) { dialog->reject(); });
    list->NewReport();
    QCOMPARE(f.doc.m_reports.size(), size_t(1));

    // Properties and a double-click open the sheet of the report's kind.
    QString sheetClass;
    ViewFixture::WhenDialogShows(
        [&sheetClass](QDialog* dialog)
        {
            sheetClass = QString::fromLatin1(dialog->metaObject()->className());
            dialog->reject();
        });
    list->SelectRow(0);
    f.frame->SetActiveView(CMainFrame::ActiveView::list);
    f.frame->UpdateCommandStates();
    f.frame->Action(QStringLiteral("editProperties"))->trigger();
    QCOMPARE(sheetClass, QStringLiteral("CToDoDetailProperties"));
    sheetClass.clear();
    ViewFixture::WhenDialogShows(
        [&sheetClass](QDialog* dialog)
        {
            sheetClass = QString::fromLatin1(dialog->metaObject()->className());
            dialog->reject();
        });
    if (list->ReportIcons()->isVisible())
        emit list->ReportIcons()->itemDoubleClicked(list->ReportIcons()->item(0));
    else
        emit list->List()->itemDoubleClicked(list->List()->topLevelItem(0), 0);
    QCOMPARE(sheetClass, QStringLiteral("CToDoDetailProperties"));

}

#include "tst_reportwizard.moc"

void TestReportWizard::textsReadWithoutSlips()
{
    ViewFixture f;
    CReportSheet wizard(*f.frame);
    QStringList texts{ToQ(Msg(40003)), ToQ(Msg(40029))};
    for (const QWizardPage* page : wizard.findChildren<QWizardPage*>())
        texts << page->title() << page->subTitle();
    for (const QAbstractButton* button : wizard.findChildren<QAbstractButton*>())
        texts << button->text().replace(QStringLiteral("&&"), QStringLiteral("&"));
    const QRegularExpression slip(QStringLiteral("^\\s|\\s$|\\b(a|an) (a|an|the)\\b|\\ban [b-df-gj-np-tv-z]|\\bis the \\w+ would\\b"));
    QCOMPARE(texts.filter(slip), QStringList());
    QVERIFY(texts.contains(QStringLiteral("Time & Expense Summary")));
}

int RunReportWizardTests(int argc, char** argv)
{
    TestReportWizard test;
    return QTest::qExec(&test, argc, argv);
}
