// The part of `DeckKeywordsEditor` that sorts.

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <unordered_set>
#include <utility>
#include <vector>

#include "deck/Deck.h"
#include "deck/DeckKeywords.h"
#include "deck/DeckKeywordsEditor.h"
#include "deck/ScopeWalk.h"
#include "deck/SortOrder.h"
#include "files/IteratorAccess.h"
#include "files/IteratorPath.h"
#include "files/KeywordFile.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::SectionType;

namespace {

int KindOf(const IKeyword& keyword)
{
    return keyword.GetSyntax()->GetKind();
}

template <class Iterator>
Iterator Next(Iterator position)
{
    return ++position;
}

/// A file that includes the one of the section keyword goes on with the section behind that INCLUDE.
KeywordFileIterator FirstOfSection(const KeywordFile& file, const KeywordIterator& start)
{
    for (const KeywordFileIterator& place : IteratorPath::Of(start)) {
        if (IteratorAccess::File(place) == &file) return Next(place);
    }
    return file.Begin();
}

/// A file that includes the one of the next section keyword leaves the section behind that INCLUDE.
KeywordFileIterator EndOfSection(const KeywordFile& file, const KeywordIterator& next)
{
    if (*next == nullptr) return file.End();
    const IteratorPath::Places path = IteratorPath::Of(next);
    for (const KeywordFileIterator& place : path) {
        if (IteratorAccess::File(place) == &file) return &place == &path.back() ? place : Next(place);
    }
    return file.End();
}

/// What of a range of a file is sorted by itself: as far as its section reaches, in pieces between ends of the deck or
/// of the file. No run reads what stands behind an end, and a keyword that was moved ahead of it would come to life.
///
/// Empty where `end` isn't behind `begin`: the section keyword of a file that is included twice is come to twice, and
/// the second time stands ahead of what is behind the first.
std::vector<std::pair<KeywordFileIterator, KeywordFileIterator>>
StretchesOf(KeywordFileIterator begin, const KeywordFileIterator& end, const IteratorPath::Places& deckEnd)
{
    std::vector<std::pair<KeywordFileIterator, KeywordFileIterator>> stretches;
    if (begin == end) return stretches;
    const KeywordFileIterator fileEnd = IteratorAccess::File(begin)->End();
    KeywordFileIterator place = begin;
    for (; place != end && place != fileEnd && KindOf(**place) != KeywordKind::Section; ++place) {
        const int kind = KindOf(**place);
        const bool isEnd = kind == KeywordKind::End || kind == KeywordKind::EndInc ||
                           std::find(deckEnd.begin(), deckEnd.end(), place) != deckEnd.end();
        if (!isEnd) continue;
        stretches.emplace_back(begin, place);
        begin = Next(place);
    }
    stretches.emplace_back(begin, place);
    while (place != end && place != fileEnd)
        ++place;
    if (place != end) stretches.clear();
    return stretches;
}

/// The keyword that closes a scope stands in it where the scope has a closing keyword of its own.
bool IsClosedInside(const IKeyword& head, const IKeyword& closer)
{
    return !closer.GetSyntax()->IsScopeStart() && head.GetSyntax()->GetScopeEndSyntax() != nullptr;
}

/// The places of an order, by name: which one a name stands for is the first that is still to come.
class PlacesByName
{
public:
    PlacesByName(const KeywordKinds& kinds, const std::vector<std::size_t>& order) : m_names(kinds.Names().size())
    {
        for (std::size_t place = 0; place < order.size(); ++place)
            m_names[kinds.NameAt(order[place])].places.push_back(place);
    }

    /// The first place of that name at or behind `from`, which never goes back; false when there is none.
    bool Find(std::size_t name, std::size_t from, std::size_t& place)
    {
        auto& [places, next] = m_names[name];
        while (next < places.size() && places[next] < from)
            ++next;
        if (next == places.size()) return false;
        place = places[next];
        return true;
    }

private:
    struct Name
    {
        std::vector<std::size_t> places;
        std::size_t next = 0;
    };
    std::vector<Name> m_names;
};

} // namespace

void DeckKeywordsEditor::SortKeywords()
{
    if (m_deck == nullptr) return;
    const DeckKeywords& keywords = m_deck->Keywords();
    std::vector<KeywordIterator> marks;
    for (KeywordIterator position = keywords.Begin(); *position != nullptr; ++position) {
        if (KindOf(**position) == KeywordKind::Section) marks.push_back(position);
    }
    if (marks.empty()) return;
    marks.push_back(keywords.PhysicalEnd());
    // The END stays where it is, and so do the INCLUDE keywords that lead to it.
    const IteratorPath::Places deckEnd = IteratorPath::Of(keywords.End());
    for (std::size_t next = 1; next < marks.size(); ++next)
        SortSection(marks[next - 1], marks[next], deckEnd);
}

/// The keywords behind a section keyword and ahead of the next one, or of the deck's physical end. Each file is sorted
/// by itself.
void DeckKeywordsEditor::SortSection(const KeywordIterator& start, const KeywordIterator& next,
                                     const std::vector<KeywordFileIterator>& deckEnd)
{
    SectionType section = SectionType::RUNSPEC;
    FindSection(start->GetName(), section);
    MoveToFixedPlace(section, start, next);

    // In deck order, so that messages come in an order that a reader can follow.
    std::vector<KeywordFile*> files;
    std::unordered_set<const KeywordFile*> seen;
    for (KeywordIterator position = Next(start); position != next && *position != nullptr; ++position) {
        if (!position->GetSyntax()->HasOrderingRules()) continue;
        KeywordFile* file = IteratorAccess::CurrentFile(position);
        if (seen.insert(file).second) files.push_back(file);
    }
    for (KeywordFile* file : files) {
        try {
            for (const auto& [begin, end] :
                 StretchesOf(FirstOfSection(*file, start), EndOfSection(*file, next), deckEnd))
                SortFileRange(section, begin, end);
        } catch (const std::exception&) {
            Service::Log::SendLogMessage("A problem was encountered sorting the deck keywords in file " +
                                             file->GetFileName().GetFullName() + ".  Sort was not completed.",
                                         Service::Log::Warning);
        }
    }
}

/// Two keywords have a place of their own, whatever the rules say: a title straight behind RUNSPEC, and SKIPREST at the
/// head of the schedule, behind a file that is included there.
void DeckKeywordsEditor::MoveToFixedPlace(SectionType section, const KeywordIterator& start,
                                          const KeywordIterator& next)
{
    if (section != SectionType::RUNSPEC && section != SectionType::SCHEDULE) return;
    const bool isTitle = section == SectionType::RUNSPEC;
    const KeywordIterator behind = Next(start);
    const KeywordIterator deckEnd = m_deck->Keywords().End();
    const KeywordIterator limit = start < deckEnd && deckEnd < next ? deckEnd : next;
    const KeywordIterator found =
        m_deck->Keywords().FindKeywordById(isTitle ? "TITLE" : "SKIPREST", nullptr, start, limit, false);
    if (found == limit) return;
    KeywordFileIterator place = PlaceOf(behind);
    if (!isTitle && KindOf(**place) == KeywordKind::Include) ++place;
    MoveKeyword(PlaceOf(found), place);
}

/// Sorts a range of one file, and each scope in it by itself: first what is inside, then what is around it.
void DeckKeywordsEditor::SortFileRange(SectionType section, const KeywordFileIterator& begin,
                                       const KeywordFileIterator& end)
{
    const KeywordFile* file = IteratorAccess::File(begin);
    if (file != IteratorAccess::File(end)) {
        throw std::invalid_argument("A problem was encountered sorting keywords.  Invalid sort range.");
    }
    if (!IsOpenToEdits(file)) return;

    // The range around, and the scopes that are open at a place, with the keywords of each. Scopes nest without a
    // bound, so they stand on a stack and not in calls.
    struct Level
    {
        const IKeyword* head;
        std::vector<KeywordFileIterator> places;
    };
    std::vector<Level> levels{{nullptr, {}}};
    OpenScopes open;
    for (KeywordFileIterator following = begin; following != end;) {
        // Sorting the scope that a keyword closes may move the keyword.
        const KeywordFileIterator place = following++;
        const IKeyword& keyword = **place;
        bool isInside = false;
        for (const std::size_t left = open.Close(keyword); levels.size() - 1 > left; levels.pop_back()) {
            Level& scope = levels.back();
            const bool takes = IsClosedInside(*scope.head, keyword);
            if (takes && !isInside) scope.places.push_back(place);
            isInside = takes;
            Arrange(section, scope.places);
        }
        if (!isInside) levels.back().places.push_back(place);
        if (keyword.GetSyntax()->IsScopeStart()) {
            open.Open(keyword);
            levels.push_back({&keyword, {}});
        }
    }
    for (; !levels.empty(); levels.pop_back())
        Arrange(section, levels.back().places);
}

/// Puts keywords of one level into the order of the rules; of a scope, `places` has the head. Those that take part fill
/// the places that they have in the file, from the first one on.
void DeckKeywordsEditor::Arrange(SectionType section, const std::vector<KeywordFileIterator>& places)
{
    const auto hasRules = [](const KeywordFileIterator& place) { return place->GetSyntax()->HasOrderingRules(); };
    if (places.size() < 2 || std::none_of(places.begin(), places.end(), hasRules)) return;
    KeywordKinds kinds;
    kinds.Reserve(places.size());
    for (const KeywordFileIterator& place : places)
        kinds.Add(**place);
    const std::vector<std::size_t> order = SortOrder(kinds, section);
    if (order.empty()) return;

    PlacesByName placesByName(kinds, order);
    std::vector<bool> isAhead(places.size(), false); // went ahead of the walk
    std::size_t next = 0;
    for (std::size_t current = 0; current < places.size(); ++current) {
        std::size_t due = 0;
        if (isAhead[current] || !placesByName.Find(kinds.NameAt(current), next, due)) continue;
        for (; next < due; ++next) {
            const std::size_t moved = order[next];
            const bool isScope = kinds.SyntaxAt(moved).IsScopeStart();
            isAhead[moved] = isScope ? MoveScope(places[moved], places[current], false)
                                     : MoveKeyword(places[moved], places[current]);
        }
        next = due + 1;
    }
}

/// Moves a scope ahead of another place, whole or not at all. False when it stands there already. Throws
/// `std::invalid_argument` for a keyword that opens no scope, and `DeckManagerException` when a keyword can't be moved
/// and when the scope goes on behind the end of its file.
bool DeckKeywordsEditor::MoveScope(const KeywordFileIterator& from, const KeywordFileIterator& to, bool generatedOnly)
{
    if (!from->GetSyntax()->IsScopeStart()) {
        throw std::invalid_argument("A problem was encountered moving keywords.  Invalid start of scope keyword.");
    }
    const char* const refusal = "A problem was encountered moving keywords during the sort";
    const KeywordIterator head = DeckPositionOf(from, *m_deck);
    const KeywordIterator end = ScopeEnd(head, *m_deck, generatedOnly);
    const KeywordFileIterator endPlace = PlaceOf(end);
    if (to == from || to == endPlace) return false;

    // What is included goes along with its INCLUDE. Where a scope is closed in an included file, that is its last.
    const IteratorPath::Places endPath = IteratorPath::Of(end);
    const KeywordFile* file = IteratorAccess::File(from);
    const KeywordFileIterator fileEnd = file->End();
    std::vector<KeywordFileIterator> places{from};
    for (KeywordFileIterator place = Next(from); place != endPlace; ++place) {
        if (place == fileEnd) {
            // Keywords stay in their files: the scope must end where the file does.
            KeywordIterator behind = DeckPositionOf(places.back(), *m_deck);
            StepOverInclude(behind, *m_deck);
            if (behind != end) throw DeckManagerException(refusal);
            break;
        }
        // The end of a deck or of a file would take what it went ahead of out of the deck.
        if (KindOf(**place) == KeywordKind::End || KindOf(**place) == KeywordKind::EndInc)
            throw DeckManagerException(refusal);
        places.push_back(place);
        if (std::find(endPath.begin(), endPath.end() - 1, place) != endPath.end() - 1) break;
    }
    for (const KeywordFileIterator& place : places) {
        if (!MoveKeyword(place, to)) throw DeckManagerException(refusal);
    }
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
