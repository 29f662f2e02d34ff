// The part of `DeckKeywordsEditor` that edits keywords.

#include <algorithm>
#include <list>
#include <unordered_set>
#include <utility>
#include <vector>

#include "deck/Deck.h"
#include "deck/DeckKeywords.h"
#include "deck/DeckKeywordsEditor.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "keywords/CommentText.h"
#include "keywords/ITagMgr.h"
#include "keywords/Keyword.h"
#include "keywords/KeywordTextSplitter.h"
#include "text/LineStreamReader.h"
#include "text/SectionNames.h"
#include <deckmanager/Context.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IKeywordVariablesResolver.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/SetCommentAbove.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;

// --- the guard -----------------------------------------------------------------------------------

bool DeckKeywordsEditor::IsOpenToEdits(const KeywordFile* file) const
{
    return m_deck != nullptr && file != nullptr && (m_merging || !file->IsReadOnly());
}

KeywordFile* DeckKeywordsEditor::FileToEdit(const KeywordFileIterator& position) const
{
    KeywordFile* file = IteratorAccess::File(position);
    return IsOpenToEdits(file) ? file : nullptr;
}

Keyword* DeckKeywordsEditor::KeywordToEdit(const KeywordFileIterator& position) const
{
    const KeywordFile* file = FileToEdit(position);
    if (file == nullptr || position.AtBeforeBegin() || position == file->End()) return nullptr;
    Keyword* keyword = static_cast<Keyword*>(const_cast<IKeyword*>(*position));
    return keyword->IsSkipped() ? nullptr : keyword;
}

KeywordFileIterator DeckKeywordsEditor::PlaceOf(const KeywordIterator& position) const
{
    return m_deck != nullptr ? m_deck->Keywords().GetFileIterator(position) : KeywordFileIterator();
}

bool DeckKeywordsEditor::IsOfDeck(const KeywordFile* file) const
{
    const std::vector<KeywordFile*>& files = m_deck->Keywords().FilesInDeckOrder();
    return std::find(files.begin(), files.end(), file) != files.end();
}

// --- the list ------------------------------------------------------------------------------------

IKeyword* DeckKeywordsEditor::GetOrCreateSection(SectionType section, bool* existed)
{
    if (m_deck == nullptr || static_cast<int>(section) >= SectionCount) return nullptr;
    const DeckKeywords& keywords = m_deck->Keywords();
    const auto exists = [&](SectionType wanted) { return keywords.SectionBegin(wanted) != keywords.End(); };
    const bool found = exists(section);
    if (existed != nullptr) *existed = found;
    if (found) return const_cast<IKeyword*>(*keywords.SectionBegin(section));
    const Keywords::IKeywordSyntax* syntax =
        Environment::Instance().GetSyntaxTable()->FindSyntax(SectionName(section), true);
    if (syntax == nullptr) return nullptr;
    for (int next = static_cast<int>(section) + 1; next < SectionCount; ++next) {
        const auto later = static_cast<SectionType>(next);
        if (!exists(later)) continue;
        if (IKeyword* made = InsertKeywordText(*syntax, keywords.SectionBegin(later), "")) return made;
    }
    return InsertKeywordText(*syntax, keywords.End(), "");
}

IKeyword* DeckKeywordsEditor::InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                            std::unique_ptr<Keywords::IKeywordData> data, const std::string& name)
{
    KeywordFile* file = FileToEdit(position);
    return file != nullptr ? file->InsertKeyword(syntax, position, std::move(data), name) : nullptr;
}

IKeyword* DeckKeywordsEditor::InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordIterator& position,
                                            std::unique_ptr<Keywords::IKeywordData> data, const std::string& name)
{
    return InsertKeyword(syntax, PlaceOf(position), std::move(data), name);
}

IKeyword* DeckKeywordsEditor::InsertKeywordText(const Keywords::IKeywordSyntax& syntax,
                                                const KeywordFileIterator& position, const std::string& text)
{
    constexpr std::string_view mark = LineStreamReader::ByteOrderMark;
    if (text.starts_with(mark)) return InsertKeywordText(syntax, position, text.substr(mark.size()));
    KeywordFile* file = FileToEdit(position);
    if (file == nullptr) return nullptr;
    std::string name;
    std::string dataText;
    std::string tagText;
    std::string ahead;
    const bool isWhole = SplitKeywordText(text, name, dataText, tagText, &ahead);
    if (!isWhole) dataText = text;
    IKeyword* inserted = file->InsertKeywordText(syntax, position, dataText, name);
    if (inserted == nullptr) return nullptr;
    if (!tagText.empty()) TagKeyword(inserted);
    // What the user has put behind the name and ahead of it is theirs.
    auto* keyword = static_cast<Keyword*>(inserted);
    if (isWhole) keyword->SetBesideName(Keyword::BesideNameIn(text, name));
    if (!Service::AllBlanks(ahead)) keyword->SetLeadingComment(AsCommentLines(ahead), true);
    return inserted;
}

IKeyword* DeckKeywordsEditor::InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordIterator& position,
                                                const std::string& text)
{
    return InsertKeywordText(syntax, PlaceOf(position), text);
}

bool DeckKeywordsEditor::MoveKeyword(const KeywordIterator& from, const KeywordIterator& to)
{
    return MoveKeyword(PlaceOf(from), PlaceOf(to));
}

bool DeckKeywordsEditor::MoveKeyword(const KeywordFileIterator& from, const KeywordFileIterator& to)
{
    KeywordFile* source = FileToEdit(from);
    KeywordFile* target = FileToEdit(to);
    if (source == nullptr || target == nullptr) return false;
    // The two files are written together, or a keyword would be in both or in none.
    if (source != target && !(IsOfDeck(source) && IsOfDeck(target))) return false;
    return source->MoveKeyword(from, *target, to);
}

bool DeckKeywordsEditor::RemoveKeywords(const KeywordIterator& first, const KeywordIterator& last)
{
    if (m_deck == nullptr) return false;
    // The caller's positions may be of keywords that go, and a file that is included twice is come to twice.
    const KeywordIterator end = last;
    const KeywordIterator deckEnd = m_deck->Keywords().PhysicalEnd();
    std::unordered_set<const IKeyword*> seen;
    std::list<KeywordFileIterator> includes;
    std::vector<KeywordFileIterator> others;
    KeywordIterator walk = first;
    for (; walk != end && walk != deckEnd && *walk != nullptr; ++walk) {
        if (!seen.insert(*walk).second) continue;
        if ((*walk)->GetSyntax()->GetKind() == Keywords::KeywordKind::Include)
            includes.push_back(PlaceOf(walk));
        else
            others.push_back(PlaceOf(walk));
    }
    // A range whose end is never come to is nobody's wish.
    if (walk != end) return false;
    bool removed = false;
    for (const KeywordFileIterator& place : others) {
        if (RemoveKeyword(place)) removed = true;
    }
    // An INCLUDE that goes may leave its own file empty.
    for (bool again = true; again;) {
        again = false;
        for (auto include = includes.begin(); include != includes.end();) {
            const KeywordFile* file = KeywordFile::IncludedFileOf(**include);
            if (file != nullptr && file->Begin() == file->End() && RemoveKeyword(*include)) {
                include = includes.erase(include);
                removed = again = true;
            } else {
                ++include;
            }
        }
    }
    return removed;
}

bool DeckKeywordsEditor::RemoveKeyword(const KeywordIterator& position)
{
    return RemoveKeyword(PlaceOf(position));
}

bool DeckKeywordsEditor::RemoveKeyword(const KeywordFileIterator& position)
{
    KeywordFile* file = FileToEdit(position);
    return file != nullptr && file->RemoveKeyword(position);
}

// --- data ----------------------------------------------------------------------------------------

bool DeckKeywordsEditor::ResolveVariables(const KeywordIterator& position, IKeywordVariablesResolver& resolver)
{
    return ResolveVariables(PlaceOf(position), resolver);
}

bool DeckKeywordsEditor::ResolveVariables(const KeywordFileIterator& position, IKeywordVariablesResolver& resolver)
{
    if (m_deck == nullptr || !m_deck->AllowsVariables()) return false;
    Keyword* keyword = KeywordToEdit(position);
    if (keyword == nullptr) return false;
    const DeckKeywords& keywords = m_deck->Keywords();
    if (!keywords.HasVariables(keyword)) return true;
    const Keywords::IKeywordData* data = keywords.GetKeywordData(keyword);
    if (data == nullptr) return true;
    const KeywordVariables* variables = keywords.GetVariables(keyword);
    if (variables == nullptr) {
        Service::Log::SendLogMessage("Variable substitution not supported for keyword '" + keyword->GetName() + "'.",
                                     Service::Log::Error);
        return true;
    }
    const std::shared_ptr<std::string> held = keyword->GetDataText();
    if (!held) return false;
    std::string text = *held;
    return resolver.Resolve(data, variables, text) && keyword->SetDataText(text, true);
}

bool DeckKeywordsEditor::SetDataText(const KeywordIterator& position, const std::string& text)
{
    return SetDataText(PlaceOf(position), text);
}

bool DeckKeywordsEditor::SetDataText(const KeywordFileIterator& position, const std::string& text)
{
    Keyword* keyword = KeywordToEdit(position);
    return keyword != nullptr && keyword->SetDataText(text, true);
}

bool DeckKeywordsEditor::SetData(const KeywordIterator& position, std::unique_ptr<Keywords::IKeywordData> data)
{
    return SetData(PlaceOf(position), std::move(data));
}

bool DeckKeywordsEditor::SetData(const KeywordFileIterator& position, std::unique_ptr<Keywords::IKeywordData> data)
{
    Keyword* keyword = KeywordToEdit(position);
    return keyword != nullptr && keyword->SetData(std::move(data), true);
}

bool DeckKeywordsEditor::SetKeywordText(const KeywordIterator& position, const std::string& text)
{
    return SetKeywordText(PlaceOf(position), text);
}

bool DeckKeywordsEditor::SetKeywordText(const KeywordFileIterator& position, const std::string& text)
{
    Keyword* keyword = KeywordToEdit(position);
    if (keyword == nullptr) return false;
    std::string name;
    std::string dataText;
    std::string tagText;
    if (!SplitKeywordText(text, name, dataText, tagText) || name != keyword->GetName()) return false;
    if (!keyword->SetDataText(dataText, true)) return false;
    SetTag(keyword, !tagText.empty());
    return true;
}

std::unique_ptr<Keywords::IKeywordData> IDeckKeywordsEditor::GetAndResetData(const IKeyword* keyword)
{
    return TakeData(keyword);
}

std::unique_ptr<Keywords::IKeywordData> DeckKeywordsEditor::TakeData(const IKeyword* keyword)
{
    if (keyword == nullptr || m_deck == nullptr) return nullptr;
    Context context = m_deck->Keywords().RootFile()->RootContext();
    context.Bind(&m_deck->Keywords());
    return static_cast<Keyword*>(const_cast<IKeyword*>(keyword))->GetAndResetData(context);
}

// --- comments, marks, tags -----------------------------------------------------------------------

bool DeckKeywordsEditor::SetComment(const KeywordIterator& position, const std::string& text)
{
    return SetComment(PlaceOf(position), text);
}

bool DeckKeywordsEditor::SetComment(const KeywordFileIterator& position, const std::string& text)
{
    Keyword* keyword = KeywordToEdit(position);
    if (keyword == nullptr) return false;
    keyword->SetComment(text);
    return true;
}

bool DeckKeywordsEditor::SetCommentAbove(const KeywordIterator& position, const std::string& text)
{
    return SetCommentAbove(PlaceOf(position), text);
}

bool DeckKeywordsEditor::SetCommentAbove(const KeywordFileIterator& position, const std::string& text)
{
    return KeywordToEdit(position) != nullptr && FileToEdit(position)->SetCommentAbove(position, text);
}

bool DeckKeywordsEditor::CommentOut(const KeywordIterator& position)
{
    return CommentOut(PlaceOf(position));
}

bool DeckKeywordsEditor::CommentOut(const KeywordFileIterator& position)
{
    Keyword* keyword = KeywordToEdit(position);
    if (keyword == nullptr) return false;
    keyword->CommentOut();
    return true;
}

bool DeckKeywordsEditor::Suppress(const KeywordIterator& position)
{
    return Suppress(PlaceOf(position));
}

bool DeckKeywordsEditor::Suppress(const KeywordFileIterator& position)
{
    Keyword* keyword = KeywordToEdit(position);
    if (keyword == nullptr) return false;
    keyword->SetSuppressed(true);
    return true;
}

bool DeckKeywordsEditor::Unsuppress(const KeywordIterator& position)
{
    return Unsuppress(PlaceOf(position));
}

bool DeckKeywordsEditor::Unsuppress(const KeywordFileIterator& position)
{
    Keyword* keyword = KeywordToEdit(position);
    if (keyword == nullptr) return false;
    keyword->SetSuppressed(false);
    return true;
}

void DeckKeywordsEditor::TagAllKeywords()
{
    SetTagOnChanged(true);
}

void DeckKeywordsEditor::UntagAllKeywords()
{
    SetTagOnChanged(false);
}

void DeckKeywordsEditor::SetTagOnChanged(bool tagged)
{
    if (m_deck == nullptr) return;
    for (KeywordFile* file : m_deck->Keywords().FilesInDeckOrder()) {
        if (IsOpenToEdits(file)) file->SetTagOnChangedKeywords(tagged);
    }
}

void DeckKeywordsEditor::TagKeyword(const IKeyword* keyword)
{
    SetTag(keyword, true);
}

void DeckKeywordsEditor::UntagKeyword(const IKeyword* keyword)
{
    SetTag(keyword, false);
}

void DeckKeywordsEditor::SetTag(const IKeyword* keyword, bool tagged)
{
    IKeywordFile* file = keyword != nullptr ? keyword->GetFile() : nullptr;
    if (file == nullptr || !IsOpenToEdits(file->AsKeywordFile())) return;
    const auto* changed = static_cast<const Keyword*>(keyword);
    if (!changed->IsSkipped()) changed->GetTagMgr().SetTag(tagged);
}

bool SetCommentAbove(IDeckKeywordsEditor& editor, const KeywordIterator& position, const std::string& text)
{
    auto* deckEditor = dynamic_cast<DeckKeywordsEditor*>(&editor);
    return deckEditor != nullptr && deckEditor->SetCommentAbove(position, text);
}

bool SetCommentAbove(IDeckKeywordsEditor& editor, const KeywordFileIterator& position, const std::string& text)
{
    auto* deckEditor = dynamic_cast<DeckKeywordsEditor*>(&editor);
    return deckEditor != nullptr && deckEditor->SetCommentAbove(position, text);
}

} // namespace Tarn::Fjel::Core::DeckManager
