// The reports drawn through the Qt canvas into PDF, read back with poppler's tools.

#include "renderfixture.h"

#include "render/printrun.h"
#include "reports/exportfile.h"
#include "reports/reportrunner.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QPdfWriter>

#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <sstream>

namespace
{

// Money is printed with a currency sign and grouping, exported as a plain number.
std::string WithoutMoneyMarks(std::string text)
{
    std::erase_if(text, [](char c) { return c == '$' || c == ','; });
    return text;
}

// The times and amounts among the cells of a tab-delimited export.
std::vector<std::string> Figures(const std::string& exported)
{
    static const std::regex figure(R"(^\d+([.:]\d\d)$)");
    std::vector<std::string> out;
    std::istringstream lines(exported);
    std::string line;
    while (std::getline(lines, line))
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::istringstream cells(line);
        std::string cell;
        while (std::getline(cells, cell, '\t'))
            // Zero amounts are left blank on paper.
            if (std::regex_match(cell, figure) && cell.find_first_not_of("0.:") != std::string::npos)
                out.push_back(cell);
    }
    return out;
}

// Where a word stands on the first page, in points, from pdftotext's bounding boxes.
struct WordBox
{
    double xMin = -1, yMin = -1, xMax = -1, yMax = -1;
};
WordBox FindWord(const std::string& pdf, const std::string& word)
{
    const std::string html = RunAndRead("pdftotext -bbox -f 1 -l 1 '" + pdf + "' -");
    const std::regex re("<word xMin=\"([\\d.]+)\" yMin=\"([\\d.]+)\" xMax=\"([\\d.]+)\" yMax=\"([\\d.]+)\">" +
                        word + "</word>");
    std::smatch m;
    if (!std::regex_search(html, m, re))
        return {};
    return WordBox{std::stod(m[1]), std::stod(m[2]), std::stod(m[3]), std::stod(m[4])};
}

constexpr double kPointsPerInch = 72.0;

class PdfTest : public ::testing::Test
{
protected:
    // Renders to a file in the test's folder and returns its path.
    std::string Render(CReport* report, render::PdfResult* result = nullptr)
    {
        render::PdfResult pdf = render::RenderPdf(*report, m_fix.m_doc, *m_fix.m_app);
        EXPECT_TRUE(pdf.error.isEmpty()) << pdf.error.toStdString();
        const std::string path = m_dir.File("report" + std::to_string(++m_count) + ".pdf");
        WriteBytes(path, pdf.bytes);
        if (result)
            *result = pdf;
        return path;
    }

    RenderFixture m_fix;
    ScratchDir m_dir;
    int m_count = 0;
};

TEST_F(PdfTest, EveryKindShowsItsNameEveryPageNumberAndTheFiguresOfItsExport)
{
    const CReport::Kind kinds[] = {CReport::timeDetail,     CReport::timeSummary,  CReport::expenseDetail,
                                   CReport::expenseSummary, CReport::todoDetail,   CReport::invoice,
                                   CReport::timeExpenseSummary, CReport::billingSummary};
    for (CReport::Kind kind : kinds)
    {
        SCOPED_TRACE("kind " + std::to_string(kind));
        CReport* report = m_fix.ReportOfKind(kind);
        render::PdfResult result;
        const std::string path = Render(report, &result);
        const PdfInfo info = ReadPdfInfo(path);
        ASSERT_GE(result.pages, 1);
        EXPECT_EQ(info.pages, result.pages);
        const std::string text = PdfText(path);
        EXPECT_NE(text.find(report->m_name), std::string::npos) << text;
        for (int page = 1; page <= info.pages; ++page)
        {
            const std::string pageText = PdfPageText(path, page);
            EXPECT_NE(pageText.find(report->m_name), std::string::npos) << "page " << page;
            EXPECT_NE(pageText.find("Page " + std::to_string(page)), std::string::npos) << pageText;
        }
        EXPECT_EQ(text.find("Page " + std::to_string(info.pages + 1)), std::string::npos);

        if (kind == CReport::todoDetail)
            continue; // to-dos have no figures
        const std::vector<std::string> figures =
            Figures(reports::ExportReport(*report, m_fix.m_doc, *m_fix.m_app, reports::formatTab));
        EXPECT_FALSE(figures.empty());
        const std::string printed = WithoutMoneyMarks(text);
        for (const std::string& figure : figures)
            EXPECT_NE(printed.find(figure), std::string::npos) << "figure " << figure << " missing from\n" << text;
    }
}

TEST_F(PdfTest, OrientationOfTheReportDecidesThePaperAndTheWriterGetsItsOwnBack)
{
    CReport* report = m_fix.ReportOfKind(CReport::timeSummary);
    report->m_orientation = 2;
    PdfInfo info = ReadPdfInfo(Render(report));
    EXPECT_GT(info.width, info.height);
    EXPECT_NEAR(info.width, 11 * kPointsPerInch, 1); // Letter for the U.S. locale
    report->m_orientation = 1;
    info = ReadPdfInfo(Render(report));
    EXPECT_LT(info.width, info.height);

    // A landscape report on a portrait writer: the run's pages are landscape, the
    // writer is portrait again afterwards.
    report->m_orientation = 2;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setPageOrientation(QPageLayout::Portrait);
        const render::PrintResult run = render::PrintReport(*report, m_fix.m_doc, *m_fix.m_app, writer);
        EXPECT_GE(run.pagesPainted, 1);
        EXPECT_EQ(writer.pageLayout().orientation(), QPageLayout::Portrait);
    }
    const std::string path = m_dir.File("onportrait.pdf");
    WriteBytes(path, bytes);
    info = ReadPdfInfo(path);
    EXPECT_GT(info.width, info.height);
}

TEST_F(PdfTest, MarginsFollowTheSettingsInTheLocalesUnit)
{
    CReport* report = m_fix.ReportOfKind(CReport::timeDetail);
    // Thousandths of an inch: 2 in left, 1.5 in top, 1 in right.
    m_fix.m_app->SetPageMargins(2000, 1500, 1000, 1000);
    const std::string path = Render(report);
    const PdfInfo info = ReadPdfInfo(path);
    const WordBox first = FindWord(path, "This"); // "This Week's Time"
    EXPECT_NEAR(first.xMin, 2.0 * kPointsPerInch, 1.0);
    EXPECT_NEAR(first.yMin, 1.5 * kPointsPerInch, 3.0); // the line's top, above the capitals
    EXPECT_GE(first.yMin, 1.5 * kPointsPerInch - 0.5);
    const WordBox page = FindWord(path, "1");
    EXPECT_NEAR(page.xMax, info.width - 1.0 * kPointsPerInch, 1.0);

    // Hundredths of a millimetre where the locale is metric; the paper is A4.
    platform::LocaleInfo metric;
    metric.measurementSystem = 0;
    RenderFixture metricFix(metric);
    metricFix.m_app->SetPageMargins(2500, 2500, 2500, 2500);
    const std::string metricPath = m_dir.File("metric.pdf");
    const render::PdfResult pdf =
        render::RenderPdf(*metricFix.ReportOfKind(CReport::timeDetail), metricFix.m_doc, *metricFix.m_app);
    WriteBytes(metricPath, pdf.bytes);
    const PdfInfo a4 = ReadPdfInfo(metricPath);
    EXPECT_NEAR(a4.width, 595.3, 1);
    EXPECT_NEAR(a4.height, 841.9, 1);
    const double mm25 = 25 * kPointsPerInch / 25.4;
    EXPECT_NEAR(FindWord(metricPath, "This").xMin, mm25, 1.0);
    EXPECT_NEAR(FindWord(metricPath, "1").xMax, a4.width - mm25, 1.0);
}

TEST_F(PdfTest, FontsAreEmbeddedAndMetricCompatibleWithArial)
{
    const std::string fonts = RunAndRead("pdffonts '" + Render(m_fix.ReportOfKind(CReport::invoice)) + "'");
    std::istringstream lines(fonts);
    std::string line;
    int fontLines = 0;
    while (std::getline(lines, line))
    {
        if (line.rfind("name", 0) == 0 || line.rfind("----", 0) == 0 || line.empty())
            continue;
        ++fontLines;
        EXPECT_NE(line.find(" yes "), std::string::npos) << "not embedded: " << line;
        EXPECT_TRUE(line.find("Liberation") != std::string::npos || line.find("Arial") != std::string::npos)
            << line;
    }
    EXPECT_GE(fontLines, 2); // the body and the bold title font
}

TEST_F(PdfTest, PageRangeAndCancellingStopWhereAsked)
{
    CReport* report = m_fix.ReportOfKind(CReport::timeDetail);
    report->m_preset = CReport::allDates;
    const int pages = render::RenderPdf(*report, m_fix.m_doc, *m_fix.m_app).pages;
    ASSERT_GE(pages, 3) << "the demo's four weeks should fill a few pages";

    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        // The paper of the whole run above: Letter with no edge of its own.
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, QMarginsF()));
        const render::PrintResult run =
            render::PrintReport(*report, m_fix.m_doc, *m_fix.m_app, writer, render::PageRange{2, 3});
        EXPECT_EQ(run.pageCount, pages);
        EXPECT_EQ(run.pagesPainted, 2);
        EXPECT_FALSE(run.cancelled);
    }
    const std::string path = m_dir.File("range.pdf");
    WriteBytes(path, bytes);
    EXPECT_EQ(ReadPdfInfo(path).pages, 2);
    EXPECT_NE(PdfPageText(path, 1).find("Page 2"), std::string::npos);
    EXPECT_NE(PdfPageText(path, 2).find("Page 3"), std::string::npos);

    int seen = 0;
    render::PdfOptions options;
    options.progress = [&seen](int page, int count) {
        ++seen;
        EXPECT_LE(page, count);
        return page < 2; // cancel after the second page
    };
    const render::PdfResult cancelled = render::RenderPdf(*report, m_fix.m_doc, *m_fix.m_app, options);
    EXPECT_TRUE(cancelled.cancelled);
    EXPECT_EQ(seen, 2);
    EXPECT_TRUE(cancelled.bytes.isEmpty()) << "a cancelled PDF is not handed out half made";
}

TEST_F(PdfTest, CountPagesMatchesThePrintedPagesAndLeavesTheDevice)
{
    CReport* report = m_fix.ReportOfKind(CReport::timeSummary);
    report->m_orientation = 2;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setPageOrientation(QPageLayout::Portrait);
    const int counted = render::CountPages(*report, m_fix.m_doc, *m_fix.m_app, writer);
    EXPECT_EQ(writer.pageLayout().orientation(), QPageLayout::Portrait);
    EXPECT_EQ(counted, render::RenderPdf(*report, m_fix.m_doc, *m_fix.m_app).pages);
}

} // namespace

int main(int argc, char** argv)
{
    // No display is needed, also when the tests are only listed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
