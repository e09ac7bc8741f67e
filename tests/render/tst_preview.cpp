// Print Preview of the desktop program, opened offscreen.

#include "renderfixture.h"

#include "platform/prompter.h"
#include "render/printrun.h"
#include "views/print/pagesetupdlg.h"
#include "views/print/reportprint.h"
#include "views/sheetlistview.h"
#include "viewfixture.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QMenu>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QTest>

#include <memory>

class TestPreview : public QObject
{
    Q_OBJECT
private slots:
    void showsEveryPageOfTheReport();
    void landscapeReportPreviewsLandscapeAndThePrinterGetsItsOwnBack();
    void pageSetupShowsAndStoresMarginsInTheLocalesUnit();
    void exportAsPdfNumbersAnInvoiceAndWritesTheFileWhole();
    void mainWindowCommandsActOnTheOneSelectedReport();
};

namespace
{
QPrintPreviewWidget* PreviewOf(QPrintPreviewDialog& dialog)
{
    return dialog.findChild<QPrintPreviewWidget*>();
}
} // namespace

void TestPreview::showsEveryPageOfTheReport()
{
    RenderFixture fix;
    CReport* report = fix.ReportOfKind(CReport::timeDetail);
    report->m_preset = CReport::allDates;
    QPrinter& printer = print::SharedPrinter(*fix.m_app);
    const int expected = render::CountPages(*report, fix.m_doc, *fix.m_app, printer);
    QVERIFY(expected >= 3);

    std::unique_ptr<QPrintPreviewDialog> dialog(print::CreatePreviewDialog(nullptr, fix.m_doc, *fix.m_app, report->m_id));
    QVERIFY(dialog);
    dialog->show();
    QPrintPreviewWidget* preview = PreviewOf(*dialog);
    QVERIFY(preview);
    QTRY_COMPARE(preview->pageCount(), expected);
    dialog->close();

    QVERIFY(!print::CreatePreviewDialog(nullptr, fix.m_doc, *fix.m_app, 999));
}

void TestPreview::landscapeReportPreviewsLandscapeAndThePrinterGetsItsOwnBack()
{
    RenderFixture fix;
    CReport* report = fix.ReportOfKind(CReport::timeSummary);
    report->m_orientation = 2;
    QPrinter& printer = print::SharedPrinter(*fix.m_app);
    printer.setPageOrientation(QPageLayout::Portrait);
    {
        std::unique_ptr<QPrintPreviewDialog> dialog(
            print::CreatePreviewDialog(nullptr, fix.m_doc, *fix.m_app, report->m_id));
        dialog->show();
        QTRY_VERIFY(PreviewOf(*dialog)->pageCount() >= 1);
        QCOMPARE(PreviewOf(*dialog)->orientation(), QPageLayout::Landscape);
        dialog->close();
    }
    QCOMPARE(printer.pageLayout().orientation(), QPageLayout::Portrait);
}

void TestPreview::pageSetupShowsAndStoresMarginsInTheLocalesUnit()
{
    RenderFixture fix; // U.S.: thousandths of an inch
    fix.m_app->SetPageMargins(750, 1000, 500, 1250);
    print::CPageSetupDlg dialog(*fix.m_app, QPageSize(QPageSize::Letter));
    QCOMPARE(dialog.MarginBox(0)->value(), 0.75);
    QCOMPARE(dialog.MarginBox(3)->value(), 1.25);
    QVERIFY(dialog.MarginBox(0)->suffix().contains(QStringLiteral("in")));
    QCOMPARE(dialog.Paper().id(), QPageSize::Letter);
    dialog.MarginBox(2)->setValue(0.625);
    dialog.PaperBox()->setCurrentIndex(dialog.PaperBox()->findData(static_cast<int>(QPageSize::A4)));
    dialog.Apply(*fix.m_app);
    int l = 0, t = 0, r = 0, b = 0;
    fix.m_app->GetPageMargins(l, t, r, b);
    QCOMPARE(r, 625);
    QCOMPARE(l, 750);
    QCOMPARE(dialog.Paper().id(), QPageSize::A4);

    platform::LocaleInfo metric;
    metric.measurementSystem = 0;
    RenderFixture metricFix(metric); // hundredths of a millimetre
    metricFix.m_app->SetPageMargins(2000, 2000, 1550, 2000);
    print::CPageSetupDlg metricDialog(*metricFix.m_app, QPageSize(QPageSize::A4));
    QCOMPARE(metricDialog.MarginBox(2)->value(), 15.5);
    QVERIFY(metricDialog.MarginBox(2)->suffix().contains(QStringLiteral("mm")));
    metricDialog.MarginBox(0)->setValue(12.25);
    metricDialog.Apply(*metricFix.m_app);
    metricFix.m_app->GetPageMargins(l, t, r, b);
    QCOMPARE(l, 1225);
    QCOMPARE(r, 1550);
}

void TestPreview::exportAsPdfNumbersAnInvoiceAndWritesTheFileWhole()
{
    RenderFixture fix;
    ScratchDir dir;
    CReport* invoice = fix.ReportOfKind(CReport::invoice);
    const int next = fix.m_app->GetInvoiceNumber();
    // The preview shows the number that printing will give, without using it up.
    QPrinter preview(QPrinter::HighResolution);
    preview.setOutputFileName(QString::fromStdString(dir.File("preview.pdf")));
    emit std::unique_ptr<QPrintPreviewDialog>(print::CreatePreviewDialog(nullptr, fix.m_doc, *fix.m_app, invoice->m_id))->paintRequested(&preview);
    QVERIFY(PdfText(dir.File("preview.pdf")).find("Invoice: " + std::to_string(next) + "\n") != std::string::npos);
    QVERIFY(invoice->m_invoiceNumber == 0 && fix.m_app->GetInvoiceNumber() == next);
    platform::ScriptedPrompter prompter;
    const QString path = QString::fromStdString(dir.File("invoice.pdf"));
    QString error;
    QVERIFY2(print::ExportReportPdf(nullptr, fix.m_doc, *fix.m_app, prompter, invoice->m_id, path, &error),
             qPrintable(error));
    QCOMPARE(invoice->m_invoiceNumber, next);
    QCOMPARE(fix.m_app->GetInvoiceNumber(), next + 1);
    const std::string text = PdfText(path.toStdString());
    QVERIFY2(text.find("Invoice: " + std::to_string(next)) != std::string::npos, text.c_str());

    // A folder that does not exist: a message naming the file, nothing written, and
    // the number given back (the invoice already has one: asked whether to replace it).
    const QString bad = QString::fromStdString(dir.File("none/invoice.pdf"));
    prompter.Script(platform::Answer::yes);
    QVERIFY(!print::ExportReportPdf(nullptr, fix.m_doc, *fix.m_app, prompter, invoice->m_id, bad, &error));
    QVERIFY(error.contains(bad));
    QVERIFY(!QFile::exists(bad));
    QCOMPARE(prompter.Questions().size(), size_t(1));
    QCOMPARE(invoice->m_invoiceNumber, next);
    QCOMPARE(fix.m_app->GetInvoiceNumber(), next + 1);
    QVERIFY(!print::ExportReportPdf(nullptr, fix.m_doc, *fix.m_app, prompter, 999, path, &error));
    QVERIFY(!error.isEmpty());
}

void TestPreview::mainWindowCommandsActOnTheOneSelectedReport()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    for (int day = 4; day <= 13; ++day)
        for (int hour = 8; hour < 17; ++hour)
            f.AddTime(acme, CDateTime::FromDate(2024, 3, day), hour, 0, hour + 1, 0);
    uint32_t reportId = 0;
    {
        std::lock_guard lock(f.doc.GetLock());
        CReport* report = f.doc.AddReport(CReport::timeDetail);
        report->m_name = "March/Acme";
        report->m_preset = CReport::allDates;
        report->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
        reportId = report->m_id;
    }
    f.Reopen();
    CSheetListView* list = f.frame->SheetList();
    QAction* printAction = f.frame->Action(QStringLiteral("filePrint"));
    QAction* previewAction = f.frame->Action(QStringLiteral("filePrintPreview"));
    QAction* pdfAction = f.frame->Action(QStringLiteral("fileExportPdf"));
    QVERIFY(printAction && previewAction && pdfAction && f.frame->Action(QStringLiteral("filePageSetup")));

    // Not on an entry page, not without a selected report.
    list->SetPage(CSheetListView::pageTime);
    f.frame->UpdateCommandStates();
    QVERIFY(!printAction->isEnabled());
    // Selecting the report is enough: the tool bar follows without a menu being opened.
    list->SetPage(CSheetListView::pageReports);
    list->SelectRow(0);
    QVERIFY(printAction->isEnabled());
    list->SetPage(CSheetListView::pageTime);
    QVERIFY(!printAction->isEnabled());
    list->SetPage(CSheetListView::pageReports);
    list->SelectRow(0);
    f.frame->UpdateCommandStates();
    QVERIFY(printAction->isEnabled());
    QVERIFY(previewAction->isEnabled());
    QVERIFY(pdfAction->isEnabled());

    // The Reports page's context menu has them next to Export.
    QMenu menu;
    list->FillContextMenu(menu);
    const QList<QAction*> items = menu.actions();
    QVERIFY(items.contains(printAction) && items.contains(previewAction) && items.contains(pdfAction));

    // Export as PDF proposes the name before the "/" and adds ".pdf" when it is left out.
    f.frame->saveNames = {f.Path(QStringLiteral("march"))};
    pdfAction->trigger();
    QCOMPARE(f.frame->asked.value(0), QStringLiteral("Export as PDF"));
    QFile pdf(f.Path(QStringLiteral("march.pdf")));
    QVERIFY(pdf.open(QIODevice::ReadOnly));
    QVERIFY(pdf.read(5) == "%PDF-");

    // Print Preview shows every page.
    const int pages = render::CountPages(*f.doc.GetReport(reportId), f.doc, *f.app, print::SharedPrinter(*f.app));
    QVERIFY(pages >= 2);
    int shown = -1;
    ViewFixture::WhenDialogShows([&shown](QDialog* dialog) {
        if (auto* preview = dialog->findChild<QPrintPreviewWidget*>())
            shown = preview->pageCount();
        dialog->reject();
    });
    previewAction->trigger();
    QCOMPARE(shown, pages);

    // Print offers the report's pages as the range.
    int firstPage = -1, lastPage = -1;
    ViewFixture::WhenDialogShows([&firstPage, &lastPage](QDialog* dialog) {
        if (auto* printDialog = qobject_cast<QPrintDialog*>(dialog))
        {
            firstPage = printDialog->minPage();
            lastPage = printDialog->maxPage();
        }
        dialog->reject();
    });
    printAction->trigger();
    QCOMPARE(firstPage, 1);
    QCOMPARE(lastPage, pages);

    // Page Setup writes the margins into the settings.
    ViewFixture::WhenDialogShows([](QDialog* dialog) {
        if (auto* box = dialog->findChild<QDoubleSpinBox*>(QStringLiteral("marginTop")))
            box->setValue(1.5);
        dialog->accept();
    });
    f.frame->Action(QStringLiteral("filePageSetup"))->trigger();
    int l = 0, t = 0, r = 0, b = 0;
    f.app->GetPageMargins(l, t, r, b);
    QCOMPARE(t, 1500);
}

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
