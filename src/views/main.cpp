#include "app/autosave.h"
#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/qtprompter.h"

#include "platform/sharedfile.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCursor>
#include <QPointer>
#include <QStatusBar>
#include <QThread>

#include <clocale>
#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quorvane"));
    QApplication::setApplicationDisplayName(QStringLiteral("Quorvane Time & Expense"));
    QApplication::setOrganizationName(QStringLiteral("Halvery"));
    QApplication::setApplicationVersion(QStringLiteral(QV_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("quorvane"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Records time and expenses against a tree of tasks."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The .qvx document to open."),
                                 QStringLiteral("[file]"));
    parser.process(application);

    // The locale's conventions are read once here; numbers in files and settings stay in "C".
    const platform::LocaleInfo locale = platform::LocaleInfo::FromEnvironment();
    std::setlocale(LC_NUMERIC, "C");

    platform::SettingsStore store(platform::SettingsStore::DefaultPath());
    std::string warning;
    if (!store.Load(&warning))
        std::fprintf(stderr, "quorvane: %s\n", warning.c_str());
    platform::SystemClock clock;
    CTimeKeeperApp app(store, clock, locale);
    app.LoadSettings();

    CTimeKeeperDoc doc;
    QPointer<CMainFrame> frame;
    CQtPrompter prompter([&frame]() -> QWidget* { return frame.data(); });
    CMainFrame window(app, doc, prompter);
    frame = &window;
    // A wait for another program's save or hold (bounded by the shared file) shows as a busy
    // cursor and a status line; the automatic save waits on its own thread, out of sight.
    platform::SharedFile::SetWaitObserver(
        [&frame](platform::SharedFile::WaitEvent event, const std::string& path)
        {
            if (QThread::currentThread() != qApp->thread() || !frame)
                return;
            if (event == platform::SharedFile::WaitEvent::started)
            {
                QApplication::setOverrideCursor(Qt::WaitCursor);
                frame->statusBar()->showMessage(
                    QObject::tr("Waiting for another program to finish with %1...").arg(ToQ(path)));
                frame->statusBar()->repaint();
            }
            else
            {
                QApplication::restoreOverrideCursor();
                frame->statusBar()->clearMessage();
            }
        });
    CAutoSave autoSave(doc, prompter, [&app] { return app.GetAutoSave() != 0; });
    window.SetAutoSave(&autoSave);
    window.show();

    const QStringList files = parser.positionalArguments();
    window.StartUp(files.isEmpty() ? QString() : files.first());
    window.ShowTipAtStartUp();
    return application.exec();
}
