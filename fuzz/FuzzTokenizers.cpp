// Cuts any line into tokens, and lets the ways of taking them check each other.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "text/ExpandingTokenizer.h"
#include "text/PeekingTokenizer.h"

using namespace Tarn::Fjel::Core::DeckManager;

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

/// A repeat may ask for nearly 10^9 copies; so many are looked at.
constexpr std::int32_t CopiesLookedAt = 5;

std::vector<std::string> Tokens(IStringTokenizer& tokenizer, const std::string& line, bool allowCommas)
{
    std::vector<std::string> tokens;
    tokenizer.SetText(&line);
    std::string token;
    bool quoted = false;
    while (tokenizer.Next(token, &quoted, allowCommas)) {
        Require(token.size() <= line.size() + 2);
        tokens.push_back((quoted ? "'" : "") + token);
        std::int32_t copies = tokenizer.TakeRepeats();
        Require(copies >= 0 && copies < 1000000000);
        if (copies > CopiesLookedAt) copies = CopiesLookedAt;
        for (; copies > 0; --copies)
            tokens.push_back(token);
        Require(tokens.size() <= (line.size() + 1) * (CopiesLookedAt + 1));
    }
    return tokens;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const unsigned settings = data[0];
    const bool allowCommas = (settings & 1) != 0;
    const std::string line(reinterpret_cast<const char*>(data) + 1, size - 1);

    Tokenizer plain;
    plain.SetRepeatAsToken((settings & 2) != 0);
    Tokens(plain, line, allowCommas);

    ExpandingTokenizer expanding;
    const std::vector<std::string> expanded = Tokens(expanding, line, allowCommas);
    PeekingTokenizer peeking(std::make_unique<ExpandingTokenizer>());
    Require(Tokens(peeking, line, allowCommas) == expanded);

    // A peek shows what comes next, and takes nothing.
    peeking.SetText(&line);
    std::string peeked;
    std::string token;
    for (std::size_t i = 0; i < 1000; ++i) {
        bool peekedQuoted = false;
        bool quoted = false;
        const bool any = peeking.Peek(peeked, &peekedQuoted);
        Require(peeking.Next(token, &quoted, false) == any);
        if (!any) break;
        Require(token == peeked && quoted == peekedQuoted);
    }
    return 0;
}
