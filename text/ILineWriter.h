#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;
class LineStreamWriter;

/// A writer of lines. All deck text goes out through it: tokens, which it gathers to lines of the length that the deck
/// format wants, with runs of equal tokens joined to repeats; blocks of text; and bytes copied from a reader.
///
/// Tokens are held back until their line is full, so blocks and copies belong at the beginning of a line. Nothing is
/// thrown and nothing told when the target takes no more; who owns the writer asks it.
class ILineWriter
{
public:
    virtual ~ILineWriter() = default;

    /// One token, which stays whole. `indent`: a line that begins with it gets a blank ahead, so that it can't be taken
    /// for a keyword. An empty token writes nothing. One that is longer than a line stands alone on one, and is told at
    /// severity 3.
    virtual void Write(const char* text, std::int32_t length, bool indent) = 0;
    virtual void Write(const char* text, bool indent) = 0;
    virtual void Write(const std::string& text, bool indent) = 0;
    void WriteToken(std::string_view token, bool indent)
    {
        Write(token.data(), static_cast<std::int32_t>(token.size()), indent);
    }

    /// The end of a container: writes the run in hand, or drops it when it is one of defaults and trailing defaults go.
    virtual void FlushItems() = 0;

    /// A block of text, with line ends as the target has them. The line that it ends in is ended.
    virtual void WriteText(std::string_view text) = 0;
    /// The bytes `first` to `last`, both inclusive; as many as there are. The line that they end in is ended. Returns
    /// how many the reader had, all if the target fails. Throws DeckManagerException if the reader can't go to `first`.
    virtual std::int64_t Copy(ILineReader& reader, long long first, long long last) = 0;

    /// Ends the line, which may be an empty one.
    virtual void NewLine() = 0;
    /// Writes what is in hand, without a line end.
    virtual void FlushLine() = 0;

    /// Whether `FlushItems` drops defaults; the setter gives the old value back. So do those that follow.
    virtual bool GetDropTrailingDefaults() const = 0;
    virtual bool SetDropTrailingDefaults(bool value) = 0;
    /// How many repeats of a value (one less than there are tokens) are joined; 0 for none.
    virtual std::int32_t SetValueRepeatLimit(std::int32_t limit) = 0;
    virtual std::int32_t GetValueRepeatLimit() const = 0;
    /// The same for the default token.
    virtual std::int32_t SetDefaultRepeatLimit(std::int32_t limit) = 0;
    virtual std::int32_t GetDefaultRepeatLimit() const = 0;

    /// The same token `count` times, at the cost of few.
    virtual void WriteRun(std::string_view text, bool indent, std::int64_t count) = 0;
    /// Ends the line unless it is ended.
    virtual void EndLine() = 0;
    /// The length that a line keeps to; 0 for the environment's. For what must stand on one line.
    virtual std::int32_t SetLineLimit(std::int32_t limit) = 0;

    /// The concrete writer that does the work, for code that writes many tokens. Null where there is none.
    virtual LineStreamWriter* Stream() { return nullptr; }
};

} // namespace Tarn::Fjel::Core::DeckManager
