#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <vector>

#include <deckmanager/DeckManagerException.h>

#include "text/KeywordFileReader.h"
#include "text/LineFileReader.h"
#include "text/LineStringReader.h"

#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempDir.h"
#include "tests/support/Thrown.h"

using namespace Tarn::Fjel::Core::DeckManager;
using TestSupport::FailingFileSystem;
using TestSupport::TempDir;

namespace {

using Lines = std::vector<std::string>;

template <class Reader>
Lines AllLines(Reader& reader)
{
    Lines lines;
    std::string line;
    while (reader.ReadNextLine(line, nullptr, false))
        lines.push_back(line);
    return lines;
}

} // namespace

TEST(LineReader, LongLinesAreCutAndTheNextLineIsFound)
{
    for (const std::size_t size : {1023u, 1024u, 1025u, 3000u, 1000000u}) {
        const TempDir dir;
        LineFileReader reader;
        ASSERT_TRUE(reader.Open(dir.Write("long", std::string(size, 'x') + "\nB\n")));
        std::string line;
        long long pos = 0;
        ASSERT_TRUE(reader.ReadNextLine(line, &pos, false));
        EXPECT_EQ(line, std::string(std::min<std::size_t>(size, 1024), 'x'));
        EXPECT_EQ(reader.Tell(), static_cast<long long>(size) + 1);
        ASSERT_TRUE(reader.ReadNextLine(line, &pos, false));
        EXPECT_EQ(line, "B");
        EXPECT_EQ(pos, static_cast<long long>(size) + 1);
        EXPECT_EQ(reader.LineNumber(), 2);
    }
}

TEST(LineReader, PositionsCountTheBytesOfTheFile)
{
    const TempDir dir;
    LineFileReader reader;
    ASSERT_TRUE(reader.Open(dir.Write("bom", "\xEF\xBB\xBF-- c\r\n--@@@AB \r\n \t\r\n--@@@-- x\n\xEF\xBB\xBF!")));
    std::string line;
    long long pos = -1;
    ASSERT_TRUE(reader.ReadNextLine(line, &pos, false));
    EXPECT_EQ(line, "-- c");
    EXPECT_EQ(pos, 0);
    ASSERT_TRUE(reader.ReadNextDataLine(line, &pos, true));
    EXPECT_EQ(line, "AB ");
    EXPECT_EQ(pos, 9);
    ASSERT_TRUE(reader.ReadNextDataLine(line, &pos, false));
    EXPECT_EQ(line, "\xEF\xBB\xBF!");
    EXPECT_EQ(reader.LineNumber(), 5);
    EXPECT_FALSE(reader.ReadNextDataLine(line, &pos, false));

    // Back to the beginning: lines are counted again, and the mark is dropped again.
    EXPECT_TRUE(reader.Seek(0, 0));
    ASSERT_TRUE(reader.ReadNextLine(line, nullptr, false));
    EXPECT_EQ(line, "-- c");
    EXPECT_EQ(reader.LineNumber(), 1);
    EXPECT_TRUE(reader.Seek(9, 0));
    ASSERT_TRUE(reader.ReadNextLine(line, nullptr, true));
    EXPECT_EQ(line, "AB ");
    EXPECT_EQ(reader.LineNumber(), -1);
    EXPECT_TRUE(reader.Seek(10, 2));
    EXPECT_EQ(reader.Tell(), 9);
    EXPECT_TRUE(reader.Seek(2, 1));
    EXPECT_EQ(reader.Tell(), 11);
    EXPECT_FALSE(reader.Seek(-1, 0));
    EXPECT_FALSE(reader.ReadNextLine(line, nullptr, false));
    EXPECT_TRUE(reader.Seek(0, 0));
}

TEST(LineReader, RangesLeaveThePlaceAlone)
{
    LineStringReader reader("AB\r\nCD\r\nEF");
    std::string line;
    std::string text = "was";
    ASSERT_TRUE(reader.ReadNextLine(line, nullptr, false));
    reader.ReadRange(5, 4, text);
    EXPECT_EQ(text, "");
    reader.ReadRange(1, 5, text);
    EXPECT_EQ(text, "B\nCD");
    EXPECT_EQ(reader.Tell(), 4);
    EXPECT_EQ(reader.Lines()->LineNumber(), 1);
    AllLines(reader);
    EXPECT_TRUE(reader.Eof());
    reader.ReadRange(8, 1000, text);
    EXPECT_EQ(text, "EF");
    EXPECT_EQ(reader.Tell(), 10);
    EXPECT_EQ(reader.Lines()->LineNumber(), 3);
    EXPECT_FALSE(reader.Eof());
    reader.ReadRange(0, 9223372036854775807LL, text);
    EXPECT_EQ(text, "AB\nCD\nEF");
}

TEST(LineReader, RawBytesAreWhatTheFileHolds)
{
    std::string bytes;
    for (int i = 0; i < 300000; ++i)
        bytes += static_cast<char>(i * 7 % 256);
    const TempDir dir;
    LineFileReader reader;
    ASSERT_TRUE(reader.Open(dir.Write("raw", bytes)));
    std::string read(bytes.size(), '\0');
    ASSERT_TRUE(reader.Seek(5, 0));
    EXPECT_EQ(reader.ReadRaw(read.data(), 3), 3);
    EXPECT_EQ(reader.ReadRaw(read.data() + 3, 200000), 200000);
    EXPECT_EQ(reader.Tell(), 200008);
    EXPECT_EQ(reader.ReadRaw(read.data() + 200003, 100000), 99992);
    EXPECT_EQ(read.substr(0, 299995), bytes.substr(5));
    EXPECT_TRUE(reader.Eof());
    EXPECT_TRUE(reader.Seek(0, 0));
    EXPECT_EQ(reader.ReadRaw(read.data(), 300000), 300000);
    EXPECT_EQ(read, bytes);
    EXPECT_TRUE(reader.IsGood());
    EXPECT_TRUE(reader.IsAtEnd());
    EXPECT_FALSE(reader.ClearEof());
}

TEST(LineReader, ABorrowedStreamIsLeftWhereTheReaderStands)
{
    std::istringstream stream("A\nB\nC\n");
    {
        LineStreamReader reader;
        reader.Attach(&stream);
        std::string line;
        ASSERT_TRUE(reader.ReadNextLine(line, nullptr, false));
        ASSERT_TRUE(reader.ReadNextLine(line, nullptr, false));
        EXPECT_EQ(line, "B");
    }
    std::string rest;
    stream >> rest;
    EXPECT_EQ(rest, "C");

    // Positions count from where the stream stood; a seek is one of the stream.
    stream.clear();
    stream.seekg(2);
    LineStreamReader reader;
    reader.Attach(&stream);
    std::string line;
    ASSERT_TRUE(reader.ReadNextLine(line, nullptr, false));
    EXPECT_EQ(line, "B");
    EXPECT_EQ(reader.Tell(), 2);
    EXPECT_TRUE(reader.Seek(0, 0));
    ASSERT_TRUE(reader.ReadNextLine(line, nullptr, false));
    EXPECT_EQ(line, "A");
}

TEST(LineReader, WithoutATextNothingIsRead)
{
    const TempDir dir;
    LineFileReader reader;
    std::string line = "was";
    EXPECT_FALSE(reader.Open(dir.Path("none")));
    EXPECT_FALSE(reader.Open(dir.Path()));
    EXPECT_FALSE(reader.IsGood());
    EXPECT_FALSE(reader.IsAtEnd());
    EXPECT_FALSE(reader.Seek(0, 0));
    EXPECT_FALSE(reader.ReadNextDataLine(line, nullptr, true));
    EXPECT_EQ(line, "was");
    reader.ReadRange(0, 10, line);
    EXPECT_EQ(line, "");
    EXPECT_TRUE(reader.Open(dir.Write("some", "A")));
    reader.Close();
    EXPECT_FALSE(reader.ReadNextLine(line, nullptr, false));
    std::unique_ptr<std::istream> stream = std::make_unique<std::ifstream>(dir.Path("some"));
    LineStreamReader lines;
    lines.Attach(stream);
    EXPECT_TRUE(lines.ReadNextLine(line, nullptr, false));
    EXPECT_EQ(line, "A");
    lines.Close();
    EXPECT_FALSE(lines.IsGood());
}

TEST(LineReader, AFailedReadIsNoEndOfTheFile)
{
    const TempDir dir;
    std::string text;
    for (int i = 0; i < 80000; ++i)
        text += "line " + std::to_string(i) + "\n";
    const std::string path = dir.Write("file", text);
    FailingFileSystem files;
    for (int failing = 1; failing < 6; ++failing) {
        files.Pass();
        LineFileReader reader;
        ASSERT_TRUE(reader.Open(path));
        files.FailAt(failing, {FailingFileSystem::Call::Read}, EIO);
        std::string line;
        int read = 0;
        while (reader.ReadNextLine(line, nullptr, false))
            ASSERT_EQ(line, "line " + std::to_string(read++));
        EXPECT_LT(read, 80000);
        EXPECT_FALSE(reader.Eof());
        EXPECT_FALSE(reader.IsGood());
        // The disk has recovered.
        EXPECT_TRUE(reader.Seek(0, 0));
        EXPECT_EQ(AllLines(reader).size(), 80001u);
    }
}

TEST(KeywordFileReader, OpensWhatIsThere)
{
    const TempDir dir;
    const std::string path = dir.Write("a.data", "A\n");
    KeywordFileReader file(path);
    EXPECT_TRUE(file.OpenLineReader(true));
    EXPECT_FALSE(KeywordFileReader("").OpenLineReader(true));
    EXPECT_FALSE(KeywordFileReader(dir.Path("none")).OpenLineReader(false));
    EXPECT_EQ(
        TestSupport::Thrown<DeckManagerException>([&] { KeywordFileReader(dir.Path("none")).OpenLineReader(true); }),
        "KeywordFileReader::LineReader: file does not exist: " + dir.Path("none"));
    // A file that is there and can't be read is the caller's affair.
    FailingFileSystem files;
    files.FailAt(1, {FailingFileSystem::Call::Open}, EACCES);
    EXPECT_FALSE(file.OpenLineReader(true));
}

TEST(KeywordFileReader, CountsLinesByTheirFirstLetter)
{
    const TempDir dir;
    KeywordFileReader file(dir.Write("a", "-- c\nAB\n 1 2 /\n\n  CD\n--@@@EF\nG"));
    EXPECT_EQ(file.LineNumberAt(0), 2);
    EXPECT_EQ(file.LineNumberAt(5), 2);
    EXPECT_EQ(file.LineNumberAt(6), 5);
    EXPECT_EQ(file.LineNumberAt(16), 5);
    EXPECT_EQ(file.LineNumberAt(17), 6);
    EXPECT_EQ(file.LineNumberAt(25), 7);
    EXPECT_EQ(file.LineNumberAt(31), -1);
    const std::string other = dir.Write("b", "A\n");
    file.SetPath(other);
    EXPECT_EQ(file.LineNumberAt(0), 1);
    dir.Write("b", "\n\nA\n");
    file.SetPath(other);
    EXPECT_EQ(file.LineNumberAt(0), 1);
    EXPECT_EQ(KeywordFileReader(dir.Path("none")).LineNumberAt(0), -1);
    // The keyword behind a byte order mark stands at 3.
    KeywordFileReader marked(dir.Write("c", "\xEF\xBB\xBFOIL\nGAS\n"));
    EXPECT_EQ(marked.LineNumberAt(0), 1);
    EXPECT_EQ(marked.LineNumberAt(3), 1);
    EXPECT_EQ(marked.LineNumberAt(4), 2);
}
