// The scanner on its fast readers against its rules carried out literally, and against readers that it knows nothing
// of.

#include <gtest/gtest.h>

#include <sstream>

#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "text/LineStreamReader.h"
#include "text/ScannedKeyword.h"

#include "tests/support/LogRecorder.h"
#include "tests/text/LiteralLineReader.h"
#include "tests/text/ScannerTable.h"
#include "tests/text/TextGenerator.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using namespace TestText;

namespace {

struct Found
{
    std::string name;
    long long pos = -1;
    bool indented = false;
};

/// The search for a keyword as it is told, a step at a time and with a string for everything.
bool FindLiterally(LiteralLineReader& reader, const ISectionContextQuery& query, bool allowIndented, Found& found,
                   std::vector<std::string>& messages)
{
    std::string line;
    while (reader.ReadNextDataLine(line, &found.pos, true)) {
        found.indented = false;
        std::size_t first = 0;
        while (first < line.size() && VeldaneDeckInfo::IsSpace(line[first]))
            ++first;
        if (first == line.size() || !((line[first] | 0x20) >= 'a' && (line[first] | 0x20) <= 'z')) continue;
        if (allowIndented) {
            found.indented = first > 0;
            line.erase(0, first);
        }
        bool terminated = false;
        bool inQuotes = false;
        for (const char c : line) {
            if (c == '\'') inQuotes = !inQuotes;
            if (c == '/' && !inQuotes) terminated = true;
        }
        std::string word;
        for (const char c : line) {
            if (VeldaneDeckInfo::IsSpace(c)) break;
            word += c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        }
        if (word.empty()) continue;
        const Keywords::IKeywordSyntax* syntax = nullptr;
        const std::string head = word.substr(0, 8);
        if (word.size() > 8) syntax = LineReaderUtil::FindSyntax(head, query);
        if (syntax) {
            found.name = syntax->KeepsLongName() ? word : head;
            return true;
        }
        if (LineReaderUtil::FindSyntax(word, query)) {
            found.name = word;
            return true;
        }
        if (terminated || word.find_first_not_of("0123456789.-+*/E") == std::string::npos) continue;
        messages.push_back("Keyword " + word + " is not recognized.");
    }
    found.indented = false;
    return false;
}

using Advance = void (*)(ILineReader&);

void AdvanceLiterally(LiteralLineReader& reader, Advance advance)
{
    std::string line;
    bool terminatedBefore = false;
    while (reader.ReadNextDataLine(line, nullptr, true)) {
        bool terminated = false;
        bool inQuotes = false;
        for (const char c : line) {
            if (c == '\'') inQuotes = !inQuotes;
            if (c == '/' && !inQuotes) terminated = true;
        }
        std::size_t first = 0;
        while (first < line.size() && VeldaneDeckInfo::IsSpace(line[first]))
            ++first;
        const bool only = line[first] == '/';
        if (advance == LineReaderUtil::AdvanceToNextTerminatedLine && terminated) return;
        if (advance == LineReaderUtil::AdvanceToNextLineStartedWithTermination && only) return;
        if (advance == LineReaderUtil::AdvanceToNextDoubleTermination && terminatedBefore && only) return;
        terminatedBefore = terminated;
    }
}

class ScannerEquivalence : public testing::Test
{
protected:
    ScannerEquivalence()
    {
        Environment::Instance().destroy();
        Environment::Instance().SetSyntaxTable(&ScannerTable());
    }
    ~ScannerEquivalence() override { Environment::Instance().destroy(); }

    static void ExpectSame(const std::string& text, bool allowIndented, Keywords::SectionType section)
    {
        const FixedSection query(section);
        TestSupport::LogRecorder log;
        std::vector<std::string> messages;
        std::istringstream stream(text);
        LineStreamReader fast;
        fast.Attach(&stream);
        LiteralLineReader foreign(text);
        LiteralLineReader literal(text);
        for (;;) {
            ScannedKeyword found;
            ScannedKeyword foundByForeign;
            Found expected;
            log.Clear();
            messages.clear();
            const bool any = LineReaderUtil::FindNextKeywordSyntax(fast, query, allowIndented, nullptr, found);
            std::vector<std::string> told = log.Texts();
            log.Clear();
            ASSERT_EQ(any,
                      LineReaderUtil::FindNextKeywordSyntax(foreign, query, allowIndented, nullptr, foundByForeign));
            ASSERT_EQ(log.Texts(), told) << text;
            ASSERT_EQ(any, FindLiterally(literal, query, allowIndented, expected, messages)) << text;
            std::erase_if(told,
                          [](const std::string& message) { return message.find("not valid") != std::string::npos; });
            ASSERT_EQ(told, messages) << text;
            ASSERT_EQ(found.name, expected.name) << text;
            ASSERT_EQ(foundByForeign.name, expected.name) << text;
            ASSERT_EQ(found.pos, expected.pos) << text;
            ASSERT_EQ(fast.Tell(), literal.Tell()) << text;
            ASSERT_EQ(fast.Eof(), literal.Eof()) << text;
            ASSERT_EQ(found.indented, expected.indented) << text;
            if (!any) return;
            ASSERT_EQ(found.line, literal.LineNumber()) << text;
        }
    }
};

} // namespace

TEST_F(ScannerEquivalence, EveryShortDeck)
{
    const std::vector<std::string> symbols = {"OIL", "x", "E1", "\n", " ", "/", "'", "--", "--@@@"};
    ForEachText(symbols, 5, [](const std::string& text) {
        ExpectSame(text, false, Keywords::SectionType::None);
        if (text.size() < 8) ExpectSame(text, true, Keywords::SectionType::SCHEDULE);
    });
}

TEST_F(ScannerEquivalence, LongerDecks)
{
    TextGenerator random(11);
    for (int round = 0; round < 150; ++round)
        ExpectSame(random.Lines(20000), round % 2 == 0, static_cast<Keywords::SectionType>(random.Below(9)));
}

TEST_F(ScannerEquivalence, StepsOverData)
{
    const auto expectSame = [](const std::string& text) {
        for (const Advance advance : {Advance(LineReaderUtil::AdvanceToNextTerminatedLine),
                                      Advance(LineReaderUtil::AdvanceToNextLineStartedWithTermination),
                                      Advance(LineReaderUtil::AdvanceToNextDoubleTermination)})
        {
            LineStreamReader fast;
            fast.AttachText(text);
            LiteralLineReader foreign(text);
            LiteralLineReader literal(text);
            for (int i = 0; i < 50 && !literal.Eof(); ++i) {
                advance(fast);
                advance(foreign);
                AdvanceLiterally(literal, advance);
                ASSERT_EQ(fast.Tell(), literal.Tell()) << text;
                ASSERT_EQ(foreign.Tell(), literal.Tell()) << text;
                ASSERT_EQ(fast.Eof(), literal.Eof()) << text;
            }
        }
    };
    for (const bool suppression : {true, false}) {
        Environment::Instance().EnableKeywordSuppression(suppression);
        ForEachText({"A", "\n", " ", "/", "'", "--", "--@@@"}, 6, expectSame);
        TextGenerator random(5);
        for (int round = 0; round < 100; ++round)
            expectSame(random.Lines(8000));
    }
}
