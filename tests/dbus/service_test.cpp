// The document's bus object without a bus: its Run, Status and properties on an open document.

#include "app/timekeeperapp.h"
#include "cli/documenthost.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "platform/scratchdir.h"
#include "platform/settingsstore.h"
#include "support/testsupport.h"
#include "timekeeping/timer.h"
#include "views/dbus/documentservice.h"

#include <QApplication>
#include <QDialog>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace
{

class NullTimerUi : public TimerUi
{
public:
    int EditTimeEntry(CDay&, CTimeEntry&) override { return 2; }
    int ChooseConflictResolution() override { return 2; }
    void ShowTimerState(TimerIcon, const std::string&) override {}
    void ShowEntryChanges(const std::string&) override {}
};

class DocumentServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(m_dir.empty());
        m_path = m_dir + "/doc.qvx";
        auto doc = qvtest::NewDoc("Pat Doe");
        CTask* acme = qvtest::AddTask(*doc, doc->GetRootTask(), "Acme");
        qvtest::AddTask(*doc, acme, "Website");
        ASSERT_TRUE(doc->OnSaveDocument(m_path, m_prompter));
        doc.reset();
        ASSERT_TRUE(m_doc.OnOpenDocument(m_path, m_prompter));
        m_app.LoadSettings();
        m_doc.m_roundedNow = [this] { return m_app.RoundTime(m_app.Now()); };
        m_timer = std::make_unique<CTimer>(m_doc, m_app, m_ui, m_prompter);
        m_service = std::make_unique<CDocumentService>(m_doc, m_app, cli::CanonicalPath(m_path),
                                                       [this] { ++m_afterRuns; });
    }

    void TearDown() override
    {
        m_service.reset();
        m_timer.reset();
        m_doc.CloseHeldFile();
    }

    int Run(const QStringList& argv, QByteArray& out, QByteArray& err)
    {
        return m_service->RunCommandLine(argv, QString::fromStdString(m_dir), out, err);
    }

    ScratchDir m_scratch;
    const std::string m_dir = m_scratch.Path();
    std::string m_path;
    platform::ScriptedPrompter m_prompter;
    platform::SettingsStore m_store;
    platform::FixedClock m_clock{platform::LocalTime{2024, 6, 11, 9, 0, 0}};
    CTimeKeeperApp m_app{m_store, m_clock, platform::LocaleInfo::UnitedStates()};
    NullTimerUi m_ui;
    CTimeKeeperDoc m_doc;
    std::unique_ptr<CTimer> m_timer;
    std::unique_ptr<CDocumentService> m_service;
    int m_afterRuns = 0;
};

TEST_F(DocumentServiceTest, TimerStateFollowsTheCommands)
{
    QSignalSpy changed(m_service.get(), &CDocumentService::TimerChanged);
    QByteArray out, err;
    ASSERT_EQ(Run({"start", "doc.qvx", "Acme/Website"}, out, err), 0) << err.toStdString();
    EXPECT_EQ(out, QByteArray("Started Acme/Website at 9:00 AM; activity: none; note: none\n"));
    EXPECT_TRUE(err.isEmpty());
    EXPECT_EQ(m_afterRuns, 1);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toString(), QStringLiteral("running"));
    EXPECT_EQ(changed.at(0).at(1).toString(), QStringLiteral("Acme/Website"));
    EXPECT_EQ(changed.at(0).at(2).toString(), QStringLiteral("2024-06-11T09:00"));

    m_clock.Set(platform::LocalTime{2024, 6, 11, 10, 30, 0});
    QString task, start, elapsedText;
    uint minutes = 0;
    EXPECT_EQ(m_service->Status(task, start, minutes, elapsedText), QStringLiteral("running"));
    EXPECT_EQ(task, QStringLiteral("Acme/Website"));
    EXPECT_EQ(start, QStringLiteral("2024-06-11T09:00"));
    EXPECT_EQ(minutes, 90u);
    EXPECT_EQ(elapsedText, QStringLiteral("1:30"));
    EXPECT_EQ(m_service->ElapsedMinutes(), 90u);

    ASSERT_EQ(Run({"pause", "doc.qvx"}, out, err), 0) << err.toStdString();
    EXPECT_EQ(m_service->State(), QStringLiteral("paused"));
    EXPECT_TRUE(m_service->Paused());
    EXPECT_EQ(m_service->Task(), QStringLiteral("Acme/Website"));
    EXPECT_TRUE(m_service->Start().isEmpty());
    EXPECT_EQ(m_service->ElapsedMinutes(), 0u);
    ASSERT_EQ(changed.count(), 2);

    // A command that leaves the timer as it was tells nobody.
    ASSERT_EQ(Run({"tasks", "doc.qvx"}, out, err), 0);
    EXPECT_EQ(changed.count(), 2);

    // A change made by the program itself is told too, once it has reported.
    ASSERT_EQ(m_timer->PauseResumeTimer(), 1);
    QCoreApplication::processEvents();
    ASSERT_EQ(changed.count(), 3);
    EXPECT_EQ(changed.at(2).at(0).toString(), QStringLiteral("running"));
}

TEST_F(DocumentServiceTest, NothingRunsWhileADialogWaits)
{
    QByteArray out, err;
    int status = -1;
    QDialog dialog;
    dialog.setModal(true);
    QTimer::singleShot(0, &dialog,
                       [&]
                       {
                           status = Run({"start", "doc.qvx", "Acme"}, out, err);
                           dialog.reject();
                       });
    dialog.exec();
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(err.contains("waiting for an answer in a dialog")) << err.toStdString();
    EXPECT_EQ(m_service->State(), QStringLiteral("inactive"));
    EXPECT_EQ(m_afterRuns, 0);

    ASSERT_EQ(Run({"start", "doc.qvx", "Acme"}, out, err), 0) << err.toStdString();
    EXPECT_EQ(m_service->State(), QStringLiteral("running"));
}

TEST_F(DocumentServiceTest, OutputAndWorkingDirectoryBelongToTheCaller)
{
    char before[4096];
    ASSERT_NE(::getcwd(before, sizeof before), nullptr);
    QByteArray out, err;
    ASSERT_EQ(
        Run({"report", "new", "doc.qvx", "--kind", "time-detail", "--name", "Week"}, out, err), 0)
        << err.toStdString();
    ASSERT_EQ(Run({"report", "export", "doc.qvx", "Week", "--format", "csv", "--out", "week.csv"},
                  out, err),
              0)
        << err.toStdString();
    EXPECT_TRUE(std::filesystem::exists(m_dir + "/week.csv")) << "relative to the caller's folder";
    char after[4096];
    ASSERT_NE(::getcwd(after, sizeof after), nullptr);
    EXPECT_STREQ(after, before) << "the program's own folder is back";

    // Errors keep qvx's statuses and lines; the streams work again afterwards.
    EXPECT_EQ(Run({"entries", "doc.qvx", "--date", "tomorrow"}, out, err), 2);
    EXPECT_TRUE(err.startsWith("qvx entries: ")) << err.toStdString();
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(Run({"tasks", "missing.qvx"}, out, err), 1);
    EXPECT_TRUE(err.contains("missing.qvx")) << err.toStdString();
    ASSERT_EQ(Run({"tasks", "doc.qvx"}, out, err), 0);
    EXPECT_TRUE(out.contains("Website"));
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
