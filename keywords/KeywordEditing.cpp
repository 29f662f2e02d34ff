// The part of `Keyword` that changes it.

#include "keywords/Keyword.h"

#include "keywords/CommentText.h"
#include "keywords/IKeywordOwner.h"
#include "keywords/ITagMgr.h"
#include "keywords/KeywordState.h"
#include "text/KeywordFileReader.h"
#include "text/LineStreamReader.h"
#include "text/LineStringReader.h"
#include "text/TagRecognisers.h"
#include <deckmanager/Environment.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/DataIterator.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Service::Log;

namespace {

bool HoldsLineBreak(Keywords::IKeywordData& data)
{
    for (const MDType kind : {MDType::String, MDType::RestOfLine}) {
        for (Keywords::DataIterator place(data, kind); !place.AtEnd(); place.Next()) {
            if (place.GetSlot().GetString().find_first_of("\r\n") != std::string_view::npos) return true;
        }
    }
    return false;
}

void ToCapitals(Keywords::IKeywordData& data)
{
    std::string capitals;
    for (Keywords::DataIterator place(data, MDType::String); !place.AtEnd(); place.Next()) {
        Keywords::Slot value = place.GetSlot();
        if (!value.HasValue() || static_cast<const Keywords::IKeywordStringMD*>(place.GetItemMD())->PreservesCase())
            continue;
        capitals.assign(value.GetString());
        Service::StringToUpper(capitals);
        if (capitals != value.GetString()) value.SetString(capitals);
    }
}

/// Without the tag lines at its head.
std::string WithoutTagLines(const std::string& text)
{
    if (!IsKeywordTagLine(std::string_view(text).substr(0, text.find('\n')))) return text;
    LineStringReader lines(text);
    const auto size = static_cast<long long>(text.size());
    if (!LineReaderUtil::AdvanceToNextNonTagLine(&lines, size, nullptr, nullptr, true)) return {};
    return text.substr(static_cast<std::size_t>(lines.Tell()));
}

} // namespace

bool Keyword::SetData(std::unique_ptr<Keywords::IKeywordData>&& data, bool notify)
{
    if (!data || IsSkipped()) return false;
    if (data->GetMetaData() != m_syntax->GetMetaData()) {
        Log::SendLogMessage("Data type does not match the keyword", Log::Error);
        return false;
    }
    if (HoldsLineBreak(*data)) {
        Log::SendLogMessage("A string with a line break cannot be part of the data of keyword '" + GetName() + "'",
                            Log::Error);
        return false;
    }
    OnDataChanging();
    State& state = GetState();
    state.data = std::move(data);
    if (Environment::Instance().GetUppercaseKeywordStringsOnWrite()) ToCapitals(*state.data);
    state.heldText.reset();
    state.textIsData = false;
    DataReplaced(notify);
    return true;
}

bool Keyword::SetDataText(const std::string& text, bool notify)
{
    // In the middle of a file a byte order mark would be a part of the first word.
    constexpr std::string_view mark = LineStreamReader::ByteOrderMark;
    if (text.starts_with(mark)) return SetDataText(text.substr(mark.size()), notify);
    if (IsSkipped()) return false;
    LineStringReader lines(text);
    std::string line;
    const bool holdsData = lines.ReadNextDataLine(line, nullptr, true);
    if (holdsData && m_syntax->GetMetaData() == nullptr) {
        std::string message = "Found unexpected data for keyword '" + GetName() + "'";
        if (m_reader)
            message += " (line " + std::to_string(GetLine()) + ", file '" + m_reader->GetPath() + "')";
        else if (m_owner != nullptr)
            message += " (file '" + m_owner->GetFileName().GetFullName() + "')";
        Log::SendLogMessage(message, Log::Error);
        return false;
    }
    if (holdsData) {
        lines.Seek(0, 0);
        LineReaderUtil::ConsumeDataLines(m_syntax, lines);
        std::string word;
        if (LineReaderUtil::FindNextKeywordInAnySection(lines, word)) {
            Log::SendLogMessage("Found unexpected keyword name: " + word +
                                    ".\n  If this name is part of the data, indent it by\n  at least one space, and it "
                                    "will not be interpreted\n  as a separate keyword.",
                                Log::Error);
            return false;
        }
    }
    std::string held = WithoutTagLines(text);
    Service::StringTrimRight(held);
    const bool textIsData = m_state && m_state->textIsData;
    if (held.empty() && !textIsData) return true;

    OnDataChanging();
    State& state = GetState();
    state.heldText = held.empty() ? nullptr : std::make_shared<std::string>(std::move(held));
    state.textIsData = state.heldText != nullptr;
    state.data.reset();
    DataReplaced(notify);
    return true;
}

void Keyword::DataReplaced(bool notify)
{
    m_state->variables.reset();
    m_dataChanged = true;
    OnDataChanged();
    if (notify) NotifyUpdated();
}

std::unique_ptr<Keywords::IKeywordData> Keyword::GetAndResetData(const Context& context)
{
    GetData(context);
    std::unique_ptr<Keywords::IKeywordData> data;
    // What stands in no file can't be read again: the keyword keeps its own.
    if (!HasValidExtent() && m_state && m_state->data) return m_state->data->CloneSafely();
    if (m_state) data = std::move(m_state->data);
    if (m_dataChanged) {
        m_state->heldText.reset();
        m_state->textIsData = false;
        m_state->variables.reset();
        m_dataChanged = false;
        OnDataReverted();
    }
    NotifyUpdated();
    return data;
}

void Keyword::SetSuppressed(bool suppressed)
{
    if (suppressed == m_suppressed) return;
    m_suppressed = suppressed;
    m_suppressionChanged = true;
}

void Keyword::SetComment(const std::string& text)
{
    // Text that was merely read is no more than a copy of the file: it has no say.
    if (m_state && m_state->textIsData &&
        VeldaneDeckInfo::BeginsWithCommentMarker(Service::TrimmedLeft(*m_state->heldText)))
        return;
    GetCommentManager().SetComment(text);
}

void Keyword::SetLeadingComment(const std::string& text, bool isComment)
{
    GetState().leadingComment = isComment ? text : AsComment(text);
    m_leadingCommentChanged = true;
}

void Keyword::AddLeadingComment(const std::string& text, bool isComment, bool atEnd)
{
    const std::string added = isComment ? text : AsComment(text);
    std::string& comment = GetState().leadingComment;
    comment = atEnd ? OnLinesOfTheirOwn(std::move(comment), added) : OnLinesOfTheirOwn(added, comment);
    m_leadingCommentChanged = true;
}

std::string Keyword::GetLeadingComment() const
{
    return m_state ? m_state->leadingComment : std::string();
}

void Keyword::SetBesideName(const std::string& text)
{
    if (!text.empty() || m_state) GetState().besideName = text;
}

bool Keyword::IsDirty() const
{
    return IsBodyChanged() || m_suppressionChanged || m_leadingCommentChanged;
}

void Keyword::Rollback()
{
    if (m_dataChanged) {
        m_state->data.reset();
        m_state->heldText.reset();
        m_state->textIsData = false;
        m_state->variables.reset();
        m_dataChanged = false;
        OnDataReverted();
    }
    if (HasTagMgr()) GetTagMgr().RevertTag();
    if (m_state && m_state->commentManager) m_state->commentManager->RevertComment();
    if (m_leadingCommentChanged) m_state->leadingComment.clear();
    m_leadingCommentChanged = false;
    m_suppressed = m_committedSuppressed;
    m_suppressionChanged = false;
    m_commentedOut = false;
}

void Keyword::Commit(const std::shared_ptr<KeywordFileReader>& reader, long long position, long long size,
                     bool dropData)
{
    m_reader = m_commentedOut ? nullptr : reader;
    m_position = m_commentedOut ? -1 : position;
    m_size = m_commentedOut ? -1 : size;
    m_line = 0;
    // What the scan has learnt of the tag holds no more.
    if (IsTagChanged()) m_tagKnown = false;
    if (HasTagMgr()) GetTagMgr().CommitTag();
    if (m_state) {
        m_state->commentManager.reset();
        m_state->leadingComment.clear();
        // On the disk its lines may be others, and the comment above the next keyword belongs to them.
        m_state->heldText.reset();
        m_state->textIsData = false;
        m_state->takenSize = State::Unknown;
        if (dropData) {
            m_state->data.reset();
            m_state->variables.reset();
        }
        if (!m_state->IsInUse()) m_state.reset();
    }
    m_committedSuppressed = m_suppressed;
    m_suppressionChanged = false;
    m_leadingCommentChanged = false;
    m_dataChanged = false;
}

} // namespace Tarn::Fjel::Core::DeckManager
