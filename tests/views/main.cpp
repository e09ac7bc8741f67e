#include <QApplication>

#include <cstring>
#include <vector>

int RunMainFrameTests(int argc, char** argv);
int RunEntryListTests(int argc, char** argv);
int RunWidgetTests(int argc, char** argv);
int RunReportWizardTests(int argc, char** argv);
int RunOptionsTests(int argc, char** argv);
int RunMainWindowTests(int argc, char** argv);

// One program for the suites of the views; the first argument names the suite, the
// rest go to Qt Test (a test function name, -v2, ...).
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Quorvane Time & Expense"));
    struct Suite
    {
        const char* name;
        int (*run)(int, char**);
    };
    const Suite suites[] = {
        {"mainframe", RunMainFrameTests},
        {"entrylists", RunEntryListTests},
        {"widgets", RunWidgetTests},
        {"reportwizard", RunReportWizardTests},
        {"options", RunOptionsTests},
        {"mainwindow", RunMainWindowTests},
    };
    std::vector<char*> args(argv, argv + argc);
    const char* wanted = argc > 1 ? argv[1] : nullptr;
    if (wanted && wanted[0] != '-')
        args.erase(args.begin() + 1);
    int failures = 0;
    for (const Suite& suite : suites)
        if (!wanted || wanted[0] == '-' || std::strcmp(wanted, suite.name) == 0)
            failures += suite.run(int(args.size()), args.data());
    return failures == 0 ? 0 : 1;
}
