// The desktop program holding a document on a private session bus (the test runs under
// dbus-run-session), with qvx handing its commands to it.

#include "qvxrunner.h"

#include "cli/documenthost.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <spawn.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

using qvtest::HasTask;
using qvtest::Json;
using qvtest::QvxResult;
using qvtest::QvxTest;
using qvtest::Spans;
using ::testing::HasSubstr;

// Readable failures for the texts the bus answers.
void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

// Collects the TimerChanged signals of the document's object.
class SignalLog : public QObject
{
    Q_OBJECT

public:
    QStringList states;
    QStringList tasks;

public slots:
    void OnTimerChanged(const QString& state, const QString& task, const QString&)
    {
        states << state;
        tasks << task;
    }
};

namespace
{
constexpr const char* kInterface = "org.halvery.Quorvane.Document";

std::string ReadText(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// (element, attributes) of every method, signal, property and argument, in order.
std::vector<std::map<std::string, std::string>> Members(const std::string& xml)
{
    std::vector<std::map<std::string, std::string>> members;
    const std::string text =
        QString::fromStdString(xml)
            .remove(QRegularExpression(QStringLiteral("<!--.*?-->"),
                                       QRegularExpression::DotMatchesEverythingOption))
            .toStdString();
    const size_t from = text.find(std::string("<interface name=\"") + kInterface);
    const size_t to = text.find("</interface>", from);
    if (from == std::string::npos || to == std::string::npos)
        return members;
    const QRegularExpression element(QStringLiteral("<(method|signal|property|arg)\\s([^>]*)>"));
    const QRegularExpression attribute(QStringLiteral("(\\w+)=\"([^\"]*)\""));
    auto it = element.globalMatch(QString::fromStdString(text.substr(from, to - from)));
    while (it.hasNext())
    {
        const auto m = it.next();
        std::map<std::string, std::string> member{{"element", m.captured(1).toStdString()}};
        auto attrs = attribute.globalMatch(m.captured(2));
        while (attrs.hasNext())
        {
            const auto a = attrs.next();
            member[a.captured(1).toStdString()] = a.captured(2).toStdString();
        }
        // Arguments of signals and methods read "in" when no direction is given.
        if (member["element"] == "arg" && !member.count("direction"))
            member["direction"] = "in";
        members.push_back(member);
    }
    return members;
}

// Acme (#2) with Website (#3), and Internal (#4), under "Pat Doe"; the desktop program on it.
class DbusTest : public QvxTest
{
protected:
    void SetUp() override
    {
        if (!std::getenv("DBUS_SESSION_BUS_ADDRESS"))
            GTEST_SKIP() << "no session bus (run under dbus-run-session)";
        QvxTest::SetUp();
        // No Tip of the Day: a dialog makes the program refuse commands.
        std::filesystem::create_directories(m_dir + "/config/Halvery");
        std::ofstream(m_dir + "/config/Halvery/Quorvane Time & Expense.conf")
            << "[Tip]\nStartUp=1\n";
        std::filesystem::create_directories(m_dir + "/runtime");
        ::chmod((m_dir + "/runtime").c_str(), 0700);
        Ok({"new", "doc.qvx", "--employee", "Pat Doe"});
        Ok({"task", "add", "doc.qvx", "#1", "Acme"});
        Ok({"task", "add", "doc.qvx", "Acme", "Website"});
        Ok({"task", "add", "doc.qvx", "#1", "Internal"});
        m_doc = cli::CanonicalPath(Path("doc.qvx"));
        m_object = QString::fromStdString(cli::DocumentObjectPath(m_doc));
        m_program = StartProgram();
        ASSERT_GT(m_program, 0);
        ASSERT_TRUE(WaitForDocument(m_program)) << ReadText(m_dir + "/program.log");
    }

    void TearDown() override
    {
        for (pid_t pid : m_programs)
            Stop(pid);
    }

    pid_t StartProgram()
    {
        std::vector<std::string> env;
        for (char** e = environ; *e; ++e)
        {
            const std::string var = *e;
            const std::string name = var.substr(0, var.find('='));
            if (name != "XDG_CONFIG_HOME" && name != "XDG_RUNTIME_DIR" && name != "QVX_NOW" &&
                name.rfind("LC_", 0) != 0 && name != "LANG" && name != "QT_QPA_PLATFORM")
                env.push_back(var);
        }
        env.push_back("XDG_CONFIG_HOME=" + m_dir + "/config");
        env.push_back("XDG_RUNTIME_DIR=" + m_dir + "/runtime");
        env.push_back("QT_QPA_PLATFORM=offscreen");
        env.push_back("LANG=en_US.UTF-8");
        env.push_back("LC_ALL=en_US.UTF-8");
        // Named as a user names it on a command line: relative to the folder it starts in.
        std::vector<std::string> argv = {QUORVANE_PATH, "doc.qvx"};
        std::vector<char*> argp, envp;
        for (std::string& a : argv)
            argp.push_back(a.data());
        argp.push_back(nullptr);
        for (std::string& e : env)
            envp.push_back(e.data());
        envp.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        const std::string log = m_dir + "/program.log";
        posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                         0600);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
        posix_spawn_file_actions_addchdir_np(&actions, m_dir.c_str());
        pid_t pid = 0;
        const int r = ::posix_spawn(&pid, argp[0], &actions, nullptr, argp.data(), envp.data());
        posix_spawn_file_actions_destroy(&actions);
        if (r != 0)
            return -1;
        m_programs.push_back(pid);
        return pid;
    }

    static void Stop(pid_t pid)
    {
        ::kill(pid, SIGCONT);
        ::kill(pid, SIGTERM);
        for (int i = 0; i < 100; ++i)
        {
            if (::waitpid(pid, nullptr, WNOHANG) == pid)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }

    static QString InstanceName(pid_t pid)
    {
        return QString::fromLatin1(cli::kInstanceNamePrefix) + QString::number(pid);
    }

    QDBusMessage Call(pid_t pid, const QString& interface, const QString& method,
                      const QVariantList& args = {})
    {
        QDBusMessage m =
            QDBusMessage::createMethodCall(InstanceName(pid), m_object, interface, method);
        m.setArguments(args);
        return QDBusConnection::sessionBus().call(m, QDBus::Block, 5000);
    }

    QVariant Property(const char* name, pid_t pid = 0)
    {
        const QDBusMessage r = Call(
            pid ? pid : m_program, QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("Get"), {QString::fromLatin1(kInterface), QString::fromLatin1(name)});
        if (r.type() != QDBusMessage::ReplyMessage || r.arguments().isEmpty())
            return QVariant();
        return r.arguments().at(0).value<QDBusVariant>().variant();
    }

    // The program `pid` offers the document on the bus.
    bool WaitForDocument(pid_t pid)
    {
        const QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired())
        {
            if (Property("DocumentPath", pid).toString().toStdString() == m_doc)
                return true;
            if (::waitpid(pid, nullptr, WNOHANG) == pid)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    }

    // Lets queued signals arrive until `done` holds or two seconds passed.
    template <class F> static bool ProcessUntil(F done)
    {
        const QDeadlineTimer deadline(2000);
        while (!done() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        return done();
    }

    std::string m_doc;
    QString m_object;
    pid_t m_program = 0;
    std::vector<pid_t> m_programs;
};

TEST_F(DbusTest, TimerAndEntriesGoThroughTheProgram)
{
    SignalLog log;
    ASSERT_TRUE(QDBusConnection::sessionBus().connect(
        QString(), m_object, QString::fromLatin1(kInterface), QStringLiteral("TimerChanged"), &log,
        SLOT(OnTimerChanged(QString, QString, QString))));
    EXPECT_EQ(Property("State").toString(), QStringLiteral("inactive"));

    // Without the program qvx could not change the held file at all.
    QvxResult r = Run({"--no-forward", "task", "add", "doc.qvx", "Acme", "Support"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("the desktop program (or another program) holds it"));

    std::string out = Ok({"start", "doc.qvx", "Acme/Website"});
    EXPECT_THAT(out, HasSubstr("Started Acme/Website at "));
    EXPECT_EQ(Property("State").toString(), QStringLiteral("running"));
    EXPECT_EQ(Property("Task").toString(), QStringLiteral("Acme/Website"));
    EXPECT_EQ(Property("TaskId").toUInt(), 3u);
    EXPECT_TRUE(Property("Start").toString().contains(
        QRegularExpression(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}T\\d{2}:\\d{2}$"))));
    EXPECT_TRUE(ProcessUntil([&] { return log.states.contains(QStringLiteral("running")); }));
    EXPECT_EQ(Ok({"status", "doc.qvx", "--format", "%S|%t|%m"}).substr(0, 21),
              "running|Acme/Website|");

    const QDBusMessage status =
        Call(m_program, QString::fromLatin1(kInterface), QStringLiteral("Status"));
    ASSERT_EQ(status.arguments().size(), 5) << status.errorMessage().toStdString();
    EXPECT_EQ(status.arguments().at(0).toString(), QStringLiteral("running"));
    EXPECT_EQ(status.arguments().at(1).toString(), QStringLiteral("Acme/Website"));

    out = Ok({"pause", "doc.qvx"});
    EXPECT_THAT(out, HasSubstr("Paused Acme/Website"));
    EXPECT_TRUE(Property("Paused").toBool());
    EXPECT_EQ(Ok({"status", "doc.qvx"}), "Paused: Acme/Website\n");
    EXPECT_TRUE(ProcessUntil([&] { return log.states.contains(QStringLiteral("paused")); }));

    out = Ok({"resume", "doc.qvx"});
    EXPECT_THAT(out, HasSubstr("Resumed Acme/Website at "));
    EXPECT_EQ(Property("State").toString(), QStringLiteral("running"));

    out = Ok({"stop", "doc.qvx"});
    EXPECT_THAT(out, HasSubstr("Stopped Acme/Website"));
    EXPECT_EQ(Property("State").toString(), QStringLiteral("inactive"));
    EXPECT_TRUE(ProcessUntil([&] { return log.states.size() >= 4; }));
    EXPECT_EQ(log.states.last(), QStringLiteral("inactive"));

    // A conflict is refused without --on-conflict and resolved with it.
    Ok({"time", "add", "doc.qvx", "Internal", "--date", "2024-06-10", "--start", "09:00", "--end",
        "10:00"});
    r = Run({"time", "add", "doc.qvx", "Acme", "--date", "2024-06-10", "--start", "09:30", "--end",
             "11:00"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("conflicts with another Time Entry"));
    Ok({"time", "add", "doc.qvx", "Acme", "--date", "2024-06-10", "--start", "09:30", "--end",
        "11:00", "--on-conflict", "adjust-this"});

    out = Ok({"task", "add", "doc.qvx", "Acme", "Support"});
    EXPECT_THAT(out, HasSubstr("'Support' (#5) under 'Acme'"));
    // From a caller in another folder: the program still saves its own file.
    const QDBusMessage added = Call(
        m_program, QString::fromLatin1(kInterface), QStringLiteral("Run"),
        {QStringList{QStringLiteral("task"), QStringLiteral("add"), QString::fromStdString(m_doc),
                     QStringLiteral("Acme"), QStringLiteral("Hosting")},
         QStringLiteral("/")});
    ASSERT_EQ(added.arguments().size(), 3) << added.errorMessage().toStdString();
    EXPECT_EQ(added.arguments().at(0).toInt(), 0)
        << added.arguments().at(2).toByteArray().toStdString();

    // A question with no --yes or --no is refused, as qvx refuses without a terminal.
    r = Run({"task", "rm", "doc.qvx", "Internal"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("run again with --yes or --no"));
    EXPECT_EQ(Property("State").toString(), QStringLiteral("inactive"));

    // Usage mistakes keep their own status.
    r = Run({"start", "doc.qvx"});
    EXPECT_EQ(r.exitCode, 2) << r.err;

    const QvxResult dump = Run({"dump", "--json", "doc.qvx"});
    ASSERT_EQ(dump.exitCode, 0) << dump.err;
    const Json program = Json::parse(dump.out);
    EXPECT_TRUE(HasTask(program, "Support"));
    EXPECT_TRUE(HasTask(program, "Internal"));
    const std::vector<std::string> expected = {"4 09:00-10:00", "2 10:00-11:00"};
    EXPECT_EQ(Spans(program, "20240610"), expected);

    // The program saved each change: the file itself holds the same.
    const QvxResult file = Run({"--no-forward", "dump", "--json", "doc.qvx"});
    ASSERT_EQ(file.exitCode, 0) << file.err;
    EXPECT_EQ(file.out, dump.out);
    Stop(m_program);
    const Json saved = DumpJson("doc.qvx");
    EXPECT_TRUE(HasTask(saved, "Support"));
    EXPECT_TRUE(HasTask(saved, "Hosting"));
    EXPECT_EQ(Spans(saved, "20240610"), expected);
    EXPECT_FALSE(std::filesystem::exists(Path("doc.qvx Backup")));
}

TEST_F(DbusTest, ProgramThatStoppedAnsweringChangesNothing)
{
    const std::string before = Run({"--no-forward", "dump", "--json", "doc.qvx"}).out;
    ASSERT_EQ(::kill(m_program, SIGSTOP), 0);
    const auto started = std::chrono::steady_clock::now();
    const QvxResult r = Run({"start", "doc.qvx", "Internal"});
    const auto waited = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("does not answer"));
    EXPECT_THAT(r.err, HasSubstr("nothing was changed"));
    EXPECT_LT(waited, std::chrono::seconds(6));
    EXPECT_EQ(Run({"--no-forward", "dump", "--json", "doc.qvx"}).out, before);

    // A caller that gave up before the program came back is not served late.
    {
        QDBusConnection leaver =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("leaver"));
        QDBusMessage run =
            QDBusMessage::createMethodCall(InstanceName(m_program), m_object,
                                           QString::fromLatin1(kInterface), QStringLiteral("Run"));
        run << QStringList{QStringLiteral("start"), QStringLiteral("doc.qvx"),
                           QStringLiteral("Internal")}
            << QString::fromStdString(m_dir);
        leaver.asyncCall(run, 500);
        ProcessUntil([] { return false; });
        QDBusConnection::disconnectFromBus(QStringLiteral("leaver"));
    }

    ASSERT_EQ(::kill(m_program, SIGCONT), 0);
    EXPECT_EQ(Property("State").toString(), QStringLiteral("inactive"));
    EXPECT_THAT(Ok({"status", "doc.qvx"}), HasSubstr("Inactive")) << "the program runs on";
}

TEST_F(DbusTest, SecondProgramIsReadOnlyAndQvxTalksToTheFirst)
{
    const pid_t second = StartProgram();
    ASSERT_GT(second, 0);
    // Nothing outside the second program shows when it has read the file; give it time.
    std::this_thread::sleep_for(std::chrono::seconds(3));
    ASSERT_NE(::waitpid(second, nullptr, WNOHANG), second) << ReadText(m_dir + "/program.log");
    // It has the file read-only and offers no document on the bus.
    int offering = 0;
    for (const QString& name :
         QDBusConnection::sessionBus().interface()->registeredServiceNames().value())
        offering += name.startsWith(QString::fromLatin1(cli::kInstanceNamePrefix));
    EXPECT_EQ(offering, 1);
    EXPECT_FALSE(Property("DocumentPath", second).isValid());

    const std::string out = Ok({"start", "doc.qvx", "Internal"});
    EXPECT_THAT(out, HasSubstr("Started Internal"));
    EXPECT_EQ(Property("Task").toString(), QStringLiteral("Internal"));
}

TEST_F(DbusTest, IntrospectionMatchesTheInterfaceDescription)
{
    const QDBusMessage r = Call(m_program, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                QStringLiteral("Introspect"));
    ASSERT_EQ(r.type(), QDBusMessage::ReplyMessage) << r.errorMessage().toStdString();
    const auto live = Members(r.arguments().value(0).toString().toStdString());
    const auto described = Members(ReadText(QV_DBUS_XML));
    ASSERT_GE(described.size(), 20u) << "Run, Status, TimerChanged and seven properties";
    EXPECT_EQ(live, described);
}

TEST_F(DbusTest, RunRefusesWhatQvxRefuses)
{
    // Run is the bus's own entry: the same statuses and texts as qvx prints.
    QDBusMessage r =
        Call(m_program, QString::fromLatin1(kInterface), QStringLiteral("Run"),
             {QStringList{QStringLiteral("frobnicate")}, QString::fromStdString(m_dir)});
    ASSERT_EQ(r.arguments().size(), 3) << r.errorMessage().toStdString();
    EXPECT_EQ(r.arguments().at(0).toInt(), 2);
    EXPECT_TRUE(r.arguments().at(2).toByteArray().contains("unknown command 'frobnicate'"));

    r = Call(m_program, QString::fromLatin1(kInterface), QStringLiteral("Run"),
             {QStringList{QStringLiteral("tasks"), QStringLiteral("doc.qvx")},
              QStringLiteral("/no/such/folder")});
    ASSERT_EQ(r.arguments().size(), 3);
    EXPECT_EQ(r.arguments().at(0).toInt(), 1);
    EXPECT_TRUE(r.arguments().at(2).toByteArray().contains("working directory"));

    r = Call(m_program, QString::fromLatin1(kInterface), QStringLiteral("Run"),
             {QStringList{QStringLiteral("tasks"), QStringLiteral("doc.qvx")},
              QString::fromStdString(m_dir)});
    ASSERT_EQ(r.arguments().size(), 3);
    EXPECT_EQ(r.arguments().at(0).toInt(), 0);
    EXPECT_TRUE(r.arguments().at(1).toByteArray().contains("Website"));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

#include "dbus_test.moc"
