#include "cli/statusformat.h"

#include "cli/commandsession.h"
#include "model/day.h"

namespace cli
{

StatusFields CurrentStatus(CommandSession& s)
{
    std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
    StatusFields f;
    if (const CTimeEntry* e = s.Timer().GetActiveEntry(); e && s.Timer().IsRunning())
    {
        f.state = "running";
        f.task = s.TaskPath(e->m_taskId);
        f.start = s.App().FormatTime(e->m_start);
        const CTinyElapsedTime elapsed = e->GetElapsed(s.Doc().RunningEnd());
        f.minutes = long(elapsed.TotalMinutes());
        f.elapsed = s.App().GetElapsedText(elapsed);
        f.note = e->m_note;
    }
    else if (s.Timer().IsPaused() && s.Timer().GetPausedTask())
    {
        f.state = "paused";
        f.task = s.TaskPath(s.Timer().GetPausedTask());
    }
    else
        f.state = "inactive";
    return f;
}

std::string FormatStatus(const std::string& format, const StatusFields& f)
{
    std::string out;
    for (size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != '%')
        {
            out += format[i];
            continue;
        }
        const char c = i + 1 < format.size() ? format[++i] : '\0';
        switch (c)
        {
        case 'S':
            out += f.state;
            break;
        case 't':
            out += f.task;
            break;
        case 's':
            out += f.start;
            break;
        case 'e':
            out += f.elapsed;
            break;
        case 'm':
            out += std::to_string(f.minutes);
            break;
        case 'n':
            out += f.note;
            break;
        case '%':
            out += '%';
            break;
        default:
            throw UsageError(std::string("--format knows %S %t %s %e %m %n %%, not '%") +
                             (c ? std::string(1, c) : std::string()) + "'");
        }
    }
    return out;
}

} // namespace cli
