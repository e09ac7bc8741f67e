#pragma once

// PDF for the command line, declared without Qt so that qvx compiles the same with
// and without it; a build without Qt links the stand-in that refuses.

#include <string>

class CReport;
class CTimeKeeperApp;
class CTimeKeeperDoc;

namespace render
{

// True when this build can write PDF; else the reason is kNoPdfMessage.
bool PdfAvailable();
inline constexpr const char* kNoPdfMessage =
    "PDF output needs the build with Qt (this qvx was built without it); use --format csv, tab or html";

// The report as a whole PDF document in `pdf`. Without a running Qt application one
// is started on the offscreen platform (no display is needed). Returns false with a
// message in `error` when it cannot be made.
bool ExportPdf(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, std::string& pdf, int& pages,
               std::string& error);

} // namespace render
