#include "reportfixture.h"

#include "reports/fixedmetricscanvas.h"
#include "reports/reportrunner.h"
#include "reports/timedetailoutput.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

using reports::FixedMetricsCanvas;

class FrameTest : public SampleReportTest
{
};

TEST(MarginsTest, MetricAndUsSettingsBecomeDeviceUnits)
{
    const reports::DeviceMargins metric = reports::MarginsToDevice(2000, 1000, 2000, 500, 0, 600, 300);
    EXPECT_EQ(metric.left, 460); // 23 pixels per millimetre
    EXPECT_EQ(metric.top, 110);  // 11 pixels per millimetre vertically
    EXPECT_EQ(metric.bottom, 55);
    const reports::DeviceMargins us = reports::MarginsToDevice(1000, 750, 500, 250, 1, 600, 600);
    EXPECT_EQ(us.left, 600);
    EXPECT_EQ(us.top, 450);
    EXPECT_EQ(us.right, 300);
    EXPECT_EQ(us.bottom, 150);
}

TEST_F(FrameTest, BeginPrintingMeasuresThePage)
{
    CReport* report = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    report->m_font.height = 0;
    FixedMetricsCanvas::Options options;
    options.physicalOffsetX = 25;
    options.physicalOffsetY = 10;
    FixedMetricsCanvas canvas(options);
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    output.BeginPrinting(canvas);

    const reports::PrintMetrics& m = output.GetMetrics();
    EXPECT_EQ(m.left, 50);
    EXPECT_EQ(m.top, 65);
    EXPECT_EQ(m.pageWidth, 850 + 25 - 75 - 50);
    EXPECT_EQ(m.pageHeight, 1100 + 10 - 75 - 65);
    EXPECT_EQ(m.lineHeight, 20);
    EXPECT_EQ(m.cellVerticalPadding, 3);
    EXPECT_EQ(m.rowsPerPage, (m.pageHeight - 2 * (3 + 20)) / 26);
    EXPECT_EQ(m.bodyFont.pointSize, 9);
    EXPECT_EQ(m.bodyFont.weight, 400);
    EXPECT_EQ(m.titleFont.weight, 700);
    EXPECT_EQ(m.bodyFont.face, "Arial");
    EXPECT_EQ(m.lightPen, 0);
    output.EndPrinting(canvas);

    report->m_font.height = -120;
    options.dpiX = options.dpiY = 600;
    FixedMetricsCanvas fine(options);
    output.BeginPrinting(fine);
    EXPECT_EQ(output.GetMetrics().bodyFont.pointSize, 12);
    EXPECT_EQ(output.GetMetrics().lightPen, 2);
    EXPECT_EQ(output.GetMetrics().heavyPen, 10);
    output.EndPrinting(fine);
}

TEST_F(FrameTest, MarginsComeFromTheSettingsOfTheSameMeasure)
{
    CReport* report = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    m_store.SetInt("Settings", "PageMarginLeft", 1000);
    m_store.SetInt("Settings", "PageMeasure", 1);
    FixedMetricsCanvas canvas;
    output.BeginPrinting(canvas);
    EXPECT_EQ(output.GetMetrics().left, 100);
    output.EndPrinting(canvas);

    // Stored under the metric system: the U.S. defaults apply instead.
    m_store.SetInt("Settings", "PageMeasure", 0);
    output.BeginPrinting(canvas);
    EXPECT_EQ(output.GetMetrics().left, 75);
    output.EndPrinting(canvas);
}

TEST_F(FrameTest, LandscapeReportRestoresThePrinterOrientation)
{
    CReport* report = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    report->m_orientation = reports::orientationLandscape;
    FixedMetricsCanvas canvas;
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    output.Print(canvas);
    EXPECT_EQ(output.GetMetrics().pageWidth, 1100 - 150);
    EXPECT_EQ(canvas.GetOrientation(), reports::orientationPortrait);
    EXPECT_EQ(canvas.DeviceWidth(), 850);
}

TEST_F(FrameTest, TimeDetailPageShowsDayTotalsAndTheTotal)
{
    AddTime(Date(2024, 3, 4), m_website, 9, 0, 10, 30, 1, "Home page");
    AddTime(Date(2024, 3, 4), m_support, 11, 0, 11, 45, 2);
    CReport* report = AddReport(CReport::timeDetail, "Acme/March", m_acme, Date(2024, 3, 4), Date(2024, 3, 4),
                                0x1000000 | 0x100000);
    const auto pages = reports::RenderTextPages(*report, m_doc, *m_app);
    ASSERT_EQ(pages.size(), 1u);
    const std::vector<std::string> expected = {
        Cols({{7, "Acme/March"}, {71, "Page 1"}}),
        Cols({{8, "Description"}, {63, "Time"}, {69, "Billing"}}),
        Dashes(7, 77),
        Cols({{8, "03/04/2024"}}),
        Dashes(7, 77),
        Cols({{8, "Acme/Website"}, {63, "1:30"}, {70, "$75.00"}}),
        Cols({{8, "Home page"}}),
        Cols({{8, "Acme/Support"}, {63, "0:45"}, {70, "$30.00"}}),
        Dashes(62, 77),
        Cols({{63, "2:15"}, {69, "$105.00"}}),
        Dashes(7, 77),
        Cols({{8, "TOTAL"}, {63, "2:15"}, {69, "$105.00"}}),
    };
    EXPECT_EQ(pages[0], expected);
}

TEST_F(FrameTest, PagesBreakWhenTheNextEntryDoesNotFit)
{
    // 26 units per row on a 950-unit page: the title and column titles take 46, the
    // first entry with its day heading 78, so 32 entries fit on the first page.
    for (int i = 0; i < 40; ++i)
        AddTime(Date(2024, 3, 4), m_website, i / 4, (i % 4) * 15, i / 4, (i % 4) * 15 + 10);
    CReport* report = AddReport(CReport::timeDetail, "Long", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    FixedMetricsCanvas canvas;
    EXPECT_EQ(output.Print(canvas), 2);
    output.BeginPrinting(canvas);
    EXPECT_EQ(output.PageStarts(), (std::vector<size_t>{0, 32}));
    output.EndPrinting(canvas);
    ASSERT_EQ(canvas.Pages().size(), 2u);
    const std::vector<std::string> second = canvas.PageText(1);
    EXPECT_EQ(second.front(), Cols({{7, "Long"}, {71, "Page 2"}}));
    EXPECT_EQ(second.back().substr(0, 13), Cols({{8, "TOTAL"}}));
}

TEST_F(FrameTest, TotalMovesToAPageOfItsOwnWhenItDoesNotFit)
{
    // 32 entries take 46 + 78 + 31 * 26 + 26 = 956 > 950: the last one moves on with the total.
    for (int i = 0; i < 32; ++i)
        AddTime(Date(2024, 3, 4), m_website, i / 4, (i % 4) * 15, i / 4, (i % 4) * 15 + 10);
    CReport* report = AddReport(CReport::timeDetail, "Fit", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    const auto pages32 = reports::RenderTextPages(*report, m_doc, *m_app);
    ASSERT_EQ(pages32.size(), 2u);
    EXPECT_NE(pages32[1][3].find("Acme/Website"), std::string::npos);

    // 31 entries fill 930 units; the blank and total rows (52) need a page of their own.
    CDay* day = m_doc.GetDay(Date(2024, 3, 4));
    m_doc.UnfileTimeEntry(day->TimeEntries().back().get());
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    FixedMetricsCanvas canvas;
    EXPECT_EQ(output.Print(canvas), 2);
    const std::vector<std::string> last = canvas.PageText(1);
    ASSERT_EQ(last.size(), 4u); // title, column titles, the rule under them, TOTAL
    EXPECT_EQ(last.back().substr(0, 13), Cols({{8, "TOTAL"}}));
}

TEST_F(FrameTest, LongNotesWrapAndCountInThePageHeight)
{
    const std::string note = "The quick brown fox jumps over the lazy dog and keeps running well past the margin";
    AddTime(Date(2024, 3, 4), m_website, 9, 0, 10, 0, 0, note);
    CReport* report = AddReport(CReport::timeDetail, "N", m_root, Date(2024, 3, 4), Date(2024, 3, 4), 0x100000);
    reports::FixedMetricsCanvas::Options narrow;
    narrow.deviceWidth = 450; // 300 units of page width: 28 characters of note per line
    const auto pages = reports::RenderTextPages(*report, m_doc, *m_app, narrow);
    ASSERT_EQ(pages.size(), 1u);
    const std::vector<std::string> wrapped(pages[0].begin() + 6, pages[0].begin() + 9);
    EXPECT_EQ(wrapped, (std::vector<std::string>{Cols({{8, "The quick brown fox jumps"}}),
                                                 Cols({{8, "over the lazy dog and keeps"}}),
                                                 Cols({{8, "running well past the margin"}})}));
}

TEST_F(FrameTest, DefaultFileNameStopsAtTheFirstSlash)
{
    CReport* report = AddReport(CReport::timeDetail, "Acme/March/2024", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    EXPECT_EQ(reports::DefaultExportFileName(*report), "Acme");
    report->m_name = "Whole name";
    EXPECT_EQ(reports::DefaultExportFileName(*report), "Whole name");
}

TEST_F(FrameTest, ExportToFileWritesWholeFilesOnly)
{
    AddTime(Date(2024, 3, 4), m_website, 9, 0, 10, 30);
    CReport* report = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 4), Date(2024, 3, 4));
    const std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                      ("qv_reports_" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "out.csv").string();
    {
        std::ofstream old(path);
        old << "old contents that are longer than the new export will be, by a good margin........";
    }
    std::string error;
    ASSERT_TRUE(reports::ExportReportToFile(*report, m_doc, *m_app, reports::formatCsv, path, &error)) << error;
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    EXPECT_EQ(bytes.str(), Export(report, reports::formatCsv));

    const std::string missing = (dir / "no such dir" / "out.csv").string();
    EXPECT_FALSE(reports::ExportReportToFile(*report, m_doc, *m_app, reports::formatCsv, missing, &error));
    EXPECT_NE(error.find(missing), std::string::npos) << error;
    EXPECT_FALSE(std::filesystem::exists(missing));
    std::filesystem::remove_all(dir);
}

TEST(CellForm, ValuesStayOneCellInEveryDelimitedFormat)
{
    const reports::CellForm csv = reports::MakeCellForm(reports::formatCsv, ';');
    EXPECT_EQ(csv.Quoted("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(csv.Quoted("a;b\r\nc\td"), "\"a;b\r\nc\td\"") << "quoted: separators and breaks stay";
    EXPECT_EQ(csv.Plain("1,5"), "1,5") << "not this locale's separator";
    EXPECT_EQ(csv.Plain("1;5"), "\"1;5\"");
    EXPECT_EQ(csv.Plain("2\"x"), "\"2\"\"x\"");
    EXPECT_EQ(csv.Plain("a\nb"), "\"a\nb\"");
    EXPECT_EQ(csv.Plain(""), "");

    const reports::CellForm tab = reports::MakeCellForm(reports::formatTab, ',');
    EXPECT_EQ(tab.Quoted("a\tb\r\nc \"d\""), "a b  c \"d\"");
    EXPECT_EQ(tab.Plain("x\ty"), "x y");

    EXPECT_EQ(reports::HtmlEscape("<a href=\"x\">&amp;</a>"), "&lt;a href=&quot;x&quot;&gt;&amp;amp;&lt;/a&gt;");
}
