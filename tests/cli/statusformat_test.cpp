// qvx status --format: the one-line timer for panels and status bars.

#include "qvxrunner.h"

#include <gtest/gtest.h>

using qvtest::QvxResult;
using qvtest::QvxTest;

namespace
{

class StatusFormatTest : public QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        WriteSettings({"TimeInterval=1"});
        Ok({"new", "doc.qvx", "--employee", "Pat Doe"});
        Ok({"task", "add", "doc.qvx", "#1", "Acme"});
        Ok({"task", "add", "doc.qvx", "Acme", "Website"});
    }
};

TEST_F(StatusFormatTest, EachStateWithItsFields)
{
    const std::string format = "%S|%t|%s|%e|%m|%n|100%%";
    EXPECT_EQ(Ok({"status", "doc.qvx", "--format", format}), "inactive||||0||100%\n");

    Ok({"start", "doc.qvx", "Acme/Website", "--note", "Home page"}, "2024-06-11 09:00");
    EXPECT_EQ(Ok({"status", "doc.qvx", "--format", format}, "2024-06-11 10:30"),
              "running|Acme/Website|9:00 AM|1:30|90|Home page|100%\n");

    Ok({"pause", "doc.qvx"}, "2024-06-11 10:45");
    EXPECT_EQ(Ok({"status", "doc.qvx", "--format", format}, "2024-06-11 11:00"),
              "paused|Acme/Website|||0||100%\n");
}

TEST_F(StatusFormatTest, UnknownPlaceholdersAreRefused)
{
    for (const std::string bad : {"%x", "time %", "%T"})
    {
        const QvxResult r = Run({"status", "doc.qvx", "--format", bad});
        EXPECT_EQ(r.exitCode, 2) << bad;
        EXPECT_NE(r.err.find("--format knows %S %t %s %e %m %n %%"), std::string::npos) << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
    }
}

} // namespace
