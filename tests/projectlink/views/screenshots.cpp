// Writes pictures of the Projects and Update Project dialogs for the manual:
// qv_projects_screenshot OUTDIR (run with QT_QPA_PLATFORM=offscreen).

#include "testsupport.h"
#include "views/projects/projectdialogs.h"
#include "views/projects/projectsdlg.h"

#include <QApplication>
#include <QTreeWidget>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    auto doc = qvtest::NewDoc();
    const struct
    {
        const char* name;
        const char* path;
        int updated;
    } links[] = {{"Website Relaunch", "/home/pat/Plans/Website Relaunch.xml", 12},
                 {"Audit 2024", "/home/pat/Plans/audit-2024.gan", 0},
                 {"Data Migration", "/srv/projects/migration/plan.xml", 3}};
    for (const auto& l : links)
    {
        auto p = std::make_unique<CProject>();
        p->m_name = l.name;
        p->m_path = l.path;
        if (l.updated)
            p->m_lastUpdated = qvtest::Day(2024, 6, l.updated);
        doc->AddProject(std::move(p));
    }
    platform::ScriptedPrompter prompter;
    CProjectsDlg projects(*doc, prompter, [](const CProject& p) {
        return p.m_lastUpdated.IsValid() ? p.m_lastUpdated.Format("%m/%d/%Y") : std::string();
    });
    projects.List()->topLevelItem(0)->setSelected(true);
    projects.show();
    app.processEvents();
    bool ok = projects.grab().save(out + QStringLiteral("/projects-dialog.png"));

    projectlink::UpdateOptions o;
    o.canUpdateWork = o.canUpdateCost = o.canUpdateWorkEstimates = o.canUpdateCostEstimates = true;
    o.updateWork = o.updateCost = o.includeBilling = o.includeExpenses = true;
    o.from = qvtest::Day(2024, 6, 12);
    o.to = qvtest::Day(2024, 6, 14);
    CUpdateProjectDlg update(o, nullptr, QStringLiteral("MM/dd/yyyy")); // the U.S. locale's picture
    update.show();
    app.processEvents();
    ok = update.grab().save(out + QStringLiteral("/update-project.png")) && ok;
    return ok ? 0 : 1;
}
