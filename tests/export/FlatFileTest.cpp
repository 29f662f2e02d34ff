#include "tests/support/DeckTest.h"
#include <deckmanager/Exporter.h>

namespace {

using namespace DeckTests;

/// The flat file of a deck, by the form that leaves nothing out.
std::string Whole(const TestDeck& deck)
{
    ExportReport report;
    const std::string name = deck.Dir().Path("out/flat.DATA");
    const KeywordIterator begin = deck.Keywords().Begin();
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), begin, deck.Keywords().PhysicalEnd(), name, {}, &report));
    return deck.Dir().Read("out/flat.DATA");
}

/// The same by the form that writes keywords alone.
std::string Plain(const TestDeck& deck)
{
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), "flat.DATA"));
    return deck.Dir().Read("flat.DATA");
}

class FlatFileTest : public testing::Test
{
protected:
    FlatFileTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    TestSupport::CleanEnvironment m_environment;
    LogRecorder m_log;
};

struct Case
{
    const char* what;
    TestDeck::Texts files;
    std::string whole;
    std::string plain;
};

TEST_F(FlatFileTest, IncludesAreReplacedByWhatTheyInclude)
{
    const std::string bom = "\xEF\xBB\xBF";
    const Case cases[] = {
        {"one include",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n 'b.inc' /\nGRID\n"}, {"b.inc", "OIL\n"}},
         "RUNSPEC\nOIL\nGRID\n",
         "RUNSPEC\nOIL\nGRID\n"},
        {"headers, and the comments above the keywords below an include",
         {{"A.DATA", "-- top\nRUNSPEC\n-- above\nINCLUDE\n 'b.inc' /\n-- behind\nGRID\n-- last\n"},
          {"b.inc", "-- head\nOIL\n-- tail of b\n"}},
         "-- top\nRUNSPEC\n-- above\n-- head\nOIL\n-- tail of b\n-- behind\nGRID\n-- last\n",
         "RUNSPEC\n-- above\nOIL\n-- tail of b\n-- behind\nGRID\n-- last\n"},
        {"comments on the include",
         {{"A.DATA",
           "RUNSPEC\nINCLUDE -- why\n-- whose\n\n 'b.inc' / the old one\nGRID\nINCLUDE\n'b.inc'--short\n/\nNOECHO\n"},
          {"b.inc", "OIL\n"}},
         "RUNSPEC\n-- why\n-- whose\n-- the old one\nOIL\nGRID\n--short\nOIL\nNOECHO\n",
         "RUNSPEC\nOIL\nGRID\nOIL\nNOECHO\n"},
        {"names without quotes, words in unusual places, lines that would mean something elsewhere",
         {{"A.DATA", "NOECHO\nINCLUDE\nb.inc/ one\nINCLUDE\nb.inc--two\n-- three\n/ four\nINCLUDE\n'b.inc' five /\n"
                     "INCLUDE -- Generated six\n-- Generated seven\n'b.inc' / -- Generated eight\n"
                     "INCLUDE\n'b.inc' / --@@@nine\nINCLUDE\n'b.inc'\n'c.inc' / ten\nGRID\n"},
          {"b.inc", "OIL\n"}},
         "NOECHO\n-- one\nOIL\n--two\n-- three\n-- four\nOIL\n-- five /\nOIL\n-- six\n-- seven\n-- -- Generated eight\n"
         "OIL\n-- --@@@nine\nOIL\nOIL\n'c.inc' / ten\nGRID\n",
         "NOECHO\nOIL\nOIL\nOIL\nOIL\nOIL\nOIL\n'c.inc' / ten\nGRID\n"},
        {"files without keywords, and data ahead of the first keyword",
         {{"A.DATA", "GRID\nPORO\nINCLUDE\n 'b.inc' /\n/\nPERMX\nINCLUDE\n 'c.inc' /\nINCLUDE\n 'd.inc' /\nEDIT\n"},
          {"b.inc", "-- numbers\n 0.1 0.2\n"},
          {"c.inc", "-- more\n 1 2 /\nPERMY\n 3 /\n"},
          {"d.inc", "-- only this\n"}},
         "GRID\nPORO\n-- numbers\n 0.1 0.2\n/\nPERMX\n-- more\n 1 2 /\nPERMY\n 3 /\n-- only this\nEDIT\n",
         "GRID\nPORO\n-- numbers\n 0.1 0.2\n/\nPERMX\n-- more\n 1 2 /\nPERMY\n 3 /\n-- only this\nEDIT\n"},
        {"what ends the deck, and what ends a file",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n 'b.inc' /\nEND\n-- behind\nGRID\nENDINC\nNOECHO\n"},
          {"b.inc", "OIL\nENDINC -- here\n\nGAS\n -- end\n 1 2\n"}},
         "RUNSPEC\nOIL\n-- ENDINC -- here\n\n-- GAS\n -- end\n--  1 2\nEND\n-- behind\nGRID\nENDINC\nNOECHO\n",
         "RUNSPEC\nOIL\n"},
        {"byte order marks",
         {{"A.DATA", bom + "-- top\nRUNSPEC\nINCLUDE\n 'b.inc' /\nINCLUDE\n 'c.inc' /\n"},
          {"b.inc", bom + "OIL\n"},
          {"c.inc", bom + "-- c\n"}},
         bom + "-- top\nRUNSPEC\nOIL\n-- c\n",
         "RUNSPEC\nOIL\n-- c\n"},
        {"missing line ends",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n 'b.inc' /\nINCLUDE\n 'b.inc' /"}, {"b.inc", "OIL"}},
         "RUNSPEC\nOIL\nOIL",
         "RUNSPEC\nOIL\nOIL"},
        {"data that only the end of a file ends",
         {{"A.DATA", "SCHEDULE\nINCLUDE\n 'b.inc' /\nNOECHO\nWELSPECS\n A /\n"}, {"b.inc", "DATES\n 1 JAN 2020 /"}},
         "SCHEDULE\nDATES\n 1 JAN 2020 /\n/\nNOECHO\nWELSPECS\n A /\n",
         "SCHEDULE\nDATES\n 1 JAN 2020 /\n/\nNOECHO\nWELSPECS\n A /\n"},
        {"line ends of the top file",
         {{"A.DATA", "RUNSPEC\r\nINCLUDE\r\n 'b.inc' /\r\nGRID\n"}, {"b.inc", "-- b\nOIL\n-- x\r\n"}},
         "RUNSPEC\r\n-- b\r\nOIL\r\n-- x\r\nGRID\n",
         "RUNSPEC\r\nOIL\r\n-- x\r\nGRID\n"},
        {"an include that brings nothing in",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n 'gone.inc' /\n-- above\nGRID\nINCLUDE\n 'A.DATA' /\nEDIT\n"}},
         "RUNSPEC\nINCLUDE\n 'gone.inc' /\n-- above\nGRID\nINCLUDE\n 'A.DATA' /\nEDIT\n",
         "RUNSPEC\n-- above\nGRID\nEDIT\n"},
        {"suppressed includes bring nothing to life",
         {{"A.DATA", "RUNSPEC\n--@@@INCLUDE\n--@@@ 'b.inc' /\n-- above\nGRID\n"}, {"b.inc", "OIL\n"}},
         "RUNSPEC\n--@@@INCLUDE\n--@@@ 'b.inc' /\n-- above\nGRID\n",
         "RUNSPEC\n--@@@INCLUDE\n--@@@ 'b.inc' /\n-- above\nGRID\n"},
        {"a tag line is not another keyword's",
         {{"A.DATA", "NOECHO\nINCLUDE\n 'b.inc' /\nGRID\n"}, {"b.inc", "-- Generated\nOIL\n"}},
         "NOECHO\n--\n-- Generated\nOIL\nGRID\n",
         "NOECHO\nOIL\nGRID\n"},
        {"a file tag speaks for its file",
         {{"A.DATA", "-- Generated\nRUNSPEC\nINCLUDE\n 'b.inc' /\n"}, {"b.inc", "-- b\nTABDIMS\n 1 /\n"}},
         "--\n-- Generated\nRUNSPEC\n-- b\nTABDIMS\n 1 /\n",
         "RUNSPEC\nTABDIMS\n 1 /\n"},
        {"a tag behind a byte order mark",
         {{"A.DATA", bom + "-- Generated\nRUNSPEC\nINCLUDE\n 'b.inc' /\n"}, {"b.inc", bom + "OIL\n"}},
         bom + "--\n-- Generated\nRUNSPEC\nOIL\n",
         "RUNSPEC\nOIL\n"},
        {"a deck that is generated as a whole",
         {{"A.DATA", "-- Generated\nRUNSPEC\n-- x\nTABDIMS\n 1 /\nINCLUDE\n 'b.inc' /\n"},
          {"b.inc", "-- Generated\nOIL\n"}},
         "-- Generated\nRUNSPEC\n-- x\nTABDIMS\n 1 /\n-- Generated\nOIL\n",
         "RUNSPEC\n-- x\nTABDIMS\n 1 /\nOIL\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TestDeck deck(c.files);
        EXPECT_EQ(Whole(deck), c.whole);
        EXPECT_EQ(Plain(deck), c.plain);
        for (const auto& [name, text] : c.files)
            EXPECT_EQ(deck.Dir().Read(name), text);
    }
}

} // namespace
