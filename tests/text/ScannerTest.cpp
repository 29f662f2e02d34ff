#include <gtest/gtest.h>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "text/KeywordFileReader.h"
#include "text/LineStringReader.h"
#include "text/ScannedKeyword.h"
#include "text/SectionNames.h"

#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/support/Thrown.h"
#include "tests/text/ScannerTable.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using namespace TestText;
using Keywords::SectionType;
using TestSupport::LogRecorder;

namespace {

class Scanner : public testing::Test
{
protected:
    Scanner()
    {
        Environment::Instance().destroy();
        Environment::Instance().SetSyntaxTable(&ScannerTable());
    }
    ~Scanner() override { Environment::Instance().destroy(); }

    /// The names found, joined by blanks. The section is `section`, and then that of each section keyword; data lines
    /// are stepped over.
    static std::string Names(const std::string& text, SectionType section = SectionType::None,
                             bool allowIndented = false)
    {
        LineStringReader reader(text);
        FixedSection query(section);
        ScannedKeyword found;
        std::string names;
        while (LineReaderUtil::FindNextKeywordSyntax(reader, query, allowIndented, nullptr, found)) {
            names += (names.empty() ? "" : " ") + found.name + (found.indented ? "(indented)" : "");
            SectionType next = section;
            if (FindSection(found.name, next)) query.Set(next);
            LineReaderUtil::ConsumeDataLines(found.syntax, reader);
        }
        EXPECT_EQ(found.syntax, nullptr);
        EXPECT_EQ(found.name, "");
        return names;
    }

    /// What is left of the text behind the data of the keyword.
    static std::string Behind(const char* keyword, const std::string& data)
    {
        LineStringReader reader(data);
        const Keywords::IKeywordSyntax* syntax = ScannerTable().FindSyntax(keyword, true);
        EXPECT_TRUE(syntax) << keyword;
        LineReaderUtil::ConsumeDataLines(syntax, reader);
        std::string rest;
        reader.ReadRange(reader.Tell(), static_cast<long long>(data.size()), rest);
        return rest;
    }
};

} // namespace

TEST_F(Scanner, KeywordsAreTheFirstWordsOfLiveLinesAtColumnOne)
{
    struct Case
    {
        const char* text;
        const char* names;
    };
    const Case cases[] = {
        {"welspecs", "WELSPECS"},       {" WELSPECS\n", ""},
        {"WELSPECS-- c\n", "WELSPECS"}, {"OIL-- c\n", ""},
        {"WELSPECS/x\n", "WELSPECS"},   {"OIL\tGAS\n", "OIL"},
        {"--@@@WELSPECS", "WELSPECS"},  {"--@@@--@@@WELSPECS", "WELSPECS"},
        {"--@@@-- WELSPECS", ""},       {"  --@@@WELSPECS", ""},
        {"--@@@ WELSPECS", ""},         {"--WELSPECS", ""},
        {"SCHEDULEX", "SCHEDULE"},      {"TRACERABCDEF", "TRACERABCDEF"},
        {"\xEF\xBB\xBFOIL\n", "OIL"},   {"OIL\n\xEF\xBB\xBFOIL\n", "OIL"},
        {"$OIL\nE10 20\n1.5E+3\n", ""}, {"OIL\nEND\nOIL", "OIL END OIL"},
    };
    LogRecorder log;
    for (const Case& c : cases)
        EXPECT_EQ(Names(c.text), c.names) << c.text;
    EXPECT_EQ(log.Texts(), (std::vector<std::string>{"Keyword OIL-- is not recognized."}));

    Environment::Instance().EnableKeywordSuppression(false);
    EXPECT_EQ(Names("--@@@OIL\nOIL"), "OIL");
}

TEST_F(Scanner, IndentedWordsCountOnlyWhereTheyAreAllowed)
{
    EXPECT_EQ(Names(" OIL\nOIL\n--@@@  OIL\n  --@@@OIL\n\tPORO 1 /", SectionType::None, true),
              "OIL(indented) OIL OIL(indented) PORO(indented)");
}

TEST_F(Scanner, TheSectionDecides)
{
    LogRecorder log;
    // Valid in RUNSPEC only: no keyword behind it, in silence where the line is terminated.
    EXPECT_EQ(Names("OIL /\nDIMENS 1 /\n", SectionType::SCHEDULE), "");
    EXPECT_EQ(Names("OIL\n"), "OIL");
    EXPECT_EQ(Names("OIL\n", SectionType::RUNSPEC), "OIL");
    EXPECT_TRUE(log.Empty());
    EXPECT_EQ(Names("OIL\n", SectionType::GRID), "");
    EXPECT_EQ(log.Texts(2), (std::vector<std::string>{"Keyword OIL is not recognized."}));
    log.Clear();
    EXPECT_EQ(Names("PORO\n", SectionType::SCHEDULE), "PORO");
    EXPECT_EQ(Names("WELSPECSX\n", SectionType::RUNSPEC), "WELSPECS");
    EXPECT_EQ(log.Texts(2), (std::vector<std::string>{"Keyword PORO is not valid for section SCHEDULE",
                                                      "Keyword WELSPECS is not valid for section RUNSPEC"}));

    // Two syntaxes of one name.
    log.Clear();
    const Keywords::SyntaxList both = ScannerTable().FindSyntaxes("BOTH");
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(LineReaderUtil::FindSyntax("BOTH", FixedSection(SectionType::SCHEDULE)), both[1]);
    EXPECT_EQ(LineReaderUtil::FindSyntax("BOTH", FixedSection(SectionType::PROPS)), both[0]);
    EXPECT_EQ(LineReaderUtil::FindSyntax("BOTH", FixedSection()), both[0]);
    EXPECT_TRUE(log.Empty());
    EXPECT_EQ(LineReaderUtil::FindSyntax("BOTH", FixedSection(SectionType::GRID)), both[0]);
    EXPECT_EQ(log.Count(), 1);
    EXPECT_EQ(LineReaderUtil::FindSyntax("NONE", FixedSection()), nullptr);
}

TEST_F(Scanner, TheSectionIsAskedOnlyForKnownWords)
{
    LineStringReader reader("WELL1 1 /\nWELL2 2\nPORO\n");
    const FixedSection query(SectionType::GRID);
    std::string name;
    long long pos = 0;
    bool indented = true;
    const Keywords::IKeywordSyntax* syntax = nullptr;
    EXPECT_TRUE(LineReaderUtil::FindNextKeywordSyntax(reader, query, name, &pos, false, &indented, syntax, nullptr));
    EXPECT_EQ(name, "PORO");
    EXPECT_EQ(pos, 18);
    EXPECT_FALSE(indented);
    EXPECT_EQ(syntax, ScannerTable().FindSyntax("PORO", true));
    EXPECT_EQ(query.Asked(), 1);
    EXPECT_FALSE(LineReaderUtil::FindNextKeywordSyntax(reader, query, name, nullptr, false, nullptr, syntax, nullptr));
    EXPECT_EQ(name, "");
    EXPECT_EQ(syntax, nullptr);
}

TEST_F(Scanner, UnknownWordsAreToldOfWhereTheyLookLikeKeywords)
{
    LogRecorder log;
    Names("ABC 1 2 /\nABC 'A/B'\nE10 20\nE*1\nPORO\n1 2 3 /\nWELLNAME12 5\n");
    EXPECT_EQ(log.Texts(2),
              (std::vector<std::string>{"Keyword ABC is not recognized.", "Keyword WELLNAME12 is not recognized."}));

    const TestSupport::TempDir dir;
    const std::string path = dir.Write("deck", "\n  1 x\nABC 1\n--@@@DEF 2\nPORO\nGHI\n");
    KeywordFileReader file(path);
    const auto reader = file.OpenLineReader(true);
    log.Clear();
    ScannedKeyword found;
    const FixedSection query;
    while (LineReaderUtil::FindNextKeywordSyntax(*reader, query, false, &file, found)) {
    }
    // The line is the one ahead.
    const std::string end = " in " + path + ".";
    EXPECT_EQ(log.Texts(2), (std::vector<std::string>{"Keyword ABC is not recognized near line 2" + end,
                                                      "Keyword DEF is not recognized near line 3" + end,
                                                      "Keyword GHI is not recognized near line 5" + end}));
    EXPECT_EQ(log.Messages()[0].file, path);
    EXPECT_EQ(log.Messages()[0].line, 3);

    // A byte 0 is a byte like any other.
    KeywordFileReader zero(dir.Write("zero", std::string("A\0B\n", 4)));
    log.Clear();
    LineReaderUtil::FindNextKeywordSyntax(*zero.OpenLineReader(true), query, false, &zero, found);
    ASSERT_EQ(log.Count(), 1);
    EXPECT_EQ(log.Messages()[0].text.substr(0, 29), std::string("Keyword A\0B is not recognized", 29));
}

TEST_F(Scanner, WhatIsLearntInPassing)
{
    struct Case
    {
        const char* text;
        int line;
        bool suppressed;
        bool tagged;
    };
    const Case cases[] = {
        {"OIL\n", 1, false, false},
        {"\n\nOIL   -- Generated\n1 /", 3, false, true},
        {"--@@@OIL\n-- Generated\n", 1, true, true},
        {"OIL\n \n--@@@\n  --!!! Program generated", 1, false, true},
        {"OIL\n-- c\n-- Generated\n", 1, false, false},
        {"OIL\n  \n\n", 1, false, false},
    };
    for (const Case& c : cases) {
        LineStringReader reader(c.text);
        ScannedKeyword found;
        ASSERT_TRUE(LineReaderUtil::FindNextKeywordSyntax(reader, FixedSection(), false, nullptr, found)) << c.text;
        EXPECT_EQ(found.line, c.line) << c.text;
        EXPECT_EQ(found.suppressed, c.suppressed) << c.text;
        EXPECT_TRUE(found.tagKnown) << c.text;
        EXPECT_EQ(found.tagged, c.tagged) << c.text;

        bool sawTag = false;
        const long long size = static_cast<long long>(std::string_view(c.text).size()) - found.pos;
        LineReaderUtil::AdvanceToNonTagLine(&reader, found.pos, size, &sawTag, true);
        EXPECT_EQ(sawTag, c.tagged) << c.text;
        EXPECT_EQ(LineReaderUtil::NextLineIsSuppressed(&reader, found.pos), c.suppressed) << c.text;
    }
}

TEST_F(Scanner, DataThatCouldBeTakenForKeywordsAreSteppedOver)
{
    struct Case
    {
        const char* keyword;
        const char* data;
        const char* rest;
    };
    const Case cases[] = {
        {"OIL", "OIL /\n", "OIL /\n"},
        {"INCLUDE", "\n-- c\n'a'\n/\n", "/\n"},
        {"TITLE", "-- c\nOIL\n", "OIL\n"},
        {"UNITWORD", "-- c\nOIL\nGAS\n", "GAS\n"},
        {"METHOD", "AIM\n3 /\nOIL\n", "OIL\n"},
        {"DIMENS", "1\n/\n", "1\n/\n"},
        {"PORO", "OIL /\n", "OIL /\n"},
        {"TUNING", "1 /\n/\n", "1 /\n/\n"},
        {"WELSPECS", "OIL 1 /\n OIL /\n -- /\n / x\n/\n", "/\n"},
        {"WELSPECS", "OIL 1 /\n--@@@/\n/\n", "/\n"},
        {"WELSPECS", "OIL 1 /\n--@@@-- /\n --@@@/\n/\nB", "B"},
        {"ROWS", "OIL\n'A/'\n-- /\nB /\nC /\n", "C /\n"},
        {"NESTED", "OIL\n/\n", "OIL\n/\n"},
        {"WOPR", "OIL\nGAS 'a/b' 'c\n'd/' e/\nB", "B"},
        {"WOPR", "OIL -- a/b\nB", "B"},
        {"WOPR", "OIL\n--@@@GAS /\nB", "B"},
        {"NAMES", "OIL\n/\nGAS /\n", "GAS /\n"},
        {"RPTSCHED", "FIP\nWELLS=2 /\nB", "B"},
        {"RPTOPEN", "FIP\n", "FIP\n"},
        {"ENDSCALE", "OIL /\n", "OIL /\n"},
        {"EOS", "PR /\nSRK /\n", "SRK /\n"},
        {"ACTIONX", "A 1 /\nWBHP > 2 /\n\n-- c\n/\n/\nB", "/\nB"},
        {"ACTIONX", "A 1\n/\n/ \nB", "B"},
        {"PYINPUT", "OIL\n PYEND\n--PYEND\nPYENDX\nB", "B"},
        {"RAWOPEN", "OIL\n", "OIL\n"},
        {"WOPR", "OIL\nGAS\n", ""},
        {"ACTIONX", "A 1 /\n", ""},
        {"PYINPUT", "PYEN", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Behind(c.keyword, c.data), c.rest) << c.keyword << "\n" << c.data;
    LineStringReader reader("OIL\n");
    LineReaderUtil::ConsumeDataLines(nullptr, reader);
    EXPECT_EQ(reader.Tell(), 0);

    Environment::Instance().EnableKeywordSuppression(false);
    EXPECT_EQ(Behind("WELSPECS", "--@@@/\n/\nB"), "B");
    EXPECT_EQ(Behind("WOPR", "A\n--@@@B /\nC /\nB"), "B");
}

TEST_F(Scanner, AliasesOfPathsNeedTheHostsConsent)
{
    LogRecorder log;
    EXPECT_EQ(TestSupport::Thrown<DeckManagerException>([] { Behind("PATHS", "'A' 'b' /\n/\n"); }),
              "PATHS is not supported");
    EXPECT_EQ(log.Texts(3), (std::vector<std::string>{"PATHS is not supported"}));
    Environment::Instance().SetPATHSSupport(true);
    EXPECT_EQ(Behind("PATHS", "'A' 'b' /\n/\nB"), "B");
}

TEST_F(Scanner, KeywordsThatCanFollow)
{
    const Keywords::IKeywordSyntax* poro = ScannerTable().FindSyntax("PORO", true);
    std::string name;
    LineStringReader reader("WELSPECS\nXYZ\n PORO\nSCHEDULEX\n--@@@SCHEDULE\nPORO 1");
    ASSERT_TRUE(LineReaderUtil::FindNextKeyword(reader, poro, name));
    EXPECT_EQ(name, "SCHEDULE");
    ASSERT_TRUE(LineReaderUtil::FindNextKeyword(reader, poro, name));
    EXPECT_EQ(name, "PORO");
    EXPECT_FALSE(LineReaderUtil::FindNextKeyword(reader, poro, name));

    reader.Seek(0, 0);
    std::string all;
    while (LineReaderUtil::FindNextKeywordInAnySection(reader, name))
        all += name + " ";
    EXPECT_EQ(all, "WELSPECS SCHEDULE SCHEDULE PORO ");
}

TEST_F(Scanner, PlacesInAKeywordsExtent)
{
    //                0        9              24   28 31 34
    const char* text = "WOPR /  \n-- Generated\n\n-- c\n\n1\n2 /\nOIL\n";
    LineStringReader reader(text);
    EXPECT_FALSE(LineReaderUtil::AdvanceToDataLine(nullptr, 0, 30));
    EXPECT_FALSE(LineReaderUtil::AdvanceToDataLine(&reader, -1, 30));
    EXPECT_FALSE(LineReaderUtil::AdvanceToDataLine(&reader, 0, 0));
    EXPECT_FALSE(LineReaderUtil::AdvanceToDataLine(&reader, 0, 29));
    EXPECT_TRUE(LineReaderUtil::AdvanceToDataLine(&reader, 0, 30));
    EXPECT_EQ(reader.Tell(), 29);
    bool sawTag = false;
    EXPECT_TRUE(LineReaderUtil::AdvanceToNonTagLine(&reader, 0, 36, &sawTag, false));
    EXPECT_TRUE(sawTag);
    EXPECT_EQ(reader.Tell(), 22);
    EXPECT_TRUE(LineReaderUtil::AdvanceToNonTagLine(&reader, 0, 36, &sawTag, true));
    EXPECT_EQ(reader.Tell(), 23);
    // The extent ends ahead of the tag: there is no line to stand on.
    EXPECT_FALSE(LineReaderUtil::AdvanceToNonTagLine(&reader, 0, 9, &sawTag, true));
    EXPECT_FALSE(sawTag);

    struct Case
    {
        const char* text;
        bool result;
        long long place;
        const char* tag;
    };
    const Case cases[] = {
        {"-- Generated\n-- Generated 2\nA", true, 28, "-- Generated 2"},
        {"\n \nA\n", true, 3, ""},
        {"\n-- Generated\nA", true, 14, "-- Generated"},
        {" \n\n", false, 3, ""},
        {"-- Generated\n", false, 13, "-- Generated"},
        {"", false, 0, ""},
    };
    for (const Case& c : cases) {
        LineStringReader lines(c.text);
        std::string tag = "was";
        EXPECT_EQ(LineReaderUtil::AdvanceToNextNonTagLine(&lines, -1, &sawTag, &tag, true), c.result) << c.text;
        if (c.result) {
            EXPECT_EQ(lines.Tell(), c.place) << c.text;
        }
        EXPECT_EQ(tag, c.tag) << c.text;
        EXPECT_EQ(sawTag, !tag.empty()) << c.text;
    }
}

TEST_F(Scanner, CommentsOfKeywords)
{
    struct Case
    {
        std::string text;
        std::string comment;
    };
    const Case cases[] = {
        {"WOPR\n-- one\n-- two\n1 /\n", "-- one\n-- two"},
        {"WOPR\r\n-- one\r\n\r\n-- two\r\n1 /\r\n", "-- one"},
        {"WOPR\n-- Generated\n-- one\n1 /\n", "-- one"},
        {"WOPR\n\n \n-- one\n \n-- two\n1 /\n", "-- one"},
        {"WOPR\n1 / -- x\n-- y", ""},
        {"WOPR\n-- one", "-- one"},
        {"WOPR\n\n-- one", ""},
        {"WOPR\n\n\n", ""},
        {"WOPR", ""},
    };
    for (const Case& c : cases) {
        LineStringReader reader(c.text);
        std::string comment = "was";
        EXPECT_EQ(LineReaderUtil::ExtractComment(&reader, 0, static_cast<long long>(c.text.size()), comment),
                  !c.comment.empty())
            << c.text;
        EXPECT_EQ(comment, c.comment) << c.text;
    }
}

TEST_F(Scanner, DataLeftActiveBehindAKeywordThatWasCommentedOut)
{
    struct Case
    {
        const char* text;
        const char* line;
    };
    const Case cases[] = {
        {"-- c\n--WOPR\n--\n1 2 /\nOIL\n", "1 2 /"},
        {"--  WELSPECSX\n'A' /\nB\n", "'A' /"},
        {"--WOPR and more\n1 /\nOIL\n", nullptr},
        {"OIL\n--WOPR\n1 /\nOIL\n", nullptr},
        {"--WOPR\nOIL\n1 /\n", nullptr},
        {"--WOPR", nullptr},
        {"-- c\n", nullptr},
    };
    for (const Case& c : cases) {
        LineStringReader reader(std::string("PORO\n") + c.text);
        reader.Seek(5, 0);
        std::string line;
        long long pos = -1;
        EXPECT_EQ(LineReaderUtil::CheckForCommentIssues(reader, line, pos), c.line != nullptr) << c.text;
        if (c.line) {
            EXPECT_EQ(line, c.line) << c.text;
        }
        EXPECT_EQ(reader.Tell(), 5);
    }
}

TEST_F(Scanner, LinesBecomeCommentsAndSuppressedLinesAndBack)
{
    using Conversion = void (*)(std::string&);
    struct Case
    {
        Conversion convert;
        const char* from;
        const char* to;
    };
    const Case cases[] = {
        {LineReaderUtil::CommentLines, "", ""},
        {LineReaderUtil::CommentLines, "a\nb", "--a\n--b"},
        {LineReaderUtil::CommentLines, "x\n", "--x\n--"},
        {LineReaderUtil::CommentLines, "--x", "----x"},
        {LineReaderUtil::SuppressLines, "", ""},
        {LineReaderUtil::SuppressLines, "a\n--@@@b\r\nc", "--@@@a\n--@@@b\r\n--@@@c"},
        {LineReaderUtil::ActivateLines, "", ""},
        {LineReaderUtil::ActivateLines, "--@@@--@@@a\n--@@@--@@@b\n --@@@c\n--@@@", "a\nb\n --@@@c\n"},
        {LineReaderUtil::ActivateLines, "--quorl--a", "--quorl--a"},
    };
    for (const Case& c : cases) {
        std::string text = c.from;
        c.convert(text);
        EXPECT_EQ(text, c.to) << c.from;
    }
    Environment::Instance().setIsQUORLDeck();
    std::string text = "a\n--quorl--b";
    LineReaderUtil::SuppressLines(text);
    EXPECT_EQ(text, "--quorl--a\n--quorl--b");
}
