#include <rapidcheck/gtest.h>

#include "tests/support/DeckTest.h"
#include "text/LineFileReader.h"
#include "text/LineFileWriter.h"
#include "text/LineStringReader.h"
#include "text/LineStringWriter.h"

namespace {

using namespace DeckTests;
using Target = LineStreamWriter::Target;
using TestSupport::CleanEnvironment;

/// What `write` puts into a target of that kind.
template <class Action>
std::string Written(Target target, Action write)
{
    LineStreamWriter writer(target);
    auto stream = std::make_unique<std::ostringstream>();
    const std::ostringstream& text = *stream;
    writer.Attach(std::move(stream), target);
    write(writer);
    EXPECT_EQ(writer.Written(), static_cast<std::int64_t>(text.str().size()));
    return text.str();
}

TEST(LineWriter, LineEndsByTargetAndOperation)
{
    struct Case
    {
        std::string in, text, textOfText, copy, copyToText, textToLf, copyToLf;
    };
    // In: WriteText and Copy to a CR LF file, to a text in memory (each pair in this order), and to an LF file.
    const std::vector<Case> cases = {
        {"a\nb\n", "a\r\nb\r\n", "a\r\nb\r\n", "a\r\nb\r\n", "a\nb\n", "a\nb\n", "a\nb\n"},
        {"a\r\nb\r\n", "a\r\nb\r\n", "a\r\nb\r\n", "a\r\nb\r\n", "a\nb\n", "a\nb\n", "a\nb\n"},
        {"a\rb\n", "ab\r\n", "a\rb\r\n", "a\rb\r\n", "ab\n", "ab\n", "a\rb\n"},
        {"a\r\r\nb\n", "a\r\nb\r\n", "a\r\r\nb\r\n", "a\r\r\nb\r\n", "a\nb\n", "a\nb\n", "a\r\nb\n"},
        {"a\nb\r", "a\r\nb\r\n", "a\r\nb\n", "a\r\nb\r\n", "a\nb\n", "a\nb\n", "a\nb\n"},
        {"a\r", "a\r\n", "a\n", "a\r\n", "a\n", "a\n", "a\n"},
        {"a\n\r", "a\r\n", "a\r\n", "a\r\n", "a\n", "a\n", "a\n"},
        {"\r", "", "", "", "", "", ""},
        {"\n", "\r\n", "\r\n", "\r\n", "\n", "\n", "\n"},
        {"\n\n", "\r\n\r\n", "\r\n\r\n", "\r\n\r\n", "\n\n", "\n\n", "\n\n"},
        {"", "", "", "", "", "", ""},
        {std::string("a\0b\nc\0", 6), std::string("a\0b\r\nc\0\r\n", 9), std::string("a\0b\r\nc\0\n", 8),
         std::string("a\0b\r\nc\0\r\n", 9), std::string("a\0b\nc\0\n", 7), std::string("a\0b\nc\0\n", 7),
         std::string("a\0b\nc\0\n", 7)},
    };
    for (const Case& c : cases) {
        const auto text = [&](ILineWriter& writer) { writer.WriteText(c.in); };
        const auto copy = [&](ILineWriter& writer) {
            LineStringReader reader(c.in);
            writer.Copy(reader, 0, static_cast<long long>(c.in.size()) - 1);
        };
        EXPECT_EQ(Written(Target::CrLfFile, text), c.text) << testing::PrintToString(c.in);
        EXPECT_EQ(Written(Target::Text, text), c.textOfText) << testing::PrintToString(c.in);
        EXPECT_EQ(Written(Target::CrLfFile, copy), c.copy) << testing::PrintToString(c.in);
        EXPECT_EQ(Written(Target::Text, copy), c.copyToText) << testing::PrintToString(c.in);
        EXPECT_EQ(Written(Target::LfFile, text), c.textToLf) << testing::PrintToString(c.in);
        EXPECT_EQ(Written(Target::LfFile, copy), c.copyToLf) << testing::PrintToString(c.in);
    }
}

RC_GTEST_PROP(LineWriterProperty, WherePiecesAreCutDoesntMatter, ())
{
    const auto text = *rc::gen::container<std::string>(rc::gen::element('a', '\r', '\n'));
    const auto to = *rc::gen::element(LineEnd::Lf, LineEnd::CrLf);
    const auto loneCr = *rc::gen::element(LineEndConverter::LoneCr::Drop, LineEndConverter::LoneCr::Keep);
    const auto cut = *rc::gen::inRange<std::size_t>(0, text.size() + 1);
    std::string whole(LineEndConverter::MostBytes(text.size()), 0);
    LineEndConverter one(to, loneCr);
    whole.resize(one.Convert(text, whole.data()));

    std::string first(LineEndConverter::MostBytes(cut), 0);
    std::string second(LineEndConverter::MostBytes(text.size() - cut), 0);
    LineEndConverter two(to, loneCr);
    first.resize(two.Convert(std::string_view(text).substr(0, cut), first.data()));
    second.resize(two.Convert(std::string_view(text).substr(cut), second.data()));
    RC_ASSERT(first + second == whole);
}

/// The texts, cut at blanks, as tokens with indent; "|" is the end of a container.
std::string Laid(const std::string& tokens, int valueLimit, int defaultLimit, bool dropDefaults = true)
{
    LineStringWriter writer;
    writer.SetValueRepeatLimit(valueLimit);
    writer.SetDefaultRepeatLimit(defaultLimit);
    writer.SetDropTrailingDefaults(dropDefaults);
    std::istringstream in(tokens);
    for (std::string token; in >> token;) {
        if (token == "|")
            writer.FlushItems();
        else
            writer.Write(token, true);
    }
    writer.FlushLine();
    return writer.GetText();
}

TEST(LineWriter, TokensAreLaidOut)
{
    const CleanEnvironment clean;
    struct Case
    {
        std::string tokens;
        int valueLimit, defaultLimit;
        std::string text;
    };
    const std::string nine = "123456789 ";
    // The rules at a glance; texts by chance are held to them below.
    const std::vector<Case> cases = {
        {"5 5 5 5", 4, 4, "  5 5 5 5"},
        {"5 5 5 5 5", 4, 4, "  5*5"},
        {"5 5 5 5 5", 0, 4, "  5 5 5 5 5"},
        {"1* 1* 1* 1* 1* 1* 1* 2", 4, 4, "  7* 2"},
        {"1 2 1* 1* | /", 4, 4, "  1 2 /"},
        {"1 1* 2 | 1* | /", 4, 4, "  1 1* 2 /"},
        {"1 1* 1* /", 4, 4, "  1 1* 1* /"},
        // A line holds 72 characters: two blanks, and seven tokens of nine with their blanks.
        {nine + nine + "12345678 " + nine + nine + nine + nine + "x", 0, 0,
         "  123456789 123456789 12345678 123456789 123456789 123456789 123456789 x"},
        {nine + nine + nine + nine + nine + nine + nine + "x", 0, 0,
         "  123456789 123456789 123456789 123456789 123456789 123456789 123456789\n  x"},
        // Joined, the run's width is that of its repeats, so it goes on where single tokens would not.
        {nine + nine + nine + nine + nine + nine + nine + nine + nine + nine + nine, 4, 4, "  11*123456789"},
        // Tokens too long to stand on a line often enough are never joined.
        {"12345678901234567890 12345678901234567890 12345678901234567890 12345678901234567890 12345678901234567890", 4,
         4,
         "  12345678901234567890 12345678901234567890 12345678901234567890\n  12345678901234567890 "
         "12345678901234567890"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Laid(c.tokens, c.valueLimit, c.defaultLimit), c.text) << c.tokens;
    EXPECT_EQ(Laid("1 1* 1* 1* 1* 1* | /", 4, 4, false), "  1 5* /");
}

TEST(LineWriter, IndentAndLineLimit)
{
    const CleanEnvironment clean;
    const LogRecorder log;
    Environment::Instance().SetDeckWriteMaxLineLength(10);
    LineStringWriter writer;
    writer.Write("TITLE", false);
    writer.NewLine();
    writer.Write("0123456789X", 11, true);
    writer.Write("", true);
    writer.Write("a", true);
    writer.EndLine();
    writer.EndLine();
    writer.Write("0123456789", false);
    EXPECT_EQ(writer.SetLineLimit(132), 0);
    writer.Write("0123456789", false);
    writer.Write("  A B", false);
    writer.Write("  A B", false);
    writer.SetValueRepeatLimit(1);
    writer.FlushLine();
    EXPECT_EQ(writer.GetText(), "TITLE\n  0123456789X\n  a\n0123456789 0123456789   2*A B");
    EXPECT_EQ(log.Texts(3), std::vector<std::string>{"Line written to deck file exceeds 10 characters"});
}

RC_GTEST_PROP(LineWriterProperty, ARunIsItsTokensOneByOne, ())
{
    const auto token = *rc::gen::element<std::string>("1*", "5", "12345678901", "0.123456789012345", "'A B'");
    const auto before = *rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>("1*", "5", "777"));
    const int limit = *rc::gen::inRange(0, 6);
    const int count = *rc::gen::inRange(0, 1200);
    const bool indent = *rc::gen::arbitrary<bool>();
    LineStringWriter single, run;
    for (LineStringWriter* writer : {&single, &run}) {
        writer->SetValueRepeatLimit(limit);
        writer->SetDefaultRepeatLimit(limit);
        for (const std::string& value : before)
            writer->Write(value, indent);
        if (writer == &run)
            writer->WriteRun(token, indent, count);
        else
            for (int i = 0; i < count; ++i)
                writer->Write(token, indent);
        writer->Write("/", indent);
        writer->FlushLine();
    }
    RC_ASSERT(run.GetText() == single.GetText());
}

/// The rules of the layout, step by step, with no thought for speed.
class LiteralWriter
{
public:
    int valueLimit = 0, defaultLimit = 0, lineLimit = 72;
    bool dropDefaults = true;
    std::string text;

    void Write(const std::string& token, bool indent)
    {
        for (;;) {
            if (indent && m_atLineStart) Add(" ");
            const std::size_t width = Width();
            if (static_cast<int>(width + (width > 0 ? 1 : 0) + token.size()) <= lineLimit) {
                Add(token);
                m_atLineStart = false;
                return;
            }
            if (m_atLineStart) {
                Add(token);
                NewLine();
                return;
            }
            NewLine();
        }
    }
    void FlushItems() { WriteOut(true); }
    void NewLine()
    {
        WriteOut(false);
        text += m_line + "\n";
        m_line.clear();
        m_atLineStart = true;
    }

private:
    bool IsJoined() const
    {
        const int limit = m_pending == "1*" ? defaultLimit : valueLimit;
        return limit != 0 && m_repeats >= limit;
    }
    std::size_t Width() const
    {
        std::size_t width = m_line.size();
        if (m_pending.empty()) return width;
        if (width > 0) ++width;
        if (IsJoined())
            return width + std::to_string(m_repeats).size() + 2 + (m_pending == "1*" ? 0 : m_pending.size());
        return width + m_pending.size() * static_cast<std::size_t>(m_repeats + 1) + static_cast<std::size_t>(m_repeats);
    }
    void Add(const std::string& token)
    {
        if (token == m_pending) {
            ++m_repeats;
            return;
        }
        WriteOut(false);
        m_pending = token;
        m_repeats = 0;
    }
    void Put(const std::string& token) { m_line += (m_line.empty() ? "" : " ") + token; }
    void WriteOut(bool atEnd)
    {
        if (!m_pending.empty() && !(m_pending == "1*" && atEnd && dropDefaults)) {
            if (IsJoined())
                Put(std::to_string(m_repeats + 1) + "*" + (m_pending == "1*" ? "" : m_pending));
            else
                for (int copy = 0; copy <= m_repeats; ++copy)
                    Put(m_pending);
        }
        m_pending.clear();
        m_repeats = 0;
    }

    std::string m_line, m_pending;
    int m_repeats = 0;
    bool m_atLineStart = true;
};

RC_GTEST_PROP(LineWriterProperty, TheLayoutIsThatOfTheRules, ())
{
    const CleanEnvironment clean;
    LiteralWriter literal;
    LineStringWriter writer;
    literal.lineLimit = *rc::gen::inRange(5, 80);
    Environment::Instance().SetDeckWriteMaxLineLength(literal.lineLimit);
    for (int steps = *rc::gen::inRange(1, 100); steps > 0; --steps) {
        switch (*rc::gen::inRange(0, 12)) {
        case 0:
            literal.NewLine();
            writer.NewLine();
            break;
        case 1:
            literal.FlushItems();
            writer.FlushItems();
            break;
        case 2: {
            const int before = std::exchange(literal.valueLimit, *rc::gen::inRange(0, 6));
            RC_ASSERT(writer.SetValueRepeatLimit(literal.valueLimit) == before);
            break;
        }
        case 3: {
            const int before = std::exchange(literal.defaultLimit, *rc::gen::inRange(0, 6));
            RC_ASSERT(writer.SetDefaultRepeatLimit(literal.defaultLimit) == before);
            break;
        }
        case 4:
            literal.dropDefaults = !literal.dropDefaults;
            EXPECT_NE(writer.SetDropTrailingDefaults(literal.dropDefaults), literal.dropDefaults);
            break;
        default:
            const auto token = *rc::gen::element<std::string>("1*", "1*", "5", "5", "'A B'", "/", "0.123456789012345");
            const bool indent = *rc::gen::inRange(0, 4) > 0;
            for (int count = *rc::gen::inRange(1, 12); count > 0; --count) {
                literal.Write(token, indent);
                writer.Write(token, indent);
            }
        }
    }
    literal.NewLine();
    writer.NewLine();
    RC_ASSERT(writer.GetText() == literal.text);
}

TEST(LineWriter, TextAndCopyEndTheirLine)
{
    const std::string source = "ALPHA\nBETA\nGAMMA";
    LineStringReader reader(source);
    LineStringWriter writer;
    writer.WriteText("");
    EXPECT_EQ(writer.Copy(reader, 3, 2), 0);
    EXPECT_EQ(writer.Copy(reader, 0, 2), 3); // ends inside a line
    EXPECT_EQ(writer.Copy(reader, 6, 10), 5);
    writer.WriteText("x\n");
    writer.WriteText("y");
    EXPECT_EQ(writer.Copy(reader, 11, 100), 5); // the text ends before
    writer.Write("z", true);
    writer.NewLine();
    EXPECT_EQ(writer.GetText(), "ALP\nBETA\nx\r\ny\nGAMMA\n  z\n");

    writer.SetText("kept");
    writer.Write("z", true);
    writer.FlushLine();
    EXPECT_EQ(writer.TakeText(), "keptz");
    EXPECT_EQ(writer.GetText(), "");

    // A copy that leaves its last line open: whatever follows ends it first.
    const std::string open = Written(Target::LfFile, [&](LineStreamWriter& out) {
        out.SetLeavesLastLineOpen(true);
        out.Copy(reader, 11, 15);
        out.EndLine();
    });
    EXPECT_EQ(open, "GAMMA");
    const std::string followed = Written(Target::LfFile, [&](LineStreamWriter& out) {
        out.SetLeavesLastLineOpen(true);
        for (int i = 0; i < 2; ++i)
            out.Copy(reader, 11, 15);
        out.EndLine();
        out.Write("1", true);
        out.NewLine();
        out.Copy(reader, 11, 15);
        out.WriteText("2\n");
        out.Copy(reader, 11, 15);
        out.NewLine();
    });
    EXPECT_EQ(followed, "GAMMA\nGAMMA\n  1\nGAMMA\n2\nGAMMA\n\n");
}

/// A reader that can't be moved.
class StuckReader : public ILineReader
{
public:
    bool Seek(long long, int) override { return false; }
    long long Tell() const override { return 0; }
    bool Eof() const override { return true; }
    bool ReadNextDataLine(std::string&, long long*, bool) override { return false; }
    bool ReadNextLine(std::string&, long long*, bool) override { return false; }
    void ReadRange(long long, long long, std::string&) override {}
    std::int64_t ReadRaw(char*, std::int64_t) override { return 0; }
};

TEST(LineWriter, ACopyFromWhatCannotBeReadThrows)
{
    StuckReader reader;
    LineStringWriter writer;
    EXPECT_EQ(TestSupport::Thrown<DeckManagerException>([&] { writer.Copy(reader, 0, 10); }),
              "LineStreamWriter::Copy: fail to read input stream");
}

TEST(LineFileWriter, OpensTruncatesAppendsAndCloses)
{
    const CleanEnvironment clean;
    const TempDir dir;
    const std::string path = dir.Path("A.DATA");
    LineFileWriter writer;
    EXPECT_FALSE(writer.Open(path, true)); // nothing there to append to
    EXPECT_FALSE(writer.IsGood());
    EXPECT_FALSE(dir.Exists("A.DATA"));
    EXPECT_FALSE(writer.Open(dir.Path(), false));
    EXPECT_NE(writer.FailureReason(), "");

    ASSERT_TRUE(writer.Open(path, false));
    EXPECT_EQ(writer.GetPath(), path);
    writer.WriteText("one\ntwo\n");
    EXPECT_EQ(writer.Tell(), 10);
    writer.Write("in hand", true);
    EXPECT_EQ(writer.Tell(), 10);
    EXPECT_TRUE(writer.IsGood());
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(writer.Close());
    EXPECT_FALSE(writer.IsGood());
    EXPECT_EQ(writer.GetPath(), "");
    EXPECT_EQ(dir.Read("A.DATA"), "one\r\ntwo\r\n  in hand");

    ASSERT_TRUE(writer.Open(path, true));
    EXPECT_EQ(writer.Tell(), 19);
    writer.NewLine();
    EXPECT_EQ(writer.Tell(), 21);
    ASSERT_TRUE(writer.Open(dir.Path("B.DATA"), false)); // closes the other
    EXPECT_EQ(writer.Tell(), 0);
    EXPECT_EQ(dir.Read("A.DATA"), "one\r\ntwo\r\n  in hand\r\n");
}

TEST(LineFileWriter, AFullDiskShows)
{
    const CleanEnvironment clean;
    const TempDir dir;
    for (const bool atClose : {false, true}) {
        FailingFileSystem disk;
        LineFileWriter writer;
        ASSERT_TRUE(writer.Open(dir.Path("A.DATA"), false, 64));
        disk.LimitSpace(atClose ? 40 : 100);
        const int lines = atClose ? 3 : 1000;
        for (int i = 0; i < lines; ++i)
            writer.WriteText("0123456789abcdef\n");
        EXPECT_EQ(writer.IsGood(), atClose);
        EXPECT_LE(writer.Tell(), 200);
        EXPECT_FALSE(writer.Close());
        EXPECT_NE(writer.FailureReason().find("space"), std::string::npos) << writer.FailureReason();
    }
    FailingFileSystem disk;
    LineFileWriter writer;
    ASSERT_TRUE(writer.Open(dir.Path("A.DATA"), false));
    writer.WriteText("0123456789abcdef\n");
    disk.FailAt(1, {FailingFileSystem::Call::Close}, EIO);
    EXPECT_FALSE(writer.Close());
    ASSERT_TRUE(writer.Open(dir.Path("A.DATA"), false));
    disk.FailAt(1, {FailingFileSystem::Call::Sync}, EIO);
    EXPECT_FALSE(writer.Sync());
    EXPECT_FALSE(writer.Close());
}

TEST(LineFileWriter, LineEndsAreKeptWhereThatIsThePolicy)
{
    const CleanEnvironment clean;
    const TempDir dir;
    const std::string mixed = "A\r\nB\nC\rD\r\n";
    const std::string feeds = "A\nB\r\nC\n";
    dir.Write("MIXED", mixed);
    dir.Write("FEEDS", feeds);
    const auto copied = [&](const std::string& from, const std::string& to, bool append = false) {
        LineFileReader reader;
        EXPECT_TRUE(reader.Open(dir.Path(from)));
        LineFileWriter writer;
        EXPECT_TRUE(writer.Open(dir.Path(to), append));
        writer.Copy(reader, 0, 100);
        writer.Write("x", true);
        writer.NewLine();
        writer.WriteText("y\n");
        EXPECT_TRUE(writer.Close());
        return dir.Read(to);
    };
    EXPECT_EQ(copied("FEEDS", "NEW"), "A\r\nB\r\nC\r\n  x\r\ny\r\n");
    EXPECT_EQ(copied("MIXED", "NEW"), "A\r\nB\r\nC\rD\r\n  x\r\ny\r\n");

    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    dir.Write("CRLF", "1\r\n");
    dir.Write("LF", "1\n");
    dir.Write("NONE", "1");
    EXPECT_EQ(Written(Target::Text,
                      [&](ILineWriter& writer) {
                          LineStringReader reader(feeds);
                          writer.Copy(reader, 0, 100);
                      }),
              "A\nB\nC\n"); // a text in memory knows nothing of it
    EXPECT_EQ(copied("MIXED", "CRLF"), mixed + "  x\r\ny\r\n");
    EXPECT_EQ(copied("FEEDS", "LF"), feeds + "  x\ny\n");
    EXPECT_EQ(copied("FEEDS", "NONE"), feeds + "  x\ny\n");
    EXPECT_EQ(copied("FEEDS", "FRESH"), feeds + "  x\ny\n");
    EXPECT_EQ(copied("FEEDS", "CRLF"), "A\r\nB\r\nC\r\n  x\r\ny\r\n");
    EXPECT_EQ(copied("MIXED", "LF"), "A\nB\nC\rD\n  x\ny\n");
    EXPECT_EQ(copied("FEEDS", "CRLF", true), "A\r\nB\r\nC\r\n  x\r\ny\r\nA\r\nB\r\nC\r\n  x\r\ny\r\n");
}

} // namespace
