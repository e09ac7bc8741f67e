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
        const int lastDay = WeekLastDay(weekStart);
        while (m_end.GetDayOfWeek() != lastDay && m_end < reportEnd)
            m_end = StepDayForward(m_end);
        break;
    }
    default: break;
    }
    if ((timeFrame == CReport::frameYear || timeFrame == CReport::frameMonth) && m_end > reportEnd)
        m_end = reportEnd;
}

} // namespace reports
