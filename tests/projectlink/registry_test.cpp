// Discovery of components from manifests, and opening sessions on them.

#include "fakes.h"
#include "projectlink/componentregistry.h"
#include "projectlink/projectsession.h"
#include "../platform/scratchdir.h"

#include <gtest/gtest.h>


using namespace projectlink;

namespace
{

std::string Manifest(const std::string& progId, const std::string& filter,
                     const std::string& library, const std::string& curVer = "")
{
    return "[Component]\nProgID=" + progId + "\nCurVer=" + (curVer.empty() ? progId + ".1" : curVer) +
           "\nFilter=" + filter + "\nLibrary=" + library + "\n";
}

class RegistryTest : public ::testing::Test
{
protected:
    ScratchDir dirA;
    ScratchDir dirB;
};

TEST_F(RegistryTest, ManifestsAreReadInFileNameOrderAndTheFirstProgIdWins)
{
    WriteText(dirA.File("b.component"), Manifest("Zeta.Plan", "Zeta (*.zet)|*.zet", "libz.so"));
    WriteText(dirA.File("a.component"), Manifest("Alpha.Plan", "Alpha (*.alp)|*.alp", "/opt/liba.so"));
    WriteText(dirA.File("notes.txt"), "not a manifest");
    WriteText(dirB.File("0.component"), Manifest("Alpha.Plan", "Other (*.x)|*.x", "other.so"));
    WriteText(dirB.File("1.component"), Manifest("Gamma.Plan", "Gamma (*.gam;*.gm)|*.gam;*.gm", "g.so"));

    DiscoveryResult r = DiscoverComponents({dirA.Path(), "/nonexistent/folder", dirB.Path()});
    EXPECT_TRUE(r.messages.empty());
    ASSERT_EQ(3u, r.components.size());
    EXPECT_EQ("Alpha.Plan", r.components[0].progId);
    EXPECT_EQ("/opt/liba.so", r.components[0].library);
    EXPECT_EQ("Zeta.Plan", r.components[1].progId);
    EXPECT_EQ(dirA.File("libz.so"), r.components[1].library) << "relative to the manifest";
    EXPECT_EQ("Gamma.Plan", r.components[2].progId);
    EXPECT_EQ("Alpha (*.alp)|*.alp|Zeta (*.zet)|*.zet|Gamma (*.gam;*.gm)|*.gam;*.gm||",
              CombinedFilter(r.components));
    EXPECT_TRUE(r.components[2].MatchesFile("/x/Plan.GM"));
    EXPECT_FALSE(r.components[2].MatchesFile("/x/plan.gmx"));

    EXPECT_EQ("", CombinedFilter({})) << "no component: an empty filter list";
}

TEST_F(RegistryTest, AnUnreadableManifestStopsDiscoveryWithMessage40021)
{
    WriteText(dirA.File("1.component"), Manifest("Alpha.Plan", "Alpha|*.alp", "a.so"));
    WriteText(dirA.File("2.component"), "[Component]\nProgID=Broken\n");
    WriteText(dirA.File("3.component"), Manifest("Late.Plan", "Late|*.late", "l.so"));

    DiscoveryResult r = DiscoverComponents({dirA.Path()});
    ASSERT_EQ(1u, r.components.size());
    EXPECT_EQ("Alpha.Plan", r.components[0].progId);
    ASSERT_EQ(2u, r.messages.size());
    EXPECT_NE(std::string::npos, r.messages[0].find("2.component"));
    EXPECT_EQ("Error 0x80070002 retrieving Project Management interfaces.", r.messages[1]);
}

TEST_F(RegistryTest, SessionFailuresAreReportedAndNeverCrash)
{
    CProject link;
    link.m_path = dirA.File("plan.xml");
    WriteText(link.m_path, "<Project/>");
    platform::ScriptedPrompter prompter;

    // The component was uninstalled.
    link.m_progId = "Gone.Plan";
    {
        CProjectSession s(link, prompter, {dirA.Path()});
        EXPECT_TRUE(Failed(s.Open(true)));
        EXPECT_FALSE(s.IsOpen());
    }
    ASSERT_EQ(2u, prompter.Messages().size());
    EXPECT_EQ("Error 0x80070002 accessing Registry - Gone.Plan.", prompter.Messages()[1]);

    // No current version.
    WriteText(dirA.File("nover.component"), "ProgID=NoVer.Plan\nFilter=N|*.n\nLibrary=x.so\n");
    link.m_progId = "NoVer.Plan";
    {
        CProjectSession s(link, prompter, {dirA.Path()});
        EXPECT_TRUE(Failed(s.Open(true)));
    }
    EXPECT_EQ("Error 0x80070002 accessing Registry - CurVer.", prompter.Messages().back());

    // A library that is not a library at all.
    WriteText(dirA.File("junk.so"), "this is not an ELF file");
    WriteText(dirA.File("junk.component"),
          Manifest("Junk.Plan", "J|*.j", "junk.so") + "ClassID={11111111-2222-3333-4444-555555555555}\n");
    link.m_progId = "Junk.Plan";
    {
        CProjectSession s(link, prompter, {dirA.Path()});
        EXPECT_TRUE(Failed(s.Open(true)));
    }
    EXPECT_EQ("Error initializing project management interface "
              "{11111111-2222-3333-4444-555555555555}.",
              prompter.Messages().back());

    // A real library without the entry point.
    WriteText(dirA.File("noentry.component"), Manifest("NoEntry.Plan", "E|*.e", QV_NOENTRY_LIBRARY));
    link.m_progId = "NoEntry.Plan";
    {
        CProjectSession s(link, prompter, {dirA.Path()});
        EXPECT_TRUE(Failed(s.Open(true)));
    }
    EXPECT_EQ("Error initializing project management interface NoEntry.Plan.1.",
              prompter.Messages().back());
    EXPECT_NE(std::string::npos,
              prompter.Messages()[prompter.Messages().size() - 2].find("QvCreateProjectComponent"));
}

} // namespace
