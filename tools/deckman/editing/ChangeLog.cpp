#include "editing/ChangeLog.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include <deckmanager/DeckPositions.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/TextToCommit.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/FileStream.h>

#include "output/Json.h"
#include "output/Output.h"
#include "output/UnifiedDiff.h"
#include "session/DeckSession.h"
#include "session/PlaceIndex.h"

namespace Deckman {

using DeckManager::IKeyword;
using DeckManager::IKeywordFile;
using DeckManager::KeywordText;

namespace {

int CountLines(std::string_view text)
{
    const auto ends = static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    return text.empty() || text.ends_with('\n') ? ends : ends + 1;
}

/// The first `lines` lines; all of it for -1.
std::string FirstLines(std::string text, int lines)
{
    std::erase(text, '\r');
    std::size_t end = 0;
    for (; lines > 0 && end < text.size(); --lines)
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
    if (lines >= 0) text.resize(end);
    return text;
}

/// The blank lines at the end: they stay where a comment goes.
std::string_view BlankEnd(std::string_view text)
{
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    const std::size_t feed = last == std::string_view::npos ? last : text.find('\n', last);
    return feed == std::string_view::npos ? std::string_view() : text.substr(feed + 1);
}

bool StandsOnDiskOf(const IKeyword& keyword, const IKeywordFile& file)
{
    return keyword.GetLine() > 0 && keyword.GetFile() == &file;
}

} // namespace

ChangeLog::ChangeLog(DeckSession& session, bool isShown) : m_session(session), m_isShown(isShown)
{
    // What stood ahead of what is asked for when edits have been made.
    if (isShown) session.Places(true).Complete();
}

ChangeLog::Record& ChangeLog::RecordOf(const IKeyword& keyword)
{
    const auto [place, isNew] = m_byKeyword.try_emplace(&keyword);
    if (!isNew) return *place->second;
    Record& record = m_records.emplace_back(Record{&keyword, keyword.GetName(), keyword.GetFile(), keyword.GetLine()});
    place->second = &record;
    const KeywordText text(keyword);
    record.text = text.Own();
    record.block = text.TrailingBlock();
    return record;
}

void ChangeLog::Touch(const IKeyword& keyword)
{
    if (m_isShown) RecordOf(keyword);
}

void ChangeLog::TouchAbove(const IKeyword& keyword)
{
    if (!m_isShown) return;
    Record& record = RecordOf(keyword);
    if (!record.isMoved && !record.changesAhead) record.ahead = CommentAbove(keyword);
    record.changesAhead = true;
}

void ChangeLog::NoteMove(const IKeyword& keyword)
{
    if (!m_isShown) return;
    Record& record = RecordOf(keyword);
    if (!record.isMoved && !record.changesAhead && record.file != nullptr) record.ahead = BlockAhead(keyword);
    record.isMoved = true;
}

void ChangeLog::NoteRemoval(const IKeyword& keyword)
{
    if (!m_isShown) return;
    Record& record = RecordOf(keyword);
    record.isGone = true;
    // Another keyword may come to lie where a new one was.
    if (record.file == nullptr) m_byKeyword.erase(&keyword);
}

void ChangeLog::NoteInserted(const IKeyword& keyword)
{
    if (!m_isShown) return;
    m_byKeyword[&keyword] = &m_records.emplace_back(Record{&keyword, keyword.GetName(), nullptr});
}

void ChangeLog::NoteAhead(const IKeyword& keyword, const std::string& text)
{
    if (m_isShown) RecordOf(keyword).ahead = text;
}

void ChangeLog::NoteHeader(const IKeywordFile& file)
{
    if (m_isShown && std::find(m_headers.begin(), m_headers.end(), &file) == m_headers.end())
        m_headers.push_back(&file);
}

/// What moves along: all between the keyword's line and the text of the keyword ahead on the disk.
std::string ChangeLog::BlockAhead(const IKeyword& keyword) const
{
    const IKeyword* before = m_session.Places(true).AheadOnDisk(keyword);
    return before != nullptr ? std::string(KeywordText(*before).TrailingBlock()) : std::string();
}

std::string ChangeLog::CommentAbove(const IKeyword& keyword) const
{
    return m_session.Keywords().GetComment(DeckManager::DeckPositionOf(&keyword, m_session.Deck()), true);
}

std::string ChangeLog::TextNow(const Record& record) const
{
    const KeywordText text(*record.keyword);
    if (record.file == nullptr) return text.All();
    // What has become a comment has no text of its own any more.
    if (!record.block.empty() && text.All().ends_with(record.block))
        return text.All().substr(0, text.All().size() - record.block.size());
    return record.keyword->IsCommentedOut() ? text.All() : std::string(text.Own());
}

/// The line behind the keyword's own text as it stands on the disk.
int ChangeLog::LineBehind(const IKeyword& keyword) const
{
    const auto found = m_byKeyword.find(&keyword);
    if (found != m_byKeyword.end()) return found->second->line + CountLines(found->second->text);
    return keyword.GetLine() + CountLines(KeywordText(keyword).Own());
}

/// What is new stands straight behind the keyword ahead that has stayed, and ahead of the comment above the next.
std::vector<ChangeLog::Arrival> ChangeLog::Arrivals() const
{
    std::vector<const IKeywordFile*> files;
    for (const Record& record : m_records) {
        if (record.isGone || (record.file != nullptr && !record.isMoved)) continue;
        const IKeywordFile* file = record.keyword->GetFile();
        if (std::find(files.begin(), files.end(), file) == files.end()) files.push_back(file);
    }
    std::vector<Arrival> arrivals;
    for (const IKeywordFile* file : files) {
        const IKeyword* stayed = nullptr;
        const std::size_t firstOfFile = arrivals.size();
        std::size_t headEnd = firstOfFile;
        int headLine = 1;
        for (DeckManager::KeywordFileIterator place = file->Begin(); place != file->End(); ++place) {
            const auto found = m_byKeyword.find(*place);
            const Record* record = found != m_byKeyword.end() ? found->second : nullptr;
            const bool hasCome = record != nullptr && (record->file == nullptr || record->isMoved);
            if (hasCome) {
                arrivals.push_back({record, file, stayed != nullptr ? LineBehind(*stayed) : 0});
                if (stayed == nullptr) headEnd = arrivals.size();
            } else if (StandsOnDiskOf(**place, *file)) {
                if (stayed == nullptr) headLine = (*place)->GetLine();
                stayed = *place;
            }
        }
        if (stayed == nullptr) {
            for (const Record& record : m_records) {
                if (record.file == file) headLine = std::max(headLine, record.line);
            }
        }
        for (std::size_t i = firstOfFile; i < headEnd; ++i)
            arrivals[i].line = headLine;
    }
    return arrivals;
}

ChangeLog::Change ChangeLog::HeadOf(const IKeywordFile& file) const
{
    const DeckManager::TextToCommit made = DeckManager::TextToCommit::Of(file);
    Service::FileInputStream stream(file.GetFileName().GetFullName());
    const std::string old{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const int firstLine = m_session.Places(true).FirstLineIn(file);
    const auto headLines = [](int line) { return line > 0 ? line - 1 : -1; };
    const auto first = std::find_if(made.lines.begin(), made.lines.end(), [](int line) { return line > 0; });
    return {&file,
            1,
            {},
            FirstLines(old, headLines(firstLine)),
            FirstLines(made.text, headLines(first != made.lines.end() ? *first : 0))};
}

std::vector<ChangeLog::Change> ChangeLog::Changes()
{
    std::vector<Change> changes;
    for (const IKeywordFile* file : m_headers)
        changes.push_back(HeadOf(*file));
    for (const Arrival& arrival : Arrivals()) {
        const Record& record = *arrival.record;
        const std::string ahead = record.changesAhead ? CommentAbove(*record.keyword) : record.ahead;
        changes.push_back({arrival.file, arrival.line, record.name, {}, ahead + TextNow(record)});
    }
    for (const Record& record : m_records) {
        if (record.file == nullptr) continue;
        const int above = CountLines(record.ahead);
        if (record.isGone || record.isMoved) {
            changes.push_back({record.file, record.line - above, record.name, record.ahead + record.text, {}});
            continue;
        }
        std::string after = TextNow(record);
        const bool isHead = std::find(m_headers.begin(), m_headers.end(), record.file) != m_headers.end() &&
                            m_session.Places(true).AheadOnDisk(*record.keyword) == nullptr;
        if (!record.changesAhead || isHead) {
            changes.push_back({record.file, record.line, record.name, record.text, std::move(after)});
            continue;
        }
        Change change{record.file, std::max(1, record.line - above), record.name, record.ahead,
                      CommentAbove(*record.keyword)};
        if (change.after.empty()) change.after = BlankEnd(record.ahead);
        if (after != record.text) {
            change.before += record.text;
            change.after += after;
        }
        changes.push_back(std::move(change));
    }
    std::erase_if(changes, [](const Change& change) { return change.before == change.after; });

    std::unordered_map<const IKeywordFile*, std::size_t> order;
    for (const IKeywordFile* file : m_session.FilesInDeckOrder())
        order.emplace(file, order.size());
    for (const Change& change : changes)
        m_shownNames.try_emplace(change.file, m_session.Shown(change.file->GetFileName()));
    const auto placeOf = [&order](const Change& change) {
        return std::tuple(order.try_emplace(change.file, order.size()).first->second, change.line);
    };
    std::stable_sort(changes.begin(), changes.end(),
                     [&](const Change& a, const Change& b) { return placeOf(a) < placeOf(b); });
    return changes;
}

/// Behind a keyword without data a comment that is new above a keyword is written with an empty line ahead of it.
bool ChangeLog::IsKeptApart(const Record& record) const
{
    const bool hasComment =
        record.file != nullptr
            ? record.changesAhead && record.ahead.empty()
            : DeckManager::VeldaneDeckInfo::BeginsWithCommentMarker(KeywordText(*record.keyword).All());
    const IKeywordFile* file = record.isGone || !hasComment ? nullptr : record.keyword->GetFile();
    if (file == nullptr) return false;
    DeckManager::KeywordFileIterator place = file->Find(record.keyword);
    return place != file->Begin() && (*--place)->GetSyntax()->GetMetaData() == nullptr;
}

bool ChangeLog::IsIntricate() const
{
    if (std::any_of(m_records.begin(), m_records.end(), [this](const Record& record) { return IsKeptApart(record); }))
        return true;
    const auto changesAhead = [](const Record& record) { return record.changesAhead && !record.isGone; };
    const auto hasLeft = [](const Record& record) {
        return record.file != nullptr && (record.isGone || record.isMoved);
    };
    if (m_session.Log().HasUnknownWords()) return !m_records.empty();
    return std::any_of(m_records.begin(), m_records.end(), changesAhead) &&
           std::any_of(m_records.begin(), m_records.end(), hasLeft);
}

void ChangeLog::PrintDiff(const std::vector<Change>& changes, Output& out) const
{
    UnifiedDiff diff(out);
    for (std::size_t i = 0; i < changes.size();) {
        const Change& first = changes[i];
        std::string after = first.after;
        // What comes to one place is one hunk.
        for (++i; i < changes.size() && first.before.empty() && changes[i].before.empty() &&
                  changes[i].file == first.file && changes[i].line == first.line;
             ++i)
            after += changes[i].after;
        diff.Add(m_session.PlaceOf(*first.file), first.line, first.before, after);
    }
}

void ChangeLog::PrintJson(const std::vector<Change>& changes, Output& out) const
{
    const auto appendText = [&out](const std::string& text) {
        if (text.empty())
            out.Append("null");
        else
            AppendJsonString(out, text);
    };
    for (const Change& change : changes) {
        out.Append("{\"action\":\"changed\",\"file\":");
        AppendJsonString(out, m_shownNames.at(change.file));
        out.Append(fmt::format(",\"line\":{},\"name\":", change.line));
        appendText(change.name);
        out.Append(",\"old\":");
        appendText(change.before);
        out.Append(",\"new\":");
        appendText(change.after);
        out.Append("}\n");
    }
}

} // namespace Deckman
