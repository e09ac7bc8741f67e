#pragma once

#include "reports/fixedmetricscanvas.h"
#include "reports/reportoutput.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CReport;
class CTimeKeeperDoc;
class CTimeKeeperApp;

namespace platform
{
class Prompter;
}

namespace reports
{

// The output class of the report's kind; the frame itself for a kind it does not know.
std::unique_ptr<CReportOutput> CreateReportOutput(CReport& report, CTimeKeeperDoc& doc,
                                                  CTimeKeeperApp& app);

// "csv", "tab", "html" (or "htm") to an export format.
std::optional<int> ParseExportFormat(std::string_view text);
// The usual file extension of a format, without the dot: "csv", "htm", "tab".
std::string ExportExtension(int format);
// The proposed file name: the report name up to its first "/".
std::string DefaultExportFileName(const CReport& report);

// The whole export text of a report in a format (lines end with CR LF).
// Messages of the export ("Export Unavailable") go to `prompter` when given.
std::string ExportReport(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, int format,
                         platform::Prompter* prompter = nullptr);
// Exports into a file, creating or replacing it only once the whole text is made.
// Returns false with a message naming the file when it cannot be written.
bool ExportReportToFile(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, int format,
                        const std::string& path, std::string* error,
                        platform::Prompter* prompter = nullptr);

// Prints every page of the report on the canvas; returns the page count.
int PrintReport(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, Canvas& canvas);
// The report's pages as plain text, laid out on a fixed-metrics canvas.
std::vector<std::vector<std::string>> RenderTextPages(CReport& report, CTimeKeeperDoc& doc,
                                                      CTimeKeeperApp& app,
                                                      const FixedMetricsCanvas::Options& options = {});

} // namespace reports
