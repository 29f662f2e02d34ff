#include <gtest/gtest.h>

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/MessageCapper.h>
#include <tarn/service/Strings.h>

#include "text/ExpandingTokenizer.h"
#include "text/PeekingTokenizer.h"
#include "text/Tokenizer.h"

#include "tests/support/LogRecorder.h"
#include "tests/text/TextGenerator.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using namespace TestText;

namespace {

/// Tokens joined by `|`; quoted ones stand in `<` and `>`; `!` says that the tokenizer stopped at a comment, with its
/// word.
std::string Tokens(IStringTokenizer& tokenizer, const std::string& line, bool allowCommas = false)
{
    tokenizer.SetText(&line);
    std::string all;
    std::string token;
    bool quoted = false;
    for (int i = 0; i < 400; ++i) {
        const bool found = tokenizer.Next(token, &quoted, allowCommas);
        if (!found && token.empty()) return all;
        if (!all.empty()) all += '|';
        all += !found ? "!" + token : quoted ? '<' + token + '>' : token;
        if (!found) return all;
    }
    return "endless";
}

std::string Tokens(const std::string& line, bool allowCommas = false)
{
    Tokenizer tokenizer;
    return Tokens(tokenizer, line, allowCommas);
}

std::string Expanded(const std::string& line)
{
    ExpandingTokenizer tokenizer;
    return Tokens(tokenizer, line);
}

struct Case
{
    const char* line;
    const char* tokens;
};

} // namespace

TEST(Tokenizer, CutsALine)
{
    // The rules at a glance; every short line is held to them below.
    const Case cases[] = {
        {" \t ", ""},
        {"A B\tC\r", "A|B|C"},
        {"A/B", "A|/|B"},
        {"1-2", "1-2"},
        // Comments.
        {"A--B", "A|!--B"},
        {"---", "!---"},
        {"A-'x-'--B", "A-'x-'|!--B"},
        // Quotes.
        {"'  A  '", "<A>"},
        {"'A''B'", "<A>|<B>"},
        {"'--A'", "<--A>"},
        {"A'/,*'D", "A'/,*'D"},
        {"'A B", "A|B"},
        // Commas.
        {"A,,B", "A|1*|B"},
        {",A", "1*|A"},
        {"A,", "A"},
        {"'A',,'B'", "<A>|1*|<B>"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Tokens(c.line), c.tokens) << c.line;
    EXPECT_EQ(Tokens("A,B ,C", true), "A,B|,C");
}

TEST(Tokenizer, CommentsEndTheLine)
{
    const std::string line = "A -- B /";
    Tokenizer tokenizer;
    tokenizer.SetText(&line);
    std::string token;
    EXPECT_TRUE(tokenizer.Next(token, nullptr, false));
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(tokenizer.Next(token, nullptr, false));
    EXPECT_TRUE(tokenizer.Remaining().empty());
    tokenizer.SetText(&line);
    EXPECT_TRUE(tokenizer.Next(token, nullptr, false));
}

TEST(Tokenizer, RepeatAsTokenIsKept)
{
    Tokenizer tokenizer;
    tokenizer.SetRepeatAsToken(true);
    EXPECT_EQ(Tokens(tokenizer, "2*A *"), "2|*|A|*");
    EXPECT_EQ(Tokens(tokenizer, "*"), "*");
}

TEST(Tokenizer, KeepsWithin132Columns)
{
    Service::MessageCapper::instance().reset();
    TestSupport::LogRecorder log;
    const std::string fits(132, 'x');
    EXPECT_EQ(Tokens(fits), fits);
    EXPECT_TRUE(log.Empty());

    EXPECT_EQ(Tokens(fits + "y"), fits);
    ASSERT_EQ(log.Count(), 1);
    EXPECT_EQ(log.Messages()[0].text,
              "Line exceeds the maximum VELDANE keyword line length of 132 characters.  Anything "
              "beyond 132 characters will be ignored.");
    EXPECT_EQ(log.Messages()[0].severity, 2);

    // Where nothing but comment lies behind the limit, nobody needs to know.
    const std::string dashes(200, '-');
    const struct
    {
        std::string line;
        bool told;
    } cases[] = {
        {"1 2 / " + dashes, false},
        {"1 /--" + std::string(130, 'c'), false},
        {"1 2" + std::string(130, ' ') + "-- far", false},
        {"'A--B' 'C' -- " + std::string(130, 'c'), false},
        {"'A -- " + std::string(130, 'c') + "'", true},
        {"1 2" + std::string(130, ' ') + "3 -- far", true},
    };
    for (const auto& c : cases) {
        Service::MessageCapper::instance().reset();
        log.Clear();
        Tokens(c.line);
        bool told = false;
        for (const auto& message : log.Messages())
            told = told || !message.probe;
        EXPECT_EQ(told, c.told) << c.line;
    }

    // Only a quote that begins a token sees what lies behind the limit.
    const std::string blanks(128, ' ');
    EXPECT_EQ(Tokens(blanks + "'A B' C"), "<A B>");
    log.Clear();
    EXPECT_EQ(Tokens(blanks + "A'B C' D"), "AB");
    EXPECT_TRUE(log.Contains("Unbalanced quote while reading keyword data: " + blanks + "A'B C' D"));
}

TEST(Tokenizer, TellsOfAQuoteWithoutPartnerWithTheWholeLine)
{
    TestSupport::LogRecorder log;
    Tokens("1 'A B /");
    ASSERT_EQ(log.Count(), 1);
    EXPECT_EQ(log.Messages()[0].text, "Unbalanced quote while reading keyword data: 1 'A B /");
    EXPECT_EQ(log.Messages()[0].severity, 3);
    EXPECT_FALSE(log.Messages()[0].probe);

    // The apostrophe of a comment is no quote: what is said of it is for nobody.
    for (const char* line : {"1 --it's", "1--it's", "/ --well's"}) {
        log.Clear();
        Tokens(line);
        ASSERT_EQ(log.Count(), 1) << line;
        EXPECT_TRUE(log.Messages()[0].probe) << line;
    }
    log.Clear();
    Tokens("1 it's - -- /");
    ASSERT_EQ(log.Count(), 1);
    EXPECT_FALSE(log.Messages()[0].probe);
}

TEST(Tokenizer, WithoutALineThereAreNoTokens)
{
    Tokenizer tokenizer;
    std::string token = "was";
    bool quoted = true;
    EXPECT_FALSE(tokenizer.Next(token, &quoted, false));
    EXPECT_FALSE(quoted);
    EXPECT_FALSE(tokenizer.AtBegin());
    const std::string line = "A";
    tokenizer.SetText(&line);
    EXPECT_TRUE(tokenizer.AtBegin());
    tokenizer.SetText(nullptr);
    EXPECT_FALSE(tokenizer.AtBegin());
    EXPECT_FALSE(tokenizer.Next(token, &quoted, false));
}

namespace {

/// The rules of `Tokenizer` a character at a time, each token built as a string.
class LiteralTokenizer
{
public:
    explicit LiteralTokenizer(std::string text) : m_text(std::move(text)) {}

    bool Next(std::string& token, bool& quoted, bool allowCommas)
    {
        token.clear();
        quoted = false;
        if (m_ended) return false;
        while (!Step(token, quoted, allowCommas)) {
            if (m_at >= m_limit) return false;
        }
        if (!quoted && token.size() >= 2 && token.compare(0, 2, "--") == 0) {
            m_ended = true;
            return false;
        }
        return true;
    }

private:
    char At(std::size_t i) const { return m_text[i]; }

    /// One pass of the rules; true if there is a token.
    bool Step(std::string& token, bool& quoted, bool allowCommas)
    {
        while (m_at < m_limit && VeldaneDeckInfo::IsSpace(At(m_at)))
            ++m_at;
        if (m_at >= m_limit) return false;
        const bool atStart = m_atStart;
        m_atStart = false;
        const char c = At(m_at);
        if (c == '\'') {
            ++m_at;
            const std::size_t closing = m_text.find('\'', m_at);
            if (closing == std::string::npos) return false;
            token = m_text.substr(m_at, closing - m_at);
            Service::StringTrimBlank(token);
            m_at = closing + 1;
            return quoted = true;
        }
        if (c == ',' && !allowCommas) {
            if (atStart) {
                token = "1*";
                return true;
            }
            std::size_t next = m_at + 1;
            while (next < m_limit && VeldaneDeckInfo::IsSpace(At(next)))
                ++next;
            if (next >= m_limit) {
                m_at = m_limit;
                return false;
            }
            if (At(next) != ',') {
                ++m_at;
                return false;
            }
            m_at = next;
            token = "1*";
            return true;
        }
        if (c == '/') {
            ++m_at;
            token = "/";
            return true;
        }
        char front = c;
        token += At(m_at++);
        while (m_at < m_limit) {
            const char d = At(m_at);
            if (VeldaneDeckInfo::IsSpace(d) || (d == ',' && !allowCommas) || d == '/') break;
            if (d == '-' && m_at + 1 < m_limit && At(m_at + 1) == '-' && front != '-') break;
            front = d;
            if (d == '\'') {
                const std::size_t closing = m_text.find('\'', m_at + 1);
                if (closing < m_limit) {
                    token += m_text.substr(m_at, closing + 1 - m_at);
                    m_at = closing + 1;
                } else {
                    ++m_at;
                }
                continue;
            }
            token += d;
            ++m_at;
        }
        return true;
    }

    std::string m_text;
    std::size_t m_at = 0;
    std::size_t m_limit = m_text.size() > 132 ? 132 : m_text.size();
    bool m_atStart = true;
    bool m_ended = false;
};

} // namespace

TEST(Tokenizer, EveryShortLineAsTheRulesSay)
{
    TestSupport::LogRecorder log;
    const auto expectSame = [](const std::string& line, bool allowCommas) {
        Tokenizer tokenizer;
        tokenizer.SetText(&line);
        LiteralTokenizer literal(line);
        for (int i = 0; i < 200; ++i) {
            std::string token;
            std::string expected;
            bool quoted = false;
            bool expectedQuoted = false;
            const bool found = tokenizer.Next(token, &quoted, allowCommas);
            ASSERT_EQ(found, literal.Next(expected, expectedQuoted, allowCommas)) << line;
            ASSERT_EQ(token, expected) << line;
            ASSERT_EQ(quoted, expectedQuoted) << line;
            if (!found) return;
        }
        FAIL() << "endless: " << line;
    };
    ForEachText({"A", "'", "-", ",", "/", " ", "3*"}, 6, [&](const std::string& text) {
        expectSame(text, false);
        if (text.size() < 6) {
            expectSame(text, true);
            expectSame(std::string(129, ' ') + text, false);
            expectSame(std::string(129, 'x') + text, false);
        }
    });
}

TEST(ExpandingTokenizer, ExpandsRepeats)
{
    const Case cases[] = {
        {"3* /", "1*|1*|1*|/"},
        {"1*", "1*"},
        {"2*5.0 7", "5.0|5.0|7"},
        {"2*'A B'", "A B|A B"},
        {"2*' A'", "A|A"},
        {"2*3*4", "3*4|3*4"},
        {"'3*4'", "<3*4>"},
        {"0*5", ""},
        {"0*5 6", "6"},
        {"0* 0*1 6", "6"},
        // In place of the repeat, so in no quotes.
        {"0*5 '3*4' 'B'", "3*4|<B>"},
        {"3", "3"},
        {"*3", "*3"},
        {"A3*4", "A3*4"},
        {"-3*4", "-3*4"},
        {"2*--A", "1*|1*|!--A"},
        // A count that nobody means is no count.
        {"1234567890*5", "1234567890*5"},
        {"0000000002*5", "0000000002*5"},
        {"000000002*5", "5|5"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Expanded(c.line), c.tokens) << c.line;
}

TEST(ExpandingTokenizer, CopiesAreTakenAtOnceOrDropped)
{
    ExpandingTokenizer tokenizer;
    const std::string line = "1000000*2.5 3";
    tokenizer.SetText(&line);
    std::string_view token;
    EXPECT_TRUE(tokenizer.AtBegin());
    ASSERT_TRUE(tokenizer.NextView(token, nullptr, false));
    EXPECT_EQ(token, "2.5");
    EXPECT_FALSE(tokenizer.AtBegin());
    EXPECT_EQ(tokenizer.TakeRepeats(), 999999);
    ASSERT_TRUE(tokenizer.NextView(token, nullptr, false));
    EXPECT_EQ(token, "3");
    EXPECT_EQ(tokenizer.TakeRepeats(), 0);

    EXPECT_EQ(Tokens(tokenizer, "5*1"), "1|1|1|1|1");
    tokenizer.SetText(&line);
    ASSERT_TRUE(tokenizer.NextView(token, nullptr, false));
    const std::string other = "7";
    tokenizer.SetText(&other);
    ASSERT_TRUE(tokenizer.NextView(token, nullptr, false));
    EXPECT_EQ(token, "7");
}

TEST(PeekingTokenizer, LooksAheadWithoutTaking)
{
    PeekingTokenizer tokenizer(std::make_unique<ExpandingTokenizer>());
    const std::string line = "A,B 2*'C' 'D'";
    tokenizer.SetText(&line);
    std::string token;
    bool quoted = true;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(tokenizer.Peek(token, &quoted));
        EXPECT_EQ(token, "A");
        EXPECT_FALSE(quoted);
        EXPECT_TRUE(tokenizer.AtBegin());
    }
    // The peek has cut it.
    ASSERT_TRUE(tokenizer.Next(token, &quoted, true));
    EXPECT_EQ(token, "A");
    EXPECT_FALSE(tokenizer.AtBegin());
    ASSERT_TRUE(tokenizer.Next(token, nullptr, false));
    EXPECT_EQ(token, "B");
    ASSERT_TRUE(tokenizer.Peek(token, nullptr));
    EXPECT_EQ(token, "C");
    EXPECT_EQ(tokenizer.TakeRepeats(), 0);
    ASSERT_TRUE(tokenizer.Next(token, nullptr, false));
    EXPECT_EQ(tokenizer.TakeRepeats(), 1);
    ASSERT_TRUE(tokenizer.Peek(token, &quoted));
    EXPECT_EQ(token, "D");
    EXPECT_TRUE(quoted);
    ASSERT_TRUE(tokenizer.Next(token, &quoted, false));
    EXPECT_TRUE(quoted);

    token = "was";
    EXPECT_FALSE(tokenizer.Peek(token, &quoted));
    EXPECT_EQ(token, "was");
    EXPECT_TRUE(quoted);

    tokenizer.SetText(&line);
    ASSERT_TRUE(tokenizer.Peek(token, nullptr));
    tokenizer.SetText(&line);
    ASSERT_TRUE(tokenizer.Next(token, nullptr, true));
    EXPECT_EQ(token, "A,B");
}
