#include "render/printrun.h"

#include "app/timekeeperapp.h"
#include "model/reportdef.h"
#include "render/qtcanvas.h"
#include "reports/reportrunner.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPdfWriter>

#include <algorithm>
#include <memory>

namespace render
{

int CountPages(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, QPagedPaintDevice& device)
{
    const QPageLayout::Orientation saved = device.pageLayout().orientation();
    int pages = 0;
    {
        QtCanvas canvas(device);
        std::unique_ptr<reports::CReportOutput> output = reports::CreateReportOutput(report, doc, app);
        output->PreparePrinting(canvas);
        output->BeginPrinting(canvas);
        pages = output->PageCount(canvas);
        output->EndPrinting(canvas);
    }
    device.setPageOrientation(saved);
    return pages;
}

PrintResult PrintReport(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, QPagedPaintDevice& device,
                        PageRange range, const PageProgress& progress)
{
    PrintResult result;
    QtCanvas canvas(device);
    std::unique_ptr<reports::CReportOutput> output = reports::CreateReportOutput(report, doc, app);
    output->PreparePrinting(canvas);
    output->BeginPrinting(canvas);
    result.pageCount = output->PageCount(canvas);
    const int first = std::max(1, range.first);
    const int last = range.last <= 0 ? result.pageCount : std::min(range.last, result.pageCount);
    for (int page = first; page <= last; ++page)
    {
        canvas.StartPage();
        if (canvas.Failed())
            break;
        output->PrintPage(canvas, page);
        canvas.EndPage();
        ++result.pagesPainted;
        if (progress && !progress(page, result.pageCount))
        {
            result.cancelled = page < last;
            break;
        }
    }
    output->EndPrinting(canvas);
    result.failed = !canvas.Finish();
    return result;
}

QPageSize DefaultPaper(int measurementSystem)
{
    return QPageSize(measurementSystem == 1 ? QPageSize::Letter : QPageSize::A4);
}

PdfResult RenderPdf(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, const PdfOptions& options)
{
    PdfResult result;
    QBuffer buffer(&result.bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setResolution(options.resolution);
        writer.setCreator(QStringLiteral("Quorvane Time & Expense"));
        writer.setTitle(QString::fromStdString(report.m_name));
        // A PDF page has no unprintable edge: the margins of the settings are the only ones.
        writer.setPageLayout(QPageLayout(options.paper.isValid() ? options.paper : DefaultPaper(app.GetMeasurementSystem()),
                                         QPageLayout::Portrait, QMarginsF(0, 0, 0, 0)));
        const PrintResult run = PrintReport(report, doc, app, writer, {}, options.progress);
        result.pages = run.pagesPainted;
        result.cancelled = run.cancelled;
        if (run.failed || run.pagesPainted == 0)
            result.error = QStringLiteral("The PDF could not be made");
    }
    buffer.close();
    if (!result.error.isEmpty() || result.cancelled)
        result.bytes.clear();
    return result;
}

} // namespace render
