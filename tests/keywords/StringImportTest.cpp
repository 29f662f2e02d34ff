#include <deckmanager/DeckUtils.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

#include "keywords/KeywordTextSplitter.h"
#include "tests/support/DeckTest.h"

// Deck text that belongs to no deck: cut into keywords, and a keyword's text into its parts.

namespace {

using namespace DeckTests;

class StringImportTest : public testing::Test
{
protected:
    /// Each keyword with its data in brackets; the syntaxes are checked against the table.
    std::string Import(const std::string& text)
    {
        m_keywords.clear();
        m_data.clear();
        m_syntaxes.clear();
        m_result = Append(text);
        std::string cut;
        for (std::size_t i = 0; i < m_keywords.size(); ++i) {
            EXPECT_EQ(m_syntaxes[i]->GetName(), m_keywords[i]);
            cut += (i > 0 ? " " : "") + m_keywords[i] + "[" + m_data[i] + "]";
        }
        return cut;
    }

    bool Append(const std::string& text)
    {
        const bool result = DeckUtils::getKeywordsAndDataFromString(text, m_keywords, m_data, m_syntaxes, m_errors);
        EXPECT_EQ(m_data.size(), m_keywords.size());
        EXPECT_EQ(m_syntaxes.size(), m_keywords.size());
        return result;
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    std::vector<std::string> m_keywords;
    std::vector<std::string> m_data;
    std::vector<const Keywords::IKeywordSyntax*> m_syntaxes;
    std::string m_errors = "of an earlier call";
    bool m_result = false;
};

TEST_F(StringImportTest, CutsTextIntoKeywords)
{
    struct Case
    {
        const char* what;
        std::string text;
        std::string keywords;
    };
    const Case cases[] = {
        {"one", "TSTEP\n1 2 /\n", "TSTEP[1 2 /]"},
        {"the second without data", "TSTEP\n1 /\n\nENDBOX\n", "TSTEP[1 /] ENDBOX[]"},
        {"no line end", "ENDBOX\nTSTEP\n  1 /", "ENDBOX[] TSTEP[  1 /]"},
        {"its line alone", "ENDBOX", "ENDBOX[]"},
        {"small letters", "tstep\n1 /\n", "TSTEP[1 /]"},
        {"text ahead of the first", "-- so\n 1 2 3 /\nTSTEP\n1 /\n", "TSTEP[1 /]"},
        {"comments are data text", "TSTEP\n-- a\n1 / -- b\n-- c\n\nENDBOX\n-- d\n",
         "TSTEP[-- a\n1 / -- b\n-- c] ENDBOX[-- d]"},
        {"a blank line ahead of the data", "TSTEP\n\n1 /\n", "TSTEP[\n1 /]"},
        {"tags go", "TSTEP                                -- Generated\n1 /\nENDBOX\n-- Generated\n",
         "TSTEP[1 /] ENDBOX[]"},
        {"words of the data are none", "WELOPEN\nTSTEP 'SHUT' /\n/\nENDBOX\n", "WELOPEN[TSTEP 'SHUT' /\n/] ENDBOX[]"},
        {"an action's conditions", "ACTIONX\nA 1 /\nWBHP P1 > 2 /\n/\nENDACTIO\n",
         "ACTIONX[A 1 /\nWBHP P1 > 2 /\n/] ENDACTIO[]"},
        {"a suppressed keyword", "--@@@TSTEP\n--@@@1 /\n", "TSTEP[--@@@1 /]"},
        {"indented words are data", "TSTEP\n  ENDBOX\n1 /\n", "TSTEP[  ENDBOX\n1 /]"},
        {"CR LF", "ENDBOX\r\nTSTEP\r\n1\r\n2 /\r\n", "ENDBOX[] TSTEP[1\r\n2 /]"},
        {"a byte order mark", "\xEF\xBB\xBFTSTEP\n1 /\n", "TSTEP[1 /]"},
        {"a byte 0", std::string("TSTEP\n1 \0 /\nENDBOX\n", 19), std::string("TSTEP[1 \0 /] ENDBOX[]", 21)},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        EXPECT_EQ(Import(test.text), test.keywords);
        EXPECT_EQ(m_errors, "");
        EXPECT_TRUE(m_result);
        EXPECT_TRUE(m_log.Empty());
        m_log.Clear();
    }
}

TEST_F(StringImportTest, LongWordsAndUnknownOnes)
{
    EXPECT_EQ(Import("WELSPECSX\n'P' 'G' 1 1 1* OIL /\n/\n"), "WELSPECS['P' 'G' 1 1 1* OIL /\n/]");
    EXPECT_TRUE(m_log.Empty());
    // Words of RUNSPEC alone are unknown here.
    for (const std::string word : {"NOWORD", "DIMENS", "PATHS"}) {
        m_log.Clear();
        EXPECT_EQ(Import("TSTEP\n1 /\n" + word + "\n1 /\nENDBOX\n"), "TSTEP[1 /\n" + word + "\n1 /] ENDBOX[]");
        EXPECT_TRUE(m_result);
        EXPECT_EQ(m_log.Texts(), (std::vector<std::string>{"Keyword " + word + " is not recognized."}));
    }
    // One of another section is a keyword.
    m_log.Clear();
    EXPECT_EQ(Import("PORO\n1 /\n"), "PORO[1 /]");
    EXPECT_TRUE(m_result);
    EXPECT_EQ(m_log.Texts(), (std::vector<std::string>{"Keyword PORO is not valid for section SCHEDULE"}));
}

TEST_F(StringImportTest, KeywordLinesAreFoundInAnySection)
{
    const std::string text = "-- ahead\nTSTEP\n1 /\nWECONINJX\n'P' 1 /\n/\nGRID\nPORO\n1 /\nWELSPECSX\n/\nNOWORD\n";
    std::string lines;
    for (const DeckUtils::KeywordLine& line : DeckUtils::findKeywordLines(text, Keywords::SectionType::SCHEDULE)) {
        EXPECT_EQ(text.compare(line.begin, line.name.size(), line.name), 0);
        lines += line.name + (line.syntax != nullptr ? "=" + line.syntax->GetName() : "") + "@" +
                 std::to_string(static_cast<int>(line.section)) + " ";
    }
    // A name may be known by its head alone, and keep its letters.
    EXPECT_EQ(lines, "TSTEP=TSTEP@7 WECONINJX=WECONINJ@7 GRID=GRID@1 PORO=PORO@1 WELSPECS@1 ");
    for (const std::string word : {"WECONINJX", "FIPABCDEFG", "NOWORDATALL"}) {
        const auto found = DeckUtils::findKeywordLines(word, Keywords::SectionType::None);
        ASSERT_EQ(found.size(), word == "NOWORDATALL" ? 0u : 1u) << word;
        EXPECT_TRUE(found.empty() || found.front().syntax != nullptr) << word;
    }
}

TEST_F(StringImportTest, FailuresAreTold)
{
    struct Case
    {
        const char* text;
        const char* keywords;
        const char* errors;
    };
    const Case cases[] = {
        {"", "", "No data to extract keywords from"},
        {"-- a comment\n\n", "", "Failed to convert to any valid keywords"},
        {"OIL\n", "", "Failed to convert to any valid keywords"},
        {"TSTEP\n1\n  ENDBOX\n\tTUNING\n/\nENDBOX\n", "TSTEP[1\n  ENDBOX\n\tTUNING\n/] ENDBOX[]",
         "Beware: ENDBOX will be ignored, at line 3\nBeware: TUNING will be ignored, at line 4"},
        {" ENDBOX\n", "", "Beware: ENDBOX will be ignored, at line 1\nFailed to convert to any valid keywords"},
    };
    Environment::Instance().LogWarningForPossibleIndentedKeywords(true);
    Environment::Instance().setIndentedKeywordsWarningPrefix("Beware:");
    for (const Case& test : cases) {
        SCOPED_TRACE(test.text);
        EXPECT_EQ(Import(test.text), test.keywords);
        EXPECT_EQ(m_errors, test.errors);
        EXPECT_FALSE(m_result);
    }
}

TEST_F(StringImportTest, VectorsAreAppendedTo)
{
    EXPECT_TRUE(Append("TSTEP\n1 /\n"));
    EXPECT_TRUE(Append("TSTEP\n2 /\nENDBOX\n"));
    EXPECT_FALSE(Append(""));
    EXPECT_EQ(m_keywords, (std::vector<std::string>{"TSTEP", "TSTEP", "ENDBOX"}));
    EXPECT_EQ(m_data, (std::vector<std::string>{"1 /", "2 /", ""}));
}

TEST_F(StringImportTest, AHostsTable)
{
    const auto table = Keywords::KeywordSyntaxTable::FromText(R"([
        {"name": "PATHS", "sections": "all", "data": {"type": "list", "element": {"type": "string"}}},
        {"name": "MINE", "sections": ["SCHEDULE"], "data": {"type": "list", "element": {"type": "real"}}},
        {"name": "NOTES", "sections": "all", "data": {"type": "rawText", "terminator": "ENDNOTES"}}])");
    Environment::Instance().SetSyntaxTable(table.get());
    EXPECT_EQ(Import("TSTEP\nMINE\n1 /\nNOTES\nMINE\n--\nENDNOTES\n"), "MINE[1 /] NOTES[MINE\n--\nENDNOTES]");
    EXPECT_THROW(Append("PATHS\n/\n"), DeckManagerException);
    Environment::Instance().SetSyntaxTable(nullptr);
}

TEST_F(StringImportTest, PartsOfAKeywordsText)
{
    struct Case
    {
        const char* text;
        bool found;
        const char* name;
        const char* data;
        const char* tag;
    };
    const Case cases[] = {
        {"", false, "", "", ""},
        {"-- WELSPECS\n 1 /\n", false, "", "", ""},
        {"WELSPECS", true, "WELSPECS", "", ""},
        {"-- ahead\n  of\n\nwelspecs -- mine\n  'P' /\n/\n \n", true, "WELSPECS", "  'P' /\n/", ""},
        {"ANYTHING\n 1", true, "ANYTHING", " 1", ""},
        {"WELSPECS -- Generated by X \n'P' /\n", true, "WELSPECS", "'P' /", "-- Generated by X"},
        {"WELSPECS\n\n  -- Generated\n--!!! Program generated\n\n'P' /\n", true, "WELSPECS", "\n'P' /",
         "--!!! Program generated"},
        {"WELSPECS -- Generated\n-- Generated too\n", true, "WELSPECS", "", "-- Generated too"},
        {"WELSPECS --!!! Program generated\n-- so\n", true, "WELSPECS", "-- so", ""},
        {"TITLE\n\n-- Generated\n", true, "TITLE", "", "-- Generated"},
        {"TITLE\n\n-- no title\n", true, "TITLE", "\n-- no title", ""},
        {"--@@@WELSPECS\n--@@@'P' /\n", true, "WELSPECS", "--@@@'P' /", ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.text);
        std::string name = "x";
        std::string data = "x";
        std::string tag = "x";
        EXPECT_EQ(SplitKeywordText(test.text, name, data, tag), test.found);
        EXPECT_EQ(name, test.name);
        EXPECT_EQ(data, test.data);
        EXPECT_EQ(tag, test.tag);
    }
}

} // namespace
