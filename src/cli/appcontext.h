#pragma once

#include "app/timekeeperapp.h"
#include "platform/clock.h"
#include "platform/settingsstore.h"

#include <memory>
#include <string>

class CTimeKeeperDoc;
class CTask;

namespace cli
{

// The application object as qvx uses it: the user's settings file shared with the
// desktop program, the locale of the environment, and the system clock (or the fixed
// moment of QVX_NOW="YYYY-MM-DD HH:MM[:SS]", for scripts and tests). Inside a program that
// hosts the command (see documenthost.h) it is that program's application object instead.
class AppContext
{
public:
    AppContext();
    ~AppContext();

    CTimeKeeperApp& App() { return *m_app; }
    platform::SettingsStore& Store() { return *m_store; }
    // Gives the document what it needs from the application (rounding, name mode).
    void Attach(CTimeKeeperDoc& doc);
    // Writes the settings back (qvx changes only on-demand keys and the invoice number).
    void SaveStore();

private:
    std::unique_ptr<platform::SettingsStore> m_ownStore;
    std::unique_ptr<platform::Clock> m_clock;
    std::unique_ptr<CTimeKeeperApp> m_ownApp;
    platform::SettingsStore* m_store = nullptr;
    CTimeKeeperApp* m_app = nullptr;
};

// "Acme/Website/Design" (names matched case-insensitively from the top task down; the
// top task's own name may lead) or "#id". Throws CommandError when nothing or more than
// one task matches.
CTask* FindTask(const CTimeKeeperDoc& doc, const std::string& path);
// "YYYY-MM-DD" -> the day at 00:00; throws UsageError naming `what`.
CDateTime ParseDate(const std::string& text, const char* what);
// "HH:MM" (00:00 to 24:00) -> a time of day; throws UsageError naming `what`.
CTinyTime ParseTime(const std::string& text, const char* what);

} // namespace cli
