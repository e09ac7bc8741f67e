#include "viewfixture.h"

#include "timekeeping/timer.h"
#include "views/archivedlg.h"
#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/timesheetview.h"
#include "views/tipdlg.h"
#include "views/trayicon.h"
#include "widgets/datetimeedit.h"
#include "widgets/monthcalendar.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QTest>
#include <QTreeWidget>

#include <mutex>

namespace
{

QAction* FindAction(QMenu& menu, const QString& text)
{
    for (QAction* a : menu.actions())
    {
        if (a->text() == text)
            return a;
        if (a->menu())
            if (QAction* inner = FindAction(*a->menu(), text))
                return inner;
    }
    return nullptr;
}

} // namespace

class TestMainFrame : public QObject
{
    Q_OBJECT

private slots:
    void addsTasksOfEachLevel();
    void renamesInPlaceAndIgnoresBlankNames();
    void dropsTasksOntoAllowedAndRefusedTargets();
    void inactiveTasksHideWithTheirSubtree();
    void startsAndStopsTheTimerFromTheTree();
    void timerChangesAreWrittenAtOnce();
    void aPauseSaysWhatItChangedAndSurvivesASave();
    void trayMenuFollowsTheTimerState();
    void switchesBetweenDateAndTaskView();
    void goesToDatesAndPagesTheCalendar();
    void timePaneIsPaddedToNinePlaces();
    void savesPlacementAndPaneSizes();
    void startUpCreatesANewDocumentWhenOpeningFails();
    void firstSaveProposesAFolderThatExistsAndAsksAgainAfterAFailure();
    void secondWindowOpensTheFileReadOnly();
    void closingAModifiedDocumentFollowsTheAutoSaveRule();
    void archivesAndDeletesEntries();
    void archiveDialogRefusesFromAfterTo();
    void tipsComeInTurnAndStartOverWhenTheFileChanges();
    void recentFilesKeepFour();
};

void TestMainFrame::addsTasksOfEachLevel()
{
    ViewFixture f;
    CTaskView* tree = f.frame->TaskView();
    QCOMPARE(tree->topLevelItemCount(), 1);
    QCOMPARE(tree->SelectedTask()->m_id, CTimeKeeperDoc::kRootTaskId);

    // The Insert menu offers the named levels, with their accelerators.
    QAction* newClient = f.frame->Action(QStringLiteral("insertLevel1"));
    QVERIFY(newClient);
    QCOMPARE(newClient->text(), QStringLiteral("New Client"));
    QCOMPARE(newClient->shortcut(), QKeySequence(QStringLiteral("Ctrl+1")));
    QVERIFY(f.frame->Action(QStringLiteral("insertLevel4")));
    QVERIFY(!f.frame->Action(QStringLiteral("insertLevel5")));

    const QStringList expected = {"New Client", "New Project", "New Sub Project", "New Task"};
    uint32_t parent = CTimeKeeperDoc::kRootTaskId;
    for (int level = 1; level <= 4; ++level)
    {
        f.frame->UpdateCommandStates();
        QAction* insert = f.frame->Action(QStringLiteral("insertLevel%1").arg(level));
        QVERIFY2(insert->isEnabled(), qPrintable(insert->text()));
        insert->trigger();
        const CTask* task = tree->SelectedTask();
        QVERIFY(task);
        auto* rename = qobject_cast<QLineEdit*>(tree->indexWidget(tree->currentIndex()));
        QVERIFY(rename && rename->selectedText() == expected[level - 1]); // typing replaces the name
        QCOMPARE(int(task->m_level), level);
        QCOMPARE(task->m_parentId, parent);
        QCOMPARE(QString::fromStdString(task->m_name), expected[level - 1]);
        QVERIFY(f.doc.GetTask(parent)->m_expanded);
        QVERIFY(tree->ItemOf(task->m_id));
        parent = task->m_id;
    }
    QCOMPARE(f.doc.m_tasks.size(), size_t(5));
    QVERIFY(f.doc.IsModified());

    // Under a level-4 task no level up to 4 can be added.
    f.frame->UpdateCommandStates();
    for (int level = 1; level <= 4; ++level)
        QVERIFY(!f.frame->Action(QStringLiteral("insertLevel%1").arg(level))->isEnabled());

    // The context menu of the root offers every named level below it.
    tree->SelectTask(CTimeKeeperDoc::kRootTaskId);
    QMenu menu;
    tree->FillContextMenu(menu);
    const QStringList items = Texts(menu);
    for (const char* add : {"Add Client", "Add Project", "Add Sub Project", "Add Task"})
        QVERIFY2(items.contains(QString::fromLatin1(add)), add);
    QVERIFY(!items.contains(QStringLiteral("&Delete")));
    QVERIFY(!items.contains(QStringLiteral("&Inactive")));
}

void TestMainFrame::renamesInPlaceAndIgnoresBlankNames()
{
    ViewFixture f;
    const uint32_t root = CTimeKeeperDoc::kRootTaskId;
    f.AddTask(root, 1, "Beta");
    const uint32_t gamma = f.AddTask(root, 1, "Gamma");
    f.Reopen();
    CTaskView* tree = f.frame->TaskView();

    // Through the in-place editor: leading blanks go, and the siblings are sorted again.
    tree->SelectTask(gamma);
    tree->RenameSelected();
    auto* editor = tree->viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    editor->setText(QStringLiteral("   Alpha"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(f.doc.GetTask(gamma)->m_name, std::string("Alpha"));
    QTreeWidgetItem* rootItem = tree->topLevelItem(0);
    QCOMPARE(rootItem->child(0)->text(0), QStringLiteral("Alpha"));
    QCOMPARE(rootItem->child(1)->text(0), QStringLiteral("Beta"));
    QCOMPARE(f.doc.GetRootTask()->m_children.front()->m_id, gamma);

    // Blanks only keep the old name.
    tree->RenameTask(gamma, QStringLiteral("    "));
    QCOMPARE(f.doc.GetTask(gamma)->m_name, std::string("Alpha"));
    QCOMPARE(tree->ItemOf(gamma)->text(0), QStringLiteral("Alpha"));

    // Escape cancels the rename: the typed text goes, the name stays.
    f.doc.SetModifiedFlag(false);
    f.frame->show();
    QApplication::setActiveWindow(f.frame.get());
    tree->setFocus();
    tree->RenameSelected();
    editor = tree->viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    QTRY_COMPARE(QApplication::focusWidget(), editor);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("Typed by mistake"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(!tree->viewport()->findChild<QLineEdit*>());
    QCOMPARE(f.doc.GetTask(gamma)->m_name, std::string("Alpha"));
    QCOMPARE(tree->ItemOf(gamma)->text(0), QStringLiteral("Alpha"));
    QVERIFY(!f.doc.IsModified());

    // A click that selects never starts a rename, not even on the item already selected.
    const QPoint onGamma = tree->visualItemRect(tree->ItemOf(gamma)).center();
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, onGamma);
    QTest::qWait(QApplication::doubleClickInterval() + 200);
    QVERIFY(!tree->viewport()->findChild<QLineEdit*>());
    QCOMPARE(tree->currentItem(), tree->ItemOf(gamma));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, onGamma);
    QTest::qWait(QApplication::doubleClickInterval() + 200);
    QVERIFY(!tree->viewport()->findChild<QLineEdit*>());
    // F2 still renames in place.
    QTest::keyClick(tree, Qt::Key_F2);
    QTRY_VERIFY(tree->viewport()->findChild<QLineEdit*>());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(!tree->viewport()->findChild<QLineEdit*>());
    QCOMPARE(f.doc.GetTask(gamma)->m_name, std::string("Alpha"));
}

void TestMainFrame::dropsTasksOntoAllowedAndRefusedTargets()
{
    ViewFixture f;
    const uint32_t root = CTimeKeeperDoc::kRootTaskId;
    const uint32_t clientAId = f.AddTask(root, 1, "Client A");
    const uint32_t clientBId = f.AddTask(root, 1, "Client B");
    const uint32_t projectId = f.AddTask(clientAId, 2, "Project P");
    const uint32_t subId = f.AddTask(projectId, 3, "Sub S");
    const uint32_t importedId = f.AddTask(clientBId, 2, "Imported");
    f.Reopen();
    // Marked as imported after reading: a task of a linked project.
    f.Task(importedId)->m_projectId = 1;
    f.Task(importedId)->m_projectTaskNumber = 7;
    CTaskView* tree = f.frame->TaskView();

    // A Sub Project may move under any task of a higher level, keeping its level.
    QVERIFY(tree->DropTaskOn(subId, CTimeKeeperDoc::kRootTaskId));
    QCOMPARE(f.doc.GetTask(subId)->m_parentId, CTimeKeeperDoc::kRootTaskId);
    QCOMPARE(int(f.doc.GetTask(subId)->m_level), 3);
    QVERIFY(tree->DropTaskOn(subId, clientBId));
    QCOMPARE(f.doc.GetTask(subId)->m_parentId, clientBId);
    QVERIFY(f.doc.GetTask(clientBId)->m_expanded);
    QCOMPARE(tree->ItemOf(subId)->parent(), tree->ItemOf(clientBId));
    QVERIFY(f.prompter.Messages().empty());

    // A Project onto a Sub Project: the level test refuses it.
    QVERIFY(!tree->DropTaskOn(projectId, subId));
    QCOMPARE(f.prompter.Messages().back(),
             std::string("Cannot move Task: The destination task level is not above the source task level."));
    // Onto its own child: the level test comes first, so 40012 again.
    f.AddTask(projectId, 3, "Child");
    tree->Rebuild();
    const uint32_t childId = f.doc.GetTask(projectId)->m_children.front()->m_id;
    QVERIFY(!tree->DropTaskOn(projectId, childId));
    QCOMPARE(f.prompter.Messages().back(),
             std::string("Cannot move Task: The destination task level is not above the source task level."));
    // Imported tasks neither move nor take others.
    QVERIFY(!tree->DropTaskOn(importedId, clientAId));
    QCOMPARE(f.prompter.Messages().back(), std::string("Cannot move Task:  The source task was imported from a project."));
    QVERIFY(!tree->DropTaskOn(childId, importedId));
    QCOMPARE(f.prompter.Messages().back(),
             std::string("Cannot move Task:  The destination task was imported from a project."));
    // What a drag carries: the task and the button that started it.
    uint32_t carried = 0;
    bool right = false;
    QVERIFY(CTaskView::DecodeDrag(CTaskView::EncodeDrag(subId, true), &carried, &right));
    QCOMPARE(carried, subId);
    QVERIFY(right);
    QVERIFY(!CTaskView::DecodeDrag(QByteArray("junk"), &carried, &right));
    // Onto itself: nothing at all.
    const size_t shown = f.prompter.Messages().size();
    QVERIFY(!tree->DropTaskOn(projectId, projectId));
    QCOMPARE(f.prompter.Messages().size(), shown);
    QCOMPARE(f.doc.GetTask(projectId)->m_parentId, clientAId);
}

void TestMainFrame::inactiveTasksHideWithTheirSubtree()
{
    ViewFixture f;
    const uint32_t client = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Client");
    const uint32_t project = f.AddTask(client, 2, "Project");
    f.Reopen();
    CTaskView* tree = f.frame->TaskView();
    f.frame->SetHideInactive(true);
    tree->SelectTask(client);
    f.frame->UpdateCommandStates();
    QAction* inactive = f.frame->Action(QStringLiteral("editInactive"));
    QVERIFY(inactive->isEnabled());
    inactive->trigger();
    QVERIFY(f.doc.GetTask(client)->m_inactive);
    QVERIFY(!tree->ItemOf(client));
    QVERIFY(!tree->ItemOf(project));
    QCOMPARE(tree->SelectedTask()->m_id, CTimeKeeperDoc::kRootTaskId);

    // Shown again, the task is back and can be made active.
    f.frame->Action(QStringLiteral("viewHideInactive"))->trigger();
    QCOMPARE(f.app->GetHideInactive(), 0);
    QVERIFY(tree->ItemOf(project));
    tree->SelectTask(client);
    f.frame->UpdateCommandStates();
    QVERIFY(inactive->isChecked());
    inactive->trigger();
    QVERIFY(!f.doc.GetTask(client)->m_inactive);
}

void TestMainFrame::startsAndStopsTheTimerFromTheTree()
{
    ViewFixture f;
    const uint32_t client = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.Reopen();
    CTaskView* tree = f.frame->TaskView();
    CSheetListView* list = f.frame->SheetList();
    tree->SelectTask(client);
    f.frame->UpdateCommandStates();
    QVERIFY(!f.frame->Action(QStringLiteral("timerStop"))->isEnabled());

    f.frame->Action(QStringLiteral("timerStart"))->trigger();
    QVERIFY(f.doc.m_timerRunning);
    QVERIFY(f.doc.m_activeEntry);
    QCOMPARE(f.doc.m_activeEntry->m_taskId, client);
    QCOMPARE(f.doc.m_activeEntry->m_start, CTinyTime(9, 0));
    QVERIFY(list->IsTicking());
    QCOMPARE(f.frame->Tray()->State(), TimerIcon::running);
    QVERIFY(f.frame->Tray()->Tip().startsWith(QStringLiteral("Acme")));
    QCOMPARE(list->RowCount(), 1);
    QCOMPARE(list->RowTexts(0), QStringList({"Acme", "9:00 AM", "", ""}));

    // Each tick rewrites the Elapsed cell, only when its text changes.
    f.clock.Advance(25 * 60);
    f.frame->TimerTick();
    QCOMPARE(list->RowTexts(0).value(3), QStringLiteral("0:25"));
    QVERIFY(!list->UpdateRunningElapsed());
    QCOMPARE(f.frame->TimePaneTextShown(), QStringLiteral("     0:25  "));
    QVERIFY(f.frame->Tray()->Tip().endsWith(QStringLiteral(" 0:25")));

    f.frame->UpdateCommandStates();
    QVERIFY(f.frame->Action(QStringLiteral("timerStop"))->isEnabled());
    f.frame->Action(QStringLiteral("timerStop"))->trigger();
    QVERIFY(!f.doc.m_timerRunning);
    QCOMPARE(f.frame->Tray()->State(), TimerIcon::inactive);
    QCOMPARE(f.frame->Tray()->Tip(), QStringLiteral("Timer Inactive"));
    const CDay* day = f.doc.GetDay(CDateTime::FromDate(2024, 3, 13));
    QVERIFY(day);
    QCOMPARE(day->TimeEntries().size(), size_t(1));
    QCOMPARE(day->TimeEntries().front()->m_end, CTinyTime(9, 25));
    QCOMPARE(list->RowTexts(0), QStringList({"Acme", "9:00 AM", "9:25 AM", "0:25"}));

    // The tree's context menu starts it as well, and offers a stop while it runs.
    f.clock.Advance(5 * 60);
    QMenu menu;
    tree->FillContextMenu(menu);
    menu.findChild<QAction*>(QStringLiteral("startTimer"))->trigger();
    QVERIFY(f.doc.m_timerRunning);
    QCOMPARE(f.doc.m_activeEntry->m_start, CTinyTime(9, 30));
    QMenu running;
    tree->FillContextMenu(running);
    QVERIFY(running.findChild<QAction*>(QStringLiteral("stopTimer")));
}

void TestMainFrame::timerChangesAreWrittenAtOnce()
{
    ViewFixture f;
    const uint32_t client = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.Reopen();
    f.app->SetAutoSave(1);
    // What a program that crashed now would leave on disk.
    auto onDisk = [&f]
    {
        QFile file(f.path);
        if (!file.open(QIODevice::ReadOnly))
            return std::unique_ptr<CTimeKeeperDoc>();
        const QByteArray bytes = file.readAll();
        auto copy = std::make_unique<CTimeKeeperDoc>();
        platform::ScriptedPrompter quiet;
        copy->LoadFromBytes(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size()), quiet);
        return copy;
    };
    auto runningOnDisk = [&]
    {
        auto copy = onDisk();
        for (const auto& [key, day] : copy->m_days)
            for (const auto& e : day->TimeEntries())
                if (e->IsRunning())
                    return int(e->m_taskId);
        return 0;
    };

    f.frame->StartTimer(f.doc.GetTask(client));
    QCOMPARE(runningOnDisk(), int(client));
    QVERIFY(!f.doc.IsModified());

    f.clock.Advance(20 * 60);
    f.frame->PauseResumeTimer();
    QCOMPARE(runningOnDisk(), 0);
    f.clock.Advance(10 * 60);
    f.frame->PauseResumeTimer();
    QCOMPARE(runningOnDisk(), int(client));
    f.clock.Advance(10 * 60);
    f.frame->StopTimer();
    QCOMPARE(runningOnDisk(), 0);
    QCOMPARE(onDisk()->CountTimeEntries(), size_t(2));

    // Without automatic saving the user saves, as for any other change.
    f.app->SetAutoSave(0);
    f.frame->StartTimer(f.doc.GetTask(client));
    QCOMPARE(runningOnDisk(), 0);
    QVERIFY(f.doc.IsModified());
}

void TestMainFrame::aPauseSaysWhatItChangedAndSurvivesASave()
{
    ViewFixture f;
    const uint32_t training = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Training");
    const uint32_t audit = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Audit");
    f.Reopen();
    f.app->SetTimeInterval(4);
    f.app->SetAutoSave(0);
    f.clock.Set({2024, 3, 13, 11, 12, 0});
    f.frame->StartTimer(f.Task(training));
    f.AddTime(audit, CDateTime::FromDate(2024, 3, 13), 11, 16, 11, 18); // typed while it runs
    f.clock.Set({2024, 3, 13, 11, 19, 0});
    f.frame->PauseResumeTimer();
    QVERIFY(f.frame->statusBar()->currentMessage().startsWith(
        QStringLiteral("Training 11:15 AM-11:19 AM was split around other entries into 11:15 AM-11:16 AM")));
    // Saved as Ctrl+S saves, then opened again as at the next start.
    QVERIFY(f.frame->SaveDocument());
    f.frame->OpenDocumentFile(f.path);
    QCOMPARE(f.frame->Tray()->State(), TimerIcon::paused);
}

void TestMainFrame::trayMenuFollowsTheTimerState()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Zeta");
    const uint32_t b = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Alpha");
    f.Reopen();
    CTrayIcon* tray = f.frame->Tray();

    tray->BuildMenu();
    QCOMPARE(Texts(*tray->Menu()), QStringList({"&Open", "&Start Timer"}));

    // Time both tasks; the Start Timer submenu lists them by name.
    f.frame->StartTimer(f.Task(a));
    f.clock.Advance(10 * 60);
    f.frame->StartTimer(f.Task(b));
    f.clock.Advance(10 * 60);
    f.frame->StopTimer();
    tray->BuildMenu();
    QMenu* start = nullptr;
    for (QAction* item : tray->Menu()->actions())
        if (item->menu())
            start = item->menu();
    QVERIFY(start);
    QCOMPARE(Texts(*start), QStringList({"Alpha", "Zeta"}));

    FindAction(*tray->Menu(), QStringLiteral("Zeta"))->trigger();
    QVERIFY(f.doc.m_timerRunning);
    QCOMPARE(f.doc.m_activeEntry->m_taskId, a);
    tray->BuildMenu();
    QCOMPARE(Texts(*tray->Menu()), QStringList({"&Open", "Pa&use", "&Start Timer", "S&top Timer"}));

    f.clock.Advance(5 * 60);
    FindAction(*tray->Menu(), QStringLiteral("Pa&use"))->trigger();
    QVERIFY(!f.doc.m_timerRunning);
    QVERIFY(f.doc.m_paused);
    QCOMPARE(tray->State(), TimerIcon::paused);
    QVERIFY(tray->Tip().endsWith(QStringLiteral("Paused")));
    tray->BuildMenu();
    QCOMPARE(Texts(*tray->Menu()), QStringList({"&Open", "Res&ume", "&Start Timer"}));

    f.clock.Advance(5 * 60);
    FindAction(*tray->Menu(), QStringLiteral("Res&ume"))->trigger();
    QVERIFY(f.doc.m_timerRunning);
    QCOMPARE(f.doc.m_activeEntry->m_taskId, a);
    tray->BuildMenu();
    FindAction(*tray->Menu(), QStringLiteral("S&top Timer"))->trigger();
    QVERIFY(!f.doc.m_timerRunning);
    QCOMPARE(tray->State(), TimerIcon::inactive);

    // While an editor of the document is open the menu stays empty.
    f.doc.m_editorOpen = true;
    tray->BuildMenu();
    QVERIFY(tray->Menu()->isEmpty());
    f.doc.m_editorOpen = false;
}

void TestMainFrame::switchesBetweenDateAndTaskView()
{
    ViewFixture f;
    const uint32_t client = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.AddTime(client, CDateTime::FromDate(2024, 3, 13), 8, 0, 9, 30);
    f.AddTime(client, CDateTime::FromDate(2024, 3, 11), 13, 0, 14, 0);
    f.Reopen();
    CSheetListView* list = f.frame->SheetList();
    f.frame->TaskView()->SelectTask(client);

    QCOMPARE(list->List()->columnCount(), 4);
    QCOMPARE(list->RowCount(), 1);
    QCOMPARE(f.frame->TimePaneTextShown(), QStringLiteral("     1:30  "));
    list->List()->setColumnWidth(0, 222);

    f.frame->Action(QStringLiteral("viewTask"))->trigger();
    QCOMPARE(f.app->GetTaskViewType(), 1);
    QCOMPARE(f.store.GetInt("Settings", "TimeTaskCol", 0), 222);
    QCOMPARE(f.store.GetInt("Settings", "TimeElapsedCol", 0), list->DefaultWidth(55));
    QCOMPARE(list->List()->columnCount(), 5);
    QCOMPARE(list->List()->headerItem()->text(1), QStringLiteral("Note"));
    QCOMPARE(list->List()->columnWidth(0), list->DefaultWidth(85));
    QCOMPARE(list->RowCount(), 2);
    QCOMPARE(f.frame->TimePaneTextShown(), QStringLiteral("     2:30  "));

    f.frame->Action(QStringLiteral("viewDate"))->trigger();
    QCOMPARE(f.app->GetTaskViewType(), 0);
    QCOMPARE(list->List()->columnWidth(0), 222);
    QCOMPARE(list->RowCount(), 1);
}

void TestMainFrame::goesToDatesAndPagesTheCalendar()
{
    ViewFixture f;
    const uint32_t client = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.AddTime(client, CDateTime::FromDate(2024, 2, 29), 10, 0, 11, 15);
    f.Reopen();
    CTimeSheetView* sheet = f.frame->TimeSheet();
    QCOMPARE(sheet->SelectedQDate(), QDate(2024, 3, 13));

    sheet->GoToDateValue(QDate(2024, 2, 29));
    QCOMPARE(sheet->SelectedDate(), CDateTime::FromDate(2024, 2, 29, 12, 0));
    const int first = sheet->FirstMonth().year() * 12 + sheet->FirstMonth().month();
    const int count = int(sheet->Panels().size());
    QVERIFY(first <= 2024 * 12 + 2 && 2024 * 12 + 2 < first + count);
    QCOMPARE(f.frame->SheetList()->RowCount(), 1);
    QCOMPARE(f.frame->TimePaneTextShown(), QStringLiteral("     1:15  "));

    // Ctrl+D brings today back.
    QAction* today = f.frame->Action(QStringLiteral("viewGoToToday"));
    QCOMPARE(today->shortcut(), QKeySequence(QStringLiteral("Ctrl+D")));
    today->trigger();
    QCOMPARE(sheet->SelectedQDate(), QDate(2024, 3, 13));
    QCOMPARE(f.frame->SheetList()->RowCount(), 0);

    // A click on a day of a panel selects it.
    CMonthCalendar* panel = sheet->Panels().first();
    const QDate firstShown = sheet->FirstMonth();
    emit panel->DateSelected(firstShown.addDays(3));
    QCOMPARE(sheet->SelectedQDate(), firstShown.addDays(3));

    // Paging stays inside 1900-2300.
    sheet->GoToDateValue(QDate(1900, 1, 15));
    QCOMPARE(sheet->FirstMonth(), QDate(1900, 1, 1));
    sheet->PreviousYear();
    QCOMPARE(sheet->FirstMonth(), QDate(1900, 1, 1));
    sheet->PreviousMonth();
    QCOMPARE(sheet->FirstMonth(), QDate(1900, 1, 1));
    sheet->NextMonth();
    QCOMPARE(sheet->FirstMonth(), QDate(1900, 2, 1));
    sheet->PreviousYear();
    QCOMPARE(sheet->FirstMonth(), QDate(1900, 1, 1));
    sheet->NextYear();
    QCOMPARE(sheet->FirstMonth(), QDate(1901, 1, 1));
    sheet->GoToDateValue(QDate(2300, 12, 31));
    sheet->NextYear();
    sheet->NextMonth();
    QVERIFY(sheet->FirstMonth() <= QDate(2300, 12, 1));
    sheet->GoToDateValue(QDate(2301, 1, 1));
    QCOMPARE(sheet->SelectedQDate(), QDate(2300, 12, 31));

    // The grid: 140 by 160 per panel, at least one.
    QCOMPARE(CTimeSheetView::GridFor(QSize(100, 50)), QSize(1, 1));
    QCOMPARE(CTimeSheetView::GridFor(QSize(700, 330)), QSize(5, 2));
    QCOMPARE(CTimeSheetView::GridFor(QSize(699, 325)), QSize(4, 1));
    f.frame->InnerSplitter()->setSizes({340, 300});
    QApplication::processEvents();
    QCOMPARE(sheet->Rows(), (sheet->height() - 6) / 160);
    QCOMPARE(int(sheet->Panels().size()), sheet->Columns() * sheet->Rows());
}

void TestMainFrame::timePaneIsPaddedToNinePlaces()
{
    QCOMPARE(CMainFrame::TimePaneText(QStringLiteral("0:05")), QStringLiteral("     0:05  "));
    QCOMPARE(CMainFrame::TimePaneText(QString()), QStringLiteral("           "));
    QCOMPARE(CMainFrame::TimePaneText(QStringLiteral("12345:05")), QStringLiteral(" 12345:05  "));
    QCOMPARE(CMainFrame::TimePaneText(QStringLiteral("1234567:05")), QStringLiteral("1234567:05  "));
}

void TestMainFrame::savesPlacementAndPaneSizes()
{
    ViewFixture f;
    f.frame->showNormal();
    f.frame->setGeometry(50, 60, 900, 640);
    f.frame->OuterSplitter()->setSizes({210, 600});
    f.frame->InnerSplitter()->setSizes({200, 300});
    QApplication::processEvents();
    const QList<int> outer = f.frame->OuterSplitter()->sizes();
    const QList<int> inner = f.frame->InnerSplitter()->sizes();
    f.frame->close();
    QCOMPARE(f.store.GetInt("Settings", "Width", 0), 900);
    QCOMPARE(f.store.GetInt("Settings", "Height", 0), 640);
    QCOMPARE(f.store.GetInt("Settings", "C0", 0), outer[0]);
    QCOMPARE(f.store.GetInt("Settings", "C1", 0), outer[1]);
    QCOMPARE(f.store.GetInt("Settings", "R0", 0), inner[0]);
    QCOMPARE(f.store.GetInt("Settings", "R1", 0), inner[1]);

    // A new window takes them back.
    CTestFrame again(*f.app, f.doc, f.prompter);
    QCOMPARE(again.size(), QSize(900, 640));
    again.show();
    QApplication::processEvents();
    QCOMPARE(again.OuterSplitter()->sizes().value(0), outer[0]);
}

void TestMainFrame::startUpCreatesANewDocumentWhenOpeningFails()
{
    ViewFixture f;
    const QString missing = f.Path(QStringLiteral("missing/Nowhere.qvx"));
    const QString created = f.Path(QStringLiteral("Lee Example.qvx"));
    f.frame->employeeName = QStringLiteral("Lee Example");
    f.frame->saveNames = {created};
    f.frame->StartUp(missing);
    QVERIFY(!f.prompter.Messages().empty());
    QCOMPARE(f.prompter.Messages().front(), "Unknown error opening file '" + missing.toStdString() + "'");
    QCOMPARE(f.doc.GetRootTask()->m_name, std::string("Lee Example"));
    QCOMPARE(QString::fromStdString(f.doc.GetPathName()), created);
    QVERIFY(QFile::exists(created));
    QCOMPARE(f.frame->RecentFiles().value(0), created);
    QVERIFY(f.frame->windowTitle().startsWith(QStringLiteral("Lee Example.qvx")));

    // Cancelling the save of a new document leaves it empty.
    f.frame->employeeName = QStringLiteral("Someone");
    f.frame->saveNames.clear();
    QVERIFY(!f.frame->NewDocument());
    QVERIFY(f.doc.GetRootTask() == nullptr);
    QCOMPARE(f.frame->TaskView()->topLevelItemCount(), 0);

    // With nothing on the command line the most recent file opens.
    f.frame->StartUp(QString());
    QCOMPARE(QString::fromStdString(f.doc.GetPathName()), created);
    QCOMPARE(f.doc.GetRootTask()->m_name, std::string("Lee Example"));
}

void TestMainFrame::firstSaveProposesAFolderThatExistsAndAsksAgainAfterAFailure()
{
    ViewFixture f;
    QDir(f.dir.path()).mkdir(QStringLiteral("folder.qvx"));
    QFile(f.Path(QStringLiteral("plain"))).open(QIODevice::WriteOnly);
    f.frame->Action(QStringLiteral("fileOpen"))->trigger();
    QCOMPARE(f.frame->openFolder, f.dir.path()); // the document's folder, then the last one used
    const QString typed = f.Path(QStringLiteral("New/Pat Doe.qvx")), folder = f.Path(QStringLiteral("folder.qvx"));
    f.frame->employeeName = QStringLiteral("Pat Doe");
    f.frame->saveNames = {f.Path(QStringLiteral("plain/Pat Doe.qvx")), folder, typed};
    QVERIFY(f.frame->NewDocument());
    QCOMPARE(f.frame->proposals, QStringList({f.Path(QStringLiteral("Pat Doe.qvx")), f.Path(QStringLiteral("Pat Doe.qvx")), folder}));
    QCOMPARE(f.prompter.Messages().back(), "The file '" + folder.toStdString() + "' could not be saved: Is a directory.");
    QVERIFY(f.doc.GetRootTask()->m_name == "Pat Doe" && QFile::exists(typed));

    // Without a document or a folder used: the documents folder where it exists, else home.
    QTemporaryDir home;
    const QByteArray savedHome = qgetenv("HOME");
    qputenv("HOME", home.path().toLocal8Bit());
    CTimeKeeperDoc none;
    const QString first = CTestFrame(*f.app, none, f.prompter).FileDialogFolder();
    QDir(home.path()).mkdir(QStringLiteral("Documents"));
    const QString second = CTestFrame(*f.app, none, f.prompter).FileDialogFolder();
    qputenv("HOME", savedHome);
    QVERIFY(first == home.path() && second == home.filePath(QStringLiteral("Documents")));
}

void TestMainFrame::secondWindowOpensTheFileReadOnly()
{
    ViewFixture f;
    CTimeKeeperDoc second;
    platform::ScriptedPrompter prompter;
    CTestFrame other(*f.app, second, prompter);
    QVERIFY(other.OpenDocumentFile(f.path));
    QVERIFY(second.IsReadOnly());
    QCOMPARE(prompter.Messages().back(),
             "File '" + f.path.toStdString() + "' is not available for updating.\nIt will be opened read-only");
    QVERIFY(other.windowTitle().contains(QStringLiteral("Read Only")));

    // Save turns into Save As.
    const QString copy = f.Path(QStringLiteral("Copy.qvx"));
    other.saveNames = {copy};
    QVERIFY(other.SaveDocument());
    QCOMPARE(other.asked, QStringList({"Save As"}));
    QVERIFY(!second.IsReadOnly());
    QCOMPARE(QString::fromStdString(second.GetPathName()), copy);
    second.CloseHeldFile();
}

void TestMainFrame::closingAModifiedDocumentFollowsTheAutoSaveRule()
{
    ViewFixture f;
    f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Unsaved");
    f.doc.SetModifiedFlag(true);
    f.app->SetAutoSave(1);
    QVERIFY(f.frame->SaveModified());
    QVERIFY(f.prompter.Questions().empty());
    QVERIFY(!f.doc.IsModified());

    // Without automatic saving the user is asked.
    f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Also unsaved");
    f.doc.SetModifiedFlag(true);
    f.app->SetAutoSave(0);
    f.prompter.Script(platform::Answer::cancel);
    QVERIFY(!f.frame->SaveModified());
    QCOMPARE(f.prompter.Questions().back(), std::string("Save changes to Hours.qvx?"));
    QVERIFY(f.doc.IsModified());
    f.prompter.Script(platform::Answer::no);
    QVERIFY(f.frame->SaveModified());
    QVERIFY(f.doc.IsModified());
}

void TestMainFrame::archivesAndDeletesEntries()
{
    ViewFixture f;
    const uint32_t a = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "A");
    const uint32_t b = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "B");
    f.AddTime(a, CDateTime::FromDate(2024, 1, 10), 9, 0, 10, 0);
    f.AddTime(a, CDateTime::FromDate(2024, 3, 10), 9, 0, 10, 0);
    f.AddTime(b, CDateTime::FromDate(2024, 1, 10), 11, 0, 12, 0);
    f.Reopen();
    const QString archive = f.Path(QStringLiteral("Hours Archive.qvx"));
    f.frame->archiveAnswer = true;
    f.frame->archiveOptions.taskId = a;
    f.frame->archiveOptions.from = CDateTime::Null();
    f.frame->archiveOptions.to = CDateTime::FromDate(2024, 1, 31);
    f.frame->archiveOptions.deleteArchived = true;
    f.frame->saveNames = {archive};
    f.frame->ArchiveEntries();
    QVERIFY(QFile::exists(archive));
    // Only A's January entry left; B's stays, and so does A's March one.
    QCOMPARE(f.doc.CountTimeEntries(), size_t(2));
    QCOMPARE(f.Task(a)->m_timeEntries.size(), size_t(1));
    QCOMPARE(f.Task(b)->m_timeEntries.size(), size_t(1));
    QVERIFY(f.doc.IsModified());

    CTimeKeeperDoc archived;
    platform::ScriptedPrompter prompter;
    QVERIFY(archived.OnOpenDocument(archive.toStdString(), prompter));
    QCOMPARE(archived.CountTimeEntries(), size_t(1));
    archived.CloseHeldFile();
}

void TestMainFrame::archiveDialogRefusesFromAfterTo()
{
    ViewFixture f;
    CArchiveDlg dialog(*f.frame);
    dialog.show();
    dialog.FromField()->SetDate(QDate(2024, 5, 2));
    dialog.ToField()->SetDate(QDate(2024, 5, 1));
    dialog.accept();
    QVERIFY(dialog.isVisible());
    QCOMPARE(f.prompter.Messages().back(), std::string("Start date must be on or before end date."));
    QCOMPARE(dialog.focusWidget(), static_cast<QWidget*>(dialog.ToField()));
    dialog.ToField()->Clear();
    dialog.accept();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.SelectedTaskId(), CTimeKeeperDoc::kRootTaskId);
    QVERIFY(dialog.To().IsNull());
    QCOMPARE(dialog.From(), CDateTime::FromDate(2024, 5, 2));
    QVERIFY(!dialog.DeleteArchived());
}

void TestMainFrame::tipsComeInTurnAndStartOverWhenTheFileChanges()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("tips.txt"));
    auto write = [&](const QByteArray& text) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    write("; a note\n000042First tip\n\tskipped\n      Second tip\n");
    platform::SettingsStore store;
    {
        CTipDlg dialog(store, nullptr, path);
        QCOMPARE(dialog.TipText(), QStringLiteral("First tip"));
        QVERIFY(dialog.MoreButton()->isEnabled());
        dialog.ShowNextTip();
        QCOMPARE(dialog.TipText(), QStringLiteral("Second tip"));
        QVERIFY(!dialog.MoreButton()->isEnabled());
        dialog.ShowNextTip();
        QCOMPARE(dialog.TipText(), QStringLiteral("First tip"));
        dialog.ShowAtStartUpBox()->setChecked(false);
        dialog.accept();
    }
    QCOMPARE(store.GetInt("Tip", "StartUp", 0), 1);
    {
        CTipDlg dialog(store, nullptr, path);
        QCOMPARE(dialog.TipText(), QStringLiteral("Second tip"));
    }
    // A newer file starts over at its first tip.
    store.SetString("Tip", "TimeStamp", "an older file");
    {
        CTipDlg dialog(store, nullptr, path);
        QCOMPARE(dialog.TipText(), QStringLiteral("First tip"));
    }
    {
        CTipDlg dialog(store, nullptr, dir.filePath(QStringLiteral("none.txt")));
        QCOMPARE(dialog.TipText(), QStringLiteral("Tips file does not exist in the prescribed directory"));
        QVERIFY(!dialog.NextButton()->isEnabled());
    }
}

void TestMainFrame::recentFilesKeepFour()
{
    ViewFixture f;
    QStringList paths;
    for (int i = 0; i < 5; ++i)
    {
        const QString p = f.Path(QStringLiteral("File%1.qvx").arg(i));
        f.doc.OnSaveDocument(p.toStdString(), f.prompter);
        paths.prepend(p);
    }
    f.doc.CloseHeldFile();
    for (int i = 4; i >= 0; --i)
        QVERIFY(f.frame->OpenDocumentFile(paths[i]));
    QCOMPARE(f.frame->RecentFiles(), paths.mid(0, 4));
    QAction* first = f.frame->Action(QStringLiteral("fileRecent1"));
    QVERIFY(first->isVisible());
    QVERIFY(first->text().endsWith(QStringLiteral("File4.qvx")));

    // A recent file that no longer opens leaves the list.
    QFile::remove(paths[1]);
    f.frame->Action(QStringLiteral("fileRecent2"))->trigger();
    QVERIFY(!f.frame->RecentFiles().contains(paths[1]));
}

#include "tst_mainframe.moc"

int RunMainFrameTests(int argc, char** argv)
{
    TestMainFrame test;
    return QTest::qExec(&test, argc, argv);
}
