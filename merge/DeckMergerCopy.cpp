// The part of `DeckMerger` that puts keywords into the target and takes them out.

#include <algorithm>
#include <memory>
#include <string_view>

#include "deck/DeckKeywords.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFactory.h"
#include "files/KeywordFile.h"
#include "keywords/ICommentManager.h"
#include "keywords/Keyword.h"
#include "merge/DeckMerger.h"
#include "merge/LostWords.h"
#include "merge/MergeTerms.h"
#include "text/TagRecognisers.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::Log;

namespace {

/// The line of a file, as it stands on the disk, at which a place is; 0 for the end of the file.
int LineAt(KeywordFileIterator place)
{
    const KeywordFile* file = IteratorAccess::File(place);
    for (; file != nullptr && place != file->End(); ++place) {
        if (static_cast<const Keyword*>(*place)->HasValidExtent()) return place->GetLine();
    }
    return 0;
}

/// The lines ahead of the first one that holds the generated tag.
std::string AheadOfTag(std::string text, bool& isCut)
{
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        if (ContainsKeywordTag(std::string_view(text).substr(begin, end - begin))) {
            isCut = true;
            text.resize(begin);
            break;
        }
        begin = end;
    }
    return text;
}

bool BeginsWithCommentOrBlank(std::string_view text)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    return !text.empty() &&
           (Service::AllBlanks(line) || VeldaneDeckInfo::BeginsWithCommentMarker(Service::Trimmed(line)));
}

} // namespace

/// The data through their last line; what stands behind belongs to the keyword below. No value, and told, for a keyword
/// that can't be carried.
std::optional<DeckMerger::CopyText> DeckMerger::TextToCopy(const KeywordIterator& position) const
{
    const auto& keyword = static_cast<const Keyword&>(**position);
    const auto refuse = [&](const std::string& why) { const_cast<DeckMerger*>(this)->Refuse(position, why); };
    if (keyword.IsSkipped()) {
        refuse("stands around a region that is skipped, which no merge can carry.");
        return std::nullopt;
    }
    CopyText copy;
    std::string held;
    if (const std::shared_ptr<std::string> text = m_source.GetDeckKeywords()->GetDataText(&keyword)) held = *text;
    if (!held.empty()) {
        const KeywordText parts(*keyword.GetSyntax(), keyword.GetName(), keyword.GetName() + "\n" + held + "\n");
        copy.data = parts.Data();
        if (keyword.GetName() != "SKIPZR") copy.data = AheadOfTag(std::move(copy.data), copy.isCut);
    }
    copy.comment = keyword.GetComment();
    if (!copy.comment.empty()) {
        // Where the comment is all that stands ahead of the data, the copy bears it as its comment.
        std::string lines = copy.comment;
        LineReaderUtil::CommentLines(lines);
        lines += '\n';
        if (copy.data.starts_with(lines) && !BeginsWithCommentOrBlank(std::string_view(copy.data).substr(lines.size())))
            copy.data.erase(0, lines.size());
        else if (keyword.GetSyntax()->GetMetaData() != nullptr)
            copy.comment.clear();
    }
    const std::unique_ptr<Keyword> trial = KeywordFactory::Create(*keyword.GetSyntax(), keyword.VariablesAllowed(),
                                                                  keyword.GetName(), true, nullptr, nullptr, -1, -1);
    if (!trial || !trial->SetDataText(copy.data, false)) {
        refuse("holds text that cannot be the data of one keyword.");
        return std::nullopt;
    }
    return copy;
}

KeywordFileIterator DeckMerger::CopyKeyword(const KeywordFileIterator& place, const KeywordIterator& position,
                                            const CopyText& text, const std::string& above)
{
    const auto& source = static_cast<const Keyword&>(**position);
    const Log::Place logPlace(source.GetFile()->GetFileName().GetFullName(), source.GetLine());
    const std::string& name = source.GetName();
    const IKeyword* inserted = Insert(*source.GetSyntax(), place, name);
    KeywordFileIterator copy = place;
    --copy;
    if (*copy != inserted) copy = inserted->GetFile()->Find(inserted);
    if (text.isCut) {
        Log::SendLogMessage("User keyword " + name +
                                " does not appear to be terminated correctly. Its data has been truncated at a line "
                                "containing a generated keyword. ",
                            Log::Error);
        m_isWhole = false;
        Note(MergeReport::Action::Cut, position, place);
    }
    auto& target = static_cast<Keyword&>(*const_cast<IKeyword*>(inserted));
    m_editor.SetDataText(copy, text.data);
    if (!text.comment.empty()) m_editor.SetComment(copy, text.comment);
    // What stands above and beside a generated head is for the merge of comments.
    if (!source.IsGenerated()) target.SetBesideName(source.GetBesideName());
    if (source.IsGenerated()) m_editor.TagKeyword(inserted);
    if (source.IsSuppressed()) m_editor.Suppress(copy);
    if (!above.empty()) target.SetLeadingComment(above, true);
    if (m_work.sourceTimes.Holds(&source)) {
        m_work.targetTimes.Enter(inserted, m_work.sourceTimes.Of(&source));
    }
    m_search->OnInserted(copy);
    if (IsInclude(source)) TellOfMissingFile(position, *inserted);
    return copy;
}

/// Never null: what can't be put in is no merge.
const IKeyword* DeckMerger::Insert(const Keywords::IKeywordSyntax& syntax, KeywordFileIterator place,
                                   const std::string& name)
{
    KeywordFile* file = IteratorAccess::File(place);
    if (file == nullptr) throw DeckManagerException("There is no file to put keyword " + name + " into.");
    if (file->IsFileTagged()) OpenToUserKeywords(*file);
    const IKeyword* inserted = m_editor.InsertKeyword(syntax, place, nullptr, name);
    // Inside a region that is skipped it would be text: it goes ahead of that.
    const KeywordFileIterator begin = file->Begin();
    while (inserted == nullptr && place != begin) {
        --place;
        if (!static_cast<const Keyword*>(*place)->IsSkipped()) break;
        inserted = m_editor.InsertKeyword(syntax, place, nullptr, name);
    }
    if (inserted == nullptr) {
        throw DeckManagerException("Keyword " + name + " cannot be put into the file " +
                                   file->GetFileName().GetFullName() + ".");
    }
    return inserted;
}

void DeckMerger::Remove(const KeywordFileIterator& place)
{
    const IKeyword* keyword = *place;
    m_work.targetTimes.Drop(keyword);
    if (const auto exported = m_exportedKeywords.find(keyword); exported != m_exportedKeywords.end()) {
        ExportedScope& scope = *exported->second;
        (scope.head == keyword ? scope.head : scope.closer) = nullptr;
        m_exportedKeywords.erase(exported);
    }
    m_search->OnRemoving(place);
    if (!m_editor.RemoveKeyword(place))
        throw DeckManagerException("Keyword " + keyword->GetName() + " cannot be removed.");
}

void DeckMerger::SetTag(const KeywordFileIterator& place, bool tagged)
{
    if (tagged)
        m_editor.TagKeyword(*place);
    else
        m_editor.UntagKeyword(*place);
    m_search->OnTagChanged(place);
}

/// In a file that is generated as a whole a user's keyword would count as generated at once: its keywords, and those
/// that include it, get tags of their own instead.
void DeckMerger::OpenToUserKeywords(KeywordFile& file)
{
    for (IKeywordFile* including : m_target.GetDeckKeywords()->GetFiles()) {
        for (const KeywordFileIterator& include : including->GetINCLUDEKeywords()) {
            if (KeywordFile::IncludedFileOf(*include) == &file) m_editor.TagKeyword(*include);
        }
    }
    const KeywordFileIterator end = file.End();
    for (KeywordFileIterator place = file.Begin(); place != end; ++place)
        m_editor.TagKeyword(*place);
    file.DropFileTag();
}

/// The file that a copied INCLUDE names counts from the folder of the target.
void DeckMerger::TellOfMissingFile(const KeywordIterator& position, const IKeyword& copy)
{
    const std::optional<std::string> text =
        Keywords::DataAccessUtils::GetINCLUDEFileName(m_source.GetDeckKeywords()->GetKeywordData(*position));
    const IKeywordFile* wanted = KeywordFile::IncludedFileOf(&copy);
    const IKeywordFile* present = KeywordFile::IncludedFileOf(*position);
    if (!text || wanted == nullptr || present == nullptr || wanted == present) return;
    const std::string& name = wanted->GetFileName().GetFullName();
    const std::string& sourceName = present->GetFileName().GetFullName();
    if (!Service::FileStatus::Of(sourceName).Exists() || Service::FileStatus::Of(name).Exists()) return;
    Log::SendLogMessage("The INCLUDE path \"" + *text + "\", which resolves to \"" + sourceName +
                            "\" in the source, finds no file \"" + name + "\" in the target.",
                        Log::Warning);
    Note(MergeReport::Action::Missing, position, copy.GetFile()->Find(&copy), sourceName);
}

void DeckMerger::TellOfLostWords()
{
    for (const KeywordFile* file : static_cast<const DeckKeywords&>(*m_source.GetDeckKeywords()).FilesInDeckOrder()) {
        if (IsExcluded(*file)) continue;
        const OpenReaderGuard openFile(*file);
        const KeywordFileIterator end = file->End();
        for (KeywordFileIterator place = file->Begin(); place != end; ++place) {
            // Behind a user's data such text is carried with them, and behind the end of a file with the file's end.
            if (EndsFile(place)) continue;
            if (IsUserKeyword(**place) && place->GetSyntax()->GetMetaData() != nullptr) continue;
            const std::optional<LostWord> lost = FindLostWord(static_cast<const Keyword&>(**place));
            if (!lost) continue;
            const Log::Place logPlace(file->GetFileName().GetFullName(), lost->line);
            Log::SendLogMessage("The word " + lost->word + " behind keyword " + place->GetName() +
                                    " is no known keyword. It is not carried, nor is what follows it.",
                                Log::Error);
            m_isWhole = false;
            if (m_report == nullptr) continue;
            m_report->entries.push_back(
                {MergeReport::Action::Lost, place->GetName(), *place, lost->line, "", 0, lost->word});
        }
    }
}

void DeckMerger::Refuse(const KeywordIterator& position, const std::string& why)
{
    const Log::Place place(position->GetFile()->GetFileName().GetFullName(), position->GetLine());
    Log::SendLogMessage("Keyword " + position->GetName() + " is not carried: it " + why, Log::Error);
    m_isWhole = false;
    Note(MergeReport::Action::Refused, position, KeywordFileIterator(), why);
}

void DeckMerger::Note(MergeReport::Action action, const KeywordIterator& position, const KeywordFileIterator& place,
                      const std::string& text)
{
    if (m_report == nullptr) return;
    const KeywordFile* file = IteratorAccess::File(place);
    m_report->entries.push_back({action, position->GetName(), *position, position->GetLine(),
                                 file != nullptr ? file->GetFileName().GetFullName() : std::string(), LineAt(place),
                                 text});
}

} // namespace Tarn::Fjel::Core::DeckManager
