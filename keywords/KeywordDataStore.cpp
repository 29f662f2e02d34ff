#include "keywords/KeywordDataStore.h"

#include <limits>
#include <memory>
#include <optional>

#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/IListEndDetector.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// Keywords that may stand without any data line.
bool MayLackData(std::string_view name)
{
    return name == "MISCIBLE" || name == "ENDSCALE" || name == "BRINE";
}

/// The size of what stands up to and with the comment line that the text begins with, blank lines aside; 0 when there
/// is none.
std::size_t CommentLineSize(std::string_view text)
{
    const std::string_view comment = Service::TrimmedLeft(text);
    if (!VeldaneDeckInfo::BeginsWithCommentMarker(comment) || VeldaneDeckInfo::BeginsWithSuppressMarker(comment))
        return 0;
    const std::size_t end = comment.find('\n');
    return end == std::string_view::npos ? 0 : text.size() - comment.size() + end + 1;
}

std::unique_ptr<IStringTokenizer> MakeChain(ExpandingTokenizer*& chain)
{
    auto tokenizer = std::make_unique<ExpandingTokenizer>();
    chain = tokenizer.get();
    return tokenizer;
}

} // namespace

KeywordDataStore::KeywordDataStore(ILineReader* reader) : m_reader(reader), m_tokenizer(MakeChain(m_chain)) {}

bool KeywordDataStore::Open(const IKeyword& keyword, long long start, long long length, bool firstLineIsKeywordName)
{
    m_start = start;
    m_length = length;
    m_firstLineIsKeywordName = firstLineIsKeywordName;
    m_currentLine.clear();
    m_atEnd = true;

    const std::string& name = keyword.GetName();
    const auto fail = [&name](std::string_view reason) {
        Service::Log::SendLogMessage(fmt::format("Failed to read data of keyword {}{}", name, reason),
                                     Service::Log::Error);
        return false;
    };

    if (!m_reader || start < 0 || length < 0) return fail(": data store has not been properly initialized.");
    const std::int64_t end = End();
    m_reader->Seek(start, 0);
    if (firstLineIsKeywordName && !m_reader->ReadNextDataLine(m_nextLine, nullptr, true))
        return fail(": can not read keyword name.");
    long long position = -1;
    if (!m_reader->ReadNextDataLine(m_nextLine, &position, true)) {
        // As the last word of a file such a keyword is as good as anywhere else: nothing is wrong with the deck.
        std::optional<Service::Log::Probe> expected;
        if (MayLackData(name)) expected.emplace();
        return fail(": keyword has no valid data line.");
    }
    Service::StringTrimRight(m_nextLine);
    if (position == end && MayLackData(name)) return true;
    if (position >= end) {
        const bool known = !Environment::Instance().GetSyntaxTable()->FindSyntaxes(m_nextLine).empty();
        return fail(known ? ": keyword is not properly terminated." : ": attempting to read beyond keyword boundary.");
    }
    // A title is taken whole: whatever its length, nothing of it is lost.
    std::optional<Service::Log::Probe> harmless;
    if (name == "TITLE") harmless.emplace();
    TakeOverLine(position);
    return true;
}

std::int64_t KeywordDataStore::End() const
{
    return m_length > std::numeric_limits<std::int64_t>::max() - m_start ? std::numeric_limits<std::int64_t>::max()
                                                                         : m_start + m_length;
}

void KeywordDataStore::TakeOverLine(std::int64_t position)
{
    m_currentLine.swap(m_nextLine);
    m_linePosition = position;
    m_lineEnd = m_reader->Tell();
    m_tokenizer.SetText(&m_currentLine);
    m_atEnd = false;
}

bool KeywordDataStore::AdvanceLine()
{
    if (m_atEnd) return false;
    // The line goes to the tokenizer only once it is known to be this keyword's: what a reset starts on again is never
    // a line of the next keyword.
    long long position = -1;
    if (m_reader->ReadNextDataLine(m_nextLine, &position, true) && position < End()) {
        Service::StringTrimRight(m_nextLine);
        TakeOverLine(position);
    } else {
        m_atEnd = true;
    }
    return !m_atEnd;
}

bool KeywordDataStore::NextTokenView(std::string_view& token, bool stayOnLine, bool allowCommas, bool* quoted)
{
    if (m_atEnd) return false;
    // A data line may hold no token at all.
    while (!(m_tokenizer.HasPeeked() ? m_tokenizer.NextView(token, quoted, allowCommas)
                                     : m_chain->NextView(token, quoted, allowCommas)))
    {
        if (stayOnLine || !AdvanceLine()) return false;
    }
    MarkLineTaken();
    if (m_traced) TraceToken();
    return true;
}

bool KeywordDataStore::NextToken(std::string& token, bool stayOnLine, bool allowCommas, bool* quoted)
{
    std::string_view view;
    if (!NextTokenView(view, stayOnLine, allowCommas, quoted)) {
        token.clear();
        return false;
    }
    token.assign(view);
    return true;
}

bool KeywordDataStore::PeekTokenView(std::string_view& token, bool stayOnLine, bool* quoted)
{
    if (m_atEnd) return false;
    while (!m_tokenizer.PeekView(token, quoted)) {
        if (stayOnLine || !AdvanceLine()) return false;
    }
    return true;
}

bool KeywordDataStore::PeekToken(std::string& token, bool stayOnLine, bool* quoted)
{
    std::string_view view;
    if (!PeekTokenView(view, stayOnLine, quoted)) return false;
    token.assign(view);
    return true;
}

bool KeywordDataStore::ExpectToken(std::string_view expected, bool consume, bool stayOnLine)
{
    std::string_view token;
    if (!PeekTokenView(token, stayOnLine, nullptr) || token != expected) return false;
    if (consume && !m_atEnd) NextTokenView(token, true, false, nullptr);
    return true;
}

std::int64_t KeywordDataStore::PassPlainLines(PlainNumbers::Rules rules, std::int64_t most)
{
    LineStreamReader* const lines = m_atEnd ? nullptr : m_reader->Lines();
    std::int64_t values = 0;
    while (lines) {
        bool whole = false;
        std::string_view ahead = lines->Ahead(whole);
        ahead = ahead.substr(0, static_cast<std::size_t>(std::max<std::int64_t>(End() - lines->Tell(), 0)));
        PlainNumbers::Passed passed = PlainNumbers::Pass(ahead, rules, most - values);
        if (passed.bytes == 0) passed.bytes = CommentLineSize(ahead);
        if (passed.bytes == 0) break;
        lines->Seek(static_cast<long long>(passed.bytes), 1);
        values += passed.values;
    }
    return values;
}

bool KeywordDataStore::AtListEnd(const Keywords::IListEndDetector* detector)
{
    std::string_view token;
    if (!detector || !PeekTokenView(token, false, nullptr)) return false;
    bool consume = false;
    if (!detector->IsEnd(token, consume)) return false;
    if (consume) NextTokenView(token, true, false, nullptr);
    return true;
}

std::int64_t KeywordDataStore::CountTokensToTerminator()
{
    std::int64_t count = 0;
    std::string_view token;
    while (NextTokenView(token, true, false, nullptr)) {
        ++count;
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) return count;
        count += TakeRun(INT32_MAX);
    }
    return -count;
}

void KeywordDataStore::ResetLine()
{
    m_tokenizer.SetText(&m_currentLine);
    m_atEnd = false;
}

bool KeywordDataStore::ReadAllText(std::string& text)
{
    text.clear();
    if (m_start < 0 || m_length < 0 || !m_reader) return false;
    const std::int64_t last = End() - 1;
    std::int64_t first = m_start;
    bool suppressed = false;
    if (m_firstLineIsKeywordName) {
        const long long position = m_reader->Tell();
        suppressed = Environment::Instance().KeywordSuppressionEnabled() &&
                     LineReaderUtil::NextLineIsSuppressed(m_reader, m_start);
        first = LineReaderUtil::AdvanceToNonTagLine(m_reader, m_start, m_length, nullptr, false) ? m_reader->Tell()
                                                                                                 : last + 1;
        m_reader->Seek(position, 0);
    }
    if (first > last) return false;
    m_reader->ReadRange(first, last, text);
    if (suppressed) LineReaderUtil::ActivateLines(text);
    m_textStart = first;
    return true;
}

void KeywordDataStore::MarkTextTaken(std::int64_t lines)
{
    if (m_textStart < 0) return;
    if (lines < 0) {
        m_takenEnd = End();
        return;
    }
    const long long position = m_reader->Tell();
    m_reader->Seek(m_textStart, 0);
    std::int64_t taken = m_textStart;
    for (; lines > 0 && m_reader->ReadNextLine(m_nextLine, nullptr, false); --lines)
        taken = m_reader->Tell();
    m_takenEnd = taken;
    m_reader->Seek(position, 0);
}

int KeywordDataStore::LineInExtent() const
{
    if (!m_reader || m_linePosition < 0 || m_start < 0) return 0;
    if (m_countedPosition < m_start || m_countedPosition > m_linePosition) {
        m_countedPosition = m_start;
        m_countedLines = 0;
    }
    const long long position = m_reader->Tell();
    m_reader->Seek(m_countedPosition, 0);
    std::string line;
    while (m_countedPosition < m_linePosition && m_reader->ReadNextLine(line, nullptr, false)) {
        m_countedPosition = m_reader->Tell();
        ++m_countedLines;
    }
    m_reader->Seek(position, 0);
    return m_countedLines;
}

} // namespace Tarn::Fjel::Core::DeckManager
