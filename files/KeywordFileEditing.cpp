// The part of `KeywordFile` that changes its list.

#include <iterator>
#include <utility>

#include "files/FileRing.h"
#include "files/KeywordFactory.h"
#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"
#include "keywords/ITagMgr.h"
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using List = KeywordFileContents::List;

namespace {

bool IsSkipped(List::iterator node)
{
    return KeywordFileContents::AsKeyword(*node).IsSkipped();
}

} // namespace

/// The first edit keeps the list as it is on the disk. Later ones leave that alone.
void KeywordFile::TakeSnapshot()
{
    if (m_snapshotTaken) return;
    m_snapshot = Contents().Keywords();
    m_snapshotTaken = true;
}

void KeywordFile::DropSnapshot()
{
    m_snapshot.clear();
    m_blocksAhead.clear();
    m_snapshotTaken = false;
}

std::vector<const IKeyword*> KeywordFile::BlocksAhead(const IKeyword* keyword) const
{
    const auto found = m_blocksAhead.find(keyword);
    if (found == m_blocksAhead.end()) return {keyword};
    std::vector<const IKeyword*> blocks;
    for (const std::shared_ptr<IKeyword>& below : found->second)
        blocks.push_back(below.get());
    return blocks;
}

KeywordFile::Blocks KeywordFile::TakeBlocks(const std::shared_ptr<IKeyword>& keyword)
{
    const auto found = m_blocksAhead.find(keyword.get());
    if (found == m_blocksAhead.end()) return {keyword};
    Blocks blocks = std::move(found->second);
    m_blocksAhead.erase(found);
    return blocks;
}

/// A region that is skipped shows in the list by its SKIP and ENDSKIP keywords alone. A keyword put between them would
/// be text to whoever reads the file.
bool KeywordFile::TakesEditAt(const KeywordFileIterator& position) const
{
    if (position.File() != this || m_loadFailed) return false;
    List& keywords = Contents().Keywords();
    int depth = 0;
    for (List::iterator node = position.AtBeforeBegin() ? keywords.begin() : position.GetKeywordListIter();
         node != keywords.begin();)
    {
        --node;
        if (!IsSkipped(node)) break;
        depth += (*node)->GetSyntax()->GetKind() == KeywordKind::EndSkip ? -1 : 1;
    }
    return depth <= 0;
}

IKeyword* KeywordFile::InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                     std::unique_ptr<Keywords::IKeywordData> data, const std::string& name)
{
    if (!TakesEditAt(position)) return nullptr;
    if (data && data->GetMetaData() != syntax.GetMetaData()) return nullptr;
    std::unique_ptr<Keyword> keyword =
        KeywordFactory::Create(syntax, m_useVariables, name, true, this, nullptr, -1, -1);
    if (!keyword) return nullptr;
    if (data && !keyword->SetData(std::move(data), false)) return nullptr;
    return PutIn(position, std::move(keyword));
}

IKeyword* KeywordFile::InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                         const std::string& dataText, const std::string& name)
{
    if (!TakesEditAt(position)) return nullptr;
    std::unique_ptr<Keyword> keyword =
        KeywordFactory::Create(syntax, m_useVariables, name, true, this, nullptr, -1, -1);
    if (!keyword || !keyword->SetDataText(dataText, false)) return nullptr;
    return PutIn(position, std::move(keyword));
}

IKeyword* KeywordFile::PutIn(const KeywordFileIterator& position, std::unique_ptr<Keyword> keyword)
{
    keyword->CountAsMadeWithData();
    List& keywords = Contents().Keywords();
    TakeSnapshot();
    // A walk in progress may stand at the end, or before the first keyword.
    const List::iterator place = position.AtBeforeBegin() ? keywords.begin() : position.GetKeywordListIter();
    Keyword& inserted = *keyword;
    // The comment above the keyword below stays with that.
    m_blocksAhead[&inserted];
    m_contents->Insert(place, std::shared_ptr<IKeyword>(std::move(keyword)));
    DropAfterEdit(inserted);
    KeywordFileInsertEventArgs args(*this, inserted);
    RaiseOnce(args);
    return &inserted;
}

bool KeywordFile::RemoveKeyword(const KeywordFileIterator& position)
{
    if (position.File() != this || position.AtBeforeBegin() || position == End()) return false;
    const List::iterator node = position.GetKeywordListIter();
    if (m_loadFailed || IsSkipped(node)) return false;
    TakeSnapshot();
    const std::shared_ptr<IKeyword> hold = *node;
    // The comment above it stays, ahead of what follows.
    const List::iterator next = std::next(node);
    const std::shared_ptr<IKeyword> follower = next != Contents().Keywords().end() ? *next : nullptr;
    Blocks blocks = TakeBlocks(hold);
    blocks.splice(blocks.end(), TakeBlocks(follower));
    m_blocksAhead[follower.get()] = std::move(blocks);
    Keyword& keyword = KeywordFileContents::AsKeyword(hold);
    m_contents->Erase(node);
    DropAfterEdit(keyword);
    KeywordFileRemoveEventArgs args(*this, keyword);
    RaiseOnce(args);
    return true;
}

bool KeywordFile::MoveKeyword(const KeywordFileIterator& source, KeywordFile& target,
                              const KeywordFileIterator& destination)
{
    if (source.File() != this || source.AtBeforeBegin() || source == End()) return false;
    if (m_loadFailed || !target.TakesEditAt(destination)) return false;
    const List::iterator node = source.GetKeywordListIter();
    const List::iterator place =
        destination.AtBeforeBegin() ? target.Contents().Keywords().begin() : destination.GetKeywordListIter();
    if (&target == this && (place == node || place == std::next(node))) return false;
    if (IsSkipped(node)) return false;
    Keyword& keyword = KeywordFileContents::AsKeyword(*node);
    if (&target != this) {
        const KeywordINCLUDE* include = KeywordINCLUDE::From(&keyword);
        KeywordFile* included = include != nullptr ? include->IncludedFile() : nullptr;
        if (included != nullptr && !FileRing::Closing(target, *included).empty()) return false;
    }

    TakeSnapshot();
    target.TakeSnapshot();
    // The comment above it moves along.
    if (&target != this) target.m_blocksAhead[&keyword] = TakeBlocks(*node);
    target.m_contents->Splice(place, *m_contents, node);
    if (&target != this) keyword.SetOwner(&target);
    DropAfterEdit(keyword);
    target.DropAfterEdit(keyword);
    KeywordFileMoveEventArgs args(*this, target, keyword);
    RaiseOnce(args);
    return true;
}

/// What the file and others have found out of their place in the tree holds, as long as neither sections nor links
/// change.
void KeywordFile::DropAfterEdit(const Keyword& keyword)
{
    switch (keyword.GetSyntax()->GetKind()) {
    case KeywordKind::Include:
        m_includeIndex.reset();
        LinkCounter::Changed();
        break;
    case KeywordKind::End:
    case KeywordKind::EndInc:
        m_logicalEnd.reset();
        m_walkEnd.reset();
        LinkCounter::Changed();
        break;
    case KeywordKind::Section:
        LinkCounter::Changed();
        break;
    default:
        break;
    }
}

void KeywordFile::SetTagOnChangedKeywords(bool tagged)
{
    for (const std::shared_ptr<IKeyword>& keyword : Contents().Keywords()) {
        const Keyword& changed = KeywordFileContents::AsKeyword(keyword);
        if (!changed.IsSkipped() && (changed.IsDataChanged() || !changed.HasValidExtent()))
            changed.GetTagMgr().SetTag(tagged);
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
