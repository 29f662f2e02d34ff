#pragma once

#include <cstring>
#include <istream>
#include <memory>
#include <optional>
#include <string_view>

#include "text/LineEnd.h"
#include <deckmanager/ILineReader.h>

namespace Tarn::Fjel::Core::Service {
class FileInputStream;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Reads lines from a stream, or from a text in memory.
///
/// The reader keeps a window of raw bytes: 64 KiB at first, 4 KiB behind a jump, growing while it reads on, so that a
/// look at one keyword costs little and a walk through a file is made in large reads. Lines are found in the window,
/// and the views that the reader gives point into it: they are good until the next operation. End and failure are the
/// reader's own flags; they go by what a caller who read byte by byte would have met, not by how far the window has
/// been filled.
class LineStreamReader final : public ILineReader
{
public:
    /// What a line holds at most; the rest of a longer one is dropped.
    static constexpr std::size_t MaxLineLength = 1024;
    /// What the first line of a text may begin with; dropped there, and counted by the positions.
    static constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

    /// The size of the mark at the head of a text, in bytes; 0: there is none. The reader stays where it is.
    static std::int64_t MarkSize(ILineReader& reader);

    LineStreamReader() = default;
    /// A stream that was attached without ownership is left where the reader stands.
    ~LineStreamReader() override;
    LineStreamReader(const LineStreamReader&) = delete;
    LineStreamReader& operator=(const LineStreamReader&) = delete;

    /// Reads from `stream`, which isn't owned and must outlive the reader, or the next `Attach` or `Close`.
    void Attach(std::istream* stream);
    /// Takes the stream over.
    void Attach(std::unique_ptr<std::istream>& stream);
    /// Reads from `text`, which isn't copied and must outlive the use.
    void AttachText(std::string_view text);
    /// Closes the underlying file, if there is one, and attaches nothing.
    void Close();

    /// The number of lines read so far, or -1 behind a jump to anywhere but the beginning.
    int LineNumber() const { return m_lineNumber > 2147483647 ? 2147483647 : static_cast<int>(m_lineNumber); }
    /// Whether a stream is attached and nothing has gone wrong or ended.
    bool IsGood() const { return m_attached && m_flags == 0; }
    /// Looks one byte ahead. At the end clears the end-of-file flag and returns true.
    bool IsAtEnd();
    /// Clears the end-of-file flag. True if it was set.
    bool ClearEof();
    /// Reads up to `count` bytes into `text`, leaving out each CR and, if told, every suppress marker. Returns how many
    /// bytes were read.
    long long ReadChars(std::string& text, long long count, bool stripSuppressMarker);

    bool Seek(long long offset, int origin) override;
    long long Tell() const override { return m_windowPos + (m_next - m_begin); }
    bool Eof() const override { return (m_flags & EofFlag) != 0; }
    bool ReadNextDataLine(std::string& line, long long* pos, bool stripSuppressMarker) override;
    bool ReadNextLine(std::string& line, long long* pos, bool stripSuppressMarker) override;
    void ReadRange(long long first, long long last, std::string& text) override;
    std::int64_t ReadRaw(char* buffer, std::int64_t count) override;
    LineStreamReader* Lines() override { return this; }

    /// As `ReadNextLine` without stripping, and without a copy.
    bool NextLineView(std::string_view& line, long long* pos)
    {
        if (pos) *pos = Tell();
        if (m_flags == 0 && m_lineNumber != 0) {
            const std::size_t available = static_cast<std::size_t>(m_end - m_next);
            if (const void* found = std::memchr(m_next, '\n', available)) {
                const char* lineEnd = static_cast<const char*>(found);
                std::size_t size = static_cast<std::size_t>(lineEnd - m_next);
                if (size <= MaxLineLength) {
                    if (size > 0 && lineEnd[-1] == '\r') --size;
                    line = std::string_view(m_next, size);
                    m_next = lineEnd + 1;
                    if (m_lineNumber > 0) ++m_lineNumber;
                    return true;
                }
            }
        }
        return NextLineAcrossWindow(line);
    }

    /// As `ReadNextDataLine`, without a copy.
    bool NextDataLineView(std::string_view& line, long long* pos, bool stripSuppressMarker);

    /// Reads lines until one begins, suppress markers aside, with a letter at column 1: the only ones that can be
    /// keyword lines. `line` is as it stands in the text.
    bool HopToCandidateLine(std::string_view& line, long long* pos);

    /// The regular file that is read, in which positions are offsets: for who takes bytes of it elsewhere without the
    /// reader. Null where there is none.
    Service::FileInputStream* File() const;

    /// The bytes that the reader holds behind its position, 1024 at least while the text has as many. `whole` tells
    /// that the text ends with them. Nothing is taken.
    std::string_view Ahead(bool& whole);

private:
    friend std::optional<LineEnd> FirstLineEnd(ILineReader& reader);

    enum : unsigned
    {
        EofFlag = 1,
        FailFlag = 2,
        BadFlag = 4
    };

    void Reset(std::istream* stream);
    void PointAt(const char* begin, const char* next, const char* end);
    void LeaveStream();
    bool Fill();
    bool NextLineAcrossWindow(std::string_view& line);
    void DropRestOfLine();
    void SkipAhead(long long distance);
    void Jump(long long target);
    template <class Sink>
    long long Extract(long long count, Sink sink);

    std::unique_ptr<std::istream> m_owned;
    std::istream* m_stream = nullptr;
    /// The text in memory, where there is no stream.
    std::string_view m_text;
    bool m_attached = false;
    /// The stream stood at its beginning when it was attached, so that positions are offsets in it.
    bool m_startsAtZero = false;
    /// The last move went where the position says.
    bool m_positionTrue = true;
    /// The window reaches to the end of the text.
    bool m_exhausted = true;
    unsigned m_flags = 0;
    /// How the text's first line ends, once someone has asked.
    std::optional<std::optional<LineEnd>> m_firstLineEnd;
    std::int64_t m_lineNumber = 0;
    /// The position of `m_begin`.
    long long m_windowPos = 0;
    const char* m_begin = m_lineBuffer;
    const char* m_next = m_lineBuffer;
    const char* m_end = m_lineBuffer;
    std::unique_ptr<char[]> m_window;
    std::size_t m_capacity = 0;
    std::size_t m_fillSize = 0;
    /// Holds the head of a line that outgrows the window.
    char m_lineBuffer[MaxLineLength + 1];
};

} // namespace Tarn::Fjel::Core::DeckManager
