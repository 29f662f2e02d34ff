#include "deck/DeckKeywords.h"

#include <algorithm>
#include <unordered_set>

#include "deck/DiskOrder.h"
#include "deck/FilePaths.h"
#include "deck/KeywordNames.h"
#include "deck/ScopeWalk.h"
#include "files/GridFileGuess.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "files/LinkCounter.h"
#include "keywords/Keyword.h"
#include "text/SectionNames.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/KeywordIdEqual.h>
#include <deckmanager/KeywordNameEqual.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::SectionType;

namespace {

/// The keyword behind a loan of the public interface. Its caches fill while it is read, const or not.
Keyword* AsKeyword(const IKeyword* keyword)
{
    return static_cast<Keyword*>(const_cast<IKeyword*>(keyword));
}

int KindOf(const IKeyword& keyword)
{
    return keyword.GetSyntax()->GetKind();
}

template <class Predicate>
KeywordIterator FindFirst(KeywordIterator position, const KeywordIterator& last, const Predicate& matches)
{
    while (position != last && *position != nullptr && !matches(*position)) {
        ++position;
    }
    return *position == nullptr ? last : position;
}

/// Shows each file of a tree once, a file ahead of those that it includes, and these in the order of their INCLUDE
/// keywords, each with all that is below it. `visit` answers false to stop; of the INCLUDE keywords those count that
/// `follows` accepts.
template <class Visit, class Follows>
void VisitFiles(KeywordFile& root, const Visit& visit, const Follows& follows)
{
    std::unordered_set<const KeywordFile*> seen;
    std::vector<KeywordFile*> waiting{&root};
    while (!waiting.empty()) {
        KeywordFile* file = waiting.back();
        waiting.pop_back();
        if (!seen.insert(file).second) continue;
        if (!visit(*file)) return;
        const std::vector<KeywordFileIterator>& includes = file->GetINCLUDEKeywords();
        for (auto include = includes.rbegin(); include != includes.rend(); ++include) {
            if (!follows(**include)) continue;
            KeywordFile* included = KeywordFile::IncludedFileOf(**include);
            if (included != nullptr && seen.count(included) == 0) waiting.push_back(included);
        }
    }
}

} // namespace

DeckKeywords::DeckKeywords(const std::shared_ptr<KeywordFile>& file, bool variablesAllowed)
    : m_variablesAllowed(variablesAllowed)
{
    SetDataFile(file);
}

DeckKeywords::~DeckKeywords()
{
    try {
        SetEdited(false);
        m_rootFile->fileChanged.Remove(this, &DeckKeywords::OnKeywordFileChanged);
        UnbindContext();
        CancelAll();
    } catch (...) {
        // A destructor has nobody to tell.
    }
}

void DeckKeywords::SetDataFile(const std::shared_ptr<KeywordFile>& newFile)
{
    if (!newFile) throw DeckManagerException("DeckKeywords::SetDataFile: null newFile");
    if (newFile == m_rootFile) return;
    if (m_rootFile) {
        CancelAll();
        m_rootFile->fileChanged.Remove(this, &DeckKeywords::OnKeywordFileChanged);
        UnbindContext();
    }
    m_rootFile = newFile;
    m_rootFile->fileChanged.Add(this, &DeckKeywords::OnKeywordFileChanged);
    m_sectionsSettled = KeywordFile::ChangesOfSections();
    DropAll();
}

// --- ends and sections ---------------------------------------------------------------------------------------------

KeywordIterator DeckKeywords::Begin() const
{
    return IteratorAccess::Walk(m_rootFile.get(), true, false);
}

const KeywordIterator& DeckKeywords::LogicalEnd() const
{
    DropWhatMissedMoves();
    if (!m_logicalEnd) {
        KeywordIterator position = Begin();
        for (const IKeyword* keyword = *position; keyword != nullptr; keyword = *position) {
            if (KindOf(*keyword) == KeywordKind::End) break;
            ++position;
        }
        m_logicalEnd = std::move(position);
    }
    return *m_logicalEnd;
}

const KeywordIterator& DeckKeywords::End() const
{
    if (Environment::Instance().DeckTerminatedByENDKeyword()) return LogicalEnd();
    PhysicalEnd();
    return *m_physicalEnd;
}

KeywordIterator DeckKeywords::PhysicalEnd() const
{
    DropWhatMissedMoves();
    // A walk at its end stands at the end of the top file: no need to go there.
    if (!m_physicalEnd) m_physicalEnd = IteratorAccess::At(m_rootFile->WalkEnd());
    return *m_physicalEnd;
}

const DeckKeywords::Sections& DeckKeywords::GetSections() const
{
    DropWhatMissedMoves();
    const bool endedByEND = Environment::Instance().DeckTerminatedByENDKeyword();
    if (m_sections && m_sections->endedByEND == endedByEND) return *m_sections;

    auto sections = std::make_unique<Sections>();
    sections->endedByEND = endedByEND;
    std::vector<std::pair<KeywordIterator, SectionType>> found;
    bool behindEnd = false;
    for (KeywordIterator position = Begin(); *position != nullptr; ++position) {
        if (!behindEnd && position == End()) behindEnd = true;
        SectionType section = SectionType::None;
        if (KindOf(**position) != KeywordKind::Section || !FindSection(position->GetName(), section)) continue;
        sections->all.emplace_back(position, section);
        if (behindEnd) continue;
        const auto isSame = [section](const auto& earlier) { return earlier.second == section; };
        if (std::any_of(found.begin(), found.end(), isSame)) sections->duplicates.push_back(position);
        found.emplace_back(position, section);
    }

    sections->begins.assign(Keywords::SectionCount, End());
    sections->ends.assign(Keywords::SectionCount, End());
    for (std::size_t k = found.size(); k-- > 0;) {
        const auto section = static_cast<std::size_t>(found[k].second);
        sections->begins[section] = found[k].first;
        sections->ends[section] = k + 1 < found.size() ? found[k + 1].first : End();
    }
    m_sections = std::move(sections);
    return *m_sections;
}

const KeywordIterator& DeckKeywords::SectionBegin(SectionType section) const
{
    return GetSections().begins.at(static_cast<std::size_t>(section));
}

const KeywordIterator& DeckKeywords::SectionEnd(SectionType section) const
{
    return GetSections().ends.at(static_cast<std::size_t>(section));
}

SectionType DeckKeywords::SectionOf(const KeywordIterator& givenPosition) const
{
    KeywordIterator position = givenPosition;
    if (IteratorAccess::TopFile(position) != m_rootFile.get()) {
        // A position made from a place in an included file: the deck knows where that file stands.
        position = DeckPositionOf(IteratorAccess::CurrentFileIter(position));
    }
    if (IsPassedByWalk(position)) return SectionBehindLogicalEnd(position);

    const auto& all = GetSections().all;
    const auto behind =
        std::upper_bound(all.begin(), all.end(), position,
                         [](const KeywordIterator& place, const auto& entry) { return place < entry.first; });
    return behind == all.begin() ? SectionType::None : std::prev(behind)->second;
}

/// The position stands behind the end of a file on its way: a walk that heeds these ends never comes to it.
bool DeckKeywords::IsPassedByWalk(const KeywordIterator& position) const
{
    const IteratorPath::Places path = IteratorPath::Of(position);
    return std::any_of(path.begin(), path.end(),
                       [](const KeywordFileIterator& place) { return IteratorAccess::File(place)->WalkEnd() < place; });
}

/// The walk that gathers the sections never comes to such a position: this one goes back from there.
SectionType DeckKeywords::SectionBehindLogicalEnd(KeywordIterator position) const
{
    const KeywordIterator begin = Begin();
    for (;; --position) {
        const IKeyword* keyword = *position;
        SectionType section = SectionType::None;
        if (keyword != nullptr && KindOf(*keyword) == KeywordKind::Section && FindSection(keyword->GetName(), section))
        {
            return section;
        }
        if (position == begin || IteratorAccess::Position(position).AtBeforeBegin()) return SectionType::None;
    }
}

bool DeckKeywords::CheckSections(std::string& message) const
{
    message.clear();
    const std::vector<KeywordIterator>& duplicates = GetSections().duplicates;
    if (duplicates.empty()) return true;
    message = "The following section keywords occur more than once in the deck: ";
    for (std::size_t i = 0; i < duplicates.size(); ++i) {
        if (i > 0) message += ", ";
        message += duplicates[i]->GetName();
    }
    message += ".";
    return false;
}

// --- finding -------------------------------------------------------------------------------------------------------

const FilePaths& DeckKeywords::Paths() const
{
    // A link may come alive without an event: one that a ring had forbidden, once the ring is open.
    if (!m_paths || m_pathsStamp != LinkCounter::Now()) {
        m_paths = std::make_unique<FilePaths>(*m_rootFile);
        m_pathsStamp = LinkCounter::Now();
    }
    return *m_paths;
}

KeywordIterator DeckKeywords::FindKeyword(const IKeyword* keyword) const
{
    KeywordFile* file = keyword != nullptr && keyword->GetFile() ? keyword->GetFile()->AsKeywordFile() : nullptr;
    if (file == nullptr || !Paths().Contains(file)) return End();
    const KeywordFileIterator place = file->Find(keyword);
    if (place == file->End() || !Paths().IsWalked(place)) return End();
    KeywordIterator position = IteratorPath::ToPosition(Paths().PathTo(place), false);
    return position < End() ? position : End();
}

KeywordFileIterator DeckKeywords::GetFileIterator(const KeywordIterator& position) const
{
    return IteratorAccess::CurrentFileIter(position);
}

KeywordFileIterator DeckKeywords::GetFileIterator(const IKeyword* keyword) const
{
    KeywordFile* file = keyword != nullptr && keyword->GetFile() ? keyword->GetFile()->AsKeywordFile() : nullptr;
    if (file == nullptr || !Paths().Contains(file)) return m_rootFile->End();
    const KeywordFileIterator place = file->Find(keyword);
    return place == file->End() ? m_rootFile->End() : place;
}

KeywordIterator DeckKeywords::FindKeywordById(const std::string& name, const Keywords::IKeywordData* data,
                                              const KeywordIterator& first, const KeywordIterator& last,
                                              bool generatedOnly) const
{
    return FindFirst(first, last, KeywordIdEqual(*this, name, data, generatedOnly));
}

KeywordIterator DeckKeywords::FindLastKeywordById(const std::string& name, const Keywords::IKeywordData* data,
                                                  const KeywordIterator& first, const KeywordIterator& last,
                                                  bool generatedOnly) const
{
    const KeywordIdEqual matches(*this, name, data, generatedOnly);
    for (KeywordIterator position = last; position != first;) {
        --position;
        const IKeyword* keyword = *position;
        if (keyword == nullptr) break;
        if (matches(keyword)) return position;
    }
    return last;
}

std::vector<KeywordFileIterator> DeckKeywords::FindKeywords(const std::string& name, bool generatedOnly) const
{
    std::vector<KeywordFileIterator> found;
    const Keywords::IKeywordSyntax* syntax = Environment::Instance().GetSyntaxTable()->FindSyntax(name, true);
    if (syntax == nullptr) return found;

    const auto collect = [&](KeywordFile& file) {
        const KeywordFileIterator end = file.End();
        for (KeywordFileIterator place = file.Begin(); place != end; ++place) {
            if (place->GetSyntax() == syntax && (!generatedOnly || place->IsGenerated())) found.push_back(place);
        }
        return true;
    };
    VisitFiles(*m_rootFile, collect, [&](const IKeyword* include) { return !generatedOnly || include->IsGenerated(); });
    return found;
}

KeywordIterator DeckKeywords::FindGridKeyword() const
{
    const KeywordIterator end = PhysicalEnd();
    end.SetIgnoreLogicalEnds(true);
    KeywordIterator position = end;
    for (const char* name : {"GDFILE", "ORDGRID"}) {
        KeywordIterator begin = Begin();
        begin.SetIgnoreLogicalEnds(true);
        position = FindFirst(std::move(begin), end, KeywordNameEqual(name));
        if (position != end) break;
    }
    return position;
}

Service::FileName DeckKeywords::GetGridFile() const
{
    return GridFileGuess::Find(*this);
}

// --- data and text -------------------------------------------------------------------------------------------------

Keywords::IKeywordData* DeckKeywords::GetKeywordData(const IKeyword* keyword) const
{
    if (keyword == nullptr) return nullptr;
    const Context& root = m_rootFile->RootContext();
    if (root.Keywords() != nullptr) return AsKeyword(keyword)->GetData(root);
    Context context = root;
    context.Bind(this);
    return AsKeyword(keyword)->GetData(context);
}

std::shared_ptr<std::string> DeckKeywords::GetDataText(const IKeyword* keyword) const
{
    return keyword != nullptr ? AsKeyword(keyword)->GetDataText() : nullptr;
}

std::shared_ptr<std::string> DeckKeywords::GetRawText(const IKeyword* keyword) const
{
    return keyword != nullptr ? keyword->GetText() : nullptr;
}

bool DeckKeywords::HasVariables(const IKeyword* keyword) const
{
    return m_variablesAllowed && keyword != nullptr && AsKeyword(keyword)->HasVariables();
}

KeywordVariables* DeckKeywords::GetVariables(const IKeyword* keyword) const
{
    if (!m_variablesAllowed || keyword == nullptr) return nullptr;
    Context context = m_rootFile->RootContext();
    context.Bind(this);
    return AsKeyword(keyword)->GetVariables(context);
}

void DeckKeywords::RebuildContext()
{
    if (!m_rootFile) return;
    BindContext();
    const Context& context = m_rootFile->RootContext();
    const KeywordIterator end = SectionEnd(SectionType::RUNSPEC);
    for (KeywordIterator position = SectionBegin(SectionType::RUNSPEC); position != end; ++position) {
        context.NoteKeyword(*position);
    }
    m_rootFile->GetINCLUDEKeywords();
}

/// Expressions in the files of the deck are answered by the deck. Where its root file is included by the file of
/// another deck, they stay that deck's.
void DeckKeywords::BindContext() const
{
    if (m_rootFile->IsDataFile()) m_rootFile->OwnContext().Bind(this);
}

void DeckKeywords::UnbindContext() const
{
    if (m_rootFile->OwnContext().Keywords() == this) m_rootFile->OwnContext().Bind(nullptr);
}

// --- files ---------------------------------------------------------------------------------------------------------

IKeywordFile* DeckKeywords::GetFileOf(const KeywordFileIterator& position) const
{
    return IteratorAccess::File(position);
}

IKeywordFile* DeckKeywords::GetDataFile() const
{
    return m_rootFile.get();
}

std::set<IKeywordFile*> DeckKeywords::GetFiles() const
{
    const std::vector<KeywordFile*>& files = FilesInDeckOrder();
    return {files.begin(), files.end()};
}

const std::vector<KeywordFile*>& DeckKeywords::FilesInDeckOrder() const
{
    if (!m_rootFile->HasIncludeIndex()) BindContext();
    return Paths().Files();
}

IKeywordFile* DeckKeywords::GetIncludedFile(const IKeyword* keyword) const
{
    return KeywordFile::IncludedFileOf(keyword);
}

IKeyword* DeckKeywords::GetIncludingKeyword(IKeywordFile* file) const
{
    // A level's own INCLUDE keywords are looked at ahead of what they include.
    const IKeyword* found = nullptr;
    const auto look = [&](KeywordFile& level) {
        for (const KeywordFileIterator& include : level.GetINCLUDEKeywords()) {
            KeywordFile* included = KeywordFile::IncludedFileOf(*include);
            if (included == nullptr || included != file) continue;
            found = *include;
            return false;
        }
        return true;
    };
    VisitFiles(*m_rootFile, look, [](const IKeyword*) { return true; });
    return const_cast<IKeyword*>(found);
}

} // namespace Tarn::Fjel::Core::DeckManager
