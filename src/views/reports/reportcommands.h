#pragma once

#include <QString>

#include <cstdint>

class CMainFrame;
class CReport;
class CReportSheet;
class CTimeKeeperDoc;
class QWidget;

// The Reports page's commands that use the wizard and the property sheets.

// Adds a copy of `draft` to the document under the next report id, marks the
// document modified and tells the views; answers the new id.
uint32_t AddReportFromDraft(CTimeKeeperDoc& doc, const CReport& draft);

// Runs the report wizard; on Finish adds the definition and, when "View report when
// done" is checked, shows it through the main frame. Answers the new id, 0 when the
// wizard was cancelled.
uint32_t NewReportWithWizard(CMainFrame& frame, QWidget* parent);
// What NewReportWithWizard does once the wizard finished.
uint32_t AddReportFromWizard(CMainFrame& frame, const CReportSheet& sheet);

// Opens the property sheet of the definition's kind; true when OK changed it.
bool EditReportProperties(CMainFrame& frame, uint32_t reportId, QWidget* parent);
