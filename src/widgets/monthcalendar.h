#pragma once

#include <QCalendarWidget>
#include <QDate>
#include <QSet>
#include <QWidget>

class QLabel;

// The calendar grid of one month. Days of the neighbouring months are shown faded
// and without the selection mark, so that of several panels only the one whose
// month holds the selected day marks it.
class CMonthGrid : public QCalendarWidget
{
    Q_OBJECT

public:
    explicit CMonthGrid(QWidget* parent = nullptr);

    void SetMonth(int year, int month);
    int Year() const { return m_year; }
    int Month() const { return m_month; }
    void SetMarkedDates(const QSet<QDate>& dates);

protected:
    void paintCell(QPainter* painter, const QRect& rect, QDate date) const override;

private:
    int m_year = 2000;
    int m_month = 1;
    QSet<QDate> m_marked;
};

// One month panel of the time sheet: the month's name over its grid.
class CMonthCalendar : public QWidget
{
    Q_OBJECT

public:
    explicit CMonthCalendar(QWidget* parent = nullptr);

    void SetMonth(int year, int month, const QString& title);
    void SetSelectedDate(const QDate& date);
    void SetFirstDayOfWeek(Qt::DayOfWeek day);
    // Days that hold entries carry a dot.
    void SetMarkedDates(const QSet<QDate>& dates);
    CMonthGrid* Grid() const { return m_grid; }

    // The size one panel needs; the time sheet lays panels out in cells of this size.
    static QSize PanelSize() { return QSize(140, 160); }

signals:
    // A day of this panel's month was chosen (clicked or moved to with the keyboard).
    void DateSelected(const QDate& date);

private:
    QLabel* m_title;
    CMonthGrid* m_grid;
    bool m_settingDate = false;
};
