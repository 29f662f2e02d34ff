// The part of `KeywordFile` that changes its list.

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "files/FileRing.h"
#include "files/KeywordFactory.h"
#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"
#include "files/SkipRegion.h"
#include "files/SourceFile.h"
#include "keywords/CommentText.h"
#include "keywords/ITagMgr.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using List = KeywordFileContents::List;

namespace {

bool IsSkipped(List::iterator node)
{
    return KeywordFileContents::AsKeyword(*node).IsSkipped();
}

std::string_view NextLine(std::string_view text)
{
    return text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
}

/// The text with its last comment replaced. The lines ahead that are no comment stay, and blank ones.
std::string WithComment(std::string_view text, const std::string& comment)
{
    std::size_t begin = 0; // of the comment that goes
    std::size_t end = 0;   // behind it
    bool any = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view line = NextLine(text.substr(at));
        const std::string_view content = Service::Trimmed(line);
        const bool isComment = VeldaneDeckInfo::BeginsWithCommentMarker(content);
        at += line.size();
        if (content.empty()) continue;
        if (!isComment) {
            any = false;
            continue;
        }
        if (!std::exchange(any, true)) begin = at - line.size();
        end = at;
    }
    if (!any) begin = end = text.size();
    std::string lines(text.substr(0, begin));
    if (!lines.empty() && !lines.ends_with('\n') && !comment.empty()) lines += '\n';
    return lines.append(comment).append(text.substr(end));
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
    m_diskPlaces.reset();
    m_blocksAhead.clear();
    m_snapshotTaken = false;
    m_commentsSet = false;
    m_textInHead.reset();
    m_scanWillDiffer = false;
}

std::vector<KeywordFile::Block> KeywordFile::BlocksAhead(const IKeyword* keyword) const
{
    const auto found = m_blocksAhead.find(keyword);
    if (found == m_blocksAhead.end()) return {{keyword, nullptr}};
    std::vector<Block> blocks;
    for (const KeptBlock& block : found->second)
        blocks.push_back({block.below.get(), block.text.get()});
    return blocks;
}

const std::string* KeywordFile::TextSetAhead(const IKeyword* keyword) const
{
    const auto found = m_blocksAhead.find(keyword);
    if (found == m_blocksAhead.end() || found->second.empty()) return nullptr;
    return found->second.back().text.get();
}

KeywordFile::Blocks KeywordFile::TakeBlocks(const std::shared_ptr<IKeyword>& keyword)
{
    const auto found = m_blocksAhead.find(keyword.get());
    if (found == m_blocksAhead.end()) return {{keyword, nullptr}};
    Blocks blocks = std::move(found->second);
    m_blocksAhead.erase(found);
    return blocks;
}

void KeywordFile::PullBlocksUp(const KeywordFileIterator& position, std::size_t count)
{
    const List::iterator node = position.GetKeywordListIter();
    const List::iterator next = std::next(node);
    const std::shared_ptr<IKeyword> follower = next != Contents().Keywords().end() ? *next : nullptr;
    Blocks above = TakeBlocks(*node);
    Blocks below = TakeBlocks(follower);
    for (; count > 0 && !below.empty(); --count)
        above.splice(above.end(), below, below.begin());
    m_blocksAhead[node->get()] = std::move(above);
    m_blocksAhead[follower.get()] = std::move(below);
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
        // An ENDSKIP ahead of it that ends nothing doesn't end this one.
        if (depth > 0) return false;
    }
    return true;
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
    if (KeywordINCLUDE* include = KeywordINCLUDE::From(hold.get())) include->LeaveList();
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
    // The comment above it moves along, and a section keyword that is none with it.
    if (&target != this) {
        target.m_blocksAhead[&keyword] = TakeBlocks(*node);
        target.m_hasDroppedSections |= m_hasDroppedSections;
    }
    target.m_contents->Splice(place, *m_contents, node);
    if (&target != this) {
        keyword.SetOwner(&target);
        ++s_movesBetweenFiles;
    }
    DropAfterEdit(keyword);
    target.DropAfterEdit(keyword);
    KeywordFileMoveEventArgs args(*this, target, keyword);
    RaiseOnce(args);
    return true;
}

/// A list that is about to be read anew keeps no keyword of another file, which would be lost, and has none of its own
/// left in others, where it would stand twice.
void KeywordFile::UndoMovesBetweenFiles()
{
    if (!m_contents || !m_snapshotTaken) return;
    const List mine = m_snapshot;
    for (const std::shared_ptr<IKeyword>& listed : mine) {
        const Keyword& keyword = KeywordFileContents::AsKeyword(listed);
        KeywordFile* other = keyword.Owner() != nullptr ? keyword.Owner()->AsKeywordFile() : nullptr;
        if (other == nullptr || other == this) continue;
        other->RemoveKeyword(other->Find(listed.get()));
        other->DropBlocksOf(*m_fileReader);
    }
    const List present = m_contents->Keywords();
    for (const std::shared_ptr<IKeyword>& listed : present) {
        const Keyword& keyword = KeywordFileContents::AsKeyword(listed);
        if (keyword.Owner() != this || !keyword.HasValidExtent() || keyword.Reader() == m_fileReader) continue;
        if (KeywordFile* home = keyword.GetDiskFile()) home->TakeHome(*this, keyword);
    }
}

/// What stood ahead of the keywords of that text stays there.
void KeywordFile::DropBlocksOf(const KeywordFileReader& reader)
{
    for (auto& [keyword, blocks] : m_blocksAhead) {
        blocks.remove_if([&reader](const KeptBlock& block) {
            return block.below && KeywordFileContents::AsKeyword(block.below).Reader().get() == &reader;
        });
    }
}

/// The keyword comes back from a file to which it was moved: to where it stood, among those that stand here still.
void KeywordFile::TakeHome(KeywordFile& other, const Keyword& keyword)
{
    const auto isKeyword = [&keyword](const std::shared_ptr<IKeyword>& listed) { return listed.get() == &keyword; };
    auto next = std::find_if(m_snapshot.begin(), m_snapshot.end(), isKeyword);
    if (next == m_snapshot.end()) return;
    KeywordFileIterator place = End();
    for (++next; next != m_snapshot.end() && place == End(); ++next)
        place = Find(next->get());
    other.MoveKeyword(other.Find(&keyword), *this, place);
}

/// Whether a scan of the text finds other keywords when this one comes or goes: those of a region that is skipped.
bool KeywordFile::DecidesOfOthers(const Keyword& keyword)
{
    return SkipRegion::IsSkipKeyword(*keyword.GetSyntax()) && Environment::Instance().SKIPENDSKIPEnabled();
}

/// What the file and others have found out of their place in the tree holds, as long as neither sections nor links
/// change.
void KeywordFile::DropAfterEdit(const Keyword& keyword)
{
    if (DecidesOfOthers(keyword)) m_scanWillDiffer = true;
    switch (keyword.GetSyntax()->GetKind()) {
    case KeywordKind::Include:
        m_includeIndex.reset();
        NoteChangeOfSections();
        LinkCounter::Changed();
        break;
    case KeywordKind::End:
    case KeywordKind::EndInc:
        m_logicalEnd.reset();
        m_walkEnd.reset();
        LinkCounter::Changed();
        break;
    case KeywordKind::Section:
        NoteChangeOfSections();
        LinkCounter::Changed();
        break;
    default:
        break;
    }
}

bool KeywordFile::SetCommentAbove(const KeywordFileIterator& position, const std::string& text)
{
    if (position.AtBeforeBegin() || position == End() || !TakesEditAt(position)) return false;
    const List::iterator node = position.GetKeywordListIter();
    const Keyword& keyword = KeywordFileContents::AsKeyword(*node);
    const bool isFirst = node == Contents().Keywords().begin();
    if (IsSkipped(node) || (!isFirst && IsSkipped(std::prev(node)))) return false;

    const std::string comment = Service::AllBlanks(text) ? std::string() : AsCommentLines(text);
    // What could not be read of the text would go with the old comment.
    const Service::ReadWatch reading;
    const auto refuseUnlessRead = [&] {
        if (reading.SawFailure()) {
            throw DeckManagerException(fmt::format("The comment above keyword {} cannot be read from the file {}.",
                                                   keyword.GetName(), m_fileName.GetFullName()));
        }
    };
    SourceFile source(*this, nullptr);
    if (isFirst && source.IsFirstOnDisk(keyword)) {
        const std::string old = m_textInHead ? *m_textInHead : source.TextOfHead();
        refuseUnlessRead();
        m_textInHead = std::make_shared<const std::string>(WithComment(old, comment));
    } else {
        std::string ahead = WithComment(source.TextAhead(&keyword, RootContext()), comment);
        refuseUnlessRead();
        TakeSnapshot();
        m_blocksAhead[&keyword] = {{nullptr, std::make_shared<const std::string>(std::move(ahead))}};
    }
    m_commentsSet = true;
    // The text may hold one of these, and where that stands in it isn't known.
    if (m_hasDroppedSections) m_scanWillDiffer = true;
    return true;
}

std::string KeywordFile::TextAtEnd()
{
    Contents();
    SourceFile source(*this, nullptr);
    if (source.IsAllHead() && IsListUnchanged()) return source.TextOfHead();
    return source.TextAhead(nullptr, RootContext()) + source.TextOfRest();
}

void KeywordFile::AddTextAtEnd(const std::string& text, bool mayHoldKeywords)
{
    Contents();
    if (Rest() != nullptr) {
        AddToRest(text);
    } else {
        TakeSnapshot();
        Blocks blocks = TakeBlocks(nullptr);
        blocks.push_back({nullptr, std::make_shared<const std::string>(text)});
        m_blocksAhead[nullptr] = std::move(blocks);
    }
    m_commentsSet = true;
    m_scanWillDiffer |= mayHoldKeywords;
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
