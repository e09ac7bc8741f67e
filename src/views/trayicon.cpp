#include "views/trayicon.h"

#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "timekeeping/timer.h"
#include "views/icons.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QMenu>
#include <QSystemTrayIcon>

CTrayIcon::CTrayIcon(CMainFrame& frame, QObject* parent)
    : QObject(parent), m_frame(frame), m_icon(new QSystemTrayIcon(this)), m_menu(new QMenu(&frame))
{
    m_menu->setObjectName(QStringLiteral("trayMenu"));
    m_tip = ToQ(platform::LoadString(42000));
    m_icon->setIcon(icons::TimerIcon(icons::Timer::inactive));
    m_icon->setToolTip(m_tip);
    m_icon->setContextMenu(m_menu);
    connect(m_menu, &QMenu::aboutToShow, this, &CTrayIcon::BuildMenu);
    connect(m_icon, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) { OnActivated(int(reason)); });
}

CTrayIcon::~CTrayIcon() = default;

void CTrayIcon::Show()
{
    if (QSystemTrayIcon::isSystemTrayAvailable())
        m_icon->show();
}

void CTrayIcon::Hide()
{
    m_icon->hide();
}

bool CTrayIcon::IsAvailable() const
{
    return QSystemTrayIcon::isSystemTrayAvailable() && m_icon->isVisible();
}

void CTrayIcon::SetState(TimerIcon icon, const QString& tip)
{
    if (icon != m_state)
    {
        m_state = icon;
        switch (icon)
        {
        case TimerIcon::running:
            m_icon->setIcon(icons::TimerIcon(icons::Timer::running));
            break;
        case TimerIcon::paused:
            m_icon->setIcon(icons::TimerIcon(icons::Timer::paused));
            break;
        case TimerIcon::inactive:
            m_icon->setIcon(icons::TimerIcon(icons::Timer::inactive));
            break;
        }
    }
    if (tip != m_tip)
    {
        m_tip = tip;
        m_icon->setToolTip(tip);
    }
}

void CTrayIcon::BuildMenu()
{
    m_menu->clear();
    CTimeKeeperDoc& doc = m_frame.Doc();
    // No menu while an editor of the document is open.
    if (doc.m_editorOpen)
        return;
    CTimer& timer = m_frame.Timer();

    QAction* open = m_menu->addAction(tr("&Open"));
    open->setObjectName(QStringLiteral("trayOpen"));
    QFont bold = open->font();
    bold.setBold(true);
    open->setFont(bold);
    connect(open, &QAction::triggered, &m_frame, &CMainFrame::OpenFromTray);
    m_menu->addSeparator();

    const bool running = timer.IsRunning();
    if (running || timer.IsPaused())
    {
        QAction* pause = m_menu->addAction(running ? tr("Pa&use") : tr("Res&ume"));
        pause->setObjectName(QStringLiteral("trayPause"));
        connect(pause, &QAction::triggered, &m_frame, &CMainFrame::PauseResumeTimer);
    }

    QMenu* start = m_menu->addMenu(tr("&Start Timer"));
    start->menuAction()->setObjectName(QStringLiteral("trayStart"));
    for (const auto& [position, name] : m_frame.RecentTaskMenuItems())
    {
        QString text = name;
        text.replace(u'&', QStringLiteral("&&"));
        QAction* item = start->addAction(text);
        item->setData(position);
        const int p = position;
        connect(item, &QAction::triggered, &m_frame, [this, p] { m_frame.StartRecentTask(p); });
    }
    // Always offered, also when no task was timed yet (then it is empty).
    start->setEnabled(true);

    if (running)
    {
        QAction* stop = m_menu->addAction(tr("S&top Timer"));
        stop->setObjectName(QStringLiteral("trayStop"));
        connect(stop, &QAction::triggered, &m_frame, [this] { m_frame.StopTimer(); });
    }
}

void CTrayIcon::OnActivated(int reason)
{
    switch (QSystemTrayIcon::ActivationReason(reason))
    {
    case QSystemTrayIcon::DoubleClick:
    case QSystemTrayIcon::Trigger:
        m_frame.OpenFromTray();
        break;
    default:
        break;
    }
}
