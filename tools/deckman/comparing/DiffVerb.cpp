#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "command/Verbs.h"
#include "comparing/DataDiff.h"
#include "comparing/DiffEntries.h"
#include "comparing/DiffReport.h"
#include "data/DataHash.h"
#include "output/SequenceAlignment.h"
#include "session/DeckSession.h"
#include "session/Sections.h"

namespace Deckman {

namespace {

using Kind = DiffReport::Kind;
using Keywords::MDType;

/// Keywords of this kind are told apart by one record, and two of them with different identities are two keywords. In a
/// list of records there is an identity for each: a keyword with one record more is still the same.
bool IsIdentifiedAsAWhole(const DeckManager::IKeyword& keyword)
{
    const Keywords::IKeywordMD* md = keyword.GetSyntax()->GetMetaData();
    return md != nullptr && md->GetType() == MDType::Record && keyword.GetSyntax()->HasIdentity();
}

class DeckComparison
{
public:
    DeckComparison(DiffDeck& oldDeck, DiffDeck& newDeck, DiffReport& report)
        : m_old(oldDeck), m_new(newDeck), m_report(report)
    {
    }

    void Run()
    {
        std::vector<DiffGroup>& olds = m_old.Groups();
        std::vector<DiffGroup>& news = m_new.Groups();
        const auto pairs = Align(TokensOf(olds, TimeToken), TokensOf(news, TimeToken));
        int i = 0, j = 0;
        for (const auto& [oldAt, newAt] : pairs) {
            CompareGap({i, oldAt, j, newAt});
            CompareGroups(olds[At(oldAt)], news[At(newAt)]);
            i = oldAt + 1;
            j = newAt + 1;
        }
        CompareGap({i, static_cast<int>(olds.size()), j, static_cast<int>(news.size())});
    }

private:
    static std::size_t At(int index) { return static_cast<std::size_t>(index); }

    static std::vector<std::uint64_t> TokensOf(const std::vector<DiffGroup>& groups,
                                               std::uint64_t (*token)(const DiffGroup&))
    {
        std::vector<std::uint64_t> tokens;
        tokens.reserve(groups.size());
        for (const DiffGroup& group : groups)
            tokens.push_back(token(group));
        return tokens;
    }

    static std::string TimeOf(const Schedule::Moment& moment)
    {
        if (moment.date) return moment.date->ToString();
        return moment.days ? fmt::format("day {}", *moment.days) : fmt::format("time {}", moment.place);
    }

    /// Groups of one time, and of one section outside the schedule.
    static std::uint64_t TimeToken(const DiffGroup& group)
    {
        Hash hash;
        hash.Add(static_cast<std::uint64_t>(group.section));
        if (group.moment != nullptr) hash.Add(TimeOf(*group.moment));
        return hash.Value();
    }

    /// Groups that hold keywords of the same names.
    static std::uint64_t NamesToken(const DiffGroup& group)
    {
        Hash hash;
        hash.Add(static_cast<std::uint64_t>(group.section));
        hash.Add(group.moment != nullptr ? 1 : 0);
        for (const DiffEntry& entry : group.entries)
            hash.Add(entry.nameHash);
        return hash.Value();
    }

    /// Between the moments that both decks have: a moment that was shifted keeps its keywords.
    void CompareGap(const Gap& gap)
    {
        std::vector<DiffGroup>& olds = m_old.Groups();
        std::vector<DiffGroup>& news = m_new.Groups();
        std::vector<std::uint64_t> oldTokens, newTokens;
        for (int i = gap.beginA; i < gap.endA; ++i)
            oldTokens.push_back(NamesToken(olds[At(i)]));
        for (int j = gap.beginB; j < gap.endB; ++j)
            newTokens.push_back(NamesToken(news[At(j)]));
        const auto pairs = Align(oldTokens, newTokens);
        int i = gap.beginA, j = gap.beginB;
        for (const auto& [oldAt, newAt] : pairs) {
            CompareUnpaired({i, gap.beginA + oldAt, j, gap.beginB + newAt});
            CompareShifted(olds[At(gap.beginA + oldAt)], news[At(gap.beginB + newAt)]);
            i = gap.beginA + oldAt + 1;
            j = gap.beginB + newAt + 1;
        }
        CompareUnpaired({i, gap.endA, j, gap.endB});
    }

    void CompareUnpaired(const Gap& gap)
    {
        std::vector<DiffGroup>& olds = m_old.Groups();
        std::vector<DiffGroup>& news = m_new.Groups();
        const bool areAsMany = gap.endA - gap.beginA == gap.endB - gap.beginB;
        int i = gap.beginA, j = gap.beginB;
        for (; areAsMany && i < gap.endA; ++i, ++j) {
            if (olds[At(i)].moment != nullptr && news[At(j)].moment != nullptr) {
                CompareShifted(olds[At(i)], news[At(j)]);
            } else {
                TellAll(olds[At(i)], Kind::Removed);
                TellAll(news[At(j)], Kind::Added);
            }
        }
        for (; i < gap.endA; ++i)
            TellAll(olds[At(i)], Kind::Removed);
        for (; j < gap.endB; ++j)
            TellAll(news[At(j)], Kind::Added);
    }

    /// Two groups whose moments differ. A step that is as long as it was has only been carried along by others.
    void CompareShifted(DiffGroup& oldGroup, DiffGroup& newGroup)
    {
        const Schedule::Moment* oldMoment = oldGroup.moment;
        const Schedule::Moment* newMoment = newGroup.moment;
        if (oldMoment != nullptr && newMoment != nullptr) {
            SetMoment(newGroup);
            const bool areSteps =
                oldMoment->step && newMoment->step && oldMoment->keyword->GetName() == newMoment->keyword->GetName();
            if (!areSteps)
                m_report.TellText(Kind::Changed, newGroup.timeWhere, TimeOf(*oldMoment), TimeOf(*newMoment));
            else if (*oldMoment->step != *newMoment->step)
                m_report.TellNumbers(newGroup.timeWhere, *oldMoment->step, *newMoment->step);
        }
        CompareGroups(oldGroup, newGroup);
    }

    void SetMoment(const DiffGroup& group)
    {
        m_report.SetMoment(group.moment != nullptr ? TimeOf(*group.moment) : std::string(NameOf(group.section)));
    }

    void TellAll(DiffGroup& group, Kind kind)
    {
        SetMoment(group);
        if (group.moment != nullptr) {
            const std::string time = TimeOf(*group.moment);
            if (kind == Kind::Added)
                m_report.TellText(kind, group.timeWhere, std::nullopt, time);
            else
                m_report.TellText(kind, group.timeWhere, time, std::nullopt);
        }
        for (const DiffEntry& entry : group.entries)
            TellEntry(entry, kind);
    }

    void TellEntry(const DiffEntry& entry, Kind kind)
    {
        if (m_report.Closed()) return;
        const bool isNew = kind == Kind::Added;
        const DiffData data = (isNew ? m_new : m_old).Read(entry);
        if (data.tree == nullptr) {
            m_report.TellText(kind, entry.Where(), std::nullopt, std::nullopt);
            return;
        }
        const DiffReport::Side side{{&data.variables}, nullptr};
        const ItemPath::Item item{data.tree.get(), -1};
        m_report.Tell(kind, entry.Where(), isNew ? nullptr : &side, item, isNew ? &side : nullptr, item);
    }

    /// The pairs of entries in two groups, by what tells most first: the text, the data, name and identity, the name.
    void CompareGroups(DiffGroup& oldGroup, DiffGroup& newGroup)
    {
        SetMoment(newGroup);
        std::vector<DiffEntry>& olds = oldGroup.entries;
        std::vector<DiffEntry>& news = newGroup.entries;
        Matches matches;
        matches.oldOf.assign(news.size(), -1);
        matches.newOf.assign(olds.size(), -1);

        const auto textOf = [](DiffDeck& deck, DiffEntry& entry) {
            deck.FillTextHash(entry);
            return entry.textHash;
        };
        const auto contentOf = [](DiffDeck& deck, DiffEntry& entry) {
            deck.FillContentHash(entry);
            return entry.contentHash;
        };
        const auto identityOf = [](DiffDeck&, DiffEntry& entry) { return entry.identityHash; };
        const auto nameOf = [](DiffDeck&, DiffEntry& entry) {
            return IsIdentifiedAsAWhole(*entry.keyword) ? entry.identityHash : entry.nameHash;
        };
        AlignInGaps(olds, news, matches, textOf);
        AlignInGaps(olds, news, matches, contentOf);
        const std::size_t equal = matches.inOrder.size();
        std::vector<char> isEqual(news.size(), 0);
        for (const auto& pair : matches.inOrder)
            isEqual[At(pair.second)] = 1;
        AlignInGaps(olds, news, matches, identityOf);
        AlignInGaps(olds, news, matches, nameOf);
        if (equal == olds.size() && equal == news.size()) return;
        FindMoved(olds, news, matches);

        // What was removed stands where it stood: ahead of the next keyword that is still there.
        std::size_t i = 0;
        const auto tellRemoved = [&] {
            for (; i < olds.size(); ++i) {
                if (matches.newOf[i] < 0)
                    TellEntry(olds[i], Kind::Removed);
                else if (!matches.isMoved.contains(matches.newOf[i]))
                    break;
            }
        };
        for (std::size_t j = 0; j < news.size() && !m_report.Closed(); ++j) {
            tellRemoved();
            const int counterpart = matches.oldOf[j];
            if (counterpart < 0) {
                TellEntry(news[j], Kind::Added);
            } else if (matches.isMoved.contains(static_cast<int>(j))) {
                TellMoved(olds[At(counterpart)], news[j]);
            } else {
                if (!isEqual[j]) CompareEntries(olds[At(counterpart)], news[j]);
                ++i;
            }
        }
        tellRemoved();
    }

    struct Matches
    {
        std::vector<std::pair<int, int>> inOrder;
        std::vector<int> oldOf;          // of each new entry, -1 for none
        std::vector<int> newOf;          // of each old entry
        std::unordered_set<int> isMoved; // new entries that stand in another order
    };

    template <class TokenOf>
    void AlignInGaps(std::vector<DiffEntry>& olds, std::vector<DiffEntry>& news, Matches& matches, TokenOf tokenOf)
    {
        const auto gaps = GapsAround(matches.inOrder, static_cast<int>(olds.size()), static_cast<int>(news.size()));
        std::vector<std::uint64_t> oldTokens, newTokens;
        for (const Gap& gap : gaps) {
            if (gap.beginA == gap.endA || gap.beginB == gap.endB) continue;
            oldTokens.clear();
            newTokens.clear();
            for (int i = gap.beginA; i < gap.endA; ++i)
                oldTokens.push_back(tokenOf(m_old, olds[At(i)]));
            for (int j = gap.beginB; j < gap.endB; ++j)
                newTokens.push_back(tokenOf(m_new, news[At(j)]));
            for (const auto& [i, j] : Align(oldTokens, newTokens)) {
                matches.inOrder.emplace_back(gap.beginA + i, gap.beginB + j);
                matches.newOf[At(gap.beginA + i)] = gap.beginB + j;
                matches.oldOf[At(gap.beginB + j)] = gap.beginA + i;
            }
        }
        std::ranges::sort(matches.inOrder);
    }

    /// Keywords that are left on both sides, with one name and identity, have changed their places.
    void FindMoved(std::vector<DiffEntry>& olds, std::vector<DiffEntry>& news, Matches& matches)
    {
        std::unordered_map<std::uint64_t, std::vector<int>> left; // descending
        for (std::size_t i = olds.size(); i-- > 0;) {
            if (matches.newOf[i] >= 0) continue;
            m_old.FillContentHash(olds[i]);
            left[olds[i].identityHash].push_back(static_cast<int>(i));
        }
        if (left.empty()) return;
        for (std::size_t j = 0; j < news.size(); ++j) {
            if (matches.oldOf[j] >= 0) continue;
            m_new.FillContentHash(news[j]);
            const auto found = left.find(news[j].identityHash);
            if (found == left.end() || found->second.empty()) continue;
            const int i = found->second.back();
            found->second.pop_back();
            matches.oldOf[j] = i;
            matches.newOf[At(i)] = static_cast<int>(j);
            matches.isMoved.insert(static_cast<int>(j));
        }
    }

    void TellMoved(const DiffEntry& oldEntry, const DiffEntry& newEntry)
    {
        m_report.TellMoved(newEntry.Where(), oldEntry.index, newEntry.index);
        if (oldEntry.contentHash != newEntry.contentHash) CompareEntries(oldEntry, newEntry);
    }

    void CompareEntries(const DiffEntry& oldEntry, const DiffEntry& newEntry)
    {
        const DiffData oldData = m_old.Read(oldEntry);
        const DiffData newData = m_new.Read(newEntry);
        if (oldData.tree == nullptr || newData.tree == nullptr) return;
        ValueReader oldValues({&oldData.variables}, ValueReader::Form::Json);
        ValueReader newValues({&newData.variables}, ValueReader::Form::Json);
        const DiffReport::Side oldSide{{&oldData.variables}, &oldValues};
        const DiffReport::Side newSide{{&newData.variables}, &newValues};
        DataDiff(oldSide, newSide, m_report).Compare(*oldData.tree, *newData.tree, newEntry.Where());
    }

    DiffDeck& m_old;
    DiffDeck& m_new;
    DiffReport& m_report;
};

} // namespace

ExitStatus RunDiff(Messages& messages, const Options& options, Output& out)
{
    // As in main: the system takes the memory back faster than destructors do.
    static DeckSession& oldSession = *new DeckSession(options.deck, messages, options.project);
    static DeckSession& newSession = *new DeckSession(options.newDeck, messages, options.project);
    DiffReport report(out, options.json);
    static DiffDeck& oldDeck = *new DiffDeck(oldSession);
    static DiffDeck& newDeck = *new DiffDeck(newSession);
    DeckComparison(oldDeck, newDeck, report).Run();
    report.Finish();
    if (!options.project.empty()) {
        oldSession.SaveCache();
        newSession.SaveCache();
    }
    if (messages.Errors() > 0 && (oldSession.HasUnreadableFile() || newSession.HasUnreadableFile())) return FileFailure;
    return report.HasDifferences() ? NotThere : Done;
}

} // namespace Deckman
