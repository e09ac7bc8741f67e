// Shows the main window on a demo document, in one of the states the screenshots
// under docs/ show, and stays until it is ended. The clock stands still late in the
// morning of the real today, with a timer running since 10:40.

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"
#include "views/entrysheets.h"
#include "views/mainframe.h"
#include "views/options/optionssheet.h"
#include "views/qtconvert.h"
#include "views/qtprompter.h"
#include "views/reports/reportproperties.h"
#include "views/reports/reportsheet.h"
#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/timesheetview.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDate>
#include <QTabWidget>
#include <QTimer>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QTreeWidget>

#include <cstdio>
#include <mutex>

namespace
{

CTask* FindTask(CTimeKeeperDoc& doc, const std::string& path)
{
    for (const auto& [id, task] : doc.m_tasks)
        if (doc.GetTaskPath(task.get()) == path)
            return task.get();
    return nullptr;
}

void AddTime(CTimeKeeperDoc& doc, CTask* task, const CDateTime& day, int h1, int m1, int h2, int m2,
             const std::string& note)
{
    if (task == nullptr)
        return;
    std::lock_guard lock(doc.GetLock());
    auto entry = std::make_unique<CTimeEntry>();
    entry->m_taskId = task->m_id;
    entry->m_start = CTinyTime(h1, m1);
    entry->m_end = CTinyTime(h2, m2);
    entry->m_note = note;
    doc.FileTimeEntry(doc.GetOrCreateDay(day), std::move(entry));
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Quorvane Time & Expense"));
    QCommandLineParser parser;
    parser.addOption({QStringLiteral("doc"), QStringLiteral("The demo document."), QStringLiteral("file")});
    parser.addOption({QStringLiteral("scene"), QStringLiteral("What to show."), QStringLiteral("name"),
                      QStringLiteral("main")});
    parser.process(application);
    const QString scene = parser.value(QStringLiteral("scene"));

    const QDate today = QDate::currentDate();
    platform::FixedClock clock(platform::LocalTime{today.year(), today.month(), today.day(), 10, 40, 0});
    platform::SettingsStore store;
    store.SetInt("Tip", "StartUp", 1);
    CTimeKeeperApp app(store, clock, platform::LocaleInfo::UnitedStates());
    app.LoadSettings();
    CTimeKeeperDoc doc;
    CMainFrame* framePointer = nullptr;
    CQtPrompter prompter([&framePointer]() -> QWidget* { return framePointer; });
    CMainFrame frame(app, doc, prompter);
    framePointer = &frame;
    frame.setGeometry(16, 16, 1248, 766);
    frame.show();
    if (!frame.OpenDocumentFile(parser.value(QStringLiteral("doc"))))
        return 1;

    // A morning of work today, and the timer running since 10:40.
    const CDateTime day = FromQDate(today);
    CTask* design = FindTask(doc, "Bellweather Foods/Website Redesign/Design");
    CTask* admin = FindTask(doc, "Internal/Administration");
    CTask* development = FindTask(doc, "Bellweather Foods/Website Redesign/Development");
    AddTime(doc, admin, day, 8, 30, 8, 55, "Weekly planning");
    AddTime(doc, design, day, 8, 55, 10, 40, "Product page mock-ups");
    doc.UpdateAllViews(hintAll);
    frame.StartTimer(development, "Product page layout");
    clock.Set(platform::LocalTime{today.year(), today.month(), today.day(), 11, 47, 10});
    frame.TimerTick();
    QApplication::processEvents();
    if (development)
        frame.TaskView()->SelectTask(development->m_id);
    frame.TaskView()->expandAll();
    if (CTask* inactive = FindTask(doc, "Internal/Old Brochure"))
        if (QTreeWidgetItem* item = frame.TaskView()->ItemOf(inactive->m_id))
            frame.TaskView()->scrollToItem(item);
    frame.TaskView()->scrollToTop();
    CSheetListView* list = frame.SheetList();

    QDialog* editor = nullptr;
    if (scene == QLatin1String("expenses") || scene == QLatin1String("expense-entry"))
    {
        frame.TimeSheet()->GoToDateValue(today.addDays(-3));
        list->SetPage(CSheetListView::pageExpenses);
        for (int d = 1; d < 14 && list->RowCount() == 0; ++d)
            frame.TimeSheet()->GoToDateValue(today.addDays(-d));
    }
    else if (scene == QLatin1String("todo") || scene == QLatin1String("todo-entry"))
        list->SetPage(CSheetListView::pageToDo);
    else if (scene == QLatin1String("reports") || scene.startsWith(QLatin1String("report-")))
    {
        app.SetReportListType(3);
        list->SetPage(CSheetListView::pageReports);
    }
    else if (scene == QLatin1String("task-view"))
        frame.SetViewType(1);
    else
        list->SetPage(CSheetListView::pageTime);
    QApplication::processEvents();

    if (scene == QLatin1String("time-entry") && doc.m_activeEntry)
    {
        list->SelectRow(0);
        CDay* d = doc.GetDay(day);
        editor = new CTimeEntryPropertySheet(frame, *d, *d->TimeEntries().front(), &frame);
    }
    else if (scene == QLatin1String("expense-entry") && list->RowCount() > 0)
    {
        list->SelectRow(0);
        editor = new CExpenseEntrySheet(frame, *list->SelectedExpenses().front(), &frame);
    }
    else if (scene == QLatin1String("todo-entry") && list->RowCount() > 0)
    {
        list->SelectRow(0);
        editor = new CToDoEntrySheet(frame, *list->SelectedToDos().front(), &frame);
    }
    else if (scene.startsWith(QLatin1String("task")) && scene != QLatin1String("task-view") && development)
    {
        auto* sheet = new CTaskProperties(frame, *development, &frame);
        if (scene == QLatin1String("task-billing"))
            sheet->Pages()->setCurrentIndex(1);
        editor = sheet;
    }
    else if (scene == QLatin1String("contact") && !doc.m_contacts.empty())
        editor = new CContactSheet(frame, *doc.m_contacts.begin()->second, &frame);
    else if (scene == QLatin1String("contacts"))
        editor = new CContactsDlg(frame, &frame);
    else if (scene.startsWith(QLatin1String("report-wizard-")))
    {
        // A Time Summary on its way through the wizard, stopped at the page of the scene.
        auto* wizard = new CReportSheet(frame, &frame);
        const QString page = scene.mid(14);
        wizard->TypePage()
            ->KindButton(page == QLatin1String("invoice") ? CReport::invoice : CReport::timeSummary)
            ->setChecked(true);
        const int stop = page == QLatin1String("tasks")       ? CReportSheet::pageTasks
                         : page == QLatin1String("dates")     ? CReportSheet::pageDates
                         : page == QLatin1String("summarize") ? CReportSheet::pageSummarize
                         : page == QLatin1String("fields")    ? CReportSheet::pageFields
                         : page == QLatin1String("invoice")   ? CReportSheet::pageInvoice
                         : page == QLatin1String("print")     ? CReportSheet::pagePrint
                         : page == QLatin1String("name")      ? CReportSheet::pageName
                                                              : CReportSheet::pageType;
        wizard->restart();
        for (int guard = 0; guard < 12; ++guard)
        {
            if (wizard->currentId() == CReportSheet::pageSummarize)
            {
                wizard->SummarizePage()->Part()->SelectLevel(2);
                wizard->SummarizePage()->Part()->SelectTimeFrame(CReport::frameMonth);
                wizard->SummarizePage()->Part()->TotalsBox()->setChecked(true);
            }
            if (wizard->currentId() == CReportSheet::pageTasks && development)
                wizard->TasksPage()->Part()->Tree()->SelectTask(development->m_id);
            if (wizard->currentId() == CReportSheet::pageFields)
                wizard->FieldsPage()->Part()->Box(QStringLiteral("billing-rate"))->setChecked(true);
            if (wizard->currentId() == stop)
                break;
            wizard->next();
        }
        editor = wizard;
    }
    else if (scene == QLatin1String("report-properties"))
    {
        for (const auto& report : doc.m_reports)
            if (report->m_kind == CReport::timeSummary || report->m_kind == CReport::invoice)
            {
                auto* sheet = CreateReportProperties(frame, *report, &frame).release();
                sheet->Pages()->setCurrentWidget(sheet->SummarizePage());
                editor = sheet;
                break;
            }
    }
    else if (scene.startsWith(QLatin1String("options-")))
    {
        // One scene per page: options-general, options-task-levels, ... options-invoice.
        auto* sheet = new COptionsSheet(frame, &frame);
        for (int i = 0; i < sheet->Pages()->count(); ++i)
            if (QStringLiteral("options-") + sheet->Pages()->tabText(i).toLower().replace(u' ', u'-') == scene)
                sheet->Pages()->setCurrentIndex(i);
        editor = sheet;
    }
    if (editor)
    {
        editor->setModal(true);
        editor->show();
        editor->move(frame.geometry().center() - editor->rect().center());
    }
    std::printf("ready\n");
    std::fflush(stdout);
    return application.exec();
}
