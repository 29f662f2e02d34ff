// The part of `Keyword` that writes it.
//
// A keyword's extent has two parts: its own text, through the last line that the reader of its data takes, and what
// stands behind that, which mostly is the comment above the keyword below. A keyword that has changed is written afresh
// only where it has, and the second part is copied whatever happens to the first.

#include "keywords/Keyword.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

#include "keywords/DataEnd.h"
#include "keywords/DataLine.h"
#include "keywords/ForceRewrite.h"
#include "keywords/HeldText.h"
#include "keywords/IKeywordOwner.h"
#include "keywords/ITagMgr.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordDataSerializer.h"
#include "keywords/KeywordState.h"
#include "keywords/KeywordStretches.h"
#include "keywords/LineMarks.h"
#include "text/ILineWriter.h"
#include "text/KeywordFileReader.h"
#include "text/LineStringReader.h"
#include "text/LineStringWriter.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/VariablesString.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SimulatorType;

namespace {

void TakeCarriageReturns(std::string& text)
{
    Service::StringReplace(text, "\r\n", "\n");
}

/// Whether a data line that begins in that stretch refers to a variable, which a tree has no place for.
bool RefersToVariables(ILineReader& lines, long long begin, long long end)
{
    lines.Seek(begin, 0);
    std::string line;
    long long position = 0;
    while (lines.ReadNextDataLine(line, &position, true) && position < end) {
        if (Keywords::VariablesString::ContainsVariables(line)) return true;
    }
    return false;
}

} // namespace

/// Where the data that are written come from.
struct Keyword::DataSource
{
    bool fresh = false; ///< not from the file
    /// The text that stands for them; null: the tree.
    const std::string* text = nullptr;
    /// What stands ahead of the data: the comments at the head of text that isn't written itself.
    std::optional<std::string> head;
};

bool Keyword::IsTagChanged() const
{
    return HasTagMgr() && GetTagMgr().IsTagChanged();
}

bool Keyword::IsCommentChanged() const
{
    return m_state && m_state->commentManager && m_state->commentManager->IsCommentChanged();
}

/// A suppression that was changed there and back has changed nothing.
bool Keyword::IsBodyChanged() const
{
    return m_dataChanged || m_commentedOut || m_suppressed != m_committedSuppressed || IsTagChanged() ||
           IsCommentChanged();
}

bool Keyword::IsWrittenAsItStands() const
{
    return HasValidExtent() && !m_leadingCommentChanged && !IsBodyChanged() && !ForceRewrite::IsOn();
}

std::shared_ptr<std::string> Keyword::GetText() const
{
    auto text = std::make_shared<std::string>();
    if (IsWrittenAsItStands()) {
        const Service::ReadWatch reading;
        if (const std::unique_ptr<ILineReader> lines = OpenForData())
            lines->ReadRange(m_position, m_position + m_size - 1, *text);
        RefuseUnlessRead(reading);
        if (!text->empty() && text->back() != '\n') text->push_back('\n');
        return text;
    }
    LineStringWriter writer;
    const Context context;
    Write(writer, m_owner != nullptr ? m_owner->RootContext() : context, SimulatorType::Any);
    *text = writer.TakeText();
    TakeCarriageReturns(*text);
    return text;
}

std::string Keyword::WriteDataText() const
{
    std::string text;
    const Context context;
    if (const Keywords::IKeywordData* data = DataTree(context)) {
        LineStringWriter writer;
        KeywordDataSerializer::Serialize(*data, writer, m_variablesAllowed, SimulatorType::Any);
        writer.FlushLine();
        text = writer.TakeText();
    }
    TakeCarriageReturns(text);
    Service::StringTrimRight(text);
    return text;
}

void Keyword::Write(ILineWriter& writer, const Context& context, SimulatorType simulator) const
{
    WriteLeadingComment(writer);
    WriteBehindComment(writer, nullptr, context, simulator, false);
}

void Keyword::WriteWithText(ILineWriter& writer, const std::string& dataText, const Context& context) const
{
    WriteLeadingComment(writer);
    WriteBehindComment(writer, &dataText, context, SimulatorType::Any, false);
}

void Keyword::WriteBehindComment(ILineWriter& writer, const std::string* dataText, const Context& context,
                                 SimulatorType simulator, bool ownTextOnly) const
{
    const DataSource source = dataText != nullptr ? DataSource{true, dataText, std::nullopt} : SourceOfData(context);
    long long restBegin = 0;
    WriteMarked(writer, source, context, simulator, ownTextOnly ? &restBegin : nullptr);
}

void Keyword::WriteLeadingComment(ILineWriter& writer) const
{
    if (m_leadingCommentChanged && !m_state->leadingComment.empty()) writer.WriteText(m_state->leadingComment);
}

/// Text that was set may have brought some of what stands behind the old text with it, so it takes a write to tell.
long long Keyword::RestBegin(const Context& context) const
{
    if (!IsBodyChanged()) return m_position + OwnSize(context);
    LineStringWriter unseen;
    long long restBegin = 0;
    WriteMarked(unseen, SourceOfData(context), context, SimulatorType::Any, &restBegin);
    return restBegin;
}

void Keyword::WriteTrailingText(ILineWriter& writer, const Context& context) const
{
    if (!HasValidExtent()) return;
    const std::shared_ptr<ILineReader> lines = ReaderToCopyFrom();
    const KeywordStretches stretches(*lines, m_position, m_size, CanHaveComment());
    CopyStretch(writer, *lines, OwnEnd(stretches, *lines, context), stretches.end, false);
}

long long Keyword::OwnSize(const Context& context) const
{
    if (!HasValidExtent()) return 0;
    const std::shared_ptr<ILineReader> lines = ReaderToCopyFrom();
    const KeywordStretches stretches(*lines, m_position, m_size, CanHaveComment());
    return OwnEnd(stretches, *lines, context) - m_position;
}

Keyword::DataSource Keyword::SourceOfData(const Context& context) const
{
    const std::string* const text = m_state && m_state->textIsData ? m_state->heldText.get() : nullptr;
    if (!ForceRewrite::IsOn()) return {m_dataChanged || !HasValidExtent(), text, std::nullopt};
    if (text && TextOutlivesItsTree(*text, context)) return {true, text, std::nullopt};
    DataSource source{true, nullptr, std::nullopt};
    if (text && HeldText::BeginsWithComment(*text)) source.head = HeldText::CommentsAtHead(*text);
    return source;
}

/// Whether text that has replaced the data holds what their tree has no place for.
bool Keyword::TextOutlivesItsTree(const std::string& text, const Context& context) const
{
    LineStringReader lines(text);
    const auto size = static_cast<long long>(text.size());
    if (m_variablesAllowed && RefersToVariables(lines, 0, size)) return true;
    State& state = GetState();
    if (m_syntax->GetMetaData() == nullptr || state.beingRead) return false;
    const Service::Log::Probe probe;
    const ReadingMark mark(state.beingRead);
    ReadReport report;
    try {
        const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(*m_syntax);
        KeywordDataDeserializer::Deserialize(*this, *data, lines, 0, size, context, false, nullptr, &report);
    } catch (const std::runtime_error&) {
        return true;
    }
    return !report.isComplete;
}

std::shared_ptr<ILineReader> Keyword::ReaderToCopyFrom() const
{
    if (std::shared_ptr<ILineReader> lines = BorrowReader()) return lines;
    ThrowUnreadable();
}

void Keyword::ThrowUnreadable() const
{
    throw DeckManagerException(
        fmt::format("The text of keyword {} cannot be read from the file {}.", GetName(), m_reader->GetPath()));
}

/// Behind the keyword's own text.
long long Keyword::OwnEnd(const KeywordStretches& stretches, ILineReader& lines, const Context& context) const
{
    const long long commentEnd =
        stretches.comment.begin == stretches.head || IsCommentChanged() ? stretches.comment.end : stretches.head;
    if (GetName() == "TITLE") return stretches.BehindLineAt(lines, stretches.head);
    if (m_syntax->GetMetaData() == nullptr) return commentEnd;
    const long long taken = TakenSize(lines, context);
    return taken > stretches.data - m_position ? std::min(m_position + taken, stretches.end) : commentEnd;
}

/// How far into the extent the reader of the data gets. It is asked for that alone: what it has to tell of the data
/// was told, or will be, when someone reads them.
long long Keyword::TakenSize(ILineReader& file, const Context& context) const
{
    State& state = GetState();
    if (state.takenSize != State::Unknown) return state.takenSize;
    const Service::ReadWatch reading;
    // Not from `file` itself: what the size of the data depends on may be read through it meanwhile.
    constexpr long long mostHeld = 64 * 1024;
    std::unique_ptr<ILineReader> lines;
    long long begin = m_position;
    if (m_size <= mostHeld) {
        std::string extent(static_cast<std::size_t>(m_size), '\0');
        const long long read = file.Seek(m_position, 0) ? file.ReadRaw(extent.data(), m_size) : 0;
        extent.resize(static_cast<std::size_t>(std::max(read, 0LL)));
        lines = std::make_unique<LineStringReader>(std::move(extent));
        begin = 0;
    } else {
        lines = m_reader->OpenLineReader(true);
        if (!lines) ThrowUnreadable();
    }
    ReadReport report;
    const Service::Log::Probe probe;
    const ReadingMark mark(state.beingRead);
    try {
        const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(*m_syntax);
        KeywordVariables variables;
        KeywordDataDeserializer::Deserialize(*this, *data, *lines, begin, m_size, context, true,
                                             m_variablesAllowed ? &variables : nullptr, &report);
    } catch (const std::runtime_error&) {
        // A size can't be told: all that could be data counts.
        const KeywordStretches stretches(*lines, begin, m_size, CanHaveComment());
        report = {stretches.BehindLastDataLine(*lines, stretches.head), false};
    }
    if (report.takenEnd >= 0) report.takenEnd += m_position - begin;
    if (reading.SawFailure()) ThrowUnreadable();
    NoteTaken(report);
    return state.takenSize;
}

/// `restBegin` null: what stands behind the keyword's own text follows. Else it is left out, and its beginning in the
/// file put there.
void Keyword::WriteMarked(ILineWriter& writer, const DataSource& source, const Context& context,
                          SimulatorType simulator, long long* restBeginOut) const
{
    if (IsSkipped()) return;
    if (!source.fresh && !IsBodyChanged()) {
        const long long size = restBeginOut != nullptr ? OwnSize(context) : m_size;
        CopyStretch(writer, *ReaderToCopyFrom(), m_position, m_position + size, false);
        if (restBeginOut != nullptr) *restBeginOut = m_position + size;
        return;
    }
    const bool marksChanged = m_commentedOut || m_suppressed != m_committedSuppressed;
    const bool marked = marksChanged || (m_suppressed && source.fresh);
    const bool endsOwn = source.fresh || marked || restBeginOut != nullptr;
    std::shared_ptr<ILineReader> lines;
    std::optional<KeywordStretches> stretches;
    DataSource data = source;
    long long ownEnd = 0;
    long long restBegin = 0;
    std::string ownText;
    if (HasValidExtent()) {
        lines = ReaderToCopyFrom();
        stretches.emplace(*lines, m_position, m_size, CanHaveComment());
        ownEnd = restBegin = endsOwn ? OwnEnd(*stretches, *lines, context) : stretches->end;
    }
    // What its reader makes nothing of (a title that looks like a comment), and what it has no value for, isn't lost to
    // a rewrite.
    const bool readAfresh = source.fresh && lines && !m_dataChanged && !source.text && m_syntax->GetMetaData();
    if (readAfresh && (TakenSize(*lines, context) < 0 || !GetState().isReadWhole ||
                       (m_variablesAllowed && RefersToVariables(*lines, stretches->head, ownEnd))))
        data.fresh = false;
    if (source.text) {
        ownText = *source.text;
        if (lines) {
            std::string rest;
            lines->ReadRange(ownEnd, stretches->end - 1, rest);
            const HeldText::Rest found = HeldText::TakeRest(ownText, rest);
            if (found == HeldText::Rest::WithoutBlock) restBegin = stretches->BehindLastDataLine(*lines, ownEnd);
        }
        Service::StringTrimRight(ownText);
        data.text = ownText.empty() ? nullptr : &ownText;
    }
    const KeywordStretches* const places = stretches ? &*stretches : nullptr;
    if (!marked) {
        WriteBody(writer, data, places, lines.get(), ownEnd, context, simulator);
    } else {
        LineStringWriter body;
        WriteBody(body, data, places, lines.get(), ownEnd, context, simulator);
        if (lines && marksChanged) {
            // Numbers too many are nobody else's: they must not stay behind without their keyword.
            const long long leftOver = stretches->BehindLeftOverData(*lines, restBegin);
            CopyStretch(body, *lines, restBegin, leftOver, IsActivated());
            restBegin = leftOver;
        }
        std::string text = body.TakeText();
        if (m_commentedOut)
            text = MarkLines(text, LineMark::Comment);
        else if (m_suppressed)
            text = MarkLines(text, LineMark::Suppress);
        writer.WriteText(text);
    }
    if (restBeginOut != nullptr)
        *restBeginOut = restBegin;
    else if (lines)
        CopyStretch(writer, *lines, restBegin, stretches->end, false);
}

/// Other data are no reason to write the keyword's line afresh, unless its tag stands on lines of its own, or would not
/// be written any more.
bool Keyword::KeepsLine(const DataSource& source, const KeywordStretches& stretches) const
{
    if (IsTagChanged()) return false;
    if (!source.fresh) return true;
    if (ForceRewrite::IsOn() || stretches.head != stretches.behindLine) return false;
    return Environment::Instance().WriteGeneratedTags() || !ReadTag();
}

/// The keyword's own text. Without `stretches` it has none in a file.
void Keyword::WriteBody(ILineWriter& writer, const DataSource& source, const KeywordStretches* stretches,
                        ILineReader* lines, long long ownEnd, const Context& context, SimulatorType simulator) const
{
    if (stretches && KeepsLine(source, *stretches))
        CopyStretch(writer, *lines, stretches->begin, stretches->head, IsActivated());
    else
        writer.WriteText(m_suppressed ? MarkLines(KeywordLine(stretches), LineMark::Suppress) : KeywordLine(stretches));

    const long long headEnd = stretches ? std::min(stretches->data, ownEnd) : 0;
    WriteHead(writer, source, stretches, lines, headEnd);
    if (!source.fresh) {
        CopyStretch(writer, *lines, headEnd, ownEnd, IsActivated());
    } else if (source.text) {
        writer.WriteText(*source.text);
        const std::string missing = MissingDataEnd(*m_syntax, *source.text);
        // At the end of a file data may go on to that.
        if (!missing.empty() &&
            (!stretches || MissingDataEnd(*m_syntax, *lines, stretches->head, stretches->end).empty()))
            writer.WriteText(missing);
    } else if (const Keywords::IKeywordData* data = DataTree(context)) {
        KeywordDataSerializer::Serialize(*data, writer, m_variablesAllowed, simulator);
    }
    writer.EndLine();
    if (!stretches && !source.text) writer.NewLine();
}

std::string Keyword::MissingEnd() const
{
    if (m_commentedOut || m_syntax->GetMetaData() == nullptr || !HasValidExtent()) return {};
    std::string missing;
    if (m_state && m_state->textIsData) {
        missing = MissingDataEnd(*m_syntax, *m_state->heldText);
    } else if (!m_dataChanged) {
        const std::shared_ptr<ILineReader> lines = ReaderToCopyFrom();
        const KeywordStretches stretches(*lines, m_position, m_size, CanHaveComment());
        missing = MissingDataEnd(*m_syntax, *lines, stretches.head, stretches.end);
    }
    return m_suppressed ? MarkLines(missing, LineMark::Suppress) : missing;
}

/// What stands between the keyword line and the data: the comment, and others.
void Keyword::WriteHead(ILineWriter& writer, const DataSource& source, const KeywordStretches* stretches,
                        ILineReader* lines, long long headEnd) const
{
    if (source.text && HeldText::BeginsWithComment(*source.text)) return;
    if (source.head) {
        writer.WriteText(*source.head);
    } else if (!stretches) {
        GetCommentManager().WriteComment(writer);
    } else if (!IsCommentChanged()) {
        CopyStretch(writer, *lines, stretches->head, headEnd, IsActivated());
    } else {
        CopyStretch(writer, *lines, stretches->head, stretches->comment.begin, IsActivated());
        GetCommentManager().WriteComment(writer);
        CopyStretch(writer, *lines, stretches->comment.end, headEnd, IsActivated());
    }
}

/// Name, what the user has put behind it, and the tag.
std::string Keyword::KeywordLine(const KeywordStretches* stretches) const
{
    std::string line = GetName();
    std::string behindTag;
    if (stretches)
        SplitKeywordLine(*stretches, line, behindTag);
    else if (m_state)
        line += m_state->besideName;
    const std::size_t size = line.size();
    GetTagMgr().WriteTag(line);
    if (!behindTag.empty()) {
        // What was a comment thanks to the tag needs a marker of its own without it.
        if (line.size() == size && !VeldaneDeckInfo::BeginsWithCommentMarker(behindTag))
            line.append(" ").append(VeldaneDeckInfo::COMMENT_MARKER);
        line.append(" ").append(behindTag);
    }
    return line;
}

/// `line`, the name, becomes what stands ahead of the tag.
void Keyword::SplitKeywordLine(const KeywordStretches& stretches, std::string& line, std::string& behindTag)
{
    const std::string_view text = VeldaneDeckInfo::SkipSuppressMarker(std::string_view(stretches.line));
    std::size_t nameSize = 0;
    while (nameSize < text.size() && !VeldaneDeckInfo::IsSpace(text[nameSize]))
        ++nameSize;
    // Letters behind those that count are the user's.
    if (nameSize > line.size()) line = text.substr(0, nameSize);
    std::string_view rest = text.substr(nameSize);
    const std::string& tag = Environment::Instance().GetKeywordGeneratedTag();
    if (const std::size_t found = rest.find(tag); found != std::string_view::npos) {
        behindTag = Service::Trimmed(rest.substr(found + tag.size()));
        rest = rest.substr(0, found);
    }
    line += Service::TrimmedRight(rest);
    if (!behindTag.empty() && !stretches.behindTags.empty()) behindTag += ' ';
    behindTag += stretches.behindTags;
}

std::string Keyword::GetBesideName() const
{
    if (!HasValidExtent()) return m_state ? m_state->besideName : std::string();
    const std::shared_ptr<ILineReader> lines = ReaderToCopyFrom();
    return BesideName(KeywordStretches(*lines, m_position, m_size, CanHaveComment()), GetName());
}

std::string Keyword::BesideNameIn(const std::string& keywordText, const std::string& name)
{
    LineStringReader lines(keywordText);
    std::string word;
    long long position = 0;
    while (word.empty()) {
        if (!LineReaderUtil::ReadNextValidLineAsKeyword(lines, word, &position, false, nullptr, nullptr)) return {};
    }
    return BesideName(KeywordStretches(lines, position, static_cast<long long>(keywordText.size()) - position, false),
                      name);
}

std::string Keyword::BesideName(const KeywordStretches& stretches, const std::string& name)
{
    std::string line = name;
    std::string behindTag;
    SplitKeywordLine(stretches, line, behindTag);
    line.erase(0, name.size());
    if (behindTag.empty()) return line;
    if (!VeldaneDeckInfo::BeginsWithCommentMarker(behindTag)) behindTag.insert(0, VeldaneDeckInfo::COMMENT_MARKER);
    return line + " " + behindTag;
}

std::string Keyword::GetAheadOfTag() const
{
    if (!HasValidExtent()) return {};
    const std::shared_ptr<ILineReader> lines = ReaderToCopyFrom();
    std::string line = GetName();
    std::string behindTag;
    SplitKeywordLine(KeywordStretches(*lines, m_position, m_size, CanHaveComment()), line, behindTag);
    // A name may be written longer than it counts.
    const std::size_t blank = line.find_first_of(" \t", GetName().size());
    return blank != std::string::npos ? line.substr(blank) : std::string();
}

void Keyword::CopyStretch(ILineWriter& writer, ILineReader& lines, long long begin, long long end, bool activate) const
{
    if (end <= begin) return;
    if (!activate) {
        if (writer.Copy(lines, begin, end - 1) != end - begin) ThrowUnreadable();
        return;
    }
    LineStringWriter copy;
    if (copy.Copy(lines, begin, end - 1) != end - begin) ThrowUnreadable();
    std::string text = copy.TakeText();
    LineReaderUtil::ActivateLines(text);
    writer.WriteText(text);
}

} // namespace Tarn::Fjel::Core::DeckManager
