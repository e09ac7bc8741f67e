#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <string>

class CTimeKeeperApp;
class CTimeKeeperDoc;

// The open document on the session bus (interface org.halvery.Quorvane.Document, described
// in org.halvery.Quorvane.Document.xml beside this file): qvx command lines run on it
// in-process, and the timer's state can be read and followed. One object per open document,
// at the path that cli::DocumentObjectPath gives for the document's file.
class CDocumentService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_PROPERTY(QString DocumentPath READ DocumentPath)
    Q_PROPERTY(QString State READ State)
    Q_PROPERTY(QString Task READ Task)
    Q_PROPERTY(uint TaskId READ TaskId)
    Q_PROPERTY(QString Start READ Start)
    Q_PROPERTY(uint ElapsedMinutes READ ElapsedMinutes)
    Q_PROPERTY(bool Paused READ Paused)

public:
    // `afterRun` brings the window up to date after a command line ran on the document.
    CDocumentService(CTimeKeeperDoc& doc, CTimeKeeperApp& app, std::string canonicalPath,
                     std::function<void()> afterRun, QObject* parent = nullptr);
    ~CDocumentService() override;

    // Puts the object on `bus` and takes the bus names; false (with the reason) when the
    // object cannot be registered.
    bool Register(QDBusConnection bus, QString* reason = nullptr);
    const std::string& CanonicalPath() const { return m_path; }
    QString ObjectPath() const;

    QString DocumentPath() const;
    // "running", "paused" or "inactive".
    QString State() const;
    // Display path of the running or paused task; empty when the timer is inactive.
    QString Task() const;
    uint TaskId() const;
    // "YYYY-MM-DDTHH:MM" of the running entry's start; empty unless running.
    QString Start() const;
    uint ElapsedMinutes() const;
    bool Paused() const;

    // Runs one command line as qvx would (the same command code), on this document; for
    // callers inside the program and the tests. Questions are answered only by --yes/--no.
    int RunCommandLine(const QStringList& argv, const QString& cwd, QByteArray& out,
                       QByteArray& err);

public slots:
    int Run(const QStringList& argv, const QString& cwd, QByteArray& out, QByteArray& err);
    QString Status(QString& task, QString& start, uint& elapsedMinutes, QString& elapsedText);

signals:
    // The timer started, stopped, paused or resumed (or moved to another task).
    void TimerChanged(const QString& state, const QString& task, const QString& start);

private:
    struct TimerSnapshot
    {
        QString state;
        uint taskId = 0;
        QString start;
        bool operator==(const TimerSnapshot&) const = default;
    };
    TimerSnapshot Snapshot() const;
    // Tells the bus when the timer's state differs from what was last told.
    void CheckTimerState();

    CTimeKeeperDoc& m_doc;
    CTimeKeeperApp& m_app;
    std::string m_path;
    std::function<void()> m_afterRun;
    int m_observer = 0;
    TimerSnapshot m_told;
    QDBusConnection m_bus;
    bool m_registered = false;
};
