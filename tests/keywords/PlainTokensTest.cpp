// Records take plain tokens straight from the line and set plain values straight in the data. Tokens, values and
// messages must be those of the tokenizers and the conversions.

#include <rapidcheck.h>

#include "tests/keywords/DataReading.h"
#include "text/ExpandingTokenizer.h"

using namespace DataReading;

namespace {

rc::Gen<std::string> Piece()
{
    return rc::gen::weightedOneOf<std::string>({
        {10,
         rc::gen::element<std::string>("12", "-7", "0.216", "1e5", "1.5D3", "OPEN", "open", "Shut", "x", "YES", "no",
                                       "WELL_1", "12abc", "3.7", "-0", "+5", "999999999", "9999999999", "PROD*", "%")},
        {6, rc::gen::element<std::string>("1*", "1**", "*1", "1*5", "2*", "3*7", "0*4", "10*", "1*'A'", "11*", "1*1*")},
        {4, rc::gen::element<std::string>("'A'", "''", "' a b '", "'/'", "'1*'", "'--'", "'$A'", "'", "'x", "A'B'",
                                          "'12'")},
        {3, rc::gen::element<std::string>("-", "--", "1-2", "1--2", "-5-", "a-", "--@@@", "$A", "A$B", "${X}")},
        {2, rc::gen::element<std::string>(",", "A,B", ", ,", ",5")},
        {2, rc::gen::element<std::string>("/", "7/", "/7", "A/B")},
        {1, rc::gen::just(std::string("a\0b", 3))},
    });
}

rc::Gen<std::string> Line()
{
    const auto gap = rc::gen::weightedElement<std::string>({{12, " "}, {2, "\t"}, {2, ""}, {1, std::string(50, ' ')}});
    return rc::gen::map(
        rc::gen::container<std::vector<std::pair<std::string, std::string>>>(rc::gen::pair(gap, Piece())),
        [](const std::vector<std::pair<std::string, std::string>>& pieces) {
            std::string line;
            for (const auto& [space, piece] : pieces)
                line += space + piece;
            return line;
        });
}

struct Token
{
    std::string text;
    bool quoted;
    bool operator==(const Token&) const = default;
};

} // namespace

TEST(PlainTokens, AreThoseOfTheTokenizers)
{
    const TestSupport::LogRecorder quiet;
    EXPECT_TRUE(rc::check("a token taken in one go is the next token", [] {
        const std::string line = *Line();
        const bool allowCommas = *rc::gen::arbitrary<bool>();
        DeckManager::ExpandingTokenizer slow;
        DeckManager::ExpandingTokenizer fast;
        slow.SetText(&line);
        fast.SetText(&line);
        std::string_view token;
        bool quoted = false;
        for (;;) {
            const bool more = slow.NextView(token, &quoted, allowCommas);
            const Token expected{std::string(token), quoted};
            const bool simple = fast.RepeatCount() == 0 && fast.Inner().TakeSimple(token, quoted);
            RC_ASSERT((simple || fast.NextView(token, &quoted, allowCommas)) == more);
            if (!more) break;
            RC_ASSERT((Token{std::string(token), quoted} == expected));
            RC_ASSERT(fast.Inner().Remaining() == slow.Inner().Remaining());
            // Pieces without a gap may make a repeat of a thousand million, of which the ends will do.
            constexpr std::int32_t most = 100;
            RC_ASSERT(fast.RepeatCount() == slow.RepeatCount());
            if (slow.RepeatCount() <= most) continue;
            fast.TakeRepeats(fast.RepeatCount() - most);
            slow.TakeRepeats(slow.RepeatCount() - most);
        }
    }));
    Tarn::Fjel::Core::Service::MessageCapper::instance().reset(); // of lines that are too long
}

TEST(PlainTokens, BecomeTheValuesOfTheConversions)
{
    // A repeat of one is the same value, and no plain token.
    const std::string shape = R"({"type": "list", "element": {"type": "record", "items": [
        {"name": "S", "type": "string", "maxLength": 4}, {"name": "K", "type": "string", "preservesCase": true},
        {"name": "I", "type": "integer", "defaultable": true}, {"name": "R", "type": "real", "defaultable": true},
        {"name": "O", "type": "option", "options": ["OPEN", "SHUT"]}, {"name": "Y", "type": "yesNo"},
        {"name": "L", "type": "integer", "defaultable": true}]}})";
    EXPECT_TRUE(rc::check("a plain token reads as a repeat of one", [&] {
        const auto tokens = *rc::gen::container<std::vector<std::string>>(rc::gen::weightedOneOf<std::string>({
            {8,
             rc::gen::element<std::string>("12", "-7", "0.216", "1e5", "1.5D3", "OPEN", "open", "Shut", "x", "YES",
                                           "no", "WELL_1", "12abc", "3.7", "-0", "+5", "9999999999", "inf", "%", "")},
            {2, rc::gen::just<std::string>("1*")},
            {1, rc::gen::just<std::string>("/")},
            {1, rc::gen::just<std::string>("\n")},
        }));
        std::string plain;
        std::string repeated;
        for (const std::string& token : tokens) {
            plain += token + " ";
            repeated += (token.empty() || token == "/" || token == "\n" ? token : "1*" + token) + " ";
        }
        RC_PRE(repeated.size() < 120); // a longer line is cut
        const bool limitLength = *rc::gen::arbitrary<bool>();
        const auto read = [&](const std::string& text) {
            DeckManager::Environment::Instance().SetLimitStringLengthOnRead(limitLength); // the read resets it
            return ReadShape(shape, text + "/\n/\n");
        };
        const Outcome fast = read(plain);
        const Outcome slow = read(repeated);
        RC_ASSERT(fast.tree == slow.tree);
        RC_ASSERT(fast.messages == slow.messages);
    }));
}
