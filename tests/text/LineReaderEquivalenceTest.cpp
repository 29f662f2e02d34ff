// The readers, which read large pieces and give views of them, against the rules carried out literally.

#include <gtest/gtest.h>

#include <sstream>

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

/// Reads everything with both readers, and holds each step of the one to the other.
template <class Reader>
void ExpectSameLines(Reader& fast, LiteralLineReader& slow, bool dataLines, bool strip, const std::string& text)
{
    for (int step = 0; step < 5000; ++step) {
        std::string fastLine = "was";
        std::string slowLine = "was";
        long long fastPos = -7;
        long long slowPos = -7;
        const bool fastRead =
            dataLines ? fast.ReadNextDataLine(fastLine, &fastPos, strip) : fast.ReadNextLine(fastLine, &fastPos, strip);
        const bool slowRead =
            dataLines ? slow.ReadNextDataLine(slowLine, &slowPos, strip) : slow.ReadNextLine(slowLine, &slowPos, strip);
        ASSERT_EQ(fastRead, slowRead) << text;
        ASSERT_EQ(fastLine, slowLine) << text;
        ASSERT_EQ(fastPos, slowPos) << text;
        ASSERT_EQ(fast.Tell(), slow.Tell()) << text;
        ASSERT_EQ(fast.Eof(), slow.Eof()) << text;
        ASSERT_EQ(fast.LineNumber(), slow.LineNumber()) << text;
        if (!fastRead) return;
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
            std::string fastText = "was";
            std::string slowText = "was";
            long long fastPos = -7;
            long long slowPos = -7;
            long long fastResult = 0;
            long long slowResult = 0;
            const int operation = random.Below(8);
            const int offset = random.Below(4) == 0 ? random.Below(size + 300) : random.Below(1500);
            trail += std::to_string(operation) + ":" + std::to_string(offset) + " ";
            switch (operation) {
            case 0:
                fastResult = fast.ReadNextDataLine(fastText, &fastPos, true);
                slowResult = slow.ReadNextDataLine(slowText, &slowPos, true);
                break;
            case 1:
                fastResult = fast.Seek(offset, 0);
                slowResult = slow.Seek(offset, 0);
                break;
            case 2:
                fastResult = fast.Seek(offset, 1);
                slowResult = slow.Seek(offset, 1);
                break;
            case 3:
                fastResult = fast.Seek(offset - 5, 2);
                slowResult = slow.Seek(offset - 5, 2);
                break;
            case 4: {
                const bool strip = random.Below(2) != 0;
                fastResult = fast.ReadChars(fastText, offset, strip);
                slowResult = slow.ReadChars(slowText, offset, strip);
                break;
            }
            case 5: {
                fastText.assign(static_cast<std::size_t>(offset), '\0');
                slowText.assign(static_cast<std::size_t>(offset), '\0');
                fastResult = fast.ReadRaw(fastText.data(), offset);
                slowResult = slow.ReadRaw(slowText.data(), offset);
                break;
            }
            case 6: {
                const int length = random.Below(5000);
                fast.ReadRange(offset, offset + length, fastText);
                slow.ReadRange(offset, offset + length, slowText);
                break;
            }
            default:
                fastResult = fast.ReadNextLine(fastText, &fastPos, false);
                slowResult = slow.ReadNextLine(slowText, &slowPos, false);
                break;
            }
            ASSERT_EQ(fastResult, slowResult) << "round " << round << ": " << trail;
            ASSERT_EQ(fastText, slowText) << "round " << round << ": " << trail;
            ASSERT_EQ(fastPos, slowPos) << "round " << round << ": " << trail;
            ASSERT_EQ(fast.Tell(), slow.Tell()) << "round " << round << ": " << trail;
            ASSERT_EQ(fast.Eof(), slow.Eof()) << "round " << round << ": " << trail;
            ASSERT_EQ(fast.IsGood(), slow.IsGood()) << "round " << round << ": " << trail;
            ASSERT_EQ(fast.LineNumber(), slow.LineNumber()) << "round " << round << ": " << trail;
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
