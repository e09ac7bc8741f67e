// The Projects dialog and the dialogs of linking and updating, driven offscreen.

#include "platform/prompter.h"
#include "projectlink/projecttexts.h"
#include "testsupport.h"
#include "views/projects/projectdialogs.h"
#include "views/projects/projectsdlg.h"
#include "views/projects/qtprojectlinkui.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QLocale>
#include <QTemporaryDir>
#include <QTimer>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QtTest>

class TestProjectDialogs : public QObject
{
    Q_OBJECT

private slots:
    void ProjectsListSelectionAndDelete();
    void WarningsButtonsStayAtThirds();
    void ParentTaskAndResourceMustBeChosenOrConfirmed();
    void UpdateProjectOffersOnlyWhatIsPossible();
    void PlanFileDialogOffersAllPlanFilesAndTheFileTypePicksTheComponent();
};

void TestProjectDialogs::ProjectsListSelectionAndDelete()
{
    auto doc = qvtest::NewDoc();
    for (const char* name : {"Website Relaunch", "Audit 2024"})
    {
        auto p = std::make_unique<CProject>();
        p->m_name = name;
        p->m_path = std::string("/plans/") + name + ".xml";
        doc->AddProject(std::move(p));
    }
    doc->GetProject(1)->m_lastUpdated = qvtest::Day(2024, 6, 12);
    platform::ScriptedPrompter prompter({platform::Answer::no, platform::Answer::yes});
    CProjectsDlg dialog(*doc, prompter, [](const CProject& p) {
        return p.m_lastUpdated.IsValid() ? p.m_lastUpdated.Format("%m/%d/%Y") : std::string();
    });
    QTreeWidget* list = dialog.List();
    QCOMPARE(list->topLevelItemCount(), 2);
    QCOMPARE(list->headerItem()->text(1), QStringLiteral("Last Updated"));
    QCOMPARE(list->columnWidth(0), 150);
    QCOMPARE(list->columnWidth(2), 225);
    QCOMPARE(list->topLevelItem(0)->text(1), QStringLiteral("06/12/2024"));
    QCOMPARE(list->topLevelItem(1)->text(2), QStringLiteral("/plans/Audit 2024.xml"));
    auto* update = dialog.findChild<QPushButton*>(QStringLiteral("update"));
    auto* del = dialog.findChild<QPushButton*>(QStringLiteral("delete"));
    QVERIFY(!update->isEnabled() && !del->isEnabled());
    list->topLevelItem(1)->setSelected(true);
    QVERIFY(update->isEnabled() && del->isEnabled());

    dialog.OnDelete(); // answered No
    QCOMPARE(doc->m_projects.size(), size_t(2));
    QCOMPARE(QString::fromStdString(prompter.Questions().back()),
             QStringLiteral("Are you sure you want to delete the project - Audit 2024?"));
    dialog.OnDelete(); // answered Yes
    QCOMPARE(doc->m_projects.size(), size_t(1));
    QCOMPARE(list->topLevelItemCount(), 1);
    QVERIFY(!update->isEnabled());
}

void TestProjectDialogs::WarningsButtonsStayAtThirds()
{
    CWarningsDlg dialog({"First warning.", "Second warning."});
    dialog.resize(600, 300);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto* text = dialog.findChild<QPlainTextEdit*>(QStringLiteral("warnings"));
    QCOMPARE(text->toPlainText(), QStringLiteral("First warning.\nSecond warning.\n"));
    auto* cont = dialog.findChild<QPushButton*>(QStringLiteral("continue"));
    auto* cancel = dialog.findChild<QPushButton*>(QStringLiteral("cancel"));
    QVERIFY(qAbs(cont->geometry().center().x() - 200) <= 1);
    QVERIFY(qAbs(cancel->geometry().center().x() - 400) <= 1);
    QVERIFY(cont->geometry().bottom() > 250);
    dialog.resize(900, 400);
    QVERIFY(qAbs(cont->geometry().center().x() - 300) <= 1);
    QVERIFY(qAbs(cancel->geometry().center().x() - 600) <= 1);
}

void TestProjectDialogs::ParentTaskAndResourceMustBeChosenOrConfirmed()
{
    auto doc = qvtest::NewDoc();
    platform::ScriptedPrompter prompter({platform::Answer::no});
    CSelectParentTaskDlg parent(*doc, prompter);
    parent.show();
    auto* tree = parent.findChild<QTreeWidget*>(QStringLiteral("parentTasks"));
    tree->clearSelection();
    parent.accept();
    QVERIFY(parent.isVisible());
    QCOMPARE(QString::fromStdString(prompter.Messages().back()), QStringLiteral("Select a task."));
    tree->topLevelItem(0)->setSelected(true);
    tree->setCurrentItem(tree->topLevelItem(0));
    parent.accept();
    QCOMPARE(parent.result(), int(QDialog::Accepted));
    QCOMPARE(parent.ChosenTaskId(), uint32_t(1));

    CSelectResourceDlg resource({"Pat", "Lee"}, prompter);
    resource.show();
    resource.accept(); // none selected: 40023 answered No keeps it open
    QVERIFY(resource.isVisible());
    QVERIFY(QString::fromStdString(prompter.Questions().back()).startsWith(QStringLiteral("No resource is selected.")));
    auto* list = resource.findChild<QListWidget*>(QStringLiteral("resources"));
    list->setCurrentRow(1);
    resource.accept();
    QCOMPARE(resource.Chosen(), 1);
}

void TestProjectDialogs::UpdateProjectOffersOnlyWhatIsPossible()
{
    projectlink::UpdateOptions o;
    o.canUpdateWork = o.canUpdateCost = true;
    o.updateWork = o.updateCost = o.includeBilling = o.includeExpenses = true;
    o.updateWorkEstimates = true; // not possible: must come out unchecked
    o.from = qvtest::Day(2024, 6, 10);
    o.to = qvtest::Day(2024, 6, 12);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); // short dates "M/d/yy"
    CUpdateProjectDlg dialog(o);
    auto box = [&](const char* name) { return dialog.findChild<QCheckBox*>(QString::fromLatin1(name)); };
    QVERIFY(!box("updateWorkEstimates")->isEnabled() && !box("updateWorkEstimates")->isChecked());
    QVERIFY(box("updateWork")->isChecked());
    QVERIFY(box("includeBilling")->isEnabled());
    box("updateCost")->setChecked(false);
    QVERIFY(!box("includeBilling")->isEnabled() && !box("includeExpenses")->isEnabled());
    projectlink::UpdateOptions chosen = dialog.Options();
    QVERIFY(!chosen.updateCost && !chosen.includeBilling && !chosen.updateWorkEstimates);
    QVERIFY(chosen.from == qvtest::Day(2024, 6, 10));
    QVERIFY(chosen.to == qvtest::Day(2024, 6, 12));
    QVERIFY(dialog.findChild<QDateEdit*>(QStringLiteral("from"))->text().endsWith(QStringLiteral("2024")));

    projectlink::UpdateOptions readOnly;
    readOnly.from = readOnly.to = qvtest::Day(2024, 6, 12);
    CUpdateProjectDlg none(readOnly);
    QVERIFY(!none.findChild<QDateEdit*>(QStringLiteral("from"))->isEnabled());
}

void TestProjectDialogs::PlanFileDialogOffersAllPlanFilesAndTheFileTypePicksTheComponent()
{
    QTemporaryDir dir;
    auto doc = qvtest::NewDoc();
    platform::ScriptedPrompter prompter;
    CQtProjectLinkUi ui(*doc, prompter, nullptr, dir.path());
    const std::vector<projectlink::CComponentInfo> components{
        {"Gantt", "", "GanttProject|*.gan"}, {"Xml", "", "Project XML|*.xml;*.mspdi"}, {"Other", "", "Other|*.xml"}};
    // The file, the filter chosen (0: all plan files) and the component that reads it.
    const std::vector<std::tuple<QString, int, std::string>> cases{
        {"Rollout.xml", 1, "Xml"}, {"House.gan", 0, "Gantt"}, {"Rollout.xml", 3, "Other"}, {"Notes.txt", 2, "Xml"}};
    QStringList offered;
    for (const auto& [file, filter, expected] : cases)
    {
        QFile(dir.filePath(file)).open(QIODevice::WriteOnly);
        QTimer::singleShot(0, [&, file = file, filter = filter] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            offered = dialog->nameFilters() << dialog->directory().absolutePath();
            dialog->selectNameFilter(offered.value(filter));
            dialog->selectFile(dir.filePath(file));
            QMetaObject::invokeMethod(dialog, "accept");
        });
        std::string path, progId;
        QVERIFY(ui.ChooseProjectFile(components, std::string(), path, progId));
        QCOMPARE(progId, expected);
    }
    QCOMPARE(offered.first(), QStringLiteral("All plan files (*.gan *.xml *.mspdi)"));
    QCOMPARE(offered.last(), QDir(dir.path()).absolutePath());
}

QTEST_MAIN(TestProjectDialogs)
#include "tst_projectdialogs.moc"
