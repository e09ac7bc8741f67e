#include "views/timesheetview.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "views/gotodatedlg.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/sheetlistview.h"
#include "views/trayicon.h"
#include "widgets/monthcalendar.h"

#include <QContextMenuEvent>
#include <QLocale>
#include <QMenu>
#include <QResizeEvent>
#include <QSet>
#include <QToolButton>

#include <mutex>

namespace
{

const QDate kFirstDay(1900, 1, 1);
const QDate kLastDay(2300, 12, 31);
const QDate kLastMonth(2300, 12, 1);

int MonthIndex(const QDate& d)
{
    return d.year() * 12 + d.month() - 1;
}

QDate FromMonthIndex(int index)
{
    return QDate(index / 12, index % 12 + 1, 1);
}

} // namespace

CTimeSheetView::CTimeSheetView(CMainFrame& frame, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_grid(new QWidget(this))
{
    setObjectName(QStringLiteral("timeSheetView"));
    const QDate today = ToQDate(m_frame.App().Today());
    m_selected = FromQDate(today.isValid() ? today : QDate::currentDate(), 12, 0);
    m_firstMonth = QDate(SelectedQDate().year(), SelectedQDate().month(), 1);

    const char* names[4] = {"previousYear", "previousMonth", "nextMonth", "nextYear"};
    const QString texts[4] = {QStringLiteral("\u00AB"), QStringLiteral("\u2039"), QStringLiteral("\u203A"),
                              QStringLiteral("\u00BB")};
    const QString tips[4] = {tr("Previous year"), tr("Previous month"), tr("Next month"), tr("Next year")};
    for (int i = 0; i < 4; ++i)
    {
        m_buttons[i] = new QToolButton(this);
        m_buttons[i]->setObjectName(QString::fromLatin1(names[i]));
        m_buttons[i]->setText(texts[i]);
        m_buttons[i]->setToolTip(tips[i]);
        m_buttons[i]->setAutoRaise(true);
        m_buttons[i]->setFixedSize(16, 18);
    }
    connect(m_buttons[0], &QToolButton::clicked, this, &CTimeSheetView::PreviousYear);
    connect(m_buttons[1], &QToolButton::clicked, this, &CTimeSheetView::PreviousMonth);
    connect(m_buttons[2], &QToolButton::clicked, this, &CTimeSheetView::NextMonth);
    connect(m_buttons[3], &QToolButton::clicked, this, &CTimeSheetView::NextYear);

    m_tray = new CTrayIcon(m_frame, this);
    Layout();
}

CTimeSheetView::~CTimeSheetView() = default;

QDate CTimeSheetView::SelectedQDate() const
{
    return ToQDate(m_selected);
}

QSize CTimeSheetView::GridFor(const QSize& client)
{
    return QSize(std::max(1, client.width() / kPanelWidth), std::max(1, (client.height() - 6) / kPanelHeight));
}

void CTimeSheetView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Layout();
}

void CTimeSheetView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_tray->Show();
}

void CTimeSheetView::Layout()
{
    const QSize grid = GridFor(size());
    const int count = grid.width() * grid.height();
    m_columns = grid.width();
    m_rows = grid.height();
    while (m_panels.size() < count)
    {
        auto* panel = new CMonthCalendar(m_grid);
        panel->setObjectName(QStringLiteral("month%1").arg(m_panels.size()));
        connect(panel, &CMonthCalendar::DateSelected, this, &CTimeSheetView::OnPanelDate);
        m_panels.append(panel);
    }
    while (m_panels.size() > count)
        delete m_panels.takeLast();

    // Centred horizontally; the rows start just below the top edge.
    const int gridWidth = m_columns * kPanelWidth;
    const int left = std::max(0, (width() - gridWidth) / 2);
    m_grid->setGeometry(left, 3, gridWidth, m_rows * kPanelHeight);
    for (int i = 0; i < m_panels.size(); ++i)
    {
        m_panels[i]->move((i % m_columns) * kPanelWidth, (i / m_columns) * kPanelHeight);
        m_panels[i]->show();
    }
    // The buttons sit on the title line of the outer panels.
    m_buttons[0]->move(left + 2, 5);
    m_buttons[1]->move(left + 19, 5);
    m_buttons[2]->move(left + gridWidth - 35, 5);
    m_buttons[3]->move(left + gridWidth - 18, 5);
    for (QToolButton* b : m_buttons)
        b->raise();
    KeepSelectionVisible();
    ShowMonths();
}

void CTimeSheetView::KeepSelectionVisible()
{
    // The selected month is shown last, with the months before it, where most of the
    // recorded work lies; a change of the panel count keeps it there.
    const int count = int(m_panels.size());
    const int selected = MonthIndex(SelectedQDate());
    int first = MonthIndex(m_firstMonth);
    if (selected < first || selected >= first + count || count != m_shownCount)
        first = selected - count + 1;
    m_shownCount = count;
    first = std::clamp(first, MonthIndex(kFirstDay), MonthIndex(kLastMonth));
    m_firstMonth = FromMonthIndex(first);
}

void CTimeSheetView::ShowMonths()
{
    const QLocale locale;
    const int weekStart = m_frame.App().GetWeekStart(); // 1 = Sunday ... 7 = Saturday
    const Qt::DayOfWeek firstDay = weekStart == 1 ? Qt::Sunday : Qt::DayOfWeek(weekStart - 1);
    const int first = MonthIndex(m_firstMonth);
    for (int i = 0; i < m_panels.size(); ++i)
    {
        const QDate month = FromMonthIndex(first + i);
        CMonthCalendar* panel = m_panels[i];
        panel->SetFirstDayOfWeek(firstDay);
        panel->SetMonth(month.year(), month.month(),
                        locale.standaloneMonthName(month.month(), QLocale::ShortFormat) + u' ' + QString::number(month.year()));
        panel->SetSelectedDate(SelectedQDate());
        panel->setVisible(month <= kLastMonth);
    }
    m_buttons[0]->setEnabled(m_firstMonth > kFirstDay);
    m_buttons[1]->setEnabled(m_firstMonth > kFirstDay);
    m_buttons[2]->setEnabled(m_firstMonth < kLastMonth);
    m_buttons[3]->setEnabled(MonthIndex(m_firstMonth) + 12 <= MonthIndex(kLastMonth));
    RefreshMarks();
}

void CTimeSheetView::RefreshMarks()
{
    if (m_panels.isEmpty())
        return;
    QSet<QDate> marked;
    const QDate from = m_firstMonth;
    const QDate to = FromMonthIndex(MonthIndex(m_firstMonth) + int(m_panels.size()));
    {
        CTimeKeeperDoc& doc = m_frame.Doc();
        std::lock_guard lock(doc.GetLock());
        auto it = doc.m_days.lower_bound(FromQ(from.toString(QStringLiteral("yyyyMMdd"))));
        const std::string end = FromQ(to.toString(QStringLiteral("yyyyMMdd")));
        for (; it != doc.m_days.end() && it->first < end; ++it)
            if (!it->second->TimeEntries().empty() || !it->second->ExpenseEntries().empty())
                marked.insert(ToQDate(it->second->GetDate()));
    }
    for (CMonthCalendar* panel : m_panels)
        panel->SetMarkedDates(marked);
}

void CTimeSheetView::MoveFirstMonth(int months)
{
    const int first = MonthIndex(m_firstMonth);
    int target = first + months;
    if (target < MonthIndex(kFirstDay))
    {
        // A year back from early in the first year stops at the range start.
        if (first == MonthIndex(kFirstDay))
            return;
        target = MonthIndex(kFirstDay);
    }
    if (target > MonthIndex(kLastMonth))
        return;
    m_firstMonth = FromMonthIndex(target);
    ShowMonths();
    if (!m_panels.isEmpty())
        m_panels.first()->Grid()->setFocus();
}

void CTimeSheetView::PreviousYear()
{
    MoveFirstMonth(-12);
}

void CTimeSheetView::PreviousMonth()
{
    MoveFirstMonth(-1);
}

void CTimeSheetView::NextMonth()
{
    MoveFirstMonth(1);
}

void CTimeSheetView::NextYear()
{
    MoveFirstMonth(12);
}

void CTimeSheetView::OnPanelDate(const QDate& date)
{
    if (!date.isValid() || date == SelectedQDate())
        return;
    SelectDate(date);
}

void CTimeSheetView::SelectDate(const QDate& date)
{
    if (!date.isValid() || date < kFirstDay || date > kLastDay)
        return;
    const QDate previous = SelectedQDate();
    const bool changed = date != previous;
    m_selected = FromQDate(date, 12, 0);
    const QDate before = m_firstMonth;
    KeepSelectionVisible();
    if (before != m_firstMonth)
        ShowMonths();
    else
        for (CMonthCalendar* panel : m_panels)
        {
            // A panel marks the selected day only in its own month, so only the panels of
            // the old and the new day change; the others are not painted again.
            const auto shows = [panel](const QDate& d) {
                return d.year() == panel->Grid()->Year() && d.month() == panel->Grid()->Month();
            };
            if (!changed || shows(date) || shows(previous))
                panel->SetSelectedDate(date);
        }
    if (!changed)
        return;
    if (m_frame.App().GetTaskViewType() == 0)
    {
        m_frame.RefreshStatus();
        if (!m_frame.SheetList()->IsReportsPage())
            m_frame.SheetList()->Refill();
    }
    m_frame.UpdateCommandStates();
}

void CTimeSheetView::GoToToday()
{
    GoToDateValue(ToQDate(m_frame.App().Today()));
}

bool CTimeSheetView::GoToDate()
{
    CGoToDateDlg dialog(m_frame, SelectedQDate(), QString(), this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    GoToDateValue(dialog.Date());
    return true;
}

void CTimeSheetView::GoToDateValue(const QDate& date)
{
    if (!date.isValid() || date < kFirstDay || date > kLastDay)
        return;
    m_selected = FromQDate(date, 12, 0);
    KeepSelectionVisible();
    ShowMonths();
    m_frame.SheetList()->Refill();
    m_frame.RefreshStatus();
    m_frame.UpdateCommandStates();
}

void CTimeSheetView::OnDocumentReplaced()
{
    m_tray->Show();
    RefreshMarks();
}

void CTimeSheetView::OnSettingsChanged()
{
    ShowMonths();
}

void CTimeSheetView::FillContextMenu(QMenu& menu)
{
    QAction* today = menu.addAction(tr("Go to Tod&ay"));
    today->setObjectName(QStringLiteral("goToToday"));
    connect(today, &QAction::triggered, this, &CTimeSheetView::GoToToday);
    QAction* goTo = menu.addAction(tr("Go to Dat&e..."));
    goTo->setObjectName(QStringLiteral("goToDate"));
    connect(goTo, &QAction::triggered, this, &CTimeSheetView::GoToDate);
}

void CTimeSheetView::contextMenuEvent(QContextMenuEvent* event)
{
    if (m_frame.Doc().GetRootTask() == nullptr)
        return;
    QMenu menu(this);
    FillContextMenu(menu);
    const QPoint at = event->reason() == QContextMenuEvent::Mouse ? event->globalPos()
                                                                   : mapToGlobal(rect().center());
    menu.exec(at);
}
