#include "views/print/reportprint.h"

#include "app/timekeeperapp.h"
#include "model/reportdef.h"
#include "model/timekeeperdoc.h"
#include "render/printrun.h"
#include "reports/canvas.h"
#include "reports/invoiceoutput.h"
#include "views/print/pagesetupdlg.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPageLayout>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressDialog>
#include <QSaveFile>

#include <memory>
#include <mutex>

namespace print
{

namespace
{
// Past this, a run shows a progress dialog with Cancel; before it only the wait cursor.
constexpr int kProgressAfterMs = 1000;

// The wait cursor for the length of a run, and a progress dialog once the run has
// taken longer than a second.
class RunProgress
{
public:
    RunProgress(QWidget* parent, const QString& label) : m_parent(parent), m_label(label)
    {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        m_clock.start();
    }
    ~RunProgress() { QApplication::restoreOverrideCursor(); }
    RunProgress(const RunProgress&) = delete;
    RunProgress& operator=(const RunProgress&) = delete;

    // After each page: false once the user has cancelled.
    bool Page(int page, int pageCount)
    {
        if (!m_dialog && m_clock.elapsed() >= kProgressAfterMs && page < pageCount)
        {
            m_dialog = std::make_unique<QProgressDialog>(m_label, QApplication::translate("print", "Cancel"), 0,
                                                         pageCount, m_parent);
            m_dialog->setObjectName(QStringLiteral("printProgress"));
            m_dialog->setWindowModality(Qt::WindowModal);
            m_dialog->setMinimumDuration(0);
            m_dialog->show();
        }
        if (m_dialog)
        {
            m_dialog->setValue(page);
            QApplication::processEvents();
            return !m_dialog->wasCanceled();
        }
        return true;
    }
    render::PageProgress Callback()
    {
        return [this](int page, int pageCount) { return Page(page, pageCount); };
    }

private:
    QWidget* m_parent;
    QString m_label;
    QElapsedTimer m_clock;
    std::unique_ptr<QProgressDialog> m_dialog;
};

QString PagesLabel(const CReport& report)
{
    return QApplication::translate("print", "Printing \"%1\"...").arg(QString::fromStdString(report.m_name));
}

// Invoices get their number whenever they are printed or sent.
void NumberIfInvoice(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, platform::Prompter& prompter)
{
    if (report.m_kind != CReport::invoice)
        return;
    reports::NumberInvoice(report, doc, app, prompter);
    doc.UpdateAllViews(hintReports);
}

// Holds a printer in the report's orientation for as long as a preview shows it:
// the preview lays its pages out on the printer's paper after painting them.
class OrientationHold : public QObject
{
public:
    OrientationHold(QPrinter& printer, int orientation, QObject* parent)
        : QObject(parent), m_printer(printer), m_saved(printer.pageLayout().orientation())
    {
        if (orientation == reports::orientationPortrait)
            printer.setPageOrientation(QPageLayout::Portrait);
        else if (orientation == reports::orientationLandscape)
            printer.setPageOrientation(QPageLayout::Landscape);
    }
    ~OrientationHold() override { m_printer.setPageOrientation(m_saved); }

private:
    QPrinter& m_printer;
    QPageLayout::Orientation m_saved;
};
} // namespace

namespace
{
QPrinter* g_printer = nullptr;

void DeleteSharedPrinter()
{
    delete g_printer;
    g_printer = nullptr;
}
} // namespace

QPrinter& SharedPrinter(CTimeKeeperApp& app)
{
    QPrinter*& printer = g_printer;
    if (!printer)
    {
        printer = new QPrinter(QPrinter::HighResolution);
        // Gone with the application object, before the rest of Qt.
        qAddPostRoutine(DeleteSharedPrinter);
        const QPrinterInfo defaultPrinter = QPrinterInfo::defaultPrinter();
        if (defaultPrinter.isNull() || !defaultPrinter.defaultPageSize().isValid())
            printer->setPageSize(render::DefaultPaper(app.GetMeasurementSystem()));
        // The margins of the settings are measured from the paper's edge; the printer
        // keeps only what it cannot print on (its minimum margins).
        printer->setPageMargins(QMarginsF(0, 0, 0, 0), QPageLayout::Millimeter);
        printer->setFullPage(false);
    }
    return *printer;
}

bool PrintReport(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app, platform::Prompter& prompter,
                 uint32_t reportId)
{
    CReport* report = doc.GetReport(reportId);
    if (!report)
        return false;
    QPrinter& printer = SharedPrinter(app);
    int pageCount = 0;
    {
        RunProgress wait(parent, PagesLabel(*report));
        pageCount = render::CountPages(*report, doc, app, printer);
    }
    QPrintDialog dialog(&printer, parent);
    dialog.setObjectName(QStringLiteral("printDialog"));
    dialog.setMinMax(1, std::max(1, pageCount));
    printer.setFromTo(1, std::max(1, pageCount));
    printer.setPrintRange(QPrinter::AllPages);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    render::PageRange range;
    if (printer.printRange() == QPrinter::PageRange)
        range = render::PageRange{printer.fromPage(), printer.toPage()};
    // The report may have been deleted while the dialog was open.
    report = doc.GetReport(reportId);
    if (!report)
        return false;
    NumberIfInvoice(*report, doc, app, prompter);
    RunProgress progress(parent, PagesLabel(*report));
    const render::PrintResult result = render::PrintReport(*report, doc, app, printer, range, progress.Callback());
    if (result.failed)
    {
        prompter.ShowMessage(QApplication::translate("print", "The report could not be printed.").toStdString(),
                             platform::Icon::error);
        return false;
    }
    return !result.cancelled && result.pagesPainted > 0;
}

QPrintPreviewDialog* CreatePreviewDialog(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app,
                                         uint32_t reportId)
{
    CReport* report = doc.GetReport(reportId);
    if (!report)
        return nullptr;
    QPrinter& printer = SharedPrinter(app);
    auto* dialog = new QPrintPreviewDialog(&printer, parent);
    dialog->setObjectName(QStringLiteral("printPreview"));
    dialog->setWindowTitle(QApplication::translate("print", "Print Preview - %1").arg(QString::fromStdString(report->m_name)));
    new OrientationHold(printer, report->m_orientation, dialog);
    QObject::connect(dialog, &QPrintPreviewDialog::paintRequested, dialog,
                     [dialog, &doc, &app, reportId](QPrinter* target) {
                         const CReport* stored = doc.GetReport(reportId);
                         if (!stored)
                             return;
                         // An unnumbered invoice shows the number that printing will give
                         // it; the preview does not use the number up.
                         CReport shown = [&] {
                             std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
                             return *stored;
                         }();
                         if (shown.m_kind == CReport::invoice && shown.m_numberMode == 0 &&
                             shown.m_invoiceNumber == 0)
                             shown.m_invoiceNumber = app.GetInvoiceNumber();
                         RunProgress progress(dialog, PagesLabel(shown));
                         render::PrintReport(shown, doc, app, *target, {}, progress.Callback());
                     });
    return dialog;
}

void PreviewReport(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app, uint32_t reportId)
{
    std::unique_ptr<QPrintPreviewDialog> dialog(CreatePreviewDialog(parent, doc, app, reportId));
    if (dialog)
        dialog->exec();
}

bool PageSetup(QWidget* parent, CTimeKeeperApp& app)
{
    QPrinter& printer = SharedPrinter(app);
    CPageSetupDlg dialog(app, printer.pageLayout().pageSize(), parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    dialog.Apply(app);
    printer.setPageSize(dialog.Paper());
    return true;
}

bool ExportReportPdf(QWidget* parent, CTimeKeeperDoc& doc, CTimeKeeperApp& app, platform::Prompter& prompter,
                     uint32_t reportId, const QString& path, QString* error)
{
    CReport* report = doc.GetReport(reportId);
    if (!report)
    {
        if (error)
            *error = QApplication::translate("print", "The report no longer exists.");
        return false;
    }
    const int numberBefore = report->m_invoiceNumber;
    NumberIfInvoice(*report, doc, app, prompter);
    // An invoice that was not sent gives its number back.
    const auto unnumber = [&] {
        if (report->m_invoiceNumber == numberBefore)
            return;
        app.SetInvoiceNumber(report->m_invoiceNumber);
        {
            std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
            report->m_invoiceNumber = numberBefore;
        }
        doc.UpdateAllViews(hintReports);
    };
    render::PdfOptions options;
    options.paper = SharedPrinter(app).pageLayout().pageSize();
    render::PdfResult pdf;
    {
        RunProgress progress(parent, PagesLabel(*report));
        options.progress = progress.Callback();
        pdf = render::RenderPdf(*report, doc, app, options);
    }
    if (pdf.cancelled)
    {
        unnumber();
        if (error)
            error->clear();
        return false;
    }
    QSaveFile file(path);
    if (!pdf.error.isEmpty() || !file.open(QIODevice::WriteOnly) || file.write(pdf.bytes) != pdf.bytes.size() ||
        !file.commit())
    {
        unnumber();
        if (error)
            *error = pdf.error.isEmpty()
                         ? QApplication::translate("print", "Cannot write \"%1\": %2").arg(path, file.errorString())
                         : pdf.error;
        return false;
    }
    return true;
}

} // namespace print
