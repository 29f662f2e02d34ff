#pragma once

#include <memory>
#include <ostream>
#include <utility>

#include "text/ILineWriter.h"
#include "text/LineEnd.h"
#include "text/RepeatPacker.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Writes lines to a stream. What the target is decides what becomes of line ends:
///
///     target            NewLine   WriteText                           Copy
///     text              LF        LF -> CR LF; a lone CR stays        LF stays; every CR goes
///     file, CR LF       CR LF     LF -> CR LF; every CR goes          LF -> CR LF; a lone CR stays
///     file, LF          LF        LF stays; every CR goes             LF stays; a lone CR stays
///
/// A CR at the very end of a block counts as belonging to a line end. Where files keep their own line ends, a copy from
/// a text of the target's own kind is a copy of its bytes.
class LineStreamWriter final : public ILineWriter
{
public:
    enum class Target
    {
        Text,
        CrLfFile,
        LfFile
    };

    explicit LineStreamWriter(Target target) : m_target(target) {}
    ~LineStreamWriter() override;
    LineStreamWriter(const LineStreamWriter&) = delete;
    LineStreamWriter& operator=(const LineStreamWriter&) = delete;

    /// Takes a stream over, which may be null, and forgets what was in hand. Whether copies keep their bytes goes by
    /// the policy for line ends at this moment.
    void Attach(std::unique_ptr<std::ostream> stream, Target target);
    /// Gives the stream back.
    std::unique_ptr<std::ostream> Detach();
    std::ostream* Attached() const { return m_stream.get(); }

    /// A stream is attached and has taken all so far.
    bool IsGood() const { return m_stream && m_stream->good(); }
    /// Bytes written since the stream was attached, without what is in hand.
    std::int64_t Written() const { return m_written; }
    /// From now on what is written ends its lines so; for files.
    void SetLineEnd(LineEnd lineEnd) { m_target = lineEnd == LineEnd::CrLf ? Target::CrLfFile : Target::LfFile; }
    LineEnd GetLineEnd() const { return m_target == Target::CrLfFile ? LineEnd::CrLf : LineEnd::Lf; }

    /// Whether a copy that ends inside a line waits with the line end until more is written, so that a file whose last
    /// line isn't ended stays so. No at first.
    void SetLeavesLastLineOpen(bool value) { m_leavesLastLineOpen = value; }
    /// Writes the line end that a copy has left out.
    void EndOpenLine();
    /// The text ahead ends in a line without an end, which is written when anything follows.
    void GoOnBehindOpenLine() { m_lineIsOpen = true; }
    /// A copy has left its last line without an end, or one was taken back.
    bool IsLineOpen() const { return m_lineIsOpen; }
    /// The last bytes that were written, a line end of the target's kind, are gone from the stream.
    void NoteLineEndTakenBack();
    /// What comes next belongs to the line that a copy has left open.
    void ContinueOpenLine() { m_lineIsOpen = false; }

    using ILineWriter::Write;
    void Write(const char* text, std::int32_t length, bool indent) override;
    void Write(const char* text, bool indent) override { WriteToken(text, indent); }
    void Write(const std::string& text, bool indent) override { WriteToken(text, indent); }
    /// What the three come to.
    void WriteToken(std::string_view token, bool indent);
    void FlushItems() override { m_packer.WriteOut(true); }
    void WriteText(std::string_view text) override;
    std::int64_t Copy(ILineReader& reader, long long first, long long last) override;
    void NewLine() override;
    void FlushLine() override;
    bool GetDropTrailingDefaults() const override { return m_packer.dropTrailingDefaults; }
    bool SetDropTrailingDefaults(bool value) override { return std::exchange(m_packer.dropTrailingDefaults, value); }
    std::int32_t SetValueRepeatLimit(std::int32_t limit) override
    {
        return std::exchange(m_packer.valueRepeatLimit, limit);
    }
    std::int32_t GetValueRepeatLimit() const override { return m_packer.valueRepeatLimit; }
    std::int32_t SetDefaultRepeatLimit(std::int32_t limit) override
    {
        return std::exchange(m_packer.defaultRepeatLimit, limit);
    }
    std::int32_t GetDefaultRepeatLimit() const override { return m_packer.defaultRepeatLimit; }
    void WriteRun(std::string_view text, bool indent, std::int64_t count) override;
    void EndLine() override;
    std::int32_t SetLineLimit(std::int32_t limit) override { return std::exchange(m_lineLimit, limit); }
    LineStreamWriter* Stream() override { return this; }

    /// Forgets what is in hand, as behind a text whose last byte was the end of a line, or not.
    void StartOver(bool atLineStart);

private:
    std::size_t LineLimit() const;
    char* Block();
    void Put(std::string_view bytes);
    void FinishBlock(bool lineEnded);
    std::int64_t CopyFromFile(ILineReader& reader, long long first, long long last);

    std::unique_ptr<std::ostream> m_stream;
    RepeatPacker m_packer;
    Target m_target;
    bool m_keepsBytes = false;
    bool m_leavesLastLineOpen = false;
    bool m_lineIsOpen = false; ///< the last line is without an end
    bool m_atLineStart = true;
    std::int32_t m_lineLimit = 0;
    std::int64_t m_written = 0;
    std::unique_ptr<char[]> m_block; ///< made at the first use
};

} // namespace Tarn::Fjel::Core::DeckManager
