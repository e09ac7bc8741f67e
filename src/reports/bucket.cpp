#include "reports/bucket.h"

#include "model/reportdef.h"
#include "reports/daterange.h"

namespace reports
{

CBucket::CBucket(uint32_t timeFrame, const CDateTime& start, const CDateTime& reportEnd, int weekStart)
    : m_timeFrame(timeFrame), m_start(start), m_end(start)
{
    switch (timeFrame)
    {
    case CReport::frameTotal: m_end = reportEnd; break;
    case CReport::frameYear:
        m_end = StepDayBack(CDateTime::FromDate(start.GetYear() + 1, 1, 1));
        break;
    case CReport::frameMonth:
        m_end = CDateTime::FromDate(start.GetYear(), start.GetMonth(),
                                    DaysInMonth(start.GetYear(), start.GetMonth()));
        break;
    case CReport::frameWeek:
    {
        // Forward day by day to the week's last day, but not past the report's end.
        int days = (WeekLastDay(weekStart) - m_end.GetDayOfWeek() + 7) % 7;
        const double room = reportEnd.GetValue() - m_end.GetValue();
        if (room < days)
            days = room > 0 ? static_cast<int>(room) : 0;
        m_end = m_end.AddDays(days);
        break;
    }
    default: break;
    }
    if ((timeFrame == CReport::frameYear || timeFrame == CReport::frameMonth) && m_end > reportEnd)
        m_end = reportEnd;
}

} // namespace reports
