// The part of `DeckMerger` that carries what stands at the ends of files, which belongs to no keyword.

#include <algorithm>
#include <memory>
#include <string_view>

#include "deck/Anchors.h"
#include "deck/DeckKeywords.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "files/SourceFile.h"
#include "keywords/Keyword.h"
#include "merge/DeckMerger.h"
#include "merge/IncludeMap.h"
#include "merge/MergeTerms.h"
#include "text/KeywordFileReader.h"
#include <deckmanager/IDeck.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::DataAccessUtils;

namespace {

std::vector<KeywordFile*> FilesOf(const IDeck& deck)
{
    return static_cast<const DeckKeywords&>(*deck.GetDeckKeywords()).FilesInDeckOrder();
}

/// The place of the last keyword; `End()` of a file that has none.
KeywordFileIterator LastOf(const KeywordFile& file)
{
    KeywordFileIterator place = file.End();
    if (place != file.Begin()) --place;
    return place;
}

/// What stands at the end of a file.
struct EndLines
{
    std::string all;        ///< without blank lines around
    std::string comments;   ///< of that, what stands behind the last line that is no comment
    bool hasOthers = false; ///< than comments

    /// Where they would be read, what is no comment becomes one.
    std::string AsComments() const
    {
        std::string lines;
        for (std::size_t begin = 0; begin < all.size();) {
            const std::size_t end = std::min(all.find('\n', begin), all.size() - 1) + 1;
            const std::string_view line = std::string_view(all).substr(begin, end - begin);
            const std::string_view content = Service::Trimmed(line);
            if (!content.empty() && !VeldaneDeckInfo::BeginsWithCommentMarker(content)) lines += "-- ";
            lines += line;
            begin = end;
        }
        return lines;
    }

    explicit EndLines(std::string text)
    {
        Service::StringReplace(text, "\r\n", "\n");
        text.resize(Service::TrimmedRight(text).size());
        std::size_t first = std::string::npos;
        std::size_t firstComment = std::string::npos;
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
            const std::string_view line = Service::Trimmed(std::string_view(text).substr(begin, end - begin));
            const bool isComment = VeldaneDeckInfo::BeginsWithCommentMarker(line);
            if (!line.empty() && !isComment) {
                hasOthers = true;
                firstComment = std::string::npos;
            } else if (isComment && firstComment == std::string::npos) {
                firstComment = begin;
            }
            if (!line.empty() && first == std::string::npos) first = begin;
            begin = end;
        }
        if (first != std::string::npos) all = text.substr(first);
        if (firstComment != std::string::npos) comments = text.substr(firstComment);
    }
};

bool IsEnd(const IKeyword& keyword)
{
    const int kind = keyword.GetSyntax()->GetKind();
    return kind == Keywords::KeywordKind::End || kind == Keywords::KeywordKind::EndInc;
}

/// Nobody reads what stands at the end of the file.
bool HasEnd(const KeywordFile& file)
{
    const KeywordFileIterator end = file.End();
    for (KeywordFileIterator place = file.Begin(); place != end; ++place) {
        if (IsEnd(**place)) return true;
    }
    return false;
}

/// The text at the end of a file. No walk leads to what stands behind an ENDINC: it is text, but for generated
/// keywords in it.
std::string EndTextOf(KeywordFile& file)
{
    KeywordFileIterator place = file.WalkEnd();
    const KeywordFileIterator end = file.End();
    if (place == end) return file.TextAtEnd();
    const std::unique_ptr<ILineReader> reader = file.FileReader()->OpenLineReader(false);
    std::string text;
    for (bool isFirst = true; reader && place != end; ++place, isFirst = false) {
        const auto& keyword = static_cast<const Keyword&>(**place);
        if (!keyword.HasValidExtent() || (IsAnchor(keyword) && !isFirst)) continue;
        std::string extent;
        reader->ReadRange(keyword.Position(), keyword.Position() + keyword.Size() - 1, extent);
        if (isFirst) extent.erase(0, std::min(extent.find('\n'), extent.size() - 1) + 1);
        text += extent;
    }
    return text;
}

/// What stands above the ENDINC of a file, to which no walk leads; empty without one.
std::string TextAboveEndInc(KeywordFile& file)
{
    const KeywordFileIterator place = file.WalkEnd();
    if (place == file.End()) return {};
    const auto& keyword = static_cast<const Keyword&>(**place);
    SourceFile source(file, nullptr);
    return source.IsFirstOnDisk(keyword) ? source.TextOfHead() : source.TextAhead(&keyword, file.RootContext());
}

} // namespace

/// What stands behind the last END of a file, or behind its ENDINC, is notes. Where they are more than comments they
/// are a user's for sure.
void DeckMerger::CarryTextBehindEnds()
{
    for (KeywordFile* file : FilesOf(m_source)) {
        if (IsExcluded(*file) || CameWithUserInclude(*file)) continue;
        const KeywordFileIterator last = LastOf(*file);
        if (last == file->End() || (!IsEnd(**last) && file->WalkEnd() == file->End())) continue;
        const EndLines lines(EndTextOf(*file));
        if (!lines.hasOthers) continue;
        const bool isRead = !HasEnd(CounterpartOf(*file));
        AddAtEnd(*file, isRead ? lines.AsComments() : lines.all, MergeReport::Action::Carried);
    }
}

void DeckMerger::MergeCommentsAtEnds()
{
    for (KeywordFile* file : FilesOf(m_source)) {
        if (IsExcluded(*file) || CameWithUserInclude(*file)) continue;
        MergeCommentAboveEndInc(*file);
        const EndLines lines(EndTextOf(*file));
        if (!lines.comments.empty()) AddAtEnd(*file, lines.comments, MergeReport::Action::Commented);
    }
}

void DeckMerger::MergeCommentAboveEndInc(KeywordFile& file)
{
    const EndLines lines(TextAboveEndInc(file));
    if (lines.comments.empty()) return;
    KeywordFile& target = CounterpartOf(file);
    const KeywordFileIterator place = target.WalkEnd();
    if (place == target.End()) {
        AddAtEnd(file, lines.comments, MergeReport::Action::Commented);
        return;
    }
    auto& keyword = static_cast<Keyword&>(*const_cast<IKeyword*>(*place));
    const std::string existing = TextAboveEndInc(target);
    const std::string rest = WithoutLines(lines.comments, EndLines(existing).all);
    if (HoldsLines(existing + "\n" + keyword.GetLeadingComment(), rest)) return;
    keyword.AddLeadingComment(rest + "\n", true, false);
    NoteAtEnd(MergeReport::Action::Commented, file, target);
}

/// `text` stands at the end of a file of the source.
void DeckMerger::AddAtEnd(KeywordFile& file, const std::string& text, MergeReport::Action action)
{
    KeywordFile& target = CounterpartOf(file);
    const std::string existing = EndTextOf(target);
    const std::string rest = WithoutLines(text, EndLines(existing).all);
    // What this merge has put there is not on the disk yet.
    if (HoldsLines(existing, rest) || HoldsLines(target.TextAtEnd(), rest)) return;
    target.AddTextAtEnd(rest + "\n", action == MergeReport::Action::Carried);
    NoteAtEnd(action, file, target);
}

/// What stood at the end of `file` is at that of `target`.
void DeckMerger::NoteAtEnd(MergeReport::Action action, KeywordFile& file, const KeywordFile& target) const
{
    if (m_report == nullptr) return;
    const KeywordFileIterator walkEnd = file.WalkEnd();
    const KeywordFileIterator last = walkEnd != file.End() ? walkEnd : LastOf(file);
    const IKeyword* keyword = last != file.End() ? *last : m_source.GetDeckKeywords()->GetIncludingKeyword(&file);
    if (keyword == nullptr) return;
    m_report->entries.push_back(
        {action, keyword->GetName(), keyword, keyword->GetLine(), target.GetFileName().GetFullName(), 0, ""});
}

/// The target's file of that name, as the map has it. Where there is none, that of the including file.
KeywordFile& DeckMerger::CounterpartOf(KeywordFile& file) const
{
    const IDeckKeywords& sourceKeywords = *m_source.GetDeckKeywords();
    const IDeckKeywords& targetKeywords = *m_target.GetDeckKeywords();
    KeywordFile& top = *targetKeywords.GetDataFile()->AsKeywordFile();
    const IKeyword* include = sourceKeywords.GetIncludingKeyword(&file);
    if (include == nullptr) return top;
    const Keywords::IKeywordData* data = sourceKeywords.GetKeywordData(include);
    const auto mapped = MapIncludeData(*include->GetSyntax(), data, m_work.includeNames);
    const std::string name = DataAccessUtils::GetINCLUDEFileName(mapped ? mapped.get() : data).value_or("");
    const std::string leaf = Service::FileName(name).GetFileName();
    KeywordFile* found = nullptr;
    for (KeywordFile* candidate : FilesOf(m_target)) {
        if (LeafName(*candidate) != leaf || candidate->LoadFailed()) continue;
        const IKeyword* targetInclude = targetKeywords.GetIncludingKeyword(candidate);
        if (targetInclude == nullptr || IsUserKeyword(*targetInclude)) continue;
        // Of several of that name the one that is included in the same words.
        if (DataAccessUtils::GetINCLUDEFileName(targetKeywords.GetKeywordData(targetInclude)) == name)
            return *candidate;
        if (found == nullptr) found = candidate;
    }
    return found != nullptr ? *found : CounterpartOf(*include->GetFile()->AsKeywordFile());
}

} // namespace Tarn::Fjel::Core::DeckManager
