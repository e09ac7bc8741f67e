#pragma once

#include "timekeeping/timerui.h"

#include <QObject>
#include <QString>

class CMainFrame;
class QMenu;
class QSystemTrayIcon;

// The notification-area icon: shows whether the timer runs, on what and for how
// long, and offers a small menu to open the window, pause or resume, start the
// timer on a recent task, or stop it.
class CTrayIcon : public QObject
{
    Q_OBJECT

public:
    CTrayIcon(CMainFrame& frame, QObject* parent = nullptr);
    ~CTrayIcon() override;

    void Show();
    void Hide();
    // False where the desktop has no notification area.
    bool IsAvailable() const;

    void SetState(TimerIcon icon, const QString& tip);
    TimerIcon State() const { return m_state; }
    QString Tip() const { return m_tip; }

    // Fills the menu for the current timer state (done each time it opens).
    void BuildMenu();
    QMenu* Menu() const { return m_menu; }

private:
    void OnActivated(int reason);

    CMainFrame& m_frame;
    QSystemTrayIcon* m_icon;
    QMenu* m_menu;
    TimerIcon m_state = TimerIcon::inactive;
    QString m_tip;
};
