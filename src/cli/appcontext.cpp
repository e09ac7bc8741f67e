#include "cli/appcontext.h"

#include "cli/cliargs.h"
#include "cli/documenthost.h"
#include "model/timekeeperdoc.h"
#include "platform/locale.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace cli
{

namespace
{
bool ParseFixedNow(const char* text, platform::LocalTime& t)
{
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    const int n = std::sscanf(text, "%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &s);
    if (n < 5)
        return false;
    if (!CDateTime::FromDate(y, mo, d, h, mi, s).IsValid())
        return false;
    t = platform::LocalTime{y, mo, d, h, mi, s};
    return true;
}

std::string Lower(std::string s)
{
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}
} // namespace

AppContext::AppContext()
{
    if (DocumentHost* host = CurrentHost())
    {
        m_app = &host->app;
        m_store = &host->app.GetStore();
        return;
    }
    m_ownStore = std::make_unique<platform::SettingsStore>(platform::SettingsStore::DefaultPath());
    m_store = m_ownStore.get();
    std::string warning;
    if (!m_store->Load(&warning) && !warning.empty())
        std::cerr << "qvx: " << warning << "\n";

    platform::LocalTime fixed;
    const char* now = std::getenv("QVX_NOW");
    if (now && *now)
    {
        if (!ParseFixedNow(now, fixed))
            throw UsageError("QVX_NOW must read YYYY-MM-DD HH:MM[:SS], not '" + std::string(now) +
                             "'");
        m_clock = std::make_unique<platform::FixedClock>(fixed);
    }
    else
        m_clock = std::make_unique<platform::SystemClock>();

    m_ownApp = std::make_unique<CTimeKeeperApp>(*m_store, *m_clock,
                                                platform::LocaleInfo::FromEnvironment());
    m_app = m_ownApp.get();
    m_app->LoadSettings();
}

AppContext::~AppContext() = default;

void AppContext::Attach(CTimeKeeperDoc& doc)
{
    // The host's own document is attached to its application already.
    if (DocumentHost* host = CurrentHost(); host && &host->doc == &doc)
        return;
    doc.m_fullTaskNames = m_app->GetListType() == 1;
    CTimeKeeperApp* app = m_app;
    doc.m_roundedNow = [app] { return app->RoundTime(app->Now()); };
    doc.m_now = [app] { return app->Now(); };
}

void AppContext::SaveStore()
{
    std::string error;
    if (!m_store->Save(&error))
        std::cerr << "qvx: settings not saved: " << error << "\n";
}

CTask* FindTask(const CTimeKeeperDoc& doc, const std::string& path)
{
    if (!path.empty() && path[0] == '#')
    {
        const int id = ParseInt(path.substr(1), "task id");
        CTask* task = id > 0 ? doc.GetTask(uint32_t(id)) : nullptr;
        if (!task)
            throw CommandError("there is no task #" + path.substr(1));
        return task;
    }
    CTask* root = doc.GetRootTask();
    if (!root)
        throw CommandError("the document has no tasks");

    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= path.size())
    {
        const size_t slash = path.find('/', start);
        const std::string part =
            path.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        if (!part.empty())
            parts.push_back(Lower(part));
        if (slash == std::string::npos)
            break;
        start = slash + 1;
    }
    if (parts.empty())
        return root;

    CTask* at = root;
    size_t i = 0;
    // The top task's name may lead the path, unless a task below it has the same name.
    bool childMatchesFirst = false;
    for (const CTask* child : root->m_children)
        childMatchesFirst = childMatchesFirst || Lower(child->m_name) == parts[0];
    if (!childMatchesFirst && Lower(root->m_name) == parts[0])
        i = 1;

    for (; i < parts.size(); ++i)
    {
        CTask* found = nullptr;
        int matches = 0;
        for (CTask* child : at->m_children)
            if (Lower(child->m_name) == parts[i])
            {
                found = child;
                ++matches;
            }
        if (matches == 0)
            throw CommandError("no task '" + path + "': nothing named '" + parts[i] + "' under '" +
                               at->m_name + "'");
        if (matches > 1)
            throw CommandError("task '" + path + "' is ambiguous: several tasks named '" +
                               parts[i] + "' under '" + at->m_name + "' (use #id)");
        at = found;
    }
    return at;
}

CDateTime ParseDate(const std::string& text, const char* what)
{
    int y = 0, m = 0, d = 0;
    char extra = 0;
    if (text.size() != 10 || std::sscanf(text.c_str(), "%4d-%2d-%2d%c", &y, &m, &d, &extra) != 3)
        throw UsageError(std::string(what) + " must read YYYY-MM-DD, not '" + text + "'");
    const CDateTime date = CDateTime::FromDate(y, m, d);
    if (!date.IsValid() || y < 1900 || y > 2300)
        throw UsageError(std::string(what) + " '" + text +
                         "' is not a date between 1900-01-01 and 2300-12-31");
    return date;
}

CTinyTime ParseTime(const std::string& text, const char* what)
{
    int h = -1, m = -1;
    char extra = 0;
    if (text.size() < 4 || text.size() > 5 ||
        std::sscanf(text.c_str(), "%2d:%2d%c", &h, &m, &extra) != 2 || h < 0 || m < 0 || m > 59 ||
        h > 24 || (h == 24 && m != 0))
        throw UsageError(std::string(what) + " must read HH:MM (00:00 to 24:00), not '" + text +
                         "'");
    return CTinyTime(h, m);
}

} // namespace cli
