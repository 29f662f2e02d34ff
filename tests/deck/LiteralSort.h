#pragma once

#include <algorithm>
#include <deque>
#include <list>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>

namespace TestSupport {

/// The sort of a deck carried out to the letter, step by step: every search is a walk from the beginning, and every
/// position is compared where it stands.
class LiteralSort
{
    using IKeyword = Tarn::Fjel::Core::DeckManager::IKeyword;
    using IKeywordFile = Tarn::Fjel::Core::DeckManager::IKeywordFile;
    using KeywordFileIterator = Tarn::Fjel::Core::DeckManager::KeywordFileIterator;
    using KeywordIterator = Tarn::Fjel::Core::DeckManager::KeywordIterator;
    using KeywordKind = Tarn::Fjel::Core::Keywords::KeywordKind;
    using SectionType = Tarn::Fjel::Core::Keywords::SectionType;

public:
    LiteralSort(Tarn::Fjel::Core::DeckManager::IDeck& deck, Tarn::Fjel::Core::DeckManager::IDeckKeywordsEditor& editor)
        : m_deck(deck), m_keywords(*deck.GetDeckKeywords()), m_editor(editor)
    {
    }

    void SortKeywords()
    {
        std::vector<KeywordIterator> marks;
        for (KeywordIterator at = m_keywords.Begin(); at != m_keywords.PhysicalEnd(); ++at) {
            if (at->GetSyntax()->GetKind() == KeywordKind::Section) marks.push_back(at);
        }
        if (marks.empty()) return;
        marks.push_back(m_keywords.PhysicalEnd());
        m_deckEnd = m_keywords.End();
        for (std::size_t i = 0; i + 1 < marks.size(); ++i)
            SortSection(marks[i], marks[i + 1]);
    }

private:
    void SortSection(const KeywordIterator& start, const KeywordIterator& next)
    {
        static const char* const sections[] = {"RUNSPEC",  "GRID",    "EDIT",     "PROPS",   "REGIONS",
                                               "SOLUTION", "SUMMARY", "SCHEDULE", "OPTIMIZE"};
        int section = 0;
        for (int i = 0; i < 9; ++i) {
            if (start->GetName() == sections[i]) section = i;
        }
        KeywordIterator behind = start;
        ++behind;
        const KeywordIterator limit = start < m_deckEnd && m_deckEnd < next ? m_deckEnd : next;
        if (section == 0) {
            const KeywordIterator title = m_keywords.FindKeywordById("TITLE", nullptr, start, limit, false);
            if (title != limit) m_editor.MoveKeyword(title, behind);
        }
        if (section == 7) {
            const KeywordIterator skipRest = m_keywords.FindKeywordById("SKIPREST", nullptr, start, limit, false);
            if (skipRest != limit) {
                KeywordFileIterator target = m_keywords.GetFileIterator(behind);
                if (behind->GetSyntax()->GetKind() == KeywordKind::Include) ++target;
                m_editor.MoveKeyword(m_keywords.GetFileIterator(skipRest), target);
            }
        }

        std::vector<IKeywordFile*> files;
        KeywordIterator at = start;
        for (++at; at != next; ++at) {
            IKeywordFile* file = m_keywords.GetFileOf(m_keywords.GetFileIterator(at));
            if (at->GetSyntax()->HasOrderingRules() && std::find(files.begin(), files.end(), file) == files.end())
                files.push_back(file);
        }
        for (IKeywordFile* file : files) {
            try {
                const auto [begin, end] = RangeOf(*file, start, next);
                for (KeywordFileIterator from = begin; from < end;) {
                    KeywordFileIterator to = from;
                    while (to != end && to->GetSyntax()->GetKind() != KeywordKind::Section && !IsEnd(to))
                        ++to;
                    SortFileRange(static_cast<SectionType>(section), from, to);
                    if (to == end || to->GetSyntax()->GetKind() == KeywordKind::Section) break;
                    from = ++to;
                }
            } catch (const std::exception&) {
                Tarn::Fjel::Core::Service::Log::SendLogMessage(
                    "A problem was encountered sorting the deck keywords in file " + file->GetFileName().GetFullName() +
                        ".  Sort was not completed.",
                    2);
            }
        }
    }

    /// Ends the deck or the file, or brings in a file in which the deck ends.
    bool IsEnd(const KeywordFileIterator& place) const
    {
        const int kind = place->GetSyntax()->GetKind();
        if (kind == KeywordKind::End || kind == KeywordKind::EndInc) return true;
        if (kind != KeywordKind::Include || *m_deckEnd == nullptr) return false;
        const KeywordIterator include = Tarn::Fjel::Core::DeckManager::DeckPositionOf(place, m_deck);
        KeywordIterator behind = include;
        Tarn::Fjel::Core::DeckManager::StepOverInclude(behind, m_deck);
        return include < m_deckEnd && (*behind == nullptr || m_deckEnd < behind);
    }

    /// From the first keyword of the file that the walk between the two section keywords comes to, up to the second of
    /// these or behind the INCLUDE that leads to it; else to the end of the file, also behind its logical end.
    std::pair<KeywordFileIterator, KeywordFileIterator> RangeOf(IKeywordFile& file, const KeywordIterator& start,
                                                                const KeywordIterator& next)
    {
        KeywordFileIterator begin = file.End();
        KeywordIterator last;
        KeywordIterator at = start;
        for (++at; at != next; ++at) {
            const KeywordFileIterator place = m_keywords.GetFileIterator(at);
            if (m_keywords.GetFileOf(place) != &file) continue;
            if (begin == file.End()) begin = place;
            last = at;
        }
        // What has been sorted may keep the walk from it now.
        if (*last == nullptr) return {file.Begin(), file.End()};
        if (*next == nullptr) return {begin, file.End()};
        if (next->GetFile() == &file) return {begin, m_keywords.GetFileIterator(next)};
        KeywordFileIterator behind = m_keywords.GetFileIterator(last);
        if (last->GetSyntax()->GetKind() == KeywordKind::Include)
            Tarn::Fjel::Core::DeckManager::StepOverInclude(last, m_deck);
        return {begin, next < last ? ++behind : file.End()};
    }

    void SortFileRange(SectionType section, const KeywordFileIterator& begin, const KeywordFileIterator& end)
    {
        IKeywordFile* file = m_keywords.GetFileOf(begin);
        if (file != m_keywords.GetFileOf(end))
            throw std::invalid_argument("A problem was encountered sorting keywords.  Invalid sort range.");
        if (begin == end || file->IsReadOnly()) return;
        KeywordFileIterator second = begin;
        if (++second == end) return;

        std::vector<const IKeyword*> all;
        std::set<std::string> present;
        std::set<std::string> required;
        for (KeywordFileIterator cur = begin; cur < end;) {
            all.push_back(*cur);
            present.insert(cur->GetName());
            if (cur->GetSyntax()->HasOrderingRules()) {
                const auto& predecessors = cur->GetSyntax()->GetPredecessors(section);
                required.insert(predecessors.begin(), predecessors.end());
            }
            KeywordFileIterator behind = cur;
            ++behind;
            if (cur->GetSyntax()->IsScopeStart()) {
                if (behind == file->End()) break;
                KeywordFileIterator scopeEnd = Tarn::Fjel::Core::DeckManager::FileScopeBehind(cur, false);
                if (end < scopeEnd) scopeEnd = end;
                if (behind != scopeEnd) SortFileRange(section, behind, scopeEnd);
                cur = scopeEnd;
            } else {
                cur = behind;
            }
        }
        if (required.empty()) return;

        std::list<const IKeyword*> items;
        for (const IKeyword* keyword : all) {
            const auto& predecessors = keyword->GetSyntax()->GetPredecessors(section);
            const bool follows = keyword->GetSyntax()->HasOrderingRules() &&
                                 std::any_of(predecessors.begin(), predecessors.end(),
                                             [&](const std::string& name) { return present.count(name) > 0; });
            if (required.count(keyword->GetName()) > 0 || follows) items.push_back(keyword);
        }
        std::deque<const IKeyword*> sorted;
        for (auto i = items.begin(); i != items.end();) {
            const bool waits =
                (*i)->GetSyntax()->HasOrderingRules() &&
                std::any_of(items.begin(), items.end(), [&](const IKeyword* other) {
                    return other != *i && (*i)->GetSyntax()->GetPredecessors(section).contains(other->GetName());
                });
            if (waits) {
                ++i;
                continue;
            }
            sorted.push_back(*i);
            items.erase(i);
            i = items.begin();
        }

        for (KeywordFileIterator cur = begin; cur != end; ++cur) {
            // Names inside nested scopes are left to these.
            if (std::find(all.begin(), all.end(), *cur) == all.end()) continue;
            const auto found = std::find_if(sorted.begin(), sorted.end(), [&](const IKeyword* keyword) {
                return keyword->GetName() == cur->GetName();
            });
            if (found == sorted.end()) continue;
            const IKeyword* const due = *found;
            while (sorted.front() != due) {
                const KeywordFileIterator place = file->Find(sorted.front());
                sorted.pop_front();
                if (place->GetSyntax()->IsScopeStart())
                    MoveScope(place, cur);
                else
                    m_editor.MoveKeyword(place, cur);
            }
            sorted.pop_front();
        }
    }

    bool MoveScope(const KeywordFileIterator& from, const KeywordFileIterator& to)
    {
        using namespace Tarn::Fjel::Core::DeckManager;
        const KeywordIterator begin = DeckPositionOf(from, m_deck);
        const KeywordIterator end = ScopeEnd(begin, m_deck, false);
        if (to == m_keywords.GetFileIterator(begin) || to == m_keywords.GetFileIterator(end)) return false;
        // Keywords stay in their files, and ends of files where they are.
        std::vector<KeywordFileIterator> places;
        for (KeywordIterator cur = begin; cur < end && *cur != nullptr; Step(cur)) {
            places.push_back(m_keywords.GetFileIterator(cur));
            if (cur->GetFile() != from->GetFile() || cur->GetSyntax()->GetKind() == KeywordKind::End ||
                cur->GetSyntax()->GetKind() == KeywordKind::EndInc)
                throw DeckManagerException("A problem was encountered moving keywords during the sort");
        }
        // Known ahead of the moves: a scope that goes into itself would be met again and again.
        for (const KeywordFileIterator& place : places) {
            if (!m_editor.MoveKeyword(place, to))
                throw DeckManagerException("A problem was encountered moving keywords during the sort");
        }
        return true;
    }

    void Step(KeywordIterator& cur)
    {
        if (cur->GetSyntax()->GetKind() == KeywordKind::Include)
            Tarn::Fjel::Core::DeckManager::StepOverInclude(cur, m_deck);
        else
            ++cur;
    }

    KeywordIterator m_deckEnd;
    Tarn::Fjel::Core::DeckManager::IDeck& m_deck;
    Tarn::Fjel::Core::DeckManager::IDeckKeywords& m_keywords;
    Tarn::Fjel::Core::DeckManager::IDeckKeywordsEditor& m_editor;
};

} // namespace TestSupport
