// The readers, which read large pieces and give views of them, against the rules carried out literally.

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include <deckmanager/Environment.h>

#include "text/LineStreamReader.h"
#include "text/LineStringReader.h"

#include "tests/text/LiteralLineReader.h"
#include "tests/text/TextGenerator.h"

using namespace Tarn::Fjel::Core::DeckManager;
using namespace TestText;

namespace {

const std::vector<std::string> symbols = {
    "A", "/", "'", "-", "@", "\n", "\r", " ", "--@@@", std::string(1, '\0'), "\xEF\xBB\xBF"};

/// What comes of an operation, and how the reader stands then.
template <class Reader, class Operation>
auto Take(Reader& reader, const Operation& operation)
{
    std::string text = "was";
    long long pos = -7;
    const long long result = operation(reader, text, pos);
    return std::tuple(result, text, pos, reader.Tell(), reader.Eof(), reader.IsGood(), reader.LineNumber());
}

/// Reads everything with both readers, and holds each step of the one to the other.
template <class Reader>
void ExpectSameLines(Reader& fast, LiteralLineReader& slow, bool dataLines, bool strip, const std::string& text)
{
    const auto read = [&](auto& reader, std::string& line, long long& pos) {
        return dataLines ? reader.ReadNextDataLine(line, &pos, strip) : reader.ReadNextLine(line, &pos, strip);
    };
    for (int i = 0; i < 5000; ++i) {
        const auto step = Take(fast, read);
        ASSERT_EQ(step, Take(slow, read)) << text;
        if (!std::get<0>(step)) return;
    }
    FAIL() << "no end of " << text;
}

struct Suppression
{
    explicit Suppression(bool on) { Environment::Instance().EnableKeywordSuppression(on); }
    ~Suppression() { Environment::Instance().EnableKeywordSuppression(true); }
};

} // namespace

TEST(LineReaderEquivalence, EveryShortText)
{
    for (const bool suppression : {true, false}) {
        const Suppression setting(suppression);
        ForEachText(symbols, 4, [](const std::string& text) {
            for (const bool dataLines : {false, true}) {
                for (const bool strip : {false, true}) {
                    LineStreamReader fast;
                    fast.AttachText(text);
                    LiteralLineReader slow(text);
                    ExpectSameLines(fast, slow, dataLines, strip, text);
                }
            }
        });
    }
}

TEST(LineReaderEquivalence, EveryShortTextAtTheWindowsEdge)
{
    // The first piece that is read from a stream has 4096 bytes.
    ForEachText({"A", "\n", "\r", "--@@@", " "}, 4, [](const std::string& text) {
        for (int before = 0; before < 4; ++before) {
            std::string whole(static_cast<std::size_t>(4096 - before), '.');
            whole[3000] = '\n';
            whole += text;
            std::istringstream stream(whole);
            LineStreamReader fast;
            fast.Attach(&stream);
            LiteralLineReader slow(whole);
            ExpectSameLines(fast, slow, true, true, text);
        }
    });
}

TEST(LineReaderEquivalence, LinesAroundTheLimit)
{
    for (std::size_t size = 1020; size < 1030; ++size) {
        for (const std::string head : {"", "\xEF\xBB\xBF"}) {
            for (const std::string end : {"", "\n", "\r\n", "\nB", "\r\nB\n", "\r", "\n\n"}) {
                const std::string text = head + std::string(size, 'x') + end;
                LineStreamReader fast;
                fast.AttachText(text);
                LiteralLineReader slow(text);
                ExpectSameLines(fast, slow, false, false, text);
            }
        }
    }
}

TEST(LineReaderEquivalence, AnyOperationsInAnyOrder)
{
    TextGenerator random(20240611);
    for (int round = 0; round < 400; ++round) {
        const std::string text = random.Lines(random.Below(3) == 0 ? 200 : 40000);
        const int size = static_cast<int>(text.size());
        std::istringstream stream(text);
        LineStreamReader fast;
        if (round % 2)
            fast.Attach(&stream);
        else
            fast.AttachText(text);
        LiteralLineReader slow(text);
        std::string trail;
        for (int step = 0; step < 60; ++step) {
            const int operation = random.Below(8);
            const int offset = random.Below(4) == 0 ? random.Below(size + 300) : random.Below(1500);
            const bool strip = random.Below(2) != 0;
            const int length = random.Below(5000);
            trail += std::to_string(operation) + ":" + std::to_string(offset) + " ";
            const auto act = [&](auto& reader, std::string& read, long long& pos) -> long long {
                switch (operation) {
                case 0:
                    return reader.ReadNextDataLine(read, &pos, true);
                case 1:
                    return reader.Seek(offset, 0);
                case 2:
                    return reader.Seek(offset, 1);
                case 3:
                    return reader.Seek(offset - 5, 2);
                case 4:
                    return reader.ReadChars(read, offset, strip);
                case 5:
                    read.assign(static_cast<std::size_t>(offset), '\0');
                    return reader.ReadRaw(read.data(), offset);
                case 6:
                    reader.ReadRange(offset, offset + length, read);
                    return 0;
                default:
                    return reader.ReadNextLine(read, &pos, false);
                }
            };
            ASSERT_EQ(Take(fast, act), Take(slow, act)) << "round " << round << ": " << trail;
        }
    }
}

TEST(LineReaderEquivalence, CandidateLines)
{
    const auto expectSame = [](const std::string& text, bool fromStream) {
        std::istringstream stream(text);
        LineStreamReader fast;
        if (fromStream)
            fast.Attach(&stream);
        else
            fast.AttachText(text);
        LiteralLineReader slow(text);
        for (;;) {
            std::string_view fastLine;
            long long fastPos = -7;
            const bool fastRead = fast.HopToCandidateLine(fastLine, &fastPos);
            std::string line;
            std::string stripped;
            long long slowPos = -7;
            bool slowRead = false;
            while ((slowRead = slow.ReadNextDataLine(line, &slowPos, false))) {
                stripped = line;
                while (stripped.compare(0, 5, "--@@@") == 0)
                    stripped.erase(0, 5);
                if (!stripped.empty() && ((stripped[0] | 0x20) >= 'a' && (stripped[0] | 0x20) <= 'z')) break;
            }
            ASSERT_EQ(fastRead, slowRead) << text;
            ASSERT_EQ(fastPos, slowPos) << text;
            ASSERT_EQ(fast.Tell(), slow.Tell()) << text;
            ASSERT_EQ(fast.LineNumber(), slow.LineNumber()) << text;
            ASSERT_EQ(fast.Eof(), slow.Eof()) << text;
            if (!fastRead) return;
            ASSERT_EQ(std::string(fastLine), line) << text;
        }
    };
    for (const bool suppression : {true, false}) {
        const Suppression setting(suppression);
        ForEachText(symbols, 4, [&](const std::string& text) {
            expectSame(text, false);
            // Long enough for the heads of lines to be looked for in blocks.
            expectSame("1\n" + std::string(61, '.') + text + std::string(70, ' ') + text, false);
        });
        TextGenerator random(7);
        for (int round = 0; round < 300; ++round)
            expectSame(random.Lines(30000), true);
    }
}
