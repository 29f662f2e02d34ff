#include "text/LineStreamWriter.h"

#include <algorithm>
#include <optional>
#include <string>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineEnds.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/Log.h>

#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// What a block of text, or a copy, is moved in.
constexpr std::size_t PieceSize = 64 * 1024;

} // namespace

LineStreamWriter::~LineStreamWriter() = default;

void LineStreamWriter::Attach(std::unique_ptr<std::ostream> stream, Target target)
{
    m_stream = std::move(stream);
    m_target = target;
    m_keepsBytes = target != Target::Text && LineEnds::GetPolicy() == LineEnds::Policy::Keep;
    m_written = 0;
    StartOver(true);
}

std::unique_ptr<std::ostream> LineStreamWriter::Detach()
{
    return std::move(m_stream);
}

void LineStreamWriter::StartOver(bool atLineStart)
{
    m_packer.Clear();
    m_atLineStart = atLineStart;
    m_lineIsOpen = false;
}

std::size_t LineStreamWriter::LineLimit() const
{
    const std::int32_t limit = m_lineLimit > 0 ? m_lineLimit : Environment::Instance().DeckWriteMaxLineLength();
    return static_cast<std::size_t>(std::max(limit, 0));
}

void LineStreamWriter::Put(std::string_view bytes)
{
    if (!m_stream || bytes.empty()) return;
    m_stream->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (m_stream->good()) m_written += static_cast<std::int64_t>(bytes.size());
}

void LineStreamWriter::EndOpenLine()
{
    if (std::exchange(m_lineIsOpen, false)) Put(BytesOf(GetLineEnd()));
}

void LineStreamWriter::NoteLineEndTakenBack()
{
    m_written -= static_cast<std::int64_t>(BytesOf(GetLineEnd()).size());
    m_lineIsOpen = true;
}

void LineStreamWriter::Write(const char* text, std::int32_t length, bool indent)
{
    if (length > 0) WriteToken(std::string_view(text, static_cast<std::size_t>(length)), indent);
}

void LineStreamWriter::WriteToken(std::string_view token, bool indent)
{
    WriteRun(token, indent, 1);
}

void LineStreamWriter::WriteRun(std::string_view text, bool indent, std::int64_t count)
{
    if (text.empty()) return;
    if (m_lineIsOpen) EndOpenLine();
    const std::size_t limit = LineLimit();
    while (count > 0) {
        if (indent && m_atLineStart) m_packer.Add(VeldaneDeckInfo::SEPARATOR_TOKEN);
        const std::size_t width = m_packer.Width();
        if (width + (width > 0 ? 1 : 0) + text.size() <= limit) {
            m_atLineStart = false;
            if (count > 1 && m_packer.Holds(text)) {
                count -= m_packer.Repeat(count);
            } else {
                m_packer.Add(text);
                --count;
            }
        } else if (m_atLineStart) {
            m_packer.Add(text);
            --count;
            NewLine();
            Service::Log::SendLogMessage("Line written to deck file exceeds " + std::to_string(limit) + " characters",
                                         Service::Log::Error);
        } else {
            NewLine();
        }
    }
}

void LineStreamWriter::FlushLine()
{
    m_packer.WriteOut(false);
    if (!m_packer.Line().empty()) {
        EndOpenLine();
        Put(m_packer.Line());
    }
    m_packer.Clear();
}

void LineStreamWriter::NewLine()
{
    EndOpenLine();
    m_packer.WriteOut(false);
    m_packer.Line() += BytesOf(GetLineEnd());
    Put(m_packer.Line());
    m_packer.Clear();
    m_atLineStart = true;
}

void LineStreamWriter::EndLine()
{
    if (!m_atLineStart) NewLine();
}

char* LineStreamWriter::Block()
{
    if (!m_block) m_block = std::make_unique_for_overwrite<char[]>(PieceSize + LineEndConverter::MostBytes(PieceSize));
    return m_block.get();
}

void LineStreamWriter::WriteText(std::string_view text)
{
    if (text.empty() || !m_stream) return;
    FlushLine();
    EndOpenLine();
    char* const out = Block();
    LineEndConverter converter(m_target == Target::LfFile ? LineEnd::Lf : LineEnd::CrLf,
                               m_target == Target::Text ? LineEndConverter::LoneCr::Keep
                                                        : LineEndConverter::LoneCr::Drop);
    std::optional<char> lastByte;
    for (std::size_t at = 0; at < text.size() && m_stream->good(); at += PieceSize) {
        const std::string_view written(out, converter.Convert(text.substr(at, PieceSize), out));
        Put(written);
        if (!written.empty()) lastByte = written.back();
    }
    if (lastByte) FinishBlock(*lastByte == '\n');
}

std::int64_t LineStreamWriter::Copy(ILineReader& reader, long long first, long long last)
{
    if (last < first) return 0;
    const std::int64_t asked = last - first + 1;
    if (!m_stream) return asked;
    const bool keepsBytes = m_keepsBytes && FirstLineEnd(reader).value_or(GetLineEnd()) == GetLineEnd();
    if (!reader.Seek(first, 0)) throw DeckManagerException("LineStreamWriter::Copy: fail to read input stream");
    FlushLine();
    EndOpenLine();
    char* const in = Block();
    char* const out = in + PieceSize;
    LineEndConverter converter(GetLineEnd(), m_target == Target::Text ? LineEndConverter::LoneCr::Drop
                                                                      : LineEndConverter::LoneCr::Keep);
    std::int64_t copied = keepsBytes ? CopyFromFile(reader, first, last) : 0;
    first += copied;
    std::optional<char> lastByte;
    bool isMarkAlone = false;
    while (first <= last && m_stream->good()) {
        const auto wanted = std::min<std::int64_t>(last - first + 1, PieceSize);
        const std::int64_t count = reader.ReadRaw(in, wanted);
        if (count <= 0) break;
        const std::string_view piece(in, static_cast<std::size_t>(count));
        const std::string_view written = keepsBytes ? piece : std::string_view(out, converter.Convert(piece, out));
        Put(written);
        if (!written.empty()) lastByte = written.back();
        isMarkAlone = written == LineStreamReader::ByteOrderMark && m_written == count;
        copied += count;
        first += count;
    }
    if (lastByte && *lastByte != '\n' && m_leavesLastLineOpen) {
        StartOver(true);
        // A byte order mark is no line.
        m_lineIsOpen = !isMarkAlone;
    } else if (lastByte) {
        FinishBlock(*lastByte == '\n');
    }
    return m_stream->good() ? copied : asked;
}

/// Copies what is long from file to file, but for its last byte, and leaves the reader behind it. Returns how much of
/// it: nothing where it isn't long, or reader or target is no file.
std::int64_t LineStreamWriter::CopyFromFile(ILineReader& reader, long long first, long long last)
{
    if (last - first < static_cast<std::int64_t>(PieceSize)) return 0;
    LineStreamReader* const lines = reader.Lines();
    Service::FileInputStream* const source = lines ? lines->File() : nullptr;
    auto* const target = dynamic_cast<Service::FileOutputStream*>(m_stream.get());
    if (!source || !target) return 0;
    const std::int64_t copied = target->CopyFrom(*source, first, last - first);
    m_written += copied;
    reader.Seek(first + copied, 0);
    return copied;
}

void LineStreamWriter::FinishBlock(bool lineEnded)
{
    StartOver(true);
    if (!lineEnded) Put(BytesOf(GetLineEnd()));
}

} // namespace Tarn::Fjel::Core::DeckManager
