// qvx command lines run inside a program that keeps the document open (the desktop program's
// D-Bus Run), without the bus: the same dispatch, on the open document.

#include "qvxrunner.h"

#include "app/timekeeperapp.h"
#include "cli/appcontext.h"
#include "cli/dispatch.h"
#include "cli/documenthost.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "support/testsupport.h"
#include "timekeeping/timer.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

using qvtest::HasTask;
using qvtest::Json;
using qvtest::QvxTest;

namespace
{

class CountingTimerUi : public TimerUi
{
public:
    int EditTimeEntry(CDay&, CTimeEntry&) override { return 2; }
    int ChooseConflictResolution() override { return 2; }
    void ShowTimerState(TimerIcon icon, const std::string&) override { last = icon; }
    void ShowEntryChanges(const std::string&) override {}
    TimerIcon last = TimerIcon::running;
};

struct Output
{
    int status = -1;
    std::string out;
    std::string err;
};

class DocumentHostTest : public QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        Ok({"new", "doc.qvx", "--employee", "Pat Doe"});
        Ok({"task", "add", "doc.qvx", "#1", "Acme"});
        ASSERT_TRUE(m_doc.OnOpenDocument(Path("doc.qvx"), m_prompter));
        ASSERT_FALSE(m_doc.IsReadOnly());
        m_app.LoadSettings();
        m_doc.m_roundedNow = [this] { return m_app.RoundTime(m_app.Now()); };
        m_timer = std::make_unique<CTimer>(m_doc, m_app, m_ui, m_prompter);
    }

    void TearDown() override
    {
        m_timer.reset();
        m_doc.CloseHeldFile();
    }

    Output Host(const std::vector<std::string>& words)
    {
        cli::DocumentHost host{m_doc, m_app, cli::CanonicalPath(Path("doc.qvx"))};
        cli::HostScope scope(host);
        std::ostringstream out, err;
        std::streambuf* oldOut = std::cout.rdbuf(out.rdbuf());
        std::streambuf* oldErr = std::cerr.rdbuf(err.rdbuf());
        Output o;
        o.status = cli::RunCommandLine(cli::ParseCommandLine(words));
        std::cout.rdbuf(oldOut);
        std::cerr.rdbuf(oldErr);
        o.out = out.str();
        o.err = err.str();
        return o;
    }

    platform::ScriptedPrompter m_prompter;
    platform::SettingsStore m_store;
    platform::FixedClock m_clock{platform::LocalTime{2024, 6, 11, 9, 0, 0}};
    CTimeKeeperApp m_app{m_store, m_clock, platform::LocaleInfo::UnitedStates()};
    CountingTimerUi m_ui;
    CTimeKeeperDoc m_doc;
    std::unique_ptr<CTimer> m_timer;
};

TEST_F(DocumentHostTest, ReadsSeeTheOpenDocumentAndChangesAreSaved)
{
    qvtest::AddTask(m_doc, m_doc.GetRootTask(), "Unsaved");
    Output o = Host({"dump", "--json", Path("doc.qvx")});
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_TRUE(HasTask(Json::parse(o.out), "Unsaved"));
    EXPECT_FALSE(HasTask(DumpJson("doc.qvx"), "Unsaved")) << "not saved yet";

    // The command runs on the open document with the host's clock, and saves it.
    o = Host({"start", Path("doc.qvx"), "Acme"});
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "Started Acme at 9:00 AM; activity: none; note: none\n");
    EXPECT_TRUE(m_timer->IsRunning());
    const Json saved = DumpJson("doc.qvx");
    EXPECT_TRUE(HasTask(saved, "Unsaved"));
    EXPECT_FALSE(m_doc.IsModified());

    // The host's timer is the document's listener again after the command's own went: the
    // running entry deleted elsewhere shows the timer inactive.
    ASSERT_NE(m_doc.m_activeEntry, nullptr);
    m_doc.UnfileTimeEntry(m_doc.m_activeEntry);
    EXPECT_EQ(m_ui.last, TimerIcon::inactive);
}

TEST_F(DocumentHostTest, PauseStaysWithTheHostAndQuestionsNeedAnAnswer)
{
    ASSERT_EQ(Host({"start", Path("doc.qvx"), "Acme"}).status, 0);
    m_clock.Set(platform::LocalTime{2024, 6, 11, 9, 30, 0});
    Output o = Host({"pause", Path("doc.qvx")});
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_TRUE(m_timer->IsPaused());
    // Saved like any pause, so that it outlasts the host.
    EXPECT_EQ(m_store.GetString(CTimer::kPausedSection, CTimer::PausedStateKey(Path("doc.qvx")), ""),
              std::to_string(cli::FindTask(m_doc, "Acme")->m_id));

    o = Host({"task", "rm", Path("doc.qvx"), "Acme"});
    EXPECT_EQ(o.status, 1);
    EXPECT_NE(o.err.find("run again with --yes or --no"), std::string::npos) << o.err;
    EXPECT_NE(cli::FindTask(m_doc, "Acme"), nullptr);

    o = Host({"task", "rm", Path("doc.qvx"), "Acme", "--yes", "--delete-entries"});
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_THROW(cli::FindTask(m_doc, "Acme"), cli::CommandError);
}

TEST_F(DocumentHostTest, OtherFilesAreOpenedAsUsual)
{
    Ok({"new", "other.qvx", "--employee", "Sam Roe"});
    Output o = Host({"task", "add", Path("other.qvx"), "#1", "Beta"});
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_TRUE(HasTask(DumpJson("other.qvx"), "Beta"));
    EXPECT_EQ(m_doc.m_tasks.size(), 2u) << "the open document is not touched";

    // A copy of the open document is written elsewhere; the open one keeps its own file.
    o = Host({"convert", Path("doc.qvx"), Path("copy.qvx")});
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_TRUE(HasTask(DumpJson("copy.qvx"), "Acme"));
    EXPECT_EQ(cli::CanonicalPath(m_doc.GetPathName()), cli::CanonicalPath(Path("doc.qvx")));
}

} // namespace
