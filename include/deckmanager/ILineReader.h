#pragma once

#include <cstdint>
#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class LineStreamReader;

/// A reader of lines that knows byte positions. All deck text comes in through it.
///
/// Positions are counts of raw bytes from the beginning of the text: line ends in full, a byte order mark, and the part
/// of an over-long line that the reader drops. A position taken from `Tell` or from a `pos` output stays valid for
/// `Seek` and `ReadRange` on the same text. A line holds at most 1024 characters; what lies behind them is lost. A
/// reader serves one thread, and is owned by the operation that made it.
class ILineReader
{
public:
    virtual ~ILineReader() = default;

    /// Moves to `offset` bytes from the beginning (origin 0), ahead of the position (origin 2) or behind it (any other
    /// origin). Clears the end-of-file flag first. True if the text can be read from there.
    virtual bool Seek(long long offset, int origin) = 0;

    /// The position of the next byte to be read.
    virtual long long Tell() const = 0;

    /// Whether the last read has met the end of the text. Doesn't look ahead: a text that ends with a line end gives
    /// one more empty line before this becomes true.
    virtual bool Eof() const = 0;

    /// Reads lines until one is a data line: neither blank nor a comment. A suppressed line is one while suppression is
    /// enabled. `pos`, if given, receives the position of the line's first byte. `stripSuppressMarker` takes the
    /// markers at the line's head away. False at the end of the text; then `line` is what it was.
    virtual bool ReadNextDataLine(std::string& line, long long* pos, bool stripSuppressMarker) = 0;

    /// Reads the next line, whatever it holds, without its line end. As above otherwise.
    virtual bool ReadNextLine(std::string& line, long long* pos, bool stripSuppressMarker) = 0;

    /// The bytes `first` to `last`, both inclusive, without any CR; as much as there is. Position and line number are
    /// afterwards what they were, and the end-of-file flag is cleared.
    virtual void ReadRange(long long first, long long last, std::string& text) = 0;

    /// Reads `count` bytes from the position on as they are, CR included, and moves behind them. Returns how many there
    /// were.
    virtual std::int64_t ReadRaw(char* buffer, std::int64_t count) = 0;

    /// The concrete reader that does the work, for code that reads lines without copying them. Null where there is
    /// none: the operations above then say everything.
    virtual LineStreamReader* Lines() { return nullptr; }
};

} // namespace Tarn::Fjel::Core::DeckManager
