#include "views/dbus/documentservice.h"

#include "documentadaptor.h"

#include "app/timekeeperapp.h"
#include "cli/dispatch.h"
#include "cli/documenthost.h"
#include "model/day.h"
#include "model/timekeeperdoc.h"

#include <QApplication>
#include <QDBusMessage>
#include <QVariantMap>
#include <QWidget>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>
#include <unistd.h>

namespace
{
QString Q(const std::string& s)
{
    return QString::fromStdString(s);
}

// What a command writes to std::cout and std::cerr while it runs here goes to the caller.
class CapturedOutput
{
public:
    CapturedOutput()
        : m_oldOut(std::cout.rdbuf(m_out.rdbuf())), m_oldErr(std::cerr.rdbuf(m_err.rdbuf()))
    {
    }
    ~CapturedOutput()
    {
        std::cout.rdbuf(m_oldOut);
        std::cerr.rdbuf(m_oldErr);
        // A command that failed half-way may leave a stream in a failed state.
        std::cout.clear();
        std::cerr.clear();
    }
    std::string Out() const { return m_out.str(); }
    std::string Err() const { return m_err.str(); }

private:
    std::ostringstream m_out;
    std::ostringstream m_err;
    std::streambuf* m_oldOut;
    std::streambuf* m_oldErr;
};

// The caller's working directory for relative paths of its command line.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(const std::string& dir)
    {
        char old[4096];
        if (::getcwd(old, sizeof old))
            m_old = old;
        if (dir.empty())
            m_ok = true;
        else if (::chdir(dir.c_str()) == 0)
            m_ok = true;
        else
            m_error = std::strerror(errno);
    }
    ~WorkingDirectory()
    {
        if (!m_old.empty() && ::chdir(m_old.c_str()) != 0)
            std::fprintf(stderr, "quorvane: cannot return to '%s': %s\n", m_old.c_str(),
                         std::strerror(errno));
    }
    bool Ok() const { return m_ok; }
    const std::string& Error() const { return m_error; }

private:
    std::string m_old;
    bool m_ok = false;
    std::string m_error;
};
} // namespace

CDocumentService::CDocumentService(CTimeKeeperDoc& doc, CTimeKeeperApp& app,
                                   std::string canonicalPath, std::function<void()> afterRun,
                                   QObject* parent)
    : QObject(parent), m_doc(doc), m_app(app), m_path(std::move(canonicalPath)),
      m_afterRun(std::move(afterRun)), m_bus(QStringLiteral("unconnected"))
{
    new CDocumentAdaptor(this);
    // The automatic save reports from its own thread; the state is looked at here.
    m_observer = m_doc.AddObserver(
        [this](unsigned)
        {
            QMetaObject::invokeMethod(
                this, [this] { CheckTimerState(); }, Qt::QueuedConnection);
        });
    m_told = Snapshot();
}

CDocumentService::~CDocumentService()
{
    m_doc.RemoveObserver(m_observer);
    if (m_registered)
        m_bus.unregisterObject(ObjectPath());
}

bool CDocumentService::Register(QDBusConnection bus, QString* reason)
{
    m_bus = bus;
    m_registered = m_bus.registerObject(ObjectPath(), this, QDBusConnection::ExportAdaptors);
    if (!m_registered && reason)
        *reason = QStringLiteral("cannot offer '%1' on the session bus at %2: %3")
                      .arg(Q(m_path), ObjectPath(), m_bus.lastError().message());
    return m_registered;
}

QString CDocumentService::ObjectPath() const
{
    return Q(cli::DocumentObjectPath(m_path));
}

QString CDocumentService::DocumentPath() const
{
    return Q(m_path);
}

CDocumentService::TimerSnapshot CDocumentService::Snapshot() const
{
    std::lock_guard<std::recursive_mutex> lock(m_doc.GetLock());
    TimerSnapshot snap;
    const CTimeEntry* e = m_doc.m_activeEntry;
    if (m_doc.m_timerRunning && e)
    {
        snap.state = QStringLiteral("running");
        snap.taskId = e->m_taskId;
        if (e->m_day)
        {
            const CDateTime date = e->m_day->GetDate();
            snap.start =
                QString::asprintf("%04d-%02d-%02dT%02d:%02d", date.GetYear(), date.GetMonth(),
                                  date.GetDay(), e->m_start.GetHour(), e->m_start.GetMinute());
        }
    }
    else if (m_doc.m_paused && m_doc.m_pausedTask)
    {
        snap.state = QStringLiteral("paused");
        snap.taskId = m_doc.m_pausedTask->m_id;
    }
    else
        snap.state = QStringLiteral("inactive");
    return snap;
}

QString CDocumentService::State() const
{
    return Snapshot().state;
}

QString CDocumentService::Task() const
{
    const TimerSnapshot snap = Snapshot();
    if (snap.taskId == 0)
        return QString();
    std::lock_guard<std::recursive_mutex> lock(m_doc.GetLock());
    const CTask* task = m_doc.GetTask(snap.taskId);
    return task ? Q(m_doc.GetTaskPath(task)) : QString();
}

uint CDocumentService::TaskId() const
{
    return Snapshot().taskId;
}

QString CDocumentService::Start() const
{
    return Snapshot().start;
}

uint CDocumentService::ElapsedMinutes() const
{
    std::lock_guard<std::recursive_mutex> lock(m_doc.GetLock());
    const CTimeEntry* e = m_doc.m_activeEntry;
    if (!m_doc.m_timerRunning || !e)
        return 0;
    return uint(e->GetElapsed(m_doc.RunningEnd()).TotalMinutes());
}

bool CDocumentService::Paused() const
{
    return Snapshot().state == QLatin1String("paused");
}

QString CDocumentService::Status(QString& task, QString& start, uint& elapsedMinutes,
                                 QString& elapsedText)
{
    const TimerSnapshot snap = Snapshot();
    task = Task();
    start = snap.start;
    elapsedMinutes = ElapsedMinutes();
    elapsedText =
        elapsedMinutes
            ? Q(m_app.GetElapsedText(CTinyElapsedTime::FromMinutes(int64_t(elapsedMinutes))))
            : QString();
    return snap.state;
}

void CDocumentService::CheckTimerState()
{
    const TimerSnapshot now = Snapshot();
    if (now == m_told)
        return;
    m_told = now;
    const QString task = Task();
    emit TimerChanged(now.state, task, now.start);
    if (!m_registered)
        return;
    QDBusMessage changed =
        QDBusMessage::createSignal(ObjectPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    const QVariantMap values{{QStringLiteral("State"), now.state},
                             {QStringLiteral("Task"), task},
                             {QStringLiteral("TaskId"), QVariant::fromValue(now.taskId)},
                             {QStringLiteral("Start"), now.start},
                             {QStringLiteral("Paused"), now.state == QLatin1String("paused")}};
    changed << QString::fromLatin1(cli::kDocumentInterface) << values
            << QStringList{QStringLiteral("ElapsedMinutes")};
    m_bus.send(changed);
}

int CDocumentService::Run(const QStringList& argv, const QString& cwd, QByteArray& out,
                          QByteArray& err)
{
    // A caller that gave up waiting (this program did not answer in time) has been told that
    // nothing changed: keep it so.
    if (calledFromDBus())
    {
        // Asked without an event loop of its own, so that no other call runs meanwhile.
        QDBusMessage asking = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        asking << message().service();
        const QDBusMessage reply = connection().call(asking, QDBus::Block, 2000);
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
            !reply.arguments().at(0).toBool())
        {
            err = "qvx: the caller left before the command ran; nothing was changed\n";
            return 1;
        }
    }
    return RunCommandLine(argv, cwd, out, err);
}

int CDocumentService::RunCommandLine(const QStringList& argv, const QString& cwd, QByteArray& out,
                                     QByteArray& err)
{
    // The timer's questions and the editors let go of the document lock while they wait for
    // the user: a command must not change the document under them.
    if (QApplication::activeModalWidget() != nullptr)
    {
        err = "qvx: the desktop program is waiting for an answer in a dialog; close it and run "
              "the command again; nothing was changed\n";
        return 1;
    }
    std::vector<std::string> args;
    for (const QString& a : argv)
        args.push_back(a.toStdString());
    const cli::CommandLine line = cli::ParseCommandLine(args);

    int status = 1;
    {
        std::lock_guard<std::recursive_mutex> lock(m_doc.GetLock());
        WorkingDirectory dir(cwd.toStdString());
        if (!dir.Ok())
        {
            err = QByteArray("qvx: the desktop program cannot use the working directory '") +
                  cwd.toUtf8() + "': " + QByteArray(dir.Error().c_str()) + "\n";
            return 1;
        }
        cli::DocumentHost host{m_doc, m_app, m_path};
        cli::HostScope scope(host);
        CapturedOutput captured;
        try
        {
            status = cli::RunCommandLine(line);
        }
        catch (const std::exception& e)
        {
            std::cerr << "qvx: " << e.what() << "\n";
            status = 1;
        }
        out = QByteArray::fromStdString(captured.Out());
        err = QByteArray::fromStdString(captured.Err());
    }
    if (m_afterRun)
        m_afterRun();
    CheckTimerState();
    return status;
}
