#include "viewfixture.h"

#include "timekeeping/timer.h"
#include "views/conflictdlg.h"
#include "views/entrysheets.h"
#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/timesheetview.h"
#include "widgets/datetimeedit.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTabBar>
#include <QRadioButton>
#include <QTest>
#include <QTreeWidget>

#include <mutex>

namespace
{

const CDateTime kToday = CDateTime::FromDate(2024, 3, 13);

template <class T>
T* Field(QDialog* dialog, const char* name)
{
    T* field = dialog->findChild<T*>(QString::fromLatin1(name));
    if (field == nullptr)
        qWarning("no field %s", name);
    return field;
}

} // namespace

class TestEntryLists : public QObject
{
    Q_OBJECT

private slots:
    void timePageSortsAndDeletesWithConfirmation();
    void newTimeEntryGoesThroughEditorAndConflict();
    void droppedTasksMakeEntriesOrAreRefused();
    void timeEntryEditorChecksItsFields();
    void expensePageComputesMileageAndMovesExpenses();
    void toDoPageChecksDescriptionAndCompletesOnShownDay();
    void reportsPageListsRenamesExportsAndDeletes();
    void contactsNeedANameAndDeleteWithAQuestion();
    void taskPropertiesKeepActivityRates();
    void pageSwitchSavesColumnWidths();
};

void TestEntryLists::timePageSortsAndDeletesWithConfirmation()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Beta");
    const uint32_t b = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "alpha");
    f.AddTime(a, kToday, 10, 0, 10, 30);
    f.AddTime(b, kToday, 8, 0, 9, 45);
    f.AddTime(a, kToday, 12, 0, 13, 0);
    f.Reopen();
    CSheetListView* list = f.frame->SheetList();
    QCOMPARE(list->RowCount(), 3);
    // "TimeSortOrder" 1: by start.
    QCOMPARE(list->RowTexts(0).value(1), QStringLiteral("8:00 AM"));
    QCOMPARE(list->RowTexts(2).value(1), QStringLiteral("12:00 PM"));

    list->SortByColumn(3);
    QCOMPARE(f.app->GetTimeSortOrder(), 3);
    QCOMPARE(list->RowTexts(0).value(3), QStringLiteral("0:30"));
    QCOMPARE(list->RowTexts(2).value(3), QStringLiteral("1:45"));
    list->SortByColumn(0);
    QCOMPARE(list->RowTexts(0).value(0), QStringLiteral("alpha"));
    f.frame->SetViewType(1);
    f.frame->TaskView()->SelectTask(a);
    list->SortByColumn(4);
    QCOMPARE(f.app->GetTimeSortOrder(), 14);
    f.frame->SetViewType(0);

    // One row: 41008; No keeps it.
    list->SelectRow(0);
    f.prompter.Script(platform::Answer::no);
    list->DeleteSelected();
    QCOMPARE(f.prompter.Questions().back(), std::string("Are you sure you want to delete the selected Time Entry?"));
    QCOMPARE(f.doc.CountTimeEntries(), size_t(3));
    // Several rows: 41019; Yes deletes them.
    list->SelectRow(0);
    list->SelectRow(1, true);
    f.prompter.Script(platform::Answer::yes);
    list->DeleteSelected();
    QCOMPARE(f.prompter.Questions().back(),
             std::string("Are you sure you want to delete the selected Time Entries?"));
    QCOMPARE(f.doc.CountTimeEntries(), size_t(1));
    QCOMPARE(list->RowCount(), 1);
    QVERIFY(f.doc.IsModified());
}

void TestEntryLists::newTimeEntryGoesThroughEditorAndConflict()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.AddTime(a, kToday, 9, 0, 10, 0);
    f.Reopen();
    f.frame->TaskView()->SelectTask(a);

    bool conflictAsked = false;
    QTime proposedStart, proposedEnd;
    ViewFixture::WhenDialogShows([&](QDialog* editor) {
        auto* start = Field<CDateTimeEdit>(editor, "start");
        auto* end = Field<CDateTimeEdit>(editor, "end");
        // It continues where the day's last entry ended.
        proposedStart = start->Time();
        proposedEnd = end->Time();
        start->SetTime(QTime(9, 30));
        end->SetTime(QTime(10, 30));
        ViewFixture::WhenDialogShows([&](QDialog* conflict) {
            conflictAsked = qobject_cast<CTimeEntryConflictDlg*>(conflict) != nullptr;
            conflict->accept();
        });
        editor->accept();
    });
    f.frame->Action(QStringLiteral("insertTimeEntry"))->trigger();
    QVERIFY(conflictAsked);
    QCOMPARE(proposedStart, QTime(10, 0));
    QCOMPARE(proposedEnd, QTime(10, 0));
    const CDay* day = f.doc.GetDay(kToday);
    QCOMPARE(day->TimeEntries().size(), size_t(2));
    QCOMPARE(day->TimeEntries()[0]->m_end, CTinyTime(9, 30));
    QCOMPARE(day->TimeEntries()[1]->m_start, CTinyTime(9, 30));
    QCOMPARE(day->TimeEntries()[1]->m_end, CTinyTime(10, 30));
    QCOMPARE(f.doc.m_recentTasks.front(), a);
    QCOMPARE(f.frame->SheetList()->RowCount(), 2);

    // Cancel in the editor adds nothing, and leaves no empty day behind.
    f.frame->TimeSheet()->GoToDateValue(QDate(2024, 3, 20));
    ViewFixture::WhenDialogShows([](QDialog* editor) { editor->reject(); });
    f.frame->SheetList()->NewTimeEntry(f.Task(a));
    QCOMPARE(f.doc.CountTimeEntries(), size_t(2));
    QVERIFY(f.doc.GetDay(CDateTime::FromDate(2024, 3, 20)) == nullptr);
}

void TestEntryLists::droppedTasksMakeEntriesOrAreRefused()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    const uint32_t plan = f.AddTask(a, 2, "Plan");
    f.AddTask(plan, 3, "Phase");
    f.Reopen();
    f.Task(plan)->m_projectId = 1;
    f.Task(plan)->m_projectTaskNumber = 4;
    CSheetListView* list = f.frame->SheetList();

    // A project summary task takes no entries.
    list->DropTask(plan, false, QPoint());
    QCOMPARE(f.prompter.Messages().back(), std::string("Cannot add entry:  The task is a project summary task."));

    // A right-button drop on the Time page offers to start the timer or add an entry.
    QMenu menu;
    list->FillDropMenu(menu, a);
    QCOMPARE(Texts(menu), QStringList({"&Start Timer", "&Add Time Entry", "&Cancel"}));
    menu.findChild<QAction*>(QStringLiteral("dropStartTimer"))->trigger();
    QVERIFY(f.doc.m_timerRunning);
    QCOMPARE(f.doc.m_activeEntry->m_taskId, a);

    // A left-button drop on the Expenses page opens a new expense.
    list->SetPage(CSheetListView::pageExpenses);
    ViewFixture::WhenDialogShows([](QDialog* sheet) {
        Field<CCurrencyEdit>(sheet, "amount")->setText(QStringLiteral("$12.40"));
        sheet->accept();
    });
    list->DropTask(a, false, QPoint());
    QCOMPARE(f.doc.CountExpenseEntries(), size_t(1));
    QCOMPARE(f.doc.GetDay(kToday)->ExpenseEntries().front()->m_amount, 12.4);
    QCOMPARE(list->RowTexts(0), QStringList({"Acme", "", "$12.40"}));

    // Nothing happens on the Reports page.
    list->SetPage(CSheetListView::pageReports);
    list->DropTask(a, false, QPoint());
    QCOMPARE(f.doc.CountExpenseEntries(), size_t(1));
}

void TestEntryLists::timeEntryEditorChecksItsFields()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    CTimeEntry* entry = f.AddTime(a, kToday, 9, 0, 10, 0);
    entry->m_note = "Drive to Northwind plant"; // as the task's last note fills it in
    for (const char* name : {"Travel", "design", "Audit"})
        f.doc.AddActivity(name);
    CDay* day = f.doc.GetDay(kToday);
    {
        CTimeEntryPropertySheet sheet(*f.frame, *day, *entry);
        sheet.show();
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QCOMPARE(sheet.ActivityField()->itemText(1) + sheet.ActivityField()->itemText(3), QStringLiteral("AuditTravel"));
        sheet.StartField()->SetTime(QTime(9, 0));
        sheet.EndField()->SetTime(QTime(9, 0));
        sheet.accept();
        QVERIFY(sheet.isVisible());
        QCOMPARE(f.prompter.Messages().back(), std::string("The End Time must be later than the Start Time."));
        QCOMPARE(sheet.focusWidget(), static_cast<QWidget*>(sheet.EndField()));
        QCOMPARE(entry->m_end, CTinyTime(10, 0));

        // 22:00 to 00:00 ends at the end of the day.
        sheet.StartField()->SetTime(QTime(22, 0));
        sheet.EndField()->SetTime(QTime(0, 0));
        sheet.UseDefaultsBox()->setChecked(false);
        sheet.BillableBox()->setChecked(false);
        sheet.RateField()->setText(QStringLiteral("$75.50"));
        sheet.OvertimeBox()->setChecked(true);
        sheet.MultiplierField()->setValue(1.5);
        sheet.ActivityField()->setFocus();
        QTest::keyClick(sheet.ActivityField(), Qt::Key_Tab); // reaches the note, selected: typing replaces it
        QTest::keyClicks(sheet.NoteField(), QStringLiteral("Late call"));
        sheet.accept();
        QVERIFY(!sheet.isVisible());
    }
    QCOMPARE(entry->m_start, CTinyTime(22, 0));
    QCOMPARE(entry->m_end, CTinyTime(24, 0));
    QVERIFY(entry->m_customBilling);
    QVERIFY(!entry->m_billable);
    QCOMPARE(entry->m_rate, 75.5);
    QVERIFY(entry->m_overtime);
    QCOMPARE(entry->m_overtimeMultiplier, 1.5f);
    QCOMPARE(entry->m_note, std::string("Late call"));

    // Billing defaults clear the entry's own billing.
    {
        CTimeEntryPropertySheet sheet(*f.frame, *day, *entry);
        sheet.show();
        sheet.UseDefaultsBox()->setChecked(true);
        sheet.accept();
    }
    QVERIFY(!entry->m_customBilling);
    QCOMPARE(entry->m_rate, 0.0);

    // A running entry must start before the rounded current time (09:00 here).
    f.frame->StartTimer(f.Task(a));
    CTimeEntry* running = f.doc.m_activeEntry;
    QVERIFY(running);
    {
        CTimeEntryPropertySheet sheet(*f.frame, *running->m_day, *running);
        sheet.show();
        QVERIFY(!sheet.EndField()->isEnabled());
        sheet.StartField()->SetTime(QTime(9, 15));
        sheet.accept();
        QVERIFY(sheet.isVisible());
        QCOMPARE(f.prompter.Messages().back(),
                 std::string("The Start Time must be before the current time on an active task."));
        sheet.StartField()->SetTime(QTime(8, 30));
        sheet.accept();
        QVERIFY(!sheet.isVisible());
    }
    QCOMPARE(running->m_start, CTinyTime(8, 30));
    QVERIFY(running->IsRunning());
}

void TestEntryLists::expensePageComputesMileageAndMovesExpenses()
{
    QCOMPARE(CExpenseEntry::MileageAmount(1, 0.125f), 0.13);
    QCOMPARE(CExpenseEntry::MileageAmount(10, 0.375f), 3.75);
    QCOMPARE(CExpenseEntry::MileageAmount(3, 0.5f), 1.5);

    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.Reopen();
    f.doc.m_defaultMileageRate = 0.58f;
    f.frame->TaskView()->SelectTask(a);
    CSheetListView* list = f.frame->SheetList();
    list->SetPage(CSheetListView::pageExpenses);

    double offeredRate = 0;
    bool amountEnabled = true;
    QString shown; // the amount follows the distance and the rate; types in name order
    ViewFixture::WhenDialogShows([&](QDialog* sheet) {
        auto* type = Field<QComboBox>(sheet, "type");
        type->setCurrentIndex(type->findData(CExpenseType::kMileageId));
        offeredRate = Field<QDoubleSpinBox>(sheet, "mileageRate")->value();
        amountEnabled = Field<CCurrencyEdit>(sheet, "amount")->isEnabled();
        Field<QSpinBox>(sheet, "driven")->setValue(84);
        Field<QDoubleSpinBox>(sheet, "mileageRate")->setValue(0.670);
        shown = Field<CCurrencyEdit>(sheet, "amount")->text() + type->itemText(type->findText(QStringLiteral("Taxi")) + 1);
        sheet->accept();
    });
    f.frame->Action(QStringLiteral("insertExpense"))->trigger();
    QCOMPARE(offeredRate, 0.58);
    QVERIFY(!amountEnabled);
    QCOMPARE(shown, QStringLiteral("$56.28Telephone"));
    QCOMPARE(f.doc.CountExpenseEntries(), size_t(1));
    CExpenseEntry* expense = f.doc.GetDay(kToday)->ExpenseEntries().front().get();
    QCOMPARE(expense->m_amount, 56.28);
    QCOMPARE(expense->m_distance, 84.0f);
    QCOMPARE(expense->m_expenseTypeId, CExpenseType::kMileageId);
    QCOMPARE(list->RowTexts(0), QStringList({"Acme", "Mileage", "$56.28"}));

    // Moving to the same date changes nothing.
    f.frame->SaveDocument();
    QVERIFY(!f.doc.IsModified());
    list->MoveExpenseTo(expense, QDate(2024, 3, 13));
    QVERIFY(!f.doc.IsModified());
    QCOMPARE(f.doc.GetDay(kToday)->ExpenseEntries().size(), size_t(1));
    // Another date files it there.
    list->MoveExpenseTo(expense, QDate(2024, 3, 15));
    QVERIFY(f.doc.IsModified());
    QVERIFY(f.doc.GetDay(kToday) == nullptr || f.doc.GetDay(kToday)->ExpenseEntries().empty());
    QCOMPARE(f.doc.GetDay(CDateTime::FromDate(2024, 3, 15))->ExpenseEntries().size(), size_t(1));
    QCOMPARE(expense->m_date, CDateTime::FromDate(2024, 3, 15));
    QCOMPARE(list->RowCount(), 0);

    // Task view: date, type, note and amount.
    f.frame->SetViewType(1);
    QCOMPARE(list->RowTexts(0), QStringList({"03/15/2024", "Mileage", "", "$56.28"}));
}

void TestEntryLists::toDoPageChecksDescriptionAndCompletesOnShownDay()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.Reopen();
    f.frame->TaskView()->SelectTask(a);
    CSheetListView* list = f.frame->SheetList();
    list->SetPage(CSheetListView::pageToDo);

    bool refused = false;
    ViewFixture::WhenDialogShows([&](QDialog* sheet) {
        auto* description = Field<QPlainTextEdit>(sheet, "description");
        description->setPlainText(QStringLiteral("   "));
        sheet->accept();
        refused = sheet->isVisible();
        description->setPlainText(QStringLiteral("  Call the client"));
        Field<QComboBox>(sheet, "priority")->setCurrentText(QStringLiteral("B"));
        Field<CDateTimeEdit>(sheet, "due")->SetDate(QDate(2024, 3, 18));
        sheet->accept();
    });
    f.frame->Action(QStringLiteral("insertToDo"))->trigger();
    QVERIFY(refused);
    QCOMPARE(f.prompter.Messages().back(), std::string("Enter a To Do Description."));
    QCOMPARE(f.doc.m_todoList.size(), size_t(1));
    CToDoEntry* todo = f.doc.m_todoList.front().get();
    QCOMPARE(todo->m_description, std::string("Call the client"));
    QCOMPARE(todo->m_priority, std::string("B"));
    QCOMPARE(todo->m_dueDate, CDateTime::FromDate(2024, 3, 18));
    QVERIFY(todo->m_completeDate.IsNull());
    QCOMPARE(list->RowTexts(0), QStringList({"Acme", "Call the client", "03/18/2024", "B"}));

    // Completed while the calendar shows another day: filed under that day.
    f.frame->TimeSheet()->GoToDateValue(QDate(2024, 3, 20));
    list->SelectRow(0);
    f.frame->UpdateCommandStates();
    QVERIFY(f.frame->Action(QStringLiteral("editComplete"))->isEnabled());
    f.frame->Action(QStringLiteral("editComplete"))->trigger();
    QVERIFY(f.doc.m_todoList.empty());
    const CDay* shown = f.doc.GetDay(CDateTime::FromDate(2024, 3, 20));
    QVERIFY(shown);
    QCOMPARE(shown->ToDoEntries().size(), size_t(1));
    QCOMPARE(shown->ToDoEntries().front()->m_completeDate.DatePart(), CDateTime::FromDate(2024, 3, 20));
    QCOMPARE(list->RowCount(), 1);
    // On another day it is gone from the list: it is no longer outstanding.
    f.frame->TimeSheet()->GoToDateValue(QDate(2024, 3, 21));
    QCOMPARE(list->RowCount(), 0);
}

void TestEntryLists::reportsPageListsRenamesExportsAndDeletes()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.AddTime(a, kToday, 9, 0, 10, 0);
    uint32_t reportId = 0;
    {
        std::lock_guard lock(f.doc.GetLock());
        CReport* report = f.doc.AddReport(CReport::timeDetail);
        report->m_name = "Weekly hours";
        report->m_preset = CReport::allDates;
        report->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
        reportId = report->m_id;
    }
    f.Reopen();
    CSheetListView* list = f.frame->SheetList();

    // Large icons first ("ReportListType" 0), then the details with their columns.
    list->SetPage(CSheetListView::pageReports);
    QVERIFY(list->ReportIcons()->isVisible());
    QCOMPARE(list->RowCount(), 1);
    QCOMPARE(list->RowTexts(0), QStringList({"Weekly hours"}));
    list->SetReportListType(3);
    QVERIFY(list->List()->isVisible());
    QCOMPARE(list->List()->headerItem()->text(2), QStringLiteral("Dates"));
    QCOMPARE(list->RowTexts(0), QStringList({"Weekly hours", "All Tasks", "All Dates"}));

    // Renamed in place.
    list->SelectRow(0);
    list->RenameSelected();
    auto* editor = list->List()->viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    editor->setText(QStringLiteral("Hours by week"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(f.doc.GetReport(reportId)->m_name, std::string("Hours by week"));

    // Exported to the file the user names.
    QTRY_COMPARE(list->RowTexts(0).value(0), QStringLiteral("Hours by week"));
    list->SelectRow(0);
    const QString exported = f.Path(QStringLiteral("hours.csv"));
    f.frame->saveNames = {exported};
    list->ExportSelectedReport();
    QVERIFY(QFile::exists(exported));
    QFile file(exported);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("Acme"));

    list->SelectRow(0);
    f.prompter.Script(platform::Answer::yes);
    list->DeleteSelected();
    QCOMPARE(f.prompter.Questions().back(), std::string("Are you sure you want to delete the selected reports?"));
    QVERIFY(f.doc.m_reports.empty());
    QCOMPARE(list->RowCount(), 0);
}

void TestEntryLists::contactsNeedANameAndDeleteWithAQuestion()
{
    ViewFixture f;
    CContact draft;
    {
        CContactSheet sheet(*f.frame, draft);
        sheet.show();
        sheet.accept();
        QVERIFY(sheet.isVisible());
        QCOMPARE(f.prompter.Messages().back(), std::string("A name is required for contact."));
        sheet.MiddleField()->setText(QStringLiteral("Q."));
        sheet.accept();
        QVERIFY(!sheet.isVisible());
    }
    QCOMPARE(draft.m_middle, std::string("Q."));

    CContactsDlg manager(*f.frame);
    manager.show();
    ViewFixture::WhenDialogShows([](QDialog* sheet) {
        sheet->findChild<QLineEdit*>(QStringLiteral("first"))->setText(QStringLiteral("Morgan"));
        sheet->findChild<QLineEdit*>(QStringLiteral("last"))->setText(QStringLiteral("Reyes"));
        sheet->accept();
    });
    manager.NewContact(false);
    QCOMPARE(f.doc.m_contacts.size(), size_t(1));
    QCOMPARE(manager.List()->count(), 1);
    QCOMPARE(manager.List()->item(0)->text(), QStringLiteral("Reyes, Morgan"));

    manager.List()->setCurrentRow(0);
    f.prompter.Script(platform::Answer::no);
    manager.DeleteSelected();
    QCOMPARE(f.prompter.Questions().back(), std::string("Are you sure you want to delete the contact - Reyes, Morgan?"));
    QCOMPARE(f.doc.m_contacts.size(), size_t(1));
    manager.List()->setCurrentRow(0);
    f.prompter.Script(platform::Answer::yes);
    manager.DeleteSelected();
    QVERIFY(f.doc.m_contacts.empty());
    QCOMPARE(manager.List()->count(), 0);
}

void TestEntryLists::taskPropertiesKeepActivityRates()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    {
        std::lock_guard lock(f.doc.GetLock());
        f.doc.AddActivity("Design");
        f.doc.AddActivity("Meetings");
    }
    CTask* task = f.Task(a);
    {
        CTaskProperties sheet(*f.frame, *task);
        sheet.show();
        sheet.UseParentBillingBox()->setChecked(false);
        sheet.UseActivityRatesBox()->setChecked(true);
        QCOMPARE(sheet.ActivityRates()->topLevelItem(0)->text(1), QStringLiteral("<default>"));
        sheet.SetActivityRate(0, CActivityRateDlg::State::rate, 80.0);
        sheet.SetActivityRate(1, CActivityRateDlg::State::notBillable, 0.0);
        QCOMPARE(sheet.ActivityRates()->topLevelItem(0)->text(1), QStringLiteral("$80.00"));
        QCOMPARE(sheet.ActivityRates()->topLevelItem(1)->text(1), QStringLiteral("Not billable"));
        sheet.RateField()->setText(QStringLiteral("$60.00"));
        sheet.HoursField()->setValue(2.5);
        sheet.NameField()->setText(QStringLiteral("  Acme Corp"));
        sheet.NotesField()->setPlainText(QStringLiteral("Net 30"));
        sheet.accept();
        QVERIFY(!sheet.isVisible());
    }
    QCOMPARE(task->m_name, std::string("Acme Corp"));
    QVERIFY(!task->m_useParentBilling);
    QVERIFY(task->m_useActivityRates);
    QCOMPARE(task->m_regularRate, 60.0);
    QCOMPARE(task->m_hoursEstimate, 150.0);
    QCOMPARE(task->m_notes, std::string("Net 30"));
    QCOMPARE(task->m_activityRates.size(), size_t(2));
    QCOMPARE(task->GetRateFor(task->m_activityRates.begin()->first), 80.0);
    QVERIFY(!task->IsBillableFor(std::next(task->m_activityRates.begin())->first));

    // Clearing a rate gives the activity back its default.
    {
        CTaskProperties sheet(*f.frame, *task);
        sheet.show();
        sheet.SetActivityRate(0, CActivityRateDlg::State::useDefault, 0.0);
        QCOMPARE(sheet.ActivityRates()->topLevelItem(0)->text(1), QStringLiteral("<default>"));
        sheet.accept();
    }
    QCOMPARE(task->m_activityRates.size(), size_t(1));

    // The dialog's default choice names what it bills: the task's regular rate.
    CActivityRateDlg dialog(QStringLiteral("Design"), CActivityRateDlg::State::useDefault, 0.0,
                            MakeCurrencyFormat(f.app->GetLocale()));
    QStringList choices;
    for (const QRadioButton* button : dialog.findChildren<QRadioButton*>())
        choices << button->text();
    QVERIFY2(choices.contains(QStringLiteral("&Default: the task's regular rate")), qPrintable(choices.join(u'|')));
    QCOMPARE(dialog.GetState(), CActivityRateDlg::State::useDefault);
}

void TestEntryLists::pageSwitchSavesColumnWidths()
{
    ViewFixture f;
    CSheetListView* list = f.frame->SheetList();
    QCOMPARE(list->List()->columnWidth(0), list->DefaultWidth(200));
    QVERIFY(list->DefaultWidth(200) >= 200);
    list->List()->setColumnWidth(0, 240);
    list->Tabs()->setCurrentIndex(CSheetListView::pageToDo);
    QCOMPARE(f.store.GetInt("Settings", "TimeTaskCol", 0), 240);
    QCOMPARE(f.app->GetTab(), int(CSheetListView::pageToDo));
    QCOMPARE(list->List()->headerItem()->text(1), QStringLiteral("Description"));
    QCOMPARE(list->List()->columnWidth(1), list->DefaultWidth(150));
    list->Tabs()->setCurrentIndex(CSheetListView::pageTime);
    QCOMPARE(list->List()->columnWidth(0), 240);
}

#include "tst_entrylists.moc"

int RunEntryListTests(int argc, char** argv)
{
    TestEntryLists test;
    return QTest::qExec(&test, argc, argv);
}
