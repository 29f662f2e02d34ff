#include "editing/KeywordEdits.h"

#include <algorithm>
#include <unordered_set>

#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

#include "editing/EditRun.h"
#include "session/PlaceIndex.h"
#include "session/Schedule.h"

namespace Deckman {

using DeckManager::IKeyword;
using Keywords::KeywordKind;
using Tarn::Fjel::Core::Keywords::SectionType;

KeywordEdits::KeywordEdits(DeckSession& session, const Options& options)
    : m_session(session), m_options(options), m_editor(*session.Manager().GetEditor(&session.EditedDeck())),
      m_log(session, options.dryRun || options.json), m_filesBefore(session.FilesInDeckOrder())
{
}

void KeywordEdits::Prepare(const Options& line)
{
    LimitsOfLine(line);
    Places(line.all);
    // The lines of a file are counted behind its end too.
    const auto namesFile = [](const std::string& where) { return where.find(':') != std::string::npos; };
    if (!line.file.empty() || namesFile(line.where) || namesFile(line.target) ||
        std::any_of(line.wheres.begin(), line.wheres.end(), namesFile))
        Places(true);
    m_errorsBefore = m_session.Log().Errors();
}

PlaceIndex& KeywordEdits::Places(bool all) const
{
    PlaceIndex& places = m_session.Places(all);
    places.Complete();
    return places;
}

const WhereLimits& KeywordEdits::LimitsOfLine(const Options& options)
{
    const std::pair key(options.all, options.at);
    const auto known = m_limits.find(key);
    return known != m_limits.end() ? known->second : m_limits.emplace(key, LimitsOf(m_session, options)).first->second;
}

KeywordEdits::Target KeywordEdits::TargetAt(PlaceIndex& places, int index, ItemPath items) const
{
    const IKeyword* keyword = places.At(index)->keyword;
    return {keyword, keyword->GetFile()->Find(keyword), places.At(index)->section, std::move(items)};
}

KeywordEdits::Target KeywordEdits::Find(const std::string& text, const Options& options)
{
    const WhereLimits& limits = LimitsOfLine(options);
    PlaceIndex& places = Places(limits.all);
    const Where where = Where::Parse(text);
    Where::Spot spot = where.FindSpot(m_session, limits);
    RequireOne(where, text, limits, spot.index);
    if (places.At(spot.index)->isGone) {
        const int line = m_goneAt[{limits.all, spot.index}];
        throw Failure(NotThere,
                      line > 0 ? fmt::format("Line {} has removed this keyword.", line)
                               : std::string("This keyword has been removed."),
                      text);
    }
    return TargetAt(places, spot.index, std::move(spot.items));
}

KeywordEdits::Target KeywordEdits::FindKeyword(const std::string& text, const Options& options, std::string_view verb)
{
    Target target = Find(text, options);
    if (!target.items.IsEmpty())
        throw Failure(WrongUsage, fmt::format("{} takes a whole keyword, and no item of one.", verb), text);
    return target;
}

std::vector<KeywordEdits::Target> KeywordEdits::AllKeywords(const Options& options)
{
    std::vector<Target> targets;
    std::unordered_set<const IKeyword*> seen;
    PlaceIndex& places = Places(options.all);
    for (int index = 1; const PlaceIndex::Entry* entry = places.At(index); ++index) {
        if (!entry->isGone && seen.insert(entry->keyword).second) targets.push_back(TargetAt(places, index, {}));
    }
    return targets;
}

/// A look at the first of several does no harm, but a change of it may be another one than was meant.
void KeywordEdits::RequireOne(const Where& where, const std::string& text, const WhereLimits& limits, int index)
{
    constexpr std::size_t mostShown = 5;
    PlaceIndex& places = Places(limits.all);
    const std::string name = places.NameAt(index);
    const std::optional<std::string> alone = where.NameAlone(name);
    if (!alone) return;
    const bool namesSection = alone->size() > name.size();
    const SectionType section = places.At(index)->section;
    std::string shown;
    std::size_t count = 0;
    // A file that is included twice holds its keywords once.
    std::unordered_set<const IKeyword*> keywords;
    places.ForEachNamed(name, [&](int other, const PlaceIndex::Entry& entry) {
        if (!limits.Hold(other) || (namesSection && entry.section != section)) return true;
        keywords.insert(entry.keyword);
        if (++count > mostShown) return true;
        const bool isOpened = entry.file >= 0;
        shown += isOpened ? fmt::format("\n{} is at {}, also @{}", count, m_session.PlaceOf(*entry.keyword), other)
                          : fmt::format("\n{} is one that this script has inserted", count);
        return true;
    });
    if (keywords.size() < 2) return;
    if (count > mostShown) shown += "\n...";
    throw Failure(NotThere,
                  fmt::format("{} stands in the deck {} times; {}#1 is the first, {}#2 the second.{}", name, count,
                              *alone, *alone, shown),
                  text);
}

DeckManager::KeywordIterator KeywordEdits::DeckPosition(const Target& target) const
{
    return DeckManager::DeckPositionOf(target.position, m_session.Deck());
}

SectionType KeywordEdits::SectionAt(const Target& target, bool behind)
{
    const int kind = target.keyword->GetSyntax()->GetKind();
    const bool stepsOver = behind && kind == KeywordKind::Include;
    const bool isBoundary = !behind && kind == KeywordKind::Section;
    if (!stepsOver && !isBoundary) {
        return m_sectionsChanged ? m_session.Keywords().SectionOf(DeckPosition(target)) : target.section;
    }
    // What is in force ahead of that position.
    DeckManager::KeywordIterator position = DeckPosition(target);
    if (stepsOver) DeckManager::StepOverInclude(position, m_session.Deck());
    if (position == m_session.Keywords().Begin()) return SectionType::None;
    --position;
    return m_session.Keywords().SectionOf(position);
}

void KeywordEdits::NoteSections(const IKeyword& keyword)
{
    const int kind = keyword.GetSyntax()->GetKind();
    if (kind == KeywordKind::Section || kind == KeywordKind::Include) m_sectionsChanged = true;
}

/// An index that nobody has asked for yet would only find the deck as it is.
template <class Note>
void KeywordEdits::InIndices(const Note& note) const
{
    for (const bool all : {false, true}) {
        if (PlaceIndex& places = m_session.Places(all); places.IsComplete()) note(all, places);
    }
}

void KeywordEdits::NoteInserted(const IKeyword& keyword, SectionType section)
{
    m_log.NoteInserted(keyword);
    NoteSections(keyword);
    InIndices([&](bool, PlaceIndex& places) { places.AddInserted(keyword, section); });
}

void KeywordEdits::NoteRemoval(const IKeyword& keyword)
{
    m_log.NoteRemoval(keyword);
    NoteSections(keyword);
    InIndices([&](bool all, PlaceIndex& places) {
        m_goneAt[{all, places.IndexOf(keyword)}] = m_line;
        places.MarkGone(keyword);
    });
}

void KeywordEdits::NoteMove(const IKeyword& keyword)
{
    m_log.NoteMove(keyword);
    NoteSections(keyword);
}

void KeywordEdits::RefuseClosed(const IKeyword& keyword, std::string_view what) const
{
    // A region that is skipped shows by its skip keywords alone, and these have no text of their own.
    const bool isSkipped = keyword.GetSize() == 0 && keyword.GetLine() > 0;
    Refuse(keyword,
           fmt::format("{} cannot be {}.{}", keyword.GetName(), what,
                       isSkipped ? " What --simulator skips is closed to edits; without that option it is not." : ""));
}

void KeywordEdits::Refuse(const IKeyword& keyword, const std::string& reason) const
{
    // A new one has no line yet.
    throw Failure(NotThere, reason,
                  keyword.GetLine() > 0 ? m_session.PlaceOf(keyword) : m_session.PlaceOf(*keyword.GetFile()));
}

void KeywordEdits::Finish(Output& out)
{
    const bool isShownWhole = m_options.dryRun && !m_options.json && m_log.IsIntricate();
    const std::vector<ChangeLog::Change> changes =
        (m_options.dryRun || m_options.json) && !isShownWhole ? m_log.Changes() : std::vector<ChangeLog::Change>();
    EditRun run(m_session, m_options, m_filesBefore);
    if (m_session.Log().Errors() > m_errorsBefore)
        throw Failure(NotThere, "Nothing is changed: the edit would bring this error into the deck.", m_options.deck);
    m_session.RequireReadable();
    if (!m_options.dryRun || isShownWhole) run.Finish();
    if (isShownWhole)
        run.PrintDiff(out);
    else if (m_options.json)
        m_log.PrintJson(changes, out);
    else
        m_log.PrintDiff(changes, out);
    if (m_options.dryRun) run.RequireWritable();
}

} // namespace Deckman
