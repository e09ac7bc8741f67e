#include "platform/settingsstore.h"
#include "scratchdir.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <utility>

using platform::SettingsStore;

TEST(SettingsStore, AwkwardKeysAndValuesSurviveTheFile)
{
    ScratchDir dir;
    const std::string path = dir.File("nested/folder/settings.conf");
    const std::pair<std::string, std::string> values[] = {
        {"InvoiceAddress", "Halvery Ltd\n12 Long Road\r\nTown"},
        {"Path", "C:\\work\\new\\table.qvx"},
        {"Padded", "  two spaces each side  "},
        {"Tabs", "\tx\t"},
        {"Bell", "a\x07z"},
        {"Unicode", "Zoë – 5 €"},
        {"Empty", ""},
        {"a=b", "key with an equals sign"},
        {"[odd", "key that looks like a section"},
        {";odd", "key that looks like a comment"},
    };
    {
        SettingsStore store(path);
        ASSERT_TRUE(store.Load());
        for (const auto& [key, value] : values)
            store.SetString("Settings", key, value);
        store.SetInt("Recent File List", "Count", -42);
        std::string error;
        ASSERT_TRUE(store.Save(&error)) << error;
    }
    // One key per line: the escapes keep line breaks out of the file's structure.
    const std::string text = ReadText(path);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 14) << text;

    SettingsStore again(path);
    std::string warning;
    ASSERT_TRUE(again.Load(&warning)) << warning;
    for (const auto& [key, value] : values)
    {
        EXPECT_TRUE(again.Has("Settings", key)) << key;
        EXPECT_EQ(again.GetString("Settings", key, "default"), value) << key;
    }
    EXPECT_EQ(again.GetInt("Recent File List", "Count", 0), -42);
}

TEST(SettingsStore, HandWrittenFileIsRead)
{
    ScratchDir dir;
    const std::string path = dir.File("s.conf");
    WriteText(path, "; written by hand\r\n[Settings]\r\n  TimeInterval = 4 \r\n\r\n# note\r\n"
                    "[Tip]\r\nTimeStamp=Mon Mar  4 10:00:00 2024\r\n");
    SettingsStore store(path);
    ASSERT_TRUE(store.Load());
    EXPECT_EQ(store.GetInt("Settings", "TimeInterval", 0), 4);
    EXPECT_EQ(store.GetString("Tip", "TimeStamp", ""), "Mon Mar  4 10:00:00 2024");
}

TEST(SettingsStore, DamagedOrUnreadableFileGivesDefaultsAndAWarning)
{
    ScratchDir dir;
    const struct
    {
        const char* text;
        int line;
    } cases[] = {
        {"[Settings]\nTimeInterval=4\nthis line has no equals sign\n", 3},
        {"TimeInterval=4\n[Settings]\n", 1},
        {"[Settings]\nBad=escape \\q here\n", 2},
        {"[Settings\nA=1\n", 1},
        {"[Settings]\nA=1\nB=\\x4\n", 3},
    };
    for (const auto& c : cases)
    {
        const std::string path = dir.File("damaged.conf");
        WriteText(path, c.text);
        SettingsStore store(path);
        store.SetInt("Settings", "Stale", 1);
        std::string warning;
        EXPECT_FALSE(store.Load(&warning)) << c.text;
        EXPECT_EQ(warning, "The settings file '" + path + "' is damaged (line " + std::to_string(c.line) +
                               "); the default settings are used and the file is rewritten when "
                               "they are next saved.");
        EXPECT_EQ(store.GetInt("Settings", "TimeInterval", 0), 0) << "defaults apply";
        EXPECT_FALSE(store.Has("Settings", "Stale"));
    }

    const std::string binary = dir.File("binary.conf");
    WriteText(binary, std::string("[Settings]\nA=1\0\x01\x02", 17));
    SettingsStore damaged(binary);
    EXPECT_FALSE(damaged.Load());
    // The next save replaces the damaged file with a good one.
    damaged.SetInt("Settings", "A", 2);
    ASSERT_TRUE(damaged.Save());
    SettingsStore repaired(binary);
    ASSERT_TRUE(repaired.Load());
    EXPECT_EQ(repaired.GetInt("Settings", "A", 0), 2);

    SettingsStore folder(dir.Path());
    std::string warning;
    EXPECT_FALSE(folder.Load(&warning));
    EXPECT_NE(warning.find("could not be read"), std::string::npos) << warning;

    SettingsStore missing(dir.File("absent.conf"));
    EXPECT_TRUE(missing.Load()) << "a missing file is an empty store";
}

TEST(SettingsStore, SaveKeepsWhatAnotherProgramChangedMeanwhile)
{
    ScratchDir dir;
    const std::string path = dir.File("shared.conf");
    SettingsStore gui(path), cli(path);
    gui.SetInt("Settings", "InvoiceNumber", 7);
    gui.SetInt("Settings", "Obsolete", 1);
    ASSERT_TRUE(gui.Save());
    ASSERT_TRUE(gui.Load());
    ASSERT_TRUE(cli.Load());

    cli.SetInt("Settings", "InvoiceNumber", 8);
    ASSERT_TRUE(cli.Save());
    gui.SetInt("Settings", "TimeInterval", 4);
    gui.Remove("Settings", "Obsolete");
    // A refresh sees what the other program wrote and keeps this one's unsaved changes.
    ASSERT_TRUE(gui.Refresh());
    EXPECT_EQ(gui.GetInt("Settings", "InvoiceNumber", 0), 8);
    EXPECT_EQ(gui.GetInt("Settings", "TimeInterval", 0), 4);
    EXPECT_FALSE(gui.Has("Settings", "Obsolete"));
    ASSERT_TRUE(gui.Save());

    SettingsStore check(path);
    ASSERT_TRUE(check.Load());
    EXPECT_EQ(check.GetInt("Settings", "InvoiceNumber", 0), 8);
    EXPECT_EQ(check.GetInt("Settings", "TimeInterval", 0), 4);
    EXPECT_FALSE(check.Has("Settings", "Obsolete"));
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path()))
        EXPECT_EQ(entry.path().filename(), "shared.conf") << "no temporary file is left behind";
}

TEST(SettingsStore, FailedSaveReportsAndLeavesNothingHalfWritten)
{
    ScratchDir dir;
    WriteText(dir.File("plain-file"), "x");
    SettingsStore store(dir.File("plain-file/settings.conf"));
    store.SetInt("Settings", "A", 1);
    std::string error;
    EXPECT_FALSE(store.Save(&error));
    EXPECT_EQ(error.rfind("The settings could not be saved to '" + dir.File("plain-file/settings.conf") + "'", 0), 0u)
        << error;
    EXPECT_EQ(ReadText(dir.File("plain-file")), "x");
}

TEST(SettingsStore, NumbersThatDoNotParseReadAsTheDefault)
{
    SettingsStore store; // memory only
    store.SetString("Settings", "Word", "ten");
    store.SetString("Settings", "Trailing", "10px");
    store.SetString("Settings", "Huge", "99999999999");
    store.SetString("Settings", "Spaced", " 12 ");
    EXPECT_EQ(store.GetInt("Settings", "Word", 5), 5);
    EXPECT_EQ(store.GetInt("Settings", "Trailing", 5), 5);
    EXPECT_EQ(store.GetInt("Settings", "Huge", 5), 5);
    EXPECT_EQ(store.GetInt("Settings", "Spaced", 5), 12);
    EXPECT_EQ(store.GetInt("Other", "Word", 5), 5);
    EXPECT_TRUE(store.Save()) << "a store without a path keeps everything in memory";
    EXPECT_EQ(store.GetString("Settings", "Word", ""), "ten");
}

TEST(SettingsStore, DefaultPathFollowsTheConfigurationFolder)
{
    {
        ScopedEnv config("XDG_CONFIG_HOME", "/srv/config");
        EXPECT_EQ(SettingsStore::DefaultPath(), "/srv/config/Halvery/Quorvane Time & Expense.conf");
    }
    {
        ScopedEnv config("XDG_CONFIG_HOME", "relative/ignored");
        ScopedEnv home("HOME", "/home/pat");
        EXPECT_EQ(SettingsStore::DefaultPath(), "/home/pat/.config/Halvery/Quorvane Time & Expense.conf");
    }
}
