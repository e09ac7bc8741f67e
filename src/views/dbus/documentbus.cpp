#include "views/dbus/documentbus.h"

#include "cli/documenthost.h"
#include "model/timekeeperdoc.h"
#include "timekeeping/timer.h"
#include "views/dbus/documentservice.h"
#include "views/mainframe.h"
#include "views/sheetlistview.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

#include <cstdio>
#include <unistd.h>

namespace
{
// The bus names belong to the program, the objects to its documents: qvx asks each
// program by its own name which document it holds; the plain name is for scripts.
bool TakeBusNames(QDBusConnection& bus)
{
    static bool taken = false;
    if (taken)
        return true;
    const QString own = QString::fromLatin1(cli::kInstanceNamePrefix) + QString::number(::getpid());
    if (!bus.registerService(own))
    {
        std::fprintf(stderr, "quorvane: cannot take the bus name %s: %s\n", qPrintable(own),
                     qPrintable(bus.lastError().message()));
        return false;
    }
    // A second program leaves the plain name with the first.
    bus.registerService(QString::fromLatin1(cli::kBusName));
    taken = true;
    return true;
}

void AfterRun(CMainFrame& frame)
{
    // The command ran its own timer on the document: the window's tick, icon and
    // commands follow the state it left.
    if (frame.Timer().IsRunning())
        frame.SheetList()->StartTick();
    else
        frame.SheetList()->StopTick();
    frame.ShowTimerState();
    frame.RefreshStatus();
    frame.UpdateCommandStates();
}
} // namespace

void UpdateDocumentService(CMainFrame& frame)
{
    CDocumentService* current =
        frame.findChild<CDocumentService*>(QString(), Qt::FindDirectChildrenOnly);
    const CTimeKeeperDoc& doc = frame.Doc();
    std::string path;
    if (!doc.GetPathName().empty() && !doc.IsReadOnly() && doc.GetRootTask() != nullptr)
        path = cli::CanonicalPath(doc.GetPathName());
    if (current && current->CanonicalPath() == path)
        return;
    delete current;
    if (path.empty())
        return;

    QDBusConnection bus = QDBusConnection::sessionBus();
    // Without a session bus the program works as before; qvx then works on the file.
    if (!bus.isConnected() || !TakeBusNames(bus))
        return;
    auto* service = new CDocumentService(
        frame.Doc(), frame.App(), path, [&frame] { AfterRun(frame); }, &frame);
    QString reason;
    if (!service->Register(bus, &reason))
    {
        std::fprintf(stderr, "quorvane: %s\n", qPrintable(reason));
        delete service;
    }
}
