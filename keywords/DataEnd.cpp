#include "keywords/DataEnd.h"

#include <algorithm>
#include <cstdint>

#include "text/LineStringReader.h"
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordRawTextMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordMD;
using Keywords::MDType;

namespace {

/// The lines of a text up to `end`, and behind them others.
class ContinuedReader final : public ILineReader
{
public:
    ContinuedReader(ILineReader& text, long long end, const std::string& rest) : m_text(text), m_end(end), m_rest(rest)
    {
    }

    bool Seek(long long offset, int origin) override
    {
        if (origin != 0) offset = origin == 2 ? Tell() - offset : Tell() + offset;
        m_isBehind = offset >= m_end;
        return m_isBehind ? m_rest.Seek(offset - m_end, 0) : m_text.Seek(offset, 0);
    }
    long long Tell() const override { return m_isBehind ? m_end + m_rest.Tell() : std::min(m_text.Tell(), m_end); }
    bool Eof() const override { return m_isBehind && m_rest.Eof(); }
    bool ReadNextDataLine(std::string& line, long long* pos, bool stripSuppressMarker) override
    {
        return Read(&ILineReader::ReadNextDataLine, line, pos, stripSuppressMarker);
    }
    bool ReadNextLine(std::string& line, long long* pos, bool stripSuppressMarker) override
    {
        return Read(&ILineReader::ReadNextLine, line, pos, stripSuppressMarker);
    }
    void ReadRange(long long first, long long last, std::string& text) override
    {
        std::string behind;
        m_text.ReadRange(first, std::min(last, m_end - 1), text);
        m_rest.ReadRange(std::max(first - m_end, 0LL), last - m_end, behind);
        text += behind;
    }
    std::int64_t ReadRaw(char* buffer, std::int64_t count) override
    {
        const std::int64_t ahead =
            m_isBehind ? 0 : m_text.ReadRaw(buffer, std::min<std::int64_t>(count, m_end - m_text.Tell()));
        if (ahead == count) return count;
        m_isBehind = true;
        return ahead + m_rest.ReadRaw(buffer + ahead, count - ahead);
    }

private:
    bool Read(bool (ILineReader::*next)(std::string&, long long*, bool), std::string& line, long long* pos,
              bool stripSuppressMarker)
    {
        long long begin = 0;
        if (!m_isBehind && m_text.Tell() < m_end && (m_text.*next)(line, &begin, stripSuppressMarker) && begin < m_end)
        {
            if (pos != nullptr) *pos = begin;
            return true;
        }
        m_isBehind = true;
        if (!(m_rest.*next)(line, &begin, stripSuppressMarker)) return false;
        if (pos != nullptr) *pos = m_end + begin;
        return true;
    }

    ILineReader& m_text;
    long long m_end;
    LineStringReader m_rest;
    bool m_isBehind = false;
};

/// A scan of the data that stand there goes on into the line behind them and `closing`.
bool IsOpen(const Keywords::IKeywordSyntax& syntax, ILineReader& text, long long begin, long long end,
            const std::string& closing)
{
    ContinuedReader lines(text, end, closing + "X\n");
    lines.Seek(begin, 0);
    LineReaderUtil::ConsumeDataLines(&syntax, lines);
    return lines.Tell() > end + static_cast<long long>(closing.size());
}

/// A scan of the data ends ahead of what stands behind them, for sure; where their last line has no end, that is not
/// told. Of most keywords no scan takes anything for data.
bool AreClosed(const Keywords::IKeywordSyntax& syntax, ILineReader& text, long long begin, long long end)
{
    text.Seek(begin, 0);
    LineReaderUtil::ConsumeDataLines(&syntax, text);
    return text.Tell() <= end && !text.Eof();
}

std::string LineAtEnd(const IKeywordMD* metadata)
{
    std::string line(1, VeldaneDeckInfo::TERMINATION);
    const MDType type = Keywords::KeywordUtils::GetMDType(metadata);
    if (type == MDType::RawText) {
        static_cast<const Keywords::IKeywordRawTextMD*>(metadata)->GetTerminator(line);
    } else if (type == MDType::Record) {
        // The line of a title, whatever stands in it.
        const auto& record = *static_cast<const Keywords::IKeywordRecordMD*>(metadata);
        if (record.GetItemCount() > 0 && Keywords::KeywordUtils::GetMDType(record.GetItemMD(0)) == MDType::RestOfLine)
            line.clear();
    }
    return line + "\n";
}

} // namespace

std::string MissingDataEnd(const Keywords::IKeywordSyntax& syntax, ILineReader& text, long long begin, long long end)
{
    if (AreClosed(syntax, text, begin, end) || !IsOpen(syntax, text, begin, end, {})) return {};
    const std::string line = LineAtEnd(syntax.GetMetaData());
    // Where a list ends with a terminator of its own, the last of its records may lack one, too.
    constexpr int mostLines = 3;
    std::string lines;
    for (int i = 0; i < mostLines; ++i) {
        lines += line;
        if (!IsOpen(syntax, text, begin, end, lines)) return lines;
    }
    return {};
}

std::string MissingDataEnd(const Keywords::IKeywordSyntax& syntax, std::string_view text)
{
    LineStringReader lines{std::string(text)};
    return MissingDataEnd(syntax, lines, 0, static_cast<long long>(text.size()));
}

} // namespace Tarn::Fjel::Core::DeckManager
