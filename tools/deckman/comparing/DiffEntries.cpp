#include "comparing/DiffEntries.h"

#include <map>
#include <optional>

#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/ReadKeywordData.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Strings.h>

#include "data/DataHash.h"
#include "data/DataValues.h"
#include "session/DeckLines.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

using Keywords::KeywordKind;

std::string DiffEntry::Where() const
{
    return number == 1 ? keyword->GetName() : fmt::format("{}#{}", keyword->GetName(), number);
}

namespace {

std::uint64_t HashOfName(const DeckManager::IKeyword& keyword)
{
    Hash hash;
    hash.Add(keyword.GetName());
    hash.Add(reinterpret_cast<std::uintptr_t>(keyword.GetSyntax()));
    return hash.Value();
}

} // namespace

DiffDeck::DiffDeck(DeckSession& session) : m_session(session), m_schedule(session, false)
{
    std::map<std::string, int, std::less<>> numbers;
    auto moment = m_schedule.Moments().begin();
    const auto end = m_schedule.Moments().end();
    m_groups.emplace_back();
    SkipTracker skips(std::nullopt);
    for (DeckWalk walk(session, false); walk.Next();) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        DiffEntry entry;
        entry.keyword = &keyword;
        entry.index = walk.Index();
        entry.number = ++numbers[keyword.GetName()];
        // A skipped region counts as a comment from its SKIP to its ENDSKIP. With --simulator these have no text.
        const bool wasInside = skips.IsInside();
        if (keyword.GetSize() > 0) skips.Hides(keyword);
        if (wasInside || skips.IsInside()) continue;
        if (walk.Kind() == KeywordKind::Section) {
            DiffGroup group;
            group.section = walk.Section();
            m_groups.push_back(std::move(group));
        }
        const auto first = moment;
        while (moment != end && moment->index == walk.Index())
            ++moment;
        if (first != moment && first->element >= 0) {
            for (auto passed = first; passed != moment; ++passed) {
                DiffGroup group;
                group.section = walk.Section();
                group.moment = &*passed;
                group.timeWhere = fmt::format("{}[{}]", entry.Where(), passed->element);
                m_groups.push_back(std::move(group));
            }
            continue;
        }
        const bool onlyJoinsFiles = walk.Kind() == KeywordKind::Include || walk.Kind() == KeywordKind::EndInc;
        if (keyword.IsSuppressed() || keyword.GetSize() == 0 || onlyJoinsFiles) continue;
        entry.nameHash = HashOfName(keyword);
        m_groups.back().entries.push_back(entry);
    }
}

DiffData DiffDeck::Read(const DiffEntry& entry)
{
    DiffData data;
    if (entry.keyword->GetSyntax()->GetMetaData() == nullptr) return data;
    try {
        data.tree = DeckManager::ReadKeywordData(m_session.Keywords(), *entry.keyword, &data.variables);
    } catch (const Service::Exception& exception) {
        m_session.Log().Error(m_session.PlaceOf(*entry.keyword), exception.what());
    }
    return data;
}

void DiffDeck::FillTextHash(DiffEntry& entry) const
{
    if (entry.textHash != 0) return;
    Hash hash;
    hash.Add(entry.nameHash);
    // A keyword without data is its name: what stands behind it are comments.
    if (entry.keyword->GetSyntax()->GetMetaData() != nullptr)
        hash.Add(Service::TrimmedRight(DeckManager::KeywordText(*entry.keyword).Data()));
    entry.textHash = hash.Value() | 1;
}

void DiffDeck::FillContentHash(DiffEntry& entry)
{
    if (entry.contentHash != 0) return;
    const DiffData data = Read(entry);
    Hash content, identity;
    content.Add(entry.nameHash);
    identity.Add(entry.nameHash);
    if (data.tree != nullptr) {
        ValueReader values({&data.variables}, ValueReader::Form::Json);
        content.Add(ContentHash(*data.tree, values));
        identity.Add(IdentityHash(*data.tree, values));
    }
    entry.contentHash = content.Value() | 1;
    entry.identityHash = identity.Value();
}

} // namespace Deckman
