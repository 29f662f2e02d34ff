#include "tests/deckman/Program.h"

namespace DeckmanTests {

namespace {

/// Each difference as `kind where old new`.
struct Case
{
    const char* what;
    std::string oldText;
    std::string newText;
    std::vector<std::string> differences;
};

const std::string wells = "SCHEDULE\nWCONPROD\n A OPEN ORAT 100 /\n B OPEN ORAT 200 /\n/\n";
const std::string start = "RUNSPEC\nSTART\n 1 JAN 2020 /\nSCHEDULE\n";

std::string Dates(const std::string& date, const std::string& keywords = "")
{
    return "DATES\n " + date + " /\n/\n" + keywords;
}

std::string Target(int value)
{
    return "WELTARG\n A ORAT " + std::to_string(value) + " /\n/\n";
}

const Case cases[] = {
    {"layout, quotes, comments, repeats and what is left out at the end",
     "GRID\nPORO\n 3*0.2 1* /\nBOX\n 6*1 /\nPERMX\n 1 2 3 4 2* /\nSCHEDULE\nWCONPROD\n A OPEN ORAT 100 6* /\n/\n",
     "GRID\n-- porosity\nPORO -- here\n 0.2 2.0E-1\n -- more\n .2 1* / end\n\nBOX\n 1 1 2*1 1 1 /\nPERMX\n 1 2 3 4 /\n"
     "SCHEDULE\nWCONPROD\n 'A' 'OPEN' ORAT 1E2 /\n\n/\n",
     {}},
    {"an item of a record in a list",
     wells,
     "SCHEDULE\nWCONPROD\n A OPEN ORAT 100 /\n B OPEN WRAT 250 /\n/\n",
     {"changed WCONPROD[B].MODE \"ORAT\" \"WRAT\"", "changed WCONPROD[B].ORAT 200.0 250.0"}},
    {"records that come and go, in another order",
     wells,
     "SCHEDULE\nWCONPROD\n B OPEN ORAT 201 /\n A OPEN ORAT 100 /\n/\n",
     {"changed WCONPROD[B].ORAT 200.0 201.0"}},
    {"the same keyword with other records",
     "SCHEDULE\nWEFAC\n A 0.5 /\n B 0.6 /\n/\n",
     "SCHEDULE\nWEFAC\n B 0.6 /\n C 0.7 /\n/\n",
     {"removed WEFAC[A] {\"WELL\":\"A\",\"FACTOR\":0.5,\"NETWORK\":null} null",
      "added WEFAC[C] null {\"WELL\":\"C\",\"FACTOR\":0.7,\"NETWORK\":null}"}},
    {"numbers where a name leads elsewhere",
     "SCHEDULE\nCOMPDAT\n A 1 1 1 1 OPEN /\n A 1 1 2 2 OPEN /\n/\n",
     "SCHEDULE\nCOMPDAT\n A 1 1 1 1 OPEN /\n A 1 1 2 2 SHUT /\n/\n",
     {"changed COMPDAT[1].STATE \"OPEN\" \"SHUT\""}},
    {"a name that nobody can type",
     std::string("SCHEDULE\nWEFAC\n A\0 0.5 /\n/\n", 27),
     std::string("SCHEDULE\nWEFAC\n A\0 0.6 /\n/\n", 27),
     {"changed WEFAC[0].FACTOR 0.5 0.6"}},
    {"keywords that come and go, with their numbers",
     "SCHEDULE\n" + Target(1) + Target(2) + Target(3),
     "SCHEDULE\n" + Target(1) + Target(3) + "RPTSCHED\n FIP=1 /\n",
     {"removed WELTARG#2 [{\"WELL\":\"A\",\"QUANTITY\":\"ORAT\",\"VALUE\":2.0}] null", "added RPTSCHED null *"}},
    {"keywords without data",
     "RUNSPEC\nOIL\nWATER\n",
     "RUNSPEC\nGAS\nOIL\n",
     {"added GAS null null", "removed WATER null null"}},
    {"a keyword in another place",
     "PROPS\nPVTW\n 1 2 3 4 5 /\nROCK\n 1 2 /\nDENSITY\n 1 2 3 /\n",
     "PROPS\nROCK\n 1 2 /\nDENSITY\n 1 2 3 /\nPVTW\n 1 2 3 4 6 /\n",
     {"moved PVTW \"@2\" \"@4\"", "changed PVTW[0].VISCOSIBILITY 5.0 6.0"}},
    {"another section",
     "GRID\nPORO\n 1 /\nPROPS\n",
     "GRID\nEDIT\nPORV\n 1 /\nPROPS\n",
     {"removed PORO [1.0] null", "added EDIT null null", "added PORV null [1.0]"}},
    {"elements of a list",
     "SUMMARY\nWOPR\n A B C /\n",
     "SUMMARY\nWOPR\n A X B C D /\n",
     {"added WOPR[1] null \"X\"", "added WOPR[4] null \"D\""}},
    {"a table in a list of tables",
     "RUNSPEC\nTABDIMS\n 2 /\nPROPS\nSWOF\n 0 0 1 0\n 1 1 0 0 /\n 0 0 1 0\n 1 1 0 0 /\n",
     "RUNSPEC\nTABDIMS\n 2 /\nPROPS\nSWOF\n 0 0 1 0\n 1 1 0 0 /\n 0 0 1 0\n 1 0.9 0 0 /\n",
     {"changed SWOF[1][1].KRW 1.0 0.9"}},
    {"an entry of a map, and a variable",
     "SCHEDULE\nRPTSCHED\n FIP=1 /\n" + Target(1),
     "SCHEDULE\nRPTSCHED\n FIP=2 WELLS /\nWELTARG\n A ORAT $Q /\n/\n",
     {"changed RPTSCHED.FIP 1 2", "changed RPTSCHED.WELLS null 1", "changed WELTARG[A].VALUE 1.0 \"$Q\""}},
    {"a keyword that is suppressed counts as a comment",
     "GRID\nPORO\n 1 /\n",
     "GRID\n--@@@PORO\n--@@@ 1 /\n",
     {"removed PORO [1.0] null"}},
    {"what is skipped counts as a comment",
     start + "SKIP\nDATES\n 1 FEB 2020 /\n/\nENDSKIP\n" + Target(1) + Dates("1 MAR 2020", Target(2)),
     start + Target(1) + "SKIP\n" + Target(5) + "ENDSKIP\n" + Dates("1 MAR 2020", Target(3)),
     {"changed WELTARG#3[A].VALUE 2.0 3.0"}},
    {"many values of an array",
     "GRID\nPORO\n 1000*0.1 /\n",
     "GRID\nPORO\n 500*0.1 500*0.2 /\n",
     {"changed PORO[500] 0.1 0.2", "changed PORO[501] 0.1 0.2", "changed PORO[502] 0.1 0.2",
      "changed PORO[503] 0.1 0.2", "changed PORO[504] 0.1 0.2", "changed PORO null null"}},
    {"an array that came", "GRID\n", "GRID\nPORO\n 1000*0.1 /\n", {"added PORO null \"1000 values\""}},
    {"keywords at a date",
     start + Dates("1 FEB 2020", Target(1)) + Dates("1 MAR 2020", Target(1)),
     start + Dates("1 FEB 2020") + Dates("1 MAR 2020", Target(1) + Target(2)),
     {"removed WELTARG [{\"WELL\":\"A\",\"QUANTITY\":\"ORAT\",\"VALUE\":1.0}] null",
      "added WELTARG#2 null [{\"WELL\":\"A\",\"QUANTITY\":\"ORAT\",\"VALUE\":2.0}]"}},
    {"the same times in another form",
     start + Dates("1 FEB 2020 /\n 2 FEB 2020", Target(1)),
     start + "TSTEP\n 31 /\nTSTEP\n 1 /\n" + Target(1),
     {}},
    {"a date more",
     start + Dates("1 FEB 2020", Target(1)) + Dates("1 APR 2020", Target(2)),
     start + Dates("1 FEB 2020", Target(1)) + Dates("1 MAR 2020") + Dates("1 APR 2020", Target(2)),
     {"added DATES#2[0] null \"2020-03-01\""}},
    {"a date that was shifted",
     start + Dates("1 FEB 2020", Target(1)) + Dates("1 MAR 2020", Target(2)),
     start + Dates("1 FEB 2020", Target(1)) + Dates("5 MAR 2020", Target(3)),
     {"changed DATES#2[0] \"2020-03-01\" \"2020-03-05\"", "changed WELTARG#2[A].VALUE 2.0 3.0"}},
    {"a step that shifts all that follow",
     start + "TSTEP\n 10 /\n" + Target(1) + "TSTEP\n 2*10 /\n" + Target(2),
     start + "TSTEP\n 12 /\n" + Target(1) + "TSTEP\n 2*10 /\n" + Target(2),
     {"changed TSTEP[0] 10.0 12.0"}},
};

std::vector<std::string> Told(const Outcome& outcome)
{
    std::vector<std::string> told;
    for (const auto& row : JsonLines(outcome.out)) {
        told.push_back(row.at("kind").get<std::string>() + " " + row.at("where").get<std::string>() + " " +
                       row.at("old").dump() + " " + row.at("new").dump());
    }
    return told;
}

} // namespace

TEST(Diff, TellsWhatAUserWouldCallAChange)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    for (const Case& c : cases) {
        folder.Write("old.DATA", c.oldText);
        folder.Write("new.DATA", c.newText);
        const Outcome outcome = Deckman({"diff", "old.DATA", "new.DATA", "--json"}, run);
        std::vector<std::string> told = Told(outcome);
        EXPECT_EQ(outcome.status, c.differences.empty() ? 0 : 1) << c.what << outcome.err;
        ASSERT_EQ(told.size(), c.differences.size()) << c.what << "\n" << outcome.out << outcome.err;
        for (std::size_t i = 0; i < told.size(); ++i) {
            const std::string& expected = c.differences[i];
            if (expected.ends_with('*')) {
                EXPECT_TRUE(told[i].starts_with(expected.substr(0, expected.size() - 1))) << told[i];
            } else {
                EXPECT_EQ(told[i], expected) << c.what;
            }
        }
        EXPECT_EQ(Deckman({"diff", "old.DATA", "old.DATA"}, run).status, 0) << c.what;
    }
}

TEST(Diff, FilesMayBeCutInAnotherWay)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    folder.Write("old.DATA", start + Dates("1 FEB 2020", Target(1)) + Target(2) + Target(3) + "END\n");
    folder.Write("new.DATA", "INCLUDE\n 'head.inc' /\nINCLUDE\n 'tail.inc' /\nEND\n" + Target(9));
    folder.Write("head.inc", start + Dates("1 FEB 2020", Target(1)));
    folder.Write("tail.inc", Target(2) + Target(3) + "ENDINC\n" + Target(8));
    const Outcome outcome = Deckman({"diff", "old.DATA", "new.DATA"}, run);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST(Diff, EveryPlaceIsFoundByGet)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    for (const Case& c : cases) {
        folder.Write("old.DATA", c.oldText);
        folder.Write("new.DATA", c.newText);
        for (const auto& row : JsonLines(Deckman({"diff", "old.DATA", "new.DATA", "--json"}, run).out)) {
            const bool isRemoved = row.at("kind") == "removed";
            const std::string where = row.at("where");
            const Outcome got = Deckman({"get", isRemoved ? "old.DATA" : "new.DATA", where, "--json"}, run);
            EXPECT_EQ(got.status, 0) << c.what << ": " << got.err;
            const auto& value = row.at(isRemoved ? "old" : "new");
            const bool isWhole = row.at("kind") != "moved" && !where.starts_with("DATES") && !row.contains("more");
            if (isWhole && value.dump().find(" values") == std::string::npos) {
                EXPECT_EQ(got.out, value.dump() + "\n") << c.what;
            }
        }
    }
}

TEST(Diff, BothDecksMustBeThere)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    folder.Write("old.DATA", "RUNSPEC\n");
    EXPECT_EQ(Deckman({"diff", "old.DATA"}, run).status, 2);
    for (const auto& [a, b] : {std::pair("old.DATA", "none.DATA"), std::pair("none.DATA", "old.DATA")}) {
        const Outcome outcome = Deckman({"diff", a, b}, run);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("none.DATA: error: The file does not exist."));
    }
}

TEST(Diff, LargeDecksThatShareNothingTakeNoQuadraticTime)
{
    const TempDir folder;
    std::string a = "SCHEDULE\n", b = a;
    for (int i = 0; i < 10000; ++i) {
        a += Target(i % 7);
        b += Target(100 + i % 11);
    }
    folder.Write("old.DATA", a);
    folder.Write("new.DATA", b);
    // The limit of time for a run is the test.
    EXPECT_EQ(Deckman({"diff", "old.DATA", "new.DATA"}, {folder.Path()}).status, 1);
}

} // namespace DeckmanTests
