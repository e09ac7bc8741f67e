#include "widgets/monthcalendar.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QPainter>
#include <QTextCharFormat>
#include <QToolButton>
#include <QVBoxLayout>

CMonthGrid::CMonthGrid(QWidget* parent) : QCalendarWidget(parent)
{
    setNavigationBarVisible(false);
    setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    setHorizontalHeaderFormat(QCalendarWidget::SingleLetterDayNames);
    setGridVisible(false);
    setMinimumSize(1, 1);
    // The cells share whatever room the panel has, however small.
    if (auto* view = findChild<QTableView*>())
    {
        view->horizontalHeader()->setMinimumSectionSize(1);
        view->verticalHeader()->setMinimumSectionSize(1);
        view->setMinimumSize(1, 1);
    }
    QTextCharFormat weekend;
    weekend.setForeground(palette().color(QPalette::Text));
    setWeekdayTextFormat(Qt::Saturday, weekend);
    setWeekdayTextFormat(Qt::Sunday, weekend);
}

void CMonthGrid::SetMonth(int year, int month)
{
    m_year = year;
    m_month = month;
    setCurrentPage(year, month);
    update();
}

void CMonthGrid::SetMarkedDates(const QSet<QDate>& dates)
{
    m_marked = dates;
    updateCells();
}

void CMonthGrid::paintCell(QPainter* painter, const QRect& rect, QDate date) const
{
    const bool inMonth = date.year() == m_year && date.month() == m_month;
    if (!inMonth)
    {
        painter->save();
        painter->fillRect(rect, palette().color(QPalette::Base));
        painter->setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter->drawText(rect, Qt::AlignCenter, QString::number(date.day()));
        painter->restore();
        return;
    }
    if (m_marked.contains(date))
    {
        painter->save();
        QFont bold = painter->font();
        bold.setBold(true);
        painter->setFont(bold);
        QCalendarWidget::paintCell(painter, rect, date);
        painter->restore();
    }
    else
        QCalendarWidget::paintCell(painter, rect, date);
    if (date == QDate::currentDate())
    {
        painter->save();
        painter->setPen(QPen(palette().color(QPalette::Highlight), 1));
        painter->drawRect(rect.adjusted(1, 1, -2, -2));
        painter->restore();
    }
}

CMonthCalendar::CMonthCalendar(QWidget* parent)
    : QWidget(parent), m_title(new QLabel(this)), m_grid(new CMonthGrid(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(1);
    m_title->setAlignment(Qt::AlignCenter);
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    layout->addWidget(m_title);
    layout->addWidget(m_grid, 1);
    QFont small = m_grid->font();
    if (small.pointSizeF() > 8)
        small.setPointSizeF(small.pointSizeF() - 1);
    m_grid->setFont(small);
    setFixedSize(PanelSize());

    auto chosen = [this](QDate date) {
        if (m_settingDate)
            return;
        if (date.year() != m_grid->Year() || date.month() != m_grid->Month())
        {
            // A faded day of a neighbouring month: keep this panel on its own month.
            m_grid->setCurrentPage(m_grid->Year(), m_grid->Month());
        }
        emit DateSelected(date);
    };
    connect(m_grid, &QCalendarWidget::clicked, this, chosen);
    connect(m_grid, &QCalendarWidget::selectionChanged, this,
            [this, chosen] { chosen(m_grid->selectedDate()); });
    connect(m_grid, &QCalendarWidget::currentPageChanged, this, [this](int y, int m) {
        if (y != m_grid->Year() || m != m_grid->Month())
            m_grid->setCurrentPage(m_grid->Year(), m_grid->Month());
    });
}

void CMonthCalendar::SetMonth(int year, int month, const QString& title)
{
    m_title->setText(title);
    m_grid->SetMonth(year, month);
}

void CMonthCalendar::SetSelectedDate(const QDate& date)
{
    m_settingDate = true;
    m_grid->setSelectedDate(date);
    m_grid->setCurrentPage(m_grid->Year(), m_grid->Month());
    m_settingDate = false;
}

void CMonthCalendar::SetFirstDayOfWeek(Qt::DayOfWeek day)
{
    m_grid->setFirstDayOfWeek(day);
}

void CMonthCalendar::SetMarkedDates(const QSet<QDate>& dates)
{
    m_grid->SetMarkedDates(dates);
}
