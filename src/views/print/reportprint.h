#pragma once

// Printing, print preview, page setup and PDF of the saved reports in the desktop
// program. Reports are named by id and looked up when the command runs.

#include <QString>

#include <cstdint>

class CTimeKeeperApp;
class CTimeKeeperDoc;
class QPrinter;
class QPrintPreviewDialog;
class QWidget;

namespace platform
{
class Prompter;
}

namespace print
{

// The program's printer settings, kept for the session as a printer's defaults are:
// the chosen printer, its paper (the default printer's, else A4, or Letter where the
// locale measures in inches) and its copies. Page Setup changes the paper.
QPrinter& SharedPrinter(CTimeKeeperApp& app);

// Print: the print dialog with the report's pages as its range, then the run. An
// invoice is numbered first, as printing always does. Returns false when nothing
// was printed (cancelled, an unknown report, a failed device).
bool PrintReport(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app, platform::Prompter& prompter,
                 uint32_t reportId);

// Print Preview of the report, modal. Anything that has the document and a report
// id can open it (the report wizard's "View report when done" too).
void PreviewReport(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app, uint32_t reportId);

// The preview dialog itself, not yet shown (nullptr for an unknown report): the
// printer is set to the report's orientation until the dialog is destroyed.
QPrintPreviewDialog* CreatePreviewDialog(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app,
                                         uint32_t reportId);

// File > Page Setup...: the paper and the four margin settings. Returns true when
// the user accepted a change.
bool PageSetup(QWidget* parent, CTimeKeeperApp& app);

// Writes the report as PDF to `path` (whole or not at all), numbering an invoice
// first. Shows progress past a second; false with `error` set (empty when the user
// cancelled).
bool ExportReportPdf(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app, platform::Prompter& prompter,
                     uint32_t reportId, const QString& path, QString* error);

} // namespace print
