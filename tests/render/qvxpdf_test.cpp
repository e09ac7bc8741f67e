// qvx writing PDF: the report export and the numbered invoice, as a user runs them.

#include "renderfixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace
{

struct QvxRun
{
    int status = 0;
    std::string output; // standard output and error together
};

// qvx with its settings (the next invoice number among them) in `configHome`.
QvxRun Qvx(const std::string& configHome, const std::string& arguments)
{
    const std::string marker = "\nqvx-status:";
    const std::string text =
        RunAndRead("env -u DISPLAY -u WAYLAND_DISPLAY XDG_CONFIG_HOME='" + configHome + "' QVX_NOW='2024-03-20 12:00' '" QVX_PATH "' " + arguments +
                   " 2>&1; echo \"" + marker.substr(1) + "$?\"");
    QvxRun run;
    const size_t at = text.rfind("qvx-status:");
    run.output = text.substr(0, at);
    run.status = std::stoi(text.substr(at + marker.size() - 1));
    return run;
}

class QvxPdfTest : public ::testing::Test
{
protected:
    QvxPdfTest()
    {
        m_doc = m_dir.File("demo.qvx");
        const QvxRun made = Qvx("demo '" + m_doc + "'");
        EXPECT_EQ(made.status, 0) << made.output;
    }
    QvxRun Qvx(const std::string& arguments) const { return ::Qvx(m_dir.File("config"), arguments); }

    TempDir m_dir;
    std::string m_doc;
};

TEST_F(QvxPdfTest, ReportExportWritesThePagesAsPdfWithoutADisplay)
{
    const std::string out = m_dir.File("week.pdf");
    QvxRun run = Qvx("report export '" + m_doc + "' 1 --format pdf --out '" + out + "'");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("(1 page)"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("QStandardPaths"), std::string::npos) << "no noise from Qt: " << run.output;
    const std::string text = PdfText(out);
    EXPECT_NE(text.find("This Week's Time"), std::string::npos) << text;
    EXPECT_NE(text.find("Page 1"), std::string::npos);

    // An existing file is kept unless --force; the refusal names the way out.
    run = Qvx("report export '" + m_doc + "' 1 --format pdf --out '" + out + "'");
    EXPECT_NE(run.status, 0);
    EXPECT_NE(run.output.find("--force"), std::string::npos) << run.output;
    run = Qvx("report export '" + m_doc + "' 1 --format pdf --out '" + out + "' --force");
    EXPECT_EQ(run.status, 0) << run.output;

    // PDF is a file, not a stream; a bad format lists pdf among the accepted ones.
    run = Qvx("report export '" + m_doc + "' 1 --format pdf --out -");
    EXPECT_NE(run.status, 0);
    run = Qvx("report export '" + m_doc + "' 1 --format odt");
    EXPECT_NE(run.status, 0);
    EXPECT_NE(run.output.find("pdf"), std::string::npos) << run.output;

    // A folder that does not exist: an error and no file.
    run = Qvx("report export '" + m_doc + "' 1 --format pdf --out '" + m_dir.File("none/x.pdf") + "'");
    EXPECT_NE(run.status, 0);
    EXPECT_FALSE(std::filesystem::exists(m_dir.File("none/x.pdf")));
}

TEST_F(QvxPdfTest, InvoicePdfIsNumberedAndTheNextNumberMovesOn)
{
    const std::string first = m_dir.File("first.pdf");
    QvxRun run = Qvx("invoice '" + m_doc + "' 5 --pdf '" + first + "' --yes");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("Invoice number 1"), std::string::npos) << run.output;
    std::string text = PdfText(first);
    EXPECT_NE(text.find("Bellweather Foods Invoice"), std::string::npos) << text;
    EXPECT_NE(text.find("Invoice: 1"), std::string::npos) << text;
    EXPECT_NE(text.find("Due: $"), std::string::npos) << text;

    const std::string second = m_dir.File("second.pdf");
    run = Qvx("invoice '" + m_doc + "' 5 --pdf '" + second + "' --yes");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_NE(PdfText(second).find("Invoice: 2"), std::string::npos);

    // Refused (the file exists, the folder does not): the number stays where it was.
    run = Qvx("invoice '" + m_doc + "' 5 --pdf '" + second + "' --yes");
    EXPECT_NE(run.status, 0);
    run = Qvx("invoice '" + m_doc + "' 5 --pdf '" + m_dir.File("none/third.pdf") + "' --yes");
    EXPECT_NE(run.status, 0) << "no such folder";
    run = Qvx("invoice '" + m_doc + "' 5 --pdf '" + m_dir.File("third.pdf") + "' --yes");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("Invoice number 3"), std::string::npos) << run.output;

    run = Qvx("invoice '" + m_doc + "' 5 --pdf '" + first + "' --format csv --yes");
    EXPECT_NE(run.status, 0);
    run = Qvx("invoice '" + m_doc + "' 1 --pdf '" + m_dir.File("x.pdf") + "' --yes");
    EXPECT_NE(run.status, 0) << "a time detail is not an invoice";
}

} // namespace
