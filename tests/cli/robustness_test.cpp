// qvx against hostile input and failing surroundings: locks that do not end, many
// commands at once, output that cannot be written, absurd numbers, foreign files, a
// backup that cannot be made. Every qvx here is a real process.

#include "qvxrunner.h"

#include "platform/sharedfile.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using platform::SharedFile;
using qvtest::QvxResult;

namespace
{
using qvtest::Surroundings;
using ::testing::HasSubstr;
using ::testing::Not;

class QvxRobustnessTest : public qvtest::QvxTest
{
protected:
    QvxResult RunWith(const std::vector<std::string>& args, const Surroundings& how)
    {
        return Finish(Start(args, "one", how), "one");
    }

    void MakeDocument()
    {
        Ok({"new", "doc.qvx", "--employee", "Pat"});
        Ok({"task", "add", "doc.qvx", "Pat", "Acme"});
    }
};

// A lock that another open file description keeps on the document's contents, the way
// a save in progress (or a stuck program) keeps it.
class ContentsLock
{
public:
    ContentsLock(const std::string& path, short type) : m_fd(::open(path.c_str(), O_RDWR))
    {
        struct flock lock
        {
        };
        lock.l_type = type;
        lock.l_whence = SEEK_SET;
        lock.l_start = 0;
        lock.l_len = SharedFile::kHoldOffset;
        m_locked = m_fd >= 0 && ::fcntl(m_fd, F_OFD_SETLK, &lock) == 0;
    }
    ~ContentsLock()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    bool Locked() const { return m_locked; }

private:
    int m_fd;
    bool m_locked = false;
};

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
} // namespace

TEST_F(QvxRobustnessTest, LockThatDoesNotEndStopsEveryCommandWithTheCause)
{
    MakeDocument();
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    ContentsLock stuck(Path("doc.qvx"), F_WRLCK);
    ASSERT_TRUE(stuck.Locked());

    // Reading and changing commands both give up after the wait with a message naming it.
    const std::vector<std::vector<std::string>> commands = {
        {"--wait", "1", "dump", "doc.qvx"},
        {"--wait", "1", "task", "add", "doc.qvx", "Pat", "Globex"},
        {"--wait=0.5", "report", "list", "doc.qvx"},
    };
    for (const auto& args : commands)
    {
        const QvxResult r = Run(args);
        EXPECT_EQ(r.exitCode, 1) << args[2] << "\n" << r.err;
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_THAT(r.err, HasSubstr("locked"));
        EXPECT_THAT(r.err, HasSubstr(args[0] == "--wait" ? "1 second" : "500 ms"));
        EXPECT_EQ(ReadBytes("doc.qvx"), before);
    }
    EXPECT_FALSE(std::filesystem::exists(Path("doc.qvx Backup")));

    EXPECT_EQ(Run({"--wait", "x", "dump", "doc.qvx"}).exitCode, 2) << "--wait takes seconds";
}

TEST_F(QvxRobustnessTest, CommandsWaitForAnotherCommandButNotForTheDesktopProgram)
{
    MakeDocument();

    // Another qvx (a brief holder) that lets go within the wait: the command waits and succeeds.
    {
        auto brief =
            SharedFile::OpenShared(Path("doc.qvx"), false, nullptr, SharedFile::HoldKind::brief);
        ASSERT_TRUE(brief && !brief->IsReadOnly());
        const pid_t pid = Start({"--wait", "60", "task", "add", "doc.qvx", "Pat", "Globex"}, "w");
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        int status = 0;
        EXPECT_EQ(::waitpid(pid, &status, WNOHANG), 0) << "it must wait, not give up";
        brief.reset();
        const QvxResult r = Finish(pid, "w");
        EXPECT_EQ(r.exitCode, 0) << r.err;
        EXPECT_THAT(Ok({"dump", "doc.qvx"}), HasSubstr("Globex"));
    }

    // One that does not let go: refused once the wait is over, naming --wait.
    {
        auto brief =
            SharedFile::OpenShared(Path("doc.qvx"), false, nullptr, SharedFile::HoldKind::brief);
        const QvxResult r = Run({"--wait", "0.3", "task", "add", "doc.qvx", "Pat", "Initech"});
        EXPECT_EQ(r.exitCode, 1);
        EXPECT_THAT(r.err, HasSubstr("another qvx command still held it after 300 ms"));
        EXPECT_THAT(r.err, HasSubstr("--wait"));
    }

    // The desktop program (a lasting holder): refused at once, however long --wait is.
    auto desktop = SharedFile::OpenShared(Path("doc.qvx"), false);
    ASSERT_TRUE(desktop && !desktop->IsReadOnly());
    const auto start = std::chrono::steady_clock::now();
    const QvxResult r = Run({"--wait", "60", "task", "add", "doc.qvx", "Pat", "Initech"});
    EXPECT_LT(SecondsSince(start), 30.0) << "a lasting holder is not waited for";
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("the desktop program (or another program) holds it"));
    EXPECT_THAT(Ok({"dump", "doc.qvx"}), Not(HasSubstr("Initech")));
}

TEST_F(QvxRobustnessTest, FiftyChangingCommandsAtOnceAllSucceed)
{
    MakeDocument();
    constexpr int kCommands = 50;
    std::vector<pid_t> pids;
    for (int i = 0; i < kCommands; ++i)
    {
        const std::string n = std::to_string(i);
        // Two kinds of change, so that both tasks and days are written by turns.
        pids.push_back(i % 2 == 0
                           ? Start({"task", "add", "doc.qvx", "Pat", "Task " + n}, "p" + n)
                           : Start({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11",
                                    "--type", "Taxi", "--amount", n + ".25", "--note", "n" + n},
                                   "p" + n));
    }
    for (int i = 0; i < kCommands; ++i)
    {
        const QvxResult r = Finish(pids[size_t(i)], "p" + std::to_string(i));
        EXPECT_EQ(r.exitCode, 0) << i << ": " << r.err;
    }
    const qvtest::Json dump = DumpJson("doc.qvx");
    size_t tasks = 0, expenses = 0;
    for (const qvtest::Json& t : dump["tasks"])
        tasks += t["name"].get<std::string>().rfind("Task ", 0) == 0 ? 1 : 0;
    for (const qvtest::Json& day : dump["days"])
        expenses += day["expenses"].size();
    EXPECT_EQ(tasks, size_t(kCommands / 2));
    EXPECT_EQ(expenses, size_t(kCommands / 2));
    EXPECT_FALSE(std::filesystem::exists(Path("doc.qvx Backup")));
}

TEST_F(QvxRobustnessTest, OutputThatCannotBeWrittenFailsTheCommand)
{
    MakeDocument();
    Ok({"report", "new", "doc.qvx", "--kind", "time-detail", "--name", "Hours", "--from",
        "2024-06-01", "--to", "2024-06-30", "--fields", "all"});

    // A full disk under standard output.
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"dump", "doc.qvx"},
             {"report", "export", "doc.qvx", "Hours", "--format", "csv", "--out", "-"},
             {"task", "add", "doc.qvx", "Pat", "Globex"}})
    {
        Surroundings full;
        full.stdoutPath = "/dev/full";
        const QvxResult r = RunWith(args, full);
        EXPECT_EQ(r.exitCode, 1) << args[0];
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_EQ(r.ErrLines()[0], "qvx: cannot write to standard output: No space left on device");
    }

    // A closed standard output: the document opened must not take its place and receive
    // the command's text.
    Surroundings closed;
    closed.closeStdout = true;
    const QvxResult r = RunWith({"task", "add", "doc.qvx", "Pat", "Initech"}, closed);
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "qvx: cannot write to standard output: Bad file descriptor\n");
    const std::string dump = Ok({"dump", "doc.qvx"});
    EXPECT_THAT(dump, HasSubstr("Initech")) << "the change itself was made and saved";
    EXPECT_THAT(dump, HasSubstr("Globex"));

    // A file that cannot be written whole is no success either, and leaves nothing behind.
    // (The limit leaves room for the error line, which goes to a file too.)
    Ok({"time", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--start", "09:00", "--end",
        "10:00", "--note", std::string(300, 'x')});
    std::filesystem::create_directory(Path("exports"));
    Surroundings tiny;
    tiny.fileSizeLimit = 200;
    const QvxResult toFile = RunWith(
        {"report", "export", "doc.qvx", "Hours", "--format", "csv", "--out", "exports/hours.csv"},
        tiny);
    EXPECT_EQ(toFile.exitCode, 1);
    EXPECT_THAT(toFile.err, HasSubstr(std::strerror(EFBIG)));
    EXPECT_TRUE(std::filesystem::is_empty(Path("exports")));

    // --force replaces a file, never a device or a pipe that has the name.
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    const QvxResult toPipe = Run(
        {"report", "export", "doc.qvx", "Hours", "--format", "csv", "--out", "pipe", "--force"});
    EXPECT_EQ(toPipe.exitCode, 1);
    EXPECT_THAT(toPipe.err, HasSubstr("is not a regular file"));
    EXPECT_TRUE(std::filesystem::is_fifo(Path("pipe")));
}

TEST_F(QvxRobustnessTest, NumbersAreDecimalFiniteAndWithinRange)
{
    MakeDocument();
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const std::string kDecimal = "must be a decimal number";
    struct Bad
    {
        std::vector<std::string> args;
        std::string message;
    };
    const auto expense = [](const std::string& amount)
    {
        return std::vector<std::string>{"expense",    "add",    "doc.qvx", "Acme",     "--date",
                                        "2024-06-11", "--type", "Taxi",    "--amount", amount};
    };
    const std::vector<Bad> bad = {
        {expense("1e308"), kDecimal},
        {expense("inf"), kDecimal},
        {expense("-inf"), kDecimal},
        {expense("nan"), kDecimal},
        {expense("0x10"), kDecimal},
        {expense("1,5"), kDecimal},
        {expense(" 5"), kDecimal},
        {expense("1000000000000"), kDecimal},
        {expense("-1000000000000"), kDecimal},
        {expense("5."), ""}, // accepted below
        {{"task", "set", "doc.qvx", "Acme", "--rate", "-1"}, "must not be negative"},
        {{"task", "set", "doc.qvx", "Acme", "--rate", "1e3"}, kDecimal},
        {{"task", "set", "doc.qvx", "Acme", "--cost-estimate", "-5"}, "of 0 or more"},
        {{"task", "set", "doc.qvx", "Acme", "--overtime-multiplier", "1e1"}, kDecimal},
        {{"activity", "add", "doc.qvx", "Design", "--rate", "-20"}, "billing does not use a rate"},
        {{"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--type", "Mileage",
          "--distance", "1e3"},
         "whole number of miles"},
        {{"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--type", "Mileage",
          "--distance", "10", "--rate", "-0.5"},
         "of 0 or more"},
        {{"options", "doc.qvx", "--mileage-rate", "infinity"}, kDecimal},
    };
    for (const Bad& b : bad)
    {
        if (b.message.empty())
            continue;
        const QvxResult r = Run(b.args);
        EXPECT_EQ(r.exitCode, 2) << b.args.back() << "\n" << r.err;
        EXPECT_THAT(r.err, HasSubstr(b.message));
        EXPECT_EQ(r.ErrLines().size(), 1u) << r.err;
    }
    EXPECT_EQ(ReadBytes("doc.qvx"), before) << "nothing refused was written";

    // Accepted: plain decimals, a refund, the largest amount below the bound.
    Ok(expense("12.50"));
    Ok(expense("-7.25"));
    Ok(expense("5."));
    Ok(expense("999999999999.99"));
    const qvtest::Json dump = DumpJson("doc.qvx");
    std::vector<double> amounts;
    for (const qvtest::Json& day : dump["days"])
        for (const qvtest::Json& e : day["expenses"])
            amounts.push_back(e["amount"]);
    EXPECT_EQ(amounts, (std::vector<double>{12.5, -7.25, 5.0, 999999999999.99}));
    EXPECT_THAT(Ok({"help", "expense", "add"}), HasSubstr("may be negative (a refund"));
}

TEST_F(QvxRobustnessTest, ForeignFilesAreNotCalledNewerDocuments)
{
    WriteBytes("passwd", {'r', 'o', 'o', 't', ':', 'x', ':', '0', ':', '0', '\n'});
    WriteBytes("newer.qvx", {12, 0, 0, 0, 0, 0, 0, 0});
    QvxResult r = Run({"dump", "passwd"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "qvx dump: 'passwd' is not a Quorvane Time & Expense document\n");
    r = Run({"task", "add", "passwd", "Pat", "Acme"});
    EXPECT_THAT(r.err, HasSubstr("is not a Quorvane Time & Expense document"));
    EXPECT_EQ(ReadBytes("passwd").size(), 11u);
    r = Run({"dump", "newer.qvx"});
    EXPECT_THAT(r.err, HasSubstr("written by a newer version (file version 12)"));
}

TEST_F(QvxRobustnessTest, FailedBackupLeavesNoDebrisAndSaysWhy)
{
    MakeDocument();
    // A document larger than the file size the command may write: the backup copy is cut
    // short, as on a full disk.
    Ok({"task", "set", "doc.qvx", "Acme", "--notes", std::string(6000, 'n')});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    ASSERT_GT(before.size(), 6000u);

    Surroundings small;
    small.fileSizeLimit = 4096;
    const QvxResult r = RunWith({"task", "add", "doc.qvx", "Pat", "Globex"}, small);
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("File copy error " + std::to_string(EFBIG) + ": " +
                                 std::strerror(EFBIG)));
    EXPECT_FALSE(std::filesystem::exists(Path("doc.qvx Backup")))
        << "the partial backup is removed";
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    Ok({"task", "add", "doc.qvx", "Pat", "Globex"});
}

TEST_F(QvxRobustnessTest, NamesInEveryScriptAreStoredAsGiven)
{
    Ok({"new", "doc.qvx", "--employee", "\xD0\x9F\xD0\xB0\xD1\x88\xD0\xB0"}); // Паша
    const std::string name = "Caf\xC3\xA9 \xF0\x9F\x98\x80 \xE6\x97\xA5\xE6\x9C\xAC";
    EXPECT_EQ(Ok({"task", "add", "doc.qvx", "#1", name}),
              "Added Client '" + name + "' (#2) under '\xD0\x9F\xD0\xB0\xD1\x88\xD0\xB0'\n");
    Ok({"activity", "add", "doc.qvx", "\xCE\xA3\xCF\x87\xCE\xAD\xCE\xB4\xCE\xB9\xCE\xBF"});
    Ok({"report", "new", "doc.qvx", "--kind", "time-detail", "--name", "\xE5\xA0\xB1\xE5\x91\x8A"});
    EXPECT_TRUE(qvtest::HasTask(DumpJson("doc.qvx"), name));
    const std::string text = Ok({"dump", "doc.qvx"});
    EXPECT_THAT(text, HasSubstr("\xD0\x9F\xD0\xB0\xD1\x88\xD0\xB0"));
    EXPECT_THAT(text, HasSubstr("\xCE\xA3\xCF\x87\xCE\xAD\xCE\xB4\xCE\xB9\xCE\xBF"));
    EXPECT_THAT(text, HasSubstr("\xE5\xA0\xB1\xE5\x91\x8A"));
}
