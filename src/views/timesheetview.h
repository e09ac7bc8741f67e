#pragma once

#include "model/datetime.h"

#include <QDate>
#include <QList>
#include <QWidget>

class CMainFrame;
class CMonthCalendar;
class CTrayIcon;
class QMenu;
class QToolButton;

// The calendar pane: as many month panels as fit, side by side and in rows, with
// buttons to page by month and by year. The day selected here drives the entry
// lists in Date view, the status total, new entries and to-do completion. It also
// holds the notification-area icon.
class CTimeSheetView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kPanelWidth = 140;
    static constexpr int kPanelHeight = 160;

    CTimeSheetView(CMainFrame& frame, QWidget* parent = nullptr);
    ~CTimeSheetView() override;

    // The selected day (its time of day is noon after "Go to Date").
    CDateTime SelectedDate() const { return m_selected; }
    QDate SelectedQDate() const;
    // Selects a day as a click in a panel does.
    void SelectDate(const QDate& date);

    void GoToToday();
    // Asks for a date ("Go To Date"); true when one was chosen.
    bool GoToDate();
    // Selects `date` at noon and scrolls the calendar to it, as "Go to Date" does.
    void GoToDateValue(const QDate& date);

    // The four buttons.
    void PreviousYear();
    void PreviousMonth();
    void NextMonth();
    void NextYear();

    // Grid size and the first month shown (its first day).
    int Columns() const { return m_columns; }
    int Rows() const { return m_rows; }
    QDate FirstMonth() const { return m_firstMonth; }
    QList<CMonthCalendar*> Panels() const { return m_panels; }
    // Columns and rows for a client size (Algorithm of the calendar layout).
    static QSize GridFor(const QSize& client);

    CTrayIcon* Tray() const { return m_tray; }
    // Days holding entries are marked in the panels.
    void RefreshMarks();
    void OnDocumentReplaced();
    // Shows the months again after the first day of the week changed.
    void OnSettingsChanged();
    void FillContextMenu(QMenu& menu);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void Layout();
    void ShowMonths();
    void MoveFirstMonth(int months);
    void OnPanelDate(const QDate& date);
    // Keeps the selected day on screen when the number of panels changes.
    void KeepSelectionVisible();

    CMainFrame& m_frame;
    CDateTime m_selected;
    QDate m_firstMonth;
    int m_columns = 1;
    int m_rows = 1;
    int m_shownCount = 0;
    QList<CMonthCalendar*> m_panels;
    QWidget* m_grid;
    QToolButton* m_buttons[4];
    CTrayIcon* m_tray;
};
