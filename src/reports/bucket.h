#pragma once

#include "model/datetime.h"

#include <cstdint>

namespace reports
{

// One period column of a summary report: the days from its start to its end.
// A default bucket (both dates 0.0) stands for the total column.
class CBucket
{
public:
    CBucket() = default;
    // The period of `timeFrame` that starts on `start`, cut at the report's end;
    // `weekStart` is the "WeekStart" setting (1 Sunday ... 7 Saturday).
    CBucket(uint32_t timeFrame, const CDateTime& start, const CDateTime& reportEnd, int weekStart);

    uint32_t GetTimeFrame() const { return m_timeFrame; }
    const CDateTime& GetStart() const { return m_start; }
    const CDateTime& GetEnd() const { return m_end; }
    bool IsTotal() const { return m_start.GetValue() == 0.0 && m_end.GetValue() == 0.0; }
    bool Contains(const CDateTime& day) const { return m_start <= day && day <= m_end; }

private:
    uint32_t m_timeFrame = 0;
    CDateTime m_start{0.0, CDateTime::valid};
    CDateTime m_end{0.0, CDateTime::valid};
};

} // namespace reports
