#include "tests/deckman/Program.h"

namespace DeckmanTests {

namespace {

/// `read` of a file piece.txt with that text.
Outcome Read(const std::string& text, bool json = true)
{
    const TempDir folder;
    folder.Write("piece.txt", text);
    const Launch run{folder.Path()};
    return json ? Deckman({"read", "piece.txt", "--json"}, run) : Deckman({"read", "piece.txt"}, run);
}

} // namespace

TEST(Read, KeywordsWithDataAndText)
{
    // Lower case, a tag, text ahead of the first keyword, line ends of both kinds, no last one.
    const Outcome outcome =
        Read("-- ahead\nwelopen\r\n'A' SHUT /\r\n/\r\n\r\nTSTEP       -- Generated\n-- steps\n$STEP 2*30 /\n"
             "NOECHO\nWELOPEN\n'B' OPEN /\n/");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].at("name"), "WELOPEN");
    EXPECT_EQ(lines[0].at("data").at(0).at("STATE"), "SHUT");
    EXPECT_EQ(lines[0].at("text"), "'A' SHUT /\n/");
    EXPECT_EQ(lines[1].dump(), R"({"name":"TSTEP","data":["$STEP",30.0,30.0],"text":"-- steps\n$STEP 2*30 /"})");
    EXPECT_EQ(lines[2].dump(), R"({"name":"NOECHO","data":null,"text":""})");
    EXPECT_EQ(lines[3].at("data").at(0).at("WELL"), "B");

    const Outcome shown = Read("TSTEP\n30 60 /\nNOECHO\n", false);
    EXPECT_EQ(shown.out, "TSTEP\n2 values, day\n0  30  60\n\nNOECHO\n");
}

TEST(Read, FromStandardInput)
{
    const Outcome outcome = Shell("printf 'TSTEP\\n1 x /\\n' | deckman read --json -");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, R"({"name":"TSTEP","data":[1.0],"text":"1 x /"})"
                           "\n");
    EXPECT_THAT(outcome.err, HasSubstr("standard input:2: error: \"x\" can not be converted into double"));
}

TEST(Read, TroubleHasItsLineAndTheTextIsThereAllTheSame)
{
    const struct
    {
        const char* text;
        const char* message;
        std::size_t keywords;
        int status = 1;
    } cases[] = {
        {"", "piece.txt: error: No data to extract keywords from\n", 0},
        {"nothing of use\n", "piece.txt: error: Failed to convert to any valid keywords\n", 0},
        {"WELOPEN\n'A' SHUT /\n/\n\nTSTEP\n-- one\n1\n2 x /\n",
         "piece.txt:8: error: \"x\" can not be converted into double\n", 2},
        {"TSTEP\n1 /\nTSTEP\n2 y /\n", "piece.txt:4: error: \"y\" can not be converted into double\n", 2},
        {"TSTEP\n1\n", "piece.txt:2: warning: List in keyword TSTEP is not properly terminated\n", 1, 0},
        // What is no keyword of the schedule, and what may be meant for one.
        {"TSTEP\n1 /\n\nNOSUCH\n/\nPORO\n1 /\nNOSUCH x\n", "piece.txt:8: warning: Keyword NOSUCH is not recognized.\n",
         2, 0},
        {"TSTEP\n1 /\nPORO\n1 /\n", "piece.txt:3: warning: Keyword PORO is not valid for section SCHEDULE\n", 2, 0},
        {"TSTEP\n1 /\n  WELOPEN\n'A' SHUT /\n/\n",
         "piece.txt:3: error: Possible indented keyword: WELOPEN will be ignored, at line 3\n", 1},
        // A size that only a deck can tell.
        {"TSTEP\n1 /\nZMFVD\n-- low\n1.0 0.5 /\n/\n",
         "piece.txt:4: error: Context::EvaluateIntegerExpr: IDeckKeywords must be provided to evaluate expression "
         "(ZMFVD)\n",
         2},
    };
    for (const auto& c : cases) {
        const Outcome outcome = Read(c.text);
        EXPECT_EQ(outcome.status, c.status) << c.text;
        EXPECT_THAT(outcome.err, HasSubstr(c.message)) << c.text;
        EXPECT_EQ(JsonLines(outcome.out).size(), c.keywords) << c.text;
    }
    const auto line = JsonLines(Read("ZMFVD\n1.0 0.5 /\n/\n").out).at(0);
    EXPECT_TRUE(line.at("data").is_null());
    EXPECT_EQ(line.at("text"), "1.0 0.5 /\n/");
    EXPECT_THAT(Read("ZMFVD\n1.0 0.5 /\n/\n", false).out, HasSubstr("1.0 0.5 /"));

    for (const char* file : {"no such file", "."})
        EXPECT_EQ(Deckman({"read", file}).status, 3) << file;
    EXPECT_EQ(Deckman({"read"}).status, 2);
}

} // namespace DeckmanTests
