// What every import fuzz target checks once a reader has read its input: the plan over a
// document with a small tree, applied in one step, leaves a document that saves and loads
// to the same bytes; every entry filed lies inside its day; and, where nothing overlapped,
// a second plan of the same source makes nothing new.

#pragma once

#include "app/timekeeperapp.h"
#include "interchange/importapply.h"
#include "interchange/importplanner.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "timekeeping/timer.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzzcheck
{

inline void Check(bool condition, const char* what, const std::string& detail = std::string())
{
    if (condition)
        return;
    std::fprintf(stderr, "import fuzz: %s%s%s\n", what, detail.empty() ? "" : ": ", detail.c_str());
    std::abort();
}

class QuietPrompter : public platform::Prompter
{
public:
    void ShowMessage(const std::string&, platform::Icon) override {}
    platform::Answer AskYesNo(const std::string&, platform::Icon) override { return platform::Answer::yes; }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override { return platform::Answer::yes; }
};

class QuietTimerUi : public TimerUi
{
public:
    int EditTimeEntry(CDay&, CTimeEntry&) override { return 1; }
    int ChooseConflictResolution() override { return 0; }
    void ShowTimerState(TimerIcon, const std::string&) override {}
};

// The moment every target takes for "now" (a Wednesday afternoon).
inline platform::LocalTime Now() { return {2024, 6, 12, 15, 0, 0}; }

// Fixed settings, so that no run reads or writes the user's file.
inline platform::SettingsStore& Store()
{
    static platform::SettingsStore store;
    return store;
}

inline void PlanAndApply(const interchange::ImportSource& source, bool openStart, bool adjustThis)
{
    platform::FixedClock clock(Now());
    CTimeKeeperApp app(Store(), clock, platform::LocaleInfo::UnitedStates());
    CTimeKeeperDoc doc;
    doc.NewDocument("Pat");
    CTask* acme = doc.AddTask(doc.GetRootTask(), 1);
    doc.RenameTask(acme, "Acme");
    QuietTimerUi ui;
    QuietPrompter prompter;
    CTimer timer(doc, app, ui, prompter);

    interchange::ImportOptions options;
    options.openStart = openStart;
    options.now = app.Now();
    const interchange::CImportPlan plan = interchange::PlanImport(doc, source, options);
    for (const auto& t : plan.Times())
        Check(t.start.IsValid() && t.start.MinutesOfDay() < 1440 &&
                  (t.end.IsNull() || (t.end.IsValid() && t.start.MinutesOfDay() < t.end.MinutesOfDay() &&
                                      t.end.MinutesOfDay() <= 1440)),
              "a planned entry does not lie inside its day", t.where);
    interchange::ApplyImport(doc, timer, plan,
                             adjustThis ? interchange::OverlapChoice::adjustThis
                                        : interchange::OverlapChoice::adjustOthers);

    const std::vector<uint8_t> saved = doc.SaveToBytes();
    CTimeKeeperDoc again;
    const LoadResult reread = again.LoadFromBytes(saved.data(), saved.size(), prompter);
    Check(reread.status == LoadResult::loaded, "the imported document does not load", reread.error);
    Check(again.SaveToBytes() == saved, "the imported document does not save to the same bytes");

    if (plan.OverlapCount() == 0 && !openStart)
    {
        const interchange::CImportPlan second = interchange::PlanImport(doc, source, options);
        Check(second.Times().empty() && second.ToDos().empty() && second.Tasks().empty(),
              "a second import of the same source makes something new");
    }
}

} // namespace fuzzcheck
