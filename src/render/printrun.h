#pragma once

#include <QByteArray>
#include <QPageSize>
#include <QString>

#include <functional>

class CReport;
class CTimeKeeperApp;
class CTimeKeeperDoc;
class QPagedPaintDevice;

namespace render
{

// Told after each page is painted (1-based) with the page count; returning false
// stops the run after that page.
using PageProgress = std::function<bool(int page, int pageCount)>;

// Which pages to paint, 1-based and inclusive; 0 as the last page means "to the end".
struct PageRange
{
    int first = 1;
    int last = 0;
};

struct PrintResult
{
    int pageCount = 0;    // the report's pages
    int pagesPainted = 0; // of them, the ones painted
    bool cancelled = false;
    bool failed = false;  // the device could not be painted on
};

// The page count of the report on `device` as it would be printed (orientation rule
// included) without painting anything; the device's orientation is left as it was.
int CountPages(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, QPagedPaintDevice& device);

// One print run of the report on a printer or PDF writer that the caller has set up
// (paper, resolution; not in full-page mode): the report's orientation for the run and
// the device's own again after it, the margins from the settings, every page in the
// range.
PrintResult PrintReport(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, QPagedPaintDevice& device,
                        PageRange range = {}, const PageProgress& progress = {});

// The paper where no printer says otherwise: A4, or Letter where the locale measures
// in inches (measurement system 1).
QPageSize DefaultPaper(int measurementSystem);

struct PdfOptions
{
    QPageSize paper;         // invalid: DefaultPaper of the app's locale
    int resolution = 1200;   // device units per inch of the PDF's drawing
    PageProgress progress;
};

struct PdfResult
{
    QByteArray bytes; // the whole PDF document; empty when it failed
    int pages = 0;
    bool cancelled = false;
    QString error;
};

// The report as a PDF document (its fonts embedded), made in memory so that a file
// is only ever written whole.
PdfResult RenderPdf(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, const PdfOptions& options = {});

} // namespace render
