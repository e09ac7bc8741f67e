#pragma once

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "views/mainframe.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class QDialog;
class QMenu;

// The texts of a menu's actions, separators left out.
QStringList Texts(const QMenu& menu);

// The main window with its questions answered by the test: the employee name and
// the file names that the dialogs would ask for, and the Archive dialog's choices.
class CTestFrame : public CMainFrame
{
public:
    using CMainFrame::CMainFrame;

    QString employeeName;
    QStringList saveNames; // answered in order; empty when used up (Cancel)
    QStringList asked;     // captions of the save questions
    QStringList proposals; // and the files they proposed
    QString openName;
    QString openFolder;
    bool archiveAnswer = false;
    ArchiveOptions archiveOptions;
    QList<uint32_t> viewedReports; // "View report when done" shows nothing in a test

    void ViewReport(uint32_t reportId) override { viewedReports.append(reportId); }

protected:
    QString AskEmployeeName() override { return employeeName; }
    QString AskOpenFileName(const QString& folder) override { return openFolder = folder, openName; }
    QString AskSaveFileName(const QString& caption, const QString& proposed, const QString&) override
    {
        asked.append(caption);
        proposals.append(proposed);
        return saveNames.isEmpty() ? QString() : saveNames.takeFirst();
    }
    bool AskArchiveOptions(ArchiveOptions& options) override
    {
        options = archiveOptions;
        return archiveAnswer;
    }
};

// Everything a main window stands on: settings in memory, a clock that stands still
// at 2024-03-13 09:00, the U.S. locale, a scripted prompter and a new document with
// the default levels, saved in a temporary folder and opened by the window.
struct ViewFixture
{
    ViewFixture();
    ~ViewFixture();

    // Opens the document file again in the window (after changing `doc` directly).
    void Reopen();
    QString Path(const QString& name) const { return dir.filePath(name); }
    // Adds a task through the document (not the window) and answers its id: records
    // are looked up by id, since reopening the file makes new ones.
    uint32_t AddTask(uint32_t parentId, int level, const std::string& name);
    CTask* Task(uint32_t id) const { return doc.GetTask(id); }
    // A closed time entry of the task on `date` from h1:m1 to h2:m2.
    CTimeEntry* AddTime(uint32_t taskId, const CDateTime& date, int h1, int m1, int h2, int m2);
    // Answers the next modal dialog (within `ms`) by calling `answer` on it.
    static void WhenDialogShows(const std::function<void(QDialog*)>& answer, int ms = 5000);

    QTemporaryDir dir;
    platform::SettingsStore store;
    platform::FixedClock clock;
    std::unique_ptr<CTimeKeeperApp> app;
    CTimeKeeperDoc doc;
    platform::ScriptedPrompter prompter;
    std::unique_ptr<CTestFrame> frame;
    QString path;
};
