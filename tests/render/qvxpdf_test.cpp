// qvx writing PDF: the report export and the numbered invoice, as a user runs them.

#include "qvxrunner.h"
#include "renderfixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using ::testing::HasSubstr;
using ::testing::Not;

class QvxPdfTest : public qvtest::QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        Ok({"demo", "demo.qvx"}, kNow);
    }
    qvtest::QvxResult Qvx(const std::vector<std::string>& args) { return Run(args, kNow); }

    static constexpr const char* kNow = "2024-03-20 12:00";
};

TEST_F(QvxPdfTest, ReportExportWritesThePagesAsPdfWithoutADisplay)
{
    qvtest::QvxResult run =
        Qvx({"report", "export", "demo.qvx", "1", "--format", "pdf", "--out", "week.pdf"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("(1 page)"));
    EXPECT_THAT(run.err, Not(HasSubstr("QStandardPaths"))) << "no noise from Qt";
    const std::string text = PdfText(Path("week.pdf"));
    EXPECT_THAT(text, HasSubstr("This Week's Time"));
    EXPECT_THAT(text, HasSubstr("Page 1"));

    // An existing file is kept unless --force; the refusal names the way out.
    run = Qvx({"report", "export", "demo.qvx", "1", "--format", "pdf", "--out", "week.pdf"});
    EXPECT_NE(run.exitCode, 0);
    EXPECT_THAT(run.err, HasSubstr("--force"));
    EXPECT_EQ(Qvx({"report", "export", "demo.qvx", "1", "--format", "pdf", "--out", "week.pdf",
                   "--force"})
                  .exitCode,
              0);

    // PDF is a file, not a stream; a bad format lists pdf among the accepted ones.
    EXPECT_NE(Qvx({"report", "export", "demo.qvx", "1", "--format", "pdf", "--out", "-"}).exitCode,
              0);
    run = Qvx({"report", "export", "demo.qvx", "1", "--format", "odt"});
    EXPECT_NE(run.exitCode, 0);
    EXPECT_THAT(run.err, HasSubstr("pdf"));

    // A folder that does not exist: an error and no file.
    EXPECT_NE(Qvx({"report", "export", "demo.qvx", "1", "--format", "pdf", "--out", "none/x.pdf"})
                  .exitCode,
              0);
    EXPECT_FALSE(std::filesystem::exists(Path("none/x.pdf")));
}

TEST_F(QvxPdfTest, InvoicePdfIsNumberedAndTheNextNumberMovesOn)
{
    auto invoice = [&](const std::string& pdf) {
        return Qvx({"invoice", "demo.qvx", "5", "--pdf", pdf, "--yes"});
    };
    qvtest::QvxResult run = invoice("first.pdf");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out + run.err, HasSubstr("Invoice number 1"));
    const std::string text = PdfText(Path("first.pdf"));
    EXPECT_THAT(text, HasSubstr("Bellweather Foods Invoice"));
    EXPECT_THAT(text, HasSubstr("Invoice: 1"));
    EXPECT_THAT(text, HasSubstr("Due: $"));

    ASSERT_EQ(invoice("second.pdf").exitCode, 0);
    EXPECT_THAT(PdfText(Path("second.pdf")), HasSubstr("Invoice: 2"));

    // Refused (the file exists, the folder does not): the number stays where it was.
    EXPECT_NE(invoice("second.pdf").exitCode, 0);
    EXPECT_NE(invoice("none/third.pdf").exitCode, 0) << "no such folder";
    run = invoice("third.pdf");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out + run.err, HasSubstr("Invoice number 3"));

    EXPECT_NE(Qvx({"invoice", "demo.qvx", "5", "--pdf", "first.pdf", "--format", "csv", "--yes"})
                  .exitCode,
              0);
    EXPECT_NE(Qvx({"invoice", "demo.qvx", "1", "--pdf", "x.pdf", "--yes"}).exitCode, 0)
        << "a time detail is not an invoice";
}

} // namespace
