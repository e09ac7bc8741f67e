#include "views/reports/reportcommands.h"

#include "model/timekeeperdoc.h"
#include "reports/reportrunner.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/reports/reportproperties.h"
#include "views/reports/reportsheet.h"


#include <mutex>

uint32_t AddReportFromDraft(CTimeKeeperDoc& doc, const CReport& draft)
{
    uint32_t id = 0;
    {
        std::lock_guard lock(doc.GetLock());
        CReport* report = doc.AddReport(CReport::Kind(draft.m_kind));
        id = report->m_id;
        *report = draft;
        report->m_id = id;
        doc.SetModifiedFlag(true);
    }
    doc.UpdateAllViews(hintReports);
    return id;
}

uint32_t AddReportFromWizard(CMainFrame& frame, const CReportSheet& sheet)
{
    std::unique_ptr<CReport> draft = sheet.MakeReport();
    if (!draft)
        return 0;
    const uint32_t id = AddReportFromDraft(frame.Doc(), *draft);
    if (sheet.ViewWhenDone())
        frame.ViewReport(id);
    return id;
}

uint32_t NewReportWithWizard(CMainFrame& frame, QWidget* parent)
{
    CReportSheet sheet(frame, parent);
    if (sheet.exec() != QDialog::Accepted)
        return 0;
    return AddReportFromWizard(frame, sheet);
}

bool EditReportProperties(CMainFrame& frame, uint32_t reportId, QWidget* parent)
{
    CReport* report = frame.Doc().GetReport(reportId);
    if (report == nullptr)
        return false;
    std::unique_ptr<CReportProperties> sheet = CreateReportProperties(frame, *report, parent);
    return sheet && sheet->exec() == QDialog::Accepted;
}
