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
    // Drawn here whole: the cells are too narrow for the default drawing, which
    // shortens two-digit days to an ellipsis.
    const bool inMonth = date.year() == m_year && date.month() == m_month;
    const bool selected = inMonth && date == selectedDate();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->fillRect(rect, palette().color(selected ? QPalette::Highlight : QPalette::Base));
    QColor text = palette().color(QPalette::Text);
    if (!inMonth)
        text = palette().color(QPalette::Disabled, QPalette::Text);
    else if (selected)
        text = palette().color(QPalette::HighlightedText);
    painter->setPen(text);
    painter->drawText(rect, Qt::AlignCenter, QString::number(date.day()));
    if (inMonth && date == QDate::currentDate() && !selected)
    {
        painter->setPen(QPen(palette().color(QPalette::Highlight), 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(QRectF(rect).adjusted(1.5, 1.5, -1.5, -1.5));
    }
    if (inMonth && m_marked.contains(date))
    {
        // A dot under the number for a day that holds entries.
        painter->setPen(Qt::NoPen);
        painter->setBrush(palette().color(selected ? QPalette::HighlightedText : QPalette::Highlight));
        const double radius = std::max(1.2, rect.height() / 12.0);
        painter->drawEllipse(QPointF(rect.center().x() + 0.5, rect.bottom() - radius - 0.5), radius, radius);
    }
    painter->restore();
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
