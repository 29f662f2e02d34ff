#include "tests/deckman/Program.h"

namespace DeckmanTests {

namespace {

class Get : public testing::Test
{
protected:
    Outcome Ask(const std::string& text, std::vector<std::string> arguments) const
    {
        m_folder.Write("x.DATA", text);
        arguments.insert(arguments.begin(), {"get", "x.DATA"});
        return Deckman(arguments, {m_folder.Path()});
    }
    std::string Json(const std::string& text, const std::string& where) const
    {
        const Outcome outcome = Ask(text, {where, "--json"});
        return outcome.status == 0 && outcome.err.empty() ? outcome.out : outcome.err;
    }

    TempDir m_folder;
};

const std::string wells = "SCHEDULE\nWELTARG\n 'A.1' ORAT 1 /\n '2' WRAT 2 /\n 'a b' GRAT 3 /\n 'C:3' LRAT 4 /\n"
                          " C:3 RESV 5 /\n 'X[1]' BHP 6 /\n 'D/E' THP 7 /\n/\n";

} // namespace

TEST_F(Get, RecordsGoByWhateverNameTheyHave)
{
    const std::pair<const char*, const char*> cases[] = {
        {"WELTARG[A.1].VALUE", "1.0\n"},      {"WELTARG.'a.1'.VALUE", "1.0\n"}, {"WELTARG['2'].VALUE", "2.0\n"},
        {"WELTARG[2].VALUE", "3.0\n"},        {"WELTARG[ A B ][2]", "3.0\n"},   {"WELTARG.'a b'.2", "3.0\n"},
        {"WELTARG[C:3].VALUE", "4.0\n"},      {"WELTARG.\"C:3\".2", "4.0\n"},   {"WELTARG['X[1]'].2", "6.0\n"},
        {"SCHEDULE/WELTARG[D/E].2", "7.0\n"}, {"WELTARG#1[D/E].2", "7.0\n"},    {"@2[C:3].VALUE", "4.0\n"},
        {"x.DATA:4[C:3].2", "4.0\n"},         {"x.DATA:4.'A.1'[2]", "1.0\n"},
    };
    for (const auto& [where, value] : cases) {
        EXPECT_EQ(Json(wells, where), value) << where;
    }
    for (const char* where :
         {"WELTARG[", "WELTARG[]", "WELTARG[1", "WELTARG]", "WELTARG.", "WELTARG..1", "WELTARG.[1]", "WELTARG[1]VALUE",
          "WELTARG['A", "WELTARG.A/B", "@2x", "@2[", "x.DATA:4x", ":4", "[1]", "#1"})
        EXPECT_EQ(Ask(wells, {where}).status, 2) << where;
    for (const char* where : {"WELTARG[7]", "WELTARG[99999999999]", "WELTARG[B]", "WELTARG[0].3", "WELTARG[0].WELLS",
                              "WELTARG[0].VALUE[0]", "WELTARGS[0]", "@9[0]", "x.DATA:4[Q]"})
        EXPECT_EQ(Ask(wells, {where}).status, 1) << where;
}

TEST_F(Get, NamesOfKeywordsMayHoldDots)
{
    // Both are quantities of the user's; the longest name that there is counts.
    const std::string deck = "SUMMARY\nFUX\n\nFUX.1\n\nWUY\n A B /\n\nWUZ.0\n C /\n\n";
    EXPECT_EQ(Json(deck, "FUX.1"), "null\n");
    EXPECT_EQ(Json(deck, "WUY.1"), "\"B\"\n");
    EXPECT_EQ(Json(deck, "WUZ.0"), "[\"C\"]\n");
    EXPECT_EQ(Json(deck, "WUZ.0.0"), "\"C\"\n");
    EXPECT_EQ(Json(deck, "WUZ.0#1[0]"), "\"C\"\n");
}

TEST_F(Get, JsonKeepsEveryKindOfValue)
{
    const std::pair<const char*, const char*> cases[] = {
        {"GRID\nPORO\n 2*0.25 1* 1 1E30 -0.1D-3 $NTG 1E999 /\n",
         "[0.25,0.25,null,1.0,1e+30,-0.0001,\"$NTG\",\"inf\"]\n"},
        {"GRID\nACTNUM\n 1 2* $A 0 /\n", "[1,null,null,\"$A\",0]\n"},
        {"GRID\nPORO\n/\n", "[]\n"},
        {"RUNSPEC\nTITLE\nA \"title\"\\ of \xD8 and \xC3\x98\n",
         "{\"TEXT\":\"A \\\"title\\\"\\\\ of \\u00d8 and \xC3\x98\"}\n"},
        {"SCHEDULE\nRPTSCHED\n FIP=$F WELLS /\n", nullptr},
    };
    for (const auto& [deck, json] : cases) {
        const std::string out = Json(deck, "@2");
        if (json != nullptr)
            EXPECT_EQ(out, json);
        else
            EXPECT_THAT(out, HasSubstr("\"FIP\":\"$F\",\"WELLS\":1"));
    }
}

TEST_F(Get, DefaultsAreThoseOfTheSimulator)
{
    const std::string deck = "RUNSPEC\nTABDIMS\n 2 1* $N /\n";
    EXPECT_THAT(Json(deck, "TABDIMS"), HasSubstr("{\"NTSFUN\":2,\"NTPVT\":null,\"NSSFUN\":\"$N\",\"NPPVT\":null"));
    EXPECT_THAT(Ask(deck, {"TABDIMS", "--json", "--defaults"}).out,
                HasSubstr("{\"NTSFUN\":2,\"NTPVT\":1,\"NSSFUN\":\"$N\",\"NPPVT\":20"));
    EXPECT_EQ(Ask(deck, {"TABDIMS.NPPVT"}).out, "1*\n");
    EXPECT_EQ(Ask(deck, {"TABDIMS.NPPVT", "--defaults"}).out, "(20)\n");
}

TEST_F(Get, SizeThatCannotBeToldIsAnErrorWithThePlace)
{
    const std::string deck = "RUNSPEC\nTABDIMS\n/\nCO2SOL\nGASSOL\n 2 /\nPROPS\nSOLUBILT\n 50 0.01 /\n";
    const Outcome outcome = Ask(deck, {"SOLUBILT"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("x.DATA:8: error: Context::EvalSpecial: GASSOL cannot be used"));
    EXPECT_EQ(outcome.out, "");
}

TEST_F(Get, MissesTellWhatThereIs)
{
    const std::string deck = "RUNSPEC\nMETRIC\nSCHEDULE\nRPTSCHED\n FIP=1 /\nWELTARG\n A ORAT 1 /\n/\n";
    const std::pair<const char*, const char*> cases[] = {
        {"WELTARG[99999999999]", "There is no record 99999999999 in WELTARG: it has 1 record, number 0."},
        {"WELTARG[Q123]", "There is no record Q123 in WELTARG. Its records: A.\n"},
        {"RPTSCHED[9999]", " entries, from 0 to "},
        {"RPTSCHED.NOSUCHENTRY", "RPTSCHED has no entry NOSUCHENTRY. Its entries: PRES, SOIL, "},
        {"QQQ/WELTARG", "'QQQ' is not a section. The sections: RUNSPEC, GRID, EDIT, PROPS, REGIONS, SOLUTION, "
                        "SUMMARY, SCHEDULE, OPTIMIZE.\n"},
    };
    for (const auto& [where, message] : cases) {
        EXPECT_THAT(Ask(deck, {where}).err, HasSubstr(message)) << where;
    }
    EXPECT_THAT(Ask(deck, {"RPTSCHED.NOSUCHENTRY"}).err, testing::ContainsRegex("[A-Z]+ and [0-9]+ more\\.\n"));
}

TEST_F(Get, OneValueOfAnArrayIsThatOfAllOfThem)
{
    const std::string deck = "RUNSPEC\nMETRIC\nGRID\nDX\n 100 3*150 -- it's uneven\n 2* 175.5 /\n";
    const std::pair<const char*, const char*> cases[] = {
        {"DX[0]", "100.0\n"}, {"DX.3", "150.0\n"}, {"DX[4]", "null\n"}, {"DX[6]", "175.5\n"}};
    for (const auto& [where, value] : cases)
        EXPECT_EQ(Json(deck, where), value) << where;
    EXPECT_EQ(Ask(deck, {"DX[6]"}).out, "175.5  m\n");
    EXPECT_EQ(Ask(deck, {"DX[4]"}).out, "1*  m\n");
    for (const char* where : {"DX[7]", "DX[99999999999]"}) {
        const Outcome miss = Ask(deck, {where});
        EXPECT_EQ(miss.status, 1);
        EXPECT_THAT(miss.err, HasSubstr(" in DX: it has 7 values, from 0 to 6.")) << where;
    }
    EXPECT_THAT(Ask(deck, {"DX['3']"}).err, HasSubstr("The values of DX go by number, from 0 to 6."));

    // What is wrong with the array is told whichever value is asked for.
    const std::string bad = "GRID\nDX\n 100\n 200 bad $X /\n";
    for (const char* where : {"DX[0]", "DX[1]", "DX"}) {
        const Outcome outcome = Ask(bad, {where, "--json"});
        EXPECT_THAT(outcome.err, HasSubstr("x.DATA:4: error: \"bad\" can not be converted into double")) << where;
        EXPECT_EQ(outcome.status, 1);
    }
    EXPECT_EQ(Json("GRID\nDX\n 100 2*$X 200 /\n", "DX[2]"), "\"$X\"\n");
}

TEST_F(Get, UnitsAreThoseOfTheDeck)
{
    EXPECT_EQ(Ask("RUNSPEC\nSKIP\nMETRIC\nENDSKIP\nFIELD\nGRID\nDX\n 1 /\n", {"DX[0]"}).out, "1  ft\n");
    const std::string fluid = "PROPS\nTCRIT\n 190 /\nRTEMP\n 110 /\n";
    EXPECT_EQ(Ask("RUNSPEC\nMETRIC\n" + fluid, {"TCRIT[0][0]"}).out, "190  K\n");
    EXPECT_EQ(Ask("RUNSPEC\nFIELD\n" + fluid, {"TCRIT[0][0]"}).out, "190  degR\n");
    EXPECT_EQ(Ask("RUNSPEC\nFIELD\n" + fluid, {"RTEMP[0]"}).out, "110  degF\n");
    // A rock's heat capacity goes by volume, a fluid's by mass.
    EXPECT_EQ(Ask("RUNSPEC\nGRID\nHEATCR\n 2350 /\n", {"HEATCR[0]"}).out, "2350  kJ/rm3/K\n");
    EXPECT_EQ(Ask("RUNSPEC\nPROPS\nSPECHEAT\n 20 2 /\n", {"SPECHEAT[0][0].OIL"}).out, "2  kJ/kg/K\n");
}

TEST_F(Get, LongListIsStreamedAndStopsWithItsReader)
{
    m_folder.Write("x.DATA", "GRID\nPORO\n 100000000*0.25 /\n");
#if defined(__SANITIZE_ADDRESS__)
    const std::string limit; // the sanitizer reserves more addresses than any limit allows
#else
    const std::string limit = "ulimit -v 1500000; ";
#endif
    const Outcome outcome = Shell(limit + "deckman get x.DATA PORO --json | head -c 12", {m_folder.Path()});
    EXPECT_EQ(outcome.out, "[0.25,0.25,0");
    EXPECT_EQ(outcome.err, "");
}

} // namespace DeckmanTests
