#include "tests/support/DeckTest.h"
#include "tests/support/UnprivilegedUser.h"

namespace {

using namespace DeckTests;

class LoadTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    LogRecorder m_log;
};

TEST_F(LoadTest, ExtentsTileTheFile)
{
    const std::string text = "-- header\n\nRUNSPEC\n-- about the size\nDIMENS\n 2 3 4 /\nOIL\n\n-- last words\n";
    const TestDeck deck({{"A.DATA", text}});
    EXPECT_EQ(TestDeck::Extents(deck.TopFile()), "RUNSPEC@11+26 DIMENS@37+16 OIL@53+19");
    EXPECT_EQ(deck.TopFile().HeaderText(), "-- header\n\n");
    EXPECT_EQ(deck.TopFile().TailText(), "");
    EXPECT_EQ(deck.TopFile().TailBegin(), static_cast<long long>(text.size()));
    EXPECT_EQ(deck.At("DIMENS")->GetLine(), 5);
    EXPECT_EQ(*deck.At("DIMENS")->GetText(), "DIMENS\n 2 3 4 /\n");
}

TEST_F(LoadTest, HeadsOfFiles)
{
    struct Case
    {
        const char* what;
        std::string text;
        std::string extents;
        std::string header;
        bool tagged;
    };
    const std::vector<Case> cases = {
        {"no keyword: the comments are neither header nor tail", "-- only\n-- words\n", "", "", false},
        {"an empty file", "", "", "", false},
        {"a byte order mark is the file's", "\xEF\xBB\xBFRUNSPEC\nOIL\n", "RUNSPEC@3+8 OIL@11+4", "\xEF\xBB\xBF",
         false},
        {"a tag block is no header", "-- Generated\n-- words\nRUNSPEC\n", "RUNSPEC@22+8", "-- words\n", true},
        {"a blank line, then two tag lines", "\n-- Generated\n  --!!! Program generated\nOIL\n", "OIL@40+4", "", true},
        {"no last line end", "RUNSPEC\nOIL", "RUNSPEC@0+8 OIL@8+3", "", false},
        {"line ends of two bytes", "-- h\r\nRUNSPEC\r\nOIL\r\n", "RUNSPEC@6+9 OIL@15+5", "-- h\n", false},
        {"a suppressed keyword begins at its marker", "RUNSPEC\n--@@@OIL\nGAS\n", "RUNSPEC@0+8 OIL@8+9 GAS@17+4", "",
         false},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", test.text}});
        EXPECT_EQ(TestDeck::Extents(deck.TopFile()), test.extents);
        EXPECT_EQ(deck.TopFile().HeaderText(), test.header);
        EXPECT_EQ(deck.TopFile().IsFileTagged(), test.tagged);
    }
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(LoadTest, WhatTheScanLearnsInPassingIsWhatTheFileSays)
{
    const std::string tag = "                             -- Generated\n";
    const TestDeck deck({{"A.DATA", "RUNSPEC\n--@@@OIL\nGAS" + tag +
                                        "WATER\n\n  --!!! Program generated\nMETRIC\n-- no tag\n"
                                        "SCHEDULE\nWELSPECS\n--@@@-- Generated\n P G 1 1 1* OIL /\n/\n"}});
    std::string generated;
    std::string suppressed;
    for (KeywordFileIterator place = deck.TopFile().Begin(); place != deck.TopFile().End(); ++place) {
        if (place->IsGenerated()) generated += place->GetName() + " ";
        if (place->IsSuppressed()) suppressed += place->GetName() + " ";
    }
    EXPECT_EQ(generated, "GAS WATER WELSPECS ");
    EXPECT_EQ(suppressed, "OIL ");
    EXPECT_TRUE(deck.TopFile().HasUserKeywords());
}

TEST_F(LoadTest, SecondSectionKeywordIsDroppedAndNothingElse)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nOIL\nRUNSPEC\nGAS\nINCLUDE\n'b.inc' /\nPORO\n1 /\n"},
                         {"b.inc", "GRID\nGRID\nPORO\n1 /\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC OIL GAS INCLUDE GRID PORO PORO");
    EXPECT_EQ(m_log.Texts(),
              (std::vector<std::string>{
                  "RUNSPEC should only appear once, ignoring duplicate seen in " + deck.Dir().Path("A.DATA"),
                  "GRID should only appear once, ignoring duplicate seen in " + deck.Dir().Path("b.inc")}));
    // The dropped keyword's line belongs to nobody's extent.
    EXPECT_EQ(TestDeck::Extents(deck.TopFile()), "RUNSPEC@0+8 OIL@8+4 GAS@20+4 INCLUDE@24+18 PORO@42+9");
}

TEST_F(LoadTest, DuplicateSectionThatEndsTheFileStays)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nRUNSPEC\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC OIL RUNSPEC");
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(LoadTest, TwoDecksThatLoadInTurnKeepTheirSectionsApart)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'a.inc' /\n"},
                         {"a.inc", "GRID\nPORO\n1 /\n"},
                         {"B.DATA", "RUNSPEC\nGRID\nPORO\n1 /\n"}});
    IDeck* other = deck.Manager().ImportDeck("B", deck.Dir().Path("B.DATA"), false, true, false);
    KeywordIterator position = deck.Keywords().Begin();
    EXPECT_EQ((*other->GetDeckKeywords()->Begin())->GetName(), "RUNSPEC");
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE GRID PORO");
    // Read again on its own, an included file brings its sections once more.
    deck.File("a.inc").Reload();
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE GRID PORO");
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(LoadTest, SkippedRegions)
{
    struct Case
    {
        const char* what;
        SimulatorType simulator;
        std::string text;
        std::string extents;
        int messages;
    };
    const std::vector<Case> cases = {
        {"skipped for both", SimulatorType::S100, "RUNSPEC\nSKIP\nOIL\nENDSKIP\nGAS\n",
         "RUNSPEC@0+8 SKIP@8+0 ENDSKIP@17+0 GAS@25+4", 0},
        {"the other simulator's region is read", SimulatorType::S300, "RUNSPEC\nSKIP100\nOIL\nENDSKIP\nGAS\n",
         "RUNSPEC@0+8 SKIP100@8+0 OIL@16+4 ENDSKIP@20+0 GAS@28+4", 0},
        {"its own is not", SimulatorType::S100, "RUNSPEC\nSKIP100\nOIL\nENDSKIP\nGAS\n",
         "RUNSPEC@0+8 SKIP100@8+0 ENDSKIP@20+0 GAS@28+4", 0},
        {"nested in an active one", SimulatorType::S100, "SKIP\nSKIP300\nOIL\nENDSKIP\nGAS\nENDSKIP\nWATER\n",
         "SKIP@0+0 SKIP300@5+0 ENDSKIP@17+0 ENDSKIP@29+0 WATER@37+6", 0},
        {"never closed: the rest of the file goes", SimulatorType::S100, "RUNSPEC\nSKIP\nOIL\nGAS\n",
         "RUNSPEC@0+8 SKIP@8+0", 0},
        {"never opened", SimulatorType::S100, "RUNSPEC\nENDSKIP\nOIL\n", "RUNSPEC@0+8 ENDSKIP@8+0 OIL@16+4", 1},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        m_log.Clear();
        Environment::Instance().EnableSKIPENDSKIP(true, test.simulator);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", test.text}});
        EXPECT_EQ(TestDeck::Extents(deck.TopFile()), test.extents);
        EXPECT_EQ(m_log.Count(), test.messages);
    }
    Environment::Instance().EnableSKIPENDSKIP(true, SimulatorType::S100);
    Environment::Instance().EnableOrdaleLegacySkipHandling(true);
    EXPECT_EQ(TestDeck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nSKIP\nOIL\nENDSKIP\nGAS\n"}}).Walk(), "RUNSPEC GAS");
    Environment::Instance().EnableSKIPENDSKIP(false, SimulatorType::S100);
    EXPECT_EQ(TestDeck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nSKIP\nOIL\nENDSKIP\nGAS\n"}}).Walk(),
              "RUNSPEC SKIP OIL ENDSKIP GAS");
}

TEST_F(LoadTest, ManyNestedSkips)
{
    std::string skips, ends;
    for (int i = 0; i < 10000; ++i) {
        skips += "SKIP\n";
        ends += "ENDSKIP\n";
    }
    Environment::Instance().EnableSKIPENDSKIP(true, SimulatorType::S100);
    const TestDeck deck({{"A.DATA", "RUNSPEC\n" + skips + ends + "OIL\n"}});
    EXPECT_EQ((*--deck.TopFile().End())->GetName(), "OIL");
}

TEST_F(LoadTest, ActionsAreNoted)
{
    const TestDeck deck(TestDeck::Texts{
        {"A.DATA", "SCHEDULE\nACTIONX\nA 1 /\nWBHP P > 2 /\n/\nWELOPEN\n'P' SHUT /\n/\nENDACTIO\nENDACTIO\n"
                   "WEFAC\n'P' 1 /\n/\n"}});
    EXPECT_EQ(deck.Walk(), "SCHEDULE ACTIONX WELOPEN ENDACTIO ENDACTIO WEFAC");
    EXPECT_TRUE(Environment::Instance().hasActionKeyword());
    EXPECT_TRUE(Environment::Instance().isInActionX("WELOPEN"));
    EXPECT_FALSE(Environment::Instance().isInActionX("WEFAC"));
    EXPECT_FALSE(Environment::Instance().useNewActionX());
}

TEST_F(LoadTest, IndentedKeywordsAreToldAndLeft)
{
    Environment::Instance().LogWarningForPossibleIndentedKeywords(true);
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n  OIL\nGAS\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC GAS");
    EXPECT_EQ(m_log.Texts(2),
              (std::vector<std::string>{"Possible indented keyword: OIL will be ignored, at line 2 in " +
                                        deck.Dir().Path("A.DATA")}));
}

TEST_F(LoadTest, LogicalEndOfAFile)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nEND\nOIL\nENDINC\nGAS\n"}});
    EXPECT_EQ((*deck.TopFile().LogicalEnd())->GetName(), "END");
    deck.TopFile().Reload();
    Environment::Instance().DeckTerminatedByENDKeyword(false);
    EXPECT_EQ((*deck.TopFile().LogicalEnd())->GetName(), "ENDINC");
}

TEST_F(LoadTest, FileThatCannotBeRead)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nOIL\n"}, {"b.inc", "GAS\n"}});
    std::filesystem::permissions(deck.Dir().Path("b.inc"), std::filesystem::perms::none);
    const TestSupport::UnprivilegedUser user(deck.Dir());
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL");
    EXPECT_EQ(m_log.Texts(3),
              (std::vector<std::string>{"Loading keyword file: Fails to open file:" + deck.Dir().Path("b.inc")}));
    EXPECT_TRUE(deck.File("b.inc").IsReadOnly());

    m_log.Clear();
    Environment::Instance().SetAllowIncompleteDeck(true);
    deck.File("b.inc").Reload();
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL");
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(LoadTest, KeywordThatIsRefusedLeavesTheFilesUnloaded)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nOIL\n"}, {"b.inc", "PATHS\n'A' 'b' /\n/\n"}});
    EXPECT_THROW(deck.Walk(), DeckManagerException);
    EXPECT_FALSE(deck.TopFile().IsLoaded());
    EXPECT_TRUE(deck.TopFile().IsReadOnly());
    EXPECT_TRUE(m_log.Contains("PATHS is not supported"));

    Environment::Instance().SetPATHSSupport(true);
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE PATHS OIL");
    EXPECT_FALSE(deck.TopFile().IsReadOnly());
}

} // namespace
