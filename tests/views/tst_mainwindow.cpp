#include "viewfixture.h"

#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/trayicon.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFocusEvent>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>

#include <mutex>

namespace
{

const CDateTime kToday = CDateTime::FromDate(2024, 3, 13);

// What a click into a pane does to the commands: the pane reports its focus.
void Focus(QWidget* widget)
{
    QFocusEvent in(QEvent::FocusIn, Qt::MouseFocusReason);
    QApplication::sendEvent(widget, &in);
}

} // namespace

// The main window as a user meets it: placement over restarts, which pane the
// commands follow, and the commands reachable from the menus, tool bar and tray.
class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void placementStaysPutOverRestarts();
    void focusedEntryListRulesTheCommands();
    void exportIsReachableFromMenuAndToolBar();
    void trayStartTimerSubmenuIsAlwaysEnabled();
    void taskViewSortsStartAndEndByDateAndTime();
};

void TestMainWindow::placementStaysPutOverRestarts()
{
    ViewFixture f;
    f.frame->setGeometry(120, 140, 900, 640);
    QVERIFY(QTest::qWaitForWindowExposed(f.frame.get()));
    f.frame->close();
    const QRect first(f.store.GetInt("Settings", "Left", -1), f.store.GetInt("Settings", "Top", -1),
                      f.store.GetInt("Settings", "Width", -1), f.store.GetInt("Settings", "Height", -1));
    QCOMPARE(first, QRect(120, 140, 900, 640));

    // Opened and closed ten times, the window neither moves nor grows.
    QRect frameBefore;
    for (int run = 0; run < 10; ++run)
    {
        CTestFrame again(*f.app, f.doc, f.prompter);
        again.show();
        QVERIFY(QTest::qWaitForWindowExposed(&again));
        QCoreApplication::processEvents();
        QCOMPARE(again.geometry(), first);
        if (run == 0)
            frameBefore = again.frameGeometry();
        QCOMPARE(again.frameGeometry(), frameBefore);
        again.close();
        const QRect stored(f.store.GetInt("Settings", "Left", -1), f.store.GetInt("Settings", "Top", -1),
                           f.store.GetInt("Settings", "Width", -1), f.store.GetInt("Settings", "Height", -1));
        QCOMPARE(stored, first);
    }

    // Closed while maximised, the restored rectangle is what is kept.
    {
        CTestFrame maximised(*f.app, f.doc, f.prompter);
        maximised.show();
        QVERIFY(QTest::qWaitForWindowExposed(&maximised));
        maximised.showMaximized();
        QCoreApplication::processEvents();
        maximised.close();
    }
    QCOMPARE(f.store.GetInt("Settings", "Top", -1), 140);
    QCOMPARE(f.store.GetInt("Settings", "Height", -1), 640);

    // A place on no screen keeps the size and lets the window come up where it can be seen.
    f.store.SetInt("Settings", "Left", -5000);
    f.store.SetInt("Settings", "Top", -5000);
    CTestFrame lost(*f.app, f.doc, f.prompter);
    QCOMPARE(lost.size(), QSize(900, 640));
    QVERIFY(lost.geometry().left() > -5000);
}

void TestMainWindow::focusedEntryListRulesTheCommands()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    const uint32_t other = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Other");
    f.AddTime(acme, kToday, 8, 0, 9, 0);
    f.Reopen();
    f.frame->TaskView()->SelectTask(other);
    CSheetListView* list = f.frame->SheetList();
    list->SetPage(CSheetListView::pageTime);
    QCOMPARE(list->RowCount(), 1);
    list->List()->clearSelection();
    auto enabled = [&f](const char* name) {
        f.frame->UpdateCommandStates();
        return f.frame->Action(QString::fromLatin1(name))->isEnabled();
    };

    // The tree rules while the tree has the focus: its task is selected.
    Focus(f.frame->TaskView());
    QCOMPARE(f.frame->GetActiveView(), CMainFrame::ActiveView::tree);
    for (const char* name : {"insertTimeEntry", "timerStart", "editDelete", "editProperties"})
        QVERIFY2(enabled(name), name);

    // The focused list with no row selected: its rules, so all four are off...
    Focus(list->List());
    QCOMPARE(f.frame->GetActiveView(), CMainFrame::ActiveView::list);
    for (const char* name : {"insertTimeEntry", "insertExpense", "insertToDo", "timerStart", "editDelete",
                             "editProperties"})
        QVERIFY2(!enabled(name), name);
    // ...and the commands, when they arrive anyway (a shortcut), touch neither the
    // tree's task nor the list.
    const size_t asked = f.prompter.Questions().size();
    f.frame->Action(QStringLiteral("timerStart"))->trigger();
    f.frame->Action(QStringLiteral("editDelete"))->trigger();
    QVERIFY(!f.doc.m_timerRunning);
    QCOMPARE(f.prompter.Questions().size(), asked);
    QVERIFY(f.doc.GetTask(other) != nullptr);
    QCOMPARE(list->RowCount(), 1);

    // With a row selected they act on its entry.
    list->SelectRow(0);
    for (const char* name : {"insertTimeEntry", "timerStart", "editDelete", "editProperties"})
        QVERIFY2(enabled(name), name);
    f.frame->Action(QStringLiteral("timerStart"))->trigger();
    QVERIFY(f.doc.m_timerRunning);
    QCOMPARE(f.doc.m_activeEntry->m_taskId, acme);
    f.frame->StopTimer();
}

void TestMainWindow::exportIsReachableFromMenuAndToolBar()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.AddTime(acme, kToday, 9, 0, 10, 0);
    {
        std::lock_guard lock(f.doc.GetLock());
        CReport* report = f.doc.AddReport(CReport::timeDetail);
        report->m_name = "Weekly hours";
        report->m_preset = CReport::allDates;
        report->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
    }
    f.Reopen();
    QAction* exportAction = f.frame->Action(QStringLiteral("fileExport"));
    QVERIFY(exportAction);
    bool inFileMenu = false;
    for (QAction* menu : f.frame->menuBar()->actions())
        if (menu->text() == QStringLiteral("&File"))
            inFileMenu = menu->menu()->actions().contains(exportAction);
    QVERIFY(inFileMenu);
    auto* bar = f.frame->findChild<QToolBar*>(QStringLiteral("toolBar"));
    QVERIFY(bar);
    QVERIFY(bar->actions().contains(exportAction));

    // Only a selected report can be exported.
    CSheetListView* list = f.frame->SheetList();
    list->SetPage(CSheetListView::pageTime);
    list->SelectRow(0);
    f.frame->UpdateCommandStates();
    QVERIFY(!exportAction->isEnabled());
    list->SetPage(CSheetListView::pageReports);
    f.frame->UpdateCommandStates();
    QVERIFY(!exportAction->isEnabled());
    list->SelectRow(0);
    f.frame->UpdateCommandStates();
    QVERIFY(exportAction->isEnabled());

    const QString exported = f.Path(QStringLiteral("weekly.htm"));
    f.frame->saveNames = {exported};
    exportAction->trigger();
    QCOMPARE(f.frame->asked.back(), QStringLiteral("Export"));
    QFile file(exported);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray html = file.readAll();
    QVERIFY(html.contains("<HTML>") || html.contains("<html>"));
    QVERIFY(html.contains("Acme"));
}

void TestMainWindow::trayStartTimerSubmenuIsAlwaysEnabled()
{
    ViewFixture f;
    CTrayIcon* tray = f.frame->Tray();
    tray->BuildMenu();
    QMenu* start = nullptr;
    QAction* startItem = nullptr;
    for (QAction* item : tray->Menu()->actions())
        if (item->menu())
        {
            start = item->menu();
            startItem = item;
        }
    QVERIFY(start);
    QCOMPARE(startItem->text(), QStringLiteral("&Start Timer"));
    QVERIFY(start->actions().isEmpty());
    QVERIFY(startItem->isEnabled());
    QVERIFY(start->isEnabled());
}

void TestMainWindow::taskViewSortsStartAndEndByDateAndTime()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    const CDateTime days[] = {CDateTime::FromDate(2024, 3, 11), CDateTime::FromDate(2024, 3, 12), kToday};
    // Later days start earlier in the day: sorting by the time of day alone would
    // put them first.
    f.AddTime(acme, days[2], 7, 0, 8, 0);
    f.AddTime(acme, days[0], 13, 0, 14, 0);
    f.AddTime(acme, days[1], 10, 0, 11, 0);
    f.Reopen();
    f.frame->TaskView()->SelectTask(acme);
    f.frame->SetViewType(1);
    CSheetListView* list = f.frame->SheetList();
    list->SetPage(CSheetListView::pageTime);
    QCOMPARE(list->RowCount(), 3);
    const QStringList expected = {QString::fromStdString(f.app->FormatShortDate(days[0])),
                                  QString::fromStdString(f.app->FormatShortDate(days[1])),
                                  QString::fromStdString(f.app->FormatShortDate(days[2]))};
    for (int column : {2, 3}) // Start, End
    {
        list->SortByColumn(column);
        QStringList dates;
        for (int row = 0; row < list->RowCount(); ++row)
            dates.append(list->RowTexts(row).value(0));
        QCOMPARE(dates, expected);
        QCOMPARE(f.app->GetTimeSortOrder(), column + 10);
    }
    // Within one day the time of day decides, and a running entry ends last.
    f.AddTime(acme, days[2], 5, 0, 6, 0);
    f.clock.Set(platform::LocalTime{2024, 3, 13, 9, 0, 0});
    f.frame->StartTimer(f.Task(acme));
    list->Refill();
    list->SortByColumn(3);
    QCOMPARE(list->RowCount(), 5);
    QCOMPARE(list->RowTexts(3).value(2), QString::fromStdString(f.app->FormatTime(CTinyTime(7, 0))));
    QCOMPARE(list->RowTexts(4).value(3), QString());
    list->SortByColumn(2);
    QCOMPARE(list->RowTexts(2).value(2), QString::fromStdString(f.app->FormatTime(CTinyTime(5, 0))));
    f.frame->StopTimer();
}

int RunMainWindowTests(int argc, char** argv)
{
    TestMainWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_mainwindow.moc"
