#include "views/mainframe.h"

#include "app/autosave.h"
#include "app/timekeeperapp.h"
#include "model/reportdef.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "platform/settingsstore.h"
#include "reports/reportrunner.h"
#include "timekeeping/timer.h"
#include "views/archivedlg.h"
#include "views/dbus/documentbus.h"
#include "views/icons.h"
#include "views/newfiledlg.h"
#include "views/print/printicons.h"
#include "views/print/reportprint.h"
#include "views/projects/projectsdlg.h"
#include "views/options/optionssheet.h"
#include "views/qtconvert.h"
#include "views/qttimerui.h"
#include "views/reports/reportcommands.h"
#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/timesheetview.h"
#include "views/tipdlg.h"
#include "views/trayicon.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QSaveFile>
#include <QScreen>
#include <QSplitter>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTabBar>
#include <QThread>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QUrl>

#include <filesystem>
#include <limits>
#include <mutex>

namespace
{

constexpr int kStatusTimerMs = 10000;
const QString kFileFilter = QStringLiteral("Quorvane Time & Expense Files (*.qvx);;All Files (*)");

// The menu text of a numbered string without its accelerator part.
QString MenuText(unsigned id)
{
    return ToQ(platform::LoadString(id)).section(u'\t', 0, 0);
}

// The user's name for a level, or empty when the level has none (the Insert menu
// and the "Add" items offer only named levels).
QString StoredLevelName(const CTimeKeeperDoc& doc, int level)
{
    auto it = doc.m_levelNames.find(uint32_t(level));
    return it == doc.m_levelNames.end() ? QString() : ToQ(it->second);
}

} // namespace

CMainFrame::CMainFrame(CTimeKeeperApp& app, CTimeKeeperDoc& doc, platform::Prompter& prompter,
                       QWidget* parent)
    : QMainWindow(parent), m_app(app), m_doc(doc), m_prompter(prompter)
{
    setWindowIcon(icons::AppIcon());
    m_timerUi = std::make_unique<CQtTimerUi>(*this);
    m_timer = std::make_unique<CTimer>(m_doc, m_app, *m_timerUi, m_prompter);

    CreateActions();
    CreatePanes();
    CreateMenus();
    CreateToolBar();
    CreateStatusBar();
    RestorePlacement();

    m_observer = m_doc.AddObserver([this](unsigned hint) {
        // The views refill once the operation that changed the document has returned:
        // it may run inside a signal of the very item a refill would delete. The
        // automatic save also reports from its own thread.
        const bool first = m_pendingHint.fetch_or(hint) == 0;
        if (first)
            QMetaObject::invokeMethod(
                this, [this] { OnDocumentChanged(m_pendingHint.exchange(0)); }, Qt::QueuedConnection);
    });
    RebuildInsertMenu();
    RebuildRecentFileMenu();
    UpdateTitle();
    UpdateCommandStates();
}

CMainFrame::~CMainFrame()
{
    m_doc.RemoveObserver(m_observer);
}

CTrayIcon* CMainFrame::Tray() const
{
    return m_timeSheet ? m_timeSheet->Tray() : nullptr;
}

void CMainFrame::CreateActions()
{
    auto make = [this](const char* name, const QString& text, const QKeySequence& key = {}) {
        auto* a = new QAction(text, this);
        a->setObjectName(QString::fromLatin1(name));
        if (!key.isEmpty())
            a->setShortcut(key);
        addAction(a);
        return a;
    };

    connect(make("fileNew", tr("&New"), QKeySequence::New), &QAction::triggered, this, [this] {
        if (SaveModified())
            NewDocument();
    });
    connect(make("fileOpen", tr("&Open..."), QKeySequence::Open), &QAction::triggered, this, [this] {
        if (!SaveModified())
            return;
        const QString path = AskOpenFileName(FileDialogFolder());
        if (path.isEmpty())
            return;
        m_lastFolder = QFileInfo(path).absolutePath();
        OpenDocumentFile(path);
    });
    connect(make("fileSave", tr("&Save"), QKeySequence::Save), &QAction::triggered, this,
            [this] { SaveDocument(); });
    connect(make("fileSaveAs", tr("Save &As...")), &QAction::triggered, this,
            [this] { SaveDocumentAs(); });
    QAction* archive = make("fileArchive", tr("Arc&hive..."));
    archive->setStatusTip(tr("Archive entries"));
    connect(archive, &QAction::triggered, this, &CMainFrame::ArchiveEntries);
    // Printing acts on the one report selected on the Reports page.
    const auto selectedReport = [this]() -> uint32_t {
        const std::vector<CReport*> chosen = m_sheetList->SelectedReports();
        return m_sheetList->IsReportsPage() && chosen.size() == 1 ? chosen.front()->m_id : 0;
    };
    QAction* printAction = make("filePrint", tr("&Print..."), QKeySequence::Print);
    printAction->setStatusTip(tr("Print the selected report"));
    connect(printAction, &QAction::triggered, this, [this, selectedReport] {
        if (const uint32_t id = selectedReport())
            print::PrintReport(this, m_doc, m_app, m_prompter, id);
    });
    QAction* previewAction = make("filePrintPreview", tr("Print Pre&view"));
    previewAction->setStatusTip(tr("Show the pages of the selected report"));
    connect(previewAction, &QAction::triggered, this, [this, selectedReport] {
        if (const uint32_t id = selectedReport())
            print::PreviewReport(this, m_doc, m_app, id);
    });
    connect(make("filePageSetup", tr("Page Set&up...")), &QAction::triggered, this,
            [this] { print::PageSetup(this, m_app); });
    QAction* pdfAction = make("fileExportPdf", tr("Export as P&DF..."));
    pdfAction->setStatusTip(tr("Write the selected report as a PDF file"));
    connect(pdfAction, &QAction::triggered, this, [this, selectedReport] {
        const uint32_t id = selectedReport();
        const CReport* report = m_doc.GetReport(id);
        if (!report)
            return;
        QString path = ChooseSaveFile(tr("Export as PDF"),
                                       ToQ(reports::DefaultExportFileName(*report)) + QStringLiteral(".pdf"),
                                       tr("PDF (*.pdf)"));
        if (path.isEmpty())
            return;
        if (QFileInfo(path).suffix().compare(QStringLiteral("pdf"), Qt::CaseInsensitive) != 0)
            path = QFileInfo(path).dir().filePath(QFileInfo(path).completeBaseName() + QStringLiteral(".pdf"));
        QString error;
        if (!print::ExportReportPdf(this, m_doc, m_app, m_prompter, id, path, &error) && !error.isEmpty())
            m_prompter.ShowMessage(FromQ(error), platform::Icon::error);
    });
    connect(make("fileExit", tr("E&xit"), QKeySequence(Qt::CTRL | Qt::Key_Q)), &QAction::triggered,
            this, &QWidget::close);

    QAction* rename = make("editRename", tr("&Rename"), QKeySequence(Qt::Key_F2));
    connect(rename, &QAction::triggered, this, [this] {
        if (m_activeView != ActiveView::list)
            m_taskView->RenameSelected();
        else if (m_sheetList->CanRename())
            m_sheetList->RenameSelected();
    });
    QAction* del = make("editDelete", tr("&Delete"), QKeySequence(Qt::Key_Delete));
    del->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(del, &QAction::triggered, this, [this] {
        if (m_activeView == ActiveView::list)
            m_sheetList->DeleteSelected();
        else
            m_taskView->DeleteSelected();
    });
    QAction* inactive = make("editInactive", tr("&Inactive"));
    inactive->setCheckable(true);
    connect(inactive, &QAction::triggered, this, [this] { m_taskView->ToggleInactive(); });
    connect(make("editContact", tr("Co&ntact...")), &QAction::triggered, this, [this] {
        if (m_activeView != ActiveView::list)
            m_taskView->EditContact();
        else if (m_sheetList->HasContact())
            m_sheetList->EditContact();
    });
    connect(make("editProperties", tr("&Properties..."), QKeySequence(Qt::ALT | Qt::Key_Return)),
            &QAction::triggered, this, [this] {
                if (m_activeView == ActiveView::list)
                    m_sheetList->EditProperties();
                else
                    m_taskView->EditProperties();
            });
    connect(make("editSelectAll", tr("Select &All"), QKeySequence::SelectAll), &QAction::triggered,
            this, [this] { m_sheetList->SelectAll(); });
    connect(make("editComplete", tr("&Complete To Do")), &QAction::triggered, this,
            [this] { m_sheetList->CompleteSelected(); });
    connect(make("editMoveTo", tr("&Move To...")), &QAction::triggered, this,
            [this] { m_sheetList->MoveSelectedExpense(); });

    QAction* toolBar = make("viewToolBar", tr("&Toolbar"));
    toolBar->setCheckable(true);
    toolBar->setChecked(true);
    QAction* statusBarAction = make("viewStatusBar", tr("&Status Bar"));
    statusBarAction->setCheckable(true);
    statusBarAction->setChecked(true);
    connect(statusBarAction, &QAction::toggled, this, [this](bool on) { statusBar()->setVisible(on); });
    auto* viewGroup = new QActionGroup(this);
    QAction* dateView = make("viewDate", tr("&Date"));
    QAction* taskViewAction = make("viewTask", tr("&Task"));
    for (QAction* a : {dateView, taskViewAction})
    {
        a->setCheckable(true);
        viewGroup->addAction(a);
    }
    dateView->setStatusTip(tr("Show the entries of the day selected in the calendar"));
    taskViewAction->setStatusTip(tr("Show the entries of the task selected in the tree"));
    connect(dateView, &QAction::triggered, this, [this] { SetViewType(0); });
    connect(taskViewAction, &QAction::triggered, this, [this] { SetViewType(1); });
    QAction* today = make("viewGoToToday", tr("Go to Tod&ay"), QKeySequence(Qt::CTRL | Qt::Key_D));
    today->setStatusTip(tr("Move Calendar to Today"));
    connect(today, &QAction::triggered, this, [this] { m_timeSheet->GoToToday(); });
    QAction* goTo = make("viewGoToDate", tr("Go to Dat&e..."), QKeySequence(Qt::CTRL | Qt::Key_G));
    goTo->setStatusTip(tr("Move Calendar to a Selected Date"));
    connect(goTo, &QAction::triggered, this, [this] { m_timeSheet->GoToDate(); });
    QAction* hide = make("viewHideInactive", tr("&Hide Inactive Tasks"));
    hide->setCheckable(true);
    connect(hide, &QAction::triggered, this, [this](bool on) { SetHideInactive(on); });

    connect(make("insertTimeEntry", tr("New Ti&me Entry")), &QAction::triggered, this, [this] {
        if (m_activeView == ActiveView::list)
            m_sheetList->NewTimeEntry(nullptr);
        else
            m_sheetList->NewTimeEntry(m_taskView->SelectedTask());
    });
    connect(make("insertExpense", tr("New &Expense Entry")), &QAction::triggered, this, [this] {
        if (m_activeView == ActiveView::list)
            m_sheetList->NewExpenseEntry(nullptr);
        else
            m_sheetList->NewExpenseEntry(m_taskView->SelectedTask());
    });
    connect(make("insertToDo", tr("New To D&o Entry")), &QAction::triggered, this, [this] {
        if (m_activeView == ActiveView::list)
            m_sheetList->NewToDoEntry(nullptr);
        else
            m_sheetList->NewToDoEntry(m_taskView->SelectedTask());
    });
    QAction* newReport = make("insertReport", tr("New &Report..."));
    newReport->setIcon(icons::ReportIcon(1, 20));
    newReport->setStatusTip(tr("Add a new report"));
    connect(newReport, &QAction::triggered, this, [this] { m_sheetList->NewReport(); });

    QAction* start = make("timerStart", tr("&Start Timer"), QKeySequence(Qt::CTRL | Qt::Key_T));
    start->setIcon(icons::TimerIcon(icons::Timer::running));
    start->setStatusTip(tr("Start the timer on the current task"));
    connect(start, &QAction::triggered, this, [this] {
        if (m_activeView == ActiveView::list)
            m_sheetList->StartTimerOnSelected();
        else
            m_taskView->StartTimerOnSelected();
    });
    QAction* stop = make("timerStop", tr("S&top Timer"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_T));
    stop->setIcon(icons::TimerIcon(icons::Timer::inactive));
    stop->setStatusTip(tr("Stop the current active timer"));
    connect(stop, &QAction::triggered, this, [this] { StopTimer(); });
    QAction* pause = make("timerPause", MenuText(42001), QKeySequence(Qt::CTRL | Qt::Key_U));
    pause->setIcon(icons::TimerIcon(icons::Timer::paused));
    pause->setStatusTip(tr("Pause or Resume the timer"));
    connect(pause, &QAction::triggered, this, [this] { PauseResumeTimer(); });
    connect(make("toolsContacts", tr("&Contacts...")), &QAction::triggered, this,
            [this] { m_sheetList->ShowContacts(); });
    QAction* options = make("toolsOptions", tr("&Options..."));
    options->setStatusTip(tr("Change the options"));
    connect(options, &QAction::triggered, this, &CMainFrame::OnOptions);
    QAction* exportReport = make("fileExport", tr("E&xport..."));
    exportReport->setStatusTip(tr("Export the selected report to a file"));
    connect(exportReport, &QAction::triggered, this, [this] { m_sheetList->ExportSelectedReport(); });

    connect(make("helpTip", tr("Ti&p of the Day...")), &QAction::triggered, this,
            &CMainFrame::ShowTipOfTheDay);
    connect(make("helpManual", tr("&User Manual"), QKeySequence::HelpContents), &QAction::triggered,
            this, &CMainFrame::ShowManual);
    connect(make("helpAbout", tr("&About Quorvane Time && Expense...")), &QAction::triggered, this,
            &CMainFrame::ShowAbout);
}

QAction* CMainFrame::Action(const QString& objectName) const
{
    return findChild<QAction*>(objectName, Qt::FindDirectChildrenOnly);
}

void CMainFrame::CreateMenus()
{
    m_fileMenu = menuBar()->addMenu(tr("&File"));
    for (const char* name : {"fileNew", "fileOpen", "fileSave", "fileSaveAs"})
        m_fileMenu->addAction(Action(QString::fromLatin1(name)));
    m_fileMenu->addSeparator();
    for (const char* name : {"filePrint", "filePrintPreview", "filePageSetup", "fileExportPdf"})
        m_fileMenu->addAction(Action(QString::fromLatin1(name)));
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(Action(QStringLiteral("fileArchive")));
    m_fileMenu->addAction(Action(QStringLiteral("fileExport")));
    m_recentSeparator = m_fileMenu->addSeparator();
    for (int i = 0; i < CTimeKeeperApp::kRecentFileCount; ++i)
    {
        auto* a = new QAction(this);
        a->setObjectName(QStringLiteral("fileRecent%1").arg(i + 1));
        a->setVisible(false);
        connect(a, &QAction::triggered, this, [this, i] { OpenRecentFile(i); });
        m_recentActions.append(a);
        m_fileMenu->addAction(a);
    }
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(Action(QStringLiteral("fileExit")));

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    for (const char* name : {"editRename", "editDelete", "editInactive"})
        edit->addAction(Action(QString::fromLatin1(name)));
    edit->addSeparator();
    for (const char* name : {"editSelectAll", "editComplete", "editMoveTo"})
        edit->addAction(Action(QString::fromLatin1(name)));
    edit->addSeparator();
    edit->addAction(Action(QStringLiteral("editContact")));
    edit->addAction(Action(QStringLiteral("editProperties")));

    QMenu* view = menuBar()->addMenu(tr("&View"));
    view->addAction(Action(QStringLiteral("viewToolBar")));
    view->addAction(Action(QStringLiteral("viewStatusBar")));
    view->addSeparator();
    view->addAction(Action(QStringLiteral("viewDate")));
    view->addAction(Action(QStringLiteral("viewTask")));
    view->addSeparator();
    view->addAction(Action(QStringLiteral("viewGoToToday")));
    view->addAction(Action(QStringLiteral("viewGoToDate")));
    view->addSeparator();
    view->addAction(Action(QStringLiteral("viewHideInactive")));

    m_insertMenu = menuBar()->addMenu(tr("&Insert"));
    m_insertMenu->addAction(Action(QStringLiteral("insertTimeEntry")));
    m_insertMenu->addAction(Action(QStringLiteral("insertExpense")));
    m_insertMenu->addAction(Action(QStringLiteral("insertToDo")));
    m_insertMenu->addAction(Action(QStringLiteral("insertReport")));
    m_insertLevelSeparator = m_insertMenu->addSeparator();

    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    tools->addAction(Action(QStringLiteral("timerStart")));
    tools->addAction(Action(QStringLiteral("timerStop")));
    tools->addAction(Action(QStringLiteral("timerPause")));
    tools->addSeparator();
    tools->addAction(Action(QStringLiteral("toolsContacts")));
    AddProjectsMenuItem(*this, tools);
    tools->addAction(Action(QStringLiteral("toolsOptions")));

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    help->addAction(Action(QStringLiteral("helpTip")));
    help->addAction(Action(QStringLiteral("helpManual")));
    help->addSeparator();
    help->addAction(Action(QStringLiteral("helpAbout")));

    for (QMenu* menu : {m_fileMenu, edit, view, m_insertMenu, tools, help})
        connect(menu, &QMenu::aboutToShow, this, &CMainFrame::UpdateCommandStates);
}

void CMainFrame::CreateToolBar()
{
    QToolBar* bar = addToolBar(tr("Standard"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setIconSize(QSize(20, 20));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const auto std = [this](QStyle::StandardPixmap p) { return style()->standardIcon(p); };
    Action(QStringLiteral("fileNew"))->setIcon(std(QStyle::SP_FileIcon));
    Action(QStringLiteral("fileOpen"))->setIcon(std(QStyle::SP_DialogOpenButton));
    Action(QStringLiteral("fileSave"))->setIcon(std(QStyle::SP_DialogSaveButton));
    Action(QStringLiteral("editDelete"))->setIcon(std(QStyle::SP_TrashIcon));
    Action(QStringLiteral("editProperties"))->setIcon(std(QStyle::SP_FileDialogDetailedView));
    Action(QStringLiteral("viewGoToToday"))->setIcon(std(QStyle::SP_ArrowDown));
    Action(QStringLiteral("fileExport"))->setIcon(std(QStyle::SP_ArrowRight));
    for (const char* name : {"fileNew", "fileOpen", "fileSave"})
    {
        QAction* a = Action(QString::fromLatin1(name));
        bar->addAction(a);
        bar->widgetForAction(a)->setProperty("iconOnly", true);
    }
    Action(QStringLiteral("filePrint"))->setIcon(print::PrintIcon());
    Action(QStringLiteral("filePrintPreview"))->setIcon(print::PreviewIcon());
    for (const char* name : {"filePrint", "filePrintPreview"})
    {
        QAction* a = Action(QString::fromLatin1(name));
        bar->addAction(a);
        bar->widgetForAction(a)->setProperty("iconOnly", true);
    }
    bar->addSeparator();
    bar->addAction(Action(QStringLiteral("timerStart")));
    bar->addAction(Action(QStringLiteral("timerPause")));
    bar->addAction(Action(QStringLiteral("timerStop")));
    bar->addSeparator();
    bar->addAction(Action(QStringLiteral("viewGoToToday")));
    bar->addAction(Action(QStringLiteral("editProperties")));
    bar->addAction(Action(QStringLiteral("editDelete")));
    bar->addSeparator();
    bar->addAction(Action(QStringLiteral("insertReport")));
    bar->addAction(Action(QStringLiteral("fileExport")));
    for (QAction* a : bar->actions())
        if (QWidget* w = bar->widgetForAction(a); w && w->property("iconOnly").toBool())
            if (auto* b = qobject_cast<QToolButton*>(w))
                b->setToolButtonStyle(Qt::ToolButtonIconOnly);
    QAction* toggle = Action(QStringLiteral("viewToolBar"));
    connect(toggle, &QAction::toggled, bar, &QToolBar::setVisible);
    connect(bar, &QToolBar::visibilityChanged, toggle, &QAction::setChecked);
}

void CMainFrame::CreateStatusBar()
{
    m_timePane = new QLabel(this);
    m_timePane->setObjectName(QStringLiteral("timePane"));
    m_timePane->setToolTip(tr("Time"));
    m_timePane->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_timePane->setFrameShape(QFrame::Panel);
    m_timePane->setFrameShadow(QFrame::Sunken);
    statusBar()->addPermanentWidget(m_timePane);
    statusBar()->showMessage(tr("Ready"));
    m_statusTimer = new QTimer(this);
    m_statusTimer->setInterval(kStatusTimerMs);
    connect(m_statusTimer, &QTimer::timeout, this, &CMainFrame::RefreshStatus);
    m_statusTimer->start();
    SetStatusTotal(CTinyElapsedTime());
}

void CMainFrame::CreatePanes()
{
    m_outer = new QSplitter(Qt::Horizontal, this);
    m_outer->setObjectName(QStringLiteral("outerSplitter"));
    m_inner = new QSplitter(Qt::Vertical, m_outer);
    m_inner->setObjectName(QStringLiteral("innerSplitter"));
    m_taskView = new CTaskView(*this, m_outer);
    m_timeSheet = new CTimeSheetView(*this, m_inner);
    m_sheetList = new CSheetListView(*this, m_inner);
    m_outer->addWidget(m_taskView);
    m_outer->addWidget(m_inner);
    m_inner->addWidget(m_timeSheet);
    m_inner->addWidget(m_sheetList);
    m_taskView->setMinimumWidth(80);
    m_inner->setMinimumWidth(80);
    m_timeSheet->setMinimumHeight(40);
    m_sheetList->setMinimumHeight(40);
    m_outer->setChildrenCollapsible(false);
    m_inner->setChildrenCollapsible(false);
    m_outer->setStretchFactor(0, 0);
    m_outer->setStretchFactor(1, 1);
    m_inner->setStretchFactor(0, 0);
    m_inner->setStretchFactor(1, 1);
    setCentralWidget(m_outer);

    m_outer->setSizes({m_app.GetProfileInt("C0", 250), m_app.GetProfileInt("C1", 400)});
    m_inner->setSizes({m_app.GetProfileInt("R0", 165), m_app.GetProfileInt("R1", 385)});

    connect(m_taskView, &CTaskView::SelectedTaskChanged, this, [this] {
        m_sheetList->OnTaskSelected();
        RefreshStatus();
        UpdateCommandStates();
    });
    // The print buttons of the tool bar follow the report selection as it changes.
    const auto updatePrintCommands = [this] {
        const bool oneReport = m_sheetList->IsReportsPage() && m_sheetList->SelectedReports().size() == 1;
        for (const char* name : {"filePrint", "filePrintPreview", "fileExportPdf"})
            Action(QString::fromLatin1(name))->setEnabled(oneReport);
    };
    connect(m_sheetList->List(), &QTreeWidget::itemSelectionChanged, this, updatePrintCommands);
    connect(m_sheetList->ReportIcons(), &QListWidget::itemSelectionChanged, this, updatePrintCommands);
    connect(m_sheetList->Tabs(), &QTabBar::currentChanged, this, updatePrintCommands);
    m_taskView->setFocus();
}

void CMainFrame::RestorePlacement()
{
    QRect available(0, 0, 1280, 800);
    if (QScreen* screen = QGuiApplication::primaryScreen())
        available = screen->availableGeometry();
    const int width = m_app.GetProfileInt("Width", std::min(1000, available.width()));
    const int height = m_app.GetProfileInt("Height", std::min(700, available.height()));
    // Without a stored place the window manager chooses one.
    constexpr int unset = std::numeric_limits<int>::min();
    const int left = m_app.GetProfileInt("Left", unset);
    const int top = m_app.GetProfileInt("Top", unset);
    // The stored rectangle is the client area (what SavePlacement writes), so it goes
    // back as one: moving the frame to the client's corner would push the window down
    // by its title bar at every start. A place on a screen that is gone (a monitor
    // unplugged) is left to the window manager.
    if (left != unset && top != unset && QGuiApplication::screenAt(QPoint(left + 20, top + 20)) != nullptr)
        setGeometry(left, top, std::max(width, 200), std::max(height, 150));
    else
        resize(std::max(width, 200), std::max(height, 150));
}

void CMainFrame::SavePlacement()
{
    // The restored client rectangle, also when the window is maximised or minimised.
    const QRect r = normalGeometry().isValid() ? normalGeometry() : geometry();
    m_app.WriteProfileInt("Top", r.top());
    m_app.WriteProfileInt("Left", r.left());
    m_app.WriteProfileInt("Width", r.width());
    m_app.WriteProfileInt("Height", r.height());
    const QList<int> columns = m_outer->sizes();
    const QList<int> rows = m_inner->sizes();
    m_app.WriteProfileInt("C0", columns.value(0));
    m_app.WriteProfileInt("C1", columns.value(1));
    m_app.WriteProfileInt("R0", rows.value(0));
    m_app.WriteProfileInt("R1", rows.value(1));
}

void CMainFrame::StartUp(const QString& commandLineFile)
{
    QString path = commandLineFile;
    if (path.isEmpty())
        path = RecentFiles().value(0);
    if (path.isEmpty() || !OpenDocumentFile(path))
        NewDocument();
}

void CMainFrame::ShowTipAtStartUp()
{
    if (m_app.GetStore().GetInt("Tip", "StartUp", 0) == 0)
        ShowTipOfTheDay();
}

bool CMainFrame::OpenDocumentFile(const QString& path)
{
    // Held by its absolute path: saves started from elsewhere (qvx over the bus runs in the
    // caller's folder) must find the same file and its backup.
    const bool opened =
        m_doc.OnOpenDocument(FromQ(QFileInfo(path).absoluteFilePath()), m_prompter);
    if (opened)
    {
        AddRecentFile(QFileInfo(path).absoluteFilePath());
        m_lastFolder = QFileInfo(path).absolutePath();
    }
    AfterDocumentReplaced();
    return opened;
}

bool CMainFrame::NewDocument()
{
    m_doc.CloseHeldFile();
    m_doc.DeleteContents();
    m_doc.SetPathName(std::string());
    AfterDocumentReplaced();

    const QString name = AskEmployeeName();
    if (name.isEmpty())
        return false;
    m_doc.NewDocument(FromQ(name));
    m_doc.SetModifiedFlag(false);
    AfterDocumentReplaced();

    if (!SaveToChosenFile(tr("Save the New File"), name + QStringLiteral(".qvx")))
    {
        m_doc.DeleteContents();
        m_doc.SetPathName(std::string());
        m_doc.SetModifiedFlag(false);
        AfterDocumentReplaced();
        return false;
    }
    UpdateTitle();
    return true;
}

bool CMainFrame::SaveTo(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!m_doc.OnSaveDocument(FromQ(absolute), m_prompter))
        return false;
    m_doc.SetPathName(FromQ(absolute));
    m_doc.SetModifiedFlag(false);
    AddRecentFile(absolute);
    m_lastFolder = QFileInfo(absolute).absolutePath();
    UpdateTitle();
    return true;
}

bool CMainFrame::SaveToChosenFile(const QString& caption, const QString& proposed)
{
    QString path = proposed;
    do
    {
        path = ChooseSaveFile(caption, path, kFileFilter);
        if (path.isEmpty())
            return false;
    } while (!SaveTo(path));
    return true;
}

bool CMainFrame::SaveDocument()
{
    if (m_doc.GetRootTask() == nullptr)
        return false;
    if (m_doc.IsReadOnly() || m_doc.GetPathName().empty())
        return SaveDocumentAs();
    return SaveTo(ToQ(m_doc.GetPathName()));
}

bool CMainFrame::SaveDocumentAs()
{
    if (m_doc.GetRootTask() == nullptr)
        return false;
    QString proposed = ToQ(m_doc.GetPathName());
    if (proposed.isEmpty())
        proposed = ToQ(m_doc.GetRootTask()->m_name) + QStringLiteral(".qvx");
    return SaveToChosenFile(tr("Save As"), proposed);
}

bool CMainFrame::SaveModified()
{
    if (!m_doc.IsModified() || m_doc.GetRootTask() == nullptr)
        return true;
    if (m_autoSave != nullptr)
    {
        if (m_autoSave->SaveOnClose())
        {
            UpdateTitle();
            return true;
        }
    }
    else if (m_app.GetAutoSave() && !m_doc.GetPathName().empty() && !m_doc.IsReadOnly())
    {
        if (SaveTo(ToQ(m_doc.GetPathName())))
            return true;
    }
    QString title = QFileInfo(ToQ(m_doc.GetPathName())).fileName();
    if (title.isEmpty())
        title = tr("Untitled");
    const std::string question = FromQ(tr("Save changes to %1?").arg(title));
    switch (m_prompter.AskYesNoCancel(question, platform::Icon::warning))
    {
    case platform::Answer::yes:
        return SaveDocument();
    case platform::Answer::no:
        return true;
    default:
        return false;
    }
}

void CMainFrame::AfterDocumentReplaced()
{
    m_doc.m_fullTaskNames = m_app.GetListType() == 1;
    m_timer->OnDocumentOpened();
    m_taskView->Rebuild();
    m_timeSheet->OnDocumentReplaced();
    m_sheetList->Refill();
    RebuildInsertMenu();
    RefreshStatus();
    UpdateCommandStates();
}

bool CMainFrame::AskArchiveOptions(ArchiveOptions& options)
{
    CArchiveDlg dialog(*this, this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    options.taskId = dialog.SelectedTaskId();
    options.from = dialog.From();
    options.to = dialog.To();
    options.deleteArchived = dialog.DeleteArchived();
    return true;
}

void CMainFrame::ArchiveEntries()
{
    if (m_doc.GetRootTask() == nullptr)
        return;
    ArchiveOptions options;
    if (!AskArchiveOptions(options))
        return;

    // "<folder>/<name> Archive.<ext>" beside the working document.
    const QFileInfo current(ToQ(m_doc.GetPathName()));
    QString proposed;
    if (!m_doc.GetPathName().empty())
    {
        const QString suffix = current.suffix().isEmpty() ? QString() : u'.' + current.suffix();
        proposed = current.dir().filePath(current.completeBaseName() + QStringLiteral(" Archive") + suffix);
    }
    const QString path = ChooseSaveFile(tr("Archive"), proposed, kFileFilter);
    if (path.isEmpty())
        return;

    if (QFileInfo(path).absoluteFilePath() == QFileInfo(ToQ(m_doc.GetPathName())).absoluteFilePath())
    {
        m_prompter.ShowMessage(FromQ(tr("The archive cannot replace the open document.")), platform::Icon::warning);
        return;
    }
    {
        std::unique_lock lock(m_doc.GetLock());
        const int autoSave = m_app.GetAutoSave();
        m_app.SetAutoSave(0);
        const std::vector<uint8_t> bytes = m_doc.WriteSelection(options.from, options.to, options.taskId);
        // Written aside and renamed into place: a failed write leaves no half archive.
        QSaveFile file(path);
        bool written = file.open(QIODevice::WriteOnly);
        if (written)
            written = file.write(reinterpret_cast<const char*>(bytes.data()), qint64(bytes.size())) ==
                          qint64(bytes.size()) &&
                      file.commit();
        if (!written)
        {
            m_app.SetAutoSave(autoSave);
            lock.unlock();
            m_prompter.ShowMessage(FromQ(tr("Failed to save the archive file %1:\n%2").arg(path, file.errorString())),
                                   platform::Icon::error);
            return;
        }
        if (options.deleteArchived)
            m_doc.DeleteArchivedEntries(options.from, options.to, options.taskId);
        m_doc.SetModifiedFlag(true);
        m_app.SetAutoSave(autoSave);
    }
    m_doc.UpdateAllViews(hintAll);
    m_taskView->Rebuild();
    m_sheetList->Refill();
    m_timer->RefreshIcon();
    RefreshStatus();
}

QStringList CMainFrame::RecentFiles() const
{
    QStringList files;
    for (const std::string& path : m_app.GetRecentFiles())
        files.append(ToQ(path));
    return files;
}

void CMainFrame::AddRecentFile(const QString& path)
{
    m_app.AddToRecentFiles(FromQ(path));
    RebuildRecentFileMenu();
}

void CMainFrame::RemoveRecentFile(const QString& path)
{
    m_app.RemoveFromRecentFiles(FromQ(path));
    RebuildRecentFileMenu();
}

void CMainFrame::RebuildRecentFileMenu()
{
    const QStringList files = RecentFiles();
    for (int i = 0; i < m_recentActions.size(); ++i)
    {
        QAction* a = m_recentActions[i];
        if (i < files.size())
        {
            QString shown = files[i];
            const QString home = QDir::homePath();
            if (shown.startsWith(home + u'/'))
                shown = u'~' + shown.mid(home.size());
            shown.replace(u'&', QStringLiteral("&&"));
            a->setText(QStringLiteral("&%1 %2").arg(i + 1).arg(shown));
            a->setData(files[i]);
            a->setVisible(true);
        }
        else
            a->setVisible(false);
    }
    m_recentSeparator->setVisible(!files.isEmpty());
}

void CMainFrame::OpenRecentFile(int index)
{
    const QString path = m_recentActions.value(index)->data().toString();
    if (path.isEmpty() || !SaveModified())
        return;
    if (!OpenDocumentFile(path))
        RemoveRecentFile(path);
}

bool CMainFrame::StartTimer(CTask* task, const std::string& note)
{
    if (task == nullptr)
        return false;
    const int started = m_timer->StartTimer(task, 0, note);
    SaveTimerChange();
    m_sheetList->Refill();
    RefreshStatus();
    UpdateCommandStates();
    return started == 1;
}

bool CMainFrame::StopTimer()
{
    const int stopped = m_timer->StopTimer(true, 0);
    SaveTimerChange();
    m_doc.UpdateAllViews(hintEntries | hintTimer);
    m_sheetList->Refill();
    RefreshStatus();
    UpdateCommandStates();
    return stopped == 1;
}

void CMainFrame::PauseResumeTimer()
{
    m_timer->PauseResumeTimer();
    SaveTimerChange();
    m_sheetList->Refill();
    RefreshStatus();
    UpdateCommandStates();
}

void CMainFrame::StartRecentTask(int position)
{
    m_timer->StartRecentTask(position);
    SaveTimerChange();
    m_sheetList->Refill();
    RefreshStatus();
    UpdateCommandStates();
}

QList<QPair<int, QString>> CMainFrame::RecentTaskMenuItems() const
{
    QList<QPair<int, QString>> items;
    for (const RecentTaskItem& item : m_timer->GetRecentTaskMenu())
        items.append({item.position, ToQ(item.name)});
    return items;
}

void CMainFrame::ShowTimerState()
{
    m_timer->RefreshIcon();
}

void CMainFrame::TimerTick()
{
    const bool running = m_timer->OnTimerTick();
    m_sheetList->UpdateRunningElapsed(!isMinimized());
    if (!running)
    {
        // Stopped at midnight: written at once, like any other stop.
        SaveTimerChange();
        m_sheetList->StopTick();
    }
}

void CMainFrame::SaveTimerChange()
{
    // The automatic save's wait is for edits; a running entry lost to a crash a few
    // seconds after the timer started would be an hour lost later. Without automatic
    // saving the user saves, as for any change.
    if (!m_doc.IsModified() || m_doc.IsReadOnly() || m_doc.GetPathName().empty())
        return;
    if (m_autoSave != nullptr)
    {
        if (m_autoSave->SaveOnClose())
            UpdateTitle();
    }
    else if (m_app.GetAutoSave())
        SaveTo(ToQ(m_doc.GetPathName()));
}

int CMainFrame::EditTimeEntry(CDay& day, CTimeEntry& entry)
{
    return m_timer->EditTimeEntry(day, entry);
}

QString CMainFrame::TimePaneText(const QString& elapsedText)
{
    // Right-aligned in nine places, then two blanks: five minutes read "     0:05  ".
    QString text = elapsedText;
    if (text.size() < 9)
        text = QString(9 - text.size(), u' ') + text;
    return text + QStringLiteral("  ");
}

QString CMainFrame::TimePaneTextShown() const
{
    return m_timePane->text();
}

void CMainFrame::SetStatusTotal(const CTinyElapsedTime& total)
{
    m_statusTotal = total;
    const QString text = TimePaneText(ToQ(m_app.GetElapsedText(total)));
    m_timePane->setText(text);
    m_timePane->setFixedWidth(m_timePane->fontMetrics().horizontalAdvance(text) +
                              2 * m_timePane->frameWidth() + 6);
    m_timePane->setEnabled(true);
}

void CMainFrame::RefreshStatus()
{
    CTinyElapsedTime total;
    {
        std::lock_guard lock(m_doc.GetLock());
        const CTinyTime runningEnd = m_doc.RunningEnd();
        if (m_app.GetTaskViewType() == 0)
        {
            if (const CDay* day = m_doc.GetDay(m_timeSheet->SelectedDate()))
                total = day->TotalElapsed(runningEnd);
        }
        else if (const CTask* task = m_taskView->SelectedTask())
        {
            for (const CTimeEntry* entry : task->m_timeEntries)
                total += entry->GetElapsed(runningEnd);
        }
    }
    SetStatusTotal(total);
    UpdateTitle();
}

void CMainFrame::UpdateTitle()
{
    // The title follows the document and its path; so does its presence on the session bus.
    UpdateDocumentService(*this);
    QString title = QFileInfo(ToQ(m_doc.GetPathName())).fileName();
    if (title.isEmpty())
        title = tr("Untitled");
    if (m_doc.IsReadOnly())
        title += tr(" [Read Only]");
    setWindowTitle(title + QStringLiteral("[*] - ") + QApplication::applicationDisplayName());
    setWindowModified(m_doc.IsModified());
}

void CMainFrame::RebuildInsertMenu()
{
    qDeleteAll(m_levelActions);
    m_levelActions.clear();
    std::lock_guard lock(m_doc.GetLock());
    for (int level = 0; level < 20; ++level)
    {
        const QString name = StoredLevelName(m_doc, level);
        if (name.isEmpty())
            continue;
        auto* a = new QAction(tr("New %1").arg(name), this);
        a->setObjectName(QStringLiteral("insertLevel%1").arg(level));
        a->setData(level);
        if (level < 10)
            a->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + level)));
        else if (level == 10)
            a->setText(a->text() + QStringLiteral("\tCtrl+10"));
        else
            a->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key(Qt::Key_0 + level - 10)));
        connect(a, &QAction::triggered, this, [this, level] { m_taskView->AddChildTask(level); });
        addAction(a);
        m_insertMenu->addAction(a);
        m_levelActions.append(a);
    }
    m_insertLevelSeparator->setVisible(!m_levelActions.isEmpty());
    UpdateCommandStates();
}

void CMainFrame::UpdateCommandStates()
{
    std::unique_lock lock(m_doc.GetLock());
    const bool hasTasks = m_doc.GetRootTask() != nullptr;
    const CTask* task = m_taskView->SelectedTask();
    // A focused entry list takes the selection-bound commands even with no row
    // selected: they act on its rows, so they are disabled then, not sent to the tree.
    const bool listActive = m_activeView == ActiveView::list;
    const bool summary = task && task->IsProjectSummary();

    Action(QStringLiteral("fileSave"))->setEnabled(hasTasks);
    Action(QStringLiteral("fileSaveAs"))->setEnabled(hasTasks);
    Action(QStringLiteral("fileArchive"))->setEnabled(hasTasks);
    const bool oneReport = m_sheetList->IsReportsPage() && m_sheetList->SelectedReports().size() == 1;
    for (const char* name : {"filePrint", "filePrintPreview", "fileExportPdf"})
        Action(QString::fromLatin1(name))->setEnabled(oneReport);

    const bool entryCommands = listActive ? m_sheetList->CanStartOrAdd() : (hasTasks && task && !summary);
    for (const char* name : {"insertTimeEntry", "insertExpense", "insertToDo", "timerStart"})
        Action(QString::fromLatin1(name))->setEnabled(entryCommands);
    Action(QStringLiteral("timerStop"))->setEnabled(m_timer->IsRunning());
    const PauseMenuState pause = m_timer->GetPauseMenuState();
    QAction* pauseAction = Action(QStringLiteral("timerPause"));
    pauseAction->setEnabled(pause.enabled);
    pauseAction->setCheckable(pause.checked);
    pauseAction->setChecked(pause.checked);
    pauseAction->setText(ToQ(pause.text).section(u'\t', 0, 0));

    const bool root = task && task->m_id == CTimeKeeperDoc::kRootTaskId;
    if (listActive)
    {
        Action(QStringLiteral("editDelete"))->setEnabled(m_sheetList->SelectedCount() > 0);
        Action(QStringLiteral("editProperties"))->setEnabled(m_sheetList->SelectedCount() == 1);
        Action(QStringLiteral("editContact"))->setEnabled(m_sheetList->HasContact());
        Action(QStringLiteral("editRename"))->setEnabled(m_sheetList->CanRename());
    }
    else
    {
        Action(QStringLiteral("editDelete"))->setEnabled(task && !root && !task->IsImported());
        Action(QStringLiteral("editProperties"))->setEnabled(hasTasks && task);
        Action(QStringLiteral("editContact"))
            ->setEnabled(task && m_doc.GetContact(task->GetEffectiveContactId()) != nullptr);
        Action(QStringLiteral("editRename"))->setEnabled(task && !task->IsImported());
    }
    QAction* inactive = Action(QStringLiteral("editInactive"));
    inactive->setEnabled(task && !root);
    inactive->setChecked(task && task->m_inactive);
    Action(QStringLiteral("editSelectAll"))->setEnabled(m_sheetList->RowCount() > 0);
    Action(QStringLiteral("editComplete"))->setEnabled(m_sheetList->CanComplete());
    Action(QStringLiteral("editMoveTo"))->setEnabled(m_sheetList->CanMoveExpense());
    Action(QStringLiteral("toolsContacts"))->setEnabled(hasTasks);
    Action(QStringLiteral("insertReport"))->setEnabled(hasTasks);
    Action(QStringLiteral("fileExport"))->setEnabled(m_sheetList->IsReportsPage() && m_sheetList->SelectedReports().size() == 1);

    Action(QStringLiteral("viewDate"))->setChecked(m_app.GetTaskViewType() == 0);
    Action(QStringLiteral("viewTask"))->setChecked(m_app.GetTaskViewType() != 0);
    Action(QStringLiteral("viewHideInactive"))->setChecked(m_app.GetHideInactive() != 0);
    for (const char* name : {"viewGoToToday", "viewGoToDate", "viewDate", "viewTask"})
        Action(QString::fromLatin1(name))->setEnabled(hasTasks);

    for (QAction* a : m_levelActions)
    {
        const int level = a->data().toInt();
        a->setEnabled(task && task->m_level < level && task->m_projectId == 0 &&
                      !StoredLevelName(m_doc, level).isEmpty());
    }
}

void CMainFrame::SetViewType(int type)
{
    if (m_app.GetTaskViewType() == type)
    {
        UpdateCommandStates();
        return;
    }
    m_sheetList->SaveColumnWidths();
    m_app.SetTaskViewType(type);
    if (!m_sheetList->IsReportsPage())
    {
        m_sheetList->RebuildColumns();
        m_sheetList->Refill();
    }
    RefreshStatus();
    UpdateCommandStates();
}

void CMainFrame::SetHideInactive(bool hide)
{
    m_app.SetHideInactive(hide ? 1 : 0);
    m_taskView->Rebuild();
    UpdateCommandStates();
}

void CMainFrame::OnDocumentChanged(unsigned hint)
{
    if (hint & (hintTasks | hintCatalogs))
        m_taskView->Rebuild();
    if (hint & (hintEntries | hintTasks | hintTimer | hintReports | hintCatalogs))
    {
        m_sheetList->Refill();
        m_timeSheet->RefreshMarks();
    }
    if (hint & hintTimer)
        m_timer->RefreshIcon();
    RefreshStatus();
    UpdateCommandStates();
}

void CMainFrame::OpenFromTray()
{
    show();
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    raise();
    activateWindow();
}

QString CMainFrame::AskEmployeeName()
{
    CNewFileDlg dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return QString();
    return dialog.EmployeeName();
}

QString CMainFrame::AskOpenFileName(const QString& folder)
{
    return QFileDialog::getOpenFileName(this, tr("Open"), folder, kFileFilter);
}

QString CMainFrame::FileDialogFolder() const
{
    if (!m_doc.GetPathName().empty())
        return QFileInfo(ToQ(m_doc.GetPathName())).absolutePath();
    if (!m_lastFolder.isEmpty() && QFileInfo(m_lastFolder).isDir())
        return m_lastFolder;
    // Many accounts have no documents folder: a folder that does not exist cannot be saved in.
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

QString CMainFrame::ChooseSaveFile(const QString& caption, const QString& proposed, const QString& filter)
{
    QString start = proposed;
    for (;;)
    {
        // A bare name, or one whose folder is not there, starts where the dialogs start.
        if (QFileInfo(start).isRelative() || !QFileInfo(QFileInfo(start).absolutePath()).isDir())
            start = QDir(FileDialogFolder()).filePath(QFileInfo(start).fileName());
        const QString path = AskSaveFileName(caption, start, filter);
        if (path.isEmpty())
            return path;
        const QString folder = QFileInfo(path).absolutePath();
        std::error_code error;
        std::filesystem::create_directories(std::filesystem::path(FromQ(folder)), error);
        if (!error)
        {
            m_lastFolder = folder;
            return path;
        }
        m_prompter.ShowMessage(
            FromQ(tr("The folder '%1' could not be created: %2.").arg(folder, ToQ(error.message()))),
            platform::Icon::error);
        start = path;
    }
}

QString CMainFrame::AskSaveFileName(const QString& caption, const QString& proposed, const QString& filter)
{
    QFileDialog dialog(this, caption, proposed, filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("qvx"));
    dialog.setOption(QFileDialog::DontConfirmOverwrite, false);
    if (!proposed.isEmpty())
        dialog.selectFile(proposed);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    return dialog.selectedFiles().constFirst();
}

void CMainFrame::closeEvent(QCloseEvent* event)
{
    if (!SaveModified())
    {
        event->ignore();
        return;
    }
    m_closing = true;
    SavePlacement();
    m_sheetList->SaveColumnWidths();
    m_app.SetTab(m_sheetList->CurrentPage());
    std::string error;
    if (!m_app.SaveSettings(&error))
        m_prompter.ShowMessage(error, platform::Icon::warning);
    if (CTrayIcon* tray = Tray())
        tray->Hide();
    event->accept();
}

void CMainFrame::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isMinimized() && m_app.GetHideWhenMinimized() &&
        Tray() != nullptr && Tray()->IsAvailable())
    {
        // Left to the notification icon alone: no taskbar entry while minimised.
        QTimer::singleShot(0, this, &QWidget::hide);
    }
}

void CMainFrame::ShowTipOfTheDay()
{
    CTipDlg dialog(m_app.GetStore(), this);
    dialog.exec();
}

void CMainFrame::ShowManual()
{
    const QStringList candidates = {
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/doc/quorvane/manual.html"),
        QStringLiteral(QV_SOURCE_DOCS_DIR "/manual.html"),
    };
    for (const QString& path : candidates)
        if (QFileInfo::exists(path))
        {
            QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
            return;
        }
    m_prompter.ShowMessage(FromQ(tr("The user manual is not installed.")), platform::Icon::information);
}

void CMainFrame::ViewReport(uint32_t reportId)
{
    print::PreviewReport(this, m_doc, m_app, reportId);
}

void CMainFrame::ShowAbout()
{
    QMessageBox::about(this, tr("About Quorvane Time & Expense"),
                       tr("<h3>Quorvane Time &amp; Expense %1</h3>"
                          "<p>Records the time and expenses you spend on a tree of tasks, keeps "
                          "a to-do list, and makes reports and invoices.</p>"
                          "<p>Halvery</p>")
                           .arg(QCoreApplication::applicationVersion()));
}

void CMainFrame::OnOptions()
{
    COptionsSheet sheet(*this, this);
    // The timer's own editor and the notification menu stay away while the sheet is open.
    m_doc.m_editorOpen = true;
    const int result = sheet.exec();
    m_doc.m_editorOpen = false;
    if (result != QDialog::Accepted)
        return;
    if (m_doc.GetRootTask() != nullptr)
        m_doc.SetModifiedFlag();
    RebuildInsertMenu();
    m_taskView->Rebuild();
    m_doc.UpdateAllViews(hintAll);
    UpdateTitle();
}

void CMainFrame::ApplyOptionChanges()
{
    {
        std::lock_guard lock(m_doc.GetLock());
        const bool fullNames = m_app.GetListType() == 1;
        if (m_doc.m_fullTaskNames != fullNames)
        {
            // Siblings are kept in the order of the text that names them.
            m_doc.m_fullTaskNames = fullNames;
            for (const auto& [id, task] : m_doc.m_tasks)
                m_doc.SortChildren(task.get());
        }
    }
    RebuildInsertMenu();
    m_taskView->Rebuild();
    m_timeSheet->OnSettingsChanged();
    m_sheetList->Refill();
    m_timer->RefreshIcon();
    RefreshStatus();
    UpdateCommandStates();
}
