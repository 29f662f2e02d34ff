#include "tests/merge/Merging.h"

// What of a user's deck comes into the one that was made anew, and where. "~" stands for the generated tag.

namespace {

using namespace MergeTests;

struct Fact
{
    const char* what;
    std::string oldText;
    std::string newText;
    std::string expected;
    const char* replaced = "";
    bool isWhole = true;
};

class MergeTest : public testing::Test
{
protected:
    static void Check(const std::vector<Fact>& facts)
    {
        for (const Fact& fact : facts) {
            SCOPED_TRACE(fact.what);
            TwoDecks decks({{"T.DATA", fact.oldText}}, {{"T.DATA", fact.newText}});
            EXPECT_EQ(decks.MergeUserKeywords(), fact.isWhole);
            EXPECT_EQ(decks.Text("T.DATA"), fact.expected);
            EXPECT_EQ(decks.Replaced(), fact.replaced);
        }
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(MergeTest, UserKeywordsGoBehindTheKeywordThatTheyFollowed)
{
    Check({
        {"behind its anchor", "RUNSPEC\nDIMENS~\n1 2 3 /\nEQLDIMS\n 5 /\nOIL~\nGRID\n",
         "RUNSPEC\nDIMENS~\n4 5 6 /\nOIL~\nGRID\n", "RUNSPEC\nDIMENS~\n4 5 6 /\nEQLDIMS\n 5 /\nOIL~\nGRID\n"},
        {"ahead of the words that end the file", "RUNSPEC\nOIL~\nEQLDIMS\n 5 /\n",
         "RUNSPEC\nDIMENS~\n4 5 6 /\nOIL~\n\n-- last\n\n",
         "RUNSPEC\nDIMENS~\n4 5 6 /\nOIL~\nEQLDIMS\n 5 /\n\n-- last\n\n"},
        {"its anchor is gone: behind the one ahead of that", "RUNSPEC\nDIMENS~\n1 2 3 /\nOIL~\nEQLDIMS\n 5 /\nGRID\n",
         "RUNSPEC\nDIMENS~\n4 5 6 /\nWATER~\nGRID\n", "RUNSPEC\nDIMENS~\n4 5 6 /\nEQLDIMS\n 5 /\nWATER~\nGRID\n"},
        {"no anchor at all: behind the section's keyword", "RUNSPEC\nEQLDIMS\n 5 /\nOIL~\nGRID\n",
         "RUNSPEC\nOIL~\nGRID\n", "RUNSPEC\nEQLDIMS\n 5 /\nOIL~\nGRID\n"},
        {"the same anchor twice: by rank",
         "GRID\nPERMX~\n1 /\nPERMY~\n1 /\nPERMX~\n2 /\nMULTZ\n1 /\nPERMZ~\n3 /\nEDIT\n",
         "GRID\nPERMX~\n1 /\nPERMY~\n1 /\nPERMX~\n2 /\nPERMZ~\n3 /\nEDIT\n",
         "GRID\nPERMX~\n1 /\nPERMY~\n1 /\nPERMX~\n2 /\nMULTZ\n1 /\nPERMZ~\n3 /\nEDIT\n"},
        {"of two only one is left", "GRID\nPERMX~\n1 /\nPERMY~\n1 /\nPERMX~\n2 /\nMULTZ\n1 /\nPERMZ~\n3 /\nEDIT\n",
         "GRID\nPERMX~\n1 /\nPERMY~\n1 /\nPERMZ~\n3 /\nEDIT\n",
         "GRID\nPERMX~\n1 /\nMULTZ\n1 /\nPERMY~\n1 /\nPERMZ~\n3 /\nEDIT\n"},
        {"ahead of the end",
         "RUNSPEC\nDIMENS~\n1 2 3 /\nSCHEDULE\nDATES~\n1 JAN 2020 /\n/\nWELOPEN\nA OPEN /\n/\nEND\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\nSCHEDULE\nDATES~\n1 JAN 2020 /\n/\nEND\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\nSCHEDULE\nDATES~\n1 JAN 2020 /\n/\nWELOPEN\nA OPEN /\n/\nEND\n"},
        {"ahead of the first section", "NOECHO\nRUNSPEC\nOIL~\n", "RUNSPEC\nOIL~\n", "NOECHO\n\nRUNSPEC\nOIL~\n"},
    });
}

TEST_F(MergeTest, AUserKeywordTakesThePlaceOfItsGeneratedTwin)
{
    Check({
        {"of the same identity", "SCHEDULE\nWELSPECS\n'A' G 1 1 9 OIL /\n/\n",
         "SCHEDULE\nWELSPECS~\n'A' G 1 1 1* OIL /\n/\n", "SCHEDULE\nWELSPECS\n'A' G 1 1 9 OIL /\n/\n", "WELSPECS"},
        {"not of another", "SCHEDULE\nWELSPECS\n'B' G 1 1 9 OIL /\n/\n", "SCHEDULE\nWELSPECS~\n'A' G 1 1 1* OIL /\n/\n",
         "SCHEDULE\nWELSPECS\n'B' G 1 1 9 OIL /\n/\nWELSPECS~\n'A' G 1 1 1* OIL /\n/\n"},
        {"where a keyword has no identity, by its name", "RUNSPEC\nTABDIMS\n 2 /\nOIL~\n",
         "RUNSPEC\nTABDIMS~\n 1 /\nOIL~\n", "RUNSPEC\nTABDIMS\n 2 /\nOIL~\n", "TABDIMS"},
        {"what adds up replaces nothing", "GRID\nADD\nPORO 1 /\n/\n", "GRID\nADD~\nPORO 2 /\n/\n",
         "GRID\nADD\nPORO 1 /\n/\nADD~\nPORO 2 /\n/\n"},
        {"inside a scope of the user's nothing is replaced", "GRID\nBOX\n1 2 1 2 1 2 /\nPORO\n8*0.2 /\nENDBOX\n",
         "GRID\nPORO~\n8*0.1 /\n", "GRID\nBOX\n1 2 1 2 1 2 /\nPORO\n8*0.2 /\nENDBOX\n\nPORO~\n8*0.1 /\n"},
        {"at the same moment only", "SCHEDULE\nTSTEP~\n1 /\nWCONHIST\n'A' OPEN ORAT 5 /\n/\nTSTEP~\n1 /\n",
         "SCHEDULE\nTSTEP~\n1 /\nTSTEP~\n1 /\nWCONHIST~\n'A' OPEN ORAT 1 /\n/\n",
         "SCHEDULE\nTSTEP~\n1 /\nWCONHIST\n'A' OPEN ORAT 5 /\n/\nTSTEP~\n1 /\nWCONHIST~\n'A' OPEN ORAT 1 /\n/\n"},
        {"also where its name stands in other sections",
         "SOLUTION\nRPTRST~\nPRES /\nSCHEDULE\nTSTEP~\n1 /\nRPTRST\nSWAT /\nTSTEP~\n1 /\n",
         "SOLUTION\nRPTRST~\nPRES /\nSCHEDULE\nTSTEP~\n1 /\nTSTEP~\n1 /\nRPTRST~\nSGAS /\n",
         "SOLUTION\nRPTRST~\nPRES /\nSCHEDULE\nTSTEP~\n1 /\nRPTRST\nSWAT /\nTSTEP~\n1 /\nRPTRST~\nSGAS /\n"},
        {"each of several its own",
         "SCHEDULE\nTSTEP~\n1 /\nWCONHIST\n'A' OPEN ORAT 5 /\n/\nTSTEP~\n1 /\nWCONHIST\n'A' OPEN ORAT 6 /\n/\n",
         "SCHEDULE\nTSTEP~\n1 /\nWCONHIST~\n'A' OPEN ORAT 1 /\n/\nTSTEP~\n1 /\nWCONHIST~\n'A' OPEN ORAT 2 /\n/\n",
         "SCHEDULE\nTSTEP~\n1 /\nWCONHIST\n'A' OPEN ORAT 5 /\n/\nTSTEP~\n1 /\nWCONHIST\n'A' OPEN ORAT 6 /\n/\n",
         "WCONHIST WCONHIST"},
        {"its comment above is that of the twin",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- Tables\nTABDIMS\n 2 /\n-- Wells\nWELLDIMS~\n1 /\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- Tables\nTABDIMS~\n 1 /\n-- Wells\nWELLDIMS~\n1 /\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- Tables\nTABDIMS\n 2 /\n-- Wells\nWELLDIMS~\n1 /\n", "TABDIMS"},
        {"and its own as well", "RUNSPEC\nDIMENS~\n1 2 3 /\n-- My tables\nTABDIMS\n 2 /\n-- Wells\nWELLDIMS~\n1 /\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- Tables\nTABDIMS~\n 1 /\n-- Wells\nWELLDIMS~\n1 /\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- Tables\n-- My tables\nTABDIMS\n 2 /\n-- Wells\nWELLDIMS~\n1 /\n", "TABDIMS"},
        {"what is behind the end is no twin of what is ahead of it",
         "SCHEDULE\nWELSPECS~\n'A' G 1 1 1* OIL /\n/\nEND\nWELSPECS\n'A' G 2 2 1* OIL /\n/\n",
         "SCHEDULE\nWELSPECS~\n'A' G 1 1 1* OIL /\n/\nEND\n",
         "SCHEDULE\nWELSPECS~\n'A' G 1 1 1* OIL /\n/\nEND\nWELSPECS\n'A' G 2 2 1* OIL /\n/\n"},
        {"and what stands beside its name", "RUNSPEC\nDIMENS~\n1 2 3 /\nTABDIMS -- mine\n 2 /\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\nTABDIMS~\n 1 /\n", "RUNSPEC\nDIMENS~\n1 2 3 /\nTABDIMS -- mine\n 2 /\n",
         "TABDIMS"},
        {"a reference to a variable has no counterpart", "SCHEDULE\nWELSPECS\n'$WELL' G 1 1 9 OIL /\n/\n",
         "SCHEDULE\nWELSPECS~\n'$WELL' G 1 1 1* OIL /\n/\n",
         "SCHEDULE\nWELSPECS\n'$WELL' G 1 1 9 OIL /\n/\nWELSPECS~\n'$WELL' G 1 1 1* OIL /\n/\n"},
    });
}

TEST_F(MergeTest, ASchedulesKeywordsFollowTheMoment)
{
    const std::string january = "DATES~\n1 JAN 2020 /\n/\n";
    const std::string february = "DATES~\n1 FEB 2020 /\n/\n";
    const std::string march = "DATES~\n1 MAR 2020 /\n/\n";
    const std::string user = "WELOPEN\n'A' OPEN /\n/\n";
    const std::string start = "RUNSPEC\nSTART~\n1 JAN 2020 /\nSCHEDULE\n";
    Check({
        {"the same date in other words", "SCHEDULE\n" + january + user + february,
         "SCHEDULE\nDATES~\n 1  'JAN' 2020 00:00:00 /\n/\n" + february,
         "SCHEDULE\nDATES~\n 1  'JAN' 2020 00:00:00 /\n/\n" + user + february},
        {"half a millisecond apart is the same moment", "SCHEDULE\n" + january + user + february,
         "SCHEDULE\nDATES~\n1 JAN 2020 00:00:00.0005 /\n/\n" + february,
         "SCHEDULE\nDATES~\n1 JAN 2020 00:00:00.0005 /\n/\n" + user + february},
        {"two are not: the scope is made where time has it", "SCHEDULE\n" + january + user + march,
         "SCHEDULE\nDATES~\n1 JAN 2020 00:00:00.002 /\n/\n" + march,
         "SCHEDULE\nDATES\n1 JAN 2020 /\n/\n" + user + "DATES~\n1 JAN 2020 00:00:00.002 /\n/\n" + march},
        {"a date against a step", start + february + user + march, start + "TSTEP~\n31 /\nTSTEP~\n29 /\n",
         start + "TSTEP~\n31 /\n" + user + "TSTEP~\n29 /\n"},
        {"a step against a date", start + "TSTEP~\n31 /\n" + user + "TSTEP~\n29 /\n", start + february + march,
         start + february + user + march},
        {"a step does not reach beyond the next", start + february + "WCONHIST~\n'A' OPEN ORAT 1 /\n/\n" + user + march,
         start + "TSTEP~\n31 /\nTSTEP~\n29 /\nWCONHIST~\n'A' OPEN ORAT 1 /\n/\n",
         start + "TSTEP~\n31 /\n" + user + "TSTEP~\n29 /\nWCONHIST~\n'A' OPEN ORAT 1 /\n/\n"},
        {"a missing date goes ahead of the next", "SCHEDULE\n" + january + february + user + march,
         "SCHEDULE\n" + january + march, "SCHEDULE\n" + january + "DATES\n1 FEB 2020 /\n/\n" + user + march},
        {"behind the last, ahead of the end", "SCHEDULE\n" + january + february + user + "END\n",
         "SCHEDULE\n" + january + "END\n", "SCHEDULE\n" + january + "DATES\n1 FEB 2020 /\n/\n" + user + "END\n"},
        {"a scope that goes away again: its keyword takes the place of another", "SCHEDULE\n" + january + february,
         "SCHEDULE\n" + january, "SCHEDULE\n" + january},
        {"three in a row stay together",
         "SCHEDULE\n" + january + user + "WTEST\nA 1 P /\n/\n" + "WELTARG\nA ORAT 1 /\n/\n" + february,
         "SCHEDULE\n" + january + february,
         "SCHEDULE\n" + january + user + "WTEST\nA 1 P /\n/\n" + "WELTARG\nA ORAT 1 /\n/\n" + february},
        {"a user's date and what follows it", "SCHEDULE\n" + january + "DATES\n15 JAN 2020 /\n/\n" + user + february,
         "SCHEDULE\n" + january + february, "SCHEDULE\n" + january + "DATES\n15 JAN 2020 /\n/\n" + user + february},
        {"behind what a scope ends with: not behind the step that ends it", start + february + "TSTEP~\n1 /\n" + user,
         start + february + "TSTEP~\n2 /\n", start + february + user + "TSTEP~\n2 /\n"},
        {"suppression", "SCHEDULE\n" + january + "--@@@WELOPEN~\n--@@@'A' OPEN /\n--@@@/\n" + february,
         "SCHEDULE\n" + january + "WELOPEN~\n'A' OPEN /\n/\n" + february,
         "SCHEDULE\n" + january + "--@@@WELOPEN~\n--@@@'A' OPEN /\n--@@@/\n" + february},
    });
}

TEST_F(MergeTest, MissingScopesAreMadeAndSettled)
{
    const std::string box = "BOX~\n1 2 1 2 1 2 /\n";
    const std::string carfin = "CARFIN~\n'L' 1 2 1 2 1 2 4 4 4 /\n";
    Check({
        {"one", "GRID\nOLDTRAN~\n" + carfin + "NXFIN\n4*1 /\nENDFIN~\n", "GRID\nOLDTRAN~\n",
         "GRID\nOLDTRAN~\nCARFIN\n'L' 1 2 1 2 1 2 4 4 4 /\nNXFIN\n4*1 /\nENDFIN\n\n"},
        {"two deep", "GRID\n" + carfin + box + "PORO\n8*1 /\nENDBOX~\nENDFIN~\n", "GRID\nOLDTRAN~\n",
         "GRID\nCARFIN\n'L' 1 2 1 2 1 2 4 4 4 /\nBOX\n1 2 1 2 1 2 /\nPORO\n8*1 /\nENDBOX\n\nENDFIN\n\nOLDTRAN~\n"},
        {"three deep, with the section", "RUNSPEC\nGRID\n" + carfin + box + "PORO\n8*1 /\nENDBOX~\nENDFIN~\nPROPS\n",
         "RUNSPEC\nPROPS\n",
         "RUNSPEC\nGRID\n\nCARFIN\n'L' 1 2 1 2 1 2 4 4 4 /\nBOX\n1 2 1 2 1 2 /\nPORO\n8*1 "
         "/\nENDBOX\n\nENDFIN\n\nPROPS\n"},
        {"inside one that is there", "GRID\n" + carfin + "NXFIN~\n4*1 /\n" + box + "PORO\n8*1 /\nENDBOX~\nENDFIN~\n",
         "GRID\n" + carfin + "NXFIN~\n4*1 /\nENDFIN~\n",
         "GRID\n" + carfin + "NXFIN~\n4*1 /\nBOX\n1 2 1 2 1 2 /\nPORO\n8*1 /\nENDBOX\n\nENDFIN~\n"},
        {"two user keywords share it", "GRID\n" + box + "PORO\n8*1 /\nPERMX~\n8*1 /\nPERMY\n8*1 /\nENDBOX~\n",
         "GRID\nOLDTRAN~\n", "GRID\nBOX\n1 2 1 2 1 2 /\nPORO\n8*1 /\nPERMY\n8*1 /\nENDBOX\n\nOLDTRAN~\n"},
        {"a section", "RUNSPEC\nGRID\nPORO\n8*1 /\nPROPS\n", "RUNSPEC\nPROPS\n",
         "RUNSPEC\nGRID\n\nPORO\n8*1 /\nPROPS\n"},
        {"a section behind the end", "RUNSPEC\nOIL~\nEND\nGRID\nPORO\n8*1 /\n", "RUNSPEC\nOIL~\nEND\n",
         "RUNSPEC\nOIL~\nEND\nGRID\n\nPORO\n8*1 /\n"},
        {"an action", "SCHEDULE\nACTIONX~\nA 1 /\nFOPR > 1 /\n/\nWELOPEN\n'A' OPEN /\n/\nENDACTIO~\n",
         "SCHEDULE\nGRUPTREE~\n'G' FIELD /\n/\n",
         "SCHEDULE\nACTIONX\nA 1 /\nFOPR > 1 /\n/\nWELOPEN\n'A' OPEN /\n/\nENDACTIO\n\nGRUPTREE~\n'G' FIELD /\n/\n"},
    });
}

TEST_F(MergeTest, ACopyIsWhole)
{
    Check({
        {"comments and what stands beside the name",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n\n-- above\n--   in two lines\nEQLDIMS -- beside\n-- below\n 5 -- five\n /  "
         "end\n\n"
         "-- next\nGAS~\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- new\nGAS~\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- above\n--   in two lines\nEQLDIMS -- beside\n-- below\n 5 -- five\n /  end\n"
         "-- new\nGAS~\n"},
        {"a comment in pieces", "RUNSPEC\nDIMENS~\n1 2 3 /\nEQLDIMS\n-- one\n\n   -- two\n 5 /\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n", "RUNSPEC\nDIMENS~\n1 2 3 /\nEQLDIMS\n-- one\n\n   -- two\n 5 /\n"},
        {"without data", "RUNSPEC\nDIMENS~\n1 2 3 /\n-- above\nWATER -- beside\n-- below\nGAS~\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\nGAS~\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\n-- above\nWATER -- beside\n-- below\n\nGAS~\n"},
        {"a title", "RUNSPEC\nTITLE\n-- My Case\nOIL~\n", "RUNSPEC\nOIL~\n", "RUNSPEC\nTITLE\n-- My Case\nOIL~\n"},
        {"data without an end", "RUNSPEC\nOIL~\nEQLDIMS\n1 2\n3 4\nGAS~\n", "RUNSPEC\nOIL~\nGAS~\n",
         "RUNSPEC\nOIL~\nEQLDIMS\n1 2\n3 4\nGAS~\n"},
        {"unknown words behind its data", "RUNSPEC\nOIL~\nEQLDIMS\n1 /\nMYWORD\n 7 /\nGAS~\n", "RUNSPEC\nOIL~\nGAS~\n",
         "RUNSPEC\nOIL~\nEQLDIMS\n1 /\nMYWORD\n 7 /\nGAS~\n"},
        {"a suppressed one", "RUNSPEC\nOIL~\n--@@@EQLDIMS\n--@@@ 5 /\nGAS~\n", "RUNSPEC\nOIL~\nGAS~\n",
         "RUNSPEC\nOIL~\n--@@@EQLDIMS\n--@@@ 5 /\nGAS~\n"},
        {"it ends at a tag", "SCHEDULE\nWELSPECS\n'A' G 1 1 /\n WELOPEN ~\n 'A' OPEN /\n/\n", "SCHEDULE\n",
         "SCHEDULE\nWELSPECS\n'A' G 1 1 /\n/\n", "", false},
        {"notes behind the end", "RUNSPEC\nOIL~\nWATER\nEND\n\nNotes of mine:\nMYWORD\n-- well\n",
         "RUNSPEC\nOIL~\nEND\n", "RUNSPEC\nOIL~\nWATER\n\nEND\nNotes of mine:\nMYWORD\n-- well\n"},
        {"notes behind the end, where the new deck has none", "RUNSPEC\nOIL~\nEND\n\nNotes:\n  WATER it is\n-- well\n",
         "RUNSPEC\nOIL~\n", "RUNSPEC\nOIL~\n-- Notes:\n--   WATER it is\n-- well\n"},
        {"words between the end and a keyword behind it", "RUNSPEC\nOIL~\nEND\nNotes of mine\nWATER\n",
         "RUNSPEC\nOIL~\nEND\n", "RUNSPEC\nOIL~\nEND\nWATER\n\n", "", false},
        {"notes in a region that is skipped", "RUNSPEC\nOIL~\nSKIP\nmy notes\n 1 2 3\nENDSKIP\n/ end\nWATER\n",
         "RUNSPEC\nOIL~\n", "RUNSPEC\nOIL~\nSKIP\n\nENDSKIP\n\nWATER\n\n", "", false},
        {"what says nothing behind a keyword without data", "RUNSPEC\nOIL~\n/\nGAS~\n/ text\nWATER\n/\n",
         "RUNSPEC\nOIL~\nGAS~\n", "RUNSPEC\nOIL~\nGAS~\nWATER\n\n"},
        {"unknown words behind a generated keyword", "RUNSPEC\nDIMENS~\n1 2 3 /\nMYWORD\n 7 /\nOIL~\nWATER\n",
         "RUNSPEC\nDIMENS~\n1 2 3 /\nOIL~\n", "RUNSPEC\nDIMENS~\n1 2 3 /\nOIL~\nWATER\n\n", "", false},
    });
    EXPECT_EQ(m_log.CountOf("User keyword WELSPECS does not appear to be terminated correctly. Its data has been "
                            "truncated at a line containing a generated keyword. "),
              1);
    EXPECT_EQ(m_log.CountOf("The word MYWORD behind keyword DIMENS is no known keyword. It is not carried, nor is what "
                            "follows it."),
              1);
}

TEST_F(MergeTest, OrderingRulesBoundThePlace)
{
    Check({
        {"not ahead of what must come first, though its anchor stands ahead of that",
         "GRID\nOLDTRAN~\nCOORD\n1 /\nSPECGRID~\n1 1 1 /\nINIT~\nEDIT\n",
         "GRID\nOLDTRAN~\nSPECGRID~\n1 1 1 /\nINIT~\nEDIT\n",
         "GRID\nOLDTRAN~\nSPECGRID~\n1 1 1 /\nINIT~\nCOORD\n1 /\nEDIT\n"},
        {"not behind what must come later", "GRID\nOLDTRAN~\nINIT~\nSPECGRID\n1 1 1 /\n",
         "GRID\nOLDTRAN~\nCOORD~\n1 /\nINIT~\n", "GRID\nOLDTRAN~\nSPECGRID\n1 1 1 /\nCOORD~\n1 /\nINIT~\n"},
        {"not out of their scope, and in their order",
         "GRID\nBOX~\n1 1 1 1 1 1 /\nSPECGRID\n1 1 1 /\nCOORD\n1 /\nCOORD\n2 /\nENDBOX~\nINIT~\n", "GRID\nINIT~\n",
         "GRID\nBOX\n1 1 1 1 1 1 /\nSPECGRID\n1 1 1 /\nCOORD\n1 /\nCOORD\n2 /\nENDBOX\n\nINIT~\n"},
        {"nor into another", "GRID\nCOORD\n1 /\nINIT~\n",
         "GRID\nSPECGRID~\n1 1 1 /\nBOX~\n1 1 1 1 1 1 /\nPORO~\n1 /\nENDBOX~\nINIT~\n",
         "GRID\nSPECGRID~\n1 1 1 /\nBOX~\n1 1 1 1 1 1 /\nPORO~\n1 /\nENDBOX~\nCOORD\n1 /\nINIT~\n"},
    });
}

/// A merge expects a deck that was just made. Into another it loses nothing.
TEST_F(MergeTest, ASecondMergePutsEachKeywordOnceMore)
{
    TwoDecks decks({{"T.DATA", "RUNSPEC\nDIMENS~\n1 2 3 /\nEQLDIMS\n 5 /\nTABDIMS\n 2 /\nGRID\n"}},
                   {{"T.DATA", "RUNSPEC\nDIMENS~\n1 2 3 /\nTABDIMS~\n 1 /\nGRID\n"}});
    EXPECT_TRUE(decks.MergeUserKeywords());
    EXPECT_TRUE(decks.MergeUserKeywords());
    EXPECT_EQ(decks.Text("T.DATA"),
              "RUNSPEC\nDIMENS~\n1 2 3 /\nEQLDIMS\n 5 /\nTABDIMS\n 2 /\nEQLDIMS\n 5 /\nTABDIMS\n 2 /\nGRID\n");
}

} // namespace
