#pragma once

#include "model/datetime.h"
#include "model/tinytime.h"

#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <atomic>
#include <memory>
#include <string>

class CAutoSave;
class CDay;
class CSheetListView;
class CTask;
class CTaskView;
class CTimeEntry;
class CTimeKeeperApp;
class CTimeKeeperDoc;
class CTimeSheetView;
class CTimer;
class CQtTimerUi;
class CTrayIcon;
class QAction;
class QLabel;
class QMenu;
class QSplitter;
class QTimer;

namespace platform
{
class Prompter;
}

// The one main window: tool bar, status bar with the running "Time" total, the
// task tree on the left and the calendar over the entry lists on the right. It
// carries the application-wide commands (files, timer, views) and the start-up.
class CMainFrame : public QMainWindow
{
    Q_OBJECT

public:
    CMainFrame(CTimeKeeperApp& app, CTimeKeeperDoc& doc, platform::Prompter& prompter,
               QWidget* parent = nullptr);
    ~CMainFrame() override;

    CTimeKeeperApp& App() const { return m_app; }
    CTimeKeeperDoc& Doc() const { return m_doc; }
    platform::Prompter& Prompter() const { return m_prompter; }
    CTimer& Timer() const { return *m_timer; }
    CTaskView* TaskView() const { return m_taskView; }
    CTimeSheetView* TimeSheet() const { return m_timeSheet; }
    CSheetListView* SheetList() const { return m_sheetList; }
    CTrayIcon* Tray() const;
    QSplitter* OuterSplitter() const { return m_outer; }
    QSplitter* InnerSplitter() const { return m_inner; }

    // The automatic save of the document, when it has one: closing asks it first.
    void SetAutoSave(CAutoSave* autoSave) { m_autoSave = autoSave; }

    // Start-up: the file named on the command line, else the most recently used
    // one; when that fails or there is none, a new document.
    void StartUp(const QString& commandLineFile);
    // Shows the Tip of the Day when the user has not turned it off.
    void ShowTipAtStartUp();

    // File commands. Each returns true when it went through.
    bool OpenDocumentFile(const QString& path);
    bool NewDocument();
    bool SaveDocument();
    bool SaveDocumentAs();
    // A modified document is saved without asking while automatic saving works,
    // otherwise the user is asked. False when the user cancelled or the save failed.
    bool SaveModified();
    void ArchiveEntries();
    QStringList RecentFiles() const;

    // Timer commands: the only place where the views reach the timer.
    bool StartTimer(CTask* task, const std::string& note = std::string());
    bool StopTimer();
    void PauseResumeTimer();
    void StartRecentTask(int position);
    // The recent tasks offered by the "Start Timer" menus: 1-based positions in the
    // recent-task list with their names, in menu order.
    QList<QPair<int, QString>> RecentTaskMenuItems() const;
    // Shows the state of the timer after a document was opened or created.
    void ShowTimerState();
    // One tick of the running timer (every 5 seconds).
    void TimerTick();
    // The time-entry editor used by the timer and the entry lists: 1 OK, 2 Cancel.
    int EditTimeEntry(CDay& day, CTimeEntry& entry);

    // Status bar and title.
    void RefreshStatus();
    void SetStatusTotal(const CTinyElapsedTime& total);
    // The text of the "Time" pane: the total and two blanks, padded on the left to 9.
    static QString TimePaneText(const QString& elapsedText);
    QString TimePaneTextShown() const;
    void UpdateTitle();

    // Tools, "Options...": the options sheet, then the views rebuilt from what it changed.
    void OnOptions();
    // Shows settings just written by the options sheet: the task order and names, the
    // Insert menu, the calendar's week, the lists' times and the status total.
    void ApplyOptionChanges();

    // Rebuilds the "New <level>" items of the Insert menu from the level names.
    void RebuildInsertMenu();
    // Enables, checks and renames the commands by the current selection and state.
    void UpdateCommandStates();
    // Switches between Date view (0) and Task view (1).
    void SetViewType(int type);
    void SetHideInactive(bool hide);

    // The most recently focused of the tree and the entry list receives the
    // selection-bound commands of the menus.
    enum class ActiveView
    {
        tree,
        list,
    };
    ActiveView GetActiveView() const { return m_activeView; }
    void SetActiveView(ActiveView view) { m_activeView = view; }

    // Shows a report ("View report when done"): its HTML export in the browser.
    virtual void ViewReport(uint32_t reportId);

    // Named actions, for the tests and the tool bar.
    QAction* Action(const QString& objectName) const;
    QMenu* InsertMenu() const { return m_insertMenu; }
    QLabel* TimePane() const { return m_timePane; }

    // Restores and activates the window ("Open" of the notification icon).
    void OpenFromTray();
    // Writes placement and pane sizes; done by a normal close.
    void SavePlacement();

    // What the Archive dialog asks.
    struct ArchiveOptions
    {
        uint32_t taskId = 1;
        CDateTime from;
        CDateTime to;
        bool deleteArchived = false;
    };

    // Where file dialogs start: the open document's folder, else the folder of the last
    // file chosen in one, else the documents folder where it exists, else the home folder.
    QString FileDialogFolder() const;
    // Asks for a file to write; a proposed bare name starts in FileDialogFolder(). A
    // folder that the person typed and that does not exist yet is created. Empty when
    // cancelled.
    QString ChooseSaveFile(const QString& caption, const QString& proposed, const QString& filter);

protected:
    // The questions to the user that tests answer without a dialog.
    virtual QString AskSaveFileName(const QString& caption, const QString& proposed,
                                    const QString& filter);
    virtual bool AskArchiveOptions(ArchiveOptions& options);
    virtual QString AskEmployeeName();
    virtual QString AskOpenFileName(const QString& folder);

    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void CreateActions();
    void CreateMenus();
    void CreateToolBar();
    void CreateStatusBar();
    void CreatePanes();
    void RestorePlacement();
    void RebuildRecentFileMenu();
    void AddRecentFile(const QString& path);
    void RemoveRecentFile(const QString& path);
    void OpenRecentFile(int index);
    void OnDocumentChanged(unsigned hint);
    void AfterDocumentReplaced();
    bool SaveTo(const QString& path);
    // Save As until a save goes through or the person cancels: a failed save never
    // costs the document.
    bool SaveToChosenFile(const QString& caption, const QString& proposed);
    // After the timer started, stopped, paused or resumed: saves the document now when
    // automatic saving is on.
    void SaveTimerChange();
    void ShowTipOfTheDay();
    void ShowAbout();
    void ShowManual();

    CTimeKeeperApp& m_app;
    CTimeKeeperDoc& m_doc;
    platform::Prompter& m_prompter;
    std::unique_ptr<CQtTimerUi> m_timerUi;
    std::unique_ptr<CTimer> m_timer;
    int m_observer = 0;
    std::atomic<unsigned> m_pendingHint{0};
    CAutoSave* m_autoSave = nullptr;

    QSplitter* m_outer = nullptr;
    QSplitter* m_inner = nullptr;
    CTaskView* m_taskView = nullptr;
    CTimeSheetView* m_timeSheet = nullptr;
    CSheetListView* m_sheetList = nullptr;
    QLabel* m_timePane = nullptr;
    QTimer* m_statusTimer = nullptr;
    CTinyElapsedTime m_statusTotal;
    ActiveView m_activeView = ActiveView::tree;

    QMenu* m_fileMenu = nullptr;
    QMenu* m_insertMenu = nullptr;
    QAction* m_recentSeparator = nullptr;
    QList<QAction*> m_recentActions;
    QAction* m_insertLevelSeparator = nullptr;
    QList<QAction*> m_levelActions;
    bool m_closing = false;
    QString m_lastFolder;
};
